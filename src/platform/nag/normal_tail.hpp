// Standard normal tails and density for the distribution substitutes, accurate to a few
// ulps far into the tails. Phi(-z) = erfc(z/sqrt 2)/2 loses about z^2 ulps when z/sqrt 2
// is rounded before erfc sees it (1e-13 at z = 37); the rounding error of the product is
// recovered exactly with fma and fed back through erfc's derivative. The density's
// exponent s^2/2 is split the same way.
#pragma once

#include <cmath>
#include <numbers>

namespace zemath::nag::detail {

inline constexpr double kRsqrt2Hi = 0.7071067811865476;       // 1/sqrt(2), rounded
inline constexpr double kRsqrt2Lo = -4.8336466567264565e-17;  // 1/sqrt(2) - kRsqrt2Hi
inline constexpr double kTwoOverSqrtPi = 1.1283791670955126;   // 2/sqrt(pi)
inline constexpr double kInvSqrtTwoPi = 0.3989422804014327;    // 1/sqrt(2 pi)

// Phi(-(z + z_low)) = P(Z > z + z_low), z_low a correction far below an ulp of z.
inline double normal_upper(double z, double z_low = 0.0) {
    if (std::isinf(z)) return z > 0.0 ? 0.0 : 1.0;  // the correction below would be inf - inf
    const double t = z * kRsqrt2Hi;
    const double tail = std::erfc(t);
    constexpr double kExactEnough = 2.0;  // below this the argument's rounding costs < 4 ulps
    if (std::fabs(z) < kExactEnough && z_low == 0.0) return 0.5 * tail;
    const double t_error = std::fma(z, kRsqrt2Hi, -t) + z * kRsqrt2Lo + z_low * kRsqrt2Hi;
    return 0.5 * (tail - kTwoOverSqrtPi * std::exp(-t * t) * t_error);
}

// Phi(z) = P(Z <= z).
inline double normal_lower(double z) { return normal_upper(-z); }

// phi(s) = e^(-s^2/2) / sqrt(2 pi) with s^2 carried to twice the precision.
inline double normal_density(double s) {
    const double square = s * s;
    const double square_error = std::fma(s, s, -square);
    return kInvSqrtTwoPi * std::exp(-0.5 * square) * (1.0 - 0.5 * square_error);
}

// phi(c) / Phi(c), the inverse Mills ratio; where Phi(c) is tiny from the continued
// fraction Phi(-t)/phi(t) = 1/(t+ 1/(t+ 2/(t+ 3/(t+ ...)))), t = -c.
inline double inverse_mills(double c) {
    constexpr double kFractionBelow = -8.0;
    if (c > kFractionBelow) return normal_density(c) / normal_lower(c);
    const double t = -c;
    double fraction = t;
    for (int k = 40; k >= 1; --k) fraction = t + k / fraction;
    return fraction;
}

}  // namespace zemath::nag::detail
