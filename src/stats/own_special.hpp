// The library's own special functions: the algorithms behind the zemath_-prefixed
// exports of special.h, written independently of the platform back end that serves the
// unprefixed table functions, so that each family checks the other. One source file per
// family (own_error.cpp, own_gamma.cpp, own_elliptic.cpp, own_expint.cpp, own_bessel.cpp,
// own_kelvin.cpp, own_fresnel.cpp, own_theta.cpp); each opens with its method, switch points and
// accuracy.
//
// Every function here returns NANUM for NaN, +-infinity and NANUM arguments, at poles and
// outside its domain, and when a series or continued fraction reaches its iteration cap
// without converging.
#pragma once

#include "platform/numeric/double_double.hpp"

namespace zemath::own {

// ---- modified Bessel functions (own_bessel.cpp); the order of the _nu functions is
// nu/4, nu in -3..-1, 1..3; scaled I by e^-|x| (orders 0, 1) or e^-x, scaled K by e^x ----
double bessel_i0_scaled(double x);
double bessel_i1(double x);
double bessel_i1_scaled(double x);
double bessel_k0(double x);
double bessel_k0_scaled(double x);
double bessel_k1(double x);
double bessel_k1_scaled(double x);
double bessel_i_nu(double x, int nu);
double bessel_i_nu_scaled(double x, int nu);
double bessel_k_nu(double x, int nu);
double bessel_k_nu_scaled(double x, int nu);

// ---- error function and normal law (own_error.cpp) ----
double erf(double x);
double erfc(double x);
double normal_lower(double x);  // Phi(x)
double normal_upper(double x);  // 1 - Phi(x)

// ---- gamma family (own_gamma.cpp) ----
double gamma(double x);
double log_gamma(double x);
double polygamma(double x, int k);
double incomplete_gamma_lower(double a, double x);  // regularised P(a, x)

// ---- Carlson's symmetric elliptic integrals (own_elliptic.cpp) ----
double carlson_rc(double x, double y);
double carlson_rf(double x, double y, double z);
double carlson_rd(double x, double y, double z);
double carlson_rj(double x, double y, double z, double r);

// ---- exponential, sine and cosine integrals (own_expint.cpp) ----
double exp_integral_e1(double x);
double sin_integral(double x);
double cos_integral(double x);

// ---- Fresnel integrals, pi/2 convention (own_fresnel.cpp) ----
double fresnel_s(double x);
double fresnel_c(double x);

// ---- Kelvin functions (own_kelvin.cpp) ----
double kelvin_ber(double x);
double kelvin_bei(double x);
double kelvin_ker(double x);
double kelvin_kei(double x);

// ---- Jacobian theta functions, argument pi x (own_theta.cpp) ----
double jacobian_theta(int k, double x, double q);

}  // namespace zemath::own

namespace zemath::own::detail {

// NaN, +-infinity or NANUM.
bool unusable(double x);

// e^(-c x^2) for c = 1 or 1/2, with x^2 split exactly into hi + lo (fma) so that the
// rounding of the square does not enter the exponent: relative error a few ulps for any
// x, where exp(-c * x * x) would lose c x^2 ulps.
double exp_minus_square(double x, double c);

// The continued fraction 1 / (x + s / (x + 2 s / (x + 3 s / (x + ...)))) for x > 0, by the
// modified Lentz method: the Mills ratio of the normal law (s = 1) and sqrt(pi) e^(x^2)
// erfc(x) (s = 1/2). NaN when it has not converged within its cap of 2000 terms.
double mills_fraction(double x, double s);

// ln v in two parts (about 2^-104 relative), v > 0 normal (own_gamma.cpp).
numeric::TwoPart log_two_double(double v);

}  // namespace zemath::own::detail
