// Font cache: shared records and their holders, purging and re-rendering into the same
// record, the limit, runs fetched at once against glyph by glyph, switching and closing font
// files, the singleton, the exits, and a concurrency stress test (its suite name,
// VyFontCacheConcurrency, is what the ThreadSanitizer stage of scripts/test selects).
#include "../../src/text/vyfontcacheprivate.h"
#include "layoutfixture.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <map>
#include <random>
#include <stdlib.h>
#include <thread>
#include <tuple>
#include <vector>

namespace
{

using VyFontCacheTest = LayoutTest;

// What a fetch gives back: the glyph's key, its metrics and its pixels.
auto fetched(const GlyphBitmap* g)
{
    return std::make_tuple(g->unicode, int(g->font.fontSize), VyFonteUnitCache::fontFlag(g->font),
                           g->width, g->left, g->top, g->advance, pixels(g));
}

// The number of a record in the store, counting through the blocks in order; -1 if absent.
int slotOf(const VyFontCache* cache, const GlyphBitmap* g)
{
    int slot = 0;
    for (const VyFonteUnitCache::BlockUnit& block : *cache->blockMM)
        for (int i = 0; i < block.count; ++i, ++slot)
            if (&block.records[i] == g)
                return slot;
    return -1;
}

} // namespace

// Fonts differing only in underLine or lightFace share a record. A purge keeps held pixels,
// and the next fetch re-renders a purged glyph into the same record. Without force the cache
// is purged only once the limit is reached (at 0 bytes a limit of 0 is reached too).
TEST_F(VyFontCacheTest, SharedRecordsPurgedAndReRenderedInPlace)
{
    VyFontCache* cache = VyFontCache::instance();
    GlyphBitmap* held = VyFontCache::glyph('H', VyFont(16, false, false, false, false));
    EXPECT_EQ(VyFontCache::glyph('H', VyFont(16, false, false, false, true)), held);
    EXPECT_EQ(VyFontCache::glyph('H', VyFont(16, false, false, true, false)), held);
    EXPECT_EQ(held->refCount, 3);
    const VyFont slanted(16, true, false, false, false);
    GlyphBitmap* idle = VyFontCache::glyph('H', slanted);
    const auto idleBefore = fetched(idle);
    vyGlyphRelease(idle);
    vyGlyphRelease(held);
    vyGlyphRelease(held);

    cache->cleanCache(true);
    EXPECT_NE(held->buffer, nullptr);
    EXPECT_EQ(idle->buffer, nullptr);
    EXPECT_EQ(VyFontCache::glyph('H', slanted), idle);
    EXPECT_EQ(fetched(idle), idleBefore);
    EXPECT_EQ(cache->usedBytes, held->width * held->rows + idle->width * idle->rows);
    vyGlyphRelease(idle);
    vyGlyphRelease(held);

    const int used = cache->usedBytes;
    for (int limit : {-1, used + 1, used, 0}) {
        cache->limit = limit;
        cache->cleanCache(false);
        EXPECT_EQ(held->buffer == nullptr, limit >= 0 && limit <= used) << limit;
    }
    EXPECT_EQ(cache->usedBytes, 0);
}

