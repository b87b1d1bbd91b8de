// The frame's side of the command line: the scrollback keys reach the main display, the
// clipboard, and the line editor's password mode and histories for the session code.
#include "app/clipboard.h"
#include "app/main_frame.h"
#include "display/ansi_display.h"
#include "display/find_strip.h"
#include "input/input_window.h"

bool zorn_mw::main_is_following() { return main_display->is_following(); }
void zorn_mw::lock_main_scrollback() { main_display->lock_scrollback(); }
void zorn_mw::main_scroll_up(int lines) { main_display->scroll_up(lines); }
void zorn_mw::main_scroll_down(int lines) { main_display->scroll_down(lines); }
void zorn_mw::main_page_up() { main_display->page_up(); }
void zorn_mw::main_page_down() { main_display->page_down(); }
void zorn_mw::open_main_find() {
    if (main_display->find_strip) main_display->find_strip->open();
}

bool zorn_mw::function_key(const wxKeyEvent& event) {
    return session_state == session_logged_in && input_window->line_edit.fkey_pressed(event);
}

bool zorn_mw::main_has_selection() { return main_display->textctrl->has_selection(); }

void zorn_mw::main_clear_selection() {
    main_display->textctrl->clear_selection();
    main_display->textctrl->Refresh(false);
}

void zorn_mw::clipboard_set_text(const char* text) { set_clipboard_data(wxString::FromUTF8(text ? text : "")); }

bool zorn_mw::clipboard_get_text(std::string* text) {
    wxString value;
    if (!get_clipboard_data(&value)) return false;
    *text = value.utf8_str().data();
    return true;
}

void zorn_mw::enter_password_mode() { input_window->line_edit.enter_password_mode(); }
void zorn_mw::leave_password_mode() { input_window->line_edit.leave_password_mode(); }
bool zorn_mw::echo_allowed() const { return input_window->line_edit.echo_allowed(); }
void zorn_mw::select_history_list(int list) { input_window->line_edit.select_history_list(list); }
