#include "vydatetime.h"

#include <gtest/gtest.h>

#include <random>
#include <stdint.h>
#include <stdlib.h>
#include <string>
#include <time.h>

namespace
{

// Central European time with its daylight-saving rule, written out so that no zone database
// is needed: +1 h, +2 h from the last Sunday of March 02:00 to the last Sunday of October 03:00.
const char* const centralEurope = "CET-1CEST,M3.5.0,M10.5.0/3";

// Runs each test in a fixed time zone and puts the process's zone back afterwards.
class ZoneTest : public ::testing::Test
{
protected:
    static void useZone(const char* zone)
    {
        setenv("TZ", zone, 1);
        tzset();
    }
    void TearDown() override
    {
        if (hadZone)
            setenv("TZ", savedZone.c_str(), 1);
        else
            unsetenv("TZ");
        tzset();
    }

private:
    const bool hadZone = getenv("TZ") != nullptr;
    const std::string savedZone = hadZone ? getenv("TZ") : "";
};

VyDateTime at(int y, int mo, int d, int h, int mi, Vy::TimeSpec spec = Vy::LocalTimeSpec)
{
    return VyDateTime(VyDate(y, mo, d, Vy::Gregorian), VyTime(h, mi), spec);
}

TEST_F(ZoneTest, EpochConversionsInUtc)
{
    useZone("UTC");
    const VyDateTime noon = at(2000, 1, 1, 12, 0);
    EXPECT_EQ(noon.toMSecsSinceEpoch(), 946728000000LL);
    EXPECT_EQ(noon.toTime_t(), 946728000u);
    EXPECT_EQ(VyDateTime::fromTime_t(0), at(1970, 1, 1, 0, 0));
    EXPECT_EQ(VyDateTime::fromTime_t(0).timeSpec(), Vy::LocalTimeSpec);
    EXPECT_EQ(at(1969, 12, 31, 23, 59, Vy::UtcTimeSpec).toTime_t(), 0xFFFFFFFFu);
    VyDateTime last = at(2106, 2, 7, 6, 28, Vy::UtcTimeSpec);
    EXPECT_EQ(last.addSecs(14).toTime_t(), 0xFFFFFFFEu);
    EXPECT_EQ(last.addSecs(15).toTime_t(), 0xFFFFFFFFu);
    last.setTime_t(86400 + 61);
    EXPECT_EQ(last, at(1970, 1, 2, 0, 1, Vy::UtcTimeSpec).addSecs(1));
    EXPECT_EQ(last.timeSpec(), Vy::UtcTimeSpec);

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

TEST_F(ZoneTest, LocalAndUtcWithDaylightSaving)
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
        ASSERT_EQ(back.date(), local.date()) << date.year() << "-" << date.month();
        ASSERT_EQ(back.time(), local.time());
        const int month = date.month(Vy::Gregorian);
        // The wall-clock difference, both read as UTC.
        const long long shift = VyDateTime(local.date(), local.time(), Vy::UtcTimeSpec)
                                    .secsTo(VyDateTime(utc.date(), utc.time(), Vy::UtcTimeSpec));
        if (month <= 2 || month >= 11) {
            ASSERT_EQ(shift, -3600);
        } else if (month >= 5 && month <= 9) {
            ASSERT_EQ(shift, -7200);
        } else {
            ASSERT_TRUE(shift == -3600 || shift == -7200);
        }
        ASSERT_EQ(back.d->spec, shift == -7200 ? 1 : 0);
    }
}

TEST_F(ZoneTest, ComparisonsAcrossSpecs)
{
    useZone(centralEurope);
    const VyDateTime utc = at(2023, 1, 15, 12, 0, Vy::UtcTimeSpec);
    VyDateTime offset = at(2023, 1, 15, 13, 0);
    offset.setUtcOffset(3600);
    EXPECT_EQ(offset.timeSpec(), Vy::OffsetTimeSpec);
    EXPECT_EQ(offset.utcOffset(), 3600);
    EXPECT_TRUE(utc == offset && utc == at(2023, 1, 15, 13, 0) && utc != at(2023, 1, 15, 12, 0));
    EXPECT_TRUE(utc < at(2023, 1, 15, 13, 1) && at(2023, 1, 15, 12, 59) < utc);
    EXPECT_LT(at(2023, 1, 15, 12, 0, Vy::UtcTimeSpec), at(2023, 1, 15, 12, 1, Vy::UtcTimeSpec));
    EXPECT_FALSE(offset < utc || utc < offset);
    EXPECT_EQ(offset.msecsTo(utc.addMSecs(-1)), -1);
    VyDateTime zero = utc;
    zero.setUtcOffset(0);
    EXPECT_EQ(zero.timeSpec(), Vy::UtcTimeSpec);
    EXPECT_EQ(VyDateTime().utcOffset(), 0);
}

TEST_F(ZoneTest, SpecHandling_Kept)
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

TEST_F(ZoneTest, PartsAndNullValues)
{
    useZone("UTC");
    VyDateTime dt;
    EXPECT_TRUE(dt.isNull());
    dt.setDate(VyDate(2001, 2, 3, Vy::Gregorian)); // the missing time becomes midnight
    EXPECT_TRUE(dt.isValid());
    dt.setTime(VyTime());
    EXPECT_FALSE(dt.isValid() || dt.isNull());
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

} // namespace
