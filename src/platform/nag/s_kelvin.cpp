// s19aac ber x, s19abc bei x, s19acc ker x, s19adc kei x: the Kelvin functions,
//     ber x + i bei x = I0(x e^(i pi/4)),   ker x + i kei x = K0(x e^(i pi/4)).
//
// Method: the power series for ber and bei up to |x| = 8 (cancellation costs about
// e^(0.29 x), a factor 10 there) and for ker and kei up to x = 3; beyond, the trapezoid
// rule on the integral representations, which converges geometrically for these
// analytic integrands:
//     I0(z) = (1/N) sum_{j<N} exp(z cos(2 pi j / N)),  N = x + 40 (rounded up to even);
//     K0(z) = int_0^inf exp(-z cosh t) dt,  step 0.1, stopped where the terms fall
//             below 1e-18 of the sum (Re z > 0 makes the tail decay doubly exponentially).
// For ker and kei beyond x = 20 the Hankel expansion of K0(z) (the trapezoid rule would
// need ever smaller steps as the integrand oscillates faster).
// Accuracy: a few ulps relative to |ber + i bei| and |ker + i kei|, so absolute near the
// zeros of each part.
//
// Failures (value 0): ber and bei for |x| > 49.08, where the growth of the functions
// amplifies the rounding of x too much (NE_REAL_ARG_GT); ker for x <= 0
// (NE_REAL_ARG_LE); kei for x < 0 (NE_REAL_ARG_LT), kei(0) = -pi/4; ker and kei for
// x > 1000, where they underflow (NE_REAL_ARG_GT); NaN (NE_REAL).
// Reference: DLMF 10.61, 10.65 (series); J. A. C. Weideman and L. N. Trefethen (2007),
// The exponentially convergent trapezoidal rule, SIAM Review 56 (2014) 385-458.
#include <cmath>
#include <complex>
#include <numbers>

#include "platform/nag/s.hpp"
#include "platform/numeric/double_double.hpp"

