#include "app/background.h"

#include <algorithm>
#include <cstdint>

#include "base/random.h"

namespace {

constexpr int maze_step = 5;
constexpr int bubble_step = 16;

// Line pattern (Maze1, Maze2) and diagonal pattern (Maze3) share one walk over a 5-pixel grid.
void paint_maze(zorn_bitmap& bitmap, int style, const zorn_background_theme& colors) {
    zorn_random_state* painter = zorn_painter_random();
    const int w = bitmap.GetWidth(), h = bitmap.GetHeight();
    for (int y = 0; y < h; y += maze_step) {
        random_reset(painter);
        random_mix(painter, (uint32_t)y);
        for (int x = 0; x < w; x += maze_step) {
            const uint32_t r = random_next(painter);
            if (style == zorn_bg_maze3) {
                const zorn_rgb& color = (r & 2) ? colors.b : colors.a;
                if (r & 1)
                    bitmap.DrawLine(x, y, x + maze_step, y + maze_step, color);
                else
                    bitmap.DrawLine(x + maze_step, y, x, y + maze_step, color);
                continue;
            }
            const zorn_rgb& color = (style == zorn_bg_maze1 || (r & 0x1c) != 0) ? colors.b : colors.a;
            switch (r & 3) {
                case 0: bitmap.DrawLine(x, y, x + maze_step, y, color); break;
                case 1: bitmap.DrawLine(x, y, x, y + maze_step, color); break;
                case 2: bitmap.DrawLine(x, y, x - maze_step, y, color); break;
                default: bitmap.DrawLine(x, y, x, y - maze_step, color); break;
            }
        }
    }
}

// Four layers of rings; each layer re-seeds per row so the layers differ but stay stable.
void paint_bubbles(zorn_bitmap& bitmap, const zorn_background_theme& colors) {
    zorn_random_state* painter = zorn_painter_random();
    const int w = bitmap.GetWidth(), h = bitmap.GetHeight();
    const zorn_rgb* layers[4] = {&colors.c, &colors.c, &colors.b, &colors.a};
    for (uint32_t i = 0; i < 4; i++) {
        for (int y = 0; y < h; y += bubble_step) {
            random_reset(painter);
            random_mix(painter, ((uint32_t)y + 137u) * (i + 1234567u));
            for (int x = -bubble_step; x < w; x += bubble_step) {
                const uint32_t first = random_next(painter);
                const uint32_t second = random_next(painter);
                const uint32_t third = random_next(painter);
                const int a = (int)(first & 15), b = (int)(second & 15), c = (int)((third >> 2) & 3);
                bitmap.DrawFilledCircle(x + a, y | b, c + 2, *layers[i]);
                bitmap.DrawFilledCircle(x + a, y | b, c + 1, zorn_black);
            }
        }
    }
}

}  // namespace

int zorn_background_round(int size) { return (size + 256) & ~255; }

void zorn_paint_background(zorn_bitmap& bitmap, int style, const zorn_background_theme& colors) {
    switch (style) {
        case zorn_bg_none: bitmap.Clear(zorn_black); break;
        case zorn_bg_solid: bitmap.Clear(colors.c); break;
        case zorn_bg_bubbles:
            bitmap.Clear(zorn_black);
            paint_bubbles(bitmap, colors);
            break;
        case zorn_bg_maze1:
        case zorn_bg_maze3:
            bitmap.Clear(zorn_black);
            paint_maze(bitmap, style, colors);
            break;
        default:
            bitmap.Clear(zorn_black);
            paint_maze(bitmap, zorn_bg_maze2, colors);
            break;
    }
}

bool zorn_background_cache::update(int client_width, int client_height, int style, int theme_index,
                                   const zorn_background_theme& colors, bool force) {
    if (!force && bitmap && client_width <= width && client_height <= height && style == drawn_style &&
        theme_index == drawn_theme)
        return false;
    delete bitmap;
    bitmap = nullptr;
    width = zorn_background_round(std::max(client_width, width));
    height = zorn_background_round(std::max(client_height, height));
    bitmap = new zorn_bitmap(width, height);
    zorn_paint_background(*bitmap, style, colors);
    drawn_style = style;
    drawn_theme = theme_index;
    return true;
}
