#include "automap/automap_painter.h"

#include <cmath>

namespace {

constexpr zorn_rgb black{0, 0, 0};
constexpr zorn_rgb white{255, 255, 255};
constexpr zorn_rgb door_green{0, 128, 0};
constexpr zorn_rgb door_red{192, 0, 0};
constexpr zorn_rgb road_core{92, 51, 23};
constexpr zorn_rgb road_rim{131, 90, 34};

constexpr int edge_gap = 1;
constexpr int edge_green = 2;
constexpr int edge_red = 3;
constexpr int edge_wall = 4;
constexpr int last = automap_grid_size - 1;

struct terrain_row {
    unsigned base, dark, bright;  // 0: derived from base
};
const terrain_row terrain_table[automap_terrain_count] = {
    {0x404040, 0, 0},        {0x606060, 0, 0}, {0x805A22, 0, 0}, {0x00FF00, 0, 0}, {0x00C000, 0, 0},
    {0x008000, 0, 0},        {0x004000, 0, 0}, {0x406080, 0, 0}, {0x60A060, 0, 0}, {0xF0F020, 0, 0},
    {0xC0C0C0, 0, 0},        {0x808080, 0, 0}, {0xF0F040, 0, 0}, {0x805080, 0, 0}, {0xF0F060, 0, 0},
    {0x409040, 0, 0},        {0xF0F080, 0, 0}, {0x20C040, 0, 0}, {0x000080, 0, 0}, {0x00F0F0, 0x00C0F0, 0x80FFFF},
    {0x0020D0, 0, 0},        {0x000060, 0, 0}, {0x303030, 0, 0}, {0x000000, 0, 0}, {0xD8D8D8, 0xC0FFFF, 0xD8FFFF},
    {0xFF2000, 0xE00000, 0xFFA000}, {0x806060, 0, 0}, {0x404040, 0, 0}, {0x907040, 0, 0}, {0x20A060, 0, 0},
    {0xF0F0A0, 0, 0},        {0xFFFFFF, 0, 0}, {0x0010A0, 0, 0}, {0x808080, 0, 0}, {0x006000, 0, 0},
};

zorn_rgb unpack(unsigned v) { return zorn_rgb(static_cast<int>(v >> 16), static_cast<int>((v >> 8) & 255), static_cast<int>(v & 255)); }

int brighter(int component) { return component * 120 > 25599 ? 255 : component * 120 / 100; }

unsigned random_state = 1;

}  // namespace

void automap_srand(unsigned seed) { random_state = seed; }

int automap_rand() {
    random_state = random_state * 1103515245u + 12345u;
    return static_cast<int>((random_state >> 16) & 0x7FFF);
}

automap_terrain_colors automap_terrain(int index) {
    const terrain_row row = index >= 0 && index < automap_terrain_count ? terrain_table[index] : terrain_row{0x404040, 0, 0};
    const zorn_rgb base = unpack(row.base);
    automap_terrain_colors out{base, unpack(row.dark), unpack(row.bright)};
    if (row.dark == 0) out.dark = zorn_rgb(base.red * 85 / 100, base.green * 85 / 100, base.blue * 85 / 100);
    if (row.bright == 0) out.bright = zorn_rgb(brighter(base.red), brighter(base.green), brighter(base.blue));
    return out;
}

namespace {

// The passes share the grid, the cell size and the target.
struct map_painter {
    const automap_model& model;
    int s, h, q;
    automap_canvas& out;

    bool exists(int c, int r) const { return model.room_exists(c, r); }
    const automap_cell& at(int c, int r) const { return model.cell(c, r); }
    // An absent room blends as black.
    zorn_rgb base(int c, int r) const { return exists(c, r) ? automap_terrain(at(c, r).terrain).base : black; }
    bool inside(int c, int r) const { return c >= 0 && r >= 0 && c <= last && r <= last; }
    int edge_or_zero(int c, int r) const { return inside(c, r) ? at(c, r).edge : 0; }

