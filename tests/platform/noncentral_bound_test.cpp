// The Chernoff bounds on the non-central chi-square, beta and F lower tails, against the
// 50-digit mpmath far-tail references (reference/gen_noncentral_far_tails.py): at every row
// with a positive value the bound must lie above the law's logarithm (a bound below it would
// return 0 for a representable probability), and within a few e-folds of it, so that the cut
// leaves only the values next to the bottom of the double range to the sums; at the rows
// proven to underflow it must make the cut.
#include <gtest/gtest.h>

#include <cfloat>
#include <cmath>

#include "platform/numeric/extended.hpp"
#include "platform/numeric/noncentral_bound.hpp"

namespace {

struct Row {
    double kind, p0, p1, p2, lambda, expected;
};
const Row kFarTails[] = {
#include "reference/noncentral_far_tails_ref.inc"
};

using zemath::numeric::Extended;

double log_bound(const Row& r) {
    namespace n = zemath::numeric;
    if (r.kind == 0.0) return n::noncentral_chi2_lower_log_bound(r.p0, r.p1, r.lambda);
    if (r.kind == 1.0) {
        const Extended ratio = r.p0 / (1.0L - static_cast<Extended>(r.p0));
        return n::noncentral_beta_lower_log_bound(r.p1, r.p2, r.lambda, ratio);
    }
    const Extended ratio = static_cast<Extended>(r.p1) * r.p0 / r.p2;
    return n::noncentral_beta_lower_log_bound(0.5 * r.p1, 0.5 * r.p2, r.lambda, ratio);
}

TEST(NoncentralBound, AboveTheLawAndWithinAFewEFolds) {
    int proven = 0;
    for (const Row& r : kFarTails) {
        SCOPED_TRACE(testing::Message() << r.kind << ": " << r.p0 << ", " << r.p1 << ", " << r.p2
                                        << ", " << r.lambda << ", expected " << r.expected);
        const double bound = log_bound(r);
        if (r.expected > 0.0) {
            // Subnormal references carry a relative rounding of up to a few per cent.
            const double log_p = std::log(r.expected) - (r.expected < DBL_MIN ? 0.05 : 0.0);
            EXPECT_GE(bound, log_p);
            EXPECT_FALSE(zemath::numeric::lower_tail_underflows(bound));
            // The bound's slack is the logarithm of the law's spread at the tilted point.
            if (r.expected >= 1e-300) {
                EXPECT_LE(bound - log_p, 25.0);
            }
        } else if (zemath::numeric::lower_tail_underflows(bound)) {
            ++proven;
        }
    }
    // Of the zero rows, all but those placed just inside the cut (the generator's exponent
    // -744: 16 rows, left to the sums) are proven: 8 chi-square and 24 beta and F rows at
    // exponents -750 and -3000, and the 10 slow calls the generator proved with its own bound.
    EXPECT_EQ(proven, 42);
}

// Where the bound says nothing (at or above the mean) it is 0, never a false cut.
TEST(NoncentralBound, NothingAtTheMean) {
    namespace n = zemath::numeric;
    EXPECT_EQ(n::noncentral_chi2_lower_log_bound(3e9, 1e9, 2e9), 0.0);
    EXPECT_EQ(n::noncentral_chi2_lower_log_bound(1e300, 1.0, 1e9), 0.0);
    // Beta mean about (a + lambda/2) / (a + b + lambda/2): r = x / (1 - x) at and above it.
    EXPECT_EQ(n::noncentral_beta_lower_log_bound(2.5, 5.0, 100.0, (2.5L + 50.0L) / 5.0L), 0.0);
    EXPECT_EQ(n::noncentral_beta_lower_log_bound(2.5, 5.0, 100.0, 1e300L), 0.0);
    // The smallest shapes and ratios stay finite.
    EXPECT_TRUE(std::isfinite(n::noncentral_beta_lower_log_bound(5e-324, 5e-324, 1e9, 1e-300L)));
    EXPECT_TRUE(std::isfinite(n::noncentral_chi2_lower_log_bound(5e-324, 5e-324, 1e9)));
}

}  // namespace
