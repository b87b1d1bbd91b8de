#pragma once
// The main frame's menu bar as data: every entry with its menu, submenu, label, id and kind, and
// the setting that a check or radio item shows. The frame builds the bar from this table, routes
// every id through one dispatcher, and keeps the items in step with the settings.

#include "config/char_config.h"

// Ids the frame handles specially; the rest are in the table.
enum : int {
    zorn_menu_connect = 1,
    zorn_menu_disconnect = 2,
    zorn_menu_save_logfile = 3,
    zorn_menu_save_and_quit = 4,
    zorn_menu_clear_scrollback = 6,
    zorn_menu_enable_sounds = 34,
    zorn_menu_default_preferences = 35,
    zorn_menu_default_colors = 60,
    zorn_menu_bigger_font = 65,
    zorn_menu_smaller_font = 66,
    zorn_menu_change_font = 67,
    zorn_menu_change_button_font = 68,
    zorn_menu_automap = 69,
    zorn_menu_docked_map = 70,
    zorn_menu_big_map = 71,
    zorn_menu_medium_map = 72,
    zorn_menu_small_map = 73,
    zorn_menu_increase_map = 74,
    zorn_menu_decrease_map = 75,
    zorn_menu_keyboard_shortcuts = 76,
    zorn_menu_basic_commands = 77,
    zorn_menu_more_commands = 78,
    zorn_menu_about = 93,
    zorn_menu_last_fixed_id = 93,
    zorn_menu_find_text = 120,
    zorn_menu_split_view = 121,
};

enum class zorn_menu_kind : char { normal = 'N', check = 'C', radio = 'R', separator = '-' };

struct zorn_menu_row {
    const char* menu;     // the bar's title
    const char* submenu;  // null: directly in the menu
    const char* label;    // null for a separator
    int id;
    zorn_menu_kind kind;
    // Check items: the setting toggled; radio items: the setting and the value they stand for.
    // zorn_setting_count when the entry stands for no character setting.
    zorn_setting setting;
    int value;
};

extern const char* const zorn_menu_titles[7];
extern const zorn_menu_row zorn_menu_rows[];
extern const int zorn_menu_row_count;

// The row of an id, or null.
const zorn_menu_row* zorn_menu_find(int id);

// Web links: where each id leads and what the player is told.
struct zorn_web_link {
    int id;
    bool game_host;  // false: the web site; true: the game's host at port 8080
    const char* path;
    const char* text;
};

extern const zorn_web_link zorn_web_links[12];
const zorn_web_link* zorn_web_link_find(int id);
