#include "base/fixed_string.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

TEST(FixedString, CutsAt5999CharactersAndStaysFull) {
    zorn_fixed_string s;
    const std::string almost(5998, 'a');
    s.append(almost.c_str());
    EXPECT_EQ(s.length, 5998);
    s.append("b");
    EXPECT_EQ(s.length, 5999);
    EXPECT_EQ(std::strlen(s.c_str()), 5999u);
    EXPECT_FALSE(s.full());

    s.append("cd");  // the array is full: the last byte gives way to the terminator
    EXPECT_EQ(s.length, zorn_fixed_string::capacity);
    EXPECT_EQ(std::strlen(s.c_str()), 5999u);
    EXPECT_EQ(s.c_str()[5998], 'b');
    EXPECT_TRUE(s.full());

    s.append("more");
    EXPECT_EQ(s.length, zorn_fixed_string::capacity);
    EXPECT_EQ(std::strlen(s.c_str()), 5999u);
}

TEST(FixedString, OneLongAppendIsCut) {
    zorn_fixed_string s("xy");
    const std::string huge(20000, 'z');
    s.append(huge.c_str());
    EXPECT_EQ(std::strlen(s.c_str()), 5999u);
    EXPECT_EQ(std::string(s.c_str(), 3), "xyz");
}

TEST(FixedString, AppendCharStopsBelowTheLastUsableByte) {
    zorn_fixed_string s;
    for (int i = 0; i < 7000; ++i) s.append_char('q');
    EXPECT_EQ(s.length, 5999);
    EXPECT_EQ(s.c_str()[5999], '\0');
}

TEST(FixedString, NullAppendsTheWordNull) {
    zorn_fixed_string s("a");
    s.append(nullptr);
    EXPECT_STREQ(s.c_str(), "a(null)");
}

TEST(FixedString, FormattedAndCountedAppends) {
    zorn_fixed_string s;
    s.appendf("%d-%s", 42, "x");
    s.append("abcdef", 3);
    s.append_int(-17);
    EXPECT_STREQ(s.c_str(), "42-xabc-17");
    EXPECT_EQ(s.length, 10);
    zorn_fixed_string copy(s);
    s.clear();
    EXPECT_STREQ(copy.c_str(), "42-xabc-17");
    EXPECT_TRUE(s.empty());
}
