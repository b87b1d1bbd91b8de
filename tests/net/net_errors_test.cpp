#include <gtest/gtest.h>

#include <cerrno>
#include <string>

#include "net/net_errors.h"

namespace {

struct errno_row {
    int error_number;
    int code;
    const char* text;
};

// Every errno with a row of its own, and the text its code reads.
const errno_row errno_rows[] = {
    {0, -2, "no error"},
    {EBADF, -11, "bad function argument"},
    {EINVAL, -11, "bad function argument"},
    {ENOTSOCK, -11, "bad function argument"},
    {EFAULT, -12, "address/segmentation fault"},
    {ENFILE, -13, "out of file descriptors"},
    {EMFILE, -13, "out of file descriptors"},
    {ENOMEM, -14, "oom or buffer space"},
    {ENOBUFS, -14, "oom or buffer space"},
    {EMSGSIZE, -15, "data too big for operation"},
    {EADDRINUSE, -16, "address in use"},
    {EPIPE, -20, "broken network pipe"},
    {ESHUTDOWN, -20, "broken network pipe"},
    {ECONNABORTED, -21, "connection aborted/reset"},
    {ECONNRESET, -21, "connection aborted/reset"},
    {EHOSTDOWN, -22, "remote host down"},
    {EHOSTUNREACH, -23, "remote host unreachable"},
    {ENETDOWN, -24, "network down"},
    {ENETUNREACH, -25, "network unreachable"},
    {ENETRESET, -26, "network was reset"},
    {EAGAIN, -30, "would block"},
    {EINPROGRESS, -31, "in progress"},
    {EINTR, -32, "interrupted"},
    {ECONNREFUSED, -40, "connection refused"},
    {ETIMEDOUT, -41, "timeout"},
    {EALREADY, -42, "already done"},
    {EISCONN, -43, "already is connected"},
    {ENOTCONN, -44, "is not connected"},
};

TEST(NetworkErrors, ErrnoMapsToItsCodeAndText) {
    for (const errno_row& row : errno_rows) {
        SCOPED_TRACE(row.error_number);
        EXPECT_EQ(zorn_network_error_from_errno(row.error_number), row.code);
        EXPECT_STREQ(zorn_network_error_text(row.code), row.text);
    }
}

TEST(NetworkErrors, UnlistedErrnoIsUnknown) {
    for (int error_number : {ENOENT, EACCES, ERANGE, 100000, -5}) {
        EXPECT_EQ(zorn_network_error_from_errno(error_number), -1) << error_number;
    }
}

TEST(NetworkErrors, CodesWithoutARowReadUnknown) {
    const int gaps[] = {-1, 0, 1, -45, -1000, -3, -9, -17, -19, -27, -29, -33, -39};
    for (int code : gaps) EXPECT_STREQ(zorn_network_error_text(code), "unknown error") << code;
    int rows = 0;
    for (int code = -44; code <= -2; code++)
        if (std::string(zorn_network_error_text(code)) != "unknown error") rows++;
    EXPECT_EQ(rows, 23);
}

TEST(NetworkErrors, ExactlyFourCodesAreTransient) {
    for (int code = -50; code <= 5; code++) {
        const bool expected = code == -2 || code == -30 || code == -31 || code == -32;
        EXPECT_EQ(zorn_network_error_is_transient(code), expected) << code;
    }
}

}  // namespace
