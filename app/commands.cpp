// The command interpreter: local echo, the client's own "//" commands, the words understood
// offline, and the server's panel commands.
#include <cstdlib>

#include "app/main_frame.h"
#include "automap/automap_display.h"
#include "base/words.h"
#include "config/config_directory.h"
#include "config/debug_log.h"
#include "config/lconfig.h"
#include "display/ansi_display.h"
#include "panels/channel_window.h"
#include "display/ansi_palette.h"
#include "input/button_sets.h"
#include "input/input_window.h"
#include "panels/status_display.h"

namespace {

constexpr const char* separator_line = "\n-------------------------------------------------------------------------";
constexpr const char* copyright_line = "\nCopyright (c) the Lantern developers.";

}  // namespace

void zorn_mw::process_user_command(const char* text, int echo) {
    if (!text) return;
    if (echo && echo_allowed() && LConfig::instance().get_local_echo()) echo_line(text);
    const client_command_match match = match_client_command(text, session_state == session_logged_in);
    if (match.command != client_command::none) {
        run_client_command(match);
        return;
    }
    if (socket.current_state() == socket_connected) {
        send_line(text);
        return;
    }
    int port = 0;
    switch (match_offline_command(text, &port)) {
        case offline_command::connect: socket_connect(port); break;
        case offline_command::quit: system_shutdown_handler(); break;
        case offline_command::none: break;  // dropped without a word
    }
}

void zorn_mw::echo_line(const char* text) {
    const bool separate = LConfig::instance().get_cmd_separator() && *text;
    main_display->reset_colors();
    main_display->add_text("\n");
    if (separate) main_display->add_text("\n");
    main_display->process_ansi_code(0x01, zorn_ansi_yellow);
    main_display->add_text(">");
    main_display->reset_colors();
    main_display->add_text(text);
    main_display->process_ansi_code(0x01, zorn_ansi_yellow);
    main_display->add_text("<");
    if (separate) {
        main_display->process_ansi_code(0x01, zorn_ansi_white);
        main_display->add_text(separator_line);
    }
    main_display->reset_colors();
    main_display->refresh_text();
}

void zorn_mw::run_client_command(const client_command_match& match) {
    switch (match.command) {
        case client_command::commands: print_command_list(); break;
        case client_command::help: print_keyboard_list(); break;
        case client_command::version: print_version(); break;
        case client_command::send_break: send_break(); break;
        case client_command::history: input_window->line_edit.history_show(); break;
        case client_command::quit: system_shutdown_handler(); break;
        case client_command::disconnect: socket_disconnect("Disconnecting."); break;
        case client_command::clear:
            main_display->clear_display();
            refresh_text();
            break;
        case client_command::chanclear:
            channel_window->clear_all_channels();
            refresh_text();
            break;
        case client_command::ping: send_ping(); break;
        case client_command::echo:
            main_display->add_text("\n");
            if (match.argument) main_display->add_text(match.argument);
            refresh_text();
            break;
        case client_command::debuglevel: debug_level_command(match.argument); break;
        case client_command::debugfilename: debug_file_command(match.argument); break;
        case client_command::debugfill:
            main_display->debug_fill();
            refresh_text();
            break;
        case client_command::icons:
            process_tagged_data("icons", match.argument, 1);
            refresh_text();
            break;
        case client_command::soundtest:
            process_tagged_data("sound", match.argument, 1);
            refresh_text();
            break;
        case client_command::fingerprint: print_fingerprint(); break;
        case client_command::none: break;
    }
}

void zorn_mw::print_command_list() {
    main_display->reset_colors();
    for (const char* const* line = client_command_list_lines; *line; ++line) print_message(*line);
    refresh_text();
}

void zorn_mw::print_keyboard_list() {
    begin_message();
    print_message("\n");
    print_highlight(help_banner);
    for (const char* const* line = keyboard_list_lines; *line; ++line) print_message(*line);
    if (session_state == session_logged_in) print_message(keyboard_list_fkey_line);
    print_message("\nUp/Down           - look through previous commands");
    print_highlight(help_banner);
    print_message("\n");
    refresh_text();
}

