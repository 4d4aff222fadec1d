// Line division and painting, and the whole road from text to placed records.
//
// layout/<wrap>/vy: on 100 000 units of Latin and CJK words (one space apart, a newline after
// about one word in forty) whose glyphs are warm in the cache, marks the division stale with
// setTextMinRect(0, 0, 320, 240) and asks for paintInfoList(), which divides and places every
// record; <wrap> is "wrap" (word wrap at 320 pixels) or "nowrap". The floor,
// layout/<wrap>/floor, runs a plain loop over the same glyph pointers that sums advances plus
// spacing and counts a break at every newline and, with wrap, whenever the pen passes 320
// pixels: the least any line divider does.
//
// road/vy: the whole road on a 10 000-character Latin paragraph in unifont at 16 pixels, glyphs
// warm: VyFontMetrics construction (script rules and glyph lookups), division wrapped
// at 320 pixels, the paint list, destruction. The reference, road/hb_shape, is HarfBuzz's
// hb_shape of the same paragraph with the same font file and size into a fresh buffer: what a
// full shaping engine pays before any line is divided.
//
// Items are UTF-16 units. After the run a ratio line per pair (bench_ratio.h) gives library
// time over reference time.
#include <benchmark/benchmark.h>

#include <hb.h>

#include <stdint.h>
#include <stdio.h>

#include "bench_random.h"
#include "bench_ratio.h"
#include "vyfontmetrics.h"

namespace
{

const char* const kUnifont = "/usr/share/fonts/opentype/unifont/unifont.otf";
constexpr int kMixedUnits = 100000;
constexpr int kLatinUnits = 10000;
constexpr int kWidth = 320;
const VyFont kFont(16, false, false, false, false);

using vybench::Random;

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

// The mixed text measured in unifont; its glyphs stay held (and warm) for the whole run.
VyFontMetrics& mixedMetrics()
{
    static VyFontMetrics* metrics = [] {
        VyFontCache::instance()->setFontFile(VyString(kUnifont));
        return new VyFontMetrics(mixedText(), kFont, 2, 1);
    }();
    return *metrics;
}

void BM_Layout(benchmark::State& state, bool wrap)
{
    VyFontMetrics& m = mixedMetrics();
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
    VyFontMetrics& m = mixedMetrics();
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

void warmLatin()
{
    static const bool warm = [] {
        // The mixed metrics hold their glyphs for the whole run, so the font stays open and
        // the paragraph's glyphs come from the same file.
        mixedMetrics();
        VyFontMetrics m(latinText(), kFont, 0, 0);
        return m.glyphBitmap().size() == kLatinUnits;
    }();
    if (!warm)
        fprintf(stderr, "bench_layout: the paragraph's glyphs did not resolve\n");
}

void BM_Road(benchmark::State& state)
{
    warmLatin();
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
    hb_blob_t* blob = hb_blob_create_from_file(kUnifont);
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

void registerBenchmarks()
{
    using benchmark::RegisterBenchmark;
    RegisterBenchmark("layout/wrap/vy", BM_Layout, true);
    RegisterBenchmark("layout/wrap/floor", BM_LayoutFloor, true);
    RegisterBenchmark("layout/nowrap/vy", BM_Layout, false);
    RegisterBenchmark("layout/nowrap/floor", BM_LayoutFloor, false);
    RegisterBenchmark("road/vy", BM_Road);
    RegisterBenchmark("road/hb_shape", BM_RoadHarfBuzz);
}

const vybench::RatioPair kPairs[] = {
    // Division also builds per line a string, a glyph vector, a rectangle and a record (five
    // heap blocks by the containers' design) and looks word widths up at every word start;
    // placing walks the records once more.
    {"layout_wrap_vs_floor", "layout/wrap/vy", "layout/wrap/floor", 5.0},
    {"layout_nowrap_vs_floor", "layout/nowrap/vy", "layout/nowrap/floor", 5.0},
    {"road_vs_hb_shape", "road/vy", "road/hb_shape", 0.5},
};

} // namespace

int main(int argc, char** argv)
{
    registerBenchmarks();
    return vybench::runWithRatios(argc, argv, kPairs);
}
