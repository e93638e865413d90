// The lower tail of the non-central beta law (and so of the non-central F law) in double
// arithmetic: the fast path of the non-central beta and F probabilities (the routines fall
// back on their other evaluations where this one declines).
#pragma once

#include "platform/numeric/double_double.hpp"
#include "platform/numeric/incomplete_beta.hpp"

namespace zemath::numeric {

// The largest non-centrality taken (see noncentral_beta.cpp for why).
inline constexpr double kNoncentralBetaDoubleLambdaMax = 1600.0;
// The largest shape taken: the mixture was measured within 1e-13 of mpmath up to shapes 1e9
// (at 4e9 its central terms' recurrence from the expansion's front erred up to 1.2e-10).
inline constexpr double kNoncentralBetaShapeMax = 1e9;
// Where a shape passes kNoncentralBetaLargeShape, the routines have no other accurate
// evaluation; the non-centralities taken there stay within the range measured
// (kNoncentralBetaLargeLambdaMax; at lambda = 1e4 a far lower tail came out 1e14 times too
// large).
inline constexpr double kNoncentralBetaLargeShape = 1e5;
inline constexpr double kNoncentralBetaLargeLambdaMax = kNoncentralBetaDoubleLambdaMax;

// P(X <= x) for X non-central beta with shapes a, b > 0 and non-centrality
// 0 <= lambda <= kNoncentralBetaDoubleLambdaMax, at x = x.hi + x.lo with y = 1 - x given
// to full relative accuracy as y.hi + y.lo (x.hi, y.hi normal). NaN where the evaluation
// declines: parameters outside that range, a mixture whose shapes pass the double
// incomplete beta's limit, a starting term the double incomplete beta does not give, a
// result below 1e-280.
double noncentral_beta_lower_double(double a, double b, double lambda, TwoPart x, TwoPart y);

// Non-centralities above kNoncentralBetaDoubleLambdaMax, up to the routines' limit.
inline constexpr double kNoncentralBetaStrideLambdaMax = 1e9;

// The same for kNoncentralBetaDoubleLambdaMax < lambda <= kNoncentralBetaStrideLambdaMax and
// shapes 0 < a, b <= kNoncentralBetaLargeShape, by the mixture summed with a stride (see
// noncentral_beta.cpp), at results of any size: subnormal ones rounded once, and 0 where the
// law rounds to it. NaN where it declines: outside that range, a summand narrower than two
// indices where it matters, no central term at a node (neither the double incomplete beta,
// its logarithmic form nor the expansion for b <= 1 beside a large shape applying), a walk
// past 200 nodes a side.
double noncentral_beta_lower_stride(double a, double b, double lambda, TwoPart x, TwoPart y);

}  // namespace zemath::numeric
