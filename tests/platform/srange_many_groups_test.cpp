// The studentized range for many groups (1e3 to 2^31 - 1), against the 40-digit mpmath double
// integral of reference/gen_srange_many_groups.py (both integrands' peaks located, each value
// checked at two resolutions): the probability down to 1e-189 in the far lower tail, the
// v = infinity limit, the bulk up to P within 1e-8 of 1, and the deviate giving back each row's
// q. The range law raises Phi(u) - Phi(u - w) to the power r - 1, which multiplies an absolute
// error of its logarithm by r: taken from a rounded D that left r * DBL_EPSILON / 25 (1.8e-8 at
// 2^31 - 1 groups); one bound for every r now.
#include <gtest/gtest.h>

#include <cfloat>
#include <cmath>
#include <initializer_list>

#include "platform/nag/g01.hpp"
#include "reference/srange_many_groups_ref.inc"

namespace {

using zemath::nag::g01emc;
using zemath::nag::g01fmc;
using zemath::nag::NagError;

// Worst seen 1.2e-13 (P = 2e-34 at 2^31 - 1 groups, v = 1e6: R's rounding noise there, about
// 1e-13 between neighbouring w, from the ulps of ln D times r); the reference's two resolutions
// agree to 5e-13 at worst, mostly 1e-14.
constexpr double kTolerance = 2e-13;

TEST(G01SrangeManyGroups, MatchesTheReferenceIntegral) {
    for (const auto& row : ref_srange_many::kRows) {
        NagError fail;
        const double p = g01emc(row.q, row.v, row.r, &fail);
        EXPECT_EQ(fail.code, 0);
        EXPECT_NEAR(p / row.value, 1.0, kTolerance)
            << row.q << " " << row.v << " " << row.r << ": " << p << " for " << row.value;
    }
}

// A change dp moves the deviate by dp / (q P'(q)) relative; P'(q) by a central difference.
TEST(G01SrangeManyGroups, DeviateGivesBackTheReferenceQ) {
    int checked = 0;
    for (const auto& row : ref_srange_many::kRows) {
        if (!(row.value < 0.999)) continue;
        SCOPED_TRACE(testing::Message()
                     << "q = " << row.q << ", v = " << row.v << ", r = " << row.r);
        NagError fail;
        const double q = g01fmc(row.value, row.v, row.r, &fail);
        ASSERT_EQ(fail.code, 0);
        const double h = 1e-5 * row.q;
        const double up = g01emc(row.q + h, row.v, row.r, &fail);
        const double down = g01emc(row.q - h, row.v, row.r, &fail);
        const double sensitivity = row.q * (up - down) / (2.0 * h);
        ASSERT_GT(sensitivity, 0.0);
        ++checked;
        EXPECT_LE(std::fabs(q - row.q) / row.q, 1e-14 + 2.0 * kTolerance * row.value / sensitivity);
    }
    EXPECT_GT(checked, 5);
}

// Where R(q) is within rounding of 1 the outer integrand's mode sits at ln s ~ 1e-27; the
// mode search once stalled there and returned P = 0 just below the range law's cut-off
// (srangecdf(18.9, 5, 1e7) gave 0 between 0.884 at 18 and 0.906 at 19). P must rise
// through that stretch and on to 1 without a drop beyond an ulp or two (ln D from a rounded
// D close to 1 made P wobble there by up to 1.5e-7 at 2^31 - 1 groups).
TEST(G01SrangeManyGroups, RisesMonotonicallyToOne) {
    for (int r : {100000, 10000000, 2147483647}) {
        for (double v : {1.0, 5.0, 30.0, 1000.0, 1e6, double(INFINITY)}) {
            double previous = 0.0;
            for (double q = 11.0; q <= 21.0; q += 0.1) {
                NagError fail;
                const double p = g01emc(q, v, r, &fail);
                ASSERT_EQ(fail.code, 0);
                EXPECT_GE(p, previous - 2.0 * DBL_EPSILON) << q << " " << v << " " << r;
                if (q >= 17.0) {
                    EXPECT_GT(p, 0.4) << q << " " << v << " " << r;
                }
                previous = p;
            }
        }
    }
}

// Past 100 groups the deviate starts from the range law's own deviate: it must converge
// (code 0) and reproduce p over the whole grid of group counts, degrees of freedom and
// both tails: to 1e-12 relative up to the median (5e-14 seen), to a few ulps of 1 above it,
// up to p = 1 - 1e-9 (where P's former noise near 1 left 1e-7 and up to 45 evaluations).
TEST(G01SrangeManyGroups, DeviateRoundTrip) {
    for (int r : {101, 5000, 1000000, 2147483647}) {
        for (double v : {1.0, 7.0, 1e4, double(INFINITY)}) {
            for (double p : {1e-12, 0.01, 0.5, 0.99, 1.0 - 1e-9}) {
                NagError fail;
                const double q = g01fmc(p, v, r, &fail);
                ASSERT_EQ(fail.code, 0) << p << " " << v << " " << r;
                const double back = g01emc(q, v, r, &fail);
                if (p <= 0.5) {
                    EXPECT_NEAR(back / p, 1.0, 1e-12) << p << " " << v << " " << r;
                } else {
                    EXPECT_NEAR(back, p, 8.0 * DBL_EPSILON) << p << " " << v << " " << r;
                }
            }
        }
    }
}

}  // namespace
