// The ways a game connection ends or fails, each against a scripted test world (or none) with the
// client in-process: what the player is told, that it is told once, and that a write the socket
// only partly took loses nothing and reorders nothing.
#include <gtest/gtest.h>
#include <sys/socket.h>

#include <string>
#include <vector>

#include "app/main_frame.h"
#include "config/debug_log.h"
#include "config/lconfig.h"
#include "display/ansi_display.h"
#include "tests/app/e2e_support.h"
#include "tests/app/e2e_world.h"
#include "tests/net/net_test_support.h"
#include "tests/support/gui_main.h"

namespace {

size_t count_of(const std::string& text, const std::string& part) {
    size_t found = 0;
    for (size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) found++;
    return found;
}

const char lost[] = "Connection to server lost.";
const char closed[] = "Connection closed by server.";

class ConnectionFailure : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(e2e::world().ready()) << "the client's start-up failed"; }
    void TearDown() override {
        e2e::destroy_frame(frame);
        // Back to the shared world, as the system file says.
        LConfig::instance().set_server_host("127.0.0.1");
    }
    // A world that runs the script with the client, and the client connected to it.
    void connect_to(const std::string& script) {
        net_test::write_file(dir.file("script.txt"), script);
        ASSERT_TRUE(world.start({"--script", dir.file("script.txt"), "--log", dir.file("received.log")},
                                dir.file("world.err")));
        LConfig::instance().set_server_host(("127.0.0.1:" + std::to_string(world.port())).c_str());
        frame = e2e::make_frame();
        ASSERT_TRUE(pump_until([&] { return frame->connection_seen == 1; }, 5000));
    }
    bool shown(const std::string& text, size_t times = 1) {
        return pump_until([&] { return count_of(e2e::shown_text(frame), text) >= times; }, 5000);
    }
    // After a few more ticks the message still stands once, and no other ending is reported.
    void expect_said_once(const char* message, const char* never) {
        ASSERT_TRUE(shown(message));
        pump_for(200);
        const std::string text = e2e::shown_text(frame);
        EXPECT_EQ(count_of(text, message), 1u) << text;
        EXPECT_EQ(count_of(text, never), 0u) << text;
        EXPECT_EQ(frame->session_state, session_none);
        EXPECT_NE(frame->socket.current_state(), socket_connected);
    }

    net_test::temp_dir dir;
    net_test::testworld_process world;
    zorn_mw* frame = nullptr;
};

}  // namespace

TEST_F(ConnectionFailure, ResetByTheServerIsALostConnection) {
    connect_to("expect _lantern *\nline hello from the script\nsleep 200\nreset\n");
    ASSERT_TRUE(shown("hello from the script"));
    expect_said_once(lost, closed);
}

TEST_F(ConnectionFailure, ServerCloseIsReportedOnce) {
    connect_to("expect _lantern *\nline goodbye\nclose\n");
    expect_said_once(closed, lost);
}

TEST_F(ConnectionFailure, DisconnectCommandIsTheOnlyMessage) {
    connect_to("expect _lantern *\nsleep 5000\n");
    ASSERT_TRUE(e2e::type_line(frame, "//disconnect"));
    expect_said_once("Disconnecting.", lost);
    EXPECT_EQ(count_of(e2e::shown_text(frame), closed), 0u);
}

TEST_F(ConnectionFailure, WriteErrorIsALostConnection) {
    connect_to("expect _lantern *\nsleep 5000\n");
    ASSERT_TRUE(pump_until([&] { return frame->outgoing.count() == 0; }));
    // Our side can no longer send: the next write fails, while reads find nothing.
    ASSERT_EQ(shutdown(frame->socket.get_descriptor(), SHUT_WR), 0);
    ASSERT_TRUE(e2e::type_line(frame, "look"));
    expect_said_once(lost, closed);
}

TEST_F(ConnectionFailure, SocketLeavingTheConnectedStateIsALostConnection) {
    connect_to("expect _lantern *\nsleep 5000\n");
    const std::string log_path = zorn_client_get_debug_logfile_name();
    const size_t log_before = net_test::read_file(log_path).size();
    frame->socket.close();  // behind the frame's back, as a failure below it would
    expect_said_once(lost, closed);
    EXPECT_NE(net_test::read_file(log_path).find("zorn_mw::socket_handler() - abnormal connection failure?\n", log_before),
              std::string::npos)
        << net_test::read_file(log_path).substr(log_before);
}

TEST_F(ConnectionFailure, UnknownHostIsReportedAndNothingConnects) {
    // Two dots: refused by the resolver itself, so the test stays off the network.
    LConfig::instance().set_server_host("a..b");
    frame = e2e::make_frame();
    ASSERT_TRUE(shown("Unable to look up address for game server."));
    pump_for(100);
    EXPECT_EQ(count_of(e2e::shown_text(frame), "Unable to look up address for game server."), 1u);
    EXPECT_EQ(frame->socket.current_state(), socket_closed);
}

// The world stops reading for a while, so the socket's buffers fill and a write takes only part of
// what waits. The rest must stay at the front of the buffer and follow in order.
TEST_F(ConnectionFailure, ShortWriteKeepsTheRestInOrder) {
    connect_to("timeout 20000\nignore L\nexpect _lantern *\nsleep 1500\nexpect end of the flood\nsleep 5000\n");
    const int small = 4096;
    setsockopt(frame->socket.get_descriptor(), SOL_SOCKET, SO_SNDBUF, &small, sizeof small);
    const std::string padding(90, 'x');
    int next = 0, short_writes = 0;
    // The pump of each tick, run back to back while the world sleeps.
    while (short_writes < 20 && next < 200000) {
        while (frame->outgoing.count() < zorn_outgoing_buffer::capacity - 200)
            frame->send_line(("L" + std::to_string(next++) + " " + padding).c_str());
        frame->socket_handler();
        if (frame->outgoing.count() > 0) ++short_writes;
    }
    ASSERT_EQ(short_writes, 20) << "the socket took everything: no short write to test";
    frame->send_line("end of the flood");
    ASSERT_TRUE(pump_until(
        [&] {
            const std::vector<std::string> lines = e2e::read_lines(dir.file("received.log"));
            return !lines.empty() && lines.back() == "end of the flood";
        },
        15000));
    std::vector<std::string> expected, got;
    for (int i = 0; i < next; ++i) expected.push_back("L" + std::to_string(i) + " " + padding);
    for (const std::string& line : e2e::read_lines(dir.file("received.log")))
        if (line.rfind("L", 0) == 0) got.push_back(line);
    EXPECT_EQ(got.size(), expected.size());
    EXPECT_TRUE(got == expected) << "lines lost or out of order";
    EXPECT_EQ(count_of(e2e::shown_text(frame), lost), 0u);
}
