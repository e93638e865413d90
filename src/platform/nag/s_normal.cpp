// s15abc Phi(x), s15acc 1 - Phi(x), s15adc erfc(x), s15aec erf(x), and the scaled
// complementary error function e^(x^2) erfc(x) that the library exports as erfcx.
//
// Method: W. J. Cody's rational Chebyshev approximations (break points |x| = 0.46875
// and 4), one routine with three modes: erf, erfc, e^(x^2) erfc(x). e^(-x^2) is formed
// as e^(-s^2) e^(-(x-s)(x+s)) with s = x rounded down to a multiple of 1/16, so that
// erfc keeps its relative accuracy far into the tail. Accuracy: a few ulps over the
// whole line; erfc underflows to 0 beyond x = 26.55 and erfcx is 1/(sqrt(pi) x) beyond
// 6.71e7. Phi and its complement use the normal-tail helper, which also recovers the
// rounding of x / sqrt(2) (otherwise a relative error of about x^2 ulps far out).
// No failure exits.
// Reference: W. J. Cody (1969), Rational Chebyshev approximations for the error
// function, Math. Comp. 23, 631-637 (routine CALERF).
#include <cmath>

#include "platform/numeric/normal.hpp"
#include "platform/nag/s.hpp"

namespace zemath::nag {

namespace {

// The coefficients of Cody's approximations as published (see the reference above): kA/kB
// for |x| <= 0.46875, kC/kD up to 4, kP/kQ beyond.
constexpr double kA[5] = {3.16112374387056560e0, 1.13864154151050156e2, 3.77485237685302021e2,
                          3.20937758913846947e3, 1.85777706184603153e-1};
constexpr double kB[4] = {2.36012909523441209e1, 2.44024637934444173e2, 1.28261652607737228e3,
                          2.84423683343917062e3};
constexpr double kC[9] = {5.64188496988670089e-1, 8.88314979438837594e0, 6.61191906371416295e1,
                          2.98635138197400131e2,  8.81952221241769090e2, 1.71204761263407058e3,
                          2.05107837782607147e3,  1.23033935479799725e3, 2.15311535474403846e-8};
constexpr double kD[8] = {1.57449261107098347e1, 1.17693950891312499e2, 5.37181101862009858e2,
                          1.62138957456669019e3, 3.29079923573345963e3, 4.36261909014324716e3,
                          3.43936767414372164e3, 1.23033935480374942e3};
constexpr double kP[6] = {3.05326634961232344e-1, 3.60344899949804439e-1, 1.25781726111229246e-1,
                          1.60837851487422766e-2, 6.58749161529837803e-4, 1.63153871373020978e-2};
constexpr double kQ[5] = {2.56852019228982242e0, 1.87295284992346047e0, 5.27905102951428412e-1,
                          6.05183413124413191e-2, 2.33520497626869185e-3};
constexpr double kInvSqrtPi = 5.6418958354775628695e-1;
// Cody's published break points: below kXSmall (half an ulp of 1) x^2 is negligible beside
// 1 in the first range; beyond kXBig erfc(x) is below the smallest normal double; beyond
// kXHuge the correction 1/(2x^2) of the asymptotic form is below half an ulp; beyond kXMax
// the scaled function e^(x^2) erfc(x), about 1/(x sqrt(pi)), underflows.
constexpr double kThresh = 0.46875;
constexpr double kXSmall = 1.11e-16;
constexpr double kXBig = 26.543;
constexpr double kXHuge = 6.71e7;
constexpr double kXMax = 2.53e307;
constexpr double kXNeg = -26.628;

// e^(-y^2) without the rounding of y^2 magnifying into the result.
double exp_minus_square(double y) {
    const double s = std::trunc(y * 16.0) / 16.0;
    const double del = (y - s) * (y + s);
    return std::exp(-s * s) * std::exp(-del);
}

}  // namespace

double cody_erf(double x, int mode) {
    if (std::isnan(x)) return x;
    const double y = std::fabs(x);
    double result = 0.0;
    if (y <= kThresh) {
        const double ysq = y > kXSmall ? y * y : 0.0;
        double xnum = kA[4] * ysq, xden = ysq;
        for (int i = 0; i < 3; ++i) {
            xnum = (xnum + kA[i]) * ysq;
            xden = (xden + kB[i]) * ysq;
        }
        result = x * (xnum + kA[3]) / (xden + kB[3]);
        if (mode != 0) result = 1.0 - result;
        if (mode == 2) result *= std::exp(ysq);
        return result;
    }
    if (y <= 4.0) {
        double xnum = kC[8] * y, xden = y;
        for (int i = 0; i < 7; ++i) {
            xnum = (xnum + kC[i]) * y;
            xden = (xden + kD[i]) * y;
        }
        result = (xnum + kC[7]) / (xden + kD[7]);
        if (mode != 2) result *= exp_minus_square(y);
    } else {
        result = 0.0;
        if (y >= kXBig && (mode != 2 || y >= kXMax)) {
            // erf, erfc: erfc(y) underflows; erfcx beyond xmax is 0 as well.
        } else if (y >= kXBig && y >= kXHuge) {
            result = kInvSqrtPi / y;
        } else {
            const double z = 1.0 / (y * y);
            double xnum = kP[5] * z, xden = z;
            for (int i = 0; i < 4; ++i) {
                xnum = (xnum + kP[i]) * z;
                xden = (xden + kQ[i]) * z;
            }
            result = z * (xnum + kP[4]) / (xden + kQ[4]);
            result = (kInvSqrtPi - result) / y;
            if (mode != 2) result *= exp_minus_square(y);
        }
    }
    // Fix up for negative arguments, erf, etc.
    if (mode == 0) {
        result = (0.5 - result) + 0.5;
        return x < 0.0 ? -result : result;
    }
    if (mode == 1) return x < 0.0 ? 2.0 - result : result;
    if (x < 0.0) {
        if (x < kXNeg) return std::numeric_limits<double>::infinity();
        const double s = std::trunc(x * 16.0) / 16.0;
        const double del = (x - s) * (x + s);
        const double twice = std::exp(s * s) * std::exp(del);
        return (twice + twice) - result;
    }
    return result;
}

double s15abc(double x, NagError* fail) {
    fail->set(NE_NOERROR);
    return numeric::normal_lower(x);
}

double s15acc(double x, NagError* fail) {
    fail->set(NE_NOERROR);
    return numeric::normal_upper(x);
}

double s15adc(double x, NagError* fail) {
    fail->set(NE_NOERROR);
    return cody_erf(x, 1);
}

double s15aec(double x, NagError* fail) {
    fail->set(NE_NOERROR);
    return cody_erf(x, 0);
}

}  // namespace zemath::nag
