#include "panels/status_display.h"

#include <wx/event.h>

#include <algorithm>
#include <cstring>

#include "theme/font.h"
#include "theme/theme.h"

namespace {

constexpr zorn_rgb hp_dark{128, 0, 0}, hp_bright{255, 32, 32};
constexpr zorn_rgb mana_dark{0, 64, 160}, mana_bright{64, 96, 255};
constexpr zorn_rgb move_dark{160, 160, 0}, move_bright{255, 255, 64};
constexpr zorn_rgb enemy_dark{128, 64, 32}, enemy_bright{255, 128, 64};

// Scale marks every 100 points of a maximum above 100: kept points marked above and below the
// bar, missing ones across its middle. At most one mark per pixel of the bar, so a huge maximum
// can't stall the paint.
void draw_scale_marks(zorn_bitmap& b, int x, int y, int width, int height, int value, int maximum,
                      const zorn_rgb& dark, const zorn_rgb& bright) {
    if (maximum <= 100) return;
    const int middle = y + height / 2 + 1;
    int marks = 0;
    for (int64_t k = 100; k < maximum && marks <= width; k += 100, ++marks) {
        const int mark_x = x + static_cast<int>(static_cast<int64_t>(width) * k / maximum);
        if (k <= value) {
            b.SetPixel(mark_x, y, bright);
            b.SetPixel(mark_x, y + height + 1, dark);
        } else {
            b.DrawLine(mark_x, middle - 1, mark_x, middle + 1, zorn_white);
        }
    }
}

bool inside(int px, int py, int x, int y, int width, int height) {
    return px >= x && px <= x + width + 1 && py >= y && py <= y + height + 1;
}

}  // namespace

int zorn_status_text_width(const char* text) {
    int width = 0, height = 0;
    zorn_status_font()->measure_text(text, &width, &height);
    return width;
}

int zorn_status_text_height() {
    int width = 0, height = 0;
    zorn_status_font()->measure_text("0000", &width, &height);
    return height;
}

void zorn_draw_gauge(zorn_bitmap& b, int x, int y, int width, int height, int fill, const zorn_rgb& dark,
                     const zorn_rgb& bright) {
    b.DrawLine(x, y, x, y + height + 1, zorn_white);
    b.DrawLine(x + width + 1, y, x + width + 1, y + height + 1, zorn_white);
    b.DrawLine(x, y + height / 2 + 1, x + width + 1, y + height / 2 + 1, zorn_white);
    if (fill <= 0) return;
    b.DrawFilledRectangle(x + 1, y + 1, x + fill, y + height, dark);
    b.DrawLine(x + 1, y + 1, x + fill, y + 1, bright);
    b.DrawLine(x + 1, y + height, x + fill, y + height, bright);
    if (fill < width) {
        b.SetPixel(x + fill, y + 1, zorn_black);
        b.SetPixel(x + fill, y + height, zorn_black);
    }
}

// ---- zorn_status_display_base ----------------------------------------------------------------

zorn_status_display_base::zorn_status_display_base(wxWindow* parent, wxWindowID id, const wxString& name)
    : zorn_embedded_window(parent, id, wxDefaultPosition, wxSize(20, 20), wxBORDER_NONE, name),
      border_mask(0),
      repaints(0) {}

bool zorn_status_display_base::animation_callback(int elapsed_ms) { return standard_animation_step(elapsed_ms); }

void zorn_status_display_base::draw_border(zorn_bitmap& b) {
    if (!border_mask) return;
    zorn_rgb colour = zorn_current_button_theme ? zorn_current_button_theme->triple[zorn_triple_panel_frame] : zorn_grey128;
    if (anim_count > 0) colour = (anim_count & 1) ? zorn_white : zorn_black;
    const int right = b.GetWidth() - 1, bottom = b.GetHeight() - 1;
    if (border_mask & zorn_border_left) b.DrawLine(0, 0, 0, bottom, colour);
    if (border_mask & zorn_border_top) b.DrawLine(0, 0, right, 0, colour);
    if (border_mask & zorn_border_right) b.DrawLine(right, 0, right, bottom, colour);
    if (border_mask & zorn_border_bottom) b.DrawLine(0, bottom, right, bottom, colour);
}

