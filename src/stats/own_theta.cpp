// The library's own Jacobian theta functions theta_k(x, q), k = 0..4, with the argument
// pi x and nome 0 <= q < 1 (theta_4 = theta_0):
//     theta_0 = 1 + 2 sum (-1)^n q^(n^2) cos(2 n pi x),  theta_3 = 1 + 2 sum q^(n^2) cos(2 n pi x),
//     theta_1 = 2 sum (-1)^n q^((n+1/2)^2) sin((2n+1) pi x),
//     theta_2 = 2 sum q^((n+1/2)^2) cos((2n+1) pi x).
//
// Method: x is first reduced exactly (x - 2 round(x/2), no rounding) to [-1, 1], a
// period of every theta_k. With q = e^(-pi t):
// - t >= 1 (q <= e^-pi = 0.0432): the q-series above, terms q^(n^2) below 1e-18 after
//   at most 5 terms.
// - t < 1: Jacobi's imaginary transformation in its Poisson-summed form (DLMF 20.7.30-
//   20.7.33 with tau = i t), every theta a sum of Gaussians of width t:
//       theta_3 = t^(-1/2) sum_n e^(-pi (x - n)^2 / t),
//       theta_0 = t^(-1/2) sum_n e^(-pi (x + 1/2 - n)^2 / t),
//       theta_2 = t^(-1/2) sum_n (-1)^n e^(-pi (x - n)^2 / t),
//       theta_1 = t^(-1/2) sum_n (-1)^n e^(-pi (x - 1/2 - n)^2 / t),
//   with t = -log1p(q - 1)/pi exact to an ulp as q approaches 1; about 2 + sqrt(14 t)
//   terms on each side.
// Accuracy: relative to the envelope theta_3(0, q) (so absolute near the zeros and where
// theta_0, theta_1, theta_2 fall far below it as q nears 1); worst about 1e-15
// (tests/reference/special_own_worst_errors.txt).
// Domain (NANUM outside): k in 0..4, 0 <= q < 1, x finite.
// References: DLMF 20.2, 20.7.30-20.7.33.
#include <cmath>
#include <numbers>

#include "core/missing.hpp"
#include "stats/own_special.hpp"

namespace zemath::own {

namespace {

constexpr double kTransformBelow = 1.0;  // t = -ln q / pi

double theta_series(int k, double x, double q) {
    if (q == 0.0) return (k == 0 || k == 3) ? 1.0 : 0.0;
    const double lq = std::log(q);
    const double pi = std::numbers::pi;
    double sum = 0.0;
    for (int n = 0; n < 20; ++n) {
        double term;
        if (k == 1 || k == 2) {
            const double e = (n + 0.5) * (n + 0.5);
            const double w = std::exp(e * lq);
            term = k == 1 ? ((n % 2 == 0) ? w : -w) * std::sin((2 * n + 1) * pi * x)
                          : w * std::cos((2 * n + 1) * pi * x);
            sum += 2.0 * term;
            // An absolute stop: weights below 1e-18, a hundredth of an ulp of 1 (the size of the
            // k = 0, 3 sums, which start at 1); the weights fall like q^(n^2), so the rest is
            // smaller still.
            if (w < 1e-18) break;
        } else {
            if (n == 0) {
                sum = 1.0;
                continue;
            }
            const double w = std::exp(static_cast<double>(n) * n * lq);
            term = w * std::cos(2 * n * pi * x);
            sum += 2.0 * ((k == 0 && n % 2 == 1) ? -term : term);
            // An absolute stop: weights below 1e-18, a hundredth of an ulp of 1 (the size of the
            // k = 0, 3 sums, which start at 1); the weights fall like q^(n^2), so the rest is
            // smaller still.
            if (w < 1e-18) break;
        }
    }
    return sum;
}

double theta_transformed(int k, double x, double q) {
    const double t = -std::log1p(q - 1.0) / std::numbers::pi;     // q - 1 exact for q >= 1/2
    const double shift = (k == 0) ? -0.5 : (k == 1) ? 0.5 : 0.0;  // Gaussians at n + shift
    const bool alternate = (k == 1 || k == 2);
    const double centre = x - shift;
    const int reach = 2 + static_cast<int>(std::ceil(std::sqrt(14.0 * t)));
    const int n0 = static_cast<int>(std::nearbyint(centre));
    double sum = 0.0;
    for (int n = n0 - reach; n <= n0 + reach; ++n) {
        const double d = centre - n;
        const double w = std::exp(-std::numbers::pi * d * d / t);
        sum += (alternate && (n % 2 != 0)) ? -w : w;
    }
    return sum / std::sqrt(t);
}

}  // namespace

double jacobian_theta(int k, double x, double q) {
    if (k < 0 || k > 4 || detail::unusable(x) || detail::unusable(q)) return NANUM;
    if (q < 0.0 || q >= 1.0) return NANUM;
    if (k == 4) k = 0;
    const double xr = x - 2.0 * std::nearbyint(0.5 * x);  // exact: period 2
    const double t = q == 0.0 ? kTransformBelow : -std::log(q) / std::numbers::pi;
    const double v = t >= kTransformBelow ? theta_series(k, xr, q) : theta_transformed(k, xr, q);
    return std::isfinite(v) ? v : NANUM;
}

}  // namespace zemath::own
