// Statistics at 1e3, 1e5 and 1e7 points: zemath_desc_stats (the moments take two passes,
// no sort; the mode is part of the record and groups equal values through hash buckets,
// most of the record's time, so zemath_basic_summary_stats is timed too),
// zemath_percentiles with 3 percents (sampled selection from 32768 points) and 100
// percents (one radix sort), and
// the Shapiro-Wilk test at n = 5000. bench/table/families/statistics.py times NumPy/SciPy on the
// same kinds of data.
#include <benchmark/benchmark.h>

#include <map>
#include <random>
#include <vector>

#include "zemath.h"

namespace {

const std::vector<double>& data_of_size(int n) {
    static std::map<int, std::vector<double>> cache;
    auto& v = cache[n];
    if (v.empty()) {
        std::mt19937_64 gen(20261123);
        std::normal_distribution<double> normal(3.0, 2.0);
        v.resize(n);
        for (double& x : v) x = normal(gen);
    }
    return v;
}

void BM_desc_stats(benchmark::State& state) {
    const int n = static_cast<int>(state.range(0));
    const auto& v = data_of_size(n);
    DescStatResults r;
    for (auto _ : state) {
        benchmark::DoNotOptimize(
            zemath_desc_stats(v.data(), static_cast<unsigned>(n), &r, nullptr, 0.95, 0));
        benchmark::DoNotOptimize(r);
    }
}

void BM_basic_summary_stats(benchmark::State& state) {
    const int n = static_cast<int>(state.range(0));
    const auto& v = data_of_size(n);
    double mean, sd, skew, kurt;
    for (auto _ : state) {
        benchmark::DoNotOptimize(zemath_basic_summary_stats(
            n, v.data(), nullptr, &mean, &sd, nullptr, nullptr, nullptr, &skew, &kurt, nullptr,
            nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, 0, nullptr));
        benchmark::DoNotOptimize(kurt);
    }
}

void run_percentiles(benchmark::State& state, const std::vector<double>& percents) {
    const int n = static_cast<int>(state.range(0));
    const auto& v = data_of_size(n);
    std::vector<double> out(percents.size());
    for (auto _ : state) {
        benchmark::DoNotOptimize(zemath_percentiles(v.data(), n, percents.data(),
                                                    static_cast<int>(percents.size()), out.data(),
                                                    4, nullptr));
        benchmark::DoNotOptimize(out.data());
    }
}

void BM_percentiles_3(benchmark::State& state) {
    run_percentiles(state, {25.0, 50.0, 75.0});
}

void BM_percentiles_100(benchmark::State& state) {
    std::vector<double> p(100);
    for (int k = 0; k < 100; ++k) p[k] = k + 0.5;
    run_percentiles(state, p);
}

void BM_shapiro_wilk_5000(benchmark::State& state) {
    const auto& v = data_of_size(5000);
    ShapiroWilkResults r;
    for (auto _ : state) {
        benchmark::DoNotOptimize(zemath_shapiro_wilk_test(5000, v.data(), &r, 0));
        benchmark::DoNotOptimize(r);
    }
}

}  // namespace

BENCHMARK(BM_desc_stats)->Arg(1000)->Arg(100000)->Arg(10000000)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_basic_summary_stats)
    ->Arg(1000)
    ->Arg(100000)
    ->Arg(10000000)
    ->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_percentiles_3)->Arg(1000)->Arg(100000)->Arg(10000000)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_percentiles_100)->Arg(1000)->Arg(100000)->Arg(10000000)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_shapiro_wilk_5000)->Unit(benchmark::kMicrosecond);
BENCHMARK_MAIN();
