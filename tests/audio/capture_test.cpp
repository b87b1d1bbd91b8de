// The real output stream under an ALSA configuration that writes what is played to a file (CTest
// sets ALSA_CONFIG_PATH to alsa-capture.conf). The file's slave is not paced, so each test plays
// bounded sounds and stops the stream at once.
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "audio/audio_objects.h"
#include "audio/audio_stream.h"
#include "audio/mixer.h"
#include "audio/soundpack.h"
#include "tests/audio/sound_fixtures.h"
#include "tests/support/log_capture.h"
#include "tests/support/temp_dir.h"

namespace {

struct frame_pair {
    int16_t left, right;
    bool operator==(const frame_pair& other) const { return left == other.left && right == other.right; }
};

std::vector<frame_pair> read_frames(const std::string& path) {
    const std::string bytes = read_file(path);
    std::vector<frame_pair> frames;
    auto value = [&](size_t at) {
        return static_cast<int16_t>(static_cast<uint8_t>(bytes[at]) | (static_cast<uint8_t>(bytes[at + 1]) << 8));
    };
    for (size_t at = 0; at + 3 < bytes.size(); at += 4) frames.push_back({value(at), value(at + 2)});
    return frames;
}

// Skips silent frames from at; true when the expected frames (their own leading silence skipped)
// follow bit-exact. at ends behind them.
::testing::AssertionResult found_after_silence(const std::vector<frame_pair>& got, size_t* at,
                                               const std::vector<frame_pair>& expected) {
    size_t first = 0;
    while (first < expected.size() && expected[first] == frame_pair{0, 0}) first++;
    while (*at < got.size() && got[*at] == frame_pair{0, 0}) ++*at;
    for (size_t i = first; i < expected.size(); i++, ++*at) {
        if (*at >= got.size()) return ::testing::AssertionFailure() << "capture ends at expected frame " << i;
        if (!(got[*at] == expected[i]))
            return ::testing::AssertionFailure() << "frame " << i << " of " << expected.size() << ": got "
                                                 << got[*at].left << "," << got[*at].right << " expected "
                                                 << expected[i].left << "," << expected[i].right;
    }
    return ::testing::AssertionSuccess();
}

void wait_until_silent() {
    for (long spins = 0; audio_active_count() > 0 && spins < 100000000; spins++) {
    }
}

TEST(AudioCapture, FadedSoundThenTickBitExact) {
    temp_dir home;
    ASSERT_TRUE(sound_fixture::make_ogg(home / "soundpack/door.ogg", 44100, 1, "0.05", 300));
    const std::vector<int16_t> reference = sound_fixture::reference_samples(home / "soundpack/door.ogg");
    ASSERT_EQ(reference.size(), 2205u);
    std::vector<frame_pair> expected_door;
    for (int16_t value : sound_fixture::faded(reference, 44100, 1)) expected_door.push_back({value, value});

    // The tick as the mixer makes it, from a run without a stream.
    std::vector<frame_pair> expected_tick;
    audio_enabled = 1;
    new zorn_audio_noise_tick();
    while (audio_active_count() > 0) {
        frame_pair f;
        mix_sample_frame(&f.left, &f.right);
        expected_tick.push_back(f);
    }
    audio_enabled = 0;
    reap_audio_objects();

    zorn_soundpack pack(home.path().c_str());
    ASSERT_NE(pack.get_sound_data("door"), nullptr);  // decoded before the stream runs
    const std::string capture = home / "capture.raw";
    setenv("AUDIO_CAPTURE_FILE", capture.c_str(), 1);
    log_capture log(2);
    ASSERT_EQ(start_audio(), 1) << log.text();
    EXPECT_EQ(audio_enabled, 1);
    pack.parse_audio_tag("door");
    wait_until_silent();
    new zorn_audio_noise_tick();
    wait_until_silent();
    stop_audio();
    EXPECT_EQ(audio_enabled, 0);
    EXPECT_EQ(audio_active_count(), 0);
    EXPECT_EQ(pack.find_or_create("soundpack/door.ogg")->playout_count, 0);
    EXPECT_NE(log.text().find("Requested output latency = "), std::string::npos);
    EXPECT_NE(log.text().find(" seconds.\n1024 frames per buffer.\n."), std::string::npos);

    const std::vector<frame_pair> got = read_frames(capture);
    size_t at = 0;
    EXPECT_TRUE(found_after_silence(got, &at, expected_door));
    EXPECT_TRUE(found_after_silence(got, &at, expected_tick));
    while (at < got.size() && got[at] == frame_pair{0, 0}) at++;
    EXPECT_EQ(at, got.size()) << "sound after the tick";
}

TEST(AudioCapture, StartTwiceLeavesTheStreamAloneAndRestarts) {
    temp_dir home;
    setenv("AUDIO_CAPTURE_FILE", (home / "capture.raw").c_str(), 1);
    log_capture log(2);
    ASSERT_EQ(start_audio(), 1);
    // The first callback ends the start-up; the unpaced capture device brings it at once.
    for (long spins = 0; audio_startup_in_progress && spins < 1000000000; spins++) {
    }
    EXPECT_EQ(audio_startup_in_progress, 0);
    const size_t before = log.text().size();
    const int second = start_audio();
    const std::string after_second = log.text().substr(before);
    EXPECT_EQ(audio_enabled, 1);
    stop_audio();
    EXPECT_EQ(second, 0);
    EXPECT_EQ(after_second, "Error in start_audio(), audio already enabled.\n");
    EXPECT_EQ(start_audio(), 1);  // each start initialises the sound system anew
    stop_audio();
    EXPECT_EQ(audio_startup_in_progress, 0);
}

}  // namespace
