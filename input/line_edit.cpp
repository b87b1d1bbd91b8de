#include "input/line_edit.h"

#include <wx/event.h>

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <string_view>

#include "base/fixed_string.h"
#include "config/debug_log.h"
#include "config/lconfig.h"
#include "input/frame_link.h"
#include "theme/font.h"

namespace {

// session_state of the frame while a character is in the game.
constexpr int session_logged_in = 2;

const wxColour box_background(64, 64, 64, 255);
const wxColour box_foreground(255, 255, 255, 255);

void log2(const char* text) {
    if (zorn_debug_level >= 2) zorn_client_debug_printf("%s", text);
}

std::string to_utf8(const wxString& text) {
    const wxScopedCharBuffer buffer = text.utf8_str();
    return std::string(buffer.data(), buffer.length());
}

// The walking command of a keypad key; null for other keys. Only the digit keys walk: with NumLock
// off the keypad's Home, End, arrows and pages keep their editing meaning.
const char* keypad_command(int code) {
    switch (code) {
        case WXK_NUMPAD1: return "southwest";
        case WXK_NUMPAD2: return "south";
        case WXK_NUMPAD3: return "southeast";
        case WXK_NUMPAD4: return "west";
        case WXK_NUMPAD5: return "scan -ln";
        case WXK_NUMPAD6: return "east";
        case WXK_NUMPAD7: return "northwest";
        case WXK_NUMPAD8: return "north";
        case WXK_NUMPAD9: return "northeast";
        case WXK_NUMPAD_ENTER: return "down";
        case WXK_NUMPAD_SUBTRACT: return "down";
        case WXK_NUMPAD_ADD: return "up";
        default: return nullptr;
    }
}

bool is_function_key(int code) { return code >= WXK_F1 && code <= WXK_F12; }
bool is_home(int code) { return code == WXK_HOME || code == WXK_NUMPAD_HOME; }
bool is_end(int code) { return code == WXK_END || code == WXK_NUMPAD_END; }
bool is_enter(int code) { return code == WXK_RETURN || code == WXK_NUMPAD_ENTER; }

zorn_frame_link* frame() { return zorn_get_frame_link(); }

bool logged_in() {
    zorn_frame_link* link = frame();
    return link && link->current_session_state() == session_logged_in;
}

void toggle_setting(int (LConfig::*get)() const, void (LConfig::*set)(int)) {
    LConfig& config = LConfig::instance();
    (config.*set)((config.*get)() ? 0 : 1);
}

// The automap's switch also shows or hides it, through the frame when there is one.
void toggle_automap() {
    LConfig& config = LConfig::instance();
    const int value = config.get_automap_display() ? 0 : 1;
    if (zorn_frame_link* link = frame())
        link->set_automap_display(value);
    else
        config.set_automap_display(value);
}

void layout() {
    if (zorn_frame_link* link = frame()) link->layout_panels();
}

void lock_and_page(bool up) {
    zorn_frame_link* link = frame();
    if (!link) return;
    link->lock_main_scrollback();
    if (up)
        link->main_page_up();
    else
        link->main_page_down();
}

}  // namespace

wxBEGIN_EVENT_TABLE(zorn_line_edit, wxTextCtrl)
    EVT_KEY_DOWN(zorn_line_edit::key_down_handler)
    EVT_KEY_UP(zorn_line_edit::key_up_handler)
    EVT_MOUSEWHEEL(zorn_line_edit::wheel_handler)
    EVT_TEXT_PASTE(wxID_ANY, zorn_line_edit::pasteEvent)
wxEND_EVENT_TABLE()

zorn_line_edit::zorn_line_edit(wxWindow* parent, wxWindowID id, const wxPoint& pos, const wxSize& size,
                               const wxString& name)
    : wxTextCtrl(parent, id, wxEmptyString, pos, size,
                 wxBORDER_NONE | wxTE_MULTILINE | wxTE_RICH | wxTE_PROCESS_ENTER | wxTE_NOHIDESEL,
                 wxDefaultValidator, name) {
    set_line_font();
}

// ---- Text box for the histories -----------------------------------------------------------------

// wx counts characters, the history counts bytes of UTF-8: the two differ only for text typed
// outside ASCII, which a paste never brings but the keyboard can.
std::string zorn_line_edit::get_text() const { return to_utf8(GetValue()); }

void zorn_line_edit::set_text(const std::string& text) {
    clear_line();
    AppendText(wxString::FromUTF8(text.data(), text.size()));
    SetInsertionPointEnd();
    apply_text_style();
}

long zorn_line_edit::insertion_point() const {
    const long point = GetInsertionPoint();
    return static_cast<long>(to_utf8(GetValue().Left(static_cast<size_t>(std::max(point, 0L)))).size());
}

