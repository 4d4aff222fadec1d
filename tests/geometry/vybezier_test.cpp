#include "vybezier.h"

#include <gtest/gtest.h>

#include <math.h>
#include <random>
#include <vector>

namespace
{

const double kPi = 3.14159265358979323846;
// The control-point distance that makes a cubic follow a quarter circle most closely.
const float kArc = 0.5522847498f;

double dist(const VyPointF& a, const VyPointF& b)
{
    return hypot(a.x - b.x, a.y - b.y);
}

VyBezier curve(float a, float b, float c, float d, float e, float f, float g, float h)
{
    return VyBezier::fromPoints(VyPointF(a, b), VyPointF(c, d), VyPointF(e, f), VyPointF(g, h));
}

VyBezier quarterCircle(float r)
{
    return curve(r, 0, r, kArc * r, kArc * r, r, 0, r);
}

VyBezier randomCurve(std::mt19937& rng)
{
    std::uniform_real_distribution<float> u(-100, 100);
    return curve(u(rng), u(rng), u(rng), u(rng), u(rng), u(rng), u(rng), u(rng));
}

std::vector<VyPointF> samples(const VyBezier& b, int n)
{
    std::vector<VyPointF> s;
    for (int i = 0; i <= n; ++i)
        s.push_back(b.pointAt(float(i) / float(n)));
    return s;
}

double distanceToPolyline(const VyPointF& p, const std::vector<VyPointF>& line)
{
    double best = dist(p, line[0]);
    for (size_t k = 1; k < line.size(); ++k) {
        const double ax = line[k - 1].x, ay = line[k - 1].y;
        const double dx = line[k].x - ax, dy = line[k].y - ay;
        const double l2 = dx * dx + dy * dy;
        double t = l2 > 0 ? ((p.x - ax) * dx + (p.y - ay) * dy) / l2 : 0;
        t = t < 0 ? 0 : t > 1 ? 1 : t;
        best = fmin(best, hypot(p.x - (ax + t * dx), p.y - (ay + t * dy)));
    }
    return best;
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
        EXPECT_LT(dist(b.pointAt(0), b.pt1()) + dist(b.pointAt(1), b.pt4()), 1e-4);
        EXPECT_LT(dist(b.derivedAt(0), VyPointF(3 * (b.x2 - b.x1), 3 * (b.y2 - b.y1))), 1e-3);
        EXPECT_LT(dist(b.derivedAt(1), VyPointF(3 * (b.x4 - b.x3), 3 * (b.y4 - b.y3))), 1e-3);
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
        EXPECT_LT(dist(first.pt4(), b.pointAt(0.5f)) + dist(second.pt1(), b.pointAt(0.5f)), 1e-4);
        const VyPointF half(b.derivedAt(0.5f).x / 2, b.derivedAt(0.5f).y / 2);
        EXPECT_LT(dist(first.derivedAt(1), half) + dist(second.derivedAt(0), half), 1e-3);
        EXPECT_LT(dist(first.pointAt(u), b.pointAt(u / 2)), 1e-3);
        EXPECT_LT(dist(second.pointAt(u), b.pointAt(0.5f + u / 2)), 1e-3);
        // Any interval, backward ones too.
        EXPECT_LT(dist(b.bezierOnInterval(t, u).pointAt(0.3f), b.pointAt(t + 0.3f * (u - t))),
                  1e-3);
    }
    EXPECT_EQ(curve(0, 0, 1, 0, 2, 0, 3, 0).normalVector(0.5f), VyPointF(0, -1));
    // P2 on P1: the direction toward P3; a point curve has none.
    const VyPointF n = curve(0, 0, 0, 0, 0, 10, 5, 10).normalVector(0);
    EXPECT_LT(dist(n, VyPointF(1, 0)), 1e-6);
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
        double gaps[4] = {1e9, 1e9, 1e9, 1e9};
        for (const VyPointF& p : samples(b, 4000)) {
            ASSERT_TRUE(p.x >= r.x - 1e-3 && p.x <= r.x + r.width + 1e-3);
            ASSERT_TRUE(p.y >= r.y - 1e-3 && p.y <= r.y + r.height + 1e-3);
            gaps[0] = fmin(gaps[0], p.x - r.x);
            gaps[1] = fmin(gaps[1], r.x + r.width - p.x);
            gaps[2] = fmin(gaps[2], p.y - r.y);
            gaps[3] = fmin(gaps[3], r.y + r.height - p.y);
        }
        for (double g : gaps)
            EXPECT_LT(fabs(g), 1e-2);
    }
    // The control points stand out; the curve reaches three quarters of the way.
    const VyRectF r = curve(0, 0, 0, -100, 100, -100, 100, 0).bounds();
    EXPECT_EQ(r, VyRectF(0, -75, 100, 75));
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
        if (count == 2) {
            EXPECT_LT(t[0], t[1]);
        }
    }
    float a = 7, c = 7;
    EXPECT_EQ(curve(0, 5, 10, 5, 20, 5, 30, 5).stationaryYPoints(a, c), 0);
    EXPECT_EQ(curve(0, 0, 10, 20, 20, 40, 30, 60).stationaryYPoints(a, c), 0);
    // Flat at both ends: t = 0 and t = 1 are not counted.
    EXPECT_EQ(curve(0, 0, 10, 0, 20, 40, 30, 40).stationaryYPoints(a, c), 0);
    EXPECT_EQ(curve(0, 0, 10, -40, 20, -40, 30, 0).stationaryYPoints(a, c), 1);
    EXPECT_FLOAT_EQ(a, 0.5f);
    EXPECT_EQ(c, 7);
}

