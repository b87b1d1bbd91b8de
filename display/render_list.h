#pragma once
// The render list: a display's own complete history, from which its text control can be built
// again at any time and from which logs are exported. One record per stretch of one colour and
// attribute; the text of all records is one byte stream in pages, and a record is a start offset
// with its colour in one word plus its attribute and colour code in two bytes. Text that has
// not become a record yet (pending_text) is the tail of the stream behind the last record.

#include <cstdint>
#include <string>

#include "display/text_storage.h"

// One record as read back.
struct zorn_render_list {
    std::string text;  // one colour, line feeds included
    int red = 0;
    int green = 0;
    int blue = 0;
    int attributes = 0;  // ansi_attributes value
    int color = 0;       // colour code in parser form
};

// What one record costs in the list: its start and colour word and its attribute bytes.
constexpr int zorn_render_record_bytes = sizeof(uint64_t) + sizeof(uint16_t);

zorn_bulk_pool* zorn_render_list_pool();

class zorn_render_store {
public:
    zorn_render_store() : stream(zorn_render_list_pool()) {}

    void append_pending(const char* text, size_t length) { stream.append(text, length); }
    bool pending_empty() const { return stream.size() == pending_start; }
    uint64_t pending_size() const { return stream.size() - pending_start; }
    // Makes a record of the pending text with these attributes; the pending text becomes empty.
    void commit(uint32_t rgb, int attributes, int color);

    size_t count() const { return starts.size(); }
    // Record i; without with_text only its colour and attributes are filled in.
    void record(size_t i, zorn_render_list* out, bool with_text = true) const;
    // Copies at most limit bytes of record i's text to out and answers how many.
    size_t record_text(size_t i, char* out, size_t limit) const;
    uint64_t record_length(size_t i) const { return record_end(i) - (starts[i] >> 24); }
    std::string pending_text() const;

    void clear();
    size_t memory_bytes() const;

private:
    uint64_t record_end(size_t i) const { return i + 1 < starts.size() ? starts[i + 1] >> 24 : pending_start; }

    zorn_text_pages stream;
    zorn_segmented_array<uint64_t> starts;  // start offset << 24 | 0xRRGGBB
    zorn_segmented_array<uint16_t> styles;  // attributes << 8 | colour code
    uint64_t pending_start = 0;
};
