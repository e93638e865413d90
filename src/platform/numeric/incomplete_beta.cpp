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

constexpr double kStirlingFormFrom = 16.0;
// The fraction's cap: about 10 sqrt(max(a, b)) terms are needed at most, 710 up to shapes
// 5000 and 1e4 beside a shape of 1/2 up to 1e6.
constexpr int kMaxTerms = 5000;
constexpr int kMaxTermsLargeShape = 20000;
// Above kBetaDoubleShapeMax outside Temme's region the fraction needs at most about
// 10 sqrt(min(a, b)) terms; beyond this cap the extended evaluation is the cheaper one.
constexpr int kMaxTermsBeyond = 400;
// Temme's expansion is taken where both shapes are at least this (and f w0^2 is below
// kTemmeSettles): its terms then fall by about 1/sqrt(min(a, b)) each near the mean.
constexpr double kTemmeFrom = 250.0;
// The expansion's terms after the leading one, in pairs (DiDonato and Morris keep 20).
constexpr int kTemmeTerms = 20;
// f w0^2 up to which the expansion settles within kTemmeTerms terms (see the opening block:
// computed over the series' terms in 50 digits; 0.09 left a few points unsettled).
constexpr double kTemmeSettles = 0.06;
// Beyond this exponent of e^-f (f the summed deviances) the value leaves the normal range.
constexpr double kTemmeHighestDeviance = 700.0;
// The large shape from which a shape of 1/2 beside it takes its expansion (Student's t from df
// = 1000): its terms then fall to 0.05 of the one before or less after the stop.
constexpr double kHalfExpansionFrom = 500.0;
// Summed deviances beyond which the far side is below half the smallest subnormal for any
// two shapes from 16 to kBetaDoubleLargeShapeMax (745.2 + 31, with a margin).
constexpr double kFarTailDeviance = 780.0;
constexpr double kLowestExponent = -700.0;
// Below ln(2^-1075) a positive value rounds to 0 (with a margin for the bound's own rounding).
constexpr double kLogHalfSmallestSubnormal = -745.2;
constexpr double kMostComplemented = 0.9;
// ln 2^-54 with a margin: a side below it leaves the other rounded to 1 exactly.
constexpr double kLogBelowHalfUlpOfOne = -40.0;
// How far past its switch point (as a fraction of it) the other side's fraction is taken.
constexpr double kOtherSideReach = 0.5;

// The exponent of the prefactor g = x^a y^b / B(a, b), in two parts, and the factor outside it.
struct Prefactor {
    TwoPart exponent;
    double scale;
};

// a ln(m) - m at m = m.hi + m.lo: the logarithm of m^a e^-m.
TwoPart poisson_exponent(double a, TwoPart m) {
    const TwoPart a_log_m = multiply(TwoPart{a, 0.0}, log_two_part(m.hi, m.lo));
    return add(a_log_m, negate(m));
}

// n x as a two-part value, n = n.hi + n.lo.
TwoPart scaled(TwoPart n, TwoPart x) {
    const TwoPart p = two_product(n.hi, x.hi);
    return quick_two_sum(p.hi, p.lo + n.hi * x.lo + n.lo * x.hi);
}

// ln A for A in [16, 17), in two parts to about 2^-60: ln A = 4 ln 2 + 2 atanh(s), s = u / (2 +
// u), u = A/16 - 1 in [0, 1/16) exact, so s < 1/33 and five terms of the series in s^2 leave a
// truncation below 1e-20 (log_two_part needs fourteen for its |s| < 1/5).
TwoPart log_shifted(double big) {
    constexpr double k4Ln2Hi = 4 * 0.6931471805599453;  // exact multiples of ln 2's two parts
    constexpr double k4Ln2Lo = 4 * 2.3190468138462996e-17;
    const double u = (big - 16.0) * 0.0625;  // exact
    const TwoPart den = two_sum(2.0, u);
    const double inv = 1.0 / den.hi;
    const double s = u * inv;  // its rounding is taken up by s_low (the exact remainder)
    const double s_low = (remainder_of(u, s, den.hi) - s * den.lo) * inv;
    const double s2 = s * s, s4 = s2 * s2;
    const double series =
        (1.0 / 3 + s2 * (1.0 / 5)) + s4 * ((1.0 / 7 + s2 * (1.0 / 9)) + s4 * (1.0 / 11));
    const TwoPart lead = two_sum(k4Ln2Hi, 2.0 * s);
    return quick_two_sum(lead.hi, k4Ln2Lo + 2.0 * s_low + 2.0 * s * s2 * series + lead.lo);
}

// Stirling's error term mu(k) for 16 <= k <= 32, as stirling_error (stirling.cpp) takes it
// there, inline: five terms of the series in 1/k^2 (truncation below 2e-16 absolute).
double stirling_error_moderate(double k) {
    constexpr double s0 = 1.0 / 12.0, s1 = 1.0 / 360.0, s2 = 1.0 / 1260.0, s3 = 1.0 / 1680.0,
                     s4 = 1.0 / 1188.0;
    const double r = 1.0 / k;
    const double r2 = r * r;
    return (s0 - (s1 - (s2 - (s3 - s4 * r2) * r2) * r2) * r2) * r;
}

