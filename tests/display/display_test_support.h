#pragma once
// Helpers shared by the display model tests: a text model with simple character widths, and the
// display read back as text with its colours.

#include <cstdio>
#include <string>
#include <vector>

#include "display/text_model.h"

// Every printable byte is char_px wide unless a test changes it; lines are 10 pixels high.
inline void set_uniform_widths(zorn_textctrl_model* model, int char_px = 10, int line_height = 10) {
    int widths[256];
    for (int& w : widths) w = char_px;
    model->set_metrics(widths, line_height);
}

inline std::vector<std::string> lines_of(const zorn_textctrl_model& model) {
    std::vector<std::string> out;
    std::string text;
    for (int i = 0; i < model.line_count(); ++i) {
        model.line_text(i, &text);
        out.push_back(text);
    }
    return out;
}

inline std::string escape_text(const std::string& text) {
    std::string out;
    char hex[8];
    for (unsigned char c : text) {
        if (c == '\\') {
            out += "\\\\";
        } else if (c == '\n') {
            out += "\\n";
        } else if (c == '\t') {
            out += "\\t";
        } else if (c < 32 || c >= 127) {
            std::snprintf(hex, sizeof(hex), "\\x%02x", c);
            out += hex;
        } else {
            out += static_cast<char>(c);
        }
    }
    return out;
}

inline std::string color_tag(const zorn_rgb& c) {
    char tag[16];
    std::snprintf(tag, sizeof(tag), "{%02x%02x%02x}", c.red & 0xff, c.green & 0xff, c.blue & 0xff);
    return tag;
}

// One string per display line: each chunk as {rrggbb}text, and \n behind a line that ended in a
// real line feed.
inline std::vector<std::string> colored_lines_of(const zorn_textctrl_model& model) {
    std::vector<std::string> out;
    for (int i = 0; i < model.line_count(); ++i) {
        std::string line;
        for (const zorn_textctrl_chunk_view& chunk : model.line_chunks(i))
            line += color_tag(chunk.color) + escape_text(chunk.text);
        if (model.line_hard_newline(i)) line += "\\n";
        out.push_back(line);
    }
    return out;
}
