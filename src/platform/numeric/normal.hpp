// The standard normal law's tails and density, accurate to a few ulps far into the tails;
// the one implementation behind the normal distribution routine, the bivariate normal,
// the non-central t, the studentized range and the in-house log-normal.
//
// Method. Phi(-z) = erfc(z/sqrt 2)/2 loses about z^2 ulps when z/sqrt 2 is rounded before
// erfc sees it (1e-13 at z = 37); the rounding error of the product (exact with fma, see
// double_double.hpp) and any low part the caller carries for z are fed back through erfc's
// derivative: erfc(t + e) = erfc(t) - 2/sqrt(pi) e^(-t^2) e, the next term being e^2 t
// times smaller (not formed where |z| < 2, or where the value exceeds 0.997, z < -2 sqrt 2:
// there it is below 0.07 of the value's ulp). The density's exponent s^2/2 is split the same way.
// Both tails are computed directly, never as 1 minus the other. Accuracy: a few ulps of the glibc
// erfc/erf, at any argument whose tail is a normal double. References: DLMF 7.2 (erfc), 7.10 (its
// derivative); Abramowitz and Stegun 26.2.
#pragma once

#include <cmath>

#include "platform/numeric/double_double.hpp"

namespace zemath::numeric {

inline constexpr double kRsqrt2Hi = 0.7071067811865476;       // 1/sqrt(2), rounded
inline constexpr double kRsqrt2Lo = -4.8336466567264565e-17;  // 1/sqrt(2) - kRsqrt2Hi
inline constexpr double kTwoOverSqrtPi = 1.1283791670955126;  // 2/sqrt(pi)
inline constexpr double kInvSqrtTwoPi = 0.3989422804014327;   // 1/sqrt(2 pi)

// t = (z + z_low)/sqrt 2 as a rounded t and the error t makes.
inline TwoPart scaled_by_rsqrt2(double z, double z_low) {
    const TwoPart t = two_product(z, kRsqrt2Hi);
    return {t.hi, t.lo + z * kRsqrt2Lo + z_low * kRsqrt2Hi};
}

// Phi(-(z + z_low)) = P(Z > z + z_low), z_low a correction far below an ulp of z.
inline double normal_upper(double z, double z_low = 0.0) {
    if (std::isinf(z)) return z > 0.0 ? 0.0 : 1.0;  // the correction below would be inf - inf
    constexpr double kExactEnough = 2.0;  // below this the argument's rounding costs < 4 ulps
    // (The rounded t alone there: its error, a product's, is not formed.)
    if (std::fabs(z) < kExactEnough && z_low == 0.0) return 0.5 * std::erfc(z * kRsqrt2Hi);
    // Below z = -2 sqrt 2 the value is above 0.997, and the correction below, (2/sqrt(pi))
    // e^(-t^2) t.lo with |t| >= 2 and |t.lo| within 1.6 ulp(t)/2 (the product's rounding and
    // the constant's), is at most 7.4e-18 (at t = -2, falling fast beyond): under 0.07 of the
    // value's ulp, so the rounded t alone serves there too (as does a z_low far below an ulp).
    constexpr double kNearOneBelow = -2.8284271247461903;  // -2 sqrt 2
    if (z < kNearOneBelow) return 0.5 * std::erfc(z * kRsqrt2Hi);
    const TwoPart t = scaled_by_rsqrt2(z, z_low);
    const double tail = std::erfc(t.hi);
    // The correction is about 2 t t.lo of the tail, t.lo within an ulp of t: at most a few
    // hundred ulps, so a few digits of it suffice. From t = sqrt 2 on, e^(-t^2) is taken from
    // the tail itself, e^(-t^2) = sqrt(pi) erfc(t) M(t), M = t + (1/2)/(t + 1/(t + (3/2)/(t +
    // 2/t))) (Laplace's continued fraction, four levels, as one quotient): its relative error
    // times 2 t^2 stays below 0.012 (mpmath, t in [sqrt 2, 27]), so the correction adds at most
    // 0.012 ulp, and the exponential is saved. Below t = -sqrt 2 the same with erfc(|t|) =
    // 2 - tail (exact; its absolute error, erfc's, costs the correction nothing visible).
    // (Beyond |t| = 27.5 the correction is 0 either way.)
    constexpr double kMillsFrom = 1.4142135623730951, kMillsTo = 27.5;
    const double u = std::fabs(t.hi);
    if (u >= kMillsFrom && u <= kMillsTo) {
        double num = u, den = 1.0;  // M = num / den, built from the innermost level out
        for (double k = 4.0; k >= 1.0; k -= 1.0) {
            const double next = u * num + 0.5 * k * den;
            den = num;
            num = next;
        }
        if (t.hi > 0.0) return 0.5 * tail * (1.0 - 2.0 * (num / den) * t.lo);
        return 0.5 * tail - (2.0 - tail) * (num / den) * t.lo;
    }
    return 0.5 * (tail - kTwoOverSqrtPi * std::exp(-t.hi * t.hi) * t.lo);
}

// Phi(z + z_low) = P(Z <= z + z_low).
inline double normal_lower(double z, double z_low = 0.0) {
    return normal_upper(-z, -z_low);
}

// P(|Z| <= |z + z_low|) = erf(|z + z_low|/sqrt 2), small near 0 and so not 1 - 2 tails.
inline double normal_within(double z, double z_low = 0.0) {
    if (std::isinf(z)) return 1.0;
    if (z < 0.0) {
        z = -z;
        z_low = -z_low;
    }
    const TwoPart t = scaled_by_rsqrt2(z, z_low);
    return std::erf(t.hi) + kTwoOverSqrtPi * std::exp(-t.hi * t.hi) * t.lo;
}

// phi(s) = e^(-s^2/2) / sqrt(2 pi) with s^2 carried to twice the precision.
inline double normal_density(double s) {
    const TwoPart square = two_product(s, s);
    return kInvSqrtTwoPi * std::exp(-0.5 * square.hi) * (1.0 - 0.5 * square.lo);
}

// phi(c) / Phi(c), the inverse Mills ratio; where Phi(c) is tiny from the continued
// fraction Phi(-t)/phi(t) = 1/(t+ 1/(t+ 2/(t+ 3/(t+ ...)))), t = -c.
inline double inverse_mills(double c) {
    // Below -8 the quotient of two tiny numbers loses digits; 40 terms of the fraction
    // reach double precision for t >= 8.
    constexpr double kFractionBelow = -8.0;
    if (c > kFractionBelow) return normal_density(c) / normal_lower(c);
    const double t = -c;
    double fraction = t;
    for (int k = 40; k >= 1; --k) fraction = t + k / fraction;
    return fraction;
}

}  // namespace zemath::numeric
