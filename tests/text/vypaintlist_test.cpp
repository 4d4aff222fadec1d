// The paint list: placement by every flag combination in both directions, the flags stored
// back, the bottom edges that move again on every call, and right-to-left records placed with
// the widths of the rectangle list.
#include "layoutfixture.h"

namespace
{

using PaintTest = LayoutTest;

VyRect placed(VyFontMetrics& m, int i)
{
    return m.paintInfoList().at(i).rect;
}

} // namespace

// An empty text keeps flags 0. A fresh object has the null box: nothing to centre in.
TEST_F(PaintTest, EmptyTextAndNullBox_Kept)
{
    advances(u"ab", 10);
    VyFontMetrics empty(VyString(), kPlain, 0, 0);
    empty.setAlignment(0);
    EXPECT_TRUE(empty.paintInfoList().isEmpty());
    EXPECT_EQ(empty.alignment, 0);

    VyFontMetrics fresh(VyString("ab"), kPlain, 0, 0);
    EXPECT_EQ(placed(fresh, 0), VyRect(-10, 0, 9, 9)); // (0 - 20) / 2, 18 + (0 - 18) / 2
}

// Centring truncates (the box leaves odd room both ways). Only the exact flags 0x02, 0x04,
// 0x20 and 0x40 choose right, centre, bottom and vertical centre; any other group places
// left and top, flags 0 are stored back as 0x01 and 0x10, and right-to-left text mirrors
// left and right.
TEST_F(PaintTest, EveryFlagCombinationInBothDirections)
{
    advances(u"ab", 10);
    advances({kAlef, kBet}, 10);
    advances(u"\n", 0);
    const int X = 10, Y = 5, W = 101, H = 62;
    for (bool rtl : {false, true}) {
        const std::u16string text =
            rtl ? std::u16string{kAlef, kAlef, kAlef, u'\n', kBet} : std::u16string(u"aaa\nb");
        for (int h = 0; h < 8; ++h) {
            for (int v = 0; v < 8; ++v) {
                const int flags = h | v << 4 | 0x100; // bit 8 belongs to no group
                VyFontMetrics m(V(text), kPlain, 1, 0);
                m.setTextMinRect(X, Y, W, H);
                m.setAlignment(flags);
                const VyVector<PaintInfo> records = m.paintInfoList();
                ASSERT_EQ(records.size(), 2);
                EXPECT_EQ(m.alignment, flags | (h ? 0 : 1) | (v ? 0 : 0x10));

                // Bottom edges, kept: the last record's bottom goes to Y + H (one below the
                // box) or halfway there; every record moves by the same amount.
                const int lastBottom = 2 * 20 - 1;
                const int dy = v == 2 ? Y + H - lastBottom : v == 4 ? Y + (H - lastBottom) / 2 : Y;
                char side = h == 4 ? 'C' : (h == 2) != rtl ? 'R' : 'L';
                for (int i = 0; i < 2; ++i) {
                    const VyRect& r = records.at(i).rect;
                    const int width = m.lineRectList.at(i).x2 + 1;
                    const int left = side == 'C'   ? X + (W - width) / 2
                                     : side == 'R' ? X + W - width
                                                   : X;
                    EXPECT_EQ(r, VyRect(left, i * 20, left + width - 1, i * 20 + 19 + dy))
                        << "rtl " << rtl << " flags " << flags << " line " << i;
                }
            }
        }
    }
}

TEST_F(PaintTest, BottomEdgesMoveAgainOnEveryCall_Kept)
{
    advances(u"abcd", 10);
    VyFontMetrics m(VyString("abcd"), kPlain, 0, 0);
    m.setTextMinRect(0, 20, 100, 50);
    m.setAlignment(0x11);
    EXPECT_EQ(placed(m, 0).y2, 38);
    EXPECT_EQ(placed(m, 0).y2, 58);
    EXPECT_EQ(placed(m, 0).y1, 0);
    EXPECT_EQ(placed(m, 0).x1, 0); // x is placed afresh each time

    VyFontMetrics c(VyString("abcd"), kPlain, 0, 0);
    c.setTextMinRect(0, 0, 100, 50);
    EXPECT_EQ(placed(c, 0).y2, 34);
    EXPECT_EQ(placed(c, 0).y2, 42); // (50 - 34) / 2 more
    c.setTextMinRect(0, 0, 100, 50);
    EXPECT_EQ(placed(c, 0).y2, 34); // a new division starts over
}

TEST_F(PaintTest, RightToLeftRecordsTakeWidthsByLineNumber_Kept)
{
    advances({kAlef, kBet}, 10);
    advances(u" ", 5);
    // Built as L1 (10 wide), L2 (25), L3 (35); the rectangles are listed L2, L1, L3.
    VyFontMetrics m(V({kAlef, kBet, u' ', kBet, kAlef, u' ', kAlef, kAlef}), kPlain, 0, 0);
    m.setWorpWrap(true);
    m.setTextMinRect(0, 0, 15, 100);
    m.setAlignment(0x11); // left, mirrored to the right edge
    const VyVector<PaintInfo>& records = m.paintInfoList();
    ASSERT_EQ(records.size(), 3);
    EXPECT_EQ(records.at(0).rect, VyRect(15 - 25, 0, 15 - 25 + 9, 18));
    EXPECT_EQ(records.at(1).rect, VyRect(15 - 10, 19, 15 - 10 + 24, 37));
    EXPECT_EQ(records.at(2).rect, VyRect(15 - 35, 38, 15 - 1, 56));
}
