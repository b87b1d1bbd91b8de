// The menu bar of the real frame: its entries against the table kept as data, what a chosen entry
// does, and check and radio items that follow a setting whoever changes it. Menu choices arrive as
// the menu events the toolkit sends for a click.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <wx/menu.h>
#include <wx/uiaction.h>

#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "app/dialogs.h"
#include "app/main_frame.h"
#include "app/menus.h"
#include "config/lconfig.h"
#include "display/ansi_display.h"
#include "display/ansi_palette.h"
#include "input/input_window.h"
#include "tests/app/offline_frame.h"
#include "tests/support/case_file.h"
#include "tests/support/gui_main.h"
#include "theme/builtin_images.h"
#include "theme/font.h"
#include "theme/theme.h"

namespace {

class Menus : public ::testing::Test {
protected:
    void SetUp() override {
        dir = offline_settings("menus");
        ASSERT_FALSE(dir.empty());
        old_path = std::getenv("PATH") ? std::getenv("PATH") : "";
        setenv("PATH", (dir + ":" + old_path).c_str(), 1);
        LConfig& config = LConfig::instance();
        config.set_server_host("play.test.example:1");
        if (!config.current()) config.setup_default_config(nullptr);
        config.use_default_preferences();
        frame = make_offline_frame();
    }
    void TearDown() override {
        frame->shutdown_countdown = 0;
        frame->Destroy();
        pump_for(50);
        setenv("PATH", old_path.c_str(), 1);
        LConfig::instance().set_server_host("127.0.0.1:1");
        zorn_select_palette(0);
        std::system(("rm -rf '" + dir + "'").c_str());
    }
    void choose(int id) {
        wxCommandEvent event(wxEVT_MENU, id);
        event.SetEventObject(frame);
        frame->GetEventHandler()->ProcessEvent(event);
    }
    bool checked(int id) const { return frame->GetMenuBar()->IsChecked(id); }
    std::string shown() const { return frame->main_display->textctrl->model.raw_text(); }
    void server(const std::string& bytes) {
        frame->process_socket_data(reinterpret_cast<const unsigned char*>(bytes.data()), static_cast<int>(bytes.size()));
    }

    zorn_mw* frame = nullptr;
    std::string dir, old_path;
};

std::string kind_of(const wxMenuItem* item) {
    if (item->IsSeparator()) return "-";
    if (item->IsSubMenu()) return "S";
    if (item->IsCheck()) return "C";
    if (item->IsRadio()) return "R";
    return "N";
}

// Rows in the form of the data file, read from the bar the frame shows.
void list_menu(const std::string& title, const std::string& submenu, wxMenu* menu, std::vector<std::string>* out) {
    for (wxMenuItem* item : menu->GetMenuItems()) {
        const std::string kind = kind_of(item);
        const std::string label = item->IsSeparator() ? "" : item->GetItemLabel().utf8_str().data();
        const std::string id = item->IsSeparator() ? "" : item->IsSubMenu() ? "0" : std::to_string(item->GetId());
        out->push_back(title + "|" + submenu + "|" + label + "|" + id + "|" + kind);
        if (item->IsSubMenu()) list_menu(title, label, item->GetSubMenu(), out);
    }
}

}  // namespace

TEST_F(Menus, BarMatchesTheTableEntryByEntry) {
    std::vector<std::string> expected, actual;
    for (const case_row& row : read_cases("app/menu_cases.txt"))
        expected.push_back(row.str(0) + "|" + row.str(1) + "|" + row.str(2) + "|" + row.str(3) + "|" + row.str(4));
    wxMenuBar* bar = frame->GetMenuBar();
    ASSERT_EQ(bar->GetMenuCount(), 7u);
    for (size_t i = 0; i < bar->GetMenuCount(); ++i)
        list_menu(bar->GetMenuLabel(i).utf8_str().data(), "", bar->GetMenu(i), &actual);
    ASSERT_EQ(actual.size(), expected.size());
    for (size_t i = 0; i < expected.size(); ++i) EXPECT_EQ(actual[i], expected[i]) << "entry " << i;
    EXPECT_FALSE(bar->IsEnabled(zorn_popup_menu_empty_id));
}

TEST_F(Menus, FontColorsSwitchThePaletteForLaterTextAndSurviveARestart) {
    server(";slogin;Colorist;elogin;");
    EXPECT_TRUE(checked(61));
    choose(64);
    EXPECT_EQ(zorn_current_palette, &zorn_ansi_palettes[1]);
    EXPECT_TRUE(checked(64));
    EXPECT_NE(shown().find("\n\nFuture text will now use bright ansi colors.\n\n"), std::string::npos);
    choose(62);
    EXPECT_NE(shown().find("Future text will now use ZMud-style ansi colors.\n"), std::string::npos);
    EXPECT_TRUE(checked(62));
    EXPECT_FALSE(checked(64));

    // "Default Color/Background" is about the theme only.
    choose(60);
    EXPECT_EQ(LConfig::instance().get_font_colors_setting(), 2);
    EXPECT_TRUE(checked(62));
    EXPECT_TRUE(checked(51)) << "buttons Blue, value 1";
    EXPECT_TRUE(checked(36)) << "background Red, value 2";
    EXPECT_TRUE(checked(57)) << "Maze2, value 3";

    // The choice is the character's: a new client on the same files starts with it.
    ASSERT_TRUE(LConfig::instance().save_system_config_file());
    LConfig restarted;
    restarted.set_directory(dir.c_str());
    restarted.load_system_config();
    restarted.switch_character("Colorist");
    EXPECT_EQ(restarted.get_font_colors_setting(), 2);
}

