#include "automap/automap_model.h"

#include <cstring>
#include <new>

#include "audio/audio_objects.h"
#include "base/random.h"
#include "base/words.h"
#include "config/debug_log.h"

void (*zorn_automap_wall_bump)() = zorn_play_wall_bump;

namespace {

// The block's text sections in order. A line covers every second column (or row) from `first`;
// section 3 takes four bytes per room: terrain, flags, seed, spare.
enum class section_target { edge_value, node_low, node_high, room };

struct section_layout {
    const char* name;
    int lines;
    int first_row;
    int cells_per_line;
    int first_column;
    section_target target;
};

const section_layout sections[] = {
    {"1", 12, 0, 11, 1, section_target::edge_value},
    {"2", 11, 1, 12, 0, section_target::edge_value},
    {"2a", 12, 0, 12, 0, section_target::node_low},
    {"2b", 12, 0, 12, 0, section_target::node_high},
    {"3", 11, 1, 11, 1, section_target::room},
};

// Slide of the direction bytes 'A' to 'H', in grid steps (north, east, south, west, NE, SE, SW, NW).
struct step {
    int dx, dy;
};
const step direction_steps[8] = {{0, 1}, {-1, 0}, {0, -1}, {1, 0}, {-1, 1}, {-1, -1}, {1, -1}, {1, 1}};

// Bytes of one block; past its end it reads as a zero byte, which ends the block.
struct block_reader {
    const unsigned char* at;
    const unsigned char* end;

    int current() const { return at < end ? *at : 0; }
    // Never moves past a zero byte or the end.
    void advance() {
        if (current() != 0) ++at;
    }
    int take() {
        const int c = current();
        advance();
        return c;
    }
    void skip_line_feeds() {
        while (current() == '\n') ++at;
    }
};

void store(automap_model& model, const section_layout& section, int row, int index, block_reader& in) {
    const int column = section.first_column + 2 * index;
    automap_cell& cell = model.cell(column, row);
    switch (section.target) {
        case section_target::edge_value: cell.edge = in.take() - '@'; break;
        case section_target::node_low: cell.edge |= in.take() & 63; break;
        case section_target::node_high: cell.edge |= (in.take() & 63) << 16; break;
        case section_target::room: {
            // The three bytes after the first are taken as they come, line feeds too; a room cut
            // short by the block's end is left out rather than drawn from a missing seed.
            int values[4];
            for (int& v : values) {
                if (in.current() == 0) return;
                v = in.take() - '@';
            }
            cell.terrain = values[0];
            cell.flags = values[1];
            cell.seed = values[2];
            cell.spare = values[3];
            break;
        }
    }
}

// One section, line by line; false when a zero byte ended the block.
bool read_section(automap_model& model, const section_layout& section, block_reader& in) {
    for (int line = 0; line < section.lines; line++) {
        in.skip_line_feeds();
        const int row = section.first_row + 2 * line;
        int index = 0;
        while (index < section.cells_per_line && in.current() != '\n' && in.current() != 0)
            store(model, section, row, index++, in);
        if (in.current() == 0) return false;
        if (in.current() != '\n') {
            if (zorn_debug_level >= 2)
                zorn_client_debug_printf(
                    "Error in zorn_automap_renderer::display_socket_data() - bogus char '%d' found in section %s.\n",
                    in.current(), section.name);
            // Only the excess of an over-long line is lost.
            while (in.current() != '\n' && in.current() != 0) in.advance();
            if (in.current() == 0) return false;
        }
    }
    in.skip_line_feeds();
    return true;
}

}  // namespace

automap_model::automap_model()
    : scroll_x(0),
      scroll_y(0),
      level_kind(0),
      level_step(0),
      animating(0),
      speed_boost(0),
      cell_size(automap_minimum_cell_size),
      exits_mask(0),
      random_below_fn(&random_below),
      client(nullptr),
      pending_head(nullptr),
      pending_tail(nullptr),
      pending_count(0) {
    clear_cells();
}

automap_model::~automap_model() { free_pending(); }

void automap_model::clear_cells() { std::memset(cells, 0, sizeof cells); }

bool automap_model::room_exists(int column, int row) const {
    if (column < 0 || row < 0 || column >= automap_grid_size || row >= automap_grid_size) return false;
    return cells[column][row].seed != 0;
}

