#pragma once
// Finding text in a display's scrollback, free of any window. The search runs over the model's
// raw stream, not over display lines, so a hit that a wrap cut in two is one hit; a hit maps back
// to display lines through the line table when it is shown or jumped to. Case is ignored (the
// stream holds 7-bit text only). Hits don't overlap: the scan goes on behind each hit.
//
// Text keeps arriving while the player searches, so update() scans only what came since the last
// call; hits are numbered from the oldest, which keeps a hit's number stable while new ones are
// added behind it. When the stream was emptied (clear, re-render) everything is scanned anew.

#include <cstdint>
#include <string>
#include <vector>

class zorn_textctrl_model;

class zorn_text_search {
public:
    // Display lines and offsets of one hit: [first_offset on first_line, last_offset on
    // last_line], both ends inside the hit.
    struct place {
        int first_line = 0;
        int first_offset = 0;
        int last_line = 0;
        int last_offset = 0;
    };

    // A new query; hits are found by the next update(). Bytes outside 7-bit text can't match.
    void set_query(const std::string& text);
    const std::string& query() const { return needle; }
    bool active() const { return !needle.empty(); }

    // Brings the hits up to date with the model; answers whether they changed.
    bool update(const zorn_textctrl_model& model);

    size_t count() const { return hits.size(); }
    uint64_t hit_start(size_t index) const { return hits[index]; }
    size_t length() const { return needle.size(); }

    // The current hit, -1 for none.
    long current() const { return current_index; }
    void select_newest() { current_index = hits.empty() ? -1 : static_cast<long>(hits.size()) - 1; }
    // One hit back towards the oldest, or forward towards the newest; both wrap round. False when
    // there is no hit.
    bool step_older();
    bool step_newer();
    // "3 of 17", counting from the oldest hit; "0 of 0" when none.
    std::string count_text() const;

    place place_of(const zorn_textctrl_model& model, size_t index) const;

    // Calls fn(from, to, current) with the line offsets [from, to) of each hit that overlaps the
    // stream range [from, to) of a display line starting at line_start.
    template <typename F>
    void for_each_hit_in(uint64_t line_start, uint64_t line_end, F&& fn) const;

private:
    size_t first_hit_ending_after(uint64_t offset) const;

    std::string needle;  // lower case
    std::vector<uint64_t> hits;
    uint64_t next_start = 0;  // the first start not yet tried
    uint64_t generation = 0;
    bool scanned_once = false;
    long current_index = -1;
};

template <typename F>
void zorn_text_search::for_each_hit_in(uint64_t line_start, uint64_t line_end, F&& fn) const {
    if (needle.empty()) return;
    const uint64_t n = needle.size();
    for (size_t i = first_hit_ending_after(line_start); i < hits.size() && hits[i] < line_end; ++i) {
        const uint64_t from = hits[i] > line_start ? hits[i] : line_start;
        const uint64_t to = hits[i] + n < line_end ? hits[i] + n : line_end;
        fn(static_cast<int>(from - line_start), static_cast<int>(to - line_start), static_cast<long>(i) == current_index);
    }
}
