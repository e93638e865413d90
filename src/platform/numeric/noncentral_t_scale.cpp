// The lower tail of the non-central t law by quadrature over its scale law:
//     P(T <= t) = E[Phi(t S - delta)] = integral_0^inf Phi(t s - delta) f_S(s) ds,
// S = sqrt(chi2_v / v), f_S(s) = exp(K - a D(s)) / s with a = v/2, D(s) = s^2 - 1 - 2 ln s
// (the deviance a D of u = a s^2 from a; K = ln 2 + ln(a / (2 pi))/2 - mu(a), mu Stirling's
// error term, as in chi_scale.cpp). The integrand is positive, so the relative accuracy of
// the sum is that of its terms and of the rule, for a result of any size.
//
// Panels. The integrand changes on up to three scales, each a feature with a place and a
// width in y = ln s: the scale density's mode y = 0 (width 1/sqrt(2v)); the step of Phi at
// y0 = ln(delta/t) where delta/t > 0 (width 1/|delta|: c = t s - delta moves by one per
// 1/|delta| in y there); and the integrand's own mode (found by Newton's steps on the
// derivative of its logarithm from the largest of the breaks, width from the second
// derivative), which lies between the two where the integrand's mass is far in a tail of
// either factor. Breaks lie at each feature's place +- its width times 2^k across the span
// of the features, and the range is extended on each side by panels that double until a
// panel's far end is below 1e-18 of the sum (beyond the outermost features both factors
// fall, so the rest is of that order); below s = 1e-300 one last panel reaches s = 0. Each
// panel takes the 20-point Gauss-Legendre rule in s.
//
// Rounding. The probability is ill-conditioned in t where |delta| is large: at
// delta = 1e4 one ulp of t s moves Phi(c) by up to |c| 1e4 ulps in the tails. So the nodes
// are carried as a break B (a double) plus an offset o (below the panel's width): the node
// s = B + o is exact in two parts, c = t B - delta + t o is formed exactly in two parts and
// Phi takes both (normal.hpp), and D is formed from s = B + o in two parts: near s = 1 by
// its series in d = s - 1, D = 2 d^2 - 2 d^3/3 + d^4/2 - ... (|d| < 1/4, relative accuracy
// where s^2 - 1 - 2 ln s would cancel), elsewhere as s^2 - 1 - 2 ln s with s^2 and ln s
// in two parts (ln s within 3e-18, double_double.hpp). A node's own rounding (the offset's,
// below an ulp of the panel's width) is then of the rule's order.
// Error bound (relative): the rule's (below 1e-15 on panels of a feature's width), the
// constant K's (mu within 1e-15 below v = 30, 3e-17 above), Phi's few ulps, and the
// exponent's rounding, about 2e-16 |ln f| where the integrand's mass sits far in the
// density's tail (ln f the log density there), plus a 6e-18 a absolute in the exponent
// where |s - 1| >= 1/4 (only where the density is above e^-745, a <= 7500: 5e-14).
// Measured against 40-digit mpmath integrals (tests/reference/gen_noncentral_t_large_delta.py)
// within 6.7e-14 over |delta| in [41, 1e4], df in [1, 1e10] (the worst in the far lower tail,
// 1.7e-198 at df 1e8, delta 1e4), at most 0.3 ms per call.
// Declined (NaN): df outside [1, 1e10] (above, the density's width 1/sqrt(2v) falls below
// the rounding of the breaks near y = 0), t or delta not finite.
// References: Owen (1968), "A survey of properties and applications of the noncentral
// t-distribution" (the integral over the chi scale); Abramowitz and Stegun 25.4.30 (the rule).
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
constexpr double kNegligible = 1e-18;
constexpr double kSeriesReach = 0.25;  // |s - 1| below it: D by its series
constexpr double kSmallestBreak = 1e-300;
constexpr double kLargestY = 690.0;  // e^y within the double range
constexpr int kExtensionPanels = 80;
constexpr int kNewtonSteps = 60;

// 2 (-1)^k / k, k = 3..30: D(d) = d^2 (2 + sum_k c_k d^(k-2)); at |d| < 1/4 the terms
// beyond k = 30 are below 1e-18 of the sum.
constexpr std::array<double, 28> kDevianceSeries = [] {
    std::array<double, 28> c{};
    for (int k = 3; k <= 30; ++k) c[k - 3] = (k % 2 == 0 ? 2.0 : -2.0) / k;
    return c;
}();

