// Point probabilities of the binomial and Poisson laws.
//
// Method: for small counts the defining products, term by term; for large ones the same
// expressions regrouped after Loader (2000, "Fast and accurate computation of binomial
// probabilities"): ln C(n, x) + x ln p + (n-x) ln(1-p) is rewritten as Stirling-error
// terms minus the deviances x ln(x/np) + np - x and (n-x) ln((n-x)/nq) + nq - (n-x), so
// the O(n) logarithms that cancel are never formed; the deviances are summed in two-part
// arithmetic, so that e^E keeps a few ulps even when |E| is in the hundreds.
#include "platform/numeric/discrete_terms.hpp"

#include <algorithm>
#include <array>
#include <cfloat>
#include <cmath>
#include <cstdint>
#include <numeric>
#include <numbers>

#include "platform/numeric/stirling.hpp"
#include "platform/numeric/double_double.hpp"

namespace zemath::numeric {

namespace {

using numeric::add;
using numeric::log_two_part;
using numeric::multiply;
using numeric::negate;
using numeric::quick_two_sum;
using numeric::reciprocal;
using numeric::stirling_error;
using numeric::two_sum;
using Pair = numeric::TwoPart;

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

// C(n, k) for n below 64, exact in 64-bit integers (each step C(n-k+i, i) =
// C(n-k+i-1, i-1) (n-k+i) / i divides out the common factor first, so no step exceeds the
// result), returned as the double nearest it and the remainder.
Pair combinations_two_part(int n, int k) {
    k = std::min(k, n - k);
    std::uint64_t c = 1;
    for (int i = 1; i <= k; ++i) {
        const std::uint64_t factor = static_cast<std::uint64_t>(n - k + i);
        const std::uint64_t divisor = static_cast<std::uint64_t>(i);
        const std::uint64_t g = std::gcd(c, divisor);
        c = (c / g) * (factor / (divisor / g));
    }
    const double hi = static_cast<double>(c);
    // c < C(63, 31) < 2^60: hi is within half an ulp of c, c - hi is exact as a double.
    const std::int64_t rest = static_cast<std::int64_t>(c) - static_cast<std::int64_t>(hi);
    return {hi, static_cast<double>(rest)};
}

// sum_{k>=2} (-w)^(k-2) / d(k) for |w| < 1, d(k) >= 1 growing, taken until |w|^(k-2) falls
// below `negligible`. Horner's rule runs in double over the terms from |w|^(k-2) <= 1e-5 on
// (their sum is below 1e-5 of the total, so its rounding stays below 1e-21 of it) and in
// two-part arithmetic over the leading terms: 2 to 13 two-part steps instead of up to 60.
template <class Divisor>
Pair alternating_series(Pair w, double negligible, Divisor d) {
    constexpr double kDoubleTail = 1e-5;
    if (w.hi == 0.0) return reciprocal(d(2));
    const double log_w = std::log(std::fabs(w.hi));
    const int terms = 2 + static_cast<int>(std::ceil(std::log(negligible) / log_w));
    const int split =
        std::min(terms, 2 + static_cast<int>(std::ceil(std::log(kDoubleTail) / log_w)));
    double tail = 0.0;
    int k = terms;
    for (; k >= split; --k) tail = 1.0 / d(k) - w.hi * tail;
    Pair acc{tail, 0.0};
    for (; k >= 2; --k) acc = add(reciprocal(d(k)), negate(multiply(w, acc)));
    return acc;
}

}  // namespace

Pair deviance_term(double x, double m, double m_low) {
    // x ln(x/m) + m - x = m g(u), u = (x - m)/m, g(u) = (1+u) ln(1+u) - u = u^2 G(u),
    //                   = x h(v), v = (m - x)/x, h(v) = v - ln(1+v)     = v^2 H(v),
    // G(u) = sum_{k>=2} (-u)^(k-2) / (k (k-1)), H(v) = sum_{k>=2} (-v)^(k-2) / k, both
    // summed by Horner's rule in two-part arithmetic from an exact u or v (x - m formed
    // by two-sum, m_low the rounding error of a product m): G for -0.95 < u < 0.5, H for
    // x up to 10m. Beyond (x <= m/20 or x >= 10m, where the closed form cancels by less
    // than a factor 1.7) x ln(x/m) + m - x is used with the logarithm in two parts.
    Pair diff = two_sum(x, -m);
    diff = quick_two_sum(diff.hi, diff.lo - m_low);
    // Terms are taken until |u|^k falls below 1e-19: the truncation stays below a thousandth
    // of an ulp of the series, which is summed in two-part arithmetic.
    constexpr double kNegligible = 1e-19;
    const double u_hi = diff.hi / m;
    if (u_hi > -0.95 && u_hi < 0.5) {
        // u = diff / (m + m_low), to twice the precision.
        const double u_lo = (std::fma(-u_hi, m, diff.hi) + diff.lo - u_hi * m_low) / m;
        const Pair acc = alternating_series({u_hi, u_lo}, kNegligible,
                                            [](int k) { return static_cast<double>(k) * (k - 1); });
        return multiply(multiply(Pair{m, m_low}, multiply(Pair{u_hi, u_lo}, Pair{u_hi, u_lo})),
                        acc);
    }
    const double v_hi = -diff.hi / x;
    if (v_hi > -0.9 && v_hi < 0.0) {
        const double v_lo = (std::fma(-v_hi, x, -diff.hi) - diff.lo) / x;
        const Pair acc = alternating_series({v_hi, v_lo}, kNegligible,
                                            [](int k) { return static_cast<double>(k); });
        return multiply(multiply(Pair{x, 0.0}, multiply(Pair{v_hi, v_lo}, Pair{v_hi, v_lo})), acc);
    }
    const double ratio = x / m;
    const double ratio_low = (std::fma(-ratio, m, x) - ratio * m_low) / m;
    const Pair log_ratio = log_two_part(ratio, ratio_low);
    return add(multiply(Pair{x, 0.0}, log_ratio), negate(diff));
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
    // p so small that n p may leave the normal range (the deviance form would divide by
    // it): the plain logarithmic form, whose value is then far below the normal range
    // unless x = 0, where it is (1 - p)^n.
    constexpr double kTinyP = 1e-280;
    if (p < kTinyP)
        return std::exp(ln_combinations(nt, x) + x * std::log(p) + (nt - x) * std::log1p(-p));
    // ln p and ln(1-p) in two parts (1 - p split exactly by two-sum), so that exponents
    // of several hundred keep their last digits; formed only where they are used.
    const Pair q_exact = two_sum(1.0, -p);
    const auto log_p = [p] { return log_two_part(p, 0.0); };
    const auto log_q = [q_exact] { return log_two_part(q_exact.hi, q_exact.lo); };
    const auto times = [](double count, Pair log_value) {
        return multiply(Pair{count, 0.0}, log_value);
    };
    if (x == 0) return numeric::exp_two_part(times(nt, log_q()));
    if (x == nt) return numeric::exp_two_part(times(nt, log_p()));
    if (nt < kBinomialLiteralLimit) {
        // C(n, x) below 2^64, exact, times p^x q^(n-x) from its two-part logarithm: a few ulps
        // (the logarithm of C(n, x) rounded once would cost |ln C(n, x)| ulps, 40 at n = 60).
        const Pair c = combinations_two_part(nt, x);
        return (c.hi + c.lo) *
               numeric::exp_two_part(add(times(x, log_p()), times(nt - x, log_q())));
    }
    const double n = nt;
    const double k = x;
    // n p and n (1 - p) as exact two-part sums (1 - p itself split by two-sum).
    const double q = 1.0 - p;
    const double q_low = (1.0 - q) - p;
    const double np = n * p;
    const double np_low = std::fma(n, p, -np);
    const double nq = n * q;
    const double nq_low = std::fma(n, q, -nq) + n * q_low;
    const Pair deviance = add(deviance_term(k, np, np_low), deviance_term(n - k, nq, nq_low));
    const double stirling = stirling_error(n) - stirling_error(k) - stirling_error(n - k);
    const Pair exponent = add(negate(deviance), Pair{stirling, 0.0});
    // sqrt(n / (2 pi k (n-k))), with n - k exact.
    return numeric::exp_two_part(exponent) / std::sqrt(2.0 * std::numbers::pi * k * ((n - k) / n));
}

double poisson_point(int x, double lambda) {
    if (x == 0) return std::exp(-lambda);
    const double k = x;
    if (x < kPoissonLogForm && lambda < kExpRange && k * std::log(lambda) < kExpRange)
        return std::pow(lambda, k) * std::exp(-lambda) / kFactorial[x];
    // A mean so small that x / lambda overflows (lambda below 1e-297, x >= 100 here) puts
    // lambda^x / x! far below the smallest denormal; the deviance form would meet inf - inf
    // (x = 67116548, lambda = 1e-311 gave NaN).
    if (!(k / lambda <= DBL_MAX)) return 0.0;
    // exp(x ln lambda - lambda - ln x!) regrouped: -stirling_error(x) - deviance - ln(2 pi x)/2.
    const Pair exponent = add(negate(deviance_term(k, lambda, 0.0)), Pair{-stirling_error(k), 0.0});
    return numeric::exp_two_part(exponent) / std::sqrt(2.0 * std::numbers::pi * k);
}

}  // namespace zemath::numeric
