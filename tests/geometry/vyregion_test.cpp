#include "vyregion.h"

#include <gtest/gtest.h>

#include <ostream>
#include <random>
#include <vector>

// Rectangles in failure messages.
static void PrintTo(const VyRect& r, std::ostream* os)
{
    *os << "(" << r.x1 << "," << r.y1 << " " << r.x2 << "," << r.y2 << ")";
}

namespace
{

// A pixel set on a small grid; the model every region result is checked against.
constexpr int G = 8;
typedef std::vector<bool> Pixels;

bool at(const Pixels& m, int x, int y)
{
    return x >= 0 && y >= 0 && x < G && y < G && m[size_t(y * G + x)];
}

Pixels paint(Pixels m, const VyRect& r, bool value = true)
{
    for (int y = r.y1; y <= r.y2; ++y)
        for (int x = r.x1; x <= r.x2; ++x)
            m[size_t(y * G + x)] = value;
    return m;
}

// The one banded form of a pixel set: per row its maximal runs, equal consecutive rows merged.
std::vector<VyRect> canonical(const Pixels& m)
{
    std::vector<VyRect> out;
    size_t bandStart = 0;
    for (int y = 0; y < G; ++y) {
        std::vector<VyRect> row;
        for (int x = 0; x < G; ++x) {
            if (!at(m, x, y))
                continue;
            int e = x;
            while (at(m, e + 1, y))
                ++e;
            row.push_back(VyRect(x, y, e, y));
            x = e;
        }
        bool same = bandStart < out.size() && out.size() - bandStart == row.size() &&
                    out.back().y2 == y - 1;
        for (size_t k = 0; same && k < row.size(); ++k)
            same = out[bandStart + k].x1 == row[k].x1 && out[bandStart + k].x2 == row[k].x2;
        if (same) {
            for (size_t k = bandStart; k < out.size(); ++k)
                out[k].y2 = y;
        } else if (!row.empty()) {
            bandStart = out.size();
            out.insert(out.end(), row.begin(), row.end());
        }
    }
    return out;
}

VyRegion fromPixels(const Pixels& m)
{
    const std::vector<VyRect> r = canonical(m);
    VyRegion region;
    region.setRects(r.data(), int(r.size()));
    return region;
}

// The rectangles as stored, read without rects() (which converts a one-rectangle region).
std::vector<VyRect> stored(const VyRegion& r)
{
    if (!r.d->rgn)
        return {};
    const VyRect* p = r.d->rgn->rectData();
    return std::vector<VyRect>(p, p + r.d->rgn->numRects);
}

bool overlaps(const Pixels& m, const VyRect& r)
{
    for (int y = r.y1; y <= r.y2; ++y)
        for (int x = r.x1; x <= r.x2; ++x)
            if (at(m, x, y))
                return true;
    return false;
}

bool covers(const Pixels& m, const VyRect& r)
{
    for (int y = r.y1; y <= r.y2; ++y)
        for (int x = r.x1; x <= r.x2; ++x)
            if (!at(m, x, y))
                return false;
    return r.isValid();
}

VyRect randomRect(std::mt19937& rng)
{
    const int x1 = int(rng() % G), y1 = int(rng() % G);
    return VyRect(x1, y1, x1 + int(rng() % unsigned(G - x1)), y1 + int(rng() % unsigned(G - y1)));
}

Pixels randomPixels(std::mt19937& rng)
{
    Pixels m(G * G, false);
    const int n = int(rng() % 5);
    for (int k = 0; k < n; ++k)
        m = paint(m, randomRect(rng), k == 0 || rng() % 3 != 0);
    return m;
}

// Checks the rectangles (canonical banded form: so no overlaps and the order), the cached
// box and largest rectangle, and the queries against the model.
void expectRegion(const VyRegion& r, const Pixels& m)
{
    const std::vector<VyRect> want = canonical(m);
    ASSERT_EQ(stored(r), want);
    EXPECT_EQ(r.rectCount(), int(want.size()));
    EXPECT_EQ(r.isEmpty(), want.empty());
    VyRect box, largest;
    long long area = -1;
    for (const VyRect& w : want) {
        box = box | w;
        const long long a = (long long)w.width() * w.height();
        if (a > area) {
            area = a;
            largest = w;
        }
    }
    EXPECT_EQ(r.boundingRect(), box);
    if (!want.empty()) {
        EXPECT_EQ(r.d->rgn->innerRect, largest);
        EXPECT_EQ(r.d->rgn->innerArea, int(area));
        EXPECT_EQ(r.d->rgn->vectorize, want.size() > 1 ? 1 : 0);
    }
    for (int y = -1; y <= G; ++y)
        for (int x = -1; x <= G; ++x)
            ASSERT_EQ(r.contains(VyPoint(x, y)), at(m, x, y)) << x << "," << y;
}

} // namespace

