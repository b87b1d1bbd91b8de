#pragma once
// Text painted straight into a bitmap's pixel rows. The coverage of each glyph (the green channel
// of the font's picture of it) is read once per font change, and a repaint opens the target's
// pixels once: no device context and no per-glyph pixel access at paint time. The blending is
// that of zorn_bitmap's DrawTextGlyph and DrawTextGlyphTransparent, to the last bit.

#include <wx/rawbmp.h>

#include <cstdint>
#include <vector>

#include "base/rgb.h"

class zorn_bitmap;
class zorn_font;

class zorn_glyph_masks {
public:
    struct glyph {
        int width = 0;
        int height = 0;
        std::vector<uint8_t> coverage;  // width x height, row by row
    };

    // Reads every glyph picture of the font; a null font leaves no glyphs.
    void load(const zorn_font* font);
    // A byte is drawn with the glyph of its low 7 bits; control characters have none.
    const glyph& of(unsigned char byte) const { return glyphs[byte & 0x7f]; }

private:
    glyph glyphs[128];
};

class zorn_pixel_painter {
public:
    explicit zorn_pixel_painter(zorn_bitmap& bitmap);
    bool ok() const { return origin != nullptr; }
    int width() const { return pixels_wide; }
    int height() const { return pixels_high; }

    // Every pixel the colour, alpha 255.
    void clear(const zorn_rgb& color);
    // Corners included; clipped.
    void fill_rectangle(int x1, int y1, int x2, int y2, const zorn_rgb& color);
    // Draws length bytes with the glyphs' tops at y, from x on, and answers the x behind the text
    // (or a value at or beyond the width once nothing more can show). With a null background each
    // glyph blends over the pixels; with one, every pixel of the glyph's cell is painted.
    int draw_text(const zorn_glyph_masks& masks, const char* text, int length, int x, int y, const zorn_rgb& foreground,
                  const zorn_rgb* background);

private:
    void draw_glyph(const zorn_glyph_masks::glyph& g, int x, int y, const zorn_rgb& fg, const zorn_rgb* bg);

    wxAlphaPixelData data;
    unsigned char* origin = nullptr;
    int stride = 0;
    int pixels_wide = 0;
    int pixels_high = 0;
};
