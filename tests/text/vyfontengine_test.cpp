// Font engine: line height from glyph records with chosen metrics, the engine's private copy of
// the text and its script rules, holds given back on destruction, the purge at construction,
// and the Thai stacking test.
#include "textfonts.h"
#include "vyfontengine.h"
#include "vyshaping.h"

#include <gtest/gtest.h>

#include <random>
#include <stdlib.h>
#include <vector>

namespace
{

const VyFont kFont(40, false, false, false, false);

class VyFontEngineTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        cache = VyFontCache::instance();
        cache->setFontFile(VyString(UNIFONT));
        cache->limit = -1;
    }
    void TearDown() override
    {
        cache->closeFontFile();
        cache->limit = -1;
    }
    // Stores a record for `unicode` in kFont with the given top and descent and 2x2 pixels.
    GlyphBitmap* put(unsigned short unicode, int top, int descent)
    {
        GlyphBitmap g;
        memset(&g, 0, sizeof g);
        g.unicode = unicode;
        g.font = kFont.fontAttr();
        g.width = g.rows = g.pitch = 2;
        g.top = short(top);
        g.descent = short(descent);
        g.buffer = static_cast<unsigned char*>(calloc(4, 1));
        return cache->addFontInfo(g);
    }

    VyFontCache* cache = nullptr;
};

std::vector<unsigned short> units(const VyString& s)
{
    return std::vector<unsigned short>(s.unicode(), s.unicode() + s.size());
}

} // namespace

TEST_F(VyFontEngineTest, LineHeightIsTallestTopPlusDeepestDescentWithLeading)
{
    {
        VyFontEngine e;
        EXPECT_EQ(e.resloveText(VyString(), kFont).size(), 0);
        EXPECT_EQ(e.height, 0);
    }
    put('a', 11, 3);
    {
        VyFontEngine e;
        EXPECT_EQ(e.resloveText(VyString("a"), kFont).size(), 1);
        EXPECT_EQ(e.height, 19); // 14 * 1.36 = 19.04
    }
    // The maxima come from different glyphs; random texts against integer arithmetic.
    std::mt19937 rng(7);
    for (int round = 0; round < 50; ++round) {
        cache->clean();
        int tops[5], descents[5];
        for (int c = 0; c < 5; ++c) {
            tops[c] = int(rng() % 60);
            descents[c] = int(rng() % 30);
            put(u'p' + c, tops[c], descents[c]);
        }
        VyString s;
        int top = 0, descent = 0;
        const int n = 1 + int(rng() % 8);
        for (int i = 0; i < n; ++i) {
            const int c = int(rng() % 5);
            s.append(VyString(std::string(1, char('p' + c)).c_str()));
            top = std::max(top, tops[c]);
            descent = std::max(descent, descents[c]);
        }
        VyFontEngine e;
        const VyVector<GlyphBitmap const*> g = e.resloveText(s, kFont);
        ASSERT_EQ(g.size(), n);
        for (int i = 0; i < n; ++i)
            EXPECT_EQ(g.at(i)->unicode, s.at(i));
        EXPECT_EQ(e.height, (top + descent) * 136 / 100);
    }
}

TEST_F(VyFontEngineTest, HoldsEveryGlyphAndGivesThemBackOnDestruction)
{
    GlyphBitmap* a = put('a', 5, 1);
    GlyphBitmap* b = put('b', 6, 2);
    vyGlyphHold(b); // someone else's hold survives the engine
    {
        VyFontEngine e;
        const VyVector<GlyphBitmap const*> first = e.resloveText(VyString("aba"), kFont);
        EXPECT_EQ(a->refCount, 2);
        EXPECT_EQ(b->refCount, 2);
        // A second call appends behind the first glyphs; it fetches the first `length` units
        // of the whole text, so here unit 0 ('a') again.
        const VyVector<GlyphBitmap const*> both = e.resloveText(VyString("b"), kFont);
        EXPECT_EQ(first.size(), 3);
        ASSERT_EQ(both.size(), 4);
        EXPECT_EQ(both.at(3), a);
        EXPECT_EQ(units(e.text), units(VyString("abab")));
        EXPECT_EQ(a->refCount, 3);
    }
    EXPECT_EQ(a->refCount, 0);
    EXPECT_EQ(b->refCount, 1);
    vyGlyphRelease(b);
}

TEST_F(VyFontEngineTest, ConstructionPurgesUnheldPixelsOnlyWhenTheLimitIsReached)
{
    GlyphBitmap* held = put('h', 5, 1);
    GlyphBitmap* idle = put('i', 5, 1);
    vyGlyphHold(held);
    cache->limit = cache->usedBytes + 1;
    {
        VyFontEngine e;
    }
    EXPECT_NE(idle->buffer, nullptr);
    cache->limit = cache->usedBytes;
    {
        VyFontEngine e;
    }
    EXPECT_EQ(idle->buffer, nullptr);
    EXPECT_NE(held->buffer, nullptr);
    vyGlyphRelease(held);
    cache->limit = -1;
    put('x', 5, 1);
    {
        VyFontEngine e;
    } // no limit: nothing purged
    EXPECT_NE(held->buffer, nullptr);
}

