// VyString place markers: arg replaces the lowest-numbered markers (%1 to %99, %L1 for the
// locale's grouping) by one value, multiArg the distinct markers by several strings at once.
#include "vystring.h"

#include "vylocale.h"
#include "vymap.h"
#include "vystringnumber.h"
#include "vyunicode.h"
#include "vyunitbuffer.h"

#include <limits.h>
#include <new>
#include <stddef.h>
#include <stdio.h>
#include <string.h>

namespace
{

// Parses the marker after the percent sign at `p`: the optional `L` and one or two digits.
// Returns the marker number, or -1 when no digit follows; *next receives the position after
// what was read (after the `L` when no digit follows it).
int parseMarker(const VyUcs2* p, const VyUcs2* end, bool* locale, const VyUcs2** next)
{
    ++p; // the percent sign
    *locale = false;
    if (p != end && *p == 'L') {
        *locale = true;
        ++p;
    }
    int number = p != end ? VyUnicode::digitValue(*p) : -1;
    if (number != -1) {
        ++p;
        const int second = p != end ? VyUnicode::digitValue(*p) : -1;
        if (second != -1) {
            number = number * 10 + second;
            ++p;
        }
    }
    *next = p;
    return number;
}

VyUcs2* copyUnits(VyUcs2* to, const VyUcs2* from, const VyUcs2* end)
{
    const size_t n = size_t(end - from);
    if (n)
        memcpy(to, from, n * sizeof(VyUcs2));
    return to + n;
}

VyUcs2* fillUnits(VyUcs2* to, VyUcs2 c, int n)
{
    for (int i = 0; i < n; ++i)
        *to++ = c;
    return to;
}

// replaceArgEscapes as its length checks name it: the signature without a namespace or the
// parameter names, the same on every compiler.
const char* const replaceArgEscapesText =
    "VyString replaceArgEscapes(const VyString&, const ArgEscapeData&, int, const VyString&, "
    "const VyString&, VyUcs2)";

// The flags of a number arg: zero padding for a '0' fill, grouping for `L` markers while the
// options word is 0.
unsigned argFlags(VyUcs2 fillChar, bool locale)
{
    unsigned flags = fillChar == '0' ? unsigned(VyLocale::ZeroPad) : 0u;
    if (locale && VyLocale::mNumberOptions == 0)
        flags |= VyLocale::GroupDigits;
    return flags;
}

// The number forms of arg: the lowest markers take the number, formatted once without and
// once with the locale's grouping as the markers ask; with no marker the form's own message is
// printed and the template comes back unchanged.
template <typename Format>
VyString numberArg(const VyString& templ, const char* missingMessage, int fieldWidth,
                   VyUcs2 fillChar, Format format)
{
    const ArgEscapeData d = findArgEscapes(templ);
    if (d.occurrences == 0) {
        puts(missingMessage);
        return templ;
    }
    VyString plain;
    VyString locale;
    if (d.occurrences > d.localeOccurrences)
        plain = format(argFlags(fillChar, false));
    if (d.localeOccurrences >= 1)
        locale = format(argFlags(fillChar, true));
    return replaceArgEscapes(templ, d, fieldWidth, plain, locale, fillChar);
}

} // namespace

ArgEscapeData findArgEscapes(const VyString& s)
{
    ArgEscapeData d = {INT_MAX, 0, 0, 0};
    const VyUcs2* p = s.unicode();
    const VyUcs2* const end = p + s.size();
    while (p != end) {
        if (*p != '%') {
            ++p;
            continue;
        }
        const VyUcs2* const start = p;
        bool locale;
        const int number = parseMarker(start, end, &locale, &p);
        // Without a digit the scan resumes at the unit that was not one.
        if (number == -1 || number > d.minEscape)
            continue;
        if (number < d.minEscape) {
            d.minEscape = number;
            d.occurrences = 0;
            d.localeOccurrences = 0;
            d.escapeLength = 0;
        }
        ++d.occurrences;
        if (locale)
            ++d.localeOccurrences;
        d.escapeLength += int(p - start);
    }
    return d;
}

