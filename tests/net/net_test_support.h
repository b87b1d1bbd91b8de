#pragma once
// Helpers for tests that talk to real peers on 127.0.0.1: child processes with bounded waits,
// temporary directories, loopback listeners, and a line-oriented client over zorn_tcp_socket.

#include <netinet/in.h>
#include <sys/types.h>

#include <string>
#include <vector>

#include "net/tcp_socket.h"

namespace net_test {

// A child process whose stdout the test reads. The destructor ends it (SIGTERM, then SIGKILL).
class child_process {
public:
    child_process() = default;
    ~child_process();
    child_process(const child_process&) = delete;
    child_process& operator=(const child_process&) = delete;

    // stderr goes to stderr_path (or /dev/null when empty).
    bool start(const std::vector<std::string>& arguments, const std::string& stderr_path = "");
    // A line of stdout without its line feed; false on time-out or end of output.
    bool read_line(std::string* line, int timeout_ms);
    // Waits for the exit; false on time-out. *status is the exit code, or 128 + signal.
    bool wait_exit(int timeout_ms, int* status);
    void signal(int number);
    void stop();

private:
    pid_t pid = -1;
    int stdout_fd = -1;
    std::string pending;
};

// A directory under /tmp, removed with its files at destruction.
class temp_dir {
public:
    temp_dir();
    ~temp_dir();
    const std::string& path() const { return dir; }
    std::string file(const std::string& name) const { return dir + "/" + name; }

private:
    std::string dir;
};

std::string read_file(const std::string& path);
void write_file(const std::string& path, const std::string& bytes);

sockaddr_in loopback_address();
// A listening socket on 127.0.0.1 with a free port; -1 on failure.
int open_loopback_listener(int backlog, int* port);
// A port on which nothing listens (bound, read, closed).
int unused_port();

// The test world binary, started with --port 0 and the given arguments.
class testworld_process {
public:
    bool start(const std::vector<std::string>& arguments, const std::string& stderr_path = "");
    int port() const { return listen_port; }
    child_process& process() { return child; }

private:
    child_process child;
    int listen_port = 0;
};

// openssl s_server -rev on a free port with a certificate made in memory; false when the openssl
// command is missing or did not start.
class echo_server_process {
public:
    bool start(const temp_dir& dir);
    int port() const { return listen_port; }
    child_process& process() { return child; }

private:
    child_process child;
    int listen_port = 0;
};

// A client over zorn_tcp_socket that collects what it receives.
class line_client {
public:
    ~line_client() { socket.close(); }
    // TLS on, blocking connect to 127.0.0.1:port.
    bool connect(int port, bool use_tls = true);
    bool send(const std::string& bytes);
    bool send_line(const std::string& text) { return send(text + "\n"); }
    // Reads until the collected bytes contain text; false on time-out or when the connection ends.
    bool read_until(const std::string& text, int timeout_ms = 5000);
    // Reads until the connection ends; returns the final nonblocking_read result (-1 expected).
    int read_to_end(int timeout_ms = 5000);
    // Name, password, and the "login" tag.
    bool log_in(const std::string& name);

    std::string received;
    zorn_tcp_socket socket;
};

// The debug log of the test binary, set up once for all tests (level 3, a temporary file).
std::string debug_log_text();
size_t debug_log_size();

}  // namespace net_test
