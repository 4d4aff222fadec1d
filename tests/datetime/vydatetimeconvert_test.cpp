// Local time and UTC through the C library, with daylight saving and with dates outside the
// range the C library is trusted with.
#include "datetimefixture.h"

#include <gtest/gtest.h>

#include <random>
#include <stdint.h>

TEST(VyDateTimeConvert, LocalAndUtcWithDaylightSaving)
{
    useZone(centralEurope);
    // Outside 1970 to 2037 the day is carried back across the moved date.
    EXPECT_EQ(at(1900, 1, 1, 0, 30).toTimeSpec(Vy::UtcTimeSpec),
              at(1899, 12, 31, 23, 30, Vy::UtcTimeSpec));
    EXPECT_EQ(at(2400, 12, 31, 23, 30, Vy::UtcTimeSpec).toTimeSpec(Vy::LocalTimeSpec),
              at(2401, 1, 1, 0, 30));
    // The clock jumps from 02:00 to 03:00 on 26 March 2023.
    const VyDateTime beforeJump = at(2023, 3, 26, 1, 30);
    const VyDateTime afterJump = beforeJump.addSecs(3600);
    EXPECT_EQ(afterJump.time(), VyTime(3, 30));
    EXPECT_EQ(afterJump.d->spec, 1);
    EXPECT_EQ(beforeJump.secsTo(afterJump), 3600);
    EXPECT_EQ(beforeJump.daysTo(afterJump.addDays(2)), 2);

    // Local to UTC and back gives the same wall clock, an hour or two apart, everywhere in
    // the day number range (night hours avoided: the jump days have no or two 02:30).
    std::mt19937 rng(5);
    std::uniform_int_distribution<uint> days(10, UINT32_MAX - 10);
    std::uniform_int_distribution<int> hour(4, 23), minute(0, 59);
    const VyDate first(-4713, 1, 2, Vy::Gregorian);
    for (int i = 0; i < 3000; ++i) {
        const uint offset = days(rng) >> (i % 20);
        const VyDate date = first.addDays(int(offset / 2)).addDays(int(offset - offset / 2));
        const VyDateTime local(date, VyTime(hour(rng), minute(rng)));
        const VyDateTime utc = local.toTimeSpec(Vy::UtcTimeSpec);
        ASSERT_EQ(utc.timeSpec(), Vy::UtcTimeSpec);
        const VyDateTime back = utc.toTimeSpec(Vy::LocalTimeSpec);
        ASSERT_EQ(back.date(), local.date()) << testing::PrintToString(ymd(date));
        ASSERT_EQ(back.time(), local.time());
        const int month = date.month(Vy::Gregorian);
        // The wall-clock difference, both read as UTC.
        const long long shift = VyDateTime(local.date(), local.time(), Vy::UtcTimeSpec)
                                    .secsTo(VyDateTime(utc.date(), utc.time(), Vy::UtcTimeSpec));
        const bool summer = month >= 5 && month <= 9;
        const bool winter = month <= 2 || month >= 11;
        ASSERT_EQ(shift, summer ? -7200 : winter ? -3600 : shift == -7200 ? -7200 : -3600);
        ASSERT_EQ(back.d->spec, shift == -7200 ? 1 : 0);
    }
}
