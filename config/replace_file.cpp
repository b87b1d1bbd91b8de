#include "config/replace_file.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdlib>
#include <vector>

zorn_replace_file::zorn_replace_file(const char* target_path) {
    if (!target_path || !*target_path) return;
    target = target_path;
    std::vector<char> name(target.begin(), target.end());
    const char suffix[] = ".XXXXXX";
    name.insert(name.end(), suffix, suffix + sizeof suffix);
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
