// The library's own Carlson symmetric elliptic integrals RC, RF, RD and RJ.
//
// Method: Carlson's duplication algorithm (Carlson 1995; DLMF 19.36.1-19.36.2). Each
// step replaces every argument t by (t + lambda)/4, lambda = sum of sqrt(t_i) sqrt(t_j),
// which leaves the integral unchanged (RD and RJ collect a side sum) and draws the
// arguments together by a factor 4; the arguments' spread about their mean A is then
// small enough for the fifth-order Taylor polynomial in the normalised deviations
// X_i = (A - t_i)/A. The loop stops when max |X_i| < 0.0025 (RF, RC: truncation error
// below r^6/4, 6e-17) or 0.0015 (RD, RJ: below 3 r^6 / (1 - r)^(3/2), 4e-17), tested on
// the current values (no scaled bound that could overflow), within a cap of 1100 steps;
// the spread shrinks like the square root of the ratio first, then by 4 per step (RJ's
// r, which does not enter lambda, only by 4: r = 1e50 against x = 1e-100 takes 250).
// - RC by its own duplication (series to s^7, DLMF 19.36.8), which keeps relative
//   accuracy where the closed forms acos/acosh cancel (x near y). y < 0: the Cauchy
//   principal value RC(x, y) = sqrt(x/(x - y)) RC(x - y, -y).
// - RJ for r > 0 by the duplication with the side sum of RC(alpha_m, beta_m) (Carlson
//   1979; both arguments sums of positive terms, evaluated as RC(alpha/beta, 1)/sqrt(beta)
//   with the ratio formed from square roots, and RC(rho^2, 1) in closed form, acos or
//   acosh, where rho is below 1/2 or above 2); r < 0: the Cauchy principal value by DLMF 19.20.14
//   with the arguments sorted x <= y <= z and p = y + (z - y)(y - x)/(y - r): (y - r) RJ(x,y,z,r) =
//   (p - y) RJ(x,y,z,p) - 3 RF(x,y,z) + 3 sqrt(xyz/(xz - p r)) RC(xz - p r, -p r).
// Accuracy: worst relative error about 2e-15 on grids spanning 1e-200..1e200
// (tests/stats/special_own_test.cpp).
// Domain (NANUM outside): RC x >= 0, y != 0; RF x, y, z >= 0 with at most one 0; RD x,
// y >= 0 with at most one 0, z > 0; RJ x, y, z >= 0 with at most one 0, r != 0. Every
// argument at most DBL_MAX/5 in size and sums of two at least 5 DBL_MIN. The principal
// value of RJ is also refused when its arguments span so many decades (beyond about
// 1e400 between the largest and the smallest) that the rescaled ones underflow to 0.
// References: B. C. Carlson, Numerical computation of real or complex elliptic
// integrals, Numerical Algorithms 10 (1995) 13-26; DLMF 19.20.14, 19.36.
#include <algorithm>
#include <cmath>
#include <limits>

#include "core/missing.hpp"
#include "stats/own_special.hpp"

