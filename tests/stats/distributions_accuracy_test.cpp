// Accuracy of the distribution exports against the 50-digit mpmath references of
// tests/reference/gen_distributions_central.py (both tails down to 1e-300, parameters
// 1e-3 .. 1e6) and of the in-house discrete densities against
// tests/reference/gen_distributions_other.py, and the identities any correct
// implementation keeps: quantile(cdf(x)) = x, the two tails sum to 1, a discrete cdf is the
// running sum of its density. The worst relative error per function is printed; the
// committed table is tests/reference/distributions_central_worst_errors.txt (worst
// measured for the densities: binopdf 4.4e-16, poisspdf 2.8e-16).
#include <gtest/gtest.h>

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <map>
#include <string>
#include <vector>

#include "reference/distributions_other_ref.inc"
#include "stats/distribution_calls.hpp"

namespace {

using dist_test::at;
using dist_test::Fn;
using dist_test::name;
using dist_test::Worst;

// clang-format off
struct RefCase { Fn fn; double args[4]; int tail; double expected; };
// clang-format on

#define REF(fn, a0, a1, a2, tail, expected) {Fn::fn, {a0, a1, a2}, tail, expected},
#define REF_UTIL(fn, a0, a1, a2, expected)
const RefCase kCases[] = {
#include "reference/distributions_central_ref.inc"
};
#undef REF
#undef REF_UTIL

// Student's t, F and beta at the switch points of their double paths and on arguments drawn
// as the benchmark draws them (gen_distributions_tbeta_paths.py).
#define REF(fn, a0, a1, a2, tail, expected) {Fn::fn, {a0, a1, a2}, tail, expected},
const RefCase kPathCases[] = {
#include "reference/distributions_tbeta_paths_ref.inc"
};
// Beta and F with one shape a whole number from 2 to 12 and the other large and not whole
// (gen_distributions_whole_shape.py).
const RefCase kWholeShapeCases[] = {
#include "reference/distributions_whole_shape_ref.inc"
};
// The switch points of the double paths: both beta shapes below 16 (a + b not a double, and on
// both sides of 17), tails that round to 0 beside ones just inside the normal range, the normal
// tails around |x| = 2, and the longest continued fractions (gen_distributions_fast_paths.py).
const RefCase kFastPathCases[] = {
#include "reference/distributions_fast_paths_ref.inc"
};
// Where the double beta path takes its second side directly: a small shape beside a large one
// near the fraction's switch point (the first side above 0.9), and upper tails below the
// normal range whose lower tail is 1 (gen_distributions_beta_sides.py).
const RefCase kBetaSideCases[] = {
#include "reference/distributions_beta_sides_ref.inc"
};
// Student's t at df 5e3 .. 2e5 and on both sides of 2e5, the largest df of the double path
// (gen_distributions_t_large_df.py).
const RefCase kLargeDfCases[] = {
#include "reference/distributions_t_large_df_ref.inc"
};
// Beta, F and binomial at shapes above 5000 (up to 1e6 for the beta law, 5e9 for F, 2^31 for
// the binomial), both tails down to 1e-300, on both sides of the large-shape switch points
// (gen_distributions_beta_large_shapes.py).
const RefCase kLargeShapeCases[] = {
#include "reference/distributions_beta_large_shapes_ref.inc"
};
// The F and beta deviates at large shapes (from 50, where their start is the normal form of the
// F law's cube root, past 5000, up to the limits 5e9 for F and 1e6 for beta), both tails
// (gen_distributions_large_shape_deviates.py).
const RefCase kLargeShapeDeviateCases[] = {
#include "reference/distributions_large_shape_deviates_ref.inc"
};
// The F and beta deviates at small and moderate shapes, where their start is the smaller
// tail's series about its end or the cube-root normal form: random shapes and tails down to
// 1e-300, a small shape beside a large one, and around the series' limit of half the mean
// (gen_distributions_deviate_starts.py).
const RefCase kDeviateStartCases[] = {
#include "reference/distributions_deviate_starts_ref.inc"
};
#undef REF

// The accuracy asked of every function: 1e-13 relative, about 450 ulp.
constexpr double kTolerance = 1e-13;

// Checks every case within kTolerance with status 0; returns how many functions it covered.
template <std::size_t N>
std::size_t expect_within_tolerance(const RefCase (&cases)[N]) {
    std::map<std::string, Worst> worst;
    for (const RefCase& c : cases) {
        int status = -999;
        const double got = dist_test::call(c.fn, c.args, c.tail, &status);
        const std::string where = at({c.args[0], c.args[1], c.args[2], double(c.tail)});
        EXPECT_EQ(status, 0) << name(c.fn) << where;
        EXPECT_LE(worst[name(c.fn)].add(got, c.expected, where), kTolerance)
            << name(c.fn) << where << " = " << got << ", expected " << c.expected;
    }
    for (const auto& [fn, w] : worst) w.report(fn);
    return worst.size();
}

TEST(DistributionAccuracy, EveryReferenceValueWithin1e13) {
    EXPECT_EQ(expect_within_tolerance(kCases), 24u) << "every central export has reference values";
}

TEST(DistributionAccuracy, StudentFBetaAcrossPathSwitchesWithin1e13) {
    EXPECT_EQ(expect_within_tolerance(kPathCases), 6u)
        << "t, F and beta probabilities and deviates";
}

TEST(DistributionAccuracy, BetaAndFWithAWholeShapeWithin1e13) {
    EXPECT_EQ(expect_within_tolerance(kWholeShapeCases), 2u) << "beta and F probabilities";
}

TEST(DistributionAccuracy, DoublePathSwitchPointsWithin1e13) {
    EXPECT_EQ(expect_within_tolerance(kFastPathCases), 4u) << "normal, t, F and beta probabilities";
}

TEST(DistributionAccuracy, BetaSecondSideNearTheSwitchPointWithin1e13) {
    EXPECT_EQ(expect_within_tolerance(kBetaSideCases), 3u) << "t, F and beta probabilities";
}

TEST(DistributionAccuracy, StudentAtLargeDegreesOfFreedomWithin1e13) {
    EXPECT_EQ(expect_within_tolerance(kLargeDfCases), 2u) << "t probability and deviate";
}

TEST(DistributionAccuracy, BetaFBinomialAtLargeShapesWithin1e13) {
    EXPECT_EQ(expect_within_tolerance(kLargeShapeCases), 3u) << "beta, F and binomial cdfs";
}

TEST(DistributionAccuracy, FAndBetaDeviatesAtLargeShapesWithin1e13) {
    EXPECT_EQ(expect_within_tolerance(kLargeShapeDeviateCases), 2u) << "F and beta deviates";
}

TEST(DistributionAccuracy, FAndBetaDeviatesFromEachStartWithin1e13) {
    EXPECT_EQ(expect_within_tolerance(kDeviateStartCases), 2u) << "F and beta deviates";
}

TEST(DistributionAccuracy, DiscreteDensitiesAgainstReference) {
    Worst bino, pois;
    for (const auto& r : ref_other::kBinomial) {
        int status = -999;
        bino.add(binopdf(r.k, r.n, r.p, &status), r.point, at({1.0 * r.k, 1.0 * r.n, r.p}));
        ASSERT_EQ(status, 0) << r.k << " " << r.n << " " << r.p;
    }
    for (const auto& r : ref_other::kPoisson) {
        int status = -999;
        pois.add(poisspdf(r.k, r.lambda, &status), r.point, at({1.0 * r.k, r.lambda}));
        ASSERT_EQ(status, 0) << r.k << " " << r.lambda;
    }
    EXPECT_LE(bino.report("binopdf"), kTolerance);
    EXPECT_LE(pois.report("poisspdf"), kTolerance);
}

// Below 64 trials the density is C(n, x) exactly times p^x q^(n-x) from two-part
// logarithms: a few ulps, where rounding ln C(n, x) once costs up to 40 at n = 63.
TEST(DistributionAccuracy, BinomialDensityBelow64TrialsToAFewUlps) {
    Worst w;
    for (const auto& r : ref_other::kBinomial)
        if (r.n < 64 && r.point >= DBL_MIN)
            w.add(binopdf(r.k, r.n, r.p, nullptr), r.point, at({1.0 * r.k, 1.0 * r.n, r.p}));
    EXPECT_LE(w.report("binopdf, n < 64"), 4 * DBL_EPSILON);
}

// The cdfs as hosts call them, one tail at a time: the routines then skip the point
// probability and the other tail, which takes other paths (double incomplete beta and gamma
// functions, one walk for the hypergeometric law).
TEST(DistributionAccuracy, DiscreteCdfsOneTailAtATimeAgainstReference) {
    Worst w[6];
    const auto add = [&](int law, double lower, double upper, double want_lower, double want_upper,
                         const std::string& where) {
        w[2 * law].add(lower, want_lower, where);
        w[2 * law + 1].add(upper, want_upper, where);
    };
    for (const auto& r : ref_other::kBinomial)
        add(0, binocdf(r.k, r.n, r.p, 2, nullptr), binocdf(r.k, r.n, r.p, 1, nullptr), r.lower,
            r.upper, at({1.0 * r.k, 1.0 * r.n, r.p}));
    for (const auto& r : ref_other::kPoisson)
        add(1, poisscdf(r.k, r.lambda, 2, nullptr), poisscdf(r.k, r.lambda, 1, nullptr), r.lower,
            r.upper, at({1.0 * r.k, r.lambda}));
    for (const auto& r : ref_other::kHypergeometric)
        add(2, hygecdf(r.k, r.m, r.n, r.l, 2, nullptr), hygecdf(r.k, r.m, r.n, r.l, 1, nullptr),
            r.lower, r.upper, at({1.0 * r.k, 1.0 * r.m, 1.0 * r.n, 1.0 * r.l}));
    const char* names[] = {"binocdf lower",  "binocdf upper", "poisscdf lower",
                           "poisscdf upper", "hygecdf lower", "hygecdf upper"};
    for (int i = 0; i < 6; ++i) EXPECT_LE(w[i].report(names[i]), kTolerance);
}

// ---- identities ------------------------------------------------------------------------

double relative_error(double got, double expected) {
    return std::fabs(got - expected) / std::max(std::fabs(expected), DBL_MIN);
}

TEST(DistributionIdentities, TwoTailsSumToOne) {
    // clang-format off
    struct Case { Fn fn; double args[3]; std::vector<double> xs; };
    // clang-format on
    const Case cases[] = {
        {Fn::normcdf, {}, {-5, -0.3, 0, 1.1, 6}},
        {Fn::tcdf, {0, 3.5}, {-40, -1, 0, 0.2, 3, 1e3}},
        {Fn::chi2cdf, {0, 7}, {0.01, 3, 7, 15, 40}},
        {Fn::fcdf, {0, 4, 9}, {0.05, 0.9, 1.5, 8}},
        {Fn::betacdf, {0, 2.5, 0.7}, {1e-3, 0.3, 0.999}},
        {Fn::gamcdf, {0, 0.3, 2}, {1e-5, 0.2, 1, 9}},
        {Fn::logncdf, {0, 0.5, 2}, {1e-3, 1, 300}},
    };
    for (const Case& c : cases) {
        for (double x : c.xs) {
            const double a[3] = {x, c.args[1], c.args[2]};
            const double sum =
                dist_test::call(c.fn, a, 1, nullptr) + dist_test::call(c.fn, a, 2, nullptr);
            EXPECT_NEAR(sum, 1.0, 4 * DBL_EPSILON) << name(c.fn) << " at " << x;
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
    // clang-format off
    struct Case { Fn cdf, inv; double args[3]; std::vector<double> xs; };
    // clang-format on
    const Case cases[] = {
        {Fn::normcdf, Fn::norminv, {}, {-37, -20, -3, -0.5}},
        {Fn::tcdf, Fn::tinv, {0, 4}, {-1e50, -300, -2, -0.1}},
        {Fn::chi2cdf, Fn::chi2inv, {0, 5}, {1e-100, 1e-3, 0.5, 2.5}},
        {Fn::fcdf, Fn::finv, {0, 6, 12}, {1e-60, 1e-4, 0.3, 0.8}},
        {Fn::betacdf, Fn::betainv, {0, 3, 5}, {1e-90, 1e-5, 0.1, 0.3}},
        {Fn::gamcdf, Fn::gaminv, {0, 2, 3}, {1e-140, 1e-6, 0.5, 4}},
        {Fn::logncdf, Fn::logninv, {0, 1, 0.5}, {1e-6, 0.1, 1, 2.5}},
        {Fn::wblcdf, Fn::wblinv, {0, 2, 1.5}, {1e-150, 1e-3, 0.5, 1.5}},
    };
    for (const Case& c : cases) {
        for (double x : c.xs) {
            double a[3] = {x, c.args[1], c.args[2]};
            a[0] = dist_test::call(c.cdf, a, 2, nullptr);
            ASSERT_TRUE(a[0] > 0 && a[0] <= 0.5) << name(c.cdf) << " at " << x;
            EXPECT_LE(relative_error(dist_test::call(c.inv, a, 2, nullptr), x), 1e-13)
                << name(c.inv) << " at " << x;
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

// The in-house densities summed give the back end's cdfs, across the Poisson density's
// switch between its product and logarithmic forms at x = 100.
TEST(DistributionIdentities, DiscreteCdfIsRunningSumOfDensity) {
    for (auto [nt, p] : {std::pair{12, 0.3}, std::pair{200, 0.05}, std::pair{5000, 0.05}}) {
        double running = 0.0;
        for (int x = 0; x <= std::min(nt, 400); ++x) {
            running += binopdf(x, nt, p, nullptr);
            EXPECT_NEAR(binocdf(x, nt, p, 2, nullptr), running, kTolerance * running + 1e-300)
                << nt << " " << p << " " << x;
        }
    }
    double running = 0.0;
    for (int x = 0; x < 150; ++x) {
        running += poisspdf(x, 90.0, nullptr);
        EXPECT_NEAR(poisscdf(x, 90.0, 2, nullptr), running, kTolerance * running + 1e-300) << x;
    }
}

}  // namespace
