// Exports of the discrete and non-central distributions, the bivariate normal, the
// studentized range and Lambert W: tail codes, the optional status pointer, missing
// values, the deliberate quirks (poisspdf's 0.0, lambertW's screening), the argument
// mapping of hygecdf, and accuracy of the in-house densities against mpmath (worst
// measured: binopdf 2.8e-14, poisspdf 2.4e-15 relative, over the reference grid).
#include <gtest/gtest.h>

#include <cfloat>
#include <cmath>
#include <cstdio>
#include <functional>
#include <string>

#include "reference/distributions_other_ref.inc"
#include "zemath/distributions.h"
#include "zemath/status.h"

namespace {

constexpr int kUntouched = 12345;

double rel(double got, double want) {
    if (std::fabs(want) < DBL_MIN) return std::fabs(got - want) <= 4 * DBL_MIN ? 0.0 : 1.0;
    return std::fabs(got - want) / std::fabs(want);
}

// ------------------------------------------------------------------ tail codes

TEST(DiscreteExports, OnlyUpperAndLowerTailsAreAccepted) {
    struct Case { std::function<double(int, int*)> call; double lower; };
    // Lower tails from the closed sums: sum_{j<=3} C(10,j) .4^j .6^(10-j);
    // e^-2.5 (1 + 2.5 + 2.5^2/2 + 2.5^3/6); 1 - C(5,2)/C(10,2) = 7/9.
    const Case cases[] = {
        {[](int tail, int* s) { return binocdf(3, 10, 0.4, tail, s); }, 0.3822806016},
        {[](int tail, int* s) { return poisscdf(3, 2.5, tail, s); }, 0.75757613313306},
        {[](int tail, int* s) { return hygecdf(1, 5, 10, 2, tail, s); }, 7.0 / 9.0},
    };
    for (const Case& c : cases) {
        for (int tail : {0, 3, 4, 5, 6, -1, 100}) {
            int status = kUntouched;
            EXPECT_EQ(c.call(tail, &status), NANUM) << tail;
            EXPECT_EQ(status, ZEMATH_NAG_BAD_PARAM) << tail;
            EXPECT_EQ(c.call(tail, nullptr), NANUM);  // status pointer is optional
        }
        int lower_status = kUntouched, upper_status = kUntouched;
        const double lower = c.call(2, &lower_status);
        const double upper = c.call(1, &upper_status);
        EXPECT_EQ(lower_status, 0);
        EXPECT_EQ(upper_status, 0);
        EXPECT_NEAR(lower, c.lower, 1e-13);
        EXPECT_NEAR(upper, 1.0 - c.lower, 1e-13);
    }
}

TEST(DiscreteExports, HypergeometricArgumentsKeepTheirNames) {
    // hygecdf(k, m, n, l): m marked in a population of n, sample l. With n = 10, m = 5,
    // l = 2 the chance of at most one marked item is 1 - C(5,2)/C(10,2) = 7/9.
    int status = kUntouched;
    EXPECT_NEAR(hygecdf(1, 5, 10, 2, 2, &status), 7.0 / 9.0, 1e-15);
    EXPECT_EQ(status, 0);
    // Population 40, sample 10, 3 marked: P(X <= 2) = 0.98785 (5 digits).
    EXPECT_NEAR(hygecdf(2, 3, 40, 10, 2, &status), 0.98785, 5e-6);
    // Population 155, sample 35, 122 marked.
    EXPECT_NEAR(hygecdf(22, 122, 155, 35, 1, &status), 0.98899, 5e-6);
    // Inconsistent counts are the back end's refusal.
    EXPECT_EQ(hygecdf(1, 12, 10, 2, 2, &status), NANUM);
    EXPECT_EQ(status, ZEMATH_NAG_INT_ARG_GT);
}

TEST(DiscreteExports, RefusalsAndMissingValues) {
    struct Case { const char* what; double value; int status; double want; int want_status; };
    int s[12];
    for (int& x : s) x = kUntouched;
    const Case cases[] = {
        {"binocdf p NANUM", binocdf(1, 5, NANUM, 2, &s[0]), s[0], NANUM, ZEMATH_ERR_STATS_INPUT},
        {"binocdf p NaN", binocdf(1, 5, NAN, 2, &s[1]), s[1], NANUM, ZEMATH_NAG_REAL},
        {"binocdf k > n", binocdf(6, 5, 0.5, 2, &s[2]), s[2], NANUM, ZEMATH_NAG_INT_ARG_GT},
        {"binocdf n < 0", binocdf(0, -5, 0.5, 1, &s[3]), s[3], NANUM, ZEMATH_NAG_INT_ARG_LT},
        {"poisscdf lambda NANUM", poisscdf(1, NANUM, 2, &s[4]), s[4], NANUM, ZEMATH_ERR_STATS_INPUT},
        {"poisscdf lambda 0", poisscdf(1, 0.0, 2, &s[5]), s[5], NANUM, ZEMATH_NAG_REAL_ARG_LE},
        {"poisscdf lambda inf", poisscdf(1, INFINITY, 2, &s[6]), s[6], NANUM, ZEMATH_NAG_REAL_ARG_GT},
        {"poisscdf k < 0", poisscdf(-1, 2.0, 2, &s[7]), s[7], NANUM, ZEMATH_NAG_INT_ARG_LT},
        {"binopdf x > nt", binopdf(6, 5, 0.5, &s[8]), s[8], NANUM, ZEMATH_ERR_STATS_INPUT},
        {"binopdf p > 1", binopdf(1, 5, 1.5, &s[9]), s[9], NANUM, ZEMATH_ERR_STATS_INPUT},
        {"binopdf p NaN", binopdf(1, 5, NAN, &s[10]), s[10], NANUM, ZEMATH_ERR_STATS_INPUT},
        {"binopdf p NANUM", binopdf(1, 5, NANUM, &s[11]), s[11], NANUM, ZEMATH_ERR_STATS_INPUT},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(c.value, c.want) << c.what;
        EXPECT_EQ(c.status, c.want_status) << c.what;
    }
    EXPECT_EQ(binopdf(-1, 5, 0.5, nullptr), NANUM);
}

TEST(DiscreteExports, PoissonDensityQuirks) {
    // Deliberate: 0.0 and -110 outside the support, not NANUM.
    for (auto [x, lambda] : {std::pair{-1, 2.0}, std::pair{3, 0.0}, std::pair{3, -1.0}}) {
        int status = kUntouched;
        EXPECT_EQ(poisspdf(x, lambda, &status), 0.0);
        EXPECT_EQ(status, ZEMATH_ERR_STATS_INPUT);
    }
    int status = kUntouched;
    EXPECT_EQ(poisspdf(3, NAN, &status), NANUM);
    EXPECT_EQ(status, ZEMATH_ERR_STATS_INPUT);
    EXPECT_EQ(poisspdf(3, NANUM, &status), NANUM);
    EXPECT_EQ(poisspdf(3, INFINITY, nullptr), NANUM);
    // Both sides of the product/logarithm switch at x = 100 agree with lambda^x e^-l / x!
    // (ratio of neighbours is lambda / x exactly).
    for (double lambda : {50.0, 100.0, 250.0, 600.0}) {
        const double below = poisspdf(99, lambda, &status);
        const double above = poisspdf(100, lambda, &status);
        EXPECT_EQ(status, 0);
        EXPECT_NEAR(above / below, lambda / 100.0, 1e-13 * lambda / 100.0) << lambda;
    }
    // lambda^x or e^-lambda outside the double range: still finite and exact.
    EXPECT_NEAR(poisspdf(99, 800.0, &status) / poisspdf(98, 800.0, &status), 800.0 / 99, 1e-11);
}

// The in-house densities against mpmath, and the cdf as their running sum.
constexpr double kDensityTolerance = 1e-13;

TEST(DiscreteExports, DensitiesAgainstReference) {
    double worst_bino = 0.0, worst_pois = 0.0;
    for (const auto& r : ref_other::kBinomial) {
        int status = kUntouched;
        const double v = binopdf(r.k, r.n, r.p, &status);
        ASSERT_EQ(status, 0);
        worst_bino = std::max(worst_bino, rel(v, r.point));
        EXPECT_LE(rel(v, r.point), kDensityTolerance) << r.k << " " << r.n << " " << r.p;
        EXPECT_LE(rel(binocdf(r.k, r.n, r.p, 2, nullptr), r.lower), 1e-13);
        EXPECT_LE(rel(binocdf(r.k, r.n, r.p, 1, nullptr), r.upper), 1e-13);
    }
    for (const auto& r : ref_other::kPoisson) {
        int status = kUntouched;
        const double v = poisspdf(r.k, r.lambda, &status);
        ASSERT_EQ(status, 0);
        worst_pois = std::max(worst_pois, rel(v, r.point));
        EXPECT_LE(rel(v, r.point), kDensityTolerance) << r.k << " " << r.lambda;
    }
    std::printf("[accuracy] binopdf worst relative error %.2e\n", worst_bino);
    std::printf("[accuracy] poisspdf worst relative error %.2e\n", worst_pois);
}

TEST(DiscreteExports, CdfIsRunningSumOfDensity) {
    for (auto [nt, p] : {std::pair{12, 0.3}, std::pair{200, 0.05}, std::pair{5000, 0.05}}) {
        double running = 0.0;
        for (int x = 0; x <= std::min(nt, 400); ++x) {
            running += binopdf(x, nt, p, nullptr);
            const double cdf = binocdf(x, nt, p, 2, nullptr);
            EXPECT_NEAR(cdf, running, kDensityTolerance * running + 1e-300) << nt << " " << p << " " << x;
        }
    }
    double running = 0.0;
    for (int x = 0; x < 150; ++x) {  // crosses the switch at 100
        running += poisspdf(x, 90.0, nullptr);
        EXPECT_NEAR(poisscdf(x, 90.0, 2, nullptr), running, kDensityTolerance * running + 1e-300) << x;
    }
    EXPECT_EQ(binopdf(0, 0, 0.3, nullptr), 1.0);
    EXPECT_EQ(binopdf(0, 7, 0.0, nullptr), 1.0);
    EXPECT_EQ(binopdf(7, 7, 1.0, nullptr), 1.0);
    EXPECT_EQ(binopdf(3, 7, 1.0, nullptr), 0.0);
}

// ------------------------------------------------------------------ continuous exports

TEST(NonCentralExports, ValuesAndStatus) {
    int status = kUntouched;
    EXPECT_NEAR(nctcdf(2.0, 10, 1.0, 50, &status), 0.80761156253038, 1e-13);
    EXPECT_EQ(status, 0);
    EXPECT_NEAR(ncchi2cdf(8.0, 4, 2.0, &status), 0.74510103425501, 1e-13);
    EXPECT_NEAR(ncfcdf(2.0, 3, 12, 1.5, &status), 0.68583309097454, 1e-13);
    EXPECT_NEAR(ncbetacdf(0.4, 2, 3, 1.0, &status), 0.42946121234784, 1e-13);
    EXPECT_NEAR(bivarnormcdf(1.0, -0.5, -0.3, &status), 0.23203606826855, 1e-14);
    EXPECT_NEAR(srangecdf(3.877, 10, 3, &status), 0.95001, 5e-6);
    EXPECT_NEAR(srangeinv(0.95, 20, 3, &status), 3.5779, 5e-5);
    EXPECT_EQ(status, 0);
    const double q = srangeinv(0.9, 12, 4, nullptr);
    EXPECT_NEAR(srangecdf(q, 12, 4, nullptr), 0.9, 1e-13);
    EXPECT_NEAR(srangeinv(srangecdf(q, 12, 4, nullptr), 12, 4, nullptr), q, 1e-11 * q);
}

TEST(NonCentralExports, RefusedCalls) {
    struct Case { const char* what; std::function<double(int*)> call; int want_status; };
    const Case cases[] = {
        {"nctcdf t NANUM", [](int* s) { return nctcdf(NANUM, 5, 1, 50, s); }, ZEMATH_ERR_STATS_INPUT},
        {"nctcdf df < 1", [](int* s) { return nctcdf(1, 0.5, 1, 50, s); }, ZEMATH_NAG_REAL_ARG_LT},
        {"nctcdf maxiter 0", [](int* s) { return nctcdf(1, 5, 1, 0, s); }, ZEMATH_NAG_INT_ARG_LT},
        {"nctcdf NaN", [](int* s) { return nctcdf(NAN, 5, 1, 50, s); }, ZEMATH_NAG_REAL},
        {"ncchi2cdf x < 0", [](int* s) { return ncchi2cdf(-1, 5, 1, s); }, ZEMATH_NAG_REAL_ARG_LT},
        {"ncchi2cdf f = 0", [](int* s) { return ncchi2cdf(1, 0, 1, s); }, ZEMATH_NAG_REAL_ARG_LE},
        {"ncchi2cdf lambda NANUM", [](int* s) { return ncchi2cdf(1, 2, NANUM, s); }, ZEMATH_ERR_STATS_INPUT},
        {"ncfcdf df2 inf", [](int* s) { return ncfcdf(1, 2, INFINITY, 1, s); }, ZEMATH_NAG_REAL_ARG_GT},
        {"ncbetacdf x > 1", [](int* s) { return ncbetacdf(1.5, 2, 3, 1, s); }, ZEMATH_NAG_REAL_ARG_GT},
        {"bivarnormcdf |rho| > 1", [](int* s) { return bivarnormcdf(0, 0, -1.5, s); }, ZEMATH_NAG_REAL_ARG_GT},
        {"bivarnormcdf NANUM", [](int* s) { return bivarnormcdf(0, NANUM, 0.5, s); }, ZEMATH_ERR_STATS_INPUT},
        {"srangecdf group 1", [](int* s) { return srangecdf(2, 10, 1, s); }, ZEMATH_NAG_INT_ARG_LT},
        {"srangecdf v < 1", [](int* s) { return srangecdf(2, 0.5, 3, s); }, ZEMATH_NAG_REAL_ARG_LT},
        {"srangeinv p = 1", [](int* s) { return srangeinv(1.0, 10, 3, s); }, ZEMATH_NAG_REAL_ARG_GE},
        {"srangeinv p NaN", [](int* s) { return srangeinv(NAN, 10, 3, s); }, ZEMATH_NAG_REAL},
    };
    for (const Case& c : cases) {
        int status = kUntouched;
        EXPECT_EQ(c.call(&status), NANUM) << c.what;
        EXPECT_EQ(status, c.want_status) << c.what;
        EXPECT_EQ(c.call(nullptr), NANUM) << c.what;
    }
}

TEST(LambertWExport, BranchOffsetAndScreening) {
    int status = kUntouched;
    EXPECT_NEAR(lambertW(1.0, 0, 0, &status), 0.5671432904097838, 1e-16);
    EXPECT_EQ(status, 0);
    EXPECT_NEAR(lambertW(-0.2, -1, 0, &status), -2.5426413577735, 1e-13);
    EXPECT_NEAR(lambertW(1e-4, 0, 1, &status), -0.97686286557442, 1e-14);
    // Offset and direct forms agree away from the branch point.
    EXPECT_NEAR(lambertW(0.2, -1, 1, &status), lambertW(0.2 - std::exp(-1.0), -1, 0, nullptr), 1e-14);
    // The branch point itself on both branches.
    EXPECT_EQ(lambertW(0.0, 0, 1, &status), -1.0);
    EXPECT_EQ(lambertW(0.0, -1, 1, &status), -1.0);
    EXPECT_EQ(lambertW(-std::exp(-1.0), 0, 0, &status), -1.0);
    struct Refused { double x; int branch; int offset; int want; };
    for (const Refused& r : {Refused{1.0, 1, 0, ZEMATH_ERR_STATS_INPUT}, Refused{1.0, -2, 0, ZEMATH_ERR_STATS_INPUT},
                             Refused{-0.5, 0, 0, ZEMATH_ERR_STATS_INPUT}, Refused{-1e-9, 0, 1, ZEMATH_ERR_STATS_INPUT},
                             Refused{0.0, -1, 0, ZEMATH_ERR_STATS_INPUT}, Refused{0.5, -1, 1, ZEMATH_ERR_STATS_INPUT},
                             Refused{std::exp(-1.0), -1, 1, ZEMATH_ERR_STATS_INPUT},
                             Refused{NANUM, 0, 0, ZEMATH_ERR_STATS_INPUT}, Refused{NAN, 0, 0, ZEMATH_NAG_REAL},
                             Refused{INFINITY, 0, 0, ZEMATH_NAG_REAL}}) {
        status = kUntouched;
        EXPECT_EQ(lambertW(r.x, r.branch, r.offset, &status), NANUM) << r.x << " " << r.branch;
        EXPECT_EQ(status, r.want) << r.x << " " << r.branch << " " << r.offset;
        EXPECT_EQ(lambertW(r.x, r.branch, r.offset, nullptr), NANUM);
    }
    // Any non-zero offset means "offset".
    EXPECT_EQ(lambertW(0.25, 0, 7, nullptr), lambertW(0.25, 0, 1, nullptr));
}

}  // namespace
