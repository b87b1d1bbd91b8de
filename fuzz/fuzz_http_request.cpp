// The HTTP processor as a server on arbitrary request bytes, cookies included. The first byte
// picks a cookie prefix, chunked answers and the read size. Every head is answered with a small
// body; the output is drained after each read as a server would. Received cookies must fit
// their fields, and results must stay within 1, 0, -1.

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

int on_head(zorn_http_data_processor_oline* p, void*) {
    for (const zorn_http_cookie* c = p->received_cookies().first(); c; c = c->next) {
        if (std::strlen(c->key) > 63 || std::strlen(c->value) > 255 || c->domain[0]) __builtin_trap();
    }
    p->add_cookie("seen", p->get_path(), p->get_host(), 60, p->get_status_code() & 1);
    return 1;
}
int on_complete(zorn_http_data_processor_oline* p, void*) {
    // An answer refused by the busy check is fine; a crash is not.
    p->send_response(200, zorn_http_content_text_plain, 5, "OK");
    return 1;
}
int on_data(zorn_http_data_processor_oline*, void*, const char* data, int count) {
    if (count < 1 || !data) __builtin_trap();
    return 1;
}
int on_tx(zorn_http_data_processor_oline*, void*, char* buffer, int capacity) {
    if (capacity < 1) __builtin_trap();
    buffer[0] = 'x';
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
    const int read_size = 1 + (options >> 2) * 5;

    zorn_http_data_processor_oline processor;
    processor.callback_message_received = on_head;
    processor.callback_message_complete = on_complete;
    processor.callback_content_data_received = on_data;
    processor.callback_content_body_get_tx_data = on_tx;
    processor.callback_close_connection = on_close;
    if (options & 1) processor.set_cookie_prefix("zz_");
    processor.allow_chunked = (options >> 1) & 1;

    char out[700];
    for (int at = 0; at < length; at += read_size) {
        const int count = length - at < read_size ? length - at : read_size;
        const int result = processor.process_received_data(bytes + at, count);
        if (result < -1 || result > 1) __builtin_trap();
        for (int got; (got = processor.get_data_to_send(out, sizeof out)) > 0;) {
            if (got > static_cast<int>(sizeof out)) __builtin_trap();
        }
        if (result != 1) break;
    }
    return 0;
}
