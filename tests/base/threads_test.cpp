#include "base/threads.h"

#include <gtest/gtest.h>

#include <atomic>

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

    // Wakes before the waits are counted, not lost: both waits return at once.
    s.done.wake();
    s.done.wake();
    s.done.wait();
    s.done.wait();
}

TEST(Clock, SleepAndTimeAgree) {
    const int64_t start = zorn_gettimeofday_useconds();
    EXPECT_EQ(zorn_sleep_ms(30), 0);
    EXPECT_GE(zorn_gettimeofday_useconds() - start, 30000);
    EXPECT_LE(zorn_gettimeofday_seconds() - zorn_gettimeofday_useconds() / 1000000, 1);
}