// A place in y = ln s where the integrand changes, and the scale on which it does.
struct Feature {
    double point;
    double width;
};

class Integrand {
  public:
    Integrand(double t, double df, double delta)
        : t_(t),
          delta_(delta),
          v_(df),
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
            double sum = kDevianceSeries.back();
            for (std::size_t k = kDevianceSeries.size() - 1; k-- > 0;)
                sum = sum * d.hi + kDevianceSeries[k];
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

    // ln of the integrand in y (up to a constant), roughly: it only ranks the breaks.
    double log_in_y(double y) const {
        const double s = std::exp(y);
        const double c = t_ * s - delta_;
        const double log_phi = c > -20.0 ? std::log(normal_lower(c))
                                         : -0.5 * c * c - std::log(-c) - 0.9189385332046727;
        return log_phi - a_ * (std::expm1(2.0 * y) - 2.0 * y);
    }
    // The first and second derivatives of that logarithm in y.
    double slope(double y) const {
        const double s = std::exp(y);
        return v_ - v_ * s * s + t_ * s * inverse_mills(t_ * s - delta_);
    }
    double curvature(double y) const {
        const double s = std::exp(y);
        const double c = t_ * s - delta_;
        const double m = inverse_mills(c);
        return -2.0 * v_ * s * s + t_ * s * m - t_ * t_ * s * s * std::clamp(m * (m + c), 0.0, 1.0);
    }

  private:
    double t_, delta_, v_, a_, log_constant_;
};

// The 20-point rule over [lo, hi] in s, each node carried from the nearer end.
double panel(const Integrand& f, double lo, double hi) {
    const double half = 0.5 * (hi - lo);
    double sum = 0.0;
    for (std::size_t i = 0; i < kGaussLegendre20.node.size(); ++i) {
        const double inset = half * (1.0 - kGaussLegendre20.node[i]);  // from the end
        sum += kGaussLegendre20.weight[i] * (f(lo, inset) + f(hi, -inset));
    }
    return sum * half;
}

constexpr std::size_t kFeatures = 3;
constexpr int kLevels = 64;
constexpr std::size_t kMaxBreaks = kFeatures * (2 * kLevels + 1) + 2;
using Breaks = std::array<double, kMaxBreaks>;

// Breaks in y: each feature's place +- width 2^k across the span of all the places (and
// one width beyond) and at least kOwnReach widths out, sorted; returns their count.
constexpr double kOwnReach = 64.0;
std::size_t lay_breaks(const Feature* features, std::size_t count, Breaks& out) {
    double lo = features[0].point, hi = lo;
    for (std::size_t i = 1; i < count; ++i) {
        lo = std::min(lo, features[i].point);
        hi = std::max(hi, features[i].point);
    }
    std::size_t n = 0;
    for (std::size_t i = 0; i < count; ++i) {
        const Feature& ft = features[i];
        out[n++] = ft.point;
        const double reach =
            std::max(std::max(ft.point - lo, hi - ft.point) + ft.width, kOwnReach * ft.width);
        double offset = ft.width;
        for (int k = 0; k < kLevels && offset <= reach; ++k, offset *= 2.0) {
            out[n++] = ft.point - offset;
            out[n++] = ft.point + offset;
        }
    }
    std::sort(out.begin(), out.begin() + n);
    return static_cast<std::size_t>(std::unique(out.begin(), out.begin() + n) - out.begin());
}

// The integrand's mode in y, from the largest break, by Newton's steps on the slope inside
// the neighbouring breaks (bisection where a step leaves them); its width from the
// curvature. Width 0 where the curvature is not negative.
Feature integrand_mode(const Integrand& f, const Breaks& breaks, std::size_t n) {
    std::size_t best = 0;
    double best_log = -INFINITY;
    for (std::size_t i = 0; i < n; ++i) {
        const double value = f.log_in_y(breaks[i]);
        if (value > best_log) {
            best_log = value;
            best = i;
        }
    }
    double left = breaks[best > 0 ? best - 1 : 0], right = breaks[best + 1 < n ? best + 1 : best];
    double y = breaks[best];
    for (int i = 0; i < kNewtonSteps && right - left > 1e-9 * (1.0 + std::fabs(y)); ++i) {
        const double slope = f.slope(y);
        if (!(slope != 0.0)) break;
        (slope > 0.0 ? left : right) = y;
        const double curve = f.curvature(y);
        const double next = curve < 0.0 ? y - slope / curve : NAN;
        y = next > left && next < right ? next : 0.5 * (left + right);
    }
    const double curve = f.curvature(y);
    return {y, curve < 0.0 ? 1.0 / std::sqrt(-curve) : 0.0};
}

