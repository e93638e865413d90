// s14aac Gamma(x), s14abc ln Gamma(x), s14aec psi^(k)(x) (k = 0..6), s14bac the
// regularised incomplete gamma pair P(a, x), Q(a, x).
//
// Method:
//   Gamma: Boost.Math (Lanczos approximation with reflection).
//   ln Gamma, in double: Chebyshev series (coefficients from
//     tests/reference/gen_s_coefficients.py, mpmath at 50 digits) of ln Gamma(x) / ((x - 1)
//     (x - 2)) on [3/4, 5/2], so the zeros at 1 and 2 keep relative accuracy; below 3/4
//     ln Gamma(x + 1) - ln x; ln Gamma itself on the unit intervals of [5/2, 31/2]; beyond,
//     Stirling's formula with numeric::stirling_error. A few ulps.
//   psi, psi': Boost.Math (rational approximations and reflection); orders 2..6 by the
//     recurrence to x >= 20 and the asymptotic expansion with Bernoulli numbers (negative x:
//     the recurrence upward).
//   P(a, x), Q(a, x): the double kernel of platform/numeric/incomplete_gamma (the Taylor
//     form for a < 1 and x <= 1.5, Temme's uniform expansion for a >= 50 near x = a,
//     otherwise series or continued fraction with the prefactor's exponent in two parts:
//     within 7e-15 for every shape up to 1000, and beyond where |x - a| < (x + a)/10);
//     elsewhere (a > 1000 in the tails, x = 0 or subnormal, a tail outside the normal
//     range) Boost.Math in long double, one tail from shape 1 on (the side below about
//     1/2, the other as 1 minus it), both for smaller shapes.
// A few ulps except near the zeros of psi, where the error is absolute.
//
// Failures (value 0): Gamma at 0 and the negative integers (NE_REAL), for x >= 171.62
// (overflow, NE_REAL_ARG_GT), for x < -170 (underflow to subnormals, NE_REAL_ARG_LT) and for
// |x| < 1/DBL_MAX (NE_REAL_ARG_TOO_SMALL); ln Gamma for x <= 0 (NE_REAL_ARG_LE) and
// x > 2.55e305 (NE_REAL_ARG_GT); polygamma for k outside 0..6 (NE_INT), x at or within
// rounding of a non-positive integer (NE_REAL), x < -1e6 (NE_REAL_ARG_LT), overflow
// (NE_REAL_ARG_GT); the incomplete gamma for a <= 0 (NE_REAL_ARG_LE), x < 0 (NE_REAL_ARG_LT). NaN:
// NE_REAL.
#include <algorithm>
#include <cmath>
#include <limits>

#include "platform/nag/s_policy.hpp"  // first: configures Boost
#include <boost/math/special_functions/gamma.hpp>
#include <boost/math/special_functions/digamma.hpp>
#include <boost/math/special_functions/trigamma.hpp>

#include "platform/nag/s.hpp"
#include "platform/nag/s_chebyshev.hpp"
#include "platform/numeric/incomplete_gamma.hpp"
#include "platform/numeric/stirling.hpp"

