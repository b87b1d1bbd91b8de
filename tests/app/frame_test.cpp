// The main frame in-process: its timers and tick, focus transfer, the web link, URL requests,
// the close path up to the countdown, and the clipboard. The exit itself is tested on the real
// program (screenshot_test.sh), since it ends the process.
#include <gtest/gtest.h>
#include <wx/dcclient.h>
#include <wx/dcmemory.h>
#include <wx/font.h>
#include <wx/frame.h>

#include <sys/stat.h>

#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>

#include "app/clipboard.h"
#include "app/main_frame.h"
#include "config/lconfig.h"
#include "input/embedded_window.h"
#include "input/input_window.h"
#include "tests/support/gui_main.h"
#include "theme/builtin_images.h"
#include "theme/font.h"
#include "theme/theme.h"

namespace {

class counting_window : public zorn_embedded_window {
public:
    explicit counting_window(wxWindow* parent) : zorn_embedded_window(parent, wxID_ANY) {}
    void resize_handler(bool) override {}
    void repaint_internal(zorn_bitmap& bitmap) override { bitmap.Clear(zorn_black); }
    bool animation_callback(int elapsed_ms) override {
        total_ms += elapsed_ms;
        return true;
    }
    int total_ms = 0;
};

class Frame : public ::testing::Test {
protected:
    void SetUp() override {
        create_themes();
        zorn_load_builtin_images();
        switch_themes();
        char pattern[] = "/tmp/lantern-frame-XXXXXX";
        ASSERT_NE(mkdtemp(pattern), nullptr);
        dir = pattern;
        old_path = std::getenv("PATH") ? std::getenv("PATH") : "";
        setenv("PATH", (dir + ":" + old_path).c_str(), 1);
        setenv("LANTERN_OPENER_OUT", (dir + "/out").c_str(), 1);
        install_opener("printf '%s\\n' \"$1\" >> \"$LANTERN_OPENER_OUT\"");
        // The first tick connects: to a closed port on loopback, never to the built-in host.
        LConfig::instance().set_directory(dir.c_str());
        LConfig::instance().set_server_host("127.0.0.1:1");
        frame = new zorn_mw(nullptr, wxID_ANY, "Ember Vale", wxDefaultPosition, wxSize(zorn_frame_width, zorn_frame_height),
                            wxDEFAULT_FRAME_STYLE);
        frame->Show();
    }
    void TearDown() override {
        frame->shutdown_countdown = 0;
        frame->Destroy();
        pump_for(30);
        setenv("PATH", old_path.c_str(), 1);
        std::system(("rm -rf '" + dir + "'").c_str());
    }
    void install_opener(const std::string& body) {
        const std::string path = dir + "/xdg-open";
        std::ofstream(path) << "#!/bin/sh\n" << body << "\n";
        chmod(path.c_str(), 0755);
    }
    std::string opened() {
        std::ifstream in(dir + "/out");
        std::stringstream s;
        s << in.rdbuf();
        return s.str();
    }
    void click(int x, int y) {
        wxMouseEvent down(wxEVT_LEFT_DOWN);
        down.SetEventObject(frame);
        down.SetLeftDown(true);
        down.SetPosition(wxPoint(x, y));
        frame->GetEventHandler()->ProcessEvent(down);
    }
    zorn_mw* frame = nullptr;
    std::string dir, old_path;
};

TEST_F(Frame, NamesTimersAndGlobalPointer) {
    EXPECT_EQ(zorn_main_frame(), frame);
    EXPECT_EQ(zorn_get_frame_link(), frame);
    EXPECT_EQ(frame->GetName(), "zorn frame Ember Vale");
    EXPECT_TRUE(frame->tick_timer.IsRunning());
    EXPECT_EQ(frame->tick_timer.GetInterval(), 20);
    EXPECT_EQ(frame->ping_timer.GetInterval(), 15000);
    EXPECT_EQ(frame->autosave_timer.GetInterval(), 300000);
    EXPECT_EQ(frame->tick_timer.GetId(), zorn_tick_timer_id);
    EXPECT_EQ(frame->input_window->GetName(), "main input window");
    EXPECT_EQ(frame->session_state, session_none);
    EXPECT_EQ(constructor_finished, 1);
}

TEST_F(Frame, TickRunsTheAnimationList) {
    auto* window = new counting_window(frame);
    animation_add(window);
    EXPECT_TRUE(pump_until([&] { return window->total_ms >= 100; }));
    EXPECT_EQ(window->total_ms % 20, 0);
    animation_remove(window);
}

TEST_F(Frame, BackgroundCoversTheClientInSteps) {
    EXPECT_TRUE(pump_until([&] { return frame->link_rect.width > 0; }));  // painted once
    ASSERT_NE(frame->background.bitmap, nullptr);
    const wxSize client = frame->GetClientSize();
    EXPECT_GE(frame->background.width, client.GetWidth());
    EXPECT_GE(frame->background.height, client.GetHeight());
    EXPECT_EQ(frame->background.width % 256, 0);
    EXPECT_EQ(frame->background.height % 256, 0);
    const int old_width = frame->background.width;
    frame->SetClientSize(old_width + 10, 300);
    pump_for(50);
    EXPECT_EQ(frame->background.width, zorn_background_round(old_width + 10));
    EXPECT_GE(frame->background.height, client.GetHeight());
}

TEST_F(Frame, WebLinkBlockSitsTopLeftInLayoutTwo) {
    ASSERT_TRUE(pump_until([&] { return frame->link_rect.width > 0; }));
    wxFont link_font(9, wxFONTFAMILY_TELETYPE, wxFONTSTYLE_NORMAL, wxFONTWEIGHT_NORMAL, true);
    wxBitmap scratch(10, 10);
    wxMemoryDC dc(scratch);
    dc.SetFont(link_font);
    wxCoord text_width = 0, text_height = 0;
    dc.GetTextExtent(wxString::FromUTF8(zorn_web_host()), &text_width, &text_height);
    EXPECT_EQ(frame->link_rect.x, 0);
    EXPECT_EQ(frame->link_rect.y, 0);
    EXPECT_EQ(frame->link_rect.width, std::max(192, (int)text_width));
    EXPECT_EQ(frame->link_rect.height, text_height + 43 - 5);
}

TEST_F(Frame, LinkClickOpensTheMainPageOnlyStrictlyInside) {
    ASSERT_TRUE(pump_until([&] { return frame->link_rect.width > 0; }));
    const auto r = frame->link_rect;
    click(r.x, r.y + 5);                 // left edge
    click(r.x + 5, r.y + r.height);      // bottom edge
    click(r.x + r.width, r.y + 5);       // right edge
    EXPECT_EQ(opened(), "");
    click(r.x + 1, r.y + 1);
    EXPECT_EQ(opened(), std::string("http://") + zorn_web_host() + "/?ln\n");
}

TEST_F(Frame, OpenUrlWaitsForTheTick) {
    frame->open_url("http://a.example/x?y=1");
    EXPECT_EQ(url_request_set, 1);
    EXPECT_STREQ(url_request, "http://a.example/x?y=1");
    EXPECT_TRUE(pump_until([&] { return url_request_set == 0; }));
    EXPECT_EQ(opened(), "http://a.example/x?y=1\n");

    const std::string long_url = "http://a.example/" + std::string(2000, 'z');
    frame->open_url(long_url.c_str());
    EXPECT_EQ(std::string(url_request), long_url.substr(0, zorn_url_request_size - 1));
    url_request_set = 0;
}

TEST_F(Frame, FailedBrowserQueuesTheApology) {
    install_opener("kill -KILL $$");
    EXPECT_FALSE(frame->open_browser("http://b.example/"));
    EXPECT_EQ(frame->pending_message_set, 1);
    EXPECT_STREQ(frame->pending_message.c_str(),
                 "\n\nSorry, but I can't seem open your browser.\n\nhttp://b.example/\n\n");
    EXPECT_TRUE(pump_until([&] { return frame->pending_message_set == 0; }));
    EXPECT_TRUE(frame->pending_message.empty());
}

TEST_F(Frame, CloseBoxVetoesAndStartsTheCountdown) {
    wxCloseEvent close(wxEVT_CLOSE_WINDOW, frame->GetId());
    close.SetEventObject(frame);
    close.SetCanVeto(true);
    frame->GetEventHandler()->ProcessEvent(close);
    EXPECT_TRUE(close.GetVeto());
    EXPECT_EQ(frame->shutdown_countdown, zorn_shutdown_ticks);
    frame->shutdown_countdown = 0;  // the exit step would end this test process
}

TEST_F(Frame, FocusTransfer) {
    EXPECT_FALSE(frame->transfer_focus_main(nullptr));
    deferred_focus = 0;
    auto* child = new counting_window(frame->input_window);
    EXPECT_TRUE(frame->transfer_focus_main(child));
    EXPECT_EQ(deferred_focus, 1);
    EXPECT_TRUE(pump_until([] { return deferred_focus == 0; }));  // the tick repeats it once

    auto* floating = new wxFrame(frame, wxID_ANY, "float", wxDefaultPosition, wxSize(100, 100),
                                 wxDEFAULT_FRAME_STYLE | wxFRAME_FLOAT_ON_PARENT);
    auto* inside = new counting_window(floating);
    EXPECT_FALSE(frame->transfer_focus_main(inside));
    EXPECT_EQ(deferred_focus, 0);

    auto* other = new wxFrame(nullptr, wxID_ANY, "other", wxDefaultPosition, wxSize(100, 100));
    auto* elsewhere = new counting_window(other);
    EXPECT_TRUE(frame->transfer_focus_main(elsewhere));  // its parent takes the focus
    EXPECT_FALSE(frame->transfer_focus_main(other));     // no parent at all
    other->Destroy();
}

TEST_F(Frame, InputWindowIsPlacedByTheLayout) {
    const wxSize client = frame->GetClientSize();
    EXPECT_EQ(frame->input_window->GetSize().GetHeight(), 48);
    EXPECT_GT(frame->input_window->GetSize().GetWidth(), client.GetWidth() / 2);
    EXPECT_LE(frame->input_window->GetPosition().y + 48, client.GetHeight());
}

TEST_F(Frame, ClipboardRoundTrip) {
    set_clipboard_data("take the lantern");
    wxString text;
    ASSERT_TRUE(get_clipboard_data(&text));
    EXPECT_EQ(text, "take the lantern");
}

}  // namespace
