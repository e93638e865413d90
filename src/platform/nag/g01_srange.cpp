// g01emc, g01fmc: the studentized range distribution: lower-tail probability
// P(q; v, r) and its deviate.
//
// Method: the double integral of Lund and Lund (1983, AS 190) and Copenhaver and Holland
// (1988, J. Statist. Comput. Simul. 30, 1-15),
//     P(q; v, r) = integral f_S(s) R(q s) ds,  S = sqrt(chi2_v / v),
//     R(w) = (2 Phi(w/2) - 1)^r + 2 r integral_{w/2}^{inf} phi(u) [Phi(u) - Phi(u-w)]^(r-1) du,
// with quadrature that follows the integrands instead of the published fixed 12/16-point
// panels and e^-30 cut-offs (which hold only 4-10 digits, and fail for v = 1). Both
// integrands are log-concave. R(w): its integrand falls from u = w/2, with a slope and
// curvature known there in closed form; the stretch over which it falls by e^-42 is taken
// by two 20-point Gauss-Legendre panels (about 40 evaluations for any r up to 2^31 - 1).
// The outer integral is taken in y = ln s (no end-point singularity for non-integer v):
// its mode, which lies between 0 and ln(1 + (r-1)/v) / 2, is found by regula falsi on the
// slope of its logarithm (the range density R' comes with R at little cost), its width
// from the last secant; from the mode the trapezoidal rule on the whole line, its step
// (first 3/4 of the width) halved until two levels agree to 1e-8 (the integrand is analytic in a
// strip, so the rule's error falls at least like e^(-c/h): that agreement leaves the finer
// sum within about 1e-16; usually 40 to 70 nodes). Past 500 groups a level is accepted only if
// it also resolves the integrand wherever it weighs (second differences of its logarithm
// at most 1). Past 500 groups, where the range law's step is sharper than the scale's density
// (few degrees of freedom: -ln R is doubly exponential in y about the step, at a rate kappa
// of about 2 ln r, against the density's width 1/sqrt(2v)), that rule halved its step down to
// the step's width over the density's whole breadth (130 to 330 range laws) or gave way to
// the panels below, and could accept levels that agreed to 1e-7 while 1e-8 to 1.3e-6 off.
// There the rule runs instead in t, y = c + psi(t), psi' a quarter of the step's width
// 1/kappa on its side and a third of the density's width (at most 0.1) beyond, joined
// smoothly eight step widths above the step (located, with kappa, by two Newton steps on
// ln(-ln R) in ln w; the mode search is then not needed); its error falls like e^(-C/h), and
// a level is accepted when two agree to 1e-8: 50 to 110 range laws, within 3.3e-14 of a rule
// in y at a step of 1e-3. Where neither rule settles or resolves the integrand, panels 2.5
// times wider each time walk outwards on each side, halved where the integrand falls or bends
// too sharply for the 20-point rule, until negligible. Per probability, over r from 100 to
// 2^31 - 1 log-uniform, v from 1 to 1e6, P from 1e-12 to 1 - 1e-12 (old and new side by
// side): median 0.21 ms, p90 0.27 (0.53 before the mapped rule); v below 10 median 0.20 ms
// (0.43), p90 0.26 (0.74); range laws per probability at v below 3 median 72 (226), p90 174
// (336), at 10 to 100 median 66 (133).
// v >= 1e19 is the limit law R(q). Far below the median of many
// groups R(q s) lies below the double range over the scale's whole bulk while P is still a
// normal double (3e-156 at q = 0.8834, v = 5, r = 1.2e8): there the range law is carried
// scaled by the exponential of its integrand's logarithm at w/2, and the outer integrand
// relative to its value at the mode, the scale restored in the final product.
// Near P = 1 the upper tail 1 - P is integrated as such (g01emc_upper): the range's upper
// tail 1 - R(w) from the law of the largest normal, r integral phi(u) Phi(u)^(r-1) G(u) du
// with G = 1 - (1 - Phi(u-w)/Phi(u))^(r-1) by expm1 and log1p (range_upper, about 85 nodes
// of two normal tails each, some four times R's cost), over the same scale mixture; 1 - P
// taken from P kept only an absolute DBL_EPSILON, 100% of a tail of 1e-16
// (srangeinv(1 - 6.7e-16, 1.08e15, 4) gave 11.82; the upper tail's q is 11.7272). Past 500
// groups, where the rule does not settle or would walk the scale's slow lower tail (about
// ln(1e18) / v in y at the step's width), the outer integral is cut below the range law's
// step: under the y where R(q e^y) < 1e-22 the integrand is the scale's density alone and its
// integral the chi-square's lower tail, so that the panels no longer walk the scale's slow
// lower tail (s^v); within 3e-15 of 25-digit mpmath values there (gen_srange_upper_many.py,
// v from 1 to 32, 5e3 to 2.7e8 groups, 1 - P from 2e-3 down to 2e-14).
// The deviate: Newton's method with the density dP/dq (the same quadrature), on ln P
// against ln q below the median and on ln(1 - P) against ln q above it (one step for the
// power laws of either end), from the Odeh-Evans / AS 190.2 start, inside a bracket kept from
// the signs seen (bisection or doubling when a step leaves it), until P is within rounding of
// p, the step within rounding of q, or the quadratic convergence predicts the next residual
// below rounding; 3-6 evaluations. Above p = 1 - 1e-3 the last one or two take the direct
// upper tail, the others 1 - P from P while its rounding is far below the residual (and
// narrow the bracket only beyond P's accuracy): mostly one such step, whose Newton step from
// a residual below 2 lands within the memo's reach of the root, and none past 100 groups at
// v up to 4, where the start lies within 4e-2 of it; the second direct evaluation reuses the
// first one's nodes and range tails (UpperTailMemo, for a q within 0.3 widths), and its step
// takes the curvature of ln(1 - P) from the two, so that a third is seldom needed. Past
// 100 groups, and past p = 0.99, the start is asymptotic instead (tukey_start_many: the
// v = infinity range law's own deviate, cheap to solve, combined with the scale's quantiles).
// Where P is within rounding of its small-q power law sqrt(r) (q / sqrt(2 pi))^(r-1) E S^(r-1)
// (few groups, P down to the subnormals) that law is P and its deviate.
// Over r from 101 to 2^31 - 1 (log-uniform), v from 1 to 1e6 and infinity, p in the body and
// down to 1e-12 from 0 and 1 (a scan of 250 calls, the machine shared): per deviate median
// 1.2 ms (0.8 before the direct upper tail, same scan), p90 4 ms (1.8); above p = 1 - 1e-3
// median 3.4 ms (0.7), at most 13 ms (3.7), mostly many groups at p within 1e-8 of 1. With
// the memo, the cut below the range law's step and range_upper's shared node values (CPU time,
// 150 deviates, p log-uniform from 1 - 1e-3 to 1 - 1e-14, r from 2 to 2^31 - 1, the old code
// alternated with the new in the same run): past 100 groups median 1.8 ms (2.8), p90 3.4 (6.0),
// at most 6.1 (14.8); at p above 1 - 1e-8 median 1.7 ms (3.6), p90 3.5 (7.7). Some 60
// range_upper calls a deviate (115 before), each about 85 nodes; the rest is the cheap steps'
// P. With a single cheap step, the direct tail from the start at v up to 4, the memo's wider
// reach and the panels from the cut where the checked rule would walk the scale's tail (400
// deviates, two seeds, same design): past 100 groups median 1.3-1.4 ms (1.9-2.1), p90
// 1.9-2.2 (3.1-3.5), at most 2.9-3.2 (6.4); at p above 1 - 1e-8 median 1.4 ms (1.7-1.9), p90
// 1.9-2.1 (3.0-3.2). One full direct evaluation a deviate remains, 50 to 90 range_upper calls
// of some 20 microseconds each (the start 4, the cheap step 80 to 450 range laws of about
// 1.3): most of the time.
//
// Phi(u) - Phi(u - w) is summed from its Hermite series below w = 1/2, where the
// difference of the two probabilities loses digits (all of them below w = 1e-16). Its
// logarithm is raised to the power r - 1, which turns an absolute error of ln D into a
// relative error of R times r: where D is close to 1 (the bulk of many groups, D = 1 - 4e-9
// at 2^31 groups) ln D is log1p of minus the two outer tails Q(u) + Q(w - u), each to a few
// ulps relative, never the logarithm of a rounded D (which held only r * DBL_EPSILON / 25:
// 2e-8 at 2^31 groups, and left P near 1 wobbling by 1e-7, not monotone in q).
// Accuracy against a 20-digit mpmath quadrature (tests/reference): about 5e-15 relative
// over the grid (v from 1 to 1e5, r from 2 to 100), see the test output for the worst
// case. For many groups, against a 40-digit mpmath double integral with both peaks located
// (tests/reference/gen_srange_many_groups.py, r from 1e3 to 2^31 - 1, v from 1 to
// infinity): within about 1e-13 relative, from P = 1e-189 in the far lower tail to P within
// 2e-9 of 1 (1e-16 absolute there, P rising monotonically to 1 within an ulp); worst 1.2e-13
// at P = 2e-34 (2^31 - 1 groups, v = 1e6), where ln R is about -80 and the ulps of each
// tail Q in ln D, times r, leave R about 1e-13 of noise between neighbouring w; 6e-15 for
// the range law itself at 2^31 - 1 groups. The upper tail 1 - P against a 25-digit mpmath
// integral taken in the other order, range first (tests/reference/gen_srange_tails.py): within
// 3e-14 relative from 1e-3 down to 1e-27, 2 to 2^31 - 1 groups, v from 3 to 1.08e15 and
// infinity. The deviate reproduces its probability to about 1e-15 up to 100 groups, past
// them to 5e-14 up to the median, and above it its upper tail to 1e-12 or better.
//
// Failures: NE_REAL for NaN; NE_INT_ARG_LT for ir < 2; NE_REAL_ARG_LT for v < 1;
// NE_REAL_ARG_LE / NE_REAL_ARG_GE for p outside (0, 1); NE_CONV when the deviate's
// iteration reaches its cap. g01emc returns 0 for q <= 0 and 1 for q = +infinity;
// v = +infinity is the range of r normals itself.
#include <algorithm>
#include <cfloat>
#include <cmath>
#include <limits>
#include <numbers>
#include <optional>
#include <unordered_map>
#include <utility>
#include <vector>

