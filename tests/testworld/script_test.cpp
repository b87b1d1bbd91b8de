#include <gtest/gtest.h>

#include <string>

#include "testworld/script.h"
#include "testworld/wire.h"
#include "tests/net/net_test_support.h"

namespace {

using namespace testworld;

// Each parsed step as "line N: kind [bytes] number", bytes escaped, "prefix" for a prefix expect.
std::string describe(const script& parsed) {
    static const char* const kinds[] = {"expect", "ignore", "send",    "sendfile", "line", "raw",
                                        "sleep",  "timeout", "close", "drop",     "reset"};
    std::string out;
    for (const script_step& step : parsed.steps) {
        out += "line " + std::to_string(step.source_line) + ": " + kinds[static_cast<int>(step.kind)] + " [" +
               escape_for_display(step.bytes) + "] " + std::to_string(step.number) + (step.prefix ? " prefix" : "") +
               "\n";
    }
    return out;
}

TEST(TestworldScript, ParsesEveryStep) {
    const std::string base = LANTERN_SOURCE_DIR "/tests/testworld/script_every_step";
    script parsed;
    std::string error;
    ASSERT_TRUE(load_script(base + ".txt", &parsed, &error)) << error;
    EXPECT_EQ(describe(parsed), net_test::read_file(base + ".expected"));
}

TEST(TestworldScript, BadLinesAreReportedWithTheirNumber) {
    const struct {
        const char* text;
        const char* error;
    } rows[] = {
        {"bogus thing\n", "line 1: unknown step 'bogus'"},
        {"close\nsleep soon\n", "line 2: 'sleep' needs a number of milliseconds"},
        {"timeout -5\n", "line 1: 'timeout' needs a number of milliseconds"},
        {"timeout 99999999999\n", "line 1: 'timeout' needs a number of milliseconds"},
        {"# x\nclose now\n", "line 2: 'close' takes no argument"},
        {"send ab\\q\n", "line 1: bad escape at column 8"},
        {"Expect x\n", "line 1: unknown step 'Expect'"},
        {"sendfile\n", "line 1: 'sendfile' needs a file name"},
    };
    for (const auto& row : rows) {
        script parsed;
        std::string error;
        EXPECT_FALSE(parse_script(row.text, &parsed, &error)) << row.text;
        EXPECT_EQ(error, row.error);
    }
}

TEST(TestworldScript, SendfileReadsItsFileFromTheScriptsDirectoryAndMissingFilesFail) {
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
    EXPECT_FALSE(load_script(dir.file("missing.txt"), &parsed, &error));
    EXPECT_EQ(error, "cannot read '" + dir.file("missing.txt") + "'");
}

}  // namespace
