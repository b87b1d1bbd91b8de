// Feeds arbitrary server bytes to the stream parser, cut into blocks by the first byte.
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "app/stream_parser.h"
#include "config/debug_log.h"

namespace {

// The warnings that bad input raises are part of what runs, at full chat, but they go nowhere.
const bool log_to_null = [] {
    zorn_client_set_debug_logfile_name("/dev/null");
    zorn_debug_level = 3;
    return true;
}();

class checking_sink : public zorn_stream_sink {
public:
    void text_run(const char* bytes, int length) override {
        if (length <= 0 || length > zorn_stream_parser::text_run_limit) __builtin_trap();
        volatile char sum = 0;
        for (int i = 0; i < length; ++i) sum = static_cast<char>(sum + bytes[i]);
    }
    void tagged_data(const char* name, const char* payload, int length) override {
        if (std::strlen(name) > 63 || length < 0 || length > 14999 || std::strlen(payload) > static_cast<size_t>(length))
            __builtin_trap();
    }
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size == 0) return 0;
    const size_t block = 1 + data[0] % 64;
    checking_sink sink;
    zorn_stream_parser parser(sink);
    for (size_t at = 1; at < size; at += block) {
        const size_t n = size - at < block ? size - at : block;
        parser.feed(data + at, static_cast<int>(n));
    }
    return 0;
}