void zorn_mw::print_version() {
    begin_message();
    print_message("\n");
    print_highlight(help_banner);
    print_message("\nEmber Vale Client Version: ");
    print_message(zorn_client_version);
    if (launcher_version[0]) {
        print_message("\nLauncher Version:          ");
        print_message(launcher_version);
    }
    print_message("\nClient config directory:   ");
    print_message(zorn_client_config_directory());
    print_message("\n");
    print_message(copyright_line);
    print_highlight(help_banner);
    print_message("\n");
    if (socket.current_state() == socket_connected && session_state == session_logged_in)
        send_line("version");
    else
        print_message("\nUnable to retrieve server version.");
    refresh_text();
}

void zorn_mw::print_debug_status() {
    print_message("\n");
    if (zorn_client_debug_logfile_open_failed()) {
        print_message("\n");
        print_message("Debug logging is currently DISABLED - unable to open debug file.\n");
        print_message("The failed filename is:  ");
        print_message(zorn_client_get_debug_logfile_name());
        print_message("\n");
    } else {
        zorn_fixed_string line;
        line.appendf("The current debug level is:     %d\n", zorn_debug_level);
        print_message(line.c_str());
        print_message("The current debug filename is:  ");
        print_message(zorn_client_get_debug_logfile_name());
    }
    print_message("\n");
}

void zorn_mw::debug_level_command(const char* argument) {
    if (argument) {
        const int old_level = zorn_debug_level;
        zorn_debug_level = std::atoi(argument);
        zorn_fixed_string line;
        line.appendf("Debug level changed from %d to %d.\n", old_level, zorn_debug_level);
        print_message("\n");
        print_message(line.c_str());
    } else {
        print_debug_status();
        print_message("\n");
        print_message("To change the debug level, you must give a number between 0 and 3.\n");
    }
    print_message("\n");
    refresh_text();
}

void zorn_mw::debug_file_command(const char* argument) {
    if (!argument) {
        print_debug_status();
        for (const char* part : {"\n", "You must give a filename to change the debug file.\n", "\n"}) print_message(part);
        refresh_text();
        return;
    }
    // The old name counts whether or not anything has been logged yet: the automatic log is a name too.
    const std::string old_name = zorn_client_current_debug_logfile_name();
    if (zorn_client_debug_logfile_is_open()) zorn_client_debug_logfile_close();
    zorn_client_set_debug_logfile_name(argument);
    zorn_client_try_open_debug_logfile();
    const char* outcome;
    if (zorn_client_debug_logfile_is_open()) {
        outcome = "Debug logfile changed.\n";
    } else if (old_name.empty()) {
        outcome = "Unable to open logfile.  Please try again with a different name/path.\n";
    } else {
        zorn_client_set_debug_logfile_name(old_name.c_str());
        zorn_client_try_open_debug_logfile();
        outcome = zorn_client_debug_logfile_is_open()
                      ? "Unable to open new logfile, old logfile not changed.\n"
                      : "Unable to open new logfile, and could not re-open old logfile.  No logfile currently set.\n";
    }
    for (const char* part : {"\n", outcome, "\n"}) print_message(part);
    refresh_text();
}

void zorn_mw::send_break() {
    send_line("\x03");
    main_display->unlock_scrollback();
}

void zorn_mw::send_abort() {
    send_line("\x1a");
    main_display->unlock_scrollback();
}

void zorn_mw::config_cmd_process(const char* text) {
    config_panel panel;
    config_action action;
    if (!parse_config_command(text, &panel, &action)) return;
    LConfig& c = LConfig::instance();
    const int on = action != config_action::disable;
    switch (panel) {
        case config_panel::automap:
            if (c.get_automap_display() != on) set_automap_display(on);
            if (action == config_action::flash) automap->flash();
            break;
        case config_panel::hint_buttons:
            c.set_hint_button_enable(on);
            if (action == config_action::flash) hint_buttons->flash_all();
            break;
        case config_panel::fkey_buttons: c.set_fkey_button_display(on); break;
        case config_panel::status_bar:
            c.set_hpbar_enable(on);
            if (action == config_action::flash) status_display->start_flash();
            break;
        case config_panel::popup_buttons:
            c.set_popup_display(on);
            if (action == config_action::flash) popup_manager->flash_buttons();
            break;
        case config_panel::main_window: main_display->flash_border(); break;
        case config_panel::input_window: input_window->flash_window(); break;
        case config_panel::direction_buttons: c.set_direction_button_enable(on); break;
        case config_panel::exp_bar: c.set_exp_display(on); break;
    }
}
