// The scale law shared by the non-central t and the studentized range: S = sqrt(chi2_v / v),
// the divisor of a Student-type statistic.
#pragma once

namespace zemath::numeric {

// Density of Y = ln S at y: v s^2 g(v/2, v s^2 / 2), s = e^y, g the standard gamma
// density. In y the density has no end-point singularity for any v > 0 (f_S ~ s^(v-1) at
// 0), its mode is at y = 0 and its width 1/sqrt(2v). 0 where s^2 underflows or overflows.
double chi_scale_log_density(double y, double v);

}  // namespace zemath::numeric
