#pragma once
// The drawing surface of every own widget: a 32-bit wxBitmap drawn pixel by pixel through
// wxAlphaPixelData. Text comes from the glyph pictures of a zorn_font, so painting never needs a
// device context. Every operation clips; coordinates may lie anywhere. When pixel access fails an
// operation draws nothing and logs at debug level 2; callers are not told.

#include <wx/bitmap.h>

#include "base/rgb.h"

class wxImage;
class zorn_font;

// Fixed colours used across the client.
inline constexpr zorn_rgb zorn_black{0, 0, 0};
inline constexpr zorn_rgb zorn_grey64{64, 64, 64};
inline constexpr zorn_rgb zorn_grey128{128, 128, 128};
inline constexpr zorn_rgb zorn_grey192{192, 192, 192};
inline constexpr zorn_rgb zorn_white{255, 255, 255};
inline constexpr zorn_rgb zorn_red{255, 0, 0};
inline constexpr zorn_rgb zorn_yellow{255, 255, 0};
inline constexpr zorn_rgb zorn_green{0, 255, 0};
inline constexpr zorn_rgb zorn_cyan{0, 255, 255};
inline constexpr zorn_rgb zorn_blue{0, 0, 255};
inline constexpr zorn_rgb zorn_magenta{255, 0, 255};

// DrawPolygon takes at most this many points less one; the edge table lives on the stack.
constexpr int zorn_polygon_point_limit = 1000;

class zorn_bitmap : public wxBitmap {
public:
    // 16 by 16; alpha 255 everywhere, colours undefined until Clear.
    zorn_bitmap();
    // width by height (each at least 1); alpha 255 everywhere, colours undefined until Clear.
    zorn_bitmap(int width, int height);
    // Keeps the image's alpha (no ClearAlpha).
    explicit zorn_bitmap(const wxImage& image);

    void ClearAlpha();
    void Clear(const zorn_rgb& color);
    // A separate copy of the whole of the other bitmap.
    void copy_from(const zorn_bitmap& other);

    // One pixel; outside the bitmap nothing happens. Opens pixel access for each call.
    void SetPixel(int x, int y, const zorn_rgb& color);
    void SetPixel(int x, int y, int red, int green, int blue);

    // Both ends included.
    void DrawLine(int x1, int y1, int x2, int y2, const zorn_rgb& color);
    // Colour runs from `from` at the first end towards `to` at the second.
    void DrawGradientLine(int x1, int y1, int x2, int y2, const zorn_rgb& from, const zorn_rgb& to);
    // Corners in any order, both included.
    void DrawFilledRectangle(int x1, int y1, int x2, int y2, const zorn_rgb& color);
    // Left to right; the last column stops short of `to`.
    void DrawXGradientRectangle(int x1, int y1, int x2, int y2, const zorn_rgb& from, const zorn_rgb& to);
    // Top to bottom; the last row stops short of `to`.
    void DrawYGradientRectangle(int x1, int y1, int x2, int y2, const zorn_rgb& from, const zorn_rgb& to);
    void DrawFilledCircle(int x, int y, int radius, const zorn_rgb& color);
    // points holds count (x, y) pairs; x and y are added to each. 3 to 999 points.
    void DrawPolygon(int count, const int* points, int x, int y, const zorn_rgb& border, const zorn_rgb& fill);

    // Copies the source's colours with its top left corner at x, y, alpha ignored.
    void DrawBitmapIgnoreAlpha(const zorn_bitmap& source, int x, int y);
    // Each channel becomes source channel x source alpha / 256; the target is not read, so a
    // transparent part of the source comes out black.
    void DrawBitmapUseAlpha(const zorn_bitmap& source, int x, int y);

    // Sum of glyph widths and height of the last glyph found. A byte selects the glyph of its low
    // 7 bits; control characters and 127 have none and take no room. A null text or font leaves
    // the results unset; an empty text gives 0, 0. Either pointer may be null.
    void MeasureText(const zorn_font* font, const char* text, int* width, int* height);
    // Text on a background of its own: every pixel of each glyph cell is painted.
    void DrawText(const zorn_font* font, const char* text, int x, int y, const zorn_rgb& foreground,
                  const zorn_rgb& background);
    // Text blended over what the bitmap holds.
    void DrawTextTransparent(const zorn_font* font, const char* text, int x, int y, const zorn_rgb& foreground);
    // One glyph picture (white on black, coverage in green) with its top left corner at x, y.
    void DrawTextGlyph(const zorn_bitmap& glyph, int x, int y, const zorn_rgb& foreground,
                       const zorn_rgb& background);
    void DrawTextGlyphTransparent(const zorn_bitmap& glyph, int x, int y, const zorn_rgb& foreground);
};
