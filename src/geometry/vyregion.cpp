// VyRegion: records and their free list, sharing, queries, and the shortcuts of the set
// operations. The band sweep itself lives in vyregionsweep.cpp.
#include "vyregion.h"

#include <limits.h>
#include <stddef.h>
#include <string.h>
#include <type_traits>

#include "vyregionsweep.h"

namespace
{

// One allocation holds the shared record and its private part.
struct Record {
    Record() : data{{1}, &priv} {}
    VyRegion::VyRegionData data;
    VyRegionPrivate priv;
};
static_assert(std::is_standard_layout<Record>::value, "a record is found from its private part");

Record* recordOf(VyRegionPrivate* p)
{
    return reinterpret_cast<Record*>(reinterpret_cast<char*>(p) - offsetof(Record, priv));
}

// The free list of released records, linked through their private parts. Unlocked, like the
// rest of a region's bookkeeping. At exit the kept records are deleted, and records released
// after that are deleted at once.
VyRegionPrivate* freeList = nullptr;
bool freeListClosed = false;

struct FreeListOwner {
    ~FreeListOwner()
    {
        freeListClosed = true;
        while (freeList) {
            VyRegionPrivate* p = freeList;
            freeList = p->nextFree;
            delete recordOf(p);
        }
    }
} freeListOwner;

// The private part of `shared_empty`: no rectangles, null rectangles, largest area -1.
VyRegionPrivate emptyPrivate;

int clampedArea(long long area)
{
    return area > INT_MAX ? INT_MAX : area < INT_MIN ? INT_MIN : int(area);
}

// Gives p the rectangles `banded` in their order, one rectangle in `single`, more in the vector,
// and `bounds` as what is cached about them.
void take(VyRegionPrivate* p, const VyVector<VyRect>& banded, const VyRegionBounds& bounds)
{
    p->numRects = banded.size();
    if (p->numRects > 1) {
        p->rects = banded;
        p->vectorize = 1;
    } else {
        p->rects = VyVector<VyRect>();
        p->single = p->numRects ? banded.at(0) : VyRect();
        p->vectorize = 0;
    }
    p->extents = bounds.box;
    p->innerRect = bounds.largest;
    p->innerArea = clampedArea(bounds.largestArea);
}

// The pixels `op` keeps of a and b in a record of their own; the shared empty region when none
// is left.
VyRegion swept(const VyRegionPrivate* a, const VyRegionPrivate* b, VyRegionOp op)
{
    VyRegionBounds bounds;
    const VyVector<VyRect> rects =
        vyRegionSweep(a->rectData(), a->numRects, b->rectData(), b->numRects, op, &bounds);
    if (rects.isEmpty())
        return VyRegion();
    VyRegion result = VyRegion().copy();
    take(result.d->rgn, rects, bounds);
    return result;
}

} // namespace

VyRegion::VyRegionData VyRegion::shared_empty = {{1}, &emptyPrivate};

void VyRegionPrivate::toVector()
{
    if (vectorize)
        return;
    rects = VyVector<VyRect>(1, single);
    vectorize = 1;
}

void VyRegionPrivate::setBanded(const VyVector<VyRect>& banded)
{
    take(this, banded, VyRegionBounds());
    updateBounds();
}

void VyRegionPrivate::updateBounds()
{
    if (numRects == 0) {
        extents = VyRect();
        innerRect = VyRect();
        innerArea = -1;
        return;
    }
    const VyRect* r = rectData();
    VyRect box = r[0];
    innerArea = -1;
    for (int k = 0; k < numRects; ++k) {
        box.x1 = r[k].x1 < box.x1 ? r[k].x1 : box.x1;
        box.y1 = r[k].y1 < box.y1 ? r[k].y1 : box.y1;
        box.x2 = r[k].x2 > box.x2 ? r[k].x2 : box.x2;
        box.y2 = r[k].y2 > box.y2 ? r[k].y2 : box.y2;
        keepLargest(r[k]);
    }
    extents = box;
}

void VyRegionPrivate::keepLargest(const VyRect& r)
{
    const long long area = vyRectArea(r);
    if (innerArea >= 0 && area <= vyRectArea(innerRect))
        return;
    innerRect = r;
    innerArea = clampedArea(area);
}

VyRegion::VyRegionData* VyRegion::newRecord()
{
    if (freeList) {
        VyRegionPrivate* p = freeList;
        freeList = p->nextFree;
        p->vectorize = 0;
        p->numRects = 0;
        p->single = VyRect();
        p->extents = VyRect();
        p->innerRect = VyRect();
        p->innerArea = -1;
        Record* record = recordOf(p);
        record->data.ref.store(1, std::memory_order_relaxed);
        return &record->data;
    }
    return &(new Record)->data;
}

void vy_freeRegion(VyRegionPrivate* rgn)
{
    rgn->rects = VyVector<VyRect>();
    if (freeListClosed) {
        delete recordOf(rgn);
        return;
    }
    rgn->nextFree = freeList;
    freeList = rgn;
}

