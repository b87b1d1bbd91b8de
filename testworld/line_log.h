#pragma once
// The file of every line the world received, in arrival order, so tests can assert what a client
// sent. Lines are written raw, each followed by a line feed, and flushed at once. Shared by all
// connection threads.

#include <cstdio>
#include <mutex>
#include <string>

namespace testworld {

class line_log {
public:
    line_log() = default;
    ~line_log();
    line_log(const line_log&) = delete;
    line_log& operator=(const line_log&) = delete;

    // Appends to the file; false when it can't be opened. Without open() nothing is written.
    bool open(const std::string& path);
    void append(const std::string& line);

private:
    std::mutex mutex;
    FILE* file = nullptr;
};

}  // namespace testworld
