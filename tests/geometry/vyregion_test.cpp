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

TEST(VyRegionTest, SetRectsTakesRectanglesAsGiven)
{
    const VyRect rs[] = {VyRect(0, 0, 1, 1), VyRect(5, 0, 6, 1), VyRect(0, 4, 9, 4)};
    VyRegion r(VyRect(50, 50, 60, 60));
    const VyRegion before = r;
    r.setRects(rs, 3);
    EXPECT_EQ(before.boundingRect(), VyRect(50, 50, 60, 60));
    EXPECT_EQ(stored(r), std::vector<VyRect>(rs, rs + 3));
    EXPECT_EQ(r.boundingRect(), VyRect(0, 0, 9, 4));
    r.setRects(rs, 2);
    // A copy shares the rectangle vector until one side writes to it.
    const VyRegion copy = r.copy();
    EXPECT_TRUE(copy.d->rgn->rects.isSharedWith(r.d->rgn->rects));
    r.setRects(r.d->rgn->rects.constData(), r.rectCount()); // its own rectangles
    EXPECT_EQ(stored(r), std::vector<VyRect>(rs, rs + 2));
    const VyRect invalid(4, 4, 3, 9);
    r.setRects(&invalid, 1);
    EXPECT_EQ(r.d, &VyRegion::shared_empty);
    r.setRects(nullptr, 3);
    EXPECT_TRUE(r.isEmpty());
}

// Areas beyond the int range (3.6e9 and 1e10 pixels) compare exactly, whether the region was
// set, appended to or prepended to.
TEST(VyRegionTest, LargestRectangleOfHugeAreas)
{
    const VyRect small(0, 0, 59999, 59999), big(0, 60001, 99999, 160000);
    const VyRect both[] = {small, big};
    VyRegion set;
    set.setRects(both, 2);
    const VyRegion a(small), b(big);
    const VyRegion results[] = {set, a.unite(b), b.unite(a)};
    for (size_t k = 0; k < sizeof results / sizeof results[0]; ++k) {
        EXPECT_EQ(results[k].d->rgn->innerRect, big) << k;
        EXPECT_TRUE(vy_region_strictContains(results[k], big)) << k;
    }
}

// A one-rectangle region answers contains(rect) by inclusion, a banded one by overlap; rects()
// turns the shared record into the banded form for every holder.
TEST(VyRegionTest, ContainsOneRectangleVersusMany_Kept)
{
    VyRegion one(VyRect(0, 0, 9, 9));
    const VyRegion holder = one;
    EXPECT_FALSE(holder.contains(VyRect(5, 5, 15, 15)));
    EXPECT_TRUE(holder.contains(VyRect(2, 2, 9, 9)));
    const VyVector<VyRect> rs = one.rects();
    EXPECT_EQ(one.d, holder.d);
    EXPECT_TRUE(rs.isSharedWith(holder.d->rgn->rects));
    EXPECT_TRUE(holder.contains(VyRect(5, 5, 15, 15)));
    const VyRegion two = VyRegion(0, 0, 10, 10).unite(VyRect(20, 0, 29, 9));
    EXPECT_FALSE(two.contains(VyRect(11, 0, 18, 9)));
}

// Invalid rectangles give the shared empty region; results that are one of the operands or the
// empty region reuse that record.
TEST(VyRegionTest, EmptyRegionsAndShortcutsReuseRecords)
{
    const VyRegion empty;
    const VyRegion big(0, 0, 10, 10);
    const VyRegion small(2, 2, 3, 3);
    const VyRegion far(20, 20, 2, 2);
    const VyRegion twoBands = VyRegion(0, 0, 4, 4) + VyRect(0, 6, 3, 3);
    const VyRegion::VyRegionData* none = &VyRegion::shared_empty;
    const struct {
        VyRegion result;
        const VyRegion::VyRegionData* record;
    } cases[] = {
        {empty, none},
        {VyRegion(VyRect(0, 0, -1, -1), VyRegion::Rectangle), none},
        {VyRegion(VyRect(5, 0, 4, 9)), none},
        {VyRegion(3, 3, 0, 5), none},
        {empty.unite(big), big.d},
        {big.unite(empty), big.d},
        {big.unite(big), big.d},
        {big.unite(small), big.d},
        {small.unite(big), big.d},
        {twoBands.unite(twoBands.copy()), twoBands.d},
        {big.intersect(far), none},
        {small.intersect(big), small.d},
        {big.intersect(small), small.d},
        {big.subtract(empty), big.d},
        {small.subtract(big), none},
        {big.subtract(far), big.d},
        {twoBands - twoBands.copy(), none},
        {empty.eor(big), big.d},
        {twoBands ^ twoBands.copy(), none},
    };
    for (size_t k = 0; k < sizeof cases / sizeof cases[0]; ++k)
        EXPECT_EQ(cases[k].result.d, cases[k].record) << k;
    // A released record is reused by the next region.
    VyRegion a(VyRect(0, 0, 5, 5));
    VyRegion::VyRegionData* record = a.d;
    a = VyRegion();
    const VyRegion b(2, 3, 4, 5);
    EXPECT_EQ(b.d, record);
    expectRegion(b, paint(Pixels(G * G, false), VyRect(2, 3, 5, 7)));
}

