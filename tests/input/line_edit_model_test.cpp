// The command histories and text cleaning of the line editor, without a window.
#include "input/line_edit_model.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>

#include "base/fixed_string.h"

namespace {

struct fake_box : zorn_line_box {
    std::string get_text() const override { return text; }
    void set_text(const std::string& t) override {
        text = t;
        position = static_cast<long>(t.size());
    }
    long insertion_point() const override { return position; }
    void set_insertion_point(long p) override { position = p; }
    std::string text;
    long position = 0;
};

TEST(CommandHistory, RepeatsAreKeptOutOnlyWhenDirect) {
    zorn_command_history h;
    h.select_history_list(2);
    for (const char* c : {"a", "a", "b", "a"}) h.history_store(c);
    EXPECT_EQ(*h.entry(2), "a");
    EXPECT_EQ(*h.entry(3), "b");
    EXPECT_EQ(*h.entry(4), "a");
    EXPECT_EQ(h.entry(5), nullptr);
}

TEST(CommandHistory, OldestFallsOutAfter98CommandsAndTheListingShows19) {
    zorn_command_history h;
    h.select_history_list(1);
    for (int i = 1; i <= 120; ++i) h.history_store("cmd" + std::to_string(i));
    EXPECT_EQ(*h.entry(2), "cmd120");
    EXPECT_EQ(*h.entry(99), "cmd23");  // entries 2..99 hold the newest 98
    EXPECT_EQ(h.entry(100), nullptr);
    const std::string listing = h.history_text();
    EXPECT_EQ(listing.substr(0, 36), "\nRecent Command History:\n19 - cmd102");
    EXPECT_EQ(listing.substr(listing.size() - 13), "\n 1 - cmd120\n");
}

TEST(CommandHistory, ListsKeepTheirOwnPositions) {
    zorn_command_history h;
    fake_box box;
    h.history_up(box);  // list 0 offers "connect" at entry 2, and nothing above it
    h.history_up(box);
    EXPECT_EQ(box.text, "connect");
    EXPECT_EQ(h.index(), 2);
    h.select_history_list(2);
    EXPECT_EQ(h.index(), 1);
    h.history_store("x");
    h.select_history_list(0);
    EXPECT_EQ(h.index(), 2);
}

TEST(CommandHistory, UpAndDownInsideSeveralLinesMoveThroughTheText) {
    zorn_command_history h;
    h.select_history_list(2);
    h.history_store("older");
    fake_box box;
    box.set_text("line one\nline two\nthree");
    box.position = 12;  // inside "line two"
    h.history_up(box);
    EXPECT_EQ(box.position, 8);  // at the line feed before it
    EXPECT_EQ(box.text, "line one\nline two\nthree");
    h.history_down(box);
    EXPECT_EQ(box.position, 17);
    h.history_down(box);
    EXPECT_EQ(box.position, 23);  // end of the text
    h.history_up(box);             // now at the end: history again
    EXPECT_EQ(box.text, "older");
}

TEST(CleanText, KeepsPrintableAsciiAndMarksEverythingElse) {
    const std::pair<std::string, std::string> cases[] = {
        {"look\tnorth\r\n", "look\tnorth\r\n"},
        {"caf\xc3\xa9!", "caf.!"},           // two bytes, one code point
        {"\xe2\x82\xac" "5", ".5"},          // three bytes
        {"\xf0\x9f\x94\xa5x", ".x"},         // four bytes
        {"a\x80" "b", "a.b"},                // stray continuation byte
        {"a\xe2\x82", "a."},                 // cut off at the end
        {"a\xe2z", "a.z"},                   // cut off by a plain byte
        {std::string("\x01\x1b[0m\x7f", 6), "..[0m."},
        {std::string("a\0b", 3), "a.b"},
    };
    for (const auto& [in, out] : cases) EXPECT_EQ(clean_text(in), out) << in;
    zorn_fixed_string fixed;
    clean_text(std::string(7000, 'x'), &fixed);
    EXPECT_EQ(fixed.length, 5999);
}

}  // namespace
