#include <gtest/gtest.h>

#include <string>

#include "testworld/wire.h"

namespace {

using namespace testworld;

// Colour, text and tags as they go on the wire.
TEST(TestworldWire, Framing) {
    const struct {
        std::string produced;
        std::string expected;
    } rows[] = {
        {sgr(0), "\x1b[0m"},
        {colored("hi", sgr_yellow, true), "\x1b[1m\x1b[33mhi\x1b[0m"},  // one code per sequence
        {colored("a;b", sgr_green), "\x1b[32ma;;b\x1b[0m"},
        {escape_text("a;b;;c"), "a;;b;;;;c"},
        {escape_text(""), ""},
        {tag("hp", "120 150 80 90 100 110"), ";shp;120 150 80 90 100 110;ehp;"},
        {tag("login", ""), ";slogin;;elogin;"},
        {tag("x", "a;b\r\nc"), ";sx;a,b\nc;ex;"},  // data has no escape
        {single_tag("bclear"), ";tbclear;"},
        {password_mode_on(), std::string("\xff\xfe\x01", 3)},
        {password_mode_off(), std::string("\xff\xfd\x01", 3)},
        {sanitize_player_text(std::string("a\xff\xfe\x01\x1b[1m\tb\x7f", 11)), "a?\xfe??[1m\tb?"},
        {sanitize_player_text("caf\xc3\xa9"), "caf\xc3\xa9"},  // UTF-8 passes
    };
    for (const auto& row : rows) EXPECT_EQ(row.produced, row.expected);
}

TEST(TestworldWire, ScriptEscapesAndTheirDisplay) {
    const struct {
        const char* text;
        bool ok;
        std::string bytes;
        size_t error_offset;
    } rows[] = {
        {"plain text", true, "plain text", 0},
        {"a\\nb\\r\\t\\e\\s\\\\\\*", true, "a\nb\r\t\x1b \\*", 0},
        {"\\x00\\xff\\x3B", true, std::string("\0\xff;", 3), 0},
        {"\\xAb", true, "\xab", 0},
        {"ok\\q", false, "", 2},
        {"\\x4", false, "", 0},
        {"\\xg0", false, "", 0},
        {"end\\", false, "", 3},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.text);
        std::string bytes;
        size_t offset = 99;
        ASSERT_EQ(unescape(row.text, &bytes, &offset), row.ok);
        if (row.ok) EXPECT_EQ(bytes, row.bytes);
        else EXPECT_EQ(offset, row.error_offset);
    }
    // Messages show bytes in the same escapes, and they read back.
    const std::string bytes("a\\b\x00\xff\n;", 7);
    EXPECT_EQ(escape_for_display(bytes), "a\\\\b\\x00\\xFF\\x0A;");
    std::string back;
    size_t offset = 0;
    ASSERT_TRUE(unescape(escape_for_display(bytes), &back, &offset));
    EXPECT_EQ(back, bytes);
}

}  // namespace
