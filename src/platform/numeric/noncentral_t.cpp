// The lower tail of the non-central t law in double arithmetic, by the Poisson-weighted
// series of incomplete beta values of both parities. With x = t^2/(t^2 + df), b = df/2,
// L = delta^2/2, p_j = e^-L L^j / j! and q_j = delta e^-L L^j / (sqrt 2 Gamma(j + 3/2)):
//     t > 0:  P(T <= t) = Phi(-delta) + 1/2 sum_j (p_j I_x(j + 1/2, b) + q_j I_x(j + 1, b)),
//     t < 0:  P(T <= t) = P(T' > |t|) = 1/2 sum_j (p_j J_x(j + 1/2, b) + q_j J_x(j + 1, b))
// with J = 1 - I, T' the law with -delta (so q_j takes the sign of -delta there); the second
// form is the first's complement, using sum_j p_j = 1 and sum_j q_j = 2 Phi(delta) - 1.
//
// Method. Each form is summed where its central terms only grow by positive additions:
//     I_x(s, b) = I_x(s + 1, b) + d(s),  J_x(s + 1, b) = J_x(s, b) + d(s),
//     d(s) = x^s y^b / (s B(s, b)),      d(s + 1) = d(s) x (s + b) / (s + 1),
// the I form downwards from a top index T, the J form upwards from a bottom index B. Each
// parity starts from one evaluation of the double incomplete beta (incomplete_beta.hpp:
// the side and the front x^s y^b / B(s, b), within a few ulps): two evaluations per call.
// The weights start from one Poisson point (discrete_terms.hpp: Stirling's error term from
// j = 100 on, so the top weight keeps its digits for large L), q from p by the ratio
// delta Gamma(T + 1)/(sqrt 2 Gamma(T + 3/2)) (Stirling's form with its error term from
// T = 100 on), corrected for the rounding of L = delta^2/2 (carried in two parts); the
// weights and the d(s) then follow by their ratios, carried in the extended type with x and L
// in two parts and s + b exact (noncentral_steps.hpp), so no double rounding repeats from
// step to step; the terms, central values and sums are double.
//
// Truncation, proven from the weights. I form: with k = floor(L), T is the first index above
// k where the weights' tails beyond it, bounded by p_T r/(1 - r), r = L/(T + 1) (q's ratios
// L/(j + 3/2) are smaller), are below 1e-17/2 of their value at the mode (q's mode is within
// one index of k: the factor 2 covers it); the central terms fall with j, so the terms beyond
// T total at most 1e-17 of the sum. Far in the lower tail an earlier T serves, from the
// terms' ratio bound (L/(i + 1)) x max(1, (b + i + 1/2)/(i + 3/2)) (as in noncentral_beta.cpp).
// Below k the run stops once the remaining weights (central terms bounded by 1), p_j r/(1 - r)
// + |q_j| r'/(1 - r'), r = j/L, r' = (j + 1/2)/L, are below 1e-17 of the terms' magnitudes.
// J form, mirrored: B is the first index below k where the weights' tails below it (ratios
// at most (B + 1/2)/L) are below 1e-17/2 of the mode's; the J grow with j, so the terms
// below B are at most 1e-17 of the sum; above k the run stops on the remaining weights.
//
// Error bound (relative): where the terms have one sign (t > 0 with delta >= 0, t < 0 with
// delta <= 0), the starting terms' few ulps plus independent recurrence roundings, about
// 3 sqrt(n) ulps over n steps. With mixed signs the error is that times M/P, M the sum of
// the terms' magnitudes: t > 0 > delta gives P >= 1/2 and M <= 2; t < 0 < delta (the far
// lower tail) is taken only while M <= 4 P, else declined (the routine then integrates, or
// takes the extended series); the declining call can hand back the bound P + 1e-12 M, the
// cancelled sum's value with a margin far above its rounding, which tells the routine
// whether the tail lies below its floor for the series. Measured against mpmath within
// 2.3e-14 on the rows of
// tests/reference/gen_noncentral_double.py, 3.2e-14 at df = 1, delta = 38, t = 19 (starting
// shape 965, where the double incomplete beta's own error grows). Declined: |delta| above 40 (L =
// 800, about 1100 terms: the kernel's shape limit 1000 is passed there anyway), df above 2000 (b
// past that limit), t^2 outside the normal range, starting sides the kernel does not give, results
// below 1e-280 (a weight below the normal range could then matter). References: Lenth (1989),
// "Algorithm AS 243: cumulative distribution function of the non-central t distribution"; Benton
// and Krishnamoorthy (2003), "Computing discrete mixtures of continuous distributions";
// DLMF 8.17.20 (the recurrence), 5.11.1 (Stirling).
#include "platform/numeric/noncentral_t.hpp"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>

