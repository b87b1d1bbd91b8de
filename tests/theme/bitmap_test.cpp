// Pixel operations of zorn_bitmap, checked at exact pixels.
#include <gtest/gtest.h>
#include <wx/image.h>

#include <set>
#include <utility>
#include <vector>

#include "tests/theme/pixels.h"

namespace {

constexpr zorn_rgb paint{200, 100, 50}, border{255, 0, 0}, fill{0, 255, 0};

using point_set = std::set<std::pair<int, int>>;

// Every pixel that is not black.
point_set lit_pixels(zorn_bitmap& bitmap) {
    point_set out;
    for (int y = 0; y < bitmap.GetHeight(); y++)
        for (int x = 0; x < bitmap.GetWidth(); x++)
            if (pixel_at(bitmap, x, y) != zorn_black) out.insert({x, y});
    return out;
}

zorn_bitmap black_bitmap(int w, int h) {
    zorn_bitmap b(w, h);
    b.Clear(zorn_black);
    return b;
}

// A 2 x 2 picture: top row paint at alpha 128 and 255, bottom row transparent.
zorn_bitmap half_transparent() {
    wxImage image(2, 2);
    image.SetRGB(wxRect(0, 0, 2, 1), 200, 100, 50);
    image.SetRGB(0, 1, 255, 255, 255);
    image.SetRGB(1, 1, 40, 40, 40);
    image.SetAlpha();
    image.SetAlpha(0, 0, 128);
    image.SetAlpha(1, 0, 255);
    image.SetAlpha(0, 1, 0);
    image.SetAlpha(1, 1, 0);
    return zorn_bitmap(image);
}

TEST(Bitmap, ConstructionCopyAndClear) {
    zorn_bitmap plain;
    EXPECT_EQ(wxSize(plain.GetWidth(), plain.GetHeight()), wxSize(16, 16));
    EXPECT_EQ(plain.GetDepth(), 32);
    zorn_bitmap tiny(0, -3);  // sizes below 1 become 1
    EXPECT_EQ(wxSize(tiny.GetWidth(), tiny.GetHeight()), wxSize(1, 1));

    zorn_bitmap a(7, 5), copy(1, 1);
    a.Clear(paint);
    EXPECT_EQ(count_color(a, paint), 35);
    EXPECT_EQ(alpha_at(a, 6, 4), 255);
    copy.copy_from(a);
    a.Clear(zorn_white);  // the copy is separate
    EXPECT_EQ(copy.GetWidth(), 7);
    EXPECT_EQ(pixel_at(copy, 6, 4), paint);

    zorn_bitmap from_image = half_transparent();  // keeps the image's alpha
    EXPECT_EQ(alpha_at(from_image, 0, 0), 128);
    EXPECT_EQ(alpha_at(from_image, 0, 1), 0);
    EXPECT_EQ(pixel_at(from_image, 0, 0), paint);
}

TEST(Bitmap, SetPixelAndFilledRectangleClip) {
    zorn_bitmap b = black_bitmap(4, 4);
    b.SetPixel(1, 2, paint);
    b.SetPixel(3, 3, 1, 2, 3);
    for (auto [x, y] : std::vector<std::pair<int, int>>{{-1, 0}, {4, 0}, {0, -1}, {0, 4}}) b.SetPixel(x, y, zorn_white);
    expect_pixels(b, {{1, 2, paint}, {3, 3, {1, 2, 3}}});
    EXPECT_EQ(lit_pixels(b).size(), 2u);

    const struct {
        int x1, y1, x2, y2, expected;
    } cases[] = {
        {5, 5, 5, 5, 1},       // one pixel
        {9, 9, 2, 2, 64},      // corners in any order
        {-5, -5, 1, 1, 4},     // clipped at the top left
        {10, 10, 30, 12, 12},  // clipped at the right: x 10..13, y 10..12
        {20, 0, 30, 5, 0},     // wholly outside
        {-3, -3, -1, 20, 0},
    };
    for (const auto& c : cases) {
        zorn_bitmap r = black_bitmap(14, 14);
        r.DrawFilledRectangle(c.x1, c.y1, c.x2, c.y2, paint);
        EXPECT_EQ(static_cast<int>(lit_pixels(r).size()), c.expected) << c.x1 << "," << c.y1 << " " << c.x2 << "," << c.y2;
        EXPECT_EQ(count_color(r, paint), c.expected);
    }
}

TEST(Bitmap, LinesFollowTheStepRule) {
    const struct {
        int x1, y1, x2, y2;
        point_set expected;
    } cases[] = {
        {3, 3, 3, 3, {{3, 3}}},
        {0, 0, 4, 2, {{0, 0}, {1, 0}, {2, 1}, {3, 1}, {4, 2}}},
        {4, 2, 0, 0, {{0, 0}, {1, 0}, {2, 1}, {3, 1}, {4, 2}}},  // drawn from the smaller x
        {0, 0, 2, 4, {{0, 0}, {0, 1}, {1, 2}, {1, 3}, {2, 4}}},
        {2, 0, 0, 4, {{2, 0}, {2, 1}, {1, 2}, {1, 3}, {0, 4}}},
        {0, 0, 3, 3, {{0, 0}, {1, 1}, {2, 2}, {3, 3}}},          // dx == dy steps along y
        {-2, 1, 2, 1, {{0, 1}, {1, 1}, {2, 1}}},                 // clipped
    };
    for (const auto& c : cases) {
        zorn_bitmap b = black_bitmap(6, 6);
        b.DrawLine(c.x1, c.y1, c.x2, c.y2, paint);
        EXPECT_EQ(lit_pixels(b), c.expected) << c.x1 << "," << c.y1 << " to " << c.x2 << "," << c.y2;
    }
    // The gradient line's minor axis moves after pixels 0 and 2 (error starts at -2 with m = 2,
    // n = 4), unlike DrawLine, which moves after pixels 1 and 3.
    zorn_bitmap g = black_bitmap(6, 3);
    g.DrawGradientLine(0, 0, 4, 2, zorn_white, zorn_white);
    EXPECT_EQ(lit_pixels(g), (point_set{{0, 0}, {1, 1}, {2, 1}, {3, 2}, {4, 2}}));
}

TEST(Bitmap, GradientLineStartsAtFromAndStopsShortOfTo) {
    zorn_bitmap b = black_bitmap(6, 3);
    b.DrawGradientLine(0, 1, 3, 1, zorn_black, zorn_rgb(255, 0, 0));  // step = 255 * 256 / 4 = 16320
    expect_pixels(b, {{0, 1, {0, 0, 0}}, {1, 1, {63, 0, 0}}, {2, 1, {127, 0, 0}}, {3, 1, {191, 0, 0}}});

    // Walks from the first end even when it is on the right, falling colour.
    zorn_bitmap c = black_bitmap(6, 6);
    c.DrawGradientLine(4, 4, 0, 0, zorn_rgb(250, 250, 250), zorn_rgb(0, 0, 0));
    // step -250 * 256 / 5 = -12800
    expect_pixels(c, {{4, 4, {250, 250, 250}}, {3, 3, {200, 200, 200}}, {0, 0, {50, 50, 50}}});
}

TEST(Bitmap, GradientRectangles) {
    const zorn_rgb to{200, 100, 0};
    zorn_bitmap one = black_bitmap(5, 5);
    one.DrawXGradientRectangle(2, 0, 2, 4, zorn_black, to);  // one pixel wide: halfway
    EXPECT_EQ(pixel_at(one, 2, 3), zorn_rgb(100, 50, 0));

    zorn_bitmap three = black_bitmap(5, 5);
    three.DrawXGradientRectangle(3, 1, 1, 2, zorn_black, to);  // size 2, step / 4
    expect_pixels(three, {{1, 1, {50, 25, 0}}, {2, 2, {100, 50, 0}}, {3, 1, {150, 75, 0}}, {3, 3, zorn_black}});

    // Cut off at the left: the walk starts at `from` at the bitmap's edge.
    zorn_bitmap cut = black_bitmap(5, 5);
    cut.DrawXGradientRectangle(-2, 0, 2, 0, zorn_black, to);  // size 4, step 200 * 256 / 6 = 8533
    expect_pixels(cut, {{0, 0, {33, 16, 0}}, {1, 0, {66, 33, 0}}, {2, 0, {99, 49, 0}}});

    zorn_bitmap vertical = black_bitmap(5, 5);
    vertical.DrawYGradientRectangle(0, 0, 4, 2, to, zorn_black);  // falling
    expect_pixels(vertical, {{4, 0, {150, 75, 0}}, {0, 1, {100, 50, 0}}, {2, 2, {50, 25, 0}}, {2, 3, zorn_black}});
}

TEST(Bitmap, FilledCircleRows) {
    zorn_bitmap b = black_bitmap(12, 12);
    b.DrawFilledCircle(5, 5, 2, paint);
    // r (r + 1) = 6: half widths 2, 2, 1 for distances 0, 1, 2.
    EXPECT_EQ(count_color(b, paint), 5 + 5 + 5 + 3 + 3);
    expect_pixels(b, {{3, 4, paint}, {3, 3, zorn_black}, {4, 3, paint}});

    zorn_bitmap point = black_bitmap(12, 12);
    point.DrawFilledCircle(5, 5, -4, paint);  // negative radius counts as 0
    EXPECT_EQ(lit_pixels(point), (point_set{{5, 5}}));

    zorn_bitmap edge = black_bitmap(12, 12);
    edge.DrawFilledCircle(0, 0, 2, paint);  // clipped to the quarter inside
    EXPECT_EQ(count_color(edge, paint), 3 + 3 + 2);
}

TEST(Bitmap, PolygonFillAndBorder) {
    const int square[] = {2, 2, 7, 2, 7, 7, 2, 7};
    zorn_bitmap b = black_bitmap(10, 10);
    b.DrawPolygon(4, square, 0, 0, border, fill);
    expect_pixels(b, {{4, 4, fill}, {2, 2, border}, {4, 7, border}, {7, 4, border}, {1, 4, zorn_black}, {8, 4, zorn_black}});
    EXPECT_EQ(count_color(b, fill), 16);
    EXPECT_EQ(count_color(b, border), 20);

    zorn_bitmap moved = black_bitmap(10, 10);  // the offset moves every point
    moved.DrawPolygon(4, square, 1, 1, border, fill);
    expect_pixels(moved, {{8, 8, border}, {7, 7, fill}});

    const int triangle[] = {0, 0, 8, 0, 0, 8};
    zorn_bitmap t = black_bitmap(10, 10);
    t.DrawPolygon(3, triangle, 0, 0, border, fill);
    expect_pixels(t, {{2, 2, fill}, {6, 6, zorn_black}, {4, 4, border}});  // 4,4 is on the hypotenuse
}

TEST(Bitmap, PolygonDegenerateCases) {
    const int flat[] = {1, 3, 5, 3, 8, 3};  // no edges: only the border line
    zorn_bitmap b = black_bitmap(10, 10);
    b.DrawPolygon(3, flat, 0, 0, border, fill);
    EXPECT_EQ(count_color(b, fill), 0);
    EXPECT_EQ(lit_pixels(b).size(), 8u);

    const int two[] = {0, 0, 5, 5};
    zorn_bitmap none = black_bitmap(10, 10);
    none.DrawPolygon(2, two, 0, 0, border, fill);
    EXPECT_TRUE(lit_pixels(none).empty());

    std::vector<int> many(2 * zorn_polygon_point_limit, 1);
    none.DrawPolygon(zorn_polygon_point_limit, many.data(), 0, 0, border, fill);
    EXPECT_TRUE(lit_pixels(none).empty());
    // 999 points is the largest accepted polygon.
    none.DrawPolygon(zorn_polygon_point_limit - 1, many.data(), 0, 0, border, fill);
    EXPECT_EQ(pixel_at(none, 1, 1), border);
}

TEST(Bitmap, BitmapCopies) {
    const zorn_bitmap source = half_transparent();
    zorn_bitmap ignore(4, 4);
    ignore.Clear(zorn_white);
    ignore.DrawBitmapIgnoreAlpha(source, -1, 3);  // only source column 1, row 0 lands
    EXPECT_EQ(pixel_at(ignore, 0, 3), zorn_rgb(200, 100, 50));
    EXPECT_EQ(count_color(ignore, zorn_white), 15);

    zorn_bitmap use(4, 4);
    use.Clear(zorn_white);
    use.DrawBitmapUseAlpha(source, 1, 1);
    // Alpha 255 multiplies by 255 / 256; transparent comes out black.
    expect_pixels(use, {{1, 1, {100, 50, 25}}, {2, 1, {199, 99, 49}}, {1, 2, zorn_black}, {0, 0, zorn_white}});
}

}  // namespace
