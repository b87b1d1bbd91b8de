// Colour flashes: parsing the payload and the per-tick arithmetic.
#include <gtest/gtest.h>

#include <vector>

#include "display/color_flash.h"

namespace {

const zorn_rgb base(1, 2, 3);

TEST(color_flash, hex_colours) {
    EXPECT_EQ(GetColorFromHexString("ff8000"), zorn_rgb(255, 128, 0));
    EXPECT_EQ(GetColorFromHexString("A0b0C0 trailing"), zorn_rgb(160, 176, 192));
    for (const char* bad : {"ff80", "ff80zz", ""}) EXPECT_EQ(GetColorFromHexString(bad), zorn_rgb(0, 0, 0)) << bad;
}

TEST(color_flash, one_step_from_black_to_red) {
    zorn_color_flash_list flashes;
    ASSERT_EQ(flashes.parse("000000 ff0000 10"), 11);
    // The parse runs the first tick itself.
    EXPECT_EQ(flashes.step(base), zorn_rgb(0, 0, 0));
    std::vector<int> red;
    for (int tick = 1; tick <= 11; ++tick) red.push_back(flashes.step(base).red);
    EXPECT_EQ(red, (std::vector<int>{25, 51, 76, 102, 127, 153, 178, 204, 229, 255, 1}));
    EXPECT_TRUE(flashes.empty());
}

TEST(color_flash, steps_follow_each_other) {
    zorn_color_flash_list flashes;
    ASSERT_EQ(flashes.parse("000000\t0000ff 2\n00ff00 1"), 5);
    std::vector<zorn_rgb> seen;
    for (int i = 0; i < 6; ++i) seen.push_back(flashes.step(base));
    EXPECT_EQ(seen, (std::vector<zorn_rgb>{{0, 0, 0}, {0, 0, 127}, {0, 0, 255}, {0, 0, 255}, {0, 255, 0}, base}));
    EXPECT_TRUE(flashes.empty());
}

TEST(color_flash, simultaneous_flashes_mix_by_the_brightest_channel) {
    zorn_color_flash_list flashes;
    flashes.parse("ff0000 ff0000 5");
    flashes.parse("00ff00 00ff00 5");
    flashes.parse("000080 000080 5");
    EXPECT_EQ(flashes.step(base), zorn_rgb(255, 255, 128));
}

TEST(color_flash, a_finished_flash_ends_the_walk_for_that_tick) {
    zorn_color_flash_list flashes;
    flashes.parse("ff0000 ff0000 1");
    flashes.step(base);
    flashes.step(base);  // the red flash is over now, its steps are gone
    flashes.parse("0000ff 0000ff 1");
    // Head first: the blue flash is looked at, then the finished red one leaves.
    EXPECT_EQ(flashes.step(base), zorn_rgb(0, 0, 255));
    ASSERT_NE(flashes.head, nullptr);
    EXPECT_EQ(flashes.head->next, nullptr);
}

TEST(color_flash, bad_payloads) {
    zorn_color_flash_list flashes;
    for (const char* bad : {"000000 ff0000 x", "000000 ff0000", "", static_cast<const char*>(nullptr)})
        EXPECT_EQ(flashes.parse(bad), 0);
    EXPECT_TRUE(flashes.empty());
    // A bad later duration keeps the steps read so far.
    EXPECT_EQ(flashes.parse("000000 ff0000 +3 00ff00 - 0000ff 4"), 4);
    // A colour looks at six bytes, blanks included: a short one reads as black and the fields
    // go on as words.
    EXPECT_EQ(flashes.parse("fff 00ff00 2"), 3);
    EXPECT_EQ(flashes.head->from, zorn_rgb(0, 0, 0));
    EXPECT_EQ(flashes.head->steps->to, zorn_rgb(0, 255, 0));
    EXPECT_EQ(flashes.parse("ff ff 00ff00 2"), 2);
    // Durations below 1 count as 1, so nothing divides by zero.
    EXPECT_EQ(flashes.parse("000000 ffffff 0 ffffff -5"), 4);
    for (int i = 0; i < 50 && !flashes.empty(); ++i) flashes.step(base);
    EXPECT_TRUE(flashes.empty());
}

}  // namespace
