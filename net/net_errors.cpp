#include "net/net_errors.h"

#include <cerrno>

namespace {

constexpr int table_size = -zorn_net_lowest_code - 1;  // -44 .. -2: 43 entries

struct error_text_table {
    const char* texts[table_size];

    constexpr error_text_table() : texts() {
        for (const char*& text : texts) text = "unknown error";
        set(zorn_net_no_error, "no error");
        set(zorn_net_uninitialized, "network socket subsystem uninitialized");
        set(zorn_net_bad_argument, "bad function argument");
        set(zorn_net_fault, "address/segmentation fault");
        set(zorn_net_out_of_descriptors, "out of file descriptors");
        set(zorn_net_out_of_memory, "oom or buffer space");
        set(zorn_net_too_big, "data too big for operation");
        set(zorn_net_address_in_use, "address in use");
        set(zorn_net_broken_pipe, "broken network pipe");
        set(zorn_net_connection_reset, "connection aborted/reset");
        set(zorn_net_host_down, "remote host down");
        set(zorn_net_host_unreachable, "remote host unreachable");
        set(zorn_net_network_down, "network down");
        set(zorn_net_network_unreachable, "network unreachable");
        set(zorn_net_network_reset, "network was reset");
        set(zorn_net_would_block, "would block");
        set(zorn_net_in_progress, "in progress");
        set(zorn_net_interrupted, "interrupted");
        set(zorn_net_refused, "connection refused");
        set(zorn_net_timeout, "timeout");
        set(zorn_net_already_done, "already done");
        set(zorn_net_already_connected, "already is connected");
        set(zorn_net_not_connected, "is not connected");
    }
    constexpr void set(int code, const char* text) { texts[code - zorn_net_lowest_code] = text; }
};

constexpr error_text_table error_texts;

}  // namespace

int zorn_network_error_from_errno(int error_number) {
    switch (error_number) {
    case 0: return zorn_net_no_error;
    case EBADF:
    case EINVAL:
    case ENOTSOCK: return zorn_net_bad_argument;
    case EFAULT: return zorn_net_fault;
    case ENFILE:
    case EMFILE: return zorn_net_out_of_descriptors;
    case ENOMEM:
    case ENOBUFS: return zorn_net_out_of_memory;
    case EMSGSIZE: return zorn_net_too_big;
    case EADDRINUSE: return zorn_net_address_in_use;
    case EPIPE:
    case ESHUTDOWN: return zorn_net_broken_pipe;
    case ECONNABORTED:
    case ECONNRESET: return zorn_net_connection_reset;
    case EHOSTDOWN: return zorn_net_host_down;
    case EHOSTUNREACH: return zorn_net_host_unreachable;
    case ENETDOWN: return zorn_net_network_down;
    case ENETUNREACH: return zorn_net_network_unreachable;
    case ENETRESET: return zorn_net_network_reset;
    case EAGAIN: return zorn_net_would_block;  // EWOULDBLOCK is the same value here
    case EINPROGRESS: return zorn_net_in_progress;
    case EINTR: return zorn_net_interrupted;
    case ECONNREFUSED: return zorn_net_refused;
    case ETIMEDOUT: return zorn_net_timeout;
    case EALREADY: return zorn_net_already_done;
    case EISCONN: return zorn_net_already_connected;
    case ENOTCONN: return zorn_net_not_connected;
    default: return zorn_net_unknown;
    }
}

const char* zorn_network_error_text(int code) {
    if (code < zorn_net_lowest_code || code > zorn_net_no_error) return "unknown error";
    return error_texts.texts[code - zorn_net_lowest_code];
}

bool zorn_network_error_is_transient(int code) {
    return code == zorn_net_no_error || code == zorn_net_would_block || code == zorn_net_in_progress ||
           code == zorn_net_interrupted;
}
