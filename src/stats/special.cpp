// Special functions under their script-table names: thin wrappers over the chapter-s
// substitutes that turn every failure of the routine into NANUM, the error-function
// inverses, and the angle helpers.
#include "zemath/special.h"

#include <cmath>
#include <initializer_list>
#include <numbers>

#include "core/missing.hpp"
#include "platform/nag/s_policy.hpp"  // first Boost include: configures Boost
#include <boost/math/special_functions/erf.hpp>

#include "platform/nag/s.hpp"
#include "platform/util/approx.hpp"
#include "stats/own_special.hpp"

namespace {

using namespace zemath;
namespace nag = zemath::nag;

constexpr double kRuntimeBesselLimit = 1e16;
constexpr double kINuOverflow = 700.9217937;

// Every argument a finite number and not NANUM.
bool usable(std::initializer_list<double> args) {
    for (double v : args)
        if (!std::isfinite(v) || is_missing(v)) return false;
    return true;
}

// The routine's value, or NANUM when it failed or the value is not a finite number.
double finish(double value, const nag::NagError& fail) {
    if (fail.failed() || !std::isfinite(value)) return NANUM;
    return value;
}

template <class Routine>
double one(double x, Routine routine) {
    if (!usable({x})) return NANUM;
    nag::NagError fail;
    const double value = routine(x, &fail);
    return finish(value, fail);
}

// A fresh zeroed record per call: the special functions report only through NANUM.
template <class Routine>
double with_order(double x, int order, Routine routine) {
    if (!usable({x})) return NANUM;
    nag::NagError fail;
    const double value = routine(x, order, &fail);
    return finish(value, fail);
}

double pi_value() {
    return std::acos(-1.0);
}

// angleint1 in radians (unit applied by the callers).
double line_angle(double px1, double py1, double px2, double py2, int mode) {
    const bool same_x = util::approx_equal(px1, px2);
    const bool same_y = util::approx_equal(py1, py2);
    if (same_x && same_y) return NANUM;
    double dx = px2 - px1, dy = py2 - py1;
    if (!std::isfinite(std::hypot(dx, dy))) {
        // The differences or the length overflowed (coordinates near DBL_MAX): a quarter of
        // every coordinate gives the same angle without overflow.
        dx = 0.25 * px2 - 0.25 * px1;
        dy = 0.25 * py2 - 0.25 * py1;
    }
    const double pi = pi_value();
    if (mode != 0) {
        double angle = same_x ? pi / 2.0 : std::acos(dx / std::hypot(dx, dy));
        if (dy < 0.0) angle = 2.0 * pi - angle;
        return angle;
    }
    return same_x ? pi / 2.0 : std::atan(dy / dx);
}

double to_unit(double radians_value, int unit) {
    return unit == 1 ? radians_value / pi_value() * 180.0 : radians_value;
}

}  // namespace

