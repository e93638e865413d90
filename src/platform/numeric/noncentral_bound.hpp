// Chernoff bounds on the lower tails of the non-central chi-square and beta laws (and so of
// the F law): a proof, in a few floating-point operations, that a lower tail lies below
// half the smallest subnormal double, where the answer is exactly 0 and no sum need run.
#pragma once

#include "platform/numeric/extended.hpp"

namespace zemath::numeric {

// ln 2^-1075, half the smallest subnormal: a probability below e^kLogUnderflow rounds to 0.
inline constexpr double kLogUnderflow = -745.13321910194122;

// An upper bound on ln P(X <= x) for X non-central chi-square with df > 0 degrees of
// freedom and non-centrality lambda >= 0, at x > 0, its own rounding included (0 where the
// bound says nothing, x at or above the mean).
double noncentral_chi2_lower_log_bound(double x, double df, double lambda);

// The same for X non-central beta with shapes a, b > 0 and non-centrality lambda >= 0 at
// x, given as the ratio r = x / (1 - x) > 0 to a few units of 2^-64 relative (the F law's
// df1 f / df2).
double noncentral_beta_lower_log_bound(double a, double b, double lambda, Extended ratio);

// True where the bound proves that the lower tail rounds to 0.
inline bool lower_tail_underflows(double log_bound) {
    return log_bound < kLogUnderflow;
}

}  // namespace zemath::numeric
