// g01 summary statistics of the back end: weighted summary statistics (g01aac), the
// five-number summary (g01alc) and the Shapiro-Wilk W test (g01ddc). Each routine fills
// the NagError record: 0 on success, a positive number (nag.hpp) on failure.
#pragma once

#include <cstddef>

#include "platform/nag/nag.hpp"

namespace zemath::nag {

// Summary statistics of x[0..n-1] with weights wt (null: all 1). With W = sum w and
// d = W - sum w^2 / W: mean = sum w x / W, sd^2 = sum w (x - mean)^2 / d,
// skewness = sum w (x - mean)^3 / (d sd^3), kurtosis = sum w (x - mean)^4 / (d sd^4) - 3
// (these are this routine's own definitions: with unit weights d = n - 1). nvalid counts
// the points with positive weight; only they enter min and max. Failures: n < 1
// NE_INT_ARG_LT; a negative weight NE_REAL_ARG_LT (nothing else written); nvalid = 0
// NE_INT (only nvalid and wsum written); nvalid = 1 or zero spread NE_INT as a warning:
// mean, min, max and wsum are set, sd, skewness and kurtosis are 0.
void g01aac(int n, const double* x, const double* wt, int* nvalid, double* xmean, double* xsd,
            double* xskew, double* xkurt, double* xmin, double* xmax, double* wsum, NagError* fail);

// Five-number summary of x[0..n-1] into res[5] = {minimum, lower hinge, median, upper
// hinge, maximum} (Tukey's hinges: with m = ceil(n / 2) and k = ceil(m / 2), the median
// is z_m (n odd) or the mean of z_m, z_m+1; the hinges z_k and z_n-k+1 (m odd) or the
// means of z_k, z_k+1 and z_n-k, z_n-k+1). n < 5 NE_INT_ARG_LT (res untouched).
// The library's own rule for 1..4 values is the same: five_number_summary below.
void g01alc(int n, const double* x, double* res, NagError* fail);

// Tukey's five-number summary of n >= 1 values sorted ascending (the rule of g01alc
// for every n).
void five_number_summary(const double* sorted, std::size_t n, double* res);

// Shapiro and Wilk's W test of x[0..n-1] sorted (ascending or descending), 3 <= n <= 5000,
// with coefficients a[0..n-1] computed when calc_wts is true (else reused from a previous
// call with the same n); w the statistic, pw its p-value (upper tail). Failures:
// n < 3 NE_INT_ARG_LT, n > 5000 NE_INT_ARG_GT, all values equal NE_REAL, data not
// sorted NE_NOT_SORTED.
void g01ddc(int n, const double* x, bool calc_wts, double* a, double* w, double* pw,
            NagError* fail);

}  // namespace zemath::nag