void automap_model::display_socket_data(const char* payload, int length) {
    scroll_x = scroll_y = level_step = 0;
    clear_cells();
    if (!payload) payload = "";
    const unsigned char* bytes = reinterpret_cast<const unsigned char*>(payload);
    block_reader in{bytes, bytes + (length < 0 ? std::strlen(payload) : static_cast<size_t>(length))};

    const int direction = in.take();
    bool whole = true;
    for (const section_layout& section : sections) {
        if (!read_section(*this, section, in)) {
            whole = false;
            break;
        }
    }
    level_kind = level_step = 0;
    if (whole && in.current() != 0) {
        const int trailer = in.current();
        level_kind = trailer - '@';
        level_step = trailer == 'A' ? 1 : trailer == 'B' ? 9 : 0;
    }
    if (client) client->render_map();
    if (direction >= 'A' && direction <= 'H') {
        const step& d = direction_steps[direction - 'A'];
        scroll_x = 2 * cell_size * d.dx;
        scroll_y = 2 * cell_size * d.dy;
    }
    animating = 1;
}

void automap_model::queue_socket_data(const char* payload, int length) {
    if (!payload) return;
    if (length < 0) length = 0;
    if (at_rest()) {
        display_socket_data(payload, length);
        return;
    }
    if (length > automap_queue_text_limit) {
        if (zorn_debug_level >= 2) zorn_client_debug_printf("queue_socket_data() - automap too big, got len %d.\n", length);
        length = automap_queue_text_limit;
    }
    automap_pending_map* node = new (std::nothrow) automap_pending_map;
    if (!node) {
        if (zorn_debug_level >= 1) zorn_client_debug_printf("Error in queue_socket_data() - out of memory.\n");
        return;
    }
    std::memcpy(node->text, payload, static_cast<size_t>(length));
    node->text[length] = '\0';
    node->length = length;
    node->next = nullptr;
    if (pending_tail)
        pending_tail->next = node;
    else
        pending_head = node;
    pending_tail = node;
    pending_count++;
}

void automap_model::take_pending() {
    automap_pending_map* node = pending_head;
    pending_head = node->next;
    if (!pending_head) pending_tail = nullptr;
    pending_count--;
    display_socket_data(node->text, node->length);
    delete node;
}

void automap_model::free_pending() {
    while (pending_head) {
        automap_pending_map* next = pending_head->next;
        delete pending_head;
        pending_head = next;
    }
    pending_tail = nullptr;
    pending_count = 0;
}

namespace {

int toward_zero(int value, int step) {
    if (value > 0) return value > step ? value - step : 0;
    if (value < 0) return -value > step ? value + step : 0;
    return 0;
}

}  // namespace

void automap_model::animate_step() {
    if (!animating) return;
    int step = (random_below_fn(4) + cell_size) / 4 + speed_boost;
    if (step < 1) step = 1;
    scroll_x = toward_zero(scroll_x, step);
    scroll_y = toward_zero(scroll_y, step);
    if (level_step != 0) {
        if (level_kind == 2)
            level_step--;
        else if (level_kind == 1)
            level_step = level_step >= 9 ? 0 : level_step + 1;
    }
    if (client) client->mark_repaint();
    if (!at_rest()) return;
    if (pending_head) {
        take_pending();
        // A fast walker's queue drains faster the longer it is.
        if (pending_count >= 2)
            speed_boost++;
        else if (pending_count == 1 && speed_boost >= 2)
            speed_boost--;
    } else {
        if (speed_boost > 0) speed_boost--;
        animating = 0;
    }
}

void automap_model::walk_failed(const char* payload) {
    if (!payload || !at_rest()) return;
    int direction = -1;
    if (!parse_integer(payload, &direction) || direction < 0 || direction > 7) return;
    const step& d = direction_steps[direction];
    // Towards the wall: the opposite sign of a real move, two thirds of a grid step.
    scroll_x = -(2 * cell_size * d.dx) / 3;
    scroll_y = -(2 * cell_size * d.dy) / 3;
    if (zorn_automap_wall_bump) zorn_automap_wall_bump();
    animating = 1;
}

void automap_model::reset_map() {
    clear_cells();
    scroll_x = scroll_y = level_step = 0;
    free_pending();
    if (client) client->render_map();
    speed_boost = 0;
}
