// VyDate: validity, day numbers and their decomposition against a calendar model, month and
// year steps against whole-month counting, and ISO week numbers.
#include "datetimefixture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <stdint.h>

namespace
{

int monthLength(int y, int m)
{
    static const int lengths[13] = {0, 31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    const bool leap = y < 1582 ? (y < 0 ? -y % 4 == 1 : y % 4 == 0)
                               : (y % 4 == 0 && y % 100 != 0) || y % 400 == 0;
    return lengths[m] + (m == 2 && leap ? 1 : 0);
}

// The day after (y, m, d) by the calendar rules alone: month lengths, no year 0, and the ten
// days dropped in October 1582.
Ymd nextDay(int y, int m, int d)
{
    if (y == 1582 && m == 10 && d == 4)
        return {1582, 10, 15};
    if (d < monthLength(y, m))
        return {y, m, d + 1};
    if (m < 12)
        return {y, m + 1, 1};
    return {y == -1 ? 1 : y + 1, 1, 1};
}

// The date moved by whole months, counted on a year line without year 0, the day clamped to
// the target month; with the fix-up, the dropped days of October 1582 become the 4th going back
// and the 15th going forward.
VyDate shifted(const Ymd& v, int months, bool fixUp)
{
    const int index = (v[0] < 0 ? v[0] + 1 : v[0]) * 12 + v[1] - 1 + months;
    const int y = index >= 0 ? index / 12 : (index - 11) / 12;
    const int m = index - y * 12 + 1;
    const int d = std::min(v[2], monthLength(y < 1 ? y - 1 : y, m));
    const bool dropped = y == 1582 && m == 10 && d >= 5 && d <= 14;
    return VyDate(y < 1 ? y - 1 : y, m, fixUp && dropped ? (months < 1 ? 4 : 15) : d,
                  Vy::Gregorian);
}

} // namespace

// Decomposing and recomposing returns the day number; the next day number decomposes into the
// calendar's next day, and the day after the month's last is invalid; addDays and daysTo agree,
// with the null date outside the uint32 range; week numbers follow the ISO definition; addMonths
// and addYears step whole months, the day clamped.
TEST(VyDate, ValidityAndRandomDayNumbers)
{
    const Ymd invalid[] = {{0, 6, 1},    {-4713, 1, 1},  {2000, 13, 1},     {2000, 0, 1},
                           {2000, 1, 0}, {1582, 10, 14}, {2000000000, 1, 1}}; // not wrapped
    for (const Ymd& v : invalid)
        EXPECT_TRUE(VyDate(v[0], v[1], v[2], Vy::Gregorian).isNull()) << testing::PrintToString(v);
    VyDate::setDateMode(Vy::DefaultDateMode);
    EXPECT_EQ(VyDate::m_dm, Vy::Gregorian);
    EXPECT_EQ(VyDate(2000, 2, 29, Vy::Gregorian).dayOfWeek(), 2);
    EXPECT_TRUE(VyDate::currentDate().isValid());

    std::mt19937 rng(20240320);
    std::uniform_int_distribution<uint> any(1, UINT32_MAX - 1);
    const VyDate first(-4713, 1, 2, Vy::Gregorian); // day number 1
    for (int i = 0; i < 50000; ++i) {
        const uint jd = i < 3 ? uint(2299159 + i) : std::max(1u, any(rng) >> (i % 11));
        int y, m, d;
        VyDate::julianToGregorian(jd, y, m, d);
        ASSERT_TRUE(VyDate::isValid(y, m, d)) << jd;
        ASSERT_EQ(VyDate::gregorianToJulian(y, m, d), jd);
        ASSERT_EQ(VyDate::isLeapYear(y), monthLength(y, 2) == 29) << y;
        ASSERT_FALSE(VyDate::isValid(y, m, monthLength(y, m) + 1)) << y << "-" << m;
        Ymd next{};
        VyDate::julianToGregorian(jd + 1, next[0], next[1], next[2]);
        ASSERT_EQ(next, nextDay(y, m, d)) << jd;

        const VyDate date(y, m, d, Vy::Gregorian);
        if (jd >= 2305814 && jd < UINT32_MAX - 7) { // from 1601: the week is its Thursday's
            const VyDate thursday = date.addDays(4 - date.dayOfWeek());
            const int isoYear = thursday.year(Vy::Gregorian);
            int year = 0;
            ASSERT_EQ(date.weekNumber(&year),
                      VyDate(isoYear, 1, 1, Vy::Gregorian).daysTo(thursday) / 7 + 1);
            ASSERT_EQ(year, isoYear);
        }
        const int n = int(rng()) >> (i % 31);
        const long long target = (long long)jd + n;
        const VyDate moved = date.addDays(n);
        ASSERT_EQ(moved.isNull(), target < 1 || target > UINT32_MAX) << jd << " " << n;
        ASSERT_EQ(moved.isNull() ? -n : moved.daysTo(date), -n);
        // Results outside the day number range are null; so are those of addYears in the
        // dropped days, which it does not fix up.
        const int months = i % 4 ? n % 12001 : n % 1001 * 12;
        ASSERT_EQ(date.addMonths(months), shifted({y, m, d}, months, true)) << jd << " " << months;
        ASSERT_EQ(date.addYears(months / 12), shifted({y, m, d}, months / 12 * 12, false));
    }
    // Day number 2^32 - 1 is the last: were it null, adding a day would give day number 1.
    EXPECT_TRUE(first.addDays(INT32_MAX).addDays(INT32_MAX).addDays(1).isNull());
    EXPECT_TRUE(first.addDays(-1).isNull());
    EXPECT_EQ(VyDate().weekNumber(), 0);
    EXPECT_TRUE(VyDate().addMonths(1).isNull());
    EXPECT_TRUE(VyDate().addYears(1).isNull());
    EXPECT_TRUE(VyDate(2000, 1, 1, Vy::Gregorian).addYears(INT32_MAX).isNull());
    // The fix-up, which random dates seldom reach.
    for (int day = 5; day <= 14; ++day) {
        EXPECT_EQ(ymd(VyDate(1582, 9, day, Vy::Gregorian).addMonths(1)), (Ymd{1582, 10, 15}));
        EXPECT_EQ(ymd(VyDate(1582, 11, day, Vy::Gregorian).addMonths(-1)), (Ymd{1582, 10, 4}));
    }
}
