/* zeMath: point look-ups on a curve (pX, pY) for peak analysis (level crossings, the X of
 * a Y value, the Y at an X) and peak measures (moments, half-height positions, inflection
 * points, generated peaks, segments by height). Missing points (NANUM) are skipped where
 * each entry says so; NaN is not missing. Inputs are never modified; a refused call (negative
 * return) writes nothing. -19: working storage could not be allocated. */
#ifndef ZEMATH_PEAK_MEASURES_H
#define ZEMATH_PEAK_MEASURES_H

#include "types.h"

ZEMATH_EXTERN_C_BEGIN

/* Abscissas where the piecewise-linear curve crosses dLevel, in index order, into pXCross
 * (capacity nSize: there are at most nSize crossings); *pnCross receives the count. Each
 * neighbour pair with (Y[i]-L)*(Y[i+1]-L) < 0 gives the linear root; a point whose Y equals
 * the level exactly is itself a crossing (its X), the last point included, so a level equal
 * to a data value is reported once. X must be monotonic (equal neighbours allowed).
 * Returns 0; -11 when pX, pY, pnCross or pXCross is NULL; -18 when nSize < 1 or X is not
 * monotonic. */
ZEMATH_API int zemath_get_level_crossing(int nSize, const double* pX, const double* pY,
                                         double dLevel, int* pnCross,
                                         double* pXCross) ZEMATH_NOEXCEPT;

/* The X of the data point whose Y is nearest to dY, found by bisection over the points
 * sorted by Y (stable): a bisection midpoint whose Y equals dY is taken at once; otherwise
 * the nearer of the two bracketing points, the upper one on a tie. Never interpolates
 * (deliberately: the result is always an X of the data). Returns 0; -11 on a NULL pointer;
 * -18 when nSize < 2. */
ZEMATH_API int zemath_x_from_y(int nSize, const double* pX, const double* pY, double dY,
                               double* pXOut) ZEMATH_NOEXCEPT;

/* Linear interpolation (extrapolation outside the data, along the end interval) of Y at dX.
 * Unless bSorted the points are first sorted by X (stable). bEvenlySpaced: the interval is
 * the integer part of (dX - X[0])/(X[1] - X[0]) limited to [0, nSize-2]; otherwise
 * bisection, where a midpoint whose X equals dX gives its Y at once. The name is spelt so
 * deliberately. Returns 0; -11 on a NULL pointer; -18 when nSize < 2. */
ZEMATH_API int zemath_y_form_x(int nSize, const double* pX, const double* pY, double dX,
                               double* pYOut, bool bSorted, bool bEvenlySpaced) ZEMATH_NOEXCEPT;

/* Peak shapes for nShape: 0 Gaussian, 1 Lorentzian. */
enum zemath_peak_shape { ZEMATH_PEAK_GAUSSIAN = 0, ZEMATH_PEAK_LORENTZIAN = 1 };

/* pY[i] = dOffset + the peak of height dHeight and full width at half maximum dFWHM centred
 * at dCentre, at pX[i], for i < nSize: Gaussian h exp(-4 ln2 (x-c)^2 / w^2), Lorentzian
 * h (w/2)^2 / ((x-c)^2 + (w/2)^2). pY may be pX (in place). NANUM X gives NANUM. Returns 0;
 * -11 on a NULL pointer; -18 when nSize < 1; -10 for another nShape; -151 when dFWHM is not
 * a positive finite number. */
ZEMATH_API int zemath_generate_peak_data(int nSize, const double* pX, double* pY, int nShape,
                                         double dCentre, double dHeight, double dFWHM,
                                         double dOffset) ZEMATH_NOEXCEPT;

