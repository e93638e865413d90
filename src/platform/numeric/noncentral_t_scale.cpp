// The lower tail of the non-central t law by quadrature over its scale law:
//     P(T <= t) = E[Phi(t S - delta)] = integral_0^inf Phi(t s - delta) f_S(s) ds,
// S = sqrt(chi2_v / v), f_S(s) = exp(K - a D(s)) / s with a = v/2, D(s) = s^2 - 1 - 2 ln s
// (the deviance a D of u = a s^2 from a; K = ln 2 + ln(a / (2 pi))/2 - mu(a), mu Stirling's
// error term, as in chi_scale.cpp). The integrand is positive, so the relative accuracy of
// the sum is that of its terms and of the rule, for a result of any size.
//
// Panels fitted to the integrand. In y = ln s the integrand is g(y) = exp(K - a D) Phi(c),
// c = t e^y - delta, unimodal (it is log-concave in s for v >= 1). Its logarithm L(y) and
// slope L' = v - v s^2 + t s m(c) (m the inverse Mills ratio) are cheap in double; the
// factors change on known scales in y: the density on 1/(s sqrt(2v)) (its curvature 2 v s^2),
// Phi on 1/(|t| s) (one unit of c) wherever c < 13, and not at all above (1 - Phi(12) < 2e-33,
// below any rule's notice). The mode of g is found by Newton's steps on L' inside a bracket
// (about ten evaluations of L); from it each side is covered by panels marched outwards,
// each as wide as allowed by
//   - 6.5 local scales at both of its ends (the smaller of the two factors' scales),
//   - a fall of L by at most 21 across it (its width from L' and the curvature bound),
//   - where the scales are wider than two units of y (s changes by e^2 or more on a
//     panel): e^(0.27 w) A <= 3, A the size of the double exponential terms a s^2 and
//     |t| s (1 + max(-c, 0)) at the outer end, so that the rule's Bernstein ellipse (rho 2.7)
//     stays where those terms change by O(1),
// and ends at c = 12 (where Phi's step begins). A panel narrower than one unit of y takes
// the 20-point Gauss-Legendre rule in s (nodes exact in two parts, below); a wider one
// takes it in y (there s^(v-1) would be non-analytic at the panel's end in s, and the
// slope is below 21, so the node's rounding in s costs at most 2e-15 of a node's value).
// Panels beginning below e^-26 of the peak take the 12-point rule. A side ends at the
// first panel end below e^-40 of the peak whose rest, at most g / lambda there with lambda a
// bound on how fast L falls beyond (from the log-concavity in s: |L'| itself above the
// mode, min(1, L') below it), is below 1e-18 of the side's sum (in any case at e^-80); one
// left beyond s = 1e-300 ends with a panel to s = 0.
// 80 to 240 evaluations of the integrand per call (median about 100; breaks at fixed
// feature widths took 1000 to 2000).
//
// Rounding. The probability is ill-conditioned in t where |delta| is large: at
// delta = 1e4 one ulp of t s moves Phi(c) by up to |c| 1e4 ulps in the tails. So the nodes
// are carried as a break B (a double) plus an offset o (below the panel's width): the node
// s = B + o is exact in two parts, c = t B - delta + t o is formed exactly in two parts and
// Phi takes both (normal.hpp), and D is formed from s = B + o in two parts: near s = 1 by
// its series in d = s - 1, D = 2 d^2 - 2 d^3/3 + d^4/2 - ... (|d| < 1/4, relative accuracy
// where s^2 - 1 - 2 ln s would cancel; as many terms as |d| needs, at most 28), elsewhere as s^2 -
// 1 - 2 ln s with s^2 and ln s in two parts (ln s within 3e-18, double_double.hpp). A node's own
// rounding (the offset's, below an ulp of the panel's width) is then of the rule's order. Error
// bound (relative): the rule's (the 20-point rule's remainder on an exponential that falls by e^21
// across the panel is 3e-18 of it; with the tabulated nodes and weights it was measured within
// 4e-17 on such a panel, on a normal density over 6.5 scales and on Phi over 6.5 units of c; the
// 12-point rule's is below 1e-9 of panels that are themselves below e^-26 of the peak), the tails
// left out (1e-18), the constant K's (mu within 1e-15 below v = 30, 3e-17 above), Phi's few ulps,
// and the exponent's rounding, about 2e-16 |ln f| where the integrand's mass sits far in the
// density's tail (ln f the log density there), plus a 6e-18 a absolute in the exponent where |s -
// 1| >= 1/4 (only where the density is above e^-745, a <= 7500: 5e-14). Measured against 40-digit
// mpmath integrals (tests/reference/gen_noncentral_t_large_delta.py) within 4.7e-15 over |delta| in
// [41, 1e4] and df in [1, 1e10] with results down to 1e-250 (its grid and its --scale rows: the
// switches, non-integer df near 1, random arguments in both tails); against the same march six
// times denser (panels of 1.5 scales and falls of 4) within 1.8e-14 on 3000 random arguments (df 1
// .. 1e10, |delta| 1e-3 .. 1e4, both tails, results to 1e-300). Laid in s down to s = 0, the rule
// missed s^(v-1) by up to 1e-7 at non-integer df below 2. About 8 to 15 us per call (median by
// region), at most 0.03 ms. Declined (NaN): df outside [1, 1e10] (above, the density's width
// 1/sqrt(2v) falls below the rounding of y near 0), t or delta not finite, a side needing more than
// 100 panels (never seen). References: Owen (1968), "A survey of properties and applications of the
// noncentral t-distribution" (the integral over the chi scale); Abramowitz and Stegun 25.4.30 (the
// rule).
#include "platform/numeric/noncentral_t_scale.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <limits>
#include <numbers>

