#include <gtest/gtest.h>

#include <cctype>
#include <cstring>
#include <filesystem>
#include <string>

#include "base/fixed_string.h"
#include "config/config_directory.h"
#include "config/lconfig.h"
#include "config/xml.h"
#include "settings_support.h"

namespace {

const char header[] = "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>\n";

class SystemConfig : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_NE(*dir.path(), '\0');
        config.set_directory(dir.path());
    }
    std::string system_file() const { return dir.file("ember_vale.cfg"); }
    // A fresh client on the same directory.
    void restart(LConfig* fresh) const {
        fresh->set_directory(dir.path());
        fresh->load_system_config();
    }
    void load_from(const std::string& text) {
        write_file(system_file(), text);
        config.load_system_config();
    }

    temp_directory dir;
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

TEST_F(SystemConfig, FirstStartGivesADefaultIdentityAndWritesAtTheFirstSave) {
    write_file(dir.file("sound_version.cfg"), "old");
    write_file(dir.file("bootname.txt"), "old");
    config.load_system_config();
    EXPECT_TRUE(is_default_uuid(config.get_uuid())) << config.get_uuid();
    EXPECT_EQ(config.get_system_audio(), 1);
    EXPECT_EQ(config.get_voting_reminders(), 1);
    ASSERT_NE(config.current(), nullptr);
    EXPECT_FALSE(config.current()->has_name());
    EXPECT_FALSE(std::filesystem::exists(system_file()));
    EXPECT_FALSE(std::filesystem::exists(dir.file("sound_version.cfg")));
    EXPECT_FALSE(std::filesystem::exists(dir.file("bootname.txt")));

    ASSERT_TRUE(config.save_system_config_file());
    const std::string text = read_file(system_file());
    EXPECT_EQ(text, std::string(header) +
                        "<system_config_list>\n"
                        "  <uuid>" + config.get_uuid() + "</uuid>\n"
                        "  <uuid_create_time>0</uuid_create_time>\n"
                        "  <system_audio_enable>1</system_audio_enable>\n"
                        "  <last_voting_time>0</last_voting_time>\n"
                        "  <last_voting_reminder_time>0</last_voting_reminder_time>\n"
                        "  <voting_reminders>1</voting_reminders>\n"
                        "</system_config_list>\n\n");
    // The blank record never gets a file.
    EXPECT_FALSE(std::filesystem::exists(dir.file("char_configs")));

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
    ASSERT_TRUE(std::filesystem::exists(system_file()));  // set_uuid saves

    LConfig restarted;
    restart(&restarted);
    EXPECT_STREQ(restarted.get_uuid(), "0123456789abcdef0123456789abcdef");  // 32 read
    EXPECT_EQ(restarted.get_uuid_create_time(), config.get_uuid_create_time());

    restarted.set_uuid("");
    EXPECT_TRUE(is_default_uuid(restarted.get_uuid()));
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
    EXPECT_EQ(restarted.get_input_height(), 120);
    EXPECT_EQ(restarted.get_popup_window_config("who").x, 300);
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
    const std::string char_text = read_file(dir.file("char_configs/Aldra.cfg"));
    ASSERT_TRUE(restarted.save_system_config_file());
    EXPECT_EQ(read_file(system_file()), system_text);
    EXPECT_EQ(read_file(dir.file("char_configs/Aldra.cfg")), char_text);
}

