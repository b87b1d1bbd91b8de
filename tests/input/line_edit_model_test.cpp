#include "input/line_edit_model.h"

#include <gtest/gtest.h>

#include <string>

#include "base/fixed_string.h"

namespace {

class fake_box : public zorn_line_box {
public:
    std::string get_text() const override { return text; }
    void set_text(const std::string& t) override {
        text = t;
        position = static_cast<long>(t.size());
    }
    long insertion_point() const override { return position; }
    void set_insertion_point(long p) override { position = p; }

    void type(const std::string& t) { set_text(t); }
    std::string text;
    long position = 0;
};

}  // namespace

TEST(CommandHistory, DisconnectedListOffersConnect) {
    zorn_command_history h;
    fake_box box;
    h.history_up(box);
    EXPECT_EQ(box.text, "connect");
    h.history_up(box);  // entry 3 is missing: nothing happens
    EXPECT_EQ(box.text, "connect");
    EXPECT_EQ(h.index(), 2);
}

TEST(CommandHistory, RepeatsAreKeptOutOnlyWhenDirect) {
    zorn_command_history h;
    h.select_history_list(2);
    for (const char* c : {"a", "a", "b", "a"}) h.history_store(c);
    EXPECT_EQ(*h.entry(2), "a");
    EXPECT_EQ(*h.entry(3), "b");
    EXPECT_EQ(*h.entry(4), "a");
    EXPECT_EQ(h.entry(5), nullptr);
}

TEST(CommandHistory, OldestFallsOutAfter98Commands) {
    zorn_command_history h;
    h.select_history_list(1);
    for (int i = 1; i <= 120; ++i) h.history_store("cmd" + std::to_string(i));
    EXPECT_EQ(*h.entry(2), "cmd120");
    EXPECT_EQ(*h.entry(99), "cmd23");  // entries 2..99 hold the newest 98
    EXPECT_EQ(h.entry(100), nullptr);
}

TEST(CommandHistory, TypedTextSurvivesWalkingUpAndDown) {
    zorn_command_history h;
    h.select_history_list(2);
    h.history_store("look");
    fake_box box;
    box.type("half typ");
    h.history_up(box);
    EXPECT_EQ(box.text, "look");
    h.history_down(box);
    EXPECT_EQ(box.text, "half typ");
    h.history_down(box);
    EXPECT_EQ(box.text, "");
    h.history_up(box);
    EXPECT_EQ(box.text, "half typ");
}

TEST(CommandHistory, ListsKeepTheirOwnPositions) {
    zorn_command_history h;
    fake_box box;
    h.history_up(box);  // list 0 at "connect"
    h.select_history_list(2);
    EXPECT_EQ(h.index(), 1);
    h.history_store("x");
    h.select_history_list(0);
    EXPECT_EQ(h.index(), 2);
}

TEST(CommandHistory, PasswordModeStoresNothing) {
    zorn_command_history h;
    h.select_history_list(1);
    h.set_password_mode(true);
    h.history_store("secret");
    EXPECT_EQ(h.entry(2), nullptr);
}

TEST(CommandHistory, UpAndDownInsideSeveralLinesMoveThroughTheText) {
    zorn_command_history h;
    h.select_history_list(2);
    h.history_store("older");
    fake_box box;
    box.type("line one\nline two\nthree");
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

TEST(CommandHistory, HistoryListingNumbersNewestFirstAtTheBottom) {
    zorn_command_history h;
    h.select_history_list(2);
    h.history_store("first");
    h.history_store("second");
    EXPECT_EQ(h.history_text(), "\nRecent Command History:\n 2 - first\n 1 - second\n");
}

TEST(CleanText, KeepsPrintableAsciiAndMarksEverythingElse) {
    EXPECT_EQ(clean_text("look\tnorth\r\n"), "look\tnorth\r\n");
    EXPECT_EQ(clean_text("caf\xc3\xa9!"), "caf.!");                 // two bytes, one code point
    EXPECT_EQ(clean_text("\xe2\x82\xac" "5"), ".5");                // three bytes
    EXPECT_EQ(clean_text("\xf0\x9f\x94\xa5x"), ".x");               // four bytes
    EXPECT_EQ(clean_text("a\x80" "b"), "a.b");                      // stray continuation byte
    EXPECT_EQ(clean_text("a\xe2\x82"), "a.");                       // cut off at the end
    EXPECT_EQ(clean_text("a\xe2z"), "a.z");                         // cut off by a plain byte
    EXPECT_EQ(clean_text(std::string("\x01\x1b[0m\x7f", 6)), "..[0m.");
    EXPECT_EQ(clean_text(std::string("a\0b", 3)), "a.b");
}

TEST(CleanText, FixedStringFormStopsAt5999Bytes) {
    zorn_fixed_string out;
    clean_text(std::string(7000, 'x'), &out);
    EXPECT_EQ(out.length, 5999);
}
