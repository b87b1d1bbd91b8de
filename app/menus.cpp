#include "app/menus.h"

namespace {

constexpr zorn_setting none = zorn_setting_count;
constexpr auto N = zorn_menu_kind::normal;
constexpr auto C = zorn_menu_kind::check;
constexpr auto R = zorn_menu_kind::radio;
constexpr auto S = zorn_menu_kind::separator;

constexpr const char* file = "&File";
constexpr const char* prefs = "&Preferences";
constexpr const char* themes = "&Themes";
constexpr const char* maps = "&Maps";
constexpr const char* info = "Online &Info";
constexpr const char* help = "&Help";

}  // namespace

const char* const zorn_menu_titles[7] = {file, prefs, themes, "&Popups", maps, info, help};

// In menu order. "&Popups" has no rows: its items come and go with the popup windows.
const zorn_menu_row zorn_menu_rows[] = {
    {file, nullptr, "&Connect", 1, N, none, 0},
    {file, nullptr, "&Disconnect", 2, N, none, 0},
    {file, nullptr, nullptr, 0, S, none, 0},
    {file, nullptr, "&Save Logfile", 3, N, none, 0},
    {file, nullptr, nullptr, 0, S, none, 0},
    {file, nullptr, "C&lear Scrollback", 6, N, none, 0},
    {file, nullptr, "&Find...", 120, N, none, 0},
    {file, nullptr, nullptr, 0, S, none, 0},
    {file, nullptr, "Save and &Quit", 4, N, none, 0},

    {prefs, "Layout", "Embedded", 7, R, zorn_setting_current_layout, 0},
    {prefs, "Layout", "Left Top", 8, R, zorn_setting_current_layout, 1},
    {prefs, "Layout", "Left Bottom", 9, R, zorn_setting_current_layout, 2},
    {prefs, nullptr, nullptr, 0, S, none, 0},
    {prefs, "Group Display", "Off", 19, R, zorn_setting_group_status_display, 0},
    {prefs, "Group Display", "Vertical", 21, R, zorn_setting_group_status_display, 1},
    {prefs, "Group Display", "Horizontal", 20, R, zorn_setting_group_status_display, 2},
    {prefs, "Group Display", "Bar Invert", 22, C, zorn_setting_group_status_inverted_bars, 0},
    {prefs, nullptr, "&Status Bar", 14, C, zorn_setting_status_bar, 0},
    {prefs, nullptr, "S&ky Bar", 15, C, zorn_setting_sky_bar, 0},
    {prefs, nullptr, "HP Bar", 16, C, zorn_setting_hpbar_enable, 0},
    {prefs, nullptr, "Enemy HP Bar", 18, C, zorn_setting_enemy_hpbar_enable, 0},
    {prefs, nullptr, "E&xp Bar", 17, C, zorn_setting_exp_display, 0},
    {prefs, nullptr, "Show &Color Flash Events", 25, C, zorn_setting_colorflash_enable, 0},
    {prefs, nullptr, nullptr, 0, S, none, 0},
    {prefs, nullptr, "Tabbed &Channel Window", 23, C, zorn_setting_channel_window_enable, 0},
    {prefs, nullptr, "D&uplicate Channel Sends in Main Window", 24, C, zorn_setting_channel_window_dupe, 0},
    {prefs, nullptr, nullptr, 0, S, none, 0},
    {prefs, nullptr, "&Popup Buttons", 10, C, zorn_setting_popup_display, 0},
    {prefs, nullptr, "&Function Key Buttons", 13, C, zorn_setting_fkey_button_display, 0},
    {prefs, nullptr, "&Direction Buttons", 12, C, zorn_setting_direction_button_enable, 0},
    {prefs, nullptr, "&Hint Buttons", 11, C, zorn_setting_hint_button_enable, 0},
    {prefs, nullptr, nullptr, 0, S, none, 0},
    {prefs, nullptr, "Select &Last Command", 26, C, zorn_setting_cmd_pushthrough, 0},
    {prefs, nullptr, "&Enable Local Echo", 28, C, zorn_setting_local_echo, 0},
    {prefs, nullptr, "Command Separator", 27, C, zorn_setting_cmd_separator, 0},
    {prefs, nullptr, "Move Using &Number Pad", 29, C, zorn_setting_keypad_walking, 0},
    {prefs, nullptr, nullptr, 0, S, none, 0},
    {prefs, nullptr, "Main Scrollbar", 30, C, zorn_setting_mw_scrollbar_enable, 0},
    {prefs, nullptr, "Locking Scrollback", 31, C, zorn_setting_locking_scrollback_enable, 0},
    {prefs, nullptr, "Split View", 121, C, zorn_setting_split_view, 0},
    {prefs, nullptr, "Enable URL Linking", 32, C, zorn_setting_url_hotlinking, 0},
    {prefs, nullptr, nullptr, 0, S, none, 0},
    {prefs, nullptr, "Enable Sounds", 34, C, none, 0},
    {prefs, nullptr, nullptr, 0, S, none, 0},
    {prefs, nullptr, "Use Default Preferences", 35, N, none, 0},

    {themes, "Button Colors", "Red", 45, R, zorn_setting_current_theme, 2},
    {themes, "Button Colors", "Brown", 46, R, zorn_setting_current_theme, 40},
    {themes, "Button Colors", "Yellow", 47, R, zorn_setting_current_theme, 0},
    {themes, "Button Colors", "YGreen", 48, R, zorn_setting_current_theme, 50},
    {themes, "Button Colors", "Green", 49, R, zorn_setting_current_theme, 60},
    {themes, "Button Colors", "Cyan", 50, R, zorn_setting_current_theme, 70},
    {themes, "Button Colors", "Blue", 51, R, zorn_setting_current_theme, 1},
    {themes, "Button Colors", "Purple", 52, R, zorn_setting_current_theme, 80},
    {themes, "Button Colors", "Grey", 53, R, zorn_setting_current_theme, 90},
    {themes, "Background Colors", "Red", 36, R, zorn_setting_current_background_theme, 2},
    {themes, "Background Colors", "Brown", 37, R, zorn_setting_current_background_theme, 40},
    {themes, "Background Colors", "Yellow", 38, R, zorn_setting_current_background_theme, 0},
    {themes, "Background Colors", "YGreen", 39, R, zorn_setting_current_background_theme, 50},
    {themes, "Background Colors", "Green", 40, R, zorn_setting_current_background_theme, 60},
    {themes, "Background Colors", "Cyan", 41, R, zorn_setting_current_background_theme, 70},
    {themes, "Background Colors", "Blue", 42, R, zorn_setting_current_background_theme, 1},
    {themes, "Background Colors", "Purple", 43, R, zorn_setting_current_background_theme, 80},
    {themes, "Background Colors", "Grey", 44, R, zorn_setting_current_background_theme, 90},
    {themes, "Background Styles", "None", 54, R, zorn_setting_theme_bg_setting, 0},
    {themes, "Background Styles", "Solid", 55, R, zorn_setting_theme_bg_setting, 1},
    {themes, "Background Styles", "Maze1", 56, R, zorn_setting_theme_bg_setting, 2},
    {themes, "Background Styles", "Maze2", 57, R, zorn_setting_theme_bg_setting, 3},
    {themes, "Background Styles", "Maze3", 58, R, zorn_setting_theme_bg_setting, 5},
    {themes, "Background Styles", "Bubbles", 59, R, zorn_setting_theme_bg_setting, 4},
    {themes, nullptr, "Default Color/Background", 60, N, none, 0},
    {themes, nullptr, nullptr, 0, S, none, 0},
    {themes, "Font Colors", "Default", 61, R, zorn_setting_font_colors_setting, 0},
    {themes, "Font Colors", "ZMud Font Colors", 62, R, zorn_setting_font_colors_setting, 2},
    {themes, "Font Colors", "GMud Font Colors", 63, R, zorn_setting_font_colors_setting, 3},
    {themes, "Font Colors", "Bright Font Colors", 64, R, zorn_setting_font_colors_setting, 1},
    {themes, nullptr, "Bigger Font", 65, N, none, 0},
    {themes, nullptr, "Smaller Font", 66, N, none, 0},
    {themes, nullptr, "Compact Font", 33, C, zorn_setting_compact_mode, 0},
    {themes, nullptr, nullptr, 0, S, none, 0},
    {themes, nullptr, "Change &Font", 67, N, none, 0},
    {themes, nullptr, "Change &Button Font", 68, N, none, 0},

    {maps, nullptr, "&Online Maps", 83, N, none, 0},
    {maps, nullptr, nullptr, 0, S, none, 0},
    {maps, nullptr, "&Automap", 69, C, zorn_setting_automap_display, 0},
    {maps, nullptr, "Docked Map", 70, C, zorn_setting_automap_docked, 0},
    {maps, nullptr, nullptr, 0, S, none, 0},
    {maps, nullptr, "Big Map", 71, N, none, 0},
    {maps, nullptr, "Medium Map", 72, N, none, 0},
    {maps, nullptr, "Small Map", 73, N, none, 0},
    {maps, nullptr, nullptr, 0, S, none, 0},
    {maps, nullptr, "Increase Map Size", 74, N, none, 0},
    {maps, nullptr, "Decrease Map Size", 75, N, none, 0},

    {info, nullptr, "Ember Vale &Web Site", 79, N, none, 0},
    {info, nullptr, "Player &Forums", 80, N, none, 0},
    {info, nullptr, "&Help Search", 82, N, none, 0},
    {info, nullptr, nullptr, 0, S, none, 0},
    {info, nullptr, "&Maps", 83, N, none, 0},
    {info, nullptr, "&Quests", 86, N, none, 0},
    {info, nullptr, "S&pells and Skills", 85, N, none, 0},
    {info, nullptr, "&Shops and Stores", 84, N, none, 0},
    {info, nullptr, nullptr, 0, S, none, 0},
    {info, nullptr, "Game &Rules", 88, N, none, 0},
    {info, nullptr, "All &Commands", 89, N, none, 0},
    {info, nullptr, "S&ocials", 90, N, none, 0},
    {info, nullptr, "F.A.&Q.", 91, N, none, 0},
    {info, nullptr, nullptr, 0, S, none, 0},
    {info, nullptr, "Recent &Changes", 92, N, none, 0},

    {help, nullptr, "&Keyboard Shortcuts", 76, N, none, 0},
    {help, nullptr, "&Basic Commands", 77, N, none, 0},
    {help, nullptr, "&More Commands", 78, N, none, 0},
    {help, nullptr, nullptr, 0, S, none, 0},
    {help, nullptr, "&About", 93, N, none, 0},
};

