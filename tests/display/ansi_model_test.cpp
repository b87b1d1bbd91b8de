// The ANSI display without its window: golden parser cases replayed at every cut, palettes,
// render list, suspension, and the scroll lock.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <fstream>
#include <string>
#include <vector>

#include "display/ansi_model.h"
#include "tests/display/display_test_support.h"

namespace {

using lines = std::vector<std::string>;

// ---- golden cases (tests/display/ansi_cases.txt describes its format) ---------------------------

struct golden_case {
    std::string name, input;
    lines display, records;  // records empty: not compared
    int width = 100000, palette = 0;
};

std::string unescape(const std::string& text) {
    std::string out;
    for (size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '\\' || i + 1 >= text.size()) {
            out += text[i];
            continue;
        }
        switch (const char c = text[++i]) {
        case 'e': out += '\x1b'; break;
        case 'n': out += '\n'; break;
        case 'r': out += '\r'; break;
        case 't': out += '\t'; break;
        case 'x':
            out += static_cast<char>(std::stoi(text.substr(i + 1, 2), nullptr, 16));
            i += 2;
            break;
        default: out += c; break;
        }
    }
    return out;
}

std::vector<golden_case> load_cases() {
    std::ifstream in(LANTERN_SOURCE_DIR "/tests/display/ansi_cases.txt");
    std::vector<golden_case> cases;
    std::string line;
    bool in_case = false;
    while (std::getline(in, line)) {
        if (line.empty() || line[0] == '#') {
            if (!line.empty() && !in_case && line.size() > 2) cases.push_back({line.substr(2), "", {}, {}});
            in_case = !line.empty();
            continue;
        }
        if (cases.empty()) continue;
        const std::string rest = line.size() > 2 ? line.substr(2) : "";
        if (line[0] == '<') cases.back().input += unescape(rest);
        if (line[0] == '=') cases.back().display.push_back(rest);
        if (line[0] == 'r' || line[0] == 'p') cases.back().records.push_back(line);
        if (line[0] == 'w') cases.back().width = std::stoi(rest);
        if (line[0] == 'c') cases.back().palette = std::stoi(rest);
    }
    // The comment block at the top of the file has no input.
    cases.erase(std::remove_if(cases.begin(), cases.end(), [](const golden_case& c) { return c.input.empty(); }),
                cases.end());
    return cases;
}

struct ansi_fixture {
    explicit ansi_fixture(int width = 100000, int height = 40) : text(width, height), ansi(&text) {
        set_uniform_widths(&text);
        text.resize(width, height);
    }
    void feed(const std::string& s) { ansi.add_ansi_text(s.data(), static_cast<int>(s.size())); }
    zorn_textctrl_model text;
    zorn_ansi_model ansi;
};

lines records_of(const zorn_ansi_model& ansi) {
    lines out;
    char head[40];
    zorn_render_list record;
    for (size_t i = 0; i < ansi.render_record_count(); ++i) {
        ansi.render_record(i, &record);
        std::snprintf(head, sizeof(head), "r %02x%02x%02x %d %d | ", record.red, record.green, record.blue,
                      record.attributes, record.color);
        out.push_back(head + escape_text(record.text));
    }
    if (!ansi.render_store().pending_empty()) {
        std::snprintf(head, sizeof(head), "p %06x %d %d | ", ansi.pending_rgb, ansi.pending_attributes,
                      ansi.pending_color);
        out.push_back(head + escape_text(ansi.render_store().pending_text()));
    }
    return out;
}

void expect_case(const golden_case& c, const std::vector<std::string>& blocks, const std::string& how) {
    zorn_select_palette(c.palette);
    ansi_fixture f(c.width);
    f.ansi.add_text("");  // uses up the text control's first-text flag, which depends on the cut
    for (const std::string& block : blocks) f.feed(block);
    zorn_select_palette(0);
    EXPECT_EQ(colored_lines_of(f.text), c.display) << c.name << ", " << how;
    if (!c.records.empty()) {
        EXPECT_EQ(records_of(f.ansi), c.records) << c.name << ", " << how;
    }
}

