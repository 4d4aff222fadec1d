// Editing: the size edits on shared strings, mutators fed their own contents, growth, casing and
// padding. Inserting, removing and replacing are checked against a model on std::u16string,
// with a copy taken before each edit that must not change, by the string_ops fuzz target, whose
// seed inputs ctest replays.
#include "vystring.h"
#include "vyu16.h"

#include <gtest/gtest.h>

#include <string>

// The size edits on a copy of a shared string, which each must detach first.
TEST(VyStringEdit, SizeEditsClampAndLeaveCopiesAlone)
{
    const VyString shared("abcd");
    // {n, after chop(n), after truncate(n), after fill('x', n)}
    const struct {
        int n;
        std::u16string chopped, truncated, filled;
    } cases[] = {{-1, u"abcd", u"", u"xxxx"},
                 {0, u"abcd", u"", u""},
                 {3, u"a", u"abc", u"xxx"},
                 {9, u"", u"abcd", u"xxxxxxxxx"}};
    for (const auto& c : cases) {
        VyString s = shared;
        s.chop(c.n);
        EXPECT_EQ(U(s), c.chopped) << c.n;
        s = shared;
        s.truncate(c.n);
        EXPECT_EQ(U(s), c.truncated) << c.n;
        s = shared;
        EXPECT_EQ(U(s.fill('x', c.n)), c.filled) << c.n;
        EXPECT_EQ(U(shared), u"abcd");
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
    EXPECT_EQ(self([](VyString& s) { s.replace(VyUcs2('c'), s); }), u"ababcabab");
    EXPECT_EQ(self([](VyString& s) { s.replace(0, 1, s.unicode() + 3, 2); }), u"abbcab");
    VyString s(100, 'q'); // too long for a copy on the stack
    s.replace(1, 0, s.unicode(), 100);
    EXPECT_EQ(U(s), std::u16string(200, u'q'));
}

TEST(VyStringEdit, ReplacementSearchesAgainWhereItWent_Kept)
{
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
    VyString a("text");
    const VyString b = a;
    a.insert(2, static_cast<const char*>(nullptr), 3);
    a.remove(VyUcs2('z'));
    EXPECT_EQ(a.d, b.d);
}

// Slicing, trimming, splitting and casing are also checked against a model by the string_ops
// fuzz target, whose seed inputs ctest replays.
TEST(VyStringEdit, PaddingAndCasing)
{
    const VyString abc("abc");
    EXPECT_EQ(U(abc.rightJustified(5, '.', false)), u"..abc");
    EXPECT_EQ(U(abc.leftJustified(5, '.', false)), u"abc..");
    EXPECT_EQ(U(abc.rightJustified(2, '.', true)), u"ab");
    EXPECT_EQ(abc.leftJustified(2, '.', false).d, abc.d);
    EXPECT_EQ(U(VyString("\xC3\x89t\xC3\xA9 ss").toUpper()), u"\u00C9T\u00C9 SS");
    EXPECT_EQ(U(VyString("\xC3\x89t\xC3\xA9 SS").toLower()), u"\u00E9t\u00E9 ss");
}
