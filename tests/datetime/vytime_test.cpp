// VyTime: validity and fields, arithmetic that wraps at midnight from random times by random
// amounts, and the clock readers.
#include "vydatetime.h"

#include <gtest/gtest.h>

#include <random>
#include <stdint.h>
#include <vector>

namespace
{

const long long day = 86400000;

long long msecsOf(const VyTime& t)
{
    return VyTime(0, 0).msecsTo(t);
}

} // namespace

TEST(VyTime, ValidityAndFields)
{
    const int invalid[][4] = {
        {24, 0, 0, 0}, {-1, 0, 0, 0}, {0, 60, 0, 0}, {0, 0, 60, 0}, {0, 0, 0, 1000}};
    for (const auto& v : invalid) {
        VyTime t(1, 2);
        EXPECT_FALSE(t.setHMS(v[0], v[1], v[2], v[3])) << v[0] << ':' << v[1] << ':' << v[2];
        EXPECT_TRUE(t.isNull());
    }
    const auto fields = [](const VyTime& t) {
        return std::vector<int>{t.hour(), t.minute(), t.second(), t.msec()};
    };
    EXPECT_EQ(fields(VyTime(23, 59, 58, 997)), (std::vector<int>{23, 59, 58, 997}));
    EXPECT_EQ(msecsOf(VyTime(23, 59, 58, 997)), day - 1003);
    EXPECT_EQ(fields(VyTime()), (std::vector<int>{0, 0, 0, 0}));
}

// addMSecs from random times (and the null time, read as midnight) by random amounts wraps
// into the day; secsTo truncates.
TEST(VyTime, ArithmeticWrapsBothWays)
{
    EXPECT_EQ(VyTime(0, 0, 1, 500).secsTo(VyTime(0, 0)), -1);
    EXPECT_EQ(VyTime(0, 0, 1, 500).msecsTo(VyTime()), -1500);
    EXPECT_EQ(VyTime(12, 0).addSecs(-86400 * 3 - 1), VyTime(11, 59, 59));
    std::mt19937 rng(11);
    std::uniform_int_distribution<int> any(INT32_MIN, INT32_MAX);
    std::uniform_int_distribution<int> inDay(-1, int(day) - 1);
    const int edges[] = {INT32_MIN, INT32_MAX, -1, 0};
    for (int i = 0; i < 20000; ++i) {
        const int start = inDay(rng);
        const VyTime t = start < 0 ? VyTime() : VyTime(0, 0).addMSecs(start);
        const int ms = i < 4 ? edges[i] : any(rng);
        const long long expected = (((start < 0 ? 0 : start) + (long long)ms) % day + day) % day;
        const VyTime r = t.addMSecs(ms);
        ASSERT_TRUE(r.isValid());
        ASSERT_EQ(msecsOf(r), expected) << start << " " << ms;
    }
}

TEST(VyTime, ClockReaders)
{
    VyTime watch;
    watch.start();
    const int e = watch.elapsed();
    EXPECT_LT(e, 60000);
    EXPECT_GE(watch.restart(), e);
    // A start just after "now" reads as almost a full day: midnight counts as passed.
    VyTime ahead = VyTime::currentTime().addSecs(3600);
    EXPECT_GT(ahead.elapsed(), int(day) - 3600 * 1000 - 60000);
}
