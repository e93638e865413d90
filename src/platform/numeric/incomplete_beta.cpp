// The regularised incomplete beta function in double arithmetic: shapes up to 5e9 (F up to df
// = 1e10, binomial counts up to 2^31), up to 1e6 beside a shape of exactly 1/2 (Student's t up
// to df = 2e6).
//
// Which path runs where (the tests are on the shapes and one division-only bound):
//   both shapes >= 16, summed deviances f >= lambda^2/2 (1/max(m, a) + 1/max(n y, b)) above
//       780 (m = n x, n = a + b, lambda = m - a): the far side is below e^(31 - f) (the
//       deviance form of the prefactor and the fraction's bound a + b + 2), so 0, the other
//       side 1, both exact as rounded;
//   a shape 1/2 beside one l >= 500 (Student's t from df = 1000, F with one degree of
//       freedom): the side of the large shape, I_v(l, 1/2), by DiDonato and Morris's BGRAT
//       expansion at b = 1/2 (erfc of the root of z = -(l - 1/4) ln v in two parts plus terms
//       with constant coefficients: 2 to 13 of them), the other side as 1 minus it where that
//       is at least 0.1; within about 1e-15 (measured against mpmath:
//       gen_incomplete_beta_large.py); student_t_beyond forms ln v = -ln(1 + t^2/df) from t
//       itself. Elsewhere (|t| below about 0.13) the fraction below. Truncation, by a ratio
//       argument: the terms are summed until one is below 2^-56 of the sum; after that each is
//       at most rho = 0.05 of the one before, so the rest is below rho / (1 - rho) < 0.053 of
//       that last term, under 6e-19 relative. rho is computed, not proven: the terms formed in
//       50 digits out to n = 60 over l 500 .. 1e6 and z 1e-6 .. 700
//       (gen_incomplete_beta_temme_switch.py, incomplete_beta_temme_terms.txt: rho 0.049, at
//       most 13 terms, what is left out 1.4e-19);
//   both shapes at least 250 and f w0^2 <= 0.06 (f, w0 below): Temme's uniform expansion
//       (DiDonato and Morris's BASYM) on the side below the mean, the other as 1 minus it (at
//       least about 0.48); the summed deviances f in two parts by Loader's series with its rest
//       in two parts too where it exceeds 1/3 (about 1e-18 f + 1e-16 absolute; the log form is
//       3e-18 times the shape), erfc at the two-part root of f, e^-f within an ulp: the
//       expansion's terms fall by about w0 = 1/sqrt(min(a, b) (1 + h)), h = min/max, summed
//       until a pair is below 2^-56 of the sum (at most 20 terms); bound: erfc's and exp's few
//       ulps, Stirling's 1e-16 and the sum's rounding, about 2e-15 relative (measured against
//       mpmath with the exact f: within 2e-15 from shapes 250 to 2e9 out to the underflow).
//       Truncation, by a ratio argument: after the stop each pair of terms is at most rho =
//       0.44 of the pair before wherever f w0^2 <= 0.06, so what is left out is below rho / (1
//       - rho) < 0.8 of the last pair, itself below 2^-56 of the sum: under 1.1e-17 relative.
//       The switch f w0^2 <= 0.06 is where the stop comes within the 20 terms, with a margin:
//       the terms formed in 50 digits out to n = 40 over h 1e-4 .. 1 (12 values, both orders of
//       the shapes), the smaller shape 250 .. 1e9 (9 values, f <= 700) and f w0^2 1e-6 .. 0.2
//       (gen_incomplete_beta_temme_switch.py, incomplete_beta_temme_terms.txt) stop by the
//       20th term at every point up to 0.08 (rho 0.434 up to 0.06, 0.555 at 0.08; what is left
//       out at most 1.2e-18 up to 0.06), while at 0.09 (the switch used before) 2 of 136 points
//       need more (they declined to the fraction) and rho reaches 0.62. What remains measured:
//       rho between the grid points and beyond n = 40 (the expansion is asymptotic: its
//       remainder past the terms formed is not bounded here), and the rounding bound above
//       (against mpmath). Rows on both sides of the switch (f w0^2 0.055 and 0.065, and 0.02,
//       0.085, 0.095, 0.15; the smaller shape 249 and 250; within 1.0e-15):
//       incomplete_beta_temme_switch_ref.inc.
//       The far tails of the smaller of these shapes go to the fraction, which is short there
//       (a few tens of terms), as does f above 700;
//   both shapes <= 5000 otherwise (or a shape 1/2 where the expansion above does not apply):
//       the continued fraction with the prefactors below (the deviance of shapes from 250 by
//       the two-part series of the next case);
//   one shape above 5000 otherwise: the continued fraction with the deviance of
//       the large shape by the same two-part series (so the 3e-18 (a + b) term below is gone:
//       1e-15 plus the fraction's rounding), at most 400 terms (about 10 sqrt(min(a, b)) are
//       needed), else declined.
// Measured against mpmath at shapes 5e3 .. 5e9 (gen_distributions_beta_large_shapes.py, both
// tails down to 1e-300): beta within 7.2e-15 (the fraction beside a small shape; Temme's
// expansion 1.1e-15), F 6.4e-15, binomial 1.7e-15; the kernel itself across the switch points
// (gen_incomplete_beta_large.py) within 2.6e-15, Student's far side from t within 1.8e-15.
//
// The classical path (shapes up to 5000):
//
// Method. I_x(a, b) = g R(a, b, x), g = x^a y^b / B(a, b), y = 1 - x, with R the continued
// fraction of DiDonato and Morris (BFRAC, an equivalent of DLMF 8.17.22 without its
// cancelling denominators), which converges quickly for x < (a + 1)/(a + b + 2); beyond, the
// same for I_y(b, a). The side computed directly is exact to the bound below; the other is 1
// minus it where the direct side is at most 0.9. Above 0.9 (one shape small beside a large one
// puts a side there just below the switch point: Student's t near |t| = 1.7 at df in the
// hundreds) the other side is its own fraction a little past its switch point, taken only
// where the argument is at least half the direct side's switch point (else NaN: the caller
// falls back); measured against mpmath there: within 3.1e-14 on 1500 random points with the
// large shape up to 5000, 1.2e-14 on the rows of gen_distributions_beta_sides.py. The
// fraction's first denominator 1 - (a + b) x / (a + 1) = (1 + a y - b x)/(a + 1) cancels near
// the switch point, so a y - b x is formed from exact products. The prefactor is where
// rounding is magnified (its logarithm reaches -700 in the far tails, where an absolute error
// of the exponent is the relative error of the result), so its exponent is formed in two
// parts, with x and y in two parts (their rounding in the caller's transformed arguments,
// t^2/(df + t^2) and the like, is what the tails magnify most):
//   a = 1/2, b >= 16: ln(b x)/2 + b ln y + S(b) - ln(pi)/2 (or the same with the roles
//                     exchanged), S(b) = ln Gamma(b + 1/2) - ln Gamma(b) - ln(b)/2 by its
//                     asymptotic series in 1/b (7 terms, 5e-19); no large terms cancel, and
//                     log_two_part's absolute error near y = 1 falls with |ln y|^3, so b ln y
//                     stays within 6e-16 wherever it is above -745: within about 1e-15 for
//                     any b, which is why this case takes b up to 1e6;
//   a, b < 16:        a ln x + b ln y, the logarithms in two parts (double_double.hpp), and
//                     1/B(a, b) = Gamma(a + b) / (Gamma(a) Gamma(b)) outside the exponent,
//                     each Gamma by Cody's rational form on [1, 2] and the recurrence (its
//                     factors rounded once each; the rounding of a + b taken into the
//                     fraction part of the sum): within about 3e-15 (shapes below 1e-30 keep
//                     Stirling's form shifted up to [16, 17) as in gamma_moderate);
//   a, b >= 16:       -(D(a, n x) + D(b, n y)) + ln sqrt(a b / (2 pi n)) - mu(a) - mu(b)
//                     + mu(n), n = a + b, D(k, m) = k ln(k/m) + m - k the deviance
//                     (gamma_deviance, incomplete_gamma.hpp: two parts), mu Stirling's
//                     error term (3e-17);
//   a < 16 <= b:      a ln(n x) - n x - D(b, n y) - log1p(a/b)/2 - mu(b) + mu(n), and
//                     1/Gamma(a) outside (the same with the roles exchanged), which keeps
//                     the large lnGamma(b) and lnGamma(n) out: they would cost ulps of 1e4.
// Where the prefactor's exponent is below -700 (or g below the normal range), the bound
// F <= a + b + 2 on the fraction (a series of positive terms, 8.17.8) decides: a direct side
// below half the smallest subnormal is returned as 0 and the other as 1, both correctly
// rounded; a direct side below 2^-54 by that bound leaves the other side 1 as rounded, which
// is given where the caller takes one side only (the direct side NaN); otherwise the caller
// falls back.
// The logarithmic form (incomplete_beta_log_lower: sums of terms that reach below the double
// range, the strided non-central mixtures far in their lower tails) takes the same prefactor
// exponent and the same fraction R and joins them as ln I = exponent + ln(scale R) (log_two_part,
// 3e-18 absolute): nothing underflows, and the bound below holds as an absolute one on ln I
// (measured within 1.3e-15 against mpmath down to ln I = -2e5: gen_incomplete_beta_log.py). One
// exception: a shape k above 6700 whose deviance lies beyond |v| = 1/4 (deviance_large) takes
// the log form, 3e-18 k absolute; ln I is below -737 there. Only the lower side below the switch
// point is given (the side the fraction gives directly).
// The small-shape limit of that form: as b -> 0, 1/B(a, b) = b Gamma(a + b) / (Gamma(a)
// Gamma(1 + b)) = b (1 + b (psi(a) + gamma) + O(b^2)) and (1 - t)^(b - 1) lies between
// (1 - t)^-1 y^b and (1 - t)^-1 on [0, x], so
//     I_x(a, b) = b B_x(a, 0) (1 + delta),  B_x(a, 0) = int_0^x t^(a-1) / (1 - t) dt
//               = sum_n x^(a+n) / (a + n),  |delta| <= b (psi(a) + gamma + |ln y|) + O(b^2).
// So I_x(a, b) / b depends on b through delta alone: below kBetaLimitShape = 1e-20, with
// psi(a) < 23 (a <= 5e9) and |ln y| < 709, |delta| < 7.4e-18, and I_x(a, b) = (b / 1e-20)
// I_x(a, 1e-20) to double precision. The logarithmic form takes it so (ln b - ln 1e-20 joined
// in two parts) for b down to the smallest subnormal, where the prefactor's 1/Gamma(b), about b
// outside the exponent, would leave the normal range (checked against mpmath on both sides of
// 1e-20 and at b = 5e-324).
// Error bound, relative, on the direct side: about 3e-15 where a shape is below 16 (the
// Gamma values), 1e-15 + 3e-18 (a + b) otherwise, plus the fraction's rounding (a few ulps
// times the square root of its length, at most about 10 sqrt(max(a, b)) terms).
// Measured against mpmath: see tests/reference/distributions_central_worst_errors.txt.
// Why 5000 (for this path; larger shapes take the paths above): the prefactor's 3e-18 (a + b),
// which comes from gamma_deviance's log form, k ln(m/k) with the logarithm to 3e-18 absolute,
// and the fraction's length (hundreds of terms near the mean). Measured against mpmath
// at random points (both tails down to 1e-300): 1.5e-14 for beta shapes up to 6000, but
// 9e-14 at a = 16379, b = 56983, so larger shapes go to the extended evaluation. Beside a
// shape of 1/2 the prefactor has no such term: Student's t measured within 6.0e-15 up to
// df = 2e6 (gen_distributions_t_large_df.py). (Up to 1000 was the limit while the fraction
// was the classical form by the Lentz method: its roundings reached 1.2e-13 at df = 1782 and
// 2.5e-13 at df = 1e4.)
// Two builds. Most of the work is exact products (two_product, the remainders of divisions),
// whose rounding error std::fma gives: on the baseline x86-64 target that is a call into the C
// library, which spills every live register around it. So the kernels (incomplete_beta_kernel.inc)
// are built twice, once for any processor and once for processors with a fused multiply-add,
// where each exact product is one instruction; the entry points pick the build by the
// processor's feature bits (read once at load). Neither build contracts a product and a sum
// into one rounding, and both get every exact product exactly (the C library's fma, Dekker's
// product or the instruction), so the two give the same value to the last bit (a test checks
// it on the table rows). Measured with distributions_bench on its random arguments, runs
// alternating with the single build on a shared machine: Student's t from 270 .. 350 ns per call
// to 215 .. 280, the beta law from 235 .. 300 to 150 .. 230 (the spread is the machine's load).
// Student's t (student_t_two_sided_double): x = t^2/(df + t^2) and 1 - x = df/(df + t^2), the
// smaller of the two by one two-part division and the other as 1 minus it (exact to 2^-105 of a
// value of at least 1/2), then the kernel at a = 1/2, b = df/2.
// References: DiDonato and Morris (1992), "Algorithm 708: Significant digit computation of the
// incomplete beta function ratios", ACM TOMS 18 (BFRAC, BASYM); N. M. Temme (1987), the
// uniform expansion of the incomplete beta function by incomplete Laplace integrals, SIAM J.
// Math. Anal. 18, and DLMF 8.18(ii); DLMF 8.17.22 (continued fraction),
// 8.17.8 (the series bound), 5.11.1 and 5.11.8 (Stirling, the ratio of Gamma functions);
// Cody (1993), "Algorithm 715: SPECFUN", ACM TOMS 19 (the rational Gamma on [1, 2]); Loader
// (2000), "Fast and accurate computation of binomial probabilities" (the deviance form).
#include "platform/numeric/incomplete_beta.hpp"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <numbers>

