// The game server's key pin against real test worlds that keep their TLS key in a file: judged by
// the lines each world received and by the pin file. The worlds are restarted on the same port
// with the same key or a new one, as a server moving to a new certificate (or an impostor) would.
#include <gtest/gtest.h>
#include <wx/button.h>
#include <wx/uiaction.h>

#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "app/dialogs.h"
#include "app/main_frame.h"
#include "config/known_servers.h"
#include "config/lconfig.h"
#include "display/ansi_display.h"
#include "display/ansi_palette.h"
#include "display/text_model.h"
#include "tests/app/e2e_support.h"
#include "tests/app/e2e_world.h"
#include "tests/net/net_test_support.h"
#include "tests/support/gui_main.h"

namespace {

const char warning[] = "WARNING: the game server's identity has changed since your last visit.";

size_t count_of(const std::string& text, const std::string& part) {
    size_t found = 0;
    for (size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) found++;
    return found;
}

class ServerPin : public ::testing::Test {
protected:
    // The pin file is shared by every test of the process; the other tests' worlds share one key,
    // ours have keys of their own and must leave no pin behind for a port used again later.
    void SetUp() override {
        ASSERT_TRUE(e2e::world().ready()) << "the client's start-up failed";
        std::remove(pin_file().c_str());
    }
    void TearDown() override {
        e2e::destroy_frame(frame);
        LConfig::instance().set_server_host("127.0.0.1");
        std::remove(pin_file().c_str());
    }

    // A world on the key file (made at its first start), on the port of the world before it; every
    // start has a log of its own.
    void start_world(const std::string& key) {
        world.reset();  // the old one is stopped first, so its port is free
        world = std::make_unique<net_test::testworld_process>();
        log = dir.file("received" + std::to_string(++starts) + ".log");
        std::vector<std::string> arguments = {"--key", dir.file(key), "--log", log};
        if (port) arguments.insert(arguments.end(), {"--port", std::to_string(port)});
        ASSERT_TRUE(world->start(arguments, dir.file("world.err")));
        port = world->port();
        LConfig::instance().set_server_host(("127.0.0.1:" + std::to_string(port)).c_str());
    }
    // A fresh client; its first tick connects.
    void start_client() {
        e2e::destroy_frame(frame);
        frame = e2e::make_frame();
        ASSERT_TRUE(pump_until([&] { return frame->first_pass_done == 1; }, 5000));
    }
    std::vector<std::string> received() const { return e2e::read_lines(log); }
    bool world_got(const std::string& line) {
        return pump_until([&] {
            for (const std::string& got : received())
                if (got == line) return true;
            return false;
        }, 5000);
    }
    bool shown(const std::string& text) {
        return pump_until([&] { return count_of(e2e::shown_text(frame), text) > 0; }, 5000);
    }
    std::string identity_line() const {
        return std::string("_lantern ") + LConfig::instance().get_uuid() + " " + zorn_client_version;
    }
    void log_in() {
        ASSERT_TRUE(shown("By what name are you known? "));
        ASSERT_TRUE(e2e::type_line(frame, "Pinner"));
        ASSERT_TRUE(shown("Password: "));
        ASSERT_TRUE(e2e::type_line(frame, "hunter2"));
        ASSERT_TRUE(pump_until([&] { return frame->session_state == session_logged_in; }, 5000));
    }
    std::string pin_file() const {
        return std::string(LConfig::instance().directory()) + "/" + zorn_known_servers_file_name;
    }
    // The key pinned for this world's port, as hex; empty when none or the file is damaged.
    std::string pinned() const {
        zorn_known_servers known;
        if (known.load_file(pin_file()) != zorn_known_servers::load_result::loaded) return "";
        const zorn_known_servers::entry* pin = known.find("127.0.0.1", port);
        return pin ? zorn_fingerprint_hex(pin->fingerprint) : "";
    }
    std::string connection_key() const {
        zorn_key_fingerprint key{};
        return frame->socket.peer_key_sha256(key.data()) ? zorn_fingerprint_hex(key) : "";
    }
    // The warning stands, the question is asked, and the world has had nothing: no identity, no
    // server text shown, and no line typed meanwhile gets through.
    void expect_held() {
        ASSERT_TRUE(shown(warning)) << e2e::shown_text(frame);
        EXPECT_EQ(warning_colour(), zorn_pack_rgb(zorn_palette_color(*zorn_current_palette, zorn_ansi_red,
                                                                     zorn_ansi_bright)))
            << "the warning stands in bright red";
        ASSERT_NE(frame->pin_dialog, nullptr);
        EXPECT_TRUE(frame->pin_dialog->IsShown());
        ASSERT_TRUE(e2e::type_line(frame, "my secret password"));
        pump_for(400);
        EXPECT_TRUE(received().empty()) << received().front();
        EXPECT_EQ(e2e::shown_text(frame).find("By what name are you known?"), std::string::npos);
        frame->pin_dialog->Raise();
    }
    // The colour of the warning's text in the main display; 0 when it is in more than one.
    uint32_t warning_colour() const {
        const zorn_textctrl_model& model = frame->main_display->textctrl->model;
        for (int line = 0; line < model.line_count(); ++line) {
            std::string text;
            model.line_text(line, &text);
            if (text.find("WARNING: the game") == std::string::npos) continue;
            uint32_t colour = 0;
            bool mixed = false;
            model.for_each_piece(line, [&](const char* piece, int length, uint32_t rgb) {
                if (std::string(piece, static_cast<size_t>(length)).find_first_not_of(' ') == std::string::npos)
                    return true;
                mixed |= colour != 0 && colour != rgb;
                colour = rgb;
                return true;
            });
            return mixed ? 0 : colour;
        }
        return 0;
    }
    // A real click on a button of the question.
    void click(int id) {
        ASSERT_NE(frame->pin_dialog, nullptr);
        wxWindow* button = frame->pin_dialog->FindWindow(id);
        ASSERT_NE(button, nullptr);
        wxUIActionSimulator mouse;
        mouse.MouseMove(button->GetScreenRect().GetPosition() + button->GetSize() / 2);
        pump_for(50);
        mouse.MouseClick();
        ASSERT_TRUE(pump_until([&] { return !frame->pin_dialog->IsShown(); }, 3000));
    }

