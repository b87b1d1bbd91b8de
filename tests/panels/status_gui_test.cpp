// The status display, status bar and sky bar under Xvfb: what their tags put on the screen at each
// compact level, that unchanged tags paint nothing, the border flash, the padlock and tooltips.
#include <gtest/gtest.h>
#include <wx/frame.h>

#include <cstring>
#include <functional>
#include <string>

#include "base/random.h"
#include "input/frame_link.h"
#include "panels/status_bar.h"
#include "panels/status_display.h"
#include "tests/input/recording_frame.h"
#include "tests/panels/panel_support.h"
#include "tests/support/log_capture.h"
#include "tests/theme/pixels.h"
#include "theme/builtin_images.h"
#include "theme/font.h"
#include "theme/theme.h"

namespace {

constexpr zorn_rgb hp_dark{128, 0, 0}, hp_bright{255, 32, 32};
constexpr zorn_rgb mana_dark{0, 64, 160}, mana_bright{64, 96, 255};
constexpr zorn_rgb move_dark{160, 160, 0}, move_bright{255, 255, 64};
constexpr zorn_rgb enemy_dark{128, 64, 32}, enemy_bright{255, 128, 64};

// The narrowest width (frame included) that gives the level with the status font.
int narrowest_width(int level, const zorn_status_flags& flags, int height) {
    for (int w = 40; w < 2000; ++w)
        if (compute_status_display_layout(w - 2, height - 2, flags, zorn_status_text_width, zorn_status_text_height())
                .compact_level == level)
            return w;
    return -1;
}

// Pixels in a rectangle that aren't black.
int lit_pixels(zorn_bitmap& b, int x1, int y1, int x2, int y2) {
    int count = 0;
    for (int y = y1; y <= y2; ++y)
        for (int x = x1; x <= x2; ++x) count += pixel_at(b, x, y) != zorn_black;
    return count;
}

int pixels_where(zorn_bitmap& b, int x1, int y1, int x2, int y2, const std::function<bool(const zorn_rgb&)>& test) {
    int count = 0;
    for (int y = y1; y <= y2; ++y)
        for (int x = x1; x <= x2; ++x) count += test(pixel_at(b, x, y));
    return count;
}

class Panels : public ::testing::Test {
protected:
    void SetUp() override {
        create_themes();
        switch_themes();
        zorn_load_builtin_images();
        frame = new wxFrame(nullptr, wxID_ANY, "panels", wxPoint(0, 0), wxSize(1260, 120));
        frame->Show();
        zorn_set_frame_link(&link);
    }
    void TearDown() override {
        zorn_set_frame_link(nullptr);
        frame->Destroy();
        pump_for(30);
    }

    zorn_status_display* make_display(bool hp, bool exp, bool enemy, int width, int height) {
        auto* d = new zorn_status_display(frame);
        d->border_mask = zorn_border_all;
        d->set_flags(hp, exp, enemy);
        d->Show();
        d->set_size(0, 0, width, height);
        return d;
    }

    // The numbers of the pixel checks: hp with a mark below it, mana with one above it, movement
    // above its maximum, an enemy at 40%, experience given out of order.
    void feed_numbers(zorn_status_display* d) {
        const int before = d->repaints;
        d->store_hit_points("120 150 30 200 1600 1500");
        d->store_enemy("40 the training dummy");
        d->store_experience("300 900 100", true);
        ASSERT_TRUE(wait_for_paint(d->repaints, before));
    }

