// The group display under Xvfb: what a block puts on the screen in both modes, vertical and
// horizontal, inverted or not; showing and hiding; the bottom edge in layout 2; the tooltip under
// the pointer.
#include <gtest/gtest.h>
#include <wx/frame.h>
#include <wx/tooltip.h>
#include <wx/uiaction.h>

#include <string>

#include "config/lconfig.h"
#include "panels/group_display.h"
#include "tests/panels/panel_support.h"
#include "tests/theme/pixels.h"
#include "theme/font.h"
#include "theme/theme.h"

namespace {

// Full rows, a compact row, then the divided block: a pet with 0 of 0 hit points and one with more
// movement than its maximum.
constexpr const char* party =
    "120 150 80 90 100 110 Anna\n"
    "40 150 0 0 100 110 Borin\n"
    "90 90 30 60 80 80 . Ana\n"
    "0 0 0 0 60 60 - Pip -\n"
    "30 30 0 0 200 60 - Rex\n";

class Group : public ::testing::Test {
protected:
    void SetUp() override {
        create_themes();
        switch_themes();
        LConfig& c = LConfig::instance();
        if (!c.current()) c.setup_default_config(nullptr);
        c.set_current_layout(1);
        c.set_group_status_display(1);
        c.set_group_status_inverted_bars(0);
        frame = new wxFrame(nullptr, wxID_ANY, "group", wxPoint(0, 0), wxSize(700, 500));
        frame->Show();
    }
    void TearDown() override {
        frame->Destroy();
        pump_for(30);
    }
    zorn_group_display* make(int mode, int x = 10, int y = 10) {
        auto* g = new zorn_group_display(frame);
        g->mode = mode;
        g->Show(false);
        g->set_size(x, y, 160, 1);
        return g;
    }
    wxImage shown_block(zorn_group_display* g) {
        const int before = g->repaints;
        g->parse_group_block(party);
        EXPECT_TRUE(g->IsShown());
        EXPECT_TRUE(wait_for_paint(g->repaints, before));
        return screen_image(g);
    }
    wxFrame* frame = nullptr;
};

TEST_F(Group, PicturesInBothModesVerticalAndHorizontalInvertedOrNot) {
    for (int mode : {1, 2}) {
        for (int display : {1, 2}) {
            LConfig::instance().set_group_status_display(display);
            wxImage pair;
            for (int inverted : {0, 1}) {
                LConfig::instance().set_group_status_inverted_bars(inverted);
                zorn_group_display* g = make(mode);
                const wxImage image = shown_block(g);
                const int height = g->GetSize().GetHeight();
                EXPECT_EQ(height, g->required_height());
                // The divider: before the first divided row only, in the panel frame's colour.
                zorn_bitmap& b = *g->backing_bitmap;
                const group_places real = group_row_places(
                    g->members, group_metrics{g->full_row_height, g->compact_row_height});
                ASSERT_GT(real.divider_y, 1);
                EXPECT_EQ(pixel_at(b, 80, real.divider_y), zorn_current_button_theme->triple[zorn_triple_panel_frame]);
                EXPECT_EQ(pixel_at(b, 80, real.divider_y + 1), zorn_black);
                if (pair.IsOk()) {
                    wxImage joined(pair.GetWidth() + image.GetWidth(), image.GetHeight());
                    joined.Paste(pair, 0, 0);
                    joined.Paste(image, pair.GetWidth(), 0);
                    pair = joined;
                } else {
                    pair = image;
                }
                g->Destroy();
                pump_for(20);
            }
            expect_reference(pair, std::string("group_mode") + std::to_string(mode) +
                                       (display == 1 ? "_vertical" : "_horizontal"));
        }
    }
}

TEST_F(Group, BarsOfPetsWithoutHitPointsAndAboveTheMaximum) {
    LConfig::instance().set_group_status_display(1);
    zorn_group_display* g = make(1);
    shown_block(g);
    zorn_bitmap& b = *g->backing_bitmap;
    const group_places places = group_row_places(g->members, group_metrics{g->full_row_height, g->compact_row_height});
    const int bar = std::max((158 - 3) * 7 / 16 - 3, 1);
    // Pip (row 3): no hit point bar at all, a movement bar below.
    const int pip_y = std::max(places.rows[3].y + 1, 1);
    for (int x = 1; x < 4 + bar; ++x) EXPECT_NE(pixel_at(b, x, pip_y), group_hp_top) << x;
    // Rex (row 4): movement 200 of 60 fills the bar to its last column.
    const int hh = std::max((g->compact_row_height - 3) / 2, 1);
    const int move_y = std::max(places.rows[4].y + 1, 1) + hh + 1;
    EXPECT_EQ(pixel_at(b, 4 + bar - 2, move_y), group_move_top);
    EXPECT_EQ(pixel_at(b, 4 + bar - 1, move_y), zorn_black) << "the moving end";
    if (hh >= 3) {
        EXPECT_EQ(pixel_at(b, 4 + bar - 1, move_y + 1), group_move_fill);
    }
}

TEST_F(Group, EmptyBlockHidesAndTheSettingDecides) {
    zorn_group_display* g = make(1);
    g->parse_group_block(party);
    EXPECT_TRUE(g->IsShown());
    EXPECT_FALSE(g->parse_group_block("")) << "nothing parsed";
    EXPECT_FALSE(g->IsShown());
    EXPECT_TRUE(g->members.empty());
    LConfig::instance().set_group_status_display(0);
    g->parse_group_block(party);
    EXPECT_FALSE(g->IsShown()) << "the display is off";
    EXPECT_EQ(g->members.size(), 5u);
    g->reset();
    EXPECT_TRUE(g->members.empty());
}

TEST_F(Group, InLayoutTwoTheBottomEdgeStays) {
    LConfig::instance().set_current_layout(2);
    zorn_group_display* g = make(1, 2, 400);
    const int bottom = g->GetRect().GetBottom();
    EXPECT_TRUE(g->parse_group_block("10 10 10 10 10 10 Anna\n"));
    EXPECT_EQ(g->GetRect().GetBottom(), bottom);
    EXPECT_TRUE(g->parse_group_block("10 10 10 10 10 10 Anna\n9 9 9 9 9 9 . Ana\n"));
    EXPECT_EQ(g->GetRect().GetBottom(), bottom) << "a member joins: the panel grows upward";
    EXPECT_LT(g->GetRect().GetTop(), 400 - g->full_row_height);
    EXPECT_FALSE(g->parse_group_block("1 1 1 1 1 1 Anna\n1 1 1 1 1 1 . Ana\n")) << "same height";
    // In layout 1 the top stays.
    LConfig::instance().set_current_layout(1);
    const int top = g->GetRect().GetTop();
    g->parse_group_block("1 1 1 1 1 1 Anna\n");
    EXPECT_EQ(g->GetRect().GetTop(), top);
}

TEST_F(Group, TooltipNamesTheMemberUnderThePointer) {
    zorn_group_display* g = make(1);
    shown_block(g);
    const group_places places = group_row_places(g->members, group_metrics{g->full_row_height, g->compact_row_height});
    wxUIActionSimulator mouse;
    const wxPoint origin = g->GetScreenPosition();
    mouse.MouseMove(origin + wxPoint(60, places.rows[2].y + 3));
    ASSERT_TRUE(pump_until([&] { return g->GetToolTipText() == "Status for group member 'Ana'."; }))
        << g->GetToolTipText();
    mouse.MouseMove(origin + wxPoint(60, places.rows[3].y + 2));
    ASSERT_TRUE(pump_until([&] { return g->GetToolTipText() == "Status for group member 'Pip '."; }))
        << g->GetToolTipText();
    mouse.MouseMove(origin + wxPoint(60, g->GetSize().GetHeight() - 1));
    EXPECT_TRUE(pump_until([&] { return g->GetToolTipText().empty(); })) << "below the last row";
    mouse.MouseMove(origin + wxPoint(400, 400));
    pump_for(20);
}

}  // namespace
