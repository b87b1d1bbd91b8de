// The button sets and the group display in the real frame, offline: the server's tags go in as
// bytes, and what is checked is what the frame's panels show and where.
#include <gtest/gtest.h>

#include <string>

#include "app/main_frame.h"
#include "automap/automap_display.h"
#include "config/lconfig.h"
#include "display/ansi_display.h"
#include "input/button_sets.h"
#include "panels/group_display.h"
#include "tests/app/offline_frame.h"
#include "tests/panels/panel_support.h"
#include "tests/support/log_capture.h"

namespace {

class ButtonsInFrame : public offline_frame_test {
protected:
    void SetUp() override {
        offline_frame_test::SetUp();
        if (HasFatalFailure()) return;
        LConfig& c = LConfig::instance();
        c.set_direction_button_enable(1);
        c.set_hint_button_enable(1);
        c.set_current_layout(1);
        c.set_group_status_display(1);
        // The map takes the left column's top when shown; most places here are measured without it.
        frame->set_automap_display(0);
    }
    std::string lit_directions() const {
        std::string lit;
        for (zorn_command_button* b : frame->direction_buttons->buttons)
            if (b->lit) lit += std::string(b->get_label()) + " ";
        return lit;
    }
    bool directions_enabled() const {
        for (zorn_command_button* b : frame->direction_buttons->buttons)
            if (b->button_state == zorn_button_disabled) return false;
        return true;
    }
    zorn_command_button* hint(int number) const { return frame->hint_buttons->buttons[number - 1]; }
};

TEST_F(ButtonsInFrame, DirsLightsTheExitsAndSwitchesTheBlock) {
    const int width = frame->GetClientSize().GetWidth();
    EXPECT_EQ(frame->direction_buttons->buttons[1]->GetRect(), wxRect(width - 99 + 33, 2 + 33, 31, 31));
    EXPECT_TRUE(frame->direction_buttons->buttons[1]->IsShown());
    EXPECT_FALSE(directions_enabled()) << "disabled until the server says on";
    server(";sdirs;on BF;edirs;");
    EXPECT_TRUE(directions_enabled());
    EXPECT_EQ(lit_directions(), "N Out E SW ");
    server(";sdirs;off AA;edirs;");
    EXPECT_FALSE(directions_enabled());
    EXPECT_EQ(lit_directions(), "Out ");
    server(";sdirs;on;edirs;");
    EXPECT_TRUE(directions_enabled());
    EXPECT_EQ(lit_directions(), "Out ") << "no second word: the exits stay";
    log_capture log(2);
    server(";sdirs;sideways CB;edirs;;sdirs;ON ab;edirs;");
    EXPECT_EQ(log.text(), "Warning in zorn_mw::process_tagged_data(), bad dirs string 'sideways CB'.\n"
                          "Warning in zorn_mw::process_tagged_data(), bad dirs string 'ON ab'.\n");
    EXPECT_EQ(lit_directions(), "N W Out ") << "a bad first word still takes the exits; a bad code none";
    EXPECT_TRUE(directions_enabled()) << "ON, whatever its case";
    LConfig::instance().set_direction_button_enable(0);
    EXPECT_FALSE(frame->direction_buttons->buttons[1]->IsShown());
}

TEST_F(ButtonsInFrame, NumberedTagsReachTheirSets) {
    server(";sb1;Look\nlook;eb1;;sb2;Exits\nexits;eb2;;sb5;Wares\nlist;eb5;");
    EXPECT_EQ(hint(1)->GetPosition().y, 134 + 16) << "under the direction block";
    EXPECT_EQ(hint(5)->GetPosition().y, 134 + 98);
    EXPECT_STREQ(hint(5)->get_command(), "list");
    {
        log_capture log(2);
        server(";sb3t;a tooltip;eb3t;;sb13;x\ny;eb13;;sbf9;nine;ebf9;;sbf13;x;ebf13;;sb0;x;eb0;;sbf0;x;ebf0;");
        EXPECT_EQ(log.text(),
                  "Warning in zorn_hint_buttons::setup_button(), requested button number 13 is bogus.  Ignoring.\n"
                  "Warning in zorn_fkey_manager::setup_button(), requested button number 13 is bogus.  Ignoring.\n"
                  "Warning in zorn_mw::process_tagged_data(), no handler for tag 'b0'.\n"
                  "Warning in zorn_mw::process_tagged_data(), no handler for tag 'bf0'.\n");
    }
    EXPECT_FALSE(hint(3)->IsShown());
    server(";sbf2;kill dummy;ebf2;");
    EXPECT_STREQ(frame->fkey_manager->buttons[1]->label, "kill dummy");
    EXPECT_EQ(frame->fkey_manager->buttons[1]->active, 1);
    server(";tbclear;");
    for (zorn_command_button* b : frame->hint_buttons->buttons) EXPECT_FALSE(b->IsShown());
}

TEST_F(ButtonsInFrame, LoginAndDisconnect) {
    for (zorn_fkey_button* b : frame->fkey_manager->buttons) EXPECT_EQ(b->active, 1) << "logged in";
    server(";sdirs;on BF;edirs;;sb2;Exits\nexits;eb2;;sgroup;10 10 10 10 10 10 Tester\n;egroup;");
    EXPECT_TRUE(frame->group_display->IsShown());
    frame->process_user_command("//disconnect", 0);
    for (zorn_fkey_button* b : frame->fkey_manager->buttons) EXPECT_EQ(b->active, 0);
    EXPECT_FALSE(directions_enabled());
    EXPECT_FALSE(frame->group_display->IsShown());
    EXPECT_TRUE(frame->group_display->members.empty());
    EXPECT_FALSE(hint(2)->IsShown());
    EXPECT_STREQ(hint(1)->get_label(), "Connect");
    EXPECT_STREQ(hint(12)->get_command(), "quit");
    EXPECT_TRUE(hint(1)->IsShown());
    EXPECT_TRUE(hint(12)->IsShown());
    server(";slogin;Tester;elogin;");
    for (zorn_fkey_button* b : frame->fkey_manager->buttons) EXPECT_EQ(b->active, 1);
}

TEST_F(ButtonsInFrame, ServerSwitchesTheSets) {
    LConfig& c = LConfig::instance();
    c.set_hint_button_enable(0);
    server(";sconfig;hint_buttons flash;econfig;");
    EXPECT_EQ(c.get_hint_button_enable(), 1);
    for (zorn_command_button* b : frame->hint_buttons->buttons) EXPECT_EQ(b->anim_count, zorn_flash_count);
    server(";sconfig;fkey_buttons enable;econfig;;sconfig;direction_buttons disable;econfig;");
    EXPECT_TRUE(frame->fkey_manager->buttons[0]->IsShown());
    const int height = frame->GetClientSize().GetHeight();
    EXPECT_EQ(frame->fkey_manager->buttons[0]->GetRect(), wxRect(164 + 3, height - 46 + 3, 41, 41));
    EXPECT_FALSE(frame->direction_buttons->buttons[0]->IsShown());
    log_capture log(2);
    server(";sconfig;hint_buttons wiggle;econfig;;sconfig;fkey_buttons flash;econfig;"
           ";sconfig;direction_buttons flash;econfig;");
    EXPECT_EQ(log.text(), "Error in zorn_mw::parse_cmd_hint_buttons(), bad command 'wiggle'.\n"
                          "Error in zorn_mw::parse_cmd_fkey_buttons(), bad command 'flash'.\n"
                          "Error in zorn_mw::parse_cmd_direction_buttons(), bad command 'flash'.\n");
}

TEST_F(ButtonsInFrame, GroupDisplayInEachLayout) {
    const std::string two = ";sgroup;10 10 10 10 10 10 Tester\n5 5 0 0 5 5 . Ana\n;egroup;";
    const std::string three = ";sgroup;10 10 10 10 10 10 Tester\n5 5 0 0 5 5 . Ana\n3 3 0 0 3 3 - Pip\n;egroup;";
    zorn_group_display& g = *frame->group_display;
    // Left top: under the docked map, as wide as the map.
    frame->set_automap_display(1);
    server(two);
    EXPECT_TRUE(g.IsShown());
    EXPECT_EQ(g.GetParent(), frame);
    EXPECT_EQ(g.mode, 1);
    const wxSize map = frame->automap->GetSize();
    EXPECT_EQ(g.GetRect(), wxRect(2, map.GetHeight() + 12, map.GetWidth(), g.required_height()));
    // Without the map it stands at the column's top, 160 wide.
    frame->set_automap_display(0);
    EXPECT_EQ(g.GetRect(), wxRect(2, 2, 160, g.required_height()));

    // Left bottom above the function key row: a joining member leaves the bottom edge in place.
    LConfig::instance().set_fkey_button_display(1);
    LConfig::instance().set_current_layout(2);
    const int bottom = frame->GetClientSize().GetHeight() - 2 - 46;
    EXPECT_EQ(g.GetRect().GetBottom() + 1, bottom);
    server(three);
    EXPECT_EQ(g.GetRect().GetBottom() + 1, bottom);
    EXPECT_EQ(g.GetSize().GetHeight(), g.required_height());

    // Embedded: on the text at its top right, mode 2.
    LConfig::instance().set_current_layout(0);
    EXPECT_EQ(g.GetParent(), frame->main_display->textctrl);
    EXPECT_EQ(g.mode, 2);
    // The hidden map still sets the place: below its inset, as wide as the map.
    const int text_width = frame->main_display->textctrl->GetSize().GetWidth();
    const int inset = 2 * frame->main_display->automap_inset();
    EXPECT_EQ(g.GetRect(), wxRect(text_width - map.GetWidth() - inset, inset, map.GetWidth(), g.required_height()));
    EXPECT_TRUE(g.IsShown());

    // Off hides it; on again shows the group kept meanwhile; an empty block hides it.
    LConfig::instance().set_group_status_display(0);
    EXPECT_FALSE(g.IsShown());
    server(two);
    EXPECT_FALSE(g.IsShown());
    LConfig::instance().set_group_status_display(2);
    EXPECT_TRUE(g.IsShown());
    // "Bar Invert" in the Group Display menu repaints at once.
    const int inverted = LConfig::instance().get_group_status_inverted_bars();
    const int before = g.repaints;
    wxCommandEvent invert(wxEVT_MENU, 22);
    invert.SetEventObject(frame);
    frame->GetEventHandler()->ProcessEvent(invert);
    EXPECT_EQ(LConfig::instance().get_group_status_inverted_bars(), !inverted);
    EXPECT_TRUE(wait_for_paint(g.repaints, before));
    server(";sgroup;;egroup;");
    EXPECT_FALSE(g.IsShown());
}

}  // namespace
