#include "testworld/tls_connection.h"

#include <fcntl.h>
#include <openssl/err.h>
#include <openssl/ssl.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdio>

#include "testworld/line_log.h"
#include "testworld/wire.h"

namespace testworld {

namespace {

constexpr size_t line_limit = 16384;   // a longer line is cut into pieces
constexpr int read_chunk = 16384;
constexpr int linger_ms = 2000;

void set_nonblocking(int fd) { fcntl(fd, F_SETFL, fcntl(fd, F_GETFL, 0) | O_NONBLOCK); }

std::string openssl_reason() {
    char text[256];
    ERR_error_string_n(ERR_get_error(), text, sizeof text);
    ERR_clear_error();
    return text;
}

}  // namespace

long long monotonic_ms() {
    using namespace std::chrono;
    return duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count();
}

tls_connection::tls_connection(int descriptor, SSL_CTX* context, int id, line_log* received_log,
                               const std::atomic<bool>* stopping_flag)
    : fd(descriptor), connection_id(id), log(received_log), stop_flag(stopping_flag) {
    set_nonblocking(fd);
    if (pipe(wake_pipe) == 0) {
        set_nonblocking(wake_pipe[0]);
        set_nonblocking(wake_pipe[1]);
    }
    ssl = SSL_new(context);
    if (ssl) SSL_set_fd(ssl, fd);
}

tls_connection::~tls_connection() {
    if (fd >= 0) close(fd);
    SSL_free(ssl);
    for (int end : wake_pipe)
        if (end >= 0) close(end);
}

void tls_connection::mark_gone() {
    gone = true;
    ERR_clear_error();
    // A line the peer never finished is still something it sent.
    if (!inbound.empty()) {
        if (log) log->append(inbound);
        lines.push_back(inbound);
        inbound.clear();
    }
}

tls_connection::wait_result tls_connection::wait_for(short events, int timeout_ms) {
    pollfd entries[2] = {{fd, events, 0}, {wake_pipe[0], POLLIN, 0}};
    const int result = poll(entries, wake_pipe[0] >= 0 ? 2 : 1, std::max(timeout_ms, 0));
    if (result < 0) return errno == EINTR ? wait_result::woken : wait_result::failed;
    if (result == 0) return wait_result::timeout;
    if (entries[1].revents) {
        char drain[64];
        while (read(wake_pipe[0], drain, sizeof drain) > 0) {
        }
        return wait_result::woken;
    }
    last_revents = entries[0].revents;
    if (last_revents & POLLNVAL) return wait_result::failed;
    return wait_result::ready;
}

// One SSL_read: above 0 bytes taken in, 0 would block (want_events says on what), -1 gone.
int tls_connection::take_in() {
    if (gone || !ssl) return -1;
    char buffer[read_chunk];
    const int result = SSL_read(ssl, buffer, sizeof buffer);
    if (result > 0) {
        inbound.append(buffer, static_cast<size_t>(result));
        collect_lines();
        return result;
    }
    const int error = SSL_get_error(ssl, result);
    if (error == SSL_ERROR_WANT_READ || error == SSL_ERROR_WANT_WRITE) {
        want_events = error == SSL_ERROR_WANT_READ ? POLLIN : POLLOUT;
        return 0;
    }
    mark_gone();
    return -1;
}

void tls_connection::collect_lines() {
    size_t start = 0;
    for (;;) {
        const size_t end = inbound.find('\n', start);
        if (end == std::string::npos) break;
        std::string line = inbound.substr(start, end - start);
        if (!line.empty() && line.back() == '\r') line.pop_back();
        if (log) log->append(line);
        lines.push_back(std::move(line));
        start = end + 1;
    }
    inbound.erase(0, start);
    while (inbound.size() > line_limit) {
        std::fprintf(stderr, "connection %d: line longer than %zu bytes, cut\n", connection_id, line_limit);
        std::string piece = inbound.substr(0, line_limit);
        if (log) log->append(piece);
        lines.push_back(std::move(piece));
        inbound.erase(0, line_limit);
    }
}

bool tls_connection::handshake(int timeout_ms) {
    if (!ssl || fd < 0) return false;
    const long long deadline = monotonic_ms() + timeout_ms;
    for (;;) {
        const int result = SSL_accept(ssl);
        if (result == 1) return true;
        const int error = SSL_get_error(ssl, result);
        if (error != SSL_ERROR_WANT_READ && error != SSL_ERROR_WANT_WRITE) {
            std::fprintf(stderr, "connection %d: TLS handshake failed: %s\n", connection_id, openssl_reason().c_str());
            gone = true;
            return false;
        }
        const wait_result waited =
            wait_for(error == SSL_ERROR_WANT_READ ? POLLIN : POLLOUT, static_cast<int>(deadline - monotonic_ms()));
        if (waited == wait_result::woken && !stopping()) continue;
        if (waited != wait_result::ready) {
            std::fprintf(stderr, "connection %d: TLS handshake did not finish\n", connection_id);
            return false;
        }
    }
}

int tls_connection::read_line(std::string* line, int timeout_ms) {
    const long long deadline = monotonic_ms() + timeout_ms;
    for (;;) {
        if (!lines.empty()) {
            *line = std::move(lines.front());
            lines.pop_front();
            return 1;
        }
        if (gone || stopping() || fd < 0) return -1;
        const int taken = take_in();
        if (taken != 0) continue;
        const long long remaining = deadline - monotonic_ms();
        if (remaining <= 0) return 0;
        switch (wait_for(want_events, static_cast<int>(remaining))) {
        case wait_result::ready: break;
        case wait_result::timeout: return 0;
        case wait_result::woken: return stopping() ? -1 : 0;
        case wait_result::failed: mark_gone(); break;
        }
    }
}

bool tls_connection::write_all(const std::string& bytes, int stall_timeout_ms) {
    size_t offset = 0;
    long long last_progress = monotonic_ms();
    while (offset < bytes.size()) {
        if (gone || stopping() || !ssl) return false;
        const int chunk = static_cast<int>(std::min<size_t>(bytes.size() - offset, read_chunk));
        const int result = SSL_write(ssl, bytes.data() + offset, chunk);
        if (result > 0) {
            offset += static_cast<size_t>(result);
            last_progress = monotonic_ms();
            continue;
        }
        const int error = SSL_get_error(ssl, result);
        if (error != SSL_ERROR_WANT_READ && error != SSL_ERROR_WANT_WRITE) {
            mark_gone();
            return false;
        }
        // Keep taking the peer's bytes while it can't take ours, so neither side waits on the other.
        const short events = error == SSL_ERROR_WANT_WRITE ? (POLLOUT | POLLIN) : POLLIN;
        const long long remaining = last_progress + stall_timeout_ms - monotonic_ms();
        if (remaining <= 0) return false;
        const wait_result waited = wait_for(events, static_cast<int>(remaining));
        if (waited == wait_result::timeout || waited == wait_result::failed) return false;
        if (waited == wait_result::ready && (last_revents & POLLIN) && error == SSL_ERROR_WANT_WRITE) take_in();
    }
    return true;
}

bool tls_connection::write_raw(const std::string& bytes) {
    size_t offset = 0;
    while (offset < bytes.size() && fd >= 0) {
        const ssize_t result = send(fd, bytes.data() + offset, bytes.size() - offset, MSG_NOSIGNAL);
        if (result > 0) {
            offset += static_cast<size_t>(result);
            continue;
        }
        if (result < 0 && errno != EAGAIN && errno != EINTR) return false;
        if (wait_for(POLLOUT, 5000) != wait_result::ready) return false;
    }
    return offset == bytes.size();
}

// Text posted by other players no longer matters here: only the deadline and a stop end the wait.
bool tls_connection::wait_in_linger(short events, long long deadline) {
    for (;;) {
        const long long remaining = deadline - monotonic_ms();
        if (remaining <= 0 || stopping()) return false;
        const wait_result waited = wait_for(events, static_cast<int>(remaining));
        if (waited != wait_result::woken) return waited == wait_result::ready;
    }
}

void tls_connection::finish_close(bool send_alert) {
    if (fd < 0) return;
    const long long deadline = monotonic_ms() + linger_ms;
    while (send_alert && ssl && !gone && !stopping()) {
        const int result = SSL_shutdown(ssl);
        if (result >= 0) break;
        const int error = SSL_get_error(ssl, result);
        if (error != SSL_ERROR_WANT_WRITE && error != SSL_ERROR_WANT_READ) break;
        if (!wait_in_linger(POLLOUT, deadline)) break;
    }
    // Read on until the peer closes too: closing with its bytes unread would turn our FIN into a
    // reset, and a reset can destroy the last bytes we sent before the peer reads them.
    shutdown(fd, SHUT_WR);
    while (ssl && !gone && !stopping() && monotonic_ms() < deadline) {
        const int taken = take_in();
        if (taken < 0 || (taken == 0 && !wait_in_linger(POLLIN, deadline))) break;
    }
    close(fd);
    fd = -1;
    gone = true;
}

void tls_connection::close_clean() { finish_close(true); }

void tls_connection::close_drop() { finish_close(false); }

void tls_connection::close_reset() {
    if (fd < 0) return;
    const linger abort_now{1, 0};
    setsockopt(fd, SOL_SOCKET, SO_LINGER, &abort_now, sizeof abort_now);
    close(fd);
    fd = -1;
    gone = true;
}

void tls_connection::post(const std::string& bytes) {
    {
        std::lock_guard<std::mutex> lock(posted_mutex);
        posted += bytes;
    }
    wake();
}

void tls_connection::wake() {
    if (wake_pipe[1] < 0) return;
    const char byte = 1;
    // A full pipe already holds a wake-up.
    [[maybe_unused]] const ssize_t ignored = write(wake_pipe[1], &byte, 1);
}

std::string tls_connection::take_posted() {
    std::lock_guard<std::mutex> lock(posted_mutex);
    std::string taken;
    taken.swap(posted);
    return taken;
}

}  // namespace testworld
