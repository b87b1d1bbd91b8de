#include "config/char_config.h"

#include <cstring>

#include "base/words.h"
#include "config/xml.h"

namespace {

using check = zorn_setting_check;

constexpr unsigned menu = zorn_effect_menu;
constexpr unsigned dirty = zorn_effect_status_dirty;
constexpr unsigned layout = zorn_effect_layout;

// One row per int setting, in file order (the order of zorn_setting).
const zorn_setting_info setting_table[] = {
    {zorn_setting_font_size, "font_size", &char_config::font_size, 10, check::replace, 2, 150, 10, false, 0, nullptr},
    {zorn_setting_button_font_size, "button_font_size", &char_config::button_font_size, 7, check::none, 0, 0, 0, false,
     0, nullptr},
    {zorn_setting_keypad_walking, "keypad_walking", &char_config::keypad_walking, 1, check::lowest_bit, 0, 1, 0, false,
     menu, "Move Using &Number Pad"},
    {zorn_setting_url_hotlinking, "url_hotlinking", &char_config::url_hotlinking, 1, check::lowest_bit, 0, 1, 0, false,
     menu, "Enable URL Linking"},
    {zorn_setting_compact_mode, "compact_mode", &char_config::compact_mode, 0, check::lowest_bit, 0, 1, 0, false,
     menu | zorn_effect_refresh_main_font, "Compact Font"},
    {zorn_setting_local_echo, "local_echo", &char_config::local_echo, 1, check::lowest_bit, 0, 1, 0, false, menu,
     "&Enable Local Echo"},
    {zorn_setting_cmd_separator, "cmd_separator", &char_config::cmd_separator, 1, check::lowest_bit, 0, 1, 0, false,
     menu | dirty, "Command Separator"},
    {zorn_setting_cmd_pushthrough, "cmd_pushthrough", &char_config::cmd_pushthrough, 0, check::lowest_bit, 0, 1, 0,
     false, menu, "Select &Last Command"},
    {zorn_setting_hint_button_enable, "hint_button_enable", &char_config::hint_button_enable, 1, check::lowest_bit, 0,
     1, 0, true, menu | layout | dirty, "&Hint Buttons"},
    {zorn_setting_direction_button_enable, "direction_button_enable", &char_config::direction_button_enable, 0,
     check::lowest_bit, 0, 1, 0, true, menu | layout | dirty, "&Direction Buttons"},
    {zorn_setting_fkey_button_display, "fkey_button_display", &char_config::fkey_button_display, 0, check::lowest_bit,
     0, 1, 0, true, menu | layout | dirty, "&Function Key Buttons"},
    {zorn_setting_button_tooltips, "button_tooltips", &char_config::button_tooltips, 0, check::lowest_bit, 0, 1, 0,
     false, 0, nullptr},
    {zorn_setting_status_bar, "status_bar", &char_config::status_bar, 1, check::lowest_bit, 0, 1, 0, true,
     menu | zorn_effect_status_bar | layout | dirty, "&Status Bar"},
    {zorn_setting_sky_bar, "sky_bar", &char_config::sky_bar, 1, check::lowest_bit, 0, 1, 0, true,
     menu | zorn_effect_sky_bar | layout | dirty, "S&ky Bar"},
    {zorn_setting_exp_display, "exp_display", &char_config::exp_display, 1, check::lowest_bit, 0, 1, 0, true,
     menu | zorn_effect_status_display | layout | dirty, "E&xp Bar"},
    {zorn_setting_hpbar_enable, "hpbar_enable", &char_config::hpbar_enable, 1, check::lowest_bit, 0, 1, 0, true,
     menu | zorn_effect_status_display | layout | dirty, "HP Bar"},
    {zorn_setting_hp_display, "hp_display", &char_config::hp_display, 0, check::lowest_bit, 0, 1, 0, false, 0,
     nullptr},
    {zorn_setting_enemy_hpbar_enable, "enemy_hpbar_enable", &char_config::enemy_hpbar_enable, 1, check::lowest_bit, 0,
     1, 0, true, menu | zorn_effect_status_display | layout | dirty, "Enemy HP Bar"},
    {zorn_setting_enemy_hp_display, "enemy_hp_display", &char_config::enemy_hp_display, 1, check::lowest_bit, 0, 1, 0,
     false, 0, nullptr},
    {zorn_setting_group_status_display, "group_status_display", &char_config::group_status_display, 1, check::replace,
     0, 2, 0, true, menu | zorn_effect_hide_group | layout | dirty, "Group Display"},
    {zorn_setting_group_status_inverted_bars, "group_status_inverted_bars", &char_config::group_status_inverted_bars, 1,
     check::lowest_bit, 0, 1, 0, false, menu, "Bar Invert"},
    {zorn_setting_popup_display, "popup_display", &char_config::popup_display, 1, check::lowest_bit, 0, 1, 0, true,
     menu | layout | dirty, "&Popup Buttons"},
    {zorn_setting_locking_scrollback_enable, "locking_scrollback_enable", &char_config::locking_scrollback_enable, 0,
     check::lowest_bit, 0, 1, 0, false, menu, "Locking Scrollback"},
    {zorn_setting_mw_scrollbar_enable, "mw_scrollbar_enable", &char_config::mw_scrollbar_enable, 1, check::lowest_bit,
     0, 1, 0, true, menu | zorn_effect_scrollbar, "Main Scrollbar"},
    {zorn_setting_current_layout, "current_layout", &char_config::current_layout, 2, check::clamp, 0, 2, 0, true,
     menu | zorn_effect_switch_layout | dirty, "Layout"},
    {zorn_setting_current_theme, "current_theme", &char_config::current_theme, 1, check::none, 0, 0, 0, true,
     menu | zorn_effect_button_theme | dirty, "Button Colors"},
    {zorn_setting_current_background_theme, "current_background_theme", &char_config::current_background_theme, 2,
     check::none, 0, 0, 0, true, menu | zorn_effect_background_theme | dirty, "Background Colors"},
    {zorn_setting_font_colors_setting, "font_colors_setting", &char_config::font_colors_setting, 0, check::replace, 0,
     3, 0, false, dirty, "Font Colors"},
    {zorn_setting_theme_bg_setting, "theme_bg_setting", &char_config::theme_bg_setting, 3, check::replace, 0, 5, 3,
     true, menu | zorn_effect_background_theme | dirty, "Background Styles"},
    {zorn_setting_automap_docked, "automap_docked", &char_config::automap_docked, 1, check::lowest_bit, 0, 1, 0, false,
     dirty, "Docked Map"},
    {zorn_setting_automap_display, "automap_display", &char_config::automap_display, 1, check::lowest_bit, 0, 1, 0,
     false, dirty, "&Automap"},
    {zorn_setting_automap_size, "automap_size", &char_config::automap_size, 11, check::replace, 1, 400, 11, false, 0,
     nullptr},
    {zorn_setting_input_height, "input_height", &char_config::input_height, 48, check::replace, 24, 800, 48, false, 0,
     nullptr},
    {zorn_setting_channel_window_enable, "channel_window_enable", &char_config::channel_window_enable, 0,
     check::lowest_bit, 0, 1, 0, true, menu | zorn_effect_channel_window | layout | dirty, "Tabbed &Channel Window"},
    {zorn_setting_channel_window_height, "channel_window_height", &char_config::channel_window_height, 25,
     check::replace, 10, 80, 25, false, 0, nullptr},
    {zorn_setting_channel_window_dupe, "channel_window_dupe", &char_config::channel_window_dupe, 1, check::lowest_bit,
     0, 1, 0, false, dirty, "D&uplicate Channel Sends in Main Window"},
    {zorn_setting_colorflash_enable, "colorflash_enable", &char_config::colorflash_enable, 1, check::lowest_bit, 0, 1,
     0, false, menu | dirty, "Show &Color Flash Events"},
    {zorn_setting_split_view, "split_view", &char_config::split_view, 1, check::lowest_bit, 0, 1, 0, false, menu,
     "Split View"},
};
static_assert(sizeof setting_table / sizeof setting_table[0] == zorn_setting_count, "one row per setting");

// Values of a string or popup leaf; the popup's name goes through its own array.
constexpr int value_buffer_size = 10000;

// Old keys that map onto new ones on reading; never written.
bool read_legacy_key(zorn_xml_reader& reader, const char* tag, char_config* record) {
    int* target = nullptr;
    int set_to = 0;
    if (word_equal(tag, "use_new_layout")) {
        target = &record->current_layout;
    } else if (word_equal(tag, "bright_color_display")) {
        target = &record->font_colors_setting, set_to = 1;
    } else if (word_equal(tag, "zmud_color_display")) {
        target = &record->font_colors_setting, set_to = 2;
    } else if (word_equal(tag, "gmud_color_display")) {
        target = &record->font_colors_setting, set_to = 3;
    } else {
        return false;
    }
    int value = 0;
    if (!reader.read_data(&value)) return true;
    if (set_to == 0) {
        *target = value != 0 ? 1 : 0;
    } else if (value != 0) {
        *target = set_to;
    }
    return true;
}

void read_popup(zorn_xml_reader& reader, popup_window_config* popup) {
    char tag[value_buffer_size];
    while (reader.read_child(tag, sizeof tag)) {
        int* number = word_equal(tag, "x")        ? &popup->x
                      : word_equal(tag, "y")      ? &popup->y
                      : word_equal(tag, "width")  ? &popup->width
                      : word_equal(tag, "height") ? &popup->height
                                                  : nullptr;
        if (number) {
            reader.read_data(number);
        } else if (word_equal(tag, "name")) {
            reader.read_data(popup->name, popup_window_config::name_size);
        } else {
            reader.skip_data();
        }
    }
}

void read_popup_list(zorn_xml_reader& reader, char_config* record) {
    char tag[value_buffer_size];
    while (reader.read_child(tag, sizeof tag)) {
        if (!word_equal(tag, "single_popup_window")) {
            reader.skip_data();
            continue;
        }
        popup_window_config popup;
        read_popup(reader, &popup);
        record->popup_window_list.push_back(popup);
    }
}

std::string* string_field(char_config* record, const char* tag) {
    if (word_equal(tag, "name")) return &record->name;
    if (word_equal(tag, "font")) return &record->font;
    if (word_equal(tag, "button_font")) return &record->button_font;
    return nullptr;
}

void write_popup_list(zorn_xml_writer& writer, const std::vector<popup_window_config>& list) {
    writer.write_tag("popup_window_list", 1);
    for (const popup_window_config& popup : list) {
        writer.write_tag("single_popup_window", 1);
        writer.write_leaf("name", popup.name);
        writer.write_leaf("x", popup.x);
        writer.write_leaf("y", popup.y);
        writer.write_leaf("width", popup.width);
        writer.write_leaf("height", popup.height);
        writer.end_tag("single_popup_window", 1);
    }
    writer.end_tag("popup_window_list", 1);
}

}  // namespace

