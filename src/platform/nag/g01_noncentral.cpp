// g01gbc, g01gcc, g01gdc, g01gec: lower-tail probabilities of the non-central t,
// chi-square, F and beta distributions.
//
// Method: double evaluations in the body of each law (below), and as the extended paths
// Boost.Math's non-central distributions. The chi-square, beta and F laws are
// Poisson mixtures of their central laws (weights e^(-lambda/2) (lambda/2)^j / j!);
// Boost sums them from the Poisson mode outwards with recurrences on the incomplete
// gamma / beta terms (Ding; Benton and Krishnamoorthy), and takes the complement series
// when the lower tail is the larger one, so both tails keep their accuracy. The t law
// uses the series of Benton and Krishnamoorthy (2003) over I_x(j+1/2, v/2) and
// I_x(j+1, v/2) with the same complement switch at moderate parameters (|delta| <= 40,
// df <= 1e5), except for t < 0 < delta: there the lower tail is a small difference of the
// series' terms, and it is computed instead as E[Phi(t S - delta)], S = sqrt(chi2_v / v),
// by quadrature of a positive (log-concave) integrand.
// Two more exceptions: far in the lower tail of the chi-square, beta and F mixtures (where
// Boost's sum from the Poisson mode underflows), and for beta shapes below 1e-8 (where
// Boost's series stops at its cap), the mixture is summed from j = 0 (the beta and F
// mixtures downwards from a proven truncation index with the exact recurrence of the
// central terms, two Boost evaluations in all; otherwise forwards, one per term); and the
// central F (lambda = 0) is I_x(df1/2, df2/2) taken through whichever of
// x = df1 f/(df1 f + df2) and 1 - x = df2/(df1 f + df2) is small, formed directly.
//
// Which path runs where (the double evaluations first; each declines with NaN outside the
// range where it can promise its bound, and the paths above take over):
//   chi-square  platform/numeric/noncentral_chi2: the mixture run downwards from a truncation
//               index proven from the weights, central terms by their exact recurrence from
//               one double incomplete gamma; lambda <= 2000, starting shape df/2 + T <= 1000;
//               within the double kernel's few ulps plus about 2 sqrt(T) ulps of recurrence
//               rounding (measured 3e-15).
//   beta, F     platform/numeric/noncentral_beta: the same for the beta mixture from one double
//               incomplete beta (the F's x and 1 - x formed in two parts); lambda <= 1600,
//               b and a + T <= 1000, result above 1e-280; the kernel's few ulps (up to 7e-14
//               at shapes near 1000) plus about 2 sqrt(T) ulps (measured 1.9e-14).
//   t           platform/numeric/noncentral_t: the series over both parities, each from one
//               double incomplete beta, I form downwards for t > 0, complement form upwards
//               for t < 0; |delta| <= 40, df <= 2000, starting shape <= 1000, and for
//               t < 0 < delta (terms of both signs) only while their magnitudes stay within
//               4 times the result; within the kernel's error times that factor plus about
//               3 sqrt(n) ulps over n terms (measured 3e-14).
//   chi-square, 2000 < lambda <= 1e9: platform/numeric/noncentral_chi2 (stride): the mixture
//               summed over every H-th index, H a power of two at most a quarter of the
//               summand's width (Poisson's summation formula: the error is below e^-300),
//               terms from the double incomplete gamma; at most about 200 terms at any lambda
//               (measured 1.6e-15 and 0.05 ms, where Boost's series erred up to 4e-10 and took
//               up to 50 ms); just above the point where the law leaves the double range, the
//               central terms from the kernel's logarithmic form and the sum scaled by a power
//               of two (at most 0.06 ms, where the paths below took up to 27 ms); the stride
//               checked after the sum against the summand's width at the lowest node visited,
//               and where even a stride of 1 is too wide there (a walk from far below the
//               largest terms down to u near 0, lambda near 2000) the paths below.
//   beta, F, 1600 < lambda <= 1e9: platform/numeric/noncentral_beta (stride): the same
//               strided sum over the beta mixture, terms from the double incomplete beta
//               (shapes up to 1e5); a few dozen terms at any lambda (measured within 1.1e-15
//               and about 0.1 ms, where Boost's series erred up to 3e-13 and took up to 14 ms);
//               with b <= 1 beside shapes above 1000, where the double kernel gives no lower
//               side (x within about 1e-6 of 1), the central terms from their expansion in
//               1/s (measured within 1e-15 of mpmath on the mixture; 0.07 ms where Boost's
//               series took 8 ms); far in the lower tail, through the subnormal range to 0,
//               the central terms from the kernel's logarithmic form and the sum scaled by a
//               power of two, and second shapes below 1e-20 by their small-shape limit (measured
//               at most 0.15 ms on random scans at lambda 1e6 .. 1e9, shapes down to 5e-324,
//               where the paths below took up to 8 ms); where it declines (a summand narrower
//               than two indices, a node where no central term is given) the paths below.
//   far lower tails of the chi-square, beta and F laws, wherever the double mixtures decline:
//               platform/numeric/noncentral_bound, a Chernoff bound from the moment
//               generating function, proves the lower tail below half the smallest subnormal,
//               and 0 is returned at once (the sums took up to 50 ms to find it). The bound
//               lies within a few e-folds of the law, so only results within about e^-740 ..
//               e^-745 (subnormal or 0) are still summed.
//   large shapes (beside the above): the chi-square mixture's starting term by Temme's expansion
//               of the incomplete gamma up to df 1e10 (x/2 within |eta| <= 1/2 of the shape);
//               the beta and F mixtures' by the double incomplete beta's large-shape paths up to
//               shapes 1e9 (F df 2e9), lambda <= 1600; measured within 3.1e-15 against mpmath
//               near the mean (tests/reference/gen_noncentral_large.py). Larger shapes, and
//               lambda above 1600 beside a shape above 1e5 (where Boost's extended mixture loses
//               digits with the shape and its fraction runs without a term cap), are refused.
//   t, |delta| > 40 or df > 1e5 or t >= 1e50, wherever the double series declines, and
//               t <= -1e10 always (df <= 1e10): platform/numeric/noncentral_t_scale, the integral
//               over the scale law on Gauss-Legendre panels marched out from the integrand's mode,
//               each fitted to the factors' local scales and to a fall of at most e^21 (80 to 250
//               evaluations), nodes exact in two parts (the law is ill-conditioned in t at
//               large |delta|); measured within 4.7e-15 against mpmath over |delta| in
//               [41, 1e4] and df in [1, 1e10], non-integer df near 1 included (8 to 15 us per
//               call, at most 0.03 ms; Boost's series erred up to 5e-6 at |delta| = 1e4 and
//               took up to 20 ms). df > 1e10: the
//               expansion in 1/df where its remainder is below 1e-15, refused elsewhere.
//               t >= 1e50: 1 (the upper tail is below 1e-46). t <= -1e10: the scale law's
//               cdf in its power form, |t|^-df times a short series in df w^2 / t^2, integrated
//               over the normal part alone on 7 to 12 panels and a power series near 0
//               (1.5 to 13 us where the series and the integral over the scale law took 10 to
//               75 us and the former halving 30 to 60 us at t = -DBL_MAX); measured within
//               7.3e-15 against mpmath (gen_noncentral_t_large_delta.py --huge-t: the
//               incomplete gamma integral above -1e50, the closed form below).
//   elsewhere   (far tails where a double starting term leaves the normal range, larger
//               parameters, t < 0 < delta below the series' floor) the extended paths above:
//               Boost's long double series, the forward sums from j = 0, the quadrature. The
//               F law's runs Boost's F law in the extended type, so that x = y / (1 + y) and
//               1 - x = 1 / (1 + y), y = df1 f / df2, keep 2^-64 (its condition number in x
//               reaches thousands in the far lower tail: the double x and 1 - x cost up to
//               4e-12 there, and a huge f beside a tiny df2 gave 1 for a lower tail of 5e-321).
// The t law's log-concave quadrature weights its nodes by the log chi-scale density in
// double (platform/numeric/chi_scale).
// Accuracy against mpmath over the test grids (df to 1e6, lambda to 1e4, values down to
// 1e-300; tests/reference/gen_distributions_other.py, gen_noncentral_chi2_double.py,
// gen_noncentral_double.py): 3.2e-14 (t), 2.9e-15 (chi-square), 1.9e-14 (F), 2.3e-15
// (beta) relative.
//
// tol and max_iter: tol is accepted for the call shape (the series are always summed to
// full double precision). max_iter must be at least 1; the series then run under their
// own cap (Boost's, 10^6 terms) rather than max_iter, so a small max_iter never truncates
// a sum - a caller always gets the converged value.
//
// Failures: NE_REAL for NaN, NE_REAL_ARG_LT / NE_REAL_ARG_LE / NE_REAL_ARG_GT for
// parameters outside their ranges, NE_INT_ARG_LT for max_iter < 1, NE_CONV when a series
// does not converge (no value).
#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>

