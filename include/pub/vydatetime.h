// VyDate, VyTime and VyDateTime: calendar days, times of day and the two together.
//
// VyDate holds a Julian day number (uint32); 0 is the null date, so day 1 is 2 January 4713 BC
// of the Julian calendar. Days before 15 October 1582 are read in the Julian calendar, later
// ones in the Gregorian calendar; 5 to 14 October 1582 do not exist, and neither does year 0
// (year -1 is 1 BC). A date can also be given and read in the Persian solar calendar: every
// accessor takes a Vy::DateMode, whose DefaultDateMode resolves to the library-wide mode set
// by VyDate::setDateMode (Gregorian until changed). The library-wide mode is a plain static:
// set it at start-up, before dates are used from several threads.
//
// VyTime holds milliseconds since midnight, 0 to 86399999; -1 is the null time, read as 0 by
// the accessors and the arithmetic.
//
// VyDateTime holds a date, a time and a time spec in a private record of its own (copies copy
// the record). Local time goes through the C library (tzset, mktime, localtime_r, gmtime_r),
// which is trusted only from 1970 to 2037: a date outside that range is converted as the same
// month and day of 1970 or 2037 and moved back by the day difference afterwards, so the
// daylight-saving rules of that year apply to it.
//
// Text: toString and fromString share these tokens, the longest match first: dd d (day), MM M
// (month), yyyy (year: at least four digits, "-" before years below 1), hh h (hour, 12-hour
// form when the format holds an AM/PM token), HH H (hour, 24-hour form), mm m (minute), ss s
// (second), zzz z (milliseconds), AP A ("AM"/"PM"), ap a ("am"/"pm"). Two-letter tokens and
// zzz are zero-padded; single letters are not. Day, month and year follow the library-wide
// mode. Tokens of a part a class does not hold (time tokens for VyDate, date tokens for VyTime)
// are plain text for that class. Characters that are not tokens are copied (toString) or must
// match exactly (fromString). A value that is not valid prints as an empty string.
//
// fromString reads the text with the same tokens: the two-letter tokens take exactly two
// digits, zzz exactly three, yyyy an optional "-" and exactly four, the single letters one or
// two digits (z one to three), the AM/PM tokens their two letters in either case; beside an
// AM/PM token, h and hh read 1 to 12. When a field is named twice the last one counts. Parts the
// format does not name default to year 1970, month 1, day 1 and 00:00:00.000. Text that does
// not match the format, is longer than it, an empty format or numbers out of range give the
// null value.
#ifndef VYDATETIME_H
#define VYDATETIME_H

#include "vyglobal.h"
#include "vystring.h"

class VY_EXPORT VyDate
{
public:
    VyDate() : jd(0) {}
    VyDate(int y, int m, int d, Vy::DateMode mode = Vy::DefaultDateMode);

    bool isNull() const { return jd == 0; }
    bool isValid() const { return jd != 0; }

    // In Persian mode the triple is converted to the Gregorian calendar first (see
    // gregorianMonthsFromApril). An invalid Gregorian triple gives the null date and false.
    bool setDate(int y, int m, int d, Vy::DateMode mode = Vy::DefaultDateMode);

    int year(Vy::DateMode mode = Vy::DefaultDateMode) const;
    int month(Vy::DateMode mode = Vy::DefaultDateMode) const;
    int day(Vy::DateMode mode = Vy::DefaultDateMode) const;
    // Null pointers are skipped.
    void getDate(int* y, int* m, int* d, Vy::DateMode mode = Vy::DefaultDateMode) const;
    // 1 = Monday ... 7 = Sunday.
    int dayOfWeek() const;
    // Counted from 1 January of year(Vy::DefaultDateMode) in the Gregorian calendar.
    int dayOfYear() const;
    // Decomposed in the library-wide mode; the lengths are always the Gregorian ones.
    // Kept: in Persian mode the Persian month and year numbers are looked up in the Gregorian
    // month table and leap rule, which callers of the old interface get and expect.
    int daysInMonth() const;
    int daysInYear() const;
    // ISO-style week number (1 to 53) and its year, stored in *yearNumber when non-null.
    // 0 for a null date.
    int weekNumber(int* yearNumber = nullptr) const;

    // The day number plus n; the null date when the sum leaves the uint32 range. The null date
    // counts as day number 0 here.
    VyDate addDays(int n) const;
    // Gregorian calendar whatever the mode; the day is clamped to the target month's length.
    VyDate addMonths(int n) const;
    VyDate addYears(int n) const;
    // other's day number minus this one.
    int daysTo(const VyDate& other) const;

