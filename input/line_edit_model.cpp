#include "input/line_edit_model.h"

#include <cstdio>

#include "base/fixed_string.h"
#include "config/debug_log.h"

zorn_command_history::zorn_command_history() {
    for (int list = 0; list < list_count; ++list) {
        used[list] = 2;  // entries 0 and 1, both empty
        history_position[list] = 1;
    }
    // The disconnected client has "connect" one Up key away.
    history[0][2] = "connect";
    used[0] = 3;
}

const std::string* zorn_command_history::entry(int position) const {
    if (position < 0 || position >= used[history_list]) return nullptr;
    return &history[history_list][position];
}

void zorn_command_history::select_history_list(int list) {
    if (list == history_list || list < 0 || list >= list_count) return;
    history_position[history_list] = history_index;
    history_list = list;
    history_index = history_position[list];
}

void zorn_command_history::history_store(const std::string& text) {
    if (password_mode) return;
    std::string* list = history[history_list];
    int& count = used[history_list];
    // Only a direct repeat is kept out; an older duplicate is not looked for.
    if (!(count > 2 && list[2] == text)) {
        const int last = count < entries ? count : entries - 1;
        for (int i = last; i > 2; --i) list[i] = std::move(list[i - 1]);
        list[2] = text;
        if (count < entries) ++count;
    }
    history_index = 1;
    list[1].clear();
}

void zorn_command_history::show_entry(zorn_line_box& box) {
    box.set_text(history[history_list][history_index]);
}

void zorn_command_history::history_up(zorn_line_box& box) {
    const std::string text = box.get_text();
    const long position = box.insertion_point();
    if (position < static_cast<long>(text.size())) {
        // Inside a text of several lines Up moves through the text, not the history.
        const size_t feed = position > 0 ? text.rfind('\n', static_cast<size_t>(position - 1)) : std::string::npos;
        box.set_insertion_point(feed == std::string::npos ? 0 : static_cast<long>(feed));
        return;
    }
    if (history_index >= entries - 1 || !entry(history_index) || !entry(history_index + 1)) return;
    if (history_index == 1) history[history_list][1] = text;
    ++history_index;
    show_entry(box);
}

void zorn_command_history::history_down(zorn_line_box& box) {
    const std::string text = box.get_text();
    const long position = box.insertion_point();
    if (position < static_cast<long>(text.size())) {
        const size_t feed = text.find('\n', static_cast<size_t>(position) + 1);
        box.set_insertion_point(feed == std::string::npos ? static_cast<long>(text.size()) : static_cast<long>(feed));
        return;
    }
    if (history_index < 1) {
        box.set_text("");
        return;
    }
    if (!entry(history_index)) return;
    if (history_index == 1) history[history_list][1] = text;
    --history_index;
    if (entry(history_index)) show_entry(box);
}

std::string zorn_command_history::history_text() const {
    std::string out = "\nRecent Command History:";
    for (int position = 20; position >= 2; --position) {
        const std::string* line = entry(position);
        if (!line) continue;
        char number[16];
        std::snprintf(number, sizeof number, "\n%2d - ", position - 1);
        out += number;
        out += *line;
    }
    out += "\n";
    return out;
}

namespace {

template <typename Emit>
void clean_utf8(std::string_view utf8, Emit emit) {
    size_t i = 0;
    while (i < utf8.size()) {
        const auto lead = static_cast<unsigned char>(utf8[i++]);
        if (lead < 0x80) {
            const bool keep = (lead >= 32 && lead <= 126) || lead == '\t' || lead == '\n' || lead == '\r';
            emit(keep ? static_cast<char>(lead) : '.');
            continue;
        }
        int continuation = lead >= 0xF0 && lead < 0xF8 ? 3 : lead >= 0xE0 ? 2 : lead >= 0xC0 ? 1 : 0;
        if (lead >= 0xF8) continuation = 0;  // not a lead byte of any sequence
        // Every sequence of more than one byte is outside 32..126: one "." for all it has read.
        while (continuation-- > 0 && i < utf8.size() && (static_cast<unsigned char>(utf8[i]) & 0xC0) == 0x80) ++i;
        emit('.');
    }
}

}  // namespace

std::string clean_text(std::string_view utf8) {
    std::string out;
    out.reserve(utf8.size());
    clean_utf8(utf8, [&](char c) { out.push_back(c); });
    return out;
}

void clean_text(std::string_view utf8, zorn_fixed_string* out) {
    clean_utf8(utf8, [&](char c) { out->append_char(c); });
}
