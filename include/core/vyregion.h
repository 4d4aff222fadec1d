// VyRegion: an implicitly shared set of pixels made of non-overlapping integer rectangles.
//
// A region holds one pointer `d` to a reference-counted record (`VyRegionData`) whose private
// part (`VyRegionPrivate`) lives in the same allocation. Copies share the record; every
// mutator detaches first through `detach()`. Empty regions point at the static
// `shared_empty`, which is never freed. Released records go to a process-wide free list and
// are reused before new memory is allocated.
//
// Invariant: the rectangles are in y-x banded form. A band is a run of rectangles with equal
// top and bottom; bands go top to bottom, rectangles within a band left to right, and no two
// rectangles overlap. The set operations produce the canonical form of that shape: touching
// rectangles within a band are joined, and touching bands with equal x intervals are merged,
// so two regions covering the same pixels hold the same rectangles. `setRects` takes its
// rectangles as given. Each record caches its bounding box and its largest rectangle; most
// operations first try cheap answers from those two before walking the bands.
//
// Threads: the reference counts are atomic, but the process-wide free list of records, the
// buffer the set operations keep for writing their results, and the in-place conversion of
// `rects()` are not locked. Every region made or released touches the free list, so all regions
// of the process belong to one thread at a time, even regions that share nothing; a region
// shared read-only is not safe either, since `rects()` writes it.
#ifndef VYREGION_H
#define VYREGION_H

#include "vyglobal.h"

#include "vypoint.h"
#include "vyrect.h"
#include "vyvector.h"

#include <atomic>

// The rectangles of a region and what is cached about them.
struct VY_EXPORT VyRegionPrivate {
    VyRegionPrivate() : vectorize(0), numRects(0), innerArea(-1) {}

    // 1 when `rects` holds the rectangles, 0 when `single` holds the only one (or none).
    int vectorize;
    // 0 for an empty region.
    int numRects;
    // The rectangles while `vectorize` is 1, exactly numRects of them.
    VyVector<VyRect> rects;
    VyRect single;
    // The bounding box of all rectangles; the null rectangle when there are none.
    VyRect extents;
    // The first rectangle of strictly largest area, and that area, (x2 + 1 - x1) *
    // (y2 + 1 - y1), clamped to the int range; -1 when there is none. Areas are compared
    // exactly (see keepLargest), never by the clamped value. A record on the free list uses
    // the area's place as the list link.
    VyRect innerRect;
    union {
        int innerArea;
        VyRegionPrivate* nextFree;
    };

    // The numRects rectangles in order, in whichever field holds them.
    const VyRect* rectData() const { return vectorize ? rects.constData() : &single; }
    // Holds the rectangles in `rects` from now on (no change when it already does).
    void toVector();
    // Takes `banded` as the rectangles, in their order: one rectangle is kept in `single`, more
    // in the vector. Recomputes the bounding box and the largest rectangle.
    void setBanded(const VyVector<VyRect>& banded);
    // Recomputes the bounding box, the largest rectangle and its area from the rectangles.
    void updateBounds();
    // Makes r the largest rectangle when there is none yet or r's area, computed in 64 bits,
    // is strictly above the current one's.
    void keepLargest(const VyRect& r);
    // Adds the rectangles of `r`, which must all come after this region's in banded order:
    // r's first band starts below this region's last band, or is the same band with r's
    // first rectangle right of this region's last one. Neither region may be empty. Rejoins a
    // band that the two now share, and its neighbours, into canonical form. O(size of both).
    void append(const VyRegionPrivate* r);
    // The same with the roles turned: all of r's rectangles come before this region's.
    void prepend(const VyRegionPrivate* r);
};

class VY_EXPORT VyRegion
{
public:
    enum RegionType { Rectangle = 0 };

    // The shared record. `rgn` points at the record's own private part; null means empty.
    struct VyRegionData {
        std::atomic<int> ref;
        VyRegionPrivate* rgn;
    };

    // Refers to `shared_empty`.
    VyRegion() : d(&shared_empty) { d->ref.fetch_add(1); }
    // Only `Rectangle` is supported for `t`. A rectangle with x1 > x2 or y1 > y2 gives the
    // shared empty region; reversed edges are not swapped.
    VyRegion(const VyRect& r, RegionType t = Rectangle);
    // The rectangle of w by h pixels from (x, y).
    VyRegion(int x, int y, int w, int h, RegionType t = Rectangle);
    VyRegion(const VyRegion& other) : d(other.d) { d->ref.fetch_add(1); }
    // Leaves `other` empty.
    VyRegion(VyRegion&& other) noexcept : d(other.d)
    {
        other.d = &shared_empty;
        shared_empty.ref.fetch_add(1);
    }
    ~VyRegion() { release(d); }
    VyRegion& operator=(const VyRegion& other);
    VyRegion& operator=(VyRegion&& other) noexcept
    {
        VyRegionData* old = d;
        d = other.d;
        other.d = old;
        return *this;
    }

