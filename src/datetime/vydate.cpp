// VyDate: validity, day numbers in the Julian and Gregorian calendars, accessors, arithmetic
// and week numbers. The Persian conversions are in vydatepersian.cpp.
#include "vydatetime.h"

#include <stdint.h>
#include <time.h>

namespace
{

const unsigned char monthDays[13] = {0, 31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};

// The first day of the Gregorian calendar, 15 October 1582.
const uint firstGregorianDay = 2299161;

// The length of month m (1 to 12) of year y in the Julian/Gregorian calendar.
int monthLength(int y, int m)
{
    return m == 2 && VyDate::isLeapYear(y) ? 29 : monthDays[m];
}

// Year 0 does not exist: a year that crossed it from either side moves one further, down when
// `n` is below 1, else up.
int skipYearZero(int oldYear, long long newYear, int n)
{
    if ((oldYear > 0 && newYear < 1) || (oldYear < 0 && newYear >= 0))
        newYear += n < 1 ? -1 : 1;
    return newYear < INT32_MIN || newYear > INT32_MAX ? 0 : int(newYear);
}

} // namespace

Vy::DateMode VyDate::m_dm = Vy::Gregorian;

VyDate::VyDate(int y, int m, int d, Vy::DateMode mode) : jd(0)
{
    setDate(y, m, d, mode);
}

bool VyDate::setDate(int y, int m, int d, Vy::DateMode mode)
{
    if (mode == Vy::Persian || (mode == Vy::DefaultDateMode && m_dm == Vy::Persian))
        persianToGregorian(y, m, d);
    if (!isValid(y, m, d)) {
        jd = 0;
        return false;
    }
    jd = gregorianToJulian(y, m, d);
    return jd != 0;
}

bool VyDate::isValid(int y, int m, int d)
{
    if (y < -4713)
        return false;
    // 1 January 4713 BC would be day number 0, the null date.
    if (y == -4713 && (m < 1 || (m == 1 && d == 1)))
        return false;
    if (y == 0)
        return false;
    if (y == 1582 && m == 10 && d >= 5 && d <= 14)
        return false;
    if (m < 1 || d < 1 || m > 12)
        return false;
    if (d <= monthDays[m])
        return true;
    return m == 2 && d == 29 && isLeapYear(y);
}

bool VyDate::isLeapYear(int y)
{
    if (y < 1582) {
        if (y < 1)
            return (y + 1) % 4 == 0; // year -1 is 1 BC, a leap year
        return y % 4 == 0;
    }
    return (y % 4 == 0 && y % 100 != 0) || y % 400 == 0;
}

uint VyDate::gregorianToJulian(int y, int m, int d)
{
    if (y == 1582 && m == 10 && d >= 5 && d <= 14)
        return 0;
    // 64-bit, so that absurd years give a number outside the uint32 range instead of wrapping.
    long long jd;
    const long long yy = y, mm = m, dd = d;
    if (y > 1582 || (y == 1582 && (m > 10 || (m == 10 && d >= 15)))) {
        const long long a = (mm - 14) / 12;
        jd = dd - 32075 + 1461 * (yy + 4800 + a) / 4 + 367 * (mm - 2 - 12 * a) / 12 -
             3 * ((yy + 4900 + a) / 100) / 4;
    } else {
        const long long julianYear = yy < 0 ? yy + 1 : yy;
        const long long a = (14 - mm) / 12;
        jd = dd - 32083 + (153 * (mm + 12 * a) - 457) / 5 + 1461 * (julianYear + 4800 - a) / 4;
    }
    return jd < 0 || jd > UINT32_MAX ? 0 : uint(jd);
}

void VyDate::julianToGregorian(uint jd, int& y, int& m, int& d)
{
    decompose(jd, y, m, d, Vy::Gregorian);
}

void VyDate::decompose(uint jd, int& y, int& m, int& d, Vy::DateMode mode)
{
    if (jd < firstGregorianDay) {
        const int c = int(jd) + 32082;
        const int e = (4 * c + 3) / 1461;
        const int f = c - 1461 * e / 4;
        const int g = (5 * f + 2) / 153;
        d = f - (153 * g + 2) / 5 + 1;
        m = g + 3 - 12 * (g / 10);
        y = e - 4800 + g / 10;
        if (y < 1)
            --y;
    } else {
        long long a = (long long)jd + 68569;
        const long long n = 4 * a / 146097;
        a -= (146097 * n + 3) / 4;
        const long long i = 4000 * (a + 1) / 1461001;
        a = a - 1461 * i / 4 + 31;
        const long long j = 80 * a / 2447;
        d = int(a - 2447 * j / 80);
        a = j / 11;
        m = int(j + 2 - 12 * a);
        y = int(100 * (n - 49) + i + a);
    }
    if (mode == Vy::DefaultDateMode)
        mode = m_dm;
    if (mode == Vy::Persian)
        gregorianToPersian(y, m, d);
}

