// VyTime: a time of day in milliseconds, with arithmetic that wraps at midnight.
#include "vydatetime.h"

#include <sys/time.h>
#include <time.h>

namespace
{

const int msecsPerDay = 86400000;

// The milliseconds from `from` to `now`, across one midnight.
int msecsSince(const VyTime& from, const VyTime& now)
{
    const int n = from.msecsTo(now);
    return n < 0 ? n + msecsPerDay : n;
}

} // namespace

VyTime::VyTime(int h, int m, int s, int ms) : mds(-1)
{
    setHMS(h, m, s, ms);
}

bool VyTime::isValid(int h, int m, int s, int ms)
{
    return uint(h) < 24 && uint(m) < 60 && uint(s) < 60 && uint(ms) < 1000;
}

bool VyTime::setHMS(int h, int m, int s, int ms)
{
    if (!isValid(h, m, s, ms)) {
        mds = -1;
        return false;
    }
    mds = (h * 3600 + m * 60 + s) * 1000 + ms;
    return true;
}

int VyTime::hour() const
{
    return value() / 3600000;
}

int VyTime::minute() const
{
    return value() % 3600000 / 60000;
}

int VyTime::second() const
{
    return value() / 1000 % 60;
}

int VyTime::msec() const
{
    return value() % 1000;
}

VyTime VyTime::addMSecs(int ms) const
{
    // 64-bit: the day multiple added for negative ms does not fit in int for large ms.
    const long long t = value();
    VyTime result;
    if (ms >= 0)
        result.mds = int((t + ms) % msecsPerDay);
    else
        result.mds =
            int((t + ms + (long long)msecsPerDay * ((msecsPerDay - (long long)ms) / msecsPerDay)) %
                msecsPerDay);
    return result;
}

VyTime VyTime::addSecs(int s) const
{
    // Whole days do not move a time, so they are dropped before the product can overflow.
    return addMSecs(int(1000LL * s % msecsPerDay));
}

int VyTime::msecsTo(const VyTime& t) const
{
    return t.value() - value();
}

int VyTime::secsTo(const VyTime& t) const
{
    return (t.value() - value()) / 1000;
}

VyTime VyTime::currentTime()
{
    struct timeval tv;
    gettimeofday(&tv, nullptr);
    const time_t secs = tv.tv_sec;
    tzset();
    struct tm t;
    VyTime result;
    if (localtime_r(&secs, &t))
        result.mds =
            t.tm_hour * 3600000 + t.tm_min * 60000 + t.tm_sec * 1000 + int(tv.tv_usec / 1000);
    return result;
}

void VyTime::start()
{
    *this = currentTime();
}

int VyTime::restart()
{
    const VyTime now = currentTime();
    const int n = msecsSince(*this, now);
    *this = now;
    return n;
}

int VyTime::elapsed() const
{
    return msecsSince(*this, currentTime());
}
