/* zeMath: 1-D interpolation. Values of a curve given at ascending abscissas x[0..n-1] at
 * new abscissas, by one of six methods:
 *
 *   ZEMATH_INTERP_LINEAR             straight lines between neighbouring points;
 *   ZEMATH_INTERP_SPLINE_NATURAL     cubic spline with zero second derivative at both ends;
 *   ZEMATH_INTERP_SPLINE_NOT_A_KNOT  cubic spline whose third derivative is continuous at
 *                                    x[1] and x[n-2] (3 points: the parabola through them);
 *   ZEMATH_INTERP_AKIMA              Akima's local cubic (slopes from weighted neighbouring
 *                                    secants, two secants extrapolated at each end);
 *   ZEMATH_INTERP_PCHIP              monotone piecewise cubic Hermite (Fritsch-Carlson
 *                                    slopes: weighted harmonic means, 0 at local extremes,
 *                                    shape-preserving three-point end slopes);
 *   ZEMATH_INTERP_NEAREST            the value of the nearest point (the lower one when a
 *                                    new x lies exactly halfway).
 * With 2 usable points every cubic method is the straight line through them.
 *
 * Outside [x[0], x[n-1]] (the usable points' range), by `outside`:
 *   ZEMATH_OUTSIDE_MISSING      NANUM is written;
 *   ZEMATH_OUTSIDE_EXTRAPOLATE  the first or last piece is continued (nearest: the end value);
 *   ZEMATH_OUTSIDE_HOLD         the end value y[0] or y[n-1] is written.
 *
 * Missing values: a point whose x or y equals NANUM is skipped; the usable points must
 * have strictly ascending x. NaN is not missing: a NaN x fails the order check, a NaN y
 * propagates (for the splines through the whole curve). A new x that is NaN or NANUM gives
 * NANUM. New x in ascending order are located in one sweep, others by bisection. */
#ifndef ZEMATH_INTERPOLATION_H
#define ZEMATH_INTERPOLATION_H

#include "types.h"

ZEMATH_EXTERN_C_BEGIN

enum zemath_interp_method {
    ZEMATH_INTERP_LINEAR = 0,
    ZEMATH_INTERP_SPLINE_NATURAL = 1,
    ZEMATH_INTERP_SPLINE_NOT_A_KNOT = 2,
    ZEMATH_INTERP_AKIMA = 3,
    ZEMATH_INTERP_PCHIP = 4,
    ZEMATH_INTERP_NEAREST = 5
};

enum zemath_interp_outside {
    ZEMATH_OUTSIDE_MISSING = 0,
    ZEMATH_OUTSIDE_EXTRAPOLATE = 1,
    ZEMATH_OUTSIDE_HOLD = 2
};

/* Interpolates the curve (x[i], y[i]), i < n, at xnew[0..nnew-1] into ynew[0..nnew-1] by
 * `method`, with `outside` choosing the values beyond the data. x and y are not modified;
 * ynew may be the same array as xnew but must not overlap x or y. nnew = 0 writes nothing.
 * Returns 0; -11 when x, y, xnew or ynew is NULL; -18 when n < 2 or nnew < 0; -10 when
 * method or outside is not one of the codes above; -18 when fewer than 2 points are
 * usable; -17 when the usable x are not strictly ascending; -19 when working storage
 * could not be allocated. A refused call writes nothing. */
ZEMATH_API int zemath_interpolate(const double* x, const double* y, int n, const double* xnew,
                                  int nnew, double* ynew, int method, int outside) ZEMATH_NOEXCEPT;

ZEMATH_EXTERN_C_END

#endif /* ZEMATH_INTERPOLATION_H */
