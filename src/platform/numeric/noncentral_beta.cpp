// The lower tail of the non-central beta law in double arithmetic, as the Poisson mixture
// of central laws:
//     F(x) = sum_j w_j I_x(a + j, b),  w_j = e^-h h^j / j!,  h = lambda/2,
// which is also the non-central F law at x = df1 f / (df1 f + df2), a = df1/2, b = df2/2.
//
// Method (the model is the non-central chi-square's, noncentral_chi2.cpp). The mixture is
// summed as it stands: positive terms, so its relative accuracy is that of the terms for a
// result of any size (the routines ask for the lower tail only). Neighbouring central terms
// differ by d_j = x^(a+j) y^b / ((a + j) B(a + j, b)):
//     I_x(a + j, b) = I_x(a + j + 1, b) + d_j,  d_j = d_(j+1) (a + j + 1) / (x (a + b + j)),
// so the sum is run downwards from an index T, where only positive numbers are added
// (upwards, I(a + j + 1) = I(a + j) - d_j cancels). The start is one evaluation of the
// double incomplete beta (incomplete_beta.hpp: I and the front x^s y^b / B(s, b) at
// s = a + T, within a few ulps) and one Poisson point (discrete_terms.hpp: Stirling's error
// term from j = 100 on, so the weight at the top keeps its digits for large h); the
// weights and the d_j follow by their ratios j/h and (a + j + 1)/(x (a + b + j)), carried in
// the extended type with x in two parts (noncentral_steps.hpp: a factor rounded in double
// repeats its error at every step, a drift of 1.3e-14 over 270 steps was measured); the
// terms, central values and sums are double.
//
// Truncation, proven. With k = floor(h) the Poisson mode, T is the first index above k where
// the weights' tail beyond it, bounded by w_T r/(1 - r), r = h/(T + 1), is below 1e-17 w_k;
// I_x(a + j, b) falls with j, so the terms beyond T total at most 1e-17 w_k I_x(a + k, b),
// a 1e-17 part of the sum. Far in the lower tail an earlier T serves: the ratio of
// consecutive terms is at most rho_i = (h/(i + 1)) x max(1, (a + b + i)/(a + i + 1))
// (I_x(s + 1, b)/I_x(s, b) <= x max(1, (s + b)/(s + 1)), from the series of I_x), falling
// with i, so the terms beyond T total at most w_0 I_x(a, b) rho_0 ... rho_T / (1 - rho_T),
// and the first T with rho_0 ... rho_T / (1 - rho_T) <= 1e-17 will do. Below k the run
// stops once the remaining weights (the central terms bounded by 1), sum_{i<j} w_i <=
// w_j r/(1 - r), r = j/h, fall below 1e-17 of the sum so far.
//
// Error bound (relative): the starting term's few ulps (the double kernel: see
// incomplete_beta.cpp; the rounding of the shape a + T corrected through the logarithmic
// derivative of d_T, ln x + psi(a + b + T) - psi(a + T + 1)), plus the roundings of the
// central values' and sums' additions (the recurrences' own 2^-64 per step add below 1e-16):
// about 2 sqrt(T) ulps in practice, at most 4 T
// ulps. Measured against mpmath within 1.9e-14 (F) and 2.3e-15 (beta) on the rows of
// tests/reference/gen_noncentral_double.py and gen_distributions_other.py.
// Declined: lambda above 1600 (up to 1200 terms), a + T or b past kNoncentralBetaShapeMax
// (1e9: the kernel's large-shape paths, Temme's expansion where both shapes are at least 1000,
// measured within 2.3e-15 (beta) and 1.7e-15 (F) up to there by
// tests/reference/gen_noncentral_large.py), a starting side the kernel does not give, and
// results below 1e-280 (a weight below the normal range could then matter).
//
// Larger non-centralities (noncentral_beta_lower_stride, 1600 < lambda <= 1e9, shapes up to
// 1e5): the mixture has about 18 sqrt(h) terms above 1e-18 of the largest, too many to run one
// by one (4e5 at lambda = 1e9). As for the chi-square (noncentral_chi2.cpp), its summand
// g(u) = w(u) I_x(a + u, b), w(u) = e^-h h^u / Gamma(u + 1) for real u, is analytic in u near
// the real axis where it matters and falls like a Gaussian of width sigma >= 1/sqrt(1/u +
// 1/W^2) over the indices from u on: the curvature of -ln w is psi'(u + 1) < 1/u (about 1/h
// near the mean), that of -ln I_x(s, b) in s at most about 1/W(s)^2, W(s)^2 = s (s + b) / b
// (the central law's spread carried to the shape, and psi'(s) - psi'(s + b) in its lower
// tail), both falling with s, the latter taken no lower than the switch s* = b x / y (the
// central law's mean at x; on the side below it I is near 1 and bends less). By Poisson's
// summation formula both sum_j g(j) and H sum_k g(c + k H) equal the integral of g up to terms
// of order e^(-2 pi^2 sigma^2 / H^2). The stride H is a power of two at most a quarter of the
// width at max(s*, a) with u = h (e^-300), or, where that is below half the one at the guessed
// largest term (shapes so small that s* and a lie near 0, where the bound says nothing of the
// nodes that matter), the latter; after the sum it is checked against the width from the
// lowest node visited, which must be at least 2 H (aliasing below e^-78), else the sum runs
// again with the stride that width allows (declined below 1). The nodes s = c + k H are exact
// doubles; I_x(s, b) comes from the double incomplete beta at the exact shape (its large-shape
// paths; 1 minus the upper side where only that is given, up to 0.95), and where its lower side
// leaves the normal range, from its logarithmic form (incomplete_beta_log_lower: the same
// prefactor and fraction, ln I in two parts); w(u), u = s - a in two parts, from the deviance
// h - u - u ln(h/u) in two parts and Stirling's error term: w(u) = e^-(deviance + mu(u)) /
// sqrt(2 pi u), its exponent joined to ln I in two parts. Below b = kBetaLimitShape (1e-20) the
// central terms are b times a function of s and x alone to double precision (the small-shape
// limit, incomplete_beta.cpp): they are taken at 1e-20 and scaled by b / 1e-20 in the exponent,
// so b down to the smallest subnormal costs nothing, and the width uses 1e-20 for b. The sum
// runs from the largest term outwards, each side until a falling term is below 1e-18 of the sum
// (the terms are log-concave): a few dozen evaluations at any lambda. The start is placed by
// Gaussian approximations of both factors, no lower than x h - 1 (I_x(s + 1, b) / I_x(s, b) =
// 1 - 1/S, S = sum_n (s + b)_n / (s + 1)_n x^n >= 1/y for b >= 1 and within 1/(s y) of it
// below, so the terms rise while u + 1 < x h), and moved to the largest term by Newton steps on
// the summand's logarithm (slope and curvature from neighbouring nodes): with a small b the
// central terms fall like e^(-s y) past the switch, not like a Gaussian, and the first guess
// could lie thousands of widths off. Where the double incomplete beta gives no lower side at a
// node (b <= 1 beside s of millions, x within about 1e-6 of 1, past its switch point), the
// central term comes from the expansion in 1/s (central_large_shape below). Where the largest
// term lies below e^-600, every term is scaled by 2^k (its exponent joined in two parts), k
// bringing the largest near 1, and the sum scaled back once by 2^-k: one rounding, into the
// subnormal range where the law ends there, and 0 where even the sum's bound rounds to 0.
// Error bound (relative): the central terms' few ulps, the weights' (exponent up to about 40
// where it matters, in two parts), the truncation's 1e-17. Measured within 1.1e-15 against
// 40-digit mpmath sums of every term (tests/reference/gen_noncentral_beta_huge_lambda.py,
// lambda 1999 to 1e9, values down to 1e-25); in the small-shape limit within 3e-15
// (gen_noncentral_beta_deep_tails.py: second shapes from 1e-300 to the smallest subnormal, the
// subnormal results within a unit of the last place); on both sides of where the law leaves the
// double range at lambda 2001 and 1e5 (gen_noncentral_far_tails.py); far in the lower tail at
// lambda 4e7 to 1e9 (results from 3e-6 through the subnormal range to 0, shapes from 1e5 down
// to 5e-324) within 9.9e-16, the subnormal results within 1.6e-15 relative or a unit of the
// last place, whichever is larger, against 40-digit sums over the window of terms that matter
// (gen_noncentral_window_sums.py; at most 0.12 ms per call on its rows). At most about 0.2 ms per
// call on random scans at lambda 1e6 to 1e9, shapes from 5e-324 to 1e5, results from 1 down to
// 0 (within 3.4e-14 of the extended paths there, which took up to 8.7 ms), where the extended
// series erred up to 3e-13 and took up to 14 ms. Declined (the routines' other paths take over):
// shapes above 1e5, a walk past 200 nodes a side, a node where no central term is given, a width
// below 2 from the lowest node visited.
// References: Benton and Krishnamoorthy (2003), "Computing discrete mixtures of continuous
// distributions: noncentral chisquare, noncentral t and the distribution of the square of
// the sample multiple correlation coefficient"; Frick (1990), "Algorithm AS R84"; DLMF
// 8.17.20 (the recurrence), 1.8.14 (Poisson's summation formula); Trefethen and Weideman
// (2014), "The exponentially convergent trapezoidal rule", SIAM Review 56.
#include "platform/numeric/noncentral_beta.hpp"

