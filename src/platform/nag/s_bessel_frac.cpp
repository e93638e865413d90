// s18eec I_{nu/4}(x), s18ecc e^-x I_{nu/4}(x), s18efc K_{nu/4}(x), s18edc e^x K_{nu/4}(x):
// the modified Bessel functions of the orders 1/4, 1/2, 3/4 and their negatives, the
// integer argument nu standing for the order nu/4.
//
// Method: Boost.Math's cyl_bessel_i / cyl_bessel_k for the positive order mu = |nu|/4
// (Temme's method and continued fractions, a few ulps); negative orders of I from
//     I_{-mu}(x) = I_mu(x) + (2/pi) sin(mu pi) K_mu(x)
// (both terms positive, no cancellation); K_{-mu} = K_mu, and K_{1/2} in closed form,
// sqrt(pi / (2x)) e^-x. The scaled forms multiply by
// the exponential up to x = 700 and use the large-argument expansions beyond, so they
// stay exact where I overflows and K underflows.
//
// Failures (value 0): nu = 0 or |nu| > 3 (NE_INT); x < 0 for I with nu > 0, x <= 0 for
// I with nu < 0 and for K, NaN (NE_REAL); unscaled I beyond x = 700.9217937, where it
// overflows (NE_REAL_ARG_GT). I_{nu/4}(0) = 0 for nu > 0. The unscaled K underflows to
// 0 without failure. Large arguments lose no precision here: the scaled forms accept
// every finite x.
// Reference: D. E. Amos (1986), ACM TOMS 12, 265-273 (algorithm 644) for the order
// conventions and the overflow limit.
#include <cmath>
#include <numbers>

#include "platform/nag/s_policy.hpp"  // first: configures Boost
#include <boost/math/special_functions/bessel.hpp>

#include "platform/nag/s.hpp"
#include "platform/nag/s_bessel_common.hpp"

namespace zemath::nag {

namespace {

using QuietPolicy = detail::SpecialPolicy;
constexpr double kIOverflow = 700.9217937;

bool order_ok(int nu) {
    return nu != 0 && nu >= -3 && nu <= 3;
}

// sin(mu pi) for mu = 1/4, 1/2, 3/4.
double sin_order_pi(int m) {
    constexpr double kHalfSqrt2 = 0.70710678118654752440;
    return m == 2 ? 1.0 : kHalfSqrt2;
}

// I or its scaled form for x > 0; scaled multiplies by e^-x.
double bessel_i_quarter(double x, int nu, bool scaled) {
    const int m = nu < 0 ? -nu : nu;
    const double mu = m / 4.0;
    double i_mu = 0.0;
    if (scaled && x > detail::kScaledSwitch) {
        i_mu = detail::scaled_i_large(mu, x);
    } else {
        i_mu = boost::math::cyl_bessel_i(mu, x, QuietPolicy());
        if (scaled) i_mu *= std::exp(-x);
    }
    if (nu > 0) return i_mu;
    // e^-x K_mu(x) is below e^-2x of the I term beyond the switch: negligible.
    double k_mu = 0.0;
    if (!scaled || x <= detail::kScaledSwitch) {
        k_mu = boost::math::cyl_bessel_k(mu, x, QuietPolicy());
        if (scaled) k_mu *= std::exp(-x);
    }
    return i_mu + (2.0 / std::numbers::pi) * sin_order_pi(m) * k_mu;
}

double bessel_i_checked(double x, int nu, bool scaled, NagError* fail) {
    fail->set(NE_NOERROR);
    if (!order_ok(nu)) return fail->set(NE_INT), 0.0;
    if (std::isnan(x) || x < 0.0 || (nu < 0 && x == 0.0)) return fail->set(NE_REAL), 0.0;
    if (x == 0.0) return 0.0;
    if (!scaled && x > kIOverflow) return fail->set(NE_REAL_ARG_GT), 0.0;
    return bessel_i_quarter(x, nu, scaled);
}

double bessel_k_checked(double x, int nu, bool scaled, NagError* fail) {
    fail->set(NE_NOERROR);
    if (!order_ok(nu)) return fail->set(NE_INT), 0.0;
    if (std::isnan(x) || x <= 0.0) return fail->set(NE_REAL), 0.0;
    const double mu = (nu < 0 ? -nu : nu) / 4.0;
    if (mu == 0.5) {
        // K_{1/2}(x) = sqrt(pi / (2x)) e^-x exactly (DLMF 10.39.2): within 2 ulps scaled,
        // 3 unscaled (underflowing with e^-x).
        const double root = std::sqrt(std::numbers::pi / (2.0 * x));
        return scaled ? root : root * std::exp(-x);
    }
    if (scaled) {
        if (x > detail::kScaledSwitch) return detail::scaled_k_large(mu, x);
        return std::exp(x) * boost::math::cyl_bessel_k(mu, x, QuietPolicy());
    }
    if (x > 2.0 * kIOverflow) return 0.0;  // far below the smallest subnormal
    return boost::math::cyl_bessel_k(mu, x, QuietPolicy());
}

}  // namespace

double s18eec(double x, int nu, NagError* fail) {
    return bessel_i_checked(x, nu, false, fail);
}
double s18ecc(double x, int nu, NagError* fail) {
    return bessel_i_checked(x, nu, true, fail);
}
double s18efc(double x, int nu, NagError* fail) {
    return bessel_k_checked(x, nu, false, fail);
}
double s18edc(double x, int nu, NagError* fail) {
    return bessel_k_checked(x, nu, true, fail);
}

}  // namespace zemath::nag
