// VyDate: validity, day numbers and their decomposition against a calendar model, month and
// year steps against whole-month counting, and ISO week numbers.
#include "datetimefixture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <stdint.h>

namespace
{

// The date with day number jd (day 1 is 2 January 4713 BC).
VyDate dayNumber(uint jd)
{
    const uint half = (jd - 1) / 2;
    return VyDate(-4713, 1, 2, Vy::Gregorian).addDays(int(half)).addDays(int(jd - 1 - half));
}

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
// the target month.
Ymd shifted(const Ymd& v, int months)
{
    const int index = (v[0] < 0 ? v[0] + 1 : v[0]) * 12 + v[1] - 1 + months;
    const int y = index >= 0 ? index / 12 : (index - 11) / 12;
    const int m = index - y * 12 + 1;
    return {y < 1 ? y - 1 : y, m, std::min(v[2], monthLength(y < 1 ? y - 1 : y, m))};
}

bool dropped(const Ymd& v)
{
    return v[0] == 1582 && v[1] == 10 && v[2] >= 5 && v[2] <= 14;
}

} // namespace

TEST(VyDate, ValidityAndDayNumbers)
{
    const Ymd invalid[] = {{0, 6, 1},     {-4714, 12, 31}, {-4713, 1, 1},     {2000, 13, 1},
                           {2000, 0, 1},  {2000, 1, 0},    {1582, 10, 5},     {1582, 10, 14},
                           {2001, 2, 29}, {1900, 2, 29},   {2000000000, 1, 1}}; // not wrapped
    for (const Ymd& v : invalid)
        EXPECT_TRUE(VyDate(v[0], v[1], v[2], Vy::Gregorian).isNull()) << testing::PrintToString(v);
    VyDate date(2000, 1, 1, Vy::Gregorian);
    EXPECT_FALSE(date.setDate(2001, 2, 29, Vy::Gregorian));
    EXPECT_TRUE(date.isNull());
    VyDate::setDateMode(Vy::DefaultDateMode);
    EXPECT_EQ(VyDate::m_dm, Vy::Gregorian);

    EXPECT_EQ(VyDate::gregorianToJulian(-4713, 1, 2), 1u);
    EXPECT_EQ(VyDate::gregorianToJulian(2000, 1, 1), 2451545u);
    EXPECT_EQ(VyDate(2000, 1, 1, Vy::Gregorian).dayOfWeek(), 6);
    EXPECT_EQ(VyDate(2000, 12, 31, Vy::Gregorian).dayOfYear(), 366);
    EXPECT_EQ(VyDate(2000, 2, 3, Vy::Gregorian).daysInMonth(), 29);
    EXPECT_TRUE(VyDate::currentDate().isValid());
}

