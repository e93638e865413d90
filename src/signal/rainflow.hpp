// Rainflow counting of load histories: the hysteresis filter that reduces a history to
// its turning points, four-point cycle counting on a stack, the residue rules, load
// classes and the rainflow matrices in from-to and range-mean form.
#pragma once

#include <cstddef>
#include <span>
#include <vector>

namespace zemath::rainflow {

// Result of the hysteresis filter when a NaN load is met after the first move.
inline constexpr int kNanAfterMove = -1;

// Hysteresis filter. Writes to kept[0..count) the indices of the points of `load` it
// keeps (kept must hold load.size() entries) and returns count, or kNanAfterMove. The
// first usable point is kept; a move is a departure of more than h from the candidate;
// a reversal keeps the previous candidate; the last candidate is kept when the history
// moved at all and it lies at least h from the last kept point. Points equal to NANUM
// are skipped, and so are NaN points met before the first move. h must be >= 0.
int filter_turning_points(std::span<const double> load, double h, int* kept);

// The same filter applied to load[index[0]], load[index[1]], ...: writes the kept
// entries of `index` to kept (which may be index itself) and returns their count.
int filter_indexed(std::span<const double> load, std::span<const int> index, double h, int* kept);

// One counted cycle: positions (into the sequence that was counted) of its two points.
struct CyclePositions {
    int from;
    int to;
};

// Four-point rule over the sequence value[0..n): closed cycles are appended to `cycles`
// in the order found; the positions left on the stack are written to `residue`.
void count_four_point(std::span<const double> value, std::vector<CyclePositions>& cycles,
                      std::vector<int>& residue);

// Residue rules over the residue positions r (into `value`): 0 rising half cycles,
// 1 falling half cycles, 2 and 3 the residue counted again after repeating it once.
// Cycles are appended to `cycles` as positions into `value`.
void residue_cycles(std::span<const double> value, std::span<const int> residue, int mode,
                    std::vector<CyclePositions>& cycles);

// Equal-width load classes. Class of a load over [lower, upper] split into bins classes;
// the upper bound falls in the last class. Loads outside are clamped (the caller decides
// whether that is allowed). A zero-width range puts every load in class 0.
struct Classes {
    double lower = 0;
    double upper = 0;
    int bins = 0;
    int index(double load) const;
};

// Fold a bins x bins matrix so that direction does not matter: [r][c] and [c][r] both
// become their sum for r < c.
void fold(int* matrix, int bins);

// From-to to range-mean in place, and back (see rainflow.h for the placement).
void min_to_max_to_range_mean(int* matrix, int bins);
void range_mean_to_min_to_max(int* matrix, int bins);

// Full cycle analysis of one history for the cycle-list export: turning points with
// hysteresis h, four-point counting, residue as half cycles (mode 0, weight 0.5) or
// repeated (mode 1, weight 1). Indices refer to `load`.
struct CycleList {
    std::vector<int> from;
    std::vector<int> to;
    std::size_t closed = 0;       // cycles [0, closed) are closed, weight 1
    double residue_weight = 0.5;  // weight of the residue cycles after them
};
// Returns 0, or kNanAfterMove when the filter refuses the history.
int analyse_cycles(std::span<const double> load, double h, int residue_mode, CycleList& out);

}  // namespace zemath::rainflow
