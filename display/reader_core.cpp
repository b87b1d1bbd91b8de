#include "display/reader_core.h"

#include <algorithm>
#include <cctype>
#include <cstring>

// ---- Lines -------------------------------------------------------------------------------------

// The same bytes vanish here as on the screen: the display reads ESC and one byte, or ESC [ and
// digits up to any other byte, and drops control bytes; bytes above 127 show as ".".
void zorn_reader_lines::feed(const char* bytes, int length) {
    for (int i = 0; i < length; ++i) {
        const unsigned char c = static_cast<unsigned char>(bytes[i]);
        // Most game text is printable: a run of it is copied whole, up to the line's limit.
        if (escape_state == 0 && c >= 32 && c < 127) {
            const int limit = std::min(length, i + static_cast<int>(max_line_bytes - current.size()));
            int end = i + 1;
            while (end < limit && static_cast<unsigned char>(bytes[end]) >= 32 &&
                   static_cast<unsigned char>(bytes[end]) < 127)
                ++end;
            current.append(bytes + i, static_cast<size_t>(end - i));
            i = end - 1;
            if (current.size() >= max_line_bytes) end_line(false);
            continue;
        }
        switch (escape_state) {
            case 1: escape_state = c == '[' ? 2 : 0; continue;
            case 2:
                if (c < '0' || c > '9') escape_state = 0;
                continue;
            default: break;
        }
        if (c == 27) {
            escape_state = 1;
        } else if (c == '\n') {
            end_line(true);
        } else if (c == '\t') {
            current += ' ';
        } else if (c >= 128) {
            current += '.';
        } else if (c >= 32 && c != 127) {
            current += static_cast<char>(c);
        }
        if (current.size() >= max_line_bytes) end_line(false);
    }
}

void zorn_reader_lines::set_channel(const char* name) {
    // The name comes from a tag: only its printable bytes lead a line.
    std::string next;
    for (const char* p = name; p && *p && next.size() < max_channel_bytes; ++p)
        if (*p >= 32 && *p < 127) next += *p;
    if (next == channel) return;
    if (!current.empty()) end_line(false);
    open_continues = false;
    channel.swap(next);
}

void zorn_reader_lines::flush() {
    if (!current.empty()) end_line(false);
}

void zorn_reader_lines::end_line(bool complete) {
    if (current.empty() && open_continues) {
        open_continues = !complete;
        return;
    }
    if (open_continues || channel.empty())
        sink.line(current, open_continues);
    else
        sink.line(zorn_reader_channel_line(channel, current), false);
    current.clear();
    open_continues = !complete;
}

std::string zorn_reader_channel_line(const std::string& channel, const std::string& text) {
    size_t start = 0;
    while (start < text.size() && (text[start] == '[' || text[start] == '(' || text[start] == ' ')) ++start;
    if (text.size() - start >= channel.size()) {
        bool same = true;
        for (size_t i = 0; i < channel.size() && same; ++i)
            same = std::tolower(static_cast<unsigned char>(text[start + i])) ==
                   std::tolower(static_cast<unsigned char>(channel[i]));
        const size_t after = start + channel.size();
        if (same && (after == text.size() || !std::isalnum(static_cast<unsigned char>(text[after])))) return text;
    }
    return channel + ": " + text;
}

bool zorn_reader_speakable(const std::string& text) {
    for (char c : text)
        if (std::isalnum(static_cast<unsigned char>(c))) return true;
    return false;
}

// ---- Speech queue --------------------------------------------------------------------------------

zorn_speech_queue::zorn_speech_queue(std::unique_ptr<zorn_speech_output> output) : out(std::move(output)) {}

void zorn_speech_queue::add(const std::string& text) {
    if (!zorn_reader_speakable(text)) return;
    last = text;
    queue.push_back(text);
    queued_bytes += text.size();
    // A flood keeps its newest lines: what the player hears next is what is happening now.
    while (queue.size() > max_waiting_lines || (queued_bytes > max_waiting_bytes && queue.size() > 1)) drop_oldest();
}