namespace zemath::nag {

namespace {

using QuietPolicy = detail::SpecialPolicy;
constexpr double kGammaOverflow = 171.62437695630271;
constexpr double kGammaUnderflow = -170.0;  // below: |Gamma| subnormal or 0
constexpr double kLogGammaOverflow = 2.55e305;
constexpr double kPolygammaMostNegative = -1e6;  // the recurrence's step count bound

// psi^(k)(x), k >= 2, x > 0: the recurrence psi^(k)(x) = psi^(k)(x + 1) - (-1)^k k! /
// x^(k+1) up to x >= 20 (all the added terms have the sign of the result), then the
// asymptotic expansion
//     (-1)^(k+1) psi^(k)(x) ~ (k-1)!/x^k + k!/(2 x^(k+1)) + sum_j B_2j (2j+k-1)!/((2j)! x^(2j+k)).
double polygamma_positive(int k, double x) {
    constexpr double kBernoulli[] = {1.0 / 6,         -1.0 / 30,      1.0 / 42,
                                     -1.0 / 30,       5.0 / 66,       -691.0 / 2730,
                                     7.0 / 6,         -3617.0 / 510,  43867.0 / 798,
                                     -174611.0 / 330, 854513.0 / 138, -236364091.0 / 2730};
    double factorial = 1.0;  // k!
    for (int i = 2; i <= k; ++i) factorial *= i;
    double shifted = 0.0;  // sum of k! / (x + m)^(k+1)
    while (x < 20.0) {
        shifted += factorial / std::pow(x, k + 1);
        x += 1.0;
    }
    const double inv = 1.0 / x;
    double sum = factorial / k * std::pow(inv, k) + 0.5 * factorial * std::pow(inv, k + 1);
    // coefficient (2j+k-1)!/(2j)! / x^(2j+k), built up term by term
    double coef = factorial / k * std::pow(inv, k);  // (k-1)! / x^k, the j = 0 factor
    const double inv2 = inv * inv;
    for (int j = 1; j <= 12; ++j) {
        coef *= (2.0 * j + k - 2) * (2.0 * j + k - 1) / ((2.0 * j - 1) * (2.0 * j)) * inv2;
        const double term = kBernoulli[j - 1] * coef;
        sum += term;
        // A term below 1e-18 of the sum (a hundredth of an ulp) no longer changes it.
        if (std::fabs(term) < 1e-18 * std::fabs(sum)) break;
    }
    const double magnitude = sum + shifted;
    return (k % 2 == 1) ? magnitude : -magnitude;
}

double polygamma(int k, double x) {
    if (k == 0) return boost::math::digamma(x, QuietPolicy());
    if (k == 1) return boost::math::trigamma(x, QuietPolicy());
    if (x > 0.0) return polygamma_positive(k, x);
    // Negative x: the recurrence up to (0, 1].
    double factorial = 1.0;
    for (int i = 2; i <= k; ++i) factorial *= i;
    const double sign = (k % 2 == 0) ? 1.0 : -1.0;  // (-1)^k
    double correction = 0.0;
    double y = x;
    while (y <= 0.0) {
        correction += sign * factorial / std::pow(y, k + 1);
        y += 1.0;
    }
    return polygamma_positive(k, y) - correction;
}

using detail::chebyshev;

// ln Gamma(x) for 3/4 <= x < 5/2 as (x - 1)(x - 2) R(x): relative accuracy at the zeros.
double log_gamma_near_zeros(double x) {
    const double r = x < 1.5 ? chebyshev(detail::kLogGammaNearZeros[0], (2.0 * x - 2.25) / 0.75)
                             : chebyshev(detail::kLogGammaNearZeros[1], 2.0 * x - 4.0);
    return (x - 1.0) * (x - 2.0) * r;
}

// ln Gamma(x), 0 < x <= kLogGammaOverflow.
double log_gamma_positive(double x) {
    constexpr double kHalfLnTwoPi = 0.91893853320467274178;
    constexpr double kStirlingFrom = 15.5;
    // Below 3/4: ln Gamma(x + 1) - ln x; x + 1 rounds by at most 2^-53, which moves
    // ln Gamma(x + 1) by less than 1e-16 absolute against a result above 0.2.
    if (x < 0.75) return log_gamma_near_zeros(x + 1.0) - std::log(x);
    if (x < 2.5) return log_gamma_near_zeros(x);
    if (x < kStirlingFrom) {
        const int i = std::min(static_cast<int>(x - 2.5), 12);  // x - 2.5 is exact here
        return chebyshev(detail::kLogGammaMiddle[i], 2.0 * (x - 2.5 - i) - 1.0);
    }
    // Stirling's formula with its error term; x (ln x - 1) keeps x ln x from overflowing.
    const double lx = std::log(x);
    return x * (lx - 1.0) - 0.5 * lx + kHalfLnTwoPi + numeric::stirling_error(x);
}

}  // namespace

double s14aac(double x, NagError* fail) {
    fail->set(NE_NOERROR);
    if (std::isnan(x)) return fail->set(NE_REAL), 0.0;
    if (x >= kGammaOverflow) return fail->set(NE_REAL_ARG_GT), 0.0;
    if (x < kGammaUnderflow) return fail->set(NE_REAL_ARG_LT), 0.0;
    if (std::fabs(x) < 1.0 / std::numeric_limits<double>::max())
        return fail->set(NE_REAL_ARG_TOO_SMALL), 0.0;
    if (x <= 0.0 && x == std::floor(x)) return fail->set(NE_REAL), 0.0;
    const double g = boost::math::tgamma(x, QuietPolicy());
    if (!std::isfinite(g)) return fail->set(NE_REAL_ARG_GT), 0.0;
    return g;
}

double s14abc(double x, NagError* fail) {
    fail->set(NE_NOERROR);
    if (std::isnan(x)) return fail->set(NE_REAL), 0.0;
    if (x <= 0.0) return fail->set(NE_REAL_ARG_LE), 0.0;
    if (x > kLogGammaOverflow) return fail->set(NE_REAL_ARG_GT), 0.0;
    return log_gamma_positive(x);
}

double s14aec(double x, int k, NagError* fail) {
    fail->set(NE_NOERROR);
    if (k < 0 || k > 6) return fail->set(NE_INT), 0.0;
    if (std::isnan(x) || std::isinf(x)) return fail->set(NE_REAL), 0.0;
    if (x <= 0.0) {
        // Too close to a pole: within a few ulps of a non-positive integer.
        const double nearest = std::nearbyint(x);
        if (std::fabs(x - nearest) <=
            4.0 * std::numeric_limits<double>::epsilon() * std::fmax(1.0, std::fabs(x)))
            return fail->set(NE_REAL), 0.0;
    }
    if (x < kPolygammaMostNegative) return fail->set(NE_REAL_ARG_LT), 0.0;
    const double v = polygamma(k, x);
    if (!std::isfinite(v)) return fail->set(NE_REAL_ARG_GT), 0.0;
    return v;
}

void s14bac(double a, double x, double /*tol*/, double* p, double* q, NagError* fail) {
    fail->set(NE_NOERROR);
    *p = 0.0;
    *q = 0.0;
    if (std::isnan(a) || std::isnan(x)) return fail->set(NE_REAL);
    if (a <= 0.0) return fail->set(NE_REAL_ARG_LE);
    if (x < 0.0) return fail->set(NE_REAL_ARG_LT);
    if (std::isinf(a)) return fail->set(NE_REAL_ARG_GT);
    if (std::isinf(x)) {
        *p = 1.0;
        return;
    }
    // The double kernel where it promises its bound (see the opening block); the extended
    // evaluation elsewhere.
    if (const auto tails = numeric::incomplete_gamma_double(a, x, 0.0)) {
        *p = tails->lower;
        *q = tails->upper;
        return;
    }
    // One extended evaluation from shape 1 on: the side below about 1/2 (the median lies
    // within 1/3 of a), the other as 1 minus it (at least about 1/2, so within an ulp).
    // Smaller shapes (x subnormal, or a tail below the normal range) take both.
    if (a < 1.0) {
        *p = boost::math::gamma_p(a, x, numeric::BoostPolicy());
        *q = boost::math::gamma_q(a, x, numeric::BoostPolicy());
    } else if (x < a) {
        *p = boost::math::gamma_p(a, x, numeric::BoostPolicy());
        *q = 1.0 - *p;
    } else {
        *q = boost::math::gamma_q(a, x, numeric::BoostPolicy());
        *p = 1.0 - *q;
    }
    if (!std::isfinite(*p) || !std::isfinite(*q)) fail->set(NE_CONV);
}

}  // namespace zemath::nag
