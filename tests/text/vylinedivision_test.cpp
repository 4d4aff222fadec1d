// Line division: newline runs, every wrap break and its bold widening, Thai cells, the
// right-to-left pass with its prepended lines and growing glyph vectors, the accessors, and a
// randomized check of the left-to-right pass against its invariants.
#include "layoutfixture.h"

#include <random>

namespace
{

using DivisionTest = LayoutTest;

std::vector<std::u16string> lineTexts(VyFontMetrics& m)
{
    std::vector<std::u16string> out;
    for (const VyString& s : m.subText())
        out.push_back(U(s));
    return out;
}

std::vector<int> widths(VyFontMetrics& m)
{
    std::vector<int> out;
    for (const VyRect& r : m.lineRects())
        out.push_back(r.x2 - r.x1 + 1);
    return out;
}

// A metrics object over `text` wrapped at `width`: no wrap when width is 0, wrap without a box
// (a width limit of 0) when it is negative.
std::unique_ptr<VyFontMetrics> wrapped(const std::u16string& text, int width, int ls = 0,
                                       const VyFont& font = kPlain)
{
    auto m = std::make_unique<VyFontMetrics>(V(text), font, 0, ls);
    m->setWorpWrap(width != 0);
    if (width > 0)
        m->setTextMinRect(0, 0, width, 100);
    return m;
}

using Lines = std::vector<std::u16string>;

} // namespace

TEST_F(DivisionTest, NewlinesEndLines)
{
    advances(u"abcd", 10);
    advances(u"\n", 6);
    VyFontMetrics m(VyString("ab\ncd"), kPlain, 1, 2);
    EXPECT_EQ(m.divideText(), 0);
    EXPECT_EQ(lineTexts(m), (Lines{u"ab", u"cd"}));
    // The newline's advance leaves the width, its spacing stays; pitch is 19 + 1.
    ASSERT_EQ(m.lineRectList.size(), 2);
    EXPECT_EQ(m.lineRectList.at(0), VyRect(0, 0, 25, 19));
    EXPECT_EQ(m.lineRectList.at(1), VyRect(0, 20, 23, 39));
    ASSERT_EQ(m.paintList.size(), 2);
    ASSERT_EQ(m.lineGlyphs.size(), 2);
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(m.paintList.at(i).rect, m.lineRectList.at(i));
        EXPECT_EQ(m.paintList.at(i).glyphs, m.lineGlyphs.at(i));
        EXPECT_EQ(m.lineGlyphs.at(i).size(), 2);
    }
    EXPECT_EQ(m.lineGlyphs.at(1).at(0)->unicode, 'c');

    EXPECT_EQ(lineTexts(*wrapped(u"ab\n", 0)), (Lines{u"ab"}));
    auto runs = wrapped(u"a\n\n\nb", 0, 2);
    EXPECT_EQ(lineTexts(*runs), (Lines{u"a", u"", u"", u"b"}));
    EXPECT_EQ(widths(*runs), (std::vector<int>{14, 2, 2, 12}));
    EXPECT_EQ(runs->lineRects().last().y1, 3 * 19);

    // The empty text leaves whatever results there were.
    VyFontMetrics empty(VyString(), kPlain, 0, 0);
    empty.lines.append(VyString("kept"));
    EXPECT_EQ(empty.divideText(), -1);
    EXPECT_FALSE(empty.layoutDirty);
    EXPECT_EQ(empty.subText().size(), 1);
    EXPECT_EQ(empty.sizeHint(), VySize(0, 0));
}

