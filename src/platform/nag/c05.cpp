// c05bac: the real Lambert W function, w e^w = x, on the principal branch (W >= -1,
// x >= -1/e) or the lower branch (W <= -1, -1/e <= x < 0).
//
// Method: piecewise rational approximations, each W = value + P(z)/Q(z) in a local variable
// z, fitted by scripts/fit_lambert_pieces.py (c05_pieces.inc; P, Q of degree 5 to 7, summed
// by Estrin's scheme), the piece chosen from the exponent bits of its variable, so an
// ordinary argument costs one table row, one rational and no branch on its value beyond a
// few range tests. Worst relative error of W of each table's fit, coefficients rounded to
// double (the script's check on 401 points per piece):
//   principal, x in [2^k, 2^(k+1)], k = -4..19, z = x - 1.5 2^k (exact)         4.9e-17
//   principal, x in [-1/4, -1/16] (two binades)                                  3.3e-17
//   principal, |x| <= 1/16: W = x - x^2 P(x)/Q(x) (zero, subnormals: W = x)       1.5e-18
//   principal, x >= 2^20: t = ln x, W = t - R(t), R = ln W in t's binade        1.1e-17
//   lower, x in [-2^(k+1), -2^k], k = -4..-30                                     4.9e-17
//   lower, x in [-1/4, -1/8]: 2.7e-16, then one Newton step on w e^w = x (an exp)
//   lower, |x| < 2^-30: s = -ln(-x), W = -s - R(s), R = ln(-W) in s's binade     3.7e-18
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
// Accuracy: the fits add at most 0.5 ulp of W (0.2 where no step follows); with the rounding
// of the evaluation w e^w = x holds within 3.2 units of (one ulp of x + the change of x over
// one ulp of W) at every double of the dense sweeps (tests/platform/c05_test.cpp); against
// mpmath within 2 eps of W (tests/platform/c05_test.cpp, g01_other_test.cpp).
// References: Corless, Gonnet, Hare, Jeffrey and Knuth (1996), Adv. Comput. Math. 5, 329-359
// (the series); Barry, Culligan-Hensley and Barry (1995), ACM TOMS 21, 161-171.
//
// Failures: NE_INT for a branch other than 0 or -1; NE_REAL for NaN, infinity, or x
// outside the branch's domain (x < -1/e; x >= 0 on the lower branch); NE_CONV if the
// lower branch's value is not finite (not expected).
#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <numbers>

#include "platform/nag/c05.hpp"

namespace zemath::nag {

namespace {

// 1/e = kInvEHi + kInvELo to about 107 bits; -kInvEHi is the double nearest -1/e.
constexpr double kInvEHi = 0.36787944117144233;
constexpr double kInvELo = -1.2428753672788363e-17;

#include "platform/nag/c05_pieces.inc"

constexpr int kBias = 1023;  // the exponent bias of a double

// The biased exponent of |v|: 2^(e - 1023) <= |v| < 2^(e - 1022) for a normal v.
inline int biased_exponent(double v) {
    return static_cast<int>((std::bit_cast<std::uint64_t>(v) >> 52) & 0x7ff);
}

// c[0] + c[1] z + ... + c[7] z^7 by Estrin's scheme (z2 = z^2, z4 = z^4): the four pairs
// and the powers proceed side by side, half the latency of Horner's rule, which is what a
// loop over many arguments waits on.
inline double estrin7(const double* c, double z, double z2, double z4) {
    const double c01 = c[0] + c[1] * z, c23 = c[2] + c[3] * z;
    const double c45 = c[4] + c[5] * z, c67 = c[6] + c[7] * z;
    return (c01 + z2 * c23) + z4 * (c45 + z2 * c67);
}

// P(z)/Q(z) of a piece (degree up to 7; the padding is zero).
inline double ratio(const LambertPiece& piece, double z) {
    const double z2 = z * z, z4 = z2 * z2;
    return estrin7(piece.num, z, z2, z4) / estrin7(piece.den, z, z2, z4);
}

// A binade piece: W = value + P(z)/Q(z), z = x - centre exact (x and the centre lie within
// a factor 2 of each other).
inline double binade(const LambertPiece& piece, double x) {
    return piece.value + ratio(piece, x - piece.centre);
}

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
double near_branch_point(double dx, bool principal) {
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

// The distance x + 1/e for x within a factor 2 of -1/e (x + kInvEHi is exact there).
inline double branch_distance(double x) {
    return (x + kInvEHi) + kInvELo;
}

// One Newton step on w e^w = x (the lower branch's piece next to -1/4, whose fit is the
// least accurate). The residual w e^w - x is rounded twice (exp and the product), half an ulp
// of x each, which moves the root by about one ulp of x over the slope: the step's own error,
// within the bound; the start's error (2.7e-16 of W) is squared away.
inline double polish(double w, double x) {
    const double ew = std::exp(w);
    return w - (w * ew - x) / ((1.0 + w) * ew);
}

// Principal branch, x >= -kInvEHi finite.
inline double principal_branch(double x) {
    const int e = biased_exponent(x);
    if (x > 0.0) {
        if (e >= kBias - 4) {
            if (e < kBias + 20) return binade(kPrincipalBinades[e - (kBias - 4)], x);
            // x >= 2^20: W = t - ln W, t = ln x; R = ln W from the piece of t's binade.
            const double t = std::log(x);
            const LambertPiece& piece = kPrincipalLogs[biased_exponent(t) - (kBias + 3)];
            return t - (piece.value + ratio(piece, t - piece.centre));
        }
    } else if (e >= kBias - 4) {
        if (e < kBias - 2)  // -1/4 < x <= -1/16
            return binade(kPrincipalNegative[e - (kBias - 4)], x);
        const double dx = branch_distance(x);  // x <= -1/4
        return dx > 0.0 ? near_branch_point(dx, true) : -1.0;
    }
    // |x| < 1/16 (zero and the subnormals included, where x^2 P/Q vanishes).
    return x - x * x * ratio(kPrincipalZero[0], x);
}

// Lower branch, -kInvEHi <= x < 0.
inline double lower_branch(double x) {
    const int e = biased_exponent(x);
    if (e >= kBias - 2) {  // x <= -1/4
        const double dx = branch_distance(x);
        return dx > 0.0 ? near_branch_point(dx, false) : -1.0;
    }
    if (e >= kBias - 30) {  // -1/4 < x <= -2^-30
        const double w = binade(kLowerBinades[(kBias - 3) - e], x);
        return e == kBias - 3 ? polish(w, x) : w;
    }
    // |x| < 2^-30: W = -s - ln(-W), s = -ln(-x) (exact for subnormal x as well).
    const double s = -std::log(-x);
    const LambertPiece& piece = kLowerLogs[biased_exponent(s) - (kBias + 4)];
    return -s - (piece.value + ratio(piece, s - piece.centre));
}

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