TEST_F(SystemConfig, DamagedFilesKeepDefaultsWhereTheyMust) {
    struct damaged_case {
        std::string text;
        const char* uuid;  // null: a default identity
        int audio;
    };
    const std::string good_uuid = "<uuid>feedfacefeedfacefeedfacefeedface</uuid>";
    const damaged_case cases[] = {
        // No header: the whole file is ignored.
        {"<system_config_list>" + good_uuid + "<system_audio_enable>0</system_audio_enable></system_config_list>",
         nullptr, 1},
        {"", nullptr, 1},
        // Keywords in either order.
        {"<?xml encoding=\"x\" version=\"1\"?>\n<system_config_list>" + good_uuid + "</system_config_list>",
         "feedfacefeedfacefeedfacefeedface", 1},
        // A 40 character identity is cut to 32.
        {std::string(header) + "<system_config_list><uuid>0123456789012345678901234567890123456789</uuid>"
                               "</system_config_list>",
         "01234567890123456789012345678901", 1},
        // An identity with a control byte is not taken.
        {std::string(header) + "<system_config_list><uuid>abc\x01</uuid></system_config_list>", nullptr, 1},
        // Unknown tags at every depth, a stray closing tag at the top.
        {std::string(header) + "</stray><junk><x>1</x></junk><system_config_list><a><b><c>1</c></b></a>" +
             "<bootloader_version>3</bootloader_version>" + good_uuid +
             "<system_audio_enable>0</system_audio_enable></system_config_list>",
         "feedfacefeedfacefeedfacefeedface", 0},
        // Truncated inside the root.
        {std::string(header) + "<system_config_list>" + good_uuid + "<system_audio_enable>0</system_au",
         "feedfacefeedfacefeedfacefeedface", 0},
        // A value of 100,000 characters.
        {std::string(header) + "<system_config_list><curr_config>" + std::string(100000, 'n') + "</curr_config>" +
             good_uuid + "</system_config_list>",
         "feedfacefeedfacefeedfacefeedface", 1},
    };
    for (const damaged_case& c : cases) {
        LConfig fresh;
        fresh.set_directory(dir.path());
        write_file(system_file(), c.text);
        fresh.load_system_config();
        if (c.uuid) {
            EXPECT_STREQ(fresh.get_uuid(), c.uuid) << c.text.substr(0, 200);
        } else {
            EXPECT_TRUE(is_default_uuid(fresh.get_uuid())) << c.text.substr(0, 200);
        }
        EXPECT_EQ(fresh.get_system_audio(), c.audio) << c.text.substr(0, 200);
        ASSERT_NE(fresh.current(), nullptr);
        EXPECT_FALSE(fresh.current()->has_name());
    }
}

TEST_F(SystemConfig, EveryCutOfAWrittenFileLoadsWhatItHolds) {
    config.load_system_config();
    config.switch_character("Aldra");
    config.set_uuid("feedfacefeedfacefeedfacefeedface");
    config.set_vote_menu(3, "n", "u");
    zorn_xml_string_writer writer;
    writer.write_tag("system_config_list", 1);
    writer.write_leaf("uuid", config.get_uuid());
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
            ASSERT_STREQ(partial.get_uuid(), "feedfacefeedfacefeedfacefeedface") << cut;
        }
        if (cut == text.size()) {
            EXPECT_EQ(partial.get_system_audio(), 0);
            ASSERT_NE(partial.find("Aldra"), nullptr);
            EXPECT_STREQ(partial.get_vote_menu_name(3), "n");
        }
    }
}

TEST_F(SystemConfig, CurrentCharacterWithoutAFileFallsBackToTheBlankRecord) {
    load_from(std::string(header) + "<system_config_list><curr_config>Ghost</curr_config></system_config_list>\n");
    ASSERT_NE(config.current(), nullptr);
    EXPECT_FALSE(config.current()->has_name());
    ASSERT_TRUE(config.save_system_config_file());
    EXPECT_EQ(read_file(system_file()).find("curr_config"), std::string::npos);
}

TEST_F(SystemConfig, RecordsInTheSystemFileAreTakenAndSavedToTheirOwnFiles) {
    load_from(std::string(header) +
              "<system_config_list><curr_config>Old</curr_config>"
              "<single_config><name>Old</name><input_height>72</input_height></single_config>"
              "<single_config><input_height>99</input_height></single_config>"
              "</system_config_list>\n");
    EXPECT_STREQ(config.get_name(), "Old");
    EXPECT_EQ(config.get_input_height(), 72);
    ASSERT_TRUE(config.save_system_config_file());
    EXPECT_NE(read_file(dir.file("char_configs/Old.cfg")).find("<input_height>72</input_height>"), std::string::npos);
    EXPECT_EQ(read_file(system_file()).find("single_config"), std::string::npos);
}