    net_test::temp_dir dir;
    std::unique_ptr<net_test::testworld_process> world;
    std::string log;
    int port = 0;
    int starts = 0;
    zorn_mw* frame = nullptr;
};

}  // namespace

TEST_F(ServerPin, FirstVisitPinsAndPlaysAndTheSameKeyAfterARestartIsSilent) {
    start_world("key_a.pem");
    start_client();
    ASSERT_TRUE(shown("Pinned the game server's key for 127.0.0.1:" + std::to_string(port) + ": SHA-256 "));
    ASSERT_TRUE(world_got(identity_line()));
    EXPECT_EQ(received().front(), identity_line());
    log_in();
    const std::string key = connection_key();
    ASSERT_EQ(key.size(), 64u);
    EXPECT_EQ(pinned(), key);
    zorn_key_fingerprint fingerprint{};
    ASSERT_TRUE(zorn_fingerprint_from_hex(key.c_str(), &fingerprint));
    const std::string display = "SHA-256 " + zorn_fingerprint_display(fingerprint);
    EXPECT_EQ(count_of(e2e::shown_text(frame), display), 1u) << "one line shows the key";

    ASSERT_TRUE(e2e::type_line(frame, "//fingerprint"));
    EXPECT_TRUE(shown("Pinned key of 127.0.0.1:" + std::to_string(port) + " (SHA-256):\n  " +
                      zorn_fingerprint_display(fingerprint)));
    EXPECT_TRUE(shown("Key of this connection (SHA-256):\n  " + zorn_fingerprint_display(fingerprint)));
    pump_for(100);
    for (const std::string& line : received()) EXPECT_NE(line, "//fingerprint") << "a client command stays here";

    // The server restarts: a new certificate on the same key.
    e2e::destroy_frame(frame);
    frame = nullptr;
    start_world("key_a.pem");
    start_client();
    ASSERT_TRUE(world_got(identity_line()));
    log_in();
    EXPECT_EQ(connection_key(), key);
    EXPECT_EQ(pinned(), key);
    const std::string text = e2e::shown_text(frame);
    EXPECT_EQ(text.find("Pinned the game server's key"), std::string::npos) << "a known key is silent";
    EXPECT_EQ(text.find(warning), std::string::npos);
}