void zorn_line_edit::set_insertion_point(long position) {
    const std::string text = get_text();
    const size_t bytes = std::min(static_cast<size_t>(std::max(position, 0L)), text.size());
    SetInsertionPoint(static_cast<long>(wxString::FromUTF8(text.data(), bytes).length()));
}

// ---- Style ----------------------------------------------------------------------------------------

void zorn_line_edit::apply_text_style() {
    // In password mode the letters take the background's colour: typed text can't be read off
    // the screen, and the box still shows that something was typed by its caret.
    const wxColour& foreground = history.in_password_mode() ? box_background : box_foreground;
    SetBackgroundColour(box_background);
    SetForegroundColour(foreground);
    const wxTextAttr style(foreground, box_background, *zorn_main_font());
    SetDefaultStyle(style);
    // Text already in the box keeps the colour it was inserted with: restyle it too, so that a
    // password typed before the server asked for one disappears as well.
    const long last = GetLastPosition();
    if (last > 0) SetStyle(0, last, style);
}

void zorn_line_edit::set_line_font() {
    apply_text_style();
    SetFont(*zorn_main_font());
    apply_text_style();
}

void zorn_line_edit::enter_password_mode() {
    history.set_password_mode(true);
    apply_text_style();
}

void zorn_line_edit::leave_password_mode() {
    history.set_password_mode(false);
    apply_text_style();
}

void zorn_line_edit::clear_line() {
    apply_text_style();
    ChangeValue(wxEmptyString);
    apply_text_style();
}

// ---- Histories ------------------------------------------------------------------------------------

void zorn_line_edit::history_up() { history.history_up(*this); }

void zorn_line_edit::history_down() { history.history_down(*this); }

void zorn_line_edit::history_store(const std::string& text) { history.history_store(text); }

void zorn_line_edit::history_show() {
    zorn_frame_link* link = frame();
    if (!link) return;
    link->begin_message();
    link->print_message(history.history_text().c_str());
    link->refresh_text();
}

// ---- Enter and paste --------------------------------------------------------------------------------

void zorn_line_edit::enter_pressed() {
    zorn_fixed_string cleaned;
    clean_text(get_text(), &cleaned);
    const std::string command(cleaned.c_str(), static_cast<size_t>(std::min(cleaned.size(), max_command_bytes)));

    // With cmd_pushthrough the command stays in the box, selected: the next key typed replaces
    // it, and Return alone sends it again.
    if (logged_in() && LConfig::instance().get_cmd_pushthrough())
        SetSelection(-1, -1);
    else
        clear_line();

    if (!command.empty()) history_store(cleaned.c_str());
    if (zorn_frame_link* link = frame()) link->process_user_command(command.c_str(), 1);
    apply_text_style();
}

void zorn_line_edit::manual_clipboard_paste() {
    log2("zorn_line_edit::manual_clipboard_paste()\n");
    zorn_frame_link* link = frame();
    std::string raw;
    if (!link || !link->clipboard_get_text(&raw)) return;
    const std::string cleaned = clean_text(raw);
    const wxString text = wxString::FromUTF8(cleaned.data(), cleaned.size());
    apply_text_style();
    long from = 0, to = 0;
    GetSelection(&from, &to);
    if (from != to)
        Replace(from, to, text);
    else
        WriteText(text);
    apply_text_style();
}

// The native paste would take the clipboard's text as it is: every paste goes through the
// cleaning instead.
void zorn_line_edit::pasteEvent(wxClipboardTextEvent&) {
    log2("zorn_line_edit::pasteEvent()\n");
    manual_clipboard_paste();
}

// ---- Keys -------------------------------------------------------------------------------------------

bool zorn_line_edit::main_locked() const {
    zorn_frame_link* link = frame();
    return link && !link->main_is_following();
}

bool zorn_line_edit::whole_text_selected() const {
    long from = 0, to = 0;
    GetSelection(&from, &to);
    return from == 0 && to == GetLastPosition() && to > from;
}

void zorn_line_edit::key_down_handler(wxKeyEvent& event) {
    const int old_held = key_held;
    const int old_ctrl = last_key_ctrl;
    const int old_code = last_key_code;
    const int code = event.GetKeyCode();
    const bool ctrl = event.ControlDown();
    key_held = 1;
    last_key_ctrl = ctrl ? 1 : 0;
    last_key_code = code;

    if (keypad_walk(event, old_held)) return;
    if (selected_line_key(event)) return;
    if (ctrl) {
        // Auto-repeat of a shortcut does nothing; a held Ctrl-Backspace still deletes words.
        if (old_held == 1 && old_ctrl == 1 && old_code == code && code != WXK_BACK) return;
        if (ctrl_key(event)) return;
    } else if (plain_key(event)) {
        return;
    }

    // The native control handles the key. Typing ends a scrollback lock unless locks are meant to
    // survive until Escape, Ctrl-Q, Return or scrolling to the end.
    if (main_locked() && !LConfig::instance().get_locking_scrollback_enable()) frame()->unlock_main_scrollback();
    event.Skip();
}

