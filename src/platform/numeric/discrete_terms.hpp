// Point probabilities of the binomial and Poisson laws, and the logarithm of the
// binomial coefficient they are built from (the library's combinations function).
#pragma once

#include "platform/numeric/double_double.hpp"

namespace zemath::numeric {

// ln C(n, k) for 0 <= k <= n. Exact products while C(n, k) < 2^53; beyond that from
// Stirling's series with its error term, without forming the large ln n! terms.
double ln_combinations(int n, int k);

// C(nt, x) p^x (1-p)^(nt-x) for 0 <= x <= nt, 0 <= p <= 1.
double binomial_point(int x, int nt, double p);

// C(nt, x) p^x (1-p)^(nt-x) at p = x / nt exactly (the law at its mean), 0 < x < nt: both
// deviances vanish, leaving the Stirling-error terms. Within about 1e-15 relative.
double binomial_point_at_mean(int x, int nt);

// lambda^x e^-lambda / x! for x >= 0, lambda > 0.
double poisson_point(int x, double lambda);

// ln(x / (m + m_low)) in two parts, the logarithm of the deviances away from the mean, for
// normal positive x and m with x/m between 2^-1000 and 2^1000 (m_low below an ulp of m):
// within 1e-20 absolute plus 2^-100 relative.
TwoPart log_ratio_two_part(double x, double m, double m_low);
TwoPart log_ratio_two_part_portable(double x, double m, double m_low);

// binomial_point and poisson_point as built for processors without a fused multiply-add (the
// entry points above take the fused build where the processor has one): for tests.
double binomial_point_portable(int x, int nt, double p);
double poisson_point_portable(int x, double lambda);

}  // namespace zemath::numeric
