// The widget base, the animation list, the buttons and the input window.
#include <gtest/gtest.h>
#include <wx/frame.h>

#include <functional>
#include <string>
#include <vector>

#include "input/buttons.h"
#include "input/input_window.h"
#include "tests/input/recording_frame.h"
#include "tests/support/gui_main.h"
#include "tests/theme/pixels.h"
#include "theme/font.h"
#include "theme/theme.h"

namespace {

// Records what the base asks of a subclass.
class probe_window : public zorn_embedded_window {
public:
    explicit probe_window(wxWindow* parent, int lives = 1) : zorn_embedded_window(parent, wxID_ANY), lives(lives) {}
    void resize_handler(bool size_changed) override { resizes.push_back(size_changed); }
    void repaint_internal(zorn_bitmap& bitmap) override {
        bitmap.Clear(zorn_rgb(10, 20, 30));
        paints++;
    }
    bool animation_callback(int elapsed_ms) override {
        calls++;
        last_elapsed = elapsed_ms;
        if (on_call) on_call();
        return --lives > 0;
    }
    std::vector<bool> resizes;
    int paints = 0, calls = 0, last_elapsed = 0, lives;
    std::function<void()> on_call;
};

// A button whose render count can be watched.
class counting_button : public zorn_button {
public:
    explicit counting_button(wxWindow* parent) : zorn_button(parent) {}
    void render_images() override {
        renders++;
        zorn_button::render_images();
    }
    int renders = 0;
};

class Widgets : public ::testing::Test {
protected:
    void SetUp() override {
        create_themes();
        switch_themes();
        frame = new wxFrame(nullptr, wxID_ANY, "widgets", wxDefaultPosition, wxSize(300, 200));
        frame->Show();
    }
    void TearDown() override {
        zorn_set_frame_link(nullptr);
        frame->Destroy();
        pump_for(30);
    }
    void send_mouse(wxWindow* window, wxEventType type) {
        wxMouseEvent event(type);
        event.SetEventObject(window);
        if (type == wxEVT_LEFT_DOWN) event.SetLeftDown(true);
        window->GetEventHandler()->ProcessEvent(event);
    }
    wxFrame* frame = nullptr;
};

TEST_F(Widgets, SetSizeKeepsAtLeastOnePixelReportsChangeAndPaints) {
    auto* w = new probe_window(frame);
    w->set_size(0, 0, 40, 30);
    EXPECT_EQ(w->backing_bitmap->GetWidth(), 40);
    w->set_size(0, 0, 40, 30);
    w->set_size(0, -5);
    EXPECT_EQ(w->GetSize(), wxSize(1, 1));
    EXPECT_EQ(wxSize(w->backing_bitmap->GetWidth(), w->backing_bitmap->GetHeight()), wxSize(1, 1));
    w->force_resize();
    EXPECT_EQ(w->resizes, (std::vector<bool>{true, false, true, true}));

    // The paint handler draws the backing bitmap.
    w->set_size(5, 5, 30, 20);
    w->Refresh(false);
    EXPECT_TRUE(pump_until([&] { return w->paints > 0; }));
    EXPECT_EQ(pixel_at(*w->backing_bitmap, 29, 19), zorn_rgb(10, 20, 30));
}

TEST_F(Widgets, AnimationListWalk) {
    auto* a = new probe_window(frame, 3);
    auto* b = new probe_window(frame, 1);  // leaves after its first call
    auto* c = new probe_window(frame, 3);
    for (probe_window* w : {a, b, c, b}) animation_add(w);  // b again: stays where it is
    EXPECT_EQ(animation_length(), 3);
    EXPECT_EQ(c->anim_next, b);

    animation_run(20);
    EXPECT_EQ(std::vector<int>({a->calls, b->calls, c->calls}), std::vector<int>({1, 1, 1}));
    EXPECT_EQ(a->last_elapsed, 20);
    EXPECT_FALSE(animation_contains(b));
    EXPECT_EQ(animation_length(), 2);

    // A callback that removes itself mid-walk does not disturb the others.
    c->on_call = [&] { animation_remove(c); };
    animation_run(20);
    EXPECT_EQ(a->calls, 2);
    EXPECT_FALSE(animation_contains(c));
    EXPECT_TRUE(animation_contains(a));

    delete a;  // leaves the list on its own
    EXPECT_EQ(animation_length(), 0);
}

TEST_F(Widgets, StandardStepCountsPeriodsAndRestarts) {
    auto* button = new counting_button(frame);
    button->set_size(40, 20);
    button->flash_button();
    EXPECT_EQ(button->anim_count, zorn_flash_count);
    EXPECT_TRUE(animation_contains(button));
    for (int i = 0; i < 9; i++) animation_run(zorn_tick_ms);  // 180 ms: still the first period
    EXPECT_EQ(button->anim_count, 16);
    animation_run(zorn_tick_ms);
    EXPECT_EQ(button->anim_count, 15);
    EXPECT_EQ(button->anim_elapsed, 0);
    EXPECT_EQ(button->anim_shown, 15);
    button->flash_button();  // a flash started while another runs restarts at 16
    EXPECT_EQ(button->anim_count, 16);
    for (int i = 0; i < 16 * 10; i++) animation_run(zorn_tick_ms);
    EXPECT_EQ(button->anim_count, 0);
    EXPECT_FALSE(animation_contains(button));

    // A period below the tick counts once per tick.
    button->start_animation(3, 15);
    animation_run(zorn_tick_ms);
    EXPECT_EQ(button->anim_count, 2);
    EXPECT_EQ(button->anim_elapsed, 0);
    animation_remove(button);
}

TEST_F(Widgets, ButtonRendersOnlyOnANewSizeAndCutsLabelsAt400Bytes) {
    auto* button = new counting_button(frame);
    button->set_size(0, 0, 50, 20);
    const int after_first = button->renders;
    EXPECT_GE(after_first, 1);
    button->set_size(0, 0, 50, 20);
    EXPECT_EQ(button->renders, after_first);
    button->set_size(0, 0, 51, 20);
    EXPECT_EQ(button->renders, after_first + 1);

    button->set_label(std::string(450, 'x').c_str());
    EXPECT_EQ(std::string(button->get_label()).size(), 400u);
    button->set_label(nullptr);
    EXPECT_STREQ(button->get_label(), "");
}

TEST_F(Widgets, ButtonStates) {
    auto* button = new counting_button(frame);
    int clicks = 0;
    button->Bind(wxEVT_BUTTON, [&](wxCommandEvent&) { clicks++; });
    // Momentary: acts on the press, comes up when the mouse leaves.
    send_mouse(button, wxEVT_ENTER_WINDOW);
    EXPECT_EQ(button->hover, 1);
    send_mouse(button, wxEVT_LEFT_DOWN);
    EXPECT_EQ(clicks, 1);
    EXPECT_EQ(button->button_state, zorn_button_down);
    send_mouse(button, wxEVT_LEAVE_WINDOW);
    EXPECT_EQ(button->button_state, zorn_button_up);
    EXPECT_EQ(button->hover, 0);
    send_mouse(button, wxEVT_LEFT_UP);
    EXPECT_EQ(clicks, 1);  // no second click on release

    button->toggle_mode = 1;
    send_mouse(button, wxEVT_LEFT_DOWN);
    send_mouse(button, wxEVT_LEFT_UP);
    EXPECT_EQ(button->button_state, zorn_button_down);
    send_mouse(button, wxEVT_RIGHT_DOWN);  // any button press flips it
    EXPECT_EQ(button->button_state, zorn_button_up);
    EXPECT_EQ(clicks, 3);

    button->set_enabled(0);
    send_mouse(button, wxEVT_ENTER_WINDOW);
    send_mouse(button, wxEVT_LEFT_DOWN);
    EXPECT_EQ(clicks, 3);
    EXPECT_EQ(button->hover, 0);
    EXPECT_EQ(button->button_state, zorn_button_disabled);
}

TEST_F(Widgets, ButtonImagesFollowTheTheme) {
    zorn_select_button_theme(zorn_theme_red);
    auto* button = new counting_button(frame);
    button->set_size(0, 0, 60, 20);
    button->set_label("Go");
    const zorn_button_theme& red = *zorn_button_theme_for(zorn_theme_red);
    // Raised bevel: the face colour in the middle, outside the label.
    EXPECT_EQ(pixel_at(button->normal_image, 4, 10), red.triple[3]);
    EXPECT_EQ(pixel_at(button->pressed_image, 4, 10), red.triple[15]);
    EXPECT_EQ(pixel_at(button->disabled_image, 4, 10), red.triple[24]);
    EXPECT_EQ(pixel_at(button->normal_hover_image, 1, 0), red.triple[5]);  // hover edge
    EXPECT_EQ(pixel_at(button->normal_hover_image, 0, 0), zorn_black);     // rounded corner

    button->set_lit(0);
    EXPECT_EQ(pixel_at(button->normal_image, 4, 10), red.triple[9]);

    // A theme switch shows only after render_images.
    zorn_select_button_theme(zorn_theme_green);
    EXPECT_EQ(pixel_at(button->normal_image, 4, 10), red.triple[9]);
    button->render_images();
    EXPECT_EQ(pixel_at(button->normal_image, 4, 10), zorn_button_theme_for(zorn_theme_green)->triple[9]);
}

TEST_F(Widgets, CommandButtonSendsThroughTheFrame) {
    recording_frame link;
    zorn_set_frame_link(&link);
    auto* button = new zorn_command_button(frame);
    EXPECT_EQ(button->button_state, zorn_button_disabled);
    button->setup("North", "go north", 1);
    send_mouse(button, wxEVT_LEFT_DOWN);
    ASSERT_EQ(link.commands.size(), 1u);
    EXPECT_EQ(link.commands[0], std::make_pair(std::string("go north"), 1));
    EXPECT_EQ(link.transfers, 1);
    EXPECT_EQ(link.unlocks, 1);

    button->clear();
    EXPECT_STREQ(button->get_command(), "");
    EXPECT_STREQ(button->get_label(), "");
    EXPECT_EQ(button->button_state, zorn_button_disabled);
    send_mouse(button, wxEVT_LEFT_DOWN);
    EXPECT_EQ(link.commands.size(), 1u);
}

TEST_F(Widgets, BevelAndEdges) {
    zorn_bitmap face(6, 5);
    const zorn_rgb c{100, 40, 200};
    draw_button_face(face, c, zorn_bevel_raised);
    const zorn_rgb light{198, 108, 255}, dark{50, 20, 100};  // (3c + 96) / 2 capped, c / 2
    // The corner is left alone.
    expect_pixels(face, {{0, 2, light}, {1, 1, light}, {3, 0, light}, {5, 2, dark}, {4, 3, dark}, {2, 4, dark},
                         {0, 0, c}, {2, 2, c}});
    draw_button_face(face, c, zorn_bevel_sunk);
    expect_pixels(face, {{0, 2, dark}, {5, 2, light}});
    draw_button_face(face, c, zorn_bevel_none);
    EXPECT_EQ(count_color(face, c), 30);

    zorn_bitmap edges(6, 5);
    edges.Clear(zorn_black);
    draw_edges(edges, 6, 5, 8 | 1, nullptr);
    expect_pixels(edges, {{0, 3, zorn_white}, {1, 3, zorn_grey128}, {4, 0, zorn_white}, {5, 3, zorn_black},
                          {3, 4, zorn_black}});
    draw_edges(edges, 6, 5, 2 | 4, &zorn_red);
    expect_pixels(edges, {{5, 3, zorn_red}, {4, 3, zorn_red}, {2, 4, zorn_red}});
}

TEST_F(Widgets, CharsThatFit) {
    zorn_font* font = zorn_status_font();
    int cell = 0;
    font->get_char_size('m', &cell, nullptr);
    EXPECT_EQ(chars_that_fit(font, "mmmmmm", 3 * cell + 2), 3);
    EXPECT_EQ(chars_that_fit(font, "mmmmmm", 3 * cell + 1), 2);
    EXPECT_EQ(chars_that_fit(font, "mmm", 1), 1);  // at least one
    EXPECT_EQ(chars_that_fit(font, "", 100), 0);
    EXPECT_EQ(chars_that_fit(font, "m\tm", 2 * cell + 2), 3);  // a tab takes no room
    EXPECT_EQ(chars_that_fit(font, std::string(300, 'm').c_str(), 1000000), zorn_fit_limit);
}

TEST_F(Widgets, InputWindowPlacesItsEditorAndFlashes) {
    auto* input = new zorn_input_window(frame, wxID_ANY, wxDefaultPosition, wxSize(20, 20), wxBORDER_NONE,
                                        "main input window");
    input->set_size(0, 0, 200, 48);
    EXPECT_EQ(input->line_edit.GetPosition(), wxPoint(2, 1));
    EXPECT_EQ(input->line_edit.GetSize(), wxSize(196, 46));
    EXPECT_EQ(input->line_edit.GetName(), "main input window input window");
    zorn_bitmap& picture = *input->backing_bitmap;
    input->repaint_internal(picture);
    expect_pixels(picture, {{0, 10, zorn_white}, {1, 10, zorn_grey128}, {100, 47, zorn_white}});
    input->flash_window();
    animation_run(200);  // count 15: odd, white
    input->repaint_internal(picture);
    EXPECT_EQ(pixel_at(picture, 1, 10), zorn_white);
    animation_run(200);  // count 14: even, black
    input->repaint_internal(picture);
    EXPECT_EQ(pixel_at(picture, 0, 10), zorn_black);
    animation_remove(input);
}

}  // namespace