// Gamma(v) for 0 < v < 32 in the form of gamma_moderate (stirling.cpp) with its exponent left
// out: v (+ v_low, below an ulp of v) shifted up by m to A = v + m in [16, 17) (exactly, in two
// parts), Gamma(A) = sqrt(2 pi / A) e^(A ln A - A + mu(A)), Gamma(v) = Gamma(A) / (v (v + 1) ...
// (v + m - 1)). Returned as Gamma(v) = e^exponent num / (den sqrt(root)), so that a quotient of
// several takes one division and one square root: root = A / (2 pi), num = 1 + psi A.lo (the
// rounding of A's low part fed back through psi, here psi(A) ~ ln A - 1/32, within 0.6 per
// cent; A above 17 only where v is, up to 32), den = the product of the factors v + j, each rounded
// once. v_low (the rounding of a sum of shapes) is fed back the same way through psi(v) = psi(A) -
// sum 1/(v + j), taken to a few per cent as ln(v + 1/2) - 1/v from a short logarithm.
struct ShiftedGamma {
    TwoPart exponent;
    double num, den, root;
};

// ln z to about 2e-4 absolute, z > 0 normal: e ln 2 + 2 s (1 + s^2/3), |s| <= 1/5.
double rough_log(double z) {
    const std::uint64_t bits = std::bit_cast<std::uint64_t>(z);
    double f = std::bit_cast<double>((bits & 0x000fffffffffffffULL) | (1023ULL << 52));  // [1, 2)
    double e = static_cast<double>(static_cast<int>(bits >> 52 & 0x7ff) - 1023);
    if (f > 1.5) {
        f *= 0.5;
        e += 1.0;
    }
    const double s = (f - 1.0) / (f + 1.0);
    return e * 0.6931471805599453 + 2.0 * s * (1.0 + s * s * (1.0 / 3));
}

ShiftedGamma shifted_gamma(double v, double v_low = 0.0) {
    const double twice = 2.0 * v;
    if (v_low == 0.0 && twice <= 31.0 && twice == std::floor(twice)) {
        // Integers and half-integers up to 15.5 (the usual degrees of freedom over 2) exactly or
        // with one rounding: (k - 1)! and sqrt(pi) (2k - 1)!! / 2^k, both products exact.
        constexpr double kSqrtPi = 1.7724538509055160273;
        const bool whole = v == std::floor(v);
        double product = 1.0;
        for (double j = whole ? 1.0 : 0.5; j < v; j += 1.0) product *= j;
        return {{0.0, 0.0}, whole ? product : product * kSqrtPi, 1.0, 1.0};
    }
    const double m = v < kStirlingFormFrom ? std::ceil(kStirlingFormFrom - v) : 0.0;
    const TwoPart shifted = two_sum(v, m);
    // The m factors v + j in two interleaved chains (half the dependent multiplications).
    double even = 1.0, odd = 1.0, j = 0.0;
    for (; j + 1.0 < m; j += 2.0) {
        even *= v + j;
        odd *= v + (j + 1.0);
    }
    if (j < m) even *= v + j;
    const double big = shifted.hi;
    const TwoPart log_big = big < 17.0 ? log_shifted(big) : log_two_part(big, 0.0);
    const TwoPart exponent = add(add(multiply(TwoPart{big, 0.0}, log_big), TwoPart{-big, 0.0}),
                                 TwoPart{stirling_error_moderate(big), 0.0});
    const double psi_big = log_big.hi - 0.03125;
    double num = 1.0 + psi_big * shifted.lo;
    if (v_low != 0.0) num += (rough_log(v + 0.5) - 1.0 / v) * v_low;
    return {exponent, num, even * odd, big * (0.5 / std::numbers::pi)};
}

// The factor outside the exponent of one ShiftedGamma (Gamma(v) e^-exponent).
double factor_of(const ShiftedGamma& g) {
    return g.num / (g.den * std::sqrt(g.root));
}

// Gamma(v + v_low) = num / den for kRationalGammaFrom <= v < 33, |v_low| below an ulp of v
// (the rounding of a sum of shapes): Gamma(1 + z) for z = v - floor(v) in [0, 1) by the
// rational form of Cody (Algorithm 715), 1 + z N(z)/D(z) with N and D of degree 7 and 8 (its
// own error 2.6e-17 over [1, 2], 2e-16 with Estrin's scheme in double, checked against
// mpmath), then the recurrence: times (1 + z)(2 + z)...(v - 1), or over v below 1, each
// factor rounded once (two interleaved chains). z takes v_low (v - floor(v) is exact), so a
// sum's rounding costs no more than one of z's own ulps. Left as a quotient so that a ratio of
// several costs one division; no logarithm or exponential (shifted_gamma's Stirling form costs
// three times as much).
struct GammaParts {
    double num, den;
};

constexpr double kRationalGammaFrom = 1e-30;  // num and den stay far inside the double range

GammaParts rational_gamma(double v, double v_low = 0.0) {
    constexpr double p0 = -1.71618513886549492533811e0, p1 = 2.47656508055759199108314e1,
                     p2 = -3.79804256470945635097577e2, p3 = 6.29331155312818442661052e2,
                     p4 = 8.66966202790413211295064e2, p5 = -3.14512729688483675254357e4,
                     p6 = -3.61444134186911729807069e4, p7 = 6.64561438202405440627855e4;
    constexpr double q0 = -3.08402300119738975254353e1, q1 = 3.15350626979604161529144e2,
                     q2 = -1.01515636749021914166146e3, q3 = -3.10777167157231109440444e3,
                     q4 = 2.25381184209801510330112e4, q5 = 4.75584627752788110767815e3,
                     q6 = -1.34659959864969306392456e5, q7 = -1.15132259675553483497211e5;
    const double whole = std::floor(v);
    const double z = (v - whole) + v_low;
    const double z2 = z * z, z4 = z2 * z2;
    const double n =
        z * (((p7 + p6 * z) + z2 * (p5 + p4 * z)) + z4 * ((p3 + p2 * z) + z2 * (p1 + p0 * z)));
    const double d =
        (((q7 + q6 * z) + z2 * (q5 + q4 * z)) + z4 * ((q3 + q2 * z) + z2 * (q1 + q0 * z))) +
        z4 * z4;
    if (whole == 0.0) return {d + n, d * z};  // Gamma(z) = Gamma(1 + z) / z
    double even = 1.0, odd = 1.0, j = 1.0;
    for (; j + 1.0 < whole; j += 2.0) {
        even *= j + z;
        odd *= (j + 1.0) + z;
    }
    if (j < whole) even *= j + z;
    return {(d + n) * (even * odd), d};
}

