#include "base/boot.h"

#include <sys/stat.h>
#include <sys/types.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "config/debug_log.h"

namespace {

constexpr const char* opener = "xdg-open";

void log_http_failure(int error) {
    zorn_client_debug_eventf(zorn_cat_warning, "zorn_http_fork() failed with errno %d.", error);
}

// The failure lines of both starters: "Error in <who>(), <step> failed.  Return code ..."
void log_start_failure(const char* who, const char* step, int result, int error, const char* path) {
    zorn_client_debug_eventf(zorn_cat_warning, "Error in %s(), %s failed.  Return code %d, error code %d. Filename: %s",
                             who, step, result, error, path);
}

// The first step of both starters: the image must be executable by its owner.
bool make_executable(const char* who, const char* path) {
    const int result = chmod(path, 0700);
    if (result == 0) return true;
    log_start_failure(who, "chmod", result, errno, path);
    return false;
}

}  // namespace

bool zorn_http_fork(const char* url) {
    if (!url) return false;
    if ((int)(std::strlen(opener) + 1 + std::strlen(url)) >= zorn_http_fork_limit) {
        log_http_failure(E2BIG);
        return false;
    }
    std::fflush(nullptr);
    const pid_t child = fork();
    if (child < 0) {
        log_http_failure(errno);
        return false;
    }
    if (child == 0) {
        // The child must not run the parent's atexit handlers or flush its buffers again.
        const char* argv[] = {opener, url, nullptr};
        execvp(opener, const_cast<char* const*>(argv));
        _exit(127);
    }
    int status = 0;
    pid_t waited;
    do {
        waited = waitpid(child, &status, 0);
    } while (waited < 0 && errno == EINTR);
    if (waited < 0) {
        if (errno == ECHILD) return true;  // someone reaped it for us, or SIGCHLD is ignored
        log_http_failure(errno);
        return false;
    }
    if (WIFSIGNALED(status)) {
        log_http_failure(errno);
        return false;
    }
    return true;
}

bool zorn_is_boot_file_bad(const char* path) {
    FILE* file = path ? std::fopen(path, "rb") : nullptr;
    if (!file) {
        zorn_client_debug_eventf(zorn_cat_verbose, "zorn_is_boot_file_bad() - cannot open image file '%s'.",
                                 path ? path : "(null)");
        return true;
    }
    long size = -1;
    if (std::fseek(file, 0, SEEK_END) == 0) size = std::ftell(file);
    std::fclose(file);
    if (size >= zorn_boot_file_min_size) return false;
    zorn_client_debug_eventf(zorn_cat_warning, "zorn_is_boot_file_bad() - image '%s' is too small to be valid.", path);
    return true;
}

bool zorn_fork_exec(const char* path, char* const argv[]) {
    constexpr const char* who = "zorn_fork_exec";
    if (!make_executable(who, path)) return false;
    zorn_client_debug_eventf(zorn_cat_verbose, "zorn_fork_exec() - trying to run image '%s'", path);
    std::fflush(nullptr);
    const pid_t child = fork();
    if (child < 0) {
        log_start_failure(who, "fork", static_cast<int>(child), errno, path);
        std::fflush(nullptr);
        return false;
    }
    if (child > 0) return true;
    // A session of its own, so the new program outlives this one and its terminal.
    setsid();
    execv(path, argv);
    log_start_failure(who, "exec", -1, errno, path);
    std::fflush(nullptr);
    std::exit(1);
}

void zorn_boot_exec(const char* path, char* const argv[]) {
    constexpr const char* who = "zorn_boot_exec";
    if (!make_executable(who, path)) return;
    zorn_client_debug_eventf(zorn_cat_verbose, "zorn_boot_exec() - trying to boot image '%s'", path);
    std::fflush(nullptr);
    execv(path, argv);
    log_start_failure(who, "exec", -1, errno, path);
    std::fflush(nullptr);
}
