#include "base/words.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <utility>

#include "base/fixed_string.h"
#include "tests/support/case_file.h"
#include "tests/support/log_capture.h"

namespace {

// Offset of a walking result inside its text, or -1 for null.
long offset_in(const char* text, const char* result) { return result ? result - text : -1; }

TEST(words_walk, next_arg_next_arg_eol_and_last_arg) {
    for (const case_row& r : read_cases("base/words_cases.txt", "walk")) {
        SCOPED_TRACE(r.where);
        const char* text = r.text(1);
        EXPECT_EQ(offset_in(text, next_arg(text)), r.number(2));
        EXPECT_EQ(offset_in(text, next_arg_eol(text)), r.number(3));
        EXPECT_EQ(offset_in(text, last_arg(text)), r.number(4));
    }
    log_capture log(3);
    EXPECT_EQ(next_arg(nullptr), nullptr);
    EXPECT_EQ(next_arg_eol(nullptr), nullptr);
    EXPECT_EQ(last_arg(nullptr), nullptr);
    EXPECT_EQ(log.text(),
              "Error in next_arg(), NULL pointer passed in.\n"
              "Error in next_arg_eol(), NULL pointer passed in.\n"
              "Error in last_arg(), NULL pointer passed in.\n");
}

// The comparing functions by their name in the cases file.
int compare(const std::string& fn, const char* a, const char* b, int n) {
    if (fn == "equal") return word_equal(a, b) + word_equal(b, a);  // 2 when equal both ways
    if (fn == "prefix") return word_prefix_match(a, b);
    if (fn == "abbrev") return word_abbrev_match(a, b, n);
    if (fn == "option") return option_equal(a, b);
    if (fn == "glob") return glob_match(a, b);
    if (fn == "in_list") return word_in_list(a, b);
    if (fn == "has_word") return list_has_word(a, b);
    if (fn == "has_all") return list_has_all_words(a, b);
    if (fn == "has_prefix") return list_has_prefix(a, b);
    if (fn == "all_prefixes") return list_has_all_prefixes(a, b);
    if (fn == "has_abbrev") return list_has_abbrev(a, b, n);
    if (fn == "integer") {
        int value = 1234;
        const bool ok = parse_integer(a, &value);
        EXPECT_EQ(parse_integer(a, nullptr), ok);
        return ok ? value : (value == 1234 ? -1000 : -2000);  // -2000: refused, yet the value changed
    }
    ADD_FAILURE() << "unknown function " << fn;
    return -1;
}

TEST(words_compare, comparing_functions) {
    for (const case_row& r : read_cases("base/words_cases.txt", "compare")) {
        EXPECT_EQ(compare(r.str(1), r.text(2), r.text(3), r.number(4)), r.number(5)) << r.where;
    }
}

TEST(words_compare, words_of_the_limit_length_match_nothing) {
    const std::string below(zorn_word_compare_limit - 1, 'x');
    const std::string at(zorn_word_compare_limit, 'x');
    EXPECT_TRUE(word_equal(below.c_str(), below.c_str()));
    EXPECT_FALSE(word_equal(at.c_str(), at.c_str()));
    EXPECT_EQ(word_prefix_match(below.c_str(), below.c_str()), zorn_word_compare_limit - 1);
    EXPECT_EQ(word_prefix_match(at.c_str(), at.c_str()), 0);
    EXPECT_EQ(word_abbrev_match(at.c_str(), at.c_str(), 1), 0);
    EXPECT_FALSE(word_in_list(at.c_str(), at.c_str()));
    EXPECT_FALSE(option_equal(("-" + at).c_str(), at.c_str()));
}

TEST(words_keywords, extract_keyword) {
    for (const case_row& r : read_cases("base/words_cases.txt", "extract")) {
        SCOPED_TRACE(r.where);
        int flags = 0;
        for (const auto& [name, flag] : {std::pair<const char*, int>{"first", keyword_first}, {"last", keyword_last},
                                         {"anywhere", keyword_anywhere}, {"abbrev", keyword_abbrev}}) {
            if ((" " + r.str(3) + " ").find(std::string(" ") + name + " ") != std::string::npos) flags |= flag;
        }
        zorn_fixed_string out("stale");
        EXPECT_EQ(extract_keyword(r.text(1), &out, r.text(2), flags), r.number(4) != 0);
        EXPECT_STREQ(out.c_str(), r.text(5));
    }
}

TEST(words_keywords, strip_keyword_force_flag_and_remove_words) {
    zorn_fixed_string work;
    for (const case_row& c : read_cases("base/words_cases.txt", "strip")) {
        SCOPED_TRACE(c.where);
        bool found = !c.number(3);
        const char* result = strip_keyword(c.text(1), &work, c.text(2), &found);
        EXPECT_EQ(found, c.number(3) != 0);
        EXPECT_STREQ(result, c.str(4) == "<same>" ? c.text(1) : c.text(4));
        EXPECT_TRUE(c.str(4) != "<same>" || result == c.text(1));
    }
    for (const case_row& c : read_cases("base/words_cases.txt", "force")) {
        bool found = !c.number(2);
        EXPECT_STREQ(strip_force_flag(c.text(1), &work, &found), c.text(3)) << c.where;
        EXPECT_EQ(found, c.number(2) != 0) << c.where;
    }
    for (const case_row& c : read_cases("base/words_cases.txt", "remove")) {
        zorn_fixed_string out(c.text(1));
        remove_words(c.text(2), &out, c.text(3));
        EXPECT_STREQ(out.c_str(), c.text(4)) << c.where;
    }
}

TEST(words_other, safe_strcpy_limits) {
    char dest[8];
    EXPECT_TRUE(safe_strcpy(dest, "hello", 6));
    EXPECT_STREQ(dest, "hello");
    EXPECT_TRUE(safe_strcpy(dest, "", 1));
    EXPECT_STREQ(dest, "");

    log_capture log(3);
    EXPECT_FALSE(safe_strcpy(dest, "hello", 5));
    EXPECT_STREQ(dest, "hell");
    EXPECT_FALSE(safe_strcpy(dest, "x", 1));
    EXPECT_STREQ(dest, "");
    std::memset(dest, 'z', sizeof dest);
    EXPECT_FALSE(safe_strcpy(dest, "x", 0));
    EXPECT_FALSE(safe_strcpy(dest, "x", -1));
    EXPECT_EQ(dest[0], 'z');  // no room means no write at all
    EXPECT_FALSE(safe_strcpy(dest, nullptr, sizeof dest));
    EXPECT_STREQ(dest, "");
    EXPECT_FALSE(safe_strcpy(nullptr, "x", 4));
    EXPECT_EQ(log.text(),
              "Error in safe_strcpy(), src overflow. String was: ->hello<-\n"
              "Error in safe_strcpy(), src overflow. String was: ->x<-\n"
              "Error in safe_strcpy(), dest too short.\n"
              "Error in safe_strcpy(), dest too short.\n"
              "Error in safe_strcpy(), NULL src.\n"
              "Error in safe_strcpy(), NULL dest.\n");
}

TEST(words_other, add_remove_keyword_line) {
    for (const case_row& c : read_cases("base/words_cases.txt", "toggle")) {
        SCOPED_TRACE(c.where);
        char* list = c.text(1) ? strdup(c.text(1)) : nullptr;
        EXPECT_STREQ(add_remove_keyword_line(c.text(2), &list), c.text(3));
        EXPECT_STREQ(list, c.text(4));
        std::free(list);
    }
    log_capture log(3);
    char* list = strdup("a");
    EXPECT_EQ(add_remove_keyword_line(nullptr, &list), nullptr);
    EXPECT_EQ(add_remove_keyword_line("a", nullptr), nullptr);
    EXPECT_STREQ(list, "a");
    std::free(list);
    EXPECT_EQ(log.text(),
              "Error in add_remove_keyword_line(), null dest?\n"
              "Error in add_remove_keyword_line(), null dest?\n");
}

std::string hex_of(const unsigned char* bytes, int count) {
    std::string hex;
    char pair[3];
    for (int i = 0; i < count; ++i) hex += (std::snprintf(pair, sizeof pair, "%02x", bytes[i]), pair);
    return hex;
}

TEST(words_base64, vectors_decode_stops_and_every_byte_value_round_trip) {
    for (const case_row& c : read_cases("base/words_cases.txt", "base64")) {
        SCOPED_TRACE(c.where);
        zorn_fixed_string encoded("prefix:");
        EXPECT_TRUE(base64_append_text(&encoded, c.text(1)));
        EXPECT_EQ(std::string(encoded.c_str()), "prefix:" + c.str(2));
        zorn_fixed_string decoded("stale");
        EXPECT_EQ(base64_decode_string(&decoded, c.text(2)), static_cast<int>(c.str(1).size()));
        EXPECT_EQ(decoded.c_str(), c.str(1));
    }
    for (const case_row& c : read_cases("base/words_cases.txt", "decode")) {
        unsigned char out[8];
        const int count = base64_decode(out, c.number(1), c.text(2));
        EXPECT_EQ(count, c.number(3)) << c.where;
        EXPECT_EQ(hex_of(out, count), c.str(4)) << c.where;
    }
    unsigned char data[256];
    for (int i = 0; i < 256; ++i) data[i] = static_cast<unsigned char>(255 - i);
    for (int length : {1, 2, 3, 4, 254, 255, 256}) {
        SCOPED_TRACE(length);
        zorn_fixed_string encoded;
        ASSERT_TRUE(base64_append(&encoded, data, length));
        EXPECT_EQ(encoded.size(), (length + 2) / 3 * 4);
        unsigned char back[256];
        ASSERT_EQ(base64_decode(back, sizeof back, encoded.c_str()), length);
        EXPECT_EQ(std::memcmp(back, data, static_cast<size_t>(length)), 0);
    }
}

TEST(words_base64, encoding_that_does_not_fit_fills_the_string_and_says_so) {
    const unsigned char data[3] = {'a', 'b', 'c'};
    zorn_fixed_string room(std::string(zorn_fixed_string::capacity - 1 - 4, 'x').c_str());
    EXPECT_TRUE(base64_append(&room, data, 3));
    EXPECT_EQ(room.size(), zorn_fixed_string::capacity - 1);
    zorn_fixed_string tight(std::string(zorn_fixed_string::capacity - 1 - 3, 'x').c_str());
    EXPECT_FALSE(base64_append(&tight, data, 3));
    EXPECT_EQ(tight.size(), zorn_fixed_string::capacity - 1);
    EXPECT_FALSE(base64_append_text(&tight, nullptr));
}

}  // namespace
