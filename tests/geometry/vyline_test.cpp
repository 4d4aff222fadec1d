#include "vyline.h"

#include <gtest/gtest.h>

#include <math.h>
#include <random>

namespace
{

// The difference of two angles in degrees, taking 0 and 360 as the same direction.
float angleGap(float a, float b)
{
    const float d = fabsf(a - b);
    return d > 180 ? 360 - d : d;
}

// The random checks below read angles back; these pin the direction, the null line and the
// wrap at 360.
TEST(VyLineFTest, AngleDirectionWrapAndFuzzyNull)
{
    const struct {
        VyLineF line;
        float angle;
    } cases[] = {
        {{0, 0, 1, 0}, 0},
        {{0, 0, 0, -1}, 90},
        {{3, 3, 3, 3}, 0},
        // Just below the x axis to the right: a value that would read 360 is reported as 0.
        {{0, 0, 1, 1e-7f}, 0},
    };
    for (const auto& c : cases)
        EXPECT_FLOAT_EQ(c.line.angle(), c.angle) << c.line.x2 << "," << c.line.y2;
    EXPECT_FALSE(signbit(VyLineF(0, 0, 1, 0).angle()));
    EXPECT_NEAR(VyLineF(0, 0, 1, 1e-3f).angle(), 359.9427f, 1e-3f);
    EXPECT_TRUE(VyLineF(1, 1, 1.000005f, 0.999995f).isNull());
    EXPECT_FALSE(VyLineF(1, 1, 1.0001f, 1).isNull());
    EXPECT_FALSE(VyLineF(1, 1, 1, 1.0001f).isNull());
}

// Random lengths and angles: setAngle keeps p1 and the length, fromPolar starts at the origin,
// and angle() reads the angle back; a positive angle moves p2 up the screen.
TEST(VyLineFTest, SetAngleAndFromPolarMoveP2OnScreen)
{
    VyLineF l(1, 2, 4, 6);
    l.setAngle(90);
    EXPECT_NEAR(l.x2, 1, 1e-5);
    EXPECT_NEAR(l.y2, -3, 1e-5);
    std::mt19937 rng(5);
    std::uniform_real_distribution<float> deg(0, 360), len(0.5f, 500), pos(-100, 100);
    for (int i = 0; i < 2000; ++i) {
        const float a = deg(rng), n = len(rng);
        const VyLineF polar = VyLineF::fromPolar(n, a);
        ASSERT_EQ(polar.p1(), VyPointF(0, 0));
        ASSERT_LT(angleGap(polar.angle(), a), 1e-3f);
        ASSERT_NEAR(polar.length(), n, n * 1e-5f);
        VyLineF m(pos(rng), pos(rng), pos(rng), pos(rng));
        const float before = m.length();
        if (before < 0.01f)
            continue;
        const VyPointF start = m.p1();
        m.setAngle(a);
        ASSERT_EQ(m.p1(), start);
        ASSERT_NEAR(m.length(), before, before * 1e-4f);
        ASSERT_LT(angleGap(m.angle(), a), 1e-2f);
        const VyLineF u = m.unitVector();
        ASSERT_EQ(u.p1(), start);
        ASSERT_NEAR(u.length(), 1, 1e-4f);
        ASSERT_LT(angleGap(u.angle(), a), 1e-2f);
    }
}

TEST(VyLineFTest, AngleBetweenLines)
{
    const VyLineF right(0, 0, 1, 0), up(0, 0, 0, -1), down(3, 3, 3, 9);
    EXPECT_FLOAT_EQ(right.angle(up), 90);
    EXPECT_EQ(right.angle(VyLineF(2, 2, 2, 2)), 0);
    EXPECT_FLOAT_EQ(up.angleTo(right), 270);
    EXPECT_FLOAT_EQ(up.angleTo(down), 180);
    EXPECT_EQ(up.angleTo(up), 0);
    // Rounding may push the cosine of parallel lines past 1; the clamp keeps the result a
    // number.
    std::mt19937 rng(11);
    std::uniform_real_distribution<float> pos(-1000, 1000), k(0.001f, 1000);
    for (int i = 0; i < 2000; ++i) {
        const VyLineF a(pos(rng), pos(rng), pos(rng), pos(rng));
        if (a.length() == 0)
            continue;
        const float f = k(rng);
        const VyLineF same(0, 0, a.dx() * f, a.dy() * f), opposite(0, 0, -a.dx(), -a.dy());
        ASSERT_NEAR(a.angle(same), 0, 0.1f);
        ASSERT_NEAR(a.angle(opposite), 180, 0.1f);
        ASSERT_NEAR(a.angleTo(opposite), 180, 0.01f);
    }
}

} // namespace
