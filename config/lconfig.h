#pragma once
// LConfig: the settings of the client. It owns the per-character records (one file each under
// "char_configs") and the current one, and the installation's values of the system file
// "ember_vale.cfg": identity, last character, audio switch, voting values and this platform's
// optional server and web hosts. Every int setting has a getter and a setter named after its
// key; with no current record a getter yields 0 and a setter does nothing. Setters apply their
// change to the window through zorn_config_listener when one is registered.
//
// Files are only written by save_system_config_file, which also saves every named record. Each
// file is written to a temporary file beside it and renamed over it, so a failed write never
// leaves a damaged settings file. Main thread only.

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "config/char_config.h"

class zorn_xml_reader;
struct zorn_fixed_string;

class LConfig {
public:
    // The one instance, made at first use.
    static LConfig& instance();

    // A free-standing instance (tests, fuzzing): no records, nothing read.
    LConfig();
    ~LConfig();
    LConfig(const LConfig&) = delete;
    LConfig& operator=(const LConfig&) = delete;

    static constexpr int uuid_size = 34;  // 33 characters and the terminator
    static constexpr int vote_menu_count = 16;

    // ---- Where the files live -------------------------------------------------------------------
    // Null (the default) means the config directory (zorn_client_config_directory).
    void set_directory(const char* path);
    // The directory in use, or null when there is none.
    const char* directory() const;

    // ---- Records -------------------------------------------------------------------------------
    // What a new default record takes for its fonts: the global fonts' native descriptions and
    // the button font's size at construction. The main size follows the last apply_font.
    void set_font_defaults(const char* main_description, const char* button_description, int button_size);
    int get_default_font_size() const { return default_font_size; }
    char_config make_default_record() const;

    char_config* current() { return current_char_cfg; }
    const char_config* current() const { return current_char_cfg; }
    const std::vector<std::unique_ptr<char_config>>& records() const { return config_list; }
    // Exact name; null and empty are the same.
    char_config* find(const char* name);

    // Enters a deep copy: overwrites the record of that name or appends a new one.
    char_config* add(const char_config& record);
    // From the list, else from its file (the old location beside the system file is moved into
    // "char_configs"); null when there is no usable file.
    char_config* get_or_load(const char* name);
    char_config* create_new_config(const char* name, char_config* old);
    // Makes the current record exist: the previous character's, else a blank default.
    void setup_default_config(const char* previous_name);
    // The "login" entry point: the character's record becomes current and the window follows.
    void switch_character(const char* name);
    // Writes the record's file; false when nothing was written.
    bool save(const char_config& record);
    // Reads the children of a "single_config" whose opening tag has been read; expected_name
    // null accepts any name (system file).
    void load_xml_single_system_config(zorn_xml_reader& reader, const char* expected_name);
    // The path of a character's file, or false for a name that cannot name a file.
    bool char_config_path(const char* name, zorn_fixed_string* path) const;

    // ---- The window ----------------------------------------------------------------------------
    void apply_settings();
    void apply_font();
    // Native description and point size of what is really displayed.
    void store_main_font(const char* description, int size);
    void store_button_font(const char* description, int size);
    // "Use Default Preferences": int fields back to their defaults, fonts and popups kept.
    void use_default_preferences();

    popup_window_config get_popup_window_config(const char* name) const;
    void set_popup_window_config(const popup_window_config& element);

    // ---- Settings ------------------------------------------------------------------------------
    int get(zorn_setting key) const;
    // Stores the value and applies the setting's effects (zorn_setting_info::effects).
    void set(zorn_setting key, int value);

    const char* get_name() const { return current_char_cfg ? current_char_cfg->name.c_str() : ""; }
    const char* get_font() const { return current_char_cfg ? current_char_cfg->font.c_str() : ""; }
    const char* get_button_font() const { return current_char_cfg ? current_char_cfg->button_font.c_str() : ""; }

