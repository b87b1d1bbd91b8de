#pragma once
// Which client command a typed line is, and what the server's panel commands ask for.
// Only the matching lives here; the frame carries out what is matched.

#include <string>

enum class client_command {
    none,
    commands,
    help,
    version,
    send_break,
    history,
    quit,
    disconnect,
    clear,
    chanclear,
    ping,
    echo,
    debuglevel,
    debugfilename,
    debugfill,
    icons,
    soundtest,
    fingerprint,
};

struct client_command_match {
    client_command command = client_command::none;
    // The text from the second word on, or null when there is none.
    const char* argument = nullptr;
};

// The "//" commands (and "lnping", which counts only while logged in).
client_command_match match_client_command(const char* text, bool logged_in);

enum class offline_command { none, connect, quit };
// The words understood while not connected; port is atoi of the second word, 0 for the default.
offline_command match_offline_command(const char* text, int* port);

enum class config_panel {
    automap,
    hint_buttons,
    fkey_buttons,
    status_bar,
    popup_buttons,
    main_window,
    input_window,
    direction_buttons,
    exp_bar,
};
enum class config_action { enable, disable, flash };

// Reads "panel command" from the server's "config" tag. A bad text logs at level 2 and gives false.
bool parse_config_command(const char* text, config_panel* panel, config_action* action);

// What the client status line reports; each flag 0 or 1 unless noted.
struct client_status_fields {
    int system_audio, cmd_separator, direction_button_enable, hint_button_enable, fkey_button_display;
    int status_bar, sky_bar, exp_display, hpbar_enable, enemy_hpbar_enable, popup_display;
    int group_status_display;  // 1, 2, other values report 0
    int current_layout;        // 1, 2, other values report 0
    int automap_display, automap_docked, channel_window_enable, channel_window_dupe, colorflash_enable;
    int font_colors_setting;  // 0 to 3, other values report 9
    int voting_reminders;
    int current_theme, current_background_theme, theme_bg_setting;
};
std::string build_client_status_line(const client_status_fields& fields);

// The fixed texts of //commands and //help.
extern const char* const client_command_list_lines[];
extern const char* const keyboard_list_lines[];
extern const char* const keyboard_list_fkey_line;  // shown only while logged in
extern const char* const help_banner;
