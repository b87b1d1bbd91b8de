// The flood text: its numbering, its look, and the checker that proves a display got all of it.

#include <gtest/gtest.h>

#include <string>

#include "testworld/flood_text.h"

namespace {

using namespace testworld;

// What a display keeps of wire text: colour codes go, a doubled semicolon is one, CR is dropped.
std::string as_shown(const std::string& wire) {
    std::string out;
    for (size_t i = 0; i < wire.size(); i++) {
        if (wire[i] == '\x1b') {
            i = wire.find('m', i);
            continue;
        }
        if (wire[i] == ';') i++;
        if (wire[i] != '\r') out += wire[i];
    }
    return out;
}

TEST(FloodText, NumberedWholeLinesFromASeed) {
    const std::string flood = make_flood_text(200000);
    EXPECT_GE(flood.size(), 200000u);
    EXPECT_LT(flood.size(), 201000u);
    EXPECT_EQ(flood.substr(flood.size() - 2), "\r\n");
    EXPECT_EQ(flood.rfind("\x1b[33m0000000\x1b[0m ", 0), 0u);
    EXPECT_EQ(flood, make_flood_text(200000)) << "the same bytes every run";
    EXPECT_NE(flood, make_flood_text(200000, 2));
    const size_t lines = count_flood_lines(flood);
    EXPECT_GT(lines, 1000u);

    // Game text: colours, tabs, long lines, semicolons, a high byte.
    EXPECT_NE(flood.find('\t'), std::string::npos);
    EXPECT_NE(flood.find(";;"), std::string::npos);
    EXPECT_NE(flood.find('\xe9'), std::string::npos);
    EXPECT_NE(flood.find("\x1b[35m["), std::string::npos);
    size_t longest = 0;
    for (size_t at = 0, end; (end = flood.find('\n', at)) != std::string::npos; at = end + 1)
        longest = std::max(longest, end - at);
    EXPECT_GT(longest, 400u);
    for (size_t at = flood.find(';'); at != std::string::npos; at = flood.find(';', at + 2))
        ASSERT_EQ(flood[at + 1], ';') << "only doubled semicolons: no tag may start inside the flood";

    std::string problem;
    EXPECT_TRUE(check_flood_lines(as_shown(flood), lines, &problem)) << problem;
    EXPECT_TRUE(check_flood_lines("banner\n" + as_shown(flood) + "Connection closed by server.\n", lines, &problem))
        << "other text around the flood is passed over";
}

TEST(FloodText, CheckerFindsLostCutAndSwappedLines) {
    const std::string shown = as_shown(make_flood_text(20000));
    const size_t lines = count_flood_lines(make_flood_text(20000));
    const size_t third = shown.find("\n0000003 ") + 1;
    const size_t fourth = shown.find("\n0000004 ") + 1;
    const size_t fifth = shown.find("\n0000005 ") + 1;
    const struct {
        std::string text;
        std::string problem;
    } rows[] = {
        {shown.substr(0, third) + shown.substr(fourth), "line 4 where line 3 was due"},
        {shown.substr(0, third) + shown.substr(fourth, fifth - fourth) + shown.substr(third, fourth - third) +
             shown.substr(fifth),
         "line 4 where line 3 was due"},
        {shown.substr(0, third) + shown.substr(third, 20) + "\n" + shown.substr(fourth), "line 3 is cut short: '"},
        {shown.substr(0, fifth), "5 of " + std::to_string(lines) + " lines shown"},
    };
    for (const auto& row : rows) {
        std::string problem;
        EXPECT_FALSE(check_flood_lines(row.text, lines, &problem));
        EXPECT_EQ(problem.rfind(row.problem, 0), 0u) << problem;
    }
}

}  // namespace
