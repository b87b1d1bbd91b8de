#include "app/browser.h"

#include <sys/types.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "config/debug_log.h"

namespace {

constexpr const char* opener = "xdg-open";

void log_failure(int error) {
    zorn_client_debug_eventf(zorn_cat_warning, "zorn_http_fork() failed with errno %d.", error);
}

}  // namespace

bool zorn_http_fork(const char* url) {
    if (!url) return false;
    if ((int)(std::strlen(opener) + 1 + std::strlen(url)) >= zorn_http_fork_limit) {
        log_failure(E2BIG);
        return false;
    }
    std::fflush(nullptr);
    const pid_t child = fork();
    if (child < 0) {
        log_failure(errno);
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
        if (errno == ECHILD) return true;  // someone reaped it for us
        log_failure(errno);
        return false;
    }
    if (WIFSIGNALED(status)) {
        log_failure(errno);
        return false;
    }
    return true;
}
