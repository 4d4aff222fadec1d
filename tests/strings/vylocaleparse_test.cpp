// The byte-level readers: vystrtod against glibc's correctly rounded strtod on random decimal
// text, and both readers at their limits, bases and ends.
#include "vylocale.h"

#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <cstdlib>
#include <random>
#include <string>

TEST(VyLocaleParse, StrtodIsCorrectlyRoundedAndBounded)
{
    std::mt19937_64 rng(3);
    for (int round = 0; round < 20000; ++round) {
        std::string text = std::to_string(rng() % 100000000000000000ULL);
        text.insert(rng() % text.size(), ".");
        text.insert(0, rng() % 2 ? "-" : ""); // beyond the range: -HUGE_VAL or -0
        text += "e" + std::to_string(int(rng() % 640) - 330);
        bool ok;
        const char* end;
        const double value = vystrtod(text.c_str(), &end, &ok);
        const double expected = strtod(text.c_str(), nullptr);
        ASSERT_EQ(ok, !std::isinf(expected)) << text;
        ASSERT_EQ(value, expected) << text;
        ASSERT_EQ(std::signbit(value), std::signbit(expected)) << text;
        ASSERT_EQ(end, text.c_str() + text.size());
    }
    bool ok;
    const char* end;
    for (const char* bad : {"+-1", ".", "e5", " 1"}) {
        EXPECT_EQ(vystrtod(bad, &end, &ok), 0.0);
        EXPECT_FALSE(ok) << bad;
        EXPECT_EQ(end, bad);
    }
}

TEST(VyLocaleParse, StrtollLimitsBasesAndEnds)
{
    bool ok;
    const char* end;
    EXPECT_EQ(vystrtoll("-9223372036854775808", &end, 10, &ok), LLONG_MIN);
    EXPECT_TRUE(ok);
    EXPECT_EQ(vystrtoll("9223372036854775808", &end, 10, &ok), LLONG_MAX);
    EXPECT_FALSE(ok);
    EXPECT_EQ(vystrtoll("-0x7fZ", &end, 0, &ok), -127);
    EXPECT_STREQ(end, "Z");
    EXPECT_EQ(vystrtoll("017", &end, 0, &ok), 15);
    EXPECT_EQ(vystrtoll("0x1F", &end, 16, &ok), 31);
    EXPECT_EQ(vystrtoull("18446744073709551616", &end, 10, &ok), ULLONG_MAX);
    EXPECT_FALSE(ok);
    for (const char* bad : {"-1", "", "+", "--1", " 1", "0x"}) {
        vystrtoull(bad, &end, 16, &ok);
        EXPECT_EQ(std::string(end), bad[0] == '0' ? "x" : bad) << bad;
    }
    vystrtoll("12", &end, 37, &ok);
    EXPECT_FALSE(ok);
}