TEST_F(VyFontEngineTest, ScriptRulesRewriteOnlyTheEnginesCopy)
{
    const VyString hebrew("ab \u05D0\u05D1 12 \u05D2"), arabic("\u0644\u0627\u0628 x");
    const VyString mixed("\u0628\u0629 \u05D0\u05D1");
    const VyString latin("plain text");
    for (const VyString* s : {&hebrew, &arabic, &mixed, &latin}) {
        const VyString shared = *s; // the caller's block is shared
        const std::vector<unsigned short> before = units(*s);
        std::vector<unsigned short> expect = before;
        const bool hasHebrew = isIncludeHebrew(expect.data(), int(expect.size()));
        const bool hasArabic = isIncludeArbic(expect.data(), int(expect.size()));
        if (hasHebrew)
            reversalHebrew(expect.data(), int(expect.size()));
        else if (hasArabic)
            arabicRulesConvert(expect.data(), int(expect.size()));

        VyFontEngine e;
        e.lanuguageRules(shared);
        EXPECT_EQ(units(shared), before);
        EXPECT_EQ(units(*s), before);
        EXPECT_EQ(units(e.text), expect);
        EXPECT_EQ(e.length, s->size());
        EXPECT_EQ(e.rtl, hasHebrew || hasArabic);
    }
    // Hebrew wins: the Hebrew run is reversed, the Arabic letters stay as they were.
    VyFontEngine e;
    e.lanuguageRules(mixed);
    EXPECT_EQ(units(e.text), std::vector<unsigned short>({0x0628, 0x0629, ' ', 0x05D1, 0x05D0}));
    // Different from the Hebrew rule: the Arabic text is shaped as well as reversed.
    VyFontEngine a;
    a.lanuguageRules(arabic);
    EXPECT_NE(units(a.text), units(arabic));
    EXPECT_GE(units(a.text)[0], 0xFE70);
}

namespace
{

struct Thai {
    int tone = 0, upper = 0, lower = 0;
};

Thai thai(std::vector<unsigned short> s)
{
    s.resize(4, 0);
    Thai t;
    VyFontEngine::displayThaiFont(s.data(), &t.tone, &t.upper, &t.lower);
    return t;
}

} // namespace

TEST(VyFontEngineThai, MarksOnConsonantsAndVowels)
{
    // Units, then the expected tone, upper and lower.
    const unsigned short cases[][6] = {
        {0x0E01, 0x0E34, 0x0E48, 2, 1, 0}, {0x0E01, 0x0E48, 0, 1, 0, 0},
        {0x0E24, 0x0E48, 0, 0, 0, 0},      {0x0E26, 0x0E34, 0, 0, 0, 0},
        {0x0E2F, 0x0E34, 0, 0, 0, 0},      {0x0E2E, 0x0E4D, 0x0E48, 0, 1, 0},
        {0x0E01, 0x0E3A, 0x0E48, 0, 0, 1}, {0x0E01, 0x0E39, 0x0E4B, 2, 0, 1},
        {0x0E01, 0x0E38, 0x0E4C, 2, 0, 1}, {0x0E01, 0x0E34, 0x0E4D, 2, 1, 0},
        {0x0E01, 0x0E35, 0x0E4C, 0, 1, 0}, {0x0E01, 0x0E37, 0x0E47, 2, 1, 0},
        {0x0E01, 0x0E34, 0x0E47, 0, 1, 0}, {0x0E01, 0x0E34, 0x0E00, 0, 1, 0},
        {0x0E01, 0x0E34, 0x0F48, 0, 1, 0}, {0x0E01, 0x0E00, 0x0E48, 0, 0, 0},
    };
    for (const auto& c : cases) {
        const Thai t = thai({c[0], c[1], c[2]});
        EXPECT_EQ(std::vector<int>({t.tone, t.upper, t.lower}),
                  std::vector<int>({c[3], c[4], c[5]}))
            << std::hex << c[0] << ' ' << c[1] << ' ' << c[2];
    }
}

TEST(VyFontEngineThai, FlagValuesAreReadBackAsIndexes_Kept)
{
    // A flag left at 0 names unit 0, the consonant: a vowel below never carries U+0E47.
    EXPECT_EQ(thai({0x0E01, 0x0E38, 0x0E47}).tone, 0);
    // A flag the caller did not clear is used as it is: upper 3 names unit 3.
    std::vector<unsigned short> s = {0x0E01, 0x0E38, 0x0E47, 0x0E37};
    int tone = 0, upper = 3, lower = 0;
    VyFontEngine::displayThaiFont(s.data(), &tone, &upper, &lower);
    EXPECT_EQ(tone, 2);
    EXPECT_EQ(lower, 1);
}
