/* zeMath: XY data reduction and sampling windows.
 *
 * A reduction replaces each group of consecutive points by one representative value
 * chosen by a method code:
 *   0  mean: sum of the values not equal to NANUM / the full group count, missing ones
 *      included (kept deliberately: hosts rely on the full count; {2, NANUM, 4} gives 2)
 *   1  minimum, 2 maximum (NANUM skipped)
 *   3  median of the values not equal to NANUM (middle value, or mean of the two middle)
 *   4  first value, 5 value at position n / 2, 7 last value (unsorted, as stored)
 *   6  value at position trunc((n - 1) 0.5) (the fraction p is 0.5)
 *   8  sum of the values not equal to NANUM
 *   9  sample standard deviation (N - 1 denominator; 0 for one value) of the values not
 *      equal to NANUM, from the descriptive-statistics moment engine
 *   10 standard error of their mean (standard deviation / sqrt N)
 *   11 root mean square of the values not equal to NANUM
 *   12 x start, 13 x centre (start + end) / 2, 14 x end of the group
 *   other codes give NANUM.
 * An empty group, or one without a value not equal to NANUM for 1-3 and 9-11, gives
 * NANUM (12-14 still give positions). NaN is not missing and propagates.
 * Outputs never alias inputs unless stated. */
#ifndef ZEMATH_REDUCTION_H
#define ZEMATH_REDUCTION_H

#include "types.h"

ZEMATH_EXTERN_C_BEGIN

/* Cells of a sampling window of nWidth columns by nHeight rows around a centre, in
 * row-major order: row offsets -(nHeight / 2) .. (nHeight - 1) / 2, column offsets
 * -(nWidth / 2) .. (nWidth - 1) / 2, linear offset = row offset x nCols + column offset.
 * nShape: 0 the full rectangle; 1 the ellipse inscribed in it (cells whose centres lie in
 * the ellipse with semi-axes nHeight / 2 and nWidth / 2 about the rectangle's centre);
 * 2 the cross of the centre row and column; 3 the diagonal cross (|row| = |column|).
 * With row_offsets, col_offsets and linear_offsets all NULL, returns the cell count only;
 * otherwise each non-NULL array (capacity slots) receives one entry per cell. Returns
 * the cell count (>= 1); -10 unknown nShape; -18 nCols, nWidth or nHeight below 1, a
 * count that does not fit an int, capacity below the count, or a linear offset that does
 * not fit an int; -19 working storage could not be allocated. The count is formed
 * without listing the cells. */
ZEMATH_API int get_sampling_window_offset(int nCols, int nWidth, int nHeight, int nShape,
                                          int* row_offsets, int* col_offsets, int* linear_offsets,
                                          int capacity) ZEMATH_NOEXCEPT;

/* Reduces y[0..n-1] by groups of points_per_group consecutive points (the last group
 * holds the rest) with method; out needs ceil(n / points_per_group) slots. Methods 12-14
 * see x start = x end = 0. Returns the group count; -11 y or out NULL; -18 n = 0 or
 * points_per_group = 0 (a group size of 0 is refused rather than divided by); -19 when
 * the median's working storage could not be allocated. */
ZEMATH_API int zemath_reducexy_n_points(const double* y, double* out, unsigned int n,
                                        unsigned int points_per_group, int method) ZEMATH_NOEXCEPT;

/* Reduces (x, y), x ascending, by x bins of width x_increment. Range low..high: for
 * methods 12-14 the ordered x_start and x_end; otherwise the smallest and largest x not
 * equal to NANUM (NaN ignored). Bins have upper edges low + k x_increment,
 * k = 1..trunc((high - low) / x_increment) + 1, and one output each (empty bins
 * included, giving NANUM); out needs that many slots. Bin k reports x start
 * x_start + k x_increment and x end that plus x_increment (counted from the x_start
 * argument, not from low: kept deliberately). Points are grouped by
 * zemath_group_xy_by_x_new. Returns the number of bins, or -1 when x, y or out is NULL,
 * n is 0, the range is empty (no usable x), x_increment is not positive, is NaN or
 * exceeds high - low, or more than 1e8 bins would result; -19 when working storage could
 * not be allocated. */
ZEMATH_API int zemath_reducexy_fixing_increbin(const double* x, const double* y, unsigned int n,
                                               double x_start, double x_end, int method,
                                               double* out, double x_increment) ZEMATH_NOEXCEPT;

