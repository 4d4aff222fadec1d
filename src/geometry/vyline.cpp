#include "vyline.h"

#include <math.h>

namespace
{

// Radians to degrees and back, at the precision the framework's angles have always used.
const double kDegreesPerRadian = 57.29578;
const double kRadiansPerDegree = 0.017453292;
const float kTolerance = 0.00001f;

bool fuzzyEqual(float a, float b)
{
    return fabsf(a - b) <= kTolerance;
}

// Brings an angle in (-360, 360) into [0, 360). A value that lands on 360
// or within the tolerance below it (a tiny negative angle plus 360) counts as 0.
float wrapDegrees(float a)
{
    if (a < 0)
        a += 360.0f;
    if (360.0f - a < kTolerance || a == 0)
        a = 0; // also turns -0 (a horizontal line pointing right) into 0
    return a;
}

} // namespace

float VyLineF::length() const
{
    const double x = dx(), y = dy();
    return float(sqrt(x * x + y * y));
}

bool VyLineF::isNull() const
{
    return fuzzyEqual(x1, x2) && fuzzyEqual(y1, y2);
}

float VyLineF::angle() const
{
    // The screen's y grows downward, so the y difference enters negated.
    const double theta = atan2(-double(dy()), double(dx()));
    return wrapDegrees(float(theta * kDegreesPerRadian));
}

void VyLineF::setAngle(float degrees)
{
    const double a = degrees * kRadiansPerDegree;
    const double l = length();
    x2 = float(x1 + cos(a) * l);
    y2 = float(y1 - sin(a) * l);
}

VyLineF VyLineF::fromPolar(float length, float degrees)
{
    const double a = degrees * kRadiansPerDegree;
    return VyLineF(0, 0, float(cos(a) * length), float(-sin(a) * length));
}

VyLineF VyLineF::unitVector() const
{
    const float l = length();
    return VyLineF(x1, y1, x1 + dx() / l, y1 + dy() / l);
}

float VyLineF::angle(const VyLineF& l) const
{
    const double lengths = double(length()) * double(l.length());
    if (lengths == 0)
        return 0;
    double c = (double(dx()) * l.dx() + double(dy()) * l.dy()) / lengths;
    if (c < -1)
        c = -1;
    else if (c > 1)
        c = 1;
    return float(acos(c) * kDegreesPerRadian);
}

float VyLineF::angleTo(const VyLineF& l) const
{
    return wrapDegrees(l.angle() - angle());
}
