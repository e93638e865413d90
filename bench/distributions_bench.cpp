// Nanoseconds per call of the central distribution exports next to Boost.Math called
// directly on the same arguments (default policy, double arguments: Boost promotes them to
// long double internally, as the library's back end does explicitly). The ratio is the cost
// of the library's wrapper: argument and tail checks, the export guard, and the work the
// back end adds for accuracy (arguments formed in long double, the smaller tail chosen, the
// deviates polished by Newton steps). Printed as a table after the runs.
#include <benchmark/benchmark.h>

#include <boost/math/distributions/chi_squared.hpp>
#include <boost/math/distributions/fisher_f.hpp>
#include <boost/math/distributions/gamma.hpp>
#include <boost/math/distributions/normal.hpp>
#include <boost/math/distributions/students_t.hpp>
#include <boost/math/special_functions/beta.hpp>

#include <cmath>
#include <cstdio>
#include <map>
#include <random>
#include <string>
#include <vector>

#include "zemath/distributions.h"

namespace {

constexpr size_t kArgs = 1024;  // argument sets cycled through, a power of two

struct Args {
    std::vector<double> x, p, df, a, b;
};

// Arguments spread over the body and both tails of each law, fixed seed.
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

template <class F>
void run(benchmark::State& state, F f) {
    const Args& a = args();
    size_t i = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(f(a, i & (kArgs - 1)));
        ++i;
    }
}

namespace bm = boost::math;

#define PAIR(name, ours, peer)                                \
    void BM_##name##_zemath(benchmark::State& s) {            \
        run(s, [](const Args& a, size_t i) { return ours; }); \
    }                                                         \
    void BM_##name##_boost(benchmark::State& s) {             \
        run(s, [](const Args& a, size_t i) { return peer; }); \
    }                                                         \
    BENCHMARK(BM_##name##_zemath);                            \
    BENCHMARK(BM_##name##_boost);

PAIR(normcdf, normcdf(a.x[i], 2, nullptr), bm::cdf(bm::normal_distribution<>(0, 1), a.x[i]))
PAIR(tcdf, tcdf(a.x[i], a.df[i], 2, nullptr),
     bm::cdf(bm::students_t_distribution<>(a.df[i]), a.x[i]))
PAIR(chi2cdf, chi2cdf(a.df[i] * (0.2 + std::fabs(a.x[i]) / 4), a.df[i], 2, nullptr),
     bm::cdf(bm::chi_squared_distribution<>(a.df[i]), a.df[i] * (0.2 + std::fabs(a.x[i]) / 4)))
PAIR(betacdf, betacdf(a.p[i], a.a[i], a.b[i], 2, nullptr), bm::ibeta(a.a[i], a.b[i], a.p[i]))
PAIR(gamcdf, gamcdf(std::fabs(a.x[i]) * a.a[i], a.a[i], a.b[i], 2, nullptr),
     bm::cdf(bm::gamma_distribution<>(a.a[i], a.b[i]), std::fabs(a.x[i]) * a.a[i]))
PAIR(norminv, norminv(a.p[i], nullptr), bm::quantile(bm::normal_distribution<>(0, 1), a.p[i]))
PAIR(tinv, tinv(a.p[i], a.df[i], 2, nullptr),
     bm::quantile(bm::students_t_distribution<>(a.df[i]), a.p[i]))
PAIR(finv, finv(a.p[i], a.a[i] * 10, a.b[i] * 10, nullptr),
     bm::quantile(bm::fisher_f_distribution<>(a.a[i] * 10, a.b[i] * 10), a.p[i]))

// Collects the per-call CPU times (the machine may be shared) so that the ratios can be printed
// after the usual output.
class RatioReporter : public benchmark::ConsoleReporter {
  public:
    void ReportRuns(const std::vector<Run>& runs) override {
        for (const Run& r : runs) times_[r.benchmark_name()] = r.GetAdjustedCPUTime();
        ConsoleReporter::ReportRuns(runs);
    }
    void Finalize() override {
        ConsoleReporter::Finalize();
        std::printf("\n%-10s %12s %12s %8s\n", "function", "zemath ns", "boost ns", "ratio");
        for (const auto& [name, t] : times_) {
            const auto cut = name.find("_zemath");
            if (cut == std::string::npos) continue;
            const std::string base = name.substr(3, cut - 3);
            const auto peer = times_.find("BM_" + base + "_boost");
            if (peer == times_.end()) continue;
            std::printf("%-10s %12.1f %12.1f %8.2f\n", base.c_str(), t, peer->second,
                        t / peer->second);
        }
    }

  private:
    std::map<std::string, double> times_;
};

}  // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();
    return 0;
}
