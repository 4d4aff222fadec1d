// VyTime: validity, the clock readers, and arithmetic that wraps at midnight from random times
// by random amounts.
#include "vydatetime.h"

#include <gtest/gtest.h>

#include <random>
#include <stdint.h>
#include <vector>

TEST(VyTime, ValidityAndClock)
{
    const int invalid[][4] = {
        {24, 0, 0, 0}, {-1, 0, 0, 0}, {0, 60, 0, 0}, {0, 0, 60, 0}, {0, 0, 0, 1000}};
    for (const auto& v : invalid) {
        VyTime t(1, 2);
        EXPECT_FALSE(t.setHMS(v[0], v[1], v[2], v[3])) << v[0] << ':' << v[1] << ':' << v[2];
        EXPECT_TRUE(t.isNull());
    }
    EXPECT_EQ(VyTime(0, 0, 1, 500).secsTo(VyTime(0, 0)), -1); // truncated
}

// addMSecs from random times (and the null time, read as midnight) by random amounts wraps
// into the day; the fields follow.
TEST(VyTime, ArithmeticWrapsBothWays)
{
    const long long day = 86400000;
    std::mt19937 rng(11);
    std::uniform_int_distribution<int> inDay(-1, int(day) - 1);
    const int edges[] = {INT32_MIN, INT32_MAX, -1, 0};
    for (int i = 0; i < 20000; ++i) {
        const int start = inDay(rng);
        const VyTime t = start < 0 ? VyTime() : VyTime(0, 0).addMSecs(start);
        const int ms = i < 4 ? edges[i] : int(rng());
        const int e = int((((start < 0 ? 0 : start) + (long long)ms) % day + day) % day);
        const VyTime r = i % 2 ? t.addMSecs(ms) : t.addSecs(ms / 1000).addMSecs(ms % 1000);
        ASSERT_EQ((std::vector<int>{r.hour(), r.minute(), r.second(), r.msec()}),
                  (std::vector<int>{e / 3600000, e / 60000 % 60, e / 1000 % 60, e % 1000}))
            << start << " " << ms;
    }
}
