// The numbers, parsers and arithmetic behind the status strips and the sky, without a window.
#include <gtest/gtest.h>

#include <cstring>
#include <sstream>
#include <string>
#include <vector>

#include "base/random.h"
#include "panels/status_model.h"
#include "tests/support/case_file.h"
#include "tests/support/log_capture.h"

namespace {

std::vector<int> numbers(const std::string& text) {
    std::istringstream in(text);
    std::vector<int> out;
    for (int n; in >> n;) out.push_back(n);
    return out;
}

std::vector<int> hit_points(const zorn_status_numbers& n) {
    return {n.hp, n.max_hp, n.mana, n.max_mana, n.move, n.max_move};
}

std::string icons_text(const int icon_on[zorn_icon_count]) {
    std::string out;
    for (int i = 0; i < zorn_icon_count; ++i) out += icon_on[i] ? '1' : '0';
    return out;
}

// Labels 8 pixels a character, as the cases assume.
int eight_per_character(const char* text) { return 8 * static_cast<int>(std::strlen(text)); }

const char* enemy_result_name(zorn_enemy_update u) {
    switch (u) {
        case zorn_enemy_update::cleared: return "cleared";
        case zorn_enemy_update::no_name: return "no_name";
        case zorn_enemy_update::same: return "same";
        case zorn_enemy_update::changed: return "changed";
    }
    return "?";
}

}  // namespace

TEST(status_model, hit_points_store_as_read_and_report_a_change_only_when_all_six_came) {
    for (const case_row& c : read_cases("panels/status_cases.txt", "hp")) {
        SCOPED_TRACE(c.where);
        zorn_status_numbers n;
        const std::vector<int> before = numbers(c.str(1));
        n.hp = before[0], n.max_hp = before[1], n.mana = before[2], n.max_mana = before[3], n.move = before[4],
        n.max_move = before[5];
        EXPECT_EQ(status_parse_hit_points(&n, c.text(2)), c.number(4) != 0);
        EXPECT_EQ(hit_points(n), numbers(c.str(3)));
    }
}

TEST(status_model, enemy_payloads) {
    for (const case_row& c : read_cases("panels/status_cases.txt", "enemy")) {
        SCOPED_TRACE(c.where);
        zorn_status_numbers n;
        n.enemy_percent = c.number(1);
        n.enemy_name.set(c.text(2));
        EXPECT_STREQ(enemy_result_name(status_parse_enemy(&n, c.text(3))), c.text(6));
        EXPECT_EQ(n.enemy_percent, c.number(4));
        EXPECT_STREQ(n.enemy_name.c_str(), c.text(5));
    }
    // A name longer than the field is cut at its 5999 characters.
    zorn_status_numbers n;
    const std::string payload = "50 " + std::string(14990, 'x');
    EXPECT_EQ(status_parse_enemy(&n, payload.c_str()), zorn_enemy_update::changed);
    EXPECT_EQ(n.enemy_name.size(), zorn_fixed_string::capacity);
    EXPECT_EQ(std::strlen(n.enemy_name.c_str()), 5999u);
}

TEST(status_model, experience_is_held_largest_first) {
    for (const case_row& c : read_cases("panels/status_cases.txt", "xpp")) {
        SCOPED_TRACE(c.where);
        zorn_status_numbers n;
        const std::vector<int> before = numbers(c.str(1));
        std::copy(before.begin(), before.end(), n.xp);
        EXPECT_EQ(status_parse_experience(&n, c.text(2)), c.number(4) != 0);
        EXPECT_EQ(std::vector<int>(n.xp, n.xp + zorn_xp_slots), numbers(c.str(3)));
    }
}

TEST(status_model, icons) {
    for (const case_row& c : read_cases("panels/status_cases.txt", "icons")) {
        SCOPED_TRACE(c.where);
        int icon_on[zorn_icon_count];
        for (int i = 0; i < zorn_icon_count; ++i) icon_on[i] = c.str(1)[i] == '1';
        EXPECT_EQ(status_parse_icons(icon_on, c.text(2)), c.number(4) != 0);
        EXPECT_EQ(icons_text(icon_on), c.str(3));
    }
}

TEST(status_model, sky_state_payloads_and_their_log_lines) {
    for (const case_row& c : read_cases("panels/status_cases.txt", "sky")) {
        SCOPED_TRACE(c.where);
        zorn_sky_fields f;
        zorn_fixed_string clock("unchanged");
        log_capture log(2);
        const bool accepted = parse_sky_state(c.text(1), &f, &clock);
        EXPECT_EQ(accepted, c.number(2) != 0);
        EXPECT_EQ(std::vector<int>({f.outdoors, f.sky_visible, f.overcast, f.terrain, f.current_minute}),
                  numbers(c.str(3)));
        if (accepted) {
            EXPECT_STREQ(clock.c_str(), c.text(4));
            EXPECT_EQ(log.text(), "");
        } else {
            EXPECT_STREQ(clock.c_str(), "unchanged");
            const std::string text = log.text();
            EXPECT_TRUE(text == "zorn_status_bar::update_sky_display() - bad value for current_minute.\n" ||
                        text == "zorn_status_bar::update_sky_display() - bad value for terrain field.\n")
                << text;
        }
    }
    // Which of the two lines: the terrain is checked first.
    zorn_sky_fields f;
    zorn_fixed_string clock;
    {
        log_capture log(2);
        parse_sky_state("110 dry 600", &f, &clock);
        EXPECT_EQ(log.text(), "zorn_status_bar::update_sky_display() - bad value for terrain field.\n");
    }
    {
        log_capture log(2);
        parse_sky_state("110 3 noon", &f, &clock);
        EXPECT_EQ(log.text(), "zorn_status_bar::update_sky_display() - bad value for current_minute.\n");
    }
    {
        // A clock text past the field's size is cut, not grown.
        const std::string payload = "110 3 600 " + std::string(14980, 'c');
        ASSERT_TRUE(parse_sky_state(payload.c_str(), &f, &clock));
        EXPECT_EQ(std::strlen(clock.c_str()), 5999u);
    }
}

