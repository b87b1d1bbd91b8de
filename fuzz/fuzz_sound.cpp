// A sound file from the network as arbitrary bytes: the soundpack's loader decodes it, and what it
// keeps must be a usable sound within the decode limit.

#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "audio/ogg_decode.h"
#include "audio/soundpack.h"
#include "config/debug_log.h"

// libvorbisfile itself loses a few bytes on some damaged headers (ov_open on its own, followed by
// fclose, shows it); nothing of ours can free them.
extern "C" const char* __lsan_default_suppressions() { return "leak:libvorbisfile.so\n"; }

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const std::string path = "/tmp/lantern_fuzz_sound_" + std::to_string(getpid()) + ".ogg";
    static zorn_soundpack pack("/nonexistent");
    static const bool quiet = [] {
        zorn_debug_level = 0;
        zorn_client_debug_events_off();
        return true;
    }();
    (void)quiet;
    FILE* file = std::fopen(path.c_str(), "wb");
    if (!file) return 0;
    if (size) std::fwrite(data, 1, size, file);
    std::fclose(file);

    sound_data record;
    if (pack.load_from_file(&record, path.c_str()) != 1) __builtin_trap();
    if (record.state == sound_state_loaded) {
        if (record.channels != 1 && record.channels != 2) __builtin_trap();
        if (record.length < 0 || record.length > zorn_sound_decode_limit) __builtin_trap();
        if (record.length > 0 && !record.samples) __builtin_trap();
    } else if (record.state != sound_state_failed || record.samples) {
        __builtin_trap();
    }
    std::free(record.samples);
    std::remove(path.c_str());
    return 0;
}
