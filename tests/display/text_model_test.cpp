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

// ---- word wrap -------------------------------------------------------------------------------

struct wrap_case {
    const char* name;
    int width;
    std::vector<std::string> texts;  // one add_text each
    lines expected;
};

class wrap_test : public ::testing::TestWithParam<wrap_case> {};

TEST_P(wrap_test, breaks_lines_where_expected) {
    const wrap_case& c = GetParam();
    model_at m(c.width);
    for (const std::string& t : c.texts) m.model.add_text(t.c_str());
    EXPECT_EQ(lines_of(m.model), c.expected);
}

INSTANTIATE_TEST_SUITE_P(
    cases, wrap_test,
    ::testing::Values(
        // Ten characters of 10 pixels: exactly W is broken, W - 1 wider than the text is not.
        wrap_case{"exactly_w_breaks", 100, {"aaaaaaaaaa"}, {"aaaaaaaaa", "a"}},
        wrap_case{"one_pixel_more_fits", 101, {"aaaaaaaaaa"}, {"aaaaaaaaaa"}},
        wrap_case{"break_behind_last_blank", 100, {"hello world foo"}, {"hello ", "world foo"}},
        wrap_case{"long_word_cut_again_and_again", 50, {"abcdefghijkl"}, {"abcd", "efgh", "ijkl"}},
        wrap_case{"long_word_behind_a_blank", 50, {"ab cdefghij"}, {"ab ", "cdef", "ghij"}},
        // The blank at index 9 reaches W itself: the break falls at the blank before it.
        wrap_case{"blank_that_reaches_w", 100, {"abcd efgh x"}, {"abcd ", "efgh x"}},
        wrap_case{"narrower_than_first_character", 5, {"abc def"}, {"abc def"}},
        wrap_case{"overflow_only_after_later_chunk", 100, {"aaaa ", "bbbb ", "cc"}, {"aaaa ", "bbbb cc"}},
        wrap_case{"line_feed_resets_width", 50, {"abc\nabcd"}, {"abc", "abcd"}},
        wrap_case{"carriage_return_has_no_width", 50, {"ab\r\rcd"}, {"ab\r\rcd"}},
        wrap_case{"many_lines_in_one_call", 40, {"aa bb cc\n"}, {"aa ", "bb ", "cc", ""}},
        // A blank that overflows can't end the upper line: the word before it is cut off alone.
        wrap_case{"blank_overflows_at_once", 30, {"aa bb"}, {"aa", " ", "bb"}}),
    [](const ::testing::TestParamInfo<wrap_case>& info) { return std::string(info.param.name); });

TEST(text_model, break_in_first_of_two_chunks_moves_the_second_whole) {
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
}

