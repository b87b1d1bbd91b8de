// The "group" block as the server may send it: parsed, then measured, placed and painted at a
// width and text height taken from the input. Whatever the bytes, the parse ends with what it
// read and every drawing step names a member that exists.

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string>

#include "config/debug_log.h"
#include "panels/group_model.h"

namespace {

const bool log_to_null = [] {
    zorn_client_set_debug_logfile_name("/dev/null");
    zorn_debug_level = 3;
    return true;
}();

void measure(const char* text, int* width, int* height) {
    *width = 7 * static_cast<int>(std::strlen(text));
    *height = 14;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 2) return 0;
    const int width = data[0] - 20;
    const int text_height = data[1] % 40 - 4;
    // Tag payloads are NUL-ended and at most 14999 bytes.
    std::string payload(reinterpret_cast<const char*>(data) + 2, std::min<size_t>(size - 2, 14999));
    payload = payload.substr(0, payload.find('\0'));

    const std::vector<zorn_group_member> members = parse_group_lines(payload.c_str());
    size_t lines = 1;
    for (char c : payload) lines += c == '\n';
    if (members.size() > lines) __builtin_trap();
    const group_metrics metrics = group_metrics_for(text_height);
    const int height = group_required_height(members, metrics);
    if (height < 1) __builtin_trap();
    const group_places places = group_row_places(members, metrics);
    if (places.rows.size() != members.size()) __builtin_trap();
    for (int y = -2; y < height + 2; y += 3) {
        const int row = group_row_at(members, metrics, y);
        if (row < -1 || row >= static_cast<int>(members.size())) __builtin_trap();
    }
    for (int mode = 1; mode <= 2; ++mode) {
        for (int flags = 0; flags < 4; ++flags) {
            group_paint_settings s;
            s.mode = mode;
            s.vertical = flags & 1;
            s.inverted = flags & 2;
            for (const group_op& op : group_paint(members, metrics, s, width, height, measure))
                if (op.kind == group_op::text && (op.member < 0 || op.member >= static_cast<int>(members.size())))
                    __builtin_trap();
        }
    }
    return 0;
}
