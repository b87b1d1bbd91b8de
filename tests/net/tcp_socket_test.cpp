// zorn_tcp_socket against real peers on 127.0.0.1: plain listeners of the test's own, openssl
// s_server, and the test world in script mode. Every wait is bounded.

#include <arpa/inet.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <string>
#include <thread>
#include <vector>

#include "net/tcp_socket.h"
#include "tests/net/net_test_support.h"

namespace {

using net_test::line_client;
using net_test::loopback_address;

// A listener that accepts one connection, writes some bytes and closes: a peer that speaks no TLS.
class one_shot_peer {
public:
    explicit one_shot_peer(std::string reply) : bytes(std::move(reply)) {
        listener = net_test::open_loopback_listener(4, &port);
        worker = std::thread([this] {
            pollfd entry{listener, POLLIN, 0};
            if (poll(&entry, 1, 5000) != 1) return;
            const int fd = accept(listener, nullptr, nullptr);
            if (fd < 0) return;
            [[maybe_unused]] const ssize_t sent = send(fd, bytes.data(), bytes.size(), MSG_NOSIGNAL);
            close(fd);
        });
    }
    ~one_shot_peer() {
        worker.join();
        close(listener);
    }
    int port = 0;

private:
    std::string bytes;
    int listener = -1;
    std::thread worker;
};

// The test world running one script for one connection.
bool start_script_world(const net_test::temp_dir& dir, net_test::testworld_process* world, const std::string& text) {
    net_test::write_file(dir.file("script.txt"), text);
    return world->start({"--script", dir.file("script.txt"), "--once"}, dir.file("world.err"));
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

TEST(TcpSocket, TlsSwitchesOnlyWhileClosed) {
    int port = 0;
    const int listener = net_test::open_loopback_listener(4, &port);
    ASSERT_GE(listener, 0);
    zorn_tcp_socket socket;
    EXPECT_TRUE(socket.enable_ssl());
    size_t before = net_test::debug_log_size();
    EXPECT_TRUE(socket.enable_ssl()) << "a second enable only logs";
    EXPECT_NE(net_test::debug_log_text().find("socket already SSL enabled.", before), std::string::npos);
    EXPECT_TRUE(socket.disable_ssl());
    ASSERT_EQ(socket.blocking_connect(loopback_address(), port, 5000), 1);
    ASSERT_EQ(socket.current_state(), socket_connected);
    before = net_test::debug_log_size();
    EXPECT_FALSE(socket.enable_ssl());
    EXPECT_FALSE(socket.disable_ssl());
    const std::string logged = net_test::debug_log_text().substr(before);
    EXPECT_NE(logged.find("Error in zorn_tcp_socket::enable_ssl(), socket not in unconnected state."), std::string::npos);
    EXPECT_NE(logged.find("Error in zorn_tcp_socket::disable_ssl(), socket not in unconnected state."), std::string::npos);
    EXPECT_EQ(socket.start_nonblocking_connect(loopback_address(), port), -1);
    EXPECT_EQ(socket.get_write_error(), -43);
    socket.close();
    EXPECT_TRUE(socket.enable_ssl());
    close(listener);
}

TEST(TcpSocket, PlainPeerExchangesBytesThenClosesCleanly) {
    int port = 0;
    const int listener = net_test::open_loopback_listener(4, &port);
    ASSERT_GE(listener, 0);
    zorn_tcp_socket socket;
    ASSERT_EQ(socket.blocking_connect(loopback_address(), port, 5000), 1);
    EXPECT_EQ(socket.get_state(), socket_connected);
    const int peer = accept(listener, nullptr, nullptr);
    ASSERT_GE(peer, 0);

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
    close(listener);
}

TEST(TcpSocket, TlsEchoPeerExchangesLinesAndCloses) {
    net_test::temp_dir dir;
    net_test::echo_server_process server;
    if (!server.start(dir)) GTEST_SKIP() << "openssl s_server is not available";
    line_client client;
    ASSERT_TRUE(client.connect(server.port()));
    EXPECT_EQ(client.socket.get_state(), socket_connected);
    EXPECT_EQ(ntohs(client.socket.get_remote_address().sin_port), server.port());
    ASSERT_TRUE(client.send_line("hello lantern"));
    EXPECT_TRUE(client.read_until("nretnal olleh\n"));
    // The echo server's own word for "close this connection".
    ASSERT_TRUE(client.send_line("CLOSE"));
    EXPECT_EQ(client.read_to_end(), -1);
    EXPECT_EQ(client.socket.get_read_error(), 0);
    EXPECT_EQ(client.socket.current_state(), socket_closed);
}

TEST(TcpSocket, ReadAfterThePeerProcessDiedIsACleanClose) {
    net_test::temp_dir dir;
    net_test::echo_server_process server;
    if (!server.start(dir)) GTEST_SKIP() << "openssl s_server is not available";
    line_client client;
    ASSERT_TRUE(client.connect(server.port()));
    ASSERT_TRUE(client.send_line("abc"));
    ASSERT_TRUE(client.read_until("cba\n"));
    server.process().stop();
    // The kernel closes the dead peer's socket without a TLS close alert.
    EXPECT_EQ(client.read_to_end(), -1);
    EXPECT_EQ(client.socket.get_read_error(), 0);
    EXPECT_EQ(client.socket.current_state(), socket_closed);
}

TEST(TcpSocket, CloseAlertFromThePeerEndsTheConnectionCleanly) {
    net_test::temp_dir dir;
    net_test::testworld_process world;
    ASSERT_TRUE(start_script_world(dir, &world, "line hello\nclose\n"));
    line_client client;
    ASSERT_TRUE(client.connect(world.port()));
    EXPECT_EQ(client.read_to_end(), -1);
    EXPECT_EQ(client.received, "hello\r\n");
    EXPECT_EQ(client.socket.get_read_error(), 0);
    EXPECT_EQ(client.socket.current_state(), socket_closed);
    int status = -1;
    EXPECT_TRUE(world.process().wait_exit(5000, &status));
    EXPECT_EQ(status, 0);
}

TEST(TcpSocket, PolledConnectWalksThroughTheHandshake) {
    net_test::temp_dir dir;
    net_test::testworld_process world;
    ASSERT_TRUE(start_script_world(dir, &world, "line hi\nclose\n"));
    zorn_tcp_socket socket;
    socket.enable_ssl();
    int result = socket.start_nonblocking_connect(loopback_address(), world.port());
    for (int i = 0; i < 500 && result == 0; i++) {
        EXPECT_NE(socket.current_state() & (socket_connecting | socket_ssl_connecting), 0);
        usleep(2000);
        result = socket.poll_connect();
    }
    ASSERT_EQ(result, 1);
    EXPECT_EQ(socket.current_state(), socket_connected);
    EXPECT_EQ(socket.poll_connect(), -1);
    EXPECT_EQ(socket.get_write_error(), -43);
    char buffer[16];
    int count = 0;
    for (int i = 0; i < 100 && count == 0; i++) count = socket.blocking_read(buffer, sizeof buffer, 20);
    EXPECT_EQ(std::string(buffer, count > 0 ? count : 0), "hi\r\n");
    socket.close();
}

TEST(TcpSocket, ResetByThePeerIsALostConnection) {
    net_test::temp_dir dir;
    net_test::testworld_process world;
    ASSERT_TRUE(start_script_world(dir, &world, "line hello\nexpect go\nreset\n"));
    line_client client;
    ASSERT_TRUE(client.connect(world.port()));
    ASSERT_TRUE(client.read_until("hello\r\n"));
    ASSERT_TRUE(client.send_line("go"));
    EXPECT_EQ(client.read_to_end(), -1);
    EXPECT_EQ(client.socket.get_read_error(), -21);
    EXPECT_EQ(client.socket.current_state(), socket_closed);
}

TEST(TcpSocket, WriteAfterThePeerVanishedFails) {
    net_test::temp_dir dir;
    net_test::testworld_process world;
    ASSERT_TRUE(start_script_world(dir, &world, "expect go\nreset\n"));
    line_client client;
    ASSERT_TRUE(client.connect(world.port()));
    ASSERT_TRUE(client.send_line("go"));
    int result = 0;
    for (int i = 0; i < 500 && result >= 0; i++) {
        result = client.socket.nonblocking_write("more\n", 5);
        usleep(10000);
    }
    EXPECT_EQ(result, -1);
    EXPECT_EQ(client.socket.get_write_error(), -21);
    EXPECT_EQ(client.socket.current_state(), socket_closed);
}

TEST(TcpSocket, BlockingReadReturnsBytesAlreadyDecoded) {
    net_test::temp_dir dir;
    net_test::testworld_process world;
    const std::string record(98, 'r');  // one TLS record of 100 bytes with the line end
    ASSERT_TRUE(start_script_world(dir, &world, "line " + record + "\nexpect done\n"));
    line_client client;
    ASSERT_TRUE(client.connect(world.port()));
    char buffer[200];
    int first = 0;
    for (int i = 0; i < 500 && first == 0; i++) first = client.socket.blocking_read(buffer, 10, 10);
    ASSERT_EQ(first, 10);
    // The rest waits inside OpenSSL and the descriptor stays silent until "done" is sent.
    EXPECT_EQ(client.socket.blocking_read(buffer, sizeof buffer, 1000), 90);
    EXPECT_TRUE(client.send_line("done"));
    EXPECT_EQ(client.read_to_end(), -1);
}

TEST(TcpSocket, BrokenRecordFromThePeerIsALostConnection) {
    net_test::temp_dir dir;
    net_test::testworld_process world;
    ASSERT_TRUE(start_script_world(
        dir, &world, "line hello\nexpect go\nraw \\x17\\x03\\x03\\x00\\x10not a tls record\nexpect never\n"));
    line_client client;
    ASSERT_TRUE(client.connect(world.port()));
    ASSERT_TRUE(client.read_until("hello\r\n"));
    ASSERT_TRUE(client.send_line("go"));
    const size_t before = net_test::debug_log_size();
    EXPECT_EQ(client.read_to_end(), -1);
    EXPECT_EQ(client.socket.get_read_error(), -21);
    EXPECT_EQ(client.socket.current_state(), socket_closed);
    EXPECT_NE(net_test::debug_log_text().find("Unexpected ssl close in zorn_tcp_socket::nonblocking_read().", before),
              std::string::npos);
}

TEST(TcpSocket, PeerThatSpeaksNoTlsFailsTheHandshake) {
    one_shot_peer peer("HTTP/1.0 400 Bad Request\r\n\r\n");
    zorn_tcp_socket socket;
    socket.enable_ssl();
    const size_t before = net_test::debug_log_size();
    EXPECT_EQ(socket.blocking_connect(loopback_address(), peer.port, 5000), -1);
    EXPECT_EQ(socket.get_write_error(), -21);
    EXPECT_EQ(socket.current_state(), socket_ssl_connecting) << "left for the owner to close";
    EXPECT_NE(net_test::debug_log_text().find("SSL connect failed in zorn_tcp_socket::ssl_retry_connect().", before),
              std::string::npos);
    socket.close();
    EXPECT_EQ(socket.current_state(), socket_closed);
    EXPECT_EQ(socket.get_descriptor(), -1);
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
    std::vector<int> fillers;
    bool full = false;
    const sockaddr_in address = [&] {
        sockaddr_in a = loopback_address();
        a.sin_port = htons(static_cast<uint16_t>(port));
        return a;
    }();
    for (int i = 0; i < 16 && !full; i++) {
        const int fd = socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
        connect(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address);
        pollfd entry{fd, POLLOUT, 0};
        full = poll(&entry, 1, 200) == 0;
        fillers.push_back(fd);
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

TEST(TcpSocket, OneSocketServesConnectionAfterConnection) {
    net_test::temp_dir dir;
    net_test::write_file(dir.file("flood.txt"), "abc;;\n");
    net_test::testworld_process world;
    ASSERT_TRUE(world.start({"--flood", dir.file("flood.txt"), "--repeat", "3"}, dir.file("world.err")));
    line_client client;
    for (int round = 0; round < 5; round++) {
        SCOPED_TRACE(round);
        client.received.clear();
        ASSERT_TRUE(client.connect(world.port()));
        EXPECT_EQ(client.read_to_end(), -1);
        EXPECT_EQ(client.received, "abc;;\nabc;;\nabc;;\n");
        EXPECT_EQ(client.socket.get_read_error(), 0);
    }
}

}  // namespace
