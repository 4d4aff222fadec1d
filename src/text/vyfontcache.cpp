// The singleton font cache: font file, purging, and glyph lookup under the library's lock.
#include "vyfontcache.h"

#include "vyfontcacheprivate.h"

#include <stdio.h>
#include <stdlib.h>

VyFontCache* VyFontCache::m_pMyself = nullptr;
VyFreetype* VyFontCache::m_pFtEngine = nullptr;
pthread_rwlock_t VyFontCache::rwlock = PTHREAD_RWLOCK_INITIALIZER;

namespace
{
// Serialises only the creation of the singleton.
pthread_mutex_t creation = PTHREAD_MUTEX_INITIALIZER;

// The rest of a lookup that found no record with pixels under the read lock, which the caller
// has released: `record` is null when the key was absent, else the record whose pixels were
// purged. Renders under the write lock and returns the record, held.
GlyphBitmap* renderMissing(VyFontCache* cache, GlyphBitmap* record, unsigned short code,
                           const VyFont& font)
{
    // No upgrade in place: another writer may run between the two locks, so the record's
    // state is tested again under the write lock.
    pthread_rwlock_wrlock(&VyFontCache::rwlock);
    if (record) {
        // Purged earlier: fresh pixels go into the same record.
        if (!record->buffer) {
            VyFontCache::m_pFtEngine->setTextFont(font);
            cache->addfontMetrics(VyFontCache::m_pFtEngine->resloveUnicode(code));
        }
    } else {
        // Kept: no second lookup here. Two threads that miss the same glyph together both
        // render it and the map keeps the second record; the first stays valid in its block
        // with its holders, which is all a holder needs.
        VyFontCache::m_pFtEngine->setTextFont(font);
        record = cache->addFontInfo(VyFontCache::m_pFtEngine->resloveUnicode(code));
    }
    vyGlyphHold(record);
    pthread_rwlock_unlock(&VyFontCache::rwlock);
    return record;
}
} // namespace

VyFontCache* VyFontCache::instance()
{
    VyFontCache* cache = __atomic_load_n(&m_pMyself, __ATOMIC_ACQUIRE);
    if (cache)
        return cache;
    // Two threads may ask first at once: the second waits and finds the first one's object.
    pthread_mutex_lock(&creation);
    cache = __atomic_load_n(&m_pMyself, __ATOMIC_ACQUIRE);
    if (!cache)
        cache = new VyFontCache;
    pthread_mutex_unlock(&creation);
    return cache;
}

VyFontCache::VyFontCache()
{
    // One rasteriser serves every cache object in turn; it carries no state between glyphs
    // (setTextFont precedes each render), so a later cache reuses it instead of leaking it.
    if (!m_pFtEngine)
        m_pFtEngine = new VyFreetype;
    // Published last, so a thread that sees the singleton also sees its rasteriser.
    __atomic_store_n(&m_pMyself, this, __ATOMIC_RELEASE);
}

VyFontCache::~VyFontCache()
{
    VyFreetype::freetype_Done();
    __atomic_store_n(&m_pMyself, nullptr, __ATOMIC_RELEASE);
}

void VyFontCache::setFontFile(const VyString& path)
{
    VyString file = path;
    if (file.isEmpty())
        file.append(getenv("VY_FONTLIB"));
    if (file.isEmpty()) {
        puts("[GUI-FRAMEWORK]: font not specified, set \"VY_FONTLIB\" env or call "
             "VyApplication::setFontFile() !!!");
        exit(1);
    }
    clean();
    VyFreetype::freetype_Done();
    // The caller's path as given: an empty one goes through the same fallback in there.
    VyFreetype::freetype_init(path);
}

void VyFontCache::closeFontFile()
{
    clean();
    VyFreetype::freetype_Done();
}

void VyFontCache::cleanCache(bool force)
{
    pthread_rwlock_wrlock(&rwlock);
    if (force || (limit != -1 && limit <= usedBytes))
        cleanAllFontMetrics();
    pthread_rwlock_unlock(&rwlock);
}

GlyphBitmap* VyFontCache::glyph(unsigned short code, const VyFont& font)
{
    VyFontCache* cache = instance();
    pthread_rwlock_rdlock(&rwlock);
    GlyphBitmap* record = cache->fontTable(code, font);
    if (record && record->buffer) {
        vyGlyphHold(record);
        pthread_rwlock_unlock(&rwlock);
        return record;
    }
    pthread_rwlock_unlock(&rwlock);
    return renderMissing(cache, record, code, font);
}

void vyGlyphRun(const unsigned short* units, int n, const VyFont& font, const GlyphBitmap** out)
{
    VyFontCache* cache = VyFontCache::instance();
    int i = 0;
    while (i < n) {
        GlyphBitmap* record = nullptr;
        pthread_rwlock_rdlock(&VyFontCache::rwlock);
        for (; i < n; ++i) {
            record = cache->fontTable(units[i], font);
            if (!record || !record->buffer)
                break;
            vyGlyphHold(record);
            out[i] = record;
        }
        pthread_rwlock_unlock(&VyFontCache::rwlock);
        if (i < n) {
            out[i] = renderMissing(cache, record, units[i], font);
            ++i;
        }
    }
}
