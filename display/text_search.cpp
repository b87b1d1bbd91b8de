#include "display/text_search.h"

#include <algorithm>
#include <cstdio>

#include "display/text_model.h"

namespace {

unsigned char lower(unsigned char byte) { return (byte >= 'A' && byte <= 'Z') ? static_cast<unsigned char>(byte + 32) : byte; }

}  // namespace

void zorn_text_search::set_query(const std::string& text) {
    needle.clear();
    for (char c : text) needle.push_back(static_cast<char>(lower(static_cast<unsigned char>(c))));
    hits.clear();
    next_start = 0;
    scanned_once = false;
    current_index = -1;
}

bool zorn_text_search::update(const zorn_textctrl_model& model) {
    if (needle.empty()) return false;
    bool changed = false;
    if (!scanned_once || model.generation() != generation || model.stream_size() < next_start) {
        changed = !hits.empty();
        hits.clear();
        next_start = 0;
        generation = model.generation();
        scanned_once = true;
    }
    const uint64_t size = model.stream_size();
    const uint64_t n = needle.size();
    if (size < n) return changed;
    const uint64_t last_start = size - n;  // the last start a whole hit fits behind
    const unsigned char first = static_cast<unsigned char>(needle[0]);
    const size_t before = hits.size();
    uint64_t start = next_start;
    // One pass over the new bytes looks for the first character; a candidate is checked in place
    // while it lies inside the page, and byte by byte across a page's end.
    while (start <= last_start) {
        uint64_t skip_to = start;
        uint64_t base = start;
        bool found = false;
        model.for_each_stream_span(start, last_start + 1, [&](const char* p, size_t count) {
            for (size_t i = 0; i < count; ++i) {
                if (lower(static_cast<unsigned char>(p[i])) != first) continue;
                const uint64_t at = base + i;
                bool match = true;
                if (i + n <= count) {
                    for (uint64_t k = 1; k < n && match; ++k)
                        match = lower(static_cast<unsigned char>(p[i + k])) == static_cast<unsigned char>(needle[k]);
                } else {
                    for (uint64_t k = 1; k < n && match; ++k)
                        match = lower(static_cast<unsigned char>(model.stream_at(at + k))) ==
                                static_cast<unsigned char>(needle[k]);
                }
                if (match) {
                    hits.push_back(at);
                    skip_to = at + n;
                    found = true;
                    return false;
                }
            }
            base += count;
            return true;
        });
        if (!found) {
            start = last_start + 1;
            break;
        }
        start = skip_to;
    }
    next_start = start;
    if (current_index >= static_cast<long>(hits.size())) select_newest();
    return changed || hits.size() != before;
}

bool zorn_text_search::step_older() {
    if (hits.empty()) return false;
    current_index = current_index <= 0 ? static_cast<long>(hits.size()) - 1 : current_index - 1;
    return true;
}

bool zorn_text_search::step_newer() {
    if (hits.empty()) return false;
    current_index = current_index < 0 || current_index + 1 >= static_cast<long>(hits.size()) ? 0 : current_index + 1;
    return true;
}

std::string zorn_text_search::count_text() const {
    char text[64];
    std::snprintf(text, sizeof text, "%ld of %zu", current_index < 0 ? 0L : current_index + 1, hits.size());
    return text;
}

zorn_text_search::place zorn_text_search::place_of(const zorn_textctrl_model& model, size_t index) const {
    place out;
    if (index >= hits.size() || needle.empty()) return out;
    const uint64_t from = hits[index], last = hits[index] + needle.size() - 1;
    out.first_line = model.line_at_offset(from);
    out.first_offset = static_cast<int>(from - model.line_stream_start(out.first_line));
    out.last_line = model.line_at_offset(last);
    out.last_offset = static_cast<int>(last - model.line_stream_start(out.last_line));
    return out;
}

size_t zorn_text_search::first_hit_ending_after(uint64_t offset) const {
    const uint64_t n = needle.size();
    // Hits are sorted and don't overlap, so their ends are sorted too.
    return static_cast<size_t>(
        std::upper_bound(hits.begin(), hits.end(), offset, [n](uint64_t value, uint64_t hit) { return value < hit + n; }) -
        hits.begin());
}
