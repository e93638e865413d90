// The library's own exponential integral E1 (with the principal value -Ei(-x) for
// x < 0), sine integral Si and cosine integral Ci.
//
// Method:
// - E1(x), 0 < x <= 1: the power series -gamma - ln x - sum (-x)^k / (k k!) (DLMF 6.6.2;
//   at most a factor 4 of cancellation); x > 1: Legendre's continued fraction
//   E1(x) = e^-x / (x + 1 - 1/(x + 3 - 4/(x + 5 - ...))) by the modified Lentz method
//   (about 40 terms at x = 1, 5 at x = 100; cap 5000); 0 beyond x = 746, where it
//   underflows.
// - x < 0, y = -x: -Ei(y). Ei(y) = gamma + ln y + sum y^k / (k k!) (DLMF 6.6.1) up to
//   y = 50, all terms positive; beyond, the asymptotic series e^y / y * sum k! / y^k,
//   stopped at its smallest term (below 1e-17 from y = 50); near the zero of Ei,
//   y0 = 0.37250741..., the Taylor series about y0 (|y - y0| < 0.1, y0 in two parts)
//   keeps relative accuracy. y > 709.78: NANUM (e^y overflows).
// - Si and Ci, |x| <= 4: the power series (DLMF 6.6.5, 6.6.6); beyond, E1(ix) =
//   -Ci(x) + i (Si(x) - pi/2) by the same continued fraction in complex arithmetic
//   (about 40 terms at x = 4, cap 5000). Si is odd; Ci needs x > 0.
// Accuracy: E1 relative, worst about 1e-15; Si relative; Ci relative to the envelope
// max(|Ci|, 1/x) beyond x = 1/2, i.e. absolute near its zeros (worst-error table:
// tests/reference/special_own_worst_errors.txt).
// References: DLMF 6.6, 6.9; W. H. Press et al., Numerical Recipes, 3rd ed. (2007),
// 6.3 and 6.8 (the Lentz evaluation of the fractions).
#include <cmath>
#include <complex>
#include <numbers>

#include "core/missing.hpp"
#include "stats/own_special.hpp"