// The integral over [ya, yb] in y (taken in s), the panel halved (to kSplitDepth levels)
// while the integrand's logarithm changes by more than kDrop across it and it is not
// negligible against the largest value: the rule is exact to double precision for an
// exponential that changes by up to about e^23 over a panel.
constexpr double kDrop = 16.0;
constexpr double kNegligibleLog = 60.0;  // below the peak by this much: not split
constexpr int kSplitDepth = 16;
double split_panels(const Integrand& f, double ya, double yb, double peak_log) {
    struct Piece {
        double ya, yb, la, lb;
        int depth;
    };
    std::array<Piece, kSplitDepth + 2> stack{};
    int top = 0;
    stack[top++] = {ya, yb, f.log_in_y(ya), f.log_in_y(yb), 0};
    double sum = 0.0;
    while (top > 0) {
        const Piece piece = stack[--top];
        const bool steep = !(std::fabs(piece.la - piece.lb) <= kDrop) &&
                           std::max(piece.la, piece.lb) > peak_log - kNegligibleLog;
        if (steep && piece.depth < kSplitDepth) {
            const double mid = 0.5 * (piece.ya + piece.yb);
            const double lm = f.log_in_y(mid);
            stack[top++] = {piece.ya, mid, piece.la, lm, piece.depth + 1};
            stack[top++] = {mid, piece.yb, lm, piece.lb, piece.depth + 1};
            continue;
        }
        const double from = std::exp(piece.ya), to = std::exp(piece.yb);
        if (to > from) sum += panel(f, from, to);
    }
    return sum;
}

// For |t| >= kHugeT: with x = |Z + delta| / |t| below 1e-46, F_S(x) = P(a, a x^2) is
// (a x^2)^a / Gamma(a + 1) to double precision (the next term is a x^2 of it), so
//     P(T > t) = E[F_S((Z + delta)/t); Z > -delta] < 1e-17   (t >= kHugeT),
//     P(T <= t) = a^a / Gamma(a + 1) |t|^-v M,  M = integral_0^inf w^v phi(w + delta) dw
// (t <= -kHugeT), M by the 20-point rule on panels about the mode of w^v phi(w + delta),
// w* = 2v / (delta + sqrt(delta^2 + 4v)), of width 1/sqrt(1 + v / w*^2), halving towards 0;
// the exponent v ln|t| (up to 745) in two parts. Results below the double range are 0 (v
// above 7 at once).
constexpr double kHugeT = kNoncentralTHugeT;
double lower_at_huge_t(double t, double v, double delta) {
    if (t > 0.0) return 1.0;
    const double a = 0.5 * v;
    const double mode = 2.0 * v / (delta + std::sqrt(delta * delta + 4.0 * v));
    const double width = 1.0 / std::sqrt(1.0 + v / (mode * mode));
    // P = e^E M', E = a ln a - ln Gamma(a + 1) - v ln|t| + v ln w*, M' = M / w*^v; E in two
    // parts (its size, up to 745, would otherwise cost 1e-13).
    const double log_mode = std::log(mode);
    const TwoPart log_t = log_two_part(-t, 0.0);
    TwoPart exponent = two_sum(a * std::log(a) - std::lgamma(a + 1.0), 0.0);
    exponent = add(exponent, negate(two_product(v, log_t.hi)));
    exponent = add(exponent, TwoPart{-v * log_t.lo, 0.0});
    exponent = add(exponent, two_product(v, log_mode));
    if (exponent.hi < -800.0) return 0.0;  // M' is at most about sqrt(2 pi v) here
    // The rule runs in z = w + delta (the normal's argument, so that a node's rounding is
    // relative to z, not to w, which reaches 1e4: that cost 4e-13), w = z - delta.
    const auto h = [=](double z) {
        const TwoPart w = two_sum(z, -delta);
        if (!(w.hi > 0.0)) return 0.0;
        return std::exp(v * (std::log(w.hi) - log_mode) + v * w.lo / w.hi) * normal_density(z);
    };
    const auto rule = [&](double w_lo, double w_hi) {
        return gauss_legendre20(h, w_lo + delta, w_hi + delta);
    };
    double sum = 0.0;
    // Below the mode: width steps while above mode/2, then halving to 2^-60 of the mode.
    double hi = mode;
    for (double offset = width; offset < 0.5 * mode; offset *= 2.0) {
        sum += rule(mode - offset, hi);
        hi = mode - offset;
    }
    for (int k = 0; k < 60 && hi > 0.0; ++k) {
        const double lo = k == 59 ? 0.0 : 0.5 * hi;
        sum += rule(lo, hi);
        hi = lo;
    }
    double lo = mode;
    for (double offset = width; offset <= kOwnReach * width; offset *= 2.0) {
        sum += rule(lo, mode + offset);
        lo = mode + offset;
    }
    return exp_two_part(exponent) * sum;
}

}  // namespace

