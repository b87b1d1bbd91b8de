#pragma once
// Storage under the scrollback: bytes in fixed pages taken from a shared bulk pool, and
// append-only arrays that grow by whole segments. Neither ever moves what it holds, so a growth
// step costs one allocation and no copy, and the peak memory is the content plus one segment.
//
// Scrollback has no limit, so every byte kept here is paid for for the rest of the session: the
// text is kept once per layer as plain bytes, and the records that describe it are packed into
// 64-bit words (see text_model.h).
//
// Allocation failure: the pages come from zorn_bulk_pool, which exits with its own message when
// not even one page can be had; a failed segment allocation does the same here.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "base/containers.h"

// Ends the program with a log line; storage below the display has no way to go on without memory.
[[noreturn]] void zorn_text_storage_out_of_memory(const char* what);

// Bytes in pages of page_size. Offsets are global: byte n lives in page n / page_size.
class zorn_text_pages {
public:
    static constexpr int page_bits = 14;
    static constexpr size_t page_size = size_t{1} << page_bits;  // 16 KB: 16 pages per pool block
    static constexpr size_t page_mask = page_size - 1;

    explicit zorn_text_pages(zorn_bulk_pool* pool) : pool(pool) {}
    ~zorn_text_pages() { clear(); }
    zorn_text_pages(const zorn_text_pages&) = delete;
    zorn_text_pages& operator=(const zorn_text_pages&) = delete;

    uint64_t size() const { return length; }
    char at(uint64_t offset) const { return pages[offset >> page_bits][offset & page_mask]; }

    void append(const char* data, size_t count) {
        while (count > 0) {
            const size_t used = length & page_mask;
            if (used == 0 && (length >> page_bits) == pages.size()) pages.push_back(static_cast<char*>(pool->get()));
            size_t room = page_size - used;
            const size_t n = count < room ? count : room;
            std::memcpy(pages[length >> page_bits] + used, data, n);
            data += n;
            count -= n;
            length += n;
        }
    }

    // Calls fn(pointer, count) for each contiguous piece of [from, to), in order. fn answers
    // false to stop early; the call then answers false too.
    template <typename F>
    bool for_each_span(uint64_t from, uint64_t to, F&& fn) const {
        while (from < to) {
            const size_t in_page = from & page_mask;
            size_t n = page_size - in_page;
            if (to - from < n) n = static_cast<size_t>(to - from);
            if (!fn(pages[from >> page_bits] + in_page, n)) return false;
            from += n;
        }
        return true;
    }

    // Copies [from, to) to out; out must hold to - from bytes.
    void copy(uint64_t from, uint64_t to, char* out) const {
        for_each_span(from, to, [&](const char* p, size_t n) {
            std::memcpy(out, p, n);
            out += n;
            return true;
        });
    }

    // All pages go back to the pool.
    void clear() {
        for (char* page : pages) pool->put(page);
        pages.clear();
        pages.shrink_to_fit();
        length = 0;
    }

    size_t page_count() const { return pages.size(); }

private:
    zorn_bulk_pool* pool;
    std::vector<char*> pages;
    uint64_t length = 0;
};

// An append-only array in segments of 2^segment_bits elements. clear() keeps the segments, so
// a refill after a re-wrap allocates nothing. Segments are plain malloc blocks: pages of a
// segment that were never written cost no resident memory.
template <typename T, int segment_bits = 16>
class zorn_segmented_array {
public:
    static constexpr size_t segment_size = size_t{1} << segment_bits;
    static constexpr size_t segment_mask = segment_size - 1;

    zorn_segmented_array() = default;
    ~zorn_segmented_array() { release(); }
    zorn_segmented_array(const zorn_segmented_array&) = delete;
    zorn_segmented_array& operator=(const zorn_segmented_array&) = delete;

    T& operator[](size_t i) { return segments[i >> segment_bits][i & segment_mask]; }
    const T& operator[](size_t i) const { return segments[i >> segment_bits][i & segment_mask]; }
    T& back() { return (*this)[count - 1]; }
    const T& back() const { return (*this)[count - 1]; }
    size_t size() const { return count; }
    bool empty() const { return count == 0; }
    size_t capacity() const { return segments.size() << segment_bits; }

    void push_back(const T& value) {
        if (count == capacity()) {
            void* block = std::malloc(sizeof(T) * segment_size);
            if (!block) zorn_text_storage_out_of_memory("zorn_segmented_array");
            segments.push_back(static_cast<T*>(block));
        }
        (*this)[count++] = value;
    }
    void pop_back() { --count; }
    void clear() { count = 0; }
    void release() {
        for (T* segment : segments) std::free(segment);
        segments.clear();
        segments.shrink_to_fit();
        count = 0;
    }

    // Index of the last element whose key is at or below value, or -1; elements must be sorted
    // by key.
    template <typename Key>
    long long last_at_or_below(uint64_t value, Key&& key) const {
        long long low = 0;
        long long high = static_cast<long long>(count) - 1;
        long long found = -1;
        while (low <= high) {
            const long long mid = low + (high - low) / 2;
            if (key((*this)[static_cast<size_t>(mid)]) <= value) {
                found = mid;
                low = mid + 1;
            } else {
                high = mid - 1;
            }
        }
        return found;
    }

private:
    std::vector<T*> segments;
    size_t count = 0;
};
