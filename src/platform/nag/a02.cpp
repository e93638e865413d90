// a02: complex elementary functions (see a02.hpp for method and accuracy).
#include "platform/nag/a02.hpp"

#include <cmath>
#include <complex>
#include <cstdint>

namespace zemath::nag {
namespace {

using cplx = std::complex<double>;

cplx to_std(d_complex z) {
    return {z.re, z.im};
}
d_complex from_std(cplx z) {
    return {z.real(), z.imag()};
}

// exp(log_radius) (cos angle + i sin angle).
d_complex from_polar_log(double log_radius, double angle) {
    const double radius = std::exp(log_radius);
    return {radius * std::cos(angle), radius * std::sin(angle)};
}

}  // namespace

double a02dbc(double re, double im) noexcept {
    return std::hypot(re, im);
}

d_complex a02dcc(d_complex z) noexcept {
    return from_std(std::sqrt(to_std(z)));
}

d_complex a02ddc(d_complex z, int n) noexcept {
    // Binary powering on |n| (64 bits, so INT_MIN has a magnitude), then one reciprocal.
    std::int64_t e = n;
    const bool negative = e < 0;
    if (negative) e = -e;
    cplx result(1.0, 0.0), base = to_std(z);
    while (e > 0) {
        if (e & 1) result *= base;
        e >>= 1;
        if (e > 0) base *= base;
    }
    if (negative) result = cplx(1.0, 0.0) / result;
    return from_std(result);
}

d_complex a02dec(d_complex z, double r) noexcept {
    if (z.re == 0.0 && z.im == 0.0) {
        if (r > 0.0) return {0.0, 0.0};
        if (r == 0.0) return {1.0, 0.0};
        return {HUGE_VAL, 0.0};
    }
    const double modulus = std::hypot(z.re, z.im);
    const double angle = std::atan2(z.im, z.re);
    // pow keeps |z|^r accurate where exp(r log|z|) would lose |r log|z|| ulps.
    const double radius = std::pow(modulus, r);
    return {radius * std::cos(r * angle), radius * std::sin(r * angle)};
}

d_complex a02dfc(d_complex z, d_complex w) noexcept {
    if (z.re == 0.0 && z.im == 0.0) {
        if (w.re > 0.0) return {0.0, 0.0};
        if (w.re == 0.0 && w.im == 0.0) return {1.0, 0.0};
        return {NAN, NAN};
    }
    if (w.im == 0.0) return a02dec(z, w.re);
    // z^w = exp(w log z): log|z^w| = a log|z| - b theta, arg = b log|z| + a theta.
    const double log_modulus = std::log(std::hypot(z.re, z.im));
    const double angle = std::atan2(z.im, z.re);
    return from_polar_log(w.re * log_modulus - w.im * angle, w.im * log_modulus + w.re * angle);
}

d_complex a02dgc(d_complex z) noexcept {
    return from_std(std::log(to_std(z)));
}
d_complex a02dhc(d_complex z) noexcept {
    return from_std(std::exp(to_std(z)));
}
d_complex a02djc(d_complex z) noexcept {
    return from_std(std::sin(to_std(z)));
}
d_complex a02dkc(d_complex z) noexcept {
    return from_std(std::cos(to_std(z)));
}
d_complex a02dlc(d_complex z) noexcept {
    return from_std(std::tan(to_std(z)));
}
d_complex complex_tanh(d_complex z) noexcept {
    return from_std(std::tanh(to_std(z)));
}

}  // namespace zemath::nag
