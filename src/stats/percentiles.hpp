// The percentile engine: percentiles of a sample under six interpolation rules, with
// optional weights. Shared by the quantile summary, the bin width, the percentile
// smoothing filter and the median of XY reduction.
//
// Rules (m usable values sorted ascending x1 <= ... <= xm; np = p m / 100, or
// p (m + 1) / 100 for rule 3; j its integer part, g = np - j; j = 0 gives x1, j >= m xm):
//   0 empirical distribution function, averaging at jumps: g = 0 gives (xj + xj+1) / 2,
//     g > 0 gives xj+1;
//   1 nearest observation: g < 1/2 gives xj, g > 1/2 xj+1, g = 1/2 the even rank of j, j+1;
//   2 empirical distribution function: g = 0 gives xj, otherwise xj+1;
//   3 weighted average aimed at (m + 1) p: (1 - g) xj + g xj+1;
//   4 weighted average aimed at m p: (1 - g) xj + g xj+1;
//   5 none (the five-number summary's rule): only the end cases j = 0 and j = m have a
//     value; every other percent is NANUM.
// Weighted samples (weights given, not all equal): with cumulative weights C1..Cm of the
// sorted values and target T = Cm p / 100, the first k with Ck = T gives (xk + xk+1) / 2
// (xm when k = m); otherwise the first xk with Ck > T.
//
// Method: a few percents of a large sample (at most 8 percents, 32768 points or more)
// by sampled selection: a sorted random sample of about n^0.6 values brackets each wanted
// rank, one pass over the data counts the values below each bracket and gathers those
// inside (a few percent of the data), and std::nth_element finds the order statistics
// among the gathered values only (the percents in ascending order, each on the part that
// can hold it; the second order statistic of an interpolating rule is the minimum of the
// part above the first). When a bracket misses its rank (rare), selection on a full copy
// of the usable values. Other few-percent calls: that selection directly. Many percents:
// one radix sort of the copy from 2048 to 2^21 values; beyond, where the sort's passes
// leave the cache, selection of every order statistic (each on the part that can hold
// it) again; std::sort when there are fewer than 64 values per order statistic. Every
// path gives exactly the order statistics of the rules above. Weighted percentiles sort
// value-weight pairs once.
//
// Failure codes: -155 (n <= 0 or no percents), -151 (rule outside 0..5), -108 (a
// negative weight). A usable NaN makes every result NaN.
#pragma once

#include <cstddef>
#include <span>

namespace zemath {

// Rule codes of the percentile engine.
enum PercentileRule : int {
    kEdfAverage = 0,
    kNearestNeighbor = 1,
    kEdf = 2,
    kWeightedAverageRight = 3,
    kWeightedAverageLeft = 4,
    kNoInterpolation = 5,
};

// The order statistics behind one percentile: (1 - upper_weight) v[lower] +
// upper_weight v[upper] over the values sorted ascending (0-based). `defined` is false
// only for rule 5 away from the ends (and for a percent outside [0, 100] or NaN, or a
// rule outside 0..5): the percentile is then NANUM and lower/upper are 0.
struct OrderStatisticPick {
    std::size_t lower;
    std::size_t upper;
    double upper_weight;
    bool defined = true;
};

// For m usable values sorted ascending (m >= 1), the percentile `percent` (0..100) by
// rule code `rule` (0..5) is (1 - upper_weight) * v[lower] + upper_weight * v[upper].
OrderStatisticPick percentile_pick(std::size_t m, double percent, int rule) noexcept;

// The value of a pick over ascending values (NANUM when the pick is not defined).
double pick_value(std::span<const double> sorted, const OrderStatisticPick& pick) noexcept;

// Percentile of values already sorted ascending (no missing values in them).
double percentile_of_sorted(std::span<const double> sorted, double percent, int rule) noexcept;

// The engine: results[k] = percentile percents[k] of the usable values of data (NANUM
// skipped; with weights, points whose weight is NANUM skipped too). results must hold
// percents.size() values; a percent outside [0, 100] gives NANUM; no usable value gives
// NANUM everywhere. Returns 0, -151 (rule), -108 (negative weight; results untouched).
// `weights` is null or holds data.size() values. May throw on allocation failure.
int percentiles(std::span<const double> data, std::span<const double> percents,
                std::span<double> results, int rule, const double* weights);

// Half-width of the sampled selection's brackets, in standard deviations of the
// sample quantile.
inline constexpr double kBracketSpread = 4.0;

// The sampled selection on its own (exposed for tests): results for the unweighted
// engine without weights, using buffer (data.size() values) as scratch. Returns false,
// with results untouched, when the sample could not be drawn (mostly missing values, a
// NaN in it, more than 8 valid percents) or a bracket of half-width `spread` missed its
// rank; the caller then runs plain selection.
bool sampled_percentiles(std::span<const double> data, std::span<const double> percents,
                         std::span<double> results, int rule, double* buffer, double spread);

// Selection helper: reorders values so that every position in `positions` (ascending,
// each < values.size()) holds the element a full ascending sort would put there.
void select_order_statistics(std::span<double> values, std::span<const std::size_t> positions);

}  // namespace zemath
