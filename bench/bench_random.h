// The benchmarks' text maker: a small linear congruential generator, so every run and every
// machine builds the same inputs without depending on the standard library's engines.
#ifndef BENCH_RANDOM_H
#define BENCH_RANDOM_H

#include <stdint.h>

namespace vybench
{

class Random
{
public:
    explicit Random(uint32_t seed) : state_(seed) {}

    // A value in [0, n).
    uint32_t below(uint32_t n)
    {
        state_ = state_ * 1664525u + 1013904223u;
        return uint32_t((uint64_t(state_ >> 8) * n) >> 24);
    }

private:
    uint32_t state_;
};

} // namespace vybench

#endif
