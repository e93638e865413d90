// Complex functions under their collision-free names. Each checks its arguments for the
// missing value before computing anything (NaN is not caught); the arithmetic is the
// back end's (platform/nag/a02), except the inverse tangents, computed in closed form
// from two moduli and two angles, and the tan/tanh guards.
#include "zemath/complex.h"

#include <cmath>

#include "core/missing.hpp"
#include "platform/nag/a02.hpp"

using namespace zemath;

namespace {

constexpr d_complex kMissing{NANUM, NANUM};
constexpr double kTwoPi = 6.283185307179586;
constexpr double kPi = 3.141592653589793;
constexpr double kHalfPi = 1.5707963267948966;

bool missing(d_complex z) {
    return is_missing(z.re) || is_missing(z.im);
}

// An angle from atan2 raised into [0, 2 pi).
double non_negative_angle(double angle) {
    return angle < 0.0 ? angle + kTwoPi : angle;
}

// Half an angle difference folded into [-pi/2, pi/2].
double fold_half_pi(double v) {
    if (v < -kHalfPi) return v + kPi;
    if (v > kHalfPi) return v - kPi;
    return v;
}

// The two moduli and the two angles (raised into [0, 2 pi)) of the closed form of
// atanh(p + iq): r1 = |-1 - w|, a1 = atan2(-q, -1 - p); r2 = |w - 1|, a2 = atan2(q, p - 1).
struct ClosedForm {
    double r1, a1, r2, a2;
    bool at_pole() const { return r1 <= 0.0 || r2 <= 0.0; }
    double log_part() const { return (std::log(r1) - std::log(r2)) * 0.5; }
};

ClosedForm closed_form(double p, double q) {
    return {std::sqrt(q * q + (-1.0 - p) * (-1.0 - p)),
            non_negative_angle(std::atan2(-q, -1.0 - p)), std::sqrt((p - 1.0) * (p - 1.0) + q * q),
            non_negative_angle(std::atan2(q, p - 1.0))};
}

}  // namespace

extern "C" {

ZEMATH_API double cabsz(d_complex z) noexcept {
    if (missing(z)) return kNanum;
    return nag::a02dbc(z.re, z.im);
}

ZEMATH_API d_complex sqrtz(d_complex z) noexcept {
    return missing(z) ? kMissing : nag::a02dcc(z);
}

ZEMATH_API d_complex ipow(d_complex z, int n) noexcept {
    return missing(z) ? kMissing : nag::a02ddc(z, n);
}

ZEMATH_API d_complex rpow(d_complex z, double r) noexcept {
    return missing(z) || is_missing(r) ? kMissing : nag::a02dec(z, r);
}

ZEMATH_API d_complex cpowz(d_complex z, d_complex w) noexcept {
    return missing(z) || missing(w) ? kMissing : nag::a02dfc(z, w);
}

ZEMATH_API d_complex logz(d_complex z) noexcept {
    return missing(z) ? kMissing : nag::a02dgc(z);
}
ZEMATH_API d_complex expz(d_complex z) noexcept {
    return missing(z) ? kMissing : nag::a02dhc(z);
}
ZEMATH_API d_complex sinz(d_complex z) noexcept {
    return missing(z) ? kMissing : nag::a02djc(z);
}
ZEMATH_API d_complex cosz(d_complex z) noexcept {
    return missing(z) ? kMissing : nag::a02dkc(z);
}

ZEMATH_API d_complex tanz(d_complex z) noexcept {
    if (missing(z)) return kMissing;
    const d_complex c = nag::a02dkc(z);
    if (nag::a02dbc(c.re, c.im) == 0.0) return kMissing;
    return nag::a02dlc(z);
}

ZEMATH_API d_complex tanhz(d_complex z) noexcept {
    if (missing(z)) return kMissing;
    const d_complex t = nag::complex_tanh(z);
    if (std::isnan(t.re) || std::isnan(t.im) || std::isinf(t.re) || std::isinf(t.im))
        return kMissing;
    return t;
}

// atanh(x + iy): r1 = |-1 - z|, a1 = atan2(-y, -1 - x); r2 = |z - 1|, a2 = atan2(y, x - 1).
ZEMATH_API d_complex atanhz(d_complex z) noexcept {
    if (missing(z)) return kMissing;
    const ClosedForm f = closed_form(z.re, z.im);
    if (f.at_pole()) return kMissing;
    return {f.log_part(), fold_half_pi((f.a1 - f.a2) * 0.5)};
}

// atan(x + iy) is the same construction with the parts exchanged: with p = y and q = -x,
// r1 = |(-1 - y, x)|, a1 = atan2(x, -1 - y); r2 = |(x, y - 1)|, a2 = atan2(-x, y - 1);
// the imaginary part is the log difference and the real part (a2 - a1) / 2, folded.
ZEMATH_API d_complex atanz(d_complex z) noexcept {
    if (missing(z)) return kMissing;
    const ClosedForm f = closed_form(z.im, -z.re);
    if (f.at_pole()) return kMissing;
    return {fold_half_pi((f.a2 - f.a1) * 0.5), f.log_part()};
}

}  // extern "C"
