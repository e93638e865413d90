// The lower tail of the non-central t law as an integral over the chi scale, for the
// parameters where its Poisson series is long or cancels (large non-centralities, large
// degrees of freedom, the far lower tail for t < 0 < delta).
#pragma once

namespace zemath::numeric {

// The largest degrees of freedom taken (see noncentral_t_scale.cpp for why).
inline constexpr double kNoncentralTScaleDfMax = 1e10;
// From |t| = kNoncentralTHugeT on, the law's tails are taken in closed form (t > 0: 1;
// t < 0: the scale law's cdf a power of |t|), for any delta and df.
inline constexpr double kNoncentralTHugeT = 1e50;
// From t = -kNoncentralTPowerFormT down, the lower tail is the scale law's cdf in its power
// form (a short series about it), integrated over the normal part alone.
inline constexpr double kNoncentralTPowerFormT = 1e10;

// P(T <= t) = E[Phi(t S - delta)], S = sqrt(chi2_df / df), for t and delta finite and
// 1 <= df <= kNoncentralTScaleDfMax, any result size (the integrand is positive). NaN for
// arguments outside that range (and where its panels would not close within their cap,
// which no argument tried reached).
double noncentral_t_lower_by_scale(double t, double df, double delta);

}  // namespace zemath::numeric