#include <algorithm>
#include <cmath>
#include <initializer_list>
#include <limits>
#include <numbers>

#include "platform/numeric/discrete_terms.hpp"
#include "platform/numeric/incomplete_beta.hpp"
#include "platform/numeric/incomplete_gamma.hpp"
#include "platform/numeric/noncentral_steps.hpp"
#include "platform/numeric/stirling.hpp"

namespace zemath::numeric {

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kTruncation = 1e-17;
constexpr double kSmallestResult = 1e-280;

// psi(z) for z >= 1 to a few per cent: enough for a correction of 1e-14.
double psi_rough(double z) {
    return std::log(z) - 0.5 / z - 1.0 / (12.0 * z * z);
}

}  // namespace

double noncentral_beta_lower_double(double a, double b, double lambda, TwoPart x, TwoPart y) {
    const double h = 0.5 * lambda;
    const double lambda_max = std::max(a, b) > kNoncentralBetaLargeShape
                                  ? kNoncentralBetaLargeLambdaMax
                                  : kNoncentralBetaDoubleLambdaMax;
    if (!(lambda >= 0.0 && lambda <= lambda_max) || !(a > 0.0) ||
        !(b > 0.0 && b <= kNoncentralBetaShapeMax) || !std::isnormal(x.hi) || !std::isnormal(y.hi))
        return kNaN;
    if (h == 0.0) {  // the central law
        const auto tails = incomplete_beta_double(a, b, x, y);
        return tails ? tails->lower : kNaN;
    }
    const int k = static_cast<int>(h);  // the Poisson mode
    // T from the weights relative to w_k (see the opening block).
    int top = poisson_top_index(h, kTruncation);
    // Or earlier, by the terms themselves.
    {
        double product = 1.0;
        for (int t = 0; t < top; ++t) {
            const double ratio = h / (t + 1.0) * x.hi * std::max(1.0, (a + b + t) / (a + t + 1.0));
            product *= ratio;
            if (ratio < 1.0 && product / (1.0 - ratio) <= kTruncation) {
                top = t;
                break;
            }
        }
    }
    if (!(a + top <= kNoncentralBetaShapeMax)) return kNaN;
    const TwoPart shape = two_sum(a, static_cast<double>(top));
    const auto tails = incomplete_beta_double(shape.hi, b, x, y);
    if (!tails) return kNaN;
    // The kernel ran at the rounded shape shape.hi; its terms are moved back to a + T by
    // their logarithmic derivative (the side below 1/2 moves with d_T).
    double correction = 1.0;
    if (shape.lo != 0.0) {
        const double slope = std::log(x.hi) + psi_rough(shape.hi + b) - psi_rough(shape.hi + 1.0);
        correction = 1.0 + shape.lo * slope;
    }
    // A lower side the kernel does not give (1 minus an upper side above 0.9) declines.
    if (std::isnan(tails->lower)) return kNaN;
    double central;
    if (tails->lower <= 0.5)
        central = tails->lower * correction;
    else if (!std::isnan(tails->upper))
        central = 1.0 - tails->upper * correction;
    else
        central = tails->lower;
    Extended d = tails->front / shape.hi * correction;  // d_T
    Extended w = poisson_weight(top, TwoPart{h, 0.0});
    double sum = static_cast<double>(w) * central;
    const Extended xe = widen(x), ae = a, abe = static_cast<Extended>(a) + b, inv_h = 1.0L / h;
    for (int j = top - 1; j >= 0; --j) {
        d *= beta_step_down(xe, abe + j, ae + (j + 1));  // d_j
        central = std::min(central + static_cast<double>(d), 1.0);
        w *= (j + 1) * inv_h;
        const double wd = static_cast<double>(w);
        sum += wd * central;
        if (j < k) {
            const double r = j / h;  // below 1: j < k <= h
            if (wd * r / (1.0 - r) <= kTruncation * sum) break;
        }
    }
    if (!(sum >= kSmallestResult)) return kNaN;
    return std::fmin(sum, 1.0);
}

}  // namespace zemath::numeric

