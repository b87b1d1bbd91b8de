#include "display/text_model.h"

#include <algorithm>
#include <cstdio>

#include "base/fixed_string.h"
#include "config/debug_log.h"
#include "display/url_finder.h"

namespace {

// Windows-1252 bytes 0x80 to 0xFF folded to one plain character each.
constexpr char fold_table[129] =
    "E 'f\"-tt^%S<O Z "
    " ''\"\"*--~ s>o zY"
    " !cLoY|S-Ca<!-R-"
    "ox23'uP..1o>   ?"
    "AAAAAAACEEEEIIII"
    "DNOOOOOxOUUUUYPS"
    "aaaaaaaceeeeiiii"
    "onooooo/ouuuuypy";
static_assert(sizeof(fold_table) == 129, "one replacement per byte 0x80..0xFF");

constexpr int blank = 32;

}  // namespace

void zorn_text_storage_out_of_memory(const char* what) {
    zorn_client_debug_printf("Error in %s, out of memory.  Failing and exiting.\n", what);
    std::fprintf(stderr, "Error in %s, out of memory.\n", what);
    std::exit(1);
}

uint32_t zorn_pack_rgb(const zorn_rgb& color) {
    return (static_cast<uint32_t>(color.red & 0xff) << 16) | (static_cast<uint32_t>(color.green & 0xff) << 8) |
           static_cast<uint32_t>(color.blue & 0xff);
}

zorn_rgb zorn_unpack_rgb(uint32_t packed) {
    return zorn_rgb(static_cast<int>((packed >> 16) & 0xff), static_cast<int>((packed >> 8) & 0xff),
                    static_cast<int>(packed & 0xff));
}

char zorn_fold_byte(unsigned char byte) {
    return byte >= 0x80 ? fold_table[byte - 0x80] : static_cast<char>(byte);
}

zorn_bulk_pool* zorn_textctrl_chunk_pool() {
    static zorn_bulk_pool pool(zorn_text_pages::page_size, "class zorn_textctrl_chunk", 0x40000);
    return &pool;
}

zorn_textctrl_model::zorn_textctrl_model(int width, int height)
    : width(width < 1 ? 1 : width), height(height < 1 ? 1 : height), stream(zorn_textctrl_chunk_pool()) {
    std::fill(std::begin(char_width), std::end(char_width), 0);
    reset_lines();
}

void zorn_textctrl_model::set_metrics(const int* widths, int line_height) {
    for (int i = 0; i < 256; ++i) char_width[i] = (i >= 32 && i <= 126) ? widths[i] : 0;
    font_height = line_height;
}

bool zorn_textctrl_model::resize(int new_width, int new_height) {
    width = new_width < 1 ? 1 : new_width;
    height = new_height < 1 ? 1 : new_height;
    if (width == last_width) return false;
    last_width = width;
    relayout();
    return true;
}

void zorn_textctrl_model::set_colors(const zorn_rgb& text, const zorn_rgb& background) {
    text_color = text;
    background_color = background;
    base_background_color = background;
}

void zorn_textctrl_model::add_text(const char* text) {
    if (!text) return;
    add_text(text, std::strlen(text));
}

void zorn_textctrl_model::add_text(const char* text, size_t length) {
    if (!text) return;
    if (skip_leading_newlines) {
        while (length > 0 && *text == '\n') {
            ++text;
            --length;
        }
        skip_leading_newlines = 0;
    }
    auto guard = lock();
    // The chunk text is built as in a zorn_fixed_string: at most 5999 bytes are kept, but the tab
    // column goes on counting over what is dropped.
    char buffer[chunk_text_limit];
    size_t used = 0;
    for (size_t i = 0; i < length; ++i) {
        const unsigned char byte = static_cast<unsigned char>(text[i]);
        if (byte == 0) break;  // the text ends at a NUL, as a C string does
        if (byte == '\t') {
            const int target = (tab_column / tab_stop) * tab_stop + tab_stop;
            for (; tab_column < target; ++tab_column)
                if (used < chunk_text_limit) buffer[used++] = ' ';
            continue;
        }
        char out = static_cast<char>(byte);
        if (byte == '\n' || byte == '\r') {
            tab_column = 0;
        } else {
            if (byte >= 0x80) out = fold_table[byte - 0x80];
            ++tab_column;
        }
        if (used < chunk_text_limit) buffer[used++] = out;
    }
    store_chunk(buffer, used);
}

