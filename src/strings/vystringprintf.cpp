// VyString::sprintf and vsprintf: a C-style format, read one conversion at a time. Each
// conversion is first read into a Conversion (flags, width, precision, length modifier and
// letter) and then written with its argument; the number text comes from VyLocale.
#include "vystring.h"

#include "vylocale.h"
#include "vystringnumber.h"
#include "vyunitbuffer.h"

#include <charconv>
#include <limits.h>
#include <math.h>
#include <stddef.h>
#include <stdint.h>
#include <string.h>

namespace
{

enum Length { NoLength, HH, H, L, LL, BigL, J, Z, T };

// One conversion as the format spells it, from its percent sign up to `end`.
struct Conversion {
    const char* begin;
    // After the conversion letter, or the format's terminating 0 when it ends first.
    const char* end;
    // VyLocale flags from # 0 - space + and ' (grouping).
    unsigned flags;
    // 0 to INT_MAX, or -1 when none is given. A negative `*` width sets LeftJustify.
    long long width;
    // 0 to INT_MAX, or -1 when none is given (a negative `*` precision counts as none).
    int precision;
    Length length;
    // 0 when the format ends inside the conversion.
    char letter;
};

// The decimal number at *p, which is moved past its digits. Once the value reaches INT_MAX
// the remaining digits are skipped, so it stays below 10 * INT_MAX for the caller to clamp.
long long readDigits(const char** p)
{
    long long value = 0;
    for (; **p >= '0' && **p <= '9'; ++*p)
        value = value < INT_MAX ? value * 10 + (**p - '0') : value;
    return value;
}

// Reads the conversion whose percent sign is at `p`. A `*` width or precision takes its int
// from `ap` here, before the conversion's own argument.
Conversion readConversion(const char* p, va_list& ap)
{
    Conversion c = {p, nullptr, 0, -1, -1, NoLength, 0};
    for (++p;; ++p) {
        if (*p == '#')
            c.flags |= VyLocale::AlternateForm;
        else if (*p == '0')
            c.flags |= VyLocale::ZeroPad;
        else if (*p == '-')
            c.flags |= VyLocale::LeftJustify;
        else if (*p == ' ')
            c.flags |= VyLocale::BlankSign;
        else if (*p == '+')
            c.flags |= VyLocale::PlusSign;
        else if (*p == '\'')
            c.flags |= VyLocale::GroupDigits;
        else
            break;
    }
    if (*p == '*') {
        c.width = va_arg(ap, int);
        if (c.width < 0) {
            c.flags |= VyLocale::LeftJustify;
            c.width = -c.width;
        }
        ++p;
    } else if (*p >= '0' && *p <= '9') {
        c.width = readDigits(&p);
    }
    if (c.width > INT_MAX)
        c.width = INT_MAX;
    if (*p == '.') {
        ++p;
        long long value;
        if (*p == '*') {
            value = va_arg(ap, int);
            ++p;
        } else {
            value = readDigits(&p);
        }
        c.precision = value < 0 ? -1 : value > INT_MAX ? INT_MAX : int(value);
    }
    switch (*p) {
    case 'h':
        c.length = p[1] == 'h' ? HH : H;
        p += c.length == HH ? 2 : 1;
        break;
    case 'l':
        c.length = p[1] == 'l' ? LL : L;
        p += c.length == LL ? 2 : 1;
        break;
    case 'L':
        c.length = BigL;
        ++p;
        break;
    case 'j':
        c.length = J;
        ++p;
        break;
    case 'z':
        c.length = Z;
        ++p;
        break;
    case 't':
        c.length = T;
        ++p;
        break;
    default:
        break;
    }
    c.letter = *p;
    c.end = c.letter ? p + 1 : p;
    return c;
}

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

// Writes the conversion `c` with its argument from `ap`. The width goes to VyLocale for zero
// padding; the spaces are added here.
void writeConversion(VyUnitBuffer& out, const Conversion& c, va_list& ap)
{
    const unsigned flags = c.flags;
    const int numberWidth = int(c.width < 0 ? 0 : c.width);
    switch (c.letter) {
    case 'd':
    case 'i': {
        const long long value = signedArgument(ap, c.length);
        // As in C, a precision of 0 writes no digits for 0; only the sign flags remain.
        VyString text = c.precision == 0 && value == 0
                            ? VyString(flags & VyLocale::PlusSign    ? "+"
                                       : flags & VyLocale::BlankSign ? " "
                                                                     : "")
                            : vyFormatSigned(value, c.precision, 10, numberWidth, flags);
        appendPadded(out, text, c.width, flags);
        break;
    }
    case 'o':
    case 'u':
    case 'x':
    case 'X': {
        const unsigned long long value = unsignedArgument(ap, c.length);
        // C drops the sign flags for unsigned conversions, and the hexadecimal prefix and
        // (with a precision of 0) the digits of 0; the octal alternate form keeps its "0".
        unsigned f = flags & ~unsigned(VyLocale::BlankSign | VyLocale::PlusSign);
        if (c.letter == 'X')
            f |= VyLocale::UpperCase | VyLocale::UpperCaseBase;
        if (value == 0 && c.letter != 'o')
            f &= ~unsigned(VyLocale::AlternateForm);
        const int base = c.letter == 'o' ? 8 : c.letter == 'u' ? 10 : 16;
        VyString text = c.precision == 0 && value == 0
                            ? VyString(c.letter == 'o' && (f & VyLocale::AlternateForm) ? "0" : "")
                            : vyFormatUnsigned(value, c.precision, base, numberWidth, f);
        appendPadded(out, text, c.width, flags);
        break;
    }
    case 'e':
    case 'E':
    case 'f':
    case 'F':
    case 'g':
    case 'G': {
        const double value =
            c.length == BigL ? double(va_arg(ap, long double)) : va_arg(ap, double);
        appendPadded(out, vyFormatDouble(value, c.letter, c.precision, numberWidth, flags), c.width,
                     flags);
        break;
    }
    case 'a':
    case 'A': {
        const double value =
            c.length == BigL ? double(va_arg(ap, long double)) : va_arg(ap, double);
        const unsigned f = c.letter == 'A' ? flags | VyLocale::UpperCase : flags;
        appendPadded(out, hexDouble(value, c.precision, numberWidth, f), c.width, flags);
        break;
    }
    case 'c': {
        const int value = va_arg(ap, int);
        const VyUcs2 unit =
            c.length == L ? VyUcs2(value) : VyUcs2(static_cast<unsigned char>(value));
        appendPadded(out, VyString(unit), c.width, flags);
        break;
    }
    case 's': {
        const char* s = va_arg(ap, const char*);
        if (!s)
            s = "(null)";
        const size_t n = c.precision < 0 ? strlen(s) : strnlen(s, size_t(c.precision));
        const int bytes = n > size_t(INT_MAX - 1) ? INT_MAX - 1 : int(n);
        VyUnitBuffer units;
        units.appendUtf8(s, bytes);
        appendPadded(out, units.toString(), c.width, flags);
        break;
    }
    case 'p': {
        const uintptr_t value = reinterpret_cast<uintptr_t>(va_arg(ap, void*));
        appendPadded(out,
                     vyFormatUnsigned(value, -1, 16, numberWidth,
                                      (flags & VyLocale::LeftJustify) | VyLocale::AlternateForm),
                     c.width, flags);
        break;
    }
    case 'n':
        storeCount(ap, c.length, out.size());
        break;
    default:
        // Unknown or cut off: the conversion text is copied as it stands.
        out.appendUtf8(c.begin, int(c.end - c.begin));
        break;
    }
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
        if (p[1] == '%') {
            out.append('%');
            p += 2;
            continue;
        }
        const Conversion c = readConversion(p, ap);
        writeConversion(out, c, ap);
        p = c.end;
    }
    va_end(ap);
    *this = out.toString();
    return *this;
}