void zorn_status_display_base::show_tooltip(const char* text) {
    const wxString wanted = text ? wxString::FromUTF8(text) : wxString();
    if (wanted == tooltip_shown) return;
    tooltip_shown = wanted;
    if (text)
        SetToolTip(wanted);
    else
        UnsetToolTip();
}

// ---- zorn_status_display ---------------------------------------------------------------------

wxBEGIN_EVENT_TABLE(zorn_status_display, zorn_status_display_base)
    EVT_MOTION(zorn_status_display::motion_handler)
wxEND_EVENT_TABLE()

zorn_status_display::zorn_status_display(wxWindow* parent, wxWindowID id, const wxString& name)
    : zorn_status_display_base(parent, id, name), show_hp_bars(0), show_exp_bar(0), show_enemy_bar(0) {}

void zorn_status_display::resize_handler(bool size_changed) {
    const int w = GetClientSize().GetWidth(), h = GetClientSize().GetHeight();
    // The frame takes a pixel on each side it is drawn on.
    const int sides_x = !!(border_mask & zorn_border_left) + !!(border_mask & zorn_border_right);
    const int sides_y = !!(border_mask & zorn_border_top) + !!(border_mask & zorn_border_bottom);
    zorn_status_flags flags;
    flags.hp_bars = show_hp_bars;
    flags.exp_bar = show_exp_bar;
    flags.enemy_bar = show_enemy_bar;
    const zorn_status_display_layout placed =
        compute_status_display_layout(w - sides_x, h - sides_y, flags, zorn_status_text_width, zorn_status_text_height());
    zorn_status_display_layout& mine = *this;
    const bool moved = std::memcmp(&placed, &mine, sizeof placed) != 0;
    mine = placed;
    if (size_changed || moved) Refresh(false);
}

void zorn_status_display::reset() {
    reset_numbers();
    Show(false);
    Refresh(false);
}

void zorn_status_display::store_hit_points(const char* payload) {
    if (status_parse_hit_points(this, payload)) Refresh(false);
}

zorn_enemy_update zorn_status_display::store_enemy(const char* payload) {
    const zorn_enemy_update update = status_parse_enemy(this, payload);
    if (update == zorn_enemy_update::changed) Refresh(false);
    return update;
}

void zorn_status_display::store_experience(const char* payload, bool exp_display) {
    if (status_parse_experience(this, payload) && exp_display) Refresh(false);
}

void zorn_status_display::set_flags(int hp_bars, int exp_bar, int enemy_bar) {
    hp_bars = hp_bars != 0;
    exp_bar = exp_bar != 0;
    enemy_bar = enemy_bar != 0;
    if (hp_bars == show_hp_bars && exp_bar == show_exp_bar && enemy_bar == show_enemy_bar) return;
    show_hp_bars = hp_bars;
    show_exp_bar = exp_bar;
    show_enemy_bar = enemy_bar;
    resize_handler(true);
}

void zorn_status_display::repaint_internal(zorn_bitmap& b) {
    repaints++;
    b.Clear(zorn_black);
    draw_border(b);
    if (compact_level < 3) draw_texts(b);
    if (show_enemy_bar) {
        zorn_fixed_string name(" ");
        name.append(enemy_name.c_str());
        b.DrawTextTransparent(zorn_status_font(), name.c_str(), hp_x + bar_width + 1, enemy_text_y, zorn_white);
    }
    draw_gauges(b);
    if (show_exp_bar) draw_experience_bar(b);
}

