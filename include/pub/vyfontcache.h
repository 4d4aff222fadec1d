// VyFontCache: the process-wide entry point for glyphs.
//
// A singleton derived from the glyph store (VyFonteUnitCache) that adds the one rasteriser,
// the font file's opening and closing, purging, and the locking. glyph() returns a pointer to
// the stored record with one more hold on it (refCount); the caller gives the hold back with
// vyGlyphRelease when it is done. The pointer stays valid until setFontFile, closeFontFile or
// the destructor; a held glyph keeps its pixels through every purge.
//
// Threads: one process-wide reader-writer lock, `rwlock`, guards the store, the pixels and the
// rasteriser. Lookups take the read side; rendering, inserting and purging the write side, and
// the read side is always released before the write side is requested. instance(),
// setFontFile and closeFontFile take no lock: they belong to start-up and shut-down, while no
// other thread uses glyphs. instance() itself may race with another first call safely.
#ifndef VYFONTCACHE_H
#define VYFONTCACHE_H

#include "vyglobal.h"

#include "vyfont.h"
#include "vyfonteunitcache.h"
#include "vyfreetype.h"
#include "vystring.h"

#include <pthread.h>

class VY_EXPORT VyFontCache : public VyFonteUnitCache
{
public:
    // The singleton, created on first use with an empty store and no font open.
    static VyFontCache* instance();

    // Sets the singleton to this object and makes sure the rasteriser exists.
    VyFontCache();
    // Closes FreeType and clears the singleton; the rasteriser object stays for the next one.
    ~VyFontCache();

    // Drops every glyph and opens another font file. An empty path falls back to the
    // VY_FONTLIB environment variable; with neither the process ends (status 1), as it does
    // when the file cannot be opened.
    void setFontFile(const VyString& path);
    // Drops every glyph and closes FreeType.
    void closeFontFile();
    // Under the write lock: frees the pixels of every unheld glyph when `force` is set or the
    // accounted pixel memory has reached a limit.
    void cleanCache(bool force);

    // The record of `code` in `font` with its refCount raised by one, rendered on a miss (and
    // re-rendered into the same record when its pixels were purged). Requires an open font.
    // Never fails: a unit the font lacks renders the font's missing-glyph shape.
    static GlyphBitmap* glyph(unsigned short code, const VyFont& font);

    static VyFontCache* m_pMyself;
    static VyFreetype* m_pFtEngine;
    // The library's one lock, statically initialised.
    static pthread_rwlock_t rwlock;
};

#endif
