// Font request: the two-byte record, constructors and setters bit by bit, the style number of
// the glyph key and equality.
#include "vyfont.h"
#include "vyfonteunitcache.h"

#include <gtest/gtest.h>

namespace
{

int byte(const VyFont& f, int i)
{
    unsigned char b[2];
    memcpy(b, &f.fontAttr(), 2);
    return b[i];
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

TEST(VyFont, ConstructorsAndCopiesSetWholeBytes)
{
    const VyFont plain;
    EXPECT_EQ(byte(plain, 0), 16);
    EXPECT_EQ(byte(plain, 1), 0);
    for (int bits = 0; bits < 16; ++bits) {
        const VyFont f(40, bits & 1, bits & 2, bits & 4, bits & 8);
        EXPECT_EQ(byte(f, 0), 40);
        EXPECT_EQ(byte(f, 1), bits); // bit n from argument bn, reserved bits zero
        EXPECT_EQ(f.boldFace() + 2 * f.heavyFace() + 4 * f.lightFace() + 8 * f.underLine(), bits);
    }
    // Copies move both bytes as they are, reserved bits included.
    const VyFont fromAttr(attr(7, 0xA5));
    const VyFont copy = fromAttr;
    VyFont assigned;
    assigned = copy;
    VyFont set;
    set.setFont(attr(7, 0xA5));
    for (const VyFont* f :
         std::initializer_list<const VyFont*>{&fromAttr, &copy, &assigned, &set}) {
        EXPECT_EQ(byte(*f, 0), 7);
        EXPECT_EQ(byte(*f, 1), 0xA5);
    }
}

TEST(VyFont, SettersChangeOnlyTheirOwnBit)
{
    for (int flags = 0; flags < 256; ++flags) {
        VyFont f(attr(9, flags));
        f.setBoldFace(!(flags & 1));
        EXPECT_EQ(byte(f, 1), flags ^ 1);
        f.setLightFaceType(!(flags & 4));
        EXPECT_EQ(byte(f, 1), flags ^ 5);
        f.setUnderLine(!(flags & 8));
        EXPECT_EQ(byte(f, 1), flags ^ 13);
        f.setFontSize(200);
        EXPECT_EQ(byte(f, 0), 200);
        EXPECT_EQ(byte(f, 1), flags ^ 13);
    }
}

TEST(VyFont, BoldFaceBitCountsTwoInTheStyleNumber_Kept)
{
    EXPECT_EQ(VyFont().propertyFlag(), 0);
    EXPECT_EQ(VyFont(12, true, false, false, false).propertyFlag(), 2);
    EXPECT_EQ(VyFont(12, false, true, false, false).propertyFlag(), 1);
    EXPECT_EQ(VyFont(12, true, true, false, false).propertyFlag(), 3);
    VyFont bold;
    bold.setBoldFace(true);
    EXPECT_EQ(bold.propertyFlag(), 2);
    // The lookup key (propertyFlag) and the insertion key (fontFlag) agree for every byte.
    for (int flags = 0; flags < 256; ++flags) {
        const VyFont f(attr(12, flags));
        EXPECT_EQ(f.propertyFlag(), (flags & 1) * 2 + ((flags >> 1) & 1));
        EXPECT_EQ(VyFonteUnitCache::fontFlag(f.fontAttr()), f.propertyFlag());
    }
    EXPECT_EQ(VyFonteUnitCache::glyphKey(0x4E00, 200, 3), 0x03C84E00);
}

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
    // lightFace breaks equality but not the key: both fonts share cached glyphs.
    const VyFont light(12, false, false, true, false);
    EXPECT_NE(light, VyFont(12, false, false, false, false));
    EXPECT_EQ(light.propertyFlag(), VyFont(12, false, false, false, false).propertyFlag());
}
