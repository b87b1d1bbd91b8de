// The automap in the real frame under Xvfb: maps from the server slide into place on the screen,
// the panel keeps its map and its slide through docking, undocking and hiding, the floating
// frame's close box turns the map off, the keys and the scale change its size, the title shows
// the area or the fight, and the compass lights up under the mouse.
#include <gtest/gtest.h>

#include <wx/uiaction.h>

#include <cstdlib>
#include <string>

#include "app/automap_frame.h"
#include "app/main_frame.h"
#include "automap/automap_display.h"
#include "automap/automap_painter.h"
#include "automap/automap_renderer.h"
#include "config/lconfig.h"
#include "display/ansi_display.h"
#include "display/textctrl.h"
#include "input/input_window.h"
#include "testworld/map_area.h"
#include "tests/app/offline_frame.h"
#include "tests/support/gui_main.h"
#include "tests/support/log_capture.h"
#include "tests/support/screen.h"
#include "theme/builtin_images.h"
#include "theme/font.h"
#include "theme/theme.h"

namespace {

wxImage image_of(const automap_canvas& canvas) {
    wxImage image(canvas.width(), canvas.height());
    for (int y = 0; y < canvas.height(); y++)
        for (int x = 0; x < canvas.width(); x++) {
            const zorn_rgb c = canvas.pixel(x, y);
            image.SetRGB(x, y, static_cast<unsigned char>(c.red), static_cast<unsigned char>(c.green),
                         static_cast<unsigned char>(c.blue));
        }
    return image;
}

constexpr int square = testworld::map_village_offset + 1;

class AutomapView : public ::testing::Test {
protected:
    void SetUp() override {
        dir = offline_settings("automap");
        ASSERT_FALSE(dir.empty());
        frame = make_offline_frame();
        // The pointer rests over the text, away from the map.
        keys.MouseMove(frame->GetScreenPosition() + wxPoint(600, 100));
        pump_for(20);
    }
    void TearDown() override {
        frame->Destroy();
        pump_for(30);
        std::system(("rm -rf '" + dir + "'").c_str());
    }
    void server(const std::string& bytes) {
        frame->begin_block();
        frame->process_socket_data(reinterpret_cast<const unsigned char*>(bytes.data()), static_cast<int>(bytes.size()));
        frame->end_block();
    }
    void log_in() {
        server(";slogin;Tester;elogin;");
        ASSERT_EQ(frame->session_state, session_logged_in);
        LConfig::instance().set_automap_size(11);
        frame->set_automap_scale(11);
    }
    void send_map(int x, int y, char direction, char trailer = 0) {
        server(";smap;" + testworld::map_block(x, y, 0, direction, trailer) + ";emap;");
    }
    zorn_automap_display* panel() const { return frame->automap; }
    zorn_automap_renderer* renderer() const { return frame->automap->renderer; }
    const automap_model& model() const { return renderer()->model; }
    // What the map window should show now, drawn from the model by the painter.
    wxImage expected_view() const {
        automap_view_state state;
        state.logged_in = frame->session_state == session_logged_in;
        state.mouse_inside = renderer()->mouse_inside != 0;
        state.hover_direction = renderer()->hover_direction;
        automap_canvas view(renderer()->view_size, renderer()->view_size);
        automap_compose_view(model(), renderer()->map_bitmap, state, view);
        return image_of(view);
    }
    bool screen_shows_the_map() {
        return pump_until([&] { return model().at_rest() && same_pixels(screen_of(renderer()), expected_view()); }, 3000);
    }
    bool slide_runs_to_rest() {
        return pump_until([&] { return model().at_rest() && !model().animating; }, 3000);
    }
    void point_at_editor() {
        zorn_line_edit& editor = frame->input_window->line_edit;
        editor.SetFocus();
        keys.MouseMove(editor.GetScreenRect().GetPosition() + wxPoint(8, editor.GetSize().GetHeight() / 2));
        pump_for(20);
    }

