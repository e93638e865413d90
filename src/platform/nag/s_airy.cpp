// s17agc Ai(x), s17ahc Bi(x), s17ajc Ai'(x), s17akc Bi'(x): the Airy functions in the
// standard normalisation (solutions of w'' = x w).
//
// Method, in double arithmetic, with zeta = (2/3) |x|^(3/2):
//   -8 <= x < 2:  Chebyshev series of the functions themselves on unit intervals;
//   x >= 2:       Ai = e^-zeta A(u) / (2 sqrt(pi) x^(1/4)), Bi = e^zeta B(u) / (sqrt(pi)
//                 x^(1/4)) (and x^(1/4) in the numerator for the derivatives), A, B
//                 Chebyshev series in u = (2/x)^(3/2) that tend to 1; zeta is formed in two
//                 parts (x sqrt(x) by fma), since an error d in it is an error d relative
//                 in e^zeta, and zeta reaches 708;
//   x < -8:       the modulus and phase forms Ai + i Bi = M e^(i theta), Ai' + i Bi' =
//                 N e^(i phi), with theta = pi/4 - zeta + a(v) / |x|^(3/2), phi = 3 pi/4 -
//                 zeta + b(v) / |x|^(3/2), M, N, a, b Chebyshev series in v = (8/|x|)^3.
//                 zeta, up to 7e15 at the phase limit, is formed in two parts and reduced
//                 modulo pi/2 (pi/2 in three parts, each product by fma), so the phase is
//                 that of the argument as given, to about 1e-16 absolute.
// The coefficients come from tests/reference/gen_s_coefficients.py (mpmath, 50 digits;
// every fit within 8e-17 of the piece's largest value). Accuracy against mpmath: a few
// ulps for x >= -1 (Ai' there is absolute, 4e-17, close to its zero at -1.019); for x < -1
// within a few units of 1e-16 of the envelope |x|^(-+1/4) / sqrt(pi) (absolute near the
// zeros, where no relative bound is possible); tests/reference/special_worst_errors.txt.
//
// Failures (value 0): Ai and Ai' for x > 103.9, where they underflow, Bi and Bi' for
// x > 104.1, where they overflow (NE_REAL_ARG_GT); all four for x < -5e10 (NE_REAL_ARG_LT),
// kept as the documented limit of the oscillating range; NaN (NE_REAL).
// References: Abramowitz and Stegun 10.4.59-10.4.80 (the asymptotic and modulus-phase
// forms); DLMF 9.7, 9.8.
#include <algorithm>
#include <cmath>

#include "platform/nag/s.hpp"
#include "platform/nag/s_chebyshev.hpp"
#include "platform/numeric/double_double.hpp"

