// The frame's side of the session without a network: server bytes handed straight to the stream
// parser, typed lines to the command interpreter, and what reaches the display and the outgoing
// buffer.
#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <string>

#include "app/main_frame.h"
#include "config/debug_log.h"
#include "config/lconfig.h"
#include "display/ansi_display.h"
#include "tests/support/gui_main.h"
#include "tests/support/log_capture.h"
#include "theme/builtin_images.h"
#include "theme/theme.h"

namespace {

class Session : public ::testing::Test {
protected:
    void SetUp() override {
        create_themes();
        zorn_load_builtin_images();
        switch_themes();
        char pattern[] = "/tmp/lantern-session-XXXXXX";
        ASSERT_NE(mkdtemp(pattern), nullptr);
        dir = pattern;
        LConfig::instance().set_directory(dir.c_str());
        LConfig::instance().set_server_host("127.0.0.1:1");
        frame = new zorn_mw(nullptr, wxID_ANY, "Ember Vale", wxDefaultPosition,
                            wxSize(zorn_frame_width, zorn_frame_height), wxDEFAULT_FRAME_STYLE);
        frame->first_pass_done = 1;  // no automatic connect: the tests feed the parser themselves
        frame->Show();
    }
    void TearDown() override {
        frame->Destroy();
        pump_for(30);
        std::system(("rm -rf '" + dir + "'").c_str());
    }
    void server(const std::string& bytes) {
        frame->process_socket_data(reinterpret_cast<const unsigned char*>(bytes.data()),
                                   static_cast<int>(bytes.size()));
    }
    std::string shown() const { return frame->main_display->textctrl->model.raw_text(); }
    std::string sent() const { return std::string(frame->outgoing.bytes(), static_cast<size_t>(frame->outgoing.count())); }

    zorn_mw* frame = nullptr;
    std::string dir;
};

}  // namespace

TEST_F(Session, PlainTextAndColoursReachTheMainDisplay) {
    server("\x1b[1m\x1b[33mEmber Vale\x1b[0m banner;;line\r\n");
    EXPECT_NE(shown().find("Ember Vale banner;line"), std::string::npos);
    EXPECT_EQ(frame->main_display->ansi.text_received, 1);
}

TEST_F(Session, LoginSetsTitleStateAndSendsTheStatusLineAtTheNextTick) {
    server(";slogin;Aria\nextra;elogin;");
    EXPECT_EQ(frame->GetTitle(), "Ember Vale - Player Aria");
    EXPECT_EQ(frame->session_state, session_logged_in);
    EXPECT_STREQ(LConfig::instance().get_name(), "Aria");
    // Offline the line itself is dropped; the test world's session checks that it arrives.
    EXPECT_EQ(frame->client_status_dirty, 1);
    EXPECT_TRUE(pump_until([&] { return frame->client_status_dirty == 0; }));
}

TEST_F(Session, EmptyLoginKeepsTitleAndRecord) {
    server(";tlogin;");
    EXPECT_EQ(frame->GetTitle(), "Ember Vale");
    EXPECT_EQ(frame->session_state, session_logged_in);
}

TEST_F(Session, SessionEventsAndTheLagMeter) {
    server(";sevent;newcreate;eevent;");
    EXPECT_EQ(frame->session_state, session_creating);
    server(";sevent;logoff;eevent;");
    EXPECT_EQ(frame->session_state, session_logging_off);

    server(";tlogin;");
    frame->process_user_command("lnping", 0);
    EXPECT_NE(sent().find("lnping\n"), std::string::npos);
    frame->ping_sent_time -= 250000;  // as if the answer took a quarter of a second
    server(";sevent;lnpong;eevent;");
    EXPECT_GE(frame->last_ping_ms, 250);
    EXPECT_LT(frame->last_ping_ms, 5000);
    const int measured = frame->last_ping_ms;
    server(";sevent;lnpong ;eevent;");  // a trailing blank makes it another event
    EXPECT_EQ(frame->last_ping_ms, measured);
}

TEST_F(Session, DivertToAnUnknownWindowStaysInTheMainDisplay) {
    server(";sdivert;nosuch;edivert;after the divert");
    EXPECT_EQ(frame->text_target, frame->main_display);
    const std::string text = shown();
    const size_t sorry = text.find("Sorry, no popup window by that name has been defined.");
    ASSERT_NE(sorry, std::string::npos);
    EXPECT_NE(text.find("after the divert", sorry), std::string::npos);
}

TEST_F(Session, ConfigTagsGoThroughTheSetters) {
    LConfig::instance().set_exp_display(1);
    frame->client_status_dirty = 0;
    server(";sconfig;exp_bar disable;econfig;");
    EXPECT_EQ(LConfig::instance().get_exp_display(), 0);
    EXPECT_EQ(frame->client_status_dirty, 1);
    server(";sconfig;exp_bar flash;econfig;");  // no flash for this panel: only a log line
    EXPECT_EQ(LConfig::instance().get_exp_display(), 0);
}

