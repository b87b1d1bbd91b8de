#include <gtest/gtest.h>

#include <cctype>
#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

#include "base/fixed_string.h"
#include "config/config_directory.h"
#include "config/lconfig.h"
#include "config/xml.h"
#include "settings_support.h"
#include "tests/support/case_file.h"

namespace {

namespace fs = std::filesystem;

const std::string header = "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>\n";
const char feed[] = "feedfacefeedfacefeedfacefeedface";

class SystemConfig : public ::testing::Test {
protected:
    void SetUp() override { config.set_directory(dir.path().c_str()); }
    std::string system_file() const { return dir / "ember_vale.cfg"; }
    // A fresh client on the same directory.
    void restart(LConfig* fresh) const {
        fresh->set_directory(dir.path().c_str());
        fresh->load_system_config();
    }
    void load_from(const std::string& text, LConfig* into) {
        write_file(system_file(), text);
        restart(into);
    }

    temp_dir dir;
    LConfig config;
};

bool is_default_uuid(const char* uuid) {
    if (std::strlen(uuid) != 32 || std::strncmp(uuid, "DFLT", 4) != 0) return false;
    for (int i = 4; i < 32; ++i) {
        if (!std::isxdigit(static_cast<unsigned char>(uuid[i])) || std::isupper(static_cast<unsigned char>(uuid[i])))
            return false;
    }
    return true;
}

TEST_F(SystemConfig, FirstStartGivesADefaultIdentityThatSurvivesARestart) {
    write_file(dir / "sound_version.cfg", "old");
    write_file(dir / "bootname.txt", "old");
    config.load_system_config();
    EXPECT_TRUE(is_default_uuid(config.get_uuid())) << config.get_uuid();
    EXPECT_EQ(config.get_system_audio(), 1);
    EXPECT_EQ(config.get_voting_reminders(), 1);
    ASSERT_NE(config.current(), nullptr);
    EXPECT_FALSE(config.current()->has_name());
    EXPECT_FALSE(fs::exists(system_file()));  // written at the first save
    EXPECT_FALSE(fs::exists(dir / "sound_version.cfg"));
    EXPECT_FALSE(fs::exists(dir / "bootname.txt"));

    ASSERT_TRUE(config.save_system_config_file());
    EXPECT_EQ(read_file(system_file()), header +
                                            "<system_config_list>\n"
                                            "  <uuid>" + config.get_uuid() + "</uuid>\n"
                                            "  <uuid_create_time>0</uuid_create_time>\n"
                                            "  <system_audio_enable>1</system_audio_enable>\n"
                                            "  <last_voting_time>0</last_voting_time>\n"
                                            "  <last_voting_reminder_time>0</last_voting_reminder_time>\n"
                                            "  <voting_reminders>1</voting_reminders>\n"
                                            "</system_config_list>\n\n");
    EXPECT_FALSE(fs::exists(dir / "char_configs"));  // the blank record never gets a file
    LConfig again;
    restart(&again);
    EXPECT_STREQ(again.get_uuid(), config.get_uuid());
}

TEST_F(SystemConfig, IdentityFromTheServerSurvivesARestart) {
    config.load_system_config();
    config.set_uuid("0123456789abcdef0123456789abcdef!");
    EXPECT_STREQ(config.get_uuid(), "0123456789abcdef0123456789abcdef!");  // 33 kept
    EXPECT_GT(config.get_uuid_create_time(), 0);
    EXPECT_EQ(config.get_last_voting_time(), config.get_uuid_create_time());
    ASSERT_TRUE(fs::exists(system_file()));  // set_uuid saves

    LConfig restarted;
    restart(&restarted);
    EXPECT_STREQ(restarted.get_uuid(), "0123456789abcdef0123456789abcdef");  // 32 read
    EXPECT_EQ(restarted.get_uuid_create_time(), config.get_uuid_create_time());
    restarted.set_uuid("");
    EXPECT_TRUE(is_default_uuid(restarted.get_uuid()));
}

// The server may give any bytes. An identity with a byte outside 32 to 126 (here a tab, a Latin-1
// letter and an escaped ampersand) is kept, first 32 characters, through restart after restart,
// and the leaves behind it in the file are still read.
TEST_F(SystemConfig, IdentityWithUnusualBytesSurvivesEveryRestart) {
    config.load_system_config();
    const std::string identity = "ab\tc\xe9" "d&e0123456789abcdef0123456789";
    config.set_uuid(identity.c_str());
    config.set_server_host("127.0.0.1:4000");
    ASSERT_TRUE(config.save_system_config_file());
    for (int start = 0; start < 3; ++start) {
        LConfig restarted;
        restart(&restarted);
        EXPECT_EQ(std::string(restarted.get_uuid()), identity.substr(0, 32)) << "start " << start;
        EXPECT_STREQ(restarted.get_game_host(), "127.0.0.1") << "start " << start;
        EXPECT_EQ(restarted.get_game_port(), 4000);
        EXPECT_EQ(restarted.get_uuid_create_time(), config.get_uuid_create_time());
        ASSERT_TRUE(restarted.save_system_config_file());
    }
}

TEST_F(SystemConfig, EverythingRoundTripsThroughTheFiles) {
    config.set_font_defaults("Mono 10", "Sans 7", 7);
    config.load_system_config();
    config.switch_character("Aldra");
    config.set_input_height(120);
    config.set_current_layout(0);
    popup_window_config who("who");
    who.x = 300;
    config.set_popup_window_config(who);
    config.SetSystemAudio(0);
    config.set_voting_reminders(0);
    config.set_last_voting_time(1700000000);
    config.set_last_voting_reminder_time(1700000100);
    config.set_vote_menu(0, "Top & Best", "http://vote.example/?a=1&b=<2>");
    config.set_vote_menu(15, "Last", "http://last.example/");
    config.set_server_host("localhost:4000");
    config.set_web_host("web.example:8080");
    ASSERT_TRUE(config.save_system_config_file());
    EXPECT_NE(read_file(system_file()).find("  <curr_config>Aldra</curr_config>\n"), std::string::npos);

    LConfig restarted;
    restart(&restarted);
    EXPECT_STREQ(restarted.get_name(), "Aldra");
    EXPECT_TRUE(char_config_file_equal(*restarted.current(), *config.current()));
    EXPECT_EQ(restarted.get_system_audio(), 0);
    EXPECT_EQ(restarted.get_voting_reminders(), 0);
    EXPECT_EQ(restarted.get_last_voting_time(), 1700000000);
    EXPECT_EQ(restarted.get_last_voting_reminder_time(), 1700000100);
    EXPECT_STREQ(restarted.get_vote_menu_name(0), "Top & Best");
    EXPECT_STREQ(restarted.get_vote_menu_url(0), "http://vote.example/?a=1&b=<2>");
    EXPECT_STREQ(restarted.get_vote_menu_name(15), "Last");
    EXPECT_EQ(restarted.get_vote_menu_name(1), nullptr);
    EXPECT_STREQ(restarted.get_server_host_setting(), "localhost:4000");
    EXPECT_STREQ(restarted.get_web_host_setting(), "web.example:8080");

    // Saved again unchanged, both files are the same to the byte.
    const std::string system_text = read_file(system_file());
    const std::string char_text = read_file(dir / "char_configs/Aldra.cfg");
    ASSERT_TRUE(restarted.save_system_config_file());
    EXPECT_EQ(read_file(system_file()), system_text);
    EXPECT_EQ(read_file(dir / "char_configs/Aldra.cfg"), char_text);
}

TEST_F(SystemConfig, DamagedFilesKeepDefaultsWhereTheyMust) {
    std::vector<case_row> cases = read_cases("config/system_config_cases.txt", "damaged");
    // A value of 100,000 characters.
    cases.push_back({"curr_config of 100,000 characters",
                     {"damaged", header + "<system_config_list><curr_config>" + std::string(100000, 'n') +
                                     "</curr_config><uuid>" + feed + "</uuid></system_config_list>", feed, "1"},
                     {false, false, false, false}});
    for (const case_row& c : cases) {
        SCOPED_TRACE(c.where);
        LConfig fresh;
        load_from(c.str(1), &fresh);
        if (c.str(2) == "<default>") {
            EXPECT_TRUE(is_default_uuid(fresh.get_uuid())) << fresh.get_uuid();
        } else {
            EXPECT_EQ(fresh.get_uuid(), c.str(2));
        }
        EXPECT_EQ(fresh.get_system_audio(), c.number(3));
        ASSERT_NE(fresh.current(), nullptr);
        EXPECT_FALSE(fresh.current()->has_name());
    }
}

TEST_F(SystemConfig, EveryCutOfAWrittenFileLoadsWhatItHolds) {
    config.load_system_config();
    config.switch_character("Aldra");
    zorn_xml_string_writer writer;
    writer.write_tag("system_config_list", 1);
    writer.write_leaf("uuid", feed);
    writer.write_leaf("system_audio_enable", 0);
    write_char_config(writer, *config.current());
    writer.write_leaf("vote_menu3_name", "n");
    writer.end_tag("system_config_list", 1);
    const std::string& text = writer.text();
    const size_t uuid_end = text.find("</uuid>") + std::strlen("</uuid>");
    for (size_t cut = 0; cut <= text.size(); ++cut) {
        LConfig partial;
        zorn_xml_memory_reader reader(text.data(), cut);
        zorn_fixed_string curr_config;
        partial.load_system_config_stream(reader, &curr_config);
        if (cut >= uuid_end) {
            ASSERT_STREQ(partial.get_uuid(), feed) << cut;
        }
    }
    LConfig whole;
    zorn_xml_memory_reader reader(text.data(), text.size());
    zorn_fixed_string curr_config;
    whole.load_system_config_stream(reader, &curr_config);
    EXPECT_EQ(whole.get_system_audio(), 0);
    EXPECT_NE(whole.find("Aldra"), nullptr);
    EXPECT_STREQ(whole.get_vote_menu_name(3), "n");
}

TEST_F(SystemConfig, OddEntriesOfTheSystemFile) {
    // A current character without a file falls back to the blank record, and is not written back.
    load_from(header + "<system_config_list><curr_config>Ghost</curr_config></system_config_list>\n", &config);
    ASSERT_NE(config.current(), nullptr);
    EXPECT_FALSE(config.current()->has_name());
    ASSERT_TRUE(config.save_system_config_file());
    EXPECT_EQ(read_file(system_file()).find("curr_config"), std::string::npos);

    // Records inside the system file are taken and saved to their own files; a nameless one is not.
    LConfig old;
    load_from(header +
                  "<system_config_list><curr_config>Old</curr_config>"
                  "<single_config><name>Old</name><input_height>72</input_height></single_config>"
                  "<single_config><input_height>99</input_height></single_config>"
                  "<vote_menu2_name>Only</vote_menu2_name></system_config_list>\n",
              &old);
    EXPECT_STREQ(old.get_name(), "Old");
    EXPECT_EQ(old.get_input_height(), 72);
    EXPECT_STREQ(old.get_vote_menu_name(2), "Only");
    EXPECT_EQ(old.get_vote_menu_url(2), nullptr);
    ASSERT_TRUE(old.save_system_config_file());
    EXPECT_NE(read_file(dir / "char_configs/Old.cfg").find("<input_height>72</input_height>"), std::string::npos);
    const std::string saved = read_file(system_file());
    EXPECT_EQ(saved.find("single_config"), std::string::npos);
    // A vote entry without a URL is written with an empty one.
    EXPECT_NE(saved.find("  <vote_menu2_name>Only</vote_menu2_name>\n  <vote_menu2_url></vote_menu2_url>\n"),
              std::string::npos);
}

TEST_F(SystemConfig, HostsComeFromTheLeavesOrTheBuiltInDefaults) {
    config.load_system_config();
    EXPECT_STREQ(config.get_game_host(), LANTERN_GAME_HOST);
    EXPECT_EQ(config.get_game_port(), LANTERN_GAME_PORT);
    EXPECT_STREQ(config.get_web_host(), LANTERN_WEB_HOST);
    EXPECT_EQ(config.get_web_port(), 80);
    ASSERT_TRUE(config.save_system_config_file());
    const std::string unset = read_file(system_file());
    for (const char* leaf : {"server_host", "server_port", "web_host"}) {
        EXPECT_EQ(unset.find(leaf), std::string::npos) << leaf;  // written only when set
    }
    for (const case_row& c : read_cases("config/system_config_cases.txt", "hosts")) {
        SCOPED_TRACE(c.where);
        LConfig with_leaves;
        with_leaves.set_directory(dir.path().c_str());
        with_leaves.set_server_host(c.text(1));
        with_leaves.set_server_port(c.number(2));
        with_leaves.set_web_host(c.text(3));
        ASSERT_TRUE(with_leaves.save_system_config_file());
        LConfig restarted;
        restart(&restarted);
        const auto or_default = [&c](size_t i, auto built_in) { return c.str(i) == "<default>" ? built_in : c.str(i); };
        EXPECT_EQ(restarted.get_game_host(), or_default(4, std::string(LANTERN_GAME_HOST)));
        EXPECT_EQ(std::to_string(restarted.get_game_port()), or_default(5, std::to_string(LANTERN_GAME_PORT)));
        EXPECT_EQ(restarted.get_web_host(), or_default(6, std::string(LANTERN_WEB_HOST)));
        EXPECT_EQ(restarted.get_web_port(), c.number(7));
        // Unusable values are kept as the user wrote them.
        EXPECT_STREQ(restarted.get_server_host_setting(), c.text(1) ? c.text(1) : restarted.get_server_host_setting());
        EXPECT_EQ(restarted.get_server_port_setting(), c.number(2));
    }
}

TEST_F(SystemConfig, SaveFailsWhenTheFileCannotBeReplacedOrTheDirectoryIsMissing) {
    config.load_system_config();
    fs::create_directory(system_file());
    EXPECT_FALSE(config.save_system_config_file());
    EXPECT_TRUE(fs::is_directory(system_file()));
    LConfig nowhere;
    nowhere.set_directory((dir / "missing/deeper").c_str());
    nowhere.load_system_config();
    EXPECT_FALSE(nowhere.save_system_config_file());
    EXPECT_FALSE(fs::exists(dir / "missing"));
}

TEST(SystemConfigNoDirectory, NothingIsReadOrWritten) {
    if (zorn_client_config_directory()) GTEST_SKIP() << "a config directory is set up in this process";
    LConfig config;
    config.load_system_config();
    EXPECT_EQ(config.current(), nullptr);
    EXPECT_STREQ(config.get_uuid(), "");
    EXPECT_FALSE(config.save_system_config_file());
}

}  // namespace
