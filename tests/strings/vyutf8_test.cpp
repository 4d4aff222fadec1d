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

std::u16string reference(const Bytes& in)
{
    const int len = int(in.size());
    // Cut trailing sequences that are not exactly as long as their lead announces.
    int end = len;
    for (int i = len - 1; i >= 0; --i) {
        const int k = announced(in[i]);
        if (k == 0)
            break;
        if (k >= 2) {
            if (end - i == k)
                break;
            end = i;
        }
    }
    auto byte = [&](int i) -> unsigned { return i < len ? in[i] : 0; };
    std::u16string out;
    for (int i = 0; i < end;) {
        switch (announced(in[i])) {
        case 0:
            out += char16_t(in[i]);
            i += 1;
            break;
        case 2:
            out += char16_t((in[i] & 0x1F) << 6 | (byte(i + 1) & 0x3F));
            i += 2;
            break;
        case 3:
            out +=
                char16_t((in[i] & 0x0F) << 12 | (byte(i + 1) & 0x3F) << 6 | (byte(i + 2) & 0x3F));
            i += 3;
            break;
        default:
            i += 1;
        }
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
        // Every prefix is a truncation at the end of the given length.
        const Bytes prefix(in.begin(), in.begin() + (in.empty() ? 0 : rng() % in.size()));
        ASSERT_EQ(decode(prefix), reference(prefix)) << round;
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

        const VyString s(reinterpret_cast<const VyUcs2*>(units.data()), int(units.size()));
        const VyByteArray a = s.toUtf8();
        ASSERT_EQ(std::string(a.constData(), a.size()), std::string(bytes.data(), n));
        ASSERT_EQ(a.constData()[a.size()], 0);
        ASSERT_EQ(a.d->alloc, 3 * s.size() + 1);
        ASSERT_EQ(U(VyString(a.constData())), units); // no 0 units were generated
    }
}

TEST(VyStringUtf8, SurrogatesEncodeOneByOne_Kept)
{
    const VyUcs2 pair[] = {0xD83D, 0xDE00};
    const VyByteArray a = VyString(pair, 2).toUtf8();
    EXPECT_EQ(std::string(a.constData(), a.size()), "\xED\xA0\xBD\xED\xB8\x80");
    EXPECT_EQ(U(VyString(a.constData())), u"\U0001F600");
}
