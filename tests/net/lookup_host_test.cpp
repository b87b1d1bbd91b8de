#include <arpa/inet.h>
#include <gtest/gtest.h>

#include "net/tcp_socket.h"

namespace {

// Only texts that take the short road are ever looked up here: the others would reach the
// name service, and tests stay off the network.
TEST(LookupHost, DottedQuadsTakeTheShortRoad) {
    const struct {
        const char* text;
        bool short_road;
    } rows[] = {
        {"127.0.0.1", true},   {"255.255.255.255", true}, {"001.002.003.004", true},  // 12 digits
        {"1.2.3", false},      {"1.2.3.4.5", false},       {"300.1.1.1", false},
        {"1.256.1.1", false},  {"1000.1.1.1.x", false},    {".1.2.3", false},
        {"1..2.3", false},     {"1.2.3.", false},          {"1.2.3.4 ", false},
        {"1.2.3.0000000004", false},  // 13 digits
        {"localhost", false},  {"", false},
    };
    for (const auto& row : rows) EXPECT_EQ(zorn_is_dotted_quad(row.text), row.short_road) << row.text;
    EXPECT_FALSE(zorn_is_dotted_quad(nullptr));
}

TEST(LookupHost, FillsAddressAndFamilyButNotPort) {
    sockaddr_in address{};
    address.sin_port = htons(4321);
    ASSERT_TRUE(zorn_lookup_host("127.0.0.1", &address));
    EXPECT_EQ(address.sin_family, AF_INET);
    EXPECT_EQ(ntohl(address.sin_addr.s_addr), 0x7f000001u);
    EXPECT_EQ(ntohs(address.sin_port), 4321);
    sockaddr_in named{};
    ASSERT_TRUE(zorn_lookup_host("localhost", &named)) << "through the hosts file";
    EXPECT_EQ(named.sin_family, AF_INET);
    EXPECT_EQ(ntohl(named.sin_addr.s_addr) >> 24, 127u);
    EXPECT_FALSE(zorn_lookup_host(nullptr, &address));
    EXPECT_FALSE(zorn_lookup_host("127.0.0.1", nullptr));
}

}  // namespace
