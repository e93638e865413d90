// Adaptive quadrature (d01sjc on finite ranges, d01smc on infinite ones) at relative
// accuracy 1e-10 with at most 500 subintervals, the settings integralKS uses, on classic
// integrands: smooth, end-point singular, oscillating, a slow tail with a singular bound,
// the Gaussian over the line. Counters: integrand evaluations and subintervals per
// integral. bench/table/families/quadrature.py sets the same integrals beside
// scipy.integrate.quad in one process.
#include <benchmark/benchmark.h>

#include <cmath>

#include "platform/nag/d01.hpp"

namespace {

using namespace zemath::nag;

struct Case {
    const char* name;
    double (*f)(double);
    int kind;  // 0 finite [a, b]; 1 [a, inf); 2 (-inf, inf)
    double a, b;
};

const Case kCases[] = {
    {"x^2 e^-x on [0, 5]", [](double x) { return x * x * std::exp(-x); }, 0, 0.0, 5.0},
    {"x^-0.9 on (0, 1]", [](double x) { return std::pow(x, -0.9); }, 0, 0.0, 1.0},
    {"log(x)/sqrt(x) on (0, 1]", [](double x) { return std::log(x) / std::sqrt(x); }, 0, 0.0, 1.0},
    {"cos(100 sin x) on [0, pi]", [](double x) { return std::cos(100 * std::sin(x)); }, 0, 0.0,
     M_PI},
    {"1/((1+x) sqrt x) on (0, inf)", [](double x) { return 1 / ((1 + x) * std::sqrt(x)); }, 1, 0.0,
     0.0},
    {"e^-x^2 on the line", [](double x) { return std::exp(-x * x); }, 2, 0.0, 0.0},
};

double call(double x, void* comm) {
    return reinterpret_cast<double (*)(double)>(comm)(x);
}

void BM_quadrature(benchmark::State& state) {
    const Case& c = kCases[state.range(0)];
    state.SetLabel(c.name);
    void* comm = reinterpret_cast<void*>(c.f);
    double result = 0, abserr = 0;
    Nag_QuadProgress qp;
    NagError fail;
    for (auto _ : state) {
        if (c.kind == 0)
            d01sjc(call, c.a, c.b, 1e-300, 1e-10, 500, &result, &abserr, &qp, comm, &fail);
        else
            d01smc(call,
                   c.kind == 1 ? Nag_BoundInterval::Nag_UpperSemiInfinite
                               : Nag_BoundInterval::Nag_Infinite,
                   c.a, 1e-300, 1e-10, 500, &result, &abserr, &qp, comm, &fail);
        benchmark::DoNotOptimize(result);
    }
    state.counters["evaluations"] = qp.fun_count;
    state.counters["subintervals"] = qp.num_subint;
    state.counters["failed"] = fail.failed() ? 1 : 0;
}
BENCHMARK(BM_quadrature)->DenseRange(0, 5);

}  // namespace

BENCHMARK_MAIN();
