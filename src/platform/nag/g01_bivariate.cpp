// g01hac: the standard bivariate normal lower-tail probability P(X <= x, Y <= y) with
// correlation rho.
//
// Method: Genz's BVND (after Drezner and Wesolowsky 1990; Genz 2004, Statistics and
// Computing 14, 251-260): Gauss-Legendre rules of 6, 12 or 20 points on the integral
// over the correlation, with Drezner-Wesolowsky's transformation and asymptotic start
// for |rho| >= 0.925. BVND is accurate to about 1e-15 absolutely, which is a fine
// relative accuracy only while the probability is not small. Below 1/8 the probability
// is recomputed from the one-dimensional form
//     P = integral_{-inf}^{a} phi(s) Phi((b - rho s) / sqrt(1 - rho^2)) ds,
// a = min(x, y), b the other, whose integrand is positive: 20-point Gauss-Legendre panels
// laid around each place where it changes (its mode, the end point, the turn of the inner
// Phi) on that place's own scale, evaluated in offset form with two-part arguments, so the
// probability keeps its relative accuracy down to the smallest normal numbers (worst
// 5.7e-15 against mpmath's Owen's-T evaluation over the test grid).
// |rho| = 1 gives the one-dimensional limits: Phi(min(x, y)) for rho = 1 and
// max(0, Phi(x) + Phi(y) - 1) (computed without cancellation) for rho = -1.
//
// Failures: NE_REAL for NaN, NE_REAL_ARG_GT for |rho| > 1. Infinite x or y give their
// limits.
#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

#include "platform/nag/g01.hpp"
#include "platform/nag/log_concave_quadrature.hpp"
#include "platform/numeric/double_double.hpp"
#include "platform/numeric/gauss_legendre.hpp"
#include "platform/numeric/normal.hpp"

