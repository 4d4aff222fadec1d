// The byte-level number readers of the C locale: integers in any base, and decimal text to
// double on top of std::from_chars, which rounds correctly and never consults the C library's
// locale.
#include "vylocale.h"

#include <charconv>
#include <limits.h>
#include <math.h>
#include <string.h>
#include <system_error>

namespace
{

int digitOf(char c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    const char lower = char(c | 0x20);
    if (lower >= 'a' && lower <= 'z')
        return lower - 'a' + 10;
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
    unsigned long long v = 0;
    const char* q = digits;
    for (int digit; (digit = digitOf(*q)) < base; ++q) {
        unsigned long long next;
        if (__builtin_mul_overflow(v, ubase, &next) ||
            __builtin_add_overflow(next, unsigned(digit), &next))
            *overflow = true;
        else
            v = next;
    }
    if (q == digits)
        return false;
    *value = *overflow ? ULLONG_MAX : v;
    *end = q;
    return true;
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

// readMagnitude from p with the readers' reporting: the end of the digits in *endptr, or on
// failure nptr there and *ok false.
bool readReported(const char* nptr, const char* p, int base, unsigned long long* magnitude,
                  bool* overflow, const char** endptr, bool* ok)
{
    const char* end;
    if (!readMagnitude(p, base, magnitude, overflow, &end)) {
        if (endptr)
            *endptr = nptr;
        if (ok)
            *ok = false;
        return false;
    }
    if (endptr)
        *endptr = end;
    return true;
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
    if (!readReported(nptr, p, base, &magnitude, &overflow, endptr, ok))
        return 0;
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
    if (!readReported(nptr, p, base, &magnitude, &overflow, endptr, ok))
        return 0;
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
