// Robust geometric predicates for the planar triangulation: the sign of the orientation
// determinant and of the in-circle determinant, always exact.
//
// Method: a floating-point evaluation first, accepted when its magnitude exceeds the
// rounding-error bound of that evaluation (J. R. Shewchuk, "Adaptive precision
// floating-point arithmetic and fast robust geometric predicates", Discrete Comput. Geom.
// 18, 1997: bounds (3 + 16 eps) eps and (10 + 96 eps) eps times the permanent); otherwise
// adaptive stages of increasing precision (predicates.cpp): the determinant of the rounded
// differences computed exactly, exact at once when the differences are (gridded and
// densely sampled inputs), then first-order corrections by the differences' rounding
// errors, each with its own error bound, and last the exact determinant as a
// floating-point expansion in stack arrays; the exact functions return -1, 0 or 1.
// Exact for all finite coordinates: evaluations whose products may have overflowed or
// underflowed fail the filter, the double stages run only on coordinates whose products
// stay in range, and the others are evaluated in a wider exponent range (predicates.cpp).
#pragma once

#include <cmath>

namespace zemath {

namespace predicate_detail {
constexpr double kEps = 1.1102230246251565e-16;  // 2^-53, half an ulp of 1
// Error bounds of the plain floating-point evaluations (Shewchuk 1997, section 4.3).
constexpr double kOrientBound = (3.0 + 16.0 * kEps) * kEps;
constexpr double kInCircleBound = (10.0 + 96.0 * kEps) * kEps;
// The bounds are relative and assume no underflow. Adding this to a bound covers the
// absolute error of every product that underflowed (each under 2^-1074) and refuses every
// evaluation whose permanent is below 2^-900 (its determinant is smaller than that), so
// one comparison decides: an infinite or NaN bound (a product overflowed) refuses too.
constexpr double kUnderflowSlack = 0x1p-880;
}  // namespace predicate_detail

// The exact evaluations behind the filters below (predicates.cpp).
double orient2d_exact(double ax, double ay, double bx, double by, double cx, double cy);
double incircle_exact(double ax, double ay, double bx, double by, double cx, double cy, double dx,
                      double dy);

// > 0 when a, b, c turn counter-clockwise, < 0 clockwise, 0 collinear. The magnitude is
// meaningful only in the filtered case; callers use the sign. Inline: the filter decides
// almost every call of the triangulation's inner loops.
inline double orient2d(double ax, double ay, double bx, double by, double cx, double cy) {
    const double acx = ax - cx, bcy = by - cy, acy = ay - cy, bcx = bx - cx;
    const double left = acx * bcy;
    const double right = acy * bcx;
    const double det = left - right;
    const double permanent = std::fabs(left) + std::fabs(right);
    if (std::fabs(det) >
        predicate_detail::kOrientBound * permanent + predicate_detail::kUnderflowSlack)
        return det;
    // Both products exactly 0 by a zero factor each (axis-parallel points): exactly 0.
    if (permanent == 0.0 && (acx == 0.0 || bcy == 0.0) && (acy == 0.0 || bcx == 0.0)) return 0.0;
    return orient2d_exact(ax, ay, bx, by, cx, cy);
}

// > 0 when d lies strictly inside the circle through the counter-clockwise a, b, c;
// < 0 outside; 0 on it.
inline double incircle(double ax, double ay, double bx, double by, double cx, double cy, double dx,
                       double dy) {
    const double adx = ax - dx, bdx = bx - dx, cdx = cx - dx;
    const double ady = ay - dy, bdy = by - dy, cdy = cy - dy;
    const double bdxcdy = bdx * cdy, cdxbdy = cdx * bdy;
    const double cdxady = cdx * ady, adxcdy = adx * cdy;
    const double adxbdy = adx * bdy, bdxady = bdx * ady;
    const double alift = adx * adx + ady * ady;
    const double blift = bdx * bdx + bdy * bdy;
    const double clift = cdx * cdx + cdy * cdy;
    const double det =
        alift * (bdxcdy - cdxbdy) + blift * (cdxady - adxcdy) + clift * (adxbdy - bdxady);
    const double permanent = (std::fabs(bdxcdy) + std::fabs(cdxbdy)) * alift +
                             (std::fabs(cdxady) + std::fabs(adxcdy)) * blift +
                             (std::fabs(adxbdy) + std::fabs(bdxady)) * clift;
    if (std::fabs(det) >
        predicate_detail::kInCircleBound * permanent + predicate_detail::kUnderflowSlack)
        return det;
    return incircle_exact(ax, ay, bx, by, cx, cy, dx, dy);
}

}  // namespace zemath
