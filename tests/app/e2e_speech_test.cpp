// The screen reader against scripted test worlds: a recording speech output gets exactly the new
// lines in order (chat led by its channel, no password, nothing typed), a 5 MB flood gives bounded
// speech that counts what it skipped, and with speech-dispatcher absent the client runs as before.
#include <gtest/gtest.h>
#include <wx/menu.h>
#include <wx/textctrl.h>
#include <wx/uiaction.h>

#include <chrono>
#include <cstdio>
#include <string>
#include <vector>

#include "display/reader_window.h"
#include "display/speechd_output.h"
#include "app/main_frame.h"
#include "app/screen_reader.h"
#include "config/lconfig.h"
#include "input/input_window.h"
#include "tests/app/e2e_support.h"
#include "tests/app/e2e_world.h"
#include "tests/net/net_test_support.h"
#include "tests/support/gui_main.h"
#include "testworld/flood_text.h"

namespace {

std::vector<std::string> said;
// Speaking time per character of the recorder; 0: always idle.
std::chrono::microseconds per_character{0};

struct recorder : zorn_speech_output {
    std::chrono::steady_clock::time_point busy_until{};
    void speak(const std::string& text) override {
        said.push_back(text);
        busy_until = std::chrono::steady_clock::now() + per_character * static_cast<int>(text.size());
    }
    void silence() override { busy_until = {}; }
    int pending() const override { return std::chrono::steady_clock::now() < busy_until ? 1 : 0; }
};

std::unique_ptr<zorn_speech_output> make_recorder() { return std::make_unique<recorder>(); }
std::unique_ptr<zorn_speech_output> make_missing() { return zorn_open_speechd("libspeechd-not-installed.so.9"); }

// One key with modifiers into the line editor through the X server.
void press_key(zorn_mw* frame, int key, int modifiers) {
    zorn_line_edit& editor = frame->input_window->line_edit;
    frame->Raise();
    editor.SetFocus();
    wxUIActionSimulator keys;
    keys.MouseMove(editor.GetScreenRect().GetPosition() + wxPoint(8, editor.GetSize().GetHeight() / 2));
    pump_for(20);
    keys.Char(key, modifiers);
    pump_for(20);
}

bool said_line(const std::string& line) {
    for (const std::string& s : said)
        if (s == line) return true;
    return false;
}

// A frame with the screen reader on, talking to a world of its own.
class SpeechEndToEnd : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(e2e::world().ready());
        said.clear();
        shared_port = LConfig::instance().get_server_port_setting();
        per_character = std::chrono::microseconds(0);
        zorn_speech_output_factory = make_recorder;
    }
    void TearDown() override {
        if (frame) e2e::destroy_frame(frame);
        LConfig& config = LConfig::instance();
        config.set_screen_reader(0);
        config.set_server_port(shared_port);
        zorn_speech_output_factory = saved_factory;
    }
    void start(const std::string& script_text) {
        net_test::write_file(dir.file("world.script"), script_text);
        ASSERT_TRUE(world.start({"--script", dir.file("world.script"), "--once"}, dir.file("world.err")));
        LConfig& config = LConfig::instance();
        config.set_server_port(world.port());
        config.set_screen_reader(1);
        frame = e2e::make_frame();
        pump_until([&] { return frame->first_pass_done != 0; }, 5000);
        config.set_server_port(shared_port);
    }

    net_test::temp_dir dir;
    net_test::testworld_process world;
    zorn_mw* frame = nullptr;
    int shared_port = 0;
    std::unique_ptr<zorn_speech_output> (*saved_factory)() = zorn_speech_output_factory;
};

TEST_F(SpeechEndToEnd, RecorderGetsExactlyTheNewLinesChannelFirstNoPassword) {
    start("ignore lnlstatus\\s\n"
          "ignore lnping\n"
          "expect _lantern *\n"
          "line \\e[1mThe reader test\\e[0m begins.\n"
          "send By what name are you known? \n"
          "expect Reader\n"
          "send \\r\\nPassword: \\xff\\xfe\\x01\n"
          "expect sesame\n"
          "send \\xff\\xfd\\x01\\r\\n\n"
          "send ;schdiv;gossip;echdiv;Wren: \\e[36mhello\\e[0m there\\r\\n;tchudiv;\n"
          "line Back in the \\e[32mmain\\e[0m text.\n"
          "send \\e[33mThe last line.\\e[0m\\r\\n> \n"
          "expect look\n"
          "close\n");
    ASSERT_NE(frame->screen_reader, nullptr);
    ASSERT_TRUE(pump_until([&] { return said_line("By what name are you known? "); }, 10000));
    ASSERT_TRUE(e2e::type_line(frame, "Reader"));
    ASSERT_TRUE(pump_until([&] { return said_line("Password: "); }, 10000));
    ASSERT_TRUE(e2e::type_line(frame, "sesame"));
    ASSERT_TRUE(pump_until([&] { return said_line("The last line."); }, 10000));
    ASSERT_TRUE(e2e::type_line(frame, "look"));
    const std::string last = "To log in again, type 'connect' or use the File / Connect menu option.";
    ASSERT_TRUE(pump_until([&] { return said_line(last); }, 10000));
    pump_for(100);

    const std::vector<std::string> expected = {
        "Screen reader on.",
        "Connecting to server...",
        "(a first key pinned)",
        "The reader test begins.",
        "By what name are you known? ",
        "Password: ",
        "gossip: Wren: hello there",
        "Back in the main text.",
        "The last line.",
        "Connection closed by server.",
        last,
    };
    // The client pins a server key it sees for the first time, and says so with the key.
    std::vector<std::string> expected_here = expected;
    const std::string pinned = "Pinned the game server's key for 127.0.0.1:";
    if (said.size() > 2 && said[2].compare(0, pinned.size(), pinned) == 0)
        expected_here[2] = said[2];
    else
        expected_here.erase(expected_here.begin() + 2);
    EXPECT_EQ(said, expected_here);

    // The mirror holds the same text, without escape codes.
    const std::string mirror = frame->screen_reader->mirror->GetValue().utf8_string();
    EXPECT_NE(mirror.find("Back in the main text.\nThe last line.\n> \n"), std::string::npos) << mirror;
    EXPECT_EQ(mirror.find('\x1b'), std::string::npos);
    EXPECT_EQ(mirror.find("sesame"), std::string::npos);
}

