// Inline evaluation of the real Lambert W function behind c05bac, for the exports' fast
// path: the pieces, their tables and the choice between them (c05.cpp describes the
// method and its accuracy). The arguments are screened by the caller.
#pragma once

#include <bit>
#include <cmath>
#include <cstdint>

namespace zemath::nag::lambert {

// 1/e = kInvEHi + kInvELo to about 107 bits; -kInvEHi is the double nearest -1/e.
inline constexpr double kInvEHi = 0.36787944117144233;
inline constexpr double kInvELo = -1.2428753672788363e-17;

#include "platform/nag/c05_pieces.inc"

inline constexpr int kBias = 1023;  // the exponent bias of a double

// The biased exponent of |v|: 2^(e - 1023) <= |v| < 2^(e - 1022) for a normal v.
inline int biased_exponent(double v) {
    return static_cast<int>((std::bit_cast<std::uint64_t>(v) >> 52) & 0x7ff);
}

// c[0] + c[1] z + ... + c[7] z^7 by Estrin's scheme (z2 = z^2, z4 = z^4): the four pairs
// and the powers proceed side by side, half the latency of Horner's rule, which is what a
// loop over many arguments waits on.
inline double estrin7(const double* c, double z, double z2, double z4) {
    const double c01 = c[0] + c[1] * z, c23 = c[2] + c[3] * z;
    const double c45 = c[4] + c[5] * z, c67 = c[6] + c[7] * z;
    return (c01 + z2 * c23) + z4 * (c45 + z2 * c67);
}

// P(z)/Q(z) of a piece (degree up to 7; the padding is zero).
inline double ratio(const LambertPiece& piece, double z) {
    const double z2 = z * z, z4 = z2 * z2;
    return estrin7(piece.num, z, z2, z4) / estrin7(piece.den, z, z2, z4);
}

// The degree-5 pieces (the principal branch's halves of binades): the same with three pairs.
inline double estrin5(const double* c, double z, double z2, double z4) {
    const double c01 = c[0] + c[1] * z, c23 = c[2] + c[3] * z, c45 = c[4] + c[5] * z;
    return (c01 + z2 * c23) + z4 * c45;
}
static_assert(kPrincipalHalvesDegree <= 5);

// A binade piece: W = value + P(z)/Q(z), z = x - centre exact (x and the centre lie within
// a factor 2 of each other).
inline double binade(const LambertPiece& piece, double x) {
    return piece.value + ratio(piece, x - piece.centre);
}

// W from the distance dx = x + 1/e > 0 on the principal or the lower branch, for
// e dx <= 1/2 (c05.cpp).
double near_branch_point(double dx, bool principal);

// The distance x + 1/e for x within a factor 2 of -1/e (x + kInvEHi is exact there).
inline double branch_distance(double x) {
    return (x + kInvEHi) + kInvELo;
}

// The half of x's binade: the leading bit of the fraction (0 below 1.5 2^k, 1 above).
inline int binade_half(double x) {
    return static_cast<int>((std::bit_cast<std::uint64_t>(x) >> 51) & 1);
}

// Principal branch, x >= -kInvEHi finite.
inline double principal_branch(double x) {
    const int e = biased_exponent(x);
    if (x > 0.0) {
        if (e >= kBias - 4) {
            if (e < kBias + 20) {
                const LambertPiece& piece =
                    kPrincipalHalves[2 * (e - (kBias - 4)) + binade_half(x)];
                const double z = x - piece.centre, z2 = z * z, z4 = z2 * z2;
                return piece.value + estrin5(piece.num, z, z2, z4) / estrin5(piece.den, z, z2, z4);
            }
            // x >= 2^20: W = t - ln W, t = ln x; R = ln W from the piece of t's binade.
            const double t = std::log(x);
            const LambertPiece& piece = kPrincipalLogs[biased_exponent(t) - (kBias + 3)];
            return t - (piece.value + ratio(piece, t - piece.centre));
        }
    } else if (e >= kBias - 4) {
        if (e < kBias - 2)  // -1/4 < x <= -1/16
            return binade(kPrincipalNegative[e - (kBias - 4)], x);
        const double dx = branch_distance(x);  // x <= -1/4
        return dx > 0.0 ? near_branch_point(dx, true) : -1.0;
    }
    // |x| < 1/16 (zero and the subnormals included, where x^2 P/Q vanishes).
    return x - x * x * ratio(kPrincipalZero[0], x);
}

// Lower branch, -kInvEHi <= x < 0.
inline double lower_branch(double x) {
    const int e = biased_exponent(x);
    if (e >= kBias - 2) {  // x <= -1/4
        const double dx = branch_distance(x);
        return dx > 0.0 ? near_branch_point(dx, false) : -1.0;
    }
    if (e == kBias - 3) return binade(kLowerQuarter[binade_half(x)], x);    // -1/4 < x <= -1/8
    if (e >= kBias - 30) return binade(kLowerBinades[(kBias - 4) - e], x);  // down to -2^-30
    // |x| < 2^-30: W = -s - ln(-W), s = -ln(-x) (as accurate for subnormal x).
    const double s = -std::log(-x);
    const LambertPiece& piece = kLowerLogs[biased_exponent(s) - (kBias + 4)];
    return -s - (piece.value + ratio(piece, s - piece.centre));
}

}  // namespace zemath::nag::lambert