TEST(VyRegionTest, ConstructionAndEmptyRegions)
{
    VyRegion empty;
    EXPECT_EQ(empty.d, &VyRegion::shared_empty);
    EXPECT_EQ(VyRegion(VyRect(0, 0, -1, -1), VyRegion::Rectangle).d, &VyRegion::shared_empty);
    EXPECT_EQ(VyRegion(VyRect(5, 0, 4, 9)).d, &VyRegion::shared_empty);
    EXPECT_EQ(VyRegion(3, 3, 0, 5).d, &VyRegion::shared_empty);
    EXPECT_TRUE(empty.isEmpty() && empty.rects().isEmpty());
    EXPECT_EQ(empty.boundingRect(), VyRect());
    EXPECT_FALSE(empty.contains(VyPoint(0, 0)) || empty.contains(VyRect(0, 0, 1, 1)));
    EXPECT_TRUE(empty == VyRegion().copy());

    const VyRegion r(2, 3, 4, 5);
    EXPECT_EQ(r.rectCount(), 1);
    EXPECT_EQ(r.boundingRect(), VyRect(2, 3, 5, 7));
    EXPECT_EQ(r.d->rgn->innerArea, 20);
    EXPECT_EQ(r.rects().size(), 1);
    EXPECT_EQ(r.rects().at(0), VyRect(2, 3, 5, 7));
}

TEST(VyRegionTest, SharingTranslateAndCopy)
{
    VyRegion a = VyRegion(0, 0, 3, 3).unite(VyRect(5, 0, 7, 2));
    VyRegion b = a;
    b.translate(0, 0);
    EXPECT_EQ(b.d, a.d);
    b.translate(5, -2);
    EXPECT_NE(b.d, a.d);
    expectRegion(a, paint(paint(Pixels(G * G, false), VyRect(0, 0, 2, 2)), VyRect(5, 0, 7, 2)));
    EXPECT_EQ(stored(b), (std::vector<VyRect>{VyRect(5, -2, 7, 0), VyRect(10, -2, 12, 0)}));
    EXPECT_EQ(b.d->rgn->innerRect, VyRect(5, -2, 7, 0));
    EXPECT_EQ(b.boundingRect(), VyRect(5, -2, 12, 0));
    EXPECT_TRUE(a.translated(5, -2) == b);

    // A copy shares the rectangle vector until one side writes to it.
    VyRegion c = a.copy();
    EXPECT_NE(c.d, a.d);
    EXPECT_TRUE(c.d->rgn->rects.isSharedWith(a.d->rgn->rects));
    c.translate(1, 1);
    EXPECT_EQ(stored(a).front(), VyRect(0, 0, 2, 2));
    EXPECT_EQ(stored(VyRegion(1, 1, 2, 2).translated(3, 4)),
              std::vector<VyRect>{VyRect(4, 5, 5, 6)});
    VyRegion empty;
    empty.translate(3, 3);
    EXPECT_EQ(empty.d, &VyRegion::shared_empty);
}

