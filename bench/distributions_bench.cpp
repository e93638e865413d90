// Nanoseconds per call of the central distribution exports next to three peers on the same
// arguments: Boost.Math with its default policy (double arguments promoted to long double
// internally), Boost.Math evaluating in double (promote_double<false>), and GSL's cdf
// functions (where the build found GSL). Printed as a table after the runs; the ratio is
// ours over the faster of Boost-in-double and GSL.
//
// `distributions_bench --dump=FILE` writes, instead of timing, the arguments and the values
// of ours, Boost-in-double, GSL and Boost's default for the first kDumped argument sets of
// each function; bench/distributions_accuracy.py compares them with mpmath.
#include <benchmark/benchmark.h>

#include <boost/math/distributions/beta.hpp>
#include <boost/math/distributions/chi_squared.hpp>
#include <boost/math/distributions/fisher_f.hpp>
#include <boost/math/distributions/gamma.hpp>
#include <boost/math/distributions/normal.hpp>
#include <boost/math/distributions/students_t.hpp>

#include <cmath>
#include <cstdio>
#include <cstring>
#include <limits>
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

constexpr size_t kArgs = 1024;  // argument sets cycled through, a power of two
constexpr size_t kDumped = 400;

struct Args {
    std::vector<double> x, p, df, a, b;
};

// Arguments spread over the body and both tails of each law, fixed seed: x uniform in
// [-8, 8], p with its smaller tail log-uniform in [1e-12, 0.5] on either side, degrees of
// freedom log-uniform in [1, 1000], shapes and scales log-uniform in [0.1, 100].
const Args& args() {
    static const Args made = [] {
        Args r;
        std::mt19937_64 gen(20240521);
        std::uniform_real_distribution<double> unit(0.0, 1.0);
        for (size_t i = 0; i < kArgs; ++i) {
            const double u = unit(gen);
            r.x.push_back(-8 + 16 * u);
            const double tail = 0.5 * std::pow(10.0, -12 * unit(gen));  // 1e-12 .. 0.5
            r.p.push_back(i % 2 ? tail : 1 - tail);
            r.df.push_back(std::pow(10.0, 3 * unit(gen)));  // 1 .. 1000
            r.a.push_back(std::pow(10.0, -1 + 3 * unit(gen)));
            r.b.push_back(std::pow(10.0, -1 + 3 * unit(gen)));
        }
        return r;
    }();
    return made;
}

namespace bm = boost::math;
namespace bp = boost::math::policies;
using InDouble = bp::policy<bp::promote_double<false>>;

// The arguments of each function from the i-th set (at most three).
struct Call {
    const char* name;
    double (*args)(const Args&, size_t, int);  // argument k of set i
    int arity;
    double (*ours)(double, double, double);
    double (*boost)(double, double, double);
    double (*boostd)(double, double, double);
    double (*gsl)(double, double, double);  // null: GSL not linked
};

double chi2_x(const Args& a, size_t i) {
    return a.df[i] * (0.2 + std::fabs(a.x[i]) / 4);
}

template <class Dist>
double cdf_of(const Dist& d, double x) {
    return bm::cdf(d, x);
}

#ifdef ZEMATH_BENCH_WITH_GSL
#define GSL(expr) [](double u, double v, double w) { return (void)u, (void)v, (void)w, expr; }
#else
#define GSL(expr) nullptr
#endif
#define F3(expr) [](double u, double v, double w) { return (void)u, (void)v, (void)w, expr; }
#define ARGS(e0, e1, e2)                                               \
    [](const Args& a, size_t i, int k) {                               \
        return k == 0 ? double(e0) : k == 1 ? double(e1) : double(e2); \
    }

