// The mixer's arithmetic and lists, and the sound objects, through mix_sample_frame as the audio
// thread calls it. No stream: audio_enabled is set by hand so objects stay on the list.
#include <gtest/gtest.h>

#include <vector>

#include "audio/audio_objects.h"
#include "audio/audio_stream.h"
#include "audio/mixer.h"
#include "audio/sound_data.h"
#include "tests/support/log_capture.h"

namespace {

// Yields its values in turn, the same on both sides, then ends.
class fixed_object final : public zorn_audio_object {
public:
    explicit fixed_object(std::vector<int16_t> values) : values(std::move(values)) { add_audio_object(this); }
    ~fixed_object() override { destroyed++; }
    bool next_sample(int16_t* left, int16_t* right) override {
        if (at >= values.size()) return false;
        *left = values[at];
        *right = static_cast<int16_t>(-values[at]);
        at++;
        return true;
    }
    static int destroyed;

private:
    std::vector<int16_t> values;
    size_t at = 0;
};
int fixed_object::destroyed = 0;

class Mixer : public ::testing::Test {
protected:
    void SetUp() override {
        audio_enabled = 1;
        fixed_object::destroyed = 0;
    }
    void TearDown() override {
        audio_enabled = 0;
        reap_audio_objects();
        EXPECT_EQ(audio_active_count(), 0);
        EXPECT_EQ(audio_dead_count(), 0);
    }
    static std::pair<int, int> frame() {
        int16_t left = 1, right = 1;
        mix_sample_frame(&left, &right);
        return {left, right};
    }
    // Mixes until the list is empty; the number of frames it took.
    static int frames_until_empty(std::vector<int16_t>* left_out = nullptr) {
        int frames = 0;
        while (audio_active_count() > 0 && frames < 1000000) {
            const auto [left, right] = frame();
            if (left_out) left_out->push_back(static_cast<int16_t>(left));
            frames++;
        }
        return frames;
    }
};

TEST(SoftLimit, Curve) {
    const struct {
        int in, out;
    } cases[] = {
        {0, 0},          {1, 1},           {-1, -1},         {16383, 16383},   {-16383, -16383},
        {16384, 16384},  {32767, 20479},   {65534, 24575},   {32768, 20480},   {65535, 24575},
        {65536, 24576},  {131071, 28671},  {131072, 28672},  {262143, 32767},  {262144, 32767},
        {2000000, 32767}, {-16384, -16384}, {-32767, -20480}, {-32768, -20480}, {-65535, -24576},
        {-65536, -24576}, {-131071, -28672}, {-131072, -28671}, {-262143, -32767}, {-262144, -32767},
        {-2000000, -32767},
    };
    for (const auto& c : cases) EXPECT_EQ(soft_limit(c.in), c.out) << c.in;
}

TEST_F(Mixer, SilenceWithoutObjects) {
    EXPECT_EQ(frame(), std::make_pair(0, 0));
    std::vector<int16_t> buffer(2048, 7);
    mix_buffer(buffer.data(), 1024);
    for (int16_t value : buffer) ASSERT_EQ(value, 0);
}

TEST_F(Mixer, SumsGoThroughTheCurveWithNoGain) {
    new fixed_object({32767, 32767, 100});
    EXPECT_EQ(frame(), std::make_pair(20479, -20480));  // the negative side is one step further out
    new fixed_object({32767});
    EXPECT_EQ(frame(), std::make_pair(24575, -24576));
    // The older object gives 100 and the newer one ends: the ended one adds nothing.
    EXPECT_EQ(frame(), std::make_pair(100, -100));
    EXPECT_EQ(audio_dead_count(), 1);
    EXPECT_EQ(frame(), std::make_pair(0, 0));
    EXPECT_EQ(audio_dead_count(), 2);
    EXPECT_EQ(fixed_object::destroyed, 0);  // the audio thread only moves them
    reap_audio_objects();
    EXPECT_EQ(fixed_object::destroyed, 2);
    EXPECT_EQ(audio_dead_count(), 0);
}

TEST_F(Mixer, ObjectsMadeWhileAudioIsOffGoAtOnce) {
    audio_enabled = 0;
    new fixed_object({1000});
    EXPECT_EQ(fixed_object::destroyed, 1);
    EXPECT_EQ(audio_active_count(), 0);
    sound_data sound;
    static const unsigned char bytes[8] = {1, 2, 3, 4, 5, 6, 7, 8};
    new zorn_audio_playout_stereo_memory(bytes, 8, &sound);
    EXPECT_EQ(sound.playout_count, 0);
}

TEST_F(Mixer, StopAudioDestroysWhatPlaysAndCountsReturnToZero) {
    sound_data sound;
    static const unsigned char bytes[400] = {};
    for (int i = 0; i < 3; i++) new zorn_audio_playout_mono_memory(bytes, sizeof bytes, &sound);
    new fixed_object({1, 2, 3});
    frame();
    EXPECT_EQ(sound.playout_count, 3);
    EXPECT_EQ(audio_active_count(), 4);
    stop_audio();
    EXPECT_EQ(audio_enabled, 0);
    EXPECT_EQ(audio_active_count(), 0);
    EXPECT_EQ(sound.playout_count, 0);
    EXPECT_EQ(fixed_object::destroyed, 1);

    log_capture log(2);
    stop_audio();  // already off: only the message
    EXPECT_EQ(log.text(), "Error in stop_audio(), audio not enabled.\n");
}

TEST_F(Mixer, SynthesisedSoundsEndAfterTheirSamples) {
    // Frames until the list is empty: the true results and the one false call that ends it.
    new zorn_audio_noise_tick();
    EXPECT_EQ(frames_until_empty(), 351 + 1);
    std::vector<int16_t> bump;
    new zorn_audio_wall_bump();
    EXPECT_EQ(frames_until_empty(&bump), 660 + 1);
    ASSERT_GE(bump.size(), 3u);
    EXPECT_EQ(bump[0], 74);  // from 0 upward
    EXPECT_EQ(bump[1], 148);
    EXPECT_EQ(bump.back(), 0);  // the ending frame is silent
    new zorn_audio_white_noise(100);
    std::vector<int16_t> noise;
    EXPECT_EQ(frames_until_empty(&noise), 4409 + 1);
    noise.pop_back();
    for (int16_t value : noise) ASSERT_TRUE(value >= -2048 && value <= 2047) << value;
}

TEST_F(Mixer, WallBumpIsATriangleOfAboutOneHundredHertz) {
    std::vector<int16_t> bump;
    new zorn_audio_wall_bump();
    frames_until_empty(&bump);
    bump.pop_back();
    int peak = 0, trough = 0, rises = 0;
    for (size_t i = 0; i < bump.size(); i++) {
        peak = std::max<int>(peak, bump[i]);
        trough = std::min<int>(trough, bump[i]);
        if (i > 0 && bump[i - 1] < 0 && bump[i] >= 0) rises++;
    }
    EXPECT_EQ(peak, 8214);    // the step turns at the first value at or past 8192
    EXPECT_EQ(trough, -8214);
    EXPECT_EQ(rises, 1);      // 661 samples at 44.1 kHz: one and a half periods of ~100 Hz
}

TEST_F(Mixer, TicksAreAllAlikeAndTwoOverlapping) {
    std::vector<int16_t> one, two;
    new zorn_audio_noise_tick();
    frames_until_empty(&one);
    new zorn_audio_noise_tick();
    new zorn_audio_noise_tick();
    frames_until_empty(&two);
    ASSERT_EQ(one.size(), two.size());
    int loud = 0;
    for (size_t i = 0; i < one.size(); i++) {
        // The tick alone stays below the bend, so the pair is exactly the curve of twice it.
        ASSERT_LE(std::abs(one[i]), 16383);
        ASSERT_EQ(two[i], soft_limit(2 * one[i])) << i;
        loud += std::abs(one[i]) > 100;
    }
    EXPECT_GT(loud, 100);  // it is audible, not a run of zeros
}

TEST_F(Mixer, PlayoutsEndAtTheirLastWholeSample) {
    static const unsigned char bytes[10] = {0x01, 0x00, 0xFF, 0xFF, 0x00, 0x80, 0x34, 0x12, 0x99, 0x99};
    sound_data sound;
    const struct {
        bool stereo;
        long length;
        int frames;  // true results
    } cases[] = {
        {false, 0, 0}, {false, 1, 0}, {false, 2, 1}, {false, 5, 2}, {false, 10, 5},
        {true, 0, 0},  {true, 3, 0},  {true, 4, 1},  {true, 7, 1},  {true, 10, 2},
    };
    for (const auto& c : cases) {
        if (c.stereo)
            new zorn_audio_playout_stereo_memory(bytes, c.length, &sound);
        else
            new zorn_audio_playout_mono_memory(bytes, c.length, &sound);
        EXPECT_EQ(sound.playout_count, 1);
        std::vector<int16_t> left;
        EXPECT_EQ(frames_until_empty(&left), c.frames + 1) << c.stereo << " " << c.length;
        reap_audio_objects();
        EXPECT_EQ(sound.playout_count, 0);
    }
    // Little-endian signed values; stereo takes left from the first pair of each frame.
    new zorn_audio_playout_mono_memory(bytes, 8, nullptr);
    std::vector<int16_t> mono;
    frames_until_empty(&mono);
    EXPECT_EQ(mono, (std::vector<int16_t>{1, -1, -20480, 4660, 0}));  // -32768 is bent
    new zorn_audio_playout_stereo_memory(bytes, 8, nullptr);
    EXPECT_EQ(frame(), std::make_pair(1, -1));
    EXPECT_EQ(frame(), std::make_pair(-20480, 4660));
}

}  // namespace
