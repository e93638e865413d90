// s21ccc: the Jacobian theta functions theta_k(x, q), k = 0..4, with nome 0 <= q < 1
// and the trigonometric argument pi x:
//     theta_0(x, q) = 1 + 2 sum_{n>=1} (-1)^n q^(n^2) cos(2 n pi x)       (= theta_4)
//     theta_1(x, q) = 2 sum_{n>=0} (-1)^n q^((n+1/2)^2) sin((2n+1) pi x)
//     theta_2(x, q) = 2 sum_{n>=0} q^((n+1/2)^2) cos((2n+1) pi x)
//     theta_3(x, q) = 1 + 2 sum_{n>=1} q^(n^2) cos(2 n pi x)
//
// Method: for q <= e^-pi the series above (at most a handful of terms); for larger q
// Jacobi's imaginary transformation, which with s = -ln(q) / pi turns them into sums of
// Gaussians that converge the faster the closer q is to 1:
//     theta_3(x, q) = s^(-1/2) sum_n exp(-pi (x - n)^2 / s),   theta_0(x) = theta_3(x + 1/2),
//     theta_2(x, q) = s^(-1/2) sum_n (-1)^n exp(-pi (x - n)^2 / s),  theta_1(x) = -theta_2(x +
//     1/2).
// x is first reduced exactly by the period (1 for theta_0 and theta_3, 2 for theta_1
// and theta_2). Accuracy: a few ulps relative to the largest term, so relative except
// near the zeros of the functions, where it is absolute.
//
// Failures (value 0): k outside 0..4 (NE_INT); q outside [0, 1) or NaN (NE_REAL); x not
// finite (NE_REAL).
// Reference: E. T. Whittaker and G. N. Watson, A Course of Modern Analysis, ch. 21
// (the transformation formulae).
#include <cmath>
#include <numbers>

#include "platform/nag/s.hpp"

namespace zemath::nag {

namespace {

constexpr double kPi = std::numbers::pi;
constexpr double kDirectBelow = 0.043213918263772250;  // e^-pi: both nomes equal there

// Sum over n of sign^n exp(-pi (x - n)^2 / s), x in [-1, 1].
double gaussian_sum(double x, double s, bool alternate) {
    const int centre = static_cast<int>(std::nearbyint(x));
    double sum = 0.0;
    // exp(-pi k^2 / s) < 1e-18 once k^2 > 13.2 s; s < 1 here, so |n - x| <= 5 suffices.
    for (int n = centre - 6; n <= centre + 6; ++n) {
        const double d = x - n;
        const double term = std::exp(-kPi * d * d / s);
        sum += (alternate && (n & 1)) ? -term : term;
    }
    return sum / std::sqrt(s);
}

// The direct series, x reduced; one of the four by k (4 already mapped to 0).
double direct_series(int k, double x, double q) {
    const double log_q = std::log(q);
    double sum = 0.0;
    if (k == 0 || k == 3) {
        for (int n = 1; n < 40; ++n) {
            const double weight = std::exp(static_cast<double>(n) * n * log_q);
            if (weight == 0.0) break;
            const double term = weight * std::cos(2.0 * n * kPi * x);
            sum += (k == 0 && (n & 1)) ? -term : term;
            // The sum is 1 + 2 sum, so weights below 1e-18 (a hundredth of an ulp of 1) add
            // nothing.
            if (weight < 1e-18) break;
        }
        return 1.0 + 2.0 * sum;
    }
    for (int n = 0; n < 40; ++n) {
        const double h = n + 0.5;
        const double weight = std::exp(h * h * log_q);
        if (weight == 0.0) break;
        const double angle = (2.0 * n + 1.0) * kPi * x;
        const double term = weight * (k == 1 ? std::sin(angle) : std::cos(angle));
        sum += (k == 1 && (n & 1)) ? -term : term;
        // A weight below 1e-18 of the sum (a hundredth of an ulp) no longer changes it.
        if (weight < 1e-18 * std::fabs(sum) && n > 0) break;
    }
    return 2.0 * sum;
}

// x reduced into [-period/2, period/2].
double reduce(double x, double period) {
    double r = std::fmod(x, period);
    if (r > 0.5 * period) r -= period;
    if (r < -0.5 * period) r += period;
    return r;
}

}  // namespace

double s21ccc(int k, double x, double q, NagError* fail) {
    fail->set(NE_NOERROR);
    if (k < 0 || k > 4) return fail->set(NE_INT), 0.0;
    if (!(q >= 0.0 && q < 1.0) || !std::isfinite(x)) return fail->set(NE_REAL), 0.0;
    if (k == 4) k = 0;
    const bool even = k == 0 || k == 3;
    const double r = reduce(x, even ? 1.0 : 2.0);
    if (q == 0.0) {
        if (even) return 1.0;
        return 0.0;
    }
    if (q <= kDirectBelow) return direct_series(k, r, q);
    const double s = -std::log1p(q - 1.0) / kPi;
    switch (k) {
        case 3:
            return gaussian_sum(r, s, false);
        case 0:
            return gaussian_sum(reduce(r + 0.5, 1.0), s, false);
        case 2:
            return gaussian_sum(r, s, true);
        default:
            return -gaussian_sum(reduce(r + 0.5, 2.0), s, true);
    }
}

}  // namespace zemath::nag
