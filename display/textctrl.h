#pragma once
// zorn_textctrl: the custom-drawn text widget of every text surface. The text, its lines, the
// view position and the selection live in `model` (display/text_model.h), which needs no window;
// this class feeds it the window's size and the font's character widths, paints what it holds
// from glyph masks, turns mouse events into selections, clipboard copies, link clicks and
// drag-scrolling, and runs the background colour flashes.
//
// The widget always sits inside a zorn_ansi_display, its owner, which holds the scrollbar and the
// scroll lock; everything that scrolls goes through the owner.

#include "display/color_flash.h"
#include "display/glyph_painter.h"
#include "display/text_model.h"
#include "display/text_search.h"
#include "input/embedded_window.h"

class wxFocusEvent;
class wxMouseCaptureLostEvent;
class wxMouseEvent;
class zorn_ansi_display;
class zorn_font;

class zorn_textctrl : public zorn_embedded_window, public zorn_textctrl_view_client {
public:
    static constexpr zorn_rgb selection_background{64, 64, 64};
    static constexpr zorn_rgb search_hit_background{0, 90, 160};
    static constexpr zorn_rgb search_current_background{210, 110, 0};
    static constexpr zorn_rgb split_divider_color{160, 160, 160};
    static constexpr int split_divider_height = 2;

    zorn_textctrl(wxWindow* parent, wxWindowID id, const wxPoint& pos = wxDefaultPosition,
                  const wxSize& size = wxSize(20, 20));

    // Character widths and line pitch from the font (less 1 with compact_mode), then a re-wrap.
    void set_font(zorn_font* new_font);
    void set_colors(const zorn_rgb& text, const zorn_rgb& background) { model.set_colors(text, background); }
    void add_text(const char* text) { model.add_text(text); }
    void relayout();
    void clear_text();
    void set_wrap(int value) { model.set_wrap(value); }
    void get_max_char_size(int* width, int* height) const { model.get_max_char_size(width, height); }

    int get_visible_line_count() const { return model.get_visible_line_count(); }
    void set_scroll_line(int line) { model.set_scroll_line(line); }
    int set_top_line(int line) { return model.set_top_line(line); }
    // The view moved: invalidate, and the next paint draws it.
    void request_repaint() override { Refresh(false); }
    void get_scroll_info(int* position, int* range, int* page) const { model.get_scroll_info(position, range, page); }
    void clear_selection() { model.clear_selection(); }
    bool has_selection() const { return model.has_selection(); }

    // The payload of a "colorflash" event behind that word.
    void parse_colorflash(const char* payload);

    void resize_handler(bool size_changed) override;
    void repaint_internal(zorn_bitmap& bitmap) override;
    bool animation_callback(int elapsed_ms) override;

    zorn_textctrl_model model;
    zorn_ansi_display* owner = nullptr;  // may be null; every use tests it
    zorn_font* font = nullptr;           // not owned
    zorn_color_flash_list flash_list;
    int drag_scroll_speed = 0;  // lines per step while a selection is dragged past an edge
    int url_click_active = 0;
    // The find strip's search, whose hits are lit while it is open; null otherwise. Not owned.
    const zorn_text_search* search = nullptr;
    // Set on the main text only: while the view is scrolled back, its lower third shows the live
    // end (the split_view setting).
    int split_allowed = 0;
    // Lines the live end takes while the split shows; 0 when it doesn't.
    int split_lines() const;

private:
    void paint_line(zorn_pixel_painter& painter, int line, int y);
    void paint_live_end(zorn_pixel_painter& painter, int lines);
    void collect_hits(int line);
    void mouse_handler(wxMouseEvent& event);
    void mouse_event_handler(wxMouseCaptureLostEvent& event);
    void focus_handler(wxFocusEvent& event);
    void start_drag_timer();
    void copy_selection_to_clipboard();
    bool url_clicked_on(int line, int offset);
    void move_cursor_to(int x, int y);

    zorn_glyph_masks glyphs;
    struct hit_range {
        int from, to;
        bool current;
    };
    std::vector<hit_range> line_hits;  // of the line being painted; kept to reuse its memory

    wxDECLARE_EVENT_TABLE();
};
