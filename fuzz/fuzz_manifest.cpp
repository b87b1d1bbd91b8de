// The server's manifest as it arrives. The first byte picks the piece size the rest is cut into,
// whether the rest is fed as it is (mostly a broken compressed stream) or first gzip-compressed
// (so the line syntax sees arbitrary text), and whether the length is known. The result must be a
// list whose count matches, or a failure, never a crash or a leak.

#include <zlib.h>

#include <cstdint>
#include <string>

#include "config/debug_log.h"
#include "net/file_manifest.h"

namespace {

const bool log_to_null = [] {
    zorn_client_set_debug_logfile_name("/dev/null");
    zorn_debug_level = 3;
    return true;
}();

std::string gzip_of(const uint8_t* data, size_t size) {
    z_stream stream{};
    deflateInit2(&stream, 1, Z_DEFLATED, 31, 8, Z_DEFAULT_STRATEGY);
    std::string out(deflateBound(&stream, size) + 64, '\0');
    stream.next_in = const_cast<Bytef*>(data);
    stream.avail_in = static_cast<uInt>(size);
    stream.next_out = reinterpret_cast<Bytef*>(&out[0]);
    stream.avail_out = static_cast<uInt>(out.size());
    deflate(&stream, Z_FINISH);
    out.resize(stream.total_out);
    deflateEnd(&stream);
    return out;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    (void)log_to_null;
    if (size < 1) return 0;
    const int options = data[0];
    const std::string bytes = (options & 1) ? gzip_of(data + 1, size - 1)
                                            : std::string(reinterpret_cast<const char*>(data + 1), size - 1);
    const bool length_known = (options & 2) != 0;
    const size_t piece = 1 + static_cast<size_t>(options >> 2) * 37;

    static http_fetch_remote_manifest_data fetch;  // 70 KB: kept off the stack
    if (!fetch.begin()) __builtin_trap();
    bool going = true;
    for (size_t at = 0; going && at < bytes.size(); at += piece) {
        const size_t count = bytes.size() - at < piece ? bytes.size() - at : piece;
        going = fetch.data(bytes.data() + at, static_cast<int>(count)) != 0;
        fetch.received(static_cast<int>(at + count), length_known ? static_cast<int>(bytes.size()) : -1);
    }
    const bool whole = fetch.finish() && going;
    const int counted = fetch.entry_count();
    kvu_manifest_entry* list = fetch.take_entries();
    int found = 0;
    for (kvu_manifest_entry* entry = list; entry; entry = entry->next) {
        if (entry->hash.size() < 10 || entry->name.empty()) __builtin_trap();
        ++found;
    }
    if (found != counted || (!whole && found != 0)) __builtin_trap();
    kvu_free_manifest_entries(list);
    return 0;
}
