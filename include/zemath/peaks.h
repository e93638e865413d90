/* zeMath: peak finding on a curve (pX, pY) and filters of peak lists.
 *
 * Peak list convention of the detectors: *pnSize is in/out, on entry the number of curve
 * points, on return the number of peaks found; pPeakX, pPeakY and pIndices receive each
 * peak's X, Y and index into the caller's arrays, in increasing order of the prepared data;
 * the caller sizes them for *pnSize entries (entries past the count are left as they were).
 * pIndices may be NULL (then not written). Outputs must not alias the inputs.
 * Direction flags (nFlags): 1 positive peaks (maxima), 2 negative peaks (minima), 4 ignore
 * the sign of Y (without it a positive peak needs Y > 0 and a negative peak Y < 0).
 * Among equal values the leftmost holds a window's extreme, so a flat top is reported at
 * its left point only. Inputs are never modified; a refused call (negative return) writes
 * nothing. -19: working storage could not be allocated. */
#ifndef ZEMATH_PEAKS_H
#define ZEMATH_PEAKS_H

#include "types.h"

ZEMATH_EXTERN_C_BEGIN

/* Centres c of windows of 2*nHalf+1 points (nHalf 0 counts as 1) that are the window
 * maximum (bit 1) or else the window minimum (bit 2), sign rule unless bit 4; points
 * closer than nHalf to either end are never reported. X not in increasing order is sorted
 * (stably, Y carried along) and indices are mapped back. NaN in Y: the running tracker's
 * answer (a NaN that opens a rescan of the window holds the extreme until it leaves).
 * Returns 0; -11 when pnSize, pX, pY, pPeakX or pPeakY is NULL; -18 when *pnSize <= 0,
 * nHalf < 0 or *pnSize <= 2*nHalf+1. */
ZEMATH_API int zemath_find_peaks_by_local_maximum(int* pnSize, const double* pX, const double* pY,
                                                  double* pPeakX, double* pPeakY, int* pIndices,
                                                  int nFlags, int nHalf) ZEMATH_NOEXCEPT;

/* As zemath_find_peaks_by_local_maximum without the sign rule (bit 4 is irrelevant). The
 * window runs over the caller's Y in the given order; on unsorted X the outputs are taken
 * from the X-sorted copy at the positions found (kept deliberately for existing callers).
 * Same codes. */
ZEMATH_API int zemath_find_local_extremes(int* pnSize, const double* pX, const double* pY,
                                          double* pPeakX, double* pPeakY, int* pIndices, int nFlags,
                                          int nHalf) ZEMATH_NOEXCEPT;

/* Peaks within a window of dWindowWidth X units. Evenly spaced X (relative tolerance 1e-8)
 * is used as given; monotonic uneven X is resampled linearly onto an even grid from X[0]
 * to X[n-1]; other X is sorted. The width becomes w = round(dWindowWidth/|step|) points,
 * made odd; each point i is tested over the window of half-width min(i, w/2, n-1-i), and a
 * candidate (the window's leftmost maximum for bit 1 or minimum for bit 2, sign rule
 * unless bit 4; NaN values are ignored and never peaks) is kept when |Y[i] - Y[i+-hw]| >=
 * dMinHeight at both window ends (so end points are kept only when dMinHeight <= 0).
 * Mapping back: sorted data give the caller's index; resampled data give, of the two
 * caller points nearest the grid X, the higher (peak Y > 0) or lower one, whose index and
 * Y are reported with the grid X. Returns 0; -11 as the local maximum; -18 when
 * *pnSize < 3, when the width is negative or NaN, when w exceeds the point count, or when
 * uneven X leaves fewer than two usable (non-NANUM) points to resample. */
ZEMATH_API int zemath_find_peaks_by_search_window(int* pnSize, const double* pX, const double* pY,
                                                  double* pPeakX, double* pPeakY, int* pIndices,
                                                  int nFlags, double dWindowWidth,
                                                  double dMinHeight) ZEMATH_NOEXCEPT;

/* Marks each of the *pnPeaks peaks with |Y| < dMinHeight (X and Y become NANUM, index 0),
 * then reorders the list by |Y|, largest first (stable), and sets *pnPeaks to the position
 * of the first entry whose index is 0 (unchanged when none). Kept deliberately: a kept peak
 * at the caller's point 0 also ends the count. Returns 0; -11 on a NULL pointer; -18 when
 * *pnPeaks < 1. */
ZEMATH_API int zemath_test_peaks_by_height(int* pnPeaks, double* pPeakX, double* pPeakY,
                                           int* pIndices, double dMinHeight) ZEMATH_NOEXCEPT;

