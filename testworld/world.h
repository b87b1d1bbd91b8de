#pragma once
// The test world's game: a few rooms on a grid, the players in them, and one session per
// connection that takes the client's lines and produces the bytes to send back. Sessions know no
// transport; a connection feeds them lines and sends what they produce, and text from other
// players arrives through each session's deliver function.
//
// Adding a feature (maps, groups, channels) means a row in the command table of world.cpp and,
// where it needs shared state, a member of world behind its mutex.
//
// Four popup windows are defined at each login: "Inventory", "Score" (no wrap, no scrollbar) and
// "Spells" (menu only), each filled by diverting when the client opens it and by its own command, and
// "Log", added to by appending ("note TEXT"). "gossip" and "ooc" are chat channels, with a bot that
// answers on both.
//
// The hint buttons follow the room ("b1" Look, "b2" Exits, and in the Smithy, a shop, "b5" and
// "b6"; "bclear" on leaving). "alias f01 COMMAND" binds a function key, answered with "bf1";
// "recruit" brings followers into the player's group, shown by "group" blocks.
//
// Each session keeps a game clock that runs one game minute per real second ("time N" sets it)
// and a training dummy to fight ("kill"): the fight's rounds and the clock's hours arrive through
// tick(), which the connection calls whenever it has nothing to read.

#include <chrono>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

namespace testworld {

struct room {
    const char* name;
    const char* description;
    int x;
    int y;
    // The first field of "skystate": outdoors, sky visible, overcast.
    const char* sky;
    int terrain;
    int level = 0;  // 1: above the village, reached by "up" from the watchtower
};

using game_clock = std::chrono::steady_clock;

// The minute of the day as the game clock shows it: "%d:%02d am" or "pm", 12 for hour 0.
std::string clock_text(int minute);

// Offsets of the compass directions a player can walk.
struct direction {
    const char* name;
    const char* short_name;
    int dx;
    int dy;
    int exit_bit;  // the bit of the client's exits mask
    int dz = 0;    // up 1, down -1
    int number = -1;         // the "walkfail" direction number, -1 for up and down
    char map_direction = '@';  // the map block's direction byte
};

const std::vector<direction>& directions();

// Two letters of the "dirs" tag: "A" + (mask >> 5), "A" + (mask & 31).
std::string exits_code(int mask);

class world {
public:
    using deliver_function = std::function<void(const std::string& bytes)>;

    world();

    int width() const { return grid_width; }
    int height() const { return grid_height; }
    const room* room_at(int x, int y, int level = 0) const;
    const room& start_room() const;
    int exits_mask(const room& where) const;

    // The players' registry; safe from any thread. A player is known from login to leave.
    void enter(int id, const std::string& name, const room* where, deliver_function deliver);
    void leave(int id);
    void move(int id, const room* where);
    std::vector<std::string> player_names() const;
    std::vector<std::string> names_in_room(const room* where, int except_id) const;
    // Sends bytes to every player but one.
    void tell_all(int except_id, const std::string& bytes) const;
    // Sends bytes to every player in the room but one.
    void tell_room(const room* where, int except_id, const std::string& bytes) const;

private:
    struct player {
        int id;
        std::string name;
        const room* where;
        deliver_function deliver;
    };

    int grid_width;
    int grid_height;
    std::vector<room> rooms;
    mutable std::mutex mutex;
    std::vector<player> players;
};

class session {
public:
    session(world* shared_world, int id, world::deliver_function deliver);
    ~session();
    session(const session&) = delete;
    session& operator=(const session&) = delete;

    // The banner and the name prompt.
    void start();
    void handle_line(const std::string& line);
    // Bytes to send now; empties the buffer.
    std::string take_output();
    // After "quit": the connection closes once the output is sent.
    bool finished() const { return stage == stage_done; }

    const std::string& player_name() const { return name; }
    // "_lantern <uuid> <version>" as the client sent it, or empty.
    const std::string& client_identification() const { return identification; }
    const room* location() const { return where; }

