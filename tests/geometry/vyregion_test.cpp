#include "vyregion.h"

#include "regionmodel.h"

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

std::vector<VyRect> canonical(const Pixels& m)
{
    std::vector<uint64_t> rows(G);
    for (int y = 0; y < G; ++y)
        for (int x = 0; x < G; ++x)
            rows[size_t(y)] |= uint64_t(at(m, x, y)) << x;
    return canonicalRects(rows.data(), rows.size(), 0, 0);
}

VyRegion fromPixels(const Pixels& m)
{
    const std::vector<VyRect> r = canonical(m);
    VyRegion region;
    region.setRects(r.data(), int(r.size()));
    return region;
}

// Pixels of `m` inside `r`.
int countIn(const Pixels& m, const VyRect& r)
{
    int n = 0;
    for (int y = r.y1; y <= r.y2; ++y)
        for (int x = r.x1; x <= r.x2; ++x)
            n += at(m, x, y);
    return n;
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
    ASSERT_EQ(storedRects(r), want);
    EXPECT_EQ(r.rectCount(), int(want.size()));
    EXPECT_EQ(r.isEmpty(), want.empty());
    const RegionCache cache = regionCacheOf(want);
    EXPECT_EQ(r.boundingRect(), cache.box);
    if (!want.empty()) {
        EXPECT_EQ(r.d->rgn->innerRect, cache.largest);
        EXPECT_EQ(r.d->rgn->innerArea, int(cache.area));
        EXPECT_EQ(r.d->rgn->vectorize, want.size() > 1 ? 1 : 0);
    }
    for (int y = -1; y <= G; ++y)
        for (int x = -1; x <= G; ++x)
            ASSERT_EQ(r.contains(VyPoint(x, y)), at(m, x, y)) << x << "," << y;
}

} // namespace

TEST(VyRegionTest, EmptyRegionsShareOneRecord)
{
    VyRegion empty;
    EXPECT_EQ(empty.d, &VyRegion::shared_empty);
    EXPECT_EQ(VyRegion(VyRect(0, 0, -1, -1), VyRegion::Rectangle).d, &VyRegion::shared_empty);
    EXPECT_EQ(VyRegion(VyRect(5, 0, 4, 9)).d, &VyRegion::shared_empty);
    EXPECT_EQ(VyRegion(3, 3, 0, 5).d, &VyRegion::shared_empty);
    EXPECT_TRUE(empty.rects().isEmpty());
    EXPECT_FALSE(empty.contains(VyRect(0, 0, 1, 1)));
    EXPECT_TRUE(empty == VyRegion().copy());
    empty.translate(3, 3);
    EXPECT_EQ(empty.d, &VyRegion::shared_empty);
    // A released record is reused by the next region.
    VyRegion a(VyRect(0, 0, 5, 5));
    VyRegion::VyRegionData* record = a.d;
    a = VyRegion();
    const VyRegion b(2, 3, 4, 5);
    EXPECT_EQ(b.d, record);
    EXPECT_EQ(b.d->ref.load(), 1);
    EXPECT_EQ(b.d->rgn->innerArea, 20);
    EXPECT_EQ(b.rects().at(0), VyRect(2, 3, 5, 7));
}

TEST(VyRegionTest, SharingTranslateAndCopy)
{
    VyRegion a = VyRegion(0, 0, 3, 3).unite(VyRect(5, 0, 7, 2));
    VyRegion b = a;
    b.translate(0, 0);
    EXPECT_EQ(b.d, a.d);
    b.translate(5, -2);
    expectRegion(a, paint(paint(Pixels(G * G, false), VyRect(0, 0, 2, 2)), VyRect(5, 0, 7, 2)));
    EXPECT_EQ(storedRects(b), (std::vector<VyRect>{VyRect(5, -2, 7, 0), VyRect(10, -2, 12, 0)}));
    EXPECT_EQ(b.d->rgn->innerRect, VyRect(5, -2, 7, 0));
    EXPECT_EQ(b.boundingRect(), VyRect(5, -2, 12, 0));
    EXPECT_TRUE(a.translated(5, -2) == b);
    // A copy shares the rectangle vector until one side writes to it.
    VyRegion c = a.copy();
    EXPECT_NE(c.d, a.d);
    EXPECT_TRUE(c.d->rgn->rects.isSharedWith(a.d->rgn->rects));
    c.translate(1, 1);
    EXPECT_EQ(storedRects(a).front(), VyRect(0, 0, 2, 2));
}