TEST(VyRegionTest, FreeListReusesRecords)
{
    VyRegion a(VyRect(0, 0, 5, 5));
    VyRegion::VyRegionData* record = a.d;
    a = VyRegion();
    const VyRegion b(VyRect(1, 1, 2, 2));
    EXPECT_EQ(b.d, record);
    EXPECT_EQ(b.d->ref.load(), 1);
    EXPECT_EQ(b.d->rgn->innerArea, 4);
    EXPECT_EQ(b.boundingRect(), VyRect(1, 1, 2, 2));
}

TEST(VyRegionTest, SetRectsTakesRectanglesAsGiven)
{
    const VyRect rs[] = {VyRect(0, 0, 1, 1), VyRect(5, 0, 6, 1), VyRect(0, 4, 9, 4)};
    VyRegion r(VyRect(50, 50, 60, 60));
    const VyRegion before = r;
    r.setRects(rs, 3);
    EXPECT_EQ(before.boundingRect(), VyRect(50, 50, 60, 60));
    EXPECT_EQ(stored(r), std::vector<VyRect>(rs, rs + 3));
    EXPECT_EQ(r.boundingRect(), VyRect(0, 0, 9, 4));
    // Areas 4, 4, 10: the first strictly largest; on a tie the first one.
    EXPECT_EQ(r.d->rgn->innerRect, VyRect(0, 4, 9, 4));
    r.setRects(rs, 2);
    EXPECT_EQ(r.d->rgn->innerRect, VyRect(0, 0, 1, 1));
    // Its own rectangles as the source.
    r.setRects(r.d->rgn->rects.constData(), r.rectCount());
    EXPECT_EQ(stored(r), std::vector<VyRect>(rs, rs + 2));
    const VyRect invalid(4, 4, 3, 9);
    r.setRects(&invalid, 1);
    EXPECT_EQ(r.d, &VyRegion::shared_empty);
    r.setRects(rs, 1);
    EXPECT_EQ(r.d->rgn->vectorize, 0);
    r.setRects(nullptr, 3);
    EXPECT_TRUE(r.isEmpty());
}

TEST(VyRegionTest, ContainsOneRectangleVersusMany_Kept)
{
    const VyRegion one(VyRect(0, 0, 9, 9));
    EXPECT_FALSE(one.contains(VyRect(5, 5, 15, 15)));
    EXPECT_TRUE(one.contains(VyRect(2, 2, 9, 9)));
    const VyRegion two = one.unite(VyRect(20, 0, 29, 9));
    EXPECT_EQ(two.rectCount(), 2);
    EXPECT_TRUE(two.contains(VyRect(5, 5, 15, 15)));
    EXPECT_FALSE(two.contains(VyRect(11, 0, 18, 9)));
}

TEST(VyRegionTest, RectsConvertsTheSharedRecordInPlace_Kept)
{
    VyRegion a(VyRect(0, 0, 9, 9));
    const VyRegion b = a;
    EXPECT_FALSE(b.contains(VyRect(5, 5, 15, 15)));
    const VyVector<VyRect> rs = a.rects();
    EXPECT_EQ(a.d, b.d);
    EXPECT_EQ(b.d->rgn->vectorize, 1);
    EXPECT_TRUE(rs.isSharedWith(b.d->rgn->rects));
    // The copy now answers with the overlap walk.
    EXPECT_TRUE(b.contains(VyRect(5, 5, 15, 15)));
}

TEST(VyRegionTest, StrictContainsUsesTheLargestRectangleOnly)
{
    const VyRegion r = VyRegion(0, 0, 10, 5).unite(VyRect(0, 5, 4, 9));
    EXPECT_TRUE(vy_region_strictContains(r, VyRect(1, 1, 9, 4)));
    EXPECT_FALSE(vy_region_strictContains(r, VyRect(1, 3, 3, 6)));
    EXPECT_TRUE(r.contains(VyPoint(1, 6)));
    EXPECT_FALSE(vy_region_strictContains(r, VyRect(3, 3, 2, 2)));
    EXPECT_FALSE(vy_region_strictContains(VyRegion(), VyRect(0, 0, 1, 1)));
}

