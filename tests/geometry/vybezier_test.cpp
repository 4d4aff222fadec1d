#include "vybezier.h"

#include "beziercurves.h"

#include <gtest/gtest.h>

#include <math.h>
#include <random>
#include <vector>

namespace
{

VyBezier randomCurve(std::mt19937& rng)
{
    std::uniform_real_distribution<float> u(-100, 100);
    return curve(u(rng), u(rng), u(rng), u(rng), u(rng), u(rng), u(rng), u(rng));
}

// The arc length by Simpson's rule over the speed.
double integratedLength(const VyBezier& b)
{
    const int n = 20000;
    double sum = 0;
    for (int i = 0; i <= n; ++i) {
        const VyPointF d = b.derivedAt(float(i) / n);
        sum += (i == 0 || i == n ? 1 : i % 2 ? 4 : 2) * hypot(d.x, d.y);
    }
    return sum / (3.0 * n);
}

} // namespace

TEST(VyBezierTest, EndsTangentsNormalsAndHalves)
{
    std::mt19937 rng(7);
    for (int round = 0; round < 100; ++round) {
        const VyBezier b = randomCurve(rng);
        EXPECT_LT(dist(b.pointAt(0), b.pt1()), 1e-4);
        EXPECT_LT(dist(b.pointAt(1), b.pt4()), 1e-4);
        const float t = float(rng() % 1000) / 1000.0f, u = float(rng() % 1000) / 1000.0f;
        const VyPointF a = b.pointAt(t - 1e-3f), c = b.pointAt(t + 1e-3f), d = b.derivedAt(t);
        EXPECT_LT(dist(VyPointF((c.x - a.x) / 2e-3f, (c.y - a.y) / 2e-3f), d), 0.2);
        // A unit vector a quarter turn counter-clockwise on the screen from the travel.
        const VyPointF n = b.normalVector(t);
        EXPECT_NEAR(hypot(n.x, n.y), 1, 1e-5);
        EXPECT_NEAR((d.x * n.x + d.y * n.y) / hypot(d.x, d.y), 0, 1e-4);
        EXPECT_LT(d.x * n.y - d.y * n.x, 0);

        VyBezier first, second;
        b.split(&first, &second);
        EXPECT_LT(dist(first.pointAt(u), b.pointAt(u / 2)), 1e-3);
        EXPECT_LT(dist(second.pointAt(u), b.pointAt(0.5f + u / 2)), 1e-3);
        // Any interval, backward ones too.
        EXPECT_LT(dist(b.bezierOnInterval(t, u).pointAt(0.3f), b.pointAt(t + 0.3f * (u - t))),
                  1e-3);
    }
    // P2 on P1: the direction toward P3; a point curve has none.
    EXPECT_LT(dist(curve(0, 0, 0, 0, 0, 10, 5, 10).normalVector(0), VyPointF(1, 0)), 1e-6);
    EXPECT_TRUE(curve(4, 4, 4, 4, 4, 4, 4, 4).normalVector(0.3f).isNull());
    VyBezier b = curve(0, 0, 10, 20, 30, -5, 40, 0);
    const VyBezier whole = b;
    b.split(&b, &b); // the outputs may be the curve itself
    EXPECT_LT(dist(b.pt1(), whole.pointAt(0.5f)), 1e-5);
}

TEST(VyBezierTest, BoundsHoldSamplesAndTouchTheExtrema)
{
    std::mt19937 rng(13);
    for (int round = 0; round < 100; ++round) {
        const VyBezier b = randomCurve(rng);
        const VyRectF r = b.bounds();
        VyRectF hull(b.x1, b.y1, 0, 0);
        for (const VyPointF& p : samples(b, 4000))
            hull |= VyRectF(p.x, p.y, 1e-9f, 1e-9f);
        EXPECT_NEAR(r.x, hull.x, 2e-3);
        EXPECT_NEAR(r.y, hull.y, 2e-3);
        EXPECT_NEAR(r.x + r.width, hull.x + hull.width, 2e-3);
        EXPECT_NEAR(r.y + r.height, hull.y + hull.height, 2e-3);
    }
    // The control points stand out; the curve reaches three quarters of the way.
    EXPECT_EQ(curve(0, 0, 0, -100, 100, -100, 100, 0).bounds(), VyRectF(0, -75, 100, 75));
}

