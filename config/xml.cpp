#include "config/xml.h"

#include <algorithm>
#include <cstring>

#include "base/words.h"
#include "config/debug_log.h"

// Message categories: reader and writer warnings are 64, header check warnings 128, errors 4,
// a null stream handed to a constructor 1.
namespace {

constexpr unsigned category_warning = zorn_cat_64;
constexpr unsigned category_header = zorn_cat_128;

void warn(const char* text) { zorn_client_debug_event(text, category_warning); }
void error(const char* text) { zorn_client_debug_event(text, zorn_cat_error); }

bool is_blank(char c) { return c == ' ' || c == '\t'; }
bool is_line_end(char c) { return c == '\0' || c == '\n' || c == '\r'; }

int hex_value(int c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

// One keyword of the header line: blanks, '=', blanks, a quoted value, blanks. The position
// behind it, or null with the keyword's warning given.
const char* parse_header_value(const char* p, const char* keyword) {
    p += std::strlen(keyword);
    while (is_blank(*p)) ++p;
    if (*p != '=') {
        zorn_client_debug_eventf(category_header,
                                 "Warning in zorn_xml_reader::check_xml_header_string(), '%s' tag found, but no %s.",
                                 keyword, keyword);
        return nullptr;
    }
    ++p;
    while (is_blank(*p)) ++p;
    if (*p != '"') {
        zorn_client_debug_eventf(
            category_header,
            "Warning in zorn_xml_reader::check_xml_header_string(), '%s' tag found, but no opening %s quote.", keyword,
            keyword);
        return nullptr;
    }
    ++p;
    while (!is_line_end(*p) && *p != '"') ++p;
    if (*p != '"') {
        zorn_client_debug_eventf(
            category_header,
            "Warning in zorn_xml_reader::check_xml_header_string(), '%s' tag found, but no closing %s quote.", keyword,
            keyword);
        return nullptr;
    }
    ++p;
    while (is_blank(*p)) ++p;
    return p;
}

}  // namespace

// ---------------------------------------------------------------------------------------------
// Reader

int zorn_xml_reader::next_byte() {
    const int c = read_char();
    if (c < 0) end_seen = true;
    return c;
}

void zorn_xml_reader::push_stack_entry(const char* text) {
    if (static_cast<int>(tag_stack.size()) >= zorn_xml_depth_limit) {
        ++overflow_depth;
        if (!overflow_reported) {
            overflow_reported = true;
            warn("Warning in zorn_xml_reader::push_stack_entry(), tag depth limit reached, names not checked below.");
        }
        return;
    }
    tag_stack.emplace_back(text, strnlen(text, zorn_xml_tag_size - 1));
}

void zorn_xml_reader::pop_stack_entry(const char* tag) {
    if (!tag) tag = "";
    if (tag[0] == '/') {
        ++tag;
    } else {
        zorn_client_debug_eventf(category_warning,
                                 "Warning in zorn_xml_reader::pop_stack_entry() - got bad closing tag '%s'?", tag);
    }
    if (overflow_depth > 0) {
        --overflow_depth;
        return;
    }
    // A stray closing tag: nothing to take, and the reader stays usable.
    if (tag_stack.empty()) {
        zorn_client_debug_eventf(category_warning,
                                 "Warning in zorn_xml_reader::pop_stack_entry() - closing tag '%s' with no open tag.",
                                 tag);
        return;
    }
    const std::string entry = std::move(tag_stack.back());
    tag_stack.pop_back();
    if (entry != tag) {
        zorn_client_debug_eventf(
            category_warning,
            "Warning in zorn_xml_reader::pop_stack_entry() - popped tag '%s' did not match expected tag '%s'.", tag,
            entry.c_str());
    }
}

void zorn_xml_reader::compact_string(char* text) {
    if (!text) return;
    static const struct {
        const char* entity;
        char byte;
    } entities[] = {{"&lt;", '<'}, {"&gt;", '>'}, {"&amp;", '&'}};
    char* out = text;
    for (const char* in = text; *in;) {
        if (*in != '&') {
            *out++ = *in++;
            continue;
        }
        bool matched = false;
        for (const auto& e : entities) {
            const size_t n = std::strlen(e.entity);
            if (std::strncmp(in, e.entity, n) == 0) {
                *out++ = e.byte;
                in += n;
                matched = true;
                break;
            }
        }
        if (!matched) {
            warn("Warning in zorn_xml_reader::compact_string(), unknown '&' conversion found?");
            *out++ = *in++;
        }
    }
    *out = '\0';
}

int zorn_xml_reader::read_block(char* dest, int size, int tag_mode) {
    if (!dest) {
        error("Error in zorn_xml_reader::read_block(), NULL dest?");
        return 0;
    }
    if (size < 1) {
        error("Error in zorn_xml_reader::read_block(), dest is too small?");
        return 0;
    }
    const int terminator = tag_mode ? '>' : '<';
    int stored = 0;
    int bad_bytes = 0;
    for (;;) {
        const int c = next_byte();
        if (c < 0) {
            dest[stored] = '\0';
            warn("Warning in zorn_xml_reader::read_block(), file corruption - got EOF before trailing bracket.");
            return 0;
        }
        if (c == '<' || c == '>') {
            if (c != terminator) {
                warn(tag_mode ? "Warning in zorn_xml_reader::read_block(), got second open bracket?"
                              : "Warning in zorn_xml_reader::read_block(), got second closing bracket?");
            }
            break;
        }
        // Beyond the limit bytes are dropped, but reading goes on to the terminator.
        if (stored < size - 1) {
            dest[stored++] = static_cast<char>(c);
            if (c < 32 || c > 126) ++bad_bytes;
        }
    }
    dest[stored] = '\0';
    // Only bytes 32 to 126 survive: the raw text stays in dest for callers that take it anyway.
    if (bad_bytes) return 0;
    compact_string(dest);
    return 1;
}

int zorn_xml_reader::read_tag(char* dest, int size) {
    last_tag_failed = false;
    if (!dest) {
        error("Error in zorn_xml_reader::read_tag(), NULL dest?");
        return 0;
    }
    if (size < 1) {
        error("Error in zorn_xml_reader::read_tag(), dest is too small?");
        return 0;
    }
    int c;
    do {
        c = next_byte();
        if (c < 0) return 0;
    } while (c != '<');
    if (!read_block(dest, size, 1)) {
        last_tag_failed = !end_seen;
        return 0;
    }
    if (dest[0] == '/') {
        pop_stack_entry(dest);
        return 0;
    }
    push_stack_entry(dest);
    return 1;
}

int zorn_xml_reader::read_child(char* dest, int size) {
    for (;;) {
        if (read_tag(dest, size)) return 1;
        // Every failed read consumed at least its '<', so this ends.
        if (!last_tag_failed) return 0;
    }
}

int zorn_xml_reader::read_data(char* dest, int size) {
    if (!dest) {
        error("Error in zorn_xml_reader::read_data(char[]), NULL dest?");
        return 0;
    }
    if (size < 1) {
        error("Error in zorn_xml_reader::read_data(char[]), dest is too small?");
        return 0;
    }
    if (!read_block(dest, size, 0)) return 0;
    char closing[zorn_xml_tag_size];
    read_block(closing, sizeof closing, 1);
    pop_stack_entry(closing);
    return 1;
}

int zorn_xml_reader::read_data(int* dest) {
    if (!dest) {
        error("Error in zorn_xml_reader::read_data(int), NULL dest?");
        return 0;
    }
    char buffer[100];
    if (!read_block(buffer, sizeof buffer, 0)) return 0;
    int value = 0;
    const bool is_number = parse_integer(buffer, &value);
    if (is_number) {
        *dest = value;
    } else {
        zorn_client_debug_eventf(category_warning, "Warning in zorn_xml_reader::read_data(int) - got non-number'%s'.",
                                 buffer);
    }
    read_block(buffer, sizeof buffer, 1);
    pop_stack_entry(buffer);
    return is_number ? 1 : 0;
}

int zorn_xml_reader::skip_chunk() {
    for (;;) {
        const int c = next_byte();
        if (c < 0) return 0;
        if (c == '<') return 1;
        if (c == '>') warn("Warning in zorn_xml_reader::skip_chunk(), got closing bracket?");
    }
}

void zorn_xml_reader::skip_data() {
    if (stack_depth() == 0) {
        error("Error in zorn_xml_reader::skip_data() - you must read at least the opening tag before skipping data.");
        return;
    }
    // The depth stands for the remembered entry: the skip ends when the pop takes that level.
    const int start_depth = stack_depth();
    char block[zorn_xml_tag_size];
    for (;;) {
        if (!skip_chunk()) {
            warn("Warning in zorn_xml_reader::skip_data() - unable to read chunk?");
            return;
        }
        if (!read_block(block, sizeof block, 1)) {
            warn("Warning in zorn_xml_reader::skip_data() - unable to read block?");
            return;
        }
        if (block[0] == '!') continue;
        if (block[0] == '/') {
            const int before = stack_depth();
            pop_stack_entry(block);
            if (before <= start_depth) return;
            continue;
        }
        push_stack_entry(block);
    }
}

int zorn_xml_reader::read_cdata(unsigned char* dest, int size) {
    if (!dest) {
        error("Error in zorn_xml_reader::read_cdata(), NULL dest?");
        return 0;
    }
    if (size < 1) {
        error("Error in zorn_xml_reader::read_cdata(), dest is too small?");
        return 0;
    }
    if (!skip_chunk()) return 0;
    static const char header[] = "![CDATA[";
    const int header_length = std::min(8, size - 1);
    for (int i = 0; i < header_length; ++i) {
        const int c = next_byte();
        if (c < 0) return 0;
        if (c != header[i]) {
            warn("Warning in zorn_xml_reader::read_cdata(), did not get ![CDATA[ header.");
            return 0;
        }
    }
    int stored = 0;
    int pending = -1;
    while (stored < size) {
        const int c = next_byte();
        if (c < 0) return 0;
        if (c == '<' || c == '>') break;
        const int nibble = hex_value(c);
        if (nibble < 0) continue;
        if (pending < 0) {
            pending = nibble;
        } else {
            dest[stored++] = static_cast<unsigned char>(pending << 4 | nibble);
            pending = -1;
        }
    }
    skip_data();
    return stored;
}

int zorn_xml_reader::check_xml_header_string(const char* line) {
    if (!line || !word_equal(line, "<?xml")) {
        zorn_client_debug_event("Warning in zorn_xml_reader::check_xml_header_string(), missing opening '<?xml' tag.",
                                category_header);
        return 0;
    }
    const char* p = next_arg(line);
    if (!p) {
        zorn_client_debug_event(
            "Warning in zorn_xml_reader::check_xml_header_string(), didn't get either version or encoding.",
            category_header);
        return 0;
    }
    bool version = false;
    bool encoding = false;
    while (!is_line_end(*p) && std::strncmp(p, "?>", 2) != 0) {
        const char* keyword = std::strncmp(p, "version", 7) == 0    ? "version"
                              : std::strncmp(p, "encoding", 8) == 0 ? "encoding"
                                                                    : nullptr;
        if (!keyword) {
            zorn_client_debug_event("Warning in zorn_xml_reader::check_xml_header_string(), unknown tag found.",
                                    category_header);
            return 0;
        }
        p = parse_header_value(p, keyword);
        if (!p) return 0;
        (keyword[0] == 'v' ? version : encoding) = true;
    }
    if (version && encoding) return 1;
    zorn_client_debug_event(
        !version && !encoding
            ? "Warning in zorn_xml_reader::check_xml_header_string(), didn't get either version or encoding."
        : !version ? "Warning in zorn_xml_reader::check_xml_header_string(), didn't get version."
                   : "Warning in zorn_xml_reader::check_xml_header_string(), didn't get encoding.",
        category_header);
    return 0;
}

zorn_xml_file_reader::zorn_xml_file_reader(FILE* stream) : file(stream) {
    if (!file) {
        zorn_client_debug_event("Error in zorn_xml_file_reader::zorn_xml_file_reader(), NULL file handle.",
                                zorn_cat_severe);
    }
}

int zorn_xml_file_reader::read_char() {
    if (!file) return -1;
    const int c = std::fgetc(file);
    return c == EOF ? -1 : c;
}

int zorn_xml_memory_reader::read_char() {
    if (position >= length) return -1;
    return static_cast<unsigned char>(data[position++]);
}

// ---------------------------------------------------------------------------------------------
// Writer

int zorn_xml_writer::write_xml_header() {
    return write_text("<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>\n");
}

void zorn_xml_writer::write_indent() {
    for (int i = 0; i < depth; ++i) write_text("  ");
}

void zorn_xml_writer::write_newline() { write_text("\n"); }

void zorn_xml_writer::write_string(const char* text) {
    if (!text) {
        error("Error in zorn_xml_writer::write_string(), NULL data.\n");
        return;
    }
    // Runs between escapes go out whole; the bytes are the same as one call per byte.
    std::string run;
    for (const char* p = text; *p; ++p) {
        switch (*p) {
            case '&': run += "&amp;"; break;
            case '<': run += "&lt;"; break;
            case '>': run += "&gt;"; break;
            default: run += *p; break;
        }
    }
    if (!run.empty()) write_text(run.c_str());
}

// The indented "<name extra" that both kinds of opening tag begin with; false for a null name.
bool zorn_xml_writer::write_tag_start(const char* name, const char* extra) {
    if (!name) {
        error("Error in zorn_xml_writer::write_tag(), NULL tag.\n");
        return false;
    }
    write_indent();
    write_text("<");
    write_string(name);
    if (extra) {
        write_text(" ");
        write_text(extra);
    }
    return true;
}

void zorn_xml_writer::write_tag(const char* name, int newline, const char* extra) {
    if (!write_tag_start(name, extra)) return;
    write_text(newline ? ">\n" : ">");
    ++depth;
    tag_stack.emplace_back(name, strnlen(name, zorn_xml_tag_size - 1));
}

void zorn_xml_writer::end_tag(const char* expected, int indent) {
    std::string name = "_BOGUS_ENDING_TAG_";
    if (tag_stack.empty()) {
        error("Error in zorn_xml_writer::end_tag(), tag stack empty.\n");
    } else {
        name = std::move(tag_stack.back());
        tag_stack.pop_back();
        if (expected && name != expected) warn("Warning in zorn_xml_writer::end_tag(), tried to close wrong tag.\n");
    }
    if (depth > 0) --depth;
    if (indent && depth >= 1) write_indent();
    write_text("</");
    write_string(name.c_str());
    write_text(">\n");
}

void zorn_xml_writer::write_single_tag(const char* name, const char* extra) {
    if (write_tag_start(name, extra)) write_text(" />\n");
}

void zorn_xml_writer::write_cdata(const unsigned char* data, int length) {
    static const char digits[] = "0123456789abcdef";
    write_text("<![CDATA[\n");
    char line[65];
    int used = 0;
    for (int i = 0; data && i < length; ++i) {
        line[used++] = digits[data[i] >> 4];
        line[used++] = digits[data[i] & 15];
        if (used == 64 || i == length - 1) {
            line[used] = '\0';
            write_text(line);
            write_text("\n");
            used = 0;
        }
    }
    write_text("]]>\n");
}

void zorn_xml_writer::write_leaf(const char* name, const char* value) {
    write_tag(name, 0);
    write_string(value);
    end_tag(name, 0);
}

void zorn_xml_writer::write_leaf(const char* name, int value) {
    char text[16];
    std::snprintf(text, sizeof text, "%d", value);
    write_leaf(name, text);
}

zorn_xml_file_writer::zorn_xml_file_writer(FILE* stream) : file(stream) {
    if (!file) {
        zorn_client_debug_event("Error in zorn_xml_file_writer::zorn_xml_file_writer(), NULL file handle.\n",
                                zorn_cat_severe);
    }
}

int zorn_xml_file_writer::write_text(const char* text) {
    if (!file || !text) return -1;
    const int written = std::fprintf(file, "%s", text);
    if (written < 0) write_failed = true;
    return written;
}

int zorn_xml_string_writer::write_text(const char* text) {
    if (!text) return -1;
    const size_t before = output.size();
    output += text;
    return static_cast<int>(output.size() - before);
}
