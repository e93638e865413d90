// XY data reduction: each group of consecutive points is replaced by one representative
// value chosen by a method code (the group reducer); groups are a fixed number of points,
// fixed x bins, or a fixed number of equal x bins. Also the grouping of x-sorted points
// against ascending bin edges, the mean increment and the regular-sampling check, and
// the sampling-window reductions (blocks of a matrix, groups of XY points, decimation).
//
// Method codes of the reducer (values equal to NANUM skipped where stated):
//   0 mean: sum of the non-missing values / the full group count (missing ones included,
//     kept deliberately: hosts rely on it); 1 minimum; 2 maximum (both skip NANUM);
//   3 median of the non-missing values (the percentile engine's rule 0 at 50%: the middle
//     value, or the mean of the two middle ones); 4 first value; 5 value at n / 2;
//   6 value at trunc((n - 1) p), p = kReducerFraction = 0.5 (NANUM when n < 1 or p < 0);
//   7 last value; 8 sum of the non-missing values; 9 sample standard deviation (N - 1)
//   and 10 standard error of the mean (standard deviation / sqrt N) of the non-missing
//   values, from the frame's two-pass mean and variance; 11 root mean square over the
//   non-missing values; 12 x start, 13 x centre, 14 x end of the group; others NANUM.
// An empty group (no point, or no non-missing value for 1-3 and 9-11) gives NANUM for
// every value method; 12-14 still give the positions.
//
// Layering: the median comes from the statistics family's percentile engine, so the
// family lives here, above the frame; the frame's sampling windows are used as they are.
#pragma once

#include <span>
#include <vector>

namespace zemath {

inline constexpr double kReducerFraction = 0.5;  // p of method 6

double reduce_group(std::span<const double> y, int method, double x_start, double x_end);

// Groups points i = 0..n-1, x ascending, against ascending upper edges: point i joins the
// first bin k whose edge exceeds x[i] (bins [e(k-1), e(k)), the first open below); points
// at or beyond the last edge join the last bin; a point that is out of order, missing or
// NaN stays in the bin of the point before it. last_index[k] is the index of the last
// point of bin k (that of bin k - 1, or -1, when bin k is empty). Returns the number of
// bins, edges.size().
int group_by_x(std::span<const double> x, std::span<const double> upper_edges,
               std::span<int> last_index);

}  // namespace zemath
