// g01, the central continuous distributions: tail probabilities, deviates and densities
// of the standard normal (g01eac, inline in g01.hpp; g01cec), Student's t (g01ebc, g01fbc),
// chi-square (g01ecc, g01fcc), F (g01edc, g01fdc), beta (g01eec, g01fec) and gamma (g01efc, g01ffc,
// g01kfc) laws.
//
// Method. The normal tails: the shared double kernel with the argument's rounding fed back
// (platform/numeric/normal.hpp). Everything else: Boost.Math 1.74's inverse erfc, the
// regularised incomplete beta and gamma functions (ibeta, ibetac, gamma_p, gamma_q), their
// derivatives and inverses, all evaluated in long double. The transformed arguments (t^2/(df +
// t^2), df1 f/(df1 f + df2), g/b) are formed in the wider type too: in the far tails the relative
// condition number of the probability grows like x^2 (normal) or like the degrees of freedom (t,
// F), so a double-rounded argument would cost up to 1e-11 there. Every upper tail is computed
// directly as the complementary function, never as 1 - p; of I_x(a, b) only the side below 1/2 is
// taken from Boost (its side near 1 can lose digits), the other being 1 minus it in long double.
// The deviates start from Boost's inverse in double and are polished by a safeguarded Newton
// iteration on the logarithm of the smaller tail, in log x (or log(1 - x) for a beta root above
// 1/2): Boost's own inverses stall in the far tails (ibeta_inv(2, 5, 1e-300) stops at 4e-51). Where
// long double is double the build stops (see platform/numeric/extended.hpp).
//
// Fast paths. The extended evaluation costs 3 to 10 times an evaluation in double, and most
// arguments do not need it: it is kept for the regions where a double evaluation cannot
// promise the bound, chosen by cheap tests on the arguments. Which path runs where:
//   chi-square and gamma probabilities (P(a, x), Q(a, x), x = chi2/2 or g/b with the
//   quotient's rounding error carried along):
//     a < 1 and x < a + 1        Boost in double: within 7 ulps (the argument's rounding
//                                error is magnified at most twice there);
//     a <= 1000 otherwise        platform/numeric/incomplete_gamma.cpp: the smaller tail by
//                                series or continued fraction with a two-part exponent,
//                                within 4e-15 + 3e-18 a (measured 6e-15 against mpmath);
//     a > 1000, |eta| <= 1/2     the same file, Temme's uniform expansion (x/a within
//                                0.609 .. 1.522, the deviance in two parts): within 4e-15;
//     the tail on the mean's side where the far one is below e^-40 (Chernoff's bound e^-D
//                                on the far tail, D = x - a - a ln(x/a)): 1;
//     a > 1000 beyond |eta| = 1/2, a prefactor outside the normal range, x or g/b not a
//                                normal double: extended, as below.
//   beta, Student's t and F probabilities (I_x(a, b) with x = the beta argument,
//   t^2/(df + t^2) or df1 f/(df1 f + df2), and 1 - x, both formed in two parts; for t the
//   smaller of x and 1 - x by a division and the other as 1 minus it, in the kernel's file,
//   whose fused multiply-add build runs where the processor has one):
//     a, b <= 5000 (df <= 1e4), or a shape 1/2 beside one up to 1e6 (Student's t up to
//                                df = 2e6): platform/numeric/incomplete_beta.cpp: the side
//                                where the continued fraction (DiDonato and Morris's form)
//                                converges, with a two-part exponent, within about 3e-15 (a
//                                shape below 16, or a shape 1/2) or 1e-15 + 3e-18 (a + b),
//                                plus the fraction's few ulps (measured against mpmath:
//                                1.5e-14 at worst; Student's t 6.0e-15 up to df = 2e6); the
//                                other side as 1 minus it where that is at least 0.1, else by
//                                its own fraction a little past its switch point (measured
//                                within 3.1e-14); a side whose bound lies below half the
//                                smallest subnormal is 0 (the other 1), and one below 2^-54
//                                leaves the other side 1 as rounded;
//     Student's t at df >= 1000 where P(|T| >= |t|) <= 0.9: that side straight from t by the
//                                same file's expansion at a shape 1/2 (student_t_beyond:
//                                ln(1 + t^2/df) in two parts, erfc, a few terms with constant
//                                coefficients), within about 1e-15 (measured 1.8e-15);
//     shapes up to 5e9 (F df up to 1e10; the beta law's own limit is 1e6), and before the
//                                fraction above at smaller ones: the same file: the far tails
//                                of two shapes from 16 up by a bound on the summed deviances
//                                (0 and 1), Temme's uniform expansion where both shapes are at
//                                least 250 near enough to the mean (within about 2e-15), the
//                                fraction with a two-part deviance elsewhere (at most 400
//                                terms above 5000); measured within 7.2e-15 (beta), 6.4e-15
//                                (F), 1.7e-15 (binomial) at shapes 5e3 .. 5e9 against mpmath;
//     otherwise (larger shapes, a second side below 0.1 away from the switch point,
//                                |t| >= 1e150, arguments outside the normal range, the side
//                                asked for between the subnormals and e^-700): extended, as
//                                below;
//   normal deviate               Boost's inverse erfc in double, within 3 ulps;
//   chi-square and gamma deviates, a >= 1: Halley on the log of the smaller tail
//                                in log x with the double tails above, near the root the
//                                root of its Taylor polynomial of degree six instead (its
//                                coefficients from the tail ratio's differential equation),
//                                from the Wilson-Hilferty start (far in the tails the tails'
//                                leading forms solved by fixed-point steps), the iterate
//                                kept as x (not log x), the residual as the log of the tail
//                                ratio; within about 1e-14 (the tails' 6e-15 over a
//                                sensitivity of at least 1); one tail evaluation on 91 per
//                                cent of the benchmark's arguments, else two (degree four
//                                took two on half of them);
//                                above a = 1000 wherever the tails answer (Temme's region),
//                                the extended evaluation where they decline;
//   chi-square and gamma deviates, 1e-4 <= a < 1: platform/numeric/gamma_small_shape.cpp,
//                                Halley in a two-part log x on the small-shape form of the
//                                lower tail, x^a / Gamma(a + 1) (1 + a S(x)), from its
//                                leading term (the continued fraction beyond a + 1); within
//                                2e-17 / a + 4e-15 (2e-14 at a = 1e-3, 5e-15 from a = 0.01;
//                                measured 4e-15 at worst against mpmath);
//                                smaller shapes, larger ones, or no settled root: extended;
//   beta, Student's t and F deviates, shapes up to the double tails' 5e9 (F df up to 1e10,
//                                the beta law's own limit 1e6; Student's t up to df = 2e6):
//                                Halley steps on the
//                                logarithm of the smaller tail in log u, u the one of x and
//                                1 - x below 1/2, with the double tails above, the iterate
//                                kept as u and the residual as the log of the tail ratio;
//                                from Hill's start (t, Algorithm 396), from Paulson's normal
//                                form of the F law's cube root where both shapes are at least
//                                50 and the smaller tail at least 1e-100 (within about 1e-3:
//                                two or three steps), else from the smaller tail's series
//                                about its end solved for the root where that lies below half
//                                the mean, else Paulson's form again where it has a root, else
//                                Boost's double inverse (below a tail of 1e-290 the tail's
//                                leading term): 1 to 3 tail evaluations in 99 per cent of
//                                random cases (shapes 1e-3 .. 1e6, tails down to 1e-300), 6
//                                at most, where Boost's inverse alone cost about three times
//                                the polish; above shapes 1e4
//                                the last step's bound shrinks with the cube root of the
//                                larger shape, as Halley's error constant grows with it.
//                                Above shape 5000 the tails are the large-shape paths of
//                                incomplete_beta.cpp (Temme's expansion, within 2e-15; the
//                                fraction with the two-part deviance beside a small shape,
//                                7.2e-15), where the sensitivity below is sqrt(min(a, b)) or
//                                more near the centre: measured within 4.4e-16 (F) and 2.2e-16
//                                (beta) at shapes 50 .. 5e9 against mpmath
//                                (gen_distributions_large_shape_deviates.py). The root's
//                                relative error is the tail's over the
//                                sensitivity r = u I'(u) / tail, so it is kept only where
//                                r >= 0.1 (both shapes below 16, tails within 3e-15) or
//                                r >= 0.3 (tails within 1e-14): within about 3e-14, measured
//                                1.2e-14; t = sqrt(df x) / sqrt(1 - x) and f = (df2/df1)
//                                (z / (1 - z)) add a few ulps. The step is at least cubic, so
//                                once below 1e-8 no further evaluation follows;
//                                smaller sensitivities, larger shapes, a root that does not
//                                settle in 16 steps or falls outside the normal range:
//                                extended, as below (which keeps the failure codes 301 and
//                                422);
//
// Accuracy reached (50-digit mpmath references, both tails down to 1e-300, parameters
// 1e-3 .. 1e6): within 1e-13 relative error everywhere on that grid; see the table in
// tests/reference/distributions_central_worst_errors.txt.
//
// Failure codes (NagError::code; on failure the value is 0 unless stated):
//   NE_BAD_PARAM (70)        tail selector not accepted (TwoTail and Further never are; the
//                            chi-square, F and gamma routines take only Lower and Upper);
//   NE_REAL (15)             an argument is NaN (checked before any range);
//   NE_REAL_ARG_LT/LE/GT/GE  an argument outside its range, named by the bound it crossed;
//   NE_PROB_LIMIT (301)      g01fbc, g01fcc, g01ffc: the deviate lies outside the normal
//                            double range, above the largest or below the smallest normal
//                            double (p too close to 0 or 1);
//   NE_DEVIATE_FAILED (422)  g01fdc only: its solver stopped at its cap or the deviate lies
//                            outside the normal double range, as above;
//   NE_ACCURACY_WARNING (424) g01edc and g01eec: the incomplete beta evaluation stopped at its
//                            iteration cap; the values are still returned;
//   NE_CONV (300)            another series or root finder stopped at its cap; the
//                            approximate value is returned.
// The `tol` arguments of g01eec, g01fec and g01ffc are accepted and ignored: full accuracy
// is always sought. g01fec's deviate lies in [0, 1], so one below the double range is
// returned rounded (to 0) rather than refused.
//
// Parameter limits beyond the natural domains: beta a, b <= 1e6 and gamma deviate shape
// <= 1e6 (kept deliberately: callers rely on these limits); chi-square and F degrees of freedom
// and the gamma shape of the probability and density <= 1e10, above which the Boost
// incomplete-gamma and beta evaluations were found to lose accuracy. Student's t takes any
// df >= 1, +infinity included (the normal law).
//
// Boost runs under the platform's policy (platform/numeric/boost_policy.hpp), which makes
// throwing impossible: an evaluation error (iteration cap reached) sets errno = EDOM, which
// an ErrnoWatch turns into the warning codes above. The caller's errno is restored. The
// standard normal tails are the shared double kernel (platform/numeric/normal.hpp); the
// other laws are evaluated in the extended type (platform/numeric/extended.hpp).
//
// References: DLMF 7 (error functions), 8.17 (incomplete beta), 8.2 (incomplete gamma);
// Abramowitz and Stegun 26.5-26.7 for the t, chi-square and F relations; Hill (1970),
// "Algorithm 396: Student's t-quantiles", CACM 13 (the t deviate's start).
#include "platform/numeric/boost_policy.hpp"  // first: checks Boost.Math's defaults

