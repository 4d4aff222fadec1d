// Line division: the left-to-right pass against a reference written the plain way, the
// rectangles and records of a division, the kept break and widening rules, Thai cells, the
// right-to-left pass with its prepended lines and growing glyph vectors, and the accessors.
#include "layoutfixture.h"

#include <map>
#include <random>
#include <sstream>

namespace
{

using DivisionTest = LayoutTest;
using Lines = std::vector<std::u16string>;
// Advance and bitmap width of each unit.
using Metrics = std::map<char16_t, std::pair<int, int>>;

Lines lineTexts(VyFontMetrics& m)
{
    Lines out;
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
                                       const VyFont& font = kPlain, int lineSpacing = 0)
{
    auto m = std::make_unique<VyFontMetrics>(V(text), font, lineSpacing, ls);
    m->setWorpWrap(width != 0);
    if (width > 0)
        m->setTextMinRect(0, 0, width, 100);
    return m;
}

bool ideographic(char16_t c)
{
    return c == kIdeo1 || c == kIdeo2 || c == kKatakana;
}

// The left-to-right pass written the plain way, for text without Thai: the lines and their
// widths. With wrap, a line closes before an ideograph or a word after a space that does not
// fit, and after an ideograph when the word that follows does not fit (compared without the
// spacing); a newline closes its line, and its advance leaves the width. A bold text widens
// each line by the amount of its break.
std::pair<Lines, std::vector<int>> reference(const std::u16string& t, Metrics& m, int ls, int W,
                                             bool wrap, bool bold)
{
    Lines lines(1);
    std::vector<int> widths;
    int x = 0;
    auto close = [&](int widening) {
        widths.push_back(x + (bold ? widening : 0));
        lines.emplace_back();
        x = 0;
    };
    auto word = [&](size_t i) {
        if (ideographic(t[i]) || t[i] == u'\n')
            return m[t[i]].first + ls;
        int sum = 0;
        for (size_t k = i; k < t.size() && t[k] != u' ' && t[k] != u'\n' && !ideographic(t[k]); ++k)
            sum += m[t[k]].first + ls;
        return sum;
    };
    for (size_t i = 0; i < t.size(); ++i) {
        const int advance = m[t[i]].first;
        const bool ideo = ideographic(t[i]);
        if (wrap && !lines.back().empty() && (ideo || t[i - 1] == u' ') &&
            x + ls + (ideo ? advance : word(i)) > W)
            close(advance / 2);
        lines.back() += t[i];
        x += advance + ls;
        if (wrap && ideo && i + 1 < t.size() && !ideographic(t[i + 1]) && x + word(i + 1) > W)
            close(advance / 2);
        if (t[i] == u'\n') {
            lines.back().pop_back();
            x -= advance;
            close(i > 0 ? m[t[i - 1]].second >> 1 : 0);
        }
    }
    if (!lines.back().empty())
        close(m[t.back()].first / 2);
    lines.pop_back();
    return {lines, widths};
}

} // namespace

// Random texts of words, spaces, ideographs and newlines with random advances, bitmap widths,
// letter and line spacing and box widths, plain and bold.
TEST_F(DivisionTest, RandomTextsMatchTheReference)
{
    std::mt19937 rng(20261121);
    const std::u16string alphabet = {u'a', u'b', u'c', u' ', u'\n', kIdeo1, kIdeo2, kKatakana};
    for (int round = 0; round < 400; ++round) {
        VyFontCache::instance()->clean();
        const bool bold = rng() % 2;
        const VyFont& font = bold ? kBold : kPlain;
        Metrics metrics;
        for (char16_t c : alphabet) {
            metrics[c] = {int(rng() % 20), int(rng() % 24)};
            vyPutGlyph(c, font, metrics[c].first, metrics[c].second);
        }
        std::u16string text;
        for (int i = 0, n = 1 + int(rng() % 60); i < n; ++i) {
            const unsigned pick = rng() % 10;
            text += pick < 5 ? alphabet[pick % 3] : alphabet[3 + pick % 5];
        }
        const int ls = int(rng() % 4), width = int(rng() % 80) - 5, lineSpacing = int(rng() % 3);
        auto m = wrapped(text, width, ls, font, lineSpacing);
        const auto expected = reference(text, metrics, ls, std::max(width, 0), width != 0, bold);
        ASSERT_EQ(lineTexts(*m), expected.first) << "round " << round;
        ASSERT_EQ(widths(*m), expected.second) << "round " << round;
        // Each record holds its line's rectangle and glyphs; the lines stack by the pitch, line
        // height 19 plus the line spacing.
        ASSERT_EQ(m->paintList.size(), int(expected.first.size()));
        for (int i = 0; i < m->paintList.size(); ++i) {
            ASSERT_EQ(m->paintList.at(i).rect, m->lineRectList.at(i));
            ASSERT_EQ(m->paintList.at(i).glyphs, m->lineGlyphs.at(i));
            ASSERT_EQ(m->lineGlyphs.at(i).size(), int(expected.first[size_t(i)].size()));
            const int pitch = 19 + lineSpacing, w = expected.second[size_t(i)];
            ASSERT_EQ(m->lineRectList.at(i), VyRect(0, pitch * i, w - 1, pitch * (i + 1) - 1));
        }
    }
}

