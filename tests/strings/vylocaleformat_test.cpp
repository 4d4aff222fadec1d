// Numbers to text: integers and doubles with random flags, widths and precisions against C's
// snprintf, the cases C has no conversion for, and the digits of vydtoa.
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

namespace
{

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

} // namespace

TEST(VyLocaleFormat, IntegerFlagsBasesWidthsPrecisionsAgreeWithC)
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

TEST(VyLocaleFormat, IntegerCasesOutsideC)
{
    EXPECT_EQ(U8(ll(-1234, -1, 10, -1, VyLocale::GroupDigits)), "-1,234");
    EXPECT_EQ(U8(ll(1234567, 10, 10, -1, VyLocale::GroupDigits)), "01,234,567"); // separators count
    EXPECT_EQ(U8(ll(255, -1, 16, -1, VyLocale::AlternateForm | VyLocale::UpperCase)), "0xFF");
    EXPECT_EQ(U8(ll(255, -1, 16, -1, 0x141)), "0XFF");
    EXPECT_EQ(U8(ll(5, -1, 2, 8, VyLocale::ShowBase | VyLocale::ZeroPad)), "0b000101");
    EXPECT_EQ(U8(ll(0, -1, 16, -1, VyLocale::AlternateForm)), "0x0"); // unlike C
    EXPECT_EQ(U8(ll(-1, -1, 16, -1, VyLocale::PlusSign)), "ffffffffffffffff");
    EXPECT_EQ(U8(ll(35, -1, 36, -1, VyLocale::UpperCase)), "Z");
    EXPECT_EQ(U8(ll(LLONG_MIN, -1, 10, -1, 0)), "-9223372036854775808");
    EXPECT_EQ(U8(ll(12, -1, 1, -1, 0)), "12"); // an invalid base is 10
    EXPECT_EQ(U8(VyLocale::unsLongLongToString('0', ',', '+', ULLONG_MAX, -1, 10, -1,
                                               VyLocale::PlusSign | VyLocale::GroupDigits)),
              "+18,446,744,073,709,551,615");
}

TEST(VyLocaleFormat, DoublesInTheThreeFormsAgreeWithC)
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

TEST(VyLocaleFormat, DoubleCasesOutsideC)
{
    EXPECT_EQ(U8(dbl(1234567.891, 2, VyLocale::FormDecimal, -1, VyLocale::GroupDigits)),
              "1,234,567.89");
    EXPECT_EQ(U8(dbl(1.5, -1, VyLocale::FormExponent, -1, 0)), "1.500000e+00");
    EXPECT_EQ(U8(dbl(-INFINITY, 3, VyLocale::FormDecimal, 10, VyLocale::ZeroPad)), "-inf");
    EXPECT_EQ(U8(dbl(NAN, 3, VyLocale::FormGeneral, 10, VyLocale::UpperCase | VyLocale::PlusSign)),
              "+NAN");
    EXPECT_EQ(U8(dbl(-0.0, 0, VyLocale::FormDecimal, -1, 0)), "-0");
    EXPECT_EQ(U8(VyLocale::doubleToString(0x0660, '+', '-', 0x0623, 0x066C, 0x066B, 1234.5, 1,
                                          VyLocale::FormDecimal, -1, VyLocale::GroupDigits)),
              "\u0661\u066C\u0662\u0663\u0664\u066B\u0665");

    // The layouts on their own, in combinations no C conversion asks for.
    VyString digits("25");
    EXPECT_EQ(U8(VyLocale::decimalForm('0', '.', ',', digits, 5, 0, VyLocale::TrailingZerosChopped,
                                       true, true)),
              "25,000.");
    digits = VyString("25");
    EXPECT_EQ(U8(VyLocale::exponentForm('0', '.', 'E', '+', '-', digits, -120, 3,
                                        VyLocale::DigitsAfterPoint, false)),
              "2.500E-121");
}

TEST(VyLocaleFormat, DtoaDigitsShortestAndFixed)
{
    const struct {
        double value;
        int mode, ndigits;
        const char* digits;
        int decpt, sign;
    } cases[] = {
        {-1234.5, 0, 0, "12345", 4, 1},
        {0.375, 3, 2, "38", 0, 0}, // ties to even
        {-0.0, 2, 5, "0", 1, 1},
        {9.99, 2, 2, "1", 2, 0},
        {1e23, 0, 0, "1", 24, 0},
        {5e-324, 0, 0, "5", -323, 0},
        {INFINITY, 0, 0, "Infinity", 9999, 0},
        {NAN, 2, 3, "NaN", 9999, 0},
    };
    for (const auto& c : cases) {
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
