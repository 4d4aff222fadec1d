// Number symbols, the byte form of the C locale and group separators. The text readers are
// checked against the C library by the number fuzz target, whose seed inputs ctest replays.
#include "vylocale.h"
#include "vyu16.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace
{

std::string cBytes(const char* text, VyLocale::GroupSeparatorMode mode, bool* ok)
{
    VyVector<char> out;
    *ok = VyLocale::numberToCLocale(VyString(text), mode, &out);
    return *ok ? std::string(out.constData()) : std::string();
}

} // namespace

TEST(VyLocale, SymbolsAndDigitsInTheByteForm)
{
    const std::vector<VyUcs2> symbols = {
        VyLocale::mDecimal,      VyLocale::mGroupSeparator, VyLocale::mNegativeSign,
        VyLocale::mPositiveSign, VyLocale::mPercentSign,    VyLocale::mZeroDigit,
        VyLocale::mExponential,  VyLocale::mListSign,       VyLocale::mNumberOptions};
    EXPECT_EQ(symbols, (std::vector<VyUcs2>{'.', ',', '-', '+', '%', '0', 'e', ';', 0}));
    bool ok;
    EXPECT_EQ(cBytes("\t1E5;%X  ", VyLocale::RejectGroupSeparators, &ok), "1e5;%x");
    VyLocale::mZeroDigit = 0x0660; // Arabic-Indic digits; ASCII digits still read
    VyLocale::mGroupSeparator = 0x00A0;
    EXPECT_EQ(cBytes("\u0663 999", VyLocale::AcceptGroupSeparators, &ok), "3999");
    EXPECT_EQ(VyLocale::digitToCLocale('x'), 0);
    // A no-break space separator: the text is trimmed first, then spaces read as separators.
    EXPECT_EQ(VyLocale::stringToLongLong(VyString("  1 234\u00A0567 "), 10, &ok,
                                         VyLocale::AcceptGroupSeparators),
              1234567);
    EXPECT_TRUE(ok);
    VyLocale::mZeroDigit = '0';
    VyLocale::mGroupSeparator = ',';
}

TEST(VyLocale, GroupSeparatorsAcceptedWhereTheyBelong)
{
    bool ok;
    const char* good[][2] = {{"-123,456.5", "-123456.5"}, {"+1,234,567", "+1234567"}};
    for (const auto& g : good) {
        EXPECT_EQ(cBytes(g[0], VyLocale::AcceptGroupSeparators, &ok), g[1]) << g[0];
        EXPECT_TRUE(ok) << g[0];
    }
    // Only a leading minus is excused where a separator is due, so "+123,456" fails.
    for (const char* bad :
         {",123", "1,23", "1,2345", "1234,567", "1,,234", "1.234,5", "1e1,000", "+123,456"}) {
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