bool zorn_line_edit::keypad_walk(const wxKeyEvent& event, int old_held) {
    if (!LConfig::instance().get_keypad_walking() || event.ControlDown() || event.ShiftDown()) return false;
    const char* command = keypad_command(event.GetKeyCode());
    if (!command) return false;
    // A held key repeats its key-down: one step per press, however long it is held.
    if (old_held == 1) return true;
    zorn_frame_link* link = frame();
    if (!link) return true;
    if (!link->main_is_following()) link->unlock_main_scrollback();
    link->process_user_command(command, 1);
    return true;
}

// What cmd_pushthrough leaves behind: the whole last command selected.
bool zorn_line_edit::selected_line_key(const wxKeyEvent& event) {
    if (!whole_text_selected()) return false;
    const int code = event.GetKeyCode();
    if ((is_home(code) || code == WXK_LEFT) && LConfig::instance().get_cmd_pushthrough()) {
        SetSelection(-1, -1);
        SetInsertionPoint(0);
        return true;
    }
    if (code == WXK_UP && !event.ControlDown() && !event.ShiftDown()) {
        // The selected text is the newest entry: one step would show it again, two reach the
        // command before it.
        SetSelection(-1, -1);
        SetInsertionPointEnd();
        history_up();
        history_up();
        return true;
    }
    return false;
}

void zorn_line_edit::change_font_size(int delta) {
    zorn_font* font = zorn_main_font();
    const int size = std::max(font->GetPointSize() + delta, static_cast<int>(min_font_points));
    if (size != font->GetPointSize()) font->SetPointSize(size);
    set_line_font();
    if (zorn_frame_link* link = frame()) {
        link->unlock_main_scrollback();
        link->refresh_main_font();
    }
}

// Ctrl-C copies first and breaks last.
void zorn_line_edit::ctrl_copy() {
    long from = 0, to = 0;
    GetSelection(&from, &to);
    zorn_frame_link* link = frame();
    if (from != to) {
        if (link) link->clipboard_set_text(to_utf8(GetStringSelection()).c_str());
        const long point = GetInsertionPoint();
        SetSelection(0, 0);
        SetInsertionPoint(point);
        return;
    }
    clear_line();
    if (!link) return;
    if (link->main_has_selection())
        link->main_clear_selection();
    else
        link->send_break();
}

bool zorn_line_edit::ctrl_digit(int digit, bool shift) {
    if (!shift) {
        if (logged_in()) frame()->toggle_popup(digit == 0 ? 10 : digit);
        return true;
    }
    switch (digit) {
        case 1: toggle_automap(); break;
        case 2: toggle_setting(&LConfig::get_group_status_display, &LConfig::set_group_status_display); break;
        case 3: toggle_setting(&LConfig::get_hpbar_enable, &LConfig::set_hpbar_enable); break;
        case 4: toggle_setting(&LConfig::get_enemy_hpbar_enable, &LConfig::set_enemy_hpbar_enable); break;
        case 5: toggle_setting(&LConfig::get_exp_display, &LConfig::set_exp_display); break;
        case 7: toggle_setting(&LConfig::get_fkey_button_display, &LConfig::set_fkey_button_display); break;
        case 8: toggle_setting(&LConfig::get_popup_display, &LConfig::set_popup_display); break;
        case 9: toggle_setting(&LConfig::get_mw_scrollbar_enable, &LConfig::set_mw_scrollbar_enable); break;
        default: break;  // 0 and 6 are free
    }
    return true;
}

