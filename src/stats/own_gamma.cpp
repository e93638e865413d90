// The library's own gamma function, its logarithm, the polygamma functions psi^(k),
// k = 0..6, and the regularised lower incomplete gamma function P(a, x).
//
// Method:
// - ln Gamma: the Taylor series of ln Gamma(1 + z) about 0 (A&S 6.1.33, coefficients
//   zeta(k) - 1, so the terms fall like (z/2)^k),
//       ln Gamma(1 + z) = z (1 - gamma) - log1p(z) + sum_k (-1)^k (zeta(k) - 1) z^k / k,
//   for x < 1.5 (z = x - 1, or z = x and minus ln x below 1/2) and, with log1p(z) dropped,
//   for ln Gamma(2 + z), 1.5 <= x < 2.5: relative accuracy through the zeros at 1 and 2.
//   From 2.5 to 10 the recurrence down into [1.5, 2.5); from 10 Stirling's series with
//   Bernoulli numbers (DLMF 5.11.1, at most 20 terms).
// - Gamma: for x >= 10 Stirling's form sqrt(2 pi) x^(x - 1/2) e^(-x) e^(series), the
//   power split in two halves so that it does not overflow before the exponential; for
//   0 < x < 10 the recurrence up to x + n >= 10 (each factor rounded once); negative x
//   by Gamma(x) Gamma(-x) = -pi / (x sin(pi x)) with -x exact and sin(pi x) reduced
//   exactly to [-1/2, 1/2].
// - psi^(k): the recurrence psi^(k)(x) = psi^(k)(x + 1) - (-1)^k k! / x^(k + 1) up to
//   x + n >= 20, then the asymptotic series in Bernoulli numbers (DLMF 5.15.8, at most 20
//   terms). Negative x takes the same recurrence (up to 1e6 steps; below -1e6 the
//   result is refused). Near the positive zero of psi, x0 = 1.4616..., the Taylor series
//   about x0 (|x - x0| < 0.25, x0 held in two parts) keeps relative accuracy.
// - P(a, x): the series x^a e^-x / Gamma(a + 1) * sum x^n / ((a+1)...(a+n)) for
//   x < a + 1, otherwise 1 - Q with Legendre's continued fraction for Q (its even
//   contraction, by the forward recurrence of numerators and denominators; independent of
//   the back end's kernel, which takes the modified Lentz form).
//   The prefactor x^a e^-x / Gamma(a + 1) is formed for a >= 10 as
//   e^(-a phi(x/a) - mu(a)) / sqrt(2 pi a), phi(l) = l - 1 - ln l, mu the Stirling
//   correction, with a phi(x/a) = (x - a) - a ln(x/a) in double-double arithmetic (the
//   logarithm by an atanh series in two parts), so that neither the cancellation of the
//   two terms nor the size of the exponent (up to 700) costs digits; below a = 10
//   directly from x^a e^-x / Gamma(a + 1).
// Switch points: 0.5, 1.5, 2.5 and 10 (ln Gamma); 10 (Gamma); 20 and |x - x0| < 0.25
// (psi); x = a + 1 and a = 10 (P).
// Accuracy against 50-digit references (tests/stats/special_own_test.cpp): see the
// worst-error table tests/reference/special_own_worst_errors.txt.
// Domain (NANUM outside): Gamma at 0 and the negative integers, x >= 171.62, x < -170
// and |x| < 1/DBL_MAX; ln Gamma for x <= 0 and x > 2.55e305; psi^(k) for k outside
// 0..6, x a non-positive integer, x < -1e6, or an overflowing result; P for a <= 0,
// x < 0, or a series or continued fraction that fails to converge within its cap.
// References: Abramowitz and Stegun 6.1.33; DLMF 5.5.3, 5.11.1, 5.15.8, 8.7.1, 8.9.2.
#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>

#include "core/missing.hpp"
#include "platform/numeric/double_double.hpp"
#include "stats/own_special.hpp"

