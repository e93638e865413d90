// c05bac: the real Lambert W function, w e^w = x, on the principal branch (W >= -1,
// x >= -1/e) or the lower branch (W <= -1, -1/e <= x < 0).
//
// Method: Boost.Math's lambert_w0 / lambert_wm1 (rational approximations and Halley
// refinement) for an argument given directly, followed by one Newton step on
// w e^w = x with a fused residual where Boost is a few ulps off (x < 1); on the lower
// branch at subnormal x, Newton on w + ln(-w) = ln(-x). With offset the argument is
// dx = x + 1/e, and near the branch point the answer is found from dx itself, since
// forming -1/e + dx would already cost the digits that matter there: with W = u - 1,
//     g(u) = (u - 1) e^u + 1 = e dx,   g(u) = sum_{n>=2} (n-1) u^n / n!,
// solved by Halley's method (u >= 0 on the principal branch, u <= 0 on the lower one; g
// by its series below |u| = 0.05, as u - (1 - u) expm1(u) beyond)
// from the branch-point series W = -1 + p - p^2/3 + 11 p^3/72 - ..., p = +-sqrt(2 e dx);
// below |p| = 1e-4 the series alone is exact to double precision. Away from the branch
// point (e dx > 1/2) x is formed as (dx - hi) - lo with 1/e split in two parts, exact
// enough that W keeps its relative accuracy up to x = 0.
// Reference: Corless, Gonnet, Hare, Jeffrey and Knuth (1996), Adv. Comput. Math. 5,
// 329-359 (the series); Barry, Culligan-Hensley and Barry (1995), ACM TOMS 21, 161-171.
//
// Failures: NE_INT for a branch other than 0 or -1; NE_REAL for NaN, infinity, or x
// outside the branch's domain (x < -1/e; x >= 0 on the lower branch); NE_CONV if the
// Newton iteration fails (not expected).
#include <cmath>
#include <numbers>

#include "platform/numeric/boost_policy.hpp"  // first: configures Boost
#include <boost/math/special_functions/lambert_w.hpp>

#include "platform/nag/c05.hpp"

