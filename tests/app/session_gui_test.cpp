// The frame's side of the session without a network: server bytes handed straight to the stream
// parser, typed lines to the command interpreter, and what reaches the display and the outgoing
// buffer.
#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include <wx/uiaction.h>

#include "app/main_frame.h"
#include "config/debug_log.h"
#include "config/lconfig.h"
#include "display/ansi_display.h"
#include "input/input_window.h"
#include "panels/status_bar.h"
#include "panels/status_display.h"
#include "tests/app/offline_frame.h"
#include "tests/support/gui_main.h"
#include "tests/support/log_capture.h"
#include "theme/builtin_images.h"
#include "theme/theme.h"

namespace {

class Session : public ::testing::Test {
protected:
    void SetUp() override {
        dir = offline_settings("session");
        ASSERT_FALSE(dir.empty());
        frame = make_offline_frame();
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

TEST_F(Session, StatusTagsReachBothStripsAndUnchangedOnesPaintNothing) {
    zorn_status_display* d = frame->status_display;
    zorn_status_bar* bar = frame->status_bar;
    EXPECT_FALSE(d->IsShown());
    EXPECT_FALSE(bar->IsShown());
    server(";tlogin;");
    EXPECT_TRUE(d->IsShown());
    EXPECT_TRUE(bar->IsShown());
    EXPECT_TRUE(bar->sky_bar->IsShown());
    EXPECT_EQ(d->GetSize().GetHeight(), 42);  // enemy row and gauge row
    EXPECT_EQ(d->border_mask, 15);

    const std::string prompt = ";shp;120 150 80 90 100 110;ehp;;sxpp;300 900 100;expp;;senemyhp;40 an orc;eenemyhp;"
                               ";sicons;10100;eicons;;sskystate;110 3 720 12:00 pm;eskystate;> ";
    server(prompt);
    EXPECT_EQ(std::vector<int>({d->hp, d->max_hp, d->mana, d->max_mana, d->move, d->max_move}),
              std::vector<int>({120, 150, 80, 90, 100, 110}));
    EXPECT_EQ(std::vector<int>(d->xp, d->xp + 3), std::vector<int>({900, 300, 100}));
    EXPECT_STREQ(d->enemy_name.c_str(), "an orc");
    EXPECT_EQ(bar->icon_on[2], 1);
    EXPECT_STREQ(bar->clock_text.c_str(), "12:00 pm");
    EXPECT_EQ(bar->sky_bar->current_minute, 720);
    pump_for(150);
    const int display_paints = d->repaints, bar_paints = bar->repaints, sky_paints = bar->sky_bar->repaints;
    ASSERT_GT(display_paints, 0);
    std::string flood;
    for (int i = 0; i < 2000; ++i) flood += prompt;
    server(flood);
    pump_for(150);
    EXPECT_EQ(d->repaints, display_paints);
    EXPECT_EQ(bar->repaints, bar_paints);
    EXPECT_EQ(bar->sky_bar->repaints, sky_paints);

    // Five numbers store five and paint nothing.
    server(";shp;1 2 3 4 5;ehp;");
    pump_for(100);
    EXPECT_EQ(d->repaints, display_paints);
    EXPECT_EQ(d->move, 5);
    EXPECT_EQ(d->max_move, 110);

    // The end of combat clears the enemy; //icons sets icons as the server would.
    server(";tncombat;");
    EXPECT_STREQ(d->enemy_name.c_str(), "(no enemy)");
    EXPECT_EQ(d->enemy_percent, -1);
    frame->process_user_command("//icons 01001", 1);
    EXPECT_EQ(std::vector<int>(bar->icon_on, bar->icon_on + 5), std::vector<int>({0, 1, 0, 0, 1}));
    server(";ticons;");
    EXPECT_EQ(std::vector<int>(bar->icon_on, bar->icon_on + 5), std::vector<int>({0, 0, 0, 0, 0}));

    // With the enemy bar off an empty enemyhp clears the display's enemy flag.
    LConfig::instance().set_enemy_hpbar_enable(0);
    d->show_enemy_bar = 1;
    server(";tenemyhp;");
    EXPECT_EQ(d->show_enemy_bar, 0);

    // The ping answer goes into the bar's average.
    frame->send_ping();
    frame->ping_sent_time -= 120000;
    server(";sevent;lnpong;eevent;");
    EXPECT_EQ(bar->ping_count, 1);
    EXPECT_GE(bar->ping_average, 120);

    // The server flashes the hit point bars on.
    LConfig::instance().set_hpbar_enable(0);
    server(";sconfig;status_bar flash;econfig;");
    EXPECT_EQ(LConfig::instance().get_hpbar_enable(), 1);
    EXPECT_EQ(d->show_hp_bars, 1);
    EXPECT_TRUE(animation_contains(d));
    EXPECT_EQ(d->anim_count, 16);

    // A disconnect resets both and hides them.
    frame->socket_disconnect("Disconnecting.");
    EXPECT_FALSE(d->IsShown());
    EXPECT_FALSE(bar->IsShown());
    EXPECT_EQ(d->hp, -1);
    EXPECT_EQ(d->xp[0], 0);
    EXPECT_EQ(bar->ping_count, 0);
    EXPECT_STREQ(bar->clock_text.c_str(), "");
}

TEST_F(Session, BadStatusPayloadsGiveDefaultsAndLogLines) {
    zorn_status_display* d = frame->status_display;
    zorn_status_bar* bar = frame->status_bar;
    server(";tlogin;;sskystate;111 2 600 10:00 am;eskystate;");
    const std::string huge(14999, '7');
    log_capture log(2);
    // The longest payloads first (their numbers overflow as atoi has it), then letters, missing
    // fields and missing payloads, whose defaults stay.
    const std::string rows[] = {
        ";shp;" + huge + ";ehp;",         ";sxpp;" + huge + ";expp;",     ";senemyhp;" + huge + ";eenemyhp;",
        ";sicons;" + huge + ";eicons;",   ";sskystate;110 3 " + huge + ";eskystate;",
        ";shp;abc def ghi jkl mno pqr;ehp;", ";thp;",                   ";sxpp;x y z;expp;",
        ";senemyhp;abc;eenemyhp;",        ";tskystate;",                  ";sskystate;abc;eskystate;",
        ";sskystate;110 3 9999 late;eskystate;", ";sevent;lnpong;eevent;", ";sicons;1;eicons;",
    };
    for (const std::string& row : rows) server(row);
    EXPECT_EQ(std::vector<int>({d->hp, d->max_hp, d->mana, d->max_mana, d->move, d->max_move}),
              std::vector<int>({0, 0, 0, 0, 0, 0}));
    EXPECT_EQ(std::vector<int>(d->xp, d->xp + 8), std::vector<int>(8, 0));
    EXPECT_EQ(d->enemy_percent, 0);
    EXPECT_STREQ(d->enemy_name.c_str(), "(no enemy)");
    EXPECT_EQ(std::vector<int>(bar->icon_on, bar->icon_on + 5), std::vector<int>({1, 0, 0, 0, 0}));
    EXPECT_EQ(bar->ping_count, 0) << "a pong with no ping sent measures nothing";
    EXPECT_STREQ(bar->clock_text.c_str(), "10:00 am");
    EXPECT_EQ(bar->sky_bar->current_minute, 600);
    const std::string text = log.text();
    EXPECT_NE(text.find("zorn_status_bar::update_sky_display() - bad value for terrain field.\n"), std::string::npos);
    EXPECT_NE(text.find("zorn_status_bar::update_sky_display() - bad value for current_minute.\n"), std::string::npos);
    EXPECT_EQ(frame->session_state, session_logged_in);
    // The parser and the status strips still work.
    server(";shp;1 2 3 4 5 6;ehp;");
    EXPECT_EQ(d->max_move, 6);
}

TEST_F(Session, CtrlPTogglesTheHitPointBars) {
    server(";tlogin;");
    zorn_status_display* d = frame->status_display;
    const int before = LConfig::instance().get_hpbar_enable();
    zorn_line_edit& editor = frame->input_window->line_edit;
    frame->Raise();
    editor.SetFocus();
    wxUIActionSimulator keys;
    keys.MouseMove(editor.GetScreenRect().GetPosition() + wxPoint(8, editor.GetSize().GetHeight() / 2));
    pump_for(30);
    keys.Char('p', wxMOD_CONTROL);
    ASSERT_TRUE(pump_until([&] { return LConfig::instance().get_hpbar_enable() != before; }));
    EXPECT_EQ(d->show_hp_bars, !before);
    // Without the gauge row the display shrinks to one row (the enemy's).
    EXPECT_EQ(d->GetSize().GetHeight(), before ? 21 : 42);
}

