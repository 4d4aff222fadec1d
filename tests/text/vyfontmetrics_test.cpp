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
    const VyString s("a");
    {
        VyFontMetrics m(s, kPlain, 3, 2);
        EXPECT_EQ(m.text.d, s.d);
        EXPECT_EQ(a->refCount, 1);
        EXPECT_EQ(std::make_tuple(m.pixelLength, m.lineSpacing, m.letterSpacing, m.maxWidth,
                                  m.fontSize, m.wordWrap, m.boldFace, m.alignment, m.layoutDirty),
                  std::make_tuple(-1, 3, 2, 0, 40, false, false, 0x44, true));
        EXPECT_TRUE(m.textRect.isNull());

        m.divideText();
        m.setAlignment(0x21);
        EXPECT_EQ(std::make_pair(m.alignment, m.layoutDirty), std::make_pair(0x21, false));
        m.setWorpWrap(true);
        EXPECT_EQ(std::make_pair(m.wordWrap, m.layoutDirty), std::make_pair(true, true));

        m.layoutDirty = false;
        m.setTextMinRect(5, 5, 0, 40);
        EXPECT_EQ(std::make_tuple(m.maxWidth, m.textRect.isNull(), m.textOrigin.x, m.layoutDirty),
                  std::make_tuple(0x7fffffff, true, 0, true));
        m.setTextMinRect(10, 20, 100, 30);
        m.setTextMinRect(-3, 7, -1, 0);
        EXPECT_EQ(m.textRect, VyRect(10, 20, 109, 49));
        EXPECT_EQ(std::make_tuple(m.maxWidth, m.textOrigin.x, m.textOrigin.y),
                  std::make_tuple(0x7fffffff, 10, 20));
        // The edges of an absurd box wrap rather than overflow.
        m.setTextMinRect(0x7ffffff0, 0, 0x7ffffff0, 1);
        EXPECT_EQ(m.textRect.x2, int(0xffffffdfu));

        EXPECT_TRUE(VyFontMetrics(s, kBold, 0, 0).boldFace);
        EXPECT_EQ(a->refCount, 1);
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

    VyFontMetrics empty(VyString(), kPlain, 0, 2);
    EXPECT_EQ(empty.lengthForPixel(), -1);
    EXPECT_EQ(std::make_pair(empty.characterWidths.size(), empty.combinationNums.size()),
              std::make_pair(0, 0));

    // Cells summing to 0 leave the length at -1, so every call measures again.
    vyPutGlyph('z', kPlain, 0);
    VyFontMetrics zero(VyString("z"), kPlain, 0, 0);
    for (int call = 0; call < 3; ++call)
        EXPECT_EQ(zero.lengthForPixel(), -1);
    EXPECT_EQ(zero.characterWidths.size(), 3);
    EXPECT_EQ(zero.charCombinationNum().size(), 3);
}

TEST_F(MeasuringTest, ThaiCellsTakeMarkOffsetsFromTheRunningIndex_Kept)
{
    vyPutGlyph(kThaiKo, kPlain, 9);
    vyPutGlyph(kSaraI, kPlain, 0);
    vyPutGlyph(kSaraU, kPlain, 11);
    vyPutGlyph(kMaiEk, kPlain, 12);
    vyPutGlyph('x', kPlain, 20);

    VyFontMetrics vowel(V({kThaiKo, kSaraI}), kPlain, 0, 1);
    EXPECT_EQ(vowel.lengthForPixel(), 9); // -1 + one spacing + 9
    EXPECT_EQ(values(vowel.characterWidth()), (std::vector<int>{9}));
    EXPECT_EQ(values(vowel.charCombinationNum()), (std::vector<int>{2}));

    // Vowel above, then a tone: the tone's glyph is looked up at start + 1 + 2, the 'x'.
    VyFontMetrics above(V({kThaiKo, kSaraI, kMaiEk, u'x'}), kPlain, 0, 0);
    EXPECT_EQ(values(above.characterWidth()), (std::vector<int>{20, 20}));
    EXPECT_EQ(values(above.charCombinationNum()), (std::vector<int>{3, 1}));

    // Vowel below, then a tone: the tone is handled first (at start + 2), then the vowel at
    // 1 + 1, the tone again; the vowel's own advance is never looked at.
    VyFontMetrics below(V({kThaiKo, kSaraU, kMaiEk, u'x'}), kPlain, 0, 0);
    EXPECT_EQ(values(below.characterWidth()), (std::vector<int>{12, 20}));
    EXPECT_EQ(values(below.charCombinationNum()), (std::vector<int>{3, 1}));

    // At the end of the text the tone's reading is past the last glyph and adds nothing: the
    // wider tone does not widen the cell, which still counts all three units.
    VyFontMetrics last(V({kThaiKo, kSaraI, kMaiEk}), kPlain, 0, 1);
    EXPECT_EQ(last.lengthForPixel(), 9); // -1 + one spacing + 9
    EXPECT_EQ(values(last.characterWidth()), (std::vector<int>{9}));
    EXPECT_EQ(values(last.charCombinationNum()), (std::vector<int>{3}));
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
    const GlyphBitmap* a = vyPutGlyph('a', kPlain, 5);
    vyPutGlyph('T', kPlain, 5, 2, 20, 5);
    {
        VyFontMetrics m(VyString("aT"), kPlain, 0, 0);
        EXPECT_EQ(m.textPixelSize(), 34); // 25 * 1.36
        EXPECT_EQ(VyFontMetrics::textPixelSize(VyString("a"), kPlain), 19);
        EXPECT_EQ(a->refCount, 1); // the temporary engine gave its hold back

        // A purge frees the pixels of unheld glyphs only.
        const GlyphBitmap* b = vyPutGlyph('b', kPlain, 5);
        VyFontMetrics::clearFontCache();
        EXPECT_NE(a->buffer, nullptr);
        EXPECT_EQ(b->buffer, nullptr);
    }
    // Glyph holders must be gone before the font file changes.
    VyFontMetrics::setFontFile(VyString(UNIFONT), 1234);
    EXPECT_EQ(VyFontCache::instance()->limit, 1234);
}
