#pragma once
// Thin layer over POSIX threads and the clock.

#include <pthread.h>

#include <cstdint>

// Starts a detached thread; the name is for the reader only.
bool zorn_thread_create(const char* name, void (*function)(void*), void* argument);

// A counting semaphore: a wake before the wait is not lost, and each wake is taken once.
class zorn_thread_blocker {
public:
    zorn_thread_blocker();
    ~zorn_thread_blocker();
    zorn_thread_blocker(const zorn_thread_blocker&) = delete;
    zorn_thread_blocker& operator=(const zorn_thread_blocker&) = delete;

    void wake();
    void wait();

private:
    pthread_mutex_t mutex;
    pthread_cond_t condition;
    int counter = 0;
};

int zorn_sleep_ms(int milliseconds);
int64_t zorn_gettimeofday_seconds();
int64_t zorn_gettimeofday_useconds();
