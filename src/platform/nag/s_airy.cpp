// s17agc Ai(x), s17ahc Bi(x), s17ajc Ai'(x), s17akc Bi'(x): the Airy functions in the
// standard normalisation (solutions of w'' = x w).
//
// Method: the Maclaurin series for |x| <= 1/2; beyond, Boost.Math's Airy functions,
// which go through the Bessel functions of order
// 1/3 and 2/3 of zeta = (2/3) |x|^(3/2) (a few ulps for x > 0; for x < 0 the result
// oscillates and is accurate relative to its envelope |x|^(-1/4) / sqrt(pi), not near
// each zero; the phase zeta itself carries the rounding of x, amplified by |x|^(3/2)).
//
// Failures (value 0): Ai and Ai' for x > 103.9, where they underflow, Bi and Bi' for
// x > 104.1, where they overflow (NE_REAL_ARG_GT); all four for x < -5e10, where the
// phase of the oscillation is lost (NE_REAL_ARG_LT); NaN (NE_REAL).
#include <cmath>

#include "platform/nag/s_policy.hpp"  // first: configures Boost
#include <boost/math/special_functions/airy.hpp>

#include "platform/nag/s.hpp"

namespace zemath::nag {

namespace {

using QuietPolicy =
    numeric::BoostPolicy;  // long double inside: the double policy loses digits here
constexpr double kPhaseLimit = -5e10;
constexpr double kAiUnderflow = 103.9;
constexpr double kBiOverflow = 104.1;

// The Maclaurin series for |x| <= 1/2 (Boost's evaluation through the Bessel functions
// loses digits for tiny x): with c1 = Ai(0), c2 = -Ai'(0),
//     Ai = c1 f - c2 g,  Bi = sqrt3 (c1 f + c2 g),  and the same with f', g',
//     f = sum 3^k (1/3)_k x^3k / (3k)!,  g = sum 3^k (2/3)_k x^(3k+1) / (3k+1)!.
constexpr double kC1 = 0.35502805388781723926;
constexpr double kC2 = 0.25881940379280679840;
constexpr double kSqrt3 = 1.7320508075688772935;
constexpr double kSeriesLimit = 0.5;

struct AiryParts {
    double f, g, df, dg;
};

AiryParts maclaurin(double x) {
    const double x3 = x * x * x;
    double tf = 1.0, tg = x, tdf = 0.5 * x * x, tdg = 1.0;
    AiryParts s{tf, tg, tdf, tdg};
    for (int k = 0; k < 12; ++k) {
        const double k3 = 3.0 * k;
        tf *= x3 / ((k3 + 2.0) * (k3 + 3.0));
        tg *= x3 / ((k3 + 3.0) * (k3 + 4.0));
        tdf *= x3 / ((k3 + 3.0) * (k3 + 5.0));
        tdg *= x3 / ((k3 + 1.0) * (k3 + 3.0));
        s.f += tf;
        s.g += tg;
        s.df += tdf;
        s.dg += tdg;
    }
    return s;
}

double small_ai(double x) {
    const AiryParts p = maclaurin(x);
    return kC1 * p.f - kC2 * p.g;
}
double small_bi(double x) {
    const AiryParts p = maclaurin(x);
    return kSqrt3 * (kC1 * p.f + kC2 * p.g);
}
double small_ai_prime(double x) {
    const AiryParts p = maclaurin(x);
    return kC1 * p.df - kC2 * p.dg;
}
double small_bi_prime(double x) {
    const AiryParts p = maclaurin(x);
    return kSqrt3 * (kC1 * p.df + kC2 * p.dg);
}

template <class F>
double airy_checked(double x, double upper, F f, NagError* fail) {
    fail->set(NE_NOERROR);
    if (std::isnan(x)) return fail->set(NE_REAL), 0.0;
    if (x < kPhaseLimit) return fail->set(NE_REAL_ARG_LT), 0.0;
    if (x > upper) return fail->set(NE_REAL_ARG_GT), 0.0;
    return f(x);
}

template <class F, class Small>
double airy_checked(double x, double upper, F f, Small small, NagError* fail) {
    if (std::fabs(x) <= kSeriesLimit) {
        fail->set(NE_NOERROR);
        return small(x);
    }
    return airy_checked(x, upper, f, fail);
}

}  // namespace

double s17agc(double x, NagError* fail) {
    return airy_checked(
        x, kAiUnderflow, [](double t) { return boost::math::airy_ai(t, QuietPolicy()); }, small_ai,
        fail);
}

double s17ahc(double x, NagError* fail) {
    return airy_checked(
        x, kBiOverflow, [](double t) { return boost::math::airy_bi(t, QuietPolicy()); }, small_bi,
        fail);
}

double s17ajc(double x, NagError* fail) {
    return airy_checked(
        x, kAiUnderflow, [](double t) { return boost::math::airy_ai_prime(t, QuietPolicy()); },
        small_ai_prime, fail);
}

double s17akc(double x, NagError* fail) {
    return airy_checked(
        x, kBiOverflow, [](double t) { return boost::math::airy_bi_prime(t, QuietPolicy()); },
        small_bi_prime, fail);
}

}  // namespace zemath::nag
