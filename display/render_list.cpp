#include "display/render_list.h"

#include <algorithm>

zorn_bulk_pool* zorn_render_list_pool() {
    static zorn_bulk_pool pool(zorn_text_pages::page_size, "class zorn_render_list", 0x40000);
    return &pool;
}

void zorn_render_store::commit(uint32_t rgb, int attributes, int color) {
    starts.push_back((pending_start << 24) | (rgb & 0xffffff));
    styles.push_back(static_cast<uint16_t>(((attributes & 0xff) << 8) | (color & 0xff)));
    pending_start = stream.size();
}

void zorn_render_store::record(size_t i, zorn_render_list* out, bool with_text) const {
    const uint64_t word = starts[i];
    out->red = static_cast<int>((word >> 16) & 0xff);
    out->green = static_cast<int>((word >> 8) & 0xff);
    out->blue = static_cast<int>(word & 0xff);
    out->attributes = styles[i] >> 8;
    out->color = styles[i] & 0xff;
    if (!with_text) return;
    const uint64_t from = word >> 24, to = record_end(i);
    out->text.resize(static_cast<size_t>(to - from));
    if (to > from) stream.copy(from, to, &out->text[0]);
}

size_t zorn_render_store::record_text(size_t i, char* out, size_t limit) const {
    const uint64_t from = starts[i] >> 24;
    const uint64_t to = std::min<uint64_t>(record_end(i), from + limit);
    if (to > from) stream.copy(from, to, out);
    return static_cast<size_t>(to - from);
}

std::string zorn_render_store::pending_text() const {
    std::string out(static_cast<size_t>(pending_size()), '\0');
    if (!out.empty()) stream.copy(pending_start, stream.size(), &out[0]);
    return out;
}

void zorn_render_store::clear() {
    stream.clear();
    starts.release();
    styles.release();
    pending_start = 0;
}

size_t zorn_render_store::memory_bytes() const {
    return stream.page_count() * zorn_text_pages::page_size + starts.capacity() * sizeof(uint64_t) +
           styles.capacity() * sizeof(uint16_t);
}