// ln Gamma(l + 1/2) - ln Gamma(l) - ln(l)/2 for l >= 16: the asymptotic series
// sum_k (2^(1-k) - 2) B_k / (k (k - 1) l^(k-1)), k = 2, 4, ..., 14 (B_k the Bernoulli numbers;
// DLMF 5.11.8 at h = 1/2 and h = 0), within 5e-19 absolute (the first term left out is 5e-20 at
// l = 16; checked against mpmath).
double half_shift_series(double l) {
    const double r = 1.0 / l, r2 = r * r;
    return r *
           (-1.0 / 8 +
            r2 * (1.0 / 192 +
                  r2 * (-1.0 / 640 + r2 * (17.0 / 14336 +
                                           r2 * (-31.0 / 18432 + r2 * (691.0 / 180224 -
                                                                       r2 * (5461.0 / 425984)))))));
}

// The deviance D(k, m) = k ln(k/m) + m - k at m = m.hi + m.lo for large shapes k (from
// kTemmeFrom: Temme's expansion and the prefactor), in two parts. Where |v| < 1/4, v = (k - m)
// / (k + m) (m/k within 0.6 .. 1.67), Loader's series D = (m - k)^2/(m + k) + 2k v^3 (1/3 +
// v^2/5 + ...) with the leading term in two parts and the rest in two parts too where 2k |v|^3
// exceeds 1 (only the part w = v^2/5 + ..., below 4 per cent of 1/3, in double; below, the
// rest is under 1/3 and in double within 1e-16): about 1e-18 D + 1e-16 absolute, where the log
// form of gamma_deviance is 3e-18 k (k ln(m/k) with the logarithm to 3e-18: 3e-13 at k = 1e5,
// the term that held the classical path to 5000). Beyond |v| = 1/4 the deviance exceeds
// 0.11 k, so it is taken by the log form only below k = 6700 (where that costs 2e-14 at most);
// above, D > 745 and the value has left the double range, which any error of that size does
// not change.
constexpr int kDevianceTerms = 16;  // q^15 / 33 < 2^-64 at |v| = 1/4
constexpr std::array<double, kDevianceTerms + 1> kOddReciprocals = [] {
    std::array<double, kDevianceTerms + 1> r{};
    for (int j = 0; j <= kDevianceTerms; ++j) r[j] = 1.0 / (2 * j + 1);
    return r;
}();

TwoPart deviance_large(double k, TwoPart m) {
    constexpr TwoPart kThird{0x1.5555555555555p-2, 0x1.5555555555555p-56};
    const TwoPart total = add(m, TwoPart{k, 0.0});
    if (!(std::fabs(m.hi - k) < 0.25 * total.hi)) return gamma_deviance(k, m.hi, m.lo);
    const TwoPart d = two_sum(m.hi - k, m.lo);  // m.hi - k exact (m.hi / k within 0.6 .. 1.67)
    // 1/total in two parts (one division), then v = -d/total and the leading term -d v.
    const double inv = 1.0 / total.hi;
    const TwoPart reciprocal_total{inv, (remainder_of(1.0, inv, total.hi) - inv * total.lo) * inv};
    const TwoPart v = multiply(negate(d), reciprocal_total);
    const TwoPart lead = multiply(d, negate(v));
    const TwoPart v2 = multiply(v, v);
    // w = sum_j v^(2j - 2) / (2j + 1), j >= 2, forwards until a term is below 2^-58 (the
    // terms fall by v^2 <= 1/16 or more each, so the rest is below 2^-61 of 1/3): at most
    // fifteen terms at |v| = 1/4, one or two near the mean.
    const double q = v2.hi;
    double w = 0.0, power = 1.0;
    for (int j = 2; j <= kDevianceTerms; ++j) {
        power *= q;
        const double term = power * kOddReciprocals[j];
        w += term;
        if (term <= 0x1p-58) break;
    }
    const double cube = 2.0 * k * v.hi * q;  // 2k v^3, to a few ulps
    if (std::fabs(cube) <= 1.0) {
        // The rest below 1/3 (most calls, near the mean): in double it is within a few ulps of
        // 1/3, 1e-16 absolute.
        return add(lead, TwoPart{cube * (kThird.hi + w), 0.0});
    }
    const TwoPart rest =
        multiply(multiply(multiply(v2, v), add(kThird, TwoPart{w, 0.0})), TwoPart{2.0 * k, 0.0});
    return add(lead, rest);
}

