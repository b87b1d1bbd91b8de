#include "config/debug_log.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

int zorn_debug_level = 1;

namespace {

constexpr int recursion_limit = 25;

struct log_state {
    unsigned suppression_mask = 0;
    bool all_off = false;
    zorn_signal_safe_logfile file;
    std::string automatic_name;
    std::string file_name;
    bool open_failed = false;
};

log_state& state() {
    static log_state s;
    return s;
}

void open_on_demand() {
    log_state& s = state();
    if (s.file.is_open() || s.open_failed) return;
    if (s.file_name.empty() && !s.automatic_name.empty()) s.file_name = "/tmp/" + s.automatic_name;
    zorn_client_try_open_debug_logfile();
}

}  // namespace

zorn_signal_safe_logfile::~zorn_signal_safe_logfile() { close(); }

bool zorn_signal_safe_logfile::open(const char* path) {
    close();
    descriptor = ::open(path, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644);
    return descriptor >= 0;
}

bool zorn_signal_safe_logfile::open_stdout() {
    close();
    descriptor = ::dup(STDOUT_FILENO);
    return descriptor >= 0;
}

void zorn_signal_safe_logfile::close() {
    if (descriptor >= 0) ::close(descriptor);
    descriptor = -1;
}

namespace {
thread_local int write_depth = 0;
}  // namespace

bool zorn_signal_safe_logfile::write(const char* text) {
    if (!text) text = "(null)";
    if (write_depth > recursion_limit) return false;
    if (write_depth == recursion_limit) {
        ++write_depth;  // the report below then stops at the first test instead of recursing
        zorn_client_debug_event("Error in zorn_signal_safe_logfile::write(), recursion limiter triggered.",
                                zorn_cat_warning);
        --write_depth;
        return false;
    }
    ++write_depth;
    const size_t size = std::strlen(text);
    const ssize_t written = ::write(descriptor, text, size);
    --write_depth;
    if (written < 0 || static_cast<size_t>(written) != size) {
        if (!write_failed.exchange(true)) {
            ++write_depth;
            zorn_client_debug_event("Error in zorn_signal_safe_logfile::write(), write failed.", zorn_cat_warning);
            --write_depth;
        }
        return false;
    }
    write_failed = false;
    return true;
}

bool zorn_signal_safe_logfile::write(long long value) {
    // No printf here: this form must stay usable in a signal handler.
    char digits[24];
    int end = sizeof digits - 1;
    digits[end] = '\0';
    const bool negative = value < 0;
    unsigned long long magnitude = negative ? 0ULL - static_cast<unsigned long long>(value)
                                            : static_cast<unsigned long long>(value);
    do {
        digits[--end] = static_cast<char>('0' + magnitude % 10);
        magnitude /= 10;
    } while (magnitude);
    if (negative) digits[--end] = '-';
    return write(digits + end);
}

void zorn_client_debug_printf(const char* format, ...) {
    log_state& s = state();
    if (!s.file.is_open()) {
        if (s.open_failed) return;
        open_on_demand();
        if (!s.file.is_open()) return;
    }
    char buffer[zorn_debug_printf_limit + 1];
    va_list args;
    va_start(args, format);
    std::vsnprintf(buffer, sizeof buffer, format, args);
    va_end(args);
    s.file.write(buffer);
}

bool zorn_client_debug_event_wanted(unsigned category) {
    const log_state& s = state();
    if (s.all_off) return false;
    category &= ~s.suppression_mask;
    if (!category) return false;
    return zorn_debug_level >= ((category & zorn_cat_verbose) ? 3 : 1);
}

void zorn_client_debug_event(const char* text, unsigned category, int /*source*/) {
    if (zorn_client_debug_event_wanted(category)) zorn_client_debug_printf("%s\n", text ? text : "(null)");
}

void zorn_client_debug_eventf(unsigned category, const char* format, ...) {
    // Formatting costs more than the test, and most events are not wanted.
    if (!zorn_client_debug_event_wanted(category)) return;
    char buffer[zorn_debug_printf_limit + 1];
    va_list args;
    va_start(args, format);
    std::vsnprintf(buffer, sizeof buffer, format, args);
    va_end(args);
    zorn_client_debug_event(buffer, category);
}

void zorn_client_debug_events_on() { state().all_off = false; }
void zorn_client_debug_events_off() { state().all_off = true; }
void zorn_client_set_debug_suppression_mask(unsigned mask) { state().suppression_mask = mask; }

void zorn_client_set_autoopen_debug_logfile_name(const char* file_name) {
    log_state& s = state();
    if (s.file.is_open()) {
        zorn_client_debug_event("Error in zorn_client_set_autoopen_debug_logfile_name(), logfile already open.",
                                zorn_cat_error);
        return;
    }
    s.automatic_name.clear();
    s.file_name.clear();
    s.open_failed = false;
    if (file_name) s.automatic_name = file_name;
}

void zorn_client_set_debug_logfile_name(const char* path) {
    log_state& s = state();
    if (s.file.is_open()) {
        zorn_client_debug_event("Error in zorn_client_set_debug_logfile_name(), logfile already open.", zorn_cat_error);
        return;
    }
    s.automatic_name.clear();
    s.file_name.clear();
    s.open_failed = false;
    if (path) s.file_name = path;
}

void zorn_client_try_open_debug_logfile() {
    log_state& s = state();
    if (s.file.is_open()) {
        zorn_client_debug_event("Error in zorn_client_try_open_debug_logfile(), logfile already open.", zorn_cat_error);
        return;
    }
    if (s.file_name.empty()) {
        if (!s.file.open_stdout()) {
            s.open_failed = true;
            zorn_client_debug_event("zorn_client_try_open_debug_logfile() - unable to use STDOUT for log data.",
                                    zorn_cat_verbose);
            return;
        }
        s.open_failed = false;
        zorn_client_debug_event("zorn_client_try_open_debug_logfile() - using STDOUT.", zorn_cat_verbose);
        return;
    }
    if (!s.file.open(s.file_name.c_str())) {
        s.open_failed = true;
        // With the log closed this goes nowhere; kept so a later open can't be confused about order.
        zorn_client_debug_eventf(zorn_cat_verbose, "zorn_client_try_open_debug_logfile() failed to open logfile '%s'",
                                 s.file_name.c_str());
        return;
    }
    s.open_failed = false;
    zorn_client_debug_eventf(zorn_cat_verbose, "zorn_client_try_open_debug_logfile() opened logfile '%s'",
                             s.file_name.c_str());
}

void zorn_client_debug_logfile_close() {
    log_state& s = state();
    if (!s.file.is_open()) {
        zorn_client_debug_event("Error in zorn_client_debug_logfile_close(), no logfile open.", zorn_cat_error);
        return;
    }
    s.file.close();
    s.automatic_name.clear();
    s.file_name.clear();
    s.open_failed = false;
}

std::string zorn_client_current_debug_logfile_name() {
    const log_state& s = state();
    if (!s.file_name.empty()) return s.file_name;
    return s.automatic_name.empty() ? std::string() : "/tmp/" + s.automatic_name;
}

const char* zorn_client_get_debug_logfile_name() {
    open_on_demand();
    return state().file_name.c_str();
}

bool zorn_client_debug_logfile_open_failed() {
    open_on_demand();
    return state().open_failed;
}

bool zorn_client_debug_logfile_is_open() { return state().file.is_open(); }
