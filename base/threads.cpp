#include "base/threads.h"

#include <sys/time.h>

#include <cstdlib>
#include <ctime>

#include "config/debug_log.h"

namespace {

struct start_record {
    void (*function)(void*);
    void* argument;
};

void* thread_entry(void* raw) {
    auto* record = static_cast<start_record*>(raw);
    start_record copy = *record;
    delete record;
    copy.function(copy.argument);
    return nullptr;
}

}  // namespace

bool zorn_thread_create(const char* /*name*/, void (*function)(void*), void* argument) {
    auto* record = new start_record{function, argument};
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_attr_setdetachstate(&attributes, PTHREAD_CREATE_DETACHED);
    pthread_t thread;
    const int rc = pthread_create(&thread, &attributes, thread_entry, record);
    pthread_attr_destroy(&attributes);
    if (rc != 0) {
        delete record;
        zorn_client_debug_event("Error in zorn_thread_create(), thread create failed?", zorn_cat_severe);
        return false;
    }
    return true;
}

zorn_thread_blocker::zorn_thread_blocker() {
    pthread_mutex_init(&mutex, nullptr);
    pthread_cond_init(&condition, nullptr);
}

zorn_thread_blocker::~zorn_thread_blocker() {
    if (counter != 0) {
        // A thread may still be about to take the wake: leave the primitives alive rather than pull them away.
        zorn_client_debug_event("Error in ~zorn_thread_blocker(), unblock counter was nonzero on destruct?",
                                zorn_cat_warning);
        return;
    }
    pthread_cond_destroy(&condition);
    pthread_mutex_destroy(&mutex);
}

void zorn_thread_blocker::wake() {
    pthread_mutex_lock(&mutex);
    pthread_cond_signal(&condition);
    ++counter;
    pthread_mutex_unlock(&mutex);
}

void zorn_thread_blocker::wait() {
    pthread_mutex_lock(&mutex);
    while (counter < 1) pthread_cond_wait(&condition, &mutex);
    --counter;
    pthread_mutex_unlock(&mutex);
}

int zorn_sleep_ms(int milliseconds) {
    timespec span;
    span.tv_sec = milliseconds / 1000;
    span.tv_nsec = static_cast<long>(milliseconds % 1000) * 1000000L;
    return nanosleep(&span, nullptr);
}

int64_t zorn_gettimeofday_seconds() {
    timeval now;
    if (gettimeofday(&now, nullptr) != 0) {
        zorn_client_debug_event("Error in zorn_gettimeofday_seconds(), syscall failed.", zorn_cat_error);
        return 0;
    }
    return now.tv_sec;
}

int64_t zorn_gettimeofday_useconds() {
    timeval now;
    if (gettimeofday(&now, nullptr) != 0) {
        zorn_client_debug_event("Error in zorn_gettimeofday_useconds(), syscall failed.", zorn_cat_error);
        return 0;
    }
    return static_cast<int64_t>(now.tv_sec) * 1000000 + now.tv_usec;
}