TEST(VyRegionTest, SetRectsTakesRectanglesAsGiven)
{
    const VyRect rs[] = {VyRect(0, 0, 1, 1), VyRect(5, 0, 6, 1), VyRect(0, 4, 9, 4)};
    VyRegion r(VyRect(50, 50, 60, 60));
    const VyRegion before = r;
    r.setRects(rs, 3);
    EXPECT_EQ(before.boundingRect(), VyRect(50, 50, 60, 60));
    EXPECT_EQ(storedRects(r), std::vector<VyRect>(rs, rs + 3));
    EXPECT_EQ(r.boundingRect(), VyRect(0, 0, 9, 4));
    // Areas 4, 4, 10: the first strictly largest; on a tie the first one.
    EXPECT_EQ(r.d->rgn->innerRect, VyRect(0, 4, 9, 4));
    r.setRects(rs, 2);
    EXPECT_EQ(r.d->rgn->innerRect, VyRect(0, 0, 1, 1));
    r.setRects(r.d->rgn->rects.constData(), r.rectCount()); // its own rectangles
    EXPECT_EQ(storedRects(r), std::vector<VyRect>(rs, rs + 2));
    const VyRect invalid(4, 4, 3, 9);
    r.setRects(&invalid, 1);
    EXPECT_EQ(r.d, &VyRegion::shared_empty);
    r.setRects(nullptr, 3);
    EXPECT_TRUE(r.isEmpty());
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
    EXPECT_TRUE(two.contains(VyRect(5, 5, 15, 15)));
    EXPECT_FALSE(two.contains(VyRect(11, 0, 18, 9)));
}

// Results that are one of the operands or the empty region reuse that record.
TEST(VyRegionTest, ShortcutsReuseRecords)
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
        {empty.unite(big), big.d},
        {big.unite(empty), big.d},
        {big.unite(big), big.d},
        {big.unite(small), big.d},
        {small.unite(big), big.d},
        {twoBands.unite(twoBands.copy()), twoBands.d},
        {big.intersect(far), none},
        {big.intersect(empty), none},
        {small.intersect(big), small.d},
        {big.intersect(small), small.d},
        {big.subtract(empty), big.d},
        {empty.subtract(big), none},
        {small.subtract(big), none},
        {big.subtract(far), big.d},
        {twoBands - twoBands.copy(), none},
        {empty.eor(big), big.d},
        {big.eor(empty), big.d},
        {twoBands ^ twoBands.copy(), none},
    };
    for (size_t k = 0; k < sizeof cases / sizeof cases[0]; ++k)
        EXPECT_EQ(cases[k].result.d, cases[k].record) << k;
    // A rectangle right of the last band joins it; a joined band that comes to equal the band
    // above (or, through the sweep, both neighbours) merges with it.
    Pixels m = paint(paint(Pixels(G * G, false), VyRect(0, 0, 1, 2)), VyRect(4, 0, 6, 1));
    expectRegion(fromPixels(m).unite(VyRect(4, 2, 6, 2)), paint(m, VyRect(4, 2, 6, 2)));
    m = paint(paint(m, VyRect(0, 3, 1, 5)), VyRect(4, 3, 6, 5));
    expectRegion(fromPixels(m).unite(VyRect(4, 2, 6, 2)), paint(m, VyRect(4, 2, 6, 2)));
    VyRegion acc;
    acc += VyRect(0, 0, 1, 1);
    acc |= VyRegion(3, 0, 2, 2);
    acc &= VyRegion(0, 0, 4, 1);
    acc -= VyRegion(0, 0, 1, 1);
    acc ^= VyRegion(3, 0, 1, 1);
    EXPECT_EQ(storedRects(acc), std::vector<VyRect>{VyRect(1, 0, 1, 0)});
}

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
        // The operands are untouched.
        ASSERT_NO_FATAL_FAILURE(expectRegion(a, ma));
        ASSERT_NO_FATAL_FAILURE(expectRegion(b, mb));

        const int inR = countIn(ma, r);
        EXPECT_EQ(a == b, ma == mb);
        EXPECT_EQ(a.intersects(b), !results[1][0].isEmpty());
        EXPECT_EQ(a.intersects(r), inR > 0);
        EXPECT_EQ(a.contains(r), a.d->rgn->vectorize ? inR > 0 : inR == r.width() * r.height());
        EXPECT_EQ(vy_region_strictContains(a, r), !a.isEmpty() && a.d->rgn->innerRect.contains(r));
    }
}
