// The real client against the real test world, in one process under Xvfb: the frame as the
// application builds it connects by itself, and what the player types goes through the line editor
// and the X server. What the world received is read back from its --log file.
#include <gtest/gtest.h>
#include <wx/uiaction.h>

#include <algorithm>
#include <cstring>
#include <regex>
#include <string>
#include <vector>

#include "app/dialogs.h"
#include "app/main_frame.h"
#include "app/menus.h"
#include "automap/automap_display.h"
#include "automap/automap_renderer.h"
#include "config/lconfig.h"
#include "display/ansi_display.h"
#include "input/button_sets.h"
#include "input/input_window.h"
#include <wx/menu.h>
#include <wx/uiaction.h>

#include "panels/channel_window.h"
#include "panels/group_display.h"
#include "panels/status_bar.h"
#include "panels/status_display.h"
#include "tests/app/e2e_support.h"
#include "tests/app/e2e_world.h"
#include "tests/net/net_test_support.h"
#include "tests/support/gui_main.h"
#include "tests/theme/pixels.h"

namespace {

size_t count_of(const std::string& text, const std::string& part) {
    size_t found = 0;
    for (size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) found++;
    return found;
}

class EndToEnd : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(e2e::world().ready()) << "the test world or the client's start-up failed";
        log_start = e2e::world().received().size();
        frame = e2e::make_frame();
    }
    void TearDown() override { e2e::destroy_frame(frame); }

    // Lines the world received since this test began.
    std::vector<std::string> received() const {
        const std::vector<std::string> all = e2e::world().received();
        return std::vector<std::string>(all.begin() + static_cast<long>(std::min(log_start, all.size())), all.end());
    }
    bool server_got(const std::string& line, size_t times = 1) {
        return pump_until(
            [&] {
                size_t found = 0;
                for (const std::string& r : received()) found += r == line;
                return found >= times;
            },
            5000);
    }
    bool shown(const std::string& text, size_t times = 1) {
        return pump_until([&] { return count_of(e2e::shown_text(frame), text) >= times; }, 5000);
    }
    void log_in(const std::string& name) {
        ASSERT_TRUE(shown("By what name are you known? "));
        ASSERT_TRUE(e2e::type_line(frame, name));
        ASSERT_TRUE(shown("Password: "));
        ASSERT_TRUE(e2e::type_line(frame, "hunter2"));
        ASSERT_TRUE(pump_until([&] { return frame->session_state == session_logged_in; }, 5000));
    }

    zorn_mw* frame = nullptr;
    size_t log_start = 0;
};

TEST_F(EndToEnd, ConnectsByItselfAndIdentifiesFirst) {
    // The system file written in the client's own form was read at start-up.
    EXPECT_STREQ(LConfig::instance().get_game_host(), "127.0.0.1")
        << net_test::read_file(e2e::world().home() + "/debug.txt");
    EXPECT_EQ(LConfig::instance().get_game_port(), e2e::world().port());
    ASSERT_TRUE(pump_until([&] { return !received().empty(); }, 10000))
        << "no connection without any typing; shown:\n" << e2e::shown_text(frame);
    const std::string identity = received()[0];
    EXPECT_EQ(identity, std::string("_lantern ") + LConfig::instance().get_uuid() + " " + zorn_client_version);
    EXPECT_TRUE(std::regex_match(identity, std::regex("_lantern DFLT[0-9a-f]{28} [^ ]+"))) << identity;
    EXPECT_TRUE(shown("Ember Vale test world"));
    EXPECT_TRUE(shown("By what name are you known? "));
    EXPECT_NE(e2e::shown_text(frame).find("Connecting to server..."), std::string::npos);
}

