// Nanoseconds per call of the discrete distribution exports next to three peers on the same
// random arguments: Boost.Math with its default policy (double arguments promoted to long
// double internally), Boost.Math evaluating in double (promote_double<false>) and GSL (where
// the build found it). Printed as a table after the runs; the ratio is ours over the faster
// of Boost-in-double and GSL. Then, on a small fixed set of arguments each, the non-central
// t beside Boost, the bivariate normal, the studentized range and Lambert W.
//
// `distributions_other_bench --dump=FILE` writes, instead of timing, the arguments and the
// values of ours, Boost-in-double, GSL and Boost's default for the first kDumped argument
// sets of each discrete function; bench/distributions_accuracy.py compares them with mpmath.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <limits>
#include <map>
#include <random>
#include <string>
#include <vector>

#include <boost/math/distributions/binomial.hpp>
#include <boost/math/distributions/hypergeometric.hpp>
#include <boost/math/distributions/non_central_t.hpp>
#include <boost/math/distributions/poisson.hpp>
#include <boost/math/special_functions/lambert_w.hpp>

#ifdef ZEMATH_BENCH_WITH_GSL
#include <gsl/gsl_cdf.h>
#include <gsl/gsl_errno.h>
#include <gsl/gsl_randist.h>
#endif

#include "zemath/distributions.h"

#include "peer_ratio_reporter.hpp"