namespace zemath::nag {

namespace {

using Cx = std::complex<double>;
constexpr double kPi = std::numbers::pi;
constexpr double kBerLimit = 49.08;
constexpr double kKerLimit = 1000.0;
constexpr double kBerSeries = 8.0;
constexpr double kKerSeries = 3.0;
constexpr double kKerAsymptotic = 20.0;

// ber + i bei by the power series.
Cx ber_bei_series(double x) {
    const double q = 0.25 * x * x;  // (x/2)^2
    double ber = 0.0, bei = 0.0;
    double term = 1.0;  // (x/2)^(2m) / (m!)^2 with m = 2k, then 2k + 1
    for (int k = 0; k < 40; ++k) {
        const double m = 2.0 * k;
        ber += (k & 1) ? -term : term;
        term *= q / ((m + 1.0) * (m + 1.0));
        bei += (k & 1) ? -term : term;
        term *= q / ((m + 2.0) * (m + 2.0));
        // Terms below 1e-18 of the sums (a hundredth of an ulp) no longer change them.
        if (term < 1e-18 * (std::fabs(ber) + std::fabs(bei))) break;
    }
    return {ber, bei};
}

// ker + i kei by the power series, x > 0.
Cx ker_kei_series(double x) {
    const double q = 0.25 * x * x;
    const Cx bb = ber_bei_series(x);
    double sr = 0.0, si = 0.0;
    double term = 1.0;
    double psi = -std::numbers::egamma;  // psi(m + 1) for m = 0
    for (int k = 0; k < 40; ++k) {
        const double m = 2.0 * k;
        // m = 2k: psi(2k + 1)
        sr += (k & 1) ? -psi * term : psi * term;
        term *= q / ((m + 1.0) * (m + 1.0));
        psi += 1.0 / (m + 1.0);  // psi(2k + 2)
        si += (k & 1) ? -psi * term : psi * term;
        term *= q / ((m + 2.0) * (m + 2.0));
        psi += 1.0 / (m + 2.0);
        // Terms below 1e-18 of the sums (a hundredth of an ulp) no longer change them.
        if (term * std::fabs(psi) < 1e-18 * (std::fabs(sr) + std::fabs(si))) break;
    }
    const double log_half = std::log(0.5 * x);
    const double ker = -log_half * bb.real() + 0.25 * kPi * bb.imag() + sr;
    const double kei = -log_half * bb.imag() - 0.25 * kPi * bb.real() + si;
    return {ker, kei};
}

Cx ber_bei_trapezoid(double x) {
    const Cx z = x * Cx(std::cos(0.25 * kPi), std::sin(0.25 * kPi));
    int n = static_cast<int>(std::ceil(x)) + 40;
    n += n & 1;
    Cx sum = std::exp(z) + std::exp(-z);  // j = 0 and j = n/2
    for (int j = 1; j < n / 2; ++j) sum += 2.0 * std::exp(z * std::cos(2.0 * kPi * j / n));
    return sum / static_cast<double>(n);
}

Cx ker_kei_trapezoid(double x) {
    const Cx z = x * Cx(std::cos(0.25 * kPi), std::sin(0.25 * kPi));
    constexpr double kStep = 0.1;
    Cx sum = 0.5 * std::exp(-z);
    for (int j = 1; j < 400; ++j) {
        const Cx term = std::exp(-z * std::cosh(j * kStep));
        sum += term;
        // A term below 1e-18 of the sum (a hundredth of an ulp) no longer changes it.
        if (std::abs(term) < 1e-18 * std::abs(sum)) break;
    }
    return kStep * sum;
}

Cx ber_bei(double x) {
    const double y = std::fabs(x);  // both even
    return y <= kBerSeries ? ber_bei_series(y) : ber_bei_trapezoid(y);
}

// K0(z) ~ sqrt(pi / 2z) e^-z sum (-1)^k beta_k / z^k, beta_k = prod (2m-1)^2 / (k! 8^k),
// for x >= 20 (the smallest term, near k = 2|z|, is below e^-40). Re z = Im z = x/sqrt 2
// is carried to twice the precision: at x = 1000 its rounding alone would shift the
// phase by 1e-13.
Cx ker_kei_asymptotic(double x) {
    constexpr double kRsqrt2Hi = 0.7071067811865476;
    constexpr double kRsqrt2Lo = -4.8336466567264565e-17;
    const double p = x * kRsqrt2Hi;
    const double p_lo = numeric::product_error(x, kRsqrt2Hi, p) + x * kRsqrt2Lo;
    const Cx z(p, p);
    const Cx inv = 1.0 / z;
    Cx sum = 1.0, term = 1.0;
    for (int k = 1; k < 80; ++k) {
        const double odd = 2.0 * k - 1.0;
        term *= -odd * odd / (8.0 * k) * inv;
        sum += term;
        // A term below 1e-18 of the sum (a hundredth of an ulp) no longer changes it.
        if (std::abs(term) < 1e-18 * std::abs(sum)) break;
    }
    // e^-z = e^-(p + p_lo) (cos(p + p_lo) - i sin(p + p_lo)), to first order in p_lo.
    const double c = std::cos(p), sn = std::sin(p);
    const Cx phase(c - sn * p_lo, -(sn + c * p_lo));
    const double magnitude = std::exp(-p) * (1.0 - p_lo);
    return std::sqrt(kPi / (2.0 * z)) * magnitude * phase * sum;
}

Cx ker_kei(double x) {
    if (x <= kKerSeries) return ker_kei_series(x);
    return x < kKerAsymptotic ? ker_kei_trapezoid(x) : ker_kei_asymptotic(x);
}

}  // namespace

double s19aac(double x, NagError* fail) {
    fail->set(NE_NOERROR);
    if (std::isnan(x)) return fail->set(NE_REAL), 0.0;
    if (std::fabs(x) > kBerLimit) return fail->set(NE_REAL_ARG_GT), 0.0;
    return ber_bei(x).real();
}

double s19abc(double x, NagError* fail) {
    fail->set(NE_NOERROR);
    if (std::isnan(x)) return fail->set(NE_REAL), 0.0;
    if (std::fabs(x) > kBerLimit) return fail->set(NE_REAL_ARG_GT), 0.0;
    return ber_bei(x).imag();
}

double s19acc(double x, NagError* fail) {
    fail->set(NE_NOERROR);
    if (std::isnan(x)) return fail->set(NE_REAL), 0.0;
    if (x <= 0.0) return fail->set(NE_REAL_ARG_LE), 0.0;
    if (x > kKerLimit) return fail->set(NE_REAL_ARG_GT), 0.0;
    return ker_kei(x).real();
}

double s19adc(double x, NagError* fail) {
    fail->set(NE_NOERROR);
    if (std::isnan(x)) return fail->set(NE_REAL), 0.0;
    if (x < 0.0) return fail->set(NE_REAL_ARG_LT), 0.0;
    if (x == 0.0) return -0.25 * kPi;
    if (x > kKerLimit) return fail->set(NE_REAL_ARG_GT), 0.0;
    return ker_kei(x).imag();
}

}  // namespace zemath::nag
