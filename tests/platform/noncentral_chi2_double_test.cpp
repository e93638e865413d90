// The non-central chi-square lower tail around the switch points of its double evaluation
// (lower and upper mixture across the mean, the non-centrality limit, Poisson mode 0, the
// shape limit of the double incomplete gamma), against 50-digit mpmath mixtures
// (reference/gen_noncentral_chi2_double.py): through the routine, whichever path answers,
// and the double kernel itself on the body rows, where it must answer (a decline would
// hand the case to the slower evaluations unnoticed).
#include <gtest/gtest.h>

#include <cmath>

#include "platform/nag/g01.hpp"
#include "platform/numeric/noncentral_chi2.hpp"
#include "reference/noncentral_chi2_double_ref.inc"

namespace {

using zemath::nag::NagError;

double relative_error(double got, double want) {
    return std::fabs(got - want) / want;
}

TEST(NoncentralChi2Double, RoutineAgainstReference) {
    for (const auto& row : kNoncentralChi2Double) {
        SCOPED_TRACE(testing::Message()
                     << "x = " << row.x << ", df = " << row.df << ", lambda = " << row.lambda);
        NagError fail;
        const double p = zemath::nag::g01gcc(row.x, row.df, row.lambda, 0.0, 100, &fail);
        EXPECT_EQ(fail.code, 0);
        EXPECT_LE(relative_error(p, row.p), 2e-14);
    }
}

TEST(NoncentralChi2Double, KernelAnswersInTheBody) {
    int body = 0;
    for (const auto& row : kNoncentralChi2Double) {
        const double p = zemath::numeric::noncentral_chi2_lower_double(row.x, row.df, row.lambda);
        if (!row.body) {
            // Outside the body it may decline, but an answer must be right.
            if (!std::isnan(p)) {
                EXPECT_LE(relative_error(p, row.p), 2e-14) << row.x;
            }
            continue;
        }
        ++body;
        SCOPED_TRACE(testing::Message()
                     << "x = " << row.x << ", df = " << row.df << ", lambda = " << row.lambda);
        ASSERT_FALSE(std::isnan(p));
        EXPECT_LE(relative_error(p, row.p), 1e-14);
    }
    EXPECT_GT(body, 60);
}

TEST(NoncentralChi2Double, KernelDeclinesOutsideItsRange) {
    using zemath::numeric::noncentral_chi2_lower_double;
    struct Case {
        double x, df, lambda;
    };
    const Case declined[] = {{10, 3, 2001}, {10, 3, -1},      {10, 0, 2},
                             {0, 3, 2},     {1e-310, 3, 2},   {INFINITY, 3, 2},
                             {10, NAN, 2},  {1000, 4000, 200} /* shape past 1000, x/a outside 0.609 .. 1.522 */};
    for (const Case& c : declined) {
        EXPECT_TRUE(std::isnan(noncentral_chi2_lower_double(c.x, c.df, c.lambda)))
            << c.x << ", " << c.df << ", " << c.lambda;
    }
}

}  // namespace
