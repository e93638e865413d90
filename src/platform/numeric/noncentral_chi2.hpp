// The lower tail of the non-central chi-square law in double arithmetic: the fast path of
// the non-central chi-square probability (the routine falls back on its other evaluations
// where this one declines).
#pragma once

namespace zemath::numeric {

// The largest non-centrality taken (see noncentral_chi2.cpp for why).
inline constexpr double kNoncentralChi2DoubleLambdaMax = 2000.0;

// P(X <= x) for X non-central chi-square with df > 0 degrees of freedom and
// non-centrality 0 <= lambda <= kNoncentralChi2DoubleLambdaMax, x/2 normal and finite.
// NaN where the evaluation declines: parameters outside that range, a mixture whose
// shapes pass the double incomplete gamma's limit, a starting term outside the normal range.
double noncentral_chi2_lower_double(double x, double df, double lambda);

// Non-centralities above kNoncentralChi2DoubleLambdaMax, up to the routine's limit.
inline constexpr double kNoncentralChi2StrideLambdaMax = 1e9;
inline constexpr double kNoncentralChi2StrideDfMax = 1e10;

// The same for kNoncentralChi2DoubleLambdaMax < lambda <= kNoncentralChi2StrideLambdaMax,
// 0 < df <= kNoncentralChi2StrideDfMax, x/2 normal and finite, by the mixture summed with a
// stride (see noncentral_chi2.cpp). NaN where it declines (outside that range, where
// the double incomplete gamma declines at a shape whose smaller tail might still matter, or
// where the summand is narrower than two indices at the lowest node the sum visits).
double noncentral_chi2_lower_stride(double x, double df, double lambda);

}  // namespace zemath::numeric