TEST(status_model, display_layout_falls_back_through_the_compact_levels) {
    for (const case_row& c : read_cases("panels/status_cases.txt", "display")) {
        SCOPED_TRACE(c.where);
        zorn_status_flags flags;
        flags.hp_bars = c.number(3);
        flags.exp_bar = c.number(4);
        flags.enemy_bar = c.number(5);
        const zorn_status_display_layout l =
            compute_status_display_layout(c.number(1), c.number(2), flags, eight_per_character, 14);
        EXPECT_EQ(std::vector<int>({l.compact_level, l.bar_width, l.hp_x, l.mana_x, l.move_x, l.exp_x, l.bar_y,
                                    l.bar_height, l.enemy_bar_y, l.text_y, l.enemy_text_y}),
                  std::vector<int>({c.number(6), c.number(7), c.number(8), c.number(9), c.number(10), c.number(11),
                                    c.number(12), c.number(13), c.number(14), c.number(15), c.number(16)}));
    }
}

TEST(status_model, compact_level_follows_the_measured_label_widths) {
    // Wider glyphs push the same width to a more compact level.
    zorn_status_flags flags;
    flags.hp_bars = flags.exp_bar = true;
    int previous = -1;
    for (int per_character : {2, 8, 11, 14, 30}) {
        const auto measure = [per_character](const char* t) { return per_character * static_cast<int>(std::strlen(t)); };
        const int level = compute_status_display_layout(880, 19, flags, measure, 14).compact_level;
        EXPECT_GE(level, previous) << per_character;
        previous = level;
    }
    EXPECT_EQ(previous, 3);
}

TEST(status_model, status_bar_layout_keeps_the_clock_clear_of_the_sky) {
    for (const case_row& c : read_cases("panels/status_cases.txt", "bar")) {
        SCOPED_TRACE(c.where);
        const zorn_status_bar_layout l = compute_status_bar_layout(c.number(1), c.number(2), 21, 14, 64, 64);
        EXPECT_EQ(std::vector<int>({l.text_y, l.ping_x, l.ping_right, l.clock_x, l.clock_right, l.lock_x, l.width,
                                    l.sky_width, l.sky_height}),
                  std::vector<int>({c.number(3), c.number(4), c.number(5), c.number(6), c.number(7), c.number(8),
                                    c.number(9), c.number(10), c.number(11)}));
        EXPECT_EQ(l.sky_x, 100);
        EXPECT_EQ(l.sky_y, 1);
        EXPECT_GE(l.clock_x, zorn_status_bar_clock_minimum);
    }
}

TEST(status_model, gauge_fill_and_texts) {
    for (const case_row& c : read_cases("panels/status_cases.txt", "fill")) {
        SCOPED_TRACE(c.where);
        EXPECT_EQ(status_gauge_fill(c.number(1), c.number(2), c.number(3)), c.number(4));
    }
    for (const case_row& c : read_cases("panels/status_cases.txt", "exp")) {
        SCOPED_TRACE(c.where);
        zorn_fixed_string text;
        status_experience_text(c.number(1), c.number(2), &text);
        EXPECT_STREQ(text.c_str(), c.text(3));
    }
    zorn_status_numbers n;
    n.hp = 2000, n.max_hp = 150, n.mana = 7, n.max_mana = 90, n.move = -1, n.max_move = 1;
    zorn_fixed_string hp, mana, move;
    const char* expected[3][3] = {{" hp:2000/150", " mana:   7/90", " move:  -1/1"},
                                  {" hp:2000/150", " mn:   7/90", " mv:  -1/1"},
                                  {" hp:2000", " mn:   7", " mv:  -1"}};
    for (int level = 0; level < 3; ++level) {
        status_gauge_texts(n, level, &hp, &mana, &move);
        EXPECT_STREQ(hp.c_str(), expected[level][0]);
        EXPECT_STREQ(mana.c_str(), expected[level][1]);
        EXPECT_STREQ(move.c_str(), expected[level][2]);
    }
}

