#pragma once
// The automap's pictures, drawn procedurally into automap_canvas: render_map's five passes over
// the grid (terrain, corridors, roads and trails, marks, edges) once per map, and each frame's
// view (the map at its scroll offset, the level change, the player's marker, the compass).
// The compass labels need a font, so the widget draws them; their places come from here.

#include "automap/automap_canvas.h"
#include "automap/automap_model.h"
#include "base/rgb.h"

constexpr int automap_terrain_count = 35;

struct automap_terrain_colors {
    zorn_rgb base, dark, bright;
};
// Out of range: base 0x404040 and the derived dark and bright.
automap_terrain_colors automap_terrain(int index);

// The painters' generator: srand/rand with 15 bits, the same sequence on every machine.
void automap_srand(unsigned seed);
int automap_rand();

// view_size and map_size of a cell size.
inline int automap_view_size(int cell_size) { return cell_size * 18 + 3; }
inline int automap_map_size(int cell_size) { return cell_size * automap_grid_size; }

// Draws the grid into `map` (automap_map_size + 1 square), which the caller has cleared.
void automap_render(const automap_model& model, int cell_size, automap_canvas& map);

// White, or the contrast of the player's room's base colour.
zorn_rgb automap_marker_color(const automap_model& model);

struct automap_compass_button {
    const char* label;
    int x, y;       // centre
    int rotation;   // degrees
    int size;
    int exit_bit;
    int direction;  // the hover_direction it answers to
    bool diagonal;  // the label's half size is measured on "NW", else on "W"
};
constexpr int automap_compass_button_count = 10;
void automap_compass_buttons(int view_size, automap_compass_button out[automap_compass_button_count]);
// The arrow's seven points round its centre.
void automap_arrow_points(int size, int rotation, int points[14]);

struct automap_button_colors {
    zorn_rgb border, fill, text;
};
automap_button_colors automap_button_state_colors(bool exit, bool hot);

struct automap_view_state {
    bool logged_in = false;
    bool mouse_inside = false;
    int hover_direction = 0;
};
// One frame of the renderer's window (view_size square).
void automap_compose_view(const automap_model& model, const automap_canvas& map, const automap_view_state& state,
                          automap_canvas& view);

// The direction under a point of the view: 0 none (the centre), 1 east ... 8 northeast (clockwise
// from east), 9 down, 10 up.
int automap_direction_at(int x, int y, int view_size, int cell_size);
// "east" ... "up" for 1 to 10, null otherwise.
const char* automap_direction_word(int direction);
