// VyString formatting: place-marker substitution (arg, multiArg), number and setNum,
// sprintf/vsprintf, and the to... number readers. Number text itself comes from VyLocale.
#include "vystring.h"

#include "vylocale.h"
#include "vymap.h"
#include "vyunicode.h"
#include "vyunitbuffer.h"

#include <charconv>
#include <limits.h>
#include <limits>
#include <math.h>
#include <new>
#include <stddef.h>
#include <stdint.h>
#include <stdio.h>
#include <string.h>
#include <type_traits>
#include <utility>

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

// The form and the upper-case flag of a format letter.
VyLocale::DoubleForm doubleForm(char format, unsigned* flags)
{
    switch (format) {
    case 'E':
        *flags |= VyLocale::UpperCase;
        // fall through
    case 'e':
        return VyLocale::FormExponent;
    case 'F':
        *flags |= VyLocale::UpperCase;
        // fall through
    case 'f':
        return VyLocale::FormDecimal;
    case 'G':
        *flags |= VyLocale::UpperCase;
        return VyLocale::FormGeneral;
    default:
        return VyLocale::FormGeneral;
    }
}

VyString formatDouble(double value, char format, int precision, int width, unsigned flags)
{
    const VyLocale::DoubleForm form = doubleForm(format, &flags);
    return VyLocale::doubleToString(VyLocale::mZeroDigit, VyLocale::mPositiveSign,
                                    VyLocale::mNegativeSign, VyLocale::mExponential,
                                    VyLocale::mGroupSeparator, VyLocale::mDecimal, value, precision,
                                    form, width, flags);
}

VyString formatSigned(long long value, int precision, int base, int width, unsigned flags)
{
    return VyLocale::longLongToString(VyLocale::mZeroDigit, VyLocale::mGroupSeparator,
                                      VyLocale::mPositiveSign, VyLocale::mNegativeSign, value,
                                      precision, base, width, flags);
}

VyString formatUnsigned(unsigned long long value, int precision, int base, int width,
                        unsigned flags)
{
    return VyLocale::unsLongLongToString(VyLocale::mZeroDigit, VyLocale::mGroupSeparator,
                                         VyLocale::mPositiveSign, value, precision, base, width,
                                         flags);
}

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
                vyAssertFail("rc - result_buff == result_len", "./src/vystring", 622,
                             "VyString replaceArgEscapes(const VyString&, const ArgEscapeData&, "
                             "int, const VyString&, const VyString&, VyUcs2)");
            result.d->size = result_len;
            result_buff[result_len] = 0;
            return result;
        }
    }
    if (!(rc == result_buff + result_len))
        vyAssertFail("rc == result_buff + result_len", "./src/vystring", 627,
                     "VyString replaceArgEscapes(const VyString&, const ArgEscapeData&, int, "
                     "const VyString&, const VyString&, VyUcs2)");
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
    return numberArg(*this, "VyString::arg: Argument missing", fieldWidth, fillChar,
                     [&](unsigned flags) { return formatSigned(a, -1, base, fieldWidth, flags); });
}

VyString VyString::arg(unsigned long long a, int fieldWidth, int base, VyUcs2 fillChar) const
{
    return numberArg(
        *this, "VyString::arg: Argument missing.", fieldWidth, fillChar,
        [&](unsigned flags) { return formatUnsigned(a, -1, base, fieldWidth, flags); });
}

