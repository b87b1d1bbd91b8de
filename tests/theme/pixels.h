#pragma once
// Reading pixels back from a zorn_bitmap in tests.

#include <gtest/gtest.h>
#include <wx/rawbmp.h>

#include <initializer_list>
#include <ostream>

#include "base/rgb.h"
#include "theme/bitmap.h"

inline std::ostream& operator<<(std::ostream& out, const zorn_rgb& c) {
    return out << "(" << c.red << "," << c.green << "," << c.blue << ")";
}

// Colour and alpha of one pixel; alpha -1 when the bitmap has no pixel data.
struct zorn_test_pixel {
    zorn_rgb color{-1, -1, -1};
    int alpha = -1;
};

inline zorn_test_pixel read_pixel(zorn_bitmap& bitmap, int x, int y) {
    wxAlphaPixelData data(bitmap);
    if (!data) return {};
    wxAlphaPixelData::Iterator it(data);
    it.MoveTo(data, x, y);
    return {zorn_rgb(it.Red(), it.Green(), it.Blue()), it.Alpha()};
}

inline zorn_rgb pixel_at(zorn_bitmap& bitmap, int x, int y) { return read_pixel(bitmap, x, y).color; }
inline int alpha_at(zorn_bitmap& bitmap, int x, int y) { return read_pixel(bitmap, x, y).alpha; }

// Number of pixels that have exactly this colour.
inline int count_color(zorn_bitmap& bitmap, const zorn_rgb& color) {
    wxAlphaPixelData data(bitmap);
    if (!data) return -1;
    int count = 0;
    wxAlphaPixelData::Iterator row(data);
    for (int y = 0; y < data.GetHeight(); y++, row.OffsetY(data, 1)) {
        wxAlphaPixelData::Iterator it = row;
        for (int x = 0; x < data.GetWidth(); x++, ++it) count += zorn_rgb(it.Red(), it.Green(), it.Blue()) == color;
    }
    return count;
}

struct zorn_pixel_spot {
    int x, y;
    zorn_rgb color;
};

// Checks a list of pixels; a failure names the spot.
inline void expect_pixels(zorn_bitmap& bitmap, std::initializer_list<zorn_pixel_spot> spots) {
    for (const zorn_pixel_spot& s : spots) EXPECT_EQ(pixel_at(bitmap, s.x, s.y), s.color) << "at " << s.x << "," << s.y;
}
