// Nanoseconds per call of the non-central distribution exports next to Boost.Math's
// non-central laws on the same random arguments, Boost with its default policy (double
// arguments promoted to long double internally) and evaluating in double
// (promote_double<false>); GSL has no non-central laws. Printed as a table after the runs;
// the ratio is ours over Boost-in-double.
//
// `distributions_noncentral_bench --dump=FILE` writes, instead of timing, the arguments and
// the values of ours, Boost-in-double, a NaN in GSL's column and Boost's default for the
// first kDumped argument sets of each function; bench/distributions_accuracy.py compares
// them with mpmath.
#include <benchmark/benchmark.h>

#include <boost/math/distributions/non_central_beta.hpp>
#include <boost/math/distributions/non_central_chi_squared.hpp>
#include <boost/math/distributions/non_central_f.hpp>
#include <boost/math/distributions/non_central_t.hpp>

#include <cmath>
#include <cstdio>
#include <cstring>
#include <limits>
#include <map>
#include <random>
#include <string>
#include <vector>

#include "zemath/distributions.h"

#include "peer_ratio_reporter.hpp"

namespace {

constexpr size_t kArgs = 1024;  // argument sets cycled through, a power of two
constexpr size_t kDumped = 400;

namespace bm = boost::math;
namespace bp = boost::math::policies;
using InDouble = bp::policy<bp::promote_double<false>>;

// Four arguments per call: the point and up to three parameters.
struct Set {
    double u, v, w, z;
};
using Fn = double (*)(const Set&);

// Arguments over the body and both tails of each law, fixed seed: degrees of freedom and
// shapes log-uniform in [1, 100] (t: [1, 1000]), non-centrality log-uniform in [0.1, 100]
// (t: delta uniform in [-5, 10]), the point spread from the lower to the upper tail
// around the mean. "nct_far": the t law where its integral over the scale law runs, half
// the sets with |delta| log-uniform in [40, 1e4] and df in [1, 1e5], half with df
// log-uniform in [1e5, 1e10] and |delta| in [1e-3, 1e4], either sign (Boost's series takes
// milliseconds at the largest |delta|, so its rows average over fewer of the sets).
// "nct_huge": |t| log-uniform in [1e10, DBL_MAX] of either sign, df log-uniform in [1, 1e10],
// |delta| log-uniform in [1e-3, 1e4] of either sign (the far lower tail's power form for
// t <= -1e10; most of these results are 0 or 1, the rest down to the subnormal range).
std::vector<Set> make(const char* law) {
    std::mt19937_64 gen(20240611);
    std::uniform_real_distribution<double> unit(0.0, 1.0);
    auto log_uniform = [&](double lo, double hi) { return lo * std::pow(hi / lo, unit(gen)); };
    std::vector<Set> r;
    const std::string name(law);
    for (size_t i = 0; i < kArgs; ++i) {
        const double spread = -4 + 8 * unit(gen);  // standard deviations from the mean
        if (name == "nct") {
            const double df = log_uniform(1, 1000), delta = -5 + 15 * unit(gen);
            r.push_back({delta + spread * (1 + std::fabs(delta) / std::sqrt(df)), df, delta, 0});
        } else if (name == "nct_far") {
            const bool large_delta = i % 2 == 0;
            const double df = large_delta ? log_uniform(1, 1e5) : log_uniform(1e5, 1e10);
            const double sign = unit(gen) < 0.5 ? -1.0 : 1.0;
            const double delta =
                sign * (large_delta ? log_uniform(40, 1e4) : log_uniform(1e-3, 1e4));
            r.push_back({delta + spread * (1 + std::fabs(delta) / std::sqrt(df)), df, delta, 0});
        } else if (name == "nct_huge") {
            const double t = (unit(gen) < 0.5 ? -1.0 : 1.0) *
                             log_uniform(1e10, std::numeric_limits<double>::max());
            const double df = log_uniform(1, 1e10);
            const double delta = (unit(gen) < 0.5 ? -1.0 : 1.0) * log_uniform(1e-3, 1e4);
            r.push_back({t, df, delta, 0});
        } else if (name == "ncchi2") {
            const double df = log_uniform(1, 100), lambda = log_uniform(0.1, 100);
            const double x = df + lambda + spread * std::sqrt(2 * (df + 2 * lambda));
            r.push_back({std::fmax(x, 1e-3 * (df + lambda)), df, lambda, 0});
        } else if (name == "ncf") {
            const double df1 = log_uniform(1, 100), df2 = log_uniform(1, 100);
            const double lambda = log_uniform(0.1, 100);
            r.push_back({(1 + lambda / df1) * std::exp(spread / 2), df1, df2, lambda});
        } else {
            const double a = log_uniform(1, 100), b = log_uniform(1, 100);
            const double lambda = log_uniform(0.1, 100);
            r.push_back({1 / (1 + std::exp(-spread)), a, b, lambda});
        }
    }
    return r;
}

struct Call {
    const char* name;
    const char* law;
    int arity;  // arguments the function takes: the point and the parameters
    Fn ours, boost, boostd;
};

const Call kCalls[] = {
    {"nctcdf", "nct", 3, [](const Set& s) { return nctcdf(s.u, s.v, s.w, 100, nullptr); },
     [](const Set& s) { return bm::cdf(bm::non_central_t_distribution<>(s.v, s.w), s.u); },
     [](const Set& s) {
         return bm::cdf(bm::non_central_t_distribution<double, InDouble>(s.v, s.w), s.u);
     }},
    {"nctcdf_far", "nct_far", 3, [](const Set& s) { return nctcdf(s.u, s.v, s.w, 100, nullptr); },
     [](const Set& s) { return bm::cdf(bm::non_central_t_distribution<>(s.v, s.w), s.u); },
     [](const Set& s) {
         return bm::cdf(bm::non_central_t_distribution<double, InDouble>(s.v, s.w), s.u);
     }},
    {"nctcdf_huge", "nct_huge", 3, [](const Set& s) { return nctcdf(s.u, s.v, s.w, 100, nullptr); },
     [](const Set& s) { return bm::cdf(bm::non_central_t_distribution<>(s.v, s.w), s.u); },
     [](const Set& s) {
         return bm::cdf(bm::non_central_t_distribution<double, InDouble>(s.v, s.w), s.u);
     }},
    {"ncchi2cdf", "ncchi2", 3, [](const Set& s) { return ncchi2cdf(s.u, s.v, s.w, nullptr); },
     [](const Set& s) {
         return bm::cdf(bm::non_central_chi_squared_distribution<>(s.v, s.w), s.u);
     },
     [](const Set& s) {
         return bm::cdf(bm::non_central_chi_squared_distribution<double, InDouble>(s.v, s.w), s.u);
     }},
    {"ncfcdf", "ncf", 4, [](const Set& s) { return ncfcdf(s.u, s.v, s.w, s.z, nullptr); },
     [](const Set& s) { return bm::cdf(bm::non_central_f_distribution<>(s.v, s.w, s.z), s.u); },
     [](const Set& s) {
         return bm::cdf(bm::non_central_f_distribution<double, InDouble>(s.v, s.w, s.z), s.u);
     }},
    {"ncbetacdf", "ncbeta", 4, [](const Set& s) { return ncbetacdf(s.u, s.v, s.w, s.z, nullptr); },
     [](const Set& s) { return bm::cdf(bm::non_central_beta_distribution<>(s.v, s.w, s.z), s.u); },
     [](const Set& s) {
         return bm::cdf(bm::non_central_beta_distribution<double, InDouble>(s.v, s.w, s.z), s.u);
     }},
};

void run(benchmark::State& state, const Call& c, Fn f) {
    const std::vector<Set> sets = make(c.law);
    size_t i = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(f(sets[i & (kArgs - 1)]));
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
        // bench/distributions_accuracy.py's Poisson series is not meant for the far sets
        // (tests/reference/gen_noncentral_t_large_delta.py gives their references).
        if (std::strcmp(c.law, "nct_far") == 0 || std::strcmp(c.law, "nct_huge") == 0) continue;
        const std::vector<Set> sets = make(c.law);
        for (size_t i = 0; i < kDumped; ++i) {
            const Set& s = sets[i];
            std::fprintf(out, "%s %.17g %.17g %.17g", c.name, s.u, s.v, s.w);
            if (c.arity == 4) std::fprintf(out, " %.17g", s.z);
            std::fprintf(out, " %.17g %.17g %.17g %.17g\n", c.ours(s), c.boostd(s), kNone,
                         c.boost(s));
        }
    }
    std::fclose(out);
}

}  // namespace

int main(int argc, char** argv) {
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
    }
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    zemath_bench::PeerRatioReporter reporter(
        zemath_bench::call_names(kCalls), "BM_",
        {zemath_bench::kBoostLongDouble, zemath_bench::kBoostDouble}, 10);
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();
    return 0;
}
