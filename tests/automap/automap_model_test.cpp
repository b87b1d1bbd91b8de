// The map block decoder as golden cases, every prefix of every block, the queue with its pacing,
// the bump at a wall, the level change and the reset.
#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "automap/automap_model.h"
#include "tests/automap/automap_test_support.h"
#include "tests/support/case_file.h"
#include "tests/support/log_capture.h"

namespace {

int count_cells(const automap_model& model, bool rooms_only) {
    int n = 0;
    for (int c = 0; c < automap_grid_size; c++) {
        for (int r = 0; r < automap_grid_size; r++) {
            const automap_cell& cell = model.cell(c, r);
            n += rooms_only ? cell.seed != 0
                            : (cell.terrain || cell.flags || cell.seed || cell.spare || cell.edge);
        }
    }
    return n;
}

// Checks one expectation token against the decoded model.
void check(const automap_model& model, const std::string& token, const std::string& log) {
    SCOPED_TRACE(token);
    int a = 0, b = 0;
    if (std::sscanf(token.c_str(), "slide=%d,%d", &a, &b) == 2) {
        EXPECT_EQ(model.scroll_x, a);
        EXPECT_EQ(model.scroll_y, b);
    } else if (std::sscanf(token.c_str(), "level=%d,%d", &a, &b) == 2) {
        EXPECT_EQ(model.level_kind, a);
        EXPECT_EQ(model.level_step, b);
    } else if (std::sscanf(token.c_str(), "cells=%d", &a) == 1) {
        EXPECT_EQ(count_cells(model, false), a);
    } else if (std::sscanf(token.c_str(), "rooms=%d", &a) == 1) {
        EXPECT_EQ(count_cells(model, true), a);
    } else if (token.rfind("log=", 0) == 0) {
        std::string wanted = token.substr(4);
        for (char& c : wanted) c = c == '_' ? ' ' : c;
        EXPECT_NE(log.find("Error in zorn_automap_renderer::display_socket_data() - "), std::string::npos) << log;
        EXPECT_NE(log.find(wanted), std::string::npos) << log;
    } else if (token == "nolog") {
        EXPECT_EQ(log, "");
    } else {
        int c, r, t, f, s, p, e;
        ASSERT_EQ(std::sscanf(token.c_str(), "%d,%d=%d,%d,%d,%d,%d", &c, &r, &t, &f, &s, &p, &e), 7) << "bad token";
        const automap_cell& cell = model.cell(c, r);
        EXPECT_EQ(cell.terrain, t);
        EXPECT_EQ(cell.flags, f);
        EXPECT_EQ(cell.seed, s);
        EXPECT_EQ(cell.spare, p);
        EXPECT_EQ(cell.edge, e);
    }
}

TEST(AutomapDecoder, GoldenCases) {
    for (const case_row& row : read_cases("automap/decoder_cases.txt", "case")) {
        SCOPED_TRACE(row.where + " " + row.str(1));
        automap_model model;
        model.cell_size = row.number(2);
        const std::string block = expand_repeats(row.str(3));
        std::string log;
        {
            log_capture capture(2);
            model.display_socket_data(block.data(), static_cast<int>(block.size()));
            log = capture.text();
        }
        EXPECT_EQ(model.animating, 1);
        std::istringstream tokens(row.str(4));
        for (std::string token; tokens >> token;) check(model, token, log);
    }
}

// Server data arrives cut anywhere: each prefix of each block, given without a terminator, decodes
// without reading past its end and leaves a grid no fuller than the whole block's.
TEST(AutomapDecoder, EveryPrefixDecodes) {
    std::vector<std::string> blocks;
    for (const case_row& row : read_cases("automap/decoder_cases.txt", "case")) blocks.push_back(expand_repeats(row.str(3)));
    blocks.push_back(fixture_block());
    blocks.push_back(testworld_block(7, 7, 0, 'E', 'A'));
    log_capture quiet(0);
    for (const std::string& block : blocks) {
        automap_model whole;
        whole.display_socket_data(block.data(), static_cast<int>(block.size()));
        for (size_t length = 0; length <= block.size(); length++) {
            const std::vector<char> prefix(block.begin(), block.begin() + static_cast<long>(length));
            automap_model model;
            model.display_socket_data(prefix.data(), static_cast<int>(length));
            ASSERT_LE(count_cells(model, true), count_cells(whole, true) + 1) << "prefix " << length;
        }
    }
}

// A test's slide: no jitter, so each tick moves by cell_size / 4 plus the boost.
struct counting_client : automap_model_client {
    int renders = 0, repaints = 0;
    void render_map() override { renders++; }
    void mark_repaint() override { repaints++; }
};

int no_jitter(int) { return 0; }

int bumps = 0;
void count_bump() { bumps++; }

class AutomapQueue : public ::testing::Test {
protected:
    void SetUp() override {
        model.client = &client;
        model.random_below_fn = &no_jitter;
        model.cell_size = 11;
        bumps = 0;
        zorn_automap_wall_bump = &count_bump;
    }
    void TearDown() override { zorn_automap_wall_bump = nullptr; }
    void queue(const std::string& block) { model.queue_socket_data(block.data(), static_cast<int>(block.size())); }
    // Ticks until the slide is over (the next map, if any, has just been shown); the number of
    // ticks.
    int run_slide() {
        const int renders = client.renders;
        int ticks = 0;
        do {
            model.animate_step();
            ticks++;
        } while (client.renders == renders && model.animating && ticks < 1000);
        return ticks;
    }

