#include "config/char_config.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <iterator>
#include <string>

#include "config/lconfig.h"
#include "config/xml.h"
#include "settings_support.h"
#include "tests/support/case_file.h"

namespace {

namespace fs = std::filesystem;

// Loads "<single_config>" with the name and body through the real loader.
char_config* load_text(LConfig& config, const std::string& body, const char* name = "T") {
    const std::string text = std::string("<single_config><name>") + name + "</name>" + body + "</single_config>";
    zorn_xml_memory_reader reader(text.data(), text.size());
    char tag[zorn_xml_tag_size];
    if (!reader.read_tag(tag, sizeof tag)) return nullptr;
    config.load_xml_single_system_config(reader, name);
    return config.find(name);
}

std::string leaf(const std::string& key, const std::string& value) { return "<" + key + ">" + value + "</" + key + ">"; }

TEST(CharConfig, DefaultRecordWritesTheGoldenFile) {
    char_config record;
    record.name = "Bob";
    record.popup_window_list.push_back(popup_window_config("p"));
    zorn_xml_string_writer writer;
    write_char_config(writer, record);
    EXPECT_EQ(writer.text(), read_file(std::string(LANTERN_SOURCE_DIR) + "/tests/config/char_config_default.cfg"));
    // Every row sits at its own enum value, and every default passes its own check.
    char_config checked;
    validate(&checked);
    for (int k = 0; k < zorn_setting_count; ++k) {
        const zorn_setting_info& info = zorn_setting_table(static_cast<zorn_setting>(k));
        EXPECT_EQ(info.key, k);
        EXPECT_EQ(checked.value(info.key), info.default_value) << info.name;
    }
}

// A field of the cases file: a setting, "font", "popups" (their count) or "popup0.x".
std::string field_of(const char_config& record, const std::string& name) {
    if (name == "font") return record.font;
    if (name == "popups") return std::to_string(record.popup_window_list.size());
    if (name == "popup0.x") return record.popup_window_list.empty() ? "none" : std::to_string(record.popup_window_list[0].x);
    const zorn_setting_info* info = zorn_setting_by_name(name.c_str());
    return info ? std::to_string(record.value(info->key)) : "unknown field " + name;
}

TEST(CharConfig, LoadingChecksValuesMapsOldKeysAndSurvivesDamage) {
    for (const case_row& c : read_cases("config/char_config_cases.txt", "load")) {
        SCOPED_TRACE(c.where);
        LConfig config;
        const char_config* record = load_text(config, c.str(1));
        ASSERT_NE(record, nullptr);
        for (size_t i = 2; i < c.size(); ++i) {
            const size_t equals = c.str(i).find('=');
            EXPECT_EQ(field_of(*record, c.str(i).substr(0, equals)), c.str(i).substr(equals + 1)) << c.str(i);
        }
    }
    // A 100,000 character value is cut, and what follows still reads.
    LConfig huge;
    const char_config* cut = load_text(huge, leaf("font", std::string(100000, 'f')) + leaf("automap_size", "21"));
    ASSERT_NE(cut, nullptr);
    EXPECT_EQ(cut->font.size(), 9999u);
    EXPECT_EQ(cut->automap_size, 21);
}

// Every key at a value other than its default, within its range.
char_config unusual_record() {
    char_config record;
    record.name = "Aldra <the> & Bold";
    record.font = "0;Monospace Bold 12;x&y";
    record.button_font = "Sans <7>";
    for (int k = 0; k < zorn_setting_count; ++k) {
        const zorn_setting_info& info = zorn_setting_table(static_cast<zorn_setting>(k));
        int& v = record.value(info.key);
        switch (info.check) {
            case zorn_setting_check::lowest_bit: v = 1 - info.default_value; break;
            case zorn_setting_check::none: v = info.default_value + 37 + k; break;
            default: v = info.low + (info.default_value == info.low ? 1 : 0); break;
        }
    }
    popup_window_config first("who list");
    first.x = -20;
    first.width = 640;
    popup_window_config second("a<b>&c");
    second.y = 300;
    second.height = 99;
    record.popup_window_list = {first, second};
    return record;
}

TEST(CharConfig, EveryKeyRoundTripsThroughItsFile) {
    const char_config record = unusual_record();
    zorn_xml_string_writer writer;
    write_char_config(writer, record);
    LConfig config;
    zorn_xml_memory_reader reader(writer.text().data(), writer.text().size());
    char tag[zorn_xml_tag_size];
    ASSERT_EQ(reader.read_tag(tag, sizeof tag), 1);
    config.load_xml_single_system_config(reader, record.name.c_str());
    const char_config* back = config.find(record.name.c_str());
    ASSERT_NE(back, nullptr);
    for (int k = 0; k < zorn_setting_count; ++k) {
        const zorn_setting_info& info = zorn_setting_table(static_cast<zorn_setting>(k));
        EXPECT_EQ(back->value(info.key), record.value(info.key)) << info.name;
    }
    EXPECT_EQ(back->font, record.font);
    EXPECT_EQ(back->button_font, record.button_font);
    ASSERT_EQ(back->popup_window_list.size(), 2u);
    EXPECT_STREQ(back->popup_window_list[1].name, "a<b>&c");
    EXPECT_TRUE(char_config_file_equal(*back, record));
    zorn_xml_string_writer again;  // written again, the file is the same to the byte
    write_char_config(again, *back);
    EXPECT_EQ(again.text(), writer.text());
}

TEST(CharConfig, NamesDecideWhetherARecordIsTaken) {
    LConfig config;
    EXPECT_EQ(load_text(config, "", ""), nullptr);
    const std::string text = "<single_config><name>Other</name></single_config>";
    zorn_xml_memory_reader reader(text.data(), text.size());
    char tag[zorn_xml_tag_size];
    ASSERT_EQ(reader.read_tag(tag, sizeof tag), 1);
    config.load_xml_single_system_config(reader, "Expected");
    EXPECT_TRUE(config.records().empty());

    // Names differing in case are different records.
    load_text(config, "", "bob");
    load_text(config, leaf("font_size", "20"), "Bob");
    load_text(config, leaf("font_size", "30"), "bob");
    ASSERT_EQ(config.records().size(), 2u);
    EXPECT_EQ(config.find("bob")->font_size, 30);
    EXPECT_EQ(config.find("Bob")->font_size, 20);
}

TEST(CharConfigSetters, EachSetterHasItsEffectsInOrder) {
    for (const case_row& c : read_cases("config/char_config_cases.txt", "setter")) {
        SCOPED_TRACE(c.where);
        const zorn_setting_info* info = zorn_setting_by_name(c.text(1));
        ASSERT_NE(info, nullptr);
        LConfig config;
        config.setup_default_config("");
        recording_listener listener;
        listener.logged_in = c.number(3) != 0;
        config.set(info->key, c.number(2));
        EXPECT_EQ(listener.joined(), c.str(4));
        EXPECT_EQ(config.get(info->key), c.number(2));
    }
}

TEST(CharConfigSetters, WithoutRecordOrListenerAndSystemAudio) {
    LConfig config;
    {
        recording_listener listener;
        config.set_status_bar(0);
        config.set_input_height(100);
        EXPECT_EQ(config.get_status_bar(), 0);
        EXPECT_EQ(config.get_input_height(), 0);
        EXPECT_STREQ(config.get_name(), "");
        EXPECT_TRUE(listener.calls.empty());
        EXPECT_EQ(config.get_popup_window_config("w").x, 48);
        config.set_popup_window_config(popup_window_config("w"));
    }
    // No frame yet: the record alone changes.
    config.setup_default_config(nullptr);
    config.set_status_bar(0);
    config.set_current_layout(0);
    config.set_keypad_walking(5);
    EXPECT_EQ(config.get_status_bar(), 0);
    EXPECT_EQ(config.get_current_layout(), 0);
    EXPECT_EQ(config.get_keypad_walking(), 1);

    recording_listener listener;
    config.SetSystemAudio(1);
    EXPECT_TRUE(listener.calls.empty());
    config.SetSystemAudio(0);
    EXPECT_EQ(listener.joined(), "dirty stop_audio audio_menu=0");
    listener.calls.clear();
    listener.audio_works = false;
    config.SetSystemAudio(1);
    EXPECT_EQ(listener.joined(), "dirty start_audio stop_audio audio_menu=0");
    EXPECT_EQ(config.get_system_audio(), 0);
}

TEST(CharConfigSetters, DefaultPreferencesKeepFontsAndPopups) {
    LConfig config;
    config.set_font_defaults("Mono 10", "Sans 7", 7);
    config.setup_default_config("");
    char_config* record = config.current();
    const char_config unusual = unusual_record();
    *record = unusual;
    record->name.clear();
    record->screen_reader = 1;
    recording_listener listener;
    config.use_default_preferences();
    const char_config defaults;
    EXPECT_EQ(record->screen_reader, 1);  // a player who needs it keeps it
    EXPECT_EQ(record->font, unusual.font);
    EXPECT_EQ(record->font_size, unusual.font_size);
    EXPECT_EQ(record->button_font_size, unusual.button_font_size);
    EXPECT_EQ(record->popup_window_list.size(), 2u);
    EXPECT_EQ(record->input_height, defaults.input_height);
    EXPECT_EQ(record->current_theme, defaults.current_theme);
    EXPECT_EQ(listener.calls.front(), "menu:cmd_pushthrough=0");
    EXPECT_EQ(listener.calls.back(), "dirty");
}

TEST(CharConfigSetters, PopupPositions) {
    LConfig config;
    config.setup_default_config("");
    popup_window_config who("who");
    who.x = 10;
    who.columns = 80;
    config.set_popup_window_config(who);
    config.set_popup_window_config(popup_window_config("map"));
    who.x = 11;
    config.set_popup_window_config(who);
    ASSERT_EQ(config.current()->popup_window_list.size(), 2u);
    EXPECT_STREQ(config.current()->popup_window_list[0].name, "map");
    EXPECT_EQ(config.get_popup_window_config("who").x, 11);
    EXPECT_EQ(config.get_popup_window_config("who").columns, 80);
    EXPECT_EQ(config.get_popup_window_config("none").y, 48);
    EXPECT_STREQ(config.get_popup_window_config("none").name, "none");
}

class CharConfigFiles : public ::testing::Test {
protected:
    void SetUp() override {
        config.set_directory(dir.path().c_str());
        config.set_font_defaults("Mono 10", "Sans 7", 7);
    }
    temp_dir dir;
    LConfig config;
};

TEST_F(CharConfigFiles, FirstLoginNamesTheBlankRecordAndASecondCharacterCopiesIt) {
    config.setup_default_config("");
    config.set_input_height(96);
    config.set_popup_window_config(popup_window_config("who"));
    config.switch_character("Aldra");
    EXPECT_STREQ(config.get_name(), "Aldra");
    EXPECT_EQ(config.records().size(), 1u);
    config.switch_character("Borin");
    EXPECT_STREQ(config.get_name(), "Borin");
    EXPECT_EQ(config.get_input_height(), 96);
    EXPECT_EQ(config.current()->popup_window_list.size(), 1u);
    config.set_input_height(120);
    EXPECT_EQ(config.find("Aldra")->input_height, 96);
}

TEST_F(CharConfigFiles, SwitchCharacterBringsTheWindowInLineAndApplyFont) {
    config.setup_default_config("");
    recording_listener listener;
    listener.logged_in = true;
    config.switch_character("Aldra");
    const std::string calls = listener.joined();
    EXPECT_EQ(calls.rfind("menu:current_theme=1 menu:current_background_theme=2 menu:theme_bg_setting=3 "
                          "menu:font_colors_setting=0 theme:button theme:background ", 0),
              0u)
        << calls;
    EXPECT_NE(calls.find("status_display=1 status_bar=1 channel_window=0 automap_scale=11 automap_items=1 "
                         "automap_visibility scrollbar switch_layout dirty fonts:Mono 10/10/Sans 7/7 "
                         "refresh_main_font refresh_button_font"),
              std::string::npos)
        << calls;

    // apply_font sets the default size of new records too.
    listener.calls.clear();
    config.store_main_font("Serif 14", 14);
    config.apply_font();
    EXPECT_EQ(listener.joined(), "fonts:Serif 14/14/Sans 7/7");
    EXPECT_EQ(config.make_default_record().font_size, 14);
    LConfig without_record;
    without_record.apply_font();
    EXPECT_EQ(listener.calls.size(), 1u);
}

TEST_F(CharConfigFiles, OldLocationMovesIntoTheFolder) {
    char_config record = unusual_record();
    record.name = "Cara";
    zorn_xml_string_writer writer;
    write_char_config(writer, record);
    write_file(dir / "Cara.cfg", writer.text());
    char_config* loaded = config.get_or_load("Cara");
    ASSERT_NE(loaded, nullptr);
    EXPECT_TRUE(char_config_file_equal(*loaded, record));
    EXPECT_FALSE(fs::exists(dir / "Cara.cfg"));
    EXPECT_EQ(read_file(dir / "char_configs/Cara.cfg"), writer.text());

    // An old file that holds another character stays, and the folder's file is used.
    write_file(dir / "Dana.cfg", "<single_config><name>Eve</name></single_config>");
    record.name = "Dana";
    ASSERT_TRUE(config.save(record));
    ASSERT_NE(config.get_or_load("Dana"), nullptr);
    EXPECT_TRUE(fs::exists(dir / "Dana.cfg"));
}

TEST_F(CharConfigFiles, UnusableFilesGiveNoRecord) {
    const std::string wrong = "<single_config><name>Other</name></single_config>\n";
    write_file_making_dirs(dir / "char_configs/Empty.cfg", "");
    write_file(dir / "char_configs/Wrong.cfg", wrong);
    write_file(dir / "char_configs/Junk.cfg", "\x01\x02<<<>>>\xff");
    for (const char* name : {"Empty", "Wrong", "Junk", "Missing", "../Escape", ""}) {
        EXPECT_EQ(config.get_or_load(name), nullptr) << name;
    }
    // A character file with another name inside: a new record, made from the current one.
    config.setup_default_config("");
    config.switch_character("Aldra");
    config.switch_character("Wrong");
    EXPECT_STREQ(config.get_name(), "Wrong");
    EXPECT_EQ(read_file(dir / "char_configs/Wrong.cfg"), wrong);

    // A name that could leave the folder is kept in memory but never written.
    char_config escape;
    escape.name = "../../escape";
    EXPECT_FALSE(config.save(escape));
    EXPECT_FALSE(fs::exists(dir / "../escape.cfg"));
}

TEST_F(CharConfigFiles, FailedSaveLeavesNothingBehind) {
    char_config record;
    record.name = "Keep";
    ASSERT_TRUE(config.save(record));
    // The target is now a directory: the rename fails and no temporary file is left.
    fs::remove(dir / "char_configs/Keep.cfg");
    fs::create_directory(dir / "char_configs/Keep.cfg");
    EXPECT_FALSE(config.save(record));
    EXPECT_EQ(std::distance(fs::directory_iterator(dir / "char_configs"), fs::directory_iterator()), 1);

    // The folder cannot be made: nothing is written.
    temp_dir other;
    write_file(other / "char_configs", "a file in the way");
    LConfig blocked;
    blocked.set_directory(other.path().c_str());
    EXPECT_FALSE(blocked.save(record));
}

}  // namespace