#include "platform/numeric/double_double.hpp"
#include "platform/numeric/gauss_legendre.hpp"
#include "platform/numeric/normal.hpp"
#include "platform/numeric/stirling.hpp"

namespace zemath::numeric {

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kSeriesReach = 0.25;  // |s - 1| below it: D by its series
constexpr double kSmallestS = 1e-300;
constexpr double kLargestY = 690.0;  // e^y within the double range
constexpr int kNewtonSteps = 60;

// 2 (-1)^k / k, k = 3..30: D(d) = d^2 (2 + sum_k c_k d^(k-2)); at |d| < 1/4 the terms
// beyond k = 30 are below 1e-18 of the sum.
constexpr std::array<double, 28> kDevianceSeries = [] {
    std::array<double, 28> c{};
    for (int k = 3; k <= 30; ++k) c[k - 3] = (k % 2 == 0 ? 2.0 : -2.0) / k;
    return c;
}();
// The terms the series needs at |d|: those beyond k = K total about (2 / (K + 1)) |d|^(K-1),
// below 1e-18 of the sum (about 2) at |d| up to 10^(-18 / (K - 1)). Returns K - 2, the count
// of coefficients taken (at df 1e6 the nodes lie within |d| < 1e-2: 8 instead of 28).
std::size_t deviance_terms(double d) {
    const double size = std::fabs(d);
    if (size <= 1e-6) return 2;     // K = 4
    if (size <= 3.1e-5) return 3;   // K = 5
    if (size <= 1e-3) return 5;     // K = 7
    if (size <= 1e-2) return 8;     // K = 10
    if (size <= 0.05) return 13;    // K = 15
    if (size <= 0.1) return 17;     // K = 19
    return kDevianceSeries.size();  // K = 30
}

class Integrand {
  public:
    Integrand(double t, double df, double delta)
        : t_(t),
          delta_(delta),
          a_(0.5 * df),
          log_constant_(std::numbers::ln2 + 0.5 * std::log(a_ / (2.0 * std::numbers::pi)) -
                        stirling_error(a_)) {}

