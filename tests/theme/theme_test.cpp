// The colour theme tables and the selection of the records in force.
#include <gtest/gtest.h>

#include "config/lconfig.h"

#include "tests/theme/pixels.h"
#include "theme/theme.h"

namespace {

const int all_themes[] = {0, 1, 2, 40, 50, 60, 70, 80, 90};

TEST(Theme, UnknownValuesSelectBlue) {
    create_themes();
    for (int index : {1, 12345, -1, 3, 89, 91}) {
        EXPECT_EQ(zorn_button_theme_for(index), zorn_button_theme_for(zorn_theme_blue)) << index;
        EXPECT_EQ(zorn_background_theme_for(index), zorn_background_theme_for(zorn_theme_blue)) << index;
    }
    for (int index : all_themes) {
        if (index == zorn_theme_blue) continue;
        EXPECT_NE(zorn_button_theme_for(index), zorn_button_theme_for(1)) << index;
    }
    EXPECT_STREQ(zorn_theme_name(50), "YGreen");
    EXPECT_STREQ(zorn_theme_name(7), "Blue");
}

TEST(Theme, LabelsAreWhiteExceptBluesYellow) {
    create_themes();
    for (int index : all_themes) {
        const zorn_rgb expected = index == zorn_theme_blue ? zorn_rgb(255, 255, 0) : zorn_rgb(255, 255, 255);
        for (int t : {4, 7, 10, 13, 19, 22}) EXPECT_EQ(zorn_button_theme_for(index)->triple[t], expected) << index << " " << t;
        EXPECT_EQ(zorn_button_theme_for(index)->triple[16], zorn_rgb(192, 192, 192));
        EXPECT_EQ(zorn_button_theme_for(index)->triple[25], zorn_rgb(96, 96, 96));
        EXPECT_EQ(zorn_button_theme_for(index)->triple[0], zorn_button_theme_for(index)->triple[1]);
    }
}

TEST(Theme, SpotValues) {
    create_themes();
    struct spot {
        int theme, triple;
        zorn_rgb value;
    } spots[] = {
        {0, 3, {96, 96, 96}},     {1, 0, {48, 48, 192}},   {2, 11, {128, 128, 128}}, {40, 0, {160, 96, 64}},
        {50, 11, {192, 255, 0}},  {60, 14, {32, 64, 32}},  {70, 20, {0, 144, 192}},  {80, 6, {64, 0, 64}},
        {90, 15, {32, 32, 32}},   {90, 18, {48, 48, 48}},  {40, 21, {32, 24, 16}},   {1, 24, {0, 0, 32}},
        {0, 5, {192, 192, 0}},    {70, 9, {0, 32, 48}},    {50, 3, {72, 96, 0}},     {2, 12, {64, 0, 0}},
    };
    for (const auto& s : spots)
        EXPECT_EQ(zorn_button_theme_for(s.theme)->triple[s.triple], s.value) << s.theme << " triple " << s.triple;

    struct background_spot {
        int theme;
        zorn_rgb a, b, c;
    } backgrounds[] = {
        {0, {80, 80, 0}, {56, 56, 0}, {32, 32, 0}},
        {1, {0, 0, 96}, {0, 0, 64}, {0, 0, 32}},
        {40, {80, 32, 16}, {56, 24, 16}, {32, 16, 8}},
        {70, {0, 56, 80}, {0, 40, 64}, {0, 24, 48}},
        {90, {64, 64, 64}, {32, 32, 32}, {16, 16, 16}},
    };
    for (const auto& s : backgrounds) {
        const zorn_background_theme* record = zorn_background_theme_for(s.theme);
        EXPECT_EQ(record->a, s.a) << s.theme;
        EXPECT_EQ(record->b, s.b) << s.theme;
        EXPECT_EQ(record->c, s.c) << s.theme;
    }
}

TEST(Theme, SwitchMovesThePointersFromTheSettings) {
    create_themes();
    create_themes();  // a second call keeps the records
    zorn_select_button_theme(80);
    EXPECT_EQ(zorn_current_button_theme, zorn_button_theme_for(80));
    zorn_select_background_theme(12345);
    EXPECT_EQ(zorn_current_background_theme, zorn_background_theme_for(1));
    // A fresh character: button theme Blue, background Red.
    if (!LConfig::instance().current()) LConfig::instance().setup_default_config(nullptr);
    switch_themes();
    EXPECT_EQ(zorn_current_button_theme, zorn_button_theme_for(1));
    EXPECT_EQ(zorn_current_background_theme, zorn_background_theme_for(2));
}

}  // namespace
