// The group display's model without a window: the block's golden cases, heights and row places,
// the member under the pointer, and the drawing steps of bars and rows.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <sstream>
#include <string>
#include <vector>

#include "panels/group_model.h"
#include "tests/support/case_file.h"
#include "tests/support/log_capture.h"

namespace {

std::string render(const std::vector<zorn_group_member>& members) {
    std::string out;
    for (const zorn_group_member& m : members) {
        char numbers[120];
        std::snprintf(numbers, sizeof numbers, "%d %d %d %d %d %d %d", m.hp, m.max_hp, m.mana, m.max_mana, m.move,
                      m.max_move, m.row_kind);
        out += (out.empty() ? "" : ", ") + std::string(numbers) + " [" + m.name + "]";
    }
    return out;
}

void fixed_measure(const char* text, int* width, int* height) {
    *width = 7 * static_cast<int>(std::string(text).size());
    *height = 14;
}

bool same(const zorn_rgb& a, const zorn_rgb& b) { return a == b; }

// The steps of one bar, as text: "rect 10 6 13 7 | line 10 5 13 5 | pixel 13 5 | ..."
std::string bar_steps(int mode, bool inverted, bool thin, int v, int m) {
    group_paint_settings s;
    s.mode = mode;
    s.inverted = inverted;
    std::vector<group_op> ops;
    group_bar_ops(&ops, s, thin, 10, 5, 10, 4, v, m, group_hp_fill, group_hp_top);
    std::ostringstream out;
    for (const group_op& op : ops) {
        const char* kind = op.kind == group_op::rect ? "rect" : op.kind == group_op::line ? "line" : "pixel";
        out << (out.tellp() ? " | " : "") << kind << " " << op.x1 << " " << op.y1;
        if (op.kind != group_op::pixel) out << " " << op.x2 << " " << op.y2;
        if (same(op.color, group_hp_fill)) out << " fill";
        if (same(op.color, group_hp_top)) out << " top";
        if (same(op.color, zorn_rgb(0, 0, 0))) out << " black";
        if (same(op.color, group_plain_frame)) out << " plain";
        if (same(op.color, group_thin_frame)) out << " thin";
    }
    return out.str();
}

TEST(GroupModel, ParseBlocks) {
    for (const case_row& row : read_cases("panels/group_cases.txt", "parse")) {
        SCOPED_TRACE(row.where + ": " + row.str(1));
        log_capture log(2);
        EXPECT_EQ(render(parse_group_lines(row.text(1))), row.str(2));
        EXPECT_EQ(log.text(), row.str(3));
    }
    log_capture quiet(1);
    EXPECT_TRUE(parse_group_lines(nullptr).empty());
    EXPECT_TRUE(parse_group_lines("1 2 3").empty());
    EXPECT_EQ(quiet.text(), "") << "level 2 only";
    // A name is cut at 5999 characters.
    const std::string block = "1 1 1 1 1 1 " + std::string(7000, 'n');
    EXPECT_EQ(parse_group_lines(block.c_str())[0].name.size(), 5999u);
}

TEST(GroupModel, HeightsAndRowPlaces) {
    for (const case_row& row : read_cases("panels/group_cases.txt", "height")) {
        SCOPED_TRACE(row.where);
        const std::vector<zorn_group_member> members = parse_group_lines(row.text(1));
        const group_metrics metrics = group_metrics_for(row.number(2));
        EXPECT_EQ(group_required_height(members, metrics), row.number(3));
        const group_places places = group_row_places(members, metrics);
        std::string rows;
        for (const group_row_place& p : places.rows)
            rows += (rows.empty() ? "" : " ") + std::to_string(p.y) + ":" + std::to_string(p.height);
        EXPECT_EQ(rows, row.str(4));
        EXPECT_EQ(places.divider_y, row.number(5));
        // The last row always ends inside the panel, above its frame.
        if (!places.rows.empty()) {
            EXPECT_LE(places.rows.back().y + places.rows.back().height, group_required_height(members, metrics) - 1);
        }
    }
    for (const case_row& row : read_cases("panels/group_cases.txt", "at")) {
        SCOPED_TRACE(row.where);
        EXPECT_EQ(group_row_at(parse_group_lines(row.text(1)), group_metrics_for(row.number(2)), row.number(3)),
                  row.number(4));
    }
}

TEST(GroupModel, BarsByModeAndInversion) {
    // 4 of 10 points on a bar 10 wide at x 10, y 5, 4 high: fill 4.
    EXPECT_EQ(bar_steps(1, false, false, 4, 10),
              "rect 10 6 13 7 fill | line 10 5 13 5 top | pixel 13 5 black | line 9 4 9 8 plain | line 10 8 18 8 plain");
    EXPECT_EQ(bar_steps(1, true, false, 4, 10),
              "rect 13 6 19 7 fill | line 13 5 19 5 top | pixel 13 5 black | line 19 5 19 8 plain | line 10 8 18 8 plain");
    EXPECT_EQ(bar_steps(2, false, false, 4, 10),
              "rect 16 6 19 7 fill | line 16 5 19 5 top | pixel 16 5 black | line 20 4 20 8 plain | line 11 8 19 8 plain");
    EXPECT_EQ(bar_steps(2, true, false, 4, 10),
              "rect 10 6 16 7 fill | line 10 5 16 5 top | pixel 16 5 black | line 9 5 9 8 plain | line 10 8 19 8 plain");
    // The thin frame: the middle line below the fill, the sides, a black pixel at the fill's end.
    EXPECT_EQ(bar_steps(1, false, true, 4, 10),
              "line 11 6 18 6 thin | rect 10 6 13 7 fill | line 10 5 13 5 top | pixel 13 5 black | line 9 4 9 8 thin | "
              "line 19 4 19 8 thin | pixel 13 7 black");
    EXPECT_EQ(bar_steps(2, true, true, 4, 10),
              "line 11 6 18 6 thin | rect 10 6 16 7 fill | line 10 5 16 5 top | pixel 16 5 black | line 10 4 10 8 thin | "
              "line 20 4 20 8 thin | pixel 10 7 black");
    // Nothing at all for 0 of 0; a zero maximum with points left, or more than the maximum, is full.
    EXPECT_EQ(bar_steps(1, false, false, 0, 0), "");
    EXPECT_EQ(bar_steps(1, false, false, -3, 0), "");
    EXPECT_EQ(bar_steps(1, false, false, 0, 10), "line 9 4 9 8 plain | line 10 8 18 8 plain") << "empty: the frame only";
    EXPECT_EQ(group_bar_fill(5, 0, 10), 10);
    EXPECT_EQ(group_bar_fill(200, 150, 10), 10);
    EXPECT_EQ(group_bar_fill(-5, 150, 10), 0);
    EXPECT_EQ(group_bar_fill(2147483647, 1, 10), 10);
    // Full and inverted in mode 2: nothing lost, nothing drawn but the frame.
    EXPECT_EQ(bar_steps(2, true, false, 10, 10), "line 9 5 9 8 plain | line 10 8 19 8 plain");
}

// The steps of a whole panel: where the divider and the names go.
TEST(GroupModel, PanelDividerAndNames) {
    const std::vector<zorn_group_member> members =
        parse_group_lines("10 10 5 5 8 8 Anna\n10 10 0 0 8 8 . Bo\n0 0 0 0 8 8 - Pip\n5 5 0 0 4 4 - Rex\n");
    const group_metrics metrics = group_metrics_for(14);
    const int height = group_required_height(members, metrics);
    for (int mode : {1, 2}) {
        for (bool vertical : {true, false}) {
            SCOPED_TRACE("mode " + std::to_string(mode) + (vertical ? " vertical" : " horizontal"));
            group_paint_settings s;
            s.mode = mode;
            s.vertical = vertical;
            s.frame = zorn_rgb(1, 2, 3);
            const std::vector<group_op> ops = group_paint(members, metrics, s, 160, height, fixed_measure);
            ASSERT_FALSE(ops.empty());
            EXPECT_EQ(ops.front().kind, group_op::rect) << "the black background first";
            int dividers = 0, hp_bars = 0;
            std::vector<group_op> texts;
            for (const group_op& op : ops) {
                if (op.kind == group_op::line && op.x1 == 2 && op.x2 == 157 && same(op.color, s.frame)) {
                    dividers++;
                    EXPECT_EQ(op.y1, group_row_places(members, metrics).divider_y);
                }
                if (op.kind == group_op::rect && same(op.color, group_hp_fill)) hp_bars++;
                if (op.kind == group_op::text) texts.push_back(op);
            }
            EXPECT_EQ(dividers, 1);
            EXPECT_EQ(hp_bars, 3) << "Pip has 0 of 0 hit points: no bar";
            ASSERT_EQ(texts.size(), 4u);
            const int b = vertical ? (158 - 3) * 7 / 16 - 3 : (158 - 3) / 3 - 3;
            const int full_x = vertical ? b + 6 : mode == 1 ? 3 : 158 - 28;
            EXPECT_EQ(texts[0].x1, full_x) << "a full row's name";
            EXPECT_EQ(texts[1].x1, mode == 2 && !vertical ? 158 - 14 : b + 6) << "a compact row's name";
        }
    }
    // A divided block at the very top gets no divider line.
    group_paint_settings s;
    s.frame = zorn_rgb(1, 2, 3);
    const std::vector<zorn_group_member> top = parse_group_lines("1 1 1 1 1 1 - A\n1 1 1 1 1 1 - B");
    int dividers = 0;
    for (const group_op& op : group_paint(top, metrics, s, 160, group_required_height(top, metrics), fixed_measure))
        dividers += op.kind == group_op::line && op.x1 == 2 && same(op.color, s.frame);
    EXPECT_EQ(dividers, 0);
}

}  // namespace
