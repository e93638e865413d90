// The regularised incomplete gamma functions P(a, x) and Q(a, x) in double arithmetic, for
// the body of moderate shapes: the fast path of the gamma and chi-square laws (the
// routines fall back on the extended-precision evaluation where this one declines).
#pragma once

#include <optional>

#include "platform/numeric/double_double.hpp"

namespace zemath::numeric {

struct GammaTails {
    double lower;      // P(a, x)
    double upper;      // Q(a, x) = 1 - P(a, x)
    double x_density;  // x times the density x^(a-1) e^-x / Gamma(a)
};

// The largest shape the double evaluation takes everywhere (see incomplete_gamma.cpp for
// why); larger shapes, below kGammaTemmeShapeMax, only within |eta| <= 1/2 of x = a (x/a in
// 0.609 .. 1.522, where Temme's uniform expansion is used).
inline constexpr double kGammaDoubleShapeMax = 1000.0;
inline constexpr double kGammaTemmeShapeMax = 1e300;

// P and Q at a and x + x_low (x_low: the rounding error of a computed argument, below an
// ulp of x), for 0 < a <= kGammaDoubleShapeMax, and larger a as above; x normal and
// finite. Empty where the double evaluation does not promise its bound: the shape or x
// outside that range, a result (or the smaller tail) outside the normal range, a series or
// fraction past its cap.
std::optional<GammaTails> incomplete_gamma_double(double a, double x, double x_low);

// ln P(a, x) in two parts for 1 <= a < kGammaTemmeShapeMax and normal x < a (the lower tail
// below its mean), at any size: the prefactor's exponent (or Temme's e^-D) is kept apart, so
// values far below the normal range are given with the relative bound of
// incomplete_gamma_double as an absolute one on the logarithm. Empty where that evaluation
// does not apply: a above kGammaDoubleShapeMax outside |eta| <= 1/2, the series past its cap.
std::optional<TwoPart> incomplete_gamma_log_lower(double a, double x);

// The parts of the prefactor that depend on the shape alone, formed once for many calls at
// one shape (the Newton steps of a deviate).
struct GammaShape {
    double a;
    double reciprocal_gamma_minus_1;  // a < 1: 1/Gamma(1 + a) - 1, relatively accurate
    double scale;                     // a < 16: 1/Gamma(1 + a)
    double stirling;                  // a >= 16: Stirling's error term ln Gamma(a + 1) - ...
};
GammaShape gamma_shape(double a);

// The same at shape.a (from gamma_shape).
std::optional<GammaTails> incomplete_gamma_double(const GammaShape& shape, double x, double x_low);

// a phi(x/a) = (x - a) - a ln(x/a), the deviance of x from a, at x + x_low, in two parts.
TwoPart gamma_deviance(double a, double x, double x_low);

// Legendre's continued fraction for Q(a, x) over x^a e^-x / Gamma(a),
//     1/(x + 1 - a - 1(1 - a)/(x + 3 - a - 2(2 - a)/(...))),  x >= a,
// by the modified Lentz method, until a factor is within a quarter ulp of 1; after
// max_terms factors *converged is set to false and the last value returned. It needs about
// 9 sqrt(a) terms at x = a + 1 and fewer beyond.
double gamma_upper_fraction(double a, double x, int max_terms, bool* converged);

}  // namespace zemath::numeric
