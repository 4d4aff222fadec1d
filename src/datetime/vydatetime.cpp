// VyDateTime: a date and a time with a time spec, arithmetic and comparison in UTC, and the
// epoch and clock conversions.
#include "vydatetime.h"

#include <sys/time.h>

namespace
{

const long long msecsPerDay = 86400000;
// Day number of 1 January 1970.
const uint epochDay = 2440588;

bool isLocal(int spec)
{
    return spec < VyDateTimePrivate::UTC;
}

// Two values brought to UTC, for comparing and measuring.
struct InUtc {
    VyDate date, otherDate;
    VyTime time, otherTime;
    InUtc(const VyDateTimePrivate& a, const VyDateTimePrivate& b)
    {
        a.getUTC(date, time);
        b.getUTC(otherDate, otherTime);
    }
};

} // namespace

VyDateTime::VyDateTime() : d(new VyDateTimePrivate) {}

VyDateTime::VyDateTime(const VyDate& date) : d(new VyDateTimePrivate)
{
    d->date = date;
    d->time = VyTime(0, 0, 0, 0);
}

VyDateTime::VyDateTime(const VyDate& date, const VyTime& time, Vy::TimeSpec spec)
    : d(new VyDateTimePrivate)
{
    d->date = date;
    d->time = date.isValid() && !time.isValid() ? VyTime(0, 0, 0, 0) : time;
    d->spec = spec == Vy::UtcTimeSpec ? VyDateTimePrivate::UTC : VyDateTimePrivate::LocalUnknown;
}

VyDateTime::VyDateTime(const VyDateTime& other) : d(new VyDateTimePrivate(*other.d)) {}

VyDateTime& VyDateTime::operator=(const VyDateTime& other)
{
    *d = *other.d;
    return *this;
}

VyDateTime::~VyDateTime()
{
    delete d;
}

bool VyDateTime::isNull() const
{
    return d->date.isNull() && d->time.isNull();
}

bool VyDateTime::isValid() const
{
    return d->date.isValid() && d->time.isValid();
}

Vy::TimeSpec VyDateTime::timeSpec() const
{
    switch (d->spec) {
    case VyDateTimePrivate::UTC:
        return Vy::UtcTimeSpec;
    case VyDateTimePrivate::OffsetFromUTC:
        return Vy::OffsetTimeSpec;
    default:
        return Vy::LocalTimeSpec;
    }
}

int VyDateTime::utcOffset() const
{
    return isValid() && d->spec == VyDateTimePrivate::OffsetFromUTC ? d->utcOffset : 0;
}

void VyDateTime::setDate(const VyDate& date)
{
    d->date = date;
    if (isLocal(d->spec))
        d->spec = VyDateTimePrivate::LocalUnknown;
    if (date.isValid() && !d->time.isValid())
        d->time = VyTime(0, 0, 0, 0);
}

void VyDateTime::setTime(const VyTime& time)
{
    if (isLocal(d->spec))
        d->spec = VyDateTimePrivate::LocalUnknown;
    d->time = time;
}

void VyDateTime::setTimeSpec(Vy::TimeSpec spec)
{
    d->spec = spec == Vy::UtcTimeSpec      ? VyDateTimePrivate::UTC
              : spec == Vy::OffsetTimeSpec ? VyDateTimePrivate::OffsetFromUTC
                                           : VyDateTimePrivate::LocalUnknown;
}

void VyDateTime::setUtcOffset(int seconds)
{
    d->spec = seconds == 0 ? VyDateTimePrivate::UTC : VyDateTimePrivate::OffsetFromUTC;
    d->utcOffset = seconds;
}

long long VyDateTime::toMSecsSinceEpoch() const
{
    VyDate date;
    VyTime time;
    d->getUTC(date, time);
    return ((long long)date.jd - epochDay) * msecsPerDay + VyTime(0, 0).msecsTo(time);
}

uint VyDateTime::toTime_t() const
{
    const long long secs = toMSecsSinceEpoch() / 1000;
    return secs < 0 || secs >= 0xFFFFFFFFLL ? 0xFFFFFFFFu : uint(secs);
}

void VyDateTime::setTime_t(uint secs)
{
    setMSecsSinceEpoch(secs * 1000LL);
}

