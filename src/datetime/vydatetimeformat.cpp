// Date and time to text: the token walk and toString of VyDate, VyTime and VyDateTime.
#include "vydatetimeformat.h"

namespace
{

// How many times `unit` repeats from format[i], at most `limit`.
int runLength(const VyUcs2* format, int size, int i, VyUcs2 unit, int limit)
{
    int n = 0;
    while (n < limit && i + n < size && format[i + n] == unit)
        ++n;
    return n;
}

// The number zero-padded to `width` units.
VyString padded(int value, int width)
{
    return VyString::number(value).rightJustified(width, '0');
}

} // namespace

DateTimeToken dateTimeTokenAt(const VyUcs2* format, int size, int i)
{
    const VyUcs2 unit = format[i];
    switch (unit) {
    case 'd':
        return {DayField, runLength(format, size, i, unit, 2)};
    case 'M':
        return {MonthField, runLength(format, size, i, unit, 2)};
    case 'y':
        return runLength(format, size, i, unit, 4) == 4 ? DateTimeToken{YearField, 4}
                                                        : DateTimeToken{LiteralUnit, 1};
    case 'h':
        return {HourField, runLength(format, size, i, unit, 2)};
    case 'H':
        return {Hour24Field, runLength(format, size, i, unit, 2)};
    case 'm':
        return {MinuteField, runLength(format, size, i, unit, 2)};
    case 's':
        return {SecondField, runLength(format, size, i, unit, 2)};
    case 'z':
        return {MsecField, runLength(format, size, i, unit, 3) == 3 ? 3 : 1};
    case 'A':
        return {AmPmUpperField, i + 1 < size && format[i + 1] == 'P' ? 2 : 1};
    case 'a':
        return {AmPmLowerField, i + 1 < size && format[i + 1] == 'p' ? 2 : 1};
    default:
        return {LiteralUnit, 1};
    }
}

bool hasAmPmToken(const VyString& format)
{
    return format.indexOf(VyUcs2('a')) >= 0 || format.indexOf(VyUcs2('A')) >= 0;
}

VyString formatDateTime(const VyString& format, const VyDate* date, const VyTime* time)
{
    int year = 0, month = 0, day = 0;
    if (date)
        date->getDate(&year, &month, &day, Vy::DefaultDateMode);
    const int hour = time ? time->hour() : 0;
    const bool twelveHours = time && hasAmPmToken(format);
    const int hour12 = hour == 0 ? 12 : hour > 12 ? hour - 12 : hour;

    const VyUcs2* f = format.unicode();
    const int size = format.size();
    VyString out;
    for (int i = 0; i < size;) {
        const DateTimeToken token = dateTimeTokenAt(f, size, i);
        const int width = token.length;
        if (!isActiveField(token.field, date, time)) {
            out.append(VyString(f + i, width));
            i += width;
            continue;
        }
        switch (token.field) {
        case DayField:
            out.append(padded(day, width));
            break;
        case MonthField:
            out.append(padded(month, width));
            break;
        case YearField:
            if (year < 1)
                out.append("-");
            out.append(padded(year < 1 ? -year : year, 4));
            break;
        case HourField:
            out.append(padded(twelveHours ? hour12 : hour, width));
            break;
        case Hour24Field:
            out.append(padded(hour, width));
            break;
        case MinuteField:
            out.append(padded(time->minute(), width));
            break;
        case SecondField:
            out.append(padded(time->second(), width));
            break;
        case MsecField:
            out.append(padded(time->msec(), width));
            break;
        case AmPmUpperField:
            out.append(hour < 12 ? "AM" : "PM");
            break;
        case AmPmLowerField:
            out.append(hour < 12 ? "am" : "pm");
            break;
        case LiteralUnit:
            break;
        }
        i += width;
    }
    return out;
}

VyString VyDate::toString(const VyString& format) const
{
    return isValid() ? formatDateTime(format, this, nullptr) : VyString();
}

VyString VyTime::toString(const VyString& format) const
{
    return isValid() ? formatDateTime(format, nullptr, this) : VyString();
}

VyString VyDateTime::toString(const VyString& format) const
{
    if (!isValid())
        return VyString();
    return formatDateTime(format, &d->date, &d->time);
}
