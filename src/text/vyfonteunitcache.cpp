// The glyph store's key map and its pixel accounting; the blocks are in vyfonteunitblocks.cpp.
#include "vyfonteunitcache.h"

#include <stdlib.h>

VyFonteUnitCache::VyFonteUnitCache() : blockMM(nullptr), limit(-1), usedBytes(0)
{
    createDat();
}

VyFonteUnitCache::~VyFonteUnitCache()
{
    releaseDat();
}

void VyFonteUnitCache::createDat()
{
    BlockUnit first;
    first.count = 0;
    BlockUnit::allocMemory(&first, 2);
    blockMM = new BlockMM;
    blockMM->VyVector<BlockUnit>::append(first);
}

void VyFonteUnitCache::releaseDat()
{
    clear();
    if (blockMM) {
        blockMM->release();
        delete blockMM;
        blockMM = nullptr;
    }
}

void VyFonteUnitCache::clean()
{
    releaseDat();
    createDat();
    usedBytes = 0;
}

GlyphBitmap* VyFonteUnitCache::addFontInfo(const GlyphBitmap& g)
{
    const int key = glyphKey(g.unicode, g.font.fontSize, fontFlag(g.font));
    GlyphBitmap* record = blockMM->append(g);
    // Kept: a key that is already mapped now maps to the new record; the old record stays in
    // its block, with its pixels (never purged, as purging walks the map) and its holders,
    // until the store is released. Holders of the old pointer stay valid, which is what lets
    // the font cache insert without looking the key up again under its write lock.
    insert(key, record);
    usedBytes += g.width * g.rows;
    return record;
}

GlyphBitmap* VyFonteUnitCache::addfontMetrics(const GlyphBitmap& g)
{
    usedBytes += g.width * g.rows;
    GlyphBitmap* record = value(glyphKey(g.unicode, g.font.fontSize, fontFlag(g.font)));
    // The metrics stored with the record are still those of this key's glyph.
    record->buffer = g.buffer;
    return record;
}

void VyFonteUnitCache::cleanAllFontMetrics()
{
    const VyList<GlyphBitmap*> records = values();
    for (int i = 0; i < records.size(); ++i) {
        GlyphBitmap* g = records.at(i);
        // Pairs with the holders' release: their last reads of the pixels come first.
        if (g->buffer && __atomic_load_n(&g->refCount, __ATOMIC_ACQUIRE) == 0) {
            free(g->buffer);
            usedBytes -= g->width * g->rows;
            g->buffer = nullptr;
        }
    }
}
