// s13aac E1(x), s13acc Ci(x), s13adc Si(x): the exponential, cosine and sine integrals.
//     E1(x) = int_x^inf e^-u / u du (for x < 0 the principal value, -Ei(-x)),
//     Ci(x) = gamma + ln x + int_0^x (cos u - 1) / u du,   Si(x) = int_0^x sin u / u du.
//
// Method: E1 from Boost.Math's expint (rational approximations; Ei keeps its relative
// accuracy at its zero 0.3725 by expanding about it). Si and Ci by their power series
// for |x| <= 4 and, beyond, by the continued fraction of E1(ix) = -Ci(x) + i (Si(x) -
// pi/2) evaluated with the modified Lentz method; a few ulps, with absolute accuracy
// near the zeros of Ci.
//
// Failures: E1 at x = 0 (NE_REAL_ARG_LE), E1 overflowing for x < -709.8
// (NE_REAL_ARG_LT); Ci for x <= 0 (NE_REAL_ARG_LE); NaN (NE_REAL). E1 is 0 for large x,
// Si is +-pi/2 at +-infinity, Ci is 0 at +infinity, none of them failures.
// Reference: W. J. Cody and H. C. Thacher (1969), Math. Comp. 23, 289-303;
// Abramowitz and Stegun 5.2.14-5.2.16 and 5.1.22 (the continued fraction).
#include <cmath>
#include <complex>
#include <numbers>

#include "platform/nag/s_policy.hpp"  // first: configures Boost
#include <boost/math/special_functions/expint.hpp>

#include "platform/nag/s.hpp"

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

// x > 4: E1(ix) by the continued fraction e^-ix / (ix + 1 - 1/(ix + 3 - 4/(ix + 5 - ...))).
SiCi fraction(double x) {
    using C = std::complex<double>;
    // Lentz's method: stands in for a zero denominator; any value far below the terms will do.
    constexpr double kTiny = 1e-300;
    C b(1.0, x);
    C c(1.0 / kTiny, 0.0);
    C d = 1.0 / b;
    C h = d;
    for (int i = 1; i < 100; ++i) {
        const double a = -static_cast<double>(i) * i;
        b += 2.0;
        d = 1.0 / (a * d + b);
        c = b + a / c;
        const C del = c * d;
        h *= del;
        // Converged once the factor is within about an ulp of 1 (1e-16 < 2^-52).
        if (std::fabs(del.real() - 1.0) + std::fabs(del.imag()) < 1e-16) break;
    }
    h *= C(std::cos(x), -std::sin(x));
    return {std::numbers::pi / 2 + h.imag(), -h.real()};
}

SiCi si_ci(double x) {
    return x <= kSeriesLimit ? series(x) : fraction(x);
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