/* Reorders the nPeaks peaks by |Y|, largest first (stable), then sets X and Y of every
 * entry from position nKeep on to NANUM and its index to -1. Returns 0; -11 on a NULL
 * pointer; -18 when nPeaks < 1 or nKeep < 1; -25 when nKeep > nPeaks. */
ZEMATH_API int zemath_test_peaks_by_number(int nPeaks, double* pPeakX, double* pPeakY,
                                           int* pIndices, int nKeep) ZEMATH_NOEXCEPT;

/* pPeakX[j] = pX[pIndices[j]], pPeakY[j] = pY[pIndices[j]] for j = 0..nPeaks-1 in order;
 * the first index outside [0, nSize) stops the copy with -6 (entries copied stay).
 * Returns 0 (at once when nPeaks < 1); -11 on a NULL pointer; -6 as said. */
ZEMATH_API int zemath_match_peaks_centers_by_index(const double* pX, const double* pY, int nSize,
                                                   const int* pIndices, double* pPeakX,
                                                   double* pPeakY, int nPeaks) ZEMATH_NOEXCEPT;

/* The k-th order statistic of pData[0..nSize-1] (k from 0): ascending order for
 * nDirection 0, descending otherwise; NaN orders after every number in both. NANUM when
 * pData is NULL, k < 0 or k >= nSize, or on allocation failure. */
ZEMATH_API double zemath_find_k_min_max(const double* pData, int nSize, int k,
                                        int nDirection) ZEMATH_NOEXCEPT;

/* Peaks where the first derivative changes sign: from rising to not rising for bit 1, from
 * falling to not falling for bit 2 (sign rule unless bit 4); both searches run and the
 * peaks are reported in index order. X not in increasing order is sorted first (stably)
 * and indices are mapped back. Unsmoothed (bSmoothDerivative false): point i is a maximum
 * when the slope from i-1 to i is > 0 and the slope from i to i+1 is <= 0 (zemath_derivative
 * modes 4 and 2; a flat top is reported at its left point; end points never). Smoothed:
 * the Savitzky-Golay first derivative over nSGPoints points (half window (nSGPoints-1)/2 on
 * both sides, order nSGOrder, zero crossings snapped); a change from > 0 to <= 0 between i
 * and i+1 gives the higher of the two points (the left one on equal Y), the mirror for
 * minima. Returns 0; -11 when pnSize, pX, pY, pPeakX or pPeakY is NULL; -18 when
 * *pnSize <= 0; -35 when smoothing is asked with nSGPoints <= 3, nSGOrder <= 0 or
 * nSGOrder >= nSGPoints; -57 when the derivative cannot be formed (too few points or usable
 * points, a smoothing window wider than the data, equal first abscissas). The search on
 * the derivative itself cannot fail, so -58 is not returned. */
ZEMATH_API int zemath_find_peaks_1st_derivative(int* pnSize, const double* pX, const double* pY,
                                                double* pPeakX, double* pPeakY, int* pIndices,
                                                int nFlags, bool bSmoothDerivative, int nSGPoints,
                                                int nSGOrder) ZEMATH_NOEXCEPT;

/* Peaks at local extremes of the second derivative over windows of 2*nHalf+1 points (nHalf
 * 0 counts as 1): a centre where Y'' is the window's leftmost minimum and negative is a
 * maximum of Y (bit 1); where Y'' is the window maximum and positive, a minimum (bit 2);
 * sign rule on Y unless bit 4. Resolves shoulders that have no maximum of their own. Y''
 * is the centred finite-difference derivative (zemath_derivative, mode 0) taken twice; X
 * not in increasing order is sorted first. On irregular X (or noisy Y) this Y'' is rough
 * and gives extra extremes: smooth first or use zemsp_find_peaks_2nd_derivative. Returns 0;
 * -11 as the local maximum; -18 when
 * *pnSize < 3, nHalf < 0, *pnSize <= 2*max(nHalf,1)+1, or the derivative cannot be
 * formed. */
ZEMATH_API int zemath_find_peaks_2nd_derivative(int* pnSize, const double* pX, const double* pY,
                                                double* pPeakX, double* pPeakY, int* pIndices,
                                                int nFlags, int nHalf) ZEMATH_NOEXCEPT;

/* As zemath_find_peaks_2nd_derivative with Y'' from the Savitzky-Golay second derivative
 * over nSGPoints points (half window (nSGPoints-1)/2 each side) of order nSGOrder. -18 also
 * when nSGPoints <= 3, nSGOrder < 2, nSGOrder >= nSGPoints or the window exceeds the
 * data. */
