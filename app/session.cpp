// The game connection of the main frame: connecting, the per-tick pump, the text sink of the
// stream parser, the outgoing buffer and client messages in the main display.
#include <arpa/inet.h>
#include <wx/utils.h>

#include <cstdio>

#include "app/dialogs.h"
#include "app/main_frame.h"
#include "automap/automap_display.h"
#include "config/debug_log.h"
#include "config/lconfig.h"
#include "display/ansi_display.h"
#include "display/ansi_palette.h"
#include "input/button_sets.h"
#include "input/input_window.h"
#include "panels/channel_window.h"
#include "panels/group_display.h"
#include "panels/status_bar.h"
#include "panels/status_display.h"

namespace {

constexpr int connect_timeout_ms = 5000;
constexpr int read_block_size = 10000;

void log_level(int level, const char* text) {
    if (zorn_debug_level >= level) zorn_client_debug_printf("%s", text);
}

}  // namespace

void zorn_mw::socket_connect(int port) {
    LConfig& config = LConfig::instance();
    if (port <= 0) port = config.get_game_port();
    socket.enable_ssl();
    hint_buttons->clear_all();
    begin_message();
    print_message("\n");
    print_message("Connecting to server...\n");

    sockaddr_in address{};
    if (!zorn_lookup_host(config.get_game_host(), &address)) {
        socket_disconnect("Unable to look up address for game server.");
        refresh_text();
        return;
    }
    if (zorn_debug_level >= 2) {
        char dotted[INET_ADDRSTRLEN] = "";
        inet_ntop(AF_INET, &address.sin_addr, dotted, sizeof dotted);
        zorn_client_debug_printf("zorn_mw::socket_connect() - dns lookup ok, address '%s', port %d.\n", dotted, port);
    }
    // The window stands still while this waits, up to the time-out.
    if (socket.blocking_connect(address, port, connect_timeout_ms) != 1) {
        socket.close();
        socket_disconnect("Unable to connect to server.");
        refresh_text();
        return;
    }
    log_level(2, "zorn_mw::socket_connect() - socket connect ok.\n");
    parser.set_state(zorn_stream_parser::plain_text);
    outgoing.clear();
    if (!check_server_identity(port)) return;
    send_identity();
}

void zorn_mw::send_identity() {
    LConfig& config = LConfig::instance();
    zorn_fixed_string identity("_lantern ");
    identity.append(config.get_uuid());
    identity.append(" ");
    identity.append(zorn_client_version);
    send_line(identity.c_str());
    refresh_text();
    select_history_list(1);
}

void zorn_mw::socket_disconnect(const char* reason) {
    socket.close();
    server_identity.pending = false;
    if (pin_dialog) pin_dialog->Hide();
    parser.set_state(zorn_stream_parser::plain_text);
    outgoing.clear();
    connection_seen = 0;
    select_history_list(0);
    session_state = session_none;
    SetTitle(wxString::FromUTF8(zorn_frame_title));
    update_automap_visibility();
    fkey_manager->set_all_active(0);
    status_bar->reset();
    status_display->reset();
    group_display->reset();

    main_display->reset_colors();
    for (const char* part : {"\n", "\n", reason, "\n", "\n", "To log in again, type '"}) print_message(part);
    print_highlight("connect");
    print_message("' or use the ");
    print_highlight("File / Connect");
    print_message(" menu option.\n");
    print_message("\n");
    refresh_text();

    direction_buttons->disable_all();
    hint_buttons->clear_all();
    hint_buttons->set_connect_quit();
    automap->reset();
    popup_manager->destroy_all();
    layout_panels();
    Refresh(false);
}

void zorn_mw::socket_handler() {
    if (!first_pass_done) {
        first_pass_done = 1;
        socket_connect(0);
    }
    if (server_identity.pending) return;
    const int state = socket.get_state();
    if (!connection_seen) {
        // Reading starts one tick after the connect.
        if (state == socket_connected) connection_seen = 1;
        return;
    }
    if (state != socket_connected) {
        log_level(1, "zorn_mw::socket_handler() - abnormal connection failure?\n");
        socket_disconnect("Connection to server lost.");
        return;
    }
    unsigned char block[read_block_size];
    for (;;) {
        const int got = socket.nonblocking_read(block, read_block_size);
        if (got == 0) break;
        if (got < 0) {
            socket_disconnect(socket.get_read_error() != 0 ? "Connection to server lost." : "Connection closed by server.");
            return;
        }
        process_socket_data(block, got);
    }
    if (outgoing.count() > 0) {
        const int written = socket.nonblocking_write(outgoing.bytes(), outgoing.count());
        if (written < 0) {
            socket_disconnect("Connection to server lost.");
            return;
        }
        outgoing.consume(written);
    }
}

void zorn_mw::process_socket_data(const unsigned char* bytes, int length) { parser.feed(bytes, length); }

void zorn_mw::begin_block() {
    main_display->ansi.text_received = 0;
    channel_window->begin_text_block();
}

void zorn_mw::end_block() {
    if (main_display->ansi.text_received) refresh_text();
    channel_window->end_text_block();
}

// Chat goes to its tab, and to the main text as well unless the channel window shows it and the
// player doesn't want it twice.
void zorn_mw::text_run(const char* bytes, int length) {
    if (!channel_divert_active) {
        text_target->add_ansi_text(bytes, length);
        return;
    }
    channel_window->display_socket_data(bytes, length);
    const LConfig& config = LConfig::instance();
    if (config.get_channel_window_enable() && !config.get_channel_window_dupe()) return;
    main_display->add_ansi_text(bytes, length);
}

void zorn_mw::tagged_data(const char* name, const char* payload, int length) {
    process_tagged_data(name, payload, length);
}

void zorn_mw::beep() { wxBell(); }

void zorn_mw::send_line(const char* text) { outgoing.send_line(text); }

void zorn_mw::append_outgoing_string(const char* text) { outgoing.append_outgoing_string(text); }

void zorn_mw::begin_message() {
    main_display->unlock_scrollback();
    main_display->reset_colors();
    main_display->add_text("\n");
    // A tag half received now is given up: what is left of it arrives as plain text.
    parser.reset();
}

void zorn_mw::print_message(const char* text) {
    if (text) main_display->add_text(text);
}

void zorn_mw::print_highlight(const char* text) {
    main_display->process_ansi_code(0x01, zorn_ansi_yellow);
    print_message(text);
    main_display->reset_colors();
}

void zorn_mw::refresh_text() { main_display->refresh_text(); }

void zorn_mw::unlock_main_scrollback() { main_display->unlock_scrollback(); }
