// Empirical mode decomposition at 1e5 and 1e6 points: four tones with periods 40, 370,
// 3100 and 29000 points, not-a-knot spline envelopes (mode 2), thresholds 0.05, 0.5,
// 0.05, at most 10 IMFs. The counters give the IMFs found and the time per IMF
// (per_imf, in seconds of CPU time, as the peer measures: the machine is shared);
// bench/table/families/emd.py runs the same sifting with NumPy and SciPy's CubicSpline on the same
// data.
#include <benchmark/benchmark.h>

#include <cmath>
#include <numbers>
#include <vector>

#include "zemath.h"

namespace {

std::vector<double> four_tones(int n) {
    std::vector<double> y(static_cast<std::size_t>(n));
    const double period[] = {40, 370, 3100, 29000}, amplitude[] = {1.0, 0.8, 0.6, 0.5};
    for (int i = 0; i < n; ++i) {
        double v = 0.0;
        for (int k = 0; k < 4; ++k)
            v += amplitude[k] * std::sin(2 * std::numbers::pi * i / period[k] + 0.5 * k);
        y[static_cast<std::size_t>(i)] = v;
    }
    return y;
}

void BM_empirical_mode_decomposition(benchmark::State& state) {
    const int n = static_cast<int>(state.range(0));
    constexpr int kRows = 10;
    const std::vector<double> y = four_tones(n);
    std::vector<double> x(y.size()), imfs(y.size() * kRows), residue(y.size());
    for (int i = 0; i < n; ++i) x[static_cast<std::size_t>(i)] = i;
    int count = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(zemath_empirical_mode_decomposition(
            n, x.data(), y.data(), 0.05, 0.5, 0.05, imfs.data(), kRows, &count, residue.data(), 2));
        benchmark::DoNotOptimize(imfs.data());
    }
    state.counters["imfs"] = count;
    state.counters["per_imf"] = benchmark::Counter(
        count, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
    state.SetItemsProcessed(state.iterations() * n);
}

void BM_emd_envelopes(benchmark::State& state) {
    const int n = static_cast<int>(state.range(0));
    const std::vector<double> y = four_tones(n);
    std::vector<double> x(y.size()), upper(y.size()), lower(y.size());
    for (int i = 0; i < n; ++i) x[static_cast<std::size_t>(i)] = i;
    int n_max = 0, n_min = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(zemath_emd_get_upper_lower_envelope(
            n, x.data(), y.data(), upper.data(), lower.data(), &n_max, &n_min, 2));
        benchmark::DoNotOptimize(upper.data());
    }
    state.SetItemsProcessed(state.iterations() * n);
}

}  // namespace

BENCHMARK(BM_empirical_mode_decomposition)
    ->Arg(100000)
    ->Arg(1000000)
    ->Unit(benchmark::kMillisecond);
BENCHMARK(BM_emd_envelopes)->Arg(100000)->Arg(1000000)->Unit(benchmark::kMillisecond);
BENCHMARK_MAIN();
