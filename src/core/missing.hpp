// The missing-value marker and the NaN/infinity tests shared by every family.
#pragma once

#include <cmath>
#include <limits>

#include "zemath/types.h"

namespace zemath {

inline constexpr double kNanum = NANUM;

// Ordered IEEE equality: NaN is never missing. Kept deliberately: hosts store NANUM in
// their data and rely on NaN passing through missing-value filters untouched.
inline constexpr bool is_missing(double value) {
    return value == kNanum;
}

// Typed form for the element-type families: a null marker means nothing is skipped.
template <class T>
inline constexpr bool is_missing(const T& value, const T* marker) {
    return marker != nullptr && value == *marker;
}

inline bool is_nan(double value) {
    return std::isnan(value);
}

// Beyond the largest finite double in either direction; NaN is not infinite.
inline constexpr bool is_infinite(double value) {
    return value > std::numeric_limits<double>::max() ||
           value < -std::numeric_limits<double>::max();
}

}  // namespace zemath
