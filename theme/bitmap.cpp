#include "theme/bitmap.h"

#include <wx/image.h>
#include <wx/rawbmp.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "config/debug_log.h"
#include "theme/font.h"

// Allocation failure of a bitmap is not handled: wx reports it and the pixel access then fails,
// which every operation answers with its log line and no drawing.

namespace {

constexpr int channel_red = wxAlphaPixelFormat::RED;
constexpr int channel_green = wxAlphaPixelFormat::GREEN;
constexpr int channel_blue = wxAlphaPixelFormat::BLUE;
constexpr int channel_alpha = wxAlphaPixelFormat::ALPHA;
constexpr int pixel_bytes = wxAlphaPixelFormat::SizePixel;

// Raw rows of a bitmap, opened on construction and closed when it goes out of scope.
class pixel_access {
public:
    explicit pixel_access(const wxBitmap& bitmap)
        : data(const_cast<wxBitmap&>(bitmap)) {
        if (!data) return;
        wxAlphaPixelData::Iterator it(data);
        origin = it.m_ptr;
        stride = data.GetRowStride();
        width = data.GetWidth();
        height = data.GetHeight();
    }
    bool ok() const { return origin != nullptr; }
    unsigned char* at(int x, int y) const { return origin + y * stride + x * pixel_bytes; }
    bool inside(int x, int y) const { return x >= 0 && y >= 0 && x < width && y < height; }
    void put(int x, int y, const zorn_rgb& color) const {
        if (!inside(x, y)) return;
        store(at(x, y), color.red, color.green, color.blue);
    }
    static void store(unsigned char* p, int red, int green, int blue) {
        p[channel_red] = (unsigned char)red;
        p[channel_green] = (unsigned char)green;
        p[channel_blue] = (unsigned char)blue;
    }

    int width = 0;
    int height = 0;

private:
    wxAlphaPixelData data;
    unsigned char* origin = nullptr;
    int stride = 0;
};

void log_failure(const char* message) {
    if (zorn_debug_level >= 2) zorn_client_debug_printf("%s", message);
}

int sign_of(int v) { return v < 0 ? -1 : (v > 0 ? 1 : 0); }

// A rectangle sorted and clipped to width by height; false when nothing of it is visible.
struct clip_box {
    int x1, y1, x2, y2;
};

bool clip_rectangle(int x1, int y1, int x2, int y2, int width, int height, clip_box* out) {
    if (x1 > x2) std::swap(x1, x2);
    if (y1 > y2) std::swap(y1, y2);
    if (x2 < 0 || y2 < 0 || x1 >= width || y1 >= height) return false;
    out->x1 = std::max(x1, 0);
    out->y1 = std::max(y1, 0);
    out->x2 = std::min(x2, width - 1);
    out->y2 = std::min(y2, height - 1);
    return true;
}

// Plain Bresenham over an open pixel access: steps along y when dx <= dy, from the end with the
// smaller coordinate on that axis.
void draw_line(const pixel_access& pixels, int x1, int y1, int x2, int y2, const zorn_rgb& color) {
    if (x1 == x2 && y1 == y2) {
        pixels.put(x1, y1, color);
        return;
    }
    const int dx = std::abs(x2 - x1);
    const int dy = std::abs(y2 - y1);
    if (dx <= dy) {
        if (y1 > y2) {
            std::swap(x1, x2);
            std::swap(y1, y2);
        }
        const int step = sign_of(x2 - x1);
        int error = dy / 2;
        for (int y = y1, x = x1; y <= y2; y++) {
            pixels.put(x, y, color);
            error -= dx;
            if (error < 0) {
                error += dy;
                x += step;
            }
        }
    } else {
        if (x1 > x2) {
            std::swap(x1, x2);
            std::swap(y1, y2);
        }
        const int step = sign_of(y2 - y1);
        int error = dx / 2;
        for (int x = x1, y = y1; x <= x2; x++) {
            pixels.put(x, y, color);
            error -= dy;
            if (error < 0) {
                error += dx;
                y += step;
            }
        }
    }
}

// One glyph over an open target. With `background` null the glyph blends over the target.
void draw_glyph(const pixel_access& target, const pixel_access& glyph, int x, int y, const zorn_rgb& foreground,
                const zorn_rgb* background) {
    const int first_col = std::max(0, -x);
    const int first_row = std::max(0, -y);
    const int last_col = std::min(glyph.width, target.width - x);
    const int last_row = std::min(glyph.height, target.height - y);
    for (int row = first_row; row < last_row; row++) {
        for (int col = first_col; col < last_col; col++) {
            const int a = glyph.at(col, row)[channel_green];
            unsigned char* p = target.at(x + col, y + row);
            if (background) {
                const zorn_rgb& bg = *background;
                if (a == 0)
                    pixel_access::store(p, bg.red, bg.green, bg.blue);
                else
                    pixel_access::store(p, (foreground.red * a + bg.red * (255 - a)) / 256,
                                        (foreground.green * a + bg.green * (255 - a)) / 256,
                                        (foreground.blue * a + bg.blue * (255 - a)) / 256);
            } else if (a != 0) {
                pixel_access::store(p, (foreground.red * a + p[channel_red] * (255 - a)) / 256,
                                    (foreground.green * a + p[channel_green] * (255 - a)) / 256,
                                    (foreground.blue * a + p[channel_blue] * (255 - a)) / 256);
            }
        }
    }
}

}  // namespace