TEST(ansi_golden, cases_hold_at_every_cut) {
    const std::vector<golden_case> cases = load_cases();
    ASSERT_GE(cases.size(), 20u);
    for (const golden_case& c : cases) {
        expect_case(c, {c.input}, "whole");
        for (size_t cut = 0; cut <= c.input.size(); ++cut)
            expect_case(c, {c.input.substr(0, cut), c.input.substr(cut)}, "cut at " + std::to_string(cut));
        std::vector<std::string> bytes;
        for (char b : c.input) bytes.emplace_back(1, b);
        expect_case(c, bytes, "byte by byte");
    }
}

// ---- palettes (their colours are golden cases) -------------------------------------------------

TEST(ansi_model, rerender_after_a_palette_change_keeps_the_old_colours) {
    ansi_fixture f;
    f.feed("\x1b[31mold\n");
    zorn_select_palette(1);
    f.ansi.rerender();
    f.feed("\x1b[32mnew\x1b[31mred");
    zorn_select_palette(0);
    EXPECT_EQ(colored_lines_of(f.text), (lines{"{aa0000}old\\n", "{00cc00}new{cc0000}red"}));
    EXPECT_STREQ(zorn_palette_name(3), "GMud-style");
}

// ---- parser, text control and render list together ----------------------------------------------

TEST(ansi_model, client_messages_and_inverse) {
    ansi_fixture f;
    f.ansi.process_ansi_code(1, zorn_ansi_yellow);
    f.ansi.add_text("Note: ");
    f.ansi.process_ansi_code(0, zorn_ansi_white);
    f.ansi.add_text("plain");
    f.ansi.add_text(nullptr);
    EXPECT_EQ(colored_lines_of(f.text), (lines{"{ffff55}Note: {a0a0a0}plain"}));
    // Inverse greys the whole background until a reset.
    f.feed("\x1b[7mx");
    EXPECT_EQ(f.text.base_background_color, zorn_rgb(64, 64, 64));
    f.feed("\x1b[0m");
    EXPECT_EQ(f.text.background_color, zorn_rgb(0, 0, 0));
}

TEST(ansi_model, long_text_reaches_the_control_whole_but_rerenders_cut_at_5999) {
    // Runs of 256 bytes keep each add_text far below the text control's 5999-byte cut.
    ansi_fixture f(1000000);
    f.text.set_wrap(0);
    f.feed(std::string(7000, 'y'));
    EXPECT_EQ(f.text.line_length(0), 7000);
    f.ansi.rerender();
    EXPECT_EQ(f.text.line_length(0), 5999);
}

TEST(ansi_model, suspended_text_goes_to_the_history_only) {
    ansi_fixture f;
    f.feed("before\n");
    f.ansi.suspend_updates();
    f.ansi.clear_display();
    f.feed("\x1b[33mduring\n");
    EXPECT_EQ(lines_of(f.text), (lines{"before", ""}));
    f.ansi.resume_updates();
    EXPECT_EQ(colored_lines_of(f.text), (lines{"{aa8800}during\\n", ""}));
    f.ansi.resume_updates();  // not suspended: changes nothing
    EXPECT_EQ(lines_of(f.text), (lines{"during", ""}));
    // Text after the re-render is in the colours in force, not those of the last record.
    f.feed("\x1b[34mafter");
    EXPECT_EQ(colored_lines_of(f.text).back(), "{0000cc}after");
}

TEST(ansi_model, word_wrap_switch_rebuilds_from_the_history) {
    ansi_fixture f(60);
    f.feed("aaaa bbbb\n");
    EXPECT_EQ(f.text.line_count(), 3);
    f.ansi.set_word_wrap(0);
    EXPECT_EQ(lines_of(f.text), (lines{"aaaa bbbb", ""}));
}

TEST(ansi_model, clear_display_drops_history_and_resets_colours) {
    ansi_fixture f;
    f.feed("\x1b[31mred\nmore");
    f.ansi.clear_display();
    EXPECT_EQ(f.ansi.render_record_count(), 0u);
    EXPECT_TRUE(f.ansi.render_store().pending_empty());
    EXPECT_EQ(lines_of(f.text), (lines{""}));
    f.feed("x");
    EXPECT_EQ(colored_lines_of(f.text), (lines{"{a0a0a0}x"}));
}

