// Streaming primitives on doubles at 1e3, 1e5 and 1e7 points (the last far beyond the
// caches): zemath_d_minmax, zemath_d_sum (with min, max, indices and count) and
// zemath_d_mean_variance (two passes). Bytes processed = 8 per point per call, so GB/s
// compare with bench/table/families/primitives.py, which times NumPy on the same sizes.
#include <benchmark/benchmark.h>

#include <map>
#include <random>
#include <vector>

#include "zemath.h"

namespace {

// Standard normal data, no missing values (NumPy sees the same distribution).
const std::vector<double>& data_of_size(int n) {
    static std::map<int, std::vector<double>> cache;
    auto& v = cache[n];
    if (v.empty()) {
        std::mt19937_64 gen(20240611);
        std::normal_distribution<double> normal;
        v.resize(n);
        for (double& x : v) x = normal(gen);
    }
    return v;
}

void BM_d_minmax(benchmark::State& state) {
    const int n = static_cast<int>(state.range(0));
    const std::vector<double>& v = data_of_size(n);
    int imin = 0, imax = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(zemath_d_minmax(v.data(), 0, n - 1, &imin, &imax));
        benchmark::DoNotOptimize(imin);
        benchmark::DoNotOptimize(imax);
    }
    state.SetBytesProcessed(state.iterations() * n * static_cast<int64_t>(sizeof(double)));
}

void BM_d_sum(benchmark::State& state) {
    const int n = static_cast<int>(state.range(0));
    const std::vector<double>& v = data_of_size(n);
    double mn = 0, mx = 0;
    int imin = 0, imax = 0, count = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(zemath_d_sum(v.data(), n, &mn, &mx, &imin, &imax, &count));
        benchmark::DoNotOptimize(imin);
    }
    state.SetBytesProcessed(state.iterations() * n * static_cast<int64_t>(sizeof(double)));
}

void BM_d_mean_variance(benchmark::State& state) {
    const int n = static_cast<int>(state.range(0));
    const std::vector<double>& v = data_of_size(n);
    double variance = 0;
    int count = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(zemath_d_mean_variance(v.data(), n, &variance, &count));
        benchmark::DoNotOptimize(variance);
    }
    state.SetBytesProcessed(state.iterations() * n * static_cast<int64_t>(sizeof(double)));
}

// Wall-clock time, median of 7 repetitions (the peer takes the median of 7 timeit
// repeats): steadier than a single run on a shared machine. The median of the rates is
// the rate of the median time.
void sizes(benchmark::internal::Benchmark* b) {
    b->Arg(1000)->Arg(100000)->Arg(10000000)->UseRealTime()->Repetitions(7);
    b->ReportAggregatesOnly(true);
}

}  // namespace

BENCHMARK(BM_d_minmax)->Apply(sizes);
BENCHMARK(BM_d_sum)->Apply(sizes);
BENCHMARK(BM_d_mean_variance)->Apply(sizes);

BENCHMARK_MAIN();
