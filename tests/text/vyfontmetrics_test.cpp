// Text measuring: construction and setters, the cells of calcTextLength (with the total that
// starts from -1 and the Thai offsets taken from the running index), word widths in both
// directions, the UTF-8 accounting and the static forwards to the font cache.
#include "layoutfixture.h"

namespace
{

using MeasuringTest = LayoutTest;

std::vector<int> values(const VyVector<int>& v)
{
    return std::vector<int>(v.constData(), v.constData() + v.size());
}

} // namespace

TEST_F(MeasuringTest, ConstructionSettersAndHolds)
{
    const GlyphBitmap* a = vyPutGlyph('a', kPlain, 7);
    {
        VyFontMetrics m(VyString("a"), kPlain, 3, 2);
        EXPECT_EQ(a->refCount, 1);
        EXPECT_EQ(std::make_tuple(m.pixelLength, m.lineSpacing, m.letterSpacing, m.maxWidth,
                                  m.fontSize, m.wordWrap, m.alignment, m.layoutDirty),
                  std::make_tuple(-1, 3, 2, 0, 40, false, 0x44, true));
        m.divideText();
        m.setAlignment(0x21);
        EXPECT_FALSE(m.layoutDirty);
        m.setWorpWrap(true);
        EXPECT_TRUE(m.layoutDirty);
        m.setTextMinRect(10, 20, 100, 30);
        m.setTextMinRect(-3, 7, -1, 0);
        EXPECT_EQ(m.textRect, VyRect(10, 20, 109, 49));
        EXPECT_EQ(std::make_tuple(m.maxWidth, m.textOrigin.x, m.textOrigin.y),
                  std::make_tuple(0x7fffffff, 10, 20));
    }
    EXPECT_EQ(a->refCount, 0);
}

TEST_F(MeasuringTest, CellsAddUpFromMinusOne_Kept)
{
    vyPutGlyph('a', kPlain, 7);
    vyPutGlyph('b', kPlain, 8);
    VyFontMetrics m(VyString("ab"), kPlain, 0, 2);
    EXPECT_EQ(m.lengthForPixel(), 18); // -1 + (7 + 2) + (8 + 2)
    EXPECT_EQ(values(m.characterWidth()), (std::vector<int>{7, 8}));
    EXPECT_EQ(values(m.charCombinationNum()), (std::vector<int>{1, 1}));
    EXPECT_EQ(m.lengthForPixel(), 18);
    // A direct call appends a second set of cells and adds the whole length again.
    EXPECT_EQ(m.calcTextLength(), 37);
    EXPECT_EQ(values(m.characterWidth()), (std::vector<int>{7, 8, 7, 8}));

    // Cells summing to 0 leave the length at -1, so every call measures again.
    vyPutGlyph('z', kPlain, 0);
    VyFontMetrics zero(VyString("z"), kPlain, 0, 0);
    for (int call = 0; call < 3; ++call)
        EXPECT_EQ(zero.lengthForPixel(), -1);
    EXPECT_EQ(zero.characterWidths.size(), 3);
    EXPECT_EQ(zero.charCombinationNum().size(), 3);
}

// A tone after a vowel above is looked up at start + 1 + 2 (the 'x'); after a vowel below
// it is handled first (at start + 2), then the vowel at 1 + 1, the tone again, and the
// vowel's own advance is never looked at. At the end of the text the tone's reading is past
// the last glyph and adds nothing: the cell keeps its width and counts all three units.
TEST_F(MeasuringTest, ThaiCellsTakeMarkOffsetsFromTheRunningIndex_Kept)
{
    vyPutGlyph(kThaiKo, kPlain, 9);
    vyPutGlyph(kSaraI, kPlain, 0);
    vyPutGlyph(kSaraU, kPlain, 11);
    vyPutGlyph(kMaiEk, kPlain, 12);
    vyPutGlyph('x', kPlain, 20);
    const struct {
        std::u16string text;
        std::vector<int> widths, units;
    } cases[] = {
        {{kThaiKo, kSaraI}, {9}, {2}},
        {{kThaiKo, kSaraI, kMaiEk, u'x'}, {20, 20}, {3, 1}},
        {{kThaiKo, kSaraU, kMaiEk, u'x'}, {12, 20}, {3, 1}},
        {{kThaiKo, kSaraI, kMaiEk}, {9}, {3}},
    };
    for (const auto& c : cases) {
        VyFontMetrics m(V(c.text), kPlain, 0, 1);
        int length = -1;
        for (int w : c.widths)
            length += w + 1;
        EXPECT_EQ(m.lengthForPixel(), length);
        EXPECT_EQ(values(m.characterWidth()), c.widths);
        EXPECT_EQ(values(m.charCombinationNum()), c.units);
    }
}

