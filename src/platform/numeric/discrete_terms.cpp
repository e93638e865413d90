// Point probabilities of the binomial and Poisson laws.
//
// Paths, by the arguments (binomial_point, poisson_point):
//   binomial, p = 0 or 1        exact;
//   binomial, p < 1e-280        the plain logarithmic form (n p may leave the normal range;
//                               the value is then below it unless x = 0);
//   binomial, x = 0 or x = n    q^n or p^n as e^(n ln q) from a two-part logarithm: a few ulps;
//   binomial, n < 64            C(n, x) exactly (a Pascal table) times e^(x ln p + (n-x) ln q)
//                               from two-part logarithms: a few ulps;
//   Poisson, x = 0              e^-lambda;
//   Poisson, x < 100, lambda < 700 and lambda^x < e^700
//                               lambda^x e^-lambda / x! by pow, exp and a table of x!: 3 ulps;
//   otherwise                   Loader's form (2000, "Fast and accurate computation of
//                               binomial probabilities"): ln C(n, x) + x ln p + (n-x) ln(1-p)
//                               regrouped as Stirling-error terms minus the deviances
//                               x ln(x/np) + np - x and (n-x) ln((n-x)/nq) + nq - (n-x) (for
//                               the Poisson law Stirling's term minus x ln(x/lambda) + lambda
//                               - x), so the O(n) logarithms that cancel are never formed, and
//                               e to the two-part sum.
// The deviance D = x ln(x/m) + m - x is x times a two-part logarithm of x/m minus x - m formed
// exactly. The logarithm is e ln 2 + 2 atanh(s), s = (x - M)/(x + M), M = m 2^e exact with e
// from the exponents (so no quotient x/m is formed and one division is on the chain), its
// terms 2s and 2s^3/3 carried in two parts. D's error is below 3e-18 D relative plus 2^-104
// |x - m| absolute (see deviance_of), so e^-D loses at most 3e-18 D relative to it: under
// 2.2e-15 wherever e^-D is a normal double, under 1.2e-16 for D <= 40 (probabilities above
// 4e-18); Stirling's terms add 1e-16 absolute at most, exp, the square root and the division
// a few ulps. Every exact product is Dekker's, from Veltkamp halves (std::fma is a library
// call on the baseline x86-64 target, and was a third of the cost here). Measured against
// mpmath (tests/reference/gen_distributions_other.py, gen_distributions_discrete_paths.py):
// binopdf within 4.4e-16, poisspdf within 3e-16.

#include "platform/numeric/discrete_terms.hpp"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <numbers>

#include "platform/numeric/stirling.hpp"
#include "platform/numeric/double_double.hpp"