VyString replaceArgEscapes(const VyString& s, const ArgEscapeData& d, int fieldWidth,
                           const VyString& arg, const VyString& larg, VyUcs2 fillChar)
{
    const long long width = fieldWidth < 0 ? -(long long)fieldWidth : fieldWidth;
    const long long plainLength = width > arg.size() ? width : arg.size();
    const long long localeLength = width > larg.size() ? width : larg.size();
    const long long length = (long long)s.size() - d.escapeLength +
                             (long long)(d.occurrences - d.localeOccurrences) * plainLength +
                             (long long)d.localeOccurrences * localeLength;
    if (length > INT_MAX - 1)
        throw std::bad_alloc();
    const int result_len = int(length);

    // A fresh block sized up front, with room to grow like every edit.
    VyString result(static_cast<const VyUcs2*>(nullptr), 0);
    VyString::Data::allocMemory(result.d, result_len + 1, true);
    VyUcs2* const result_buff = result.d->data;
    VyUcs2* rc = result_buff;

    const VyUcs2* p = s.unicode();
    const VyUcs2* const end = p + s.size();
    int replaced = 0;
    while (p != end) {
        const VyUcs2* text = p;
        while (p != end && *p != '%')
            ++p;
        rc = copyUnits(rc, text, p);
        if (p == end)
            break;
        const VyUcs2* const start = p;
        bool locale;
        const int number = parseMarker(start, end, &locale, &p);
        if (number != d.minEscape) {
            rc = copyUnits(rc, start, p);
            continue;
        }
        const VyString& value = locale ? larg : arg;
        const int pad = int(width - value.size());
        if (fieldWidth > 0)
            rc = fillUnits(rc, fillChar, pad);
        rc = copyUnits(rc, value.unicode(), value.unicode() + value.size());
        if (fieldWidth < 0)
            rc = fillUnits(rc, fillChar, pad);
        if (++replaced == d.occurrences) {
            rc = copyUnits(rc, p, end);
            if (!(rc - result_buff == result_len))
                vyAssertFail("rc - result_buff == result_len",
                             VyAssertSites::argWrittenAfterLastMarker.file,
                             VyAssertSites::argWrittenAfterLastMarker.line, replaceArgEscapesText);
            result.d->size = result_len;
            result_buff[result_len] = 0;
            return result;
        }
    }
    if (!(rc == result_buff + result_len))
        vyAssertFail("rc == result_buff + result_len", VyAssertSites::argWrittenAtEnd.file,
                     VyAssertSites::argWrittenAtEnd.line, replaceArgEscapesText);
    result.d->size = result_len;
    result_buff[result_len] = 0;
    return result;
}

VyString VyString::arg(const VyString& a, int fieldWidth, VyUcs2 fillChar) const
{
    const ArgEscapeData d = findArgEscapes(*this);
    if (d.occurrences == 0) {
        // Kept: each arg form has its own missing-marker text, byte for byte (this one with a
        // capital and a full stop); diagnostics that tools have always read stay as they were.
        puts("VyString::arg: Argument missing.");
        return *this;
    }
    return replaceArgEscapes(*this, d, fieldWidth, a, a, fillChar);
}

VyString VyString::arg(char a, int fieldWidth, VyUcs2 fillChar) const
{
    return arg(VyString(a), fieldWidth, fillChar);
}

VyString VyString::arg(long long a, int fieldWidth, int base, VyUcs2 fillChar) const
{
    // Kept: this form's message has no full stop, unlike the others; it stays as it always
    // read.
    return numberArg(
        *this, "VyString::arg: Argument missing", fieldWidth, fillChar,
        [&](unsigned flags) { return vyFormatSigned(a, -1, base, fieldWidth, flags); });
}

VyString VyString::arg(unsigned long long a, int fieldWidth, int base, VyUcs2 fillChar) const
{
    return numberArg(
        *this, "VyString::arg: Argument missing.", fieldWidth, fillChar,
        [&](unsigned flags) { return vyFormatUnsigned(a, -1, base, fieldWidth, flags); });
}

VyString VyString::arg(double a, int fieldWidth, char format, int precision, VyUcs2 fillChar) const
{
    return numberArg(
        *this, "VyString::arg: Argument missing.", fieldWidth, fillChar,
        [&](unsigned flags) { return vyFormatDouble(a, format, precision, fieldWidth, flags); });
}

namespace
{

// A multiArg marker at p (a percent sign): the optional `L` and ASCII digits up to 999.
// Returns the number or -1; *next is the end of the marker when there is one.
int parseMultiMarker(const VyUcs2* p, const VyUcs2* end, const VyUcs2** next)
{
    ++p;
    if (p != end && *p == 'L')
        ++p;
    int number = 0;
    const VyUcs2* digits = p;
    for (; p != end && *p >= '0' && *p <= '9'; ++p) {
        number = number * 10 + (*p - '0');
        if (number > 999)
            return -1;
    }
    if (p == digits)
        return -1;
    *next = p;
    return number;
}

} // namespace

VyString VyString::multiArg(int numArgs, const VyString** args) const
{
    const VyUcs2* const begin = d->data;
    const VyUcs2* const end = begin + d->size;

    VyMap<int, int> markers;
    for (const VyUcs2* p = begin; p != end; ++p) {
        const VyUcs2* next;
        if (*p == '%') {
            const int number = parseMultiMarker(p, end, &next);
            if (number != -1) {
                markers.insert(number, -1);
                p = next - 1;
            }
        }
    }
    // Number the distinct markers from 0 in ascending order; the first numArgs are bound.
    int ordinal = 0;
    for (VyMap<int, int>::iterator i = markers.begin(); i != markers.end(); ++i)
        i.value() = ordinal++;
    if (ordinal < numArgs) {
        // Kept: multiArg's text begins "argument" in lower case, unlike the arg forms' texts;
        // it stays as it always read.
        puts("VyString::arg: argument missing.");
        numArgs = ordinal;
    }

    VyUnitBuffer out;
    for (const VyUcs2* p = begin; p != end;) {
        const VyUcs2* next;
        const int number = *p == '%' ? parseMultiMarker(p, end, &next) : -1;
        if (number == -1) {
            out.append(*p++);
            continue;
        }
        const int index = markers.value(number);
        if (index < numArgs) {
            const VyString& a = *args[index];
            out.append(a);
        } else {
            out.append(p, int(next - p));
        }
        p = next;
    }
    return out.toString();
}
