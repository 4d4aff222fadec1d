// Searching: both substring searches against a naive search over a small alphabet (units that
// share a low byte, letters that fold together), both case modes, both sides of the switch
// from the rolling hash to Boyer-Moore; lastIndexOf, count, startsWith and endsWith.
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

bool matchesAt(const std::u16string& h, size_t i, const std::u16string& n, bool sensitive)
{
    for (size_t j = 0; j < n.size(); ++j) {
        if (!sameUnit(h[i + j], n[j], sensitive))
            return false;
    }
    return true;
}

// First match at or after `from` (already made non-negative), or -1.
int naiveFind(const std::u16string& h, int from, const std::u16string& n, bool sensitive)
{
    for (int i = from; i >= 0 && i + int(n.size()) <= int(h.size()); ++i) {
        if (matchesAt(h, i, n, sensitive))
            return i;
    }
    return -1;
}

int naiveFindLast(const std::u16string& h, int from, const std::u16string& n, bool sensitive)
{
    for (int i = std::min(from, int(h.size()) - int(n.size())); i >= 0; --i) {
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

TEST(VyStringSearch, BothSearchesAgreeWithANaiveSearch)
{
    std::mt19937 rng(3);
    for (int round = 0; round < 6000; ++round) {
        // Haystacks on both sides of 500 units, needles on both sides of 5.
        const int l = round % 2 ? 480 + rng() % 60 : rng() % 40;
        const std::u16string h = randomText(rng, l);
        const std::u16string n = randomNeedle(rng, h, round % 3 ? 3 + rng() % 6 : rng() % 40);
        const int from = int(rng() % (l + 7)) - 3;
        const int sl = int(n.size());
        for (const Vy::CaseSensitivity cs : {Vy::CaseSensitive, Vy::CaseInsensitive}) {
            const bool sensitive = cs == Vy::CaseSensitive;
            const int start = from < 0 ? from + l : from;
            const int expected = sl == 0 ? (start >= 0 && start <= l ? start : -1)
                                         : naiveFind(h, start, n, sensitive);
            ASSERT_EQ(vyFindString(P(h), l, from, P(n), sl, cs), expected) << round;
            ASSERT_EQ(V(h).indexOf(V(n), from, cs), expected);
            const int bmStart = from < 0 ? 0 : from;
            const int bmExpected =
                sl == 0 ? (bmStart <= l ? bmStart : -1) : naiveFind(h, bmStart, n, sensitive);
            ASSERT_EQ(vyFindStringBoyerMoore(P(h), l, from, P(n), sl, cs), bmExpected) << round;
        }
    }
}

TEST(VyStringSearch, LongNeedlesAndTheDocumentedCases)
{
    // Needles past 32 units (the rolling hash sheds whole units) and past 255 (the skip table
    // sees only the last 255).
    std::mt19937 rng(9);
    for (int round = 0; round < 200; ++round) {
        const std::u16string h = randomText(rng, 300 + rng() % 800);
        const int sl = round % 2 ? 33 + rng() % 20 : 250 + rng() % 20;
        const std::u16string n = h.substr(rng() % (h.size() - sl), sl);
        ASSERT_EQ(V(h).indexOf(V(n)), naiveFind(h, 0, n, true));
        ASSERT_EQ(V(h).lastIndexOf(V(n), -1, Vy::CaseInsensitive),
                  naiveFindLast(h, int(h.size()) - 1, n, false));
    }

    const VyString five("abcde");
    EXPECT_EQ(five.indexOf(VyString(), 3), 3);
    EXPECT_EQ(five.indexOf(VyString(), 6), -1);
    EXPECT_EQ(VyString("xxabcxx").indexOf("ABC", 0, Vy::CaseInsensitive), 2);
    VyString text(594, 'x');
    text.append("needle");
    EXPECT_EQ(text.indexOf("needle"), 594); // Boyer-Moore
    EXPECT_EQ(text.indexOf("eedle"), 595);  // rolling hash
}

TEST(VyStringSearch, UnitSearchAndLastIndexOfAgreeWithANaiveSearch)
{
    std::mt19937 rng(21);
    for (int round = 0; round < 4000; ++round) {
        const std::u16string h = randomText(rng, rng() % 30);
        const int l = int(h.size());
        const VyString s = V(h);
        const int from = int(rng() % (l + 7)) - l - 3;
        const char16_t c = kAlphabet[rng() % kAlphabet.size()];
        const std::u16string n = randomNeedle(rng, h, rng() % 4);
        for (const Vy::CaseSensitivity cs : {Vy::CaseSensitive, Vy::CaseInsensitive}) {
            const bool sensitive = cs == Vy::CaseSensitive;
            const int start = from < 0 ? std::max(from + l, 0) : from;
            ASSERT_EQ(s.indexOf(VyUcs2(c), from, cs),
                      naiveFind(h, start, std::u16string(1, c), sensitive));
            const int back = from < 0 ? from + l : from;
            const bool inside = back >= 0 && back < l;
            ASSERT_EQ(s.lastIndexOf(VyUcs2(c), from, cs),
                      inside ? naiveFindLast(h, back, std::u16string(1, c), sensitive) : -1);
            int expected =
                inside && n.size() <= h.size() ? naiveFindLast(h, back, n, sensitive) : -1;
            if (n.empty() && back == l)
                expected = l;
            ASSERT_EQ(s.lastIndexOf(V(n), from, cs), expected) << round;
            ASSERT_EQ(s.count(VyUcs2(c), cs),
                      int(std::count_if(h.begin(), h.end(),
                                        [&](char16_t u) { return sameUnit(u, c, sensitive); })));
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

TEST(VyStringSearch, StartsAndEndsWith)
{
    const VyString none(static_cast<const char*>(nullptr));
    const VyString empty("");
    const VyString text("Hello");
    EXPECT_TRUE(none.startsWith(VyString(static_cast<const char*>(nullptr))));
    EXPECT_FALSE(none.startsWith(empty));
    EXPECT_FALSE(none.endsWith(empty));
    EXPECT_TRUE(empty.startsWith(none));
    EXPECT_FALSE(empty.startsWith("a"));
    EXPECT_TRUE(text.startsWith(empty));
    EXPECT_TRUE(text.startsWith(none, Vy::CaseInsensitive));
    EXPECT_TRUE(text.startsWith("He"));
    EXPECT_FALSE(text.startsWith("he"));
    EXPECT_TRUE(text.startsWith("hE", Vy::CaseInsensitive));
    EXPECT_TRUE(text.endsWith("LLO", Vy::CaseInsensitive));
    EXPECT_FALSE(text.endsWith("LLO"));
    EXPECT_FALSE(text.endsWith("xHello"));
    EXPECT_TRUE(text.startsWith(VyUcs2('h'), Vy::CaseInsensitive));
    EXPECT_FALSE(text.startsWith(VyUcs2('h')));
    EXPECT_TRUE(text.endsWith(VyUcs2('o')));
    EXPECT_FALSE(empty.endsWith(VyUcs2(0)));
}
