// VyDateTimePrivate: conversions between local time and UTC through the C library, and the
// millisecond arithmetic with day carry.
#include "vydatetime.h"

#include <stdint.h>
#include <time.h>

namespace
{

const long long msecsPerDay = 86400000;

// date + days for any count of days; the null date outside the day number range.
VyDate addManyDays(VyDate date, long long days)
{
    while (date.isValid() && days != 0) {
        const int step = days > INT32_MAX ? INT32_MAX : days < -INT32_MAX ? -INT32_MAX : int(days);
        date = date.addDays(step);
        days -= step;
    }
    return date;
}

// The C library's mktime and localtime_r are trusted from 1970 to 2037 only (32-bit time_t
// ends in January 2038). A date strictly between 2 January 1970 and 30 December 2037 is used as
// it is; any other gets the same month and day in 2037 (from 2 January 1970 on) or 1970
// (before), 29 February becoming 28. *shift receives the days from the returned date back to
// the true one.
VyDate systemRangeDate(const VyDate& date, long long* shift)
{
    const VyDate first(1970, 1, 2, Vy::Gregorian);
    const VyDate last(2037, 12, 30, Vy::Gregorian);
    *shift = 0;
    if (date > first && date < last)
        return date;
    int y, m, d;
    date.getDate(&y, &m, &d, Vy::Gregorian);
    if (m == 2 && d == 29)
        d = 28;
    const VyDate moved(date >= first ? 2037 : 1970, m, d, Vy::Gregorian);
    // The days between may exceed int: count them from the uint32 difference.
    *shift =
        date >= moved ? (long long)uint(moved.daysTo(date)) : -(long long)uint(date.daysTo(moved));
    return moved;
}

// A date from the C library's broken-down time, moved back by `shift` days.
VyDate dateFromTm(const struct tm& t, long long shift)
{
    return addManyDays(VyDate(t.tm_year + 1900, t.tm_mon + 1, t.tm_mday, Vy::Gregorian), shift);
}

VyTime timeFromTm(const struct tm& t, int msec)
{
    return VyTime(t.tm_hour, t.tm_min, t.tm_sec, msec);
}

} // namespace

void VyDateTimePrivate::getUTC(VyDate& outDate, VyTime& outTime) const
{
    outDate = date;
    outTime = time;
    if (spec == UTC || !date.isValid())
        return;
    if (spec == OffsetFromUTC) {
        addMSecs(outDate, outTime, -1000LL * utcOffset);
        return;
    }
    long long shift;
    const VyDate moved = systemRangeDate(date, &shift);
    struct tm local = {};
    moved.getDate(&local.tm_year, &local.tm_mon, &local.tm_mday, Vy::Gregorian);
    local.tm_year -= 1900;
    local.tm_mon -= 1;
    local.tm_hour = time.hour();
    local.tm_min = time.minute();
    local.tm_sec = time.second();
    local.tm_isdst = spec;
    const time_t secs = mktime(&local);
    struct tm utc;
    if (!gmtime_r(&secs, &utc)) {
        outDate = VyDate(1970, 1, 1, Vy::Gregorian);
        outTime = VyTime();
        return;
    }
    outDate = dateFromTm(utc, shift);
    outTime = timeFromTm(utc, time.msec());
}

int VyDateTimePrivate::getLocal(VyDate& outDate, VyTime& outTime) const
{
    outDate = date;
    outTime = time;
    if (spec != UTC || !date.isValid())
        return spec;
    long long shift;
    const VyDate moved = systemRangeDate(date, &shift);
    const time_t secs = time_t(VyDate(1970, 1, 1, Vy::Gregorian).daysTo(moved) * 86400LL +
                               VyTime(0, 0).secsTo(time));
    tzset();
    struct tm local;
    if (!localtime_r(&secs, &local)) {
        outDate = VyDate(1970, 1, 1, Vy::Gregorian);
        outTime = VyTime();
        return LocalUnknown;
    }
    outDate = dateFromTm(local, shift);
    outTime = timeFromTm(local, time.msec());
    return local.tm_isdst > 0 ? LocalDST : local.tm_isdst == 0 ? LocalStandard : LocalUnknown;
}

void VyDateTimePrivate::addMSecs(VyDate& date, VyTime& time, long long ms)
{
    if (!date.isValid())
        return;
    const int sign = ms < 0 ? -1 : 1;
    // The magnitude in unsigned arithmetic, so that the most negative value has one too.
    const unsigned long long magnitude = ms < 0 ? 0ULL - (unsigned long long)ms : ms;
    const long long days = (long long)(magnitude / msecsPerDay) * sign;
    long long t = (long long)(magnitude % msecsPerDay) * sign + VyTime(0, 0).msecsTo(time);
    long long carry = days;
    if (t < 0) {
        const long long borrow = (-t + msecsPerDay - 1) / msecsPerDay;
        carry -= borrow;
        t += borrow * msecsPerDay;
    } else if (t >= msecsPerDay) {
        carry += t / msecsPerDay;
        t %= msecsPerDay;
    }
    date = addManyDays(date, carry);
    time = VyTime(0, 0).addMSecs(int(t));
}
