// VyLocale: conversion between numbers and text with one library-wide set of number symbols.
//
// Every member is static. The symbols (decimal point, group separator, signs, zero digit,
// exponent letter, ...) and the options word are plain process-wide variables with the C
// locale's values; nothing is looked up from the system, and the C library's locale never
// changes a result. They are read without locking: an application that changes them does so
// before it converts numbers from several threads. Everything else here is pure and may run on
// any thread.
//
// Number to text: longLongToString, unsLongLongToString and doubleToString take the symbols as
// arguments and a word of Flags; they never add space padding (callers pad), only zeros under
// ZeroPad. Text to number: stringToLongLong, stringToUnsLongLong and stringToDouble first bring
// the text into the plain byte form of the C locale (numberToCLocale) and parse that with
// vystrtoll, vystrtoull and vystrtod. Failure is reported through `ok` alone, with a result
// of 0.
//
// The free functions at the end are the byte-level conversions of the C locale. Decimal digits
// of doubles come from std::to_chars and parsing from std::from_chars, so both are correctly
// rounded and independent of the C library's locale.
#ifndef VYLOCALE_H
#define VYLOCALE_H

#include "vyglobal.h"
#include "vystring.h"
#include "vyvector.h"

class VY_EXPORT VyLocale
{
public:
    // The layouts of doubleToString: "1.5e+03", "1500.000000", or the shorter of the two in
    // the manner of C's %g.
    enum DoubleForm { FormExponent = 0, FormDecimal = 1, FormGeneral = 2 };

    // How a layout reads its precision: digits after the point (padded with zeros), significant
    // digits (padded with zeros), or the digits as they come with trailing zeros left off.
    enum PrecisionMode { DigitsAfterPoint = 1, SignificantDigits = 2, TrailingZerosChopped = 3 };

    // The flags word of the number-to-text functions.
    enum Flags {
        NoFlags = 0,
        AlternateForm = 0x01, // base prefix; for doubles: always a decimal point, keep zeros
        ZeroPad = 0x02,       // zeros up to the width (ignored under LeftJustify)
        LeftJustify = 0x04,   // for the caller's padding; disables ZeroPad
        BlankSign = 0x08,     // a blank before a non-negative number
        PlusSign = 0x10,      // the plus sign before a non-negative number
        GroupDigits = 0x20,   // group separators (integers: base 10 only)
        UpperCase = 0x40,     // the whole result upper-cased
        ShowBase = 0x80,      // base prefix, like AlternateForm for integers
        UpperCaseBase = 0x100 // "0X" and "0B" instead of "0x" and "0b"
    };

    // For the text-to-number functions: AcceptGroupSeparators checks and removes group
    // separators; every other value refuses text that holds one.
    enum GroupSeparatorMode { RejectGroupSeparators = 0, AcceptGroupSeparators = 1 };

    // The library-wide symbols, initially those of the C locale. The ten digits are the units
    // from mZeroDigit upward.
    static VyUcs2 mDecimal;        // '.'
    static VyUcs2 mGroupSeparator; // ','
    static VyUcs2 mNegativeSign;   // '-'
    static VyUcs2 mPositiveSign;   // '+'
    static VyUcs2 mPercentSign;    // '%'
    static VyUcs2 mZeroDigit;      // '0'
    static VyUcs2 mExponential;    // 'e'
    static VyUcs2 mListSign;       // ';'
    // 0 initially. While it is 0, VyString::arg groups the digits of %L markers.
    static unsigned short mNumberOptions;

    // Signed value to text in `base` (2 to 36; any other base is taken as 10). A precision
    // of -1 means at least one digit, else at least `precision` digits. Outside base 10 the
    // value is written as its unsigned 64-bit pattern and the sign flags are dropped; in base
    // 10 the digits are moved to the locale's digits. Zero padding to `width` applies only
    // with the default precision. Flag order: digits, grouping, precision zeros, octal "0",
    // zero padding, UpperCase, prefix, sign.
    // The prefix does not depend on the value: 0 in base 16 with AlternateForm is "0x0" (C's
    // printf writes "0").
    static VyString longLongToString(VyUcs2 zero, VyUcs2 group, VyUcs2 plus, VyUcs2 minus,
                                     long long value, int precision, int base, int width,
                                     unsigned flags);
    // The same steps for an unsigned value, which is never negative.
    static VyString unsLongLongToString(VyUcs2 zero, VyUcs2 group, VyUcs2 plus,
                                        unsigned long long value, int precision, int base,
                                        int width, unsigned flags);
    // Double to text in `form`. A negative precision means 6; a width of -1 means none.
    // Infinity is "inf" (with its sign), a NaN "nan", neither zero-padded. Finite values take
    // their digits from vydtoa; FormGeneral chooses the exponent form when the exponent is
    // below -4 or at least the precision, like C's %g, and leaves trailing zeros off unless
    // AlternateForm is set. Exponents have at least two digits. The sign comes from the sign
    // bit, so -0.0 is written "-0". UpperCase applies last, to the whole text.
    static VyString doubleToString(VyUcs2 zero, VyUcs2 plus, VyUcs2 minus, VyUcs2 exponential,
                                   VyUcs2 group, VyUcs2 decimal, double value, int precision,
                                   DoubleForm form, int width, unsigned flags);
    // The decimal layout, in place: `digits` holds the significant digits (locale digits) of a
    // value whose decimal point stands after `decimalPosition` of them (0 or below: before
    // them, with zeros between). Zeros are added before a leading point and up to the point;
    // then up to `precision` digits after the point (DigitsAfterPoint) or `precision`
    // significant digits (SignificantDigits). The point is written when digits follow it or
    // `alternate` is set; `grouping` puts `group` between every three digits before it.
    static VyString& decimalForm(VyUcs2 zero, VyUcs2 decimal, VyUcs2 group, VyString& digits,
                                 int decimalPosition, int precision, PrecisionMode mode,
                                 bool alternate, bool grouping);
    // The exponent layout, in place: one digit, the point and the other digits (zeros added up
    // to `precision` digits after the point or `precision` significant digits, by `mode`),
    // then `exponential`, the exponent's sign (always written) and at least two digits.
    static VyString& exponentForm(VyUcs2 zero, VyUcs2 decimal, VyUcs2 exponential, VyUcs2 plus,
                                  VyUcs2 minus, VyString& digits, int decimalPosition,
                                  int precision, PrecisionMode mode, bool alternate);

