#include "vytextlayout.h"

#include "vytextutf8.h"

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
    for (const PaintInfo& p : records) {
        PlacedRecord r{p.rect, p.rect.y2 - t.pitch + 1 + above, {}};
        int pen = p.rect.x1;
        for (const GlyphBitmap* g : p.glyphs) {
            r.glyphs.push_back({g, pen});
            pen += g->advance + t.letterSpacing;
        }
        t.records.push_back(std::move(r));
    }
    return t;
}

void paintLayout(const TextLayout& layout, int x, int y, int width, int height,
                 std::vector<unsigned char>& pixels)
{
    pixels.assign(size_t(width) * size_t(height), 255);
    for (const PlacedRecord& r : layout.records) {
        for (const PlacedGlyph& p : r.glyphs) {
            const GlyphBitmap* g = p.glyph;
            if (!g->buffer)
                continue;
            // 64-bit positions: a pen far outside the box must clip, not wrap.
            const long long left = (long long)p.pen + g->left - x;
            const long long top = (long long)r.baseline - g->top - y;
            for (int row = 0; row < g->rows; ++row) {
                const long long py = top + row;
                if (py < 0 || py >= height)
                    continue;
                const unsigned char* src = g->buffer + size_t(row) * g->pitch;
                for (int col = 0; col < g->width; ++col) {
                    const long long px = left + col;
                    if (px < 0 || px >= width)
                        continue;
                    unsigned char& dst = pixels[size_t(py) * size_t(width) + size_t(px)];
                    const int ink = 255 - src[col];
                    if (ink < dst)
                        dst = static_cast<unsigned char>(ink);
                }
            }
        }
    }
}
