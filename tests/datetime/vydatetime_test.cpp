// VyDateTime: epoch conversions, comparison and arithmetic across time specs, the specs it
// keeps or drops, and its parts. The local-time conversions are in vydatetimeconvert_test.cpp.
#include "datetimefixture.h"

#include <gtest/gtest.h>

#include <random>

TEST(VyDateTime, EpochConversions)
{
    useZone("UTC");
    EXPECT_EQ(at(2000, 1, 1, 12, 0).toTime_t(), 946728000u);
    EXPECT_EQ(VyDateTime::fromTime_t(0), at(1970, 1, 1, 0, 0));
    EXPECT_EQ(VyDateTime::fromTime_t(0).timeSpec(), Vy::LocalTimeSpec);
    EXPECT_EQ(at(1969, 12, 31, 23, 59, Vy::UtcTimeSpec).toTime_t(), 0xFFFFFFFFu);
    VyDateTime last = at(2106, 2, 7, 6, 28, Vy::UtcTimeSpec);
    EXPECT_EQ(last.addSecs(14).toTime_t(), 0xFFFFFFFEu);
    EXPECT_EQ(last.addSecs(15).toTime_t(), 0xFFFFFFFFu);
    last.setTime_t(86400 + 61);
    EXPECT_EQ(last, at(1970, 1, 2, 0, 1, Vy::UtcTimeSpec).addSecs(1));
    EXPECT_EQ(last.timeSpec(), Vy::UtcTimeSpec);
    const long long now = VyDateTime::currentMSecsSinceEpoch();
    EXPECT_GT(now, 1600000000000LL);
    EXPECT_LE(VyDateTime::currentDateTimeUtc().toMSecsSinceEpoch() - now, 60000);
    EXPECT_LE(VyDateTime::currentDateTime().toMSecsSinceEpoch() - now, 60000);

    // The day and the time of the day split off exactly, both ways round.
    std::mt19937_64 rng(3);
    std::uniform_int_distribution<long long> ms(-200000000000000LL, 200000000000000LL);
    const VyDate epochDay(1970, 1, 1, Vy::Gregorian);
    const long long day = 86400000;
    for (int i = 0; i < 5000; ++i) {
        const long long value = ms(rng);
        VyDateTime utc;
        utc.setTimeSpec(Vy::UtcTimeSpec);
        utc.setMSecsSinceEpoch(value);
        const long long days = value / day - (value % day < 0 ? 1 : 0);
        ASSERT_EQ(epochDay.daysTo(utc.date()), days) << value;
        ASSERT_EQ(VyTime(0, 0).msecsTo(utc.time()), value - days * day);
        ASSERT_EQ(utc.toMSecsSinceEpoch(), value);
    }
}

TEST(VyDateTime, ComparisonsAcrossSpecs)
{
    useZone(centralEurope);
    const VyDateTime utc = at(2023, 1, 15, 12, 0, Vy::UtcTimeSpec);
    VyDateTime offset = at(2023, 1, 15, 13, 0);
    offset.setUtcOffset(3600);
    EXPECT_EQ(offset.timeSpec(), Vy::OffsetTimeSpec);
    EXPECT_EQ(offset.utcOffset(), 3600);
    EXPECT_EQ(utc, offset);
    EXPECT_EQ(utc, at(2023, 1, 15, 13, 0));
    EXPECT_NE(utc, at(2023, 1, 15, 12, 0));
    EXPECT_LT(utc, at(2023, 1, 15, 13, 1));
    EXPECT_LT(at(2023, 1, 15, 12, 59), utc);
    EXPECT_LT(utc, at(2023, 1, 15, 12, 1, Vy::UtcTimeSpec));
    EXPECT_FALSE(offset < utc);
    EXPECT_FALSE(utc < offset);
    EXPECT_EQ(offset.msecsTo(utc.addMSecs(-1)), -1);
    VyDateTime zero = utc;
    zero.setUtcOffset(0);
    EXPECT_EQ(zero.timeSpec(), Vy::UtcTimeSpec);
    EXPECT_EQ(VyDateTime().utcOffset(), 0);
}

TEST(VyDateTime, SpecHandling_Kept)
{
    useZone(centralEurope);
    // An offset asked for at construction is not kept; adding days rebuilds from the public
    // spec and so turns an offset value local.
    EXPECT_EQ(at(2023, 1, 15, 1, 0, Vy::OffsetTimeSpec).timeSpec(), Vy::LocalTimeSpec);
    VyDateTime offset = at(2023, 1, 15, 13, 0);
    offset.setUtcOffset(3600);
    EXPECT_EQ(offset.addDays(1).timeSpec(), Vy::LocalTimeSpec);
    // A UTC value asked for an offset becomes local; a local one stays as it is.
    const VyDateTime toOffset =
        at(2023, 1, 15, 12, 0, Vy::UtcTimeSpec).toTimeSpec(Vy::OffsetTimeSpec);
    EXPECT_EQ(toOffset.timeSpec(), Vy::LocalTimeSpec);
    EXPECT_EQ(toOffset.time(), VyTime(13, 0));
    const VyDateTime local = at(2023, 1, 15, 12, 0).toTimeSpec(Vy::OffsetTimeSpec);
    EXPECT_EQ(local.d->spec, -1);
    EXPECT_EQ(local.time(), VyTime(12, 0));
}

TEST(VyDateTime, PartsAndNullValues)
{
    useZone("UTC");
    VyDateTime dt;
    EXPECT_TRUE(dt.isNull());
    dt.setDate(VyDate(2001, 2, 3, Vy::Gregorian)); // the missing time becomes midnight
    EXPECT_TRUE(dt.isValid());
    dt.setTime(VyTime());
    EXPECT_FALSE(dt.isValid());
    EXPECT_FALSE(dt.isNull());
    EXPECT_EQ(VyDateTime(VyDate(), VyTime()).time(), VyTime());
    VyDateTime copy(dt); // copies do not share the record
    copy.setTime(VyTime(5, 0));
    EXPECT_EQ(dt.time(), VyTime());
    const VyDateTime leap = at(2000, 2, 29, 10, 0, Vy::UtcTimeSpec);
    EXPECT_EQ(leap.addYears(1).date(), VyDate(2001, 2, 28, Vy::Gregorian));
    EXPECT_EQ(leap.addMonths(-1).timeSpec(), Vy::UtcTimeSpec);
    EXPECT_EQ(leap.addMSecs(-11LL * 3600000).date(), VyDate(2000, 2, 28, Vy::Gregorian));
    EXPECT_EQ(leap.secsTo(leap.addDays(-1)), -86400);
}
