/* zeMath: special functions. The scalar special functions of the script function
 * table (function_table.h), under their table names, plus the error-function inverses
 * and the angle helpers.
 *
 * Conventions of every function here:
 * - The value is returned as a double; NANUM (types.h) reports every failure, and no
 *   status is written anywhere.
 * - NANUM: an argument equal to NANUM, NaN or +-infinity; a point outside the
 *   function's domain (Y0, K0, ker at x <= 0, log_gamma at x <= 0, Ci at x <= 0, ...);
 *   a pole (gamma at 0 and the negative integers, E1 at 0); a result that would
 *   overflow (gamma beyond 171.6, bessel_i0 beyond |x| = 713.98, airy_bi beyond 104.1,
 *   bessel_i_nu beyond 700.92) or that the function refuses to compute (the oscillating
 *   Bessel functions beyond |x| = 1e16, the Airy functions below -5e10, ber and bei
 *   beyond |x| = 49.08, ker and kei beyond 1000, Ai and Ai' beyond 103.9); an integer
 *   parameter out of range. Results that merely underflow come back as 0 (K0, K1 and
 *   bessel_k_nu for large x, E1 beyond 709, erfc far out) except where noted.
 * - Accuracy: within 1e-13 relative error of 50-digit references over each function's
 *   domain; for oscillating functions (J, Y, Airy for x < 0, Kelvin, Ci, Fresnel,
 *   theta) the error is relative to the local envelope, i.e. absolute near the zeros.
 * - The functions are pure and reentrant.
 *
 * erf, erfc and gamma collide with the C math library; libzemath exports them as erfz,
 * erfcz and gammaz (the z suffix as for the complex functions), and the companion
 * library zemath_plain (plainnames.h) exports the plain names as forwarders. */
#ifndef ZEMATH_SPECIAL_H
#define ZEMATH_SPECIAL_H

#include "types.h"

ZEMATH_EXTERN_C_BEGIN

/* ---- Airy functions (standard normalisation, w'' = x w) -------------------------- */
ZEMATH_API double airy_ai(double x) ZEMATH_NOEXCEPT;
ZEMATH_API double airy_ai_deriv(double x) ZEMATH_NOEXCEPT;
ZEMATH_API double airy_bi(double x) ZEMATH_NOEXCEPT;
ZEMATH_API double airy_bi_deriv(double x) ZEMATH_NOEXCEPT;

/* ---- Bessel functions of orders 0 and 1 ------------------------------------------ */
/* J0, J1 for all x (|x| <= 1e16); Y0, Y1, K0, K1 for x > 0; I0, I1 for |x| <= 713.98. */
ZEMATH_API double bessel_j0(double x) ZEMATH_NOEXCEPT;
ZEMATH_API double bessel_j1(double x) ZEMATH_NOEXCEPT;
ZEMATH_API double bessel_y0(double x) ZEMATH_NOEXCEPT;
ZEMATH_API double bessel_y1(double x) ZEMATH_NOEXCEPT;
ZEMATH_API double bessel_i0(double x) ZEMATH_NOEXCEPT;
ZEMATH_API double bessel_i1(double x) ZEMATH_NOEXCEPT;
ZEMATH_API double bessel_k0(double x) ZEMATH_NOEXCEPT;
ZEMATH_API double bessel_k1(double x) ZEMATH_NOEXCEPT;
/* e^-|x| I0(x) and e^-|x| I1(x): every finite x (note the absolute value). */
ZEMATH_API double bessel_i0_scaled(double x) ZEMATH_NOEXCEPT;
ZEMATH_API double bessel_i1_scaled(double x) ZEMATH_NOEXCEPT;
/* e^x K0(x) and e^x K1(x), x > 0. */
ZEMATH_API double bessel_k0_scaled(double x) ZEMATH_NOEXCEPT;
ZEMATH_API double bessel_k1_scaled(double x) ZEMATH_NOEXCEPT;

