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

// Themes and images loaded, settings in a private directory under /tmp, the game host a closed port
// on loopback. Answers the directory, or "" when it could not be made.
inline std::string offline_settings(const char* name) {
    create_themes();
    zorn_load_builtin_images();
    switch_themes();
    std::string pattern = std::string("/tmp/lantern-") + name + "-XXXXXX";
    if (!mkdtemp(pattern.data())) return "";
    LConfig::instance().set_directory(pattern.c_str());
    LConfig::instance().set_server_host("127.0.0.1:1");
    return pattern;
}

// The frame as the application builds it, shown at the top left, making no connection of its own.
inline zorn_mw* make_offline_frame() {
    auto* frame = new zorn_mw(nullptr, wxID_ANY, "Ember Vale", wxPoint(0, 0),
                              wxSize(zorn_frame_width, zorn_frame_height), wxDEFAULT_FRAME_STYLE);
    frame->first_pass_done = 1;  // the test is the server
    frame->Show();
    return frame;
}

class offline_frame_test : public ::testing::Test {
protected:
    void SetUp() override {
        dir = offline_settings("frame");
        ASSERT_FALSE(dir.empty());
        LConfig& config = LConfig::instance();
        if (!config.current()) config.setup_default_config(nullptr);
        config.use_default_preferences();
        frame = make_offline_frame();
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
