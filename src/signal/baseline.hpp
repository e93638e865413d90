// Baselines under peaks and the noise level of a curve. Internal C++ face of
// zemath/baseline.h.
#pragma once

#include <span>

namespace zemath {

// Median absolute difference of successive usable values (NANUM and NaN skipped) over
// 0.6745 * sqrt(2): the standard deviation of white Gaussian noise. NANUM when fewer than
// two usable values exist.
double noise_level(std::span<const double> y);

}  // namespace zemath