    bool operator==(const VyDate& other) const { return jd == other.jd; }
    bool operator!=(const VyDate& other) const { return jd != other.jd; }
    bool operator<(const VyDate& other) const { return jd < other.jd; }
    bool operator<=(const VyDate& other) const { return jd <= other.jd; }
    bool operator>(const VyDate& other) const { return jd > other.jd; }
    bool operator>=(const VyDate& other) const { return jd >= other.jd; }

    VyString toString(const VyString& format) const;
    static VyDate fromString(const VyString& text, const VyString& format);

    static VyDate currentDate();
    static bool isValid(int y, int m, int d);
    static bool isLeapYear(int y);
    // 0 for the dropped days of October 1582 and for days beyond the uint32 range.
    static uint gregorianToJulian(int y, int m, int d);
    static void julianToGregorian(uint jd, int& y, int& m, int& d);
    // Stores the mode; DefaultDateMode stores Gregorian.
    static void setDateMode(Vy::DateMode mode);

    // The library-wide date mode, never DefaultDateMode.
    static Vy::DateMode m_dm;

    // Gregorian month lengths from April to March, which the Persian-to-Gregorian conversion
    // walks to find the month of a day. Shared by the whole process and writable:
    // - Kept: every conversion of a Persian year whose Gregorian successor (year + 622) is a
    //   leap year adds one day to the February entry ([10]), for good. The old interface did
    //   so and the framework's stored dates were made with it. After such conversions, Persian
    //   dates that fall in February or March of the following Gregorian year come out shifted
    //   by the days added (or null when the day no longer exists).
    // - The write is not locked: converting Persian dates on several threads at once is a data
    //   race. Convert Persian dates from one thread, or serialise the calls.
    // - A caller that needs the plain lengths may set [10] back to 28.
    static int gregorianMonthsFromApril[12];

private:
    // The shared decomposition: Julian or Gregorian calendar, then Persian for mode 1.
    static void decompose(uint jd, int& y, int& m, int& d, Vy::DateMode mode);
    static void gregorianToPersian(int& y, int& m, int& d);
    // Leaves month 0 (never valid) when the Persian numbers lead nowhere.
    static void persianToGregorian(int& y, int& m, int& d);

    // The epoch conversions read the day number.
    friend class VyDateTime;

    uint jd;
};

class VY_EXPORT VyTime
{
public:
    VyTime() : mds(-1) {}
    VyTime(int h, int m, int s = 0, int ms = 0);

    bool isNull() const { return mds == -1; }
    bool isValid() const { return uint(mds) < 86400000u; }
    // An invalid time gives the null time and false.
    bool setHMS(int h, int m, int s, int ms = 0);

    int hour() const;
    int minute() const;
    int second() const;
    int msec() const;

    // Wraps around midnight either way; the result is always valid.
    VyTime addMSecs(int ms) const;
    VyTime addSecs(int s) const;
    int msecsTo(const VyTime& t) const;
    // Truncated toward zero.
    int secsTo(const VyTime& t) const;

    bool operator==(const VyTime& other) const { return mds == other.mds; }
    bool operator!=(const VyTime& other) const { return mds != other.mds; }
    bool operator<(const VyTime& other) const { return mds < other.mds; }
    bool operator<=(const VyTime& other) const { return mds <= other.mds; }
    bool operator>(const VyTime& other) const { return mds > other.mds; }
    bool operator>=(const VyTime& other) const { return mds >= other.mds; }

    // Stopwatch: start sets the current time; restart and elapsed give the milliseconds since
    // then (across one midnight), restart also starting again.
    void start();
    int restart();
    int elapsed() const;

    VyString toString(const VyString& format) const;
    static VyTime fromString(const VyString& text, const VyString& format);

    static VyTime currentTime();
    static bool isValid(int h, int m, int s, int ms = 0);

private:
    // The milliseconds since midnight, 0 when null.
    int value() const { return mds == -1 ? 0 : mds; }

    int mds;
};

// The record behind a VyDateTime.
struct VY_EXPORT VyDateTimePrivate {
    // The internal time spec.
    enum Spec {
        LocalUnknown = -1, // local time, daylight saving not known
        LocalStandard = 0, // local standard time
        LocalDST = 1,      // local daylight-saving time
        UTC = 2,           // UTC
        OffsetFromUTC = 3  // utcOffset seconds east of UTC
    };

