// Number symbols, the byte form of the C locale, group separators, and the text readers under
// any symbols against the byte form read whole.
#include "vylocale.h"
#include "vyu16.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

namespace
{

// The number symbols a test may change; put back to the C locale's when it ends.
VyUcs2* const numberSymbols[] = {&VyLocale::mZeroDigit,      &VyLocale::mPositiveSign,
                                 &VyLocale::mNegativeSign,   &VyLocale::mDecimal,
                                 &VyLocale::mGroupSeparator, &VyLocale::mExponential};
struct CLocaleSymbolsAfterwards {
    ~CLocaleSymbolsAfterwards()
    {
        for (int i = 0; i < 6; ++i)
            *numberSymbols[i] = VyUcs2("0+-.,e"[i]);
    }
};

std::string cBytes(const char* text, VyLocale::GroupSeparatorMode mode, bool* ok)
{
    VyVector<char> out;
    *ok = VyLocale::numberToCLocale(VyString(text), mode, &out);
    return *ok ? std::string(out.constData()) : std::string();
}

} // namespace

TEST(VyLocale, SymbolsAndDigitsInTheByteForm)
{
    const CLocaleSymbolsAfterwards restore;
    const std::vector<VyUcs2> symbols = {
        VyLocale::mDecimal,      VyLocale::mGroupSeparator, VyLocale::mNegativeSign,
        VyLocale::mPositiveSign, VyLocale::mPercentSign,    VyLocale::mZeroDigit,
        VyLocale::mExponential,  VyLocale::mListSign,       VyLocale::mNumberOptions};
    EXPECT_EQ(symbols, (std::vector<VyUcs2>{'.', ',', '-', '+', '%', '0', 'e', ';', 0}));
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
    // byte form read whole by the byte readers gives.
    const CLocaleSymbolsAfterwards restore;
    std::mt19937 rng(4);
    const VyUcs2 pool[] = {'0', '5', '9', ' ', '\t', '+',    '-',    '.',   ',',
                           'e', 'E', 'x', ';', '%',  0x0660, 0x0665, 0x00A0};
    const int poolSize = int(sizeof pool / sizeof pool[0]);
    for (int round = 0; round < 30000; ++round) {
        if (round % 300 == 299) { // a new set of the number symbols, the C locale's first
            for (VyUcs2* symbol : numberSymbols)
                *symbol = pool[rng() % poolSize];
            VyLocale::mZeroDigit = rng() % 2 ? '0' : 0x0660;
        }
        VyUcs2 units[8];
        const int n = int(rng() % 9);
        for (int i = 0; i < n; ++i)
            units[i] = rng() % 3 ? pool[rng() % 3] : pool[rng() % poolSize];
        const VyString text(units, n);
        const VyString trimmed = VyLocale::mGroupSeparator == 0x00A0 ? text.trimmed() : text;
        const VyLocale::GroupSeparatorMode mode =
            round % 2 ? VyLocale::AcceptGroupSeparators : VyLocale::RejectGroupSeparators;
        VyVector<char> bytes;
        const bool isNumber = VyLocale::numberToCLocale(trimmed, mode, &bytes);
        bool expectOk = isNumber;
        const long long expected =
            isNumber ? VyLocale::bytearrayToLongLong(bytes.constData(), 10, &expectOk) : 0;
        bool ok;
        ASSERT_EQ(VyLocale::stringToLongLong(text, 10, &ok, mode), expectOk ? expected : 0);
        ASSERT_EQ(ok, expectOk) << round;
        expectOk = isNumber;
        const unsigned long long uexpected =
            isNumber ? VyLocale::bytearrayToUnsLongLong(bytes.constData(), 10, &expectOk) : 0;
        ASSERT_EQ(VyLocale::stringToUnsLongLong(text, 10, &ok, mode), expectOk ? uexpected : 0);
        ASSERT_EQ(ok, expectOk) << round;
    }
}

TEST(VyLocale, ByteReadersReportOverflow)
{
    bool ok;
    bool overflow;
    EXPECT_EQ(VyLocale::bytearrayToLongLong("99999999999999999999", 10, &ok, &overflow), 0);
    EXPECT_TRUE(overflow);
    EXPECT_EQ(VyLocale::bytearrayToLongLong("12a", 10, &ok, &overflow), 0);
    EXPECT_FALSE(overflow);
    EXPECT_EQ(VyLocale::bytearrayToDouble("1e999", &ok, &overflow), 0.0);
    EXPECT_TRUE(overflow);
}
