// The ANSI display without its window: golden parser cases replayed at every cut, palettes,
// render list, suspension, and the scroll lock.
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "display/ansi_model.h"
#include "tests/display/display_test_support.h"

namespace {

using lines = std::vector<std::string>;

// ---- golden cases --------------------------------------------------------------------------------

struct golden_case {
    std::string name;
    std::string input;
    lines display;
    lines records;  // r and p lines; empty: not compared
};

std::string unescape(const std::string& text) {
    std::string out;
    for (size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '\\' || i + 1 >= text.size()) {
            out += text[i];
            continue;
        }
        const char c = text[++i];
        switch (c) {
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
        if (line.empty()) {
            in_case = false;
            continue;
        }
        if (line[0] == '#') {
            if (!in_case && line.size() > 2 && cases.size() < 1000) {
                cases.push_back({line.substr(2), "", {}, {}});
                in_case = true;
            }
            continue;
        }
        if (cases.empty()) continue;
        const std::string rest = line.size() > 2 ? line.substr(2) : "";
        if (line[0] == '<') cases.back().input += unescape(rest);
        if (line[0] == '=') cases.back().display.push_back(rest);
        if (line[0] == 'r' || line[0] == 'p') cases.back().records.push_back(line);
    }
    // The comment block at the top of the file has no input.
    cases.erase(std::remove_if(cases.begin(), cases.end(), [](const golden_case& c) { return c.input.empty(); }),
                cases.end());
    return cases;
}

struct ansi_fixture {
    ansi_fixture(int width = 100000, int height = 40) : text(width, height), ansi(&text) {
        set_uniform_widths(&text);
        text.resize(width, height);
    }
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
    ansi_fixture f;
    f.ansi.add_text("");  // uses up the text control's first-text flag, which depends on the cut
    for (const std::string& block : blocks) f.ansi.add_ansi_text(block.data(), static_cast<int>(block.size()));
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

// ---- palettes ------------------------------------------------------------------------------------

struct palette_case {
    int palette;
    const char* input;
    uint32_t expected;
};

class palette_test : public ::testing::TestWithParam<palette_case> {
protected:
    void TearDown() override { zorn_select_palette(0); }
};

TEST_P(palette_test, colour_of_code_and_level) {
    zorn_select_palette(GetParam().palette);
    ansi_fixture f;
    f.ansi.add_ansi_text(GetParam().input, static_cast<int>(std::strlen(GetParam().input)));
    const auto chunks = f.text.line_chunks(0);
    ASSERT_EQ(chunks.size(), 1u);
    EXPECT_EQ(zorn_pack_rgb(chunks[0].color), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    palettes, palette_test,
    ::testing::Values(palette_case{0, "x", 0xa0a0a0}, palette_case{0, "\x1b[1mx", 0xffffff},
                      palette_case{0, "\x1b[2m\x1b[33mx", 0x774000}, palette_case{0, "\x1b[1m\x1b[35mx", 0xff40ff},
                      palette_case{0, "\x1b[36mx", 0x0080aa}, palette_case{1, "x", 0xcccccc},
                      palette_case{1, "\x1b[1m\x1b[31mx", 0xff8080}, palette_case{1, "\x1b[2m\x1b[34mx", 0x000080},
                      palette_case{2, "\x1b[32mx", 0x00b300}, palette_case{2, "\x1b[1m\x1b[36mx", 0x00ffff},
                      palette_case{2, "\x1b[2mx", 0x404040},
                      // In the last palette normal white is brighter than bright white.
                      palette_case{3, "x", 0xffffff}, palette_case{3, "\x1b[1mx", 0x808080},
                      palette_case{3, "\x1b[0mx", 0xffffff}, palette_case{3, "\x1b[35mx", 0x800080}));

TEST(ansi_model, palette_names_and_selection) {
    EXPECT_STREQ(zorn_palette_name(0), "default");
    EXPECT_STREQ(zorn_palette_name(1), "bright");
    EXPECT_STREQ(zorn_palette_name(2), "ZMud-style");
    EXPECT_STREQ(zorn_palette_name(3), "GMud-style");
    zorn_select_palette(7);
    EXPECT_EQ(zorn_current_palette, &zorn_ansi_palettes[0]);
}

TEST(ansi_model, rerender_after_a_palette_change_keeps_the_old_colours) {
    ansi_fixture f;
    const std::string before = "\x1b[31mold\n";
    f.ansi.add_ansi_text(before.data(), static_cast<int>(before.size()));
    zorn_select_palette(1);
    f.ansi.rerender();
    const std::string after = "\x1b[32mnew\x1b[31mred";
    f.ansi.add_ansi_text(after.data(), static_cast<int>(after.size()));
    zorn_select_palette(0);
    EXPECT_EQ(colored_lines_of(f.text), (lines{"{aa0000}old\\n", "{00cc00}new{cc0000}red"}));
}

// ---- parser, text control and render list together ----------------------------------------------

TEST(ansi_model, client_messages_colour_themselves) {
    ansi_fixture f;
    f.ansi.process_ansi_code(1, zorn_ansi_yellow);
    f.ansi.add_text("Note: ");
    f.ansi.process_ansi_code(0, zorn_ansi_white);
    f.ansi.add_text("plain");
    f.ansi.add_text(nullptr);
    EXPECT_EQ(colored_lines_of(f.text), (lines{"{ffff55}Note: {a0a0a0}plain"}));
}

TEST(ansi_model, long_lines_reach_the_text_control_whole) {
    // Runs of 256 bytes keep each add_text far below the text control's 5999-byte cut.
    ansi_fixture f(1000000);
    const std::string line(10000, 'x');
    f.ansi.add_ansi_text(line.data(), static_cast<int>(line.size()));
    EXPECT_EQ(f.text.line_length(0), 10000);
}

TEST(ansi_model, reset_with_twenty_visible_lines_adds_41_line_feeds) {
    ansi_fixture f(100000, 200);
    f.ansi.add_ansi_text("a\x1b" "c", 3);
    EXPECT_EQ(f.text.line_count(), 42);
}

TEST(ansi_model, inverse_greys_the_whole_background) {
    ansi_fixture f;
    f.ansi.add_ansi_text("\x1b[7mx", 5);
    EXPECT_EQ(f.text.base_background_color, zorn_rgb(64, 64, 64));
    f.ansi.add_ansi_text("\x1b[0m", 4);
    EXPECT_EQ(f.text.background_color, zorn_rgb(0, 0, 0));
}

TEST(ansi_model, text_received_is_set_by_any_block) {
    ansi_fixture f;
    f.ansi.add_ansi_text("x", 0);
    EXPECT_EQ(f.ansi.text_received, 0);
    f.ansi.add_ansi_text("\x1b[", 2);
    EXPECT_EQ(f.ansi.text_received, 1);
}

TEST(ansi_model, suspended_text_goes_to_the_history_only) {
    ansi_fixture f;
    f.ansi.add_ansi_text("before\n", 7);
    f.ansi.suspend_updates();
    f.ansi.clear_display();
    const std::string text = "\x1b[33mduring\n";
    f.ansi.add_ansi_text(text.data(), static_cast<int>(text.size()));
    EXPECT_EQ(lines_of(f.text), (lines{"before", ""}));
    f.ansi.resume_updates();
    EXPECT_EQ(colored_lines_of(f.text), (lines{"{aa8800}during\\n", ""}));
    // Text after the re-render is in the colours in force, not those of the last record.
    f.ansi.add_ansi_text("\x1b[34mafter", 10);
    EXPECT_EQ(colored_lines_of(f.text).back(), "{0000cc}after");
}

TEST(ansi_model, resume_without_suspend_changes_nothing) {
    ansi_fixture f;
    f.ansi.add_ansi_text("x\n", 2);
    f.ansi.resume_updates();
    EXPECT_EQ(f.ansi.render_record_count(), 0u);
    EXPECT_EQ(lines_of(f.text), (lines{"x", ""}));
}

TEST(ansi_model, rerender_shows_at_most_5999_bytes_of_one_record) {
    ansi_fixture f;
    f.text.set_wrap(0);
    const std::string text(7000, 'y');
    f.ansi.add_ansi_text(text.data(), static_cast<int>(text.size()));
    EXPECT_EQ(f.text.line_length(0), 7000);
    f.ansi.rerender();
    EXPECT_EQ(f.text.line_length(0), 5999);
}

TEST(ansi_model, word_wrap_switch_rebuilds_from_the_history) {
    ansi_fixture f(60);
    f.ansi.add_ansi_text("aaaa bbbb\n", 10);
    EXPECT_EQ(f.text.line_count(), 3);
    f.ansi.set_word_wrap(0);
    EXPECT_EQ(lines_of(f.text), (lines{"aaaa bbbb", ""}));
}

TEST(ansi_model, clear_display_drops_history_and_resets_colours) {
    ansi_fixture f;
    f.ansi.add_ansi_text("\x1b[31mred\nmore", 14);
    f.ansi.clear_display();
    EXPECT_EQ(f.ansi.render_record_count(), 0u);
    EXPECT_TRUE(f.ansi.render_store().pending_empty());
    EXPECT_EQ(lines_of(f.text), (lines{""}));
    f.ansi.add_ansi_text("x", 1);
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
    void update_scrollbar() override { ++scrollbar_updates; }
    void repaint_display() override { ++repaints; }
    void lock_changed() override { ++lock_changes; }
    int scrollbar_updates = 0;
    int repaints = 0;
    int lock_changes = 0;
};

struct view_fixture {
    view_fixture() : text(1000, 100), ansi(&text, &client) {  // 10 visible lines
        set_uniform_widths(&text);
        text.resize(1000, 100);
        for (int i = 0; i < 50; ++i) ansi.add_ansi_text("line\n", 5);
        ansi.scroll_to_end();
    }
    counting_client client;
    zorn_textctrl_model text;
    zorn_ansi_model ansi;
};

TEST(ansi_view, lock_freezes_the_view_and_scrolling_to_the_end_unlocks) {
    view_fixture v;
    ASSERT_EQ(v.text.scroll_line, 50);
    v.ansi.lock_scrollback();
    EXPECT_FALSE(v.ansi.is_following());
    EXPECT_EQ(v.text.frozen, 1);
    EXPECT_EQ(v.client.lock_changes, 1);
    v.ansi.page_up();
    EXPECT_EQ(v.ansi.view_line, 45);
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

TEST(ansi_view, lock_and_unlock_change_nothing_twice) {
    view_fixture v;
    v.ansi.unlock_scrollback();
    EXPECT_EQ(v.client.repaints, 0);
    v.ansi.lock_scrollback();
    v.ansi.lock_scrollback();
    EXPECT_EQ(v.client.lock_changes, 1);
}

TEST(ansi_view, a_popup_never_locks) {
    view_fixture v;
    v.ansi.no_lock = 1;
    v.ansi.lock_scrollback();
    EXPECT_TRUE(v.ansi.is_following());
    EXPECT_EQ(v.client.repaints, 1);
}

TEST(ansi_view, scrolling_stays_within_the_text) {
    view_fixture v;
    v.ansi.lock_scrollback();
    for (int i = 0; i < 30; ++i) v.ansi.scroll_up(3);
    EXPECT_EQ(v.ansi.view_line, 9);  // the top line shows at the top of the window
    v.ansi.scroll_up(100);
    EXPECT_EQ(v.ansi.view_line, 9);
    v.ansi.scroll_down(100);  // at most half a window
    EXPECT_EQ(v.ansi.view_line, 14);
}

TEST(ansi_view, thumb_drag_locks_where_it_stops_and_unlocks_at_the_end) {
    view_fixture v;
    v.ansi.scroll_thumb_moved(10);
    EXPECT_FALSE(v.ansi.is_following());
    EXPECT_EQ(v.text.scroll_line, 20);
    EXPECT_EQ(v.ansi.view_line, 20);
    v.ansi.scroll_thumb_moved(40);
    EXPECT_TRUE(v.ansi.is_following());
    EXPECT_EQ(v.text.scroll_line, 50);
}

TEST(ansi_view, top_anchored_end_position) {
    view_fixture v;
    v.text.top_anchored = 1;
    EXPECT_EQ(v.ansi.end_position(), 41);
    v.ansi.scroll_to_end();
    EXPECT_EQ(v.text.scroll_line, 41);
}

}  // namespace