// The smaller tail by Temme's uniform expansion in the form of DiDonato and Morris (BASYM),
// for a, b >= kTemmeFrom: with lambda = a - (a + b) x >= 0 (the side below the mean) and f =
// D(a, n x) + D(b, n y) the summed deviances (n = a + b),
//   I_x(a, b) = (2/sqrt(pi)) e^-f e^-(mu(a) + mu(b) - mu(n)) sum_k d_k w0^k J_k,
// J_0 = (sqrt(pi)/4) erfcx(sqrt f), J_1 = 2^-3/2, the J_k by their two-term recurrence in
// sqrt f, w0 = 1/sqrt(min(a, b) (1 + h)), h = min/max; the leading term is erfc(sqrt f)/2.
// DiDonato and Morris form the d_k at every call by three nested recurrences (N^3/6
// operations for N terms, a microsecond at N = 14); they are polynomials in h of degree k + 1
// (times (-1)^(k+1) for a > b), whose coefficients incomplete_beta_temme.inc holds (the
// generator tests/reference/gen_incomplete_beta_temme.py fits them in 50 digits and checks
// them against the recurrences: within 5e-15 of each d_k in double), so each term costs one
// Horner evaluation. f comes in two parts (deviance_large), so e^-f is within an ulp or two
// even at f = 700, and erfcx at the two-part root of f is formed as erfc(z0)/e^-f with the
// root's low part fed back through erfc's derivative. The terms fall like w0^k <= 2000^(-k/2)
// near the mean, more slowly in the far tails (J_k grows with f): the pairs are summed until
// one falls below 2^-56 of the sum, at most kTemmeTerms terms, else declined (the fraction is
// short there). Error: erfc's and exp's few ulps, Stirling's 1e-16, the d_k's 5e-15 on terms
// below w0 = 0.032 of the sum, the sum's rounding (a few ulps): within about 2e-15; measured
// against mpmath with the exact f within 2e-15 from shapes 250 to 2e9 at |z| up to 37.
// Returns the side below the mean (the caller's lower_side tells which), or NaN; *weight is
// e^-(f + mu(a) + mu(b) - mu(n)), the front x^a y^b / B(a, b) over sqrt(a b / (2 pi n)).
#include "platform/numeric/incomplete_beta_temme.inc"

double temme_smaller_side(double a, double b, TwoPart f, double stirling, double* weight) {
    constexpr double e0 = 1.1283791670955126;   // 2/sqrt(pi)
    constexpr double e1 = 0.35355339059327379;  // 2^-3/2
    const double h = a < b ? a / b : b / a;
    const double r1 = a < b ? (b - a) / b : (b - a) / a;
    const double w0 = 1.0 / std::sqrt((a < b ? a : b) * (1.0 + h));
    const double fh = std::max(f.hi, 0.0);
    const double t = exp_two_part(negate(f));
    // erfcx(z0) at z0 = sqrt(f) carried in two parts.
    double erfcx = 1.0, z0 = 0.0;
    if (fh > 1e-300) {
        z0 = std::sqrt(fh);
        const double z0_low = (remainder_of(f.hi, z0, z0) + f.lo) / (2.0 * z0);
        erfcx = std::erfc(z0) / t - e0 * z0_low;
    }
    const double z = 0.5 * (z0 / e1), z2 = fh + fh;
    // d_k = sign^(k+1) P_k(h), P_k of degree k + 1 (incomplete_beta_temme.inc); d_0 = r1/3
    // from r1 itself (P_0 = (1 - h)/3 would lose r1's digits near h = 1).
    const double sign = a < b ? 1.0 : -1.0;
    const auto coefficient = [h, sign](int k) {
        const double* c = kTemmeCoefficients[k];
        double v = c[k + 1];
        for (int j = k; j >= 0; --j) v = v * h + c[j];
        return (k % 2 == 0 ? sign : 1.0) * v;  // sign^(k+1)
    };
    double j0 = (0.5 / e0) * erfcx, j1 = e1;
    double sum = j0 + (r1 / 3.0) * w0 * j1;
    double w = w0, znm1 = z, zn = z2;
    bool converged = false;
    for (int n = 2; n <= kTemmeTerms; n += 2) {
        j0 = e1 * znm1 + (n - 1.0) * j0;
        j1 = e1 * zn + n * j1;
        znm1 *= z2;
        zn *= z2;
        w *= w0;
        const double t0 = coefficient(n - 1) * w * j0;
        w *= w0;
        const double t1 = coefficient(n) * w * j1;
        sum += t0 + t1;
        if (std::fabs(t0) + std::fabs(t1) <= 0x1p-56 * sum) {
            converged = true;
            break;
        }
    }
    if (!converged) return std::numeric_limits<double>::quiet_NaN();
    // e^-stirling, stirling = mu(a) + mu(b) - mu(n) below 2/(12 kTemmeFrom): five terms of
    // its series leave 2e-18.
    const double u =
        1.0 - stirling * (1.0 - stirling * (0.5 - stirling * (1.0 / 6 - stirling / 24)));
    *weight = t * u;  // e^-(f + stirling): the front over sqrt(a b / (2 pi n))
    return e0 * t * u * sum;
}

// The coefficients d_n of the expansion below at the small shape 1/2: c_n = 1/(2n + 1)!, d_n =
// -c_n/2 + (1/n) sum_i (i/2 - n) c_i d_(n-i) (DiDonato and Morris's BGRAT at b = 1/2).
constexpr int kHalfTerms = 30;
constexpr std::array<double, kHalfTerms> kHalfCoefficients = [] {
    std::array<double, kHalfTerms> c{}, d{};
    double cn = 1.0;
    for (int n = 1; n <= kHalfTerms; ++n) {
        cn /= (2.0 * n) * (2.0 * n + 1.0);
        c[n - 1] = cn;
        double s = 0.0;
        for (int i = 1; i < n; ++i) s += (0.5 * i - n) * c[i - 1] * d[n - i - 1];
        d[n - 1] = -0.5 * cn + s / n;
    }
    return d;
}();

