/* zeMath: moving statistics. Trailing moving averages of a series as used for time series
 * and indicators (exponential, modified, triangular, weighted), the moving root mean
 * square and least-squares slope, and a circular running average.
 *
 * Arrays: pOut and pIn hold nSize values (output first in the argument list); pOut may be
 * the same array as pIn (the result is formed in working storage first). One output per
 * input; positions before the first full period are NANUM. A refused call writes nothing.
 * nMissingAsZero = 1: the input is averaged with every NANUM replaced by 0.0; otherwise
 * missing values are handled as stated per function.
 *
 * Status codes: 0 success; -1 a NULL pointer, a period out of range, or a bad weight (as
 * stated per function); -19 working storage could not be allocated.
 */
#ifndef ZEMATH_MOVING_H
#define ZEMATH_MOVING_H

#include "types.h"

ZEMATH_EXTERN_C_BEGIN

/* Exponential moving average, alpha = 2/(nPeriod+1): out[i] = out[i-1] + alpha (in[i] -
 * out[i-1]). Seed: with bSeedWithFirst out[0] = in[0]; otherwise out[nPeriod-1] = S +
 * alpha (in[nPeriod-1] - S) with S the mean of the non-missing in[0..nPeriod-1] (the last
 * value of the first period is blended into its own mean once more, as callers expect),
 * NANUM when in[nPeriod-1] is missing, and out[0..nPeriod-2] NANUM. A missing input or a
 * missing previous output makes the output NANUM, so a missing value ends the series.
 * Returns 0; -1 when a pointer is NULL or nPeriod < 1; 0 without writing when nSize < 2;
 * -1 when nPeriod > nSize. */
ZEMATH_API int zemath_emovavg(double* pOut, const double* pIn, int nSize, int nPeriod,
                              int bSeedWithFirst, int nMissingAsZero) ZEMATH_NOEXCEPT;

/* Modified (smoothed) moving average with p = min(nPeriod, nSize): out[p-1] = mean of the
 * non-missing in[0..p-1] (NANUM if none), out[i] = out[i-1] + (in[i] - out[i-1]) / p after
 * it (NANUM once an input or the previous output is missing), out[0..p-2] NANUM.
 * Returns 0 (nSize < 1: nothing written); -1 when a pointer is NULL or nPeriod < 1. */
ZEMATH_API int zemath_mmovavg(double* pOut, const double* pIn, int nSize, int nPeriod,
                              int nMissingAsZero) ZEMATH_NOEXCEPT;

/* Triangular moving average: two passes of the trailing mean over h + 1 points, h =
 * nPeriod/2 (missing values skipped; a window without values gives NANUM); the first h
 * values of the first pass and the first 2h outputs are NANUM. Even periods act as the
 * next odd one (4 as 5), as callers expect. Returns 0; -1 when a pointer is NULL, nPeriod
 * < 1, nPeriod > nSize, or a pass fails. */
ZEMATH_API int zemath_tmovavg(double* pOut, const double* pIn, int nSize, int nPeriod,
                              int nMissingAsZero) ZEMATH_NOEXCEPT;

/* Weighted moving average: out[i] = sum_j pWeights[j] in[i-nPeriod+1+j] / W (pWeights[0]
 * on the oldest value, W the sum of the nPeriod weights) for i >= nPeriod-1; NANUM before,
 * and for a window holding a missing value. Returns 0; -1 when a pointer is NULL, nPeriod
 * < 1, nPeriod > nSize, a weight is NANUM, or W is 0. */
ZEMATH_API int zemath_wmovavg(double* pOut, const double* pIn, int nSize, const double* pWeights,
                              int nPeriod, int nMissingAsZero) ZEMATH_NOEXCEPT;

/* Moving root mean square over the trailing nPeriod values: sqrt of the mean of the
 * squares of the non-missing values in in[i-nPeriod+1..i] for i >= nPeriod-1 (NANUM for a
 * window without values, and before). A NaN in a window gives NaN there, an infinity
 * +infinity; other windows are unaffected. Returns 0; -1 when a pointer is NULL, nPeriod < 1
 * or nPeriod > nSize. */
ZEMATH_API int zemath_movrms(double* pOut, const double* pIn, int nSize, int nPeriod,
                             int nMissingAsZero) ZEMATH_NOEXCEPT;

/* Moving least-squares slope of in against its index over the trailing nPeriod values
 * (units: per sample), missing values left out; NANUM for fewer than two values in the
 * window, and before i = nPeriod-1; NaN for a window holding a NaN or an infinity. Returns 0;
 * -1 when a pointer is NULL, nPeriod < 2 or nPeriod > nSize. */
ZEMATH_API int zemath_movslope(double* pOut, const double* pIn, int nSize, int nPeriod,
                               int nMissingAsZero) ZEMATH_NOEXCEPT;

/* Circular running average: out[i] is the mean of the non-missing values among the
 * nPeriod points from i - nPeriod/2 (integer division), positions wrapping around the ends
 * of the array (centred for odd periods; one more point before i for even ones). NANUM
 * for a window without values; a window holding a NaN or infinities of both signs gives
 * NaN, one holding infinities of one sign that infinity. Returns 0; -1 when a pointer is
 * NULL, nPeriod < 1 or nPeriod > nSize. */
ZEMATH_API int zemath_d_running_ave_circular(double* pOut, const double* pIn, int nSize,
                                             int nPeriod, int nMissingAsZero) ZEMATH_NOEXCEPT;

ZEMATH_EXTERN_C_END

#endif /* ZEMATH_MOVING_H */