    void check_gauges(zorn_status_display* d) {
        zorn_bitmap& b = *d->backing_bitmap;
        const int bw = d->bar_width, bh = d->bar_height, gy = d->bar_y - 1, mid = gy + bh / 2 + 1;
        ASSERT_GE(bh, 4);
        // hp 120 of 150.
        int gx = d->hp_x - 1, fill = status_gauge_fill(120, 150, bw), mark = gx + bw * 100 / 150;
        expect_pixels(b, {{gx, gy, zorn_white},
                          {gx + bw + 1, gy + bh + 1, zorn_white},
                          {gx + 1, gy + 1, hp_bright},
                          {gx + 1, gy + bh, hp_bright},
                          {gx + 1, gy + 2, hp_dark},
                          {gx + fill, gy + 1, zorn_black},
                          {gx + fill, gy + bh, zorn_black},
                          {gx + fill - 1, gy + 1, hp_bright},
                          {gx + fill + 1, gy + 1, zorn_black},
                          {gx + fill + 1, mid, zorn_white},
                          {mark, gy, hp_bright},
                          {mark, gy + bh + 1, hp_dark}});
        // mana 30 of 200: the mark at 100 lies ahead, across the middle.
        gx = d->mana_x - 1, fill = status_gauge_fill(30, 200, bw), mark = gx + bw * 100 / 200;
        expect_pixels(b, {{gx + 1, gy + 1, mana_bright},
                          {gx + 1, gy + 2, mana_dark},
                          {gx + fill, gy + 1, zorn_black},
                          {mark, mid - 1, zorn_white},
                          {mark, mid + 1, zorn_white},
                          {mark, gy, zorn_black},
                          {mark, gy + 2, zorn_black}});
        // movement 1600 of 1500: a full gauge, no black end, every mark kept.
        gx = d->move_x - 1;
        expect_pixels(b, {{gx + bw, gy + 1, move_bright},
                          {gx + bw, gy + bh, move_bright},
                          {gx + bw, gy + 2, move_dark},
                          {gx + bw * 700 / 1500, gy, move_bright},
                          {gx + bw * 1400 / 1500, gy + bh + 1, move_dark}});
    }

    void check_experience_bar(zorn_status_display* d) {
        zorn_bitmap& b = *d->backing_bitmap;
        const int x = d->exp_x, y = d->enemy_bar_y, bw = d->bar_width;
        const int f0 = bw * 900 / 1000, f1 = bw * 300 / 1000, f2 = bw * 100 / 1000;
        ASSERT_GT(f2, 0);
        EXPECT_EQ(d->xp[0], 900);
        expect_pixels(b, {{x, y + 1, zorn_rgb(112, 0, 112)},
                          {x, y, zorn_rgb(208, 0, 208)},
                          {x + f2, y + 1, zorn_rgb(80, 0, 80)},
                          {x + f1, y + 1, zorn_rgb(48, 0, 48)},
                          {x + f1, y, zorn_rgb(144, 0, 144)},
                          {x + f1, y + d->bar_height - 1, zorn_rgb(144, 0, 144)},
                          {x + f0 - 1, y + 1, zorn_rgb(48, 0, 48)},
                          {x + bw + 1, y, zorn_white}});
    }

    void check_enemy(zorn_status_display* d) {
        zorn_bitmap& b = *d->backing_bitmap;
        const int gx = d->hp_x - 1, gy = d->enemy_bar_y - 1, fill = status_gauge_fill(40, 100, d->bar_width);
        expect_pixels(b, {{gx + 1, gy + 1, enemy_bright}, {gx + 1, gy + 2, enemy_dark}, {gx + fill, gy + 1, zorn_black}});
        // The name beside the gauge, at every level.
        const int name_x = d->hp_x + d->bar_width + 1;
        const int end_x = (d->exp_x > name_x ? d->exp_x : name_x + 60) - 1;
        EXPECT_GT(lit_pixels(b, name_x, d->enemy_text_y, end_x, d->enemy_text_y + zorn_status_text_height() - 1), 20);
    }

    wxFrame* frame = nullptr;
    recording_frame link;
};

}  // namespace