zorn_bitmap::zorn_bitmap() : zorn_bitmap(16, 16) {}

zorn_bitmap::zorn_bitmap(int width, int height) : wxBitmap(std::max(width, 1), std::max(height, 1), 32) {
    ClearAlpha();
}

zorn_bitmap::zorn_bitmap(const wxImage& image) : wxBitmap(image, -1, 1.0) {}

void zorn_bitmap::ClearAlpha() {
    pixel_access pixels(*this);
    if (!pixels.ok()) {
        log_failure("Error in zorn_bitmap::ClearAlpha(), pixel data failed?\n");
        return;
    }
    for (int y = 0; y < pixels.height; y++) {
        unsigned char* p = pixels.at(0, y);
        for (int x = 0; x < pixels.width; x++, p += pixel_bytes) p[channel_alpha] = 255;
    }
}

void zorn_bitmap::Clear(const zorn_rgb& color) {
    pixel_access pixels(*this);
    if (!pixels.ok()) {
        log_failure("Error in zorn_bitmap::Clear(), pixel data failed?\n");
        return;
    }
    for (int y = 0; y < pixels.height; y++) {
        unsigned char* p = pixels.at(0, y);
        for (int x = 0; x < pixels.width; x++, p += pixel_bytes) {
            pixel_access::store(p, color.red, color.green, color.blue);
            p[channel_alpha] = 255;
        }
    }
}

void zorn_bitmap::copy_from(const zorn_bitmap& other) {
    if (!other.IsOk()) return;
    wxBitmap::operator=(other.GetSubBitmap(wxRect(0, 0, other.GetWidth(), other.GetHeight())));
}

void zorn_bitmap::SetPixel(int x, int y, const zorn_rgb& color) {
    if (x < 0 || y < 0 || x >= GetWidth() || y >= GetHeight()) return;
    pixel_access pixels(*this);
    if (pixels.ok()) pixels.put(x, y, color);
}

void zorn_bitmap::SetPixel(int x, int y, int red, int green, int blue) {
    SetPixel(x, y, zorn_rgb(red, green, blue));
}

void zorn_bitmap::DrawLine(int x1, int y1, int x2, int y2, const zorn_rgb& color) {
    pixel_access pixels(*this);
    if (pixels.ok()) draw_line(pixels, x1, y1, x2, y2, color);
}

void zorn_bitmap::DrawGradientLine(int x1, int y1, int x2, int y2, const zorn_rgb& from, const zorn_rgb& to) {
    pixel_access pixels(*this);
    if (!pixels.ok()) return;
    const int dx = std::abs(x2 - x1);
    const int dy = std::abs(y2 - y1);
    const bool along_y = dx <= dy;
    const int n = std::max(dx, dy);
    const int m = std::min(dx, dy);
    const int step_x = sign_of(x2 - x1);
    const int step_y = sign_of(y2 - y1);
    int red = from.red * 256, green = from.green * 256, blue = from.blue * 256;
    const int step_red = (to.red - from.red) * 256 / (n + 1);
    const int step_green = (to.green - from.green) * 256 / (n + 1);
    const int step_blue = (to.blue - from.blue) * 256 / (n + 1);
    int error = -(n / 2);
    int x = x1, y = y1;
    for (int i = 0; i <= n; i++) {
        pixels.put(x, y, zorn_rgb(red / 256, green / 256, blue / 256));
        red += step_red;
        green += step_green;
        blue += step_blue;
        if (along_y)
            y += step_y;
        else
            x += step_x;
        if (error + m >= 0) {
            if (along_y)
                x += step_x;
            else
                y += step_y;
            error = error + m - n;
        } else {
            error += m;
        }
    }
}

