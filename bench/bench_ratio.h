// The summary lines of the benchmark programs: each program pairs the library's operation with
// a reference doing the same work, and after the run prints one line per pair,
//     ratio <name> <library-time / reference-time> goal <bound>
// from the CPU time per iteration of both benchmarks (the median of the repetitions when they
// are asked for, else the single run). A pair is left out when either side did not run (a
// filter) or failed.
#ifndef BENCH_RATIO_H
#define BENCH_RATIO_H

#include <benchmark/benchmark.h>

#include <map>
#include <stdio.h>
#include <string>
#include <unistd.h>
#include <vector>

namespace vybench
{

// Benchmarks are named as the console shows them without the aggregate suffix: the registered
// name (BENCHMARK_CAPTURE's included), then "/" and the arguments of ->Arg() if any
// ("BM_Copy/32").
struct RatioPair {
    const char* name;
    const char* library;
    const char* reference;
    double goal;
};

// Passes every run on to the console and keeps the CPU seconds per iteration of each
// benchmark, so pairs measured in different time units still compare. Colours only a terminal:
// a reporter handed to RunSpecifiedBenchmarks does not follow --benchmark_color, and escape
// codes in a log would stand in front of the ratio lines that scripts look for.
class RatioReporter : public benchmark::ConsoleReporter
{
public:
    RatioReporter() : ConsoleReporter(isatty(STDOUT_FILENO) ? OO_Defaults : OO_Tabular) {}

    void ReportRuns(const std::vector<Run>& runs) override
    {
        ConsoleReporter::ReportRuns(runs);
        for (const Run& run : runs) {
            std::string name = run.run_name.function_name;
            if (!run.run_name.args.empty())
                name += "/" + run.run_name.args;
            if (run.error_occurred) {
                failed_[name] = true;
                continue;
            }
            const double seconds =
                run.GetAdjustedCPUTime() / benchmark::GetTimeUnitMultiplier(run.time_unit);
            if (run.run_type == Run::RT_Aggregate) {
                if (run.aggregate_name == "median")
                    medians_[name] = seconds;
            } else {
                singles_[name] = seconds;
            }
        }
    }

    bool anyFailed() const { return !failed_.empty(); }

    // Seconds per iteration, or a negative value when the benchmark did not run or failed.
    double time(const std::string& name) const
    {
        return failed_.count(name) ? -1.0 : medianOrSingle(medians_, singles_, name);
    }

protected:
    // The median of `name` when there is one, else its single run, else a negative value.
    static double medianOrSingle(const std::map<std::string, double>& medians,
                                 const std::map<std::string, double>& singles,
                                 const std::string& name)
    {
        auto m = medians.find(name);
        if (m != medians.end())
            return m->second;
        auto s = singles.find(name);
        return s != singles.end() ? s->second : -1.0;
    }

private:
    std::map<std::string, double> medians_;
    std::map<std::string, double> singles_;
    std::map<std::string, bool> failed_;
};

// The body of a benchmark program's main: runs what the command line selects through
// `reporter` and prints the ratio line of every pair whose two sides ran. Returns the exit
// status: 1 when the arguments were not understood or a benchmark failed (a reference
// disagreeing with the library, say).
template <size_t N>
int runWithRatios(int argc, char** argv, const RatioPair (&pairs)[N], RatioReporter& reporter)
{
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    for (const RatioPair& pair : pairs) {
        const double library = reporter.time(pair.library);
        const double reference = reporter.time(pair.reference);
        if (library > 0 && reference > 0)
            printf("ratio %s %.2f goal %.1f\n", pair.name, library / reference, pair.goal);
    }
    benchmark::Shutdown();
    return reporter.anyFailed() ? 1 : 0;
}

// The same through a plain RatioReporter.
template <size_t N> int runWithRatios(int argc, char** argv, const RatioPair (&pairs)[N])
{
    RatioReporter reporter;
    return runWithRatios(argc, argv, pairs, reporter);
}

} // namespace vybench

#endif
