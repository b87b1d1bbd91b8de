#include "config/replace_file.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <cctype>
#include <cstring>
#include <ctime>
#include <vector>

#include "config/debug_log.h"

namespace {

constexpr char temporary_suffix[] = ".XXXXXX";
constexpr size_t random_part = sizeof temporary_suffix - 2;  // the six characters mkostemp fills

// "NAME.cfg." and six letters or digits, as the constructor makes them for a settings file.
bool is_replace_file_name(const char* name) {
    const size_t length = std::strlen(name);
    const size_t cfg = sizeof ".cfg." - 1;
    if (length <= cfg + random_part) return false;
    const char* tail = name + length - random_part;
    if (std::strncmp(tail - cfg, ".cfg.", cfg) != 0) return false;
    for (size_t i = 0; i < random_part; ++i)
        if (!std::isalnum(static_cast<unsigned char>(tail[i]))) return false;
    return true;
}

}  // namespace

zorn_replace_file::zorn_replace_file(const char* target_path) {
    if (!target_path || !*target_path) return;
    target = target_path;
    std::vector<char> name(target.begin(), target.end());
    name.insert(name.end(), temporary_suffix, temporary_suffix + sizeof temporary_suffix);
    // Same directory as the target, so the rename stays on one file system and is atomic.
    const int descriptor = mkostemp(name.data(), O_CLOEXEC);
    if (descriptor < 0) return;
    temporary = name.data();
    file = fdopen(descriptor, "wb");
    if (!file) {
        ::close(descriptor);
        ::unlink(temporary.c_str());
        temporary.clear();
    }
}

zorn_replace_file::~zorn_replace_file() { abandon(); }

void zorn_replace_file::abandon() {
    if (file) {
        std::fclose(file);
        file = nullptr;
    }
    if (!temporary.empty()) {
        ::unlink(temporary.c_str());
        temporary.clear();
    }
}

bool zorn_replace_file::commit() {
    if (!file) return false;
    bool ok = std::fflush(file) == 0 && !std::ferror(file);
    ok = ok && ::fsync(fileno(file)) == 0;
    const bool closed = std::fclose(file) == 0;
    file = nullptr;
    ok = ok && closed && ::rename(temporary.c_str(), target.c_str()) == 0;
    if (!ok) {
        abandon();
        return false;
    }
    temporary.clear();
    return true;
}

int zorn_remove_stale_replace_files(const char* directory, int min_age_seconds) {
    if (!directory) return 0;
    DIR* folder = opendir(directory);
    if (!folder) return 0;
    const time_t now = std::time(nullptr);
    int removed = 0;
    while (const dirent* entry = readdir(folder)) {
        if (!is_replace_file_name(entry->d_name)) continue;
        const std::string path = std::string(directory) + "/" + entry->d_name;
        struct stat info;
        if (lstat(path.c_str(), &info) != 0 || !S_ISREG(info.st_mode)) continue;
        if (now - info.st_mtime < min_age_seconds) continue;
        if (::unlink(path.c_str()) != 0) continue;
        ++removed;
        zorn_client_debug_eventf(zorn_cat_warning, "Removed leftover settings file '%s'.", path.c_str());
    }
    closedir(folder);
    return removed;
}