void zorn_bitmap::DrawFilledRectangle(int x1, int y1, int x2, int y2, const zorn_rgb& color) {
    pixel_access pixels(*this);
    if (!pixels.ok()) {
        log_failure("Error in zorn_bitmap::DrawFilledRectangle(), pixel data failed?\n");
        return;
    }
    clip_box box;
    if (!clip_rectangle(x1, y1, x2, y2, pixels.width, pixels.height, &box)) return;
    for (int y = box.y1; y <= box.y2; y++) {
        unsigned char* p = pixels.at(box.x1, y);
        for (int x = box.x1; x <= box.x2; x++, p += pixel_bytes)
            pixel_access::store(p, color.red, color.green, color.blue);
    }
}

void zorn_bitmap::DrawXGradientRectangle(int x1, int y1, int x2, int y2, const zorn_rgb& from, const zorn_rgb& to) {
    pixel_access pixels(*this);
    if (!pixels.ok()) {
        log_failure("Error in zorn_bitmap::DrawXGradientRectangle(), pixel data failed?\n");
        return;
    }
    clip_box box;
    if (!clip_rectangle(x1, y1, x2, y2, pixels.width, pixels.height, &box)) return;
    const int size = std::abs(x2 - x1);
    const int step_red = (to.red - from.red) * 256 / (size + 2);
    const int step_green = (to.green - from.green) * 256 / (size + 2);
    const int step_blue = (to.blue - from.blue) * 256 / (size + 2);
    int red = from.red * 256, green = from.green * 256, blue = from.blue * 256;
    for (int x = box.x1; x <= box.x2; x++) {
        red += step_red;
        green += step_green;
        blue += step_blue;
        for (int y = box.y1; y <= box.y2; y++)
            pixel_access::store(pixels.at(x, y), red / 256, green / 256, blue / 256);
    }
}

void zorn_bitmap::DrawYGradientRectangle(int x1, int y1, int x2, int y2, const zorn_rgb& from, const zorn_rgb& to) {
    pixel_access pixels(*this);
    if (!pixels.ok()) {
        log_failure("Error in zorn_bitmap::DrawYGradientRectangle(), pixel data failed?\n");
        return;
    }
    clip_box box;
    if (!clip_rectangle(x1, y1, x2, y2, pixels.width, pixels.height, &box)) return;
    const int size = std::abs(y2 - y1);
    const int step_red = (to.red - from.red) * 256 / (size + 2);
    const int step_green = (to.green - from.green) * 256 / (size + 2);
    const int step_blue = (to.blue - from.blue) * 256 / (size + 2);
    int red = from.red * 256, green = from.green * 256, blue = from.blue * 256;
    for (int y = box.y1; y <= box.y2; y++) {
        red += step_red;
        green += step_green;
        blue += step_blue;
        unsigned char* p = pixels.at(box.x1, y);
        for (int x = box.x1; x <= box.x2; x++, p += pixel_bytes)
            pixel_access::store(p, red / 256, green / 256, blue / 256);
    }
}

void zorn_bitmap::DrawFilledCircle(int x, int y, int radius, const zorn_rgb& color) {
    pixel_access pixels(*this);
    if (!pixels.ok()) {
        log_failure("Error in zorn_bitmap::DrawFilledCircle(), pixel data failed?\n");
        return;
    }
    if (radius < 0) radius = 0;
    const int first_row = std::max(y - radius, 0);
    const int last_row = std::min(y + radius, pixels.height - 1);
    for (int row = first_row; row <= last_row; row++) {
        const int d = row - y;
        const int square = radius * (radius + 1) - d * d;
        const int half = square > 0 ? (int)std::sqrt((double)square) : 0;
        const int left = std::max(x - half, 0);
        const int right = std::min(x + half, pixels.width - 1);
        if (left > right) continue;
        unsigned char* p = pixels.at(left, row);
        for (int col = left; col <= right; col++, p += pixel_bytes)
            pixel_access::store(p, color.red, color.green, color.blue);
    }
}

