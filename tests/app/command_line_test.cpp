// The launcher's flags as start-up reads them.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "app/command_line.h"

namespace {

std::string parse(std::vector<const char*> args) {
    char version[zorn_launcher_version_limit + 1];
    std::memset(version, 'x', sizeof version);
    zorn_parse_command_line((int)args.size(), args.data(), version, sizeof version);
    return version;
}

TEST(CommandLine, LauncherFlags) {
    struct flag_case {
        std::vector<const char*> args;
        const char* expected;
    } cases[] = {
        {{"lantern"}, ""},
        {{"lantern", "-l", "1.2"}, "1.2"},
        {{"lantern", "-l"}, ""},  // -l as the last argument sets nothing
        {{"lantern", "-L", "2.0"}, "2.0"},
        {{"lantern", "-l", "-l"}, "-l"},  // the word behind -l is the version, whatever it is
        {{"lantern", "-l", "-l", "7"}, "-l"},
        {{"lantern", "-n"}, "(old style launcher)"},
        {{"lantern", "-N", "-l", "3"}, "3"},
        {{"lantern", "-l", "3", "-n"}, "(old style launcher)"},
        {{"lantern", "--bogus", "-lx", "-l", "4"}, "4"},
        {{"/usr/bin/-l"}, ""},  // argument 0 is never a flag
    };
    for (const auto& c : cases) {
        std::string joined;
        for (const char* a : c.args) joined += std::string(a) + " ";
        EXPECT_EQ(parse(c.args), c.expected) << joined;
    }
}

TEST(CommandLine, VersionIsCutAt256Characters) {
    const std::string long_version(300, '9');
    EXPECT_EQ(parse({"lantern", "-l", long_version.c_str()}), std::string(256, '9'));
}

TEST(CommandLine, NoArguments) {
    char version[8] = "junk";
    zorn_parse_command_line(0, nullptr, version, sizeof version);
    EXPECT_STREQ(version, "");
}

}  // namespace
