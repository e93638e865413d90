// Derivative and integration of sampled curves (X, Y): finite-difference derivative,
// cumulative trapezoid, a higher-order (piecewise quadratic) rule, adaptive quadrature of
// a caller's function, and the continuous wavelet transform. Internal C++ face of the
// calculus exports; other families (percentiles of a distribution curve, peaks,
// baselines) call these directly.
#pragma once

#include <cstddef>
#include <span>

#include "zemath/calculus.h"

namespace zemath {

// Slope between two points, guarded against overflow: NANUM when dx is 0 or missing, or
// when |dx| < 1 and dy/dx would exceed the double range (|dx| * 1.7e308 <= |dy|).
double guarded_slope(double dx, double dy) noexcept;

// Finite-difference derivative of y over x, in place (mode bits as zemath_derivative).
// Points whose x or y is NANUM are skipped and receive NANUM. Returns 0, or -8 when fewer
// than two usable points exist (y untouched then). x and y have the same length.
int derivative_in_place(std::span<const double> x, std::span<double> y, int mode) noexcept;

// Cumulative trapezoid over (x, y): cumulative[0] = 0 and cumulative[i] the area from
// x[0] to x[i]. Points whose x or y is NANUM (or NaN) are skipped: the trapezoid joins the
// neighbouring usable points and a skipped point repeats the running total. cumulative may
// alias neither x nor y. Returns the number of usable points. All spans have one length.
std::size_t cumulative_trapezoid(std::span<const double> x, std::span<const double> y,
                                 std::span<double> cumulative) noexcept;

// Area under (x, y) by the trapezoid rule (method 0) or piecewise quadratics through
// consecutive point triples (method 1; exact for quadratics on any spacing, an odd last
// interval takes the quadratic through the last three points). Missing points are skipped.
// Returns NANUM when fewer than two usable points remain (method 1 with two points falls
// back to the trapezoid).
double area_under_curve(std::span<const double> x, std::span<const double> y, int method);

// zemath_integrate over the index range [first, last] (either order); result written only
// on success. Returns 0 or -1 (fewer than two usable points).
int integrate_range(const double* x, const double* y, int first, int last,
                    zemath_IntegrationResult& result, int method, bool sort,
                    const double* baseline);

// Area between abscissae from and to (clipped to the data) of the piecewise-linear curve;
// 0, -1 (fewer than two usable points) or -17 (x not strictly monotonic).
int integrate_between(std::span<const double> x, std::span<const double> y, double from, double to,
                      double& area);

// Adaptive Simpson and Romberg integrals of f over [a, b]; 0 or -1 (tolerance not reached
// within the work limit, or a non-finite value met; result is the last estimate).
int adaptive_integral(zemath_integrand f, void* context, double a, double b, double tolerance,
                      double& result, double& error);
int romberg_integral(zemath_integrand f, void* context, double a, double b, double tolerance,
                     int max_levels, double& result, double& error);

}  // namespace zemath
