// Glyph pictures of zorn_font and text drawn from them.
#include <gtest/gtest.h>

#include <algorithm>
#include <utility>

#include "tests/theme/pixels.h"
#include "theme/font.h"

namespace {

// The brightest green (coverage) of a bitmap.
int brightest(zorn_bitmap& b) {
    int best = 0;
    for (int y = 0; y < b.GetHeight(); y++)
        for (int x = 0; x < b.GetWidth(); x++) best = std::max(best, pixel_at(b, x, y).green);
    return best;
}

bool same_pixels(zorn_bitmap& a, zorn_bitmap& b) {
    if (a.GetWidth() != b.GetWidth() || a.GetHeight() != b.GetHeight()) return false;
    for (int y = 0; y < a.GetHeight(); y++)
        for (int x = 0; x < a.GetWidth(); x++)
            if (pixel_at(a, x, y) != pixel_at(b, x, y)) return false;
    return true;
}

TEST(Font, EveryPrintableCodeHasAWhiteOnBlackGlyphOfOneCell) {
    zorn_font* font = zorn_main_font();
    int cell = 0, height = 0;
    font->get_char_size('A', &cell, &height);
    ASSERT_GT(cell, 0);
    ASSERT_GT(height, 0);
    for (int code = 32; code <= 126; code++) {
        ASSERT_NE(font->glyph(code), nullptr) << code;
        int w = -1, h = -1;
        font->get_char_size(code, &w, &h);
        // The main font is a fixed-pitch family: one cell for every character.
        EXPECT_EQ(w, cell) << "code " << code;
        EXPECT_EQ(h, height) << "code " << code;
        EXPECT_EQ(font->glyph(code)->GetWidth(), w);
    }
    for (int code : {0, 9, 10, 31, 127, 128, 0xC1, -1}) {
        int w = -1, h = -1;
        font->get_char_size(code, &w, &h);
        EXPECT_EQ(std::make_pair(w, h), std::make_pair(0, 0)) << code;
        EXPECT_EQ(font->glyph(code), nullptr);
    }
    font->get_char_size('A', nullptr, nullptr);  // either pointer may be null

    zorn_bitmap glyph, space;
    glyph.copy_from(*font->glyph('M'));
    space.copy_from(*font->glyph(' '));
    EXPECT_GE(brightest(glyph), 200);
    EXPECT_EQ(brightest(space), 0);
    const zorn_rgb corner = pixel_at(glyph, 0, 0);  // grey: all channels alike
    EXPECT_EQ(corner, zorn_rgb(corner.green, corner.green, corner.green));
}

TEST(Font, MeasureText) {
    zorn_font* font = zorn_main_font();
    int cell = 0, height = 0;
    font->get_char_size('x', &cell, &height);
    const struct {
        const char* text;
        int width;
    } cases[] = {
        {"", 0}, {"A", cell}, {"hello", 5 * cell}, {"A\tB", 2 * cell}, {"\x7f\x01", 0}, {"\xC1\xE2", 2 * cell},
    };
    for (const auto& c : cases) {
        int w = -1, h = -1;
        font->measure_text(c.text, &w, &h);
        EXPECT_EQ(w, c.width) << c.text;
        EXPECT_EQ(h, c.width ? height : 0) << c.text;
    }
    int w = 77, h = 88;
    font->measure_text(nullptr, &w, &h);  // a null text leaves the results unset
    EXPECT_EQ(std::make_pair(w, h), std::make_pair(77, 88));
}

TEST(Font, PointSizeAndCopyRenderAgain) {
    zorn_font font(10, wxFONTFAMILY_TELETYPE, wxFONTSTYLE_NORMAL, wxFONTWEIGHT_NORMAL);
    int w10 = 0, h10 = 0, w20 = 0, h20 = 0, w = 0, h = 0;
    font.get_char_size('W', &w10, &h10);
    font.SetPointSize(20);
    font.get_char_size('W', &w20, &h20);
    EXPECT_GT(h20, h10);
    EXPECT_GT(w20, w10);

    zorn_font other(7, wxFONTFAMILY_TELETYPE, wxFONTSTYLE_NORMAL, wxFONTWEIGHT_NORMAL);
    other.copy_from(font);
    other.get_char_size('W', &w, &h);
    EXPECT_EQ(h, h20);

    EXPECT_FALSE(other.set_native_description(""));
    EXPECT_TRUE(other.set_native_description(zorn_main_font()->GetNativeFontInfoDesc()));
    other.get_char_size('W', &w, &h);
    zorn_main_font()->get_char_size('W', &w20, &h20);
    EXPECT_EQ(h, h20);
}

TEST(Text, OpaqueTextPaintsItsCellsAndNothingBeyondTheEdges) {
    zorn_font* font = zorn_main_font();
    int cell = 0, height = 0;
    font->get_char_size('M', &cell, &height);
    const zorn_rgb background{0, 0, 200};
    zorn_bitmap b(4 * cell, height + 4);
    b.Clear(zorn_white);
    b.DrawText(font, "  ", 0, 0, zorn_rgb(255, 255, 0), background);
    // Two spaces: both cells become the background, the rest stays.
    EXPECT_EQ(count_color(b, background), 2 * cell * height);
    expect_pixels(b, {{2 * cell, 0, zorn_white}, {0, height, zorn_white}});

    zorn_bitmap edges(20, 20);
    edges.Clear(zorn_black);
    edges.DrawText(font, "MMMM", 20, 0, zorn_white, zorn_rgb(1, 1, 1));
    edges.DrawText(font, "MMMM", 0, 20, zorn_white, zorn_rgb(1, 1, 1));
    edges.DrawText(font, nullptr, 0, 0, zorn_white, zorn_rgb(1, 1, 1));
    edges.DrawTextTransparent(font, "MMMM", 25, 0, zorn_white);
    EXPECT_EQ(count_color(edges, zorn_black), 400);
}

TEST(Text, ClippedAtTheLeftAndHighBytesDrawTheSameGlyphs) {
    zorn_font* font = zorn_main_font();
    int cell = 0, height = 0;
    font->get_char_size('M', &cell, &height);
    zorn_bitmap shifted(3 * cell, height), direct(3 * cell, height);
    shifted.Clear(zorn_black);
    direct.Clear(zorn_black);
    shifted.DrawText(font, "MAB", -cell, 0, zorn_white, zorn_black);
    direct.DrawText(font, "AB", 0, 0, zorn_white, zorn_black);
    EXPECT_TRUE(same_pixels(shifted, direct));
    EXPECT_GT(brightest(shifted), 0);

    // A high byte draws as its low seven bits.
    zorn_bitmap high(cell, height), plain(cell, height);
    high.Clear(zorn_black);
    plain.Clear(zorn_black);
    high.DrawTextTransparent(font, "\xC1", 0, 0, zorn_white);
    plain.DrawTextTransparent(font, "A", 0, 0, zorn_white);
    EXPECT_TRUE(same_pixels(high, plain));
}

TEST(Text, GlyphBlendFormula) {
    // A hand-made glyph: coverage 0, 128 and 255 in green.
    zorn_bitmap glyph(3, 1);
    glyph.SetPixel(0, 0, 0, 0, 0);
    glyph.SetPixel(1, 0, 0, 128, 0);
    glyph.SetPixel(2, 0, 255, 255, 255);
    zorn_bitmap opaque(3, 1), clear(3, 1);
    opaque.Clear(zorn_white);
    clear.Clear(zorn_rgb(100, 100, 100));
    opaque.DrawTextGlyph(glyph, 0, 0, zorn_rgb(200, 0, 0), zorn_rgb(0, 0, 100));
    clear.DrawTextGlyphTransparent(glyph, 0, 0, zorn_rgb(200, 0, 0));
    // (200 * 128) / 256 and (100 * 127) / 256; (25600 + 12700) / 256 over the grey.
    expect_pixels(opaque, {{0, 0, {0, 0, 100}}, {1, 0, {100, 0, 49}}, {2, 0, {199, 0, 0}}});
    expect_pixels(clear, {{0, 0, {100, 100, 100}}, {1, 0, {149, 49, 49}}, {2, 0, {199, 0, 0}}});

    // Real glyphs: white over black peaks at 254.
    zorn_bitmap b(60, 30);
    b.Clear(zorn_black);
    b.DrawTextTransparent(zorn_main_font(), "MW#", 2, 2, zorn_white);
    EXPECT_EQ(brightest(b), 254);
}

}  // namespace