// Decomposing and recomposing returns the day number; the next day number decomposes into the
// calendar's next day, and the day after the month's last is invalid; addDays and daysTo agree,
// with the null date outside the uint32 range; week numbers follow the ISO definition.
TEST(VyDate, RandomDayNumbersRoundTrip)
{
    std::mt19937 rng(20240320);
    std::uniform_int_distribution<uint> any(1, UINT32_MAX - 1);
    std::uniform_int_distribution<int> shift(INT32_MIN, INT32_MAX);
    const VyDate first = dayNumber(1);
    for (int i = 0; i < 50000; ++i) {
        const uint jd = i < 3 ? uint(2299159 + i) : any(rng) >> (i % 11);
        if (jd == 0)
            continue;
        int y, m, d;
        VyDate::julianToGregorian(jd, y, m, d);
        ASSERT_TRUE(VyDate::isValid(y, m, d)) << jd;
        ASSERT_EQ(VyDate::gregorianToJulian(y, m, d), jd);
        ASSERT_EQ(VyDate::isLeapYear(y), monthLength(y, 2) == 29) << y;
        ASSERT_FALSE(VyDate::isValid(y, m, monthLength(y, m) + 1)) << y << "-" << m;
        Ymd next{};
        VyDate::julianToGregorian(jd + 1, next[0], next[1], next[2]);
        ASSERT_EQ(next, nextDay(y, m, d)) << jd;

        const VyDate date = dayNumber(jd);
        ASSERT_EQ(uint(first.daysTo(date)) + 1, jd);
        if (jd >= 2305814 && jd < UINT32_MAX - 7) { // from 1601: the week is its Thursday's
            const VyDate thursday = date.addDays(4 - date.dayOfWeek());
            const int isoYear = thursday.year(Vy::Gregorian);
            int year = 0;
            ASSERT_EQ(date.weekNumber(&year),
                      VyDate(isoYear, 1, 1, Vy::Gregorian).daysTo(thursday) / 7 + 1);
            ASSERT_EQ(year, isoYear);
        }
        const int n = shift(rng) >> (i % 31);
        const long long target = (long long)jd + n;
        const VyDate moved = date.addDays(n);
        if (target < 1 || target > UINT32_MAX) {
            ASSERT_TRUE(moved.isNull()) << jd << " " << n;
        } else {
            ASSERT_EQ(moved.daysTo(date), -n);
        }
    }
    EXPECT_TRUE(dayNumber(UINT32_MAX).addDays(1).isNull());
    EXPECT_TRUE(first.addDays(-1).isNull());
    EXPECT_TRUE(dayNumber(5).addDays(INT32_MIN).isNull());
    EXPECT_EQ(VyDate().weekNumber(), 0);
}

// addMonths and addYears against whole-month steps on random dates and distances, leaving out
// the October 1582 fix-up (pinned below).
TEST(VyDate, MonthAndYearArithmetic)
{
    std::mt19937 rng(29);
    std::uniform_int_distribution<int> days(0, 2900000), months(-12000, 12000);
    const VyDate first(-3000, 1, 1, Vy::Gregorian);
    for (int i = 0; i < 20000; ++i) {
        const VyDate date = first.addDays(days(rng));
        const Ymd from = ymd(date);
        const int n = i % 4 ? months(rng) : months(rng) / 12 * 12;
        const Ymd to = shifted(from, n);
        if (!dropped(to)) {
            ASSERT_EQ(ymd(date.addMonths(n)), to) << testing::PrintToString(from) << " + " << n;
        }
        // addYears has no fix-up: a result inside the dropped days is the null date.
        const Ymd later = shifted(from, n / 12 * 12);
        const VyDate moved = date.addYears(n / 12);
        ASSERT_EQ(moved.isNull() ? Ymd{} : ymd(moved), dropped(later) ? Ymd{} : later)
            << testing::PrintToString(from) << " + " << n / 12 << " years";
    }
    EXPECT_TRUE(VyDate().addMonths(1).isNull());
    EXPECT_TRUE(VyDate().addYears(1).isNull());
    EXPECT_TRUE(VyDate(2000, 1, 1, Vy::Gregorian).addYears(INT32_MAX).isNull());
    // The dropped days of October 1582 become the 4th going back, the 15th going forward;
    // whole years go forward too.
    for (int d = 5; d <= 14; ++d) {
        EXPECT_EQ(ymd(VyDate(1582, 9, d, Vy::Gregorian).addMonths(1)), (Ymd{1582, 10, 15}));
        EXPECT_EQ(ymd(VyDate(1580, 8, d, Vy::Gregorian).addMonths(26)), (Ymd{1582, 10, 15}));
        EXPECT_EQ(ymd(VyDate(1581, 10, d, Vy::Gregorian).addMonths(12)), (Ymd{1582, 10, 15}));
        EXPECT_EQ(ymd(VyDate(1582, 11, d, Vy::Gregorian).addMonths(-1)), (Ymd{1582, 10, 4}));
    }
    // Whole years forward from BC skip year 0 upwards.
    EXPECT_EQ(ymd(VyDate(-1, 6, 15, Vy::Gregorian).addMonths(12)), (Ymd{1, 6, 15}));
    EXPECT_EQ(ymd(VyDate(-2, 3, 1, Vy::Gregorian).addMonths(24)), (Ymd{1, 3, 1}));
}
