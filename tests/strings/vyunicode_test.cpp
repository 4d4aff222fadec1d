// Unicode queries: the deliberate exception, and the units where a table or mapping slip would
// show first. The committed tables are compared with what the generator makes from the
// character database by the VyUnicodeTables ctest checks.
#include "vyunicode.h"

#include <gtest/gtest.h>

// Unicode counts U+0085 (NEXT LINE) as white space; here it is only a control.
TEST(VyUnicode, NextLineIsNotSpace_Kept)
{
    EXPECT_EQ(VyUnicodeTables::properties(0x0085)->category, VyUnicodeTables::Cc);
    EXPECT_FALSE(VyUnicode::isSpace(0x0085));
}

TEST(VyUnicode, LandmarkUnits)
{
    const struct {
        unsigned short c, upper, lower, fold;
        int category, digit;
        bool space;
    } cases[] = {
        {0x000D, 0x000D, 0x000D, 0x000D, 10, -1, true},
        {0x000E, 0x000E, 0x000E, 0x000E, 10, -1, false},
        {0x2029, 0x2029, 0x2029, 0x2029, 9, -1, true},
        {0x03C2, 0x03A3, 0x03C2, 0x03C3, 16, -1, false}, // final sigma folds to σ
        {0x01C5, 0x01C4, 0x01C6, 0x01C6, 17, -1, false}, // title case leaves in both ways
        // One unit cannot hold "SS" or "i̇": the special direction keeps the unit.
        {0x00DF, 0x00DF, 0x00DF, 0x00DF, 16, -1, false},
        {0x0130, 0x0130, 0x0130, 0x0130, 15, -1, false},
        // Differences beyond a signed 16-bit reach wrap and still land right.
        {0x0265, 0xA78D, 0x0265, 0x0265, 16, -1, false},
        {0xA78D, 0xA78D, 0x0265, 0x0265, 15, -1, false},
        {0x13A0, 0x13A0, 0xAB70, 0x13A0, 15, -1, false}, // Cherokee folds to upper case
        {0x0663, 0x0663, 0x0663, 0x0663, 4, 3, false},
    };
    for (const auto& e : cases) {
        SCOPED_TRACE(testing::Message() << std::hex << e.c);
        EXPECT_EQ(VyUnicode::toUpper(e.c), e.upper);
        EXPECT_EQ(VyUnicode::toLower(e.c), e.lower);
        EXPECT_EQ(VyUnicode::foldCase(e.c), e.fold);
        EXPECT_EQ(VyUnicodeTables::properties(e.c)->category, e.category);
        EXPECT_EQ(VyUnicode::digitValue(e.c), e.digit);
        EXPECT_EQ(VyUnicode::isSpace(e.c), e.space);
    }
}
