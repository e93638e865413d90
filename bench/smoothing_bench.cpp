// Smoothing filters at 1e4, 1e6 and 1e7 points, beside bench/table/families/smoothing.py (SciPy and
// NumPy on the same sizes): Savitzky-Golay window 51 order 3 (end fits, like SciPy's
// 'interp', and mirror padding), adjacent average window 51, median filter at windows 11,
// 51 and 201 (growth with the window), binomial smoothing (10 passes) and the FFT low-pass,
// loess (degree 1, 21-point neighbourhoods; robust, 1000-point neighbourhoods on uneven
// abscissae as the table's lowess row) and the exponential average.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <random>
#include <vector>

#include "zemath.h"

namespace {

// A sine with standard normal noise (the peer uses the same recipe).
const std::vector<double>& data_of_size(int n) {
    static std::map<int, std::vector<double>> cache;
    auto& v = cache[n];
    if (v.empty()) {
        std::mt19937_64 gen(20261123);
        std::normal_distribution<double> normal;
        v.resize(n);
        for (int i = 0; i < n; ++i) v[i] = std::sin(i * 1e-3) + normal(gen);
    }
    return v;
}

template <class Call>
void run(benchmark::State& state, Call call) {
    const int n = static_cast<int>(state.range(0));
    const std::vector<double>& in = data_of_size(n);
    std::vector<double> out(n);
    for (auto _ : state) {
        benchmark::DoNotOptimize(call(in.data(), out.data(), n));
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * n);
}

void BM_savgol_51_3_endfit(benchmark::State& s) {
    run(s, [](const double* in, double* out, int n) {
        return zemath_savitsky_golay(in, out, n, 25, 25, 3, 0, 0);
    });
}
void BM_savgol_51_3_mirror(benchmark::State& s) {
    run(s, [](const double* in, double* out, int n) {
        return zemath_savitsky_golay(in, out, n, 25, 25, 3, 0, 1);
    });
}
void BM_adjave_51_mirror(benchmark::State& s) {
    run(s, [](const double* in, double* out, int n) {
        return zemath_adjave_smooth(in, out, n, 25, 1, false);
    });
}
void BM_median_11(benchmark::State& s) {
    run(s, [](const double* in, double* out, int n) {
        return zemath_median_filter(n, in, out, 5, 50.0, 1, false);
    });
}
void BM_median_51(benchmark::State& s) {
    run(s, [](const double* in, double* out, int n) {
        return zemath_median_filter(n, in, out, 25, 50.0, 1, false);
    });
}
void BM_median_201(benchmark::State& s) {
    run(s, [](const double* in, double* out, int n) {
        return zemath_median_filter(n, in, out, 100, 50.0, 1, false);
    });
}
void BM_binomial_10_passes(benchmark::State& s) {
    run(s, [](const double* in, double* out, int n) {
        return zemath_binomial_smooth(n, in, out, 2, 10);
    });
}
void BM_fft_lowpass(benchmark::State& s) {
    // Cutoff at a tenth of the Nyquist frequency (n - 1) / 2.
    run(s, [](const double* in, double* out, int n) {
        return zemsp_fft_filter_smoothing(n, in, out, (n - 1) / 20.0);
    });
}
void BM_loess_21(benchmark::State& s) {
    run(s, [](const double* in, double* out, int n) {
        double span = 21.0 / n;
        return zemath_loess_xEvenly(n, 0, 0, &span, in, out, false);
    });
}
// The table's lowess row: uneven sorted abscissae, 1000-point neighbourhoods, degree 1,
// three robustness iterations.
void BM_lowess_1000_robust(benchmark::State& s) {
    const int n = static_cast<int>(s.range(0));
    std::mt19937_64 gen(20261124);
    std::uniform_real_distribution<double> uniform(0.0, 10.0);
    std::vector<double> x(n);
    for (double& v : x) v = uniform(gen);
    std::sort(x.begin(), x.end());
    run(s, [&](const double* in, double* out, int size) {
        double span = 1000.0 / size;
        return zemath_loess_xUnevenly(size, 2, 0, &span, x.data(), in, out, false);
    });
}
void BM_emovavg_20(benchmark::State& s) {
    run(s,
        [](const double* in, double* out, int n) { return zemath_emovavg(out, in, n, 20, 0, 0); });
}

}  // namespace

#define ZEMATH_SIZES ->Arg(10000)->Arg(1000000)->Arg(10000000)->Unit(benchmark::kMillisecond)
BENCHMARK(BM_savgol_51_3_endfit) ZEMATH_SIZES;
BENCHMARK(BM_savgol_51_3_mirror) ZEMATH_SIZES;
BENCHMARK(BM_adjave_51_mirror) ZEMATH_SIZES;
BENCHMARK(BM_median_11) ZEMATH_SIZES;
BENCHMARK(BM_median_51) ZEMATH_SIZES;
BENCHMARK(BM_median_201) ZEMATH_SIZES;
BENCHMARK(BM_binomial_10_passes) ZEMATH_SIZES;
BENCHMARK(BM_fft_lowpass) ZEMATH_SIZES;
BENCHMARK(BM_loess_21)->Arg(10000)->Arg(1000000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_lowess_1000_robust)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_emovavg_20) ZEMATH_SIZES;

BENCHMARK_MAIN();
