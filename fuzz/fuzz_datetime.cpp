// Fuzzes the date and time readers and writers.
//
// Input: a control byte, a split byte, then bytes that become a format and a text (the split
// byte, modulo their count plus one, is the format's length). The control byte picks the class
// (date, time, date-time), the date mode, UTF-8 or raw UTF-16 units, and whether the text
// bytes are read as text or as a value (day number and milliseconds) to print. Checks:
// - fromString gives the null value or a valid one, and a valid one prints without failing;
// - in the Gregorian mode, a value printed with a format whose every number token has a fixed
//   width and that names every field reads back unchanged; a value read with such a format
//   prints back as a text that reads the same again.
#include "fuzz_check.h"
#include "vydatetime.h"

#include <stddef.h>
#include <stdint.h>
#include <string.h>

#include <string>

namespace
{

VyString decode(const uint8_t* data, size_t size, bool units)
{
    if (!units)
        return VyString(std::string(reinterpret_cast<const char*>(data), size).c_str(), -1);
    std::u16string u(size / 2, u'\0');
    if (!u.empty())
        memcpy(&u[0], data, u.size() * 2);
    return VyString(reinterpret_cast<const VyUcs2*>(u.data()), int(u.size()));
}

// How many times format[i] repeats from i.
int run(const VyString& f, int i)
{
    int n = 1;
    while (i + n < f.size() && f.at(i + n) == f.at(i))
        ++n;
    return n;
}

// Whether every number token of the format has a fixed width and the format names every field
// of the parts asked for (so that printing and reading are inverse).
bool fixedAndComplete(const VyString& f, bool date, bool time)
{
    bool year = false, month = false, day = false, hour24 = false, hour12 = false;
    bool minute = false, second = false, msec = false;
    for (int i = 0; i < f.size();) {
        const VyUcs2 u = f.at(i);
        const int n = run(f, i);
        i += n;
        const bool dateLetter = u == 'd' || u == 'M';
        const bool timeLetter = u == 'h' || u == 'H' || u == 'm' || u == 's';
        if ((date && dateLetter) || (time && timeLetter)) {
            if (n % 2)
                return false;
            day |= u == 'd';
            month |= u == 'M';
            hour12 |= u == 'h';
            hour24 |= u == 'H';
            minute |= u == 'm';
            second |= u == 's';
        } else if (time && u == 'z') {
            if (n % 3)
                return false;
            msec = true;
        } else if (date && u == 'y') {
            year |= n >= 4;
        }
    }
    // hh in 12-hour form comes with an AM/PM token, which gives back the half of the day.
    return (!date || (year && month && day)) &&
           (!time || ((hour12 || hour24) && minute && second && msec));
}

template <typename T> void checkRead(const VyString& text, const VyString& format, bool roundTrip)
{
    const T value = T::fromString(text, format);
    FUZZ_CHECK(value.isNull() || value.isValid());
    if (!value.isValid())
        return;
    const VyString printed = value.toString(format);
    if (roundTrip)
        FUZZ_CHECK(T::fromString(printed, format) == value);
}

template <typename T> void checkPrint(const T& value, const VyString& format, bool roundTrip)
{
    const VyString printed = value.toString(format);
    if (roundTrip && value.isValid())
        FUZZ_CHECK(T::fromString(printed, format) == value);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    if (size < 2 || size > 4096)
        return 0;
    const unsigned control = data[0];
    const size_t rest = size - 2;
    const size_t formatSize = data[1] % (rest + 1);
    const bool units = control & 4;
    const bool persian = control & 8;
    const bool fromValue = control & 16;
    const int kind = int(control % 4); // 0 date, 1 time, 2 and 3 date-time

    VyDate::setDateMode(persian ? Vy::Persian : Vy::Gregorian);
    VyDate::gregorianMonthsFromApril[10] = 28;
    const VyString format = decode(data + 2, formatSize, units);
    const bool withDate = kind != 1, withTime = kind != 0;
    // Persian dates are read back through the shared month table and a fixed-offset
    // conversion: only the Gregorian mode is an exact inverse.
    const bool roundTrip = !persian && fixedAndComplete(format, withDate, withTime);

    if (!fromValue) {
        const VyString text = decode(data + 2 + formatSize, rest - formatSize, units);
        if (kind == 0)
            checkRead<VyDate>(text, format, roundTrip);
        else if (kind == 1)
            checkRead<VyTime>(text, format, roundTrip);
        else
            checkRead<VyDateTime>(text, format, roundTrip);
        return 0;
    }

    uint8_t raw[8] = {};
    memcpy(raw, data + 2 + formatSize, rest - formatSize < 8 ? rest - formatSize : 8);
    uint32_t dayOffset, msecs;
    memcpy(&dayOffset, raw, 4);
    memcpy(&msecs, raw + 4, 4);
    // Years 1 to 9999, which four year digits hold.
    const VyDate date = VyDate(1, 1, 1, Vy::Gregorian).addDays(int(dayOffset % 3652059));
    const VyTime time = VyTime(0, 0).addMSecs(int(msecs % 86400000));
    if (kind == 0)
        checkPrint(date, format, roundTrip);
    else if (kind == 1)
        checkPrint(time, format, roundTrip);
    else
        checkPrint(VyDateTime(date, time), format, roundTrip);
    return 0;
}
