// The regularised incomplete beta function I_x(a, b) in double arithmetic, for moderate
// shapes: the fast path of the beta, Student's t and F laws (the routines fall back on the
// extended-precision evaluation where this one declines).
#pragma once

#include <optional>

#include "platform/numeric/double_double.hpp"

namespace zemath::numeric {

struct BetaTailsDouble {
    double lower;  // I_x(a, b); NaN where the double evaluation cannot promise its bound
    double upper;  // 1 - I_x(a, b); likewise
    double front;  // x^a y^b / B(a, b) = x y dI_x/dx (the deviates' Newton slope)
};

// The largest shape of the continued-fraction path with the classical prefactor (see
// incomplete_beta.cpp for why); the deviates' double paths stop there.
inline constexpr double kBetaDoubleShapeMax = 5000.0;
// The largest shape the double evaluation takes at all: above kBetaDoubleShapeMax, Temme's
// uniform expansion where both shapes are at least 250 (near enough to the mean), the fraction with
// the two-part deviance beside a smaller shape (F up to df = 1e10, binomial counts up to 2^31).
inline constexpr double kBetaDoubleLargeShapeMax = 5e9;
// The largest other shape beside a shape of exactly 1/2 (Student's t up to df = 2e6), where the
// prefactor needs no large cancelling terms (see incomplete_beta.cpp).
inline constexpr double kBetaDoubleHalfShapeMax = 1e6;

// I_x(a, b) and its complement at x = x.hi + x.lo, with y = 1 - x given as well to full
// relative accuracy (y.hi + y.lo), for 0 < a, b <= kBetaDoubleLargeShapeMax (one shape 1/2
// only beside one up to kBetaDoubleHalfShapeMax) and x.hi, y.hi normal. Empty where the double
// evaluation does not apply: shapes out of range, a prefactor outside the normal range, the
// fraction past its cap (a few hundred terms above kBetaDoubleShapeMax). A side is NaN where the
// direct side is above 0.9 and the argument too far from the switch point for the other side's own
// fraction. one_side: the caller takes one side only, so where the direct side lies below the
// normal range but its bound puts the other at 1 exactly, that one is given (the direct side NaN)
// instead of declining.
std::optional<BetaTailsDouble> incomplete_beta_double(double a, double b, TwoPart x, TwoPart y,
                                                      bool one_side = false);
// The same from the build for any processor, where incomplete_beta_double runs the fused
// multiply-add build on processors that have one: for the tests, which check both.
std::optional<BetaTailsDouble> incomplete_beta_double_portable(double a, double b, TwoPart x,
                                                               TwoPart y, bool one_side = false);

// Below this second shape the lower side is b times a function of a and x alone, to double
// precision (see incomplete_beta.cpp): the logarithmic form below takes it there.
inline constexpr double kBetaLimitShape = 1e-20;

// ln I_x(a, b) in two parts, for the lower side where the continued fraction gives it directly
// (x below the switch point (a + 1)/(a + b + 2)), at any size: the prefactor's exponent is kept
// apart from the fraction, so values far below the normal range are given as well. Its error
// is absolute, the relative bound of incomplete_beta_double (a few units of 1e-15; beyond
// e^-737 up to 3e-18 times a shape above 6700, see incomplete_beta.cpp). Shapes as for
// incomplete_beta_double; b below kBetaLimitShape (down to the smallest subnormal) by the
// small-shape limit. Empty elsewhere: x past the switch point, the fraction past its cap, a
// below 1e-100.
std::optional<TwoPart> incomplete_beta_log_lower(double a, double b, TwoPart x, TwoPart y);

// P(|T| >= |t|) for Student's t with df degrees of freedom, 1000 <= df <= 2e6, 0 < |t| <
// 1e150: I_v(df/2, 1/2) at v = df/(df + t^2) by the expansion incomplete_beta_double takes
// there, with ln v = -ln(1 + t^2/df) formed from t directly (no quotient for v). Within about
// 1e-15 relative. Empty where the value leaves the normal range or the expansion declines.
std::optional<double> student_t_beyond(double t, double df);

// Student's t with df degrees of freedom, 1 <= df <= 2e6, 0 < |t| < 1e150: lower = P(|T| <= |t|)
// and upper = P(|T| >= |t|) from student_t_beyond where df >= 1000 and that side is at most
// 0.9, else from incomplete_beta_double at a = 1/2, b = df/2 with x = t^2/(df + t^2) and 1 - x
// formed in two parts; a side is NaN where neither gives it (front NaN from the first).
BetaTailsDouble student_t_two_sided_double(double t, double df);
// The same from the build for any processor (see incomplete_beta_double_portable).
BetaTailsDouble student_t_two_sided_double_portable(double t, double df);

}  // namespace zemath::numeric