const Call kCalls[] = {
    {"normcdf", ARGS(a.x[i], 0, 0), 1, F3(normcdf(u, 2, nullptr)),
     F3(bm::cdf(bm::normal_distribution<>(0, 1), u)),
     F3(bm::cdf(bm::normal_distribution<double, InDouble>(0, 1), u)), GSL(gsl_cdf_ugaussian_P(u))},
    {"norminv", ARGS(a.p[i], 0, 0), 1, F3(norminv(u, nullptr)),
     F3(bm::quantile(bm::normal_distribution<>(0, 1), u)),
     F3(bm::quantile(bm::normal_distribution<double, InDouble>(0, 1), u)),
     GSL(gsl_cdf_ugaussian_Pinv(u))},
    {"tcdf", ARGS(a.x[i], a.df[i], 0), 2, F3(tcdf(u, v, 2, nullptr)),
     F3(bm::cdf(bm::students_t_distribution<>(v), u)),
     F3(bm::cdf(bm::students_t_distribution<double, InDouble>(v), u)), GSL(gsl_cdf_tdist_P(u, v))},
    {"tinv", ARGS(a.p[i], a.df[i], 0), 2, F3(tinv(u, v, 2, nullptr)),
     F3(bm::quantile(bm::students_t_distribution<>(v), u)),
     F3(bm::quantile(bm::students_t_distribution<double, InDouble>(v), u)),
     GSL(gsl_cdf_tdist_Pinv(u, v))},
    {"chi2cdf", ARGS(chi2_x(a, i), a.df[i], 0), 2, F3(chi2cdf(u, v, 2, nullptr)),
     F3(bm::cdf(bm::chi_squared_distribution<>(v), u)),
     F3(bm::cdf(bm::chi_squared_distribution<double, InDouble>(v), u)), GSL(gsl_cdf_chisq_P(u, v))},
    {"chi2inv", ARGS(a.p[i], a.df[i], 0), 2, F3(chi2inv(u, v, nullptr)),
     F3(bm::quantile(bm::chi_squared_distribution<>(v), u)),
     F3(bm::quantile(bm::chi_squared_distribution<double, InDouble>(v), u)),
     GSL(gsl_cdf_chisq_Pinv(u, v))},
    {"gamcdf", ARGS(std::fabs(a.x[i]) * a.a[i], a.a[i], a.b[i]), 3, F3(gamcdf(u, v, w, 2, nullptr)),
     F3(bm::cdf(bm::gamma_distribution<>(v, w), u)),
     F3(bm::cdf(bm::gamma_distribution<double, InDouble>(v, w), u)), GSL(gsl_cdf_gamma_P(u, v, w))},
    {"gaminv", ARGS(a.p[i], a.a[i], a.b[i]), 3, F3(gaminv(u, v, w, nullptr)),
     F3(bm::quantile(bm::gamma_distribution<>(v, w), u)),
     F3(bm::quantile(bm::gamma_distribution<double, InDouble>(v, w), u)),
     GSL(gsl_cdf_gamma_Pinv(u, v, w))},
    {"betacdf", ARGS(a.p[i], a.a[i], a.b[i]), 3, F3(betacdf(u, v, w, 2, nullptr)),
     F3(bm::cdf(bm::beta_distribution<>(v, w), u)),
     F3(bm::cdf(bm::beta_distribution<double, InDouble>(v, w), u)), GSL(gsl_cdf_beta_P(u, v, w))},
    {"betainv", ARGS(a.p[i], a.a[i], a.b[i]), 3, F3(betainv(u, v, w, nullptr)),
     F3(bm::quantile(bm::beta_distribution<>(v, w), u)),
     F3(bm::quantile(bm::beta_distribution<double, InDouble>(v, w), u)),
     GSL(gsl_cdf_beta_Pinv(u, v, w))},
    {"fcdf", ARGS(std::exp(a.x[i] / 2), 10 * a.a[i], 10 * a.b[i]), 3, F3(fcdf(u, v, w, 2, nullptr)),
     F3(bm::cdf(bm::fisher_f_distribution<>(v, w), u)),
     F3(bm::cdf(bm::fisher_f_distribution<double, InDouble>(v, w), u)),
     GSL(gsl_cdf_fdist_P(u, v, w))},
    {"finv", ARGS(a.p[i], 10 * a.a[i], 10 * a.b[i]), 3, F3(finv(u, v, w, nullptr)),
     F3(bm::quantile(bm::fisher_f_distribution<>(v, w), u)),
     F3(bm::quantile(bm::fisher_f_distribution<double, InDouble>(v, w), u)),
     GSL(gsl_cdf_fdist_Pinv(u, v, w))},
};

// The argument sets of one function, unpacked once so that the timed loop only reads them.
struct Unpacked {
    std::vector<double> u, v, w;
};

Unpacked unpack(const Call& c) {
    const Args& a = args();
    Unpacked r;
    for (size_t i = 0; i < kArgs; ++i) {
        r.u.push_back(c.args(a, i, 0));
        r.v.push_back(c.args(a, i, 1));
        r.w.push_back(c.args(a, i, 2));
    }
    return r;
}

void run(benchmark::State& state, const Call& c, double (*f)(double, double, double)) {
    const Unpacked a = unpack(c);
    size_t i = 0;
    for (auto _ : state) {
        const size_t k = i & (kArgs - 1);
        benchmark::DoNotOptimize(f(a.u[k], a.v[k], a.w[k]));
        ++i;
    }
}

void register_all() {
    for (const Call& c : kCalls) {
        const std::string base = std::string("BM_") + c.name;
        benchmark::RegisterBenchmark((base + "_zemath").c_str(), run, c, c.ours);
        benchmark::RegisterBenchmark((base + "_boost").c_str(), run, c, c.boost);
        benchmark::RegisterBenchmark((base + "_boostd").c_str(), run, c, c.boostd);
        if (c.gsl) benchmark::RegisterBenchmark((base + "_gsl").c_str(), run, c, c.gsl);
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
        const Unpacked a = unpack(c);
        for (size_t i = 0; i < kDumped; ++i) {
            const double u = a.u[i], v = a.v[i], w = a.w[i];
            std::fprintf(out, "%s %.17g %.17g %.17g %.17g %.17g %.17g %.17g\n", c.name, u, v, w,
                         c.ours(u, v, w), c.boostd(u, v, w), c.gsl ? c.gsl(u, v, w) : kNone,
                         c.boost(u, v, w));
        }
    }
    std::fclose(out);
}

}  // namespace

int main(int argc, char** argv) {
#ifdef ZEMATH_BENCH_WITH_GSL
    gsl_set_error_handler_off();  // GSL's inverses report failures by aborting otherwise
#endif
    for (int i = 1; i < argc; ++i) {
        if (std::strncmp(argv[i], "--dump=", 7) == 0) {
            dump(argv[i] + 7);
            return 0;
        }
    }
    register_all();
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    zemath_bench::PeerRatioReporter reporter(
        zemath_bench::call_names(kCalls), "BM_",
        {zemath_bench::kBoostLongDouble, zemath_bench::kBoostDouble, zemath_bench::kGsl}, 10);
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();
    return 0;
}
