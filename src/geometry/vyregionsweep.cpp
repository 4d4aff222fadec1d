// The band sweep of the region operations, and the appending of one banded region to another.
#include "vyregionsweep.h"

#include "vyregion.h"

#include <limits.h>

namespace
{

// Walks the bands of a banded rectangle array: [start, end) share one top and bottom.
class BandCursor
{
public:
    BandCursor(const VyRect* r, int n) : r_(r), n_(n), start_(0), end_(0) { findEnd(); }

    bool done() const { return start_ >= n_; }
    int top() const { return r_[start_].y1; }
    int bottom() const { return r_[start_].y2; }
    const VyRect* rects() const { return r_ + start_; }
    int count() const { return end_ - start_; }
    void next()
    {
        start_ = end_;
        findEnd();
    }

private:
    void findEnd()
    {
        if (start_ >= n_)
            return;
        end_ = start_ + 1;
        while (end_ < n_ && r_[end_].y1 == r_[start_].y1 && r_[end_].y2 == r_[start_].y2)
            ++end_;
    }

    const VyRect* r_;
    int n_;
    int start_;
    int end_;
};

// Writes bands in canonical form into a vector: x intervals added left to right join when they
// touch or overlap, and a band that touches the previous one with the same intervals extends
// it instead of starting a new one. The vector's size serves as the capacity while writing;
// finish() trims it to the rectangles written.
class BandWriter
{
public:
    // Keeps the first `keep` rectangles of `out`; the last band among them may still be
    // extended by the first band written.
    BandWriter(VyVector<VyRect>& out, int keep) : out_(out), n_(keep), prevStart_(-1)
    {
        cap_ = out_.size();
        p_ = cap_ ? out_.data() : nullptr;
        if (keep > 0) {
            prevStart_ = keep - 1;
            while (prevStart_ > 0 && p_[prevStart_ - 1].y1 == p_[keep - 1].y1 &&
                   p_[prevStart_ - 1].y2 == p_[keep - 1].y2)
                --prevStart_;
        }
    }

    void beginBand(int top, int bottom)
    {
        top_ = top;
        bottom_ = bottom;
        bandStart_ = n_;
    }

    void add(long long x1, long long x2)
    {
        if (n_ > bandStart_ && (long long)p_[n_ - 1].x2 + 1 >= x1) {
            if (x2 > p_[n_ - 1].x2)
                p_[n_ - 1].x2 = int(x2);
            return;
        }
        if (n_ == cap_)
            grow();
        p_[n_++] = VyRect(int(x1), top_, int(x2), bottom_);
    }

    void endBand()
    {
        const int count = n_ - bandStart_;
        if (count == 0)
            return;
        if (prevStart_ >= 0 && bandStart_ - prevStart_ == count &&
            (long long)p_[prevStart_].y2 + 1 == top_ && sameIntervals(prevStart_, count)) {
            for (int k = prevStart_; k < bandStart_; ++k)
                p_[k].y2 = bottom_;
            n_ = bandStart_;
            return;
        }
        prevStart_ = bandStart_;
    }

    void finish() { out_.resize(n_); }

private:
    bool sameIntervals(int prev, int count) const
    {
        for (int k = 0; k < count; ++k)
            if (p_[prev + k].x1 != p_[bandStart_ + k].x1 ||
                p_[prev + k].x2 != p_[bandStart_ + k].x2)
                return false;
        return true;
    }

    void grow()
    {
        out_.resize(cap_ < 8 ? 16 : cap_ * 2);
        cap_ = out_.size();
        p_ = out_.data();
    }

    VyVector<VyRect>& out_;
    VyRect* p_;
    int n_;
    int cap_;
    int prevStart_; // first rectangle of the last band written, -1 before any
    int bandStart_ = 0;
    int top_ = 0;
    int bottom_ = 0;
};

bool keeps(VyRegionOp op, bool inA, bool inB)
{
    switch (op) {
    case VyRegionOp::Unite:
        return inA || inB;
    case VyRegionOp::Intersect:
        return inA && inB;
    case VyRegionOp::Subtract:
        break;
    }
    return inA && !inB;
}

// Whether nothing more can come out once a side has run out.
bool finished(VyRegionOp op, bool moreA, bool moreB)
{
    if (op == VyRegionOp::Intersect)
        return !moreA || !moreB;
    if (op == VyRegionOp::Subtract)
        return !moreA;
    return !moreA && !moreB;
}

// One left-to-right pass over the x intervals of one slab of each side. Between two
// consecutive interval edges of either side the membership of both sides is constant; each
// such stretch is kept or dropped as a whole.
void combineIntervals(const VyRect* a, int na, const VyRect* b, int nb, VyRegionOp op,
                      BandWriter& out)
{
    const long long none = LLONG_MAX;
    int i = 0;
    int j = 0;
    long long x = LLONG_MIN;
    for (;;) {
        while (i < na && a[i].x2 < x)
            ++i;
        while (j < nb && b[j].x2 < x)
            ++j;
        const bool moreA = i < na;
        const bool moreB = j < nb;
        if (finished(op, moreA, moreB))
            return;
        const bool inA = moreA && a[i].x1 <= x;
        const bool inB = moreB && b[j].x1 <= x;
        if (!inA && !inB) {
            const long long nextA = moreA ? a[i].x1 : none;
            const long long nextB = moreB ? b[j].x1 : none;
            x = nextA < nextB ? nextA : nextB;
            continue;
        }
        long long end = none;
        if (moreA) {
            const long long e = inA ? a[i].x2 : a[i].x1 - 1LL;
            end = e < end ? e : end;
        }
        if (moreB) {
            const long long e = inB ? b[j].x2 : b[j].x1 - 1LL;
            end = e < end ? e : end;
        }
        if (keeps(op, inA, inB))
            out.add(x, end);
        x = end + 1;
    }
}

// Copies one band's intervals through the writer.
void copyBand(const VyRect* r, int n, BandWriter& out)
{
    out.beginBand(r[0].y1, r[0].y2);
    for (int k = 0; k < n; ++k)
        out.add(r[k].x1, r[k].x2);
    out.endBand();
}

} // namespace

