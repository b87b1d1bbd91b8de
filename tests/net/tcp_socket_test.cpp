// zorn_tcp_socket against real peers on 127.0.0.1: plain listeners of the test's own, openssl
// s_server, and the test world in script mode. Every wait is bounded.

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdio>
#include <string>
#include <vector>

#include "net/tcp_socket.h"
#include "tests/net/net_test_support.h"

namespace {

using net_test::line_client;
using net_test::loopback_address;

// The test world running one script for one connection.
struct script_peer {
    explicit script_peer(const std::string& text) {
        net_test::write_file(dir.file("script.txt"), text);
        started = world.start({"--script", dir.file("script.txt"), "--once"}, dir.file("world.err"));
    }
    net_test::temp_dir dir;
    net_test::testworld_process world;
    bool started = false;
};

bool log_has_since(size_t before, const std::string& line) {
    return net_test::debug_log_text().find(line, before) != std::string::npos;
}

// Polls a connect under way until it is decided, for about a second at most.
int poll_until_decided(zorn_tcp_socket& socket, int result) {
    for (int i = 0; i < 500 && result == 0; i++) {
        EXPECT_NE(socket.current_state() & (socket_connecting | socket_ssl_connecting), 0);
        usleep(2000);
        result = socket.poll_connect();
    }
    return result;
}

TEST(TcpSocket, ClosedSocketRefusesEveryTransfer) {
    zorn_tcp_socket socket;
    EXPECT_EQ(socket.current_state(), socket_closed);
    EXPECT_EQ(socket.get_read_error(), 0);
    EXPECT_EQ(socket.get_write_error(), 0);
    EXPECT_FALSE(socket.is_ssl_enabled());
    char buffer[8] = "abc";
    EXPECT_EQ(socket.nonblocking_read(buffer, 8), -1);
    EXPECT_EQ(socket.get_read_error(), -44);
    EXPECT_EQ(socket.blocking_read(nullptr, 0, 10), -1) << "the state is tested before the buffer";
    EXPECT_EQ(socket.nonblocking_write(buffer, 3), -1);
    EXPECT_EQ(socket.get_write_error(), -44);
    EXPECT_EQ(socket.blocking_write(nullptr, 0, 10), -1);
    EXPECT_EQ(socket.poll_connect(), -1);
    EXPECT_EQ(socket.get_write_error(), -44);
    EXPECT_EQ(socket.get_state(), socket_closed);
}

TEST(TcpSocket, PlainPeerExchangesBytesThenClosesCleanly) {
    int port = 0;
    const int listener = net_test::open_loopback_listener(4, &port);
    ASSERT_GE(listener, 0);
    zorn_tcp_socket socket;
    EXPECT_TRUE(socket.enable_ssl());
    size_t before = net_test::debug_log_size();
    EXPECT_TRUE(socket.enable_ssl()) << "a second enable only logs";
    EXPECT_TRUE(log_has_since(before, "socket already SSL enabled."));
    EXPECT_TRUE(socket.disable_ssl());
    ASSERT_EQ(socket.blocking_connect(loopback_address(), port, 5000), 1);
    EXPECT_EQ(socket.get_state(), socket_connected);
    const int peer = accept(listener, nullptr, nullptr);
    ASSERT_GE(peer, 0);

    // TLS switches only while closed; a connected socket refuses a second connect.
    before = net_test::debug_log_size();
    EXPECT_FALSE(socket.enable_ssl());
    EXPECT_FALSE(socket.disable_ssl());
    EXPECT_TRUE(log_has_since(before, "Error in zorn_tcp_socket::enable_ssl(), socket not in unconnected state."));
    EXPECT_TRUE(log_has_since(before, "Error in zorn_tcp_socket::disable_ssl(), socket not in unconnected state."));
    EXPECT_EQ(socket.start_nonblocking_connect(loopback_address(), port), -1);
    EXPECT_EQ(socket.get_write_error(), -43);

    EXPECT_EQ(socket.blocking_write("ping\n", 5, 1000), 5);
    char buffer[64] = {};
    ASSERT_EQ(recv(peer, buffer, sizeof buffer, 0), 5);
    EXPECT_EQ(std::string(buffer, 5), "ping\n");

    // Nothing waiting: a transient code is stored, and the connection stays.
    EXPECT_EQ(socket.nonblocking_read(buffer, sizeof buffer), 0);
    EXPECT_EQ(socket.get_read_error(), -30);
    EXPECT_EQ(socket.nonblocking_read(nullptr, 10), 0);
    EXPECT_EQ(socket.nonblocking_read(buffer, 0), 0);
    EXPECT_EQ(socket.nonblocking_write(buffer, 0), 0);
    EXPECT_EQ(socket.blocking_read(buffer, sizeof buffer, 50), 0) << "time-out";
    EXPECT_EQ(socket.current_state(), socket_connected);

    ASSERT_EQ(send(peer, "pong", 4, 0), 4);
    EXPECT_EQ(socket.blocking_read(buffer, sizeof buffer, 2000), 4);
    EXPECT_EQ(std::string(buffer, 4), "pong");
    close(peer);
    EXPECT_EQ(socket.blocking_read(buffer, sizeof buffer, 2000), -1);
    EXPECT_EQ(socket.get_read_error(), 0) << "a clean close by the peer";
    EXPECT_EQ(socket.current_state(), socket_closed);
    EXPECT_EQ(socket.get_descriptor(), -1);
    EXPECT_TRUE(socket.enable_ssl());
    close(listener);
}

// openssl s_server -rev as the peer. It ends the connection by its own word "CLOSE", or its process
// dies and the kernel closes the socket without a TLS close alert: both read as a clean close.
TEST(TcpSocket, TlsEchoPeerExchangesLinesThenGoesAway) {
    for (const bool peer_dies : {false, true}) {
        SCOPED_TRACE(peer_dies ? "peer process killed" : "peer closes");
        net_test::temp_dir dir;
        net_test::echo_server_process server;
        if (!server.start(dir)) GTEST_SKIP() << "openssl s_server is not available";
        line_client client;
        ASSERT_TRUE(client.connect(server.port()));
        EXPECT_EQ(client.socket.get_state(), socket_connected);
        EXPECT_EQ(ntohs(client.socket.get_remote_address().sin_port), server.port());
        ASSERT_TRUE(client.send_line("hello lantern"));
        EXPECT_TRUE(client.read_until("nretnal olleh\n"));
        if (peer_dies)
            server.process().stop();
        else
            ASSERT_TRUE(client.send_line("CLOSE"));
        EXPECT_EQ(client.read_to_end(), -1);
        EXPECT_EQ(client.socket.get_read_error(), 0);
        EXPECT_EQ(client.socket.current_state(), socket_closed);
    }
}

// The test world ends the connection after "hello" in each of its ways; the client's next read (or
// write) ends too, with the code that tells a clean close (0) from a lost connection.
TEST(TcpSocket, PeerEndingsGiveStateAndCode) {
    struct row {
        const char* ending;
        bool by_write;
        int error;
        const char* logged;
    };
    const row rows[] = {
        {"close\n", false, 0, nullptr},
        {"drop\n", false, 0, nullptr},
        {"reset\n", false, -21, nullptr},
        {"reset\n", true, -21, nullptr},
        {"raw \\x17\\x03\\x03\\x00\\x10not a tls record\nexpect never\n", false, -21,
         "Unexpected ssl close in zorn_tcp_socket::nonblocking_read()."},
    };
    for (const row& r : rows) {
        SCOPED_TRACE(std::string(r.ending) + (r.by_write ? " (write)" : " (read)"));
        script_peer peer("line hello\nexpect go\n" + std::string(r.ending));
        ASSERT_TRUE(peer.started);
        line_client client;
        ASSERT_TRUE(client.connect(peer.world.port()));
        ASSERT_TRUE(client.read_until("hello\r\n"));
        const size_t before = net_test::debug_log_size();
        ASSERT_TRUE(client.send_line("go"));
        int result = 0;
        if (r.by_write) {
            for (int i = 0; i < 500 && result >= 0; i++, usleep(10000))
                result = client.socket.nonblocking_write("more\n", 5);
        } else {
            result = client.read_to_end();
        }
        EXPECT_EQ(result, -1);
        EXPECT_EQ(r.by_write ? client.socket.get_write_error() : client.socket.get_read_error(), r.error);
        EXPECT_EQ(client.socket.current_state(), socket_closed);
        EXPECT_EQ(client.received, "hello\r\n");
        if (r.logged) {
            EXPECT_TRUE(log_has_since(before, r.logged));
        }
    }
}

TEST(TcpSocket, PolledConnectThenBytesAlreadyDecodedAreRead) {
    const std::string record(98, 'r');  // one TLS record of 100 bytes with the line end
    script_peer peer("line " + record + "\nexpect done\n");
    ASSERT_TRUE(peer.started);
    line_client client;
    client.socket.enable_ssl();
    const int result = client.socket.start_nonblocking_connect(loopback_address(), peer.world.port());
    ASSERT_EQ(poll_until_decided(client.socket, result), 1);
    EXPECT_EQ(client.socket.current_state(), socket_connected);
    EXPECT_EQ(client.socket.poll_connect(), -1);
    EXPECT_EQ(client.socket.get_write_error(), -43);
    char buffer[200];
    int first = 0;
    for (int i = 0; i < 500 && first == 0; i++) first = client.socket.blocking_read(buffer, 10, 10);
    ASSERT_EQ(first, 10);
    // The rest waits inside OpenSSL and the descriptor stays silent until "done" is sent.
    EXPECT_EQ(client.socket.blocking_read(buffer, sizeof buffer, 1000), 90);
    EXPECT_TRUE(client.send_line("done"));
    EXPECT_EQ(client.read_to_end(), -1);
}

TEST(TcpSocket, PeerThatSpeaksNoTlsFailsTheHandshake) {
    int port = 0;
    const int listener = net_test::open_loopback_listener(4, &port);
    ASSERT_GE(listener, 0);
    zorn_tcp_socket socket;
    socket.enable_ssl();
    const int started = socket.start_nonblocking_connect(loopback_address(), port);
    ASSERT_EQ(started, 0);
    const int peer = accept(listener, nullptr, nullptr);
    ASSERT_GE(peer, 0);
    const std::string reply = "HTTP/1.0 400 Bad Request\r\n\r\n";
    ASSERT_EQ(send(peer, reply.data(), reply.size(), MSG_NOSIGNAL), static_cast<ssize_t>(reply.size()));
    close(peer);
    const size_t before = net_test::debug_log_size();
    EXPECT_EQ(poll_until_decided(socket, started), -1);
    EXPECT_EQ(socket.get_write_error(), -21);
    EXPECT_EQ(socket.current_state(), socket_ssl_connecting) << "left for the owner to close";
    EXPECT_TRUE(log_has_since(before, "SSL connect failed in zorn_tcp_socket::ssl_retry_connect()."));
    socket.close();
    EXPECT_EQ(socket.current_state(), socket_closed);
    EXPECT_EQ(socket.get_descriptor(), -1);
    close(listener);
}

// A refused connect is seen either by connect itself or, when the system reports it later, by
// the first operation that touches the peer: the TLS handshake, or the first read.
TEST(TcpSocket, RefusedConnection) {
    const int port = net_test::unused_port();
    for (const bool tls : {true, false}) {
        SCOPED_TRACE(tls ? "TLS" : "plain");
        zorn_tcp_socket socket;
        tls ? socket.enable_ssl() : socket.disable_ssl();
        const int result = socket.blocking_connect(loopback_address(), port, 5000);
        if (result == -1 && socket.get_write_error() == -40) {
            EXPECT_EQ(socket.current_state(), socket_closed);
        } else if (tls) {
            EXPECT_EQ(result, -1);
            EXPECT_EQ(socket.get_write_error(), -21);
            EXPECT_EQ(socket.current_state(), socket_ssl_connecting);
        } else {
            ASSERT_EQ(result, 1);
            char buffer[16];
            EXPECT_EQ(socket.nonblocking_read(buffer, sizeof buffer), -1);
            EXPECT_EQ(socket.get_read_error(), -40);
            EXPECT_EQ(socket.current_state(), socket_closed);
        }
        socket.close();
    }
}

TEST(TcpSocket, ConnectTimesOutOnAFullBacklog) {
    int port = 0;
    const int listener = net_test::open_loopback_listener(0, &port);
    ASSERT_GE(listener, 0);
    // Fill the accept queue until the next connect hangs: the listener never accepts.
    sockaddr_in address = loopback_address();
    address.sin_port = htons(static_cast<uint16_t>(port));
    std::vector<int> fillers;
    bool full = false;
    for (int i = 0; i < 16 && !full; i++) {
        fillers.push_back(socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
        connect(fillers.back(), reinterpret_cast<const sockaddr*>(&address), sizeof address);
        pollfd entry{fillers.back(), POLLOUT, 0};
        full = poll(&entry, 1, 200) == 0;
    }
    if (full) {
        zorn_tcp_socket socket;
        socket.enable_ssl();
        EXPECT_EQ(socket.start_nonblocking_connect(loopback_address(), port), 0);
        EXPECT_EQ(socket.get_state(), socket_connecting);
        EXPECT_EQ(socket.poll_connect(), 0);
        // A second connect while the first is under way leaves the first alone.
        EXPECT_EQ(socket.start_nonblocking_connect(loopback_address(), port), -1);
        EXPECT_EQ(socket.get_write_error(), -31);
        EXPECT_EQ(socket.current_state(), socket_connecting);
        socket.close();

        EXPECT_EQ(socket.blocking_connect(loopback_address(), port, 300), -1);
        EXPECT_EQ(socket.get_write_error(), -41);
        EXPECT_EQ(socket.current_state(), socket_closed);
        EXPECT_EQ(socket.get_descriptor(), -1);
    }
    for (int fd : fillers) close(fd);
    close(listener);
    if (!full) GTEST_SKIP() << "the loopback accept queue never filled";
}

}  // namespace

namespace {

// The key digest of the world on a key file, as the client computes it after a handshake.
std::string world_key_digest(const std::string& key_path, const net_test::temp_dir& dir) {
    net_test::testworld_process world;
    if (!world.start({"--key", key_path, "--once"}, dir.file("world.err"))) return "no world";
    line_client client;
    if (!client.connect(world.port())) return "no connect";
    unsigned char digest[32];
    if (!client.socket.peer_key_sha256(digest)) return "no digest";
    std::string hex;
    for (unsigned char byte : digest) {
        char pair[3];
        std::snprintf(pair, sizeof pair, "%02x", byte);
        hex += pair;
    }
    return hex;
}

}  // namespace

// The digest is of the certificate's public key: it survives the new certificate a restart makes,
// changes with the key, and equals what the openssl command gives for the key file.
TEST(TcpSocket, PeerKeyDigestFollowsTheKeyNotTheCertificate) {
    net_test::temp_dir dir;
    const std::string first = world_key_digest(dir.file("key.pem"), dir);
    ASSERT_EQ(first.size(), 64u) << first;
    EXPECT_EQ(world_key_digest(dir.file("key.pem"), dir), first);
    const std::string other = world_key_digest(dir.file("other.pem"), dir);
    ASSERT_EQ(other.size(), 64u) << other;
    EXPECT_NE(other, first);

    const std::string openssl = LANTERN_OPENSSL_PATH;
    if (openssl.empty()) GTEST_SKIP() << "no openssl command to compare with";
    net_test::child_process digest;
    ASSERT_TRUE(digest.start({"/bin/sh", "-c",
                              "'" + openssl + "' pkey -in '" + dir.file("key.pem") + "' -pubout -outform DER | '" +
                                  openssl + "' dgst -sha256 -r"}));
    std::string line;
    ASSERT_TRUE(digest.read_line(&line, 10000));
    EXPECT_EQ(line.substr(0, 64), first);

    zorn_tcp_socket never_connected;
    unsigned char unused[32];
    EXPECT_FALSE(never_connected.peer_key_sha256(unused));
}