/* Moments of the peak h = Y - base over the points nFirst..nLast (inclusive, X ascending),
 * by the trapezoid rule: pMoments[0] area (integral of h), [1] centroid (mean X weighted by
 * h), [2] variance, [3] skewness (third central moment over variance^1.5), [4] kurtosis
 * (fourth central moment over variance^2; 3 for a Gaussian). pBase (same indexing as pY)
 * may be NULL for a zero baseline. Points with a NANUM X, Y or base are skipped. When the
 * area is 0 the other four are NANUM; when the variance is 0 skewness and kurtosis are
 * NANUM. Returns 0; -11 when pX, pY or pMoments is NULL; -18 when nFirst < 0,
 * nLast >= nSize or fewer than two points lie in the range. */
ZEMATH_API int zemath_calc_peak_moments(int nSize, const double* pX, const double* pY,
                                        const double* pBase, int nFirst, int nLast,
                                        double* pMoments) ZEMATH_NOEXCEPT;

/* As zemath_calc_peak_moments, with the integration rule nMethod (0 trapezoid, 1 piecewise
 * quadratics through consecutive point triples: exact for quadratics on any spacing,
 * Simpson's rule on even spacing) and three more results: pMoments[5] the height (the
 * largest |Y - base|, signed; first among equals), [6] its X, [7] the full width at half
 * that height (linear crossings of the half level on each side within the range; NANUM
 * when a side never falls to it). pMoments holds 8 values. Returns 0; -11 when pX, pY or
 * pMoments is NULL; -18 as zemath_calc_peak_moments; -10 for another nMethod. */
ZEMATH_API int zemath_calc_peak_moments_ex(int nSize, const double* pX, const double* pY,
                                           const double* pBase, int nFirst, int nLast, int nMethod,
                                           double* pMoments) ZEMATH_NOEXCEPT;

/* The peak's data above its baseline: pOut[i] = pY[i] - pBase[i] (NANUM where either is
 * NANUM); nOption 1 sets negative results to 0 (positive peaks), 2 sets positive results to
 * 0 (negative peaks), 0 leaves them. pOut may be pY or pBase (element-wise). Returns 0;
 * -11 on a NULL pointer; -18 when nSize < 1; -10 for another nOption. */
ZEMATH_API int zemath_adjust_data_of_peaks(int nSize, const double* pY, const double* pBase,
                                           double* pOut, int nOption) ZEMATH_NOEXCEPT;

/* nSize evenly spaced abscissas for generating a peak (with zemath_generate_peak_data):
 * from dCentre - dHalfSpan*dFWHM to dCentre + dHalfSpan*dFWHM, symmetric about the centre
 * (mirror points are exact negatives about it; an odd count puts one point exactly on it;
 * the ends are exact). nSize 1 gives the centre. Returns 0; -11 when pX is NULL; -18 when
 * nSize < 1; -151 when dCentre is not finite, or dFWHM, dHalfSpan or their product is not
 * a positive finite number. */
ZEMATH_API int zemath_generate_peak_x_array(int nSize, double dCentre, double dFWHM,
                                            double dHalfSpan, double* pX) ZEMATH_NOEXCEPT;

/* Half-height positions (at any fraction): the X on each side of the peak at index nPeak
 * where the curve falls to dFraction * Y[nPeak] (rises to it for a peak with Y <= 0), the
 * linear crossing between the last point beyond the level and the first at or past it,
 * walking from the peak in index order (X ascending). With dFraction 0.5,
 * *pXRight - *pXLeft is the full width at half maximum. Y is taken as it is: subtract a
 * baseline first (zemath_adjust_data_of_peaks). Returns 0; -11 on a NULL pointer; -18 when
 * nSize < 1; -6 when nPeak lies outside [0, nSize); -151 when dFraction is not in [0, 1);
 * -64 when a side never reaches the level (nothing written). */
ZEMATH_API int zemath_find_xs(int nSize, const double* pX, const double* pY, int nPeak,
                              double dFraction, double* pXLeft, double* pXRight) ZEMATH_NOEXCEPT;

