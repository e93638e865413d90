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
// References: Benton and Krishnamoorthy (2003), "Computing discrete mixtures of continuous
// distributions: noncentral chisquare, noncentral t and the distribution of the square of
// the sample multiple correlation coefficient"; Frick (1990), "Algorithm AS R84"; DLMF
// 8.17.20 (the recurrence).
#include "platform/numeric/noncentral_beta.hpp"

#include <algorithm>
#include <cmath>
#include <limits>

#include "platform/numeric/discrete_terms.hpp"
#include "platform/numeric/incomplete_beta.hpp"
#include "platform/numeric/noncentral_steps.hpp"

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
