// Feeds arbitrary server bytes through the stream parser to what the channel tabs and popup windows
// keep without their widgets: chdiv and chudiv move the channel records, text lights them,
// window_create payloads are parsed, and the first byte of each text run clicks, pages or clears.
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "app/stream_parser.h"
#include "config/debug_log.h"
#include "panels/channel_list.h"
#include "panels/popup_payload.h"

namespace {

const bool log_to_null = [] {
    zorn_client_set_debug_logfile_name("/dev/null");
    zorn_debug_level = 3;
    return true;
}();

bool listed(const zorn_channel_list& list, const zorn_channel_record* record) {
    if (!record) return true;
    for (const auto& r : list.records())
        if (r.get() == record) return true;
    return false;
}

void check(const zorn_channel_list& list) {
    const auto& records = list.records();
    for (size_t i = 0; i < records.size(); ++i) {
        if (std::strlen(records[i]->name) >= zorn_channel_name_size) __builtin_trap();
        if (i > 0 && std::strcmp(records[i - 1]->name, records[i]->name) >= 0) __builtin_trap();
    }
    if (!listed(list, list.current_channel) || !listed(list, list.divert_channel) ||
        !listed(list, list.all_channel) || !listed(list, list.other_page_channel))
        __builtin_trap();
}

class panel_sink : public zorn_stream_sink {
public:
    void text_run(const char* bytes, int length) override {
        channels.text_arrived();
        const auto& records = channels.records();
        switch (static_cast<unsigned char>(bytes[0]) % 8) {
            case 0: channels.flip_page(); break;
            case 1: channels.move_to_other_page(channels.current_channel); break;
            case 2:
                if (!records.empty()) channels.select(records[static_cast<size_t>(length) % records.size()].get());
                break;
            case 3: channels.clear_all(); break;
            default: break;
        }
        channels.settle();
        check(channels);
    }
    void tagged_data(const char* name, const char* payload, int) override {
        if (std::strcmp(name, "chdiv") == 0) {
            channels.set_divert_channel(payload);
        } else if (std::strcmp(name, "chudiv") == 0) {
            channels.clear_divert_channel();
        } else if (std::strcmp(name, "window_create") == 0) {
            zorn_popup_description window;
            const char* error = nullptr;
            if (zorn_parse_window_create(payload, &window, &error)) {
                if (window.command.size() > zorn_popup_command_limit) __builtin_trap();
            } else if (!error) {
                __builtin_trap();
            }
        }
        check(channels);
    }

    zorn_channel_list channels;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size == 0) return 0;
    const size_t block = 1 + data[0] % 64;
    panel_sink sink;
    zorn_stream_parser parser(sink);
    for (size_t at = 1; at < size; at += block) {
        const size_t n = size - at < block ? size - at : block;
        parser.feed(data + at, static_cast<int>(n));
    }
    return 0;
}
