// VyLocale: the library-wide number symbols, and text to number through the plain byte form
// of the C locale.
#include "vylocale.h"

#include "vyunicode.h"

#include <limits.h>
#include <new>
#include <stdlib.h>
#include <string.h>

VyUcs2 VyLocale::mDecimal = '.';
VyUcs2 VyLocale::mGroupSeparator = ',';
VyUcs2 VyLocale::mNegativeSign = '-';
VyUcs2 VyLocale::mPositiveSign = '+';
VyUcs2 VyLocale::mPercentSign = '%';
VyUcs2 VyLocale::mZeroDigit = '0';
VyUcs2 VyLocale::mExponential = 'e';
VyUcs2 VyLocale::mListSign = ';';
unsigned short VyLocale::mNumberOptions = 0;

namespace
{

bool isAsciiDigit(char c)
{
    return c >= '0' && c <= '9';
}

// White space as VyUnicode::isSpace sees it, without a table lookup for ASCII.
bool isSpaceUnit(VyUcs2 u)
{
    if (u < 0x80)
        return u == ' ' || (u >= 0x09 && u <= 0x0D);
    return VyUnicode::isSpace(u);
}

// The symbols read once per conversion, so that mapping a unit is a few compares in registers.
struct Symbols {
    VyUcs2 zero = VyLocale::mZeroDigit;
    VyUcs2 plus = VyLocale::mPositiveSign;
    VyUcs2 minus = VyLocale::mNegativeSign;
    VyUcs2 decimal = VyLocale::mDecimal;
    VyUcs2 group = VyLocale::mGroupSeparator;
    VyUcs2 exponential = VyLocale::mExponential;

    bool isCLocale() const
    {
        return zero == '0' && plus == '+' && minus == '-' && decimal == '.' && group == ',' &&
               exponential == 'e';
    }