TEST_F(EndToEnd, LoginPlayPingAndReconnect) {
    LConfig::instance().set_local_echo(1);
    LConfig::instance().set_cmd_separator(0);
    ASSERT_TRUE(shown("By what name are you known? "));
    ASSERT_TRUE(e2e::type_line(frame, "Tester"));
    EXPECT_TRUE(server_got("Tester"));
    ASSERT_TRUE(shown("Password: "));
    ASSERT_TRUE(e2e::type_line(frame, "hunter2"));
    EXPECT_TRUE(server_got("hunter2"));
    ASSERT_TRUE(pump_until([&] { return frame->GetTitle() == "Ember Vale - Player Tester"; }, 5000))
        << frame->GetTitle();
    EXPECT_EQ(frame->session_state, session_logged_in);
    EXPECT_TRUE(shown("Welcome, Tester."));
    EXPECT_NE(e2e::shown_text(frame).find(">Tester<"), std::string::npos) << "the name is echoed";
    EXPECT_EQ(e2e::shown_text(frame).find("hunter2"), std::string::npos) << "a password never is";

    // A typed command leaves within the tick after Enter, or the next one.
    e2e::tick_probe probe(frame);
    long long enter_tick = -1, written_tick = -1;
    frame->input_window->line_edit.Bind(wxEVT_KEY_DOWN, [&](wxKeyEvent& event) {
        if (event.GetKeyCode() == WXK_RETURN && enter_tick < 0) enter_tick = probe.ticks;
        event.Skip();
    });
    struct watch {
        zorn_mw* frame;
        long long* enter_tick;
        long long* written_tick;
        e2e::tick_probe* probe;
    } w{frame, &enter_tick, &written_tick, &probe};
    probe.after_tick_context = &w;
    probe.after_tick = [](void* context) {
        auto* w = static_cast<watch*>(context);
        if (*w->enter_tick >= 0 && *w->written_tick < 0 && w->frame->outgoing.count() == 0)
            *w->written_tick = w->probe->ticks;
    };
    ASSERT_TRUE(e2e::type_line(frame, "north"));
    EXPECT_TRUE(server_got("north"));
    EXPECT_TRUE(shown("North Road"));
    ASSERT_GE(enter_tick, 0);
    ASSERT_GE(written_tick, 0);
    EXPECT_LE(written_tick - enter_tick, 2) << "ticks from Enter to the socket";
    probe.detach();

    // The lag meter, typed and from the ping timer.
    ASSERT_TRUE(e2e::type_line(frame, "//ping"));
    EXPECT_TRUE(server_got("lnping"));
    ASSERT_TRUE(pump_until([&] { return frame->last_ping_ms >= 0; }, 5000));
    EXPECT_LT(frame->last_ping_ms, 5000);
    frame->last_ping_ms = -1;
    frame->ping_timer.Notify();
    EXPECT_TRUE(server_got("lnping", 2));
    EXPECT_TRUE(pump_until([&] { return frame->last_ping_ms >= 0; }, 5000));

    // The server ends the session; "connect" brings the client back.
    ASSERT_TRUE(e2e::type_line(frame, "quit"));
    EXPECT_TRUE(shown("Goodbye."));
    EXPECT_TRUE(shown("Connection closed by server."));
    EXPECT_EQ(frame->session_state, session_none);
    EXPECT_EQ(frame->GetTitle(), "Ember Vale");
    ASSERT_TRUE(e2e::type_line(frame, "connect"));
    EXPECT_TRUE(pump_until(
        [&] {
            size_t identities = 0;
            for (const std::string& line : received()) identities += line.rfind("_lantern ", 0) == 0;
            return identities == 2;
        },
        5000));
    EXPECT_TRUE(shown("By what name are you known? ", 2));
    EXPECT_TRUE(e2e::type_line(frame, "Again"));
    EXPECT_TRUE(server_got("Again"));
}

TEST_F(EndToEnd, ServerTagsReachTheClient) {
    log_in("Tagger");
    zorn_textctrl* text = frame->main_display->textctrl;
    const zorn_rgb base = text->model.base_background_color;
    const auto same = [](const zorn_rgb& a, const zorn_rgb& b) {
        return a.red == b.red && a.green == b.green && a.blue == b.blue;
    };
    ASSERT_TRUE(e2e::type_line(frame, "flash"));
    EXPECT_TRUE(shown("Lightning splits the sky!"));
    EXPECT_TRUE(pump_until([&] { return !same(text->model.background_color, base); }, 5000)) << "the flash shows";
    EXPECT_TRUE(pump_until([&] { return text->flash_list.empty() && same(text->model.background_color, base); }, 5000))
        << "and ends";

    LConfig::instance().set_hint_button_enable(1);
    ASSERT_TRUE(e2e::type_line(frame, "config hint_buttons disable"));
    EXPECT_TRUE(pump_until([] { return LConfig::instance().get_hint_button_enable() == 0; }, 5000));
    // The change goes back to the server in the status line: its fourth character.
    EXPECT_TRUE(pump_until(
        [&] {
            const std::vector<std::string> lines = received();
            return !lines.empty() && lines.back().rfind("lnlstatus ", 0) == 0 && lines.back()[10 + 3] == '0';
        },
        5000));

    ASSERT_TRUE(e2e::type_line(frame, "popup Nowhere"));
    EXPECT_TRUE(shown("Sorry, no popup window by that name has been defined."));
    EXPECT_EQ(frame->text_target, frame->main_display);
}