TEST_F(DivisionTest, WrapBreaksBeforeWordsAndAroundIdeographs_Kept)
{
    advances(u"abcdefgh", 5);
    advances(u" ", 5);
    advances({kIdeo1, kIdeo2, kKatakana, kHangul}, 16);
    advances({0x3042}, 16); // hiragana: a letter to the layout

    auto words = wrapped(u"aaa bbb ccc", 20);
    EXPECT_EQ(lineTexts(*words), (Lines{u"aaa ", u"bbb ", u"ccc"}));
    EXPECT_EQ(widths(*words), (std::vector<int>{20, 20, 15}));
    EXPECT_EQ(lineTexts(*wrapped(u"abcdefgh", 20)), (Lines{u"abcdefgh"}));
    // Without a box the width is 0: every word after a space and every ideograph moves down.
    EXPECT_EQ(lineTexts(*wrapped(u"ab cd", -1)), (Lines{u"ab ", u"cd"}));
    const std::u16string ideographs = {kIdeo1, kKatakana, kHangul};
    EXPECT_EQ(lineTexts(*wrapped(ideographs, -1)).size(), 3u);
    EXPECT_EQ(lineTexts(*wrapped({0x3042, 0x3042}, -1)).size(), 1u);
    // A break after an ideograph or a space can come before a newline, which then closes an
    // empty line of its own.
    EXPECT_EQ(lineTexts(*wrapped({kIdeo1, u'\n'}, -1)), (Lines{{kIdeo1}, u""}));
    EXPECT_EQ(lineTexts(*wrapped(u"ab \n", -1)), (Lines{u"ab ", u""}));

    // Before a word: the comparison counts the spacing after the space.
    EXPECT_EQ(lineTexts(*wrapped(u"ab cd", 31, 1)).size(), 1u); // 18 + 1 + 12 = 31
    EXPECT_EQ(lineTexts(*wrapped(u"ab cd", 30, 1)).size(), 2u);
    // Before an ideograph: 18 + 18 + 2 + 16 > 40.
    EXPECT_EQ(lineTexts(*wrapped({kIdeo1, kIdeo2, kIdeo1}, 40, 2)),
              (Lines{{kIdeo1, kIdeo2}, {kIdeo1}}));
    // Kept: after an ideograph the word is compared without the spacing: 18 + 14 <= 32.
    EXPECT_EQ(lineTexts(*wrapped({kIdeo1, u'a', u'b'}, 32, 2)).size(), 1u);
    EXPECT_EQ(lineTexts(*wrapped({kIdeo1, u'a', u'b'}, 31, 2)), (Lines{{kIdeo1}, u"ab"}));
}

TEST_F(DivisionTest, BoldWidensEachBreakKind_Kept)
{
    // Advances and bitmap widths differ, so each amount shows which it reads.
    for (const VyFont& f : {kPlain, kBold}) {
        vyPutGlyph(kIdeo1, f, 16, 30);
        vyPutGlyph(kIdeo2, f, 12, 30);
        for (char16_t c : u"ab \n")
            vyPutGlyph(c, f, 5, 9);
        vyPutGlyph('c', f, 9, 3);
    }
    struct Case {
        std::u16string text;
        int width;
        std::vector<int> plain, bold;
    } cases[] = {
        // 1: before an ideograph, half the advance of the unit that moves down.
        {{kIdeo1, kIdeo2}, 20, {16, 12}, {16 + 6, 12 + 6}},
        // 2: after an ideograph, half its own advance.
        {{kIdeo1, u'a', u'b'}, 20, {16, 10}, {16 + 8, 10 + 2}},
        // 3: before a word, half the advance of its first unit.
        {u"ab cd", 15, {15, 14}, {15 + 4, 14 + 2}},
        // 4: at a newline, half the bitmap width of the unit before it, none at the start.
        {u"ab\nc", 0, {10, 9}, {10 + 4, 9 + 4}},
        {u"\nc", 0, {0, 9}, {0, 9 + 4}},
    };
    advances(u"d", 5, 9);
    for (const Case& c : cases) {
        EXPECT_EQ(widths(*wrapped(c.text, c.width)), c.plain);
        EXPECT_EQ(widths(*wrapped(c.text, c.width, 0, kBold)), c.bold);
    }
}

