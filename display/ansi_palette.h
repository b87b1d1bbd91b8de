#pragma once
// The four ANSI colour palettes. Colour codes are in parser form: the decimal text of a code read
// in base 16, so "31" is 0x31 = 49 and "37" is 0x37 = 55.

#include "base/rgb.h"

enum : int {
    zorn_ansi_red = 0x31,
    zorn_ansi_green = 0x32,
    zorn_ansi_yellow = 0x33,
    zorn_ansi_blue = 0x34,
    zorn_ansi_purple = 0x35,
    zorn_ansi_cyan = 0x36,
    zorn_ansi_white = 0x37,
};

// Values of ansi_attributes: one at a time, a new code replaces the old one.
enum : int {
    zorn_ansi_plain = 0,
    zorn_ansi_blink = 2,
    zorn_ansi_bright = 4,
    zorn_ansi_dim = 8,
    zorn_ansi_inverse = 16,
};

constexpr int zorn_palette_count = 4;

// Eight colours (white, red, yellow, green, cyan, blue, purple, code 0) at three levels (dim,
// normal, bright).
struct zorn_ansi_palette {
    zorn_rgb color[8][3];
};

extern const zorn_ansi_palette zorn_ansi_palettes[zorn_palette_count];
// The palette in force; text that arrives later takes its colours from it.
extern const zorn_ansi_palette* zorn_current_palette;

// Points the global at palette n (0 default, 1 bright, 2 and 3 the two styles); other values
// select 0.
void zorn_select_palette(int font_colors_setting);
// "default", "bright", "ZMud-style", "GMud-style".
const char* zorn_palette_name(int font_colors_setting);
// The place of a colour code in a palette, or -1 for a code that isn't 0 or 49 to 55.
int zorn_palette_slot(int ansi_color);
// The colour of a code at the level that the attributes choose: bright if bit 4, else dim if
// bit 8, else normal. The code must have a slot.
zorn_rgb zorn_palette_color(const zorn_ansi_palette& palette, int ansi_color, int attributes);
