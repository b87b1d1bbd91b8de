#include "panels/status_bar.h"

#include <wx/event.h>

#include <algorithm>
#include <cstring>

#include "config/lconfig.h"
#include "input/frame_link.h"
#include "theme/builtin_images.h"
#include "theme/font.h"

namespace {

const char* const icon_tooltips[zorn_icon_count] = {
    "You are not wielding anything.", "You are asleep.", "Spell 'burning hands'", "Spell 'shocking grasp'",
    "Spell 'sickening touch'",
};

// The padlock's width; a missing picture counts as its stored size.
int padlock_width() {
    const zorn_bitmap* padlock = zorn_builtin_image(zorn_image_padlock);
    return padlock ? padlock->GetWidth() : 21;
}

}  // namespace

wxBEGIN_EVENT_TABLE(zorn_status_bar, zorn_status_display_base)
    EVT_MOUSE_EVENTS(zorn_status_bar::mouse_handler)
wxEND_EVENT_TABLE()

zorn_status_bar::zorn_status_bar(wxWindow* parent, wxWindowID id, const wxString& name)
    : zorn_status_display_base(parent, id, name), clock_colour(zorn_clock_colour_reset), icon_on{}, sky_bar(nullptr) {
    border_mask = zorn_border_all;
    sky_bar = new zorn_sky_bar(this);
    Show(false);
}

void zorn_status_bar::set_icons(const char* payload) {
    if (status_parse_icons(icon_on, payload)) Refresh(false);
}

void zorn_status_bar::update_sky_display(const char* payload) {
    zorn_sky_fields fields;
    zorn_fixed_string clock;
    if (!parse_sky_state(payload, &fields, &clock)) return;
    if (std::strcmp(clock.c_str(), clock_text.c_str()) != 0 || clock_colour != zorn_clock_colour_live) {
        clock_text = clock;
        clock_colour = zorn_clock_colour_live;
        Refresh(false);
    }
    sky_bar->set_sky_state(fields.outdoors, fields.sky_visible, fields.overcast, fields.terrain,
                           fields.current_minute);
}

void zorn_status_bar::add_ping_sample(int milliseconds) {
    zorn_ping_meter::add_ping_sample(milliseconds);
    Refresh(false);
}

void zorn_status_bar::resize_handler(bool size_changed) {
    const wxSize size = GetClientSize();
    int ping_width = 0, clock_width = 0, text_height = 0, unused = 0;
    zorn_status_font()->measure_text("00000 ms", &ping_width, &text_height);
    zorn_status_font()->measure_text("00:00 pm", &clock_width, &unused);
    const zorn_status_bar_layout placed = compute_status_bar_layout(size.GetWidth(), size.GetHeight(), padlock_width(),
                                                                    text_height, ping_width, clock_width);
    zorn_status_bar_layout& mine = *this;
    const bool moved = std::memcmp(&placed, &mine, sizeof placed) != 0;
    mine = placed;
    sky_bar->set_size(sky_x, sky_y, sky_width, sky_height);
    if (size_changed || moved) Refresh(false);
}

void zorn_status_bar::repaint_internal(zorn_bitmap& b) {
    repaints++;
    b.Clear(zorn_black);
    zorn_font* font = zorn_status_font();
    if (ping_count != 0) {
        zorn_fixed_string ping;
        ping.appendf("%5d ms", ping_average);
        b.DrawTextTransparent(font, ping.c_str(), ping_x, text_y, zorn_green);
    }
    int clock_width = 0, clock_height = 0;
    b.MeasureText(font, clock_text.c_str(), &clock_width, &clock_height);
    b.DrawTextTransparent(font, clock_text.c_str(), clock_right - clock_width, text_y, clock_colour);
    if (scrollback_locked()) {
        if (const zorn_bitmap* padlock = zorn_builtin_image(zorn_image_padlock)) b.DrawBitmapUseAlpha(*padlock, lock_x, 0);
    }
    for (int i = 0; i < zorn_icon_count; ++i) {
        if (!icon_on[i]) continue;
        if (const zorn_bitmap* icon = zorn_builtin_image(zorn_image_icon0 + i))
            b.DrawBitmapUseAlpha(*icon, 2 + zorn_icon_step * i, 2);
    }
    draw_border(b);
}

void zorn_status_bar::reset() {
    zorn_ping_meter::clear();
    clock_text.clear();
    std::fill(std::begin(icon_on), std::end(icon_on), 0);
    clock_colour = zorn_clock_colour_reset;
    Show(false);
    sky_bar->Show(LConfig::instance().get_sky_bar() != 0);
    Refresh(false);
}

bool zorn_status_bar::scrollback_locked() const {
    zorn_frame_link* frame = zorn_get_frame_link();
    return frame && !frame->main_is_following();
}

const char* zorn_status_bar::tooltip_at(int x, int) const {
    for (int i = 0; i < zorn_icon_count; ++i)
        if (icon_on[i] && x >= 2 + zorn_icon_step * i && x <= 19 + zorn_icon_step * i) return icon_tooltips[i];
    if (x >= ping_x && x <= ping_right)
        return "This is the round trip server ping time.\nValues above 500 ms indicate network lag.";
    if (x >= clock_x && x <= clock_right) return "This is the in-game time of day.";
    if (x >= lock_x && x <= width && scrollback_locked()) return "Scrolling is locked (click to unlock).";
    return nullptr;
}

void zorn_status_bar::mouse_handler(wxMouseEvent& event) {
    const int x = event.GetX();
    if (event.Moving() || event.Dragging()) show_tooltip(tooltip_at(x, event.GetY()));
    if (event.LeftIsDown() && x >= lock_x && x <= width && scrollback_locked()) {
        if (zorn_frame_link* frame = zorn_get_frame_link()) frame->unlock_main_scrollback();
        show_tooltip(nullptr);
        Refresh(false);
    }
    event.Skip();
}