// I_v(l, 1/2) for l >= kHalfExpansionFrom (Student's t at df >= 1000: P(|T| >= |t|) with v =
// df/(df + t^2)) by the expansion of DiDonato and Morris (BGRAT; Temme's for one large shape,
// DLMF 8.18.1) at b = 1/2: with nu = l - 1/4 and z = -nu ln v,
//   I_v(l, 1/2) = Gamma(l + 1/2) / (Gamma(l) sqrt(nu)) (erfc(sqrt z) + sum_n d_n J_n),
// J_0 = erfc(sqrt z), J_n = ((2n - 3/2)(2n - 1/2) J_(n-1) + (z + 2n - 1/2) r (ln v / 2)^(2n-2))
// / (4 nu^2), r = e^-z sqrt(z / pi). Gamma(l + 1/2)/Gamma(l) = sqrt(l) e^S(l) (S by
// half_shift_series, 5e-19). z in two parts (nu exact, ln v by log_two_part, whose error falls
// with |ln v|^3 near v = 1), so e^-z is within an ulp or two at z = 700 and erfc at the
// two-part root of z is corrected through its derivative. The terms are below d_1 J_1 <=
// (1/12)(3/4 + (z + 3/2)/sqrt z)/(4 nu^2) of erfc's term (no cancellation: 1e-3 at z = 700,
// l = 500) and fall by (4n^2 + z)/(4 nu^2) (ln v)^2/4 or less each: summed until one is below
// 2^-56 of the sum (2 to 11 terms), at most kHalfTerms. Error: erfc's and exp's few ulps, the
// root's correction, S's: within about 1e-15 (measured against mpmath at df 1e3 .. 1e6, t to
// 40, within 2e-15 with z exact). Returns NaN where z is above 700 (the value leaves the
// normal range) or the sum does not settle; *front is x^(1/2) v^l / B(1/2, l).
// The expansion at ln v = log_v (two parts); *e = e^-z, *ratio = Gamma(l + 1/2)/Gamma(l).
double half_shape_side(double l, TwoPart log_v, double* e_out, double* ratio_out) {
    constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
    constexpr double kInvSqrtPi = 0.56418958354775628;
    constexpr double e0 = 1.1283791670955126;  // 2/sqrt(pi)
    const double nu = l - 0.25;                // exact: l = df/2 below 2^50
    const TwoPart z = multiply(TwoPart{-nu, 0.0}, log_v);
    if (!(z.hi > 1e-300 && z.hi <= kTemmeHighestDeviance)) return kNaN;
    const double e = exp_two_part(negate(z));
    const double z0 = std::sqrt(z.hi);
    const double z0_low = (remainder_of(z.hi, z0, z0) + z.lo) / (2.0 * z0);
    const double q = std::erfc(z0) - e0 * e * z0_low;
    const double r = e * z0 * kInvSqrtPi;
    const double step = 0.25 / (nu * nu), t2 = 0.25 * log_v.hi * log_v.hi;
    double j = q, sum = q, t = 1.0, bp2n = 0.5;
    bool converged = false;
    for (int n = 1; n <= kHalfTerms; ++n) {
        j = (bp2n * (bp2n + 1.0) * j + (z.hi + bp2n + 1.0) * r * t) * step;
        bp2n += 2.0;
        t *= t2;
        const double dj = kHalfCoefficients[n - 1] * j;
        sum += dj;
        if (std::fabs(dj) <= 0x1p-56 * sum) {
            converged = true;
            break;
        }
    }
    if (!converged || !(sum > 0.0)) return kNaN;
    // Gamma(l + 1/2)/Gamma(l) = sqrt(l) e^S, |S| <= 1/(8 l) <= 2.5e-4: five terms of e^S leave
    // 1e-20.
    const double sh = half_shift_series(l);
    const double series = 1.0 + sh * (1.0 + sh * (0.5 + sh * (1.0 / 6 + sh * (1.0 / 24))));
    *e_out = e;
    *ratio_out = series * std::sqrt(l);
    return series * std::sqrt(l / nu) * sum;
}

double half_shape_expansion(double l, TwoPart u, TwoPart v, double* front) {
    constexpr double kInvSqrtPi = 0.56418958354775628;
    double e = 0.0, ratio = 0.0;
    const double side = half_shape_side(l, log_two_part(v.hi, v.lo), &e, &ratio);
    // x^(1/2) v^l / B(1/2, l) = sqrt(u) e^-z v^(1/4) Gamma(l + 1/2) / (Gamma(l) sqrt(pi)).
    if (side >= 0.0) *front = std::sqrt(u.hi) * e * std::sqrt(std::sqrt(v.hi)) * ratio * kInvSqrtPi;
    return side;
}

