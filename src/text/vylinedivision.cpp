// Line division: the text of a VyFontMetrics broken into lines, with one text, one glyph
// vector, one rectangle and one unaligned paint record per line.
#include "vyfontmetrics.h"

#include "vytextunits.h"

#include <algorithm>
#include <limits.h>

namespace
{

using Glyphs = VyVector<GlyphBitmap const*>;

// Makes `s` hold the n units of `text` from `start`: left alone when it holds them already,
// rewritten in its own buffer when no other string shares it, else cut anew.
void assignUnits(VyString& s, const VyString& text, int start, int n)
{
    const VyUcs2* units = text.unicode() + start;
    if (s.size() == n && std::equal(units, units + n, s.unicode()))
        return;
    if (s.d->ref.load(std::memory_order_acquire) == 1)
        s.replace(0, s.size(), units, n);
    else
        s = text.mid(start, n);
}

bool holds(const Glyphs& v, const GlyphBitmap* const* glyphs, int n)
{
    return v.size() == n && std::equal(glyphs, glyphs + n, v.constData());
}

// Makes `v` hold the n glyphs at `glyphs`, in its own block when no other vector shares it.
void assignGlyphs(Glyphs& v, const GlyphBitmap* const* glyphs, int n)
{
    if (v.isDetached())
        v.resize(n);
    else
        v = Glyphs(n);
    if (n > 0)
        std::copy(glyphs, glyphs + n, v.data());
}

// The line being built and the pen, over a copy of the engine's glyphs. A line's text is
// always a run of consecutive units of the text, from `start` up to the unit being placed, so
// it is cut out in one piece when the line closes instead of growing unit by unit.
//
// Lines are written in build order over what the last division left: line k takes the string,
// rectangle, glyph vector and record of line k before, rewritten in place, and a line that
// comes out as before is left as it is. A new division of the same text (a new box, wrap
// turned on or off) so allocates nothing per line, unless a line outgrows what its string or
// glyph vector holds or a copy shares them (then that line gets new ones). A result list that
// a copy shares is started anew, so writing into it never copies it first.
class LineBuilder
{
public:
    LineBuilder(VyFontMetrics& m, int pitch) : m(m), g(m.engine->glyphs), pitch(pitch)
    {
        if (!m.lines.isDetached())
            m.lines.clear();
        if (!m.lineRectList.isDetached())
            m.lineRectList.clear();
        if (!m.lineGlyphs.isDetached())
            m.lineGlyphs.clear();
        if (!m.paintList.isDetached())
            m.paintList.clear();
    }

    int advance(int i) const { return g.at(i)->advance; }

    // Closes the line of units start to end - 1, `x` pixels wide, with the n glyphs at
    // `glyphs`. `widening` is added to the width of a bold text's rectangle. The next line
    // starts at `next`.
    void close(int end, const GlyphBitmap* const* glyphs, int n, int x, int widening, int next)
    {
        if (m.boldFace)
            x += widening;
        const VyRect rect(0, y, x - 1, y + pitch - 1);
        y += pitch;

        if (count < m.lines.size())
            assignUnits(m.lines[count], m.text, start, end - start);
        else
            m.lines.append(m.text.mid(start, end - start));
        if (count < m.lineRectList.size())
            m.lineRectList[count] = rect;
        else
            m.lineRectList.append(rect);
        if (count < m.lineGlyphs.size()) {
            Glyphs& line = m.lineGlyphs[count];
            if (!holds(line, glyphs, n)) {
                // The record's share of the old glyphs goes first, so they can be rewritten.
                if (count < m.paintList.size())
                    m.paintList[count].glyphs.clear();
                assignGlyphs(line, glyphs, n);
            }
        } else {
            Glyphs line;
            assignGlyphs(line, glyphs, n);
            m.lineGlyphs.append(line);
        }
        const Glyphs& line = m.lineGlyphs.at(count);
        if (count < m.paintList.size()) {
            PaintInfo& record = m.paintList[count];
            record.rect = rect;
            if (!record.glyphs.isSharedWith(line))
                record.glyphs = line;
        } else {
            m.paintList.append(PaintInfo{rect, line});
        }
        ++count;
        start = next;
    }

    // Drops the lines of the last division beyond this one's and puts the first `front` lines
    // (the prepended ones) in reverse order; their paint records keep the build order.
    void finish(int front)
    {
        while (m.lines.size() > count)
            m.lines.removeLast();
        while (m.lineRectList.size() > count)
            m.lineRectList.removeLast();
        m.lineGlyphs.resize(count);
        m.paintList.resize(count);
        if (front < 2)
            return;
        for (int a = 0, b = front - 1; a < b; ++a, --b) {
            m.lines.swap(a, b);
            m.lineRectList.swap(a, b);
        }
        std::reverse(m.lineGlyphs.begin(), m.lineGlyphs.begin() + front);
    }

