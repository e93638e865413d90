/* zeMath: calculus family. Derivative of a sampled curve by finite differences, areas
 * under sampled curves (trapezoid and piecewise-quadratic rules, cumulative integral,
 * area between two abscissae), integrals of a caller's function (adaptive Simpson,
 * Romberg), and the continuous wavelet transform (Mexican hat, Morlet).
 *
 * Missing values: a point whose X or Y equals NANUM is skipped (and NaN too in the
 * integrals): the curve joins the neighbouring usable points. Inputs are never modified
 * except where a function says it works in place. A refused call (negative status)
 * writes nothing, except where noted.
 *
 * Status codes used by this family (names in status.h):
 *     0    success
 *    -1    the computation failed: fewer than two usable points, or a function integral
 *          that did not reach its tolerance (its best estimate is still written)
 *    -7    fewer than two points, or first index equal to last index
 *    -8    zemath_derivative: fewer than two usable points
 *   -10    unknown method code or wavelet
 *   -11    a required pointer is NULL
 *   -17    abscissae not strictly monotonic
 *   -19    working storage could not be allocated
 *   -37    empty or invalid range (NULL array or negative index in zemath_integrate;
 *          a NaN, infinite or NANUM bound)
 *  -151    a parameter outside its range (tolerance not positive, scale not positive)
 */
#ifndef ZEMATH_CALCULUS_H
#define ZEMATH_CALCULUS_H

#include "types.h"

ZEMATH_EXTERN_C_BEGIN

/* Derivative of the curve (pX, pY), written over pY (in place). Both arrays hold nSize
 * values. Points with X or Y equal to NANUM are skipped and receive NANUM. Slopes join
 * consecutive usable points; a slope is NANUM when the step in X is 0, or when |dX| < 1
 * and |dX| * 1.7e308 <= |dY| (guard against overflow). The first usable point gets the
 * forward slope, the last the backward slope (two usable points: both the same slope).
 * Interior points by nMode: 2 the forward slope, 4 the backward slope, otherwise the mean
 * of both (NANUM when either is NANUM); with bit 1 set a point whose two slopes have
 * opposite signs gets exactly 0.0 (with bits 1 and 8, also when one slope is 0).
 * Returns 0; -7 when nSize < 2; -11 when a pointer is NULL; -8 when fewer than two usable
 * points exist (pY untouched). */
ZEMATH_API int zemath_derivative(const double* pX, double* pY, int nSize,
                                 int nMode) ZEMATH_NOEXCEPT;

/* Result of zemath_integrate. h denotes Y minus the baseline (Y alone without one). */
typedef struct zemath_IntegrationResult {
    double area;     /* signed area under h by the chosen method (negated for a reversed range) */
    double abs_area; /* area under |h| by the trapezoid rule (same sign rule) */
    double x_half_area;  /* X where the running trapezoid area first reaches half its total */
    double x_centroid;   /* integral of X*h over integral of h (NANUM when that is 0) */
    double x_peak;       /* X of the point of largest |h| (first on ties) */
    double y_peak;       /* h at that point (signed) */
    double x_left_half;  /* X where h first falls to y_peak/2 left of the peak, linearly
                            interpolated; NANUM when it never does */
    double x_right_half; /* the same on the right */
    double fwhm;         /* |x_right_half - x_left_half|, NANUM when either is NANUM */
    int peak_index;      /* index of the peak point in the caller's arrays */
    int points;          /* usable points integrated */
} zemath_IntegrationResult;

/* Integrates pY (minus the optional pBaseline, same indexing; NULL for none) over the
 * index range between nFirst and nLast inclusive (either order; nLast < nFirst negates the
 * signed areas). The arrays must hold max(nFirst, nLast) + 1 values. With bSort set the
 * range is taken in ascending X order (stable), otherwise in index order. nMethod 0: the
 * trapezoid rule; 1: piecewise quadratics through consecutive point triples (exact for
 * quadratics on any spacing; two points fall back to the trapezoid). Points where X, Y or
 * the baseline is NANUM or NaN are skipped. Writes *pResult on success only.
 * Returns 0; -37 when pX, pY or pResult is NULL or an index is negative; -7 when nFirst
 * equals nLast; -10 when nMethod is not 0 or 1; -1 when fewer than two usable points
 * remain; -19 on allocation failure. */
ZEMATH_API int zemath_integrate(const double* pX, const double* pY, int nFirst, int nLast,
                                zemath_IntegrationResult* pResult, int nMethod, int bSort,
                                const double* pBaseline) ZEMATH_NOEXCEPT;

