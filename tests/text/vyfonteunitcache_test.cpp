// Glyph store: the key map, duplicate keys, purging and re-attaching pixels, the width * rows
// accounting, and a random run against a model.
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
    g.advance = static_cast<short>(width + 1);
    g.buffer = static_cast<unsigned char*>(malloc(size_t(rows) * pitch));
    memset(g.buffer, unicode & 0xFF, size_t(rows) * pitch);
    return g;
}

} // namespace

// Random adds (with repeated keys: fonts that differ in lightFace or underLine share one),
// holds, releases, purges, re-attaches and cleans, checked against a model of which record
// each key maps to and which records have pixels. A clean goes back to the state after
// construction, one empty block of 2, and keeps the limit. Kept: a key added twice maps the
// second record, and a purge leaves the first one's pixels until the store goes; pixels are
// accounted as width * rows although rows * pitch bytes are allocated; re-attaching takes only
// the pixels, the record's metrics stay.
TEST(VyFonteUnitCache, RandomOperationsAgainstAModel_Kept)
{
    struct Entry {
        GlyphBitmap* record;
        VyFont font;
        int key;
        bool pixels;
    };
    std::mt19937 rng(4);
    VyFonteUnitCache cache;
    EXPECT_EQ(cache.limit, -1);
    cache.limit = 100;
    std::vector<Entry> all;             // every record added since the last clean
    std::map<int, GlyphBitmap*> mapped; // the key map, with the key made here
    for (int step = 0; step < 4000; ++step) {
        const int op = int(rng() % 100);
        Entry* e = all.empty() ? nullptr : &all[rng() % all.size()];
        if (op < 40) {
            const int size = 10 + int(rng() % 2), bold = int(rng() % 2), heavy = int(rng() % 2);
            const VyFont font(size, bold, heavy, rng() % 2, rng() % 2);
            const unsigned short unit = static_cast<unsigned short>(rng() % 12);
            const int width = int(rng() % 7), rows = 1 + int(rng() % 6);
            const int key = unit | size << 16 | (bold * 2 + heavy) << 24;
            mapped[key] = cache.addFontInfo(makeGlyph(unit, font, width, rows, width + 1));
            all.push_back({mapped[key], font, key, true});
        } else if (op < 60 && e) {
            if (e->record->refCount && rng() % 2)
                vyGlyphRelease(e->record);
            else if (e->pixels)
                vyGlyphHold(e->record);
        } else if (op < 65) {
            cache.cleanAllFontMetrics();
            for (Entry& x : all)
                x.pixels = x.pixels && (mapped[x.key] != x.record || x.record->refCount);
        } else if (op < 99 && e && mapped[e->key] == e->record && !e->pixels) {
            const GlyphBitmap& r = *e->record;
            GlyphBitmap again = makeGlyph(r.unicode, e->font, r.width, r.rows, r.pitch);
            again.advance = -1;
            EXPECT_EQ(cache.addfontMetrics(again), e->record);
            EXPECT_EQ(r.advance, r.width + 1);
            e->pixels = true;
        } else if (op == 99) {
            cache.clean();
            all.clear();
            mapped.clear();
            const VyFonteUnitCache::BlockUnit& first = cache.blockMM->first();
            ASSERT_EQ(
                std::make_tuple(cache.blockMM->size(), first.capacity, first.count, cache.limit),
                std::make_tuple(1, 2, 0, 100));
        }
        int used = 0;
        for (const Entry& x : all) {
            used += x.pixels ? x.record->width * x.record->rows : 0;
            ASSERT_EQ(x.record->buffer != nullptr, x.pixels);
            if (x.pixels) {
                ASSERT_EQ(x.record->buffer[x.record->rows * x.record->pitch - 1],
                          x.record->unicode);
            }
        }
        ASSERT_EQ(cache.usedBytes, used);
        ASSERT_EQ(cache.size(), int(mapped.size()));
        for (const Entry& x : all)
            ASSERT_EQ(cache.fontTable(x.record->unicode, x.font) == x.record,
                      mapped[x.key] == x.record);
    }
}