TEST(ansi_model, debug_fill_writes_lines_and_a_count) {
    ansi_fixture f;
    f.text.add_text("");  // a first line without words must not lose its line feed
    const int characters = f.ansi.debug_fill(200);
    EXPECT_EQ(f.text.line_count(), 202);
    std::string last;
    f.text.line_text(200, &last);
    EXPECT_EQ(last, std::to_string(characters) + " characters written (" + std::to_string(characters / 1000) + " kb).");
    EXPECT_EQ(f.ansi.render_record_count(), 0u);
}

// ---- view and lock --------------------------------------------------------------------------------

struct counting_client : zorn_ansi_view_client {
    void repaint_display() override { ++repaints; }
    void lock_changed() override { ++lock_changes; }
    int repaints = 0, lock_changes = 0;
};

struct view_fixture {
    view_fixture() : text(1000, 100), ansi(&text, &client) {  // 10 visible lines, 50 lines of text
        set_uniform_widths(&text);
        text.resize(1000, 100);
        for (int i = 0; i < 50; ++i) ansi.add_ansi_text("line\n", 5);
        ansi.scroll_to_end();
    }
    counting_client client;
    zorn_textctrl_model text;
    zorn_ansi_model ansi;
};

TEST(ansi_view, lock_freezes_the_view_and_paging_to_the_end_unlocks) {
    view_fixture v;
    ASSERT_EQ(v.text.scroll_line, 50);
    v.ansi.unlock_scrollback();  // not locked: nothing to do
    EXPECT_EQ(v.client.repaints, 0);
    v.ansi.lock_scrollback();
    v.ansi.lock_scrollback();
    EXPECT_EQ(v.client.lock_changes, 1);
    EXPECT_FALSE(v.ansi.is_following());
    EXPECT_EQ(v.text.frozen, 1);
    v.ansi.page_up();
    EXPECT_EQ(v.text.scroll_line, 45);
    for (int i = 0; i < 20; ++i) v.ansi.add_ansi_text("new\n", 4);
    EXPECT_EQ(v.text.scroll_line, 45);  // new lines don't move a locked view
    v.ansi.page_down();
    EXPECT_FALSE(v.ansi.is_following());
    for (int i = 0; i < 5; ++i) v.ansi.page_down();
    EXPECT_TRUE(v.ansi.is_following());
    EXPECT_EQ(v.text.frozen, 0);
    EXPECT_EQ(v.text.scroll_line, 70);
    v.ansi.add_ansi_text("more\n", 5);
    EXPECT_EQ(v.text.scroll_line, 71);
}

TEST(ansi_view, a_popup_never_locks) {
    view_fixture v;
    v.ansi.no_lock = 1;
    v.ansi.lock_scrollback();
    EXPECT_TRUE(v.ansi.is_following());
    EXPECT_EQ(v.client.repaints, 1);
}

TEST(ansi_view, scrolling_stays_within_the_text_and_the_thumb_locks_where_it_stops) {
    view_fixture v;
    v.ansi.lock_scrollback();
    for (int i = 0; i < 30; ++i) v.ansi.scroll_up(3);
    EXPECT_EQ(v.ansi.view_line, 9);  // the top line shows at the top of the window
    v.ansi.scroll_down(100);         // at most half a window
    EXPECT_EQ(v.ansi.view_line, 14);

    view_fixture t;
    t.ansi.scroll_thumb_moved(10);
    EXPECT_FALSE(t.ansi.is_following());
    EXPECT_EQ(t.text.scroll_line, 20);
    t.ansi.scroll_thumb_moved(40);
    EXPECT_TRUE(t.ansi.is_following());
    EXPECT_EQ(t.text.scroll_line, 50);
    t.text.top_anchored = 1;
    EXPECT_EQ(t.ansi.end_position(), 41);
}

}  // namespace
