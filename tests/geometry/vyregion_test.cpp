#include "vyregion.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits.h>
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

// Where the model's cells lie: cell k spans the columns xs[k] to xs[k + 1] - 1 and the rows
// ys[k] to ys[k + 1] - 1. One layout is pixel for pixel; the other reaches the int limits, where
// edge arithmetic overflows unless it is done in 64 bits.
struct Layout {
    long long xs[G + 1], ys[G + 1];
};
constexpr Layout kPixels = {{0, 1, 2, 3, 4, 5, 6, 7, 8}, {0, 1, 2, 3, 4, 5, 6, 7, 8}};
constexpr Layout kLimits = {
    {INT_MIN, INT_MIN + 1LL, -3, 0, 1, 5, INT_MAX - 1LL, INT_MAX, INT_MAX + 1LL},
    {INT_MAX - 3000000LL, INT_MAX - 2999999LL, INT_MAX - 1000LL, INT_MAX - 999LL, INT_MAX - 10LL,
     INT_MAX - 2LL, INT_MAX - 1LL, INT_MAX, INT_MAX + 1LL}};
const Layout* layout = &kPixels;

// The rectangle covering cells `c`.
VyRect place(const VyRect& c)
{
    return VyRect(int(layout->xs[c.x1]), int(layout->ys[c.y1]), int(layout->xs[c.x2 + 1] - 1),
                  int(layout->ys[c.y2 + 1] - 1));
}

// Per cell from -1 (before the grid) to G (after it): its first and last coordinate, as far as
// they fit an int.
std::vector<std::pair<int, int>> samples(const long long* edges)
{
    std::vector<std::pair<int, int>> s;
    if (edges[0] > INT_MIN)
        s.push_back({-1, int(edges[0] - 1)});
    for (int k = 0; k < G; ++k)
        s.insert(s.end(), {{k, int(edges[k])}, {k, int(edges[k + 1] - 1)}});
    if (edges[G] <= INT_MAX)
        s.push_back({G, int(edges[G])});
    return s;
}

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

VyRegion fromRects(const std::vector<VyRect>& cells)
{
    std::vector<VyRect> r;
    for (const VyRect& c : cells)
        r.push_back(place(c));
    VyRegion region;
    region.setRects(r.data(), int(r.size()));
    return region;
}

VyRegion fromPixels(const Pixels& m)
{
    return fromRects(canonical(m));
}

// The pixels of `m` in banded form that is not canonical: one band per row, and runs cut at
// random into touching pieces.
VyRegion fragmented(const Pixels& m, std::mt19937& rng)
{
    std::vector<VyRect> r;
    for (int y = 0; y < G; ++y)
        for (int x = 0; x < G; ++x) {
            if (!at(m, x, y))
                continue;
            int e = x;
            while (at(m, e + 1, y) && rng() % 3 != 0)
                ++e;
            r.push_back(VyRect(x, y, e, y));
            x = e;
        }
    return fromRects(r);
}