    // Width of the word that starts (rtl false) or ends (rtl true) at unit i of n.
    int wordSize(int i, int n, bool rtl)
    {
        unsigned short* s = const_cast<unsigned short*>(m.text.unicode()) + i;
        auto** glyphsAt = const_cast<GlyphBitmap const**>(g.constData()) + i;
        return m.nextWordSize(s, n, glyphsAt, rtl);
    }

    VyFontMetrics& m;
    const Glyphs g;
    const int pitch;
    // First unit of the line being built.
    int start = 0;
    int y = 0;

private:
    // Lines written so far.
    int count = 0;
};

// Units that end a run of plain units: spaces, newlines, Thai and ideographic units.
inline bool endsRun(VyUcs2 c)
{
    return vyIsSpace(c) || vyIsNewline(c) || vyIsThai(c) || vyIsIdeographic(c);
}

void divideLeftToRight(VyFontMetrics& m, LineBuilder& b)
{
    const int n = m.text.size();
    // One glyph per unit: the last index is checked once, then the loop reads both arrays
    // directly. Thai marks, whose offsets can point past a cell, are read checked.
    b.g.at(n - 1);
    const VyUcs2* t = m.text.unicode();
    const GlyphBitmap* const* g = b.g.constData();
    const int ls = m.letterSpacing;
    const int W = m.maxWidth;
    const bool wrap = m.wordWrap;
    int x = 0;
    // With word wrap, the word after a space or an ideographic unit (unless it is one itself)
    // is placed before its width is known: `word` is its first unit (-1: none) and `wordX` the
    // pen there. When it ends, it moves to a new line if it does not fit. A word is never
    // split, so moving it then is the same as deciding at its start.
    int word = -1;
    int wordX = 0;
    // Every wrap test compares a pen position the pass reaches (after the ideographic unit or
    // the word that would move down), plus 0 or ls, with W. So while the pen stays at or below
    // `calm` no line breaks, and the units that keep it there (newlines and Thai units aside)
    // are summed like plain units, without looking for words. Without word wrap only newlines
    // and Thai units stop the sum.
    const long long calm = wrap ? (long long)W - std::max(ls, 0) : LLONG_MAX;
    int i = 0;
    while (i < n) {
        if (x <= calm) {
            const int from = i;
            for (; i < n; ++i) {
                const VyUcs2 c = t[i];
                const int a = g[i]->advance + ls;
                if (vyIsNewline(c) || vyIsThai(c) || x + a > calm)
                    break;
                x += a;
            }
            // The last space or ideographic unit summed ended the pending word, which fitted,
            // and started the next one, as below.
            int penAfter = x;
            for (int k = i - 1; wrap && k >= from; --k) {
                if (vyIsSpace(t[k]) || vyIsIdeographic(t[k])) {
                    word = k + 1 < n && !vyIsIdeographic(t[k + 1]) ? k + 1 : -1;
                    wordX = penAfter;
                    break;
                }
                penAfter -= g[k]->advance + ls;
            }
        }
        // With word wrap, the rest of the word the sum stopped in, up to where it ends.
        if (wrap) {
            for (; i < n && !endsRun(t[i]); ++i)
                x += g[i]->advance + ls;
        }
        if (word >= 0) {
            // Ended by a space, an ideographic unit or the end of the text, the word is plain
            // units, all placed. Going on with a Thai cell, or a lone newline, it is measured.
            const bool measured = i < n && (vyIsThai(t[i]) || (i == word && vyIsNewline(t[i])));
            const int w = measured ? b.wordSize(word, n - word, false) : x - wordX;
            const bool afterSpace = vyIsSpace(t[word - 1]);
            // Kept: after an ideographic unit the comparison has no letter spacing, unlike
            // the two others; the framework's CJK line lengths were tuned with it.
            if (wordX + (afterSpace ? ls : 0) + w > W) {
                // Widened by half the advance of the word's first unit after a space, of the
                // ideographic unit otherwise.
                const int widening = g[afterSpace ? word : word - 1]->advance / 2;
                b.close(word, g + b.start, word - b.start, wordX, widening, word);
                x -= wordX;
            }
            word = -1;
        }
        if (i == n)
            break;
        // Word wrap is on unless the unit is a newline or a Thai unit.
        const VyUcs2 c = t[i];
        const int advance = g[i]->advance;
        if (vyIsIdeographic(c) || vyIsSpace(c)) {
            // An ideographic unit that does not fit moves down; a space stays at the end of
            // the line it ends. Either starts a word unless an ideographic unit follows.
            if (vyIsIdeographic(c) && i > b.start && x + ls + advance > W) {
                b.close(i, g + b.start, i - b.start, x, advance / 2, i);
                x = 0;
            }
            x += ls + advance;
            ++i;
            if (i < n && !vyIsIdeographic(t[i])) {
                word = i;
                wordX = x;
            }
        } else if (vyIsNewline(c)) {
            // The newline leaves the line's text and glyphs; its letter spacing stays in the
            // width.
            x += ls;
            b.close(i, g + b.start, i - b.start, x, i > 0 ? int(uint(g[i - 1]->width) >> 1) : 0,
                    i + 1);
            x = 0;
            ++i;
        } else {
            // A Thai cell: the unit and the marks stacked on it.
            int w = advance;
            int e = i;
            int tone = 0, upper = 0, lower = 0;
            VyFontEngine::displayThaiFont(t + i, &tone, &upper, &lower);
            // Kept: each mark is compared at its offset from the consonant but taken at its
            // offset from the running end of the cell. Thai line widths were tuned against
            // this mix. A cell with a vowel above and a tone that ends the text would take the
            // tone's width from past the last glyph; it keeps its width.
            const int marks[3] = {upper, tone, lower};
            for (int mark = 0; mark < 3; ++mark) {
                const int offset = marks[mark];
                if (!offset)
                    continue;
                const int taken = mark == 0 ? i + offset : e + offset;
                if (b.advance(i + offset) > w && taken < b.g.size())
                    w = b.advance(taken);
                e += 1;
            }
            x += ls + w;
            i = e + 1;
        }
    }
    // Kept: a bold text's last line is widened by half the advance of the text's last glyph.
    if (b.start < n)
        b.close(n, g + b.start, n - b.start, x, g[n - 1]->advance / 2, n);
    b.finish(0);
}

// Kept: `text` is in logical order while the glyphs are in visual order, and this pass mixes
// the two indexes (unit j of the text, the advance of glyph k = n - 1 - j). The framework's
// right-to-left widgets were laid out against exactly these lines.
void divideRightToLeft(VyFontMetrics& m, LineBuilder& b)
{
    // Kept: `placed` is never cleared, so every right-to-left line carries all the glyphs
    // placed since the start of the text. The framework's painter draws right-to-left records
    // from their end and depends on this accumulation.
    const VyString& text = m.text;
    const int n = text.size();
    const int ls = m.letterSpacing;
    Glyphs placed;
    placed.reserve(n);
    int front = 0;
    int x = 0;
    for (int j = 0; j < n; ++j) {
        const int k = n - 1 - j;
        if (m.wordWrap && j > b.start && k >= 1 && vyIsSpace(text.at(k - 1)) &&
            x + ls + b.wordSize(j + 1, k - 1, true) > m.maxWidth) {
            b.close(j, placed.constData(), placed.size(), x, b.advance(k), j);
            ++front;
            x = 0;
        }
        placed.append(b.g.at(j));
        x += ls + b.advance(k);
        if (vyIsNewline(text.at(k))) {
            // Kept: the newline's advance stays in the width in this direction, and the unit
            // that leaves the line is the one just placed, whatever it is.
            placed.removeLast();
            b.close(j, placed.constData(), placed.size(), x, b.advance(k), j + 1);
            ++front;
            x = 0;
        }
    }
    // Kept: the last line is appended after the prepended ones, with every glyph placed since
    // the start, and a bold text widens it by half the advance of the last glyph of the whole
    // text.
    if (b.start < n)
        b.close(n, placed.constData(), placed.size(), x, b.advance(n - 1) / 2, n);
    b.finish(front);
}

} // namespace

int VyFontMetrics::divideText()
{
    layoutDirty = false;
    if (text.isEmpty())
        return -1;
    LineBuilder b(*this, engine->height + lineSpacing);
    if (engine->rtl)
        divideRightToLeft(*this, b);
    else
        divideLeftToRight(*this, b);
    return 0;
}

VySize VyFontMetrics::sizeHint()
{
    if (layoutDirty)
        divideText();
    if (lineRectList.isEmpty())
        return VySize(0, 0);
    int width = 0;
    for (const VyRect& r : lineRectList) {
        const int w = r.x2 - r.x1 + 1;
        if (w > width)
            width = w;
    }
    return VySize(width, lineRectList.last().y2 + 1);
}

VyList<VyRect>& VyFontMetrics::lineRects()
{
    if (layoutDirty)
        divideText();
    return lineRectList;
}

VyStringList& VyFontMetrics::subText()
{
    if (layoutDirty)
        divideText();
    return lines;
}

VyVector<VyVector<GlyphBitmap const*>> VyFontMetrics::subGlyphBitmap()
{
    if (lineGlyphs.isEmpty())
        divideText();
    return lineGlyphs;
}
