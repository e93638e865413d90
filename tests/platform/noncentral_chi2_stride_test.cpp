// The non-central chi-square's strided sum against the mpmath window sums
// (reference/gen_noncentral_window_sums.py): where it gives a value, that value is the law's
// (a stride too wide for the summand would alias silently); where its walk reaches nodes
// narrower than twice the stride, it declines rather than return the aliased sum, and the
// routine's other paths give the law.
#include <gtest/gtest.h>

#include <cfloat>
#include <cmath>

#include "platform/numeric/noncentral_chi2.hpp"

namespace {

struct Row {
    double kind, p0, p1, p2, lambda, expected;
};
const Row kWindowSums[] = {
#include "reference/noncentral_window_sums_ref.inc"
};

constexpr double kSubnormalUnit = 4.9406564584124654e-324;

bool near_reference(double v, double expected) {
    if (expected < DBL_MIN) return std::fabs(v - expected) <= 1e-13 * expected + kSubnormalUnit;
    return std::fabs(v - expected) <= 1e-13 * expected;
}

// The rows near lambda 2000 start far below the largest terms and walk down to u near 0, where
// the summand is narrower than two indices: the sum declines there. At lambda 4e7 and above the
// walk stays within the summand's width and the sum is the law.
TEST(NoncentralChi2Stride, ValueWhereTheStrideFitsDeclinedWhereItDoesNot) {
    int declined = 0, summed = 0;
    for (const Row& r : kWindowSums) {
        if (r.kind != 0.0) continue;
        const double v = zemath::numeric::noncentral_chi2_lower_stride(r.p0, r.p1, r.lambda);
        SCOPED_TRACE(testing::Message() << r.p0 << ", " << r.p1 << ", " << r.lambda << " = " << v
                                        << ", expected " << r.expected);
        if (r.lambda < 1e4) {
            EXPECT_TRUE(std::isnan(v));
            ++declined;
        } else if (!std::isnan(v)) {
            EXPECT_TRUE(near_reference(v, r.expected));
            ++summed;
        }
    }
    EXPECT_EQ(declined, 3);
    EXPECT_GE(summed, 6);
}

}  // namespace
