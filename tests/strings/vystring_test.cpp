// VyString storage: capacity rule, construction, sharing and detach, element access, resizing,
// comparison with case folding, and the key hash.
#include "vyhash.h"
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

int sign(int v)
{
    return (v > 0) - (v < 0);
}

} // namespace

TEST(VyStringStorage, AllocMemoryGrowsDoublesAndShrinksPastThreeTimes)
{
    VyString::Data x{{1}, 0, 0, nullptr};
    VyString::Data::allocMemory(&x, 10, true);
    EXPECT_EQ(x.alloc, 20);
    VyString::Data::allocMemory(&x, 7, false); // 20 <= 21: kept
    EXPECT_EQ(x.alloc, 20);
    VyString::Data::allocMemory(&x, 6, false); // 20 > 18: shrinks to the need
    EXPECT_EQ(x.alloc, 6);
    VyString::Data::allocMemory(&x, 7, true);
    EXPECT_EQ(x.alloc, 14);
    free(x.data);
}

TEST(VyStringStorage, ConstructorsTakeExactlyWhatTheyNeed)
{
    const int nullRef = VyString::Data::shared_null.ref;
    {
        VyString empty;
        EXPECT_EQ(empty.d, &VyString::Data::shared_null);
        EXPECT_EQ(VyString::Data::shared_null.ref, nullRef + 1);
    }
    EXPECT_EQ(VyString::Data::shared_null.ref, nullRef);

    VyString fromNull(static_cast<const char*>(nullptr));
    EXPECT_NE(fromNull.d, &VyString::Data::shared_null);
    EXPECT_EQ(fromNull.unicode(), nullptr);
    EXPECT_EQ(fromNull.toUtf8().size(), 0);
    VyString utf8("h\xC3\xA9llo"); // capacity follows the bytes, not the units
    EXPECT_EQ(U(utf8), u"h\u00E9llo");
    EXPECT_EQ(utf8.d->alloc, 7);
    EXPECT_EQ(utf8.unicode()[5], 0);
    EXPECT_EQ(U(VyString("hello", 2)), u"he");
    EXPECT_EQ(U(VyString("hi", 10)), u"hi");
    const VyUcs2 units[] = {1, 0, 0xFFFF};
    EXPECT_EQ(U(VyString(units, 3)), std::u16string(u"\u0001\u0000\uFFFF", 3));
    EXPECT_EQ(VyString(units, 0).unicode(), nullptr);
    EXPECT_EQ(VyString(char(0xE9)).at(0), 0xE9); // a byte, not UTF-8
    EXPECT_EQ(VyString(VyUcs2(0x4E00)).d->alloc, 2);
    EXPECT_EQ(U(VyString(3, 'x')), u"xxx");
    EXPECT_EQ(VyString(3, 'x').d->alloc, 4);
    EXPECT_EQ(VyString(0, VyUcs2('x')).unicode(), nullptr);
}

TEST(VyStringStorage, ResizingClampsAndKeepsCapacityWithinThreeTimes)
{
    VyString s("abcde");
    s.chop(10);
    EXPECT_TRUE(s.isEmpty());
    s = "abcde";
    s.truncate(-1);
    EXPECT_TRUE(s.isEmpty());
    s = "abcde";
    s.resize(-3);
    EXPECT_TRUE(s.isEmpty());
    s = "abc";
    s.resize(5); // exact, terminated
    EXPECT_EQ(s.d->alloc, 6);
    EXPECT_EQ(s.unicode()[5], 0);

    VyString big(99, 'x');
    big.resize(40); // 100 <= 3 * 41: kept, also by clear
    big.clear();
    EXPECT_EQ(big.d->alloc, 100);
    big = VyString(99, 'x');
    big.d->size = 10; // 100 > 3 * 11: clear shrinks to the old need
    big.clear();
    EXPECT_EQ(big.d->alloc, 11);
    VyString empty;
    empty.clear();
    EXPECT_EQ(empty.d, &VyString::Data::shared_null);
}

