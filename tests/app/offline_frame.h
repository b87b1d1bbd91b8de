#pragma once
// A fixture for frame tests without a server: the main frame as the application builds it, with a
// private configuration directory and no connection; the test plays the server by feeding bytes,
// and a logged-in character "Tester" to begin with.

#include <gtest/gtest.h>
#include <wx/uiaction.h>

#include <cstdlib>
#include <string>

#include "app/main_frame.h"
#include "config/lconfig.h"
#include "tests/support/gui_main.h"
#include "theme/builtin_images.h"
#include "theme/theme.h"

class offline_frame_test : public ::testing::Test {
protected:
    void SetUp() override {
        create_themes();
        zorn_load_builtin_images();
        switch_themes();
        char pattern[] = "/tmp/lantern-frame-XXXXXX";
        ASSERT_NE(mkdtemp(pattern), nullptr);
        dir = pattern;
        LConfig& config = LConfig::instance();
        config.set_directory(dir.c_str());
        config.set_server_host("127.0.0.1:1");
        if (!config.current()) config.setup_default_config(nullptr);
        config.use_default_preferences();
        frame = new zorn_mw(nullptr, wxID_ANY, "Ember Vale", wxPoint(0, 0), wxSize(zorn_frame_width, zorn_frame_height),
                            wxDEFAULT_FRAME_STYLE);
        frame->first_pass_done = 1;  // offline: the tests are the server
        frame->Show();
        server(";slogin;Tester;elogin;");
    }
    void TearDown() override {
        frame->Destroy();
        pump_for(50);
        std::system(("rm -rf '" + dir + "'").c_str());
    }
    // Bytes from the server, as one read block.
    void server(const std::string& bytes) {
        frame->begin_block();
        frame->process_socket_data(reinterpret_cast<const unsigned char*>(bytes.data()), static_cast<int>(bytes.size()));
        frame->end_block();
    }
    // A left click in the middle of the window, through the X server.
    void click(wxWindow* window) {
        const wxRect r = window->GetScreenRect();
        keys.MouseMove(r.x + r.width / 2, r.y + r.height / 2);
        pump_for(20);
        keys.MouseClick();
        pump_for(30);
    }

    wxUIActionSimulator keys;
    zorn_mw* frame = nullptr;
    std::string dir;
};
