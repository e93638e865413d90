// s17aec J0, s17afc J1, s17acc Y0, s17adc Y1, s18aec I0, s18afc I1, s18acc K0,
// s18adc K1, and the exponentially scaled s18cec e^-|x| I0, s18cfc e^-|x| I1,
// s18ccc e^x K0, s18cdc e^x K1.
//
// Method: Boost.Math's minimax rational approximations and Hankel asymptotics (J, Y,
// I, K of orders 0 and 1: a few ulps; J and Y with absolute accuracy near their zeros).
// The scaled forms multiply by the exponential up to x = 700, where the unscaled value
// is still representable, and use the large-argument expansion beyond.
//
// Failures (the value returned is 0 or the limit): J and Y for |x| > 1e16, where the
// phase of the oscillation is no longer determined by x (NE_REAL_ARG_GT); Y and K for
// x <= 0 (NE_REAL_ARG_LE), Y1 and K1 for x so small that 1/x overflows
// (NE_REAL_ARG_TOO_SMALL); I0 and I1 for |x| > 713.98 (overflow, NE_REAL_ARG_GT); the
// scaled K for x <= 0; NaN everywhere (NE_REAL). K0 and K1 underflow to 0 without
// failure; the scaled I have no failures but NaN.
#include <cmath>
#include <limits>

#include "platform/nag/s_policy.hpp"  // first: configures Boost
#include <boost/math/special_functions/bessel.hpp>

#include "platform/nag/s.hpp"
#include "platform/nag/s_bessel_common.hpp"

namespace zemath::nag {

namespace {

using QuietPolicy = detail::SpecialPolicy;
constexpr double kPhaseLimit = 1e16;
constexpr double kIOverflow = 713.98;
constexpr double kTinyForReciprocal = 1.0 / std::numeric_limits<double>::max();

double fail_with(NagError* fail, int code, double value = 0.0) {
    fail->set(code);
    return value;
}

}  // namespace

double s17aec(double x, NagError* fail) {
    fail->set(NE_NOERROR);
    if (std::isnan(x)) return fail_with(fail, NE_REAL);
    if (std::fabs(x) > kPhaseLimit) return fail_with(fail, NE_REAL_ARG_GT);
    // Near 0 the rational approximation rounds to 1 + ulp (above the bound |J0| <= 1) for
    // every |x| below about 1.6e-8; the Taylor series 1 - x^2/4 + x^4/64 is exact to far
    // below an ulp up to |x| = 2^-13 (next term x^6/2304 < 2e-27).
    if (std::fabs(x) < 0x1p-13) {
        const double q = 0.25 * x * x;
        return 1.0 - q * (1.0 - 0.25 * q);
    }
    return boost::math::cyl_bessel_j(0, x, QuietPolicy());
}

double s17afc(double x, NagError* fail) {
    fail->set(NE_NOERROR);
    if (std::isnan(x)) return fail_with(fail, NE_REAL);
    if (std::fabs(x) > kPhaseLimit) return fail_with(fail, NE_REAL_ARG_GT);
    return boost::math::cyl_bessel_j(1, x, QuietPolicy());
}

double s17acc(double x, NagError* fail) {
    fail->set(NE_NOERROR);
    if (std::isnan(x)) return fail_with(fail, NE_REAL);
    if (x <= 0.0) return fail_with(fail, NE_REAL_ARG_LE);
    if (x > kPhaseLimit) return fail_with(fail, NE_REAL_ARG_GT);
    return boost::math::cyl_neumann(0, x, QuietPolicy());
}

double s17adc(double x, NagError* fail) {
    fail->set(NE_NOERROR);
    if (std::isnan(x)) return fail_with(fail, NE_REAL);
    if (x <= 0.0) return fail_with(fail, NE_REAL_ARG_LE);
    if (x < kTinyForReciprocal) return fail_with(fail, NE_REAL_ARG_TOO_SMALL);
    if (x > kPhaseLimit) return fail_with(fail, NE_REAL_ARG_GT);
    return boost::math::cyl_neumann(1, x, QuietPolicy());
}

double s18acc(double x, NagError* fail) {
    fail->set(NE_NOERROR);
    if (std::isnan(x)) return fail_with(fail, NE_REAL);
    if (x <= 0.0) return fail_with(fail, NE_REAL_ARG_LE);
    if (x > kIOverflow) return 0.0;  // underflows; not a failure
    return boost::math::cyl_bessel_k(0, x, QuietPolicy());
}

double s18adc(double x, NagError* fail) {
    fail->set(NE_NOERROR);
    if (std::isnan(x)) return fail_with(fail, NE_REAL);
    if (x <= 0.0) return fail_with(fail, NE_REAL_ARG_LE);
    if (x < kTinyForReciprocal) return fail_with(fail, NE_REAL_ARG_TOO_SMALL);
    if (x > kIOverflow) return 0.0;
    return boost::math::cyl_bessel_k(1, x, QuietPolicy());
}

double s18aec(double x, NagError* fail) {
    fail->set(NE_NOERROR);
    if (std::isnan(x)) return fail_with(fail, NE_REAL);
    if (std::fabs(x) > kIOverflow) return fail_with(fail, NE_REAL_ARG_GT);
    return boost::math::cyl_bessel_i(0, std::fabs(x), QuietPolicy());
}

double s18afc(double x, NagError* fail) {
    fail->set(NE_NOERROR);
    if (std::isnan(x)) return fail_with(fail, NE_REAL);
    if (std::fabs(x) > kIOverflow) return fail_with(fail, NE_REAL_ARG_GT);
    const double v = boost::math::cyl_bessel_i(1, std::fabs(x), QuietPolicy());
    return x < 0.0 ? -v : v;
}

double s18ccc(double x, NagError* fail) {
    fail->set(NE_NOERROR);
    if (std::isnan(x)) return fail_with(fail, NE_REAL);
    if (x <= 0.0) return fail_with(fail, NE_REAL_ARG_LE);
    if (x > detail::kScaledSwitch) return detail::scaled_k_large(0.0, x);
    return std::exp(x) * boost::math::cyl_bessel_k(0, x, QuietPolicy());
}

double s18cdc(double x, NagError* fail) {
    fail->set(NE_NOERROR);
    if (std::isnan(x)) return fail_with(fail, NE_REAL);
    if (x <= 0.0) return fail_with(fail, NE_REAL_ARG_LE);
    if (x < kTinyForReciprocal) return fail_with(fail, NE_REAL_ARG_TOO_SMALL);
    if (x > detail::kScaledSwitch) return detail::scaled_k_large(1.0, x);
    return std::exp(x) * boost::math::cyl_bessel_k(1, x, QuietPolicy());
}

double s18cec(double x, NagError* fail) {
    fail->set(NE_NOERROR);
    if (std::isnan(x)) return fail_with(fail, NE_REAL);
    const double y = std::fabs(x);
    if (y > detail::kScaledSwitch) return detail::scaled_i_large(0.0, y);
    return std::exp(-y) * boost::math::cyl_bessel_i(0, y, QuietPolicy());
}

double s18cfc(double x, NagError* fail) {
    fail->set(NE_NOERROR);
    if (std::isnan(x)) return fail_with(fail, NE_REAL);
    const double y = std::fabs(x);
    const double v = y > detail::kScaledSwitch
                         ? detail::scaled_i_large(1.0, y)
                         : std::exp(-y) * boost::math::cyl_bessel_i(1, y, QuietPolicy());
    return x < 0.0 ? -v : v;
}

}  // namespace zemath::nag
