#include "tests/net/http_test_server.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <vector>

#include "tests/net/net_test_support.h"

namespace net_test {

namespace {

// The body as it goes on the wire under the chunked framing.
std::string chunked_text(const std::string& body, size_t chunk_size) {
    std::string out;
    char size_line[64];
    for (size_t at = 0; at < body.size(); at += chunk_size) {
        const size_t count = std::min(chunk_size, body.size() - at);
        std::snprintf(size_line, sizeof size_line, at == 0 ? "%zx;first=yes\r\n" : "%zX\r\n", count);
        out += size_line;
        out.append(body, at, count);
        out += "\r\n";
    }
    return out + "0\r\nX-Trailer: done\r\n\r\n";
}

}  // namespace

bool http_test_server::start(const http_reply& wanted) {
    reply = wanted;
    listener = open_loopback_listener(8, &listen_port);
    if (listener < 0) return false;
    worker = std::thread([this] { run(); });
    return true;
}

void http_test_server::stop() {
    stopping = true;
    if (worker.joinable()) worker.join();
    if (listener >= 0) close(listener);
    listener = -1;
}

std::string http_test_server::last_request() const {
    std::lock_guard<std::mutex> hold(request_lock);
    return request;
}

bool http_test_server::wait_ms(int milliseconds) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(milliseconds);
    while (std::chrono::steady_clock::now() < end) {
        if (stopping) return false;
        usleep(10000);
    }
    return !stopping;
}

void http_test_server::run() {
    while (!stopping) {
        pollfd waiting{listener, POLLIN, 0};
        if (poll(&waiting, 1, 50) != 1) continue;
        const int connection = accept(listener, nullptr, nullptr);
        if (connection < 0) continue;
        serve(connection);
        ++served;
        close(connection);
    }
}

bool http_test_server::send_all(int connection, const char* data, size_t count) {
    while (count > 0) {
        const ssize_t sent = send(connection, data, count, MSG_NOSIGNAL);
        if (sent <= 0) return false;
        data += sent;
        count -= static_cast<size_t>(sent);
    }
    return true;
}

bool http_test_server::send_body(int connection, size_t limit) {
    if (reply.body_file.empty()) {
        const std::string wire = reply.framing == http_reply::chunked ? chunked_text(reply.body, reply.chunk_size)
                                                                       : reply.body;
        return send_all(connection, wire.data(), std::min(limit, wire.size()));
    }
    const int file = open(reply.body_file.c_str(), O_RDONLY | O_CLOEXEC);
    if (file < 0) return false;
    std::vector<char> block(1 << 20);
    bool ok = true;
    for (ssize_t got; ok && (got = read(file, block.data(), block.size())) > 0;) {
        ok = send_all(connection, block.data(), static_cast<size_t>(got));
    }
    close(file);
    return ok;
}

void http_test_server::serve(int connection) {
    // The request head, up to its empty line (5 s at most).
    std::string head;
    char block[4096];
    for (int waited = 0; head.find("\r\n\r\n") == std::string::npos && waited < 100 && !stopping;) {
        pollfd readable{connection, POLLIN, 0};
        if (poll(&readable, 1, 50) != 1) {
            ++waited;
            continue;
        }
        const ssize_t got = recv(connection, block, sizeof block, 0);
        if (got <= 0) return;
        head.append(block, static_cast<size_t>(got));
    }
    {
        std::lock_guard<std::mutex> hold(request_lock);
        request = head;
    }
    if (reply.delay_ms > 0 && !wait_ms(reply.delay_ms)) return;

    size_t length = reply.body.size();
    if (!reply.body_file.empty()) {
        struct stat info{};
        if (stat(reply.body_file.c_str(), &info) != 0) return;
        length = static_cast<size_t>(info.st_size);
    }
    std::string out = "HTTP/1.1 " + std::to_string(reply.status) + " " + reply.reason + "\r\n";
    if (reply.framing == http_reply::with_length) out += "Content-Length: " + std::to_string(length) + "\r\n";
    if (reply.framing == http_reply::chunked) out += "Transfer-Encoding: chunked\r\n";
    out += "Content-Type: application/octet-stream\r\n\r\n";
    if (!send_all(connection, out.data(), out.size())) return;

    const bool cut = reply.ending == http_reply::close_mid || reply.ending == http_reply::reset_mid;
    if (!send_body(connection, cut ? reply.cut_at : std::string::npos)) return;
    if (reply.ending == http_reply::reset_mid) {
        // Give the client time to take what was sent, then abort: a linger of 0 sends a reset.
        wait_ms(200);
        linger abort_now{1, 0};
        setsockopt(connection, SOL_SOCKET, SO_LINGER, &abort_now, sizeof abort_now);
    } else if (reply.ending == http_reply::hold_open) {
        for (int waited = 0; waited < 200 && !stopping; ++waited) {
            pollfd readable{connection, POLLIN, 0};
            if (poll(&readable, 1, 50) == 1 && recv(connection, block, sizeof block, 0) <= 0) {
                held_closed = true;
                break;
            }
        }
    }
}

}  // namespace net_test
