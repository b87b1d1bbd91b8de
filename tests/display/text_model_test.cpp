// The text buffer: storage, tab expansion, folding, word wrap, re-wrap, view and selection.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "base/fixed_string.h"
#include "display/text_model.h"
#include "tests/display/display_test_support.h"

namespace {

using lines = std::vector<std::string>;

struct model_at {
    explicit model_at(int width, int height = 100) : model(width, height) {
        set_uniform_widths(&model);
        model.resize(width, height);
    }
    zorn_textctrl_model model;
};

// ---- word wrap (the breaks themselves are golden cases in ansi_cases.txt) ----------------------

TEST(text_model, break_in_first_of_two_chunks_moves_the_second_whole_with_its_width) {
    model_at m(100);
    m.model.text_color = zorn_rgb(255, 0, 0);
    m.model.add_text("aaa bbb");
    m.model.text_color = zorn_rgb(0, 255, 0);
    m.model.add_text("cccc");
    EXPECT_EQ(colored_lines_of(m.model), (lines{"{ff0000}aaa ", "{ff0000}bbb{00ff00}cccc"}));
    const auto chunks = m.model.line_chunks(1);
    ASSERT_EQ(chunks.size(), 2u);
    EXPECT_EQ(chunks[0].width, 30);
    EXPECT_EQ(chunks[1].width, 40);

    model_at cr(50);
    cr.model.add_text("ab\r\rcd");
    EXPECT_EQ(lines_of(cr.model), (lines{"ab\r\rcd"}));  // carriage returns have no width
}

TEST(text_model, layout_does_not_depend_on_how_text_was_cut) {
    const std::string text = "The quick brown fox\tjumps over\r\nthe lazy dog again and again\n\nx";
    model_at whole(70);
    whole.model.add_text(text.c_str());
    for (size_t cut = 0; cut <= text.size(); ++cut) {
        model_at parts(70);
        parts.model.add_text(text.substr(0, cut).c_str());
        parts.model.add_text(text.substr(cut).c_str());
        EXPECT_EQ(lines_of(parts.model), lines_of(whole.model)) << "cut at " << cut;
    }
}

TEST(text_model, rewrap_on_a_new_width_moves_breaks_but_keeps_real_line_ends) {
    model_at m(1000);
    m.model.add_text("aaaa bbbb cccc dddd\nee ff\n");
    m.model.select_range(0, 0, 2);
    EXPECT_FALSE(m.model.resize(1000, 80));  // only a new width re-wraps
    EXPECT_TRUE(m.model.has_selection());
    ASSERT_TRUE(m.model.resize(60, 100));
    EXPECT_FALSE(m.model.has_selection());
    EXPECT_EQ(lines_of(m.model), (lines{"aaaa ", "bbbb ", "cccc ", "dddd", "ee ff", ""}));
    std::vector<int> hard;
    for (int i = 0; i < m.model.line_count(); ++i) hard.push_back(m.model.line_hard_newline(i) ? 1 : 0);
    EXPECT_EQ(hard, (std::vector<int>{0, 0, 0, 1, 1, 0}));
    ASSERT_TRUE(m.model.resize(1000, 100));
    EXPECT_EQ(lines_of(m.model), (lines{"aaaa bbbb cccc dddd", "ee ff", ""}));
}

// ---- storage -----------------------------------------------------------------------------------

TEST(text_model, leading_line_feeds_of_the_first_text_are_skipped) {
    model_at m(1000);
    m.model.add_text("\n\nfirst\n\nsecond");
    EXPECT_EQ(lines_of(m.model), (lines{"first", "", "second"}));
    m.model.add_text("\n\n");
    EXPECT_EQ(m.model.line_count(), 5);
    m.model.clear_text();
    m.model.add_text("");  // an empty first text uses up the skip
    m.model.add_text("\nx");
    EXPECT_EQ(lines_of(m.model), (lines{"", "x"}));
}

TEST(text_model, tabs_expand_to_the_next_multiple_of_eight) {
    const struct {
        std::vector<std::string> texts;
        std::string expected_raw;
    } cases[] = {
        // More tab cases are golden ones in ansi_cases.txt.
        {{"abc\r\tx"}, "abc\r        x"},
        {{"abc", "\tx"}, "abc     x"},  // the column is counted over the stream, not per call
        {{"\xe9\tx"}, "e       x"},    // a folded high byte counts as one column
    };
    for (const auto& c : cases) {
        model_at m(100000);
        for (const std::string& t : c.texts) m.model.add_text(t.c_str());
        EXPECT_EQ(m.model.raw_text(), c.expected_raw) << escape_text(c.expected_raw);
    }
}

TEST(text_model, chunk_limit_of_5999_bytes_and_tabs) {
    model_at m(100000);
    m.model.set_wrap(0);
    m.model.add_text(std::string(7000, 'a').c_str());
    EXPECT_EQ(m.model.raw_text().size(), 5999u);
    EXPECT_EQ(m.model.tab_column, 7000);  // counted past the cut
    m.model.add_text("\tx");              // 7000 -> 7008
    EXPECT_EQ(m.model.raw_text().substr(5999), "        x");

    model_at cut(100000);  // the cut falls inside a tab's blanks
    cut.model.add_text((std::string(5995, 'a') + "\tzz").c_str());
    EXPECT_EQ(cut.model.raw_text(), std::string(5995, 'a') + "    ");
}

TEST(text_model, high_bytes_are_folded) {
    model_at m(100000);
    m.model.add_text("\x80\x81\x83\x8d\x8f\x90\x93\x99\x9f\xa0\xa6\xae\xb2\xbc\xbf\xc7\xd0\xd7\xdf\xe9\xf1\xf7\xff");
    EXPECT_EQ(m.model.raw_text(), "E f   \" Y |R2 ?CDxSen/y");
}

TEST(text_model, chunk_records_only_at_colour_changes) {
    model_at m(100000);
    m.model.add_text("one ");
    m.model.add_text("two\n");
    m.model.text_color = zorn_rgb(1, 2, 3);
    m.model.add_text("three");
    m.model.add_text("");
    EXPECT_EQ(m.model.raw_chunk_count(), 2u);
    EXPECT_EQ(colored_lines_of(m.model), (lines{"{ffffff}one two\\n", "{010203}three"}));
}

TEST(text_model, line_table_grows_by_one_step_and_keeps_its_lines) {
    model_at m(100000);
    EXPECT_EQ(m.model.line_capacity(), 65536u);
    for (int i = 0; i < 65536; ++i) m.model.add_text((std::to_string(i) + "\n").c_str());
    EXPECT_EQ(m.model.line_count(), 65537);
    EXPECT_EQ(m.model.line_capacity(), 131072u);
    std::string line;
    m.model.line_text(65535, &line);
    EXPECT_EQ(line, "65535");
    m.model.clear_text();
    EXPECT_EQ(m.model.line_capacity(), 131072u);
    EXPECT_EQ(m.model.line_count(), 1);
}

TEST(text_model, text_spanning_many_pages_reads_back_whole) {
    model_at m(100000);
    m.model.set_wrap(0);
    std::string expected;
    for (int i = 0; i < 20; ++i) {
        const std::string piece(5000, static_cast<char>('a' + i));
        m.model.text_color = zorn_rgb(i, 0, 0);
        m.model.add_text(piece.c_str());
        expected += piece;
    }
    EXPECT_EQ(m.model.raw_text(), expected);
    const auto chunks = m.model.line_chunks(0);
    ASSERT_EQ(chunks.size(), 20u);
    EXPECT_EQ(chunks[7].text, std::string(5000, 'h'));
    EXPECT_EQ(chunks[7].color, zorn_rgb(7, 0, 0));
}

// ---- view ------------------------------------------------------------------------------------

TEST(text_model, scroll_limits_and_info) {
    model_at m(1000, 100);  // 10 visible lines
    for (int i = 0; i < 30; ++i) m.model.add_text("x\n");
    m.model.set_scroll_line(100);
    EXPECT_EQ(m.model.scroll_line, 40);
    m.model.set_scroll_line(-5);
    EXPECT_EQ(m.model.scroll_line, 0);
    EXPECT_EQ(m.model.set_top_line(5), 15);
    int position = 0, range = 0, page = 0;
    m.model.get_scroll_info(&position, &range, &page);
    EXPECT_EQ(std::vector<int>({position, range, page}), std::vector<int>({5, 30, 10}));

    m.model.top_anchored = 1;
    m.model.set_scroll_line(100);
    EXPECT_EQ(m.model.scroll_line, 30);
    EXPECT_EQ(m.model.set_top_line(7), 7);
    m.model.get_scroll_info(&position, &range, &page);
    EXPECT_EQ(std::vector<int>({position, range}), std::vector<int>({7, 41}));

    zorn_textctrl_model no_font(100, 100);  // no line height yet: no division by zero
    EXPECT_EQ(no_font.get_visible_line_count(), 20);
    set_uniform_widths(&no_font, 10, 30);
    no_font.resize(100, 20);  // lower than a line: still one
    EXPECT_EQ(no_font.get_visible_line_count(), 1);
}

TEST(text_model, translates_points_to_lines_and_offsets) {
    model_at m(1000, 100);
    m.model.add_text("l0\nl1\nl2\nline three\n");
    m.model.set_scroll_line(3);
    const struct {
        int x, y, line, offset;
    } cases[] = {
        {0, 95, 3, 0},  {25, 92, 3, 2}, {30, 92, 3, 2},  {31, 92, 3, 3}, {5000, 92, 3, 10}, {-40, 92, 3, 0},
        {0, 85, 2, 0},  {0, -5, 0, 0},  {0, 500, 4, 0},  // above and below the window
    };
    for (const auto& c : cases) {
        int line = -1, offset = -1;
        m.model.translate_xy_to_line_and_offset(c.x, c.y, &line, &offset);
        EXPECT_EQ(line, c.line) << c.x << "," << c.y;
        EXPECT_EQ(offset, c.offset) << c.x << "," << c.y;
    }
    m.model.top_anchored = 1;
    m.model.set_scroll_line(1);
    int line = -1, offset = -1;
    m.model.translate_xy_to_line_and_offset(0, 15, &line, &offset);
    EXPECT_EQ(line, 2);
}

// ---- selection and links -------------------------------------------------------------------------

std::string selected(zorn_textctrl_model* model, int anchor_line, int anchor_offset, int cursor_line,
                     int cursor_offset) {
    model->anchor_line = anchor_line;
    model->anchor_offset = anchor_offset;
    model->cursor_line = cursor_line;
    model->cursor_offset = cursor_offset;
    model->normalise_selection();
    std::string out;
    EXPECT_TRUE(model->selection_text(&out));
    return out;
}

TEST(text_model, copy_joins_wrapped_lines_and_keeps_real_line_feeds) {
    model_at m(100);
    m.model.add_text("hello world foo\nbar baz\n");
    ASSERT_EQ(lines_of(m.model), (lines{"hello ", "world foo", "bar baz", ""}));
    EXPECT_EQ(selected(&m.model, 0, 0, 2, 2), "hello world foo\nbar");
    EXPECT_EQ(selected(&m.model, 2, 2, 0, 0), "hello world foo\nbar");  // dragged backwards
    EXPECT_EQ(selected(&m.model, 1, 6, 1, 6), "f");
    EXPECT_EQ(selected(&m.model, 0, 4, 1, 2), "o wor");
    // A selection that reaches a missing line copies nothing.
    m.model.selection_end_line = 9;
    std::string out = "untouched";
    EXPECT_FALSE(m.model.selection_text(&out));
    EXPECT_TRUE(out.empty());
}

TEST(text_model, link_under_an_offset_of_a_line) {
    model_at m(100000);
    m.model.add_text("see (www.example.com/a) now\n");
    zorn_fixed_string url;
    int first = 0, last = 0;
    ASSERT_TRUE(m.model.url_at(0, 8, &url, &first, &last));
    EXPECT_STREQ(url.c_str(), "www.example.com/a");
    EXPECT_EQ(first, 5);
    EXPECT_EQ(last, 21);
    EXPECT_FALSE(m.model.url_at(0, 1, &url, &first, &last));
    EXPECT_FALSE(m.model.url_at(7, 1, &url, &first, &last));
}

}  // namespace
