// The text benchmarks: the font cache, right-to-left shaping, the font engine, line division and
// the whole road from text to placed records, beside references doing the same work.
//
// Glyphs (glyphs/...), with DejaVu Sans at 16 pixels.
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
// settings (pixel size set per glyph, forced auto-hinting, no transform): the rasteriser's own
// steps, so the ratio shows the cache's share of a miss.
// Two threads: the hit and the map lookup from two threads at once, in real time per hit;
// first a plain arithmetic loop shows whether two threads really run in parallel here (it
// should take half the real time per step), and the scaling is printed only when they do.
//
// Shaping (shaping/...), on 64 KB of text (32 768 units), beside a plain loop over the same
// units.
// shaping/arabic/vy: arabicRulesConvert on Arabic words (letters of the main and extended
// tables, lam-alef pairs, now and then a mark) separated by spaces, with a number or a Latin
// word here and there. shaping/hebrew/vy: reversalHebrew on Hebrew words in the same setting.
// The references, shaping/<script>/copy_reverse, are the floor: the same units copied into a
// scratch buffer and written back in reverse order, the memory traffic of the work copy and of
// the reordering without classifying a unit or looking anything up. Both sides first restore
// the text, since the functions work in place; items are units.
//
// The engine, engine/resolve/vy: VyFontEngine construction, resloveText and destruction on a
// 10 000-unit paragraph of Latin, Thai and CJK whose glyphs are already in the cache (warm). The
// floor, engine/resolve/map_lookup, looks the same glyph keys up in a std::unordered_map of the
// same records and collects the pointers in a reserved vector: what any engine must do at least.
//
// Line division and painting, layout/<wrap>/vy: on 100 000 units of Latin and CJK words (one space
// apart, a newline after about one word in forty) whose glyphs are warm in the cache, marks the
// division stale with setTextMinRect(0, 0, 320, 240) and asks for paintInfoList(), which divides
// and places every record; <wrap> is "wrap" (word wrap at 320 pixels) or "nowrap". The box is
// the same every time, as when a widget lays its text out again, so every line comes out as
// before and division leaves its string, glyphs, rectangle and record in place. The floor,
// layout/<wrap>/floor, runs a plain loop over the same glyph pointers that sums advances plus
// spacing and counts a break at every newline and, with wrap, whenever the pen passes 320
// pixels: the least any line divider does.
//
// The whole road, road/vy: on a 10 000-character Latin paragraph in unifont at 16 pixels,
// glyphs warm: VyFontMetrics construction (script rules and glyph lookups), division wrapped at
// 320 pixels, the paint list, destruction. The reference, road/hb_shape, is HarfBuzz's hb_shape
// of the same paragraph with the same font file and size into a fresh buffer: what a full
// shaping engine pays before any line is divided. Items of layout and road are UTF-16 units.
//
// The font cache holds one font file at a time: each of the three groups above (glyphs, engine,
// layout) takes it over in the setup of its benchmarks (see enterGroup).
// After the run a ratio line per pair (bench_ratio.h) gives library time over reference time.
#include <benchmark/benchmark.h>

#include <ft2build.h>
#include FT_FREETYPE_H
#include FT_CACHE_H
#include FT_MODULE_H
#include <hb.h>

#include <algorithm>
#include <atomic>
#include <map>
#include <memory>
#include <pthread.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <string>
#include <unordered_map>
#include <vector>

#include "bench_random.h"
#include "bench_ratio.h"
#include "vyfontcache.h"
#include "vyfontengine.h"
#include "vyfonteunitcache.h"
#include "vyfontmetrics.h"
#include "vyshaping.h"