TEST_F(Session, UuidTagReplacesTheIdentity) {
    server(";suuid;0123456789abcdef0123456789abcdef;euuid;");
    EXPECT_STREQ(LConfig::instance().get_uuid(), "0123456789abcdef0123456789abcdef");
}

TEST_F(Session, PasswordModeFollowsTheServerAndKeepsTheLineOutOfTheEcho) {
    LConfig::instance().set_local_echo(1);
    server("Password: \xff\xfe\x01");
    EXPECT_FALSE(frame->echo_allowed());
    frame->process_user_command("hunter2", 1);
    EXPECT_EQ(shown().find("hunter2"), std::string::npos);
    server("\xff\xfd\x01");
    EXPECT_TRUE(frame->echo_allowed());
}

TEST_F(Session, EchoedLinesAndClientCommandsOffline) {
    LConfig::instance().set_local_echo(1);
    LConfig::instance().set_cmd_separator(0);
    frame->process_user_command("look", 1);
    EXPECT_NE(shown().find(">look<"), std::string::npos);
    EXPECT_EQ(sent(), "");  // offline: an unknown word is dropped

    frame->process_user_command("//echo hello there", 0);
    EXPECT_NE(shown().find("\nhello there"), std::string::npos);
    frame->process_user_command("//commands", 0);
    EXPECT_NE(shown().find("Lantern Control Commands"), std::string::npos);
}

TEST_F(Session, DisconnectSaysWhyOnceAndHowToComeBack) {
    frame->process_user_command("//disc", 0);
    const std::string text = shown();
    const size_t first = text.find("Disconnecting.");
    ASSERT_NE(first, std::string::npos);
    EXPECT_EQ(text.find("Disconnecting.", first + 1), std::string::npos);
    EXPECT_NE(text.find("To log in again, type 'connect' or use the File / Connect menu option."), std::string::npos);
    EXPECT_EQ(frame->session_state, session_none);
}

TEST_F(Session, ConnectToAClosedPortReportsAndStaysUsable) {
    frame->process_user_command("connect", 1);
    EXPECT_NE(shown().find("Unable to connect to server."), std::string::npos);
    EXPECT_NE(frame->socket.current_state(), socket_connected);
}

TEST_F(Session, UnknownTagIsOneLogLine) {
    log_capture log(2);
    server(";snosuchtag;payload;enosuchtag;");
    EXPECT_EQ(log.text(), "Warning in zorn_mw::process_tagged_data(), no handler for tag 'nosuchtag'.\n");
}

// Every branch of //debugfile, through the command line as the player types it. The log is the
// process's own, so the test leaves it closed and nameless as it found it.
TEST_F(Session, DebugFileCommandKeepsALogWheneverItCan) {
    if (zorn_client_debug_logfile_is_open()) zorn_client_debug_logfile_close();
    const auto said = [&](const std::string& text) { return shown().find(text) != std::string::npos; };
    const std::string bad_path = dir + "/no/such/dir/log.txt";

    // Nothing logged yet: the automatic name is the old one, and it takes over again.
    const std::string automatic = "lantern-session-test-" + std::to_string(getpid()) + ".txt";
    zorn_client_set_autoopen_debug_logfile_name(automatic.c_str());
    frame->process_user_command(("//debugfile " + bad_path).c_str(), 0);
    EXPECT_TRUE(said("Unable to open new logfile, old logfile not changed.\n")) << shown();
    EXPECT_TRUE(zorn_client_debug_logfile_is_open());
    EXPECT_EQ(std::string(zorn_client_get_debug_logfile_name()), "/tmp/" + automatic);
    unlink(("/tmp/" + automatic).c_str());

    frame->process_user_command("//debugfile", 0);
    EXPECT_TRUE(said("The current debug filename is:  /tmp/" + automatic + "\n"));
    EXPECT_TRUE(said("\nYou must give a filename to change the debug file.\n"));

    const std::string moved = dir + "/sub/log.txt";
    ASSERT_EQ(mkdir((dir + "/sub").c_str(), 0700), 0);
    frame->process_user_command(("//debugfile " + moved).c_str(), 0);
    EXPECT_TRUE(said("\nDebug logfile changed.\n"));
    EXPECT_EQ(std::string(zorn_client_get_debug_logfile_name()), moved);

    // The old file's folder is gone: neither name opens.
    std::system(("rm -rf '" + dir + "/sub'").c_str());
    frame->process_user_command(("//debugfile " + bad_path).c_str(), 0);
    EXPECT_TRUE(said("\nUnable to open new logfile, and could not re-open old logfile.  No logfile currently set.\n"));
    EXPECT_FALSE(zorn_client_debug_logfile_is_open());

    // No name at all (the log would go to standard output): nothing to go back to.
    zorn_client_set_debug_logfile_name(nullptr);
    frame->process_user_command(("//debugfile " + bad_path).c_str(), 0);
    EXPECT_TRUE(said("\nUnable to open logfile.  Please try again with a different name/path.\n"));
    zorn_client_set_debug_logfile_name(nullptr);
}
