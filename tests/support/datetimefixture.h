// Shared by the date and time tests: dates as (year, month, day) triples that gtest compares
// and prints, date-times made from numbers, and the process-wide state the tests change (the
// library-wide date mode with the Persian month table, and the time zone).
#ifndef VY_TESTS_DATETIMEFIXTURE_H
#define VY_TESTS_DATETIMEFIXTURE_H

#include "vydatetime.h"

#include <array>
#include <stdlib.h>
#include <time.h>

typedef std::array<int, 3> Ymd;

inline Ymd ymd(const VyDate& date, Vy::DateMode mode = Vy::Gregorian)
{
    Ymd v{};
    date.getDate(&v[0], &v[1], &v[2], mode);
    return v;
}

inline VyDateTime at(int y, int mo, int d, int h, int mi, Vy::TimeSpec spec = Vy::LocalTimeSpec)
{
    return VyDateTime(VyDate(y, mo, d, Vy::Gregorian), VyTime(h, mi), spec);
}

// Resets the Persian month table, which every Persian-to-Gregorian conversion of a year before
// a leap year grows for good, and puts the table and the Gregorian mode back afterwards.
struct DateModeGuard {
    DateModeGuard() { VyDate::gregorianMonthsFromApril[10] = 28; }
    ~DateModeGuard()
    {
        VyDate::gregorianMonthsFromApril[10] = 28;
        VyDate::setDateMode(Vy::Gregorian);
    }
};

// Central European time with its daylight-saving rule, written out so that no zone database
// is needed: +1 h, +2 h from the last Sunday of March 02:00 to the last Sunday of October 03:00.
const char* const centralEurope = "CET-1CEST,M3.5.0,M10.5.0/3";

// Sets the process's time zone. Every test whose results depend on the zone sets it first, so
// none depends on what the machine or an earlier test left.
inline void useZone(const char* zone)
{
    setenv("TZ", zone, 1);
    tzset();
}

#endif
