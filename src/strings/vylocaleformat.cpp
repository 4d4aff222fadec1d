// Number to text: VyLocale's integers in bases 2 to 36 and doubles in the exponent, decimal and
// general layouts, built in a unit buffer on the stack and handed over as one string; and the
// decimal digits of doubles (vydtoa) on top of std::to_chars, which is exact and never
// consults the C library's locale.
#include "vylocale.h"

#include "vyunitbuffer.h"

#include <charconv>
#include <math.h>
#include <new>
#include <stdint.h>
#include <stdlib.h>
#include <string.h>

namespace
{

// Number text longer than 2^30 - 1 units is refused with std::bad_alloc, whatever width or
// precision was asked for.
constexpr int kNumberTextLimit = 0x3FFFFFFF;

void upperCase(VyUnitBuffer& t)
{
    t.assign(t.toString().toUpper());
}

bool isZeroPadded(unsigned flags)
{
    return (flags & (VyLocale::ZeroPad | VyLocale::LeftJustify)) == VyLocale::ZeroPad;
}

void appendSign(VyUnitBuffer& t, bool negative, VyUcs2 plus, VyUcs2 minus, unsigned flags)
{
    if (negative)
        t.insert(0, minus);
    else if (flags & VyLocale::PlusSign)
        t.insert(0, plus);
    else if (flags & VyLocale::BlankSign)
        t.insert(0, ' ');
}

// The digits of `v` in `base`, most significant first, written backwards so that they end at
// `end`; returns where they start. Constant divisors for the common bases, and 32-bit
// arithmetic once the value fits (64-bit division is a library call on 32-bit ARM).
VyUcs2* writeDigits(VyUcs2* end, unsigned long long v, int base)
{
    static const char digitChars[] = "0123456789abcdefghijklmnopqrstuvwxyz";
    VyUcs2* p = end;
    switch (base) {
    case 10:
        while (v > 0xFFFFFFFFu) {
            *--p = VyUcs2('0' + v % 10);
            v /= 10;
        }
        for (uint32_t w = uint32_t(v);;) {
            *--p = VyUcs2('0' + w % 10);
            w /= 10;
            if (!w)
                break;
        }
        break;
    case 16:
    case 8:
    case 2: {
        const int shift = base == 16 ? 4 : base == 8 ? 3 : 1;
        do {
            *--p = VyUcs2(digitChars[v & unsigned(base - 1)]);
            v >>= shift;
        } while (v);
        break;
    }
    default:
        do {
            *--p = VyUcs2(digitChars[v % unsigned(base)]);
            v /= unsigned(base);
        } while (v);
        break;
    }
    return p;
}

VyString formatInteger(VyUcs2 zero, VyUcs2 group, VyUcs2 plus, VyUcs2 minus, bool negative,
                       unsigned long long magnitude, int precision, int base, int width,
                       unsigned flags)
{
    if (base < 2 || base > 36)
        base = 10;
    const bool defaultPrecision = precision < 0;
    if (defaultPrecision)
        precision = 1;
    if (base != 10)
        flags &= ~unsigned(VyLocale::BlankSign | VyLocale::PlusSign);
    const bool alternate = flags & (VyLocale::AlternateForm | VyLocale::ShowBase);
    const bool prefixed = alternate && (base == 16 || base == 2);

    VyUcs2 buffer[72];
    VyUcs2* const end = buffer + 72;
    VyUcs2* digits = writeDigits(end, magnitude, base);
    const bool localDigits = base == 10 && zero != '0';
    if (localDigits) {
        for (VyUcs2* p = digits; p != end; ++p)
            *p = VyUcs2(zero + (*p - '0'));
    }
    // number() and most other calls: the digits and perhaps a minus sign.
    if (flags == 0 && defaultPrecision) {
        if (negative)
            *--digits = minus;
        return VyString(digits, int(end - digits));
    }

    VyUnitBuffer t(kNumberTextLimit);
    t.append(digits, int(end - digits));
    if (base == 10 && (flags & VyLocale::GroupDigits)) {
        for (int i = t.size() - 3; i > 0; i -= 3)
            t.insert(i, group);
    }
    const VyUcs2 padZero = base == 10 ? zero : VyUcs2('0');
    // The separators count towards the precision: it is compared with the text's length.
    t.insert(0, padZero, (long long)precision - t.size());
    if (base == 8 && alternate && t[0] != '0')
        t.insert(0, '0');
    if (defaultPrecision && isZeroPadded(flags)) {
        long long pad = (long long)width - t.size();
        if (negative || (flags & (VyLocale::BlankSign | VyLocale::PlusSign)))
            --pad;
        if (prefixed)
            pad -= 2;
        t.insert(0, padZero, pad);
    }
    if (flags & VyLocale::UpperCase)
        upperCase(t);
    if (prefixed) {
        const bool upper = flags & VyLocale::UpperCaseBase;
        t.insert(0, base == 16 ? (upper ? 'X' : 'x') : (upper ? 'B' : 'b'));
        t.insert(0, '0');
    }
    appendSign(t, negative, plus, minus, flags);
    return t.toString();
}

// The decimal layout of decimalForm on a unit buffer.
void decimalLayout(VyUnitBuffer& t, VyUcs2 zero, VyUcs2 decimal, VyUcs2 group, int decpt,
                   int precision, VyLocale::PrecisionMode mode, bool alternate, bool grouping)
{
    if (decpt <= 0) {
        t.insert(0, zero, 1 - (long long)decpt);
        decpt = 1;
    }
    if (decpt > t.size())
        t.append(zero, (long long)decpt - t.size());
    if (mode == VyLocale::DigitsAfterPoint) {
        t.append(zero, (long long)precision - (t.size() - decpt));
    } else if (mode == VyLocale::SignificantDigits) {
        int leadingZeros = 0;
        while (leadingZeros < t.size() - 1 && t[leadingZeros] == zero)
            ++leadingZeros;
        t.append(zero, (long long)precision - (t.size() - leadingZeros));
    }
    if (decpt < t.size() || alternate)
        t.insert(decpt, decimal);
    if (grouping) {
        for (int i = decpt - 3; i > 0; i -= 3)
            t.insert(i, group);
    }
}

// The exponent layout of exponentForm on a unit buffer.
void exponentLayout(VyUnitBuffer& t, VyUcs2 zero, VyUcs2 decimal, VyUcs2 exponential, VyUcs2 plus,
                    VyUcs2 minus, int decpt, int precision, VyLocale::PrecisionMode mode,
                    bool alternate)
{
    if (t.size() == 0)
        t.append(zero);
    const long long exponent = (long long)decpt - 1;
    if (mode == VyLocale::DigitsAfterPoint)
        t.append(zero, (long long)precision + 1 - t.size());
    else if (mode == VyLocale::SignificantDigits)
        t.append(zero, (long long)precision - t.size());
    if (t.size() > 1 || alternate)
        t.insert(1, decimal);
    t.append(exponential);
    t.append(exponent < 0 ? minus : plus);
    unsigned long long magnitude = exponent < 0 ? -exponent : exponent;
    char digits[24];
    int n = 0;
    do {
        digits[n++] = char('0' + magnitude % 10);
        magnitude /= 10;
    } while (magnitude);
    if (n < 2)
        digits[n++] = '0';
    while (n > 0)
        t.append(VyUcs2(zero + (digits[--n] - '0')));
}

// Room for the digits of any mode: fixed notation of the largest double with 1100 places
// needs 309 + 1 + 1100 bytes.
constexpr int kDigitRoom = 1501;

// The digits vydtoa returns, for a finite non-negative `d`, into `out` (kDigitRoom bytes) with
// a terminating 0; returns their count.
int decimalDigits(double d, int mode, int ndigits, char* out, int* decpt)
{
    if (mode != 2 && mode != 3)
        mode = 0;
    if (ndigits < 0)
        ndigits = 0;
    // Beyond these counts every further digit is a zero: a double's exact decimal expansion
    // ends within 1074 places after the point and holds at most 767 significant digits.
    if (mode == 3 && ndigits > 1100)
        ndigits = 1100;
    if (mode == 2 && ndigits > 800)
        ndigits = 800;
    char buffer[kDigitRoom];
    char* const limit = buffer + kDigitRoom;
    std::to_chars_result r;
    if (mode == 0)
        r = std::to_chars(buffer, limit, d, std::chars_format::scientific);
    else if (mode == 2)
        r = std::to_chars(buffer, limit, d, std::chars_format::scientific,
                          ndigits > 0 ? ndigits - 1 : 0);
    else
        r = std::to_chars(buffer, limit, d, std::chars_format::fixed, ndigits);
    const char* const end = r.ptr;

    // Collect the digits without the point, noting how many stood before it.
    int n = 0;
    int beforePoint = -1;
    const char* p = buffer;
    for (; p != end && *p != 'e'; ++p) {
        if (*p == '.')
            beforePoint = n;
        else
            out[n++] = *p;
    }
    if (beforePoint < 0)
        beforePoint = n;
    int exponent = 0;
    if (p != end) { // scientific: "d.ddde+XX"
        for (const char* q = p + 2; q != end; ++q)
            exponent = exponent * 10 + (*q - '0');
        if (p[1] == '-')
            exponent = -exponent;
        beforePoint = 1;
    }
    int first = 0;
    while (first < n - 1 && out[first] == '0')
        ++first;
    int last = n;
    while (last > first + 1 && out[last - 1] == '0')
        --last;
    if (last - first == 1 && out[first] == '0') {
        *decpt = 1;
        out[0] = '0';
        out[1] = 0;
        return 1;
    }
    *decpt = beforePoint - first + exponent;
    n = last - first;
    memmove(out, out + first, size_t(n));
    out[n] = 0;
    return n;
}

void appendDigits(VyUnitBuffer& t, const char* digits, int n, VyUcs2 zero)
{
    for (int i = 0; i < n; ++i)
        t.append(VyUcs2(zero + (digits[i] - '0')));
}

} // namespace