namespace zemath::own {

namespace {

#include "stats/own_special_coefficients.inc"

constexpr double kEulerGamma = std::numbers::egamma;
constexpr double kE1Underflow = 746.0;
constexpr double kEiOverflow = 709.78;
constexpr double kEiAsymptoticFrom = 50.0;
constexpr double kEiRootRadius = 0.1;
constexpr double kSiCiSeriesLimit = 4.0;
constexpr int kFractionCap = 5000;
// Lentz's method: stands in for a zero denominator; any value far below the terms will do.
constexpr double kTiny = 1e-300;

double nan_value() {
    return std::nan("");
}

// E1(x), 0 < x <= 1.
double e1_series(double x) {
    double term = 1.0, sum = 0.0;
    for (int k = 1; k < 100; ++k) {
        term *= -x / k;
        const double add = term / k;
        sum += add;
        // A term below 1e-18 of the sum (a hundredth of an ulp) no longer changes it.
        if (std::fabs(add) < 1e-18 * std::fabs(sum)) break;
    }
    return -kEulerGamma - std::log(x) - sum;
}

// E1(z) e^z by Legendre's fraction, real or complex z with Re z > 0 or z = i x, |x| > 4.
template <class T>
T e1_fraction(T z) {
    T b = z + 1.0;
    T c = 1.0 / kTiny;
    T d = 1.0 / b;
    T h = d;
    for (int n = 1; n <= kFractionCap; ++n) {
        const double a = -static_cast<double>(n) * n;
        b += 2.0;
        d = 1.0 / (a * d + b);
        c = b + a / c;
        const T delta = c * d;
        h *= delta;
        if (std::abs(delta - 1.0) < 3e-16) return h;  // a few ulps: rounding noise of delta
    }
    return T(nan_value());
}

// Ei(y), 0 < y <= kEiOverflow.
double ei(double y) {
    if (std::fabs(y - kEiRootHi) < kEiRootRadius) {
        const double d = (y - kEiRootHi) - kEiRootLo;
        double sum = 0.0;
        for (int j = kEiTaylorCount - 1; j >= 1; --j) sum = sum * d + kEiRootTaylor[j];
        return sum * d;
    }
    if (y < kEiAsymptoticFrom) {
        double term = 1.0, sum = 0.0;
        for (int k = 1; k < 500; ++k) {
            term *= y / k;
            const double add = term / k;
            sum += add;
            // A term below 1e-18 of the sum (a hundredth of an ulp) no longer changes it.
            if (add < 1e-18 * sum) break;
        }
        return kEulerGamma + std::log(y) + sum;
    }
    double term = 1.0, sum = 1.0;
    for (int k = 1; k < 200; ++k) {
        const double next = term * k / y;
        if (next > term) break;  // the smallest term has passed
        term = next;
        sum += term;
        // A term below 1e-18 of the sum (a hundredth of an ulp) no longer changes it.
        if (term < 1e-18 * sum) break;
    }
    return std::exp(y) / y * sum;
}

// Si and Ci for 0 < x <= kSiCiSeriesLimit: sum (-1)^n x^(2n+1)/((2n+1)(2n+1)!) and
// sum_{n>=1} (-1)^n x^(2n)/(2n (2n)!).
double si_series(double x) {
    const double x2 = x * x;
    double term = x, sum = x;
    for (int n = 1; n < 100; ++n) {
        term *= -x2 / ((2.0 * n) * (2.0 * n + 1.0));
        const double add = term / (2 * n + 1);
        sum += add;
        // A term below 1e-18 of the sum (a hundredth of an ulp) no longer changes it.
        if (std::fabs(add) < 1e-18 * std::fabs(sum)) break;
    }
    return sum;
}

double ci_series_tail(double x) {
    const double x2 = x * x;
    double term = 1.0, sum = 0.0;
    for (int n = 1; n < 100; ++n) {
        term *= -x2 / ((2.0 * n - 1.0) * (2.0 * n));
        const double add = term / (2 * n);
        sum += add;
        // A term below 1e-18 of the sum (a hundredth of an ulp) no longer changes it.
        if (std::fabs(add) < 1e-18 * std::fabs(sum)) break;
    }
    return sum;
}

// E1(i x) = -Ci(x) + i (Si(x) - pi/2), x > kSiCiSeriesLimit.
std::complex<double> e1_imaginary(double x) {
    const std::complex<double> h = e1_fraction(std::complex<double>(0.0, x));
    return std::complex<double>(std::cos(x), -std::sin(x)) * h;
}

double finish(double v) {
    return std::isfinite(v) ? v : NANUM;
}

}  // namespace

double exp_integral_e1(double x) {
    if (detail::unusable(x) || x == 0.0) return NANUM;
    if (x > 0.0) {
        if (x <= 1.0) return finish(e1_series(x));
        if (x >= kE1Underflow) return 0.0;
        return finish(std::exp(-x) * e1_fraction(x));
    }
    if (-x > kEiOverflow) return NANUM;
    return finish(-ei(-x));
}

double sin_integral(double x) {
    if (detail::unusable(x)) return NANUM;
    const double z = std::fabs(x);
    const double v =
        z <= kSiCiSeriesLimit ? si_series(z) : std::numbers::pi / 2.0 + e1_imaginary(z).imag();
    return finish(std::copysign(v, x));
}

double cos_integral(double x) {
    if (detail::unusable(x) || x <= 0.0) return NANUM;
    if (x <= kSiCiSeriesLimit) return finish(kEulerGamma + std::log(x) + ci_series_tail(x));
    return finish(-e1_imaginary(x).real());
}

}  // namespace zemath::own