// The empty text leaves whatever results there were.
TEST_F(DivisionTest, TheEmptyTextKeepsTheResults)
{
    VyFontMetrics empty(VyString(), kPlain, 0, 0);
    empty.lines.append(VyString("kept"));
    EXPECT_EQ(empty.divideText(), -1);
    EXPECT_EQ(empty.subText().size(), 1);
}

// Without a box every ideograph moves down; hiragana is a letter to the layout. Kept: after an
// ideograph the word is compared without the spacing: 18 + 14 <= 32.
TEST_F(DivisionTest, WrapBreaksBeforeWordsAndAroundIdeographs_Kept)
{
    advances(u"ab", 5);
    advances({kIdeo1, kKatakana, kHangul, 0x3042}, 16);
    EXPECT_EQ(lineTexts(*wrapped({kIdeo1, kKatakana, kHangul}, -1)).size(), 3u);
    EXPECT_EQ(lineTexts(*wrapped({0x3042, 0x3042}, -1)).size(), 1u);
    EXPECT_EQ(lineTexts(*wrapped({kIdeo1, u'a', u'b'}, 32, 2)).size(), 1u);
    EXPECT_EQ(lineTexts(*wrapped({kIdeo1, u'a', u'b'}, 31, 2)), (Lines{{kIdeo1}, u"ab"}));
}