TEST_F(EndToEnd, StatusStripsFollowTheWorld) {
    log_in("Fighter");
    zorn_status_display* d = frame->status_display;
    zorn_status_bar* bar = frame->status_bar;
    ASSERT_TRUE(pump_until([&] { return d->hp == 142 && !bar->clock_text.empty(); }, 5000));
    EXPECT_TRUE(d->IsShown());
    EXPECT_TRUE(bar->IsShown());
    EXPECT_TRUE(bar->sky_bar->IsShown());
    EXPECT_EQ(std::vector<int>({d->max_hp, d->mana, d->max_mana, d->move, d->max_move}),
              std::vector<int>({150, 87, 120, 110, 110}));
    EXPECT_EQ(d->xp[0], 300);
    EXPECT_EQ(bar->icon_on[0], 1);
    EXPECT_EQ(bar->clock_colour, zorn_rgb(192, 192, 192));

    // The clock as the world sets it, and the sky of the rooms walked through.
    ASSERT_TRUE(e2e::type_line(frame, "time 720"));
    ASSERT_TRUE(pump_until([&] { return bar->clock_text.c_str() == std::string("12:00 pm"); }, 5000))
        << bar->clock_text.c_str();
    EXPECT_EQ(bar->sky_bar->current_minute, 720);
    ASSERT_TRUE(e2e::type_line(frame, "s"));
    ASSERT_TRUE(e2e::type_line(frame, "e"));
    ASSERT_TRUE(shown("Chapel Garden"));
    EXPECT_TRUE(pump_until([&] { return bar->sky_bar->overcast == 1 && d->move == 108; }, 5000));
    EXPECT_EQ(bar->sky_bar->GetToolTipText(), wxT("It is cloudy and overcast."));

    // A fight: the enemy's falling health, then experience when it falls.
    ASSERT_TRUE(e2e::type_line(frame, "kill"));
    ASSERT_TRUE(pump_until([&] { return std::string(d->enemy_name.c_str()) == "the training dummy"; }, 5000));
    EXPECT_TRUE(pump_until([&] { return d->enemy_percent > 0 && d->enemy_percent <= 60; }, 5000));
    ASSERT_TRUE(pump_until([&] { return d->xp[0] == 450; }, 5000));
    EXPECT_EQ(d->xp[1], 120);
    EXPECT_STREQ(d->enemy_name.c_str(), "(no enemy)");
    EXPECT_EQ(d->enemy_percent, -1);
    EXPECT_TRUE(pump_until([&] { return d->hp == 132; }, 5000));

    // The numbers on the screen: the hit point gauge's fill and the experience bar's first layer.
    int before = d->repaints;
    d->Refresh(false);
    ASSERT_TRUE(pump_until([&] { return d->repaints > before; }));
    zorn_bitmap& b = *d->backing_bitmap;
    const int fill = status_gauge_fill(132, 150, d->bar_width);
    EXPECT_EQ(pixel_at(b, d->hp_x, d->bar_y), zorn_rgb(255, 32, 32));
    EXPECT_EQ(pixel_at(b, d->hp_x - 1 + fill, d->bar_y), zorn_rgb(0, 0, 0));
    EXPECT_EQ(pixel_at(b, d->exp_x + status_gauge_fill(450, 1000, d->bar_width) - 1, d->enemy_bar_y + 1),
              zorn_rgb(48, 0, 48));

    // The ping timer's line comes back as a lag figure within a few seconds.
    frame->ping_timer.Notify();
    EXPECT_TRUE(pump_until([&] { return bar->ping_count == 1; }, 5000));
    EXPECT_GE(bar->ping_average, 0);
    EXPECT_LT(bar->ping_average, 5000);

    // After a disconnect both strips are hidden and hold nothing of the session.
    ASSERT_TRUE(e2e::type_line(frame, "//disconnect"));
    ASSERT_TRUE(pump_until([&] { return frame->session_state == session_none; }, 5000));
    EXPECT_FALSE(d->IsShown());
    EXPECT_FALSE(bar->IsShown());
    EXPECT_EQ(std::vector<int>({d->hp, d->max_hp, d->mana, d->max_mana, d->move, d->max_move, d->xp[0]}),
              std::vector<int>({-1, 1, -1, 1, -1, 1, 0}));
    EXPECT_EQ(bar->ping_count, 0);
    EXPECT_STREQ(bar->clock_text.c_str(), "");
    EXPECT_EQ(bar->icon_on[0], 0);
    EXPECT_EQ(bar->clock_colour, zorn_rgb(191, 191, 191));
}