#include "platform/numeric/incomplete_gamma.hpp"
#include "platform/numeric/stirling.hpp"

namespace zemath::numeric {

namespace {

// The kernels built twice (see the opening block): for any processor, and, on x86-64 with
// GCC or Clang, for processors with the fused multiply-add, picked once per call.
namespace portable {
#include "platform/numeric/incomplete_beta_kernel.inc"
}  // namespace portable

#if defined(__x86_64__) && (defined(__GNUC__) || defined(__clang__)) && !defined(__FMA__)
#define ZEMATH_BETA_FMA_BUILD 1
#if defined(__clang__)
#pragma clang attribute push(__attribute__((target("fma"))), apply_to = function)
#pragma clang fp contract(off)
#else
#pragma GCC push_options
#pragma GCC target("fma")
#pragma GCC optimize("fp-contract=off")
#endif
namespace with_fma {
#include "platform/numeric/incomplete_beta_kernel.inc"
}  // namespace with_fma
#if defined(__clang__)
#pragma clang fp contract(on)
#pragma clang attribute pop
#else
#pragma GCC pop_options
#endif
#else
#define ZEMATH_BETA_FMA_BUILD 0
#endif

}  // namespace

namespace {

// I_(1/2)(a, a) = 1/2 exactly (the law is symmetric): the evaluation there holds only its bound
// (3e-16 off at a = 1/4), which moved the deviate at the median, finv(1/2, d, d), 4 ulps off 1.
std::optional<BetaTailsDouble> with_symmetric_median(std::optional<BetaTailsDouble> tails, double a,
                                                     double b, TwoPart x, TwoPart y) {
    if (tails && a == b && x.hi == 0.5 && x.lo == 0.0 && y.hi == 0.5 && y.lo == 0.0)
        tails->lower = tails->upper = 0.5;
    return tails;
}

}  // namespace

std::optional<BetaTailsDouble> incomplete_beta_double(double a, double b, TwoPart x, TwoPart y,
                                                      bool one_side) {
#if ZEMATH_BETA_FMA_BUILD
    if (kFmaInProcessor)
        return with_symmetric_median(with_fma::beta_tails(a, b, x, y, one_side), a, b, x, y);
#endif
    return with_symmetric_median(portable::beta_tails(a, b, x, y, one_side), a, b, x, y);
}

std::optional<BetaTailsDouble> incomplete_beta_double_portable(double a, double b, TwoPart x,
                                                               TwoPart y, bool one_side) {
    return with_symmetric_median(portable::beta_tails(a, b, x, y, one_side), a, b, x, y);
}

std::optional<TwoPart> incomplete_beta_log_lower(double a, double b, TwoPart x, TwoPart y) {
#if ZEMATH_BETA_FMA_BUILD
    if (kFmaInProcessor) return with_fma::beta_log_lower(a, b, x, y);
#endif
    return portable::beta_log_lower(a, b, x, y);
}

std::optional<double> student_t_beyond(double t, double df) {
#if ZEMATH_BETA_FMA_BUILD
    if (kFmaInProcessor) return with_fma::t_beyond(t, df);
#endif
    return portable::t_beyond(t, df);
}

BetaTailsDouble student_t_two_sided_double(double t, double df) {
#if ZEMATH_BETA_FMA_BUILD
    if (kFmaInProcessor) return with_fma::t_two_sided(t, df);
#endif
    return portable::t_two_sided(t, df);
}

BetaTailsDouble student_t_two_sided_double_portable(double t, double df) {
    return portable::t_two_sided(t, df);
}

}  // namespace zemath::numeric
