// The deviate of the gamma law with a shape below 1, in double arithmetic: the fast path
// of the gamma and chi-square deviates there (the routines fall back on the extended
// evaluation where this one declines).
#pragma once

namespace zemath::numeric {

// The smallest shape taken (see gamma_small_shape.cpp for the bound and why).
inline constexpr double kGammaSmallShapeMin = 1e-4;

// x with P(a, x) = p, for kGammaSmallShapeMin <= a < 1 and 0 < p < 1. NaN where the
// evaluation declines: a shape outside that range, a root outside the normal double range,
// no settled iteration.
double gamma_deviate_small_shape(double a, double p);

}  // namespace zemath::numeric
