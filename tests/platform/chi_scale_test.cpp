// The density of the log chi scale (shared by the non-central t and the studentized range)
// against 50-digit mpmath values (reference/gen_chi_scale_density.py): degrees of freedom
// from 1 to 1e15, where the density's width 1/sqrt(2v) makes the exponent's rounding the
// density's relative error, through both tails.
#include <gtest/gtest.h>

#include <cmath>

#include "platform/numeric/chi_scale.hpp"
#include "reference/chi_scale_density_ref.inc"

namespace {

TEST(ChiScaleDensity, AgainstReference) {
    for (const auto& row : kChiScaleDensity) {
        const zemath::numeric::ChiScaleLogDensity f(row.v);
        // The density is e^X, X = ln f up to 700 in the far tails and the constant's
        // ln sqrt(v) up to 17: a few ulps of X, relative.
        const double tolerance = 6e-15 + 3e-16 * std::fabs(std::log(row.f));
        EXPECT_LE(std::fabs(f(row.y) - row.f) / row.f, tolerance)
            << "y = " << row.y << ", v = " << row.v;
        EXPECT_EQ(zemath::numeric::chi_scale_log_density(row.y, row.v), f(row.y));
    }
}

// The form given e^y by the caller (the quadratures' nodes), the same references: its
// deviance s^2 - 1 - 2y outside |y| < 1/4 carries 1.5 ulps of s^2 into the exponent where
// expm1 carries one, so the bound on the exponent's rounding is half as large again.
TEST(ChiScaleDensity, GivenTheScaleAgainstReference) {
    int outside = 0;
    for (const auto& row : kChiScaleDensity) {
        const zemath::numeric::ChiScaleLogDensity f(row.v);
        const double tolerance = 6e-15 + 4.5e-16 * std::fabs(std::log(row.f));
        EXPECT_LE(std::fabs(f(row.y, std::exp(row.y)) - row.f) / row.f, tolerance)
            << "y = " << row.y << ", v = " << row.v;
        if (std::fabs(row.y) >= 0.25) ++outside;
    }
    EXPECT_GT(outside, 10) << "rows on the s^2 - 1 - 2y side";
}

TEST(ChiScaleDensity, VanishesAtInfiniteArguments) {
    const zemath::numeric::ChiScaleLogDensity f(5.0);
    EXPECT_EQ(f(INFINITY), 0.0);
    EXPECT_EQ(f(-INFINITY), 0.0);
    EXPECT_EQ(f(800.0), 0.0);
    EXPECT_EQ(f(-INFINITY, 0.0), 0.0);
    EXPECT_EQ(f(800.0, INFINITY), 0.0);
}

}  // namespace
