#pragma once
// A colour. Arithmetic stays in integers: a scale is x 256, a blend is divided by 256.

struct zorn_rgb {
    int red = 0;
    int green = 0;
    int blue = 0;

    constexpr zorn_rgb() = default;
    constexpr zorn_rgb(int r, int g, int b) : red(r), green(g), blue(b) {}
    constexpr bool operator==(const zorn_rgb& o) const { return red == o.red && green == o.green && blue == o.blue; }
    constexpr bool operator!=(const zorn_rgb& o) const { return !(*this == o); }
};
