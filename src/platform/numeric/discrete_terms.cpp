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
// The deviance D = x ln(x/m) + m - x, by v = (x - m)/(x + m):
//   |v| < 1/64                  Loader's series D = (x - m) v + 2x (v^3/3 + ... + v^11/11),
//                               whose terms do not cancel: (x - m) v in two parts, the rest
//                               (at most 0.0105 D) in double. D within 7e-18 relative;
//   1/64 <= |v| < 1/5           the same series to v^29/29, with 2x v^3/3 in two parts too
//                               (the rest is at most 0.003 D). D within 3e-18 relative;
//   elsewhere                   x times a two-part logarithm of x/m minus x - m formed
//                               exactly, D >= 0.063 x. The logarithm is table-driven:
//                               x/m = 2^e f, ln f = ln(1/inverse_i) + ln(1 + r) from a table
//                               of 128 cells (mpmath, two parts) and r = f inverse_i - 1
//                               exact, |r| <= 2^-8, the series to r^8/8: within 1e-20
//                               absolute plus 2^-100 relative. D within 2e-19 relative.
// The two-part logarithms of p and 1 - p (x = 0, x = n, n < 64) are e ln 2 + 2 atanh(s),
// s = (f - 1)/(f + 1), f the significand in [3/4, 3/2), 2s and 2s^3/3 carried in two parts:
// within 1.2e-19 absolute, and relatively accurate for 1 - p near 1.
// So e^-D loses at most 7e-18 D relative to D's error: under 5.2e-15 wherever e^-D is a
// normal double, under 2.8e-16 for D <= 40 (probabilities above 4e-18). Stirling's error
// terms come from an mpmath table below 128 (exact to the rounding) and a three-term series
// above (under 1.1e-18 absolute); their three reciprocals and the factor sqrt(n / (2 pi k
// (n-k))) come from one division; exp and the square root add a few ulps. Every exact
// product is Dekker's: where the processor has a fused multiply-add, one instruction (the
// kernels are built twice, and the entry points pick the build once per call by the
// processor's feature bits), elsewhere from Veltkamp halves (std::fma is a library call on
// the baseline x86-64 target). Measured against mpmath (tests/reference/
// gen_distributions_other.py, gen_distributions_discrete_paths.py, and at the series' and
// the table's switch points gen_distributions_discrete_switch.py): binopdf within 4.5e-16
// on the first two grids and 9.7e-16 at the switch points (probabilities down to 1e-300),
// poisspdf within 3e-16 and 8.8e-16.

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

// The fused multiply-add as one instruction, for the instantiation built for processors that
// have it (GCC and Clang on x86-64; elsewhere only the portable one is built).
#if defined(__GNUC__) && defined(__x86_64__)
#define ZEMATH_DISCRETE_FMA 1
[[gnu::always_inline]] inline double fused_multiply_add(double a, double b, double c) {
    return __builtin_fma(a, b, c);
}
#else
#define ZEMATH_DISCRETE_FMA 0
inline double fused_multiply_add(double a, double b, double c) {
    return std::fma(a, b, c);
}
#endif

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

// a * b from the halves of both (formed once where a factor recurs); with Fma, by one fused
// multiply-add, the halves then unused (and never formed).
template <bool Fma>
[[gnu::always_inline]] inline Pair product_of_halves(double a, Halves ha, double b, Halves hb) {
    const double p = a * b;
    if constexpr (Fma) {
        return {p, fused_multiply_add(a, b, -p)};
    } else {
        return {p, ((ha.hi * hb.hi - p) + ha.hi * hb.lo + ha.lo * hb.hi) + ha.lo * hb.lo};
    }
}

template <bool Fma>
[[gnu::always_inline]] inline Pair exact_product(double a, double b) {
    return product_of_halves<Fma>(a, halves(a), b, halves(b));
}

