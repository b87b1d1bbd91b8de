// Finding the link under a click: where it starts and ends, and what counts as a link at all.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "display/url_finder.h"

namespace {

struct url_case {
    const char* text;
    const char* click;     // the clicked character is the first byte of this text inside `text`
    const char* expected;  // the link found, or null for none
};

std::ostream& operator<<(std::ostream& out, const url_case& c) { return out << '"' << c.text << '"'; }

class url_test : public ::testing::TestWithParam<url_case> {};

TEST_P(url_test, finds_the_expected_link) {
    const url_case& c = GetParam();
    const char* at = std::strstr(c.text, c.click);
    ASSERT_NE(at, nullptr);
    int first = -1, last = -1;
    const bool found = find_url_in_text(c.text, static_cast<int>(std::strlen(c.text)), static_cast<int>(at - c.text),
                                        &first, &last);
    if (!c.expected) {
        EXPECT_FALSE(found) << std::string(c.text + first, c.text + last + 1);
        return;
    }
    ASSERT_TRUE(found);
    EXPECT_EQ(std::string(c.text + first, c.text + last + 1), c.expected);
}

INSTANTIATE_TEST_SUITE_P(
    links, url_test,
    ::testing::Values(
        url_case{"go to http://www.example.com/x now", "example", "http://www.example.com/x"},
        url_case{"https://example.com", "https", "https://example.com"},
        url_case{"ftp://files.example.org/pub", "pub", "ftp://files.example.org/pub"},
        url_case{"see www.example.com.", "www", "www.example.com"},
        url_case{"really? www.example.com?", "example", "www.example.com"},
        url_case{"list: www.a.com, www.b.com", "a.com", "www.a.com"},
        // Brackets round the link go; a bracket of the link's own stays.
        url_case{"(http://example.com/page)", "example", "http://example.com/page"},
        url_case{"(www.example.com)", "example", "www.example.com"},
        url_case{"[www.example.com]", "example", "www.example.com"},
        url_case{"{www.example.com}", "example", "www.example.com"},
        url_case{"http://en.example.org/wiki/Foo_(bar)", "wiki", "http://en.example.org/wiki/Foo_(bar)"},
        url_case{"(see http://example.com/a_(b))", "see", nullptr},
        url_case{"(http://example.com/a_(b))", "example", "http://example.com/a_(b)"},
        // A scheme in the middle of a word starts the link there.
        url_case{"xhttp://example.com", "example", "http://example.com"},
        // Hosts without a scheme.
        url_case{"example.com", "example", "example.com"},
        url_case{"visit example.co.uk today", "co.uk", "example.co.uk"},
        url_case{"host.info:8080/status", "info", "host.info:8080/status"},
        url_case{"host.info:8080", "8080", "host.info:8080"},
        url_case{"example.org/path/to", "path", "example.org/path/to"},
        url_case{"example.c", "example", nullptr},          // suffix of one letter
        url_case{"example.museum", "example", nullptr},     // suffix of six letters
        url_case{"example.COM", "example", nullptr},        // upper case suffix
        url_case{"host.com:0800", "host", nullptr},         // port that begins with 0
        url_case{"host.com:", "host", nullptr},             // colon with nothing behind
        url_case{"user@example.com", "example", nullptr},   // a mail address
        url_case{"example.com/@", "example", "example.com/@"},  // the last character isn't tested
        url_case{"3.14", "3", nullptr},                     // a number
        url_case{"a..com", "com", nullptr},                 // two dots in a row
        url_case{"http://localhost/x", "local", nullptr},   // a scheme with a host without a dot
        url_case{"http://user@example.com", "example", "http://user@example.com"},
        url_case{"'www.example.com'", "www", "www.example.com"},
        url_case{"<www.example.com>", "www", "www.example.com"}),
    [](const ::testing::TestParamInfo<url_case>& info) { return std::to_string(info.index); });

TEST(url_finder, click_outside_the_link_finds_nothing) {
    const char* text = "(www.example.com) and more";
    int first = 0, last = 0;
    EXPECT_FALSE(find_url_in_text(text, 26, 0, &first, &last));   // on the bracket, stripped
    EXPECT_FALSE(find_url_in_text(text, 26, 17, &first, &last));  // on the blank behind it
    EXPECT_FALSE(find_url_in_text(text, 26, 26, &first, &last));  // behind the text
    EXPECT_FALSE(find_url_in_text(text, 26, -1, &first, &last));
    EXPECT_FALSE(find_url_in_text("", 0, 0, &first, &last));
}

TEST(url_finder, high_bytes_end_a_link) {
    const char text[] = "www.example.com\xe9x";
    int first = 0, last = 0;
    ASSERT_TRUE(find_url_in_text(text, static_cast<int>(sizeof(text) - 1), 2, &first, &last));
    EXPECT_EQ(last, 14);
}

}  // namespace
