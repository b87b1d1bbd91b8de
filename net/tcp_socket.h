#pragma once
// The program's only road to a TCP peer: a non-blocking IPv4 client socket with an explicit
// state, optional TLS over the process-wide context (net/ssl_context.h), and the negative codes
// of net/net_errors.h in place of errno. A socket belongs to one thread.
//
// Results, unless an operation says otherwise: above 0 success or a byte count, 0 nothing yet
// (try again), -1 the connection or attempt is over and the reason stands in read_error or
// write_error.

#include <netinet/in.h>
#include <openssl/types.h>

#include "net/net_errors.h"

// Readiness bits of zorn_network_socket::select, with the meaning select(2) gives them.
enum : int {
    zorn_select_readable = 1,
    zorn_select_writable = 2,
    zorn_select_exceptional = 4,
};

// One descriptor, wrapped system call by system call. Failures come back as network error codes.
class zorn_network_socket {
public:
    zorn_network_socket() = default;
    zorn_network_socket(const zorn_network_socket&) = delete;
    zorn_network_socket& operator=(const zorn_network_socket&) = delete;

    bool create(int domain, int type, int protocol);
    int connect(const sockaddr* address, socklen_t length);
    int read(void* buffer, int length);
    // Never raises SIGPIPE.
    int write(const void* buffer, int length);
    // Waits for any of the wanted bits; a negative time-out waits without limit. The result is the
    // number of descriptors ready (0 or 1) and *ready holds the bits seen, or a code on failure.
    int select(int wanted, int timeout_ms, int* ready);
    void close();
    void shutdown();
    bool set_blocking();
    bool set_nonblocking();

    // Listening side; the client never uses these.
    bool set_reuse();
    int bind(const sockaddr* address, socklen_t length);
    int listen();
    int accept(sockaddr* address, socklen_t* length);

    int descriptor() const { return fd; }
    bool is_open() const { return fd >= 0; }

private:
    int fd = -1;
};

// Single bits, so callers can test states with a mask.
enum zorn_socket_state : int {
    socket_closed = 1,
    socket_connecting = 2,
    socket_ssl_connecting = 4,
    socket_connected = 8,
};

class zorn_tcp_socket {
public:
    zorn_tcp_socket() = default;
    ~zorn_tcp_socket();
    zorn_tcp_socket(const zorn_tcp_socket&) = delete;
    zorn_tcp_socket& operator=(const zorn_tcp_socket&) = delete;

    // Both are allowed only in socket_closed.
    bool enable_ssl();
    bool disable_ssl();

    // Port in host order. 1 connected, 0 under way, or the failing code itself (negative).
    int start_nonblocking_connect(const sockaddr_in& address, int port);
    // 1 connected, -1 failed (write_error). A negative time-out waits without limit; the TLS
    // handshake that follows the TCP connect has no time-out of its own.
    int blocking_connect(const sockaddr_in& address, int port, int timeout_ms);
    int poll_connect();
    int ssl_try_connect(bool blocking);
    int ssl_retry_connect();

    // The state, after one poll_connect when a TCP connect is under way.
    int get_state();
    // The state as it stands, without polling.
    int current_state() const { return state; }

    int nonblocking_read(void* buffer, int length);
    // 0 on time-out.
    int blocking_read(void* buffer, int length, int timeout_ms);
    int nonblocking_write(const void* buffer, int length);
    // Writes once and may take fewer bytes than offered; 0 on time-out.
    int blocking_write(const void* buffer, int length, int timeout_ms);

    // No close alert is sent, and the TLS object is kept until the next handshake.
    void close();

    // The SHA-256 of the peer certificate's public key (its DER SubjectPublicKeyInfo), 32 bytes.
    // False without a TLS session or a peer certificate.
    bool peer_key_sha256(unsigned char* digest) const;

    int get_read_error() const { return read_error; }
    int get_write_error() const { return write_error; }
    bool is_ssl_enabled() const { return ssl_enabled != 0; }
    int get_descriptor() const { return socket.descriptor(); }
    const sockaddr_in& get_remote_address() const { return remote_address; }

private:
    void fail_and_close(int* error_field, int code);
    int wait_ready(int wanted, int timeout_ms, int* error_field);

    SSL* ssl = nullptr;
    int ssl_enabled = 0;
    zorn_network_socket socket;
    sockaddr_in remote_address{};
    int state = socket_closed;
    int read_error = 0;
    int write_error = 0;
};

// Fills the address and family of *address (not the port). A dotted quad is converted directly;
// anything else is a blocking name look-up for IPv4.
bool zorn_lookup_host(const char* host_name, sockaddr_in* address);
// True for the dotted quads that skip the name look-up.
bool zorn_is_dotted_quad(const char* text);
