#include "app/client_commands.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

TEST(ClientCommands, AbbreviationsPickTheFirstMatchingRow) {
    struct row {
        const char* line;
        client_command expected;
    };
    const row rows[] = {
        {"//c", client_command::commands},      {"//cl", client_command::clear},
        {"//cc", client_command::chanclear},    {"//ch", client_command::chanclear},
        {"//d", client_command::none},          {"//disc", client_command::disconnect},
        {"//dis", client_command::none},        {"//QUIT", client_command::quit},
        {"//qui", client_command::none},        {"//exit", client_command::quit},
        {"//debug", client_command::debuglevel}, {"//debugfile", client_command::debugfilename},
        {"//debugf", client_command::debugfilename}, {"//debugfill", client_command::debugfill},
        {"//h", client_command::help},          {"//his", client_command::history},
        {"//icons x", client_command::icons},   {"//icon", client_command::none},
        {"look", client_command::none},         {"", client_command::none},
        {"//commandsX", client_command::none},  {"//fingerprint", client_command::fingerprint},
        {"//fing", client_command::fingerprint}, {"//fin", client_command::none},
        {"//FINGERPRINT x", client_command::fingerprint},
    };
    for (const row& r : rows) EXPECT_EQ(match_client_command(r.line, true).command, r.expected) << r.line;
}

TEST(ClientCommands, PingCountsOnlyWhileLoggedIn) {
    EXPECT_EQ(match_client_command("//ping", false).command, client_command::none);
    EXPECT_EQ(match_client_command("lnping", false).command, client_command::none);
    EXPECT_EQ(match_client_command("//ping", true).command, client_command::ping);
    EXPECT_EQ(match_client_command("LNPING", true).command, client_command::ping);
    EXPECT_EQ(match_client_command("lnpin", true).command, client_command::none);
}

TEST(ClientCommands, ArgumentIsTheRestFromTheSecondWord) {
    const client_command_match m = match_client_command("//echo  hello  world", true);
    EXPECT_EQ(m.command, client_command::echo);
    ASSERT_NE(m.argument, nullptr);
    EXPECT_STREQ(m.argument, "hello  world");
    EXPECT_EQ(match_client_command("//debug", true).argument, nullptr);
    EXPECT_STREQ(match_client_command("//debug 9", true).argument, "9");
}

TEST(OfflineCommands, ConnectAndQuitWords) {
    int port = -1;
    EXPECT_EQ(match_offline_command("c", &port), offline_command::connect);
    EXPECT_EQ(port, 0);
    EXPECT_EQ(match_offline_command("c 4000", &port), offline_command::connect);
    EXPECT_EQ(port, 4000);
    EXPECT_EQ(match_offline_command("co x", &port), offline_command::connect);
    EXPECT_EQ(port, 0);
    EXPECT_EQ(match_offline_command("re", &port), offline_command::connect);
    EXPECT_EQ(match_offline_command("r", &port), offline_command::none);
    EXPECT_EQ(match_offline_command("logi", &port), offline_command::connect);
    EXPECT_EQ(match_offline_command("log", &port), offline_command::none);
    EXPECT_EQ(match_offline_command("q", &port), offline_command::none);
    EXPECT_EQ(match_offline_command("qui", &port), offline_command::quit);
    EXPECT_EQ(match_offline_command("ex", &port), offline_command::quit);
    EXPECT_EQ(match_offline_command("look", &port), offline_command::none);
}

TEST(ConfigCommands, PanelsAndTheirWords) {
    config_panel panel;
    config_action action;
    ASSERT_TRUE(parse_config_command("automap flash", &panel, &action));
    EXPECT_EQ(panel, config_panel::automap);
    EXPECT_EQ(action, config_action::flash);
    ASSERT_TRUE(parse_config_command("exp_bar disable", &panel, &action));
    EXPECT_EQ(panel, config_panel::exp_bar);
    EXPECT_EQ(action, config_action::disable);
    ASSERT_TRUE(parse_config_command("main_window flash", &panel, &action));
    EXPECT_EQ(panel, config_panel::main_window);

    EXPECT_FALSE(parse_config_command("exp_bar flash", &panel, &action));       // no flash for this panel
    EXPECT_FALSE(parse_config_command("main_window enable", &panel, &action));  // nor enable here
    EXPECT_FALSE(parse_config_command("automap", &panel, &action));             // no second word
    EXPECT_FALSE(parse_config_command("automapx enable", &panel, &action));
    EXPECT_TRUE(parse_config_command("AUTOMAP Enable", &panel, &action));  // words ignore case
    EXPECT_FALSE(parse_config_command("", &panel, &action));
    EXPECT_FALSE(parse_config_command(nullptr, &panel, &action));
}

TEST(ClientStatusLine, TwentyFlagsThenThreeNumbers) {
    client_status_fields f{};
    f.system_audio = 1;
    f.group_status_display = 2;
    f.current_layout = 7;
    f.font_colors_setting = 5;
    f.voting_reminders = 1;
    f.current_theme = 40;
    f.current_background_theme = 2;
    f.theme_bg_setting = 0;
    const std::string line = build_client_status_line(f);
    EXPECT_EQ(line, "lnlstatus 10000000000200000091 40  2  0");
    EXPECT_EQ(line.size(), std::strlen("lnlstatus ") + 20 + 9);
}
