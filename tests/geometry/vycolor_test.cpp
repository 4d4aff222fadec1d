#include "vycolor.h"

#include <gtest/gtest.h>

namespace
{

TEST(VyColorTest, EveryByteTakesPart)
{
    const VyColor base(1, 2, 3, 4, 5);
    VyColor c;
    for (int i = 0; i < 5; ++i) {
        VyColor d = base;
        unsigned char* bytes[] = {&d.red, &d.green, &d.blue, &d.alpha, &d.extra};
        *bytes[i] = 200;
        EXPECT_NE(d, base) << "byte " << i;
        c = d;
        EXPECT_EQ(c, d) << "byte " << i;
    }
}

} // namespace
