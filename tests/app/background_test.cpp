// The frame's background: its size rule and its stable patterns.
#include <gtest/gtest.h>

#include <set>
#include <tuple>

#include "app/background.h"
#include "tests/theme/pixels.h"

namespace {

const zorn_background_theme colors{{80, 0, 0}, {56, 0, 0}, {32, 0, 0}};

// The colours a bitmap uses, as a set of (r, g, b).
std::set<std::tuple<int, int, int>> palette(zorn_bitmap& b) {
    std::set<std::tuple<int, int, int>> out;
    wxAlphaPixelData data(b);
    wxAlphaPixelData::Iterator row(data);
    for (int y = 0; y < data.GetHeight(); y++) {
        wxAlphaPixelData::Iterator it = row;
        for (int x = 0; x < data.GetWidth(); x++, ++it) out.insert({it.Red(), it.Green(), it.Blue()});
        row.OffsetY(data, 1);
    }
    return out;
}

// First pixel (in reading order) where the two differ inside width by height, or -1.
int first_difference(zorn_bitmap& a, zorn_bitmap& b, int width, int height) {
    wxAlphaPixelData da(a), db(b);
    for (int y = 0; y < height; y++) {
        wxAlphaPixelData::Iterator pa(da), pb(db);
        pa.MoveTo(da, 0, y);
        pb.MoveTo(db, 0, y);
        for (int x = 0; x < width; x++, ++pa, ++pb)
            if (pa.Red() != pb.Red() || pa.Green() != pb.Green() || pa.Blue() != pb.Blue()) return y * width + x;
    }
    return -1;
}

std::tuple<int, int, int> t(const zorn_rgb& c) { return {c.red, c.green, c.blue}; }

TEST(Background, RoundsUpInSteps) {
    struct round_case {
        int size, expected;
    } cases[] = {{0, 256}, {1, 256}, {255, 256}, {256, 512}, {600, 768}, {768, 1024}, {984, 1024}, {1024, 1280}};
    for (const auto& c : cases) EXPECT_EQ(zorn_background_round(c.size), c.expected) << c.size;
}

TEST(Background, GrowsAndNeverShrinks) {
    zorn_background_cache cache;
    EXPECT_TRUE(cache.update(600, 400, zorn_bg_maze2, 2, colors, false));
    EXPECT_EQ(cache.bitmap->GetWidth(), 768);
    EXPECT_EQ(cache.bitmap->GetHeight(), 512);
    EXPECT_FALSE(cache.update(768, 512, zorn_bg_maze2, 2, colors, false));  // within the bitmap
    EXPECT_FALSE(cache.update(10, 10, zorn_bg_maze2, 2, colors, false));
    EXPECT_TRUE(cache.update(800, 300, zorn_bg_maze2, 2, colors, false));
    EXPECT_EQ(cache.width, 1024);
    EXPECT_EQ(cache.height, 768);  // the old height counts, rounded up again
    EXPECT_TRUE(cache.update(800, 300, zorn_bg_maze2, 2, colors, true));
    EXPECT_EQ(cache.width, 1280);
    EXPECT_TRUE(cache.update(10, 10, zorn_bg_maze1, 2, colors, false));  // a new style rebuilds
    EXPECT_EQ(cache.drawn_style, zorn_bg_maze1);
    EXPECT_TRUE(cache.update(10, 10, zorn_bg_maze1, 40, colors, false));  // so does a new theme
    EXPECT_EQ(cache.drawn_theme, 40);
    EXPECT_EQ(cache.bitmap->GetWidth(), cache.width);
}

TEST(Background, RebuildShowsTheSamePicture) {
    for (int style : {zorn_bg_maze1, zorn_bg_maze2, zorn_bg_bubbles, zorn_bg_maze3}) {
        zorn_background_cache first, second;
        first.update(500, 300, style, 2, colors, false);
        second.update(500, 300, style, 2, colors, false);
        EXPECT_EQ(first_difference(*first.bitmap, *second.bitmap, first.width, first.height), -1) << style;

        // A forced rebuild grows by a step; what the old bitmap showed stays, bar the strip near
        // its old edges where shapes of the new columns and rows reach back in.
        zorn_bitmap kept;
        kept.copy_from(*first.bitmap);
        const int old_width = first.width, old_height = first.height;
        first.update(500, 300, style, 2, colors, true);
        ASSERT_EQ(first.width, old_width + 256);
        EXPECT_EQ(first_difference(kept, *first.bitmap, old_width - 8, old_height - 8), -1) << style;
    }
}

TEST(Background, StylesUseTheirColours) {
    using colour_set = std::set<std::tuple<int, int, int>>;
    const auto black = t(zorn_black), a = t(colors.a), b = t(colors.b), c = t(colors.c);
    struct style_case {
        int style;
        colour_set expected;
    } cases[] = {
        {zorn_bg_none, {black}},
        {zorn_bg_solid, {c}},
        {zorn_bg_maze1, {black, b}},
        {zorn_bg_maze2, {black, a, b}},
        {zorn_bg_bubbles, {black, a, b, c}},
        {zorn_bg_maze3, {black, a, b}},
        {77, {black, a, b}},  // any other value is Maze2
    };
    for (const auto& sc : cases) {
        zorn_bitmap bitmap(256, 256);
        zorn_paint_background(bitmap, sc.style, colors);
        EXPECT_EQ(palette(bitmap), sc.expected) << sc.style;
    }
    zorn_bitmap maze2(256, 256), other(256, 256);
    zorn_paint_background(maze2, zorn_bg_maze2, colors);
    zorn_paint_background(other, 77, colors);
    EXPECT_EQ(first_difference(maze2, other, 256, 256), -1);
}

}  // namespace