/* ---- Modified Bessel functions of order nu/4 ------------------------------------- */
/* The integer nu stands for the order nu/4, nu in -3..-1 and 1..3 (other nu: NANUM).
 * I_{nu/4}(x): x >= 0 for nu > 0 (value 0 at x = 0), x > 0 for nu < 0, x <= 700.92.
 * The scaled form is e^-x I_{nu/4}(x) (e^-x, not e^-|x|: x < 0 is refused) for every
 * finite x in the domain. K_{nu/4}(x) = K_{-nu/4}(x) and e^x K_{nu/4}(x): x > 0. */
ZEMATH_API double bessel_i_nu(double x, int nu) ZEMATH_NOEXCEPT;
ZEMATH_API double bessel_i_nu_scaled(double x, int nu) ZEMATH_NOEXCEPT;
ZEMATH_API double bessel_k_nu(double x, int nu) ZEMATH_NOEXCEPT;
ZEMATH_API double bessel_k_nu_scaled(double x, int nu) ZEMATH_NOEXCEPT;

/* ---- Kelvin functions: ber + i bei = I0(x e^(i pi/4)), ker + i kei = K0(x e^(i pi/4))
 * ber, bei: |x| <= 49.08 (even functions); ker: 0 < x <= 1000; kei: 0 <= x <= 1000,
 * kei(0) = -pi/4. */
ZEMATH_API double kelvin_ber(double x) ZEMATH_NOEXCEPT;
ZEMATH_API double kelvin_bei(double x) ZEMATH_NOEXCEPT;
ZEMATH_API double kelvin_ker(double x) ZEMATH_NOEXCEPT;
ZEMATH_API double kelvin_kei(double x) ZEMATH_NOEXCEPT;

/* ---- Integrals -------------------------------------------------------------------- */
/* Fresnel integrals int_0^x sin(pi t^2/2) dt and int_0^x cos(pi t^2/2) dt (the pi/2
 * convention), all x. */
ZEMATH_API double fresnel_s(double x) ZEMATH_NOEXCEPT;
ZEMATH_API double fresnel_c(double x) ZEMATH_NOEXCEPT;
/* E1(x) = int_x^inf e^-u/u du; for x < 0 the principal value -Ei(-x); NANUM at 0 and
 * below -709.7 (overflow). */
ZEMATH_API double exp_integral(double x) ZEMATH_NOEXCEPT;
/* Ci(x) = gamma + ln x + int_0^x (cos u - 1)/u du, x > 0. */
ZEMATH_API double cos_integral(double x) ZEMATH_NOEXCEPT;
/* Si(x) = int_0^x sin u / u du, all x. */
ZEMATH_API double sin_integral(double x) ZEMATH_NOEXCEPT;
/* Phi(x) and 1 - Phi(x) of the standard normal law, each accurate in its own tail. */
ZEMATH_API double cumul_normal(double x) ZEMATH_NOEXCEPT;
ZEMATH_API double cumul_normal_complem(double x) ZEMATH_NOEXCEPT;

/* Carlson's symmetric elliptic integrals. RC(x, y): x >= 0, y != 0 (y < 0: Cauchy
 * principal value). RF(x, y, z): x, y, z >= 0, at most one 0. RD(x, y, z): x, y >= 0,
 * at most one 0, z > 0. RJ(x, y, z, r): x, y, z >= 0, at most one 0, r != 0 (r < 0:
 * principal value). Every argument at most DBL_MAX/5 and sums of two at least
 * 5 * DBL_MIN. */
ZEMATH_API double elliptic_integral_rc(double x, double y) ZEMATH_NOEXCEPT;
ZEMATH_API double elliptic_integral_rf(double x, double y, double z) ZEMATH_NOEXCEPT;
ZEMATH_API double elliptic_integral_rd(double x, double y, double z) ZEMATH_NOEXCEPT;
ZEMATH_API double elliptic_integral_rj(double x, double y, double z, double r) ZEMATH_NOEXCEPT;

