#include "testworld/flood_text.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "testworld/wire.h"

namespace testworld {

namespace {

const char* const words[] = {
    "the", "a", "of", "and", "to", "in", "is", "you", "that", "it", "was", "for", "on", "with", "they", "at",
    "from", "have", "or", "by", "one", "not", "but", "what", "all", "when", "there", "can", "your", "which",
    "out", "then", "some", "into", "more", "over", "down", "only", "long", "little", "after", "where", "ancient",
    "stone", "crumbling", "shadows", "torchlight", "moss", "wind", "howls", "through", "broken", "arches",
    "cobblestones", "glitter", "faintly", "beneath", "feet", "distant", "bells", "echo", "across", "valley",
    "smoke", "lingers", "heavy", "oak", "door", "stands", "ajar", "narrow", "staircase", "darkness", "merchant",
    "guard", "goblin", "dragon", "sword", "shield", "potion", "scroll", "gold", "silver", "lantern", "ember",
};
constexpr unsigned word_count = sizeof(words) / sizeof(words[0]);
const char* const names[] = {"Alice", "Borin", "Cedric", "Dwyn", "Elara", "Fenwick", "Gisla", "Hal"};
const char* const channels[] = {"Gossip", "Trade", "Newbie", "Clan", "Auction"};
const char* const monsters[] = {"the goblin", "a cave troll", "the bandit leader", "a giant rat", "the wyvern"};
const char* const rooms[] = {"The Ruined Chapel", "Market Square", "A Dusty Road", "The Old Mill", "Guild Hall"};

struct generator {
    uint64_t state;
    unsigned next(unsigned n) {
        state = state * 6364136223846793005ULL + 1442695040888963407ULL;
        return static_cast<unsigned>((state >> 33) % n);
    }
};

void add_words(std::string* out, generator* g, unsigned count) {
    for (unsigned i = 0; i < count; ++i) {
        if (i) *out += ' ';
        *out += words[g->next(word_count)];
        const unsigned mark = g->next(40);
        if (mark == 0) *out += ";;";  // a semicolon on the wire
        else if (mark < 4) *out += ',';
    }
}

// The text of one line, colours included, without its number and end mark.
void line_body(std::string* out, generator* g) {
    const unsigned kind = g->next(100);
    if (kind < 10) {
        *out += sgr(sgr_bold) + sgr(sgr_white) + rooms[g->next(5)] + sgr(sgr_reset);
    } else if (kind < 40) {
        add_words(out, g, 8 + g->next(8));
        *out += '.';
    } else if (kind < 48) {
        *out += sgr(sgr_green) + "[Exits: north east south]" + sgr(sgr_reset);
    } else if (kind < 68) {
        *out += sgr(sgr_magenta) + "[" + channels[g->next(5)] + "]" + sgr(sgr_reset) + " " + sgr(sgr_bold) +
                sgr(sgr_yellow) + names[g->next(8)] + sgr(sgr_reset) + ": ";
        add_words(out, g, 3 + g->next(12));
        if (g->next(20) == 0) *out += " caf\xe9";
        *out += g->next(2) ? "!" : "?";
    } else if (kind < 88) {
        *out += sgr(sgr_red) + monsters[g->next(5)] + " hits you for " + sgr(sgr_bold) + sgr(sgr_red) +
                std::to_string(1 + g->next(40)) + sgr(sgr_reset) + sgr(sgr_red) + " damage." + sgr(sgr_reset);
    } else if (kind < 95) {
        *out += std::string(names[g->next(8)]) + "\t" + std::to_string(1 + g->next(50)) + "\tranger\t" + rooms[g->next(5)];
    } else {
        // Banners and pasted links: hundreds of bytes without a blank, wrapped by the display.
        const unsigned n = 200 + g->next(400);
        if (g->next(2)) {
            for (unsigned i = 0; i < n; ++i) *out += "=-"[i & 1];
        } else {
            *out += "http://www.embervale.example/forum/thread?id=";
            for (unsigned i = 0; i < n; ++i) *out += static_cast<char>('a' + g->next(26));
        }
    }
}

bool is_digits(const char* p, size_t n) {
    for (size_t i = 0; i < n; ++i)
        if (p[i] < '0' || p[i] > '9') return false;
    return true;
}

}  // namespace

std::string make_flood_text(size_t bytes, unsigned seed) {
    generator g{seed * 0x9e3779b97f4a7c15ULL + 1};
    std::string out;
    out.reserve(bytes + 1024);
    for (size_t number = 0; out.size() < bytes; ++number) {
        char head[32];
        std::snprintf(head, sizeof head, "%07zu", number);
        out += sgr(sgr_yellow) + head + sgr(sgr_reset) + " ";
        line_body(&out, &g);
        out += " ~" + std::to_string(number) + "\r\n";
    }
    return out;
}

size_t count_flood_lines(const std::string& flood) {
    size_t lines = 0;
    for (char c : flood) lines += c == '\n';
    return lines;
}

bool check_flood_lines(const std::string& shown, size_t expected_lines, std::string* problem) {
    size_t next = 0;
    size_t at = 0;
    while (at < shown.size()) {
        size_t end = shown.find('\n', at);
        if (end == std::string::npos) end = shown.size();
        size_t length = end - at;
        const char* line = shown.data() + at;
        at = end + 1;
        if (length > 0 && line[length - 1] == '\r') --length;
        if (length < 8 || !is_digits(line, 7) || line[7] != ' ') continue;
        const size_t number = std::strtoul(std::string(line, 7).c_str(), nullptr, 10);
        const std::string mark = " ~" + std::to_string(number);
        const std::string text(line, length);
        if (number != next) {
            *problem = "line " + std::to_string(number) + " where line " + std::to_string(next) + " was due";
            return false;
        }
        if (text.size() < mark.size() || text.compare(text.size() - mark.size(), mark.size(), mark) != 0) {
            *problem = "line " + std::to_string(number) + " is cut short: '" + text.substr(0, 120) + "'";
            return false;
        }
        ++next;
    }
    if (next != expected_lines) {
        *problem = std::to_string(next) + " of " + std::to_string(expected_lines) + " lines shown";
        return false;
    }
    return true;
}

}  // namespace testworld
