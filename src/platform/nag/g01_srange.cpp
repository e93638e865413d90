// g01emc, g01fmc: the studentized range distribution: lower-tail probability
// P(q; v, r) and its deviate.
//
// Method: Copenhaver and Holland (1988, J. Statist. Comput. Simul. 30, 1-15) after Lund
// and Lund (1983, AS 190). The inner probability that the range of r standard normals is
// at most w is 2 * r * integral phi(u) [Phi(u) - Phi(u - w)]^(r-1) du over u >= w/2 plus
// (2 Phi(w/2) - 1)^r, by 12-point Gauss-Legendre on 2 or 3 panels up to u = 8; the outer
// integral over the scale chi_v / sqrt(v) by 16-point Gauss-Legendre on successive
// panels (at most 50) until a panel adds at most 1e-14. v > 25000 uses the inner
// probability alone (the scale is then 1 to within the accuracy).
// The deviate starts from the Odeh-Evans / AS 190.2 approximation and the published
// secant search (to 1e-4), then is refined by TOMS 748 root finding on the probability
// to a few ulps of q, so that the deviate reproduces the probability it was given.
//
// Accuracy: the quadrature's thresholds (terms below e^-30 dropped, panels stopped at
// 1e-14) make this an absolute accuracy of about 1e-12 on the probability, not a relative
// one; the worst errors against an mpmath reference are recorded with the tests.
//
// Failures: NE_REAL for NaN; NE_INT_ARG_LT for ir < 2; NE_REAL_ARG_LT for v < 1;
// NE_REAL_ARG_LE / NE_REAL_ARG_GE for p outside (0, 1). g01emc returns 0 for q <= 0 and
// 1 for q = +infinity. NE_ACCURACY_WARNING (value kept) when the outer integral's last
// panel still added more than 1e-14; NE_CONV when the deviate cannot be found.
#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <numbers>
#include <utility>

#include "platform/nag/quiet_policy.hpp"  // first: configures Boost
#include <boost/math/special_functions/gamma.hpp>
#include <boost/math/tools/roots.hpp>

#include "platform/nag/g01.hpp"

