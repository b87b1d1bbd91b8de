#include <arpa/inet.h>
#include <gtest/gtest.h>

#include <cstring>

#include "net/tcp_socket.h"

namespace {

struct quad_row {
    const char* text;
    bool short_road;
};

// Only texts that take the short road are ever looked up here: the others would reach the
// name service, and tests stay off the network.
const quad_row quad_rows[] = {
    {"127.0.0.1", true},
    {"0.0.0.0", true},
    {"255.255.255.255", true},
    {"10.20.30.40", true},
    {"001.002.003.004", true},
    {"1.2.3", false},
    {"1.2.3.4.5", false},
    {"300.1.1.1", false},
    {"1.256.1.1", false},
    {"1000.1.1.1.x", false},
    {".1.2.3", false},
    {"1..2.3", false},
    {"1.2.3.", false},
    {"1.2.3.4 ", false},
    {"1.2.3.0000000004", false},  // 13 digits
    {"localhost", false},
    {"", false},
};

TEST(LookupHost, DottedQuadsTakeTheShortRoad) {
    for (const quad_row& row : quad_rows) EXPECT_EQ(zorn_is_dotted_quad(row.text), row.short_road) << row.text;
    EXPECT_FALSE(zorn_is_dotted_quad(nullptr));
}

TEST(LookupHost, DottedQuadFillsAddressAndFamilyButNotPort) {
    sockaddr_in address;
    std::memset(&address, 0, sizeof address);
    address.sin_port = htons(4321);
    ASSERT_TRUE(zorn_lookup_host("127.0.0.1", &address));
    EXPECT_EQ(address.sin_family, AF_INET);
    EXPECT_EQ(ntohl(address.sin_addr.s_addr), 0x7f000001u);
    EXPECT_EQ(ntohs(address.sin_port), 4321);
}

TEST(LookupHost, LocalhostResolvesThroughTheHostsFile) {
    sockaddr_in address{};
    ASSERT_TRUE(zorn_lookup_host("localhost", &address));
    EXPECT_EQ(address.sin_family, AF_INET);
    EXPECT_EQ(ntohl(address.sin_addr.s_addr) >> 24, 127u);
}

TEST(LookupHost, NullArgumentsFail) {
    sockaddr_in address{};
    EXPECT_FALSE(zorn_lookup_host(nullptr, &address));
    EXPECT_FALSE(zorn_lookup_host("127.0.0.1", nullptr));
}

}  // namespace
