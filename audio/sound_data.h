#pragma once
// The record of one sound of the soundpack: its decoded samples, once loaded, stay for the whole
// run, so a playout may point into them without owning them.

#include <mutex>

enum : int {
    sound_state_not_loaded = 0,
    sound_state_loaded = 3,
    sound_state_loaded_custom = 5,
    sound_state_failed = 99,
};

struct sound_data {
    static constexpr int name_size = 1000;  // 999 characters and the terminator

    unsigned char* samples = nullptr;  // 16-bit signed little-endian, interleaved if stereo
    long length = 0;                   // bytes
    int channels = 0;
    char name[name_size] = {};  // the key: "soundpack/" + sound name + ".ogg"
    sound_data* next = nullptr;
    int state = sound_state_not_loaded;
    std::mutex lock;  // guards playout_count
    int playout_count = 0;
};
