// The regularised incomplete gamma functions in double arithmetic, for shapes up to 1000.
//
// Method, by region (g = x^a e^-x / Gamma(a + 1) the prefactor):
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
//   otherwise the smaller tail directly, the other as 1 minus it (at least 0.36 there):
//     x <  a: P = g * sum_n x^n / ((a+1)...(a+n))   (positive terms, summed in pairs: one
//             division per two terms);
//     x >= a or a < 1: Q = a g / (x + 1 - a - 1(1 - a)/(x + 3 - a - 2(2 - a)/(...)))
//             (Legendre's continued fraction by the modified Lentz method: the forward
//             recurrence of its convergents, division-free, drifts by an ulp every few terms
//             once converged, 3e-14 after the hundred terms x = 1.7 takes at a = 0.1).
//     The sum and the fraction are well conditioned (a few ulps times the square root of
//     the number of terms, at most about 280 near x = a = 1000); the prefactor is where
//     rounding is magnified (its logarithm reaches -700 in the far tails), so:
//     a < 16 and x < 690: g = pow(x, a) e^-x (1/Gamma(1 + f)) / (a (a - 1) ... (f + 1)),
//             f = a - floor(a): pow and exp are within an ulp whatever the size of the
//             exponent, the factors a - k are exact and 1/Gamma(1 + f) = 1 + f h(f) as
//             above: about 2 + floor(a)/2 ulps;
//     a < 16 beyond: the exponent a ln(x + x_low) - x in two parts (double_double.hpp,
//             3e-18 absolute) and the same 1/Gamma(a + 1);
//     a >= 16: -(a phi(x/a) + stirling_error(a)) - ln sqrt(2 pi a), phi(l) = l - 1 - ln l,
//             the deviance a phi in two parts (Loader's series when x is within 10% of a,
//             where it is small and relatively accurate; otherwise x - a and a ln(x/a) in
//             two parts, 3e-18 a absolute) and Stirling's error term within 3e-17.
// The argument's own rounding error x_low enters through the exponent's derivative
// (a/x - 1) x_low (and a x_low / x in the Taylor form).
// Error bound, relative, on each tail below 1/2: about 2e-15 for a < 16, 1e-15 + 3e-18 a
// above, plus the rounding of the sum or fraction (3e-15 at a = 1000); the tail above 1/2
// is within 2 ulps of 1 minus it; the Taylor form as stated. Measured against mpmath:
// tests/reference/incomplete_gamma_ref.inc (tests/platform) and the distribution tables.
// Why 1000: the sum and the fraction take about 9 sqrt(a) terms at x near a, so beyond a
// thousand the extended evaluation (uniform asymptotic expansion) is as fast.
// References: DLMF 8.7.1 (series), 8.7.3 and 8.9.2 (continued fraction); W. Gautschi (1979),
// "A computational procedure for incomplete gamma functions", ACM TOMS 5; A. R. DiDonato and
// A. H. Morris (1986), ACM TOMS 12, Algorithm 654 (the Taylor form of Q for small shapes);
// Loader (2000), "Fast and accurate computation of binomial probabilities" (the deviance).
#include "platform/numeric/incomplete_gamma.hpp"

#include <cmath>
#include <iterator>
#include <numbers>

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
// Below this x, e^-x is normal and pow(x, a) e^-x needs no two-part exponent.
constexpr double kDirectPowerEnd = 690.0;

#include "platform/numeric/incomplete_gamma_coefficients.inc"

// 1/Gamma(1 + f) - 1, 0 <= f <= 1: relatively accurate as f -> 0.
double reciprocal_gamma_1p_minus_1(double f) {
    double h = kReciprocalGammaFit[0];
    for (int k = 1; k < static_cast<int>(std::size(kReciprocalGammaFit)); ++k)
        h = h * f + kReciprocalGammaFit[k];
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

// The Taylor form for a < 1, x <= kTaylorFormEnd (see the opening block).
GammaTails small_shape_taylor(double a, double x, double x_low) {
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
    const double g1 = reciprocal_gamma_1p_minus_1(a);
    const double lead = x_a * (1.0 + g1);  // x^a / Gamma(1 + a)
    const double as = a * sum;
    const double lower = lead * (1.0 + as);
    const double upper = one_minus_x_a - g1 * x_a - lead * as;
    return {lower, upper, a * lead * std::exp(-x)};
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
        const double v = -d / (x + a);
        const double v2 = v * v;
        double s = -d * v, e = 2.0 * a * v;
        for (int j = 1; j < 60; ++j) {
            e *= v2;
            const double term = e / (2 * j + 1);
            const double next = s + term;
            if (next == s) break;
            s = next;
        }
        return two_sum(s, slope * x_low);
    }
    const double q = x / a;
    const double q_low = (std::fma(-q, a, x) + x_low) / a;
    const TwoPart log_q = log_two_part(q, q_low);
    const TwoPart difference = add(two_sum(x, -a), TwoPart{x_low, 0.0});
    return add(difference, negate(multiply(TwoPart{a, 0.0}, log_q)));
}

std::optional<GammaTails> incomplete_gamma_double(double a, double x, double x_low) {
    if (!(a > 0.0 && a <= kGammaDoubleShapeMax) || !std::isnormal(x) || !std::isfinite(x))
        return std::nullopt;
    if (a < 1.0 && x <= kTaylorFormEnd) {
        const GammaTails tails = small_shape_taylor(a, x, x_low);
        if (!(tails.lower >= 0x1p-1022 && tails.upper >= 0x1p-1022)) return std::nullopt;
        return tails;
    }
    const bool upper = x >= a || a < 1.0;
    // g = x^a e^-x / Gamma(a + 1).
    double g = 0.0;
    if (a < kStirlingFormFrom && x < kDirectPowerEnd) {
        g = std::pow(x, a) * std::exp(-x) * reciprocal_gamma_1p(a) * (1.0 + (a / x - 1.0) * x_low);
    } else {
        TwoPart exponent{};
        double scale = 1.0;
        if (a < kStirlingFormFrom) {
            const TwoPart a_log_x = multiply(TwoPart{a, 0.0}, log_two_part(x, x_low));
            exponent = add(a_log_x, TwoPart{-x, -x_low});
            scale = reciprocal_gamma_1p(a);
        } else {
            exponent = negate(add(gamma_deviance(a, x, x_low), TwoPart{stirling_error(a), 0.0}));
            scale = 1.0 / std::sqrt(2.0 * std::numbers::pi * a);
        }
        if (exponent.hi < kLowestExponent) return std::nullopt;
        g = exp_two_part(exponent) * scale;
    }
    // A smaller prefactor would leave the tails' normal range (the fraction is at least
    // 1/(x + 1), x < 710 here).
    if (!(g >= kLowestPrefactor)) return std::nullopt;
    bool converged = true;
    double tail = 0.0;
    if (upper) {
        tail = a * g * gamma_upper_fraction(a, x, kMaxTerms, &converged);
    } else {
        tail = g * lower_series(a, x, &converged);
    }
    if (!converged || !std::isfinite(tail)) return std::nullopt;
    return upper ? GammaTails{1.0 - tail, tail, a * g} : GammaTails{tail, 1.0 - tail, a * g};
}

}  // namespace zemath::numeric
