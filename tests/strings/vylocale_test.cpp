// Number symbols, the byte form, group separators, integer and double text against C's
// snprintf and a naive base converter, and the byte-level readers at their limits.
#include "vylocale.h"
#include "vyu16.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <random>
#include <string>
#include <vector>

namespace
{

// Restores the library-wide symbols when a test has changed them.
struct SymbolsGuard {
    VyUcs2 saved[8] = {VyLocale::mDecimal,      VyLocale::mGroupSeparator, VyLocale::mNegativeSign,
                       VyLocale::mPositiveSign, VyLocale::mPercentSign,    VyLocale::mZeroDigit,
                       VyLocale::mExponential,  VyLocale::mListSign};
    unsigned short options = VyLocale::mNumberOptions;
    ~SymbolsGuard()
    {
        VyLocale::mDecimal = saved[0];
        VyLocale::mGroupSeparator = saved[1];
        VyLocale::mNegativeSign = saved[2];
        VyLocale::mPositiveSign = saved[3];
        VyLocale::mPercentSign = saved[4];
        VyLocale::mZeroDigit = saved[5];
        VyLocale::mExponential = saved[6];
        VyLocale::mListSign = saved[7];
        VyLocale::mNumberOptions = options;
    }
};

VyString ll(long long v, int precision, int base, int width, unsigned flags)
{
    return VyLocale::longLongToString('0', ',', '+', '-', v, precision, base, width, flags);
}

VyString dbl(double v, int precision, VyLocale::DoubleForm form, int width, unsigned flags)
{
    return VyLocale::doubleToString('0', '+', '-', 'e', ',', '.', v, precision, form, width, flags);
}

// Random printf flags: the library's bits and the matching C format so far ("%" and flags).
std::string randomFlags(std::mt19937_64& rng, unsigned* flags)
{
    const unsigned bits[] = {VyLocale::AlternateForm, VyLocale::ZeroPad, VyLocale::LeftJustify,
                             VyLocale::BlankSign, VyLocale::PlusSign};
    std::string format = "%";
    *flags = 0;
    for (int k = 0; k < 5; ++k) {
        if (rng() % 3 == 0) {
            *flags |= bits[k];
            format += "#0- +"[k];
        }
    }
    return format;
}

// The library never pads with spaces; the caller does, as C would.
std::string padded(std::string s, int width, unsigned flags)
{
    const size_t pad = size_t(std::max(width - int(s.size()), 0));
    return (flags & VyLocale::LeftJustify) ? s + std::string(pad, ' ') : std::string(pad, ' ') + s;
}

std::string cBytes(const char* text, VyLocale::GroupSeparatorMode mode, bool* ok)
{
    VyVector<char> out;
    *ok = VyLocale::numberToCLocale(VyString(text), mode, &out);
    return *ok ? std::string(out.constData()) : std::string();
}

} // namespace

TEST(VyLocale, SymbolsAndDigitsInTheByteForm)
{
    SymbolsGuard guard;
    EXPECT_EQ(std::vector<VyUcs2>(guard.saved, guard.saved + 8),
              (std::vector<VyUcs2>{'.', ',', '-', '+', '%', '0', 'e', ';'})); // the C locale's
    EXPECT_EQ(guard.options, 0);
    const unsigned short cases[][2] = {{'7', '7'}, {'+', '+'}, {'-', '-'}, {'.', '.'}, {',', ','},
                                       {'e', 'e'}, {'E', 'e'}, {' ', 0},   {'x', 0},   {0x0663, 0}};
    for (const auto& c : cases)
        EXPECT_EQ(VyLocale::digitToCLocale(c[0]), char(c[1])) << c[0];
    bool ok;
    EXPECT_EQ(cBytes("\t1E5;%X  ", VyLocale::RejectGroupSeparators, &ok), "1e5;%x");
    for (const char* bad : {"42x!", "", "   ", "4 2", "1\xC3\xA9"}) {
        cBytes(bad, VyLocale::RejectGroupSeparators, &ok);
        EXPECT_FALSE(ok) << bad;
    }
    VyLocale::mZeroDigit = 0x0660; // Arabic-Indic digits; ASCII digits still read
    VyLocale::mGroupSeparator = 0x00A0;
    EXPECT_EQ(VyLocale::digitToCLocale(0x0663), '3');
    EXPECT_EQ(VyLocale::digitToCLocale('9'), '9');
    EXPECT_EQ(VyLocale::digitToCLocale(' '), ',');
    EXPECT_EQ(VyLocale::digitToCLocale(0x00A0), ',');
    EXPECT_EQ(U8(VyString::number(-305)), "-\u0663\u0660\u0665");
    EXPECT_EQ(VyString("\u0664\u0662").toInt(), 42);
    // A no-break space separator: the text is trimmed first, then spaces read as separators.
    EXPECT_EQ(VyLocale::stringToLongLong(VyString("  1 234\u00A0567 "), 10, &ok,
                                         VyLocale::AcceptGroupSeparators),
              1234567);
    EXPECT_TRUE(ok);
}

