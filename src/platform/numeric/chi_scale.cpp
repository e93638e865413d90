// Density of the logarithm of the chi scale S = sqrt(chi2_v / v).
// Method: with a = v/2 and u = a s^2 = a e^(2y), the change of variables gives
//     f(y) = 2 u^a e^-u / Gamma(a) = exp(ln 2 + ln(a / (2 pi)) / 2 - mu(a) - a E(2y)),
//     E(z) = e^z - 1 - z  (the deviance (u - a) - a ln(u/a) = a E(2y), ln(u/a) = 2y exact),
// mu(a) = ln Gamma(a + 1) - ((a + 1/2) ln a - a + ln(2 pi)/2) Stirling's error term
// (stirling.hpp). E(z) is taken from its series for |z| < 1/2 (relative accuracy where
// expm1(z) - z would cancel) and as expm1(z) - z beyond, so that the exponent a E(2y) is
// within a few ulps relative: for large v the density's width is 1/sqrt(2v), and an
// absolute error of the exponent is a relative error of the density. Accuracy: the
// rounding of the exponent, a few ulps of its terms (relative error about 2e-16 |ln f|
// plus 2e-16 ln v), plus mu's absolute 1e-15 (v below 30, non-integer v/2) or 3e-17
// (above); measured within 2e-14 down to densities of 1e-300 against mpmath. Where it
// weights a quadrature, the tails that carry that much have no weight in the sum.
// Reference: Abramowitz and Stegun 26.4.1; Loader (2000) (the deviance form).
#include "platform/numeric/chi_scale.hpp"

#include <cmath>
#include <numbers>

#include "platform/numeric/stirling.hpp"

namespace zemath::numeric {

namespace {

// 1/n!, n = 2..19.
constexpr double kInverseFactorial[] = {1.0 / 2,
                                        1.0 / 6,
                                        1.0 / 24,
                                        1.0 / 120,
                                        1.0 / 720,
                                        1.0 / 5040,
                                        1.0 / 40320,
                                        1.0 / 362880,
                                        1.0 / 3628800,
                                        1.0 / 39916800,
                                        1.0 / 479001600,
                                        1.0 / 6227020800.0,
                                        1.0 / 87178291200.0,
                                        1.0 / 1307674368000.0,
                                        1.0 / 20922789888000.0,
                                        1.0 / 355687428096000.0,
                                        1.0 / 6402373705728000.0,
                                        1.0 / 121645100408832000.0};

// e^z - 1 - z.
double exp_deviance(double z) {
    if (std::fabs(z) >= 0.5) return std::expm1(z) - z;
    // z^2/2! + z^3/3! + ...: 18 terms leave below 2^-60 of the sum for |z| < 1/2. Horner's
    // rule over the coefficients 1/n! (each within half an ulp): no division at a node of
    // the quadratures that weight by this density (a division per term cost most of their
    // time at large v, where every node lies in this range).
    double sum = kInverseFactorial[17];
    for (int k = 16; k >= 0; --k) sum = sum * z + kInverseFactorial[k];
    return sum * z * z;
}

}  // namespace

ChiScaleLogDensity::ChiScaleLogDensity(double v)
    : half_v_(0.5 * v),
      log_constant_(std::numbers::ln2 + 0.5 * std::log(half_v_ / (2.0 * std::numbers::pi)) -
                    stirling_error(half_v_)) {}

double ChiScaleLogDensity::operator()(double y) const {
    if (!std::isfinite(y)) return 0.0;
    return std::exp(log_constant_ - half_v_ * exp_deviance(2.0 * y));
}

double ChiScaleLogDensity::operator()(double y, double s) const {
    if (!std::isfinite(y)) return 0.0;
    const double z = 2.0 * y;
    const double deviance = std::fabs(z) >= 0.5 ? (s * s - 1.0) - z : exp_deviance(z);
    return std::exp(log_constant_ - half_v_ * deviance);
}

double chi_scale_log_density(double y, double v) {
    return ChiScaleLogDensity(v)(y);
}

}  // namespace zemath::numeric
