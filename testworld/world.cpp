#include "testworld/world.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstdlib>

#include "testworld/map_area.h"
#include "testworld/wire.h"

namespace testworld {

namespace {

constexpr const char* name_prompt = "By what name are you known? ";
constexpr const char* password_prompt = "Password: ";
constexpr size_t name_minimum = 2;
constexpr size_t name_maximum = 15;

// The popup windows of every login: name, title, size in characters, the command the client sends
// when the window is opened, flags. window_create takes them as five lines.
struct popup_row {
    const char* name;
    const char* title;
    const char* size;
    const char* command;
    const char* flags;
};
const popup_row popup_table[] = {
    {"Inventory", "What you carry", "40 10", "inventory", ""},
    {"Score", "Your score", "50 8", "score", "nowrap noscroll"},
    {"Spells", "Your spells", "30 12", "spells", "menuonly"},
    {"Log", "Your log", "50 12", "", "noscroll"},
};

constexpr const char* world_version = "0.3";

// The bot on the chat channels: it answers every channel message, on both channels.
constexpr const char* bot_name = "Wren";
// Most windows a "popups" command defines.
constexpr int popups_limit = 40;

// Without arguments, "flash" fades the text background from black to a dark red in 4 ticks and back
// in 30: the payload is the start colour, then pairs of colour and ticks.
constexpr const char* default_flash = "000000 B00000 4 000000 30";
constexpr const char* default_config = "automap flash";

// The grid, row by row from the north; y grows to the south. The sky: "110" outdoors and clear,
// "111" outdoors and overcast, "010" indoors with a view of the sky, "000" no sky at all.
const room room_table[] = {
    {"Old Watchtower", "A ruined tower leans over the north-west corner of the village; the sky shows through its "
                       "broken roof.", 0, 0, "010", 4},
    {"North Road", "The road runs north out of the village between two stone walls.", 1, 0, "110", 2},
    {"Orchard", "Apple trees stand in crooked rows, heavy with fruit.", 2, 0, "110", 3},
    {"Smithy", "Heat rolls from the forge; a hammer rings somewhere behind it.", 0, 1, "000", 1},
    {"Village Square", "Lanterns hang on ropes across the square around an old well.", 1, 1, "110", 1},
    {"Market Row", "Empty stalls line the street under a low grey sky.", 2, 1, "111", 1},
    {"Mill Pond", "Reeds grow thick around a still pond by the silent mill.", 0, 2, "110", 5},
    {"South Gate", "A wooden gate closes the village to the south.", 1, 2, "110", 2},
    {"Chapel Garden", "Moss covers the stones of a small walled garden; clouds hang over it.", 2, 2, "111", 3},
    {"Watchtower Top", "Wind tugs at you on the broken battlements high above the village.", 0, 0, "110", 4, 1},
};

// The zone of each level, sent as the area name.
const char* const zone_names[] = {"Ember Vale", "Watchtower Heights"};

constexpr const char* dummy_name = "the training dummy";
constexpr int dummy_blow = 20;     // percent of the dummy's health each round
constexpr int dummy_damage = 2;    // hit points it takes from the player each round
constexpr int kill_experience = 150;
// A second, smaller experience value, drawn over the first in the client's bar.
constexpr int bonus_experience = 120;

const std::vector<direction> direction_table = {
    {"north", "n", 0, -1, 1, 0, 0, 'A'},
    {"east", "e", 1, 0, 4, 0, 1, 'B'},
    {"south", "s", 0, 1, 16, 0, 2, 'C'},
    {"west", "w", -1, 0, 64, 0, 3, 'D'},
    {"northeast", "ne", 1, -1, 2, 0, 4, 'E'},
    {"southeast", "se", 1, 1, 8, 0, 5, 'F'},
    {"southwest", "sw", -1, 1, 32, 0, 6, 'G'},
    {"northwest", "nw", -1, -1, 128, 0, 7, 'H'},
    {"up", "u", 0, 0, 256, 1, -1, '@'},
    {"down", "d", 0, 0, 512, -1, -1, '@'},
};

std::string trim(const std::string& text) {
    const size_t first = text.find_first_not_of(" \t");
    if (first == std::string::npos) return "";
    const size_t last = text.find_last_not_of(" \t");
    return text.substr(first, last - first + 1);
}

std::string lower(std::string text) {
    for (char& c : text) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return text;
}

bool starts_with(const std::string& text, const char* prefix) { return text.rfind(prefix, 0) == 0; }

std::string join(const std::vector<std::string>& words, const char* separator) {
    std::string out;
    for (size_t i = 0; i < words.size(); i++) {
        if (i) out += separator;
        out += words[i];
    }
    return out;
}

struct command_row {
    const char* word;
    const char* short_word;
    void (session::*handler)(const std::string& arguments);
};

// Commands of a logged-in player. The compass directions are matched before this table.
const command_row command_table[] = {
    {"look", "l", &session::command_look},
    {"say", "'", &session::command_say},
    {"who", nullptr, &session::command_who},
    {"quit", nullptr, &session::command_quit},
    {"help", nullptr, &session::command_help},
    {"inventory", "i", &session::command_inventory},
    {"note", nullptr, &session::command_note},
    {"popup", nullptr, &session::command_popup},
    {"flash", nullptr, &session::command_flash},
    {"config", nullptr, &session::command_config},
    {"score", nullptr, &session::command_score},
    {"spells", nullptr, &session::command_spells},
    {"gossip", nullptr, &session::command_gossip},
    {"ooc", nullptr, &session::command_ooc},
    {"popups", nullptr, &session::command_popups},
    {"recall", nullptr, &session::command_recall},
    {"version", nullptr, &session::command_version},
    {"kill", "k", &session::command_kill},
    {"time", nullptr, &session::command_time},
    {"sleep", nullptr, &session::command_sleep},
    {"wake", nullptr, &session::command_wake},
    {"wield", nullptr, &session::command_wield},
    {"remove", nullptr, &session::command_remove},
    {"exits", nullptr, &session::command_exits},
    {"list", nullptr, &session::command_list},
    {"buy", nullptr, &session::command_buy},
    {"alias", nullptr, &session::command_alias},
    {"recruit", nullptr, &session::command_recruit},
    {"dismiss", nullptr, &session::command_dismiss},
};

// The client's direction buttons send these words for the diagonals.
const struct {
    const char* button_word;
    const char* word;
} button_words[] = {{"nwest", "northwest"}, {"neast", "northeast"}, {"swest", "southwest"}, {"seast", "southeast"}};

std::string window_create(const popup_row& row) {
    return tag("window_create", std::string(row.name) + "\n" + row.title + "\n" + row.size + "\n" + row.command +
                                    "\n" + row.flags + "\n");
}

// A line of chat: between the channel's divert tag and the end of the diversion.
std::string channel_line(const char* channel, const std::string& speaker, const std::string& text) {
    return tag("chdiv", channel) + "[" + channel + "] " + colored(speaker, sgr_cyan, true) + ": " + text + "\r\n" +
           single_tag("chudiv");
}

// Text for a popup window: between the divert (or append) tag and its end tag.
std::string diverted(const char* start, const char* end, const std::string& window, const std::string& text) {
    return tag(start, window) + text + single_tag(end);
}

}  // namespace

const std::vector<direction>& directions() { return direction_table; }

std::string clock_text(int minute) {
    const int hour = minute / 60 % 24;
    const int twelve = hour % 12 == 0 ? 12 : hour % 12;
    char text[16];
    std::snprintf(text, sizeof text, "%d:%02d %s", twelve, minute % 60, hour < 12 ? "am" : "pm");
    return text;
}

std::string exits_code(int mask) {
    std::string code;
    code += static_cast<char>('A' + ((mask >> 5) & 31));
    code += static_cast<char>('A' + (mask & 31));
    return code;
}

world::world() : grid_width(3), grid_height(3), rooms(std::begin(room_table), std::end(room_table)) {}

const room* world::room_at(int x, int y, int level) const {
    for (const room& r : rooms)
        if (r.x == x && r.y == y && r.level == level) return &r;
    return nullptr;
}

const room& world::start_room() const { return *room_at(1, 1); }

int world::exits_mask(const room& where) const {
    int mask = 0;
    for (const direction& way : direction_table)
        if (room_at(where.x + way.dx, where.y + way.dy, where.level + way.dz)) mask |= way.exit_bit;
    return mask;
}

void world::enter(int id, const std::string& name, const room* where, deliver_function deliver) {
    std::lock_guard<std::mutex> lock(mutex);
    players.push_back({id, name, where, std::move(deliver)});
}

void world::leave(int id) {
    std::lock_guard<std::mutex> lock(mutex);
    players.erase(std::remove_if(players.begin(), players.end(), [id](const player& p) { return p.id == id; }),
                  players.end());
}

void world::move(int id, const room* where) {
    std::lock_guard<std::mutex> lock(mutex);
    for (player& p : players)
        if (p.id == id) p.where = where;
}

std::vector<std::string> world::player_names() const {
    std::lock_guard<std::mutex> lock(mutex);
    std::vector<std::string> names;
    for (const player& p : players) names.push_back(p.name);
    return names;
}

std::vector<std::string> world::names_in_room(const room* where, int except_id) const {
    std::lock_guard<std::mutex> lock(mutex);
    std::vector<std::string> names;
    for (const player& p : players)
        if (p.where == where && p.id != except_id) names.push_back(p.name);
    return names;
}

void world::tell_all(int except_id, const std::string& bytes) const {
    std::lock_guard<std::mutex> lock(mutex);
    for (const player& p : players)
        if (p.id != except_id) p.deliver(bytes);
}

void world::tell_room(const room* where, int except_id, const std::string& bytes) const {
    std::lock_guard<std::mutex> lock(mutex);
    for (const player& p : players)
        if (p.where == where && p.id != except_id && p.deliver) p.deliver(bytes);
}

session::session(world* shared_world, int id, world::deliver_function deliver_bytes)
    : game(shared_world), session_id(id), deliver(std::move(deliver_bytes)) {}

session::~session() {
    if (stage == stage_playing) game->leave(session_id);
}

void session::start() {
    output += "\r\n" + colored("Ember Vale", sgr_yellow, true) + " " + colored("test world", sgr_cyan) + "\r\n";
    output += "A small world for trying the client. Type 'help' once you are in.\r\n\r\n";
    output += name_prompt;
}

std::string session::take_output() {
    std::string taken;
    taken.swap(output);
    return taken;
}

void session::send_text(const std::string& text) { output += escape_text(text); }

// Every prompt carries the character's numbers, as the game does.
void session::prompt() {
    output += tag("hp", std::to_string(hp) + " " + std::to_string(max_hp) + " " + std::to_string(mana) + " " +
                            std::to_string(max_mana) + " " + std::to_string(move) + " " + std::to_string(max_move));
    output += "\r\n> ";
}

void session::handle_line(const std::string& raw_line) {
    std::string line = raw_line;
    if (!line.empty() && line.back() == '\r') line.pop_back();
    if (handle_client_line(line)) return;
    // The client echoes a typed line without ending it: each answer starts a line of its own. A
    // password is not echoed, and its answer ends the prompt's line itself.
    if (stage == stage_name || stage == stage_playing) output += "\r\n";
    switch (stage) {
    case stage_name: handle_name(line); break;
    case stage_password: handle_password(line); break;
    case stage_playing: handle_command(line); break;
    case stage_done: break;
    }
}

// Lines that the client sends by itself, at any stage: never answered as commands.
bool session::handle_client_line(const std::string& line) {
    if (starts_with(line, "_lantern ")) {
        identification = line;
        return true;
    }
    if (line == "lnping") {
        output += tag("event", "lnpong");
        return true;
    }
    if (starts_with(line, "lnlwindow open ")) {
        window_opened(line.substr(std::string("lnlwindow open ").size()));
        return true;
    }
    return starts_with(line, "lnlstatus ") || starts_with(line, "lnlwindow ");
}

// An opened window is filled at once; the others wait for their commands.
void session::window_opened(const std::string& window) {
    if (stage != stage_playing) return;
    if (window == "Inventory") output += diverted("divert", "undivert", "Inventory", inventory_text());
    else if (window == "Score") output += diverted("divert", "undivert", "Score", score_text());
    else if (window == "Spells") output += diverted("divert", "undivert", "Spells", spells_text());
}

void session::handle_name(const std::string& line) {
    const std::string candidate = trim(line);
    const bool letters_only = std::all_of(candidate.begin(), candidate.end(),
                                          [](char c) { return std::isalpha(static_cast<unsigned char>(c)); });
    if (!letters_only || candidate.size() < name_minimum || candidate.size() > name_maximum) {
        send_text("Names are 2 to 15 letters, nothing else.\r\n");
        output += name_prompt;
        return;
    }
    name = lower(candidate);
    name[0] = static_cast<char>(std::toupper(static_cast<unsigned char>(name[0])));
    stage = stage_password;
    output += password_prompt;
    output += password_mode_on();
}

void session::handle_password(const std::string& line) {
    if (trim(line).empty()) {
        send_text("A password, please.\r\n");
        output += password_prompt;
        return;
    }
    output += password_mode_off();
    output += "\r\n";
    stage = stage_playing;
    where = &game->start_room();
    game->enter(session_id, name, where, deliver);
    output += tag("login", name);
    for (const popup_row& row : popup_table) output += window_create(row);
    send_icons();
    output += tag("xpp", std::to_string(experience));
    output += "Welcome, " + colored(name, sgr_yellow, true) + ".\r\n\r\n";
    game->tell_room(where, session_id, "\r\n" + escape_text(name) + " arrives.\r\n");
    command_look("");
}

void session::handle_command(const std::string& line) {
    const std::string text = trim(line);
    if (text.empty()) {
        prompt();
        return;
    }
    // "'" says the rest, with or without a blank after it.
    if (text[0] == '\'') {
        command_say(trim(text.substr(1)));
        return;
    }
    const size_t blank = text.find_first_of(" \t");
    std::string word = lower(text.substr(0, blank));
    const std::string arguments = blank == std::string::npos ? "" : trim(text.substr(blank));
    if (run_alias(word, arguments)) return;
    for (const auto& button : button_words)
        if (word == button.button_word) word = button.word;
    for (const direction& way : direction_table) {
        if (word == way.name || word == way.short_name) {
            walk(way);
            return;
        }
    }
    for (const command_row& row : command_table) {
        if (word == row.word || (row.short_word && word == row.short_word)) {
            (this->*row.handler)(arguments);
            return;
        }
    }
    send_text("Huh? Type 'help' for the commands.\r\n");
    prompt();
}

void session::command_look(const std::string& /*arguments*/) { describe('@', 0); }

void session::describe(char map_direction, char trailer) {
    const int mask = game->exits_mask(*where);
    output += exits_tag(!asleep);
    output += tag("areaname", zone_names[where->level]);
    const int map_x = where->level == 0 ? where->x + map_village_offset : 0;
    const int map_y = where->level == 0 ? where->y + map_village_offset : 0;
    output += tag("map", map_block(map_x, map_y, where->level, map_direction, trailer));
    send_hint_buttons();
    send_sky(game_clock::now());
    output += colored(where->name, sgr_white, true) + "\r\n";
    send_text(std::string(where->description) + "\r\n");
    std::vector<std::string> exits;
    for (const direction& way : direction_table)
        if (mask & way.exit_bit) exits.push_back(way.name);
    output += colored("Exits: " + join(exits, ", ") + ".", sgr_green) + "\r\n";
    const std::vector<std::string> others = game->names_in_room(where, session_id);
    if (!others.empty()) send_text("Also here: " + join(others, ", ") + ".\r\n");
    prompt();
}

void session::walk(const direction& way) {
    const room* target = game->room_at(where->x + way.dx, where->y + way.dy, where->level + way.dz);
    if (!target) {
        if (way.number >= 0) output += tag("walkfail", std::to_string(way.number));
        send_text("You cannot go that way.\r\n");
        prompt();
        return;
    }
    if (asleep) {
        send_text("You are asleep.\r\n");
        prompt();
        return;
    }
    game->tell_room(where, session_id, "\r\n" + escape_text(name) + " leaves " + way.name + ".\r\n");
    if (move > 0) move--;
    // A step, and a door where the way leads in or out of a building.
    output += tag("sound", "move/step");
    if (where->sky[0] != target->sky[0]) output += tag("sound", "move/door");
    where = target;
    game->move(session_id, where);
    game->tell_room(where, session_id, "\r\n" + escape_text(name) + " arrives.\r\n");
    output += single_tag("bclear");
    // Up grows the level picture, down shrinks it; neither slides.
    describe(way.map_direction, way.dz > 0 ? 'A' : way.dz < 0 ? 'B' : 0);
}

void session::command_say(const std::string& arguments) {
    if (arguments.empty()) {
        send_text("Say what?\r\n");
        prompt();
        return;
    }
    const std::string said = sanitize_player_text(arguments);
    output += "You say '" + colored(said, sgr_cyan) + "'\r\n";
    game->tell_room(where, session_id, "\r\n" + escape_text(name) + " says '" + colored(said, sgr_cyan) + "'\r\n");
    prompt();
}

void session::command_who(const std::string& /*arguments*/) {
    const std::vector<std::string> names = game->player_names();
    output += colored("Players in the test world:", sgr_magenta, true) + "\r\n";
    for (const std::string& player : names) send_text("  " + player + "\r\n");
    send_text(std::to_string(names.size()) + (names.size() == 1 ? " player.\r\n" : " players.\r\n"));
    prompt();
}

// "quit -check" only warns, as the client asks before it closes; "quit" and "quit -f" end the session.
void session::command_quit(const std::string& arguments) {
    if (lower(arguments) == "-check") {
        send_text(colored("Warning:", sgr_red, true) + " you are about to leave the game. Type 'quit' to go.\r\n");
        prompt();
        return;
    }
    output += tag("event", "logoff");
    send_text("Goodbye.\r\n");
    game->tell_room(where, session_id, "\r\n" + escape_text(name) + " leaves the world.\r\n");
    game->leave(session_id);
    stage = stage_done;
}

void session::command_recall(const std::string& /*arguments*/) {
    if (where != &game->start_room()) {
        game->tell_room(where, session_id, "\r\n" + escape_text(name) + " vanishes.\r\n");
        where = &game->start_room();
        game->move(session_id, where);
    }
    send_text("You pray, and the world folds you back to the village square.\r\n");
    command_look("");
}

void session::command_version(const std::string& /*arguments*/) {
    send_text(std::string("Ember Vale test world, version ") + world_version + ".\r\n");
    prompt();
}

void session::command_help(const std::string& arguments) {
    if (lower(arguments) == "me") {
        send_text("More commands: recall brings you back to the square, version shows the world's version, "
                  "quit -check warns before you quit, quit -f quits at once.\r\n");
        prompt();
        return;
    }
    send_text("Commands: north (n), east (e), south (s), west (w), northeast (ne) and the other diagonals, "
              "up (u) and down (d) at the watchtower, look (l), say <text> (' <text>), who, "
              "quit.\r\n");
    send_text("Client tests: inventory (i), score and spells fill popup windows, note <text> adds to the log "
              "window, popup <name> writes into any window, popups <n> defines n more windows, gossip <text> and "
              "ooc <text> talk on the channels, flash [colours] flashes the text, config [words] switches a panel "
              "(default: automap flash), kill (k) fights the training dummy, time <minute> sets the clock, sleep, "
              "wake, wield, remove, exits, list and buy (in the Smithy), alias f01 <command> binds a function "
              "key, recruit brings followers into your group, dismiss sends them away.\r\n");
    prompt();
}

std::string session::inventory_text() const {
    std::string contents = colored("You are carrying:", sgr_white, true) + "\r\n";
    contents += "  a brass lantern (lit)\r\n";
    contents += "  a loaf of bread\r\n";
    contents += "  " + colored("12 gold coins", sgr_yellow) + "\r\n";
    return contents;
}

// A line wider than the window, for a window that doesn't wrap.
std::string session::score_text() const {
    return colored(name + " of Ember Vale", sgr_white, true) + "\r\n" +
           "Level 3   Hit points 120/150   Gold 12   Quests done: the lost lantern, the mill wheel, the chapel bell\r\n";
}

std::string session::spells_text() const {
    return colored("Spells you know:", sgr_white, true) + "\r\n  light\r\n  mend\r\n  " +
           colored("spark", sgr_red) + "\r\n";
}

void session::command_score(const std::string& /*arguments*/) {
    output += diverted("divert", "undivert", "Score", score_text());
    prompt();
}

void session::command_spells(const std::string& /*arguments*/) {
    output += diverted("divert", "undivert", "Spells", spells_text());
    prompt();
}

void session::command_gossip(const std::string& arguments) { channel_message("gossip", arguments); }
void session::command_ooc(const std::string& arguments) { channel_message("ooc", arguments); }

// Everyone hears a channel, the speaker too; the bot then answers on both channels.
void session::channel_message(const char* channel, const std::string& arguments) {
    if (arguments.empty()) {
        send_text(std::string("Say what on ") + channel + "?\r\n");
        prompt();
        return;
    }
    const std::string said = channel_line(channel, name, escape_text(sanitize_player_text(arguments)));
    const std::string answer = channel_line("gossip", bot_name, "Well met, " + escape_text(name) + ".") +
                               channel_line("ooc", bot_name, "(the bot is listening on both channels)");
    output += said + answer;
    game->tell_all(session_id, "\r\n" + said + answer);
    prompt();
}

// "popups N": N more windows, "Window 1" to "Window N", to try the client's limits.
void session::command_popups(const std::string& arguments) {
    const int count = std::max(0, std::min(std::atoi(arguments.c_str()), popups_limit));
    for (int i = 1; i <= count; i++) {
        const std::string number = std::to_string(i);
        const std::string window = "Window " + number;
        output += tag("window_create", window + "\nNumbered window " + number + "\n20 4\n\n\n");
    }
    send_text(std::to_string(count) + " windows defined.\r\n");
    prompt();
}

void session::command_inventory(const std::string& /*arguments*/) {
    output += diverted("divert", "undivert", "Inventory", inventory_text());
    send_text("You look through your pack.\r\n");
    prompt();
}

void session::command_note(const std::string& arguments) {
    if (arguments.empty()) {
        send_text("Write what?\r\n");
        prompt();
        return;
    }
    output += diverted("append", "unappend", "Log", escape_text(sanitize_player_text(arguments)) + "\r\n");
    send_text("You write it down in your log.\r\n");
    prompt();
}

void session::command_popup(const std::string& arguments) {
    if (arguments.empty()) {
        send_text("Which window?\r\n");
        prompt();
        return;
    }
    // Any name, also one the client has no window for: it then says so in the main text.
    const std::string window = sanitize_player_text(arguments);
    output += diverted("divert", "undivert", window, "This text was written for the window " + escape_text(window) + ".\r\n");
    prompt();
}

void session::command_flash(const std::string& arguments) {
    // The arguments go out as they are, so a test can send a payload the client must refuse.
    const std::string colours = arguments.empty() ? default_flash : sanitize_player_text(arguments);
    output += tag("event", "colorflash " + colours);
    send_text("Lightning splits the sky!\r\n");
    prompt();
}

void session::command_config(const std::string& arguments) {
    output += tag("config", arguments.empty() ? default_config : sanitize_player_text(arguments));
    prompt();
}

void session::command_kill(const std::string& /*arguments*/) {
    if (fighting()) {
        send_text("You are already fighting!\r\n");
    } else if (asleep) {
        send_text("You dream of battle.\r\n");
    } else {
        dummy_health = 100;
        next_round = game_clock::now() + round_interval;
        output += single_tag("combat");
        output += tag("enemyhp", "100 " + std::string(dummy_name));
        send_text("You attack " + std::string(dummy_name) + "!\r\n");
    }
    prompt();
}

void session::fight_round() {
    dummy_health -= dummy_blow;
    hp = hp > dummy_damage ? hp - dummy_damage : 1;
    output += "\r\n";
    hurt_followers();
    if (dummy_health > 0) {
        output += tag("sound", "combat/blow");
        output += tag("enemyhp", std::to_string(dummy_health) + " " + dummy_name);
        send_text("You hit " + std::string(dummy_name) + ". It creaks and swings back at you.\r\n");
    } else {
        dummy_health = 0;
        experience = std::min(experience + kill_experience, 1000);
        output += tag("sound", "combat/dummy_falls");
        output += single_tag("ncombat");
        output += tag("xpp", std::to_string(experience) + " " + std::to_string(bonus_experience));
        send_text("The training dummy falls apart! You feel more experienced.\r\n");
    }
    prompt();
}

void session::command_time(const std::string& arguments) {
    char* end = nullptr;
    const long minute = std::strtol(arguments.c_str(), &end, 10);
    if (arguments.empty() || *end || minute < 0 || minute >= 1440) {
        send_text("The time of day runs from minute 0 to 1439.\r\n");
        prompt();
        return;
    }
    const game_clock::time_point now = game_clock::now();
    clock_minute = static_cast<int>(minute);
    clock_start = now;
    send_sky(now);
    send_text("The time is now " + clock_text(clock_minute) + ".\r\n");
    prompt();
}

void session::command_sleep(const std::string& /*arguments*/) {
    if (asleep) {
        send_text("You are already asleep.\r\n");
    } else {
        asleep = true;
        send_icons();
        output += exits_tag(false);
        send_text("You lie down and fall asleep.\r\n");
    }
    prompt();
}

void session::command_wake(const std::string& /*arguments*/) {
    if (!asleep) {
        send_text("You are already awake.\r\n");
    } else {
        asleep = false;
        send_icons();
        output += exits_tag(true);
        send_text("You wake and stand up.\r\n");
    }
    prompt();
}

void session::command_wield(const std::string& /*arguments*/) {
    if (wielding) {
        send_text("You already wield a wooden sword.\r\n");
    } else {
        wielding = true;
        send_icons();
        send_text("You wield a wooden sword.\r\n");
    }
    prompt();
}

void session::command_remove(const std::string& /*arguments*/) {
    if (!wielding) {
        send_text("You are not wielding anything.\r\n");
    } else {
        wielding = false;
        send_icons();
        send_text("You stop wielding the wooden sword.\r\n");
    }
    prompt();
}

// Icon 0: not wielding anything; icon 1: asleep.
void session::send_icons() {
    std::string icons = "00000";
    icons[0] = wielding ? '0' : '1';
    icons[1] = asleep ? '1' : '0';
    output += tag("icons", icons);
}

int session::minute_at(game_clock::time_point now) const {
    const long long seconds = std::chrono::duration_cast<std::chrono::seconds>(now - clock_start).count();
    return static_cast<int>((clock_minute + seconds % 1440 + 1440) % 1440);
}

std::string session::sky_state(game_clock::time_point now) const {
    if (!where) return "";
    const int minute = minute_at(now);
    return std::string(where->sky) + " " + std::to_string(where->terrain) + " " + std::to_string(minute) + " " +
           clock_text(minute);
}

void session::send_sky(game_clock::time_point now) {
    if (!where) return;
    output += tag("skystate", sky_state(now));
    hour_sent = minute_at(now) / 60;
}

void session::tick(game_clock::time_point now) {
    if (stage != stage_playing) return;
    if (fighting() && now >= next_round) {
        next_round = now + round_interval;
        fight_round();
    }
    if (minute_at(now) / 60 != hour_sent) send_sky(now);
}

}  // namespace testworld