Prefactor prefactor(double a, double b, TwoPart x, TwoPart y) {
    if ((a == 0.5 && b >= kStirlingFormFrom) || (b == 0.5 && a >= kStirlingFormFrom)) {
        // A shape of 1/2 beside one l of at least 16 (Student's t, F with one degree of
        // freedom): 1/B(1/2, l) = sqrt(l / pi) e^S(l), S the series above, so the exponent is
        // ln(l u)/2 + l ln v + S(l) - ln(pi)/2 with u the variable of the half shape: no large
        // terms cancel (l ln v is the whole exponent far in the tail, and the absolute error of
        // log_two_part near v = 1 falls with |ln v|^3, which keeps l ln v within 6e-16 wherever
        // it is above -745).
        const bool half_first = a == 0.5;
        const double l = half_first ? b : a;
        const TwoPart u = half_first ? x : y, v = half_first ? y : x;
        const TwoPart lu = scaled(TwoPart{l, 0.0}, u);
        const TwoPart log_lu = log_two_part(lu.hi, lu.lo);
        constexpr TwoPart kHalfLnPi{0.5723649429247001, 5.132975581353913e-18};
        const TwoPart logs = add(TwoPart{0.5 * log_lu.hi, 0.5 * log_lu.lo},
                                 multiply(TwoPart{l, 0.0}, log_two_part(v.hi, v.lo)));
        return {add(logs, add(negate(kHalfLnPi), TwoPart{half_shift_series(l), 0.0})), 1.0};
    }
    const TwoPart n = two_sum(a, b);
    const bool a_small = a < kStirlingFormFrom, b_small = b < kStirlingFormFrom;
    if (a_small && b_small && std::min(a, b) >= kRationalGammaFrom) {
        // 1/B(a, b) = Gamma(n) / (Gamma(a) Gamma(b)) by the rational form, n's rounding in z.
        const GammaParts gn = rational_gamma(n.hi, n.lo), ga = rational_gamma(a),
                         gb = rational_gamma(b);
        const TwoPart logs = add(multiply(TwoPart{a, 0.0}, log_two_part(x.hi, x.lo)),
                                 multiply(TwoPart{b, 0.0}, log_two_part(y.hi, y.lo)));
        return {logs, (gn.num * ga.den * gb.den) / (gn.den * ga.num * gb.num)};
    }
    if (a_small && b_small) {
        // 1/B(a, b) = Gamma(n) / (Gamma(a) Gamma(b)), its three exponents joined to the one of
        // x^a y^b so that a single exponential is taken; n.lo fed back through psi(n).
        const ShiftedGamma gn = shifted_gamma(n.hi, n.lo), ga = shifted_gamma(a),
                           gb = shifted_gamma(b);
        const TwoPart logs = add(multiply(TwoPart{a, 0.0}, log_two_part(x.hi, x.lo)),
                                 multiply(TwoPart{b, 0.0}, log_two_part(y.hi, y.lo)));
        const TwoPart gammas = add(gn.exponent, negate(add(ga.exponent, gb.exponent)));
        const double scale = (gn.num * ga.den * gb.den) / (gn.den * ga.num * gb.num) *
                             std::sqrt(ga.root * gb.root / gn.root);
        return {add(logs, gammas), scale};
    }
    const double nd = n.hi + n.lo;
    if (!a_small && !b_small) {
        const TwoPart nx = scaled(n, x), ny = scaled(n, y);
        const TwoPart deviances =
            std::max(a, b) >= kTemmeFrom
                ? add(deviance_large(a, nx), deviance_large(b, ny))
                : add(gamma_deviance(a, nx.hi, nx.lo), gamma_deviance(b, ny.hi, ny.lo));
        const double stirling = stirling_error(nd) - stirling_error(a) - stirling_error(b);
        return {add(negate(deviances), TwoPart{stirling, 0.0}),
                std::sqrt(a / (2.0 * std::numbers::pi) * (b / nd))};
    }
    // One small shape s (with its variable u), one large shape l (with v).
    const double s = a_small ? a : b, l = a_small ? b : a;
    const TwoPart u = a_small ? x : y, v = a_small ? y : x;
    const TwoPart nu = scaled(n, u), nv = scaled(n, v);
    const TwoPart deviance =
        l >= kTemmeFrom ? deviance_large(l, nv) : gamma_deviance(l, nv.hi, nv.lo);
    const double rest = -0.5 * std::log1p(s / l) - stirling_error(l) + stirling_error(nd);
    const TwoPart exponent =
        add(add(poisson_exponent(s, nu), negate(deviance)), TwoPart{rest, 0.0});
    if (s >= kRationalGammaFrom) {
        const GammaParts gs = rational_gamma(s);  // 1/Gamma(s) outside the exponent
        return {exponent, gs.den / gs.num};
    }
    const ShiftedGamma gs = shifted_gamma(s);  // 1/Gamma(s), its exponent joined to the rest
    return {add(exponent, negate(gs.exponent)), 1.0 / factor_of(gs)};
}

// The continued fraction R(a, b, x) of I_x(a, b) = g R, x < (a + 1)/(a + b + 2), in the form
// of DiDonato and Morris (BFRAC), whose partial denominators are sums of positive terms there:
// c = 1 + a y - b x = 1 + lambda (formed by the caller without cancellation) enters them as it
// stands. The form of DLMF 8.17.22 by the modified Lentz method, used before, subtracts in
// every other denominator 1 + d_k D with d_k near -x: where x nears 1 with a large shape (the
// upper tail of Student's t at df above 500, near |t| = 2) that magnified the roundings 50
// times and more, 1.2e-13 at df = 1782; this form stays within 5e-15 there (mpmath), with as
// many terms. The convergents A_n / B_n by their three-term recurrence, renormalised by B_n
// each step. Declines (converged = false) for a below 1e-100, where n / a overflows.
double fraction(double a, double b, double x, double y, double c, bool* converged) {
    if (!(a >= 1e-100)) {
        *converged = false;
        return 0.0;
    }
    // DiDonato and Morris's coefficients with their quotients joined: with s = a + 2n - 1,
    //   alpha_n = (a + n - 1)(a + b + n - 1) n (b - n) x^2 / s^2,
    //   beta_n = n + n (b - n) x / s + (a + n)(c + n (1 + y)) / (s + 2),
    // so that one reciprocal per term (1/(s + 2), which the next term reuses) and one for the
    // renormalisation are all the divisions (there were eight).
    const double yp1 = y + 1.0;
    double s = a + 1.0, inv_s = 1.0 / s;
    double an = 0.0, bn = 1.0, anp1 = 1.0, bnp1 = c / (1.0 + 1.0 / a);
    double r = 1.0 / bnp1;
    const int cap =
        a == 0.5 || b == 0.5
            ? (a + b > 2.0 * kBetaDoubleShapeMax ? kMaxTermsLargeShape : kMaxTerms)
            : (a > kBetaDoubleShapeMax || b > kBetaDoubleShapeMax ? kMaxTermsBeyond : kMaxTerms);
    for (int n = 1; n <= cap; ++n) {
        const double nd = n;
        const double w = nd * (b - nd) * x;
        const double inv_next = 1.0 / (s + 2.0);
        const double alpha =
            ((a + (nd - 1.0)) * inv_s) * (((a + b) + (nd - 1.0)) * inv_s) * (w * x);
        const double beta = nd + w * inv_s + (a + nd) * inv_next * (c + nd * yp1);
        s += 2.0;
        inv_s = inv_next;
        const double a_next = alpha * an + beta * anp1;
        const double b_next = alpha * bn + beta * bnp1;
        const double inv_b = 1.0 / b_next;
        const double r_prev = r;
        r = a_next * inv_b;
        if (std::fabs(r - r_prev) <= 0x1p-54 * r) return r;
        an = anp1 * inv_b;
        anp1 = r;
        bn = bnp1 * inv_b;
        bnp1 = 1.0;
    }
    *converged = false;
    return r;
}

