// VyBezier: evaluation, extent, splitting, stationary points, arc length and flattening. The
// offset curves live in vybezieroffset.cpp.
#include "vybezier.h"

#include "vybeziermath.h"

using namespace VyBezierMath;

namespace
{

// The roots of a t^2 + b t + c strictly inside (0, 1), ascending; returns their count.
int rootsInUnit(double a, double b, double c, double roots[2])
{
    double r[2];
    int n = 0;
    if (a == 0) {
        if (b != 0)
            r[n++] = -c / b;
    } else {
        const double disc = b * b - 4 * a * c;
        if (disc == 0) {
            r[n++] = -b / (2 * a);
        } else if (disc > 0) {
            // The cancellation-free pair: q / a and c / q.
            const double q = -0.5 * (b + (b < 0 ? -sqrt(disc) : sqrt(disc)));
            r[n++] = q / a;
            if (q != 0)
                r[n++] = c / q;
        }
    }
    if (n == 2 && r[1] < r[0]) {
        const double t = r[0];
        r[0] = r[1];
        r[1] = t;
    }
    int kept = 0;
    for (int k = 0; k < n; ++k)
        if (r[k] > 0 && r[k] < 1)
            roots[kept++] = r[k];
    return kept;
}

// The parameters in (0, 1) where one coordinate's derivative is zero; c0..c3 are that
// coordinate's control values. B'/3 = a t^2 + b t + c.
int extremaOf(double c0, double c1, double c2, double c3, double roots[2])
{
    return rootsInUnit(-c0 + 3 * c1 - 3 * c2 + c3, 2 * (c0 - 2 * c1 + c2), c1 - c0, roots);
}

// The curve between the parameters t0 and t1 from its blossom: the control points are
// f(t0, t0, t0), f(t0, t0, t1), f(t0, t1, t1) and f(t1, t1, t1).
Cubic onInterval(const Cubic& c, double t0, double t1)
{
    auto blossom = [&c](double u, double v, double w) {
        const Vec a = lerp(c.p[0], c.p[1], u), b = lerp(c.p[1], c.p[2], u),
                  d = lerp(c.p[2], c.p[3], u);
        return lerp(lerp(a, b, v), lerp(b, d, v), w);
    };
    return Cubic{
        {blossom(t0, t0, t0), blossom(t0, t0, t1), blossom(t0, t1, t1), blossom(t1, t1, t1)}};
}

// The true length lies between the chord and the control polygon, so their mean is within
// half their difference of it. A piece whose difference exceeds its share of the error is
// halved, and each half gets half the share: the shares of all pieces add up to `error`.
double lengthOf(const Cubic& c, double error, int depth)
{
    const double chord = norm(c.p[3] - c.p[0]);
    const double polygon = norm(c.p[1] - c.p[0]) + norm(c.p[2] - c.p[1]) + norm(c.p[3] - c.p[2]);
    if (!(polygon - chord > error) || depth >= 16)
        return (chord + polygon) / 2;
    Cubic a, b;
    c.halve(&a, &b);
    return lengthOf(a, error / 2, depth + 1) + lengthOf(b, error / 2, depth + 1);
}

double distanceToSegment(Vec p, Vec a, Vec b)
{
    const Vec ab = b - a;
    const double l2 = dot(ab, ab);
    double t = l2 > 0 ? dot(p - a, ab) / l2 : 0;
    t = t < 0 ? 0 : t > 1 ? 1 : t;
    return norm(p - (a + ab * t));
}

// The curve lies in the hull of its control points, so it is within the larger distance of
// P2 and P3 from the chord.
void flatten(const Cubic& c, double flatness, int depth, VyVector<VyPointF>* out)
{
    const double d =
        fmax(distanceToSegment(c.p[1], c.p[0], c.p[3]), distanceToSegment(c.p[2], c.p[0], c.p[3]));
    if (!(d > flatness) || depth >= 16) {
        out->append(toPoint(c.p[3]));
        return;
    }
    Cubic a, b;
    c.halve(&a, &b);
    flatten(a, flatness, depth + 1, out);
    flatten(b, flatness, depth + 1, out);
}

} // namespace

