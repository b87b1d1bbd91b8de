// The three button sets under Xvfb: the direction block's lights and clicks, the hint column's
// places and tags, the function key row's labels, pictures and clicks. Clicks go through the X
// server; what the frame is asked to do is recorded.
#include <gtest/gtest.h>
#include <wx/frame.h>
#include <wx/uiaction.h>

#include <string>
#include <utility>
#include <vector>

#include "input/button_sets.h"
#include "tests/input/recording_frame.h"
#include "tests/panels/panel_support.h"
#include "tests/support/log_capture.h"
#include "theme/font.h"
#include "theme/theme.h"

namespace {

using command_list = std::vector<std::pair<std::string, int>>;

class ButtonSets : public ::testing::Test {
protected:
    void SetUp() override {
        create_themes();
        switch_themes();
        frame = new wxFrame(nullptr, wxID_ANY, "buttons", wxPoint(0, 0), wxSize(700, 600));
        frame->Show();
        zorn_set_frame_link(&link);
    }
    void TearDown() override {
        zorn_set_frame_link(nullptr);
        frame->Destroy();
        pump_for(30);
    }
    void click(wxWindow* window) {
        const wxRect r = window->GetScreenRect();
        mouse.MouseMove(r.x + r.width / 2, r.y + r.height / 2);
        pump_for(20);
        mouse.MouseClick();
        pump_for(30);
        mouse.MouseMove(r.x + r.width + 200, r.y + r.height + 200);
        pump_for(20);
    }
    wxFrame* frame = nullptr;
    recording_frame link;
    wxUIActionSimulator mouse;
};

TEST_F(ButtonSets, DirectionBlockLightsTheExitsAndSendsOnlyWhileOn) {
    zorn_direction_buttons block(frame);
    block.setup();
    block.set_rect(20, 20, 97, 130);
    block.show(1);
    // North at x + 33, y + 33; Up at x + 49, y; Down at x, y.
    EXPECT_EQ(block.buttons[1]->GetRect(), wxRect(53, 53, 31, 31));
    EXPECT_EQ(block.buttons[9]->GetRect(), wxRect(69, 20, 48, 31));
    EXPECT_EQ(block.buttons[10]->GetRect(), wxRect(20, 20, 48, 31));
    for (zorn_command_button* b : block.buttons) EXPECT_EQ(b->button_state, zorn_button_disabled);
    int mask = 0;
    ASSERT_TRUE(parse_exits_code("BF", &mask));
    block.set_exits(mask);
    std::string lit;
    for (zorn_command_button* b : block.buttons)
        if (b->lit) lit += std::string(b->get_label()) + " ";
    EXPECT_EQ(lit, "N Out E SW ") << "in table order";
    block.set_exits(0);
    lit.clear();
    for (zorn_command_button* b : block.buttons)
        if (b->lit) lit += std::string(b->get_label()) + " ";
    EXPECT_EQ(lit, "Out ") << "no exits: only Out is bright";

    // Disabled, a click only gives the keyboard back.
    click(block.buttons[1]);
    EXPECT_TRUE(link.commands.empty());
    EXPECT_EQ(link.transfers, 0) << "a disabled button takes no click at all";
    block.enable_all();
    click(block.buttons[1]);
    EXPECT_EQ(link.commands, (command_list{{"north", 1}}));
    EXPECT_EQ(link.transfers, 1);
    EXPECT_EQ(link.unlocks, 1);
    block.show(0);
    EXPECT_FALSE(block.buttons[4]->IsShown());
}

TEST_F(ButtonSets, HintColumnPlacesGroupsAndTakesTags) {
    zorn_hint_buttons column(frame);
    column.set_rect(400, 10, 97, 500);
    column.show(1);
    for (zorn_command_button* b : column.buttons) EXPECT_FALSE(b->IsShown());
    column.setup_button("b1", "Look\nlook");
    column.setup_button("b2", "Exits\nexits");
    column.setup_button("b5", "Buy a lamp\nbuy lamp");
    EXPECT_EQ(column.buttons[0]->GetRect(), wxRect(400, 26, 97, 26));
    EXPECT_EQ(column.buttons[1]->GetPosition().y, 10 + 49);
    EXPECT_EQ(column.buttons[4]->GetPosition().y, 10 + 98);
    EXPECT_TRUE(column.buttons[4]->IsShown());
    EXPECT_FALSE(column.buttons[2]->IsShown());
    EXPECT_STREQ(column.buttons[4]->get_command(), "buy lamp");
    EXPECT_EQ(column.buttons[4]->lit, 1);

    click(column.buttons[4]);
    EXPECT_EQ(link.commands, (command_list{{"buy lamp", 1}}));

    {
        log_capture log(2);
        column.setup_button("b3t", "A tooltip\nnot shown");
        EXPECT_FALSE(column.buttons[2]->IsShown());
        EXPECT_STREQ(column.buttons[2]->get_label(), "");
        column.setup_button("b13", "Too far\nfar");
        column.setup_button("b0", "None\nnone");
        EXPECT_EQ(log.text(),
                  "Warning in zorn_hint_buttons::setup_button(), requested button number 13 is bogus.  Ignoring.\n"
                  "Warning in zorn_hint_buttons::setup_button(), requested button number 0 is bogus.  Ignoring.\n");
    }
    // A label without a line feed empties the button: it goes, and button 2 moves up a group.
    column.setup_button("b1", "Look");
    EXPECT_FALSE(column.buttons[0]->IsShown());
    EXPECT_EQ(column.buttons[0]->lit, 0);
    EXPECT_EQ(column.buttons[1]->GetPosition().y, 10 + 16);

    column.flash_all();
    for (zorn_command_button* b : column.buttons) EXPECT_EQ(b->anim_count, zorn_flash_count);
    column.clear_all();
    for (zorn_command_button* b : column.buttons) EXPECT_FALSE(b->IsShown());
    column.set_connect_quit();
    EXPECT_TRUE(column.buttons[0]->IsShown());
    EXPECT_STREQ(column.buttons[11]->get_label(), "Quit");
    EXPECT_EQ(column.buttons[11]->GetPosition().y, 10 + 16 + 33 + 16);
    // Hidden by the setting, a tag changes the button but shows nothing.
    column.show(0);
    column.setup_button("b4", "Rest\nrest");
    EXPECT_FALSE(column.buttons[3]->IsShown());
    column.show(1);
    EXPECT_TRUE(column.buttons[3]->IsShown());
}

TEST_F(ButtonSets, FunctionKeyRowLabelsPicturesAndClicks) {
    zorn_fkey_manager row(frame);
    row.set_rect(10, 300, fkey_row_width(46), 46);
    row.show(1);
    EXPECT_EQ(row.buttons[0]->GetRect(), wxRect(13, 303, 41, 41));
    EXPECT_EQ(row.buttons[7]->GetPosition().x, 13 + 7 * 44);
    row.setup_button("bf1", "look");
    row.setup_button("bf2", "kill the training dummy");
    row.setup_button("bf3", "\nsupercalifragilistic fly\nignored");
    {
        log_capture log(2);
        row.setup_button("bf9", "nine");
        row.setup_button("bf12", "twelve");
        row.setup_button("bf13", "thirteen");
        EXPECT_EQ(log.text(),
                  "Warning in zorn_fkey_manager::setup_button(), requested button number 13 is bogus.  Ignoring.\n");
    }
    for (zorn_fkey_button* b : row.buttons) EXPECT_EQ(std::string(b->label).find("nine"), std::string::npos);
    zorn_fkey_button& third = *row.buttons[2];
    EXPECT_STREQ(third.alias, "f03");
    EXPECT_STREQ(third.key_text.c_str(), "F3");
    EXPECT_STREQ(third.label, "supercalifragilistic fly");
    const int fit = chars_that_fit(zorn_status_font(), third.label, 41);
    ASSERT_LT(fit, 20);
    EXPECT_EQ(std::string(third.line_1.c_str()), std::string("supercalifragilistic").substr(0, fit));
    EXPECT_STREQ(third.line_2.c_str(), "fly");
    EXPECT_STREQ(row.buttons[0]->line_1.c_str(), "look");

    // Not logged in: the row shows key names only, and a click only gives the keyboard back.
    row.set_all_active(0);
    pump_for(40);
    wxImage inactive(8 * 41, 41);
    for (int i = 0; i < 8; ++i) inactive.Paste(screen_image(row.buttons[i]), i * 41, 0);
    click(row.buttons[2]);
    EXPECT_TRUE(link.commands.empty());
    EXPECT_EQ(link.transfers, 1);

    link.session = 2;
    row.set_all_active(1);
    pump_for(40);
    wxImage active(8 * 41, 41);
    for (int i = 0; i < 8; ++i) active.Paste(screen_image(row.buttons[i]), i * 41, 0);
    click(row.buttons[2]);
    EXPECT_EQ(link.commands, (command_list{{"f03", 0}})) << "the alias, without echo";
    EXPECT_EQ(link.transfers, 2);
    expect_reference(inactive, "fkey_row_inactive");
    expect_reference(active, "fkey_row_active");

    // An empty payload clears the label; the key name stays.
    row.setup_button("bf1", "");
    EXPECT_STREQ(row.buttons[0]->label, "");
    EXPECT_STREQ(row.buttons[0]->line_1.c_str(), "");
    EXPECT_EQ(row.buttons[0]->active, 1);
}

}  // namespace