void zorn_textctrl_model::store_chunk(const char* text, size_t length) {
    const uint64_t start = stream.size();
    if (length > 0) {
        // Runs of one colour share one record: only a change of colour costs memory.
        const uint32_t rgb = zorn_pack_rgb(text_color);
        if (chunks.empty() || chunks.back().rgb() != rgb) chunks.push_back(zorn_textctrl_chunk::make(start, rgb));
        stream.append(text, length);
    }
    layout_range(start, stream.size());
}

int64_t zorn_textctrl_model::width_of(uint64_t from, uint64_t to) const {
    int64_t sum = 0;
    stream.for_each_span(from, to, [&](const char* p, size_t n) {
        for (size_t i = 0; i < n; ++i) sum += char_width[static_cast<unsigned char>(p[i])];
        return true;
    });
    return sum;
}

// Cuts [from, to) at line feeds; each run joins the open line, each line feed closes it.
void zorn_textctrl_model::layout_range(uint64_t from, uint64_t to) {
    uint64_t run = from;
    for (;;) {
        uint64_t feed = to;
        uint64_t base = run;
        stream.for_each_span(run, to, [&](const char* p, size_t n) {
            const void* hit = std::memchr(p, '\n', n);
            if (hit) {
                feed = base + static_cast<uint64_t>(static_cast<const char*>(hit) - p);
                return false;
            }
            base += n;
            return true;
        });
        add_to_open_line(run, feed);
        if (feed == to) return;
        lines.back().bits |= zorn_textctrl_line::hard_bit;
        begin_line(feed + 1);
        open_width = 0;
        run = feed + 1;
        if (run == to) return;  // nothing is appended behind a final line feed
    }
}

void zorn_textctrl_model::add_to_open_line(uint64_t from, uint64_t to) {
    open_width += width_of(from, to);
    // Text exactly as wide as the window is broken too.
    if (wrap_enabled && open_width >= width) calc_break_position(to);
}

// Breaks the open line [start, end) until its last piece is narrower than the window. The break
// goes behind the last blank that fitted, else behind the last character that fitted, so a word
// longer than the line is cut right before the character that overflowed. When not even the
// first character fits, the line stays as it is.
void zorn_textctrl_model::calc_break_position(uint64_t end) {
    const int limit = width;
    for (;;) {
        const uint64_t start = lines.back().start();
        int64_t sum = 0;
        bool overflow = false;
        bool have_fit = false, have_blank = false;
        uint64_t fit_at = 0, blank_at = 0;
        int64_t fit_sum = 0, blank_sum = 0;
        uint64_t base = start;
        stream.for_each_span(start, end, [&](const char* p, size_t n) {
            for (size_t i = 0; i < n; ++i) {
                const unsigned char byte = static_cast<unsigned char>(p[i]);
                const int w = char_width[byte];
                if (sum + w >= limit) {
                    overflow = true;
                    return false;
                }
                sum += w;
                have_fit = true;
                fit_at = base + i + 1;
                fit_sum = sum;
                if (byte == blank || byte == '\t') {
                    have_blank = true;
                    blank_at = fit_at;
                    blank_sum = sum;
                }
            }
            base += n;
            return true;
        });
        if (!overflow || !have_fit) return;
        const uint64_t split = have_blank ? blank_at : fit_at;
        const int64_t rest = open_width - (have_blank ? blank_sum : fit_sum);
        begin_line(split);
        open_width = rest;
        if (open_width < limit) return;
    }
}

void zorn_textctrl_model::begin_line(uint64_t start) {
    ++current_line;
    lines.push_back(zorn_textctrl_line{start});
    if (!frozen && !top_anchored) scroll_line = current_line;
}

void zorn_textctrl_model::reset_lines() {
    lines.clear();
    lines.push_back(zorn_textctrl_line{0});
    current_line = 0;
    open_width = 0;
}

void zorn_textctrl_model::relayout() {
    clear_selection();
    auto guard = lock();
    current_line = 0;
    scroll_line = 0;
    reset_lines();
    // Tabs are not expanded again: the blanks are in the stream already.
    layout_range(0, stream.size());
}

void zorn_textctrl_model::clear_text() {
    clear_selection();
    auto guard = lock();
    scroll_line = 0;
    tab_column = 0;
    skip_leading_newlines = 1;
    stream.clear();
    chunks.clear();
    ++cleared_count;
    reset_lines();
}

