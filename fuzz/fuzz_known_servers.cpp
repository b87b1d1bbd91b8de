// The server pin file on arbitrary bytes: parsing, and a write/read round trip of what was read.

#include <cstdint>
#include <string>

#include "config/debug_log.h"
#include "config/known_servers.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const bool quiet = [] {
        zorn_debug_level = 0;
        zorn_client_debug_events_off();
        return true;
    }();
    (void)quiet;
    zorn_known_servers known;
    const char* text = reinterpret_cast<const char*>(data);
    if (!known.parse(text ? text : "", size)) return 0;
    // A file that read whole must be written back so that it reads the same.
    const std::string written = known.text();
    zorn_known_servers copy;
    if (!copy.parse(written.data(), written.size()) || copy.entries().size() != known.entries().size()) __builtin_trap();
    for (size_t i = 0; i < known.entries().size(); ++i) {
        const auto& a = known.entries()[i];
        const auto& b = copy.entries()[i];
        if (a.host != b.host || a.port != b.port || a.fingerprint != b.fingerprint) __builtin_trap();
    }
    return 0;
}
