// VyRegion set operations driven by fuzzed input, checked against a pixel-set model.
//
// Three region slots, each with its model: the set of pixels on a 64 × 64 grid from
// (kOrigin, kOrigin), one bit mask per row. Rectangle operands lie inside (0, 0)-(23, 23);
// translations move by at most 4 pixels and are skipped when they would leave the grid.
//
// Input layout, 4 bytes per operation (at most kMaxOps):
//     byte 0      low 3 bits the operation (see step), bit 3 the operand is a rectangle
//                 instead of a slot, bits 4-5 the form (method, operator, compound assignment)
//     byte 1      slots: destination a % 3, first operand a / 4 % 3, second a / 16 % 3
//     bytes 2, 3  the rectangle: x1 = b % 16, y1 = b / 16, width c % 8 + 1, height
//                 c / 8 % 8 + 1; from c = 0xC0 on it is reversed (x2 = x1 - 1), so empty.
//                 Byte 2 also gives the translation and bytes 2, 3 a point to look up.
//
// After every operation every slot holds exactly the canonical banded form of its model
// (which implies the order, no overlaps and joined neighbours) with the matching cached
// bounding box and largest rectangle, and point, rectangle and region queries agree with the
// models. Slots assigned from one another share a record, so an operation that wrote into a
// shared record shows in the other slot.
#include "fuzz_check.h"
#include "regionmodel.h"
#include "vyregion.h"

#include <stddef.h>
#include <stdint.h>

#include <array>
#include <vector>

namespace
{

constexpr int kOrigin = -20;
constexpr int kGrid = 64;
constexpr size_t kMaxOps = 32;

typedef std::array<uint64_t, kGrid> Rows;

Rows rowsOf(const VyRect& r)
{
    Rows rows = {};
    for (int y = r.y1; y <= r.y2; ++y)
        for (int x = r.x1; x <= r.x2; ++x)
            rows[size_t(y - kOrigin)] |= uint64_t(1) << (x - kOrigin);
    return rows;
}

uint64_t either(uint64_t a, uint64_t b)
{
    return a | b;
}
uint64_t both(uint64_t a, uint64_t b)
{
    return a & b;
}
uint64_t firstOnly(uint64_t a, uint64_t b)
{
    return a & ~b;
}
uint64_t exactlyOne(uint64_t a, uint64_t b)
{
    return a ^ b;
}

Rows combine(const Rows& a, const Rows& b, uint64_t (*f)(uint64_t, uint64_t))
{
    Rows out = {};
    for (size_t y = 0; y < out.size(); ++y)
        out[y] = f(a[y], b[y]);
    return out;
}

bool meet(const Rows& a, const Rows& b)
{
    return combine(a, b, both) != Rows{};
}

bool has(const Rows& m, int x, int y)
{
    x -= kOrigin;
    y -= kOrigin;
    return x >= 0 && y >= 0 && x < kGrid && y < kGrid && (m[size_t(y)] >> x & 1);
}

void checkRegion(const VyRegion& r, const Rows& m)
{
    const std::vector<VyRect> want = canonicalRects(m.data(), m.size(), kOrigin, kOrigin);
    FUZZ_CHECK(storedRects(r) == want);
    FUZZ_CHECK(r.rectCount() == int(want.size()));
    FUZZ_CHECK(r.isEmpty() == want.empty());
    const RegionCache cache = regionCacheOf(want);
    FUZZ_CHECK(r.boundingRect() == cache.box);
    if (!want.empty())
        FUZZ_CHECK(r.d->rgn->innerRect == cache.largest && r.d->rgn->innerArea == cache.area);
}

struct Slots {
    VyRegion region[3];
    Rows model[3] = {};

