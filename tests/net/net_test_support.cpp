#include "tests/net/net_test_support.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <thread>

#include "config/debug_log.h"
#include "net/ssl_context.h"
#include "testworld/certificate.h"

extern char** environ;

namespace net_test {

namespace {

long long now_ms() {
    using namespace std::chrono;
    return duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count();
}

std::string debug_log_path;

// Once per test binary: SIGPIPE ignored as the application does, the debug log in a temporary
// file at the chattiest level so tests can look for lines, and the TLS context.
class net_environment : public ::testing::Environment {
public:
    void SetUp() override {
        std::signal(SIGPIPE, SIG_IGN);
        debug_log_path = "/tmp/lantern-net-test-" + std::to_string(getpid()) + ".log";
        std::remove(debug_log_path.c_str());
        zorn_client_set_debug_logfile_name(debug_log_path.c_str());
        zorn_client_try_open_debug_logfile();
        zorn_debug_level = 3;
        ASSERT_TRUE(zorn_ssl_startup());
    }
    void TearDown() override {
        if (zorn_client_debug_logfile_is_open()) zorn_client_debug_logfile_close();
        std::remove(debug_log_path.c_str());
    }
};

[[maybe_unused]] ::testing::Environment* const environment = ::testing::AddGlobalTestEnvironment(new net_environment);

}  // namespace

child_process::~child_process() { stop(); }

bool child_process::start(const std::vector<std::string>& arguments, const std::string& stderr_path) {
    int pipe_ends[2];
    if (pipe2(pipe_ends, O_CLOEXEC) != 0) return false;
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, pipe_ends[1], 1);
    posix_spawn_file_actions_addopen(&actions, 2, stderr_path.empty() ? "/dev/null" : stderr_path.c_str(),
                                     O_WRONLY | O_CREAT | O_TRUNC, 0644);
    std::vector<char*> argv;
    for (const std::string& argument : arguments) argv.push_back(const_cast<char*>(argument.c_str()));
    argv.push_back(nullptr);
    const int spawned = posix_spawn(&pid, argv[0], &actions, nullptr, argv.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    close(pipe_ends[1]);
    if (spawned != 0) {
        close(pipe_ends[0]);
        pid = -1;
        return false;
    }
    stdout_fd = pipe_ends[0];
    return true;
}

bool child_process::read_line(std::string* line, int timeout_ms) {
    const long long deadline = now_ms() + timeout_ms;
    for (;;) {
        const size_t end = pending.find('\n');
        if (end != std::string::npos) {
            *line = pending.substr(0, end);
            pending.erase(0, end + 1);
            return true;
        }
        const long long remaining = deadline - now_ms();
        if (stdout_fd < 0 || remaining <= 0) return false;
        pollfd entry{stdout_fd, POLLIN, 0};
        if (poll(&entry, 1, static_cast<int>(remaining)) <= 0) continue;
        char buffer[512];
        const ssize_t count = read(stdout_fd, buffer, sizeof buffer);
        if (count <= 0) return false;
        pending.append(buffer, static_cast<size_t>(count));
    }
}

bool child_process::wait_exit(int timeout_ms, int* status) {
    if (pid <= 0) return false;
    const long long deadline = now_ms() + timeout_ms;
    for (;;) {
        int raw_status = 0;
        const pid_t done = waitpid(pid, &raw_status, WNOHANG);
        if (done == pid) {
            pid = -1;
            *status = WIFEXITED(raw_status) ? WEXITSTATUS(raw_status) : 128 + WTERMSIG(raw_status);
            return true;
        }
        if (done < 0 || now_ms() >= deadline) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
}

void child_process::signal(int number) {
    if (pid > 0) kill(pid, number);
}

void child_process::stop() {
    if (pid > 0) {
        int status = 0;
        kill(pid, SIGTERM);
        if (!wait_exit(5000, &status)) {
            kill(pid, SIGKILL);
            waitpid(pid, &status, 0);
            pid = -1;
        }
    }
    if (stdout_fd >= 0) close(stdout_fd);
    stdout_fd = -1;
}

temp_dir::temp_dir() {
    char pattern[] = "/tmp/lantern-net-XXXXXX";
    if (mkdtemp(pattern)) dir = pattern;
}

temp_dir::~temp_dir() {
    std::error_code ignored;
    if (!dir.empty()) std::filesystem::remove_all(dir, ignored);
}

std::string read_file(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    std::ostringstream content;
    content << file.rdbuf();
    return content.str();
}

void write_file(const std::string& path, const std::string& bytes) {
    std::ofstream file(path, std::ios::binary);
    file << bytes;
}

sockaddr_in loopback_address() {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return address;
}

int open_loopback_listener(int backlog, int* port) {
    const int fd = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (fd < 0) return -1;
    sockaddr_in address = loopback_address();
    socklen_t length = sizeof address;
    if (bind(fd, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0 || listen(fd, backlog) != 0 ||
        getsockname(fd, reinterpret_cast<sockaddr*>(&address), &length) != 0) {
        close(fd);
        return -1;
    }
    *port = ntohs(address.sin_port);
    return fd;
}

int unused_port() {
    const int fd = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address = loopback_address();
    socklen_t length = sizeof address;
    bind(fd, reinterpret_cast<sockaddr*>(&address), sizeof address);
    getsockname(fd, reinterpret_cast<sockaddr*>(&address), &length);
    close(fd);
    return ntohs(address.sin_port);
}

bool testworld_process::start(const std::vector<std::string>& arguments, const std::string& stderr_path) {
    std::vector<std::string> command = {LANTERN_TESTWORLD_PATH, "--port", "0"};
    command.insert(command.end(), arguments.begin(), arguments.end());
    // One key for every world of the test process unless a test keeps its own: a client pins the
    // key per host and port, and a port used again by a world with a new key would make it ask.
    if (std::find(arguments.begin(), arguments.end(), "--key") == arguments.end()) {
        static temp_dir key_dir;
        command.insert(command.end(), {"--key", key_dir.file("world_key.pem")});
    }
    if (!child.start(command, stderr_path)) return false;
    std::string line;
    if (!child.read_line(&line, 10000)) return false;
    return std::sscanf(line.c_str(), "listening on %d", &listen_port) == 1 && listen_port > 0;
}

bool echo_server_process::start(const temp_dir& dir) {
    const std::string openssl = LANTERN_OPENSSL_PATH;
    testworld::server_identity identity;
    if (openssl.empty() || !identity.generate() ||
        !identity.write_pem_files(dir.file("key.pem"), dir.file("cert.pem")))
        return false;
    if (!child.start({openssl, "s_server", "-accept", "127.0.0.1:0", "-cert", dir.file("cert.pem"), "-key",
                      dir.file("key.pem"), "-rev"}))
        return false;
    std::string line;
    while (child.read_line(&line, 10000)) {
        if (std::sscanf(line.c_str(), "ACCEPT 127.0.0.1:%d", &listen_port) == 1) return true;
    }
    return false;
}

bool line_client::connect(int port, bool use_tls) {
    if (use_tls ? !socket.enable_ssl() : !socket.disable_ssl()) return false;
    return socket.blocking_connect(loopback_address(), port, 5000) == 1;
}

bool line_client::send(const std::string& bytes) {
    const long long deadline = now_ms() + 5000;
    size_t offset = 0;
    while (offset < bytes.size() && now_ms() < deadline) {
        const int written =
            socket.blocking_write(bytes.data() + offset, static_cast<int>(bytes.size() - offset), 200);
        if (written < 0) return false;
        offset += static_cast<size_t>(written);
    }
    return offset == bytes.size();
}

bool line_client::read_until(const std::string& text, int timeout_ms) {
    const long long deadline = now_ms() + timeout_ms;
    char buffer[10000];
    while (received.find(text) == std::string::npos) {
        if (now_ms() >= deadline) return false;
        const int count = socket.blocking_read(buffer, sizeof buffer, 100);
        if (count < 0) return false;
        received.append(buffer, static_cast<size_t>(count));
    }
    return true;
}

int line_client::read_to_end(int timeout_ms) {
    const long long deadline = now_ms() + timeout_ms;
    char buffer[10000];
    while (now_ms() < deadline) {
        const int count = socket.blocking_read(buffer, sizeof buffer, 100);
        if (count < 0) return count;
        received.append(buffer, static_cast<size_t>(count));
    }
    return 0;
}

bool line_client::log_in(const std::string& name) {
    return read_until("known? ") && send_line("_lantern 0f1e2d3c-test 0.1.0\n" + name) &&
           read_until("Password: ") && send_line("secret") && read_until(";elogin;");
}

std::string debug_log_text() { return read_file(debug_log_path); }

size_t debug_log_size() { return debug_log_text().size(); }

}  // namespace net_test
