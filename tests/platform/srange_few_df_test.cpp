// The studentized range for many groups at few degrees of freedom, where the range law's step
// in ln s is 10 to 40 times narrower than the scale's density (kappa about 2 ln r against
// sqrt(2 v)): against the 40-digit mpmath double integral of reference/gen_srange_few_df.py.
// The outer rule in y from the mode, halved down to the step's width, accepted levels there
// that agreed to 1e-7 while P was 1.3e-6 off (q = 50, v = 1, 2^31 - 1 groups).
#include <gtest/gtest.h>

#include <cfloat>
#include <cmath>

#include "platform/nag/g01.hpp"
#include "reference/srange_few_df_ref.inc"

namespace {

using zemath::nag::g01emc;
using zemath::nag::g01fmc;
using zemath::nag::NagError;

// As for the other many-groups rows: the reference's two resolutions agree to 1e-13 or better,
// the range law's own rounding noise is about 1e-13 at 2^31 - 1 groups.
constexpr double kTolerance = 2e-13;

TEST(G01SrangeFewDf, MatchesTheReferenceIntegral) {
    int checked = 0;
    for (const auto& row : ref_srange_few_df::kRows) {
        SCOPED_TRACE(testing::Message()
                     << "q = " << row.q << ", v = " << row.v << ", r = " << row.r);
        NagError fail;
        const double p = g01emc(row.q, row.v, row.r, &fail);
        EXPECT_EQ(fail.code, 0);
        EXPECT_NEAR(p / row.value, 1.0, kTolerance) << p << " for " << row.value;
        // The deviate gives back q to the probability's own sensitivity.
        if (row.value < 0.999) {
            const double q = g01fmc(row.value, row.v, row.r, &fail);
            ASSERT_EQ(fail.code, 0);
            const double h = 1e-5 * row.q;
            const double slope =
                row.q *
                (g01emc(row.q + h, row.v, row.r, &fail) - g01emc(row.q - h, row.v, row.r, &fail)) /
                (2.0 * h);
            ASSERT_GT(slope, 0.0);
            EXPECT_LE(std::fabs(q - row.q) / row.q, 1e-14 + 2.0 * kTolerance * row.value / slope);
        }
        ++checked;
    }
    EXPECT_GE(checked, 1);
}

}  // namespace