namespace {

namespace bm = boost::math;
namespace bp = boost::math::policies;
using InDouble = bp::policy<bp::promote_double<false>>;

// ---- the discrete laws on random arguments ----------------------------------------------

constexpr size_t kSets = 1024;  // argument sets cycled through, a power of two
constexpr size_t kDumped = 400;

// One argument set: the count k and up to three parameters (integers held exactly).
struct Set {
    double u, v, w, z;
};
using Fn = double (*)(const Set&);

unsigned as_unsigned(double v) {
    return static_cast<unsigned>(v);
}
int as_int(double v) {
    return static_cast<int>(v);
}

// Arguments over the body and both tails, fixed seed; the count k lies z standard
// deviations from the mean, z uniform in [-8, 8], clamped to the support:
//   binomial        n log-uniform in [1, 1e6], p with its smaller tail log-uniform in
//                   [1e-4, 0.5] on either side;
//   Poisson         lambda log-uniform in [0.01, 1e5];
//   hypergeometric  population N log-uniform in [2, 1e5], marked and sample sizes uniform
//                   in [0, N];
//   binomial_limit  the Poisson limit: n log-uniform in [1e3, 2^31 - 1], the mean n p
//                   log-uniform in [0.01, 50].
// Sets: binomial (k, n, p), Poisson (k, lambda), hypergeometric (k, m, N, l).
std::vector<Set> make(const char* law) {
    std::mt19937_64 gen(20261124);
    std::uniform_real_distribution<double> unit(0.0, 1.0);
    auto log_uniform = [&](double lo, double hi) { return lo * std::pow(hi / lo, unit(gen)); };
    auto count = [](double mean, double sd, double z, double lo, double hi) {
        return std::clamp(std::round(mean + z * sd), lo, hi);
    };
    const std::string name(law);
    std::vector<Set> r;
    for (size_t i = 0; i < kSets; ++i) {
        const double z = -8 + 16 * unit(gen);
        if (name == "binomial") {
            const double n = std::floor(log_uniform(1, 1e6 + 1));
            const double tail = 0.5 * std::pow(10.0, -3.7 * unit(gen));  // 1e-4 .. 0.5
            const double p = i % 2 ? tail : 1 - tail;
            r.push_back({count(n * p, std::sqrt(n * p * (1 - p)), z, 0, n), n, p, 0});
        } else if (name == "binomial_limit") {
            const double n = std::floor(log_uniform(1e3, 2147483647.0));
            const double p = log_uniform(0.01, 50) / n;
            r.push_back({count(n * p, std::sqrt(n * p * (1 - p)), z, 0, n), n, p, 0});
        } else if (name == "poisson") {
            const double lambda = log_uniform(0.01, 1e5);
            r.push_back({count(lambda, std::sqrt(lambda), z, 0, 1e9), lambda, 0, 0});
        } else {
            const double n = std::floor(log_uniform(2, 1e5 + 1));
            const double m = std::floor(unit(gen) * (n + 1)), l = std::floor(unit(gen) * (n + 1));
            const double lo = std::max(0.0, m + l - n), hi = std::min(m, l);
            const double mean = l * m / n;
            const double sd = std::sqrt(l * m * (n - l) * (n - m) / (n * n * (n - 1)));
            r.push_back({count(mean, sd, z, lo, hi), m, n, l});
        }
    }
    return r;
}

struct Call {
    const char* name;
    const char* law;
    Fn ours, boost, boostd;
    Fn gsl;  // null: GSL not linked
};

#ifdef ZEMATH_BENCH_WITH_GSL
#define GSL(expr) [](const Set& s) { return (void)s, expr; }
#else
#define GSL(expr) nullptr
#endif
#define F(expr) [](const Set& s) { return (void)s, expr; }

template <class Policy>
bm::binomial_distribution<double, Policy> binomial(const Set& s) {
    return bm::binomial_distribution<double, Policy>(s.v, s.w);
}
template <class Policy>
bm::hypergeometric_distribution<double, Policy> hypergeometric(const Set& s) {
    return bm::hypergeometric_distribution<double, Policy>(as_unsigned(s.v), as_unsigned(s.z),
                                                           as_unsigned(s.w));
}
using Default = bp::policy<>;

// "_upper": the upper tail P(X > k), tail code 1.
const Call kCalls[] = {
    {"binocdf", "binomial", F(binocdf(as_int(s.u), as_int(s.v), s.w, 2, nullptr)),
     F(bm::cdf(binomial<Default>(s), s.u)), F(bm::cdf(binomial<InDouble>(s), s.u)),
     GSL(gsl_cdf_binomial_P(as_unsigned(s.u), s.w, as_unsigned(s.v)))},
    {"binocdf_upper", "binomial", F(binocdf(as_int(s.u), as_int(s.v), s.w, 1, nullptr)),
     F(bm::cdf(bm::complement(binomial<Default>(s), s.u))),
     F(bm::cdf(bm::complement(binomial<InDouble>(s), s.u))),
     GSL(gsl_cdf_binomial_Q(as_unsigned(s.u), s.w, as_unsigned(s.v)))},
    {"binocdf_limit", "binomial_limit", F(binocdf(as_int(s.u), as_int(s.v), s.w, 2, nullptr)),
     F(bm::cdf(binomial<Default>(s), s.u)), F(bm::cdf(binomial<InDouble>(s), s.u)),
     GSL(gsl_cdf_binomial_P(as_unsigned(s.u), s.w, as_unsigned(s.v)))},
    {"binocdf_limit_upper", "binomial_limit", F(binocdf(as_int(s.u), as_int(s.v), s.w, 1, nullptr)),
     F(bm::cdf(bm::complement(binomial<Default>(s), s.u))),
     F(bm::cdf(bm::complement(binomial<InDouble>(s), s.u))),
     GSL(gsl_cdf_binomial_Q(as_unsigned(s.u), s.w, as_unsigned(s.v)))},
    {"binopdf", "binomial", F(binopdf(as_int(s.u), as_int(s.v), s.w, nullptr)),
     F(bm::pdf(binomial<Default>(s), s.u)), F(bm::pdf(binomial<InDouble>(s), s.u)),
     GSL(gsl_ran_binomial_pdf(as_unsigned(s.u), s.w, as_unsigned(s.v)))},
    {"poisscdf", "poisson", F(poisscdf(as_int(s.u), s.v, 2, nullptr)),
     F(bm::cdf(bm::poisson_distribution<double, Default>(s.v), s.u)),
     F(bm::cdf(bm::poisson_distribution<double, InDouble>(s.v), s.u)),
     GSL(gsl_cdf_poisson_P(as_unsigned(s.u), s.v))},
    {"poisscdf_upper", "poisson", F(poisscdf(as_int(s.u), s.v, 1, nullptr)),
     F(bm::cdf(bm::complement(bm::poisson_distribution<double, Default>(s.v), s.u))),
     F(bm::cdf(bm::complement(bm::poisson_distribution<double, InDouble>(s.v), s.u))),
     GSL(gsl_cdf_poisson_Q(as_unsigned(s.u), s.v))},
    {"poisspdf", "poisson", F(poisspdf(as_int(s.u), s.v, nullptr)),
     F(bm::pdf(bm::poisson_distribution<double, Default>(s.v), s.u)),
     F(bm::pdf(bm::poisson_distribution<double, InDouble>(s.v), s.u)),
     GSL(gsl_ran_poisson_pdf(as_unsigned(s.u), s.v))},
    {"hygecdf", "hypergeometric",
     F(hygecdf(as_int(s.u), as_int(s.v), as_int(s.w), as_int(s.z), 2, nullptr)),
     F(bm::cdf(hypergeometric<Default>(s), as_unsigned(s.u))),
     F(bm::cdf(hypergeometric<InDouble>(s), as_unsigned(s.u))),
     GSL(gsl_cdf_hypergeometric_P(as_unsigned(s.u), as_unsigned(s.v), as_unsigned(s.w - s.v),
                                  as_unsigned(s.z)))},
    {"hygecdf_upper", "hypergeometric",
     F(hygecdf(as_int(s.u), as_int(s.v), as_int(s.w), as_int(s.z), 1, nullptr)),
     F(bm::cdf(bm::complement(hypergeometric<Default>(s), as_unsigned(s.u)))),
     F(bm::cdf(bm::complement(hypergeometric<InDouble>(s), as_unsigned(s.u)))),
     GSL(gsl_cdf_hypergeometric_Q(as_unsigned(s.u), as_unsigned(s.v), as_unsigned(s.w - s.v),
                                  as_unsigned(s.z)))},
};

void run(benchmark::State& state, const Call& c, Fn f) {
    const std::vector<Set> sets = make(c.law);
    size_t i = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(f(sets[i & (kSets - 1)]));
        ++i;
    }
}

