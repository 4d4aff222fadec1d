// The font request and the rendered glyph that travel through the text engine.
//
// FontAttr is the two-byte record of a request: a pixel size and four flag bits. VyFont wraps
// exactly one FontAttr (two bytes, no virtual functions, no base) and is passed by value.
// GlyphBitmap is one rendered UTF-16 unit: an 8-bit coverage bitmap and the metrics layout
// needs. The rasteriser returns a GlyphBitmap owning a fresh pixel buffer; the glyph cache
// stores it and owns the buffer from then on; everyone else holds `const GlyphBitmap*` into
// the cache and never frees anything.
//
// Threads: FontAttr and VyFont are plain values. A GlyphBitmap stored in the cache is read by
// any thread that holds it; only `refCount` changes while it is shared, and only atomically
// (vyGlyphHold, vyGlyphRelease).
#ifndef VYFONT_H
#define VYFONT_H

#include "vyglobal.h"

#include <string.h>

// Byte 0 is the pixel size, byte 1 the flags from bit 0 upwards.
struct VY_EXPORT FontAttr {
    // Pixel height requested from the rasteriser.
    unsigned char fontSize;
    // Kept: the names of bits 0 and 1 are crossed. A font with `boldFace` set is drawn
    // slanted, one with `heavyFace` set is drawn with an emboldened outline. The framework's
    // setBoldFace has always produced the slanted look its themes were designed with.
    unsigned char boldFace : 1;
    // No setter: only the five-argument VyFont constructor sets it.
    unsigned char heavyFace : 1;
    // Compared by VyFont::operator==, but neither in the cache key nor read by the rasteriser.
    unsigned char lightFace : 1;
    // Travels to layout only: not compared, not in the cache key, not rendered.
    unsigned char underLine : 1;
    // Never read. The constructors of VyFont zero them; copies and setters keep them.
    unsigned char reserved : 4;
};
static_assert(sizeof(FontAttr) == 2, "FontAttr is two bytes");

class VY_EXPORT VyFont
{
public:
    // Size 16, every flag bit (reserved ones included) cleared.
    VyFont() { setBits(16, 0); }
    // Copies are two-byte copies, reserved bits included.
    VyFont(const VyFont& other) = default;
    VyFont(const FontAttr& a) { memcpy(&attr, &a, sizeof attr); }
    // Sets bits 0 to 3 of the flag byte from b0 to b3, in that order (b0 is `boldFace`, b1
    // `heavyFace`, b2 `lightFace`, b3 `underLine`); the reserved bits are cleared.
    VyFont(unsigned char size, bool b0, bool b1, bool b2, bool b3)
    {
        setBits(size, (b0 & 1) | (b1 & 1) << 1 | (b2 & 1) << 2 | (b3 & 1) << 3);
    }
    VyFont& operator=(const VyFont& other) = default;

    void setFont(const FontAttr& a) { memcpy(&attr, &a, sizeof attr); }
    void setFontSize(unsigned char size) { attr.fontSize = size; }
    // Sets bit 0, which the rasteriser renders as a slant.
    void setBoldFace(bool on) { attr.boldFace = on; }
    void setLightFaceType(bool on) { attr.lightFace = on; }
    void setUnderLine(bool on) { attr.underLine = on; }

    const FontAttr& fontAttr() const { return attr; }
    unsigned char fontSize() const { return attr.fontSize; }
    bool boldFace() const { return attr.boldFace; }
    bool heavyFace() const { return attr.heavyFace; }
    bool lightFace() const { return attr.lightFace; }
    bool underLine() const { return attr.underLine; }

    // The style number of the glyph key, 0 to 3: 2 for `boldFace`, plus 1 for `heavyFace`.
    // Must agree with VyFonteUnitCache::fontFlag, which builds the key on insertion.
    int propertyFlag() const { return (attr.boldFace ? 2 : 0) + (attr.heavyFace ? 1 : 0); }

    // Size, boldFace, heavyFace and lightFace are equal.
    // Kept: underLine is left out, so an underlined font equals the plain one. Underlining is
    // drawn by the painter over rendered glyphs; for everything the text engine decides (the
    // glyphs, their cache entries, the metrics) the two fonts are the same font.
    bool operator==(const VyFont& other) const
    {
        return attr.fontSize == other.attr.fontSize && attr.boldFace == other.attr.boldFace &&
               attr.heavyFace == other.attr.heavyFace && attr.lightFace == other.attr.lightFace;
    }
    bool operator!=(const VyFont& other) const { return !(*this == other); }

private:
    void setBits(unsigned char size, int flags)
    {
        const unsigned char bytes[2] = {size, static_cast<unsigned char>(flags)};
        memcpy(&attr, bytes, sizeof attr);
    }

    FontAttr attr;
};
static_assert(sizeof(VyFont) == 2, "VyFont is one FontAttr");

// One rendered glyph, an aggregate copied field by field.
struct VY_EXPORT GlyphBitmap {
    // Bitmap size in pixels and bytes per row as the rasteriser delivered it.
    unsigned short width;
    unsigned short rows;
    unsigned short pitch;
    // Pixels from the pen position to the leftmost column.
    short left;
    // Rows above the baseline.
    short top;
    // Rows below the baseline: always rows - top.
    short descent;
    // Pen advance in whole pixels, the 26.6 advance rounded: (advance + 32) >> 6.
    short advance;
    // The request the glyph was rendered for.
    FontAttr font;
    // rows * pitch bytes of coverage (0 transparent, 255 full), top row first, from malloc.
    // Null once the cache has purged the pixels. A glyph with no pixels (a space) has a
    // zero-byte buffer, which may be null; never read from it.
    unsigned char* buffer;
    // The UTF-16 unit this glyph renders.
    unsigned short unicode;
    // Live holders of a pointer to this record; changed only atomically while the record is in
    // the cache. A record with holders keeps its pixels through every purge.
    int refCount;
};

// Take and give back one hold on a cached glyph (atomic, no lock needed).
inline void vyGlyphHold(const GlyphBitmap* g)
{
    __atomic_add_fetch(&const_cast<GlyphBitmap*>(g)->refCount, 1, __ATOMIC_RELAXED);
}
// Releases: the holder's reads of the pixels happen before a purge that sees the count drop.
inline void vyGlyphRelease(const GlyphBitmap* g)
{
    __atomic_sub_fetch(&const_cast<GlyphBitmap*>(g)->refCount, 1, __ATOMIC_ACQ_REL);
}

#endif
