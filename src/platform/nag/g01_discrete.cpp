// g01bjc, g01bkc, g01blc: binomial, Poisson and hypergeometric distributions. Each
// returns P(X <= k), P(X > k) and P(X = k) together.
//
// Method: both tails come from a function that computes that tail itself, so the small
// one keeps its relative accuracy however far out k lies:
//   binomial       P(X <= k) = I_{1-p}(n-k, k+1) = ibetac(k+1, n-k, p),
//                  P(X > k)  = ibeta(k+1, n-k, p);
//   Poisson        P(X <= k) = Q(k+1, lambda),  P(X > k) = P(k+1, lambda);
// Paths, by the arguments:
//   binomial, n >= 1000 and n p <= 50 (the Poisson limit): sums of point probabilities,
//                  the tail on k's side of the mean summed, the other 1 minus it where that
//                  is at most 1/2, else summed too (measured within 1e-15 against mpmath up
//                  to n = 2^31 - 1);
//   binomial, n <= 30 and p, 1-p >= 1e-10 (every point probability a normal double): the
//                  same sums, at most n + 1 terms (measured within 1e-15 against mpmath at
//                  every k, where the incomplete beta function below gave 3.5e-15; about a
//                  quarter of its time);
//   binomial, both shapes k+1 and n-k up to 5000, p and 1-p normal: the incomplete beta
//                  function in double (platform/numeric/incomplete_beta: 3e-15 relative
//                  where a shape is below 16, 1e-15 + 3e-18 (a + b) above, plus the
//                  fraction's rounding);
//   Poisson, k+1 up to 1000, or beyond near the mean, lambda normal: the incomplete gamma
//                  functions in double (platform/numeric/incomplete_gamma: 2e-15 relative
//                  for a < 16, 1e-15 + 3e-18 a above, plus 2e-15 for the sum or fraction);
//   elsewhere, or where the double evaluation declines a side that is asked for:
//                  Boost.Math's incomplete beta and gamma functions in extended precision;
//   hypergeometric: the point probabilities are summed from k away from the mode (the
//                  tail on k's side of it); the other tail is 1 minus that sum where it is
//                  at least 1/2 (no digit lost), else summed itself from k across the mode
//                  (k then lies between the median and the mode); every sum stops once
//                  its rest (bounded by log-concavity) no longer changes the total. The
//                  walk restarts from a direct point probability every 256 terms and sums
//                  by blocks of that length, so a walk of 1e5 terms (a standard deviation
//                  of 1e4, populations near 2^31) keeps its accuracy (measured within
//                  6e-15 against mpmath up to populations of 2^31 - 1, near the mean too).
// Boost.Math's incomplete beta and gamma functions are the Didonato-Morris / Temme
// methods. The point probabilities of the binomial and Poisson laws are Loader's deviance
// forms (Loader 2000, platform/numeric/discrete_terms); the hypergeometric one is a ratio of
// binomial ones, relatively accurate up to populations of 2^31 - 1. Accuracy measured
// against mpmath (tests/reference): see the accuracy table in the test data.
//
// Failures: NE_INT_ARG_LT / NE_INT_ARG_GT for integer arguments outside their ranges,
// NE_REAL_ARG_LT / NE_REAL_ARG_GT / NE_REAL_ARG_LE for p or lambda (NaN included).
// Decisions where the routines' own limits are not known: p = 0 and p = 1 are accepted
// (degenerate laws, computed exactly); there is no cap on n, lambda or the variance.
#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>

#include "platform/numeric/boost_policy.hpp"  // first: configures Boost
#include <boost/math/special_functions/beta.hpp>
#include <boost/math/special_functions/gamma.hpp>

#include "platform/nag/g01.hpp"
#include "platform/numeric/discrete_terms.hpp"
#include "platform/numeric/double_double.hpp"
#include "platform/numeric/incomplete_beta.hpp"
#include "platform/numeric/incomplete_gamma.hpp"

