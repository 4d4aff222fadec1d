// Font request: the two-byte record, constructors and setters bit by bit, the style number of
// the glyph key and equality.
#include "vyfont.h"
#include "vyfonteunitcache.h"

#include <gtest/gtest.h>

namespace
{

// The two bytes of the record: size, flags.
std::pair<int, int> bytes(const VyFont& f)
{
    unsigned char b[2];
    memcpy(b, &f.fontAttr(), 2);
    return {b[0], b[1]};
}

FontAttr attr(int size, int flags)
{
    const unsigned char b[2] = {static_cast<unsigned char>(size),
                                static_cast<unsigned char>(flags)};
    FontAttr a;
    memcpy(&a, b, 2);
    return a;
}

} // namespace

TEST(VyFont, ConstructorsAndSettersWriteWholeBytesOrOwnBits)
{
    EXPECT_EQ(bytes(VyFont()), std::make_pair(16, 0));
    for (int bits = 0; bits < 16; ++bits) {
        const VyFont f(40, bits & 1, bits & 2, bits & 4, bits & 8);
        EXPECT_EQ(bytes(f), std::make_pair(40, bits)); // bit n from argument bn, reserved zero
        EXPECT_EQ(f.boldFace() + 2 * f.heavyFace() + 4 * f.lightFace() + 8 * f.underLine(), bits);
    }
    for (int flags = 0; flags < 256; ++flags) {
        // A record goes in as it is, reserved bits included.
        VyFont f(attr(9, flags));
        EXPECT_EQ(bytes(f), std::make_pair(9, flags));
        f.setFont(attr(9, flags));
        f.setBoldFace(!(flags & 1));
        f.setLightFaceType(!(flags & 4));
        f.setUnderLine(!(flags & 8));
        f.setFontSize(200);
        EXPECT_EQ(bytes(f), std::make_pair(200, flags ^ 13));
    }
}

// The lookup key (propertyFlag) and the insertion key (fontFlag) agree for every byte.
TEST(VyFont, BoldFaceBitCountsTwoInTheStyleNumber_Kept)
{
    for (int flags = 0; flags < 256; ++flags) {
        const VyFont f(attr(12, flags));
        EXPECT_EQ(f.propertyFlag(), (flags & 1) * 2 + ((flags >> 1) & 1));
        EXPECT_EQ(VyFonteUnitCache::fontFlag(f.fontAttr()), f.propertyFlag());
    }
    EXPECT_EQ(VyFonteUnitCache::glyphKey(0x4E00, 200, 3), 0x03C84E00);
}

// lightFace breaks equality but not the key (see above): such fonts share cached glyphs.
TEST(VyFont, EqualityIgnoresUnderLine_Kept)
{
    for (int a = 0; a < 256; ++a) {
        for (int b = 0; b < 256; b += 3) {
            for (int size : {12, 13}) {
                const bool same = size == 12 && (a & 7) == (b & 7);
                EXPECT_EQ(VyFont(attr(12, a)) == VyFont(attr(size, b)), same) << a << " " << b;
                EXPECT_EQ(VyFont(attr(12, a)) != VyFont(attr(size, b)), !same);
            }
        }
    }
}
