// UTF-8 <-> UTF-16 conversion: a reference decoder written from the rules, randomized
// malformed input in exact-size buffers (so a sanitizer sees any read past `len`), truncated
// tails, round trips and toUtf8.
#include "vystring.h"
#include "vyu16.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

namespace
{

typedef std::vector<unsigned char> Bytes;

// Sequence length announced by a byte: 0 ASCII, 1 continuation, 2..8 leads.
int announced(unsigned char b)
{
    if (b < 0x80)
        return 0;
    int k = 0;
    for (int bit = 7; bit >= 0 && (b >> bit) & 1; --bit)
        ++k;
    return k;
}

// The decoder's rules written out: a sequence at the end that is not exactly as long as its lead
// announces is cut; two- and three-byte leads give a unit from followers taken unchecked (0 past
// the end); every other byte is skipped.
std::u16string reference(const Bytes& in)
{
    const int len = int(in.size());
    int end = len;
    for (int i = len - 1; i >= 0 && announced(in[i]) > 0; --i) {
        const int k = announced(in[i]);
        if (k >= 2 && end - i == k)
            break;
        if (k >= 2)
            end = i;
    }
    auto byte = [&](int i) -> unsigned { return i < len ? in[i] : 0; };
    std::u16string out;
    for (int i = 0; i < end;) {
        const int k = announced(in[i]);
        if (k == 0)
            out += char16_t(in[i]);
        else if (k == 2)
            out += char16_t((in[i] & 0x1F) << 6 | (byte(i + 1) & 0x3F));
        else if (k == 3)
            out +=
                char16_t((in[i] & 0x0F) << 12 | (byte(i + 1) & 0x3F) << 6 | (byte(i + 2) & 0x3F));
        i += k == 2 || k == 3 ? k : 1;
    }
    return out;
}

std::u16string decode(const Bytes& in)
{
    // Exact sizes: no slack before or after for the decoder to touch unnoticed.
    std::vector<char> src(in.begin(), in.end());
    std::vector<VyUcs2> dst(in.size());
    const int n = VyString::utf8ToUcs2(dst.data(), src.data(), int(src.size()));
    return std::u16string(dst.begin(), dst.begin() + n);
}

} // namespace

TEST(VyStringUtf8, DocumentedMalformedInput)
{
    EXPECT_EQ(decode({0x61, 0x62, 0xC3}), u"ab");      // incomplete tail dropped
    EXPECT_EQ(decode({0xF0, 0x9F, 0x98, 0x80}), u"");  // four-byte sequences vanish
    EXPECT_EQ(decode({0x61, 0x80, 0x62}), u"ab");      // stray continuation skipped
    EXPECT_EQ(decode({0xE4, 0x61, 0x62}), u"\u4862");  // followers taken unchecked
    EXPECT_EQ(decode({0x61, 0xE4, 0x61}), u"a\u4840"); // a follower past the end reads 0
    EXPECT_EQ(decode({0xC3, 0xA9, 0xA9}), u"");        // too many followers: cut as well
    EXPECT_EQ(decode({0xC0, 0xAF, 0xED, 0xA0, 0xBD}),
              (std::u16string{u'/', char16_t(0xD83D)})); // overlong, surrogate
    EXPECT_EQ(VyString::utf8ToUcs2(nullptr, nullptr, 0), 0);
    EXPECT_EQ(U(VyString("h\xC3\xA9llo", 2)), u"h");
}

TEST(VyStringUtf8, RandomBytesDecodeAsTheReferenceDoes)
{
    std::mt19937 rng(11);
    const unsigned char pool[] = {0x00, 0x41, 0x7F, 0x80, 0xBF, 0xC3, 0xDF, 0xE0,
                                  0xE4, 0xEF, 0xF0, 0xF4, 0xF8, 0xFE, 0xFF};
    for (int round = 0; round < 20000; ++round) {
        Bytes in(rng() % 24);
        for (unsigned char& b : in)
            b = rng() % 3 ? pool[rng() % sizeof(pool)] : static_cast<unsigned char>(rng());
        ASSERT_EQ(decode(in), reference(in)) << round;
    }
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

        // The constructors take exactly the text and a terminator; toUtf8 3 * size + 1 bytes.
        const VyString s = V(units);
        ASSERT_EQ(s.d->alloc, s.isEmpty() ? 0 : s.size() + 1);
        ASSERT_EQ(s.isEmpty() ? 0 : s.unicode()[s.size()], 0);
        const VyByteArray a = s.toUtf8();
        ASSERT_EQ(std::string(a.constData(), a.size()), std::string(bytes.data(), n));
        ASSERT_EQ(a.constData()[a.size()], 0);
        ASSERT_EQ(a.d->alloc, 3 * s.size() + 1);
        const VyString back(a.constData()); // no 0 units were generated
        ASSERT_EQ(U(back), units);
        ASSERT_EQ(back.d->alloc, n + 1);
        ASSERT_EQ(back.unicode()[back.size()], 0);
    }
}

TEST(VyStringUtf8, SurrogatesEncodeOneByOne_Kept)
{
    const VyUcs2 pair[] = {0xD83D, 0xDE00};
    const VyByteArray a = VyString(pair, 2).toUtf8();
    EXPECT_EQ(std::string(a.constData(), a.size()), "\xED\xA0\xBD\xED\xB8\x80");
    EXPECT_EQ(U(VyString(a.constData())), u"\U0001F600");
}