TEST(VyLocale, GroupSeparatorsAcceptedWhereTheyBelong)
{
    bool ok;
    const char* good[][2] = {{"1,234", "1234"},   {"12,345.5", "12345.5"},  {"-123,456", "-123456"},
                             {"+1,234", "+1234"}, {"1,234,567", "1234567"}, {"1,234e5", "1234e5"}};
    for (const auto& g : good) {
        EXPECT_EQ(cBytes(g[0], VyLocale::AcceptGroupSeparators, &ok), g[1]) << g[0];
        EXPECT_TRUE(ok) << g[0];
    }
    // Only a leading minus is excused where a separator is due, so "+123,456" fails.
    for (const char* bad : {",123", "1,23", "1,2345", "1234,567", "1,", "1,,234", "1.234,5",
                            "1e1,000", "1.2.3", "+123,456", "1,234.5.6"}) {
        cBytes(bad, VyLocale::AcceptGroupSeparators, &ok);
        EXPECT_FALSE(ok) << bad;
    }
    EXPECT_EQ(
        VyLocale::stringToLongLong(VyString("1,234"), 10, &ok, VyLocale::RejectGroupSeparators), 0);
    EXPECT_FALSE(ok);
    VyVector<char> bytes;
    EXPECT_TRUE(VyLocale::removeGroupSeparators(&bytes));
    for (char c : std::string("9,876")) // no terminator: the vector is read whole
        bytes.append(c);
    EXPECT_TRUE(VyLocale::removeGroupSeparators(&bytes));
    EXPECT_STREQ(bytes.constData(), "9876");
}

TEST(VyLocale, ReadersFollowTheByteFormUnderAnySymbols)
{
    // The readers take shortcuts for plain text; whatever the symbols, they must give what the
    // byte form read whole by bytearrayToLongLong gives.
    SymbolsGuard guard;
    std::mt19937 rng(4);
    const VyUcs2 pool[] = {'0', '5', '9', ' ', '\t', '+',    '-',    '.',   ',',
                           'e', 'E', 'x', ';', '%',  0x0660, 0x0665, 0x00A0};
    const int poolSize = int(sizeof pool / sizeof pool[0]);
    VyUcs2* const symbols[] = {&VyLocale::mZeroDigit,      &VyLocale::mPositiveSign,
                               &VyLocale::mNegativeSign,   &VyLocale::mDecimal,
                               &VyLocale::mGroupSeparator, &VyLocale::mExponential};
    for (int round = 0; round < 30000; ++round) {
        if (round % 300 == 299) { // a new symbol set, the C locale's first
            for (VyUcs2* symbol : symbols)
                *symbol = pool[rng() % poolSize];
            VyLocale::mZeroDigit = rng() % 2 ? '0' : 0x0660;
        }
        VyUcs2 units[8];
        const int n = int(rng() % 9);
        for (int i = 0; i < n; ++i)
            units[i] = rng() % 3 ? pool[rng() % 3] : pool[rng() % poolSize];
        const VyString text(units, n);
        const VyString trimmed = VyLocale::mGroupSeparator == 0x00A0 ? text.trimmed() : text;
        VyVector<char> bytes;
        bool expectOk = VyLocale::numberToCLocale(trimmed, VyLocale::RejectGroupSeparators, &bytes);
        const long long expected =
            expectOk ? VyLocale::bytearrayToLongLong(bytes.constData(), 10, &expectOk) : 0;
        bool ok;
        ASSERT_EQ(VyLocale::stringToLongLong(text, 10, &ok, VyLocale::RejectGroupSeparators),
                  expectOk ? expected : 0);
        ASSERT_EQ(ok, expectOk) << round;
        expectOk = !bytes.isEmpty();
        const unsigned long long uexpected =
            expectOk ? VyLocale::bytearrayToUnsLongLong(bytes.constData(), 10, &expectOk) : 0;
        ASSERT_EQ(VyLocale::stringToUnsLongLong(text, 10, &ok, VyLocale::RejectGroupSeparators),
                  expectOk ? uexpected : 0);
        ASSERT_EQ(ok, expectOk) << round;
    }
}

