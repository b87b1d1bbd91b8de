// The screen reader's line cutter, speech queue and mirror buffer on arbitrary server bytes. The
// first byte picks the block size; a block starting with 0x01 switches the channel to its next
// bytes, one starting with 0x02 ends a tick. Lines must come out plain and bounded, the queue
// bounded, and the mirror's updates must rebuild exactly the buffer's text.

#include <cstdint>
#include <string>

#include "display/reader_core.h"

namespace {

struct idle_output : zorn_speech_output {
    size_t said = 0;
    void speak(const std::string& text) override { said += text.size(); }
    void silence() override {}
    int pending() const override { return static_cast<int>(said % 3 == 0); }
};

struct checking_sink : zorn_line_sink {
    zorn_speech_queue* queue = nullptr;
    zorn_mirror_buffer* mirror = nullptr;
    void line(const std::string& text, bool continues) override {
        if (text.size() > zorn_reader_lines::max_line_bytes + zorn_reader_lines::max_channel_bytes + 2) __builtin_trap();
        for (unsigned char c : text)
            if (c < 32 || c >= 127) __builtin_trap();
        mirror->add(text, continues);
        queue->add(text);
    }
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 1) return 0;
    const size_t block = 1 + data[0] % 97;
    ++data;
    --size;
    auto output = std::make_unique<idle_output>();
    zorn_speech_queue queue(std::move(output));
    zorn_mirror_buffer mirror;
    checking_sink sink;
    sink.queue = &queue;
    sink.mirror = &mirror;
    zorn_reader_lines lines(sink);
    std::string control;
    for (size_t at = 0; at < size; at += block) {
        const size_t n = size - at < block ? size - at : block;
        const char* bytes = reinterpret_cast<const char*>(data) + at;
        if (bytes[0] == 1) {
            lines.set_channel(std::string(bytes + 1, n - 1).c_str());
        } else if (bytes[0] == 2) {
            lines.flush();
            queue.pump();
            const zorn_mirror_buffer::update u = mirror.take_update();
            if (u.replace) control = u.append;
            else control = control.substr(u.remove_front < control.size() ? u.remove_front : control.size()) + u.append;
            if (control != mirror.text()) __builtin_trap();
        } else {
            lines.feed(bytes, static_cast<int>(n));
        }
        if (queue.waiting() > zorn_speech_queue::max_waiting_lines) __builtin_trap();
        if (mirror.line_count() > zorn_mirror_buffer::max_lines) __builtin_trap();
    }
    return 0;
}
