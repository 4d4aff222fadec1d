// Line division: the text of a VyFontMetrics broken into lines, with one text, one glyph
// vector, one rectangle and one unaligned paint record per line.
#include "vyfontmetrics.h"

#include "vytextunits.h"

namespace
{

// The line being built and the pen, over a copy of the engine's glyphs.
class LineBuilder
{
public:
    LineBuilder(VyFontMetrics& m, int pitch) : m(m), g(m.engine->glyphs), pitch(pitch) {}

    int advance(int i) const { return g.at(i)->advance; }
    // Unit i of the text and glyph k of the engine onto the line; `x` is left to the caller.
    void place(int i, int k)
    {
        text.insert(text.size(), m.text.at(i));
        glyphs.append(g.at(k));
    }
    // Removes the newline just placed from the line text and the line glyphs.
    void dropNewline()
    {
        text.chop(1);
        glyphs.removeLast();
    }

    // Closes the line at the end of the results; `widening` is added to the width of a bold
    // text's rectangle.
    void closeAppended(int widening)
    {
        m.lines.append(text);
        m.lineGlyphs.append(glyphs);
        if (m.boldFace)
            x += widening;
        m.lineRectList.append(VyRect(0, y, x - 1, y + pitch - 1));
        y += pitch;
        m.paintList.append(PaintInfo{m.lineRectList.last(), glyphs});
        text.clear();
        glyphs = VyVector<GlyphBitmap const*>();
        x = 0;
    }
    // Closes the line at the front of the texts, glyphs and rectangles, while its paint record
    // goes at the end.
    void closePrepended(int widening)
    {
        m.lines.prepend(text);
        m.lineGlyphs.prepend(glyphs);
        if (m.boldFace)
            x += widening;
        m.lineRectList.prepend(VyRect(0, y, x - 1, y + pitch - 1));
        y += pitch;
        m.paintList.append(PaintInfo{m.lineRectList.first(), glyphs});
        text.clear();
        // Kept: the line glyphs are not cleared, so every right-to-left line carries all the
        // glyphs placed since the start of the text. The framework's painter draws
        // right-to-left records from their end and depends on this accumulation.
        x = 0;
    }

    // Width of the word that starts (rtl false) or ends (rtl true) at unit i of n.
    int wordSize(int i, int n, bool rtl)
    {
        unsigned short* s = const_cast<unsigned short*>(m.text.unicode()) + i;
        auto** glyphsAt = const_cast<GlyphBitmap const**>(g.constData()) + i;
        return m.nextWordSize(s, n, glyphsAt, rtl);
    }

    VyFontMetrics& m;
    const VyVector<GlyphBitmap const*> g;
    const int pitch;
    VyString text;
    VyVector<GlyphBitmap const*> glyphs;
    int x = 0;
    int y = 0;
};

void divideLeftToRight(VyFontMetrics& m, LineBuilder& b)
{
    const VyString& text = m.text;
    const int n = text.size();
    const int ls = m.letterSpacing;
    const int W = m.maxWidth;
    int e = 0;
    for (int i = 0; i < n; i = e + 1) {
        const unsigned short c = text.at(i);
        if (vyIsIdeographic(c)) {
            if (m.wordWrap && !b.text.isEmpty() && b.x + ls + b.advance(i) > W)
                b.closeAppended(b.advance(i) / 2);
            b.place(i, i);
            b.x += b.advance(i) + ls;
            e = i;
            // Kept: no letter spacing in this comparison, unlike the two others; the
            // framework's CJK line lengths were tuned with it.
            if (m.wordWrap && !b.text.isEmpty() && i + 1 < n && !vyIsIdeographic(text.at(i + 1)) &&
                b.x + b.wordSize(i + 1, n - i - 1, false) > W)
                b.closeAppended(b.advance(i) / 2);
        } else {
            // The space stays at the end of the line it ends.
            if (i > 0 && vyIsSpace(text.at(i - 1)) && m.wordWrap && !b.text.isEmpty() &&
                b.x + ls + b.wordSize(i, n - i, false) > W)
                b.closeAppended(b.advance(i) / 2);
            if (vyIsThai(c)) {
                int tone = 0, upper = 0, lower = 0;
                VyFontEngine::displayThaiFont(text.unicode() + i, &tone, &upper, &lower);
                int w = b.advance(i);
                b.place(i, i);
                e = i;
                // Kept: each mark is compared at its offset from the consonant but taken at
                // its offset from the running end of the cell. Thai line widths were tuned
                // against this mix.
                const int marks[3] = {upper, tone, lower};
                for (int mark = 0; mark < 3; ++mark) {
                    const int offset = marks[mark];
                    if (!offset)
                        continue;
                    b.place(e + 1, e + 1);
                    if (b.advance(i + offset) > w)
                        w = mark == 0 ? b.advance(i + offset) : b.advance(e + offset);
                    e += 1;
                }
                b.x += ls + w;
            } else {
                b.place(i, i);
                b.x += ls + b.advance(i);
                e = i;
            }
        }
        if (vyIsNewline(text.at(e))) {
            b.dropNewline();
            // The newline's letter spacing stays in the width.
            b.x -= b.advance(e);
            b.closeAppended(e > 0 ? int(uint(b.g.at(e - 1)->width) >> 1) : 0);
        }
    }
}

// Kept: `text` is in logical order while the glyphs are in visual order, and this pass mixes
// the two indexes (unit j of the text, the advance of glyph k = n - 1 - j). The framework's
// right-to-left widgets were laid out against exactly these lines.
void divideRightToLeft(VyFontMetrics& m, LineBuilder& b)
{
    const VyString& text = m.text;
    const int n = text.size();
    const int ls = m.letterSpacing;
    for (int j = 0; j < n; ++j) {
        const int k = n - 1 - j;
        if (m.wordWrap && !b.text.isEmpty() && k >= 1 && vyIsSpace(text.at(k - 1)) &&
            b.x + ls + b.wordSize(j + 1, k - 1, true) > m.maxWidth)
            b.closePrepended(b.advance(k));
        b.place(j, j);
        b.x += ls + b.advance(k);
        if (vyIsNewline(text.at(k))) {
            // Kept: the newline's advance stays in the width in this direction.
            b.dropNewline();
            b.closePrepended(b.advance(k));
        }
    }
}

} // namespace

int VyFontMetrics::divideText()
{
    LineBuilder b(*this, engine->height + lineSpacing);
    layoutDirty = false;
    if (text.isEmpty())
        return -1;
    lines.clear();
    lineRectList.clear();
    lineGlyphs = VyVector<VyVector<GlyphBitmap const*>>();
    paintList = VyVector<PaintInfo>();
    if (engine->rtl)
        divideRightToLeft(*this, b);
    else
        divideLeftToRight(*this, b);
    // Kept: the final line is appended in both directions, so a right-to-left text's last line
    // follows the earlier, prepended ones; and a bold text widens it by half the advance of
    // the text's last glyph, whichever line that glyph is on.
    if (!b.text.isEmpty())
        b.closeAppended(b.advance(b.g.size() - 1) / 2);
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
