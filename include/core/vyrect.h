// VyRect and VyRectF: axis-aligned rectangles in pixels.
//
// VyRect stores its four edges, x1 (left), y1 (top), x2 (right) and y2 (bottom), as public
// ints. Right and bottom are inclusive: the rectangle covers the pixels x1..x2 and y1..y2, so
// its width is x2 - x1 + 1. The null rectangle is (0, 0, -1, -1), and any rectangle with
// x2 == x1 - 1 and y2 == y1 - 1 is null. An axis whose far edge lies more than one below its
// near edge (x2 < x1 - 1) is reversed: every operation swaps that axis's two edges before
// using it, so (10, 0, 0, 9) covers x 0..10. An axis with x2 == x1 - 1 is empty, never
// reversed. Edges are expected to stay well inside the int range.
//
// VyRectF stores a corner and a size as floats; a negative width or height means the
// rectangle extends left or up from (x, y). Its right edge is x + width, its bottom edge
// y + height, and both edges belong to the rectangle.
//
// Plain values, copied by value; they never allocate and never fail. Any thread may use its
// own copies.
#ifndef VYRECT_H
#define VYRECT_H

#include "vyglobal.h"

#include "vypoint.h"
#include "vysize.h"

class VY_EXPORT VyRect
{
public:
    VyRect() : x1(0), y1(0), x2(-1), y2(-1) {}
    // The four edges, right and bottom inclusive.
    VyRect(int x1, int y1, int x2, int y2) : x1(x1), y1(y1), x2(x2), y2(y2) {}
    VyRect(const VyPoint& topLeft, const VyPoint& bottomRight)
        : x1(topLeft.x), y1(topLeft.y), x2(bottomRight.x), y2(bottomRight.y)
    {
    }
    VyRect(const VyPoint& topLeft, const VySize& size)
        : x1(topLeft.x), y1(topLeft.y), x2(topLeft.x + size.width - 1),
          y2(topLeft.y + size.height - 1)
    {
    }

    // Width and height both exactly 0.
    // Kept: only the exact shape (x1 - 1, y1 - 1) is null; a rectangle empty or reversed in
    // one axis is not, so the operations below take it as a real operand (an empty-in-x
    // rectangle spanning another's rows intersects it). Callers tell "nothing yet" (null)
    // apart from a zero-width line box this way.
    bool isNull() const
    {
        return (long long)x2 == (long long)x1 - 1 && (long long)y2 == (long long)y1 - 1;
    }
    // No pixel as the edges stand (a reversed rectangle counts as empty here).
    bool isEmpty() const { return x1 > x2 || y1 > y2; }
    // At least one pixel as the edges stand: x1 <= x2 and y1 <= y2.
    bool isValid() const { return x1 <= x2 && y1 <= y2; }

    // x2 - x1 + 1 and y2 - y1 + 1 as the edges stand: 0 or negative for an empty or reversed
    // axis.
    int width() const { return x2 - x1 + 1; }
    int height() const { return y2 - y1 + 1; }
    VySize size() const { return VySize(width(), height()); }
    VyPoint topLeft() const { return VyPoint(x1, y1); }
    VyPoint bottomRight() const { return VyPoint(x2, y2); }
    // The middle pixel, rounding toward zero.
    VyPoint center() const
    {
        return VyPoint(int(((long long)x1 + x2) / 2), int(((long long)y1 + y2) / 2));
    }

    void translate(int dx, int dy)
    {
        x1 += dx;
        x2 += dx;
        y1 += dy;
        y2 += dy;
    }
    VyRect translated(int dx, int dy) const { return VyRect(x1 + dx, y1 + dy, x2 + dx, y2 + dy); }

    // The edges of each reversed axis swapped; other axes, empty ones included, kept.
    VyRect normalized() const;
    // Moves the rectangle, keeping x2 - x1 and y2 - y1, so that its top left corner lies half
    // of those distances (truncated toward zero) before `p`.
    void moveCenter(const VyPoint& p);