ZEMATH_API int zemsp_find_peaks_2nd_derivative(int* pnSize, const double* pX, const double* pY,
                                               double* pPeakX, double* pPeakY, int* pIndices,
                                               int nFlags, int nHalf, int nSGPoints,
                                               int nSGOrder) ZEMATH_NOEXCEPT;

/* Two markers per peak where the curve falls to dHeightFraction of the peak's Y on each
 * side: from the peak index p the walk goes left (then right) while the point stays beyond
 * the level L = dHeightFraction*Y[p] (above it for Y[p] > 0, below it otherwise), stopping
 * at the first point at or past L or at the end of the data. The left marker of peak k is
 * stored at 2k, the right at 2k+1: pMarkers gets that point's index, pMarkerX the linear
 * crossing of L between it and its inner neighbour (the end point's X when the curve never
 * reaches L), pMarkerY the level L (the end point's Y then). With dHeightFraction 0.5 the
 * distance of the two marker X is the full width at half maximum. Returns 0; -11 on a NULL
 * pointer; -18 when nSize < 1 or nPeaks < 0; -6 when a peak index lies outside
 * [0, nSize); -151 when dHeightFraction is not in [0, 1). */
ZEMATH_API int zemath_find_markers_of_peaks_by_height_and_width(
    int nSize, const double* pX, const double* pY, int nPeaks, const int* pPeakIndices,
    double dHeightFraction, int* pMarkers, double* pMarkerX, double* pMarkerY) ZEMATH_NOEXCEPT;

/* Markers as zemath_find_markers_of_peaks_by_height_and_width, keeping only the peaks that
 * are high and wide enough: |Y[p]| >= dMinHeight and |right marker X - left marker X| >=
 * dMinFullWidth (the full width at dHeightFraction of the height; a NaN height or width
 * fails). pPeakIndices (in/out, *pnPeaks entries) is compacted in place to the kept peaks,
 * in their order, and their markers go to 2k and 2k+1 for kept peak k; *pnPeaks receives
 * the number kept. pMarkers, pMarkerX and pMarkerY hold 2 * *pnPeaks entries; entries past
 * the kept ones are left as they were. Returns 0; -11 on a NULL pointer; -18 when nSize < 1
 * or *pnPeaks < 0; -6 when a peak index lies outside [0, nSize); -151 when dHeightFraction
 * is not in [0, 1) or dMinHeight or dMinFullWidth is NaN. */
ZEMATH_API int zemath_find_markers_of_peaks_by_height_and_full_width(
    int nSize, const double* pX, const double* pY, int* pnPeaks, int* pPeakIndices,
    double dHeightFraction, double dMinHeight, double dMinFullWidth, int* pMarkers,
    double* pMarkerX, double* pMarkerY) ZEMATH_NOEXCEPT;

/* Markers of peaks given by centre abscissas (from a fit or another detector, not
 * necessarily data points), X ascending: for each centre c the peak point is the most
 * extreme point with |X - c| <= dHalfWidth, a maximum when the point nearest c has Y > 0
 * and a minimum otherwise (leftmost among equals; the nearest point itself when no point is
 * more extreme). Its markers are placed as by zemath_find_markers_of_peaks_by_height_and_width
 * (left at 2k, right at 2k+1 of pMarkers, pMarkerX, pMarkerY, 2*nPeaks entries each), and
 * its index goes to pPeakIndices[k] (nPeaks entries; may be NULL). Returns 0; -11 when pX,
 * pY, pCenterX, pMarkers, pMarkerX or pMarkerY is NULL; -18 when nSize < 1 or nPeaks < 0;
 * -151 when dHeightFraction is not in [0, 1) or dHalfWidth is negative or NaN; -17 when X
 * decreases somewhere; -6 when a centre is NaN or outside [X[0], X[nSize-1]]. */
ZEMATH_API int zemath_find_markers_of_peak_centers_by_height_and_width(
    int nSize, const double* pX, const double* pY, int nPeaks, const double* pCenterX,
    double dHeightFraction, double dHalfWidth, int* pMarkers, double* pMarkerX, double* pMarkerY,
    int* pPeakIndices) ZEMATH_NOEXCEPT;

