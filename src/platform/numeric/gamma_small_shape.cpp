// The deviate of the gamma law with a shape a below 1 in double arithmetic: x with
// P(a, x) = p.
//
// Method. Halley's iteration on a logarithmic residual in s = ln x, s carried in two parts
// so that the root keeps its last digit even where |ln x| reaches 700. Two residuals, by
// where the iterate lies (both vanish at the root, both increase with s):
//   x <  a + 1: ln P(a, x) - ln p, with
//               P(a, x) = x^a / Gamma(a + 1) * (1 + a S(x)),
//               S(x) = sum_{n>=1} (-x)^n / (n! (a + n))          (at most ~25 terms),
//               so ln P = a s - ln Gamma(1 + a) + log1p(a S): every term is relatively
//               accurate (ln Gamma(1 + a) = log1p(Gamma(1 + a) - 1), the latter from Boost's
//               tgamma1pm1 in double, a few ulps), and the sum with ln p (two-part
//               logarithm of the double p, 3e-18 absolute) is formed in two parts. This is
//               used for either tail: where the root lies below a + 1, p itself is the
//               target even when p is near 1 (p is exact; 1 - p would be the rounded one).
//   x >= a + 1: ln Q(a, x) - ln(1 - p) with the continued fraction of the double kernel
//               (incomplete_gamma.hpp, a few ulps there); for p > 1/2 1 - p is exact, and
//               the root of p <= 1/2 never lies here (P(a, a + 1) > 0.6 for a < 1).
// Derivatives: with r = x f(x) / tail, the slope of ln P in s is r = a e^-x / (1 + a S),
// and its second derivative r (a - x - r) (for ln Q: -r and -r (a - x + r)).
// Start: the leading term, x0 = (p Gamma(a + 1))^(1/a); for a small 1 - p whose root lies
// beyond a + 1, the asymptotic x = -ln((1 - p) Gamma(a)) + (a - 1) ln x iterated three
// times. The iteration is kept inside the bracket its residuals have narrowed (bisection
// otherwise) and stops after a step e with 16 e^3 below 1e-16 (Halley's error K e^3, K of
// order one here), or one step after a step below 1e-7 (the error is then below 1e-20); at
// most 60 steps (usually 2 or 3).
//
// Error bound. The root's relative error is the residual's absolute error over its slope r.
// Below a + 1 the residual is within 3e-18 + 4e-16 a (the logarithm of p; the relative
// rounding of the O(a) terms) and r >= a e^-2 / 2 near the root, so the root is within
// about 2e-17 / a + 4e-15: 2e-13 at a = 1e-4, 2e-14 at a = 1e-3, below 5e-15 from a = 0.01
// (the measured errors are far smaller: the logarithm's error is usually well below its
// bound). Beyond a + 1 the tail is within a few ulps and r >= 1, so about 1e-15. Shapes
// below 1e-4 are declined.
// References: DLMF 8.7.1 (the series of gamma(a, x)); Temme (1994), "A set of algorithms
// for the incomplete gamma functions" (the small-shape form); Press et al., Numerical
// Recipes, 9.4 (Halley's method).
#include "platform/numeric/gamma_small_shape.hpp"

#include "platform/numeric/boost_policy.hpp"  // first: configures Boost

#include <boost/math/special_functions/gamma.hpp>

#include <algorithm>
#include <cmath>
#include <limits>

#include "platform/numeric/double_double.hpp"
#include "platform/numeric/incomplete_gamma.hpp"

