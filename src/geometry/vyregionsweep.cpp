// The band sweep of the region operations, and the appending of one banded region to another.
#include "vyregionsweep.h"

#include "vyregion.h"

#include <limits.h>
#include <new>
#include <stdlib.h>
#include <string.h>

namespace
{

// The end of the band that starts at `r` (r < end): the first rectangle with another top or
// bottom.
const VyRect* bandEnd(const VyRect* r, const VyRect* end)
{
    const VyRect* e = r + 1;
    while (e < end && e->y1 == r->y1 && e->y2 == r->y2)
        ++e;
    return e;
}

// The buffer the last writer left for the next one, so that a sweep allocates nothing but its
// result (a large buffer malloc'd and freed on every operation also makes the heap shrink and
// grow again, page faults and all). Unlocked, like the free list of region records: all regions
// of the process belong to one thread at a time. A writer holds the buffer for its lifetime;
// buffers above kSpareLimit rectangles are not kept. At exit the kept one is freed, and buffers
// given back after that are freed at once.
VyRect* spareRects = nullptr;
size_t spareRoom = 0;
bool spareClosed = false;
constexpr size_t kSpareLimit = 1 << 16;

struct SpareOwner {
    ~SpareOwner()
    {
        spareClosed = true;
        free(spareRects);
        spareRects = nullptr;
        spareRoom = 0;
    }
} spareOwner;

// Writes bands in canonical form into a buffer: x intervals added left to right (by their left
// edges) join when they touch or overlap, and a band that touches the previous one with the
// same intervals extends it instead of starting a new one. The interval being built is held
// apart until the next one is known not to join it, so every rectangle is stored once.
//
// The writer also keeps the bounding box and the largest rectangle (the first one of strictly
// largest area) of the bands it writes. All rectangles of a band have its height, so a band's
// candidate is its first widest rectangle; the band's height, and so that area, is final once
// the next band starts apart from it.
class BandWriter
{
public:
    // Starts with the n rectangles `keep`, in banded form, whose last band may still be extended
    // by the first band written; the box and largest rectangle cover only the bands written
    // after them. Makes room for `expected` rectangles in all.
    BandWriter(const VyRect* keep, int n, size_t expected)
    {
        size_t room = (expected > size_t(n) ? expected : size_t(n)) + 16;
        buf_ = spareRects;
        spareRects = nullptr;
        if (spareRoom >= room) {
            room = spareRoom;
        } else {
            free(buf_);
            buf_ = static_cast<VyRect*>(malloc(room * sizeof(VyRect)));
            if (!buf_)
                throw std::bad_alloc();
        }
        spareRoom = 0;
        limit_ = buf_ + room;
        out_ = buf_ + n;
        band_ = out_;
        prev_ = buf_;
        if (n == 0)
            return;
        memcpy(static_cast<void*>(buf_), keep, size_t(n) * sizeof(VyRect));
        prev_ = out_ - 1;
        while (prev_ > buf_ && prev_[-1].y1 == prev_->y1 && prev_[-1].y2 == prev_->y2)
            --prev_;
        prevBottom_ = prev_->y2;
    }
    ~BandWriter()
    {
        const size_t room = size_t(limit_ - buf_);
        if (spareClosed || room > kSpareLimit) {
            free(buf_);
            return;
        }
        free(spareRects);
        spareRects = buf_;
        spareRoom = room;
    }
    BandWriter(const BandWriter&) = delete;
    BandWriter& operator=(const BandWriter&) = delete;

    void beginBand(long long top, long long bottom)
    {
        top_ = top;
        bottom_ = bottom;
        band_ = out_;
        end_ = kNone;
        widest_ = -1;
    }

    void add(long long x1, long long x2)
    {
        if (x1 - 1 <= end_) {
            if (x2 > end_)
                end_ = x2;
            return;
        }
        flush();
        start_ = x1;
        end_ = x2;
    }

    // Adds the intervals of the rectangles [r, end), which are in left-to-right order.
    void addAll(const VyRect* r, const VyRect* end)
    {
        for (; r < end; ++r)
            add(r->x1, r->x2);
    }