namespace {

struct polygon_edge {
    int y_top;
    int y_bottom;
    int seen;
    double slope;  // change of x per line
    double x;      // x of the upper end, moved down line by line
};

void sort_edges(polygon_edge* edges, int count) {
    for (int pass = 0; pass < count - 1; pass++) {
        bool swapped = false;
        for (int i = 0; i < count - 1 - pass; i++) {
            if (edges[i].x > edges[i + 1].x) {
                std::swap(edges[i], edges[i + 1]);
                swapped = true;
            }
        }
        if (!swapped) return;
    }
}

int build_edges(int count, const int* points, int x, int y, polygon_edge* edges) {
    int used = 0;
    for (int i = 0; i < count; i++) {
        const int j = (i + count - 1) % count;
        int ax = points[2 * j] + x, ay = points[2 * j + 1] + y;
        int bx = points[2 * i] + x, by = points[2 * i + 1] + y;
        if (ay == by) continue;
        if (ay > by) {
            std::swap(ax, bx);
            std::swap(ay, by);
        }
        polygon_edge& e = edges[used++];
        e.y_top = ay;
        e.y_bottom = by;
        e.seen = 0;
        e.slope = (double)(bx - ax) / (double)(by - ay);
        e.x = ax;
    }
    return used;
}

// One scan line: x values of the active edges in pairs; an edge gives none on its first line.
void fill_scan_line(const pixel_access& pixels, polygon_edge* edges, int count, int y, const zorn_rgb& fill) {
    int pending = 0;
    bool have_pending = false;
    for (int i = 0; i < count; i++) {
        polygon_edge& e = edges[i];
        if (e.y_top > y) continue;
        if (!e.seen) {
            e.seen = 1;
            continue;
        }
        const int value = (int)e.x;
        if (have_pending) {
            draw_line(pixels, pending, y, value, y, fill);
            have_pending = false;
        } else {
            pending = value;
            have_pending = true;
        }
    }
}

}  // namespace

void zorn_bitmap::DrawPolygon(int count, const int* points, int x, int y, const zorn_rgb& border,
                              const zorn_rgb& fill) {
    if (count < 3) {
        if (zorn_debug_level >= 1)
            zorn_client_debug_printf("Error in zorn_bitmap::DrawPolygon(), only got %d points, need a minimum of 3.\n",
                                     count);
        return;
    }
    if (count >= zorn_polygon_point_limit) {
        if (zorn_debug_level >= 1)
            zorn_client_debug_printf("Error in zorn_bitmap::DrawPolygon(), got %d points, max is %d.\n", count,
                                     zorn_polygon_point_limit);
        return;
    }
    if (!points) return;
    pixel_access pixels(*this);
    if (!pixels.ok()) return;

    polygon_edge edges[zorn_polygon_point_limit];
    int active = build_edges(count, points, x, y, edges);
    if (active > 0) {
        int first = edges[0].y_top, last = edges[0].y_bottom;
        for (int i = 1; i < active; i++) {
            first = std::min(first, edges[i].y_top);
            last = std::max(last, edges[i].y_bottom);
        }
        sort_edges(edges, active);
        for (int line = first; line <= last && active > 0; line++) {
            fill_scan_line(pixels, edges, active, line, fill);
            int kept = 0;
            for (int i = 0; i < active; i++) {
                if (edges[i].y_bottom <= line) continue;
                polygon_edge e = edges[i];
                if (e.y_top <= line) {
                    e.y_top = line + 1;
                    e.x += e.slope;
                }
                edges[kept++] = e;
            }
            active = kept;
            sort_edges(edges, active);
        }
    }
    for (int i = 0; i < count; i++) {
        const int j = (i + count - 1) % count;
        draw_line(pixels, points[2 * i] + x, points[2 * i + 1] + y, points[2 * j] + x, points[2 * j + 1] + y, border);
    }
}

void zorn_bitmap::DrawBitmapIgnoreAlpha(const zorn_bitmap& source, int x, int y) {
    pixel_access target(*this);
    if (!target.ok()) {
        log_failure("Error in zorn_bitmap::DrawBitmapIgnoreAlpha(), pixel data dest failed?\n");
        return;
    }
    pixel_access from(source);
    if (!from.ok()) {
        log_failure("Error in zorn_bitmap::DrawBitmapIgnoreAlpha(), pixel data src failed?\n");
        return;
    }
    const int first_col = std::max(0, -x), first_row = std::max(0, -y);
    const int last_col = std::min(from.width, target.width - x);
    const int last_row = std::min(from.height, target.height - y);
    for (int row = first_row; row < last_row; row++) {
        const unsigned char* s = from.at(first_col, row);
        unsigned char* d = target.at(x + first_col, y + row);
        for (int col = first_col; col < last_col; col++, s += pixel_bytes, d += pixel_bytes)
            pixel_access::store(d, s[channel_red], s[channel_green], s[channel_blue]);
    }
}