// 1 + a y - b x with the products exact.
double first_denominator(double a, double b, TwoPart x, TwoPart y) {
    const TwoPart ay = two_product(a, y.hi), bx = two_product(b, x.hi);
    return 1.0 + ((ay.hi - bx.hi) + (ay.lo - bx.lo + a * y.lo - b * x.lo));
}

// Both shapes at least kTemmeFrom: the side below the mean by Temme's expansion, the other as
// 1 minus it (at least 1/2 less the expansion's skew, about 0.48), the front from the same
// deviances. Empty where f exceeds kTemmeHighestDeviance or kTemmeSettles / w0^2, or the
// expansion does not settle (the caller's fraction or bound decides there).
std::optional<BetaTailsDouble> temme_tails(double a, double b, TwoPart x, TwoPart y) {
    const TwoPart n = two_sum(a, b);
    const TwoPart nx = scaled(n, x), ny = scaled(n, y);
    const TwoPart f = add(deviance_large(a, nx), deviance_large(b, ny));
    // The expansion settles within kTemmeTerms terms where f w0^2 <= kTemmeSettles, w0^2 = 1 /
    // (min (1 + h)) (the opening block); beyond, the fraction (short there) is the cheaper,
    // without a vain attempt first.
    const double smaller = std::min(a, b), larger = std::max(a, b);
    if (!(f.hi <= kTemmeHighestDeviance &&
          f.hi <= kTemmeSettles * (smaller + smaller * smaller / larger)))
        return std::nullopt;
    const double nd = n.hi + n.lo;
    const double stirling = stirling_error(a) + stirling_error(b) - stirling_error(nd);
    const bool lower_side = nx.hi < a || (nx.hi == a && nx.lo < 0.0);
    double weight = 0.0;
    const double side = lower_side ? temme_smaller_side(a, b, f, stirling, &weight)
                                   : temme_smaller_side(b, a, f, stirling, &weight);
    if (!(side >= 0.0 && side <= 1.0)) return std::nullopt;
    const double front = weight * std::sqrt(a / (2.0 * std::numbers::pi) * (b / nd));
    return lower_side ? BetaTailsDouble{side, 1.0 - side, front}
                      : BetaTailsDouble{1.0 - side, side, front};
}

}  // namespace

