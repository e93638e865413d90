// The library's own Kelvin functions, ber x + i bei x = I0(x e^(i pi/4)) and
// ker x + i kei x = K0(x e^(i pi/4)).
//
// Method:
// - 0 <= x <= 20: the power series (DLMF 10.65.1, 10.65.2) in double-double arithmetic,
//       ber + i bei = sum_m i^m w^m / (m!)^2,   w = (x/2)^2,
//       ker + i kei = -(ln(x/2) + i pi/4)(ber + i bei) + sum_m i^m psi(m + 1) w^m / (m!)^2,
//   psi(m + 1) = -gamma + H_m. The terms reach e^x while ber, bei shrink to e^(x/sqrt 2)
//   and ker, kei to e^(-x/sqrt 2): cancellation of up to e^(1.71 x) = 6e14 at x = 20,
//   which the 106-bit arithmetic absorbs (every term, the logarithm and the constants in
//   two parts); at most 70 terms.
// - x > 20: the Hankel expansions (DLMF 10.40.2, 10.40.5) in complex arithmetic,
//       I0(z) ~ e^z/sqrt(2 pi z) sum b_k/z^k + i e^-z/sqrt(2 pi z) sum (-1)^k b_k/z^k,
//       K0(z) ~ sqrt(pi/(2z)) e^-z sum (-1)^k b_k/z^k,  b_k = ((2k-1)!!)^2 / (k! 8^k),
//   z = x e^(i pi/4), stopped at the smallest term (below e^-2x, 4e-18 at x = 20). The
//   phase x/sqrt(2) is formed in two parts, so that it keeps every digit up to x = 1000.
// Accuracy: relative to |ber + i bei| (ber, bei) or |ker + i kei| (ker, kei), i.e.
// absolute near the zeros of each part; worst about 1e-15
// (tests/reference/special_own_worst_errors.txt).
// Domain (NANUM outside): ber, bei for |x| <= 49.08 (even functions; beyond, the
// amplification of the rounding of x is refused); ker for 0 < x <= 1000; kei for
// 0 <= x <= 1000, kei(0) = -pi/4 (beyond 1000 both underflow).
// References: DLMF 10.40, 10.61, 10.65.
#include <cmath>
#include <complex>
#include <numbers>

#include "core/missing.hpp"
#include "platform/numeric/double_double.hpp"
#include "stats/own_special.hpp"

