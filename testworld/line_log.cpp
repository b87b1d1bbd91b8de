#include "testworld/line_log.h"

namespace testworld {

line_log::~line_log() {
    if (file) std::fclose(file);
}

bool line_log::open(const std::string& path) {
    std::lock_guard<std::mutex> lock(mutex);
    if (file) std::fclose(file);
    file = std::fopen(path.c_str(), "ab");
    return file != nullptr;
}

void line_log::append(const std::string& line) {
    std::lock_guard<std::mutex> lock(mutex);
    if (!file) return;
    std::fwrite(line.data(), 1, line.size(), file);
    std::fputc('\n', file);
    std::fflush(file);
}

}  // namespace testworld
