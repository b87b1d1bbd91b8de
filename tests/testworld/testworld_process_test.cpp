// lantern-testworld as a process, driven through zorn_tcp_socket on 127.0.0.1.

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <csignal>
#include <functional>
#include <random>
#include <string>
#include <vector>

#include "tests/net/net_test_support.h"

namespace {

using net_test::line_client;

const std::string pong = ";sevent;lnpong;eevent;";

std::string random_bytes(size_t count, unsigned seed) {
    std::mt19937 random(seed);
    std::string bytes(count, '\0');
    for (char& c : bytes) c = static_cast<char>(random() % 256);
    return bytes;
}

// A world started for one test, with its stderr and files in a temporary directory.
class TestworldProcess : public ::testing::Test {
protected:
    bool start(const std::vector<std::string>& arguments = {}) { return world.start(arguments, err_path()); }
    std::string err_path() const { return dir.file("world.err"); }

    // The world still serves: a new player logs in and gets an answer to a ping.
    void expect_alive() {
        int status = 0;
        EXPECT_FALSE(world.process().wait_exit(0, &status)) << "the world exited with " << status;
        line_client probe;
        ASSERT_TRUE(probe.connect(world.port()));
        ASSERT_TRUE(probe.log_in("Probe"));
        ASSERT_TRUE(probe.send_line("lnping"));
        EXPECT_TRUE(probe.read_until(pong));
    }

