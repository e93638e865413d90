// Accuracy of the central distribution exports against the 50-digit mpmath references of
// tests/reference/gen_distributions_central.py (both tails down to 1e-300, parameters
// 1e-3 .. 1e6), and the identities any correct implementation keeps: quantile(cdf(x)) = x,
// the two tails sum to 1, the two-tailed probabilities add up. The worst relative error
// per function is printed; the committed table is
// tests/reference/distributions_central_worst_errors.txt.
#include <gtest/gtest.h>

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <cstdio>
#include <map>
#include <string>
#include <vector>

#include "stats/distribution_calls.hpp"
#include "zemath/distributions.h"

namespace {

using dist_test::Fn;

struct RefCase {
    Fn fn;
    const char* name;
    double args[3];
    int tail;
    double expected;
};

#define REF(fn, a0, a1, a2, tail, expected) {Fn::fn, #fn, {a0, a1, a2}, tail, expected},
#define REF_UTIL(fn, a0, a1, a2, expected)
const RefCase kCases[] = {
#include "reference/distributions_central_ref.inc"
};
#undef REF
#undef REF_UTIL

// The accuracy asked of every function: 1e-13 relative, about 450 ulp.
constexpr double kTolerance = 1e-13;

double relative_error(double got, double expected) {
    return std::fabs(got - expected) / std::max(std::fabs(expected), DBL_MIN);
}

std::string describe(const RefCase& c) {
    char text[160];
    std::snprintf(text, sizeof text, "%s(%.17g, %.17g, %.17g, tail %d)", c.name, c.args[0],
                  c.args[1], c.args[2], c.tail);
    return text;
}

TEST(DistributionAccuracy, EveryReferenceValueWithin1e13) {
    struct Worst {
        double error = 0;
        int count = 0;
        const RefCase* at = nullptr;
    };
    std::map<std::string, Worst> worst;
    for (const RefCase& c : kCases) {
        int status = -999;
        const double got = dist_test::call(c.fn, c.args, c.tail, &status);
        EXPECT_EQ(status, 0) << describe(c);
        const double err = relative_error(got, c.expected);
        Worst& w = worst[c.name];
        ++w.count;
        if (err >= w.error) w = {err, w.count, &c};
        EXPECT_LE(err, kTolerance) << describe(c) << " = " << got << ", expected " << c.expected;
    }
    std::printf("%-10s %6s %12s  worst at\n", "function", "cases", "worst rel");
    for (const auto& [name, w] : worst) {
        std::printf("%-10s %6d %12.3e  %s\n", name.c_str(), w.count, w.error,
                    describe(*w.at).c_str());
    }
    EXPECT_EQ(worst.size(), 24u) << "every export has reference values";
}

// ---- identities ------------------------------------------------------------------------

TEST(DistributionIdentities, TwoTailsSumToOne) {
    struct Case {
        const char* name;
        double (*cdf)(double x, int tail);
        std::vector<double> xs;
    };
    const Case cases[] = {
        {"normal", [](double x, int t) { return normcdf(x, t, nullptr); }, {-5, -0.3, 0, 1.1, 6}},
        {"t", [](double x, int t) { return tcdf(x, 3.5, t, nullptr); }, {-40, -1, 0, 0.2, 3, 1e3}},
        {"chi2", [](double x, int t) { return chi2cdf(x, 7.0, t, nullptr); }, {0.01, 3, 7, 15, 40}},
        {"F", [](double x, int t) { return fcdf(x, 4.0, 9.0, t, nullptr); }, {0.05, 0.9, 1.5, 8}},
        {"beta",
         [](double x, int t) { return betacdf(x, 2.5, 0.7, t, nullptr); },
         {1e-3, 0.3, 0.999}},
        {"gamma",
         [](double x, int t) { return gamcdf(x, 0.3, 2.0, t, nullptr); },
         {1e-5, 0.2, 1, 9}},
        {"lognormal",
         [](double x, int t) { return logncdf(x, 0.5, 2.0, t, nullptr); },
         {1e-3, 1, 300}},
    };
    for (const Case& c : cases) {
        for (double x : c.xs) {
            EXPECT_NEAR(c.cdf(x, 1) + c.cdf(x, 2), 1.0, 4 * DBL_EPSILON) << c.name << " at " << x;
        }
    }
    // Two-tailed significance and confidence add up too, and significance is twice the tail.
    for (double x : {0.0, 1e-8, 0.7, 2.5, 9.0}) {
        EXPECT_NEAR(normcdf(x, 3, nullptr) + normcdf(x, 4, nullptr), 1.0, 4 * DBL_EPSILON);
        EXPECT_NEAR(tcdf(x, 6.0, 3, nullptr) + tcdf(x, 6.0, 4, nullptr), 1.0, 4 * DBL_EPSILON);
        EXPECT_NEAR(normcdf(x, 3, nullptr), 2 * normcdf(x, 1, nullptr), 1e-15);
        EXPECT_NEAR(tcdf(-x, 6.0, 3, nullptr), 2 * tcdf(x, 6.0, 1, nullptr), 1e-15);
    }
}

// quantile(cdf(x)) = x where the cdf is taken on the lower side (below 1/2), so that the
// probability carries all its digits; the parameters keep the inverse well conditioned
// (x f(x) / F(x) of order one), so 1e-13 is a fair bound.
TEST(DistributionIdentities, QuantileOfCdfReturnsX) {
    struct Case {
        const char* name;
        double (*cdf)(double), (*inv)(double);
        std::vector<double> xs;
    };
    const Case cases[] = {
        {"normal",
         [](double x) { return normcdf(x, 2, nullptr); },
         [](double p) { return norminv(p, nullptr); },
         {-37, -20, -3, -0.5}},
        {"t",
         [](double x) { return tcdf(x, 4.0, 2, nullptr); },
         [](double p) { return tinv(p, 4.0, 2, nullptr); },
         {-1e50, -300, -2, -0.1}},
        {"chi2",
         [](double x) { return chi2cdf(x, 5.0, 2, nullptr); },
         [](double p) { return chi2inv(p, 5.0, nullptr); },
         {1e-100, 1e-3, 0.5, 2.5}},
        {"F",
         [](double x) { return fcdf(x, 6.0, 12.0, 2, nullptr); },
         [](double p) { return finv(p, 6.0, 12.0, nullptr); },
         {1e-60, 1e-4, 0.3, 0.8}},
        {"beta",
         [](double x) { return betacdf(x, 3.0, 5.0, 2, nullptr); },
         [](double p) { return betainv(p, 3.0, 5.0, nullptr); },
         {1e-90, 1e-5, 0.1, 0.3}},
        {"gamma",
         [](double x) { return gamcdf(x, 2.0, 3.0, 2, nullptr); },
         [](double p) { return gaminv(p, 2.0, 3.0, nullptr); },
         {1e-140, 1e-6, 0.5, 4}},
        {"lognormal",
         [](double x) { return logncdf(x, 1.0, 0.5, 2, nullptr); },
         [](double p) { return logninv(p, 1.0, 0.5, nullptr); },
         {1e-6, 0.1, 1, 2.5}},
        {"weibull",
         [](double x) { return wblcdf(x, 2.0, 1.5, nullptr); },
         [](double p) { return wblinv(p, 2.0, 1.5, nullptr); },
         {1e-150, 1e-3, 0.5, 1.5}},
    };
    for (const Case& c : cases) {
        for (double x : c.xs) {
            const double p = c.cdf(x);
            ASSERT_GT(p, 0.0) << c.name << " at " << x;
            ASSERT_LE(p, 0.5) << c.name << " at " << x;
            EXPECT_LE(relative_error(c.inv(p), x), 1e-13) << c.name << " at " << x;
        }
    }
    // The two-sided t deviates invert the two-sided probabilities, each taken where it is
    // the small one (significance for large t, confidence for small t).
    for (double t : {2.0, 50.0, 1e10}) {
        EXPECT_LE(relative_error(tinv(tcdf(t, 9.0, 3, nullptr), 9.0, 3, nullptr), t), 1e-13);
    }
    for (double t : {1e-250, 1e-6, 0.3}) {
        EXPECT_LE(relative_error(tinv(tcdf(t, 9.0, 4, nullptr), 9.0, 4, nullptr), t), 1e-13);
    }
}

// The check values of the routines' published examples, at the precision they are quoted.
TEST(DistributionIdentities, PublishedCheckValues) {
    struct Check {
        double got, expected, tolerance;
    };
    const Check checks[] = {
        {normcdf(0, 2, nullptr), 0.5, 0},
        {normcdf(1.96, 1, nullptr), 0.024997895148220, 1e-14},
        {norminv(0.975, nullptr), 1.9599639845401, 1e-12},
        {tcdf(0.85, 20, 2, nullptr), 0.7973, 5e-5},
        {tcdf(0.85, 20, 1, nullptr), 0.2027, 5e-5},
        {tcdf(0.85, 20, 3, nullptr), 0.4054, 5e-5},
        {tcdf(0.85, 20, 4, nullptr), 0.5946, 5e-5},
        {tcdf(-2, 5, 2, nullptr), 0.050969739414929, 1e-14},
        {tinv(0.95, 10, 4, nullptr), 2.2281388519863, 1e-12},
        {chi2cdf(3.84146, 1, 2, nullptr), 0.95000004, 1e-8},
        {chi2cdf(10, 4, 1, nullptr), 0.040427681994513, 1e-14},
        {chi2inv(0.95, 10, nullptr), 18.307038053275, 1e-11},
        {fcdf(2.5, 3, 10, 2, nullptr), 0.88096043734172, 1e-13},
        {fcdf(3.0, 5, 20, 1, nullptr), 0.035201337452667, 1e-14},
        {finv(0.95, 2, 10, nullptr), 4.1028210151304, 1e-12},
        {betacdf(0.3, 2, 3, 2, nullptr), 0.3483, 5e-5},
        {betapdf(0.3, 2, 3, nullptr), 1.764, 5e-4},
        {betainv(0.5, 2, 3, nullptr), 0.38572756813239, 1e-13},
        {gamcdf(15.5, 4, 2, 2, nullptr), 0.94987794546734, 1e-13},
        {gaminv(0.5, 2, 3, nullptr), 5.0350409700500, 1e-12},
        {gampdf(2, 3, 0.5, nullptr), 0.29305022221975, 1e-13},
    };
    for (size_t i = 0; i < sizeof checks / sizeof checks[0]; ++i) {
        EXPECT_NEAR(checks[i].got, checks[i].expected, checks[i].tolerance) << "check " << i;
    }
}

}  // namespace