VyBezier VyBezier::fromPoints(const VyPointF& p1, const VyPointF& p2, const VyPointF& p3,
                              const VyPointF& p4)
{
    VyBezier b;
    b.x1 = p1.x;
    b.y1 = p1.y;
    b.x2 = p2.x;
    b.y2 = p2.y;
    b.x3 = p3.x;
    b.y3 = p3.y;
    b.x4 = p4.x;
    b.y4 = p4.y;
    return b;
}

VyPointF VyBezier::pointAt(float t) const
{
    return toPoint(Cubic::of(*this).at(t));
}

VyPointF VyBezier::derivedAt(float t) const
{
    return toPoint(Cubic::of(*this).derivative(t));
}

VyPointF VyBezier::normalVector(float t) const
{
    return toPoint(turned(Cubic::of(*this).direction(t)));
}

VyRectF VyBezier::bounds() const
{
    const Cubic c = Cubic::of(*this);
    double left = fmin(x1, x4), right = fmax(x1, x4);
    double top = fmin(y1, y4), bottom = fmax(y1, y4);
    double t[2];
    for (int k = extremaOf(x1, x2, x3, x4, t) - 1; k >= 0; --k) {
        const double x = c.at(t[k]).x;
        left = fmin(left, x);
        right = fmax(right, x);
    }
    for (int k = extremaOf(y1, y2, y3, y4, t) - 1; k >= 0; --k) {
        const double y = c.at(t[k]).y;
        top = fmin(top, y);
        bottom = fmax(bottom, y);
    }
    return VyRectF(float(left), float(top), float(right - left), float(bottom - top));
}

void VyBezier::split(VyBezier* first, VyBezier* second) const
{
    Cubic a, b;
    Cubic::of(*this).halve(&a, &b);
    *first = a.toBezier();
    *second = b.toBezier();
}

VyBezier VyBezier::bezierOnInterval(float t0, float t1) const
{
    if (t0 == 0 && t1 == 1)
        return *this;
    return onInterval(Cubic::of(*this), t0, t1).toBezier();
}

int VyBezier::stationaryYPoints(float& t1, float& t2) const
{
    double t[2];
    const int n = extremaOf(y1, y2, y3, y4, t);
    if (n > 0)
        t1 = float(t[0]);
    if (n > 1)
        t2 = float(t[1]);
    return n;
}

float VyBezier::length(float error) const
{
    return float(lengthOf(Cubic::of(*this), error, 0));
}

float VyBezier::tAtLength(float len) const
{
    if (len <= 0)
        return 0;
    const Cubic c = Cubic::of(*this);
    const double total = lengthOf(c, 0.002, 0);
    if (len >= total)
        return 1;
    // Newton steps on L(t) - len, whose derivative is the speed |B'(t)|, kept inside a
    // shrinking bracket by bisection when a step would leave it.
    double lo = 0, hi = 1, t = len / total;
    for (int i = 0; i < 48; ++i) {
        const double diff = lengthOf(onInterval(c, 0, t), 0.002, 0) - len;
        if (fabs(diff) <= 0.005)
            break;
        (diff > 0 ? hi : lo) = t;
        const double speed = norm(c.derivative(t));
        const double next = speed > 0 ? t - diff / speed : -1;
        t = next > lo && next < hi ? next : (lo + hi) / 2;
    }
    return float(t);
}

void VyBezier::addToPolygon(VyVector<VyPointF>* polygon, float flatness) const
{
    if (!polygon)
        return;
    if (polygon->isEmpty() || polygon->at(polygon->size() - 1) != pt1())
        polygon->append(pt1());
    flatten(Cubic::of(*this), flatness, 0, polygon);
}
