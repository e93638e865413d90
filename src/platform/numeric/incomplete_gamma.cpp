// The regularised incomplete gamma functions in double arithmetic: every shape up to 1000,
// and larger shapes within |eta| <= 1/2 of x = a (x/a in 0.609 .. 1.522).
//
// Method, by region (g = x^a e^-x / Gamma(a + 1) the prefactor, D = a phi(x/a) the deviance,
// phi(l) = l - 1 - ln l, eta = sign(x - a) sqrt(2 D / a)):
//   a < 1, x <= 1.5: the Taylor form (Gautschi; DiDonato and Morris),
//       P = x^a / Gamma(1 + a) (1 + a S),  S = sum_{n>=1} (-x)^n / (n! (a + n)),
//       Q = -expm1(a ln x) - (1/Gamma(1 + a) - 1) x^a - x^a / Gamma(1 + a) a S,
//     both computed directly. 1 + a S lies in [e^-x, 1] (it is a times the mean of
//     t^(a-1) e^-xt over [0, 1]), so P is within a few ulps; 1/Gamma(1 + a) - 1 = f h(f) with
//     h the minimax polynomial of degree 16 from tests/reference/gen_incomplete_gamma.py
//     (its fit within 1e-20, relative accuracy as a -> 0, where Q ~ a E1(x) is small).
//     The three terms of Q cancel by at most a factor (|ln x| + 0.58 + Ein(x)) / E1(x),
//     20 at x = 1.5 and a -> 0 (3 at x = 1): Q is within about 7e-15 there, a few ulps
//     below x = 1.
//   a >= 50,  |eta| <= 1/2 (x/a in 0.609 .. 1.522): Temme's uniform expansion
//       Q = erfc(eta sqrt(a/2)) / 2 + e^-D / sqrt(2 pi a) sum_{k<8} c_k(eta) a^-k
//       (each c_k summed only as far as its terms matter for the tier of |eta| and a),
//       P = erfc(-eta sqrt(a/2)) / 2 - (the same sum term),
//     the smaller directly (x >= a: Q), the other as 1 minus it. The c_k are power series
//     in eta formed exactly by the generator (rational arithmetic, checked against mpmath:
//     the truncated expansion is within 1.2e-17 of Q over the region, at a = 50; every term
//     left out is below 1e-19 of the sum's scale e^-D / sqrt(2 pi a) by the tiers'
//     construction, and the left-out orders shrink as a^-8 with the shape). D in two parts,
//     its low part entering erfc through its slope; the terms do not cancel (the erfc term and the
//     sum term are of one size): within about 3e-15 (measured 4e-15 at a = 2e4). Above
//     a = 1000 D comes from Loader's series with its rest in two parts too (gamma_deviance_wide:
//     about 1e-18 D absolute, D < 700), so the bound holds at every shape; mpmath rows at the
//     switch points from tests/reference/gen_incomplete_gamma_large_shape.py.
//   otherwise the smaller tail directly, the other as 1 minus it (at least 0.36 there):
//     x <  a: P = g * sum_n x^n / ((a+1)...(a+n))   (positive terms, summed in pairs: one
//             division per two terms);
//     x >= a, a >= 1: Q = a g / (x + 1 - a - 1(1 - a)/(x + 3 - a - 2(2 - a)/(...)))
//             (Legendre's continued fraction by the modified Lentz method: the forward
//             recurrence of its convergents, division-free, drifts by an ulp every few terms
//             once converged);
//     a < 1 (x > 1.5): the same fraction evaluated backwards from a fixed depth N, division-
//             free, two levels per step. It is the even part of
//                 x^a e^-x / Gamma(a, x) = x + (1-a)/(1 + 1/(x + (2-a)/(1 + 2/(x + ...)))),
//             whose elements are all positive for a < 1, so its approximants alternate
//             around the value: the approximants of orders 2N (start U_N = x + N) and
//             2N + 1 (start U_N = x + 2N + 1 - a) are both formed, and the value lies between
//             them. Their mean is taken once they agree to 2^-50; the truncation error is
//             then at most half their gap, 2^-51 relative (proven by the bracketing, not
//             estimated). N comes from incomplete_gamma_depths.inc (the generator
//             tests/reference/gen_incomplete_gamma_fraction.py: the depth where the exact
//             gap falls below 2^-53, by bands of 1/sqrt(x), worst shape; 71 at x = 1.5, 21 at
//             x = 6.25, 3 past x = 1600); a depth too small is doubled (at most 4 times),
//             then declined. Rounding: U_k lies in [x + k, x + 2k + 1], no step cancels by
//             more than a factor 3, and a relative error in U_(k+1) reaches U_k damped by at
//             least (k + 1)/(x + k), so the few ulps each level adds reach U_0 damped by
//             about k^(1-x): a worst-case linear bound of 50 ulps at x = 1.5, 10 at x = 3,
//             fewer beyond (measured 6e-16 on Q over gen_incomplete_gamma_fraction.py's
//             rows; the Lentz form was 5.9e-15 there and three times slower: its two
//             dependent divisions per term, 60 terms at x = 1.5).
//     The sum and the fraction are well conditioned (a few ulps times the square root of
//     the number of terms, which stays below 200 outside Temme's region); the prefactor is
//     where rounding is magnified (its logarithm reaches -700 in the far tails), so:
//     a < 16 and x < 690: g = pow(x, a) e^-x (1/Gamma(1 + f)) / (a (a - 1) ... (f + 1)),
//             f = a - floor(a): pow and exp are within an ulp whatever the size of the
//             exponent, the factors a - k are exact and 1/Gamma(1 + f) = 1 + f h(f) as
//             above: about 2 + floor(a)/2 ulps;
//     a < 16 beyond: the exponent a ln(x + x_low) - x in two parts (double_double.hpp,
//             3e-18 absolute) and the same 1/Gamma(a + 1);
//     a >= 16: -(D + stirling_error(a)) - ln sqrt(2 pi a), D in two parts (Loader's series
//             when x is within 10% of a, its leading term (x - a)^2/(x + a) in two parts and
//             the rest, below a hundredth of it, in double; otherwise x - a and a ln(x/a) in
//             two parts, 3e-18 a absolute) and Stirling's error term within 3e-17.
// The argument's own rounding error x_low enters through the exponent's derivative
// (a/x - 1) x_low (and a x_low / x in the Taylor form).
// The logarithmic form of the lower tail (incomplete_gamma_log_lower, x < a, a >= 1: mixture
// sums whose terms reach below the double range): the series' prefactor exponent in two parts
// beside ln(scale S), or in Temme's region -D beside the logarithm of the bracket e^D P =
// erfc(z) e^D / 2 - dz / sqrt(pi) - T / sqrt(2 pi a) (the same operations as the expansion,
// divided by e^-D; erfc(z) e^(z^2) by its asymptotic series from z = 26, where erfc leaves the
// normal range): nothing underflows, and the bound below holds as an absolute one on ln P.
// Error bound, relative, on each tail below 1/2: about 2e-15 for a < 16, 1e-15 + 3e-18 a
// above, plus the rounding of the sum or fraction (2e-15); the tail above 1/2 is within 2
// ulps of 1 minus it; the Taylor form and Temme's expansion as stated. Measured against
// mpmath: tests/reference/incomplete_gamma_ref.inc and incomplete_gamma_fraction_ref.inc
// (tests/platform, both tails: 3.8e-15 on the lower, 6.8e-15 on the upper) and the
// distribution tables.
// Why 1000 beyond |eta| = 1/2: the deviance's two-part logarithm is 3e-18 a absolute there,
// 3e-14 at a = 1e4; larger shapes in those tails (only below a = 5600: beyond, a deviance
// at |eta| = 1/2 already exceeds 700) are left to the extended evaluation.
// References: DLMF 8.7.1 (series), 8.9.2 (continued fraction), 8.12 (Temme's expansion);
// W. Gautschi (1979), "A computational procedure for incomplete gamma functions", ACM TOMS
// 5; N. M. Temme (1979), "The asymptotic expansion of the incomplete gamma functions", SIAM
// J. Math. Anal. 10; A. R. DiDonato and A. H. Morris (1986), ACM TOMS 12, Algorithm 654 (the
// Taylor form of Q for small shapes, the regions of Temme's expansion); Loader (2000), "Fast
// and accurate computation of binomial probabilities" (the deviance).
#include "platform/numeric/incomplete_gamma.hpp"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <numbers>
#include <utility>

