#pragma once
// Reading pixels back from a zorn_bitmap in tests.

#include <wx/rawbmp.h>

#include <ostream>

#include "base/rgb.h"
#include "theme/bitmap.h"

inline std::ostream& operator<<(std::ostream& out, const zorn_rgb& c) {
    return out << "(" << c.red << "," << c.green << "," << c.blue << ")";
}

inline zorn_rgb pixel_at(zorn_bitmap& bitmap, int x, int y) {
    wxAlphaPixelData data(bitmap);
    if (!data) return zorn_rgb(-1, -1, -1);
    wxAlphaPixelData::Iterator it(data);
    it.MoveTo(data, x, y);
    return zorn_rgb(it.Red(), it.Green(), it.Blue());
}

inline int alpha_at(zorn_bitmap& bitmap, int x, int y) {
    wxAlphaPixelData data(bitmap);
    if (!data) return -1;
    wxAlphaPixelData::Iterator it(data);
    it.MoveTo(data, x, y);
    return it.Alpha();
}

// Number of pixels that have exactly this colour.
inline int count_color(zorn_bitmap& bitmap, const zorn_rgb& color) {
    wxAlphaPixelData data(bitmap);
    if (!data) return -1;
    int count = 0;
    wxAlphaPixelData::Iterator row(data);
    for (int y = 0; y < data.GetHeight(); y++) {
        wxAlphaPixelData::Iterator it = row;
        for (int x = 0; x < data.GetWidth(); x++, ++it)
            if (it.Red() == color.red && it.Green() == color.green && it.Blue() == color.blue) count++;
        row.OffsetY(data, 1);
    }
    return count;
}
