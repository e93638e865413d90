// c05bac: the real Lambert W function, w e^w = x, on the principal branch (W >= -1,
// x >= -1/e) or the lower branch (W <= -1, -1/e <= x < 0).
//
// Method: piecewise rational approximations, each W = value + P(z)/Q(z) in a local variable
// z, fitted by scripts/fit_lambert_pieces.py (c05_pieces.inc; P, Q of degree 5 to 7, summed
// by Estrin's scheme), the piece chosen from the exponent bits of its variable, so an
// ordinary argument costs one table row, one rational and no branch on its value beyond a
// few range tests. Worst relative error of W of each table's fit, coefficients rounded to
// double (the script's check on 401 points per piece):
//   principal, x in halves of [2^k, 2^(k+1)], k = -4..19, degree 5,
//     z = x - 1.25 2^k or x - 1.75 2^k (exact)                                             1.7e-17
//   principal, x in [-1/4, -1/16] (two binades)                                            3.3e-17
//   principal, |x| <= 1/16: W = x - x^2 P(x)/Q(x) (zero, subnormals: W = x)                1.5e-18
//   principal, x >= 2^20: t = ln x, W = t - R(t), R = ln W in t's binade                   1.1e-17
//   lower, x in the halves of [-1/4, -1/8]                                                 1.0e-17
//   lower, x in [-2^(k+1), -2^k], k = -4..-30                                              4.9e-17
//   lower, |x| < 2^-30: s = -ln(-x), W = -s - R(s), R = ln(-W) in s's binade               3.7e-18
// Near the branch point (x <= -1/4, or offset below 0.118) the answer is found from the
// distance dx = x + 1/e itself, since forming -1/e + dx would already cost the digits that
// matter there: with W = u - 1,
//     g(u) = (u - 1) e^u + 1 = e dx,   g(u) = sum_{n>=2} (n-1) u^n / n!,
// u starts from a rational fit in p = +-sqrt(2 e dx) (scripts/fit_lambert_branch.py: within
// 4.8e-10 relatively), and one Newton step reaches rounding level (the number of steps is
// fixed); below |p| = 1e-4 the branch-point series W = -1 + p - p^2/3 + 11 p^3/72 - ...
// alone is exact to double precision. Direct x near -1/e gives dx = (x + hi) + lo exactly
// enough (1/e split in two parts); an offset above 0.118 gives x = (dx - hi) - lo, exact
// enough that W keeps its relative accuracy up to x = 0.
// Accuracy: the fits add at most 0.45 ulp of W; with the rounding
// of the evaluation w e^w = x holds within 3.2 units of (one ulp of x + the change of x over
// one ulp of W) at every double of the dense sweeps (tests/platform/c05_test.cpp); against
// mpmath within 2 eps of W (tests/platform/c05_test.cpp, g01_other_test.cpp).
// References: Corless, Gonnet, Hare, Jeffrey and Knuth (1996), Adv. Comput. Math. 5, 329-359
// (the series); Sanathanan and Koerner (1963), IEEE Trans. Automat. Control 8, 56-58 (the
// linearised rational fits).
//
// Failures: NE_INT for a branch other than 0 or -1; NE_REAL for NaN, infinity, or x
// outside the branch's domain (x < -1/e; x >= 0 on the lower branch); NE_CONV if the
// lower branch's value is not finite (not expected).
#include <cmath>
#include <limits>
#include <numbers>

#include "platform/nag/c05.hpp"
#include "platform/nag/c05_eval.hpp"

