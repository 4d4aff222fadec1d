#include "vydatetime.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

namespace
{

std::string text(const VyString& s)
{
    return s.toUtf8().constData();
}

class DateTimeFormatTest : public ::testing::Test
{
protected:
    void TearDown() override
    {
        VyDate::setDateMode(Vy::Gregorian);
        VyDate::gregorianMonthsFromApril[10] = 28;
    }
};

TEST_F(DateTimeFormatTest, EveryTokenPrinted)
{
    const VyDateTime dt(VyDate(2004, 3, 7, Vy::Gregorian), VyTime(15, 4, 5, 6));
    EXPECT_EQ(text(dt.toString("d dd M MM yyyy h hh H HH m mm s ss z zzz AP ap A a")),
              "7 07 3 03 2004 3 03 15 15 4 04 5 05 6 006 PM pm PM pm");
    EXPECT_EQ(text(dt.toString("h:mm, yy yyyyy zz")), "15:04, yy 2004y 66");
    EXPECT_EQ(text(VyTime(0, 5).toString("hh:mm AP|HH")), "12:05 AM|00");
    EXPECT_EQ(text(VyTime(12, 5).toString("h ap")), "12 pm");
    EXPECT_EQ(text(VyTime(23, 0).toString("h a")), "11 pm");
    EXPECT_EQ(text(VyDate(-44, 3, 15, Vy::Gregorian).toString("yyyy-MM-dd")), "-0044-03-15");
    EXPECT_EQ(text(VyDate(12345, 1, 2, Vy::Gregorian).toString("yyyy")), "12345");
    // Tokens of the part a class does not hold are text.
    EXPECT_EQ(text(VyDate(2004, 3, 7, Vy::Gregorian).toString("d hh:mm ap")), "7 hh:mm ap");
    EXPECT_EQ(text(VyTime(9, 8).toString("yyyy-MM-dd H")), "yyyy-MM-dd 9");
    EXPECT_TRUE(VyDate().toString("yyyy").isEmpty() && VyTime().toString("hh").isEmpty() &&
                VyDateTime().toString("hh").isEmpty());

    VyDate::setDateMode(Vy::Persian);
    EXPECT_EQ(text(VyDate(2024, 3, 20, Vy::Gregorian).toString("yyyy/MM/dd d M")),
              "1403/01/01 1 1");
    EXPECT_EQ(text(dt.toString("yyyy-MM-dd HH")), "1382-12-17 15");
}

TEST_F(DateTimeFormatTest, EveryTokenParsed)
{
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

TEST_F(DateTimeFormatTest, MismatchGivesNull)
{
    for (const char* t : {"2004-13-01", "2004-02-30", "2004-1-01", "2004-01-01x", "2004-01-0",
                          "1582-10-10", "-4713-01-01", "2004+01-01", "0000-01-01", ""}) {
        EXPECT_TRUE(VyDate::fromString(t, "yyyy-MM-dd").isNull()) << t;
    }
    for (const char* t : {"24:00", "0:00 AM", "13:00 PM", "1:00 XM", "1:00 A", "1:60", "1:2"}) {
        EXPECT_TRUE(VyTime::fromString(t, "h:mm AP").isNull() &&
                    VyTime::fromString(t, "H:mm").isNull())
            << t;
    }
    const char* const other[][2] = {
        {"2004", ""},  {"", ""},          {"12345", "yyyy"},    {"abc", "abd"},
        {"123", "hh"}, {"1.1234", "s.z"}, {"99999999999", "z"},
    };
    for (const auto& c : other) {
        EXPECT_TRUE(VyDateTime::fromString(c[0], c[1]).isNull()) << c[0] << " / " << c[1];
    }
    EXPECT_TRUE(VyDateTime::fromString("2004-01-01 25", "yyyy-MM-dd H").isNull());
    EXPECT_TRUE(VyDateTime::fromString("2004-02-30 1", "yyyy-MM-dd H").isNull());
}

// Printing and reading back returns the value: Gregorian dates from 4000 BC, Persian ones
// from 1600 on (where the conversion is its own inverse).
TEST_F(DateTimeFormatTest, RandomRoundTrip)
{
    std::mt19937 rng(17);
    std::uniform_int_distribution<int> days(0, 3000000), msecs(0, 86399999);
    const VyDate firstGregorian(-4000, 1, 1, Vy::Gregorian),
        firstPersian(1600, 1, 1, Vy::Gregorian);
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
        ASSERT_EQ(VyDateTime::fromString(s, format), dt) << text(s);
    }
}

} // namespace
