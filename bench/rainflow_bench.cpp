// Rainflow counting of load histories at 1e3..1e7 points (standard normal loads, every
// other point a turning point on average): the cycle list (turning points, four-point
// rule, residue as half cycles, ranges and means) and the 64-class rainflow matrices.
// Items processed = points, so the rate shows linear growth; bench/table/families/rainflow.py runs
// a NumPy implementation of the same four-point rule on the same sizes.
#include <benchmark/benchmark.h>

#include <map>
#include <random>
#include <vector>

#include "zemath.h"

namespace {

const std::vector<double>& loads_of_size(int n) {
    static std::map<int, std::vector<double>> cache;
    auto& v = cache[n];
    if (v.empty()) {
        std::mt19937_64 gen(20261123);
        std::normal_distribution<double> normal;
        v.resize(n);
        for (double& x : v) x = normal(gen);
    }
    return v;
}

void BM_rainflow_cycles(benchmark::State& state) {
    const int n = static_cast<int>(state.range(0));
    const std::vector<double>& load = loads_of_size(n);
    std::vector<int> from(n), to(n);
    std::vector<double> range(n), mean(n), count(n);
    int cycles = 0, closed = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(zemath_rainflow_cycles(load.data(), n, 0.0, 0, n, from.data(),
                                                        to.data(), range.data(), mean.data(),
                                                        count.data(), &cycles, &closed));
        benchmark::DoNotOptimize(cycles);
    }
    state.counters["cycles"] = cycles;
    state.SetItemsProcessed(state.iterations() * n);
}

void BM_rainflow_matrix(benchmark::State& state) {
    const int n = static_cast<int>(state.range(0));
    std::vector<double> load = loads_of_size(n), time(n, 0.0);
    constexpr int kBins = 64;
    std::vector<int> total(kBins * kBins), closed(kBins * kBins);
    for (auto _ : state) {
        benchmark::DoNotOptimize(Rainflow_Matrix(n, time.data(), load.data(), kBins, total.data(),
                                                 closed.data(), 0.0, 0, 0, 0, 0));
        benchmark::DoNotOptimize(total.data());
    }
    state.SetItemsProcessed(state.iterations() * n);
}

}  // namespace

BENCHMARK(BM_rainflow_cycles)
    ->RangeMultiplier(10)
    ->Range(1000, 10000000)
    ->Unit(benchmark::kMillisecond);
BENCHMARK(BM_rainflow_matrix)
    ->RangeMultiplier(10)
    ->Range(1000, 10000000)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_MAIN();