    int get_font_size() const { return get(zorn_setting_font_size); }
    int get_button_font_size() const { return get(zorn_setting_button_font_size); }
    int get_keypad_walking() const { return get(zorn_setting_keypad_walking); }
    int get_url_hotlinking() const { return get(zorn_setting_url_hotlinking); }
    int get_compact_mode() const { return get(zorn_setting_compact_mode); }
    int get_cmd_pushthrough() const { return get(zorn_setting_cmd_pushthrough); }
    int get_local_echo() const { return get(zorn_setting_local_echo); }
    int get_cmd_separator() const { return get(zorn_setting_cmd_separator); }
    int get_button_tooltips() const { return get(zorn_setting_button_tooltips); }
    int get_direction_button_enable() const { return get(zorn_setting_direction_button_enable); }
    int get_hint_button_enable() const { return get(zorn_setting_hint_button_enable); }
    int get_fkey_button_display() const { return get(zorn_setting_fkey_button_display); }
    int get_status_bar() const { return get(zorn_setting_status_bar); }
    int get_sky_bar() const { return get(zorn_setting_sky_bar); }
    int get_exp_display() const { return get(zorn_setting_exp_display); }
    int get_hpbar_enable() const { return get(zorn_setting_hpbar_enable); }
    int get_enemy_hpbar_enable() const { return get(zorn_setting_enemy_hpbar_enable); }
    int get_popup_display() const { return get(zorn_setting_popup_display); }
    int get_mw_scrollbar_enable() const { return get(zorn_setting_mw_scrollbar_enable); }
    int get_locking_scrollback_enable() const { return get(zorn_setting_locking_scrollback_enable); }
    int get_group_status_display() const { return get(zorn_setting_group_status_display); }
    int get_group_status_inverted_bars() const { return get(zorn_setting_group_status_inverted_bars); }
    int get_current_layout() const { return get(zorn_setting_current_layout); }
    int get_current_theme() const { return get(zorn_setting_current_theme); }
    int get_current_background_theme() const { return get(zorn_setting_current_background_theme); }
    int get_font_colors_setting() const { return get(zorn_setting_font_colors_setting); }
    int get_theme_bg_setting() const { return get(zorn_setting_theme_bg_setting); }
    int get_automap_docked() const { return get(zorn_setting_automap_docked); }
    int get_automap_display() const { return get(zorn_setting_automap_display); }
    int get_automap_size() const { return get(zorn_setting_automap_size); }
    int get_input_height() const { return get(zorn_setting_input_height); }
    int get_channel_window_enable() const { return get(zorn_setting_channel_window_enable); }
    int get_channel_window_height() const { return get(zorn_setting_channel_window_height); }
    int get_channel_window_dupe() const { return get(zorn_setting_channel_window_dupe); }
    int get_colorflash_enable() const { return get(zorn_setting_colorflash_enable); }
    int get_split_view() const { return get(zorn_setting_split_view); }

    void set_font_size(int v) { set(zorn_setting_font_size, v); }
    void set_button_font_size(int v) { set(zorn_setting_button_font_size, v); }
    void set_keypad_walking(int v) { set(zorn_setting_keypad_walking, v); }
    void set_url_hotlinking(int v) { set(zorn_setting_url_hotlinking, v); }
    void set_compact_mode(int v) { set(zorn_setting_compact_mode, v); }
    void set_cmd_pushthrough(int v) { set(zorn_setting_cmd_pushthrough, v); }
    void set_local_echo(int v) { set(zorn_setting_local_echo, v); }
    void set_cmd_separator(int v) { set(zorn_setting_cmd_separator, v); }
    void set_button_tooltips(int v) { set(zorn_setting_button_tooltips, v); }
    void set_direction_button_enable(int v) { set(zorn_setting_direction_button_enable, v); }
    void set_hint_button_enable(int v) { set(zorn_setting_hint_button_enable, v); }
    void set_fkey_button_display(int v) { set(zorn_setting_fkey_button_display, v); }
    void set_status_bar(int v) { set(zorn_setting_status_bar, v); }
    void set_sky_bar(int v) { set(zorn_setting_sky_bar, v); }
    void set_exp_display(int v) { set(zorn_setting_exp_display, v); }
    void set_hpbar_enable(int v) { set(zorn_setting_hpbar_enable, v); }
    void set_enemy_hpbar_enable(int v) { set(zorn_setting_enemy_hpbar_enable, v); }
    void set_popup_display(int v) { set(zorn_setting_popup_display, v); }
    void set_mw_scrollbar_enable(int v) { set(zorn_setting_mw_scrollbar_enable, v); }
    void set_locking_scrollback_enable(int v) { set(zorn_setting_locking_scrollback_enable, v); }
    void set_group_status_display(int v) { set(zorn_setting_group_status_display, v); }
    void set_group_status_inverted_bars(int v) { set(zorn_setting_group_status_inverted_bars, v); }
    void set_current_layout(int v) { set(zorn_setting_current_layout, v); }
    void set_current_theme(int v) { set(zorn_setting_current_theme, v); }
    void set_current_background_theme(int v) { set(zorn_setting_current_background_theme, v); }
    void set_font_colors_setting(int v) { set(zorn_setting_font_colors_setting, v); }
    void set_theme_bg_setting(int v) { set(zorn_setting_theme_bg_setting, v); }
    void set_automap_docked(int v) { set(zorn_setting_automap_docked, v); }
    void set_automap_display(int v) { set(zorn_setting_automap_display, v); }
    void set_automap_size(int v) { set(zorn_setting_automap_size, v); }
    void set_input_height(int v) { set(zorn_setting_input_height, v); }
    void set_channel_window_enable(int v) { set(zorn_setting_channel_window_enable, v); }
    void set_channel_window_height(int v) { set(zorn_setting_channel_window_height, v); }
    void set_channel_window_dupe(int v) { set(zorn_setting_channel_window_dupe, v); }
    void set_colorflash_enable(int v) { set(zorn_setting_colorflash_enable, v); }
    void set_split_view(int v) { set(zorn_setting_split_view, v); }

