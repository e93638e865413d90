// The library's own error function, complementary error function and normal law.
//
// Method:
// - Near 0 (|z| <= 1.5 for erf and erfc, |x| <= 2 for the normal law): the series of
//   all-positive terms (DLMF 7.6.2)
//       erf z = (2/sqrt(pi)) z e^(-z^2) S(2 z^2),   Phi(x) - 1/2 = phi(x) x S(x^2),
//       S(w) = sum_n w^n / (1 * 3 * ... * (2n + 1)),
//   which has no cancellation; the tail functions are 1 minus it (at most a factor 30
//   of cancellation at the switch points, about 3e-15).
// - Beyond: erfc z = e^(-z^2) erfcx(z), 1 - Phi(x) = phi(x) sqrt(pi/2) erfcx(x/sqrt 2),
//   with erfcx on [1.4, 8.5] from a Chebyshev series of 35 terms (coefficients generated
//   at 60 digits by tests/reference/gen_own_special_coefficients.py), and beyond 8.5
//   from the Laplace continued fraction of the Mills ratio (DLMF 7.9.2),
//       erfc z = e^(-z^2)/sqrt(pi) * 1/(z + (1/2)/(z + 1/(z + (3/2)/(z + ...)))),
//       1 - Phi(x) = phi(x) * 1/(x + 1/(x + 2/(x + 3/(x + ...)))),
//   evaluated by the modified Lentz method (about 12 terms at z = 8.5; cap 2000 terms).
//   The other tail by 1 minus it, or by reflection (erfc(-z) = 2 - erfc z,
//   Phi(-x) = 1 - Phi(x)).
// - The Gaussian factors e^(-z^2) and e^(-x^2/2) take the square exactly (hi + lo by
//   fma), so that no ulps of x^2 enter the exponent: this keeps the far tails (erfc to
//   z = 26.5, 1 - Phi to x = 38) at full relative accuracy.
// Accuracy: worst relative error 6e-16 (erf, erfc) and 1e-15 (normal) against 50-digit
// references on dense grids including the switch points (tests/stats/
// special_own_test.cpp). Results below the smallest normal double underflow to
// subnormals or 0. NaN, +-infinity and NANUM give NANUM.
// Reference: DLMF 7.6.2, 7.9.2; A. Cuyt et al., Handbook of Continued Fractions for
// Special Functions (2008), 13.2.
#include <cmath>
#include <numbers>

#include "core/missing.hpp"
#include "stats/own_special.hpp"