    wxUIActionSimulator keys;
    zorn_mw* frame = nullptr;
    std::string dir;
};

TEST_F(AutomapView, AMapSlidesIntoPlaceOnTheScreen) {
    log_in();
    ASSERT_TRUE(panel()->IsShownOnScreen()) << "docked and displayed by default";
    send_map(square, square, '@');
    ASSERT_TRUE(screen_shows_the_map());
    const wxImage before = screen_of(renderer());
    send_map(square, square - 1, 'A');
    EXPECT_EQ(model().scroll_y, 22) << "the old picture slides in from two grid steps";
    // Frames in between differ from both ends; the last one is the new map at rest.
    EXPECT_TRUE(pump_until([&] {
        return !model().at_rest() && !same_pixels(screen_of(renderer()), before);
    }, 3000));
    ASSERT_TRUE(screen_shows_the_map());
    EXPECT_FALSE(same_pixels(screen_of(renderer()), before));
    EXPECT_NE(model().cell(11, 11).seed, 0);
    EXPECT_EQ(model().cell(11, 10).edge, 2) << "North Road's green gate";
}

TEST_F(AutomapView, NotLoggedInTheMapIsBlack) {
    send_map(square, square, '@');
    frame->update_automap_visibility();
    renderer()->Refresh();
    pump_for(50);
    const wxImage screen = screen_of(renderer());
    for (int y = 0; y < screen.GetHeight(); y += 7)
        for (int x = 0; x < screen.GetWidth(); x += 7) ASSERT_EQ(screen.GetRed(x, y) + screen.GetGreen(x, y) + screen.GetBlue(x, y), 0);
}

TEST_F(AutomapView, DockingUndockingAndHidingKeepTheMapAndTheSlide) {
    log_in();
    send_map(square, square, '@');
    ASSERT_TRUE(slide_runs_to_rest());
    send_map(square + 1, square, 'B');
    ASSERT_LT(model().scroll_x, 0);
    frame->toggle_automap_docked();  // "Docked Map"
    EXPECT_EQ(LConfig::instance().get_automap_docked(), 0);
    EXPECT_EQ(panel()->GetParent(), static_cast<wxWindow*>(frame->automap_frame));
    EXPECT_TRUE(frame->automap_frame->IsShown());
    EXPECT_EQ(frame->automap_frame->GetClientSize(), panel()->GetSize());
    EXPECT_LT(model().scroll_x, 0) << "the slide goes on";
    ASSERT_TRUE(screen_shows_the_map());
    EXPECT_EQ(model().cell(11, 11).terrain, 12) << "Market Row";

    send_map(square + 1, square + 1, 'C');
    frame->set_automap_display(0);
    EXPECT_FALSE(panel()->IsShown());
    EXPECT_FALSE(frame->automap_frame->IsShown());
    EXPECT_TRUE(slide_runs_to_rest()) << "a hidden panel still finishes its slide";
    send_map(square, square + 1, 'D');
    frame->set_automap_display(1);
    EXPECT_TRUE(frame->automap_frame->IsShown());
    frame->toggle_automap_docked();
    EXPECT_EQ(panel()->GetParent(), static_cast<wxWindow*>(frame)) << "layout 2 docks in the frame";
    EXPECT_FALSE(frame->automap_frame->IsShown());
    ASSERT_TRUE(screen_shows_the_map());
    EXPECT_EQ(model().cell(11, 11).terrain, 28) << "South Gate";

    LConfig::instance().set_current_layout(0);
    EXPECT_EQ(panel()->GetParent(), static_cast<wxWindow*>(frame->main_display->textctrl)) << "embedded on the text";
    EXPECT_TRUE(panel()->IsShownOnScreen());
    EXPECT_TRUE(screen_shows_the_map());
    LConfig::instance().set_current_layout(2);
}

TEST_F(AutomapView, TheFloatingFramesCloseBoxTurnsTheMapOff) {
    log_in();
    frame->toggle_automap_docked();
    ASSERT_TRUE(frame->automap_frame->IsShown());
    EXPECT_EQ(frame->automap_frame->GetTitle(), "Ember Vale Map");
    pump_for(50);
    // What a window manager does on a click of the close box: WM_DELETE_WINDOW to the frame.
    const std::string find = "xdotool search --sync --name '^Ember Vale Map$' | head -1";
    FILE* pipe = popen(find.c_str(), "r");
    char id[64] = "";
    ASSERT_NE(pipe, nullptr);
    ASSERT_NE(fgets(id, sizeof id, pipe), nullptr);
    pclose(pipe);
    ASSERT_EQ(std::system((std::string(X11_CLOSE_TOOL) + " " + id).c_str()), 0);
    EXPECT_TRUE(pump_until([&] { return !frame->automap_frame->IsShown(); }));
    EXPECT_EQ(LConfig::instance().get_automap_display(), 0);
    EXPECT_FALSE(panel()->IsShown());
    EXPECT_TRUE(frame->automap_frame) << "the frame lives on";
    frame->set_automap_display(1);
    EXPECT_TRUE(frame->automap_frame->IsShown());
    frame->toggle_automap_docked();
}

TEST_F(AutomapView, ScaleSetsTheViewAndThePanel) {
    log_in();
    const struct {
        int scale, view, panel_width, panel_height;
    } rows[] = {{15, 273, 275, 296}, {11, 201, 203, 224}, {7, 129, 131, 152}, {8, 165, 167, 188}, {2, 93, 95, 116}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.scale);
        frame->set_automap_scale(row.scale);
        EXPECT_EQ(renderer()->view_size, row.view);
        EXPECT_EQ(renderer()->GetSize(), wxSize(row.view, row.view));
        EXPECT_EQ(renderer()->GetPosition(), wxPoint(1, 22));
        EXPECT_EQ(panel()->GetSize(), wxSize(row.panel_width, row.panel_height));
        EXPECT_EQ(LConfig::instance().get_automap_size(), (row.view - 3) / 18);
        // Docked in layout 2: at the bottom of the left column.
        EXPECT_EQ(panel()->GetPosition(), wxPoint(2, frame->GetClientSize().GetHeight() - 2 - row.panel_height));
    }
}

