// g01emc, g01fmc: the studentized range distribution: lower-tail probability
// P(q; v, r) and its deviate.
//
// Method: the double integral of Lund and Lund (1983, AS 190) and Copenhaver and Holland
// (1988, J. Statist. Comput. Simul. 30, 1-15),
//     P(q; v, r) = integral f_S(s) R(q s) ds,  S = sqrt(chi2_v / v),
//     R(w) = (2 Phi(w/2) - 1)^r + 2 r integral_{w/2}^{inf} phi(u) [Phi(u) - Phi(u-w)]^(r-1) du,
// but with quadrature sized to the integrands instead of the published fixed 12/16-point
// panels and e^-30 cut-offs (which hold only 4-10 digits, and fail for v = 1): the outer
// integral is taken in y = ln s (no end-point singularity for non-integer v), on 20-point
// Gauss-Legendre panels that start at the scale density's width 1/sqrt(2v) around its
// mode and double outwards until negligible; R(w) on 20-point panels of width
// min(2, 6/sqrt(r)) up to u = 9.5. No large-v shortcut is needed.
// The deviate starts from the Odeh-Evans / AS 190.2 approximation and the published
// secant search (to 1e-4), then is refined by TOMS 748 root finding on the probability
// to a few ulps of q, so that the deviate reproduces the probability it was given.
//
// Accuracy against a 20-digit mpmath quadrature (tests/reference): about 1e-15 relative
// over the grid, see the test output for the worst case.
//
// Failures: NE_REAL for NaN; NE_INT_ARG_LT for ir < 2; NE_REAL_ARG_LT for v < 1;
// NE_REAL_ARG_LE / NE_REAL_ARG_GE for p outside (0, 1); NE_CONV when the deviate cannot
// be bracketed or the root finder does not converge. g01emc returns 0 for q <= 0 and 1
// for q = +infinity; v = +infinity is the range of r normals itself.
#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <numbers>
#include <utility>

#include "platform/numeric/boost_policy.hpp"  // first: configures Boost
#include <boost/math/special_functions/gamma.hpp>
#include <boost/math/tools/roots.hpp>

#include "platform/nag/g01.hpp"
#include "platform/nag/log_concave_quadrature.hpp"
#include "platform/numeric/chi_scale.hpp"
#include "platform/numeric/gauss_legendre.hpp"
#include "platform/numeric/normal.hpp"