    void endBand()
    {
        flush();
        if (out_ == band_)
            return;
        const long long count = out_ - band_;
        if (box_.x1 > band_->x1)
            box_.x1 = band_->x1;
        if (box_.x2 < out_[-1].x2)
            box_.x2 = out_[-1].x2;
        if (band_ - prev_ != count || prevBottom_ + 1 != top_ || !mergeWithPrevious()) {
            settlePrevious();
            prev_ = band_;
            prevWidest_ = widestAt_;
        }
        prevBottom_ = bottom_;
    }

    // The rectangles written, in a vector of their own.
    VyVector<VyRect> rects() const
    {
        VyVector<VyRect> v(int(out_ - buf_));
        if (out_ > buf_)
            memcpy(static_cast<void*>(v.data()), buf_, size_t(out_ - buf_) * sizeof(VyRect));
        return v;
    }

    // The rectangles written and, in `bounds`, their bounds; nothing may have been kept.
    VyVector<VyRect> finish(VyRegionBounds* bounds)
    {
        settlePrevious();
        if (out_ == buf_) {
            *bounds = VyRegionBounds();
            return VyVector<VyRect>();
        }
        bounds->box = VyRect(int(box_.x1), buf_->y1, int(box_.x2), out_[-1].y2);
        bounds->largest = buf_[largestAt_];
        bounds->largestArea = largestArea_;
        return rects();
    }

private:
    static constexpr long long kNone = LLONG_MIN;

    void flush()
    {
        if (end_ == kNone)
            return;
        if (out_ == limit_)
            grow();
        if (end_ - start_ > widest_) {
            widest_ = end_ - start_;
            widestAt_ = out_ - buf_;
        }
        *out_++ = VyRect(int(start_), int(top_), int(end_), int(bottom_));
    }

    // Extends the previous band down over the band just written when both have the same
    // intervals, and drops the new one.
    bool mergeWithPrevious()
    {
        for (const VyRect *p = prev_, *r = band_; r < out_; ++p, ++r)
            if (p->x1 != r->x1 || p->x2 != r->x2)
                return false;
        for (VyRect* r = prev_; r < band_; ++r)
            r->y2 = int(bottom_);
        out_ = band_;
        return true;
    }

    // Weighs the previous band's widest rectangle, now that its height is final.
    void settlePrevious()
    {
        if (prevWidest_ < 0)
            return;
        const long long area = vyRectArea(buf_[prevWidest_]);
        if (area > largestArea_) {
            largestArea_ = area;
            largestAt_ = prevWidest_;
        }
    }

    void grow()
    {
        const size_t room = size_t(limit_ - buf_) * 2;
        const ptrdiff_t used = out_ - buf_, band = band_ - buf_, prev = prev_ - buf_;
        VyRect* p = static_cast<VyRect*>(realloc(buf_, room * sizeof(VyRect)));
        if (!p)
            throw std::bad_alloc();
        buf_ = p;
        limit_ = p + room;
        out_ = p + used;
        band_ = p + band;
        prev_ = p + prev;
    }