TEST(text_model, no_wrap_keeps_long_lines) {
    model_at m(30);
    m.model.set_wrap(0);
    m.model.add_text("aaaa bbbb cccc");
    EXPECT_EQ(lines_of(m.model), (lines{"aaaa bbbb cccc"}));
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

// ---- re-wrap ---------------------------------------------------------------------------------

TEST(text_model, rewrap_moves_breaks_but_keeps_real_line_ends) {
    model_at m(1000);
    m.model.add_text("aaaa bbbb cccc dddd\nee ff\n");
    EXPECT_EQ(lines_of(m.model), (lines{"aaaa bbbb cccc dddd", "ee ff", ""}));
    ASSERT_TRUE(m.model.resize(60, 100));
    EXPECT_EQ(lines_of(m.model), (lines{"aaaa ", "bbbb ", "cccc ", "dddd", "ee ff", ""}));
    std::vector<int> hard;
    for (int i = 0; i < m.model.line_count(); ++i) hard.push_back(m.model.line_hard_newline(i) ? 1 : 0);
    EXPECT_EQ(hard, (std::vector<int>{0, 0, 0, 1, 1, 0}));
    ASSERT_TRUE(m.model.resize(1000, 100));
    EXPECT_EQ(lines_of(m.model), (lines{"aaaa bbbb cccc dddd", "ee ff", ""}));
}

TEST(text_model, rewraps_only_when_the_width_changes) {
    model_at m(100, 50);
    m.model.add_text("abc");
    EXPECT_FALSE(m.model.resize(100, 80));
    EXPECT_EQ(m.model.window_height(), 80);
    EXPECT_TRUE(m.model.resize(90, 80));
    EXPECT_EQ(m.model.last_width, 90);
}

TEST(text_model, rewrap_clears_the_selection) {
    model_at m(100);
    m.model.add_text("hello\n");
    m.model.select_range(0, 0, 2);
    m.model.resize(50, 100);
    EXPECT_FALSE(m.model.has_selection());
}

// ---- storage -----------------------------------------------------------------------------------

TEST(text_model, leading_line_feeds_of_the_first_text_are_skipped) {
    model_at m(1000);
    m.model.add_text("\n\nfirst\n\nsecond");
    EXPECT_EQ(lines_of(m.model), (lines{"first", "", "second"}));
    m.model.add_text("\n\n");
    EXPECT_EQ(m.model.line_count(), 5);
    m.model.clear_text();
    m.model.add_text("\n\nagain");
    EXPECT_EQ(lines_of(m.model), (lines{"again"}));
}

TEST(text_model, an_empty_first_text_uses_up_the_skip) {
    model_at m(1000);
    m.model.add_text("");
    m.model.add_text("\nx");
    EXPECT_EQ(lines_of(m.model), (lines{"", "x"}));
}

struct tab_case {
    std::vector<std::string> texts;
    std::string expected_raw;
};

class tab_test : public ::testing::TestWithParam<tab_case> {};

TEST_P(tab_test, expands_to_the_next_multiple_of_eight) {
    model_at m(100000);
    for (const std::string& t : GetParam().texts) m.model.add_text(t.c_str());
    EXPECT_EQ(m.model.raw_text(), GetParam().expected_raw);
}

INSTANTIATE_TEST_SUITE_P(
    cases, tab_test,
    ::testing::Values(tab_case{{"a\tb"}, "a       b"},
                      tab_case{{"abcdefgh\tx"}, "abcdefgh        x"},
                      tab_case{{"\tx"}, "        x"},
                      tab_case{{"abc\r\tx"}, "abc\r        x"},
                      tab_case{{"abc\n\tx"}, "abc\n        x"},
                      // The column is counted over the stream, not per call.
                      tab_case{{"abc", "\tx"}, "abc     x"},
                      // A folded high byte counts as one column.
                      tab_case{{"\xe9\tx"}, "e       x"}));

TEST(text_model, tab_column_counts_past_the_chunk_limit) {
    model_at m(100000);
    m.model.set_wrap(0);
    const std::string big(7000, 'a');
    m.model.add_text(big.c_str());
    EXPECT_EQ(m.model.raw_text().size(), 5999u);
    EXPECT_EQ(m.model.tab_column, 7000);
    m.model.add_text("\tx");  // 7000 -> 7008
    EXPECT_EQ(m.model.raw_text().substr(5999), "        x");
}

TEST(text_model, chunk_limit_cuts_inside_a_tab) {
    model_at m(100000);
    const std::string text = std::string(5995, 'a') + "\tzz";
    m.model.add_text(text.c_str());
    EXPECT_EQ(m.model.raw_text(), std::string(5995, 'a') + "    ");
}

TEST(text_model, high_bytes_are_folded) {
    struct fold {
        unsigned char byte;
        char expected;
    };
    const fold folds[] = {{0x80, 'E'}, {0x81, ' '}, {0x83, 'f'}, {0x8d, ' '}, {0x8f, ' '}, {0x90, ' '},
                          {0x93, '"'}, {0x99, ' '}, {0x9f, 'Y'}, {0xa0, ' '}, {0xa6, '|'}, {0xae, 'R'},
                          {0xb2, '2'}, {0xbc, ' '}, {0xbf, '?'}, {0xc7, 'C'}, {0xd0, 'D'}, {0xd7, 'x'},
                          {0xdf, 'S'}, {0xe9, 'e'}, {0xf1, 'n'}, {0xf7, '/'}, {0xff, 'y'}};
    for (const fold& f : folds) {
        model_at m(1000);
        const char text[] = {static_cast<char>(f.byte), '\0'};
        m.model.add_text(text);
        EXPECT_EQ(m.model.raw_text(), std::string(1, f.expected)) << std::hex << int(f.byte);
    }
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
    std::string text;
    for (int i = 0; i < 65536; ++i) {
        text = std::to_string(i) + "\n";
        m.model.add_text(text.c_str());
    }
    EXPECT_EQ(m.model.line_count(), 65537);
    EXPECT_EQ(m.model.line_capacity(), 131072u);
    std::string line;
    m.model.line_text(0, &line);
    EXPECT_EQ(line, "0");
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

TEST(text_model, scroll_line_follows_new_lines_unless_frozen_or_top_anchored) {
    model_at m(1000);
    m.model.add_text("a\nb\nc");
    EXPECT_EQ(m.model.scroll_line, 2);
    m.model.frozen = 1;
    m.model.add_text("\nd\ne");
    EXPECT_EQ(m.model.scroll_line, 2);
    EXPECT_EQ(m.model.current_line, 4);

    model_at top(1000);
    top.model.top_anchored = 1;
    top.model.add_text("a\nb\nc");
    EXPECT_EQ(top.model.scroll_line, 0);
}

TEST(text_model, scroll_limits_and_info) {
    model_at m(1000, 100);  // 10 visible lines
    for (int i = 0; i < 30; ++i) m.model.add_text("x\n");
    EXPECT_EQ(m.model.current_line, 30);
    m.model.set_scroll_line(100);
    EXPECT_EQ(m.model.scroll_line, 40);
    m.model.set_scroll_line(-5);
    EXPECT_EQ(m.model.scroll_line, 0);
    EXPECT_EQ(m.model.set_top_line(5), 15);
    EXPECT_EQ(m.model.scroll_line, 15);
    int position = 0, range = 0, page = 0;
    m.model.get_scroll_info(&position, &range, &page);
    EXPECT_EQ(position, 5);
    EXPECT_EQ(range, 30);
    EXPECT_EQ(page, 10);

    m.model.top_anchored = 1;
    m.model.set_scroll_line(100);
    EXPECT_EQ(m.model.scroll_line, 30);
    EXPECT_EQ(m.model.set_top_line(7), 7);
    m.model.get_scroll_info(&position, &range, &page);
    EXPECT_EQ(position, 7);
    EXPECT_EQ(range, 41);
}

TEST(text_model, visible_line_count_survives_a_missing_font) {
    zorn_textctrl_model m(100, 100);
    EXPECT_EQ(m.get_visible_line_count(), 20);
    set_uniform_widths(&m, 10, 30);
    m.resize(100, 20);
    EXPECT_EQ(m.get_visible_line_count(), 1);
}

TEST(text_model, translates_points_to_lines_and_offsets) {
    model_at m(1000, 100);
    m.model.add_text("l0\nl1\nl2\nline three\n");  // scroll_line 4, the empty open line
    m.model.set_scroll_line(3);
    int line = -1, offset = -1;
    m.model.translate_xy_to_line_and_offset(0, 95, &line, &offset);  // bottom row
    EXPECT_EQ(line, 3);
    EXPECT_EQ(offset, 0);
    m.model.translate_xy_to_line_and_offset(25, 92, &line, &offset);
    EXPECT_EQ(offset, 2);
    m.model.translate_xy_to_line_and_offset(30, 92, &line, &offset);
    EXPECT_EQ(offset, 2);
    m.model.translate_xy_to_line_and_offset(31, 92, &line, &offset);
    EXPECT_EQ(offset, 3);
    m.model.translate_xy_to_line_and_offset(5000, 92, &line, &offset);
    EXPECT_EQ(offset, 10);
    m.model.translate_xy_to_line_and_offset(-40, 92, &line, &offset);
    EXPECT_EQ(offset, 0);
    m.model.translate_xy_to_line_and_offset(0, 85, &line, &offset);
    EXPECT_EQ(line, 2);
    m.model.translate_xy_to_line_and_offset(0, -5, &line, &offset);  // above the window
    EXPECT_EQ(line, 0);
    m.model.translate_xy_to_line_and_offset(0, 500, &line, &offset);
    EXPECT_EQ(line, 4);

    m.model.top_anchored = 1;
    m.model.set_scroll_line(1);
    m.model.translate_xy_to_line_and_offset(0, 15, &line, &offset);
    EXPECT_EQ(line, 2);
}

// ---- selection ---------------------------------------------------------------------------------

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
    // Dragged backwards: the same text.
    EXPECT_EQ(selected(&m.model, 2, 2, 0, 0), "hello world foo\nbar");
    EXPECT_EQ(selected(&m.model, 0, 3, 0, 4), "lo");
    EXPECT_EQ(selected(&m.model, 1, 6, 1, 6), "f");
    EXPECT_EQ(selected(&m.model, 0, 4, 1, 2), "o wor");
}

TEST(text_model, copy_of_a_missing_line_copies_nothing) {
    model_at m(100);
    m.model.add_text("abc");
    m.model.selection_start_line = 0;
    m.model.selection_end_line = 3;
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

TEST(text_model, max_char_size) {
    zorn_textctrl_model m;
    int widths[256] = {};
    widths['W'] = 12;
    widths['i'] = 3;
    widths[200] = 50;  // outside 32..126: forced to 0
    m.set_metrics(widths, 14);
    int w = 0, h = 0;
    m.get_max_char_size(&w, &h);
    EXPECT_EQ(w, 12);
    EXPECT_EQ(h, 14);
    m.get_max_char_size(nullptr, nullptr);
}

}  // namespace
