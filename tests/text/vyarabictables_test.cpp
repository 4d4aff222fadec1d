// Arabic tables: every row against the order of Unicode's presentation blocks, the join sets,
// and the kept teh marbuta row.
#include "../../src/text/vyshapingprivate.h"

#include <gtest/gtest.h>

#include <vector>

namespace
{

// Unicode lays the presentation forms out letter after letter: isolated, final, then initial
// and medial for a letter that has them. A letter with two forms shows its isolated form
// where an initial one would stand and its final form for a medial one. In table order:
// final, initial, medial, isolated.
std::vector<int> expectedForms(int base, int count)
{
    if (count == 1)
        return {base, base, base, base};
    if (count == 2)
        return {base + 1, base, base + 1, base};
    return {base + 1, base + 2, base + 3, base};
}

std::vector<int> mainRow(unsigned short c)
{
    const unsigned short* row = vyArabicMainForms[c - vyArabicMainFirst];
    return std::vector<int>(row, row + 4);
}

} // namespace

TEST(VyArabicTables, EveryLetterTakesItsFormsFromThePresentationBlocks)
{
    auto joinsForward = [](unsigned short c) {
        return c == 0x0626 || c == 0x0628 || (c >= 0x062A && c <= 0x062E) ||
               (c >= 0x0633 && c <= 0x063A) || (c >= 0x0641 && c <= 0x0647) || c == 0x064A;
    };
    int base = 0xFE80;
    for (unsigned short c = vyArabicMainFirst; c <= vyArabicMainLast; ++c) {
        const bool formless = c >= 0x063B && c <= 0x0640; // no forms, no joining
        EXPECT_EQ(joinsNext(c), joinsForward(c)) << std::hex << c;
        EXPECT_EQ(joinsPrevious(c), c != 0x0621 && !formless) << std::hex << c;
        if (formless) {
            EXPECT_EQ(mainRow(c), expectedForms(c, 1)) << std::hex << c;
            continue;
        }
        const int count = c == 0x0621 ? 1 : joinsForward(c) ? 4 : 2;
        if (c != 0x0629) { // teh marbuta: see the _Kept test
            EXPECT_EQ(mainRow(c), expectedForms(base, count)) << std::hex << c;
        }
        base += count;
    }
    EXPECT_EQ(base, 0xFEF5); // where the lam-alef ligatures start
    // All six join both ways; jeh has two forms only.
    const int extended[6][3] = {{0x067E, 0xFB56, 4}, {0x0686, 0xFB7A, 4}, {0x0698, 0xFB8A, 2},
                                {0x06A9, 0xFB8E, 4}, {0x06AF, 0xFB92, 4}, {0x06CC, 0xFBFC, 4}};
    for (int i = 0; i < 6; ++i) {
        const unsigned short* row = vyArabicExtendedForms[i];
        EXPECT_EQ(row[0], extended[i][0]);
        EXPECT_EQ(std::vector<int>(row + 1, row + 5),
                  expectedForms(extended[i][1], extended[i][2]));
        EXPECT_TRUE(joinsNext(row[0]));
        EXPECT_TRUE(joinsPrevious(row[0]));
    }
    const int alefs[4] = {0x0622, 0x0623, 0x0625, 0x0627};
    for (int i = 0; i < 4; ++i)
        EXPECT_EQ(std::vector<int>(vyLamAlefForms[i], vyLamAlefForms[i] + 3),
                  std::vector<int>({alefs[i], 0xFEF5 + 2 * i, 0xFEF6 + 2 * i}));
}

TEST(VyArabicTables, TehMarbutaTakesItsIsolatedFormBeforeAJoiningLetter_Kept)
{
    EXPECT_EQ(mainRow(0x0629), std::vector<int>({0xFE94, 0xFE93, 0xFE93, 0xFE93}));
}