    net_test::temp_dir dir;
    net_test::testworld_process world;
};

// Waits until the file holds the text at least count times.
bool wait_for_count(const std::string& path, const std::string& text, int count) {
    for (int waited = 0; waited <= 5000; waited += 10, usleep(10000)) {
        const std::string content = net_test::read_file(path);
        int found = 0;
        for (size_t at = content.find(text); at != std::string::npos; at = content.find(text, at + 1)) found++;
        if (found >= count) return true;
    }
    return false;
}

// Two players at once: one hears the other, the log holds every line received, and quit closes.
TEST_F(TestworldProcess, PlayersAreServedTogetherAndEveryLineLogged) {
    ASSERT_TRUE(start({"--log", dir.file("received.log")}));
    line_client anna, bert;
    ASSERT_TRUE(anna.connect(world.port()));
    ASSERT_TRUE(bert.connect(world.port()));
    ASSERT_TRUE(anna.log_in("anna"));
    ASSERT_TRUE(bert.log_in("Bert"));
    ASSERT_TRUE(anna.send_line("say meet at the well;now"));
    EXPECT_TRUE(bert.read_until("Anna says '\x1b[36mmeet at the well;;now\x1b[0m'"));
    ASSERT_TRUE(anna.send_line("quit"));
    EXPECT_TRUE(anna.read_until(";sevent;logoff;eevent;Goodbye.\r\n"));
    EXPECT_EQ(anna.read_to_end(), -1);
    EXPECT_EQ(anna.socket.get_read_error(), 0) << "closed by the server";

    ASSERT_TRUE(bert.send_line("quit"));
    EXPECT_EQ(bert.read_to_end(), -1);
    world.process().stop();
    EXPECT_EQ(net_test::read_file(dir.file("received.log")),
              "_lantern 0f1e2d3c-test 0.1.0\nanna\nsecret\n_lantern 0f1e2d3c-test 0.1.0\nBert\nsecret\n"
              "say meet at the well;now\nquit\nquit\n");
    EXPECT_NE(net_test::read_file(err_path()).find("client _lantern 0f1e2d3c-test 0.1.0"), std::string::npos);
}

// Connection after connection, each ending another way: the world serves on, and a line cut by the
// close is still logged.
TEST_F(TestworldProcess, SurvivesConnectionsThatEndAnyWay) {
    ASSERT_TRUE(start({"--log", dir.file("received.log")}));
    const struct {
        const char* name;
        bool tls;
        std::function<void(line_client&)> leave;
    } endings[] = {
        {"quit", true,
         [](line_client& c) {
             ASSERT_TRUE(c.send_line("quit"));
             EXPECT_EQ(c.read_to_end(), -1);
             EXPECT_EQ(c.socket.get_read_error(), 0);
         }},
        {"without a word", true, [](line_client&) {}},
        {"after bad bytes in lines", true,
         [](line_client& c) {
             ASSERT_TRUE(c.send(random_bytes(20000, 42) + "\n" + std::string(40000, 'x') + "\n"));
             ASSERT_TRUE(c.send_line(std::string("say \xff\xfe\x01x;y", 10)));
             // 0xFE alone means nothing to the client; without the 0xFF before it, it stays.
             EXPECT_TRUE(c.read_until("You say '\x1b[36m?\xfe?x;;y\x1b[0m'"));
         }},
        {"in the middle of a tag", true, [](line_client& c) { c.send("say ;sfoo;half a ta"); }},
        {"in the middle of telnet bytes", true, [](line_client& c) { c.send(std::string("\xff\xfb", 2)); }},
        {"in the middle of a TLS record", true,
         [](line_client& c) {
             const std::string partial = std::string("\x17\x03\x03\x40\x00", 5) + random_bytes(100, 1);
             send(c.socket.get_descriptor(), partial.data(), partial.size(), MSG_NOSIGNAL);
         }},
        {"with a reset", true,
         [](line_client& c) {
             const linger abort_now{1, 0};
             setsockopt(c.socket.get_descriptor(), SOL_SOCKET, SO_LINGER, &abort_now, sizeof abort_now);
         }},
        {"before the TLS handshake", false, [](line_client&) {}},
        {"after bytes that are no TLS", false, [](line_client& c) { c.send(random_bytes(4096, 7)); }},
    };
    const int rounds = 3 * static_cast<int>(std::size(endings));
    for (int round = 0; round < rounds; round++) {
        const auto& ending = endings[round % std::size(endings)];
        SCOPED_TRACE(ending.name);
        line_client client;
        ASSERT_TRUE(client.connect(world.port(), ending.tls));
        if (ending.tls) {
            ASSERT_TRUE(client.log_in("Guest"));
        }
        ending.leave(client);
        client.socket.close();
    }
    EXPECT_TRUE(wait_for_count(err_path(), ": closed\n", rounds)) << "every connection seen to its end";
    expect_alive();
    EXPECT_NE(net_test::read_file(dir.file("received.log")).find("say ;sfoo;half a ta\n"), std::string::npos);
}

TEST(TestworldProcessModes, ScriptModeChecksTheExchange) {
    const struct {
        const char* script;
        std::vector<std::string> client_lines;
        const char* reply;  // what the client reads before the close
        int exit_status;
        const char* error;  // expected in the world's stderr
    } cases[] = {
        {"expect hello\nline ok\n", {"hello"}, "ok\r\n", 0, ""},
        {"ignore lnlstatus \nexpect _lantern *\nexpect look\nsend \\e[1m;;\\x3B;\n",
         {"_lantern u 1", "lnlstatus 0101", "look"}, "\x1b[1m;;;;", 0, ""},
        {"expect hello\nline ok\n", {"bye"}, "", 1, "script failed: line 1: expected 'hello', got 'bye'"},
        {"timeout 100\nexpect hello\n", {}, "", 1, "script failed: line 2: timed out waiting for 'hello'"},
    };
    for (const auto& entry : cases) {
        SCOPED_TRACE(entry.script);
        net_test::temp_dir dir;
        net_test::write_file(dir.file("script.txt"), entry.script);
        net_test::testworld_process world;
        ASSERT_TRUE(world.start({"--script", dir.file("script.txt"), "--once"}, dir.file("world.err")));
        line_client client;
        ASSERT_TRUE(client.connect(world.port()));
        for (const std::string& line : entry.client_lines) ASSERT_TRUE(client.send_line(line));
        EXPECT_EQ(client.read_to_end(), -1);
        EXPECT_EQ(client.received, entry.reply);
        int status = -1;
        ASSERT_TRUE(world.process().wait_exit(5000, &status));
        EXPECT_EQ(status, entry.exit_status);
        EXPECT_NE(net_test::read_file(dir.file("world.err")).find(entry.error), std::string::npos) << entry.error;
    }
}

// One client socket, reused: each connection gets the file exactly, then a clean close.
TEST_F(TestworldProcess, FloodSendsTheFileExactlyThenCloses) {
    const std::string bytes = random_bytes(100000, 3);
    net_test::write_file(dir.file("flood.bin"), bytes);
    ASSERT_TRUE(start({"--flood", dir.file("flood.bin"), "--repeat", "3"}));
    line_client client;
    for (int round = 0; round < 3; round++) {
        SCOPED_TRACE(round);
        client.received.clear();
        ASSERT_TRUE(client.connect(world.port()));
        EXPECT_EQ(client.read_to_end(20000), -1);
        EXPECT_EQ(client.socket.get_read_error(), 0);
        EXPECT_EQ(client.socket.current_state(), socket_closed);
        EXPECT_TRUE(client.received == bytes + bytes + bytes) << "received " << client.received.size() << " bytes";
    }
}

TEST(TestworldProcessModes, TermSignalStopsItWithClientsConnected) {
    for (int signal_number : {SIGTERM, SIGINT}) {
        SCOPED_TRACE(signal_number);
        net_test::testworld_process world;
        ASSERT_TRUE(world.start({}));
        line_client player;
        ASSERT_TRUE(player.connect(world.port()));
        ASSERT_TRUE(player.log_in("Anna"));
        line_client silent;  // TCP only: the world waits in its TLS handshake
        ASSERT_TRUE(silent.connect(world.port(), false));
        world.process().signal(signal_number);
        int status = -1;
        ASSERT_TRUE(world.process().wait_exit(5000, &status));
        EXPECT_EQ(status, 0);
        EXPECT_EQ(player.read_to_end(), -1);
    }
}

TEST_F(TestworldProcess, CommandLineMistakes) {
    ASSERT_TRUE(start());
    const struct {
        std::vector<std::string> arguments;
        int status;
    } rows[] = {
        {{"--bogus"}, 2},
        {{"--port", "70000"}, 2},
        {{"--port"}, 2},
        {{"--repeat", "0"}, 2},
        {{"--script", "a", "--flood", "b"}, 2},
        {{"--port", "0", "--script", dir.file("missing.txt")}, 1},
        {{"--port", "0", "--flood", dir.file("missing.bin")}, 1},
        {{"--port", std::to_string(world.port())}, 1},  // in use
    };
    for (const auto& row : rows) {
        std::vector<std::string> command = {LANTERN_TESTWORLD_PATH};
        command.insert(command.end(), row.arguments.begin(), row.arguments.end());
        SCOPED_TRACE(row.arguments.front());
        net_test::child_process child;
        ASSERT_TRUE(child.start(command));
        int status = -1;
        ASSERT_TRUE(child.wait_exit(5000, &status));
        EXPECT_EQ(status, row.status);
    }
}

}  // namespace
