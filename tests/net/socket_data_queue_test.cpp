// zorn_socket_data_queue: growth by whole buffers, the limit and its overflow flag, the reads that
// leave an emptied open buffer at the head, the text reads and their limits, the warnings of a
// broken invariant, and two threads sharing the free list.

#include "net/socket_data_queue.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

#include "base/fixed_string.h"
#include "tests/support/log_capture.h"

namespace {

constexpr int full = zorn_socket_data_buffer::data_size;

std::string pattern(int count, int seed = 0) {
    std::string bytes(static_cast<size_t>(count), '\0');
    for (int i = 0; i < count; ++i) bytes[static_cast<size_t>(i)] = static_cast<char>('a' + (i + seed) % 26);
    return bytes;
}

std::string read_all(zorn_socket_data_queue& queue, int block = 1000) {
    std::string out;
    std::vector<char> buffer(static_cast<size_t>(block));
    for (int got; (got = queue.read_block(buffer.data(), block)) > 0;) out.append(buffer.data(), static_cast<size_t>(got));
    return out;
}

TEST(SocketDataQueue, ExactlyOneBufferClosesItAndTheNextByteOpensAnother) {
    zorn_socket_data_queue queue;
    const std::string bytes = pattern(full);
    EXPECT_EQ(queue.add_block(bytes.data(), full), full);
    EXPECT_FALSE(queue.has_write_buffer()) << "a buffer that took its last byte is closed";
    EXPECT_EQ(queue.get_buffer_count(), 1);
    EXPECT_TRUE(queue.add_byte('Z'));
    EXPECT_EQ(queue.get_buffer_count(), 2);
    EXPECT_EQ(queue.get_length(), full + 1);

    std::vector<char> out(full);
    EXPECT_EQ(queue.read_block(out.data(), full), full);
    EXPECT_EQ(std::string(out.data(), full), bytes);
    EXPECT_EQ(queue.get_buffer_count(), 1) << "the first buffer went back to the free list";
    EXPECT_EQ(queue.head_read_index(), 0);
    EXPECT_EQ(queue.head_write_index(), 1);
    EXPECT_EQ(read_all(queue), "Z");
}

TEST(SocketDataQueue, EmptiedOpenBufferStaysAtTheHeadAndWritesGoOnBehindIt) {
    zorn_socket_data_queue queue;
    EXPECT_TRUE(queue.is_empty());
    EXPECT_EQ(queue.add_string("0123456789"), 10);
    char out[32];
    EXPECT_EQ(queue.read_block(out, sizeof out), 10);
    EXPECT_TRUE(queue.is_empty());
    EXPECT_EQ(queue.get_length(), 0);
    EXPECT_EQ(queue.get_buffer_count(), 1);
    EXPECT_EQ(queue.head_read_index(), 10);
    EXPECT_EQ(queue.head_write_index(), 10);
    EXPECT_EQ(queue.add_string("abcde"), 5);
    EXPECT_EQ(queue.read_block(out, sizeof out), 5);
    EXPECT_EQ(std::string(out, 5), "abcde");
    EXPECT_EQ(queue.head_read_index(), 15);
}

TEST(SocketDataQueue, LimitRefusesAndSetsOverflowUntilABufferIsReleased) {
    zorn_socket_data_queue queue(1);
    const std::string bytes = pattern(full + 10);
    EXPECT_EQ(queue.add_block(bytes.data(), full + 10), full) << "byte 4073 is refused";
    EXPECT_TRUE(queue.get_overflow());
    EXPECT_FALSE(queue.add_byte('x'));
    EXPECT_EQ(queue.add_string("more"), 0);
    EXPECT_FALSE(queue.add_buffer());
    EXPECT_EQ(queue.get_remaining_space(), 0);
    EXPECT_EQ(read_all(queue), bytes.substr(0, full)) << "nothing stored was lost";
    EXPECT_FALSE(queue.get_overflow()) << "releasing the buffer lowers the flag";
    EXPECT_TRUE(queue.add_byte('x'));
    EXPECT_EQ(queue.get_remaining_space(), full - 1);
}

TEST(SocketDataQueue, RemainingSpaceCountsReadBytesUntilTheirBufferIsReleased) {
    zorn_socket_data_queue queue(2);
    const std::string bytes = pattern(100);
    queue.add_block(bytes.data(), 100);
    EXPECT_EQ(queue.get_remaining_space(), 8044);
    char out[100];
    EXPECT_EQ(queue.read_block(out, 100), 100);
    EXPECT_EQ(queue.get_remaining_space(), 8044);
    // No limit, and a maximum of 0, which add_byte also reads as no limit.
    for (int maximum : {-1, 0}) {
        zorn_socket_data_queue unlimited(maximum);
        unlimited.add_block(bytes.data(), 100);
        EXPECT_EQ(unlimited.get_remaining_space(), -1);
    }
    zorn_socket_data_queue shrunk(3);
    const std::string more = pattern(3 * full);
    shrunk.add_block(more.data(), 3 * full);
    shrunk.set_maximum_buffers(2);
    log_capture log(2);
    EXPECT_EQ(shrunk.get_remaining_space(), 0);
    EXPECT_EQ(log.text(), "Warning in zorn_socket_data_queue::get_remaining_space(), negative available space?\n");
}

TEST(SocketDataQueue, GetLineEndsAtLineFeedKeepsCarriageReturnAndHandsOutPartLines) {
    struct row {
        std::string input;
        std::vector<std::string> lines;  // what successive get_line calls store
    };
    const row rows[] = {
        {"abc", {"abc"}},
        {"abc\r\n", {"abc\r"}},
        {"a\n\nb\n", {"a", "", "b"}},
        {"one\ntwo", {"one", "two"}},
    };
    for (const row& r : rows) {
        SCOPED_TRACE(r.input);
        zorn_socket_data_queue queue;
        queue.add_string(r.input.c_str());
        for (const std::string& line : r.lines) {
            zorn_fixed_string out("junk");
            EXPECT_EQ(queue.get_line(&out), static_cast<int>(line.size()));
            EXPECT_EQ(out.c_str(), line);
        }
        EXPECT_TRUE(queue.is_empty());
        zorn_fixed_string untouched("keep");
        EXPECT_EQ(queue.get_line(&untouched), 0);
        EXPECT_STREQ(untouched.c_str(), "keep");
    }
}

TEST(SocketDataQueue, LongLinesStopAtTheTextLimitAcrossBuffers) {
    const int limit = zorn_fixed_string::capacity - 1;
    zorn_socket_data_queue queue;
    const std::string line = pattern(limit + 3);
    queue.add_string((line + "\nnext\n").c_str());
    log_capture log(2);
    zorn_fixed_string out;
    EXPECT_EQ(queue.get_line(&out), limit);
    EXPECT_EQ(std::string(out.c_str()), line.substr(0, limit));
    EXPECT_EQ(log.text(), "Warning in zorn_socket_data_queue::get_line(), dest buffer full.\n");
    EXPECT_EQ(queue.get_line(&out), 3) << "the rest of the line stays queued";
    EXPECT_EQ(queue.get_line(&out), 4);
    EXPECT_STREQ(out.c_str(), "next");
}

TEST(SocketDataQueue, CopyTextLeavesTheQueueAsItWas) {
    const int limit = zorn_fixed_string::capacity - 1;
    struct row {
        std::string data;
        bool result;
        std::string text;
        std::string log;
    };
    const std::string big = pattern(limit);
    const row rows[] = {
        {"hello\nworld", true, "hello\nworld", ""},
        {std::string("ab\0cd", 5), false, "ab",
         "Warning in zorn_socket_data_queue::copy_text_without_remove(), bailing on data zero.\n"},
        {big, false, big, "Warning in zorn_socket_data_queue::copy_text_without_remove(), dest buffer full.\n"},
        {big.substr(1), true, big.substr(1), ""},
    };
    for (const row& r : rows) {
        SCOPED_TRACE(r.data.size());
        zorn_socket_data_queue queue;
        queue.add_block(r.data.data(), static_cast<int>(r.data.size()));
        log_capture log(2);
        zorn_fixed_string out;
        EXPECT_EQ(queue.copy_text_without_remove(&out), r.result);
        EXPECT_EQ(std::string(out.c_str()), r.text);
        EXPECT_EQ(log.text(), r.log);
        EXPECT_EQ(queue.get_length(), static_cast<int>(r.data.size()));
    }
    zorn_socket_data_queue empty;
    zorn_fixed_string out("keep");
    EXPECT_TRUE(empty.copy_text_without_remove(&out)) << "no buffers: true";
    empty.add_byte('x');
    char byte;
    empty.read_block(&byte, 1);
    EXPECT_FALSE(empty.copy_text_without_remove(&out)) << "an emptied head: false";
    EXPECT_STREQ(out.c_str(), "keep");
}

// add_buffer can leave a part-filled buffer in the middle of the list, which the reads report.
TEST(SocketDataQueue, BrokenInvariantIsReported) {
    zorn_socket_data_queue queue;
    EXPECT_TRUE(queue.add_buffer());
    EXPECT_TRUE(queue.add_buffer());
    queue.add_string("xy");
    log_capture log(2);
    char out[8];
    zorn_fixed_string line;
    EXPECT_FALSE(queue.is_empty());
    EXPECT_EQ(queue.read_block(out, 8), 0);
    EXPECT_EQ(queue.get_line(&line), 0);
    EXPECT_EQ(queue.get_length(), 0);
    EXPECT_FALSE(queue.copy_text_without_remove(&line));
    EXPECT_EQ(log.text(),
              "Warning in zorn_socket_data_queue::read_block(), top buffer empty in list of other buffers.\n"
              "Warning in zorn_socket_data_queue::get_line(), top buffer empty in list of other buffers.\n"
              "Warning in zorn_socket_data_queue::read_block(), top buffer empty in list of other buffers.\n"
              "Warning in zorn_socket_data_queue::copy_text_without_remove(), top buffer empty in list of other "
              "buffers.\n");

    zorn_socket_data_queue gap;
    gap.add_string("ab");
    gap.add_buffer();
    gap.add_string("cd\n");
    log_capture log2(2);
    EXPECT_EQ(gap.read_block(out, 8), 2) << "reading stops at the end of the part-filled head";
    EXPECT_EQ(log2.text(), "Warning in zorn_socket_data_queue::read_block(), more buffers in list than expected.\n");
    zorn_socket_data_queue gap2;
    gap2.add_string("ab");
    gap2.add_buffer();
    EXPECT_EQ(gap2.get_line(&line), 2);
    EXPECT_NE(log2.text().find("Warning in zorn_socket_data_queue::get_line(), more buffers in list than expected.\n"),
              std::string::npos);
}

TEST(SocketDataQueue, ClearReturnsBuffersAndKeepsTheOverflowFlag) {
    zorn_socket_data_queue queue(1);
    const std::string bytes = pattern(full + 1);
    queue.add_block(bytes.data(), full + 1);
    ASSERT_TRUE(queue.get_overflow());
    const int idle = zorn_socket_data_queue::free_list_size();
    queue.clear();
    EXPECT_EQ(zorn_socket_data_queue::free_list_size(), idle + 1);
    EXPECT_TRUE(queue.get_overflow());
    EXPECT_EQ(queue.get_buffer_count(), 0);
    EXPECT_TRUE(queue.is_empty());
    EXPECT_TRUE(queue.add_byte('a')) << "a recycled buffer starts clean";
    EXPECT_EQ(queue.head_read_index(), 0);
    EXPECT_EQ(queue.head_write_index(), 1);
}

// Steady traffic recycles buffers instead of allocating: after a warm-up the free list neither
// grows nor runs dry.
TEST(SocketDataQueue, SteadyTrafficReusesBuffers) {
    zorn_socket_data_queue queue;
    const std::string bytes = pattern(3 * full);
    queue.add_block(bytes.data(), 3 * full);
    read_all(queue);
    const int idle = zorn_socket_data_queue::free_list_size();
    for (int round = 0; round < 20; ++round) {
        queue.add_block(bytes.data(), 3 * full);
        EXPECT_EQ(read_all(queue, 777), bytes);
    }
    EXPECT_EQ(zorn_socket_data_queue::free_list_size(), idle);
}

// Two threads, each with its own queues, push and pop the shared free list at once (the updater
// and the download worker do this). Run under ThreadSanitizer too (LANTERN_TSAN).
TEST(SocketDataQueue, TwoThreadsShareTheFreeList) {
    auto work = [](int seed, bool* ok) {
        const std::string bytes = pattern(5 * full + 123, seed);
        for (int round = 0; round < 200 && *ok; ++round) {
            zorn_socket_data_queue a;
            zorn_socket_data_queue b;
            a.add_block(bytes.data(), static_cast<int>(bytes.size()));
            b.add_block(bytes.data(), static_cast<int>(bytes.size() / 2));
            *ok = read_all(a, 4096) == bytes && b.get_length() == static_cast<int>(bytes.size() / 2);
        }
    };
    bool ok1 = true;
    bool ok2 = true;
    std::thread first(work, 1, &ok1);
    std::thread second(work, 7, &ok2);
    first.join();
    second.join();
    EXPECT_TRUE(ok1);
    EXPECT_TRUE(ok2);
}

}  // namespace
