// The geometry benchmarks: region set operations at 10, 100 and 1 000 rectangles, and the cost
// per curve of the Bezier length and offset.
//
// The region operands are grids of 10 x 10 squares, 20 pixels apart, in bands of up to 32
// squares, and the same grid moved by (5, 5), so every square overlaps four of the other's
// and each operation runs the band sweep. A sweep linear in the rectangles costs ten times as
// much for ten times the rectangles: the summary lines state the time at 1 000 rectangles
// over the time at 100 (and at 100 over 10) with the goal 10.
#include <benchmark/benchmark.h>

#include <random>
#include <vector>

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
};

} // namespace

int main(int argc, char** argv)
{
    return vybench::runWithRatios(argc, argv, kPairs);
}