TEST(VyStringSharing, CopiesShareUntilOneChanges)
{
    VyString a("shared");
    VyString b = a;
    EXPECT_EQ(a.d->ref, 2);
    b.resize(3);
    b = a;
    b.clear();
    EXPECT_EQ(U(a), u"shared");
    b = a;
    b.detach(); // a private copy of exactly size + 1 units
    EXPECT_NE(a.d, b.d);
    EXPECT_EQ(b.d->alloc, 7);
    EXPECT_EQ(a.d->ref, 1);
    VyString none(static_cast<const char*>(nullptr));
    none.detach();
    EXPECT_EQ(none.unicode(), nullptr);
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
    EXPECT_LT(VyString("abc").compare("ABD", Vy::CaseInsensitive), 0);
    EXPECT_EQ(VyString("b").compare("a", Vy::CaseSensitive), 1);
    EXPECT_EQ(VyString("ab").compare("abc", Vy::CaseSensitive), -1);

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
        std::u16string fx = x;
        std::u16string fy = y;
        for (char16_t& c : fx)
            c = char16_t(VyUnicode::foldCase(c));
        for (char16_t& c : fy)
            c = char16_t(VyUnicode::foldCase(c));
        // Empty strings made from units have no buffer and sort last (kept).
        const int folded =
            x.empty() || y.empty() ? int(x.empty()) - int(y.empty()) : sign(fx.compare(fy));
        ASSERT_EQ(sign(a.compare(b, Vy::CaseInsensitive)), folded);
    }
}

TEST(VyStringCompare, FoldingAgreesWithTheUnicodeTablesOnEveryUnit)
{
    // Includes the foldings stored modulo 65536 (U+A78D folds to U+0265).
    for (int u = 0; u < 0x10000; ++u) {
        if (u >= 0xD800 && u < 0xE000)
            continue;
        const VyString folded(VyUcs2(VyUnicode::foldCase(VyUcs2(u))));
        ASSERT_EQ(VyString(VyUcs2(u)).compare(folded, Vy::CaseInsensitive), 0) << u;
    }
}

TEST(VyStringCompare, LowSurrogatesFoldThroughThePairsLow16Bits)
{
    auto pair = [](VyUcs2 high, VyUcs2 low) {
        const VyUcs2 units[] = {high, low};
        return VyString(units, 2);
    };
    // U+10400 looks up U+0400, which folds by +80: DC00 becomes DC50.
    EXPECT_EQ(pair(0xD801, 0xDC00).compare(pair(0xD801, 0xDC50), Vy::CaseInsensitive), 0);
    // Without a high surrogate before it the unit is its own record.
    EXPECT_NE(pair('a', 0xDC00).compare(pair('a', 0xDC50), Vy::CaseInsensitive), 0);
    // U+1A78D looks up U+A78D, whose difference is stored modulo 65536; the folded low
    // surrogate is taken to 16 bits: DF8D -> 3A65.
    EXPECT_EQ(pair(0xD829, 0xDF8D).compare(pair(0xD829, 0x3A65), Vy::CaseInsensitive), 0);
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

TEST(VyStringHash, HashesTheUtf8Bytes)
{
    EXPECT_EQ(vyHash(VyString()), 0u);
    EXPECT_EQ(vyHash(VyString("A")), 65u);
    EXPECT_EQ(vyHash(VyString("AB")), 65u * 16 + 66);
    // Long enough for the top nibble to be folded back in.
    const char* text = "the quick brown fox jumps over the lazy dog";
    uint h = 0;
    for (const char* p = text; *p; ++p) {
        h = (h << 4) + static_cast<unsigned char>(*p);
        h ^= (h & 0xF0000000u) >> 23;
        h &= 0x0FFFFFFFu;
    }
    EXPECT_EQ(vyHash(VyString(text)), h);

    VyHash<VyString, int> table;
    for (int i = 0; i < 500; ++i)
        table.insert(VyString(i % 26 + 1, char('a' + i % 7)), i);
    EXPECT_EQ(table.size(), 182); // 26 lengths x 7 letters, later values replace earlier
    EXPECT_EQ(table.value(VyString(1, 'a')), 364);
    EXPECT_EQ(table.value(VyString(2, 'b')), 365);
}

TEST(VyStringHash, CoversOnlyAsManyBytesAsUnits_Kept)
{
    // "é" is C3 A9 in UTF-8; one unit hashes one byte.
    EXPECT_EQ(vyHash(VyString("\xC3\xA9")), 0xC3u);
    EXPECT_EQ(vyHash(VyString("\xC3\xA9x")), vyHash(VyString("\xC3\xA9y")));
}
