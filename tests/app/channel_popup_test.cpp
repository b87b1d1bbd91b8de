// Channel tabs and popup windows in the real frame, offline: the server's tags go in as bytes, the
// player's clicks and keys go through the X server, and what is checked is what the windows show.
#include <gtest/gtest.h>

#include <wx/menu.h>
#include <wx/uiaction.h>

#include <algorithm>
#include <cstdlib>
#include <string>

#include "app/main_frame.h"
#include "config/debug_log.h"
#include "config/lconfig.h"
#include "display/ansi_display.h"
#include "input/input_window.h"
#include "panels/channel_window.h"
#include "tests/app/offline_frame.h"
#include "tests/panels/panel_support.h"
#include "tests/support/log_capture.h"
#include "theme/builtin_images.h"
#include "theme/theme.h"

namespace {

class Panels : public offline_frame_test {
protected:
    static std::string text_of(zorn_ansi_display* display) { return display->textctrl->model.raw_text(); }
    std::string main_text() const { return text_of(frame->main_display); }
    zorn_channel_window& channels() const { return *frame->channel_window; }
    zorn_channel_record* channel(const char* name) const { return channels().find_channel(name); }
    void press_in_editor(int key, int modifiers) {
        zorn_line_edit& editor = frame->input_window->line_edit;
        editor.SetFocus();
        keys.MouseMove(editor.GetScreenRect().GetPosition() + wxPoint(8, editor.GetSize().GetHeight() / 2));
        pump_for(20);
        keys.Char(key, modifiers);
        pump_for(30);
    }
    std::string menu_labels() const {
        std::string out;
        for (wxMenuItem* item : frame->popups_menu->GetMenuItems())
            out += (item->IsSeparator() ? std::string("-") : item->GetItemLabelText().ToStdString()) + "|";
        return out;
    }
    static std::string window_create(const std::string& name, const std::string& size = "20 5",
                                     const std::string& command = "", const std::string& flags = "") {
        return ";swindow_create;" + name + "\n" + name + " title\n" + size + "\n" + command + "\n" + flags +
               "\n;ewindow_create;";
    }
};

}  // namespace

TEST_F(Panels, ChatGoesToItsTabAndLightsWhatIsNotShown) {
    LConfig::instance().set_channel_window_enable(1);
    LConfig::instance().set_channel_window_dupe(0);
    server(";schdiv;gossip;echdiv;Anna: hello there\n;tchudiv;after the chat\n");
    ASSERT_NE(channel("(all)"), nullptr);
    ASSERT_NE(channel("gossip"), nullptr);
    EXPECT_EQ(channels().channels.current_channel, channel("(all)"));
    EXPECT_EQ(frame->channel_divert_active, 0);
    EXPECT_NE(text_of(channel("gossip")->display).find("Anna: hello there"), std::string::npos);
    EXPECT_NE(text_of(channel("(all)")->display).find("Anna: hello there"), std::string::npos);
    EXPECT_EQ(main_text().find("Anna: hello there"), std::string::npos) << "shown in tabs, not twice";
    EXPECT_NE(main_text().find("after the chat"), std::string::npos);

    zorn_channel_button* tab = channel("gossip")->button;
    EXPECT_EQ(tab->button_state, zorn_button_down) << "lit";
    EXPECT_TRUE(channel("(all)")->display->IsShown());
    click(tab);
    EXPECT_EQ(channels().channels.current_channel, channel("gossip"));
    EXPECT_EQ(tab->button_state, zorn_button_up) << "selected, its light out";
    EXPECT_TRUE(channel("gossip")->display->IsShown());
    EXPECT_FALSE(channel("(all)")->display->IsShown());

    // Text for the tab not shown now lights "(all)".
    server(";schdiv;ooc;echdiv;Bo: hi\n;tchudiv;");
    EXPECT_EQ(channel("(all)")->button->button_state, zorn_button_down);
    EXPECT_EQ(channel("ooc")->button->button_state, zorn_button_down);
    EXPECT_EQ(channel("gossip")->button->button_state, zorn_button_up);
}

TEST_F(Panels, TabPicturesSelectedLitAndPlain) {
    LConfig::instance().set_channel_window_enable(1);
    server(";schdiv;gossip;echdiv;one\n;schdiv;ooc;echdiv;two\n;tchudiv;");
    zorn_channel_record* all = channel("(all)");
    zorn_channel_record* ooc = channel("ooc");
    click(ooc->button);  // ooc selected, gossip still lit, "(all)" plain
    ASSERT_EQ(all->button->button_state, zorn_button_disabled);
    pump_for(50);
    // The three tabs side by side, as the screen shows them.
    const wxImage pictures[] = {screen_image(ooc->button), screen_image(channel("gossip")->button),
                                screen_image(all->button)};
    wxImage row(pictures[0].GetWidth() * 3, pictures[0].GetHeight());
    for (int i = 0; i < 3; ++i) row.Paste(pictures[i], i * pictures[0].GetWidth(), 0);
    expect_reference(row, "channel_tabs");
    // The lit tab's label is drawn in pure red, the plain one's in grey.
    const auto reddest = [](const wxImage& image) {
        int best = 0;
        for (int y = 0; y < image.GetHeight(); ++y)
            for (int x = 0; x < image.GetWidth(); ++x) {
                const zorn_rgb p = image_pixel(image, x, y);
                best = std::max(best, p.red - std::max(p.green, p.blue));
            }
        return best;
    };
    EXPECT_GT(reddest(pictures[1]), 200);
    EXPECT_LT(reddest(pictures[2]), 20);
}

