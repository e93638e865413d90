// Utility-library substitute: the tolerant comparison of doubles.
//
// Two values are approximately equal when they are equal (same-signed infinities
// included) or when |a - b| <= relative_tolerance * max(|a|, |b|). The test is purely
// relative, so 0 equals only 0 (and -0); callers comparing with zero pass an absolute
// floor. NaN equals nothing, itself included. A negative or NaN tolerance leaves only
// exact equality. Families use e.g. kApproxTolerance = 1e-11 (about 45000 units of
// rounding: values agreeing to 11 significant digits).
#pragma once

namespace zemath::util {

inline constexpr double kApproxTolerance = 1e-11;

bool approx_equal(double a, double b, double relative_tolerance = kApproxTolerance,
                  double absolute_floor = 0.0);

// -1, 0 or 1 as a is below, approximately equal to, or above b. NaN sorts above every
// number and equal to NaN, so the comparison is a consistent order for sorting.
int approx_compare(double a, double b, double relative_tolerance = kApproxTolerance,
                   double absolute_floor = 0.0);

}  // namespace zemath::util