/* ---- Gamma family ----------------------------------------------------------------- */
/* Gamma(x) (table name gamma): NANUM at the poles, for x >= 171.62 and x < -170. */
ZEMATH_API double gammaz(double x) ZEMATH_NOEXCEPT;
/* ln Gamma(x), 0 < x <= 2.55e305. */
ZEMATH_API double log_gamma(double x) ZEMATH_NOEXCEPT;
/* The k-th derivative of psi = Gamma'/Gamma, k in 0..6 (k = 0 digamma); x not a
 * non-positive integer. */
ZEMATH_API double real_polygamma(double x, int k) ZEMATH_NOEXCEPT;
/* The regularised LOWER incomplete gamma P(a, x) = (1/Gamma(a)) int_0^x t^(a-1) e^-t dt,
 * a > 0, x >= 0 (the upper one is 1 - P, or gamcdf's upper tail). */
ZEMATH_API double incomplete_gamma(double a, double x) ZEMATH_NOEXCEPT;

/* ---- Theta functions -------------------------------------------------------------- */
/* Jacobian theta_k(x, q), k in 0..4, nome 0 <= q < 1, with the argument pi x:
 * theta_0 = theta_4 = 1 + 2 sum (-1)^n q^(n^2) cos(2 n pi x),
 * theta_1 = 2 sum (-1)^n q^((n+1/2)^2) sin((2n+1) pi x),
 * theta_2 = 2 sum q^((n+1/2)^2) cos((2n+1) pi x), theta_3 = 1 + 2 sum q^(n^2) cos(2 n pi x). */
ZEMATH_API double jacobian_theta(int k, double x, double q) ZEMATH_NOEXCEPT;

/* ---- Error functions -------------------------------------------------------------- */
/* erf and erfc (table names erf and erfc), Cody's rational approximations. */
ZEMATH_API double erfz(double x) ZEMATH_NOEXCEPT;
ZEMATH_API double erfcz(double x) ZEMATH_NOEXCEPT;
/* e^(x^2) erfc(x), Cody's scaled form: finite up to about x = -26.6 (NANUM below,
 * where it overflows), 1/(sqrt(pi) x) for large x. */
ZEMATH_API double erfcx(double x) ZEMATH_NOEXCEPT;
/* The inverse of erfc, -norminv(y/2)/sqrt(2) as a function, evaluated directly (full
 * accuracy in both tails): y in (0, 2); y <= 0 or y >= 2 gives NANUM (norminv refuses
 * the probabilities 0 and 1). */
ZEMATH_API double erfcinv(double y) ZEMATH_NOEXCEPT;
/* The inverse of erf, erfcinv(1 - y) as a function, computed without the cancellation
 * of 1 - y for small y: y in (-1, 1); erfinv(0) = 0. */
ZEMATH_API double erfinv(double y) ZEMATH_NOEXCEPT;

/* ---- Angles ----------------------------------------------------------------------- */
/* radians * 180 / pi and its inverse (pi taken as acos(-1)). */
ZEMATH_API double degrees(double angle) ZEMATH_NOEXCEPT;
ZEMATH_API double radians(double angle) ZEMATH_NOEXCEPT;
/* The angle of the line from (px1, py1) to (px2, py2). NANUM when the two points
 * coincide within the library's approximate-equality test (relative 1e-11 per
 * coordinate). mode != 0: the direction in [0, 2 pi): acos(dx / length), pi/2 when the
 * x coordinates agree, 2 pi minus that when dy < 0. mode 0: the undirected slope angle
 * atan(dy / dx) in (-pi/2, pi/2), pi/2 for a vertical line. unit = 1 gives degrees, any
 * other unit radians. */
ZEMATH_API double angleint1(double px1, double py1, double px2, double py2, int unit,
                            int mode) ZEMATH_NOEXCEPT;