namespace zemath::nag {

namespace {

double phi_lower(double z) { return 0.5 * std::erfc(-z * std::numbers::sqrt2 / 2.0); }

// 12-point Gauss-Legendre, positive half (nodes, weights).
constexpr std::array<double, 6> kInnerNode = {
    0.981560634246719250690549090149, 0.904117256370474856678465866119,
    0.769902674194304687036893833213, 0.587317954286617447296702418941,
    0.367831498998180193752691536644, 0.125233408511468915472441369464};
constexpr std::array<double, 6> kInnerWeight = {
    0.047175336386511827194615961485, 0.106939325995318430960254718194,
    0.160078328543346226334652529543, 0.203167426723065921749064455810,
    0.233492536538354808760849898925, 0.249147045813402785000562436043};
// 16-point Gauss-Legendre, positive half.
constexpr std::array<double, 8> kOuterNode = {
    0.989400934991649932596154173450, 0.944575023073232576077988415535,
    0.865631202387831743880467897712, 0.755404408355003033895101194847,
    0.617876244402643748446671764049, 0.458016777657227386342419442984,
    0.281603550779258913230460501460, 0.0950125098376374401853193354250};
constexpr std::array<double, 8> kOuterWeight = {
    0.0271524594117540948517805724560, 0.0622535239386478928628438369944,
    0.0951585116824927848099251076022, 0.124628971255533872052476282192,
    0.149595988816576732081501730547, 0.169156519395002538189312079030,
    0.182603415044923588866763667969, 0.189450610455068496285396723208};

// P(range of cc independent standard normals <= w).
double range_probability(double w, double cc) {
    constexpr double kUpper = 8.0;        // u beyond 8: phi(u) below 1e-14
    constexpr double kDropExponent = -30.0;  // terms below e^-30 of the leading one
    constexpr double kLeadExponent = -50.0;
    constexpr double kMaxSquare = 60.0;   // u^2 > 60: phi(u) negligible
    const double half = w * 0.5;
    if (half >= kUpper) return 1.0;
    // (2 Phi(w/2) - 1)^cc: all points within [-w/2, w/2].
    double lead = std::erf(half / std::numbers::sqrt2);
    lead = lead >= std::exp(kLeadExponent / cc) ? std::pow(lead, cc) : 0.0;

    const int panels = w > 3.0 ? 2 : 3;
    const double panel_width = (kUpper - half) / panels;
    const double cc1 = cc - 1.0;
    const double drop = std::exp(kDropExponent / cc1);
    double lower = half;
    double integral = 0.0;
    for (int panel = 0; panel < panels; ++panel) {
        const double upper = lower + panel_width;
        const double mid = 0.5 * (upper + lower);
        const double half_width = 0.5 * (upper - lower);
        double panel_sum = 0.0;
        // Nodes from the left end to the right end, so that the u^2 cut ends the panel.
        for (int jj = 0; jj < 12; ++jj) {
            const int j = jj < 6 ? jj : 11 - jj;
            const double node = jj < 6 ? -kInnerNode[j] : kInnerNode[j];
            const double u = mid + half_width * node;
            const double u2 = u * u;
            if (u2 > kMaxSquare) break;
            const double inside = phi_lower(u) - phi_lower(u - w);
            if (inside >= drop)
                panel_sum += kInnerWeight[j] * std::exp(-0.5 * u2) * std::pow(inside, cc1);
        }
        integral += panel_sum * (2.0 * half_width) * cc / std::sqrt(2.0 * std::numbers::pi);
        lower = upper;
    }
    const double total = lead + integral;
    if (total <= std::exp(kDropExponent)) return 0.0;
    return std::min(total, 1.0);
}

struct TukeyResult {
    double value;
    bool accurate;
};

TukeyResult tukey_lower(double q, double v, double r) {
    if (q <= 0.0) return {0.0, true};
    if (std::isinf(q)) return {1.0, true};
    constexpr double kLargeDf = 25000.0;
    if (v > kLargeDf) return {range_probability(q, r), true};
    constexpr double kDropExponent = -30.0;
    constexpr double kPanelNegligible = 1e-14;
    constexpr int kMaxPanels = 50;
    const double f2 = v * 0.5;
    // Panel length: longer panels for small v, where the scale density is wide.
    const double ulen = v <= 100.0 ? 1.0 : v <= 800.0 ? 0.5 : v <= 5000.0 ? 0.25 : 0.125;
    const double log_const = f2 * std::log(v) - v * std::numbers::ln2 -
                             boost::math::lgamma(f2, detail::QuietPolicy()) + std::log(ulen);
    const double f21 = f2 - 1.0;
    const double ff4 = v * 0.25;
    double total = 0.0;
    double panel_sum = 0.0;
    for (int i = 1; i <= kMaxPanels; ++i) {
        panel_sum = 0.0;
        const double centre = (2.0 * i - 1.0) * ulen;
        for (int jj = 0; jj < 16; ++jj) {
            const int j = jj < 8 ? jj : jj - 8;
            const double offset = (jj < 8 ? -kOuterNode[j] : kOuterNode[j]) * ulen;
            const double u = centre + offset;
            const double exponent = log_const + f21 * std::log(u) - u * ff4;
            if (exponent < kDropExponent) continue;
            const double scaled = q * std::sqrt(u * 0.5);
            panel_sum += range_probability(scaled, r) * kOuterWeight[j] * std::exp(exponent);
        }
        if (i * ulen >= 1.0 && panel_sum <= kPanelNegligible) break;
        total += panel_sum;
    }
    return {std::min(total, 1.0), panel_sum <= kPanelNegligible};
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
    const TukeyResult result = tukey_lower(q, v, ir);
    if (!result.accurate) fail->set(NE_ACCURACY_WARNING);
    return result.value;
}

double g01fmc(double p, double v, int ir, NagError* fail) {
    if (std::isnan(p)) return fail->set(NE_REAL), 0.0;
    if (bad_arguments(v, ir, fail)) return 0.0;
    if (p <= 0.0) return fail->set(NE_REAL_ARG_LE), 0.0;
    if (p >= 1.0) return fail->set(NE_REAL_ARG_GE), 0.0;
    fail->set(NE_NOERROR);
    const double r = ir;
    const auto excess = [&](double x) { return tukey_lower(x, v, r).value - p; };

    // Published secant search to 1e-4.
    constexpr double kSecantTolerance = 1e-4;
    constexpr int kSecantIterations = 50;
    double x0 = tukey_start(p, r, v);
    double f0 = excess(x0);
    double x1 = f0 > 0.0 ? std::max(0.0, x0 - 1.0) : x0 + 1.0;
    double f1 = excess(x1);
    double estimate = x1;
    for (int iter = 0; iter < kSecantIterations && f1 != f0; ++iter) {
        double next = x1 - f1 * (x1 - x0) / (f1 - f0);
        x0 = x1;
        f0 = f1;
        if (!(next > 0.0)) next = 0.0;
        f1 = excess(next);
        x1 = next;
        estimate = next;
        if (std::fabs(x1 - x0) < kSecantTolerance) break;
    }
    if (!(estimate > 0.0) || !std::isfinite(estimate)) estimate = std::max(tukey_start(p, r, v), 0.1);

    // Refinement: bracket the root around the estimate, then TOMS 748 to a few ulps.
    double lo = estimate;
    double hi = estimate;
    double flo = excess(lo);
    double fhi = flo;
    constexpr int kBracketSteps = 200;
    double step = std::max(1e-6 * estimate, 1e-12);
    int steps = 0;
    if (flo > 0.0) {
        while (flo > 0.0 && steps++ < kBracketSteps) {
            hi = lo;
            fhi = flo;
            lo = std::max(0.0, lo - step);
            step *= 2.0;
            flo = lo > 0.0 ? excess(lo) : -p;
        }
    } else {
        while (fhi < 0.0 && steps++ < kBracketSteps) {
            lo = hi;
            flo = fhi;
            hi += step;
            step *= 2.0;
            fhi = excess(hi);
        }
    }
    if (flo == 0.0) return lo;
    if (fhi == 0.0) return hi;
    if (!(flo < 0.0 && fhi > 0.0)) return fail->set(NE_CONV), 0.0;
    std::uintmax_t iterations = 100;
    const auto root = boost::math::tools::toms748_solve(
        excess, lo, hi, flo, fhi, boost::math::tools::eps_tolerance<double>(50), iterations,
        detail::QuietPolicy());
    if (iterations >= 100) fail->set(NE_CONV);
    return 0.5 * (root.first + root.second);
}

}  // namespace zemath::nag