namespace zemath::own {

namespace {

using numeric::TwoPart;
using Complex = std::complex<double>;

constexpr double kSeriesLimit = 20.0;
constexpr double kBerLimit = 49.08;
constexpr double kKerLimit = 1000.0;
constexpr TwoPart kEulerGamma{0.5772156649015329, -4.942915152430645e-18};
constexpr TwoPart kQuarterPi{0.7853981633974483, 3.061616997868383e-17};
constexpr TwoPart kInvSqrt2{0.7071067811865476, -4.833646656726457e-17};
constexpr double kCosEighthPi = 0.9238795325112867;
constexpr double kSinEighthPi = 0.3826834323650898;

// a / d in two parts, d a double.
TwoPart divide(TwoPart a, double d) {
    const double q = a.hi / d;
    const TwoPart p = numeric::two_product(q, d);
    const double r = ((a.hi - p.hi) - p.lo + a.lo) / d;
    return numeric::quick_two_sum(q, r);
}

struct KelvinPair {
    double re, im;
};

// The series: (ber, bei) when second_kind is false, else (ker, kei); 0 < x <= 20.
KelvinPair kelvin_series(double x, bool second_kind) {
    using namespace numeric;
    const double h = 0.5 * x;
    const TwoPart w = two_product(h, h);
    TwoPart term{1.0, 0.0};                      // w^m / (m!)^2
    TwoPart harmonic{0.0, 0.0};                  // H_m
    TwoPart sum_re{0.0, 0.0}, sum_im{0.0, 0.0};  // sum i^m term
    TwoPart psi_re{0.0, 0.0}, psi_im{0.0, 0.0};  // sum i^m psi(m + 1) term
    for (int m = 0; m <= 200; ++m) {
        if (m > 0) {
            term = divide(multiply(term, w), static_cast<double>(m) * m);
            harmonic = add(harmonic, reciprocal(static_cast<double>(m)));
        }
        const TwoPart psi_term = multiply(add(harmonic, negate(kEulerGamma)), term);
        const TwoPart signed_term = (m % 4 < 2) ? term : negate(term);
        const TwoPart signed_psi = (m % 4 < 2) ? psi_term : negate(psi_term);
        if (m % 2 == 0) {
            sum_re = add(sum_re, signed_term);
            psi_re = add(psi_re, signed_psi);
        } else {
            sum_im = add(sum_im, signed_term);
            psi_im = add(psi_im, signed_psi);
        }
        // The sums are two-part (about 106 bits): once m > h^2 (the terms are then falling) a
        // term below 1e-36 of them no longer changes them.
        if (m > h * h && term.hi < 1e-36 * (std::fabs(sum_re.hi) + std::fabs(sum_im.hi)) &&
            std::fabs(psi_term.hi) < 1e-36 * (std::fabs(sum_re.hi) + std::fabs(sum_im.hi)))
            break;
    }
    if (!second_kind) return {sum_re.hi + sum_re.lo, sum_im.hi + sum_im.lo};
    // ker + i kei = -(L + i pi/4)(ber + i bei) + psi sums, L = ln(x/2)
    const TwoPart ln = detail::log_two_double(h);
    const TwoPart re = add(add(negate(multiply(ln, sum_re)), multiply(kQuarterPi, sum_im)), psi_re);
    const TwoPart im =
        add(add(negate(multiply(ln, sum_im)), negate(multiply(kQuarterPi, sum_re))), psi_im);
    return {re.hi + re.lo, im.hi + im.lo};
}

// The Hankel sums sum (+-1)^k b_k u^k, u = 1/z = e^(-i pi/4)/x, to the smallest term.
Complex hankel_sum(double x, bool alternate) {
    const Complex u = Complex(kInvSqrt2.hi, -kInvSqrt2.hi) / x;
    Complex power(1.0, 0.0), sum(1.0, 0.0);
    double b = 1.0, last = 1.0;
    for (int k = 1; k <= 100; ++k) {
        b *= (2.0 * k - 1.0) * (2.0 * k - 1.0) / (8.0 * k);
        power *= u;
        const double size = b / std::pow(x, k);
        if (size > last) break;
        last = size;
        sum += (alternate && k % 2 == 1) ? -b * power : b * power;
        // The sum starts at 1: terms below 1e-18 (a hundredth of an ulp of 1) add nothing.
        if (size < 1e-18) break;
    }
    return sum;
}

// e^(+-z) for z = x e^(i pi/4) = y (1 + i), y = x/sqrt(2) in two parts: the phase keeps
// its digits where y times an ulp would not.
Complex exp_z(double x, double sign) {
    const TwoPart y = numeric::multiply(TwoPart{x, 0.0}, kInvSqrt2);
    const double c = std::cos(y.hi), s = std::sin(y.hi);
    const double cos_y = c - s * y.lo, sin_y = s + c * y.lo;
    const double magnitude = std::exp(sign * y.hi) * (1.0 + sign * y.lo);
    return magnitude * Complex(cos_y, sign * sin_y);
}

// z^(-1/2) = x^(-1/2) e^(-i pi/8).
Complex inverse_sqrt_z(double x) {
    return Complex(kCosEighthPi, -kSinEighthPi) / std::sqrt(x);
}

Complex i0_hankel(double x) {
    const Complex front = inverse_sqrt_z(x) / std::sqrt(2.0 * std::numbers::pi);
    return front * (exp_z(x, 1.0) * hankel_sum(x, false) +
                    Complex(0.0, 1.0) * exp_z(x, -1.0) * hankel_sum(x, true));
}

Complex k0_hankel(double x) {
    return std::sqrt(std::numbers::pi / 2.0) * inverse_sqrt_z(x) * exp_z(x, -1.0) *
           hankel_sum(x, true);
}

double finish(double v) {
    return std::isfinite(v) ? v : NANUM;
}

KelvinPair first_kind(double x) {
    if (x == 0.0) return {1.0, 0.0};
    if (x <= kSeriesLimit) return kelvin_series(x, false);
    const Complex v = i0_hankel(x);
    return {v.real(), v.imag()};
}

KelvinPair second_kind(double x) {
    if (x <= kSeriesLimit) return kelvin_series(x, true);
    const Complex v = k0_hankel(x);
    return {v.real(), v.imag()};
}

}  // namespace

double kelvin_ber(double x) {
    if (detail::unusable(x) || std::fabs(x) > kBerLimit) return NANUM;
    return finish(first_kind(std::fabs(x)).re);
}

double kelvin_bei(double x) {
    if (detail::unusable(x) || std::fabs(x) > kBerLimit) return NANUM;
    return finish(first_kind(std::fabs(x)).im);
}

double kelvin_ker(double x) {
    if (detail::unusable(x) || x <= 0.0 || x > kKerLimit) return NANUM;
    return finish(second_kind(x).re);
}

double kelvin_kei(double x) {
    if (detail::unusable(x) || x < 0.0 || x > kKerLimit) return NANUM;
    if (x == 0.0) return -kQuarterPi.hi;
    return finish(second_kind(x).im);
}

}  // namespace zemath::own