TEST_F(AutomapView, KeysToggleAndResizeTheMap) {
    log_in();
    point_at_editor();
    keys.Char(']', wxMOD_CONTROL);
    EXPECT_TRUE(pump_until([&] { return model().cell_size == 13; })) << "Ctrl-] makes it larger";
    EXPECT_EQ(panel()->GetSize().GetWidth(), 13 * 18 + 5);
    keys.Char('[', wxMOD_CONTROL);
    keys.Char('[', wxMOD_CONTROL);
    EXPECT_TRUE(pump_until([&] { return model().cell_size == 9; })) << "Ctrl-[ makes it smaller";
    for (int i = 0; i < 5; i++) keys.Char('[', wxMOD_CONTROL);
    EXPECT_TRUE(pump_until([&] { return model().cell_size == 5; })) << "never below 5";
    pump_for(50);
    EXPECT_EQ(model().cell_size, 5);
    keys.Char('m', wxMOD_CONTROL);
    EXPECT_TRUE(pump_until([&] { return !panel()->IsShown(); })) << "Ctrl-M hides it";
    EXPECT_EQ(LConfig::instance().get_automap_display(), 0);
    keys.Char('m', wxMOD_CONTROL);
    EXPECT_TRUE(pump_until([&] { return panel()->IsShownOnScreen(); })) << "and shows it again";
}

// The title row on the screen: the brightest reddish pixel tells "Combat!" from white text.
bool title_has_combat_colour(const wxImage& screen) {
    for (int y = 1; y <= automap_title_height; y++)
        for (int x = 1; x < screen.GetWidth() - 1; x++)
            if (screen.GetRed(x, y) >= 250 && screen.GetGreen(x, y) >= 115 && screen.GetGreen(x, y) <= 130 &&
                screen.GetBlue(x, y) >= 115 && screen.GetBlue(x, y) <= 130)
                return true;
    return false;
}

int title_ink(const wxImage& screen) {
    int ink = 0;
    for (int y = 1; y <= automap_title_height; y++)
        for (int x = 1; x < screen.GetWidth() - 1; x++) ink += screen.GetRed(x, y) > 128;
    return ink;
}

TEST_F(AutomapView, TitleShowsTheAreaOrTheFight) {
    log_in();
    server(";sareaname;Ember Vale;eareaname;");
    EXPECT_STREQ(panel()->area_name.c_str(), "Ember Vale");
    ASSERT_TRUE(pump_until([&] { return title_ink(screen_of(panel())) > 20; }));
    pump_for(50);
    const int area_ink = title_ink(screen_of(panel()));
    server(";scombat;;ecombat;");
    EXPECT_TRUE(pump_until([&] { return title_has_combat_colour(screen_of(panel())); }));
    server(";sncombat;;encombat;");
    EXPECT_TRUE(pump_until([&] { return !title_has_combat_colour(screen_of(panel())); }));
    EXPECT_TRUE(pump_until([&] { return title_ink(screen_of(panel())) == area_ink; }));
    // A session's end: no area, no map, "  Map  " in the title.
    send_map(square, square, '@');
    frame->socket_disconnect("Connection closed by server.");
    EXPECT_STREQ(panel()->area_name.c_str(), "");
    EXPECT_EQ(model().cell(11, 11).seed, 0);
    EXPECT_EQ(panel()->in_combat, 0);
}