/* Extent of one peak, e.g. to mask it out of a baseline: the peak is the usable point
 * (X and Y neither NANUM nor NaN) nearest dPeakX (first on equal distances), a maximum
 * for nFlags bit 1 or a minimum for bit 2 (exactly one of the two; other bits ignored).
 * From it the walk goes down the curve (up for a minimum) on each side in index order and
 * ends at the lowest (highest) point reached once more than nThreshold consecutive usable
 * points fail to go lower (higher), or at the data's end: nThreshold 0 stops at the first
 * valley point, larger values step over noise wiggles of up to nThreshold points. Equal
 * values count as failing. *pLeft and *pRight receive the two end indices. X is expected
 * in ascending order. Returns 0; -11 when pX, pY, pLeft or pRight is NULL; -18 when
 * nSize < 1; -10 when nFlags selects neither or both directions; -14 when nThreshold < 0;
 * -6 when no point is usable or dPeakX is NaN or outside the usable X range. */
ZEMATH_API int zemath_find_peaks_partition(int nSize, const double* pX, const double* pY,
                                           double dPeakX, int nFlags, int nThreshold, int* pLeft,
                                           int* pRight) ZEMATH_NOEXCEPT;

/* Peaks from a first derivative the caller supplies (pDY, e.g. smoothed, same indexing as
 * pY), located between the points: where pDY[i] > 0 and pDY[i+1] <= 0 (bit 1) or
 * pDY[i] < 0 and pDY[i+1] >= 0 (bit 2), the peak X is the root of the linearly interpolated
 * derivative and the peak Y is Y[i] plus the integral of that derivative from X[i] to the
 * root (both exact for a parabolic top); the sign rule on that Y unless bit 4. pIndices
 * receives the nearer of points i and i+1 (i on a tie). Pairs with a NANUM or NaN in X, Y
 * or the derivative are passed over. Peak list convention of the detectors (at most
 * *pnSize - 1 peaks, in increasing X). Returns 0; -11 when any pointer is NULL (pIndices
 * included); -18 when *pnSize < 2; -17 when X is not strictly increasing. */
ZEMATH_API int zemath_find_peak_by_derivative_centralized(int* pnSize, const double* pX,
                                                          const double* pY, const double* pDY,
                                                          double* pPeakX, double* pPeakY,
                                                          int* pIndices,
                                                          int nFlags) ZEMATH_NOEXCEPT;

/* Peak picking with height, distance and prominence criteria. Candidates are the strict
 * local maxima (bit 1) and minima (bit 2) of Y: a point higher than its usable left
 * neighbour and than the first following point of another value (a plateau is reported
 * once, at its left point, unlike a midpoint convention; end points never), with the sign
 * rule unless bit 4. A candidate is kept when |Y| >= dMinHeight; then, taller peaks first
 * (stable on equal heights), a peak fewer than nMinDistance points from one already kept
 * (of the same kind) is dropped; then a peak whose prominence is below dMinProminence is
 * dropped (prominence: Y[p] minus the higher of the lowest values between p and the
 * nearest strictly higher point on either side, or the data's end; for minima the same on
 * -Y). nMinDistance 1 and dMinProminence <= 0 disable those tests. NANUM and NaN points are
 * never peaks and are passed over. X not in increasing order is sorted first (stably) and
 * indices are mapped back. Peak list convention of the detectors; O(n log n) at most.
 * Returns 0; -11 when pnSize, pX, pY, pPeakX or pPeakY is NULL; -18 when *pnSize < 1;
 * -151 when dMinHeight or dMinProminence is NaN or nMinDistance < 1. */
ZEMATH_API int zemath_pick_peaks(int* pnSize, const double* pX, const double* pY, double* pPeakX,
                                 double* pPeakY, int* pIndices, int nFlags, double dMinHeight,
                                 double dMinProminence, int nMinDistance) ZEMATH_NOEXCEPT;

/* Trims a curve holding one peak to the peak's own part, in place: Y'' is the centred
 * finite-difference derivative (zemath_derivative, mode 0) taken twice; the peak is the
 * point of largest |Y| (first among equals); from it each side goes through the core
 * (curvature of the peak's sign) and then up the tail's curvature to its first local
 * extreme, where the part ends (about 1.73 standard deviations from the centre of a
 * Gaussian). Points outside the part get NANUM in both pX and pY; the rest stay. Noisy Y
 * gives a rough Y'' and a tighter part: smooth first. Fewer than three points, fewer than
 * two usable ones, or an all-zero curve: nothing changes. Returns 0; -11 when pX or pY is
 * NULL; -19 as said above. */
ZEMATH_API int zemath_trim_peak_part_by_2nd_derivative(int nSize, double* pX,
                                                       double* pY) ZEMATH_NOEXCEPT;

ZEMATH_EXTERN_C_END

#endif /* ZEMATH_PEAKS_H */
