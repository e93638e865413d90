// g07cac: two-sample t test and confidence interval from summary statistics.
#pragma once

#include "platform/nag/nag.hpp"

namespace zemath::nag {

enum class Nag_TestVariances { Nag_EqualVar, Nag_UnequalVar };

// Two-sample t test of mean x = mean y from sizes, means and standard deviations.
// Equal variances: pooled s^2 = ((nx-1) sx^2 + (ny-1) sy^2) / (nx+ny-2),
// t = (xmean - ymean) / (s sqrt(1/nx + 1/ny)), df = nx + ny - 2. Unequal variances:
// t = (xmean - ymean) / sqrt(sx^2/nx + sy^2/ny), df by Satterthwaite (real, not rounded).
// prob: Nag_TwoTail P(|T| >= |t|), Nag_UpperTail P(T >= t), Nag_LowerTail P(T <= t).
// [dl, du]: the two-sided clevel interval for mean x - mean y.
// Failures (outputs unwritten): another tail NE_BAD_PARAM; nx or ny < 2 NE_INT_ARG_LT;
// xstd or ystd <= 0 NE_REAL_ARG_LE; clevel outside (0, 1) NE_REAL; a non-finite mean NE_REAL.
void g07cac(Nag_TailProbability tail, Nag_TestVariances equal, int nx, int ny, double xmean,
            double ymean, double xstd, double ystd, double clevel, double* t, double* df,
            double* prob, double* dl, double* du, NagError* fail);

}  // namespace zemath::nag
