// The byte-level number conversions of the C locale: integer parsing in any base, and the
// decimal digits of doubles in both directions on top of std::to_chars / std::from_chars, which
// are exact and never consult the C library's locale.
#include "vylocale.h"

#include <charconv>
#include <limits.h>
#include <math.h>
#include <new>
#include <stdlib.h>
#include <string.h>
#include <system_error>

namespace
{

int digitOf(char c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'a' && c <= 'z')
        return c - 'a' + 10;
    if (c >= 'A' && c <= 'Z')
        return c - 'A' + 10;
    return 99;
}

// Reads the magnitude after the sign: the optional base prefix and the digits. Returns false
// when nothing was read (*end = start); on overflow sets *overflow and saturates.
bool readMagnitude(const char* p, int base, unsigned long long* value, bool* overflow,
                   const char** end)
{
    *value = 0;
    *overflow = false;
    *end = p;
    if (base != 0 && (base < 2 || base > 36))
        return false;
    const char* digits = p;
    if ((base == 0 || base == 16) && p[0] == '0' && (p[1] == 'x' || p[1] == 'X') &&
        digitOf(p[2]) < 16) {
        base = 16;
        digits = p + 2;
    } else if (base == 0) {
        base = p[0] == '0' ? 8 : 10;
    }
    const unsigned long long ubase = unsigned(base);
    const unsigned long long limit = ULLONG_MAX / ubase;
    unsigned long long v = 0;
    const char* q = digits;
    for (int digit; (digit = digitOf(*q)) < base; ++q) {
        if (v > limit || v * ubase > ULLONG_MAX - unsigned(digit))
            *overflow = true;
        else
            v = v * ubase + unsigned(digit);
    }
    if (q == digits)
        return false;
    *value = *overflow ? ULLONG_MAX : v;
    *end = q;
    return true;
}

char* copyDigits(const char* digits, int n, char** rve)
{
    char* out = static_cast<char*>(malloc(size_t(n) + 1));
    if (!out)
        throw std::bad_alloc();
    memcpy(out, digits, size_t(n));
    out[n] = 0;
    if (rve)
        *rve = out + n;
    return out;
}

// The decimal exponent of the first significant digit of a decimal literal, saturated; used
// to tell an overflow from an underflow when from_chars reports a value out of range.
long long leadingExponent(const char* p, const char* end)
{
    long long position = 0; // digits seen before the point, then minus zeros after it
    bool seenPoint = false;
    bool significant = false;
    for (; p != end && ((*p >= '0' && *p <= '9') || *p == '.'); ++p) {
        if (*p == '.') {
            seenPoint = true;
        } else if (significant) {
            if (!seenPoint)
                ++position;
        } else if (*p != '0') {
            significant = true;
            if (!seenPoint)
                ++position;
        } else if (seenPoint) {
            --position;
        }
    }
    long long exponent = 0;
    if (p != end && (*p == 'e' || *p == 'E')) {
        ++p;
        const bool negative = p != end && *p == '-';
        if (p != end && (*p == '-' || *p == '+'))
            ++p;
        for (; p != end && *p >= '0' && *p <= '9'; ++p)
            exponent = exponent < 100000000 ? exponent * 10 + (*p - '0') : exponent;
        if (negative)
            exponent = -exponent;
    }
    return position - 1 + exponent;
}

} // namespace

long long vystrtoll(const char* nptr, const char** endptr, int base, bool* ok)
{
    const char* p = nptr;
    const bool negative = *p == '-';
    if (*p == '-' || *p == '+')
        ++p;
    unsigned long long magnitude;
    bool overflow;
    const char* end;
    if (!readMagnitude(p, base, &magnitude, &overflow, &end)) {
        if (endptr)
            *endptr = nptr;
        if (ok)
            *ok = false;
        return 0;
    }
    if (endptr)
        *endptr = end;
    const unsigned long long bound = negative ? 0ULL - (unsigned long long)LLONG_MIN : LLONG_MAX;
    if (overflow || magnitude > bound) {
        if (ok)
            *ok = false;
        return negative ? LLONG_MIN : LLONG_MAX;
    }
    if (ok)
        *ok = true;
    return negative ? (long long)(0ULL - magnitude) : (long long)magnitude;
}

