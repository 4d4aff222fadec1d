// VyBezier: a cubic Bezier curve, for a painter that strokes and fills curves.
//
// A plain value: the four control points are public floats, copied by value. The curve is
//     B(t) = (1 - t)^3 P1 + 3 (1 - t)^2 t P2 + 3 (1 - t) t^2 P3 + t^3 P4,   t in [0, 1],
// in pixels with y growing downward, starting at P1 in the direction of P2 and ending at P4
// coming from P3. The computations run in double precision and round once to float. Nothing
// allocates except addToPolygon, which appends to the caller's vector. Any thread may use its
// own copies.
#ifndef VYBEZIER_H
#define VYBEZIER_H

#include "vyglobal.h"

#include "vypoint.h"
#include "vyrect.h"
#include "vyvector.h"

class VY_EXPORT VyBezier
{
public:
    // All four points at (0, 0).
    VyBezier() : x1(0), y1(0), x2(0), y2(0), x3(0), y3(0), x4(0), y4(0) {}

    static VyBezier fromPoints(const VyPointF& p1, const VyPointF& p2, const VyPointF& p3,
                               const VyPointF& p4);

    VyPointF pt1() const { return VyPointF(x1, y1); }
    VyPointF pt2() const { return VyPointF(x2, y2); }
    VyPointF pt3() const { return VyPointF(x3, y3); }
    VyPointF pt4() const { return VyPointF(x4, y4); }

    // B(t). Values of t outside [0, 1] extend the polynomial.
    VyPointF pointAt(float t) const;
    // B'(t), in pixels per unit of t: 3 (P2 - P1) at t = 0, 3 (P4 - P3) at t = 1.
    VyPointF derivedAt(float t) const;
    // The unit normal at t: the direction of travel turned a quarter turn counter-clockwise
    // as seen on the screen, so for travel toward +x it points up, (0, -1). Where B'(t) is
    // zero at an end (P2 on P1, or P3 on P4) the direction toward the nearest distinct control
    // point is used; (0, 0) where the curve stands still (a cusp, or all points equal).
    VyPointF normalVector(float t) const;

    // The tight extent of the curve itself (not of the control points): the end points and
    // the extrema of x and y between them. Width or height 0 for a straight horizontal or
    // vertical curve.
    VyRectF bounds() const;

    // The halves before and after t = 0.5; together they trace the same curve. Either output
    // may be this curve.
    void split(VyBezier* first, VyBezier* second) const;
    // The part of the curve from t0 to t1 as a curve of its own over [0, 1]; runs backward
    // when t0 > t1. Parameters outside [0, 1] extend the polynomial.
    VyBezier bezierOnInterval(float t0, float t1) const;

    // The parameters strictly between 0 and 1 where the y derivative is zero, ascending, in
    // t1 then t2; returns how many (0, 1 or 2). Outputs beyond the count are left unchanged.
    // A curve whose y does not change has none.
    int stationaryYPoints(float& t1, float& t2) const;

    // The arc length, to within `error` pixels: the curve is halved until the control
    // polygon of every piece is at most its share of `error` longer than its chord. Pieces
    // stop halving after 16 levels, which bounds the cost for error <= 0.
    float length(float error = 0.01f) const;
    // The parameter at which the arc length from P1 reaches `len`, to within about 0.01
    // pixels of arc: 0 for len <= 0, 1 for len at or beyond length().
    float tAtLength(float len) const;

    // Approximates the curve offset by `offset` pixels along normalVector (negative: the other
    // side) with at most maxSegments cubics, written to curveSegments in order; each follows
    // the true offset to within `threshold` pixels (checked at sample points along it). The
    // first starts at B(0) + offset * normal(0), the last ends at B(1) + offset * normal(1).
    // Returns the count, or 0 when it cannot (the array then holds nothing useful): no room,
    // a curve that stands still somewhere, or an offset that still misses the threshold after
    // the curve has been halved 12 times (an offset beyond the radius of curvature folds into
    // a cusp). An offset of 0 gives the curve itself.
    int shifted(VyBezier* curveSegments, int maxSegments, float offset, float threshold) const;

    // Appends a polyline within `flatness` pixels of the curve: P1 first unless the polygon
    // already ends there, then the end of each piece, P4 last. Pieces are halved until both
    // inner control points lie within `flatness` of the piece's chord, at most 16 times.
    // Every appended point lies on the curve.
    void addToPolygon(VyVector<VyPointF>* polygon, float flatness = 0.5f) const;

    float x1, y1, x2, y2, x3, y3, x4, y4;
};

#endif
