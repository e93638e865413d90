// The library's own modified Bessel functions I and K of the orders 0, 1 and 1/4, 1/2,
// 3/4 (the integer argument nu of the fractional-order functions standing for nu/4), with
// their exponentially scaled forms. J0, J1, Y0 and Y1 of the prefixed family are the C
// runtime's and are not computed here.
//
// Method, with e^-x I and e^x K as the working quantities (no overflow, no underflow):
// - I_v(x), 0 <= x <= 30: the power series (DLMF 10.25.2)
//       I_v(x) = (x/2)^v / Gamma(v + 1) * sum_k (x^2/4)^k / (k! (v + 1)_k),
//   all terms positive (about 40 terms at x = 30, cap 500); x > 30: the Hankel expansion
//   e^-x I_v(x) = (2 pi x)^(-1/2) sum_k (-1)^k a_k(v) / x^k (DLMF 10.40.1), stopped
//   below 1e-17 (at most 25 terms at x = 30; the omitted e^-2x part is below 1e-26).
// - K_v(x), x > 30: the Hankel expansion e^x K_v(x) = sqrt(pi/(2x)) sum_k a_k(v)/x^k
//   (DLMF 10.40.2), stopped below 1e-17 (at most 25 terms at x = 30).
// - K_v(x), 1 < x <= 30: the trapezoid rule on e^x K_v(x) = int_0^inf e^(-x (cosh t - 1))
//   cosh(v t) dt (DLMF 10.32.9), with cosh t - 1 = 2 sinh^2(t/2) (no cancellation for
//   small t) and the step h = pi^2/(44 + x), or 0.66/sqrt(x) where larger and valid: the
//   integrand is analytic in the strip |Im t| < pi/2, so the error falls like
//   e^(x - pi^2/h) (strip half-width pi/2) or e^(-2 pi^2/(h^2 x)) (half-width
//   2 pi/(h x) < pi/2, for large x), below 1e-18 with these steps; the sum stops when a
//   term falls below 1e-18 of it (15 to 25 terms at any x; cap 5000).
// - K_v(x), 0 < x <= 1: K_0 and K_1 by their series with the logarithm (DLMF 10.31.1),
//       K_0 = -(ln(x/2) + gamma) I_0 + sum (x^2/4)^k H_k / (k!)^2,
//       K_1 = 1/x + ln(x/2) I_1 - (x/4) sum (x^2/4)^k (psi(k+1) + psi(k+2)) / (k! (k+1)!);
//   K_{1/4}, K_{3/4} = pi/(2 sin(v pi)) (I_{-v} - I_v) (DLMF 10.27.4), the difference
//   at most a factor 4 below the terms at x = 1; K_{1/2}(x) = sqrt(pi/(2x)) e^-x exactly.
// - Negative orders of I: I_{-v} = I_v + (2/pi) sin(v pi) K_v (DLMF 10.27.2), both terms
//   positive. K_{-v} = K_v.
// Switch points: x = 30 (I), x = 1 and 30 (K).
// Accuracy: worst relative error a few 1e-15 against 50-digit references
// (tests/reference/special_own_worst_errors.txt).
// Domain (NANUM outside): I1 for |x| > 713.98 (overflow); K0, K1 for x <= 0, K1 also for
// x < 1/DBL_MAX; the scaled K for x <= 0; the fractional orders for nu = 0 or |nu| > 3,
// x < 0, and for nu < 0 or K also x = 0; unscaled I_{nu/4} for x >= 700.9217937 (the
// overflow bound of the prefixed function). K underflows to 0 for large x.
// References: DLMF 10.25, 10.27, 10.31, 10.32, 10.40; J. A. C. Weideman and L. N.
// Trefethen, The exponentially convergent trapezoidal rule, SIAM Review 56 (2014) 385-458.
#include <cmath>
#include <limits>
#include <numbers>

#include "core/missing.hpp"
#include "stats/own_special.hpp"

