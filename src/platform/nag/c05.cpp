// c05bac: the real Lambert W function, w e^w = x, on the principal branch (W >= -1,
// x >= -1/e) or the lower branch (W <= -1, -1/e <= x < 0).
//
// Method: away from the branch point, Boost.Math's lambert_w0 / lambert_wm1 (rational
// approximations) for the argument given directly, followed by one Newton step on
// w e^w = x where Boost is more than about 2 ulps off (principal branch x in [-0.2, -0.08),
// lower branch x < -0.1; elsewhere Boost is within 1.9 ulps of x and taken as it is); on the
// lower branch at subnormal x, Newton on w + ln(-w) = ln(-x). With offset the argument is
// dx = x + 1/e, and near the branch point (e dx <= 1/2, and x < -0.2 given directly) the
// answer is found from dx itself, since forming -1/e + dx would already cost the digits
// that matter there: with W = u - 1,
//     g(u) = (u - 1) e^u + 1 = e dx,   g(u) = sum_{n>=2} (n-1) u^n / n!,
// u starts from a rational fit in p = +-sqrt(2 e dx) (scripts/fit_lambert_branch.py: within
// 4.8e-10 relatively, so one Newton step reaches rounding level; the number of steps is
// fixed); below |p| = 1e-4 the branch-point series W = -1 + p - p^2/3 + 11 p^3/72 - ...
// alone is exact to double precision. Away from the branch point (e dx > 1/2) x is formed
// as (dx - hi) - lo with 1/e split in two parts, exact enough that W keeps its relative
// accuracy up to x = 0.
// Accuracy: w e^w = x within about one ulp of x (and of W's own rounding) at every
// double; against mpmath within 8 ulps (tests/platform/g01_other_test.cpp).
// Reference: Corless, Gonnet, Hare, Jeffrey and Knuth (1996), Adv. Comput. Math. 5,
// 329-359 (the series); Barry, Culligan-Hensley and Barry (1995), ACM TOMS 21, 161-171.
//
// Failures: NE_INT for a branch other than 0 or -1; NE_REAL for NaN, infinity, or x
// outside the branch's domain (x < -1/e; x >= 0 on the lower branch); NE_CONV if the
// lower branch's value is not finite (not expected).
#include <cmath>
#include <limits>
#include <numbers>

#include "platform/numeric/boost_policy.hpp"  // first: configures Boost
#include <boost/math/special_functions/lambert_w.hpp>

#include "platform/nag/c05.hpp"

namespace zemath::nag {

namespace {

// Lower branch: below this distance from 0 (the subnormal range) the solution is found
// from logarithms, where Boost's evaluation loses the argument.
constexpr double kSubnormalEdge = 2.2250738585072014e-308;

// 1/e = kInvEHi + kInvELo to about 107 bits.
constexpr double kInvEHi = 0.36787944117144233;
constexpr double kInvELo = -1.2428753672788363e-17;

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

// One Newton step on w e^w = x. Boost's rational approximations are up to about 10 ulps
// off (in x) between x = -0.2 and -0.1 on the principal branch and 2.5 on the lower one
// below x = -0.1; the step brings them within one. The residual w e^w - x is rounded
// twice (exp and the product), half an ulp of x each: the step's own error, well inside
// the few ulps allowed, so no fused or two-part product is needed. Used where e^w is a
// normal number and the condition w / (1 + w) is modest.
double polish(double w, double x) {
    const double ew = std::exp(w);
    const double slope = (1.0 + w) * ew;
    if (slope == 0.0 || !std::isfinite(slope)) return w;
    const double step = (w * ew - x) / slope;
    return std::isfinite(step) ? w - step : w;
}

// Boost's answer, polished where it is more than about 2 ulps off (see polish()): on the
// principal branch below x = -0.08, on the lower one below x = -0.1.
constexpr double kPrincipalPolishBelow = -0.08;
constexpr double kLowerPolishBelow = -0.1;

double principal_away(double x) {
    const double w = boost::math::lambert_w0(x, numeric::BoostPolicy());
    return x < kPrincipalPolishBelow ? polish(w, x) : w;
}

// The same on the lower branch, x < 0 normal; Boost is within about 2.5 ulps below x = -0.1
// and 1.9 above.
double lower_away(double x) {
    const double w = boost::math::lambert_wm1(x, numeric::BoostPolicy());
    return x < kLowerPolishBelow ? polish(w, x) : w;
}

// W_{-1}(x) for x so close to 0 that x e^{-w} leaves the normal range (x subnormal):
// Newton's method on w + ln(-w) = ln(-x), from the asymptotic start L1 - ln(-L1).
double lower_branch_near_zero(double x) {
    const double l1 = std::log(-x);
    double w = l1 - std::log(-l1);
    for (int iter = 0; iter < 8; ++iter) {
        const double f = w + std::log(-w) - l1;
        const double step = f / (1.0 + 1.0 / w);
        w -= step;
        // Newton converges quadratically here (see kQuadratic): after a step of 1e-9 relative the
        // error is at rounding level.
        if (std::fabs(step) <= 1e-9 * std::fabs(w)) break;
    }
    return w;
}

}  // namespace

double c05bac(double x, int branch, bool offset, NagError* fail) {
    // The common arguments first, where Boost's value stands as it is (a NaN fails both
    // comparisons and goes on to the checks below).
    if (!offset && x >= kPrincipalPolishBelow && x <= std::numeric_limits<double>::max() &&
        branch == 0) {
        fail->set(NE_NOERROR);
        return boost::math::lambert_w0(x, numeric::BoostPolicy());
    }
    if (!offset && x >= kLowerPolishBelow && x < -kSubnormalEdge && branch == -1) {
        fail->set(NE_NOERROR);
        return boost::math::lambert_wm1(x, numeric::BoostPolicy());
    }
    if (branch != 0 && branch != -1) return fail->set(NE_INT), 0.0;
    if (!std::isfinite(x)) return fail->set(NE_REAL), 0.0;
    const bool principal = branch == 0;
    fail->set(NE_NOERROR);
    if (offset) {
        if (x < 0.0 || (!principal && x >= kInvEHi + kInvELo)) return fail->set(NE_REAL), 0.0;
        constexpr double kBranchZone = 0.5;  // e dx below this: solve from dx
        if (std::numbers::e * x <= kBranchZone) return near_branch_point(x, principal);
        const double z = (x - kInvEHi) - kInvELo;
        if (principal) return principal_away(z);
        if (z >= 0.0) return fail->set(NE_REAL), 0.0;
        if (z > -kSubnormalEdge) return lower_branch_near_zero(z);
        return lower_away(z);
    }
    const double branch_point = -kInvEHi;  // the double nearest -1/e
    if (x < branch_point) return fail->set(NE_REAL), 0.0;
    if (x == branch_point) return -1.0;
    // Near the branch point the distance x + 1/e is formed exactly (x + hi is exact there)
    // and the offset method used, which keeps the digits W loses to x's closeness to -1/e.
    constexpr double kNearBranch = -0.2;  // e dx below about 1/2
    if (x < kNearBranch) return near_branch_point((x + kInvEHi) + kInvELo, principal);
    if (principal) return principal_away(x);
    if (x >= 0.0) return fail->set(NE_REAL), 0.0;
    if (x > -kSubnormalEdge) return lower_branch_near_zero(x);
    const double w = lower_away(x);
    if (!std::isfinite(w)) return fail->set(NE_CONV), 0.0;
    return w;
}

}  // namespace zemath::nag