TEST_F(Panels, ChannelEdgeCases) {
    LConfig::instance().set_channel_window_enable(1);
    {
        log_capture log(1);
        server(";tchudiv;");
        EXPECT_EQ(log.text(), "Error in zorn_channel_window::clear_divert_channel(), null divert channel?\n");
    }
    const std::string long_name(45, 'x');
    server(";schdiv;" + long_name + ";echdiv;;tchudiv;");
    EXPECT_NE(channel(long_name.substr(0, 39).c_str()), nullptr);

    // With the window off, chat shows in the main text and is still kept in tabs.
    LConfig::instance().set_channel_window_enable(0);
    LConfig::instance().set_channel_window_dupe(0);
    server(";schdiv;gossip;echdiv;while hidden\n;tchudiv;");
    EXPECT_NE(main_text().find("while hidden"), std::string::npos);
    EXPECT_NE(text_of(channel("gossip")->display).find("while hidden"), std::string::npos);
    EXPECT_FALSE(channel("gossip")->button->IsShown());

    // //cclear in the middle of a diversion: the text that follows has no channel.
    LConfig::instance().set_channel_window_enable(1);
    server(";schdiv;ooc;echdiv;");
    frame->process_user_command("//cclear", 0);
    EXPECT_TRUE(channels().channels.records().empty());
    log_capture log(1);
    server("lost to the tabs\n;tchudiv;");
    EXPECT_EQ(log.text(), "Error in zorn_channel_window::display_socket_data(), null divert channel?\n"
                          "Error in zorn_channel_window::clear_divert_channel(), null divert channel?\n");
    EXPECT_EQ(main_text().find("lost to the tabs"), std::string::npos) << "window on, no dupe: nowhere";
    EXPECT_TRUE(channels().placeholder_button->IsShown());
    EXPECT_TRUE(channels().blank_display->IsShown());
}

TEST_F(Panels, PagingMovesTabsBetweenPages) {
    LConfig::instance().set_channel_window_enable(1);
    server(";schdiv;gossip;echdiv;a\n;schdiv;ooc;echdiv;b\n;tchudiv;");
    click(channel("gossip")->button);
    click(channel("gossip")->button->paging_button);
    EXPECT_EQ(channel("gossip")->page, 1);
    EXPECT_FALSE(channel("gossip")->button->IsShown());
    EXPECT_EQ(channels().channels.current_channel, channel("(all)")) << "the next tab became current";
    click(channels().page_button);
    EXPECT_EQ(channels().channels.page, 1);
    EXPECT_TRUE(channel("gossip")->button->IsShown());
    EXPECT_TRUE(channel("gossip")->display->IsShown());
    EXPECT_FALSE(channel("ooc")->button->IsShown());
}

TEST_F(Panels, PopupWindowsFromTheServer) {
    EXPECT_EQ(menu_labels(), "Not Connected|");
    {
        log_capture log(2);
        // Four lines: the fourth has no line feed, so there is no fifth.
        server(";swindow_create;Inventory\nWhat you carry\n40 10\ninventory;ewindow_create;");
        EXPECT_EQ(log.text(), "Error in zorn_popup_manager::create_window(), no command.\n");
    }
    EXPECT_EQ(frame->popup_manager->buttons, nullptr);
    server(window_create("Inventory", "40 10", "inventory") + window_create("Score", "0 0", "score", "nowrap noscroll"));
    ASSERT_NE(frame->popup_manager->find_window("Score"), nullptr);
    EXPECT_EQ(menu_labels(), "Score|Inventory|-|Reset Window Positions|");
    // A repeat changes nothing, not even the title.
    server(";swindow_create;Score\nAnother title\n9 9\n\n\n;ewindow_create;");
    zorn_popup_window* score = frame->popup_manager->find_window("Score");
    EXPECT_EQ(score->GetTitle(), "Score title");
    EXPECT_EQ(frame->popup_count, 2);
    // "0 0" is one character; the display has no scrollbar and doesn't wrap.
    int cw = 0, ch = 0;
    score->display->textctrl->get_max_char_size(&cw, &ch);
    EXPECT_EQ(score->GetClientSize(), wxSize(cw + 4, ch + ch / 2 + 2));
    EXPECT_EQ(score->display->scrollbar_enabled, 0);
    EXPECT_EQ(score->display->textctrl->model.wrap_enabled, 0);
    EXPECT_EQ(score->display->textctrl->model.top_anchored, 1);

    // A click opens the window and checks its menu item; the close box closes both.
    zorn_popup_button* button = frame->popup_manager->buttons;  // newest first: Score
    ASSERT_STREQ(button->name(), "Score");
    click(button);
    ASSERT_TRUE(pump_until([&] { return score->IsShown(); }));
    EXPECT_TRUE(frame->popups_menu->IsChecked(button->menu_id));
    EXPECT_EQ(button->button_state, zorn_button_down);
    score->Close();
    pump_for(30);
    EXPECT_FALSE(score->IsShown());
    EXPECT_FALSE(frame->popups_menu->IsChecked(button->menu_id));
    EXPECT_EQ(button->button_state, zorn_button_up);
}

