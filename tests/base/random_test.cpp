#include "base/random.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "base/fixed_string.h"

namespace {

std::vector<uint32_t> take(zorn_random_state* s, int n) {
    std::vector<uint32_t> out;
    for (int i = 0; i < n; ++i) out.push_back(random_next(s));
    return out;
}

}  // namespace

TEST(Random, InitSeedAndMixSequencesArePinned) {
    zorn_random_state s;
    random_init(&s);
    // First value: low 32 bits of 123456789 * 809430660 + 362436.
    EXPECT_EQ(take(&s, 10), (std::vector<uint32_t>{3206204568u, 4161915722u, 2486896948u, 4201678858u, 1546165613u,
                                                   2420294731u, 569842678u, 608736427u, 2395396475u, 3021709071u}));
    random_seed(&s, 42);
    EXPECT_EQ(take(&s, 4), (std::vector<uint32_t>{8593038u, 2411340753u, 3367827164u, 3458914715u}));
    random_init(&s);
    random_mix(&s, 7);
    EXPECT_EQ(take(&s, 3), (std::vector<uint32_t>{2389217588u, 3169697356u, 1980875246u}));
    random_init(&s);
    for (int expected : {5, 6, 4, 6, 3, 4, 1, 1}) EXPECT_EQ(random_number(&s, 6), expected);
}

TEST(Random, ResetRestoresTheLastSeedAndUndoesAMix) {
    zorn_random_state s;
    random_seed2(&s, 5, 6);
    const auto first = take(&s, 20);
    take(&s, 13);
    random_reset(&s);
    EXPECT_EQ(take(&s, 20), first);
    random_reset(&s);
    random_mix(&s, 99);
    EXPECT_NE(take(&s, 20), first);
    random_reset(&s);
    EXPECT_EQ(take(&s, 20), first);
}

TEST(Random, NumberUsesASecondStepOnlyAbove10000) {
    for (int n : {10000, 10001}) {
        zorn_random_state a, b;
        random_seed(&a, 1);
        random_seed(&b, 1);
        random_number(&a, n);
        take(&b, n > 10000 ? 2 : 1);
        EXPECT_EQ(random_next(&a), random_next(&b)) << n;
    }
}

TEST(Random, RangesDiceAndTextAlphabets) {
    zorn_random_state s;
    random_init(&s);
    for (int i = 0; i < 2000; ++i) {
        const int n = random_number(&s, 100000);
        ASSERT_TRUE(n >= 1 && n <= 100000) << n;
        const double f = random_float(&s);
        ASSERT_TRUE(f >= 0.0 && f < 1.0) << f;
        ASSERT_EQ(random_below(1), 0);
        const int below = random_below(7);
        ASSERT_TRUE(below >= 0 && below < 7) << below;
    }
    EXPECT_EQ(random_dice(&s, 0, 6), 0);
    EXPECT_EQ(random_dice(&s, 501, 6), 0);
    const int sum = random_dice(&s, 500, 6);
    EXPECT_TRUE(sum >= 500 && sum <= 3000) << sum;

    zorn_fixed_string text, hex, b64;
    zorn_random_text_append(&text, 200);
    zorn_random_hex_append(&hex, 200);
    zorn_random_base64_append(&b64, 200);
    EXPECT_EQ(text.length, 200);
    EXPECT_EQ(std::string(text.c_str()).find_first_not_of("0123456789abcdefghijklmnopqrstuv"), std::string::npos);
    EXPECT_EQ(std::string(hex.c_str()).find_first_not_of("0123456789abcdef"), std::string::npos);
    EXPECT_EQ(std::string(b64.c_str()).find_first_not_of("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/"),
              std::string::npos);
}