    // digitToCLocale with these symbols.
    char map(VyUcs2 u) const
    {
        if (unsigned(u - zero) < 10u)
            return char('0' + (u - zero));
        if (u >= '0' && u <= '9')
            return char(u);
        if (u == plus)
            return '+';
        if (u == minus)
            return '-';
        if (u == decimal)
            return '.';
        if (u == group)
            return ',';
        if (u == 0x0020 && group == 0x00A0)
            return ',';
        // Looked up last: only letters and unknown units get here.
        if (u == exponential || u == VyUnicode::toUpper(exponential))
            return 'e';
        return 0;
    }
};

// The byte form of the ASCII units under the C locale's symbols: digits, signs, point,
// separator, list and percent signs as they are, letters in lower case; 0 ends the number.
constexpr struct CLocaleBytes {
    char byte[128];
    constexpr CLocaleBytes() : byte()
    {
        for (int c = 0; c < 128; ++c) {
            if ((c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || c == '+' || c == '-' ||
                c == '.' || c == ',' || c == ';' || c == '%')
                byte[c] = char(c);
            else if (c >= 'A' && c <= 'Z')
                byte[c] = char(c - 'A' + 'a');
        }
    }
    char operator[](int c) const { return byte[c]; }
} kCLocaleBytes;

// The byte form of `n` units into `out`, which holds n + 1 bytes: the bytes and a 0. Returns
// false when the text holds no number or garbage follows it.
bool toCLocaleBytes(const VyUcs2* units, int n, char* out)
{
    int i = 0;
    while (i < n && isSpaceUnit(units[i]))
        ++i;
    if (i == n)
        return false;
    const Symbols symbols;
    const VyUcs2 list = VyLocale::mListSign;
    const VyUcs2 percent = VyLocale::mPercentSign;
    int length = 0;
    if (symbols.isCLocale() && list == ';' && percent == '%') {
        // The C locale's symbols: one table lookup per unit.
        for (; i < n; ++i) {
            const VyUcs2 u = units[i];
            const char c = u < 0x80 ? kCLocaleBytes[u] : 0;
            if (c == 0)
                break;
            out[length++] = c;
        }
    }
    for (; i < n; ++i) {
        const VyUcs2 u = units[i];
        char c = symbols.map(u);
        if (c == 0) {
            if (u == list)
                c = ';';
            else if (u == percent)
                c = '%';
            else if (u >= 'A' && u <= 'Z')
                c = char(u - 'A' + 'a');
            else if (u >= 'a' && u <= 'z')
                c = char(u);
            else
                break;
        }
        out[length++] = c;
    }
    for (; i < n; ++i) {
        if (!isSpaceUnit(units[i]))
            return false;
    }
    out[length] = 0;
    return true;
}

// removeGroupSeparators over a 0-terminated byte string in place.
bool removeSeparators(char* s)
{
    int length = int(strlen(s));
    if (length == 0)
        return true;
    if (s[0] == ',')
        return false;
    int separators = 0;
    int decimalPosition = -1;
    for (int i = 0; i < length; ++i) {
        const char c = s[i];
        if (c == ',') {
            if (i == length - 1 || !isAsciiDigit(s[i - 1]) || !isAsciiDigit(s[i + 1]))
                return false;
            ++separators;
        } else if (c == '.') {
            if (decimalPosition != -1)
                return false;
            decimalPosition = i;
        } else if (c == 'e' || c == 'E') {
            if (decimalPosition == -1)
                decimalPosition = i;
        }
    }
    if (decimalPosition == -1)
        decimalPosition = length;
    if (separators == 0)
        return true;
    for (int i = 0; i < length && separators > 0;) {
        const int distance = decimalPosition - i;
        if (s[i] == ',') {
            if (distance % 4 != 0 || i > decimalPosition)
                return false;
            memmove(s + i, s + i + 1, size_t(length - i)); // the terminator moves too
            --length;
            --decimalPosition;
            --separators;
            continue;
        }
        // Where a separator is due, only a leading '-' is excused: "+123,456" fails while
        // "-123,456" and "+1,234" pass.
        if (i < decimalPosition && distance % 4 == 0 && !(i == 0 && s[i] == '-'))
            return false;
        ++i;
    }
    return true;
}

// Runs `parse` over the byte form of `n` units: on the stack for up to 255 units, else on
// the heap. Returns false when the text is not a number.
template <typename Parse> bool parseUnits(const VyUcs2* units, int n, int mode, Parse parse)
{
    char stack[256];
    char* bytes = stack;
    if (n + 1 > int(sizeof stack)) {
        bytes = static_cast<char*>(malloc(size_t(n) + 1));
        if (!bytes)
            throw std::bad_alloc();
    }
    bool good = toCLocaleBytes(units, n, bytes) &&
                (mode != VyLocale::AcceptGroupSeparators || removeSeparators(bytes));
    if (good)
        good = parse(bytes);
    if (bytes != stack)
        free(bytes);
    return good;
}

// Plain decimal text read straight from the units: white space, an optional sign, digits,
// white space. Gives the same result as the byte form read by vystrtoll in base 10 without
// group separators; returns false when the text needs that general path (anything else, or a
// magnitude beyond 64 bits), which then decides.
bool readPlainDecimal(const VyUcs2* units, int n, bool* negative, unsigned long long* magnitude)
{
    if (VyLocale::mGroupSeparator == 0x00A0)
        return false;
    int i = 0;
    while (i < n && isSpaceUnit(units[i]))
        ++i;
    const Symbols symbols;
    *negative = false;
    if (i < n) {
        const char c = symbols.map(units[i]);
        if (c == '-' || c == '+') {
            *negative = c == '-';
            ++i;
        }
    }
    const int first = i;
    unsigned long long v = 0;
    for (; i < n; ++i) {
        const char c = symbols.map(units[i]);
        if (c < '0' || c > '9')
            break;
        if (__builtin_mul_overflow(v, 10u, &v) || __builtin_add_overflow(v, unsigned(c - '0'), &v))
            return false;
    }
    if (i == first)
        return false;
    if (i < n) {
        // The number must end at white space that is no symbol; only white space may follow.
        const VyUcs2 u = units[i];
        if (!isSpaceUnit(u) || symbols.map(u) != 0 || u == VyLocale::mListSign ||
            u == VyLocale::mPercentSign)
            return false;
        for (; i < n; ++i) {
            if (!isSpaceUnit(units[i]))
                return false;
        }
    }
    *magnitude = v;
    return true;
}

// parseUnits over the text, trimmed first when the group separator is U+00A0: its byte form
// is the plain space, which would otherwise read as a separator at the ends.
template <typename Parse> bool withCLocaleBytes(const VyString& text, int mode, Parse parse)
{
    if (VyLocale::mGroupSeparator == 0x00A0) {
        const VyString trimmed = text.trimmed();
        return parseUnits(trimmed.unicode(), trimmed.size(), mode, parse);
    }
    return parseUnits(text.unicode(), text.size(), mode, parse);
}

} // namespace

char VyLocale::digitToCLocale(const unsigned short& unit)
{
    return Symbols().map(unit);
}

bool VyLocale::numberToCLocale(const VyString& text, GroupSeparatorMode mode, VyVector<char>* out)
{
    const int n = text.size();
    out->resize(n + 1);
    char* bytes = out->data();
    if (!toCLocaleBytes(text.unicode(), n, bytes)) {
        out->clear();
        return false;
    }
    out->resize(int(strlen(bytes)) + 1);
    return mode == AcceptGroupSeparators ? removeGroupSeparators(out) : true;
}

bool VyLocale::removeGroupSeparators(VyVector<char>* bytes)
{
    if (bytes->isEmpty())
        return true;
    // The string ends at its first 0; a vector without one is read whole.
    if (memchr(bytes->constData(), 0, size_t(bytes->size())) == nullptr)
        bytes->append(0);
    char* s = bytes->data();
    const bool good = removeSeparators(s);
    bytes->resize(int(strlen(s)) + 1);
    return good;
}

long long VyLocale::stringToLongLong(const VyString& text, int base, bool* ok,
                                     GroupSeparatorMode mode)
{
    bool negative;
    unsigned long long magnitude;
    if (base == 10 && mode != AcceptGroupSeparators &&
        readPlainDecimal(text.unicode(), text.size(), &negative, &magnitude) &&
        magnitude <= (negative ? 0ULL - (unsigned long long)LLONG_MIN : LLONG_MAX)) {
        if (ok)
            *ok = true;
        return negative ? (long long)(0ULL - magnitude) : (long long)magnitude;
    }
    long long value = 0;
    const bool good = withCLocaleBytes(text, mode, [&](const char* bytes) {
        bool fine;
        value = bytearrayToLongLong(bytes, base, &fine);
        return fine;
    });
    if (ok)
        *ok = good;
    return good ? value : 0;
}

unsigned long long VyLocale::stringToUnsLongLong(const VyString& text, int base, bool* ok,
                                                 GroupSeparatorMode mode)
{
    bool negative;
    unsigned long long magnitude;
    if (base == 10 && mode != AcceptGroupSeparators &&
        readPlainDecimal(text.unicode(), text.size(), &negative, &magnitude) && !negative) {
        if (ok)
            *ok = true;
        return magnitude;
    }
    unsigned long long value = 0;
    const bool good = withCLocaleBytes(text, mode, [&](const char* bytes) {
        bool fine;
        value = bytearrayToUnsLongLong(bytes, base, &fine);
        return fine;
    });
    if (ok)
        *ok = good;
    return good ? value : 0;
}

double VyLocale::stringToDouble(const VyString& text, bool* ok, GroupSeparatorMode mode)
{
    double value = 0;
    const bool good = withCLocaleBytes(text, mode, [&](const char* bytes) {
        bool fine;
        value = bytearrayToDouble(bytes, &fine);
        return fine;
    });
    if (ok)
        *ok = good;
    return good ? value : 0;
}

long long VyLocale::bytearrayToLongLong(const char* num, int base, bool* ok, bool* overflow)
{
    const char* end;
    bool good;
    const long long value = vystrtoll(num, &end, base, &good);
    const bool consumed = end != num && *end == 0;
    if (overflow)
        *overflow = consumed && !good;
    if (ok)
        *ok = consumed && good;
    return consumed && good ? value : 0;
}

unsigned long long VyLocale::bytearrayToUnsLongLong(const char* num, int base, bool* ok)
{
    const char* end;
    bool good;
    const unsigned long long value = vystrtoull(num, &end, base, &good);
    const bool consumed = end != num && *end == 0;
    if (ok)
        *ok = consumed && good;
    return consumed && good ? value : 0;
}

double VyLocale::bytearrayToDouble(const char* num, bool* ok, bool* overflow)
{
    const char* end;
    bool good;
    const double value = vystrtod(num, &end, &good);
    const bool consumed = end != num && *end == 0;
    if (overflow)
        *overflow = consumed && !good;
    if (ok)
        *ok = consumed && good;
    return consumed && good ? value : 0;
}