TEST(VyLocale, IntegerFlagsBasesWidthsPrecisionsAgreeWithC)
{
    // C's %d, %o, %x for the flags they share; a non-zero value keeps C's "0x" rules equal.
    std::mt19937_64 rng(5);
    for (int round = 0; round < 20000; ++round) {
        long long v = (long long)rng();
        if (round % 2)
            v %= 100000;
        if (v == 0)
            v = 7;
        const int base = "\x08\x0a\x10"[round % 3];
        const int width = int(rng() % 24);
        const int precision = rng() % 3 == 0 ? int(rng() % 22) : -1;
        unsigned flags;
        std::string format = randomFlags(rng, &flags) + "*";
        if (precision >= 0)
            format += "." + std::to_string(precision);
        format += base == 8 ? "llo" : base == 10 ? "lld" : "llx";
        char expected[128];
        snprintf(expected, sizeof expected, format.c_str(), width, v);
        ASSERT_EQ(padded(U8(ll(v, precision, base, width, flags)), width, flags), expected)
            << format << " " << v;
    }
}

TEST(VyLocale, IntegerCasesOutsideC)
{
    EXPECT_EQ(U8(ll(-1234, -1, 10, -1, VyLocale::GroupDigits)), "-1,234");
    EXPECT_EQ(U8(ll(1234567, 10, 10, -1, VyLocale::GroupDigits)), "01,234,567"); // separators count
    EXPECT_EQ(U8(ll(255, -1, 16, -1, VyLocale::AlternateForm | VyLocale::UpperCase)), "0xFF");
    EXPECT_EQ(U8(ll(255, -1, 16, -1, 0x141)), "0XFF");
    EXPECT_EQ(U8(ll(5, -1, 2, 8, VyLocale::ShowBase | VyLocale::ZeroPad)), "0b000101");
    EXPECT_EQ(U8(ll(42, 5, 10, -1, 0)), "00042");
    EXPECT_EQ(U8(ll(-42, -1, 10, 6, VyLocale::ZeroPad)), "-00042");
    EXPECT_EQ(U8(ll(0, -1, 16, -1, VyLocale::AlternateForm)), "0x0"); // unlike C
    EXPECT_EQ(U8(ll(-1, -1, 16, -1, VyLocale::PlusSign)), "ffffffffffffffff");
    EXPECT_EQ(U8(ll(35, -1, 36, -1, VyLocale::UpperCase)), "Z");
    EXPECT_EQ(U8(ll(LLONG_MIN, -1, 10, -1, 0)), "-9223372036854775808");
    EXPECT_EQ(U8(ll(12, -1, 1, -1, 0)), "12"); // an invalid base is 10
    EXPECT_EQ(U8(VyLocale::unsLongLongToString('0', ',', '+', ULLONG_MAX, -1, 10, -1,
                                               VyLocale::PlusSign | VyLocale::GroupDigits)),
              "+18,446,744,073,709,551,615");
}

