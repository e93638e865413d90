/* zeMath: point look-ups on a curve (pX, pY) for peak analysis: level crossings, the X of
 * a Y value, the Y at an X. Inputs are never modified; a refused call (negative return)
 * writes nothing. -19: working storage could not be allocated. */
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

ZEMATH_EXTERN_C_END

#endif /* ZEMATH_PEAK_MEASURES_H */