/* The angle from line 1 (point 1 to point 2) to line 2 (point 3 to point 4): angleint1
 * of line 2 minus angleint1 of line 1, both in radians and the same mode. mode != 0:
 * reduced into [0, 2 pi), the counter-clockwise turn from direction 1 to direction 2.
 * mode 0: reduced into (-pi/2, pi/2], the signed turn between the undirected lines.
 * unit = 1 converts the result to degrees. NANUM when either line is NANUM. */
ZEMATH_API double angleint2(double px1, double py1, double px2, double py2, double px3, double py3,
                            double px4, double py4, int unit, int mode) ZEMATH_NOEXCEPT;

/* ---- Placeholders of the script table --------------------------------------------- */
/* Kernel density rows the host evaluates itself: both always return NANUM. */
ZEMATH_API double ksdensity(int x, int vx, double w, int* status) ZEMATH_NOEXCEPT;
ZEMATH_API double ks2density(double x, double y, double vx, double vy, double wx,
                             double wy) ZEMATH_NOEXCEPT;

/* ---- The prefixed family ----------------------------------------------------------
 * The same functions with the same arguments under the zemath_ prefix, computed by the
 * library's own algorithms (series, continued fractions, asymptotic expansions, the
 * duplication algorithm; src/stats/own_*.cpp), independent of the routines behind the
 * unprefixed namesakes above, so that each family checks the other. Values, domains and
 * NANUM rules are those of the namesakes (NaN, +-infinity, NANUM, poles and points
 * outside the domain give NANUM; a series or continued fraction that fails to converge
 * within its cap gives NANUM), accurate to 1e-13 relative (envelope-relative for the
 * oscillating functions), except where noted:
 * - own algorithms: zemath_erf, _erfc, _cumul_normal, _cumul_normal_complem (series and
 *   the Laplace continued fraction); zemath_gamma, _log_gamma, _real_polygamma,
 *   _incomplete_gamma (Taylor series about 1 and 2, Stirling, recurrences, the power
 *   series and Legendre's fraction); zemath_elliptic_integral_rc, _rf, _rd, _rj
 *   (Carlson's duplication); zemath_exp_integral, _sin_integral, _cos_integral (series,
 *   continued fractions); zemath_fresnel_s, _fresnel_c (series, complex continued
 *   fraction); zemath_jacobian_theta (q-series and Jacobi's imaginary transformation);
 *   zemath_bessel_i0_scaled, _i1, _i1_scaled, _k0, _k0_scaled, _k1, _k1_scaled,
 *   _i_nu, _i_nu_scaled, _k_nu, _k_nu_scaled (power series, the Hankel expansion, the
 *   trapezoid rule on the integral of K); zemath_kelvin_ber, _bei, _ker, _kei (series in
 *   double-double arithmetic, the Hankel expansions).
 *   zemath_erf and zemath_erfc give NANUM at +-infinity like every other function here.
 *   zemath_elliptic_integral_rj with r < 0 gives NANUM when the arguments span more
 *   than about 1e400 (the rescaled principal-value formula would underflow).
 *   zemath_real_polygamma near the zeros of psi^(k) at negative x (even k): accurate
 *   to 1e-13 of the size of the terms, i.e. absolute there.
 * - the C runtime: zemath_bessel_j0, _j1, _y0, _y1 use the C library's j0, j1, y0, y1
 *   and give NANUM for |x| > 1e16 (and, for Y, x <= 0);
 * - zemath_bessel_i_nu(x, nu): NANUM when nu = 0, |nu| > 3, x < 0 or x >= 700.9217937;
 *   at x = 0, 0.0 for nu > 0 and NANUM for nu < 0; otherwise, with a = |nu|/4,
 *   I_a(x) for nu > 0 and I_a(x) + (2/pi) sin(a pi) K_a(x) for nu < 0. */