TEST_F(Panels, StatusDisplayAtEveryCompactLevelWithAndWithoutTheEnemyRow) {
    for (bool enemy : {false, true}) {
        zorn_status_flags flags;
        flags.hp_bars = flags.exp_bar = true;
        flags.enemy_bar = enemy;
        const int height = enemy ? 42 : 21;
        for (int level = 0; level < 4; ++level) {
            // Level 3 at its widest, so the gauges are large enough to look at.
            const int width = level < 3 ? narrowest_width(level, flags, height) : narrowest_width(2, flags, height) - 1;
            SCOPED_TRACE("level " + std::to_string(level) + (enemy ? " with the enemy" : "") + ", width " +
                         std::to_string(width));
            ASSERT_GT(width, 0);
            ASSERT_LE(width, 1260);
            zorn_status_display* d = make_display(true, true, enemy, width, height);
            feed_numbers(d);
            ASSERT_EQ(d->compact_level, level);
            check_gauges(d);
            check_experience_bar(d);
            if (enemy) check_enemy(d);
            zorn_bitmap& b = *d->backing_bitmap;
            // The hp text stands right of its gauge, except at level 3.
            const int text_x = d->hp_x + d->bar_width + 1;
            const int texts = lit_pixels(b, text_x, d->text_y, d->mana_x - 3, d->text_y + zorn_status_text_height() - 1);
            if (level < 3)
                EXPECT_GT(texts, 20);
            else
                EXPECT_EQ(lit_pixels(b, text_x, height / 2 + 1, d->mana_x - 3, height - 2), 0);
            if (enemy) {
                pump_for(30);
                expect_reference(screen_image(d), "status_level" + std::to_string(level));
            }
            d->Destroy();
        }
    }
}

TEST_F(Panels, ZeroMaximumAndNumbersAboveTheMaximum) {
    zorn_status_display* d = make_display(true, false, false, 600, 21);
    int before = d->repaints;
    d->store_hit_points("5 0 400 100 0 0");
    ASSERT_TRUE(wait_for_paint(d->repaints, before));
    zorn_bitmap& b = *d->backing_bitmap;
    const int bw = d->bar_width, gy = d->bar_y - 1;
    // A maximum of 0 counts as 1: full at any positive value, empty at 0.
    expect_pixels(b, {{d->hp_x - 1 + bw, gy + 1, hp_bright},
                      {d->mana_x - 1 + bw, gy + 1, mana_bright},
                      {d->move_x, gy + 1, zorn_black}});
    EXPECT_EQ(d->mana, 400);
    zorn_fixed_string hp, mana, move;
    status_gauge_texts(*d, d->compact_level, &hp, &mana, &move);
    EXPECT_NE(std::strstr(mana.c_str(), " 400"), nullptr) << mana.c_str();
}

TEST_F(Panels, UnchangedTagsPaintNothing) {
    zorn_status_display* d = make_display(true, true, true, 900, 42);
    feed_numbers(d);
    pump_for(50);
    const int settled = d->repaints;
    for (int i = 0; i < 1000; ++i) {
        d->store_hit_points("120 150 30 200 1600 1500");
        d->store_enemy("40 the training dummy");
        d->store_experience("900 100 300", true);
    }
    pump_for(150);
    EXPECT_EQ(d->repaints, settled);
    // Five numbers store five and paint nothing; the sixth then paints once.
    d->store_hit_points("1 2 3 4 5");
    pump_for(100);
    EXPECT_EQ(d->repaints, settled);
    EXPECT_EQ(d->max_move, 1500);
    EXPECT_EQ(d->move, 5);
    d->store_hit_points("1 2 3 4 5 6");
    EXPECT_TRUE(wait_for_paint(d->repaints, settled));
    // A changed experience without the setting isn't drawn.
    const int after = d->repaints;
    d->store_experience("10 20", false);
    pump_for(100);
    EXPECT_EQ(d->repaints, after);
    EXPECT_EQ(d->xp[0], 20);

    auto* bar = new zorn_status_bar(frame);
    bar->Show();
    bar->set_size(0, 50, 700, 21);
    bar->set_icons("10100");
    bar->update_sky_display("110 3 720 12:00 pm");
    pump_for(100);
    const int bar_paints = bar->repaints, sky_paints = bar->sky_bar->repaints;
    for (int i = 0; i < 1000; ++i) {
        bar->set_icons("10100");
        bar->update_sky_display("110 3 720 12:00 pm");
    }
    pump_for(150);
    EXPECT_EQ(bar->repaints, bar_paints);
    EXPECT_EQ(bar->sky_bar->repaints, sky_paints);
}

