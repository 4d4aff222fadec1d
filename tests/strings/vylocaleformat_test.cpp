// Numbers to text: the cases C has no conversion for, and the digits of vydtoa.
#include "vylocale.h"
#include "vyu16.h"

#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <string>
#include <tuple>

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

} // namespace

// The writers against C's snprintf on random values, flags, widths and precisions are checked
// through sprintf in vystringprintf_test.cpp; here are the cases C has no conversion for.
TEST(VyLocaleFormat, CasesOutsideC)
{
    EXPECT_EQ(U8(ll(-1234, -1, 10, -1, VyLocale::GroupDigits)), "-1,234");
    EXPECT_EQ(U8(ll(1234567, 10, 10, -1, VyLocale::GroupDigits)), "01,234,567"); // separators count
    EXPECT_EQ(U8(ll(255, -1, 16, -1, 0x141)), "0XFF");
    EXPECT_EQ(U8(ll(5, -1, 2, 8, VyLocale::ShowBase | VyLocale::ZeroPad)), "0b000101");
    EXPECT_EQ(U8(ll(0, -1, 16, -1, VyLocale::AlternateForm)), "0x0"); // unlike C
    EXPECT_EQ(U8(ll(-1, -1, 16, -1, VyLocale::PlusSign)), "ffffffffffffffff");
    EXPECT_EQ(U8(ll(35, -1, 36, -1, VyLocale::UpperCase)), "Z");
    EXPECT_EQ(U8(VyLocale::unsLongLongToString('0', ',', '+', ULLONG_MAX, -1, 10, -1,
                                               VyLocale::PlusSign | VyLocale::GroupDigits)),
              "+18,446,744,073,709,551,615");
    EXPECT_EQ(U8(dbl(1234567.891, 2, VyLocale::FormDecimal, -1, VyLocale::GroupDigits)),
              "1,234,567.89");
    EXPECT_EQ(U8(dbl(-INFINITY, 3, VyLocale::FormDecimal, 10, VyLocale::ZeroPad)), "-inf");
    EXPECT_EQ(U8(dbl(NAN, 3, VyLocale::FormGeneral, 10, VyLocale::UpperCase | VyLocale::PlusSign)),
              "+NAN");
    EXPECT_EQ(U8(dbl(-0.0, 0, VyLocale::FormDecimal, -1, 0)), "-0");
    EXPECT_EQ(U8(VyLocale::doubleToString(0x0660, '+', '-', 0x0623, 0x066C, 0x066B, 1234.5, 1,
                                          VyLocale::FormDecimal, -1, VyLocale::GroupDigits)),
              "\u0661\u066C\u0662\u0663\u0664\u066B\u0665");
}

TEST(VyLocaleFormat, DtoaDigitsShortestAndFixed)
{
    const struct {
        double value;
        int mode, ndigits;
        const char* digits;
        int decpt, sign;
    } cases[] = {{-1234.5, 0, 0, "12345", 4, 1},
                 {0.375, 3, 2, "38", 0, 0}, // ties to even
                 {9.99, 2, 2, "1", 2, 0},
                 {5e-324, 0, 0, "5", -323, 0},
                 {INFINITY, 0, 0, "Infinity", 9999, 0}};
    for (const auto& c : cases) {
        int decpt = -1;
        int sign = -1;
        char* end = nullptr;
        char* digits = vydtoa(c.value, c.mode, c.ndigits, &decpt, &sign, &end);
        EXPECT_EQ(std::make_tuple(std::string(digits), decpt, sign, end - digits),
                  std::make_tuple(std::string(c.digits), c.decpt, c.sign, long(strlen(c.digits))))
            << c.value;
        free(digits);
    }
}
