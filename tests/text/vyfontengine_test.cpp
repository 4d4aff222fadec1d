// Font engine: line height from glyph records with chosen metrics, the engine's private copy of
// the text and its script rules, holds given back on destruction, the purge at construction,
// and the Thai stacking test.
#include "layoutfixture.h"
#include "vyshaping.h"

#include <vector>

namespace
{

using VyFontEngineTest = LayoutTest;

} // namespace

// The tallest top and the deepest descent come from different glyphs, neither the last.
TEST_F(VyFontEngineTest, LineHeightIsTallestTopPlusDeepestDescentWithLeading)
{
    vyPutGlyph('a', kPlain, 0, 2, 11, 3);
    vyPutGlyph('b', kPlain, 0, 2, 20, 1);
    vyPutGlyph('c', kPlain, 0, 2, 2, 9);
    const std::pair<const char*, int> cases[] = {
        {"", 0}, {"a", 19}, {"bca", 39}, {"cbb", 39}}; // 14 * 1.36 = 19.04, 29 * 1.36 = 39.44
    for (const auto& [text, height] : cases) {
        VyFontEngine e;
        const VyVector<GlyphBitmap const*> g = e.resloveText(VyString(text), kPlain);
        std::string fetched;
        for (const GlyphBitmap* glyph : g)
            fetched += char(glyph->unicode);
        EXPECT_EQ(fetched, text);
        EXPECT_EQ(e.height, height) << text;
    }
}

TEST_F(VyFontEngineTest, HoldsEveryGlyphAndGivesThemBackOnDestruction)
{
    GlyphBitmap* a = vyPutGlyph('a', kPlain, 5);
    GlyphBitmap* b = vyPutGlyph('b', kPlain, 5);
    vyGlyphHold(b); // someone else's hold survives the engine
    {
        VyFontEngine e;
        e.resloveText(VyString("aba"), kPlain);
        EXPECT_EQ(std::make_pair(a->refCount, b->refCount), std::make_pair(2, 2));
        // A second call appends behind the first glyphs; it fetches the first `length` units
        // of the whole text, so here unit 0 ('a') again.
        const VyVector<GlyphBitmap const*> both = e.resloveText(VyString("b"), kPlain);
        ASSERT_EQ(both.size(), 4);
        EXPECT_EQ(both.at(3), a);
        EXPECT_EQ(U(e.text), u"abab");
    }
    EXPECT_EQ(std::make_pair(a->refCount, b->refCount), std::make_pair(0, 1));
    vyGlyphRelease(b);
}

TEST_F(VyFontEngineTest, ConstructionPurgesUnheldPixelsOnlyWhenTheLimitIsReached)
{
    GlyphBitmap* held = vyPutGlyph('h', kPlain, 5);
    GlyphBitmap* idle = vyPutGlyph('i', kPlain, 5);
    vyGlyphHold(held);
    VyFontCache* cache = VyFontCache::instance();
    for (int over : {-1, 1, 0}) { // no limit, one byte to spare, reached
        cache->limit = over < 0 ? -1 : cache->usedBytes + over;
        VyFontEngine e;
        EXPECT_EQ(idle->buffer == nullptr, over == 0) << over;
    }
    EXPECT_NE(held->buffer, nullptr);
    vyGlyphRelease(held);
}

// The caller's string and its shared block stay as they were. Hebrew wins over Arabic: the
// Hebrew run is reversed, the Arabic letters stay as they were.
TEST_F(VyFontEngineTest, ScriptRulesRewriteOnlyTheEnginesCopy)
{
    const struct {
        std::u16string text, expected;
        bool rtl;
    } cases[] = {
        {u"ab \u05D0\u05D1 12 \u05D2", u"ab \u05D2 12 \u05D1\u05D0", true},
        {u"\u0644\u0627\u0628 x", u"\uFE8F\uFE8E\uFEFB x", true},
        {u"\u0628\u0629 \u05D0\u05D1", u"\u0628\u0629 \u05D1\u05D0", true},
        {u"plain text", u"plain text", false},
    };
    for (const auto& c : cases) {
        const VyString original = V(c.text);
        const VyString shared = original;
        VyFontEngine e;
        e.lanuguageRules(shared);
        EXPECT_EQ(U(shared), c.text);
        EXPECT_EQ(U(e.text), c.expected);
        EXPECT_EQ(e.length, original.size());
        EXPECT_EQ(e.rtl, c.rtl);
    }
}

namespace
{

// The tone, upper and lower flags of units s, from zero.
std::vector<int> thai(std::vector<unsigned short> s)
{
    s.resize(4, 0);
    int tone = 0, upper = 0, lower = 0;
    VyFontEngine::displayThaiFont(s.data(), &tone, &upper, &lower);
    return {tone, upper, lower};
}

} // namespace

TEST(VyFontEngineThai, MarksOnConsonantsAndVowels)
{
    // Units, then the expected tone, upper and lower.
    const unsigned short cases[][6] = {
        {0x0E01, 0x0E34, 0x0E48, 2, 1, 0}, {0x0E01, 0x0E48, 0, 1, 0, 0},
        {0x0E24, 0x0E48, 0, 0, 0, 0},      {0x0E2F, 0x0E34, 0, 0, 0, 0},
        {0x0E2E, 0x0E4D, 0x0E48, 0, 1, 0}, {0x0E01, 0x0E3A, 0x0E48, 0, 0, 1},
        {0x0E01, 0x0E39, 0x0E4B, 2, 0, 1}, {0x0E01, 0x0E37, 0x0E47, 2, 1, 0},
        {0x0E01, 0x0E34, 0x0E47, 0, 1, 0}, {0x0E01, 0x0E00, 0x0E48, 0, 0, 0},
    };
    for (const auto& c : cases)
        EXPECT_EQ(thai({c[0], c[1], c[2]}), std::vector<int>({c[3], c[4], c[5]}))
            << std::hex << c[0] << ' ' << c[1] << ' ' << c[2];
}

TEST(VyFontEngineThai, FlagValuesAreReadBackAsIndexes_Kept)
{
    // A flag left at 0 names unit 0, the consonant: a vowel below never carries U+0E47.
    EXPECT_EQ(thai({0x0E01, 0x0E38, 0x0E47}), std::vector<int>({0, 0, 1}));
    // A flag the caller did not clear is used as it is: upper 3 names unit 3.
    std::vector<unsigned short> s = {0x0E01, 0x0E38, 0x0E47, 0x0E37};
    int tone = 0, upper = 3, lower = 0;
    VyFontEngine::displayThaiFont(s.data(), &tone, &upper, &lower);
    EXPECT_EQ(std::vector<int>({tone, upper, lower}), std::vector<int>({2, 3, 1}));
}