    void terrain_pass();
    void corner_blend(int c, int r);
    void speckle(int c, int r);
    void corridor_pass();
    void corridor_node(int c, int r);
    void road_pass();
    void mark_pass();
    void edge_pass();
};

void map_painter::terrain_pass() {
    for (int c = 1; c < automap_grid_size; c += 2)
        for (int r = 1; r < automap_grid_size; r += 2)
            if (exists(c, r))
                out.filled_rectangle(c * s - h + 1, r * s - h + 1, c * s - h + 2 * s, r * s - h + 2 * s, base(c, r));
    // Blends run only between rooms of the grid: none towards the outside.
    for (int r = 2; r <= 20; r += 2)
        for (int c = 1; c <= 21; c += 2)
            if (exists(c, r - 1) || exists(c, r + 1))
                out.y_gradient_rectangle(c * s + 1 + h - s + 2, r * s + 1 + h - 1, c * s + 1 + h + s - 2, r * s + 1 + h + 1,
                                         base(c, r - 1), base(c, r + 1));
    for (int r = 1; r <= 21; r += 2)
        for (int c = 2; c <= 20; c += 2)
            if (exists(c - 1, r) || exists(c + 1, r))
                out.x_gradient_rectangle(c * s + 1 + h - 1, r * s + 1 + h - s + 2, c * s + 1 + h + 1, r * s + 1 + h + s - 2,
                                         base(c - 1, r), base(c + 1, r));
    for (int r = 2; r <= 20; r += 2)
        for (int c = 2; c <= 20; c += 2) corner_blend(c, r);
    for (int c = 1; c < automap_grid_size; c += 2)
        for (int r = 1; r < automap_grid_size; r += 2)
            if (exists(c, r)) speckle(c, r);
}

// A 3 by 3 block where four rooms meet: down both sides in quarters, then across in quarters.
void map_painter::corner_blend(int c, int r) {
    if (!exists(c - 1, r - 1) && !exists(c + 1, r - 1) && !exists(c - 1, r + 1) && !exists(c + 1, r + 1)) return;
    const zorn_rgb nw = base(c - 1, r - 1), ne = base(c + 1, r - 1), sw = base(c - 1, r + 1), se = base(c + 1, r + 1);
    auto mix = [](int top_left, int top_right, int bottom_left, int bottom_right, int i, int j) {
        const int left = top_left + (j + 1) * ((bottom_left - top_left) / 4);
        const int right = top_right + (j + 1) * ((bottom_right - top_right) / 4);
        return left + (i + 1) * ((right - left) / 4);
    };
    for (int j = 0; j < 3; j++)
        for (int i = 0; i < 3; i++)
            out.set_pixel(c * s + h + i, r * s + h + j,
                          zorn_rgb(mix(nw.red, ne.red, sw.red, se.red, i, j), mix(nw.green, ne.green, sw.green, se.green, i, j),
                                   mix(nw.blue, ne.blue, sw.blue, se.blue, i, j)));
}

void map_painter::speckle(int c, int r) {
    const int w = 2 * s - 3;
    automap_srand(static_cast<unsigned>(at(c, r).seed));
    if (w * w <= 31) return;
    const int n = w * w / 32;
    const automap_terrain_colors colors = automap_terrain(at(c, r).terrain);
    for (const zorn_rgb& color : {colors.bright, colors.dark}) {
        for (int k = 0; k < n; k++) {
            const int x = c * s - h + 2 + (((automap_rand() & 0x7FFF) * w) >> 15);
            const int y = r * s - h + 2 + (((automap_rand() & 0x7FFF) * w) >> 15);
            out.set_pixel(x, y, color);
        }
    }
}

void map_painter::corridor_pass() {
    for (int c = 0; c < automap_grid_size; c += 2)
        for (int r = 0; r < automap_grid_size; r += 2) corridor_node(c, r);
}

// A node's two diagonal passages; where neither runs, the stubs of its walls.
void map_painter::corridor_node(int c, int r) {
    const int xc = c * s + h, yc = r * s + h, x1 = xc + 1, y1 = yc + 1, top = y1 - h, bottom = yc + h + 1;
    const int north = edge_or_zero(c, r - 1), south = edge_or_zero(c, r + 1);
    const int west = edge_or_zero(c - 1, r), east = edge_or_zero(c + 1, r);
    const bool nw = exists(c - 1, r - 1), ne = exists(c + 1, r - 1), sw = exists(c - 1, r + 1), se = exists(c + 1, r + 1);
    const int low = at(c, r).edge & 63, high = (at(c, r).edge >> 16) & 63;
    const bool low_active = low != edge_wall && (nw || se);
    const bool high_active = high != edge_wall && (ne || sw);
    auto door_color = [](int value) { return value == edge_red ? door_red : door_green; };

    if (low_active) {
        const zorn_rgb from = base(c - 1, r - 1), to = base(c + 1, r + 1);
        const bool ne_sealed = !ne || (north != 0 && east != 0);
        const bool sw_sealed = !sw || (south != 0 && west != 0);
        if (ne_sealed) {
            out.line(x1, top, x1 + h, y1, white);
            out.line(xc + 2, top, x1 + h, yc, white);
            out.line(xc + 3, top, x1 + h, yc - 1, white);
            out.line(xc + 3, top - 1, x1 + h + 1, yc - 1, white);
            for (int i = 0; top + i < y1; i++) out.gradient_line(xc, top + i, x1 + h - i, yc + 2, from, to);
        }
        if (sw_sealed) {
            out.line(x1 - h, y1, x1, bottom, white);
            out.line(x1 - h, yc + 2, xc, bottom, white);
            out.line(x1 - h, yc + 3, xc - 1, bottom, white);
            out.line(x1 - h - 1, yc + 3, xc - 1, bottom + 1, white);
            for (int x = x1 - h, i = 0; x <= x1 - 1; x++, i++) out.gradient_line(x, yc, xc + 2, bottom - i, from, to);
        }
        if (ne_sealed && sw_sealed && (low == edge_red || low == edge_green)) {
            out.line(xc + q, y1 - q + 1, x1 - q + 1, yc + q, door_color(low));
            out.line(x1 + q, y1 - q + 1, x1 - q + 1, yc + q + 1, door_color(low));
        }
    }
    if (high_active) {
        const zorn_rgb from = base(c - 1, r + 1), to = base(c + 1, r - 1);
        const bool nw_sealed = !nw || (north != 0 && west != 0);
        const bool se_sealed = !se || (south != 0 && east != 0);
        if (nw_sealed) {
            out.line(x1 - h, y1, x1, top, white);
            out.line(x1 - h, yc, xc, top, white);
            out.line(x1 - h, yc - 1, xc - 1, top, white);
            out.line(x1 - h - 1, yc - 1, xc - 1, top - 1, white);
            for (int x = x1 - h, i = 0; x <= x1 - 1; x++, i++) out.gradient_line(x, yc + 2, xc + 2, top + i, from, to);
        }
        if (se_sealed) {
            out.line(x1, bottom, x1 + h, y1, white);
            out.line(xc + 2, bottom, x1 + h, yc + 2, white);
            out.line(xc + 3, bottom, x1 + h, yc + 3, white);
            out.line(xc + 3, bottom + 1, x1 + h + 1, yc + 3, white);
            for (int x2 = x1 + h, i = 0; x2 >= x1 + 1; x2--, i++) out.gradient_line(xc, bottom - i, x2, yc, from, to);
        }
        if (nw_sealed && se_sealed && (high == edge_red || high == edge_green)) {
            out.line(x1 - q + 1, y1 - q + 1, xc + q, yc + q, door_color(high));
            out.line(x1 - q + 1, y1 - q, x1 + q, yc + q, door_color(high));
        }
    }
    if (low_active || high_active) return;
    if (r > 0 && north != 0) {
        out.line(xc, top, xc, y1, white);
        out.line(x1, top - 1, x1, yc + 2, white);
        out.line(xc + 2, top, xc + 2, y1, white);
    }
    if (r < last && south != 0) {
        out.line(xc, y1, xc, bottom, white);
        out.line(x1, yc, x1, bottom + 1, white);
        out.line(xc + 2, y1, xc + 2, bottom, white);
    }
    if (c > 0 && west != 0) {
        out.line(x1 - h, yc, x1, yc, white);
        out.line(x1 - h - 1, y1, xc + 2, y1, white);
        out.line(x1 - h, yc + 2, x1, yc + 2, white);
    }
    if (c < last && east != 0) {
        out.line(x1, yc, x1 + h, yc, white);
        out.line(xc, y1, x1 + h + 1, y1, white);
        out.line(x1, yc + 2, x1 + h, yc + 2, white);
    }
}

// The wander of a road: up to two pixels to one side of its line, with a short delay at each turn.
struct road_walk {
    int state = 3;
    int offset = 1;
    void step() {
        const int r = automap_rand() & 15;
        if (r < 4 && state > 0) {
            state--;
            if (state == 4) state = 3;
            if (state == 1) state = 0;
        }
        if (r >= 12 && state < 6) {
            state++;
            if (state == 2) state = 3;
            if (state == 5) state = 6;
        }
        offset = state < 2 ? 0 : state <= 4 ? 1 : 2;
    }
};

enum class road_kind { none, trail, road };

road_kind joined(const automap_model& model, int c1, int r1, int c2, int r2, int edge) {
    if (!model.room_exists(c1, r1) || !model.room_exists(c2, r2) || edge == edge_wall) return road_kind::none;
    const int a = model.cell(c1, r1).flags, b = model.cell(c2, r2).flags;
    const int either = automap_flag_road | automap_flag_trail;
    if (!(a & either) || !(b & either)) return road_kind::none;
    return (a & automap_flag_road) && (b & automap_flag_road) ? road_kind::road : road_kind::trail;
}

// A straight stretch along the first axis; `plot(along, across, colour)` maps it onto the map.
template <typename Plot>
void straight_road(road_kind kind, int centre_along, int centre_across, int s, bool lead_cap, Plot plot) {
    road_walk walk;
    const int start = centre_along - s, end = centre_along + s - 1;
    if (kind == road_kind::road) {
        if (lead_cap) plot(start - 1, centre_across, road_core);
        for (int a = start; a <= end; a++) {
            const int across = centre_across + 1 - walk.offset;
            plot(a, across - 1, road_rim);
            plot(a, across + 1, road_rim);
            plot(a, across, road_core);
            walk.step();
        }
        plot(end + 1, centre_across - 1, road_rim);
        plot(end + 1, centre_across + 1, road_rim);
        plot(end + 1, centre_across, road_core);
        plot(end + 2, centre_across, road_core);
        return;
    }
    for (int a = start; a <= end; a++) {
        const bool near_end = a - start < 2 || end - a < 2;
        const int across = near_end ? centre_across : centre_across + 1 - walk.offset;
        if (automap_rand() & 240) plot(a, across, road_core);
        walk.step();
    }
}

void map_painter::road_pass() {
    for (int r = 1; r <= 21; r += 2) {
        for (int c = 2; c <= 20; c += 2) {
            const road_kind kind = joined(model, c - 1, r, c + 1, r, at(c, r).edge);
            if (kind == road_kind::none) continue;
            automap_srand(static_cast<unsigned>(at(c + 1, r).seed ^ at(c - 1, r).seed));
            straight_road(kind, c * s + 1 + h, r * s + 1 + h, s, true,
                          [this](int x, int y, const zorn_rgb& color) { out.set_pixel(x, y, color); });
        }
    }
    for (int r = 2; r <= 20; r += 2) {
        for (int c = 1; c <= 21; c += 2) {
            const road_kind kind = joined(model, c, r - 1, c, r + 1, at(c, r).edge);
            if (kind == road_kind::none) continue;
            automap_srand(static_cast<unsigned>(at(c, r + 1).seed ^ (at(c, r - 1).seed * 2)));
            straight_road(kind, r * s + 1 + h, c * s + 1 + h, s, false,
                          [this](int y, int x, const zorn_rgb& color) { out.set_pixel(x, y, color); });
        }
    }
    for (int r = 2; r <= 20; r += 2) {
        for (int c = 2; c <= 20; c += 2) {
            const int cx = c * s + 1 + h, cy = r * s + 1 + h;
            const int node = at(c, r).edge;
            // The node's low part stands for the pair NE and SW here, the high part for NW and SE.
            road_kind kind = joined(model, c + 1, r - 1, c - 1, r + 1, node & 63);
            if (kind != road_kind::none) {
                automap_srand(static_cast<unsigned>(at(c - 1, r + 1).seed ^ (at(c + 1, r - 1).seed * 2)));
                if (kind == road_kind::road) {
                    out.line(cx - s - 1, cy + s, cx + s, cy - s - 1, road_rim);
                    out.line(cx - s, cy + s + 1, cx + s + 1, cy - s, road_rim);
                }
                int x = cx - s, y = cy + s;
                for (int i = 0; i < 2 * s; i++, x++, y--) {
                    if (automap_rand() & 1)
                        out.set_pixel(x, y - 1, road_core);
                    else
                        out.set_pixel(x + 1, y, road_core);
                    out.set_pixel(x, y, road_core);
                }
                out.set_pixel(x, y, road_core);
            }
            kind = joined(model, c - 1, r - 1, c + 1, r + 1, (node >> 16) & 63);
            if (kind != road_kind::none) {
                automap_srand(static_cast<unsigned>((at(c + 1, r - 1).seed * 2) ^ at(c - 1, r + 1).seed));
                if (kind == road_kind::road) {
                    out.line(cx + s + 1, cy + s, cx - s, cy - s - 1, road_rim);
                    out.line(cx + s, cy + s + 1, cx - s - 1, cy - s, road_rim);
                }
                int x = cx + s, y = cy + s;
                for (int i = 0; i < 2 * s; i++, x--, y--) {
                    if (automap_rand() & 1)
                        out.set_pixel(x, y - 1, road_core);
                    else
                        out.set_pixel(x - 1, y, road_core);
                    out.set_pixel(x, y, road_core);
                }
                out.set_pixel(x, y, road_core);
            }
        }
    }
}

void map_painter::mark_pass() {
    for (int c = 1; c < automap_grid_size; c += 2) {
        for (int r = 1; r < automap_grid_size; r += 2) {
            if (!exists(c, r)) continue;
            const int flags = at(c, r).flags;
            const int cx = c * s + h + 1, cy = r * s + 1 + h, radius = s - 2, t = s / 3;
            if (flags & automap_flag_star) {
                int x = cx, y = cy - radius;
                double angle = 0;
                for (int k = 0; k < 8; k++) {
                    angle += 2.3561944901925;
                    const int nx = cx - static_cast<int>(std::sin(angle) * radius);
                    const int ny = cy - static_cast<int>(std::cos(angle) * radius);
                    out.line(x, y, nx, ny, black);
                    x = nx;
                    y = ny;
                }
                continue;
            }
            if (flags & automap_flag_chevron_top) {
                const int top = cy - radius;
                out.line(cx, top, cx - t, top + t, black);
                out.line(cx, top, cx + t, top + t, black);
                out.line(cx, top + 1, cx - t, top + t + 1, black);
                out.line(cx, top + 1, cx + t, top + t + 1, black);
            }
            if (flags & automap_flag_chevron_bottom) {
                const int bottom = cy + radius;
                out.line(cx, bottom, cx - t, bottom - t, black);
                out.line(cx, bottom, cx + t, bottom - t, black);
                out.line(cx, bottom - 1, cx - t, bottom - t - 1, black);
                out.line(cx, bottom - 1, cx + t, bottom - t - 1, black);
            }
        }
    }
}

void map_painter::edge_pass() {
    for (int c = 1; c < automap_grid_size; c += 2) {
        for (int r = 0; r < automap_grid_size; r += 2) {
            const int value = at(c, r).edge, x0 = c * s, y = r * s + 1 + h;
            if (value == edge_wall) {
                out.line(x0 + 1, y - 1, x0 + s, y - 1, white);
                out.line(x0, y, x0 + s + 1, y, white);
                out.line(x0 + 1, y + 1, x0 + s, y + 1, white);
            } else if (value == edge_red || value == edge_green) {
                out.line(x0 + 1, y, x0 + s, y, value == edge_red ? door_red : door_green);
            }
        }
    }
    for (int c = 0; c < automap_grid_size; c += 2) {
        for (int r = 1; r < automap_grid_size; r += 2) {
            const int value = at(c, r).edge, x = c * s + 1 + h, y0 = r * s;
            if (value == edge_wall) {
                out.line(x - 1, y0 + 1, x - 1, y0 + s, white);
                out.line(x, y0, x, y0 + s + 1, white);
                out.line(x + 1, y0 + 1, x + 1, y0 + s, white);
            } else if (value == edge_red || value == edge_green) {
                out.line(x, y0 + 1, x, y0 + s, value == edge_red ? door_red : door_green);
            }
        }
    }
}

}  // namespace

