// The shared numerical kernels: their constant tables against the generator's mpmath
// digits, the log-factorial and Stirling's error against mpmath, two-part arithmetic
// against exact identities, and the normal tails' symmetry and agreement.
#include <gtest/gtest.h>

#include <cfloat>
#include <cmath>
#include <limits>
#include <random>

#include "platform/numeric/extended.hpp"
#include "platform/numeric/gauss_kronrod.hpp"
#include "platform/numeric/gauss_legendre.hpp"
#include "platform/numeric/incomplete_gamma.hpp"
#include "platform/numeric/normal.hpp"
#include "platform/numeric/stirling.hpp"
#include "platform/numeric/double_double.hpp"
#include "reference/gauss_kronrod_ref.inc"
#include "reference/numeric_tables_ref.inc"

namespace {

using namespace zemath::numeric;

template <std::size_t Half, std::size_t N>
void expect_rule(const GaussLegendreRule<Half>& rule, const double (&node)[N],
                 const double (&weight)[N], const char* name) {
    static_assert(Half == N, "rule and reference differ in length");
    double weight_sum = 0.0;
    for (std::size_t i = 0; i < N; ++i) {
        EXPECT_EQ(rule.node[i], node[i]) << name << " node " << i;
        EXPECT_EQ(rule.weight[i], weight[i]) << name << " weight " << i;
        weight_sum += 2.0 * rule.weight[i];
    }
    EXPECT_NEAR(weight_sum, 2.0, 8 * DBL_EPSILON)
        << name << ": the weights integrate 1 over [-1, 1]";
}

TEST(NumericTables, GaussLegendreRulesCarryTheGeneratedDigits) {
    expect_rule(kGaussLegendre6, kRefGaussNode6, kRefGaussWeight6, "6-point");
    expect_rule(kGaussLegendre12, kRefGaussNode12, kRefGaussWeight12, "12-point");
    expect_rule(kGaussLegendre20, kRefGaussNode20, kRefGaussWeight20, "20-point");
}

template <std::size_t N>
void expect_kronrod(const KronrodNode (&rule)[N], const double (&ref)[N][3], int degree,
                    const char* name) {
    for (std::size_t i = 0; i < N; ++i) {
        EXPECT_EQ(rule[i].x, ref[i][0]) << name << " node " << i;
        EXPECT_EQ(rule[i].wk, ref[i][1]) << name << " Kronrod weight " << i;
        EXPECT_EQ(rule[i].wg, ref[i][2]) << name << " Gauss weight " << i;
    }
    // Both rules of the pair integrate x^k over [0, 2] (x shifted by 1) up to their
    // degrees: the Kronrod rule to the degree given, the Gauss rule to 2n - 1 for its n
    // points (the nodes that carry a Gauss weight).
    int gauss_points = 0;
    for (std::size_t i = 0; i < N; ++i)
        if (rule[i].wg != 0.0) gauss_points += i == 0 ? 1 : 2;
    for (int k = 0; k <= degree; ++k) {
        double kronrod = 0.0, gauss = 0.0;
        for (std::size_t i = 0; i < N; ++i) {
            const double f =
                std::pow(1.0 + rule[i].x, k) + (i == 0 ? 0.0 : std::pow(1.0 - rule[i].x, k));
            kronrod += rule[i].wk * f;
            gauss += rule[i].wg * f;
        }
        const double exact = std::ldexp(1.0, k + 1) / (k + 1);
        EXPECT_NEAR(kronrod / exact, 1.0, 64 * DBL_EPSILON) << name << " degree " << k;
        if (k < 2 * gauss_points) {
            EXPECT_NEAR(gauss / exact, 1.0, 64 * DBL_EPSILON) << name << " Gauss degree " << k;
        }
    }
}

TEST(NumericTables, GaussKronrodPairsCarryTheGeneratedDigits) {
    expect_kronrod(kGaussKronrod15, kRefGaussKronrod15, 22, "15-point");
    expect_kronrod(kGaussKronrod21, kRefGaussKronrod21, 31, "21-point");
}

TEST(NumericTables, TwentyPointRuleIsExactToDegree39) {
    // integral_0^2 x^k dx = 2^(k+1)/(k+1); odd and even degrees up to 2n - 1 = 39.
    for (int k : {0, 1, 2, 7, 20, 38, 39}) {
        const double got = gauss_legendre20([k](double x) { return std::pow(x, k); }, 0.0, 2.0);
        const double exact = std::ldexp(1.0, k + 1) / (k + 1);
        EXPECT_NEAR(got / exact, 1.0, 64 * DBL_EPSILON) << "degree " << k;
    }
}

TEST(NumericStirling, LogFactorialAndErrorTermAgainstMpmath) {
    // ln k!: a few ulps. The error term: the documented absolute bounds (lgamma minus the
    // formula at non-integers below 15, the truncated series above 15).
    for (const auto& r : kRefLogFactorial) {
        const double k = r[0];
        const bool whole = std::floor(k) == k;
        if (whole || k >= 128) {
            EXPECT_NEAR(log_factorial(k), r[1], 4 * DBL_EPSILON * std::fabs(r[1]) + 1e-300)
                << "ln " << k << "!";
        }
        const double error_tolerance = (!whole && k < 15) ? 1e-15
                                       : k <= 15          ? 2 * DBL_EPSILON * r[2]
                                       : k <= 35          ? 2e-16
                                                          : 3e-17;
        EXPECT_NEAR(stirling_error(k), r[2], error_tolerance) << "Stirling's error at " << k;
    }
    for (int k = 0; k < 16; ++k) EXPECT_EQ(stirling_error(k), kRefStirlingError[k]) << k;
}

TEST(NumericTwoPart, LogarithmGammaAndDevianceAgainstMpmath) {
    // ln v in two parts within 4e-18 absolute (the documented 3e-18 plus the reference's own
    // split), summed in the extended type.
    for (const auto& r : kRefLogTwoPart) {
        const TwoPart ln = log_two_part(r[0], 0.0);
        const Extended error = (Extended(ln.hi) - r[1]) + (Extended(ln.lo) - r[2]);
        EXPECT_LE(std::fabs(double(error)), 4e-18) << "ln " << r[0];
    }
    // The low part of the argument counts: ln(3 + 2^-51) - ln 3 = 2^-51 / 3 to first order.
    const TwoPart shifted = log_two_part(3.0, 0x1p-51), plain = log_two_part(3.0, 0.0);
    EXPECT_NEAR((shifted.hi - plain.hi) + (shifted.lo - plain.lo), 0x1p-51 / 3, 8e-18);
    for (const auto& r : kRefGammaModerate) {
        EXPECT_NEAR(gamma_moderate(r[0]), r[1], 2e-15 * r[1]) << "Gamma(" << r[0] << ")";
    }
    // The deviance: 3e-18 a absolute from the logarithm, a few ulps relative in Loader's band.
    for (const auto& r : kRefGammaDeviance) {
        const TwoPart dev = gamma_deviance(r[0], r[1], 0.0);
        EXPECT_NEAR(dev.hi + dev.lo, r[2], 4 * DBL_EPSILON * std::fabs(r[2]) + 4e-18 * r[0])
            << "a = " << r[0] << ", x = " << r[1];
    }
}

TEST(NumericTwoPart, OperationsAreExactWhereTheyMustBe) {
    // two_sum: a + b = hi + lo exactly, checked in the extended type (64 bits suffice
    // for these operands, whose exponents differ by less than 11).
    const double a = 1.0 + 0x1p-30, b = 0x1p-40 + 0x1p-60;
    const TwoPart s = two_sum(a, b);
    EXPECT_EQ(Extended(s.hi) + Extended(s.lo), Extended(a) + Extended(b));
    const TwoPart q = quick_two_sum(a, b);
    EXPECT_EQ(q.hi, s.hi);
    EXPECT_EQ(q.lo, s.lo);
    // two_product: (1 + 2^-30)^2 = 1 + 2^-29 + 2^-60, the last term below double resolution.
    const TwoPart p = two_product(a, a);
    EXPECT_EQ(p.hi, 1.0 + 0x1p-29);
    EXPECT_EQ(p.lo, 0x1p-60);
    // 1/3 to twice the precision: 3 * (hi + lo) = 1 within 2^-104.
    const TwoPart third = reciprocal(3.0);
    const TwoPart one = multiply(TwoPart{3.0, 0.0}, third);
    EXPECT_EQ(one.hi, 1.0);
    EXPECT_LE(std::fabs(one.lo), 0x1p-104);
    // ln of 10^-300 in two parts against its mpmath value -690.77552789821370520539...
    const TwoPart ln = log_two_part(1e-300, 0.0);
    EXPECT_NEAR(ln.hi, -690.7755278982137, 1e-12);
    EXPECT_EQ(negate(add(ln, negate(ln))).hi, 0.0);
}

// The exact product without an fma (Dekker's product of Veltkamp halves, std::fma past the
// split's range) and the dispatching forms against the correctly rounded std::fma of the C
// library: the error of a product and the remainder of a quotient or a square root must be the
// same doubles, bit for bit, over each range, including the guard's (factors beyond 2^996,
// products near the top of the range, where the split would overflow) and non-finite operands.
TEST(NumericTwoPart, ProductErrorAndRemainderAreTheFusedOnes) {
    const auto same = [](double x, double y) { return (std::isnan(x) && std::isnan(y)) || x == y; };
    // clang-format off
    struct Range { const char* name; double lo_exp, hi_exp, other_lo_exp, other_hi_exp; };
    const Range ranges[] = {
        {"moderate",                -3, 3, -3, 3},
        {"large factors",          150, 299, -10, 10},
        {"beyond the split",       299.9, 308.2, -300, -290},
        {"near the top",           300, 308, 0, 8},  // products up to and past 2^1022
        {"small products",        -200, -150, -80, -60},  // the error still normal
        {"opposite scales",       -200, 200, -100, 100},
    };
    // clang-format on
    std::mt19937_64 engine(7);
    std::uniform_real_distribution<double> unit(0.0, 1.0);
    for (const Range& r : ranges) {
        for (int i = 0; i < 2000; ++i) {
            const double sign = i % 2 ? -1.0 : 1.0;
            const double a = sign * std::pow(10.0, r.lo_exp + (r.hi_exp - r.lo_exp) * unit(engine));
            const double b =
                std::pow(10.0, r.other_lo_exp + (r.other_hi_exp - r.other_lo_exp) * unit(engine));
            if (!std::isfinite(a) || !std::isfinite(b)) continue;
            const double p = a * b;
            if (std::isfinite(p)) {
                ASSERT_TRUE(same(product_error(a, b, p), std::fma(a, b, -p)));
                ASSERT_TRUE(same(split_product_error(a, b, p), std::fma(a, b, -p)))
                    << r.name << ": " << a << " * " << b;
                const TwoPart t = two_product(a, b);
                ASSERT_EQ(t.hi, p);
                ASSERT_TRUE(same(t.lo, std::fma(a, b, -p)));
            }
            // a / b and sqrt(|a|): their remainders.
            const double q = a / b;
            if (std::isnormal(q)) {
                ASSERT_TRUE(same(remainder_of(a, q, b), std::fma(-q, b, a)));
                ASSERT_TRUE(same(split_remainder(a, q, b), std::fma(-q, b, a)))
                    << r.name << ": " << a << " / " << b;
            }
            const double root = std::sqrt(std::fabs(a));
            ASSERT_TRUE(same(split_remainder(std::fabs(a), root, root),
                             std::fma(-root, root, std::fabs(a))))
                << r.name << ": sqrt " << a;
        }
    }
    // The quotient next to the largest double: q b rounds past it, the remainder does not.
    const double q = DBL_MAX / 56.482427061184382;
    EXPECT_TRUE(same(split_remainder(DBL_MAX, q, 56.482427061184382),
                     std::fma(-q, 56.482427061184382, DBL_MAX)));
    constexpr double kInf = std::numeric_limits<double>::infinity();
    for (const double v : {kInf, -kInf, std::numeric_limits<double>::quiet_NaN()}) {
        EXPECT_TRUE(same(split_product_error(v, 2.0, v * 2.0), std::fma(v, 2.0, -(v * 2.0))));
        EXPECT_TRUE(same(split_remainder(1.0, v, 3.0), std::fma(-v, 3.0, 1.0)));
    }
}

TEST(NumericNormal, TailsAreSymmetricAndTheCorrectionIsUsed) {
    const double kInf = std::numeric_limits<double>::infinity();
    EXPECT_EQ(normal_upper(kInf), 0.0);
    EXPECT_EQ(normal_upper(-kInf), 1.0);
    EXPECT_EQ(normal_within(-kInf), 1.0);
    EXPECT_EQ(normal_upper(0.0), 0.5);
    for (double z : {-37.5, -8.0, -1.0, 0.25, 3.0, 20.0}) {
        EXPECT_EQ(normal_lower(z), normal_upper(-z)) << z;
        EXPECT_NEAR(normal_lower(z) + normal_upper(z), 1.0, 2 * DBL_EPSILON) << z;
        EXPECT_NEAR(normal_within(z), 1.0 - 2.0 * normal_upper(std::fabs(z)), 4 * DBL_EPSILON) << z;
    }
    // A low part of the argument moves the tail by phi(z) * z_low: at z = 30,
    // z_low = 1e-15 the tail changes by a relative 3e-14 (d ln Q / dz = -z about).
    const double base = normal_upper(30.0);
    const double moved = normal_upper(30.0, 1e-15);
    EXPECT_NEAR(moved / base - 1.0, -30.0 * 1e-15, 1e-16);
}

}  // namespace
