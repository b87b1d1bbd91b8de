#pragma once
// A whole Ogg Vorbis file decoded into memory as 16-bit signed little-endian samples.

enum : int {
    ogg_decode_ok = 0,
    ogg_decode_cannot_open = 1,
    ogg_decode_bad_format = 2,
    ogg_decode_too_large = 3,
    ogg_decode_failed = 4,  // no usable length, or no memory for it
};

struct zorn_decoded_sound {
    unsigned char* samples = nullptr;  // from malloc; the caller frees it
    long length = 0;                   // bytes
    long rate = 0;
    int channels = 0;
};

// Ten seconds of 44100 Hz stereo: the largest sound the soundpack keeps.
constexpr long zorn_sound_decode_limit = 1764000;

// One of the codes above; samples are set with code 0 only. Messages go to the debug log.
int zorn_ogg_decode_from_file_to_memory(const char* path, long max_size, zorn_decoded_sound* result);
