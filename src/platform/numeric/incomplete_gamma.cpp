// The regularised incomplete gamma functions in double arithmetic, for shapes 1 .. 100
// (and the upper side x >= a + 1 of smaller shapes).
//
// Method. The smaller tail is computed directly, the other as 1 minus it (at least 0.36
// there, so no digit is lost):
//   x <  a: P(a, x) = g * sum_n x^n / ((a+1)...(a+n))            (all terms positive)
//   x >= a: Q(a, x) = a g / (x + 1 - a - 1(1 - a)/(x + 3 - a - 2(2 - a)/(...)))
//           (Legendre's continued fraction, modified Lentz),
// with the prefactor g = x^a e^-x / Gamma(a + 1). The sum and the fraction are well
// conditioned (their relative error is a few ulps times the square root of the number of
// terms, at most about 90 near x = a = 100); the prefactor is where rounding is magnified:
// its logarithm reaches -700 in the far tails, and an error of d absolute there is an error
// d relative in the result. So the exponent is formed in two parts:
//   a < 16:  a ln(x + x_low) - x, the logarithm in two parts (double_double.hpp, 3e-18
//            absolute), and 1/Gamma(a + 1) outside the exponent from gamma_moderate (a few
//            ulps: relative accuracy, where its lnGamma would give ulps of values up to 31);
//   a >= 16: -(a phi(x/a) + stirling_error(a)) - ln sqrt(2 pi a), phi(l) = l - 1 - ln l,
//            the deviance a phi in two parts (Loader's series when x is within 10% of a,
//            where it is small and relatively accurate; otherwise x - a and a ln(x/a) in
//            two parts, 3e-18 a absolute) and Stirling's error term within 3e-17.
// The argument's own rounding error x_low enters the exponent through its derivative
// (a/x - 1) x_low; the sum and the fraction do not need it (relative sensitivity below 1).
// Error bound, relative, on each tail below 1/2: about 3e-15 for a < 16 (the
// Gamma), 1e-15 + 3e-18 a above, plus the rounding of the sum (2e-15 at a = 100); the
// tail above 1/2 is within 2 ulps of 1 minus it. Measured against mpmath: see
// tests/reference/distributions_central_worst_errors.txt.
// Why 100: the sum and the fraction take up to about 9 sqrt(a) terms at x near a, so beyond
// a few hundred the extended-precision evaluation (uniform asymptotic expansion) is as fast.
// References: DLMF 8.7.1 (series), 8.9.2 (continued fraction); Loader (2000), "Fast and
// accurate computation of binomial probabilities" (the deviance); Press et al., Numerical
// Recipes, 6.2 (the modified Lentz method).
#include "platform/numeric/incomplete_gamma.hpp"

#include <cmath>
#include <numbers>

#include "platform/numeric/stirling.hpp"

namespace zemath::numeric {

namespace {

constexpr int kMaxTerms = 1000;  // 9 sqrt(100) = 90 are needed at most
constexpr double kStirlingFormFrom = 16.0;
// Below this exponent the prefactor is subnormal or underflows: declined.
constexpr double kLowestExponent = -700.0;

// sum_n x^n / ((a+1)...(a+n)), x < a: terms shrink from the first.
double lower_series(double a, double x, bool* converged) {
    double term = 1.0, sum = 1.0;
    for (int n = 1; n <= kMaxTerms; ++n) {
        term *= x / (a + n);
        sum += term;
        if (term <= sum * 0x1p-55) return sum;
    }
    *converged = false;
    return sum;
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
    const bool upper = x >= a;
    if (a < 1.0 && x < a + 1.0) return std::nullopt;
    // The exponent of g = x^a e^-x / Gamma(a + 1).
    TwoPart exponent{};
    double scale = 1.0;
    if (a < kStirlingFormFrom) {
        const TwoPart a_log_x = multiply(TwoPart{a, 0.0}, log_two_part(x, x_low));
        exponent = add(a_log_x, TwoPart{-x, -x_low});
        scale = 1.0 / (a * gamma_moderate(a));
    } else {
        exponent = negate(add(gamma_deviance(a, x, x_low), TwoPart{stirling_error(a), 0.0}));
        scale = 1.0 / std::sqrt(2.0 * std::numbers::pi * a);
    }
    if (exponent.hi < kLowestExponent) return std::nullopt;
    const double g = exp_two_part(exponent) * scale;
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