// (a.hi + a.lo) * b for an exact double b, to twice the precision.
template <bool Fma>
[[gnu::always_inline]] inline Pair scale(Pair a, double b) {
    const Pair p = exact_product<Fma>(a.hi, b);
    return quick_two_sum(p.hi, p.lo + a.lo * b);
}

// e ln 2 + ln((1 + s)/(1 - s)) + extra, s = num/den with |s| <= 1/5 (num and den in two
// parts, den > 0 normal), |extra| below 1e-15, in two unnormalised parts. ln((1+s)/(1-s)) =
// 2 atanh(s) = 2s + 2s^3/3 + 2 s^5 (1/5 + s^2/7 + ... + s^24/29): 2s and 2s^3/3 are carried in
// two parts, the rest in double; the low parts summed in double are below 1.3e-4, so their
// rounding stays under 1.2e-19 absolute (and under 1e-15 s^4 of the value where e = 0); the
// truncation is below 1e-20 |s|^5. e ln 2 from Cody and Waite's two-part ln 2. The method of
// numeric::log_two_part, with the remainders by exact_product and one more term in two parts.
// 1/5 + v2/7 + v2^2/9 + ... + v2^12/29 by Estrin's scheme: the tail, past 2v^3/3, of
// atanh-type series (2 v^5 times it), shared by the logarithm and the deviance near the mean.
[[gnu::always_inline]] inline double odd_series_tail(double v2) {
    const double v4 = v2 * v2, v8 = v4 * v4;
    constexpr double c1 = 1.0 / 5, c2 = 1.0 / 7, c3 = 1.0 / 9, c4 = 1.0 / 11, c5 = 1.0 / 13,
                     c6 = 1.0 / 15, c7 = 1.0 / 17, c8 = 1.0 / 19, c9 = 1.0 / 21, c10 = 1.0 / 23,
                     c11 = 1.0 / 25, c12 = 1.0 / 27, c13 = 1.0 / 29;
    const double p0 = c1 + c2 * v2, p1 = c3 + c4 * v2, p2 = c5 + c6 * v2, p3 = c7 + c8 * v2,
                 p4 = c9 + c10 * v2, p5 = c11 + c12 * v2;
    const double q0 = p0 + p1 * v4, q1 = p2 + p3 * v4, q2 = p4 + p5 * v4;
    return (q0 + q1 * v8) + (q2 + c13 * v8) * (v8 * v8);
}