// The popup windows the world defines at login: a click opens one and the world hears exactly
// which, then the window's own command; the title bar's close box tells it too.
TEST_F(EndToEnd, PopupWindowsTellTheWorldWhenTheyOpenAndClose) {
    log_in("Popper");
    zorn_popup_manager& popups = *frame->popup_manager;
    ASSERT_TRUE(pump_until([&] { return popups.find_window("Log") != nullptr; }, 5000));
    EXPECT_EQ(frame->popup_count, 4);
    EXPECT_NE(popups.find_window("Spells")->controller, popups.buttons) << "menu-only windows have no place in the row";
    zorn_popup_window* inventory = popups.find_window("Inventory");
    zorn_popup_button* button = inventory->controller;
    wxUIActionSimulator mouse;
    const wxRect r = button->GetScreenRect();
    mouse.MouseMove(r.x + r.width / 2, r.y + r.height / 2);
    pump_for(20);
    mouse.MouseClick();
    ASSERT_TRUE(server_got("inventory"));
    const std::vector<std::string> lines = received();
    const auto open = std::find(lines.begin(), lines.end(), "lnlwindow open Inventory");
    ASSERT_NE(open, lines.end());
    ASSERT_NE(open + 1, lines.end());
    EXPECT_EQ(*(open + 1), "inventory") << "the window's command follows its opening";
    EXPECT_TRUE(inventory->IsShown());
    EXPECT_TRUE(frame->popups_menu->IsChecked(button->menu_id));
    EXPECT_TRUE(pump_until([&] {
        return inventory->display->textctrl->model.raw_text().find("You are carrying:") != std::string::npos;
    }));
    EXPECT_EQ(e2e::shown_text(frame).find("You are carrying:"), std::string::npos) << "not in the main text";

    inventory->Close();
    EXPECT_TRUE(server_got("lnlwindow close Inventory"));
    EXPECT_FALSE(inventory->IsShown());
    EXPECT_FALSE(frame->popups_menu->IsChecked(button->menu_id));
    EXPECT_EQ(button->button_state, zorn_button_up);

    // A disconnect takes the windows and the menu's items; their places stay with the character.
    inventory->Move(210, 160);
    pump_for(30);
    ASSERT_TRUE(e2e::type_line(frame, "//disconnect"));
    EXPECT_EQ(popups.buttons, nullptr);
    EXPECT_EQ(frame->popup_count, 0);
    ASSERT_TRUE(LConfig::instance().save_system_config_file());
    const std::string character =
        net_test::read_file(e2e::world().home() + "/.config/EmberVale/char_configs/Popper.cfg");
    EXPECT_NE(character.find("<name>Inventory</name>"), std::string::npos) << character;
    EXPECT_NE(character.find("<x>210</x>"), std::string::npos) << character;
}