namespace zemath::own {

namespace {

constexpr double kISeriesLimit = 30.0;
constexpr double kKSeriesLimit = 1.0;
constexpr double kI1Overflow = 713.98;
constexpr double kINuOverflow = 700.9217937;
constexpr double kEulerGamma = std::numbers::egamma;

double nan_value() {
    return std::nan("");
}

// sum_k (x^2/4)^k / (k! (v + 1)_k), x >= 0, v > -1.
double i_series_sum(double v, double x) {
    const double w = 0.25 * x * x;
    double term = 1.0, sum = 1.0;
    for (int k = 1; k <= 500; ++k) {
        term *= w / (k * (k + v));
        sum += term;
        // A term below 1e-17 of the sum (a tenth of an ulp) no longer changes it.
        if (term < 1e-17 * sum) return sum;
    }
    return nan_value();
}

// I_v(x) by the series, v > -1, 0 < x <= kISeriesLimit (unscaled).
double i_series(double v, double x) {
    const double lead = v == 0.0 ? 1.0 : std::pow(0.5 * x, v) / gamma(v + 1.0);
    return lead * i_series_sum(v, x);
}

// e^-x I_v(x) by the Hankel expansion, x > kISeriesLimit.
double i_hankel_scaled(double v, double x) {
    // u_k = (-1)^k a_k(v) / x^k = u_{k-1} ((2k - 1)^2 - 4 v^2) / (8 k x)
    const double mu = 4.0 * v * v;
    double term = 1.0, sum = 1.0;
    for (int k = 1; k <= 60; ++k) {
        const double next = term * ((2.0 * k - 1.0) * (2.0 * k - 1.0) - mu) / (8.0 * k * x);
        if (std::fabs(next) > std::fabs(term)) break;  // the smallest term has passed
        sum += next;
        term = next;
        // A term below 1e-17 of the sum (a tenth of an ulp) no longer changes it.
        if (std::fabs(next) < 1e-17 * std::fabs(sum)) break;
    }
    return sum / std::sqrt(2.0 * std::numbers::pi * x);
}

// e^-x I_v(x), v >= 0, x >= 0.
double i_scaled(double v, double x) {
    if (x == 0.0) return v == 0.0 ? 1.0 : 0.0;
    if (x <= kISeriesLimit) return i_series(v, x) * std::exp(-x);
    return i_hankel_scaled(v, x);
}

// e^x K_v(x) by the Hankel expansion sqrt(pi/(2x)) sum_k a_k(v)/x^k, x > kISeriesLimit.
double k_hankel_scaled(double v, double x) {
    const double mu = 4.0 * v * v;
    double term = 1.0, sum = 1.0;
    for (int k = 1; k <= 60; ++k) {
        const double next = -term * ((2.0 * k - 1.0) * (2.0 * k - 1.0) - mu) / (8.0 * k * x);
        if (std::fabs(next) > std::fabs(term)) break;  // the smallest term has passed
        sum += next;
        term = next;
        // A term below 1e-17 of the sum (a tenth of an ulp) no longer changes it.
        if (std::fabs(next) < 1e-17 * std::fabs(sum)) break;
    }
    return std::sqrt(std::numbers::pi / (2.0 * x)) * sum;
}

// e^x K_v(x) by the trapezoid rule, x > kKSeriesLimit.
double k_trapezoid_scaled(double v, double x) {
    // Two sufficient steps: pi^2/(44 + x) from the strip half-width pi/2, valid for every
    // x; 0.66/sqrt(x) from the half-width 2 pi/(h x), valid while that is below pi/2.
    const double h_strip = std::numbers::pi * std::numbers::pi / (44.0 + x);
    const double h_large = 0.66 / std::sqrt(x);
    const double h = h_large >= 4.0 / x ? std::fmax(h_strip, h_large) : h_strip;
    double sum = 0.5;  // the half weight of t = 0, where the integrand is 1
    for (int j = 1; j <= 5000; ++j) {
        const double t = j * h;
        const double s = std::sinh(0.5 * t);
        const double f = std::exp(-2.0 * x * s * s) * (v == 0.0 ? 1.0 : std::cosh(v * t));
        sum += f;
        // A term below 1e-18 of the sum (a hundredth of an ulp) no longer changes it.
        if (f < 1e-18 * sum) return h * sum;
    }
    return nan_value();
}

// K_0(x) and K_1(x) by the logarithmic series, 0 < x <= kKSeriesLimit (unscaled).
double k0_series(double x) {
    const double w = 0.25 * x * x;
    double term = 1.0, harmonic = 0.0, sum = 0.0;
    for (int k = 1; k <= 100; ++k) {
        term *= w / (static_cast<double>(k) * k);
        harmonic += 1.0 / k;
        const double add = term * harmonic;
        sum += add;
        // A term below 1e-18 of the sum (a hundredth of an ulp) no longer changes it.
        if (add < 1e-18 * sum) break;
    }
    return -(std::log(0.5 * x) + kEulerGamma) * i_series(0.0, x) + sum;
}

double k1_series(double x) {
    const double w = 0.25 * x * x;
    // k = 0: psi(1) + psi(2) = 1 - 2 gamma
    double term = 1.0, hk = 0.0, sum = 1.0 - 2.0 * kEulerGamma;
    for (int k = 1; k <= 100; ++k) {
        term *= w / (static_cast<double>(k) * (k + 1));
        hk += 1.0 / k;
        const double psis = -2.0 * kEulerGamma + hk + (hk + 1.0 / (k + 1));
        const double add = term * psis;
        sum += add;
        // A term below 1e-18 of the sum (a hundredth of an ulp) no longer changes it.
        if (std::fabs(add) < 1e-18 * std::fabs(sum)) break;
    }
    return 1.0 / x + std::log(0.5 * x) * i_series(1.0, x) - 0.25 * x * sum;
}

// e^x K_v(x), x > 0, v in {0, 1/4, 1/2, 3/4, 1}.
double k_scaled(double v, double x) {
    if (v == 0.5) return std::sqrt(std::numbers::pi / (2.0 * x));
    if (x > kISeriesLimit) return k_hankel_scaled(v, x);
    if (x > kKSeriesLimit) return k_trapezoid_scaled(v, x);
    double k;
    if (v == 0.0) {
        k = k0_series(x);
    } else if (v == 1.0) {
        k = k1_series(x);
    } else {
        const double lower = std::pow(0.5 * x, -v) / gamma(1.0 - v) * i_series_sum(-v, x);
        k = std::numbers::pi / (2.0 * std::sin(v * std::numbers::pi)) * (lower - i_series(v, x));
    }
    return k * std::exp(x);
}

double finish(double value) {
    return std::isfinite(value) ? value : NANUM;
}

bool order_ok(int nu) {
    return nu != 0 && nu >= -3 && nu <= 3;
}

// sin(a pi) for a = |nu|/4: sqrt(1/2), 1, sqrt(1/2).
double sin_order_pi(int nu) {
    return (nu == 2 || nu == -2) ? 1.0 : std::numbers::sqrt2 / 2.0;
}

// e^(|x|) s without overflowing before the product does.
double unscale(double s, double ax) {
    const double half = std::exp(0.5 * ax);
    return half * (half * s);
}

}  // namespace

double bessel_i0_scaled(double x) {
    if (detail::unusable(x)) return NANUM;
    return finish(i_scaled(0.0, std::fabs(x)));
}

double bessel_i1_scaled(double x) {
    if (detail::unusable(x)) return NANUM;
    return finish(std::copysign(i_scaled(1.0, std::fabs(x)), x));
}

double bessel_i1(double x) {
    if (detail::unusable(x) || std::fabs(x) > kI1Overflow) return NANUM;
    const double ax = std::fabs(x);
    const double v =
        ax <= kISeriesLimit ? i_series(1.0, ax) : unscale(i_hankel_scaled(1.0, ax), ax);
    return finish(std::copysign(v, x));
}

double bessel_k0_scaled(double x) {
    if (detail::unusable(x) || x <= 0.0) return NANUM;
    return finish(k_scaled(0.0, x));
}

double bessel_k1_scaled(double x) {
    if (detail::unusable(x) || x <= 0.0 || x < 1.0 / std::numeric_limits<double>::max())
        return NANUM;
    return finish(k_scaled(1.0, x));
}

double bessel_k0(double x) {
    if (detail::unusable(x) || x <= 0.0) return NANUM;
    if (x <= kKSeriesLimit) return finish(k0_series(x));
    return finish(k_scaled(0.0, x) * std::exp(-x));
}

double bessel_k1(double x) {
    if (detail::unusable(x) || x <= 0.0 || x < 1.0 / std::numeric_limits<double>::max())
        return NANUM;
    if (x <= kKSeriesLimit) return finish(k1_series(x));
    return finish(k_scaled(1.0, x) * std::exp(-x));
}

double bessel_i_nu_scaled(double x, int nu) {
    if (detail::unusable(x) || !order_ok(nu) || x < 0.0) return NANUM;
    if (x == 0.0) return nu > 0 ? 0.0 : NANUM;
    const double a = std::abs(nu) / 4.0;
    double v = i_scaled(a, x);
    if (nu < 0)
        v += 2.0 / std::numbers::pi * sin_order_pi(nu) * (k_scaled(a, x) * std::exp(-2.0 * x));
    return finish(v);
}

double bessel_i_nu(double x, int nu) {
    if (detail::unusable(x) || !order_ok(nu) || x < 0.0 || x >= kINuOverflow) return NANUM;
    if (x == 0.0) return nu > 0 ? 0.0 : NANUM;
    const double a = std::abs(nu) / 4.0;
    double v = x <= kISeriesLimit ? i_series(a, x) : unscale(i_hankel_scaled(a, x), x);
    if (nu < 0) v += 2.0 / std::numbers::pi * sin_order_pi(nu) * (k_scaled(a, x) * std::exp(-x));
    return finish(v);
}

double bessel_k_nu_scaled(double x, int nu) {
    if (detail::unusable(x) || !order_ok(nu) || x <= 0.0) return NANUM;
    return finish(k_scaled(std::abs(nu) / 4.0, x));
}

double bessel_k_nu(double x, int nu) {
    if (detail::unusable(x) || !order_ok(nu) || x <= 0.0) return NANUM;
    return finish(k_scaled(std::abs(nu) / 4.0, x) * std::exp(-x));
}

}  // namespace zemath::own