VyVector<VyRect> vyRegionSweep(const VyRect* a, int na, const VyRect* b, int nb, VyRegionOp op)
{
    VyVector<VyRect> result(na + nb);
    BandWriter out(result, 0);
    BandCursor A(a, na);
    BandCursor B(b, nb);
    long long y = LLONG_MIN;
    for (;;) {
        while (!A.done() && A.bottom() < y)
            A.next();
        while (!B.done() && B.bottom() < y)
            B.next();
        if (finished(op, !A.done(), !B.done()))
            break;
        const bool inA = !A.done() && A.top() <= y;
        const bool inB = !B.done() && B.top() <= y;
        if (!inA && !inB) {
            const long long nextA = A.done() ? LLONG_MAX : A.top();
            const long long nextB = B.done() ? LLONG_MAX : B.top();
            y = nextA < nextB ? nextA : nextB;
            continue;
        }
        // The slab ends where either side's band ends or its next band begins.
        long long bottom = LLONG_MAX;
        if (!A.done())
            bottom = inA ? A.bottom() : A.top() - 1LL;
        if (!B.done()) {
            const long long e = inB ? B.bottom() : B.top() - 1LL;
            bottom = e < bottom ? e : bottom;
        }
        out.beginBand(int(y), int(bottom));
        combineIntervals(inA ? A.rects() : nullptr, inA ? A.count() : 0, inB ? B.rects() : nullptr,
                         inB ? B.count() : 0, op, out);
        out.endBand();
        y = bottom + 1;
    }
    out.finish();
    return result;
}

bool vyRegionBandsMeet(const VyRect* a, int na, const VyRect* b, int nb)
{
    BandCursor A(a, na);
    BandCursor B(b, nb);
    while (!A.done() && !B.done()) {
        if (A.bottom() < B.top()) {
            A.next();
            continue;
        }
        if (B.bottom() < A.top()) {
            B.next();
            continue;
        }
        const VyRect* ra = A.rects();
        const VyRect* rb = B.rects();
        int i = 0;
        int j = 0;
        while (i < A.count() && j < B.count()) {
            if (ra[i].x2 < rb[j].x1)
                ++i;
            else if (rb[j].x2 < ra[i].x1)
                ++j;
            else
                return true;
        }
        // The band that ends first cannot meet anything further down.
        if (A.bottom() < B.bottom())
            A.next();
        else
            B.next();
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
    // rectangles after its own (in place: the writer never overtakes what it reads), then r's
    // further bands, so the joined band can merge with its neighbours above and below.
    int lastBand = numRects - 1;
    while (lastBand > 0 && rects.constData()[lastBand - 1].y1 == last.y1 &&
           rects.constData()[lastBand - 1].y2 == last.y2)
        --lastBand;
    const int oldCount = numRects;
    BandWriter out(rects, lastBand);
    out.beginBand(last.y1, last.y2);
    for (int k = lastBand; k < oldCount; ++k) {
        const VyRect own = rects.constData()[k];
        out.add(own.x1, own.x2);
    }
    BandCursor bands(src, n);
    for (int k = 0; k < bands.count(); ++k)
        out.add(bands.rects()[k].x1, bands.rects()[k].x2);
    out.endBand();
    for (bands.next(); !bands.done(); bands.next())
        copyBand(bands.rects(), bands.count(), out);
    out.finish();
    numRects = rects.size();
    if (numRects == 1) {
        single = rects.at(0);
        rects = VyVector<VyRect>();
        vectorize = 0;
    }
    updateBounds();
}

void VyRegionPrivate::prepend(const VyRegionPrivate* r)
{
    VyRegionPrivate front(*r);
    front.append(this);
    *this = front;
}