// The rectangles as stored, read without rects() (which converts a one-rectangle region).
std::vector<VyRect> stored(const VyRegion& r)
{
    if (!r.d->rgn)
        return {};
    const VyRect* p = r.d->rgn->rectData();
    return std::vector<VyRect>(p, p + r.d->rgn->numRects);
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

// Checks the pixels against the model and, unless `banded` is false, the rectangles
// (canonical banded form: so no overlaps and the order) and the cached box and largest
// rectangle.
void expectRegion(const VyRegion& r, const Pixels& m, bool banded = true)
{
    for (const auto& y : samples(layout->ys))
        for (const auto& x : samples(layout->xs))
            ASSERT_EQ(r.contains(VyPoint(x.second, y.second)), at(m, x.first, y.first))
                << x.second << "," << y.second;
    if (!banded)
        return;
    std::vector<VyRect> want;
    for (const VyRect& c : canonical(m))
        want.push_back(place(c));
    ASSERT_EQ(stored(r), want);
    EXPECT_EQ(r.rectCount(), int(want.size()));
    EXPECT_EQ(r.isEmpty(), want.empty());
    VyRect box, largest;
    long long area = -1;
    for (const VyRect& w : want) {
        box = box | w;
        const long long a = ((long long)w.x2 + 1 - w.x1) * ((long long)w.y2 + 1 - w.y1);
        if (a > area) {
            area = a;
            largest = w;
        }
    }
    EXPECT_EQ(r.boundingRect(), box);
    if (!want.empty()) {
        EXPECT_EQ(r.d->rgn->innerRect, largest);
        EXPECT_EQ(r.d->rgn->innerArea, int(std::min<long long>(area, INT_MAX)));
        EXPECT_EQ(r.d->rgn->vectorize, want.size() > 1 ? 1 : 0);
    }
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
    EXPECT_EQ(stored(acc), std::vector<VyRect>{VyRect(1, 0, 1, 0)});
}

// Every operation against the model, in both layouts. Operands also come in banded form that is
// not canonical: results that do not share such an operand's record are canonical again, except
// for a union, which may append the operand's rectangles as they are.
TEST(VyRegionTest, RandomizedAgainstPixelModel)
{
    std::mt19937 rng(20240611);
    bool (*const ops[])(bool, bool) = {
        [](bool p, bool q) { return p || q; }, [](bool p, bool q) { return p && q; },
        [](bool p, bool q) { return p && !q; }, [](bool p, bool q) { return p != q; }};
    const auto apply = [](bool (*op)(bool, bool), const Pixels& p, const Pixels& q) {
        Pixels m(G * G);
        for (size_t k = 0; k < m.size(); ++k)
            m[k] = op(p[k], q[k]);
        return m;
    };
    for (const Layout* l : {&kPixels, &kLimits}) {
        layout = l;
        SCOPED_TRACE(l == &kPixels ? "pixels" : "int limits");
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
            const VyRect c = randomRect(rng);
            const VyRect r = place(c);
            const Pixels mr = paint(Pixels(G * G, false), c);
            const VyRegion results[][2] = {{a.unite(b), a.unite(r)},
                                           {a.intersect(b), a & r},
                                           {a.subtract(b), a - VyRegion(r)},
                                           {a.eor(b), a ^ VyRegion(r)}};
            for (int op = 0; op < 4; ++op) {
                ASSERT_NO_FATAL_FAILURE(expectRegion(results[op][0], apply(ops[op], ma, mb))) << op;
                ASSERT_NO_FATAL_FAILURE(expectRegion(results[op][1], apply(ops[op], ma, mr))) << op;
            }
            const VyRegion f = fragmented(mb, rng);
            const VyRegion loose[] = {a.unite(f), a.intersect(f), a.subtract(f), f.subtract(a)};
            for (int op = 0; op < 4; ++op) {
                const Pixels want = op < 3 ? apply(ops[op], ma, mb) : apply(ops[2], mb, ma);
                const bool banded = op > 0 && loose[op].d != f.d;
                ASSERT_NO_FATAL_FAILURE(expectRegion(loose[op], want, banded)) << "loose " << op;
            }
            // The operands are untouched.
            ASSERT_NO_FATAL_FAILURE(expectRegion(a, ma));
            ASSERT_NO_FATAL_FAILURE(expectRegion(b, mb));

            const int inR = countIn(ma, c);
            EXPECT_EQ(a == b, ma == mb);
            EXPECT_EQ(a.intersects(b), !results[1][0].isEmpty());
            EXPECT_EQ(a.intersects(r), inR > 0);
            EXPECT_EQ(a.contains(r), a.d->rgn->vectorize ? inR > 0 : inR == c.width() * c.height());
            EXPECT_EQ(vy_region_strictContains(a, r),
                      !a.isEmpty() && a.d->rgn->innerRect.contains(r));
        }
    }
    layout = &kPixels;
}
