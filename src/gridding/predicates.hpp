// Robust geometric predicates for the planar triangulation: the sign of the orientation
// determinant and of the in-circle determinant, always exact.
//
// Method: a floating-point evaluation first, accepted when its magnitude exceeds the
// rounding-error bound of that evaluation (J. R. Shewchuk, "Adaptive precision
// floating-point arithmetic and fast robust geometric predicates", Discrete Comput. Geom.
// 18, 1997: bounds (3 + 16 eps) eps and (10 + 96 eps) eps times the permanent); otherwise
// the determinant is recomputed exactly as a floating-point expansion (error-free sums and
// fused multiply-add products) and its sign read from the largest component. The exact
// path's work shrinks automatically when the coordinate differences are exact (zero
// tails are eliminated), so gridded and cocircular inputs stay fast.
// Valid for finite coordinates whose products neither overflow nor underflow (|x| within
// about 1e-75..1e75 after the triangulation's scaling); the triangulation normalises by
// the data ranges first.
#pragma once

namespace zemath {

// > 0 when a, b, c turn counter-clockwise, < 0 clockwise, 0 collinear. The magnitude is
// meaningful only in the filtered case; callers use the sign.
double orient2d(double ax, double ay, double bx, double by, double cx, double cy);

// > 0 when d lies strictly inside the circle through the counter-clockwise a, b, c;
// < 0 outside; 0 on it.
double incircle(double ax, double ay, double bx, double by, double cx, double cy, double dx,
                double dy);

}  // namespace zemath
