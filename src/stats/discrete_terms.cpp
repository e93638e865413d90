// Point probabilities of the binomial and Poisson laws.
//
// Method: for small counts the defining products, term by term; for large ones the same
// expressions regrouped after Loader (2000, "Fast and accurate computation of binomial
// probabilities"): ln C(n, x) + x ln p + (n-x) ln(1-p) is rewritten as Stirling-error
// terms minus the deviances x ln(x/np) + np - x and (n-x) ln((n-x)/nq) + nq - (n-x), so
// the O(n) logarithms that cancel are never formed and the relative error stays a few
// ulps times the size of the final exponent.
#include "stats/discrete_terms.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

namespace zemath::stats {

namespace {

constexpr double kLnTwoPi = 1.8378770664093454836;  // ln(2 pi)

// Stirling's error term at k = 0..15, from mpmath at 40 digits.
constexpr std::array<double, 16> kStirlingError = {
    0.0,
    0.08106146679532725822,  0.041340695955409294094, 0.027677925684998339149,
    0.020790672103765093112, 0.016644691189821192163, 0.013876128823070747999,
    0.011896709945891770095, 0.010411265261972096497, 0.0092554621827127329177,
    0.0083305634333628712565, 0.007573675487951840795, 0.0069428401072095298657,
    0.0064089941880042070684, 0.0059513701127588477356, 0.005554733551962801371};

// 0! .. 99!, each product formed in long double and rounded once.
constexpr std::array<double, 100> make_factorials() {
    std::array<double, 100> table{};
    long double f = 1.0L;
    for (int i = 0; i < 100; ++i) {
        if (i > 0) f *= i;
        table[i] = static_cast<double>(f);
    }
    return table;
}
constexpr std::array<double, 100> kFactorial = make_factorials();

// The counts below which the literal products are used (see binomial_point / poisson_point).
constexpr int kBinomialLiteralLimit = 64;
constexpr int kPoissonLogForm = 100;  // x >= 100: the logarithmic form
constexpr double kExpRange = 700.0;   // e^700 and e^-700 are comfortably representable

}  // namespace

double stirling_error(double k) {
    if (k <= 15.0) {
        const double whole = std::floor(k);
        if (whole == k && k >= 0.0) return kStirlingError[static_cast<int>(k)];
        return std::lgamma(k + 1.0) - (k + 0.5) * std::log(k) + k - kLnTwoPi / 2.0;
    }
    // Asymptotic series 1/(12k) - 1/(360k^3) + 1/(1260k^5) - 1/(1680k^7) + 1/(1188k^9),
    // truncated where the next term is below 1e-17 relative.
    constexpr double s0 = 1.0 / 12.0, s1 = 1.0 / 360.0, s2 = 1.0 / 1260.0, s3 = 1.0 / 1680.0,
                     s4 = 1.0 / 1188.0;
    const double kk = k * k;
    if (k > 500.0) return (s0 - s1 / kk) / k;
    if (k > 80.0) return (s0 - (s1 - s2 / kk) / kk) / k;
    if (k > 35.0) return (s0 - (s1 - (s2 - s3 / kk) / kk) / kk) / k;
    return (s0 - (s1 - (s2 - (s3 - s4 / kk) / kk) / kk) / kk) / k;
}

double deviance_term(double x, double m, double m_low) {
    // x ln(x/m) + m - x = m g(u), u = (x - m)/m, g(u) = (1+u) ln(1+u) - u
    //                   = x h(v), v = (m - x)/x, h(v) = v - ln(1+v).
    // Both are summed as series in their small argument, where the closed forms would
    // cancel: g(u) = sum_{k>=2} (-u)^k / (k (k-1)) for -0.8 < u < 0.5 (positive terms for
    // u < 0, alternating and led by u^2/2 above), h(v) = sum_{k>=2} (-v)^k / k for
    // -0.6 < v < 0 (x > 1.5 m; positive terms). Forming u and v from the difference x - m
    // (exact while x and m are within a factor 2; m_low carries the rounding error of a
    // product m) keeps the arguments exact to an ulp.
    const double diff = (x - m) - m_low;
    const double u = diff / m;
    constexpr int kMaxTerms = 200;
    if (u > -0.8 && u < 0.5) {
        double power = -u;  // (-u)^(k-1)
        double sum = 0.0;
        for (int k = 2; k < kMaxTerms; ++k) {
            power *= -u;
            const double next = sum + power / (static_cast<double>(k) * (k - 1));
            if (next == sum) break;
            sum = next;
        }
        return m * sum;
    }
    const double v = -diff / x;
    if (v > -0.6 && v < 0.0) {
        double power = -v;
        double sum = 0.0;
        for (int k = 2; k < kMaxTerms; ++k) {
            power *= -v;
            const double next = sum + power / k;
            if (next == sum) break;
            sum = next;
        }
        return x * sum;
    }
    return x * std::log(x / m) + m - x;
}

double ln_combinations(int n, int k) {
    k = std::min(k, n - k);
    if (k <= 0) return 0.0;
    // C(n-k+i, i) = C(n-k+i-1, i-1) (n-k+i) / i stays an integer; exact below 2^53.
    constexpr double kExactLimit = 9007199254740992.0;  // 2^53
    double c = 1.0;
    bool exact = true;
    for (int i = 1; i <= k; ++i) {
        const double numerator = c * static_cast<double>(n - k + i);
        if (numerator >= kExactLimit) {
            exact = false;
            break;
        }
        c = numerator / i;
    }
    if (exact) return std::log(c);
    const double dn = n;
    const double dk = k;
    const double rest = dn - dk;
    return stirling_error(dn) - stirling_error(dk) - stirling_error(rest) +
           0.5 * std::log(dn / (2.0 * std::numbers::pi * dk * rest)) + dk * std::log(dn / dk) +
           rest * std::log1p(dk / rest);
}

double binomial_point(int x, int nt, double p) {
    if (p == 0.0) return x == 0 ? 1.0 : 0.0;
    if (p == 1.0) return x == nt ? 1.0 : 0.0;
    if (x == 0) return std::exp(nt * std::log1p(-p));
    if (x == nt) return std::exp(nt * std::log(p));
    if (nt < kBinomialLiteralLimit)
        return std::exp(ln_combinations(nt, x) + x * std::log(p) + (nt - x) * std::log1p(-p));
    const double n = nt;
    const double k = x;
    // n p and n (1 - p) as exact two-part sums (1 - p itself split by two-sum).
    const double q = 1.0 - p;
    const double q_low = (1.0 - q) - p;
    const double np = n * p;
    const double np_low = std::fma(n, p, -np);
    const double nq = n * q;
    const double nq_low = std::fma(n, q, -nq) + n * q_low;
    const double lc = stirling_error(n) - stirling_error(k) - stirling_error(n - k) -
                      deviance_term(k, np, np_low) - deviance_term(n - k, nq, nq_low);
    // ln(2 pi k (n-k) / n), with n - k exact.
    const double lf = kLnTwoPi + std::log(k) + std::log(n - k) - std::log(n);
    return std::exp(lc - 0.5 * lf);
}

double poisson_point(int x, double lambda) {
    if (x == 0) return std::exp(-lambda);
    const double k = x;
    if (x < kPoissonLogForm && lambda < kExpRange && k * std::log(lambda) < kExpRange)
        return std::pow(lambda, k) * std::exp(-lambda) / kFactorial[x];
    // exp(x ln lambda - lambda - ln x!) regrouped: -stirling_error(x) - deviance - ln(2 pi x)/2.
    return std::exp(-stirling_error(k) - deviance_term(k, lambda, 0.0)) /
           std::sqrt(2.0 * std::numbers::pi * k);
}

}  // namespace zemath::stats
