#pragma once
// A small HTTP server on 127.0.0.1 for tests and benchmarks (a tool, not part of the client). It
// runs on a thread of its own, takes connections one after the other, reads each request head,
// and answers every one with the same configured reply: a body with or without Content-Length,
// chunked, any status, after a silence, and ended by a close, a reset, a close in mid-body, or by
// holding the connection open until the client lets go.

#include <atomic>
#include <mutex>
#include <string>
#include <thread>

namespace net_test {

struct http_reply {
    enum framing_kind { with_length, no_length, chunked };
    enum ending_kind {
        close_after,  // whole reply, then close
        hold_open,    // whole reply, then wait for the client to close (10 s at most)
        close_mid,    // cut_at body bytes, then a clean close
        reset_mid,    // cut_at body bytes, then a reset
    };

    int status = 200;
    std::string reason = "OK";
    std::string body;
    // When set, the body is this file's content, sent from disk in large blocks.
    std::string body_file;
    framing_kind framing = with_length;
    ending_kind ending = close_after;
    size_t cut_at = 0;
    // Silence between the request and the reply.
    int delay_ms = 0;
    // Chunk size of the chunked framing (the first chunk carries an extension).
    size_t chunk_size = 1000;
};

class http_test_server {
public:
    http_test_server() = default;
    ~http_test_server() { stop(); }
    http_test_server(const http_test_server&) = delete;
    http_test_server& operator=(const http_test_server&) = delete;

    bool start(const http_reply& reply);
    void stop();
    int port() const { return listen_port; }
    // The head of the last request, as received.
    std::string last_request() const;
    int connections() const { return served.load(); }
    // True once a held connection saw the client close it.
    bool client_closed_held() const { return held_closed.load(); }

private:
    void run();
    void serve(int connection);
    bool send_all(int connection, const char* data, size_t count);
    bool send_body(int connection, size_t limit);
    bool wait_ms(int milliseconds);

    http_reply reply;
    int listener = -1;
    int listen_port = 0;
    std::thread worker;
    std::atomic<bool> stopping{false};
    std::atomic<int> served{0};
    std::atomic<bool> held_closed{false};
    mutable std::mutex request_lock;
    std::string request;
};

}  // namespace net_test
