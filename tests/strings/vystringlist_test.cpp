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

TEST(VyStringList, ContainsEmptyFollowsCompareWithoutBuffer_Kept)
{
    VyStringList l;
    l.append(VyString("")); // an empty string with a buffer
    EXPECT_TRUE(l.contains(VyString()));
    EXPECT_FALSE(l.contains(VyString(), Vy::CaseInsensitive));
    EXPECT_TRUE(l.contains(VyString(""), Vy::CaseInsensitive));
}

// Random lists of short strings over few letters (many equal elements), sorted and reversed
// inputs too; each mutation works on a list that shares its elements with a copy.
TEST(VyStringList, OperationsAgainstStdContainers)
{
    std::mt19937 rng(7);
    for (int round = 0; round < 400; ++round) {
        Items model(round < 8 ? round : rng() % 300);
        const int alphabet = 1 + int(rng() % 4);
        for (std::u16string& s : model) {
            s.assign(rng() % 4, u'a');
            for (char16_t& c : s)
                c = char16_t(u'a' + rng() % alphabet);
        }
        if (round % 10 >= 8)
            std::sort(model.begin(), model.end());
        if (round % 10 == 9)
            std::reverse(model.begin(), model.end());
        VyStringList l = listOf(model);
        const VyStringList copy = l;

        const std::u16string sep(rng() % 3, u',');
        std::u16string joined;
        for (size_t i = 0; i < model.size(); ++i)
            joined += (i ? sep : u"") + model[i];
        EXPECT_EQ(U(l.join(V(sep))), joined);
        std::u16string probe(1 + rng() % 3, u'a');
        const bool found = std::find(model.begin(), model.end(), probe) != model.end();
        EXPECT_EQ(l.contains(V(probe)), found);
        probe[0] = u'A';
        EXPECT_EQ(l.contains(V(probe), Vy::CaseInsensitive), found);

        l.sort();
        Items sorted = model;
        std::sort(sorted.begin(), sorted.end());
        EXPECT_EQ(items(l), sorted);
        EXPECT_EQ(blocks(l), blocks(copy)); // the strings were swapped, not copied

        l = copy;
        l.replaceInStrings(V(u"B"), V(u"xy"), Vy::CaseInsensitive);
        Items replaced = model;
        for (std::u16string& s : replaced) {
            for (size_t i = 0; (i = s.find(u'b', i)) != std::u16string::npos;)
                s.replace(i, 1, u"xy");
        }
        EXPECT_EQ(items(l), replaced);
        EXPECT_EQ(items(copy), model);
    }
    EXPECT_EQ(listOf({u"", u""}).join(VyString()).d, &VyString::Data::shared_null);
}