TEST_F(Menus, ChecksFollowSettersFromKeysAndTheServer) {
    server(";slogin;Keys;elogin;");
    EXPECT_TRUE(checked(11));
    server(";sconfig;hint_buttons disable;econfig;");
    EXPECT_FALSE(checked(11));
    server(";sconfig;popup_buttons disable;econfig;");
    EXPECT_FALSE(checked(10));
    // Ctrl-Shift-8 on the command line toggles the popup buttons back.
    zorn_line_edit& editor = frame->input_window->line_edit;
    editor.SetFocus();
    wxUIActionSimulator keys;
    keys.MouseMove(editor.GetScreenRect().GetPosition() + wxPoint(8, editor.GetSize().GetHeight() / 2));
    pump_for(20);
    keys.Char('8', wxMOD_CONTROL | wxMOD_SHIFT);
    EXPECT_TRUE(pump_until([&] { return checked(10); }));
    EXPECT_EQ(LConfig::instance().get_popup_display(), 1);

    // A menu toggle is the setter: the record and the item agree.
    choose(28);
    EXPECT_EQ(LConfig::instance().get_local_echo(), 0);
    EXPECT_FALSE(checked(28));
    choose(20);
    EXPECT_EQ(LConfig::instance().get_group_status_display(), 2);
    EXPECT_TRUE(checked(20));
}

TEST_F(Menus, FontSizeStepsStopAtThree) {
    zorn_font* font = zorn_main_font();
    const int original = font->GetPointSize();
    font->SetPointSize(4);
    choose(66);
    EXPECT_EQ(font->GetPointSize(), 3);
    choose(66);
    EXPECT_EQ(font->GetPointSize(), 3);
    choose(65);
    EXPECT_EQ(font->GetPointSize(), 4);
    EXPECT_EQ(LConfig::instance().get_font_size(), 4) << "the record keeps what is displayed";
    font->SetPointSize(original);
    frame->refresh_main_font();
}

TEST_F(Menus, DockedMapTurnsTheMapOnFirstAndSizeItemsFollowIt) {
    LConfig::instance().set_automap_display(0);
    frame->enable_automap_size_items(false);
    EXPECT_FALSE(frame->GetMenuBar()->IsEnabled(71));
    const int docked = LConfig::instance().get_automap_docked();
    choose(70);
    EXPECT_EQ(LConfig::instance().get_automap_display(), 1);
    EXPECT_EQ(LConfig::instance().get_automap_docked(), docked ? 0 : 1);
    EXPECT_EQ(checked(70), docked == 0);
    EXPECT_TRUE(checked(69));
    EXPECT_TRUE(frame->GetMenuBar()->IsEnabled(75));
}

// Web links with a stub opener first in PATH that records its argument.
TEST_F(Menus, WebLinksOpenTheirPagesAndSaySo) {
    const std::string opener = dir + "/xdg-open";
    std::ofstream(opener) << "#!/bin/sh\nprintf '%s\\n' \"$1\" >> \"" << dir << "/opened\"\n";
    chmod(opener.c_str(), 0755);
    choose(84);
    choose(79);
    std::ifstream in(dir + "/opened");
    std::stringstream opened;
    opened << in.rdbuf();
    EXPECT_EQ(opened.str(), std::string("http://play.test.example:8080/shops\nhttp://") + zorn_web_host() + "/?ln\n");
    EXPECT_NE(shown().find("\nOpening the Ember Vale Stores and Shops page in your web browser...\n"), std::string::npos);
    EXPECT_NE(shown().find("\nOpening the main Ember Vale web page in your browser...\n"), std::string::npos);
}

// With no character in play nothing is asked: Disconnect says so, Save and Quit quits at once.
TEST_F(Menus, OfflineThereIsNothingToAskAbout) {
    choose(zorn_menu_disconnect);
    EXPECT_NE(shown().find("\nYou are not connected to the server.\n"), std::string::npos);
    choose(zorn_menu_basic_commands);
    EXPECT_NE(shown().find("\nYou must be connected to the server to view the in-game help."), std::string::npos);
    choose(zorn_menu_save_and_quit);
    EXPECT_EQ(frame->shutdown_countdown, zorn_shutdown_ticks);
    for (wxWindow* child : frame->GetChildren()) {
        if (child->IsTopLevel()) {
            EXPECT_FALSE(child->IsShown()) << child->GetName();
        }
    }
}
