#include "testworld/server.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <openssl/ssl.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <memory>
#include <sstream>
#include <thread>
#include <vector>

#include "testworld/certificate.h"
#include "testworld/line_log.h"
#include "testworld/script.h"
#include "testworld/tls_connection.h"
#include "testworld/world.h"

namespace testworld {

namespace {

constexpr int handshake_timeout_ms = 10000;
constexpr int stall_timeout_ms = 30000;
// Also the pace of the world's tick: fight rounds and the game clock's hours.
constexpr int idle_poll_ms = 100;
constexpr int connection_limit = 256;
constexpr int listen_backlog = 64;

int signal_pipe[2] = {-1, -1};

void on_stop_signal(int) {
    const char byte = 1;
    [[maybe_unused]] const ssize_t ignored = write(signal_pipe[1], &byte, 1);
}

bool install_signal_handlers() {
    if (pipe(signal_pipe) != 0) return false;
    fcntl(signal_pipe[1], F_SETFL, O_NONBLOCK);
    struct sigaction action {};
    action.sa_handler = on_stop_signal;
    sigemptyset(&action.sa_mask);
    sigaction(SIGTERM, &action, nullptr);
    sigaction(SIGINT, &action, nullptr);
    std::signal(SIGPIPE, SIG_IGN);
    return true;
}

bool parse_number(const char* text, int minimum, int maximum, int* value) {
    char* end = nullptr;
    const long parsed = std::strtol(text, &end, 10);
    if (!*text || *end || parsed < minimum || parsed > maximum) return false;
    *value = static_cast<int>(parsed);
    return true;
}

bool read_file(const std::string& path, std::string* bytes) {
    std::ifstream file(path, std::ios::binary);
    if (!file) return false;
    std::ostringstream content;
    content << file.rdbuf();
    *bytes = content.str();
    return true;
}

// Listening socket on 127.0.0.1; -1 on failure. *port becomes the port in use.
int open_listener(int* port) {
    const int fd = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (fd < 0) return -1;
    const int on = 1;
    setsockopt(fd, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(static_cast<uint16_t>(*port));
    socklen_t length = sizeof address;
    if (bind(fd, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0 || listen(fd, listen_backlog) != 0 ||
        getsockname(fd, reinterpret_cast<sockaddr*>(&address), &length) != 0) {
        close(fd);
        return -1;
    }
    *port = ntohs(address.sin_port);
    return fd;
}

struct shared_state {
    server_options options;
    SSL_CTX* context = nullptr;
    line_log received;
    world game;
    script steps;
    std::string flood_bytes;
    std::atomic<bool> stopping{false};
    std::atomic<bool> script_failed{false};
};

void serve_world(shared_state& shared, tls_connection& connection) {
    session player(&shared.game, connection.id(), [&connection](const std::string& bytes) { connection.post(bytes); });
    player.start();
    if (!connection.write_all(player.take_output(), stall_timeout_ms)) return;
    std::string reported_identification;
    for (;;) {
        const std::string posted = connection.take_posted();
        if (!posted.empty() && !connection.write_all(posted, stall_timeout_ms)) return;
        player.tick(game_clock::now());
        const std::string ticked = player.take_output();
        if (!ticked.empty() && !connection.write_all(ticked, stall_timeout_ms)) return;
        std::string line;
        const int result = connection.read_line(&line, idle_poll_ms);
        if (result < 0) return;
        if (result == 0) continue;
        player.handle_line(line);
        if (player.client_identification() != reported_identification) {
            reported_identification = player.client_identification();
            std::fprintf(stderr, "connection %d: client %s\n", connection.id(), reported_identification.c_str());
        }
        if (!connection.write_all(player.take_output(), stall_timeout_ms)) return;
        if (player.finished()) {
            connection.close_clean();
            return;
        }
    }
}

void serve_flood(shared_state& shared, tls_connection& connection) {
    for (int i = 0; i < shared.options.repeat; i++)
        if (!connection.write_all(shared.flood_bytes, stall_timeout_ms)) return;
    connection.close_clean();
}

void serve_after_handshake(shared_state& shared, tls_connection& connection) {
    switch (shared.options.mode) {
    case serve_mode::world: serve_world(shared, connection); break;
    case serve_mode::flood: serve_flood(shared, connection); break;
    case serve_mode::script: {
        std::string failure;
        if (!run_script(shared.steps, &connection, &failure)) {
            std::fprintf(stderr, "connection %d: script failed: %s\n", connection.id(), failure.c_str());
            shared.script_failed = true;
        }
        break;
    }
    }
}

void serve(shared_state& shared, tls_connection& connection) {
    if (connection.handshake(handshake_timeout_ms)) {
        serve_after_handshake(shared, connection);
    } else {
        connection.close_drop();
    }
    std::fprintf(stderr, "connection %d: closed\n", connection.id());
}

struct worker {
    std::shared_ptr<tls_connection> connection;
    std::shared_ptr<std::atomic<bool>> done;
    std::thread thread;
};

void reap(std::vector<worker>* workers, bool all) {
    for (auto it = workers->begin(); it != workers->end();) {
        if (all || it->done->load()) {
            if (all) it->connection->wake();
            it->thread.join();
            it = workers->erase(it);
        } else {
            ++it;
        }
    }
}

void start_worker(shared_state& shared, std::vector<worker>* workers, int fd, int id) {
    worker entry;
    entry.connection = std::make_shared<tls_connection>(fd, shared.context, id, &shared.received, &shared.stopping);
    entry.done = std::make_shared<std::atomic<bool>>(false);
    entry.thread = std::thread([&shared, connection = entry.connection, done = entry.done] {
        serve(shared, *connection);
        *done = true;
    });
    workers->push_back(std::move(entry));
}

// The accept loop; returns when a signal arrives, or when the one connection of --once is over.
void accept_loop(shared_state& shared, int listener) {
    std::vector<worker> workers;
    int next_id = 1;
    bool accepting = true;
    while (!shared.stopping) {
        pollfd entries[2] = {{signal_pipe[0], POLLIN, 0}, {listener, static_cast<short>(accepting ? POLLIN : 0), 0}};
        const int ready = poll(entries, 2, 200);
        if (ready > 0 && entries[0].revents) shared.stopping = true;
        if (ready > 0 && (entries[1].revents & POLLIN)) {
            const int fd = accept4(listener, nullptr, nullptr, SOCK_CLOEXEC);
            if (fd < 0 && (errno == EMFILE || errno == ENFILE)) {
                std::this_thread::sleep_for(std::chrono::milliseconds(50));  // the listener stays readable
            } else if (fd >= 0 && static_cast<int>(workers.size()) >= connection_limit) {
                close(fd);
            } else if (fd >= 0) {
                // Replies go out at once: the client's lag meter times them.
                const int on = 1;
                setsockopt(fd, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
                std::fprintf(stderr, "connection %d: accepted\n", next_id);
                start_worker(shared, &workers, fd, next_id++);
                if (shared.options.once) accepting = false;
            }
        }
        reap(&workers, false);
        if (!accepting && workers.empty()) break;
    }
    shared.stopping = true;
    reap(&workers, true);
}

bool prepare_mode(shared_state& shared) {
    const server_options& options = shared.options;
    std::string error;
    if (options.mode == serve_mode::script && !load_script(options.script_path, &shared.steps, &error)) {
        std::fprintf(stderr, "lantern-testworld: script %s: %s\n", options.script_path.c_str(), error.c_str());
        return false;
    }
    if (options.mode == serve_mode::flood && !read_file(options.flood_path, &shared.flood_bytes)) {
        std::fprintf(stderr, "lantern-testworld: cannot read '%s'\n", options.flood_path.c_str());
        return false;
    }
    if (!options.log_path.empty() && !shared.received.open(options.log_path)) {
        std::fprintf(stderr, "lantern-testworld: cannot open log '%s'\n", options.log_path.c_str());
        return false;
    }
    return true;
}

}  // namespace

const char* usage_text() {
    return "usage: lantern-testworld [--port N] [--log FILE] [--key FILE] [--script FILE | --flood FILE [--repeat N]] [--once]\n"
           "  --port N       listen on 127.0.0.1:N (default 3102; 0 picks a free port)\n"
           "  --log FILE     append every line received from a client to FILE\n"
           "  --key FILE     keep the TLS key in FILE (PEM; made when missing) so it survives a restart\n"
           "  --script FILE  run the exchange in FILE with each client instead of the world\n"
           "  --flood FILE   send FILE's bytes to each client as fast as it takes them, then close\n"
           "  --repeat N     flood mode: send the file N times (default 1)\n"
           "  --once         serve one connection, then exit\n"
           "Exit status 1 when the server could not start or a script failed, else 0.\n"
           "Prints \"listening on PORT\" on stdout once it accepts connections.\n";
}

bool parse_options(int argc, char** argv, server_options* options, std::string* error) {
    for (int i = 1; i < argc; i++) {
        const std::string option = argv[i];
        const bool has_value = i + 1 < argc;
        if (option == "--once") {
            options->once = true;
        } else if (option == "--port" && has_value) {
            if (!parse_number(argv[++i], 0, 65535, &options->port)) *error = "bad port";
        } else if (option == "--repeat" && has_value) {
            if (!parse_number(argv[++i], 1, 1000000000, &options->repeat)) *error = "bad repeat count";
        } else if (option == "--key" && has_value) {
            options->key_path = argv[++i];
        } else if (option == "--log" && has_value) {
            options->log_path = argv[++i];
        } else if (option == "--script" && has_value) {
            options->mode = serve_mode::script;
            options->script_path = argv[++i];
        } else if (option == "--flood" && has_value) {
            options->mode = serve_mode::flood;
            options->flood_path = argv[++i];
        } else {
            *error = "unknown or incomplete option '" + option + "'";
        }
        if (!error->empty()) return false;
    }
    if (!options->script_path.empty() && !options->flood_path.empty()) {
        *error = "--script and --flood exclude each other";
        return false;
    }
    return true;
}

int run_server(const server_options& options) {
    auto shared = std::make_unique<shared_state>();
    shared->options = options;
    if (!prepare_mode(*shared) || !install_signal_handlers()) return 1;
    server_identity identity;
    const bool made = options.key_path.empty() ? identity.generate() : identity.generate_with_key_file(options.key_path);
    if (!made || !(shared->context = identity.make_server_context())) {
        std::fprintf(stderr, "lantern-testworld: cannot make the TLS identity\n");
        return 1;
    }
    int port = options.port;
    const int listener = open_listener(&port);
    if (listener < 0) {
        std::fprintf(stderr, "lantern-testworld: cannot listen on 127.0.0.1:%d: %s\n", options.port,
                     std::strerror(errno));
        SSL_CTX_free(shared->context);
        return 1;
    }
    std::printf("listening on %d\n", port);
    std::fflush(stdout);
    accept_loop(*shared, listener);
    close(listener);
    SSL_CTX_free(shared->context);
    std::fprintf(stderr, "lantern-testworld: stopped\n");
    return shared->script_failed ? 1 : 0;
}

}  // namespace testworld