char* vydtoa(double d, int mode, int ndigits, int* decpt, int* sign, char** rve)
{
    *sign = signbit(d) ? 1 : 0;
    char digits[kDigitRoom];
    int n;
    if (isinf(d) || isnan(d)) {
        *decpt = 9999;
        n = isinf(d) ? 8 : 3;
        memcpy(digits, isinf(d) ? "Infinity" : "NaN", size_t(n) + 1);
    } else {
        n = decimalDigits(fabs(d), mode, ndigits, digits, decpt);
    }
    char* out = static_cast<char*>(malloc(size_t(n) + 1));
    if (!out)
        throw std::bad_alloc();
    memcpy(out, digits, size_t(n) + 1);
    if (rve)
        *rve = out + n;
    return out;
}

VyString VyLocale::longLongToString(VyUcs2 zero, VyUcs2 group, VyUcs2 plus, VyUcs2 minus,
                                    long long value, int precision, int base, int width,
                                    unsigned flags)
{
    const bool decimal = base == 10 || base < 2 || base > 36;
    const bool negative = decimal && value < 0;
    const unsigned long long magnitude =
        negative ? 0ULL - (unsigned long long)value : (unsigned long long)value;
    return formatInteger(zero, group, plus, minus, negative, magnitude, precision, base, width,
                         flags);
}

