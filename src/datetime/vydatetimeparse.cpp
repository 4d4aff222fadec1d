// Text to date and time: fromString of VyDate, VyTime and VyDateTime.
#include "vydatetimeformat.h"
#include "vylocale.h"

namespace
{

// Reads min to max decimal digits (ASCII or the locale's) from text[*pos]; false when fewer
// than min are there.
bool readNumber(const VyUcs2* text, int size, int* pos, int min, int max, int* value)
{
    int n = 0;
    int v = 0;
    for (; n < max && *pos + n < size; ++n) {
        const char c = VyLocale::digitToCLocale(text[*pos + n]);
        if (c < '0' || c > '9')
            break;
        v = v * 10 + (c - '0');
    }
    if (n < min)
        return false;
    *pos += n;
    *value = v;
    return true;
}

VyUcs2 lowerAscii(VyUcs2 u)
{
    return u >= 'A' && u <= 'Z' ? VyUcs2(u | 0x20) : u;
}

// Reads "am" or "pm" in either case; *pm tells which.
bool readAmPm(const VyUcs2* text, int size, int* pos, bool* pm)
{
    if (*pos + 2 > size || lowerAscii(text[*pos + 1]) != 'm')
        return false;
    const VyUcs2 first = lowerAscii(text[*pos]);
    if (first != 'a' && first != 'p')
        return false;
    *pm = first == 'p';
    *pos += 2;
    return true;
}

// The digits a numeric token takes: the two-letter tokens and zzz exactly their length, the
// single letters one or two (z one to three).
void digitRange(const DateTimeToken& token, int* min, int* max)
{
    const bool single = token.length == 1;
    *max = token.field == MsecField ? 3 : 2;
    *min = single ? 1 : *max;
}

} // namespace

bool parseDateTime(const VyString& text, const VyString& format, VyDate* date, VyTime* time)
{
    const VyUcs2* f = format.unicode();
    const int fsize = format.size();
    const VyUcs2* t = text.unicode();
    const int tsize = text.size();
    if (fsize == 0)
        return false;

    int year = 1970, month = 1, day = 1;
    int hour = 0, minute = 0, second = 0, msec = 0;
    bool hourIs12 = false; // the last hour read came from h/hh under an AM/PM token
    bool pm = false;
    const bool twelveHours = time && hasAmPmToken(format);

    int pos = 0;
    for (int i = 0; i < fsize;) {
        const DateTimeToken token = dateTimeTokenAt(f, fsize, i);
        i += token.length;
        if (!isActiveField(token.field, date, time)) {
            for (int k = i - token.length; k < i; ++k, ++pos)
                if (pos >= tsize || t[pos] != f[k])
                    return false;
            continue;
        }
        int min, max;
        digitRange(token, &min, &max);
        bool ok = true;
        switch (token.field) {
        case DayField:
            ok = readNumber(t, tsize, &pos, min, max, &day);
            break;
        case MonthField:
            ok = readNumber(t, tsize, &pos, min, max, &month);
            break;
        case YearField: {
            const bool negative = pos < tsize && t[pos] == '-';
            pos += negative ? 1 : 0;
            ok = readNumber(t, tsize, &pos, 4, 4, &year);
            year = negative ? -year : year;
            break;
        }
        case HourField:
        case Hour24Field:
            ok = readNumber(t, tsize, &pos, min, max, &hour);
            hourIs12 = twelveHours && token.field == HourField;
            break;
        case MinuteField:
            ok = readNumber(t, tsize, &pos, min, max, &minute);
            break;
        case SecondField:
            ok = readNumber(t, tsize, &pos, min, max, &second);
            break;
        case MsecField:
            ok = readNumber(t, tsize, &pos, min, max, &msec);
            break;
        case AmPmUpperField:
        case AmPmLowerField:
            ok = readAmPm(t, tsize, &pos, &pm);
            break;
        case LiteralUnit:
            break;
        }
        if (!ok)
            return false;
    }
    if (pos != tsize)
        return false;

    if (hourIs12) {
        if (hour < 1 || hour > 12)
            return false;
        hour = hour % 12 + (pm ? 12 : 0);
    }
    if (date) {
        *date = VyDate(year, month, day, Vy::DefaultDateMode);
        if (!date->isValid())
            return false;
    }
    if (time) {
        *time = VyTime(hour, minute, second, msec);
        if (!time->isValid())
            return false;
    }
    return true;
}

VyDate VyDate::fromString(const VyString& text, const VyString& format)
{
    VyDate date;
    return parseDateTime(text, format, &date, nullptr) ? date : VyDate();
}

VyTime VyTime::fromString(const VyString& text, const VyString& format)
{
    VyTime time;
    return parseDateTime(text, format, nullptr, &time) ? time : VyTime();
}

VyDateTime VyDateTime::fromString(const VyString& text, const VyString& format)
{
    VyDate date;
    VyTime time;
    if (!parseDateTime(text, format, &date, &time))
        return VyDateTime();
    return VyDateTime(date, time);
}