VyString VyString::arg(double a, int fieldWidth, char format, int precision, VyUcs2 fillChar) const
{
    return numberArg(
        *this, "VyString::arg: Argument missing.", fieldWidth, fillChar,
        [&](unsigned flags) { return formatDouble(a, format, precision, fieldWidth, flags); });
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

VyString VyString::number(int n, int base)
{
    return number((long long)n, base);
}

VyString VyString::number(long n, int base)
{
    return number((long long)n, base);
}

VyString VyString::number(uint n, int base)
{
    return number((unsigned long long)n, base);
}

VyString VyString::number(unsigned long n, int base)
{
    return number((unsigned long long)n, base);
}

// number: the text setNum would assign, returned as it is made (a string that starts empty and
// takes the text by setNum would only add two reference count changes).
VyString VyString::number(long long n, int base)
{
    return formatSigned(n, -1, base, -1, VyLocale::NoFlags);
}

VyString VyString::number(unsigned long long n, int base)
{
    return formatUnsigned(n, -1, base, -1, VyLocale::NoFlags);
}

VyString VyString::number(double n, char format, int precision)
{
    return formatDouble(n, format, precision, -1, VyLocale::NoFlags);
}

// setNum: the new text's block is swapped in and the old one released with the temporary,
// which is assignment without the extra reference count changes.
VyString& VyString::setNum(long long n, int base)
{
    VyString text = formatSigned(n, -1, base, -1, VyLocale::NoFlags);
    std::swap(d, text.d);
    return *this;
}

VyString& VyString::setNum(unsigned long long n, int base)
{
    VyString text = formatUnsigned(n, -1, base, -1, VyLocale::NoFlags);
    std::swap(d, text.d);
    return *this;
}

VyString& VyString::setNum(double n, char format, int precision)
{
    VyString text = formatDouble(n, format, precision, -1, VyLocale::NoFlags);
    std::swap(d, text.d);
    return *this;
}

namespace
{

enum Length { NoLength, HH, H, L, LL, BigL, J, Z, T };

// `text` padded with spaces to `width`: after it under LeftJustify, else before it.
void appendPadded(VyUnitBuffer& out, const VyString& text, long long width, unsigned flags)
{
    const long long pad = width - text.size();
    if (!(flags & VyLocale::LeftJustify))
        out.append(' ', pad);
    out.append(text);
    if (flags & VyLocale::LeftJustify)
        out.append(' ', pad);
}

long long signedArgument(va_list& ap, Length length)
{
    switch (length) {
    case HH:
        return (signed char)va_arg(ap, int);
    case H:
        return (short)va_arg(ap, int);
    case L:
        return va_arg(ap, long);
    case LL:
    case BigL:
        return va_arg(ap, long long);
    case J:
        return va_arg(ap, intmax_t);
    case Z:
        return va_arg(ap, ptrdiff_t); // the signed type of size_t's width
    case T:
        return va_arg(ap, ptrdiff_t);
    default:
        return va_arg(ap, int);
    }
}

unsigned long long unsignedArgument(va_list& ap, Length length)
{
    switch (length) {
    case HH:
        return (unsigned char)va_arg(ap, unsigned);
    case H:
        return (unsigned short)va_arg(ap, unsigned);
    case L:
        return va_arg(ap, unsigned long);
    case LL:
    case BigL:
        return va_arg(ap, unsigned long long);
    case J:
        return va_arg(ap, uintmax_t);
    case Z:
        return va_arg(ap, size_t);
    case T:
        return (unsigned long long)(size_t)va_arg(ap, ptrdiff_t);
    default:
        return va_arg(ap, unsigned);
    }
}

void storeCount(va_list& ap, Length length, int count)
{
    switch (length) {
    case HH:
        *va_arg(ap, signed char*) = (signed char)count;
        break;
    case H:
        *va_arg(ap, short*) = (short)count;
        break;
    case L:
        *va_arg(ap, long*) = count;
        break;
    case LL:
    case BigL:
        *va_arg(ap, long long*) = count;
        break;
    case J:
        *va_arg(ap, intmax_t*) = count;
        break;
    case Z:
    case T:
        *va_arg(ap, ptrdiff_t*) = count;
        break;
    default:
        *va_arg(ap, int*) = count;
        break;
    }
}

// %a and %A: hexadecimal floating point, "0x1.8p+1", with the flags of the other double
// conversions. Without a precision the digits are exact.
VyString hexDouble(double value, int precision, int width, unsigned flags)
{
    if (isinf(value) || isnan(value))
        return VyLocale::doubleToString('0', '+', '-', 'e', ',', '.', value, 6,
                                        VyLocale::FormDecimal, width, flags);
    char buffer[64];
    std::to_chars_result r =
        precision < 0
            ? std::to_chars(buffer, buffer + sizeof buffer, fabs(value), std::chars_format::hex)
            : std::to_chars(buffer, buffer + sizeof buffer, fabs(value), std::chars_format::hex,
                            precision > 40 ? 40 : precision);
    VyString digits(buffer, int(r.ptr - buffer));
    if (precision > 40) { // past 13 hex digits only zeros follow
        const int p = digits.indexOf(VyUcs2('p'));
        digits.insert(p, VyString(precision - 40, '0'));
    }
    if ((flags & VyLocale::AlternateForm) && digits.indexOf(VyUcs2('.')) == -1)
        digits.insert(digits.indexOf(VyUcs2('p')), VyUcs2('.'));
    VyString sign;
    if (signbit(value))
        sign = VyString("-");
    else if (flags & VyLocale::PlusSign)
        sign = VyString("+");
    else if (flags & VyLocale::BlankSign)
        sign = VyString(" ");
    VyString text = sign;
    text.append("0x");
    const long long pad = (long long)width - text.size() - digits.size();
    if ((flags & (VyLocale::ZeroPad | VyLocale::LeftJustify)) == VyLocale::ZeroPad && pad > 0)
        text.append(VyString(int(pad), '0'));
    text.append(digits);
    return (flags & VyLocale::UpperCase) ? text.toUpper() : text;
}

} // namespace

VyString& VyString::sprintf(const char* format, ...)
{
    va_list ap;
    va_start(ap, format);
    vsprintf(format, ap);
    va_end(ap);
    return *this;
}

VyString& VyString::vsprintf(const char* format, va_list args)
{
    va_list ap;
    va_copy(ap, args);
    VyUnitBuffer out;
    const char* p = format;
    while (*p) {
        const char* run = p;
        while (*p && *p != '%')
            ++p;
        out.appendUtf8(run, int(p - run));
        if (!*p)
            break;
        const char* const start = p++;
        if (*p == '%') {
            out.append('%');
            ++p;
            continue;
        }

        unsigned flags = 0;
        for (;; ++p) {
            if (*p == '#')
                flags |= VyLocale::AlternateForm;
            else if (*p == '0')
                flags |= VyLocale::ZeroPad;
            else if (*p == '-')
                flags |= VyLocale::LeftJustify;
            else if (*p == ' ')
                flags |= VyLocale::BlankSign;
            else if (*p == '+')
                flags |= VyLocale::PlusSign;
            else if (*p == '\'')
                flags |= VyLocale::GroupDigits;
            else
                break;
        }
        long long width = -1;
        if (*p == '*') {
            width = va_arg(ap, int);
            if (width < 0) {
                flags |= VyLocale::LeftJustify;
                width = -width;
            }
            ++p;
        } else if (*p >= '0' && *p <= '9') {
            width = 0;
            for (; *p >= '0' && *p <= '9'; ++p)
                width = width < INT_MAX ? width * 10 + (*p - '0') : width;
        }
        int precision = -1;
        if (*p == '.') {
            ++p;
            long long value = 0;
            if (*p == '*') {
                value = va_arg(ap, int);
                ++p;
            } else {
                for (; *p >= '0' && *p <= '9'; ++p)
                    value = value < INT_MAX ? value * 10 + (*p - '0') : value;
            }
            precision = value < 0 ? -1 : value > INT_MAX ? INT_MAX : int(value);
        }
        if (width > INT_MAX)
            width = INT_MAX;
        Length length = NoLength;
        switch (*p) {
        case 'h':
            length = p[1] == 'h' ? HH : H;
            p += length == HH ? 2 : 1;
            break;
        case 'l':
            length = p[1] == 'l' ? LL : L;
            p += length == LL ? 2 : 1;
            break;
        case 'L':
            length = BigL;
            ++p;
            break;
        case 'j':
            length = J;
            ++p;
            break;
        case 'z':
            length = Z;
            ++p;
            break;
        case 't':
            length = T;
            ++p;
            break;
        default:
            break;
        }
        // The width goes to VyLocale for zero padding; the spaces are added here.
        const int numberWidth = int(width < 0 ? 0 : width);
        const char conversion = *p;
        if (conversion)
            ++p;
        switch (conversion) {
        case 'd':
        case 'i': {
            const long long value = signedArgument(ap, length);
            // As in C, a precision of 0 writes no digits for 0; only the sign flags remain.
            VyString text = precision == 0 && value == 0
                                ? VyString(flags & VyLocale::PlusSign    ? "+"
                                           : flags & VyLocale::BlankSign ? " "
                                                                         : "")
                                : formatSigned(value, precision, 10, numberWidth, flags);
            appendPadded(out, text, width, flags);
            break;
        }
        case 'o':
        case 'u':
        case 'x':
        case 'X': {
            const unsigned long long value = unsignedArgument(ap, length);
            // C drops the sign flags for unsigned conversions, and the hexadecimal prefix and
            // (with a precision of 0) the digits of 0; the octal alternate form keeps its "0".
            unsigned f = flags & ~unsigned(VyLocale::BlankSign | VyLocale::PlusSign);
            if (conversion == 'X')
                f |= VyLocale::UpperCase | VyLocale::UpperCaseBase;
            if (value == 0 && conversion != 'o')
                f &= ~unsigned(VyLocale::AlternateForm);
            const int base = conversion == 'o' ? 8 : conversion == 'u' ? 10 : 16;
            VyString text =
                precision == 0 && value == 0
                    ? VyString(conversion == 'o' && (f & VyLocale::AlternateForm) ? "0" : "")
                    : formatUnsigned(value, precision, base, numberWidth, f);
            appendPadded(out, text, width, flags);
            break;
        }
        case 'e':
        case 'E':
        case 'f':
        case 'F':
        case 'g':
        case 'G': {
            const double value =
                length == BigL ? double(va_arg(ap, long double)) : va_arg(ap, double);
            appendPadded(out, formatDouble(value, conversion, precision, numberWidth, flags), width,
                         flags);
            break;
        }
        case 'a':
        case 'A': {
            const double value =
                length == BigL ? double(va_arg(ap, long double)) : va_arg(ap, double);
            const unsigned f = conversion == 'A' ? flags | VyLocale::UpperCase : flags;
            appendPadded(out, hexDouble(value, precision, numberWidth, f), width, flags);
            break;
        }
        case 'c': {
            const int value = va_arg(ap, int);
            const VyUcs2 unit =
                length == L ? VyUcs2(value) : VyUcs2(static_cast<unsigned char>(value));
            appendPadded(out, VyString(unit), width, flags);
            break;
        }
        case 's': {
            const char* s = va_arg(ap, const char*);
            if (!s)
                s = "(null)";
            const size_t n = precision < 0 ? strlen(s) : strnlen(s, size_t(precision));
            const int bytes = n > size_t(INT_MAX - 1) ? INT_MAX - 1 : int(n);
            VyUnitBuffer units;
            units.appendUtf8(s, bytes);
            appendPadded(out, units.toString(), width, flags);
            break;
        }
        case 'p': {
            const uintptr_t value = reinterpret_cast<uintptr_t>(va_arg(ap, void*));
            appendPadded(out,
                         formatUnsigned(value, -1, 16, numberWidth,
                                        (flags & VyLocale::LeftJustify) | VyLocale::AlternateForm),
                         width, flags);
            break;
        }
        case 'n':
            storeCount(ap, length, out.size());
            break;
        default:
            // Unknown or cut off: the conversion text is copied as it stands.
            out.appendUtf8(start, int(p - start));
            break;
        }
    }
    va_end(ap);
    *this = out.toString();
    return *this;
}

long long VyString::toLongLong(bool* ok, int base) const
{
    return VyLocale::stringToLongLong(*this, base, ok, VyLocale::RejectGroupSeparators);
}

unsigned long long VyString::toULongLong(bool* ok, int base) const
{
    return VyLocale::stringToUnsLongLong(*this, base, ok, VyLocale::RejectGroupSeparators);
}

namespace
{

// A 64-bit read narrowed to T: in range it keeps the read's *ok, outside it gives 0 and false.
template <typename T, typename Wide> T narrowed(Wide value, bool* ok)
{
    bool inRange;
    if constexpr (std::is_signed<Wide>::value)
        inRange = value >= Wide(std::numeric_limits<T>::min()) &&
                  value <= Wide(std::numeric_limits<T>::max());
    else
        inRange = value <= Wide(std::numeric_limits<T>::max());
    if (!inRange) {
        if (ok)
            *ok = false;
        return 0;
    }
    return T(value);
}

} // namespace

short VyString::toShort(bool* ok, int base) const
{
    return narrowed<short>(toLongLong(ok, base), ok);
}

unsigned short VyString::toUShort(bool* ok, int base) const
{
    return narrowed<unsigned short>(toULongLong(ok, base), ok);
}

int VyString::toInt(bool* ok, int base) const
{
    return narrowed<int>(toLongLong(ok, base), ok);
}

uint VyString::toUInt(bool* ok, int base) const
{
    return narrowed<uint>(toULongLong(ok, base), ok);
}

long VyString::toLong(bool* ok, int base) const
{
    return narrowed<long>(toLongLong(ok, base), ok);
}

unsigned long VyString::toULong(bool* ok, int base) const
{
    return narrowed<unsigned long>(toULongLong(ok, base), ok);
}

double VyString::toDouble(bool* ok) const
{
    return VyLocale::stringToDouble(*this, ok, VyLocale::RejectGroupSeparators);
}

float VyString::toFloat(bool* ok) const
{
    bool good;
    const double value = toDouble(&good);
    // The largest float; NaN and infinity lie outside.
    if (good && value >= -3.4028234663852886e38 && value <= 3.4028234663852886e38) {
        if (ok)
            *ok = true;
        return float(value);
    }
    if (ok)
        *ok = false;
    return 0;
}
