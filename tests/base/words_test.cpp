#include "base/words.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <fstream>
#include <sstream>
#include <string>

#include "base/fixed_string.h"
#include "config/debug_log.h"
#include "tests/support/log_capture.h"

namespace {

// Offset of a walking result inside its text, or -1 for null.
long offset_in(const char* text, const char* result) { return result ? result - text : -1; }

TEST(words_walk, next_arg_and_next_arg_eol) {
    struct row {
        const char* text;
        long next;
        long next_eol;
    };
    const row rows[] = {
        {"a", -1, -1},          {"a  ", -1, -1},      {"  a\tb", 4, -1},  {"a b c", 2, 2},
        {"", -1, -1},           {"a\tb c", 2, 4},     {"a\nb", 2, -1},    {"a \n", -1, -1},
        {"  one   two", 8, 8},  {"\t\n x", -1, -1},   {"x\n\ny", 3, -1},  {"ab \tc", 4, 3},
    };
    for (const row& r : rows) {
        SCOPED_TRACE(r.text);
        EXPECT_EQ(offset_in(r.text, next_arg(r.text)), r.next);
        EXPECT_EQ(offset_in(r.text, next_arg_eol(r.text)), r.next_eol);
    }
}

TEST(words_walk, last_arg) {
    struct row {
        const char* text;
        long last;
    };
    // One word, or none, hands back the text itself with its leading blanks.
    const row rows[] = {{"a b c", 4}, {"  one", 0}, {"", 0}, {"a b  ", 2}, {"x\ty\nz", 4}, {"   ", 0}};
    for (const row& r : rows) {
        SCOPED_TRACE(r.text);
        EXPECT_EQ(offset_in(r.text, last_arg(r.text)), r.last);
    }
}

TEST(words_walk, null_text_is_logged_at_verbose_level) {
    log_capture log(3);
    EXPECT_EQ(next_arg(nullptr), nullptr);
    EXPECT_EQ(next_arg_eol(nullptr), nullptr);
    EXPECT_EQ(last_arg(nullptr), nullptr);
    EXPECT_EQ(log.text(),
              "Error in next_arg(), NULL pointer passed in.\n"
              "Error in next_arg_eol(), NULL pointer passed in.\n"
              "Error in last_arg(), NULL pointer passed in.\n");
}

TEST(words_compare, word_equal) {
    struct row {
        const char* a;
        const char* b;
        bool equal;
    };
    const row rows[] = {
        {"Foo bar", "foo", true}, {"foo", "food", false}, {"a\tb", "A", true},  {"x\ny", "X z", true},
        {"", "", true},           {"", "a", false},       {"[", "{", false},    {"@", "`", false},
        {"\xC9", "\xE9", false},  {"ZZ", "zz", true},     {"'a'", "'A'", true}, {"ab", "a b", false},
    };
    for (const row& r : rows) {
        SCOPED_TRACE(std::string(r.a) + " | " + r.b);
        EXPECT_EQ(word_equal(r.a, r.b), r.equal);
        EXPECT_EQ(word_equal(r.b, r.a), r.equal);
    }
    EXPECT_FALSE(word_equal(nullptr, "a"));
    EXPECT_FALSE(word_equal("a", nullptr));
    EXPECT_FALSE(word_equal(nullptr, nullptr));
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

TEST(words_compare, word_prefix_match) {
    struct row {
        const char* short_text;
        const char* long_text;
        int length;
    };
    const row rows[] = {
        {"HTTP/", "http/1.1 200", 5}, {"ab", "a b", 0}, {"", "abc", 0},     {"abc", "ab", 0},
        {"ab cd", "abx", 2},          {"a\tzz", "A", 1}, {"abc", "abc", 3}, {"b", "abc", 0},
    };
    for (const row& r : rows) {
        SCOPED_TRACE(std::string(r.short_text) + " | " + r.long_text);
        EXPECT_EQ(word_prefix_match(r.short_text, r.long_text), r.length);
    }
    EXPECT_EQ(word_prefix_match(nullptr, "a"), 0);
    EXPECT_EQ(word_prefix_match("a", nullptr), 0);
}

TEST(words_compare, word_abbrev_match_minimum) {
    struct row {
        const char* short_text;
        const char* full;
        int minimum;
        int length;
    };
    // The minimum counts the whole word, "//" included.
    const row rows[] = {
        {"//he", "//help", 3, 4},        {"//h", "//help", 3, 3},     {"//", "//help", 3, 0},
        {"//h", "//help", 4, 0},         {"//quit", "//quit", 6, 6},  {"//qui", "//quit", 6, 0},
        {"ab", "ab", 5, 2},              {"ab", "ab cd", 5, 2},       {"ab", "ab\tcd", 5, 2},
        {"x", "xyz", 0, 1},              {"x", "xyz", -3, 1},         {"//HELP now", "//help", 3, 6},
        {"//helpx", "//help", 3, 0},     {"", "abc", 0, 0},           {"//he", "//help", 99, 0},
    };
    for (const row& r : rows) {
        SCOPED_TRACE(std::string(r.short_text) + " | " + r.full + " | " + std::to_string(r.minimum));
        EXPECT_EQ(word_abbrev_match(r.short_text, r.full, r.minimum), r.length);
    }
}

TEST(words_compare, option_equal) {
    struct row {
        const char* text;
        const char* name;
        bool equal;
    };
    const row rows[] = {
        {"-force", "-force", true},   {"--force", "-force", true},  {"-force", "force", true},
        {"--force", "force", true},   {"-Force", "-force", false},  {"-force now", "force", true},
        {"force", "force", false},    {"-forc", "-force", false},   {"-forcex", "-force", false},
        {"-force\tx", "force", false}, {"-force", "--force", false}, {"", "force", false},
    };
    for (const row& r : rows) {
        SCOPED_TRACE(std::string(r.text) + " | " + r.name);
        EXPECT_EQ(option_equal(r.text, r.name), r.equal);
    }
    EXPECT_FALSE(option_equal(nullptr, "x"));
    EXPECT_FALSE(option_equal("-x", nullptr));
}

TEST(words_compare, parse_integer) {
    struct row {
        const char* text;
        bool ok;
        int value;
    };
    const row rows[] = {
        {"42", true, 42},   {"-7", true, -7},  {"+5", true, 5},   {"+x", true, 0},     {"-x", false, 0},
        {"x", false, 0},    {"", false, 0},    {"12abc", true, 12}, {" 1", false, 0},  {"0", true, 0},
    };
    for (const row& r : rows) {
        SCOPED_TRACE(r.text);
        int value = 1234;
        EXPECT_EQ(parse_integer(r.text, &value), r.ok);
        EXPECT_EQ(value, r.ok ? r.value : 1234);
        EXPECT_EQ(parse_integer(r.text, nullptr), r.ok);
    }
    EXPECT_FALSE(parse_integer(nullptr, nullptr));
}

TEST(words_lists, membership) {
    EXPECT_TRUE(word_in_list("post", "PUT POST"));
    EXPECT_TRUE(word_in_list("post now", "  get   post  "));
    EXPECT_FALSE(word_in_list("pos", "PUT POST"));
    EXPECT_FALSE(word_in_list("", "a b"));
    EXPECT_FALSE(word_in_list("a", ""));
    EXPECT_FALSE(word_in_list("a", nullptr));
    EXPECT_FALSE(word_in_list(nullptr, "a"));
    EXPECT_TRUE(list_has_word("PUT POST", "put"));

    EXPECT_TRUE(list_has_all_words("a b c", "c  a"));
    EXPECT_FALSE(list_has_all_words("a b", "a d"));
    EXPECT_TRUE(list_has_all_words("a b", ""));
    EXPECT_FALSE(list_has_all_words("a b", nullptr));

    EXPECT_TRUE(list_has_prefix("alpha beta", "BE"));
    EXPECT_FALSE(list_has_prefix("alpha beta", "bx"));
    EXPECT_FALSE(list_has_prefix("alpha beta", "betas"));
    EXPECT_FALSE(list_has_prefix("alpha", ""));
    EXPECT_TRUE(list_has_all_prefixes("alpha beta", "al be"));
    EXPECT_FALSE(list_has_all_prefixes("alpha beta", "al ga"));
    EXPECT_TRUE(list_has_all_prefixes("alpha", nullptr));

    EXPECT_FALSE(list_has_abbrev("he", "help hello", 3));
    EXPECT_TRUE(list_has_abbrev("hel", "help hello", 3));
    EXPECT_TRUE(list_has_abbrev("he", "help he", 3));
    EXPECT_FALSE(list_has_abbrev("he", nullptr, 3));
}

TEST(words_keywords, extract_keyword) {
    struct row {
        const char* text;
        const char* keyword;
        int flags;
        bool found;
        const char* out;
    };
    const int first = keyword_first, last = keyword_last, anywhere = keyword_anywhere, abbrev = keyword_abbrev;
    const row rows[] = {
        {"-force a b", "-force", first, true, "a b"},
        {"  -force   a  b", "-force", first, true, "a  b"},
        {"a b -force", "-force", first, false, ""},
        {"a b -force", "-force", last, true, "a b"},
        {"a  b  -force  ", "-force", last, true, "a  b"},
        {"a -force b", "-force", first | last, false, ""},
        {"a  x  -force  b  c", "-force", anywhere, true, "a x b  c"},
        {"--force a", "-force", first, true, "a"},
        {"-f a", "-force", first | abbrev, true, "a"},
        {"-f a", "-force", first, false, ""},
        {"- a", "-force", first | abbrev, false, ""},
        {"- a", "-", first | abbrev, true, "a"},
        {"--f a", "-force", first | abbrev, true, "a"},
        {"-- a", "-force", first | abbrev, false, ""},
        {"-forcex a", "-force", first | abbrev, false, ""},
        {"x", "x", last, true, ""},
        {"x", "x", first, true, ""},
        {"a b c", "z", first | last | anywhere, false, ""},
        {"FORCE here", "force", first, true, "here"},
        {"a -FO b", "-force", anywhere | abbrev, true, "a b"},
        {"a fo b", "force", anywhere, false, ""},
        {"", "x", anywhere, false, ""},
    };
    for (const row& r : rows) {
        SCOPED_TRACE(std::string(r.text) + " | " + r.keyword + " | " + std::to_string(r.flags));
        zorn_fixed_string out("stale");
        EXPECT_EQ(extract_keyword(r.text, &out, r.keyword, r.flags), r.found);
        EXPECT_STREQ(out.c_str(), r.out);
    }
    zorn_fixed_string out("stale");
    EXPECT_FALSE(extract_keyword(nullptr, &out, "x", anywhere));
    EXPECT_STREQ(out.c_str(), "");
    EXPECT_FALSE(extract_keyword("x", &out, nullptr, anywhere));
}

TEST(words_keywords, strip_keyword_and_force_flag) {
    zorn_fixed_string work;
    bool found = true;
    EXPECT_STREQ(strip_keyword("a -f b", &work, "-force", &found), "a b");
    EXPECT_TRUE(found);
    EXPECT_EQ(strip_keyword("-force", &work, "-force", &found), nullptr);
    EXPECT_TRUE(found);

    const char* text = "a b";
    EXPECT_EQ(strip_keyword(text, &work, "-force", &found), text);
    EXPECT_FALSE(found);
    found = true;
    EXPECT_EQ(strip_keyword("", &work, "-force", &found), nullptr);
    EXPECT_FALSE(found);
    EXPECT_EQ(strip_keyword(nullptr, &work, "-force", &found), nullptr);

    EXPECT_STREQ(strip_force_flag("--force now", &work, &found), "now");
    EXPECT_TRUE(found);
    EXPECT_STREQ(strip_force_flag("get - sword", &work, &found), "get - sword");
    EXPECT_FALSE(found);
}

TEST(words_keywords, remove_words_appends_then_removes_every_occurrence) {
    zorn_fixed_string out("x ");
    remove_words("a b A c a", &out, "a c");
    EXPECT_STREQ(out.c_str(), "x b");

    out.clear();
    remove_words("one two one three", &out, "one");
    EXPECT_STREQ(out.c_str(), "two three");

    out.clear();
    remove_words("keep", &out, nullptr);
    EXPECT_STREQ(out.c_str(), "keep");
}

TEST(words_other, safe_strcpy_limits) {
    char dest[8];
    std::memset(dest, 'z', sizeof dest);
    EXPECT_TRUE(safe_strcpy(dest, "hello", 6));
    EXPECT_STREQ(dest, "hello");
    EXPECT_TRUE(safe_strcpy(dest, "", 1));
    EXPECT_STREQ(dest, "");

    log_capture log(3);
    std::memset(dest, 'z', sizeof dest);
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

TEST(words_other, glob_match) {
    struct row {
        const char* text;
        const char* pattern;
        bool match;
    };
    const row rows[] = {
        {"abc", "a*c", true},   {"abc", "*", true},         {"abc", "a**c", true},
        {"abc", "a*b", false},  {"", "*", true},            {"", "", true},
        {"a", "", false},       {"abc", "ABC", false},      {"abcbd", "a*bd", true},
        {"mississippi", "m*iss*ppi", true}, {"abc", "abc*", true}, {"ab", "abc*", false},
        {"abc", "*c*", true},   {"abc", "*x*", false},      {"abcabc", "*bc", true},
        {"a*c", "a*c", true},   {"abd", "a*c", false},      {"aaa", "a*a*a*a", false},
    };
    for (const row& r : rows) {
        SCOPED_TRACE(std::string(r.text) + " | " + r.pattern);
        EXPECT_EQ(glob_match(r.text, r.pattern), r.match);
    }
    EXPECT_FALSE(glob_match(nullptr, "*"));
    EXPECT_FALSE(glob_match("a", nullptr));
}

// Holds a malloc'd list as add_remove_keyword_line expects it, and frees it at the end.
struct owned_list {
    char* text = nullptr;
    explicit owned_list(const char* initial = nullptr) {
        if (initial) text = strdup(initial);
    }
    ~owned_list() { std::free(text); }
    std::string value() const { return text ? text : "<null>"; }
};

TEST(words_other, add_remove_keyword_line_toggles) {
    owned_list list;
    EXPECT_STREQ(add_remove_keyword_line("NULL", &list.text), "List is already empty.");
    EXPECT_STREQ(add_remove_keyword_line("a", &list.text), "Keyword added.");
    EXPECT_EQ(list.value(), "a");
    EXPECT_STREQ(add_remove_keyword_line("b and more", &list.text), "Keyword added.");
    EXPECT_EQ(list.value(), "b a");
    EXPECT_STREQ(add_remove_keyword_line("A", &list.text), "Keyword removed.");
    EXPECT_EQ(list.value(), "b");
    EXPECT_STREQ(add_remove_keyword_line("b", &list.text), "Keyword removed.");
    EXPECT_EQ(list.text, nullptr);

    owned_list repeated("a  b a");
    EXPECT_STREQ(add_remove_keyword_line("b", &repeated.text), "Keyword removed.");
    EXPECT_EQ(repeated.value(), "a a");
    EXPECT_STREQ(add_remove_keyword_line("a", &repeated.text), "Keyword removed.");
    EXPECT_EQ(repeated.text, nullptr);

    owned_list full("x y");
    EXPECT_STREQ(add_remove_keyword_line("null", &full.text), "List deleted.");
    EXPECT_EQ(full.text, nullptr);
}

TEST(words_other, add_remove_keyword_line_null_arguments) {
    log_capture log(3);
    owned_list list("a");
    EXPECT_EQ(add_remove_keyword_line(nullptr, &list.text), nullptr);
    EXPECT_EQ(add_remove_keyword_line("a", nullptr), nullptr);
    EXPECT_EQ(list.value(), "a");
    EXPECT_EQ(log.text(),
              "Error in add_remove_keyword_line(), null dest?\n"
              "Error in add_remove_keyword_line(), null dest?\n");
}

TEST(words_base64, rfc4648_vectors_round_trip) {
    const char* const vectors[][2] = {
        {"", ""},         {"f", "Zg=="},        {"fo", "Zm8="},       {"foo", "Zm9v"},
        {"foob", "Zm9vYg=="}, {"fooba", "Zm9vYmE="}, {"foobar", "Zm9vYmFy"},
    };
    for (const auto& v : vectors) {
        SCOPED_TRACE(v[0]);
        zorn_fixed_string encoded("prefix:");
        EXPECT_TRUE(base64_append_text(&encoded, v[0]));
        EXPECT_EQ(std::string(encoded.c_str()), std::string("prefix:") + v[1]);

        zorn_fixed_string decoded("stale");
        EXPECT_EQ(base64_decode_string(&decoded, v[1]), static_cast<int>(std::strlen(v[0])));
        EXPECT_STREQ(decoded.c_str(), v[0]);
    }
}

TEST(words_base64, every_byte_value_round_trips) {
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

TEST(words_base64, decode_stops_and_capacity) {
    unsigned char out[8];
    EXPECT_EQ(base64_decode(out, 6, "Zm9vYmFy"), 6);
    EXPECT_EQ(base64_decode(out, 5, "Zm9vYmFy"), 0);  // input left over
    EXPECT_EQ(base64_decode(out, 1, "Zg=="), 1);       // full exactly at the "="
    EXPECT_EQ(base64_decode(out, 8, "Zg==Zm8="), 1);
    EXPECT_EQ(out[0], 'f');
    EXPECT_EQ(base64_decode(out, 8, "A!AA"), 3);  // "!" counts as zero
    EXPECT_EQ(out[0] | out[1] | out[2], 0);
    EXPECT_EQ(base64_decode(out, 8, ""), 0);
    EXPECT_EQ(base64_decode(out, 8, nullptr), 0);
}

TEST(words_base64, append_reports_when_it_does_not_fit) {
    const unsigned char data[3] = {'a', 'b', 'c'};
    zorn_fixed_string room;
    room.append(std::string(zorn_fixed_string::capacity - 1 - 4, 'x').c_str());
    EXPECT_TRUE(base64_append(&room, data, 3));
    EXPECT_EQ(room.size(), zorn_fixed_string::capacity - 1);

    zorn_fixed_string tight;
    tight.append(std::string(zorn_fixed_string::capacity - 1 - 3, 'x').c_str());
    EXPECT_FALSE(base64_append(&tight, data, 3));
    EXPECT_EQ(tight.size(), zorn_fixed_string::capacity - 1);
    EXPECT_FALSE(base64_append_text(&tight, nullptr));
}

}  // namespace