TEST_F(ServerPin, NewKeySendsNothingUntilTrustedThenPinsIt) {
    start_world("key_a.pem");
    start_client();
    ASSERT_TRUE(world_got(identity_line()));
    const std::string old_key = connection_key();
    ASSERT_EQ(pinned(), old_key);

    e2e::destroy_frame(frame);
    frame = nullptr;
    start_world("key_b.pem");
    start_client();
    expect_held();
    if (HasFatalFailure()) return;
    const std::string text = e2e::shown_text(frame);
    const std::string new_key = connection_key();
    zorn_key_fingerprint old_fingerprint{}, new_fingerprint{};
    ASSERT_TRUE(zorn_fingerprint_from_hex(old_key.c_str(), &old_fingerprint));
    ASSERT_TRUE(zorn_fingerprint_from_hex(new_key.c_str(), &new_fingerprint));
    EXPECT_NE(text.find("Pinned key (SHA-256):\n  " + zorn_fingerprint_display(old_fingerprint)), std::string::npos) << text;
    EXPECT_NE(text.find("Offered key (SHA-256):\n  " + zorn_fingerprint_display(new_fingerprint)), std::string::npos) << text;
    EXPECT_EQ(pinned(), old_key) << "asking stores nothing";

    click(wxID_NO);  // "&Trust New Certificate"
    ASSERT_TRUE(world_got(identity_line()));
    EXPECT_EQ(received().front(), identity_line()) << "the identity is the first line, the typed one is gone";
    EXPECT_EQ(pinned(), new_key);
    log_in();
    for (const std::string& line : received()) EXPECT_NE(line, "my secret password");
}

TEST_F(ServerPin, DisconnectIsTheDefaultAndKeepsTheOldPin) {
    start_world("key_a.pem");
    start_client();
    ASSERT_TRUE(world_got(identity_line()));
    const std::string old_key = pinned();
    ASSERT_EQ(old_key.size(), 64u);

    e2e::destroy_frame(frame);
    frame = nullptr;
    start_world("key_b.pem");
    start_client();
    expect_held();
    if (HasFatalFailure()) return;
    EXPECT_EQ(frame->pin_dialog->FindWindow(wxID_OK)->GetLabel(), "&Disconnect");
    EXPECT_EQ(frame->pin_dialog->FindWindow(wxID_NO)->GetLabel(), "&Trust New Certificate");
    // Enter takes the default answer.
    wxWindow* disconnect = frame->pin_dialog->FindWindow(wxID_OK);
    wxUIActionSimulator keys;
    keys.MouseMove(disconnect->GetScreenRect().GetPosition() + disconnect->GetSize() / 2);
    pump_for(50);
    keys.Char(WXK_RETURN);
    ASSERT_TRUE(shown("Disconnected: the game server's new identity was not trusted."));
    EXPECT_FALSE(frame->pin_dialog->IsShown());
    EXPECT_EQ(frame->socket.current_state(), socket_closed);
    pump_for(300);
    EXPECT_TRUE(received().empty());
    EXPECT_EQ(pinned(), old_key);
}

TEST_F(ServerPin, TruncatedPinFileWarnsAndTrustRewritesIt) {
    start_world("key_a.pem");
    start_client();
    ASSERT_TRUE(world_got(identity_line()));
    const std::string key = pinned();
    ASSERT_EQ(key.size(), 64u);
    e2e::destroy_frame(frame);
    frame = nullptr;

    const std::string whole = net_test::read_file(pin_file());
    net_test::write_file(pin_file(), whole.substr(0, whole.size() / 2));
    start_world("key_a.pem");  // the same key: only the file is wrong
    start_client();
    expect_held();
    if (HasFatalFailure()) return;
    EXPECT_TRUE(shown("is damaged: no pinned key can be trusted."));

    click(wxID_NO);
    ASSERT_TRUE(world_got(identity_line()));
    EXPECT_EQ(pinned(), key);
}
