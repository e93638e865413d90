// The library's rule for carrying more than double precision, written once:
//   - long double (`Extended`) where a whole formula is evaluated through library or
//     Boost functions that have an extended-precision form: the central continuous laws
//     and the in-house exponential, Cauchy, Laplace, log-normal and Weibull functions,
//     whose transformed arguments (x/sqrt 2, t^2/(df + t^2), (ln x - mu)/sigma, ...) carry
//     relative condition numbers up to x^2 or the degrees of freedom;
//   - two-part doubles (double_double.hpp) where a kernel of its own needs a few terms to
//     twice the precision inside double-only code (deviances of the discrete laws, the
//     corrected argument of the double normal tail, the bivariate normal's offsets):
//     fma-exact and as fast as double.
// Results always leave as double, through narrow().
#pragma once

#include <limits>

namespace zemath::numeric {

using Extended = long double;

// The extended type must have at least a 64-bit significand (x87 extended or binary128):
// where long double is double the far tails would silently lose up to 1e-11, so such a
// platform is refused at build time rather than served less accurately.
static_assert(std::numeric_limits<Extended>::digits >= 64,
              "zeMath needs a long double with at least 64 significand bits");

// Extended -> double without the undefined conversion of out-of-range values: beyond the
// double range the result is the signed infinity.
inline double narrow(Extended v) {
    constexpr Extended kMax = std::numeric_limits<double>::max();
    if (v > kMax) return std::numeric_limits<double>::infinity();
    if (v < -kMax) return -std::numeric_limits<double>::infinity();
    return static_cast<double>(v);
}

// ln of the largest finite Extended and of the smallest positive (subnormal) one, from the
// type's exponent range (2^max_exponent and 2^(min_exponent - digits), the first rounded
// down by 2^-digits relative, which moves its logarithm by less than 1e-19): the widest
// bracket a solver in log variables may search.
inline constexpr Extended kLn2 = 0.693147180559945309417232121458176568L;
inline constexpr Extended kLogExtendedMax = std::numeric_limits<Extended>::max_exponent * kLn2;
inline constexpr Extended kLogExtendedMin =
    (std::numeric_limits<Extended>::min_exponent - std::numeric_limits<Extended>::digits) * kLn2;

}  // namespace zemath::numeric