TEST_F(DivisionTest, ThaiCellsCompareAndTakeAtDifferentOffsets_Kept)
{
    // The tone's advance is compared (offset 2 from the consonant), the one after the cell
    // taken (offset 2 from the vowel). When the cell ends the text there is nothing to take
    // and the cell keeps its width.
    auto width = [&](const std::u16string& text, int toneAdvance) {
        VyFontCache::instance()->clean();
        vyPutGlyph(kThaiKo, kPlain, 9);
        vyPutGlyph(kSaraI, kPlain, 0);
        vyPutGlyph(kMaiEk, kPlain, toneAdvance);
        vyPutGlyph('x', kPlain, 20);
        auto m = wrapped(text, 0);
        const std::vector<int> w = widths(*m);
        EXPECT_EQ(m->lineGlyphs.at(0).size(), int(text.size()));
        return w;
    };
    const std::u16string cell = {kThaiKo, kSaraI, kMaiEk};
    EXPECT_EQ(width(cell + u'x', 12), (std::vector<int>{20 + 20}));
    EXPECT_EQ(width(cell + u'x', 5), (std::vector<int>{9 + 20}));
    EXPECT_EQ(width(cell, 12), (std::vector<int>{9}));
}

TEST_F(DivisionTest, RightToLeftLinesArePrependedAndGlyphsAccumulate_Kept)
{
    advances({kAlef, kBet}, 10);
    advances(u" \n", 5);
    // Three words of two letters: breaks before the second and the third word give L1, L2,
    // L3 in build order.
    const std::u16string text = {kAlef, kBet, u' ', kBet, kAlef, u' ', kAlef, kAlef};
    auto m = wrapped(text, 15);
    ASSERT_TRUE(m->isRightToLeft());
    const VyVector<GlyphBitmap const*> g = m->glyphBitmap();
    for (int k = 0; k < 8; ++k)
        ASSERT_EQ(g.at(k)->unicode, text[7 - k]); // visual order is the mirror here
    const std::u16string l1 = text.substr(0, 1), l2 = text.substr(1, 3), l3 = text.substr(4);
    EXPECT_EQ(lineTexts(*m), (Lines{l2, l1, l3}));
    EXPECT_EQ(m->lineRectList.at(0), VyRect(0, 19, 24, 37));
    EXPECT_EQ(m->lineRectList.at(1), VyRect(0, 0, 9, 18));
    EXPECT_EQ(m->lineRectList.at(2), VyRect(0, 38, 34, 56));
    ASSERT_EQ(m->paintList.size(), 3);
    EXPECT_EQ(m->paintList.at(0).rect, VyRect(0, 0, 9, 18));
    EXPECT_EQ(m->paintList.at(1).rect, VyRect(0, 19, 24, 37));
    EXPECT_EQ(m->paintList.at(0).glyphs.size(), 1);
    EXPECT_EQ(m->paintList.at(1).glyphs.size(), 4);
    EXPECT_EQ(m->paintList.at(2).glyphs.size(), 8);
    EXPECT_EQ(m->lineGlyphs.at(0).size(), 4);

    // One line and two lines.
    EXPECT_EQ(widths(*wrapped({kAlef, kBet}, 15)), (std::vector<int>{20}));
    auto two = wrapped({kAlef, kBet, u' ', kAlef, kBet}, 15);
    EXPECT_EQ(lineTexts(*two), (Lines{{kAlef}, {kBet, u' ', kAlef, kBet}}));
    EXPECT_EQ(widths(*two), (std::vector<int>{10, 35}));
    EXPECT_EQ(two->lineRectList.at(1).y1, 19);
    EXPECT_EQ(two->paintList.at(1).glyphs.size(), 5);

    // A newline: its advance stays in the width and its glyph leaves the line; bold adds the
    // whole advance of the mirrored glyph.
    for (const VyFont& f : {kPlain, kBold}) {
        auto nl = wrapped({kAlef, u'\n', kBet}, 0, 1, f);
        const VyVector<GlyphBitmap const*> gn = nl->glyphBitmap();
        EXPECT_EQ(lineTexts(*nl), (Lines{{kAlef}, {kBet}}));
        const int first = 2 + gn.at(2)->advance + gn.at(1)->advance + (f.boldFace() ? 5 : 0);
        EXPECT_EQ(widths(*nl).at(0), first);
        EXPECT_EQ(nl->lineGlyphs.at(0).size(), 1);
        EXPECT_EQ(nl->lineGlyphs.at(1).size(), 2);
    }
}