    automap_model model;
    counting_client client;
};

TEST_F(AutomapQueue, FiveMapsAtOnceShowTheFirstAndQueueFour) {
    for (char direction : std::string("ABCDE")) queue(std::string(1, direction) + "AAAAAAAAAAA\n");
    EXPECT_EQ(client.renders, 1);
    EXPECT_EQ(model.pending_length(), 4);
    EXPECT_EQ(model.scroll_y, 22) << "the first map slides at once";
    // Each handover: the boost rises while two or more wait, falls as the queue empties.
    const int boost_after_handover[] = {1, 2, 1, 1};
    const int remaining[] = {3, 2, 1, 0};
    for (int i = 0; i < 4; i++) {
        SCOPED_TRACE(i);
        run_slide();
        EXPECT_EQ(model.pending_length(), remaining[i]);
        EXPECT_EQ(model.speed_boost, boost_after_handover[i]);
        EXPECT_EQ(client.renders, 2 + i);
        EXPECT_EQ(model.animating, 1);
    }
    EXPECT_EQ(model.scroll_x, -22) << "the last map (E, northeast) slides";
    run_slide();
    EXPECT_EQ(model.speed_boost, 0);
    EXPECT_EQ(model.animating, 0);
    const int repaints = client.repaints;
    model.animate_step();
    EXPECT_EQ(client.repaints, repaints) << "at rest a tick does nothing";
}

TEST_F(AutomapQueue, AMapDuringASlideWaitsForItsEnd) {
    queue("A");
    model.animate_step();
    const int after_one_tick = model.scroll_y;
    EXPECT_EQ(after_one_tick, 22 - 11 / 4);
    queue("@DDDDDDDDDDD\n");
    EXPECT_EQ(model.scroll_y, after_one_tick) << "the slide isn't disturbed";
    EXPECT_EQ(model.cell(1, 0).edge, 0) << "the new map isn't shown yet";
    EXPECT_EQ(run_slide(), 10) << "20 pixels left at 2 a tick";
    EXPECT_EQ(model.cell(1, 0).edge, 4) << "it shows when the slide ends";
    EXPECT_EQ(model.pending_length(), 0);
}

TEST_F(AutomapQueue, QueuedMapsAreCutAtTheLimit) {
    queue("A");
    const struct {
        int length;
        int kept;
        bool logged;
    } rows[] = {{automap_queue_text_limit - 1, automap_queue_text_limit - 1, false},
                {automap_queue_text_limit, automap_queue_text_limit, false},
                {automap_queue_text_limit + 1, automap_queue_text_limit, true},
                {5000, automap_queue_text_limit, true}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.length);
        log_capture capture(2);
        queue(std::string(static_cast<size_t>(row.length), '@'));
        ASSERT_NE(model.pending_back(), nullptr);
        EXPECT_EQ(model.pending_back()->length, row.kept);
        EXPECT_EQ(model.pending_back()->text[row.kept], '\0');
        const std::string wanted = "queue_socket_data() - automap too big, got len " + std::to_string(row.length) + ".\n";
        EXPECT_EQ(capture.text(), row.logged ? wanted : "");
    }
}