namespace zemath::own {

namespace {

constexpr double kUpper = std::numeric_limits<double>::max() / 5.0;
constexpr double kLower = 5.0 * std::numeric_limits<double>::min();
constexpr int kCap = 1100;  // a spread of 4^1100 exceeds any ratio of doubles
constexpr double kSpreadRf = 0.0025;
constexpr double kSpreadRdRj = 0.0015;

bool in_range(double v) {
    return !detail::unusable(v) && std::fabs(v) <= kUpper;
}

double rc_positive(double x, double y) {
    // x >= 0, y > 0 (y = 0, reached only through an underflow, is the pole).
    if (!(y > 0.0)) return std::nan("");
    double a = (x + 2.0 * y) / 3.0;
    const double s0 = y - a;  // (y - A0); s = s0 / (4^m A)
    double fac = 1.0;
    for (int m = 0; m < kCap; ++m) {
        if (std::fabs(s0) * fac < kSpreadRf * std::fabs(a)) {
            const double s = s0 * fac / a;
            const double poly =
                1.0 +
                s * s *
                    (0.3 + s * (1.0 / 7.0 + s * (0.375 + s * (9.0 / 22.0 + s * (159.0 / 208.0 +
                                                                                s * 9.0 / 8.0)))));
            return poly / std::sqrt(a);
        }
        const double lambda = 2.0 * std::sqrt(x) * std::sqrt(y) + y;
        x = 0.25 * (x + lambda);
        y = 0.25 * (y + lambda);
        a = 0.25 * (a + lambda);
        fac *= 0.25;
    }
    return std::nan("");
}

// RC(rho^2, 1), rho >= 0: the closed forms acos(rho)/sqrt(1 - rho^2) below 1/2 and
// acosh(rho)/(rho sqrt(1 - 1/rho^2)) above 2 (both well conditioned there, and free of
// the slow subnormal iterations a tiny or huge rho would cost the duplication); the
// duplication between.
double rc_square_one(double rho) {
    if (rho < 0.5) return std::acos(rho) / std::sqrt((1.0 - rho) * (1.0 + rho));
    if (rho > 2.0) {
        const double inv = 1.0 / rho;
        return std::acosh(rho) / (rho * std::sqrt((1.0 - inv) * (1.0 + inv)));
    }
    return rc_positive(rho * rho, 1.0);
}

double rf_core(double x, double y, double z) {
    for (int m = 0; m < kCap; ++m) {
        const double a = (x + y + z) / 3.0;
        const double dx = (a - x) / a, dy = (a - y) / a, dz = (a - z) / a;
        if (std::max({std::fabs(dx), std::fabs(dy), std::fabs(dz)}) < kSpreadRf) {
            const double e2 = dx * dy - dz * dz;
            const double e3 = dx * dy * dz;
            return (1.0 - e2 / 10.0 + e3 / 14.0 + e2 * e2 / 24.0 - 3.0 * e2 * e3 / 44.0) /
                   std::sqrt(a);
        }
        const double sx = std::sqrt(x), sy = std::sqrt(y), sz = std::sqrt(z);
        const double lambda = sx * sy + sy * sz + sz * sx;
        x = 0.25 * (x + lambda);
        y = 0.25 * (y + lambda);
        z = 0.25 * (z + lambda);
    }
    return std::nan("");
}

// The fifth-order polynomial shared by RD and RJ (DLMF 19.36.2).
double rd_rj_polynomial(double e2, double e3, double e4, double e5) {
    return 1.0 - 3.0 * e2 / 14.0 + e3 / 6.0 + 9.0 * e2 * e2 / 88.0 - 3.0 * e4 / 22.0 -
           9.0 * e2 * e3 / 52.0 + 3.0 * e5 / 26.0;
}

double rd_core(double x, double y, double z) {
    double sum = 0.0, fac = 1.0;
    for (int m = 0; m < kCap; ++m) {
        const double a = (x + y + 3.0 * z) / 5.0;
        const double dx = (a - x) / a, dy = (a - y) / a, dz = (a - z) / a;
        if (std::max({std::fabs(dx), std::fabs(dy), std::fabs(dz)}) < kSpreadRdRj) {
            const double zz = -(dx + dy) / 3.0;
            const double xy = dx * dy;
            const double e2 = xy - 6.0 * zz * zz;
            const double e3 = (3.0 * xy - 8.0 * zz * zz) * zz;
            const double e4 = 3.0 * (xy - zz * zz) * zz * zz;
            const double e5 = xy * zz * zz * zz;
            return (fac * rd_rj_polynomial(e2, e3, e4, e5) / a) / std::sqrt(a) + 3.0 * sum;
        }
        const double sx = std::sqrt(x), sy = std::sqrt(y), sz = std::sqrt(z);
        const double lambda = sx * sy + sy * sz + sz * sx;
        sum += fac / (sz * (z + lambda));
        fac *= 0.25;
        x = 0.25 * (x + lambda);
        y = 0.25 * (y + lambda);
        z = 0.25 * (z + lambda);
    }
    return std::nan("");
}

double rj_core(double x, double y, double z, double p) {
    // Two zero arguments, reached only through an underflow in the principal-value path,
    // make the integral diverge (and the duplication stall): refused at once.
    if ((x == 0.0) + (y == 0.0) + (z == 0.0) >= 2 || !(p > 0.0)) return std::nan("");
    double sum = 0.0, fac = 1.0;
    for (int m = 0; m < kCap; ++m) {
        const double a = (x + y + z + 2.0 * p) / 5.0;
        const double dx = (a - x) / a, dy = (a - y) / a, dz = (a - z) / a;
        const double dp = (a - p) / a;
        if (std::max({std::fabs(dx), std::fabs(dy), std::fabs(dz), std::fabs(dp)}) < kSpreadRdRj) {
            const double pp = -(dx + dy + dz) / 2.0;
            const double e2 = dx * dy + dx * dz + dy * dz - 3.0 * pp * pp;
            const double e3 = dx * dy * dz + 2.0 * e2 * pp + 4.0 * pp * pp * pp;
            const double e4 = (2.0 * dx * dy * dz + e2 * pp + 3.0 * pp * pp * pp) * pp;
            const double e5 = dx * dy * dz * pp * pp;
            return (fac * rd_rj_polynomial(e2, e3, e4, e5) / a) / std::sqrt(a) + 3.0 * sum;
        }
        const double sx = std::sqrt(x), sy = std::sqrt(y), sz = std::sqrt(z);
        const double lambda = sx * sy + sy * sz + sz * sx;
        // RC(alpha, beta), alpha = (p (sx + sy + sz) + sx sy sz)^2, beta = p (p + lambda)^2:
        // both sums of positive terms, so no cancellation where r - z and the like would
        // make the difference form 1 + e_m vanish. By homogeneity RC(alpha, beta) =
        // RC(alpha/beta, 1)/sqrt(beta), with alpha/beta formed from ratios of square
        // roots: no power of an argument above the first is ever formed, so nothing
        // overflows or underflows before the result itself would.
        const double sp = std::sqrt(p);
        const double ratio =
            sp * (sx + sy + sz) / (p + lambda) + (sx * sy / (p + lambda)) * (sz / sp);
        const double rc = rc_square_one(ratio);
        sum += fac * (rc / sp) / (p + lambda);
        fac *= 0.25;
        x = 0.25 * (x + lambda);
        y = 0.25 * (y + lambda);
        z = 0.25 * (z + lambda);
        p = 0.25 * (p + lambda);
    }
    return std::nan("");
}

double rj_scaled(double x, double y, double z, double r);

double finish(double v) {
    return std::isfinite(v) ? v : NANUM;
}

// x, y, z >= 0 in range with at most one zero and pairwise sums at least kLower.
bool three_ok(double x, double y, double z) {
    if (!in_range(x) || !in_range(y) || !in_range(z)) return false;
    if (x < 0.0 || y < 0.0 || z < 0.0) return false;
    return x + y >= kLower && y + z >= kLower && z + x >= kLower;
}

}  // namespace

double carlson_rc(double x, double y) {
    if (!in_range(x) || !in_range(y) || x < 0.0 || y == 0.0) return NANUM;
    if (x + std::fabs(y) < kLower) return NANUM;
    if (y > 0.0) return finish(rc_positive(x, y));
    return finish(std::sqrt(x) / std::sqrt(x - y) * rc_positive(x - y, -y));
}

double carlson_rf(double x, double y, double z) {
    if (!three_ok(x, y, z)) return NANUM;
    return finish(rf_core(x, y, z));
}

double carlson_rd(double x, double y, double z) {
    if (!in_range(x) || !in_range(y) || !in_range(z)) return NANUM;
    if (x < 0.0 || y < 0.0 || z <= 0.0 || x + y < kLower || z < kLower) return NANUM;
    return finish(rd_core(x, y, z));
}

double carlson_rj(double x, double y, double z, double r) {
    if (!three_ok(x, y, z) || !in_range(r) || r == 0.0 || std::fabs(r) < kLower) return NANUM;
    if (r > 0.0) return finish(rj_core(x, y, z, r));
    // The principal value forms products of two arguments: RJ being homogeneous of
    // degree -3/2, when the largest argument lies beyond 2^+-250 all are scaled by the
    // power of 4 that brings it just inside (exact) and the result rescaled by the
    // matching power of 2.
    const double largest = std::max({x, y, z, std::fabs(r)});
    int shift = 0;  // multiply by 4^shift
    if (largest > 0x1p250) shift = (250 - std::ilogb(largest)) / 2 - 1;
    if (largest < 0x1p-250) shift = (-250 - std::ilogb(largest)) / 2 + 1;
    if (shift != 0) {
        x = std::ldexp(x, 2 * shift);
        y = std::ldexp(y, 2 * shift);
        z = std::ldexp(z, 2 * shift);
        r = std::ldexp(r, 2 * shift);
    }
    return finish(std::ldexp(rj_scaled(x, y, z, r), 3 * shift));
}

namespace {

// The principal value of RJ, r < 0, for arguments of moderate size.
double rj_scaled(double x, double y, double z, double r) {
    double s[3] = {x, y, z};
    std::sort(s, s + 3);
    const double q = -r;
    const double p = s[1] + (s[2] - s[1]) * (s[1] - s[0]) / (s[1] + q);
    const double xz = s[0] * s[2];
    const double v =
        ((p - s[1]) * rj_core(s[0], s[1], s[2], p) - 3.0 * rf_core(s[0], s[1], s[2]) +
         3.0 * std::sqrt(s[0] * s[1] * s[2] / (xz + p * q)) * rc_positive(xz + p * q, p * q)) /
        (s[1] + q);
    return v;
}

}  // namespace

}  // namespace zemath::own
