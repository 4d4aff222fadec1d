// The format tokens shared by toString and fromString of VyDate, VyTime and VyDateTime.
#ifndef VYDATETIMEFORMAT_H
#define VYDATETIMEFORMAT_H

#include "vydatetime.h"

enum DateTimeField {
    LiteralUnit, // not a token: one unit of text
    DayField,
    MonthField,
    YearField,
    HourField,   // 12-hour form when the format holds an AM/PM token
    Hour24Field, // always 24-hour
    MinuteField,
    SecondField,
    MsecField,
    AmPmUpperField, // "AM" / "PM"
    AmPmLowerField  // "am" / "pm"
};

struct DateTimeToken {
    DateTimeField field;
    int length; // units of the format it takes
};

// The token that starts at format[i] (i < size), the longest first.
DateTimeToken dateTimeTokenAt(const VyUcs2* format, int size, int i);

inline bool isDateField(DateTimeField f)
{
    return f == DayField || f == MonthField || f == YearField;
}

inline bool isTimeField(DateTimeField f)
{
    return f >= HourField;
}

// Whether the field is handled when the value has a date part and/or a time part; the other
// fields are plain text.
inline bool isActiveField(DateTimeField f, bool withDate, bool withTime)
{
    return (withDate && isDateField(f)) || (withTime && isTimeField(f));
}

// Whether the format holds an AM/PM token (which then is a time token).
bool hasAmPmToken(const VyString& format);

// Formats with the date and/or time given; a null pointer leaves that part's tokens as text.
VyString formatDateTime(const VyString& format, const VyDate* date, const VyTime* time);

// Reads `text` with `format` into the parts that are asked for (the others' tokens are plain
// text). False when the text does not match, the format is empty or a part is not valid.
bool parseDateTime(const VyString& text, const VyString& format, VyDate* date, VyTime* time);

#endif
