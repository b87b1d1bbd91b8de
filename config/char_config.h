#pragma once
// The per-character settings record, its table of int settings (file key, default, check on
// reading, menu label, what a change does to the window) and its file form. LConfig (lconfig.h)
// owns the records; this file knows nothing of the list, the directory or the window.

#include <string>
#include <vector>

class zorn_xml_reader;
class zorn_xml_writer;

// The int settings, in the order of the character file.
enum zorn_setting : int {
    zorn_setting_font_size,
    zorn_setting_button_font_size,
    zorn_setting_keypad_walking,
    zorn_setting_url_hotlinking,
    zorn_setting_compact_mode,
    zorn_setting_local_echo,
    zorn_setting_cmd_separator,
    zorn_setting_cmd_pushthrough,
    zorn_setting_hint_button_enable,
    zorn_setting_direction_button_enable,
    zorn_setting_fkey_button_display,
    zorn_setting_button_tooltips,
    zorn_setting_status_bar,
    zorn_setting_sky_bar,
    zorn_setting_exp_display,
    zorn_setting_hpbar_enable,
    zorn_setting_hp_display,
    zorn_setting_enemy_hpbar_enable,
    zorn_setting_enemy_hp_display,
    zorn_setting_group_status_display,
    zorn_setting_group_status_inverted_bars,
    zorn_setting_popup_display,
    zorn_setting_locking_scrollback_enable,
    zorn_setting_mw_scrollbar_enable,
    zorn_setting_current_layout,
    zorn_setting_current_theme,
    zorn_setting_current_background_theme,
    zorn_setting_font_colors_setting,
    zorn_setting_theme_bg_setting,
    zorn_setting_automap_docked,
    zorn_setting_automap_display,
    zorn_setting_automap_size,
    zorn_setting_input_height,
    zorn_setting_channel_window_enable,
    zorn_setting_channel_window_height,
    zorn_setting_channel_window_dupe,
    zorn_setting_colorflash_enable,
    zorn_setting_split_view,
    zorn_setting_count,
};

// A stored popup window position, looked up by name. columns and rows live in memory only.
struct popup_window_config {
    static constexpr int name_size = 100;

    popup_window_config() { name[0] = '\0'; }
    explicit popup_window_config(const char* window_name);

    char name[name_size];
    int x = 48;
    int y = 48;
    int columns = 0;
    int rows = 0;
    int width = 0;
    int height = 0;
};

struct char_config {
    // Every int setting at its table default; strings empty.
    char_config();

    int& value(zorn_setting key);
    int value(zorn_setting key) const;
    // A blank name marks the unnamed record in use before login; it never gets a file.
    bool has_name() const { return !name.empty(); }

    std::string name;
    std::string font;  // native font description of the main display font
    int font_size;
    std::string button_font;
    int button_font_size;
    int keypad_walking;
    int url_hotlinking;
    int compact_mode;
    int cmd_pushthrough;
    int local_echo;
    int cmd_separator;
    int button_tooltips;
    int direction_button_enable;
    int hint_button_enable;
    int fkey_button_display;
    int status_bar;
    int sky_bar;
    int exp_display;
    int hp_display;
    int hpbar_enable;
    int enemy_hp_display;
    int enemy_hpbar_enable;
    int popup_display;
    int mw_scrollbar_enable;
    int locking_scrollback_enable;
    int group_status_display;
    int group_status_inverted_bars;
    int current_layout;
    int current_theme;
    int current_background_theme;
    int font_colors_setting;
    int theme_bg_setting;
    int automap_docked;
    int automap_display;
    int automap_size;
    int input_height;
    int channel_window_enable;
    int channel_window_height;
    int channel_window_dupe;
    int colorflash_enable;
    int split_view;  // while scrolled back, the lower third of the main text shows the live end
    std::vector<popup_window_config> popup_window_list;  // lookup is by name; order carries no meaning
};

// How reading a file checks a value.
enum class zorn_setting_check {
    none,
    lowest_bit,  // bool: only the lowest bit is kept, so 2 reads as 0
    replace,     // outside low..high: the fallback
    clamp,       // below low: low, above high: high
};

// What a setter does to the window, in this order, after storing the value.
enum : unsigned {
    zorn_effect_menu = 1u << 0,                // the check item shows the value
    zorn_effect_refresh_main_font = 1u << 1,   // compact_mode
    zorn_effect_status_bar = 1u << 2,          // if logged in, status bar shown or hidden
    zorn_effect_sky_bar = 1u << 3,             // if logged in, sky bar shown or hidden
    zorn_effect_status_display = 1u << 4,      // flag copied to the status display; shown if any bar is on
    zorn_effect_hide_group = 1u << 5,          // 0 hides the group display
    zorn_effect_channel_window = 1u << 6,      // value handed to the channel window
    zorn_effect_layout = 1u << 7,              // re-layout and frame refresh
    zorn_effect_scrollbar = 1u << 8,           // scrollbar re-layout and frame refresh
    zorn_effect_switch_layout = 1u << 9,       // full layout switch
    zorn_effect_button_theme = 1u << 10,       // button theme applied
    zorn_effect_background_theme = 1u << 11,   // background theme applied
    zorn_effect_status_dirty = 1u << 12,       // the server hears of it in the client status line
};

struct zorn_setting_info {
    zorn_setting key;
    const char* name;  // the file tag and the setter's name
    int char_config::*field;
    int default_value;
    zorn_setting_check check;
    int low;
    int high;
    int fallback;
    // The setter stops at once when the value is the one stored.
    bool only_on_change;
    unsigned effects;
    // The Preferences check item that shows the value, or null.
    const char* menu_label;
};

const zorn_setting_info& zorn_setting_table(zorn_setting key);
// The setting with this file tag (word_equal), or null.
const zorn_setting_info* zorn_setting_by_name(const char* tag);

// Replaces or clamps every out-of-range value as the table says; runs after every read.
void validate(char_config* record);

// Writes the record as the "single_config" container.
void write_char_config(zorn_xml_writer& writer, const char_config& record);
// Reads the children of a "single_config" whose opening tag has been read, over the values
// already in *record. The result of read_data is not tested: a string takes the buffer as it
// stands, an int keeps its value on a non-number. Does not validate.
void read_char_config_fields(zorn_xml_reader& reader, char_config* record);

// True when the two records would write the same file.
bool char_config_file_equal(const char_config& a, const char_config& b);
