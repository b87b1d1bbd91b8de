// Sound in the whole client: on this machine's test configuration there is no sound device, so the
// frame switches audio off at start and plays on; with the mixer running (no device needed, the
// test sets it going), the world's "sound" tags and //soundtest play the pack's files.
#include <gtest/gtest.h>
#include <wx/menu.h>

#include <string>

#include "app/main_frame.h"
#include "app/menus.h"
#include "audio/mixer.h"
#include "audio/soundpack.h"
#include "config/config_listener.h"
#include "config/debug_log.h"
#include "config/lconfig.h"
#include "input/input_window.h"
#include "tests/app/e2e_support.h"
#include "tests/app/e2e_world.h"
#include "tests/audio/sound_fixtures.h"
#include "tests/net/net_test_support.h"
#include "tests/support/gui_main.h"

namespace {

// The system flag set behind the frame's back, so no stream is opened.
void set_system_audio_quietly(int value) {
    zorn_config_listener* listener = zorn_get_config_listener();
    zorn_set_config_listener(nullptr);
    LConfig::instance().SetSystemAudio(value);
    zorn_set_config_listener(listener);
}

class EndToEndSound : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(e2e::world().ready()) << "the test world or the client's start-up failed";
        log_path = zorn_client_current_debug_logfile_name();
        pack = e2e::world().home() + "/.config/EmberVale/soundpack";
    }
    void TearDown() override {
        if (frame) e2e::destroy_frame(frame);
        audio_enabled = 0;
        reap_audio_objects();
    }
    std::string log_text() const { return net_test::read_file(log_path); }
    void choose(int id) {
        wxCommandEvent event(wxEVT_MENU, id);
        event.SetEventObject(frame);
        frame->GetEventHandler()->ProcessEvent(event);
    }
    bool sounds_checked() const { return frame->GetMenuBar()->IsChecked(zorn_menu_enable_sounds); }
    bool logged_in() {
        return pump_until([&] { return e2e::shown_text(frame).find("By what name") != std::string::npos; }, 5000) &&
               e2e::type_line(frame, "Hearer") &&
               pump_until([&] { return e2e::shown_text(frame).find("Password: ") != std::string::npos; }, 5000) &&
               e2e::type_line(frame, "hunter2") &&
               pump_until([&] { return frame->session_state == session_logged_in; }, 5000);
    }

    zorn_mw* frame = nullptr;
    std::string log_path, pack;
};

TEST_F(EndToEndSound, NoDeviceSwitchesAudioOffAndTheGameGoesOn) {
    set_system_audio_quietly(1);
    const size_t log_start = log_text().size();
    frame = e2e::make_frame();
    const std::string log = log_text().substr(log_start);
    EXPECT_NE(log.find("Error in start_audio_internal() - no device available.\n"
                       "Warning in zorn_mw::delayed_initialization() - unable to open audio path.  Disabling in config.\n"),
              std::string::npos)
        << log;
    EXPECT_EQ(LConfig::instance().get_system_audio(), 0);
    EXPECT_EQ(audio_enabled, 0);
    EXPECT_FALSE(sounds_checked());

    // "Enable Sounds" tries again, fails the same way and stays off.
    const size_t before_menu = log_text().size();
    choose(zorn_menu_enable_sounds);
    EXPECT_NE(log_text().find("LConfig::SetSystemAudio() - unable to start audio.  Disabling.\n", before_menu),
              std::string::npos);
    EXPECT_EQ(LConfig::instance().get_system_audio(), 0);
    EXPECT_FALSE(sounds_checked());
    ASSERT_TRUE(LConfig::instance().save_system_config_file());
    const std::string saved = net_test::read_file(e2e::world().home() + "/.config/EmberVale/ember_vale.cfg");
    EXPECT_NE(saved.find("<system_audio_enable>0</system_audio_enable>"), std::string::npos) << saved;

    // Steps bring "sound" tags, which look for no file while audio is off; the game goes on.
    ASSERT_TRUE(sound_fixture::make_ogg(pack + "/move/step.ogg", 44100, 1, "0.05"));
    ASSERT_TRUE(logged_in());
    const int records = zorn_soundpack::instance().record_count();
    ASSERT_TRUE(e2e::type_line(frame, "e"));
    ASSERT_TRUE(e2e::type_line(frame, "//soundtest move/step"));
    ASSERT_TRUE(pump_until([&] { return e2e::shown_text(frame).find("Market Row") != std::string::npos; }, 5000));
    ASSERT_TRUE(e2e::type_line(frame, "w"));
    EXPECT_TRUE(pump_until([&] { return e2e::shown_text(frame).find("Lanterns hang") != std::string::npos; }, 5000));
    EXPECT_EQ(zorn_soundpack::instance().record_count(), records);
}

TEST_F(EndToEndSound, TagsAndSoundtestPlayThePacksFiles) {
    ASSERT_TRUE(sound_fixture::make_ogg(pack + "/move/step.ogg", 44100, 1, "0.05"));
    ASSERT_TRUE(sound_fixture::make_ogg(pack + "/custom/blow.ogg", 44100, 2, "0.05"));
    set_system_audio_quietly(0);
    frame = e2e::make_frame();
    set_system_audio_quietly(1);
    audio_enabled = 1;  // the mixer without a stream: objects stay on its list until mixed
    ASSERT_TRUE(logged_in());
    sound_data* step = zorn_soundpack::instance().find_or_create("soundpack/move/step.ogg");
    ASSERT_TRUE(e2e::type_line(frame, "s"));  // to the South Gate: a step, no door
    EXPECT_TRUE(pump_until([&] { return step->playout_count == 1; }, 5000)) << log_text();
    EXPECT_EQ(step->state, sound_state_loaded);
    EXPECT_EQ(zorn_soundpack::instance().find_or_create("soundpack/move/door.ogg")->playout_count, 0);

    // The player's own file of the base name plays for "combat/blow".
    ASSERT_TRUE(e2e::type_line(frame, "//soundtest combat/blow and more"));
    sound_data* blow = zorn_soundpack::instance().find_or_create("soundpack/combat/blow.ogg");
    EXPECT_TRUE(pump_until([&] { return blow->playout_count == 1; }, 5000));
    EXPECT_EQ(blow->state, sound_state_loaded_custom);
    EXPECT_EQ(blow->channels, 2);
    EXPECT_EQ(audio_active_count(), 2);

    // "Enable Sounds" turns sound off: the mixer stops and what was playing is destroyed.
    choose(zorn_menu_enable_sounds);
    EXPECT_EQ(LConfig::instance().get_system_audio(), 0);
    EXPECT_FALSE(sounds_checked());
    EXPECT_EQ(audio_enabled, 0);
    EXPECT_EQ(audio_active_count(), 0);
    EXPECT_EQ(step->playout_count, 0);
    EXPECT_EQ(blow->playout_count, 0);
}

}  // namespace
