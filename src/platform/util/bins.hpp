// Utility-library substitute: the bin index of a value on a regular grid of bins.
//
// nice_bin_index(value, start, width) = floor((value - start) / width): bin k holds
// [start + k * width, start + (k + 1) * width). A value on an inner edge belongs to the
// bin above it, also when rounding puts the quotient just below the integer: a quotient
// within kBinEdgeUlps units of rounding of the next integer is taken as that integer, so
// (0.3 - 0.0) / 0.1 = 2.9999999999999996 gives bin 3 and (1000.3 - 1000.0) / 0.1 bin 3.
// The snap is scaled by the operands ((|value| + |start|) / |width| + |quotient|), since
// the subtraction rounds at the operands' magnitude, not the difference's. The cost: a
// value truly that close below an edge is counted in the bin above it.
#pragma once

#include <limits>

namespace zemath::util {

// Returned for a value in no bin: a NaN quotient (NaN value, start or width, a zero
// width with value == start, infinite operands). Quotients beyond the int range are
// clamped to INT_MIN + 1 and INT_MAX, so they still fall outside any bin count.
inline constexpr int kNoBin = std::numeric_limits<int>::min();

// Units of rounding (of the operands' scale) within which a quotient snaps up to the
// next integer: four for the subtraction, the division and the two inputs' own rounding.
inline constexpr double kBinEdgeUlps = 4.0;

int nice_bin_index(double value, double start, double width);

}  // namespace zemath::util
