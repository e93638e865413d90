// Sorting and searching benchmarks: random doubles with an int index companion sorted
// through CZSorter (both methods) beside std::stable_sort of (key, index) pairs, and
// zemath_array_find_indices of 1e6 random targets into sorted arrays (the sweep) and of 1000
// targets into arrays of 1e4 to 1e7 values (too few targets for the sweep: one bisection per
// target). The peer script
// bench/table/families/{sort,search}.py times numpy.argsort(kind='stable') and numpy.searchsorted
// on the same sizes and distribution (uniform on [0, 1)).
#include <benchmark/benchmark.h>

#include <algorithm>
#include <random>
#include <utility>
#include <vector>

#include "zemath/search.h"
#include "zemath/sort.hpp"

namespace {

std::vector<double> uniform(std::size_t n, unsigned seed) {
    std::mt19937_64 rng(seed);
    std::uniform_real_distribution<double> u(0.0, 1.0);
    std::vector<double> v(n);
    for (double& x : v) x = u(rng);
    return v;
}

// Index fill + sort of keys and index, as the library's index sort does it; the copy
// that restores the unsorted keys is not timed.
void sorter(benchmark::State& state, int method) {
    const int n = static_cast<int>(state.range(0));
    const std::vector<double> input = uniform(static_cast<std::size_t>(n), 42);
    std::vector<double> keys(input.size());
    std::vector<int> index(input.size());
    for (auto _ : state) {
        state.PauseTiming();
        std::copy(input.begin(), input.end(), keys.begin());
        state.ResumeTiming();
        for (int i = 0; i < n; ++i) index[static_cast<std::size_t>(i)] = i;
        CZSorter s(method, keys.data(), n, 8, index.data(), 4, n);
        benchmark::DoNotOptimize(s.Sort(0, n - 1, GetAppropriateCompareAscend(11), false));
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * n);
    state.SetBytesProcessed(state.iterations() * n * 12);
}

void BM_CZSorter_Merge(benchmark::State& state) {
    sorter(state, 1);
}
void BM_CZSorter_Quick(benchmark::State& state) {
    sorter(state, 0);
}

void BM_StdStableSortPairs(benchmark::State& state) {
    const std::size_t n = static_cast<std::size_t>(state.range(0));
    const std::vector<double> input = uniform(n, 42);
    std::vector<std::pair<double, int>> pairs(n);
    for (auto _ : state) {
        for (std::size_t i = 0; i < n; ++i) pairs[i] = {input[i], static_cast<int>(i)};
        std::stable_sort(pairs.begin(), pairs.end(),
                         [](const auto& a, const auto& b) { return a.first < b.first; });
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * static_cast<long long>(n));
}

void BM_FindIndices(benchmark::State& state) {
    const std::size_t n = static_cast<std::size_t>(state.range(0));
    std::vector<double> x = uniform(n, 7);
    std::sort(x.begin(), x.end());
    const std::vector<double> targets = uniform(1000000, 8);
    std::vector<int> out(targets.size());
    for (auto _ : state) {
        benchmark::DoNotOptimize(
            zemath_array_find_indices(x.data(), static_cast<int>(n), targets.data(),
                                      static_cast<int>(targets.size()), out.data()));
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * static_cast<long long>(targets.size()));
}

// Fewer targets than the sweep needs: each is bisected on its own.
void BM_FindIndicesFew(benchmark::State& state) {
    const std::size_t n = static_cast<std::size_t>(state.range(0));
    std::vector<double> x = uniform(n, 7);
    std::sort(x.begin(), x.end());
    const std::vector<double> targets = uniform(1000, 8);
    std::vector<int> out(targets.size());
    for (auto _ : state) {
        benchmark::DoNotOptimize(
            zemath_array_find_indices(x.data(), static_cast<int>(n), targets.data(),
                                      static_cast<int>(targets.size()), out.data()));
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * static_cast<long long>(targets.size()));
}

}  // namespace

BENCHMARK(BM_CZSorter_Merge)
    ->RangeMultiplier(10)
    ->Range(10000, 10000000)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
BENCHMARK(BM_CZSorter_Quick)
    ->RangeMultiplier(10)
    ->Range(10000, 10000000)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
BENCHMARK(BM_StdStableSortPairs)
    ->RangeMultiplier(10)
    ->Range(10000, 10000000)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
BENCHMARK(BM_FindIndices)
    ->Arg(1000000)
    ->Arg(10000000)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
BENCHMARK(BM_FindIndicesFew)
    ->Arg(10000)
    ->Arg(1000000)
    ->Arg(10000000)
    ->Unit(benchmark::kMicrosecond)
    ->UseRealTime()
    ->Repetitions(7)
    ->ReportAggregatesOnly(true);
BENCHMARK_MAIN();
