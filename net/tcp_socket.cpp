// zorn_tcp_socket: connect, TLS handshake, reads and writes, each outcome folded into the state
// and a network error code.
//
// closed --start_nonblocking_connect--> connecting --(TLS on)--> ssl_connecting --> connected
//                                                   --(TLS off)-----------------------^
// Hard failures, a clean close by the peer and close() lead back to closed. A failed handshake
// stays in ssl_connecting with the descriptor open until the owner calls close().

#include "net/tcp_socket.h"

#include <openssl/err.h>
#include <openssl/evp.h>
#include <openssl/x509.h>
#include <openssl/ssl.h>
#include <sys/socket.h>

#include <cerrno>

#include "config/debug_log.h"
#include "net/ssl_context.h"

zorn_tcp_socket::~zorn_tcp_socket() {
    if (socket.is_open()) {
        zorn_client_debug_event("Error in ~zorn_tcp_socket(), socket not closed.", zorn_cat_warning);
        socket.close();
    }
    SSL_free(ssl);
}

bool zorn_tcp_socket::enable_ssl() {
    if (state != socket_closed) {
        zorn_client_debug_event("Error in zorn_tcp_socket::enable_ssl(), socket not in unconnected state.",
                                zorn_cat_warning);
        return false;
    }
    if (ssl_enabled) {
        zorn_client_debug_event(
            "Error in zorn_server_socket_writeable::make_ssl_capable(), socket already SSL enabled.",
            zorn_cat_warning);
        return true;
    }
    ssl_enabled = 1;
    return true;
}

bool zorn_tcp_socket::disable_ssl() {
    if (state != socket_closed) {
        zorn_client_debug_event("Error in zorn_tcp_socket::disable_ssl(), socket not in unconnected state.",
                                zorn_cat_warning);
        return false;
    }
    ssl_enabled = 0;
    SSL_free(ssl);
    ssl = nullptr;
    return true;
}

void zorn_tcp_socket::fail_and_close(int* error_field, int code) {
    *error_field = code;
    state = socket_closed;
    socket.close();
}

int zorn_tcp_socket::start_nonblocking_connect(const sockaddr_in& address, int port) {
    if (state == socket_connecting || state == socket_ssl_connecting) {
        write_error = zorn_net_in_progress;
        return -1;
    }
    if (state == socket_connected) {
        write_error = zorn_net_already_connected;
        return -1;
    }
    if (socket.is_open()) {
        zorn_client_debug_event("Error in zorn_tcp_socket::start_nonblocking_connect(), socket not closed.",
                                zorn_cat_warning);
        socket.close();
    }
    if (!socket.create(AF_INET, SOCK_STREAM, 0)) {
        zorn_client_debug_event(
            "Error in zorn_tcp_socket::start_nonblocking_connect(), unable to create new socket?", zorn_cat_severe);
        write_error = zorn_net_out_of_descriptors;
        return -1;
    }
    state = socket_connecting;
    remote_address = address;
    remote_address.sin_family = AF_INET;
    remote_address.sin_port = htons(static_cast<uint16_t>(port));
    socket.set_nonblocking();

    const int result = socket.connect(reinterpret_cast<const sockaddr*>(&remote_address), sizeof remote_address);
    if (result == 0 || result == zorn_net_already_connected) {
        write_error = 0;
        return ssl_try_connect(false);
    }
    write_error = result;
    if (zorn_network_error_is_transient(result) || result == zorn_net_already_done) return 0;
    state = socket_closed;
    socket.close();
    return result;
}

int zorn_tcp_socket::blocking_connect(const sockaddr_in& address, int port, int timeout_ms) {
    const int started = start_nonblocking_connect(address, port);
    if (started == 1) return 1;
    if (started < 0) return -1;
    // A TCP connect that completed at once has already begun a non-blocking handshake; finish it
    // the blocking way, as though the descriptor had just become writable.
    if (state == socket_ssl_connecting) {
        socket.set_blocking();
        const int result = ssl_retry_connect();
        socket.set_nonblocking();
        return result;
    }
    int ready = 0;
    const int selected = socket.select(zorn_select_writable | zorn_select_exceptional, timeout_ms, &ready);
    if (selected < 0) {
        write_error = selected;
        if (zorn_network_error_is_transient(selected)) return ssl_try_connect(true);
        fail_and_close(&write_error, selected);
        return -1;
    }
    if (selected == 0) {
        fail_and_close(&write_error, zorn_net_timeout);
        return -1;
    }
    // Writable is all it takes: a refused connect shows up at the first read or write.
    if ((ready & zorn_select_exceptional) || !(ready & zorn_select_writable)) {
        fail_and_close(&write_error, zorn_net_connection_reset);
        return -1;
    }
    return ssl_try_connect(true);
}

