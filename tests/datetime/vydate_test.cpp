#include "vydatetime.h"

#include <gtest/gtest.h>

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

uint dayNumberOf(const VyDate& date)
{
    return uint(VyDate(-4713, 1, 2, Vy::Gregorian).daysTo(date)) + 1;
}

struct Ymd {
    int y, m, d;
    bool operator==(const Ymd& o) const { return y == o.y && m == o.m && d == o.d; }
};

std::ostream& operator<<(std::ostream& os, const Ymd& v)
{
    return os << v.y << '-' << v.m << '-' << v.d;
}

Ymd ymd(const VyDate& date, Vy::DateMode mode = Vy::Gregorian)
{
    Ymd v{};
    date.getDate(&v.y, &v.m, &v.d, mode);
    return v;
}

// The day after (y, m, d) by the calendar rules alone: month lengths, no year 0, and the ten
// days dropped in October 1582.
Ymd nextDay(Ymd v)
{
    static const int lengths[13] = {0, 31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    const bool leap = v.y < 1582 ? (v.y < 0 ? -v.y % 4 == 1 : v.y % 4 == 0)
                                 : (v.y % 4 == 0 && v.y % 100 != 0) || v.y % 400 == 0;
    if (v.y == 1582 && v.m == 10 && v.d == 4)
        return {1582, 10, 15};
    if (v.d < lengths[v.m] + (v.m == 2 && leap ? 1 : 0))
        return {v.y, v.m, v.d + 1};
    if (v.m < 12)
        return {v.y, v.m + 1, 1};
    return {v.y == -1 ? 1 : v.y + 1, 1, 1};
}

// Restores the shared Persian month table and the library-wide mode around each test.
class VyDateTest : public ::testing::Test
{
protected:
    void SetUp() override { VyDate::gregorianMonthsFromApril[10] = 28; }
    void TearDown() override
    {
        VyDate::gregorianMonthsFromApril[10] = 28;
        VyDate::setDateMode(Vy::Gregorian);
    }
};

TEST_F(VyDateTest, ValidityAndLeapYears)
{
    // Julian rule before 1582 (1 BC, year -1, is leap), Gregorian from then on.
    EXPECT_TRUE(VyDate::isLeapYear(1500) && VyDate::isLeapYear(2000) && VyDate::isLeapYear(-1));
    EXPECT_FALSE(VyDate::isLeapYear(1700) || VyDate::isLeapYear(-4));
    EXPECT_TRUE(VyDate::isValid(1500, 2, 29) && VyDate::isValid(-5, 2, 29));
    EXPECT_FALSE(VyDate::isValid(1700, 2, 29));
    EXPECT_FALSE(VyDate::isValid(0, 6, 1));
    EXPECT_FALSE(VyDate::isValid(-4714, 12, 31));
    EXPECT_FALSE(VyDate::isValid(-4713, 1, 1));
    EXPECT_TRUE(VyDate::isValid(-4713, 1, 2));
    EXPECT_FALSE(VyDate::isValid(2000, 13, 1) || VyDate::isValid(2000, 4, 31));
    for (int d = 5; d <= 14; ++d)
        EXPECT_TRUE(VyDate(1582, 10, d, Vy::Gregorian).isNull()) << d;
    VyDate date(2000, 1, 1, Vy::Gregorian);
    EXPECT_FALSE(date.setDate(2001, 2, 29, Vy::Gregorian));
    EXPECT_TRUE(date.isNull());
    // Years far beyond the day number range are null, not wrapped.
    EXPECT_TRUE(VyDate(2000000000, 1, 1, Vy::Gregorian).isNull());
    EXPECT_EQ(VyDate::gregorianToJulian(2000000000, 1, 1), 0u);
    VyDate::setDateMode(Vy::DefaultDateMode);
    EXPECT_EQ(VyDate::m_dm, Vy::Gregorian);
}

TEST_F(VyDateTest, DayNumbersOfKnownDates)
{
    EXPECT_EQ(VyDate::gregorianToJulian(2000, 1, 1), 2451545u);
    EXPECT_EQ(VyDate::gregorianToJulian(1582, 10, 15), 2299161u);
    EXPECT_EQ(VyDate::gregorianToJulian(1582, 10, 4), 2299160u);
    EXPECT_EQ(VyDate::gregorianToJulian(-4713, 1, 2), 1u);
    EXPECT_EQ(VyDate::gregorianToJulian(1970, 1, 1), 2440588u);
    EXPECT_EQ(VyDate::gregorianToJulian(1582, 10, 10), 0u);
    EXPECT_EQ(VyDate(2000, 1, 1, Vy::Gregorian).dayOfWeek(), 6);
    EXPECT_EQ(VyDate(-1, 12, 31, Vy::Gregorian).addDays(1), VyDate(1, 1, 1, Vy::Gregorian));
    EXPECT_EQ(VyDate(2000, 12, 31, Vy::Gregorian).dayOfYear(), 366);
    EXPECT_EQ(VyDate(2000, 2, 3, Vy::Gregorian).daysInMonth(), 29);
    int y, m, d;
    VyDate::julianToGregorian(1, y, m, d);
    EXPECT_EQ((Ymd{y, m, d}), (Ymd{-4713, 1, 2}));
}

// Decomposing and recomposing returns the day number; the next day number decomposes into the
// calendar's next day; addDays and daysTo agree, with the null date outside the uint32 range.
TEST_F(VyDateTest, RandomDayNumbersRoundTrip)
{
    std::mt19937 rng(20240320);
    std::uniform_int_distribution<uint> any(1, UINT32_MAX - 1);
    std::uniform_int_distribution<int> shift(INT32_MIN, INT32_MAX);
    for (int i = 0; i < 50000; ++i) {
        const uint jd = i < 3 ? uint(2299159 + i) : any(rng) >> (i % 11);
        if (jd == 0)
            continue;
        int y, m, d;
        VyDate::julianToGregorian(jd, y, m, d);
        ASSERT_TRUE(VyDate::isValid(y, m, d)) << jd;
        ASSERT_EQ(VyDate::gregorianToJulian(y, m, d), jd);
        Ymd next{};
        VyDate::julianToGregorian(jd + 1, next.y, next.m, next.d);
        ASSERT_EQ(next, nextDay({y, m, d})) << jd;

        const VyDate date = dayNumber(jd);
        ASSERT_EQ(dayNumberOf(date), jd);
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
    EXPECT_TRUE(dayNumber(1).addDays(-1).isNull());
    EXPECT_TRUE(dayNumber(5).addDays(INT32_MIN).isNull());
}

TEST_F(VyDateTest, PersianConversionsAgainstTable)
{
    struct Row {
        Ymd gregorian, persian;
    };
    // Worked out with the library's fixed-offset arithmetic.
    const Row rows[] = {
        {{2000, 3, 19}, {1378, 12, 29}},  {{2000, 3, 20}, {1379, 1, 1}},
        {{2000, 3, 21}, {1379, 1, 2}},    {{2001, 3, 20}, {1379, 12, 30}},
        {{2001, 3, 21}, {1380, 1, 1}},    {{1999, 12, 31}, {1378, 10, 10}},
        {{2000, 1, 1}, {1378, 10, 11}},   {{2000, 2, 29}, {1378, 12, 10}},
        {{2023, 9, 22}, {1402, 6, 31}},   {{2023, 9, 23}, {1402, 7, 1}},
        {{2024, 3, 19}, {1402, 12, 29}},  {{2024, 3, 20}, {1403, 1, 1}},
        {{2024, 12, 31}, {1403, 10, 11}}, {{2025, 3, 20}, {1403, 12, 30}},
        {{1979, 2, 11}, {1357, 11, 22}},  {{2100, 3, 1}, {1478, 12, 10}},
    };
    for (const Row& r : rows) {
        const VyDate g(r.gregorian.y, r.gregorian.m, r.gregorian.d, Vy::Gregorian);
        EXPECT_EQ(ymd(g, Vy::Persian), r.persian) << r.gregorian;
        VyDate::gregorianMonthsFromApril[10] = 28;
        EXPECT_EQ(VyDate(r.persian.y, r.persian.m, r.persian.d, Vy::Persian), g) << r.persian;
    }
    VyDate::setDateMode(Vy::Persian);
    const VyDate nowruz(2024, 3, 20, Vy::Gregorian);
    EXPECT_EQ(nowruz.year(), 1403);
    EXPECT_EQ(nowruz.month(Vy::DefaultDateMode), 1);
    EXPECT_EQ(nowruz.day(Vy::Gregorian), 20);
    EXPECT_EQ(VyDate(1403, 1, 1), nowruz);
    // Kept: Persian numbers on the Gregorian tables: month 1 has 31 days, 1403 is no leap year.
    EXPECT_EQ(nowruz.daysInMonth(), 31);
    EXPECT_EQ(nowruz.daysInYear(), 365);
    // A day far past the year's end leads nowhere.
    EXPECT_TRUE(VyDate(1403, 12, 1000, Vy::Persian).isNull());
}

TEST_F(VyDateTest, PersianMonthTableGrows_Kept)
{
    // 1402 + 622 = 2024 is a leap year: each conversion adds a day to February for good, so
    // the same Persian date moves back a day on every call.
    EXPECT_EQ(ymd(VyDate(1402, 12, 29, Vy::Persian)), (Ymd{2024, 3, 19}));
    EXPECT_EQ(VyDate::gregorianMonthsFromApril[10], 29);
    EXPECT_EQ(ymd(VyDate(1402, 12, 29, Vy::Persian)), (Ymd{2024, 3, 18}));
    EXPECT_EQ(VyDate::gregorianMonthsFromApril[10], 30);
    // Dates before February are not affected.
    EXPECT_EQ(ymd(VyDate(1402, 10, 11, Vy::Persian)), (Ymd{2024, 1, 1}));
}

TEST_F(VyDateTest, MonthAndYearArithmetic)
{
    const auto add = [](int y, int m, int d, int months) {
        return ymd(VyDate(y, m, d, Vy::Gregorian).addMonths(months));
    };
    EXPECT_EQ(add(2000, 1, 31, 1), (Ymd{2000, 2, 29}));
    EXPECT_EQ(add(2001, 1, 31, 1), (Ymd{2001, 2, 28}));
    EXPECT_EQ(add(2000, 3, 31, -1), (Ymd{2000, 2, 29}));
    EXPECT_EQ(add(2000, 12, 15, 1), (Ymd{2001, 1, 15}));
    EXPECT_EQ(add(2000, 1, 15, -1), (Ymd{1999, 12, 15}));
    EXPECT_EQ(add(2000, 5, 31, 25), (Ymd{2002, 6, 30}));
    EXPECT_EQ(add(2000, 5, 31, -29), (Ymd{1997, 12, 31}));
    EXPECT_EQ(add(-1, 3, 1, 10), (Ymd{1, 1, 1}));
    EXPECT_EQ(add(1, 2, 1, -2), (Ymd{-1, 12, 1}));
    EXPECT_EQ(add(1, 3, 1, -12), (Ymd{-1, 3, 1}));
    EXPECT_TRUE(VyDate().addMonths(1).isNull());
    // The dropped days of October 1582 become the 4th going back, the 15th going forward.
    for (int d = 5; d <= 14; ++d) {
        EXPECT_EQ(add(1582, 9, d, 1), (Ymd{1582, 10, 15}));
        EXPECT_EQ(add(1580, 8, d, 26), (Ymd{1582, 10, 15}));
        EXPECT_EQ(add(1582, 11, d, -1), (Ymd{1582, 10, 4}));
    }

    const auto years = [](int y, int m, int d, int n) {
        return ymd(VyDate(y, m, d, Vy::Gregorian).addYears(n));
    };
    EXPECT_EQ(years(2000, 2, 29, 1), (Ymd{2001, 2, 28}));
    EXPECT_EQ(years(2000, 2, 29, 4), (Ymd{2004, 2, 29}));
    EXPECT_EQ(years(1, 6, 1, -1), (Ymd{-1, 6, 1}));
    EXPECT_EQ(years(-1, 6, 1, 1), (Ymd{1, 6, 1}));
    EXPECT_EQ(years(-3, 6, 1, 5), (Ymd{3, 6, 1}));
    EXPECT_TRUE(VyDate(1581, 10, 10, Vy::Gregorian).addYears(1).isNull());
    EXPECT_TRUE(VyDate(2000, 1, 1, Vy::Gregorian).addYears(INT32_MAX).isNull());
}

TEST_F(VyDateTest, MonthArithmeticRemainderDirection_Kept)
{
    // Twelve months leave nothing of n after the whole year, which then counts as going back:
    // from 1 BC the year-0 skip goes down again, and October 1582 is fixed up to the 4th.
    EXPECT_EQ(ymd(VyDate(-1, 3, 1, Vy::Gregorian).addMonths(12)), (Ymd{-1, 3, 1}));
    EXPECT_EQ(ymd(VyDate(1581, 10, 10, Vy::Gregorian).addMonths(12)), (Ymd{1582, 10, 4}));
}

// Week numbers against the ISO definition: the week belongs to the year of its Thursday.
TEST_F(VyDateTest, WeekNumbersAcrossYearBoundaries)
{
    int year = 0;
    EXPECT_EQ(VyDate().weekNumber(&year), 0);
    std::mt19937 rng(7);
    std::uniform_int_distribution<int> days(0, 3000000);
    const VyDate first(1601, 1, 1, Vy::Gregorian);
    for (int i = 0; i < 20000; ++i) {
        const VyDate date = first.addDays(days(rng));
        const VyDate thursday = date.addDays(4 - date.dayOfWeek());
        const int isoYear = thursday.year(Vy::Gregorian);
        const int isoWeek = VyDate(isoYear, 1, 1, Vy::Gregorian).daysTo(thursday) / 7 + 1;
        ASSERT_EQ(date.weekNumber(&year), isoWeek) << ymd(date);
        ASSERT_EQ(year, isoYear);
    }
}

} // namespace