namespace zemath::nag {

namespace {

#include "platform/nag/c05_branch_fit.inc"

// Near the branch point W = u - 1 solves g(u) = (u - 1) e^u + 1 = e dx (dx = x + 1/e),
// g(u) = sum_{n>=2} (n-1) u^n / n!. Below |u| = 0.05 g is this series to n = 11 (the
// remainder below 1e-20 of g); beyond, u - (1 - u) expm1(u), whose rounding, a few ulps of
// u, moves the root by a few ulps of 1 (W = u - 1 keeps its relative accuracy).
constexpr double kSeriesBelow = 0.05;

// W(-1/e + dx) for e dx <= 1/2, from dx alone; principal or lower branch.
// The start is the rational fit u/p = P(p)/Q(p) of c05_branch_fit.inc, p = +-sqrt(2 e dx),
// within 2.7e-13 (principal) and 4.8e-10 (lower branch) of u relatively on |p| <= 1. One
// Newton step on g(u) = e dx then leaves a relative error (g''/(2 g')) r^2 u = (1 + u) r^2 / 2
// below 1e-18: the result is as accurate as g's rounding allows, and no convergence test is
// needed (the step count is fixed, so no stopping rule can fail at isolated doubles). Below
// |p| = 1e-4 the branch-point series alone is exact to double precision.
}  // namespace

double lambert::near_branch_point(double dx, bool principal) {
    const double c = std::numbers::e * dx;
    const double p = principal ? std::sqrt(2.0 * c) : -std::sqrt(2.0 * c);
    constexpr double kSeriesOnly = 1e-4;  // the series' remainder, 0.015 |p|^7, below 1e-29
    if (std::fabs(p) < kSeriesOnly) {
        // Branch-point series of W in p (Corless et al.).
        constexpr double m2 = -1.0 / 3.0, m3 = 11.0 / 72.0, m4 = -43.0 / 540.0,
                         m5 = 769.0 / 17280.0, m6 = -221.0 / 8505.0;
        return p * (1.0 + p * (m2 + p * (m3 + p * (m4 + p * (m5 + p * m6))))) - 1.0;
    }
    const double* num = principal ? kPrincipalNum : kLowerNum;
    const double* den = principal ? kPrincipalDen : kLowerDen;
    const double u = p * (num[0] + p * (num[1] + p * (num[2] + p * (num[3] + p * num[4])))) /
                     (den[0] + p * (den[1] + p * (den[2] + p * (den[3] + p * den[4]))));
    double g, slope;  // g(u) and g'(u) = u e^u
    if (std::fabs(u) < kSeriesBelow) {
        // Coefficients (n - 1)/n!, n = 2..11.
        g = u * u *
            (1.0 / 2 +
             u * (1.0 / 3 +
                  u * (1.0 / 8 +
                       u * (1.0 / 30 +
                            u * (1.0 / 144 + u * (1.0 / 840 + u * (1.0 / 5760 +
                                                                   u * (1.0 / 45360 +
                                                                        u * (1.0 / 403200 +
                                                                             u / 3991680.0)))))))));
        // The slope scales a correction already below 1e-9 of u: e^u to 3e-9 serves.
        slope = u * (1.0 + u * (1.0 + u * (0.5 + u * (1.0 / 6 + u / 24.0))));
    } else {
        const double em1 = std::expm1(u);
        g = u - (1.0 - u) * em1;
        slope = u * (1.0 + em1);
    }
    return (u - (g - c) / slope) - 1.0;
}

namespace {

using namespace lambert;

// The offset form switches to x = dx - 1/e above this distance (x > -0.2499 there, so the
// direct pieces never send it back to the branch-point piece).
constexpr double kOffsetBranchZone = 0.118;

}  // namespace

double c05bac(double x, int branch, bool offset, NagError* fail) {
    if (branch != 0 && branch != -1) return fail->set(NE_INT), 0.0;
    if (!std::isfinite(x)) return fail->set(NE_REAL), 0.0;
    const bool principal = branch == 0;
    if (offset) {
        if (x < 0.0 || (!principal && x >= kInvEHi + kInvELo)) return fail->set(NE_REAL), 0.0;
        fail->set(NE_NOERROR);
        if (x < kOffsetBranchZone) return near_branch_point(x, principal);
        const double z = (x - kInvEHi) - kInvELo;
        if (principal) return principal_branch(z);
        if (z >= 0.0) return fail->set(NE_REAL), 0.0;
        return lower_branch(z);
    }
    if (x < -kInvEHi || (!principal && x >= 0.0)) return fail->set(NE_REAL), 0.0;
    fail->set(NE_NOERROR);
    if (principal) return principal_branch(x);
    const double w = lower_branch(x);
    if (!std::isfinite(w)) fail->set(NE_CONV);
    return w;
}

}  // namespace zemath::nag
