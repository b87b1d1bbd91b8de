#pragma once
// The land round the test world's village as the automap sees it: a square of rooms with many
// terrains, walls, green and red doors, diagonal passages, a road leaving north through a door
// and a trail leaving east, a star and a chevron room, and an upper level above the watchtower.
// map_block writes the 11 by 11 rooms round a place in the client's map format.

#include <string>

namespace testworld {

// Rooms of the land: x and y 0 to map_area_size - 1; the village's 3 by 3 grid sits at
// map_village_offset.
constexpr int map_area_size = 15;
constexpr int map_village_offset = 6;

struct map_room {
    bool exists;
    int terrain;
    int flags;
    int seed;
};

// level 0 is the land, 1 the top of the watchtower: a single room.
map_room map_room_at(int x, int y, int level);
// Edge between two rooms next to each other (dx, dy of 1 step, diagonals included): 0 nothing,
// 1 open, 2 green door, 3 red door, 4 wall; diagonals give 4 for none.
int map_edge(int x, int y, int dx, int dy, int level);

// The block round (x, y): the direction byte ('@' for none), the sections, and the trailer byte
// when not 0.
std::string map_block(int x, int y, int level, char direction, char trailer);

}  // namespace testworld
