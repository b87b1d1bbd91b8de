// Every click on an image button makes a tick: a real click through the X server reaches the
// mixer as one noise tick object. The mixer runs without a stream here, so the tick stays on its
// list until mixed.
#include <gtest/gtest.h>
#include <wx/frame.h>
#include <wx/uiaction.h>

#include "audio/mixer.h"
#include "input/buttons.h"
#include "input/frame_link.h"
#include "tests/input/recording_frame.h"
#include "tests/support/gui_main.h"
#include "theme/theme.h"

namespace {

TEST(ButtonSound, EachClickTicks) {
    create_themes();
    switch_themes();
    recording_frame link;
    zorn_set_frame_link(&link);
    auto* frame = new wxFrame(nullptr, wxID_ANY, "ticks", wxPoint(40, 40), wxSize(300, 200));
    auto* button = new zorn_command_button(frame);
    button->set_size(20, 20, 100, 30);
    button->setup("North", "go north", 1);
    frame->Show();
    frame->Raise();
    ASSERT_TRUE(pump_until([&] { return button->IsShownOnScreen(); }));
    pump_for(50);
    audio_enabled = 1;

    wxUIActionSimulator mouse;
    const wxRect r = button->GetScreenRect();
    mouse.MouseMove(r.x + r.width / 2, r.y + r.height / 2);
    pump_for(20);
    mouse.MouseClick();
    ASSERT_TRUE(pump_until([&] { return link.commands.size() == 1; }));
    EXPECT_EQ(audio_active_count(), 1);
    mouse.MouseClick();
    ASSERT_TRUE(pump_until([&] { return link.commands.size() == 2; }));
    EXPECT_EQ(audio_active_count(), 2) << "two clicks overlap and mix";

    // A tick lasts 352 frames, then the mixer lets it go.
    int16_t left, right;
    for (int i = 0; i < 352; i++) mix_sample_frame(&left, &right);
    EXPECT_EQ(audio_active_count(), 0);

    // With audio off a click costs nothing.
    audio_enabled = 0;
    reap_audio_objects();
    mouse.MouseClick();
    ASSERT_TRUE(pump_until([&] { return link.commands.size() == 3; }));
    EXPECT_EQ(audio_active_count(), 0);
    zorn_set_frame_link(nullptr);
    frame->Destroy();
    pump_for(30);
}

}  // namespace
