#include "display/speechd_output.h"

#include <dlfcn.h>

#ifdef LANTERN_HAVE_SPEECHD_HEADER
#include <libspeechd.h>

#include <atomic>
#include <chrono>
#include <cstdlib>

#include "config/debug_log.h"

namespace {

// Utterances said and not yet ended or cancelled. The library reports from its own thread, with no
// user pointer: one connection per process.
std::atomic<int> in_flight{0};

// Without an end notice for this long, the daemon is taken to have lost it: speech goes on.
constexpr std::chrono::seconds lost_notice_after{30};

void utterance_done(size_t, size_t, SPDNotificationType) {
    int now = in_flight.load();
    while (now > 0 && !in_flight.compare_exchange_weak(now, now - 1)) {
    }
}

void log_level(int level, const char* text, const char* detail) {
    if (zorn_debug_level >= level) zorn_client_debug_printf(text, detail ? detail : "");
}

class speechd_output : public zorn_speech_output {
public:
    using open_function = SPDConnection* (*)(const char*, const char*, const char*, SPDConnectionMode,
                                              const SPDConnectionAddress*, int, char**);
    using say_function = int (*)(SPDConnection*, SPDPriority, const char*);
    using connection_function = int (*)(SPDConnection*);
    using close_function = void (*)(SPDConnection*);
    using notify_function = int (*)(SPDConnection*, SPDNotification);

    bool open(const char* library) {
        handle = dlopen(library, RTLD_NOW | RTLD_LOCAL);
        if (!handle) {
            log_level(2, "zorn_speechd_output - no speech library: %s\n", dlerror());
            return false;
        }
        auto open2 = reinterpret_cast<open_function>(dlsym(handle, "spd_open2"));
        say = reinterpret_cast<say_function>(dlsym(handle, "spd_say"));
        cancel = reinterpret_cast<connection_function>(dlsym(handle, "spd_cancel"));
        close = reinterpret_cast<close_function>(dlsym(handle, "spd_close"));
        auto notify = reinterpret_cast<notify_function>(dlsym(handle, "spd_set_notification_on"));
        if (!open2 || !say || !cancel || !close || !notify) {
            log_level(1, "Warning in zorn_speechd_output, the speech library lacks a function.%s\n", nullptr);
            return false;
        }
        char* error = nullptr;
        connection = open2("lantern", "main", nullptr, SPD_MODE_THREADED, nullptr, 1, &error);
        if (!connection) {
            log_level(2, "zorn_speechd_output - no speech server: %s\n", error);
            std::free(error);
            return false;
        }
        std::free(error);
        in_flight = 0;
        connection->callback_end = utterance_done;
        connection->callback_cancel = utterance_done;
        notify(connection, SPD_END);
        notify(connection, SPD_CANCEL);
        return true;
    }

    ~speechd_output() override {
        if (connection) close(connection);
        if (handle) dlclose(handle);
    }

    void speak(const std::string& text) override {
        if (say(connection, SPD_TEXT, text.c_str()) < 0) return;
        ++in_flight;
        last_said = std::chrono::steady_clock::now();
    }

    void silence() override {
        cancel(connection);
        in_flight = 0;
    }

    int pending() const override {
        if (in_flight > 0 && std::chrono::steady_clock::now() - last_said > lost_notice_after) in_flight = 0;
        return in_flight;
    }

private:
    void* handle = nullptr;
    SPDConnection* connection = nullptr;
    say_function say = nullptr;
    connection_function cancel = nullptr;
    close_function close = nullptr;
    std::chrono::steady_clock::time_point last_said{};
};

}  // namespace

std::unique_ptr<zorn_speech_output> zorn_open_speechd(const char* library) {
    auto output = std::make_unique<speechd_output>();
    if (!output->open(library)) return nullptr;
    return output;
}

#else
// Built where the library's header was missing: the client runs without speech.
std::unique_ptr<zorn_speech_output> zorn_open_speechd(const char*) { return nullptr; }
#endif
