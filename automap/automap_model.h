#pragma once
// The automap's grid and everything that changes it: the decoder of the server's map blocks, the
// queue of blocks that arrive while a slide runs, the slide's pacing and the bump at a wall.
// No window here: the owner draws the picture when told (render_map) and repaints on mark_repaint.
//
// Grid: 23 columns by 23 rows, column 0 west, row 0 north. Odd column and odd row: a room (exists
// when seed isn't 0; (11,11) is the player's). Odd column, even row: the edge between the rooms
// north and south. Even column, odd row: the edge between west and east. Even and even: a node,
// its edge holding the diagonal NW-SE in bits 0-5 and NE-SW in bits 16-21.
//
// Allocation: a queued block is one node from the heap; when that fails the block is dropped with
// a log line. Decoding itself allocates nothing.

constexpr int automap_grid_size = 23;
constexpr int automap_player_cell = 11;
// A queued block keeps at most this many bytes; a block shown at once is never cut.
constexpr int automap_queue_text_limit = 4079;
// Every cell size is at least this.
constexpr int automap_minimum_cell_size = 5;
// And at most this, the largest automap_size setting.
constexpr int automap_maximum_cell_size = 400;

struct automap_cell {
    int terrain;
    int flags;
    int seed;
    int spare;  // stored, drawn by nothing
    int edge;
};

// Room flag bits.
enum : int {
    automap_flag_star = 1,
    automap_flag_road = 2,
    automap_flag_trail = 4,
    automap_flag_chevron_top = 8,
    automap_flag_chevron_bottom = 16,
};

// What the model asks of its owner.
class automap_model_client {
public:
    virtual ~automap_model_client() = default;
    // The grid changed: draw the picture anew (whatever the state of the block).
    virtual void render_map() = 0;
    // The slide moved: the window shows a new frame.
    virtual void mark_repaint() = 0;
};

// The sound of walking into a wall: the audio's wall bump; tests count through it instead.
extern void (*zorn_automap_wall_bump)();

struct automap_pending_map {
    automap_pending_map* next;
    char text[automap_queue_text_limit + 1];
    int length;
};

class automap_model {
public:
    automap_model();
    ~automap_model();
    automap_model(const automap_model&) = delete;
    automap_model& operator=(const automap_model&) = delete;

    // The tag "map": shown at once at rest, otherwise queued (cut at automap_queue_text_limit).
    void queue_socket_data(const char* payload, int length);
    // Decodes one block (a zero byte or length ends it; a negative length reads to the zero),
    // renders and starts the slide of its direction byte.
    void display_socket_data(const char* payload, int length = -1);
    // The tag "walkfail": a direction number 0 to 7 bumps the picture towards the wall.
    void walk_failed(const char* payload);
    // End of a session: empty grid, no slide, no queue.
    void reset_map();
    // One animation tick.
    void animate_step();

    bool at_rest() const { return scroll_x == 0 && scroll_y == 0 && level_step == 0; }
    int pending_length() const { return pending_count; }
    const automap_pending_map* pending_back() const { return pending_tail; }
    bool room_exists(int column, int row) const;
    automap_cell& cell(int column, int row) { return cells[column][row]; }
    const automap_cell& cell(int column, int row) const { return cells[column][row]; }
    void clear_cells();

    automap_cell cells[automap_grid_size][automap_grid_size];  // [column][row]
    int scroll_x;
    int scroll_y;
    int level_kind;  // 0 none, 1 growing, 2 shrinking
    int level_step;  // 0 at rest, else 1 to 9
    int animating;
    int speed_boost;
    int cell_size;
    int exits_mask;
    // The slide's jitter: 0 to n-1. The client's general generator unless a test sets another.
    int (*random_below_fn)(int n);
    automap_model_client* client;

private:
    void free_pending();
    void take_pending();

    automap_pending_map* pending_head;
    automap_pending_map* pending_tail;
    int pending_count;
};
