// A 5 MB flood of numbered game text from a scripted test world: every line reaches the main
// display whole and in order, and the client still takes a typed command afterwards. How long it
// takes is printed for information only; the speed figures come from bench/flood_bench.
#include <gtest/gtest.h>

#include <chrono>
#include <cstdio>
#include <string>

#include <wx/stattext.h>
#include <wx/textctrl.h>
#include <wx/uiaction.h>

#include "app/main_frame.h"
#include "config/lconfig.h"
#include "display/ansi_display.h"
#include "display/find_strip.h"
#include "input/input_window.h"
#include "tests/app/e2e_support.h"
#include "tests/app/e2e_world.h"
#include "tests/net/net_test_support.h"
#include "tests/support/gui_main.h"
#include "testworld/flood_text.h"

namespace {

constexpr size_t flood_bytes = 5u << 20;

TEST(EndToEndFlood, FiveMegabytesAllShownInOrderAndTheClientStillListens) {
    ASSERT_TRUE(e2e::world().ready());
    net_test::temp_dir dir;
    const std::string flood = testworld::make_flood_text(flood_bytes);
    const size_t lines = testworld::count_flood_lines(flood);
    net_test::write_file(dir.file("flood.txt"), flood);
    net_test::write_file(dir.file("flood.script"),
                         "ignore lnlstatus\\s\n"
                         "expect _lantern *\n"
                         "sendfile flood.txt\n"
                         "line \\e[1mEnd of the flood.\\e[0m\n"
                         "timeout 20000\n"
                         "expect look\n"
                         "line The dust settles.\n"
                         "close\n");
    net_test::testworld_process flood_world;
    ASSERT_TRUE(flood_world.start({"--script", dir.file("flood.script"), "--once", "--log", dir.file("received.log")},
                                  dir.file("world.err")));

    // This frame talks to the flood world; the others of the process to the shared one.
    LConfig& config = LConfig::instance();
    const int shared_port = config.get_server_port_setting();
    config.set_server_port(flood_world.port());
    zorn_mw* frame = e2e::make_frame();
    e2e::tick_probe probe(frame);
    pump_until([&] { return frame->first_pass_done != 0; }, 5000);  // the first tick connects
    config.set_server_port(shared_port);

    const auto start = std::chrono::steady_clock::now();
    const bool ended = pump_until(
        [&] { return e2e::shown_text(frame).find("End of the flood.") != std::string::npos; }, 120000);
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    std::printf("flood of %zu bytes, %zu lines: %.2f s (polled), %lld ticks, longest tick %.1f ms\n", flood.size(),
                lines, seconds, probe.ticks, probe.longest_tick_us / 1000.0);
    ASSERT_TRUE(ended);
    std::string problem;
    EXPECT_TRUE(testworld::check_flood_lines(e2e::shown_text(frame), lines, &problem)) << problem;

    ASSERT_TRUE(e2e::type_line(frame, "look"));
    EXPECT_TRUE(pump_until(
        [&] { return e2e::shown_text(frame).find("Connection closed by server.") != std::string::npos; }, 20000));
    EXPECT_NE(e2e::shown_text(frame).find("The dust settles."), std::string::npos);
    int status = -1;
    EXPECT_TRUE(flood_world.process().wait_exit(5000, &status));
    EXPECT_EQ(status, 0) << net_test::read_file(dir.file("world.err"));

    probe.detach();
    e2e::destroy_frame(frame);
}

// The player searches, and 5 MB of text from the world comes in while the find strip is open: the
// count shown at the end is that of every hit in the scrollback, each hit is where the text has
// it, and the view stays on the hit the player jumped to.
TEST(EndToEndFlood, SearchDuringAFloodStaysRight) {
    ASSERT_TRUE(e2e::world().ready());
    net_test::temp_dir dir;
    net_test::write_file(dir.file("flood.txt"), testworld::make_flood_text(flood_bytes, 7));
    net_test::write_file(dir.file("flood.script"),
                         "ignore lnlstatus\\s\n"
                         "expect _lantern *\n"
                         "line The ~1234 stone marks the road.\n"
                         "timeout 20000\n"
                         "expect go\n"
                         "sendfile flood.txt\n"
                         "line End of the flood.\n"
                         "timeout 20000\n"
                         "expect bye\n"
                         "close\n");
    net_test::testworld_process flood_world;
    ASSERT_TRUE(flood_world.start({"--script", dir.file("flood.script"), "--once"}, dir.file("world.err")));
    LConfig& config = LConfig::instance();
    const int shared_port = config.get_server_port_setting();
    config.set_server_port(flood_world.port());
    zorn_mw* frame = e2e::make_frame();
    pump_until([&] { return frame->first_pass_done != 0; }, 5000);
    config.set_server_port(shared_port);
    ASSERT_TRUE(pump_until([&] { return e2e::shown_text(frame).find("stone marks") != std::string::npos; }, 10000));

    zorn_find_strip* strip = frame->main_display->find_strip;
    zorn_line_edit& editor = frame->input_window->line_edit;
    wxUIActionSimulator keys;
    editor.SetFocus();
    keys.MouseMove(editor.GetScreenRect().GetPosition() + wxPoint(8, editor.GetSize().GetHeight() / 2));
    pump_for(20);
    keys.Char('f', wxMOD_CONTROL);
    ASSERT_TRUE(pump_until([&] { return wxWindow::FindFocus() == strip->box; }));
    keys.Text("~1234");
    ASSERT_TRUE(pump_until([&] { return strip->count_label->GetLabel() == "1 of 1"; }));
    const int locked_at = frame->main_display->textctrl->model.scroll_line;

    frame->send_line("go");  // the world's cue for the flood
    ASSERT_TRUE(pump_until(
        [&] { return e2e::shown_text(frame).find("End of the flood.") != std::string::npos; }, 120000));
    pump_for(50);
    const std::string shown = e2e::shown_text(frame);
    size_t expected = 0;
    for (size_t at = shown.find("~1234"); at != std::string::npos; at = shown.find("~1234", at + 5)) ++expected;
    ASSERT_GT(expected, 2u);
    EXPECT_EQ(strip->count_label->GetLabel().ToStdString(), "1 of " + std::to_string(expected));
    ASSERT_EQ(strip->search.count(), expected);
    for (size_t i = 0; i < expected; ++i) EXPECT_EQ(shown.substr(strip->search.hit_start(i), 5), "~1234") << i;
    EXPECT_EQ(frame->main_display->textctrl->model.scroll_line, locked_at);
    EXPECT_FALSE(frame->main_display->is_following());

    frame->send_line("bye");
    EXPECT_TRUE(pump_until(
        [&] { return e2e::shown_text(frame).find("Connection closed by server.") != std::string::npos; }, 20000));
    int status = -1;
    EXPECT_TRUE(flood_world.process().wait_exit(10000, &status));
    EXPECT_EQ(status, 0) << net_test::read_file(dir.file("world.err"));
    e2e::destroy_frame(frame);
}

}  // namespace