std::optional<BetaTailsDouble> incomplete_beta_double(double a, double b, TwoPart x, TwoPart y,
                                                      bool one_side) {
    const double shape_max =
        a == 0.5 || b == 0.5 ? kBetaDoubleHalfShapeMax : kBetaDoubleLargeShapeMax;
    if (!(a > 0.0 && a <= shape_max && b > 0.0 && b <= shape_max) || !std::isnormal(x.hi) ||
        !std::isnormal(y.hi))
        return std::nullopt;
    if ((a == 0.5 && b >= kHalfExpansionFrom) || (b == 0.5 && a >= kHalfExpansionFrom)) {
        // A shape of 1/2 beside a large one: the large shape's side by the expansion above,
        // the other as 1 minus it where that is at least 0.1 (Student's t beyond |t| = 0.13
        // or so); elsewhere the fraction (short there).
        const bool half_first = a == 0.5;
        double front = 0.0;
        const double side = half_first ? half_shape_expansion(b, x, y, &front)
                                       : half_shape_expansion(a, y, x, &front);
        if (side >= 0.0 && side <= kMostComplemented) {
            return half_first ? BetaTailsDouble{1.0 - side, side, front}
                              : BetaTailsDouble{side, 1.0 - side, front};
        }
    }
    if (a >= kStirlingFormFrom && b >= kStirlingFormFrom) {
        // The far tails, before anything costly: with m = n x, n = a + b, lambda = m - a =
        // b - n y, the summed deviances f = D(a, m) + D(b, n y) are at least lambda^2/2 (1 /
        // max(m, a) + 1 / max(n y, b)) (k phi(q), phi(q) = q - 1 - ln q >= (q - 1)^2 / (2
        // max(1, q))), and the far side is at most e^-f sqrt(a b / (2 pi n)) e^(mu(n)) (n + 2)
        // / shape (the prefactor in deviance form and the fraction's bound below), below e^(31
        // - f) for shapes from 16 to kBetaDoubleLargeShapeMax. Past kFarTailDeviance it is
        // below half the smallest subnormal: 0, the other side 1. The rounding of this rough
        // bound is a few ulps of it; |lambda| >= 157 there, so x lies on the fraction's side
        // of the switch point as well.
        const double n = a + b, m = n * x.hi, lambda = m - a;
        const double bound =
            0.5 * lambda * lambda * (1.0 / std::max(m, a) + 1.0 / std::max(n * y.hi, b));
        if (bound > kFarTailDeviance)
            return m < a ? BetaTailsDouble{0.0, 1.0, 0.0} : BetaTailsDouble{1.0, 0.0, 0.0};
    }
    if (std::min(a, b) >= kTemmeFrom) {
        if (const auto tails = temme_tails(a, b, x, y)) return tails;
    }
    const Prefactor pre = prefactor(a, b, x, y);
    const bool lower_direct = x.hi * (a + b + 2.0) < a + 1.0;
    // g itself below the normal range (a tiny shape's 1/B(a, b) outside the exponent) is
    // treated as an exponent below -700.
    const double g =
        pre.exponent.hi > kLowestExponent ? exp_two_part(pre.exponent) * pre.scale : 0.0;
    if (!(g >= std::numeric_limits<double>::min())) {
        // The direct side is g / a F (g / b F above the switch point) with F = 2F1(a + b, 1;
        // a + 1; x), a series of positive terms whose ratios stay below max(1, (a + b)/(a + 1)) x
        // < 1 - 1/(a + b + 2) there: F <= a + b + 2. Where that bound leaves the side below half
        // the smallest subnormal (e^-745.13), it rounds to 0 and the other side to 1 exactly.
        const double shape = lower_direct ? a : b;
        const double log_bound =
            pre.exponent.hi + std::log(pre.scale) - std::log(shape) + std::log(a + b + 2.0);
        if (log_bound < kLogHalfSmallestSubnormal) {
            return lower_direct ? BetaTailsDouble{0.0, 1.0, 0.0} : BetaTailsDouble{1.0, 0.0, 0.0};
        }
        // Otherwise the direct side is below the normal range but far below 2^-54, so the
        // other side rounds to 1 exactly: given where the caller takes one side only.
        if (!one_side || !(log_bound < kLogBelowHalfUlpOfOne)) return std::nullopt;
        constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
        return lower_direct ? BetaTailsDouble{kNaN, 1.0, 0.0} : BetaTailsDouble{1.0, kNaN, 0.0};
    }
    bool converged = true;
    double direct = lower_direct
                        ? g * fraction(a, b, x.hi, y.hi, first_denominator(a, b, x, y), &converged)
                        : g * fraction(b, a, y.hi, x.hi, first_denominator(b, a, y, x), &converged);
    if (!converged || !std::isfinite(direct)) return std::nullopt;
    // A side near 1 (tiny shapes put nearly all the mass on one side) can round an ulp
    // above it; a probability is at most 1, and 1 is within the side's error bound.
    direct = std::min(direct, 1.0);
    double other = 1.0 - direct;
    if (direct > kMostComplemented) {
        // Too few digits left in 1 - direct: the other side by its own fraction, a little
        // past its switch point, where the argument is at least kOtherSideReach of the direct
        // side's switch point (a small shape beside a large one puts a side above 0.9 there:
        // Student's t near |t| = 1.7 at df in the hundreds).
        const double v = lower_direct ? x.hi : y.hi, s = lower_direct ? a : b;
        other = std::numeric_limits<double>::quiet_NaN();
        if (v * (a + b + 2.0) >= kOtherSideReach * (s + 1.0)) {
            bool done = true;
            const double side =
                lower_direct ? g * fraction(b, a, y.hi, x.hi, first_denominator(b, a, y, x), &done)
                             : g * fraction(a, b, x.hi, y.hi, first_denominator(a, b, x, y), &done);
            if (done && side >= 0.0 && side <= 0.2) other = side;
        }
    }
    return lower_direct ? BetaTailsDouble{direct, other, g} : BetaTailsDouble{other, direct, g};
}

std::optional<TwoPart> incomplete_beta_log_lower(double a, double b, TwoPart x, TwoPart y) {
    if (!(a > 0.0 && a <= kBetaDoubleLargeShapeMax && b > 0.0 && b <= kBetaDoubleLargeShapeMax) ||
        !std::isnormal(x.hi) || !std::isnormal(y.hi))
        return std::nullopt;
    if ((a == 0.5 || b == 0.5) && std::max(a, b) > kBetaDoubleHalfShapeMax) return std::nullopt;
    // Below kBetaLimitShape, I_x(a, b) / b no longer depends on b to double precision (the
    // opening block): the value at kBetaLimitShape, scaled by b / kBetaLimitShape.
    TwoPart limit_scale{0.0, 0.0};
    if (b < kBetaLimitShape) {
        limit_scale = add(log_two_part(b, 0.0), negate(log_two_part(kBetaLimitShape, 0.0)));
        b = kBetaLimitShape;
    }
    // The lower side as the fraction gives it directly: x below the switch point.
    if (!(x.hi * (a + b + 2.0) < a + 1.0)) return std::nullopt;
    const Prefactor pre = prefactor(a, b, x, y);
    bool converged = true;
    const double factor =
        pre.scale * fraction(a, b, x.hi, y.hi, first_denominator(a, b, x, y), &converged);
    if (!converged || !(factor >= std::numeric_limits<double>::min()) || !std::isfinite(factor))
        return std::nullopt;
    return add(add(pre.exponent, log_two_part(factor, 0.0)), limit_scale);
}

std::optional<double> student_t_beyond(double t, double df) {
    if (!(df >= 2.0 * kHalfExpansionFrom && df <= 2.0 * kBetaDoubleHalfShapeMax) ||
        !(std::fabs(t) < 1e150) || t == 0.0)
        return std::nullopt;
    // ln v = -ln(1 + w), w = t^2/df in two parts (one division and its remainder).
    const TwoPart t2 = two_product(t, t);
    const double w = t2.hi / df;
    const double w_low = (remainder_of(t2.hi, w, df) + t2.lo) / df;
    const TwoPart one_plus = two_sum(1.0, w);
    const TwoPart log_v = negate(log_two_part(one_plus.hi, one_plus.lo + w_low));
    double e = 0.0, ratio = 0.0;
    const double side = half_shape_side(df / 2, log_v, &e, &ratio);
    if (!(side >= 0.0 && side <= 1.0)) return std::nullopt;
    return side;
}

}  // namespace zemath::numeric
