#include "panels/popup_payload.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/support/case_file.h"

namespace {

std::string flags_of(const zorn_popup_description& d) {
    return std::string(d.noscroll ? "1" : "0") + (d.nowrap ? "1" : "0") + (d.menuonly ? "1" : "0");
}

}  // namespace

TEST(WindowCreate, GoldenCases) {
    for (const case_row& c : read_cases("panels/window_create_cases.txt")) {
        SCOPED_TRACE(c.where);
        zorn_popup_description d;
        const char* error = nullptr;
        const bool parsed = zorn_parse_window_create(c.text(1), &d, &error);
        if (c.str(0) == "refused") {
            EXPECT_FALSE(parsed);
            ASSERT_NE(error, nullptr);
            EXPECT_EQ(std::string(error), c.str(2));
            continue;
        }
        ASSERT_TRUE(parsed) << (error ? error : "");
        EXPECT_EQ(d.name, c.str(2));
        EXPECT_EQ(d.title, c.str(3));
        EXPECT_EQ(d.columns, c.number(4));
        EXPECT_EQ(d.rows, c.number(5));
        EXPECT_EQ(d.command, c.str(6));
        EXPECT_EQ(flags_of(d), c.str(7));
    }
}

// Lines are cut at 5999 bytes and the command at 399; nothing runs past a limit.
TEST(WindowCreate, LimitsCutAndNeverOverrun) {
    const std::string name(7000, 'n'), title(5999, 't'), command(5000, 'c');
    zorn_popup_description d;
    ASSERT_TRUE(zorn_parse_window_create((name + "\n" + title + "\n1 1\n" + command + "\nnowrap\n").c_str(), &d));
    EXPECT_EQ(d.name.size(), 5999u);
    EXPECT_EQ(d.title.size(), 5999u);
    EXPECT_EQ(d.command, std::string(zorn_popup_command_limit, 'c'));
    EXPECT_TRUE(d.nowrap);
    EXPECT_FALSE(zorn_parse_window_create(nullptr, &d));
}
