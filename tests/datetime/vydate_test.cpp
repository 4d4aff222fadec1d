#include "vydatetime.h"

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

int monthLength(int y, int m)
{
    static const int lengths[13] = {0, 31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    const bool leap = y < 1582 ? (y < 0 ? -y % 4 == 1 : y % 4 == 0)
                               : (y % 4 == 0 && y % 100 != 0) || y % 400 == 0;
    return lengths[m] + (m == 2 && leap ? 1 : 0);
}

// The day after (y, m, d) by the calendar rules alone: month lengths, no year 0, and the ten
// days dropped in October 1582.
Ymd nextDay(Ymd v)
{
    if (v.y == 1582 && v.m == 10 && v.d == 4)
        return {1582, 10, 15};
    if (v.d < monthLength(v.y, v.m))
        return {v.y, v.m, v.d + 1};
    if (v.m < 12)
        return {v.y, v.m + 1, 1};
    return {v.y == -1 ? 1 : v.y + 1, 1, 1};
}

// (y, m, d) moved by whole months, counted on a year line without year 0, the day clamped to
// the target month.
Ymd shifted(Ymd v, int months)
{
    const int index = (v.y < 0 ? v.y + 1 : v.y) * 12 + v.m - 1 + months;
    const int y = index >= 0 ? index / 12 : (index - 11) / 12, m = index - y * 12 + 1;
    return {y < 1 ? y - 1 : y, m, std::min(v.d, monthLength(y < 1 ? y - 1 : y, m))};
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

TEST_F(VyDateTest, ValidityAndDayNumbers)
{
    EXPECT_TRUE(VyDate::isValid(-4713, 1, 2) && VyDate::isValid(-5, 2, 29));
    EXPECT_FALSE(VyDate::isValid(0, 6, 1) || VyDate::isValid(-4714, 12, 31) ||
                 VyDate::isValid(-4713, 1, 1) || VyDate::isValid(2000, 13, 1) ||
                 VyDate::isValid(2000, 0, 1) || VyDate::isValid(2000, 1, 0));
    for (int d = 5; d <= 14; ++d) {
        EXPECT_TRUE(VyDate(1582, 10, d, Vy::Gregorian).isNull()) << d;
    }
    VyDate date(2000, 1, 1, Vy::Gregorian);
    EXPECT_FALSE(date.setDate(2001, 2, 29, Vy::Gregorian));
    EXPECT_TRUE(date.isNull());
    // Years far beyond the day number range are null, not wrapped.
    EXPECT_TRUE(VyDate(2000000000, 1, 1, Vy::Gregorian).isNull());
    VyDate::setDateMode(Vy::DefaultDateMode);
    EXPECT_EQ(VyDate::m_dm, Vy::Gregorian);

    EXPECT_EQ(VyDate::gregorianToJulian(2000, 1, 1), 2451545u);
    EXPECT_EQ(VyDate::gregorianToJulian(1582, 10, 15), 2299161u);
    EXPECT_EQ(VyDate::gregorianToJulian(-4713, 1, 2), 1u);
    EXPECT_EQ(VyDate::gregorianToJulian(1970, 1, 1), 2440588u);
    EXPECT_EQ(VyDate(2000, 1, 1, Vy::Gregorian).dayOfWeek(), 6);
    EXPECT_EQ(VyDate(2000, 12, 31, Vy::Gregorian).dayOfYear(), 366);
    EXPECT_EQ(VyDate(2000, 2, 3, Vy::Gregorian).daysInMonth(), 29);
}

// Decomposing and recomposing returns the day number; the next day number decomposes into the
// calendar's next day, and the day after the month's last is invalid; addDays and daysTo agree,
// with the null date outside the uint32 range.
TEST_F(VyDateTest, RandomDayNumbersRoundTrip)
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
        VyDate::julianToGregorian(jd + 1, next.y, next.m, next.d);
        ASSERT_EQ(next, nextDay({y, m, d})) << jd;

        const VyDate date = dayNumber(jd);
        ASSERT_EQ(uint(first.daysTo(date)) + 1, jd);
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
    EXPECT_TRUE(first.addDays(-1).isNull() && dayNumber(5).addDays(INT32_MIN).isNull());
}

TEST_F(VyDateTest, PersianConversionsAgainstTable)
{
    struct Row {
        Ymd gregorian, persian;
    };
    // Worked out with the library's fixed-offset arithmetic.
    const Row rows[] = {{{2000, 3, 19}, {1378, 12, 29}},  {{2000, 3, 20}, {1379, 1, 1}},
                        {{2001, 3, 20}, {1379, 12, 30}},  {{2001, 3, 21}, {1380, 1, 1}},
                        {{1999, 12, 31}, {1378, 10, 10}}, {{2000, 2, 29}, {1378, 12, 10}},
                        {{2023, 9, 22}, {1402, 6, 31}},   {{2023, 9, 23}, {1402, 7, 1}},
                        {{2024, 12, 31}, {1403, 10, 11}}, {{2025, 3, 20}, {1403, 12, 30}},
                        {{1979, 2, 11}, {1357, 11, 22}},  {{2100, 3, 1}, {1478, 12, 10}}};
    for (const Row& r : rows) {
        const VyDate g(r.gregorian.y, r.gregorian.m, r.gregorian.d, Vy::Gregorian);
        EXPECT_EQ(ymd(g, Vy::Persian), r.persian) << r.gregorian;
        VyDate::gregorianMonthsFromApril[10] = 28;
        EXPECT_EQ(VyDate(r.persian.y, r.persian.m, r.persian.d, Vy::Persian), g) << r.persian;
    }
    VyDate::setDateMode(Vy::Persian);
    const VyDate nowruz(2024, 3, 20, Vy::Gregorian);
    EXPECT_EQ(VyDate(1403, 1, 1), nowruz);
    EXPECT_EQ(nowruz.year() * 100 + nowruz.month(Vy::DefaultDateMode), 140301);
    EXPECT_EQ(nowruz.day(Vy::Gregorian), 20);
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

// addMonths and addYears against whole-month steps on random dates and distances, leaving out
// the October 1582 fix-up (pinned below).
TEST_F(VyDateTest, MonthAndYearArithmetic)
{
    std::mt19937 rng(29);
    std::uniform_int_distribution<int> days(0, 2900000), months(-12000, 12000);
    const VyDate first(-3000, 1, 1, Vy::Gregorian);
    for (int i = 0; i < 20000; ++i) {
        const VyDate date = first.addDays(days(rng));
        const Ymd from = ymd(date);
        const int n = i % 4 ? months(rng) : months(rng) / 12 * 12;
        const Ymd to = shifted(from, n);
        const bool dropped = to.y == 1582 && to.m == 10 && to.d >= 5 && to.d <= 14;
        if (!dropped) {
            ASSERT_EQ(ymd(date.addMonths(n)), to) << from << " + " << n << " months";
        }
        const Ymd later = shifted(from, n / 12 * 12);
        const VyDate moved = date.addYears(n / 12);
        if (later.y == 1582 && later.m == 10 && later.d >= 5 && later.d <= 14) {
            ASSERT_TRUE(moved.isNull()) << from << " + " << n / 12 << " years";
        } else {
            ASSERT_EQ(ymd(moved), later) << from << " + " << n / 12 << " years";
        }
    }
    EXPECT_TRUE(VyDate().addMonths(1).isNull() && VyDate().addYears(1).isNull());
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

const long long day = 86400000;

long long msecsOf(const VyTime& t)
{
    return VyTime(0, 0).msecsTo(t);
}

TEST(VyTimeTest, ValidityAndFields)
{
    EXPECT_TRUE(VyTime(24, 0, 0, 0).isNull() && VyTime(-1, 0).isNull());
    EXPECT_FALSE(VyTime::isValid(0, 60, 0, 0) || VyTime::isValid(0, 0, 0, 1000));
    const VyTime t(23, 59, 58, 997);
    EXPECT_EQ(t.hour() * 10000 + t.minute() * 100 + t.second(), 235958);
    EXPECT_EQ(t.msec(), 997);
    EXPECT_EQ(msecsOf(t), day - 1003);
    const VyTime null;
    EXPECT_EQ(null.hour() + null.minute() + null.second() + null.msec(), 0);
    VyTime u(1, 2);
    EXPECT_FALSE(u.setHMS(1, 2, 3, -1));
    EXPECT_TRUE(u.isNull());
}

// addMSecs from random times (and the null time, read as midnight) by random amounts wraps
// into the day; secsTo truncates.
TEST(VyTimeTest, ArithmeticWrapsBothWays)
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

TEST(VyTimeTest, ClockReaders)
{
    VyTime watch;
    watch.start();
    const int e = watch.elapsed();
    EXPECT_TRUE(watch.isValid() && e >= 0 && e < 60000);
    EXPECT_GE(watch.restart(), e);
    // A start just after "now" reads as almost a full day: midnight counts as passed.
    VyTime ahead = VyTime::currentTime().addSecs(3600);
    EXPECT_GT(ahead.elapsed(), int(day) - 3600 * 1000 - 60000);
    EXPECT_TRUE(VyDate::currentDate().isValid());
    const long long now = VyDateTime::currentMSecsSinceEpoch();
    EXPECT_GT(now, 1600000000000LL);
    EXPECT_LE(VyDateTime::currentDateTimeUtc().toMSecsSinceEpoch() - now, 60000);
    EXPECT_LE(VyDateTime::currentDateTime().toMSecsSinceEpoch() - now, 60000);
}

} // namespace