#include "platform/numeric/boost_policy.hpp"  // first: configures Boost
#include <boost/math/distributions/non_central_beta.hpp>
#include <boost/math/distributions/non_central_chi_squared.hpp>
#include <boost/math/distributions/non_central_f.hpp>
#include <boost/math/distributions/non_central_t.hpp>
#include <boost/math/special_functions/beta.hpp>
#include <boost/math/special_functions/gamma.hpp>

#include "platform/nag/g01.hpp"
#include "platform/nag/log_concave_quadrature.hpp"
#include "platform/numeric/chi_scale.hpp"
#include "platform/numeric/noncentral_beta.hpp"
#include "platform/numeric/noncentral_bound.hpp"
#include "platform/numeric/noncentral_chi2.hpp"
#include "platform/numeric/noncentral_t.hpp"
#include "platform/numeric/noncentral_t_scale.hpp"
#include "platform/numeric/normal.hpp"
#include "platform/numeric/stirling.hpp"

namespace zemath::nag {

namespace {

using numeric::BoostPolicy;

double checked(double value, NagError* fail) {
    if (!std::isfinite(value)) {
        fail->set(NE_CONV);
        return 0.0;
    }
    return std::fmin(std::fmax(value, 0.0), 1.0);
}

// Non-centrality: 0 <= lambda <= kMaxNonCentralityLambda. Above it the mixtures are
// refused as out of range: Boost's sums index the Poisson mode lambda / 2 with an int
// (overflow past 4.29e9) and its chi-square sum stalls from about 5e9 (minutes per call);
// 1e9 still takes milliseconds.
constexpr double kMaxNonCentralityLambda = 1e9;
bool bad_lambda(double lambda, NagError* fail) {
    if (std::isnan(lambda)) return fail->set(NE_REAL), true;
    if (lambda < 0.0) return fail->set(NE_REAL_ARG_LT), true;
    if (!(lambda <= kMaxNonCentralityLambda)) return fail->set(NE_REAL_ARG_GT), true;
    return false;
}

// A positive shape or degrees-of-freedom parameter up to `limit`.
bool bad_positive(double value, double limit, NagError* fail) {
    if (std::isnan(value)) return fail->set(NE_REAL), true;
    if (value <= 0.0) return fail->set(NE_REAL_ARG_LE), true;
    if (!(value <= limit)) return fail->set(NE_REAL_ARG_GT), true;
    return false;
}

// Shape limits. The beta mixture's shapes up to 1e9 (F degrees of freedom up to 2e9), where
// the double mixture was measured within 3.1e-15 (tests/reference/gen_noncentral_large.py); the
// chi-square's degrees of freedom up to 1e10, as the central law's. Beyond them Boost's incomplete
// beta runs its continued fraction without a term cap (no answer in minutes at shapes 1e20) and
// both its beta and gamma mixtures lose the value (0.62 for 0.5 at F df 1e20), so they are refused.
constexpr double kMaxMixtureShape = numeric::kNoncentralBetaShapeMax;
constexpr double kMaxChi2Df = 1e10;
constexpr double kMaxFDf = 2.0 * kMaxMixtureShape;
// Above kBoostBetaShapeMax Boost's extended beta mixture loses digits with the shape (its
// prefactor: 2.8e-14 at 1e6, 3.6e-12 at 1e8, 1e-9 at 5e9) and takes up to 36 ms at 1e6: there
// only the double mixture runs (non-centralities up to numeric::kNoncentralBetaLargeLambdaMax),
// and a larger non-centrality beside such a shape is refused.
constexpr double kBoostBetaShapeMax = numeric::kNoncentralBetaLargeShape;
bool bad_beta_mixture(double a, double b, double lambda, NagError* fail) {
    if (std::max(a, b) > kBoostBetaShapeMax && lambda > numeric::kNoncentralBetaLargeLambdaMax)
        return fail->set(NE_REAL_ARG_GT), true;
    return false;
}

using numeric::inverse_mills;
using numeric::normal_lower;

// P(T <= t) for t < 0 < delta, where the series' terms cancel down to a tiny result:
//     P = E[Phi(t S - delta)] = integral_0^inf Phi(t s - delta) f_S(s) ds,
// S = sqrt(chi2_v / v), f_S(s) = v s * gamma_p_derivative(v/2, v s^2/2). In y = ln s the
// integrand has no end-point singularity (f_S ~ s^(v-1) at 0) and stays log-concave:
// L'(y) = v - v s^2 + t s m(c), L''(y) = -2 v s^2 + t s m(c) - (t s)^2 m (m + c),
// c = t s - delta, m the inverse Mills ratio.
double nct_lower_by_quadrature(double t, double df, double delta) {
    const numeric::ChiScaleLogDensity scale_density(df);
    const auto integrand = [=](double y) {
        const double s = std::exp(y);
        return scale_density(y, s) * normal_lower(t * s - delta);
    };
    const auto d1 = [=](double y) {
        const double s = std::exp(y);
        return df - df * s * s + t * s * inverse_mills(t * s - delta);
    };
    const auto d2 = [=](double y) {
        const double s = std::exp(y);
        const double c = t * s - delta;
        const double m = inverse_mills(c);
        return -2.0 * df * s * s + t * s * m - t * t * s * s * std::clamp(m * (m + c), 0.0, 1.0);
    };
    return detail::integrate_log_concave(integrand, d1, d2, -INFINITY, INFINITY, 0.0);
}

// Far in the lower tail of the chi-square and beta mixtures the Poisson weights rise
// more slowly than the central probabilities fall, so the terms shrink from j = 0 on;
// Boost's sum, which starts at the Poisson mode, then underflows to 0. There the mixture
// is summed forwards from j = 0 instead, each central term computed directly (positive
// terms, ratio below 1/2: at most a few dozen of them).
constexpr double kForwardRatio = 0.25;
constexpr int kForwardTerms = 200;
// Beta shapes below kTinyShape: Boost's mixture series stopped at its cap there (status
// 300 after 15 ms at a = 1e-300, where the law is all but the a = 0 limit); the forward
// sum from j = 0 holds for any shape while its kForwardTerms terms cover the Poisson
// weights, lambda / 2 up to kForwardHalfLambda.
constexpr double kTinyShape = 1e-8;
constexpr double kForwardHalfLambda = 60.0;
bool tiny_shapes(double a, double b, double lambda) {
    return std::min(a, b) < kTinyShape && 0.5 * lambda <= kForwardHalfLambda;
}

template <class Central>
double poisson_mixture_forward(double lambda, const Central& central) {
    const double half = 0.5 * lambda;
    const double log_half = std::log(half);
    double sum = 0.0;
    for (int j = 0; j < kForwardTerms; ++j) {
        const double log_weight = -half + (j > 0 ? j * log_half : 0.0) - numeric::log_factorial(j);
        const double term = std::exp(log_weight) * central(j);
        sum += term;
        // The terms fall from here on; one below 1e-17 of the sum (a tenth of an ulp) ends it.
        if (term <= 1e-17 * sum && j > 0) break;
        if (term == 0.0 && sum == 0.0 && j > 4) break;
    }
    return sum;
}

// The same beta mixture, sum_j w_j I_x(a + j, b), with its terms' ratio below R/(j + 1),
// R = (lambda/2) x max(1, (a + b)/(a + 1)) < kForwardRatio: I_x(a + j + 1, b) / I_x(a + j, b)
// = 1 - 1/S_j <= x max(1, (a + b + j)/(a + j + 1)), S_j = sum_n (a+b+j)_n / (a+j+1)_n x^n
// the series of I_x = d_j S_j, d_j = x^(a+j) (1-x)^b / ((a + j) B(a + j, b)). So the terms
// beyond J total at most t_0 R^(J+1) / (J + 1)! 4/3, and J is chosen with that below 1e-19
// t_0 (at most 14 terms for R < 1/4). The sum then runs downwards from J with the exact
// recurrences I_x(a + j, b) = I_x(a + j + 1, b) + d_j, d_j = d_(j+1) (a + j + 1) / (x (a +
// b + j)) (positive additions), in the extended type: two Boost evaluations at a + J
// instead of one per term. NaN where the weight at J underflows (the caller sums forwards
// then).
double beta_mixture_from_top(double lambda, double a, double b, double x) {
    using Real = long double;
    const double ratio = 0.5 * lambda * x * std::max(1.0, (a + b) / (a + 1.0));
    int top = 0;
    for (double bound = ratio * 4.0 / 3.0; bound > 1e-19 && top < kForwardTerms;
         bound *= ratio / (top + 2))
        ++top;
    const Real la = a, lb = b, lx = x, half = 0.5L * lambda;
    const Real shape = la + top;
    Real central = boost::math::ibeta(shape, lb, lx, BoostPolicy());
    Real d = lx * (1 - lx) * boost::math::ibeta_derivative(shape, lb, lx, BoostPolicy()) / shape;
    Real w = std::exp(-half);
    for (int j = 1; j <= top; ++j) w = w * half / j;
    if (!(w > 0) || !std::isfinite(static_cast<double>(central))) return NAN;
    Real sum = w * central;
    for (int j = top - 1; j >= 0; --j) {
        d = d * (la + j + 1) / (lx * (la + lb + j));
        central += d;
        w = w * (j + 1) / half;
        sum += w * central;
    }
    return static_cast<double>(sum);
}

}  // namespace

// Above kQuadratureDfMax the scale law's width 1/sqrt(2 df) nears the rounding of the
// quadrature's breaks, and the law is taken from its expansion in 1/df.
constexpr double kQuadratureDfMax = numeric::kNoncentralTScaleDfMax;
// Up to kModerateDf (with |delta| <= 40) Boost's series and the log-concave quadrature were
// measured within 3.2e-14 (tests/reference/gen_distributions_other.py); above it they lost
// digits (1.1e-11 at df 1e6 .. 1e10), and the integral over the scale law takes over.
constexpr double kModerateDf = 1e5;
// Above kQuadratureDfMax, with S = 1 + e: E[e] = -1/(4 df), E[e^2] = 1/(2 df), so
//     P(T <= t) = E[Phi(t S - delta)] = Phi(c) - phi(c) t (1 + c t) / (4 df) + R,  c = t - delta,
// R led by the fourth moment's t^4 (c^3 - 3c) phi(c) / (32 df^2), relative to Phi(c) ~ phi(c)/|c|
// about q^2 / 32, q = t^2 (1 + c^2) / df; taken where q <= kExpansionQ (R below 1e-15
// relative), refused beyond.
constexpr double kExpansionQ = 1e-7;
bool nct_expansion_applies(double t, double df, double delta) {
    const double c = t - delta;
    return t * t * (1.0 + c * c) <= kExpansionQ * df;
}
double nct_lower_by_expansion(double t, double df, double delta) {
    const numeric::TwoPart c = numeric::two_sum(t, -delta);  // c's rounding matters in the tails
    const double density = numeric::normal_density(c.hi);
    return normal_lower(c.hi, c.lo) - density * t * (1.0 + c.hi * t) / (4.0 * df);
}

double g01gbc(double t, double df, double delta, double /*tol*/, int max_iter, NagError* fail) {
    if (std::isnan(t) || std::isnan(df) || std::isnan(delta)) return fail->set(NE_REAL), 0.0;
    if (df < 1.0) return fail->set(NE_REAL_ARG_LT), 0.0;
    // The series' length grows with delta (its Poisson weights centre on delta^2 / 2):
    // past kMaxNonCentrality a call could run for minutes (delta = DBL_MAX takes 49 s to
    // fail), so larger |delta| is refused as out of range.
    constexpr double kMaxNonCentrality = 1e4;
    if (std::isinf(df) || !(std::fabs(delta) <= kMaxNonCentrality))
        return fail->set(NE_REAL_ARG_GT), 0.0;
    if (df > kQuadratureDfMax && !(std::isinf(t) || nct_expansion_applies(t, df, delta)))
        return fail->set(NE_REAL_ARG_GT), 0.0;
    if (max_iter < 1) return fail->set(NE_INT_ARG_LT), 0.0;
    fail->set(NE_NOERROR);
    if (t == -INFINITY) return 0.0;
    if (t == INFINITY) return 1.0;
    if (df > kQuadratureDfMax) return checked(nct_lower_by_expansion(t, df, delta), fail);
    // Moderate parameters keep their established paths beside the double series (the
    // log-concave quadrature for t < 0 < delta, Boost's series elsewhere: a few
    // microseconds); large |delta| or df take the integral over the scale law (Boost's series
    // erred up to 5e-6 at |delta| = 1e4 and took up to 20 ms).
    // (|t| >= 1e50 always takes the scale law's closed form: Boost's series gave 0 for
    // 3.2e-201 at t = -1e200, df = 1, delta = 0.)
    // (t <= -1e10 takes the scale law's power form: the paths below took 10 to 75 us there.)
    const bool moderate = std::fabs(delta) <= numeric::kNoncentralTDoubleDeltaMax &&
                          df <= kModerateDf && std::fabs(t) < numeric::kNoncentralTHugeT &&
                          t > -numeric::kNoncentralTPowerFormT;
    // For t < 0 < delta the series' terms cancel down to the result: its relative error
    // is about eps / P, fine above 1/100 and worthless far below. There
    // P = E[Phi(t S - delta)] <= Phi(-delta), so where that bound is already below the
    // floor the series is not summed at all.
    constexpr double kSeriesFloor = 0.01;
    const auto quadrature = [&] {
        return checked(moderate ? nct_lower_by_quadrature(t, df, delta)
                                : numeric::noncentral_t_lower_by_scale(t, df, delta),
                       fail);
    };
    if (t <= -numeric::kNoncentralTPowerFormT ||
        (t < 0.0 && delta > 0.0 && normal_lower(-delta) < kSeriesFloor))
        return quadrature();
    // The double evaluation where it answers. Where its series cancels, its value still
    // bounds P: below the floor the quadrature follows at once.
    double bound = INFINITY;
    const double fast = numeric::noncentral_t_lower_double(t, df, delta, &bound);
    if (!std::isnan(fast)) return checked(fast, fail);
    if (t < 0.0 && delta > 0.0 && bound < kSeriesFloor) return quadrature();
    if (!moderate) return checked(numeric::noncentral_t_lower_by_scale(t, df, delta), fail);
    const boost::math::non_central_t_distribution<double, BoostPolicy> law(df, delta);
    const double series = boost::math::cdf(law, t);
    if (t < 0.0 && delta > 0.0 && !(series >= kSeriesFloor)) return quadrature();
    return checked(series, fail);
}

double g01gcc(double x, double df, double lambda, double /*tol*/, int max_iter, NagError* fail) {
    if (std::isnan(x)) return fail->set(NE_REAL), 0.0;
    if (x < 0.0) return fail->set(NE_REAL_ARG_LT), 0.0;
    if (bad_positive(df, kMaxChi2Df, fail) || bad_lambda(lambda, fail)) return 0.0;
    if (max_iter < 1) return fail->set(NE_INT_ARG_LT), 0.0;
    fail->set(NE_NOERROR);
    if (x == INFINITY) return 1.0;
    if (x == 0.0) return 0.0;
    // Below the normal range x/2 loses digits or vanishes: there the mixture is its first
    // term e^(-lambda/2) (x/2)^(df/2) / Gamma(df/2 + 1), formed in logarithms, whenever the
    // next terms (relative size about lambda x / 4) and the incomplete gamma's own
    // correction (about x) are below the rounding.
    constexpr double kSmallestNormalX = 4.0 * std::numeric_limits<double>::min();
    if (x < kSmallestNormalX && 0.25 * lambda * x < 1e-17) {
        const double a = 0.5 * df;
        const double log_value = -0.5 * lambda + a * (std::log(x) - std::numbers::ln2) -
                                 boost::math::lgamma(a + 1.0, BoostPolicy());
        return checked(std::exp(log_value), fail);
    }
    // The double evaluation where it answers (the body of moderate non-centralities).
    const double fast = numeric::noncentral_chi2_lower_double(x, df, lambda);
    if (!std::isnan(fast)) return checked(fast, fail);
    // Where a Chernoff bound proves the lower tail below half the smallest subnormal, it
    // is 0 (the sums below took up to 50 ms to find that).
    if (numeric::lower_tail_underflows(numeric::noncentral_chi2_lower_log_bound(x, df, lambda)))
        return 0.0;
    // Larger non-centralities: the mixture summed with a stride.
    const double stride = numeric::noncentral_chi2_lower_stride(x, df, lambda);
    if (!std::isnan(stride)) return checked(stride, fail);
    // Ratio of consecutive mixture terms ~ (lambda/2) (x/2) / ((j+1)(df/2+j+1)).
    if (lambda > 0.0 && 0.25 * lambda * x < kForwardRatio * (0.5 * df + 1.0)) {
        const double y = 0.5 * x, a = 0.5 * df;
        return checked(
            poisson_mixture_forward(
                lambda, [=](int j) { return boost::math::gamma_p(a + j, y, BoostPolicy()); }),
            fail);
    }
    const boost::math::non_central_chi_squared_distribution<double, BoostPolicy> law(df, lambda);
    return checked(boost::math::cdf(law, x), fail);
}

double g01gdc(double f, double df1, double df2, double lambda, double /*tol*/, int max_iter,
              NagError* fail) {
    if (std::isnan(f)) return fail->set(NE_REAL), 0.0;
    if (f < 0.0) return fail->set(NE_REAL_ARG_LT), 0.0;
    if (bad_positive(df1, kMaxFDf, fail) || bad_positive(df2, kMaxFDf, fail) ||
        bad_lambda(lambda, fail) || bad_beta_mixture(0.5 * df1, 0.5 * df2, lambda, fail))
        return 0.0;
    if (max_iter < 1) return fail->set(NE_INT_ARG_LT), 0.0;
    fail->set(NE_NOERROR);
    if (f == INFINITY) return 1.0;
    if (f == 0.0) return 0.0;
    // The F law is the beta mixture at x = df1 f / (df1 f + df2), a = df1/2, b = df2/2.
    const double a = 0.5 * df1, b = 0.5 * df2;
    {
        // The double evaluation where it answers, x and 1 - x = df2 / (df1 f + df2) formed
        // in two parts (the tails magnify their rounding).
        using numeric::TwoPart;
        const TwoPart product = numeric::two_product(df1, f);
        const TwoPart total = numeric::add(product, TwoPart{df2, 0.0});
        const double fast =
            numeric::noncentral_beta_lower_double(a, b, lambda, numeric::divide(product, total),
                                                  numeric::divide(TwoPart{df2, 0.0}, total));
        if (!std::isnan(fast)) return checked(fast, fail);
        // A lower tail proven below half the smallest subnormal (Chernoff) is 0.
        const numeric::Extended ratio = static_cast<numeric::Extended>(df1) * f / df2;
        if (numeric::lower_tail_underflows(
                numeric::noncentral_beta_lower_log_bound(a, b, lambda, ratio)))
            return 0.0;
        // Larger non-centralities: the mixture summed with a stride.
        const double stride =
            numeric::noncentral_beta_lower_stride(a, b, lambda, numeric::divide(product, total),
                                                  numeric::divide(TwoPart{df2, 0.0}, total));
        if (!std::isnan(stride)) return checked(stride, fail);
    }
    if (lambda == 0.0) {
        // Central F where the double kernel declines (far tails, shapes beyond its reach):
        // I_x(df1/2, df2/2), x = df1 f / (df1 f + df2); with x above 1/2 as
        // 1 - I_y(df2/2, df1/2), y = df2 / (df1 f + df2) formed directly, so that a large f
        // keeps the digits of 1 - x.
        const double x = df1 * f / (df1 * f + df2);
        if (x <= 0.5)
            return checked(boost::math::ibeta(0.5 * df1, 0.5 * df2, x, BoostPolicy()), fail);
        const double y = df2 / (df1 * f + df2);
        return checked(boost::math::ibetac(0.5 * df2, 0.5 * df1, y, BoostPolicy()), fail);
    }
    // Elsewhere far in its lower tail, summed forwards from j = 0 as the beta law is.
    const double x = df1 * f / (df1 * f + df2);
    if (x <= 0.5 && 0.5 * lambda * x * std::max(1.0, (a + b) / (a + 1.0)) < kForwardRatio) {
        const double from_top = beta_mixture_from_top(lambda, a, b, x);
        if (!std::isnan(from_top)) return checked(from_top, fail);
        return checked(
            poisson_mixture_forward(
                lambda, [=](int j) { return boost::math::ibeta(a + j, b, x, BoostPolicy()); }),
            fail);
    }
    if (tiny_shapes(a, b, lambda)) {
        // Above x = 1/2 through 1 - x = df2 / (df1 f + df2) formed directly: with tiny
        // shapes the law sits within rounding of 0 and 1, where x itself rounds to 1.
        const double y = df2 / (df1 * f + df2);
        return checked(poisson_mixture_forward(
                           lambda,
                           [=](int j) {
                               return x <= 0.5 ? boost::math::ibeta(a + j, b, x, BoostPolicy())
                                               : boost::math::ibetac(b, a + j, y, BoostPolicy());
                           }),
                       fail);
    }
    // Elsewhere Boost's F law in the extended type throughout: its x = y / (1 + y) and
    // 1 - x = 1 / (1 + y), y = df1 f / df2, are then formed to 2^-64 (the law's condition
    // number in x reaches thousands in the far lower tail, where the double ones cost up to
    // 1.5e-13).
    const boost::math::non_central_f_distribution<numeric::Extended, BoostPolicy> law(df1, df2,
                                                                                      lambda);
    return checked(static_cast<double>(boost::math::cdf(law, static_cast<numeric::Extended>(f))),
                   fail);
}

double g01gec(double x, double a, double b, double lambda, double /*tol*/, int max_iter,
              NagError* fail) {
    if (std::isnan(x)) return fail->set(NE_REAL), 0.0;
    if (x < 0.0) return fail->set(NE_REAL_ARG_LT), 0.0;
    if (x > 1.0) return fail->set(NE_REAL_ARG_GT), 0.0;
    if (bad_positive(a, kMaxMixtureShape, fail) || bad_positive(b, kMaxMixtureShape, fail) ||
        bad_lambda(lambda, fail) || bad_beta_mixture(a, b, lambda, fail))
        return 0.0;
    if (max_iter < 1) return fail->set(NE_INT_ARG_LT), 0.0;
    fail->set(NE_NOERROR);
    if (x == 0.0) return 0.0;
    if (x == 1.0) return 1.0;
    // The double evaluation where it answers (1 - x formed exactly in two parts).
    const double fast =
        numeric::noncentral_beta_lower_double(a, b, lambda, {x, 0.0}, numeric::two_sum(1.0, -x));
    if (!std::isnan(fast)) return checked(fast, fail);
    // A lower tail proven below half the smallest subnormal (Chernoff) is 0.
    const numeric::TwoPart y = numeric::two_sum(1.0, -x);
    const numeric::Extended ratio = x / (static_cast<numeric::Extended>(y.hi) + y.lo);
    if (numeric::lower_tail_underflows(
            numeric::noncentral_beta_lower_log_bound(a, b, lambda, ratio)))
        return 0.0;
    // Larger non-centralities: the mixture summed with a stride.
    const double stride = numeric::noncentral_beta_lower_stride(a, b, lambda, {x, 0.0}, y);
    if (!std::isnan(stride)) return checked(stride, fail);
    // Ratio of consecutive mixture terms ~ (lambda/2) x (a+b+j)/((j+1)(a+j+1)).
    if (lambda > 0.0 && 0.5 * lambda * x * std::max(1.0, (a + b) / (a + 1.0)) < kForwardRatio &&
        !tiny_shapes(a, b, lambda)) {
        const double from_top = beta_mixture_from_top(lambda, a, b, x);
        if (!std::isnan(from_top)) return checked(from_top, fail);
    }
    if (lambda > 0.0 && (0.5 * lambda * x * std::max(1.0, (a + b) / (a + 1.0)) < kForwardRatio ||
                         tiny_shapes(a, b, lambda))) {
        return checked(
            poisson_mixture_forward(
                lambda, [=](int j) { return boost::math::ibeta(a + j, b, x, BoostPolicy()); }),
            fail);
    }
    const boost::math::non_central_beta_distribution<double, BoostPolicy> law(a, b, lambda);
    return checked(boost::math::cdf(law, x), fail);
}

}  // namespace zemath::nag
