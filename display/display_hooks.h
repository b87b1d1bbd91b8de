#pragma once
// What the text widgets need of the rest of the client beyond zorn_frame_link (input/
// frame_link.h): the clipboard, the browser, the status bar, the session, and the settings they
// read when they draw. The frame points these at its own operations when it is built; until then
// the defaults below hold, so the widgets also work in tests and on their own.

// The character settings that the display reads. The source is LConfig's getters unless a test
// puts its own in place (null puts LConfig back); the initial values are those of a fresh record.
struct zorn_display_settings {
    int url_hotlinking = 1;
    int compact_mode = 0;
    int mw_scrollbar_enable = 1;
    int automap_display = 1;
    int group_status_display = 1;
    int split_view = 1;
};

using zorn_display_settings_source = zorn_display_settings (*)();
void zorn_set_display_settings_source(zorn_display_settings_source source);
zorn_display_settings zorn_get_display_settings();

struct zorn_display_hooks {
    // The frame's set_clipboard_data; by default the text goes to wx's clipboard directly.
    void (*set_clipboard_data)(const char* text);
    // The frame's open_url, which hands the link to the browser on its next tick; by default
    // only logged.
    void (*open_url)(const char* url);
    // The status bar shows the lock; by default nothing.
    void (*repaint_status_bar)();
    // session_state is session_logged_in; by default no.
    bool (*session_logged_in)();
};

zorn_display_hooks& zorn_get_display_hooks();
