// zorn_network_socket: one system call per operation, errno turned into a network error code at once.

#include <arpa/inet.h>
#include <fcntl.h>
#include <netdb.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "config/debug_log.h"
#include "net/tcp_socket.h"

namespace {

int last_error_code() { return zorn_network_error_from_errno(errno); }

bool change_blocking(int fd, bool nonblocking) {
    const int flags = fcntl(fd, F_GETFL, 0);
    if (flags < 0) return false;
    const int wanted = nonblocking ? (flags | O_NONBLOCK) : (flags & ~O_NONBLOCK);
    return fcntl(fd, F_SETFL, wanted) == 0;
}

}  // namespace

bool zorn_network_socket::create(int domain, int type, int protocol) {
    fd = ::socket(domain, type, protocol);
    return fd >= 0;
}

int zorn_network_socket::connect(const sockaddr* address, socklen_t length) {
    return ::connect(fd, address, length) == 0 ? 0 : last_error_code();
}

int zorn_network_socket::read(void* buffer, int length) {
    const ssize_t result = ::read(fd, buffer, static_cast<size_t>(length));
    return result >= 0 ? static_cast<int>(result) : last_error_code();
}

int zorn_network_socket::write(const void* buffer, int length) {
    // send with MSG_NOSIGNAL is write for a socket, minus SIGPIPE when the peer is gone.
    const ssize_t result = ::send(fd, buffer, static_cast<size_t>(length), MSG_NOSIGNAL);
    return result >= 0 ? static_cast<int>(result) : last_error_code();
}

// poll, read the way select(2) reads it: an error or hang-up counts as readable, an error as
// writable, and only urgent data as exceptional. Unlike select it has no descriptor ceiling.
int zorn_network_socket::select(int wanted, int timeout_ms, int* ready) {
    *ready = 0;
    if (fd < 0) return zorn_net_bad_argument;
    pollfd entry{fd, 0, 0};
    if (wanted & zorn_select_readable) entry.events |= POLLIN;
    if (wanted & zorn_select_writable) entry.events |= POLLOUT;
    if (wanted & zorn_select_exceptional) entry.events |= POLLPRI;
    const int result = ::poll(&entry, 1, timeout_ms < 0 ? -1 : timeout_ms);
    if (result < 0) return last_error_code();
    if (entry.revents & POLLNVAL) return zorn_net_bad_argument;
    if ((wanted & zorn_select_readable) && (entry.revents & (POLLIN | POLLHUP | POLLERR)))
        *ready |= zorn_select_readable;
    if ((wanted & zorn_select_writable) && (entry.revents & (POLLOUT | POLLERR))) *ready |= zorn_select_writable;
    if ((wanted & zorn_select_exceptional) && (entry.revents & POLLPRI)) *ready |= zorn_select_exceptional;
    return *ready ? 1 : 0;
}

void zorn_network_socket::close() {
    if (fd < 0) return;
    ::close(fd);
    fd = -1;
}

void zorn_network_socket::shutdown() {
    if (fd >= 0) ::shutdown(fd, SHUT_RDWR);
}

bool zorn_network_socket::set_blocking() {
    if (change_blocking(fd, false)) return true;
    zorn_client_debug_event("Error in zorn_network_socket::set_blocking(), setting blocking mode failed.",
                            zorn_cat_warning);
    return false;
}

bool zorn_network_socket::set_nonblocking() {
    if (change_blocking(fd, true)) return true;
    zorn_client_debug_event("Error in zorn_network_socket::set_nonblocking(), setting nonblocking mode failed.",
                            zorn_cat_warning);
    return false;
}

bool zorn_network_socket::set_reuse() {
    const int on = 1;
    return setsockopt(fd, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on) == 0;
}

int zorn_network_socket::bind(const sockaddr* address, socklen_t length) {
    return ::bind(fd, address, length) == 0 ? 0 : last_error_code();
}

int zorn_network_socket::listen() { return ::listen(fd, 3) == 0 ? 0 : last_error_code(); }

int zorn_network_socket::accept(sockaddr* address, socklen_t* length) {
    const int result = ::accept(fd, address, length);
    return result >= 0 ? result : last_error_code();
}

bool zorn_is_dotted_quad(const char* text) {
    if (!text) return false;
    int dots = 0;
    int digits = 0;
    int value = -1;  // -1: no digit yet since the start or the last dot
    for (const char* p = text; *p; p++) {
        if (*p >= '0' && *p <= '9') {
            value = (value < 0 ? 0 : value) * 10 + (*p - '0');
            if (value > 255) return false;
            digits++;
        } else if (*p == '.') {
            if (value < 0) return false;
            dots++;
            value = -1;
        } else {
            return false;
        }
    }
    return value >= 0 && dots == 3 && digits >= 4 && digits <= 12;
}

bool zorn_lookup_host(const char* host_name, sockaddr_in* address) {
    if (!host_name || !address) return false;
    if (zorn_is_dotted_quad(host_name)) {
        address->sin_family = AF_INET;
        address->sin_addr.s_addr = inet_addr(host_name);
        return true;
    }
    addrinfo hints{};
    hints.ai_family = AF_INET;
    addrinfo* results = nullptr;
    if (getaddrinfo(host_name, nullptr, &hints, &results) != 0 || !results) return false;
    bool found = false;
    if (results->ai_addr && results->ai_addrlen >= sizeof(sockaddr_in)) {
        sockaddr_in first;
        std::memcpy(&first, results->ai_addr, sizeof first);
        address->sin_family = AF_INET;
        address->sin_addr = first.sin_addr;
        found = true;
    }
    freeaddrinfo(results);
    return found;
}