namespace
{

using vybench::Random;

const char kDejaVuPath[] = "/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf";
const char kUnifontPath[] = "/usr/share/fonts/opentype/unifont/unifont.otf";
// The size and style of every lookup but the glyph misses, which walk the sizes.
constexpr int kPixels = 16;
const VyFont kFont(kPixels, false, false, false, false);

// --- glyphs: library -----------------------------------------------------------------------------

const char kHitText[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789.,;-";
constexpr int kHitCount = 64;
const char kMissLetters[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";
constexpr int kMissLetterCount = 52;
constexpr int kMissSizes = 32; // 10 to 41 pixels

void warmCache()
{
    for (int i = 0; i < kHitCount; ++i)
        vyGlyphRelease(VyFontCache::glyph(static_cast<unsigned char>(kHitText[i]), kFont));
}

void BM_VyHit(benchmark::State& state)
{
    if (state.thread_index() == 0)
        warmCache();
    int i = state.thread_index() * 17;
    for (auto _ : state) {
        const GlyphBitmap* g = VyFontCache::glyph(static_cast<unsigned char>(kHitText[i]), kFont);
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

// --- glyphs: FreeType's cache --------------------------------------------------------------------

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
    return FT_New_Face(library, kDejaVuPath, 0, face);
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
        type.face_id = const_cast<char*>(kDejaVuPath);
        type.width = kPixels;
        type.height = kPixels;
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
        const GlyphBitmap* g = VyFontCache::glyph(static_cast<unsigned char>(kHitText[i]), kFont);
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

// --- glyphs: minimal reader-locked map -----------------------------------------------------------

struct MapReference {
    pthread_rwlock_t lock = PTHREAD_RWLOCK_INITIALIZER;
    std::unordered_map<int, GlyphBitmap*> map;
    std::vector<GlyphBitmap> records;

    MapReference() : records(kHitCount)
    {
        for (int i = 0; i < kHitCount; ++i) {
            const unsigned short code = static_cast<unsigned char>(kHitText[i]);
            GlyphBitmap* g = VyFontCache::glyph(code, kFont);
            records[i] = *g; // shares the pixels, which stay held
            records[i].refCount = 0;
            map[VyFonteUnitCache::glyphKey(code, kPixels, 0)] = &records[i];
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

// Built when the glyph group takes the cache over (enterGroup).
std::unique_ptr<MapReference> heldMap;

void BM_MapHit(benchmark::State& state)
{
    MapReference& r = *heldMap;
    int i = state.thread_index() * 17;
    for (auto _ : state) {
        const GlyphBitmap* g = r.glyph(static_cast<unsigned char>(kHitText[i]), kFont);
        benchmark::DoNotOptimize(g->buffer);
        vyGlyphRelease(g);
        i = (i + 1) & (kHitCount - 1);
    }
    state.SetItemsProcessed(state.iterations());
}

// --- glyphs: raw FreeType rendering --------------------------------------------------------------

void BM_FreetypeRender(benchmark::State& state)
{
    FT_Library library;
    FT_Face face;
    if (FT_Init_FreeType(&library) || FT_New_Face(library, kDejaVuPath, 0, &face)) {
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
        FT_Render_Glyph(face->glyph, FT_RENDER_MODE_NORMAL);
        const FT_Bitmap& b = face->glyph->bitmap;
        const size_t bytes = size_t(b.rows) * size_t(b.pitch);
        unsigned char* copy = static_cast<unsigned char*>(malloc(bytes));
        memcpy(copy, b.buffer, bytes);
        kept.push_back(copy);
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

// --- glyphs: parallelism check -------------------------------------------------------------------

void BM_Arithmetic(benchmark::State& state)
{
    unsigned x = unsigned(state.thread_index()) + 1;
    for (auto _ : state) {
        for (int k = 0; k < 64; ++k)
            x = x * 1664525u + 1013904223u;
        benchmark::DoNotOptimize(x);
    }
}

// --- shaping and the engine ----------------------------------------------------------------------

using Units = std::vector<unsigned short>;

constexpr int kUnits = 64 * 1024 / sizeof(unsigned short);

// Words of 2 to 7 letters from `letter`, one space apart; after about one word in eight a
// number of 1 to 4 digits, after about one in twelve a Latin word.
template <typename Letter> Units makeText(Letter letter)
{
    Random random(2024);
    Units text;
    while (int(text.size()) < kUnits) {
        for (uint32_t i = 2 + random.below(6); i > 0; --i)
            letter(random, text);
        text.push_back(' ');
        if (random.below(8) == 0) {
            for (uint32_t i = 1 + random.below(4); i > 0; --i)
                text.push_back(static_cast<unsigned short>('0' + random.below(10)));
            text.push_back(' ');
        }
        if (random.below(12) == 0) {
            for (uint32_t i = 2 + random.below(5); i > 0; --i)
                text.push_back(static_cast<unsigned short>('a' + random.below(26)));
            text.push_back(' ');
        }
    }
    text.resize(kUnits);
    return text;
}

const Units& arabicText()
{
    static const Units text = makeText([](Random& random, Units& out) {
        static const unsigned short extended[] = {0x067E, 0x0686, 0x0698, 0x06A9, 0x06AF, 0x06CC};
        static const unsigned short alefs[] = {0x0622, 0x0623, 0x0625, 0x0627};
        const uint32_t kind = random.below(20);
        if (kind == 0) {
            out.push_back(0x0644);
            out.push_back(alefs[random.below(4)]);
        } else if (kind == 1) {
            out.push_back(extended[random.below(6)]);
        } else if (kind == 2) {
            out.push_back(0x064E); // fatha
        } else {
            // U+0621 to U+064A without U+063B to U+0640, which have no forms.
            const uint32_t i = random.below(36);
            out.push_back(static_cast<unsigned short>(0x0621 + (i < 26 ? i : i + 6)));
        }
    });
    return text;
}

const Units& hebrewText()
{
    static const Units text = makeText([](Random& random, Units& out) {
        out.push_back(static_cast<unsigned short>(0x05D0 + random.below(27))); // alef to tav
    });
    return text;
}

template <void (*convert)(unsigned short*, int)>
void BM_Library(benchmark::State& state, const Units& text)
{
    Units buffer(text.size());
    for (auto _ : state) {
        memcpy(buffer.data(), text.data(), text.size() * sizeof(text[0]));
        convert(buffer.data(), int(buffer.size()));
        benchmark::DoNotOptimize(buffer.data());
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * int64_t(text.size()));
    state.SetBytesProcessed(state.iterations() * int64_t(text.size() * sizeof(text[0])));
}

void BM_CopyReverse(benchmark::State& state, const Units& text)
{
    Units buffer(text.size()), scratch(text.size());
    for (auto _ : state) {
        memcpy(buffer.data(), text.data(), text.size() * sizeof(text[0]));
        memcpy(scratch.data(), buffer.data(), buffer.size() * sizeof(buffer[0]));
        std::reverse_copy(scratch.begin(), scratch.end(), buffer.begin());
        benchmark::DoNotOptimize(buffer.data());
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * int64_t(text.size()));
    state.SetBytesProcessed(state.iterations() * int64_t(text.size() * sizeof(text[0])));
}

constexpr int kParagraphUnits = 10000;

const VyString& paragraph()
{
    static const VyString text = [] {
        Random random(2024);
        VyVector<VyUcs2> units;
        while (units.size() < kParagraphUnits) {
            const uint32_t kind = random.below(10);
            if (kind < 6)
                units.append(VyUcs2('a' + random.below(26)));
            else if (kind < 8)
                units.append(VyUcs2(0x0E01 + random.below(46))); // Thai consonants
            else if (kind < 9)
                units.append(VyUcs2(0x4E00 + random.below(200))); // ideographs
            else
                units.append(VyUcs2(' '));
        }
        return VyString(units.constData(), units.size());
    }();
    return text;
}

// Renders every glyph of the paragraph, so both sides run warm: the engine group's state.
void warmParagraph()
{
    VyFontEngine engine;
    engine.resloveText(paragraph(), kFont);
}

void BM_EngineResolve(benchmark::State& state)
{
    for (auto _ : state) {
        VyFontEngine engine;
        benchmark::DoNotOptimize(engine.resloveText(paragraph(), kFont).constData());
    }
    state.SetItemsProcessed(state.iterations() * kParagraphUnits);
}

void BM_MapLookup(benchmark::State& state)
{
    std::unordered_map<int, const GlyphBitmap*> map;
    const VyString& text = paragraph();
    for (int i = 0; i < text.size(); ++i) {
        GlyphBitmap* g = VyFontCache::glyph(text.at(i), kFont);
        map[VyFonteUnitCache::glyphKey(text.at(i), kFont.fontSize(), kFont.propertyFlag())] = g;
        vyGlyphRelease(g);
    }
    std::vector<const GlyphBitmap*> glyphs;
    for (auto _ : state) {
        glyphs.clear();
        glyphs.reserve(size_t(text.size()));
        for (int i = 0; i < text.size(); ++i)
            glyphs.push_back(map.find(VyFonteUnitCache::glyphKey(text.at(i), kFont.fontSize(),
                                                                 kFont.propertyFlag()))
                                 ->second);
        benchmark::DoNotOptimize(glyphs.data());
    }
    state.SetItemsProcessed(state.iterations() * kParagraphUnits);
}

// --- layout and the road -------------------------------------------------------------------------

constexpr int kMixedUnits = 100000;
constexpr int kLatinUnits = 10000;
constexpr int kWidth = 320;

// Words until `units` units: Latin words of 2 to 9 letters, or, when `cjk`, one word in three
// of 1 to 4 ideographs; a space between words, now and then a newline instead when `newlines`.
VyString words(int units, bool cjk, bool newlines)
{
    Random random(1121);
    VyVector<VyUcs2> text;
    while (text.size() < units) {
        if (cjk && random.below(3) == 0) {
            for (uint32_t i = 1 + random.below(4); i > 0; --i)
                text.append(VyUcs2(0x4E00 + random.below(400)));
        } else {
            for (uint32_t i = 2 + random.below(8); i > 0; --i)
                text.append(VyUcs2('a' + random.below(26)));
        }
        text.append(newlines && random.below(40) == 0 ? VyUcs2('\n') : VyUcs2(' '));
    }
    text.resize(units);
    return VyString(text.constData(), text.size());
}

const VyString& mixedText()
{
    static const VyString text = words(kMixedUnits, true, true);
    return text;
}

const VyString& latinText()
{
    static const VyString text = words(kLatinUnits, false, false);
    return text;
}

// The mixed text measured in unifont; its glyphs stay held (and warm) while the layout group
// has the cache (enterGroup).
std::unique_ptr<VyFontMetrics> heldMixed;

void BM_Layout(benchmark::State& state, bool wrap)
{
    VyFontMetrics& m = *heldMixed;
    m.setWorpWrap(wrap);
    int lines = 0;
    for (auto _ : state) {
        m.setTextMinRect(0, 0, kWidth, 240);
        lines = m.paintInfoList().size();
        benchmark::DoNotOptimize(lines);
    }
    state.counters["lines"] = lines;
    state.SetItemsProcessed(state.iterations() * kMixedUnits);
}

void BM_LayoutFloor(benchmark::State& state, bool wrap)
{
    VyFontMetrics& m = *heldMixed;
    const VyVector<GlyphBitmap const*> glyphs = m.glyphBitmap();
    const GlyphBitmap* const* g = glyphs.constData();
    const int n = glyphs.size();
    const int ls = m.letterSpacing;
    int breaks = 0;
    for (auto _ : state) {
        breaks = 0;
        int x = 0;
        for (int i = 0; i < n; ++i) {
            const int w = g[i]->advance + ls;
            if (g[i]->unicode == '\n' || (wrap && x + w > kWidth)) {
                ++breaks;
                x = 0;
            }
            x += w;
        }
        benchmark::DoNotOptimize(x);
        benchmark::DoNotOptimize(breaks);
    }
    state.counters["lines"] = breaks + 1;
    state.SetItemsProcessed(state.iterations() * kMixedUnits);
}

// Measures the paragraph once, so the road runs warm.
void warmLatin()
{
    VyFontMetrics m(latinText(), kFont, 0, 0);
    if (m.glyphBitmap().size() != kLatinUnits)
        fprintf(stderr, "bench_text: the paragraph's glyphs did not resolve\n");
}

void BM_Road(benchmark::State& state)
{
    for (auto _ : state) {
        VyFontMetrics m(latinText(), kFont, 0, 0);
        m.setWorpWrap(true);
        m.setTextMinRect(0, 0, kWidth, 240);
        benchmark::DoNotOptimize(m.paintInfoList().size());
    }
    state.SetItemsProcessed(state.iterations() * kLatinUnits);
}

void BM_RoadHarfBuzz(benchmark::State& state)
{
    hb_blob_t* blob = hb_blob_create_from_file(kUnifontPath);
    hb_face_t* face = hb_face_create(blob, 0);
    hb_font_t* font = hb_font_create(face);
    hb_font_set_scale(font, 16 * 64, 16 * 64);
    const VyString& text = latinText();
    const uint16_t* units = reinterpret_cast<const uint16_t*>(text.unicode());
    unsigned glyphs = 0;
    for (auto _ : state) {
        hb_buffer_t* buffer = hb_buffer_create();
        hb_buffer_add_utf16(buffer, units, text.size(), 0, text.size());
        hb_buffer_guess_segment_properties(buffer);
        hb_shape(font, buffer, nullptr, 0);
        hb_buffer_get_glyph_positions(buffer, &glyphs);
        benchmark::DoNotOptimize(glyphs);
        hb_buffer_destroy(buffer);
    }
    if (glyphs != unsigned(kLatinUnits))
        state.SkipWithError("hb_shape did not give one glyph per unit");
    hb_font_destroy(font);
    hb_face_destroy(face);
    hb_blob_destroy(blob);
    state.SetItemsProcessed(state.iterations() * kLatinUnits);
}

// --- the font cache between the groups -----------------------------------------------------------

// The font cache holds one font file at a time, and setFontFile frees every record, held or
// not. Three groups of benchmarks use it, each with its own font and state: the glyphs DejaVu
// Sans and the reader-locked map, the engine unifont with the paragraph warm, the layout unifont
// with the mixed text measured and held and the Latin paragraph warm. Random interleaving runs
// them in any order, so every benchmark of a group has a setup (outside the timing) that hands
// the cache to its group: on a change it drops what the last group holds, opens the group's
// font, which empties the cache, and builds the group's state again.
enum class Group { None, Glyphs, Engine, Layout };
Group cacheOwner = Group::None;

void enterGroup(Group group)
{
    if (cacheOwner == group)
        return;
    heldMap.reset();
    heldMixed.reset();
    VyFontCache::instance()->setFontFile(
        VyString(group == Group::Glyphs ? kDejaVuPath : kUnifontPath));
    cacheOwner = group;
    if (group == Group::Glyphs) {
        heldMap.reset(new MapReference);
    } else if (group == Group::Engine) {
        warmParagraph();
    } else {
        heldMixed.reset(new VyFontMetrics(mixedText(), kFont, 2, 1));
        warmLatin();
    }
}

template <Group group> void setUp(const benchmark::State&)
{
    enterGroup(group);
}

void registerBenchmarks()
{
    using benchmark::RegisterBenchmark;
    const auto glyphs = setUp<Group::Glyphs>;
    RegisterBenchmark("glyphs/hit/vy", BM_VyHit)->Setup(glyphs);
    RegisterBenchmark("glyphs/hit/ftc", BM_FtcHit)->Setup(glyphs);
    RegisterBenchmark("glyphs/hit/map", BM_MapHit)->Setup(glyphs);
    RegisterBenchmark("glyphs/miss/vy", BM_VyMiss)->Setup(glyphs);
    RegisterBenchmark("glyphs/miss/freetype", BM_FreetypeRender);
    // Real time per step: two threads in parallel halve it.
    RegisterBenchmark("glyphs/parallel/arithmetic_1", BM_Arithmetic)->UseRealTime();
    RegisterBenchmark("glyphs/parallel/arithmetic_2", BM_Arithmetic)->Threads(2)->UseRealTime();
    RegisterBenchmark("glyphs/parallel/hit_vy_1", BM_VyHit)->Setup(glyphs)->UseRealTime();
    RegisterBenchmark("glyphs/parallel/hit_vy_2", BM_VyHit)
        ->Setup(glyphs)
        ->Threads(2)
        ->UseRealTime();
    RegisterBenchmark("glyphs/parallel/hit_map_1", BM_MapHit)->Setup(glyphs)->UseRealTime();
    RegisterBenchmark("glyphs/parallel/hit_map_2", BM_MapHit)
        ->Setup(glyphs)
        ->Threads(2)
        ->UseRealTime();
    RegisterBenchmark("shaping/arabic/vy", BM_Library<arabicRulesConvert>, arabicText());
    RegisterBenchmark("shaping/arabic/copy_reverse", BM_CopyReverse, arabicText());
    RegisterBenchmark("shaping/hebrew/vy", BM_Library<reversalHebrew>, hebrewText());
    RegisterBenchmark("shaping/hebrew/copy_reverse", BM_CopyReverse, hebrewText());
    const auto engine = setUp<Group::Engine>;
    RegisterBenchmark("engine/resolve/vy", BM_EngineResolve)->Setup(engine);
    RegisterBenchmark("engine/resolve/map_lookup", BM_MapLookup)->Setup(engine);
    const auto layout = setUp<Group::Layout>;
    RegisterBenchmark("layout/wrap/vy", BM_Layout, true)->Setup(layout);
    RegisterBenchmark("layout/wrap/floor", BM_LayoutFloor, true)->Setup(layout);
    RegisterBenchmark("layout/nowrap/vy", BM_Layout, false)->Setup(layout);
    RegisterBenchmark("layout/nowrap/floor", BM_LayoutFloor, false)->Setup(layout);
    RegisterBenchmark("road/vy", BM_Road)->Setup(layout);
    RegisterBenchmark("road/hb_shape", BM_RoadHarfBuzz);
}

const vybench::RatioPair kPairs[] = {
    {"glyph_hit_vs_ftc", "glyphs/hit/vy", "glyphs/hit/ftc", 1.0},
    {"glyph_hit_vs_map", "glyphs/hit/vy", "glyphs/hit/map", 1.5},
    {"glyph_miss_vs_freetype", "glyphs/miss/vy", "glyphs/miss/freetype", 1.1},
    // The floor is a vectorised copy at memory speed; shaping classifies every unit and searches
    // both join sets for every letter, reordering tests every unit at least twice. The bounds say
    // how far above the floor that work may lie on these machines: about 30 ns a unit for Arabic,
    // 5 ns for Hebrew.
    {"shaping_arabic_vs_copy_reverse", "shaping/arabic/vy", "shaping/arabic/copy_reverse", 150.0},
    {"shaping_hebrew_vs_copy_reverse", "shaping/hebrew/vy", "shaping/hebrew/copy_reverse", 20.0},
    // The engine also copies the text, scans it for right-to-left letters, takes the cache's
    // read lock for the run, holds a reference per glyph and gives them back.
    {"resolve_vs_map_lookup", "engine/resolve/vy", "engine/resolve/map_lookup", 3.0},
    // Division also classifies every unit, finds the word ends around each break, compares
    // each line's text and glyphs with those it had, and writes its rectangle and record;
    // placing walks the records once more.
    {"layout_wrap_vs_floor", "layout/wrap/vy", "layout/wrap/floor", 5.0},
    {"layout_nowrap_vs_floor", "layout/nowrap/vy", "layout/nowrap/floor", 4.0},
    {"road_vs_hb_shape", "road/vy", "road/hb_shape", 0.5},
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
        return medianOrSingle(realMedians, realSingles, name);
    }

private:
    std::map<std::string, double> realMedians, realSingles;
};

} // namespace

int main(int argc, char** argv)
{
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
