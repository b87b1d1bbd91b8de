#pragma once
// zorn_ansi_display: the widget that other subsystems write text to. It joins the ANSI parser and
// history (display/ansi_model.h), a zorn_textctrl that shows the text, and a vertical scrollbar
// with the scroll lock, drawn as a two-pixel frame round the text: red while locked.
// zorn_main_window is the main text; channel tabs and popup windows use the display or a subclass.
//
// The frame clears ansi.text_received before a read block, and refreshes once after it
// (refresh_text) if it was set: add_ansi_text itself never repaints.

#include <functional>

#include <wx/scrolbar.h>

#include "display/ansi_model.h"
#include "display/log_export.h"
#include "display/textctrl.h"
#include "input/embedded_window.h"

class wxFocusEvent;
class wxMouseEvent;
class wxScrollEvent;
class zorn_find_strip;

class zorn_ansi_scrollbar : public wxScrollBar {
public:
    zorn_ansi_scrollbar(wxWindow* parent, wxWindowID id);
};

class zorn_ansi_display : public zorn_embedded_window, public zorn_ansi_view_client {
public:
    zorn_ansi_display(wxWindow* parent, wxWindowID id = wxID_ANY, const wxString& name = wxT("ansi display"));

    // Text in.
    void add_ansi_text(const char* data, int length) { ansi.add_ansi_text(data, length); }
    void add_text(const char* text) { ansi.add_text(text); }
    void process_ansi_code(int first, int second) { ansi.process_ansi_code(first, second); }
    void reset_colors() { ansi.reset_colors(); }
    void refresh_text();
    void clear_display() { ansi.clear_display(); }
    void suspend_updates() { ansi.suspend_updates(); }
    void resume_updates() { ansi.resume_updates(); }
    void rerender() { ansi.rerender(); }
    void rerender_flush() { ansi.rerender_flush(); }
    void export_html(FILE* file) { ansi.export_html(file); }
    void export_text(FILE* file) { ansi.export_text(file); }

    // View.
    void scroll_to_end() { ansi.scroll_to_end(); }
    void lock_scrollback() { ansi.lock_scrollback(); }
    void unlock_scrollback() { ansi.unlock_scrollback(); }
    void scroll_by(int value) { ansi.scroll_by(value); }
    void scroll_up(int value) { ansi.scroll_up(value); }
    void scroll_down(int value) { ansi.scroll_down(value); }
    void page_up() { ansi.page_up(); }
    void page_down() { ansi.page_down(); }
    int get_scroll_position() const;
    void set_scroll_position(int value) { ansi.set_scroll_position(value); }
    void update_scrollbar() override;
    void enable_scrollbar(int value);
    int get_scrollbar_width() const;
    bool is_following() const { return ansi.is_following(); }

    // Others.
    void set_display_font(zorn_font* font);
    void set_word_wrap(int value);
    // The server's "main_window" "flash": 16 periods of 200 ms, the frame blinking white and black.
    void flash_border();
    // //debugfill: 100,000 lines of random words in random colours, and the record sizes on stdout.
    void debug_fill();

    void resize_handler(bool size_changed) override;
    void repaint_internal(zorn_bitmap& bitmap) override;
    bool animation_callback(int elapsed_ms) override;

    // The frame colours of the state shown now: outer and inner line.
    void frame_colors(zorn_rgb* outer, zorn_rgb* inner) const;

    zorn_textctrl* textctrl;      // child window; textctrl->owner is this display
    zorn_ansi_scrollbar* scrollbar;  // child window, vertical, named "scrollBar"
    zorn_ansi_model ansi;
    int scrollbar_enabled = 1;
    int draw_frame = 1;  // 0 in a popup window: no frame, the text covers the whole area
    // The find strip under the text (Ctrl-F); only the main text has one, others keep null.
    zorn_find_strip* find_strip = nullptr;
    // Places the text control and, while it shows, the find strip below it. Unlike a resize of
    // the display this keeps the scroll lock.
    void layout_foot();

protected:
    void repaint_display() override;
    void lock_changed() override;

private:
    void wheel_handler(wxMouseEvent& event);
    void scroll_event_handler(wxScrollEvent& event);
    void focus_handler(wxFocusEvent& event);

    int scrollbar_width;

    wxDECLARE_EVENT_TABLE();
};

// The main text. Its resize also follows the main scrollbar setting and places the automap and
// the group display on the text while they are docked (children of the text control).
class zorn_main_window : public zorn_ansi_display {
public:
    zorn_main_window(wxWindow* parent, wxWindowID id = wxID_ANY);

    void resize_handler(bool force) override;

    // Set by the frame when it makes the panels; null while a panel doesn't exist.
    zorn_embedded_window* automap_widget = nullptr;
    zorn_embedded_window* group_widget = nullptr;
    std::function<int()> automap_inset;         // the automap widget's inset
    std::function<int()> group_needed_height;   // the group display's needed height
    std::function<bool()> group_has_members;
};

// The save dialog's work on a display once it has answered OK (see display/log_export.h).
inline bool zorn_save_logfile(zorn_ansi_display* display, const char* path, int filter_index, std::string* message) {
    return zorn_save_logfile(display ? &display->ansi : nullptr, path, filter_index, message);
}
