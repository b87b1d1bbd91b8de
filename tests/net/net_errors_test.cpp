#include <gtest/gtest.h>

#include <cerrno>
#include <string>

#include "net/net_errors.h"

namespace {

TEST(NetworkErrors, ErrnoMapsToItsCodeAndText) {
    struct row {
        int error_number;
        int code;
        const char* text;
    };
    // Both ends of the table, the errnos that share a code, and those the socket reports.
    const row rows[] = {
        {0, -2, "no error"},
        {ENOTSOCK, -11, "bad function argument"},
        {EMFILE, -13, "out of file descriptors"},
        {ENOBUFS, -14, "oom or buffer space"},
        {ESHUTDOWN, -20, "broken network pipe"},
        {ECONNABORTED, -21, "connection aborted/reset"},
        {ECONNRESET, -21, "connection aborted/reset"},
        {EAGAIN, -30, "would block"},
        {ECONNREFUSED, -40, "connection refused"},
        {ETIMEDOUT, -41, "timeout"},
        {ENOTCONN, -44, "is not connected"},
        {ENOENT, -1, "unknown error"},
        {100000, -1, "unknown error"},
        {-5, -1, "unknown error"},
    };
    for (const row& r : rows) {
        SCOPED_TRACE(r.error_number);
        EXPECT_EQ(zorn_network_error_from_errno(r.error_number), r.code);
        EXPECT_STREQ(zorn_network_error_text(r.code), r.text);
    }
}

TEST(NetworkErrors, TextsOutsideTheRowsAndTransientCodes) {
    for (int code : {0, 1, -45, -1000, -3, -9, -17, -19, -27, -29, -33, -39})
        EXPECT_STREQ(zorn_network_error_text(code), "unknown error") << code;
    int rows = 0;
    for (int code = -50; code <= 5; code++) {
        if (std::string(zorn_network_error_text(code)) != "unknown error") rows++;
        const bool transient = code == -2 || code == -30 || code == -31 || code == -32;
        EXPECT_EQ(zorn_network_error_is_transient(code), transient) << code;
    }
    EXPECT_EQ(rows, 23);
}

}  // namespace
