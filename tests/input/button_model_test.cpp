// The button sets' decisions without a window: tags, payloads, the hint column's places, the
// function key labels and the exits code, from tests/input/button_cases.txt.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "input/button_model.h"
#include "tests/support/case_file.h"

namespace {

// A font where every character is one pixel: the first `count` characters fit.
fit_function fits(int count) {
    return [count](const char* text) {
        const int length = static_cast<int>(std::strlen(text));
        return length == 0 ? 0 : std::max(1, std::min(length, count));
    };
}

TEST(ButtonModel, HintTags) {
    for (const case_row& row : read_cases("input/button_cases.txt", "hint_tag")) {
        SCOPED_TRACE(row.where);
        const hint_tag tag = parse_hint_tag(row.text(1));
        EXPECT_EQ(tag.number, row.number(2));
        EXPECT_EQ(tag.bogus, row.number(3) != 0);
        EXPECT_EQ(tag.tooltip, row.number(4) != 0);
    }
}

TEST(ButtonModel, HintPayloads) {
    for (const case_row& row : read_cases("input/button_cases.txt", "hint_payload")) {
        SCOPED_TRACE(row.where);
        const hint_payload split = split_hint_payload(row.text(1));
        EXPECT_EQ(split.label, row.str(2));
        EXPECT_EQ(split.command, row.str(3));
        EXPECT_EQ(split.has_command, row.number(4) != 0);
    }
}

TEST(ButtonModel, HintColumnLeavesAGapBeforeEachGroup) {
    std::vector<bool> shown(hint_button_count);
    shown[0] = shown[1] = shown[4] = true;
    const std::vector<int> y = hint_column_positions(shown, 134);
    EXPECT_EQ(y[0], 134 + 16);
    EXPECT_EQ(y[1], 134 + 49);
    EXPECT_EQ(y[4], 134 + 98);
    // Connect and Quit: the first and the last, each after a gap.
    std::vector<bool> ends(hint_button_count);
    ends.front() = ends.back() = true;
    const std::vector<int> e = hint_column_positions(ends, 0);
    EXPECT_EQ(e.front(), 16);
    EXPECT_EQ(e.back(), 16 + 33 + 16);
    // A full column: one gap only.
    const std::vector<int> all = hint_column_positions(std::vector<bool>(hint_button_count, true), 0);
    EXPECT_EQ(all.back(), 16 + 11 * 33);
}

TEST(ButtonModel, FunctionKeyTagsAndLabels) {
    for (const case_row& row : read_cases("input/button_cases.txt", "fkey_tag")) {
        SCOPED_TRACE(row.where);
        int number = -99;
        const fkey_tag_action action = classify_fkey_tag(row.text(1), &number);
        EXPECT_EQ(number, row.number(2));
        const char* names[] = {"setup", "ignore", "bogus"};
        EXPECT_EQ(names[static_cast<int>(action)], row.str(3));
    }
    for (const case_row& row : read_cases("input/button_cases.txt", "fkey_label")) {
        SCOPED_TRACE(row.where);
        EXPECT_EQ(fkey_payload_label(row.text(1)), row.str(2));
    }
}

TEST(ButtonModel, FunctionKeyLabelOnTwoLines) {
    for (const case_row& row : read_cases("input/button_cases.txt", "split")) {
        SCOPED_TRACE(row.where);
        std::string line_1 = "stale", line_2 = "stale";
        fkey_label_split(row.text(1), fits(row.number(2)), &line_1, &line_2);
        EXPECT_EQ(line_1, row.str(3));
        EXPECT_EQ(line_2, row.str(4));
    }
    // Line 2 never holds more than 98 characters, however many fit.
    const std::string label = std::string(100, 'a') + " " + std::string(110, 'b');
    std::string line_1, line_2;
    fkey_label_split(label.c_str(), fits(120), &line_1, &line_2);
    EXPECT_EQ(line_1, std::string(100, 'a'));
    EXPECT_EQ(line_2, std::string(98, 'b'));
}

TEST(ButtonModel, ExitsCode) {
    for (const case_row& row : read_cases("input/button_cases.txt", "exits")) {
        SCOPED_TRACE(row.where);
        int mask = 0;
        EXPECT_EQ(parse_exits_code(row.text(1), &mask), row.number(2) != 0);
        EXPECT_EQ(mask, row.number(3));
    }
}

TEST(ButtonModel, DirectionBlockFillsItsPlace) {
    int bits = 0;
    for (const direction_button_row& row : direction_button_table) {
        SCOPED_TRACE(row.label);
        EXPECT_LE(row.x + row.width, direction_block_width);
        EXPECT_LE(row.y + row.height, direction_block_height);
        EXPECT_EQ(bits & row.exit_bit, 0) << "each bit once";
        bits |= row.exit_bit;
    }
    EXPECT_EQ(bits, 1023);
    EXPECT_EQ(fkey_row_width(46), 358);
    EXPECT_EQ(fkey_button_side(46), 41);
    EXPECT_EQ(fkey_button_side(3), 1);
    EXPECT_EQ(fkey_button_x(10, 41, 7), 10 + 3 + 7 * 44);
}

}  // namespace
