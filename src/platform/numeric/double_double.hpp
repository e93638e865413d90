// Two-part ("double-double") arithmetic: a value carried as hi + lo with |lo| <= ulp(hi)/2,
// about 106 significant bits. Used where a result of moderate size is the exponential or
// a small difference of large terms (the deviance terms of the discrete laws, the
// corrected arguments of the normal tails), so that the last double digit survives.
//
// Method: Knuth's two-sum and Dekker's fast two-sum; products through fma, which the
// build requires to be exact (C++ std::fma rounds once). Accuracy: add and multiply keep
// a relative error of a few units of 2^-104.
// References: Dekker (1971), "A floating-point technique for extending the available
// precision"; Knuth, TAOCP vol. 2, 4.2.2; Hida, Li and Bailey (2001), QD library notes.
#pragma once

#include <cmath>

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

// a * b exactly (barring underflow of the low part).
inline TwoPart two_product(double a, double b) {
    const double p = a * b;
    return {p, std::fma(a, b, -p)};
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
    return quick_two_sum(p, std::fma(a.hi, b.hi, -p) + (a.hi * b.lo + a.lo * b.hi));
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
    return {r, std::fma(-r, d, 1.0) / d};
}

// e^(e.hi + e.lo); e.lo is below an ulp of e.hi, so e^lo = 1 + lo to double precision.
inline double exp_two_part(TwoPart e) {
    return std::exp(e.hi) * (1.0 + e.lo);
}

// ln(r + r_low) to about 2^-60 absolute (3e-18 worst), r > 0 normal, |r_low| below an ulp
// of r: r = 2^e f with f in [3/4, 3/2), so ln = e ln 2 + ln f, ln f = 2 atanh(s) with
// s = (f - 1)/(f + 1), |s| < 1/5; the leading 2s is carried in two parts (f - 1 exact, the
// quotient's remainder by fma), the rest 2 s^3 (1/3 + s^2/5 + ...) in double: it is below
// 0.0028, so its rounding stays under 2^-60; 14 terms leave a truncation below 1e-20. Plus
// r_low / r. A product of this logarithm with a factor up to 1e3 keeps 1e-15 absolute.
inline TwoPart log_two_part(double r, double r_low) {
    int exponent = 0;
    double fraction = std::frexp(r, &exponent);
    if (fraction < 0.75) {
        fraction *= 2.0;
        --exponent;
    }
    const double u = fraction - 1.0;  // exact
    const TwoPart den = two_sum(2.0, u);
    const double s = u / den.hi;
    const double s_low = (std::fma(-s, den.hi, u) - s * den.lo) / den.hi;
    const double s2 = s * s;
    double series = 1.0 / 29.0;  // sum_k s^(2k) / (2k + 3), Horner in s^2, k = 0..13
    // (plain products: the series needs no fma, which is a call where the target lacks it)
    for (int k = 12; k >= 0; --k) series = series * s2 + 1.0 / (2 * k + 3);
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
