// The lower tail of the non-central chi-square law in double arithmetic, as the Poisson
// mixture of central laws:
//     F(x) = sum_j w_j P(a + j, y),  w_j = e^-h h^j / j!,  a = df/2, y = x/2, h = lambda/2.
//
// Method. The mixture is summed as it stands (positive terms, so its relative accuracy is
// that of the terms, for a result of any size; the routine asks for the lower tail only).
// Neighbouring central terms differ by d_j = y^(a+j) e^-y / Gamma(a + j + 1):
//     P(a + j, y) = P(a + j + 1, y) + d_j,
// so the sum is run downwards from an index T, where the central terms grow and only
// positive numbers are added (upwards, P(a + j + 1) = P(a + j) - d_j cancels when y < a).
// The start is one evaluation of the double incomplete gamma (incomplete_gamma.hpp: P and
// x f(x) = (a + T) d_T, within a few ulps) and one Poisson point (discrete_terms.hpp); the
// weights and the d_j follow by their ratios j/h and (a + j)/y.
//
// Truncation, proven from the weights alone. With k = floor(h) the Poisson mode, T is the
// first index above k where the weights' tail beyond it, bounded by w_T r/(1 - r) with
// r = h/(T + 1) (the ratios fall), is below 1e-17 w_k. Since P(a + j, y) falls with j, the
// terms beyond T total at most P(a + T, y) 1e-17 w_k <= 1e-17 w_k P(a + k, y): a 1e-17
// part of the sum. Far in the lower tail an earlier T serves: the ratio of consecutive
// terms is at most rho_i = h y / ((i + 1)(a + i + 1)) (the weights' h/(i + 1) times
// P(b + 1, y)/P(b, y) <= y/(b + 1)), falling with i, so the terms beyond T total at most
// w_0 P(a, y) rho_0 ... rho_T / (1 - rho_T), a part of the sum that the first T with
// rho_0 ... rho_T / (1 - rho_T) <= 1e-17 makes negligible. Below k the run stops once the remaining
// weights, the central terms bounded by 1, sum_{i<j} w_i <= w_j r/(1 - r), r = j/h, fall below
// 1e-17 of the sum so far (at j = 0 at the latest).
//
// Error bound (relative): the starting term's few ulps (the double kernel, measured 6e-15
// at worst; the rounding of the shape a + T corrected, see below), plus the roundings of
// the ratio recurrences over the at most T + 1 terms run: two per step, independent (the
// ratios are divided out each step, never multiplied by a rounded reciprocal, which would
// drift linearly), so about 2 sqrt(T) ulps in practice, at most 4 T ulps. Measured within
// 3e-15 against mpmath (tests/reference/gen_noncentral_chi2_double.py; 3.1e-15 at df up to
// 1e10, gen_noncentral_large.py). Declined: lambda above 2000 (up to 1200 terms), a + T past
// 1000 where y lies outside the double kernel's Temme region (|eta| <= 1/2), and
// where the double kernel declines (a starting term outside the normal range: the far
// lower tail, where the routine sums from j = 0 in extended precision).
//
// Larger non-centralities (noncentral_chi2_lower_stride, 2000 < lambda <= 1e9): the mixture
// has about 18 sqrt(h) terms above 1e-18 of the largest, too many to run one by one (3e5 at
// lambda = 1e9). But its summand g(u) = w(u) P(a + u, y), with w(u) = e^-h h^u / Gamma(u + 1)
// for real u, is an entire function of u that falls like a Gaussian of width sigma >=
// 1/sqrt(1/h + 1/y) (the curvature of -ln w is about 1/h, that of -ln P(s, y) in s at most
// about 1/s <= 1/y where P is not near 1), and vanishes at the negative integers. By Poisson's
// summation formula both sum_j g(j) and H sum_k g(c + k H) equal the integral of g up to
// terms of order e^(-2 pi^2 sigma^2 / H^2): with the stride H a power of two at most
// sigma/4 that is below e^-300, so the mixture is H times the sum over every H-th index. The
// nodes s = c + k H (c a multiple of H) are exact doubles, P(s, y) comes from the double
// incomplete gamma at the exact shape (Temme's expansion for large shapes), where its lower
// side leaves the normal range from its logarithmic form (incomplete_gamma_log_lower: the
// series' prefactor exponent or Temme's e^-D kept apart, ln P in two parts; where neither
// applies at a shape above 7200 or below 1000 the smaller tail is below e^-900 and the term
// is 0 or 1 to double precision; between, the sum declines), and w(u) at u = s - a, carried in two
// parts, from the deviance h - u - u ln(h/u) in two parts and Stirling's error term:
// w(u) = e^-(deviance + mu(u)) / sqrt(2 pi u). The sum runs from the largest term (located
// from Gaussian approximations of both factors) outwards, each side until a falling term is
// below 1e-18 of the sum (the terms are log-concave, so they fall for good past the
// largest): about 20 sigma / H <= 200 evaluations at any lambda. After the sum the stride is
// checked against the summand's width from the lowest node visited on, 1/sqrt(1/u + 1/max(s, y))
// (the weights' curvature psi'(u + 1) is below 1/u, more than the 1/h above where the walk goes
// far below the mean; the central term's at most about 1/s past the central law's mean, 1/y
// near it): it must be at least 2 H (aliasing below e^-78), else the sum runs again with the
// stride that width allows, and declines below 1 (the routine's other paths take over). On
// random scans it fired only where the start lay far below the largest terms (lambda near 2000,
// df large beside it, x far under the mean: the walk reached u near 0, where the terms carry
// nothing), and there the paths below agreed with the strided sum within 5e-16 of mpmath
// (tests/reference/gen_noncentral_window_sums.py). Where the term at the start
// lies below e^-600, every term is scaled by 2^k (its exponent joined to the weight's in two
// parts), k bringing that term near 1, and the sum scaled back once by 2^-k: one rounding,
// into the subnormal range where the law ends there (measured within a unit of the last place
// against mpmath, gen_noncentral_chi2_deep_tails.py, at most 0.06 ms per call where the
// forward sums and Boost's series took up to 27 ms), 0 where even the sum's bound rounds to 0.
// Error bound (relative): the
// terms' few ulps (the central term's; the weight's exponent, up to 40 where it matters, in
// two parts), the truncation's 1e-17; the positive terms are summed as they stand. Measured
// within 1.6e-15 against 32-digit mpmath sums of every term
// (tests/reference/gen_noncentral_chi2_huge_lambda.py), where Boost's series erred up to
// 4e-10 and took up to 50 ms (far tails at df 1e10: one ulp of x moves P by 1e-10 there,
// and x is taken exactly); far in the lower tail at lambda 4e7 to 1e9 within 7.6e-16, the
// subnormal results within a unit of the last place, against 40-digit sums over the window of
// terms that matter (gen_noncentral_window_sums.py).
// References: Ding (1992), "Algorithm AS 275: computing the non-central chi-squared
// distribution function"; Benton and Krishnamoorthy (2003), "Computing discrete mixtures
// of continuous distributions"; DLMF 8.8.5-8.8.6 (the recurrences), 1.8.14 (Poisson's
// summation formula); Trefethen and Weideman (2014), "The exponentially convergent
// trapezoidal rule", SIAM Review 56.
#include "platform/numeric/noncentral_chi2.hpp"