VyString VyLocale::unsLongLongToString(VyUcs2 zero, VyUcs2 group, VyUcs2 plus,
                                       unsigned long long value, int precision, int base, int width,
                                       unsigned flags)
{
    return formatInteger(zero, group, plus, '-', false, value, precision, base, width, flags);
}

VyString VyLocale::doubleToString(VyUcs2 zero, VyUcs2 plus, VyUcs2 minus, VyUcs2 exponential,
                                  VyUcs2 group, VyUcs2 decimal, double value, int precision,
                                  DoubleForm form, int width, unsigned flags)
{
    if (precision < 0)
        precision = 6;
    if (width < 0)
        width = 0;
    VyUnitBuffer t(kNumberTextLimit);
    bool negative = false;
    if (isinf(value)) {
        t.append("inf");
        negative = value < 0;
    } else if (isnan(value)) {
        t.append("nan");
    } else {
        int decpt;
        const int mode = form == FormDecimal ? 3 : 2;
        const int ndigits = form == FormExponent ? precision + 1 : precision;
        char digits[kDigitRoom];
        appendDigits(t, digits, decimalDigits(fabs(value), mode, ndigits, digits, &decpt), zero);
        negative = signbit(value);

        const bool alternate = flags & AlternateForm;
        if (form == FormDecimal) {
            decimalLayout(t, zero, decimal, group, decpt, precision, DigitsAfterPoint, alternate,
                          flags & GroupDigits);
        } else if (form == FormExponent) {
            exponentLayout(t, zero, decimal, exponential, plus, minus, decpt, precision,
                           DigitsAfterPoint, alternate);
        } else {
            const PrecisionMode mode = alternate ? SignificantDigits : TrailingZerosChopped;
            if (decpt != t.size() && (decpt < -3 || decpt > precision))
                exponentLayout(t, zero, decimal, exponential, plus, minus, decpt, precision, mode,
                               alternate);
            else
                decimalLayout(t, zero, decimal, group, decpt, precision, mode, alternate,
                              flags & GroupDigits);
        }
        if (isZeroPadded(flags)) {
            long long pad = (long long)width - t.size();
            if (negative || (flags & (BlankSign | PlusSign)))
                --pad;
            t.insert(0, zero, pad);
        }
    }
    appendSign(t, negative, plus, minus, flags);
    if (flags & UpperCase)
        upperCase(t);
    return t.toString();
}

VyString& VyLocale::decimalForm(VyUcs2 zero, VyUcs2 decimal, VyUcs2 group, VyString& digits,
                                int decimalPosition, int precision, PrecisionMode mode,
                                bool alternate, bool grouping)
{
    VyUnitBuffer t(kNumberTextLimit);
    t.assign(digits);
    decimalLayout(t, zero, decimal, group, decimalPosition, precision, mode, alternate, grouping);
    digits = t.toString();
    return digits;
}

VyString& VyLocale::exponentForm(VyUcs2 zero, VyUcs2 decimal, VyUcs2 exponential, VyUcs2 plus,
                                 VyUcs2 minus, VyString& digits, int decimalPosition, int precision,
                                 PrecisionMode mode, bool alternate)
{
    VyUnitBuffer t(kNumberTextLimit);
    t.assign(digits);
    exponentLayout(t, zero, decimal, exponential, plus, minus, decimalPosition, precision, mode,
                   alternate);
    digits = t.toString();
    return digits;
}
