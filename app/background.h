#pragma once
// The frame's painted background: a bitmap larger than the window, rounded up in steps of 256
// pixels and never shrunk, so that most resizes reuse it. Its patterns are stable: the painters'
// generator is reset and re-mixed for each row, so a rebuilt bitmap shows the same picture.

#include "theme/bitmap.h"
#include "theme/theme.h"

// theme_bg_setting values.
enum : int {
    zorn_bg_none = 0,
    zorn_bg_solid = 1,
    zorn_bg_maze1 = 2,
    zorn_bg_maze2 = 3,  // also every value not listed here
    zorn_bg_bubbles = 4,
    zorn_bg_maze3 = 5,
};

// (size + 256) with the low 8 bits cleared: 600 gives 768, 768 gives 1024.
int zorn_background_round(int size);

// Fills the whole bitmap with the pattern of `style` in the record's three colours.
void zorn_paint_background(zorn_bitmap& bitmap, int style, const zorn_background_theme& colors);

class zorn_background_cache {
public:
    zorn_background_cache() = default;
    ~zorn_background_cache() { delete bitmap; }
    zorn_background_cache(const zorn_background_cache&) = delete;
    zorn_background_cache& operator=(const zorn_background_cache&) = delete;

    // Rebuilds when forced, when there is no bitmap, when the client size exceeds it on either
    // side, or when style or theme differ from what it was drawn with. True when it rebuilt.
    bool update(int client_width, int client_height, int style, int theme_index,
                const zorn_background_theme& colors, bool force);

    zorn_bitmap* bitmap = nullptr;  // may be null
    int width = -1;
    int height = -1;
    int drawn_style = -1;  // theme_bg_setting it was drawn with
    int drawn_theme = -1;  // current_background_theme it was drawn with
};
