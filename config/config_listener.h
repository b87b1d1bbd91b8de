#pragma once
// What the settings do to the window. LConfig's setters change the record and then call the
// registered listener, which the main frame implements; until the frame registers itself the
// pointer is null and a setter changes the record alone. Keeps config/ free of wx, and lets the
// records be tested without a window. Main thread only.

#include "config/char_config.h"

enum class zorn_theme_part {
    button,      // current_theme
    background,  // current_background_theme, theme_bg_setting
};

class zorn_config_listener {
public:
    virtual ~zorn_config_listener() = default;

    // session_state is session_logged_in: the bars are shown or hidden only then.
    virtual bool is_logged_in() = 0;
    // The Preferences item of a setting (its zorn_setting_info::menu_label: a check item, or the
    // radio group of an int setting) shows the value. Radio groups leave a value with no item alone.
    virtual void sync_menu_item(zorn_setting key, int value) = 0;
    // "Enable Sounds" shows the system audio flag.
    virtual void sync_audio_menu_item(int value) = 0;
    // client_status_dirty: the next tick sends the client status line while logged in.
    virtual void mark_client_status_dirty() = 0;

    // layout_panels, then a frame refresh.
    virtual void layout_and_refresh() = 0;
    // The main display's scrollbar re-layout, then a frame refresh.
    virtual void relayout_scrollbar() = 0;
    // Full layout switch after a change of current_layout or of the whole record.
    virtual void switch_layout() = 0;
    virtual void apply_theme(zorn_theme_part part) = 0;

    virtual void show_status_bar(bool show) = 0;
    virtual void show_sky_bar(bool show) = 0;
    // exp_display, hpbar_enable or enemy_hpbar_enable copied into the status display.
    virtual void set_status_display_flag(zorn_setting key, int value) = 0;
    virtual void show_status_display(bool show) = 0;
    virtual void hide_group_display() = 0;
    virtual void set_channel_window_enable(int value) = 0;
    virtual void set_automap_scale(int automap_size) = 0;
    // The automap's size items are enabled only while the automap is displayed.
    virtual void enable_automap_size_items(bool enable) = 0;
    virtual void update_automap_visibility() = 0;

    // Parse the native descriptions onto the global fonts: a good main description gives the main
    // font its face, style, weight and underline at main_size, a bad one only the size; likewise
    // the button font at button_size and the status font at button_size + 2.
    virtual void apply_fonts(const char* main_description, int main_size, const char* button_description,
                             int button_size) = 0;
    // Hand the fonts to all panels; each ends by calling LConfig::store_main_font or store_button_font.
    virtual void refresh_main_font() = 0;
    virtual void refresh_button_font() = 0;

    // The audio stream; start_audio is false when it cannot be opened.
    virtual bool start_audio() = 0;
    virtual void stop_audio() = 0;
};

// The registered listener, or null (records only).
zorn_config_listener* zorn_get_config_listener();
// The frame registers itself once its panels exist, and clears the pointer when it goes away.
void zorn_set_config_listener(zorn_config_listener* listener);
