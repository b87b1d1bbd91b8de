#pragma once
// The sound objects. Each constructor hands the object to the mixer as its last step: create one
// with new and forget it. While audio is off it is destroyed inside the constructor's last call.

#include <cstdint>

#include "audio/mixer.h"

struct sound_data;

// Uniform noise from -2048 to 2047 on each side, for a duration in milliseconds.
class zorn_audio_white_noise final : public zorn_audio_object {
public:
    explicit zorn_audio_white_noise(int milliseconds);
    bool next_sample(int16_t* left, int16_t* right) override;

private:
    int32_t samples_left;
};

// The click of a button: 352 samples (8 ms) of decaying low-passed noise, the same every time.
class zorn_audio_noise_tick final : public zorn_audio_object {
public:
    zorn_audio_noise_tick();
    bool next_sample(int16_t* left, int16_t* right) override;

private:
    int32_t samples_left = 352;
    int32_t total_samples = 352;
    int32_t filter = 0;
    uint32_t noise_state = 689052;
};

// The thud of walking into a wall: a triangle wave of about 100 Hz with a peak of 8192, 15 ms.
class zorn_audio_wall_bump final : public zorn_audio_object {
public:
    zorn_audio_wall_bump();
    bool next_sample(int16_t* left, int16_t* right) override;

private:
    int32_t samples_left = 661;
    [[maybe_unused]] int32_t total_samples = 661;  // the length, kept beside the count as the tick has it
    int32_t limit = 8192;
    int32_t step = 74;
    int32_t phase = 0;
};

// Plays 16-bit little-endian samples from memory that outlives it. With a sound record (or null)
// its playout_count counts this object from construction to destruction.
class zorn_audio_playout_memory : public zorn_audio_object {
protected:
    zorn_audio_playout_memory(const unsigned char* data, long length, sound_data* sound);
    ~zorn_audio_playout_memory() override;

    long position = 0;
    long length;
    const unsigned char* data;
    sound_data* sound;
};

class zorn_audio_playout_mono_memory final : public zorn_audio_playout_memory {
public:
    zorn_audio_playout_mono_memory(const unsigned char* data, long length, sound_data* sound);
    bool next_sample(int16_t* left, int16_t* right) override;
};

// Frames of four bytes: left, then right.
class zorn_audio_playout_stereo_memory final : public zorn_audio_playout_memory {
public:
    zorn_audio_playout_stereo_memory(const unsigned char* data, long length, sound_data* sound);
    bool next_sample(int16_t* left, int16_t* right) override;
};

// Fire-and-forget forms for the hooks of other folders (a button click, a bump at a wall).
void zorn_play_noise_tick();
void zorn_play_wall_bump();
