// The lower tail of the non-central beta law (and so of the non-central F law) in double
// arithmetic: the fast path of the non-central beta and F probabilities (the routines fall
// back on their other evaluations where this one declines).
#pragma once

#include "platform/numeric/double_double.hpp"

namespace zemath::numeric {

// The largest non-centrality taken (see noncentral_beta.cpp for why).
inline constexpr double kNoncentralBetaDoubleLambdaMax = 1600.0;

// P(X <= x) for X non-central beta with shapes a, b > 0 and non-centrality
// 0 <= lambda <= kNoncentralBetaDoubleLambdaMax, at x = x.hi + x.lo with y = 1 - x given
// to full relative accuracy as y.hi + y.lo (x.hi, y.hi normal). NaN where the evaluation
// declines: parameters outside that range, a mixture whose shapes pass the double
// incomplete beta's limit, a starting term the double incomplete beta does not give, a
// result below 1e-280.
double noncentral_beta_lower_double(double a, double b, double lambda, TwoPart x, TwoPart y);

}  // namespace zemath::numeric
