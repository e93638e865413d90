// Peak finding on a curve (X, Y): the sliding-window extreme tracker, the local-maximum,
// local-extreme and search-window detectors, the first-derivative detector, and the
// peak-list filters. Internal C++ face of zemath/peaks.h; the mode decomposition and the
// baseline family call these directly.
#pragma once

#include <cstddef>
#include <span>
#include <vector>

namespace zemath {

// Direction flag bits shared by the detectors.
inline constexpr int kPeakPositive = 1;
inline constexpr int kPeakNegative = 2;
inline constexpr int kPeakIgnoreSign = 4;

// Index of the leftmost maximum and leftmost minimum of every window [c - half, c + half]
// for the centres c = half .. n - half - 1 (half raised to 1 when 0): entry c - half of
// max_index / min_index (each of size n - 2*half, n = y.size() > 2*half). The result is the
// one of the running rescan tracker (a strictly greater entering value takes the maximum;
// a maximum that leaves the window is found again by a rescan keeping the first index
// among equals). A monotonic deque gives it in amortised O(1) per point when y holds no
// NaN; with NaN present the rescan itself runs, since a NaN that opens a rescan holds the
// extreme until it leaves.
void sliding_window_extremes(std::span<const double> y, int half, std::span<int> max_index,
                             std::span<int> min_index);

// Centres c (ascending) that are the window maximum (kPeakPositive) or, failing that, the
// window minimum (kPeakNegative) of a window of 2*half+1 points (half raised to 1 when 0).
// With sign_rule a maximum needs y > 0 and a minimum y < 0. Empty when y holds no more
// than 2*half+1 points. The empirical mode decomposition takes its extremes from here
// (flags kPeakPositive or kPeakNegative, half 1, no sign rule).
std::vector<int> local_extreme_centres(std::span<const double> y, int half, int flags,
                                       bool sign_rule);

// Search-window scan of evenly spaced data: every point i with the symmetric window of
// half-width min(i, half, n-1-i); candidates as above (NaN values are ignored and never
// peaks), kept when they stand at least min_height above or below both window ends.
std::vector<int> search_window_peaks(std::span<const double> y, int half, int flags,
                                     double min_height);

// k-th smallest (ascending) or largest (descending) of the values; NaN orders after every
// number. k must lie in [0, values.size()).
double kth_order_statistic(std::span<const double> values, std::size_t k, bool ascending);

// A height marker of a peak: the point index where the walk stopped and the X and Y of
// the marker (the linear crossing of the level, or the end point's own values).
struct Marker {
    int index;
    double x, y;
};

// One side (step -1 left, +1 right) of the bracket of the peak at p at the level
// fraction * y[p]: the walk goes while the point stays beyond the level (above it for
// y[p] > 0, below otherwise) and stops at the first point at or past it or at the data's
// end. x is the linear crossing between that point and its inner neighbour, y the level;
// when the level is never reached (or p is at it) the stopping point's own X and Y.
Marker height_marker(const double* x, const double* y, int n, int p, double fraction, int step);

// Extent [left, right] of the peak at index `peak` of y: on each side the walk follows the
// curve down (maximum) or up (minimum) and ends at the most extreme valley point reached
// once more than `patience` consecutive usable points fail to pass it (or at the data's
// end). NANUM and NaN values are skipped. Returns false when y[peak] is not usable.
bool peak_partition(std::span<const double> y, std::size_t peak, bool maximum, int patience,
                    std::size_t& left, std::size_t& right);

// The shared peak picker: strict local maxima of y (bit 1) and minima (bit 2; a plateau
// counts once, at its left point; end points never), the sign rule unless bit 4, then kept
// when |y| >= min_height, no more extreme peak of the same kind lies fewer than
// min_distance points away, and the prominence is at least min_prominence. Ascending
// indices. NANUM and NaN values are never peaks and are passed over by the prominence.
std::vector<int> pick_peaks(std::span<const double> y, int flags, double min_height,
                            double min_prominence, int min_distance);

// Prominence of the maximum at `peak` (y[peak] usable): y[peak] minus the higher of the
// lowest values between the peak and the nearest strictly higher usable point on each
// side (or the data's end). All peaks at once in O(n) by two monotonic-stack passes.
std::vector<double> prominences(std::span<const double> y, std::span<const int> peaks);

}  // namespace zemath
