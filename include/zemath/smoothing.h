/* zeMath: smoothing family. One-dimensional smoothers over caller arrays of doubles:
 * Savitzky-Golay smoothing and differentiation, adjacent averages (plain, weighted and
 * one-sided), a moving percentile (median) filter, repeated binomial smoothing, an FFT
 * low-pass smoother and local regression (loess), with the dispatcher zemath_smooth, and
 * the least-squares polynomial fit behind the end fits.
 *
 * Arrays: pIn (or pY) and pOut hold nSize values. pOut must not overlap the input except
 * where a function says so. Inputs are never modified. A refused call (non-zero status
 * from the argument checks) writes nothing.
 *
 * End modes (how a window filter sees values beyond the ends of the data):
 *   0  no virtual values: polynomial end fits (Savitzky-Golay), a symmetric window that
 *      shrinks at the ends (averages, median), linear extrapolation (binomial)
 *   1  mirror: the value at -1-k is x[k], at n+k is x[n-1-k] (the end point is repeated;
 *      the binomial filter instead mirrors about the end point: x[-1] = x[1])
 *   2  repeat the end value
 *   3  periodic: the data continue from the opposite end
 *   4  straight-line extrapolation from the end values
 *   5  zeros (Savitzky-Golay, median); the same as 0 for the plain adjacent average
 *
 * Missing values (NANUM): skipped by the averages and the median filter as documented per
 * function; the Savitzky-Golay, binomial, FFT smoothers treat every value as a number.
 * NaN is never missing and propagates.
 */
#ifndef ZEMATH_SMOOTHING_H
#define ZEMATH_SMOOTHING_H

#include "types.h"

ZEMATH_EXTERN_C_BEGIN

/* Dispatcher: nMethod 0 zemath_adjave_smooth(pIn, pOut, nSize, nHalf, nEndMode, bWeighted);
 * 1 zemath_savitsky_golay(pIn, pOut, nSize, nHalf, nRight, nPolyOrder, nDeriv, nEndMode);
 * 2 zemath_median_filter(nSize, pIn, pOut, nHalf, dPercent, nEndMode, bPercentileMethod);
 * 3 zemath_binomial_smooth(nSize, pIn, pOut, nEndMode, nPasses). Arguments not used by the
 * chosen filter are ignored. Only end modes 0..4 are accepted here, although two filters
 * accept 5 themselves. Returns -5 when nSize < 1; -11 when pIn or pOut is NULL; -18 when
 * nEndMode or nMethod (as unsigned) exceeds 4 or 3; otherwise the filter's status. */
ZEMATH_API int zemath_smooth(int nSize, const double* pIn, double* pOut, int nHalf, int nMethod,
                             int nEndMode, int nRight, int nPolyOrder, int nDeriv, double dPercent,
                             int bWeighted, int bPercentileMethod, int nPasses) ZEMATH_NOEXCEPT;

/* Savitzky-Golay filter with nLeft points before and nRight after each point (nRight < 0:
 * nRight = nLeft; window W = nLeft + 1 + nRight) and a local polynomial of degree
 * nPolyOrder. nDeriv 0 smooths; nDeriv d > 0 yields the local polynomial's coefficient a_d
 * in sample units (the d-th derivative divided by d!; no step size). End modes 1..5 pad
 * the data (sources: max(2, side count) end points; mode 4 the line through the two
 * outermost points). Mode 0 fits the polynomial to the first and last W points instead
 * and evaluates it at out[0..nLeft] (nDeriv 0) or, for nDeriv > 0, its exact d-th
 * derivative at out[0..nLeft-1]; likewise at the right end. Returns 0; -18 when nLeft < 0,
 * nPolyOrder < 1, nDeriv < 0, nEndMode > 5, 0 < nDeriv with nPolyOrder < nDeriv,
 * nPolyOrder > W - 1 or W > nSize (checked in that order, before the pointers); -11 when
 * pIn or pOut is NULL; -1 when the coefficients cannot be computed; -19 on allocation
 * failure. */
ZEMATH_API int zemath_savitsky_golay(const double* pIn, double* pOut, int nSize, int nLeft,
                                     int nRight, int nPolyOrder, int nDeriv,
                                     int nEndMode) ZEMATH_NOEXCEPT;