TEST(status_model, ping_average_over_the_last_four_samples) {
    zorn_ping_meter meter;
    EXPECT_EQ(meter.ping_count, 0);
    meter.add_ping_sample(100);
    meter.add_ping_sample(51);
    EXPECT_EQ(meter.ping_count, 2);
    EXPECT_EQ(meter.ping_average, 75);  // 151 / 2, truncated
    for (int ms : {10, 20, 30, 40}) meter.add_ping_sample(ms);
    EXPECT_EQ(meter.ping_count, 4);
    EXPECT_EQ(meter.ping_average, 25);  // the first two have been overwritten
    EXPECT_EQ(meter.ping_index, 2);
    // Huge samples don't overflow the sum.
    for (int i = 0; i < 4; ++i) meter.add_ping_sample(2000000000);
    EXPECT_EQ(meter.ping_average, 2000000000);
    meter.clear();
    EXPECT_EQ(meter.ping_count, 0);
    EXPECT_EQ(meter.ping_average, 0);
}

TEST(status_model, sky_daylight_glow_and_bodies) {
    for (const case_row& c : read_cases("panels/status_cases.txt", "daylight")) {
        SCOPED_TRACE(c.where);
        EXPECT_EQ(sky_daylight(c.number(1), c.number(2)), c.number(3));
    }
    for (const case_row& c : read_cases("panels/status_cases.txt", "glow")) {
        SCOPED_TRACE(c.where);
        int g = -7;
        EXPECT_EQ(sky_dawn_glow(c.number(1), &g), c.str(2) != "-");
        if (c.str(2) != "-") {
            EXPECT_EQ(g, c.number(2));
        }
        EXPECT_EQ(sky_dusk_glow(c.number(1), &g), c.str(3) != "-");
        if (c.str(3) != "-") {
            EXPECT_EQ(g, c.number(3));
        }
    }
    for (const case_row& c : read_cases("panels/status_cases.txt", "body")) {
        SCOPED_TRACE(c.where);
        const int w = c.number(1), offset = sky_offset(c.number(2), w);
        EXPECT_EQ(offset, c.number(3));
        EXPECT_LT(offset, 2 * w);
        EXPECT_EQ(sky_sun_x(w, offset), c.number(4));
        EXPECT_EQ(sky_moon_x(w, offset), c.number(5));
    }
    // Noon, clear: the full sky colour; indoors or overcast the peak is lower.
    EXPECT_EQ(sky_colour(sky_daylight(720, sky_peak(false))), zorn_rgb(85, 170, 255));
    zorn_sky_fields indoors{0, 1, 0, 0, 720}, overcast{1, 1, 1, 0, 720}, clear{1, 1, 0, 0, 720};
    EXPECT_TRUE(sky_dim(indoors));
    EXPECT_TRUE(sky_dim(overcast));
    EXPECT_FALSE(sky_dim(clear));
    EXPECT_EQ(sky_glow_colour(90, zorn_rgb(20, 50, 10)), zorn_rgb(90, 50, 30));
    zorn_star star;
    star.red = 200, star.green = 220, star.blue = 250;
    EXPECT_EQ(sky_star_colour(star, 255, 255, zorn_rgb(0, 0, 0)), zorn_rgb(200, 220, 250));
    EXPECT_EQ(sky_star_colour(star, 104, 208, zorn_rgb(10, 120, 30)), zorn_rgb(100, 120, 125));
}

TEST(status_model, sky_tooltips) {
    const struct {
        int visible, overcast, outdoors;
        const char* text;
    } rows[] = {
        {0, 1, 1, "You can't see the sky from here."},
        {1, 1, 1, "It is cloudy and overcast."},
        {1, 1, 0, "You can see the overcast sky from here."},
        {1, 0, 1, "The sky is clear."},
        {1, 0, 0, "You can see the clear sky from here."},
    };
    for (const auto& r : rows) {
        zorn_sky_fields f;
        f.sky_visible = r.visible, f.overcast = r.overcast, f.outdoors = r.outdoors;
        EXPECT_STREQ(sky_tooltip(f), r.text);
    }
}

TEST(status_model, stars_come_from_the_client_generator) {
    zorn_star first[zorn_star_count], second[zorn_star_count];
    random_seed(zorn_client_random(), 12345);
    make_stars(first, zorn_star_count);
    random_seed(zorn_client_random(), 12345);
    make_stars(second, zorn_star_count);
    int blue_white = 0;
    for (int i = 0; i < zorn_star_count; ++i) {
        const zorn_star& s = first[i];
        EXPECT_EQ(s.x, second[i].x);
        EXPECT_EQ(s.red, second[i].red);
        ASSERT_GE(s.x, 0.0);
        ASSERT_LT(s.x, 1.0);
        ASSERT_GE(s.y, 0.0);
        ASSERT_LT(s.y, 1.0);
        if (s.blue >= s.green && s.green >= s.red) {
            blue_white++;
            EXPECT_GE(s.blue, 192);
            EXPECT_LE(s.blue, 255);
        } else {
            EXPECT_GE(s.red, 192);
            EXPECT_GE(s.red, s.green);
            EXPECT_GE(s.green, s.blue);
        }
    }
    // Three in four are blue-white.
    EXPECT_GT(blue_white, 120);
    EXPECT_LT(blue_white, 180);
}