    // Text to number. Leading and trailing white space is allowed; anything else must belong
    // to the number. Malformed text, misplaced group separators, trailing garbage and values
    // outside the type give 0 with *ok false (when `ok` is non-null). `base` is 0 (read from
    // the prefix: "0x" 16, "0" 8, else 10) or 2 to 36; base 16 allows a "0x" prefix.
    // Before the text is converted, it is trimmed when the group separator is U+00A0 (whose
    // byte form is the plain space).
    static long long stringToLongLong(const VyString& text, int base, bool* ok,
                                      GroupSeparatorMode mode);
    // As above; a minus sign is refused.
    static unsigned long long stringToUnsLongLong(const VyString& text, int base, bool* ok,
                                                  GroupSeparatorMode mode);
    // Decimal text, "inf", "infinity" or "nan" (any case, with an optional sign). A value too
    // large for a double fails; one too small to be told from 0 reads as a zero of its sign.
    static double stringToDouble(const VyString& text, bool* ok, GroupSeparatorMode mode);

    // The text in the plain byte form: leading white space skipped, every unit mapped by
    // digitToCLocale, the list and percent signs kept, ASCII letters in lower case; the number
    // ends at the first other unit, after which only white space may follow. Replaces the
    // contents of `out` with the bytes and a terminating 0. False for text without a number,
    // with garbage after it, or (AcceptGroupSeparators) with misplaced separators.
    static bool numberToCLocale(const VyString& text, GroupSeparatorMode mode, VyVector<char>* out);
    // One unit in the plain byte form: a locale or ASCII digit, '+', '-', '.', ',' for the
    // four symbols, 'e' for the exponent letter or its upper case, ',' for a plain space when
    // the group separator is U+00A0; 0 for every other unit.
    static char digitToCLocale(const unsigned short& unit);
    // Checks the ',' separators of the 0-terminated byte form and removes them: every group
    // between separators has three digits, the first one to three, and none stands after the
    // decimal point or the exponent. True for a string without separators.
    // Only a '-' may stand before a first group of three digits: "+123,456" fails while
    // "-123,456" and "+1,234" pass.
    static bool removeGroupSeparators(VyVector<char>* bytes);

    // The plain byte form to a number; the whole 0-terminated string must be consumed.
    // `overflow` (when non-null) tells a value out of range from malformed text.
    static long long bytearrayToLongLong(const char* num, int base, bool* ok,
                                         bool* overflow = nullptr);
    static unsigned long long bytearrayToUnsLongLong(const char* num, int base, bool* ok);
    static double bytearrayToDouble(const char* num, bool* ok, bool* overflow = nullptr);
};

// Integer parsing of the C locale: an optional sign, an optional "0x"/"0X" in base 16 or 0,
// then digits of `base` (0: decided by the prefix; 2 to 36; letters of either case). No white
// space is skipped. *endptr receives the end of what was read (`nptr` itself when there are no
// digits or the base is invalid). Out of range: the nearest limit with *ok false and *endptr
// past all the digits. `endptr` and `ok` may be null.
VY_EXPORT long long vystrtoll(const char* nptr, const char** endptr, int base, bool* ok);
// As vystrtoll; a minus sign is refused like any other non-digit.
VY_EXPORT unsigned long long vystrtoull(const char* nptr, const char** endptr, int base, bool* ok);
// Decimal floating-point text: an optional sign, digits with an optional '.', an optional
// exponent; or "inf", "infinity", "nan" in any case. Correctly rounded (round to nearest even).
// A value beyond the double range gives +-HUGE_VAL with *ok false; one that rounds to 0 gives a
// zero of its sign with *ok true. Nothing read: 0, *ok false, *end = s.
VY_EXPORT double vystrtod(const char* s, const char** end, bool* ok);
// The decimal digits of `d`: mode 0 the shortest digits that read back as `d`, mode 2
// `ndigits` significant digits (at least 1), mode 3 `ndigits` digits after the point (0 when
// negative); any other mode is read as 0. The digits are correctly rounded (ties to even on
// the exact binary value), have no trailing zeros and are returned 0-terminated in a malloc'd
// buffer the caller releases with free(). *decpt receives the position of the decimal point
// relative to the first digit (1 for "1.5", -2 for "0.0015"); a value that rounds to 0 gives
// "0" with *decpt 1. *sign receives the sign bit (1 for -0.0). Infinity and NaN give
// "Infinity" and "NaN" with *decpt 9999. `rve`, when non-null, receives the end of the digits.
VY_EXPORT char* vydtoa(double d, int mode, int ndigits, int* decpt, int* sign, char** rve);

#endif