int zorn_tcp_socket::poll_connect() {
    if (state == socket_connected) {
        write_error = zorn_net_already_connected;
        return -1;
    }
    if (state == socket_ssl_connecting) return ssl_retry_connect();
    if (state == socket_closed) {
        write_error = zorn_net_not_connected;
        return -1;
    }
    int ready = 0;
    const int selected = socket.select(zorn_select_writable | zorn_select_exceptional, 0, &ready);
    if (selected < 0) {
        write_error = selected;
        if (zorn_network_error_is_transient(selected)) return 0;
        fail_and_close(&write_error, selected);
        return -1;
    }
    if (selected == 0) return 0;
    if (ready & zorn_select_exceptional) {
        fail_and_close(&write_error, zorn_net_connection_reset);
        return -1;
    }
    return (ready & zorn_select_writable) ? ssl_try_connect(false) : 0;
}

int zorn_tcp_socket::ssl_try_connect(bool blocking) {
    if (!ssl_enabled) {
        state = socket_connected;
        return 1;
    }
    if (state != socket_connecting) {
        zorn_client_debug_event("Error in zorn_tcp_socket::ssl_try_connect(), socket not in connecting state.",
                                zorn_cat_warning);
        fail_and_close(&write_error, zorn_net_connection_reset);
        return -1;
    }
    SSL_free(ssl);
    ssl = zorn_ssl_context() ? SSL_new(zorn_ssl_context()) : nullptr;
    if (!ssl) {
        zorn_client_debug_event("Unable to allocate SSL struct in zorn_tcp_socket::ssl_try_connect(), did you run "
                                "zorn_ssl_startup()?",
                                zorn_cat_warning);
        zorn_ssl_log_error_line(0);
        return 0;
    }
    if (SSL_set_cipher_list(ssl, zorn_ssl_cipher_list()) != 1) {
        zorn_client_debug_event("Error in zorn_tcp_socket::ssl_try_connect(), unable to set cipher list?",
                                zorn_cat_warning);
        fail_and_close(&write_error, zorn_net_connection_reset);
        return -1;
    }
    if (SSL_set_fd(ssl, socket.descriptor()) != 1) {
        zorn_client_debug_event("Error in zorn_tcp_socket::ssl_try_connect(), set_fd failed?", zorn_cat_warning);
        fail_and_close(&write_error, zorn_net_connection_reset);
        return -1;
    }
    state = socket_ssl_connecting;
    if (!blocking) return ssl_retry_connect();
    socket.set_blocking();
    const int result = ssl_retry_connect();
    socket.set_nonblocking();
    return result;
}

int zorn_tcp_socket::ssl_retry_connect() {
    if (!ssl) {
        zorn_client_debug_event("Error in zorn_tcp_socket::ssl_retry_connect(), NULL ssl context?", zorn_cat_warning);
        write_error = zorn_net_connection_reset;
        return -1;
    }
    ERR_clear_error();
    const int result = SSL_connect(ssl);
    if (result > 0) {
        state = socket_connected;
        return 1;
    }
    if (result == 0) {
        zorn_client_debug_event(
            "Warning in zorn_tcp_socket::ssl_retry_connect(), SSL connect failed due to protocol issue.", zorn_cat_128);
        write_error = zorn_net_connection_reset;
        return -1;
    }
    const int ssl_error = SSL_get_error(ssl, result);
    if (ssl_error == SSL_ERROR_WANT_READ || ssl_error == SSL_ERROR_WANT_WRITE) return 0;
    if (ssl_error == SSL_ERROR_ZERO_RETURN) {
        zorn_client_debug_event("Controlled ssl close in zorn_tcp_socket::ssl_retry_connect(), bailing.",
                                zorn_cat_128);
    } else {
        zorn_client_debug_event("SSL connect failed in zorn_tcp_socket::ssl_retry_connect().", zorn_cat_128);
        zorn_ssl_log_error_line(ssl_error);
    }
    write_error = zorn_net_connection_reset;
    return -1;
}

int zorn_tcp_socket::get_state() {
    if (state == socket_connecting) poll_connect();
    return state;
}

