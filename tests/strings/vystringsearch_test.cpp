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
#include <vector>

namespace
{

// a/A fold together; U+0161/U+0160 fold together and share low bytes with a and `.
const std::u16string kAlphabet = u"aAb\u0161\u0160";

std::u16string randomText(std::mt19937& rng, int length)
{
    std::u16string s(length, u' ');
    for (char16_t& c : s)
        c = kAlphabet[rng() % 3 ? rng() % 3 : rng() % kAlphabet.size()];
    return s;
}

// The first index from i on (or the last from i down) where `at` holds, or -1.
int first(const std::vector<bool>& at, int i)
{
    const auto found =
        i < 0 || i >= int(at.size()) ? at.end() : std::find(at.begin() + i, at.end(), true);
    return found == at.end() ? -1 : int(found - at.begin());
}

int last(const std::vector<bool>& at, int i)
{
    const int n = std::min(i + 1, int(at.size()));
    const auto found = std::find(at.rend() - std::max(n, 0), at.rend(), true);
    return int(at.rend() - found) - 1;
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
        // Often a slice of the haystack; one unit sometimes upper-cased.
        std::u16string n = randomText(rng, length);
        if (rng() % 2 && l >= length)
            n = h.substr(rng() % (l - length + 1), length);
        if (rng() % 2 && !n.empty()) {
            char16_t& u = n[rng() % n.size()];
            u = char16_t(VyUnicode::toUpper(u));
        }
        const int sl = int(n.size());
        const VyUcs2* hp = reinterpret_cast<const VyUcs2*>(h.data());
        const VyUcs2* np = reinterpret_cast<const VyUcs2*>(n.data());
        const char16_t c = kAlphabet[rng() % kAlphabet.size()];
        const int from = int(rng() % (2 * l + 7)) - l - 3;
        const int start = from < 0 ? from + l : from;
        const bool inside = start >= 0 && start < l;
        const VyString s = V(h);
        for (const Vy::CaseSensitivity cs : {Vy::CaseSensitive, Vy::CaseInsensitive}) {
            SCOPED_TRACE(testing::Message() << round << " from " << from << " cs " << cs);
            const auto same = [cs](char16_t x, char16_t y) {
                return cs == Vy::CaseSensitive ? x == y
                                               : VyUnicode::foldCase(x) == VyUnicode::foldCase(y);
            };
            // Where the needle and the unit match, for every index 0 to l.
            std::vector<bool> at(size_t(l) + 1), unitAt(size_t(l) + 1);
            for (int i = 0; i <= l; ++i) {
                at[i] = i + sl <= l && std::equal(n.begin(), n.end(), h.begin() + i, same);
                unitAt[i] = i < l && same(h[i], c);
            }
            ASSERT_EQ(vyFindString(hp, l, from, np, sl, cs), first(at, start));
            ASSERT_EQ(s.indexOf(V(n), from, cs), first(at, start));
            ASSERT_EQ(vyFindStringBoyerMoore(hp, l, from, np, sl, cs),
                      first(at, std::max(from, 0)));
            ASSERT_EQ(s.indexOf(VyUcs2(c), from, cs), first(unitAt, std::max(start, 0)));
            ASSERT_EQ(s.lastIndexOf(VyUcs2(c), from, cs), inside ? last(unitAt, start) : -1);
            ASSERT_EQ(s.lastIndexOf(V(n), from, cs),
                      inside || (sl == 0 && start == l) ? last(at, start) : -1);
            // count skips a match at index 0, as pinned below.
            ASSERT_EQ(s.count(V(n), cs), std::count(at.begin() + 1, at.end(), true));
            ASSERT_EQ(s.count(VyUcs2(c), cs), std::count(unitAt.begin(), unitAt.end(), true));
            ASSERT_EQ(s.startsWith(V(n), cs), bool(at[0]));
            ASSERT_EQ(s.endsWith(V(n), cs), sl <= l && at[l - sl]);
            ASSERT_EQ(s.startsWith(VyUcs2(c), cs), bool(unitAt[0]));
            ASSERT_EQ(s.endsWith(VyUcs2(c), cs), l > 0 && unitAt[l - 1]);
        }
    }
}

TEST(VyStringSearch, CountSkipsAnOccurrenceAtTheStart_Kept)
{
    EXPECT_EQ(VyString("aaaa").count("aa"), 2); // at 1 and 2, not at 0
    EXPECT_EQ(VyString("abc").count("a"), 0);
    EXPECT_EQ(VyString("abAB").count("ab", Vy::CaseInsensitive), 1);
}
