#include "app/client_commands.h"

#include <cstdio>
#include <cstdlib>

#include "base/words.h"
#include "config/debug_log.h"

namespace {

enum class match_rule { abbreviation, whole_word };

struct command_row {
    const char* name;
    match_rule rule;
    int minimum;
    client_command command;
};

// The first matching row wins, so the order is part of the meaning ("//cl" is //clear, not //chanclear).
constexpr command_row command_table[] = {
    {"//commands", match_rule::abbreviation, 3, client_command::commands},
    {"//help", match_rule::abbreviation, 3, client_command::help},
    {"//version", match_rule::abbreviation, 3, client_command::version},
    {"//break", match_rule::abbreviation, 3, client_command::send_break},
    {"//history", match_rule::abbreviation, 3, client_command::history},
    {"//quit", match_rule::abbreviation, 6, client_command::quit},
    {"//exit", match_rule::abbreviation, 6, client_command::quit},
    {"//disconnect", match_rule::abbreviation, 6, client_command::disconnect},
    {"//clear", match_rule::abbreviation, 4, client_command::clear},
    {"//chanclear", match_rule::abbreviation, 4, client_command::chanclear},
    {"//cclear", match_rule::abbreviation, 4, client_command::chanclear},
    {"lnping", match_rule::whole_word, 0, client_command::ping},
    {"//ping", match_rule::abbreviation, 3, client_command::ping},
    {"//echo", match_rule::abbreviation, 3, client_command::echo},
    {"//debuglevel", match_rule::abbreviation, 5, client_command::debuglevel},
    {"//debugfilename", match_rule::abbreviation, 8, client_command::debugfilename},
    {"//debugfill", match_rule::whole_word, 0, client_command::debugfill},
    {"//icons", match_rule::whole_word, 0, client_command::icons},
    {"//soundtest", match_rule::whole_word, 0, client_command::soundtest},
    {"//fingerprint", match_rule::abbreviation, 6, client_command::fingerprint},
};

bool row_matches(const command_row& row, const char* text) {
    if (row.rule == match_rule::whole_word) return word_equal(text, row.name);
    return word_abbrev_match(text, row.name, row.minimum) > 0;
}

struct config_row {
    const char* word;
    config_panel panel;
    bool has_enable;  // enable and disable go together
    bool has_flash;
    const char* error_text;
};

constexpr config_row config_table[] = {
    {"automap", config_panel::automap, true, true, "Error in zorn_mw::parse_cmd_automap(), bad command '%s'.\n"},
    {"hint_buttons", config_panel::hint_buttons, true, true,
     "Error in zorn_mw::parse_cmd_hint_buttons(), bad command '%s'.\n"},
    {"fkey_buttons", config_panel::fkey_buttons, true, false,
     "Error in zorn_mw::parse_cmd_fkey_buttons(), bad command '%s'.\n"},
    {"status_bar", config_panel::status_bar, true, true,
     "Error in zorn_mw::parse_cmd_status_bar(), bad command '%s'.\n"},
    {"popup_buttons", config_panel::popup_buttons, true, true,
     "Error in zorn_mw::parse_cmd_popup_display(), bad command '%s'.\n"},
    {"main_window", config_panel::main_window, false, true,
     "Error in zorn_mw::parse_cmd_main_display(), bad command '%s'.\n"},
    {"input_window", config_panel::input_window, false, true,
     "Error in zorn_mw::parse_cmd_input_window(), bad command '%s'.\n"},
    {"direction_buttons", config_panel::direction_buttons, true, false,
     "Error in zorn_mw::parse_cmd_direction_buttons(), bad command '%s'.\n"},
    {"exp_bar", config_panel::exp_bar, true, false, "Error in zorn_mw::parse_cmd_exp_bar(), bad command '%s'.\n"},
};

constexpr int warning_level = 2;

char flag(int value) { return value ? '1' : '0'; }

}  // namespace

client_command_match match_client_command(const char* text, bool logged_in) {
    if (!text) return {};
    for (const command_row& row : command_table) {
        if (!row_matches(row, text)) continue;
        if (row.command == client_command::ping && !logged_in) continue;
        return {row.command, next_arg(text)};
    }
    return {};
}

offline_command match_offline_command(const char* text, int* port) {
    *port = 0;
    if (!text) return offline_command::none;
    if (word_prefix_match(text, "connect") > 0 || word_abbrev_match(text, "restart", 2) > 0 ||
        word_abbrev_match(text, "start", 2) > 0 || word_abbrev_match(text, "login", 4) > 0) {
        const char* second = next_arg(text);
        *port = second ? std::atoi(second) : 0;
        return offline_command::connect;
    }
    if (word_abbrev_match(text, "quit", 3) > 0 || word_abbrev_match(text, "exit", 2) > 0) return offline_command::quit;
    return offline_command::none;
}