int zorn_tcp_socket::nonblocking_read(void* buffer, int length) {
    if (state != socket_connected) {
        read_error = zorn_net_not_connected;
        return -1;
    }
    if (!buffer || length < 1) return 0;
    if (ssl) {
        ERR_clear_error();
        errno = 0;
        const int result = SSL_read(ssl, buffer, length);
        if (result > 0) return result;
        const int saved_errno = errno;
        const int ssl_error = SSL_get_error(ssl, result);
        if (ssl_error == SSL_ERROR_WANT_READ || ssl_error == SSL_ERROR_WANT_WRITE) return 0;
        const bool clean = ssl_error == SSL_ERROR_ZERO_RETURN ||
                           (ssl_error == SSL_ERROR_SYSCALL &&
                            zorn_network_error_from_errno(saved_errno) == zorn_net_no_error);
        if (clean) {
            fail_and_close(&read_error, 0);
            return -1;
        }
        zorn_client_debug_event("Unexpected ssl close in zorn_tcp_socket::nonblocking_read().", zorn_cat_verbose);
        zorn_ssl_log_error_line(ssl_error);
        fail_and_close(&read_error, zorn_net_connection_reset);
        return -1;
    }
    const int result = socket.read(buffer, length);
    if (result > 0) return result;
    if (result == 0) {
        fail_and_close(&read_error, 0);
        return -1;
    }
    read_error = result;
    if (zorn_network_error_is_transient(result)) return 0;
    fail_and_close(&read_error, result);
    return -1;
}

// Waits on the descriptor; 1 ready as wanted, 0 nothing (time-out or a transient failure), -1
// after a hard failure or an exceptional condition, which close the socket.
int zorn_tcp_socket::wait_ready(int wanted, int timeout_ms, int* error_field) {
    int ready = 0;
    const int selected = socket.select(wanted | zorn_select_exceptional, timeout_ms, &ready);
    if (selected == 0) return 0;
    if (selected < 0) {
        if (zorn_network_error_is_transient(selected)) return 0;
        fail_and_close(error_field, selected);
        return -1;
    }
    if (ready & zorn_select_exceptional) {
        fail_and_close(error_field, zorn_net_connection_reset);
        return -1;
    }
    return (ready & wanted) ? 1 : 0;
}

int zorn_tcp_socket::blocking_read(void* buffer, int length, int timeout_ms) {
    if (state != socket_connected) {
        read_error = zorn_net_not_connected;
        return -1;
    }
    if (!buffer || length < 1) return 0;
    // Bytes OpenSSL has already decoded are invisible to the descriptor: take them first.
    if (ssl) {
        const int result = nonblocking_read(buffer, length);
        if (result != 0) return result;
    }
    const int ready = wait_ready(zorn_select_readable, timeout_ms, &read_error);
    return ready > 0 ? nonblocking_read(buffer, length) : ready;
}

int zorn_tcp_socket::nonblocking_write(const void* buffer, int length) {
    if (state != socket_connected) {
        write_error = zorn_net_not_connected;
        return -1;
    }
    if (!buffer || length < 1) return 0;
    if (ssl) {
        ERR_clear_error();
        const int result = SSL_write(ssl, buffer, length);
        if (result >= 1) return result;
        const int ssl_error = SSL_get_error(ssl, result);
        if (ssl_error == SSL_ERROR_WANT_READ || ssl_error == SSL_ERROR_WANT_WRITE) return 0;
        if (ssl_error == SSL_ERROR_ZERO_RETURN) {
            zorn_client_debug_event("Clean SSL shutdown in zorn_tcp_socket::nonblocking_write().", zorn_cat_verbose);
            fail_and_close(&write_error, 0);
        } else {
            zorn_client_debug_event("Unexpected ssl close in zorn_tcp_socket::nonblocking_write().",
                                    zorn_cat_verbose);
            fail_and_close(&write_error, zorn_net_connection_reset);
        }
        return -1;
    }
    const int result = socket.write(buffer, length);
    if (result >= 0) return result;
    write_error = result;
    if (zorn_network_error_is_transient(result)) return 0;
    fail_and_close(&write_error, result);
    return -1;
}

int zorn_tcp_socket::blocking_write(const void* buffer, int length, int timeout_ms) {
    if (state != socket_connected) {
        write_error = zorn_net_not_connected;
        return -1;
    }
    if (!buffer || length < 1) return 0;
    const int ready = wait_ready(zorn_select_writable, timeout_ms, &write_error);
    return ready > 0 ? nonblocking_write(buffer, length) : ready;
}

bool zorn_tcp_socket::peer_key_sha256(unsigned char* digest) const {
    if (!ssl) return false;
    X509* cert = SSL_get1_peer_certificate(ssl);
    if (!cert) return false;
    unsigned char* der = nullptr;
    const int length = i2d_X509_PUBKEY(X509_get_X509_PUBKEY(cert), &der);
    unsigned int digest_length = 0;
    const bool done = length > 0 && EVP_Digest(der, static_cast<size_t>(length), digest, &digest_length,
                                               EVP_sha256(), nullptr) == 1 && digest_length == 32;
    OPENSSL_free(der);
    X509_free(cert);
    return done;
}

void zorn_tcp_socket::close() {
    state = socket_closed;
    socket.close();
}
