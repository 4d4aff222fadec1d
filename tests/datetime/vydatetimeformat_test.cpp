// Date and time to text: every token, the 12-hour forms, tokens of a part the class does not
// hold, and the Persian mode. Reading the text back is checked in vydatetimeparse_test.cpp.
#include "datetimefixture.h"
#include "vyu16.h"

#include <gtest/gtest.h>

TEST(VyDateTimeFormat, EveryTokenPrinted)
{
    const DateModeGuard guard;
    const VyDateTime dt(VyDate(2004, 3, 7, Vy::Gregorian), VyTime(15, 4, 5, 6));
    EXPECT_EQ(U8(dt.toString("d dd M MM yyyy h hh H HH m mm s ss z zzz AP ap A a")),
              "7 07 3 03 2004 3 03 15 15 4 04 5 05 6 006 PM pm PM pm");
    EXPECT_EQ(U8(dt.toString("h:mm, yy yyyyy zz")), "15:04, yy 2004y 66");
    EXPECT_EQ(U8(VyTime(0, 5).toString("hh:mm AP|HH")), "12:05 AM|00");
    // Tokens of the part a class does not hold are text.
    EXPECT_EQ(U8(VyDate(2004, 3, 7, Vy::Gregorian).toString("d hh:mm ap")), "7 hh:mm ap");
    EXPECT_EQ(U8(VyTime(9, 8).toString("yyyy-MM-dd H")), "yyyy-MM-dd 9");
    EXPECT_TRUE(VyDate().toString("yyyy").isEmpty());
    EXPECT_TRUE(VyTime().toString("hh").isEmpty());
    EXPECT_TRUE(VyDateTime().toString("hh").isEmpty());

    VyDate::setDateMode(Vy::Persian);
    EXPECT_EQ(U8(dt.toString("yyyy-MM-dd HH")), "1382-12-17 15");
}