namespace zemath::nag {

namespace {

// Lower and upper standard normal tails, each computed directly.
using numeric::normal_lower;
using numeric::normal_upper;

// Sum over the nodes +-x of a Gauss-Legendre rule on the integral over asin(r).
template <std::size_t Half>
double sum_small_rho(const numeric::GaussLegendreRule<Half>& rule, double hk, double hs,
                     double asr) {
    double sum = 0.0;
    for (std::size_t i = 0; i < Half; ++i) {
        for (double sign : {-1.0, 1.0}) {
            const double sn = std::sin(asr * (sign * rule.node[i] + 1.0) / 2.0);
            sum += rule.weight[i] * std::exp((sn * hk - hs) / (1.0 - sn * sn));
        }
    }
    return sum;
}

// BVND(h, k, r) = P(X > h, Y > k), |r| < 1.
double bvnd(double h, double k, double r) {
    constexpr double two_pi = 2.0 * std::numbers::pi;
    double hk = h * k;
    if (std::fabs(r) < 0.925) {
        double bvn = 0.0;
        if (r != 0.0) {
            const double hs = (h * h + k * k) / 2.0;
            const double asr = std::asin(r);
            double sum = 0.0;
            if (std::fabs(r) < 0.3)
                sum = sum_small_rho(numeric::kGaussLegendre6, hk, hs, asr);
            else if (std::fabs(r) < 0.75)
                sum = sum_small_rho(numeric::kGaussLegendre12, hk, hs, asr);
            else
                sum = sum_small_rho(numeric::kGaussLegendre20, hk, hs, asr);
            bvn = sum * asr / (2.0 * two_pi);
        }
        return bvn + normal_upper(h) * normal_upper(k);
    }
    if (r < 0.0) {
        k = -k;
        hk = -hk;
    }
    double bvn = 0.0;
    const double as = (1.0 - r) * (1.0 + r);
    double a = std::sqrt(as);
    const double bs = (h - k) * (h - k);
    const double c = (4.0 - hk) / 8.0;
    const double d = (12.0 - hk) / 16.0;
    const double first = -(bs / as + hk) / 2.0;
    if (first > -100.0)
        bvn = a * std::exp(first) *
              (1.0 - c * (bs - as) * (1.0 - d * bs / 5.0) / 3.0 + c * d * as * as / 5.0);
    if (-hk < 100.0) {
        const double b = std::sqrt(bs);
        bvn -= std::exp(-hk / 2.0) * std::sqrt(two_pi) * normal_lower(-b / a) * b *
               (1.0 - c * bs * (1.0 - d * bs / 5.0) / 3.0);
    }
    a /= 2.0;
    const auto& rule = numeric::kGaussLegendre20;
    for (std::size_t i = 0; i < rule.node.size(); ++i) {
        for (double sign : {-1.0, 1.0}) {
            const double xs = (a * (sign * rule.node[i] + 1.0)) * (a * (sign * rule.node[i] + 1.0));
            const double rs = std::sqrt(1.0 - xs);
            const double exponent = -(bs / xs + hk) / 2.0;
            if (exponent > -100.0)
                bvn += a * rule.weight[i] * std::exp(exponent) *
                       (std::exp(-hk * xs / (2.0 * (1.0 + rs) * (1.0 + rs))) / rs -
                        (1.0 + c * xs * (1.0 + d * xs)));
        }
    }
    bvn = -bvn / two_pi;
    if (r > 0.0) return bvn + normal_upper(std::max(h, k));
    bvn = -bvn;
    if (k > h)
        bvn += h < 0.0 ? normal_lower(k) - normal_lower(h) : normal_upper(h) - normal_upper(k);
    return bvn;
}

// P(X <= x, Y <= y) = integral_{-inf}^{a} phi(s) Phi(c(s)) ds, c(s) = (b - rho s)/sigma,
// a = min(x, y), b = max(x, y), sigma = sqrt(1 - rho^2). The positive integrand changes
// on several scales at once: phi around s = 0 (scale 1), the inner Phi around its
// turning point s0 = b/rho (scale sigma/|rho|, a near-step as |rho| -> 1), the end point
// a (scale 1/|L'(a)|, L = ln of the integrand, L' = -s - (rho/sigma) m(c) with m the
// inverse Mills ratio) and the interior mode when there is one. Panels are laid around
// each of these on its own scale, out to 40 units (phi below e^-800 of its peak beyond).
// Far in the tail the integrand's logarithm has slopes of tens, so it is evaluated in the
// offset t = s - a from exact parts: phi(a + t) = phi(a) e^(-t (a + t/2)) and
// c(a + t) = c(a) - (rho/sigma) t, with c(a) carried to twice the precision.
double lower_orthant_by_quadrature(double x, double y, double rho) {
    using detail::Feature;
    using numeric::inverse_mills;
    const double a = std::min(x, y);
    const double b = std::max(x, y);
    // sigma^2 = 1 - rho^2 and c(a) = (b - rho a)/sigma as two-part values.
    // (1 - rho)(1 + rho) from exact two-part factors (Fast2Sum: |1| >= |rho|).
    const double minus = 1.0 - rho;
    const double minus_low = (1.0 - minus) - rho;
    const double plus = 1.0 + rho;
    const double plus_low = (1.0 - plus) + rho;
    const double sigma2 = minus * plus;
    const double sigma2_low =
        numeric::product_error(minus, plus, sigma2) + minus * plus_low + plus * minus_low;
    const double sigma = std::sqrt(sigma2);
    const double sigma_low =
        (numeric::remainder_of(sigma2, sigma, sigma) + sigma2_low) / (2.0 * sigma);
    const double product = rho * a;
    const double product_low = numeric::product_error(rho, a, product);
    const double numerator = b - product;
    const double numerator_low = ((b - numerator) - product) - product_low;
    const double c_end = numerator / sigma;
    const double c_end_low =
        (numeric::remainder_of(numerator, c_end, sigma) + numerator_low - c_end * sigma_low) /
        sigma;
    const double slope_ratio = rho / sigma;
    const double density_end = numeric::normal_density(a);

    const auto c_at = [=](double t) { return c_end - slope_ratio * t; };
    const auto d1 = [=](double t) { return -(a + t) - slope_ratio * inverse_mills(c_at(t)); };
    const auto d2 = [=](double t) {
        const double c = c_at(t);
        const double m = inverse_mills(c);
        return -1.0 - slope_ratio * slope_ratio * std::clamp(m * (m + c), 0.0, 1.0);
    };
    const auto integrand = [=](double t) {
        const double density = density_end * std::exp(-t * (a + 0.5 * t));
        if (density == 0.0) return 0.0;
        return density * normal_upper(-c_at(t), -c_end_low);
    };

    // The end point's scale, and the interior mode (L concave: L' decreasing) if L' < 0 at a.
    const double end_slope = d1(0.0);
    const double end_width =
        std::min(1.0 / std::sqrt(-d2(0.0)), end_slope > 0.0 ? 1.0 / end_slope : INFINITY);
    Feature mode{0.0, end_width};
    if (end_slope < 0.0) {
        double lo = -1.0;
        for (int i = 0; i < 60 && d1(lo) < 0.0; ++i) lo *= 2.0;
        double hi = 0.0;
        // Bisection to 1e-12 of the mode's scale: the mode only places the quadrature's panels, so
        // its position needs no more.
        for (int i = 0; i < 100 && hi - lo > 1e-12 * (1.0 + std::fabs(a + hi)); ++i) {
            const double mid = 0.5 * (lo + hi);
            (d1(mid) > 0.0 ? lo : hi) = mid;
        }
        mode = {0.5 * (lo + hi), 1.0 / std::sqrt(-d2(0.5 * (lo + hi)))};
    }
    const double step_point = rho != 0.0 ? b / rho - a : 0.0;
    const double step_width = rho != 0.0 ? sigma / std::fabs(rho) : 1.0;
    constexpr double kReach = 40.0;
    const std::array<Feature, 4> features = {Feature{0.0, end_width}, mode,
                                             Feature{step_point, step_width}, Feature{-a, 1.0}};
    return detail::integrate_with_features(integrand, -INFINITY, 0.0, features, kReach);
}

}  // namespace

double g01hac(double x, double y, double rho, NagError* fail) {
    if (std::isnan(x) || std::isnan(y) || std::isnan(rho)) return fail->set(NE_REAL), 0.0;
    if (std::fabs(rho) > 1.0) return fail->set(NE_REAL_ARG_GT), 0.0;
    fail->set(NE_NOERROR);
    // Beyond |z| = 40 a normal tail is below 4e-350, under the smallest denormal, so such
    // an argument gives exactly the result of its infinite limit in double; mapped to it
    // here because the rules below overflow on huge finite arguments (y = -DBL_MAX gave NaN).
    constexpr double kTailLimit = 40.0;
    const auto limit = [](double z) {
        return z < -kTailLimit ? -INFINITY : (z > kTailLimit ? INFINITY : z);
    };
    x = limit(x);
    y = limit(y);
    if (x == -INFINITY || y == -INFINITY) return 0.0;
    if (x == INFINITY) return normal_lower(y);
    if (y == INFINITY) return normal_lower(x);
    if (rho == 1.0) return normal_lower(std::min(x, y));
    if (rho == -1.0) {
        // P(-y < X <= x): empty unless x > -y; each difference taken in the tail where
        // both terms are small.
        if (x <= -y) return 0.0;
        if (x <= 0.0) return normal_lower(x) - normal_lower(-y);
        if (-y >= 0.0) return normal_upper(-y) - normal_upper(x);
        return std::max(0.0, 1.0 - normal_upper(x) - normal_lower(-y));
    }
    // Above 1/8 the absolute accuracy of BVND is a relative one of about 1e-14.
    constexpr double kBvndFloor = 0.125;
    const double value = bvnd(-x, -y, rho);
    if (value > kBvndFloor) return std::min(value, 1.0);
    return std::min(lower_orthant_by_quadrature(x, y, rho), 1.0);
}

}  // namespace zemath::nag
