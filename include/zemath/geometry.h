/* zeMath: polygon primitives over vertex arrays x[0..n-1], y[0..n-1]. The polygon is
 * closed implicitly (the last vertex joins the first); a repeated first vertex at the end
 * is allowed. Inputs are read only, except by the reorder, which works in place. */
#ifndef ZEMATH_GEOMETRY_H
#define ZEMATH_GEOMETRY_H

#include "types.h"

ZEMATH_EXTERN_C_BEGIN

/* Location of the point (px, py) against the polygon, by the even-odd rule (so a
 * self-intersecting polygon has holes where it overlaps itself): 1 inside, 0 outside,
 * 2 exactly on an edge or a vertex. A NaN coordinate anywhere gives 0 or 1 as its
 * comparisons fall, never a crash. -11 when x or y is NULL, -18 when n < 3. */
ZEMATH_API int zemath_d_point_in_polygon(const double* x, const double* y, int n, double px,
                                         double py) ZEMATH_NOEXCEPT;
ZEMATH_API int zemath_f_point_in_polygon(const float* x, const float* y, int n, float px,
                                         float py) ZEMATH_NOEXCEPT;

/* Signed area of the polygon (shoelace formula, computed in double relative to the first
 * vertex): positive when the vertices run counterclockwise, negative clockwise. 0 for
 * n = 0, 1 or 2. NANUM when x or y is NULL or n < 0. The long member converts each
 * coordinate to double (exact up to 2^53). */
ZEMATH_API double zemath_d_polygon_area(const double* x, const double* y, int n) ZEMATH_NOEXCEPT;
ZEMATH_API double zemath_f_polygon_area(const float* x, const float* y, int n) ZEMATH_NOEXCEPT;
ZEMATH_API double zemath_l_polygon_area(const long* x, const long* y, int n) ZEMATH_NOEXCEPT;

/* Reorders the vertex pairs in place counterclockwise by their angle around the centroid
 * of the vertices (angles from -pi, equal angles nearest first), which turns the corners
 * of a star-shaped (for instance convex) polygon given in any order into a simple
 * polygon. Vertices with a NaN coordinate are moved to the end in input order and left
 * out of the centroid. Returns 0; -11 when x or y is NULL; -18 when n < 1; -19 when
 * working storage fails (arrays untouched). */
ZEMATH_API int zemath_d_polygon_reorder(double* x, double* y, int n) ZEMATH_NOEXCEPT;

ZEMATH_EXTERN_C_END

#endif /* ZEMATH_GEOMETRY_H */
