// Glyph records with chosen metrics, stored straight into the font cache, so that every
// layout number is exact and nothing is rendered. A lookup finds such a record like any other
// (it has pixels), and the cache frees it with the rest on clean() or closeFontFile().
#ifndef VY_TESTS_SYNTHETICGLYPHS_H
#define VY_TESTS_SYNTHETICGLYPHS_H

#include "vyfontcache.h"

#include <stdlib.h>
#include <string.h>

// The record of `unicode` in `font`: `advance`, a one-row bitmap `width` pixels wide, and
// `top`/`descent` (10 and 4 give a line height of 14 * 1.36 = 19).
inline GlyphBitmap* vyPutGlyph(unsigned short unicode, const VyFont& font, int advance,
                               int width = 2, int top = 10, int descent = 4)
{
    GlyphBitmap g;
    memset(&g, 0, sizeof g);
    g.unicode = unicode;
    g.font = font.fontAttr();
    g.width = g.pitch = static_cast<unsigned short>(width);
    g.rows = 1;
    g.top = static_cast<short>(top);
    g.descent = static_cast<short>(descent);
    g.advance = static_cast<short>(advance);
    g.buffer = static_cast<unsigned char*>(calloc(size_t(width) + 1, 1));
    return VyFontCache::instance()->addFontInfo(g);
}

#endif
