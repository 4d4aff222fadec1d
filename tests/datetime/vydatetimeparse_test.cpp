// Text to date and time: every token with its field widths, mismatches giving the null value,
// and random values printed and read back in both date modes.
#include "datetimefixture.h"

#include <gtest/gtest.h>

#include <random>

TEST(VyDateTimeParse, EveryTokenParsed)
{
    const DateModeGuard guard;
    const VyDateTime expected(VyDate(2004, 3, 7, Vy::Gregorian), VyTime(15, 4, 5, 6));
    EXPECT_EQ(VyDateTime::fromString("7 3 2004 3 4 5 6 PM", "d M yyyy h m s z AP"), expected);
    EXPECT_EQ(VyDateTime::fromString("07.03.2004 15:04:05.006", "dd.MM.yyyy HH:mm:ss.zzz"),
              expected);
    EXPECT_EQ(VyDateTime::fromString("20040307 03 pm 0405006", "yyyyMMdd hh ap mmsszzz"), expected);
    EXPECT_EQ(VyDateTime::fromString("2004-3-7 15:4:5.06", "yyyy-M-d H:m:s.z"), expected);
    EXPECT_EQ(VyTime::fromString("12:30 am", "h:mm a"), VyTime(0, 30));
    EXPECT_EQ(VyTime::fromString("12:30 PM", "h:mm A"), VyTime(12, 30));
    EXPECT_EQ(VyTime::fromString("x 7", "x H"), VyTime(7, 0));
    EXPECT_EQ(VyDate::fromString("-0044 yy", "yyyy yy"), VyDate(-44, 1, 1, Vy::Gregorian));
    EXPECT_EQ(VyDate::fromString("15 hh", "d hh"), VyDate(1970, 1, 15, Vy::Gregorian));
    EXPECT_EQ(VyDateTime::fromString("1", "H").date(), VyDate(1970, 1, 1, Vy::Gregorian));

    VyDate::setDateMode(Vy::Persian);
    EXPECT_EQ(VyDate::fromString("1403/01/01", "yyyy/MM/dd"), VyDate(2024, 3, 20, Vy::Gregorian));
}

TEST(VyDateTimeParse, MismatchGivesNull)
{
    for (const char* t : {"2004-13-01", "2004-02-30", "2004-1-01", "2004-01-01x", "2004-01-0",
                          "1582-10-10", "-4713-01-01", "2004+01-01", "0000-01-01", ""}) {
        EXPECT_TRUE(VyDate::fromString(t, "yyyy-MM-dd").isNull()) << t;
    }
    for (const char* t : {"24:00", "0:00 AM", "13:00 PM", "1:00 XM", "1:00 A", "1:60", "1:2"}) {
        EXPECT_TRUE(VyTime::fromString(t, "h:mm AP").isNull()) << t;
        EXPECT_TRUE(VyTime::fromString(t, "H:mm").isNull()) << t;
    }
    const char* const other[][2] = {
        {"2004", ""},
        {"", ""},
        {"12345", "yyyy"},
        {"abc", "abd"},
        {"123", "hh"},
        {"1.1234", "s.z"},
        {"99999999999", "z"},
        {"2004-01-01 25", "yyyy-MM-dd H"},
        {"2004-02-30 1", "yyyy-MM-dd H"},
    };
    for (const auto& c : other) {
        EXPECT_TRUE(VyDateTime::fromString(c[0], c[1]).isNull()) << c[0] << " / " << c[1];
    }
}

// Printing and reading back returns the value: Gregorian dates from 4000 BC, Persian ones
// from 1600 on (where the conversion is its own inverse).
TEST(VyDateTimeParse, RandomRoundTrip)
{
    const DateModeGuard guard;
    std::mt19937 rng(17);
    std::uniform_int_distribution<int> days(0, 3000000), msecs(0, 86399999);
    const VyDate firstGregorian(-4000, 1, 1, Vy::Gregorian);
    const VyDate firstPersian(1600, 1, 1, Vy::Gregorian);
    const char* const formats[] = {"yyyy-MM-dd HH:mm:ss.zzz", "dd/MM/yyyy hh:mm:ss.zzz ap",
                                   "d.M.yyyy h:m:s.z AP"};
    for (int i = 0; i < 6000; ++i) {
        const bool persian = i % 2;
        VyDate::setDateMode(persian ? Vy::Persian : Vy::Gregorian);
        const VyDate date = (persian ? firstPersian : firstGregorian).addDays(days(rng));
        const VyDateTime dt(date, VyTime(0, 0).addMSecs(msecs(rng)));
        const VyString format = formats[i % 3];
        const VyString s = dt.toString(format);
        VyDate::gregorianMonthsFromApril[10] = 28;
        ASSERT_EQ(VyDateTime::fromString(s, format), dt) << s.toUtf8().constData();
    }
}
