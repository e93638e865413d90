// The step factors of the Poisson-weighted incomplete beta series (the non-central beta,
// F and t laws), and of their Poisson weights.
//
// Neighbouring central terms differ by d(s) = x^s y^b / (s B(s, b)):
//     I_x(s, b) = I_x(s + 1, b) + d(s),   d(s + 1) = d(s) x (s + b) / (s + 1),
// and the series run this recurrence (and the weights' w_(j+1) = w_j h/(j + 1)) over
// hundreds of steps. A factor built from rounded double pieces carries the same relative
// error into every step wherever its pieces repeat their rounding: x rounded from the
// caller's t^2/(df + t^2) (the same error at every step), s + b rounded with the same low
// bits while it stays in one binade, h = delta^2/2 rounded, or a factor constant from step
// to step (b = 1: 1/x at every step). That is a drift linear in the number of steps:
// 1.3e-14 after 270 steps at b = 1 was measured. So the factors and the recurrences'
// running values are carried in the extended type (64-bit significand; extended.hpp), with
// x and h taken in two parts and s + b, s + 1 exact: each step rounds at 2^-64, and the
// drift over the at most 1200 steps stays below 1e-16. The terms themselves, the central
// values and the sums stay in double (their roundings vary from step to step: about
// sqrt(n) ulps over n steps). Two-part double arithmetic would serve as well, but its
// products call the run-time fma where the target has no fused multiply-add instruction,
// several times slower here.
#pragma once

#include <cmath>
#include <initializer_list>

#include "platform/numeric/discrete_terms.hpp"
#include "platform/numeric/double_double.hpp"
#include "platform/numeric/extended.hpp"
#include "platform/numeric/incomplete_gamma.hpp"
#include "platform/numeric/stirling.hpp"

namespace zemath::numeric {

// Largest starting shape of the non-central beta and t series: the shapes over which their
// bounds were measured (the double incomplete beta itself goes further).
inline constexpr double kSeriesShapeMax = 1000.0;

// The first index T at or above the Poisson mode int(h) where the weights beyond T, bounded
// through their ratios h/(j + 1) < 1 by a geometric series, total at most `truncation` times
// the weight at the mode.
inline int poisson_top_index(double h, double truncation) {
    int top = static_cast<int>(h);
    for (double rel = 1.0;; ++top) {
        const double r = h / (top + 1);
        if (r < 1.0 && rel * r / (1.0 - r) <= truncation) break;
        rel *= r;
    }
    return top;
}

// The Poisson weight e^-h h^u / Gamma(u + 1) at a real index u = u.hi + u.lo > 0 (the
// strided mixture sums' nodes), in Loader's saddle-point form: the two-part deviance of u
// from h, Stirling's error term, and the low part of u through the logarithm's slope. The
// weight times e^log_factor where given (two parts, any size: a central term carried as its
// logarithm, and the scale of sums whose result lies near the bottom of the double range, so
// that no term that matters leaves the normal range); the exponents are joined in two parts,
// so the product keeps the weight's own accuracy.
inline double poisson_weight_at(TwoPart u, double h, TwoPart log_factor = {0.0, 0.0}) {
    const TwoPart deviance = gamma_deviance(u.hi, h, 0.0);
    const double log_ratio = std::log(h / u.hi);
    const double root = std::sqrt(2.0 * 3.141592653589793 * u.hi);
    if (log_factor.hi == 0.0 && log_factor.lo == 0.0)
        return std::exp(-deviance.hi - (deviance.lo + stirling_error(u.hi)) + u.lo * log_ratio) /
               root;
    const TwoPart exponent = add(add(log_factor, negate(deviance)),
                                 TwoPart{u.lo * log_ratio - stirling_error(u.hi), 0.0});
    return exp_two_part(exponent) / root;
}

// Its logarithm, to a few ulps of the deviance (enough to locate a sum's largest term).
inline double log_poisson_weight_at(TwoPart u, double h) {
    const TwoPart deviance = gamma_deviance(u.hi, h, 0.0);
    return -deviance.hi - (deviance.lo + stirling_error(u.hi)) + u.lo * std::log(h / u.hi) -
           0.5 * std::log(2.0 * 3.141592653589793 * u.hi);
}

// The strided mixture sums' summation: the terms term(s) at the nodes s = start + k stride
// (k = 0, -1, -2, ... down to the first node at or below floor, then k = 1, 2, ...) summed
// outwards from start. The terms are log-concave in the index, so past the largest they fall
// for good; each side stops once a falling term is below `negligible` of the sum. NaN when
// a term is NaN (the term declined) or a side runs max_steps nodes without stopping.
template <class Term>
double sum_outward(double start, double stride, double floor, int max_steps, double negligible,
                   Term term) {
    double sum = 0.0;
    for (int side : {-1, +1}) {
        double previous = INFINITY;
        for (int k = side > 0 ? 1 : 0;; ++k) {
            if (k == max_steps) return NAN;
            const double s = start + side * k * stride;
            if (s <= floor) break;
            const double t = term(s);
            if (std::isnan(t)) return NAN;
            sum += t;
            if (sum > 0.0 && t <= previous && t <= negligible * sum) break;
            previous = t;
        }
    }
    return sum;
}

inline Extended widen(TwoPart v) {
    return static_cast<Extended>(v.hi) + static_cast<Extended>(v.lo);
}

// x (s + b) / (s + 1), the upward factor of d(s).
inline Extended beta_step_up(Extended x, Extended s_plus_b, Extended s_plus_1) {
    return x * s_plus_b / s_plus_1;
}

// (s + 1) / (x (s + b)), the downward factor.
inline Extended beta_step_down(Extended x, Extended s_plus_b, Extended s_plus_1) {
    return s_plus_1 / (x * s_plus_b);
}

// The Poisson weight e^-h h^j / j! at h = h.hi + h.lo (two parts). Below j = 100 the
// double point (discrete_terms.hpp: products) with the rounding of h fed back through
// d ln w / dh = j/h - 1; from j = 100 on Stirling's form in the extended type,
//     ln w = j ln(h/j) + j - h - ln(2 pi j)/2 - mu(j),
// mu Stirling's error term (stirling.hpp, 3e-17 absolute), every other piece within 1e-19
// of its size (at most a few thousand): about 2e-16 relative for any h. (The double
// point's deviance series costs a few microseconds away from the mode.)
inline Extended poisson_weight(int j, TwoPart h) {
    constexpr int kStirlingFrom = 100;
    if (j < kStirlingFrom) {
        Extended w = poisson_point(j, h.hi);
        if (h.lo != 0.0 && h.hi > 0.0) w *= 1.0L + h.lo * (j / h.hi - 1.0);
        return w;
    }
    constexpr Extended kLnTwoPi = 1.83787706640934548356065947281123527L;
    const Extended he = widen(h), je = j;
    const Extended log_w =
        je * std::log(he / je) + (je - he) - 0.5L * (kLnTwoPi + std::log(je)) - stirling_error(j);
    return std::exp(log_w);
}

}  // namespace zemath::numeric