void VyDateTime::setMSecsSinceEpoch(long long msecs)
{
    const bool wasUtc = d->spec == VyDateTimePrivate::UTC;
    d->date = VyDate(1970, 1, 1, Vy::Gregorian);
    d->time = VyTime(0, 0, 0, 0);
    VyDateTimePrivate::addMSecs(d->date, d->time, msecs);
    d->spec = VyDateTimePrivate::UTC;
    if (!wasUtc) {
        VyDate date;
        VyTime time;
        d->spec = d->getLocal(date, time);
        d->date = date;
        d->time = time;
    }
}

VyDateTime VyDateTime::addDays(int n) const
{
    return VyDateTime(d->date.addDays(n), d->time, timeSpec());
}

VyDateTime VyDateTime::addMonths(int n) const
{
    return VyDateTime(d->date.addMonths(n), d->time, timeSpec());
}

VyDateTime VyDateTime::addYears(int n) const
{
    return VyDateTime(d->date.addYears(n), d->time, timeSpec());
}

VyDateTime VyDateTime::addMSecs(long long ms) const
{
    VyDate date;
    VyTime time;
    d->getUTC(date, time);
    VyDateTimePrivate::addMSecs(date, time, ms);
    const VyDateTime utc(date, time, Vy::UtcTimeSpec);
    return timeSpec() == Vy::LocalTimeSpec ? utc.toTimeSpec(Vy::LocalTimeSpec) : utc;
}

VyDateTime VyDateTime::addSecs(int s) const
{
    return addMSecs(1000LL * s);
}

int VyDateTime::daysTo(const VyDateTime& other) const
{
    return d->date.daysTo(other.d->date);
}

int VyDateTime::secsTo(const VyDateTime& other) const
{
    const InUtc u(*d, *other.d);
    return int(u.date.daysTo(u.otherDate) * 86400LL + u.time.secsTo(u.otherTime));
}

long long VyDateTime::msecsTo(const VyDateTime& other) const
{
    const InUtc u(*d, *other.d);
    return u.date.daysTo(u.otherDate) * msecsPerDay + u.time.msecsTo(u.otherTime);
}

VyDateTime VyDateTime::toTimeSpec(Vy::TimeSpec spec) const
{
    VyDateTime result(*this);
    if ((spec == Vy::UtcTimeSpec) == (d->spec == VyDateTimePrivate::UTC))
        return result;
    if (spec == Vy::UtcTimeSpec) {
        d->getUTC(result.d->date, result.d->time);
        result.d->spec = VyDateTimePrivate::UTC;
    } else {
        result.d->spec = d->getLocal(result.d->date, result.d->time);
    }
    return result;
}

bool VyDateTime::operator==(const VyDateTime& other) const
{
    if (d->spec == other.d->spec && d->utcOffset == other.d->utcOffset)
        return d->time == other.d->time && d->date == other.d->date;
    const InUtc u(*d, *other.d);
    return u.time == u.otherTime && u.date == u.otherDate;
}

bool VyDateTime::operator<(const VyDateTime& other) const
{
    if (d->spec == other.d->spec && d->spec != VyDateTimePrivate::OffsetFromUTC)
        return d->date != other.d->date ? d->date < other.d->date : d->time < other.d->time;
    const InUtc u(*d, *other.d);
    return u.date != u.otherDate ? u.date < u.otherDate : u.time < u.otherTime;
}

VyDateTime VyDateTime::currentDateTime()
{
    return fromMSecsSinceEpoch(currentMSecsSinceEpoch());
}

VyDateTime VyDateTime::currentDateTimeUtc()
{
    VyDateTime result;
    result.setTimeSpec(Vy::UtcTimeSpec);
    result.setMSecsSinceEpoch(currentMSecsSinceEpoch());
    return result;
}

VyDateTime VyDateTime::fromTime_t(uint secs)
{
    VyDateTime result;
    result.setTime_t(secs);
    return result;
}

VyDateTime VyDateTime::fromMSecsSinceEpoch(long long msecs)
{
    VyDateTime result;
    result.setMSecsSinceEpoch(msecs);
    return result;
}

long long VyDateTime::currentMSecsSinceEpoch()
{
    struct timeval tv;
    gettimeofday(&tv, nullptr);
    return tv.tv_sec * 1000LL + tv.tv_usec / 1000;
}
