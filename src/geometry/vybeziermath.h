// Double-precision cubic arithmetic shared by the curve sources (private to the library).
#ifndef VYBEZIERMATH_H
#define VYBEZIERMATH_H

#include "vybezier.h"

#include <math.h>

namespace VyBezierMath
{

struct Vec {
    double x, y;
};

inline Vec operator+(Vec a, Vec b)
{
    return Vec{a.x + b.x, a.y + b.y};
}
inline Vec operator-(Vec a, Vec b)
{
    return Vec{a.x - b.x, a.y - b.y};
}
inline Vec operator*(Vec a, double s)
{
    return Vec{a.x * s, a.y * s};
}
inline double dot(Vec a, Vec b)
{
    return a.x * b.x + a.y * b.y;
}
inline double cross(Vec a, Vec b)
{
    return a.x * b.y - a.y * b.x;
}
inline double norm(Vec a)
{
    return sqrt(dot(a, a));
}
inline Vec mid(Vec a, Vec b)
{
    return Vec{(a.x + b.x) * 0.5, (a.y + b.y) * 0.5};
}
inline Vec lerp(Vec a, Vec b, double t)
{
    return a + (b - a) * t;
}
// A quarter turn counter-clockwise on the screen (y down): (1, 0) becomes (0, -1).
inline Vec turned(Vec a)
{
    return Vec{a.y, -a.x};
}
inline VyPointF toPoint(Vec a)
{
    return VyPointF(float(a.x), float(a.y));
}

struct Cubic {
    Vec p[4];

    static Cubic of(const VyBezier& b)
    {
        return Cubic{{{b.x1, b.y1}, {b.x2, b.y2}, {b.x3, b.y3}, {b.x4, b.y4}}};
    }
    VyBezier toBezier() const
    {
        return VyBezier::fromPoints(toPoint(p[0]), toPoint(p[1]), toPoint(p[2]), toPoint(p[3]));
    }

    Vec at(double t) const
    {
        const double s = 1 - t;
        return p[0] * (s * s * s) + p[1] * (3 * s * s * t) + p[2] * (3 * s * t * t) +
               p[3] * (t * t * t);
    }
    Vec derivative(double t) const
    {
        const double s = 1 - t;
        return ((p[1] - p[0]) * (s * s) + (p[2] - p[1]) * (2 * s * t) + (p[3] - p[2]) * (t * t)) *
               3;
    }
    Vec second(double t) const
    {
        return ((p[2] - p[1] * 2 + p[0]) * (1 - t) + (p[3] - p[2] * 2 + p[1]) * t) * 6;
    }
    // The unit direction of travel at t. Where the derivative vanishes at an end, the
    // direction toward the nearest distinct control point; otherwise (0, 0) there.
    Vec direction(double t) const
    {
        Vec d = derivative(t);
        if (d.x == 0 && d.y == 0) {
            if (t == 0)
                d = (p[2] - p[0]).x != 0 || (p[2] - p[0]).y != 0 ? p[2] - p[0] : p[3] - p[0];
            else if (t == 1)
                d = (p[3] - p[1]).x != 0 || (p[3] - p[1]).y != 0 ? p[3] - p[1] : p[3] - p[0];
        }
        const double n = norm(d);
        return n > 0 ? d * (1 / n) : Vec{0, 0};
    }
    // The halves before and after t = 0.5 (de Casteljau).
    void halve(Cubic* a, Cubic* b) const
    {
        const Vec m01 = mid(p[0], p[1]), m12 = mid(p[1], p[2]), m23 = mid(p[2], p[3]);
        const Vec m012 = mid(m01, m12), m123 = mid(m12, m23);
        const Vec m = mid(m012, m123);
        const Vec p0 = p[0], p3 = p[3];
        *a = Cubic{{p0, m01, m012, m}};
        *b = Cubic{{m, m123, m23, p3}};
    }
};

} // namespace VyBezierMath

#endif
