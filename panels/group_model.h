#pragma once
// The group display's model: the block of the "group" tag parsed into members, the rows' places
// and the panel's height, and the whole picture as a list of drawing steps that the widget
// (group_display.h) replays onto its bitmap. Nothing here needs a window, so tests and the fuzz
// target drive it directly.
//
// The block is one line per member: hp, max hp, mana, max mana, move, max move, then the name. A
// name starting with "." makes a compact row, one starting with "-" a compact row in a block set
// off by a divider; anything else a full row. The first line that fails ends the block with what
// came before it.

#include <functional>
#include <string>
#include <vector>

#include "base/rgb.h"

enum : int {
    group_row_full = 0,
    group_row_compact = 1,
    group_row_divided = 2,  // compact, behind the divider
};

// Longest name kept; the rest is cut.
constexpr int group_name_limit = 5999;

// (glibc declares a function group_member, hence the prefix.)
struct zorn_group_member {
    int hp = 0, max_hp = 0, mana = 0, max_mana = 0, move = 0, max_move = 0;
    int row_kind = group_row_full;
    std::string name;
};

// One line (without its line feed); false, with the level 2 log line naming the field, when one of
// the six numbers is missing or isn't one.
bool parse_update_line(const char* line, const char* end, zorn_group_member* out);
// The whole payload: the members up to the first line that fails. A trailing line feed ends the
// block; it is no empty line.
std::vector<zorn_group_member> parse_group_lines(const char* payload);

// Row heights from the height of the status font's text.
struct group_metrics {
    int full_row_height = 1;
    int compact_row_height = 1;
};
group_metrics group_metrics_for(int text_height);

// The panel's height for the list: rows, a pixel between them, and room for the divider.
int group_required_height(const std::vector<zorn_group_member>& members, const group_metrics& metrics);

struct group_row_place {
    int y = 0;
    int height = 0;
};
struct group_places {
    std::vector<group_row_place> rows;
    int divider_y = -1;  // -1: no divider drawn
};
// Rows from y 1 down; the first row of kind 2 gets 3 more pixels, and a divider line above them
// when rows stand before it.
group_places group_row_places(const std::vector<zorn_group_member>& members, const group_metrics& metrics);
// The member whose row holds y, or -1 (y at or above the top, or below the last row).
int group_row_at(const std::vector<zorn_group_member>& members, const group_metrics& metrics, int y);

// ---- The picture --------------------------------------------------------------------------------

struct group_paint_settings {
    int mode = 1;           // 1 in the main frame, 2 embedded in the text
    bool vertical = true;   // group_status_display 1
    bool inverted = false;  // group_status_inverted_bars
    zorn_rgb frame{128, 128, 128};  // the theme's panel frame
};

struct group_op {
    enum kind_t { line, rect, pixel, text } kind = line;
    int x1 = 0, y1 = 0, x2 = 0, y2 = 0;  // rect: both corners included; text: x1, y1
    zorn_rgb color;
    int member = -1;  // text: whose name
};

// Size of a text in the status font.
using group_measure = std::function<void(const char* text, int* width, int* height)>;

// Everything the panel shows, in drawing order, starting with the black background and ending
// with the frame.
std::vector<group_op> group_paint(const std::vector<zorn_group_member>& members, const group_metrics& metrics,
                                  const group_paint_settings& settings, int width, int height,
                                  const group_measure& measure);

// One bar at (x, y), width b, height h, for value v of maximum m; nothing when both are below 1.
// thin: the frame of full horizontal rows.
void group_bar_ops(std::vector<group_op>* ops, const group_paint_settings& settings, bool thin, int x, int y, int b,
                   int h, int v, int m, const zorn_rgb& fill, const zorn_rgb& top);
// The fill width: v * b / max(m, 1), within 0 and b.
int group_bar_fill(int v, int m, int b);

// Bar colours.
inline constexpr zorn_rgb group_hp_fill{160, 0, 0}, group_hp_top{255, 64, 128};
inline constexpr zorn_rgb group_mana_fill{0, 64, 160}, group_mana_top{64, 128, 255};
inline constexpr zorn_rgb group_move_fill{192, 192, 0}, group_move_top{255, 255, 128};
inline constexpr zorn_rgb group_plain_frame{64, 64, 64}, group_thin_frame{128, 128, 128};