void automap_render(const automap_model& model, int cell_size, automap_canvas& map) {
    map_painter painter{model, cell_size, cell_size / 2, cell_size / 4, map};
    painter.terrain_pass();
    painter.corridor_pass();
    painter.road_pass();
    painter.mark_pass();
    painter.edge_pass();
}

zorn_rgb automap_marker_color(const automap_model& model) {
    if (!model.room_exists(automap_player_cell, automap_player_cell)) return white;
    const zorn_rgb b = automap_terrain(model.cell(automap_player_cell, automap_player_cell).terrain).base;
    return zorn_rgb(b.red < 176 ? 255 : 0, b.green < 176 ? 255 : 0, b.blue < 176 ? 255 : 0);
}

void automap_compass_buttons(int v, automap_compass_button out[automap_compass_button_count]) {
    const int m = v / 2, r = v * 41 / 100, d = r * 71 / 100, k = v * 92 / 100;
    const int a = v * 20 / 250, b = v / 10;
    const automap_compass_button table[automap_compass_button_count] = {
        {"N", m, m - r, 0, a, 1, 7, false},        {"S", m, m + r, 180, a, 16, 3, false},
        {"E", m + r, m, 90, a, 4, 1, false},       {"W", m - r, m, 270, a, 64, 5, false},
        {"D", k, k, 180, a, 512, 9, false},        {"U", k, v * 8 / 100, 0, a, 256, 10, false},
        {"NW", m - d, m - d, -45, b, 128, 6, true}, {"NE", m + d, m - d, 45, b, 2, 8, true},
        {"SW", m - d, m + d, -135, b, 32, 4, true}, {"SE", m + d, m + d, 135, b, 8, 2, true},
    };
    for (int i = 0; i < automap_compass_button_count; i++) out[i] = table[i];
}

