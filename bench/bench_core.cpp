// The core benchmarks: the shared containers beside their standard-library counterparts.
//
// Each pair runs the same work on the same keys; after the run a summary line per pair
// (bench_ratio.h) states the library's time over the reference's.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <deque>
#include <map>
#include <random>
#include <string>
#include <unordered_map>
#include <vector>

#include "bench_ratio.h"
#include "vyhash.h"
#include "vylist.h"
#include "vymap.h"
#include "vyvector.h"

namespace
{

constexpr int kItems = 10000;

// The same pseudo-random keys for every container.
const std::vector<int>& keys()
{
    static const std::vector<int> k = [] {
        std::vector<int> v(kItems);
        std::mt19937 rng(42);
        for (int& x : v)
            x = int(rng() & 0x7fffffff);
        return v;
    }();
    return k;
}

void setItems(benchmark::State& state)
{
    state.SetItemsProcessed(state.iterations() * kItems);
}

void BM_VyVectorAppend(benchmark::State& state)
{
    for (auto _ : state) {
        VyVector<int> v;
        for (int i = 0; i < kItems; ++i)
            v.append(i);
        benchmark::DoNotOptimize(v.constData());
    }
    setItems(state);
}

void BM_StdVectorAppend(benchmark::State& state)
{
    for (auto _ : state) {
        std::vector<int> v;
        for (int i = 0; i < kItems; ++i)
            v.push_back(i);
        benchmark::DoNotOptimize(v.data());
    }
    setItems(state);
}

void BM_VyListAppend(benchmark::State& state)
{
    int x = 0;
    for (auto _ : state) {
        VyList<int*> l;
        for (int i = 0; i < kItems; ++i)
            l.append(&x);
        benchmark::DoNotOptimize(l.p.d);
    }
    setItems(state);
}

void BM_StdDequeAppend(benchmark::State& state)
{
    int x = 0;
    for (auto _ : state) {
        std::deque<int*> l;
        for (int i = 0; i < kItems; ++i)
            l.push_back(&x);
        benchmark::DoNotOptimize(&l);
    }
    setItems(state);
}

void BM_VyListPrepend(benchmark::State& state)
{
    int x = 0;
    for (auto _ : state) {
        VyList<int*> l;
        for (int i = 0; i < kItems; ++i)
            l.prepend(&x);
        benchmark::DoNotOptimize(l.p.d);
    }
    setItems(state);
}

void BM_StdDequePrepend(benchmark::State& state)
{
    int x = 0;
    for (auto _ : state) {
        std::deque<int*> l;
        for (int i = 0; i < kItems; ++i)
            l.push_front(&x);
        benchmark::DoNotOptimize(&l);
    }
    setItems(state);
}

void BM_VyHashInsert(benchmark::State& state)
{
    for (auto _ : state) {
        VyHash<int, void*> h;
        for (int k : keys())
            h.insert(k, nullptr);
        benchmark::DoNotOptimize(h.size());
    }
    setItems(state);
}

void BM_StdUnorderedMapInsert(benchmark::State& state)
{
    for (auto _ : state) {
        std::unordered_map<int, void*> h;
        for (int k : keys())
            h[k] = nullptr;
        benchmark::DoNotOptimize(h.size());
    }
    setItems(state);
}

void BM_VyHashLookup(benchmark::State& state)
{
    VyHash<int, void*> h;
    for (int k : keys())
        h.insert(k, const_cast<int*>(&k));
    const VyHash<int, void*>& ch = h;
    for (auto _ : state) {
        for (int k : keys())
            benchmark::DoNotOptimize(ch.value(k));
    }
    setItems(state);
}

void BM_StdUnorderedMapLookup(benchmark::State& state)
{
    std::unordered_map<int, void*> h;
    for (int k : keys())
        h[k] = const_cast<int*>(&k);
    for (auto _ : state) {
        for (int k : keys()) {
            auto it = h.find(k);
            benchmark::DoNotOptimize(it == h.end() ? nullptr : it->second);
        }
    }
    setItems(state);
}

void BM_VyMapInsert(benchmark::State& state)
{
    for (auto _ : state) {
        VyMap<int, int> m;
        for (int k : keys())
            m.insert(k, k);
        benchmark::DoNotOptimize(m.size());
    }
    setItems(state);
}

void BM_StdMapInsert(benchmark::State& state)
{
    for (auto _ : state) {
        std::map<int, int> m;
        for (int k : keys())
            m[k] = k;
        benchmark::DoNotOptimize(m.size());
    }
    setItems(state);
}

void BM_VyMapLookup(benchmark::State& state)
{
    VyMap<int, int> m;
    for (int k : keys())
        m.insert(k, k);
    const VyMap<int, int>& cm = m;
    for (auto _ : state) {
        for (int k : keys())
            benchmark::DoNotOptimize(cm.value(k));
    }
    setItems(state);
}

void BM_StdMapLookup(benchmark::State& state)
{
    std::map<int, int> m;
    for (int k : keys())
        m[k] = k;
    for (auto _ : state) {
        for (int k : keys()) {
            auto it = m.find(k);
            benchmark::DoNotOptimize(it == m.end() ? 0 : it->second);
        }
    }
    setItems(state);
}

BENCHMARK(BM_VyVectorAppend);
BENCHMARK(BM_StdVectorAppend);
BENCHMARK(BM_VyListAppend);
BENCHMARK(BM_StdDequeAppend);
BENCHMARK(BM_VyListPrepend);
BENCHMARK(BM_StdDequePrepend);
BENCHMARK(BM_VyHashInsert);
BENCHMARK(BM_StdUnorderedMapInsert);
BENCHMARK(BM_VyHashLookup);
BENCHMARK(BM_StdUnorderedMapLookup);
BENCHMARK(BM_VyMapInsert);
BENCHMARK(BM_StdMapInsert);
BENCHMARK(BM_VyMapLookup);
BENCHMARK(BM_StdMapLookup);

const vybench::RatioPair kPairs[] = {
    {"vector_append_vs_std", "BM_VyVectorAppend", "BM_StdVectorAppend", 1.5},
    {"list_append_vs_deque", "BM_VyListAppend", "BM_StdDequeAppend", 1.5},
    {"list_prepend_vs_deque", "BM_VyListPrepend", "BM_StdDequePrepend", 1.5},
    {"hash_insert_vs_unordered_map", "BM_VyHashInsert", "BM_StdUnorderedMapInsert", 1.5},
    {"hash_lookup_vs_unordered_map", "BM_VyHashLookup", "BM_StdUnorderedMapLookup", 1.5},
    {"map_insert_vs_std_map", "BM_VyMapInsert", "BM_StdMapInsert", 1.5},
    {"map_lookup_vs_std_map", "BM_VyMapLookup", "BM_StdMapLookup", 1.5},
};

} // namespace

int main(int argc, char** argv)
{
    return vybench::runWithRatios(argc, argv, kPairs);
}