    // f_S(s) Phi(t s - delta) at s = base + offset, exact in two parts.
    double operator()(double base, double offset) const {
        TwoPart c = add(two_product(t_, base), TwoPart{-delta_, 0.0});
        c = add(c, two_product(t_, offset));
        // t s overflows only where the density has long vanished; Phi is 0 or 1 there.
        const double phi =
            std::isfinite(c.hi) ? normal_lower(c.hi, c.lo) : (c.hi > 0.0 ? 1.0 : 0.0);
        if (phi == 0.0) return 0.0;
        const TwoPart s = two_sum(base, offset);
        if (!(s.hi > 0.0)) return 0.0;
        double deviance;
        if (std::fabs(s.hi - 1.0) < kSeriesReach) {
            const TwoPart d = add(two_sum(base, -1.0), TwoPart{offset, 0.0});
            const std::size_t terms = deviance_terms(d.hi);
            double sum = kDevianceSeries[terms - 1];
            for (std::size_t k = terms - 1; k-- > 0;) sum = sum * d.hi + kDevianceSeries[k];
            sum = sum * d.hi + 2.0;
            // D'(d) = 2 d (2 + d) / (1 + d) carries the low part.
            deviance = sum * d.hi * d.hi + 2.0 * d.hi * (2.0 + d.hi) / (1.0 + d.hi) * d.lo;
        } else {
            const TwoPart square_less_one = add(multiply(s, s), TwoPart{-1.0, 0.0});
            const TwoPart log_s = log_two_part(s.hi, s.lo);
            const TwoPart dev = add(square_less_one, TwoPart{-2.0 * log_s.hi, -2.0 * log_s.lo});
            deviance = dev.hi + dev.lo;
        }
        const double exponent = log_constant_ - a_ * deviance;
        if (s.hi < 1e-250) return phi * std::exp(exponent - std::log(s.hi));
        return phi * std::exp(exponent) / s.hi;
    }

  private:
    double t_, delta_, a_, log_constant_;
};

// The rule over [lo, hi] in s, each node carried from the nearer end.
template <std::size_t Half>
double rule_in_s(const Integrand& f, const GaussLegendreRule<Half>& rule, double lo, double hi) {
    const double half = 0.5 * (hi - lo);
    double sum = 0.0;
    for (std::size_t i = 0; i < Half; ++i) {
        const double inset = half * (1.0 - rule.node[i]);  // from the end
        sum += rule.weight[i] * (f(lo, inset) + f(hi, -inset));
    }
    return sum * half;
}

// The rule over [ya, yb] in y (the integrand times ds/dy = s).
template <std::size_t Half>
double rule_in_y(const Integrand& f, const GaussLegendreRule<Half>& rule, double ya, double yb) {
    const double half = 0.5 * (yb - ya), mid = 0.5 * (ya + yb);
    double sum = 0.0;
    for (std::size_t i = 0; i < Half; ++i) {
        const double d = half * rule.node[i];
        const double lo = std::exp(mid - d), hi = std::exp(mid + d);
        sum += rule.weight[i] * (f(lo, 0.0) * lo + f(hi, 0.0) * hi);
    }
    return sum * half;
}

constexpr double kWideInY = 1.0;      // wider panels take the rule in y
constexpr double kCheapBelow = 26.0;  // panels starting below e^-26 of the peak: 12 points
double fitted_panel(const Integrand& f, double ya, double yb, bool cheap) {
    const bool wide = yb - ya > kWideInY;
    if (cheap) {
        return wide ? rule_in_y(f, kGaussLegendre12, ya, yb)
                    : rule_in_s(f, kGaussLegendre12, std::exp(ya), std::exp(yb));
    }
    return wide ? rule_in_y(f, kGaussLegendre20, ya, yb)
                : rule_in_s(f, kGaussLegendre20, std::exp(ya), std::exp(yb));
}

constexpr double kFlatC = 12.0;       // from c = 12 on, 1 - Phi(c) < 2e-33: Phi is 1 to the rule
constexpr double kPanelScales = 6.5;  // a panel spans at most 6.5 local scales
constexpr double kPanelDrop = 21.0;   // and L falls by at most 21 across it
constexpr double kTailDrop = 40.0;    // a side may end below e^-40 of the peak
constexpr double kLastDrop = 80.0;    // and ends below e^-80
constexpr double kRestShare = 1e-18;  // where the rest is below this share of the side
constexpr double kWideFrom = 2.0;     // scales wider than this (in y) are limited as below
constexpr double kWideSize = 3.0;     // the double exponential terms' size in the ellipse
constexpr double kWideReach = 1.85;   // 1 / (2 x 0.27): the ellipse's reach beyond the end
constexpr int kMaxPanels = 100;       // on a side

// The widest panel in y at a point where the factors change at `rate` (the inverse of
// their scale) and the double exponential terms have size `size` (see the opening block).
double width_limit(double rate, double size) {
    const double narrow = kPanelScales / rate;
    if (narrow <= kWideFrom) return narrow;
    const double wide = size < kWideSize ? kWideReach * std::log(kWideSize / size) : 0.0;
    return std::min(narrow, std::max(kWideFrom, wide));
}

// L, the logarithm of the integrand in y up to a constant (rough: it places panels), its
// slope, and what a panel may span there.
struct Shape {
    double log;
    double slope;
    double limit;          // the widest panel from here
    double curve;          // a bound on |L''| (the factors' rates squared)
    double density_limit;  // the widest panel the density alone allows (where Phi is 1)
    bool flat;             // Phi is 1 to the rule here
};

class Shaper {
  public:
    Shaper(double t, double df, double delta)
        : t_(t), delta_(delta), v_(df), a_(0.5 * df), density_rate_(std::sqrt(2.0 * df)) {}

