// Date and time to text: every token, the 12-hour forms, years outside four digits, tokens of a
// part the class does not hold, and the Persian mode.
#include "datetimefixture.h"

#include <gtest/gtest.h>

#include <string>

namespace
{

std::string text(const VyString& s)
{
    return s.toUtf8().constData();
}

} // namespace

TEST(VyDateTimeFormat, EveryTokenPrinted)
{
    const DateModeGuard guard;
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
    EXPECT_TRUE(VyDate().toString("yyyy").isEmpty());
    EXPECT_TRUE(VyTime().toString("hh").isEmpty());
    EXPECT_TRUE(VyDateTime().toString("hh").isEmpty());

    VyDate::setDateMode(Vy::Persian);
    EXPECT_EQ(text(VyDate(2024, 3, 20, Vy::Gregorian).toString("yyyy/MM/dd d M")),
              "1403/01/01 1 1");
    EXPECT_EQ(text(dt.toString("yyyy-MM-dd HH")), "1382-12-17 15");
}