// Bold: a newline widens by half the bitmap width of the unit before it, the last line by
// half the advance of the text's last glyph.
TEST_F(DivisionTest, BoldWidensEachBreakKind_Kept)
{
    for (char16_t c : u"ab\n")
        vyPutGlyph(c, kBold, 5, 9);
    vyPutGlyph('c', kBold, 9, 3);
    EXPECT_EQ(widths(*wrapped(u"ab\nc", 0, 0, kBold)), (std::vector<int>{10 + 4, 9 + 4}));
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
    EXPECT_EQ(widths(*m), (std::vector<int>{25, 10, 35}));
    ASSERT_EQ(m->paintList.size(), 3);
    EXPECT_EQ(std::make_tuple(m->paintList.at(0).glyphs.size(), m->paintList.at(1).glyphs.size(),
                              m->paintList.at(2).glyphs.size()),
              std::make_tuple(1, 4, 8));
    EXPECT_EQ(m->lineGlyphs.at(0).size(), 4);

    // A newline: its advance stays in the width and its glyph leaves the line. The width is
    // read from the mirrored glyphs (gimel's 12 where alef stands), and bold adds the whole
    // advance of the mirrored newline.
    advances({0x05D2}, 12);
    for (const VyFont& f : {kPlain, kBold}) {
        auto nl = wrapped({kAlef, u'\n', 0x05D2}, 0, 1, f);
        EXPECT_EQ(lineTexts(*nl), (Lines{{kAlef}, {0x05D2}}));
        EXPECT_EQ(widths(*nl).at(0), 2 + 12 + 5 + (f.boldFace() ? 5 : 0));
        EXPECT_EQ(std::make_pair(nl->lineGlyphs.at(0).size(), nl->lineGlyphs.at(1).size()),
                  std::make_pair(1, 2));
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

// Kept: a word going on with a Thai cell is measured by nextWordSize, each mark again as a cell
// of its own: "a " (15) and the cell (9, a word of 9 + 5) fit into 26 pixels, the word does not.
TEST_F(DivisionTest, ThaiWordsWrapByTheirMeasuredWidth_Kept)
{
    advances(u"ab ", 5);
    vyPutGlyph(u'a', kPlain, 10);
    vyPutGlyph(kThaiKo, kPlain, 9);
    vyPutGlyph(kSaraI, kPlain, 5);
    EXPECT_EQ(lineTexts(*wrapped({u'a', u' ', kThaiKo, kSaraI}, 29)).size(), 1u);
    EXPECT_EQ(lineTexts(*wrapped({u'a', u' ', kThaiKo, kSaraI}, 26)).size(), 2u);
    // Starting with a letter: 15 + 5 + 14 > 33.
    EXPECT_EQ(lineTexts(*wrapped({u'a', u' ', u'b', kThaiKo, kSaraI}, 34)).size(), 1u);
    EXPECT_EQ(lineTexts(*wrapped({u'a', u' ', u'b', kThaiKo, kSaraI}, 33)).size(), 2u);
}

// Each line's units, rectangle and glyphs, then each record's rectangle and glyphs, as text.
std::string dump(const VyStringList& lines, const VyList<VyRect>& rects,
                 const VyVector<VyVector<GlyphBitmap const*>>& glyphs,
                 const VyVector<PaintInfo>& records)
{
    std::ostringstream out;
    auto put = [&](const VyRect& r, const VyVector<GlyphBitmap const*>& g) {
        out << r.x1 << ',' << r.y1 << ',' << r.x2 << ',' << r.y2;
        for (const GlyphBitmap* glyph : g)
            out << ' ' << glyph;
        out << '\n';
    };
    for (const VyString& s : lines)
        out << U8(s) << '\n';
    for (int i = 0; i < rects.size() || i < glyphs.size(); ++i)
        put(rects.value(i), glyphs.value(i));
    for (const PaintInfo& p : records)
        put(p.rect, p.glyphs);
    return out.str();
}

// One object divided again and again (a new box, wrap turned on or off) gives what a fresh
// object gives, also while copies of its earlier results or of some of their elements are
// held, and the copies keep what they held.
TEST_F(DivisionTest, DividingAgainGivesWhatAFreshObjectGives)
{
    std::mt19937 rng(20261125);
    const std::u16string alphabet = {u'a',      u'b',    u' ',   u' ',  u'\n', kIdeo1,
                                     kKatakana, kThaiKo, kSaraI, kAlef, kBet};
    for (int round = 0; round < 150; ++round) {
        VyFontCache::instance()->clean();
        for (char16_t c : alphabet)
            vyPutGlyph(c, kPlain, int(rng() % 20));
        // One text in four has Hebrew letters, which make it right-to-left.
        const size_t letters = alphabet.size() - (round % 4 ? 2 : 0);
        std::u16string text;
        for (int i = 0, n = 1 + int(rng() % 150); i < n; ++i)
            text += alphabet[rng() % letters];
        const int ls = int(rng() % 4);
        VyFontMetrics m(V(text), kPlain, 0, ls);
        for (int step = 0; step < 4; ++step) {
            VyStringList lines;
            VyList<VyRect> rects;
            VyVector<VyVector<GlyphBitmap const*>> glyphs;
            VyVector<PaintInfo> records;
            if (step % 2) {
                lines = m.lines;
                rects = m.lineRectList;
                glyphs = m.lineGlyphs;
                records = m.paintList;
            } else if (!m.lines.isEmpty()) {
                lines.append(m.lines.at(0));
                glyphs.append(m.lineGlyphs.at(0));
                records.append(m.paintList.at(m.paintList.size() - 1));
            }
            const std::string held = dump(lines, rects, glyphs, records);
            const bool wrap = rng() % 4;
            const int width = 1 + int(rng() % 120);
            VyFontMetrics fresh(V(text), kPlain, 0, ls);
            for (VyFontMetrics* o : {&m, &fresh}) {
                o->setWorpWrap(wrap);
                o->setTextMinRect(0, 0, width, 100);
                o->paintInfoList();
            }
            ASSERT_EQ(dump(m.lines, m.lineRectList, m.lineGlyphs, m.paintList),
                      dump(fresh.lines, fresh.lineRectList, fresh.lineGlyphs, fresh.paintList))
                << "round " << round << " step " << step;
            ASSERT_EQ(dump(lines, rects, glyphs, records), held);
        }
    }
}
