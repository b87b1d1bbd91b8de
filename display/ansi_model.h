#pragma once
// What a zorn_ansi_display does without its window: the parser for the few ANSI sequences the
// game sends, the render list (the display's own history), suspension and re-rendering, and the
// view logic of following the newest line or staying locked. It drives a zorn_textctrl_model and
// reaches its widget only through zorn_ansi_view_client.
//
// Parser states (ansi_state / escape_state):
//   text (1)                 ESC -> flush, escape(0); LF -> run, flush, colour; printable -> run
//   escape(0), behind ESC     '[' -> escape(1); 'c' -> reset; other -> log; then text
//   escape(1), behind ESC [   digit -> value x 16 + digit; 'm' -> apply value; other -> log; then text
// Digits are read in base 16 ("parser form"): "31" is 0x31 = 49. A semicolon is not understood: a
// sequence with two parameters logs code 59 and the rest of it shows as text. The state carries
// over between blocks, so a sequence may be split anywhere; a run of text does not.

#include <cstdint>
#include <cstdio>

#include "display/ansi_palette.h"
#include "display/render_list.h"
#include "display/text_model.h"

class zorn_ansi_view_client {
public:
    virtual ~zorn_ansi_view_client() = default;
    // Set the scrollbar from the text control's scroll info.
    virtual void update_scrollbar() {}
    // Repaint the display (its frame shows the lock) and its text control.
    virtual void repaint_display() {}
    // The lock was taken or released: the status bar shows it.
    virtual void lock_changed() {}
};

class zorn_ansi_model {
public:
    static constexpr int run_limit = 256;  // bytes per run handed to the text control
    static constexpr zorn_rgb inverse_background{64, 64, 64};

    explicit zorn_ansi_model(zorn_textctrl_model* text, zorn_ansi_view_client* client = nullptr);
    zorn_ansi_model(const zorn_ansi_model&) = delete;
    zorn_ansi_model& operator=(const zorn_ansi_model&) = delete;

    // Text in.
    void add_ansi_text(const char* data, int length);
    // Plain text at the current colours, no parsing; a null text is ignored.
    void add_text(const char* text);
    void process_ansi_code(int first, int second);
    void process_ansi_color();
    void reset_colors();
    void clear_display();
    void suspend_updates() { updates_suspended = 1; }
    void resume_updates();
    void rerender();
    void rerender_flush();
    void set_word_wrap(int value);
    // The load test of //debugfill: lines of random words in random colours, straight into the
    // text control. Answers the characters written.
    int debug_fill(int line_total = 100000);

    // View.
    void scroll_to_end();
    void lock_scrollback();
    void unlock_scrollback();
    void scroll_by(int delta);
    void scroll_up(int count);
    void scroll_down(int count);
    void page_up();
    void page_down();
    // The scrollbar's thumb moved to position (scroll_event_handler without the widget).
    void scroll_thumb_moved(int position);
    void set_scroll_position(int position);
    // A search jump: locks the view with lines first to last a little above its middle, so that
    // the live end of a split view doesn't cover them.
    void lock_at_lines(int first, int last);
    bool is_following() const { return following != 0; }
    // The index that the view's end position stands for (E).
    int end_position() const;

    // History.
    size_t render_record_count() const { return render.count(); }
    void render_record(size_t i, zorn_render_list* out) const { render.record(i, out); }
    const zorn_render_store& render_store() const { return render; }
    // The whole history, pending text included, to an open stream that stays open: as a web page
    // or as plain text (display/log_export.cpp).
    void export_html(FILE* file);
    void export_text(FILE* file);

    zorn_textctrl_model* text;
    zorn_ansi_view_client* client;

    int no_lock = 0;
    int text_received = 0;
    int ansi_state = 1;
    int escape_state = 0;
    int escape_value = 0;
    int ansi_attributes = 0;
    int ansi_color = zorn_ansi_white;
    int shown_attributes = -1;
    int shown_color = -1;
    int updates_suspended = 0;
    int following = 1;
    int view_line = 0;
    uint32_t pending_rgb = 0;
    int pending_attributes = 0;
    int pending_color = 0;
    uint32_t current_rgb = 0;
    int current_attributes = 0;
    int current_color = 0;

private:
    void flush(const char* run, int length);
    void add_to_render_list(const char* text, int length);
    bool apply_code(int value);
    void single_character(unsigned char byte);
    void escape_sequence_byte(unsigned char byte);
    void set_locked(bool locked);

    zorn_render_store render;
};
