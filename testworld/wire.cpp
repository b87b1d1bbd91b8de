#include "testworld/wire.h"

#include <cstdio>

namespace testworld {

int hex_value(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

std::string sgr(int code) { return "\x1b[" + std::to_string(code) + "m"; }

std::string colored(const std::string& text, int color, bool bold) {
    std::string out;
    if (bold) out += sgr(sgr_bold);
    out += sgr(color);
    out += escape_text(text);
    out += sgr(sgr_reset);
    return out;
}

std::string escape_text(const std::string& text) {
    std::string out;
    out.reserve(text.size());
    for (char c : text) {
        out += c;
        if (c == ';') out += ';';
    }
    return out;
}

std::string sanitize_player_text(const std::string& text) {
    std::string out;
    out.reserve(text.size());
    for (char c : text) {
        const unsigned char byte = static_cast<unsigned char>(c);
        const bool control = (byte < 0x20 && byte != '\t') || byte == 0x7f || byte == 0xff;
        out += control ? '?' : c;
    }
    return out;
}

std::string tag(const std::string& name, const std::string& data) {
    std::string out = ";s" + name + ";";
    for (char c : data) {
        if (c == '\r') continue;
        out += c == ';' ? ',' : c;
    }
    out += ";e" + name + ";";
    return out;
}

std::string single_tag(const std::string& name) { return ";t" + name + ";"; }

std::string password_mode_on() { return std::string("\xff\xfe\x01", 3); }
std::string password_mode_off() { return std::string("\xff\xfd\x01", 3); }

bool unescape(const std::string& text, std::string* bytes, size_t* error_offset) {
    bytes->clear();
    for (size_t i = 0; i < text.size(); i++) {
        if (text[i] != '\\') {
            *bytes += text[i];
            continue;
        }
        *error_offset = i;
        if (++i >= text.size()) return false;
        switch (text[i]) {
        case '\\': *bytes += '\\'; break;
        case 'n': *bytes += '\n'; break;
        case 'r': *bytes += '\r'; break;
        case 't': *bytes += '\t'; break;
        case 'e': *bytes += '\x1b'; break;
        case 's': *bytes += ' '; break;
        case '*': *bytes += '*'; break;
        case 'x': {
            const int high = i + 1 < text.size() ? hex_value(text[i + 1]) : -1;
            const int low = i + 2 < text.size() ? hex_value(text[i + 2]) : -1;
            if (high < 0 || low < 0) return false;
            *bytes += static_cast<char>(high * 16 + low);
            i += 2;
            break;
        }
        default: return false;
        }
    }
    return true;
}

std::string escape_for_display(const std::string& bytes) {
    std::string out;
    for (char c : bytes) {
        const unsigned char byte = static_cast<unsigned char>(c);
        if (c == '\\') {
            out += "\\\\";
        } else if (byte >= 0x20 && byte < 0x7f) {
            out += c;
        } else {
            char hex[8];
            std::snprintf(hex, sizeof hex, "\\x%02X", byte);
            out += hex;
        }
    }
    return out;
}

}  // namespace testworld