namespace zemath::own {

namespace {

#include "stats/own_special_coefficients.inc"

constexpr double kEulerGamma = std::numbers::egamma;
constexpr double kHalfLogTwoPi = 0.91893853320467274178;  // ln sqrt(2 pi)
constexpr double kGammaOverflow = 171.62437695630271;
constexpr double kGammaUnderflow = -170.0;
constexpr double kLogGammaLimit = 2.55e305;
constexpr double kStirlingFrom = 10.0;
constexpr double kPsiAsymptoticFrom = 20.0;
constexpr double kPsiMostNegative = -1e6;
constexpr double kPsiRootRadius = 0.25;

// sum_{k>=2} (-1)^k (zeta(k) - 1) z^k / k, |z| <= 1/2 (terms below (z/2)^k / k).
double zeta_tail(double z) {
    double power = z * z, sum = 0.0;
    for (int k = 2; k < kZetaCount; ++k) {
        const double term = kZetaMinusOne[k] * power / k;
        sum += (k % 2 == 0) ? term : -term;
        // A term below 1e-18 of the sum (a hundredth of an ulp) no longer changes it.
        if (std::fabs(term) < 1e-18 * std::fabs(sum)) break;
        power *= z;
    }
    return sum;
}

// ln Gamma(1 + z), |z| <= 1/2.
double log_gamma_1p(double z) {
    return z * (1.0 - kEulerGamma) - std::log1p(z) + zeta_tail(z);
}

// ln Gamma(2 + z), |z| <= 1/2.
double log_gamma_2p(double z) {
    return z * (1.0 - kEulerGamma) + zeta_tail(z);
}

// Stirling's correction mu(x) = ln Gamma(x) - (x - 1/2) ln x + x - ln sqrt(2 pi), x >= 10.
double stirling_correction(double x) {
    const double r = 1.0 / (x * x);
    double power = 1.0 / x, sum = 0.0;
    for (int j = 1; j < kBernoulliCount; ++j) {
        const double term = kBernoulliEven[j] / (2.0 * j * (2 * j - 1)) * power;
        sum += term;
        // A term below 1e-18 of the sum (a hundredth of an ulp) no longer changes it.
        if (std::fabs(term) < 1e-18 * std::fabs(sum)) break;
        power *= r;
    }
    return sum;
}

// Gamma(x) for x >= kStirlingFrom.
double gamma_stirling(double x) {
    const double half = std::pow(x, 0.5 * (x - 0.5));
    return std::sqrt(2.0 * std::numbers::pi) * half * (half * std::exp(-x)) *
           std::exp(stirling_correction(x));
}

// Gamma(x), 0 < x < kGammaOverflow.
double gamma_positive(double x) {
    if (x >= kStirlingFrom) return gamma_stirling(x);
    double product = 1.0, y = x;
    while (y < kStirlingFrom) {  // at most 10 steps: x > 0
        product *= y;
        y += 1.0;
    }
    return gamma_stirling(y) / product;
}

// sin(pi x) with x reduced exactly to f in [-1/2, 1/2] about the nearest integer.
double sin_pi(double x) {
    const double n = std::nearbyint(x);
    const double f = x - n;
    const double s = std::sin(std::numbers::pi * f);
    return std::fmod(n, 2.0) == 0.0 ? s : -s;
}

double finite_or_nanum(double v) {
    return std::isfinite(v) ? v : NANUM;
}

// (-1)^(k+1) times the asymptotic series of psi^(k)(y), y >= kPsiAsymptoticFrom, k >= 1,
// or psi(y) itself for k = 0.
double polygamma_asymptotic(double y, int k) {
    const double r = 1.0 / (y * y);
    if (k == 0) {
        double power = r, sum = 0.0;
        for (int j = 1; j < kBernoulliCount; ++j) {
            const double term = kBernoulliEven[j] / (2.0 * j) * power;
            sum += term;
            // A term below 1e-18 of the sum (a hundredth of an ulp) no longer changes it.
            if (std::fabs(term) < 1e-18 * std::fabs(sum)) break;
            power *= r;
        }
        return std::log(y) - 0.5 / y - sum;
    }
    // (k-1)!/y^k + k!/(2 y^(k+1)) + sum_j B_2j (2j + k - 1)!/(2j)! / y^(2j + k)
    double factorial = 1.0;  // (k - 1)!
    for (int i = 2; i < k; ++i) factorial *= i;
    const double yk = std::pow(y, k);
    double sum = factorial / yk + factorial * k / (2.0 * yk * y);
    double ratio = factorial * k;  // (2j + k - 1)! / (2j)! for j = 1 after the update
    double power = 1.0 / (yk * y * y);
    for (int j = 1; j < kBernoulliCount; ++j) {
        // (2j + k - 1)!/(2j)! from (2j + k - 3)!/(2j - 2)!
        if (j == 1) {
            ratio = factorial;  // (k + 1)! / 2!: built below
            ratio = 1.0;
            for (int i = 3; i <= k + 1; ++i) ratio *= i;
        } else {
            ratio *=
                static_cast<double>(2 * j + k - 2) * (2 * j + k - 1) / ((2.0 * j - 1) * (2.0 * j));
        }
        const double term = kBernoulliEven[j] * ratio * power;
        sum += term;
        // A term below 1e-18 of the sum (a hundredth of an ulp) no longer changes it.
        if (std::fabs(term) < 1e-18 * std::fabs(sum)) break;
        power *= r;
    }
    return (k % 2 == 1) ? sum : -sum;
}

// psi(x) near its positive zero: the Taylor series about x0.
double digamma_near_root(double x) {
    const double d = (x - kDigammaRootHi) - kDigammaRootLo;
    double sum = 0.0;
    for (int j = kDigammaTaylorCount - 1; j >= 1; --j) sum = sum * d + kDigammaRootTaylor[j];
    return sum * d;
}

}  // namespace

double log_gamma(double x) {
    if (detail::unusable(x) || x <= 0.0 || x > kLogGammaLimit) return NANUM;
    if (x < 0.5) return log_gamma_1p(x) - std::log(x);
    if (x < 1.5) return log_gamma_1p(x - 1.0);
    if (x < 2.5) return log_gamma_2p(x - 2.0);
    if (x < kStirlingFrom) {
        double y = x, product = 1.0;
        while (y >= 2.5) {  // at most 8 steps
            y -= 1.0;
            product *= y;
        }
        return log_gamma_2p(y - 2.0) + std::log(product);
    }
    const double lx = std::log(x);
    return x * (lx - 1.0) - 0.5 * lx + kHalfLogTwoPi + stirling_correction(x);
}

double gamma(double x) {
    if (detail::unusable(x) || x >= kGammaOverflow || x < kGammaUnderflow) return NANUM;
    if (std::fabs(x) < 1.0 / std::numeric_limits<double>::max()) return NANUM;
    if (x > 0.0) return finite_or_nanum(gamma_positive(x));
    if (x == std::floor(x)) return NANUM;  // pole
    // Near 0 the reflection's product x sin(pi x) underflows: Gamma(1 + x) / x, where
    // 1 + x is exact from -1 to -1/2 and psi(1 + x) is small above.
    if (x > -1.0) return finite_or_nanum(gamma_positive(1.0 + x) / x);
    // Gamma(x) Gamma(-x) = -pi / (x sin(pi x)).
    return finite_or_nanum(-std::numbers::pi / (x * sin_pi(x) * gamma_positive(-x)));
}

double polygamma(double x, int k) {
    if (detail::unusable(x) || k < 0 || k > 6 || x < kPsiMostNegative) return NANUM;
    if (x <= 0.0 && x == std::floor(x)) return NANUM;
    if (k == 0 && std::fabs(x - kDigammaRootHi) < kPsiRootRadius) return digamma_near_root(x);
    // psi^(k)(x) = psi^(k)(x + n) - (-1)^k k! sum_{i<n} (x + i)^-(k+1)
    double factorial = 1.0;
    for (int i = 2; i <= k; ++i) factorial *= i;
    double sum = 0.0, y = x;
    while (y < kPsiAsymptoticFrom) {  // bounded: x >= -1e6
        sum += 1.0 / std::pow(y, k + 1);
        y += 1.0;
    }
    const double sign = (k % 2 == 0) ? 1.0 : -1.0;
    return finite_or_nanum(polygamma_asymptotic(y, k) - sign * factorial * sum);
}

namespace {}  // namespace

// ln v to twice double precision, v > 0 normal: v = 2^e f with f in [3/4, 3/2), u = f - 1
// exact, ln f = 2 atanh(s) = 2 (s + s^3/3 + s^5/5 + ...), s = u/(2 + u), every step in
// two parts (|s| < 1/5: at most 25 terms for 2^-106).
numeric::TwoPart detail::log_two_double(double v) {
    using namespace numeric;
    int e = 0;
    double f = std::frexp(v, &e);
    if (f < 0.75) {
        f *= 2.0;
        --e;
    }
    const double u = f - 1.0;
    const TwoPart den = two_sum(2.0, u);
    const double s_hi = u / den.hi;
    const double s_lo = (std::fma(-s_hi, den.hi, u) - s_hi * den.lo) / den.hi;
    const TwoPart s_two{s_hi, s_lo};
    const TwoPart s2 = multiply(s_two, s_two);
    TwoPart power = s_two, atanh = s_two;
    for (int m = 1; m < 40; ++m) {
        power = multiply(power, s2);
        const double d = 2.0 * m + 1.0;
        const double q = power.hi / d;  // power / d in two parts
        const TwoPart p = two_product(q, d);
        const TwoPart term = quick_two_sum(q, ((power.hi - p.hi) - p.lo + power.lo) / d);
        atanh = add(atanh, term);
        // The sum is two-part (about 106 bits, 1e-32): a term below 1e-33 of it no longer changes
        // it.
        if (std::fabs(term.hi) <= 1e-33 * std::fabs(s_hi)) break;
    }
    const TwoPart ln_f{2.0 * atanh.hi, 2.0 * atanh.lo};
    constexpr double kLn2Hi = 0.6931471805599453;      // ln 2 rounded to double
    constexpr double kLn2Lo = 2.3190468138462996e-17;  // ln 2 - kLn2Hi
    const double de = static_cast<double>(e);
    return add(add(two_product(de, kLn2Hi), TwoPart{de * kLn2Lo, 0.0}), ln_f);
}

namespace {

// x^a e^-x / Gamma(a + 1), a > 0, x > 0.
double power_prefactor(double a, double x) {
    if (a < kStirlingFrom) {
        const double g = gamma_positive(a + 1.0);
        const double logp = a * std::log(x) - x;
        if (logp < 700.0 && logp > -700.0) return std::pow(x, a) * std::exp(-x) / g;
        return std::exp(logp - std::log(g));
    }
    // x^a e^-x / (a Gamma(a)) = e^(-E - mu(a)) / sqrt(2 pi a) with the exponent
    // E = a phi(x/a) = (x - a) - a ln(x/a), phi(l) = l - 1 - ln l. E is formed in two
    // parts: the two terms cancel as x nears a, and a rounding of E to one double would
    // cost up to half an ulp of a number near 700 (6e-14 of the result). ln(x/a) =
    // ln(l) + remainder/(a l) with l = x/a and the exact remainder x - a l.
    using namespace numeric;
    const double l = x / a;
    const double remainder = std::fma(-l, a, x);
    const TwoPart log_ratio = add(detail::log_two_double(l), TwoPart{remainder / x, 0.0});
    TwoPart exponent = add(two_sum(x, -a), negate(multiply(TwoPart{a, 0.0}, log_ratio)));
    exponent = add(exponent, TwoPart{stirling_correction(a), 0.0});
    return exp_two_part(negate(exponent)) / std::sqrt(2.0 * std::numbers::pi * a);
}

// sum x^n / ((a+1)...(a+n)), x < a + 1.
double lower_series(double a, double x) {
    constexpr int kCap = 100000;
    double term = 1.0, sum = 1.0;
    for (int n = 1; n <= kCap; ++n) {
        term *= x / (a + n);
        sum += term;
        // A term below 1e-17 of the sum (a tenth of an ulp) no longer changes it.
        if (term < sum * 1e-17) return sum;
    }
    return std::nan("");
}

// Q(a, x) / (x^a e^-x / Gamma(a)), x >= a + 1: Legendre's continued fraction in its even
// contraction,
//     1/(x + 1 - a - 1(1 - a)/(x + 3 - a - 2(2 - a)/(x + 5 - a - ...))),
// by the forward (Wallis-Euler) recurrence of its numerators and denominators,
//     A_k = b_k A_(k-1) + c_k A_(k-2),  B_k likewise,  b_k = x + 2k - 1 - a,
//     c_k = -(k - 1)(k - 1 - a),
// rescaled by 2^-500 (exactly) whenever B passes 2^500. The step between convergents needs
// no division: A_k B_(k-1) - A_(k-1) B_k = -c_k times its predecessor (1 at k = 1), so
// the determinant is carried by one product per step, and the fraction has converged once
// it is within a quarter ulp of A_k B_(k-1) (the convergents then differ by a quarter ulp);
// one division at the end. The partial denominators outgrow the numerators (b_k^2 >= 4 |c_k|
// once x >= a + 1), so the recurrence is stable: measured within 2e-15 of the fraction up to
// a = 1e5 at x = a + 1 (the slowest place, about 1.4 sqrt(a) steps); 9e-15 for a < 1 near
// x = 1, where Q is under 0.2 of P's size. NaN when it does not settle within 100000 steps.
double upper_fraction(double a, double x) {
    constexpr int kCap = 100000;
    constexpr double kRescaleAbove = 0x1p500, kRescale = 0x1p-500, kRescaleSquared = 0x1p-1000;
    double b = x + 1.0 - a;
    double a_prev = 0.0, b_prev = 1.0;  // A_0, B_0
    double a_cur = 1.0, b_cur = b;      // A_1, B_1
    double determinant = 1.0;           // A_1 B_0 - A_0 B_1
    for (int k = 2; k <= kCap; ++k) {
        const double n = k - 1;
        const double c = -n * (n - a);
        b += 2.0;
        const double a_next = b * a_cur + c * a_prev;
        const double b_next = b * b_cur + c * b_prev;
        a_prev = a_cur;
        b_prev = b_cur;
        a_cur = a_next;
        b_cur = b_next;
        determinant *= -c;
        if (std::fabs(b_cur) > kRescaleAbove) {
            a_prev *= kRescale;
            b_prev *= kRescale;
            a_cur *= kRescale;
            b_cur *= kRescale;
            determinant *= kRescaleSquared;
        }
        if (std::fabs(determinant) <= 0x1p-54 * std::fabs(a_cur * b_prev)) {
            const double value = a_cur / b_cur;
            return std::isfinite(value) ? value : std::nan("");
        }
    }
    return std::nan("");
}

}  // namespace

double incomplete_gamma_lower(double a, double x) {
    if (detail::unusable(a) || detail::unusable(x) || a <= 0.0 || x < 0.0) return NANUM;
    if (x == 0.0) return 0.0;
    const double prefactor = power_prefactor(a, x);
    double p;
    if (x < a + 1.0) {
        p = prefactor * lower_series(a, x);
    } else {
        p = 1.0 - prefactor * a * upper_fraction(a, x);  // x^a e^-x / Gamma(a) = a * prefactor
    }
    // The series can round a hair past 1 where P is within an ulp of it (a near 0: P(1e-286,
    // 0.17) came out 1 + 2^-52); P is a probability.
    return std::isfinite(p) ? std::clamp(p, 0.0, 1.0) : NANUM;
}

}  // namespace zemath::own
