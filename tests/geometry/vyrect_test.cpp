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

// The smallest rectangle holding the pixels of `p`.
VyRect boundingBox(const Pixels& p)
{
    VyRect box(kHi, kHi, kLo, kLo);
    for (int y = kLo; y <= kHi; ++y)
        for (int x = kLo; x <= kHi; ++x)
            if (p[bit(x, y)])
                box = VyRect(std::min(box.x1, x), std::min(box.y1, y), std::max(box.x2, x),
                             std::max(box.y2, y));
    return box;
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
    EXPECT_TRUE(VyRect(5, 5, 4, 10).isEmpty());
    EXPECT_FALSE(VyRect(5, 5, 4, 10).isValid());
    EXPECT_EQ(VyRect(VyPoint(2, 3), VySize(10, 5)), VyRect(2, 3, 11, 7));
    EXPECT_EQ(VyRect(-9, -9, 0, 0).center(), VyPoint(-4, -4));
    // The null test must not overflow at the edge of the int range.
    EXPECT_FALSE(VyRect(-2147483647 - 1, 0, 2147483647, -1).isNull());
}

// Each reversed axis is swapped on its own, and an axis of width 0 is empty, not reversed; a
// rectangle empty or reversed in one axis only is not null, so it takes part; a union with the
// null rectangle gives the other one as given.
TEST(VyRectTest, AxesOnTheirOwnAndNullUnionAsGiven_Kept)
{
    const VyRect line(5, 5, 4, 10), reversed(10, 10, 0, 0);
    const VyRect cases[][2] = {
        {reversed.normalized(), VyRect(0, 0, 10, 10)},
        {VyRect(5, 0, 4, 9).normalized(), VyRect(5, 0, 4, 9)},
        {VyRect(5, 0, 3, 9).normalized(), VyRect(3, 0, 5, 9)},
        {line & VyRect(0, 0, 9, 9), VyRect(5, 5, 4, 9)},
        {line | VyRect(0, 0, 1, 1), VyRect(0, 0, 4, 10)},
        {VyRect() | reversed, reversed},
        {reversed | VyRect(7, 7, 6, 6), reversed},
    };
    for (const auto& c : cases)
        EXPECT_EQ(c[0], c[1]) << "row " << &c - cases;
    EXPECT_FALSE(VyRect(10, 0, 0, 9).isNull());
    EXPECT_EQ(VyRectF() | VyRectF(20, 20, -5, -5), VyRectF(20, 20, -5, -5));
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
        ASSERT_GE(n.x2, n.x1 - 1);
        ASSERT_GE(n.y2, n.y1 - 1);
        const VyRect both = a & b;
        ASSERT_EQ(pixels(both), pa & pb);
        ASSERT_EQ(both.normalized(), both);
        if (a.isNull() || b.isNull()) {
            ASSERT_EQ(a | b, a.isNull() ? b : a);
            ASSERT_FALSE(a.contains(b));
            ASSERT_FALSE(a.intersects(b));
        } else if (pa.any() && pb.any()) {
            ASSERT_EQ(a.intersects(b), (pa & pb).any());
            ASSERT_EQ(a.intersects(b), !both.isNull());
            ASSERT_EQ(a | b, boundingBox(pa | pb));
            ASSERT_EQ(a.contains(b), (pb & ~pa).none());
            ASSERT_EQ(a.contains(b, true), (pb & ~interior(pa)).none());
        }
        const Pixels inner = interior(pa);
        for (int k = 0; k < 4; ++k) {
            const VyPoint p(int(rng() % kSide) + kLo, int(rng() % kSide) + kLo);
            ASSERT_EQ(a.contains(p), bool(pa[bit(p.x, p.y)]));
            ASSERT_EQ(a.contains(p, true), bool(inner[bit(p.x, p.y)]));
        }
    }
}

TEST(VyRectFTest, NormalizedAndSetOperations)
{
    EXPECT_EQ(VyRectF(10, 20, -4, -6).normalized(), VyRectF(6, 14, 4, 6));
    const VyRectF a(0, 0, 10, 10), reversed(20, 20, -5, -5);
    EXPECT_EQ(a | reversed, VyRectF(0, 0, 20, 20));
    EXPECT_EQ(a & VyRectF(12, 2, -4, 20), VyRectF(8, 2, 2, 8));
    // Touching rectangles meet in a line of width 0; touching corners give the null rectangle.
    EXPECT_EQ(a & VyRectF(10, 2, 5, 3), VyRectF(10, 2, 0, 3));
    EXPECT_TRUE((a & VyRectF(10, 10, 5, 5)).isNull());
    EXPECT_TRUE(a.intersects(VyRectF(10, 2, 5, 3)));
    EXPECT_FALSE(a.intersects(VyRectF(10.5f, 2, 5, 3)));
    EXPECT_FALSE(a.intersects(VyRectF()));
    EXPECT_TRUE(a.contains(VyPointF(10, 10)));
    EXPECT_TRUE(reversed.contains(VyPointF(15, 17.5f)));
    EXPECT_FALSE(a.contains(VyPointF(10.01f, 5)));
    EXPECT_TRUE(a.contains(VyRectF(10, 10, -10, -10)));
    EXPECT_FALSE(a.contains(VyRectF(5, 5, 6, 1)));
}

TEST(VyRectFTest, ToAlignedRectCoversInDoublePrecision)
{
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