void zorn_bitmap::DrawBitmapUseAlpha(const zorn_bitmap& source, int x, int y) {
    pixel_access target(*this);
    if (!target.ok()) {
        log_failure("Error in zorn_bitmap::DrawBitmapUseAlpha(), pixel data dest failed?\n");
        return;
    }
    pixel_access from(source);
    if (!from.ok()) {
        log_failure("Error in zorn_bitmap::DrawBitmapUseAlpha(), pixel data src failed?\n");
        return;
    }
    const int first_col = std::max(0, -x), first_row = std::max(0, -y);
    const int last_col = std::min(from.width, target.width - x);
    const int last_row = std::min(from.height, target.height - y);
    for (int row = first_row; row < last_row; row++) {
        const unsigned char* s = from.at(first_col, row);
        unsigned char* d = target.at(x + first_col, y + row);
        for (int col = first_col; col < last_col; col++, s += pixel_bytes, d += pixel_bytes) {
            const int a = s[channel_alpha];
            pixel_access::store(d, s[channel_red] * a / 256, s[channel_green] * a / 256, s[channel_blue] * a / 256);
        }
    }
}

void zorn_bitmap::MeasureText(const zorn_font* font, const char* text, int* width, int* height) {
    if (!font) return;
    font->measure_text(text, width, height);
}

namespace {

// The walk shared by DrawText and DrawTextTransparent: the target is opened once for the whole
// text, each glyph once.
void draw_text(zorn_bitmap& bitmap, const zorn_font* font, const char* text, int x, int y,
               const zorn_rgb& foreground, const zorn_rgb* background, const char* dest_message,
               const char* src_message) {
    if (!text || !font || x >= bitmap.GetWidth() || y >= bitmap.GetHeight()) return;
    pixel_access target(bitmap);
    if (!target.ok()) {
        log_failure(dest_message);
        return;
    }
    for (const unsigned char* p = (const unsigned char*)text; *p && x < target.width; p++) {
        const zorn_bitmap* glyph = font->glyph(*p & 0x7f);
        if (!glyph) continue;
        const int glyph_width = glyph->GetWidth();
        if (x + glyph_width > 0) {
            pixel_access pixels(*glyph);
            if (!pixels.ok()) {
                log_failure(src_message);
                return;
            }
            draw_glyph(target, pixels, x, y, foreground, background);
        }
        x += glyph_width;
    }
}

}  // namespace

void zorn_bitmap::DrawText(const zorn_font* font, const char* text, int x, int y, const zorn_rgb& foreground,
                           const zorn_rgb& background) {
    draw_text(*this, font, text, x, y, foreground, &background,
              "Error in zorn_bitmap::DrawTextGlyph(), pixel data dest failed?\n",
              "Error in zorn_bitmap::DrawTextGlyph(), pixel data src failed?\n");
}

void zorn_bitmap::DrawTextTransparent(const zorn_font* font, const char* text, int x, int y,
                                      const zorn_rgb& foreground) {
    draw_text(*this, font, text, x, y, foreground, nullptr,
              "Error in zorn_bitmap::DrawTextGlyphTransparent(), pixel data dest failed?\n",
              "Error in zorn_bitmap::DrawTextGlyphTransparent(), pixel data src failed?\n");
}

void zorn_bitmap::DrawTextGlyph(const zorn_bitmap& glyph, int x, int y, const zorn_rgb& foreground,
                                const zorn_rgb& background) {
    pixel_access target(*this);
    if (!target.ok()) {
        log_failure("Error in zorn_bitmap::DrawTextGlyph(), pixel data dest failed?\n");
        return;
    }
    pixel_access pixels(glyph);
    if (!pixels.ok()) {
        log_failure("Error in zorn_bitmap::DrawTextGlyph(), pixel data src failed?\n");
        return;
    }
    draw_glyph(target, pixels, x, y, foreground, &background);
}

void zorn_bitmap::DrawTextGlyphTransparent(const zorn_bitmap& glyph, int x, int y, const zorn_rgb& foreground) {
    pixel_access target(*this);
    if (!target.ok()) {
        log_failure("Error in zorn_bitmap::DrawTextGlyphTransparent(), pixel data dest failed?\n");
        return;
    }
    pixel_access pixels(glyph);
    if (!pixels.ok()) {
        log_failure("Error in zorn_bitmap::DrawTextGlyphTransparent(), pixel data src failed?\n");
        return;
    }
    draw_glyph(target, pixels, x, y, foreground, nullptr);
}