// Union, intersection, subtraction and exclusive-or of random regions and rectangles, the
// queries and translation, all against pixel sets.
TEST(VyRegionTest, RandomizedAgainstPixelModel)
{
    std::mt19937 rng(20240611);
    bool (*const ops[])(bool, bool) = {
        [](bool p, bool q) { return p || q; }, [](bool p, bool q) { return p && q; },
        [](bool p, bool q) { return p && !q; }, [](bool p, bool q) { return p != q; }};
    for (int round = 0; round < 3000; ++round) {
        SCOPED_TRACE(round);
        const Pixels ma = randomPixels(rng);
        Pixels mb = randomPixels(rng);
        const VyRegion a = fromPixels(ma);
        VyRegion b = fromPixels(mb);
        // Now and then: the same record, or equal regions in separate records.
        const unsigned pick = rng() % 10;
        if (pick < 2) {
            b = pick == 0 ? a : fromPixels(ma);
            mb = ma;
        }
        ASSERT_NO_FATAL_FAILURE(expectRegion(a, ma));
        const VyRect r = randomRect(rng);
        const Pixels mr = paint(Pixels(G * G, false), r);
        const VyRegion results[][2] = {{a.unite(b), a.unite(r)},
                                       {a.intersect(b), a & r},
                                       {a.subtract(b), a - VyRegion(r)},
                                       {a.eor(b), a ^ VyRegion(r)}};
        for (int op = 0; op < 4; ++op) {
            Pixels withB(G * G), withR(G * G);
            for (size_t k = 0; k < withB.size(); ++k) {
                withB[k] = ops[op](ma[k], mb[k]);
                withR[k] = ops[op](ma[k], mr[k]);
            }
            ASSERT_NO_FATAL_FAILURE(expectRegion(results[op][0], withB)) << op;
            ASSERT_NO_FATAL_FAILURE(expectRegion(results[op][1], withR)) << op;
        }
        // A translated copy moves every rectangle and the cached ones.
        const int dx = int(rng() % 5) - 2, dy = int(rng() % 5) - 2;
        const VyRegion moved = a.translated(dx, dy);
        std::vector<VyRect> shifted = stored(a);
        for (VyRect& s : shifted)
            s.translate(dx, dy);
        ASSERT_EQ(stored(moved), shifted);
        if (dx == 0 && dy == 0) {
            ASSERT_EQ(moved.d, a.d);
        } else if (!a.isEmpty()) {
            ASSERT_EQ(moved.boundingRect(), a.boundingRect().translated(dx, dy));
            ASSERT_EQ(moved.d->rgn->innerRect, a.d->rgn->innerRect.translated(dx, dy));
        }
        // The operands are untouched.
        ASSERT_NO_FATAL_FAILURE(expectRegion(a, ma));
        ASSERT_NO_FATAL_FAILURE(expectRegion(b, mb));

        int inR = 0; // pixels of the region inside r
        for (size_t k = 0; k < ma.size(); ++k)
            inR += ma[k] && mr[k];
        EXPECT_EQ(a == b, ma == mb);
        EXPECT_EQ(a.intersects(b), !results[1][0].isEmpty());
        EXPECT_EQ(a.intersects(r), inR > 0);
        EXPECT_EQ(a.contains(r), a.d->rgn->vectorize ? inR > 0 : inR == r.width() * r.height());
        EXPECT_EQ(vy_region_strictContains(a, r), !a.isEmpty() && a.d->rgn->innerRect.contains(r));
    }
}
