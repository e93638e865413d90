/* zeMath: baselines under the peaks of a curve (pX, pY), X increasing: the straight line
 * through the end points, baseline points of a smooth curve, base markers on both sides
 * of each peak, baselines with the peaks masked or fitted to the ends, and noise levels.
 * Inputs are never modified; a refused call (negative return) writes nothing. -19: working storage
 * could not be allocated. */
#ifndef ZEMATH_BASELINE_H
#define ZEMATH_BASELINE_H

#include "types.h"

ZEMATH_EXTERN_C_BEGIN

/* nBase evenly spaced points from X[0] to X[nSize-1] into pBaseX (the last exactly
 * X[nSize-1]) and the straight line through the two end points at them into pBaseY. A
 * one-point curve, or equal end abscissas, give the constant Y[0]; nBase 1 gives the first
 * end point. Returns 0; -11 on a NULL pointer; -18 when nSize < 1 or nBase < 1. */
ZEMATH_API int zemath_init_baseline_by_connect_ends(int nSize, const double* pX, const double* pY,
                                                    int nBase, double* pBaseX,
                                                    double* pBaseY) ZEMATH_NOEXCEPT;

/* Indices (ascending) of the points of a smooth curve that lie low and flat at once:
 * |Y[i]| < 0.05*(max Y - min Y) and |Y'[i]| < 0.05*(max Y' - min Y'), with Y' the centred
 * finite-difference derivative (zemath_derivative, mode 0), written to pIndices (capacity
 * nSize). NANUM points are skipped. Returns the count (>= 0); -11 on a NULL pointer; -7
 * when nSize < 2; -8 when fewer than two usable points exist. */
ZEMATH_API int zemath_find_baseline_part_in_smooth_curve(int nSize, const double* pX,
                                                         const double* pY,
                                                         int* pIndices) ZEMATH_NOEXCEPT;

/* Two base markers per peak where the curve meets the baseline pBase (same indexing as
 * pY): with T half the mean absolute difference of successive Y, from each peak index p
 * walk left while |Y - B| > T (stopping at 0) and right likewise (stopping at nSize-1); a
 * peak already within T of the baseline gives L = R = p. Left marker of peak k at 2k,
 * right at 2k+1, in pMarkers (indices), pMarkerX and pMarkerY. pOption is reserved (must
 * be non-NULL, not read). Returns 0; -11 on a NULL pointer; -5 when nMarkers != 2*nPeaks;
 * -18 when nSize < 1 or nPeaks < 0; -6 when a peak index lies outside [0, nSize). */
ZEMATH_API int zemath_make_base_markers(int* pMarkers, double* pMarkerX, double* pMarkerY,
                                        int nMarkers, const int* pPeakIndices, int nPeaks,
                                        const double* pX, const double* pY, const int* pOption,
                                        const double* pBase, int nSize) ZEMATH_NOEXCEPT;

/* Noise level of pY[0..nSize-1]: the median absolute difference of successive usable
 * values (NANUM and NaN skipped) divided by 0.6745*sqrt(2), which estimates the standard
 * deviation of white Gaussian noise and is barely moved by peaks. NANUM when pY is NULL
 * or fewer than two usable values exist. */
ZEMATH_API double zemath_get_noise_level(int nSize, const double* pY) ZEMATH_NOEXCEPT;

/* Last index e of the run of points from nStart that stays straight: each next point is
 * accepted while its distance in Y from the line of the run so far is at most
 * T = dAbsTolerance + dRelTolerance * (max Y - min Y over the whole curve); the line is the
 * least-squares line of the run for nOption 0, the chord from the run's first to its last
 * accepted point for nOption 1 (a run of one point accepts the next one). One pass, O(1)
 * per point. Returns e (>= nStart); -11 on a NULL pointer; -18 when nStart lies outside
 * [0, nSize); -10 for another nOption. */
ZEMATH_API int zemath_check_linear(int nSize, const double* pX, const double* pY, int nStart,
                                   double dAbsTolerance, double dRelTolerance,
                                   int nOption) ZEMATH_NOEXCEPT;

/* Straight stretches of the curve: from s = 0, while s < nSize - step (step =
 * nMinPoints/3 rounded, at least 1), zemath_check_linear(s) is asked with dTolerance2 as
 * the absolute and dTolerance1 as the relative tolerance and nOption; a run [s, e] with
 * e - s > nMinPoints is stored into pStart/pEnd (capacity nMaxRegions) and the scan goes
 * on at e + 1, otherwise at s + step. Returns the number of regions; -11 on a NULL pointer;
 * -56 when one region more than nMaxRegions would be stored (the regions stored so far
 * stay written); a negative code of zemath_check_linear. */
ZEMATH_API int zemath_find_base_regions(int nSize, const double* pX, const double* pY,
                                        int nMinPoints, int nMaxRegions, int* pStart, int* pEnd,
                                        double dTolerance1, double dTolerance2,
                                        int nOption) ZEMATH_NOEXCEPT;