void dump(const char* path) {
    FILE* out = std::fopen(path, "w");
    if (!out) {
        std::perror(path);
        return;
    }
    constexpr double kNone = std::numeric_limits<double>::quiet_NaN();
    for (const Call& c : kCalls) {
        const std::vector<Set> sets = make(c.law);
        const bool four = std::strcmp(c.law, "hypergeometric") == 0;
        for (size_t i = 0; i < kDumped; ++i) {
            const Set& s = sets[i];
            std::fprintf(out, "%s %.17g %.17g %.17g", c.name, s.u, s.v, s.w);
            if (four) std::fprintf(out, " %.17g", s.z);
            std::fprintf(out, " %.17g %.17g %.17g %.17g\n", c.ours(s), c.boostd(s),
                         c.gsl ? c.gsl(s) : kNone, c.boost(s));
        }
    }
    std::fclose(out);
}

// ---- fixed argument sets --------------------------------------------------------------

constexpr std::size_t kArgs = 16;

template <class T>
const T& cycle(const std::array<T, kArgs>& args, std::size_t& i) {
    return args[i++ % kArgs];
}

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
// Many groups: r from 1e3 to 2^31 - 1, v from 5 to 1e4 and the v = infinity limit, q in
// the lower tail, the bulk and the upper tail (P from about 1e-10 to 1 - 1e-8), p likewise.
void BM_srangecdf_many(benchmark::State& state) {
    std::size_t i = 0;
    const std::array<int, 4> groups = {1000, 100000, 10000000, 2147483647};
    const std::array<double, 4> dfs = {5.0, 30.0, 1e4, INFINITY};
    const std::array<double, 5> scaled = {0.55, 0.8, 1.0, 1.2, 1.5};  // of 2 sqrt(2 ln r)
    for (auto _ : state) {
        const std::size_t j = i++;
        const int r = groups[j % 4];
        const double q = scaled[j % 5] * 2.0 * std::sqrt(2.0 * std::log(static_cast<double>(r)));
        benchmark::DoNotOptimize(srangecdf(q, dfs[j / 4 % 4], r, nullptr));
    }
}
void BM_srangeinv_many(benchmark::State& state) {
    std::size_t i = 0;
    const std::array<int, 4> groups = {1000, 100000, 10000000, 2147483647};
    const std::array<double, 4> dfs = {5.0, 30.0, 1e4, INFINITY};
    const std::array<double, 5> ps = {1e-10, 0.05, 0.5, 0.95, 1.0 - 1e-8};
    for (auto _ : state) {
        const std::size_t j = i++;
        benchmark::DoNotOptimize(srangeinv(ps[j % 5], dfs[j / 4 % 4], groups[j % 4], nullptr));
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

int main(int argc, char** argv) {
#ifdef ZEMATH_BENCH_WITH_GSL
    gsl_set_error_handler_off();  // GSL reports domain errors by aborting otherwise
#endif
    for (int i = 1; i < argc; ++i) {
        if (std::strncmp(argv[i], "--dump=", 7) == 0) {
            dump(argv[i] + 7);
            return 0;
        }
    }
    for (const Call& c : kCalls) {
        const std::string base = std::string("BM_") + c.name;
        benchmark::RegisterBenchmark((base + "_zemath").c_str(), run, c, c.ours);
        benchmark::RegisterBenchmark((base + "_boost").c_str(), run, c, c.boost);
        benchmark::RegisterBenchmark((base + "_boostd").c_str(), run, c, c.boostd);
        if (c.gsl) benchmark::RegisterBenchmark((base + "_gsl").c_str(), run, c, c.gsl);
    }
    benchmark::RegisterBenchmark("BM_nctcdf", BM_nctcdf);
    benchmark::RegisterBenchmark("BM_boost_non_central_t_cdf", BM_boost_non_central_t_cdf);
    benchmark::RegisterBenchmark("BM_bivarnormcdf", BM_bivarnormcdf);
    benchmark::RegisterBenchmark("BM_srangecdf", BM_srangecdf);
    benchmark::RegisterBenchmark("BM_srangeinv", BM_srangeinv);
    benchmark::RegisterBenchmark("BM_srangecdf_many", BM_srangecdf_many);
    benchmark::RegisterBenchmark("BM_srangeinv_many", BM_srangeinv_many);
    benchmark::RegisterBenchmark("BM_lambertW", BM_lambertW);
    benchmark::RegisterBenchmark("BM_boost_lambert_w0", BM_boost_lambert_w0);
    benchmark::RegisterBenchmark("BM_lambertW_offset", BM_lambertW_offset);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    zemath_bench::PeerRatioReporter reporter(
        zemath_bench::call_names(kCalls), "BM_",
        {zemath_bench::kBoostLongDouble, zemath_bench::kBoostDouble, zemath_bench::kGsl}, 20);
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();
    return 0;
}
