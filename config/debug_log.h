#pragma once
// The debug log: plain lines for a maintainer, written to a file that opens at the first message.
// Usable from any thread; the writer itself (zorn_signal_safe_logfile::write) is signal-safe.

#include <atomic>
#include <string>

// Category bits of zorn_client_debug_event. 256 is the chatty one, shown at level 3 only.
enum : unsigned {
    zorn_cat_severe = 1,
    zorn_cat_warning = 2,
    zorn_cat_error = 4,
    zorn_cat_notice = 8,
    zorn_cat_failure = 16,
    zorn_cat_32 = 32,
    zorn_cat_64 = 64,
    zorn_cat_128 = 128,
    zorn_cat_verbose = 256,
};

// 0 to 3; 1 at start. Callers of zorn_client_debug_printf test it themselves.
extern int zorn_debug_level;

// Longest text one zorn_client_debug_printf writes; longer text is cut.
constexpr int zorn_debug_printf_limit = 10239;

class zorn_signal_safe_logfile {
public:
    zorn_signal_safe_logfile() = default;
    ~zorn_signal_safe_logfile();
    zorn_signal_safe_logfile(const zorn_signal_safe_logfile&) = delete;
    zorn_signal_safe_logfile& operator=(const zorn_signal_safe_logfile&) = delete;

    bool open(const char* path);
    bool open_stdout();
    void close();
    bool is_open() const { return descriptor >= 0; }
    // One write(2) per text, so lines of two threads never interleave within a line.
    bool write(const char* text);
    bool write(long long value);

private:
    int descriptor = -1;
    // Any thread may log: the recursion depth is counted per thread (in debug_log.cpp), and the
    // one-time failure report is a lock-free flag, so the writer stays usable in a signal handler.
    std::atomic<bool> write_failed{false};
};

void zorn_client_debug_printf(const char* format, ...) __attribute__((format(printf, 1, 2)));
// One line, a line feed added. The source says who speaks and has no effect.
void zorn_client_debug_event(const char* text, unsigned category, int source = 0);
// True when an event of this category would be written now.
bool zorn_client_debug_event_wanted(unsigned category);
// Formatting convenience over zorn_client_debug_event; formats only when the event is wanted.
void zorn_client_debug_eventf(unsigned category, const char* format, ...) __attribute__((format(printf, 2, 3)));
void zorn_client_debug_events_on();
void zorn_client_debug_events_off();
void zorn_client_set_debug_suppression_mask(unsigned mask);

void zorn_client_set_autoopen_debug_logfile_name(const char* file_name);
void zorn_client_set_debug_logfile_name(const char* path);
void zorn_client_try_open_debug_logfile();
void zorn_client_debug_logfile_close();
// The path the log is or would be written to, without opening it: the full name, else "/tmp/" and
// the automatic name, else "" (standard output).
std::string zorn_client_current_debug_logfile_name();
// These two open the log first when it is not open yet.
const char* zorn_client_get_debug_logfile_name();
bool zorn_client_debug_logfile_open_failed();
bool zorn_client_debug_logfile_is_open();
