// UTF-8 <-> UTF-16 conversion: malformed input and truncated tails in exact-size buffers (so a
// sanitizer sees any read past `len`), round trips and toUtf8. Random malformed bytes are
// decoded against a reference decoder by the utf8 fuzz target.
#include "vystring.h"
#include "vyu16.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

namespace
{

typedef std::vector<unsigned char> Bytes;

std::u16string decode(const Bytes& in)
{
    // Exact sizes: no slack before or after for the decoder to touch unnoticed.
    std::vector<char> src(in.begin(), in.end());
    std::vector<VyUcs2> dst(in.size());
    const int n = VyString::utf8ToUcs2(dst.data(), src.data(), int(src.size()));
    return std::u16string(dst.begin(), dst.begin() + n);
}

} // namespace

// More malformed input is decoded against a reference decoder by the utf8 fuzz target, whose
// seed inputs ctest replays.
TEST(VyStringUtf8, MalformedInput)
{
    EXPECT_EQ(decode({0x61, 0x62, 0xC3}), u"ab");      // incomplete tail dropped
    EXPECT_EQ(decode({0xC3, 0xA9, 0xA9}), u"");        // too many followers: cut as well
    EXPECT_EQ(decode({0xE4, 0x61, 0x62}), u"\u4862");  // followers taken unchecked
    EXPECT_EQ(decode({0x61, 0xE4, 0x61}), u"a\u4840"); // a follower past the end reads 0
    EXPECT_EQ(VyString::utf8ToUcs2(nullptr, nullptr, 0), 0);
}

TEST(VyStringUtf8, EveryUnitSequenceSurvivesARoundTrip)
{
    std::mt19937 rng(5);
    for (int round = 0; round < 2000; ++round) {
        std::u16string units(rng() % 40, u' ');
        for (char16_t& u : units) {
            const int kind = rng() % 4; // ASCII runs, two- and three-byte units, anything
            u = char16_t(kind == 0   ? 1 + rng() % 0x7F
                         : kind == 1 ? 0x80 + rng() % 0x780
                                     : 1 + rng() % 0xFFFF);
        }
        std::vector<char> bytes(3 * units.size());
        const int n = VyString::ucs2ToUtf8(
            bytes.data(), reinterpret_cast<const VyUcs2*>(units.data()), int(units.size()));
        ASSERT_EQ(decode(Bytes(bytes.begin(), bytes.begin() + n)), units);

        // toUtf8 reserves 3 * size + 1 bytes; the UTF-8 constructor the text and a terminator.
        const VyString s = V(units);
        const VyByteArray a = s.toUtf8();
        ASSERT_EQ(std::string(a.constData(), a.size()), std::string(bytes.data(), n));
        ASSERT_EQ(a.d->alloc, 3 * s.size() + 1);
        const VyString back(a.constData()); // no 0 units were generated
        ASSERT_EQ(U(back), units);
        ASSERT_EQ(back.d->alloc, n + 1);
    }
}

TEST(VyStringUtf8, SurrogatesEncodeOneByOne_Kept)
{
    const VyUcs2 pair[] = {0xD83D, 0xDE00};
    const VyByteArray a = VyString(pair, 2).toUtf8();
    EXPECT_EQ(std::string(a.constData(), a.size()), "\xED\xA0\xBD\xED\xB8\x80");
    EXPECT_EQ(U(VyString(a.constData())), u"\U0001F600");
}
