// The hypergeometric tails at populations from 1e8 to 2^31 - 1 with both the sample and the
// marked count large, against the mpmath sums of tests/reference/gen_distributions_huge_counts.py:
// the law's standard deviation is 1e3 .. 1.2e4, so a tail near the mean is walked over up to
// 1e5 point probabilities. A plain ratio walk there lost up to 1.4e-13 (half from the chain of
// rounded ratios, half from stopping at the first term that no longer changed the running sum
// while thousands like it followed).
#include <gtest/gtest.h>

#include "reference/distributions_huge_counts_ref.inc"
#include "stats/distribution_calls.hpp"

namespace {

using dist_test::at;
using dist_test::Worst;

// The start's few ulps, a block of 256 rounded ratios and the blocks' sum: measured 6e-15.
constexpr double kBound = 2e-14;

TEST(DistributionsHugeCounts, HypergeometricTailsNearTheMeanOfHugePopulations) {
    Worst lower, upper;
    for (const auto& r : ref_huge_counts::kHypergeometricNearTheMean) {
        const std::string where = at({1.0 * r.k, 1.0 * r.m, 1.0 * r.n, 1.0 * r.l});
        int status = -999;
        lower.add(hygecdf(r.k, r.m, r.n, r.l, 2, &status), r.lower, where);
        EXPECT_EQ(status, 0) << where;
        upper.add(hygecdf(r.k, r.m, r.n, r.l, 1, &status), r.upper, where);
        EXPECT_EQ(status, 0) << where;
    }
    EXPECT_LE(lower.report("hygecdf huge lower"), kBound);
    EXPECT_LE(upper.report("hygecdf huge upper"), kBound);
}

}  // namespace