void automap_arrow_points(int size, int rotation, int points[14]) {
    const int u = size / 4;
    const double radians = rotation * 3.14159265358979323846 / 180.0;
    auto round_half = [](double x) { return static_cast<int>(std::floor(x + 0.5)); };
    const int e1x = round_half(u * std::cos(radians)), e1y = round_half(u * std::sin(radians));
    const int e2x = round_half(-u * std::sin(radians)), e2y = round_half(u * std::cos(radians));
    const int shape[7][2] = {{0, -4}, {4, 0}, {2, 0}, {2, 3}, {-2, 3}, {-2, 0}, {-4, 0}};  // in e1, e2
    for (int i = 0; i < 7; i++) {
        points[2 * i] = shape[i][0] * e1x + shape[i][1] * e2x;
        points[2 * i + 1] = shape[i][0] * e1y + shape[i][1] * e2y;
    }
}

automap_button_colors automap_button_state_colors(bool exit, bool hot) {
    if (exit && hot) return {white, zorn_rgb(64, 160, 64), white};
    if (exit) return {white, zorn_rgb(32, 64, 32), white};
    if (hot) return {zorn_rgb(128, 128, 128), zorn_rgb(64, 32, 32), white};
    return {zorn_rgb(96, 96, 96), zorn_rgb(32, 32, 32), zorn_rgb(96, 96, 96)};
}

