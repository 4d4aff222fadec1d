// The geometry benchmarks: region set operations at 10, 100 and 1 000 rectangles, the same
// operations side by side with pixman's regions, and the cost per curve of the Bezier length and
// offset.
//
// The region operands are grids of 10 x 10 squares, 20 pixels apart, in bands of up to 32
// squares, and the same grid moved by (5, 5), so every square overlaps four of the other's
// and each operation runs the band sweep. A sweep linear in the rectangles costs ten times as
// much for ten times the rectangles: the summary lines state the time at 1 000 rectangles
// over the time at 100 (and at 100 over 10) with the goal 10.
//
// Against pixman (Debian libpixman-1-dev, benchmark only) both libraries get the same
// rectangles: 1 000 rectangles united one by one into an empty region, and the union,
// intersection and difference of two regions of about 5 500 rectangles each. VyRect's edges are
// inclusive, a pixman box ends one past its last pixel; the results are compared rectangle by
// rectangle once before the timing.
#include <benchmark/benchmark.h>
#include <pixman.h>

#include <random>
#include <vector>

#include "bench_random.h"
#include "bench_ratio.h"
#include "vybezier.h"
#include "vyregion.h"

namespace
{

VyRegion grid(int n, int shift)
{
    std::vector<VyRect> r;
    for (int k = 0; k < n; ++k) {
        const int x = (k % 32) * 20 + shift, y = (k / 32) * 20 + shift;
        r.push_back(VyRect(x, y, x + 9, y + 9));
    }
    VyRegion region;
    region.setRects(r.data(), n);
    return region;
}

long long area(const VyRegion& region)
{
    long long sum = 0;
    for (const VyRect& r : region.rects())
        sum += (long long)r.width() * r.height();
    return sum;
}

// Checks the three operations against each other once, outside the timing: the pixels of the
// union and the intersection add up to those of both operands, and the difference is the
// first operand without the intersection.
bool operationsAgree(const VyRegion& a, const VyRegion& b)
{
    const long long u = area(a.unite(b)), i = area(a.intersect(b)), s = area(a.subtract(b));
    return i > 0 && u + i == area(a) + area(b) && s == area(a) - i;
}

enum Op { Unite, Intersect, Subtract };

template <Op op> void BM_Region(benchmark::State& state)
{
    const int n = int(state.range(0));
    const VyRegion a = grid(n, 0), b = grid(n, 5);
    if (!operationsAgree(a, b)) {
        state.SkipWithError("region operations disagree");
        return;
    }
    for (auto _ : state) {
        VyRegion r = op == Unite ? a.unite(b) : op == Intersect ? a.intersect(b) : a.subtract(b);
        benchmark::DoNotOptimize(r.d);
    }
    state.SetItemsProcessed(state.iterations());
    state.counters["rects_in"] = 2.0 * n;
}

void BM_RegionUnite(benchmark::State& state)
{
    BM_Region<Unite>(state);
}
void BM_RegionIntersect(benchmark::State& state)
{
    BM_Region<Intersect>(state);
}
void BM_RegionSubtract(benchmark::State& state)
{
    BM_Region<Subtract>(state);
}
BENCHMARK(BM_RegionUnite)->Arg(10)->Arg(100)->Arg(1000);
BENCHMARK(BM_RegionIntersect)->Arg(10)->Arg(100)->Arg(1000);
BENCHMARK(BM_RegionSubtract)->Arg(10)->Arg(100)->Arg(1000);

// n rectangles of 8 to 71 pixels a side, their corners spread over a square of `span` pixels.
std::vector<VyRect> randomRects(uint32_t seed, int n, int span)
{
    vybench::Random random(seed);
    std::vector<VyRect> r;
    for (int k = 0; k < n; ++k) {
        const int x = int(random.below(uint32_t(span))), y = int(random.below(uint32_t(span)));
        const int w = 8 + int(random.below(64)), h = 8 + int(random.below(64));
        r.push_back(VyRect(x, y, x + w - 1, y + h - 1));
    }
    return r;
}

VyRegion uniteAll(const std::vector<VyRect>& rects)
{
    VyRegion region;
    for (const VyRect& r : rects)
        region += r;
    return region;
}

pixman_box32_t boxOf(const VyRect& r)
{
    return pixman_box32_t{r.x1, r.y1, r.x2 + 1, r.y2 + 1};
}

// A pixman region owned for the benchmark's lifetime.
struct Pixman {
    Pixman() { pixman_region32_init(&r); }
    explicit Pixman(const VyRegion& region)
    {
        std::vector<pixman_box32_t> boxes;
        for (const VyRect& b : region.rects())
            boxes.push_back(boxOf(b));
        pixman_region32_init_rects(&r, boxes.data(), int(boxes.size()));
    }
    ~Pixman() { pixman_region32_fini(&r); }
    Pixman(const Pixman&) = delete;
    Pixman& operator=(const Pixman&) = delete;
    pixman_region32_t r;
};

// Whether both libraries hold the same rectangles in the same order.
bool sameRects(const VyRegion& region, Pixman& reference)
{
    int n = 0;
    const pixman_box32_t* boxes = pixman_region32_rectangles(&reference.r, &n);
    const VyVector<VyRect> rects = region.rects();
    if (n != rects.size())
        return false;
    for (int k = 0; k < n; ++k) {
        const pixman_box32_t b = boxOf(rects.at(k));
        if (b.x1 != boxes[k].x1 || b.y1 != boxes[k].y1 || b.x2 != boxes[k].x2 ||
            b.y2 != boxes[k].y2)
            return false;
    }
    return true;
}

// 1 000 rectangles over 1 200 pixels square, united one by one.
const std::vector<VyRect>& unionInput()
{
    static const std::vector<VyRect> r = randomRects(7, 1000, 1200);
    return r;
}

void BM_RegionUniteEach(benchmark::State& state)
{
    for (auto _ : state) {
        VyRegion r = uniteAll(unionInput());
        benchmark::DoNotOptimize(r.d);
    }
    state.counters["rects_out"] = uniteAll(unionInput()).rectCount();
}

void BM_PixmanUniteEach(benchmark::State& state)
{
    {
        Pixman check;
        for (const VyRect& r : unionInput())
            pixman_region32_union_rect(&check.r, &check.r, r.x1, r.y1, unsigned(r.width()),
                                       unsigned(r.height()));
        if (!sameRects(uniteAll(unionInput()), check)) {
            state.SkipWithError("libvy and pixman disagree");
            return;
        }
    }
    for (auto _ : state) {
        Pixman p;
        for (const VyRect& r : unionInput())
            pixman_region32_union_rect(&p.r, &p.r, r.x1, r.y1, unsigned(r.width()),
                                       unsigned(r.height()));
        benchmark::DoNotOptimize(p.r.data);
    }
}
BENCHMARK(BM_RegionUniteEach);
BENCHMARK(BM_PixmanUniteEach);

// Two regions of about 5 500 rectangles each, the unions of 470 rectangles over 2 000 pixels
// square.
const VyRegion& bigRegion(int which)
{
    static const VyRegion a = uniteAll(randomRects(11, 470, 2000));
    static const VyRegion b = uniteAll(randomRects(12, 470, 2000));
    return which ? b : a;
}

template <Op op> VyRegion apply(const VyRegion& a, const VyRegion& b)
{
    return op == Unite ? a.unite(b) : op == Intersect ? a.intersect(b) : a.subtract(b);
}

template <Op op> void applyPixman(Pixman& out, Pixman& a, Pixman& b)
{
    if (op == Unite)
        pixman_region32_union(&out.r, &a.r, &b.r);
    else if (op == Intersect)
        pixman_region32_intersect(&out.r, &a.r, &b.r);
    else
        pixman_region32_subtract(&out.r, &a.r, &b.r);
}

template <Op op> void BM_RegionBig(benchmark::State& state)
{
    const VyRegion &a = bigRegion(0), &b = bigRegion(1);
    for (auto _ : state) {
        VyRegion r = apply<op>(a, b);
        benchmark::DoNotOptimize(r.d);
    }
    state.counters["rects_in"] = a.rectCount() + b.rectCount();
    state.counters["rects_out"] = apply<op>(a, b).rectCount();
}

template <Op op> void BM_PixmanBig(benchmark::State& state)
{
    Pixman a(bigRegion(0)), b(bigRegion(1));
    {
        Pixman check;
        applyPixman<op>(check, a, b);
        if (!sameRects(bigRegion(0), a) || !sameRects(bigRegion(1), b) ||
            !sameRects(apply<op>(bigRegion(0), bigRegion(1)), check)) {
            state.SkipWithError("libvy and pixman disagree");
            return;
        }
    }
    for (auto _ : state) {
        Pixman r;
        applyPixman<op>(r, a, b);
        benchmark::DoNotOptimize(r.r.data);
    }
}
BENCHMARK_TEMPLATE(BM_RegionBig, Unite);
BENCHMARK_TEMPLATE(BM_PixmanBig, Unite);
BENCHMARK_TEMPLATE(BM_RegionBig, Intersect);
BENCHMARK_TEMPLATE(BM_PixmanBig, Intersect);
BENCHMARK_TEMPLATE(BM_RegionBig, Subtract);
BENCHMARK_TEMPLATE(BM_PixmanBig, Subtract);

// Curves of a few hundred pixels with moderate bends, the same for every run.
const std::vector<VyBezier>& curves()
{
    static const std::vector<VyBezier> c = [] {
        std::mt19937 rng(5);
        std::uniform_real_distribution<float> u(0, 300);
        std::vector<VyBezier> v;
        for (int k = 0; k < 64; ++k)
            v.push_back(VyBezier::fromPoints(VyPointF(0, 0), VyPointF(u(rng), u(rng) - 150),
                                             VyPointF(u(rng), u(rng) - 150), VyPointF(300, 0)));
        return v;
    }();
    return c;
}

void BM_BezierLength(benchmark::State& state)
{
    for (auto _ : state)
        for (const VyBezier& b : curves())
            benchmark::DoNotOptimize(b.length());
    state.SetItemsProcessed(state.iterations() * int64_t(curves().size()));
}
BENCHMARK(BM_BezierLength);

void BM_BezierShifted(benchmark::State& state)
{
    VyBezier segments[64];
    int64_t made = 0;
    for (auto _ : state)
        for (const VyBezier& b : curves())
            made += b.shifted(segments, 64, 5, 0.1f);
    state.SetItemsProcessed(state.iterations() * int64_t(curves().size()));
    state.counters["segments_per_curve"] =
        double(made) / double(state.iterations() * int64_t(curves().size()));
}
BENCHMARK(BM_BezierShifted);

const vybench::RatioPair kPairs[] = {
    {"region_unite_1000_vs_100", "BM_RegionUnite/1000", "BM_RegionUnite/100", 10.0},
    {"region_unite_100_vs_10", "BM_RegionUnite/100", "BM_RegionUnite/10", 10.0},
    {"region_intersect_1000_vs_100", "BM_RegionIntersect/1000", "BM_RegionIntersect/100", 10.0},
    {"region_intersect_100_vs_10", "BM_RegionIntersect/100", "BM_RegionIntersect/10", 10.0},
    {"region_subtract_1000_vs_100", "BM_RegionSubtract/1000", "BM_RegionSubtract/100", 10.0},
    {"region_subtract_100_vs_10", "BM_RegionSubtract/100", "BM_RegionSubtract/10", 10.0},
    {"region_unite_1000_vs_pixman", "BM_RegionUniteEach", "BM_PixmanUniteEach", 1.5},
    {"region_or_vs_pixman", "BM_RegionBig<Unite>", "BM_PixmanBig<Unite>", 1.5},
    {"region_and_vs_pixman", "BM_RegionBig<Intersect>", "BM_PixmanBig<Intersect>", 1.5},
    {"region_sub_vs_pixman", "BM_RegionBig<Subtract>", "BM_PixmanBig<Subtract>", 1.5},
};

} // namespace

int main(int argc, char** argv)
{
    return vybench::runWithRatios(argc, argv, kPairs);
}