#include <algorithm>
#include <cmath>
#include <initializer_list>
#include <limits>
#include <numbers>

#include "platform/numeric/discrete_terms.hpp"
#include "platform/numeric/incomplete_gamma.hpp"
#include "platform/numeric/noncentral_steps.hpp"

namespace zemath::numeric {

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kTruncation = 1e-17;

}  // namespace

double noncentral_chi2_lower_double(double x, double df, double lambda) {
    const double a = 0.5 * df, y = 0.5 * x, h = 0.5 * lambda;
    if (!(lambda >= 0.0 && lambda <= kNoncentralChi2DoubleLambdaMax) || !(a > 0.0) ||
        !std::isnormal(y) || !std::isfinite(y))
        return kNaN;
    if (h == 0.0) {  // the central law
        const auto tails = incomplete_gamma_double(a, y, 0.0);
        return tails ? tails->lower : kNaN;
    }
    const int k = static_cast<int>(h);  // the Poisson mode
    // T from the weights relative to w_k (see the opening block).
    int top = poisson_top_index(h, kTruncation);
    // Or earlier, by the terms themselves (see the opening block).
    {
        double product = 1.0;
        for (int t = 0; t < top; ++t) {
            const double ratio = h * y / ((t + 1.0) * (a + t + 1.0));
            product *= ratio;
            if (ratio < 1.0 && product / (1.0 - ratio) <= kTruncation) {
                top = t;
                break;
            }
        }
    }
    // The ratios are formed by division: a product with a rounded 1/y would carry the same
    // rounding into every step, a drift linear in the number of steps.
    if (!(a + top <= kGammaTemmeShapeMax)) return kNaN;
    // The shape a + T rounds (by up to half an ulp of a + T, which would move the result
    // by that times |ln y - psi|, 2e-14 at y = 0.01 and a + T = 48); the starting terms are
    // moved back to the exact shape by their logarithmic derivative
    // d ln d_T / da = ln y - psi(a + T + 1) (psi by its asymptotic series, ample for a
    // correction of 1e-14).
    const TwoPart shape = two_sum(a, static_cast<double>(top));
    const auto tails = incomplete_gamma_double(shape.hi, y, 0.0);
    if (!tails) return kNaN;
    double correction = 1.0;
    if (shape.lo != 0.0) {
        const double z = shape.hi + 1.0;
        const double psi = std::log(z) - 0.5 / z - 1.0 / (12.0 * z * z);
        correction = std::exp(shape.lo * (std::log(y) - psi));
    }
    // The side below 1/2 moves with d_T (P = d_T S, Q = d_T R with S and R slowly
    // varying in the shape); the other is 1 minus it.
    double central =
        tails->lower <= 0.5 ? tails->lower * correction : 1.0 - tails->upper * correction;
    double d = tails->x_density / shape.hi * correction;  // d_T
    // The weight at the top by Stirling's form from j = 100 on (noncentral_steps.hpp): the
    // double point's deviance series cost a few microseconds there.
    double w = static_cast<double>(poisson_weight(top, TwoPart{h, 0.0}));
    double sum = w * central;
    for (int j = top - 1; j >= 0; --j) {
        d = d * (a + j + 1) / y;  // d_j
        central = std::fmin(central + d, 1.0);
        w = w * (j + 1) / h;
        sum += w * central;
        if (j < k) {
            const double r = j / h;  // below 1: j < k <= h
            if (w * r / (1.0 - r) <= kTruncation * sum) break;
        }
    }
    return std::fmin(sum, 1.0);
}

}  // namespace zemath::numeric

