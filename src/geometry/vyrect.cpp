#include "vyrect.h"

#include <math.h>

namespace
{

// The two edges of one axis of an integer rectangle, low first. The axis is reversed only when
// its far edge lies more than one below its near edge.
// Kept: an axis with b == a - 1 (width 0) is empty, not reversed, so it stays as it is and a
// null rectangle never turns into a one-pixel-wide one; only b < a - 1 swaps.
inline void axis(int a, int b, int& lo, int& hi)
{
    if ((long long)b < (long long)a - 1) {
        lo = b;
        hi = a;
    } else {
        lo = a;
        hi = b;
    }
}

inline int minOf(int a, int b)
{
    return a < b ? a : b;
}
inline int maxOf(int a, int b)
{
    return a > b ? a : b;
}
inline float minOf(float a, float b)
{
    return a < b ? a : b;
}
inline float maxOf(float a, float b)
{
    return a > b ? a : b;
}

} // namespace

VyRect VyRect::normalized() const
{
    VyRect r;
    axis(x1, x2, r.x1, r.x2);
    axis(y1, y2, r.y1, r.y2);
    return r;
}

void VyRect::moveCenter(const VyPoint& p)
{
    const int w = x2 - x1;
    const int h = y2 - y1;
    x1 = p.x - w / 2;
    y1 = p.y - h / 2;
    x2 = x1 + w;
    y2 = y1 + h;
}

bool VyRect::contains(const VyPoint& p, bool proper) const
{
    // No null test is needed: a null rectangle's left edge lies right of its right edge.
    int l, r, t, b;
    axis(x1, x2, l, r);
    axis(y1, y2, t, b);
    if (proper)
        return l < p.x && p.x < r && t < p.y && p.y < b;
    return l <= p.x && p.x <= r && t <= p.y && p.y <= b;
}

bool VyRect::contains(const VyRect& r, bool proper) const
{
    if (isNull() || r.isNull())
        return false;
    const VyRect a = normalized();
    const VyRect o = r.normalized();
    if (proper)
        return o.x1 > a.x1 && o.x2 < a.x2 && o.y1 > a.y1 && o.y2 < a.y2;
    return o.x1 >= a.x1 && o.x2 <= a.x2 && o.y1 >= a.y1 && o.y2 <= a.y2;
}

VyRect VyRect::operator|(const VyRect& r) const
{
    // Kept: a null operand gives the other rectangle exactly as it is, reversed edges
    // included, while every other union comes out normalised. A caller that grows a bounding
    // box from the null rectangle gets its first rectangle back untouched.
    if (isNull())
        return r;
    if (r.isNull())
        return *this;
    const VyRect a = normalized();
    const VyRect o = r.normalized();
    return VyRect(minOf(a.x1, o.x1), minOf(a.y1, o.y1), maxOf(a.x2, o.x2), maxOf(a.y2, o.y2));
}

VyRect VyRect::operator&(const VyRect& r) const
{
    if (isNull() || r.isNull())
        return VyRect();
    const VyRect a = normalized();
    const VyRect o = r.normalized();
    if (a.x1 > o.x2 || o.x1 > a.x2 || a.y1 > o.y2 || o.y1 > a.y2)
        return VyRect();
    return VyRect(maxOf(a.x1, o.x1), maxOf(a.y1, o.y1), minOf(a.x2, o.x2), minOf(a.y2, o.y2));
}

bool VyRect::intersects(const VyRect& r) const
{
    if (isNull() || r.isNull())
        return false;
    const VyRect a = normalized();
    const VyRect o = r.normalized();
    return a.x1 <= o.x2 && o.x1 <= a.x2 && a.y1 <= o.y2 && o.y1 <= a.y2;
}

VyRectF VyRectF::normalized() const
{
    VyRectF r = *this;
    if (r.width < 0) {
        r.x += r.width;
        r.width = -r.width;
    }
    if (r.height < 0) {
        r.y += r.height;
        r.height = -r.height;
    }
    return r;
}

bool VyRectF::contains(const VyPointF& p) const
{
    if (isNull())
        return false;
    const VyRectF a = normalized();
    return a.x <= p.x && p.x <= a.x + a.width && a.y <= p.y && p.y <= a.y + a.height;
}

bool VyRectF::contains(const VyRectF& r) const
{
    if (isNull() || r.isNull())
        return false;
    const VyRectF a = normalized();
    const VyRectF o = r.normalized();
    return o.x >= a.x && o.x + o.width <= a.x + a.width && o.y >= a.y &&
           o.y + o.height <= a.y + a.height;
}

VyRectF VyRectF::operator|(const VyRectF& r) const
{
    // Kept: as for the integer union, a null operand gives the other rectangle as it is.
    if (isNull())
        return r;
    if (r.isNull())
        return *this;
    const VyRectF a = normalized();
    const VyRectF o = r.normalized();
    const float left = minOf(a.x, o.x);
    const float top = minOf(a.y, o.y);
    return VyRectF(left, top, maxOf(a.x + a.width, o.x + o.width) - left,
                   maxOf(a.y + a.height, o.y + o.height) - top);
}

VyRectF VyRectF::operator&(const VyRectF& r) const
{
    if (isNull() || r.isNull())
        return VyRectF();
    const VyRectF a = normalized();
    const VyRectF o = r.normalized();
    const float ar = a.x + a.width, ab = a.y + a.height;
    const float orr = o.x + o.width, ob = o.y + o.height;
    if (a.x > orr || o.x > ar || a.y > ob || o.y > ab)
        return VyRectF();
    const float left = maxOf(a.x, o.x);
    const float top = maxOf(a.y, o.y);
    return VyRectF(left, top, minOf(ar, orr) - left, minOf(ab, ob) - top);
}

bool VyRectF::intersects(const VyRectF& r) const
{
    if (isNull() || r.isNull())
        return false;
    const VyRectF a = normalized();
    const VyRectF o = r.normalized();
    return a.x <= o.x + o.width && o.x <= a.x + a.width && a.y <= o.y + o.height &&
           o.y <= a.y + a.height;
}

VyRect VyRectF::toAlignedRect() const
{
    const double dx = x, dy = y;
    return VyRect(int(floor(dx)), int(floor(dy)), int(ceil(dx + double(width))) - 1,
                  int(ceil(dy + double(height))) - 1);
}
