#include <gtest/gtest.h>

#include <string>

#include "testworld/wire.h"

namespace {

using namespace testworld;

TEST(TestworldWire, ColourIsOneCodePerSequence) {
    EXPECT_EQ(sgr(0), "\x1b[0m");
    EXPECT_EQ(colored("hi", sgr_yellow, true), "\x1b[1m\x1b[33mhi\x1b[0m");
    EXPECT_EQ(colored("a;b", sgr_green), "\x1b[32ma;;b\x1b[0m");
}

TEST(TestworldWire, TextAndTagFraming) {
    struct row {
        std::string produced;
        std::string expected;
    };
    const row rows[] = {
        {escape_text("a;b;;c"), "a;;b;;;;c"},
        {escape_text(""), ""},
        {tag("hp", "120 150 80 90 100 110"), ";shp;120 150 80 90 100 110;ehp;"},
        {tag("event", "lnpong"), ";sevent;lnpong;eevent;"},
        {tag("login", ""), ";slogin;;elogin;"},
        {tag("x", "a;b\r\nc"), ";sx;a,b\nc;ex;"},  // data has no escape
        {single_tag("bclear"), ";tbclear;"},
        {password_mode_on(), std::string("\xff\xfe\x01", 3)},
        {password_mode_off(), std::string("\xff\xfd\x01", 3)},
    };
    for (const row& r : rows) EXPECT_EQ(r.produced, r.expected);
}

TEST(TestworldWire, PlayerTextLosesControlBytes) {
    EXPECT_EQ(sanitize_player_text(std::string("a\xff\xfe\x01\x1b[1m\tb\x7f", 11)), "a?\xfe??[1m\tb?");
    EXPECT_EQ(sanitize_player_text("caf\xc3\xa9"), "caf\xc3\xa9") << "UTF-8 passes";
}

TEST(TestworldWire, ScriptEscapes) {
    struct row {
        const char* text;
        bool ok;
        std::string bytes;
        size_t error_offset;
    };
    const row rows[] = {
        {"plain text", true, "plain text", 0},
        {"a\\nb\\r\\t\\e\\s\\\\\\*", true, "a\nb\r\t\x1b \\*", 0},
        {"\\x00\\xff\\x3B", true, std::string("\0\xff;", 3), 0},
        {"\\xAb", true, "\xab", 0},
        {"ok\\q", false, "", 2},
        {"\\x4", false, "", 0},
        {"\\xg0", false, "", 0},
        {"end\\", false, "", 3},
    };
    for (const row& r : rows) {
        SCOPED_TRACE(r.text);
        std::string bytes;
        size_t offset = 99;
        ASSERT_EQ(unescape(r.text, &bytes, &offset), r.ok);
        if (r.ok) EXPECT_EQ(bytes, r.bytes);
        else EXPECT_EQ(offset, r.error_offset);
    }
}

TEST(TestworldWire, DisplayEscapesRoundTrip) {
    const std::string bytes("a\\b\x00\xff\n;", 7);
    const std::string shown = escape_for_display(bytes);
    EXPECT_EQ(shown, "a\\\\b\\x00\\xFF\\x0A;");
    std::string back;
    size_t offset = 0;
    ASSERT_TRUE(unescape(shown, &back, &offset));
    EXPECT_EQ(back, bytes);
}

}  // namespace