    // Whether `p` lies inside the normalised rectangle, on an edge too unless `proper`. A null
    // rectangle contains no point.
    bool contains(const VyPoint& p, bool proper = false) const;
    // Whether `r` lies inside, both normalised; with `proper` no edge of `r` may touch an edge
    // of this one. False when either rectangle is null.
    bool contains(const VyRect& r, bool proper = false) const;
    // The bounding rectangle of both, normalised; see the source for a null operand.
    VyRect operator|(const VyRect& r) const;
    // The common pixels; the null rectangle when either is null or they do not meet. Edges that
    // touch meet in a one-pixel-wide rectangle.
    VyRect operator&(const VyRect& r) const;
    VyRect& operator|=(const VyRect& r) { return *this = *this | r; }
    VyRect& operator&=(const VyRect& r) { return *this = *this & r; }
    // Whether the normalised x ranges and y ranges both overlap, edges inclusive. False when
    // either is null.
    bool intersects(const VyRect& r) const;

    bool operator==(const VyRect& r) const
    {
        return x1 == r.x1 && y1 == r.y1 && x2 == r.x2 && y2 == r.y2;
    }
    bool operator!=(const VyRect& r) const { return !(*this == r); }

    int x1;
    int y1;
    int x2;
    int y2;
};

class VY_EXPORT VyRectF
{
public:
    VyRectF() : x(0), y(0), width(0), height(0) {}
    VyRectF(float x, float y, float width, float height) : x(x), y(y), width(width), height(height)
    {
    }
    VyRectF(const VyPointF& topLeft, const VySizeF& size)
        : x(topLeft.x), y(topLeft.y), width(size.width), height(size.height)
    {
    }
    // The area the pixels of `r` cover: (x1, y1) with width x2 - x1 + 1.
    VyRectF(const VyRect& r)
        : x(float(r.x1)), y(float(r.y1)), width(float(r.width())), height(float(r.height()))
    {
    }

    // Width and height both exactly 0.
    bool isNull() const { return width == 0 && height == 0; }

    VyPointF topLeft() const { return VyPointF(x, y); }
    VySizeF size() const { return VySizeF(width, height); }
    VyPointF center() const { return VyPointF(x + width / 2, y + height / 2); }

    void translate(float dx, float dy)
    {
        x += dx;
        y += dy;
    }
    VyRectF translated(float dx, float dy) const { return VyRectF(x + dx, y + dy, width, height); }

    // A negative width moves x by the width and negates it; the same for height and y.
    VyRectF normalized() const;
    // Edges included; a null rectangle contains no point.
    bool contains(const VyPointF& p) const;
    // Whether `r` lies inside, both normalised, edges included. False when either is null.
    bool contains(const VyRectF& r) const;
    // As the integer union: a null operand gives the other one as it is.
    VyRectF operator|(const VyRectF& r) const;
    // The null rectangle when either is null or they do not meet; rectangles that merely
    // touch meet in a rectangle of width or height 0.
    VyRectF operator&(const VyRectF& r) const;
    VyRectF& operator|=(const VyRectF& r) { return *this = *this | r; }
    VyRectF& operator&=(const VyRectF& r) { return *this = *this & r; }
    // Whether both ranges overlap, edges inclusive. False when either is null.
    bool intersects(const VyRectF& r) const;
    // The smallest integer rectangle covering this one: (floor(x), floor(y),
    // ceil(x + width) - 1, ceil(y + height) - 1), computed in double precision. A negative
    // width or height is used as it is, giving a reversed axis.
    VyRect toAlignedRect() const;

    bool operator==(const VyRectF& r) const
    {
        return x == r.x && y == r.y && width == r.width && height == r.height;
    }
    bool operator!=(const VyRectF& r) const { return !(*this == r); }

    float x;
    float y;
    float width;
    float height;
};

#endif
