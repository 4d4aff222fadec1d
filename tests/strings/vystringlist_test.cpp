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

VyStringList listOf(std::initializer_list<const char*> items)
{
    VyStringList l;
    for (const char* s : items)
        l.append(VyString(s));
    return l;
}

std::vector<std::string> items(const VyStringList& l)
{
    std::vector<std::string> v;
    for (int i = 0; i < l.size(); ++i)
        v.push_back(U8(l.at(i)));
    return v;
}

} // namespace

TEST(VyStringList, JoinComputesTheLengthOnce)
{
    EXPECT_EQ(VyStringList().join(VyString(",")).d, &VyString::Data::shared_null);
    EXPECT_EQ(U8(listOf({"solo"}).join(VyString(", "))), "solo");
    EXPECT_EQ(U8(listOf({"a", "", "bc"}).join(VyString("--"))), "a----bc");
    EXPECT_EQ(U8(listOf({"a", "b"}).join(VyString())), "ab");
    const VyString joined = listOf({"", ""}).join(VyString());
    EXPECT_TRUE(joined.isEmpty());
    EXPECT_EQ(joined.d, &VyString::Data::shared_null);
}

TEST(VyStringList, ContainsComparesSizeThenText)
{
    const VyStringList l = listOf({"abc", "\u00C9t\u00E9"});
    EXPECT_FALSE(l.contains(VyString("ABC")));
    EXPECT_TRUE(l.contains(VyString("ABC"), Vy::CaseInsensitive));
    EXPECT_TRUE(l.contains(VyString("\u00E9T\u00C9"), Vy::CaseInsensitive));
    EXPECT_FALSE(l.contains(VyString("ab"), Vy::CaseInsensitive));
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
    VyStringList l = listOf({"abba", "Bob", "none"});
    const VyStringList copy = l;
    l.replaceInStrings(VyString("b"), VyString("xy"), Vy::CaseInsensitive);
    EXPECT_EQ(items(l), (std::vector<std::string>{"axyxya", "xyoxy", "none"}));
    EXPECT_EQ(items(copy), (std::vector<std::string>{"abba", "Bob", "none"}));
}

TEST(VyStringList, SortMatchesStdSortAndMovesNoText)
{
    std::mt19937 rng(7);
    for (int round = 0; round < 400; ++round) {
        std::vector<std::u16string> model;
        const int n = round < 8 ? round : int(rng() % 300);
        const int alphabet = 1 + int(rng() % 4); // few letters: many equal elements
        for (int i = 0; i < n; ++i) {
            std::u16string s(rng() % 4, u'a');
            for (char16_t& c : s)
                c = char16_t(u'a' + rng() % alphabet);
            model.push_back(s);
        }
        if (round % 10 >= 8) // sorted and reversed inputs too
            std::sort(model.begin(), model.end());
        if (round % 10 == 9)
            std::reverse(model.begin(), model.end());
        VyStringList l;
        for (const std::u16string& s : model)
            l.append(VyString(reinterpret_cast<const VyUcs2*>(s.data()), int(s.size())));
        const VyStringList copy = l;
        std::multiset<VyString::Data*> blocks;
        for (int i = 0; i < l.size(); ++i)
            blocks.insert(l.at(i).d);
        l.sort();
        std::sort(model.begin(), model.end());
        ASSERT_EQ(l.size(), int(model.size()));
        std::multiset<VyString::Data*> after;
        for (int i = 0; i < l.size(); ++i) {
            ASSERT_EQ(std::u16string(reinterpret_cast<const char16_t*>(l.at(i).unicode()),
                                     l.at(i).size()),
                      model[size_t(i)]);
            after.insert(l.at(i).d);
        }
        EXPECT_EQ(after, blocks);
        if (n > 1) {
            EXPECT_FALSE(l.isSharedWith(copy));
        }
    }
}