unsigned long long vystrtoull(const char* nptr, const char** endptr, int base, bool* ok)
{
    const char* p = nptr;
    if (*p == '+')
        ++p;
    unsigned long long magnitude;
    bool overflow;
    const char* end;
    if (!readMagnitude(p, base, &magnitude, &overflow, &end)) {
        if (endptr)
            *endptr = nptr;
        if (ok)
            *ok = false;
        return 0;
    }
    if (endptr)
        *endptr = end;
    if (ok)
        *ok = !overflow;
    return magnitude;
}

double vystrtod(const char* s, const char** end, bool* ok)
{
    const char* p = s;
    const bool negative = *p == '-';
    if (*p == '-' || *p == '+')
        ++p;
    // from_chars takes a minus sign itself but no plus; the sign is read here so that a second
    // sign after the first is refused.
    const bool startsNumber =
        (*p >= '0' && *p <= '9') || *p == '.' || *p == 'i' || *p == 'I' || *p == 'n' || *p == 'N';
    double value = 0;
    std::from_chars_result r{p, std::errc::invalid_argument};
    const char* const last = p + (startsNumber ? strlen(p) : 0);
    if (startsNumber)
        r = std::from_chars(p, last, value, std::chars_format::general);
    if (r.ec == std::errc::invalid_argument) {
        if (end)
            *end = s;
        if (ok)
            *ok = false;
        return 0;
    }
    if (end)
        *end = r.ptr;
    bool good = true;
    if (r.ec == std::errc::result_out_of_range) {
        // The correctly rounded value is 0 for a tiny literal and beyond the range otherwise.
        if (leadingExponent(p, r.ptr) > 0) {
            value = HUGE_VAL;
            good = false;
        } else {
            value = 0;
        }
    }
    if (ok)
        *ok = good;
    return negative ? -value : value;
}

char* vydtoa(double d, int mode, int ndigits, int* decpt, int* sign, char** rve)
{
    *sign = signbit(d) ? 1 : 0;
    if (isinf(d) || isnan(d)) {
        *decpt = 9999;
        return isinf(d) ? copyDigits("Infinity", 8, rve) : copyDigits("NaN", 3, rve);
    }
    d = fabs(d);
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
    // Fixed notation of the largest double with 1100 places needs 309 + 1 + 1100 bytes.
    char buffer[1501];
    std::to_chars_result r;
    if (mode == 0)
        r = std::to_chars(buffer, buffer + sizeof buffer - 1, d, std::chars_format::scientific);
    else if (mode == 2)
        r = std::to_chars(buffer, buffer + sizeof buffer - 1, d, std::chars_format::scientific,
                          ndigits > 0 ? ndigits - 1 : 0);
    else
        r = std::to_chars(buffer, buffer + sizeof buffer - 1, d, std::chars_format::fixed, ndigits);
    char* const end = r.ptr;
    *end = 0;

    // Collect the digits without the point, noting how many stood before it.
    char digits[1500];
    int n = 0;
    int beforePoint = -1;
    char* p = buffer;
    for (; p != end && *p != 'e'; ++p) {
        if (*p == '.')
            beforePoint = n;
        else
            digits[n++] = *p;
    }
    if (beforePoint < 0)
        beforePoint = n;
    int exponent = 0;
    if (p != end) { // scientific: "d.ddde+XX"
        exponent = int(strtol(p + 1, nullptr, 10));
        beforePoint = 1;
    }
    int first = 0;
    while (first < n - 1 && digits[first] == '0')
        ++first;
    int last = n;
    while (last > first + 1 && digits[last - 1] == '0')
        --last;
    if (last - first == 1 && digits[first] == '0') {
        *decpt = 1;
        return copyDigits("0", 1, rve);
    }
    *decpt = beforePoint - first + exponent;
    return copyDigits(digits + first, last - first, rve);
}
