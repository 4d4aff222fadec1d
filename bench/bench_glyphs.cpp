// The font cache beside references doing the same work, with DejaVu Sans at 16 pixels.
//
// Hit: VyFontCache::glyph of a cached glyph plus the release, over 64 characters in turn,
// beside FreeType's own cache (FTC_CMapCache_Lookup for the character's glyph index, then
// FTC_SBitCache_Lookup, the same character-to-bitmap work) and beside a minimal lookup in a
// std::unordered_map under a pthread reader lock with the same atomic hold and release.
// FreeType 2.12.1 leaves a weight counter of FTC_Manager uninitialised, which on reused heap
// memory turns every lookup into a reload; the reference cache therefore has its own
// FT_Library with a zeroing allocator, and the benchmark fails when the allocator is called
// during the timed loop (a reload, not a hit).
// Miss: rendering and inserting each of 52 letters at 32 sizes (the cache is emptied between
// rounds, untimed) beside FreeType's load + render + copy of the same glyphs with the same
// settings (pixel size set per glyph, forced auto-hinting, no transform), and beside the same
// plus the rasteriser's extra steps (a glyph copy rendered a second time), which shows the
// cache's own share of a miss.
// Two threads: the hit and the map lookup from two threads at once, in real time per hit;
// first a plain arithmetic loop shows whether two threads really run in parallel here (it
// should take half the real time per step), and the scaling is printed only when they do.
//
// After the run a ratio line per pair (bench_ratio.h) gives library time over reference time.
#include <benchmark/benchmark.h>

#include <ft2build.h>
#include FT_FREETYPE_H
#include FT_CACHE_H
#include FT_MODULE_H

#include <atomic>
#include <map>
#include <pthread.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <string>
#include <unordered_map>
#include <vector>

#include "bench_ratio.h"
#include "vyfontcache.h"