TEST_F(SpeechEndToEnd, FloodGivesBoundedSpeechAndCountsEverySkippedLine) {
    const std::string flood = testworld::make_flood_text(5u << 20);
    const size_t flood_lines = testworld::count_flood_lines(flood);
    net_test::write_file(dir.file("flood.txt"), flood);
    per_character = std::chrono::microseconds(200);  // a fast synthesizer: 5,000 characters a second
    start("ignore lnlstatus\\s\n"
          "expect _lantern *\n"
          "sendfile flood.txt\n"
          "line End of the flood.\n"
          "close\n");
    const std::string last = "To log in again, type 'connect' or use the File / Connect menu option.";
    ASSERT_TRUE(pump_until([&] { return said_line(last); }, 120000));

    size_t bytes = 0, spoken_lines = 0;
    long long skipped = 0;
    const std::string head = "Skipped ";
    for (const std::string& s : said) {
        bytes += s.size();
        if (s.compare(0, head.size(), head) == 0)
            skipped += std::stoll(s.substr(head.size()));
        else if (s != "Screen reader on.")
            ++spoken_lines;
    }
    std::printf("flood of %zu lines: %zu utterances, %zu bytes of speech, %lld lines skipped\n", flood_lines,
                said.size(), bytes, skipped);
    EXPECT_LT(bytes, 64u * 1024) << "speech must not queue the flood";
    EXPECT_GT(skipped, static_cast<long long>(flood_lines / 2));
    // Every line is either said or counted. The display's own parser tells which lines there were:
    // the flood and the client's messages (connecting, a first key pinned, the disconnect).
    long long shown_lines = 0;
    const std::string shown = e2e::shown_text(frame);
    for (size_t at = 0; at < shown.size();) {
        size_t end = shown.find('\n', at);
        if (end == std::string::npos) end = shown.size();
        shown_lines += zorn_reader_speakable(shown.substr(at, end - at));
        at = end + 1;
    }
    EXPECT_GE(shown_lines, static_cast<long long>(flood_lines) + 4);
    EXPECT_EQ(static_cast<long long>(spoken_lines) + skipped, shown_lines);
    EXPECT_TRUE(said_line("End of the flood."));
    EXPECT_LE(frame->screen_reader->buffer.line_count(), zorn_mirror_buffer::max_lines);
}

TEST_F(SpeechEndToEnd, WithoutSpeechDispatcherTheClientRunsAsBefore) {
    zorn_speech_output_factory = make_missing;
    start("ignore lnlstatus\\s\n"
          "expect _lantern *\n"
          "line Nobody speaks, \\e[1meverything\\e[0m shows.\n"
          "expect look\n"
          "close\n");
    ASSERT_NE(frame->screen_reader, nullptr);
    EXPECT_EQ(frame->screen_reader->speech.output(), nullptr);
    ASSERT_TRUE(pump_until(
        [&] { return e2e::shown_text(frame).find("Nobody speaks, everything shows.") != std::string::npos; }, 10000));
    ASSERT_TRUE(pump_until(
        [&] {
            return frame->screen_reader->mirror->GetValue().utf8_string().find("Nobody speaks, everything shows.") !=
                   std::string::npos;
        },
        5000));
    ASSERT_TRUE(e2e::type_line(frame, "look"));
    EXPECT_TRUE(pump_until(
        [&] { return e2e::shown_text(frame).find("Connection closed by server.") != std::string::npos; }, 10000));
    EXPECT_TRUE(said.empty());
}

// Ctrl-Shift-6 turns the reader on and off through the real keyboard; the menu check follows.
TEST_F(SpeechEndToEnd, CtrlShiftSixTogglesTheReaderAndItsMenuCheck) {
    start("ignore lnlstatus\\s\n"
          "expect _lantern *\n"
          "expect look\n"
          "close\n");
    LConfig::instance().set_screen_reader(0);
    ASSERT_EQ(frame->screen_reader, nullptr);
    EXPECT_FALSE(frame->GetMenuBar()->IsChecked(130));
    press_key(frame, '6', wxMOD_CONTROL | wxMOD_SHIFT);
    ASSERT_TRUE(pump_until([&] { return frame->screen_reader != nullptr; }, 3000));
    EXPECT_TRUE(frame->GetMenuBar()->IsChecked(130));
    EXPECT_TRUE(frame->screen_reader->mirror->IsShown());
    EXPECT_TRUE(said_line("Screen reader on."));
    press_key(frame, '6', wxMOD_CONTROL | wxMOD_SHIFT);
    ASSERT_TRUE(pump_until([&] { return frame->screen_reader == nullptr; }, 3000));
    EXPECT_FALSE(frame->GetMenuBar()->IsChecked(130));
}

}  // namespace