void zorn_status_display::draw_texts(zorn_bitmap& b) {
    zorn_font* font = zorn_status_font();
    if (show_hp_bars) {
        zorn_fixed_string hp_text, mana_text, move_text;
        status_gauge_texts(*this, compact_level, &hp_text, &mana_text, &move_text);
        b.DrawTextTransparent(font, hp_text.c_str(), hp_x + bar_width + 1, text_y, zorn_white);
        b.DrawTextTransparent(font, mana_text.c_str(), mana_x + bar_width + 1, text_y, zorn_white);
        b.DrawTextTransparent(font, move_text.c_str(), move_x + bar_width + 1, text_y, zorn_white);
    }
    if (show_exp_bar) {
        zorn_fixed_string exp_text;
        status_experience_text(xp[0], compact_level, &exp_text);
        b.DrawTextTransparent(font, exp_text.c_str(), exp_x + bar_width + 1, show_enemy_bar ? enemy_text_y : text_y,
                              zorn_white);
    }
}

void zorn_status_display::draw_gauges(zorn_bitmap& b) {
    if (show_hp_bars) {
        const struct {
            int x, value, maximum;
            zorn_rgb dark, bright;
        } gauges[3] = {{hp_x, hp, max_hp, hp_dark, hp_bright},
                       {mana_x, mana, max_mana, mana_dark, mana_bright},
                       {move_x, move, max_move, move_dark, move_bright}};
        for (const auto& g : gauges) {
            const int fill = status_gauge_fill(g.value, g.maximum, bar_width);
            zorn_draw_gauge(b, g.x - 1, bar_y - 1, bar_width, bar_height, fill, g.dark, g.bright);
            draw_scale_marks(b, g.x - 1, bar_y - 1, bar_width, bar_height, g.value, g.maximum, g.dark, g.bright);
        }
    }
    if (show_enemy_bar) {
        const int fill = status_gauge_fill(enemy_percent, 100, bar_width);
        zorn_draw_gauge(b, hp_x - 1, enemy_bar_y - 1, bar_width, bar_height, fill, enemy_dark, enemy_bright);
    }
}

// Purple layers, the largest value first: each smaller one lies over it in a brighter purple.
void zorn_status_display::draw_experience_bar(zorn_bitmap& b) {
    const int x = exp_x, y = enemy_bar_y;
    zorn_draw_gauge(b, x, y, bar_width, bar_height, 0, zorn_black, zorn_black);
    for (int i = 0; i < zorn_xp_slots && xp[i] > 0; ++i) {
        const int level = std::min((48 + 32 * i) & ~15, 192);
        const int bright = std::min((level + 96) & ~15, 255);
        const int fill = status_gauge_fill(xp[i], 1000, bar_width);
        if (fill < 1) continue;
        b.DrawFilledRectangle(x, y, x + fill - 1, y + bar_height - 1, zorn_rgb(level, 0, level));
        b.DrawLine(x, y, x + fill - 1, y, zorn_rgb(bright, 0, bright));
        b.DrawLine(x, y + bar_height - 1, x + fill - 1, y + bar_height - 1, zorn_rgb(bright, 0, bright));
    }
}

const char* zorn_status_display::tooltip_at(int x, int y) const {
    if (show_hp_bars) {
        if (inside(x, y, hp_x - 1, bar_y - 1, bar_width, bar_height)) return "Your current health.";
        if (inside(x, y, mana_x - 1, bar_y - 1, bar_width, bar_height)) return "Your current mana.";
        if (inside(x, y, move_x - 1, bar_y - 1, bar_width, bar_height)) return "Your current movement.";
    }
    if (show_enemy_bar && inside(x, y, hp_x - 1, enemy_bar_y - 1, bar_width, bar_height))
        return "Your current enemy's health.";
    if (show_exp_bar && inside(x, y, exp_x, enemy_bar_y, bar_width, bar_height))
        return "Your accumulated experience towards your next level.";
    return nullptr;
}

void zorn_status_display::motion_handler(wxMouseEvent& event) {
    show_tooltip(tooltip_at(event.GetX(), event.GetY()));
    event.Skip();
}