TEST_F(DivisionTest, AccessorsDivideWhenDirty_Kept)
{
    advances(u"ab ", 10);
    vyPutGlyph('\n', kPlain, 0);
    VyFontMetrics s(VyString("aaa\nbbbbb"), kPlain, 0, 0);
    EXPECT_EQ(s.sizeHint(), VySize(50, 38));

    VyFontMetrics w(VyString("ab ab"), kPlain, 0, 0);
    EXPECT_EQ(w.subGlyphBitmap().size(), 1);
    w.setWorpWrap(true);
    // Kept: glyph lines are only divided while there are none.
    EXPECT_EQ(w.subGlyphBitmap().size(), 1);
    EXPECT_EQ(w.subText().size(), 2);
    EXPECT_EQ(w.subGlyphBitmap().size(), 2);
}

// Random texts of words, spaces, ideographs and newlines with random advances, widths and
// spacing: the lines give back the text less its newlines, no word is split, and every
// rectangle is as wide as its cells plus spacings plus the widening of its break.
TEST_F(DivisionTest, RandomTextsKeepTheirUnitsAndWidths)
{
    std::mt19937 rng(20261121);
    const std::u16string alphabet = {u'a', u'b', u'c', u' ', u'\n', kIdeo1, kIdeo2, kKatakana};
    auto ideo = [](char16_t c) { return c == kIdeo1 || c == kIdeo2 || c == kKatakana; };
    for (int round = 0; round < 300; ++round) {
        VyFontCache::instance()->clean();
        const bool bold = rng() % 2;
        const VyFont& font = bold ? kBold : kPlain;
        std::map<char16_t, std::pair<int, int>> metrics; // advance, bitmap width
        for (char16_t c : alphabet) {
            metrics[c] = {int(rng() % 20), int(rng() % 24)};
            vyPutGlyph(c, font, metrics[c].first, metrics[c].second);
        }
        std::u16string text;
        const int n = 1 + int(rng() % 60);
        // A newline never follows a space or an ideograph here: a wrap break there leaves the
        // newline on an empty line of its own, and the line ends could not be told apart.
        for (int i = 0; i < n; ++i) {
            const unsigned pick = rng() % 10;
            char16_t c = pick < 5 ? alphabet[pick % 3] : alphabet[3 + pick % 5];
            if (c == u'\n' && !text.empty() && (text.back() == u' ' || ideo(text.back())))
                c = u'a';
            text += c;
        }
        const int ls = int(rng() % 4);
        auto m = wrapped(text, int(rng() % 80) - 5, ls, font);
        const Lines lines = lineTexts(*m);
        const std::vector<int> w = widths(*m);
        ASSERT_EQ(lines.size(), w.size());
        ASSERT_EQ(m->paintList.size(), int(lines.size()));
        std::u16string joined, expected;
        for (const auto& l : lines)
            joined += l;
        for (char16_t c : text)
            if (c != u'\n')
                expected += c;
        ASSERT_EQ(joined, expected) << "round " << round;

        std::string where = "text";
        for (char16_t c : text)
            where += " " + std::to_string(int(c));
        where += " lines";
        for (const auto& l : lines)
            where += " " + std::to_string(l.size());
        where += " ls " + std::to_string(ls) + " W " + std::to_string(m->maxWidth);
        size_t pos = 0; // start of line i in text
        for (size_t i = 0; i < lines.size(); ++i) {
            const std::u16string& l = lines[i];
            int cells = 0;
            for (char16_t c : l)
                cells += metrics[c].first + ls;
            const size_t end = pos + l.size();
            const bool newline = end < text.size() && text[end] == u'\n';
            int widening = 0;
            if (newline) {
                cells += ls;
                if (end > 0)
                    widening = metrics[text[end - 1]].second >> 1;
            } else if (i + 1 == lines.size()) {
                widening = metrics[text.back()].first / 2;
            } else {
                const char16_t next = text[end], last = l.back();
                ASSERT_TRUE(ideo(next) || ideo(last) || last == u' ') << "split word: " << where;
                widening = metrics[!ideo(next) && ideo(last) ? last : next].first / 2;
            }
            EXPECT_EQ(w[i], cells + (bold ? widening : 0)) << where << " line " << i;
            pos = end + (newline ? 1 : 0);
        }
    }
}