namespace zemath::numeric {

namespace {

using numeric::add;
using numeric::negate;
using numeric::quick_two_sum;
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

// C(n, k) for n below 64 by Pascal's rule, exact in 64-bit integers (C(63, 31) < 2^60), one
// row after another in a triangle: row n starts at n (n + 1) / 2. Built at compile time;
// the loop with a gcd per factor it replaces cost more than the rest of the density.
constexpr int kPascalRows = 64;
constexpr std::array<std::uint64_t, kPascalRows*(kPascalRows + 1) / 2> make_pascal() {
    std::array<std::uint64_t, kPascalRows*(kPascalRows + 1) / 2> t{};
    for (int n = 0; n < kPascalRows; ++n) {
        const int row = n * (n + 1) / 2, above = (n - 1) * n / 2;
        t[row] = t[row + n] = 1;
        for (int k = 1; k < n; ++k) t[row + k] = t[above + k - 1] + t[above + k];
    }
    return t;
}
constexpr auto kPascal = make_pascal();

// C(n, k), n < 64, as the double nearest it and the remainder (exact: c < 2^60, so c - hi is
// below 2^7 and a double).
Pair combinations_two_part(int n, int k) {
    const std::uint64_t c = kPascal[static_cast<std::size_t>(n * (n + 1) / 2 + k)];
    const double hi = static_cast<double>(c);
    const std::int64_t rest = static_cast<std::int64_t>(c) - static_cast<std::int64_t>(hi);
    return {hi, static_cast<double>(rest)};
}

// a * b exactly (barring underflow of the low part), by Dekker's product of Veltkamp halves:
// plain operations, where std::fma is a library call on the baseline target. |a|, |b| below
// 2^995 (the split multiplies by 2^27 + 1).
// Veltkamp's split of a into 26 and 27 significant bits, a = hi + lo exactly.
struct Halves {
    double hi, lo;
};
[[gnu::always_inline]] inline Halves halves(double a) {
    constexpr double kSplit = 134217729.0;  // 2^27 + 1
    const double c = kSplit * a;
    const double hi = c - (c - a);
    return {hi, a - hi};
}

// a * b from the halves of both (formed once where a factor recurs).
[[gnu::always_inline]] inline Pair product_of_halves(double a, Halves ha, double b, Halves hb) {
    const double p = a * b;
    return {p, ((ha.hi * hb.hi - p) + ha.hi * hb.lo + ha.lo * hb.hi) + ha.lo * hb.lo};
}

Pair exact_product(double a, double b) {
    return product_of_halves(a, halves(a), b, halves(b));
}

// (a.hi + a.lo) * b for an exact double b, to twice the precision.
[[gnu::always_inline]] inline Pair scale(Pair a, double b) {
    const Pair p = exact_product(a.hi, b);
    return quick_two_sum(p.hi, p.lo + a.lo * b);
}

// e ln 2 + ln((1 + s)/(1 - s)) + extra, s = num/den with |s| <= 1/5 (num and den in two
// parts, den > 0 normal), |extra| below 1e-15, in two unnormalised parts. ln((1+s)/(1-s)) =
// 2 atanh(s) = 2s + 2s^3/3 + 2 s^5 (1/5 + s^2/7 + ... + s^24/29): 2s and 2s^3/3 are carried in
// two parts, the rest in double; the low parts summed in double are below 1.3e-4, so their
// rounding stays under 1.2e-19 absolute (and under 1e-15 s^4 of the value where e = 0); the
// truncation is below 1e-20 |s|^5. e ln 2 from Cody and Waite's two-part ln 2. The method of
// numeric::log_two_part, with the remainders by exact_product and one more term in two parts.
[[gnu::always_inline]] inline Pair log_atanh(Pair num, Pair den, double e, double extra) {
    // s from one reciprocal, its error left to s_low (from the exact remainder): the
    // divisions are most of the latency here.
    const double inverse = 1.0 / den.hi;
    const double s = num.hi * inverse;
    const Halves s_halves = halves(s);
    const Pair sd = product_of_halves(s, s_halves, den.hi, halves(den.hi));
    const double s_low = ((num.hi - sd.hi) - sd.lo + num.lo - s * den.lo) * inverse;
    // 2s^3/3 in two parts (s^2 exact, s_low's share 3 s^2 s_low kept) where |s| > 1/64: the
    // rest, 2 s^5 (1/5 + s^2/7 + ... + s^24/29), is below 1.3e-4 and its rounding under
    // 4e-20. For |s| <= 1/64 2s^3/3 is formed in double (a tenth of the cost of a density):
    // its two ulps, 1.5e-16 |s|^3, cost the deviance x ln(x/m) + m - x (about 2 x s^2 for
    // e = 0, at least 0.045 x otherwise) at most 1.2e-18 of itself.
    constexpr double kOneThird = 1.0 / 3.0;
    constexpr double kSmallS = 1.0 / 64.0;
    double s2, twice, third, third_lo;
    if (std::fabs(s) > kSmallS) {
        const Pair sq = product_of_halves(s, s_halves, s, s_halves);
        s2 = sq.hi;
        const Pair cube_hi = product_of_halves(s, s_halves, s2, halves(s2));
        const double cube_lo = cube_hi.lo + s * sq.lo + 3.0 * s2 * s_low;
        twice = 2.0 * cube_hi.hi;  // exact
        third = twice * kOneThird;
        const Pair third_back = two_sum(2.0 * third, third);  // 3 third, exactly
        third_lo = ((twice - third_back.hi) - third_back.lo + 2.0 * cube_lo) * kOneThird;
    } else {
        s2 = s * s;
        twice = 2.0 * s * s2;
        third = twice * kOneThird;
        third_lo = 0.0;
    }
    const double s4 = s2 * s2, s8 = s4 * s4;
    constexpr double c1 = 1.0 / 5, c2 = 1.0 / 7, c3 = 1.0 / 9, c4 = 1.0 / 11, c5 = 1.0 / 13,
                     c6 = 1.0 / 15, c7 = 1.0 / 17, c8 = 1.0 / 19, c9 = 1.0 / 21, c10 = 1.0 / 23,
                     c11 = 1.0 / 25, c12 = 1.0 / 27, c13 = 1.0 / 29;
    const double p0 = c1 + c2 * s2, p1 = c3 + c4 * s2, p2 = c5 + c6 * s2, p3 = c7 + c8 * s2,
                 p4 = c9 + c10 * s2, p5 = c11 + c12 * s2;
    const double q0 = p0 + p1 * s4, q1 = p2 + p3 * s4, q2 = p4 + p5 * s4;
    const double series = (q0 + q1 * s8) + (q2 + c13 * s8) * (s8 * s8);
    // ln 2 in Cody and Waite's two parts: the leading one has 33 significant bits, so e
    // times it is exact (|e| < 2^11); e times the second is below 2.1e-7, its rounding 2e-23.
    constexpr double kLn2Hi = 6.93147180369123816490e-01;  // 0x3fe62e42fee00000
    constexpr double kLn2Lo = 1.90821492927058770002e-10;  // ln 2 - kLn2Hi, to 2e-26
    const Pair lead = two_sum(e * kLn2Hi, 2.0 * s);
    const Pair lead3 = two_sum(lead.hi, third);
    const double rest =
        e * kLn2Lo + 2.0 * s_low + third_lo + twice * s2 * series + extra + lead.lo + lead3.lo;
    // Left unnormalised (rest may exceed an ulp of lead3.hi): the callers multiply by a
    // count x, where rest's rounding costs 2^-53 x |rest|, inside the bounds above.
    return {lead3.hi, rest};
}

// The binary exponent of a normal positive double, and its significand in [1, 2).
struct Binary {
    int exponent;
    double significand;
};
[[gnu::always_inline]] inline Binary binary(double a) {
    const std::uint64_t bits = std::bit_cast<std::uint64_t>(a);
    return {static_cast<int>(bits >> 52 & 0x7ff) - 1023,
            std::bit_cast<double>((bits & 0x000fffffffffffffULL) | (1023ULL << 52))};
}

// 2^e for -1022 <= e <= 1023.
double power_of_two(int e) {
    return std::bit_cast<double>(static_cast<std::uint64_t>(1023 + e) << 52);
}

// ln(r (1 + rel)) for r > 0 normal, |rel| below a few ulps: r = 2^e f with f in [3/4, 3/2),
// s = (f - 1)/(f + 1) (f - 1 exact, f + 1 by two-sum).
Pair log_relative(double r, double rel) {
    const Binary b = binary(r);
    // A significand of 3/2 or more halved, without a branch.
    const bool doubled = b.significand >= 1.5;
    const double f = b.significand * (doubled ? 0.5 : 1.0);
    const double u = f - 1.0;  // exact
    return log_atanh({u, 0.0}, two_sum(2.0, u), b.exponent + (doubled ? 1 : 0), rel);
}

// ln(x / (m + m_low)) for normal positive x and m with x/m between 2^-1000 and 2^1000, without
// forming the ratio: e is chosen from the exponents and significands so that f = x / (m 2^e)
// lies in [3/4, 3/2) (to within a rounding, which leaves |s| <= 1/5 to within 1e-16), and
// s = (x - M)/(x + M), M = (m + m_low) 2^e exact, both formed exactly in two parts: one
// division on the chain instead of the ratio's and s's.
[[gnu::always_inline]] inline Pair log_ratio(double x, double m, double m_low) {
    const Binary bx = binary(x), bm = binary(m);
    // x/m's significand ratio is in (1/2, 2); e from the exponents, moved by one where it
    // is at least 3/2 or below 3/4 (chosen without a branch: x/m falls on either side of 1).
    const int e = bx.exponent - bm.exponent + (bx.significand >= 1.5 * bm.significand ? 1 : 0) -
                  (bx.significand < 0.75 * bm.significand ? 1 : 0);
    const double scale = power_of_two(e);
    const double big = m * scale, big_low = m_low * scale;  // exact
    Pair num = two_sum(x, -big);
    num = quick_two_sum(num.hi, num.lo - big_low);
    Pair den = two_sum(x, big);
    den = quick_two_sum(den.hi, den.lo + big_low);
    return log_atanh(num, den, e, 0.0);
}

[[gnu::always_inline]] inline Pair deviance_of(double x, double m, double m_low) {
    // x ln(x/m) + m - x, m = m + m_low: x times the two-part logarithm of the ratio
    // (log_ratio), minus x - m formed exactly. Where x is near m the two terms cancel to
    // D ~ (x - m)^2 / (x + m), but each is carried to 2^-104 of its size (about 2^-104
    // |x - m| absolute, far below an ulp of D), and the logarithm's own error there is
    // 1e-15 s^4 of ln(x/m), s =
    // (x - m)/(x + m): D keeps 1e-15 s^3 relative + 3e-32 |x - m|. Away from m (x/m outside
    // [3/4, 3/2)) D >= 0.045 x and the logarithm's 1.2e-19 absolute error costs D at most
    // 3e-18 relative. So D to 3e-18 relative, plus a few ulps of its low part: e^-D keeps
    // 3e-18 D relative, under 2.2e-15 wherever e^-D is a normal double.
    if (x == 0.0) return quick_two_sum(m, m_low);
    Pair diff = two_sum(x, -m);
    diff = quick_two_sum(diff.hi, diff.lo - m_low);
    return add(scale(log_ratio(x, m, m_low), x), negate(diff));
}

// Stirling's error term at a whole count k >= 0: numeric::stirling_error's table up to 15,
// above it the same five-term series (truncation below 1.1e-16 absolute at 16, 3e-17 beyond
// 35) taken whole for every k, without the branches on k that shorten it for large k: those
// were mispredicted at random counts, three times per density.
[[gnu::always_inline]] inline double stirling_at(double k) {
    constexpr double kTableEnd = 15.0;
    if (k <= kTableEnd) return stirling_error(k);
    constexpr double s0 = 1.0 / 12.0, s1 = 1.0 / 360.0, s2 = 1.0 / 1260.0, s3 = 1.0 / 1680.0,
                     s4 = 1.0 / 1188.0;
    const double r = 1.0 / k;
    const double r2 = r * r;
    return (s0 - (s1 - (s2 - (s3 - s4 * r2) * r2) * r2) * r2) * r;
}

}  // namespace

Pair deviance_term(double x, double m, double m_low) {
    return deviance_of(x, m, m_low);
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
    const auto log_p = [p] { return log_relative(p, 0.0); };
    const auto log_q = [q_exact] { return log_relative(q_exact.hi, q_exact.lo / q_exact.hi); };
    const auto times = [](double count, Pair log_value) { return scale(log_value, count); };
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
    const double np_low = exact_product(n, p).lo;
    const double nq = n * q;
    const double nq_low = exact_product(n, q).lo + n * q_low;
    const Pair deviance = add(deviance_of(k, np, np_low), deviance_of(n - k, nq, nq_low));
    const double stirling = stirling_at(n) - stirling_at(k) - stirling_at(n - k);
    const Pair exponent = add(negate(deviance), Pair{stirling, 0.0});
    // sqrt(n / (2 pi k (n-k))), with n - k exact.
    return numeric::exp_two_part(exponent) / std::sqrt(2.0 * std::numbers::pi * k * ((n - k) / n));
}

double binomial_point_at_mean(int x, int nt) {
    const double n = nt, k = x;
    const double stirling = stirling_at(n) - stirling_at(k) - stirling_at(n - k);
    return std::exp(stirling) / std::sqrt(2.0 * std::numbers::pi * k * ((n - k) / n));
}

double poisson_point(int x, double lambda) {
    if (x == 0) return std::exp(-lambda);
    const double k = x;
    if (x < kPoissonLogForm && lambda < kExpRange && k * std::log(lambda) < kExpRange)
        return std::pow(lambda, k) * std::exp(-lambda) / kFactorial[x];
    // A mean so small that x / lambda passes 1e290 (x >= 100 here; lambda >= 700 otherwise)
    // puts lambda^x / x! <= (e lambda / x)^x far below the smallest denormal; the deviance
    // form would meet inf - inf where x / lambda overflows (x = 67116548, lambda = 1e-311
    // gave NaN), and its exact products need x / lambda below 2^995.
    constexpr double kHugeRatio = 1e290;
    if (!(k / lambda <= kHugeRatio)) return 0.0;
    // A mean above 2^33 is over four times any int x: the deviance is then above 0.4 lambda
    // and the probability below e^-3e9, zero in double (and m = lambda stays in the range of
    // the exact products' split).
    constexpr double kHugeMean = 8589934592.0;  // 2^33
    if (lambda > kHugeMean) return 0.0;
    // exp(x ln lambda - lambda - ln x!) regrouped: -stirling_error(x) - deviance - ln(2 pi x)/2.
    const Pair exponent = add(negate(deviance_of(k, lambda, 0.0)), Pair{-stirling_at(k), 0.0});
    return numeric::exp_two_part(exponent) / std::sqrt(2.0 * std::numbers::pi * k);
}

}  // namespace zemath::numeric
