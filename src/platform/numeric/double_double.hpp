// Two-part ("double-double") arithmetic: a value carried as hi + lo with |lo| <= ulp(hi)/2,
// about 106 significant bits. Used where a result of moderate size is the exponential or
// a small difference of large terms (the deviance terms of the discrete laws, the
// corrected arguments of the normal tails), so that the last double digit survives.
//
// Method: Knuth's two-sum and Dekker's fast two-sum; the rounding error of a product by
// product_error below: the hardware fma where the compiler inlines one; else, where the
// processor has an fma (the C library's std::fma then runs it, about 4 ns with the call), that
// call; else Dekker's product of Veltkamp halves (about 5 ns, where the C library's fma in
// software takes 130 ns). Accuracy: add and multiply keep a relative error of a few units of
// 2^-104.
// References: Dekker (1971), "A floating-point technique for extending the available
// precision"; Knuth, TAOCP vol. 2, 4.2.2; Hida, Li and Bailey (2001), QD library notes.
#pragma once

#include <bit>
#include <cmath>
#include <cstdint>

namespace zemath::numeric {

struct TwoPart {
    double hi;
    double lo;
};

// a + b exactly, any magnitudes.
inline TwoPart two_sum(double a, double b) {
    const double s = a + b;
    const double bb = s - a;
    return {s, (a - (s - bb)) + (b - bb)};
}

// a + b exactly when |a| >= |b| (or a = 0).
inline TwoPart quick_two_sum(double a, double b) {
    const double s = a + b;
    return {s, b - (s - a)};
}

// ---- the exact product ------------------------------------------------------------------

// Whether std::fma is one inlined instruction on this target (__FP_FAST_FMA, or __FMA__ with
// x86's -mfma); without, it is a call into the C library, which runs the processor's fma where
// it has one and emulates it in software otherwise.
#if defined(__FP_FAST_FMA) || defined(__FMA__)
inline constexpr bool kInlineFma = true;
#else
inline constexpr bool kInlineFma = false;
#endif

// Whether the processor running the library has an fma (x86: read once at load; the value
// only picks between two exact forms, so a use before it is set, false, is still exact).
// Measured on an x86-64 with FMA3, GCC 12 -O3, glibc 2.36: the library call about 4 ns per
// product, Dekker's form about the same alone and 10 to 25 per cent slower inside the two-part
// logarithm and products (its dependent chain is longer); with the C library's fma in
// software (its FMA use switched off), 130 ns per call against Dekker's 4.6 ns.
#if !defined(__FP_FAST_FMA) && !defined(__FMA__) && (defined(__x86_64__) || defined(__i386__))
inline const bool kFmaInProcessor = [] {
    __builtin_cpu_init();
    return __builtin_cpu_supports("fma") != 0;
}();
#else
inline constexpr bool kFmaInProcessor = kInlineFma;
#endif

// The largest factor magnitude Veltkamp's split takes: (2^27 + 1) a overflows above about
// 2^997, so 2^996 (6.7e299) leaves a margin.
inline constexpr double kSplitFactorMax = 0x1p996;
// The largest product it takes: above, the partial product of the leading halves can overflow
// where the product does not (and an infinite product has no error to give).
inline constexpr double kSplitProductMax = 0x1p1022;

// a = hi + lo exactly, hi with the leading 26 bits of a's significand and lo (of the same or
// opposite sign) the rest, for |a| <= kSplitFactorMax (Veltkamp; Dekker 1971).
inline TwoPart veltkamp_split(double a) {
    const double t = 134217729.0 * a;  // 2^27 + 1
    const double hi = t - (t - a);
    return {hi, a - hi};
}

// a b - p exactly, p = fl(a b) the rounded product, by Dekker's product of the Veltkamp
// halves, whose four partial products are exact and whose sums round nothing (round to
// nearest). Domain: any a, b with a b finite and its error not below the normal range (|a b| at
// least about 2^-960; below, this and fma both lose the low part). Factors above
// kSplitFactorMax or a product above kSplitProductMax in magnitude (or not finite) take
// std::fma: the guard is one well-predicted branch, so callers need not know their factors'
// range.
inline double split_product_error(double a, double b, double p) {
    if (!(std::fabs(a) <= kSplitFactorMax && std::fabs(b) <= kSplitFactorMax &&
          std::fabs(p) <= kSplitProductMax)) [[unlikely]]
        return std::fma(a, b, -p);
    const TwoPart x = veltkamp_split(a), y = veltkamp_split(b);
    return ((x.hi * y.hi - p) + x.hi * y.lo + x.lo * y.hi) + x.lo * y.lo;
}

// a b - p exactly, p = fl(a b): the product's rounding error, itself a double. The fma where
// the processor has one (inlined, or the C library's call), else split_product_error (its
// domain).
inline double product_error(double a, double b, double p) {
    if constexpr (kInlineFma) {
        return std::fma(a, b, -p);
    } else {
        if (kFmaInProcessor) return std::fma(a, b, -p);
        return split_product_error(a, b, p);
    }
}

// n - q d exactly where q = fl(n / d) (a quotient's remainder, or with d = q and q = fl(sqrt
// n) a square root's), without an fma: the remainder is a double, fl(q d) lies within a factor
// 2 of n so n - fl(q d) is exact (Sterbenz), and only the product's error is left. The domain of
// split_product_error, with the remainder itself not below the normal range. Where q is only
// near the quotient (a product by a rounded reciprocal), the remainder within one rounding, as
// fma gives it.
inline double split_remainder(double n, double q, double d) {
    // q d near the top of the range could round to infinity where n does not.
    if (!(std::fabs(q) <= kSplitFactorMax && std::fabs(d) <= kSplitFactorMax &&
          std::fabs(n) <= kSplitProductMax)) [[unlikely]]
        return std::fma(-q, d, n);
    const double p = q * d;
    return (n - p) - split_product_error(q, d, p);
}

// n - q d as split_remainder gives it, by the fma where the processor has one.
inline double remainder_of(double n, double q, double d) {
    if constexpr (kInlineFma) {
        return std::fma(-q, d, n);
    } else {
        if (kFmaInProcessor) return std::fma(-q, d, n);
        return split_remainder(n, q, d);
    }
}

// a * b exactly (barring underflow of the low part).
inline TwoPart two_product(double a, double b) {
    const double p = a * b;
    return {p, product_error(a, b, p)};
}

inline TwoPart add(TwoPart a, TwoPart b) {
    const TwoPart s = two_sum(a.hi, b.hi);
    return quick_two_sum(s.hi, s.lo + a.lo + b.lo);
}

inline TwoPart negate(TwoPart a) {
    return {-a.hi, -a.lo};
}

inline TwoPart multiply(TwoPart a, TwoPart b) {
    const double p = a.hi * b.hi;
    return quick_two_sum(p, product_error(a.hi, b.hi, p) + (a.hi * b.lo + a.lo * b.hi));
}

// a / b to twice the precision (b.hi normal, the quotient neither overflowing nor
// underflowing): the remainder a - q b formed in two parts.
inline TwoPart divide(TwoPart a, TwoPart b) {
    const double q = a.hi / b.hi;
    const TwoPart r = add(a, negate(multiply(TwoPart{q, 0.0}, b)));
    return quick_two_sum(q, r.hi / b.hi);
}

// 1 / d to twice the precision.
inline TwoPart reciprocal(double d) {
    const double r = 1.0 / d;
    return {r, remainder_of(1.0, r, d) / d};
}

// e^(e.hi + e.lo); e.lo is below an ulp of e.hi, so e^lo = 1 + lo to double precision.
inline double exp_two_part(TwoPart e) {
    return std::exp(e.hi) * (1.0 + e.lo);
}

// ln(r + r_low) to about 2^-60 absolute (3e-18 worst), r > 0 normal, |r_low| below an ulp
// of r: r = 2^e f with f in [3/4, 3/2), so ln = e ln 2 + ln f, ln f = 2 atanh(s) with
// s = (f - 1)/(f + 1), |s| < 1/5; the leading 2s is carried in two parts (f - 1 exact, the
// quotient's remainder exact), the rest 2 s^3 (1/3 + s^2/5 + ...) in double: it is below
// 0.0028, so its rounding stays under 2^-60; 14 terms leave a truncation below 1e-20. Plus
// r_low / r. A product of this logarithm with a factor up to 1e3 keeps 1e-15 absolute.
inline TwoPart log_two_part(double r, double r_low) {
    // r = 2^exponent fraction with fraction in [1/2, 1), from the bits where r is normal
    // (frexp is a library call).
    const std::uint64_t bits = std::bit_cast<std::uint64_t>(r);
    const int biased = static_cast<int>(bits >> 52 & 0x7ff);
    int exponent = biased - 1022;
    double fraction = std::bit_cast<double>((bits & 0x000fffffffffffffULL) | (1022ULL << 52));
    if (biased == 0 || biased == 0x7ff) fraction = std::frexp(r, &exponent);
    if (fraction < 0.75) {
        fraction *= 2.0;
        --exponent;
    }
    const double u = fraction - 1.0;  // exact
    const TwoPart den = two_sum(2.0, u);
    const double s = u / den.hi;
    const double s_low = (remainder_of(u, s, den.hi) - s * den.lo) / den.hi;
    const double s2 = s * s;
    // sum_k s^(2k) / (2k + 3), k = 0..13, by Estrin's scheme in s^2 (four levels of
    // independent products instead of a chain of thirteen; all terms positive). Plain
    // products: the series needs no fma, which is a call where the target lacks it.
    const double s4 = s2 * s2, s8 = s4 * s4, s16 = s8 * s8;
    constexpr double c0 = 1.0 / 3, c1 = 1.0 / 5, c2 = 1.0 / 7, c3 = 1.0 / 9, c4 = 1.0 / 11,
                     c5 = 1.0 / 13, c6 = 1.0 / 15, c7 = 1.0 / 17, c8 = 1.0 / 19, c9 = 1.0 / 21,
                     c10 = 1.0 / 23, c11 = 1.0 / 25, c12 = 1.0 / 27, c13 = 1.0 / 29;
    const double p0 = c0 + c1 * s2, p1 = c2 + c3 * s2, p2 = c4 + c5 * s2, p3 = c6 + c7 * s2,
                 p4 = c8 + c9 * s2, p5 = c10 + c11 * s2, p6 = c12 + c13 * s2;
    const double q0 = p0 + p1 * s4, q1 = p2 + p3 * s4, q2 = p4 + p5 * s4;
    const double series = (q0 + q1 * s8) + (q2 + p6 * s8) * s16;
    constexpr double kLn2Hi = 0.6931471805599453;      // ln 2 rounded to double
    constexpr double kLn2Lo = 2.3190468138462996e-17;  // ln 2 - kLn2Hi
    const double e = static_cast<double>(exponent);
    const TwoPart scaled = two_product(e, kLn2Hi);  // exact: |e| < 2^11
    const TwoPart lead = two_sum(scaled.hi, 2.0 * s);
    const double rest =
        scaled.lo + e * kLn2Lo + 2.0 * s_low + 2.0 * s * s2 * series + r_low / r + lead.lo;
    return quick_two_sum(lead.hi, rest);
}

}  // namespace zemath::numeric
