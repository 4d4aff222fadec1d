// The band sweep behind VyRegion's set operations (private to the library).
//
// Both inputs are rectangle arrays in y-x banded form (see vyregion.h). The sweep walks the
// two band lists top to bottom, cutting them into horizontal slabs over which neither changes,
// combines the x intervals of each slab in one left-to-right pass, and writes the result in
// canonical banded form: touching intervals joined, touching slabs with equal intervals merged
// into one band. Each slab costs time linear in the rectangles of the two bands it cuts; no
// pixel is visited.
#ifndef VYREGIONSWEEP_H
#define VYREGIONSWEEP_H

#include "vyrect.h"
#include "vyvector.h"

enum class VyRegionOp { Unite, Intersect, Subtract };

// The pixels of a or b (Unite), of both (Intersect), or of a and not b (Subtract).
VyVector<VyRect> vyRegionSweep(const VyRect* a, int na, const VyRect* b, int nb, VyRegionOp op);

// Whether some rectangle of a overlaps some rectangle of b, walking both band lists once.
bool vyRegionBandsMeet(const VyRect* a, int na, const VyRect* b, int nb);

#endif
