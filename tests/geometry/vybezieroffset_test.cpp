#include "vybezier.h"

#include "beziercurves.h"

#include <gtest/gtest.h>

#include <vector>

// The segments join end to end, start and end on the true offset, and stay within the
// threshold of it (and it of them).
TEST(VyBezierOffsetTest, ShiftedSegmentsFollowTheTrueOffset)
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
    // A straight curve shifts in one piece; an offset of 0 gives the curve itself; no room and
    // a curve that stands still give 0.
    VyBezier one[4];
    EXPECT_EQ(curve(0, 0, 10, 0, 20, 0, 30, 0).shifted(one, 4, 3, 0.01f), 1);
    EXPECT_EQ(one[0].pt1(), VyPointF(0, -3));
    EXPECT_EQ(one[0].pt4(), VyPointF(30, -3));
    EXPECT_EQ(quarterCircle(100).shifted(one, 4, 0, 0.01f), 1);
    EXPECT_EQ(one[0].x2, quarterCircle(100).x2);
    EXPECT_EQ(quarterCircle(100).shifted(one, 1, 30, 0.001f), 0);
    EXPECT_EQ(curve(1, 1, 1, 1, 1, 1, 1, 1).shifted(one, 4, 3, 1), 0);
}