    Shape operator()(double y) const {
        const double s = std::exp(y);
        const double c = t_ * s - delta_;
        double log_phi, mills;
        if (c > 5.0) {
            const double upper = normal_upper(c);
            log_phi = -upper;
            mills = normal_density(c) / (1.0 - upper);
        } else if (c > -8.0) {
            const double lower = normal_lower(c);
            log_phi = std::log(lower);
            mills = normal_density(c) / lower;
        } else {
            mills = inverse_mills(c);  // Phi(c) = phi(c) / m
            log_phi = -0.5 * c * c - std::log(mills) - 0.9189385332046727;
        }
        const double ts = std::fabs(t_) * s;
        const bool flat = c > kFlatC + 1.0;
        const double rate = std::max(density_rate_ * s, flat ? 0.0 : ts);
        const double size = std::max(a_ * s * s, flat ? 0.0 : ts * (1.0 + std::max(-c, 0.0)));
        return {log_phi - a_ * (std::expm1(2.0 * y) - 2.0 * y),
                v_ - v_ * s * s + t_ * s * mills,
                width_limit(rate, size),
                rate * rate,
                width_limit(density_rate_ * s, a_ * s * s),
                flat};
    }
    double curvature(double y) const {
        const double s = std::exp(y);
        const double c = t_ * s - delta_;
        const double m = inverse_mills(c);
        return -2.0 * v_ * s * s + t_ * s * m - t_ * t_ * s * s * std::clamp(m * (m + c), 0.0, 1.0);
    }
    // A lower bound on the rate at which L falls beyond y in direction dir (slope: L'(y)).
    // The integrand is log-concave in s (v >= 1), so h = d ln g_s / ds falls with s, and
    // L' = 1 + s h: above the mode L' <= 1 + s h(s_y) <= L'(y) beyond y; below it
    // L' >= min(1, L'(y)) beyond y. For t < 0 below the mode L' only grows outwards (v s^2,
    // |t| s and m(c) all fall), and for t > 0 it stays above v (1 - s^2).
    double least_fall_beyond(double y, double slope, double dir) const {
        if (dir > 0.0) return -slope;
        if (t_ < 0.0) return slope;
        const double s = std::exp(y);
        return std::max(std::min(1.0, slope), v_ * (1.0 - s * s));
    }
    // Where c = kFlatC in y (NaN where it never is).
    double flat_edge() const {
        const double s = (delta_ + kFlatC) / t_;
        return s > 0.0 ? std::log(s) : kNaN;
    }