namespace zemath::nag {

namespace {

// Below this the principal-branch result is polished (polish()); above it Boost is at
// rounding level and e^w may overflow.
constexpr double kPolishBelow = 1.0;
// Lower branch: below this distance from 0 (the subnormal range) the solution is found
// from logarithms, where Boost's evaluation loses the argument.
constexpr double kSubnormalEdge = 2.2250738585072014e-308;

// 1/e = kInvEHi + kInvELo to about 107 bits.
constexpr double kInvEHi = 0.36787944117144233;
constexpr double kInvELo = -1.2428753672788363e-17;

// g(u) = (u - 1) e^u + 1 = u - (1 - u) expm1(u), accurate near u = 0 where it behaves like
// u^2 / 2: the series below |u| = 0.05 (at most 8 terms); beyond, the expm1 form, whose
// rounding, a few ulps of u, moves the root u by a few ulps of 1 (W = u - 1 keeps its
// relative accuracy). *em1 receives expm1(u) (0 from the series: not needed there).
double branch_offset_g(double u, double* em1) {
    constexpr double kSeriesBelow = 0.05;
    *em1 = 0.0;
    if (std::fabs(u) < kSeriesBelow) {
        double term = u;  // u^n / n!
        double sum = 0.0;
        for (int n = 2; n < 40; ++n) {
            term *= u / n;
            const double add = (n - 1) * term;
            sum += add;
            // A term below 1e-17 of the sum (a tenth of an ulp) no longer changes it.
            if (std::fabs(add) <= 1e-17 * std::fabs(sum)) break;
        }
        return sum;
    }
    *em1 = std::expm1(u);
    return u - (1.0 - u) * *em1;
}

// W(-1/e + dx) for e dx <= 1/2, from dx alone; sign +1 principal, -1 lower branch.
bool near_branch_point(double dx, double sign, double* w) {
    const double c = std::numbers::e * dx;
    const double p = sign * std::sqrt(2.0 * c);
    // Branch-point series coefficients of W in p.
    constexpr double m2 = -1.0 / 3.0, m3 = 11.0 / 72.0, m4 = -43.0 / 540.0, m5 = 769.0 / 17280.0,
                     m6 = -221.0 / 8505.0;
    const double series_u = p * (1.0 + p * (m2 + p * (m3 + p * (m4 + p * (m5 + p * m6)))));
    constexpr double kSeriesOnly = 1e-4;  // |p|^6 * 0.026 below 1e-25
    if (std::fabs(p) < kSeriesOnly) {
        *w = series_u - 1.0;
        return true;
    }
    // From the series (within about 0.015 |p|^7 of u: 5e-3 at the zone's edge |p| = 0.86),
    // Halley's method (g' = u e^u, g'' = (1 + u) e^u, e^u from the same expm1 as g).
    // Stopping rule: the step itself can never fall reliably below one ulp of u, because
    // g(u) - c is computed with a rounding error of a few ulps of c; near the root the
    // steps bounce at that level, so a test of the step against a relative bound near
    // machine epsilon fails at scattered arguments. Instead, stop after the step that shows
    // the convergence cubic: the relative error after a Halley step of relative size r is
    // of order r^3 (with constants of order 1 here), so once |step| <= 1e-6 |u| the new
    // iterate is as accurate as rounding allows; a Newton step (the correction damped
    // away) waits for 1e-9, its error being r^2 / 2.
    double u = series_u;
    constexpr int kMaxNewton = 40;
    constexpr double kCubic = 1e-6, kQuadratic = 1e-9;
    for (int iter = 0; iter < kMaxNewton; ++iter) {
        double em1 = 0.0;
        const double g = branch_offset_g(u, &em1);
        const double eu = em1 != 0.0 ? 1.0 + em1 : std::exp(u);
        const double slope = u * eu;
        if (slope == 0.0 || !std::isfinite(slope)) break;
        const double newton = (g - c) / slope;
        const double denominator = 1.0 - 0.5 * newton * (1.0 + u) / u;
        const bool halley = denominator > 0.5;
        const double step = halley ? newton / denominator : newton;
        if (!std::isfinite(step)) break;
        u -= step;
        if (std::fabs(step) <= (halley ? kCubic : kQuadratic) * std::fabs(u)) {
            *w = u - 1.0;
            return std::isfinite(u);
        }
    }
    *w = u - 1.0;
    return false;
}

// One Newton step on w e^w = x. Boost's rational approximations are a few ulps off
// between x = -0.25 and 0 (up to about 1e-15 relative near x = -0.19); the step, with
// the residual formed by a fused multiply-add, brings them to rounding level. Used
// where e^w is a normal number and the condition w / (1 + w) is modest.
double polish(double w, double x) {
    const double ew = std::exp(w);
    const double slope = (1.0 + w) * ew;
    if (slope == 0.0 || !std::isfinite(slope)) return w;
    const double step = std::fma(w, ew, -x) / slope;
    return std::isfinite(step) ? w - step : w;
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
    if (branch != 0 && branch != -1) return fail->set(NE_INT), 0.0;
    if (!std::isfinite(x)) return fail->set(NE_REAL), 0.0;
    const bool principal = branch == 0;
    fail->set(NE_NOERROR);
    if (offset) {
        if (x < 0.0 || (!principal && x >= kInvEHi + kInvELo)) return fail->set(NE_REAL), 0.0;
        constexpr double kBranchZone = 0.5;  // e dx below this: solve from dx
        if (std::numbers::e * x <= kBranchZone) {
            double w = 0.0;
            if (!near_branch_point(x, principal ? 1.0 : -1.0, &w)) fail->set(NE_CONV);
            return w;
        }
        const double z = (x - kInvEHi) - kInvELo;
        if (!principal && z >= 0.0) return fail->set(NE_REAL), 0.0;
        if (principal) {
            const double w = boost::math::lambert_w0(z, numeric::BoostPolicy());
            return z < kPolishBelow ? polish(w, z) : w;
        }
        if (z > -kSubnormalEdge) return lower_branch_near_zero(z);
        return polish(boost::math::lambert_wm1(z, numeric::BoostPolicy()), z);
    }
    const double branch_point = -kInvEHi;  // the double nearest -1/e
    if (x < branch_point) return fail->set(NE_REAL), 0.0;
    if (x == branch_point) return -1.0;
    // Near the branch point the distance x + 1/e is formed exactly (x + hi is exact there)
    // and the offset method used, which keeps the digits W loses to x's closeness to -1/e.
    constexpr double kNearBranch = -0.2;  // e dx below about 1/2
    if (x < kNearBranch) {
        const double dx = (x + kInvEHi) + kInvELo;
        double w = 0.0;
        if (!near_branch_point(dx, principal ? 1.0 : -1.0, &w)) fail->set(NE_CONV);
        return w;
    }
    if (principal) {
        const double w = boost::math::lambert_w0(x, numeric::BoostPolicy());
        return x < kPolishBelow ? polish(w, x) : w;
    }
    if (x >= 0.0) return fail->set(NE_REAL), 0.0;
    if (x > -kSubnormalEdge) return lower_branch_near_zero(x);
    const double w = polish(boost::math::lambert_wm1(x, numeric::BoostPolicy()), x);
    if (!std::isfinite(w)) return fail->set(NE_CONV), 0.0;
    return w;
}

}  // namespace zemath::nag
