// Glyph store: doubling blocks with stable records, the key map, duplicate keys, purging and
// re-attaching pixels, the width * rows accounting, and a random run against a model.
#include "textfonts.h"
#include "vyfonteunitcache.h"

#include <gtest/gtest.h>

#include <map>
#include <random>
#include <stdlib.h>
#include <vector>

namespace
{

// A record with chosen metrics and rows * pitch pixel bytes holding the unit's low byte.
GlyphBitmap makeGlyph(unsigned short unicode, const VyFont& font, int width, int rows, int pitch)
{
    GlyphBitmap g;
    memset(&g, 0, sizeof g);
    g.unicode = unicode;
    g.font = font.fontAttr();
    g.width = static_cast<unsigned short>(width);
    g.rows = static_cast<unsigned short>(rows);
    g.pitch = static_cast<unsigned short>(pitch);
    g.top = static_cast<short>(rows - 1);
    g.descent = 1;
    g.advance = static_cast<short>(width + 1);
    g.buffer = static_cast<unsigned char*>(malloc(size_t(rows) * pitch));
    memset(g.buffer, unicode & 0xFF, size_t(rows) * pitch);
    return g;
}

std::vector<int> capacities(const VyFonteUnitCache& cache)
{
    std::vector<int> c;
    for (const VyFonteUnitCache::BlockUnit& b : *cache.blockMM)
        c.push_back(b.capacity);
    return c;
}

} // namespace

TEST(VyFonteUnitCache, BlocksDoubleAndRecordsNeverMove)
{
    VyFonteUnitCache cache;
    EXPECT_EQ(capacities(cache), std::vector<int>({2}));
    EXPECT_EQ(cache.blockMM->at(0).count, 0);
    std::vector<GlyphBitmap*> stored;
    for (int i = 0; i < 64; ++i) {
        stored.push_back(cache.addFontInfo(makeGlyph(i, VyFont(), 2, 3, 4)));
        if (i == 2) { // the third glyph opens a block of 4
            EXPECT_EQ(capacities(cache), std::vector<int>({2, 4}));
        }
        if (i == 6) { // the seventh one of 8
            EXPECT_EQ(capacities(cache), std::vector<int>({2, 4, 8}));
        }
    }
    EXPECT_EQ(capacities(cache), std::vector<int>({2, 4, 8, 16, 32, 64}));
    int i = 0;
    for (const VyFonteUnitCache::BlockUnit& b : *cache.blockMM) {
        EXPECT_EQ(b.count, std::min(b.capacity, 64 - i));
        for (int j = 0; j < b.count; ++j, ++i)
            EXPECT_EQ(&b.records[j], stored[i]);
    }
    for (int u = 0; u < 64; ++u) {
        EXPECT_EQ(cache.fontTable(u, VyFont()), stored[u]);
        EXPECT_EQ(stored[u]->unicode, u);
        EXPECT_EQ(stored[u]->buffer[11], u);
    }
    EXPECT_EQ(cache.usedBytes, 64 * 6);
}

TEST(VyFonteUnitCache, KeyIsUnitSizeAndStyleOnly)
{
    VyFonteUnitCache cache;
    EXPECT_EQ(cache.fontTable('A', VyFont()), nullptr); // empty hash
    GlyphBitmap* a =
        cache.addFontInfo(makeGlyph('A', VyFont(12, true, false, false, false), 1, 1, 1));
    EXPECT_EQ(cache.fontTable('A', VyFont(12, true, false, true, true)), a);
    EXPECT_EQ(cache.fontTable('A', VyFont(12, false, false, false, false)), nullptr);
    EXPECT_EQ(cache.fontTable('A', VyFont(12, true, true, false, false)), nullptr);
    EXPECT_EQ(cache.fontTable('A', VyFont(13, true, false, false, false)), nullptr);
    EXPECT_EQ(cache.fontTable('A' + 0x100, VyFont(12, true, false, false, false)), nullptr);
    EXPECT_TRUE(cache.contains(VyFonteUnitCache::glyphKey('A', 12, 2)));
}

TEST(VyFonteUnitCache, SameKeyTwiceMapsTheSecondRecord_Kept)
{
    VyFonteUnitCache cache;
    GlyphBitmap* first = cache.addFontInfo(makeGlyph('x', VyFont(), 2, 3, 2));
    GlyphBitmap* second = cache.addFontInfo(makeGlyph('x', VyFont(), 4, 5, 4));
    EXPECT_NE(first, second);
    EXPECT_EQ(cache.size(), 1);
    EXPECT_EQ(cache.fontTable('x', VyFont()), second);
    EXPECT_EQ(cache.blockMM->at(0).count, 2);
    EXPECT_EQ(cache.usedBytes, 6 + 20);
    // Only mapped records are purged: the first keeps its pixels until the store goes.
    cache.cleanAllFontMetrics();
    EXPECT_EQ(second->buffer, nullptr);
    ASSERT_NE(first->buffer, nullptr);
    EXPECT_EQ(first->buffer[5], 'x');
    EXPECT_EQ(first->width, 2);
    EXPECT_EQ(cache.usedBytes, 6);
}