bool parse_config_command(const char* text, config_panel* panel, config_action* action) {
    if (!text || !*text) {
        if (zorn_debug_level >= warning_level)
            zorn_client_debug_printf("Warning in zorn_mw::config_cmd_process() - got null string?\n");
        return false;
    }
    for (const config_row& row : config_table) {
        if (!word_equal(text, row.word)) continue;
        const char* command = next_arg(text);
        if (!command) return false;
        const bool enable = word_equal(command, "enable"), disable = word_equal(command, "disable");
        const bool flash = word_equal(command, "flash");
        if (((enable || disable) && row.has_enable) || (flash && row.has_flash)) {
            *panel = row.panel;
            *action = enable ? config_action::enable : disable ? config_action::disable : config_action::flash;
            return true;
        }
        if (zorn_debug_level >= warning_level) zorn_client_debug_printf(row.error_text, command);
        return false;
    }
    if (zorn_debug_level >= warning_level)
        zorn_client_debug_printf("Warning in zorn_mw::config_cmd_process() - got unknown command '%s'.\n", text);
    return false;
}

std::string build_client_status_line(const client_status_fields& f) {
    const int group = f.group_status_display == 1 || f.group_status_display == 2 ? f.group_status_display : 0;
    const int layout = f.current_layout == 1 || f.current_layout == 2 ? f.current_layout : 0;
    const int colours = f.font_colors_setting >= 0 && f.font_colors_setting <= 3 ? f.font_colors_setting : 9;
    const char flags[] = {flag(f.system_audio),
                          flag(f.cmd_separator),
                          flag(f.direction_button_enable),
                          flag(f.hint_button_enable),
                          flag(f.fkey_button_display),
                          flag(f.status_bar),
                          flag(f.sky_bar),
                          flag(f.exp_display),
                          flag(f.hpbar_enable),
                          flag(f.enemy_hpbar_enable),
                          flag(f.popup_display),
                          static_cast<char>('0' + group),
                          static_cast<char>('0' + layout),
                          flag(f.automap_display),
                          flag(f.automap_docked),
                          flag(f.channel_window_enable),
                          flag(f.channel_window_dupe),
                          flag(f.colorflash_enable),
                          static_cast<char>('0' + colours),
                          flag(f.voting_reminders),
                          '\0'};
    char numbers[48];
    std::snprintf(numbers, sizeof numbers, " %2d %2d %2d", f.current_theme, f.current_background_theme,
                  f.theme_bg_setting);
    return std::string("lnlstatus ") + flags + numbers;
}

const char* const help_banner = "\n=-=-=-=-=-=-=-=-=-=-=-=-=-=-=-=-=-=-=-=-=-=-=-=-=-=-=";

const char* const client_command_list_lines[] = {
    "\n",
    "\nLantern Control Commands -------------------------------",
    "\n//commands               - this help screen",
    "\n//help                   - show keyboard shortcuts",
    "\n//version                - show client/server versions",
    "\n//break                  - send TTY *break*",
    "\n//history                - show recent client history",
    "\n//ping                   - check/update ping time",
    "\n//debug                  - display/change debug level",
    "\n//debugfile              - change name of debug file",
    "\n//cclear                 - quick clear of channel windows",
    "\n//clear                  - quick clear of all backscroll",
    "\n//quit                   - quick program exit",
    "\n//disconnect             - quick disconnect",
    "\n//fingerprint            - show the game server's pinned key",
    "\n",
    "\nCommands Used While Disconnected -----------------------",
    "\nconnect <port>           - connect on a specified port",
    "\nquit                     - quick program exit",
    "\n",
    nullptr,
};

const char* const keyboard_list_lines[] = {
    "\nKeyboard controls you can use with this client:",
    "\n",
    "\nPgUp/PgDn         - lock and scroll the screen (any other key to unlock)",
    "\nEscape            - erase current line",
    "\nControl C         - (break) erase current line and stop all aliases",
    "\nControl F         - find text in the scrollback",
    "\nControl \\         - (abort) erase current line and stop all aliases",
    "\nControl K         - erase/kill current line",
    "\nControl M         - toggle automap window",
    "\nControl P         - toggle hitpoint display bar",
    "\nControl S         - freeze screen scrolling",
    "\nControl Z         - freeze screen scrolling",
    "\nControl Q         - unfreeze screen scrolling",
    "\nControl -         - decrease font size",
    "\nControl +         - increase font size",
    "\nControl [         - decrease automap size",
    "\nControl ]         - increase automap size",
    "\nControl {         - decrease input window size",
    "\nControl }         - increase input window size",
    "\nControl 1-9       - quick open/close of popup windows",
    "\nControl-Shift 1-9 - quick enable/disable of various features",
    nullptr,
};

const char* const keyboard_list_fkey_line = "\nF1-F12            - trigger aliases 'f01' through 'f12'";
// The frame prints keyboard_list_lines, then (logged in) the F-key line, then this last line.