namespace {

void draw_compass(const automap_model& model, int hover, automap_canvas& view) {
    automap_compass_button buttons[automap_compass_button_count];
    automap_compass_buttons(view.width(), buttons);
    for (const automap_compass_button& button : buttons) {
        int points[14];
        automap_arrow_points(button.size, button.rotation, points);
        // A black halo: every side once more at each of the eight neighbouring positions.
        for (int i = 0; i < 7; i++) {
            const int j = (i + 1) % 7;
            for (int dy = -1; dy <= 1; dy++)
                for (int dx = -1; dx <= 1; dx++)
                    if (dx || dy)
                        view.line(button.x + points[2 * i] + dx, button.y + points[2 * i + 1] + dy,
                                  button.x + points[2 * j] + dx, button.y + points[2 * j + 1] + dy, black);
        }
        const automap_button_colors colors =
            automap_button_state_colors((model.exits_mask & button.exit_bit) != 0, hover == button.direction);
        view.polygon(7, points, button.x, button.y, colors.border, colors.fill);
    }
}

}  // namespace

void automap_compose_view(const automap_model& model, const automap_canvas& map, const automap_view_state& state,
                          automap_canvas& view) {
    const int s = model.cell_size, v = view.width(), m = v / 2;
    view.clear(black);
    if (!state.logged_in) return;
    if (model.level_step != 0) {
        const int d = s * model.level_step;
        for (int k = 0; k < 3; k++) {
            const int a = m - d + k, b = m + d - k;
            view.line(a, a, b, a, white);
            view.line(a, b, b, b, white);
            view.line(a, a, a, b, white);
            view.line(b, a, b, b, white);
        }
        return;
    }
    const int half_map = automap_map_size(s) / 2;
    view.copy_from(map, -(model.scroll_x + half_map - m) - 1, -(half_map - m + model.scroll_y) - 1);
    const zorn_rgb marker = automap_marker_color(model);
    for (int e = s / 2; e >= s / 2 - 1; e--) {
        view.line(m, m - e, m + e, m, marker);
        view.line(m + e, m, m, m + e, marker);
        view.line(m, m + e, m - e, m, marker);
        view.line(m - e, m, m, m - e, marker);
    }
    if (state.mouse_inside) draw_compass(model, state.hover_direction, view);
}

int automap_direction_at(int x, int y, int v, int s) {
    if (x >= v * 84 / 100) {
        if (y >= v * 84 / 100) return 9;
        if (y <= v * 16 / 100) return 10;
    }
    const int dx = x - v / 2, dy = y - v / 2;
    if (dx >= -(s + 1) && dx <= s + 1 && dy >= -(s + 1) && dy <= s + 1) return 0;
    const int a = static_cast<int>(std::floor(std::atan(std::fabs(dy / (dx + 0.001))) * 360 / 6.2832 + 0.5));
    int angle;
    if (dx >= 0)
        angle = dy >= 0 ? a : 360 - a;
    else
        angle = dy >= 0 ? 180 - a : 180 + a;
    angle %= 360;
    return ((angle + 22) / 45) % 8 + 1;
}

const char* automap_direction_word(int direction) {
    static const char* const words[] = {"east", "southeast", "south",     "southwest", "west",
                                        "northwest", "north", "northeast", "down",      "up"};
    return direction >= 1 && direction <= 10 ? words[direction - 1] : nullptr;
}
