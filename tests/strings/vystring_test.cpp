// VyString storage: capacity rule, construction, sharing and detach, element access, resizing,
// comparison with case folding, and the key hash.
#include "vystring.h"
#include "vyu16.h"
#include "vyunicode.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

namespace
{

std::u16string randomText(std::mt19937& rng, const std::u16string& alphabet, int maxLength)
{
    std::u16string s(rng() % (maxLength + 1), u' ');
    for (char16_t& c : s)
        c = alphabet[rng() % alphabet.size()];
    return s;
}

std::u16string folded(std::u16string s)
{
    for (char16_t& c : s)
        c = char16_t(VyUnicode::foldCase(c));
    return s;
}

int sign(int v)
{
    return (v > 0) - (v < 0);
}

} // namespace

TEST(VyStringStorage, AllocMemoryGrowsDoublesAndShrinksPastThreeTimes)
{
    VyString::Data x{{1}, 0, 0, nullptr};
    // {need, grow, capacity after}: a buffer up to three times the need is kept.
    const int steps[][3] = {{10, 1, 20}, {7, 0, 20}, {6, 0, 6}, {2, 0, 6}, {1, 0, 1}, {7, 1, 14}};
    for (const auto& s : steps) {
        VyString::Data::allocMemory(&x, s[0], s[1]);
        EXPECT_EQ(x.alloc, s[2]) << s[0];
    }
    free(x.data);
    // clear follows the same rule: 100 > 3 * 11 shrinks to the old need.
    VyString big(99, 'x');
    big.d->size = 10;
    big.clear();
    EXPECT_EQ(big.d->alloc, 11);
}

TEST(VyStringStorage, ConstructorsAndDetachTakeExactlyWhatTheyNeed)
{
    // The UTF-8 and unit constructors are checked on random text in vyutf8_test.cpp.
    EXPECT_EQ(U(VyString(char(0xE9))), u"\u00E9"); // a byte, not UTF-8
    EXPECT_EQ(VyString(VyUcs2(0x4E00)).d->alloc, 2);
    EXPECT_EQ(VyString(3, 'x').d->alloc, 4);
    // A null pointer gives a fresh block without a buffer.
    EXPECT_NE(VyString(static_cast<const char*>(nullptr)).d, &VyString::Data::shared_null);
    VyString a("shared");
    VyString b = a;
    b.detach(); // a private copy of exactly size + 1 units
    EXPECT_EQ(b.d->alloc, 7);
    EXPECT_EQ(a.d->ref, 1);
}

TEST(VyStringSharing, SubscriptWritesReachEveryCopy_Kept)
{
    VyString a("abc");
    VyString b = a;
    b[1] = 'X';
    EXPECT_EQ(U(a), u"aXc");
    EXPECT_EQ(a.d, b.d);
}

TEST(VyStringSharing, AssigningASharedStringToItself_Kept)
{
    // Release first, then take: safe while another copy holds the block. (An unshared string
    // assigned to itself would free its block first; that case is not exercised.)
    VyString a("abc");
    VyString b = a;
    a = a;
    EXPECT_EQ(a.d, b.d);
    EXPECT_EQ(a.d->ref, 2);
    a = VyUcs2('z');
    EXPECT_EQ(U(a), u"z");
    EXPECT_EQ(U(b), u"abc");
}

TEST(VyStringDeathTest, AssertionTexts)
{
    VyString s("abc");
    const VyString& c = s;
    EXPECT_DEATH(c.at(3), "\\./\\.\\./include/pub/vystring:302: VyUcs2 VyString::at\\(int\\) "
                          "const: Assertion `i < size\\(\\)' failed");
    EXPECT_DEATH(s[3] = 0, "\\./\\.\\./include/pub/vystring:311: VyUcs2& "
                           "VyString::operator\\[\\]\\(int\\): Assertion `i < size\\(\\)' failed");
}

TEST(VyStringCompare, OrderAndEqualityFollowTheUnsignedUnits)
{
    std::mt19937 rng(7);
    const std::u16string alphabet = u"aAbB\u00DF\u1E9E\u8000\uFFFF";
    for (int i = 0; i < 3000; ++i) {
        const std::u16string x = randomText(rng, alphabet, 4);
        const std::u16string y = randomText(rng, alphabet, 4);
        const VyString a = V(x);
        const VyString b = V(y);
        ASSERT_EQ(a == b, x == y);
        ASSERT_EQ(a < b, x < y);
        ASSERT_EQ(sign(a.compare(b)), sign(x.compare(y)));
        // Empty strings made from units have no buffer and sort last (kept).
        const int expected = x.empty() || y.empty() ? int(x.empty()) - int(y.empty())
                                                    : sign(folded(x).compare(folded(y)));
        ASSERT_EQ(sign(a.compare(b, Vy::CaseInsensitive)), expected);
    }
}

TEST(VyStringCompare, LowSurrogatesFoldThroughThePairsLow16Bits)
{
    // Without a high surrogate before it a low surrogate is its own record.
    EXPECT_NE(V(u"a\xDC00").compare(V(u"a\xDC50"), Vy::CaseInsensitive), 0);
    // U+1A78D looks up U+A78D, whose difference is stored modulo 65536; the folded low
    // surrogate is taken to 16 bits: DF8D -> 3A65.
    EXPECT_EQ(V(u"\xD829\xDF8D").compare(V(u"\xD829\x3A65"), Vy::CaseInsensitive), 0);
}

TEST(VyStringCompare, MissingBufferSortsAfterEverything_Kept)
{
    const VyString none(static_cast<const char*>(nullptr));
    const VyString emptyWithBuffer("");
    ASSERT_NE(emptyWithBuffer.unicode(), nullptr);
    EXPECT_EQ(none.compare(emptyWithBuffer, Vy::CaseInsensitive), 1);
    EXPECT_EQ(emptyWithBuffer.compare(none, Vy::CaseInsensitive), -1);
    EXPECT_EQ(none.compare("a", Vy::CaseInsensitive), 1);
    EXPECT_EQ(none.compare(emptyWithBuffer, Vy::CaseSensitive), 0);
}

TEST(VyStringHash, CoversOnlyAsManyBytesAsUnits_Kept)
{
    // "é" is C3 A9 in UTF-8; one unit hashes one byte.
    EXPECT_EQ(vyHash(VyString()), 0u);
    EXPECT_EQ(vyHash(VyString("\xC3\xA9")), 0xC3u);
    EXPECT_EQ(vyHash(VyString("\xC3\xA9x")), vyHash(VyString("\xC3\xA9y")));
}
