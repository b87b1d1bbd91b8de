// The game server's identity: the SHA-256 of its certificate's public key, pinned per host and
// port at the first visit. A changed key holds the connection before the client has said a word,
// since the identification line and then the password would go to whoever holds the new key.
#include <arpa/inet.h>

#include <string>

#include "app/dialogs.h"
#include "app/main_frame.h"
#include "config/lconfig.h"
#include "display/ansi_display.h"
#include "display/ansi_palette.h"

namespace {

std::string pin_file_path() {
    const char* directory = LConfig::instance().directory();
    return directory ? std::string(directory) + "/" + zorn_known_servers_file_name : std::string();
}

std::string host_and_port(const std::string& host, int port) { return host + ":" + std::to_string(port); }

std::string key_text(const zorn_key_fingerprint& fingerprint) {
    return "SHA-256 " + zorn_fingerprint_display(fingerprint);
}

}  // namespace

bool zorn_mw::check_server_identity(int port) {
    const std::string host = LConfig::instance().get_game_host();
    zorn_key_fingerprint seen{};
    if (!socket.peer_key_sha256(seen.data())) {
        socket_disconnect("Unable to read the game server's certificate.");
        return false;
    }
    const zorn_pin_check check = zorn_check_server_pin(pin_file_path(), host, port, seen);
    if (check.verdict == zorn_pin_verdict::match) return true;
    if (check.verdict == zorn_pin_verdict::first_visit) {
        print_message(("Pinned the game server's key for " + host_and_port(host, port) + ": " + key_text(seen) + "\n").c_str());
        return true;
    }
    server_identity.pending = true;
    server_identity.host = host;
    server_identity.port = port;
    server_identity.seen = seen;

    begin_message();
    main_display->process_ansi_code(0x01, zorn_ansi_red);
    print_message("WARNING: the game server's identity has changed since your last visit.");
    main_display->reset_colors();
    // The keys stand on lines of their own, so that they don't wrap in a display of 80 columns.
    print_message(("\nServer: " + host_and_port(host, port)).c_str());
    if (check.has_pin) print_message(("\nPinned key (SHA-256):\n  " + zorn_fingerprint_display(check.stored)).c_str());
    if (check.file_damaged)
        print_message(("\nThe pin file '" + pin_file_path() + "' is damaged: no pinned key can be trusted.").c_str());
    else if (!check.has_pin)
        print_message("\nPinned key: none");
    print_message(("\nOffered key (SHA-256):\n  " + zorn_fingerprint_display(seen)).c_str());
    print_message("\nNothing has been sent to the server. Disconnect, unless you know that its certificate was replaced.\n");
    refresh_text();

    if (!pin_dialog) pin_dialog = new zorn_pin_dialog(this);
    show_dialog_centered(pin_dialog);
    return false;
}

void zorn_mw::trust_server_identity() {
    if (!server_identity.pending) return;
    server_identity.pending = false;
    const std::string& host = server_identity.host;
    const bool saved = zorn_trust_server_pin(pin_file_path(), host, server_identity.port, server_identity.seen);
    begin_message();
    print_message(("Trusting the new key of " + host_and_port(host, server_identity.port) + ": " +
                   key_text(server_identity.seen) + "\n")
                      .c_str());
    if (!saved) print_message("The key could not be stored: the next connect will ask again.\n");
    if (socket.current_state() != socket_connected) {
        socket_disconnect("Connection to server lost.");
        return;
    }
    // Lines typed while the question stood were never sent: the identification goes out first.
    outgoing.clear();
    parser.set_state(zorn_stream_parser::plain_text);
    send_identity();
}

void zorn_mw::refuse_server_identity() {
    if (!server_identity.pending) return;
    socket_disconnect("Disconnected: the game server's new identity was not trusted.");
}

void zorn_mw::print_fingerprint() {
    LConfig& config = LConfig::instance();
    const bool live = socket.current_state() == socket_connected;
    const std::string host = server_identity.pending ? server_identity.host : config.get_game_host();
    const int port = server_identity.pending ? server_identity.port
                     : live                  ? ntohs(socket.get_remote_address().sin_port)
                                             : config.get_game_port();
    zorn_known_servers known;
    const std::string path = pin_file_path();
    const bool damaged = !path.empty() && known.load_file(path) == zorn_known_servers::load_result::damaged;
    begin_message();
    print_message("\n");
    if (damaged) print_message(("The pin file '" + path + "' is damaged: the next connect will ask first.\n").c_str());
    if (const zorn_known_servers::entry* pin = known.find(host, port))
        print_message(("Pinned key of " + host_and_port(host, port) + " (SHA-256):\n  " +
                       zorn_fingerprint_display(pin->fingerprint) + "\n")
                          .c_str());
    else
        print_message(("No key is pinned for " + host_and_port(host, port) + ".\n").c_str());
    zorn_key_fingerprint current{};
    if (live && socket.peer_key_sha256(current.data()))
        print_message(("Key of this connection (SHA-256):\n  " + zorn_fingerprint_display(current) + "\n").c_str());
    refresh_text();
}