ZEMATH_API double zemath_bessel_i0_scaled(double x) ZEMATH_NOEXCEPT;
ZEMATH_API double zemath_bessel_i1(double x) ZEMATH_NOEXCEPT;
ZEMATH_API double zemath_bessel_i1_scaled(double x) ZEMATH_NOEXCEPT;
ZEMATH_API double zemath_bessel_i_nu(double x, int nu) ZEMATH_NOEXCEPT;
ZEMATH_API double zemath_bessel_i_nu_scaled(double x, int nu) ZEMATH_NOEXCEPT;
ZEMATH_API double zemath_bessel_j0(double x) ZEMATH_NOEXCEPT;
ZEMATH_API double zemath_bessel_j1(double x) ZEMATH_NOEXCEPT;
ZEMATH_API double zemath_bessel_k0(double x) ZEMATH_NOEXCEPT;
ZEMATH_API double zemath_bessel_k0_scaled(double x) ZEMATH_NOEXCEPT;
ZEMATH_API double zemath_bessel_k1(double x) ZEMATH_NOEXCEPT;
ZEMATH_API double zemath_bessel_k1_scaled(double x) ZEMATH_NOEXCEPT;
ZEMATH_API double zemath_bessel_k_nu(double x, int nu) ZEMATH_NOEXCEPT;
ZEMATH_API double zemath_bessel_k_nu_scaled(double x, int nu) ZEMATH_NOEXCEPT;
ZEMATH_API double zemath_bessel_y0(double x) ZEMATH_NOEXCEPT;
ZEMATH_API double zemath_bessel_y1(double x) ZEMATH_NOEXCEPT;
ZEMATH_API double zemath_cos_integral(double x) ZEMATH_NOEXCEPT;
ZEMATH_API double zemath_cumul_normal(double x) ZEMATH_NOEXCEPT;
ZEMATH_API double zemath_cumul_normal_complem(double x) ZEMATH_NOEXCEPT;
ZEMATH_API double zemath_elliptic_integral_rc(double x, double y) ZEMATH_NOEXCEPT;
ZEMATH_API double zemath_elliptic_integral_rd(double x, double y, double z) ZEMATH_NOEXCEPT;
ZEMATH_API double zemath_elliptic_integral_rf(double x, double y, double z) ZEMATH_NOEXCEPT;
ZEMATH_API double zemath_elliptic_integral_rj(double x, double y, double z,
                                              double r) ZEMATH_NOEXCEPT;
ZEMATH_API double zemath_erf(double x) ZEMATH_NOEXCEPT;
ZEMATH_API double zemath_erfc(double x) ZEMATH_NOEXCEPT;
ZEMATH_API double zemath_exp_integral(double x) ZEMATH_NOEXCEPT;
ZEMATH_API double zemath_fresnel_c(double x) ZEMATH_NOEXCEPT;
ZEMATH_API double zemath_fresnel_s(double x) ZEMATH_NOEXCEPT;
ZEMATH_API double zemath_gamma(double x) ZEMATH_NOEXCEPT;
ZEMATH_API double zemath_incomplete_gamma(double a, double x) ZEMATH_NOEXCEPT;
ZEMATH_API double zemath_jacobian_theta(int k, double x, double q) ZEMATH_NOEXCEPT;
ZEMATH_API double zemath_kelvin_bei(double x) ZEMATH_NOEXCEPT;
ZEMATH_API double zemath_kelvin_ber(double x) ZEMATH_NOEXCEPT;
ZEMATH_API double zemath_kelvin_kei(double x) ZEMATH_NOEXCEPT;
ZEMATH_API double zemath_kelvin_ker(double x) ZEMATH_NOEXCEPT;
ZEMATH_API double zemath_log_gamma(double x) ZEMATH_NOEXCEPT;
ZEMATH_API double zemath_real_polygamma(double x, int k) ZEMATH_NOEXCEPT;
ZEMATH_API double zemath_sin_integral(double x) ZEMATH_NOEXCEPT;

ZEMATH_EXTERN_C_END

#endif /* ZEMATH_SPECIAL_H */
