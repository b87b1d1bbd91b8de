// The HTTP processor as a client on arbitrary response bytes. The first byte picks the request
// (GET or HEAD, with or without connection_close), whether callback_message_complete is there,
// and the size of the reads the rest is cut into. Results must stay within 1, 0, -1; after a
// failure every further call must fail; body bytes handed on must match the processor's count.

#include <climits>
#include <cstdint>
#include <cstring>

#include "config/debug_log.h"
#include "net/http_processor.h"

namespace {

const bool log_to_null = [] {
    zorn_client_set_debug_logfile_name("/dev/null");
    zorn_debug_level = 3;
    return true;
}();

struct counts {
    long long body = 0;
    int heads = 0;
    int completes = 0;
};

int on_event(zorn_http_data_processor_oline*, void* context) {
    ++static_cast<counts*>(context)->heads;
    return 1;
}
int on_complete(zorn_http_data_processor_oline*, void* context) {
    ++static_cast<counts*>(context)->completes;
    return 1;
}
int on_data(zorn_http_data_processor_oline*, void* context, const char* data, int count) {
    if (count < 1 || !data) __builtin_trap();
    static_cast<counts*>(context)->body += count;
    return 1;
}
int on_close(zorn_http_data_processor_oline*, void*) { return 1; }

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    (void)log_to_null;
    if (size < 1) return 0;
    const int options = data[0];
    const char* bytes = reinterpret_cast<const char*>(data + 1);
    const int length = static_cast<int>(size - 1);
    const int read_size = 1 + (options >> 3) * 7;

    counts seen;
    zorn_http_data_processor_oline processor;
    processor.callback_context = &seen;
    processor.callback_message_received = on_event;
    processor.callback_message_complete = (options & 4) ? nullptr : on_complete;
    processor.callback_content_data_received = on_data;
    processor.callback_close_connection = on_close;
    processor.connection_close = options & 1;
    if (!((options & 2) ? processor.start_http_HEAD("h", "/p") : processor.start_http_GET("h", "/p"))) __builtin_trap();
    char out[512];
    while (processor.get_data_to_send(out, sizeof out) > 0) {
    }

    bool failed = false;
    for (int at = 0; at < length; at += read_size) {
        const int count = length - at < read_size ? length - at : read_size;
        const int result = processor.process_received_data(bytes + at, count);
        if (result < -1 || result > 1) __builtin_trap();
        if (failed && result != -1) __builtin_trap();
        if (result == -1) failed = true;
        if (result == 0) break;
    }
    if (processor.fatal_error && processor.process_received_data("x", 1) != -1) __builtin_trap();
    if (seen.body > INT_MAX || (seen.body < INT_MAX && seen.body < processor.rx_body_received)) __builtin_trap();
    if (seen.completes > seen.heads) __builtin_trap();
    return 0;
}
