// The library's own Fresnel integrals S(x) = int_0^x sin(pi t^2/2) dt and
// C(x) = int_0^x cos(pi t^2/2) dt (the pi/2 convention), odd functions of x.
//
// Method:
// - |x| <= 1.5: the power series (DLMF 7.6.4 at the pi/2 convention)
//       C = sum (-1)^n (pi/2)^(2n) x^(4n+1) / ((2n)! (4n+1)),
//       S = sum (-1)^n (pi/2)^(2n+1) x^(4n+3) / ((2n+1)! (4n+3)),
//   whose largest term at the switch point is about 1.2 (cancellation below a factor 3).
// - |x| > 1.5: C + i S = ((1 + i)/2) erf(z), z = ((1 - i)/2) sqrt(pi) x (DLMF 7.5),
//   with erfc(z) = e^(-z^2)/sqrt(pi) K(z), K(z) = 1/(z + (1/2)/(z + 1/(z + (3/2)/...)))
//   the Laplace continued fraction in complex arithmetic (modified Lentz, cap 5000
//   terms). e^(-z^2) = e^(i pi x^2/2): the phase is formed from x^2 split exactly into
//   hi + lo (fma) and hi reduced modulo 4 exactly (fmod), so that the phase of a large x
//   keeps every digit (x^2 itself would lose it beyond x = 1e4).
// - |x| > 1e17: 1/(pi x) is below half an ulp of 1/2: the limits +-1/2.
// Accuracy: relative, worst about 1e-15 (C and S stay away from 0 beyond the series
// range); worst-error table in tests/reference/special_own_worst_errors.txt.
// References: DLMF 7.2.7, 7.5.7, 7.9.2; Cuyt et al., Handbook of Continued Fractions
// for Special Functions (2008), 13.2.
#include <cmath>
#include <complex>
#include <numbers>

#include "core/missing.hpp"
#include "stats/own_special.hpp"

namespace zemath::own {

namespace {

constexpr double kSeriesLimit = 1.5;
constexpr double kLimitFrom = 1e17;
constexpr int kFractionCap = 5000;

// Series for C (odd = false) or S (odd = true), 0 <= x <= kSeriesLimit.
double fresnel_series(double x, bool odd) {
    const double h = std::numbers::pi / 2.0;
    const double x4 = x * x * x * x;
    // term_n = (-1)^n h^m x^(2m+1) / m!, m = 2n (+1 for S); sum term_n / (2m + 1)
    int m = odd ? 1 : 0;
    double term = odd ? h * x * x * x : x;
    double sum = term / (2 * m + 1);
    for (int n = 1; n < 100; ++n) {
        term *= -h * h * x4 / ((m + 1.0) * (m + 2.0));
        m += 2;
        const double add = term / (2 * m + 1);
        sum += add;
        // A term below 1e-18 of the sum (a hundredth of an ulp) no longer changes it.
        if (std::fabs(add) < 1e-18 * std::fabs(sum)) break;
    }
    return sum;
}

// K(z) = 1/(z + (1/2)/(z + 1/(z + (3/2)/(z + ...)))) for the complex z of the Fresnel
// integrals, |z| > 1.8 on the ray arg z = -pi/4.
std::complex<double> laplace_fraction(std::complex<double> z) {
    // Lentz's method: stands in for a zero denominator; any value far below the terms will do.
    constexpr double kTiny = 1e-300;
    std::complex<double> f = z, c = z, d = 0.0;
    for (int n = 1; n <= kFractionCap; ++n) {
        const double a = 0.5 * n;
        d = z + a * d;
        d = std::abs(d) == 0.0 ? std::complex<double>(1.0 / kTiny) : 1.0 / d;
        c = z + a / c;
        if (std::abs(c) == 0.0) c = kTiny;
        const std::complex<double> delta = c * d;
        f *= delta;
        // Converged once the factor is within about an ulp of 1 (3e-16: two ulps of 1, as the
        // complex product rounds twice).
        if (std::abs(delta - 1.0) < 3e-16) return 1.0 / f;
    }
    return std::complex<double>(std::nan(""), 0.0);
}

// C + i S for x > kSeriesLimit.
std::complex<double> fresnel_large(double x) {
    const double hi = x * x;
    const double lo = std::fma(x, x, -hi);
    const double t = std::fmod(hi, 4.0) + lo;  // x^2 modulo 4, the phase pi t / 2
    const double theta = std::numbers::pi / 2.0 * t;
    const std::complex<double> phase(std::cos(theta), std::sin(theta));
    const double r = std::sqrt(std::numbers::pi) * x / 2.0;
    const std::complex<double> z(r, -r);
    const std::complex<double> one_plus_i(0.5, 0.5);  // (1 + i)/2
    const std::complex<double> erfc_z = phase * laplace_fraction(z) * std::numbers::inv_sqrtpi;
    return one_plus_i - one_plus_i * erfc_z;
}

double fresnel(double x, bool odd) {
    if (detail::unusable(x)) return NANUM;
    const double a = std::fabs(x);
    double v;
    if (a <= kSeriesLimit) {
        v = fresnel_series(a, odd);
    } else if (a > kLimitFrom) {
        v = 0.5;
    } else {
        const std::complex<double> cs = fresnel_large(a);
        v = odd ? cs.imag() : cs.real();
    }
    if (!std::isfinite(v)) return NANUM;
    return std::copysign(v, x);
}

}  // namespace

double fresnel_s(double x) {
    return fresnel(x, true);
}

double fresnel_c(double x) {
    return fresnel(x, false);
}

}  // namespace zemath::own