namespace zemath::nag {

namespace {

using numeric::normal_upper;

// P(range of r independent standard normals <= w): by symmetry
//     (2 Phi(w/2) - 1)^r + 2 r integral_{w/2}^{inf} phi(u) [Phi(u) - Phi(u - w)]^(r-1) du,
// by 20-point Gauss-Legendre on panels of width min(2, 6/sqrt(r)) (the power sharpens the
// integrand as r grows). phi(u) is below 1e-20 beyond u = 9.5, which ends the integral.
double range_probability(double w, double r) {
    constexpr double kUpper = 9.5;
    const double half = 0.5 * w;
    const double lead = std::pow(std::erf(half / std::numbers::sqrt2), r);
    if (half >= kUpper) return 1.0;
    const auto integrand = [=](double u) {
        // Phi(u) - Phi(u - w), taken between upper tails when both lie above the median.
        const double inside = u - w >= 0.0 ? normal_upper(u - w) - normal_upper(u)
                                           : 1.0 - normal_upper(u) - normal_upper(w - u);
        if (inside <= 0.0) return 0.0;
        return std::exp(-0.5 * u * u) * std::pow(inside, r - 1.0);
    };
    // The integrand decreases from u = w/2 on (phi does, and so does Phi(u) - Phi(u - w),
    // whose interval moves away from 0). When panels of width 6/sqrt(r) would exceed
    // kMaxPanels (r above about 1600), the integral ends where the integrand has fallen
    // e^-46 below its start, found by doubling steps and bisection (for large r far short
    // of kUpper), and at most kMaxPanels panels cover that stretch: a call's work is
    // bounded for any r, where the width alone would need r^(1/2) panels.
    constexpr double kDrop = 46.0;
    constexpr int kMaxPanels = 64;
    const double start_value = integrand(half);
    if (!(start_value > 0.0)) return std::min(lead, 1.0);
    const double floor_value = start_value * std::exp(-kDrop);
    const double panel = std::min(2.0, 6.0 / std::sqrt(r));
    double end = kUpper;
    if ((kUpper - half) / panel > kMaxPanels && integrand(kUpper) < floor_value) {
        double below = half, step_out = 1.0 / 64;
        while (below + step_out < kUpper && integrand(below + step_out) >= floor_value) {
            below += step_out;
            step_out *= 2.0;
        }
        double above = std::min(kUpper, below + step_out);
        for (int i = 0; i < 40; ++i) {
            const double mid = 0.5 * (below + above);
            (integrand(mid) >= floor_value ? below : above) = mid;
        }
        end = above;
    }
    const int panels = std::clamp(static_cast<int>(std::ceil((end - half) / panel)), 1, kMaxPanels);
    const double step = (end - half) / panels;
    double integral = 0.0;
    for (int i = 0; i < panels; ++i)
        integral += numeric::gauss_legendre20(integrand, half + i * step, half + (i + 1) * step);
    const double total = lead + 2.0 * r / std::sqrt(2.0 * std::numbers::pi) * integral;
    return std::min(total, 1.0);
}

// P(q; v, r) = integral_0^inf f_S(s) P(range <= q s) ds, S = sqrt(chi2_v / v), taken in
// y = ln s (no end-point singularity for any v): the integrand is
// v s^2 gamma_p_derivative(v/2, v s^2/2) P(range <= q s). Its density part has its mode
// at y = 0 and width 1/sqrt(2v); the range probability, which grows at most like
// s^(r-1) (its small-q form), can move the mass up to y* = ln(1 + (r-1)/v) / 2 with
// width 1/sqrt(2(v + r - 1)). Panels are laid around both places on their own scales,
// out to where e^(v y) (left) and the density (right) are below e^-45 of the peak.
double tukey_lower(double q, double v, double r) {
    if (q <= 0.0) return 0.0;
    if (std::isinf(q)) return 1.0;
    // The scale chi_v / sqrt(v) moves the probability by O(r q^2 / v) relative (below
    // 1e3 / v over the range of q that matters); past kLimitDf that is below the double
    // resolution, while the quadrature's density, of width 1/sqrt(2v), would no longer
    // be resolved (v = 1e300 gave P = 1 after seconds of work). Such v is the limit law.
    constexpr double kLimitDf = 1e19;
    if (v >= kLimitDf) return range_probability(q, r);
    const auto integrand = [=](double y) {
        const double density = numeric::chi_scale_log_density(y, v);
        if (density == 0.0) return 0.0;
        return density * range_probability(q * std::exp(y), r);
    };
    constexpr double kDrop = 45.0;
    const double shifted = 0.5 * std::log1p((r - 1.0) / v);
    const std::array<detail::Feature, 2> features = {
        detail::Feature{0.0, 1.0 / std::sqrt(2.0 * v)},
        detail::Feature{shifted, 1.0 / std::sqrt(2.0 * (v + r - 1.0))}};
    const double reach = kDrop / v + 2.0;
    const double total =
        detail::integrate_with_features(integrand, -INFINITY, shifted + reach, features, reach);
    return std::min(total, 1.0);
}

// Starting deviate (Odeh and Evans; AS 190.2).
double tukey_start(double p, double r, double v) {
    constexpr double p0 = 0.322232421088, q0 = 0.0993484626060;
    constexpr double p1 = -1.0, q1 = 0.588581570495;
    constexpr double p2 = -0.342242088547, q2 = 0.531103462366;
    constexpr double p3 = -0.204231210125, q3 = 0.103537752850;
    constexpr double p4 = -0.453642210148e-4, q4 = 0.38560700634e-2;
    constexpr double c1 = 0.8832, c2 = 0.2368, c3 = 1.214, c4 = 1.208, c5 = 1.4142;
    constexpr double kSmallDf = 120.0;
    const double ps = 0.5 - 0.5 * p;
    const double yi = std::sqrt(std::log(1.0 / (ps * ps)));
    double t = yi + ((((yi * p4 + p3) * yi + p2) * yi + p1) * yi + p0) /
                        ((((yi * q4 + q3) * yi + q2) * yi + q1) * yi + q0);
    if (v < kSmallDf) t += (t * t * t + t) / v / 4.0;
    double q = c1 - c2 * t;
    if (v < kSmallDf) q += -c3 / v + c4 * t / v;
    return t * (q * std::log(r - 1.0) + c5);
}

// The deviate's three phases: the published secant search, a bracket around the root,
// and TOMS 748 refinement to a few ulps (g01fmc below strings them together).

// The secant search to 1e-4: its last two points and their excess P(q) - p.
struct Secant {
    double x0, f0, x1, f1;
};
constexpr int kRefineIterations = 100;

template <class Excess>
Secant secant_search(const Excess& excess, double start) {
    // The secant search only brackets the root; the refinement below takes it to a few ulps.
    constexpr double kSecantTolerance = 1e-4;
    constexpr int kSecantIterations = 50;
    Secant s{start, excess(start), 0.0, 0.0};
    s.x1 = s.f0 > 0.0 ? std::max(0.0, s.x0 - 1.0) : s.x0 + 1.0;
    s.f1 = excess(s.x1);
    for (int iter = 0; iter < kSecantIterations && s.f1 != s.f0; ++iter) {
        double next = s.x1 - s.f1 * (s.x1 - s.x0) / (s.f1 - s.f0);
        s.x0 = s.x1;
        s.f0 = s.f1;
        if (!(next > 0.0)) next = 0.0;
        s.f1 = excess(next);
        s.x1 = next;
        if (std::fabs(s.x1 - s.x0) < kSecantTolerance) break;
    }
    return s;
}

struct Bracket {
    double lo, flo, hi, fhi;
};

// A bracket [lo, hi] with excess(lo) < 0 < excess(hi): the secant's last two points when
// they straddle the root, else grown from the last point by doubling steps that start at
// twice the secant's last move (from a fresh start when the secant left the domain).
// The excess at q = 0 is -p. On failure the returned ends do not straddle.
template <class Excess, class Start>
Bracket bracket_root(const Excess& excess, Secant s, const Start& fresh_start, double p) {
    Bracket b{s.x0, s.f0, s.x1, s.f1};
    if (b.lo > b.hi) {
        std::swap(b.lo, b.hi);
        std::swap(b.flo, b.fhi);
    }
    if (b.flo < 0.0 && b.fhi > 0.0) return b;
    if (!(s.x1 > 0.0) || !std::isfinite(s.x1)) s.x1 = std::max(fresh_start(), 0.1);
    b.lo = b.hi = s.x1;
    b.flo = b.fhi = excess(s.x1);
    constexpr int kBracketSteps = 200;
    // At least 1e-9 of the point: a secant that stopped on two equal points must still move.
    double step = std::max(2.0 * std::fabs(s.x1 - s.x0), 1e-9 * s.x1);
    int steps = 0;
    if (b.flo > 0.0) {
        while (b.flo > 0.0 && steps++ < kBracketSteps) {
            b.hi = b.lo;
            b.fhi = b.flo;
            b.lo = std::max(0.0, b.lo - step);
            step *= 2.0;
            b.flo = b.lo > 0.0 ? excess(b.lo) : -p;
        }
    } else {
        while (b.fhi < 0.0 && steps++ < kBracketSteps) {
            b.lo = b.hi;
            b.flo = b.fhi;
            b.hi += step;
            step *= 2.0;
            b.fhi = excess(b.hi);
        }
    }
    return b;
}

bool bad_arguments(double v, int ir, NagError* fail) {
    if (std::isnan(v)) return fail->set(NE_REAL), true;
    if (ir < 2) return fail->set(NE_INT_ARG_LT), true;
    if (v < 1.0) return fail->set(NE_REAL_ARG_LT), true;
    return false;
}

}  // namespace

double g01emc(double q, double v, int ir, NagError* fail) {
    if (std::isnan(q)) return fail->set(NE_REAL), 0.0;
    if (bad_arguments(v, ir, fail)) return 0.0;
    fail->set(NE_NOERROR);
    return tukey_lower(q, v, ir);
}

double g01fmc(double p, double v, int ir, NagError* fail) {
    if (std::isnan(p)) return fail->set(NE_REAL), 0.0;
    if (bad_arguments(v, ir, fail)) return 0.0;
    if (p <= 0.0) return fail->set(NE_REAL_ARG_LE), 0.0;
    if (p >= 1.0) return fail->set(NE_REAL_ARG_GE), 0.0;
    fail->set(NE_NOERROR);
    const double r = ir;
    const auto excess = [&](double x) { return tukey_lower(x, v, r) - p; };
    Secant last = secant_search(excess, tukey_start(p, r, v));
    if (last.f1 == 0.0 && last.x1 > 0.0) return last.x1;
    const Bracket bracket = bracket_root(
        excess, last, [&] { return tukey_start(p, r, v); }, p);
    if (bracket.flo == 0.0) return bracket.lo;
    if (bracket.fhi == 0.0) return bracket.hi;
    if (!(bracket.flo < 0.0 && bracket.fhi > 0.0)) return fail->set(NE_CONV), 0.0;
    std::uintmax_t iterations = kRefineIterations;
    const auto root = boost::math::tools::toms748_solve(
        excess, bracket.lo, bracket.hi, bracket.flo, bracket.fhi,
        boost::math::tools::eps_tolerance<double>(50), iterations, numeric::BoostPolicy());
    if (iterations >= kRefineIterations) fail->set(NE_CONV);
    return 0.5 * (root.first + root.second);
}

}  // namespace zemath::nag