    void step(const uint8_t* op)
    {
        const int form = op[0] >> 4 & 3, dst = op[1] % 3, s1 = op[1] / 4 % 3, s2 = op[1] / 16 % 3;
        const bool withRect = op[0] & 8;
        const int x1 = op[2] % 16, y1 = op[2] / 16;
        const VyRect rect(x1, y1, op[3] >= 0xC0 ? x1 - 1 : x1 + op[3] % 8, y1 + op[3] / 8 % 8);
        const Rows rectModel = rect.isValid() ? rowsOf(rect) : Rows{};
        const VyRegion operand = withRect ? VyRegion(rect) : region[s2];
        const Rows& operandModel = withRect ? rectModel : model[s2];
        // The compound forms take the destination as the first operand.
        const int first = form == 2 ? dst : s1;
        const Rows firstModel = model[first];
        switch (op[0] & 7) {
        case 0:
            if (form == 2)
                region[dst] |= operand;
            else if (form == 1)
                region[dst] = withRect ? region[s1] + rect : region[s1] | operand;
            else
                region[dst] = withRect ? region[s1].unite(rect) : region[s1].unite(operand);
            model[dst] = combine(firstModel, operandModel, either);
            break;
        case 1:
            if (form == 2)
                region[dst] &= operand;
            else if (form == 1)
                region[dst] = withRect ? region[s1] & rect : region[s1] & operand;
            else
                region[dst] = withRect ? region[s1].intersect(rect) : region[s1].intersect(operand);
            model[dst] = combine(firstModel, operandModel, both);
            break;
        case 2:
            if (form == 2)
                region[dst] -= operand;
            else
                region[dst] = form == 1 ? region[s1] - operand : region[s1].subtract(operand);
            model[dst] = combine(firstModel, operandModel, firstOnly);
            break;
        case 3:
            if (form == 2)
                region[dst] ^= operand;
            else
                region[dst] = form == 1 ? region[s1] ^ operand : region[s1].eor(operand);
            model[dst] = combine(firstModel, operandModel, exactlyOne);
            break;
        case 4: {
            const int dx = op[2] % 9 - 4, dy = op[2] / 9 % 9 - 4;
            const VyRect box = regionCacheOf(canonicalRects(firstModel.data(), firstModel.size(),
                                                            kOrigin, kOrigin))
                                   .box;
            if (box.isValid() && (box.x1 + dx < kOrigin || box.y1 + dy < kOrigin ||
                                  box.x2 + dx >= kOrigin + kGrid || box.y2 + dy >= kOrigin + kGrid))
                break;
            if (form == 2)
                region[dst].translate(dx, dy);
            else
                region[dst] = region[s1].translated(dx, dy);
            Rows moved = {};
            for (int y = 0; y < kGrid; ++y)
                if (y + dy >= 0 && y + dy < kGrid)
                    moved[size_t(y + dy)] =
                        dx >= 0 ? firstModel[size_t(y)] << dx : firstModel[size_t(y)] >> -dx;
            model[dst] = moved;
            break;
        }
        case 5:
            region[dst] =
                withRect ? VyRegion(rect.x1, rect.y1, rect.width(), rect.height()) : VyRegion(rect);
            model[dst] = rectModel;
            break;
        case 6:
            region[dst] = withRect ? region[s1].copy() : region[s1];
            model[dst] = model[s1];
            break;
        default: { // converts a one-rectangle record in place, for every slot sharing it
            const VyVector<VyRect> rects = region[dst].rects();
            FUZZ_CHECK(std::vector<VyRect>(rects.begin(), rects.end()) == storedRects(region[dst]));
            break;
        }
        }
        for (int k = 0; k < 3; ++k)
            checkRegion(region[k], model[k]);
        const VyPoint p(op[2] % 24 - 2, op[3] % 24 - 2);
        FUZZ_CHECK(region[dst].contains(p) == has(model[dst], p.x, p.y));
        if (rect.isValid())
            FUZZ_CHECK(region[dst].intersects(rect) == meet(model[dst], rectModel));
        FUZZ_CHECK(region[dst].intersects(region[s2]) == meet(model[dst], model[s2]));
        FUZZ_CHECK((region[dst] == region[s1]) == (model[dst] == model[s1]));
    }
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    Slots slots;
    for (size_t i = 0; i + 4 <= size && i / 4 < kMaxOps; i += 4)
        slots.step(data + i);
    return 0;
}
