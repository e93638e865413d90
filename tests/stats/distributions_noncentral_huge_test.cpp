// The non-central t at large non-centralities and the non-central chi-square, beta and F at
// large non-centralities: mpmath references (tests/reference/gen_noncentral_t_large_delta.py,
// gen_noncentral_chi2_huge_lambda.py, gen_noncentral_beta_huge_lambda.py,
// gen_noncentral_far_tails.py, gen_noncentral_beta_deep_tails.py,
// gen_noncentral_chi2_deep_tails.py, gen_noncentral_window_sums.py) across the paths and their
// switch points, and the refusals on either side of each bound.
#include <gtest/gtest.h>

#include <cfloat>
#include <cmath>

#include "zemath/distributions.h"
#include "zemath/status.h"

namespace {

// Flat members, as the generated rows are written (no inner braces).
struct Row {
    double a, b, c, expected;
};

const Row kStudentLargeDelta[] = {
#include "reference/noncentral_t_large_delta_ref.inc"
};
// Where the integral over the scale law runs beyond that grid: either side of its switches
// (|delta| = 40, df = 1e5, df = 1e10), non-integer df near 1 at large |delta| (the scale
// density's s^(df - 1) at s = 0), and seeded random arguments with lower tails down to 1e-250
// and upper tails to 1e-15 (generated with --scale).
const Row kStudentScaleLaw[] = {
#include "reference/noncentral_t_scale_ref.inc"
};
const Row kStudentHugeT[] = {
#include "reference/noncentral_t_huge_t_ref.inc"
};
const Row kChiSquareHugeLambda[] = {
#include "reference/noncentral_chi2_huge_lambda_ref.inc"
};
// Just above the point where the chi-square's lower tail leaves the double range, 0 below it.
const Row kChiSquareDeepTails[] = {
#include "reference/noncentral_chi2_deep_tails_ref.inc"
};

// kind 1: ncbetacdf(x, a, b, lambda); kind 2: ncfcdf(f, df1, df2, lambda).
struct MixtureRow {
    double kind, p0, p1, p2, lambda, expected;
};
const MixtureRow kBetaHugeLambda[] = {
#include "reference/noncentral_beta_huge_lambda_ref.inc"
};
// kind 0: ncchi2cdf(p0, p1, lambda); 1 and 2 as above. Expected 0 below 2^-1075.
const MixtureRow kFarLowerTails[] = {
#include "reference/noncentral_far_tails_ref.inc"
};
// 1 and 2 as above, deep in the lower tail at lambda 1e7 .. 1e9. Expected 0 below 2^-1075.
const MixtureRow kDeepLowerTails[] = {
#include "reference/noncentral_beta_deep_tails_ref.inc"
};
// 0, 1 and 2 as above, far in the lower tail at lambda 4e7 .. 1e9 (and the chi-square near
// lambda 2000 where its strided sum starts far below the largest terms). Expected 0 below
// 2^-1075.
const MixtureRow kWindowSums[] = {
#include "reference/noncentral_window_sums_ref.inc"
};

// Every row within 1e-13 relative, status 0; returns the worst error seen.
template <class F, std::size_t N>
double check_table(const char* name, const Row (&rows)[N], F call) {
    double worst = 0.0;
    for (const Row& r : rows) {
        int status = -1;
        const double v = call(r.a, r.b, r.c, &status);
        EXPECT_EQ(status, 0) << name << "(" << r.a << ", " << r.b << ", " << r.c << ")";
        const double error = std::fabs(v - r.expected) / r.expected;
        EXPECT_LE(error, 1e-13) << name << "(" << r.a << ", " << r.b << ", " << r.c << ") = " << v
                                << ", expected " << r.expected;
        if (error > worst) worst = error;
    }
    return worst;
}

double student(double t, double df, double delta, int* status) {
    return nctcdf(t, df, delta, 100, status);
}
double chi_square(double x, double df, double lambda, int* status) {
    return ncchi2cdf(x, df, lambda, status);
}

TEST(NoncentralHuge, StudentAtLargeNoncentralities) {
    const double worst = check_table("nctcdf", kStudentLargeDelta, student);
    std::printf("[accuracy] nctcdf |delta| 41..1e4: %zu rows, worst relative error %.2e\n",
                std::size(kStudentLargeDelta), worst);
}

TEST(NoncentralHuge, StudentOverTheScaleLaw) {
    const double worst = check_table("nctcdf", kStudentScaleLaw, student);
    std::printf("[accuracy] nctcdf over the scale law: %zu rows, worst relative error %.2e\n",
                std::size(kStudentScaleLaw), worst);
}

// t <= -1e10: the law's far lower tail from the scale law's cdf in its power form (a closed
// form from t = -1e50 on); t >= 1e50 gives 1 (the upper tail is below 1e-46 there). Across
// the switch at t = -1e10 (from the series and the integral over the scale law) the lower
// tail scales as |t|^-df.
TEST(NoncentralHuge, StudentAtHugeT) {
    const double worst = check_table("nctcdf", kStudentHugeT, student);
    std::printf("[accuracy] nctcdf t <= -1e10: %zu rows, worst relative error %.2e\n",
                std::size(kStudentHugeT), worst);
    int status = -1;
    EXPECT_EQ(nctcdf(1e50, 1.0, 1e4, 100, &status), 1.0);
    EXPECT_EQ(status, 0);
    struct Case {
        double df, delta;
    };
    for (const Case c : {Case{1.0, -1.3}, Case{3.0, -100.0}, Case{2.0, 5.0}, Case{6.0, -1e4},
                         Case{30.0, 0.5}, Case{1.5, 30.0}, Case{4.0, -39.0}}) {
        const double below = std::nextafter(-1e10, 0.0);  // the series' and quadrature's side
        const double at = nctcdf(-1e10, c.df, c.delta, 100, &status);
        EXPECT_EQ(status, 0);
        const double near = nctcdf(below, c.df, c.delta, 100, &status);
        EXPECT_EQ(status, 0);
        EXPECT_NEAR(near / at, std::pow(-1e10 / below, c.df), 1e-13) << c.df << " " << c.delta;
    }
}

TEST(NoncentralHuge, ChiSquareAtLargeNoncentralities) {
    const double worst = check_table("ncchi2cdf", kChiSquareHugeLambda, chi_square);
    std::printf("[accuracy] ncchi2cdf lambda 2001..1e9: %zu rows, worst relative error %.2e\n",
                std::size(kChiSquareHugeLambda), worst);
}

// The switch from the mixture run term by term (lambda <= 2000) to the strided sum: one ulp
// of lambda moves the law by under 5e-14 relative at these points (d ln P / d lambda is at
// most about |z| / sd = 0.1), so the two paths must agree to their own accuracy.
TEST(NoncentralHuge, ChiSquareAcrossTheStrideSwitch) {
    const double above = std::nextafter(2000.0, 3000.0);
    for (double df : {1.0, 50.0, 3000.0}) {
        const double sd = std::sqrt(2.0 * df + 8000.0);
        for (double z : {-8.0, -3.0, 0.0, 3.0}) {
            const double x = df + 2000.0 + z * sd;
            int s1 = -1, s2 = -1;
            const double at = ncchi2cdf(x, df, 2000.0, &s1);
            const double next = ncchi2cdf(x, df, above, &s2);
            EXPECT_EQ(s1, 0);
            EXPECT_EQ(s2, 0);
            EXPECT_NEAR(next / at, 1.0, 1e-13) << x << " " << df;
        }
    }
}

TEST(NoncentralHuge, BetaAndFAtLargeNoncentralities) {
    double worst = 0.0;
    for (const MixtureRow& r : kBetaHugeLambda) {
        int status = -1;
        const double v = r.kind == 1.0 ? ncbetacdf(r.p0, r.p1, r.p2, r.lambda, &status)
                                       : ncfcdf(r.p0, r.p1, r.p2, r.lambda, &status);
        EXPECT_EQ(status, 0) << r.kind << ": " << r.p0 << ", " << r.p1 << ", " << r.p2 << ", "
                             << r.lambda;
        const double error = std::fabs(v - r.expected) / r.expected;
        EXPECT_LE(error, 1e-13) << r.kind << ": " << r.p0 << ", " << r.p1 << ", " << r.p2 << ", "
                                << r.lambda << " = " << v << ", expected " << r.expected;
        worst = std::fmax(worst, error);
    }
    std::printf(
        "[accuracy] ncbetacdf, ncfcdf lambda 1500..1e9: %zu rows, worst relative error %.2e\n",
        std::size(kBetaHugeLambda), worst);
}

// The beta and F mixtures' switch from the term-by-term run (lambda <= 1600) to the strided
// sum: one ulp of lambda moves the law by far less than 1e-13 relative at these points, so
// the two paths must agree to their own accuracy.
TEST(NoncentralHuge, BetaAndFAcrossTheStrideSwitch) {
    const double lambda = 1600.0, above = std::nextafter(lambda, 3000.0);
    struct Shapes {
        double a, b;
    };
    for (const Shapes& sh :
         {Shapes{0.5, 2.0}, Shapes{2.5, 5.0}, Shapes{300.0, 40.0}, Shapes{50.0, 1000.0}}) {
        const double mu = 2.0 * sh.a + lambda, mv = 2.0 * sh.b;
        const double sd = std::sqrt(mv * mv * (4.0 * sh.a + 8.0 * lambda) + mu * mu * 4.0 * sh.b) /
                          ((mu + mv) * (mu + mv));
        for (double z : {-6.0, -2.0, 0.0, 3.0}) {
            const double x = mu / (mu + mv) + z * sd;
            if (!(x > 0.0 && x < 1.0)) continue;
            const double f = (x / (2.0 * sh.a)) / ((1.0 - x) / (2.0 * sh.b));
            int s1 = -1, s2 = -1, s3 = -1, s4 = -1;
            const double beta_at = ncbetacdf(x, sh.a, sh.b, lambda, &s1);
            const double beta_next = ncbetacdf(x, sh.a, sh.b, above, &s2);
            const double f_at = ncfcdf(f, 2.0 * sh.a, 2.0 * sh.b, lambda, &s3);
            const double f_next = ncfcdf(f, 2.0 * sh.a, 2.0 * sh.b, above, &s4);
            EXPECT_EQ(s1 | s2 | s3 | s4, 0);
            EXPECT_NEAR(beta_next / beta_at, 1.0, 1e-13) << x << " " << sh.a << " " << sh.b;
            EXPECT_NEAR(f_next / f_at, 1.0, 1e-13) << f << " " << sh.a << " " << sh.b;
        }
    }
}

// On both sides of the point where the lower tails leave the double range: results above
// 1e-300 within 1e-13, subnormal ones (below the accuracy promised) within 1% and two units
// of the last place, and exact zeros below half the smallest subnormal, whether proven at once
// or found by summing.
TEST(NoncentralHuge, FarLowerTails) {
    constexpr double kSubnormalUnit = 4.9406564584124654e-324;
    for (const MixtureRow& r : kFarLowerTails) {
        int status = -1;
        const double v = r.kind == 0.0   ? ncchi2cdf(r.p0, r.p1, r.lambda, &status)
                         : r.kind == 1.0 ? ncbetacdf(r.p0, r.p1, r.p2, r.lambda, &status)
                                         : ncfcdf(r.p0, r.p1, r.p2, r.lambda, &status);
        const auto where = [&] {
            return ::testing::Message()
                   << r.kind << ": " << r.p0 << ", " << r.p1 << ", " << r.p2 << ", " << r.lambda
                   << " = " << v << ", expected " << r.expected;
        };
        EXPECT_EQ(status, 0) << where();
        if (r.expected == 0.0)
            EXPECT_EQ(v, 0.0) << where();
        else if (r.expected < DBL_MIN)
            EXPECT_LE(std::fabs(v - r.expected), 0.01 * r.expected + 2.0 * kSubnormalUnit)
                << where();
        else
            EXPECT_LE(std::fabs(v - r.expected), 1e-13 * r.expected) << where();
    }
}

// Deep in the lower tail: a result above the normal range's bottom within 1e-13, a subnormal
// one rounded once (within a unit of the last place of the correctly rounded value), a zero
// exact. Returns the relative error of a normal result, else 0.
double deep_tail_error(double v, double expected, const ::testing::Message& where) {
    constexpr double kSubnormalUnit = 4.9406564584124654e-324;
    if (expected == 0.0) {
        EXPECT_EQ(v, 0.0) << where;
        return 0.0;
    }
    if (expected < DBL_MIN) {
        EXPECT_LE(std::fabs(v - expected), 1e-13 * expected + kSubnormalUnit) << where;
        return 0.0;
    }
    const double error = std::fabs(v - expected) / expected;
    EXPECT_LE(error, 1e-13) << where;
    return error;
}

// Each row's law (kind 0: chi-square, 1: beta, otherwise F) against its far-tail reference;
// returns the worst relative error over the normal results.
template <std::size_t N>
double deep_tail_rows(const MixtureRow (&rows)[N]) {
    double worst = 0.0;
    for (const MixtureRow& r : rows) {
        int status = -1;
        const double v = r.kind == 0.0   ? ncchi2cdf(r.p0, r.p1, r.lambda, &status)
                         : r.kind == 1.0 ? ncbetacdf(r.p0, r.p1, r.p2, r.lambda, &status)
                                         : ncfcdf(r.p0, r.p1, r.p2, r.lambda, &status);
        const auto where = ::testing::Message()
                           << r.kind << ": " << r.p0 << ", " << r.p1 << ", " << r.p2 << ", "
                           << r.lambda << " = " << v << ", expected " << r.expected;
        EXPECT_EQ(status, 0) << where;
        worst = std::fmax(worst, deep_tail_error(v, r.expected, where));
    }
    return worst;
}

// The beta and F laws at huge non-centralities, shapes down to the smallest subnormal.
TEST(NoncentralHuge, BetaAndFDeepLowerTails) {
    std::printf(
        "[accuracy] ncbetacdf, ncfcdf deep lower tails: %zu rows, worst relative error "
        "%.2e (normal results)\n",
        std::size(kDeepLowerTails), deep_tail_rows(kDeepLowerTails));
}

// Far in the lower tail at lambda 4e7 .. 1e9: results from 1e-4 through the subnormal range to
// 0, on both sides of the point where the Chernoff bound proves 0, shapes from 1e5 down to the
// smallest subnormal; and the chi-square near lambda 2000 with x far under the mean and df large
// beside lambda, where the strided sum starts far below its largest terms and walks to u near 0.
TEST(NoncentralHuge, FarLowerTailsAgainstWindowSums) {
    std::printf(
        "[accuracy] ncchi2cdf, ncbetacdf, ncfcdf far lower tails at lambda up to 1e9: %zu rows, "
        "worst relative error %.2e (normal results)\n",
        std::size(kWindowSums), deep_tail_rows(kWindowSums));
}

// The chi-square at huge non-centralities just above the point where it leaves the range.
TEST(NoncentralHuge, ChiSquareDeepLowerTails) {
    for (const Row& r : kChiSquareDeepTails) {
        int status = -1;
        const double v = ncchi2cdf(r.a, r.b, r.c, &status);
        const auto where = ::testing::Message() << r.a << ", " << r.b << ", " << r.c << " = " << v
                                                << ", expected " << r.expected;
        EXPECT_EQ(status, 0) << where;
        deep_tail_error(v, r.expected, where);
    }
}

// Below b = 1e-20 the beta law's lower tail is b times a function of x, a and lambda alone
// to double precision (its central terms' small-shape limit), down to the smallest subnormal
// b; where x is within 1e-8 of 1 the law is of the size of b itself.
TEST(NoncentralHuge, BetaLowerTailIsLinearInATinySecondShape) {
    struct Case {
        double x, a, lambda;
    };
    for (const Case c :
         {Case{0.99999999, 2.5, 1e8}, Case{0.999999, 300.0, 2e7}, Case{0.9999999, 1e-300, 1e7}}) {
        int status = -1;
        const double at = ncbetacdf(c.x, c.a, 1e-25, c.lambda, &status);
        ASSERT_EQ(status, 0);
        ASSERT_GT(at, 0.0);
        for (double b : {1e-100, 1e-200, 1e-300}) {
            const double v = ncbetacdf(c.x, c.a, b, c.lambda, &status);
            EXPECT_EQ(status, 0);
            EXPECT_NEAR(v / b, at / 1e-25, 1e-14 * (at / 1e-25)) << c.x << " " << c.a << " " << b;
        }
        // A subnormal b: the law is rounded once into the subnormal range.
        const double b = 1e-310;
        const double v = ncbetacdf(c.x, c.a, b, c.lambda, &status);
        EXPECT_EQ(status, 0);
        EXPECT_NEAR(v, at / 1e-25 * b, 4.9406564584124654e-324) << c.x << " " << c.a;
    }
}

// The documented bounds, both sides: |delta| <= 1e4 computed, beyond refused with 7;
// lambda <= 1e9 computed, beyond refused with 7.
TEST(NoncentralHuge, RefusalBounds) {
    int status = -1;
    for (double delta : {1e4, -1e4}) {
        const double v = nctcdf(delta, 1e3, delta, 100, &status);
        EXPECT_EQ(status, 0);
        EXPECT_GT(v, 0.4);
        EXPECT_LT(v, 0.6);
        EXPECT_EQ(nctcdf(delta, 1e3, std::nextafter(delta, 2 * delta), 100, &status), NANUM);
        EXPECT_EQ(status, 7);
    }
    const double v = ncchi2cdf(1e9 + 1e4, 1e4, 1e9, &status);
    EXPECT_EQ(status, 0);
    EXPECT_GT(v, 0.4);
    EXPECT_LT(v, 0.6);
    EXPECT_EQ(ncchi2cdf(1e9 + 1e4, 1e4, std::nextafter(1e9, 2e9), &status), NANUM);
    EXPECT_EQ(status, 7);
    EXPECT_EQ(ncbetacdf(0.99999999, 2.5, 5.0, std::nextafter(1e9, 2e9), &status), NANUM);
    EXPECT_EQ(status, 7);
    EXPECT_EQ(ncfcdf(1e5, 1e4, 1e5, std::nextafter(1e9, 2e9), &status), NANUM);
    EXPECT_EQ(status, 7);
}

}  // namespace
