#pragma once
// The soundpack updater: a thread that, for the whole life of the program, brings the soundpack
// under the configuration directory up to date with the web site. Its work shows in the debug
// log only; sounds that arrived are simply found on disk. A second process on the same directory
// is kept out by a lock on soundpack/download.lck.

#include <string>

#include "net/file_manifest.h"

// The waits of the updater loop, in milliseconds; tests shorten them.
namespace zorn_soundpack_waits {
constexpr int before_round_ms = 3000;
constexpr int after_failure_ms = 600000;
constexpr int after_success_ms = 21600000;
}  // namespace zorn_soundpack_waits

struct zorn_soundpack_updater_settings {
    std::string config_directory;
    std::string web_host;
    int web_port = kvu_file_manifest::default_port;
    int before_round_ms = zorn_soundpack_waits::before_round_ms;
    int after_failure_ms = zorn_soundpack_waits::after_failure_ms;
    int after_success_ms = zorn_soundpack_waits::after_success_ms;
    int manifest_save_interval_seconds = kvu_file_manifest::default_save_interval_seconds;
    // Rounds before the loop returns; 0 runs for ever (the thread never ends).
    int rounds = 0;
};

constexpr const char* zorn_soundpack_remote_base = "/soundpack";
constexpr const char* zorn_soundpack_remote_manifest = "file_manifest_audio.txt.gz";

// Starts the thread "soundpack updater" (once, as the last step of start-up). False, logged, when
// the thread could not be made.
bool zorn_start_soundpack_updater(const char* config_directory, const char* web_host, int web_port);
bool zorn_start_soundpack_updater(const zorn_soundpack_updater_settings& settings);

// The progress line, at most one a second for the whole process.
void zorn_soundpack_log_progress(double done, double to_do);

// One round without its waits: lock, load, update, unlock. The result is the wait that follows.
int zorn_soundpack_update_round(const zorn_soundpack_updater_settings& settings);
// The thread's loop: a wait before every round, the round, the round's wait.
void zorn_soundpack_updater_loop(const zorn_soundpack_updater_settings& settings);
