// Nanoseconds per call of the discrete and non-central distribution exports, the
// bivariate normal, the studentized range and Lambert W, each beside Boost.Math called
// directly (default policy) where Boost has the function. The arguments cycle through a
// small fixed set so that branch prediction does not see one repeated call.
#include <benchmark/benchmark.h>

#include <array>
#include <cstddef>

#include <boost/math/distributions/binomial.hpp>
#include <boost/math/distributions/non_central_t.hpp>
#include <boost/math/distributions/poisson.hpp>
#include <boost/math/special_functions/lambert_w.hpp>

#include "zemath/distributions.h"

namespace {

constexpr std::size_t kArgs = 16;

template <class T>
const T& cycle(const std::array<T, kArgs>& args, std::size_t& i) {
    return args[i++ % kArgs];
}

struct Binom {
    int k;
    int n;
    double p;
};
const std::array<Binom, kArgs> kBinom = {{{3, 10, 0.3},
                                          {50, 100, 0.5},
                                          {12, 40, 0.2},
                                          {700, 2000, 0.33},
                                          {0, 5, 0.9},
                                          {90, 100, 0.75},
                                          {5, 1000, 0.01},
                                          {400, 1000, 0.4},
                                          {1, 3, 0.5},
                                          {30, 60, 0.45},
                                          {6, 20, 0.1},
                                          {5000, 10000, 0.5},
                                          {2, 2000, 0.002},
                                          {17, 25, 0.6},
                                          {80, 90, 0.95},
                                          {10, 30, 0.3}}};
struct Pois {
    int k;
    double lambda;
};
const std::array<Pois, kArgs> kPois = {{{3, 0.75},
                                        {12, 9.2},
                                        {25, 34},
                                        {175, 175},
                                        {0, 2.0},
                                        {1000, 950},
                                        {40, 60},
                                        {5, 1.5},
                                        {8, 12.5},
                                        {100, 90},
                                        {2, 0.1},
                                        {20, 18},
                                        {300, 320},
                                        {7, 3.3},
                                        {60, 45},
                                        {11, 11}}};
struct Nct {
    double t;
    double df;
    double delta;
};
const std::array<Nct, kArgs> kNct = {{{2, 10, 1},
                                      {-1, 4, 0.5},
                                      {0.5, 30, 0.3},
                                      {5, 8, 3},
                                      {1, 2.5, -1},
                                      {3, 100, 2},
                                      {-2, 15, 1},
                                      {10, 5, 7},
                                      {1.5, 20, 1},
                                      {0.2, 3, 0},
                                      {4, 50, 4.5},
                                      {-0.5, 6, 0.2},
                                      {7, 12, 5},
                                      {2.5, 9, 2},
                                      {1, 1, 1},
                                      {6, 40, 6}}};
struct Bvn {
    double x;
    double y;
    double rho;
};
const std::array<Bvn, kArgs> kBvn = {{{0, 0, 0.5},
                                      {1, -0.5, -0.3},
                                      {1.5, 2, 0.9},
                                      {-1, 1, 0.2},
                                      {2, 2, -0.7},
                                      {0.3, 0.8, 0.1},
                                      {-0.5, 0.5, 0.6},
                                      {1, 1, 0.95},
                                      {-2, 3, -0.2},
                                      {0.5, -0.1, 0.4},
                                      {2.5, 1, 0.8},
                                      {0, 1, -0.5},
                                      {1.2, 0.7, 0.3},
                                      {3, -1, 0.5},
                                      {0.1, 0.2, 0.99},
                                      {-0.3, 2, 0.0}}};
const std::array<double, kArgs> kLambert = {0.5, 1,  4.5, 6,    7e7, 0.01, -0.2, -0.3,
                                            2,   10, 100, -0.1, 0.3, 3,    25,   1e5};

void BM_binocdf(benchmark::State& state) {
    std::size_t i = 0;
    for (auto _ : state) {
        const Binom& a = cycle(kBinom, i);
        benchmark::DoNotOptimize(binocdf(a.k, a.n, a.p, 2, nullptr));
    }
}
void BM_boost_binomial_cdf(benchmark::State& state) {
    std::size_t i = 0;
    for (auto _ : state) {
        const Binom& a = cycle(kBinom, i);
        benchmark::DoNotOptimize(
            boost::math::cdf(boost::math::binomial_distribution<>(a.n, a.p), a.k));
    }
}
void BM_poisscdf(benchmark::State& state) {
    std::size_t i = 0;
    for (auto _ : state) {
        const Pois& a = cycle(kPois, i);
        benchmark::DoNotOptimize(poisscdf(a.k, a.lambda, 2, nullptr));
    }
}
void BM_boost_poisson_cdf(benchmark::State& state) {
    std::size_t i = 0;
    for (auto _ : state) {
        const Pois& a = cycle(kPois, i);
        benchmark::DoNotOptimize(
            boost::math::cdf(boost::math::poisson_distribution<>(a.lambda), a.k));
    }
}
void BM_nctcdf(benchmark::State& state) {
    std::size_t i = 0;
    for (auto _ : state) {
        const Nct& a = cycle(kNct, i);
        benchmark::DoNotOptimize(nctcdf(a.t, a.df, a.delta, 100, nullptr));
    }
}
void BM_boost_non_central_t_cdf(benchmark::State& state) {
    std::size_t i = 0;
    for (auto _ : state) {
        const Nct& a = cycle(kNct, i);
        benchmark::DoNotOptimize(boost::math::cdf(boost::math::non_central_t(a.df, a.delta), a.t));
    }
}
void BM_bivarnormcdf(benchmark::State& state) {
    std::size_t i = 0;
    for (auto _ : state) {
        const Bvn& a = cycle(kBvn, i);
        benchmark::DoNotOptimize(bivarnormcdf(a.x, a.y, a.rho, nullptr));
    }
}
// The studentized range is a double integral: a few probabilities per iteration.
void BM_srangecdf(benchmark::State& state) {
    std::size_t i = 0;
    const std::array<double, 4> qs = {1.0, 2.5, 3.877, 6.0};
    for (auto _ : state) {
        const std::size_t j = i++;
        benchmark::DoNotOptimize(srangecdf(qs[j % 4], 10.0 + static_cast<double>(j % 3) * 10.0,
                                           3 + static_cast<int>(j % 5), nullptr));
    }
}
void BM_srangeinv(benchmark::State& state) {
    std::size_t i = 0;
    const std::array<double, 4> ps = {0.5, 0.9, 0.95, 0.99};
    for (auto _ : state) {
        const std::size_t j = i++;
        benchmark::DoNotOptimize(srangeinv(ps[j % 4], 20, 3 + static_cast<int>(j % 5), nullptr));
    }
}
void BM_lambertW(benchmark::State& state) {
    std::size_t i = 0;
    for (auto _ : state) {
        const double x = cycle(kLambert, i);
        benchmark::DoNotOptimize(lambertW(x, 0, 0, nullptr));
    }
}
void BM_boost_lambert_w0(benchmark::State& state) {
    std::size_t i = 0;
    for (auto _ : state) {
        const double x = cycle(kLambert, i);
        benchmark::DoNotOptimize(boost::math::lambert_w0(x));
    }
}
void BM_lambertW_offset(benchmark::State& state) {
    std::size_t i = 0;
    for (auto _ : state) {
        const double dx = 1e-6 * static_cast<double>(1 + i++ % 1000);
        benchmark::DoNotOptimize(lambertW(dx, 0, 1, nullptr));
    }
}

}  // namespace

BENCHMARK(BM_binocdf);
BENCHMARK(BM_boost_binomial_cdf);
BENCHMARK(BM_poisscdf);
BENCHMARK(BM_boost_poisson_cdf);
BENCHMARK(BM_nctcdf);
BENCHMARK(BM_boost_non_central_t_cdf);
BENCHMARK(BM_bivarnormcdf);
BENCHMARK(BM_srangecdf);
BENCHMARK(BM_srangeinv);
BENCHMARK(BM_lambertW);
BENCHMARK(BM_boost_lambert_w0);
BENCHMARK(BM_lambertW_offset);

BENCHMARK_MAIN();
