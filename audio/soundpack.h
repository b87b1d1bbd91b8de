#pragma once
// The soundpack: the server names a sound in the tag "sound", and the file
// "soundpack/<name>.ogg" under the configuration directory is decoded into memory at first use and
// kept for the whole run. A player's file of the same base name in "soundpack/custom" comes first.
// A missing or bad sound is a debug line and silence. Decoding runs on the caller's thread (the
// main thread), so a sound's first use stalls it for as long as the decoding takes.

#include <mutex>
#include <string>

#include "audio/sound_data.h"

class zorn_soundpack {
public:
    // The client's soundpack, under the configuration directory; made at first use, never freed.
    static zorn_soundpack& instance();

    // Null uses the configuration directory of the moment; tests give a directory of their own.
    explicit zorn_soundpack(const char* directory = nullptr);
    // Frees every record: only when no playout of its sounds is alive any more.
    ~zorn_soundpack();
    zorn_soundpack(const zorn_soundpack&) = delete;
    zorn_soundpack& operator=(const zorn_soundpack&) = delete;

    // The tag's payload: plays its first word's sound, unless three playouts of it still run.
    void parse_audio_tag(const char* payload);
    // The record with decoded data, or null (not found yet, or failed for this run).
    sound_data* get_sound_data(const char* name);
    // Decodes one file into the record: 0 when the file can't be opened (the record untouched),
    // else 1 with the record's state 3 (loaded) or 99 (failed).
    int load_from_file(sound_data* record, const char* path);
    // The record for a key, made (state 0) when new. Keys longer than 999 characters are cut.
    sound_data* find_or_create(const char* key);

    int record_count();

private:
    const char* base_directory() const;

    std::mutex list_lock;
    sound_data* head = nullptr;
    std::string directory;
    bool use_config_directory;
};

// Playouts of one sound that may run at once; a further tag of it is refused.
constexpr int zorn_soundpack_playout_limit = 3;