// Chat from the world and its bot lands in tabs, both channels lit until looked at.
TEST_F(EndToEnd, ChannelChatFromTheWorldLandsInTabs) {
    LConfig::instance().set_channel_window_enable(1);
    LConfig::instance().set_channel_window_dupe(0);
    log_in("Chatter");
    ASSERT_TRUE(e2e::type_line(frame, "gossip anyone awake?"));
    zorn_channel_window& channels = *frame->channel_window;
    ASSERT_TRUE(pump_until([&] { return channels.find_channel("ooc") != nullptr; }, 5000));
    const auto text_of = [&](const char* name) {
        return channels.find_channel(name)->display->textctrl->model.raw_text();
    };
    EXPECT_TRUE(pump_until([&] { return text_of("ooc").find("listening on both channels") != std::string::npos; }));
    EXPECT_NE(text_of("gossip").find("anyone awake?"), std::string::npos);
    EXPECT_NE(text_of("gossip").find("Well met, Chatter."), std::string::npos);
    EXPECT_NE(text_of("(all)").find("Well met, Chatter."), std::string::npos);
    EXPECT_EQ(e2e::shown_text(frame).find("Well met, Chatter."), std::string::npos);
    EXPECT_EQ(channels.find_channel("gossip")->button->button_state, zorn_button_down);
    EXPECT_EQ(channels.find_channel("ooc")->button->button_state, zorn_button_down);
    EXPECT_TRUE(channels.find_channel("(all)")->button->IsShown());
    LConfig::instance().set_channel_window_enable(0);
}

// Walking lights the exits, the Smithy shows its hints, a function key runs the player's alias
// without echo, followers show in the group display; every click goes through the X server.
TEST_F(EndToEnd, ButtonsAndTheGroupFollowTheWorld) {
    LConfig::instance().set_local_echo(1);
    log_in("Walker");
    LConfig& c = LConfig::instance();
    c.set_direction_button_enable(1);
    c.set_hint_button_enable(1);
    c.set_fkey_button_display(1);
    c.set_group_status_display(1);
    c.set_current_layout(1);
    zorn_command_button* const* dirs = frame->direction_buttons->buttons;
    zorn_command_button* const* hints = frame->hint_buttons->buttons;
    const auto lit = [&] {
        std::string out;
        for (int i = 0; i < direction_button_count; ++i)
            if (dirs[i]->lit) out += std::string(dirs[i]->get_label()) + " ";
        return out;
    };
    wxUIActionSimulator mouse;
    const auto click = [&](wxWindow* window) {
        const wxRect r = window->GetScreenRect();
        mouse.MouseMove(r.x + r.width / 2, r.y + r.height / 2);
        pump_for(20);
        mouse.MouseClick();
        pump_for(20);
        mouse.MouseMove(r.x - 150, r.y + 300);
        pump_for(20);
    };
    ASSERT_TRUE(pump_until([&] { return lit() == "NW N NE W Out E SW S SE "; }, 5000)) << lit();
    EXPECT_EQ(dirs[1]->button_state, zorn_button_up);
    EXPECT_TRUE(hints[0]->IsShown());
    EXPECT_STREQ(hints[1]->get_label(), "Exits");

    ASSERT_TRUE(e2e::type_line(frame, "west"));
    ASSERT_TRUE(pump_until([&] { return hints[5]->IsShown(); }, 5000)) << "the Smithy is a shop";
    EXPECT_EQ(lit(), "N NE Out E S SE ");
    EXPECT_STREQ(hints[4]->get_label(), "Wares");
    EXPECT_EQ(hints[4]->GetPosition().y, hints[0]->GetPosition().y + 82) << "a gap before the shop's group";
    click(hints[4]);
    EXPECT_TRUE(server_got("list"));
    EXPECT_TRUE(shown("The smith sells"));
    click(dirs[5]);  // E
    EXPECT_TRUE(server_got("east"));
    ASSERT_TRUE(pump_until([&] { return !hints[4]->IsShown(); }, 5000)) << "bclear on leaving the shop";
    EXPECT_EQ(lit(), "NW N NE W Out E SW S SE ");

    // Asleep the block is off: a click on N sends nothing and gives the keyboard back.
    ASSERT_TRUE(e2e::type_line(frame, "sleep"));
    ASSERT_TRUE(pump_until([&] { return dirs[1]->button_state == zorn_button_disabled; }, 5000));
    const size_t before = received().size();
    click(dirs[1]);
    pump_for(100);
    EXPECT_EQ(received().size(), before);
    EXPECT_EQ(wxWindow::FindFocus(), &frame->input_window->line_edit);
    ASSERT_TRUE(e2e::type_line(frame, "wake"));
    ASSERT_TRUE(pump_until([&] { return dirs[1]->button_state == zorn_button_up; }, 5000));
    click(dirs[1]);
    EXPECT_TRUE(server_got("north"));
    EXPECT_TRUE(shown("North Road"));
    EXPECT_EQ(wxWindow::FindFocus(), &frame->input_window->line_edit);

    // A function key: the world binds it, the button shows it, a click runs it unechoed.
    zorn_fkey_button* f3 = frame->fkey_manager->buttons[2];
    ASSERT_TRUE(e2e::type_line(frame, "alias f03 look"));
    ASSERT_TRUE(pump_until([&] { return std::string(f3->label) == "look"; }, 5000));
    EXPECT_TRUE(f3->IsShown());
    EXPECT_EQ(f3->active, 1);
    click(f3);
    EXPECT_TRUE(server_got("f03"));
    EXPECT_TRUE(shown("North Road", 2));
    EXPECT_EQ(e2e::shown_text(frame).find(">f03<"), std::string::npos) << "a function key echoes nothing";
    EXPECT_NE(e2e::shown_text(frame).find(">alias f03 look<"), std::string::npos);

    // Followers: the group display shows them, and each fight round updates it.
    zorn_group_display& group = *frame->group_display;
    ASSERT_TRUE(e2e::type_line(frame, "recruit"));
    ASSERT_TRUE(e2e::type_line(frame, "recruit"));
    ASSERT_TRUE(e2e::type_line(frame, "recruit"));
    ASSERT_TRUE(pump_until([&] { return group.members.size() == 4; }, 5000));
    EXPECT_TRUE(group.IsShown());
    EXPECT_EQ(group.members[0].name, "Walker");
    EXPECT_EQ(group.members[3].name, "Pip");
    EXPECT_EQ(group.members[3].row_kind, group_row_divided);
    EXPECT_EQ(group.GetSize().GetHeight(), group.required_height());
    ASSERT_TRUE(e2e::type_line(frame, "kill"));
    ASSERT_TRUE(pump_until([&] { return group.members.size() == 4 && group.members[1].hp < 90; }, 5000));
    ASSERT_TRUE(e2e::type_line(frame, "dismiss"));
    EXPECT_TRUE(pump_until([&] { return !group.IsShown() && group.members.empty(); }, 5000));
    c.set_fkey_button_display(0);
    c.set_direction_button_enable(0);
}

