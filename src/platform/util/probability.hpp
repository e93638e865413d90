// Utility-library probability helpers used across the statistics families.
#pragma once

namespace zemath::util {

// Regularised incomplete beta function I_x(a, b).
double incbeta(double x, double a, double b);
// Lower-tail standard normal probability Phi(z).
double prob(double z);
// Its inverse: z with Phi(z) = p, 0 < p < 1.
double invprob(double p);
// Upper-tail F quantile for integer degrees of freedom: f with P(F > f) = p.
double Ftable(double p, int df1, int df2);

}  // namespace zemath::util
