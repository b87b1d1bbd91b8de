// The ANSI parser and the text buffer behind it on arbitrary server bytes. The first byte picks
// the window width and the cut points; the rest is fed in blocks as socket reads would hand it
// over. Then the line table must give back the stored text exactly, at two widths, and the
// reading operations must survive every line.

#include <cstdint>
#include <cstring>
#include <string>

#include "base/fixed_string.h"
#include "display/ansi_model.h"
#include "display/text_search.h"
#include "display/color_flash.h"
#include "config/debug_log.h"

namespace {

// The warnings that bad input raises are part of what runs, at full chat, but they go nowhere.
const bool log_to_null = [] {
    zorn_client_set_debug_logfile_name("/dev/null");
    zorn_debug_level = 3;
    return true;
}();

// The lines joined again, with a line feed behind each one that ended in a real one.
std::string joined_lines(const zorn_textctrl_model& text) {
    std::string out, line;
    for (int i = 0; i < text.line_count(); ++i) {
        text.line_text(i, &line);
        out += line;
        if (text.line_hard_newline(i)) out += '\n';
    }
    return out;
}

void check_lines(const zorn_textctrl_model& text) {
    if (joined_lines(text) != text.raw_text()) __builtin_trap();
    int width = 0;
    for (int i = 0; i < text.line_count(); ++i) {
        const auto chunks = text.line_chunks(i);
        width = 0;
        for (const auto& chunk : chunks) width += chunk.width;
        if (width != text.line_width(i)) __builtin_trap();
        // A wrapped line is narrower than the window, unless not even its first character fit.
        if (text.wrap_enabled && !text.line_hard_newline(i) && i < text.current_line && width >= text.window_width() &&
            text.line_length(i) > 1)
            __builtin_trap();
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 2) return 0;
    const int width = 5 + data[0] * 3;
    const size_t block = 1 + data[1] % 64;
    data += 2;
    size -= 2;

    zorn_textctrl_model text(width, 60);
    int widths[256];
    for (int i = 0; i < 256; ++i) widths[i] = 1 + i % 13;
    text.set_metrics(widths, 10);
    text.resize(width, 60);
    zorn_ansi_model ansi(&text);
    for (size_t at = 0; at < size; at += block) {
        const size_t n = size - at < block ? size - at : block;
        ansi.add_ansi_text(reinterpret_cast<const char*>(data) + at, static_cast<int>(n));
    }
    check_lines(text);
    text.resize(width / 2 + 1, 60);
    check_lines(text);

    // Reading back: selection of everything, links and points on each line.
    text.anchor_line = 0;
    text.cursor_line = text.current_line;
    text.cursor_offset = text.line_length(text.current_line);
    text.normalise_selection();
    std::string selected;
    if (!text.selection_text(&selected)) __builtin_trap();
    zorn_fixed_string url;
    int first = 0, last = 0, line = 0, offset = 0;
    for (int i = 0; i < text.line_count() && i < 200; ++i) {
        for (int o = 0; o < text.line_length(i) && o < 64; ++o) {
            if (text.url_at(i, o, &url, &first, &last) && (o < first || o > last)) __builtin_trap();
        }
        text.translate_xy_to_line_and_offset(i * 7 - 20, i * 5 - 30, &line, &offset);
        if (!text.line_exists(line) || offset < 0 || offset > text.line_length(line)) __builtin_trap();
    }

    // A search for the input's first bytes: every hit maps to lines that exist, within them.
    zorn_text_search search;
    search.set_query(std::string(reinterpret_cast<const char*>(data), size < 3 ? size : 3));
    search.update(text);
    for (size_t i = 0; i < search.count() && i < 200; ++i) {
        const zorn_text_search::place at = search.place_of(text, i);
        if (!text.line_exists(at.first_line) || at.last_line < at.first_line || at.first_offset < 0 ||
            at.last_offset >= text.line_length(at.last_line) + 1)
            __builtin_trap();
    }

    // The history rebuilds the text control, and the same bytes make a colour flash payload.
    ansi.set_word_wrap(0);
    ansi.clear_display();
    std::string payload(reinterpret_cast<const char*>(data), size);
    zorn_color_flash_list flashes;
    flashes.parse(payload.c_str());
    for (int tick = 0; tick < 50 && !flashes.empty(); ++tick) flashes.step(zorn_rgb(1, 2, 3));
    return 0;
}
