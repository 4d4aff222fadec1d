// The glyph store's blocks: doubling arrays of records that never move.
#include "vyfonteunitcache.h"

#include <stdlib.h>

void VyFonteUnitCache::BlockUnit::allocMemory(BlockUnit* unit, int n)
{
    unit->capacity = n;
    unit->records = static_cast<GlyphBitmap*>(malloc(size_t(n) * sizeof(GlyphBitmap)));
}

void VyFonteUnitCache::BlockUnit::release()
{
    for (int i = 0; i < count; ++i) {
        if (records[i].buffer) {
            free(records[i].buffer);
            records[i].buffer = nullptr;
        }
    }
    free(records);
    records = nullptr;
}

void VyFonteUnitCache::BlockMM::greathMemory()
{
    // Indexed access, so an empty store fails the container's bounds check.
    const BlockUnit& last = (*this)[size() - 1];
    if (last.capacity <= last.count) {
        BlockUnit unit;
        unit.count = 0;
        BlockUnit::allocMemory(&unit, last.capacity * 2);
        VyVector<BlockUnit>::append(unit);
    }
}

GlyphBitmap* VyFonteUnitCache::BlockMM::append(GlyphBitmap g)
{
    greathMemory();
    BlockUnit& last = (*this)[size() - 1];
    GlyphBitmap* record = last.records + last.count;
    *record = g;
    ++last.count;
    return record;
}

void VyFonteUnitCache::BlockMM::release()
{
    for (int i = 0; i < size(); ++i)
        (*this)[i].release();
    clear();
}