/* Baseline of a curve with its peaks masked out, called with a variable argument list:
 *     zemath_create_baseline_by_masking_peaks(nSize, pX, pY, nOutSize, pBaseX, pBaseY, nFlags)
 * with exactly these six arguments after nSize, of these types: const double* pX,
 * const double* pY, int nOutSize, double* pBaseX, double* pBaseY, int nFlags. Nothing after
 * nFlags is read. The counts and flags must be passed as int (not long or size_t) and the
 * arrays as pointers to double (a null pointer as NULL or (double*)0); a call with fewer
 * arguments, or arguments of other types, is undefined, as for any variable argument list.
 * X must be strictly increasing. The peaks of the directions in nFlags (bits 1, 2, 4 as
 * the peak detectors) are found by zemath_find_peaks_1st_derivative (unsmoothed); each
 * peak's extent [l, r] comes from zemath_find_peaks_partition with the patience
 * int(N / (0.005 * R) * 25), N the noise level
 * (zemath_get_noise_level; 0 when it cannot be formed) and R = |max Y - min Y| (1 when 0);
 * the extent is widened to l' = max(2l - m, 0), r' = min(2r - m, nSize - 1) with
 * m = (l + r)/2, and the points strictly between l' and r' are masked, as are NANUM and NaN
 * Y. pBaseX receives X and pBaseY the linear interpolation of the unmasked points at every
 * X (the nearest unmasked value beyond the outermost ones; the end points are never masked
 * by a peak). Curves of fewer than 3 points have no peaks. The arrays hold nSize values;
 * pBaseX may be pX, other outputs must not alias the inputs. Returns 0; -11 when pX, pY,
 * pBaseX or pBaseY is NULL; -18 when nSize < 1 or nOutSize != nSize; -17 when X is not
 * strictly increasing; -158 when no point is usable; a code of the peak search (-57). */
ZEMATH_API int zemath_create_baseline_by_masking_peaks(int nSize, ...) ZEMATH_NOEXCEPT;

/* Straight baseline fitted to the two ends of the curve: the weighted least-squares line
 * through the first nEndPoints and the last nEndPoints points, each end carrying half the
 * total weight (its usable points equally weighted), so an end with missing points still
 * pulls as hard as the other. With no spread in X the line is flat at the weighted mean.
 * pBase[i] receives the line at X[i] (NANUM for a NANUM X), nSize values. Points with a
 * NANUM or NaN X or Y are skipped. Returns 0; -11 on a NULL pointer; -18 when nSize < 2,
 * nEndPoints < 1 or nEndPoints > nSize/2; -158 when no end point is usable. */
ZEMATH_API int zemath_create_baseline_end_weighted_linear(int nSize, const double* pX,
                                                          const double* pY, int nEndPoints,
                                                          double* pBase) ZEMATH_NOEXCEPT;

/* Indices (ascending) of the baseline candidates by small curvature: the points whose
 * |Y''| <= dFraction * (max Y'' - min Y''), Y'' the centred finite-difference derivative
 * (zemath_derivative, mode 0) taken twice; points whose Y or Y'' is NANUM or NaN are
 * left out. pIndices has room for nSize entries. Returns the count (>= 0); -11 on a NULL
 * pointer; -7 when nSize < 3; -151 when dFraction is negative or NaN; -8 when fewer than
 * two usable points exist. */
ZEMATH_API int zemath_find_baseline_part_by_small_curvature(int nSize, const double* pX,
                                                            const double* pY, double dFraction,
                                                            int* pIndices) ZEMATH_NOEXCEPT;

/* As zemath_find_baseline_part_by_small_curvature with Y'' from the Savitzky-Golay second
 * derivative (zemath_savitsky_golay_derivative: half window (nSGPoints-1)/2 on both sides,
 * order nSGOrder, even spacing taken from the first two X; its end points as that export
 * gives them), which keeps noise from hiding the flat parts. Returns the count; -11; -7;
 * -151 as above; -35 when nSGPoints <= 3, nSGOrder < 2 or nSGOrder >= nSGPoints; a code of
 * zemath_savitsky_golay_derivative (-18 when the window exceeds the data, -1 when X[1]
 * equals X[0]). */
ZEMATH_API int zemath_find_baseline_part_by_small_curvature2(int nSize, const double* pX,
                                                             const double* pY, double dFraction,
                                                             int nSGPoints, int nSGOrder,
                                                             int* pIndices) ZEMATH_NOEXCEPT;

/* Noise level of the flattest part of pY[0..nSize-1]: the curve is cut into consecutive
 * segments of nSegment points (a shorter remainder joins the last segment), the segment of
 * smallest range of its usable values (first among equals; at least two usable values) is
 * the flat part, and its zemath_get_noise_level is returned. NANUM when pY is NULL,
 * nSegment < 3, nSegment > nSize, no segment holds two usable values, or on allocation
 * failure. */
ZEMATH_API double zemath_get_noise_level_of_flat_part(int nSize, const double* pY,
                                                      int nSegment) ZEMATH_NOEXCEPT;

ZEMATH_EXTERN_C_END

#endif /* ZEMATH_BASELINE_H */
