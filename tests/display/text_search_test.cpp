// Finding text in the scrollback without a window: hits in the raw stream whatever the wrapping,
// their display lines, the numbering and stepping, and a search kept up to date while text floods
// in, checked against a plain scan of the whole text.
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <random>
#include <string>
#include <vector>

#include "display/ansi_model.h"
#include "display/text_model.h"
#include "display/text_search.h"

namespace {

// Ten pixels a character: a 200-pixel window holds 19 of them on a line.
struct model_10px {
    explicit model_10px(int width = 200, int height = 100) : model(width, height) {
        int widths[256];
        for (int& w : widths) w = 10;
        model.set_metrics(widths, 10);
        model.resize(width, height);
    }
    zorn_textctrl_model model;
};

std::vector<uint64_t> plain_scan(const std::string& text, std::string needle) {
    std::string low = text;
    for (char& c : low) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    for (char& c : needle) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    std::vector<uint64_t> out;
    for (size_t at = low.find(needle); at != std::string::npos; at = low.find(needle, at + needle.size()))
        out.push_back(at);
    return out;
}

std::vector<uint64_t> hits_of(const zorn_text_search& search) {
    std::vector<uint64_t> out;
    for (size_t i = 0; i < search.count(); ++i) out.push_back(search.hit_start(i));
    return out;
}

}  // namespace

TEST(TextSearch, FindsIgnoringCaseAndCountsFromTheOldest) {
    model_10px m;
    m.model.add_text("The Dragon roars.\nA dragon? DRAGONS!\nnothing here\n");
    zorn_text_search search;
    search.set_query("dRaGoN");
    EXPECT_TRUE(search.update(m.model));
    ASSERT_EQ(search.count(), 3u);
    EXPECT_EQ(search.count_text(), "0 of 3");
    search.select_newest();
    EXPECT_EQ(search.count_text(), "3 of 3");
    EXPECT_TRUE(search.step_older());
    EXPECT_EQ(search.count_text(), "2 of 3");
    search.step_older();
    search.step_older();  // past the oldest: round to the newest
    EXPECT_EQ(search.count_text(), "3 of 3");
    search.step_newer();  // past the newest: round to the oldest
    EXPECT_EQ(search.count_text(), "1 of 3");
    EXPECT_FALSE(search.update(m.model));  // nothing new
}

TEST(TextSearch, NoHitsAndEmptyQueries) {
    model_10px m;
    m.model.add_text("short\n");
    zorn_text_search search;
    EXPECT_FALSE(search.step_older());
    search.set_query("");
    EXPECT_FALSE(search.active());
    EXPECT_FALSE(search.update(m.model));
    search.set_query("longer than the whole text");
    search.update(m.model);
    search.select_newest();
    EXPECT_EQ(search.count_text(), "0 of 0");
    EXPECT_FALSE(search.step_newer());
    search.set_query("\xc3\xa9");  // bytes above 0x7f never reach the stream
    search.update(m.model);
    EXPECT_EQ(search.count(), 0u);
}

TEST(TextSearch, HitsDontOverlap) {
    model_10px m;
    m.model.add_text("aaaaa\n");
    zorn_text_search search;
    search.set_query("aa");
    search.update(m.model);
    EXPECT_EQ(hits_of(search), (std::vector<uint64_t>{0, 2}));
}

