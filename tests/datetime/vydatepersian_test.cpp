// VyDate in the Persian calendar: both conversions against a table worked out with the
// library's fixed-offset arithmetic, and the month table that grows with every conversion. The
// Persian mode of reading and printing is checked with the date formats.
#include "datetimefixture.h"

#include <gtest/gtest.h>

TEST(VyDatePersian, FixedOffsetConversions_Kept)
{
    const DateModeGuard guard;
    // Worked out with the fixed offsets, one-day drifts around leap years included.
    const Ymd rows[][2] = {
        {{2000, 3, 19}, {1378, 12, 29}}, {{2000, 3, 20}, {1379, 1, 1}},
        {{2001, 3, 20}, {1379, 12, 30}}, {{2001, 3, 21}, {1380, 1, 1}},
        {{2023, 9, 23}, {1402, 7, 1}},   {{2100, 3, 1}, {1478, 12, 10}},
    };
    for (const auto& r : rows) {
        EXPECT_EQ(ymd(VyDate(r[0][0], r[0][1], r[0][2], Vy::Gregorian), Vy::Persian), r[1])
            << testing::PrintToString(r[0]);
        VyDate::gregorianMonthsFromApril[10] = 28;
        EXPECT_EQ(ymd(VyDate(r[1][0], r[1][1], r[1][2], Vy::Persian)), r[0]);
    }
    // A day far past the year's end leads nowhere.
    EXPECT_TRUE(VyDate(1403, 12, 1000, Vy::Persian).isNull());
}

TEST(VyDatePersian, MonthTableGrowsAndLengthsStayGregorian_Kept)
{
    const DateModeGuard guard;
    // 1402 + 622 = 2024 is a leap year: each conversion adds a day to February for good, so
    // the same Persian date moves back a day on every call. Dates before February stay.
    EXPECT_EQ(ymd(VyDate(1402, 12, 29, Vy::Persian)), (Ymd{2024, 3, 19}));
    EXPECT_EQ(ymd(VyDate(1402, 12, 29, Vy::Persian)), (Ymd{2024, 3, 18}));
    EXPECT_EQ(ymd(VyDate(1402, 10, 11, Vy::Persian)), (Ymd{2024, 1, 1}));
    // Persian numbers on the Gregorian tables: month 1 has 31 days, 1403 is no leap year.
    VyDate::setDateMode(Vy::Persian);
    EXPECT_EQ(VyDate(2024, 3, 20, Vy::Gregorian).daysInMonth(), 31);
    EXPECT_EQ(VyDate(2024, 3, 20, Vy::Gregorian).daysInYear(), 365);
}