TEST_F(Panels, BorderFlashesSixteenPhases) {
    zorn_status_display* d = make_display(true, false, false, 400, 21);
    feed_numbers(d);
    const zorn_rgb frame_colour = zorn_current_button_theme->triple[zorn_triple_panel_frame];
    EXPECT_EQ(pixel_at(*d->backing_bitmap, 0, 5), frame_colour);
    int before = d->repaints;
    d->start_flash();
    EXPECT_TRUE(animation_contains(d));
    EXPECT_EQ(d->anim_count, 16);
    ASSERT_TRUE(wait_for_paint(d->repaints, before));
    EXPECT_EQ(pixel_at(*d->backing_bitmap, 0, 5), zorn_black);
    EXPECT_EQ(pixel_at(*d->backing_bitmap, 399, 5), zorn_black);
    for (int period = 1; period <= 16; ++period) {
        before = d->repaints;
        for (int tick = 0; tick < 10; ++tick) animation_run(zorn_tick_ms);
        ASSERT_TRUE(wait_for_paint(d->repaints, before)) << period;
        const zorn_rgb expected = period == 16 ? frame_colour : ((16 - period) & 1) ? zorn_white : zorn_black;
        EXPECT_EQ(pixel_at(*d->backing_bitmap, 0, 5), expected) << period;
    }
    EXPECT_FALSE(animation_contains(d));
}

TEST_F(Panels, StatusDisplayTooltips) {
    zorn_status_display* d = make_display(true, true, true, 900, 42);
    feed_numbers(d);
    const struct {
        int x, y;
        const char* tip;
    } spots[] = {
        {d->hp_x + 2, d->bar_y + 1, "Your current health."},
        {d->mana_x + 2, d->bar_y + 1, "Your current mana."},
        {d->move_x + 2, d->bar_y + 1, "Your current movement."},
        {d->hp_x + 2, d->enemy_bar_y + 1, "Your current enemy's health."},
        {d->exp_x + 2, d->enemy_bar_y + 1, "Your accumulated experience towards your next level."},
        {d->hp_x + d->bar_width + 5, 1, nullptr},
    };
    for (const auto& s : spots) {
        wxMouseEvent motion(wxEVT_MOTION);
        motion.SetEventObject(d);
        motion.m_x = s.x;
        motion.m_y = s.y;
        d->GetEventHandler()->ProcessEvent(motion);
        if (s.tip)
            EXPECT_EQ(d->GetToolTipText(), wxString::FromUTF8(s.tip)) << s.x << "," << s.y;
        else
            EXPECT_EQ(d->GetToolTip(), nullptr);
    }
}

