// The image benchmarks: the BMP decoder on a 1024 × 768 image of each depth, beside a plain copy
// of the same pixels: how close decoding comes to memory speed.
//
// BM_Decode/<depth> opens the file bytes as a memory stream, reads the header and decodes into
// a buffer of 32-bit pixels; items are pixels, so items per second is pixels per second.
// BM_CopyPixels memcpys the same 1024 × 768 pixels at 32 bits, the bytes every depth has to
// write. After the run one line per depth states the decoder's time over the copy's (median of
// the repetitions when they are asked for):
//     ratio bmp_decode_<depth>_vs_memcpy <library-time / reference-time> goal <bound>
#include <benchmark/benchmark.h>

#include <map>
#include <string.h>
#include <string>
#include <vector>

#include "../tests/support/bmpwriter.h"
#include "bench_ratio.h"
#include "vybitmap.h"

namespace
{

constexpr int kWidth = 1024;
constexpr int kHeight = 768;
constexpr int kDepths[] = {1, 4, 8, 16, 24, 32};
constexpr double kGoal = 4.0;

// One file per depth with a full colour table and pseudo-random pixels.
const std::string& fileBytes(int depth)
{
    static std::map<int, std::string> files;
    std::string& file = files[depth];
    if (file.empty()) {
        BmpImage im;
        im.width = kWidth;
        im.height = kHeight;
        im.depth = depth;
        if (depth <= 8)
            for (uint32_t i = 0; i < (1u << depth); ++i)
                im.palette.push_back(i * 0x010305u);
        const uint32_t mask = depth == 32 ? 0xFFFFFFFFu : (1u << depth) - 1;
        uint32_t x = 12345;
        im.values.resize(size_t(kWidth) * kHeight);
        for (uint32_t& v : im.values) {
            x = x * 1664525u + 1013904223u;
            v = x & mask;
        }
        file = bmpBytes(im);
    }
    return file;
}

void BM_Decode(benchmark::State& state)
{
    const int depth = int(state.range(0));
    std::string file = fileBytes(depth);
    std::vector<unsigned char> pixels(size_t(kWidth) * kHeight * 4);
    for (auto _ : state) {
        FILE* stream = fmemopen(file.data(), file.size(), "rb");
        {
            VyBitmap bmp(stream);
            bmp.decode(pixels.data());
        }
        fclose(stream);
        benchmark::DoNotOptimize(pixels.data());
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * kWidth * kHeight);
    state.SetBytesProcessed(state.iterations() * int64_t(file.size()));
}

void BM_CopyPixels(benchmark::State& state)
{
    const size_t bytes = size_t(kWidth) * kHeight * 4;
    std::vector<unsigned char> source(bytes, 0x5A), target(bytes);
    for (auto _ : state) {
        memcpy(target.data(), source.data(), bytes);
        benchmark::DoNotOptimize(target.data());
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * kWidth * kHeight);
    state.SetBytesProcessed(state.iterations() * int64_t(bytes));
}

void depths(benchmark::internal::Benchmark* b)
{
    for (int depth : kDepths)
        b->Arg(depth);
}

BENCHMARK(BM_Decode)->Apply(depths)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_CopyPixels)->Unit(benchmark::kMicrosecond);

const vybench::RatioPair kPairs[] = {
    {"bmp_decode_1_vs_memcpy", "BM_Decode/1", "BM_CopyPixels", kGoal},
    {"bmp_decode_4_vs_memcpy", "BM_Decode/4", "BM_CopyPixels", kGoal},
    {"bmp_decode_8_vs_memcpy", "BM_Decode/8", "BM_CopyPixels", kGoal},
    {"bmp_decode_16_vs_memcpy", "BM_Decode/16", "BM_CopyPixels", kGoal},
    {"bmp_decode_24_vs_memcpy", "BM_Decode/24", "BM_CopyPixels", kGoal},
    {"bmp_decode_32_vs_memcpy", "BM_Decode/32", "BM_CopyPixels", kGoal},
};

} // namespace

int main(int argc, char** argv)
{
    return vybench::runWithRatios(argc, argv, kPairs);
}
