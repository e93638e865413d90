// Extended-precision forms of the standard normal routines g01eac and g01cec, for the
// in-house wrappers that build the normal argument themselves (the log-normal family).
// A double argument carries a rounding error that the normal tail magnifies by about x^2
// (x = 37 turns one ulp into 1.5e-13); forming it in long double keeps that below 1e-16.
// Same conventions and failure codes as g01eac and g01cec.
#pragma once

#include "platform/nag/nag.hpp"

namespace zemath::nag {

// Standard normal tail probability of a long double argument, any of the four selectors.
long double g01eac_extended(Nag_TailProbability tail, long double x, NagError* fail);
// Standard normal deviate z with Phi(z) = p, returned unrounded to double.
long double g01cec_extended(double p, NagError* fail);

}  // namespace zemath::nag