template <bool Fma>
[[gnu::always_inline]] inline Pair log_atanh(Pair num, Pair den, double e, double extra) {
    // s from one reciprocal, its error left to s_low (from the exact remainder): the
    // divisions are most of the latency here.
    const double inverse = 1.0 / den.hi;
    const double s = num.hi * inverse;
    const Halves s_halves = halves(s);
    const Pair sd = product_of_halves<Fma>(s, s_halves, den.hi, halves(den.hi));
    const double s_low = ((num.hi - sd.hi) - sd.lo + num.lo - s * den.lo) * inverse;
    // 2s^3/3 in two parts (s^2 exact, s_low's share 3 s^2 s_low kept) where |s| > 1/64: the
    // rest, 2 s^5 (1/5 + s^2/7 + ... + s^24/29), is below 1.3e-4 and its rounding under
    // 4e-20. For |s| <= 1/64 2s^3/3 is formed in double: its two ulps, 1.5e-16 |s|^3, are at
    // most 1.8e-20 of the logarithm (about 2s where e = 0, at least ln(4/3) otherwise).
    constexpr double kOneThird = 1.0 / 3.0;
    constexpr double kSmallS = 1.0 / 64.0;
    double s2, twice, third, third_lo;
    if (std::fabs(s) > kSmallS) {
        const Pair sq = product_of_halves<Fma>(s, s_halves, s, s_halves);
        s2 = sq.hi;
        const Pair cube_hi = product_of_halves<Fma>(s, s_halves, s2, halves(s2));
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
    const double series = odd_series_tail(s2);
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

// ln(r (1 + rel)) for r > 0 normal, |rel| below a few ulps: r = 2^e f with f in [3/4, 3/2),
// s = (f - 1)/(f + 1) (f - 1 exact, f + 1 by two-sum).
template <bool Fma>
[[gnu::always_inline]] inline Pair log_relative(double r, double rel) {
    const Binary b = binary(r);
    // A significand of 3/2 or more halved, without a branch.
    const bool doubled = b.significand >= 1.5;
    const double f = b.significand * (doubled ? 0.5 : 1.0);
    const double u = f - 1.0;  // exact
    return log_atanh<Fma>({u, 0.0}, two_sum(2.0, u), b.exponent + (doubled ? 1 : 0), rel);
}

// The cells of the table-driven logarithm below (tests/reference/gen_log_table.py, mpmath).
struct LogCell {
    double inverse, ln_hi, ln_lo;
};
#include "platform/numeric/log_table.inc"

// ln(x / (m + m_low)) in two parts, for normal positive x and m with x/m between 2^-1000 and
// 2^1000, within 1e-20 absolute plus 2^-100 relative. The ratio is formed once, rho = x (1/m),
// with its error left to the correction (x - rho (m + m_low)) / x (the product exact); rho =
// 2^e f, f in [1, 2), the cell i of f's top seven significand bits gives ln f = ln(1/inverse_i)
// (tabulated in two parts) + ln(1 + r), r = f inverse_i - 1 formed exactly in two parts
// (|r| <= 2^-8), ln(1 + r) = r - r^2/2 + ... - r^8/8 (truncated by under 3e-23; every term
// after r is below 2^-17, so its roundings stay under 2^-69). e ln 2 in Cody and Waite's two
// parts. No division on the chain but 1/m, and eight terms where the atanh series needs
// fourteen: the deviance's form away from the mean (|v| >= 1/5, where D >= 0.063 x, so this
// error costs D under 2e-19 relative).
template <bool Fma>
[[gnu::always_inline]] inline Pair log_ratio_by_table(double x, double m, double m_low) {
    const double inverse_m = 1.0 / m;
    const double rho = x * inverse_m;
    const Pair rm = exact_product<Fma>(rho, m);
    const double correction = ((x - rm.hi) - rm.lo - rho * m_low) / x;
    const std::uint64_t bits = std::bit_cast<std::uint64_t>(rho);
    const int e = static_cast<int>(bits >> 52 & 0x7ff) - 1023;
    const double f = std::bit_cast<double>((bits & 0x000fffffffffffffULL) | (1023ULL << 52));
    const LogCell& cell = kLogTable[bits >> 45 & (kLogTableCells - 1)];
    const Pair product = exact_product<Fma>(f, cell.inverse);
    const double r = (product.hi - 1.0) + product.lo;  // |product.lo| is below an ulp of 1
    const double r_low = product.lo - (r - (product.hi - 1.0));
    const double r2 = r * r;
    constexpr double c2 = -1.0 / 2, c3 = 1.0 / 3, c4 = -1.0 / 4, c5 = 1.0 / 5, c6 = -1.0 / 6,
                     c7 = 1.0 / 7, c8 = -1.0 / 8;
    const double poly =
        r2 * ((c2 + c3 * r) + r2 * ((c4 + c5 * r) + r2 * ((c6 + c7 * r) + r2 * c8))) - r * r_low;
    constexpr double kLn2Hi = 6.93147180369123816490e-01;  // 0x3fe62e42fee00000
    constexpr double kLn2Lo = 1.90821492927058770002e-10;  // ln 2 - kLn2Hi, to 2e-26
    const double de = e;
    const Pair lead = two_sum(de * kLn2Hi, cell.ln_hi);  // e kLn2Hi exact (33 bits by 11)
    const Pair with_r = two_sum(lead.hi, r);
    return quick_two_sum(
        with_r.hi, with_r.lo + lead.lo + r_low + cell.ln_lo + de * kLn2Lo + poly + correction);
}

template <bool Fma>
[[gnu::always_inline]] inline Pair deviance_of(double x, double m, double m_low) {
    // x ln(x/m) + m - x, m = m + m_low, by v = (x - m)/(x + m): two forms of Loader's series
    // near the mean (|v| < 1/5), x times the table-driven two-part logarithm of x/m minus
    // x - m formed exactly beyond (where D >= 0.063 x, so the logarithm's 1e-20 and the
    // products' 2^-100 cost D under 2e-19 relative). D to 7e-18 relative at most, plus a few
    // ulps of its low part: e^-D keeps 7e-18 D relative, under 5.2e-15 wherever e^-D is a
    // normal double.
    if (x == 0.0) return quick_two_sum(m, m_low);
    Pair diff = two_sum(x, -m);
    diff = quick_two_sum(diff.hi, diff.lo - m_low);
    // Near the mean, v = (x - m)/(x + m) below 1/64 in magnitude, Loader's series: D = (x - m) v
    // + 2x (v^3/3 + v^5/5 + ...), its terms free of cancellation. (x - m) v is carried in two
    // parts (v's remainder from the exact product v (x + m)); the rest, 2x v^3 (1/3 + ... +
    // v^8/11), is at most 0.0105 D and its six roundings and v's half ulp cost D under 7e-18
    // relative, the truncation 2e-21. One division and no logarithm: a third of the cost of
    // the logarithmic form at the end, which takes |v| >= 1/5.
    const Pair sum = two_sum(x, m);
    const double total = sum.hi;
    // v from one reciprocal, its error (a few ulps) left to v's remainder below: one division.
    const double inverse_total = 1.0 / total;
    const double v = diff.hi * inverse_total;
    constexpr double kNearMean = 1.0 / 64.0;
    if (std::fabs(v) < kNearMean) {
        const Pair vt = exact_product<Fma>(v, total);
        const double v_low =
            ((diff.hi - vt.hi) - vt.lo + diff.lo - v * (sum.lo + m_low)) * inverse_total;
        const Pair dv = exact_product<Fma>(diff.hi, v);
        const double v2 = v * v;
        constexpr double c0 = 2.0 / 3, c1 = 2.0 / 5, c2 = 2.0 / 7, c3 = 2.0 / 9, c4 = 2.0 / 11;
        const double v4 = v2 * v2;
        const double series = (c0 + c1 * v2) + (c2 + c3 * v2 + c4 * v4) * v4;
        const double rest = x * v2 * (v + 3.0 * v_low) * series;
        return quick_two_sum(dv.hi, dv.lo + (diff.hi * v_low + diff.lo * v) + rest);
    }
    // Up to |v| = 1/5 (x/m in (2/3, 3/2)) the same series with 2x v^3/3 in two parts as well
    // (v^3 from exact products, v's remainder kept, the division by 3 with its exact
    // remainder): 2x v^3/3 is at most 0.122 D, its two-part error 2^-100 of it; the rest,
    // 2x v^5 (1/5 + ... + v^24/29), at most 0.003 D, so its roundings cost D under 2e-18
    // relative; the truncation, v^26/31 of 2x v^3, under 1e-20 D.
    constexpr double kSeriesEnd = 1.0 / 5.0;
    if (std::fabs(v) < kSeriesEnd) {
        const Pair vt = exact_product<Fma>(v, total);
        const double v_low =
            ((diff.hi - vt.hi) - vt.lo + diff.lo - v * (sum.lo + m_low)) * inverse_total;
        const Pair dv = exact_product<Fma>(diff.hi, v);
        const Pair sq = exact_product<Fma>(v, v);
        const Pair cube = exact_product<Fma>(sq.hi, v);
        const double cube_low = cube.lo + sq.lo * v + 3.0 * sq.hi * v_low;
        const double twice_x = 2.0 * x;
        const Pair lead = exact_product<Fma>(cube.hi, twice_x);
        const double lead_low = lead.lo + twice_x * cube_low;
        constexpr double kOneThird = 1.0 / 3.0;
        const double third = lead.hi * kOneThird;
        double remainder;
        if constexpr (Fma) {
            remainder = fused_multiply_add(-3.0, third, lead.hi);  // exact
        } else {
            const Pair third_back = two_sum(2.0 * third, third);  // 3 third, exactly
            remainder = (lead.hi - third_back.hi) - third_back.lo;
        }
        const double third_low = (remainder + lead_low) * kOneThird;
        const double v2 = sq.hi;
        const double series = odd_series_tail(v2);
        const double tail = twice_x * cube.hi * v2 * series;
        const Pair head = two_sum(dv.hi, third);
        return quick_two_sum(head.hi,
                             head.lo + dv.lo + (diff.hi * v_low + diff.lo * v) + third_low + tail);
    }
    return add(scale<Fma>(log_ratio_by_table<Fma>(x, m, m_low), x), negate(diff));
}

#include "platform/numeric/stirling_table.inc"

// Stirling's error term at a whole count a >= 0 given r = 1/a (to a few ulps; unused below
// the table's end): the mpmath table below 128, above it the three-term series 1/(12a) -
// 1/(360a^3) + 1/(1260a^5), truncated by under 1.1e-18 absolute, its r's few ulps costing
// under 3e-19. Chosen without a branch (both formed): a branch on the count was mispredicted
// at random counts, three times per density.
[[gnu::always_inline]] inline double stirling_from(double a, double r) {
    constexpr double s0 = 1.0 / 12.0, s1 = 1.0 / 360.0, s2 = 1.0 / 1260.0;
    constexpr double kTableEnd = kStirlingTableSize;
    const double r2 = r * r;
    const double series = (s0 - (s1 - s2 * r2) * r2) * r;
    const double tabled = kStirlingTable[static_cast<int>(std::min(a, kTableEnd - 1.0))];
    return a < kTableEnd ? tabled : series;
}

// The Stirling terms of the binomial law, st(n) - st(k) - st(n - k), and the factor
// sqrt(n / (2 pi k (n - k))) in front of its exponential, for whole 0 < k < n below 2^31:
// the three reciprocals and the factor from one division, R = 1 / (n k (n - k)) (below
// 2^93, a normal double), 1/n = k (n - k) R and so on, each within four roundings.
struct BinomialFront {
    double stirling, factor;
};
[[gnu::always_inline]] inline BinomialFront binomial_front(double n, double k) {
    const double rest = n - k;  // exact
    const double k_rest = k * rest, n_k = n * k, n_rest = n * rest;
    const double reciprocal = 1.0 / (n * k_rest);
    const double stirling = stirling_from(n, k_rest * reciprocal) -
                            stirling_from(k, n_rest * reciprocal) -
                            stirling_from(rest, n_k * reciprocal);
    constexpr double kInverseTwoPi = 0.5 / std::numbers::pi;
    return {stirling, n * std::sqrt(reciprocal * kInverseTwoPi)};
}

// Stirling's error at a whole count k >= 1 alone.
[[gnu::always_inline]] inline double stirling_at(double k) {
    return stirling_from(k, 1.0 / k);
}

}  // namespace

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

template <bool Fma>
[[gnu::always_inline]] inline double binomial_point_of(int x, int nt, double p) {
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
    // (Plain calls, not lambdas: a lambda is not inlined into the fused build's entry point,
    // and built without the fused multiply-add it would call the library's fma.)
    if (x == 0)
        return numeric::exp_two_part(
            scale<Fma>(log_relative<Fma>(q_exact.hi, q_exact.lo / q_exact.hi), nt));
    if (x == nt) return numeric::exp_two_part(scale<Fma>(log_relative<Fma>(p, 0.0), nt));
    if (nt < kBinomialLiteralLimit) {
        // C(n, x) below 2^64, exact, times p^x q^(n-x) from its two-part logarithm: a few ulps
        // (the logarithm of C(n, x) rounded once would cost |ln C(n, x)| ulps, 40 at n = 60).
        const Pair c = combinations_two_part(nt, x);
        const Pair log_p = log_relative<Fma>(p, 0.0);
        const Pair log_q = log_relative<Fma>(q_exact.hi, q_exact.lo / q_exact.hi);
        return (c.hi + c.lo) *
               numeric::exp_two_part(add(scale<Fma>(log_p, x), scale<Fma>(log_q, nt - x)));
    }
    const double n = nt;
    const double k = x;
    // n p and n (1 - p) as exact two-part sums (1 - p itself split by two-sum).
    const double q = 1.0 - p;
    const double q_low = (1.0 - q) - p;
    const double np = n * p;
    const double np_low = exact_product<Fma>(n, p).lo;
    const double nq = n * q;
    const double nq_low = exact_product<Fma>(n, q).lo + n * q_low;
    const Pair deviance = add(deviance_of<Fma>(k, np, np_low), deviance_of<Fma>(n - k, nq, nq_low));
    const BinomialFront front = binomial_front(n, k);
    const Pair exponent = add(negate(deviance), Pair{front.stirling, 0.0});
    return numeric::exp_two_part(exponent) * front.factor;
}

double binomial_point_at_mean(int x, int nt) {
    const BinomialFront front = binomial_front(nt, x);
    return std::exp(front.stirling) * front.factor;
}

template <bool Fma>
[[gnu::always_inline]] inline double poisson_point_of(int x, double lambda) {
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
    const Pair exponent = add(negate(deviance_of<Fma>(k, lambda, 0.0)), Pair{-stirling_at(k), 0.0});
    return numeric::exp_two_part(exponent) / std::sqrt(2.0 * std::numbers::pi * k);
}

// The entry points: the fused multiply-add instantiation where the processor has it (one
// instruction for each exact product's remainder, where Dekker's takes seventeen), the
// portable one elsewhere. Both compute every exact product exactly; they differ only where
// the fused build rounds a product and a sum once instead of twice, inside the bounds above.
#if ZEMATH_DISCRETE_FMA
namespace {
__attribute__((target("fma"))) double binomial_point_fma(int x, int nt, double p) {
    return binomial_point_of<true>(x, nt, p);
}
__attribute__((target("fma"))) double poisson_point_fma(int x, double lambda) {
    return poisson_point_of<true>(x, lambda);
}
__attribute__((target("fma"))) Pair log_ratio_fma(double x, double m, double m_low) {
    return log_ratio_by_table<true>(x, m, m_low);
}
bool processor_has_fma() {
    return __builtin_cpu_supports("fma");
}
}  // namespace
#endif

double binomial_point(int x, int nt, double p) {
#if ZEMATH_DISCRETE_FMA
    if (processor_has_fma()) return binomial_point_fma(x, nt, p);
#endif
    return binomial_point_of<false>(x, nt, p);
}

double poisson_point(int x, double lambda) {
#if ZEMATH_DISCRETE_FMA
    if (processor_has_fma()) return poisson_point_fma(x, lambda);
#endif
    return poisson_point_of<false>(x, lambda);
}

TwoPart log_ratio_two_part(double x, double m, double m_low) {
#if ZEMATH_DISCRETE_FMA
    if (processor_has_fma()) return log_ratio_fma(x, m, m_low);
#endif
    return log_ratio_by_table<false>(x, m, m_low);
}

TwoPart log_ratio_two_part_portable(double x, double m, double m_low) {
    return log_ratio_by_table<false>(x, m, m_low);
}

double binomial_point_portable(int x, int nt, double p) {
    return binomial_point_of<false>(x, nt, p);
}

double poisson_point_portable(int x, double lambda) {
    return poisson_point_of<false>(x, lambda);
}

}  // namespace zemath::numeric