namespace
{

const char kFontPath[] = "/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf";
const char kHitText[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789.,;-";
constexpr int kHitCount = 64;
constexpr int kHitSize = 16;
const char kMissLetters[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";
constexpr int kMissLetterCount = 52;
constexpr int kMissSizes = 32; // 10 to 41 pixels

const VyFont hitFont()
{
    return VyFont(kHitSize, false, false, false, false);
}

void warmCache()
{
    for (int i = 0; i < kHitCount; ++i)
        vyGlyphRelease(VyFontCache::glyph(static_cast<unsigned char>(kHitText[i]), hitFont()));
}

// --- library -------------------------------------------------------------------------------

void BM_VyHit(benchmark::State& state)
{
    if (state.thread_index() == 0)
        warmCache();
    const VyFont font = hitFont();
    int i = state.thread_index() * 17;
    for (auto _ : state) {
        const GlyphBitmap* g = VyFontCache::glyph(static_cast<unsigned char>(kHitText[i]), font);
        benchmark::DoNotOptimize(g->buffer);
        vyGlyphRelease(g);
        i = (i + 1) & (kHitCount - 1);
    }
    state.SetItemsProcessed(state.iterations());
}

void BM_VyMiss(benchmark::State& state)
{
    VyFontCache* cache = VyFontCache::instance();
    cache->clean();
    int letter = 0, size = 0;
    for (auto _ : state) {
        const GlyphBitmap* g = VyFontCache::glyph(static_cast<unsigned char>(kMissLetters[letter]),
                                                  VyFont(10 + size, false, false, false, false));
        benchmark::DoNotOptimize(g->buffer);
        vyGlyphRelease(g);
        if (++letter == kMissLetterCount) {
            letter = 0;
            if (++size == kMissSizes) {
                size = 0;
                state.PauseTiming();
                cache->clean();
                state.ResumeTiming();
            }
        }
    }
    cache->clean();
    state.SetItemsProcessed(state.iterations());
}

// --- FreeType's cache ------------------------------------------------------------------------

std::atomic<long> ftcAllocations{0};

void* zeroedAlloc(FT_Memory, long size)
{
    ftcAllocations.fetch_add(1, std::memory_order_relaxed);
    return calloc(1, size_t(size));
}

void zeroedFree(FT_Memory, void* block)
{
    free(block);
}

void* zeroedRealloc(FT_Memory, long oldSize, long newSize, void* block)
{
    ftcAllocations.fetch_add(1, std::memory_order_relaxed);
    void* p = realloc(block, size_t(newSize));
    if (p && newSize > oldSize)
        memset(static_cast<char*>(p) + oldSize, 0, size_t(newSize - oldSize));
    return p;
}

FT_Error requestFace(FTC_FaceID, FT_Library library, FT_Pointer, FT_Face* face)
{
    return FT_New_Face(library, kFontPath, 0, face);
}

struct FtcReference {
    FT_MemoryRec_ memory = {nullptr, zeroedAlloc, zeroedFree, zeroedRealloc};
    FT_Library library = nullptr;
    FTC_Manager manager = nullptr;
    FTC_CMapCache cmaps = nullptr;
    FTC_SBitCache sbits = nullptr;
    FTC_ImageTypeRec type;

    FtcReference()
    {
        if (FT_New_Library(&memory, &library))
            abort();
        FT_Add_Default_Modules(library);
        if (FTC_Manager_New(library, 1, 1, 0, requestFace, nullptr, &manager) ||
            FTC_CMapCache_New(manager, &cmaps) || FTC_SBitCache_New(manager, &sbits))
            abort();
        type.face_id = const_cast<char*>(kFontPath);
        type.width = kHitSize;
        type.height = kHitSize;
        type.flags = FT_LOAD_FORCE_AUTOHINT;
    }

    FTC_SBit lookup(unsigned code)
    {
        const FT_UInt index = FTC_CMapCache_Lookup(cmaps, type.face_id, -1, code);
        FTC_SBit sbit = nullptr;
        FTC_SBitCache_Lookup(sbits, &type, index, &sbit, nullptr);
        return sbit;
    }
};

FtcReference& ftc()
{
    static FtcReference reference;
    return reference;
}

void BM_FtcHit(benchmark::State& state)
{
    FtcReference& r = ftc();
    // Same bitmaps as the library's, or the comparison is off.
    for (int i = 0; i < kHitCount; ++i) {
        const FTC_SBit s = r.lookup(static_cast<unsigned char>(kHitText[i]));
        const GlyphBitmap* g =
            VyFontCache::glyph(static_cast<unsigned char>(kHitText[i]), hitFont());
        const bool same = s && s->width == g->width && s->height == g->rows && s->left == g->left &&
                          s->top == g->top && s->xadvance == g->advance;
        vyGlyphRelease(g);
        if (!same) {
            state.SkipWithError("FreeType's cache renders other bitmaps than the library");
            return;
        }
    }
    const long before = ftcAllocations.load();
    int i = 0;
    for (auto _ : state) {
        const FTC_SBit s = r.lookup(static_cast<unsigned char>(kHitText[i]));
        benchmark::DoNotOptimize(s->buffer);
        i = (i + 1) & (kHitCount - 1);
    }
    if (ftcAllocations.load() != before)
        state.SkipWithError("FreeType's cache allocated during the loop: lookups were not hits");
    state.SetItemsProcessed(state.iterations());
}

// --- minimal reader-locked map ----------------------------------------------------------------

struct MapReference {
    pthread_rwlock_t lock = PTHREAD_RWLOCK_INITIALIZER;
    std::unordered_map<int, GlyphBitmap*> map;
    std::vector<GlyphBitmap> records;

    MapReference() : records(kHitCount)
    {
        for (int i = 0; i < kHitCount; ++i) {
            const unsigned short code = static_cast<unsigned char>(kHitText[i]);
            GlyphBitmap* g = VyFontCache::glyph(code, hitFont());
            records[i] = *g; // shares the pixels, which stay held
            records[i].refCount = 0;
            map[VyFonteUnitCache::glyphKey(code, kHitSize, 0)] = &records[i];
        }
    }

    const GlyphBitmap* glyph(unsigned short code, const VyFont& font)
    {
        pthread_rwlock_rdlock(&lock);
        auto it = map.find(VyFonteUnitCache::glyphKey(code, font.fontSize(), font.propertyFlag()));
        GlyphBitmap* g = it->second;
        vyGlyphHold(g);
        pthread_rwlock_unlock(&lock);
        return g;
    }
};

MapReference& mapReference()
{
    static MapReference reference;
    return reference;
}

void BM_MapHit(benchmark::State& state)
{
    MapReference& r = mapReference();
    const VyFont font = hitFont();
    int i = state.thread_index() * 17;
    for (auto _ : state) {
        const GlyphBitmap* g = r.glyph(static_cast<unsigned char>(kHitText[i]), font);
        benchmark::DoNotOptimize(g->buffer);
        vyGlyphRelease(g);
        i = (i + 1) & (kHitCount - 1);
    }
    state.SetItemsProcessed(state.iterations());
}

// --- raw FreeType rendering ---------------------------------------------------------------------

// `sameSteps` adds what the library's rasteriser does beyond the plain path: a copy of the
// loaded glyph (FT_Get_Glyph) that is rendered again (FT_Glyph_To_Bitmap) and copied from.
void freetypeRender(benchmark::State& state, bool sameSteps)
{
    FT_Library library;
    FT_Face face;
    if (FT_Init_FreeType(&library) || FT_New_Face(library, kFontPath, 0, &face)) {
        state.SkipWithError("FreeType cannot open the font");
        return;
    }
    std::vector<unsigned char*> kept;
    kept.reserve(kMissLetterCount * kMissSizes);
    int letter = 0, size = 0;
    for (auto _ : state) {
        FT_Set_Pixel_Sizes(face, 0, FT_UInt(10 + size));
        FT_Set_Transform(face, nullptr, nullptr);
        FT_Load_Glyph(face,
                      FT_Get_Char_Index(face, static_cast<unsigned char>(kMissLetters[letter])),
                      FT_LOAD_FORCE_AUTOHINT);
        FT_Glyph glyph = nullptr;
        if (sameSteps)
            FT_Get_Glyph(face->glyph, &glyph);
        FT_Render_Glyph(face->glyph, FT_RENDER_MODE_NORMAL);
        if (sameSteps)
            FT_Glyph_To_Bitmap(&glyph, FT_RENDER_MODE_NORMAL, nullptr, 1);
        const FT_Bitmap& b =
            sameSteps ? reinterpret_cast<FT_BitmapGlyph>(glyph)->bitmap : face->glyph->bitmap;
        const size_t bytes = size_t(b.rows) * size_t(b.pitch);
        unsigned char* copy = static_cast<unsigned char*>(malloc(bytes));
        memcpy(copy, b.buffer, bytes);
        kept.push_back(copy);
        if (glyph)
            FT_Done_Glyph(glyph);
        if (++letter == kMissLetterCount) {
            letter = 0;
            if (++size == kMissSizes) {
                size = 0;
                state.PauseTiming();
                for (unsigned char* p : kept)
                    free(p);
                kept.clear();
                state.ResumeTiming();
            }
        }
    }
    for (unsigned char* p : kept)
        free(p);
    FT_Done_Face(face);
    FT_Done_FreeType(library);
    state.SetItemsProcessed(state.iterations());
}

void BM_FreetypeRender(benchmark::State& state)
{
    freetypeRender(state, false);
}

void BM_FreetypeRenderSameSteps(benchmark::State& state)
{
    freetypeRender(state, true);
}

// --- parallelism check ------------------------------------------------------------------------

void BM_Arithmetic(benchmark::State& state)
{
    unsigned x = unsigned(state.thread_index()) + 1;
    for (auto _ : state) {
        for (int k = 0; k < 64; ++k)
            x = x * 1664525u + 1013904223u;
        benchmark::DoNotOptimize(x);
    }
}

void registerBenchmarks()
{
    using benchmark::RegisterBenchmark;
    RegisterBenchmark("glyphs/hit/vy", BM_VyHit);
    RegisterBenchmark("glyphs/hit/ftc", BM_FtcHit);
    RegisterBenchmark("glyphs/hit/map", BM_MapHit);
    RegisterBenchmark("glyphs/miss/vy", BM_VyMiss);
    RegisterBenchmark("glyphs/miss/freetype", BM_FreetypeRender);
    RegisterBenchmark("glyphs/miss/freetype_same_steps", BM_FreetypeRenderSameSteps);
    // Real time per step: two threads in parallel halve it.
    RegisterBenchmark("glyphs/parallel/arithmetic_1", BM_Arithmetic)->UseRealTime();
    RegisterBenchmark("glyphs/parallel/arithmetic_2", BM_Arithmetic)->Threads(2)->UseRealTime();
    RegisterBenchmark("glyphs/parallel/hit_vy_1", BM_VyHit)->UseRealTime();
    RegisterBenchmark("glyphs/parallel/hit_vy_2", BM_VyHit)->Threads(2)->UseRealTime();
    RegisterBenchmark("glyphs/parallel/hit_map_1", BM_MapHit)->UseRealTime();
    RegisterBenchmark("glyphs/parallel/hit_map_2", BM_MapHit)->Threads(2)->UseRealTime();
}

const vybench::RatioPair kPairs[] = {
    {"glyph_hit_vs_ftc", "glyphs/hit/vy", "glyphs/hit/ftc", 1.0},
    {"glyph_hit_vs_map", "glyphs/hit/vy", "glyphs/hit/map", 1.5},
    {"glyph_miss_vs_freetype", "glyphs/miss/vy", "glyphs/miss/freetype", 1.1},
    {"glyph_miss_vs_freetype_same_steps", "glyphs/miss/vy", "glyphs/miss/freetype_same_steps", 1.1},
};

// The ratio reporter, also keeping real time per iteration for the two-thread comparison.
class GlyphReporter : public vybench::RatioReporter
{
public:
    void ReportRuns(const std::vector<Run>& runs) override
    {
        RatioReporter::ReportRuns(runs);
        for (const Run& run : runs) {
            if (run.error_occurred)
                continue;
            const double seconds =
                run.GetAdjustedRealTime() / benchmark::GetTimeUnitMultiplier(run.time_unit);
            const std::string name = run.run_name.function_name;
            if (run.run_type == Run::RT_Aggregate && run.aggregate_name == "median")
                realMedians[name] = seconds;
            else if (run.run_type != Run::RT_Aggregate)
                realSingles[name] = seconds;
        }
    }

    double realTime(const std::string& name) const
    {
        auto m = realMedians.find(name);
        if (m != realMedians.end())
            return m->second;
        auto s = realSingles.find(name);
        return s != realSingles.end() ? s->second : -1.0;
    }

private:
    std::map<std::string, double> realMedians, realSingles;
};

} // namespace

int main(int argc, char** argv)
{
    VyFontCache::instance()->setFontFile(VyString(kFontPath));
    registerBenchmarks();
    GlyphReporter reporter;
    const int status = vybench::runWithRatios(argc, argv, kPairs, reporter);

    // Two threads: real time per step with two threads over one thread; 0.5 is perfect
    // scaling. Quoted only when the arithmetic loop shows the threads really ran in parallel.
    const double a1 = reporter.realTime("glyphs/parallel/arithmetic_1");
    const double a2 = reporter.realTime("glyphs/parallel/arithmetic_2");
    if (a1 > 0 && a2 > 0) {
        printf("parallel check: arithmetic loop, two threads over one %.2f (0.5 when parallel)\n",
               a2 / a1);
        if (a2 / a1 > 0.65) {
            printf("two threads did not run in parallel: scaling not reported\n");
        } else {
            for (const char* side : {"vy", "map"}) {
                const double one =
                    reporter.realTime(std::string("glyphs/parallel/hit_") + side + "_1");
                const double two =
                    reporter.realTime(std::string("glyphs/parallel/hit_") + side + "_2");
                if (one > 0 && two > 0)
                    printf("ratio glyph_hit_two_threads_%s %.2f goal 1.0\n", side, two / one);
            }
        }
    }
    return status;
}
