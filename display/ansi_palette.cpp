#include "display/ansi_palette.h"

namespace {

constexpr zorn_rgb hex(unsigned value) {
    return zorn_rgb(static_cast<int>((value >> 16) & 0xff), static_cast<int>((value >> 8) & 0xff),
                    static_cast<int>(value & 0xff));
}

}  // namespace

// Each row dim, normal, bright. In the last palette the normal white is brighter than the bright
// one; that is how it is meant.
const zorn_ansi_palette zorn_ansi_palettes[zorn_palette_count] = {
    {{
        {hex(0x606060), hex(0xa0a0a0), hex(0xffffff)},
        {hex(0x550000), hex(0xaa0000), hex(0xff5555)},
        {hex(0x774000), hex(0xaa8800), hex(0xffff55)},
        {hex(0x005500), hex(0x00aa00), hex(0x55ff55)},
        {hex(0x008060), hex(0x0080aa), hex(0x40ffff)},
        {hex(0x000088), hex(0x0000cc), hex(0x5050ff)},
        {hex(0x550088), hex(0xaa00cc), hex(0xff40ff)},
        {hex(0x606060), hex(0xa0a0a0), hex(0xffffff)},
    }},
    {{
        {hex(0x404040), hex(0xcccccc), hex(0xffffff)},
        {hex(0x800000), hex(0xcc0000), hex(0xff8080)},
        {hex(0x808000), hex(0xcccc00), hex(0xffff80)},
        {hex(0x008000), hex(0x00cc00), hex(0x80ff80)},
        {hex(0x008080), hex(0x00cccc), hex(0x80ffff)},
        {hex(0x000080), hex(0x0000cc), hex(0x8080ff)},
        {hex(0x800080), hex(0xcc00cc), hex(0xff80ff)},
        {hex(0x404040), hex(0xcccccc), hex(0xffffff)},
    }},
    {{
        {hex(0x404040), hex(0x808080), hex(0xffffff)},
        {hex(0x400000), hex(0x800000), hex(0xff0000)},
        {hex(0x404000), hex(0x808000), hex(0xffff00)},
        {hex(0x008000), hex(0x00b300), hex(0x00ff00)},
        {hex(0x004040), hex(0x008080), hex(0x00ffff)},
        {hex(0x000040), hex(0x000080), hex(0x0000ff)},
        {hex(0x400040), hex(0x800080), hex(0xff00ff)},
        {hex(0x404040), hex(0x808080), hex(0xffffff)},
    }},
    {{
        {hex(0x404040), hex(0xffffff), hex(0x808080)},
        {hex(0x400000), hex(0x800000), hex(0xff0000)},
        {hex(0x404000), hex(0x808000), hex(0xffff00)},
        {hex(0x008000), hex(0x00b300), hex(0x00ff00)},
        {hex(0x004040), hex(0x008080), hex(0x00ffff)},
        {hex(0x000040), hex(0x000080), hex(0x0000ff)},
        {hex(0x400040), hex(0x800080), hex(0xff00ff)},
        {hex(0x404040), hex(0xffffff), hex(0x808080)},
    }},
};

const zorn_ansi_palette* zorn_current_palette = &zorn_ansi_palettes[0];

void zorn_select_palette(int font_colors_setting) {
    const int n = (font_colors_setting >= 0 && font_colors_setting < zorn_palette_count) ? font_colors_setting : 0;
    zorn_current_palette = &zorn_ansi_palettes[n];
}

const char* zorn_palette_name(int font_colors_setting) {
    static const char* const names[zorn_palette_count] = {"default", "bright", "ZMud-style", "GMud-style"};
    const int n = (font_colors_setting >= 0 && font_colors_setting < zorn_palette_count) ? font_colors_setting : 0;
    return names[n];
}

int zorn_palette_slot(int ansi_color) {
    switch (ansi_color) {
    case zorn_ansi_white: return 0;
    case zorn_ansi_red: return 1;
    case zorn_ansi_yellow: return 2;
    case zorn_ansi_green: return 3;
    case zorn_ansi_cyan: return 4;
    case zorn_ansi_blue: return 5;
    case zorn_ansi_purple: return 6;
    case 0: return 7;
    default: return -1;
    }
}

zorn_rgb zorn_palette_color(const zorn_ansi_palette& palette, int ansi_color, int attributes) {
    const int level = (attributes & zorn_ansi_bright) ? 2 : (attributes & zorn_ansi_dim) ? 0 : 1;
    const int slot = zorn_palette_slot(ansi_color);
    return palette.color[slot < 0 ? 0 : slot][level];
}