/* Area under the piecewise-linear curve (pX, pY) (nSize points, X strictly increasing or
 * strictly decreasing over the usable points) between the abscissae dFrom and dTo, with the
 * curve interpolated linearly at the bounds; bounds beyond the data are clipped to it.
 * dFrom > dTo gives the negated area. Writes *pArea. Returns 0; -11 when a pointer is
 * NULL; -7 when nSize < 2; -37 when a bound is NaN or NANUM; -1 when fewer than two usable
 * points; -17 when X is not strictly monotonic; -19 on allocation failure. */
ZEMATH_API int zemath_integrate_with_bounds(const double* pX, const double* pY, int nSize,
                                            double dFrom, double dTo,
                                            double* pArea) ZEMATH_NOEXCEPT;

/* Cumulative trapezoid integral: pOut[0] = 0, pOut[i] = area from pX[0] to pX[i]. Skipped
 * points repeat the running total. pOut (nSize values) may be the same array as pX or pY
 * (not a partial overlap). Returns 0; -11 when a pointer is NULL; -7 when nSize < 2. */
ZEMATH_API int zemath_numeric_integral(const double* pX, const double* pY, int nSize,
                                       double* pOut) ZEMATH_NOEXCEPT;

/* A caller's integrand: f(x, context). */
typedef double (*zemath_integrand)(double x, void* context);

/* Integral of f from dFrom to dTo by adaptive Simpson quadrature with Richardson
 * correction, to an absolute tolerance dTolerance (at most 2e6 evaluations, intervals
 * down to 2^-48 of the range). Writes *pResult and, when pError is not NULL, an error
 * estimate. dFrom > dTo gives the negated integral; equal bounds give 0.
 * Returns 0; -11 when f or pResult is NULL; -37 when a bound is NaN, infinite or NANUM;
 * -151 when dTolerance is not positive; -1 when the tolerance was not reached or f
 * returned a non-finite value (the estimate is written all the same). */
ZEMATH_API int zemath_function_integral(zemath_integrand f, void* pContext, double dFrom,
                                        double dTo, double dTolerance, double* pResult,
                                        double* pError) ZEMATH_NOEXCEPT;

/* Integral of f from dFrom to dTo by Romberg extrapolation of the trapezoid rule with
 * nMaxLevels halvings (clamped to 2..25; level k costs 2^(k-1) new evaluations), stopping
 * when two successive diagonal estimates differ by at most dTolerance (not before level
 * 4). Suits smooth integrands. Writes *pResult and the last difference in *pError (when
 * not NULL). Returns 0; -11, -37, -151 as zemath_function_integral; -1 when the tolerance
 * was not reached (last estimate written); -19 on allocation failure. */
ZEMATH_API int zemath_function_integral_on_new_romberg(zemath_integrand f, void* pContext,
                                                       double dFrom, double dTo, double dTolerance,
                                                       int nMaxLevels, double* pResult,
                                                       double* pError) ZEMATH_NOEXCEPT;

/* Wavelets of zemath_cwt. */
enum zemath_wavelet {
    ZEMATH_WAVELET_MEXICAN_HAT = 0, /* 2/(sqrt(3) pi^(1/4)) (1 - t^2) exp(-t^2/2), real */
    ZEMATH_WAVELET_MORLET = 1       /* pi^(-1/4) exp(i w0 t) exp(-t^2/2), w0 = dParam */
};

/* Continuous wavelet transform of pIn (nSize samples, unit spacing) at the nScales scales
 * pScales (in samples): W(a, b) = sum_n x[n] conj(psi((n - b) / a)) / sqrt(a), summed over
 * the samples only (no periodic continuation, wavelet not truncated; NANUM samples count
 * as 0), computed by FFT in O(n log n) per scale. pOutRe (and pOutIm) receive nScales rows
 * of nSize values, row s for pScales[s]. The Mexican hat is real: pOutIm may be NULL (zeros
 * are written when it is given). Morlet: dParam is w0 (5 or 6 are usual) and pOutIm is
 * required. Returns 0; -11 when pIn, pScales or pOutRe is NULL, or pOutIm for Morlet; -7
 * when nSize < 1 or nScales < 1; -10 for an unknown wavelet; -151 when a scale or w0 is
 * not positive and finite; -19 on allocation failure. */
ZEMATH_API int zemath_cwt(const double* pIn, int nSize, const double* pScales, int nScales,
                          int nWavelet, double dParam, double* pOutRe,
                          double* pOutIm) ZEMATH_NOEXCEPT;

ZEMATH_EXTERN_C_END

#endif /* ZEMATH_CALCULUS_H */