// True when the key was taken; false sends it on to the native control.
bool zorn_line_edit::ctrl_key(wxKeyEvent& event) {
    int code = event.GetKeyCode();
    if (code >= 'a' && code <= 'z') code = std::toupper(code);
    const bool shift = event.ShiftDown();
    zorn_frame_link* link = frame();
    LConfig& config = LConfig::instance();

    if (code >= '0' && code <= '9') return ctrl_digit(code - '0', shift);
    switch (code) {
        case '+': case '=': case WXK_NUMPAD_ADD: case WXK_ADD:
            if (shift) {
                config.set_channel_window_height(std::min(config.get_channel_window_height() + 5, 80));
                layout();
            } else {
                change_font_size(1);
            }
            return true;
        case '-': case '_': case WXK_NUMPAD_SUBTRACT: case WXK_SUBTRACT:
            if (shift) {
                config.set_channel_window_height(std::max(config.get_channel_window_height() - 5, 10));
                layout();
            } else {
                change_font_size(-1);
            }
            return true;
        case '[': case '{':
            if (shift) {
                config.set_input_height(std::max(config.get_input_height() - 12, 24));
                layout();
            } else if (link) {
                link->automap_smaller();
            }
            return true;
        case ']': case '}':
            if (shift) {
                config.set_input_height(config.get_input_height() + 12);
                layout();
            } else if (link) {
                link->automap_larger();
            }
            return true;
        case 'C': ctrl_copy(); return true;
        case 'D':
            clear_line();
            if (link) link->send_break();
            return true;
        case 'F':
            if (link) link->open_main_find();
            return true;
        case 'K': clear_line(); return true;
        case 'M': toggle_automap(); return true;
        case 'P': toggle_setting(&LConfig::get_hpbar_enable, &LConfig::set_hpbar_enable); return true;
        case 'Q':
            if (!link) return true;
            if (!link->main_is_following())
                link->unlock_main_scrollback();
            else if (!link->channel_is_following())
                link->unlock_channel_scrollback();
            return true;
        case 'S': case 'Z':
            if (link) link->lock_main_scrollback();
            return true;
        case 'V': manual_clipboard_paste(); return true;
        case '\\': case '|':
            clear_line();
            if (link) link->send_abort();
            return true;
        case WXK_RETURN: case WXK_NUMPAD_ENTER:
            event.Skip();  // the box gets a line feed
            return true;
        case WXK_HOME: case WXK_NUMPAD_HOME: SetInsertionPoint(0); return true;
        case WXK_END: case WXK_NUMPAD_END: SetInsertionPointEnd(); return true;
        case WXK_UP: case WXK_PAGEUP: lock_and_page(true); return true;
        case WXK_DOWN: case WXK_PAGEDOWN: lock_and_page(false); return true;
        default: break;
    }
    if (is_function_key(code)) return logged_in() && fkey_pressed(event);
    return false;
}

void zorn_line_edit::escape_pressed() {
    zorn_frame_link* link = frame();
    if (link && !link->main_is_following()) {
        link->unlock_main_scrollback();
    } else if (link && !link->channel_is_following()) {
        link->unlock_channel_scrollback();
    } else {
        clear_line();
        if (link) {
            link->main_clear_selection();
            link->channel_clear_selection();
        }
    }
}

bool zorn_line_edit::plain_key(const wxKeyEvent& event) {
    const int code = event.GetKeyCode();
    if (is_enter(code)) {
        if (main_locked()) frame()->unlock_main_scrollback();
        enter_pressed();
        return true;
    }
    if (is_home(code)) {
        SetInsertionPoint(0);
        return true;
    }
    if (is_end(code)) {
        SetInsertionPointEnd();
        return true;
    }
    switch (code) {
        case WXK_ESCAPE: escape_pressed(); return true;
        case WXK_UP: history_up(); return true;
        case WXK_DOWN: history_down(); return true;
        case WXK_PAGEUP: lock_and_page(true); return true;
        case WXK_PAGEDOWN: lock_and_page(false); return true;
        default: break;
    }
    if (is_function_key(code)) return logged_in() && fkey_pressed(event);
    return false;
}

bool zorn_line_edit::fkey_pressed(const wxKeyEvent& event) {
    const int code = event.GetKeyCode();
    if (!is_function_key(code)) return false;
    const char* prefix = "";
    if (event.ControlDown() || event.MetaDown())
        prefix = "c";
    else if (event.AltDown())
        return false;  // Alt-F4 and friends belong to the desktop
    else if (event.ShiftDown())
        prefix = "s";
    char alias[16];
    std::snprintf(alias, sizeof alias, "%sf%02d", prefix, code - WXK_F1 + 1);
    zorn_frame_link* link = frame();
    if (!link) return false;
    // Aliases are resolved by the server and not echoed.
    link->process_user_command(alias, 0);
    link->unlock_main_scrollback();
    return true;
}

void zorn_line_edit::key_up_handler(wxKeyEvent& event) {
    key_held = 0;
    event.Skip();
}

// The wheel over the command line scrolls the main text, one step per full notch of the wheel.
void zorn_line_edit::wheel_handler(wxMouseEvent& event) {
    const int rotation = event.GetWheelRotation();
    if (rotation == 0) return;
    const int delta = std::max(event.GetWheelDelta(), 1);
    const int before = wheel_total / delta;
    wheel_total += rotation;
    const int after = wheel_total / delta;
    zorn_frame_link* link = frame();
    if (!link) return;
    link->lock_main_scrollback();
    if (after > before)
        link->main_scroll_up(3);
    else
        link->main_scroll_down(3);
}