// Forwards, words are measured by every line division (see the division tests).
TEST_F(MeasuringTest, NextWordSizeInBothDirections_Kept)
{
    advances(u"abcdef", 5);
    advances(u" ", 3);
    advances(u"\n", 7);
    advances({kIdeo1}, 16);
    vyPutGlyph(kThaiKo, kPlain, 9);
    vyPutGlyph(kSaraI, kPlain, 4);
    auto word = [](const std::u16string& s, bool rtl) {
        VyFontMetrics m(V(s), kPlain, 0, 1);
        VyVector<GlyphBitmap const*> g = m.glyphBitmap();
        std::u16string units = s;
        return m.nextWordSize(reinterpret_cast<unsigned short*>(&units[0]), int(s.size()), g.data(),
                              rtl);
    };
    // Backwards only a space ends the word.
    EXPECT_EQ(word(u"abc def", true), 18);
    EXPECT_EQ(word(u"abc ", true), 0);
    EXPECT_EQ(word({u'a', kIdeo1, u'\n', u'b'}, true), 6 + 17 + 8 + 6);
    // Kept: a Thai cell counts its widest member, then each mark again as a cell of its own.
    EXPECT_EQ(word({kThaiKo, kSaraI}, false), 10 + 5);

    VyFontMetrics m(VyString("a"), kPlain, 0, 1);
    EXPECT_EQ(m.nextWordSize(nullptr, 3, nullptr, false), 0);
}

TEST_F(MeasuringTest, Utf8AccountingAndThaiCheck_Kept)
{
    advances(u"a", 1);
    VyFontMetrics m(VyString("a"), kPlain, 0, 0);
    const std::pair<unsigned short, int> sizes[] = {
        {0x0041, 1}, {0x007F, 1}, {0x0080, 2}, {0x07FF, 2}, {0x0800, 3}, {0x0E01, 3},
        {0x0590, 2}, {0x05D0, 2}, {0x06FF, 2}, {0x0700, 2}, {0xFB4F, 3}, {0xFB50, 2},
        {0xFDFF, 2}, {0xFE00, 3}, {0xFE6F, 3}, {0xFE70, 2}, {0xFEFF, 2}, {0xFF00, 3}};
    for (const auto& [c, bytes] : sizes)
        EXPECT_EQ(m.unicodeByteSize(c), bytes) << std::hex << c;

    // Forwarded to the stacking test unless a pointer is null.
    const unsigned short thai[3] = {kThaiKo, kSaraI, 0};
    int tone = 0, upper = 0, lower = 0;
    VyFontMetrics::thaiFontCheck(thai, &tone, nullptr, &lower);
    VyFontMetrics::thaiFontCheck(nullptr, &tone, &upper, &lower);
    EXPECT_EQ(std::make_tuple(tone, upper, lower), std::make_tuple(0, 0, 0));
    VyFontMetrics::thaiFontCheck(thai, &tone, &upper, &lower);
    EXPECT_EQ(std::make_tuple(tone, upper, lower), std::make_tuple(0, 1, 0));
}

TEST_F(MeasuringTest, LineHeightAndCacheForwards)
{
    vyPutGlyph('a', kPlain, 5);
    vyPutGlyph('T', kPlain, 5, 2, 20, 5);
    EXPECT_EQ(VyFontMetrics(VyString("aT"), kPlain, 0, 0).textPixelSize(), 34); // 25 * 1.36
    EXPECT_EQ(VyFontMetrics::textPixelSize(VyString("a"), kPlain), 19);
    VyFontMetrics::setFontFile(VyString(UNIFONT), 1234);
    EXPECT_EQ(VyFontCache::instance()->limit, 1234);
}
