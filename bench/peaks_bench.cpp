// Peak detectors on n = 1e4, 1e6, 1e7 points: a noisy sum of sinusoids on an evenly
// spaced X (y = sin(x/7) + 0.5 sin(x/53) + noise, fixed seed). The local-maximum detector
// with half windows of 5 and 50 points (peer: scipy.signal.argrelmax, order 5 / 50); the
// search-window detector with windows of 11 and 101 points and no height limit (peer:
// argrelmax with order 5 / 50). The same recipe in bench/table/families/peaks.py.
#include <benchmark/benchmark.h>

#include <cmath>
#include <map>
#include <random>
#include <vector>

#include "zemath.h"

namespace {

struct Data {
    std::vector<double> x, y;
};

const Data& data_of_size(int n) {
    static std::map<int, Data> cache;
    Data& d = cache[n];
    if (d.x.empty()) {
        std::mt19937_64 gen(20261123);
        std::normal_distribution<double> noise(0, 0.1);
        d.x.resize(n);
        d.y.resize(n);
        for (int i = 0; i < n; ++i) {
            d.x[i] = i;
            d.y[i] = std::sin(i / 7.0) + 0.5 * std::sin(i / 53.0) + noise(gen);
        }
    }
    return d;
}

void local_maximum(benchmark::State& state, int half) {
    const int n = static_cast<int>(state.range(0));
    const Data& d = data_of_size(n);
    std::vector<double> px(n), py(n);
    std::vector<int> idx(n);
    for (auto _ : state) {
        int count = n;
        benchmark::DoNotOptimize(zemath_find_peaks_by_local_maximum(
            &count, d.x.data(), d.y.data(), px.data(), py.data(), idx.data(), 1 | 4, half));
        benchmark::DoNotOptimize(px.data());
    }
    state.SetItemsProcessed(state.iterations() * n);
}

void search_window(benchmark::State& state, int points) {
    const int n = static_cast<int>(state.range(0));
    const Data& d = data_of_size(n);
    std::vector<double> px(n), py(n);
    std::vector<int> idx(n);
    for (auto _ : state) {
        int count = n;
        benchmark::DoNotOptimize(zemath_find_peaks_by_search_window(
            &count, d.x.data(), d.y.data(), px.data(), py.data(), idx.data(), 1 | 4,
            static_cast<double>(points), -1.0));
        benchmark::DoNotOptimize(px.data());
    }
    state.SetItemsProcessed(state.iterations() * n);
}

void BM_local_maximum_h5(benchmark::State& s) {
    local_maximum(s, 5);
}
void BM_local_maximum_h50(benchmark::State& s) {
    local_maximum(s, 50);
}
void BM_search_window_w11(benchmark::State& s) {
    search_window(s, 11);
}
void BM_search_window_w101(benchmark::State& s) {
    search_window(s, 101);
}

}  // namespace

#define SIZES ->Arg(10000)->Arg(1000000)->Arg(10000000)->Unit(benchmark::kMillisecond)
BENCHMARK(BM_local_maximum_h5) SIZES;
BENCHMARK(BM_local_maximum_h50) SIZES;
BENCHMARK(BM_search_window_w11) SIZES;
BENCHMARK(BM_search_window_w101) SIZES;

BENCHMARK_MAIN();