/* Savitzky-Golay derivative of order nDeriv of (pX, pY) with end mode 0, scaled by
 * |1/(pX[1]-pX[0])|^d * d! (even spacing assumed; the step comes from the first two X
 * values only), negated for odd d when pX[0] > pX[1]. The end points already carry d!
 * from the polynomial derivative, so for d >= 2 they are scaled by d! once more than the
 * interior (kept as callers expect). bSnapZeroCrossings: scanning forward, when out[i] and
 * out[i+1] have opposite signs out[i+1] becomes 0.0 and the scan continues at i+2.
 * nRight = -1 means nRight = nLeft. Returns 0; -11 when a pointer is NULL; -18 when
 * nSize < 2; -1 when pX[1] approximately equals pX[0] (relative 1e-11); -18 when
 * nSize < 3, nLeft < 1, nRight < 1 or nLeft + nRight > nSize; else any code of
 * zemath_savitsky_golay. */
ZEMATH_API int zemath_savitsky_golay_derivative(const double* pX, const double* pY, double* pOut,
                                                int nSize, int nLeft, int nRight, int nPolyOrder,
                                                int nDeriv,
                                                bool bSnapZeroCrossings) ZEMATH_NOEXCEPT;

/* Adjacent average over 2*nHalf+1 positions centred on each point, missing values neither
 * summed nor counted (a window without values gives NANUM; NaN and infinities reach only
 * the windows that hold them, as a direct sum would). End modes 0..5 (0 and 5: the
 * window stays symmetric and shrinks at the ends, out[0] = x[0]; 4 extrapolates from the
 * first two non-missing values scanning inward). bWeighted: weights 1 - (d/(nHalf+1))^2 at
 * distance d, end modes 0..4 only. nSize 1 returns 0 without writing. Returns 0, or -9 on
 * any failure: a NULL pointer, nHalf < 0, nHalf >= nSize, an end mode out of range, end
 * mode 4 with fewer than two non-missing values at an end, allocation failure. */
ZEMATH_API int zemath_adjave_smooth(const double* pIn, double* pOut, int nSize, int nHalf,
                                    int nEndMode, bool bWeighted) ZEMATH_NOEXCEPT;

/* Mean of the non-missing values of pIn[max(0, i-nLeft) .. min(nSize-1, i+nRight)] into
 * pOut[i] (the window is cut at the ends); NANUM for a window without values; a window
 * holding a NaN or infinities of both signs gives NaN, infinities of one sign that
 * infinity, and no other window is affected. With
 * nMissingAsZero = 1 missing values count as 0.0. pOut may be the same array as pIn.
 * Returns 0 (nSize < 2: nothing written); -1 when a pointer is NULL or nLeft or nRight
 * is negative; -19 on allocation failure. */
ZEMATH_API int zemath_adj_average(double* pOut, const double* pIn, int nSize, int nLeft, int nRight,
                                  int nMissingAsZero) ZEMATH_NOEXCEPT;

/* Moving percentile (dPercent 50: median) of windows of 2*nHalf+1 values, each taken by
 * the percentile engine of the statistics family (rule 0 when bPercentileMethod is set,
 * rule 2 otherwise), missing values skipped. End mode 0: symmetric windows shrinking at
 * the ends (1, 3, 5, ... values); modes 1..5: nHalf virtual values per side from source
 * runs of nHalf end points (mode 4: the least-squares line through them). In modes 1..5 a
 * window holding only NANUM gives NANUM. Returns 0; -11 when a pointer is NULL; -151 when
 * dPercent is outside [0, 100] (or NaN), nHalf < 0, 2*nHalf+1 > nSize or nEndMode > 5;
 * -155 in modes 1..5 when every window was entirely missing (kept as callers expect);
 * -19 on allocation failure. */
ZEMATH_API int zemath_median_filter(int nSize, const double* pIn, double* pOut, int nHalf,
                                    double dPercent, int nEndMode,
                                    bool bPercentileMethod) ZEMATH_NOEXCEPT;

