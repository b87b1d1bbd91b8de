#include "audio/audio_objects.h"

#include "audio/sound_data.h"
#include "base/random.h"

namespace {

int16_t little_endian_sample(const unsigned char* at) { return static_cast<int16_t>(at[0] | (at[1] << 8)); }

void count_playout(sound_data* sound, int change) {
    if (!sound) return;
    std::lock_guard<std::mutex> hold(sound->lock);
    sound->playout_count += change;
}

}  // namespace

zorn_audio_white_noise::zorn_audio_white_noise(int milliseconds)
    : samples_left(static_cast<int32_t>(static_cast<int64_t>(milliseconds) * 44100 / 1000)) {
    add_audio_object(this);
}

// The low 12 bits plus 63488, as a 16-bit value, are -2048 to 2047.
bool zorn_audio_white_noise::next_sample(int16_t* left, int16_t* right) {
    *left = static_cast<int16_t>(static_cast<uint16_t>((random_next() & 0xFFF) + 63488));
    *right = static_cast<int16_t>(static_cast<uint16_t>((random_next() & 0xFFF) + 63488));
    return samples_left-- > 1;
}

zorn_audio_noise_tick::zorn_audio_noise_tick() { add_audio_object(this); }

bool zorn_audio_noise_tick::next_sample(int16_t* left, int16_t* right) {
    const int32_t envelope = (samples_left << 11) / total_samples;
    noise_state = noise_state * 1103515245u + 12345u;
    // A one-pole low-pass; the shift is arithmetic.
    filter = filter - (filter >> 4) + (static_cast<int32_t>(noise_state & 0xFFF) - 2048) * envelope;
    *left = *right = static_cast<int16_t>(filter / 4096);
    return samples_left-- > 1;
}

zorn_audio_wall_bump::zorn_audio_wall_bump() { add_audio_object(this); }

bool zorn_audio_wall_bump::next_sample(int16_t* left, int16_t* right) {
    phase += step;
    const int16_t p = static_cast<int16_t>(phase);
    if (p >= limit) step = -step;
    if (p <= -limit) step = -step;
    *left = *right = p;
    return samples_left-- > 1;
}

zorn_audio_playout_memory::zorn_audio_playout_memory(const unsigned char* data, long length, sound_data* sound)
    : length(length), data(data), sound(sound) {
    count_playout(sound, 1);
}

zorn_audio_playout_memory::~zorn_audio_playout_memory() { count_playout(sound, -1); }

zorn_audio_playout_mono_memory::zorn_audio_playout_mono_memory(const unsigned char* data, long length,
                                                               sound_data* sound)
    : zorn_audio_playout_memory(data, length, sound) {
    add_audio_object(this);
}

// An odd last byte is never played.
bool zorn_audio_playout_mono_memory::next_sample(int16_t* left, int16_t* right) {
    if (position + 1 >= length) return false;
    *left = *right = little_endian_sample(data + position);
    position += 2;
    return true;
}

zorn_audio_playout_stereo_memory::zorn_audio_playout_stereo_memory(const unsigned char* data, long length,
                                                                   sound_data* sound)
    : zorn_audio_playout_memory(data, length, sound) {
    add_audio_object(this);
}

// A trailing partial frame is never played.
bool zorn_audio_playout_stereo_memory::next_sample(int16_t* left, int16_t* right) {
    if (position + 3 >= length) return false;
    *left = little_endian_sample(data + position);
    *right = little_endian_sample(data + position + 2);
    position += 4;
    return true;
}

void zorn_play_noise_tick() { new zorn_audio_noise_tick(); }
void zorn_play_wall_bump() { new zorn_audio_wall_bump(); }
