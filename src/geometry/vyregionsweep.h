// The band sweep behind VyRegion's set operations (private to the library).
//
// Both inputs are rectangle arrays in y-x banded form (see vyregion.h). The sweep walks the
// two band lists top to bottom, cutting them into horizontal slabs over which neither changes,
// combines the x intervals of each slab in one left-to-right pass, and writes the result in
// canonical banded form: touching intervals joined, touching slabs with equal intervals merged
// into one band. Each slab costs time linear in the rectangles of the two bands it cuts; no
// pixel is visited. The bounding box and the largest rectangle are found while writing.
#ifndef VYREGIONSWEEP_H
#define VYREGIONSWEEP_H

#include "vyrect.h"

#include "vyvector.h"

enum class VyRegionOp { Unite, Intersect, Subtract };

// What a region caches about its rectangles: the bounding box and the first rectangle of
// strictly largest area, with that area; the null rectangles and -1 for none.
struct VyRegionBounds {
    VyRect box;
    VyRect largest;
    long long largestArea = -1;
};

// The pixels of a or b (Unite), of both (Intersect), or of a and not b (Subtract); `bounds`
// receives their bounds.
VyVector<VyRect> vyRegionSweep(const VyRect* a, int na, const VyRect* b, int nb, VyRegionOp op,
                               VyRegionBounds* bounds);

// Whether some rectangle of a overlaps some rectangle of b, walking both band lists once.
bool vyRegionBandsMeet(const VyRect* a, int na, const VyRect* b, int nb);

// The area of r, (x2 + 1 - x1) * (y2 + 1 - y1), in 64 bits: the measure of the largest
// rectangle.
inline long long vyRectArea(const VyRect& r)
{
    return ((long long)r.x2 + 1 - r.x1) * ((long long)r.y2 + 1 - r.y1);
}

#endif
