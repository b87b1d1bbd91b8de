#include "config/char_config.h"

#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <string>

#include "config/lconfig.h"
#include "config/xml.h"
#include "settings_support.h"

namespace {

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

TEST(CharConfig, DefaultsComeFromTheTable) {
    const char_config record;
    EXPECT_EQ(record.font_size, 10);
    EXPECT_EQ(record.input_height, 48);
    EXPECT_EQ(record.current_layout, 2);
    EXPECT_EQ(record.theme_bg_setting, 3);
    EXPECT_EQ(record.channel_window_enable, 0);
    EXPECT_EQ(record.enemy_hp_display, 1);
    EXPECT_FALSE(record.has_name());
    EXPECT_TRUE(record.popup_window_list.empty());
    // Every row sits at its own enum value, and every value is within its own check.
    for (int k = 0; k < zorn_setting_count; ++k) {
        const zorn_setting_info& info = zorn_setting_table(static_cast<zorn_setting>(k));
        EXPECT_EQ(info.key, k);
        char_config checked;
        validate(&checked);
        EXPECT_EQ(checked.value(info.key), info.default_value) << info.name;
    }
}

TEST(CharConfig, ReadingReplacesOrClampsOutOfRangeValues) {
    struct value_case {
        const char* key;
        const char* value;
        int expected;
    };
    const value_case cases[] = {
        {"input_height", "23", 48},     {"input_height", "24", 24},    {"input_height", "800", 800},
        {"input_height", "801", 48},    {"input_height", "-5", 48},    {"automap_size", "0", 11},
        {"automap_size", "400", 400},   {"automap_size", "401", 11},   {"current_layout", "7", 2},
        {"current_layout", "-1", 0},    {"group_status_display", "7", 0}, {"group_status_display", "-1", 0},
        {"group_status_display", "2", 2}, {"keypad_walking", "3", 1},  {"keypad_walking", "2", 0},
        {"font_size", "1", 10},         {"font_size", "150", 150},     {"font_size", "151", 10},
        {"channel_window_height", "9", 25}, {"channel_window_height", "80", 80},
        {"theme_bg_setting", "6", 3},   {"theme_bg_setting", "5", 5},  {"font_colors_setting", "4", 0},
        {"current_theme", "999", 999},  {"button_font_size", "0", 0},  {"colorflash_enable", "-2", 0},
        {"input_height", "big", 48},    {"INPUT_HEIGHT", "30", 30},    {"input_height extra", "30", 30},
    };
    for (const value_case& c : cases) {
        LConfig config;
        const char_config* record = load_text(config, leaf(c.key, c.value));
        ASSERT_NE(record, nullptr) << c.key;
        const std::string key = std::string(c.key).substr(0, std::string(c.key).find(' '));
        const zorn_setting_info* info = zorn_setting_by_name(key.c_str());
        ASSERT_NE(info, nullptr) << c.key;
        EXPECT_EQ(record->value(info->key), c.expected) << c.key << "=" << c.value;
    }
}

TEST(CharConfig, OldKeysMapOntoNewOnesAndTheLaterTagWins) {
    struct old_case {
        std::string body;
        int layout;
        int colors;
    };
    const old_case cases[] = {
        {leaf("use_new_layout", "1"), 1, 0},
        {leaf("use_new_layout", "5"), 1, 0},
        {leaf("use_new_layout", "0"), 0, 0},
        {leaf("use_new_layout", "1") + leaf("current_layout", "0"), 0, 0},
        {leaf("current_layout", "0") + leaf("use_new_layout", "1"), 1, 0},
        {leaf("bright_color_display", "1"), 2, 1},
        {leaf("zmud_color_display", "1"), 2, 2},
        {leaf("gmud_color_display", "1") + leaf("bright_color_display", "0"), 2, 3},
        {leaf("gmud_color_display", "1") + leaf("font_colors_setting", "1"), 2, 1},
    };
    for (const old_case& c : cases) {
        LConfig config;
        const char_config* record = load_text(config, c.body);
        ASSERT_NE(record, nullptr);
        EXPECT_EQ(record->current_layout, c.layout) << c.body;
        EXPECT_EQ(record->font_colors_setting, c.colors) << c.body;
    }
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

    // Written again, the file is the same to the byte.
    zorn_xml_string_writer again;
    write_char_config(again, *back);
    EXPECT_EQ(again.text(), writer.text());
}

TEST(CharConfig, FileLayout) {
    char_config record;
    record.name = "Bob";
    record.popup_window_list.push_back(popup_window_config("p"));
    zorn_xml_string_writer writer;
    write_char_config(writer, record);
    const std::string& text = writer.text();
    EXPECT_EQ(text.rfind("<single_config>\n  <name>Bob</name>\n  <font></font>\n  <font_size>10</font_size>\n", 0), 0u);
    EXPECT_NE(text.find("  <popup_window_list>\n    <single_popup_window>\n      <name>p</name>\n      <x>48</x>\n"
                        "      <y>48</y>\n      <width>0</width>\n      <height>0</height>\n"
                        "    </single_popup_window>\n  </popup_window_list>\n</single_config>\n"),
              std::string::npos);

    // The keys in the file's order.
    const char* order[] = {"name", "font", "font_size", "button_font", "button_font_size", "keypad_walking",
                           "url_hotlinking", "compact_mode", "local_echo", "cmd_separator", "cmd_pushthrough",
                           "hint_button_enable", "direction_button_enable", "fkey_button_display", "button_tooltips",
                           "status_bar", "sky_bar", "exp_display", "hpbar_enable", "hp_display", "enemy_hpbar_enable",
                           "enemy_hp_display", "group_status_display", "group_status_inverted_bars", "popup_display",
                           "locking_scrollback_enable", "mw_scrollbar_enable", "current_layout", "current_theme",
                           "current_background_theme", "font_colors_setting", "theme_bg_setting", "automap_docked",
                           "automap_display", "automap_size", "input_height", "channel_window_enable",
                           "channel_window_height", "channel_window_dupe", "colorflash_enable", "popup_window_list"};
    size_t at = 0;
    for (const char* key : order) {
        const size_t found = text.find(std::string("\n  <") + key + ">", at);
        ASSERT_NE(found, std::string::npos) << key;
        at = found + 1;
    }
}

TEST(CharConfig, DamagedInputKeepsWhatItCan) {
    const std::string unknown_everywhere =
        leaf("mystery", "<deep>" + leaf("deeper", "1") + "</deep>") + leaf("font_size", "14") +
        "<popup_window_list><junk>1</junk><single_popup_window><name>w</name><colour>red</colour><x>5</x>"
        "</single_popup_window><other><x>1</x></other></popup_window_list>" +
        leaf("input_height", "60");
    LConfig config;
    const char_config* record = load_text(config, unknown_everywhere);
    ASSERT_NE(record, nullptr);
    EXPECT_EQ(record->font_size, 14);
    EXPECT_EQ(record->input_height, 60);
    ASSERT_EQ(record->popup_window_list.size(), 1u);
    EXPECT_EQ(record->popup_window_list[0].x, 5);

    // A value with a bad byte: a string takes the raw text, an int keeps its value.
    LConfig raw;
    const char_config* bad = load_text(raw, leaf("font", "Caf\xe9 10") + leaf("font_size", "1\t2") + leaf("sky_bar", "0"));
    ASSERT_NE(bad, nullptr);
    EXPECT_EQ(bad->font, "Caf\xe9 10");
    EXPECT_EQ(bad->font_size, 10);
    EXPECT_EQ(bad->sky_bar, 0);

    // A 100,000 character value is cut, and what follows still reads.
    LConfig huge;
    const char_config* cut = load_text(huge, leaf("font", std::string(100000, 'f')) + leaf("automap_size", "21"));
    ASSERT_NE(cut, nullptr);
    EXPECT_EQ(cut->font.size(), 9999u);
    EXPECT_EQ(cut->automap_size, 21);

    // A stray closing tag ends the record there, as the dialect reads it; the rest is default.
    LConfig stray;
    const char_config* early = load_text(stray, leaf("font_size", "12") + "</oops>" + leaf("input_height", "60"));
    ASSERT_NE(early, nullptr);
    EXPECT_EQ(early->font_size, 12);
    EXPECT_EQ(early->input_height, 48);
}

TEST(CharConfig, NamesDecideWhetherARecordIsTaken) {
    LConfig config;
    EXPECT_EQ(load_text(config, "", ""), nullptr);
    EXPECT_TRUE(config.records().empty());

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

struct setter_case {
    zorn_setting key;
    int value;
    bool logged_in;
    const char* calls;
};

TEST(CharConfigSetters, EachSetterHasItsEffectsInOrder) {
    const setter_case cases[] = {
        {zorn_setting_keypad_walking, 0, false, "menu:keypad_walking=0"},
        {zorn_setting_keypad_walking, 1, false, "menu:keypad_walking=1"},  // same value: effects all the same
        {zorn_setting_compact_mode, 1, false, "menu:compact_mode=1 refresh_main_font"},
        {zorn_setting_cmd_separator, 0, false, "menu:cmd_separator=0 dirty"},
        {zorn_setting_hint_button_enable, 0, false, "menu:hint_button_enable=0 layout dirty"},
        {zorn_setting_hint_button_enable, 1, false, ""},  // same value: nothing
        {zorn_setting_status_bar, 0, false, "menu:status_bar=0 layout dirty"},
        {zorn_setting_status_bar, 0, true, "menu:status_bar=0 status_bar=0 layout dirty"},
        {zorn_setting_sky_bar, 0, true, "menu:sky_bar=0 sky_bar=0 layout dirty"},
        {zorn_setting_exp_display, 0, true,
         "menu:exp_display=0 flag:exp_display=0 status_display=1 layout dirty"},
        {zorn_setting_hpbar_enable, 0, false, "menu:hpbar_enable=0 flag:hpbar_enable=0 layout dirty"},
        {zorn_setting_mw_scrollbar_enable, 0, false, "menu:mw_scrollbar_enable=0 scrollbar"},
        {zorn_setting_group_status_display, 0, false, "menu:group_status_display=0 hide_group layout dirty"},
        {zorn_setting_group_status_display, 2, false, "menu:group_status_display=2 layout dirty"},
        {zorn_setting_current_layout, 0, false, "menu:current_layout=0 switch_layout dirty"},
        {zorn_setting_current_theme, 40, false, "menu:current_theme=40 theme:button dirty"},
        {zorn_setting_current_background_theme, 90, false,
         "menu:current_background_theme=90 theme:background dirty"},
        {zorn_setting_theme_bg_setting, 4, false, "menu:theme_bg_setting=4 theme:background dirty"},
        {zorn_setting_font_colors_setting, 0, false, "dirty"},
        {zorn_setting_automap_docked, 0, false, "dirty"},
        {zorn_setting_automap_display, 1, false, "dirty"},
        {zorn_setting_channel_window_dupe, 0, false, "dirty"},
        {zorn_setting_channel_window_enable, 1, false, "menu:channel_window_enable=1 channel_window=1 layout dirty"},
        {zorn_setting_colorflash_enable, 0, false, "menu:colorflash_enable=0 dirty"},
        {zorn_setting_automap_size, 31, false, ""},
        {zorn_setting_input_height, 2000, false, ""},
        {zorn_setting_channel_window_height, 35, false, ""},
        {zorn_setting_button_tooltips, 1, false, ""},
    };
    for (const setter_case& c : cases) {
        LConfig config;
        config.setup_default_config("");
        recording_listener listener;
        listener.logged_in = c.logged_in;
        config.set(c.key, c.value);
        EXPECT_EQ(listener.joined(), c.calls) << zorn_setting_table(c.key).name << "=" << c.value;
        EXPECT_EQ(config.get(c.key), c.value);
    }
}

TEST(CharConfigSetters, WithoutRecordOrListener) {
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
}

TEST(CharConfigSetters, SystemAudio) {
    LConfig config;
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
    *record = unusual_record();
    record->name.clear();
    recording_listener listener;
    config.use_default_preferences();
    const char_config defaults;
    EXPECT_EQ(record->font, unusual_record().font);
    EXPECT_EQ(record->font_size, unusual_record().font_size);
    EXPECT_EQ(record->button_font_size, unusual_record().button_font_size);
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
        ASSERT_NE(*dir.path(), '\0');
        config.set_directory(dir.path());
        config.set_font_defaults("Mono 10", "Sans 7", 7);
    }
    temp_directory dir;
    LConfig config;
};

TEST_F(CharConfigFiles, FirstLoginNamesTheBlankRecordAndASecondCharacterCopiesIt) {
    config.setup_default_config("");
    config.set_input_height(96);
    config.set_popup_window_config(popup_window_config("who"));
    config.switch_character("Aldra");
    EXPECT_STREQ(config.get_name(), "Aldra");
    EXPECT_EQ(config.records().size(), 1u);
    EXPECT_EQ(config.get_input_height(), 96);

    config.switch_character("Borin");
    EXPECT_STREQ(config.get_name(), "Borin");
    EXPECT_EQ(config.get_input_height(), 96);
    EXPECT_EQ(config.current()->popup_window_list.size(), 1u);
    config.set_input_height(120);
    EXPECT_EQ(config.find("Aldra")->input_height, 96);

    ASSERT_TRUE(config.save(*config.find("Borin")));
    LConfig restarted;
    restarted.set_directory(dir.path());
    char_config* loaded = restarted.get_or_load("Borin");
    ASSERT_NE(loaded, nullptr);
    EXPECT_TRUE(char_config_file_equal(*loaded, *config.find("Borin")));
    EXPECT_EQ(restarted.get_or_load("Aldra"), nullptr);  // never saved
}

TEST_F(CharConfigFiles, SwitchCharacterBringsTheWindowInLine) {
    config.setup_default_config("");
    recording_listener listener;
    listener.logged_in = true;
    config.switch_character("Aldra");
    const std::string calls = listener.joined();
    EXPECT_EQ(calls.rfind("menu:current_theme=1 menu:current_background_theme=2 menu:theme_bg_setting=3 "
                          "menu:font_colors_setting=0 theme:button theme:background ",
                          0),
              0u)
        << calls;
    EXPECT_NE(calls.find("status_display=1 status_bar=1 channel_window=0 automap_scale=11 automap_items=1 "
                         "automap_visibility scrollbar switch_layout dirty fonts:Mono 10/10/Sans 7/7 "
                         "refresh_main_font refresh_button_font"),
              std::string::npos)
        << calls;
}

TEST_F(CharConfigFiles, ApplyFontSetsTheDefaultSizeOfNewRecords) {
    recording_listener listener;
    config.apply_font();
    EXPECT_TRUE(listener.calls.empty());
    config.setup_default_config("");
    config.store_main_font("Serif 14", 14);
    config.apply_font();
    EXPECT_EQ(listener.joined(), "fonts:Serif 14/14/Sans 7/7");
    EXPECT_EQ(config.make_default_record().font_size, 14);
}

TEST_F(CharConfigFiles, OldLocationMovesIntoTheFolder) {
    char_config record = unusual_record();
    record.name = "Cara";
    zorn_xml_string_writer writer;
    write_char_config(writer, record);
    write_file(dir.file("Cara.cfg"), writer.text());

    char_config* loaded = config.get_or_load("Cara");
    ASSERT_NE(loaded, nullptr);
    EXPECT_TRUE(char_config_file_equal(*loaded, record));
    EXPECT_FALSE(std::filesystem::exists(dir.file("Cara.cfg")));
    EXPECT_EQ(read_file(dir.file("char_configs/Cara.cfg")), writer.text());

    // An old file that holds another character stays, and the folder's file is used.
    write_file(dir.file("Dana.cfg"), "<single_config><name>Eve</name></single_config>");
    record.name = "Dana";
    ASSERT_TRUE(config.save(record));
    ASSERT_NE(config.get_or_load("Dana"), nullptr);
    EXPECT_TRUE(std::filesystem::exists(dir.file("Dana.cfg")));
}

TEST_F(CharConfigFiles, UnusableFilesGiveNoRecord) {
    write_file(dir.file("char_configs/Empty.cfg"), "");
    write_file(dir.file("char_configs/Wrong.cfg"), "<single_config><name>Other</name></single_config>\n");
    write_file(dir.file("char_configs/Junk.cfg"), "\x01\x02<<<>>>\xff");
    EXPECT_EQ(config.get_or_load("Empty"), nullptr);
    EXPECT_EQ(config.get_or_load("Wrong"), nullptr);
    EXPECT_EQ(config.get_or_load("Junk"), nullptr);
    EXPECT_EQ(config.get_or_load("Missing"), nullptr);
    EXPECT_EQ(config.get_or_load("../Escape"), nullptr);
    EXPECT_EQ(config.get_or_load(""), nullptr);

    // A character file with another name inside: a new record, made from the current one.
    config.setup_default_config("");
    config.switch_character("Aldra");
    config.switch_character("Wrong");
    EXPECT_STREQ(config.get_name(), "Wrong");
    EXPECT_EQ(read_file(dir.file("char_configs/Wrong.cfg")), "<single_config><name>Other</name></single_config>\n");

    // A name that could leave the folder is kept in memory but never written.
    char_config escape;
    escape.name = "../../escape";
    EXPECT_FALSE(config.save(escape));
    EXPECT_FALSE(std::filesystem::exists(dir.file("../escape.cfg")));
}

TEST_F(CharConfigFiles, FailedSaveLeavesTheOldFile) {
    char_config record;
    record.name = "Keep";
    ASSERT_TRUE(config.save(record));
    const std::string before = read_file(dir.file("char_configs/Keep.cfg"));

    // The target is now a directory: the rename fails and nothing else is left behind.
    std::filesystem::remove(dir.file("char_configs/Keep.cfg"));
    std::filesystem::create_directory(dir.file("char_configs/Keep.cfg"));
    record.font_size = 20;
    EXPECT_FALSE(config.save(record));
    int entries = 0;
    for (const auto& entry : std::filesystem::directory_iterator(dir.file("char_configs"))) {
        (void)entry;
        ++entries;
    }
    EXPECT_EQ(entries, 1);
    std::filesystem::remove(dir.file("char_configs/Keep.cfg"));
    EXPECT_TRUE(config.save(record));
    EXPECT_NE(read_file(dir.file("char_configs/Keep.cfg")), before);

    // The folder cannot be made: nothing is written.
    temp_directory other;
    write_file(other.file("char_configs"), "a file in the way");
    LConfig blocked;
    blocked.set_directory(other.path());
    EXPECT_FALSE(blocked.save(record));
}

}  // namespace