    VyRect* buf_;
    VyRect* out_;                  // the next free place
    VyRect* limit_;                // the end of the buffer
    VyRect* band_;                 // the first rectangle of the band being written
    VyRect* prev_;                 // the first rectangle of the last band written
    long long prevBottom_ = kNone; // its bottom; kNone before any, so nothing merges with it
    long long top_ = 0;
    long long bottom_ = 0;
    long long start_ = 0;    // left edge of the interval being built
    long long end_ = kNone;  // its right edge; kNone while there is none
    long long widest_ = -1;  // the widest x2 - x1 of the band being written
    ptrdiff_t widestAt_ = 0; // and where it is
    ptrdiff_t prevWidest_ = -1;
    struct {
        long long x1 = LLONG_MAX, x2 = LLONG_MIN;
    } box_;
    long long largestArea_ = -1;
    ptrdiff_t largestAt_ = 0;
};

// The intervals of one slab where both sides have a band, [a, aEnd) and [b, bEnd), each in
// left-to-right order without overlaps.
void uniteIntervals(const VyRect* a, const VyRect* aEnd, const VyRect* b, const VyRect* bEnd,
                    BandWriter& out)
{
    while (a < aEnd && b < bEnd) {
        if (a->x1 <= b->x1) {
            out.add(a->x1, a->x2);
            ++a;
        } else {
            out.add(b->x1, b->x2);
            ++b;
        }
    }
    out.addAll(a, aEnd);
    out.addAll(b, bEnd);
}

void intersectIntervals(const VyRect* a, const VyRect* aEnd, const VyRect* b, const VyRect* bEnd,
                        BandWriter& out)
{
    while (a < aEnd && b < bEnd) {
        const int x1 = a->x1 > b->x1 ? a->x1 : b->x1;
        const int x2 = a->x2 < b->x2 ? a->x2 : b->x2;
        if (x1 <= x2)
            out.add(x1, x2);
        // The interval that ends first meets nothing further right.
        if (a->x2 < b->x2)
            ++a;
        else if (b->x2 < a->x2)
            ++b;
        else {
            ++a;
            ++b;
        }
    }
}

void subtractIntervals(const VyRect* a, const VyRect* aEnd, const VyRect* b, const VyRect* bEnd,
                       BandWriter& out)
{
    for (; a < aEnd; ++a) {
        while (b < bEnd && b->x2 < a->x1)
            ++b;
        // x: the leftmost column of a not yet known to be covered by b.
        long long x = a->x1;
        const VyRect* cut = b;
        for (; cut < bEnd && cut->x1 <= a->x2; ++cut) {
            if (cut->x1 > x)
                out.add(x, cut->x1 - 1LL);
            x = cut->x2 + 1LL;
            if (x > a->x2)
                break;
        }
        if (x <= a->x2)
            out.add(x, a->x2);
        // The intervals of b before `cut` end left of a's right edge; `cut` may reach past it
        // into the next interval of a.
        b = cut;
    }
}

// The sweep for one operation: keepA/keepB tell whether the parts of a band of one side that
// the other side's bands do not cover are kept, and combine() joins the intervals of a slab
// covered by both.
template <VyRegionOp op> struct Op;
template <> struct Op<VyRegionOp::Unite> {
    static constexpr bool keepA = true, keepB = true;
    static void combine(const VyRect* a, const VyRect* ae, const VyRect* b, const VyRect* be,
                        BandWriter& out)
    {
        uniteIntervals(a, ae, b, be, out);
    }
};
template <> struct Op<VyRegionOp::Intersect> {
    static constexpr bool keepA = false, keepB = false;
    static void combine(const VyRect* a, const VyRect* ae, const VyRect* b, const VyRect* be,
                        BandWriter& out)
    {
        intersectIntervals(a, ae, b, be, out);
    }
};
template <> struct Op<VyRegionOp::Subtract> {
    static constexpr bool keepA = true, keepB = false;
    static void combine(const VyRect* a, const VyRect* ae, const VyRect* b, const VyRect* be,
                        BandWriter& out)
    {
        subtractIntervals(a, ae, b, be, out);
    }
};

// Writes the rows top..bottom of the band [r, end).
void copyBand(const VyRect* r, const VyRect* end, long long top, long long bottom, BandWriter& out)
{
    out.beginBand(top, bottom);
    out.addAll(r, end);
    out.endBand();
}

// Copies the bands from [r, end) from row y on.
void copyRest(const VyRect* r, const VyRect* end, long long y, BandWriter& out)
{
    while (r < end) {
        const VyRect* e = bandEnd(r, end);
        copyBand(r, e, r->y1 > y ? r->y1 : y, r->y2, out);
        r = e;
    }
}

template <VyRegionOp op>
VyVector<VyRect> sweep(const VyRect* a, const VyRect* aEnd, const VyRect* b, const VyRect* bEnd,
                       VyRegionBounds* bounds)
{
    BandWriter out(nullptr, 0, size_t(aEnd - a) + size_t(bEnd - b));
    const VyRect* aBand = a < aEnd ? bandEnd(a, aEnd) : aEnd;
    const VyRect* bBand = b < bEnd ? bandEnd(b, bEnd) : bEnd;
    // y: the topmost row not swept yet.
    long long y = LLONG_MIN;
    while (a < aEnd && b < bEnd) {
        const long long aTop = a->y1 > y ? a->y1 : y;
        const long long bTop = b->y1 > y ? b->y1 : y;
        long long bottom;
        if (aTop < bTop) {
            // Rows of a's band above b's band.
            bottom = a->y2 < bTop - 1 ? a->y2 : bTop - 1;
            if (Op<op>::keepA)
                copyBand(a, aBand, aTop, bottom, out);
        } else if (bTop < aTop) {
            bottom = b->y2 < aTop - 1 ? b->y2 : aTop - 1;
            if (Op<op>::keepB)
                copyBand(b, bBand, bTop, bottom, out);
        } else {
            bottom = a->y2 < b->y2 ? a->y2 : b->y2;
            out.beginBand(aTop, bottom);
            Op<op>::combine(a, aBand, b, bBand, out);
            out.endBand();
        }
        y = bottom + 1;
        if (a->y2 < y) {
            a = aBand;
            aBand = a < aEnd ? bandEnd(a, aEnd) : aEnd;
        }
        if (b->y2 < y) {
            b = bBand;
            bBand = b < bEnd ? bandEnd(b, bEnd) : bEnd;
        }
    }
    if (Op<op>::keepA)
        copyRest(a, aEnd, y, out);
    if (Op<op>::keepB)
        copyRest(b, bEnd, y, out);
    return out.finish(bounds);
}

} // namespace