const int zorn_menu_row_count = static_cast<int>(sizeof zorn_menu_rows / sizeof zorn_menu_rows[0]);

const zorn_menu_row* zorn_menu_find(int id) {
    for (const zorn_menu_row& row : zorn_menu_rows)
        if (row.id == id && row.kind != zorn_menu_kind::separator) return &row;
    return nullptr;
}

const zorn_web_link zorn_web_links[12] = {
    {79, false, "/?ln", "\nOpening the main Ember Vale web page in your browser..."},
    {80, false, "/forum", "\nOpening the Ember Vale Player Forums in your browser..."},
    {82, true, "/help", "\nOpening the help page search engine in your browser..."},
    {83, false, "/maps?ln", "\nOpening the Ember Vale Maps page in your web browser..."},
    {84, true, "/shops", "\nOpening the Ember Vale Stores and Shops page in your web browser..."},
    {85, true, "/spells", "\nOpening the Ember Vale Spells and Skills page in your web browser..."},
    {86, false, "/quests?ln", "\nOpening the Ember Vale Quest Guides in your web browser..."},
    {88, true, "/rules", "\nOpening the Ember Vale Rules in your web browser..."},
    {89, true, "/commands", "\nOpening the Ember Vale Command list in your web browser..."},
    {90, true, "/socials", "\nOpening the Ember Vale Social list in your web browser..."},
    {91, true, "/faq", "\nOpening the Ember Vale FAQ in your web browser..."},
    {92, true, "/changes", "\nOpening the Ember Vale Changelog in your web browser..."},
};

const zorn_web_link* zorn_web_link_find(int id) {
    for (const zorn_web_link& link : zorn_web_links)
        if (link.id == id) return &link;
    return nullptr;
}
