/* zeMath: search family: order tests, searches in ascending arrays, nearest points,
 * level crossings, bound indices and range rounding, over caller-owned double arrays.
 * Inputs are never modified; a refused call (negative return) writes nothing.
 * "Usable" points are those neither NaN nor equal to NANUM. */
#ifndef ZEMATH_SEARCH_H
#define ZEMATH_SEARCH_H

#include "types.h"

ZEMATH_EXTERN_C_BEGIN

/* Order of x[0..n-1]: 2 increasing, 1 decreasing, 0 neither. strict: equal neighbours
 * break the order. A pair holding a NaN never breaks it. A single point, and with strict
 * false a constant array, is increasing (2). -11 when x is NULL, -5 when n is 0. */
ZEMATH_API int zemath_is_monotonic(const double* x, unsigned int n, bool strict) ZEMATH_NOEXCEPT;

/* Position of target in ascending x[0..n-1], written to *index: -1 below x[0], n - 1 at
 * or above x[n-1], otherwise the last position whose value does not exceed target (found
 * by bisection; only the ends are checked, so on unsorted data the bisection decides,
 * and a NaN target ends at n - 2 for n > 2). Returns 0, or -18 when x or index is NULL,
 * n < 1, or x[0] > x[n-1]. */
ZEMATH_API int zemath_binary_search(const double* x, int n, double target,
                                    int* index) ZEMATH_NOEXCEPT;

/* zemath_binary_search for each of targets[0..ntargets-1], into indices[0..ntargets-1].
 * Returns 0, or -18 when x, targets or indices is NULL, n < 1, or x[0] > x[n-1];
 * ntargets < 1 returns 0 and writes nothing. */
ZEMATH_API int zemath_array_find_indices(const double* x, int n, const double* targets,
                                         int ntargets, int* indices) ZEMATH_NOEXCEPT;

/* True when value lies strictly between the smaller and the larger of a and b; otherwise,
 * when include_ends is set, true when value equals a or b; else false (NaN: false). */
ZEMATH_API bool zemath_is_inside_range(double value, double a, double b,
                                       bool include_ends) ZEMATH_NOEXCEPT;

/* Index of the usable point of x[0..n-1] (any order) nearest to target, first occurrence
 * on ties, into *index; target +inf / -inf selects the largest / smallest value. Returns
 * 0; -11 when x or index is NULL; -18 when n < 1; -64 when no point is usable or target
 * is NaN or NANUM. */
ZEMATH_API int zemath_find_nearest_index(const double* x, int n, double target,
                                         int* index) ZEMATH_NOEXCEPT;

/* For each targets[k] (k < ntargets), the point of ascending x[0..n-1] nearest to it
 * (the lower value on a tie, the first of repeated values): indices[k] receives its index
 * and values[k] its value (each output optional, ntargets slots). A NaN or NANUM target
 * gets index -1 and value NANUM. Returns 0; -11 when x or targets is NULL or both
 * outputs are; -18 when n < 1 or x[0] > x[n-1]; ntargets < 1 returns 0, writing nothing. */
ZEMATH_API int zemath_find_nearest_values(const double* x, int n, const double* targets,
                                          int ntargets, int* indices,
                                          double* values) ZEMATH_NOEXCEPT;

/* Walks y from position start towards the end (direction >= 0) or the beginning
 * (direction < 0) and writes to *index the first position i where the curve reaches
 * target: y[i] == target, or target lies strictly between y[i] and the next point of the
 * walk (the crossing is then between i and i +- 1). Unusable points never reach it.
 * *index = -1 when target is never reached. Returns 0; -11 when y or index is NULL;
 * -18 when n < 1 or start is outside 0..n-1. */
ZEMATH_API int zemath_find_index_by_target(const double* y, int n, double target, int start,
                                           int direction, int* index) ZEMATH_NOEXCEPT;

/* Bound indices of the value range [lower, upper] in monotonic x[0..n-1] (ascending when
 * x[0] <= x[n-1], else descending; only the ends are checked): *lower_index is the point
 * with the smallest value not below lower, *upper_index the point with the largest value
 * not above upper (on equal values the ones that widen the index range). Returns 0; -11
 * when x, lower_index or upper_index is NULL; -18 when n < 1; -6 when lower > upper or
 * either is NaN; -64 when a bound cannot be located: no point lies in [lower, upper]. */
ZEMATH_API int zemath_get_lower_upper_bounds_index(const double* x, int n, double lower,
                                                   double upper, int* lower_index,
                                                   int* upper_index) ZEMATH_NOEXCEPT;

/* Tolerant order test of x[0..n-1]. Over the m pairs of consecutive usable points, a pair
 * going down breaks increasing order and a pair going up breaks decreasing order (equal
 * pairs break neither). *order = 2 (increasing) when at most fraction * m pairs break
 * increasing order, 1 (decreasing) when at most fraction * m break decreasing order (the
 * one with fewer breaks when both hold, increasing on a tie; increasing when m = 0), else
 * 0. fraction = 0 is the non-strict zemath_is_monotonic skipping unusable points.
 * Returns 0; -11 when x or order is NULL; -15 when n < 2 or fraction is not in [0, 1]. */
ZEMATH_API int zemath_check_order(const double* x, int n, double fraction,
                                  int* order) ZEMATH_NOEXCEPT;
/* The same test for int data (every point usable). */
ZEMATH_API int zemath_i_check_order(const int* x, int n, double fraction,
                                    int* order) ZEMATH_NOEXCEPT;

/* Rounds the range [*lower, *upper] outward to multiples of a step of 1, 2 or 5 times a
 * power of ten, the smallest such step giving at most `divisions` intervals over the
 * original range, and never below the spacing of doubles at the larger bound (a range
 * only a few doubles wide gets the smallest step that can hold it); the step is written to
 * *increment (optional). Results are the doubles
 * nearest the decimal multiples; a bound within 1e-9 step of a multiple counts as on it.
 * A zero-width range on a multiple is widened by one step on each side (step from
 * |value|, or 1 for 0). Returns 0; -11 when lower or upper is NULL; -15 when
 * divisions < 1; -6 when *lower > *upper, either is not finite or is NANUM, or the
 * rounded range overflows. */
ZEMATH_API int zemath_round_range(double* lower, double* upper, int divisions,
                                  double* increment) ZEMATH_NOEXCEPT;

/* out[i] = the multiple of increment nearest x[i] when it lies within tolerance of x[i]
 * (absolute), else x[i]; unusable and infinite values are copied. A decimal increment
 * (0.1, 0.25, 3e-4) gives the doubles nearest the decimal multiples. out may be x.
 * Returns how many values lie within tolerance of a multiple; -11 when x or out is NULL;
 * -15 when n < 1; -14 when increment is not a positive finite number or tolerance is
 * negative or NaN. */
ZEMATH_API int zemath_round_with_tolerance(const double* x, int n, double increment,
                                           double tolerance, double* out) ZEMATH_NOEXCEPT;

ZEMATH_EXTERN_C_END

#endif /* ZEMATH_SEARCH_H */
