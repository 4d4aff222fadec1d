// Numbers to text and back beside the C++ and C library conversions.
//
// Writing: VyString::number for 1024 ints of mixed length and 1024 doubles ('g', 6 digits)
// beside std::to_chars into a stack buffer, the same followed by a std::u16string of the text
// (a string result, as number gives), and snprintf. Reading: VyString::toInt and toDouble over
// 1024 prepared strings beside std::from_chars on the same text as bytes, the same after
// narrowing the UTF-16 text into a stack buffer (a reader of UTF-16 text must do that), and
// strtol/strtod.
//
// Each benchmark first checks that its reference computes what the library computes and fails
// otherwise. After the run a ratio line per pair (bench_ratio.h) gives library time over
// reference time.
#include <benchmark/benchmark.h>

#include <charconv>
#include <cmath>
#include <random>
#include <stdio.h>
#include <stdlib.h>
#include <string>
#include <vector>

#include "bench_ratio.h"
#include "vystring.h"

namespace
{

constexpr int kCount = 1024;

const std::vector<int>& ints()
{
    static const std::vector<int> values = [] {
        std::mt19937 rng(1);
        std::vector<int> v;
        for (int i = 0; i < kCount; ++i)
            v.push_back(int(rng()) >> (rng() % 31)); // every length from 1 to 10 digits
        return v;
    }();
    return values;
}

const std::vector<double>& doubles()
{
    static const std::vector<double> values = [] {
        std::mt19937_64 rng(2);
        std::uniform_real_distribution<double> mantissa(-1.0, 1.0);
        std::vector<double> v;
        for (int i = 0; i < kCount; ++i)
            v.push_back(std::ldexp(mantissa(rng), int(rng() % 80) - 40));
        return v;
    }();
    return values;
}

std::string toUtf8(const VyString& s)
{
    return std::string(s.toUtf8().constData());
}

template <typename T> std::vector<std::string> texts(const std::vector<T>& values)
{
    std::vector<std::string> out;
    for (T v : values)
        out.push_back(toUtf8(VyString::number(v)));
    return out;
}

std::vector<VyString> vyTexts(const std::vector<std::string>& texts)
{
    std::vector<VyString> out;
    for (const std::string& t : texts)
        out.push_back(VyString(t.c_str()));
    return out;
}

// --- writing ---

void numberIntVy(benchmark::State& state)
{
    for (auto _ : state) {
        for (int v : ints()) {
            VyString s = VyString::number(v);
            benchmark::DoNotOptimize(s.d);
        }
    }
    state.SetItemsProcessed(state.iterations() * kCount);
}

void numberIntToChars(benchmark::State& state)
{
    for (int v : ints()) {
        char b[16];
        if (std::string(b, std::to_chars(b, b + sizeof b, v).ptr) != toUtf8(VyString::number(v)))
            state.SkipWithError("to_chars disagrees");
    }
    for (auto _ : state) {
        for (int v : ints()) {
            char b[16];
            benchmark::DoNotOptimize(std::to_chars(b, b + sizeof b, v).ptr);
            benchmark::ClobberMemory();
        }
    }
    state.SetItemsProcessed(state.iterations() * kCount);
}

void numberIntToCharsString(benchmark::State& state)
{
    for (auto _ : state) {
        for (int v : ints()) {
            char b[16];
            char* end = std::to_chars(b, b + sizeof b, v).ptr;
            std::u16string s(b, end);
            benchmark::DoNotOptimize(s.data());
        }
    }
    state.SetItemsProcessed(state.iterations() * kCount);
}

void numberIntSnprintf(benchmark::State& state)
{
    for (auto _ : state) {
        for (int v : ints()) {
            char b[16];
            benchmark::DoNotOptimize(snprintf(b, sizeof b, "%d", v));
            benchmark::ClobberMemory();
        }
    }
    state.SetItemsProcessed(state.iterations() * kCount);
}

void numberDoubleVy(benchmark::State& state)
{
    for (auto _ : state) {
        for (double v : doubles()) {
            VyString s = VyString::number(v);
            benchmark::DoNotOptimize(s.d);
        }
    }
    state.SetItemsProcessed(state.iterations() * kCount);
}

void numberDoubleToChars(benchmark::State& state)
{
    for (double v : doubles()) {
        char b[32];
        char* end = std::to_chars(b, b + sizeof b, v, std::chars_format::general, 6).ptr;
        if (std::string(b, end) != toUtf8(VyString::number(v)))
            state.SkipWithError("to_chars disagrees");
    }
    for (auto _ : state) {
        for (double v : doubles()) {
            char b[32];
            benchmark::DoNotOptimize(
                std::to_chars(b, b + sizeof b, v, std::chars_format::general, 6).ptr);
            benchmark::ClobberMemory();
        }
    }
    state.SetItemsProcessed(state.iterations() * kCount);
}

void numberDoubleToCharsString(benchmark::State& state)
{
    for (auto _ : state) {
        for (double v : doubles()) {
            char b[32];
            char* end = std::to_chars(b, b + sizeof b, v, std::chars_format::general, 6).ptr;
            std::u16string s(b, end);
            benchmark::DoNotOptimize(s.data());
        }
    }
    state.SetItemsProcessed(state.iterations() * kCount);
}

void numberDoubleSnprintf(benchmark::State& state)
{
    for (double v : doubles()) {
        char b[32];
        snprintf(b, sizeof b, "%g", v);
        if (b != toUtf8(VyString::number(v)))
            state.SkipWithError("snprintf disagrees");
    }
    for (auto _ : state) {
        for (double v : doubles()) {
            char b[32];
            benchmark::DoNotOptimize(snprintf(b, sizeof b, "%g", v));
            benchmark::ClobberMemory();
        }
    }
    state.SetItemsProcessed(state.iterations() * kCount);
}

// --- reading ---

void toIntVy(benchmark::State& state)
{
    const std::vector<VyString> in = vyTexts(texts(ints()));
    for (size_t i = 0; i < in.size(); ++i) {
        bool ok;
        if (in[i].toInt(&ok) != ints()[i] || !ok)
            state.SkipWithError("toInt disagrees");
    }
    for (auto _ : state) {
        for (const VyString& s : in)
            benchmark::DoNotOptimize(s.toInt());
    }
    state.SetItemsProcessed(state.iterations() * kCount);
}

void toIntFromChars(benchmark::State& state)
{
    const std::vector<std::string> in = texts(ints());
    for (auto _ : state) {
        for (const std::string& s : in) {
            int v;
            std::from_chars(s.data(), s.data() + s.size(), v);
            benchmark::DoNotOptimize(v);
        }
    }
    state.SetItemsProcessed(state.iterations() * kCount);
}

// Narrows UTF-16 text into a stack buffer (failing on non-ASCII units) and parses that.
template <typename T> bool fromUtf16(const VyString& s, T& v)
{
    char b[64];
    const int n = s.size();
    if (n > int(sizeof b))
        return false;
    const VyUcs2* u = s.unicode();
    for (int i = 0; i < n; ++i) {
        if (u[i] >= 0x80)
            return false;
        b[i] = char(u[i]);
    }
    return std::from_chars(b, b + n, v).ec == std::errc();
}

void toIntFromCharsUtf16(benchmark::State& state)
{
    const std::vector<VyString> in = vyTexts(texts(ints()));
    for (auto _ : state) {
        for (const VyString& s : in) {
            int v = 0;
            fromUtf16(s, v);
            benchmark::DoNotOptimize(v);
        }
    }
    state.SetItemsProcessed(state.iterations() * kCount);
}

void toIntStrtol(benchmark::State& state)
{
    const std::vector<std::string> in = texts(ints());
    for (auto _ : state) {
        for (const std::string& s : in)
            benchmark::DoNotOptimize(strtol(s.c_str(), nullptr, 10));
    }
    state.SetItemsProcessed(state.iterations() * kCount);
}

// Shortest round-trip text, so every double reads back exactly.
std::vector<std::string> doubleTexts()
{
    std::vector<std::string> out;
    for (double v : doubles())
        out.push_back(toUtf8(VyString::number(v, 'g', 17)));
    return out;
}

void toDoubleVy(benchmark::State& state)
{
    const std::vector<VyString> in = vyTexts(doubleTexts());
    for (size_t i = 0; i < in.size(); ++i) {
        bool ok;
        if (in[i].toDouble(&ok) != doubles()[i] || !ok)
            state.SkipWithError("toDouble disagrees");
    }
    for (auto _ : state) {
        for (const VyString& s : in)
            benchmark::DoNotOptimize(s.toDouble());
    }
    state.SetItemsProcessed(state.iterations() * kCount);
}

void toDoubleFromChars(benchmark::State& state)
{
    const std::vector<std::string> in = doubleTexts();
    for (auto _ : state) {
        for (const std::string& s : in) {
            double v;
            std::from_chars(s.data(), s.data() + s.size(), v);
            benchmark::DoNotOptimize(v);
        }
    }
    state.SetItemsProcessed(state.iterations() * kCount);
}

void toDoubleFromCharsUtf16(benchmark::State& state)
{
    const std::vector<VyString> in = vyTexts(doubleTexts());
    for (auto _ : state) {
        for (const VyString& s : in) {
            double v = 0;
            fromUtf16(s, v);
            benchmark::DoNotOptimize(v);
        }
    }
    state.SetItemsProcessed(state.iterations() * kCount);
}

void toDoubleStrtod(benchmark::State& state)
{
    const std::vector<std::string> in = doubleTexts();
    for (size_t i = 0; i < in.size(); ++i) {
        if (strtod(in[i].c_str(), nullptr) != doubles()[i])
            state.SkipWithError("strtod disagrees");
    }
    for (auto _ : state) {
        for (const std::string& s : in)
            benchmark::DoNotOptimize(strtod(s.c_str(), nullptr));
    }
    state.SetItemsProcessed(state.iterations() * kCount);
}

BENCHMARK(numberIntVy)->Name("numbers/number_int/vy");
BENCHMARK(numberIntToChars)->Name("numbers/number_int/to_chars");
BENCHMARK(numberIntToCharsString)->Name("numbers/number_int/to_chars_u16string");
BENCHMARK(numberIntSnprintf)->Name("numbers/number_int/snprintf");
BENCHMARK(numberDoubleVy)->Name("numbers/number_double/vy");
BENCHMARK(numberDoubleToChars)->Name("numbers/number_double/to_chars");
BENCHMARK(numberDoubleToCharsString)->Name("numbers/number_double/to_chars_u16string");
BENCHMARK(numberDoubleSnprintf)->Name("numbers/number_double/snprintf");
BENCHMARK(toIntVy)->Name("numbers/to_int/vy");
BENCHMARK(toIntFromChars)->Name("numbers/to_int/from_chars");
BENCHMARK(toIntFromCharsUtf16)->Name("numbers/to_int/from_chars_utf16");
BENCHMARK(toIntStrtol)->Name("numbers/to_int/strtol");
BENCHMARK(toDoubleVy)->Name("numbers/to_double/vy");
BENCHMARK(toDoubleFromChars)->Name("numbers/to_double/from_chars");
BENCHMARK(toDoubleFromCharsUtf16)->Name("numbers/to_double/from_chars_utf16");
BENCHMARK(toDoubleStrtod)->Name("numbers/to_double/strtod");

// The goal: within 1.5 times std::to_chars / std::from_chars. The C library's functions are
// reported against 1.0.
const vybench::RatioPair kPairs[] = {
    {"number_int_vs_to_chars", "numbers/number_int/vy", "numbers/number_int/to_chars", 1.5},
    {"number_int_vs_to_chars_u16string", "numbers/number_int/vy",
     "numbers/number_int/to_chars_u16string", 1.5},
    {"number_int_vs_snprintf", "numbers/number_int/vy", "numbers/number_int/snprintf", 1.0},
    {"number_double_vs_to_chars", "numbers/number_double/vy", "numbers/number_double/to_chars",
     1.5},
    {"number_double_vs_to_chars_u16string", "numbers/number_double/vy",
     "numbers/number_double/to_chars_u16string", 1.5},
    {"number_double_vs_snprintf", "numbers/number_double/vy", "numbers/number_double/snprintf",
     1.0},
    {"to_int_vs_from_chars", "numbers/to_int/vy", "numbers/to_int/from_chars", 1.5},
    {"to_int_vs_from_chars_utf16", "numbers/to_int/vy", "numbers/to_int/from_chars_utf16", 1.5},
    {"to_int_vs_strtol", "numbers/to_int/vy", "numbers/to_int/strtol", 1.0},
    {"to_double_vs_from_chars", "numbers/to_double/vy", "numbers/to_double/from_chars", 1.5},
    {"to_double_vs_from_chars_utf16", "numbers/to_double/vy", "numbers/to_double/from_chars_utf16",
     1.5},
    {"to_double_vs_strtod", "numbers/to_double/vy", "numbers/to_double/strtod", 1.0},
};

} // namespace

int main(int argc, char** argv)
{
    return vybench::runWithRatios(argc, argv, kPairs);
}