  private:
    double t_, delta_, v_, a_, density_rate_;
};

// The integrand's mode in y: the one change of sign of L', bracketed by doubling steps
// from y = 0 and closed by Newton's steps kept inside the bracket (bisection where a step
// leaves it), to a thousandth of the local scale.
double fitted_mode(const Shaper& shape) {
    Shape at = shape(0.0);
    if (at.slope == 0.0) return 0.0;
    const double dir = at.slope > 0.0 ? 1.0 : -1.0;
    double y = 0.0, left = -kLargestY, right = kLargestY;
    for (double step = std::min(at.limit / kPanelScales, 1.0);; step *= 2.0) {
        const double next = std::clamp(y + dir * step, -kLargestY, kLargestY);
        const Shape n = shape(next);
        if ((n.slope > 0.0) != (dir > 0.0) || next == y) {
            left = dir > 0.0 ? y : next;
            right = dir > 0.0 ? next : y;
            y = next;
            at = n;
            break;
        }
        y = next;
        at = n;
    }
    for (int i = 0; i < kNewtonSteps; ++i) {
        const double tolerance = 1e-3 * std::min(at.limit / kPanelScales, 1.0);
        if (!(right - left > tolerance)) break;
        const double curve = shape.curvature(y);
        double next = curve < 0.0 ? y - at.slope / curve : kNaN;
        if (!(next > left && next < right)) next = 0.5 * (left + right);
        at = shape(next);
        if (at.slope == 0.0) return next;
        (at.slope > 0.0 ? left : right) = next;
        const bool converged = std::fabs(next - y) < 0.1 * tolerance;
        y = next;
        if (converged) break;
    }
    return y;
}

// The integral from the mode outwards in direction dir (+1 or -1), panel by panel;
// log_offset turns L into the logarithm of the integrand in y. NaN past kMaxPanels.
double fitted_side(const Integrand& f, const Shaper& shape, double mode, const Shape& at_mode,
                   double dir, double log_offset) {
    const double flat_edge = shape.flat_edge();
    double y = mode;
    Shape at = at_mode;
    double sum = 0.0;
    for (int i = 0; i < kMaxPanels; ++i) {
        // The width on which L falls by kPanelDrop, from its slope and the curvature bound,
        // then narrowed while the far end allows less.
        const double slope = std::fabs(at.slope);
        double h = std::min(
            at.limit,
            2.0 * kPanelDrop / (slope + std::sqrt(slope * slope + 2.0 * at.curve * kPanelDrop)));
        double next = y;
        Shape n{};
        for (int k = 0; k < kNewtonSteps; ++k) {
            next = y + dir * h;
            if ((flat_edge - y) * dir > 0.0 && (flat_edge - next) * dir < 0.0) next = flat_edge;
            next = std::clamp(next, -kLargestY, kLargestY);
            n = shape(next);
            const double width = std::fabs(next - y);
            const double far_limit = at.flat ? n.density_limit : n.limit;
            if (const double drop = at.log - n.log; drop > 1.1 * kPanelDrop) {
                h = width * std::clamp(std::sqrt(kPanelDrop / drop), 0.5, 0.9);
            } else if (width > 1.25 * far_limit) {
                h = far_limit;
            } else {
                break;
            }
        }
        const bool cheap = at.log < at_mode.log - kCheapBelow;
        sum += dir > 0.0 ? fitted_panel(f, y, next, cheap) : fitted_panel(f, next, y, cheap);
        y = next;
        at = n;
        if (std::fabs(y) >= kLargestY) {
            if (dir < 0.0) sum += rule_in_s(f, kGaussLegendre20, 0.0, std::exp(y));
            return sum;
        }
        if (at.log < at_mode.log - kTailDrop) {
            const double rest =
                std::exp(at.log + log_offset) / shape.least_fall_beyond(y, at.slope, dir);
            if (rest <= kRestShare * sum || at.log < at_mode.log - kLastDrop) return sum;
        }
        if (dir < 0.0 && std::exp(y) < kSmallestS) {
            return sum + rule_in_s(f, kGaussLegendre20, 0.0, std::exp(y));
        }
    }
    return kNaN;
}

double lower_by_fitted_panels(double t, double df, double delta) {
    const Integrand f(t, df, delta);
    const Shaper shape(t, df, delta);
    const double mode = fitted_mode(shape);
    const Shape at_mode = shape(mode);
    const double s_mode = std::exp(mode);
    const double log_offset = std::log(f(s_mode, 0.0) * s_mode) - at_mode.log;
    return fitted_side(f, shape, mode, at_mode, 1.0, log_offset) +
           fitted_side(f, shape, mode, at_mode, -1.0, log_offset);
}

// For t <= -kPowerFormT the event T <= t is S <= W / |t|, W = -(Z + delta) > 0, so
//     P(T <= t) = integral_0^inf F_S(w / |t|) phi(w + delta) dw,  F_S(x) = P(a, a x^2),
// and the incomplete gamma function's series P(a, y) = y^a / Gamma(a + 1) G(y),
// G(y) = e^-y sum_k y^k / ((a + 1) ... (a + k)) (in [e^-y, 1], decreasing), gives
//     P(T <= t) = a^a / Gamma(a + 1) |t|^-v M,  M = integral_0^inf w^v phi(w + delta) G dw,
// G at y = a w^2 / t^2.
// G is 1 to double precision wherever y < 1e-17 (everywhere from |t| = 1e50 on; at |t| >= 1e10
// a result above the double range's floor needs v below about 60, and there y stays below 1e-10
// up to w = 2e4). w^v phi(w + delta) is log-concave (curvature of its logarithm -v/w^2 - 1, below
// -1), with its mode at w* = 2v / (delta + sqrt(delta^2 + 4v)) and width 1/sqrt(1 + v / w*^2);
// G only lowers the slope of the logarithm (by at most 2 a^2 w / t^2). So
//   - the integrand is at most its mode's value times e^(-(w - w*)^2 / 2): P <= e^E
//     e^(-(w* + delta)^2 / 2) with E below, and where that is below half the smallest subnormal
//     the result is 0 at once (v above about 7 at |t| = 1e50, delta above 39 always);
//   - M by the 20-point rule on panels about the mode, widths 1, 2, 4, ... up to 64 above it
//     and below it while above w*/2, then halving towards 0; each side stops where the rest,
//     at most the integrand over its logarithm's slope there (log-concavity), is below 1e-18
//     of the sum; below w = x with x (|delta| + x/2) <= 1/2 the rest is the power series
//         phi(delta) sum_k c_k x^(v + k + 1) / (v + k + 1),
//     c_k the coefficients of e^(-delta w - w^2 / 2) ((k + 1) c_(k+1) = -delta c_k - c_(k-1)),
//     whose terms fall like 2^-k / k! (at most e of cancellation). 7 to 12 panels in all where 66
//     panels of halving to 2^-60 of the mode took 0.03 to 0.06 ms.
// The exponent E = a ln a - ln Gamma(a + 1) - v ln|t| + v ln w* (up to 745 in size) is carried in
// two parts, a ln a - ln Gamma(a + 1) as a - ln(2 pi a) / 2 - mu(a) (mu Stirling's error term:
// no cancellation of a ln a against ln Gamma), and the integrand's w^v as e^(v ln(w / w*)) with
// ln(w / w*) from the offset w - w* near the mode, so that its rounding is relative to its own
// size rather than to ln w (which reaches 9 at w = 1e4), and ln w* in two parts for E (its
// rounding times v cost 3e-14 at v = 30). Measured within 7.3e-15 of mpmath from t = -1e10 to
// -DBL_MAX, df 1 to 30, |delta| to 1e4 (gen_noncentral_t_large_delta.py --huge-t). Declined
// (NaN) where G's argument exceeds 1e-3 within 64 widths above the mode (there G is no longer
// a short series).
constexpr double kHugeT = kNoncentralTHugeT;
constexpr double kPowerFormT = kNoncentralTPowerFormT;
constexpr double kPowerFormReach = 64.0;        // widths above the mode at most
constexpr double kPowerFormRest = 1e-18;        // a side ends where its rest is below this share
constexpr double kPowerFormMaxY = 1e-3;         // G's argument at the reach, at most
constexpr double kFlatG = 1e-17;                // G's argument below which G is 1 to the rounding
constexpr double kBelowHalfSubnormal = -746.0;  // ln(2^-1075) = -745.13, with a margin
constexpr double kNearZeroReach = 0.5;          // x (|delta| + x/2) at most this for the series
double lower_in_power_form(double t, double v, double delta) {
    const double a = 0.5 * v;
    const double root = std::sqrt(delta * delta + 4.0 * v);
    // Both forms of the root free of cancellation.
    const double mode = delta >= 0.0 ? 2.0 * v / (delta + root) : 0.5 * (root - delta);
    const double width = 1.0 / std::sqrt(1.0 + v / (mode * mode));
    const TwoPart log_mode = log_two_part(mode, 0.0);
    const TwoPart log_t = log_two_part(-t, 0.0);
    TwoPart exponent = two_sum(a, -0.5 * std::log(2.0 * std::numbers::pi * a) - stirling_error(a));
    exponent = add(exponent, negate(two_product(v, log_t.hi)));
    exponent = add(exponent, TwoPart{-v * log_t.lo, 0.0});
    exponent = add(exponent, two_product(v, log_mode.hi));
    exponent = add(exponent, TwoPart{v * log_mode.lo, 0.0});
    const double peak = mode + delta;
    if (exponent.hi - 0.5 * peak * peak < kBelowHalfSubnormal) return 0.0;
    const double y_scale = a / t / t;  // y = y_scale w^2 (0 where t^2 overflows)
    const double reach = mode + kPowerFormReach * width;
    const double y_reach = y_scale * reach * reach;
    if (y_reach > kPowerFormMaxY) return kNaN;
    const bool flat_g = y_reach < kFlatG;
    // The integrand over w^v's value at the mode; the rule runs in z = w + delta (the normal's
    // argument, so that a node's rounding is relative to z, not to w, which reaches 1e4: that
    // cost 4e-13).
    const auto h = [=](double z) {
        const TwoPart w = two_sum(z, -delta);
        if (!(w.hi > 0.0)) return 0.0;
        const double offset = (w.hi - mode) + w.lo;
        const double log_ratio = std::fabs(offset) < 0.5 * mode
                                     ? std::log1p(offset / mode)
                                     : std::log(w.hi / mode) + w.lo / w.hi;
        const double value = std::exp(v * log_ratio) * normal_density(z);
        if (flat_g) return value;
        const double y = y_scale * w.hi * w.hi;
        double term = 1.0, sum = 1.0;
        for (int k = 1; k < 30 && term > 1e-17 * sum; ++k) {
            term *= y / (a + k);
            sum += term;
        }
        return value * std::exp(-y) * sum;
    };
    const auto rule = [&](double w_lo, double w_hi) {
        return gauss_legendre20(h, w_lo + delta, w_hi + delta);
    };
    double sum = 0.0;
    // Above the mode: the logarithm falls at least at its slope's rate beyond lo.
    double lo = mode;
    for (double offset = width; offset <= kPowerFormReach * width; offset *= 2.0) {
        sum += rule(lo, mode + offset);
        lo = mode + offset;
        const double fall = lo + delta - v / lo;
        if (fall > 0.0 && h(lo + delta) <= kPowerFormRest * sum * fall) break;
    }
    // Below the mode: the integral over [0, w] is at most h(w) over the slope there.
    const auto negligible_below = [&](double w) {
        const double rise = v / w - (w + delta) - 2.0 * a * y_scale * w;
        return rise > 0.0 && h(w + delta) <= kPowerFormRest * sum * rise;
    };
    double hi = mode;
    for (double offset = width; offset < 0.5 * mode; offset *= 2.0) {
        sum += rule(mode - offset, hi);
        hi = mode - offset;
        if (negligible_below(hi)) return exp_two_part(exponent) * sum;
    }
    while (hi > 0.0) {
        if (hi * (std::fabs(delta) + 0.5 * hi) <= kNearZeroReach && y_scale * hi * hi < kFlatG) {
            // integral_0^x (w / w*)^v phi(w + delta) dw by its power series.
            double previous = 0.0, term = 1.0, series = 1.0 / (v + 1.0);
            for (int k = 0; k < 60; ++k) {
                const double next = (-delta * hi * term - hi * hi * previous) / (k + 1);
                previous = term;
                term = next;
                series += term / (v + k + 2);
                if (std::fabs(term) + std::fabs(previous) <= 1e-17 * std::fabs(series)) break;
            }
            sum += normal_density(delta) * std::exp(v * std::log(hi / mode)) * hi * series;
            break;
        }
        if (negligible_below(hi)) break;
        sum += rule(0.5 * hi, hi);
        hi *= 0.5;
    }
    return exp_two_part(exponent) * sum;
}

}  // namespace

double noncentral_t_lower_by_scale(double t, double df, double delta) {
    if (!(df >= 1.0 && df <= kNoncentralTScaleDfMax) || !std::isfinite(t) || !std::isfinite(delta))
        return kNaN;
    if (t == 0.0) return normal_lower(-delta);
    if (t >= kHugeT) return 1.0;  // the upper tail is below 1e-46 (see lower_in_power_form)
    if (t <= -kPowerFormT) {
        const double p = lower_in_power_form(t, df, delta);
        if (!std::isnan(p)) return p;
    }
    return lower_by_fitted_panels(t, df, delta);
}

}  // namespace zemath::numeric