int VyDate::year(Vy::DateMode mode) const
{
    int y, m, d;
    decompose(jd, y, m, d, mode);
    return y;
}

int VyDate::month(Vy::DateMode mode) const
{
    int y, m, d;
    decompose(jd, y, m, d, mode);
    return m;
}

int VyDate::day(Vy::DateMode mode) const
{
    int y, m, d;
    decompose(jd, y, m, d, mode);
    return d;
}

void VyDate::getDate(int* y, int* m, int* d, Vy::DateMode mode) const
{
    int yy, mm, dd;
    decompose(jd, yy, mm, dd, mode);
    if (y)
        *y = yy;
    if (m)
        *m = mm;
    if (d)
        *d = dd;
}

int VyDate::dayOfWeek() const
{
    return int(jd % 7) + 1;
}

int VyDate::dayOfYear() const
{
    return int(jd - gregorianToJulian(year(Vy::DefaultDateMode), 1, 1)) + 1;
}

int VyDate::daysInMonth() const
{
    int y, m, d;
    decompose(jd, y, m, d, Vy::DefaultDateMode);
    return monthLength(y, m);
}

int VyDate::daysInYear() const
{
    return isLeapYear(year(Vy::DefaultDateMode)) ? 366 : 365;
}

VyDate VyDate::addDays(int n) const
{
    VyDate result;
    const uint sum = jd + uint(n);
    // The sum wrapped when it moved against the sign of n.
    if (n >= 0 ? sum >= jd : sum < jd)
        result.jd = sum;
    return result;
}

VyDate VyDate::addMonths(int n) const
{
    if (!isValid())
        return VyDate();
    if (n == 0)
        return *this;
    int y, m, d;
    decompose(jd, y, m, d, Vy::Gregorian);
    const int oldYear = y;
    long long year = y;
    // The months left after whole years; the year-0 skip and the October 1582 fix-up still
    // go the way of n, also when nothing is left.
    int rest = n;
    while (rest < -11) {
        --year;
        rest += 12;
    }
    while (rest > 11) {
        ++year;
        rest -= 12;
    }
    if (rest > 0 && m == 12) {
        ++year;
        m = 0;
    }
    m += rest;
    if (m < 1) {
        m += 12;
        --year;
    } else if (m > 12) {
        m -= 12;
        ++year;
    }
    y = skipYearZero(oldYear, year, n);
    if (y == 1582 && m == 10 && d >= 5 && d <= 14)
        d = n < 1 ? 4 : 15;
    if (d > monthLength(y, m))
        d = monthLength(y, m);
    return VyDate(y, m, d, Vy::Gregorian);
}

VyDate VyDate::addYears(int n) const
{
    if (!isValid())
        return VyDate();
    int y, m, d;
    decompose(jd, y, m, d, Vy::Gregorian);
    y = skipYearZero(y, (long long)y + n, n);
    if (d > monthLength(y, m))
        d = monthLength(y, m);
    return VyDate(y, m, d, Vy::Gregorian);
}

int VyDate::daysTo(const VyDate& other) const
{
    return int(other.jd - jd);
}

int VyDate::weekNumber(int* yearNumber) const
{
    if (!isValid())
        return 0;
    int y = year(Vy::DefaultDateMode);
    int d = dayOfYear() - 1;
    const int w = dayOfWeek() % 7; // Sunday 0
    for (;;) {
        // The 0-based day of the year of the Monday that starts week 1, -3 to 3.
        const int a = ((d + 11 - w) % 7) - 3;
        // The same for the following year, counted from this year's start minus its length.
        int b = a - (isLeapYear(y) ? 2 : 1);
        if (b < -3)
            b += 7;
        if (d >= b + (isLeapYear(y) ? 366 : 365)) {
            if (yearNumber)
                *yearNumber = y + 1;
            return 1;
        }
        if (d >= a) {
            if (yearNumber)
                *yearNumber = y;
            return (d - a) / 7 + 1;
        }
        --y;
        d += isLeapYear(y) ? 366 : 365;
    }
}

VyDate VyDate::currentDate()
{
    const time_t now = ::time(nullptr);
    tzset();
    struct tm t;
    if (!localtime_r(&now, &t))
        return VyDate();
    return VyDate(t.tm_year + 1900, t.tm_mon + 1, t.tm_mday, Vy::Gregorian);
}

void VyDate::setDateMode(Vy::DateMode mode)
{
    m_dm = mode == Vy::DefaultDateMode ? Vy::Gregorian : mode;
}