extern "C" {

ZEMATH_API double airy_ai(double x) noexcept {
    return one(x, nag::s17agc);
}
ZEMATH_API double airy_ai_deriv(double x) noexcept {
    return one(x, nag::s17ajc);
}
ZEMATH_API double airy_bi(double x) noexcept {
    return one(x, nag::s17ahc);
}
ZEMATH_API double airy_bi_deriv(double x) noexcept {
    return one(x, nag::s17akc);
}

ZEMATH_API double bessel_j0(double x) noexcept {
    return one(x, nag::s17aec);
}
ZEMATH_API double bessel_j1(double x) noexcept {
    return one(x, nag::s17afc);
}
ZEMATH_API double bessel_y0(double x) noexcept {
    return one(x, nag::s17acc);
}
ZEMATH_API double bessel_y1(double x) noexcept {
    return one(x, nag::s17adc);
}
ZEMATH_API double bessel_i0(double x) noexcept {
    return one(x, nag::s18aec);
}
ZEMATH_API double bessel_i1(double x) noexcept {
    return one(x, nag::s18afc);
}
ZEMATH_API double bessel_k0(double x) noexcept {
    return one(x, nag::s18acc);
}
ZEMATH_API double bessel_k1(double x) noexcept {
    return one(x, nag::s18adc);
}
ZEMATH_API double bessel_i0_scaled(double x) noexcept {
    return one(x, nag::s18cec);
}
ZEMATH_API double bessel_i1_scaled(double x) noexcept {
    return one(x, nag::s18cfc);
}
ZEMATH_API double bessel_k0_scaled(double x) noexcept {
    return one(x, nag::s18ccc);
}
ZEMATH_API double bessel_k1_scaled(double x) noexcept {
    return one(x, nag::s18cdc);
}

ZEMATH_API double bessel_i_nu(double x, int nu) noexcept {
    return with_order(x, nu, nag::s18eec);
}
ZEMATH_API double bessel_i_nu_scaled(double x, int nu) noexcept {
    return with_order(x, nu, nag::s18ecc);
}
ZEMATH_API double bessel_k_nu(double x, int nu) noexcept {
    return with_order(x, nu, nag::s18efc);
}
ZEMATH_API double bessel_k_nu_scaled(double x, int nu) noexcept {
    return with_order(x, nu, nag::s18edc);
}

ZEMATH_API double kelvin_ber(double x) noexcept {
    return one(x, nag::s19aac);
}
ZEMATH_API double kelvin_bei(double x) noexcept {
    return one(x, nag::s19abc);
}
ZEMATH_API double kelvin_ker(double x) noexcept {
    return one(x, nag::s19acc);
}
ZEMATH_API double kelvin_kei(double x) noexcept {
    return one(x, nag::s19adc);
}

ZEMATH_API double fresnel_s(double x) noexcept {
    return one(x, nag::s20acc);
}
ZEMATH_API double fresnel_c(double x) noexcept {
    return one(x, nag::s20adc);
}
ZEMATH_API double exp_integral(double x) noexcept {
    return one(x, nag::s13aac);
}
ZEMATH_API double cos_integral(double x) noexcept {
    return one(x, nag::s13acc);
}
ZEMATH_API double sin_integral(double x) noexcept {
    return one(x, nag::s13adc);
}
ZEMATH_API double cumul_normal(double x) noexcept {
    return one(x, nag::s15abc);
}
ZEMATH_API double cumul_normal_complem(double x) noexcept {
    return one(x, nag::s15acc);
}

ZEMATH_API double elliptic_integral_rc(double x, double y) noexcept {
    if (!usable({x, y})) return NANUM;
    nag::NagError fail;
    const double value = nag::s21bac(x, y, &fail);
    return finish(value, fail);
}

ZEMATH_API double elliptic_integral_rf(double x, double y, double z) noexcept {
    if (!usable({x, y, z})) return NANUM;
    nag::NagError fail;
    const double value = nag::s21bbc(x, y, z, &fail);
    return finish(value, fail);
}

ZEMATH_API double elliptic_integral_rd(double x, double y, double z) noexcept {
    if (!usable({x, y, z})) return NANUM;
    nag::NagError fail;
    const double value = nag::s21bcc(x, y, z, &fail);
    return finish(value, fail);
}

ZEMATH_API double elliptic_integral_rj(double x, double y, double z, double r) noexcept {
    if (!usable({x, y, z, r})) return NANUM;
    nag::NagError fail;
    const double value = nag::s21bdc(x, y, z, r, &fail);
    return finish(value, fail);
}

ZEMATH_API double gammaz(double x) noexcept {
    return one(x, nag::s14aac);
}
ZEMATH_API double log_gamma(double x) noexcept {
    return one(x, nag::s14abc);
}
ZEMATH_API double real_polygamma(double x, int k) noexcept {
    return with_order(x, k, nag::s14aec);
}

// The lower function P(a, x) of the pair, deliberately: the table's incomplete gamma is
// the regularised lower one.
ZEMATH_API double incomplete_gamma(double a, double x) noexcept {
    if (!usable({a, x})) return NANUM;
    nag::NagError fail;
    double p = 0.0, q = 0.0;
    nag::s14bac(a, x, 0.0, &p, &q, &fail);
    return finish(p, fail);
}

ZEMATH_API double jacobian_theta(int k, double x, double q) noexcept {
    if (!usable({x, q})) return NANUM;
    nag::NagError fail;
    const double value = nag::s21ccc(k, x, q, &fail);
    return finish(value, fail);
}

ZEMATH_API double erfz(double x) noexcept {
    return one(x, nag::s15aec);
}
ZEMATH_API double erfcz(double x) noexcept {
    return one(x, nag::s15adc);
}

ZEMATH_API double erfcx(double x) noexcept {
    if (!usable({x})) return NANUM;
    const double value = nag::cody_erf(x, 2);
    return std::isfinite(value) ? value : NANUM;
}

// -norminv(y/2)/sqrt(2) as a function; evaluated by the inverse complementary error
// function directly, which keeps full accuracy where the normal quantile's far tail does
// not. The ends y = 0 and 2, which norminv refuses, stay NANUM.
ZEMATH_API double erfcinv(double y) noexcept {
    if (!usable({y}) || y <= 0.0 || y >= 2.0) return NANUM;
    const double v = boost::math::erfc_inv(y, nag::detail::SpecialPolicy());
    return std::isfinite(v) ? v : NANUM;
}

ZEMATH_API double erfinv(double y) noexcept {
    if (!usable({y})) return NANUM;
    // Below |y| = 1/2, 1 - y would cost the digits of small y: the inverse directly.
    constexpr double kDirect = 0.5;
    if (std::fabs(y) < kDirect) return boost::math::erf_inv(y, nag::detail::SpecialPolicy());
    return erfcinv(1.0 - y);
}

ZEMATH_API double degrees(double angle) noexcept {
    if (!usable({angle})) return NANUM;
    return angle / pi_value() * 180.0;
}

ZEMATH_API double radians(double angle) noexcept {
    if (!usable({angle})) return NANUM;
    return angle / 180.0 * pi_value();
}

ZEMATH_API double angleint1(double px1, double py1, double px2, double py2, int unit,
                            int mode) noexcept {
    if (!usable({px1, py1, px2, py2})) return NANUM;
    const double angle = line_angle(px1, py1, px2, py2, mode);
    if (is_missing(angle)) return angle;
    return to_unit(angle, unit);
}

ZEMATH_API double angleint2(double px1, double py1, double px2, double py2, double px3, double py3,
                            double px4, double py4, int unit, int mode) noexcept {
    if (!usable({px1, py1, px2, py2, px3, py3, px4, py4})) return NANUM;
    const double first = line_angle(px1, py1, px2, py2, mode);
    const double second = line_angle(px3, py3, px4, py4, mode);
    if (is_missing(first) || is_missing(second)) return NANUM;
    const double pi = pi_value();
    double turn = second - first;
    if (mode != 0) {
        if (turn < 0.0) turn += 2.0 * pi;  // both in [0, 2 pi): one shift suffices
    } else {
        if (turn <= -pi / 2.0) turn += pi;  // both in (-pi/2, pi/2]
        if (turn > pi / 2.0) turn -= pi;
    }
    return to_unit(turn, unit);
}

// Placeholders: the host evaluates kernel densities itself; status is not written.
ZEMATH_API double ksdensity(int, int, double, int*) noexcept {
    return NANUM;
}
ZEMATH_API double ks2density(double, double, double, double, double, double) noexcept {
    return NANUM;
}

// ---- the prefixed family -------------------------------------------------------------

// The C runtime's Bessel functions, refused where the phase of x is lost.
ZEMATH_API double zemath_bessel_j0(double x) noexcept {
    if (!usable({x}) || std::fabs(x) > kRuntimeBesselLimit) return NANUM;
    return ::j0(x);
}
ZEMATH_API double zemath_bessel_j1(double x) noexcept {
    if (!usable({x}) || std::fabs(x) > kRuntimeBesselLimit) return NANUM;
    return ::j1(x);
}
ZEMATH_API double zemath_bessel_y0(double x) noexcept {
    if (!usable({x}) || x <= 0.0 || x > kRuntimeBesselLimit) return NANUM;
    const double v = ::y0(x);
    return std::isfinite(v) ? v : NANUM;
}
ZEMATH_API double zemath_bessel_y1(double x) noexcept {
    if (!usable({x}) || x <= 0.0 || x > kRuntimeBesselLimit) return NANUM;
    const double v = ::y1(x);
    return std::isfinite(v) ? v : NANUM;
}

// I_a(x) + (2/pi) sin(a pi) K_a(x) for negative nu, as the library's own routine
// defines the negative orders; the overflow limit of the unscaled function. The checks
// are spelled out here, where the rules of the prefixed function are stated.
ZEMATH_API double zemath_bessel_i_nu(double x, int nu) noexcept {
    if (!usable({x}) || nu == 0 || nu > 3 || nu < -3 || x < 0.0) return NANUM;
    if (x >= kINuOverflow) return NANUM;
    if (x == 0.0) return nu > 0 ? 0.0 : NANUM;
    return own::bessel_i_nu(x, nu);
}

ZEMATH_API double zemath_bessel_i0_scaled(double x) noexcept {
    return own::bessel_i0_scaled(x);
}
ZEMATH_API double zemath_bessel_i1(double x) noexcept {
    return own::bessel_i1(x);
}
ZEMATH_API double zemath_bessel_i1_scaled(double x) noexcept {
    return own::bessel_i1_scaled(x);
}
ZEMATH_API double zemath_bessel_i_nu_scaled(double x, int nu) noexcept {
    return own::bessel_i_nu_scaled(x, nu);
}
ZEMATH_API double zemath_bessel_k0(double x) noexcept {
    return own::bessel_k0(x);
}
ZEMATH_API double zemath_bessel_k0_scaled(double x) noexcept {
    return own::bessel_k0_scaled(x);
}
ZEMATH_API double zemath_bessel_k1(double x) noexcept {
    return own::bessel_k1(x);
}
ZEMATH_API double zemath_bessel_k1_scaled(double x) noexcept {
    return own::bessel_k1_scaled(x);
}
ZEMATH_API double zemath_bessel_k_nu(double x, int nu) noexcept {
    return own::bessel_k_nu(x, nu);
}
ZEMATH_API double zemath_bessel_k_nu_scaled(double x, int nu) noexcept {
    return own::bessel_k_nu_scaled(x, nu);
}
ZEMATH_API double zemath_cos_integral(double x) noexcept {
    return own::cos_integral(x);
}
ZEMATH_API double zemath_cumul_normal(double x) noexcept {
    return own::normal_lower(x);
}
ZEMATH_API double zemath_cumul_normal_complem(double x) noexcept {
    return own::normal_upper(x);
}
ZEMATH_API double zemath_elliptic_integral_rc(double x, double y) noexcept {
    return own::carlson_rc(x, y);
}
ZEMATH_API double zemath_elliptic_integral_rd(double x, double y, double z) noexcept {
    return own::carlson_rd(x, y, z);
}
ZEMATH_API double zemath_elliptic_integral_rf(double x, double y, double z) noexcept {
    return own::carlson_rf(x, y, z);
}
ZEMATH_API double zemath_elliptic_integral_rj(double x, double y, double z, double r) noexcept {
    return own::carlson_rj(x, y, z, r);
}
ZEMATH_API double zemath_erf(double x) noexcept {
    return own::erf(x);
}
ZEMATH_API double zemath_erfc(double x) noexcept {
    return own::erfc(x);
}
ZEMATH_API double zemath_exp_integral(double x) noexcept {
    return own::exp_integral_e1(x);
}
ZEMATH_API double zemath_fresnel_c(double x) noexcept {
    return own::fresnel_c(x);
}
ZEMATH_API double zemath_fresnel_s(double x) noexcept {
    return own::fresnel_s(x);
}
ZEMATH_API double zemath_gamma(double x) noexcept {
    return own::gamma(x);
}
ZEMATH_API double zemath_incomplete_gamma(double a, double x) noexcept {
    return own::incomplete_gamma_lower(a, x);
}
ZEMATH_API double zemath_jacobian_theta(int k, double x, double q) noexcept {
    return own::jacobian_theta(k, x, q);
}
ZEMATH_API double zemath_kelvin_bei(double x) noexcept {
    return own::kelvin_bei(x);
}
ZEMATH_API double zemath_kelvin_ber(double x) noexcept {
    return own::kelvin_ber(x);
}
ZEMATH_API double zemath_kelvin_kei(double x) noexcept {
    return own::kelvin_kei(x);
}
ZEMATH_API double zemath_kelvin_ker(double x) noexcept {
    return own::kelvin_ker(x);
}
ZEMATH_API double zemath_log_gamma(double x) noexcept {
    return own::log_gamma(x);
}
ZEMATH_API double zemath_real_polygamma(double x, int k) noexcept {
    return own::polygamma(x, k);
}
ZEMATH_API double zemath_sin_integral(double x) noexcept {
    return own::sin_integral(x);
}

}  // extern "C"