popup_window_config::popup_window_config(const char* window_name) {
    name[0] = '\0';
    if (window_name) {
        std::strncpy(name, window_name, name_size - 1);
        name[name_size - 1] = '\0';
    }
}

char_config::char_config() {
    for (const zorn_setting_info& info : setting_table) this->*info.field = info.default_value;
}

int& char_config::value(zorn_setting key) { return this->*zorn_setting_table(key).field; }
int char_config::value(zorn_setting key) const { return this->*zorn_setting_table(key).field; }

const zorn_setting_info& zorn_setting_table(zorn_setting key) {
    if (key < 0 || key >= zorn_setting_count) return setting_table[0];
    return setting_table[key];
}

const zorn_setting_info* zorn_setting_by_name(const char* tag) {
    for (const zorn_setting_info& info : setting_table) {
        if (word_equal(tag, info.name)) return &info;
    }
    return nullptr;
}

void validate(char_config* record) {
    for (const zorn_setting_info& info : setting_table) {
        int& v = record->*info.field;
        switch (info.check) {
            case check::none: break;
            case check::lowest_bit: v &= 1; break;
            case check::replace:
                if (v < info.low || v > info.high) v = info.fallback;
                break;
            case check::clamp:
                if (v < info.low) v = info.low;
                if (v > info.high) v = info.high;
                break;
        }
    }
}