TEST(VyRegionTest, UniteShortcuts)
{
    const VyRegion empty;
    const VyRegion big(0, 0, 10, 10);
    const VyRegion small(2, 2, 3, 3);
    EXPECT_EQ(empty.unite(big).d, big.d);
    EXPECT_EQ(big.unite(empty).d, big.d);
    EXPECT_EQ(big.unite(big).d, big.d);
    EXPECT_EQ(big.unite(small).d, big.d);
    EXPECT_EQ(small.unite(big).d, big.d);

    // A one-row gap: appended, two rectangles; touching rows go through the sweep and merge.
    const VyRegion gap = VyRegion(0, 0, 5, 2).unite(VyRect(0, 3, 4, 5));
    EXPECT_EQ(stored(gap), (std::vector<VyRect>{VyRect(0, 0, 4, 1), VyRect(0, 3, 4, 5)}));
    EXPECT_EQ(stored(VyRegion(0, 0, 5, 2) + VyRect(0, 2, 4, 5)),
              (std::vector<VyRect>{VyRect(0, 0, 4, 5)}));
    // The mirrored order is prepended.
    EXPECT_EQ(stored(VyRegion(0, 3, 5, 3).unite(VyRect(0, 0, 4, 1))), stored(gap));
    // Same band further right: appended and joined when touching.
    EXPECT_EQ(stored(VyRegion(0, 0, 5, 5) | VyRegion(5, 0, 3, 5)),
              (std::vector<VyRect>{VyRect(0, 0, 7, 4)}));
    EXPECT_EQ(stored(VyRegion(0, 0, 5, 5) | VyRegion(7, 0, 3, 5)),
              (std::vector<VyRect>{VyRect(0, 0, 4, 4), VyRect(7, 0, 9, 4)}));
    // The joined band now equals its neighbours and merges with both.
    Pixels m = paint(paint(Pixels(G * G, false), VyRect(0, 0, 1, 5)), VyRect(4, 0, 6, 1));
    m = paint(m, VyRect(4, 3, 6, 5));
    const VyRegion holed = fromPixels(m);
    const VyRegion filled = holed.unite(VyRect(4, 2, 6, 2));
    expectRegion(filled, paint(m, VyRect(4, 2, 6, 2)));
    // Equal but not shared: this region's record.
    const VyRegion twin = fromPixels(m);
    EXPECT_EQ(holed.unite(twin).d, holed.d);

    VyRegion acc;
    acc += VyRect(0, 0, 1, 1);
    acc |= VyRegion(3, 0, 2, 2);
    acc += VyRegion(0, 4, 1, 1);
    EXPECT_EQ(acc.rectCount(), 3);
}