// The same random steps twice, fetching each text glyph by glyph and then as one run: texts
// with misses and with units the font lacks, in three sizes and four styles, some of them
// held for a while, purges under a small limit and forced ones. Each step fetches the same
// records (by their place in the store) with the same pixels, and leaves every record with the
// same holds, pixels present or not, and mapping.
TEST_F(VyFontCacheTest, RunsMatchGlyphByGlyph)
{
    const std::u16string alphabet = u"abcdefghijklm .,\u00E9\u0416\u05D0\u4E00";
    VyFontCache* cache = VyFontCache::instance();
    std::vector<std::string> steps[2];
    for (int run = 0; run < 2; ++run) {
        cache->setFontFile(VyString(DEJAVU_SANS));
        cache->limit = 3000;
        std::mt19937 rng(16);
        std::vector<std::vector<const GlyphBitmap*>> held;
        for (int step = 0; step < 200; ++step) {
            std::vector<unsigned short> units(rng() % 24);
            for (unsigned short& u : units)
                u = alphabet[rng() % alphabet.size()];
            const int style = int(rng() % 4);
            const VyFont font(10 + rng() % 3, style & 2, style & 1, false, false);
            std::vector<const GlyphBitmap*> got(units.size());
            if (run)
                vyGlyphRun(units.data(), int(units.size()), font, got.data());
            else
                for (size_t i = 0; i < units.size(); ++i)
                    got[i] = VyFontCache::glyph(units[i], font);
            std::string state;
            for (const GlyphBitmap* g : got)
                state += std::to_string(slotOf(cache, g)) + ":" + pixels(g) + " ";
            held.push_back(got);
            if (rng() % 2) {
                const size_t victim = rng() % held.size();
                for (const GlyphBitmap* g : held[victim])
                    vyGlyphRelease(g);
                held.erase(held.begin() + long(victim));
            }
            if (rng() % 3 == 0)
                cache->cleanCache(rng() % 4 == 0);
            for (const VyFonteUnitCache::BlockUnit& block : *cache->blockMM)
                for (int i = 0; i < block.count; ++i) {
                    const GlyphBitmap& r = block.records[i];
                    state += std::to_string(r.refCount) + (r.buffer ? "p" : "-") +
                             (cache->fontTable(r.unicode, VyFont(r.font)) == &r ? "m " : "  ");
                }
            steps[run].push_back(state + std::to_string(cache->usedBytes));
        }
        for (const std::vector<const GlyphBitmap*>& glyphs : held)
            for (const GlyphBitmap* g : glyphs)
                vyGlyphRelease(g);
    }
    for (size_t step = 0; step < steps[0].size(); ++step)
        ASSERT_EQ(steps[0][step], steps[1][step]) << "step " << step;
}

TEST(VyFontCacheConcurrency, RacingFirstCallsCreateOneSingleton)
{
    VyFontCache::instance(); // so that a rasteriser exists
    VyFreetype* engine = VyFontCache::m_pFtEngine;
    delete VyFontCache::instance();
    EXPECT_EQ(VyFontCache::m_pMyself, nullptr);

    std::atomic<bool> go{false};
    std::vector<VyFontCache*> seen(8);
    std::vector<std::thread> threads;
    for (VyFontCache*& s : seen)
        threads.emplace_back([&go, &s] {
            while (!go.load())
                std::this_thread::yield();
            s = VyFontCache::instance();
        });
    go = true;
    for (std::thread& t : threads)
        t.join();
    EXPECT_NE(VyFontCache::m_pMyself, nullptr);
    EXPECT_EQ(std::count(seen.begin(), seen.end(), VyFontCache::m_pMyself), 8);
    EXPECT_EQ(VyFontCache::m_pFtEngine, engine); // one rasteriser serves them all
}

using VyFontCacheDeathTest = VyFontCacheTest;

TEST_F(VyFontCacheDeathTest, MissingFontEndsTheProcess)
{
    unsetenv("VY_FONTLIB");
    EXPECT_EXIT((stdoutToStderr(), VyFontCache::instance()->setFontFile(VyString())),
                testing::ExitedWithCode(1),
                literal("[GUI-FRAMEWORK]: font not specified, set \"VY_FONTLIB\" env or call "
                        "VyApplication::setFontFile() !!!\n"));
}

