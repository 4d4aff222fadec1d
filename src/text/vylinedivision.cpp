// Line division: the text of a VyFontMetrics broken into lines, with one text, one glyph
// vector, one rectangle and one unaligned paint record per line.
#include "vyfontmetrics.h"

#include "vytextunits.h"

#include <algorithm>

namespace
{

using Glyphs = VyVector<GlyphBitmap const*>;

// The line being built and the pen, over a copy of the engine's glyphs. A line's text is
// always a run of consecutive units of the text, from `start` up to the unit being placed, so
// it is cut out once when the line closes instead of growing unit by unit.
class LineBuilder
{
public:
    LineBuilder(VyFontMetrics& m, int pitch) : m(m), g(m.engine->glyphs), pitch(pitch) {}

    int advance(int i) const { return g.at(i)->advance; }
    // The glyphs start to end - 1, in text order.
    Glyphs range(int end) const
    {
        Glyphs out(end - start);
        std::copy(g.constData() + start, g.constData() + end, out.data());
        return out;
    }

    enum Side { Back, Front };
    // Closes the line of units start to end - 1, `x` pixels wide, with `glyphs`: its text,
    // glyphs and rectangle go to the `side` of the results, its paint record always at the end.
    // `widening` is added to the width of a bold text's rectangle. The next line starts at
    // `next`.
    void close(Side side, int end, const Glyphs& glyphs, int x, int widening, int next)
    {
        const VyString text = m.text.mid(start, end - start);
        if (m.boldFace)
            x += widening;
        const VyRect rect(0, y, x - 1, y + pitch - 1);
        if (side == Front) {
            m.lines.prepend(text);
            m.lineGlyphs.prepend(glyphs);
            m.lineRectList.prepend(rect);
        } else {
            m.lines.append(text);
            m.lineGlyphs.append(glyphs);
            m.lineRectList.append(rect);
        }
        y += pitch;
        m.paintList.append(PaintInfo{rect, glyphs});
        start = next;
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
    // Right to left only: the glyphs placed so far.
    Glyphs placed;
    int y = 0;
};

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
    int e = 0;
    for (int i = 0; i < n; i = e + 1) {
        const VyUcs2 c = t[i];
        const int advance = g[i]->advance;
        if (vyIsIdeographic(c)) {
            if (wrap && i > b.start && x + ls + advance > W) {
                b.close(LineBuilder::Back, i, b.range(i), x, advance / 2, i);
                x = 0;
            }
            x += advance + ls;
            e = i;
            // Kept: no letter spacing in this comparison, unlike the two others; the
            // framework's CJK line lengths were tuned with it.
            if (wrap && i + 1 < n && !vyIsIdeographic(t[i + 1]) &&
                x + b.wordSize(i + 1, n - i - 1, false) > W) {
                b.close(LineBuilder::Back, i + 1, b.range(i + 1), x, advance / 2, i + 1);
                x = 0;
            }
        } else {
            // The space stays at the end of the line it ends.
            if (wrap && i > b.start && vyIsSpace(t[i - 1]) &&
                x + ls + b.wordSize(i, n - i, false) > W) {
                b.close(LineBuilder::Back, i, b.range(i), x, advance / 2, i);
                x = 0;
            }
            int w = advance;
            e = i;
            if (vyIsThai(c)) {
                int tone = 0, upper = 0, lower = 0;
                VyFontEngine::displayThaiFont(t + i, &tone, &upper, &lower);
                // Kept: each mark is compared at its offset from the consonant but taken at
                // its offset from the running end of the cell. Thai line widths were tuned
                // against this mix. A cell with a vowel above and a tone that ends the text
                // would take the tone's width from past the last glyph; it keeps its width.
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
            }
            x += ls + w;
        }
        if (vyIsNewline(t[e])) {
            // The newline leaves the line's text and glyphs; its letter spacing stays in the
            // width.
            x -= g[e]->advance;
            b.close(LineBuilder::Back, e, b.range(e), x,
                    e > 0 ? int(uint(g[e - 1]->width) >> 1) : 0, e + 1);
            x = 0;
        }
    }
    // Kept: a bold text's last line is widened by half the advance of the text's last glyph.
    if (b.start < n)
        b.close(LineBuilder::Back, n, b.range(n), x, g[n - 1]->advance / 2, n);
}

// Kept: `text` is in logical order while the glyphs are in visual order, and this pass mixes
// the two indexes (unit j of the text, the advance of glyph k = n - 1 - j). The framework's
// right-to-left widgets were laid out against exactly these lines.
void divideRightToLeft(VyFontMetrics& m, LineBuilder& b)
{
    // Kept: `b.placed` is never cleared, so every right-to-left line carries all the glyphs
    // placed since the start of the text. The framework's painter draws right-to-left records
    // from their end and depends on this accumulation.
    const VyString& text = m.text;
    const int n = text.size();
    const int ls = m.letterSpacing;
    int x = 0;
    for (int j = 0; j < n; ++j) {
        const int k = n - 1 - j;
        if (m.wordWrap && j > b.start && k >= 1 && vyIsSpace(text.at(k - 1)) &&
            x + ls + b.wordSize(j + 1, k - 1, true) > m.maxWidth) {
            b.close(LineBuilder::Front, j, b.placed, x, b.advance(k), j);
            x = 0;
        }
        b.placed.append(b.g.at(j));
        x += ls + b.advance(k);
        if (vyIsNewline(text.at(k))) {
            // Kept: the newline's advance stays in the width in this direction, and the unit
            // that leaves the line is the one just placed, whatever it is.
            b.placed.removeLast();
            b.close(LineBuilder::Front, j, b.placed, x, b.advance(k), j + 1);
            x = 0;
        }
    }
    // Kept: the last line is appended after the prepended ones, with every glyph placed since
    // the start, and a bold text widens it by half the advance of the last glyph of the whole
    // text.
    if (b.start < n)
        b.close(LineBuilder::Back, n, b.placed, x, b.advance(n - 1) / 2, n);
}

} // namespace

int VyFontMetrics::divideText()
{
    LineBuilder b(*this, engine->height + lineSpacing);
    layoutDirty = false;
    if (text.isEmpty())
        return -1;
    // A new division of the same text (a new box, wrap turned on or off) usually gives about
    // as many lines as the last one: room for that many records from the start.
    const int previousLines = paintList.size();
    lines.clear();
    lineRectList.clear();
    lineGlyphs = VyVector<VyVector<GlyphBitmap const*>>();
    lineGlyphs.reserve(previousLines);
    paintList = VyVector<PaintInfo>();
    paintList.reserve(previousLines);
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
