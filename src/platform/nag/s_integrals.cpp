// s13aac E1(x), s13acc Ci(x), s13adc Si(x): the exponential, cosine and sine integrals.
//     E1(x) = int_x^inf e^-u / u du (for x < 0 the principal value, -Ei(-x)),
//     Ci(x) = gamma + ln x + int_0^x (cos u - 1) / u du,   Si(x) = int_0^x sin u / u du.
//
// Method: E1 from Boost.Math's expint (rational approximations; Ei keeps its relative
// accuracy at its zero 0.3725 by expanding about it). Si and Ci by their power series
// for |x| <= 4 and, beyond, through the auxiliary functions f and g, Chebyshev series of
// x f(x) and x^2 g(x) in (4/x)^2 (coefficients from tests/reference/gen_s_coefficients.py,
// mpmath at 50 digits); a few ulps, with absolute accuracy near the zeros of Ci.
//
// Failures: E1 at x = 0 (NE_REAL_ARG_LE), E1 overflowing for x < -709.8
// (NE_REAL_ARG_LT); Ci for x <= 0 (NE_REAL_ARG_LE); NaN (NE_REAL). E1 is 0 for large x,
// Si is +-pi/2 at +-infinity, Ci is 0 at +infinity, none of them failures.
// Reference: W. J. Cody and H. C. Thacher (1969), Math. Comp. 23, 289-303;
// Abramowitz and Stegun 5.2.6-5.2.9, 5.2.14-5.2.16 (auxiliary functions, series).
#include <cmath>
#include <numbers>

#include "platform/nag/s_policy.hpp"  // first: configures Boost
#include <boost/math/special_functions/expint.hpp>

#include "platform/nag/s.hpp"
#include "platform/nag/s_chebyshev.hpp"

namespace zemath::nag {

namespace {

using QuietPolicy = detail::SpecialPolicy;
constexpr double kSeriesLimit = 4.0;
constexpr double kEi709 = -709.7;  // beyond: -Ei(|x|) overflows

struct SiCi {
    double si;
    double ci;
};

// Si and Ci for 0 < x <= 4 by their power series.
SiCi series(double x) {
    const double x2 = x * x;
    double si = 0.0, ci = 0.0;
    double term = x;  // x^(2n+1) / (2n+1)! for Si
    for (int n = 0; n < 30; ++n) {
        const double add = term / (2 * n + 1);
        si += (n & 1) ? -add : add;
        term *= x2 / ((2.0 * n + 2.0) * (2.0 * n + 3.0));
        // A term below 1e-18 of the sum (a hundredth of an ulp) no longer changes it.
        if (std::fabs(add) < 1e-18 * std::fabs(si)) break;
    }
    double t = 1.0;  // x^(2n) / (2n)!
    for (int n = 1; n < 30; ++n) {
        t *= x2 / ((2.0 * n - 1.0) * (2.0 * n));
        const double add = t / (2 * n);
        ci += (n & 1) ? -add : add;
        // As for Si.
        if (add < 1e-18 * std::fabs(ci)) break;
    }
    ci += std::numbers::egamma + std::log(x);
    return {si, ci};
}

// x > 4: the auxiliary functions f, g (Chebyshev series of x f and x^2 g in w = (4/x)^2 on
// [0, 1/16], [1/16, 1/4], [1/4, 9/16], [9/16, 1]),
//     Si = pi/2 - f cos x - g sin x,   Ci = f sin x - g cos x.
// For x above 1.3e154, x^2 overflows: w = 0 and g = 0, as they are to double precision.
SiCi auxiliary(double x) {
    constexpr double kEdge[5] = {0.0, 1.0 / 16, 1.0 / 4, 9.0 / 16, 1.0};
    const double x2 = x * x;
    const double w = 16.0 / x2;
    const int i = w < kEdge[1] ? 0 : w < kEdge[2] ? 1 : w < kEdge[3] ? 2 : 3;
    const double t = (2.0 * w - (kEdge[i] + kEdge[i + 1])) / (kEdge[i + 1] - kEdge[i]);
    const double f = detail::chebyshev(detail::kSiCiAuxF[i], t) / x;
    const double g = detail::chebyshev(detail::kSiCiAuxG[i], t) / x2;
    const double s = std::sin(x), c = std::cos(x);
    return {std::numbers::pi / 2 - f * c - g * s, f * s - g * c};
}

SiCi si_ci(double x) {
    return x <= kSeriesLimit ? series(x) : auxiliary(x);
}

}  // namespace

double s13aac(double x, NagError* fail) {
    fail->set(NE_NOERROR);
    if (std::isnan(x)) return fail->set(NE_REAL), 0.0;
    if (x == 0.0) return fail->set(NE_REAL_ARG_LE), 0.0;
    if (x < kEi709) return fail->set(NE_REAL_ARG_LT), 0.0;
    if (x < 0.0) return -boost::math::expint(-x, QuietPolicy());
    return boost::math::expint(1, x, QuietPolicy());
}

double s13acc(double x, NagError* fail) {
    fail->set(NE_NOERROR);
    if (std::isnan(x)) return fail->set(NE_REAL), 0.0;
    if (x <= 0.0) return fail->set(NE_REAL_ARG_LE), 0.0;
    if (std::isinf(x)) return 0.0;
    return si_ci(x).ci;
}

double s13adc(double x, NagError* fail) {
    fail->set(NE_NOERROR);
    if (std::isnan(x)) return fail->set(NE_REAL), 0.0;
    const double y = std::fabs(x);
    if (y == 0.0) return x;
    const double si = std::isinf(y) ? std::numbers::pi / 2 : si_ci(y).si;
    return x < 0.0 ? -si : si;
}

}  // namespace zemath::nag