TEST(VyLocale, DoublesInTheThreeFormsAgreeWithC)
{
    std::mt19937_64 rng(9);
    const VyLocale::DoubleForm forms[] = {VyLocale::FormExponent, VyLocale::FormDecimal,
                                          VyLocale::FormGeneral};
    for (int round = 0; round < 20000; ++round) {
        double v;
        const uint64_t bits = rng();
        if (round % 3 == 0)
            memcpy(&v, &bits, sizeof v);
        else
            v = std::ldexp(double(int64_t(rng() % 2000001) - 1000000), int(rng() % 60) - 30);
        if (std::isnan(v)) // C writes "-nan" for some
            continue;
        const int form = round % 3;
        const int width = int(rng() % 30);
        const int precision = int(rng() % 19);
        unsigned flags;
        const std::string format =
            randomFlags(rng, &flags) + "*." + std::to_string(precision) + "efg"[form];
        std::string expected(400, '\0');
        expected.resize(size_t(snprintf(&expected[0], expected.size(), format.c_str(), width, v)));
        ASSERT_EQ(padded(U8(dbl(v, precision, forms[form], width, flags)), width, flags), expected)
            << format << " " << v;
    }
}

TEST(VyLocale, DoubleCasesOutsideC)
{
    SymbolsGuard guard;
    EXPECT_EQ(U8(dbl(1234567.891, 2, VyLocale::FormDecimal, -1, VyLocale::GroupDigits)),
              "1,234,567.89");
    EXPECT_EQ(U8(dbl(1.5, -1, VyLocale::FormExponent, -1, 0)), "1.500000e+00");
    EXPECT_EQ(U8(dbl(-INFINITY, 3, VyLocale::FormDecimal, 10, VyLocale::ZeroPad)), "-inf");
    EXPECT_EQ(U8(dbl(NAN, 3, VyLocale::FormGeneral, 10, VyLocale::UpperCase | VyLocale::PlusSign)),
              "+NAN");
    EXPECT_EQ(U8(dbl(-0.0, 0, VyLocale::FormDecimal, -1, 0)), "-0");
    EXPECT_EQ(U8(dbl(1e-300, 1, VyLocale::FormExponent, -1, 0)), "1.0e-300");
    EXPECT_EQ(U8(VyLocale::doubleToString(0x0660, '+', '-', 0x0623, 0x066C, 0x066B, 1234.5, 1,
                                          VyLocale::FormDecimal, -1, VyLocale::GroupDigits)),
              "\u0661\u066C\u0662\u0663\u0664\u066B\u0665");

    VyString digits("25");
    EXPECT_EQ(U8(VyLocale::decimalForm('0', '.', ',', digits, -2, 8, VyLocale::SignificantDigits,
                                       false, false)),
              "0.0025000000");
    digits = VyString("25");
    EXPECT_EQ(U8(VyLocale::decimalForm('0', '.', ',', digits, 5, 0, VyLocale::TrailingZerosChopped,
                                       true, true)),
              "25,000.");
    digits = VyString("25");
    EXPECT_EQ(U8(VyLocale::exponentForm('0', '.', 'E', '+', '-', digits, -120, 3,
                                        VyLocale::DigitsAfterPoint, false)),
              "2.500E-121");
}

TEST(VyLocale, DtoaDigitsShortestAndFixed)
{
    struct Case {
        double value;
        int mode, ndigits;
        const char* digits;
        int decpt, sign;
    } cases[] = {
        {0.1, 0, 0, "1", 0, 0},
        {-1234.5, 0, 0, "12345", 4, 1},
        {0.375, 3, 2, "38", 0, 0}, // ties to even
        {-0.0, 2, 5, "0", 1, 1},
        {9.99, 2, 2, "1", 2, 0},
        {1e23, 0, 0, "1", 24, 0},
        {5e-324, 0, 0, "5", -323, 0},
        {INFINITY, 0, 0, "Infinity", 9999, 0},
        {NAN, 2, 3, "NaN", 9999, 0},
    };
    for (const Case& c : cases) {
        int decpt = -1;
        int sign = -1;
        char* end = nullptr;
        char* digits = vydtoa(c.value, c.mode, c.ndigits, &decpt, &sign, &end);
        EXPECT_STREQ(digits, c.digits) << c.value;
        EXPECT_EQ(decpt, c.decpt) << c.value;
        EXPECT_EQ(sign, c.sign) << c.value;
        EXPECT_EQ(end, digits + strlen(digits));
        free(digits);
    }
}