TEST_F(Panels, StatusBarIconsPingClockAndPadlock) {
    auto* bar = new zorn_status_bar(frame);
    bar->Show();
    bar->set_size(0, 0, 700, 21);
    bar->sky_bar->Show();
    int before = bar->repaints;
    bar->Refresh(false);
    ASSERT_TRUE(wait_for_paint(bar->repaints, before));
    zorn_bitmap& b = *bar->backing_bitmap;
    const auto green = [](const zorn_rgb& c) { return c.red == 0 && c.blue == 0 && c.green > 128; };
    EXPECT_EQ(pixels_where(b, bar->ping_x, 1, bar->ping_right, 19, green), 0);
    EXPECT_EQ(lit_pixels(b, bar->lock_x, 1, bar->width - 2, 19), 0);

    before = bar->repaints;
    bar->set_icons("10100");
    ASSERT_TRUE(wait_for_paint(bar->repaints, before));
    EXPECT_GT(lit_pixels(*bar->backing_bitmap, 2, 2, 18, 18), 10);
    EXPECT_EQ(lit_pixels(*bar->backing_bitmap, 20, 2, 36, 18), 0);
    EXPECT_GT(lit_pixels(*bar->backing_bitmap, 38, 2, 54, 18), 10);

    before = bar->repaints;
    bar->add_ping_sample(100);
    bar->add_ping_sample(51);
    ASSERT_TRUE(wait_for_paint(bar->repaints, before));
    EXPECT_EQ(bar->ping_average, 75);
    EXPECT_GT(pixels_where(*bar->backing_bitmap, bar->ping_x, 1, bar->ping_right, 19, green), 10);

    before = bar->repaints;
    bar->update_sky_display("110 3 720 12:00 pm");
    ASSERT_TRUE(wait_for_paint(bar->repaints, before));
    EXPECT_STREQ(bar->clock_text.c_str(), "12:00 pm");
    EXPECT_EQ(bar->clock_colour, zorn_rgb(192, 192, 192));
    EXPECT_GT(pixels_where(*bar->backing_bitmap, bar->clock_x, 1, bar->clock_right, 19,
                           [](const zorn_rgb& c) { return c.red == c.green && c.green == c.blue && c.red >= 150 && c.red <= 192; }),
              5);

    // The padlock shows while the main text is locked; a click on it unlocks.
    link.main_following = false;
    before = bar->repaints;
    bar->Refresh(false);
    ASSERT_TRUE(wait_for_paint(bar->repaints, before));
    EXPECT_GT(lit_pixels(*bar->backing_bitmap, bar->lock_x, 1, bar->width - 2, 19), 20);
    const struct {
        int x;
        const char* tip;
    } spots[] = {
        {5, "You are not wielding anything."},
        {25, nullptr},
        {41, "Spell 'burning hands'"},
        {bar->ping_x + 3, "This is the round trip server ping time.\nValues above 500 ms indicate network lag."},
        {bar->clock_x + 3, "This is the in-game time of day."},
        {bar->lock_x + 3, "Scrolling is locked (click to unlock)."},
    };
    for (const auto& s : spots) {
        wxMouseEvent motion(wxEVT_MOTION);
        motion.SetEventObject(bar);
        motion.m_x = s.x;
        motion.m_y = 8;
        bar->GetEventHandler()->ProcessEvent(motion);
        if (s.tip)
            EXPECT_EQ(bar->GetToolTipText(), wxString::FromUTF8(s.tip)) << s.x;
        else
            EXPECT_EQ(bar->GetToolTip(), nullptr) << s.x;
    }
    wxMouseEvent click(wxEVT_LEFT_DOWN);
    click.SetEventObject(bar);
    click.m_x = bar->lock_x + 5;
    click.m_y = 5;
    click.m_leftDown = true;
    bar->GetEventHandler()->ProcessEvent(click);
    EXPECT_EQ(link.unlocks, 1);
    EXPECT_TRUE(link.main_following);

    // An empty icon list clears all; reset clears ping and clock and hides the bar.
    before = bar->repaints;
    bar->set_icons("");
    ASSERT_TRUE(wait_for_paint(bar->repaints, before));
    EXPECT_EQ(lit_pixels(*bar->backing_bitmap, 2, 2, 90, 18), 0);
    bar->reset();
    EXPECT_FALSE(bar->IsShown());
    EXPECT_EQ(bar->ping_count, 0);
    EXPECT_STREQ(bar->clock_text.c_str(), "");
    EXPECT_EQ(bar->clock_colour, zorn_rgb(191, 191, 191));
}

TEST_F(Panels, NarrowStatusBarRunsOffTheRightEnd) {
    auto* bar = new zorn_status_bar(frame);
    bar->Show();
    bar->set_size(0, 0, 200, 21);
    EXPECT_EQ(bar->clock_x, 131);
    EXPECT_GT(bar->lock_x, 200 - zorn_builtin_image(zorn_image_padlock)->GetWidth());
    EXPECT_EQ(bar->sky_bar->GetPosition(), wxPoint(100, 1));
    EXPECT_EQ(bar->sky_bar->GetSize(), wxSize(21, 19));
    bar->set_size(0, 0, 900, 21);
    EXPECT_GT(bar->clock_x, 131);
    EXPECT_EQ(bar->lock_x, 900 - 21);
    EXPECT_EQ(bar->sky_bar->GetSize(), wxSize(bar->clock_x - 10 - 100, 19));
}

