// Unicode queries: the deliberate exception and the units where a table or mapping slip would
// show first, so that they are checked also where the character database is not installed.
#include "vyunicode.h"

#include <gtest/gtest.h>

namespace
{

int category(unsigned short c)
{
    return VyUnicodeTables::properties(c)->category;
}

// Unicode counts U+0085 (NEXT LINE) as white space; here it is only a control.
TEST(VyUnicode, NextLineIsNotSpace_Kept)
{
    EXPECT_EQ(category(0x0085), VyUnicodeTables::Cc);
    EXPECT_FALSE(VyUnicode::isSpace(0x0085));
}

// The letters and ranges where a table or mapping slip would show first; the sweep in
// vyunicodetables_test.cpp checks the whole plane when the character database is installed.
TEST(VyUnicode, LandmarkUnits)
{
    const struct {
        unsigned short c, upper, lower, fold;
        int category, digit;
        bool space;
    } cases[] = {
        {0x000D, 0x000D, 0x000D, 0x000D, 10, -1, true},
        {0x000E, 0x000E, 0x000E, 0x000E, 10, -1, false},
        {0x00A0, 0x00A0, 0x00A0, 0x00A0, 7, -1, true},
        {0x0041, 0x0041, 0x0061, 0x0061, 15, -1, false},
        {0x0069, 0x0049, 0x0069, 0x0069, 16, -1, false}, // no Turkish rules
        {0x00FF, 0x0178, 0x00FF, 0x00FF, 16, -1, false}, // a jump out of Latin-1
        {0x03C2, 0x03A3, 0x03C2, 0x03C3, 16, -1, false}, // final sigma folds to σ
        {0x01C5, 0x01C4, 0x01C6, 0x01C6, 17, -1, false}, // title case leaves in both ways
        {0x1E9E, 0x1E9E, 0x00DF, 0x00DF, 15, -1, false}, // simple folding only
        // One unit cannot hold "SS", "i̇" or "ἈΙ": the special direction keeps the unit.
        {0x00DF, 0x00DF, 0x00DF, 0x00DF, 16, -1, false},
        {0x0130, 0x0130, 0x0130, 0x0130, 15, -1, false},
        {0x1F88, 0x1F88, 0x1F80, 0x1F80, 17, -1, false},
        // Differences beyond a signed 16-bit reach wrap and still land right.
        {0x0265, 0xA78D, 0x0265, 0x0265, 16, -1, false},
        {0xA78D, 0xA78D, 0x0265, 0x0265, 15, -1, false},
        {0x13A0, 0x13A0, 0xAB70, 0x13A0, 15, -1, false}, // Cherokee folds to upper case
        {0xAB70, 0x13A0, 0xAB70, 0x13A0, 16, -1, false},
        {0x0663, 0x0663, 0x0663, 0x0663, 4, 3, false},
        {0xFF10, 0xFF10, 0xFF10, 0xFF10, 4, 0, false},
        {0x2167, 0x2167, 0x2177, 0x2177, 5, -1, false},
        {0x0378, 0x0378, 0x0378, 0x0378, 14, -1, false},
        {0xD7A3, 0xD7A3, 0xD7A3, 0xD7A3, 19, -1, false}, // a range end
        {0xE000, 0xE000, 0xE000, 0xE000, 13, -1, false},
        {0xFFFF, 0xFFFF, 0xFFFF, 0xFFFF, 14, -1, false},
    };
    for (const auto& e : cases) {
        SCOPED_TRACE(testing::Message() << std::hex << e.c);
        EXPECT_EQ(VyUnicode::toUpper(e.c), e.upper);
        EXPECT_EQ(VyUnicode::toLower(e.c), e.lower);
        EXPECT_EQ(VyUnicode::foldCase(e.c), e.fold);
        EXPECT_EQ(category(e.c), e.category);
        EXPECT_EQ(VyUnicode::digitValue(e.c), e.digit);
        EXPECT_EQ(VyUnicode::isSpace(e.c), e.space);
    }
}

} // namespace