void write_char_config(zorn_xml_writer& writer, const char_config& record) {
    writer.write_tag("single_config", 1);
    writer.write_leaf("name", record.name.c_str());
    writer.write_leaf("font", record.font.c_str());
    writer.write_leaf("font_size", record.font_size);
    writer.write_leaf("button_font", record.button_font.c_str());
    for (const zorn_setting_info& info : setting_table) {
        if (info.key == zorn_setting_font_size) continue;
        writer.write_leaf(info.name, record.*info.field);
    }
    write_popup_list(writer, record.popup_window_list);
    writer.end_tag("single_config", 1);
}

void read_char_config_fields(zorn_xml_reader& reader, char_config* record) {
    char tag[value_buffer_size];
    char value[value_buffer_size];
    while (reader.read_child(tag, sizeof tag)) {
        if (std::string* text = string_field(record, tag)) {
            value[0] = '\0';
            reader.read_data(value, sizeof value);
            *text = value;
        } else if (const zorn_setting_info* info = zorn_setting_by_name(tag)) {
            reader.read_data(&(record->*info->field));
        } else if (word_equal(tag, "popup_window_list")) {
            read_popup_list(reader, record);
        } else if (!read_legacy_key(reader, tag, record)) {
            reader.skip_data();
        }
    }
}

bool char_config_file_equal(const char_config& a, const char_config& b) {
    if (a.name != b.name || a.font != b.font || a.button_font != b.button_font) return false;
    for (const zorn_setting_info& info : setting_table) {
        if (a.*info.field != b.*info.field) return false;
    }
    if (a.popup_window_list.size() != b.popup_window_list.size()) return false;
    for (size_t i = 0; i < a.popup_window_list.size(); ++i) {
        const popup_window_config& p = a.popup_window_list[i];
        const popup_window_config& q = b.popup_window_list[i];
        if (std::strcmp(p.name, q.name) != 0 || p.x != q.x || p.y != q.y || p.width != q.width || p.height != q.height)
            return false;
    }
    return true;
}