// Pixels are accounted as width * rows although rows * pitch bytes are allocated.
TEST(VyFonteUnitCache, PurgeAndReattachAccountWidthTimesRows_Kept)
{
    VyFonteUnitCache cache;
    GlyphBitmap* held = cache.addFontInfo(makeGlyph('h', VyFont(), 3, 4, 8));
    GlyphBitmap* idle = cache.addFontInfo(makeGlyph('i', VyFont(), 5, 6, 8));
    EXPECT_EQ(cache.usedBytes, 12 + 30);
    vyGlyphHold(held);
    cache.cleanAllFontMetrics();
    EXPECT_EQ(held->buffer[0], 'h');
    EXPECT_EQ(idle->buffer, nullptr);
    EXPECT_EQ(cache.usedBytes, 12);
    EXPECT_EQ(cache.fontTable('i', VyFont()), idle);
    EXPECT_EQ(idle->advance, 6); // metrics stay

    GlyphBitmap again = makeGlyph('i', VyFont(), 5, 6, 8);
    again.advance = 99; // only the pixels are taken
    EXPECT_EQ(cache.addfontMetrics(again), idle);
    EXPECT_EQ(idle->buffer, again.buffer);
    EXPECT_EQ(idle->advance, 6);
    EXPECT_EQ(cache.usedBytes, 12 + 30);
    vyGlyphRelease(held);
    cache.cleanAllFontMetrics();
    EXPECT_EQ(held->buffer, nullptr);
    EXPECT_EQ(cache.usedBytes, 0);
}

TEST(VyFonteUnitCache, CleanReturnsToTheStateAfterConstruction)
{
    VyFonteUnitCache cache;
    EXPECT_EQ(cache.limit, -1);
    cache.limit = 100;
    for (int i = 0; i < 5; ++i)
        cache.addFontInfo(makeGlyph('a' + i, VyFont(), 2, 2, 2));
    cache.clean();
    EXPECT_EQ(cache.size(), 0);
    EXPECT_EQ(cache.fontTable('a', VyFont()), nullptr);
    EXPECT_EQ(capacities(cache), std::vector<int>({2}));
    EXPECT_EQ(cache.blockMM->at(0).count, 0);
    EXPECT_EQ(cache.usedBytes, 0);
    EXPECT_EQ(cache.limit, 100);
    cache.releaseDat();
    EXPECT_EQ(cache.blockMM, nullptr);
    cache.createDat();
    EXPECT_NE(cache.addFontInfo(makeGlyph('a', VyFont(), 2, 2, 2)), nullptr);
}

// Random adds (with repeated keys), holds, releases, purges, re-attaches and cleans, checked
// against a model of which record each key maps to and which records have pixels.
TEST(VyFonteUnitCache, RandomOperationsAgainstAModel)
{
    struct Entry {
        GlyphBitmap* record;
        int area;
        unsigned char fill;
        bool mapped;
        bool pixels;
        int holds;
    };
    std::mt19937 rng(4);
    VyFonteUnitCache cache;
    std::vector<Entry> all;
    std::map<int, size_t> mapped; // key -> index in `all`
    for (int step = 0; step < 4000; ++step) {
        const int op = int(rng() % 100);
        if (op < 40) {
            const VyFont font(10 + rng() % 2, rng() % 2, rng() % 2, rng() % 2, rng() % 2);
            const unsigned short unit = static_cast<unsigned short>(rng() % 12);
            const int width = int(rng() % 7), rows = 1 + int(rng() % 6);
            GlyphBitmap* r = cache.addFontInfo(makeGlyph(unit, font, width, rows, width + 1));
            const int key = VyFonteUnitCache::glyphKey(unit, font.fontSize(), font.propertyFlag());
            if (mapped.count(key))
                all[mapped[key]].mapped = false;
            mapped[key] = all.size();
            all.push_back({r, width * rows, static_cast<unsigned char>(unit), true, true, 0});
        } else if (op < 60 && !all.empty()) {
            Entry& e = all[rng() % all.size()];
            if (e.holds && rng() % 2) {
                vyGlyphRelease(e.record);
                --e.holds;
            } else if (e.pixels) {
                vyGlyphHold(e.record);
                ++e.holds;
            }
        } else if (op < 65) {
            cache.cleanAllFontMetrics();
            for (Entry& e : all)
                e.pixels = e.pixels && (!e.mapped || e.holds);
        } else if (op < 99 && !all.empty()) {
            Entry& e = all[rng() % all.size()];
            if (e.mapped && !e.pixels) {
                GlyphBitmap g = *e.record;
                g.buffer = static_cast<unsigned char*>(malloc(size_t(g.rows) * g.pitch));
                memset(g.buffer, e.fill, size_t(g.rows) * g.pitch);
                EXPECT_EQ(cache.addfontMetrics(g), e.record);
                e.pixels = true;
            }
        } else {
            cache.clean();
            all.clear();
            mapped.clear();
        }
        int used = 0;
        for (const Entry& e : all) {
            used += e.pixels ? e.area : 0;
            ASSERT_EQ(e.record->buffer != nullptr, e.pixels);
            ASSERT_EQ(e.record->refCount, e.holds);
            if (e.pixels) {
                ASSERT_EQ(e.record->buffer[e.record->rows * e.record->pitch - 1], e.fill);
            }
        }
        ASSERT_EQ(cache.usedBytes, used);
        ASSERT_EQ(cache.size(), int(mapped.size()));
        for (const auto& [key, index] : mapped)
            ASSERT_EQ(cache.value(key), all[index].record);
    }
}

TEST(VyFonteUnitCacheDeathTest, AnEmptyBlockStoreFailsTheBoundsCheck)
{
    VyFonteUnitCache::BlockMM store;
    const std::string message =
        "./../include/pub/vyvector:906: T& VyVector<T>::operator[](int) [with T = "
        "VyFonteUnitCache::BlockUnit]: Assertion `i >= 0 && i < d->size' failed";
    EXPECT_DEATH(store.greathMemory(), literal(message));
    EXPECT_DEATH(store.append(GlyphBitmap()), literal(message));
}