TEST(VyRegionTest, IntersectSubtractEorShortcuts)
{
    const VyRegion empty;
    const VyRegion big(0, 0, 10, 10);
    const VyRegion small(2, 2, 3, 3);
    const VyRegion far(20, 20, 2, 2);
    EXPECT_EQ(big.intersect(far).d, &VyRegion::shared_empty);
    EXPECT_EQ(big.intersect(empty).d, &VyRegion::shared_empty);
    EXPECT_EQ(small.intersect(big).d, small.d);
    EXPECT_EQ(big.intersect(small).d, small.d);
    EXPECT_EQ(stored(big & VyRect(8, 8, 12, 12)), (std::vector<VyRect>{VyRect(8, 8, 9, 9)}));
    VyRegion cut = big;
    cut &= VyRegion(5, 5, 10, 10);
    EXPECT_EQ(cut.boundingRect(), VyRect(5, 5, 9, 9));

    EXPECT_EQ(big.subtract(empty).d, big.d);
    EXPECT_EQ(empty.subtract(big).d, empty.d);
    EXPECT_EQ(small.subtract(big).d, &VyRegion::shared_empty);
    EXPECT_EQ(big.subtract(far).d, big.d);
    const VyRegion twoBands = VyRegion(0, 0, 4, 4) + VyRect(0, 6, 3, 3);
    EXPECT_EQ((twoBands - twoBands.copy()).d, &VyRegion::shared_empty);
    VyRegion hole = big;
    hole -= small;
    EXPECT_EQ(hole.rectCount(), 4);

    EXPECT_EQ(empty.eor(big).d, big.d);
    EXPECT_EQ(big.eor(empty).d, big.d);
    EXPECT_EQ((twoBands ^ twoBands.copy()).d, &VyRegion::shared_empty);
    EXPECT_EQ(big.eor(far).rectCount(), 2);
    VyRegion x = big;
    x ^= small;
    EXPECT_TRUE(x == hole);
}

TEST(VyRegionTest, RandomizedAgainstPixelModel)
{
    std::mt19937 rng(20240611);
    for (int round = 0; round < 3000; ++round) {
        SCOPED_TRACE(round);
        const Pixels ma = randomPixels(rng);
        Pixels mb = randomPixels(rng);
        const VyRegion a = fromPixels(ma);
        VyRegion b = fromPixels(mb);
        // Now and then: the same record, or equal regions in separate records.
        const unsigned pick = rng() % 10;
        if (pick == 0) {
            b = a;
            mb = ma;
        } else if (pick == 1) {
            b = fromPixels(ma);
            mb = ma;
        }
        ASSERT_NO_FATAL_FAILURE(expectRegion(a, ma));
        const VyRect r = randomRect(rng);
        Pixels mr(G * G, false);
        mr = paint(mr, r);

        Pixels u(G * G), in(G * G), s(G * G), x(G * G), ur(G * G), ir(G * G), sr(G * G), xr(G * G);
        bool meet = false;
        for (size_t k = 0; k < u.size(); ++k) {
            u[k] = ma[k] || mb[k];
            in[k] = ma[k] && mb[k];
            s[k] = ma[k] && !mb[k];
            x[k] = ma[k] != mb[k];
            ur[k] = ma[k] || mr[k];
            ir[k] = ma[k] && mr[k];
            sr[k] = ma[k] && !mr[k];
            xr[k] = ma[k] != mr[k];
            meet = meet || in[k];
        }
        ASSERT_NO_FATAL_FAILURE(expectRegion(a.unite(b), u));
        ASSERT_NO_FATAL_FAILURE(expectRegion(a.intersect(b), in));
        ASSERT_NO_FATAL_FAILURE(expectRegion(a.subtract(b), s));
        ASSERT_NO_FATAL_FAILURE(expectRegion(a.eor(b), x));
        ASSERT_NO_FATAL_FAILURE(expectRegion(a.unite(r), ur));
        ASSERT_NO_FATAL_FAILURE(expectRegion(a & r, ir));
        ASSERT_NO_FATAL_FAILURE(expectRegion(a - VyRegion(r), sr));
        ASSERT_NO_FATAL_FAILURE(expectRegion(a ^ VyRegion(r), xr));
        // The operands are untouched.
        ASSERT_NO_FATAL_FAILURE(expectRegion(a, ma));
        ASSERT_NO_FATAL_FAILURE(expectRegion(b, mb));

        EXPECT_EQ(a == b, ma == mb);
        EXPECT_EQ(a.intersects(b), meet);
        EXPECT_EQ(a.intersects(r), overlaps(ma, r));
        EXPECT_EQ(a.contains(r), a.d->rgn->vectorize ? overlaps(ma, r) : covers(ma, r));
        EXPECT_EQ(vy_region_strictContains(a, r), !a.isEmpty() && a.d->rgn->innerRect.contains(r));
    }
}