TEST(VyLocale, StrtodIsCorrectlyRoundedAndBounded)
{
    // glibc's strtod rounds correctly too; compare on random decimal text.
    std::mt19937_64 rng(3);
    for (int round = 0; round < 20000; ++round) {
        std::string text = std::to_string(rng() % 100000000000000000ULL);
        text.insert(rng() % text.size(), ".");
        text += "e" + std::to_string(int(rng() % 640) - 330);
        bool ok;
        const char* end;
        const double value = vystrtod(text.c_str(), &end, &ok);
        const double expected = strtod(text.c_str(), nullptr);
        if (std::isinf(expected)) {
            EXPECT_FALSE(ok) << text;
        } else {
            ASSERT_EQ(value, expected) << text;
            ASSERT_TRUE(ok) << text;
        }
        EXPECT_EQ(end, text.c_str() + text.size());
    }
    bool ok;
    const char* end;
    const double tiny = vystrtod("-1e-400", &end, &ok); // rounds to -0
    EXPECT_TRUE(ok);
    EXPECT_TRUE(tiny == 0.0 && std::signbit(tiny));
    EXPECT_EQ(vystrtod("-1e400x", &end, &ok), -HUGE_VAL);
    EXPECT_FALSE(ok);
    EXPECT_STREQ(end, "x");
    EXPECT_TRUE(std::isnan(vystrtod("NaN", &end, &ok)) && ok);
    for (const char* bad : {"", "+-1", ".", "e5", "x1", " 1"}) {
        EXPECT_EQ(vystrtod(bad, &end, &ok), 0.0);
        EXPECT_FALSE(ok) << bad;
        EXPECT_EQ(end, bad);
    }
    EXPECT_EQ(vystrtod("0x10", &end, &ok), 0.0); // decimal only: reads the 0
    EXPECT_STREQ(end, "x10");
}

TEST(VyLocale, StrtollLimitsBasesAndEnds)
{
    bool ok;
    const char* end;
    EXPECT_EQ(vystrtoll("-9223372036854775808", &end, 10, &ok), LLONG_MIN);
    EXPECT_TRUE(ok);
    EXPECT_EQ(vystrtoll("9223372036854775808", &end, 10, &ok), LLONG_MAX);
    EXPECT_FALSE(ok);
    EXPECT_EQ(*end, 0);
    EXPECT_EQ(vystrtoll("-0x7fZ", &end, 0, &ok), -127);
    EXPECT_TRUE(ok);
    EXPECT_STREQ(end, "Z");
    EXPECT_EQ(vystrtoll("017", &end, 0, &ok) + vystrtoll("0x1F", &end, 16, &ok), 15 + 31);
    EXPECT_EQ(vystrtoll("zz", &end, 36, &ok), 35 * 36 + 35);
    EXPECT_EQ(vystrtoull("18446744073709551616", &end, 10, &ok), ULLONG_MAX);
    EXPECT_FALSE(ok);
    for (const char* bad : {"-1", "", "+", "--1", " 1", "0x"}) {
        vystrtoull(bad, &end, 16, &ok);
        EXPECT_EQ(std::string(end), bad[0] == '0' ? "x" : bad) << bad;
    }
    vystrtoll("12", &end, 37, &ok);
    EXPECT_FALSE(ok);
    bool overflow;
    EXPECT_EQ(VyLocale::bytearrayToLongLong("99999999999999999999", 10, &ok, &overflow), 0);
    EXPECT_TRUE(!ok && overflow);
    EXPECT_EQ(VyLocale::bytearrayToLongLong("12a", 10, &ok, &overflow), 0);
    EXPECT_TRUE(!ok && !overflow);
    EXPECT_EQ(VyLocale::bytearrayToDouble("1e999", &ok, &overflow), 0.0);
    EXPECT_TRUE(!ok && overflow);
}
