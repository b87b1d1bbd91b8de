#pragma once
// The text of one text control, free of any window: what zorn_textctrl stores, how bytes become
// stored text, how the text is broken into display lines at the window's width and wrapped anew
// when the width changes, which line the view hangs on, and what is selected. The widget feeds it
// the window size and a table of character widths and paints what it reads back.
//
// Storage. The raw chunk list is one byte stream (the text of every add_text call in arrival
// order, tabs expanded and high bytes folded, line feeds kept) plus one packed record per change
// of colour, zorn_textctrl_chunk. A display line is a packed record holding the stream offset
// where the line starts and whether it ended in a real line feed; its display chunks are the
// pieces of [start, end) cut at colour changes, derived when read. So a display chunk costs no
// memory, a colour change 8 bytes and a display line 8 bytes, and nothing is copied when lines
// wrap or are wrapped anew. Layout depends only on the bytes and the widths, never on where one
// add_text call ended, which is what lets a re-wrap walk the stream instead of a chunk list.
//
// Concurrency: text_mutex guards the stream and the line table; add_text, relayout and clear_text
// take it, the painter takes it around its walk (lock()). Everything else runs on the main thread.

#include <cstdint>
#include <mutex>
#include <string>
#include <vector>

#include "base/rgb.h"
#include "display/text_storage.h"

struct zorn_fixed_string;

// Raw chunk record: the stream offset where a colour begins (40 bits) and the colour, 0xRRGGBB.
struct zorn_textctrl_chunk {
    uint64_t bits;

    static constexpr int color_bits = 24;
    static zorn_textctrl_chunk make(uint64_t start, uint32_t rgb) { return {(start << color_bits) | (rgb & 0xffffff)}; }
    uint64_t start() const { return bits >> color_bits; }
    uint32_t rgb() const { return static_cast<uint32_t>(bits & 0xffffff); }
};
static_assert(sizeof(zorn_textctrl_chunk) == 8, "one colour change costs one word");

// Display line record: the stream offset of its first byte, and bit 63 set when it ended in a
// real line feed (hard_newline).
struct zorn_textctrl_line {
    uint64_t bits;

    static constexpr uint64_t hard_bit = uint64_t{1} << 63;
    uint64_t start() const { return bits & ~hard_bit; }
    bool hard_newline() const { return (bits & hard_bit) != 0; }
};
static_assert(sizeof(zorn_textctrl_line) == 8, "one display line costs one word");

// A display chunk as read back: its text, colour and pixel width.
struct zorn_textctrl_chunk_view {
    std::string text;
    zorn_rgb color;
    int width;
};

uint32_t zorn_pack_rgb(const zorn_rgb& color);
zorn_rgb zorn_unpack_rgb(uint32_t packed);

// The plain character that a byte of 0x80 and above stands for (Windows-1252 folded to 7 bits);
// other bytes come back unchanged.
char zorn_fold_byte(unsigned char byte);

// The shared pool that all text controls take their text pages from.
zorn_bulk_pool* zorn_textctrl_chunk_pool();

// How the model reaches its widget: a change of the view position asks for one repaint. The
// widget's repaint is an invalidation, so several changes within one event cost one paint.
class zorn_textctrl_view_client {
public:
    virtual ~zorn_textctrl_view_client() = default;
    virtual void request_repaint() = 0;
};

class zorn_textctrl_model {
public:
    static constexpr int line_table_step = 65536;  // line_capacity grows by this, never doubles
    static constexpr int chunk_text_limit = 5999;  // bytes one add_text keeps (zorn_fixed_string)
    static constexpr int tab_stop = 8;

    zorn_textctrl_model(int width = 20, int height = 20);
    zorn_textctrl_model(const zorn_textctrl_model&) = delete;
    zorn_textctrl_model& operator=(const zorn_textctrl_model&) = delete;

    // Widths of all 256 byte values (those outside 32 to 126 are forced to 0) and the line pitch.
    // Does not re-wrap: set_font in the widget follows it with relayout.
    void set_metrics(const int* widths, int line_height);
    // The window size. Re-wraps only when the width differs from last_width; answers whether it did.
    bool resize(int new_width, int new_height);
    int window_width() const { return width; }
    int window_height() const { return height; }

    void set_colors(const zorn_rgb& text, const zorn_rgb& background);
    void add_text(const char* text);
    void add_text(const char* text, size_t length);
    void relayout();
    void clear_text();
    void set_wrap(int value) { wrap_enabled = value; }
    void get_max_char_size(int* max_width, int* max_height) const;

    // View. Both setters ask the view client for a repaint.
    int get_visible_line_count() const;
    void set_scroll_line(int line);
    int set_top_line(int line);
    void get_scroll_info(int* position, int* range, int* page) const;
    // bottom_line: the line drawn lowest, when it isn't scroll_line (the live end of a split view).
    void translate_xy_to_line_and_offset(int x, int y, int* line, int* offset, int bottom_line = -1) const;

