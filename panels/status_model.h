#pragma once
// What the status display, the status bar and the sky bar know and compute, without a window:
// the numbers the tags carry and their parsers, the placement of gauges and texts for a width
// and measured label widths, the ping average, and the sky's colours and positions for a minute.
// The widgets hold these records and turn their changes into repaints; tests drive them directly.
//
// Payloads come from the server unchecked: numbers are read with atoi (letters read as 0), the
// arithmetic that multiplies them runs in 64 bits, and a bad sky payload is one log line and no
// change. Nothing here allocates.

#include <cstdint>
#include <functional>

#include "base/fixed_string.h"
#include "base/rgb.h"

constexpr int zorn_xp_slots = 8;
constexpr int zorn_icon_count = 5;
constexpr int zorn_ping_slots = 4;
constexpr int zorn_star_count = 200;
constexpr int zorn_minutes_per_day = 1440;
constexpr int zorn_compact_levels = 4;
inline constexpr const char* zorn_no_enemy_name = "(no enemy)";

// ---- The status display's numbers ------------------------------------------------------------

struct zorn_status_numbers {
    int hp = -1, max_hp = 1;
    int mana = -1, max_mana = 1;
    int move = -1, max_move = 1;
    int xp[zorn_xp_slots] = {};  // tenths of a percent, largest first
    zorn_fixed_string enemy_name{zorn_no_enemy_name};
    int enemy_percent = -1;  // -1: no enemy

    // The values of a new session.
    void reset_numbers();
    // No enemy: percent -1, the name "(no enemy)".
    void clear_enemy();
};

// "hp": six numbers stored as they are read. True only when all six came and one of them changed.
bool status_parse_hit_points(zorn_status_numbers* numbers, const char* payload);

enum class zorn_enemy_update {
    cleared,   // empty payload: no enemy now
    no_name,   // only the percentage came; it is stored, nothing else happens
    same,      // name and percentage as before
    changed,   // a new name or percentage
};
zorn_enemy_update status_parse_enemy(zorn_status_numbers* numbers, const char* payload);

// "xpp": up to eight numbers, missing ones 0, then sorted largest first. True when the sorted list
// differs from the one held before.
bool status_parse_experience(zorn_status_numbers* numbers, const char* payload);

// Fill of a gauge: value * width / maximum, a maximum below 1 counting as 1, limited to 0..width.
int status_gauge_fill(int value, int maximum, int width);
// The experience text: " exp: 42%" or " xp: FULL" (level 0 says "exp").
void status_experience_text(int first_xp, int compact_level, zorn_fixed_string* out);
// The texts beside the gauges at a compact level (0 to 2): " hp:%4d/%d" and so on.
void status_gauge_texts(const zorn_status_numbers& numbers, int compact_level, zorn_fixed_string* hp,
                        zorn_fixed_string* mana, zorn_fixed_string* move);

// ---- The status display's placement ----------------------------------------------------------

struct zorn_status_display_layout {
    int compact_level = 0;
    int text_y = 0;
    int hp_x = 10, mana_x = 10, move_x = 10;
    int bar_height = 1, bar_width = 1, bar_y = 0;
    int exp_x = 10;
    int enemy_bar_y = 0, enemy_text_y = 0;
};

struct zorn_status_flags {
    bool hp_bars = false;
    bool exp_bar = false;
    bool enemy_bar = false;
};

// Width of a text in the status font.
using zorn_text_measure = std::function<int(const char*)>;

// The label texts whose measured widths decide a compact level: hp, mana, move, exp for levels 0
// to 2.
const char* status_label_text(int compact_level, int which);

// w and h are the client size less the frame; text_height is the status font's.
zorn_status_display_layout compute_status_display_layout(int w, int h, const zorn_status_flags& flags,
                                                         const zorn_text_measure& measure, int text_height);

// ---- The status bar --------------------------------------------------------------------------

// The last four lag samples and their average.
struct zorn_ping_meter {
    int ping_average = 0;
    int ping_count = 0;  // 0 to 4
    int ping_index = 0;  // where the next sample goes
    int ping_samples[zorn_ping_slots] = {};

    void add_ping_sample(int milliseconds);
    void clear();
};

// "icons": icon i is on when character i is '1'. True when any icon changed.
bool status_parse_icons(int icon_on[zorn_icon_count], const char* payload);

struct zorn_status_bar_layout {
    int text_y = 0;
    int ping_x = 0, ping_right = 0;
    int clock_x = 0, clock_right = 0;
    int lock_x = 0;
    int width = 0;
    int sky_x = 100, sky_y = 1, sky_width = 1, sky_height = 1;
};

// The clock never moves left of this; the bar runs off its right end instead.
constexpr int zorn_status_bar_clock_minimum = 131;

// ping_text_width is the width of "00000 ms", clock_text_width that of "00:00 pm".
zorn_status_bar_layout compute_status_bar_layout(int w, int h, int padlock_width, int text_height,
                                                 int ping_text_width, int clock_text_width);

// ---- The sky -----------------------------------------------------------------------------------

struct zorn_sky_fields {
    int outdoors = 0;
    int sky_visible = 0;
    int overcast = 0;
    int terrain = 0;
    int current_minute = 0;
};

// "skystate": flags, terrain, minute and the clock text. False (logged at level 2, nothing
// stored) when terrain or minute isn't a number or the minute lies outside the day.
bool parse_sky_state(const char* payload, zorn_sky_fields* fields, zorn_fixed_string* clock_text);

struct zorn_star {
    double x = 0, y = 0;  // 0 up to 1
    int red = 0, green = 0, blue = 0;
};

// Places and colours the stars from the client's generator.
void make_stars(zorn_star* stars, int count);

// Overcast, or seen from indoors.
bool sky_dim(const zorn_sky_fields& fields);
int sky_peak(bool dim);
int sky_daylight(int minute, int peak);
zorn_rgb sky_colour(int daylight);
// Offset of the moving sky: two widths a day.
int sky_offset(int minute, int width);
// x of something at `position` / 1440 of the doubled sky, moved by the offset and wrapped.
int sky_wrapped_x(int64_t base_x, int width, int offset);
int sky_sun_x(int width, int offset);
int sky_moon_x(int width, int offset);
// Glow strength g at dawn (330..479) and dusk (1050..1229); false outside those.
bool sky_dawn_glow(int minute, int* g);
bool sky_dusk_glow(int minute, int* g);
// The per-component larger of (g, g/2, g/3) and the sky.
zorn_rgb sky_glow_colour(int g, const zorn_rgb& sky);
// A star's pixel: each component * shine / peak, never below the sky's.
zorn_rgb sky_star_colour(const zorn_star& star, int shine, int peak, const zorn_rgb& sky);
// The sky bar's tooltip for the fields.
const char* sky_tooltip(const zorn_sky_fields& fields);
