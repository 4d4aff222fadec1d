// VyLineF: a line segment between two float points, (x1, y1) and (x2, y2).
//
// Angles are in degrees, counter-clockwise as seen on the screen: the y axis grows downward,
// so a line pointing up has the angle 90 and one pointing down 270. A plain value with public
// end points, copied by value; it never allocates and never fails. Any thread may use its own
// copies.
#ifndef VYLINE_H
#define VYLINE_H

#include "vyglobal.h"

#include "vypoint.h"

class VY_EXPORT VyLineF
{
public:
    VyLineF() : x1(0), y1(0), x2(0), y2(0) {}
    VyLineF(float x1, float y1, float x2, float y2) : x1(x1), y1(y1), x2(x2), y2(y2) {}
    VyLineF(const VyPointF& p1, const VyPointF& p2) : x1(p1.x), y1(p1.y), x2(p2.x), y2(p2.y) {}

    VyPointF p1() const { return VyPointF(x1, y1); }
    VyPointF p2() const { return VyPointF(x2, y2); }
    float dx() const { return x2 - x1; }
    float dy() const { return y2 - y1; }

    float length() const;
    // Both end points equal within 0.00001 in each coordinate (an absolute tolerance).
    bool isNull() const;
    // The direction from p1 to p2, in [0, 360); 0 for a null line. A value that would round to
    // 360 is reported as 0.
    float angle() const;
    // Turns the line about p1 to `degrees`, keeping its length.
    void setAngle(float degrees);
    // The line from (0, 0) with the given length and angle.
    static VyLineF fromPolar(float length, float degrees);
    // The line from p1 with length 1 in the same direction. A null line gives non-finite
    // coordinates.
    VyLineF unitVector() const;
    // The unsigned angle between the two directions, 0 to 180; 0 when either line has length
    // 0.
    float angle(const VyLineF& l) const;
    // How far this line must turn counter-clockwise to point along `l`: l.angle() - angle(),
    // in [0, 360).
    float angleTo(const VyLineF& l) const;

    void translate(float dx, float dy)
    {
        x1 += dx;
        x2 += dx;
        y1 += dy;
        y2 += dy;
    }

    bool operator==(const VyLineF& l) const
    {
        return x1 == l.x1 && y1 == l.y1 && x2 == l.x2 && y2 == l.y2;
    }
    bool operator!=(const VyLineF& l) const { return !(*this == l); }

    float x1;
    float y1;
    float x2;
    float y2;
};

#endif