TEST(VyBezierTest, StationaryPointsWhereTheYDerivativeChangesSign)
{
    std::mt19937 rng(17);
    const int n = 20000;
    for (int round = 0; round < 200; ++round) {
        const VyBezier b = randomCurve(rng);
        float t[2] = {-1, -1};
        const int count = b.stationaryYPoints(t[0], t[1]);
        if (count == 2 && t[1] - t[0] < 1e-3f)
            continue; // a near-double root: sampling cannot tell the two apart
        std::vector<double> changes;
        for (int i = 1; i <= n; ++i)
            if ((b.derivedAt(float(i - 1) / n).y < 0) != (b.derivedAt(float(i) / n).y < 0))
                changes.push_back((i - 0.5) / n);
        ASSERT_EQ(count, int(changes.size()));
        for (int k = 0; k < count; ++k)
            EXPECT_NEAR(t[k], changes[size_t(k)], 1.0 / n);
    }
    // Flat at both ends: t = 0 and t = 1 are not counted; outputs beyond the count stay.
    float a = 7, c = 7;
    EXPECT_EQ(curve(0, 5, 10, 5, 20, 5, 30, 5).stationaryYPoints(a, c), 0);
    EXPECT_EQ(curve(0, 0, 10, 0, 20, 40, 30, 40).stationaryYPoints(a, c), 0);
    EXPECT_EQ(curve(0, 0, 10, -40, 20, -40, 30, 0).stationaryYPoints(a, c), 1);
    EXPECT_FLOAT_EQ(a, 0.5f);
    EXPECT_EQ(c, 7);
}

TEST(VyBezierTest, LengthAndParameterAtLength)
{
    // Along the direction (3, 4), control points unevenly spaced: the length is the chord.
    EXPECT_NEAR(curve(0, 0, 9, 12, 45, 60, 60, 80).length(), 100, 0.01);
    const VyBezier arc = quarterCircle(100);
    EXPECT_NEAR(arc.length(0.0005f), integratedLength(arc), 0.0005);
    std::mt19937 rng(19);
    for (int round = 0; round < 20; ++round) {
        const VyBezier b = randomCurve(rng);
        EXPECT_NEAR(b.length(), integratedLength(b), 0.01);
    }
    const VyBezier b = curve(0, 0, 80, 5, 10, 70, 100, 100);
    for (float len : {1.0f, 40.0f, 77.0f, b.length() - 1})
        EXPECT_NEAR(b.bezierOnInterval(0, b.tAtLength(len)).length(), len, 0.02) << len;
    EXPECT_EQ(b.tAtLength(-3), 0);
    EXPECT_EQ(b.tAtLength(b.length() + 1), 1);
}

TEST(VyBezierTest, AddToPolygonStaysWithinFlatness)
{
    const VyBezier b = curve(0, 0, 30, -80, 120, 90, 150, 0);
    for (float flatness : {0.5f, 0.05f}) {
        VyVector<VyPointF> polygon;
        b.addToPolygon(&polygon, flatness);
        EXPECT_EQ(polygon.first(), b.pt1());
        EXPECT_EQ(polygon.last(), b.pt4());
        const std::vector<VyPointF> line(polygon.constBegin(), polygon.constEnd());
        const std::vector<VyPointF> dense = samples(b, 20000);
        for (const VyPointF& p : dense)
            ASSERT_LT(distanceToPolyline(p, line), flatness + 1e-3);
        for (const VyPointF& p : line)
            ASSERT_LT(distanceToPolyline(p, dense), 1e-2);
    }
    // A following curve does not repeat the shared point; a straight one adds its end only.
    VyVector<VyPointF> polygon;
    b.addToPolygon(&polygon);
    const int before = polygon.size();
    curve(150, 0, 160, 0, 170, 0, 180, 0).addToPolygon(&polygon);
    EXPECT_EQ(polygon.size(), before + 1);
}
