// The discrete laws at the switch points of their evaluation paths, against the mpmath
// references of tests/reference/gen_distributions_discrete_paths.py: the densities where the
// deviance's logarithm changes its power of two (k / n p on either side of 3/4, 3/2 and 3),
// far out and deep in both tails; the binomial tails in the Poisson-limit regime (n up to
// 2^31 - 1, each tail asked for alone, k on both sides of the mean and the median, where a
// tail is either summed or 1 minus the other) and at every k up to 31 trials; the hypergeometric
// tails with k beside the median and the mode, where the far tail is walked from k across the mode.
#include <gtest/gtest.h>

#include "reference/distributions_discrete_paths_ref.inc"
#include "stats/distribution_calls.hpp"

namespace {

using dist_test::at;
using dist_test::Worst;

// The densities keep 3e-18 D relative from the deviance D (below 2.2e-15 down to the normal
// range) plus a few ulps from the Stirling terms, exp, the square root and the division.
constexpr double kDensityBound = 4e-15;
// Sums of point probabilities: the start's few ulps plus an ulp or two per step of the ratio
// walk, over the short stretches these tails need.
constexpr double kSumBound = 2e-14;
// Up to 30 trials: the walk covers at most 31 terms, those near k (most of a tail) a step or
// two from the start; measured 1.1e-15, against 3.5e-15 for the incomplete beta function there.
constexpr double kSmallCountBound = 4e-15;

TEST(DiscretePaths, DensitiesAcrossTheDeviancePaths) {
    Worst bino, pois;
    for (const auto& r : ref_discrete_paths::kBinomialDensity) {
        int status = -999;
        const double got = binopdf(r.k, r.n, r.p, &status);
        EXPECT_EQ(status, 0);
        bino.add(got, r.point, at({1.0 * r.k, 1.0 * r.n, r.p}));
    }
    for (const auto& r : ref_discrete_paths::kPoissonDensity) {
        int status = -999;
        const double got = poisspdf(r.k, r.lambda, &status);
        EXPECT_EQ(status, 0);
        pois.add(got, r.point, at({1.0 * r.k, r.lambda}));
    }
    EXPECT_LE(bino.report("binopdf paths"), kDensityBound);
    EXPECT_LE(pois.report("poisspdf paths"), kDensityBound);
}

// Each tail alone, as hosts ask for it: the routine sums the tail on k's side of the mean and
// takes the other as 1 minus it, or sums that one too where the first exceeds 1/2.
// Both binomial tails of each row, each asked for alone, with status 0.
template <class Row, std::size_t N>
void binomial_tails(const Row (&rows)[N], Worst& lower, Worst& upper) {
    for (const Row& r : rows) {
        const std::string where = at({1.0 * r.k, 1.0 * r.n, r.p});
        int status = -999;
        lower.add(binocdf(r.k, r.n, r.p, 2, &status), r.lower, where);
        EXPECT_EQ(status, 0) << where;
        upper.add(binocdf(r.k, r.n, r.p, 1, &status), r.upper, where);
        EXPECT_EQ(status, 0) << where;
    }
}

TEST(DiscretePaths, BinomialPoissonLimitTails) {
    Worst lower, upper, point;
    binomial_tails(ref_discrete_paths::kBinomialTails, lower, upper);
    for (const auto& r : ref_discrete_paths::kBinomialTails)
        point.add(binopdf(r.k, r.n, r.p, nullptr), r.point, at({1.0 * r.k, 1.0 * r.n, r.p}));
    EXPECT_LE(lower.report("binocdf limit lower"), kSumBound);
    EXPECT_LE(upper.report("binocdf limit upper"), kSumBound);
    EXPECT_LE(point.report("binopdf limit"), kDensityBound);
}

// Every k up to 31 trials, each tail alone: up to 30 trials (p and 1 - p at least 1e-10) the
// routine sums point probabilities, beyond (31 trials, p nearer 0 or 1) the incomplete beta
// function; tails below the normal range within a few DBL_MIN.
TEST(DiscretePaths, BinomialSmallCounts) {
    Worst lower, upper;
    binomial_tails(ref_discrete_paths::kBinomialSmallCount, lower, upper);
    EXPECT_LE(lower.report("binocdf small n lower"), kSmallCountBound);
    EXPECT_LE(upper.report("binocdf small n upper"), kSmallCountBound);
}

TEST(DiscretePaths, HypergeometricTailsBesideTheMode) {
    Worst lower, upper;
    for (const auto& r : ref_discrete_paths::kHypergeometricTails) {
        const std::string where = at({1.0 * r.k, 1.0 * r.m, 1.0 * r.n, 1.0 * r.l});
        int status = -999;
        lower.add(hygecdf(r.k, r.m, r.n, r.l, 2, &status), r.lower, where);
        EXPECT_EQ(status, 0) << where;
        upper.add(hygecdf(r.k, r.m, r.n, r.l, 1, &status), r.upper, where);
        EXPECT_EQ(status, 0) << where;
    }
    EXPECT_LE(lower.report("hygecdf mode lower"), kSumBound);
    EXPECT_LE(upper.report("hygecdf mode upper"), kSumBound);
}

}  // namespace
