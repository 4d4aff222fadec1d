#include "vytextlayout.h"

#include "vytextutf8.h"

#include <algorithm>

TextLayout readLayout(VyFontMetrics& m)
{
    TextLayout t;
    t.units = m.text.size();
    t.rtl = m.isRightToLeft();
    t.lineHeight = m.textPixelSize();
    t.lineSpacing = m.lineSpacing;
    t.letterSpacing = m.letterSpacing;
    t.pitch = t.lineHeight + t.lineSpacing;
    for (const GlyphBitmap* g : m.glyphBitmap()) {
        if (g->top > t.ascent)
            t.ascent = g->top;
        if (g->descent > t.descent)
            t.descent = g->descent;
    }
    t.box = m.textRect;
    t.wrap = m.wordWrap;

    for (const VyString& line : m.subText())
        t.lines.push_back(encodeUtf8(line.unicode(), line.size()));
    for (const VyRect& r : m.lineRects())
        t.lineRects.push_back(r);
    const VyVector<PaintInfo>& records = m.paintInfoList();
    t.alignment = m.alignment;
    t.sizeHint = m.sizeHint();

    // The leading beyond the glyphs' extent is split, the smaller half above the text.
    const int above = (t.lineHeight - t.ascent - t.descent) / 2 + t.ascent;
    size_t previous = 0;
    for (const PaintInfo& p : records) {
        const size_t count = size_t(p.glyphs.size());
        PlacedRecord r{
            p.rect, p.rect.y2 - t.pitch + 1 + above, t.rtl ? std::min(previous, count) : 0, {}};
        // 64-bit sums: a long run of glyphs left of the box must not wrap.
        long long pen = p.rect.x1;
        for (size_t k = r.own; k-- > 0;)
            pen -= p.glyphs.at(int(k))->advance + t.letterSpacing;
        for (const GlyphBitmap* g : p.glyphs) {
            r.glyphs.push_back({g, pen});
            pen += g->advance + t.letterSpacing;
        }
        previous = count;
        t.records.push_back(std::move(r));
    }
    return t;
}

namespace
{

// The part of a glyph's bitmap that falls inside the image: columns c0..c1 and rows r0..r1
// (exclusive ends) of the bitmap, drawn from image pixel (left + c, top + r).
struct Clip {
    long long left, top;
    int c0, c1, r0, r1;
};

Clip clip(const PlacedRecord& r, const PlacedGlyph& p, int x, int y, int width, int height)
{
    const GlyphBitmap* g = p.glyph;
    // 64-bit positions: a pen far outside the box must clip, not wrap.
    Clip c{(long long)p.pen + g->left - x,
           (long long)r.baseline - g->top - y,
           0,
           g->width,
           0,
           g->rows};
    c.c0 = int(std::max<long long>(0, -c.left));
    c.c1 = int(std::min<long long>(g->width, width - c.left));
    c.r0 = int(std::max<long long>(0, -c.top));
    c.r1 = int(std::min<long long>(g->rows, height - c.top));
    if (!g->buffer || c.c0 >= c.c1 || c.r0 >= c.r1)
        c.c1 = c.c0 = c.r1 = c.r0 = 0;
    return c;
}

} // namespace

bool paintLayout(const TextLayout& layout, int x, int y, int width, int height,
                 std::vector<unsigned char>& pixels)
{
    long long work = 0;
    for (const PlacedRecord& r : layout.records)
        for (size_t k = r.own; k < r.glyphs.size(); ++k) {
            const Clip c = clip(r, r.glyphs[k], x, y, width, height);
            work += (long long)(c.c1 - c.c0) * (c.r1 - c.r0);
        }
    if (work > MaxPaintedPixels)
        return false;
    pixels.assign(size_t(width) * size_t(height), 255);
    for (const PlacedRecord& r : layout.records)
        for (size_t k = r.own; k < r.glyphs.size(); ++k) {
            const PlacedGlyph& p = r.glyphs[k];
            const Clip c = clip(r, p, x, y, width, height);
            for (int row = c.r0; row < c.r1; ++row) {
                const unsigned char* src = p.glyph->buffer + size_t(row) * p.glyph->pitch;
                unsigned char* dst = &pixels[size_t(c.top + row) * size_t(width) + size_t(c.left)];
                for (int col = c.c0; col < c.c1; ++col) {
                    const int ink = 255 - src[col];
                    if (ink < dst[col])
                        dst[col] = static_cast<unsigned char>(ink);
                }
            }
        }
    return true;
}
