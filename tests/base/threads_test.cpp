#include "base/threads.h"

#include <gtest/gtest.h>

#include <atomic>

TEST(ThreadBlocker, WakesBeforeWaitsAreNotLostAndEachIsTakenOnce) {
    zorn_thread_blocker blocker;
    blocker.wake();
    blocker.wake();
    blocker.wait();  // both return at once: the wakes were counted
    blocker.wait();
}

TEST(Threads, DetachedThreadRunsAndWakesTheCaller) {
    struct shared {
        zorn_thread_blocker done;
        std::atomic<int> value{0};
    } s;
    ASSERT_TRUE(zorn_thread_create(
        "test",
        [](void* raw) {
            auto* p = static_cast<shared*>(raw);
            p->value = 7;
            p->done.wake();
        },
        &s));
    s.done.wait();
    EXPECT_EQ(s.value.load(), 7);
}

TEST(Clock, SleepAndTimeAgree) {
    const int64_t start = zorn_gettimeofday_useconds();
    EXPECT_EQ(zorn_sleep_ms(30), 0);
    const int64_t elapsed = zorn_gettimeofday_useconds() - start;
    EXPECT_GE(elapsed, 30000);
    const int64_t seconds = zorn_gettimeofday_seconds();
    EXPECT_LE(seconds - zorn_gettimeofday_useconds() / 1000000, 1);
}
