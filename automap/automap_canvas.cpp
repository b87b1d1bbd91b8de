#include "automap/automap_canvas.h"

#include <algorithm>
#include <cstdlib>

void automap_canvas::resize(int width, int height) {
    w = std::max(width, 1);
    h = std::max(height, 1);
    pixels.assign(static_cast<size_t>(w) * h, 0);
}

zorn_rgb automap_canvas::pixel(int x, int y) const {
    if (x < 0 || y < 0 || x >= w || y >= h) return zorn_rgb();
    const uint32_t v = pixels[static_cast<size_t>(y) * w + x];
    return zorn_rgb(static_cast<int>(v >> 16), static_cast<int>((v >> 8) & 255), static_cast<int>(v & 255));
}

void automap_canvas::clear(const zorn_rgb& color) { std::fill(pixels.begin(), pixels.end(), pack(color)); }

void automap_canvas::span(int y, int x1, int x2, uint32_t value) {
    if (y < 0 || y >= h) return;
    if (x1 > x2) std::swap(x1, x2);
    x1 = std::max(x1, 0);
    x2 = std::min(x2, w - 1);
    if (x1 > x2) return;
    uint32_t* p = &pixels[static_cast<size_t>(y) * w];
    std::fill(p + x1, p + x2 + 1, value);
}

// Walks the longer axis one pixel at a time; the shorter one moves when the accumulated error
// passes half a step. A gradient spreads its change over the pixels walked.
namespace {

template <typename Plot>
void walk_line(int x1, int y1, int x2, int y2, Plot plot) {
    const int dx = std::abs(x2 - x1), dy = std::abs(y2 - y1);
    const int sx = x2 > x1 ? 1 : -1, sy = y2 > y1 ? 1 : -1;
    const int n = std::max(dx, dy);
    int x = x1, y = y1;
    int err = 2 * std::min(dx, dy) - n;
    for (int i = 0; i <= n; i++) {
        plot(i, n, x, y);
        if (dx >= dy) {
            x += sx;
            if (err >= 0 && dy) {
                y += sy;
                err -= 2 * dx;
            }
            err += 2 * dy;
        } else {
            y += sy;
            if (err >= 0 && dx) {
                x += sx;
                err -= 2 * dy;
            }
            err += 2 * dx;
        }
    }
}

int blend(int from, int to, int i, int n) { return n == 0 ? from : from + (to - from) * i / (n + 1); }

}  // namespace

void automap_canvas::line(int x1, int y1, int x2, int y2, const zorn_rgb& color) {
    if (y1 == y2) {
        span(y1, x1, x2, pack(color));
        return;
    }
    walk_line(x1, y1, x2, y2, [&](int, int, int x, int y) { set_pixel(x, y, color); });
}

void automap_canvas::gradient_line(int x1, int y1, int x2, int y2, const zorn_rgb& from, const zorn_rgb& to) {
    walk_line(x1, y1, x2, y2, [&](int i, int n, int x, int y) {
        set_pixel(x, y,
                  zorn_rgb(blend(from.red, to.red, i, n), blend(from.green, to.green, i, n),
                           blend(from.blue, to.blue, i, n)));
    });
}

void automap_canvas::filled_rectangle(int x1, int y1, int x2, int y2, const zorn_rgb& color) {
    if (y1 > y2) std::swap(y1, y2);
    const uint32_t value = pack(color);
    for (int y = std::max(y1, 0); y <= std::min(y2, h - 1); y++) span(y, x1, x2, value);
}

void automap_canvas::x_gradient_rectangle(int x1, int y1, int x2, int y2, const zorn_rgb& from, const zorn_rgb& to) {
    if (x1 > x2) std::swap(x1, x2);
    if (y1 > y2) std::swap(y1, y2);
    const int size = x2 - x1;
    for (int x = x1; x <= x2; x++) {
        const int i = x - x1 + 1;
        const zorn_rgb c(from.red + (to.red - from.red) * i / (size + 2),
                         from.green + (to.green - from.green) * i / (size + 2),
                         from.blue + (to.blue - from.blue) * i / (size + 2));
        for (int y = y1; y <= y2; y++) set_pixel(x, y, c);
    }
}

void automap_canvas::y_gradient_rectangle(int x1, int y1, int x2, int y2, const zorn_rgb& from, const zorn_rgb& to) {
    if (x1 > x2) std::swap(x1, x2);
    if (y1 > y2) std::swap(y1, y2);
    const int size = y2 - y1;
    for (int y = y1; y <= y2; y++) {
        const int i = y - y1 + 1;
        span(y, x1, x2,
             pack(zorn_rgb(from.red + (to.red - from.red) * i / (size + 2),
                           from.green + (to.green - from.green) * i / (size + 2),
                           from.blue + (to.blue - from.blue) * i / (size + 2))));
    }
}

// Even-odd fill sampled at pixel centres, then the outline over it.
void automap_canvas::polygon(int count, const int* points, int x, int y, const zorn_rgb& border,
                             const zorn_rgb& fill) {
    constexpr int most = 16;
    if (!points || count < 3 || count > most) return;
    int top = points[1], bottom = points[1];
    for (int i = 1; i < count; i++) {
        top = std::min(top, points[2 * i + 1]);
        bottom = std::max(bottom, points[2 * i + 1]);
    }
    const uint32_t fill_value = pack(fill);
    for (int py = top; py <= bottom; py++) {
        const double cy = py + 0.5;
        double crossings[most];
        int n = 0;
        for (int i = 0; i < count; i++) {
            const int j = (i + 1) % count;
            const double ay = points[2 * i + 1], by = points[2 * j + 1];
            if ((ay <= cy) == (by <= cy)) continue;
            const double ax = points[2 * i], bx = points[2 * j];
            crossings[n++] = ax + (cy - ay) * (bx - ax) / (by - ay);
        }
        std::sort(crossings, crossings + n);
        for (int k = 0; k + 1 < n; k += 2) {
            const int from = static_cast<int>(crossings[k] + 0.5), to = static_cast<int>(crossings[k + 1] - 0.5);
            if (from <= to) span(py + y, from + x, to + x, fill_value);
        }
    }
    for (int i = 0; i < count; i++) {
        const int j = (i + 1) % count;
        line(points[2 * i] + x, points[2 * i + 1] + y, points[2 * j] + x, points[2 * j + 1] + y, border);
    }
}

void automap_canvas::copy_from(const automap_canvas& source, int x, int y) {
    const int first_col = std::max(0, -x), first_row = std::max(0, -y);
    const int last_col = std::min(source.w, w - x), last_row = std::min(source.h, h - y);
    if (first_col >= last_col) return;
    for (int r = first_row; r < last_row; r++) {
        const uint32_t* s = &source.pixels[static_cast<size_t>(r) * source.w + first_col];
        std::copy(s, s + (last_col - first_col), &pixels[static_cast<size_t>(r + y) * w + x + first_col]);
    }
}
