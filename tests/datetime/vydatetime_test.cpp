// VyDateTime: epoch conversions, comparison and arithmetic across time specs, the specs it
// keeps or drops, and its parts. Random values in every spec are compared and converted in
// vydatetimeconvert_test.cpp.
#include "datetimefixture.h"

#include <gtest/gtest.h>

TEST(VyDateTime, EpochConversions)
{
    EXPECT_EQ(VyDateTime::fromTime_t(4000000000u).toTime_t(), 4000000000u);
    // Before 1970 and from 2^32 - 1 seconds on, toTime_t gives 0xFFFFFFFF.
    const VyDateTime last = at(2106, 2, 7, 6, 28, Vy::UtcTimeSpec);
    EXPECT_EQ(at(1969, 12, 31, 23, 59, Vy::UtcTimeSpec).toTime_t(), 0xFFFFFFFFu);
    EXPECT_EQ(last.addSecs(14).toTime_t(), 0xFFFFFFFEu);
    EXPECT_EQ(last.addSecs(15).toTime_t(), 0xFFFFFFFFu);
    const long long now = VyDateTime::currentMSecsSinceEpoch();
    EXPECT_GT(now, 1600000000000LL);
    EXPECT_LE(VyDateTime::currentDateTimeUtc().toMSecsSinceEpoch() - now, 60000);
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
    EXPECT_EQ(leap.addMSecs(-11LL * 3600000).date(), VyDate(2000, 2, 28, Vy::Gregorian));
    EXPECT_EQ(leap.secsTo(leap.addDays(-1)), -86400);
    EXPECT_LT(leap, leap.addMSecs(1));
    // Two offsets compare by the instant (07:00 and 10:00 UTC), not by the wall clock.
    VyDateTime east = at(2000, 1, 1, 10, 0);
    east.setUtcOffset(3 * 3600);
    VyDateTime west = at(2000, 1, 1, 9, 0);
    west.setUtcOffset(-3600);
    EXPECT_LT(east, west);
    west.setUtcOffset(0);
    EXPECT_EQ(west.timeSpec(), Vy::UtcTimeSpec);
}
