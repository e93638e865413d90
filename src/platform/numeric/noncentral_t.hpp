// The lower tail of the non-central t law in double arithmetic: the fast path of the
// non-central t probability (the routine falls back on its other evaluations where this
// one declines).
#pragma once

namespace zemath::numeric {

// The largest |delta| taken (see noncentral_t.cpp for why).
inline constexpr double kNoncentralTDoubleDeltaMax = 40.0;

// P(T <= t) for T non-central t with 1 <= df <= 2 kBetaDoubleShapeMax degrees of freedom and
// |delta| <= kNoncentralTDoubleDeltaMax, t finite. NaN where the evaluation declines:
// parameters outside that range, t^2 outside the normal range, a series whose shapes pass
// the double incomplete beta's limit or whose starting terms it does not give, a series
// that cancels (t < 0 < delta with the terms' magnitudes above 4 times the result), a
// result below 1e-280. Where it declines for the cancellation alone and `bound` is given,
// *bound receives an upper bound of P from the cancelled sum (its value plus 1e-12 of the
// terms' magnitudes, far above its rounding), so that a caller can tell a tail below its
// own threshold without another evaluation; elsewhere *bound is left alone.
double noncentral_t_lower_double(double t, double df, double delta, double* bound = nullptr);

}  // namespace zemath::numeric