    // The command table's handlers.
    void command_look(const std::string& arguments);
    void command_say(const std::string& arguments);
    void command_who(const std::string& arguments);
    void command_quit(const std::string& arguments);
    void command_help(const std::string& arguments);
    void command_inventory(const std::string& arguments);
    void command_note(const std::string& arguments);
    void command_popup(const std::string& arguments);
    void command_flash(const std::string& arguments);
    void command_config(const std::string& arguments);
    void command_score(const std::string& arguments);
    void command_spells(const std::string& arguments);
    void command_gossip(const std::string& arguments);
    void command_ooc(const std::string& arguments);
    void command_popups(const std::string& arguments);
    void command_recall(const std::string& arguments);
    void command_version(const std::string& arguments);
    void command_kill(const std::string& arguments);
    void command_time(const std::string& arguments);
    void command_sleep(const std::string& arguments);
    void command_wake(const std::string& arguments);
    void command_wield(const std::string& arguments);
    void command_remove(const std::string& arguments);
    void command_exits(const std::string& arguments);
    void command_list(const std::string& arguments);
    void command_buy(const std::string& arguments);
    void command_alias(const std::string& arguments);
    void command_recruit(const std::string& arguments);
    void command_dismiss(const std::string& arguments);
    void walk(const direction& way);
    // The room's exits, area and map block, then its description.
    void describe(char map_direction, char trailer);

    // Time passes: a fight round every round_interval, a "skystate" at each new game hour.
    void tick(game_clock::time_point now);
    // The game clock's minute of the day at that time.
    int minute_at(game_clock::time_point now) const;
    // Only while playing: the room's sky and the time, as "skystate" carries them.
    std::string sky_state(game_clock::time_point now) const;
    bool fighting() const { return dummy_health > 0; }
    static constexpr std::chrono::milliseconds round_interval{400};

private:
    enum session_stage { stage_name, stage_password, stage_playing, stage_done };

    bool handle_client_line(const std::string& line);
    void handle_name(const std::string& line);
    void handle_password(const std::string& line);
    void handle_command(const std::string& line);
    void prompt();
    void window_opened(const std::string& window);
    void channel_message(const char* channel, const std::string& arguments);
    std::string inventory_text() const;
    std::string score_text() const;
    std::string spells_text() const;
    void send_text(const std::string& text);

    // world_buttons.cpp: hints, function keys and the group.
    void send_hint_buttons();
    std::string exits_tag(bool on) const;
    // A line "f01" to "f12" runs its alias; false for any other word.
    bool run_alias(const std::string& word, const std::string& arguments);
    void send_group();
    void hurt_followers();

    void send_sky(game_clock::time_point now);
    void send_icons();
    void fight_round();

    world* game;
    int session_id;
    world::deliver_function deliver;
    session_stage stage = stage_name;
    std::string name;
    std::string identification;
    const room* where = nullptr;
    std::string output;
    // The character's numbers, sent in "hp" with every prompt.
    int hp = 142, max_hp = 150, mana = 87, max_mana = 120, move = 110, max_move = 110;
    int experience = 300;  // tenths of a percent towards the next level
    bool wielding = false;
    bool asleep = false;
    int dummy_health = 0;  // percent; 0: no fight
    game_clock::time_point next_round;
    // The clock stood at clock_minute at clock_start.
    int clock_minute = 600;
    game_clock::time_point clock_start = game_clock::now();
    int hour_sent = -1;

    struct follower {
        const char* name;
        char marker;  // '.' a compact row, '-' one behind the divider
        int hp, max_hp, mana, max_mana, move, max_move;
    };
    std::vector<follower> followers;
    static constexpr int alias_keys = 12;
    std::string aliases[alias_keys];
    bool running_alias = false;
    bool has_lamp = false;
};

}  // namespace testworld