// The exit dialogs against the world: the exact bytes each answer sends.
TEST_F(EndToEnd, ExitDialogsSendTheLogoffLines) {
    LConfig::instance().set_local_echo(1);
    LConfig::instance().set_cmd_separator(0);
    log_in("Leaver");
    ASSERT_TRUE(pump_until([&] { return frame->outgoing.count() == 0; }));
    const auto press = [&](wxDialog* dialog, int id) {
        ASSERT_TRUE(dialog->IsShown());
        wxCommandEvent click(wxEVT_BUTTON, id);
        click.SetEventObject(dialog->FindWindow(id));
        dialog->GetEventHandler()->ProcessEvent(click);
    };
    const auto sent_now = [&] { return std::string(frame->outgoing.bytes(), static_cast<size_t>(frame->outgoing.count())); };

    // The disconnect dialog's Logoff: plain quit lines, only the last one echoed.
    wxCommandEvent disconnect(wxEVT_MENU, zorn_menu_disconnect);
    frame->GetEventHandler()->ProcessEvent(disconnect);
    press(frame->disconnect_dialog, wxID_OK);
    EXPECT_EQ(sent_now(), "\nrecall\nquit\nrecall\nquit\n");
    EXPECT_FALSE(frame->disconnect_dialog->IsShown());
    const std::string text = e2e::shown_text(frame);
    EXPECT_EQ(text.find(">recall<"), std::string::npos);
    EXPECT_NE(text.find(">quit<"), std::string::npos);
    EXPECT_EQ(text.find(">quit<"), text.rfind(">quit<")) << "echoed once";
    ASSERT_TRUE(shown("Connection closed by server."));
    EXPECT_TRUE(server_got("quit"));
}

