// Internals of the font cache: fetching a whole run of glyphs at once.
#ifndef VYFONTCACHEPRIVATE_H
#define VYFONTCACHEPRIVATE_H

#include "vyfont.h"

// Stores in out[0] to out[n - 1] the records of units[0] to units[n - 1] in `font`, each with
// one more hold: the same records, holds and renders, in the same order, as n calls of
// VyFontCache::glyph. A run of hits shares one hold of the read lock; a miss leaves it, is
// rendered under the write lock as glyph() renders it, and the run goes on under a new read
// hold. Requires an open font.
void vyGlyphRun(const unsigned short* units, int n, const VyFont& font, const GlyphBitmap** out);

#endif
