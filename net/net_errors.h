#pragma once
// Network error codes: the only failure values that leave the socket layer. Everything above it
// sees these negative numbers, never errno or an OpenSSL result.

enum zorn_network_error : int {
    zorn_net_unknown = -1,
    zorn_net_no_error = -2,
    zorn_net_uninitialized = -10,
    zorn_net_bad_argument = -11,
    zorn_net_fault = -12,
    zorn_net_out_of_descriptors = -13,
    zorn_net_out_of_memory = -14,
    zorn_net_too_big = -15,
    zorn_net_address_in_use = -16,
    zorn_net_broken_pipe = -20,
    zorn_net_connection_reset = -21,
    zorn_net_host_down = -22,
    zorn_net_host_unreachable = -23,
    zorn_net_network_down = -24,
    zorn_net_network_unreachable = -25,
    zorn_net_network_reset = -26,
    zorn_net_would_block = -30,
    zorn_net_in_progress = -31,
    zorn_net_interrupted = -32,
    zorn_net_refused = -40,
    zorn_net_timeout = -41,
    zorn_net_already_done = -42,
    zorn_net_already_connected = -43,
    zorn_net_not_connected = -44,
};

// Lowest code of the table; texts are indexed by code - zorn_net_lowest_code.
constexpr int zorn_net_lowest_code = -44;

// Maps an errno value; any value without a row maps to -1 ("unknown error").
int zorn_network_error_from_errno(int error_number);
// The text of a code. Codes outside -44..-2, and codes in the range without a row, read "unknown error".
const char* zorn_network_error_text(int code);
// Transient codes (-2, -30, -31, -32) never end a connection.
bool zorn_network_error_is_transient(int code);
