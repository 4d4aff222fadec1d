// Curves and distances for the Bezier tests: control points written out in one call, the
// quarter circle, points sampled along a curve and the distance from a point to a polyline.
#ifndef VY_TESTS_BEZIERCURVES_H
#define VY_TESTS_BEZIERCURVES_H

#include "vybezier.h"

#include <math.h>
#include <vector>

// The control-point distance that makes a cubic follow a quarter circle most closely.
const float kArc = 0.5522847498f;

inline double dist(const VyPointF& a, const VyPointF& b)
{
    return hypot(a.x - b.x, a.y - b.y);
}

inline VyBezier curve(float a, float b, float c, float d, float e, float f, float g, float h)
{
    return VyBezier::fromPoints(VyPointF(a, b), VyPointF(c, d), VyPointF(e, f), VyPointF(g, h));
}

// From (r, 0) to (0, r) around the origin.
inline VyBezier quarterCircle(float r)
{
    return curve(r, 0, r, kArc * r, kArc * r, r, 0, r);
}

// B(i / n) for i = 0 to n.
inline std::vector<VyPointF> samples(const VyBezier& b, int n)
{
    std::vector<VyPointF> s;
    for (int i = 0; i <= n; ++i)
        s.push_back(b.pointAt(float(i) / float(n)));
    return s;
}

inline double distanceToPolyline(const VyPointF& p, const std::vector<VyPointF>& line)
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

#endif