TEST_F(Panels, DivertedTextFillsTheWindowAndKeepsTheReadersPlace) {
    server(window_create("Inventory", "30 5"));
    zorn_ansi_display* display = frame->popup_manager->find_display("Inventory");
    std::string lines;
    for (int i = 0; i < 60; ++i) lines += "item " + std::to_string(i) + "\n";
    server(";sdivert;Inventory;edivert;" + lines + ";tundivert;main again\n");
    EXPECT_NE(text_of(display).find("item 59"), std::string::npos);
    EXPECT_EQ(frame->text_target, frame->main_display);
    EXPECT_NE(main_text().find("main again"), std::string::npos);
    display->set_scroll_position(20);
    const int place = display->get_scroll_position();
    server(";sdivert;Inventory;edivert;" + lines + ";tundivert;");
    EXPECT_EQ(display->get_scroll_position(), place);
    EXPECT_EQ(text_of(display).find("item 0\n"), text_of(display).rfind("item 0\n")) << "divert replaced the text";
    server(";sappend;Inventory;eappend;one more\n;tunappend;");
    EXPECT_NE(text_of(display).find("one more"), std::string::npos);

    // A window that goes while text is led to it sends the text back to the main display.
    server(";sdivert;Inventory;edivert;");
    EXPECT_EQ(frame->text_target, display);
    frame->process_user_command("//disconnect", 0);
    EXPECT_EQ(frame->text_target, frame->main_display);
    EXPECT_EQ(frame->popup_manager->buttons, nullptr);
    EXPECT_EQ(menu_labels(), "Not Connected|");
}

TEST_F(Panels, CtrlDigitReachesMenuOnlyWindowsLast) {
    server(window_create("First") + window_create("Hidden", "20 5", "", "MENUONLY") + window_create("Third"));
    zorn_popup_manager& popups = *frame->popup_manager;
    EXPECT_FALSE(popups.menu_only_buttons->IsShown());
    EXPECT_STREQ(popups.button_at(1)->name(), "Third");
    EXPECT_STREQ(popups.button_at(2)->name(), "First");
    EXPECT_STREQ(popups.button_at(3)->name(), "Hidden");
    press_in_editor('3', wxMOD_CONTROL);
    EXPECT_TRUE(pump_until([&] { return popups.find_window("Hidden")->IsShown(); }));
    press_in_editor('1', wxMOD_CONTROL);
    EXPECT_TRUE(pump_until([&] { return popups.find_window("Third")->IsShown(); }));
    EXPECT_FALSE(popups.find_window("First")->IsShown());
}

TEST_F(Panels, SeventeenthWindowHasAButtonButNoMenuItem) {
    std::string tags;
    for (int i = 1; i <= 16; ++i) tags += window_create("W" + std::to_string(i));
    server(tags);
    log_capture log(2);
    server(window_create("W17"));
    EXPECT_EQ(log.text(), "zorn_mw::add_popup_menu_item : too many popup windows!\n");
    EXPECT_EQ(frame->popup_count, 16);
    EXPECT_STREQ(frame->popup_manager->buttons->name(), "W17");
    EXPECT_EQ(frame->popup_manager->buttons->menu_id, -1);
    EXPECT_TRUE(frame->popup_manager->buttons->IsShown());
}

TEST_F(Panels, PlacesAreStoredAndRepairedOnOpening) {
    const int old_width = ::screen_width;
    ::screen_width = 1920;
    popup_window_config far("Far");
    far.x = 5000;
    far.y = 100;
    LConfig::instance().set_popup_window_config(far);
    server(window_create("Far", "10 3"));
    zorn_popup_window* window = frame->popup_manager->find_window("Far");
    {
        log_capture log(2);
        window->controller->toggle_state();
        EXPECT_NE(log.text().find("Warning in zorn_popup_button::toggle_state(), X value 5000 too near display edge "
                                  "1920, resetting.\n"),
                  std::string::npos)
            << log.text();
    }
    pump_for(50);
    EXPECT_EQ(window->GetPosition().x, 48);
    ::screen_width = old_width;

    // A stored size wins over the server's, and the place survives the windows going.
    window->SetSize(300, 200, 260, 140);
    pump_for(50);
    frame->popup_manager->destroy_all();
    const popup_window_config stored = LConfig::instance().get_popup_window_config("Far");
    EXPECT_EQ(stored.x, 300);
    EXPECT_EQ(stored.width, 260);
    server(window_create("Far", "10 3"));
    window = frame->popup_manager->find_window("Far");
    EXPECT_EQ(window->GetSize(), wxSize(260, 140));
    EXPECT_EQ(window->GetPosition(), wxPoint(300, 200));
}