TEST(VyBezierTest, LengthOfStraightAndCircularCurves)
{
    // Along the direction (3, 4), control points unevenly spaced: the length is the chord.
    EXPECT_NEAR(curve(0, 0, 9, 12, 45, 60, 60, 80).length(), 100, 0.01);
    const VyBezier arc = quarterCircle(100);
    EXPECT_NEAR(arc.length(), integratedLength(arc), 0.01);
    EXPECT_NEAR(arc.length(0.0005f), integratedLength(arc), 0.0005);
    // The cubic strays from the circle by at most 0.03 % of the radius.
    EXPECT_NEAR(arc.length(), 50 * kPi, 0.03);
    std::mt19937 rng(19);
    for (int round = 0; round < 20; ++round) {
        const VyBezier b = randomCurve(rng);
        EXPECT_NEAR(b.length(), integratedLength(b), 0.01);
    }
}

TEST(VyBezierTest, ParameterAtLength)
{
    const VyBezier symmetric = curve(0, 0, 10, 60, 90, 60, 100, 0);
    EXPECT_NEAR(symmetric.tAtLength(symmetric.length() / 2), 0.5, 1e-4);
    const VyBezier b = curve(0, 0, 80, 5, 10, 70, 100, 100);
    const float total = b.length();
    for (float len : {1.0f, 40.0f, 77.0f, total - 1}) {
        const float t = b.tAtLength(len);
        EXPECT_NEAR(b.bezierOnInterval(0, t).length(), len, 0.02) << len;
    }
    EXPECT_EQ(b.tAtLength(-3), 0);
    EXPECT_EQ(b.tAtLength(total + 1), 1);
}

TEST(VyBezierTest, ShiftedSegmentsFollowTheTrueOffset)
{
    struct Case {
        VyBezier curve;
        float offset, threshold;
    } cases[] = {{quarterCircle(100), 10, 0.05f},
                 {curve(0, 0, 40, -30, 80, 30, 120, 0), 8, 0.1f},
                 {curve(0, 0, 0, 0, 50, 80, 100, 0), -5, 0.1f}};
    for (const Case& c : cases) {
        VyBezier segments[32];
        const int n = c.curve.shifted(segments, 32, c.offset, c.threshold);
        ASSERT_GT(n, 0);
        std::vector<VyPointF> truth;
        for (int i = 0; i <= 4000; ++i) {
            const float t = float(i) / 4000;
            const VyPointF p = c.curve.pointAt(t), nv = c.curve.normalVector(t);
            truth.push_back(VyPointF(p.x + c.offset * nv.x, p.y + c.offset * nv.y));
        }
        EXPECT_LT(dist(segments[0].pt1(), truth.front()), 1e-3);
        EXPECT_LT(dist(segments[n - 1].pt4(), truth.back()), 1e-3);
        std::vector<VyPointF> approx;
        for (int k = 0; k < n; ++k) {
            if (k > 0) {
                EXPECT_LT(dist(segments[k - 1].pt4(), segments[k].pt1()), 1e-3);
            }
            const std::vector<VyPointF> s = samples(segments[k], 200);
            approx.insert(approx.end(), s.begin(), s.end());
        }
        for (const VyPointF& p : approx)
            ASSERT_LT(distanceToPolyline(p, truth), c.threshold + 1e-3);
        for (size_t i = 0; i < truth.size(); i += 10)
            ASSERT_LT(distanceToPolyline(truth[i], approx), c.threshold + 1e-2);
    }
    VyBezier one[4];
    EXPECT_EQ(curve(0, 0, 10, 0, 20, 0, 30, 0).shifted(one, 4, 3, 0.01f), 1);
    EXPECT_EQ(one[0].pt1(), VyPointF(0, -3));
    EXPECT_EQ(one[0].pt4(), VyPointF(30, -3));
    EXPECT_EQ(quarterCircle(100).shifted(one, 4, 0, 0.01f), 1);
    EXPECT_EQ(one[0].x2, quarterCircle(100).x2);
    EXPECT_EQ(quarterCircle(100).shifted(one, 1, 30, 0.001f), 0);
    EXPECT_EQ(curve(1, 1, 1, 1, 1, 1, 1, 1).shifted(one, 4, 3, 1), 0);
}

TEST(VyBezierTest, AddToPolygonStaysWithinFlatness)
{
    const VyBezier b = curve(0, 0, 30, -80, 120, 90, 150, 0);
    for (float flatness : {0.5f, 0.05f}) {
        VyVector<VyPointF> polygon;
        b.addToPolygon(&polygon, flatness);
        ASSERT_GT(polygon.size(), 2);
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
    EXPECT_EQ(polygon.last(), VyPointF(180, 0));
}