int zorn_textctrl_model::line_at_offset(uint64_t offset) const {
    const long long line = lines.last_at_or_below(offset, [](const zorn_textctrl_line& l) { return l.start(); });
    return static_cast<int>(std::max(0LL, std::min<long long>(line, current_line)));
}

void zorn_textctrl_model::get_max_char_size(int* max_width, int* max_height) const {
    if (max_width) {
        int widest = 0;
        for (int i = 32; i <= 126; ++i) widest = std::max(widest, char_width[i]);
        *max_width = widest;
    }
    if (max_height) *max_height = font_height;
}

int zorn_textctrl_model::get_visible_line_count() const {
    if (font_height < 1) {
        if (zorn_debug_level >= 2)
            zorn_client_debug_printf("Error in zorn_textctrl::get_visible_line_count(), font height %d.\n", font_height);
        return 20;
    }
    return std::max(1, height / font_height);
}

int zorn_textctrl_model::scroll_limit() const {
    return top_anchored ? current_line : current_line + get_visible_line_count();
}

void zorn_textctrl_model::set_scroll_line(int line) {
    scroll_line = std::max(0, std::min(line, scroll_limit()));
    if (view) view->request_repaint();
}

int zorn_textctrl_model::set_top_line(int line) {
    if (top_anchored) {
        set_scroll_line(line);
        return line;
    }
    const int visible = get_visible_line_count();
    set_scroll_line(line + visible);
    return line + visible;
}

void zorn_textctrl_model::get_scroll_info(int* position, int* range, int* page) const {
    const int visible = get_visible_line_count();
    if (page) *page = visible;
    if (top_anchored) {
        if (position) *position = scroll_line;
        if (range) *range = current_line + visible + 1;
    } else {
        if (position) *position = scroll_line - visible;
        if (range) *range = current_line;
    }
}

void zorn_textctrl_model::translate_xy_to_line_and_offset(int x, int y, int* line, int* offset, int bottom_line) const {
    *line = 0;
    *offset = 0;
    if (font_height < 1) {
        if (zorn_debug_level >= 2)
            zorn_client_debug_printf("Error in zorn_textctrl::translate_xy_to_line_and_offset(), font height %d.\n",
                                     font_height);
        return;
    }
    const int base = top_anchored ? 0 : height - font_height;
    // The 10000 lines added and taken away keep the dividend positive above the window.
    long long index = (bottom_line >= 0 ? bottom_line : scroll_line) + (static_cast<long long>(font_height) * 10000 + y - base) / font_height - 10000;
    index = std::max(0LL, std::min<long long>(index, current_line));
    *line = static_cast<int>(index);
    if (x < 0) x = 0;
    int at = 0;
    int64_t sum = 0;
    bool found = false;
    stream.for_each_span(line_start(*line), line_end(*line), [&](const char* p, size_t n) {
        for (size_t i = 0; i < n; ++i, ++at) {
            sum += char_width[static_cast<unsigned char>(p[i])];
            if (sum >= x) {
                found = true;
                return false;
            }
        }
        return true;
    });
    *offset = at;
    (void)found;  // behind the last character the offset is the line's length, which `at` holds
}

uint64_t zorn_textctrl_model::line_end(int line) const {
    if (line >= current_line) return stream.size();
    const zorn_textctrl_line next = lines[static_cast<size_t>(line) + 1];
    return lines[static_cast<size_t>(line)].hard_newline() ? next.start() - 1 : next.start();
}

bool zorn_textctrl_model::line_hard_newline(int line) const {
    return line_exists(line) && lines[static_cast<size_t>(line)].hard_newline();
}

int zorn_textctrl_model::line_length(int line) const {
    if (!line_exists(line)) return 0;
    return static_cast<int>(line_end(line) - line_start(line));
}

void zorn_textctrl_model::line_text(int line, std::string* out) const {
    out->clear();
    if (!line_exists(line)) return;
    const uint64_t from = line_start(line), to = line_end(line);
    out->resize(static_cast<size_t>(to - from));
    if (to > from) stream.copy(from, to, &(*out)[0]);
}