#include <boost/math/special_functions/beta.hpp>
#include <boost/math/special_functions/erf.hpp>
#include <boost/math/special_functions/gamma.hpp>

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>
#include <utility>

#include "platform/nag/g01.hpp"
#include "platform/nag/g01_extended.hpp"
#include "platform/numeric/extended.hpp"
#include "platform/numeric/gamma_small_shape.hpp"
#include "platform/numeric/incomplete_beta.hpp"
#include "platform/numeric/incomplete_gamma.hpp"
#include "platform/numeric/normal.hpp"

namespace zemath::nag {
namespace {

namespace bm = boost::math;
namespace bp = boost::math::policies;

using Real = numeric::Extended;
using Policy = numeric::BoostPolicy;
using AccuracyWatch = numeric::ErrnoWatch;
using numeric::narrow;

// The same in double arithmetic, for the starting values of the deviates only: Boost's
// double inverses are about twice as fast as its long double ones and accurate to about
// 1e-15, which one polishing Newton step in long double takes to full accuracy.
using StartPolicy = bp::normalise<Policy, bp::promote_double<false>>::type;
// The same to about 32 bits, for the starts of the double deviates: Halley's step from there
// lands below rounding (cubic convergence), and Boost's inverse stops a few iterations sooner.
using RoughStartPolicy = bp::normalise<Policy, bp::promote_double<false>, bp::digits2<32>>::type;

using Tail = Nag_TailProbability;

constexpr Real kSqrt2 = 1.41421356237309504880168872420969808L;
constexpr double kDoubleMax = std::numeric_limits<double>::max();
constexpr double kSqrt2Double = 1.4142135623730951;

// Shape limits (see the header block).
constexpr double kMaxBetaParameter = 1e6;
constexpr double kMaxGammaDeviateShape = 1e6;
constexpr double kMaxShape = 1e10;  // chi-square / F degrees of freedom, gamma shape
// Above this many degrees of freedom Student's t equals the normal law to long double
// precision wherever its tail is a normal double: the relative difference is about
// t^4 / (4 df), below 1e-19 for |t| <= 40, and both tails underflow beyond.
constexpr Real kNormalLimitDf = 1e25L;

// A deviate is returned only as a normal double: beyond the largest double, or below the
// smallest normal one while the exact deviate is positive, p is too close to 0 or 1 for
// it to be computed (status 301, "probability too close to 0 or 1").
bool representable(double v, bool zero_is_exact) {
    if (!std::isfinite(v)) return false;
    if (v == 0) return zero_is_exact;
    return std::fabs(v) >= std::numeric_limits<double>::min();
}

double fail_with(NagError* fail, int code) {
    fail->set(code);
    return 0.0;
}

bool is_one_sided(Tail tail) {
    return tail == Tail::Nag_LowerTail || tail == Tail::Nag_UpperTail;
}
bool is_accepted(Tail tail) {
    return is_one_sided(tail) || tail == Tail::Nag_TwoTailSignif || tail == Tail::Nag_TwoTailConfid;
}

// ---- normal ----------------------------------------------------------------------------

// The tail at hi + lo, lo a correction below an ulp of hi, by the shared double kernel.
double normal_tail(Tail tail, double hi, double lo) {
    switch (tail) {
        case Tail::Nag_LowerTail:
            return numeric::normal_lower(hi, lo);
        case Tail::Nag_UpperTail:
            return numeric::normal_upper(hi, lo);
        case Tail::Nag_TwoTailSignif:
            return hi < 0.0 ? 2.0 * numeric::normal_lower(hi, lo)
                            : 2.0 * numeric::normal_upper(hi, lo);
        default:
            return numeric::normal_within(hi, lo);
    }
}

// The tail of an extended argument: its double part and the rest go to the shared double
// kernel, which carries the rest as a correction (enough for 64 bits of argument).
double normal_tail(Tail tail, Real x) {
    const double hi = narrow(x);
    const double lo = std::isfinite(hi) ? static_cast<double>(x - hi) : 0.0;
    return normal_tail(tail, hi, lo);
}

// ---- incomplete beta: both tails, and its inverse -------------------------------------

struct BetaTails {
    Real lower, upper;  // I_x(a, b) and 1 - I_x(a, b)
};

// Boost's long double ibeta is accurate to about 1e-19 relative on the side of I_x below
// 1/2, but may lose digits on the side near 1: ibetac(1/2, 1/2, 1e-20) is exactly 1 instead
// of 1 - 6.4e-11 (its arcsine shortcut evaluates asin(sqrt(1 - x))). So only the smaller
// side is ever taken from it, and the larger is 1 minus that, exact to 1e-19 absolute.
// With a whole second shape n, I_x(a, n) is the negative binomial sum
//     x^a sum_{j < n} C(a + j - 1, j) (1 - x)^j
// and its complement the same terms for j >= n: positive terms only. Boost's long double
// ibeta loses up to 3e-12 relative where one shape is a whole number from 2 to 12 and the
// other large and not whole (ibeta(1000.5, 6, x), ibeta(8, 4321.25, x)), so there the sums
// are used instead, within about 1e-18 relative (the terms' roundings, and a ln x or
// a log1p(-y) of at most 900 in magnitude for a result in the double range). The complement
// is summed only when the finite sum exceeds 1/2 (the mean then lies below n, so the terms
// beyond n fall off geometrically); what it leaves out is at most the first term left out
// over 1 - r, r the terms' ratio, which decreases. Empty when no such sum applies.
constexpr int kWholeShapeMax = 12;

std::optional<BetaTails> whole_shape_tails(Real a, Real n, Real x, Real y) {
    if (!(n >= 2 && n <= kWholeShapeMax && n == std::floor(n)) || !(a > kWholeShapeMax)) {
        return std::nullopt;
    }
    const Real log_x = y < 0.5L ? std::log1p(-y) : std::log(x);
    const Real lead = std::exp(a * log_x);
    const int terms = static_cast<int>(n);
    Real term = 1, below = 0;
    for (int j = 0; j < terms; ++j) {
        below += term;
        term *= (a + j) / (j + 1) * y;
    }
    const Real lower = lead * below;
    if (lower <= 0.5L) return BetaTails{lower, 1 - lower};
    constexpr int kMaxTerms = 100000;
    Real above = 0;
    for (int j = terms; j < terms + kMaxTerms; ++j) {
        above += term;
        const Real ratio = (a + j) / (j + 1) * y;
        term *= ratio;
        if (ratio < 1 && term / (1 - ratio) <= 1e-21L * above) {
            return BetaTails{1 - lead * above, lead * above};
        }
    }
    return std::nullopt;
}

// lower_first names the side expected to be the smaller, to save the second evaluation.
BetaTails beta_tails(Real a, Real b, Real x, bool lower_first) {
    if (const auto sums = whole_shape_tails(a, b, x, 1 - x)) return *sums;
    if (const auto sums = whole_shape_tails(b, a, 1 - x, x)) {
        return BetaTails{sums->upper, sums->lower};
    }
    if (lower_first) {
        const Real lower = bm::ibeta(a, b, x, Policy());
        if (lower <= 0.5L) return {lower, 1 - lower};
        const Real upper = bm::ibetac(a, b, x, Policy());
        return {1 - upper, upper};
    }
    const Real upper = bm::ibetac(a, b, x, Policy());
    if (upper <= 0.5L) return {1 - upper, upper};
    const Real lower = bm::ibeta(a, b, x, Policy());
    return {lower, 1 - lower};
}

// The side below the mean a / (a + b) is the usual smaller one.
BetaTails beta_tails(Real a, Real b, Real x) {
    return beta_tails(a, b, x, x * (a + b) <= a);
}

// Safeguarded Newton iteration for g(s) = 0, g increasing in s, within [lo, hi]: Newton
// steps while they stay inside the bracket the evaluations have narrowed, bisection
// otherwise. eval(s) returns {g, dg/ds}. Converged when g or the step reaches long double
// rounding (g is a difference of logarithms, so that is a relative accuracy of about
// 1e-18 in the probability), or when the Newton step is so small that the quadratic
// convergence leaves an error below that after it (the usual case from a start accurate to
// double precision: one evaluation). Capped: false when the cap is reached first.
constexpr int kMaxSolverIterations = 200;
constexpr Real kSolverTolerance = 1e-18L;
// Newton's error after a step e is about (g''/2g') e^2; in these log variables g''/g' stays
// below about 1e5 (the width of a gamma or beta law with shapes up to 1e10 is 1e-5 in
// log x), so a step of 1e-12 leaves at most 5e-20.
constexpr Real kFinalStep = 1e-12L;

template <class Eval>
bool solve_increasing(Eval eval, Real& s, Real lo, Real hi) {
    if (!(s > lo && s < hi)) s = lo / 2 + hi / 2;
    for (int i = 0; i < kMaxSolverIterations; ++i) {
        const auto [g, slope] = eval(s);
        if (std::isnan(g)) return false;
        if (std::fabs(g) <= kSolverTolerance) return true;
        const Real scale = std::max(Real(1), std::fabs(s));
        const Real newton_step = g / slope;
        if (slope > 0 && std::fabs(newton_step) <= kFinalStep * scale && s - newton_step > lo &&
            s - newton_step < hi) {
            // The last step: its own error is below the resolution of s. (At that resolution
            // the remaining mismatch of g is the rounding of the tail evaluation.)
            s -= newton_step;
            return true;
        }
        const Real resolution = kSolverTolerance * scale;
        if (g < 0) {
            lo = s;
        } else {
            hi = s;
        }
        Real next = s - newton_step;
        if (!(slope > 0) || !(next > lo && next < hi)) next = lo / 2 + hi / 2;
        const Real step = std::fabs(next - s);
        s = next;
        if (step <= resolution) return true;
    }
    return false;
}

// The solvers' hard bracket in log variables: the whole positive range of the extended type.
constexpr Real kLogMin = numeric::kLogExtendedMin;
constexpr Real kLogMax = numeric::kLogExtendedMax;

// Below this smaller tail, or with a shape below kBoostStartShape, the beta deviate's start
// does not come from Boost (see there): its inverse took minutes there (finv(8.05e-196,
// 6.54e-125, 1.93e-197), shapes 3.3e-125 and 9.7e-198, never returned).
constexpr Real kBoostStartTail = 1e-290L;
constexpr Real kBoostStartShape = 1e-100L;

struct BetaRoot {
    Real x, y;  // y = 1 - x, each to full relative accuracy
    bool converged;
};

// x with I_x(a, b) = p, where q = 1 - p and the smaller of p and q is exact. Boost's
// ibeta_inv gives the start (it can stall far from the root in the far tail: for a = 2,
// p = 1e-300 it stops at x = 4e-51); the root is then polished by Newton on the log of
// the smaller tail, in the logarithm of whichever of x and 1 - x is below 1/2, so that
// both come out to full relative accuracy.
BetaRoot beta_inverse(Real a, Real b, Real p, Real q) {
    Real y0 = 0;
    Real x0 = -1;  // no start
    if (std::min(p, q) < kBoostStartTail || std::min(a, b) < kBoostStartShape) {
        // Boost's inverse can take minutes there; the leading term of the tail,
        // I_x(a, b) ~ x^a / (a B(a, b)) near 0 (and the same in 1 - x with b, a near 1),
        // starts the polish instead.
        const Real log_beta =
            bm::lgamma(a, Policy()) + bm::lgamma(b, Policy()) - bm::lgamma(a + b, Policy());
        const bool lower = p <= q;
        const Real e = lower ? a : b;
        const Real u = std::exp((std::log(lower ? p : q) + std::log(e) + log_beta) / e);
        if (u > 0 && u < 0.5L) {
            x0 = lower ? u : 1 - u;
            y0 = lower ? 1 - u : u;
        }
    } else {
        AccuracyWatch start;  // the start's own shortfalls are the polish's business
        // In double first, inverting the smaller tail; in long double when the double
        // root is not a normal double on both sides (far tails beyond the double range).
        double yd = 0;
        const double xd = p <= q
                              ? bm::ibeta_inv(double(a), double(b), double(p), &yd, StartPolicy())
                              : bm::ibetac_inv(double(a), double(b), double(q), &yd, StartPolicy());
        if (std::isnormal(xd) && std::isnormal(yd)) {
            x0 = xd;
            y0 = yd;
        } else {
            x0 = bm::ibeta_inv(a, b, p, &y0, Policy());
        }
    }
    // Work in u = x (with a, b, p, q) or in u = 1 - x (with b, a, q, p), whichever is below
    // 1/2 at the root. Without a start, the root lies above 1/2 when p exceeds I_{1/2}(a, b).
    bool in_y = false;
    Real u0 = -1;
    if (x0 >= 0 && x0 <= 1) {
        in_y = x0 > 0.5L;
        u0 = in_y ? y0 : x0;
    } else {
        in_y = p > beta_tails(a, b, 0.5L).lower;
    }
    const Real alpha = in_y ? b : a, beta = in_y ? a : b;
    const Real target_lower = in_y ? q : p, target_upper = in_y ? p : q;
    const bool lower_side = target_lower <= target_upper;  // invert the smaller tail
    const Real log_target = std::log(lower_side ? target_lower : target_upper);
    const Real sign = lower_side ? 1 : -1;
    auto eval = [&](Real s) {
        const Real u = std::exp(s);
        const BetaTails tails = beta_tails(alpha, beta, u, lower_side);
        const Real tail = lower_side ? tails.lower : tails.upper;
        const Real density = bm::ibeta_derivative(alpha, beta, u, Policy());
        return std::pair<Real, Real>{sign * (std::log(tail) - log_target), u * density / tail};
    };
    Real s = u0 > 0 ? std::log(u0) : kLogMin / 2;  // no usable start: bracket middle
    const bool converged = solve_increasing(eval, s, kLogMin, 0);
    const Real u = std::exp(s);
    return in_y ? BetaRoot{1 - u, u, converged} : BetaRoot{u, 1 - u, converged};
}

// The double path of the incomplete beta (see the opening block): I_x(a, b) and its
// complement at x = x.hi + x.lo, y = 1 - x = y.hi + y.lo; NaN in a side it cannot give.
numeric::BetaTailsDouble beta_tails_double(double a, double b, numeric::TwoPart x,
                                           numeric::TwoPart y) {
    constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
    const auto tails = numeric::incomplete_beta_double(a, b, x, y, true);
    return tails ? *tails : numeric::BetaTailsDouble{kNaN, kNaN, kNaN};
}

// ---- the deviates in double ------------------------------------------------------------

// The smallest sensitivity r = u dI/du / tail (of the logarithm of the inverted tail to log u
// at the root) the double deviates accept: the root's relative error is the tail's relative
// error over r. Where both shapes are below 16 the tails are within about 3e-15, so r >= 0.1
// keeps the root within about 3e-14; otherwise within about 1e-14, and r >= 0.3 keeps it
// within about 3e-14 as well.
constexpr double kMinSensitivitySmall = 0.1;
constexpr double kMinSensitivity = 0.3;

struct BetaRootDouble {
    double x, y;  // y = 1 - x, the one below 1/2 to full relative accuracy, the other rounded once
    bool found;
};

// x with I_x(a, b) = p, q = 1 - p, the smaller of p and q exact, from the start x0 (y0 =
// 1 - x0): Halley steps on the logarithm of the smaller tail in log u, u whichever of x and
// 1 - x lies below 1/2 at the start, with the double tails (incomplete_beta.cpp), the
// iterate kept as u itself (log u near -690 would be rounded to 6e-14 of u) and the residual
// as the logarithm of the ratio of the tail to its target near the root. The step converges
// at least cubically, so once it is below 1e-8 its own error is below rounding and no
// further evaluation is needed. found = false where the double tails decline, the iteration
// leaves (0, 1) or does not settle in 16 steps, or the sensitivity is below the threshold
// above: the caller falls back on the extended solver.
BetaRootDouble beta_deviate_double(double a, double b, double p, double q, double x0, double y0) {
    constexpr BetaRootDouble kNone{0.0, 0.0, false};
    if (!(x0 > 0.0 && y0 > 0.0 && x0 <= 1.0 && y0 <= 1.0)) return kNone;
    const bool in_y = x0 > 0.5;
    const double alpha = in_y ? b : a, beta = in_y ? a : b;
    const double target_lower = in_y ? q : p, target_upper = in_y ? p : q;
    const bool lower_side = target_lower <= target_upper;
    const double target = lower_side ? target_lower : target_upper;
    const double log_target = std::log(target);
    const double sign = lower_side ? 1.0 : -1.0;
    const double min_sensitivity = std::max(a, b) < 16.0 ? kMinSensitivitySmall : kMinSensitivity;
    // Halley's error after a step e is about K e^3 with K up to the larger shape (the law's
    // width in log u is 1/sqrt of the smaller shape, and the curvature term (beta - 1) u / (1 -
    // u) grows with the larger): a last step below 1e-8 leaves 1e-20 up to shapes 1e4; beyond,
    // the bound shrinks with the cube root of the shape (1e-10 at 5e9 leaves 5e-21).
    const double larger = std::max(a, b);
    const double settled = larger > 1e4 ? 1e-8 * std::cbrt(1e4 / larger) : 1e-8;
    double u = in_y ? y0 : x0;
    for (int i = 0; i < 16; ++i) {
        const numeric::TwoPart v = numeric::two_sum(1.0, -u);  // 1 - u, exact
        const auto tails = numeric::incomplete_beta_double(alpha, beta, {u, 0.0}, v);
        if (!tails) return kNone;
        const double tail = lower_side ? tails->lower : tails->upper;
        if (!(tail > 0.0) || !(tails->front > 0.0)) return kNone;
        // r = (d tail / d log u) / tail in magnitude; d I / d log u = front / (1 - u).
        const double r = tails->front / v.hi / tail;
        const double slope = sign * r;
        const double ratio = tail / target;
        const double residual =
            ratio > 0.5 && ratio < 2.0 ? std::log(ratio) : std::log(tail) - log_target;
        // d ln(d I / d log u) / d log u = alpha - (beta - 1) u / (1 - u) = c; the second
        // derivative of the log tail is r (c - r) (lower) or -r (c + r) (upper).
        const double c = alpha - (beta - 1.0) * (u / v.hi);
        const double curvature = lower_side ? r * (c - r) : -r * (c + r);
        const double newton = residual / slope;
        const double denominator = 1.0 - 0.5 * newton * curvature / slope;
        const bool halley = denominator > 0.5 && denominator < 2.0;
        const double step = std::clamp(halley ? newton / denominator : newton, -2.0, 2.0);
        u *= std::exp(-step);
        if (!(u > 0.0 && u < 1.0) || !std::isnormal(u)) return kNone;
        if (halley && std::fabs(step) < settled) {
            if (r < min_sensitivity) return kNone;
            const double w = 1.0 - u;
            return in_y ? BetaRootDouble{w, u, true} : BetaRootDouble{u, w, true};
        }
    }
    return kNone;
}

// The start of the beta deviate: Boost's inverse in double on the smaller tail (its own
// shortfalls are the polish's business); x0 = -1 where it gives no usable start.
std::pair<double, double> beta_start_double(double a, double b, double p, double q) {
    if (std::min(p, q) < double(kBoostStartTail) || std::min(a, b) < double(kBoostStartShape)) {
        // As in beta_inverse: the leading term of the tail, x^a / (a B(a, b)) near 0.
        const bool lower = p <= q;
        const double e = lower ? a : b;
        const double log_beta = bm::lgamma(a, StartPolicy()) + bm::lgamma(b, StartPolicy()) -
                                bm::lgamma(a + b, StartPolicy());  // no shared sign state
        const double u = std::exp((std::log(lower ? p : q) + std::log(e) + log_beta) / e);
        if (!(u > 0.0 && u < 0.5) || !std::isnormal(u)) return {-1.0, -1.0};
        return lower ? std::pair{u, 1.0 - u} : std::pair{1.0 - u, u};
    }
    AccuracyWatch start;
    double y0 = 0;
    const double x0 = p <= q ? bm::ibeta_inv(a, b, p, &y0, RoughStartPolicy())
                             : bm::ibetac_inv(a, b, q, &y0, RoughStartPolicy());
    if (!(std::isnormal(x0) && std::isnormal(y0))) return {-1.0, -1.0};
    return {x0, y0};
}

// Both shapes from kPaulsonFrom up, the tail asked for down to kPaulsonTail: the start is
// Paulson's normal form of the F law's cube root (the beta root is x = a F / (a F + b) at F with
// 2a and 2b degrees of freedom), ((1 - c2) w - (1 - c1)) / sqrt(c1 + c2 w^2) = z at w = F^(1/3),
// c1 = 1/(9a), c2 = 1/(9b), z the normal deviate of the lower tail: a quadratic in w, solved in
// closed form. Within about 1e-3 relative in x from shapes 50 with tails down to 1e-12 (the
// error grows with z^2 / min(a, b)), so two or three Halley steps settle the root; one erfc
// inverse and a square root, where Boost's inverse takes several evaluations of its own tail.
constexpr double kPaulsonFrom = 50.0;
constexpr double kPaulsonTail = 1e-100;

std::pair<double, double> beta_start_paulson(double a, double b, double p, double q) {
    constexpr std::pair<double, double> kNone{-1.0, -1.0};
    const double z = p <= q ? -kSqrt2Double * bm::erfc_inv(2 * p, StartPolicy())
                            : kSqrt2Double * bm::erfc_inv(2 * q, StartPolicy());
    const double c1 = 1.0 / (9.0 * a), c2 = 1.0 / (9.0 * b);
    const double ca = 1.0 - c2, cb = 1.0 - c1, z2 = z * z;
    // (ca^2 - z^2 c2) w^2 - 2 ca cb w + cb^2 - z^2 c1 = 0; the root with ca w - cb of z's sign.
    const double lead = ca * ca - z2 * c2;
    const double disc = ca * ca * c1 + cb * cb * c2 - z2 * c1 * c2;
    if (!(lead > 0.25 && disc > 0.0)) return kNone;
    const double root = std::sqrt(disc);
    if (!(ca * root + z * c2 * cb > 0.0)) return kNone;  // the squared equation's other root
    const double w = (ca * cb + z * root) / lead;
    if (!(w > 0.0)) return kNone;
    const double af = a * (w * w * w);
    const double x = af / (af + b), y = b / (af + b);
    if (!(std::isnormal(x) && std::isnormal(y))) return kNone;
    return {x, y};
}

// The far-tail start of the beta deviate: the smaller tail's series about its end,
// I_u(e, o) = u^e (1 - u)^o / (e B(e, o)) (1 + (e + o)/(e + 1) u + (e + o)(e + o + 1)/((e +
// 1)(e + 2)) u^2 + ...), u = x, e = a, o = b for the lower tail (u = 1 - x with the shapes
// swapped for the upper), solved for u by a few fixed-point steps from its leading term. Kept
// where u stays below half the mean of u (e / (e + o)), where the truncated series is within a
// few per cent; x0 = -1 elsewhere.
std::pair<double, double> beta_start_tail(double a, double b, double p, double q) {
    constexpr std::pair<double, double> kNone{-1.0, -1.0};
    const bool lower = p <= q;
    const double e = lower ? a : b, o = lower ? b : a, s = e + o;
    const double limit = 0.5 * e / s;
    const double log_beta = bm::lgamma(a, StartPolicy()) + bm::lgamma(b, StartPolicy()) -
                            bm::lgamma(s, StartPolicy());  // no shared sign state
    const double base = std::log(lower ? p : q) + std::log(e) + log_beta;
    double u = std::exp(base / e);
    if (!(u < limit)) return kNone;
    for (int k = 0; k < 3; ++k) {
        const double series =
            1.0 + s / (e + 1.0) * u *
                      (1.0 + (s + 1.0) / (e + 2.0) * u * (1.0 + (s + 2.0) / (e + 3.0) * u));
        u = std::exp((base - o * std::log1p(-u) - std::log(series)) / e);
        if (!(u < limit)) return kNone;
    }
    if (!std::isnormal(u)) return kNone;
    return lower ? std::pair{u, 1.0 - u} : std::pair{1.0 - u, u};
}

// The start of the beta deviate in double: Paulson's where both shapes are large, the tail
// series where the root lies well inside a tail, Paulson's again in the body of smaller shapes
// (rougher there, so a step or two more), Boost's inverse where none applies. Boost's inverse
// takes several evaluations of its own incomplete beta: on the benchmark's arguments it cost
// three times the whole polish.
std::pair<double, double> beta_start_any(double a, double b, double p, double q) {
    const bool paulson = std::min(p, q) >= kPaulsonTail;
    if (paulson && std::min(a, b) >= kPaulsonFrom) {
        const auto start = beta_start_paulson(a, b, p, q);
        if (start.first > 0.0) return start;
    }
    const auto tail = beta_start_tail(a, b, p, q);
    if (tail.first > 0.0) return tail;
    if (paulson) {
        const auto start = beta_start_paulson(a, b, p, q);
        if (start.first > 0.0) return start;
    }
    return beta_start_double(a, b, p, q);
}

// Hill's approximation to the t deviate with P(|T| >= t) = beyond (Algorithm 396), a start
// within about 1e-4 relative; small t from the slope at 0 instead.
double t_start(double beyond, double within, double n) {
    constexpr double kPi = 3.14159265358979323846;
    if (within < 1e-4) {
        // P(|T| <= t) ~ 2 t f(0), f(0) = Gamma(b + 1/2) / (Gamma(b) sqrt(pi n)), b = n/2,
        // Gamma(b + 1/2)/Gamma(b) ~ sqrt(b) (1 - 1/(8b)) (a few per cent at b = 1/2).
        const double b = n / 2;
        return within * std::sqrt(kPi * n / b) / (2.0 * (1.0 - 0.125 / b));
    }
    if (n == 1.0) return 1.0 / std::tan(beyond * (kPi / 2));
    if (n == 2.0) return std::sqrt(2.0 / (beyond * (2.0 - beyond)) - 2.0);
    const double a = 1.0 / (n - 0.5);
    const double b = 48.0 / (a * a);
    double c = ((20700.0 * a / b - 98.0) * a - 16.0) * a + 96.36;
    const double d = ((94.5 / (b + c) - 3.0) / b + 1.0) * std::sqrt(a * kPi / 2) * n;
    double x = d * beyond;
    double y = std::pow(x, 2.0 / n);
    if (y > 0.05 + a) {
        x = kSqrt2Double * bm::erfc_inv(beyond, StartPolicy());  // upper normal deviate
        y = x * x;
        if (n < 5.0) c += 0.3 * (n - 4.5) * (x + 0.6);
        c = (((0.05 * d * x - 5.0) * x - 7.0) * x - 2.0) * x + b + c;
        y = (((((0.4 * y + 6.3) * y + 36.0) * y + 94.5) / c - y - 3.0) / b + 1.0) * x;
        y = std::expm1(a * y * y);
    } else {
        y = ((1.0 / (((n + 6.0) / (n * y) - 0.089 * d - 0.822) * (n + 2.0) * 3.0) +
              0.5 / (n + 4.0)) *
                 y -
             1.0) *
                (n + 1.0) / (n + 2.0) +
            1.0 / y;
    }
    return std::sqrt(n * y);
}

// t >= 0 with P(|T| >= t) = beyond and P(|T| <= t) = within (the smaller exact) in double:
// I_x(1/2, df/2) = within at x = t^2 / (df + t^2), from Hill's start. NaN where the double
// path declines.
double t_deviate_double(double beyond, double within, double df) {
    constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
    if (!(df <= 2 * numeric::kBetaDoubleHalfShapeMax)) return kNaN;
    const double t0 = t_start(beyond, within, df);
    if (!(t0 > 0.0) || !std::isfinite(t0)) return kNaN;
    double x0 = 0, y0 = 0;
    if (t0 > 1e150) {
        y0 = df / t0 / t0;
        x0 = 1.0 - y0;
    } else {
        const double t2 = t0 * t0;
        x0 = t2 / (df + t2);
        y0 = df / (df + t2);
    }
    if (!(y0 > 0.0)) return kNaN;
    const BetaRootDouble r = beta_deviate_double(0.5, df / 2, within, beyond, x0, y0);
    if (!r.found) return kNaN;
    return std::sqrt(df * r.x) / std::sqrt(r.y);
}

// ---- Student's t -----------------------------------------------------------------------

// The double path of t_two_sided: lower = P(|T| <= |t|), upper = P(|T| >= |t|), each NaN
// where it does not apply (see incomplete_beta.hpp).
numeric::BetaTailsDouble t_two_sided_double(double t, double df) {
    return numeric::student_t_two_sided_double(t, df);
}

// P(|T| >= |t|) (within = false) or P(|T| <= |t|) (within = true). With x = t^2/(df + t^2)
// the first is I_{1-x}(df/2, 1/2) and the second I_x(1/2, df/2); whichever of x and 1 - x
// is the smaller is formed directly so that neither is a rounded difference from 1.
Real t_two_sided(Real t, Real df, bool within) {
    const Real at = std::fabs(t);
    if (std::isinf(at)) return within ? 1 : 0;
    if (df > kNormalLimitDf) {
        return normal_tail(within ? Tail::Nag_TwoTailConfid : Tail::Nag_TwoTailSignif, at);
    }
    const Real t2 = at * at;
    const Real denom = df + t2;
    if (df > 2 * t2) {
        const BetaTails tails = beta_tails(Real(0.5), df / 2, t2 / denom);
        return within ? tails.lower : tails.upper;
    }
    const BetaTails tails = beta_tails(df / 2, Real(0.5), df / denom);
    return within ? tails.upper : tails.lower;
}

// P(T <= t), the smaller tail computed and the larger one as 1 minus it in long double.
Real t_lower(Real t, Real df) {
    if (t == 0) return 0.5L;
    const Real beyond_half = t_two_sided(t, df, false) / 2;
    return t < 0 ? beyond_half : 1 - beyond_half;
}

// t >= 0 with P(|T| >= t) = p (within = false) or P(|T| <= t) = p (within = true), where
// q = 1 - p and the smaller of the two is exact.
Real t_two_sided_deviate(Real p, Real q, Real df, bool within, bool* converged) {
    *converged = true;
    if (df > kNormalLimitDf) {
        return kSqrt2 * (within ? bm::erf_inv(p, Policy()) : bm::erfc_inv(p, Policy()));
    }
    if (within) {  // I_x(1/2, df/2) = p with x = t^2 / (df + t^2)
        const BetaRoot r = beta_inverse(Real(0.5), df / 2, p, q);
        *converged = r.converged;
        return std::sqrt(df * (r.x / r.y));
    }
    const BetaRoot r = beta_inverse(df / 2, Real(0.5), p, q);  // x = df / (df + t^2)
    *converged = r.converged;
    return std::sqrt(df * (r.y / r.x));
}

// ---- F ---------------------------------------------------------------------------------

// P(F <= f) or P(F > f) as I_z(df1/2, df2/2) with z = df1 f / (df1 f + df2), or its
// complement through 1 - z = df2 / (df1 f + df2), whichever of z and 1 - z is smaller.
Real f_tail(bool upper, Real f, Real df1, Real df2) {
    if (std::isinf(f)) return upper ? 0 : 1;
    const Real num = df1 * f;
    const Real denom = num + df2;
    const Real a = df1 / 2, b = df2 / 2;
    if (num > df2) {
        const BetaTails tails = beta_tails(b, a, df2 / denom);
        return upper ? tails.lower : tails.upper;
    }
    const BetaTails tails = beta_tails(a, b, num / denom);
    return upper ? tails.upper : tails.lower;
}

// ---- gamma -----------------------------------------------------------------------------

Real gamma_tail(bool upper, Real a, Real x) {
    if (std::isinf(x)) return upper ? 0 : 1;
    return upper ? bm::gamma_q(a, x, Policy()) : bm::gamma_p(a, x, Policy());
}

// The double path of the gamma tails (see the opening block) at x + x_low, x normal: NaN
// where it does not apply.
double gamma_tail_double(bool upper, double a, double x, double x_low) {
    if (a < 1.0 && x < a + 1.0) {
        // Boost in double: within 7 ulps here over both tails (measured against its
        // extended evaluation); the argument's rounding is magnified at most twice.
        return upper ? bm::gamma_q(a, x, StartPolicy()) : bm::gamma_p(a, x, StartPolicy());
    }
    const auto tails = numeric::incomplete_gamma_double(a, x, x_low);
    if (tails) return upper ? tails->upper : tails->lower;
    // Declined: mostly a far tail whose prefactor is below e^-700. The tail on the far side
    // of a is at most e^-D (Chernoff's bound, any a > 0), D = x - a - a ln(x/a); past
    // D = 40 it is below 2^-54, so the tail on a's side is 1 once rounded.
    const bool asked_near_side = upper ? x < a : x > a;
    if (asked_near_side && x - a - a * std::log(x / a) > 40.0) return 1.0;
    return std::numeric_limits<double>::quiet_NaN();
}

// Density of the standard gamma law at x >= 0, with the limits at x = 0: +infinity for
// a < 1, 1 for a = 1, 0 for a > 1.
Real gamma_density(Real a, Real x) {
    if (std::isinf(x)) return 0;
    if (x == 0) return a < 1 ? std::numeric_limits<Real>::infinity() : (a == 1 ? 1 : 0);
    return bm::gamma_p_derivative(a, x, Policy());
}

// x with P(a, x) = p, 0 < p < 1: Boost's inverse of the smaller tail as the start (1 - p
// is exact for a double p >= 1/2), polished by Newton on the log of that tail in log x.
Real gamma_deviate(Real a, double p, bool* converged) {
    const bool lower_side = p <= 0.5;
    const Real target = lower_side ? Real(p) : 1 - Real(p);
    Real x0 = 0;
    {
        AccuracyWatch start;  // as in beta_inverse: double first, long double if need be
        const double xd = lower_side ? bm::gamma_p_inv(double(a), double(target), StartPolicy())
                                     : bm::gamma_q_inv(double(a), double(target), StartPolicy());
        x0 = std::isnormal(xd) ? Real(xd)
                               : (lower_side ? bm::gamma_p_inv(a, target, Policy())
                                             : bm::gamma_q_inv(a, target, Policy()));
    }
    const Real log_target = std::log(target);
    const Real sign = lower_side ? 1 : -1;
    auto eval = [&](Real s) {
        const Real x = std::exp(s);
        const Real tail = gamma_tail(!lower_side, a, x);
        return std::pair<Real, Real>{sign * (std::log(tail) - log_target),
                                     x * gamma_density(a, x) / tail};
    };
    Real s = x0 > 0 && std::isfinite(x0) ? std::log(x0) : 0;
    *converged = solve_increasing(eval, s, kLogMin, kLogMax);
    return std::exp(s);
}

// The double path of gamma_deviate, a >= 1: Halley on the logarithm of the smaller
// tail in log x with the double tails, from the Wilson-Hilferty start (at most 30 steps);
// NaN where it does not apply or does not settle. The tails are within 6e-15 and the
// sensitivity x f(x) / tail of their logarithm to log x is at least about 1 for these
// shapes, so the root is within about 1e-14 relative.
double gamma_deviate_double(double a, double p) {
    constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
    if (a < 1.0) return numeric::gamma_deviate_small_shape(a, p);
    // Larger shapes too: beyond kGammaDoubleShapeMax the tails answer near the centre
    // (Temme's expansion) and decline elsewhere, which ends the iteration with NaN here.
    const bool lower_side = p <= 0.5;
    const double target = lower_side ? p : 1.0 - p;  // exact
    const double log_target = std::log(target);
    // Wilson-Hilferty: (x/a)^(1/3) is nearly normal with mean 1 - 1/(9a), variance 1/(9a).
    const double z = -kSqrt2Double * bm::erfc_inv(2 * p, StartPolicy());
    const double v = 1.0 / (9.0 * a);
    const double cube = 1.0 - v + z * std::sqrt(v);
    // The iterate is x itself, moved by factors e^-step: log x near -690 would be rounded to
    // 6e-14 of x.
    double x = cube > 0.05 ? a * cube * cube * cube : 0.0;
    // Wilson-Hilferty is off by 3 to 200 per cent in log x far in the tails of the smaller
    // shapes (three or four tail evaluations); there the tails' own leading forms, solved
    // for x by a few fixed-point steps, start closer (one or two evaluations):
    //   lower, x < (a + 1)/2: P = x^a e^-x / Gamma(a + 1) (1 + x/(a + 1) + x^2/((a + 1)
    //                         (a + 2)) + x^3/((a + 1)(a + 2)(a + 3)) + ...),
    //   upper, x past the mean by 3 sqrt(a) + 3: Q = x^(a-1) e^-x / Gamma(a) (1 + (a - 1)/x
    //                         + (a - 1)(a - 2)/x^2 + (a - 1)(a - 2)(a - 3)/x^3 + ...).
    // Each start is kept only where its form applies at the x it reaches.
    const double centre_limit = a + 3.0 * std::sqrt(a) + 3.0;
    if (lower_side ? x < 0.6 * (a + 1.0) : x > centre_limit) {
        const double log_gamma = bm::lgamma(a + 1.0, StartPolicy());  // ln Gamma(a + 1)
        if (lower_side) {
            double xs = std::exp((log_target + log_gamma) / a);
            if (xs < 0.5 * (a + 1.0)) {
                for (int k = 0; k < 3; ++k) {
                    const double series =
                        1.0 + xs / (a + 1.0) * (1.0 + xs / (a + 2.0) * (1.0 + xs / (a + 3.0)));
                    xs = std::exp((log_target + log_gamma + xs - std::log(series)) / a);
                }
                if (xs < 0.5 * (a + 1.0)) x = xs;
            }
        } else {
            double xu = std::max(x, a);
            const double log_gamma_a = log_gamma - std::log(a);
            for (int k = 0; k < 3; ++k) {
                const double series =
                    1.0 + (a - 1.0) / xu * (1.0 + (a - 2.0) / xu * (1.0 + (a - 3.0) / xu));
                xu = -log_target - log_gamma_a + (a - 1.0) * std::log(xu) + std::log(series);
            }
            if (xu > centre_limit) x = xu;
        }
    }
    if (!(x > 0.0)) x = std::exp((log_target + bm::lgamma(a + 1.0, StartPolicy())) / a);  // x^a/a!
    const numeric::GammaShape shape = numeric::gamma_shape(a);  // Gamma(a) once, not per step
    bool last = false;
    for (int i = 0; i < 30; ++i) {
        const auto tails = numeric::incomplete_gamma_double(shape, x, 0.0);
        if (!tails) return kNaN;
        const double tail = lower_side ? tails->lower : tails->upper;
        if (!(tail > 0)) return kNaN;
        const double slope = (lower_side ? 1.0 : -1.0) * tails->x_density / tail;
        // Damped far from the root: the logarithm of a tail is concave in log x.
        // Near the root the logarithm of the ratio: ln(tail) - ln(target) would carry the
        // rounding of logarithms near -690 (6e-14) into the root.
        const double ratio = tail / target;
        const double residual =
            ratio > 0.5 && ratio < 2.0 ? std::log(ratio) : std::log(tail) - log_target;
        // Halley's correction: with r = x f(x) / tail, d ln(x f)/d ln x = a - x, so the
        // second derivative of the log tail is r (a - x - r) (lower) or -r (a - x + r).
        const double r = tails->x_density / tail;
        const double curvature = lower_side ? r * (a - x - r) : -r * (a - x + r);
        const double newton = residual / slope;
        const double denominator = 1.0 - 0.5 * newton * curvature / slope;
        const double halley = denominator > 0.5 ? newton / denominator : newton;
        double step = std::clamp(halley, -1.0, 1.0);
        // Near the root, the root of the log tail's Taylor polynomial of degree kOrder in
        // h = log x - log x0 instead, found by Newton's method on the polynomial from Halley's
        // step. Its coefficients follow from r alone: w = dg/dh (g the log tail, either side)
        // obeys w' = w (a - x0 e^h) - w^2 (as d ln(x f)/d ln x = a - x), so the Taylor
        // coefficients of w come from those of x0 e^h by the product rule, w_0 = slope.
        bool series = false;
        double omitted = 0.0;  // the first term the polynomial leaves out, at the root, over g1
        if (std::fabs(step) < 0.1) {
            constexpr int kOrder = 6;
            constexpr double kInverse[kOrder + 2] = {0.0,     1.0,     1.0 / 2, 1.0 / 3,
                                                     1.0 / 4, 1.0 / 5, 1.0 / 6, 1.0 / 7};
            double w[kOrder + 1], shifted[kOrder + 1];  // shifted: a - x0 e^h
            w[0] = slope;
            shifted[0] = a - x;
            double power = x;
            for (int k = 1; k <= kOrder; ++k) {
                power *= kInverse[k];
                shifted[k] = -power;
            }
            for (int k = 0; k < kOrder; ++k) {
                double sum = 0.0;
                for (int j = 0; j <= k; ++j) sum += w[j] * (shifted[k - j] - w[k - j]);
                w[k + 1] = sum * kInverse[k + 1];
            }
            double h = -step;
            for (int it = 0; it < 3; ++it) {
                double value = 0.0, derivative = 0.0;
                for (int k = kOrder - 1; k >= 0; --k) {
                    value = value * h + w[k] * kInverse[k + 1];
                    derivative = derivative * h + w[k];
                }
                h -= (residual + h * value) / derivative;
            }
            // Kept where it agrees with Halley's step to its own order, its error estimated by
            // the first omitted term where the last terms shrink at least twofold each.
            const double e = std::fabs(h);
            const double last_kept = std::fabs(w[kOrder - 1]) * kInverse[kOrder];
            const double first_left = std::fabs(w[kOrder]) * kInverse[kOrder + 1] * e;
            if (std::isfinite(h) && std::fabs(h + step) <= 0.5 * std::fabs(step)) {
                step = -h;
                series = first_left <= 0.5 * last_kept;
                double power_of_e = first_left / std::fabs(slope);
                for (int k = 0; k < kOrder; ++k) power_of_e *= e;
                omitted = power_of_e;
            }
        }
        x *= std::exp(-step);
        // Halley's error after a step e is about K e^3, K = (g''/2g')^2 - g'''/(6g') of the
        // log tail g in log x: about a at the centre (the law's width there is 1/sqrt(a) in
        // log x), O(1) in the tails. So a step with (1 + a) e^3 below 1e-16 leaves the root
        // within 1e-16 (the tails' own 6e-15 bound the result); the polynomial's root
        // likewise once its first omitted term, over the slope, is below 1e-17 with the terms
        // shrinking; otherwise, once a step is below 1e-7, one more (at least quadratic
        // convergence) does.
        const double e = std::fabs(step);
        if (last || (series ? omitted < 1e-17 : (1.0 + a) * e * e * e < 1e-16)) return x;
        last = std::fabs(step) < 1e-7;
    }
    return kNaN;
}

}  // namespace

// ---- g01eac / g01cec: standard normal -------------------------------------------------

long double g01eac_extended(Nag_TailProbability tail, long double x, NagError* fail) {
    fail->set(NE_NOERROR);
    if (!is_accepted(tail)) return fail_with(fail, NE_BAD_PARAM);
    if (std::isnan(x)) return fail_with(fail, NE_REAL);
    return normal_tail(tail, x);
}

long double g01cec_extended(double p, NagError* fail) {
    fail->set(NE_NOERROR);
    if (std::isnan(p)) return fail_with(fail, NE_REAL);
    if (p <= 0) return fail_with(fail, NE_REAL_ARG_LE);
    if (p >= 1) return fail_with(fail, NE_REAL_ARG_GE);
    // z = -sqrt 2 erfc^-1(2p); 2p is exact, and erfc_inv works on the smaller of 2p and
    // 2 - 2p itself.
    return -kSqrt2 * bm::erfc_inv(2 * Real(p), Policy());
}

double g01cec(double p, NagError* fail) {
    fail->set(NE_NOERROR);
    if (std::isnan(p)) return fail_with(fail, NE_REAL);
    if (p <= 0) return fail_with(fail, NE_REAL_ARG_LE);
    if (p >= 1) return fail_with(fail, NE_REAL_ARG_GE);
    // Boost's double inverse erfc (rational approximations in sqrt(-ln z)) is within 2 ulps
    // down to z = 2 DBL_MIN; 2p is exact.
    return -kSqrt2Double * bm::erfc_inv(2 * p, StartPolicy());
}

// ---- g01ebc / g01fbc: Student's t ------------------------------------------------------

double g01ebc(Nag_TailProbability tail, double t, double df, NagError* fail) {
    fail->set(NE_NOERROR);
    if (!is_accepted(tail)) return fail_with(fail, NE_BAD_PARAM);
    if (std::isnan(t) || std::isnan(df)) return fail_with(fail, NE_REAL);
    if (df < 1) return fail_with(fail, NE_REAL_ARG_LT);
    AccuracyWatch watch;
    // The double path first (NaN where it does not apply).
    double fast = std::numeric_limits<double>::quiet_NaN();
    const numeric::BetaTailsDouble two_sided = t_two_sided_double(t, df);
    if (is_one_sided(tail)) {
        const double beyond = two_sided.upper;
        const bool below = (t < 0) == (tail == Tail::Nag_LowerTail);
        // The side above 1/2 also from the within probability where that is the one the
        // double path gives (at least 0.9, so (1 + within)/2 keeps its relative accuracy).
        fast =
            below ? beyond / 2 : (std::isnan(beyond) ? (1 + two_sided.lower) / 2 : 1 - beyond / 2);
    } else {
        fast = tail == Tail::Nag_TwoTailConfid ? two_sided.lower : two_sided.upper;
    }
    if (!std::isnan(fast)) {
        if (watch.reduced()) fail->set(NE_CONV);
        return fast;
    }
    Real value = 0;
    switch (tail) {
        case Tail::Nag_LowerTail:
            value = t_lower(t, df);
            break;
        case Tail::Nag_UpperTail:
            value = t_lower(-Real(t), df);
            break;
        case Tail::Nag_TwoTailSignif:
            value = t_two_sided(t, df, false);
            break;
        default:
            value = t_two_sided(t, df, true);
            break;
    }
    if (watch.reduced()) fail->set(NE_CONV);
    return narrow(value);
}

double g01fbc(Nag_TailProbability tail, double p, double df, NagError* fail) {
    fail->set(NE_NOERROR);
    if (!is_accepted(tail)) return fail_with(fail, NE_BAD_PARAM);
    if (std::isnan(p) || std::isnan(df)) return fail_with(fail, NE_REAL);
    if (p <= 0) return fail_with(fail, NE_REAL_ARG_LE);
    if (p >= 1) return fail_with(fail, NE_REAL_ARG_GE);
    if (df < 1) return fail_with(fail, NE_REAL_ARG_LT);
    AccuracyWatch watch;
    {
        // The double path: the two-sided tails beyond and within |t|, the smaller exact
        // (2p, 2(1 - p) and 1 minus either where that is the smaller, all exact in double).
        double beyond = 0, within = 0, sign = 1;
        if (is_one_sided(tail)) {
            beyond = p < 0.5 ? 2 * p : 2 * (1 - p);
            within = 1 - beyond;
            sign = (p < 0.5) == (tail == Tail::Nag_LowerTail) ? -1 : 1;
        } else if (tail == Tail::Nag_TwoTailSignif) {
            beyond = p;
            within = 1 - p;
        } else {
            within = p;
            beyond = 1 - p;
        }
        if (!(is_one_sided(tail) && p == 0.5)) {
            const double fast = t_deviate_double(beyond, within, df);
            if (representable(fast, false)) {
                if (watch.reduced()) fail->set(NE_CONV);
                return sign * fast;
            }
        }
    }
    Real t = 0;
    bool converged = true;
    if (is_one_sided(tail)) {
        // The one-sided deviate from the two-sided one at twice the smaller tail; 2p,
        // 2(1 - p) and 1 minus either are exact in long double.
        if (p < 0.5) {
            const Real beyond = 2 * Real(p);
            t = -t_two_sided_deviate(beyond, 1 - beyond, df, false, &converged);
        } else if (p > 0.5) {
            const Real beyond = 2 * (1 - Real(p));
            t = t_two_sided_deviate(beyond, 1 - beyond, df, false, &converged);
        }
        if (tail == Tail::Nag_UpperTail) t = -t;
    } else {
        t = t_two_sided_deviate(p, 1 - Real(p), df, tail == Tail::Nag_TwoTailConfid, &converged);
    }
    const double result = narrow(t);
    if (!representable(result, is_one_sided(tail) && p == 0.5)) {
        return fail_with(fail, NE_PROB_LIMIT);
    }
    if (!converged || watch.reduced()) fail->set(NE_CONV);
    return result;
}

// ---- g01ecc / g01fcc: chi-square -------------------------------------------------------

double g01ecc(Nag_TailProbability tail, double x, double df, NagError* fail) {
    fail->set(NE_NOERROR);
    if (!is_one_sided(tail)) return fail_with(fail, NE_BAD_PARAM);
    if (std::isnan(x) || std::isnan(df)) return fail_with(fail, NE_REAL);
    if (x < 0) return fail_with(fail, NE_REAL_ARG_LT);
    if (df <= 0) return fail_with(fail, NE_REAL_ARG_LE);
    if (df > kMaxShape) return fail_with(fail, NE_REAL_ARG_GT);
    AccuracyWatch watch;
    const bool upper = tail == Tail::Nag_UpperTail;
    if (std::isnormal(x / 2) && std::isnormal(df / 2)) {
        const double fast = gamma_tail_double(upper, df / 2, x / 2, 0.0);  // halves exact
        if (!std::isnan(fast)) {
            if (watch.reduced()) fail->set(NE_CONV);
            return fast;
        }
    }
    const Real value = gamma_tail(upper, Real(df) / 2, Real(x) / 2);
    if (watch.reduced()) fail->set(NE_CONV);
    return narrow(value);
}

double g01fcc(double p, double df, NagError* fail) {
    fail->set(NE_NOERROR);
    if (std::isnan(p) || std::isnan(df)) return fail_with(fail, NE_REAL);
    if (p < 0) return fail_with(fail, NE_REAL_ARG_LT);
    if (p >= 1) return fail_with(fail, NE_REAL_ARG_GE);
    if (df <= 0) return fail_with(fail, NE_REAL_ARG_LE);
    if (df > kMaxShape) return fail_with(fail, NE_REAL_ARG_GT);
    if (p == 0) return 0.0;
    AccuracyWatch watch;
    bool converged = true;
    const double fast = std::isnormal(df / 2) ? gamma_deviate_double(df / 2, p) : std::nan("");
    if (!std::isnan(fast)) return 2 * fast;
    const double result = narrow(2 * gamma_deviate(Real(df) / 2, p, &converged));
    if (!representable(result, false)) return fail_with(fail, NE_PROB_LIMIT);
    if (!converged || watch.reduced()) fail->set(NE_CONV);
    return result;
}

// ---- g01edc / g01fdc: F ----------------------------------------------------------------

double g01edc(Nag_TailProbability tail, double f, double df1, double df2, NagError* fail) {
    fail->set(NE_NOERROR);
    if (!is_one_sided(tail)) return fail_with(fail, NE_BAD_PARAM);
    if (std::isnan(f) || std::isnan(df1) || std::isnan(df2)) return fail_with(fail, NE_REAL);
    if (f < 0) return fail_with(fail, NE_REAL_ARG_LT);
    if (df1 <= 0 || df2 <= 0) return fail_with(fail, NE_REAL_ARG_LE);
    if (df1 > kMaxShape || df2 > kMaxShape) return fail_with(fail, NE_REAL_ARG_GT);
    AccuracyWatch watch;
    const bool upper = tail == Tail::Nag_UpperTail;
    // The double path: z = df1 f / (df1 f + df2) and 1 - z = df2 / (df1 f + df2) in two parts.
    if (f > 0 && f < 1e300 && df1 <= 2 * numeric::kBetaDoubleLargeShapeMax &&
        df2 <= 2 * numeric::kBetaDoubleLargeShapeMax && std::isnormal(df1 / 2) &&
        std::isnormal(df2 / 2)) {
        using numeric::TwoPart;
        const TwoPart num = numeric::two_product(df1, f);
        if (std::isnormal(num.hi)) {
            const TwoPart denom = numeric::add(num, TwoPart{df2, 0.0});
            const numeric::BetaTailsDouble tails =
                beta_tails_double(df1 / 2, df2 / 2, numeric::divide(num, denom),
                                  numeric::divide(TwoPart{df2, 0.0}, denom));
            const double fast = upper ? tails.upper : tails.lower;
            if (!std::isnan(fast)) {
                if (watch.reduced()) fail->set(NE_ACCURACY_WARNING);
                return fast;
            }
        }
    }
    const Real value = f_tail(upper, f, df1, df2);
    // Reduced accuracy is a warning: the value is kept.
    if (watch.reduced()) fail->set(NE_ACCURACY_WARNING);
    return narrow(value);
}

double g01fdc(double p, double df1, double df2, NagError* fail) {
    fail->set(NE_NOERROR);
    if (std::isnan(p) || std::isnan(df1) || std::isnan(df2)) return fail_with(fail, NE_REAL);
    if (p < 0) return fail_with(fail, NE_REAL_ARG_LT);
    if (p >= 1) return fail_with(fail, NE_REAL_ARG_GE);
    if (df1 <= 0 || df2 <= 0) return fail_with(fail, NE_REAL_ARG_LE);
    if (df1 > kMaxShape || df2 > kMaxShape) return fail_with(fail, NE_REAL_ARG_GT);
    if (p == 0) return 0.0;
    AccuracyWatch watch;
    if (df1 <= 2 * numeric::kBetaDoubleLargeShapeMax &&
        df2 <= 2 * numeric::kBetaDoubleLargeShapeMax && std::isnormal(df1 / 2) &&
        std::isnormal(df2 / 2)) {
        const double q = 1 - p;  // exact where it is the smaller
        const auto [x0, y0] = beta_start_any(df1 / 2, df2 / 2, p, q);
        const BetaRootDouble r = beta_deviate_double(df1 / 2, df2 / 2, p, q, x0, y0);
        if (r.found) {
            const double fast = (df2 / df1) * (r.x / r.y);
            if (representable(fast, false) && !watch.reduced()) return fast;
        }
    }
    // z = df1 f / (df1 f + df2) = I^-1_p(df1/2, df2/2); the inverse also returns 1 - z to
    // full relative accuracy, so f = df2 z / (df1 (1 - z)) keeps it near the top end.
    const BetaRoot r = beta_inverse(Real(df1) / 2, Real(df2) / 2, p, 1 - Real(p));
    const double result = narrow((Real(df2) * r.x) / (Real(df1) * r.y));
    if (!r.converged || watch.reduced() || !representable(result, false)) {
        return fail_with(fail, NE_DEVIATE_FAILED);
    }
    return result;
}

// ---- g01eec / g01fec: beta -------------------------------------------------------------

// Any of p, q, pdf may be null and is then not computed, so that a caller that needs one
// output pays for one evaluation.
void g01eec(double x, double a, double b, double /*tol*/, double* p, double* q, double* pdf,
            NagError* fail) {
    fail->set(NE_NOERROR);
    if (p) *p = 0.0;
    if (q) *q = 0.0;
    if (pdf) *pdf = 0.0;
    if (std::isnan(x) || std::isnan(a) || std::isnan(b)) return (void)fail->set(NE_REAL);
    if (x < 0) return (void)fail->set(NE_REAL_ARG_LT);
    if (x > 1) return (void)fail->set(NE_REAL_ARG_GT);
    if (a <= 0 || b <= 0) return (void)fail->set(NE_REAL_ARG_LE);
    if (a > kMaxBetaParameter || b > kMaxBetaParameter) return (void)fail->set(NE_REAL_ARG_GT);
    AccuracyWatch watch;
    const Real la = a, lb = b, lx = x;
    if ((p || q) && x > 0 && x < 1) {
        // The double path (1 - x exact in two parts).
        const numeric::BetaTailsDouble tails =
            beta_tails_double(a, b, numeric::TwoPart{x, 0.0}, numeric::two_sum(1.0, -x));
        if (!(p && std::isnan(tails.lower)) && !(q && std::isnan(tails.upper))) {
            if (p) *p = tails.lower;
            if (q) *q = tails.upper;
            p = q = nullptr;  // done
        }
    }
    if (p || q) {
        const BetaTails tails = beta_tails(la, lb, lx);
        if (p) *p = narrow(tails.lower);
        if (q) *q = narrow(tails.upper);
    }
    if (pdf) {
        Real density = 0;
        // Limits at the ends: +infinity below shape 1, the finite value at shape 1, else 0.
        if (x == 0) {
            density = a < 1 ? std::numeric_limits<Real>::infinity() : (a == 1 ? lb : Real(0));
        } else if (x == 1) {
            density = b < 1 ? std::numeric_limits<Real>::infinity() : (b == 1 ? la : Real(0));
        } else {
            density = bm::ibeta_derivative(la, lb, lx, Policy());
        }
        *pdf = narrow(density);
    }
    if (watch.reduced()) fail->set(NE_ACCURACY_WARNING);
}

double g01fec(double p, double a, double b, double /*tol*/, NagError* fail) {
    fail->set(NE_NOERROR);
    if (std::isnan(p) || std::isnan(a) || std::isnan(b)) return fail_with(fail, NE_REAL);
    if (p < 0) return fail_with(fail, NE_REAL_ARG_LT);
    if (p > 1) return fail_with(fail, NE_REAL_ARG_GT);
    if (a <= 0 || b <= 0) return fail_with(fail, NE_REAL_ARG_LE);
    if (a > kMaxBetaParameter || b > kMaxBetaParameter) return fail_with(fail, NE_REAL_ARG_GT);
    if (p == 0) return 0.0;
    if (p == 1) return 1.0;
    AccuracyWatch watch;
    {
        const double q = 1 - p;  // exact where it is the smaller
        const auto [x0, y0] = beta_start_any(a, b, p, q);
        const BetaRootDouble r = beta_deviate_double(a, b, p, q, x0, y0);
        if (r.found && !watch.reduced()) return r.x;
    }
    const BetaRoot r = beta_inverse(a, b, p, 1 - Real(p));
    if (!r.converged || watch.reduced()) fail->set(NE_CONV);
    return narrow(r.x);
}

// ---- g01efc / g01ffc / g01kfc: gamma (a shape, b scale) ---------------------------------

double g01efc(Nag_TailProbability tail, double g, double a, double b, NagError* fail) {
    fail->set(NE_NOERROR);
    if (!is_one_sided(tail)) return fail_with(fail, NE_BAD_PARAM);
    if (std::isnan(g) || std::isnan(a) || std::isnan(b)) return fail_with(fail, NE_REAL);
    if (g < 0) return fail_with(fail, NE_REAL_ARG_LT);
    if (a <= 0 || b <= 0) return fail_with(fail, NE_REAL_ARG_LE);
    if (a > kMaxShape || b > kDoubleMax) return fail_with(fail, NE_REAL_ARG_GT);
    AccuracyWatch watch;
    const bool upper = tail == Tail::Nag_UpperTail;
    const double x = g / b;
    // g above 1e-290 and x normal: the residual g - x b is exact.
    if (g > 1e-290 && std::isnormal(x) && std::isfinite(x)) {
        const double fast = gamma_tail_double(upper, a, x, numeric::remainder_of(g, x, b) / b);
        if (!std::isnan(fast)) {
            if (watch.reduced()) fail->set(NE_CONV);
            return fast;
        }
    }
    const Real value = gamma_tail(upper, a, Real(g) / b);
    if (watch.reduced()) fail->set(NE_CONV);
    return narrow(value);
}

double g01ffc(double p, double a, double b, double /*tol*/, NagError* fail) {
    fail->set(NE_NOERROR);
    if (std::isnan(p) || std::isnan(a) || std::isnan(b)) return fail_with(fail, NE_REAL);
    if (p < 0) return fail_with(fail, NE_REAL_ARG_LT);
    if (p >= 1) return fail_with(fail, NE_REAL_ARG_GE);
    if (a <= 0 || b <= 0) return fail_with(fail, NE_REAL_ARG_LE);
    if (a > kMaxGammaDeviateShape || b > kDoubleMax) return fail_with(fail, NE_REAL_ARG_GT);
    if (p == 0) return 0.0;
    AccuracyWatch watch;
    bool converged = true;
    const double fast = gamma_deviate_double(a, p);
    if (!std::isnan(fast) && std::isnormal(fast * b) && std::isfinite(fast * b)) return fast * b;
    const double result = narrow(gamma_deviate(a, p, &converged) * b);
    if (!representable(result, false)) return fail_with(fail, NE_PROB_LIMIT);
    if (!converged || watch.reduced()) fail->set(NE_CONV);
    return result;
}

double g01kfc(double x, double a, double b, NagError* fail) {
    fail->set(NE_NOERROR);
    if (std::isnan(x) || std::isnan(a) || std::isnan(b)) return fail_with(fail, NE_REAL);
    if (a <= 0 || b <= 0) return fail_with(fail, NE_REAL_ARG_LE);
    if (a > kMaxShape || b > kDoubleMax) return fail_with(fail, NE_REAL_ARG_GT);
    if (x < 0) return 0.0;
    AccuracyWatch watch;
    // f(x) = g(x/b) / b with g the standard density; x/b in long double cannot overflow.
    const double result = narrow(gamma_density(a, Real(x) / b) / b);
    if (watch.reduced()) fail->set(NE_CONV);
    return result;
}

}  // namespace zemath::nag