/* nPasses passes of the kernel (1, 2, 1)/4 with one virtual neighbour per end: modes 0
 * and 4 linear extrapolation (2 x[0] - x[1]), 1 mirror about the end point (x[1]),
 * 2 the end value, 3 periodic. pOut may be the same array as pIn. Beyond 1024 passes and
 * 2^26 point updates (nSize x nPasses) the passes are applied at once as the same linear
 * map in the frequency domain, so the time stays O(nSize log nSize) for any nPasses; the
 * result agrees with the repeated passes to rounding for finite data, while a NaN or
 * infinite value then makes every output NaN. Returns 0; -5 when nSize < 2 or nPasses < 1; -18
 * when nEndMode is outside 0..4; -11 when a pointer is NULL; -19 on allocation failure
 * (pOut untouched). */
ZEMATH_API int zemath_binomial_smooth(int nSize, const double* pIn, double* pOut, int nEndMode,
                                      int nPasses) ZEMATH_NOEXCEPT;

/* FFT low-pass: the signal is taken to span the unit interval (sampling interval
 * 1/(nSize-1)); the frequency components strictly below dCutoff cycles per unit are kept,
 * the others removed (rectangular window, gain 1 or 0; the mean is always kept), and the
 * result written to pOut. Any length. A cutoff of 0 leaves the mean; a cutoff above the
 * Nyquist frequency (nSize-1)/2 returns the data. Returns 0; -11 when pIn or pOut is
 * NULL; the FFT filter's codes: -151 when nSize < 1 or dCutoff is negative or NaN, -19
 * on allocation failure. */
ZEMATH_API int zemsp_fft_filter_smoothing(int nSize, const double* pIn, double* pOut,
                                          double dCutoff) ZEMATH_NOEXCEPT;

/* Local regression of pY on pX: at each point a weighted least-squares polynomial over the
 * ceil(*pSpan * m) nearest usable points (m usable points; at least degree + 1), tricube
 * weights in the distance scaled by the farthest of them. Degree 2 when nDegreeFlag is
 * non-zero and nMethod is not 2, else 1. nMethod 0: plain loess; 1 and 2: three
 * robustness iterations (bisquare weights of the residuals over six median absolute
 * residuals; method 2 is the classic lowess). X in any order, ties allowed. Points whose
 * X or Y is NANUM are left out and receive NANUM. *pSpan (0 < span <= 1) is read and the
 * fraction actually used written back. bShowProgress with nSize >= 10000 reports progress
 * ("Smoothing...", "Smooth") through the callback of zemath_set_progress_callback.
 * Returns 0; -11 when a pointer is NULL; -18 when nSize < 1 or fewer usable points than
 * degree + 1; -10 when nMethod is not 0, 1 or 2; -151 when *pSpan is not in (0, 1]; -19 on
 * allocation failure. */
ZEMATH_API int zemath_loess_xUnevenly(int nSize, int nMethod, int nDegreeFlag, double* pSpan,
                                      const double* pX, const double* pY, double* pOut,
                                      bool bShowProgress) ZEMATH_NOEXCEPT;

/* zemath_loess_xUnevenly with X = 0, 1, ..., nSize-1. */
ZEMATH_API int zemath_loess_xEvenly(int nSize, int nMethod, int nDegreeFlag, double* pSpan,
                                    const double* pY, double* pOut,
                                    bool bShowProgress) ZEMATH_NOEXCEPT;

/* Least-squares polynomial of degree nDegree through the points (pX, pY) whose X and Y
 * are not NANUM: pCoef[0..nDegree], constant term first. Returns 0; -11 when a pointer is
 * NULL; -18 when nDegree < 0, nSize < 1 or fewer than nDegree + 1 usable points; -1 when
 * the points do not determine the polynomial (too few distinct X); -19 on allocation
 * failure. */
ZEMATH_API int zemath_polynomial_fit(const double* pX, const double* pY, int nSize, int nDegree,
                                     double* pCoef) ZEMATH_NOEXCEPT;

/* Value at dX of the polynomial pCoef[0] + pCoef[1] x + ... + pCoef[nDegree] x^nDegree
 * (Horner); NANUM when pCoef is NULL, nDegree < 0 or dX is NANUM. */
ZEMATH_API double zemath_polynomial(const double* pCoef, int nDegree, double dX) ZEMATH_NOEXCEPT;

ZEMATH_EXTERN_C_END

#endif /* ZEMATH_SMOOTHING_H */