/* Inflection points on each side of the peak at nPeak (X ascending): Y'' is the centred
 * finite-difference derivative (zemath_derivative, mode 0) taken twice; walking outward
 * from the peak, the first place where Y'' changes from the peak's curvature (<= 0 under a
 * maximum, >= 0 over a minimum) to the opposite sign gives the linear root of Y'' between
 * the two points (c -+ sigma for a Gaussian, to O(step^2)). NANUM points are skipped.
 * Returns 0; -11 on a NULL pointer; -18 when nSize < 3; -6 when nPeak lies outside
 * [0, nSize); -64 when Y[nPeak] or X[nPeak] is NANUM or NaN, Y[nPeak] is 0, or a side has no
 * sign change (nothing written). */
ZEMATH_API int zemath_find_inflection_point(int nSize, const double* pX, const double* pY,
                                            int nPeak, double* pXLeft,
                                            double* pXRight) ZEMATH_NOEXCEPT;

/* As zemath_find_inflection_point with Y'' from the not-a-knot cubic spline through the
 * usable points (continuous and piecewise linear, so the root between two nodes is exact
 * for the spline): node by node outward from the peak, the first sign change of the
 * spline's curvature. More accurate than the finite differences on coarse data (about
 * 3e-3 sigma for a Gaussian sampled every sigma/4). Returns 0; -11; -6; -64 as above; -18
 * when nSize < 3 or fewer than 4 points are usable; -17 when the usable X are not
 * strictly increasing. */
ZEMATH_API int zemath_iterate_for_finding_inflection(int nSize, const double* pX, const double* pY,
                                                     int nPeak, double* pXLeft,
                                                     double* pXRight) ZEMATH_NOEXCEPT;

/* Segments of the curve above a height: the maximal runs of consecutive points with
 * Y > dHeight (a NANUM or NaN point ends a run), first and last index of each into pStart
 * and pEnd (capacity nMaxSegments each), in index order. Returns the number of segments
 * (>= 0); -11 on a NULL pointer; -18 when nSize < 1; -151 when dHeight is NaN; -56 when
 * there are more than nMaxSegments segments (nothing written). */
ZEMATH_API int zemath_cut_to_segments_by_height(int nSize, const double* pY, double dHeight,
                                                int nMaxSegments, int* pStart,
                                                int* pEnd) ZEMATH_NOEXCEPT;

/* The level a curve settles to at one end (its asymptote there): the median of the usable
 * values (NANUM and NaN skipped) among the first (nSide 0) or last (nSide 1) nPoints
 * points, robust to noise. Returns 0; -11 on a NULL pointer; -18 when nSize < 1,
 * nPoints < 1 or nPoints > nSize; -10 for another nSide; -158 when none of those points is
 * usable (nothing written). */
ZEMATH_API int zemath_yatasymt(int nSize, const double* pY, int nSide, int nPoints,
                               double* pYAsym) ZEMATH_NOEXCEPT;

/* Where a peak's tails meet their asymptote: walking from the peak at nPeak outward (index
 * order, X ascending), the X on each side where the curve first comes within dFraction of
 * the peak's height of the asymptote level dAsymptote, i.e. reaches
 * dAsymptote + dFraction * (Y[nPeak] - dAsymptote): the linear crossing between the last
 * point beyond that level and the first at or past it (NANUM and NaN points passed over).
 * For a Lorentzian of FWHM w over its asymptote: c -+ (w/2) sqrt(1/dFraction - 1). Returns
 * 0; -11 on a NULL pointer; -18 when nSize < 1; -6 when nPeak lies outside [0, nSize);
 * -151 when dFraction is not in [0, 1) or dAsymptote is not finite; -64 when Y[nPeak] is
 * missing or equals the asymptote, or a side never reaches the level (nothing written). */
ZEMATH_API int zemath_xatasymt(int nSize, const double* pX, const double* pY, int nPeak,
                               double dAsymptote, double dFraction, double* pXLeft,
                               double* pXRight) ZEMATH_NOEXCEPT;

ZEMATH_EXTERN_C_END

#endif /* ZEMATH_PEAK_MEASURES_H */
