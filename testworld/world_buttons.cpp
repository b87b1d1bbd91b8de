// The parts of the world that feed the client's button sets and its group display: hint buttons by
// room, function key aliases, and followers who join the player's group and fight beside them.
#include <algorithm>
#include <cstdlib>
#include <string>

#include "testworld/wire.h"
#include "testworld/world.h"

namespace testworld {

namespace {

constexpr const char* shop_room = "Smithy";

// Who answers "recruit", in this order: two compact rows, then a pet behind the divider.
struct recruit_row {
    const char* name;
    char marker;
    int max_hp, max_mana, max_move;
    int blow;  // hit points lost each fight round
};
const recruit_row recruit_table[] = {
    {"Ana", '.', 90, 60, 80, 3},
    {"Borin", '.', 130, 0, 100, 5},
    {"Pip", '-', 30, 0, 60, 2},
};

std::string line_of_numbers(int hp, int max_hp, int mana, int max_mana, int move, int max_move) {
    return std::to_string(hp) + " " + std::to_string(max_hp) + " " + std::to_string(mana) + " " +
           std::to_string(max_mana) + " " + std::to_string(move) + " " + std::to_string(max_move);
}

}  // namespace

// Groups of hints: what works everywhere, then after a gap what the shop offers.
void session::send_hint_buttons() {
    output += tag("b1", "Look\nlook");
    output += tag("b2", "Exits\nexits");
    if (where && std::string(where->name) == shop_room) {
        output += tag("b5", "Wares\nlist");
        output += tag("b6", "Buy a lamp\nbuy lamp");
    }
}

std::string session::exits_tag(bool on) const {
    return tag("dirs", std::string(on ? "on " : "off ") + exits_code(where ? game->exits_mask(*where) : 0));
}

void session::command_exits(const std::string& /*arguments*/) {
    std::string names;
    for (const direction& way : directions())
        if (game->exits_mask(*where) & way.exit_bit) names += std::string(names.empty() ? "" : ", ") + way.name;
    send_text("Obvious exits: " + names + ".\r\n");
    prompt();
}

void session::command_list(const std::string& /*arguments*/) {
    if (std::string(where->name) != shop_room) {
        send_text("There is no shop here.\r\n");
    } else {
        send_text("The smith sells: a brass lamp (5 gold), a wooden sword (not for sale).\r\n");
    }
    prompt();
}

void session::command_buy(const std::string& arguments) {
    if (std::string(where->name) != shop_room) {
        send_text("There is no shop here.\r\n");
    } else if (arguments != "lamp") {
        send_text("The smith has no such thing.\r\n");
    } else if (has_lamp) {
        send_text("You already have a lamp.\r\n");
    } else {
        has_lamp = true;
        send_text("You buy a brass lamp.\r\n");
    }
    prompt();
}

// "alias f03 look": the key's button shows the command; "alias f03" alone forgets it.
void session::command_alias(const std::string& arguments) {
    const std::string key = arguments.substr(0, arguments.find(' '));
    const int number = key.size() == 3 && key[0] == 'f' ? std::atoi(key.c_str() + 1) : 0;
    if (number < 1 || number > alias_keys || key[1] < '0' || key[1] > '9' || key[2] < '0' || key[2] > '9') {
        send_text("Aliases are f01 to f12: alias f01 <command>.\r\n");
        prompt();
        return;
    }
    const size_t blank = arguments.find(' ');
    std::string command = blank == std::string::npos ? "" : arguments.substr(blank + 1);
    command.erase(0, command.find_first_not_of(' '));
    aliases[number - 1] = sanitize_player_text(command);
    output += tag("bf" + std::to_string(number), aliases[number - 1]);
    send_text(command.empty() ? "Alias " + key + " removed.\r\n" : "Alias " + key + " set.\r\n");
    prompt();
}

bool session::run_alias(const std::string& word, const std::string& arguments) {
    if (word.size() != 3 || word[0] != 'f' || !arguments.empty() || running_alias) return false;
    if (word[1] < '0' || word[1] > '9' || word[2] < '0' || word[2] > '9') return false;
    const int number = std::atoi(word.c_str() + 1);
    if (number < 1 || number > alias_keys) return false;
    if (aliases[number - 1].empty()) {
        send_text("Alias " + word + " is not defined.\r\n");
        prompt();
        return true;
    }
    // An alias never runs another one, so "alias f01 f01" ends.
    running_alias = true;
    handle_line(aliases[number - 1]);
    running_alias = false;
    return true;
}

void session::command_recruit(const std::string& /*arguments*/) {
    if (followers.size() >= std::size(recruit_table)) {
        send_text("Nobody else wants to join you.\r\n");
        prompt();
        return;
    }
    const recruit_row& row = recruit_table[followers.size()];
    followers.push_back({row.name, row.marker, row.max_hp, row.max_hp, row.max_mana / 2, row.max_mana, row.max_move,
                         row.max_move});
    send_group();
    send_text(std::string(row.name) + " joins your group.\r\n");
    prompt();
}

void session::command_dismiss(const std::string& /*arguments*/) {
    if (followers.empty()) {
        send_text("You have no followers.\r\n");
    } else {
        followers.clear();
        output += tag("group", "");
        send_text("Your followers go their own way.\r\n");
    }
    prompt();
}

// The player's own full row first, then the followers by their markers.
void session::send_group() {
    if (followers.empty()) return;
    std::string block = line_of_numbers(hp, max_hp, mana, max_mana, move, max_move) + " " + name + "\n";
    for (const follower& f : followers)
        block += line_of_numbers(f.hp, f.max_hp, f.mana, f.max_mana, f.move, f.max_move) + " " + f.marker + " " +
                 f.name + "\n";
    output += tag("group", block);
}

void session::hurt_followers() {
    for (follower& f : followers) {
        for (const recruit_row& row : recruit_table)
            if (f.name == row.name) f.hp = std::max(f.hp - row.blow, 1);
    }
    send_group();
}

}  // namespace testworld