/* As zemath_reducexy_fixing_increbin with number_of_groups bins of width
 * (high - low) / number_of_groups (upper edges (k + 1) width + low; points at or beyond
 * the last edge join the last bin), without the span test; out needs number_of_groups
 * slots. Returns number_of_groups, or -1 when x, y or out is NULL, n < 1,
 * number_of_groups < 1 or above 1e8, or the range is empty or not finite; -19 no storage. */
ZEMATH_API int zemath_reducexy_n_groups(const double* x, const double* y, int n, double x_start,
                                        double x_end, int method, double* out,
                                        int number_of_groups) ZEMATH_NOEXCEPT;

/* Groups points x[0..n-1] (ascending) against ascending upper_edges[0..n_edges-1]:
 * point i joins the first bin whose edge exceeds x[i]; points at or beyond the last edge
 * join the last bin; a point out of order, equal to NANUM or NaN stays in the bin of the
 * point before it. last_index[k] (n_edges slots) receives the index of the last point of
 * bin k, or that of bin k - 1 (-1 for k = 0) when bin k is empty. Returns n_edges; -11
 * a NULL pointer; -18 n < 1 or n_edges < 1. */
ZEMATH_API int zemath_group_xy_by_x_new(const double* x, int n, const double* upper_edges,
                                        int n_edges, int* last_index) ZEMATH_NOEXCEPT;

/* Mean increment of x: the mean of the consecutive differences over the points not equal
 * to NANUM and not NaN, (x[last] - x[first]) / (last - first), into *increment. Returns
 * 0; -11 x or increment NULL; -13 n < 2 or fewer than 2 such points. */
ZEMATH_API int zemath_mean_increment(const double* x, int n, double* increment) ZEMATH_NOEXCEPT;

/* Whether x[0..n-1] is sampled at a regular step: *step receives the mean increment;
 * every consecutive difference must lie within step (1 -+ tolerance) (ends swapped for a
 * negative step). Returns 0 when regular; -11 x or step NULL; -13 n < 2 or fewer than 2
 * usable points (mean increment's code); -50 |step| < 1e-20; -32 a difference outside
 * the band (also a NaN difference). */
ZEMATH_API int zemath_sampling_resolution(int n, const double* x, double* step,
                                          double tolerance) ZEMATH_NOEXCEPT;

/* Reduces the matrix z (nRows x nCols, row-major) by blocks of nHeight rows by nWidth
 * columns: block (i, j) covers rows i nHeight .. and columns j nWidth .. (the last blocks
 * are cut at the matrix edge); its cells inside the window shape nShape (as
 * get_sampling_window_offset, centred so that the rectangle is the block) are reduced by
 * method (methods 12-14 see the block's first and last column index). out (row-major)
 * needs ceil(nRows / nHeight) x ceil(nCols / nWidth) slots; out_rows and out_cols
 * (optional) receive the two counts. Returns 0; -11 z or out NULL; -12 nRows or nCols
 * below 1; -18 nWidth or nHeight below 1; -10 unknown nShape; -19 no storage. */
ZEMATH_API int zemath_reduce_2D_data(const double* z, int nRows, int nCols, int nWidth, int nHeight,
                                     int nShape, int method, double* out, int* out_rows,
                                     int* out_cols) ZEMATH_NOEXCEPT;

/* Reduces (x, y) by groups of sampling_size consecutive points (the last holds the
 * rest): y_out[k] is the group's value by method (x start and end being the group's
 * first and last x), x_out[k] its x centre (first x + last x) / 2. x_out and y_out need
 * ceil(n / sampling_size) slots and may be x and y themselves. Returns the group count;
 * -11 a NULL pointer; -18 n < 1 or sampling_size < 1; -19 no storage. */
ZEMATH_API int reduce_xy_get_sampling_data(const double* x, const double* y, int n,
                                           int sampling_size, int method, double* x_out,
                                           double* y_out) ZEMATH_NOEXCEPT;

/* Decimation: keeps the points 0, sampling_size, 2 sampling_size, ... of (x, y) in
 * x_out and y_out (ceil(n / sampling_size) slots; may be x and y themselves). Returns
 * the number kept; -11 a NULL pointer; -18 n < 1 or sampling_size < 1. */
ZEMATH_API int zemath_skip_points_in_every_sampling_size(const double* x, const double* y, int n,
                                                         int sampling_size, double* x_out,
                                                         double* y_out) ZEMATH_NOEXCEPT;

ZEMATH_EXTERN_C_END

#endif /* ZEMATH_REDUCTION_H */
