// String lists: join, contains, replaceInStrings and sort, against std containers, with a copy
// taken before each mutation that must not change.
#include "vystringlist.h"
#include "vyu16.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <set>
#include <string>
#include <vector>

namespace
{

typedef std::vector<std::u16string> Items;

VyStringList listOf(const Items& items)
{
    VyStringList l;
    for (const std::u16string& s : items)
        l.append(V(s));
    return l;
}

Items items(const VyStringList& l)
{
    Items v;
    for (int i = 0; i < l.size(); ++i)
        v.push_back(U(l.at(i)));
    return v;
}

std::multiset<VyString::Data*> blocks(const VyStringList& l)
{
    std::multiset<VyString::Data*> b;
    for (int i = 0; i < l.size(); ++i)
        b.insert(l.at(i).d);
    return b;
}

} // namespace

TEST(VyStringList, JoinComputesTheLengthOnce)
{
    EXPECT_EQ(U(listOf({u"solo"}).join(V(u", "))), u"solo");
    EXPECT_EQ(U(listOf({u"a", u"", u"bc"}).join(V(u"-"))), u"a--bc");
    EXPECT_EQ(U(listOf({u"a", u"b"}).join(VyString())), u"ab");
    EXPECT_EQ(VyStringList().join(V(u",")).d, &VyString::Data::shared_null);
    EXPECT_EQ(listOf({u"", u""}).join(VyString()).d, &VyString::Data::shared_null);
}

TEST(VyStringList, ContainsComparesSizeThenText)
{
    const VyStringList l = listOf({u"abc", u"\u00C9t\u00E9"});
    EXPECT_FALSE(l.contains(V(u"ABC")));
    EXPECT_TRUE(l.contains(V(u"ABC"), Vy::CaseInsensitive));
    EXPECT_TRUE(l.contains(V(u"\u00E9T\u00C9"), Vy::CaseInsensitive));
    EXPECT_FALSE(l.contains(V(u"ab"), Vy::CaseInsensitive));
}

TEST(VyStringList, ContainsEmptyFollowsCompareWithoutBuffer_Kept)
{
    VyStringList l;
    l.append(VyString("")); // an empty string with a buffer
    EXPECT_TRUE(l.contains(VyString()));
    EXPECT_FALSE(l.contains(VyString(), Vy::CaseInsensitive));
    EXPECT_TRUE(l.contains(VyString(""), Vy::CaseInsensitive));
}

TEST(VyStringList, ReplaceInStringsDetachesAndEditsEveryElement)
{
    VyStringList l = listOf({u"abba", u"Bob", u"none"});
    const VyStringList copy = l;
    l.replaceInStrings(V(u"b"), V(u"xy"), Vy::CaseInsensitive);
    EXPECT_EQ(items(l), (Items{u"axyxya", u"xyoxy", u"none"}));
    EXPECT_EQ(items(copy), (Items{u"abba", u"Bob", u"none"}));
}

TEST(VyStringList, SortMatchesStdSortAndMovesNoText)
{
    std::mt19937 rng(7);
    for (int round = 0; round < 400; ++round) {
        Items model(round < 8 ? round : rng() % 300);
        const int alphabet = 1 + int(rng() % 4); // few letters: many equal elements
        for (std::u16string& s : model) {
            s.assign(rng() % 4, u'a');
            for (char16_t& c : s)
                c = char16_t(u'a' + rng() % alphabet);
        }
        if (round % 10 >= 8) // sorted and reversed inputs too
            std::sort(model.begin(), model.end());
        if (round % 10 == 9)
            std::reverse(model.begin(), model.end());
        VyStringList l = listOf(model);
        const VyStringList copy = l;
        l.sort();
        EXPECT_EQ(items(copy), model);
        std::sort(model.begin(), model.end());
        EXPECT_EQ(items(l), model);
        EXPECT_EQ(blocks(l), blocks(copy)); // the strings were swapped, not copied
    }
}
