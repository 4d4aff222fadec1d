#include "vysize.h"

#include <gtest/gtest.h>

#include <random>
#include <stdint.h>

namespace
{

TEST(VySizeTest, ScaleModes)
{
    VySize s(10, 20);
    s.scale(VySize(100, 100), Vy::FitInsideRatio);
    EXPECT_EQ(s, VySize(50, 100));
    s = VySize(10, 20);
    s.scale(VySize(100, 100), Vy::FillOutsideRatio);
    EXPECT_EQ(s, VySize(100, 200));
    s = VySize(10, 20);
    s.scale(VySize(100, 100), Vy::IgnoreRatio);
    EXPECT_EQ(s, VySize(100, 100));
    for (int mode = 0; mode < 3; ++mode) {
        VySize zero(0, 20), flat(20, 0);
        zero.scale(VySize(7, 9), Vy::AspectRatioMode(mode));
        flat.scale(VySize(7, 9), Vy::AspectRatioMode(mode));
        EXPECT_EQ(zero, VySize(7, 9));
        EXPECT_EQ(flat, VySize(7, 9));
    }
    // rw = 8 / 3 = 2 equals the target width: the height's candidate (2, 4) wins in both modes
    // over (2, 2 * 3 / 2).
    for (const Vy::AspectRatioMode mode : {Vy::FitInsideRatio, Vy::FillOutsideRatio}) {
        s = VySize(2, 3);
        s.scale(VySize(2, 4), mode);
        EXPECT_EQ(s, VySize(2, 4));
    }
    // Truncation toward zero: -30 / 7 is -4.
    s = VySize(-3, 7);
    s.scale(VySize(10, 10), Vy::FitInsideRatio);
    EXPECT_EQ(s, VySize(-4, 10));
    // 60000 * 100000 does not fit in 32 bits.
    s = VySize(100000, 100000);
    s.scale(VySize(50000, 60000), Vy::FitInsideRatio);
    EXPECT_EQ(s, VySize(50000, 50000));
    s.transpose();
    EXPECT_EQ(s, VySize(50000, 50000));
    VySize t(3, 8);
    t.transpose();
    EXPECT_EQ(t, VySize(8, 3));
}

// Fit stays inside the target, fill covers it; one side is the target's, and the other is the
// exact proportional length rounded down.
TEST(VySizeTest, ScaleKeepsShapeAgainstModel)
{
    std::mt19937 rng(99);
    // Products above 2^32, results well inside the int range.
    std::uniform_int_distribution<int> side(1000, 200000);
    for (int i = 0; i < 20000; ++i) {
        const VySize from(side(rng), side(rng)), to(side(rng), side(rng));
        for (const Vy::AspectRatioMode mode : {Vy::FitInsideRatio, Vy::FillOutsideRatio}) {
            VySize r = from;
            r.scale(to, mode);
            if (mode == Vy::FitInsideRatio) {
                ASSERT_TRUE(r.width <= to.width && r.height <= to.height);
            } else {
                ASSERT_TRUE(r.width >= to.width && r.height >= to.height);
            }
            const int64_t w = from.width, h = from.height;
            if (r.height == to.height) {
                ASSERT_LE(int64_t(r.width) * h, int64_t(to.height) * w);
                ASSERT_GT(int64_t(r.width + 1) * h, int64_t(to.height) * w);
            } else {
                ASSERT_EQ(r.width, to.width);
                ASSERT_LE(int64_t(r.height) * w, int64_t(to.width) * h);
                ASSERT_GT(int64_t(r.height + 1) * w, int64_t(to.width) * h);
            }
        }
    }
}

TEST(VySizeFTest, ScaleWithoutTruncation)
{
    VySizeF s(3, 7);
    s.scale(VySizeF(10, 10), Vy::FitInsideRatio);
    EXPECT_FLOAT_EQ(s.width, 30.0f / 7.0f);
    EXPECT_FLOAT_EQ(s.height, 10);
    s = VySizeF(3, 7);
    s.scale(VySizeF(10, 10), Vy::FillOutsideRatio);
    EXPECT_FLOAT_EQ(s.width, 10);
    EXPECT_FLOAT_EQ(s.height, 70.0f / 3.0f);
    s = VySizeF(0, 7);
    s.scale(VySizeF(1.5f, 2.5f), Vy::FitInsideRatio);
    EXPECT_EQ(s, VySizeF(1.5f, 2.5f));
    s.transpose();
    EXPECT_EQ(s, VySizeF(2.5f, 1.5f));
}

} // namespace
