// VySize and VySizeF: a width and a height in pixels, as whole numbers or as floats.
//
// Plain values with public fields, copied by value; they never allocate and never fail.
// Negative and zero sizes are stored as given. Any thread may use its own copies.
#ifndef VYSIZE_H
#define VYSIZE_H

#include "vyglobal.h"

class VY_EXPORT VySize
{
public:
    VySize() : width(0), height(0) {}
    VySize(int width, int height) : width(width), height(height) {}

    // Both exactly 0.
    bool isNull() const { return width == 0 && height == 0; }
    // Either not above 0.
    bool isEmpty() const { return width <= 0 || height <= 0; }

    void transpose()
    {
        const int t = width;
        width = height;
        height = t;
    }
    // Resizes to `s` or to this size's shape fitted inside (FitInsideRatio) or around
    // (FillOutsideRatio) `s`. A zero width or height takes `s` as it is. The shape's other
    // side is computed in 64-bit integers and truncated toward zero, so a side may come out
    // one pixel short of the exact ratio.
    void scale(const VySize& s, Vy::AspectRatioMode mode);

    bool operator==(const VySize& s) const { return width == s.width && height == s.height; }
    bool operator!=(const VySize& s) const { return !(*this == s); }

    int width;
    int height;
};

class VY_EXPORT VySizeF
{
public:
    VySizeF() : width(0), height(0) {}
    VySizeF(float width, float height) : width(width), height(height) {}
    VySizeF(const VySize& s) : width(float(s.width)), height(float(s.height)) {}

    bool isNull() const { return width == 0 && height == 0; }
    bool isEmpty() const { return width <= 0 || height <= 0; }

    void transpose()
    {
        const float t = width;
        width = height;
        height = t;
    }
    // The same choice as VySize::scale, in floating point without truncation.
    void scale(const VySizeF& s, Vy::AspectRatioMode mode);

    bool operator==(const VySizeF& s) const { return width == s.width && height == s.height; }
    bool operator!=(const VySizeF& s) const { return !(*this == s); }

    float width;
    float height;
};

#endif
