#include "panels/popup_payload.h"

#include <cstdlib>
#include <cstring>

#include "base/fixed_string.h"
#include "base/words.h"

namespace {

constexpr int line_limit = 5999;

const char* const missing_line_message[] = {
    "Error in zorn_popup_manager::create_window(), no name.\n",
    "Error in zorn_popup_manager::create_window(), no title.\n",
    "Error in zorn_popup_manager::create_window(), no size.\n",
    "Error in zorn_popup_manager::create_window(), no command.\n",
};

// A line of the payload, cut at the limit; the position after its line feed, or null when the
// payload ended without one.
const char* take_line(const char* text, std::string* line) {
    const char* end = std::strchr(text, '\n');
    const size_t length = end ? static_cast<size_t>(end - text) : std::strlen(text);
    line->assign(text, length < line_limit ? length : line_limit);
    return end ? end + 1 : nullptr;
}

// Decimal numbers as atoi reads them: a missing one counts 0.
void read_size(const std::string& line, int* columns, int* rows) {
    const char* first = line.c_str();
    while (*first == ' ' || *first == '\t') ++first;
    *columns = std::atoi(first);
    const char* second = next_arg(first);
    *rows = second ? std::atoi(second) : 0;
}

void read_flags(const std::string& line, zorn_popup_description* out) {
    for (const char* word = line.c_str(); word && *word; word = next_arg(word)) {
        while (*word == ' ' || *word == '\t') ++word;
        if (!*word) break;
        if (word_equal(word, "noscroll")) out->noscroll = true;
        else if (word_equal(word, "nowrap")) out->nowrap = true;
        else if (word_equal(word, "menuonly")) out->menuonly = true;
    }
}

}  // namespace

bool zorn_parse_window_create(const char* payload, zorn_popup_description* out, const char** error) {
    *out = zorn_popup_description();
    std::string lines[5];
    const char* rest = payload ? payload : "";
    for (int i = 0; i < 5; ++i) {
        // The fifth line may be empty, but the fourth's line feed must be there.
        if (!rest) {
            if (error) *error = missing_line_message[i - 1];
            return false;
        }
        rest = take_line(rest, &lines[i]);
    }
    out->name = lines[0];
    out->title = lines[1];
    read_size(lines[2], &out->columns, &out->rows);
    out->command = lines[3].substr(0, zorn_popup_command_limit);
    read_flags(lines[4], out);
    return true;
}
