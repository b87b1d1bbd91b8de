#include "bench/corpus.h"

#include <cstdint>
#include <string>

namespace {

const char* const words[] = {
    "the", "a", "of", "and", "to", "in", "is", "you", "that", "it", "he", "was", "for", "on", "are", "as",
    "with", "his", "they", "at", "be", "this", "from", "have", "or", "by", "one", "had", "not", "but",
    "what", "all", "were", "when", "we", "there", "can", "an", "your", "which", "their", "said", "if",
    "will", "each", "about", "how", "up", "out", "them", "then", "she", "many", "some", "so", "these",
    "would", "other", "into", "has", "more", "her", "two", "like", "him", "see", "time", "could", "no",
    "make", "than", "first", "been", "its", "who", "now", "people", "my", "made", "over", "did", "down",
    "only", "way", "find", "use", "may", "water", "long", "little", "very", "after", "words", "called",
    "just", "where", "most", "know", "ancient", "stone", "crumbling", "shadows", "torchlight", "moss",
    "wind", "howls", "through", "broken", "arches", "cobblestones", "glitter", "faintly", "beneath",
    "your", "feet", "distant", "bells", "echo", "across", "valley", "smell", "smoke", "lingers", "heavy",
    "oak", "door", "stands", "ajar", "revealing", "narrow", "staircase", "spiralling", "darkness",
    "merchant", "guard", "goblin", "dragon", "sword", "shield", "potion", "scroll", "gold", "silver",
};
constexpr int word_count = sizeof(words) / sizeof(words[0]);
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

void add_words(std::string* out, generator* g, int count) {
    for (int i = 0; i < count; ++i) {
        if (i) *out += ' ';
        *out += words[g->next(word_count)];
        if (g->next(12) == 0) *out += ',';
    }
}

void room(std::string* out, generator* g) {
    *out += "\x1b[1m\x1b[37m";
    *out += rooms[g->next(5)];
    *out += "\x1b[0m\r\n";
    // Half the descriptions come as one long paragraph, half pre-wrapped at 78 columns.
    std::string prose;
    add_words(&prose, g, 60 + static_cast<int>(g->next(60)));
    prose += '.';
    if (g->next(2)) {
        *out += prose + "\r\n";
    } else {
        for (size_t at = 0; at < prose.size();) {
            size_t end = at + 78 < prose.size() ? prose.rfind(' ', at + 78) : prose.size();
            if (end == std::string::npos || end <= at) end = prose.size();
            *out += prose.substr(at, end - at) + "\r\n";
            at = end + 1;
        }
    }
    *out += "\x1b[32m[Exits: north east south]\x1b[0m\r\n";
    if (g->next(2)) *out += "\x1b[36mA rusty sword lies here, half buried in the dust.\x1b[0m\r\n";
}

void chat(std::string* out, generator* g) {
    *out += "\x1b[35m[";
    *out += channels[g->next(5)];
    *out += "]\x1b[0m \x1b[1m\x1b[33m";
    *out += names[g->next(8)];
    *out += "\x1b[0m: ";
    add_words(out, g, 4 + static_cast<int>(g->next(14)));
    if (g->next(20) == 0) *out += " caf\xe9";
    *out += g->next(2) ? "!\r\n" : "?\r\n";
}

void combat(std::string* out, generator* g) {
    const char* monster = monsters[g->next(5)];
    switch (g->next(3)) {
    case 0:
        *out += "\x1b[31m";
        *out += monster;
        *out += " hits you for \x1b[1m\x1b[31m" + std::to_string(1 + g->next(40)) + "\x1b[0m\x1b[31m damage.\x1b[0m\r\n";
        break;
    case 1:
        *out += "You slash ";
        *out += monster;
        *out += ". \x1b[32m[HP: " + std::to_string(g->next(150)) + "/150]\x1b[0m\r\n";
        break;
    default:
        *out += "\x1b[1m\x1b[34mYour spell of frost engulfs ";
        *out += monster;
        *out += "!\x1b[0m\n";
        break;
    }
}

void table(std::string* out, generator* g) {
    *out += "Name\tLevel\tClass\tZone\r\n";
    for (int i = 0; i < 4; ++i) {
        *out += names[g->next(8)];
        *out += "\t" + std::to_string(1 + g->next(50)) + "\tranger\t" + rooms[g->next(5)] + "\r\n";
    }
}

void long_line(std::string* out, generator* g) {
    // Banners and pasted links: hundreds of bytes without a blank.
    const int n = 200 + static_cast<int>(g->next(400));
    if (g->next(2)) {
        for (int i = 0; i < n; ++i) *out += "=-"[i & 1];
    } else {
        *out += "http://www.embervale.example/forum/thread?id=";
        for (int i = 0; i < n; ++i) *out += static_cast<char>('a' + g->next(26));
    }
    *out += "\r\n";
}

}  // namespace

std::string make_game_corpus(size_t bytes, unsigned seed) {
    generator g{seed * 0x9e3779b97f4a7c15ULL + 1};
    std::string out;
    out.reserve(bytes + 4096);
    while (out.size() < bytes) {
        const unsigned kind = g.next(100);
        if (kind < 40) room(&out, &g);
        else if (kind < 65) chat(&out, &g);
        else if (kind < 90) combat(&out, &g);
        else if (kind < 95) table(&out, &g);
        else long_line(&out, &g);
    }
    return out;
}
