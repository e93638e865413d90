// 1-D interpolation of a curve given at ascending abscissas: linear, natural and
// not-a-knot cubic splines, Akima, monotone piecewise cubic Hermite (PCHIP), nearest.
// The peak detectors, the baselines and the envelopes of the mode decomposition call
// these directly; zemath_interpolate is the exported face.
#pragma once

#include <span>

namespace zemath {

enum class InterpMethod : int {
    linear = 0,
    natural_spline = 1,
    not_a_knot_spline = 2,
    akima = 3,
    pchip = 4,
    nearest = 5,
};

// Values beyond [x.front(), x.back()].
enum class InterpOutside : int {
    missing = 0,      // NANUM
    extrapolate = 1,  // the end piece continued (nearest: the end value)
    hold = 2,         // the end value
};

// First derivatives at the nodes of the cubic methods (splines, Akima, PCHIP) for x
// strictly ascending with at least 2 points; slope.size() == x.size(). The spline slopes
// come from one tridiagonal solve, O(n).
void cubic_node_slopes(InterpMethod method, std::span<const double> x, std::span<const double> y,
                       std::span<double> slope);

// Interpolation of clean data: x strictly ascending, at least 2 points, no NANUM in x or
// y. ynew.size() == xnew.size(); ynew may be xnew's storage. A NaN or NANUM target gives
// NANUM. May throw std::bad_alloc (the cubic methods' working storage).
void interpolate_clean(std::span<const double> x, std::span<const double> y,
                       std::span<const double> xnew, std::span<double> ynew, InterpMethod method,
                       InterpOutside outside);

// The full routine behind zemath_interpolate: points whose x or y is NANUM are skipped,
// then the checks. Returns 0, -18 (fewer than 2 usable points) or -17 (usable x not
// strictly ascending); ynew is written only on success. May throw std::bad_alloc.
int interpolate(std::span<const double> x, std::span<const double> y, std::span<const double> xnew,
                std::span<double> ynew, InterpMethod method, InterpOutside outside);

}  // namespace zemath
