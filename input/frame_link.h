#pragma once
// What the widgets of this folder need of the main frame, as an interface the frame implements.
// The frame registers itself when it is built; widgets made without one (tests, a frame being
// torn down) do nothing where they would have called it.
//
// Beyond the first three operations every method has a neutral body here, so that a frame (or a
// test double) overrides only what it has: the displays and panels named below may not exist yet.

#include <string>

class wxKeyEvent;
class wxWindow;

class zorn_frame_link {
public:
    virtual ~zorn_frame_link() = default;
    // The command interpreter: every typed line and every button command comes here.
    virtual void process_user_command(const char* text, int echo) = 0;
    // Hands the keyboard back to the command line after a click in a panel.
    virtual bool transfer_focus_main(wxWindow* window) = 0;
    // Lets the main display follow new text again.
    virtual void unlock_main_scrollback() = 0;

    // ---- The main display -----------------------------------------------------------------------
    // False while the main display's scrollback is locked (not following new text).
    virtual bool main_is_following() { return true; }
    virtual void lock_main_scrollback() {}
    virtual void main_scroll_up(int /*lines*/) {}
    virtual void main_scroll_down(int /*lines*/) {}
    virtual void main_page_up() {}
    virtual void main_page_down() {}
    virtual bool main_has_selection() { return false; }
    // Ctrl-F: the find strip under the main text, with the keyboard in it.
    virtual void open_main_find() {}
    // A function key pressed outside the command line (the find box): the player's alias, as on
    // the command line. False when not taken.
    virtual bool function_key(const wxKeyEvent& /*event*/) { return false; }
    virtual void main_clear_selection() {}

    // ---- The channel display now shown (none: following, nothing selected) ------------------------
    virtual bool channel_is_following() { return true; }
    virtual void unlock_channel_scrollback() {}
    virtual void channel_clear_selection() {}

    // ---- Session and messages --------------------------------------------------------------------
    // The frame's session_state (2 is logged in).
    virtual int current_session_state() { return 0; }
    // A client message for the player in the main display: begin, print pieces, refresh once.
    virtual void begin_message() {}
    virtual void print_message(const char* /*text*/) {}
    virtual void refresh_text() {}
    // The line and a line feed go to the server.
    virtual void send_line(const char* /*text*/) {}
    // The break (0x03) and abort (0x1A) bytes, each as a line of its own; the main display
    // follows again afterwards, as with //break.
    virtual void send_break() {
        send_line("\x03");
        unlock_main_scrollback();
    }
    virtual void send_abort() {
        send_line("\x1a");
        unlock_main_scrollback();
    }

    // ---- Panels ------------------------------------------------------------------------------------
    // Shows or hides popup window number (1 to 10).
    virtual void toggle_popup(int /*number*/) {}
    // One step of the automap's size, as the View menu's items.
    virtual void automap_smaller() {}
    virtual void automap_larger() {}
    // Shows or hides the automap (Ctrl-M): the setting and the visible work.
    virtual void set_automap_display(int /*value*/) {}
    // After a setting that changes the sizes of panels (input_height, channel_window_height).
    virtual void layout_panels() {}
    // After the main font changed size: every panel measured with it is laid out again.
    virtual void refresh_main_font() {}

    // ---- Clipboard (UTF-8) -------------------------------------------------------------------------
    virtual void clipboard_set_text(const char* /*text*/) {}
    // False when the clipboard holds no text or can't be opened.
    virtual bool clipboard_get_text(std::string* /*text*/) { return false; }
};

void zorn_set_frame_link(zorn_frame_link* link);
// Null while no frame is registered.
zorn_frame_link* zorn_get_frame_link();

// The click sound of a button: a zorn_audio_noise_tick (zorn_play_noise_tick). Tests may point it
// elsewhere to count clicks.
extern void (*zorn_button_click_sound)();
