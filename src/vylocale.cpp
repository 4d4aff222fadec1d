// VyLocale: the library-wide number symbols, and text to number through the plain byte form
// of the C locale.
#include "vylocale.h"

#include "vyunicode.h"

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

// The byte form of `n` units into `out`, which holds n + 1 bytes: the bytes and a 0. Returns
// false when the text holds no number or garbage follows it.
bool toCLocaleBytes(const VyUcs2* units, int n, char* out)
{
    int i = 0;
    while (i < n && VyUnicode::isSpace(units[i]))
        ++i;
    if (i == n)
        return false;
    int length = 0;
    for (; i < n; ++i) {
        const VyUcs2 u = units[i];
        char c = VyLocale::digitToCLocale(u);
        if (c == 0) {
            if (u == VyLocale::mListSign)
                c = ';';
            else if (u == VyLocale::mPercentSign)
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
        if (!VyUnicode::isSpace(units[i]))
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

// Runs `parse` over the byte form of `text`: on the stack for up to 255 units, else on the
// heap. Returns false when the text is not a number.
template <typename Parse> bool withCLocaleBytes(const VyString& text, int mode, Parse parse)
{
    const VyString trimmed = VyLocale::mGroupSeparator == 0x00A0 ? text.trimmed() : text;
    const int n = trimmed.size();
    char stack[256];
    char* bytes = stack;
    if (n + 1 > int(sizeof stack)) {
        bytes = static_cast<char*>(malloc(size_t(n) + 1));
        if (!bytes)
            throw std::bad_alloc();
    }
    bool good = toCLocaleBytes(trimmed.unicode(), n, bytes) &&
                (mode != VyLocale::AcceptGroupSeparators || removeSeparators(bytes));
    if (good)
        good = parse(bytes);
    if (bytes != stack)
        free(bytes);
    return good;
}

} // namespace

char VyLocale::digitToCLocale(const unsigned short& unit)
{
    const VyUcs2 u = unit;
    if (u >= mZeroDigit && u < mZeroDigit + 10)
        return char('0' + (u - mZeroDigit));
    if (u >= '0' && u <= '9')
        return char(u);
    if (u == mPositiveSign)
        return '+';
    if (u == mNegativeSign)
        return '-';
    if (u == mDecimal)
        return '.';
    if (u == mGroupSeparator)
        return ',';
    if (u == mExponential || u == VyUnicode::toUpper(mExponential))
        return 'e';
    if (u == 0x0020 && mGroupSeparator == 0x00A0)
        return ',';
    return 0;
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
