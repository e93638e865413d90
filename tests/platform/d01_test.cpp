// Adaptive quadrature: classic test integrands (smooth, endpoint singularities,
// oscillatory, infinite ranges) reach the requested tolerance with an honest error
// estimate; divergent and badly behaved ones are reported instead of looped on.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "platform/nag/d01.hpp"

namespace {

using namespace zemath::nag;

struct Fn {
    double (*f)(double);
};

double eval(double x, void* comm) {
    return static_cast<Fn*>(comm)->f(x);
}

const double kPi = std::acos(-1.0);

TEST(Quadrature, FiniteIntervalsReachTheirTolerance) {
    // {what, f, a, b, exact}
    const struct {
        const char* what;
        double (*f)(double);
        double a, b, exact;
    } cases[] = {
        {"x^2 e^-x", [](double x) { return x * x * std::exp(-x); }, 0, 5, 2 - 37 * std::exp(-5.0)},
        {"1/sqrt(x)", [](double x) { return 1 / std::sqrt(x); }, 0, 1, 2},
        {"log(x)/sqrt(x)", [](double x) { return std::log(x) / std::sqrt(x); }, 0, 1, -4},
        {"x^-0.9", [](double x) { return std::pow(x, -0.9); }, 0, 1, 10},
        {"sqrt(1 - x^2) (both ends)", [](double x) { return std::sqrt(std::fmax(0.0, 1 - x * x)); },
         -1, 1, kPi / 2},
        {"1/(1e-4 + x^2) peak", [](double x) { return 1 / (1e-4 + x * x); }, -1, 1,
         200 * std::atan(100.0)},
        {"x sin(30x)", [](double x) { return x * std::sin(30 * x); }, 0, 2 * kPi, -2 * kPi / 30},
        {"|x - 1/3|", [](double x) { return std::fabs(x - 1.0 / 3); }, 0, 1, 5.0 / 18},
    };
    for (double epsrel : {1e-6, 1e-10}) {
        for (const auto& c : cases) {
            Fn fn{c.f};
            double result = 0, abserr = 0;
            Nag_QuadProgress qp;
            NagError fail;
            d01sjc(eval, c.a, c.b, 0.0, epsrel, 500, &result, &abserr, &qp, &fn, &fail);
            EXPECT_FALSE(fail.failed()) << c.what << " code " << fail.code;
            const double tol = epsrel * std::fabs(c.exact);
            EXPECT_LE(std::fabs(result - c.exact), tol) << c.what << " epsrel " << epsrel;
            EXPECT_LE(std::fabs(result - c.exact),
                      std::fmax(abserr, 1e-14 * std::fmax(1.0, std::fabs(c.exact))))
                << c.what << ": error estimate too small";
            EXPECT_LE(qp.num_subint, 500);
        }
    }
}

TEST(Quadrature, InfiniteRangesReachTheirTolerance) {
    const struct {
        const char* what;
        double (*f)(double);
        Nag_BoundInterval kind;
        double bound, exact;
    } cases[] = {
        {"e^-x^2", [](double x) { return std::exp(-x * x); }, Nag_BoundInterval::Nag_Infinite, 5,
         std::sqrt(kPi)},
        {"e^-x on [2, inf)", [](double x) { return std::exp(-x); },
         Nag_BoundInterval::Nag_UpperSemiInfinite, 2, std::exp(-2.0)},
        {"e^x on (-inf, 1]", [](double x) { return std::exp(x); },
         Nag_BoundInterval::Nag_LowerSemiInfinite, 1, std::exp(1.0)},
        {"1/(1+x^2)", [](double x) { return 1 / (1 + x * x); }, Nag_BoundInterval::Nag_Infinite, 0,
         kPi},
        {"x^-1.5 on [1, inf)", [](double x) { return std::pow(x, -1.5); },
         Nag_BoundInterval::Nag_UpperSemiInfinite, 1, 2},
        {"log x / (1 + x^2) on [0, inf)", [](double x) { return std::log(x) / (1 + x * x); },
         Nag_BoundInterval::Nag_UpperSemiInfinite, 0, 0},
        {"e^-x / sqrt(x)", [](double x) { return std::exp(-x) / std::sqrt(x); },
         Nag_BoundInterval::Nag_UpperSemiInfinite, 0, std::sqrt(kPi)},
    };
    for (const auto& c : cases) {
        Fn fn{c.f};
        double result = 0, abserr = 0;
        NagError fail;
        d01smc(eval, c.kind, c.bound, 1e-13, 1e-10, 500, &result, &abserr, nullptr, &fn, &fail);
        EXPECT_FALSE(fail.failed()) << c.what << " code " << fail.code;
        EXPECT_LE(std::fabs(result - c.exact), std::fmax(1e-10 * std::fabs(c.exact), 1e-13))
            << c.what;
    }
}

TEST(Quadrature, DivergentAndRefusedCallsFail) {
    const struct {
        const char* what;
        double (*f)(double);
        bool infinite;
        double a, b;
    } cases[] = {
        {"1/x on [0, 1]", [](double x) { return 1 / x; }, false, 0, 1},
        {"1/x^2 on [-1, 1]", [](double x) { return 1 / (x * x); }, false, -1, 1},
        {"sin(1/x) wildly", [](double x) { return std::sin(1 / x) / x; }, false, 0, 1},
        {"1/x on [1, inf)", [](double x) { return 1 / x; }, true, 1, 0},
        {"sin x on [0, inf)", [](double x) { return std::sin(x); }, true, 0, 0},
    };
    for (const auto& c : cases) {
        Fn fn{c.f};
        double result = 0, abserr = 0;
        NagError fail;
        if (c.infinite)
            d01smc(eval, Nag_BoundInterval::Nag_UpperSemiInfinite, c.a, 0.0, 1e-10, 200, &result,
                   &abserr, nullptr, &fn, &fail);
        else
            d01sjc(eval, c.a, c.b, 0.0, 1e-10, 200, &result, &abserr, nullptr, &fn, &fail);
        EXPECT_TRUE(fail.failed()) << c.what << " gave " << result;
    }
    Fn fn{[](double x) { return x; }};
    double result = 0, abserr = 0;
    NagError fail;
    d01sjc(eval, 0, 1, 0.0, 1e-10, 0, &result, &abserr, nullptr, &fn, &fail);
    EXPECT_EQ(fail.code, NE_INT_ARG_LT);
    d01sjc(eval, 0, std::numeric_limits<double>::infinity(), 0.0, 1e-10, 10, &result, &abserr,
           nullptr, &fn, &fail);
    EXPECT_EQ(fail.code, NE_REAL);
    d01sjc(eval, 0, 1, 0.0, 0.0, 10, &result, &abserr, nullptr, &fn, &fail);
    EXPECT_EQ(fail.code, NE_REAL);
    d01smc(eval, static_cast<Nag_BoundInterval>(7), 0, 0.0, 1e-10, 10, &result, &abserr, nullptr,
           &fn, &fail);
    EXPECT_EQ(fail.code, NE_BAD_PARAM);
}

}  // namespace
