// VyPoint and VyPointF: a position in pixels, as whole numbers or as floats.
//
// Plain values with public coordinates, copied by value; they never allocate and never fail.
// The y axis grows downward, as on the screen. Any thread may use its own copies.
#ifndef VYPOINT_H
#define VYPOINT_H

#include "vyglobal.h"

class VY_EXPORT VyPoint
{
public:
    VyPoint() : x(0), y(0) {}
    VyPoint(int x, int y) : x(x), y(y) {}

    bool isNull() const { return x == 0 && y == 0; }

    VyPoint& operator+=(const VyPoint& p)
    {
        x += p.x;
        y += p.y;
        return *this;
    }
    VyPoint& operator-=(const VyPoint& p)
    {
        x -= p.x;
        y -= p.y;
        return *this;
    }
    VyPoint operator+(const VyPoint& p) const { return VyPoint(x + p.x, y + p.y); }
    VyPoint operator-(const VyPoint& p) const { return VyPoint(x - p.x, y - p.y); }
    VyPoint operator-() const { return VyPoint(-x, -y); }
    bool operator==(const VyPoint& p) const { return x == p.x && y == p.y; }
    bool operator!=(const VyPoint& p) const { return !(*this == p); }

    int x;
    int y;
};

class VY_EXPORT VyPointF
{
public:
    VyPointF() : x(0), y(0) {}
    VyPointF(float x, float y) : x(x), y(y) {}
    VyPointF(const VyPoint& p) : x(float(p.x)), y(float(p.y)) {}

    // Exactly (0, 0).
    bool isNull() const { return x == 0 && y == 0; }

    VyPointF& operator+=(const VyPointF& p)
    {
        x += p.x;
        y += p.y;
        return *this;
    }
    VyPointF& operator-=(const VyPointF& p)
    {
        x -= p.x;
        y -= p.y;
        return *this;
    }
    VyPointF operator+(const VyPointF& p) const { return VyPointF(x + p.x, y + p.y); }
    VyPointF operator-(const VyPointF& p) const { return VyPointF(x - p.x, y - p.y); }
    VyPointF operator-() const { return VyPointF(-x, -y); }
    // Exact comparison of both coordinates.
    bool operator==(const VyPointF& p) const { return x == p.x && y == p.y; }
    bool operator!=(const VyPointF& p) const { return !(*this == p); }

    float x;
    float y;
};

#endif