void VyRegion::cleanUp(VyRegionData* x)
{
    // Only unbalanced counts bring the static record to 0; it stays alive.
    if (x == &shared_empty)
        return;
    if (!x->rgn) {
        delete reinterpret_cast<Record*>(x);
        return;
    }
    vy_freeRegion(x->rgn);
}

VyRegion::VyRegion(const VyRect& r, RegionType t)
{
    (void)t;
    if (!r.isValid()) {
        d = &shared_empty;
        d->ref.fetch_add(1);
        return;
    }
    d = newRecord();
    VyRegionPrivate* p = d->rgn;
    p->numRects = 1;
    p->single = r;
    p->extents = r;
    p->innerRect = r;
    p->innerArea = clampedArea(vyRectArea(r));
}

VyRegion::VyRegion(int x, int y, int w, int h, RegionType t)
    : VyRegion(VyRect(x, y, int((long long)x + w - 1), int((long long)y + h - 1)), t)
{
}

VyRegion& VyRegion::operator=(const VyRegion& other)
{
    VyRegionData* x = other.d;
    x->ref.fetch_add(1);
    release(d);
    d = x;
    return *this;
}

VyRegion VyRegion::fromBanded(const VyVector<VyRect>& banded)
{
    if (banded.isEmpty())
        return VyRegion();
    VyRegion result(newRecord(), Adopt());
    result.d->rgn->setBanded(banded);
    return result;
}

void VyRegion::detach()
{
    if (d->ref.load(std::memory_order_acquire) != 1)
        *this = copy();
}

VyRegion VyRegion::copy() const
{
    VyRegion result(newRecord(), Adopt());
    if (d->rgn)
        *result.d->rgn = *d->rgn;
    return result;
}

VyVector<VyRect> VyRegion::rects() const
{
    VyRegionPrivate* p = d->rgn;
    if (!p || p->numRects == 0)
        return VyVector<VyRect>();
    // Kept: a region held as one rectangle is switched to the vector form in the shared record
    // itself, without detaching, so every copy sees the change, and from then on
    // contains(VyRect) answers with the overlap walk for it. The framework asks for the
    // rectangles of regions it shares read-only, many times per paint; converting once in
    // place spares a detach and a copy per call.
    p->toVector();
    return p->rects;
}

void VyRegion::setRects(const VyRect* rs, int n)
{
    // The rectangles are copied before the old record goes, so `rs` may point into it.
    if (!rs || n <= 0 || (n == 1 && !rs[0].isValid())) {
        *this = VyRegion();
        return;
    }
    VyVector<VyRect> copy(n);
    memcpy(static_cast<void*>(copy.data()), rs, size_t(n) * sizeof(VyRect));
    *this = fromBanded(copy);
}

bool VyRegion::contains(const VyPoint& pt) const
{
    const VyRegionPrivate* p = d->rgn;
    if (!p || p->numRects == 0)
        return false;
    if (!p->vectorize)
        return p->single.contains(pt);
    if (!p->extents.contains(pt))
        return false;
    if (p->innerRect.contains(pt))
        return true;
    const VyRect* r = p->rects.constData();
    for (int k = 0; k < p->numRects; ++k)
        if (r[k].contains(pt))
            return true;
    return false;
}

bool VyRegion::contains(const VyRect& r) const
{
    const VyRegionPrivate* p = d->rgn;
    if (!p)
        return false;
    // Kept: a region held as one rectangle answers whether it contains r entirely, while a
    // region held as a vector answers whether r overlaps it (the walk below). Both are what
    // the framework's clipping asks of each kind: the exact answer is free for one rectangle,
    // and for many rectangles "is any of r's area exposed" is all it needs.
    if (!p->vectorize)
        return p->single.contains(r, false);
    const VyRect& box = p->extents;
    if (p->numRects == 0 || r.x1 > box.x2 || r.x2 < box.x1 || r.y1 > box.y2 || r.y2 < box.y1)
        return false;
    // The walk keeps a row, the topmost row of r not yet known to be covered, and records
    // whether part of r was found inside and part outside the region.
    bool partIn = false;
    bool partOut = false;
    long long row = r.y1;
    const VyRect* rs = p->rects.constData();
    for (int k = 0; k < p->numRects; ++k) {
        const VyRect& b = rs[k];
        if (b.y2 < row)
            continue; // a band above the row
        if (b.y1 > row) {
            // The rows between are not covered.
            partOut = true;
            if (partIn || b.y1 > r.y2)
                return partIn;
            row = b.y1;
        }
        if (b.x2 < r.x1)
            continue; // left of r's columns
        if (b.x1 > r.x1)
            partOut = true;
        if (b.x1 <= r.x2)
            partIn = true;
        if (partIn && partOut)
            return true;
        if (b.x2 >= r.x2) {
            // This band covers r's right edge: the rest of the band lies beyond r.
            row = b.y2 + 1LL;
            if (row > r.y2)
                break;
        }
    }
    return partIn;
}

