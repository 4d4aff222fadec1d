// Text to date and time: random values printed and read back in both date modes with every
// token, and the text the round trip never makes: literals, defaults and mismatches.
#include "datetimefixture.h"

#include <gtest/gtest.h>

#include <random>

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
                                   "d.M.yyyy h:m:s.z AP", "yyyyMMdd hhmmsszzz A",
                                   "M d yyyy h:m:s.z a"};
    for (int i = 0; i < 6000; ++i) {
        const bool persian = i % 2;
        VyDate::setDateMode(persian ? Vy::Persian : Vy::Gregorian);
        const VyDate date = (persian ? firstPersian : firstGregorian).addDays(days(rng));
        const VyDateTime dt(date, VyTime(0, 0).addMSecs(msecs(rng)));
        const VyString format = formats[i % 5];
        const VyString s = dt.toString(format);
        VyDate::gregorianMonthsFromApril[10] = 28;
        ASSERT_EQ(VyDateTime::fromString(s, format), dt) << s.toUtf8().constData();
    }
}

TEST(VyDateTimeParse, LiteralsDefaultsAndMismatches)
{
    // Parts the format does not name take their defaults; tokens of a part the class does not
    // hold are text.
    EXPECT_EQ(VyDateTime::fromString("x 7", "x H"), at(1970, 1, 1, 7, 0));
    EXPECT_EQ(VyDate::fromString("15 hh", "d hh"), VyDate(1970, 1, 15, Vy::Gregorian));
    for (const char* t : {"2004-1-01", "2004-01-01x", "2004-01-32", ""}) {
        EXPECT_TRUE(VyDate::fromString(t, "yyyy-MM-dd").isNull()) << t;
    }
    for (const char* t : {"24:00", "0:00 AM", "13:00 PM", "1:00 XM", "1:00 A", "1:60", "1:2"}) {
        EXPECT_TRUE(VyTime::fromString(t, "h:mm AP").isNull()) << t;
        EXPECT_TRUE(VyTime::fromString(t, "H:mm").isNull()) << t;
    }
    EXPECT_TRUE(VyDateTime::fromString("2004", "").isNull());
}
