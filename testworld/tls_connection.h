#pragma once
// One accepted client, server side: a TLS stream over a non-blocking descriptor, owned by the one
// thread that serves it. Other threads may only post() bytes for it and wake() it.
//
// Every wait is bounded and also ends when the connection is woken, so a stopping server never
// hangs on a silent client. A client that vanishes (mid-line, mid-tag, mid-TLS-record) ends the
// connection, nothing more.

#include <openssl/types.h>

#include <atomic>
#include <deque>
#include <mutex>
#include <string>

namespace testworld {

class line_log;

class tls_connection {
public:
    // Takes the descriptor. The log may be null.
    tls_connection(int fd, SSL_CTX* context, int id, line_log* log, const std::atomic<bool>* stopping);
    ~tls_connection();
    tls_connection(const tls_connection&) = delete;
    tls_connection& operator=(const tls_connection&) = delete;

    bool handshake(int timeout_ms);
    // 1: the next received line, without its line feed (and a carriage return before it) in *line;
    // 0: time-out, or woken; -1: the peer is gone or the server stops. A line cut short by the
    // peer's close is still delivered, then -1 follows.
    int read_line(std::string* line, int timeout_ms);
    // Sends all bytes over TLS, taking in what the peer sends meanwhile. False when the peer is gone,
    // no byte could move for stall_timeout_ms, or the server stops.
    bool write_all(const std::string& bytes, int stall_timeout_ms);
    // Bytes straight onto TCP, under the TLS layer: the peer sees a broken record stream.
    bool write_raw(const std::string& bytes);

    // Close alert, then TCP close after a short linger for the peer's own close.
    void close_clean();
    // TCP close with no close alert.
    void close_drop();
    // TCP reset.
    void close_reset();

    // From any thread.
    void post(const std::string& bytes);
    void wake();
    std::string take_posted();

    int id() const { return connection_id; }
    bool is_open() const { return fd >= 0; }
    bool peer_gone() const { return gone; }
    bool stopping() const { return stop_flag && stop_flag->load(); }

private:
    enum class wait_result { ready, timeout, woken, failed };

    wait_result wait_for(short events, int timeout_ms);
    int take_in();
    void collect_lines();
    void finish_close(bool send_alert);
    bool wait_in_linger(short events, long long deadline);
    void mark_gone();

    int fd;
    SSL* ssl = nullptr;
    int wake_pipe[2] = {-1, -1};
    int connection_id;
    line_log* log;
    const std::atomic<bool>* stop_flag;
    bool gone = false;
    short want_events = 0;  // what the last would-block asked for
    short last_revents = 0;
    std::string inbound;
    std::deque<std::string> lines;
    std::mutex posted_mutex;
    std::string posted;
};

// Milliseconds on a monotonic clock.
long long monotonic_ms();

}  // namespace testworld
