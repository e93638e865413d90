// Chernoff bounds on the lower tails of the non-central chi-square and beta laws: where the
// bound lies below half the smallest subnormal, 2^-1075, the lower tail rounds to 0 and the
// routines return it at once, instead of summing a mixture whose every term underflows
// (those sums took up to 50 ms to find 0).
//
// Chi-square. For X non-central chi-square with f degrees of freedom and non-centrality
// lambda, and every t > 0 (Markov's inequality on e^(-tX)):
//     P(X <= x) <= e^(tx) E[e^(-tX)] = e^(tx) (1 + 2t)^(-f/2) e^(-lambda t / (1 + 2t)),
// so with w = 2t > 0
//     ln P(X <= x) <= G(w) = w x / 2 - (f/2) ln(1 + w) - (lambda/2) w / (1 + w).
// G is convex in w; its minimum solves x u^2 - f u - lambda = 0, u = 1 + w:
//     u = (f + sqrt(f^2 + 4 x lambda)) / (2 x),
// which exceeds 1 exactly when x lies below the mean f + lambda (elsewhere the bound is 1).
//
// Beta. X = U / (U + V), U non-central chi-square with 2a degrees of freedom and
// non-centrality lambda, V central chi-square with 2b, independent. With y = 1 - x,
// P(X <= x) = P(y U - x V <= 0), and for 0 < t < 1/(2x) Markov's inequality on
// e^(-t(yU - xV)) gives, with p = 2ty, q = 2tx = p r, r = x / y, h = lambda / 2:
//     ln P(X <= x) <= G(p) = -a ln(1 + p) - h p / (1 + p) - b ln(1 - q).
// G is convex in p (each term is); G'(p) = 0 multiplied by (1 + p)^2 (1 - pr) > 0 is the
// quadratic
//     r (a + b) p^2 + (2br + hr + ar - a) p + (br - a - h) = 0,
// with one root in (0, 1/r) when br < a + h (G' runs from below 0 at p = 0 to +infinity at
// q = 1), none useful otherwise (the bound is then 1). The F law is the beta law at
// r = df1 f / df2.
//
// Rounding. Any parameter gives a valid bound provided G is evaluated at that parameter;
// the optimum only makes it tight. So the optimum is located in the extended type (its range
// holds r^2 for any double r), then fixed as an exact parameter: w itself for the
// chi-square; for the beta, q where q <= 1/2 (then 1 - q has relative error 2^-64), else
// v = 1 - q rounded to a multiple of 2^-64 and at least 2^-62, so that q = 1 - v is exact.
// p = q / r follows with relative error below 3e-19 (r's own few units of 2^-64 and the
// division), which moves G by at most (a + h) 3e-19 (|dG/dp| p <= a + h). Each term of G is
// formed with relative error a few units of 2^-64 (long double logarithms within an ulp),
// and the sum rounds to double: the returned value is G plus 1e-17 times the sum of its
// terms' magnitudes and of a + h + b, plus 4e-16 |G|, an upper bound on ln P in exact
// arithmetic. The routines return 0 where it lies below ln 2^-1075 = -745.133...
//
// Tightness: ln P lies below G by about the logarithm of the law's spread at the tilted
// point (a few units), so results within a few e-folds above the cut are still summed (the
// answers there are subnormal or zero).
// Reference: Chernoff (1952), "A measure of asymptotic efficiency for tests of a hypothesis
// based on the sum of observations", Ann. Math. Statist. 23; the moment generating functions:
// Johnson, Kotz and Balakrishnan (1995), Continuous Univariate Distributions, vol. 2, chapters
// 29 and 30.
#include "platform/numeric/noncentral_bound.hpp"

#include <cmath>

namespace zemath::numeric {

namespace {

// The rounding allowance added to a computed G (see the opening block).
double upper_bound(Extended g, Extended magnitudes) {
    const Extended allowance = 1e-17L * magnitudes + 4e-16L * std::fabs(g);
    const Extended bound = g + allowance;
    if (!std::isfinite(bound) || !(bound < 0)) return 0.0;
    return bound < -1e300L ? -1e300 : static_cast<double>(bound);
}

}  // namespace

double noncentral_chi2_lower_log_bound(double x, double df, double lambda) {
    if (!(x > 0.0 && df > 0.0 && lambda >= 0.0) || !std::isfinite(x)) return 0.0;
    const Extended xe = x, f = df, l = lambda;
    const Extended u = (f + std::sqrt(f * f + 4.0L * xe * l)) / (2.0L * xe);
    const Extended w = u - 1.0L;
    if (!(w > 0) || !std::isfinite(w * xe)) return 0.0;
    const Extended t1 = 0.5L * w * xe;
    const Extended t2 = 0.5L * f * std::log1p(w);
    const Extended t3 = 0.5L * l * (w / (1.0L + w));
    return upper_bound(t1 - t2 - t3, t1 + t2 + t3 + f + l);
}

double noncentral_beta_lower_log_bound(double a, double b, double lambda, Extended r) {
    if (!(a > 0.0 && b > 0.0 && lambda >= 0.0 && r > 0) || !std::isfinite(r)) return 0.0;
    const Extended ae = a, be = b, h = 0.5L * static_cast<Extended>(lambda);
    const Extended qa = r * (ae + be);
    const Extended qb = 2.0L * be * r + h * r + ae * r - ae;
    const Extended qc = be * r - ae - h;
    if (!(qc < 0)) return 0.0;
    const Extended root = std::sqrt(qb * qb - 4.0L * qa * qc);
    const Extended p_opt = qb >= 0 ? -2.0L * qc / (qb + root) : (root - qb) / (2.0L * qa);
    const Extended q_opt = p_opt * r;
    if (!(q_opt > 0)) return 0.0;
    Extended q, v;
    if (q_opt <= 0.5L) {
        q = q_opt;
        v = 1.0L - q;
    } else {
        v = std::ldexp(std::nearbyint(std::ldexp(1.0L - q_opt, 64)), -64);
        v = std::fmax(v, std::ldexp(1.0L, -62));
        q = 1.0L - v;  // exact
    }
    const Extended p = q / r;
    const Extended t1 = ae * std::log1p(p);
    const Extended t2 = h * (p / (1.0L + p));
    const Extended t3 = -be * std::log(v);
    return upper_bound(t3 - t1 - t2, t1 + t2 + t3 + ae + h + be);
}

}  // namespace zemath::numeric
