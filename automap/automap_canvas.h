#pragma once
// The automap's own drawing surface: packed 0xRRGGBB pixels in memory, so the procedural picture
// is drawn and checked without a window and copied to the screen bitmap in one pass. Every
// operation clips; coordinates may lie anywhere.

#include <cstddef>
#include <cstdint>
#include <vector>

#include "base/rgb.h"

class automap_canvas {
public:
    automap_canvas() = default;
    automap_canvas(int width, int height) { resize(width, height); }

    // Each side at least 1; the contents are black afterwards.
    void resize(int width, int height);
    int width() const { return w; }
    int height() const { return h; }
    const uint32_t* row(int y) const { return &pixels[static_cast<size_t>(y) * w]; }
    zorn_rgb pixel(int x, int y) const;
    bool operator==(const automap_canvas& other) const {
        return w == other.w && h == other.h && pixels == other.pixels;
    }

    void clear(const zorn_rgb& color);
    void set_pixel(int x, int y, const zorn_rgb& color) {
        if (x >= 0 && y >= 0 && x < w && y < h) pixels[static_cast<size_t>(y) * w + x] = pack(color);
    }
    // Both ends included.
    void line(int x1, int y1, int x2, int y2, const zorn_rgb& color);
    // The colour runs from `from` at the first end towards `to` at the last.
    void gradient_line(int x1, int y1, int x2, int y2, const zorn_rgb& from, const zorn_rgb& to);
    // Corners in any order, both included.
    void filled_rectangle(int x1, int y1, int x2, int y2, const zorn_rgb& color);
    // Left to right (x) or top to bottom (y); the last column or row stops short of `to`.
    void x_gradient_rectangle(int x1, int y1, int x2, int y2, const zorn_rgb& from, const zorn_rgb& to);
    void y_gradient_rectangle(int x1, int y1, int x2, int y2, const zorn_rgb& from, const zorn_rgb& to);
    // count points as (x, y) pairs, offset by x, y: filled, then outlined. 3 to 16 points.
    void polygon(int count, const int* points, int x, int y, const zorn_rgb& border, const zorn_rgb& fill);
    // The source's top left corner at x, y.
    void copy_from(const automap_canvas& source, int x, int y);

    static uint32_t pack(const zorn_rgb& c) {
        return (static_cast<uint32_t>(c.red & 255) << 16) | (static_cast<uint32_t>(c.green & 255) << 8) |
               static_cast<uint32_t>(c.blue & 255);
    }

private:
    void span(int y, int x1, int x2, uint32_t value);

    int w = 0;
    int h = 0;
    std::vector<uint32_t> pixels;
};