#include "platform/numeric/discrete_terms.hpp"
#include "platform/numeric/incomplete_beta.hpp"
#include "platform/numeric/noncentral_steps.hpp"
#include "platform/numeric/normal.hpp"
#include "platform/numeric/stirling.hpp"

namespace zemath::numeric {

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kTruncation = 1e-17;
constexpr double kSmallestResult = 1e-280;
constexpr double kMostCancellation = 4.0;  // M/P accepted with mixed signs
constexpr double kStirlingRatioFrom = 100.0;

// Gamma(j + 1) / Gamma(j + 3/2).
double gamma_half_ratio(int j) {
    const double z = j;
    if (z < kStirlingRatioFrom) {
        double ratio = 2.0 / std::sqrt(std::numbers::pi);  // 1/Gamma(3/2)
        for (int i = 1; i <= j; ++i) ratio *= i / (i + 0.5);
        return ratio;
    }
    // ln Gamma(z + 1) - ln Gamma(z + 3/2) by Stirling's form at z and z + 1/2, the large
    // terms cancelled analytically.
    const double exponent =
        0.5 - (z + 0.5) * std::log1p(0.5 / z) + stirling_error(z) - stirling_error(z + 0.5);
    return std::exp(exponent) / std::sqrt(z + 0.5);
}

struct Weights {
    Extended p, q;
};

// p_j and q_j at j, L = L.hi + L.lo; d the signed non-centrality.
Weights weights_at(int j, TwoPart L, double d) {
    const Extended p = poisson_weight(j, L);
    const Extended d_over_sqrt2 = static_cast<Extended>(d) * kRsqrt2Hi + d * kRsqrt2Lo;
    return {p, p * d_over_sqrt2 * gamma_half_ratio(j)};
}

// The I form, t > 0.
double lower_form(double d, double b, TwoPart L, TwoPart x, TwoPart y) {
    const int k = static_cast<int>(L.hi);
    int top = poisson_top_index(L.hi, 0.5 * kTruncation);
    {
        // The ratio L x max(t + 3/2, b + t + 1/2) / ((t + 1)(t + 3/2)) with one division, the
        // tail test product / (1 - ratio) <= kTruncation with none.
        double product = 1.0;
        const double lx = L.hi * x.hi;
        for (int t = 0; t < top; ++t) {
            const double ratio = lx * std::max(t + 1.5, b + t + 0.5) / ((t + 1.0) * (t + 1.5));
            product *= ratio;
            if (ratio < 1.0 && product <= kTruncation * (1.0 - ratio)) {
                top = t;
                break;
            }
        }
    }
    if (top + 1.0 > kSeriesShapeMax) return kNaN;
    const auto half = incomplete_beta_double(top + 0.5, b, x, y);
    const auto whole = incomplete_beta_double(top + 1.0, b, x, y);
    if (!half || !whole || std::isnan(half->lower) || std::isnan(whole->lower)) return kNaN;
    double i_half = half->lower, i_whole = whole->lower;
    Extended d_half = half->front / (top + 0.5), d_whole = whole->front / (top + 1.0);
    Weights w = weights_at(top, L, d);
    double p = static_cast<double>(w.p), q = static_cast<double>(w.q);
    double sum = p * i_half + q * i_whole;
    double magnitude = p * i_half + std::fabs(q) * i_whole;
    const Extended xe = widen(x), be = b, inv_L = 1.0L / widen(L);
    for (int j = top - 1; j >= 0; --j) {
        d_half *= beta_step_down(xe, be + (j + 0.5), j + 1.5);
        d_whole *= beta_step_down(xe, be + (j + 1), j + 2);
        i_half = std::min(i_half + static_cast<double>(d_half), 1.0);
        i_whole = std::min(i_whole + static_cast<double>(d_whole), 1.0);
        w.p *= (j + 1) * inv_L;
        w.q *= (j + 1.5) * inv_L;
        p = static_cast<double>(w.p);
        q = static_cast<double>(w.q);
        sum += p * i_half + q * i_whole;
        magnitude += p * i_half + std::fabs(q) * i_whole;
        if (j < k) {
            const double r = j / L.hi, rq = (j + 0.5) / L.hi;
            if (p * r / (1.0 - r) + std::fabs(q) * rq / (1.0 - rq) <= kTruncation * magnitude)
                break;
        }
    }
    const double phi = normal_lower(-d);
    const double result = phi + 0.5 * sum;
    if (phi + 0.5 * magnitude > kMostCancellation * result || !(result >= kSmallestResult))
        return kNaN;
    return std::min(result, 1.0);
}

// The J form, t < 0 (d = -delta); *bound as for noncentral_t_lower_double.
double upper_form(double d, double b, TwoPart L, TwoPart x, TwoPart y, double* bound) {
    const int k = static_cast<int>(L.hi);
    int bottom = k;
    for (double rel = 1.0; bottom > 0; --bottom) {
        const double r = (bottom + 0.5) / L.hi;
        if (r < 1.0 && rel * r / (1.0 - r) <= 0.5 * kTruncation) break;
        rel *= r;
    }
    if (bottom + 1.0 > kSeriesShapeMax) return kNaN;
    const auto half = incomplete_beta_double(bottom + 0.5, b, x, y);
    const auto whole = incomplete_beta_double(bottom + 1.0, b, x, y);
    if (!half || !whole || std::isnan(half->upper) || std::isnan(whole->upper)) return kNaN;
    double j_half = half->upper, j_whole = whole->upper;
    Extended d_half = half->front / (bottom + 0.5), d_whole = whole->front / (bottom + 1.0);
    Weights w = weights_at(bottom, L, d);
    double sum = 0.0, magnitude = 0.0;
    const Extended xe = widen(x), Le = widen(L), be = b;
    // The weights fall past the mode by at least L/(j + 1) per step: well within this many.
    const int last = k + 100 + static_cast<int>(40.0 * std::sqrt(L.hi));
    for (int j = bottom;; ++j) {
        const double p = static_cast<double>(w.p), q = static_cast<double>(w.q);
        sum += p * j_half + q * j_whole;
        magnitude += p * j_half + std::fabs(q) * j_whole;
        if (j >= k) {
            const double r = L.hi / (j + 1);
            if (r < 1.0 && (p + std::fabs(q)) * r / (1.0 - r) <= kTruncation * magnitude) break;
        }
        if (j == last) return kNaN;
        // The steps from index j to j + 1.
        j_half = std::min(j_half + static_cast<double>(d_half), 1.0);
        j_whole = std::min(j_whole + static_cast<double>(d_whole), 1.0);
        d_half *= beta_step_up(xe, be + (j + 0.5), j + 1.5);
        d_whole *= beta_step_up(xe, be + (j + 1), j + 2);
        w.p *= Le / (j + 1);
        w.q *= Le / (j + 1.5);
    }
    const double result = 0.5 * sum;
    if (0.5 * magnitude > kMostCancellation * result) {
        // The sum's rounding is about 3 sqrt(n) ulps of the magnitudes, n <= 1200 steps.
        constexpr double kCancelledError = 1e-12;
        if (bound != nullptr) *bound = std::max(result, 0.0) + kCancelledError * 0.5 * magnitude;
        return kNaN;
    }
    if (!(result >= kSmallestResult)) return kNaN;
    return std::min(result, 1.0);
}

}  // namespace

double noncentral_t_lower_double(double t, double df, double delta, double* bound) {
    if (!std::isfinite(t) || !(df >= 1.0 && df <= 2.0 * kSeriesShapeMax) ||
        !(std::fabs(delta) <= kNoncentralTDoubleDeltaMax))
        return kNaN;
    if (t == 0.0) return normal_lower(-delta);
    const bool negative = t < 0.0;
    const double u = std::fabs(t), d = negative ? -delta : delta;
    // x = u^2/(u^2 + df) and y = df/(u^2 + df) in two parts.
    const TwoPart square = two_product(u, u);
    if (!std::isnormal(square.hi) || !std::isfinite(square.hi + df)) return kNaN;
    const TwoPart total = add(square, TwoPart{df, 0.0});
    const TwoPart x = divide(square, total), y = divide(TwoPart{df, 0.0}, total);
    const TwoPart d2 = two_product(d, d);
    const TwoPart L{0.5 * d2.hi, 0.5 * d2.lo};
    const double b = 0.5 * df;
    return negative ? upper_form(d, b, L, x, y, bound) : lower_form(d, b, L, x, y);
}

}  // namespace zemath::numeric
