#include "base/fixed_string.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

TEST(FixedString, CutsAt5999CharactersAndStaysFull) {
    zorn_fixed_string s(std::string(5998, 'a').c_str());
    s.append("b");
    EXPECT_EQ(s.length, 5999);
    EXPECT_FALSE(s.full());
    s.append("cd");  // the array is full: the last byte gives way to the terminator
    EXPECT_EQ(s.length, zorn_fixed_string::capacity);
    EXPECT_EQ(s.c_str()[5998], 'b');
    EXPECT_TRUE(s.full());
    s.append("more");
    EXPECT_EQ(s.length, zorn_fixed_string::capacity);
    EXPECT_EQ(std::strlen(s.c_str()), 5999u);

    zorn_fixed_string one_long("xy");
    one_long.append(std::string(20000, 'z').c_str());
    EXPECT_EQ(std::strlen(one_long.c_str()), 5999u);
    EXPECT_EQ(std::string(one_long.c_str(), 3), "xyz");

    zorn_fixed_string chars;
    for (int i = 0; i < 7000; ++i) chars.append_char('q');
    EXPECT_EQ(chars.length, 5999);
    EXPECT_EQ(chars.c_str()[5999], '\0');
}

TEST(FixedString, FormattedCountedAndNullAppends) {
    zorn_fixed_string s("a");
    s.append(nullptr);
    s.appendf("%d-%s", 42, "x");
    s.append("abcdef", 3);
    s.append_int(-17);
    EXPECT_STREQ(s.c_str(), "a(null)42-xabc-17");
    EXPECT_EQ(s.length, 17);
    zorn_fixed_string copy(s);
    s.clear();
    EXPECT_STREQ(copy.c_str(), "a(null)42-xabc-17");
    EXPECT_TRUE(s.empty());
}