    // True for `shared_empty`, an absent private part, or no rectangles.
    bool isEmpty() const { return d == &shared_empty || !d->rgn || d->rgn->numRects == 0; }
    // 0 when the private part is absent.
    int rectCount() const { return d->rgn ? d->rgn->numRects : 0; }
    // The null rectangle when empty.
    VyRect boundingRect() const { return isEmpty() ? VyRect() : d->rgn->extents; }
    // The rectangles in banded order, sharing the record's vector. A one-rectangle region is
    // converted to the vector form in place first, without detaching (see the source). Empty
    // for an empty region.
    VyVector<VyRect> rects() const;
    // Replaces the region with the n rectangles of `rects`, taken as given: the caller
    // supplies the banded order, nothing is sorted or merged. n <= 0 or a null array gives the
    // empty region; a single rectangle with x1 > x2 or y1 > y2 too. `rects` may point into
    // this region's own rectangles. Allocates one record.
    void setRects(const VyRect* rects, int n);

    // Whether a rectangle of the region contains `p`, edges inclusive. O(rectangles) at worst.
    bool contains(const VyPoint& p) const;
    // A region held as one rectangle: whether that rectangle contains `r` entirely. A region
    // held as a vector: whether `r` overlaps it (see the source). O(rectangles) at worst.
    bool contains(const VyRect& r) const;
    // Whether some pixel of the normalised `r` lies in the region. False for a null `r`.
    bool intersects(const VyRect& r) const;
    // Whether the two regions share a pixel. O(rectangles of both).
    bool intersects(const VyRegion& r) const;

    // Moves every rectangle; detaches unless both offsets are 0 or the region is empty.
    void translate(int dx, int dy);
    void translate(const VyPoint& p) { translate(p.x, p.y); }
    VyRegion translated(int dx, int dy) const;
    VyRegion translated(const VyPoint& p) const { return translated(p.x, p.y); }

    // The set operations try the cached shortcuts first (the result may then share a record
    // with an operand) and otherwise sweep the bands of both regions, in time linear in the
    // rectangles of each band pair and the result.
    VyRegion unite(const VyRegion& r) const;
    VyRegion unite(const VyRect& r) const { return unite(VyRegion(r)); }
    VyRegion intersect(const VyRegion& r) const;
    VyRegion intersect(const VyRect& r) const { return intersect(VyRegion(r)); }
    VyRegion subtract(const VyRegion& r) const;
    VyRegion eor(const VyRegion& r) const;

    VyRegion operator|(const VyRegion& r) const { return unite(r); }
    VyRegion operator+(const VyRegion& r) const { return unite(r); }
    VyRegion operator+(const VyRect& r) const { return unite(r); }
    VyRegion operator&(const VyRegion& r) const { return intersect(r); }
    VyRegion operator&(const VyRect& r) const { return intersect(r); }
    VyRegion operator-(const VyRegion& r) const { return subtract(r); }
    VyRegion operator^(const VyRegion& r) const { return eor(r); }
    VyRegion& operator|=(const VyRegion& r) { return *this = unite(r); }
    VyRegion& operator+=(const VyRegion& r) { return *this = unite(r); }
    VyRegion& operator+=(const VyRect& r) { return *this = unite(r); }
    VyRegion& operator&=(const VyRegion& r) { return *this = intersect(r); }
    VyRegion& operator&=(const VyRect& r) { return *this = intersect(r); }
    VyRegion& operator-=(const VyRegion& r) { return *this = subtract(r); }
    VyRegion& operator^=(const VyRegion& r) { return *this = eor(r); }

    // Same record, or the same rectangles in the same order; two absent private parts are
    // equal. O(rectangles).
    bool operator==(const VyRegion& r) const;
    bool operator!=(const VyRegion& r) const { return !(*this == r); }

    // Gives this region its own record (a `copy()`) when the record is shared.
    void detach();
    // A new record with the same fields; the rectangle vector is shared by reference count.
    VyRegion copy() const;
    // Releases a record whose count reached 0: with no private part the record is deleted,
    // otherwise `vy_freeRegion` keeps it for reuse. `shared_empty` is never released.
    static void cleanUp(VyRegionData* x);

    // The record of every empty region: count starts at 1, never freed. Its private part is a
    // static empty one (count 0, null rectangles, largest area -1).
    static VyRegionData shared_empty;

    VyRegionData* d;

private:
    // Takes over a record holding one reference.
    struct Adopt {
    };
    VyRegion(VyRegionData* x, Adopt) : d(x) {}
    static void release(VyRegionData* x)
    {
        if (x->ref.fetch_sub(1, std::memory_order_acq_rel) == 1)
            cleanUp(x);
    }
    static VyRegionData* newRecord();
    // The region holding the rectangles `banded`, taken as given; the empty region for none.
    static VyRegion fromBanded(const VyVector<VyRect>& banded);
};

// Releases the rectangle vector of `rgn`, the private part of a record, and puts the record on
// the free list (the record is deleted instead while the process is exiting).
VY_EXPORT void vy_freeRegion(VyRegionPrivate* rgn);

// A fast, conservative test: true only when `r` is valid and lies within the region's largest
// rectangle, so a rectangle covered by several rectangles together gives false.
VY_EXPORT bool vy_region_strictContains(const VyRegion& region, const VyRect& r);

#endif