namespace zemath::own {

namespace detail {

bool unusable(double x) {
    return !std::isfinite(x) || is_missing(x);
}

double exp_minus_square(double x, double c) {
    const double hi = x * x;
    const double lo = std::fma(x, x, -hi);
    return std::exp(-c * hi) * (1.0 - c * lo);
}

double mills_fraction(double x, double s) {
    constexpr int kCap = 2000;
    // Lentz's method: stands in for a zero denominator; any value far below the terms will do.
    constexpr double kTiny = 1e-300;
    constexpr double kTolerance = 2.5e-16;  // a few ulps: the rounding noise of delta
    double f = x, c = x, d = 0.0;
    for (int n = 1; n <= kCap; ++n) {
        const double a = n * s;
        d = x + a * d;
        d = d == 0.0 ? 1.0 / kTiny : 1.0 / d;
        c = x + a / c;
        if (c == 0.0) c = kTiny;
        const double delta = c * d;
        f *= delta;
        if (std::fabs(delta - 1.0) < kTolerance) return 1.0 / f;
    }
    return std::nan("");
}

}  // namespace detail

namespace {

#include "stats/own_special_coefficients.inc"

constexpr double kErfSeriesLimit = 1.5;
constexpr double kNormalSeriesLimit = 2.0;
constexpr double kErfTail = 27.0;     // erfc underflows to 0 beyond
constexpr double kNormalTail = 39.0;  // 1 - Phi underflows to 0 beyond
constexpr double kTwoOverSqrtPi = std::numbers::inv_sqrtpi * 2.0;
constexpr double kInvSqrtTwoPi = std::numbers::inv_sqrtpi / std::numbers::sqrt2;

// S(w) = sum_n w^n / (2n + 1)!!, w >= 0 moderate: terms fall once 2n + 3 > w.
double odd_factorial_series(double w) {
    constexpr int kCap = 200;
    double term = 1.0, sum = 1.0;
    for (int n = 1; n <= kCap; ++n) {
        term *= w / (2 * n + 1);
        sum += term;
        // A term below 1e-17 of the sum (a tenth of an ulp) no longer changes it.
        if (term < sum * 1e-17) return sum;
    }
    return std::nan("");
}

// erf z for 0 <= z <= kErfSeriesLimit.
double erf_series(double z) {
    return kTwoOverSqrtPi * z * detail::exp_minus_square(z, 1.0) *
           odd_factorial_series(2.0 * z * z);
}

// e^(z^2) erfc z for z > kErfcxChebLo: the Chebyshev series (Clenshaw) up to
// kErfcxChebHi, the continued fraction beyond.
double erfcx_positive(double z) {
    if (z > kErfcxChebHi) return std::numbers::inv_sqrtpi * detail::mills_fraction(z, 0.5);
    const double t = (2.0 * z - (kErfcxChebLo + kErfcxChebHi)) / (kErfcxChebHi - kErfcxChebLo);
    double b1 = 0.0, b2 = 0.0;
    for (int k = kErfcxChebCount - 1; k >= 1; --k) {
        const double b0 = 2.0 * t * b1 - b2 + kErfcxCheb[k];
        b2 = b1;
        b1 = b0;
    }
    return t * b1 - b2 + 0.5 * kErfcxCheb[0];
}

// erfc z for z > kErfSeriesLimit.
double erfc_fraction(double z) {
    if (z >= kErfTail) return 0.0;
    return detail::exp_minus_square(z, 1.0) * erfcx_positive(z);
}

// Phi(x) - 1/2 for |x| <= kNormalSeriesLimit (odd in x).
double normal_series(double x) {
    return kInvSqrtTwoPi * detail::exp_minus_square(x, 0.5) * x * odd_factorial_series(x * x);
}

// 1 - Phi(x) for x > kNormalSeriesLimit: phi(x) times the Mills ratio, sqrt(pi/2)
// erfcx(x/sqrt 2) (the rounding of x/sqrt 2 moves erfcx by about an ulp: its logarithmic
// derivative times z is below 1) or the continued fraction beyond the Chebyshev range.
double normal_fraction(double x) {
    if (x >= kNormalTail) return 0.0;
    const double z = x / std::numbers::sqrt2;
    const double mills = z <= kErfcxChebHi ? std::sqrt(std::numbers::pi / 2.0) * erfcx_positive(z)
                                           : detail::mills_fraction(x, 1.0);
    return kInvSqrtTwoPi * detail::exp_minus_square(x, 0.5) * mills;
}

double checked(double v) {
    return std::isnan(v) ? NANUM : v;
}

}  // namespace

double erf(double x) {
    if (detail::unusable(x)) return NANUM;
    const double z = std::fabs(x);
    const double v = z <= kErfSeriesLimit ? erf_series(z) : 1.0 - erfc_fraction(z);
    return checked(std::copysign(v, x));
}

double erfc(double x) {
    if (detail::unusable(x)) return NANUM;
    const double z = std::fabs(x);
    double v;
    if (z <= kErfSeriesLimit) {
        const double e = erf_series(z);
        v = x < 0.0 ? 1.0 + e : 1.0 - e;
    } else {
        const double t = erfc_fraction(z);
        v = x < 0.0 ? 2.0 - t : t;
    }
    return checked(v);
}

double normal_lower(double x) {
    if (detail::unusable(x)) return NANUM;
    if (std::fabs(x) <= kNormalSeriesLimit) return checked(0.5 + normal_series(x));
    const double tail = normal_fraction(std::fabs(x));
    return checked(x < 0.0 ? tail : 1.0 - tail);
}

double normal_upper(double x) {
    if (detail::unusable(x)) return NANUM;
    if (std::fabs(x) <= kNormalSeriesLimit) return checked(0.5 - normal_series(x));
    const double tail = normal_fraction(std::fabs(x));
    return checked(x > 0.0 ? tail : 1.0 - tail);
}

}  // namespace zemath::own