void zorn_textctrl_model::line_text(int line, zorn_fixed_string* out) const {
    out->clear();
    if (!line_exists(line)) return;
    stream.for_each_span(line_start(line), line_end(line), [&](const char* p, size_t n) {
        out->append(p, static_cast<int>(std::min<size_t>(n, zorn_fixed_string::capacity)));
        return !out->full();
    });
}

int zorn_textctrl_model::line_width(int line) const {
    if (!line_exists(line)) return 0;
    return static_cast<int>(width_of(line_start(line), line_end(line)));
}

std::vector<zorn_textctrl_chunk_view> zorn_textctrl_model::line_chunks(int line) const {
    std::vector<zorn_textctrl_chunk_view> out;
    uint32_t last_rgb = 0;
    for_each_piece(line, [&](const char* p, int n, uint32_t rgb) {
        if (out.empty() || rgb != last_rgb) out.push_back({std::string(), zorn_unpack_rgb(rgb), 0});
        last_rgb = rgb;
        out.back().text.append(p, static_cast<size_t>(n));
        for (int i = 0; i < n; ++i) out.back().width += char_width[static_cast<unsigned char>(p[i])];
        return true;
    });
    return out;
}

std::string zorn_textctrl_model::raw_text() const {
    std::string out(static_cast<size_t>(stream.size()), '\0');
    if (!out.empty()) stream.copy(0, stream.size(), &out[0]);
    return out;
}

size_t zorn_textctrl_model::line_capacity() const { return lines.capacity(); }

size_t zorn_textctrl_model::memory_bytes() const {
    return stream.page_count() * zorn_text_pages::page_size + chunks.capacity() * sizeof(zorn_textctrl_chunk) +
           lines.capacity() * sizeof(zorn_textctrl_line);
}

// Selection ---------------------------------------------------------------------------------------

void zorn_textctrl_model::clear_selection() {
    selection_active = 0;
    selection_start_line = selection_start_offset = 0;
    selection_end_line = selection_end_offset = 0;
    anchor_line = anchor_offset = 0;
    cursor_line = cursor_offset = 0;
}

void zorn_textctrl_model::normalise_selection() {
    const bool cursor_after = cursor_line > anchor_line || (cursor_line == anchor_line && cursor_offset > anchor_offset);
    if (cursor_after) {
        selection_start_line = anchor_line;
        selection_start_offset = anchor_offset;
        selection_end_line = cursor_line;
        selection_end_offset = cursor_offset;
    } else {
        selection_start_line = cursor_line;
        selection_start_offset = cursor_offset;
        selection_end_line = anchor_line;
        selection_end_offset = anchor_offset;
    }
}

void zorn_textctrl_model::select_range(int line, int first, int last) {
    selection_active = 1;
    selection_start_line = anchor_line = line;
    selection_start_offset = anchor_offset = first;
    selection_end_line = cursor_line = line;
    selection_end_offset = cursor_offset = last;
}

// A wrapped line gets no line feed, so wrapped text comes back as the one line it was.
bool zorn_textctrl_model::selection_text(std::string* out) const {
    out->clear();
    const int first = selection_start_line, last = selection_end_line;
    for (int line = first; line <= last; ++line) {
        if (!line_exists(line)) {
            if (zorn_debug_level >= 2)
                zorn_client_debug_printf("Error in copy_selection_to_clipboard(), line %d NULL.\n", line);
            out->clear();
            return false;
        }
    }
    std::string text;
    for (int line = first; line <= last; ++line) {
        line_text(line, &text);
        const int length = static_cast<int>(text.size());
        const int from = line == first ? std::max(0, selection_start_offset) : 0;
        const int to = line == last ? std::min(length, selection_end_offset + 1) : length;
        if (to > from) out->append(text, static_cast<size_t>(from), static_cast<size_t>(to - from));
        if (line != last && lines[static_cast<size_t>(line)].hard_newline()) out->push_back('\n');
    }
    return true;
}

bool zorn_textctrl_model::url_at(int line, int offset, zorn_fixed_string* url, int* first, int* last) const {
    if (!line_exists(line)) {
        if (line != 0 && zorn_debug_level >= 2) zorn_client_debug_printf("Error in url_clicked_on(), null line %d.\n", line);
        return false;
    }
    zorn_fixed_string text;
    line_text(line, &text);
    if (!find_url_in_text(text.c_str(), text.size(), offset, first, last)) return false;
    url->clear();
    url->append(text.c_str() + *first, *last - *first + 1);
    return true;
}
