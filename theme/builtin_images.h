#pragma once
// The seven pictures kept inside the executable as PNG files: the logo in the frame's corner, the
// padlock and the five condition icons of the status bar. Decoded once at start-up.

#include <cstddef>

class zorn_bitmap;

enum : int {
    zorn_image_logo = 0,     // 192 by 43
    zorn_image_padlock = 1,  // 21 by 21
    zorn_image_icon0 = 2,    // 17 by 17 each, icons 0 to 4
    zorn_builtin_image_count = 7,
};

// Adds the PNG handler to wxImage if missing and decodes all seven, in order. False if one failed
// (logged; that slot stays null). A second call does nothing.
bool zorn_load_builtin_images();
// A decoded picture, or null before loading or for a bad index. Icon i is zorn_image_icon0 + i.
const zorn_bitmap* zorn_builtin_image(int index);
// The stored PNG bytes of a picture; null and 0 for a bad index.
const unsigned char* zorn_builtin_image_png(int index, std::size_t* size);
