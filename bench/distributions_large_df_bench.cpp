// Nanoseconds per call of Student's t, F and beta at large degrees of freedom and shapes next
// to Boost.Math in double and GSL, on the same arguments: df log-uniform in [1e3, 1e6] (t and
// F), beta shapes log-uniform in [100, 1e5], otherwise drawn as in distributions_bench.cpp.
// The deviates finv and betainv take their degrees of freedom and shapes log-uniform in [100,
// 1e5] (the shapes of F from 50 to 5e4), p log-uniform from 1e-12 to 1/2 in either tail.
// The ratio printed is ours over the faster peer.
#include <benchmark/benchmark.h>

#include <boost/math/distributions/beta.hpp>
#include <boost/math/distributions/fisher_f.hpp>
#include <boost/math/distributions/students_t.hpp>

#include <cmath>
#include <cstdio>
#include <map>
#include <random>
#include <string>
#include <vector>

#ifdef ZEMATH_BENCH_WITH_GSL
#include <gsl/gsl_cdf.h>
#include <gsl/gsl_errno.h>
#endif

#include "zemath/distributions.h"

#include "peer_ratio_reporter.hpp"

namespace {

constexpr size_t kArgs = 1024;  // a power of two

struct Args {
    std::vector<double> x, p, df, a, b;
};

const Args& args() {
    static const Args made = [] {
        Args r;
        std::mt19937_64 gen(20240521);
        std::uniform_real_distribution<double> unit(0.0, 1.0);
        for (size_t i = 0; i < kArgs; ++i) {
            r.x.push_back(-8 + 16 * unit(gen));
            const double tail = 0.5 * std::pow(10.0, -12 * unit(gen));
            r.p.push_back(i % 2 ? tail : 1 - tail);
            r.df.push_back(std::pow(10.0, 3 + 3 * unit(gen)));  // 1e3 .. 1e6
            r.a.push_back(std::pow(10.0, 2 + 3 * unit(gen)));   // 100 .. 1e5
            r.b.push_back(std::pow(10.0, 2 + 3 * unit(gen)));
        }
        return r;
    }();
    return made;
}

namespace bm = boost::math;
namespace bp = boost::math::policies;
using InDouble = bp::policy<bp::promote_double<false>>;

using Fn = double (*)(const Args&, size_t);

struct Call {
    const char* name;
    Fn ours, boostd, gsl;  // gsl null without GSL
};

#ifdef ZEMATH_BENCH_WITH_GSL
#define GSL(expr) [](const Args& r, size_t i) { return expr; }
#else
#define GSL(expr) nullptr
#endif
#define F(expr) [](const Args& r, size_t i) { return expr; }

const Call kCalls[] = {
    {"tcdf", F(tcdf(r.x[i], r.df[i], 2, nullptr)),
     F(bm::cdf(bm::students_t_distribution<double, InDouble>(r.df[i]), r.x[i])),
     GSL(gsl_cdf_tdist_P(r.x[i], r.df[i]))},
    {"tinv", F(tinv(r.p[i], r.df[i], 2, nullptr)),
     F(bm::quantile(bm::students_t_distribution<double, InDouble>(r.df[i]), r.p[i])),
     GSL(gsl_cdf_tdist_Pinv(r.p[i], r.df[i]))},
    {"betacdf", F(betacdf(r.p[i], r.a[i], r.b[i], 2, nullptr)),
     F(bm::cdf(bm::beta_distribution<double, InDouble>(r.a[i], r.b[i]), r.p[i])),
     GSL(gsl_cdf_beta_P(r.p[i], r.a[i], r.b[i]))},
    {"fcdf", F(fcdf(std::exp(r.x[i] / 2), r.df[i], r.df[kArgs - 1 - i], 2, nullptr)),
     F(bm::cdf(bm::fisher_f_distribution<double, InDouble>(r.df[i], r.df[kArgs - 1 - i]),
               std::exp(r.x[i] / 2))),
     GSL(gsl_cdf_fdist_P(std::exp(r.x[i] / 2), r.df[i], r.df[kArgs - 1 - i]))},
    {"finv", F(finv(r.p[i], r.a[i], r.b[i], nullptr)),
     F(bm::quantile(bm::fisher_f_distribution<double, InDouble>(r.a[i], r.b[i]), r.p[i])),
     GSL(gsl_cdf_fdist_Pinv(r.p[i], r.a[i], r.b[i]))},
    {"betainv", F(betainv(r.p[i], r.a[i], r.b[i], nullptr)),
     F(bm::quantile(bm::beta_distribution<double, InDouble>(r.a[i], r.b[i]), r.p[i])),
     GSL(gsl_cdf_beta_Pinv(r.p[i], r.a[i], r.b[i]))},
};

void run(benchmark::State& state, Fn f) {
    const Args& a = args();
    size_t i = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(f(a, i & (kArgs - 1)));
        ++i;
    }
}

}  // namespace

int main(int argc, char** argv) {
#ifdef ZEMATH_BENCH_WITH_GSL
    gsl_set_error_handler_off();
#endif
    for (const Call& c : kCalls) {
        const std::string base = std::string("BM_large_") + c.name;
        benchmark::RegisterBenchmark((base + "_zemath").c_str(), run, c.ours);
        benchmark::RegisterBenchmark((base + "_boostd").c_str(), run, c.boostd);
        if (c.gsl) benchmark::RegisterBenchmark((base + "_gsl").c_str(), run, c.gsl);
    }
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    zemath_bench::PeerRatioReporter reporter(zemath_bench::call_names(kCalls), "BM_large_",
                                             {zemath_bench::kBoostDouble, zemath_bench::kGsl}, 10);
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();
    return 0;
}
