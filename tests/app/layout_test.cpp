#include "app/layout.h"

#include <gtest/gtest.h>

namespace {

layout_inputs frame(int w, int h) {
    layout_inputs in;
    in.width = w;
    in.height = h;
    return in;
}

void expect_rect(const layout_rect& r, int x, int y, int w, int h, const char* what) {
    EXPECT_TRUE(r.placed) << what;
    EXPECT_EQ(r.x, x) << what;
    EXPECT_EQ(r.y, y) << what;
    EXPECT_EQ(r.width, w) << what;
    EXPECT_EQ(r.height, h) << what;
}

}  // namespace

TEST(Layout, EmbeddedWithNothingElseGivesTheTextTheWholeWidth) {
    const layout_result r = compute_layout(frame(984, 700));
    EXPECT_EQ(r.left, 0);
    EXPECT_EQ(r.right, 984);
    expect_rect(r.input_window, 0, 652, 984, 48, "input sits on the bottom edge");
    expect_rect(r.main_display, 0, 0, 984, 652, "main");
    EXPECT_FALSE(r.status_display.placed);
    EXPECT_FALSE(r.channel_window.shown);
}

TEST(Layout, ButtonColumnAndRowsFromTheBottomUp) {
    layout_inputs in = frame(1000, 700);
    in.settings.direction_button_enable = in.settings.hint_button_enable = true;
    in.settings.fkey_button_display = in.settings.popup_display = in.settings.status_bar = true;
    in.settings.hpbar_enable = in.settings.enemy_hpbar_enable = true;
    const layout_result r = compute_layout(in);
    expect_rect(r.direction_buttons, 901, 2, 97, 130, "direction");
    expect_rect(r.hint_buttons, 901, 134, 97, 566, "hints");
    EXPECT_EQ(r.right, 899);
    expect_rect(r.fkey_row, 0, 654, 358, 46, "fkeys");
    expect_rect(r.popup_row, 358, 654, 642, 46, "popup row runs under the button column to the edge");
    expect_rect(r.status_bar, 0, 633, 899, 21, "status bar stops at R");
    expect_rect(r.input_window, 0, 585, 899, 48, "input");
    expect_rect(r.status_display, 0, 543, 899, 42, "two rows of bars");
    expect_rect(r.main_display, 0, 0, 899, 543, "main");
}

TEST(Layout, StatusDisplayRows) {
    struct row {
        bool hp, exp, enemy;
        int height;  // 0: takes no room
    } rows[] = {{false, false, false, 0}, {true, false, false, 21}, {false, true, false, 21},
                {false, false, true, 21}, {true, false, true, 42},  {true, true, true, 42}};
    for (const row& c : rows) {
        layout_inputs in = frame(800, 600);
        in.settings.hpbar_enable = c.hp;
        in.settings.exp_display = c.exp;
        in.settings.enemy_hpbar_enable = c.enemy;
        const layout_result r = compute_layout(in);
        EXPECT_EQ(r.status_display.placed, c.height > 0);
        if (c.height) {
            EXPECT_EQ(r.status_display.height, c.height);
        }
        EXPECT_EQ(r.main_display.height, 600 - 48 - c.height);
    }
}

TEST(Layout, LeftTopColumn) {
    layout_inputs in = frame(984, 700);
    in.settings.current_layout = 1;
    EXPECT_EQ(compute_layout(in).left, 0);  // automap undocked, no group: the column is empty

    in.settings.group_status_display = 1;
    in.group_required_height = 90;
    layout_result r = compute_layout(in);
    expect_rect(r.group_display, 2, 2, 160, 90, "group alone");
    EXPECT_EQ(r.left, 164);

    in.settings.automap_display = true;  // docked by default
    in.automap_width = 200;
    in.automap_height = 150;
    r = compute_layout(in);
    expect_rect(r.automap, 2, 2, 200, 150, "automap");
    expect_rect(r.group_display, 2, 162, 200, 90, "group under the map, map-wide");
    EXPECT_EQ(r.left, 204);
}

TEST(Layout, LeftBottomColumnEndsAboveTheButtonRow) {
    layout_inputs in = frame(984, 700);
    in.settings.current_layout = 2;
    in.settings.group_status_display = 2;
    in.settings.fkey_button_display = true;
    in.group_required_height = 80;
    layout_result r = compute_layout(in);
    expect_rect(r.group_display, 2, 700 - 2 - 46 - 80, 160, 80, "group above the fkey row");

    in.settings.automap_display = true;
    in.automap_width = 180;
    in.automap_height = 120;
    r = compute_layout(in);
    expect_rect(r.automap, 2, 578, 180, 120, "map at the bottom");
    expect_rect(r.group_display, 2, 700 - 2 - 120 - 10 - 80, 180, 80, "group above the map");
}

TEST(Layout, EmbeddedLayoutLeavesMapAndGroupToTheTextWindow) {
    layout_inputs in = frame(984, 700);
    in.settings.group_status_display = 1;
    in.settings.automap_display = true;
    in.automap_width = 200;
    in.automap_height = 150;
    const layout_result r = compute_layout(in);
    EXPECT_FALSE(r.automap.placed);
    EXPECT_FALSE(r.group_display.placed);
    EXPECT_EQ(r.left, 0);
}

TEST(Layout, NarrowWindowKeepsAOnePixelColumn) {
    layout_inputs in = frame(300, 200);
    in.settings.current_layout = 1;
    in.settings.automap_display = true;
    in.automap_width = 250;
    in.automap_height = 100;
    in.settings.hint_button_enable = true;
    const layout_result r = compute_layout(in);
    EXPECT_EQ(r.left, 254);
    EXPECT_EQ(r.right, 255);  // W - 101 lies left of L
    EXPECT_EQ(r.main_display.width, 1);

    const layout_result tiny = compute_layout(frame(10, 10));
    EXPECT_EQ(tiny.main_display.height, 1);  // never below 1, even with no room
}

TEST(Layout, ChannelWindowOnlyWhileLoggedIn) {
    layout_inputs in = frame(800, 448);
    in.settings.channel_window_enable = true;
    in.settings.channel_window_height = 25;
    layout_result r = compute_layout(in);
    EXPECT_FALSE(r.channel_window.shown);
    EXPECT_EQ(r.main_display.y, 0);

    in.logged_in = true;
    r = compute_layout(in);  // 400 pixels above the input: a quarter of it
    expect_rect(r.channel_window, 0, 0, 800, 100, "channel");
    expect_rect(r.main_display, 0, 100, 800, 300, "main below the channels");
}
