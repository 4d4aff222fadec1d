// Local time and UTC through the C library, with daylight saving and with dates outside the
// range the C library is trusted with, and the epoch count of such values.
#include "datetimefixture.h"

#include <gtest/gtest.h>

#include <random>
#include <stdint.h>

TEST(VyDateTimeConvert, LocalAndUtcWithDaylightSaving)
{
    useZone(centralEurope);
    // Local to UTC and back gives the same wall clock, an hour or two apart, everywhere in
    // the day number range (the hour from 02:00 avoided: the jump days have none or two).
    std::mt19937 rng(5);
    std::uniform_int_distribution<uint> days(10, UINT32_MAX - 10);
    std::uniform_int_distribution<int> hour(0, 22), minute(0, 59);
    const VyDate first(-4713, 1, 2, Vy::Gregorian);
    const long long epochDay = VyDate::gregorianToJulian(1970, 1, 1);
    for (int i = 0; i < 3000; ++i) {
        const uint offset = days(rng) >> (i % 20);
        const VyDate date = first.addDays(int(offset / 2)).addDays(int(offset - offset / 2));
        const int h = hour(rng);
        const VyDateTime local(date, VyTime(h < 2 ? h : h + 1, minute(rng)));
        const VyDateTime utc = local.toTimeSpec(Vy::UtcTimeSpec);
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

        // The same instant as milliseconds since 1970 and with its offset from UTC.
        const long long ms =
            (1 + offset - epochDay) * 86400000 + VyTime(0, 0).msecsTo(local.time()) + shift * 1000;
        ASSERT_EQ(VyDateTime::fromMSecsSinceEpoch(ms), local);
        VyDateTime withOffset = local;
        withOffset.setUtcOffset(int(-shift));
        ASSERT_EQ(withOffset.utcOffset(), -shift);
        ASSERT_EQ(withOffset, utc);
        ASSERT_LT(withOffset, utc.addMSecs(1));
        ASSERT_LT(local.addMSecs(-1), withOffset);
        ASSERT_EQ(utc.msecsTo(withOffset.addSecs(1)), 1000);
        // Arithmetic works in UTC, so an hour later may read two hours later near a jump.
        ASSERT_EQ(local.addSecs(3600).toMSecsSinceEpoch(), ms + 3600000);
    }
}
