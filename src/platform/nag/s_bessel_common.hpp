// Large-argument expansions of the modified Bessel functions, shared by the integer and
// fractional-order substitutes for the exponentially scaled forms where the unscaled
// value overflows or underflows (x > 700):
//     e^-x I_v(x) ~ (2 pi x)^(-1/2) sum (-1)^k a_k(v) / x^k,
//     e^x  K_v(x) ~ (pi / 2x)^(1/2) sum a_k(v) / x^k,
//     a_k(v) = prod_{j=1..k} (4 v^2 - (2j - 1)^2) / (k! 8^k).
// The terms shrink until k is about 2x, far beyond what double precision needs for
// x > 700 (the neglected exponentially small part of I is below e^(-2x)).
#pragma once

#include <cmath>
#include <numbers>

namespace zemath::nag::detail {

inline constexpr double kScaledSwitch = 700.0;

inline double bessel_asymptotic_sum(double v, double x, double sign) {
    const double mu = 4.0 * v * v;
    double term = 1.0, sum = 1.0;
    for (int k = 1; k < 60; ++k) {
        const double odd = 2.0 * k - 1.0;
        term *= sign * (mu - odd * odd) / (8.0 * k * x);
        sum += term;
        // A term below 1e-17 of the sum (a tenth of an ulp) no longer changes it.
        if (std::fabs(term) <= 1e-17 * std::fabs(sum)) break;
    }
    return sum;
}

inline double scaled_i_large(double v, double x) {
    return bessel_asymptotic_sum(v, x, -1.0) / std::sqrt(2.0 * std::numbers::pi * x);
}

inline double scaled_k_large(double v, double x) {
    return bessel_asymptotic_sum(v, x, 1.0) * std::sqrt(std::numbers::pi / (2.0 * x));
}

}  // namespace zemath::nag::detail
