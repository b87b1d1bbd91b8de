#include "input/button_model.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

// Two rows of three under the level buttons, the middle one being "Out".
const direction_button_row direction_button_table[direction_button_count] = {
    {"NW", "nwest", 128, 0, 33, 31, 31},  {"N", "north", 1, 33, 33, 31, 31},    {"NE", "neast", 2, 66, 33, 31, 31},
    {"W", "west", 64, 0, 66, 31, 31},     {"Out", "out", 0, 33, 66, 31, 31},    {"E", "east", 4, 66, 66, 31, 31},
    {"SW", "swest", 32, 0, 99, 31, 31},   {"S", "south", 16, 33, 99, 31, 31},   {"SE", "seast", 8, 66, 99, 31, 31},
    {"Up", "up", 256, 49, 0, 48, 31},     {"Down", "down", 512, 0, 0, 48, 31},
};

bool parse_exits_code(const char* word, int* mask) {
    const auto letter = [](char c) { return c >= 'A' && c <= '`'; };
    if (!word || !letter(word[0]) || !letter(word[1])) return false;
    *mask = ((word[0] - 'A') << 5) | (word[1] - 'A');
    return true;
}

hint_tag parse_hint_tag(const char* tag) {
    hint_tag out;
    if (!tag || tag[0] != 'b') {
        out.bogus = true;
        return out;
    }
    out.number = std::atoi(tag + 1);
    out.bogus = out.number < 1 || out.number > hint_button_count;
    const char* p = tag + 1;
    while (*p == ' ' || *p == '\t' || *p == '+' || *p == '-') p++;
    while (*p >= '0' && *p <= '9') p++;
    out.tooltip = *p == 't';
    return out;
}

hint_payload split_hint_payload(const char* payload) {
    hint_payload out;
    if (!payload) return out;
    const char* feed = std::strchr(payload, '\n');
    if (!feed) {
        out.label = payload;
        return out;
    }
    out.label.assign(payload, feed);
    out.command = feed + 1;
    out.has_command = !out.command.empty();
    return out;
}

std::vector<int> hint_column_positions(const std::vector<bool>& shown, int top) {
    std::vector<int> y(shown.size(), top);
    int next = top;
    bool previous_shown = false;
    for (size_t i = 0; i < shown.size(); ++i) {
        if (!shown[i]) {
            previous_shown = false;
            continue;
        }
        if (!previous_shown) next += hint_group_gap;
        y[i] = next;
        next += hint_button_step;
        previous_shown = true;
    }
    return y;
}

fkey_tag_action classify_fkey_tag(const char* tag, int* number) {
    const int n = tag && std::strlen(tag) >= 2 ? std::atoi(tag + 2) : 0;
    if (number) *number = n;
    if (n >= 1 && n <= fkey_button_count) return fkey_tag_action::setup;
    if (n > fkey_button_count && n <= 12) return fkey_tag_action::ignore;
    return fkey_tag_action::bogus;
}

std::string fkey_payload_label(const char* payload) {
    if (!payload) return "";
    while (*payload == '\n') payload++;
    return std::string(payload, std::strcspn(payload, "\n"));
}

namespace {

bool separator(char c) { return c == ' ' || c == '\t' || c == '\n'; }

std::string as_blanks(std::string text) {
    for (char& c : text)
        if (c == '\t' || c == '\n') c = ' ';
    return text;
}

}  // namespace

void fkey_label_split(const char* label, const fit_function& fit, std::string* line_1, std::string* line_2) {
    line_1->clear();
    line_2->clear();
    if (!label || !*label) return;
    const size_t length = std::strlen(label);
    const size_t n = static_cast<size_t>(std::max(fit(label), 1));
    size_t first_word = 0;
    while (first_word < length && !separator(label[first_word])) first_word++;

    const char* rest;
    if (first_word > n) {
        // One word too long for the button: cut it, the next word goes below.
        line_1->assign(label, n);
        rest = label + first_word;
    } else if (length <= n) {
        *line_1 = as_blanks(label);
        return;
    } else {
        // The first word fits, so a separator stands at or before character n.
        size_t at = n;
        while (at > 0 && !separator(label[at])) at--;
        size_t end = at;
        while (end > 0 && label[end - 1] == ' ') end--;
        line_1->assign(label, end);
        rest = label + at + 1;
    }
    *line_1 = as_blanks(*line_1);
    while (*rest && separator(*rest)) rest++;
    if (!*rest) return;
    const std::string second = as_blanks(rest);
    const size_t fits = std::min<size_t>(std::max(fit(second.c_str()), 1), fkey_line_2_limit);
    *line_2 = second.substr(0, fits);
    const size_t last = line_2->find_last_not_of(' ');
    line_2->erase(last == std::string::npos ? 0 : last + 1);
}

int fkey_button_side(int row_height) { return std::max(row_height - 5, 1); }
