#include <gtest/gtest.h>

#include <string>

#include "testworld/script.h"
#include "tests/net/net_test_support.h"

namespace {

using namespace testworld;

TEST(TestworldScript, ParsesEveryStep) {
    const std::string text =
        "# a comment\n"
        "\n"
        "expect _lantern *\n"
        "ignore lnlstatus\\s\n"
        "send \\e[1mhi\\x3B\r\n"
        "line hello there\n"
        "raw \\x17\\x03\n"
        "sleep 10\n"
        "timeout 200\n"
        "expect star at end\\*\n"
        "expect two backslashes \\\\*\n"
        "close\n"
        "drop\n"
        "reset\n";
    script parsed;
    std::string error;
    ASSERT_TRUE(parse_script(text, &parsed, &error)) << error;
    struct row {
        step_kind kind;
        std::string bytes;
        int number;
        bool prefix;
        int source_line;
    };
    const row expected[] = {
        {step_kind::expect, "_lantern ", 0, true, 3},
        {step_kind::ignore, "lnlstatus ", 0, false, 4},
        {step_kind::send, "\x1b[1mhi;", 0, false, 5},
        {step_kind::line, "hello there", 0, false, 6},
        {step_kind::raw, "\x17\x03", 0, false, 7},
        {step_kind::sleep, "", 10, false, 8},
        {step_kind::timeout, "", 200, false, 9},
        {step_kind::expect, "star at end*", 0, false, 10},
        {step_kind::expect, "two backslashes \\", 0, true, 11},
        {step_kind::close, "", 0, false, 12},
        {step_kind::drop, "", 0, false, 13},
        {step_kind::reset, "", 0, false, 14},
    };
    ASSERT_EQ(parsed.steps.size(), std::size(expected));
    for (size_t i = 0; i < parsed.steps.size(); i++) {
        SCOPED_TRACE(i);
        const script_step& step = parsed.steps[i];
        EXPECT_EQ(step.kind, expected[i].kind);
        EXPECT_EQ(step.bytes, expected[i].bytes);
        EXPECT_EQ(step.number, expected[i].number);
        EXPECT_EQ(step.prefix, expected[i].prefix);
        EXPECT_EQ(step.source_line, expected[i].source_line);
    }
}

TEST(TestworldScript, BadLinesAreReportedWithTheirNumber) {
    struct row {
        const char* text;
        const char* error;
    };
    const row rows[] = {
        {"bogus thing\n", "line 1: unknown step 'bogus'"},
        {"close\nsleep soon\n", "line 2: 'sleep' needs a number of milliseconds"},
        {"timeout -5\n", "line 1: 'timeout' needs a number of milliseconds"},
        {"timeout 99999999999\n", "line 1: 'timeout' needs a number of milliseconds"},
        {"# x\nclose now\n", "line 2: 'close' takes no argument"},
        {"send ab\\q\n", "line 1: bad escape at column 8"},
        {"Expect x\n", "line 1: unknown step 'Expect'"},
    };
    for (const row& r : rows) {
        script parsed;
        std::string error;
        EXPECT_FALSE(parse_script(r.text, &parsed, &error)) << r.text;
        EXPECT_EQ(error, r.error);
    }
}

TEST(TestworldScript, SendfileReadsItsFileFromTheScriptsDirectory) {
    net_test::temp_dir dir;
    const std::string bytes("flood\r\n;sdirs;on AA;edirs;\xff\x00tail", 29);
    net_test::write_file(dir.file("flood.txt"), bytes);
    net_test::write_file(dir.file("run.txt"), "expect _lantern *\nsendfile flood.txt\nsendfile " + dir.file("flood.txt") + "\n");
    script parsed;
    std::string error;
    ASSERT_TRUE(load_script(dir.file("run.txt"), &parsed, &error)) << error;
    ASSERT_EQ(parsed.steps.size(), 3u);
    EXPECT_EQ(parsed.steps[1].kind, step_kind::sendfile);
    EXPECT_EQ(parsed.steps[1].bytes, bytes) << "relative to the script";
    EXPECT_EQ(parsed.steps[2].bytes, bytes) << "absolute";

    net_test::write_file(dir.file("bad.txt"), "close\nsendfile missing.txt\n");
    EXPECT_FALSE(load_script(dir.file("bad.txt"), &parsed, &error));
    EXPECT_EQ(error, "line 2: cannot read '" + dir.file("missing.txt") + "'");
    EXPECT_FALSE(parse_script("sendfile\n", &parsed, &error));
    EXPECT_EQ(error, "line 1: 'sendfile' needs a file name");
}

TEST(TestworldScript, MissingFileIsAnError) {
    script parsed;
    std::string error;
    EXPECT_FALSE(load_script("/nonexistent/lantern/script.txt", &parsed, &error));
    EXPECT_EQ(error, "cannot read '/nonexistent/lantern/script.txt'");
}

}  // namespace