    VyDate date;
    VyTime time;
    int spec = LocalUnknown;
    int utcOffset = 0; // seconds east of UTC, meaningful for OffsetFromUTC only

    // This value in UTC. UTC values and values without a valid date stay as they are. If the
    // C library cannot give the result, 1 January 1970 with a null time.
    void getUTC(VyDate& outDate, VyTime& outTime) const;
    // This UTC value in local time; returns the daylight-saving state as a local spec (-1, 0,
    // 1). Values that are not UTC or have no valid date stay as they are (their spec is
    // returned). If the C library cannot give the result, 1 January 1970 with a null time and
    // -1.
    int getLocal(VyDate& outDate, VyTime& outTime) const;
    // Adds ms to the date and the time, carrying whole days between them (a null time counts
    // as 0, a null date stays null).
    static void addMSecs(VyDate& date, VyTime& time, long long ms);
};

class VY_EXPORT VyDateTime
{
public:
    VyDateTime();
    // Midnight of d, local time.
    VyDateTime(const VyDate& d);
    // A valid date with an invalid time gets 00:00:00.000.
    // Kept: only Vy::UtcTimeSpec is taken from `spec`; every other value, OffsetTimeSpec
    // included, makes a local value, as the framework's callers expect.
    VyDateTime(const VyDate& d, const VyTime& t, Vy::TimeSpec spec = Vy::LocalTimeSpec);
    VyDateTime(const VyDateTime& other);
    VyDateTime& operator=(const VyDateTime& other);
    ~VyDateTime();

    bool isNull() const;
    bool isValid() const;

    VyDate date() const { return d->date; }
    VyTime time() const { return d->time; }
    Vy::TimeSpec timeSpec() const;
    // 0 unless the value is valid and carries an offset from UTC.
    int utcOffset() const;

    void setDate(const VyDate& date);
    void setTime(const VyTime& time);
    // UtcTimeSpec and OffsetTimeSpec are taken as they are; anything else is local time with
    // daylight saving unknown.
    void setTimeSpec(Vy::TimeSpec spec);
    // 0 makes the value UTC; other values an offset from UTC in seconds east.
    void setUtcOffset(int seconds);

    long long toMSecsSinceEpoch() const;
    // 0xFFFFFFFF when the seconds since the epoch do not fit below it (or are negative).
    uint toTime_t() const;
    // A local value (any spec but UTC) stays local, with the daylight-saving state of the
    // result; a UTC value stays UTC.
    void setTime_t(uint secs);
    void setMSecsSinceEpoch(long long msecs);

    // Kept: the results are rebuilt from timeSpec(), so an offset value comes back local.
    VyDateTime addDays(int n) const;
    VyDateTime addMonths(int n) const;
    VyDateTime addYears(int n) const;
    // Computed in UTC; a local value comes back local, any other one as UTC.
    VyDateTime addMSecs(long long ms) const;
    VyDateTime addSecs(int s) const;
    // The dates' difference, without conversion.
    int daysTo(const VyDateTime& other) const;
    // Both in UTC.
    int secsTo(const VyDateTime& other) const;
    long long msecsTo(const VyDateTime& other) const;

    // Converts only between UTC and local time.
    // Kept: asking a UTC value for OffsetTimeSpec gives local time, and asking a local value
    // for it gives an unchanged copy.
    VyDateTime toTimeSpec(Vy::TimeSpec spec) const;

    // Values with the same internal spec and offset compare as they stand, others in UTC.
    bool operator==(const VyDateTime& other) const;
    bool operator!=(const VyDateTime& other) const { return !(*this == other); }
    bool operator<(const VyDateTime& other) const;
    bool operator<=(const VyDateTime& other) const { return !(other < *this); }
    bool operator>(const VyDateTime& other) const { return other < *this; }
    bool operator>=(const VyDateTime& other) const { return !(*this < other); }

    VyString toString(const VyString& format) const;
    // A local value.
    static VyDateTime fromString(const VyString& text, const VyString& format);

    static VyDateTime currentDateTime();
    static VyDateTime currentDateTimeUtc();
    // Local values.
    static VyDateTime fromTime_t(uint secs);
    static VyDateTime fromMSecsSinceEpoch(long long msecs);
    static long long currentMSecsSinceEpoch();

    // Never null.
    VyDateTimePrivate* d;
};

#endif