    // Selection.
    void clear_selection();
    bool has_selection() const { return selection_active != 0; }
    // Orders anchor and cursor into the selection fields.
    void normalise_selection();
    // The selected text as copy_selection_to_clipboard builds it; false (and a log line) when a
    // line of the selection is missing.
    bool selection_text(std::string* out) const;
    // Selects offsets first to last of one line, with anchor and cursor at its ends.
    void select_range(int line, int first, int last);
    // The link under (line, offset) as url_clicked_on looks for it, with its first and last offset.
    bool url_at(int line, int offset, zorn_fixed_string* url, int* first, int* last) const;

    // Reading lines. Lines 0 to current_line exist; all others are absent.
    int line_count() const { return current_line + 1; }
    bool line_exists(int line) const { return line >= 0 && line <= current_line; }
    bool line_hard_newline(int line) const;
    int line_length(int line) const;
    void line_text(int line, std::string* out) const;
    // Cut at 5999 bytes, as the link finder reads a line.
    void line_text(int line, zorn_fixed_string* out) const;
    int line_width(int line) const;
    std::vector<zorn_textctrl_chunk_view> line_chunks(int line) const;
    // Calls fn(text, length, rgb) for each contiguous piece of the line, left to right; pieces
    // of one colour may come in several calls. fn answers false to stop.
    template <typename F>
    void for_each_piece(int line, F&& fn) const;

    // The raw stream, for tests, the log and the search (display/text_search.h). generation()
    // changes whenever the stream is emptied, so a reader can tell new text from a new stream.
    std::string raw_text() const;
    uint64_t stream_size() const { return stream.size(); }
    char stream_at(uint64_t offset) const { return stream.at(offset); }
    template <typename F>
    bool for_each_stream_span(uint64_t from, uint64_t to, F&& fn) const {
        return stream.for_each_span(from, to, fn);
    }
    uint64_t generation() const { return cleared_count; }
    // The display line that holds stream offset `offset`, and where a line starts and ends.
    int line_at_offset(uint64_t offset) const;
    uint64_t line_stream_start(int line) const { return line_exists(line) ? line_start(line) : 0; }
    uint64_t line_stream_end(int line) const { return line_exists(line) ? line_end(line) : 0; }
    size_t raw_chunk_count() const { return chunks.size(); }
    size_t line_capacity() const;
    // Bytes held for this control: stream pages and both record tables.
    size_t memory_bytes() const;

    std::unique_lock<std::mutex> lock() { return std::unique_lock<std::mutex>(text_mutex); }

    // The widget that shows this text; null in tests of the model alone.
    zorn_textctrl_view_client* view = nullptr;

    // State that the widget and its owner read and set, as the fields of the text control.
    int last_width = -1;
    int char_width[256];
    int font_height = 0;
    zorn_rgb text_color{255, 255, 255};
    int current_line = 0;
    int tab_column = 0;
    int skip_leading_newlines = 1;
    int wrap_enabled = 1;
    int top_anchored = 0;
    int scroll_line = 0;
    int frozen = 0;
    zorn_rgb background_color{0, 0, 0};
    zorn_rgb base_background_color{0, 0, 0};

    int selecting = 0;
    int selection_active = 0;
    int selection_start_line = 0;
    int selection_start_offset = 0;
    int selection_end_line = 0;
    int selection_end_offset = 0;
    int anchor_line = 0;
    int anchor_offset = 0;
    int cursor_line = 0;
    int cursor_offset = 0;

private:
    uint64_t line_start(int line) const { return lines[static_cast<size_t>(line)].start(); }
    uint64_t line_end(int line) const;
    int64_t width_of(uint64_t from, uint64_t to) const;
    void store_chunk(const char* text, size_t length);
    void layout_range(uint64_t from, uint64_t to);
    void add_to_open_line(uint64_t from, uint64_t to);
    void calc_break_position(uint64_t line_end);
    void begin_line(uint64_t start);
    void reset_lines();
    int scroll_limit() const;

    std::mutex text_mutex;
    int width;
    int height;
    zorn_text_pages stream;
    zorn_segmented_array<zorn_textctrl_chunk> chunks;
    zorn_segmented_array<zorn_textctrl_line> lines;
    int64_t open_width = 0;  // pixel width of the line being filled
    uint64_t cleared_count = 0;
};

template <typename F>
void zorn_textctrl_model::for_each_piece(int line, F&& fn) const {
    if (!line_exists(line)) return;
    uint64_t from = line_start(line);
    const uint64_t to = line_end(line);
    if (from >= to || chunks.empty()) return;
    size_t chunk = static_cast<size_t>(chunks.last_at_or_below(from, [](const zorn_textctrl_chunk& c) { return c.start(); }));
    while (from < to) {
        uint64_t piece_end = to;
        if (chunk + 1 < chunks.size() && chunks[chunk + 1].start() < piece_end) piece_end = chunks[chunk + 1].start();
        const uint32_t rgb = chunks[chunk].rgb();
        if (!stream.for_each_span(from, piece_end, [&](const char* p, size_t n) { return fn(p, static_cast<int>(n), rgb); }))
            return;
        from = piece_end;
        ++chunk;
    }
}