namespace zemath::nag {

namespace {

using numeric::BoostPolicy;

constexpr double kSmallestNormal = std::numeric_limits<double>::min();

void store(double lower, double upper, double point, double* plek, double* pgtk, double* peqk) {
    if (plek) *plek = lower;
    if (pgtk) *pgtk = upper;
    if (peqk) *peqk = point;
}

// Point probabilities of one hypergeometric law, walked from a known one: the ratio of
// consecutive probabilities is exact rational arithmetic in the arguments. Each step of the
// walk rounds three or four times, and the errors of a chain of steps add up: over the 1e5
// steps of a walk at populations near 2^31 (a standard deviation of 1e4) they reached
// 1.4e-13 in the sum. The walk therefore restarts from the direct point probability (the
// ratio of binomial deviance forms below, within a few ulps wherever it is taken) every
// kRestart steps, so that no term carries more than a block's roundings: about 16 times
// 3 half-ulps at most, a few 1e-15, and independent from block to block. The terms are
// summed by the same blocks (a block's sum, then the blocks' running total), which keeps
// the rounding of 1e5 additions (3.5e-14 in one running sum) to about 2e-15.
struct HypergeometricWalk {
    long marked, sample, population;
    double p;          // sample / population
    double at_sample;  // the binomial law (population, p) at its mean, the divisor below
    static constexpr int kRestart = 256;

    // C(m, x) C(N-m, l-x) / C(N, l) as a ratio of binomial point probabilities at p = l/N.
    double point(long x) const {
        return numeric::binomial_point(static_cast<int>(x), static_cast<int>(marked), p) *
               numeric::binomial_point(static_cast<int>(sample - x),
                                       static_cast<int>(population - marked), p) /
               at_sample;
    }
    // P(x+1)/P(x) = (m-x)(l-x) / ((x+1)(N-m-l+x+1))
    double up(long x) const {
        return (static_cast<double>(marked - x) * static_cast<double>(sample - x)) /
               (static_cast<double>(x + 1) *
                static_cast<double>(population - marked - sample + x + 1));
    }
    // P(x-1)/P(x) = x (N-m-l+x) / ((m-x+1)(l-x+1))
    double down(long x) const {
        return (static_cast<double>(x) * static_cast<double>(population - marked - sample + x)) /
               (static_cast<double>(marked - x + 1) * static_cast<double>(sample - x + 1));
    }

    // P(x) = first plus the probabilities after it, stepping by `step` (+1 or -1) up to and
    // including `end`, until the rest can no longer change first + the sum. A walk that starts
    // on the far side of the mode first climbs: terms are compared with the running total
    // only after they have begun to fall. Every kRestart steps the term is taken afresh, and
    // the terms are summed by those blocks.
    double beyond(long x, int step, double first, long end) const {
        // The rest below half an ulp of the sum (a bound on it, not a single term).
        constexpr double kNegligible = std::numeric_limits<double>::epsilon() / 2;
        double term = first;
        double total = first;  // first and the finished blocks
        const auto before_end = [&](long at, long limit) {
            return step > 0 ? at < limit : at > limit;
        };
        while (before_end(x, end)) {
            const long block_end =
                step > 0 ? std::min(end, x + kRestart) : std::max(end, x - kRestart);
            double block = 0.0;
            bool done = false;
            while (before_end(x, block_end)) {
                const double ratio = step > 0 ? up(x) : down(x);
                x += step;
                term *= ratio;
                block += term;
                // The law is log-concave: once the terms fall (a ratio below 1), each ratio
                // is below the one before, so the rest is at most term r / (1 - r).
                // (Stopping at the first term that no longer changed the sum left out the
                // thousands just below it: 7e-14 at a standard deviation of 1e4.) A walk
                // from the far side of the mode climbs first, where the ratios exceed 1.
                if (term == 0.0 || (ratio < 1.0 && term * ratio <= kNegligible * (1.0 - ratio) *
                                                                       (total + block))) {
                    done = true;
                    break;
                }
            }
            if (!done && before_end(x, end)) {
                // The block's last term taken afresh, and the walk goes on from it.
                const double fresh = point(x);
                block += fresh - term;
                term = fresh;
            }
            total += block;
            if (done) break;
        }
        return total;
    }