TEST_F(AutomapView, ConfigFlashTurnsTheMapOnAndFlashesItsBorder) {
    log_in();
    frame->set_automap_display(0);
    server(";sconfig;automap flash;econfig;");
    EXPECT_EQ(LConfig::instance().get_automap_display(), 1);
    EXPECT_TRUE(panel()->IsShown());
    // The border turns white on an odd count, black on an even one, then back to the theme.
    const auto border = [&] {
        const wxImage screen = screen_of(panel());
        return zorn_rgb(screen.GetRed(0, 30), screen.GetGreen(0, 30), screen.GetBlue(0, 30));
    };
    EXPECT_TRUE(pump_until([&] { return border() == zorn_white; }, 3000));
    EXPECT_TRUE(pump_until([&] { return border() == zorn_black; }, 3000));
    const zorn_rgb theme = zorn_current_button_theme->triple[zorn_triple_frame_outer];
    EXPECT_TRUE(pump_until([&] { return panel()->anim_count == 0 && border() == theme; }, 6000));
    EXPECT_TRUE(animation_contains(panel())) << "the panel stays on the animation list";
}

TEST_F(AutomapView, DirsGivesTheExitsMask) {
    log_in();
    const struct {
        const char* payload;
        int mask;
        bool warned;
    } rows[] = {{"on AB", 1, false},   {"off CV", 85, false}, {"ON H`", 255, false}, {"up QP", 527, true},
                {"on", 527, false},    {"on A", 527, false},  {"", 527, true},        {"on A@", 527, true},
                {"off ``", 1023, false}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.payload);
        log_capture capture(2);
        server(std::string(";sdirs;") + row.payload + ";edirs;");
        EXPECT_EQ(model().exits_mask, row.mask);
        EXPECT_EQ(capture.text() == "Warning in zorn_mw::process_tagged_data(), bad dirs string '" + std::string(row.payload) + "'.\n",
                  row.warned) << capture.text();
    }
}

TEST_F(AutomapView, TheCompassLightsUnderTheMouse) {
    log_in();
    send_map(square, square, '@');
    server(";sdirs;on H`;edirs;");
    EXPECT_EQ(model().exits_mask, 255);
    ASSERT_TRUE(screen_shows_the_map());
    const wxPoint origin = renderer()->GetScreenPosition();
    const int v = renderer()->view_size, m = v / 2, r = v * 41 / 100;
    // Over the "N" arrow: it is an exit and hot.
    const wxPoint shaft(m, m - r + 10);  // below the arrow's label
    keys.MouseMove(origin + shaft);
    ASSERT_TRUE(pump_until([&] { return renderer()->mouse_inside && renderer()->hover_direction == 7; }));
    const auto at_shaft = [&] {
        const wxImage screen = screen_of(renderer());
        return zorn_rgb(screen.GetRed(shaft.x, shaft.y), screen.GetGreen(shaft.x, shaft.y), screen.GetBlue(shaft.x, shaft.y));
    };
    EXPECT_TRUE(pump_until([&] { return at_shaft() == zorn_rgb(64, 160, 64); }));
    // Without the exit the hot arrow turns red.
    server(";sdirs;on AE;edirs;");
    EXPECT_TRUE(pump_until([&] { return at_shaft() == zorn_rgb(64, 32, 32); }));
    // A click in the top right corner walks up, exit or not: the server answers it. The centre
    // walks nowhere.
    LConfig::instance().set_local_echo(1);
    keys.MouseMove(origin + wxPoint(v - 3, 3));
    ASSERT_TRUE(pump_until([&] { return renderer()->hover_direction == 10; }));
    keys.MouseClick();
    const auto echoed = [&] { return frame->main_display->textctrl->model.raw_text(); };
    EXPECT_TRUE(pump_until([&] { return echoed().find(">up<") != std::string::npos; })) << echoed();
    keys.MouseMove(origin + wxPoint(m, m));
    EXPECT_TRUE(pump_until([&] { return renderer()->hover_direction == 0; }));
    const size_t before = echoed().size();
    keys.MouseClick();
    pump_for(50);
    EXPECT_EQ(echoed().size(), before) << "nothing sent from the centre";
    keys.MouseMove(frame->GetScreenPosition() + wxPoint(600, 100));
    EXPECT_TRUE(pump_until([&] { return !renderer()->mouse_inside; }));
    EXPECT_TRUE(screen_shows_the_map());
}

}  // namespace
