// lantern-testworld as a process, driven through zorn_tcp_socket on 127.0.0.1.

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <csignal>
#include <functional>
#include <memory>
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

// Waits until the world's stderr holds the text at least count times.
bool wait_for_count(const std::string& path, const std::string& text, int count, int timeout_ms = 5000) {
    for (int waited = 0; waited <= timeout_ms; waited += 10) {
        const std::string content = net_test::read_file(path);
        int found = 0;
        for (size_t at = content.find(text); at != std::string::npos; at = content.find(text, at + 1)) found++;
        if (found >= count) return true;
        usleep(10000);
    }
    return false;
}

// The world still serves: a new player logs in and gets an answer to a ping.
void expect_world_alive(net_test::testworld_process& world) {
    int status = 0;
    EXPECT_FALSE(world.process().wait_exit(0, &status)) << "the world exited with " << status;
    line_client probe;
    ASSERT_TRUE(probe.connect(world.port()));
    ASSERT_TRUE(probe.log_in("Probe"));
    ASSERT_TRUE(probe.send_line("lnping"));
    EXPECT_TRUE(probe.read_until(pong));
}

TEST(TestworldProcess, SessionIsServedAndEveryLineLogged) {
    net_test::temp_dir dir;
    net_test::testworld_process world;
    ASSERT_TRUE(world.start({"--log", dir.file("received.log")}, dir.file("world.err")));
    line_client client;
    ASSERT_TRUE(client.connect(world.port()));
    ASSERT_TRUE(client.log_in("anna"));
    const std::string password_on = "Password: " + std::string("\xff\xfe\x01", 3);
    const std::string password_off = std::string("\xff\xfd\x01", 3) + "\r\n;slogin;Anna;elogin;";
    EXPECT_NE(client.received.find(password_on), std::string::npos);
    EXPECT_NE(client.received.find(password_off), std::string::npos);
    ASSERT_TRUE(client.send_line("n"));
    EXPECT_TRUE(client.read_until("North Road"));
    ASSERT_TRUE(client.send_line("lnping"));
    EXPECT_TRUE(client.read_until(pong));
    ASSERT_TRUE(client.send_line("quit"));
    EXPECT_TRUE(client.read_until(";sevent;logoff;eevent;Goodbye.\r\n"));
    EXPECT_EQ(client.read_to_end(), -1);
    EXPECT_EQ(client.socket.get_read_error(), 0) << "closed by the server";
    client.socket.close();

    world.process().stop();
    EXPECT_EQ(net_test::read_file(dir.file("received.log")),
              "_lantern 0f1e2d3c-test 0.1.0\nanna\nsecret\nn\nlnping\nquit\n");
    EXPECT_NE(net_test::read_file(dir.file("world.err")).find("client _lantern 0f1e2d3c-test 0.1.0"),
              std::string::npos);
}

TEST(TestworldProcess, ManyConnectionsOneAfterAnother) {
    net_test::temp_dir dir;
    net_test::testworld_process world;
    ASSERT_TRUE(world.start({}, dir.file("world.err")));
    for (int round = 0; round < 20; round++) {
        SCOPED_TRACE(round);
        line_client client;
        ASSERT_TRUE(client.connect(world.port()));
        ASSERT_TRUE(client.log_in("Guest"));
        if (round % 2) continue;  // leaves without a word
        ASSERT_TRUE(client.send_line("quit"));
        EXPECT_EQ(client.read_to_end(), -1);
        EXPECT_EQ(client.socket.get_read_error(), 0);
    }
    expect_world_alive(world);
}

TEST(TestworldProcess, ConcurrentPlayersMeet) {
    net_test::temp_dir dir;
    net_test::testworld_process world;
    ASSERT_TRUE(world.start({}, dir.file("world.err")));
    const char* names[] = {"Anna", "Bert", "Cara", "Dirk", "Emma"};
    std::vector<std::unique_ptr<line_client>> clients;
    for (size_t i = 0; i < std::size(names); i++) {
        clients.push_back(std::make_unique<line_client>());
        ASSERT_TRUE(clients.back()->connect(world.port()));
    }
    // Logged in one prompt at a time, all connections open together.
    for (size_t i = 0; i < clients.size(); i++) ASSERT_TRUE(clients[i]->log_in(names[i]));
    ASSERT_TRUE(clients[4]->send_line("who"));
    EXPECT_TRUE(clients[4]->read_until("5 players."));
    ASSERT_TRUE(clients[0]->send_line("say meet at the well;now"));
    for (size_t i = 1; i < clients.size(); i++)
        EXPECT_TRUE(clients[i]->read_until("Anna says '\x1b[36mmeet at the well;;now\x1b[0m'")) << names[i];
}

struct vanishing_case {
    const char* name;
    std::function<void(line_client&)> leave;
};

