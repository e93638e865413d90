// c05: roots: the real Lambert W function.
#pragma once

#include "platform/nag/nag.hpp"

namespace zemath::nag {

// W(x) on branch 0 (W >= -1) or -1 (W <= -1); with offset, x is the distance from the
// branch point -1/e. Fails with NE_INT for another branch and NE_REAL outside the
// branch's domain.
double c05bac(double x, int branch, bool offset, NagError* fail);

}  // namespace zemath::nag