// Two threads that pass the read-locked lookup before either takes the write lock both render
// the glyph. The test holds a read lock meanwhile, so both lookups happen and both renders
// wait; the threads are given time to get there, and the attempt is repeated with another
// unit should one of them have been late.
TEST(VyFontCacheConcurrency, SimultaneousMissesRenderTwice_Kept)
{
    VyFontCache* cache = VyFontCache::instance();
    cache->setFontFile(VyString(DEJAVU_SANS));
    bool twice = false;
    for (unsigned short code = 'a'; code < 'a' + 5 && !twice; ++code) {
        GlyphBitmap* got[2] = {};
        pthread_rwlock_rdlock(&VyFontCache::rwlock);
        std::thread first([&] { got[0] = VyFontCache::glyph(code, VyFont()); });
        std::thread second([&] { got[1] = VyFontCache::glyph(code, VyFont()); });
        std::this_thread::sleep_for(std::chrono::milliseconds(200));
        pthread_rwlock_unlock(&VyFontCache::rwlock);
        first.join();
        second.join();
        twice = got[0] != got[1];
        if (twice) {
            EXPECT_EQ(std::make_pair(got[0]->refCount, got[1]->refCount), std::make_pair(1, 1));
            EXPECT_EQ(fetched(got[0]), fetched(got[1]));
            const GlyphBitmap* mapped = cache->fontTable(code, VyFont());
            EXPECT_TRUE(mapped == got[0] || mapped == got[1]);
            EXPECT_EQ(cache->usedBytes, 2 * got[0]->width * got[0]->rows);
        }
        vyGlyphRelease(got[0]);
        vyGlyphRelease(got[1]);
    }
    EXPECT_TRUE(twice);
    cache->closeFontFile();
}

// Fetchers hold batches of glyphs (hits, misses, several sizes and styles) and check each
// against their first fetch of the same key, while a purger drops every unheld glyph's pixels.
// Two fetchers ask glyph by glyph, two fetch each batch as one run in one font.
TEST(VyFontCacheConcurrency, FetchAndReleaseWhilePurging)
{
    VyFontCache* cache = VyFontCache::instance();
    cache->setFontFile(VyString(DEJAVU_SANS));
    const std::u16string units = u"Aagj.W \u00E9\u0416\u05D0";
    const int sizes[] = {11, 16, 23};
    std::atomic<bool> stop{false};
    std::atomic<int> purges{0};
    std::vector<int> rounds(4);
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t)
        threads.emplace_back([&, t] {
            std::mt19937 rng(t);
            std::map<int, decltype(fetched(nullptr))> first;
            std::vector<const GlyphBitmap*> held;
            for (int round = 0; !stop.load(std::memory_order_relaxed); ++round) {
                // Threads 2 and 3 fetch the batch as one run, in the first unit's font.
                const bool run = t >= 2;
                unsigned short batch[8];
                int size[8], style[8];
                const GlyphBitmap* got[8];
                for (int i = 0; i < 8; ++i) {
                    size[i] = run && i ? size[0] : sizes[rng() % 3];
                    style[i] = run && i ? style[0] : int(rng() % 4);
                    // One in eight is a unit no other fetch asks for: a miss.
                    batch[i] = i == 3 && round % 2 ? char16_t(0x3000 + (t * 4099 + round) % 0x400)
                                                   : units[rng() % units.size()];
                    const VyFont font(size[i], style[i] & 2, style[i] & 1, rng() % 2, rng() % 2);
                    if (!run)
                        got[i] = VyFontCache::glyph(batch[i], font);
                    else if (i == 7)
                        vyGlyphRun(batch, 8, font, got);
                }
                for (int i = 0; i < 8; ++i) {
                    const GlyphBitmap* g = got[i];
                    held.push_back(g);
                    const auto seen = first.emplace(
                        VyFonteUnitCache::glyphKey(batch[i], size[i], style[i]), fetched(g));
                    EXPECT_EQ(fetched(g), seen.first->second);
                }
                std::this_thread::yield();
                for (const GlyphBitmap* g : held) // pixels still there while held
                    EXPECT_NE(g->buffer, nullptr);
                for (const GlyphBitmap* g : held)
                    vyGlyphRelease(g);
                held.clear();
                rounds[t] = round + 1;
            }
        });
    threads.emplace_back([&] {
        while (!stop.load(std::memory_order_relaxed)) {
            cache->cleanCache(true);
            ++purges;
            std::this_thread::sleep_for(std::chrono::microseconds(300));
        }
    });
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    stop = true;
    for (std::thread& t : threads)
        t.join();

    EXPECT_GT(purges.load(), 0);
    EXPECT_EQ(std::count(rounds.begin(), rounds.end(), 0), 0);
    for (const GlyphBitmap* g : cache->values())
        EXPECT_EQ(g->refCount, 0);
    cache->closeFontFile();
}