namespace zemath::nag {

namespace {

using numeric::TwoPart;

using detail::chebyshev;

constexpr double kPhaseLimit = -5e10;
constexpr double kAiUnderflow = 103.9;
constexpr double kBiOverflow = 104.1;
constexpr double kDirectLo = -8.0;
constexpr double kDirectHi = 2.0;
constexpr double kInvSqrtPi = 0.5641895835477563;
constexpr double kHalfInvSqrtPi = 0.28209479177387814;
constexpr TwoPart kTwoThirds{0.6666666666666666, 3.700743415417188e-17};
constexpr double kTwoOverPi = 0.6366197723675814;
// pi/2 in three parts and pi/4 in two.
constexpr double kHalfPi1 = 1.5707963267948966;
constexpr double kHalfPi2 = 6.123233995736766e-17;
constexpr double kHalfPi3 = -1.4973849048591698e-33;
constexpr double kQuarterPiHi = 0.7853981633974483;
constexpr double kQuarterPiLo = 3.061616997868383e-17;

enum Kind { kAi = 0, kBi = 1, kAiPrime = 2, kBiPrime = 3 };

// zeta = (2/3) y^(3/2), y > 0, in two parts.
TwoPart zeta_two_part(double y) {
    const double s = std::sqrt(y);
    const double s_low = numeric::remainder_of(y, s, s) / (2.0 * s);
    TwoPart p = numeric::two_product(y, s);
    p = numeric::quick_two_sum(p.hi, p.lo + y * s_low);
    return numeric::multiply(p, kTwoThirds);
}

double direct(Kind kind, double x) {
    // x + 8 rounds up to 10 for x within an ulp below 2: the last interval takes it.
    const int i = std::min(static_cast<int>(std::floor(x - kDirectLo)), 9);
    const double t = 2.0 * (x - (kDirectLo + i)) - 1.0;
    switch (kind) {
        case kAi:
            return chebyshev(detail::kAiryDirectAi[i], t);
        case kBi:
            return chebyshev(detail::kAiryDirectBi[i], t);
        case kAiPrime:
            return chebyshev(detail::kAiryDirectAiP[i], t);
        default:
            return chebyshev(detail::kAiryDirectBiP[i], t);
    }
}

// x >= 2: the scaled series times e^-+zeta.
double positive(Kind kind, double x) {
    const double q = 2.0 / x;
    const double u = q * std::sqrt(q);
    const int i = u < 0.25 ? 0 : 1;
    const double t = i == 0 ? 8.0 * u - 1.0 : (8.0 * u - 5.0) / 3.0;
    const double x4 = std::sqrt(std::sqrt(x));
    const TwoPart z = zeta_two_part(x);
    switch (kind) {
        case kAi:
            return numeric::exp_two_part(numeric::negate(z)) *
                   (chebyshev(detail::kAiryPositiveAi[i], t) * kHalfInvSqrtPi / x4);
        case kAiPrime:
            return -numeric::exp_two_part(numeric::negate(z)) *
                   (chebyshev(detail::kAiryPositiveAiP[i], t) * kHalfInvSqrtPi * x4);
        case kBi:
            return numeric::exp_two_part(z) *
                   (chebyshev(detail::kAiryPositiveBi[i], t) * kInvSqrtPi / x4);
        default:
            return numeric::exp_two_part(z) *
                   (chebyshev(detail::kAiryPositiveBiP[i], t) * kInvSqrtPi * x4);
    }
}

// x < -8: modulus times the cosine (Ai, Ai') or sine (Bi, Bi') of the phase.
double negative(Kind kind, double x) {
    const double y = -x;
    const double q = 8.0 / y;
    const double t = 2.0 * (q * q * q) - 1.0;
    const bool deriv = kind == kAiPrime || kind == kBiPrime;
    const double modulus =
        chebyshev(deriv ? detail::kAiryNegativeDerMod[0] : detail::kAiryNegativeMod[0], t);
    const double correction =
        chebyshev(deriv ? detail::kAiryNegativeDerPhase[0] : detail::kAiryNegativePhase[0], t) /
        (y * std::sqrt(y));
    // zeta = k pi/2 + r, |r| <= pi/4 (up to rounding of k), r in two parts: k pi/2 formed
    // exactly from the three parts, zeta.hi - k * kHalfPi1 exact by Sterbenz's lemma.
    const TwoPart z = zeta_two_part(y);
    const double k = std::nearbyint(z.hi * kTwoOverPi);
    const TwoPart p1 = numeric::two_product(k, kHalfPi1);
    const TwoPart p2 = numeric::two_product(k, kHalfPi2);
    TwoPart r = numeric::two_sum(z.hi - p1.hi, -p1.lo);
    r = numeric::add(r, TwoPart{-p2.hi, -p2.lo});
    r = numeric::add(r, TwoPart{z.lo - k * kHalfPi3, 0.0});
    // phase = base pi/4 - zeta + correction = w - k' pi/2, w = pi/4 - r + correction, with
    // k' = k for Ai, Bi (base 1) and k - 1 for the derivatives (base 3).
    const double w = (kQuarterPiHi - r.hi) + (correction - r.lo + kQuarterPiLo);
    const long long quadrant = (static_cast<long long>(k) - (deriv ? 1 : 0)) & 3;
    const double c = std::cos(w), s = std::sin(w);
    // cos(w - k' pi/2) and sin(w - k' pi/2) by the quadrant.
    double cos_phase = c, sin_phase = s;
    switch (quadrant) {
        case 1:
            cos_phase = s, sin_phase = -c;
            break;
        case 2:
            cos_phase = -c, sin_phase = -s;
            break;
        case 3:
            cos_phase = -s, sin_phase = c;
            break;
        default:
            break;
    }
    const double y4 = std::sqrt(std::sqrt(y));
    const double amplitude = deriv ? modulus * kInvSqrtPi * y4 : modulus * kInvSqrtPi / y4;
    return amplitude * ((kind == kAi || kind == kAiPrime) ? cos_phase : sin_phase);
}

double airy(Kind kind, double x, NagError* fail) {
    fail->set(NE_NOERROR);
    if (std::isnan(x)) return fail->set(NE_REAL), 0.0;
    if (x < kPhaseLimit) return fail->set(NE_REAL_ARG_LT), 0.0;
    const double upper = (kind == kAi || kind == kAiPrime) ? kAiUnderflow : kBiOverflow;
    if (x > upper) return fail->set(NE_REAL_ARG_GT), 0.0;
    if (x < kDirectLo) return negative(kind, x);
    if (x < kDirectHi) return direct(kind, x);
    return positive(kind, x);
}

}  // namespace

double s17agc(double x, NagError* fail) {
    return airy(kAi, x, fail);
}

double s17ahc(double x, NagError* fail) {
    return airy(kBi, x, fail);
}

double s17ajc(double x, NagError* fail) {
    return airy(kAiPrime, x, fail);
}

double s17akc(double x, NagError* fail) {
    return airy(kBiPrime, x, fail);
}

}  // namespace zemath::nag
