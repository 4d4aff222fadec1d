#include "vysize.h"

#include <gtest/gtest.h>

#include <random>
#include <stdint.h>

namespace
{

TEST(VySizeTest, ScaleModes)
{
    const struct {
        VySize from, to;
        Vy::AspectRatioMode mode;
        VySize want;
    } cases[] = {
        {{10, 20}, {100, 100}, Vy::IgnoreRatio, {100, 100}},
        {{0, 20}, {7, 9}, Vy::FitInsideRatio, {7, 9}},
        {{20, 0}, {7, 9}, Vy::FillOutsideRatio, {7, 9}},
        // rw = 8 / 3 = 2 equals the target width: the height's candidate (2, 4) wins in both
        // modes over (2, 2 * 3 / 2).
        {{2, 3}, {2, 4}, Vy::FitInsideRatio, {2, 4}},
        {{2, 3}, {2, 4}, Vy::FillOutsideRatio, {2, 4}},
        // Truncation toward zero: -30 / 7 is -4.
        {{-3, 7}, {10, 10}, Vy::FitInsideRatio, {-4, 10}},
    };
    for (const auto& c : cases) {
        VySize s = c.from;
        s.scale(c.to, c.mode);
        EXPECT_EQ(s, c.want) << c.from.width << "x" << c.from.height << " mode " << c.mode;
    }
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
        const bool fit = i % 2;
        VySize r = from;
        r.scale(to, fit ? Vy::FitInsideRatio : Vy::FillOutsideRatio);
        if (fit) {
            ASSERT_LE(r.width, to.width);
            ASSERT_LE(r.height, to.height);
        } else {
            ASSERT_GE(r.width, to.width);
            ASSERT_GE(r.height, to.height);
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

TEST(VySizeFTest, ScaleWithoutTruncation)
{
    VySizeF s(3, 7);
    s.scale(VySizeF(10, 10), Vy::FitInsideRatio);
    EXPECT_EQ(s, VySizeF(30.0f / 7.0f, 10));
    s = VySizeF(3, 7);
    s.scale(VySizeF(10, 10), Vy::FillOutsideRatio);
    EXPECT_EQ(s, VySizeF(10, 70.0f / 3.0f));
    s = VySizeF(0, 7);
    s.scale(VySizeF(1.5f, 2.5f), Vy::FitInsideRatio);
    s.transpose();
    EXPECT_EQ(s, VySizeF(2.5f, 1.5f));
}

} // namespace
