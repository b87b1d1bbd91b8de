#pragma once
// The test world's game: a few rooms on a grid, the players in them, and one session per
// connection that takes the client's lines and produces the bytes to send back. Sessions know no
// transport; a connection feeds them lines and sends what they produce, and text from other
// players arrives through each session's deliver function.
//
// Adding a feature (maps, groups, channels) means a row in the command table of world.cpp and,
// where it needs shared state, a member of world behind its mutex.
//
// Two popup windows are defined at each login: "Inventory", filled by diverting ("inventory", also
// the window's own command), and "Journal", added to by appending ("note TEXT").

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
    int level = 0;  // 1: above the village, reached by "up" from the watchtower
};

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
    void walk(const direction& way);
    // The room's exits, area and map block, then its description.
    void describe(char map_direction, char trailer);

private:
    enum session_stage { stage_name, stage_password, stage_playing, stage_done };

    bool handle_client_line(const std::string& line);
    void handle_name(const std::string& line);
    void handle_password(const std::string& line);
    void handle_command(const std::string& line);
    void prompt();
    void send_text(const std::string& text);

    world* game;
    int session_id;
    world::deliver_function deliver;
    session_stage stage = stage_name;
    std::string name;
    std::string identification;
    const room* where = nullptr;
    std::string output;
};

}  // namespace testworld
