// The non-central chi-square, beta and F laws at large degrees of freedom and shapes: mpmath
// references near the mean (tests/reference/gen_noncentral_large.py) up to the largest
// parameters computed, and the refusals on either side of each bound.
#include <gtest/gtest.h>

#include <algorithm>
#include <cfloat>
#include <cmath>

#include "zemath/distributions.h"
#include "zemath/status.h"

namespace {

struct Row {
    int kind;  // 0 chi-square (x, df, lambda), 1 beta (x, a, b, lambda), 2 F (f, df1, df2, lambda)
    double p[4];
    double expected;
};

const Row kRows[] = {
#include "reference/noncentral_large_ref.inc"
};

double evaluate(int kind, const double* p, int* status) {
    switch (kind) {
        case 0:
            return ncchi2cdf(p[0], p[1], p[2], status);
        case 1:
            return ncbetacdf(p[0], p[1], p[2], p[3], status);
        default:
            return ncfcdf(p[0], p[1], p[2], p[3], status);
    }
}

const char* const kNames[] = {"ncchi2cdf", "ncbetacdf", "ncfcdf"};

// Shapes above the limits (beta 1e9, F degrees of freedom 2e9; the table goes to 4e9 and 8e9),
// and a non-centrality above 1600 beside a shape above 1e5: refused with 7.
bool beyond_limit(const Row& r) {
    if (r.kind == 0) return false;
    const double shape = std::max(r.p[1], r.p[2]) * (r.kind == 2 ? 0.5 : 1.0);
    return shape > 1e9 || (shape > 1e5 && r.p[3] > 1600);
}

TEST(NoncentralLarge, MatchesMpmathUpToTheLargestShapes) {
    for (const Row& r : kRows) {
        int status = -1;
        const double v = evaluate(r.kind, r.p, &status);
        if (beyond_limit(r)) {
            EXPECT_EQ(v, NANUM);
            EXPECT_EQ(status, 7) << kNames[r.kind] << " " << r.p[1] << " " << r.p[2];
            continue;
        }
        EXPECT_EQ(status, 0) << kNames[r.kind] << " " << r.p[0] << " " << r.p[1] << " " << r.p[2]
                             << " " << r.p[3];
        EXPECT_NEAR(v, r.expected, 2e-13 * r.expected)
            << kNames[r.kind] << "(" << r.p[0] << ", " << r.p[1] << ", " << r.p[2] << ", " << r.p[3]
            << ")";
    }
}

// Each bound: the value at it is computed (near 1/2 at the mean), the next double above it
// refused with 7 and NANUM, and far beyond too (where Boost's fraction once ran unbounded).
TEST(NoncentralLarge, RefusedAboveTheShapeLimits) {
    struct Case {
        int kind;
        double at[4];      // at the bound: computed
        double beyond[4];  // past it: refused
    };
    const double chi2_df = 1e10, beta_shape = 1e9, f_df = 2e9, big = 1600;
    // clang-format off
    const Case cases[] = {
        {0, {chi2_df, chi2_df, 1.0}, {chi2_df, std::nextafter(chi2_df, DBL_MAX), 1.0}},
        {0, {1e15, chi2_df, 1.0}, {1e15, 1e15, 1.0}},
        {0, {1e300, chi2_df, 0.0}, {1e300, 1e300, 1.0}},
        {1, {0.5, beta_shape, beta_shape, 1e-3}, {0.5, std::nextafter(beta_shape, DBL_MAX), beta_shape, 1e-3}},
        {1, {0.5, beta_shape, beta_shape, 1.0}, {0.5, beta_shape, std::nextafter(beta_shape, DBL_MAX), 1.0}},
        {1, {0.5, 1e5, 1e5, 1e9}, {0.5, std::nextafter(1e5, DBL_MAX), 1e5, big * 1.01}},
        {1, {0.5, 1e5, 1e5, 1e9}, {0.5, 1e5, 1e8, 1e4}},
        {1, {0.5, 2e5, 2e5, big}, {0.5, 2e5, 2e5, std::nextafter(big, DBL_MAX)}},
        {1, {0.5, 1e8, 1e8, 0.0}, {0.5, 1e20, 1e20, 1e-3}},
        {2, {1.0, f_df, f_df, 0.0}, {1.0, std::nextafter(f_df, DBL_MAX), f_df, 0.0}},
        {2, {1.0, f_df, 3.0, 1.0}, {1.0, 3.0, std::nextafter(f_df, DBL_MAX), 1.0}},
        {2, {1.0, 4e5, 4e5, big}, {1.0, 4e5, 4e5, std::nextafter(big, DBL_MAX)}},
        {2, {1.0, 1e8, 1e8, 1.4015357800167431e-309}, {1.0, 1e300, 1e300, 1.4015357800167431e-309}},
        {2, {1.0, 1e8, 1e8, 1.0}, {1.0, 1e20, 1e20, 1.0}},
    };
    // clang-format on
    for (const Case& c : cases) {
        int status = -1;
        const double v = evaluate(c.kind, c.at, &status);
        EXPECT_EQ(status, 0) << kNames[c.kind] << " at " << c.at[1] << " " << c.at[3];
        EXPECT_TRUE(v >= 0.0 && v <= 1.0) << kNames[c.kind] << " " << v;
        status = -1;
        EXPECT_EQ(evaluate(c.kind, c.beyond, &status), NANUM)
            << kNames[c.kind] << " " << c.beyond[1];
        EXPECT_EQ(status, 7) << kNames[c.kind] << " beyond " << c.beyond[1] << " " << c.beyond[3];
    }
}

// The non-central t at df 1e6 .. 1e300 (the quadrature up to 1e10, the expansion in 1/df
// beyond) against its integral over the scale law in mpmath.
struct TRow {
    double t, df, delta, expected;
};
const TRow kTRows[] = {
#include "reference/noncentral_t_huge_df_ref.inc"
};

TEST(NoncentralLarge, StudentAtHugeDegreesOfFreedom) {
    for (const TRow& r : kTRows) {
        int status = -1;
        const double v = nctcdf(r.t, r.df, r.delta, 100, &status);
        const double c = r.t - r.delta;
        if (r.df > 1e10 && r.t * r.t * (1 + c * c) > 1e-7 * r.df) {  // the documented refusal
            EXPECT_EQ(v, NANUM);
            EXPECT_EQ(status, 7) << r.t << " " << r.df << " " << r.delta;
            continue;
        }
        EXPECT_EQ(status, 0) << r.t << " " << r.df << " " << r.delta;
        EXPECT_NEAR(v, r.expected, 1e-13 * r.expected)
            << "nctcdf(" << r.t << ", " << r.df << ", " << r.delta << ")";
    }
    // Above df 1e10 the expansion's bound t^2 (1 + (t - delta)^2) <= 1e-7 df decides: at
    // df 1e15, t = delta = 1e4 gives 1e8 (1 + 0) = 1e-7 df (taken), t = 1e4 + 0.1 refused.
    int status = -1;
    EXPECT_NEAR(nctcdf(1e4, 1e15, 1e4, 100, &status), 0.5, 1e-11);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(nctcdf(1e4 + 0.1, 1e15, 1e4, 100, &status), NANUM);
    EXPECT_EQ(status, 7);
}

}  // namespace
