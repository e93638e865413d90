/* zeMath: statistics family: descriptive statistics and quantiles, the percentile
 * engine, frequency lists and bin widths, parametric tests and confidence intervals,
 * and the Shapiro-Wilk normality test.
 *
 * Conventions of this family.
 * - A value equal to NANUM is missing and skipped where a function says so; NaN is not
 *   missing (it propagates, see each function).
 * - Moment-denominator flag (nMomentDenFlag), the divisor d of the variance:
 *   0 N - 1 (the default), 1 N, 2 W - 1, 3 W (W the weight sum), 4 W - sum(w^2) / W.
 * - Percentile rule (nInterpolate), 0..5: 0 empirical distribution function averaging at
 *   jumps, 1 nearest observation (ties to the even rank), 2 empirical distribution
 *   function, 3 weighted average aimed at (n + 1) p, 4 weighted average aimed at n p,
 *   5 none (Tukey's five-number summary: only 0, 25, 50, 75 and 100 have values).
 * - Warning codes of the percentile engine ("_ZEMS_CW_3" a negative weight, "_ZEMS_CW_5"
 *   after every weight check) go to the message sink the host registers; nothing is
 *   printed and nothing is kept when no sink is registered.
 * - Output pointers of the scalar-output functions may be NULL (that output is skipped). */
#ifndef ZEMATH_STATISTICS_H
#define ZEMATH_STATISTICS_H

#include "types.h"

ZEMATH_EXTERN_C_BEGIN

/* ---- Message codes ---------------------------------------------------------------- */

/* A message sink receives each posted code (a static string) and the registered context,
 * on the thread that posts it. */
typedef void (*zemath_message_sink)(const char* code, void* context);

/* Registers the sink (NULL unregisters). Thread-safe; a sink may call this itself. */
ZEMATH_API void zemath_set_message_sink(zemath_message_sink sink, void* context) ZEMATH_NOEXCEPT;

/* ---- Percentiles -------------------------------------------------------------------- */

/* results[k] = the percents[k]-th percentile (0..100) of the usable points of
 * data[0..n-1] under rule nInterpolate. weights (NULL, or n values) weight each point: a
 * point whose value or weight is NANUM is skipped; unequal weights use the cumulative
 * weight rule (the first sorted value whose cumulative weight passes sum * p / 100; the
 * average with the next value when one equals it exactly) whatever the rule; equal
 * weights use the rule. A percent outside [0, 100] (or NaN) gives NANUM; no usable
 * point gives NANUM everywhere; a usable NaN value or weight gives NaN everywhere.
 * results holds nPercents values and may alias data or percents.
 * Returns 0; -156 when data, percents or results is NULL; -155 when n <= 0 or
 * nPercents <= 0; -151 when nInterpolate is outside 0..5; -108 when a weight is negative
 * (results untouched). */
ZEMATH_API int zemath_percentiles(const double* data, int n, const double* percents,
                                  int nPercents, double* results, int nInterpolate,
                                  const double* weights) ZEMATH_NOEXCEPT;

ZEMATH_EXTERN_C_END

#endif /* ZEMATH_STATISTICS_H */