TEST_F(EndToEnd, ProgramExitDialogLogsOffAndTheClientRunsOn) {
    log_in("Stayer");
    ASSERT_TRUE(pump_until([&] { return frame->outgoing.count() == 0; }));
    wxCloseEvent close(wxEVT_CLOSE_WINDOW, frame->GetId());
    close.SetEventObject(frame);
    close.SetCanVeto(true);
    frame->GetEventHandler()->ProcessEvent(close);
    EXPECT_TRUE(close.GetVeto());
    ASSERT_TRUE(frame->pgm_exit_dialog->IsShown());
    EXPECT_EQ(frame->pgm_exit_dialog->GetTitle(), "Logoff Warning");
    EXPECT_TRUE(server_got("quit -check"));
    wxCommandEvent logoff(wxEVT_BUTTON, wxID_OK);
    logoff.SetEventObject(frame->pgm_exit_dialog->FindWindow(wxID_OK));
    frame->pgm_exit_dialog->GetEventHandler()->ProcessEvent(logoff);
    EXPECT_EQ(std::string(frame->outgoing.bytes(), static_cast<size_t>(frame->outgoing.count())),
              "\nrecall\nquit -f\nrecall\nquit -f\n");
    ASSERT_TRUE(shown("Connection closed by server."));
    EXPECT_EQ(frame->shutdown_countdown, 0) << "nothing ends in the client";
    EXPECT_EQ(frame->session_state, session_none);
}

// With no character yet, Disconnect on a live connection asks nothing.
TEST_F(EndToEnd, DisconnectBeforeLoginAsksNothing) {
    ASSERT_TRUE(shown("By what name are you known? "));
    wxCommandEvent disconnect(wxEVT_MENU, zorn_menu_disconnect);
    frame->GetEventHandler()->ProcessEvent(disconnect);
    EXPECT_FALSE(frame->disconnect_dialog->IsShown());
    EXPECT_FALSE(frame->newbie_disconnect_dialog->IsShown());
    EXPECT_TRUE(shown("Disconnecting."));
    EXPECT_NE(frame->socket.current_state(), socket_connected);
}

// Walking against the world: each move's map slides into place, a wall bumps the map, and a
// click on the map's compass reaches the world as the direction word, echoed like a typed line.
TEST_F(EndToEnd, TheMapFollowsTheWalkAndItsCompassWalks) {
    LConfig::instance().set_local_echo(1);
    LConfig::instance().set_cmd_separator(0);
    static int bumps = 0;
    bumps = 0;
    zorn_automap_wall_bump = [] { bumps++; };
    log_in("Mapper");
    zorn_automap_renderer* map = frame->automap->renderer;
    const automap_model& model = map->model;
    const auto at_rest_in = [&](int terrain) {
        return pump_until([&] { return model.at_rest() && model.cell(11, 11).seed != 0 && model.cell(11, 11).terrain == terrain; }, 5000);
    };
    ASSERT_TRUE(at_rest_in(10)) << "the village square's map after the login";
    EXPECT_TRUE(pump_until([&] { return std::strcmp(frame->automap->area_name.c_str(), "Ember Vale") == 0; }));
    EXPECT_EQ(model.exits_mask, 255);

    ASSERT_TRUE(e2e::type_line(frame, "n"));
    EXPECT_TRUE(pump_until([&] { return model.scroll_y > 0; }, 5000)) << "the move slides the map";
    ASSERT_TRUE(at_rest_in(2)) << "North Road";
    ASSERT_TRUE(e2e::type_line(frame, "n"));
    EXPECT_TRUE(shown("You cannot go that way."));
    EXPECT_TRUE(pump_until([&] { return bumps == 1; })) << "the green gate is closed";
    ASSERT_TRUE(e2e::type_line(frame, "s"));
    ASSERT_TRUE(at_rest_in(10));

    wxUIActionSimulator mouse;
    const int v = map->view_size;
    mouse.MouseMove(map->GetScreenPosition() + wxPoint(v / 2 + v / 5, v / 2 - v / 5));
    ASSERT_TRUE(pump_until([&] { return map->hover_direction == 8; })) << "the northeast arrow is hot";
    mouse.MouseClick();
    EXPECT_TRUE(server_got("northeast"));
    EXPECT_TRUE(shown(">northeast<"));
    EXPECT_TRUE(shown("Orchard"));
    EXPECT_TRUE(at_rest_in(4));
    mouse.MouseMove(frame->GetScreenPosition() + wxPoint(600, 100));
    zorn_automap_wall_bump = nullptr;
}

}  // namespace
