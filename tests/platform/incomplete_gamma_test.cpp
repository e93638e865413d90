// The incomplete gamma pair against mpmath (tests/reference/gen_incomplete_gamma.py): the
// double kernel wherever it answers, and the back-end routine s14bac (kernel or extended
// fallback) on every row, both tails; the logarithmic form of the lower tail far below the
// double range (gen_incomplete_gamma_log.py).
#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>

#include "platform/nag/s.hpp"
#include "platform/numeric/incomplete_gamma.hpp"
#include "zemath/special.h"

namespace {

struct IgCase {
    double a, x, p, q, x_density;
};

constexpr IgCase kCases[] = {
#define IG(a, x, p, q, xf) {a, x, p, q, xf},
#include "reference/incomplete_gamma_ref.inc"
#include "reference/incomplete_gamma_fraction_ref.inc"
#include "reference/incomplete_gamma_large_shape_ref.inc"
#undef IG
};

double relative_error(double got, double expected) {
    return std::fabs(got - expected) / std::fabs(expected);
}

struct Worst {
    double error = 0.0;
    const IgCase* at = nullptr;
    void add(double e, const IgCase& c) {
        if (!(e <= error)) {
            error = e;
            at = &c;
        }
    }
    void print(const char* what) const {
        if (at != nullptr)
            std::printf("%-24s worst %.3e at a = %.17g, x = %.17g\n", what, error, at->a, at->x);
    }
};

// Kernel: both tails within 2e-14 (a few ulps in the bulk; the largest errors are the
// Taylor form's Q near x = 1.5 and the far upper tail at a = 1000, 1.1e-14).
TEST(IncompleteGammaDouble, BothTailsAgainstMpmath) {
    Worst lower, upper, density;
    int answered = 0;
    for (const IgCase& c : kCases) {
        const auto tails = zemath::numeric::incomplete_gamma_double(c.a, c.x, 0.0);
        if (!tails) continue;
        ++answered;
        const double ep = relative_error(tails->lower, c.p);
        const double eq = relative_error(tails->upper, c.q);
        lower.add(ep, c);
        upper.add(eq, c);
        EXPECT_LE(ep, 2e-14) << "P(" << c.a << ", " << c.x << ")";
        EXPECT_LE(eq, 2e-14) << "Q(" << c.a << ", " << c.x << ")";
        // x times the density: the Halley steps of the gamma deviates take it as the slope.
        if (c.x_density != 0.0) {
            const double ed = relative_error(tails->x_density, c.x_density);
            density.add(ed, c);
            EXPECT_LE(ed, 2e-14) << "x f(x) at a = " << c.a << ", x = " << c.x;
        }
    }
    lower.print("kernel P");
    upper.print("kernel Q");
    density.print("kernel x f(x)");
    // Every shape up to 1000 with both tails in the normal range is taken, except the far
    // tails the prefactor declines: most rows.
    EXPECT_GT(answered, static_cast<int>(std::size(kCases)) * 3 / 4);
}

// The routine: every row, both tails, within 1e-13, status 0; the table's function (the
// lower tail) likewise.
TEST(IncompleteGammaRoutine, EveryRowWithinBound) {
    Worst lower, upper, table;
    for (const IgCase& c : kCases) {
        zemath::nag::NagError fail;
        double p = -1.0, q = -1.0;
        zemath::nag::s14bac(c.a, c.x, 0.0, &p, &q, &fail);
        EXPECT_EQ(fail.code, zemath::nag::NE_NOERROR) << c.a << " " << c.x;
        const double ep = relative_error(p, c.p), eq = relative_error(q, c.q);
        lower.add(ep, c);
        upper.add(eq, c);
        EXPECT_LE(ep, 1e-13) << "P(" << c.a << ", " << c.x << ")";
        EXPECT_LE(eq, 1e-13) << "Q(" << c.a << ", " << c.x << ")";
        const double et = relative_error(incomplete_gamma(c.a, c.x), c.p);
        table.add(et, c);
        EXPECT_LE(et, 1e-13) << "incomplete_gamma(" << c.a << ", " << c.x << ")";
    }
    lower.print("s14bac P");
    upper.print("s14bac Q");
    table.print("incomplete_gamma");
}

}  // namespace

namespace {

// Small shapes past the Taylor form: the backward fraction answers at every x of a dense
// sweep up to where the upper tail leaves the normal range (a declined depth would send the
// call to the extended evaluation), Q falls as x grows, and P + Q = 1 to rounding.
TEST(IncompleteGammaDouble, SmallShapeFractionAnswersEverywhere) {
    const double shapes[] = {1e-12, 1e-5, 0.03, 0.25, 0.5, 0.8, 0.99, 0.9999999};
    for (const double a : shapes) {
        double previous = 1.0;
        int declined = 0;
        for (double x = 1.5000000000000002; x < 600.0; x *= 1.0003) {
            const auto tails = zemath::numeric::incomplete_gamma_double(a, x, 0.0);
            if (!tails) {
                ++declined;
                continue;
            }
            EXPECT_LE(tails->upper, previous) << "a = " << a << ", x = " << x;
            EXPECT_NEAR(tails->lower + tails->upper, 1.0, 4e-16) << "a = " << a << ", x = " << x;
            previous = tails->upper;
        }
        EXPECT_EQ(declined, 0) << "a = " << a;
    }
}

}  // namespace

namespace {

struct LogCase {
    double a, x, log_hi, log_lo;
};
constexpr LogCase kLogCases[] = {
#include "reference/incomplete_gamma_log_ref.inc"
};

// ln P(a, x) in two parts: an absolute error e there is a relative error e of P, so the
// kernel's relative bound holds on the logarithm at any size (plus the deviance's 1e-18 of
// itself, 2.6e-12 at ln P = -2.6e6), through the series' prefactors and Temme's expansion on
// both sides of z = 26; where P is a normal double, its exponential agrees with the kernel.
TEST(IncompleteGammaLog, LowerTailAgainstMpmath) {
    double worst = 0.0;
    for (const LogCase& c : kLogCases) {
        const auto log_lower = zemath::numeric::incomplete_gamma_log_lower(c.a, c.x);
        if (!log_lower) {
            ADD_FAILURE() << "declined at a = " << c.a << ", x = " << c.x;
            continue;
        }
        const double error = std::fabs((log_lower->hi - c.log_hi) + (log_lower->lo - c.log_lo));
        worst = std::fmax(worst, error);
        EXPECT_LE(error, 1e-14 + 2e-18 * std::fabs(c.log_hi))
            << "a = " << c.a << ", x = " << c.x << ": " << log_lower->hi << " vs " << c.log_hi;
        const auto tails = zemath::numeric::incomplete_gamma_double(c.a, c.x, 0.0);
        if (tails && tails->lower >= 0x1p-1022) {
            const double lower = std::exp(log_lower->hi) * (1.0 + log_lower->lo);
            EXPECT_LE(relative_error(lower, tails->lower), 1e-14)
                << "a = " << c.a << ", x = " << c.x;
        }
    }
    std::printf("[accuracy] ln P(a, x): %zu rows, worst absolute error %.3g\n",
                std::size(kLogCases), worst);
    // Only the lower tail below the mean, shapes from 1: declined elsewhere.
    EXPECT_FALSE(zemath::numeric::incomplete_gamma_log_lower(10.0, 10.0));
    EXPECT_FALSE(zemath::numeric::incomplete_gamma_log_lower(0.5, 0.1));
    EXPECT_FALSE(zemath::numeric::incomplete_gamma_log_lower(1e6, 1e5));  // outside |eta| <= 1/2
}

}  // namespace
