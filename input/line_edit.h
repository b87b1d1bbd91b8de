#pragma once
// zorn_line_edit: the box the player types in. The keyboard focus stays here nearly all the time,
// so this class also carries the client's keyboard: walking with the numeric keypad, scrolling the
// main display, function key aliases and the Ctrl shortcuts. The histories and the text cleaning
// live in input/line_edit_model.h; this class is their text box. Everything outside the box (main
// and channel display, session, clipboard, server) is reached through zorn_frame_link, and does
// nothing without a frame.

#include <wx/textctrl.h>

#include <string>

#include "input/line_edit_model.h"

class wxKeyEvent;
class wxMouseEvent;
class wxClipboardTextEvent;
class zorn_frame_link;

class zorn_line_edit : public wxTextCtrl, private zorn_line_box {
public:
    // Longest command handed on; the cleaned text is cut here without a word.
    static constexpr int max_command_bytes = 4999;
    // The main font is never made smaller than this by Ctrl-minus.
    static constexpr int min_font_points = 3;

    zorn_line_edit(wxWindow* parent, wxWindowID id, const wxPoint& pos, const wxSize& size,
                   const wxString& name);

    void history_up();
    void history_down();
    void history_store(const std::string& text);
    // //history: the current list, newest at the bottom, as a client message.
    void history_show();
    void select_history_list(int value) { history.select_history_list(value); }
    const zorn_command_history& histories() const { return history; }

    // Telnet ECHO from the server: what is typed is invisible and stays out of history and echo.
    void enter_password_mode();
    void leave_password_mode();
    bool echo_allowed() const { return !history.in_password_mode(); }

    // Pastes the clipboard through clean_text, over the selection or at the insertion point.
    void manual_clipboard_paste();
    void set_line_font();
    // The colours and default style of the box; runs before and after every change of the text
    // made by the program.
    void apply_text_style();
    // Empties the box.
    void clear_line();
    void enter_pressed();

    void key_down_handler(wxKeyEvent& event);
    void key_up_handler(wxKeyEvent& event);
    void wheel_handler(wxMouseEvent& event);
    void pasteEvent(wxClipboardTextEvent& event);

    // Aliases "f01".."f12" with "c" (Ctrl or Meta) or "s" (Shift) in front, sent unechoed; false
    // when the key isn't taken (Alt, or not a function key).
    bool fkey_pressed(const wxKeyEvent& event);

    int key_held = 0;
    int last_key_ctrl = -1;
    int last_key_code = 0;
    int wheel_total = 0;

private:
    // zorn_line_box: UTF-8 text and byte positions for the history.
    std::string get_text() const override;
    void set_text(const std::string& text) override;
    long insertion_point() const override;
    void set_insertion_point(long position) override;

    bool keypad_walk(const wxKeyEvent& event, int old_held);
    bool selected_line_key(const wxKeyEvent& event);
    bool ctrl_key(wxKeyEvent& event);
    bool ctrl_digit(int digit, bool shift);
    bool plain_key(const wxKeyEvent& event);
    void change_font_size(int delta);
    void ctrl_copy();
    void escape_pressed();
    bool whole_text_selected() const;
    bool main_locked() const;

    zorn_command_history history;

    wxDECLARE_EVENT_TABLE();
};
