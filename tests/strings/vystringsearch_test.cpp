// Searching: every search of a string against a naive search over a small alphabet (units that
// share a low byte, letters that fold together), both case modes, on both sides of the switch
// from the rolling hash to Boyer-Moore, with needles past 32 units (the rolling hash sheds whole
// units) and past 255 (the skip table sees only the last 255).
#include "vystring.h"
#include "vyu16.h"
#include "vyunicode.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>

namespace
{

const VyUcs2* P(const std::u16string& s)
{
    return reinterpret_cast<const VyUcs2*>(s.data());
}

// a/A fold together; U+0161/U+0160 fold together and share low bytes with a and `.
const std::u16string kAlphabet = u"aAb\u0161\u0160";

bool sameUnit(char16_t x, char16_t y, bool sensitive)
{
    return sensitive ? x == y : VyUnicode::foldCase(x) == VyUnicode::foldCase(y);
}

bool matchesAt(const std::u16string& h, int i, const std::u16string& n, bool sensitive)
{
    if (i < 0 || i + n.size() > h.size())
        return false;
    for (size_t j = 0; j < n.size(); ++j) {
        if (!sameUnit(h[i + j], n[j], sensitive))
            return false;
    }
    return true;
}

// First match at or after `from`, or -1.
int naiveFind(const std::u16string& h, int from, const std::u16string& n, bool sensitive)
{
    for (int i = from; i >= 0 && i <= int(h.size()); ++i) {
        if (matchesAt(h, i, n, sensitive))
            return i;
    }
    return -1;
}

// Last match at or before `from`, or -1.
int naiveFindLast(const std::u16string& h, int from, const std::u16string& n, bool sensitive)
{
    for (int i = from; i >= 0; --i) {
        if (matchesAt(h, i, n, sensitive))
            return i;
    }
    return -1;
}

std::u16string randomText(std::mt19937& rng, int length)
{
    std::u16string s(length, u' ');
    for (char16_t& c : s)
        c = kAlphabet[rng() % 3 ? rng() % 3 : rng() % kAlphabet.size()];
    return s;
}

// A needle that often occurs: a slice of the haystack, its case sometimes changed.
std::u16string randomNeedle(std::mt19937& rng, const std::u16string& h, int length)
{
    if (rng() % 2 || int(h.size()) < length)
        return randomText(rng, length);
    std::u16string n = h.substr(rng() % (h.size() - length + 1), length);
    if (rng() % 2 && !n.empty()) {
        char16_t& u = n[rng() % n.size()];
        u = char16_t(VyUnicode::toUpper(u));
    }
    return n;
}

} // namespace

TEST(VyStringSearch, EverySearchAgreesWithANaiveSearch)
{
    std::mt19937 rng(3);
    for (int round = 0; round < 8000; ++round) {
        const int kind = round % 4;
        const int l = kind == 0 ? rng() % 40 : kind == 1 ? 300 + rng() % 800 : 480 + rng() % 60;
        const std::u16string h = randomText(rng, l);
        const int length = kind == 1   ? (round % 8 == 1 ? 33 + rng() % 20 : 250 + rng() % 20)
                           : round % 3 ? 3 + rng() % 6
                                       : rng() % 40;
        const std::u16string n = randomNeedle(rng, h, length);
        const int sl = int(n.size());
        const char16_t c = kAlphabet[rng() % kAlphabet.size()];
        const std::u16string unit(1, c);
        const int from = int(rng() % (2 * l + 7)) - l - 3;
        const int start = from < 0 ? from + l : from;
        const VyString s = V(h);
        for (const Vy::CaseSensitivity cs : {Vy::CaseSensitive, Vy::CaseInsensitive}) {
            SCOPED_TRACE(testing::Message() << round << " from " << from << " cs " << cs);
            const bool sensitive = cs == Vy::CaseSensitive;
            const int expected = sl == 0 ? (start >= 0 && start <= l ? start : -1)
                                         : naiveFind(h, start, n, sensitive);
            ASSERT_EQ(vyFindString(P(h), l, from, P(n), sl, cs), expected);
            ASSERT_EQ(s.indexOf(V(n), from, cs), expected);
            const int bmStart = std::max(from, 0);
            ASSERT_EQ(vyFindStringBoyerMoore(P(h), l, from, P(n), sl, cs),
                      sl == 0 ? (bmStart <= l ? bmStart : -1)
                              : naiveFind(h, bmStart, n, sensitive));
            ASSERT_EQ(s.indexOf(VyUcs2(c), from, cs),
                      naiveFind(h, std::max(start, 0), unit, sensitive));

            const bool inside = start >= 0 && start < l;
            ASSERT_EQ(s.lastIndexOf(VyUcs2(c), from, cs),
                      inside ? naiveFindLast(h, start, unit, sensitive) : -1);
            const int last = sl == 0 && start == l ? l
                             : inside              ? naiveFindLast(h, start, n, sensitive)
                                                   : -1;
            ASSERT_EQ(s.lastIndexOf(V(n), from, cs), last);

            // count skips a match at index 0, as pinned below.
            int matches = 0;
            for (int i = 1; i <= l; ++i)
                matches += matchesAt(h, i, n, sensitive);
            ASSERT_EQ(s.count(V(n), cs), matches);
            ASSERT_EQ(s.count(VyUcs2(c), cs),
                      int(std::count_if(h.begin(), h.end(),
                                        [&](char16_t u) { return sameUnit(u, c, sensitive); })));
            ASSERT_EQ(s.startsWith(V(n), cs), l == 0 ? sl == 0 : matchesAt(h, 0, n, sensitive));
            ASSERT_EQ(s.endsWith(V(n), cs), l == 0 ? sl == 0 : matchesAt(h, l - sl, n, sensitive));
            ASSERT_EQ(s.startsWith(VyUcs2(c), cs), l > 0 && sameUnit(h[0], c, sensitive));
            ASSERT_EQ(s.endsWith(VyUcs2(c), cs), l > 0 && sameUnit(h[l - 1], c, sensitive));
        }
    }
}

TEST(VyStringSearch, CountSkipsAnOccurrenceAtTheStart_Kept)
{
    EXPECT_EQ(VyString("aaaa").count("aa"), 2); // at 1 and 2, not at 0
    EXPECT_EQ(VyString("abc").count("a"), 0);
    EXPECT_EQ(VyString("abc").count("b"), 1);
    EXPECT_EQ(VyString("abAB").count("ab", Vy::CaseInsensitive), 1);
}

TEST(VyStringSearch, StartsAndEndsWithTellMissingBuffersFromEmptyOnes)
{
    const VyString none(static_cast<const char*>(nullptr));
    const VyString empty("");
    EXPECT_TRUE(none.startsWith(none));
    EXPECT_FALSE(none.startsWith(empty));
    EXPECT_FALSE(none.endsWith(empty));
    EXPECT_TRUE(empty.startsWith(none));
    EXPECT_TRUE(empty.endsWith(empty));
    EXPECT_FALSE(empty.startsWith("a"));
}
