// The settings readers on arbitrary bytes: the header check, the system file and character
// file loaders, the raw reader operations, and a write/read round trip of what was loaded.

#include <cstdint>
#include <cstring>
#include <string>

#include "base/fixed_string.h"
#include "config/char_config.h"
#include "config/debug_log.h"
#include "config/lconfig.h"
#include "config/xml.h"

namespace {

bool printable(const std::string& text) {
    for (unsigned char c : text) {
        if (c < 32 || c > 126) return false;
    }
    return true;
}

bool round_trip_applies(const char_config& record) {
    if (!printable(record.name) || !printable(record.font) || !printable(record.button_font)) return false;
    for (const popup_window_config& popup : record.popup_window_list) {
        if (!printable(popup.name)) return false;
    }
    return true;
}

// A record the client writes must read back the same.
void check_round_trip(const char_config& record) {
    if (!round_trip_applies(record)) return;
    zorn_xml_string_writer writer;
    write_char_config(writer, record);
    zorn_xml_memory_reader reader(writer.text().data(), writer.text().size());
    char tag[zorn_xml_tag_size];
    if (!reader.read_tag(tag, sizeof tag)) __builtin_trap();
    char_config copy;
    read_char_config_fields(reader, &copy);
    validate(&copy);
    if (!char_config_file_equal(record, copy)) __builtin_trap();
}

void exercise_reader(const char* text, size_t size) {
    zorn_xml_memory_reader reader(text, size);
    char tag[64];
    unsigned char bytes[40];
    for (int step = 0; !reader.at_end() && step < 10000; ++step) {
        if (!reader.read_tag(tag, sizeof tag)) continue;
        switch (tag[0] % 4) {
            case 0: reader.read_cdata(bytes, sizeof bytes); break;
            case 1: {
                int value = 0;
                reader.read_data(&value);
                break;
            }
            case 2: reader.read_data(tag, sizeof tag); break;
            default: reader.skip_data(); break;
        }
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const bool quiet = [] {
        zorn_debug_level = 0;
        zorn_client_debug_events_off();
        return true;
    }();
    (void)quiet;
    const char* text = reinterpret_cast<const char*>(data);
    if (!text) text = "";

    const char* line_end = static_cast<const char*>(std::memchr(text, '\n', size));
    const std::string first_line(text, line_end ? static_cast<size_t>(line_end - text) : size);
    zorn_xml_reader::check_xml_header_string(first_line.c_str());

    {
        LConfig config;
        zorn_xml_memory_reader reader(text, size);
        zorn_fixed_string curr_config;
        config.load_system_config_stream(reader, &curr_config);
        for (const auto& record : config.records()) check_round_trip(*record);
    }
    {
        zorn_xml_memory_reader reader(text, size);
        char tag[zorn_xml_tag_size];
        while (!reader.at_end()) {
            if (!reader.read_tag(tag, sizeof tag)) continue;
            char_config record;
            read_char_config_fields(reader, &record);
            validate(&record);
            check_round_trip(record);
        }
    }
    exercise_reader(text, size);
    return 0;
}