bool VyRegion::intersects(const VyRect& r) const
{
    if (isEmpty() || r.isNull())
        return false;
    const VyRect n = r.normalized();
    const VyRegionPrivate* p = d->rgn;
    if (!p->extents.intersects(n))
        return false;
    if (p->numRects == 1)
        return true;
    const VyRect* rs = p->rectData();
    for (int k = 0; k < p->numRects; ++k)
        if (rs[k].intersects(n))
            return true;
    return false;
}

bool VyRegion::intersects(const VyRegion& r) const
{
    if (isEmpty() || r.isEmpty())
        return false;
    const VyRegionPrivate* a = d->rgn;
    const VyRegionPrivate* b = r.d->rgn;
    if (!a->extents.intersects(b->extents))
        return false;
    if (a->numRects == 1)
        return r.intersects(a->rectData()[0]);
    if (b->numRects == 1)
        return intersects(b->rectData()[0]);
    return vyRegionBandsMeet(a->rectData(), a->numRects, b->rectData(), b->numRects);
}

void VyRegion::translate(int dx, int dy)
{
    if ((dx == 0 && dy == 0) || isEmpty())
        return;
    detach();
    VyRegionPrivate* p = d->rgn;
    if (p->vectorize) {
        VyRect* r = p->rects.data();
        for (int k = 0; k < p->numRects; ++k)
            r[k].translate(dx, dy);
    } else {
        p->single.translate(dx, dy);
    }
    p->extents.translate(dx, dy);
    p->innerRect.translate(dx, dy);
}

VyRegion VyRegion::translated(int dx, int dy) const
{
    VyRegion result(*this);
    result.translate(dx, dy);
    return result;
}

VyRegion VyRegion::unite(const VyRegion& r) const
{
    if (isEmpty())
        return r;
    if (r.isEmpty() || d == r.d)
        return *this;
    const VyRegionPrivate* a = d->rgn;
    const VyRegionPrivate* b = r.d->rgn;
    if (a->innerRect.contains(b->extents, false))
        return *this;
    if (b->innerRect.contains(a->extents, false))
        return r;
    // r follows this region in banded order: below a gap, or further right in its last band.
    const VyRect& last = a->rectData()[a->numRects - 1];
    const VyRect& first = b->rectData()[0];
    if (first.y1 > last.y2 + 1LL ||
        (first.y1 == last.y1 && first.y2 == last.y2 && first.x1 > last.x2)) {
        VyRegion result = copy();
        result.d->rgn->append(b);
        return result;
    }
    // The same with the roles turned.
    const VyRect& rLast = b->rectData()[b->numRects - 1];
    const VyRect& ownFirst = a->rectData()[0];
    if (ownFirst.y1 > rLast.y2 + 1LL ||
        (ownFirst.y1 == rLast.y1 && ownFirst.y2 == rLast.y2 && ownFirst.x1 > rLast.x2)) {
        VyRegion result = copy();
        result.d->rgn->prepend(b);
        return result;
    }
    if (*this == r)
        return *this;
    return swept(a, b, VyRegionOp::Unite);
}

VyRegion VyRegion::intersect(const VyRegion& r) const
{
    if (isEmpty() || r.isEmpty() || !d->rgn->extents.intersects(r.d->rgn->extents))
        return VyRegion();
    const VyRegionPrivate* a = d->rgn;
    const VyRegionPrivate* b = r.d->rgn;
    if (b->innerRect.contains(a->extents, false))
        return *this;
    if (a->innerRect.contains(b->extents, false))
        return r;
    if (a->numRects == 1 && b->numRects == 1)
        return VyRegion(a->rectData()[0] & b->rectData()[0]);
    return swept(a, b, VyRegionOp::Intersect);
}

VyRegion VyRegion::subtract(const VyRegion& r) const
{
    if (isEmpty() || r.isEmpty())
        return *this;
    const VyRegionPrivate* a = d->rgn;
    const VyRegionPrivate* b = r.d->rgn;
    if (b->innerRect.contains(a->extents, false))
        return VyRegion();
    if (!a->extents.intersects(b->extents))
        return *this;
    if (*this == r)
        return VyRegion();
    return swept(a, b, VyRegionOp::Subtract);
}

VyRegion VyRegion::eor(const VyRegion& r) const
{
    if (isEmpty() || r.isEmpty() || !d->rgn->extents.intersects(r.d->rgn->extents))
        return unite(r);
    if (*this == r)
        return VyRegion();
    return subtract(r).unite(r.subtract(*this));
}

bool VyRegion::operator==(const VyRegion& r) const
{
    if (d == r.d)
        return true;
    const VyRegionPrivate* a = d->rgn;
    const VyRegionPrivate* b = r.d->rgn;
    if (!a || !b)
        return !a && !b;
    if (a->numRects != b->numRects)
        return false;
    if (a->numRects == 0)
        return true;
    if (a->extents != b->extents)
        return false;
    const VyRect* ra = a->rectData();
    const VyRect* rb = b->rectData();
    for (int k = 0; k < a->numRects; ++k)
        if (ra[k] != rb[k])
            return false;
    return true;
}

bool vy_region_strictContains(const VyRegion& region, const VyRect& r)
{
    if (region.isEmpty() || !r.isValid())
        return false;
    return region.d->rgn->innerRect.contains(r, false);
}
