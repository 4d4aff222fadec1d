// Glyph store blocks: doubling capacities, records that never move, and the bounds check of an
// empty store.
#include "textfonts.h"
#include "vyfonteunitcache.h"

#include <gtest/gtest.h>

#include <vector>

namespace
{

std::vector<int> capacities(const VyFonteUnitCache::BlockMM& store)
{
    std::vector<int> c;
    for (const VyFonteUnitCache::BlockUnit& b : store)
        c.push_back(b.capacity);
    return c;
}

} // namespace

TEST(VyFonteUnitBlocks, BlocksDoubleAndRecordsNeverMove)
{
    VyFonteUnitCache cache;
    VyFonteUnitCache::BlockMM& store = *cache.blockMM;
    EXPECT_EQ(capacities(store), std::vector<int>({2}));
    std::vector<GlyphBitmap*> stored;
    for (unsigned short u = 0; u < 64; ++u) {
        GlyphBitmap g{};
        g.unicode = u;
        stored.push_back(store.append(g));
    }
    // Each block is filled before the next opens: the third glyph opens a block of 4, the
    // seventh one of 8.
    EXPECT_EQ(capacities(store), std::vector<int>({2, 4, 8, 16, 32, 64}));
    int i = 0;
    for (const VyFonteUnitCache::BlockUnit& b : store) {
        EXPECT_EQ(b.count, std::min(b.capacity, 64 - i));
        for (int j = 0; j < b.count; ++j, ++i) {
            EXPECT_EQ(&b.records[j], stored[i]);
            EXPECT_EQ(stored[i]->unicode, i);
        }
    }
}

TEST(VyFonteUnitBlocksDeathTest, AnEmptyBlockStoreFailsTheBoundsCheck)
{
    VyFonteUnitCache::BlockMM store;
    const std::string message =
        "./../include/pub/vyvector:906: T& VyVector<T>::operator[](int) [with T = "
        "VyFonteUnitCache::BlockUnit]: Assertion `i >= 0 && i < d->size' failed";
    EXPECT_DEATH(store.greathMemory(), literal(message));
    EXPECT_DEATH(store.append(GlyphBitmap()), literal(message));
}
