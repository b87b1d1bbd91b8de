// No output device (CTest sets ALSA_CONFIG_PATH to alsa-nodevice.conf): starting fails with a
// debug line, audio stays off, objects cost nothing, and a later start fails the same way.
#include <gtest/gtest.h>

#include "audio/audio_objects.h"
#include "audio/audio_stream.h"
#include "audio/mixer.h"
#include "tests/support/log_capture.h"

TEST(AudioNoDevice, StartFailsQuietlyAndAudioStaysOff) {
    for (int attempt = 0; attempt < 2; attempt++) {
        log_capture log(2);
        EXPECT_EQ(start_audio(), 0);
        EXPECT_EQ(log.text(), "Error in start_audio_internal() - no device available.\n");
        EXPECT_EQ(audio_enabled, 0);
        EXPECT_EQ(audio_startup_in_progress, 0);
    }
    new zorn_audio_noise_tick();
    zorn_play_wall_bump();
    EXPECT_EQ(audio_active_count(), 0);
    log_capture log(2);
    stop_audio();
    release_audio();
    EXPECT_EQ(log.text(), "Error in stop_audio(), audio not enabled.\n");
}