#include "platform/nag/g01.hpp"
#include "platform/numeric/chi_scale.hpp"
#include "platform/numeric/gauss_legendre.hpp"
#include "platform/numeric/normal.hpp"

namespace zemath::nag {

namespace {

using numeric::normal_upper;

// A probability and its derivative with respect to the variable (w or q).
struct Law {
    double p = 0.0;
    double dp = 0.0;
};

// Gauss-Legendre on [lo, hi] (either order) of an integrand that returns a Law.
template <std::size_t Half, class F>
Law gauss_legendre_law(const numeric::GaussLegendreRule<Half>& rule, const F& f, double lo,
                       double hi) {
    const double mid = 0.5 * (lo + hi);
    const double half = 0.5 * (hi - lo);
    Law sum;
    for (std::size_t i = 0; i < Half; ++i) {
        const double offset = half * rule.node[i];
        const Law left = f(mid - offset), right = f(mid + offset);
        sum.p += rule.weight[i] * (left.p + right.p);
        sum.dp += rule.weight[i] * (left.dp + right.dp);
    }
    const double length = std::fabs(half);
    return {sum.p * length, sum.dp * length};
}

// Integral of a positive log-concave integrand from `from`, where it is largest on this
// side, towards `to` (either direction), on 20-point Gauss-Legendre panels that follow
// it. With `width` its local scale at `from`, the first panel is 2 widths long and each
// next one 2.5 times the last. Each panel is first checked at its far end and midpoint:
// where ln f falls by more than 30 over it, or bends away from its chord by more than 3 at
// the midpoint (a sharper change than the rule resolves: the range probability's step,
// the double-exponential right tail of the scale's density), the panel is halved until it
// passes or cannot add 1e-18 of the sum, and the walk goes on from the shorter length.
// The walk stops once the integrand at a panel's far end, times the next panel's length,
// is below 1e-18 of the sum (both parts when `both`), or at `to`. `head` is f(from).
template <class F>
Law integrate_outwards(const F& f, double from, double to, double width, Law head, bool both) {
    constexpr double kNegligible = 1e-18;
    constexpr double kGrowth = 2.5;
    constexpr double kMaxFall = 30.0, kMaxBend = 3.0;
    constexpr int kMaxPanels = 80, kMaxHalvings = 30;
    const double direction = to >= from ? 1.0 : -1.0;
    const double span = std::fabs(to - from);
    Law total;
    double near = 0.0, length = 2.0 * width;
    for (int panel = 0; panel < kMaxPanels && near < span; ++panel) {
        const double a = from + direction * near;
        double far = std::min(near + length, span);
        Law end = f(from + direction * far);
        for (int halving = 0; halving <= kMaxHalvings; ++halving) {
            const Law mid = f(from + direction * 0.5 * (near + far));
            const double log_head = std::log(head.p), log_end = std::log(end.p);
            const double fall = log_head - log_end;
            const double bend = std::log(mid.p) - 0.5 * (log_head + log_end);
            const bool smooth = fall <= kMaxFall && std::fabs(bend) <= kMaxBend;
            const bool negligible = head.p * (far - near) <= kNegligible * total.p;
            if (smooth || negligible || head.p == 0.0 || halving == kMaxHalvings) break;
            far = 0.5 * (near + far);
            end = mid;
        }
        const double b = far >= span ? to : from + direction * far;
        const Law piece = gauss_legendre_law(numeric::kGaussLegendre20, f, a, b);
        total.p += piece.p;
        total.dp += piece.dp;
        length = kGrowth * (far - near);
        near = far;
        head = end;
        if (head.p * length <= kNegligible * total.p &&
            (!both || head.dp * length <= kNegligible * total.dp))
            break;
    }
    return total;
}

// Integral over the whole line of a smooth log-concave integrand by the trapezoidal rule
// from its mode, step h = 3/4 of width (its local scale; the rule then settles at the
// first halving for the scale mixtures met, where a step of a whole width took two) halved until
// two levels agree (to kAgreement, 1e-8 unless given). For an integrand analytic in a strip about
// the real axis the rule's error falls like e^(-2 pi d / h) (d the strip's half-width), so each
// halving squares the relative error and a change of at most 1e-8 leaves the finer sum within
// about 1e-16: a Gaussian (entire) converges faster still, but the range tail's integrand at
// many groups, doubly exponential on one side, only that fast (1 - R(18.5) at 2^31 - 1 groups
// came out 3.6e-12 off when 1e-7 was taken to mean exact to rounding). Each level walks out from
// the mode on both sides until a node's value times h is below 1e-18 of the sum (log-concave: it
// only falls further out). With `resolved`, a level is accepted only where it also resolves the
// integrand everywhere it carries weight: the second difference of ln f at every node above 1e-15
// of the sum at most kMaxBend, 1 unless given (h within the local width). Agreement alone is blind
// to a sharp feature far out whose whole mass is below 1e-7 of the sum: the range law's step in the
// scale density's tail at many groups and few degrees of freedom, where P near 1 came out 4e-7 off.
// Empty when the levels do not settle within kMaxLevels halvings, a walk would pass lo or hi, or
// take more than kMaxNodes nodes (a step of the integrand sharper than the rule resolves cheaply:
// the caller's adaptive panels take it).
template <class F>
std::optional<Law> trapezoid_from_mode(const F& f, double mode, double width, Law head, bool both,
                                       double lo, double hi, bool resolved = false,
                                       int kMaxNodes = 400, double kMaxBend = 1.0,
                                       double kAgreement = 1e-8) {
    constexpr double kNegligible = 1e-18;
    constexpr double kWeighty = 1e-15;
    constexpr int kMaxLevels = 4;
    double h = 0.75 * width;
    Law nodes = head;  // the sum of f over the nodes so far (the mode's included)
    // ln f at the current level's nodes mode + k h, k = 1, 2, ..., per direction (`resolved`).
    std::vector<double> logs[2], fresh[2];
    // One level's new nodes: mode +- (stride k + 1) h, k = 0, 1, ...
    const auto walk = [&](int stride, Law& sum) {
        for (int side = 0; side < 2; ++side) {
            const double direction = side == 0 ? 1.0 : -1.0;
            fresh[side].clear();
            for (int k = 0;; ++k) {
                if (k == kMaxNodes) return false;
                const double y = mode + direction * (stride * k + 1) * h;
                if (y <= lo || y >= hi) return false;
                const Law value = f(y);
                sum.p += value.p;
                sum.dp += value.dp;
                if (resolved) fresh[side].push_back(std::log(value.p));
                if (value.p <= kNegligible * sum.p && (!both || value.dp <= kNegligible * sum.dp))
                    break;
            }
        }
        return true;
    };
    // Merges a level's new nodes (the odd multiples of h) with the last level's (the even
    // ones) and returns the largest second difference of ln f at a weighty node; the walks'
    // ends cut the sequence.
    const auto largest_bend = [&](bool first, double sum) {
        const double log_head = std::log(head.p);
        const double weighty = std::log(kWeighty * sum / h);
        double largest = 0.0;
        for (int side = 0; side < 2; ++side) {
            std::vector<double> merged;
            if (first) {
                merged = fresh[side];
            } else {
                for (std::size_t k = 0;; ++k) {
                    if (k >= fresh[side].size()) break;
                    merged.push_back(fresh[side][k]);
                    if (k >= logs[side].size()) break;
                    merged.push_back(logs[side][k]);
                }
            }
            for (std::size_t k = 0; k + 1 < merged.size(); ++k) {
                const double before = k == 0 ? log_head : merged[k - 1];
                if (!(merged[k] > weighty)) continue;
                const double bend = std::fabs(merged[k + 1] - 2.0 * merged[k] + before);
                largest = std::isnan(bend) ? INFINITY : std::max(largest, bend);
            }
            logs[side] = std::move(merged);
        }
        return largest;
    };
    // Whether the level at `level` halvings resolves the integrand, and whether the levels
    // left could still (a smooth integrand's bends fall fourfold with each halving; a step
    // sharper than that, the range law's, is left to the caller's panels at once).
    const auto resolves = [&](int level, bool first, double sum, bool& hopeless) {
        if (!resolved) return true;
        const double bend = largest_bend(first, sum);
        hopeless = bend > kMaxBend * std::ldexp(1.0, 2 * (kMaxLevels - level));
        return bend <= kMaxBend;
    };
    bool hopeless = false;
    if (!walk(1, nodes)) return std::nullopt;
    resolves(0, true, nodes.p * h, hopeless);
    if (hopeless) return std::nullopt;
    Law previous{nodes.p * h, nodes.dp * h};
    for (int level = 1; level <= kMaxLevels; ++level) {
        h *= 0.5;
        if (!walk(2, nodes)) return std::nullopt;  // the odd multiples of the new h
        const Law current{nodes.p * h, nodes.dp * h};
        const bool fine = resolves(level, false, current.p, hopeless);
        if (hopeless) return std::nullopt;
        const bool settled =
            std::fabs(current.p - previous.p) <= kAgreement * current.p &&
            (!both || std::fabs(current.dp - previous.dp) <= kAgreement * current.dp);
        if (settled && fine) return current;
        previous = current;
    }
    return std::nullopt;
}

// Phi(u) - Phi(u - w) for 0 < w <= 1/2 without the cancellation of the difference:
// expanding phi about the midpoint m = u - w/2,
//     w phi(m) sum_k He_2k(m) (w/2)^(2k) / (2k+1)!,
// He the Hermite polynomials (He_(j+1) = m He_j - j He_(j-1)); the terms fall at least
// like (|m| w/2)^(2k) / (2k+1)!, below 1e-17 within 20 terms for |m| <= 10.
double normal_between_narrow(double u, double w) {
    constexpr int kMaxTerms = 40;
    const double m = u - 0.5 * w, h2 = 0.25 * w * w;
    double previous = 0.0, current = 1.0;  // He_(j-1), He_j
    int j = 0;
    double sum = 1.0, factor = 1.0;
    bool small_before = false;
    for (int k = 1; k <= kMaxTerms; ++k) {
        for (int twice = 0; twice < 2; ++twice, ++j) {
            const double next = m * current - j * previous;
            previous = current;
            current = next;
        }
        factor *= h2 / ((2.0 * k) * (2.0 * k + 1.0));
        const double term = current * factor;
        sum += term;
        // Two small terms in a row: one alone may sit near a root of He_2k.
        const bool small = std::fabs(term) <= 1e-17 * std::fabs(sum);
        if (small && small_before) break;
        small_before = small;
    }
    return w * numeric::kInvSqrtTwoPi * std::exp(-0.5 * m * m) * sum;
}

// The range W of r independent standard normals: P(W <= w) and its density, by symmetry
//     R(w)  = (2 Phi(w/2) - 1)^r + 2 r integral_{w/2}^{inf} phi(u) D(u)^(r-1) du,
//     R'(w) = 2 r (r-1) integral_{w/2}^{inf} phi(u) phi(u - w) D(u)^(r-2) du,
// D(u) = Phi(u) - Phi(u - w) (the boundary terms of d/dw cancel). Both integrands are
// log-concave and decrease from u = w/2, where ln phi(u) D(u)^(r-1) has slope -w/2 and
// curvature -1 - (r-1) w phi(w/2) / D(w/2): its panels are fitted to that local scale, for
// r = 2 as for r = 2^31; the integral ends where r phi is below 1e-18 (u = 9.5 up to 3e6
// groups, 11.2 at 2^31).
// The density is summed only when `derivative`.
// Far below its median, for many groups, R(w) lies below the double range while the
// studentized range probability that integrates it over the scale is still a normal double
// (3e-156 at q = 0.8834, v = 5, r = 1.2e8, where every R(q s) of the scale's bulk
// underflowed and P came out 0): where the integrand's logarithm at u = w/2 falls below
// kScaleBelow, the law is returned scaled by e^-shift, shift that logarithm (the caller
// carries it); elsewhere shift is 0 and the arithmetic is the plain one.
struct ScaledLaw {
    double p = 0.0;
    double dp = 0.0;
    double shift = 0.0;  // the law is (p, dp) e^shift
};
constexpr double kScaleBelow = -600.0;

// Above this many groups the outer integral is taken by the adaptive panels, not the
// trapezoidal rule (see tukey_lower).
constexpr double kTrapezoidGroups = 500.0;

template <bool derivative>
ScaledLaw range_law(double w, double r) {
    // phi beyond u is below e^-u^2/2; the integral ends where r times that is below 1e-18
    // (9.5 up to 3e6 groups, 11.2 at 2^31: a fixed 9.5 cut 4e-12 from 1 - R at 2^31).
    constexpr double kUpperFew = 9.5, kTailLog = 41.5;  // e^-41.5 = 1e-18
    const double upper = std::max(kUpperFew, std::sqrt(2.0 * (std::log(r) + kTailLog)));
    if (!(w > 0.0)) return {};
    const double a = 0.5 * w;
    if (a >= upper) return {1.0, 0.0, 0.0};
    // D(w/2) = P(|Z| <= w/2), and its logarithm from the two tails 2 Q(w/2) where they are
    // small: ln D is raised to the power r - 1 (and r), so its absolute error becomes a
    // relative error of R times r (ln of a rounded 1 - 2e-9 gave 2e-7 at 2^31 groups).
    const double outside = 2.0 * normal_upper(a);
    const double within = outside < 0.5 ? 1.0 - outside : std::erf(a / std::numbers::sqrt2);
    // w/2 below about 1e-308: R(w), at most of order w^(r-1), is below the double range.
    if (!(within > 0.0)) return {};
    const double log_within = outside < 0.5 ? std::log1p(-outside) : std::log(within);
    const double log_head = -0.5 * a * a + (r - 1.0) * log_within;
    // Only where D(w/2) itself is far inside the double range (the density's 1 / D then
    // cannot overflow against a scaled g): a tiny w/2 leaves R of order w^(r-1), below the
    // range for any r that takes it there.
    constexpr double kSmallestScaledWithin = 1e-100;
    const double shift = log_head < kScaleBelow && within >= kSmallestScaledWithin ? log_head : 0.0;
    const double lead = std::exp(r * log_within - shift);
    const auto integrand = [=](double u) -> Law {
        // ln D(u): for narrow ranges D by its series (the difference of two probabilities
        // lost all digits below w = 1e-16); where both ends lie above the median between
        // upper tails; else from the two outer tails, by log1p where they are small (the
        // bulk of many groups: D = 1 - 4e-9 at 2^31, whose ln must keep its digits).
        constexpr double kNarrow = 0.5;
        double inside = 0.0, log_inside = 0.0;
        if (w <= kNarrow || u - w >= 0.0) {
            inside =
                w <= kNarrow ? normal_between_narrow(u, w) : normal_upper(u - w) - normal_upper(u);
            if (!(inside > 0.0)) return {};
            log_inside = std::log(inside);
        } else {
            const double tails = normal_upper(u) + normal_upper(w - u);
            inside = 1.0 - tails;
            log_inside = tails < 0.5 ? std::log1p(-tails) : std::log(inside);
        }
        const double g = std::exp(-0.5 * u * u + (r - 1.0) * log_inside - shift);
        if constexpr (!derivative) {
            return {g, 0.0};
        } else {
            const double t = u - w;
            return {g, g * (r - 1.0) * std::exp(-0.5 * t * t) / inside};
        }
    };
    // ln g falls by about a t + c t^2 / 2 at u = a + t (slope -a, curvature c at a, and
    // only faster further out: ln g is concave); the integral ends where that reaches
    // kDrop, checked (and the end doubled while g is not yet that small there). Two
    // 20-point panels, the first over a third of the stretch, integrate to rounding what
    // falls by e^-45 or so, Gaussian or exponential.
    constexpr double kDrop = 42.0;
    const double density_a = std::exp(-0.5 * a * a) * numeric::kInvSqrtTwoPi;
    const double curvature = 1.0 + (r - 1.0) * w * density_a / within;
    const Law head = integrand(a);
    if (!(head.p > 0.0)) return {shift == 0.0 ? std::min(lead, 1.0) : lead, 0.0, shift};
    double length = (std::sqrt(a * a + 2.0 * kDrop * curvature) - a) / curvature;
    for (int i = 0; i < 8 && a + length < upper; ++i, length *= 1.5) {
        const Law end = integrand(a + length);
        if (end.p <= head.p * std::exp(-kDrop) &&
            (!derivative || end.dp <= head.dp * std::exp(-kDrop)))
            break;
    }
    const double end = std::min(a + length, upper), split = a + (end - a) / 3.0;
    const Law first = gauss_legendre_law(numeric::kGaussLegendre20, integrand, a, split);
    const Law second = gauss_legendre_law(numeric::kGaussLegendre20, integrand, split, end);
    const Law total{first.p + second.p, first.dp + second.dp};
    const double scale = 2.0 * r * numeric::kInvSqrtTwoPi;
    const double p = lead + scale * total.p;
    return {shift == 0.0 ? std::min(p, 1.0) : p, scale * numeric::kInvSqrtTwoPi * total.dp, shift};
}

// 1 - R(w), the range's upper tail, without forming it from R (which leaves it only to an
// absolute DBL_EPSILON: P near 1 and its deviate came out a few ulps off), and its density
// R'(w), relative to it (R' from range_law is cut where it is below 1e-18 absolutely). With
// u the largest of the r normals, the range exceeds w unless the others all lie in
// [u - w, u]:
//     1 - R(w) = r integral phi(u) Phi(u)^(r-1) G(u) du,
//     G(u) = 1 - (1 - x)^(r-1) = -expm1((r-1) log1p(-x)),  x = Phi(u - w) / Phi(u),
//     R'(w)   = r (r-1) integral phi(u) phi(u - w) Phi(u)^(r-2) (1 - x)^(r-2) du,
// each factor to a few ulps relative. The first integrand is log-concave (x is, Mills ratios
// being monotone); its mode, about w/2 in the far tail (the extremes placed symmetrically)
// and beyond it towards the largest normal's own mode otherwise, is found by regula falsi on
// the slope of its logarithm,
//     -u + (r-1) m(u) + G'(u) / G(u),  G'/G = (r-1) (1-x)^(r-2) x (m(u-w) - m(u)) / G,
// m = phi / Phi; from there the trapezoidal rule takes both integrals (trapezoid_from_mode;
// about 85 nodes and 4 slopes, the node's two normal tails and logarithms shared by both
// integrands; some four times R's cost), else the adaptive panels. Accurate to about
// 1e-13 relative from 1 - R = 0.1 down to 1e-300.
Law range_upper(double w, double r) {
    if (!(w > 0.0)) return {1.0, 0.0};
    if (std::isinf(w)) return {};
    // What the integrands and the slope share at a node, each normal tail and logarithm
    // formed once: ln Phi(u), x = Phi(u - w) / Phi(u) (at most 1) and ln(1 - x).
    struct Node {
        double log_lower, x, log_rest;
    };
    const auto node = [w](double u) {
        const double q = normal_upper(u);
        const double log_lower = q < 0.5 ? std::log1p(-q) : std::log(normal_upper(-u));
        const double x = std::min(std::exp(std::log(normal_upper(w - u)) - log_lower), 1.0);
        return Node{log_lower, x, std::log1p(-x)};
    };
    const auto log_g = [&](double u) {
        const Node at = node(u);
        const double g = -std::expm1((r - 1.0) * at.log_rest);
        return -0.5 * u * u + (r - 1.0) * at.log_lower + std::log(g);
    };
    const auto slope = [&](double u) {
        const Node at = node(u);
        const double x = at.x;
        const double log_rest = at.log_rest;
        const double g = -std::expm1((r - 1.0) * log_rest);
        const double mills = numeric::inverse_mills(u);
        const double spread = numeric::inverse_mills(u - w) - mills;
        // G'/G without the spread: (r-1) x (1-x)^(r-2) / G, 1 where x underflows.
        double share = 1.0;
        if (x >= 1.0) {
            share = r == 2.0 ? 1.0 : 0.0;
        } else if (g > 0.0 && x > 0.0) {
            share = (r - 1.0) * std::exp((r - 2.0) * log_rest) * x / g;
        }
        return -u + (r - 1.0) * mills + share * spread;
    };
    // Bracket the mode from w/2, by steps that double.
    double lo = 0.5 * w, hi = lo;
    double slo = slope(lo), shi = slo;
    if (slo > 0.0) {
        for (double step = 1.0; shi > 0.0 && step < 1e3; step *= 2.0) {
            lo = hi;
            slo = shi;
            hi = lo + step;
            shi = slope(hi);
        }
    } else {
        for (double step = 1.0; slo < 0.0 && step < 1e3; step *= 2.0) {
            hi = lo;
            shi = slo;
            lo = hi - step;
            slo = slope(lo);
        }
    }
    double curvature = 1.0;
    int side = 0;
    constexpr int kMaxSteps = 60;
    for (int step = 0; step < kMaxSteps; ++step) {
        if (!(slo > 0.0 && shi < 0.0)) break;
        curvature = std::max((slo - shi) / (hi - lo), 1e-6);
        if (hi - lo <= 0.1 / std::sqrt(curvature)) break;
        const double mid = (lo * shi - hi * slo) / (shi - slo);
        const double at = std::isfinite(mid) && mid > lo && mid < hi ? mid : 0.5 * (lo + hi);
        const double s = slope(at);
        if (s > 0.0) {
            lo = at;
            slo = s;
            if (side == -1) shi *= 0.5;
            side = -1;
        } else {
            hi = at;
            shi = s;
            if (side == 1) slo *= 0.5;
            side = 1;
        }
    }
    const double mode = 0.5 * (lo + hi);
    const double top = log_g(mode);
    // Far out 1 - R lies below the double range (w above 60 or so), where the sums below
    // could meet 0 * infinity.
    constexpr double kBelowRange = -800.0;
    if (!std::isfinite(top) || top < kBelowRange) return {};
    const double log_groups = std::log(r - 1.0);
    const auto integrand = [&](double u) -> Law {
        const Node at = node(u);
        const double log_head = -0.5 * u * u + (r - 1.0) * at.log_lower - top;
        const double g = -std::expm1((r - 1.0) * at.log_rest);
        const double t = u - w;
        // phi(u - w) Phi(u)^(r-2) (1-x)^(r-2) (r-1), relative to e^top phi(u) / sqrt(2 pi).
        const double density =
            std::exp(log_head - at.log_lower + (r - 2.0) * at.log_rest - 0.5 * t * t + log_groups);
        return {g * std::exp(log_head), density};
    };
    const double width = 1.0 / std::sqrt(curvature);
    const Law head = integrand(mode);
    const double reach = 20.0 + w;
    Law total;
    // Two levels must agree to 1e-10 here: on this integrand (doubly exponential on the left,
    // Phi(u)^(r-1)) a halving gains only a factor of 100 to 400 at the first levels, and an
    // agreement of 1e-8 left 1 - R(12.8) at 912 groups 2.6e-11 off.
    constexpr double kRangeAgreement = 1e-10;
    if (const auto whole = trapezoid_from_mode(integrand, mode, width, head, true, mode - reach,
                                               mode + reach, false, 400, 1.0, kRangeAgreement)) {
        total = *whole;
    } else {
        const Law right = integrate_outwards(integrand, mode, mode + reach, width, head, true);
        const Law left = integrate_outwards(integrand, mode, mode - reach, width, head, true);
        total = {left.p + right.p, left.dp + right.dp};
    }
    const double scale = r * numeric::kInvSqrtTwoPi * std::exp(top);
    const Law law{scale * total.p, scale * numeric::kInvSqrtTwoPi * total.dp};
    if (!(law.p >= 0.0 && law.dp >= 0.0 && std::isfinite(law.dp))) return {};
    return {std::min(1.0, law.p), law.dp};
}

// A scaled law at its own scale, underflowing to 0 where it lies below the double range.
Law unscaled(const ScaledLaw& law) {
    if (law.shift == 0.0) return {law.p, law.dp};
    const double factor = std::exp(law.shift);
    return {law.p * factor, law.dp * factor};
}

// Small q: R(w) = sqrt(r) (w / sqrt(2 pi))^(r-1) (1 + O(r w^2)) (the r-1 others within
// w phi(z) of the smallest, z ~ N(0, 1/r) about 0 under phi^r), so that
//     P(q) = sqrt(r) (q / sqrt(2 pi))^(r-1) E S^(r-1) (1 + O(r q^2 (v + r - 1) / v)),
//     E S^k = (2/v)^(k/2) Gamma((v + k)/2) / Gamma(v/2),
// exact to rounding where r^2 q^2 (1 + r/v) is below kPowerLaw: the whole subnormal range of
// P for few groups (srangeinv(4.9e-324, 147.5, 3) = 1.18e-161, where Newton on the few
// digits of a subnormal P took 14 evaluations, 48 ms). ln E S^k, k = r - 1, from Stirling's
// series for the Gamma ratio where v/2 is large (lgamma's difference loses ln(v) ulps).
constexpr double kPowerLaw = 1e-17;
double power_law_log_constant(double v, double r) {
    constexpr double kLimitDf = 1e19;  // as in tukey_lower
    const double k = r - 1.0;
    double log_moment = 0.0;
    if (v < kLimitDf) {
        const double a = 0.5 * v, b = 0.5 * k;
        if (a < 10.0) {
            log_moment = b * std::log(2.0 / v) + std::lgamma(a + b) - std::lgamma(a);
        } else {
            // ln Gamma(a + b) - ln Gamma(a) - b ln a by Stirling's series.
            const double c = a + b;
            log_moment = (c - 0.5) * std::log1p(b / a) - b + (1.0 / c - 1.0 / a) / 12.0 -
                         (1.0 / (c * c * c) - 1.0 / (a * a * a)) / 360.0;
        }
    }
    return 0.5 * std::log(r) - 0.5 * k * std::log(2.0 * std::numbers::pi) + log_moment;
}
bool power_law_holds(double q, double v, double r) {
    return r * r * q * q * (1.0 + r / v) <= kPowerLaw;
}

// P(q; v, r) = integral f_Y(y) R(q e^y) dy and, when `derivative`, its derivative in q,
// integral f_Y(y) e^y R'(q e^y) dy, over Y = ln S, S = sqrt(chi2_v / v) (no end-point
// singularity for any v). ln f_Y has slope v (1 - e^(2y)) and the range part
// e(y) = w R'(w) / R(w), w = q e^y, between 0 and r - 1 (R grows at most like w^(r-1)), so
// the integrand's mode lies in [0, y*], y* = ln(1 + (r-1)/v) / 2, where the two slopes
// balance. It is found by regula falsi (Illinois) on the slope to a fraction of the local
// width, which the last secant's slope gives; from the mode the trapezoidal rule on the
// whole line (trapezoid_from_mode), else the panels outwards on each side
// (integrate_outwards).
// The mode of an outer integrand, log-concave in y = ln s, from a bracket with slope(lo) > 0
// > slope(hi) (slope(hi) may be -infinity where the integrand underflows): regula falsi with
// the Illinois halving, until the bracket is a quarter of the integrand's width 1/sqrt(c), c
// the last secant's curvature (at least the scale's own, 2 v s^2 at lo). With `keep_inside`
// each point stays a tenth of the scale's width inside the bracket (the slope can be far
// steeper at one end, where the secant would creep from the other). `curvature` is set to c.
struct SlopeBracket {
    double lo, hi, slo, shi;
};
template <class Slope>
double scale_mode(const Slope& slope, double v, SlopeBracket b, bool keep_inside, int max_steps,
                  double& curvature) {
    int side = 0;
    for (int step = 0; step < max_steps; ++step) {
        const double floor = 2.0 * v * std::exp(2.0 * b.lo);
        curvature = std::isfinite(b.shi) ? std::max((b.slo - b.shi) / (b.hi - b.lo), floor) : floor;
        if (std::isfinite(b.shi) && b.hi - b.lo <= 0.25 / std::sqrt(curvature)) break;
        const double mid = (b.lo * b.shi - b.hi * b.slo) / (b.shi - b.slo);
        double at = std::isfinite(mid) && mid > b.lo && mid < b.hi ? mid : 0.5 * (b.lo + b.hi);
        const double margin = 0.1 / std::sqrt(floor);
        if (keep_inside && b.hi - b.lo > 2.0 * margin)
            at = std::clamp(at, b.lo + margin, b.hi - margin);
        const double s = slope(at);
        if (s > 0.0) {
            b.lo = at;
            b.slo = s;
            if (side == -1) b.shi *= 0.5;
            side = -1;
        } else {
            b.hi = at;
            b.shi = s;
            if (side == 1) b.slo *= 0.5;
            side = 1;
        }
    }
    return 0.5 * (b.lo + b.hi);
}

// Where the range law steps, in w: the point where -ln R(w) = 1, and there the rate
// kappa = d ln(-ln R) / d ln w (its magnitude) at which -ln R changes: for many groups ln R is
// doubly exponential in ln w about that point (the sum of two extreme-value laws), -ln R ~
// e^(-kappa (ln w - ln w_c)), kappa about 2 ln r. From the asymptotic centre of the range,
// 2 (a - (ln ln r + ln 4 pi) / (2a)), a = sqrt(2 ln r), Newton's method on ln(-ln R) against
// ln w, whose slope is -e / (-ln R), e = w R'/R the elasticity (ln(-ln R) is nearly linear
// there: two or three steps). Empty when the steps do not settle.
struct RangeStep {
    double log_w = 0.0;
    double rate = 0.0;
};
std::optional<RangeStep> range_step(double r) {
    constexpr int kMaxSteps = 6;
    constexpr double kSettled = 0.05, kLargestStep = 0.5;
    const double log_r = std::log(r);
    const double a = std::sqrt(2.0 * log_r);
    double x =
        std::log(2.0 * (a - (std::log(log_r) + std::log(4.0 * std::numbers::pi)) / (2.0 * a)));
    for (int step = 0; step < kMaxSteps; ++step) {
        const double w = std::exp(x);
        const ScaledLaw law = range_law<true>(w, r);
        const double log_p = std::log(law.p) + law.shift;
        const double minus_log = -log_p;
        if (!(law.p > 0.0 && law.dp > 0.0 && minus_log > 0.0 && std::isfinite(minus_log)))
            return std::nullopt;
        const double elasticity = w * law.dp / law.p;
        const double rate = elasticity / minus_log;
        const double residual = std::log(minus_log);
        if (!(rate > 0.0 && std::isfinite(rate))) return std::nullopt;
        if (std::fabs(residual) <= kSettled) return RangeStep{x, rate};
        x += std::clamp(residual / rate, -kLargestStep, kLargestStep);
    }
    return std::nullopt;
}

// A smooth monotone map y = centre + psi(t) whose step psi' goes from `fine` (t -> -infinity)
// to `coarse` (t -> +infinity) over |t| of about `blend`:
//     psi(t) = A t + B (sqrt(t^2 + c^2) - c),  A = (coarse + fine)/2, B = (coarse - fine)/2,
// analytic in the strip |Im t| < c, with its inverse in closed form.
struct StepMap {
    double centre, fine, coarse, blend;
    double a() const { return 0.5 * (coarse + fine); }
    double b() const { return 0.5 * (coarse - fine); }
    // y and dy/dt at t.
    std::pair<double, double> operator()(double t) const {
        const double root = std::hypot(t, blend);
        return {centre + a() * t + b() * (root - blend), a() + b() * t / root};
    }
    double inverse(double y) const {
        const double z = y - centre + b() * blend;
        return (a() * z - b() * std::sqrt(z * z + fine * coarse * blend * blend)) / (fine * coarse);
    }
};

template <bool derivative>
Law tukey_lower(double q, double v, double r) {
    if (q <= 0.0) return {};
    if (std::isinf(q)) return {1.0, 0.0};
    if (power_law_holds(q, v, r)) {
        // By pow where the constant is a normal double (exp of a logarithm of -700 would
        // cost 700 ulps).
        const double log_constant = power_law_log_constant(v, r);
        const double constant = std::exp(log_constant);
        const double p = constant >= DBL_MIN && constant <= DBL_MAX
                             ? constant * std::pow(q, r - 1.0)
                             : std::exp(log_constant + (r - 1.0) * std::log(q));
        return {p, (r - 1.0) * (p / q)};
    }
    // The scale chi_v / sqrt(v) moves the probability by O(r q^2 / v) relative (below
    // 1e3 / v over the range of q that matters); past kLimitDf that is below the double
    // resolution, while the quadrature's density, of width 1/sqrt(2v), would no longer
    // be resolved (v = 1e300 gave P = 1 after seconds of work). Such v is the limit law.
    constexpr double kLimitDf = 1e19;
    if (v >= kLimitDf) return unscaled(range_law<derivative>(q, r));
    const numeric::ChiScaleLogDensity scale_density(v);
    // The integrand relative to e^common: common is 0 unless the integrand at the mode lies
    // far below the double range (see ScaledLaw), then its logarithm there, so that the sums
    // keep their relative accuracy and only the final product underflows, if at all.
    double common = 0.0;
    const auto integrand = [&](double y) -> Law {
        const double density = scale_density(y);
        if (density == 0.0) return {};
        const double s = std::exp(y);
        const ScaledLaw range = range_law<derivative>(q * s, r);
        if (range.shift == 0.0 && common == 0.0) return {density * range.p, density * s * range.dp};
        // In logarithms: a scaled factor alone can overflow against a subnormal range.p.
        const double log_factor = std::log(density) + range.shift - common;
        return {range.p > 0.0 ? std::exp(log_factor + std::log(range.p)) : 0.0,
                range.dp > 0.0 ? s * std::exp(log_factor + std::log(range.dp)) : 0.0};
    };
    // Slope of ln f at y, from the range law with its density (their ratio: the scale
    // does not matter).
    const auto slope = [=](double y) {
        const double s = std::exp(y);
        const ScaledLaw range = range_law<true>(q * s, r);
        // w R'(w) / R(w) lies in [0, r - 1]; at the edge of the range (w/2 near the
        // smallest doubles, R a few subnormals after scaling) its quotient can overflow. Where
        // R' is 0 (R = 1 from w/2 past the range law's end, w up to infinity when q s
        // overflows) it is 0: taken as r - 1 there, the slope never fell, the mode was put at
        // the bracket's top and srangecdf(1e308, 1.39, 1474) came out infinite.
        const double ratio = range.dp > 0.0 ? q * s * range.dp / range.p : 0.0;
        const double elasticity =
            range.p > 0.0 && std::isfinite(ratio) ? std::clamp(ratio, 0.0, r - 1.0) : r - 1.0;
        // 1 - s^2 as -expm1(2y) past kTrapezoidGroups groups: where R(q) is within
        // rounding of 1 the elasticity at y = 0 is of order 1e-26 and the mode lies at
        // y ~ 1e-27, where 1 - s^2 rounds to 0; the slope then stayed positive up to
        // y = 1e-16, the search below ran out of steps and P came out 0 from a dead mode
        // (srangecdf(18.9, 5, 1e7) gave 0 between 0.884 at 18 and 0.906 at 19).
        const double shrink = r > kTrapezoidGroups ? -std::expm1(2.0 * y) : 1.0 - s * s;
        return v * shrink + elasticity;
    };
    const double top = 0.5 * std::log1p((r - 1.0) / v);
    constexpr double kDrop = 45.0;
    const double reach = kDrop / v + 2.0;
    const auto finish = [&](Law law) {
        if (common == 0.0) return Law{std::min(law.p, 1.0), law.dp};
        const double factor = std::exp(common);
        return Law{law.p * factor, law.dp * factor};
    };
    // Past kTrapezoidGroups groups, where the range law's step (-ln R doubly exponential in y
    // about it, at the rate kappa of range_step) is sharper than the scale's density, the
    // trapezoidal rule in t, y = c + psi(t) (StepMap): psi' = kFine / kappa on the step's side,
    // where the step is analytic in a strip of half-width pi / (2 kappa) about the real axis
    // (strip 2 pi in t), a third of the density's width on the other (at most kCoarsest: the
    // scale's upper tail, doubly exponential at few degrees of freedom, is analytic only for
    // |Im y| < pi/4), the change kAhead step widths above the step, where -ln R has fallen to
    // e^-8 and its growth off the real axis no longer counts. The rule's error then falls like
    // e^(-C/h) (C about 20 at the worst seen: within 1e-8 at h = 1, 1e-16 at 1/2), each halving
    // squaring it: levels are accepted when two agree to 1e-8 (at 1e-7 one came out 1.6e-13
    // off). The density dP/dq, which only steers the deviate's Newton steps, converges more
    // slowly near P = 1 (R' is cut below 1e-18): within 1e-8 relative where P is within 1e-9 of
    // 1, 5e-10 within 1e-6, 5e-11 elsewhere.
    // Over 290 calls from 1 to 200 degrees of freedom, 500 to 2^31 groups, P within 3.3e-14 of a
    // rule in y with a step of 1e-3 (the rule in y from the mode had been up to 9.5e-9 off, 1.3e-6
    // at v = 1 and 2^31 - 1 groups, q = 50). The mapped integrand rises from t = 0 to its mode and
    // falls beyond it, psi' growing by at most coarse / fine (about 20) on the way: a walk's stop
    // below 1e-18 of the sum leaves at most some 1e-17 behind. Its resolution check allows second
    // differences of ln f up to 4: in the step's doubly exponential fall they pass 1 while the
    // integrand still weighs 1e-15 of the sum, where the rule is already exact to rounding (1 cost
    // a level more, twice the nodes). Where that rule does not settle or resolve, or the step is
    // not sharper, the rule in y from the mode: past kTrapezoidGroups groups checked for resolving
    // the integrand everywhere it weighs (two levels can agree to 1e-7 before it resolves a step in
    // the density's tail); where it does not, the adaptive panels.
    // The map's centre stands in for the mode in the density's width (the mode lies within a
    // few step widths of the step, or at the scale's own mode 0 when the step lies below it):
    // the mode search's range laws are spared unless the integrand at the centre lies below
    // kScaleBelow (then `common` is set from the mode and the rule taken again).
    constexpr double kFine = 0.25, kCoarse = 0.35, kCoarsest = 0.1, kBlend = 6.0;
    constexpr double kAhead = 8.0, kSharper = 2.0;
    std::optional<RangeStep> step;
    bool retry_mapped = false;
    const auto mapped_rule = [&](double mode) -> std::optional<Law> {
        // kappa lies between 2 ln r and 1.2 times that from 500 groups to 2^31: no Newton steps
        // where the step cannot be sharper.
        const double log_r = std::log(r);
        const double widest = std::min(kCoarse * std::sqrt(0.5 / v), kCoarsest);
        if (!(r > kTrapezoidGroups && widest > kSharper * kFine / (2.4 * log_r)))
            return std::nullopt;
        if (!step && !(step = range_step(r))) return std::nullopt;
        const double fine = kFine / step->rate;
        const double y_step = step->log_w - std::log(q);
        const double centre = y_step + kAhead / step->rate;
        const double at = std::isnan(mode) ? std::max(centre, 0.0) : mode;
        const double coarse =
            std::min(kCoarse / std::sqrt(2.0 * v * std::exp(2.0 * at)), kCoarsest);
        if (!(coarse > kSharper * fine)) return std::nullopt;
        const StepMap map{centre, fine, coarse, kBlend};
        const auto mapped = [&](double t) -> Law {
            const auto [y, dy] = map(t);
            const Law value = integrand(y);
            return {value.p * dy, value.dp * dy};
        };
        const Law head = mapped(0.0);
        if (std::isnan(mode) && !(head.p > std::exp(kScaleBelow))) {
            retry_mapped = true;
            return std::nullopt;
        }
        // Levels at t-steps 2, 1, 1/2, ...
        constexpr double kFirstStep = 2.0, kMaxBendMapped = 4.0, kAgreementMapped = 1e-8;
        constexpr int kMaxNodes = 400;
        return trapezoid_from_mode(mapped, 0.0, kFirstStep / 0.75, head, derivative,
                                   map.inverse(-reach), map.inverse(top + reach), true, kMaxNodes,
                                   kMaxBendMapped, kAgreementMapped);
    };
    if (const auto whole = mapped_rule(NAN)) return finish(*whole);
    double mode = 0.0;
    double width = 1.0 / std::sqrt(2.0 * v);
    // At y*: slope in [-(r-1), 0]; at 0: slope in [0, r-1].
    double lo = 0.0, hi = top;
    double slo = slope(lo), shi = slope(hi);
    double curvature = 2.0 * v;
    if (shi >= 0.0) {
        mode = hi;
    } else if (slo > 0.0) {
        // Past kTrapezoidGroups groups the slope can be far steeper at one end than at the
        // other (-1e7 at y*, 1e-26 at 0), where the secant creeps from the shallow end.
        constexpr int kMaxSteps = 40;
        mode = scale_mode(slope, v, {lo, hi, slo, shi}, r > kTrapezoidGroups, kMaxSteps, curvature);
    }
    width = 1.0 / std::sqrt(std::max(curvature, 2.0 * v * std::exp(2.0 * mode)));
    Law head = integrand(mode);
    if (!(head.p > 0.0) || head.p < std::exp(kScaleBelow)) {
        // Set common to the integrand's logarithm at the mode and take it again.
        const double density = scale_density(mode);
        const ScaledLaw range = range_law<derivative>(q * std::exp(mode), r);
        const double log_head = std::log(density) + range.shift + std::log(range.p);
        if (density > 0.0 && range.p > 0.0 && std::isfinite(log_head)) {
            common = log_head;
            head = integrand(mode);
        }
    }
    // The mode found (and `common` set) where the head at the map's centre lay below
    // kScaleBelow.
    if (retry_mapped) {
        if (const auto whole = mapped_rule(mode)) return finish(*whole);
    }
    if (const auto whole = trapezoid_from_mode(integrand, mode, width, head, derivative, -reach,
                                               top + reach, r > kTrapezoidGroups))
        return finish(*whole);
    const Law right = integrate_outwards(integrand, mode, top + reach, width, head, derivative);
    const Law left = integrate_outwards(integrand, mode, -reach, width, head, derivative);
    return finish({left.p + right.p, left.dp + right.dp});
}

// Where the outer integrand of 1 - P may be cut below its mode: a y < mode with
// R(q e^y) below kNoRange (or scaled out of the double range), so that below it 1 - R is 1
// to rounding and the integrand is the scale's density alone. Steps from the mode that
// double from its width, then three bisections towards the mode. Empty where none is found
// above `below` (few groups: R falls only like w^(r-1)).
std::optional<double> split_below_step(double q, double r, double mode, double width,
                                       double below) {
    constexpr double kNoRange = 1e-22;
    constexpr int kMaxSteps = 12, kBisections = 3;
    const auto negligible = [&](double y) {
        const ScaledLaw law = range_law<false>(q * std::exp(y), r);
        return law.shift != 0.0 || !(law.p >= kNoRange);
    };
    double inside = mode, cut = NAN, step = width;
    for (int i = 0; i < kMaxSteps; ++i, step *= 2.0) {
        const double y = mode - step;
        if (y <= below) return std::nullopt;
        if (negligible(y)) {
            cut = y;
            break;
        }
        inside = y;
    }
    if (std::isnan(cut)) return std::nullopt;
    for (int i = 0; i < kBisections; ++i) {
        const double mid = 0.5 * (cut + inside);
        (negligible(mid) ? cut : inside) = mid;
    }
    return cut;
}

// 1 - P(q; v, r) and, when `derivative`, the density dP/dq: the outer integral of the
// range's upper tail, integral f_Y(y) (1 - R(q e^y)) dy, 1 - R by range_upper where R is
// above 0.99 (below, 1 - R loses at most two digits), so that P close to 1 keeps the relative
// accuracy of its complement. The integrand's logarithm has slope v (1 - s^2) - w R'(w) /
// (1 - R(w)), negative at y = 0: its mode lies below, near ln(v / (v + q^2/2)) / 2 (where
// 1 - R(w) falls like e^(-w^2/4)); bracketed from there, then as for P. Past
// kTrapezoidGroups groups, where the trapezoidal rule does not settle (the range law's step
// next to the mode, the scale's slow lower tail beside it), the part below a y where R(q e^y)
// is below 1e-22 is P(S < e^y), the chi-square's lower tail (1 - R is 1 there to rounding, and
// R's share of the density, at most R times an elasticity of some 1e3, is below 1e-17 of it):
// the panels then take only the stretch from that point up (a quarter fewer outer nodes past
// 500 groups at v up to 100, where they walked the scale's tail, falling only like s^v; those
// were mostly range laws, the range_upper calls above the step remain).
// What the deviate's successive direct evaluations of the upper tail share. The outer
// integral is taken in d = ln(w / w0), w0 = q0 e^mode0 at the mode found for an earlier q0:
// its nodes are then the same w for any q, the scale's density taken at y = mode0 +
// ln(q0 / q) + d. A later q within 0.3 widths of q0 keeps mode0, the width and so the
// nodes, and the range's upper tail at each node is kept by its d: only the scale's
// density is formed afresh (the second direct evaluation cost as much as the first). The
// reuse is exact (the same w) and the rule checks itself on the shifted integrand as on any
// other; within a tenth of the width, as first, a step from a cheap residual of 3e-2 at
// few degrees of freedom (slope -v of ln(1 - P) in ln q) left the memo for a second full
// evaluation.
struct UpperTailMemo {
    bool anchored = false;
    double q0 = 0.0, mode0 = 0.0, width = 0.0, w0 = 0.0, cut = NAN;  // cut: in d
    double near_one_from = std::numeric_limits<double>::infinity();
    std::unordered_map<double, Law> range;
};

template <bool derivative>
Law tukey_upper(double q, double v, double r, UpperTailMemo* memo = nullptr) {
    if (q <= 0.0) return {1.0, 0.0};
    if (std::isinf(q)) return {};
    constexpr double kNearOne = 0.99;
    // R rises with w: from the least w seen with R above kNearOne on, range_upper is taken
    // without forming R first (the outer integral's nodes and the mode search meet it early).
    double own_near_one_from = std::numeric_limits<double>::infinity();
    double& near_one_from = memo != nullptr ? memo->near_one_from : own_near_one_from;
    const auto range_tail = [r, &near_one_from]<bool with_density>(double w) -> Law {
        if (w >= near_one_from) return range_upper(w, r);
        const Law law = unscaled(range_law<with_density>(w, r));
        if (!(law.p > kNearOne)) return {1.0 - law.p, law.dp};
        near_one_from = w;
        return range_upper(w, r);
    };
    constexpr double kLimitDf = 1e19;  // as in tukey_lower
    if (v >= kLimitDf) return range_tail.template operator()<true>(q);
    const numeric::ChiScaleLogDensity scale_density(v);
    // The range's tail at w = w0 e^d, from the memo where it has it.
    double w0 = 0.0, offset = 0.0;  // y = offset + d
    const auto range_at = [&](double d) -> Law {
        if (memo == nullptr) return range_tail.template operator()<derivative>(w0 * std::exp(d));
        const auto found = memo->range.find(d);
        if (found != memo->range.end()) return found->second;
        const Law law = range_tail.template operator()<derivative>(w0 * std::exp(d));
        memo->range.emplace(d, law);
        return law;
    };
    const auto integrand = [&](double d) -> Law {
        const double y = offset + d;
        const double density = scale_density(y);
        if (density == 0.0) return {};
        const Law range = range_at(d);
        return {density * range.p, derivative ? density * std::exp(y) * range.dp : 0.0};
    };
    constexpr double kDrop = 45.0;
    const double reach = kDrop / v + 2.0;
    double mode = 0.0, width = 0.0;  // in y
    constexpr double kSameMode = 0.3;
    if (memo != nullptr && memo->anchored &&
        std::fabs(std::log(memo->q0 / q)) <= kSameMode * memo->width) {
        offset = mode = memo->mode0 + std::log(memo->q0 / q);
        width = memo->width;
        w0 = memo->w0;
    } else {
        // -INFINITY where 1 - R underflows (the mode lies below).
        const auto slope = [&](double y) {
            const double s = std::exp(y);
            const Law range = range_tail.template operator()<true>(q * s);
            if (!(range.p > 0.0)) return -std::numeric_limits<double>::infinity();
            const double elasticity = q * s * range.dp / range.p;
            return v * -std::expm1(2.0 * y) - (std::isfinite(elasticity) ? elasticity : 0.0);
        };
        // From the guess, steps of the scale's width, doubling, to a bracket of the mode (the
        // slope at y = 0 can be far steeper, -5e4 at q = 316 with 2^31 groups).
        const double guess = 0.5 * std::log(v / (v + 0.5 * q * q));
        double lo = guess, slo = slope(lo), hi = lo, shi = slo;
        const double first_step = 1.0 / std::sqrt(2.0 * v);
        if (slo > 0.0) {
            for (double step = first_step; shi > 0.0 && hi < 0.0; step *= 2.0) {
                lo = hi;
                slo = shi;
                hi = std::min(hi + step, 0.0);
                shi = slope(hi);
            }
        } else {
            for (double step = first_step; slo <= 0.0 && step < 1e4; step *= 2.0) {
                hi = lo;
                shi = slo;
                lo -= step;
                slo = slope(lo);
            }
        }
        double curvature = 2.0 * v * std::exp(2.0 * lo);
        mode = hi;
        if (slo > 0.0 && shi < 0.0) {
            constexpr int kMaxSteps = 60;
            mode = scale_mode(slope, v, {lo, hi, slo, shi}, true, kMaxSteps, curvature);
        }
        width = 1.0 / std::sqrt(std::max(curvature, 2.0 * v * std::exp(2.0 * mode)));
        offset = mode;
        w0 = q * std::exp(mode);
        if (memo != nullptr) {
            *memo = {true, q, mode, width, w0, NAN, memo->near_one_from, {}};
        }
    }
    // The quadrature in d, from the mode (d = 0), to the bounds found in y.
    const Law head = integrand(0.0);
    const double below = mode - 3.0 * reach - offset, above = std::max(mode, 0.0) + reach - offset;
    // Past kTrapezoidGroups groups: the panels from the cut below the range law's step up, the
    // cut kept in d by the memo (it depends on w alone). Empty where no cut is found.
    const auto from_cut = [&]() -> std::optional<Law> {
        std::optional<double> cut;
        if (memo != nullptr && !std::isnan(memo->cut)) {
            if (memo->cut > below && memo->cut < 0.0) cut = memo->cut;
        } else if (const auto found = split_below_step(q, r, mode, width, mode - 3.0 * reach)) {
            cut = *found - offset;
            if (memo != nullptr) memo->cut = *cut;
        }
        if (!cut) return std::nullopt;
        const Law right = integrate_outwards(integrand, 0.0, above, width, head, derivative);
        const Law left = integrate_outwards(integrand, 0.0, *cut, width, head, derivative);
        NagError fail;
        const double scale_tail = g01ecc(Nag_TailProbability::Nag_LowerTail,
                                         v * std::exp(2.0 * (offset + *cut)), v, &fail);
        if (fail.code != 0) return std::nullopt;
        return Law{std::min(scale_tail + left.p + right.p, 1.0), left.dp + right.dp};
    };
    // Fewer nodes than for P before the panels take over: the scale's lower tail, where
    // 1 - R is about 1, falls only like s^v, which the rule, at the step the range law's
    // complement sets, walks slowly (400 nodes and more at v = 2). Its first level's walk
    // down takes about ln(1e18) / v / h nodes, the next ones twice and four times as many:
    // where that is past a fifth of the cap the rule is not tried past kTrapezoidGroups
    // groups (it failed there, at v from 2 to 60, after half the evaluation's range tails,
    // which the panels, at other nodes, could not reuse).
    constexpr int kMaxNodes = 60;
    constexpr double kTailDrop = 41.4;  // ln(1e18)
    const bool walks_tail = kTailDrop / v > (kMaxNodes / 5.0) * 0.75 * width;
    if (r > kTrapezoidGroups && walks_tail) {
        if (const auto law = from_cut()) return *law;
    }
    if (const auto whole = trapezoid_from_mode(integrand, 0.0, width, head, derivative, below,
                                               above, r > kTrapezoidGroups, kMaxNodes))
        return {std::min(whole->p, 1.0), whole->dp};
    if (r > kTrapezoidGroups && !walks_tail) {
        if (const auto law = from_cut()) return *law;
    }
    const Law right = integrate_outwards(integrand, 0.0, above, width, head, derivative);
    const Law left = integrate_outwards(integrand, 0.0, below, width, head, derivative);
    return {std::min(left.p + right.p, 1.0), left.dp + right.dp};
}

// Starting deviate (Odeh and Evans; AS 190.2).
double tukey_start(double p, double r, double v) {
    constexpr double p0 = 0.322232421088, q0 = 0.0993484626060;
    constexpr double p1 = -1.0, q1 = 0.588581570495;
    constexpr double p2 = -0.342242088547, q2 = 0.531103462366;
    constexpr double p3 = -0.204231210125, q3 = 0.103537752850;
    constexpr double p4 = -0.453642210148e-4, q4 = 0.38560700634e-2;
    constexpr double c1 = 0.8832, c2 = 0.2368, c3 = 1.214, c4 = 1.208, c5 = 1.4142;
    constexpr double kSmallDf = 120.0;
    const double ps = 0.5 - 0.5 * p;
    const double yi = std::sqrt(std::log(1.0 / (ps * ps)));
    double t = yi + ((((yi * p4 + p3) * yi + p2) * yi + p1) * yi + p0) /
                        ((((yi * q4 + q3) * yi + q2) * yi + q1) * yi + q0);
    if (v < kSmallDf) t += (t * t * t + t) / v / 4.0;
    double q = c1 - c2 * t;
    if (v < kSmallDf) q += -c3 / v + c4 * t / v;
    return t * (q * std::log(r - 1.0) + c5);
}

// Starting deviate past 100 groups, where the fitted start above (made for
// up to 100 groups, growing like ln r where the range grows like sqrt(2 ln r)) lies far
// from the root. The range law itself costs microseconds: its deviates w_p and w_1/2
// are solved for first (Newton on ln P against ln w below the median, on ln(1 - P)
// against w above it, inside a bracket); v at or above kLimitDf is that law, whose deviate
// is then the start itself. Otherwise ln Q = ln W - ln S, and the start takes
// ln q = ln w_1/2 - ln s_1/2 +- sqrt(dW^2 + dS^2), dW = ln w_p - ln w_1/2 and dS the
// matching offset of ln S at the opposite probability (exact for two normal logarithms;
// the larger one dominates in the tails, where one of the two laws is much the wider).
// S's quantiles: sqrt(chi2_v / v) from the chi-square deviate where the probability is
// representable, by Wilson and Hilferty's cube below 1e-15.
double range_deviate(double p, double r) {
    constexpr int kMaxSteps = 60;
    // Far below the start's own error (1e-2 to 1 in ln(1 - P), from the combination with the
    // scale): a step or two fewer, each a range_upper call above the median.
    constexpr double kStartResidual = 1e-3, kFromR = 1e-9;
    const bool logarithmic = p < 0.5;
    const double target = logarithmic ? std::log(p) : std::log1p(-p);
    double lo = 0.0, hi = INFINITY;
    double w = 2.0 * std::sqrt(2.0 * std::log(r));
    for (int step = 0; step < kMaxSteps; ++step) {
        const ScaledLaw law = range_law<true>(w, r);
        double next = NAN, residual = NAN;
        if (logarithmic && law.p > 0.0) {
            residual = std::log(law.p) + law.shift - target;
            const double slope = w * law.dp / law.p;
            if (slope > 0.0) next = w * std::exp(std::clamp(-residual / slope, -1.0, 1.0));
        } else if (!logarithmic && law.shift == 0.0) {
            // 1 - R directly where R is within kFromR of 1 (above, 1 - R from R, R within some
            // 1e-14 of it, keeps 1e-5 of it: far inside kStartResidual).
            const Law tail = law.p > 1.0 - kFromR ? range_upper(w, r) : Law{1.0 - law.p, law.dp};
            const double upper = tail.p;
            if (upper > 0.0) {
                residual = std::log(upper) - target;
                const double slope = -tail.dp / upper;
                if (slope < 0.0) next = w - std::clamp(residual / slope, -2.0, 2.0);
            }
        }
        // Below the root: P under p (or under the double range, scaled or 0).
        const bool tiny = !(law.p > 0.0) || (!logarithmic && law.shift != 0.0);
        const bool below = tiny || (logarithmic ? residual < 0.0 : residual > 0.0);
        (below ? lo : hi) = w;
        if (std::fabs(residual) <= kStartResidual) return w;
        if (!(next > lo && next < hi)) next = std::isinf(hi) ? 2.0 * w : 0.5 * (lo + hi);
        if (std::isfinite(hi) && hi - lo <= 1e-12 * hi) return next;
        w = next;
    }
    return w;
}

double tukey_start_many(double p, double r, double v) {
    constexpr double kLimitDf = 1e19;  // as in tukey_lower
    const double w_p = range_deviate(p, r);
    if (v >= kLimitDf) return w_p;
    const double w_half = range_deviate(0.5, r);
    // ln of S's quantile at probability a (the upper side through 1 - a = b, kept exact).
    const auto log_scale = [v](double a, double b) {
        constexpr double kRepresentable = 1e-15;
        NagError fail;
        if (a >= kRepresentable && b >= kRepresentable) {
            const double chi2 = g01fcc(a, v, &fail);
            if (fail.code == 0 && chi2 > 0.0) return 0.5 * std::log(chi2 / v);
        }
        const double z = a < 0.5 ? -std::fabs(g01cec(a, &fail)) : std::fabs(g01cec(b, &fail));
        const double c = 2.0 / (9.0 * v);
        const double cube = 1.0 - c + z * std::sqrt(c);
        if (a >= 0.5) return 1.5 * std::log(std::max(cube, 1e-3));
        // Far in the lower tail the cube fails for few degrees of freedom (negative at
        // v = 1 below 1e-15); P(chi2_v < x) <= (x/2)^(v/2) / Gamma(v/2 + 1), nearly equal
        // there, gives a lower bound of the quantile: the larger of the two.
        const double log_bound =
            std::log(2.0) + (2.0 / v) * (std::log(a) + std::lgamma(0.5 * v + 1.0));
        const double log_cube = cube > 0.0 ? std::log(v) + 3.0 * std::log(cube) : -INFINITY;
        return 0.5 * (std::max(log_bound, log_cube) - std::log(v));
    };
    const double d_range = std::log(w_p / w_half);
    const double d_scale = log_scale(1.0 - p, p) - log_scale(0.5, 0.5);
    const double spread = std::hypot(d_range, d_scale);
    return std::exp(std::log(w_half) - log_scale(0.5, 0.5) + (p < 0.5 ? -spread : spread));
}

// The deviate: Newton's method with the density, on ln P - ln p against ln q below the
// median (where ln P is close to linear in ln q: one step for the power law of small q)
// and on ln(1 - P) - ln(1 - p) against q above it (the upper tail falls about like
// e^(-c q^2), nearly a parabola in the logarithm, where P itself flattens and Newton on P
// creeps up from below), inside a bracket kept from the signs seen: a step that leaves
// the bracket is replaced by its geometric midpoint (by doubling while no upper end is
// known, by a sixteenth of the upper end while no lower end is). Each step costs one
// evaluation of P and its density. Once the iteration is quadratic (residual below
// 1e-6), a step whose predicted residual, K e^2 with K = e / e_prev^2 from the last two,
// is below a tenth of the rounding of p is taken without evaluating its end. Returns
// false when the iteration cap is reached without convergence.
bool tukey_deviate(double p, double v, double r, double& q) {
    constexpr int kMaxSteps = 100;
    constexpr double kMaxLogStep = 64.0;
    constexpr double kSubnormalSpacing = std::numeric_limits<double>::denorm_min();
    constexpr double kNoiseBracket = 1e-9;
    constexpr double kQuadratic = 1e-6;
    double best = INFINITY, best_x = 0.0;
    const bool logarithmic = p < 0.5;
    const double target = logarithmic ? std::log(p) : std::log1p(-p);
    double lo = 0.0, hi = INFINITY;
    // The fitted start holds up to 100 groups (kept as it is there); beyond, the asymptotic one.
    constexpr double kFittedStartGroups = 100.0, kFittedStartBelow = 0.99;
    if (logarithmic) {
        // The small-q power law, where it holds, is the deviate.
        // (p / C)^(1/(r-1)) as 2^-t (2^(t (r-1)) p / C)^(1/(r-1)), the scaled ratio near 1:
        // the rounding of 1/(r-1) costs ln(ratio) of its ulps (700 of them unscaled).
        const double log_constant = power_law_log_constant(v, r);
        const double constant = std::exp(log_constant);
        double power = std::exp((target - log_constant) / (r - 1.0));
        if (constant >= DBL_MIN && constant <= DBL_MAX && r <= 1000.0) {
            const int t = static_cast<int>(
                std::lround(-(target - log_constant) / (std::numbers::ln2 * (r - 1.0))));
            const double ratio = std::ldexp(p, t * static_cast<int>(r - 1.0)) / constant;
            if (ratio >= DBL_MIN && ratio <= DBL_MAX)
                power = std::ldexp(std::pow(ratio, 1.0 / (r - 1.0)), -t);
        }
        if (power > 0.0 && power_law_holds(power, v, r)) return q = power, true;
    }
    double x = r > kFittedStartGroups || p > kFittedStartBelow ? tukey_start_many(p, r, v)
                                                               : tukey_start(p, r, v);
    if (!(x > 0.0) || !std::isfinite(x)) x = 1.0;
    double previous_residual = INFINITY;
    // The tail solved for: p below the median, 1 - p (exact) above it, against P or the
    // directly integrated 1 - P.
    const double tail = logarithmic ? p : 1.0 - p;
    // Within rounding of the tail (for a subnormal p, of the subnormal spacing): no closer
    // deviate can be told apart.
    const double rounding = std::max(2.0 * DBL_EPSILON * tail, 2.0 * kSubnormalSpacing);
    // Above the median 1 - P is integrated directly only where p is above 1 - 1e-3 (below,
    // 1 - P from P keeps 1e-13 of it), and there, costing several times P, only for the last
    // step or two: the steps before take 1 - P from P while it is above kCheapAbove and the
    // residual above kCheapNoise times its relative rounding and above kCheapEnough (or for
    // kMaxCheap steps); a residual within kCheapStill times that rounding is not stepped from
    // (its sign is noise: the direct tail is taken where it stands). From a residual below
    // kCheapEnough the Newton step leaves one of order 1e-2 or below (ln(1 - P) is close to
    // linear in ln q), whose direct step then stays within the memo's reach, so that the
    // second direct evaluation reuses the first one's range tails: one cheap evaluation,
    // mostly, where there were two or three (each 80 to 800 range laws at many groups, most
    // at few degrees of freedom). The steps before narrow the bracket only where 1 - P from P
    // is off the tail by more than kCheapTrusted,
    // P's own accuracy, not its rounding (P at 300, v = 2, 20000 groups lies 1.4e-12 off,
    // 2e-9 of 1 - P: the bracket excluded the root and srangeinv(1 - 7.19e-4, 2, 20000) came
    // out 3e-10 low, its direct tail 2e-9 off).
    // From a direct residual below kFinal the Newton step is taken as the deviate: the
    // residual after it is of order its square (ln(1 - P) is smooth in ln q), far below
    // rounding, where 1 - P from P and the direct one differ by 1e-10 at most.
    constexpr double kDirectTail = 1e-3, kCheapAbove = 1e-15, kCheapNoise = 100.0, kFinal = 1e-8;
    constexpr double kCheapEnough = 2.0, kCheapStill = 4.0;
    constexpr double kCheapTrusted = 1e-11;
    constexpr int kMaxCheap = 8;
    // Past 100 groups at v up to 4 the start lies within about 4e-2 of the root in ln(1 - P)
    // (the scale's lower tail, which it takes exactly, is most of the upper tail), so that the
    // first direct step stays within the memo's reach, while P there costs 300 to 800 range
    // laws: the direct tail is taken from the start.
    constexpr double kDirectStartDf = 4.0;
    bool precise =
        logarithmic || tail >= kDirectTail || (r > kFittedStartGroups && v <= kDirectStartDf);
    // Whether the precise phase takes the direct upper tail; ln q and the slope of
    // ln(1 - P) in ln q at its last evaluation.
    const bool direct = !logarithmic && tail < kDirectTail;
    double direct_log_x = NAN, direct_slope = NAN;
    UpperTailMemo memo;
    int cheap_steps = 0;
    for (int step = 0; step < kMaxSteps; ++step) {
        // P below the median, 1 - P above it; the density either way.
        Law law;
        if (logarithmic) {
            law = tukey_lower<true>(x, v, r);
        } else if (precise && tail < kDirectTail) {
            law = tukey_upper<true>(x, v, r, &memo);
        } else {
            const Law lower = tukey_lower<true>(x, v, r);
            law = {1.0 - lower.p, lower.dp};
            if (!precise && !(law.p >= kCheapAbove)) {
                precise = true;
                continue;
            }
        }
        if (!precise) {
            // Bracket (where the residual's sign is above P's accuracy) and Newton step only.
            const double residual = std::log(law.p) - target;
            previous_residual = std::fabs(residual);
            if (std::fabs(residual) <= kCheapStill * DBL_EPSILON / law.p) {
                precise = true;
                continue;
            }
            if (std::fabs(residual) <= kCheapNoise * DBL_EPSILON / law.p ||
                std::fabs(residual) <= kCheapEnough) {
                precise = true;
            } else if (std::fabs(residual) > kCheapTrusted / law.p) {
                (law.p > tail ? lo : hi) = x;
            }
            if (++cheap_steps == kMaxCheap) precise = true;
            double next = NAN;
            if (law.dp > 0.0) {
                next = x * std::exp(std::clamp(residual * law.p / (x * law.dp), -kMaxLogStep,
                                               kMaxLogStep));
            }
            if (!(next > lo && next < hi)) {
                next = std::isinf(hi) ? 2.0 * x : lo > 0.0 ? std::sqrt(lo * hi) : 0.0625 * hi;
            }
            x = next;
            continue;
        }
        if (law.p > 0.0 && std::fabs(law.p - tail) <= rounding) return q = x, true;
        // Where the probability itself carries noise above rounding (degrees of freedom
        // far above 1e6), a step inside a bracket already narrower than 1e-9 that does
        // not halve the excess ends the search at the best point seen.
        const double excess_now = std::fabs(law.p - tail);
        if (std::isfinite(hi) && hi - lo <= kNoiseBracket * hi && !(excess_now < 0.5 * best))
            return q = best_x, true;
        if (excess_now < best) {
            best = excess_now;
            best_x = x;
        }
        ((logarithmic ? law.p < tail : law.p > tail) ? lo : hi) = x;
        double next = NAN;
        double residual = INFINITY;  // of the log variable, relative to the target's tail
        bool curved_final = false;
        if (law.p > 0.0 && law.dp > 0.0) {
            // In ln q: one step for the power laws P ~ c q^(r-1) of small q and
            // 1 - P ~ c q^-v of large q.
            residual = std::log(law.p) - target;
            const double slope = (logarithmic ? x : -x) * law.dp / law.p;
            double log_step = -residual / slope;
            // From the second direct evaluation of the upper tail on, the step solves the
            // quadratic model of L = ln(1 - P) in ln q, its curvature c the secant of the last
            // two slopes (each exact to the tail's accuracy; from 1 - P taken from P the slope
            // is too noisy for that). Its error is that of c, about |L'''| (apart + |step|) / 2,
            // with |L'''| taken as at most kCurvatureSafety |c| (1 - P falls like a power of q,
            // like e^(-a q^2) or e^(-a q): there |L'''| is 0 to 2 |c|); where the residual that
            // leaves is below a tenth of the rounding, the step is the deviate (a Newton step
            // from a residual of 1e-7 took a third direct evaluation).
            if (direct && std::isfinite(direct_log_x)) {
                constexpr double kCurvatureSafety = 4.0;
                const double apart = std::log(x) - direct_log_x;
                const double curvature = apart != 0.0 ? (slope - direct_slope) / apart : NAN;
                const double discriminant = 1.0 - 2.0 * curvature * residual / (slope * slope);
                if (std::isfinite(curvature) && discriminant > 0.0) {
                    const double curved = 2.0 * log_step / (1.0 + std::sqrt(discriminant));
                    const double left = kCurvatureSafety * std::fabs(slope) *
                                        std::fabs(curved - log_step) *
                                        (std::fabs(apart) + std::fabs(curved));
                    curved_final = left * tail <= 0.1 * rounding;
                    log_step = curved;
                }
            }
            if (direct) {
                direct_log_x = std::log(x);
                direct_slope = slope;
            }
            next = x * std::exp(std::clamp(log_step, -kMaxLogStep, kMaxLogStep));
        }
        if (std::fabs(next - x) <= 4.0 * DBL_EPSILON * x) return q = next, true;
        if (curved_final && next > lo && next < hi) return q = next, true;
        if (!logarithmic && std::fabs(residual) <= kFinal && next > lo && next < hi)
            return q = next, true;
        if (!(next > lo && next < hi)) {
            next = std::isinf(hi) ? 2.0 * x : lo > 0.0 ? std::sqrt(lo * hi) : 0.0625 * hi;
            residual = INFINITY;
        }
        if (std::isfinite(hi) && hi - lo <= 4.0 * DBL_EPSILON * hi) return q = next, true;
        const double magnitude = std::fabs(residual);
        if (magnitude <= kQuadratic && std::isfinite(previous_residual)) {
            const double predicted =
                magnitude * magnitude * magnitude / (previous_residual * previous_residual);
            if (predicted * tail <= 0.1 * rounding) return q = next, true;
        }
        previous_residual = magnitude;
        x = next;
    }
    q = x;
    return false;
}

bool bad_arguments(double v, int ir, NagError* fail) {
    if (std::isnan(v)) return fail->set(NE_REAL), true;
    if (ir < 2) return fail->set(NE_INT_ARG_LT), true;
    if (v < 1.0) return fail->set(NE_REAL_ARG_LT), true;
    return false;
}

}  // namespace

double g01emc(double q, double v, int ir, NagError* fail) {
    if (std::isnan(q)) return fail->set(NE_REAL), 0.0;
    if (bad_arguments(v, ir, fail)) return 0.0;
    fail->set(NE_NOERROR);
    return tukey_lower<false>(q, v, ir).p;
}

double g01emc_upper(double q, double v, int ir, NagError* fail) {
    if (std::isnan(q)) return fail->set(NE_REAL), 0.0;
    if (bad_arguments(v, ir, fail)) return 0.0;
    fail->set(NE_NOERROR);
    // In the body 1 - P loses at most a digit; the direct integral is for the tail (in the
    // body, at few degrees of freedom and many groups, its rule can settle 3e-7 off: the
    // range law's step then lies where the scale's density still weighs).
    constexpr double kTailBelow = 0.1;
    const double lower = tukey_lower<false>(q, v, ir).p;
    return lower < 1.0 - kTailBelow ? 1.0 - lower : tukey_upper<false>(q, v, ir).p;
}

double g01fmc(double p, double v, int ir, NagError* fail) {
    if (std::isnan(p)) return fail->set(NE_REAL), 0.0;
    if (bad_arguments(v, ir, fail)) return 0.0;
    if (p <= 0.0) return fail->set(NE_REAL_ARG_LE), 0.0;
    if (p >= 1.0) return fail->set(NE_REAL_ARG_GE), 0.0;
    fail->set(NE_NOERROR);
    double q = 0.0;
    if (!tukey_deviate(p, v, ir, q)) fail->set(NE_CONV);
    return q;
}

}  // namespace zemath::nag
