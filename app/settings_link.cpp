// What a change of setting does to the window: the frame's side of the settings listener, and
// its link to the command line's password mode and histories.
#include "app/main_frame.h"
#include "audio/audio_stream.h"
#include "config/lconfig.h"
#include "display/ansi_display.h"
#include "display/ansi_palette.h"
#include "input/input_window.h"
#include "panels/group_display.h"
#include "panels/status_bar.h"
#include "panels/status_display.h"
#include "theme/font.h"

namespace {

// A font description the toolkit can read replaces the font's face; the size always applies.
void apply_description(zorn_font* font, const char* description, int size) {
    if (description && *description) {
        wxFont parsed;
        if (parsed.SetNativeFontInfo(wxString::FromUTF8(description))) font->copy_from(parsed);
    }
    if (size > 0) font->SetPointSize(size);
}

}  // namespace

void zorn_mw::choose_font_colors(int font_colors_setting) {
    LConfig::instance().set_font_colors_setting(font_colors_setting);
    zorn_select_palette(font_colors_setting);
    begin_message();
    for (const char* part : {"\n", "\n", "Future text will now use ", zorn_palette_name(font_colors_setting),
                             " ansi colors.\n", "\n"})
        print_message(part);
    refresh_text();
}

bool zorn_mw::is_logged_in() { return session_state == session_logged_in; }

void zorn_mw::mark_client_status_dirty() { client_status_dirty = 1; }

void zorn_mw::layout_and_refresh() {
    layout_panels();
    Refresh(false);
}

void zorn_mw::relayout_scrollbar() {
    main_display->enable_scrollbar(LConfig::instance().get_mw_scrollbar_enable());
    main_display->unlock_scrollback();
    main_display->force_resize();
    Refresh(false);
}

void zorn_mw::switch_layout() {
    reparent_automap();
    reparent_group_display();
    update_background(false);
    layout_panels();
    Refresh(false);
}

// refresh_themes selects both themes from the record again; only a background change needs the
// painted background rebuilt.
void zorn_mw::apply_theme(zorn_theme_part part) { refresh_themes(part == zorn_theme_part::background); }

void zorn_mw::show_status_bar(bool show) {
    status_bar->Show(show);
    layout_and_refresh();
}

void zorn_mw::show_sky_bar(bool show) { status_bar->sky_bar->Show(show); }

void zorn_mw::set_status_display_flag(zorn_setting key, int value) {
    zorn_status_display& d = *status_display;
    const int on = value != 0;
    if (key == zorn_setting_hpbar_enable) d.set_flags(on, d.show_exp_bar, d.show_enemy_bar);
    if (key == zorn_setting_exp_display) d.set_flags(d.show_hp_bars, on, d.show_enemy_bar);
    if (key == zorn_setting_enemy_hpbar_enable) d.set_flags(d.show_hp_bars, d.show_exp_bar, on);
}

void zorn_mw::show_status_display(bool show) {
    status_display->Show(show);
    layout_and_refresh();
}

void zorn_mw::hide_group_display() { group_display->Show(false); }
void zorn_mw::set_channel_window_enable(int) { layout_and_refresh(); }

void zorn_mw::apply_fonts(const char* main_description, int main_size, const char* button_description,
                          int button_size) {
    apply_description(zorn_main_font(), main_description, main_size);
    apply_description(zorn_button_font(), button_description, button_size);
    apply_description(zorn_status_font(), button_description, button_size + 2);
}

bool zorn_mw::start_audio() { return ::start_audio() != 0; }
void zorn_mw::stop_audio() { ::stop_audio(); }