TEST(TestworldProcess, ClientsThatVanishMidwayDoNotHurtTheWorld) {
    net_test::temp_dir dir;
    net_test::testworld_process world;
    ASSERT_TRUE(world.start({"--log", dir.file("received.log")}, dir.file("world.err")));
    const vanishing_case cases[] = {
        {"in the middle of a tag", [](line_client& c) { c.send("say ;sfoo;half a ta"); }},
        {"in the middle of telnet bytes", [](line_client& c) { c.send(std::string("\xff\xfb", 2)); }},
        {"in the middle of a TLS record",
         [](line_client& c) {
             const std::string partial = std::string("\x17\x03\x03\x40\x00", 5) + random_bytes(100, 1);
             send(c.socket.get_descriptor(), partial.data(), partial.size(), MSG_NOSIGNAL);
         }},
        {"with a reset",
         [](line_client& c) {
             const linger abort_now{1, 0};
             setsockopt(c.socket.get_descriptor(), SOL_SOCKET, SO_LINGER, &abort_now, sizeof abort_now);
         }},
    };
    for (const vanishing_case& entry : cases) {
        SCOPED_TRACE(entry.name);
        line_client client;
        ASSERT_TRUE(client.connect(world.port()));
        ASSERT_TRUE(client.log_in("Gone"));
        entry.leave(client);
        client.socket.close();
    }
    // Before TLS: a handshake abandoned at once, and bytes that are no TLS at all.
    for (int garbage : {0, 4096}) {
        line_client client;
        ASSERT_TRUE(client.connect(world.port(), false));
        if (garbage) {
            ASSERT_TRUE(client.send(random_bytes(garbage, 7)));
        }
        client.socket.close();
    }
    EXPECT_TRUE(wait_for_count(dir.file("world.err"), ": closed\n", 6)) << "every connection seen to its end";
    expect_world_alive(world);
    EXPECT_NE(net_test::read_file(dir.file("received.log")).find("say ;sfoo;half a ta\n"), std::string::npos)
        << "a line cut by the close is still logged";
}

TEST(TestworldProcess, BadBytesInLinesAreHarmless) {
    net_test::temp_dir dir;
    net_test::testworld_process world;
    ASSERT_TRUE(world.start({}, dir.file("world.err")));
    line_client client;
    ASSERT_TRUE(client.connect(world.port()));
    ASSERT_TRUE(client.log_in("Anna"));
    ASSERT_TRUE(client.send(random_bytes(20000, 42) + "\n" + std::string(40000, 'x') + "\n"));
    ASSERT_TRUE(client.send_line(std::string("say \xff\xfe\x01x;y", 10)));
    // 0xFE alone means nothing to the client; without the 0xFF before it, it stays.
    EXPECT_TRUE(client.read_until("You say '\x1b[36m?\xfe?x;;y\x1b[0m'"));
    ASSERT_TRUE(client.send_line("lnping"));
    EXPECT_TRUE(client.read_until(pong));
    expect_world_alive(world);
}

struct script_case {
    const char* script;
    std::vector<std::string> client_lines;
    const char* reply;  // what the client reads before the close
    int exit_status;
    const char* error;  // expected in the world's stderr
};

TEST(TestworldProcess, ScriptModeChecksTheExchange) {
    const script_case cases[] = {
        {"expect hello\nline ok\n", {"hello"}, "ok\r\n", 0, nullptr},
        {"ignore lnlstatus \nexpect _lantern *\nexpect look\nsend \\e[1m;;\\x3B;\n",
         {"_lantern u 1", "lnlstatus 0101", "look"}, "\x1b[1m;;;;", 0, nullptr},
        {"expect hello\nline ok\n", {"bye"}, "", 1, "script failed: line 1: expected 'hello', got 'bye'"},
        {"timeout 100\nexpect hello\n", {}, "", 1, "script failed: line 2: timed out waiting for 'hello'"},
    };
    for (const script_case& entry : cases) {
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
        client.socket.close();
        int status = -1;
        ASSERT_TRUE(world.process().wait_exit(5000, &status));
        EXPECT_EQ(status, entry.exit_status);
        if (entry.error) {
            EXPECT_NE(net_test::read_file(dir.file("world.err")).find(entry.error), std::string::npos) << entry.error;
        }
    }
}

TEST(TestworldProcess, FloodSendsTheFileExactlyThenCloses) {
    net_test::temp_dir dir;
    const std::string bytes = random_bytes(100000, 3);
    net_test::write_file(dir.file("flood.bin"), bytes);
    net_test::testworld_process world;
    ASSERT_TRUE(world.start({"--flood", dir.file("flood.bin"), "--repeat", "3"}, dir.file("world.err")));
    line_client client;
    ASSERT_TRUE(client.connect(world.port()));
    EXPECT_EQ(client.read_to_end(20000), -1);
    EXPECT_EQ(client.socket.get_read_error(), 0);
    EXPECT_TRUE(client.received == bytes + bytes + bytes) << "received " << client.received.size() << " bytes";
}

TEST(TestworldProcess, TermSignalStopsItWithClientsConnected) {
    for (int signal_number : {SIGTERM, SIGINT}) {
        SCOPED_TRACE(signal_number);
        net_test::temp_dir dir;
        net_test::testworld_process world;
        ASSERT_TRUE(world.start({}, dir.file("world.err")));
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

TEST(TestworldProcess, CommandLineMistakes) {
    net_test::temp_dir dir;
    net_test::testworld_process first;
    ASSERT_TRUE(first.start({}, dir.file("first.err")));
    struct row {
        std::vector<std::string> arguments;
        int status;
    };
    const row rows[] = {
        {{"--bogus"}, 2},
        {{"--port", "70000"}, 2},
        {{"--port"}, 2},
        {{"--repeat", "0"}, 2},
        {{"--script", "a", "--flood", "b"}, 2},
        {{"--port", "0", "--script", dir.file("missing.txt")}, 1},
        {{"--port", "0", "--flood", dir.file("missing.bin")}, 1},
        {{"--port", std::to_string(first.port())}, 1},  // in use
    };
    for (const row& r : rows) {
        std::vector<std::string> command = {LANTERN_TESTWORLD_PATH};
        command.insert(command.end(), r.arguments.begin(), r.arguments.end());
        SCOPED_TRACE(r.arguments.front());
        net_test::child_process child;
        ASSERT_TRUE(child.start(command));
        int status = -1;
        ASSERT_TRUE(child.wait_exit(5000, &status));
        EXPECT_EQ(status, r.status);
    }
}

}  // namespace
