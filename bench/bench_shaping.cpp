// Right-to-left shaping on 64 KB of text (32 768 units), beside a plain loop over the same units.
//
// shaping/arabic/vy: arabicRulesConvert on Arabic words (letters of the main and extended
// tables, lam-alef pairs, now and then a mark) separated by spaces, with a number or a Latin
// word here and there. shaping/hebrew/vy: reversalHebrew on Hebrew words in the same setting.
// The references, shaping/<script>/copy_reverse, are the floor: the same units copied into a
// scratch buffer and written back in reverse order, the memory traffic of the work copy and of
// the reordering without classifying a unit or looking anything up. Both sides first restore
// the text, since the functions work in place; items are units.
//
// engine/resolve/vy: VyFontEngine construction, resloveText and destruction on a 10 000-unit
// paragraph of Latin, Thai and CJK whose glyphs are already in the cache (warm). The floor,
// engine/resolve/map_lookup, looks the same glyph keys up in a std::unordered_map of the same
// records and collects the pointers in a reserved vector: what any engine must do at least.
//
// After the run a ratio line per pair (bench_ratio.h) gives library time over reference time.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <stdint.h>
#include <string.h>
#include <vector>

#include <unordered_map>

#include "bench_random.h"
#include "bench_ratio.h"
#include "vyfontcache.h"
#include "vyfontengine.h"
#include "vyfonteunitcache.h"
#include "vyshaping.h"

namespace
{

using Units = std::vector<unsigned short>;

constexpr int kUnits = 64 * 1024 / sizeof(unsigned short);

using vybench::Random;

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

const char kFontPath[] = "/usr/share/fonts/opentype/unifont/unifont.otf";
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

const VyFont& paragraphFont()
{
    static const VyFont font(16, false, false, false, false);
    return font;
}

// Opens the font once and renders every glyph of the paragraph, so both sides run warm.
void warmGlyphs()
{
    static const bool warm = [] {
        VyFontCache::instance()->setFontFile(VyString(kFontPath));
        VyFontEngine engine;
        engine.resloveText(paragraph(), paragraphFont());
        return true;
    }();
    (void)warm;
}

void BM_EngineResolve(benchmark::State& state)
{
    warmGlyphs();
    for (auto _ : state) {
        VyFontEngine engine;
        benchmark::DoNotOptimize(engine.resloveText(paragraph(), paragraphFont()).constData());
    }
    state.SetItemsProcessed(state.iterations() * kParagraphUnits);
}

void BM_MapLookup(benchmark::State& state)
{
    warmGlyphs();
    const VyFont& font = paragraphFont();
    std::unordered_map<int, const GlyphBitmap*> map;
    const VyString& text = paragraph();
    for (int i = 0; i < text.size(); ++i) {
        GlyphBitmap* g = VyFontCache::glyph(text.at(i), font);
        map[VyFonteUnitCache::glyphKey(text.at(i), font.fontSize(), font.propertyFlag())] = g;
        vyGlyphRelease(g);
    }
    std::vector<const GlyphBitmap*> glyphs;
    for (auto _ : state) {
        glyphs.clear();
        glyphs.reserve(size_t(text.size()));
        for (int i = 0; i < text.size(); ++i)
            glyphs.push_back(map.find(VyFonteUnitCache::glyphKey(text.at(i), font.fontSize(),
                                                                 font.propertyFlag()))
                                 ->second);
        benchmark::DoNotOptimize(glyphs.data());
    }
    state.SetItemsProcessed(state.iterations() * kParagraphUnits);
}

void registerBenchmarks()
{
    using benchmark::RegisterBenchmark;
    RegisterBenchmark("shaping/arabic/vy", BM_Library<arabicRulesConvert>, arabicText());
    RegisterBenchmark("shaping/arabic/copy_reverse", BM_CopyReverse, arabicText());
    RegisterBenchmark("shaping/hebrew/vy", BM_Library<reversalHebrew>, hebrewText());
    RegisterBenchmark("shaping/hebrew/copy_reverse", BM_CopyReverse, hebrewText());
    RegisterBenchmark("engine/resolve/vy", BM_EngineResolve);
    RegisterBenchmark("engine/resolve/map_lookup", BM_MapLookup);
}

// The floor is a vectorised copy at memory speed; shaping classifies every unit and searches
// both join sets for every letter, reordering tests every unit at least twice. The bounds say
// how far above the floor that work may lie on these machines: about 30 ns a unit for Arabic,
// 5 ns for Hebrew.
const vybench::RatioPair kPairs[] = {
    {"shaping_arabic_vs_copy_reverse", "shaping/arabic/vy", "shaping/arabic/copy_reverse", 150.0},
    {"shaping_hebrew_vs_copy_reverse", "shaping/hebrew/vy", "shaping/hebrew/copy_reverse", 20.0},
    // The engine also copies the text, scans it for right-to-left letters, takes and drops the
    // cache's read lock for every glyph, holds a reference per glyph and gives them back.
    {"resolve_vs_map_lookup", "engine/resolve/vy", "engine/resolve/map_lookup", 3.0},
};

} // namespace

int main(int argc, char** argv)
{
    registerBenchmarks();
    return vybench::runWithRatios(argc, argv, kPairs);
}