    // P(x) = first plus the walk beyond it to the end of the support.
    double tail(long x, int step, double first) const {
        const long end =
            step > 0 ? std::min(sample, marked) : std::max(0L, sample + marked - population);
        return beyond(x, step, first, end);
    }
};

}  // namespace

namespace {

// The Poisson-limit regime of the binomial law (many trials, mean n p at most 50), where
// the incomplete beta function with b near n loses up to 3e-11: both tails are summed from
// point probabilities instead. P(X = k) is the deviance form (relatively accurate for any
// n); the other terms follow by the exact ratios of consecutive probabilities. The tail on
// k's side of the mean runs from k outwards until a term no longer changes it (or to 0);
// the other tail is 1 minus it, or summed itself where the first exceeds 1/2.
constexpr int kSumMinCount = 1000;
constexpr double kSumMaxMean = 50.0;
// Up to this many trials (both shapes of the incomplete beta below 16) the sums are short
// whatever k: at most n + 1 terms, about a quarter of the incomplete beta's time. Taken where
// p and 1 - p are at least kSumSmallCountMinP, so that every point probability (at least
// min(p, 1 - p)^n, 1e-300) is a normal double: the walks start from P(X = k) on either side
// of the mean.
constexpr int kSumMaxSmallCount = 30;
constexpr double kSumSmallCountMinP = 1e-10;

void binomial_by_sums(int n, double p, int k, double* plek, double* pgtk, double* peqk) {
    // A sum ends once the terms fall (a ratio r below 1; the ratios only decrease outward)
    // and the rest, at most the next term over 1 - r, is below 1e-17 of it (a tenth of an ulp).
    constexpr double kNegligible = 1e-17;
    constexpr int kMaxTerms = 4000;  // the tails above need under 500 at mean 50
    constexpr double kComplementLimit = 0.5;
    const double dn = n, mean = dn * p;
    const double at_k = numeric::binomial_point(k, n, p);
    // The ratios of consecutive probabilities, P(j+1)/P(j) = (n - j) rho / (j + 1) with
    // rho = p/q, and P(j-1)/P(j) = j sigma / (n - j + 1) with sigma = q/p, taken two at a
    // time: both of a pair from one division, R = 1/(b (b + 1)) for the pair's denominators b
    // and b + 1, the first as a (b + 1) rho R, the pair's product as (a rho)((a - 1) rho) R.
    // The walk then carries one product per two terms (the chain of one product and one
    // division per term was most of the sums' time). Each term keeps two or three roundings
    // per step, like the single steps, and rho's (or sigma's) rounding, common to every step:
    // 1 - p split exactly (q = q_hi + q_lo) and the quotient corrected by -q_lo/q_hi, within
    // an ulp.
    const numeric::TwoPart q = numeric::two_sum(1.0, -p);
    const double rho_first = p / q.hi;
    const double rho = rho_first - rho_first * (q.lo / q.hi);
    const double sigma_first = q.hi / p;
    const double sigma = sigma_first + q.lo / p;
    // P(k+1 ..) from P(k), upwards: the terms climb to the mode first where k is below it.
    const auto upper_sum = [&] {
        double upper = 0.0;
        if (k == n) return upper;
        double term = at_k * ((dn - k) * rho / (k + 1.0));  // P(j), j = k + 1
        for (long j = k + 1L, i = 0; i < kMaxTerms; j += 2, i += 2) {
            if (j >= n) {
                upper += term;  // P(n), the last
                break;
            }
            const double a = dn - static_cast<double>(j), b = static_cast<double>(j) + 1.0;
            const double reciprocal = 1.0 / (b * (b + 1.0));
            const double a_rho = a * rho;
            const double ratio = a_rho * (b + 1.0) * reciprocal;                   // r_j
            const double next = term * ratio;                                      // P(j+1)
            const double after = term * (a_rho * ((a - 1.0) * rho) * reciprocal);  // P(j+2)
            upper += term + next;
            // The rest, P(j+2) + ..., is at most P(j+2) / (1 - r_j) once r_j < 1.
            if (after == 0.0 || (ratio < 1.0 && after <= kNegligible * upper * (1.0 - ratio)))
                break;
            term = after;
        }
        return upper;
    };
    // P(.. k) from P(k), downwards.
    const auto lower_sum = [&] {
        double lower = 0.0, term = at_k;  // P(j), j = k
        for (long j = k; j >= 0; j -= 2) {
            const double a = static_cast<double>(j), b = dn - a + 1.0;
            if (j <= 1) {
                lower += j == 1 ? term + term * (sigma / b) : term;  // P(1) and P(0), or P(0)
                break;
            }
            const double reciprocal = 1.0 / (b * (b + 1.0));
            const double a_sigma = a * sigma;
            const double ratio = a_sigma * (b + 1.0) * reciprocal;  // P(j-1) / P(j)
            const double previous = term * ratio;
            const double before = term * (a_sigma * ((a - 1.0) * sigma) * reciprocal);
            lower += term + previous;
            // The rest, P(j-2) + ..., is at most P(j-2) / (1 - ratio) once the ratio is below 1.
            if (before == 0.0 || (ratio < 1.0 && before <= kNegligible * lower * (1.0 - ratio)))
                break;
            term = before;
        }
        return lower;
    };
    // The tail on k's side of the mean is summed; the other is 1 minus it where that tail is
    // at most 1/2 (no digit lost), else summed itself across the mode (k then lies within a
    // step or two of the median and the mode, and P(k) is far inside the double range). A
    // P(X = k) below the double range (p subnormal, or k far above the mean) starts no walk
    // down, where the ratios overflow against p and give 0 * inf: the lower tail is then 1
    // minus the (then zero) upper one.
    double lower = 0.0, upper = 0.0;
    if (k < mean && at_k > 0.0) {
        lower = lower_sum();
        if (pgtk) upper = lower <= kComplementLimit ? 1.0 - lower : upper_sum();
    } else {
        upper = upper_sum();
        if (plek) lower = upper <= kComplementLimit || at_k == 0.0 ? 1.0 - upper : lower_sum();
    }
    store(std::min(lower, 1.0), std::min(upper, 1.0), at_k, plek, pgtk, peqk);
}

// P(X <= k) = 1 - I_p(k+1, n-k) and P(X > k) = I_p(k+1, n-k), 0 <= k < n, by the incomplete
// beta function in double where it takes both shapes and promises its bound for the sides
// asked for; false where it declines (the caller then takes the extended evaluation).
bool binomial_in_double(int n, double p, int k, double* plek, double* pgtk) {
    const double a = static_cast<double>(k) + 1.0;
    const double b = static_cast<double>(n) - static_cast<double>(k);
    if (a > numeric::kBetaDoubleLargeShapeMax || b > numeric::kBetaDoubleLargeShapeMax)
        return false;
    const numeric::TwoPart q = numeric::two_sum(1.0, -p);  // 1 - p exactly, in two parts
    if (p < kSmallestNormal || q.hi < kSmallestNormal) return false;
    const auto tails = numeric::incomplete_beta_double(a, b, {p, 0.0}, q);
    if (!tails || (plek && !std::isfinite(tails->upper)) || (pgtk && !std::isfinite(tails->lower)))
        return false;
    store(tails->upper, tails->lower, 0.0, plek, pgtk, nullptr);
    return true;
}

}  // namespace

void g01bjc(int n, double p, int k, double* plek, double* pgtk, double* peqk, NagError* fail) {
    if (n < 0) return fail->set(NE_INT_ARG_LT);
    if (std::isnan(p)) return fail->set(NE_REAL);
    if (p < 0.0) return fail->set(NE_REAL_ARG_LT);
    if (p > 1.0) return fail->set(NE_REAL_ARG_GT);
    if (k < 0) return fail->set(NE_INT_ARG_LT);
    if (k > n) return fail->set(NE_INT_ARG_GT);
    fail->set(NE_NOERROR);

    // Degenerate laws: all the mass at 0 (p = 0) or at n (p = 1).
    if (p == 0.0) return store(1.0, 0.0, k == 0 ? 1.0 : 0.0, plek, pgtk, peqk);
    if (p == 1.0)
        return store(k == n ? 1.0 : 0.0, k == n ? 0.0 : 1.0, k == n ? 1.0 : 0.0, plek, pgtk, peqk);

    const double dn = n;
    const double dk = k;
    if ((n >= kSumMinCount && dn * p <= kSumMaxMean) ||
        (n <= kSumMaxSmallCount && k < n && p >= kSumSmallCountMinP &&
         1.0 - p >= kSumSmallCountMinP))
        return binomial_by_sums(n, p, k, plek, pgtk, peqk);
    if (k < n && binomial_in_double(n, p, k, plek, pgtk)) {
        if (peqk) *peqk = numeric::binomial_point(k, n, p);
        return;
    }
    // Outputs passed as null are not computed (the exports ask for one tail only).
    // P(X = k) = C(n, k) p^k q^(n-k) = ibeta_derivative(k+1, n-k+1, p) / (n+1).
    const double point =
        peqk ? boost::math::ibeta_derivative(dk + 1.0, dn - dk + 1.0, p, BoostPolicy()) / (dn + 1.0)
             : 0.0;
    if (k == n) return store(1.0, 0.0, point, plek, pgtk, peqk);
    const double lower = plek ? boost::math::ibetac(dk + 1.0, dn - dk, p, BoostPolicy()) : 0.0;
    const double upper = pgtk ? boost::math::ibeta(dk + 1.0, dn - dk, p, BoostPolicy()) : 0.0;
    if (!std::isfinite(lower) || !std::isfinite(upper) || !std::isfinite(point))
        return fail->set(NE_CONV);
    store(lower, upper, point, plek, pgtk, peqk);
}

void g01bkc(double lambda, int k, double* plek, double* pgtk, double* peqk, NagError* fail) {
    if (std::isnan(lambda)) return fail->set(NE_REAL);
    if (lambda <= 0.0) return fail->set(NE_REAL_ARG_LE);
    if (std::isinf(lambda)) return fail->set(NE_REAL_ARG_GT);
    if (k < 0) return fail->set(NE_INT_ARG_LT);
    fail->set(NE_NOERROR);
    const double a = static_cast<double>(k) + 1.0;
    // The double evaluation where it promises its bound (see the opening block).
    const auto tails =
        lambda >= kSmallestNormal ? numeric::incomplete_gamma_double(a, lambda, 0.0) : std::nullopt;
    if (tails && (!plek || std::isfinite(tails->upper)) && (!pgtk || std::isfinite(tails->lower)))
        return store(tails->upper, tails->lower, peqk ? numeric::poisson_point(k, lambda) : 0.0,
                     plek, pgtk, peqk);
    // Outputs passed as null are not computed (the exports ask for one tail only).
    const double lower = plek ? boost::math::gamma_q(a, lambda, BoostPolicy()) : 0.0;
    const double upper = pgtk ? boost::math::gamma_p(a, lambda, BoostPolicy()) : 0.0;
    // e^-lambda lambda^k / k! = d/dx P(k+1, x) at x = lambda.
    const double point = peqk ? boost::math::gamma_p_derivative(a, lambda, BoostPolicy()) : 0.0;
    if (!std::isfinite(lower) || !std::isfinite(upper) || !std::isfinite(point))
        return fail->set(NE_CONV);
    store(lower, upper, point, plek, pgtk, peqk);
}

void g01blc(int n, int l, int m, int k, double* plek, double* pgtk, double* peqk, NagError* fail) {
    if (n < 0) return fail->set(NE_INT_ARG_LT);
    if (l < 0) return fail->set(NE_INT_ARG_LT);
    if (l > n) return fail->set(NE_INT_ARG_GT);
    if (m < 0) return fail->set(NE_INT_ARG_LT);
    if (m > n) return fail->set(NE_INT_ARG_GT);
    const long population = n;
    const long sample = l;
    const long marked = m;
    const long lowest = std::max(0L, sample + marked - population);
    const long highest = std::min(sample, marked);
    if (k < lowest) return fail->set(NE_INT_ARG_LT);
    if (k > highest) return fail->set(NE_INT_ARG_GT);
    // X and n - l - m + X count the same draws from both complements (sample and marked),
    // so the tails agree. Taking the form whose sample + marked stays within the population
    // keeps that sum an int, which the law's range check needs.
    if (sample + marked > population)
        return g01blc(n, n - l, n - m, static_cast<int>(k + population - sample - marked), plek,
                      pgtk, peqk, fail);
    fail->set(NE_NOERROR);

    // Point probabilities C(m, x) C(N-m, l-x) / C(N, l) as a ratio of binomial point
    // probabilities at p = l/N (Loader's deviance form, relatively accurate up to
    // populations of 2^31 - 1): the powers of p cancel exactly whatever p's rounding, each
    // factor keeps its relative accuracy, and the divisor (the binomial law at its mode)
    // cannot underflow. The divisor is the law at its mean, where both deviances vanish:
    // with p rounded, N p = l (1 + d), |d| <= 2^-53, they are below l d^2 < 2e-23, so the
    // Stirling terms alone give it. (Exact products of prime factors cost a walk over every
    // prime up to the population, a millisecond per call at N = 1e5, for no gain in accuracy.)
    const double p = static_cast<double>(sample) / static_cast<double>(population);
    const double at_sample = sample > 0 && sample < population
                                 ? numeric::binomial_point_at_mean(l, n)
                                 : numeric::binomial_point(l, n, p);
    const HypergeometricWalk walk{marked, sample, population, p, at_sample};
    const double point = walk.point(k);
    if (!std::isfinite(point)) return fail->set(NE_CONV);

    const double mode_real =
        std::floor((static_cast<double>(marked) + 1.0) * (static_cast<double>(sample) + 1.0) /
                   (static_cast<double>(population) + 2.0));
    const long mode = std::clamp(static_cast<long>(mode_real), lowest, highest);

    // The tail on k's side of the mode (lower from k downwards, upper from k+1 upwards) is
    // walked from k, where its terms only fall. The other tail, when asked for, is 1 minus
    // it where that tail is at least 1/2 (no digit lost); otherwise it is walked from k too,
    // climbing to the mode and falling beyond. That happens only with k between the median
    // and the mode, a step or two apart, so the climb is short and starts from a point
    // probability of at least 1/2 over the number of terms in that tail (none of them above
    // P(k), all lying between k and the far end on the side away from the mode): nothing
    // underflows, and the terms keep the accuracy of a walk from the mode. P(k+1) is P(k)
    // times the exact ratio, not a second quotient of binomial terms.
    constexpr double kComplementLimit = 0.5;
    double lower = 0.0;
    double upper = 0.0;
    if (k <= mode) {
        lower = walk.tail(k, -1, point);
        if (pgtk && k < highest)
            upper =
                lower <= kComplementLimit ? 1.0 - lower : walk.tail(k + 1, +1, point * walk.up(k));
    } else {
        if (k < highest) upper = walk.tail(k + 1, +1, point * walk.up(k));
        if (plek) lower = upper <= kComplementLimit ? 1.0 - upper : walk.tail(k, -1, point);
    }
    if (!std::isfinite(lower) || !std::isfinite(upper)) return fail->set(NE_CONV);
    store(std::min(lower, 1.0), std::min(upper, 1.0), point, plek, pgtk, peqk);
}

}  // namespace zemath::nag
