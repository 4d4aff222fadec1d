// VyString::sprintf and vsprintf: a C-style format turned into units conversion by conversion;
// the number text comes from VyLocale.
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
                                : vyFormatSigned(value, precision, 10, numberWidth, flags);
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
                    : vyFormatUnsigned(value, precision, base, numberWidth, f);
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
            appendPadded(out, vyFormatDouble(value, conversion, precision, numberWidth, flags),
                         width, flags);
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
            appendPadded(
                out,
                vyFormatUnsigned(value, -1, 16, numberWidth,
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