double noncentral_t_lower_by_scale(double t, double df, double delta) {
    if (!(df >= 1.0 && df <= kNoncentralTScaleDfMax) || !std::isfinite(t) || !std::isfinite(delta))
        return kNaN;
    if (t == 0.0) return normal_lower(-delta);
    if (std::fabs(t) >= kHugeT) return lower_at_huge_t(t, df, delta);
    const Integrand f(t, df, delta);
    std::array<Feature, kFeatures> features{};
    std::size_t count = 0;
    features[count++] = {0.0, 1.0 / std::sqrt(2.0 * df)};
    if (std::fabs(delta) >= 1.0 && delta / t > 0.0) {
        features[count++] = {std::clamp(std::log(delta / t), -kLargestY, kLargestY),
                             1.0 / std::fabs(delta)};
    } else {
        // No step (or a small delta): Phi changes where |t| s is of order one.
        features[count++] = {std::clamp(-std::log(std::fabs(t)), -kLargestY, kLargestY), 1.0};
    }
    Breaks breaks{};
    std::size_t n = lay_breaks(features.data(), count, breaks);
    const Feature mode = integrand_mode(f, breaks, n);
    if (mode.width > 0.0 && std::fabs(mode.point) < kLargestY) {
        features[count++] = mode;
        n = lay_breaks(features.data(), count, breaks);
    }
    n = static_cast<std::size_t>(
        std::remove_if(breaks.begin(), breaks.begin() + n,
                       [](double y) { return !(std::fabs(y) <= kLargestY); }) -
        breaks.begin());
    double peak_log = -INFINITY;
    for (std::size_t i = 0; i < n; ++i) peak_log = std::max(peak_log, f.log_in_y(breaks[i]));
    if (mode.width > 0.0) peak_log = std::max(peak_log, f.log_in_y(mode.point));
    double total = 0.0;
    for (std::size_t i = 1; i < n; ++i)
        total += split_panels(f, breaks[i - 1], breaks[i], peak_log);
    // Each side extended by panels whose widths double from the last one's.
    {
        double y = breaks[n - 1];
        double width = n > 1 ? breaks[n - 1] - breaks[n - 2] : features[0].width;
        for (int i = 0; i < kExtensionPanels && y < kLargestY; ++i, width *= 2.0) {
            const double from = y;
            y = std::min(y + width, kLargestY);
            total += split_panels(f, from, y, peak_log);
            const double to_s = std::exp(y);
            if (f(to_s, 0.0) * (to_s - std::exp(from)) <= kNegligible * total) break;
        }
    }
    {
        double y = breaks[0];
        double width = n > 1 ? breaks[1] - breaks[0] : features[0].width;
        for (int i = 0; i < kExtensionPanels; ++i, width *= 2.0) {
            const double to_s = std::exp(y);
            if (to_s <= kSmallestBreak) {  // the rest, down to s = 0, in one panel
                total += panel(f, 0.0, to_s);
                break;
            }
            const double to = y;
            y -= width;
            total += split_panels(f, y, to, peak_log);
            const double from_s = std::exp(y);
            if (f(from_s, 0.0) * (to_s - from_s) <= kNegligible * total) break;
        }
    }
    return total;
}

}  // namespace zemath::numeric