VyVector<VyRect> vyRegionSweep(const VyRect* a, int na, const VyRect* b, int nb, VyRegionOp op,
                               VyRegionBounds* bounds)
{
    switch (op) {
    case VyRegionOp::Unite:
        return sweep<VyRegionOp::Unite>(a, a + na, b, b + nb, bounds);
    case VyRegionOp::Intersect:
        return sweep<VyRegionOp::Intersect>(a, a + na, b, b + nb, bounds);
    case VyRegionOp::Subtract:
        break;
    }
    return sweep<VyRegionOp::Subtract>(a, a + na, b, b + nb, bounds);
}

bool vyRegionBandsMeet(const VyRect* a, int na, const VyRect* b, int nb)
{
    const VyRect* aEnd = a + na;
    const VyRect* bEnd = b + nb;
    while (a < aEnd && b < bEnd) {
        const VyRect* aBand = bandEnd(a, aEnd);
        const VyRect* bBand = bandEnd(b, bEnd);
        if (a->y2 < b->y1) {
            a = aBand;
            continue;
        }
        if (b->y2 < a->y1) {
            b = bBand;
            continue;
        }
        for (const VyRect *i = a, *j = b; i < aBand && j < bBand;) {
            if (i->x2 < j->x1)
                ++i;
            else if (j->x2 < i->x1)
                ++j;
            else
                return true;
        }
        // The band that ends first cannot meet anything further down.
        if (a->y2 < b->y2)
            a = aBand;
        else
            b = bBand;
    }
    return false;
}

void VyRegionPrivate::append(const VyRegionPrivate* r)
{
    toVector();
    const VyRect* src = r->rectData();
    const int n = r->numRects;
    const VyRect last = rects.constData()[numRects - 1];
    if (src[0].y1 != last.y1 || src[0].y2 != last.y2) {
        // r starts below a gap: nothing touches, so the rectangles go on as they are.
        rects.resize(numRects + n);
        VyRect* dst = rects.data() + numRects;
        for (int k = 0; k < n; ++k)
            dst[k] = src[k];
        numRects += n;
        extents = extents | r->extents;
        keepLargest(r->innerRect);
        return;
    }
    // r's first band continues this region's last band. That band is written again with r's
    // rectangles after its own, then r's further bands, so the joined band can merge with its
    // neighbours above and below.
    const VyRect* own = rects.constData();
    int lastBand = numRects - 1;
    while (lastBand > 0 && own[lastBand - 1].y1 == last.y1 && own[lastBand - 1].y2 == last.y2)
        --lastBand;
    BandWriter out(own, lastBand, size_t(numRects) + size_t(n));
    const VyRect* srcEnd = src + n;
    const VyRect* firstEnd = bandEnd(src, srcEnd);
    out.beginBand(last.y1, last.y2);
    out.addAll(own + lastBand, own + numRects);
    out.addAll(src, firstEnd);
    out.endBand();
    copyRest(firstEnd, srcEnd, LLONG_MIN, out);
    setBanded(out.rects());
}

void VyRegionPrivate::prepend(const VyRegionPrivate* r)
{
    VyRegionPrivate front(*r);
    front.append(this);
    *this = front;
}
