// Density of the logarithm of the chi scale S = sqrt(chi2_v / v).
// Method: the change of variables s = e^y, s^2 = chi2_v / v applied to the chi-square
// density, through Boost's gamma_p_derivative (the standard gamma density, accurate to a
// few ulps in double). Reference: Abramowitz and Stegun 26.4.1.
#include "platform/numeric/chi_scale.hpp"

#include "platform/numeric/boost_policy.hpp"  // first: configures Boost

#include <boost/math/special_functions/gamma.hpp>

#include <cmath>

namespace zemath::numeric {

double chi_scale_log_density(double y, double v) {
    const double s = std::exp(y);
    const double s2 = s * s;
    if (s2 == 0.0 || !std::isfinite(s2)) return 0.0;
    const double half_v = 0.5 * v;
    return v * s2 * boost::math::gamma_p_derivative(half_v, half_v * s2, BoostPolicy());
}

}  // namespace zemath::numeric