    int get_system_audio() const { return system_audio_enable; }
    // Needs no current record. Starts or stops audio through the listener.
    void SetSystemAudio(int value);

    // ---- System file (system_config.cpp) -------------------------------------------------------
    void load_system_config();
    void load_system_config_file();
    // The top-level loop over a system file's body (after its header line).
    void load_system_config_stream(zorn_xml_reader& reader, zorn_fixed_string* curr_config);
    // The children of "system_config_list", whose opening tag has been read.
    void load_xml_system_config(zorn_xml_reader& reader, zorn_fixed_string* curr_config);
    // Writes the system file and every named record's file; false when the system file failed.
    bool save_system_config_file();
    void set_uuid(const char* text);
    void create_default_uuid();

    const char* get_uuid() const { return uuid; }
    int get_uuid_create_time() const { return uuid_create_time; }
    int get_last_voting_time() const { return last_voting_time; }
    int get_last_voting_reminder_time() const { return last_voting_reminder_time; }
    int get_voting_reminders() const { return voting_reminders; }
    void set_last_voting_time(int v) { last_voting_time = v; }
    void set_last_voting_reminder_time(int v) { last_voting_reminder_time = v; }
    void set_voting_reminders(int v) { voting_reminders = v; }
    // Null when entry index has no name (or no url).
    const char* get_vote_menu_name(int index) const;
    const char* get_vote_menu_url(int index) const;
    // A null name clears the entry; a null url is kept as null.
    void set_vote_menu(int index, const char* name, const char* url);

    // This platform's optional leaves: "server_host" and "web_host" hold a host or host:port,
    // "server_port" a port. Kept as read and written back only when set; null or 0 clears.
    void set_server_host(const char* text);
    void set_server_port(int port);
    void set_web_host(const char* text);
    const char* get_server_host_setting() const;  // null when unset
    int get_server_port_setting() const { return server_port; }
    const char* get_web_host_setting() const;  // null when unset

    // Where the client connects: the leaves when usable, else the built-in defaults. A port in
    // "server_host" wins over "server_port".
    const char* get_game_host() const;
    int get_game_port() const;
    const char* get_web_host() const;
    int get_web_port() const;

private:
    void apply_effects(const zorn_setting_info& info, int value);
    void write_system_config(class zorn_xml_writer& writer);
    bool read_system_leaf(zorn_xml_reader& reader, const char* tag, zorn_fixed_string* curr_config);

    std::vector<std::unique_ptr<char_config>> config_list;
    char_config* current_char_cfg = nullptr;
    int system_audio_enable = 1;

    std::optional<std::string> directory_override;
    std::string default_font;
    std::string default_button_font;
    int default_button_font_size = 7;
    int default_font_size = 10;

    char uuid[uuid_size] = {};
    int uuid_create_time = 0;
    int last_voting_time = 0;
    int last_voting_reminder_time = 0;
    int voting_reminders = 1;
    struct vote_entry {
        std::optional<std::string> name;
        std::optional<std::string> url;
    };
    vote_entry vote_menu[vote_menu_count];

    std::optional<std::string> server_host;
    int server_port = 0;
    std::optional<std::string> web_host;
    // The usable parts of the two host leaves; empty and 0 when unset or unusable.
    std::string server_host_name;
    int server_host_port = 0;
    std::string web_host_name;
    int web_host_port = 0;
};
