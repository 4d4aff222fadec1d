// Editing: every mutator against a std::u16string model on random text, with a copy taken
// before each edit that must not change; mutators fed their own contents; slicing, trimming,
// splitting, casing and padding.
#include "vystring.h"
#include "vystringlist.h"
#include "vyu16.h"
#include "vyunicode.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

namespace
{

std::u16string randomText(std::mt19937& rng, int maxLength)
{
    std::u16string s(rng() % (maxLength + 1), u' ');
    for (char16_t& c : s)
        c = u"abAB \u00E9"[rng() % 6];
    return s;
}

// The range [pos, pos + len) clamped to the text: a negative pos shortens len by as much.
void clamp(const std::u16string& m, long long& pos, long long& len)
{
    if (pos < 0) {
        len += pos;
        pos = 0;
    }
    pos = std::min<long long>(pos, m.size());
    len = std::max<long long>(0, std::min<long long>(len, m.size() - pos));
}

// Left-to-right replacement that searches again where each replacement went; false when it
// would not end within a bound (the library would loop for ever).
bool modelReplace(std::u16string& m, const std::u16string& before, const std::u16string& after)
{
    if (before.empty())
        return true; // removing nothing changes nothing; replacing it never ends
    if (after.empty()) {
        for (size_t i = 0; (i = m.find(before, i)) != std::u16string::npos;)
            m.erase(i, before.size());
        return true;
    }
    for (size_t i = 0, steps = 0; (i = m.find(before, i)) != std::u16string::npos; ++steps) {
        if (steps > 200 || m.empty())
            return false;
        m.replace(i, before.size(), after);
    }
    return true;
}

} // namespace

TEST(VyStringEdit, RandomEditsFollowTheModelAndLeaveCopiesAlone)
{
    std::mt19937 rng(17);
    for (int round = 0; round < 300; ++round) {
        std::u16string m = randomText(rng, 12);
        VyString s = V(m);
        for (int step = 0; step < 40; ++step) {
            // Every other edit works on a shared block, which it must detach first.
            const VyString copy = step % 2 ? s : VyString();
            const std::u16string old = m;
            const std::u16string arg = randomText(rng, 4);
            long long pos = int(rng() % (m.size() + 8)) - 4;
            long long len = int(rng() % 10) - 2;
            const char16_t a = u"aAb"[rng() % 3];
            const char16_t b = u"xy"[rng() % 2];
            switch (rng() % 13) {
            case 0:
                s.insert(int(pos), V(arg));
                m.insert(std::clamp<long long>(pos, 0, m.size()), arg);
                break;
            case 1:
                s.append(V(arg));
                m += arg;
                break;
            case 2:
                s.prepend(V(arg));
                m.insert(0, arg);
                break;
            case 3:
                s.remove(int(pos), int(len));
                clamp(m, pos, len);
                m.erase(pos, len);
                break;
            case 4:
                s.replace(int(pos), int(len), V(arg));
                clamp(m, pos, len);
                m.replace(pos, len, arg);
                break;
            case 5:
                s.replace(VyUcs2(a), VyUcs2(b));
                std::replace(m.begin(), m.end(), a, b);
                break;
            case 6: // case-insensitive: a and A go together
                s.remove(VyUcs2(a), Vy::CaseInsensitive);
                m.erase(std::remove_if(m.begin(), m.end(),
                                       [&](char16_t u) { return (u | 32) == (a | 32); }),
                        m.end());
                break;
            case 7:
                s.replace(VyUcs2(a), V(arg));
                for (size_t i = 0; (i = m.find(a, i)) != std::u16string::npos; i += arg.size())
                    m.replace(i, 1, arg);
                break;
            case 8: {
                const std::u16string before =
                    m.substr(std::min<size_t>(pos < 0 ? 0 : pos, m.size()), 2);
                std::u16string model = m;
                if (before.empty() || !modelReplace(model, before, arg))
                    continue;
                s.replace(V(before), V(arg));
                m = model;
                break;
            }
            case 9:
                s.remove(V(arg.substr(0, 2)));
                modelReplace(m, arg.substr(0, 2), u"");
                break;
            case 10:
                s.chop(int(len));
                m.resize(len < 1 ? m.size() : std::max<long long>(0, m.size() - len));
                break;
            case 11:
                s.truncate(int(pos));
                m.resize(std::clamp<long long>(pos, 0, m.size()));
                break;
            case 12:
                s.fill(b, len < 0 ? -1 : int(len));
                m.assign(len < 0 ? m.size() : len, b);
                break;
            }
            ASSERT_EQ(U(s), m) << round << ':' << step;
            ASSERT_EQ(U(copy), step % 2 ? old : u"");
            ASSERT_TRUE(s.isEmpty() || s.unicode()[s.size()] == 0);
            if (m.size() > 200)
                break;
        }
    }
}

