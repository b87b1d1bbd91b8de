// Finding the link under a click: the golden cases of tests/display/url_cases.txt, clicks
// outside a link, and bytes that end one.
#include <gtest/gtest.h>

#include <cstring>
#include <fstream>
#include <string>

#include "display/url_finder.h"

namespace {

TEST(url_finder, golden_cases) {
    std::ifstream in(LANTERN_SOURCE_DIR "/tests/display/url_cases.txt");
    std::string line;
    int count = 0;
    while (std::getline(in, line)) {
        if (line.empty() || line[0] == '#') continue;
        const size_t bar1 = line.find(" | "), bar2 = line.rfind(" | ");
        ASSERT_NE(bar1, bar2) << line;
        const std::string text = line.substr(0, bar1), click = line.substr(bar1 + 3, bar2 - bar1 - 3);
        const std::string expected = line.substr(bar2 + 3);
        const size_t at = text.find(click);
        ASSERT_NE(at, std::string::npos) << line;
        int first = -1, last = -1;
        const bool found = find_url_in_text(text.c_str(), static_cast<int>(text.size()), static_cast<int>(at),
                                            &first, &last);
        EXPECT_EQ(found ? text.substr(first, last - first + 1) : "-", expected) << text;
        ++count;
    }
    EXPECT_GE(count, 30);
}

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