#include "platform/numeric/stirling.hpp"

namespace zemath::numeric {

namespace {

constexpr int kMaxTerms = 1000;  // 9 sqrt(1000) = 285 are needed at most
constexpr double kStirlingFormFrom = 16.0;
// Below this exponent the prefactor is subnormal or underflows: declined.
constexpr double kLowestExponent = -700.0;
constexpr double kLowestPrefactor = 1e-300;
// Small shapes: the Taylor form up to here, the continued fraction beyond.
constexpr double kTaylorFormEnd = 1.5;
// Temme's expansion: from this shape on, where |eta| <= kTemmeEtaMax (x/a in 0.609 ..
// 1.522); beyond kGammaDoubleShapeMax the only form. A deviance past 700 (e^-700 = 1e-304)
// is declined.
constexpr double kTemmeShapeMin = 50.0;
constexpr double kTemmeEtaMax = 0.5;
constexpr double kTemmeDevianceMax = 700.0;
// Its smallest tail answered: every part of the sum (e^-D, erfc) stays a thousand times
// above the subnormals.
constexpr double kTemmeLowestTail = 1e-305;
// Below this x, e^-x is normal and pow(x, a) e^-x needs no two-part exponent.
constexpr double kDirectPowerEnd = 690.0;

#include "platform/numeric/incomplete_gamma_coefficients.inc"
#include "platform/numeric/incomplete_gamma_depths.inc"

// Small shapes past the Taylor form: the fraction's depth is doubled at most this often
// when its two approximants do not yet agree (never on the generator's grid).
constexpr int kFractionRetries = 4;
// Their agreement asked for: 2^-50 of the value. At the table's depths their exact gap is
// below 2^-53; the computed ones differ by up to a few ulps more, their own rounding.
constexpr double kFractionGap = 0x1p-50;

// 1/Gamma(1 + f) - 1, 0 <= f <= 1: relatively accurate as f -> 0. The polynomial h by
// Estrin's scheme (pairs of coefficients, then pairs of pairs with f^2, f^4, f^8, f^16):
// five dependent steps instead of Horner's sixteen; its terms shrink with the degree, so
// the rounding stays a few units of h.
double reciprocal_gamma_1p_minus_1(double f) {
    static_assert(std::size(kReciprocalGammaFit) == 17);
    const auto c = [](int k) { return kReciprocalGammaFit[16 - k]; };  // coefficient of f^k
    const double f2 = f * f, f4 = f2 * f2, f8 = f4 * f4, f16 = f8 * f8;
    double q[8];
    for (int k = 0; k < 8; ++k) q[k] = c(2 * k) + c(2 * k + 1) * f;
    const double r0 = q[0] + q[1] * f2, r1 = q[2] + q[3] * f2;
    const double r2 = q[4] + q[5] * f2, r3 = q[6] + q[7] * f2;
    const double h = (r0 + r1 * f4) + (r2 + r3 * f4) * f8 + c(16) * f16;
    return f * h;
}

// 1/Gamma(a + 1), 0 < a < 16: 1/Gamma(1 + f) over the exact factors a - k, k < floor(a).
double reciprocal_gamma_1p(double a) {
    const double whole = std::floor(a);
    const double f = a - whole;  // exact
    double product = 1.0;
    for (double k = 0.0; k < whole; k += 1.0) product *= a - k;  // each factor exact
    return (1.0 + reciprocal_gamma_1p_minus_1(f)) / product;
}

// sum_n x^n / ((a+1)...(a+n)), x < a: terms shrink from the first. In pairs: with p the
// last term, the next two add p x (a + n + 1 + x) / ((a + n)(a + n + 1)).
double lower_series(double a, double x, bool* converged) {
    double p = 1.0, sum = 1.0;
    for (int n = 1; n <= kMaxTerms; n += 2) {
        const double c = a + n;
        const double r = x / (c * (c + 1.0));
        const double pair = p * r * (c + 1.0 + x);
        p *= r * x;
        sum += pair;
        if (pair <= sum * 0x1p-55) return sum;
    }
    *converged = false;
    return sum;
}

// sum_k c_k(eta) a^-k of Temme's expansion, each c_k by Horner in eta to the order its tier
// needs.
double temme_sum(double a, double eta) {
    const double size = std::fabs(eta);
    const int i = size <= kTemmeTierEta[0] ? 0 : (size <= kTemmeTierEta[1] ? 1 : 2);
    int j = 0;
    while (j + 1 < static_cast<int>(std::size(kTemmeTierShape)) && a >= kTemmeTierShape[j + 1]) ++j;
    const int(&orders)[std::size(kTemme)] = kTemmeOrders[i][j];
    const double inv = 1.0 / a;
    double total = 0.0;
    for (int k = static_cast<int>(std::size(kTemme)) - 1; k >= 0; --k) {
        double c = 0.0;
        for (int n = orders[k] - 1; n >= 0; --n) c = c * eta + kTemme[k][n];
        total = total * inv + c;
    }
    return total;
}

// Temme's uniform expansion (see the opening block): both tails at a >= kTemmeShapeMin
// with |eta| <= kTemmeEtaMax, from the deviance D = a eta^2 / 2 in two parts.
[[gnu::always_inline]] inline std::optional<GammaTails> temme_expansion(double a, double x,
                                                                        TwoPart deviance,
                                                                        double stirling) {
    constexpr double kInvSqrtPi = 0.56418958354775628695;
    constexpr double kInvSqrtTwoPi = 0.39894228040143267794;
    if (!(deviance.hi < kTemmeDevianceMax)) return std::nullopt;
    const double z = std::sqrt(deviance.hi);  // |eta| sqrt(a/2)
    const double eta = (x >= a ? 1.0 : -1.0) * z * std::sqrt(2.0 / a);
    const double total = temme_sum(a, eta);
    const double e = exp_two_part(negate(deviance));  // e^(-a eta^2 / 2)
    const double r = e * kInvSqrtTwoPi / std::sqrt(a) * total;
    // erfc(z + dz) / 2 with z + dz = sqrt(D) to twice the precision: the first-order term
    // -e^(-D) dz / sqrt(pi) carries D's low part (erfc's relative slope is 2z, up to 75).
    const double dz = z > 0.0 ? (remainder_of(deviance.hi, z, z) + deviance.lo) / (2.0 * z) : 0.0;
    const double half_erfc = 0.5 * std::erfc(z) - e * dz * kInvSqrtPi;
    const double density = e * std::sqrt(a) * kInvSqrtTwoPi * std::exp(-stirling);
    if (x >= a) {
        const double upper = half_erfc + r;
        if (!(upper >= kTemmeLowestTail)) return std::nullopt;
        return GammaTails{1.0 - upper, upper, density};
    }
    const double lower = half_erfc - r;
    if (!(lower >= kTemmeLowestTail)) return std::nullopt;
    return GammaTails{lower, 1.0 - lower, density};
}

// The Taylor form for a < 1, x <= kTaylorFormEnd (see the opening block).
GammaTails small_shape_taylor(double a, double g1, double x, double x_low) {
    double term = 1.0, sum = 0.0;  // S = sum (-x)^n / (n! (a + n))
    for (int n = 1; n < 40; ++n) {
        term *= -x / n;
        const double t = term / (a + n);
        sum += t;
        if (std::fabs(t) <= 0x1p-56 * std::fabs(sum)) break;
    }
    // x^a by pow (within an ulp whatever a ln x is: exp(a ln x) would carry the rounding of
    // a ln x, up to 700 ulps of it, into P); 1 - x^a by expm1 where |a ln x| is small.
    const double relative_low = x_low / x;
    const double a_log_x = a * (std::log(x) + relative_low);
    const double x_a = std::pow(x, a) * (1.0 + a * relative_low);
    const double one_minus_x_a = std::fabs(a_log_x) < 0.5 ? -std::expm1(a_log_x) : 1.0 - x_a;
    const double lead = x_a * (1.0 + g1);  // x^a / Gamma(1 + a)
    const double as = a * sum;
    const double lower = lead * (1.0 + as);
    const double upper = one_minus_x_a - g1 * x_a - lead * as;
    return {lower, upper, a * lead * std::exp(-x)};
}

// x^a e^-x / Gamma(a, x) for 0 < a < 1, x > kTaylorFormEnd (see the opening block): the
// approximants of orders 2N + 1 and 2N of the fraction with positive elements, both by
// Legendre's recurrence U_(n-1) = b_n + c_n / U_n, b_n = x - a + 2n - 1, c_n = -n (n - a),
// backwards from U_N = b_(N+1) (odd) and U_N = x + N (even), each carried division-free as
// U = p / q: a level maps (p, q) to (b_n p + c_n q, p), two levels at once to
// ((b_(n-1) b_n + c_(n-1)) p + b_(n-1) c_n q, b_n p + c_n q) (half the chain of dependent
// operations; b_(n-1) b_n is at least four times |c_(n-1)|, so nothing cancels). The value
// lies between the two: their mean, once they agree to kFractionGap.
std::optional<double> small_shape_fraction(double a, double x) {
    const double x_minus_a = x - a;
    const int band = static_cast<int>((1.0 / std::sqrt(x) + 1e-9) / kFractionDepthStep);
    int depth = kFractionDepth[std::min(band, static_cast<int>(std::size(kFractionDepth)) - 1)];
    // b_n rounded afresh at each level (a running b -= 2 would carry the rounding of the
    // deepest one, an ulp of x + 2N, to the top, where b is near x: 1e-14 at x = 1.7).
    const auto b_at = [x_minus_a](double n) { return x_minus_a + (2.0 * n - 1.0); };
    const auto c_at = [a](double n) { return -n * (n - a); };
    for (int attempt = 0; attempt <= kFractionRetries; ++attempt, depth *= 2) {
        double n = depth;
        double odd_p = b_at(n + 1.0), odd_q = 1.0;
        double even_p = x + n, even_q = 1.0;
        if (depth % 2 != 0) {  // one level, then pairs
            const double b = b_at(n), c = c_at(n);
            odd_q = std::exchange(odd_p, b * odd_p + c * odd_q);
            even_q = std::exchange(even_p, b * even_p + c * even_q);
            n -= 1.0;
        }
        for (; n >= 2.0; n -= 2.0) {
            const double b = b_at(n), c = c_at(n), b_next = b_at(n - 1.0);
            const double pp = b_next * b + c_at(n - 1.0), pq = b_next * c;
            const double odd_lower = b * odd_p + c * odd_q;
            odd_p = pp * odd_p + pq * odd_q;
            odd_q = odd_lower;
            const double even_lower = b * even_p + c * even_q;
            even_p = pp * even_p + pq * even_q;
            even_q = even_lower;
            // p grows like the product of the U_n (each below x + 2n): scaled down by a
            // power of two, exact, long before it could overflow.
            if (odd_p > 0x1p600 || even_p > 0x1p600) {
                odd_p *= 0x1p-600;
                odd_q *= 0x1p-600;
                even_p *= 0x1p-600;
                even_q *= 0x1p-600;
            }
        }
        const double odd = odd_p / odd_q, even = even_p / even_q;
        if (std::fabs(odd - even) <= kFractionGap * odd) return 0.5 * (odd + even);
    }
    return std::nullopt;
}

}  // namespace

double gamma_upper_fraction(double a, double x, int max_terms, bool* converged) {
    // Lentz's method: stands in for a zero denominator; any value far below the terms will do.
    constexpr double kTiny = 1e-300;
    double b = x + 1.0 - a;
    double c = 1.0 / kTiny, d = 1.0 / b, h = d;
    for (int n = 1; n <= max_terms; ++n) {
        const double an = -n * (n - a);
        b += 2.0;
        d = an * d + b;
        if (std::fabs(d) < kTiny) d = kTiny;
        c = b + an / c;
        if (std::fabs(c) < kTiny) c = kTiny;
        d = 1.0 / d;
        const double delta = d * c;
        h *= delta;
        // Converged once the factor is within a quarter ulp of 1.
        if (std::fabs(delta - 1.0) <= 0x1p-54) return h;
    }
    *converged = false;
    return h;
}

TwoPart gamma_deviance(double a, double x, double x_low) {
    const double d = x - a;  // exact where Loader's series is used (x/a within 10%)
    const double slope = 1.0 - a / x;
    if (std::fabs(d) < 0.1 * (x + a)) {
        // a ln(a/x) + x - a = (a - x) v + 2a (v^3/3 + v^5/5 + ...), v = (a - x)/(a + x).
        // The leading term d^2 / (x + a) in two parts (it is most of the deviance, which
        // reaches 700 in the far tails: rounded once it would be 1e-13 off there); the rest,
        // below v^2 / 3 of it, in double.
        const TwoPart total = two_sum(x, a);
        const TwoPart lead = divide(two_product(d, d), total);
        const double v = -d / total.hi;
        const double v2 = v * v;
        double s = 0.0, e = 2.0 * a * v;
        for (int j = 1; j < 60; ++j) {
            e *= v2;
            const double term = e / (2 * j + 1);
            const double next = s + term;
            if (next == s) break;
            s = next;
        }
        return add(lead, two_sum(s, slope * x_low));
    }
    const double q = x / a;
    const double q_low = (remainder_of(x, q, a) + x_low) / a;
    const TwoPart log_q = log_two_part(q, q_low);
    const TwoPart difference = add(two_sum(x, -a), TwoPart{x_low, 0.0});
    return add(difference, negate(multiply(TwoPart{a, 0.0}, log_q)));
}

namespace {

// The deviance for shapes above kGammaDoubleShapeMax with x/a in (0.6, 1.67) (|v| < 1/4):
// Loader's series with its rest in two parts too. There the rest, 2a v^3 (1/3 + v^2/5 +
// ...), reaches a tenth of the deviance and the deviance 700 (the tails down to e^-700):
// formed in double it would be 2e-14 off. v = (a - x)/(a + x) and 2a v^3 (1/3 + w) in two
// parts, w = v^2/5 + v^4/7 + ... (below 0.04 of 1/3) in double: within about 1e-18 of D
// per unit of D, 7e-16 absolute at D = 700. Where |2a v^3| <= 1 (the rest below 1/3, most
// calls near the centre) the rest in double is as good: a few ulps of 1/3.
TwoPart gamma_deviance_wide(double a, double x, double x_low) {
    constexpr TwoPart kThird{0x1.5555555555555p-2, 0x1.5555555555555p-56};
    const double d = x - a;  // exact: x/a in (0.5, 2)
    const TwoPart total = two_sum(x, a);
    const TwoPart lead = divide(two_product(d, d), total);
    const double slope_low = (1.0 - a / x) * x_low;
    if (2.0 * a * std::fabs(d) * d * d <= total.hi * total.hi * total.hi) {
        // The rest below 1/3 (|2a v^3| <= 1): in double it is within an ulp of 1/3 or so.
        const double v = -d / total.hi, v2 = v * v;
        double s = 0.0, e = 2.0 * a * v;
        for (int j = 1; j < 40; ++j) {
            e *= v2;
            const double next = s + e / (2 * j + 1);
            if (next == s) break;
            s = next;
        }
        return add(lead, two_sum(s, slope_low));
    }
    const TwoPart v = divide(TwoPart{-d, 0.0}, total);
    const TwoPart v2 = multiply(v, v);
    double w = 0.0, power = 1.0;
    for (int j = 2; j < 40; ++j) {
        power *= v2.hi;
        const double next = w + power / (2 * j + 1);
        if (next == w) break;
        w = next;
    }
    const TwoPart rest =
        multiply(multiply(multiply(v2, v), add(kThird, TwoPart{w, 0.0})), TwoPart{2.0 * a, 0.0});
    return add(add(lead, rest), TwoPart{slope_low, 0.0});
}

}  // namespace

GammaShape gamma_shape(double a) {
    GammaShape shape{a, 0.0, 0.0, 0.0};
    if (!(a > 0.0 && a < kGammaTemmeShapeMax)) return shape;
    if (a < 1.0) {
        shape.reciprocal_gamma_minus_1 = reciprocal_gamma_1p_minus_1(a);
        shape.scale = 1.0 + shape.reciprocal_gamma_minus_1;
    } else if (a < kStirlingFormFrom) {
        shape.scale = reciprocal_gamma_1p(a);
    } else {
        shape.stirling = stirling_error(a);  // 1/sqrt(2 pi a) is left to the one path using it
    }
    return shape;
}

std::optional<GammaTails> incomplete_gamma_double(double a, double x, double x_low) {
    return incomplete_gamma_double(gamma_shape(a), x, x_low);
}

std::optional<GammaTails> incomplete_gamma_double(const GammaShape& shape, double x, double x_low) {
    const double a = shape.a;
    if (!(a > 0.0 && a < kGammaTemmeShapeMax) || !std::isnormal(x) || !std::isfinite(x))
        return std::nullopt;
    std::optional<TwoPart> deviance;  // formed once, for Temme's expansion or the prefactor
    if (a > kGammaDoubleShapeMax) {
        // Temme's expansion only; |eta| <= 1/2 lies inside x/a in (0.6, 1.67).
        if (!(std::fabs(x - a) < 0.25 * (x + a))) return std::nullopt;
        const TwoPart wide = gamma_deviance_wide(a, x, x_low);
        if (!(wide.hi <= 0.5 * kTemmeEtaMax * kTemmeEtaMax * a)) return std::nullopt;
        return temme_expansion(a, x, wide, shape.stirling);
    }
    if (a >= kTemmeShapeMin) {
        deviance = gamma_deviance(a, x, x_low);
        if (deviance->hi <= 0.5 * kTemmeEtaMax * kTemmeEtaMax * a)
            return temme_expansion(a, x, *deviance, shape.stirling);
    }
    if (a < 1.0 && x <= kTaylorFormEnd) {
        const GammaTails tails = small_shape_taylor(a, shape.reciprocal_gamma_minus_1, x, x_low);
        if (!(tails.lower >= 0x1p-1022 && tails.upper >= 0x1p-1022)) return std::nullopt;
        return tails;
    }
    const bool upper = x >= a || a < 1.0;
    // g = x^a e^-x / Gamma(a + 1).
    double g = 0.0;
    if (a < kStirlingFormFrom && x < kDirectPowerEnd) {
        g = std::pow(x, a) * std::exp(-x) * shape.scale * (1.0 + (a / x - 1.0) * x_low);
    } else {
        TwoPart exponent{};
        if (a < kStirlingFormFrom) {
            const TwoPart a_log_x = multiply(TwoPart{a, 0.0}, log_two_part(x, x_low));
            exponent = add(a_log_x, TwoPart{-x, -x_low});
        } else {
            if (!deviance) deviance = gamma_deviance(a, x, x_low);
            exponent = negate(add(*deviance, TwoPart{shape.stirling, 0.0}));
        }
        if (exponent.hi < kLowestExponent) return std::nullopt;
        g = exp_two_part(exponent) *
            (a < kStirlingFormFrom ? shape.scale : 1.0 / std::sqrt(2.0 * std::numbers::pi * a));
    }
    // A smaller prefactor would leave the tails' normal range (the fraction is at least
    // 1/(x + 1), x < 710 here).
    if (!(g >= kLowestPrefactor)) return std::nullopt;
    bool converged = true;
    double tail = 0.0;
    if (a < 1.0) {  // x > kTaylorFormEnd here
        const auto fraction = small_shape_fraction(a, x);
        if (!fraction) return std::nullopt;
        tail = a * g / *fraction;
    } else if (upper) {
        tail = a * g * gamma_upper_fraction(a, x, kMaxTerms, &converged);
    } else {
        tail = g * lower_series(a, x, &converged);
    }
    // A small shape can carry the tail below the normal range (a g with a near 1e-300).
    if (!converged || !(tail >= 0x1p-1022) || !std::isfinite(tail)) return std::nullopt;
    return upper ? GammaTails{1.0 - tail, tail, a * g} : GammaTails{tail, 1.0 - tail, a * g};
}

namespace {

// From here on erfc(z) e^(z^2) comes from its asymptotic series (erfc itself leaves the normal
// range near z = 26.5).
constexpr double kErfcxSeriesFrom = 26.0;

// erfc(z) e^(z^2) for z >= kErfcxSeriesFrom: (1 / (z sqrt(pi))) sum_k (-1)^k (2k - 1)!! /
// (2 z^2)^k (DLMF 7.12.1); its terms fall by (2k + 1) / (2 z^2) < 0.03 each up to k = 10, the
// tenth below 1e-22 of the sum.
double erfcx_large(double z) {
    const double t = 0.5 / (z * z);
    double term = 1.0, sum = 1.0;
    for (int k = 1; k <= 10; ++k) {
        term *= -(2.0 * k - 1.0) * t;
        sum += term;
    }
    return sum / (z * 1.7724538509055160273);
}

// ln P(a, x), x < a, within Temme's region: P = e^-D (erfc(z) e^D / 2 - dz / sqrt(pi) - T /
// sqrt(2 pi a)), z + dz = sqrt(D) in two parts, T = temme_sum: the bracket as temme_expansion
// forms it divided by e^-D (so the same value where both apply), its logarithm joined to -D.
std::optional<TwoPart> temme_log_lower(double a, TwoPart deviance) {
    constexpr double kInvSqrtPi = 0.56418958354775628695;
    constexpr double kInvSqrtTwoPi = 0.39894228040143267794;
    const double z = std::sqrt(deviance.hi);
    const double eta = -z * std::sqrt(2.0 / a);
    const double rest = z > 0.0 ? remainder_of(deviance.hi, z, z) : 0.0;  // D.hi - z^2
    const double dz = z > 0.0 ? (rest + deviance.lo) / (2.0 * z) : 0.0;
    const double half_erfcx = z < kErfcxSeriesFrom
                                  ? 0.5 * std::erfc(z) / exp_two_part(negate(deviance))
                                  : 0.5 * erfcx_large(z) * (1.0 + (rest + deviance.lo));
    const double bracket =
        half_erfcx - dz * kInvSqrtPi - temme_sum(a, eta) * kInvSqrtTwoPi / std::sqrt(a);
    if (!(bracket > 0.0) || !std::isfinite(bracket)) return std::nullopt;
    return add(negate(deviance), log_two_part(bracket, 0.0));
}

}  // namespace

std::optional<TwoPart> incomplete_gamma_log_lower(double a, double x) {
    if (!(a >= 1.0 && a < kGammaTemmeShapeMax) || !std::isnormal(x) || !(x < a))
        return std::nullopt;
    if (a > kGammaDoubleShapeMax) {
        if (!(std::fabs(x - a) < 0.25 * (x + a))) return std::nullopt;
        const TwoPart wide = gamma_deviance_wide(a, x, 0.0);
        if (!(wide.hi <= 0.5 * kTemmeEtaMax * kTemmeEtaMax * a)) return std::nullopt;
        return temme_log_lower(a, wide);
    }
    TwoPart exponent{};
    double factor = 0.0;
    if (a < kStirlingFormFrom) {
        exponent = add(multiply(TwoPart{a, 0.0}, log_two_part(x, 0.0)), TwoPart{-x, 0.0});
        factor = reciprocal_gamma_1p(a);
    } else {
        const TwoPart deviance = gamma_deviance(a, x, 0.0);
        if (a >= kTemmeShapeMin && deviance.hi <= 0.5 * kTemmeEtaMax * kTemmeEtaMax * a)
            return temme_log_lower(a, deviance);
        exponent = negate(add(deviance, TwoPart{stirling_error(a), 0.0}));
        factor = 1.0 / std::sqrt(2.0 * std::numbers::pi * a);
    }
    bool converged = true;
    const double series = lower_series(a, x, &converged);
    if (!converged) return std::nullopt;
    return add(exponent, log_two_part(factor * series, 0.0));
}

}  // namespace zemath::numeric