// Large non-centralities (see noncentral_chi2.hpp): the mixture as a sum with stride H.
namespace zemath::numeric {

namespace {

constexpr double kStrideNegligible = 1e-18;
constexpr int kStrideSteps = 4000;
// Where the double incomplete gamma declines at a shape s outside [kAllShapesUpTo,
// kUnderflowFrom], the smaller tail is not known to be negligible: the sum declines.
constexpr double kAllShapesUpTo = kGammaDoubleShapeMax;
constexpr double kUnderflowFrom = 7200.0;

// Where the largest term lies below e^kScaledBelow, every term is scaled by 2^k, the largest
// brought near 1, and the sum scaled back once (see noncentral_beta.cpp).
constexpr double kScaledBelow = -600.0;
constexpr int kScaleMax = 1100;
constexpr double kSmallestSum = 1e-280;
constexpr TwoPart kLn2Parts{0.6931471805599453, 2.3190468138462996e-17};
// Strides tried after the first, each a power of two smaller (see the check after the sum).
constexpr int kStrideRefinements = 3;

// P(s, y) as value e^log_scale: the double incomplete gamma where its lower side is normal,
// else (below the mean) its logarithmic form; where neither applies at a shape outside
// [kAllShapesUpTo, kUnderflowFrom] the smaller tail is below the range that matters (0 or 1).
// *declined where none of these applies.
double central_term(double s, double y, TwoPart* log_scale, bool* declined) {
    *log_scale = {0.0, 0.0};
    const auto tails = incomplete_gamma_double(s, y, 0.0);
    if (tails && tails->lower >= std::numeric_limits<double>::min()) return tails->lower;
    if (y < s) {
        if (const auto log_lower = incomplete_gamma_log_lower(s, y)) {
            *log_scale = *log_lower;
            return 1.0;
        }
    }
    if (tails) return tails->lower;
    if (s <= kAllShapesUpTo || s >= kUnderflowFrom) return y > s ? 1.0 : 0.0;
    *declined = true;
    return 0.0;
}

// w(u) P(s, y) 2^scale, u = s - a carried in two parts, s exact.
double stride_term(double s, double a, double y, double h, TwoPart log_scale, bool* declined) {
    const TwoPart u = two_sum(s, -a);
    if (!(u.hi > 0.0)) return 0.0;
    TwoPart central_scale{};
    const double central = central_term(s, y, &central_scale, declined);
    if (central == 0.0) return 0.0;
    const TwoPart exponent = add(log_scale, central_scale);
    if (exponent.hi == 0.0) return poisson_weight_at(u, h) * central;
    int binary = 0;
    const double fraction = std::frexp(central, &binary);
    return poisson_weight_at(
               u, h,
               add(exponent, multiply(TwoPart{static_cast<double>(binary), 0.0}, kLn2Parts))) *
           fraction;
}

// ln(w(u) P(s, y)), NaN where it is not finite.
double stride_log_term(double s, double a, double y, double h) {
    const TwoPart u = two_sum(s, -a);
    if (!(u.hi > 0.0)) return kNaN;
    TwoPart central_scale{};
    bool declined = false;
    const double central = central_term(s, y, &central_scale, &declined);
    if (declined || !(central > 0.0)) return kNaN;
    return log_poisson_weight_at(u, h) + (central_scale.hi + std::log(central));
}

}  // namespace

double noncentral_chi2_lower_stride(double x, double df, double lambda) {
    const double a = 0.5 * df, y = 0.5 * x, h = 0.5 * lambda;
    if (!(lambda > kNoncentralChi2DoubleLambdaMax && lambda <= kNoncentralChi2StrideLambdaMax) ||
        !(a > 0.0 && a <= 0.5 * kNoncentralChi2StrideDfMax) || !std::isnormal(y) ||
        !std::isfinite(y))
        return kNaN;
    // The summand's width in the index: the weights' sqrt(h) beside the central terms'
    // sqrt(y) (its logarithm's curvature is at most 1/h + 1/y); the stride a power of two
    // at most a quarter of it, so that every node a + u is an exact double.
    const double width = 1.0 / std::sqrt(1.0 / h + 1.0 / y);
    double stride = std::exp2(std::floor(std::log2(0.25 * width)));
    if (!(stride >= 1.0)) return kNaN;
    // Start near the largest term: with the weights' logarithm about -(u - h)^2 / (2h) and,
    // below the central law's mean (a + u > y), the central term's about
    // -(a + u - y)^2 / (2y), the sum of the two peaks at u* = (2y - a) h / (y + h).
    double peak = h;
    const double guess = (2.0 * y - a) * h / (y + h);
    if (a + guess > y && guess > 0.0) peak = guess;
    const double start = stride * std::nearbyint((a + peak) / stride);
    // Far in the tail the terms are scaled by 2^k, the start's brought near 1.
    const double log_start = stride_log_term(start, a, y, h);
    int scale = 0;
    if (log_start < kScaledBelow)
        scale = static_cast<int>(std::min(-log_start / std::numbers::ln2, double{kScaleMax}));
    const TwoPart log_scale = multiply(TwoPart{static_cast<double>(scale), 0.0}, kLn2Parts);
    // The stride is checked after the sum against the summand's width from the lowest node it
    // visited: there the weights' curvature psi'(u + 1) < 1/u may exceed the 1/h taken above
    // (the largest terms below the mean, where the central factor steepens the summand), beside
    // the central term's at most about 1/max(s, y) (1/s past the central law's mean, about 1/y
    // near it, less below). That width must be at least twice the stride (aliasing below e^-78
    // of the sum); else the sum runs again with the stride it allows (still a power of two, so
    // the start stays on its lattice), and declines below 1.
    const auto width_from = [&](double s) {
        return 1.0 / std::sqrt(1.0 / (s - a) + 1.0 / std::max(s, y));
    };
    double result = kNaN;
    for (int attempt = 0;; ++attempt) {
        double lowest = start;
        bool declined = false;
        const double sum =
            sum_outward(start, stride, a, kStrideSteps, kStrideNegligible, [&](double s) {
                lowest = std::min(lowest, s);
                const double term = stride_term(s, a, y, h, log_scale, &declined);
                return declined ? kNaN : term;
            });
        if (std::isnan(sum) || !std::isfinite(sum)) return kNaN;
        result = stride * sum;
        const double allowed = width_from(std::max(lowest, a + 1.0));
        if (stride <= 0.5 * allowed) break;
        if (attempt == kStrideRefinements) return kNaN;
        stride = std::exp2(std::floor(std::log2(0.25 * allowed)));
        if (!(stride >= 1.0)) return kNaN;
    }
    if (scale == 0) return std::fmin(result, 1.0);
    // Scaled back once; a sum below the normal range here lost terms to underflow: 0 where even
    // its bound rounds to 0, else declined.
    if (result >= kSmallestSum) return std::ldexp(result, -scale);
    if (std::ldexp(kSmallestSum, -scale) == 0.0) return 0.0;
    return kNaN;
}

}  // namespace zemath::numeric
