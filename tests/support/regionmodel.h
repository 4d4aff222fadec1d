// The pixel-set model that region results are checked against, for the region tests and the
// region fuzz target: a set of up to 64 columns held as one bit mask per row.
#ifndef VY_TESTS_REGIONMODEL_H
#define VY_TESTS_REGIONMODEL_H

#include "vyregion.h"

#include <stdint.h>
#include <vector>

// The one banded form of a pixel set: per row its maximal runs, equal consecutive rows
// merged. Bit c of rows[r] (r < count) is the pixel (x0 + c, y0 + r).
inline std::vector<VyRect> canonicalRects(const uint64_t* rows, size_t count, int x0, int y0)
{
    std::vector<VyRect> out;
    for (size_t y = 0; y < count; ++y) {
        if (!rows[y] || (y > 0 && rows[y] == rows[y - 1]))
            continue;
        size_t end = y;
        while (end + 1 < count && rows[end + 1] == rows[y])
            ++end;
        for (uint64_t m = rows[y]; m;) {
            const int x = __builtin_ctzll(m);
            const uint64_t above = ~(m >> x);
            const int run = above ? __builtin_ctzll(above) : 64 - x;
            out.push_back(VyRect(x0 + x, y0 + int(y), x0 + x + run - 1, y0 + int(end)));
            m = x + run >= 64 ? 0 : m & (~uint64_t(0) << (x + run));
        }
    }
    return out;
}

// The rectangles as stored, read without rects() (which converts a one-rectangle region).
inline std::vector<VyRect> storedRects(const VyRegion& r)
{
    if (!r.d->rgn)
        return {};
    const VyRect* p = r.d->rgn->rectData();
    return std::vector<VyRect>(p, p + r.d->rgn->numRects);
}

// What a region caches about its rectangles: the bounding box, and the first rectangle of
// strictly largest area with that area (-1 for none).
struct RegionCache {
    VyRect box;
    VyRect largest;
    long long area = -1;
};

inline RegionCache regionCacheOf(const std::vector<VyRect>& rects)
{
    RegionCache c;
    for (const VyRect& r : rects) {
        c.box = c.box | r;
        const long long a = (long long)r.width() * r.height();
        if (a > c.area) {
            c.area = a;
            c.largest = r;
        }
    }
    return c;
}

#endif
