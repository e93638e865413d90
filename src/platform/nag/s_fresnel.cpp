// s20acc S(x), s20adc C(x): the Fresnel integrals with the pi/2 convention,
//     S(x) = int_0^x sin(pi t^2 / 2) dt,   C(x) = int_0^x cos(pi t^2 / 2) dt,
// both odd, tending to +-1/2.
//
// Method: the power series in t = pi x^2 / 2 for |x| < 1.5; beyond,
//     C + i S = (1 + i)/2 (1 - e^(i t) h),  h = erfc-type continued fraction
//     1/(1 - i pi x^2 + (-1*2)/(5 - i pi x^2 + (-3*4)/(9 - i pi x^2 + ...))) * x (1 - i)
// evaluated with the modified Lentz method (it converges in a few terms for large x).
// The phase t = pi x^2 / 2 is reduced exactly: x^2 = hi + lo with a fused multiply-add,
// hi taken modulo 4, so that sin t and cos t keep their accuracy for large x. Beyond
// x = 1e8 the leading asymptotic terms suffice: C = 1/2 + sin t / (pi x),
// S = 1/2 - cos t / (pi x). Accuracy: a few ulps.
// No failure exits.
// Reference: Abramowitz and Stegun 7.3, 7.1.15 (the continued fraction).
#include <cmath>
#include <complex>
#include <numbers>

#include "platform/nag/s.hpp"
#include "platform/numeric/double_double.hpp"

namespace zemath::nag {

namespace {

constexpr double kPi = std::numbers::pi;
constexpr double kSeriesLimit = 1.5;
constexpr double kAsymptotic = 1e8;
constexpr double kHalfOnly = 1e77;  // beyond: 1/(pi x) below 1e-77, C = S = 1/2

struct Fresnel {
    double s;
    double c;
};

// sin and cos of pi x^2 / 2 with x^2 reduced exactly modulo 4.
void phase(double x, double* sin_t, double* cos_t) {
    const double hi = x * x;
    const double lo = numeric::product_error(x, x, hi);
    double r = std::fmod(hi, 4.0) + lo;
    if (r >= 2.0) r -= 4.0;
    const double angle = 0.5 * kPi * r;
    *sin_t = std::sin(angle);
    *cos_t = std::cos(angle);
}

Fresnel series(double x) {
    const double t = 0.5 * kPi * x * x;
    double c = 0.0, s = 0.0;
    double term = 1.0;  // t^(2n) / (2n)! for C, then t^(2n+1) / (2n+1)! for S
    for (int n = 0; n < 40; ++n) {
        const double add_c = term / (4 * n + 1);
        c += (n & 1) ? -add_c : add_c;
        term *= t / (2.0 * n + 1.0);
        const double add_s = term / (4 * n + 3);
        s += (n & 1) ? -add_s : add_s;
        term *= t / (2.0 * n + 2.0);
        // Terms below 1e-18 of the sums (a hundredth of an ulp) no longer change them.
        if (add_c < 1e-18 * std::fabs(c) && add_s < 1e-18 * std::fabs(s)) break;
    }
    return {x * s, x * c};
}

Fresnel fraction(double x) {
    using Cx = std::complex<double>;
    // Lentz's method: stands in for a zero denominator; any value far below the terms will do.
    constexpr double kTiny = 1e-300;
    const double pix2 = kPi * x * x;
    Cx b(1.0, -pix2);
    Cx cc(1.0 / kTiny, 0.0);
    Cx d = 1.0 / b;
    Cx h = d;
    double n = -1.0;
    for (int k = 2; k < 200; ++k) {
        n += 2.0;
        const double a = -n * (n + 1.0);
        b += 4.0;
        d = 1.0 / (a * d + b);
        cc = b + a / cc;
        const Cx del = cc * d;
        h *= del;
        // Converged once the factor is within about an ulp of 1 (1e-16 < 2^-52).
        if (std::fabs(del.real() - 1.0) + std::fabs(del.imag()) < 1e-16) break;
    }
    h *= Cx(x, -x);
    double sin_t = 0.0, cos_t = 0.0;
    phase(x, &sin_t, &cos_t);
    const Cx cs = Cx(0.5, 0.5) * (1.0 - Cx(cos_t, sin_t) * h);
    return {cs.imag(), cs.real()};
}

Fresnel fresnel(double x) {
    const double y = std::fabs(x);
    Fresnel f{0.0, 0.0};
    if (y < kSeriesLimit) {
        f = series(y);
    } else if (y < kAsymptotic) {
        f = fraction(y);
    } else if (y < kHalfOnly) {
        double sin_t = 0.0, cos_t = 0.0;
        phase(y, &sin_t, &cos_t);
        const double inv = 1.0 / (kPi * y);
        f = {0.5 - cos_t * inv, 0.5 + sin_t * inv};
    } else {
        f = {0.5, 0.5};
    }
    if (x < 0.0) f = {-f.s, -f.c};
    return f;
}

}  // namespace

double s20acc(double x, NagError* fail) {
    fail->set(NE_NOERROR);
    if (std::isnan(x)) return x;
    return fresnel(x).s;
}

double s20adc(double x, NagError* fail) {
    fail->set(NE_NOERROR);
    if (std::isnan(x)) return x;
    return fresnel(x).c;
}

}  // namespace zemath::nag
