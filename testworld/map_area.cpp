#include "testworld/map_area.h"

#include <cstdlib>

namespace testworld {

namespace {

constexpr int flag_star = 1, flag_road = 2, flag_trail = 4, flag_chevrons = 8 | 16;
constexpr int open = 1, green_door = 2, red_door = 3, wall = 4;
constexpr int road_column = map_village_offset + 1;  // North Road's column, leading north
constexpr int trail_row = map_village_offset + 1;    // Market Row's row, leading east

bool in_village(int x, int y) {
    return x >= map_village_offset && y >= map_village_offset && x < map_village_offset + 3 &&
           y < map_village_offset + 3;
}

// Terrain and flags of the village's rooms, row by row from the north.
const map_room village[3][3] = {
    {{true, 22, flag_star, 0}, {true, 2, flag_road, 0}, {true, 4, flag_trail, 0}},
    {{true, 26, 0, 0}, {true, 10, flag_road, 0}, {true, 12, flag_road | flag_trail, 0}},
    {{true, 19, 0, 0}, {true, 28, flag_road, 0}, {true, 15, flag_chevrons, 0}},
};

}  // namespace

map_room map_room_at(int x, int y, int level) {
    if (level == 1) return {x == 0 && y == 0, 24, flag_star, 17};
    if (level != 0 || x < 0 || y < 0 || x >= map_area_size || y >= map_area_size) return {false, 0, 0, 0};
    const int seed = 1 + (x * 13 + y * 7) % 62;
    if (in_village(x, y)) {
        map_room room = village[y - map_village_offset][x - map_village_offset];
        room.seed = seed;
        return room;
    }
    // The corners of the land stay empty, so the map has an edge to show.
    if ((x + y < 3) || (x + (map_area_size - 1 - y) < 3)) return {false, 0, 0, 0};
    map_room room{true, (x * 7 + y * 3) % 35, 0, seed};
    if (x == road_column && y < map_village_offset) room.flags = flag_road;
    if (y == trail_row && x >= map_village_offset + 3) room.flags = flag_trail;
    return room;
}

int map_edge(int x, int y, int dx, int dy, int level) {
    const int x2 = x + dx, y2 = y + dy;
    const map_room a = map_room_at(x, y, level), b = map_room_at(x2, y2, level);
    const bool diagonal = dx != 0 && dy != 0;
    if (!a.exists || !b.exists) return diagonal ? wall : (a.exists || b.exists ? wall : 0);
    if (level != 0) return wall;
    const bool village_a = in_village(x, y), village_b = in_village(x2, y2);
    if (village_a && village_b) return open;
    if (village_a != village_b) {
        if (diagonal) return wall;
        // Out of the village only through its two gates, both closed.
        const int vx = village_a ? x : x2, vy = village_a ? y : y2;
        const int ox = village_a ? x2 : x, oy = village_a ? y2 : y;
        if (vx == road_column && oy < vy) return green_door;
        if (vx == road_column && oy > vy) return red_door;
        if (vy == trail_row && ox > vx) return red_door;
        return wall;
    }
    // Outside: a pattern of walls, doors and diagonal passages; the road and the trail stay open.
    const int lx = dx < 0 ? x2 : x, ly = dy < 0 ? y2 : y;
    if (diagonal) {
        const int pick = (lx * 3 + ly * 5 + (dx == dy ? 0 : 2)) % 7;
        return pick == 0 ? green_door : pick == 1 ? red_door : pick == 2 ? open : wall;
    }
    if ((a.flags | b.flags) && (x == x2 ? x == road_column : y == trail_row)) return open;
    const int pick = (lx * 5 + ly * 3 + (dx ? 1 : 0)) % 9;
    return pick == 0 ? wall : pick == 1 ? green_door : pick == 2 ? red_door : open;
}

std::string map_block(int x, int y, int level, char direction, char trailer) {
    constexpr int rooms = 11, half = rooms / 2;
    const int left = x - half, top = y - half;
    std::string out(1, direction);
    auto value = [](int v) { return static_cast<char>('@' + v); };
    // Section 1: the edges between rooms north and south, rows 0, 2, ... 22 of the grid.
    for (int row = 0; row <= rooms; row++) {
        for (int i = 0; i < rooms; i++) out += value(map_edge(left + i, top + row - 1, 0, 1, level));
        out += '\n';
    }
    // Section 2: between rooms west and east.
    for (int row = 0; row < rooms; row++) {
        for (int i = 0; i <= rooms; i++) out += value(map_edge(left + i - 1, top + row, 1, 0, level));
        out += '\n';
    }
    // Sections 2a and 2b: the nodes' diagonals, NW to SE and then NE to SW.
    for (int part = 0; part < 2; part++) {
        for (int row = 0; row <= rooms; row++) {
            for (int i = 0; i <= rooms; i++) {
                const int nx = left + i, ny = top + row;  // the room south-east of the node
                out += value(part == 0 ? map_edge(nx - 1, ny - 1, 1, 1, level) : map_edge(nx, ny - 1, -1, 1, level));
            }
            out += '\n';
        }
    }
    // Section 3: the rooms.
    for (int row = 0; row < rooms; row++) {
        for (int i = 0; i < rooms; i++) {
            const map_room r = map_room_at(left + i, top + row, level);
            if (!r.exists) {
                out += "@@@@";
                continue;
            }
            out += value(r.terrain);
            out += value(r.flags);
            out += value(r.seed);
            out += '@';
        }
        out += '\n';
    }
    if (trailer) out += trailer;
    return out;
}

}  // namespace testworld
