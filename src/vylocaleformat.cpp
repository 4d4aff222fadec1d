// VyLocale: number to text. Integers in bases 2 to 36 and doubles in the exponent, decimal and
// general layouts, built in a unit buffer on the stack and handed over as one string.
#include "vylocale.h"

#include <math.h>
#include <new>
#include <stdlib.h>
#include <string.h>

namespace
{

// A growable run of units with room for 64 on the stack; formatting a number allocates only
// for the result string unless the width or precision asks for more.
class Units
{
public:
    Units() : p_(inline_), size_(0), capacity_(kInline) {}
    ~Units()
    {
        if (p_ != inline_)
            free(p_);
    }
    Units(const Units&) = delete;
    Units& operator=(const Units&) = delete;

    int size() const { return size_; }
    VyUcs2 operator[](int i) const { return p_[i]; }

    void append(VyUcs2 u, long long count = 1) { insert(size_, u, count); }
    void append(const char* ascii)
    {
        while (*ascii)
            append(VyUcs2(static_cast<unsigned char>(*ascii++)));
    }
    // Inserts `count` copies of `u` before position `pos`.
    void insert(int pos, VyUcs2 u, long long count = 1)
    {
        if (count <= 0)
            return;
        reserve(size_ + count);
        memmove(p_ + pos + count, p_ + pos, size_t(size_ - pos) * sizeof(VyUcs2));
        for (VyUcs2 *q = p_ + pos, *e = q + count; q != e; ++q)
            *q = u;
        size_ += int(count);
    }
    void assign(const VyString& s)
    {
        size_ = 0;
        reserve(s.size());
        if (s.size() > 0)
            memcpy(p_, s.unicode(), size_t(s.size()) * sizeof(VyUcs2));
        size_ = s.size();
    }
    VyString toString() const { return VyString(p_, size_); }

private:
    static constexpr int kInline = 64;

    void reserve(long long n)
    {
        if (n <= capacity_)
            return;
        // A string holds at most INT_MAX units; longer text cannot be made.
        if (n > 0x3FFFFFFF)
            throw std::bad_alloc();
        long long capacity = 2 * n;
        if (capacity > 0x3FFFFFFF)
            capacity = n;
        VyUcs2* q = static_cast<VyUcs2*>(malloc(size_t(capacity) * sizeof(VyUcs2)));
        if (!q)
            throw std::bad_alloc();
        memcpy(q, p_, size_t(size_) * sizeof(VyUcs2));
        if (p_ != inline_)
            free(p_);
        p_ = q;
        capacity_ = int(capacity);
    }

    VyUcs2* p_;
    int size_;
    int capacity_;
    VyUcs2 inline_[kInline];
};

void upperCase(Units& t)
{
    t.assign(t.toString().toUpper());
}

bool isZeroPadded(unsigned flags)
{
    return (flags & (VyLocale::ZeroPad | VyLocale::LeftJustify)) == VyLocale::ZeroPad;
}

void appendSign(Units& t, bool negative, VyUcs2 plus, VyUcs2 minus, unsigned flags)
{
    if (negative)
        t.insert(0, minus);
    else if (flags & VyLocale::PlusSign)
        t.insert(0, plus);
    else if (flags & VyLocale::BlankSign)
        t.insert(0, ' ');
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

    char digits[64];
    int n = 0;
    do {
        const int d = int(magnitude % unsigned(base));
        digits[n++] = char(d < 10 ? '0' + d : 'a' + d - 10);
        magnitude /= unsigned(base);
    } while (magnitude);

    Units t;
    const bool localDigits = base == 10 && zero != '0';
    while (n > 0) {
        const char c = digits[--n];
        t.append(localDigits ? VyUcs2(zero + (c - '0')) : VyUcs2(c));
    }
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
void decimalLayout(Units& t, VyUcs2 zero, VyUcs2 decimal, VyUcs2 group, int decpt, int precision,
                   VyLocale::PrecisionMode mode, bool alternate, bool grouping)
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
void exponentLayout(Units& t, VyUcs2 zero, VyUcs2 decimal, VyUcs2 exponential, VyUcs2 plus,
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

void appendDigits(Units& t, const char* digits, VyUcs2 zero)
{
    for (; *digits; ++digits)
        t.append(VyUcs2(zero + (*digits - '0')));
}

} // namespace

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
    Units t;
    bool negative = false;
    if (isinf(value)) {
        t.append("inf");
        negative = value < 0;
    } else if (isnan(value)) {
        t.append("nan");
    } else {
        int decpt;
        int sign;
        const int mode = form == FormDecimal ? 3 : 2;
        const int ndigits = form == FormExponent ? precision + 1 : precision;
        char* digits = vydtoa(value, mode, ndigits, &decpt, &sign, nullptr);
        appendDigits(t, digits, zero);
        free(digits);
        negative = sign != 0;

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
    Units t;
    t.assign(digits);
    decimalLayout(t, zero, decimal, group, decimalPosition, precision, mode, alternate, grouping);
    digits = t.toString();
    return digits;
}

VyString& VyLocale::exponentForm(VyUcs2 zero, VyUcs2 decimal, VyUcs2 exponential, VyUcs2 plus,
                                 VyUcs2 minus, VyString& digits, int decimalPosition, int precision,
                                 PrecisionMode mode, bool alternate)
{
    Units t;
    t.assign(digits);
    exponentLayout(t, zero, decimal, exponential, plus, minus, decimalPosition, precision, mode,
                   alternate);
    digits = t.toString();
    return digits;
}