TEST(VyStringEdit, MutatorsAcceptTheirOwnContents)
{
    const auto self = [](void (*edit)(VyString&)) {
        VyString s("abcab"); // unshared each time
        edit(s);
        return U(s);
    };
    EXPECT_EQ(self([](VyString& s) { s.append(s); }), u"abcababcab");
    EXPECT_EQ(self([](VyString& s) { s.prepend(s); }), u"abcababcab");
    EXPECT_EQ(self([](VyString& s) { s.insert(2, s); }), u"ababcabcab");
    EXPECT_EQ(self([](VyString& s) { s.replace(1, 3, s); }), u"aabcabb");
    EXPECT_EQ(self([](VyString& s) { s.replace(s, VyString("x")); }), u"x");
    EXPECT_EQ(self([](VyString& s) { s.replace(VyUcs2('c'), s); }), u"ababcabab");
    EXPECT_EQ(self([](VyString& s) { s.remove(s); }), u"");
    EXPECT_EQ(self([](VyString& s) { s.replace(0, 1, s.unicode() + 3, 2); }), u"abbcab");
    VyString s(100, 'q'); // too long for a copy on the stack
    s.replace(1, 0, s.unicode(), 100);
    EXPECT_EQ(U(s), std::u16string(200, u'q'));
}

TEST(VyStringEdit, ReplacementSearchesAgainWhereItWent_Kept)
{
    EXPECT_EQ(U(VyString("abba").replace(VyString("b"), VyString("c"))), u"acca");
    // Each "a" put back completes a new "ab" with the next b.
    EXPECT_EQ(U(VyString("abbb").replace(VyString("ab"), VyString("a"))), u"a");
    EXPECT_EQ(U(VyString("xABy").replace(VyString("ab"), VyString("Z"), Vy::CaseInsensitive)),
              u"xZy");
}

TEST(VyStringEdit, GrowingEditsReserveTwiceTheNeedAndEmptyArgumentsKeepSharing)
{
    VyString s("abc"); // capacity 4
    s.append("de");
    EXPECT_EQ(s.d->alloc, 12);
    s.insert(0, "\xC3\xA9", -1); // UTF-8 decoded first
    EXPECT_EQ(s.d->alloc, 12);
    EXPECT_EQ(U(s), u"\u00E9abcde");

    VyString a("text");
    const VyString b = a;
    a.append(VyString());
    a.prepend("");
    a.insert(2, static_cast<const char*>(nullptr), 3);
    a.replace(VyUcs2('z'), VyUcs2('y'));
    a.remove(VyUcs2('z'));
    EXPECT_EQ(a.d, b.d);
}

// Slicing, trimming, splitting and casing are also checked against a model by the string_ops
// fuzz target, whose seed inputs ctest replays.
TEST(VyStringEdit, SplitPaddingAndCasing)
{
    const auto parts = [](const VyStringList& l) {
        std::vector<std::u16string> v;
        for (int i = 0; i < l.size(); ++i)
            v.push_back(U(l.at(i)));
        return v;
    };
    typedef std::vector<std::u16string> Parts;
    const VyString abc("abc");
    EXPECT_EQ(parts(abc.split(VyString())), (Parts{u"", u"a", u"b", u"c", u""}));
    EXPECT_EQ(parts(abc.split(VyString(), VyString::DropEmpty)), (Parts{u"a", u"b", u"c"}));
    EXPECT_EQ(parts(VyString(",a,").split(VyUcs2(','))), (Parts{u"", u"a", u""}));
    EXPECT_EQ(parts(VyString().split(",")), (Parts{u""}));

    EXPECT_EQ(U(abc.rightJustified(5, '.', false)), u"..abc");
    EXPECT_EQ(U(abc.leftJustified(5, '.', false)), u"abc..");
    EXPECT_EQ(U(abc.rightJustified(2, '.', true)), u"ab");
    EXPECT_EQ(abc.leftJustified(2, '.', false).d, abc.d);
    for (int u = 0; u < 0x10000; u = u == 0xD7FF ? 0xE000 : u + 1) {
        ASSERT_EQ(VyString(VyUcs2(u)).toLower().at(0), VyUnicode::toLower(VyUcs2(u)));
        ASSERT_EQ(VyString(VyUcs2(u)).toUpper().at(0), VyUnicode::toUpper(VyUcs2(u)));
    }
}