namespace zemath::numeric {

namespace {

namespace bp = boost::math::policies;
using InDouble = bp::normalise<BoostPolicy, bp::promote_double<false>>::type;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr int kMaxSteps = 60;
constexpr int kMaxTerms = 60;  // x < 2 needs about 25

// S(x) = sum_{n>=1} (-x)^n / (n! (a + n)), x < 2: alternating, its terms' magnitudes
// summing to at most 3 |S|, so a few ulps of S.
double small_shape_series(double a, double x) {
    double power = 1.0, sum = 0.0;
    for (int n = 1; n <= kMaxTerms; ++n) {
        power *= -x / n;
        const double term = power / (a + n);
        sum += term;
        if (std::fabs(term) <= 0x1p-56 * std::fabs(sum)) break;
    }
    return sum;
}

struct Residual {
    double value;      // increasing in s, zero at the root
    double slope;      // its derivative in s
    double curvature;  // its second derivative in s
};

}  // namespace

double gamma_deviate_small_shape(double a, double p) {
    if (!(a >= kGammaSmallShapeMin && a < 1.0) || !(p > 0.0 && p < 1.0)) return kNaN;
    const double log_gamma1p = std::log1p(boost::math::tgamma1pm1(a, InDouble()));
    const double q = 1.0 - p;  // exact for p >= 1/2, where it is used as a target
    // C = ln p + ln Gamma(1 + a): the leading term gives a s = C at the root.
    const TwoPart c = add(log_two_part(p, 0.0), TwoPart{log_gamma1p, 0.0});
    const double log_q = std::log(q);
    const double boundary = a + 1.0;

    auto residual = [&](TwoPart s, double x) -> Residual {
        if (x < boundary) {
            const double as = a * small_shape_series(a, x);
            const TwoPart lead = two_product(a, s.hi);
            const TwoPart head = two_sum(lead.hi, -c.hi);
            const double value = head.hi + (head.lo + lead.lo + a * s.lo + std::log1p(as) - c.lo);
            const double r = a * std::exp(-x) / (1.0 + as);
            return {value, r, r * (a - x - r)};
        }
        const auto tails = incomplete_gamma_double(a, x, 0.0);
        if (!tails) return {kNaN, kNaN, kNaN};
        if (p <= 0.5) {
            // Only steering back below a + 1 (the root is not here).
            const double r = tails->x_density / tails->lower;
            return {std::log(tails->lower) - std::log(p), r, r * (a - x - r)};
        }
        const double r = tails->x_density / tails->upper;
        const double ratio = tails->upper / q;
        const double log_ratio =
            ratio > 0.5 && ratio < 2.0 ? std::log(ratio) : std::log(tails->upper) - log_q;
        return {-log_ratio, r, r * (a - x + r)};
    };

    // The start.
    TwoPart s = divide(c, TwoPart{a, 0.0});
    if (p > 0.5) {
        const double l = -log_q - boost::math::lgamma(a, InDouble());  // not signgam-writing
        if (l > boundary) {
            double x = l;
            for (int i = 0; i < 3; ++i) x = l + (a - 1.0) * std::log(x);
            if (x > boundary) s = TwoPart{std::log(x), 0.0};
        }
    }
    constexpr double kLogMin = -708.3964185322641;  // ln of the smallest normal double
    constexpr double kLogMax = 709.782712893384;    // ln of the largest double
    double lo = kLogMin, hi = kLogMax;
    if (!(s.hi > lo && s.hi < hi)) s = TwoPart{std::clamp(s.hi, lo + 1.0, hi - 1.0), 0.0};
    bool last = false;
    for (int i = 0; i < kMaxSteps; ++i) {
        const Residual g = residual(s, exp_two_part(s));
        if (!std::isfinite(g.value) || !(g.slope > 0.0)) return kNaN;
        if (g.value < 0.0) {
            lo = s.hi;
        } else {
            hi = s.hi;
        }
        const double newton = g.value / g.slope;
        const double denominator = 1.0 - 0.5 * newton * g.curvature / g.slope;
        const double step = denominator > 0.5 ? newton / denominator : newton;
        const TwoPart next = add(s, TwoPart{-step, 0.0});
        // Steps below 1e-7 are taken as they come: the bracket, at s itself, may be
        // within an ulp of s.hi.
        if (std::fabs(step) < 1e-7 || (next.hi > lo && next.hi < hi)) {
            s = next;
            // Halley's error after a step e is about K e^3, K = (g''/2g')^2 - g'''/(6g') of
            // the residual g in s, of order one here (shapes below 1): a step with 16 e^3
            // below 1e-16 leaves the root within 1e-16, well inside the bound below, and
            // saves the confirming evaluation.
            if (last || 16.0 * step * step * std::fabs(step) < 1e-16) {
                const double root = exp_two_part(s);
                return std::isnormal(root) && std::isfinite(root) ? root : kNaN;
            }
            last = std::fabs(step) < 1e-7;
        } else {
            s = TwoPart{0.5 * (lo + hi), 0.0};  // bisection
            last = false;
        }
    }
    return kNaN;
}

}  // namespace zemath::numeric
