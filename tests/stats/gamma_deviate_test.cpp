// The gamma and chi-square deviates at shapes below 1, where the double evaluation solves
// on the small-shape form of the lower tail: against 50-digit mpmath roots
// (reference/gen_gamma_small_shape.py), through the exports with a scale and as
// chi-square, and the double kernel itself, which must answer on the whole table (a
// decline would hand the case to the extended evaluation unnoticed). From shape 1 up, where
// one tail evaluation and the root of the log tail's Taylor polynomial usually settle the
// root, against the roots of reference/gen_gamma_deviate_shapes.py.
#include <gtest/gtest.h>

#include <cmath>

#include "platform/numeric/gamma_small_shape.hpp"
#include "reference/gamma_deviate_shapes_ref.inc"
#include "reference/gamma_small_shape_ref.inc"
#include "zemath/distributions.h"

namespace {

// The kernel's bound: about 2e-17 / a + 4e-15 (gamma_small_shape.cpp), with a margin.
double bound(double a) {
    return std::fmin(1e-13, 5e-17 / a + 5e-15);
}

double relative_error(double got, double want) {
    return std::fabs(got - want) / want;
}

TEST(GammaSmallShape, ExportsAgainstReference) {
    for (const auto& row : kGammaSmallShape) {
        SCOPED_TRACE(testing::Message() << "p = " << row.p << ", a = " << row.a);
        // Scales that are powers of two keep the exact root exactly scaled.
        for (const double scale : {1.0, 0.125, 1024.0}) {
            int status = -1;
            const double x = gaminv(row.p, row.a, scale, &status);
            EXPECT_EQ(status, 0);
            EXPECT_LE(relative_error(x / scale, row.x), bound(row.a)) << "scale " << scale;
        }
        if (std::isnormal(2.0 * row.x)) {
            int status = -1;
            const double x = chi2inv(row.p, 2.0 * row.a, &status);
            EXPECT_EQ(status, 0);
            EXPECT_LE(relative_error(x / 2.0, row.x), bound(row.a)) << "chi2inv";
        }
    }
}

TEST(GammaSmallShape, DoubleKernelAnswersOnTheWholeTable) {
    int rows = 0;
    for (const auto& row : kGammaSmallShape) {
        if (row.a >= 1.0) continue;
        ++rows;
        SCOPED_TRACE(testing::Message() << "p = " << row.p << ", a = " << row.a);
        const double x = zemath::numeric::gamma_deviate_small_shape(row.a, row.p);
        ASSERT_FALSE(std::isnan(x));
        EXPECT_LE(relative_error(x, row.x), bound(row.a));
    }
    EXPECT_GT(rows, 150);
}

// From shape 1 up the deviate is within about 1e-14 (the tails' 6e-15 over a sensitivity of
// at least 1); a polynomial root accepted too early would show well above that.
TEST(GammaDeviate, ShapesFromOneAgainstReference) {
    for (const auto& row : kGammaDeviateShapes) {
        SCOPED_TRACE(testing::Message() << "p = " << row.p << ", a = " << row.a);
        for (const double scale : {1.0, 0.25}) {
            int status = -1;
            const double x = gaminv(row.p, row.a, scale, &status);
            EXPECT_EQ(status, 0);
            EXPECT_LE(relative_error(x / scale, row.x), 2e-14) << "scale " << scale;
        }
        if (std::isnormal(2.0 * row.x)) {
            int status = -1;
            const double x = chi2inv(row.p, 2.0 * row.a, &status);
            EXPECT_EQ(status, 0);
            EXPECT_LE(relative_error(x / 2.0, row.x), 2e-14) << "chi2inv";
        }
    }
}

TEST(GammaSmallShape, KernelDeclinesOutsideItsRange) {
    using zemath::numeric::gamma_deviate_small_shape;
    struct Case {
        double a, p;
    };
    const Case declined[] = {
        {1.0, 0.5}, {2.0, 0.5},          {5e-5, 0.5},   {0.5, 0.0},
        {0.5, 1.0}, {0.5, std::nan("")}, {0.01, 1e-300} /* root below the normal range */};
    for (const Case& c : declined) {
        EXPECT_TRUE(std::isnan(gamma_deviate_small_shape(c.a, c.p))) << c.a << ", " << c.p;
    }
}

}  // namespace