void zorn_speech_queue::drop_oldest() {
    queued_bytes -= queue.front().size();
    queue.pop_front();
    ++skipped_lines;
}

void zorn_speech_queue::pump() {
    if (!out) return;
    while (out->pending() < max_in_flight && (skipped_lines > 0 || !queue.empty())) {
        if (skipped_lines > 0) {
            out->speak("Skipped " + std::to_string(skipped_lines) + (skipped_lines == 1 ? " line." : " lines."));
            skipped_lines = 0;
            continue;
        }
        out->speak(queue.front());
        queued_bytes -= queue.front().size();
        queue.pop_front();
    }
}

void zorn_speech_queue::silence() {
    if (out) out->silence();
    queue.clear();
    queued_bytes = 0;
    skipped_lines = 0;
}

void zorn_speech_queue::repeat_last() {
    if (!out || last.empty()) return;
    out->silence();
    out->speak(last);
}

void zorn_speech_queue::announce(const std::string& text) {
    if (out) out->speak(text);
}

// ---- Mirror ----------------------------------------------------------------------------------------

void zorn_mirror_buffer::add(const std::string& text, bool continues) {
    const bool any_text = !lines.empty();
    if (continues && !lines.empty() && lines.back().size() + text.size() <= max_line_chars) {
        lines.back() += text;
        pending.append += text;
        return;
    }
    lines.push_back(text);
    if (any_text) pending.append += '\n';
    pending.append += text;
    if (lines.size() <= max_lines) return;
    // The oldest line leaves. While it is one the control holds whole, cutting it off the front is
    // enough; otherwise (a batch bigger than the buffer) the control takes the text anew.
    if (shown_lines >= 2 && !pending.replace) {
        pending.remove_front += lines.front().size() + 1;
        --shown_lines;
    } else {
        pending.replace = true;
    }
    lines.pop_front();
}

zorn_mirror_buffer::update zorn_mirror_buffer::take_update() {
    update taken = std::move(pending);
    pending = update();
    if (taken.replace) {
        taken.remove_front = 0;
        taken.append = text();
    }
    shown_lines = lines.size();
    return taken;
}

std::string zorn_mirror_buffer::text() const {
    std::string out;
    for (size_t i = 0; i < lines.size(); ++i) {
        if (i) out += '\n';
        out += lines[i];
    }
    return out;
}

// ---- Accessible names ------------------------------------------------------------------------------

namespace {

void add_part(std::string* out, const std::string& part) {
    if (!out->empty()) *out += ", ";
    *out += part;
}

void add_gauge(std::string* out, const char* label, int value, int maximum) {
    if (value < 0 && maximum <= 1) return;  // nothing received yet
    add_part(out, std::string(label) + " " + std::to_string(value) + " of " + std::to_string(maximum));
}

}  // namespace

std::string zorn_gauge_accessible_name(const zorn_gauge_values& v) {
    std::string name;
    if (v.hp_bars) {
        add_gauge(&name, "Health", v.hp, v.max_hp);
        add_gauge(&name, "Mana", v.mana, v.max_mana);
        add_gauge(&name, "Movement", v.move, v.max_move);
    }
    if (v.exp_bar) {
        const int percent = v.first_xp < 0 ? 0 : v.first_xp / 10;
        add_part(&name, percent >= 100 ? std::string("Experience full")
                                       : "Experience " + std::to_string(percent) + " percent");
    }
    if (v.enemy_bar) {
        if (v.enemy_percent < 0)
            add_part(&name, "No enemy");
        else
            add_part(&name, "Enemy " + v.enemy_name + " " + std::to_string(v.enemy_percent) + " percent");
    }
    return name.empty() ? "No gauges" : name;
}

std::string zorn_map_accessible_name(bool logged_in, bool in_combat, const std::string& area_name) {
    if (!logged_in) return "Map, not logged in";
    if (in_combat) return "Map, in combat";
    return area_name.empty() ? "Map" : "Map, " + area_name;
}
