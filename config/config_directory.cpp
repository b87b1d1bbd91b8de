#include "config/config_directory.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <string>

#include "base/files.h"
#include "base/fixed_string.h"
#include "config/debug_log.h"
#include "config/replace_file.h"

namespace {

// A temporary settings file this old belongs to no save still under way.
constexpr int stale_save_age_seconds = 60;

std::string config_directory;
bool config_directory_set = false;

bool try_candidate(const std::string& path) {
    const bool ok = zorn_create_and_check_writeable_directory(path.c_str(), 0700, nullptr);
    zorn_client_debug_eventf(zorn_cat_verbose, "Checking config directory: %s%s", path.c_str(), ok ? "" : " [FAIL]");
    return ok;
}

}  // namespace

bool zorn_client_set_up_config_directory(const char* base_name) {
    if (!base_name) return false;
    if (config_directory_set) {
        zorn_client_debug_event(
            "Error in zorn_client_set_up_config_directory(), attempt to change config directory path after initial "
            "configuration.",
            zorn_cat_error);
        zorn_client_debug_eventf(zorn_cat_verbose, "Old path '%s', new base name '%s'", config_directory.c_str(),
                                 base_name);
    }
    const char* home = std::getenv("HOME");
    if (!home) {
        zorn_client_debug_event(
            "Error in zorn_client_set_up_config_directory(), unable to fetch home directory - please set HOME "
            "environment variable and restart.",
            zorn_cat_error);
        return false;
    }
    const std::string base(base_name);
    const std::string candidates[] = {
        std::string(home) + "/.config/" + base,
        "." + base,
        "/tmp/" + base,
        base,
    };
    for (const std::string& candidate : candidates) {
        if (!try_candidate(candidate)) continue;
        config_directory = candidate;
        config_directory_set = true;
        // A save cut off by a kill leaves its temporary file beside the settings it was replacing.
        zorn_remove_stale_replace_files(candidate.c_str(), stale_save_age_seconds);
        zorn_remove_stale_replace_files((candidate + "/char_configs").c_str(), stale_save_age_seconds);
        zorn_client_debug_eventf(zorn_cat_verbose, "zorn_client_set_up_config_directory() - got final config directory '%s'",
                                 candidate.c_str());
        return true;
    }
    zorn_client_debug_event("zorn_client_set_up_config_directory() - Giving up.  Cannot create config directory.",
                            zorn_cat_failure);
    return false;
}

bool zorn_client_cd_to_config_directory() {
    if (!config_directory_set) return false;
    if (chdir(config_directory.c_str()) == 0) return true;
    switch (errno) {
        case EACCES:
            zorn_client_debug_event("Error in zorn_client_cd_to_config_directory(), failed due to access permissions.",
                                    zorn_cat_error);
            break;
        case ENOTDIR:
            zorn_client_debug_event("Error in zorn_client_cd_to_config_directory(), target path is not a directory.",
                                    zorn_cat_error);
            break;
        case ENOENT:
            zorn_client_debug_event("Error in zorn_client_cd_to_config_directory(), target path does not exist.",
                                    zorn_cat_error);
            break;
        default:
            break;
    }
    return false;
}

const char* zorn_client_config_directory() { return config_directory_set ? config_directory.c_str() : nullptr; }