TEST_F(AutomapQueue, ABlockShownAtOnceIsNeverCut) {
    std::string block = "@" + std::string(6000, 'A');
    log_capture capture(2);
    queue(block);
    EXPECT_EQ(capture.text().find("too big"), std::string::npos);
}

TEST_F(AutomapQueue, WalkFailBumpsTowardsTheWallAtRestOnly) {
    // Direction numbers 0 to 7 bump against the sign of a real move, two thirds of a grid step.
    const struct {
        const char* payload;
        int x, y;
    } rows[] = {{"0", 0, -7}, {"1", 7, 0}, {"2", 0, 7}, {"3", -7, 0}, {"4", 7, -7}, {"5", 7, 7}, {"6", -7, 7}, {"7", -7, -7}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.payload);
        const int before = bumps;
        model.walk_failed(row.payload);
        EXPECT_EQ(model.scroll_x, row.x);
        EXPECT_EQ(model.scroll_y, row.y);
        EXPECT_EQ(bumps, before + 1);
        EXPECT_EQ(model.animating, 1);
        run_slide();
    }
    for (const char* payload : {"9", "8", "-1", "north", ""}) {
        SCOPED_TRACE(payload);
        model.walk_failed(payload);
        EXPECT_TRUE(model.at_rest());
    }
    model.walk_failed(nullptr);
    queue("B");
    const int sliding_x = model.scroll_x;
    model.walk_failed("1");
    EXPECT_EQ(model.scroll_x, sliding_x) << "no bump during a slide";
    EXPECT_EQ(bumps, 8);
}

TEST_F(AutomapQueue, LevelChangesRunTheirSteps) {
    const std::string rest = std::string("@") + expand_repeats("{47:@\n}{11:@@@@\n}");
    const struct {
        char trailer;
        std::vector<int> steps;
    } rows[] = {{'A', {1, 2, 3, 4, 5, 6, 7, 8, 9, 0}}, {'B', {9, 8, 7, 6, 5, 4, 3, 2, 1, 0}}, {'C', {0}}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.trailer);
        queue(rest + row.trailer);
        std::vector<int> seen{model.level_step};
        while (model.level_step != 0) {
            model.animate_step();
            seen.push_back(model.level_step);
        }
        EXPECT_EQ(seen, row.steps);
        EXPECT_EQ(model.level_kind, row.trailer - '@');
    }
}

TEST_F(AutomapQueue, ResetClearsGridSlideQueueAndBoost) {
    for (int i = 0; i < 4; i++) queue("AAAAAAAAAAAA\n");
    run_slide();
    ASSERT_EQ(model.speed_boost, 1);
    const int renders = client.renders;
    model.reset_map();
    EXPECT_EQ(client.renders, renders + 1) << "the empty picture is drawn";
    EXPECT_EQ(model.pending_length(), 0);
    EXPECT_EQ(model.speed_boost, 0);
    EXPECT_TRUE(model.at_rest());
    EXPECT_EQ(model.cell(1, 0).edge, 0);
}

}  // namespace
