#include "net/soundpack_updater.h"

#include <atomic>
#include <ctime>
#include <memory>

#include "base/files.h"
#include "base/threads.h"
#include "config/debug_log.h"

namespace {

// The time of the last progress line, for all updaters of the process.
std::atomic<long long> last_progress_second{0};

void log_message(void*, const char* text) {
    if (zorn_debug_level >= 3) zorn_client_debug_printf("%s\n", text);
}

void ignore_file_progress(void*, int, int) {}

void log_total_progress(void*, double done, double to_do) { zorn_soundpack_log_progress(done, to_do); }

void updater_thread(void* raw) {
    std::unique_ptr<zorn_soundpack_updater_settings> settings(static_cast<zorn_soundpack_updater_settings*>(raw));
    zorn_soundpack_updater_loop(*settings);
}

// Steps with the lock held; true when the update went through (single files may have failed).
bool update_under_lock(const zorn_soundpack_updater_settings& settings, const std::string& directory) {
    auto manifest = std::make_unique<kvu_file_manifest>();
    manifest->verbose = 0;
    manifest->callback_context = nullptr;
    manifest->message_callback = log_message;
    manifest->port = settings.web_port;
    manifest->save_interval_seconds = settings.manifest_save_interval_seconds;
    bool ok = true;
    if (!manifest->set_destination(directory.c_str())) {
        if (zorn_debug_level >= 3) {
            zorn_client_debug_printf("Unable to access destination directory '%s', aborting update.\n",
                                     directory.c_str());
        }
        ok = false;
    }
    const std::string temporary = directory + "tmp/update.tmp";
    if (!manifest->set_temporary_file(temporary.c_str())) {
        if (zorn_debug_level >= 3) {
            zorn_client_debug_printf("Unable to access temporary download file '%s', aborting update.\n",
                                     temporary.c_str());
        }
        ok = false;
    }
    const std::string manifest_file = directory + "update_manifest.lst";
    if (!manifest->load_manifest(manifest_file.c_str()) && zorn_debug_level >= 3) {
        zorn_client_debug_printf("Error loading manifest file '%s', creating new.\n", manifest_file.c_str());
    }
    manifest->load_exclude_list((directory + "update_exclude.lst").c_str());

    manifest->file_progress_callback = ignore_file_progress;
    manifest->total_progress_callback = log_total_progress;
    last_progress_second = static_cast<long long>(std::time(nullptr));
    const int status = manifest->update(settings.web_host.c_str(), zorn_soundpack_remote_base,
                                        zorn_soundpack_remote_manifest);
    if (status != kvu_file_manifest::update_finished) {
        ok = false;
    } else if (manifest->files_to_update > 0 && zorn_debug_level >= 3) {
        zorn_client_debug_printf("%d/%d files successfully updated.\n", manifest->files_updated,
                                 manifest->files_to_update);
    }
    return ok;
}

}  // namespace

void zorn_soundpack_log_progress(double done, double to_do) {
    const long long now = static_cast<long long>(std::time(nullptr));
    if (last_progress_second.exchange(now) == now) return;
    if (zorn_debug_level >= 3) {
        zorn_client_debug_printf("Soundpack %5.1f%% complete.\n", done * 100.0 / (to_do > 0 ? to_do : 1.0));
    }
}

int zorn_soundpack_update_round(const zorn_soundpack_updater_settings& settings) {
    const std::string directory = settings.config_directory + "/soundpack/";
    if (!zorn_create_and_check_writeable_directory(directory.c_str(), 0700, nullptr)) {
        if (zorn_debug_level >= 1) zorn_client_debug_printf("Unable to create soundpack directory '%s'.\n", directory.c_str());
        return settings.after_failure_ms;
    }
    const int lock = zorn_lock_file((directory + "download.lck").c_str());
    if (lock < 0) {
        if (zorn_debug_level >= 2) zorn_client_debug_printf("Soundpack update already in progress, doing nothing.\n");
        return settings.after_failure_ms;
    }
    int wait_ms;
    if (update_under_lock(settings, directory)) {
        if (zorn_debug_level >= 3) zorn_client_debug_printf("Soundpack update success, sleeping six hours.\n");
        wait_ms = settings.after_success_ms;
    } else {
        if (zorn_debug_level >= 1) zorn_client_debug_printf("Soundpack update failed?  Trying again in ten minutes.\n");
        wait_ms = settings.after_failure_ms;
    }
    zorn_unlock_file(lock);
    return wait_ms;
}

void zorn_soundpack_updater_loop(const zorn_soundpack_updater_settings& settings) {
    for (int round = 0; settings.rounds == 0 || round < settings.rounds; ++round) {
        zorn_sleep_ms(settings.before_round_ms);
        const int wait_ms = zorn_soundpack_update_round(settings);
        if (settings.rounds != 0 && round + 1 == settings.rounds) break;
        zorn_sleep_ms(wait_ms);
    }
}

bool zorn_start_soundpack_updater(const zorn_soundpack_updater_settings& settings) {
    auto* copy = new zorn_soundpack_updater_settings(settings);
    if (zorn_thread_create("soundpack updater", updater_thread, copy)) return true;
    delete copy;
    if (zorn_debug_level >= 1) {
        zorn_client_debug_printf("Error in zorn_soundpack::start_updater(), unable to create downloader thread.\n");
    }
    return false;
}

bool zorn_start_soundpack_updater(const char* config_directory, const char* web_host, int web_port) {
    zorn_soundpack_updater_settings settings;
    settings.config_directory = config_directory ? config_directory : ".";
    settings.web_host = web_host ? web_host : "";
    settings.web_port = web_port;
    return zorn_start_soundpack_updater(settings);
}