TEST_F(SystemConfig, VoteEntryWithoutUrlIsWrittenEmpty) {
    load_from(std::string(header) + "<system_config_list><vote_menu2_name>Only</vote_menu2_name></system_config_list>");
    EXPECT_STREQ(config.get_vote_menu_name(2), "Only");
    EXPECT_EQ(config.get_vote_menu_url(2), nullptr);
    ASSERT_TRUE(config.save_system_config_file());
    EXPECT_NE(read_file(system_file()).find("  <vote_menu2_name>Only</vote_menu2_name>\n"
                                            "  <vote_menu2_url></vote_menu2_url>\n"),
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
    EXPECT_EQ(unset.find("server_host"), std::string::npos);
    EXPECT_EQ(unset.find("server_port"), std::string::npos);
    EXPECT_EQ(unset.find("web_host"), std::string::npos);

    struct host_case {
        const char* server_host;
        int server_port;
        const char* web_host;
        const char* game_host;
        int game_port;
        const char* web;
        int web_port;
    };
    const host_case cases[] = {
        {"localhost", 0, nullptr, "localhost", LANTERN_GAME_PORT, LANTERN_WEB_HOST, 80},
        {"localhost:4000", 0, "w.example", "localhost", 4000, "w.example", 80},
        {"localhost", 5000, "w.example:8080", "localhost", 5000, "w.example", 8080},
        {"h.example:4000", 5000, nullptr, "h.example", 4000, LANTERN_WEB_HOST, 80},
        {nullptr, 5000, nullptr, LANTERN_GAME_HOST, 5000, LANTERN_WEB_HOST, 80},
        {"bad:port", 70000, "w:0", LANTERN_GAME_HOST, LANTERN_GAME_PORT, LANTERN_WEB_HOST, 80},
        {":4000", 0, "::1", LANTERN_GAME_HOST, LANTERN_GAME_PORT, LANTERN_WEB_HOST, 80},
    };
    for (const host_case& c : cases) {
        LConfig with_leaves;
        with_leaves.set_directory(dir.path());
        with_leaves.set_server_host(c.server_host);
        with_leaves.set_server_port(c.server_port);
        with_leaves.set_web_host(c.web_host);
        ASSERT_TRUE(with_leaves.save_system_config_file());
        LConfig restarted;
        restart(&restarted);
        const std::string label = std::string(c.server_host ? c.server_host : "-") + " " + std::to_string(c.server_port);
        EXPECT_STREQ(restarted.get_game_host(), c.game_host) << label;
        EXPECT_EQ(restarted.get_game_port(), c.game_port) << label;
        EXPECT_STREQ(restarted.get_web_host(), c.web) << label;
        EXPECT_EQ(restarted.get_web_port(), c.web_port) << label;
        // Unusable values are kept as the user wrote them.
        if (c.server_host) {
            EXPECT_STREQ(restarted.get_server_host_setting(), c.server_host) << label;
        }
        EXPECT_EQ(restarted.get_server_port_setting(), c.server_port) << label;
    }
}

TEST_F(SystemConfig, FailedSaveLeavesTheOldFile) {
    config.load_system_config();
    ASSERT_TRUE(config.save_system_config_file());
    const std::string before = read_file(system_file());
    std::filesystem::remove(system_file());
    std::filesystem::create_directory(system_file());
    EXPECT_FALSE(config.save_system_config_file());
    EXPECT_TRUE(std::filesystem::is_directory(system_file()));
    std::filesystem::remove(system_file());
    write_file(system_file(), before);

    // Nowhere to write at all.
    LConfig nowhere;
    nowhere.set_directory(dir.file("missing/deeper").c_str());
    nowhere.load_system_config();
    EXPECT_FALSE(nowhere.save_system_config_file());
    EXPECT_EQ(read_file(system_file()), before);
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
