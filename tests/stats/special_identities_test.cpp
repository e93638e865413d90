// Identities of the table's special functions on dense sweeps, between the reference
// points of special_accuracy_test: every piece of the piecewise evaluations (the Airy
// functions' unit intervals and their modulus-phase form, ln Gamma's intervals and its
// Stirling range, the auxiliary functions of Si and Ci) is visited many times, so a piece
// read from the wrong table or a wrong quadrant of a reduced phase shows up even where no
// mpmath value was taken.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numbers>

#include "zemath/special.h"

namespace {

struct Sweep {
    double lo, hi;
    int points;
    bool geometric;  // magnitudes spread over decades: a geometric grid
};

template <class F>
void for_each_point(const Sweep& s, F f) {
    for (int i = 0; i < s.points; ++i) {
        const double r = (i + 0.318) / s.points;
        f(s.geometric ? s.lo * std::pow(s.hi / s.lo, r) : s.lo + (s.hi - s.lo) * r);
    }
}

// The Wronskian Ai Bi' - Ai' Bi = 1/pi holds exactly; with Ai, Bi of size |x|^(-1/4) and
// the derivatives of size |x|^(1/4), each product carries errors of the order of the
// envelopes' product, 1/pi, times the functions' relative-to-envelope errors.
TEST(SpecialIdentities, AiryWronskianEverywhere) {
    const Sweep sweeps[] = {
        {-8.0, 2.0, 20001, false},     // the unit intervals, each visited 2000 times
        {2.0, 100.0, 20001, false},    // x >= 2: e^-zeta and e^zeta scaled series
        {-1e4, -8.0, 20001, false},    // modulus and phase, v = (8/|x|)^3 over (0, 1]
        {-4.9e10, -1e4, 20001, true},  // the phase reduced modulo pi/2 up to zeta = 7e15
    };
    for (const Sweep& s : sweeps) {
        double worst = 0.0, at = 0.0;
        for_each_point(s, [&](double x) {
            const double w = airy_ai(x) * airy_bi_deriv(x) - airy_ai_deriv(x) * airy_bi(x);
            const double e = std::fabs(w * std::numbers::pi - 1.0);
            if (!(e <= worst)) worst = e, at = x;
        });
        EXPECT_LE(worst, 1e-14) << "sweep [" << s.lo << ", " << s.hi << "] worst at " << at;
    }
}

// Far out on the negative axis Ai^2 + Bi^2 = M^2 and the phase of Ai + i Bi advances as
// zeta: the envelope-relative check that each of Ai and Bi follows its own quadrant.
TEST(SpecialIdentities, AiryModulusFollowsItsAsymptoticForm) {
    const Sweep s{-4.9e10, -1e3, 20001, true};
    double worst = 0.0, at = 0.0;
    for_each_point(s, [&](double x) {
        const double y = -x;
        const double ai = airy_ai(x), bi = airy_bi(x);
        // M^2 = (1 - 5/(32 y^3) + O(y^-6)) / (pi sqrt y), the modulus' asymptotic series
        const double m2 = (1.0 - 5.0 / (32.0 * y * y * y)) / (std::numbers::pi * std::sqrt(y));
        const double e = std::fabs((ai * ai + bi * bi) / m2 - 1.0);
        if (!(e <= worst)) worst = e, at = x;
    });
    EXPECT_LE(worst, 1e-14) << "worst at " << at;
}

// ln Gamma(x + 1) - ln Gamma(x) = ln x across every switch point (3/4, 3/2, 5/2, the unit
// intervals to 15.5, Stirling beyond), relative to the size of the terms (so relative
// near the zeros at 1 and 2). In the middle sweep x is a multiple of 2^-30, so x + 1 is
// exact; elsewhere the rounding of x + 1 moves the recurrence by psi(x + 1) times it, far
// below the size of the terms there.
TEST(SpecialIdentities, LogGammaRecurrence) {
    const Sweep sweeps[] = {
        {1e-6, 0.75, 4001, true},
        {0.75, 20.0, 40001, false},
        {20.0, 1e300, 4001, true},
    };
    for (const Sweep& s : sweeps) {
        double worst = 0.0, at = 0.0;
        for_each_point(s, [&](double x) {
            if (s.hi <= 20.0 && s.lo >= 0.75) x = std::ldexp(std::round(std::ldexp(x, 30)), -30);
            const double y = x + 1.0;
            const double up = log_gamma(y), here = log_gamma(x);
            // Beyond 2^53, y - x is 0 or 2: the recurrence moves by (y - x - 1) ln y.
            const double expected = std::log(x) + (y - x - 1.0) * std::log(y);
            const double size = std::fabs(up) + std::fabs(here) + std::fabs(std::log(x));
            const double e = std::fabs((up - here) - expected) / size;
            if (!(e <= worst)) worst = e, at = x;
        });
        EXPECT_LE(worst, 1e-15) << "sweep [" << s.lo << ", " << s.hi << "] worst at " << at;
    }
}

// d/dx Si = sin x / x and d/dx Ci = cos x / x: a sixth-order central difference at step
// h = 1/64 (exact in binary) against the derivative, over the series range, the switch at 4,
// both auxiliary-function pieces and the switch between them at 8. The difference's own
// truncation (h^6 f^(7) / 140: below 1e-13 from 0.5 for Si, from 3.5 for Ci, whose
// logarithm makes f^(7) grow as 720 / x^7) and rounding (about 2e-16 / h) stay well below
// what a jump of 1e-14 at a switch gives, 1e-12.
TEST(SpecialIdentities, SineAndCosineIntegralsDifferentiate) {
    constexpr double h = 1.0 / 64.0;
    struct Case {
        const char* name;
        double (*f)(double);
        double (*derivative_times_x)(double);
        Sweep sweep;
    };
    const Case cases[] = {
        {"Si", sin_integral, [](double x) { return std::sin(x); }, {0.5, 60.0, 20001, false}},
        {"Ci", cos_integral, [](double x) { return std::cos(x); }, {3.5, 60.0, 20001, false}},
    };
    for (const Case& c : cases) {
        double worst = 0.0, at = 0.0;
        for_each_point(c.sweep, [&](double x) {
            const auto f = c.f;
            const double diff =
                (45.0 * (f(x + h) - f(x - h)) - 9.0 * (f(x + 2 * h) - f(x - 2 * h)) +
                 (f(x + 3 * h) - f(x - 3 * h))) /
                (60.0 * h);
            const double e = std::fabs(diff - c.derivative_times_x(x) / x);
            if (!(e <= worst)) worst = e, at = x;
        });
        EXPECT_LE(worst, 2e-13) << c.name << " worst at " << at;
    }
}

// The doubles next to each switch point, on both sides, give values within rounding of
// the value at the point, absolute for values below 1 (the slopes, at most about 3 at these
// points, move them by under 1e-14 over an ulp of the point): a
// switch whose piece index is formed from a rounded sum (x + 8 is 10 for the double just
// below 2) must still pick a piece that covers x.
TEST(SpecialIdentities, ContinuousAcrossEverySwitchPoint) {
    struct Case {
        const char* name;
        double (*f)(double);
        double point;
    };
    const Case cases[] = {
        {"Ai", airy_ai, -8.0},       {"Ai", airy_ai, -1.0},        {"Ai", airy_ai, 1.0},
        {"Ai", airy_ai, 2.0},        {"Ai'", airy_ai_deriv, 2.0},  {"Bi", airy_bi, 2.0},
        {"Bi'", airy_bi_deriv, 2.0}, {"Bi'", airy_bi_deriv, -8.0}, {"lnG", log_gamma, 0.75},
        {"lnG", log_gamma, 1.5},     {"lnG", log_gamma, 2.5},      {"lnG", log_gamma, 9.5},
        {"lnG", log_gamma, 15.5},    {"Si", sin_integral, 4.0},    {"Si", sin_integral, 8.0},
        {"Ci", cos_integral, 16.0},  {"Ci", cos_integral, 4.0},
    };
    constexpr double kInf = std::numeric_limits<double>::infinity();
    for (const Case& c : cases) {
        const double at = c.f(c.point);
        for (double x : {std::nextafter(c.point, -kInf), std::nextafter(c.point, kInf)})
            EXPECT_NEAR(c.f(x), at, 1e-14 * std::fmax(std::fabs(at), 1.0)) << c.name << " at " << x;
    }
}

}  // namespace