// Large non-centralities (see noncentral_beta.hpp): the mixture as a sum with stride H.
namespace zemath::numeric {

namespace {

constexpr double kStrideNegligible = 1e-18;
// With the stride above sigma/8 the terms above 1e-18 of the largest span at most about 80
// nodes a side; a longer walk (far tails, where the guess of the largest term is off by
// many widths) declines, and the routines' other paths take over.
constexpr int kStrideSteps = 200;
constexpr double kUpperSideMax = 0.95;
// The expansion of I_x(s, b) for s >= kExpansionShapeMin beside b <= 1: its terms.
constexpr double kExpansionShapeMin = 1000.0;
constexpr int kExpansionTerms = 30;
// Newton steps placing the start at the largest term.
constexpr int kStartSteps = 4;
// A sum whose largest term lies below e^kScaledBelow runs with every term scaled by 2^k, the
// largest brought near 1, and is scaled back once (one rounding, into the subnormal range
// where it ends there).
constexpr double kScaledBelow = -600.0;
// Beyond 2^-kScaleMax times the smallest normal sum the law is below half the smallest
// subnormal.
constexpr int kScaleMax = 1100;
// Strides tried after the first, each a power of two smaller (see the verification below).
constexpr int kStrideRefinements = 3;

// A central term value e^log_scale: value normal, 0 or NaN, log_scale in two parts.
struct ScaledCentral {
    double value;
    TwoPart log_scale;
};
constexpr ScaledCentral kNoCentral{kNaN, {0.0, 0.0}};
constexpr TwoPart kLn2Parts{0.6931471805599453, 2.3190468138462996e-17};

// ln(b / kBetaLimitShape) in two parts, for b below it (the central terms' small-shape limit).
TwoPart log_limit_ratio(double b) {
    if (!(b < kBetaLimitShape)) return {0.0, 0.0};
    return add(log_two_part(b, 0.0), negate(log_two_part(kBetaLimitShape, 0.0)));
}

// I_x(s, b) for a large s beside b <= 1 (b >= kBetaLimitShape; the caller scales below), by
// the expansion of DiDonato and Morris (their BGRAT, after Temme): with nu = s + (b - 1)/2 and
// z = -nu ln x,
//     I_x(s, b) = Gamma(s + b) / (Gamma(s) nu^b) (Q(b, z) + r sum_(n>=1) d_n J_n),
// r = e^-z z^b / Gamma(b), the J_n by their recurrence in (b + 2n)(b + 2n + 1) / (4 nu^2) and
// powers of (ln x)^2 / 4, the d_n by the recurrence of the expansion's coefficients. The
// terms fall like (z / (2 nu))^(2n): below 1e-17 of the sum within a few terms at s >= 1000.
// z is formed in the extended type and passed to the double incomplete gamma in two parts
// (Q's relative condition number in z is about z); the prefactor's logarithm,
//     (s - 1/2) ln(1 + b/s) - b + b ln(1 + (b + 1) / (2 nu)) + mu(s + b) - mu(s),
// mu Stirling's error term, to an absolute 1e-16. Measured within 2.6e-14 of mpmath at s from
// 1e3 to 1e7, b from 0.003 to 1, z from 1e-3 to 100. NaN where Q leaves the normal range
// below z = 800 (beyond, the term is below e^-800: 0). It serves where x lies past the double
// kernel's switch point, s y below about 1 + b, so z stays small there.
// Reference: DiDonato and Morris (1992), "Algorithm 708: significant digit computation of the
// incomplete beta function ratios", ACM TOMS 18; Temme (1996), Special Functions, 11.3.3.
double central_large_shape(double s, double b, TwoPart y) {
    const Extended nu = static_cast<Extended>(s) + 0.5L * (static_cast<Extended>(b) - 1.0L);
    const Extended log_x = std::log1p(-(static_cast<Extended>(y.hi) + y.lo));
    const Extended z_ext = -nu * log_x;
    const double z = static_cast<double>(z_ext);
    const double z_low = static_cast<double>(z_ext - z);
    if (!(z > 0.0)) return kNaN;
    const auto gamma = incomplete_gamma_double(b, z, z_low);
    if (!gamma) return z > 800.0 ? 0.0 : kNaN;
    const double upper = gamma->upper;
    const double nu_d = static_cast<double>(nu);
    const double log_prefactor = (s - 0.5) * std::log1p(b / s) - b +
                                 b * std::log1p(0.5 * (b + 1.0) / nu_d) +
                                 (stirling_error(s + b) - stirling_error(s));
    // The series' corrections, relative to r.
    const double bm1 = b - 1.0, v = 0.25 / (nu_d * nu_d);
    const double lx = static_cast<double>(log_x), t2 = 0.25 * lx * lx;
    const double r = gamma->x_density;
    double j = r > 0.0 ? upper / r : 0.0;
    double correction = 0.0, t = 1.0, cn = 1.0;
    double c[kExpansionTerms + 1] = {}, d[kExpansionTerms + 1] = {};
    int n2 = 0;
    for (int n = 1; n <= kExpansionTerms && r > 0.0; ++n) {
        const double bp2n = b + n2;
        j = (bp2n * (bp2n + 1.0) * j + (z + bp2n + 1.0) * t) * v;
        n2 += 2;
        t *= t2;
        cn /= n2 * (n2 + 1.0);
        c[n] = cn;
        double sum = 0.0, coef = b - n;
        for (int i = 1; i < n; ++i, coef += b) sum += coef * c[i] * d[n - i];
        d[n] = bm1 * cn + sum / n;
        const double dj = d[n] * j;
        correction += dj;
        if (std::fabs(dj * r) <= 1e-17 * upper) break;
    }
    return std::exp(log_prefactor) * (upper + r * correction);
}

// I_x(s, b) as value e^log_scale; NaN where no evaluation applies. Below kBetaLimitShape the
// terms are taken at that shape and scaled by b / kBetaLimitShape (the small-shape limit, exact
// to double there: incomplete_beta.cpp). A lower side below the normal range comes as its
// logarithm (incomplete_beta_log_lower), so the far tails' terms keep their digits.
ScaledCentral stride_central(double s, double b, TwoPart x, TwoPart y) {
    const double shape = std::max(b, kBetaLimitShape);
    const TwoPart limit_scale = log_limit_ratio(b);
    const auto tails = incomplete_beta_double(s, shape, x, y, /*one_side=*/true);
    if (tails) {
        if (tails->lower >= std::numeric_limits<double>::min()) return {tails->lower, limit_scale};
        // Where the kernel gives the upper side only (a small b: I falls slowly past the
        // switch), the lower is 1 minus it while that loses at most a factor 20 of its digits.
        if (std::isnan(tails->lower) && tails->upper <= kUpperSideMax)
            return {1.0 - tails->upper, limit_scale};
    }
    // A lower side below the normal range (or 0 there), by its logarithm.
    if (const auto log_lower = incomplete_beta_log_lower(s, b, x, y)) return {1.0, *log_lower};
    // Past the switch point, with a large s beside b <= 1, the expansion in 1/s.
    if (shape <= 1.0 && s >= kExpansionShapeMin && x.hi >= 0.5) {
        const double value = central_large_shape(s, shape, y);
        if (std::isnan(value)) return kNoCentral;
        return {value, limit_scale};
    }
    return kNoCentral;
}

// w(u) I_x(s, b) e^log_scale, u = s - a carried in two parts, s exact. NaN where no central
// term is given.
double stride_term(double s, double a, double b, double h, TwoPart x, TwoPart y,
                   TwoPart log_scale) {
    const TwoPart u = two_sum(s, -a);
    if (!(u.hi > 0.0)) return 0.0;
    const ScaledCentral central = stride_central(s, b, x, y);
    if (std::isnan(central.value)) return kNaN;
    if (central.value == 0.0) return 0.0;
    TwoPart exponent = add(log_scale, central.log_scale);
    if (exponent.hi == 0.0) return poisson_weight_at(u, h) * central.value;
    // The value's binary exponent joins the rest, so that neither factor leaves the range.
    int binary = 0;
    const double fraction = std::frexp(central.value, &binary);
    exponent = add(exponent, multiply(TwoPart{static_cast<double>(binary), 0.0}, kLn2Parts));
    return poisson_weight_at(u, h, exponent) * fraction;
}

// ln(w(u) I_x(s, b)), NaN where it is not finite.
double stride_log_term(double s, double a, double b, double h, TwoPart x, TwoPart y) {
    const TwoPart u = two_sum(s, -a);
    if (!(u.hi > 0.0)) return kNaN;
    const ScaledCentral central = stride_central(s, b, x, y);
    if (!(central.value > 0.0)) return kNaN;
    return log_poisson_weight_at(u, h) + (central.log_scale.hi + std::log(central.value));
}

// The largest power of two at most v (v >= 1), or 0 below 1.
double power_of_two_below(double v) {
    return v >= 1.0 ? std::exp2(std::floor(std::log2(v))) : 0.0;
}

}  // namespace

double noncentral_beta_lower_stride(double a, double b, double lambda, TwoPart x, TwoPart y) {
    const double h = 0.5 * lambda;
    if (!(lambda > kNoncentralBetaDoubleLambdaMax && lambda <= kNoncentralBetaStrideLambdaMax) ||
        !(a > 0.0 && a <= kNoncentralBetaLargeShape) ||
        !(b > 0.0 && b <= kNoncentralBetaLargeShape) || !std::isnormal(x.hi) ||
        !std::isnormal(y.hi))
        return kNaN;
    // Below kBetaLimitShape the central terms are b times a function of s and x alone, so
    // their shape in s is the one at kBetaLimitShape.
    const double shape_b = std::max(b, kBetaLimitShape);
    // The central terms' switch s* = b x / y (the central law's mean at x); the curvature
    // of -ln I_x(s, b) in s is at most about 1/W(s)^2, W(s)^2 = s (s + b) / b, taken at
    // the smallest s past the switch (the upper side, I near 1, bends less); that of -ln w(u)
    // is psi'(u + 1) < 1/u. The summand's width is at least 1/sqrt(1/u + 1/W^2) over the
    // nodes from u on; the stride a power of two at most a quarter of it, so that every node
    // a + u is an exact double.
    const double switch_shape = shape_b * (x.hi / y.hi);
    const auto width_from = [&](double s) {
        const double past = std::max(s, switch_shape);
        return 1.0 / std::sqrt(1.0 / (s - a) + shape_b / (past * (past + shape_b)));
    };
    const double s_ref = std::max(switch_shape, a);
    const double central_width2 = s_ref * (s_ref + shape_b) / shape_b;
    const double width = 1.0 / std::sqrt(1.0 / h + 1.0 / central_width2);
    // Start near the largest term: the weights' logarithm about -(u - h)^2 / (2h) beside,
    // past the switch, the central term's about -(a + u - s*)^2 / (2 W^2). The ratio of
    // consecutive central terms is at least about x (I_x(s + 1, b) / I_x(s, b) = 1 - 1/S,
    // S = sum_n (s + b)_n / (s + 1)_n x^n >= 1/y for b >= 1, within 1/(s y) of it below), so
    // the terms rise while u + 1 < x h: the largest lies at or above x h - 1.
    double peak = h;
    const double guess =
        (1.0 + (switch_shape - a) / central_width2) / (1.0 / h + 1.0 / central_width2);
    if (a + guess > switch_shape && guess > 0.0 && guess < h) peak = guess;
    peak = std::max(peak, x.hi * h - 1.0);
    // The stride: a quarter of the width at the switch; but where that is below half the one
    // from the guessed largest term on (small shapes put the switch near 0, where the bound
    // says nothing of the nodes that matter, and the walk would need hundreds of nodes), the
    // latter. Either is checked against the nodes the sum visits below.
    double stride = power_of_two_below(0.25 * width);
    const double stride_at_peak =
        peak > 1.0 ? power_of_two_below(0.25 * width_from(a + peak)) : 0.0;
    if (stride < 0.5 * stride_at_peak) stride = stride_at_peak;
    if (!(stride >= 1.0)) return kNaN;
    double start = stride * std::nearbyint((a + peak) / stride);
    // The guess assumes the central term's logarithm a parabola about the switch; where it is
    // far from that (a small b: I_x(s, b) then falls like e^(-s y) past the switch, and the
    // guess lands many widths off) the walk would run through underflowed terms. So the start
    // moves by Newton steps on the summand's logarithm, its slope and curvature from the
    // neighbouring nodes, while a step exceeds two nodes (the nodes stay on the same lattice:
    // the sum does not depend on the start).
    double log_start = kNaN;
    for (int i = 0; i < kStartSteps; ++i) {
        const double here = stride_log_term(start, a, b, h, x, y);
        log_start = here;
        const double below = stride_log_term(start - stride, a, b, h, x, y);
        const double above = stride_log_term(start + stride, a, b, h, x, y);
        const double slope = 0.5 * (above - below), curvature = above - 2.0 * here + below;
        if (!(curvature < 0.0)) break;  // NaN included
        const double step = std::nearbyint(-slope / curvature);
        if (!(std::fabs(step) > 2.0)) break;
        const double moved = start + stride * step;
        if (!(moved - stride > a)) break;
        start = moved;
        log_start = kNaN;
    }
    if (std::isnan(log_start)) log_start = stride_log_term(start, a, b, h, x, y);
    // Far in the tail every term is scaled by 2^k, the start's brought near 1 (a sum near the
    // bottom of the double range would otherwise lose its terms to underflow).
    int scale = 0;
    if (log_start < kScaledBelow)
        scale = static_cast<int>(std::min(-log_start / std::numbers::ln2, double{kScaleMax}));
    const TwoPart log_scale = multiply(TwoPart{static_cast<double>(scale), 0.0}, kLn2Parts);
    // The sum, the lowest node it visits, and the check of the stride there: the summand's
    // width from that node on must be at least twice the stride (aliasing below e^-78 of the
    // sum, Poisson's formula for a Gaussian of that width); else the sum runs again with the
    // stride that the width allows (still a power of two, so the start stays on its lattice).
    double result = kNaN;
    for (int attempt = 0; attempt <= kStrideRefinements; ++attempt) {
        double lowest = start;
        result =
            stride * sum_outward(start, stride, a, kStrideSteps, kStrideNegligible, [&](double s) {
                lowest = std::min(lowest, s);
                return stride_term(s, a, b, h, x, y, log_scale);
            });
        if (std::isnan(result)) return kNaN;
        const double allowed = width_from(std::max(lowest, a + 1.0));
        if (stride <= 0.5 * allowed) break;
        stride = power_of_two_below(0.25 * allowed);
        if (!(stride >= 1.0) || attempt == kStrideRefinements) return kNaN;
    }
    if (!std::isfinite(result)) return kNaN;
    if (scale == 0 && result >= kSmallestResult) return std::fmin(result, 1.0);
    // Scaled back once. A sum below the normal range here lost terms to underflow: where even
    // its bound, kSmallestResult 2^-scale, rounds to 0 the law does as well; else declined.
    if (result >= kSmallestResult) return std::ldexp(result, -scale);
    if (std::ldexp(kSmallestResult, -scale) == 0.0) return 0.0;
    return kNaN;
}

}  // namespace zemath::numeric
