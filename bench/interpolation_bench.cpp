// zemath_interpolate with as many new abscissas as data points (n = 1e4, 1e6, 1e7):
// uneven ascending x, y = sin(x) + noise, new x uniform over the data's range and sorted
// (one sweep) or, for the linear method, in random order (bisection). Each call builds the
// interpolant and evaluates it, as the SciPy peer does (bench/table/families/interpolation.py:
// numpy.interp, CubicSpline natural / not-a-knot, Akima1DInterpolator, PchipInterpolator).
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <random>
#include <vector>

#include "zemath.h"

namespace {

struct Data {
    std::vector<double> x, y, sorted, shuffled;
};

const Data& data_of_size(int n) {
    static std::map<int, Data> cache;
    Data& d = cache[n];
    if (d.x.empty()) {
        std::mt19937_64 gen(20261123);
        std::uniform_real_distribution<double> step(0.2, 1.5), unit(0, 1);
        std::normal_distribution<double> noise(0, 0.1);
        d.x.resize(n);
        d.y.resize(n);
        double acc = 0;
        for (int i = 0; i < n; ++i) {
            acc += step(gen);
            d.x[i] = acc;
            d.y[i] = std::sin(acc) + noise(gen);
        }
        d.sorted.resize(n);
        for (double& t : d.sorted) t = d.x.front() + unit(gen) * (d.x.back() - d.x.front());
        d.shuffled = d.sorted;
        std::sort(d.sorted.begin(), d.sorted.end());
    }
    return d;
}

void run(benchmark::State& state, int method, bool sorted) {
    const int n = static_cast<int>(state.range(0));
    const Data& d = data_of_size(n);
    const std::vector<double>& t = sorted ? d.sorted : d.shuffled;
    std::vector<double> out(n);
    for (auto _ : state) {
        benchmark::DoNotOptimize(zemath_interpolate(d.x.data(), d.y.data(), n, t.data(), n,
                                                    out.data(), method, ZEMATH_OUTSIDE_MISSING));
        benchmark::DoNotOptimize(out.data());
    }
    state.SetItemsProcessed(state.iterations() * n);
}

void BM_linear(benchmark::State& s) {
    run(s, ZEMATH_INTERP_LINEAR, true);
}
void BM_linear_unsorted(benchmark::State& s) {
    run(s, ZEMATH_INTERP_LINEAR, false);
}
void BM_spline_natural(benchmark::State& s) {
    run(s, ZEMATH_INTERP_SPLINE_NATURAL, true);
}
void BM_spline_not_a_knot(benchmark::State& s) {
    run(s, ZEMATH_INTERP_SPLINE_NOT_A_KNOT, true);
}
void BM_akima(benchmark::State& s) {
    run(s, ZEMATH_INTERP_AKIMA, true);
}
void BM_pchip(benchmark::State& s) {
    run(s, ZEMATH_INTERP_PCHIP, true);
}

}  // namespace

#define SIZES ->Arg(10000)->Arg(1000000)->Arg(10000000)->Unit(benchmark::kMillisecond)
BENCHMARK(BM_linear) SIZES;
BENCHMARK(BM_linear_unsorted) SIZES;
BENCHMARK(BM_spline_natural) SIZES;
BENCHMARK(BM_spline_not_a_knot) SIZES;
BENCHMARK(BM_akima) SIZES;
BENCHMARK(BM_pchip) SIZES;
BENCHMARK_MAIN();