// "wrapped" is cut by the window's edge: one hit, lit on both display lines.
TEST(TextSearch, AHitAcrossAWrapIsOneHitOnTwoLines) {
    model_10px m;
    m.model.add_text("0123456789abcdefwrapped word\n");
    ASSERT_GE(m.model.line_count(), 2);
    std::string first, second;
    m.model.line_text(0, &first);
    m.model.line_text(1, &second);
    ASSERT_EQ(first, "0123456789abcdefwra");  // no blank: cut where the width runs out
    zorn_text_search search;
    search.set_query("WRAPPED");
    search.update(m.model);
    ASSERT_EQ(search.count(), 1u);
    const zorn_text_search::place at = search.place_of(m.model, 0);
    EXPECT_EQ(at.first_line, 0);
    EXPECT_EQ(at.first_offset, 16);
    EXPECT_EQ(at.last_line, 1);
    EXPECT_EQ(at.last_offset, 3);
    search.select_newest();
    std::vector<std::string> lit;
    for (int line = 0; line < 2; ++line)
        search.for_each_hit_in(m.model.line_stream_start(line), m.model.line_stream_end(line),
                               [&](int from, int to, bool current) {
                                   lit.push_back(std::to_string(line) + ":" + std::to_string(from) + "-" +
                                                 std::to_string(to) + (current ? "*" : ""));
                               });
    EXPECT_EQ(lit, (std::vector<std::string>{"0:16-19*", "1:0-4*"}));
    // A narrower window wraps elsewhere; the hit stays and maps anew.
    m.model.resize(100, 100);
    search.update(m.model);
    ASSERT_EQ(search.count(), 1u);
    const zorn_text_search::place narrow = search.place_of(m.model, 0);
    EXPECT_EQ(narrow.first_line, 1);
    EXPECT_EQ(narrow.first_offset, 7);
    EXPECT_EQ(narrow.last_line, 2);
}

// Text comes in pieces of any size, cut anywhere, also inside a hit; clearing starts over.
TEST(TextSearch, KeepsUpWithTextArrivingInPieces) {
    std::mt19937 random(21);
    const char* words[] = {"orc", "Orc", "ORCHARD", "sword", "or", "c", "\n", " ", "tor", "corc"};
    std::string all;
    while (all.size() < 200000) all += words[random() % 10];
    model_10px m;
    zorn_text_search search;
    search.set_query("orc");
    size_t at = 0;
    size_t checks = 0;
    while (at < all.size()) {
        const size_t n = std::min<size_t>(1 + random() % 3000, all.size() - at);
        m.model.add_text(all.data() + at, n);
        at += n;
        search.update(m.model);
        search.select_newest();
        if (++checks % 10 == 0) {
            ASSERT_EQ(hits_of(search), plain_scan(m.model.raw_text(), "orc")) << at;
        }
    }
    EXPECT_EQ(hits_of(search), plain_scan(m.model.raw_text(), "orc"));
    EXPECT_GT(search.count(), 10000u);
    // A hit that spans one of the stream's 16 KB pages is found too.
    m.model.clear_text();
    for (int i = 0; i < 2; ++i) m.model.add_text(std::string(5000, 'x').c_str());  // 5999 bytes a call at most
    m.model.add_text(std::string(5000, 'x').c_str());
    m.model.add_text(std::string(1382, 'x').c_str());
    m.model.add_text("ORCx");
    EXPECT_TRUE(search.update(m.model));
    EXPECT_EQ(hits_of(search), (std::vector<uint64_t>{16382}));
    EXPECT_EQ(search.count_text(), "1 of 1");  // the current hit past the end falls back to the newest
}

// A jump puts the hit a little above the middle of a locked view; a hit in the last half-window
// locks the view at the end.
TEST(TextSearch, JumpLocksTheViewAtTheHit) {
    model_10px m(200, 100);  // ten lines in view
    zorn_ansi_model ansi(&m.model);
    for (int i = 0; i < 100; ++i) ansi.add_text(("line " + std::to_string(i) + (i == 40 ? " target" : "") + "\n").c_str());
    zorn_text_search search;
    search.set_query("target");
    search.update(m.model);
    search.select_newest();
    const zorn_text_search::place at = search.place_of(m.model, 0);
    EXPECT_EQ(at.first_line, 40);
    ansi.lock_at_lines(at.first_line, at.last_line);
    EXPECT_FALSE(ansi.is_following());
    EXPECT_EQ(m.model.scroll_line, 44);
    ansi.add_text("more\nand more\n");
    EXPECT_EQ(m.model.scroll_line, 44);  // locked: new text doesn't move it
    ansi.lock_at_lines(99, 99);
    EXPECT_EQ(m.model.scroll_line, ansi.end_position());
    ansi.lock_at_lines(0, 0);
    EXPECT_EQ(m.model.scroll_line, 9);  // the top: a full window of text
}