TEST_F(Panels, BadSkyStateKeepsClockAndSky) {
    auto* bar = new zorn_status_bar(frame);
    bar->Show();
    bar->sky_bar->Show();
    bar->set_size(0, 0, 700, 21);
    bar->update_sky_display("111 4 600 10:00 am");
    pump_for(100);
    const int bar_paints = bar->repaints, sky_paints = bar->sky_bar->repaints;
    for (const char* bad : {"110 3 noon 12:00 pm", "110 3 1440 12:00 pm", "110 3"}) {
        log_capture log(2);
        bar->update_sky_display(bad);
        EXPECT_EQ(log.text(), "zorn_status_bar::update_sky_display() - bad value for current_minute.\n") << bad;
    }
    for (const char* bad : {"110 three 600 x", ""}) {
        log_capture log(2);
        bar->update_sky_display(bad);
        EXPECT_EQ(log.text(), "zorn_status_bar::update_sky_display() - bad value for terrain field.\n") << bad;
    }
    pump_for(100);
    EXPECT_STREQ(bar->clock_text.c_str(), "10:00 am");
    EXPECT_EQ(bar->sky_bar->current_minute, 600);
    EXPECT_EQ(bar->sky_bar->overcast, 1);
    EXPECT_EQ(bar->repaints, bar_paints);
    EXPECT_EQ(bar->sky_bar->repaints, sky_paints);
    EXPECT_EQ(bar->sky_bar->GetToolTipText(), wxT("It is cloudy and overcast."));
}

TEST_F(Panels, SkyPicturesThroughTheDay) {
    constexpr int w = 300, h = 19;
    random_seed(zorn_client_random(), 2026);
    auto* sky = new zorn_sky_bar(frame);
    EXPECT_EQ(sky->GetToolTipText(), wxT("The current view of the sky is displayed here."));
    sky->Show();
    sky->set_size(0, 0, w, h);
    const struct {
        const char* name;
        zorn_sky_fields fields;
    } states[] = {
        {"midnight", {1, 1, 0, 0, 0}},      {"dawn", {1, 1, 0, 0, 400}},    {"noon", {1, 1, 0, 0, 720}},
        {"dusk", {1, 1, 0, 0, 1160}},       {"late", {1, 1, 0, 0, 1439}},   {"overcast dawn", {1, 1, 1, 0, 400}},
        {"indoors dusk", {0, 1, 0, 0, 1160}}, {"hidden", {1, 0, 0, 0, 720}},
    };
    wxImage all(w, h * 8);
    int row = 0;
    for (const auto& s : states) {
        SCOPED_TRACE(s.name);
        const int before = sky->repaints;
        const zorn_sky_fields& f = s.fields;
        sky->set_sky_state(f.outdoors, f.sky_visible, f.overcast, f.terrain, f.current_minute);
        ASSERT_TRUE(wait_for_paint(sky->repaints, before));
        zorn_bitmap& b = *sky->backing_bitmap;
        const int cy = h / 2, r = h / 5;
        if (f.current_minute == 0) {
            // Night: black sky, the moon at 0.425 w.
            expect_pixels(b, {{127, cy, zorn_white}, {127 + r + 1, cy, zorn_grey192}, {250, 1, zorn_black}});
        }
        if (f.current_minute == 720 && f.sky_visible) {
            // Noon: the full sky colour, and the sun where the moon stood at midnight.
            expect_pixels(b, {{50, 2, zorn_rgb(85, 170, 255)},
                              {200, 16, zorn_rgb(85, 170, 255)},
                              {127, cy, zorn_white},
                              {127 + r + 1, cy, zorn_yellow},
                              {0, 5, zorn_white},
                              {w - 1, 5, zorn_white}});
        }
        if (!f.sky_visible) {
            EXPECT_EQ(count_color(b, zorn_black), (w - 2) * h);
            EXPECT_EQ(count_color(b, zorn_rgb(160, 160, 160)), 2 * h);
        }
        if (std::string(s.name) == "overcast dawn") {
            EXPECT_EQ(sky->GetToolTipText(), wxT("It is cloudy and overcast."));
        }
        pump_for(20);
        all.Paste(screen_image(sky), 0, h * row++);
    }
    expect_reference(all, "sky_pictures", 8);
}
