#include "vyrect.h"

#include <gtest/gtest.h>

#include <bitset>
#include <random>

namespace
{

// Pixel model over the grid -4..7 in both axes. An axis covers a..b, or b..a when it is
// reversed (b more than one below a); b == a - 1 covers nothing.
const int kLo = -4, kHi = 7, kSide = kHi - kLo + 1;
typedef std::bitset<kSide * kSide> Pixels;

bool inGrid(int x, int y)
{
    return x >= kLo && x <= kHi && y >= kLo && y <= kHi;
}
size_t bit(int x, int y)
{
    return size_t((y - kLo) * kSide + (x - kLo));
}

void span(int a, int b, int& lo, int& hi)
{
    lo = b < a - 1 ? b : a;
    hi = b < a - 1 ? a : b;
}

Pixels pixels(const VyRect& r)
{
    Pixels p;
    int l, rr, t, b;
    span(r.x1, r.x2, l, rr);
    span(r.y1, r.y2, t, b);
    for (int y = t; y <= b; ++y)
        for (int x = l; x <= rr; ++x)
            p.set(bit(x, y));
    return p;
}

// Pixels whose four neighbours are in `p` as well.
Pixels interior(const Pixels& p)
{
    Pixels q;
    for (int y = kLo + 1; y < kHi; ++y)
        for (int x = kLo + 1; x < kHi; ++x)
            if (p[bit(x, y)] && p[bit(x - 1, y)] && p[bit(x + 1, y)] && p[bit(x, y - 1)] &&
                p[bit(x, y + 1)])
                q.set(bit(x, y));
    return q;
}

VyRect boundingBox(const Pixels& p)
{
    int l = kHi, t = kHi, r = kLo, b = kLo;
    for (int y = kLo; y <= kHi; ++y)
        for (int x = kLo; x <= kHi; ++x)
            if (p[bit(x, y)]) {
                l = std::min(l, x), r = std::max(r, x), t = std::min(t, y), b = std::max(b, y);
            }
    return VyRect(l, t, r, b);
}

// Edges in -3..6, so reversed and empty axes are common; now and then an exact null.
VyRect randomRect(std::mt19937& rng)
{
    std::uniform_int_distribution<int> c(-3, 6);
    VyRect r(c(rng), c(rng), c(rng), c(rng));
    if (rng() % 10 == 0)
        r = VyRect(r.x1, r.y1, r.x1 - 1, r.y1 - 1);
    return r;
}

TEST(VyRectTest, NullEmptyAndSize)
{
    EXPECT_EQ(VyRect(), VyRect(0, 0, -1, -1));
    EXPECT_TRUE(VyRect(5, 5, 4, 4).isNull());
    EXPECT_FALSE(VyRect(5, 5, 4, 10).isNull());
    EXPECT_TRUE(VyRect(5, 5, 4, 10).isEmpty());
    EXPECT_FALSE(VyRect(5, 5, 4, 10).isValid());
    EXPECT_TRUE(VyRect(3, 3, 3, 3).isValid());
    EXPECT_EQ(VyRect(2, 3, 11, 7).size(), VySize(10, 5));
    EXPECT_EQ(VyRect(VyPoint(2, 3), VySize(10, 5)), VyRect(2, 3, 11, 7));
    EXPECT_EQ(VyRect(-9, -9, 0, 0).center(), VyPoint(-4, -4));
    // The null test must not overflow at the edge of the int range.
    EXPECT_FALSE(VyRect(-2147483647 - 1, 0, 2147483647, -1).isNull());
}

// Each reversed axis is swapped on its own; an axis of width 0 is empty, not reversed.
TEST(VyRectTest, NormalizedSwapsOnlyReversedAxes_Kept)
{
    EXPECT_EQ(VyRect(10, 10, 0, 0).normalized(), VyRect(0, 0, 10, 10));
    EXPECT_EQ(VyRect(0, 10, 9, 0).normalized(), VyRect(0, 0, 9, 10));
    EXPECT_EQ(VyRect(5, 0, 4, 9).normalized(), VyRect(5, 0, 4, 9));
    EXPECT_EQ(VyRect(5, 0, 3, 9).normalized(), VyRect(3, 0, 5, 9));
    EXPECT_FALSE(VyRect(5, 0, 4, 9).contains(VyPoint(4, 0)));
    EXPECT_TRUE(VyRect(5, 0, 3, 9).contains(VyPoint(4, 0)));
}

TEST(VyRectTest, OneAxisEmptyOrReversedIsNotNull_Kept)
{
    const VyRect line(5, 5, 4, 10); // empty in x only
    EXPECT_EQ(line & VyRect(0, 0, 9, 9), VyRect(5, 5, 4, 9));
    EXPECT_TRUE(line.intersects(VyRect(0, 0, 9, 9)));
    EXPECT_EQ(line | VyRect(0, 0, 1, 1), VyRect(0, 0, 4, 10));
    const VyRect flipped(10, 0, 0, 9); // reversed in x only
    EXPECT_FALSE(flipped.isNull());
    EXPECT_TRUE(VyRect(-1, -1, 20, 20).contains(flipped));
    EXPECT_EQ(flipped & VyRect(8, 8, 20, 20), VyRect(8, 8, 10, 9));
}

TEST(VyRectTest, UnionWithNullGivesOtherAsGiven_Kept)
{
    const VyRect reversed(10, 10, 0, 0);
    EXPECT_EQ(VyRect() | reversed, reversed);
    EXPECT_EQ(reversed | VyRect(7, 7, 6, 6), reversed);
    EXPECT_EQ(reversed | VyRect(20, 20, 20, 20), VyRect(0, 0, 20, 20));
    EXPECT_EQ(VyRect(0, 0, 9, 9) | VyRect(), VyRect(0, 0, 9, 9));
    VyRect box;
    box |= VyRect(3, 4, 5, 6);
    EXPECT_EQ(box, VyRect(3, 4, 5, 6));
    EXPECT_EQ(VyRectF() | VyRectF(20, 20, -5, -5), VyRectF(20, 20, -5, -5));
    EXPECT_EQ(VyRectF(20, 20, -5, -5) | VyRectF(30, 30, 1, 1), VyRectF(15, 15, 16, 16));
}

TEST(VyRectTest, IntersectionAndContainmentEdges)
{
    EXPECT_EQ(VyRect() & VyRect(0, 0, 9, 9), VyRect(0, 0, -1, -1));
    EXPECT_EQ(VyRect(0, 0, 9, 9) & VyRect(5, 5, 4, 4), VyRect());
    EXPECT_EQ(VyRect(0, 0, 9, 9) & VyRect(9, 9, 20, 20), VyRect(9, 9, 9, 9));
    EXPECT_EQ(VyRect(0, 0, 9, 9) & VyRect(10, 0, 20, 9), VyRect());
    EXPECT_FALSE(VyRect(0, 0, 9, 9).intersects(VyRect(10, 0, 20, 9)));
    EXPECT_TRUE(VyRect(0, 0, 9, 9).contains(VyPoint(9, 9), false));
    EXPECT_FALSE(VyRect(0, 0, 9, 9).contains(VyPoint(9, 9), true));
    EXPECT_FALSE(VyRect().contains(VyPoint(0, 0)));
    EXPECT_FALSE(VyRect().contains(VyPoint(-1, -1)));
    EXPECT_FALSE(VyRect(0, 0, 9, 9).contains(VyRect(3, 3, 2, 2)));
    EXPECT_FALSE(VyRect(3, 3, 2, 2).contains(VyRect(3, 3, 2, 2)));
    EXPECT_FALSE(VyRect().intersects(VyRect()));
    VyRect r(0, 0, 9, 9);
    r &= VyRect(5, 5, 20, 20);
    EXPECT_EQ(r, VyRect(5, 5, 9, 9));
}

TEST(VyRectTest, MoveCenterKeepsEdgeDistances)
{
    VyRect r(0, 0, 9, 19);
    r.moveCenter(VyPoint(50, 50));
    EXPECT_EQ(r, VyRect(46, 41, 55, 60));
    // x2 - x1 = -9: half of it truncates toward zero to -4, not -5.
    VyRect reversed(9, 0, 0, 9);
    reversed.moveCenter(VyPoint(0, 0));
    EXPECT_EQ(reversed, VyRect(4, -4, -5, 5));
    VyRect null;
    null.moveCenter(VyPoint(7, 7));
    EXPECT_EQ(null, VyRect(7, 7, 6, 6));
    EXPECT_EQ(VyRect(1, 2, 3, 4).translated(10, -2), VyRect(11, 0, 13, 2));
}

// Every operation against the pixel sets the rectangles cover, reversed axes included.
TEST(VyRectTest, OperationsMatchPixelModel)
{
    std::mt19937 rng(12345);
    for (int i = 0; i < 10000; ++i) {
        const VyRect a = randomRect(rng), b = randomRect(rng);
        const Pixels pa = pixels(a), pb = pixels(b);
        SCOPED_TRACE(testing::Message()
                     << "a (" << a.x1 << ',' << a.y1 << ',' << a.x2 << ',' << a.y2 << ") b ("
                     << b.x1 << ',' << b.y1 << ',' << b.x2 << ',' << b.y2 << ')');
        const VyRect n = a.normalized();
        ASSERT_EQ(pixels(n), pa);
        ASSERT_TRUE(n.x2 >= n.x1 - 1 && n.y2 >= n.y1 - 1);
        const VyRect both = a & b;
        ASSERT_EQ(pixels(both), pa & pb);
        ASSERT_EQ(both.normalized(), both);
        if (a.isNull()) {
            ASSERT_EQ(a | b, b);
        }
        if (pa.any() && pb.any()) {
            ASSERT_EQ(a | b, boundingBox(pa | pb));
            ASSERT_EQ(a.contains(b), (pb & ~pa).none());
            ASSERT_EQ(a.contains(b, true), (pb & ~interior(pa)).none());
            ASSERT_EQ(a.intersects(b), (pa & pb).any());
            ASSERT_EQ(a.intersects(b), !both.isNull());
        }
        const Pixels inner = interior(pa);
        for (int k = 0; k < 4; ++k) {
            const VyPoint p(int(rng() % kSide) + kLo, int(rng() % kSide) + kLo);
            ASSERT_TRUE(inGrid(p.x, p.y));
            ASSERT_EQ(a.contains(p), bool(pa[bit(p.x, p.y)]));
            ASSERT_EQ(a.contains(p, true), bool(inner[bit(p.x, p.y)]));
        }
    }
}

TEST(VyRectFTest, NormalizedAndSetOperations)
{
    EXPECT_EQ(VyRectF(10, 20, -4, -6).normalized(), VyRectF(6, 14, 4, 6));
    EXPECT_EQ(VyRectF(10, 20, 4, -6).normalized(), VyRectF(10, 14, 4, 6));
    EXPECT_EQ(VyRectF(VyRect(2, 3, 11, 7)), VyRectF(2, 3, 10, 5));
    const VyRectF a(0, 0, 10, 10), reversed(20, 20, -5, -5);
    EXPECT_EQ(a | reversed, VyRectF(0, 0, 20, 20));
    EXPECT_EQ(a & reversed, VyRectF());
    EXPECT_EQ(a & VyRectF(12, 2, -4, 20), VyRectF(8, 2, 2, 8));
    // Touching rectangles meet in a line of width 0; touching corners give the null rectangle.
    EXPECT_EQ(a & VyRectF(10, 2, 5, 3), VyRectF(10, 2, 0, 3));
    EXPECT_EQ(a & VyRectF(-5, 2, 5, 3), VyRectF(0, 2, 0, 3));
    EXPECT_TRUE(a.intersects(VyRectF(10, 2, 5, 3)));
    EXPECT_FALSE(a.intersects(VyRectF(10.5f, 2, 5, 3)));
    EXPECT_TRUE((a & VyRectF(10, 10, 5, 5)).isNull());
    EXPECT_FALSE(a.intersects(VyRectF()));
    EXPECT_TRUE(a.contains(VyPointF(10, 10)));
    EXPECT_TRUE(reversed.contains(VyPointF(15, 17.5f)));
    EXPECT_FALSE(a.contains(VyPointF(10.01f, 5)));
    EXPECT_FALSE(VyRectF().contains(VyPointF(0, 0)));
    EXPECT_TRUE(a.contains(VyRectF(10, 10, -10, -10)));
    EXPECT_FALSE(a.contains(VyRectF(5, 5, 6, 1)));
    EXPECT_FALSE(a.contains(VyRectF()));
}

TEST(VyRectFTest, ToAlignedRectCoversInDoublePrecision)
{
    EXPECT_EQ(VyRectF(0, 0, 10, 10).toAlignedRect(), VyRect(0, 0, 9, 9));
    EXPECT_EQ(VyRectF(0.5f, 1.5f, 2, 2).toAlignedRect(), VyRect(0, 1, 2, 3));
    EXPECT_EQ(VyRectF(-0.5f, -1.5f, 1, 1).toAlignedRect(), VyRect(-1, -2, 0, -1));
    // In float, 2^24 + 1 would round back to 2^24 and lose the last column.
    EXPECT_EQ(VyRectF(16777216.0f, 0, 1, 1).toAlignedRect(), VyRect(16777216, 0, 16777216, 0));
    // A negative width is taken as it is.
    EXPECT_EQ(VyRectF(10, 0, -5, 1).toAlignedRect(), VyRect(10, 0, 4, 0));
    std::mt19937 rng(7);
    std::uniform_int_distribution<int> c(-50, 50), s(1, 30);
    for (int i = 0; i < 1000; ++i) {
        const VyRect r(VyPoint(c(rng), c(rng)), VySize(s(rng), s(rng)));
        ASSERT_EQ(VyRectF(r).toAlignedRect(), r);
        const VyRectF inside(float(r.x1) + 0.25f, float(r.y1) + 0.75f, float(r.width()) - 0.5f,
                             float(r.height()) - 0.9f);
        ASSERT_EQ(inside.toAlignedRect(), r);
    }
}

} // namespace
