#include "display/glyph_painter.h"

#include <algorithm>
#include <cstring>

#include "theme/bitmap.h"
#include "theme/font.h"

namespace {

constexpr int red_at = wxAlphaPixelFormat::RED;
constexpr int green_at = wxAlphaPixelFormat::GREEN;
constexpr int blue_at = wxAlphaPixelFormat::BLUE;
constexpr int alpha_at = wxAlphaPixelFormat::ALPHA;
constexpr int pixel_bytes = wxAlphaPixelFormat::SizePixel;

}  // namespace

void zorn_glyph_masks::load(const zorn_font* font) {
    for (glyph& g : glyphs) g = glyph();
    if (!font) return;
    for (int code = zorn_first_glyph; code <= zorn_last_glyph; ++code) {
        const zorn_bitmap* picture = font->glyph(code);
        if (!picture) continue;
        wxAlphaPixelData pixels(const_cast<zorn_bitmap&>(*picture));
        if (!pixels) continue;
        glyph& g = glyphs[code];
        g.width = pixels.GetWidth();
        g.height = pixels.GetHeight();
        g.coverage.resize(static_cast<size_t>(g.width) * static_cast<size_t>(g.height));
        wxAlphaPixelData::Iterator it(pixels);
        const unsigned char* origin = it.m_ptr;
        const int stride = pixels.GetRowStride();
        for (int row = 0; row < g.height; ++row)
            for (int col = 0; col < g.width; ++col)
                g.coverage[static_cast<size_t>(row * g.width + col)] = origin[row * stride + col * pixel_bytes + green_at];
    }
}

zorn_pixel_painter::zorn_pixel_painter(zorn_bitmap& bitmap) : data(bitmap) {
    if (!data) return;
    wxAlphaPixelData::Iterator it(data);
    origin = it.m_ptr;
    stride = data.GetRowStride();
    pixels_wide = data.GetWidth();
    pixels_high = data.GetHeight();
}

void zorn_pixel_painter::clear(const zorn_rgb& color) {
    fill_rectangle(0, 0, pixels_wide - 1, pixels_high - 1, color);
}

void zorn_pixel_painter::fill_rectangle(int x1, int y1, int x2, int y2, const zorn_rgb& color) {
    if (!ok()) return;
    if (x1 > x2) std::swap(x1, x2);
    if (y1 > y2) std::swap(y1, y2);
    x1 = std::max(x1, 0);
    y1 = std::max(y1, 0);
    x2 = std::min(x2, pixels_wide - 1);
    y2 = std::min(y2, pixels_high - 1);
    if (x1 > x2 || y1 > y2) return;
    unsigned char pixel[pixel_bytes];
    pixel[red_at] = static_cast<unsigned char>(color.red);
    pixel[green_at] = static_cast<unsigned char>(color.green);
    pixel[blue_at] = static_cast<unsigned char>(color.blue);
    pixel[alpha_at] = 255;
    // One row is built pixel by pixel, the others are copies of it.
    unsigned char* first = origin + y1 * stride + x1 * pixel_bytes;
    for (int x = x1; x <= x2; ++x) std::memcpy(first + (x - x1) * pixel_bytes, pixel, pixel_bytes);
    const size_t row_bytes = static_cast<size_t>(x2 - x1 + 1) * pixel_bytes;
    for (int y = y1 + 1; y <= y2; ++y) std::memcpy(origin + y * stride + x1 * pixel_bytes, first, row_bytes);
}

int zorn_pixel_painter::draw_text(const zorn_glyph_masks& masks, const char* text, int length, int x, int y,
                                  const zorn_rgb& foreground, const zorn_rgb* background) {
    if (!ok() || !text || x >= pixels_wide || y >= pixels_high) return x;
    for (int i = 0; i < length && x < pixels_wide; ++i) {
        const zorn_glyph_masks::glyph& g = masks.of(static_cast<unsigned char>(text[i]));
        if (g.width == 0) continue;
        if (x + g.width > 0) draw_glyph(g, x, y, foreground, background);
        x += g.width;
    }
    return x;
}

void zorn_pixel_painter::draw_glyph(const zorn_glyph_masks::glyph& g, int x, int y, const zorn_rgb& fg,
                                    const zorn_rgb* bg) {
    const int first_col = std::max(0, -x);
    const int first_row = std::max(0, -y);
    const int last_col = std::min(g.width, pixels_wide - x);
    const int last_row = std::min(g.height, pixels_high - y);
    const int fr = fg.red, fgr = fg.green, fb = fg.blue;
    for (int row = first_row; row < last_row; ++row) {
        const uint8_t* cover = g.coverage.data() + row * g.width;
        unsigned char* p = origin + (y + row) * stride + (x + first_col) * pixel_bytes;
        if (bg) {
            const int br = bg->red, bgr = bg->green, bb = bg->blue;
            for (int col = first_col; col < last_col; ++col, p += pixel_bytes) {
                const int a = cover[col];
                if (a == 0) {
                    p[red_at] = static_cast<unsigned char>(br);
                    p[green_at] = static_cast<unsigned char>(bgr);
                    p[blue_at] = static_cast<unsigned char>(bb);
                } else {
                    const int rest = 255 - a;
                    p[red_at] = static_cast<unsigned char>((fr * a + br * rest) >> 8);
                    p[green_at] = static_cast<unsigned char>((fgr * a + bgr * rest) >> 8);
                    p[blue_at] = static_cast<unsigned char>((fb * a + bb * rest) >> 8);
                }
            }
        } else {
            for (int col = first_col; col < last_col; ++col, p += pixel_bytes) {
                const int a = cover[col];
                if (a == 0) continue;
                const int rest = 255 - a;
                p[red_at] = static_cast<unsigned char>((fr * a + p[red_at] * rest) >> 8);
                p[green_at] = static_cast<unsigned char>((fgr * a + p[green_at] * rest) >> 8);
                p[blue_at] = static_cast<unsigned char>((fb * a + p[blue_at] * rest) >> 8);
            }
        }
    }
}
