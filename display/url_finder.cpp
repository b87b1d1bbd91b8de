#include "display/url_finder.h"

#include <cstring>

namespace {

bool is_link_char(unsigned char c) {
    if (c < 32 || c >= 127) return false;
    return std::strchr(" !\"'*<>`", c) == nullptr;
}

bool starts_with(const char* text, int length, int at, const char* prefix) {
    const int n = static_cast<int>(std::strlen(prefix));
    return at + n <= length && std::memcmp(text + at, prefix, static_cast<size_t>(n)) == 0;
}

bool has_scheme(const char* text, int length, int at) {
    return starts_with(text, length, at, "http://") || starts_with(text, length, at, "https://") ||
           starts_with(text, length, at, "ftp://");
}

bool is_lower(char c) { return c >= 'a' && c <= 'z'; }
bool is_digit(char c) { return c >= '0' && c <= '9'; }
bool is_nonzero_digit(char c) { return c >= '1' && c <= '9'; }

// Bracket kinds: 0 round, 1 square, 2 curly.
int bracket_kind(char c) {
    switch (c) {
    case '(': case ')': return 0;
    case '[': case ']': return 1;
    case '{': case '}': return 2;
    default: return -1;
    }
}

// A link without a scheme must look like a host: a dot followed by a two to four letter
// lowercase suffix, and behind it the end, a path, or a port that doesn't begin with 0.
bool looks_like_host(const char* link, int n) {
    for (int i = 0; i < n; ++i) {
        if (link[i] == '.' && i + 1 < n && link[i + 1] == '.') return false;
        if (link[i] == ':' && (i + 1 >= n || !is_nonzero_digit(link[i + 1]))) return false;
    }
    for (int dot = 0; dot < n; ++dot) {
        if (link[dot] != '.') continue;
        int letters = 0;
        while (dot + 1 + letters < n && is_lower(link[dot + 1 + letters])) ++letters;
        if (letters < 2 || letters > 4) continue;
        int at = dot + 1 + letters;
        if (at == n || link[at] == '/') return true;
        if (link[at] != ':' || at + 1 >= n || !is_nonzero_digit(link[at + 1])) continue;
        at += 2;
        while (at < n && is_digit(link[at])) ++at;
        if (at == n || link[at] == '/') return true;
    }
    return false;
}

}  // namespace

bool find_url_in_text(const char* text, int length, int offset, int* first, int* last) {
    if (!text || offset < 0 || offset >= length || !is_link_char(static_cast<unsigned char>(text[offset]))) return false;
    int start = offset;
    while (!has_scheme(text, length, start) && start > 0 && is_link_char(static_cast<unsigned char>(text[start - 1])))
        --start;
    int end = offset;
    while (end + 1 < length && is_link_char(static_cast<unsigned char>(text[end + 1]))) ++end;

    // Leading punctuation; the brackets opened here may be closed at the other end.
    int balance[3] = {0, 0, 0};
    // The backward walk stops at a scheme, so the bracket that encloses "(http://...)" lies
    // before the start: it is counted all the same, or the link would keep the closing one.
    for (int before = start - 1; before >= 0 && std::strchr("([{", text[before]) && text[before]; --before)
        ++balance[bracket_kind(text[before])];
    while (start < end && std::strchr("{}[](),.?", text[start])) {
        const int kind = bracket_kind(text[start]);
        if (kind >= 0) balance[kind] += std::strchr("([{", text[start]) ? 1 : -1;
        ++start;
    }
    while (end > start) {
        const char c = text[end];
        if (c == ',' || c == '.' || c == '?') {
            --end;
            continue;
        }
        const int kind = std::strchr(")]}", c) ? bracket_kind(c) : -1;
        if (kind < 0 || balance[kind] <= 0) break;
        --balance[kind];
        --end;
    }
    if (offset < start || offset > end) return false;

    const char* link = text + start;
    const int n = end - start + 1;
    const bool scheme = has_scheme(text, length, start);
    if (!scheme && std::memchr(link, '@', static_cast<size_t>(n - 1))) return false;  // a mail address
    if (!std::memchr(link, '.', static_cast<size_t>(n))) return false;
    if (!scheme && !starts_with(text, start + n, start, "www.") && !looks_like_host(link, n)) return false;
    *first = start;
    *last = end;
    return true;
}
