#include "base/words.h"

#include <cstdlib>
#include <cstring>

#include "base/fixed_string.h"
#include "config/debug_log.h"

// Nothing here allocates except add_remove_keyword_line, whose list is a malloc'd text by contract;
// when malloc fails there the list is left as it was.

namespace {

bool is_separator(char c) { return c == ' ' || c == '\t' || c == '\n'; }

bool is_word_end(char c) { return c == '\0' || is_separator(c); }

char fold(char c) { return (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c; }

const char* skip_separators(const char* text) {
    while (is_separator(*text)) ++text;
    return text;
}

const char* skip_word(const char* text) {
    while (!is_word_end(*text)) ++text;
    return text;
}

int word_length(const char* text) { return static_cast<int>(skip_word(text) - text); }

// Calls visit(start) for every word of text; stops early when visit returns true.
template <typename Visit>
bool any_word(const char* text, Visit visit) {
    if (!text) return false;
    for (const char* word = skip_separators(text); *word; word = skip_separators(skip_word(word))) {
        if (visit(word)) return true;
    }
    return false;
}

}  // namespace

const char* next_arg(const char* text) {
    if (!text) {
        zorn_client_debug_event("Error in next_arg(), NULL pointer passed in.", zorn_cat_verbose);
        return nullptr;
    }
    const char* next = skip_separators(skip_word(skip_separators(text)));
    return *next ? next : nullptr;
}

const char* next_arg_eol(const char* text) {
    if (!text) {
        zorn_client_debug_event("Error in next_arg_eol(), NULL pointer passed in.", zorn_cat_verbose);
        return nullptr;
    }
    // Only the blank separates here, so a TAB stays inside a word; a line feed ends the text.
    const char* p = text;
    while (*p == ' ') ++p;
    while (*p && *p != ' ' && *p != '\n') ++p;
    while (*p == ' ') ++p;
    return (*p && *p != '\n') ? p : nullptr;
}

const char* last_arg(const char* text) {
    if (!text) {
        zorn_client_debug_event("Error in last_arg(), NULL pointer passed in.", zorn_cat_verbose);
        return nullptr;
    }
    // One word (or none) gives the text as it was handed in, leading blanks included.
    const char* last = text;
    for (const char* next = next_arg(text); next; next = next_arg(next)) last = next;
    return last;
}

bool word_equal(const char* a, const char* b) {
    if (!a || !b) return false;
    for (int i = 0; i < zorn_word_compare_limit; ++i) {
        const bool a_end = is_word_end(a[i]);
        const bool b_end = is_word_end(b[i]);
        if (a_end || b_end) return a_end && b_end;
        if (fold(a[i]) != fold(b[i])) return false;
    }
    return false;
}

int word_prefix_match(const char* short_text, const char* long_text) {
    if (!short_text || !long_text) return 0;
    for (int i = 0; i < zorn_word_compare_limit; ++i) {
        if (is_word_end(short_text[i])) return i;
        if (fold(short_text[i]) != fold(long_text[i])) return 0;
    }
    return 0;
}

int word_abbrev_match(const char* short_text, const char* full, int minimum) {
    const int length = word_prefix_match(short_text, full);
    if (length == 0) return 0;
    // Below the minimum only the whole word counts, so short commands still match exactly.
    if (minimum >= 1 && length < minimum && !is_word_end(full[length])) return 0;
    return length;
}

bool option_equal(const char* text, const char* name) {
    if (!text || !name || text[0] != '-') return false;
    int dashes = 0;
    while (text[dashes] == '-') ++dashes;
    const char* option = text + dashes;
    const char* bare = name;
    for (int i = 0; i < dashes && *bare == '-'; ++i) ++bare;
    for (int i = 0; i < zorn_word_compare_limit; ++i) {
        const bool option_end = option[i] == '\0' || option[i] == ' ';
        if (option_end || bare[i] == '\0') return option_end && bare[i] == '\0';
        if (option[i] != bare[i]) return false;
    }
    return false;
}

bool parse_integer(const char* text, int* value) {
    if (!text) return false;
    const bool digit = text[0] >= '0' && text[0] <= '9';
    const bool signed_digit = text[0] == '-' && text[1] >= '0' && text[1] <= '9';
    if (!digit && !signed_digit && text[0] != '+') return false;
    if (value) *value = std::atoi(text);
    return true;
}

bool word_in_list(const char* word, const char* list) {
    if (!word) return false;
    return any_word(list, [word](const char* item) { return word_equal(word, item); });
}

bool list_has_word(const char* list, const char* word) { return word_in_list(word, list); }

bool list_has_all_words(const char* list, const char* words) {
    if (!words) return false;
    return !any_word(words, [list](const char* word) { return !word_in_list(word, list); });
}

bool list_has_prefix(const char* list, const char* word) {
    if (!word) return false;
    return any_word(list, [word](const char* item) { return word_prefix_match(word, item) > 0; });
}

bool list_has_all_prefixes(const char* list, const char* words) {
    if (!words) return true;
    return !any_word(words, [list](const char* word) { return !list_has_prefix(list, word); });
}

bool list_has_abbrev(const char* word, const char* list, int minimum) {
    if (!word) return false;
    return any_word(list, [word, minimum](const char* item) { return word_abbrev_match(word, item, minimum) > 0; });
}

namespace {

bool keyword_matches_exactly(const char* word, const char* keyword, bool abbrev) {
    if (word_equal(word, keyword)) return true;
    if (!abbrev) return false;
    const int length = word_prefix_match(word, keyword);
    if (length == 0) return false;
    // "-" alone would abbreviate every option: something has to follow the dash.
    return keyword[0] != '-' || length >= 2;
}

bool keyword_matches(const char* word, const char* keyword, bool abbrev) {
    if (keyword_matches_exactly(word, keyword, abbrev)) return true;
    // One character more in front of an option keyword is accepted, so "--force" does for "-force".
    return keyword[0] == '-' && word_length(word) >= 2 && keyword_matches_exactly(word + 1, keyword, abbrev);
}

// The start of the last word and the end of the word before it (or text when there is none).
const char* find_last_word(const char* text, const char** previous_end) {
    const char* last = nullptr;
    *previous_end = text;
    for (const char* word = skip_separators(text); *word; word = skip_separators(skip_word(word))) {
        if (last) *previous_end = skip_word(last);
        last = word;
    }
    return last;
}

bool extract_anywhere(const char* text, zorn_fixed_string* out, const char* keyword, bool abbrev) {
    for (const char* word = skip_separators(text); *word; word = skip_separators(skip_word(word))) {
        if (keyword_matches(word, keyword, abbrev)) {
            const char* rest = skip_separators(skip_word(word));
            if (*rest) {
                if (!out->empty()) out->append_char(' ');
                out->append(rest);
            }
            return true;
        }
        if (!out->empty()) out->append_char(' ');
        out->append(word, word_length(word));
    }
    out->clear();
    return false;
}

}  // namespace

bool extract_keyword(const char* text, zorn_fixed_string* out, const char* keyword, int flags) {
    if (!out) return false;
    out->clear();
    if (!text || !keyword) return false;
    const bool abbrev = (flags & keyword_abbrev) != 0;
    const bool anywhere = (flags & keyword_anywhere) != 0;
    const char* first = skip_separators(text);
    if (!*first) return false;
    if (((flags & keyword_first) || anywhere) && keyword_matches(first, keyword, abbrev)) {
        out->append(skip_separators(skip_word(first)));
        return true;
    }
    const char* previous_end = text;
    const char* last = find_last_word(text, &previous_end);
    if (((flags & keyword_last) || anywhere) && keyword_matches(last, keyword, abbrev)) {
        out->append(text, static_cast<int>(previous_end - text));
        return true;
    }
    return anywhere && extract_anywhere(text, out, keyword, abbrev);
}

const char* strip_keyword(const char* text, zorn_fixed_string* work, const char* keyword, bool* found) {
    if (found) *found = false;
    if (!text || !*text || !work) return nullptr;
    if (!extract_keyword(text, work, keyword, keyword_anywhere | keyword_abbrev)) return text;
    if (found) *found = true;
    return work->empty() ? nullptr : work->c_str();
}

const char* strip_force_flag(const char* text, zorn_fixed_string* work, bool* found) {
    return strip_keyword(text, work, "-force", found);
}

void remove_words(const char* text, zorn_fixed_string* out, const char* words) {
    if (!out) return;
    if (text) out->append(text);
    if (!words) return;
    zorn_fixed_string rest;
    any_word(words, [out, &rest](const char* word) {
        zorn_fixed_string keyword;
        keyword.append(word, word_length(word));
        while (extract_keyword(out->c_str(), &rest, keyword.c_str(), keyword_anywhere)) out->set(rest.c_str());
        return false;
    });
}

bool safe_strcpy(char* dest, const char* src, int size) {
    if (!dest) {
        zorn_client_debug_event("Error in safe_strcpy(), NULL dest.", zorn_cat_error);
        return false;
    }
    if (size < 1) {
        zorn_client_debug_event("Error in safe_strcpy(), dest too short.", zorn_cat_error);
        return false;
    }
    if (!src) {
        dest[0] = '\0';
        zorn_client_debug_event("Error in safe_strcpy(), NULL src.", zorn_cat_error);
        return false;
    }
    int i = 0;
    while (i < size - 1 && src[i]) {
        dest[i] = src[i];
        ++i;
    }
    dest[i] = '\0';
    if (src[i] == '\0') return true;
    zorn_client_debug_eventf(zorn_cat_error, "Error in safe_strcpy(), src overflow. String was: ->%s<-", src);
    return false;
}

bool glob_match(const char* text, const char* pattern) {
    if (!text || !pattern) return false;
    // Greedy walk that backs up to the last "*" on a mismatch: linear space, no recursion.
    const char* star = nullptr;
    const char* star_text = nullptr;
    while (*text) {
        if (*pattern == '*') {
            while (*pattern == '*') ++pattern;
            if (!*pattern) return true;
            star = pattern;
            star_text = text;
        } else if (*pattern == *text) {
            ++pattern;
            ++text;
        } else if (star) {
            pattern = star;
            text = ++star_text;
        } else {
            return false;
        }
    }
    while (*pattern == '*') ++pattern;
    return *pattern == '\0';
}

namespace {

// Joins the words of list other than word with single blanks into a new malloc'd text, or null.
char* list_without(const char* list, const char* word, bool* failed) {
    const size_t capacity = std::strlen(list) + 1;
    char* result = static_cast<char*>(std::malloc(capacity));
    if (!result) {
        *failed = true;
        return nullptr;
    }
    size_t length = 0;
    any_word(list, [&](const char* item) {
        if (word_equal(word, item)) return false;
        const size_t item_length = static_cast<size_t>(word_length(item));
        if (length) result[length++] = ' ';
        std::memcpy(result + length, item, item_length);
        length += item_length;
        return false;
    });
    result[length] = '\0';
    if (length) return result;
    std::free(result);
    return nullptr;
}

}  // namespace

const char* add_remove_keyword_line(const char* word, char** list) {
    if (!word || !list) {
        zorn_client_debug_event("Error in add_remove_keyword_line(), null dest?", zorn_cat_error);
        return nullptr;
    }
    word = skip_separators(word);
    const int length = word_length(word);
    if (length == 0) return nullptr;
    const bool empty = !*list || !*skip_separators(*list);
    if (word_equal(word, "NULL")) {
        if (empty) return "List is already empty.";
        std::free(*list);
        *list = nullptr;
        return "List deleted.";
    }
    if (!empty && word_in_list(word, *list)) {
        bool failed = false;
        char* rebuilt = list_without(*list, word, &failed);
        if (failed) return nullptr;
        std::free(*list);
        *list = rebuilt;
        return "Keyword removed.";
    }
    // New keywords go in front.
    const size_t old_length = empty ? 0 : std::strlen(*list);
    char* added = static_cast<char*>(std::malloc(static_cast<size_t>(length) + old_length + 2));
    if (!added) return nullptr;
    std::memcpy(added, word, static_cast<size_t>(length));
    added[length] = '\0';
    if (old_length) {
        added[length] = ' ';
        std::memcpy(added + length + 1, *list, old_length + 1);
    }
    std::free(*list);
    *list = added;
    return "Keyword added.";
}

namespace {

constexpr char base64_alphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

int base64_value(char c) {
    if (c >= 'A' && c <= 'Z') return c - 'A';
    if (c >= 'a' && c <= 'z') return c - 'a' + 26;
    if (c >= '0' && c <= '9') return c - '0' + 52;
    if (c == '+') return 62;
    if (c == '/') return 63;
    return 0;  // outside the alphabet: taken as zero, by design without complaint
}

}  // namespace

bool base64_append(zorn_fixed_string* out, const unsigned char* data, int length) {
    if (!out || length < 0 || (!data && length > 0)) return false;
    const long long needed = (static_cast<long long>(length) + 2) / 3 * 4;
    const bool fits = out->size() + needed <= zorn_fixed_string::capacity - 1;
    for (int i = 0; i < length && out->size() < zorn_fixed_string::capacity - 1; i += 3) {
        const unsigned group = (data[i] << 16) | ((i + 1 < length ? data[i + 1] : 0) << 8) |
                               (i + 2 < length ? data[i + 2] : 0);
        out->append_char(base64_alphabet[(group >> 18) & 63]);
        out->append_char(base64_alphabet[(group >> 12) & 63]);
        out->append_char(i + 1 < length ? base64_alphabet[(group >> 6) & 63] : '=');
        out->append_char(i + 2 < length ? base64_alphabet[group & 63] : '=');
    }
    return fits;
}

bool base64_append_text(zorn_fixed_string* out, const char* text) {
    if (!text) return false;
    return base64_append(out, reinterpret_cast<const unsigned char*>(text), static_cast<int>(std::strlen(text)));
}

int base64_decode(unsigned char* out, int capacity, const char* text) {
    if (!out || !text || capacity < 0) return 0;
    int count = 0;
    unsigned bits = 0;
    int bit_count = 0;
    for (const char* p = text; *p && *p != '='; ++p) {
        bits = ((bits << 6) | static_cast<unsigned>(base64_value(*p))) & 0xFFFFFF;
        bit_count += 6;
        if (bit_count < 8) continue;
        bit_count -= 8;
        if (count >= capacity) return 0;
        out[count++] = static_cast<unsigned char>(bits >> bit_count);
    }
    return count;
}

int base64_decode_string(zorn_fixed_string* out, const char* text) {
    if (!out) return 0;
    out->clear();
    const int count = base64_decode(reinterpret_cast<unsigned char*>(out->text), zorn_fixed_string::capacity - 1, text);
    out->length = count;
    out->text[count] = '\0';
    return count;
}
