// Fuzzes the number readers and writers.
//
// Input: one control byte, then text. The control byte picks the base (0 or 2 to 36), whether
// the text is UTF-8 or raw UTF-16 units, and whether group separators are accepted. Checks:
// - every reader fails with 0, or succeeds with a value that number() writes and the reader
//   reads back unchanged (doubles through 'g' with 17 digits, bit for bit);
// - on plain ASCII text the integer and double readers agree with the C library's strtoll,
//   strtoull and strtod (the process runs in the C locale);
// - the first eight text bytes as a double, written in each form with flags, width and
//   precision from the control byte, agree with snprintf.
// The byte-level readers run on the raw bytes too, which must never read past their end.
#include "vylocale.h"
#include "vystring.h"

#include <errno.h>
#include <math.h>
#include <stddef.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <string>

namespace
{

void check(bool condition, const char* what)
{
    if (!condition) {
        fprintf(stderr, "fuzz_numbers: %s\n", what);
        abort();
    }
}

std::string utf8(const VyString& s)
{
    return std::string(s.toUtf8().constData());
}

bool plainAscii(const std::string& s)
{
    for (unsigned char c : s)
        if (c == 0 || c >= 0x80 || c == '(' || c == 'x' || c == 'X' || c == ',')
            return false;
    return true;
}

// C's reading of the whole text: leading and trailing white space only, nothing else left.
std::string trimmedAscii(const std::string& s)
{
    size_t b = 0;
    size_t e = s.size();
    while (b < e && (s[b] == ' ' || (s[b] >= '\t' && s[b] <= '\r')))
        ++b;
    while (e > b && (s[e - 1] == ' ' || (s[e - 1] >= '\t' && s[e - 1] <= '\r')))
        --e;
    return s.substr(b, e - b);
}

void checkIntegers(const VyString& text, int base, VyLocale::GroupSeparatorMode mode)
{
    bool ok;
    const long long s = VyLocale::stringToLongLong(text, base, &ok, mode);
    check(ok || s == 0, "failed signed read is not 0");
    if (ok && base >= 2) {
        bool back;
        check(VyString::number(s, base).toLongLong(&back, base) == s || (s < 0 && base != 10),
              "signed round trip");
    }
    const unsigned long long u = VyLocale::stringToUnsLongLong(text, base, &ok, mode);
    check(ok || u == 0, "failed unsigned read is not 0");
    if (ok && base >= 2) {
        bool back;
        check(VyString::number(u, base).toULongLong(&back, base) == u && back,
              "unsigned round trip");
    }
    const int i = text.toInt(&ok, base);
    check(ok || i == 0, "failed int read is not 0");
    const unsigned short us = text.toUShort(&ok, base);
    check(ok || us == 0, "failed ushort read is not 0");
}

void checkAgainstC(const std::string& ascii, int base)
{
    const VyString text(ascii.c_str());
    const std::string t = trimmedAscii(ascii);
    const bool digitsStart = !t.empty();

    bool ok;
    const long long s = text.toLongLong(&ok, base);
    char* end;
    errno = 0;
    const long long cs = strtoll(t.c_str(), &end, base);
    const bool cOk = digitsStart && *end == 0 && end != t.c_str() && errno == 0;
    check(ok == cOk && (!ok || s == cs), "toLongLong differs from strtoll");

    if (t.find('-') == std::string::npos) {
        const unsigned long long u = text.toULongLong(&ok, base);
        errno = 0;
        const unsigned long long cu = strtoull(t.c_str(), &end, base);
        const bool cuOk = digitsStart && *end == 0 && end != t.c_str() && errno == 0;
        check(ok == cuOk && (!ok || u == cu), "toULongLong differs from strtoull");
    }

    const double d = text.toDouble(&ok);
    errno = 0;
    const double cd = strtod(t.c_str(), &end);
    const bool cdOk =
        digitsStart && *end == 0 && end != t.c_str() && !(errno == ERANGE && isinf(cd));
    check(ok == cdOk, "toDouble success differs from strtod");
    if (ok)
        check((isnan(d) && isnan(cd)) || memcmp(&d, &cd, sizeof d) == 0,
              "toDouble value differs from strtod");
}

void checkDoubleRead(const VyString& text)
{
    bool ok;
    const double d = text.toDouble(&ok);
    check(ok || d == 0, "failed double read is not 0");
    if (ok && !isnan(d)) {
        const double back = VyString::number(d, 'g', 17).toDouble(&ok);
        check(ok && memcmp(&back, &d, sizeof d) == 0, "double round trip");
    }
    const float f = text.toFloat(&ok);
    check(ok || f == 0, "failed float read is not 0");
}

void checkDoubleText(double value, unsigned control)
{
    if (isnan(value))
        return; // C writes "-nan" for a NaN with its sign bit set
    static const unsigned flagBits[] = {VyLocale::AlternateForm, VyLocale::ZeroPad,
                                        VyLocale::LeftJustify, VyLocale::BlankSign,
                                        VyLocale::PlusSign};
    const VyLocale::DoubleForm forms[] = {VyLocale::FormExponent, VyLocale::FormDecimal,
                                          VyLocale::FormGeneral};
    unsigned flags = 0;
    std::string format = "%";
    for (int k = 0; k < 5; ++k) {
        if (control & (1u << k)) {
            flags |= flagBits[k];
            format += "#0- +"[k];
        }
    }
    const int precision = int((control >> 5) % 40);
    const int width = int((control >> 11) % 40);
    format += "*.*";
    for (int form = 0; form < 3; ++form) {
        const std::string f = format + "efg"[form];
        const int n = snprintf(nullptr, 0, f.c_str(), width, precision, value);
        std::string expected(size_t(n) + 1, '\0');
        snprintf(&expected[0], expected.size(), f.c_str(), width, precision, value);
        expected.resize(size_t(n));
        std::string got = utf8(VyLocale::doubleToString('0', '+', '-', 'e', ',', '.', value,
                                                        precision, forms[form], width, flags));
        const int pad = width - int(got.size());
        if (pad > 0)
            got = (flags & VyLocale::LeftJustify) ? got + std::string(size_t(pad), ' ')
                                                  : std::string(size_t(pad), ' ') + got;
        check(got == expected, "doubleToString differs from snprintf");
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    if (size < 1 || size > 4096)
        return 0;
    const unsigned control = data[0];
    const int pick = int(control % 37);
    const int base = pick == 1 ? 10 : pick; // 0 reads the base from the prefix
    const bool units = control & 0x40;
    const VyLocale::GroupSeparatorMode mode =
        control & 0x80 ? VyLocale::AcceptGroupSeparators : VyLocale::RejectGroupSeparators;
    const std::string bytes(reinterpret_cast<const char*>(data + 1), size - 1);

    VyString text;
    if (units) {
        std::u16string u((size - 1) / 2, u'\0');
        memcpy(&u[0], data + 1, u.size() * 2);
        text = VyString(reinterpret_cast<const VyUcs2*>(u.data()), int(u.size()));
    } else {
        text = VyString(bytes.c_str(), int(bytes.size()));
    }
    checkIntegers(text, base, mode);
    checkDoubleRead(text);
    if (!units && plainAscii(bytes))
        checkAgainstC(bytes, base);

    // The byte-level readers on the raw bytes (a copy, so ASan sees its end).
    const std::string raw(bytes.c_str());
    const char* end;
    bool ok;
    vystrtoll(raw.c_str(), &end, base, &ok);
    check(end >= raw.c_str() && end <= raw.c_str() + raw.size(), "strtoll end outside");
    vystrtoull(raw.c_str(), &end, base, &ok);
    vystrtod(raw.c_str(), &end, &ok);
    check(end >= raw.c_str() && end <= raw.c_str() + raw.size(), "strtod end outside");

    if (size >= 11) {
        double value;
        memcpy(&value, data + 1, sizeof value);
        checkDoubleText(value, unsigned(data[9]) | unsigned(data[10]) << 8);
    }
    return 0;
}
