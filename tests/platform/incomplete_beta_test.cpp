// The double incomplete beta kernel on its large-shape paths, called directly: both sides and
// the front against the 60-digit mpmath values of tests/reference/gen_incomplete_beta_large.py
// (Temme's expansion, the fraction beside a smaller shape, the expansion beside a shape 1/2,
// the far tails decided by the bound, and the switch points between them), and Student's
// P(|T| >= |t|) from t at large df.
#include <gtest/gtest.h>

#include <cfloat>
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <iterator>
#include <optional>

#include "platform/numeric/incomplete_beta.hpp"

namespace {

using zemath::numeric::incomplete_beta_double;
using zemath::numeric::student_t_beyond;
using zemath::numeric::two_sum;
using zemath::numeric::TwoPart;

struct BetaRow {
    double a, b, x, lower, upper, front;
};
struct StudentRow {
    double t, df, beyond;
};

#define BETA_LARGE(a, b, x, lower, upper, front) {a, b, x, lower, upper, front},
#define STUDENT_BEYOND(t, df, beyond)
const BetaRow kBetaRows[] = {
#include "reference/incomplete_beta_large_ref.inc"
};
#undef BETA_LARGE
#undef STUDENT_BEYOND
#define BETA_LARGE(a, b, x, lower, upper, front)
#define STUDENT_BEYOND(t, df, beyond) {t, df, beyond},
const StudentRow kStudentRows[] = {
#include "reference/incomplete_beta_large_ref.inc"
};
#undef BETA_LARGE
#undef STUDENT_BEYOND

struct SwitchRow {
    double a, b, x, lower, upper;
};
#define BETA_SWITCH(a, b, x, lower, upper) {a, b, x, lower, upper},
const SwitchRow kSwitchRows[] = {
#include "reference/incomplete_beta_temme_switch_ref.inc"
};
#undef BETA_SWITCH

constexpr double kTolerance = 1e-13;

double relative_error(double got, double expected) {
    return std::fabs(got - expected) / std::fabs(expected);
}

std::optional<zemath::numeric::BetaTailsDouble> tails_at(const BetaRow& r) {
    return incomplete_beta_double(r.a, r.b, TwoPart{r.x, 0.0}, two_sum(1.0, -r.x), true);
}

// A side the kernel gives (not NaN; it may decline, leaving the row to the extended
// evaluation) is within kTolerance where the reference is a normal double, and exactly 0
// where the reference rounds to 0; the front, where both are normal, likewise.
TEST(IncompleteBetaLarge, SidesAndFrontAgainstReference) {
    double worst = 0.0;
    int checked = 0, declined = 0;
    for (const BetaRow& r : kBetaRows) {
        const auto tails = tails_at(r);
        if (!tails) {
            ++declined;
            continue;
        }
        const double got[2] = {tails->lower, tails->upper}, want[2] = {r.lower, r.upper};
        for (int side = 0; side < 2; ++side) {
            if (std::isnan(got[side])) continue;
            if (want[side] == 0.0) {
                EXPECT_EQ(got[side], 0.0) << r.a << " " << r.b << " " << r.x;
                continue;
            }
            if (want[side] < DBL_MIN) continue;
            const double e = relative_error(got[side], want[side]);
            worst = std::max(worst, e);
            ++checked;
            EXPECT_LE(e, kTolerance) << r.a << " " << r.b << " " << r.x << " side " << side << ": "
                                     << got[side] << " vs " << want[side];
        }
        if (tails->front >= DBL_MIN && r.front >= DBL_MIN) {
            EXPECT_LE(relative_error(tails->front, r.front), kTolerance)
                << "front at " << r.a << " " << r.b << " " << r.x;
        }
    }
    EXPECT_GT(checked, 400);
    EXPECT_LT(declined, 10);  // only rows whose far side lies between 0 and e^-700
    std::printf("[accuracy] incomplete beta, large shapes: %d sides, worst %.3g, %d declined\n",
                checked, worst, declined);
}

// Where the far side is below the double range, the near one is exactly 1.
TEST(IncompleteBetaLarge, FarTailsAreExactZeroAndOne) {
    int far = 0;
    for (const BetaRow& r : kBetaRows) {
        if (r.lower != 0.0 && r.upper != 0.0) continue;
        const auto tails = tails_at(r);
        ASSERT_TRUE(tails) << r.a << " " << r.b << " " << r.x;
        const double near = r.lower == 0.0 ? tails->upper : tails->lower;
        EXPECT_EQ(near, 1.0) << r.a << " " << r.b << " " << r.x;
        ++far;
    }
    EXPECT_GT(far, 10);
}

// On both sides of where Temme's expansion takes over from the fraction (the summed deviances
// f against the bound on f w0^2, the smaller shape against 250), below and above the mean: every
// row answered, both sides within 5e-15 (the two paths' bounds), the far side exactly 0 where it
// lies below the double range.
TEST(IncompleteBetaLarge, BothSidesOfTheExpansionSwitch) {
    double worst = 0.0;
    for (const SwitchRow& r : kSwitchRows) {
        const auto tails =
            incomplete_beta_double(r.a, r.b, TwoPart{r.x, 0.0}, two_sum(1.0, -r.x), true);
        ASSERT_TRUE(tails) << r.a << " " << r.b << " " << r.x;
        const double got[2] = {tails->lower, tails->upper}, want[2] = {r.lower, r.upper};
        for (int side = 0; side < 2; ++side) {
            if (want[side] < DBL_MIN) {
                if (want[side] == 0.0) {
                    EXPECT_EQ(got[side], 0.0) << r.a << " " << r.b << " " << r.x;
                }
                continue;
            }
            const double e = relative_error(got[side], want[side]);
            worst = std::max(worst, e);
            EXPECT_LE(e, 5e-15) << r.a << " " << r.b << " " << r.x << " side " << side << ": "
                                << got[side] << " vs " << want[side];
        }
    }
    std::printf("[accuracy] incomplete beta, expansion switch: %zu rows, worst %.3g\n",
                std::size(kSwitchRows), worst);
}

TEST(IncompleteBetaLarge, StudentBeyondFromT) {
    double worst = 0.0;
    int checked = 0;
    for (const StudentRow& r : kStudentRows) {
        const auto beyond = student_t_beyond(r.t, r.df);
        if (r.df < 1000.0 || r.df > 2e6) {
            EXPECT_FALSE(beyond) << r.t << " " << r.df;  // outside its range: declined
            continue;
        }
        if (!beyond) {
            ADD_FAILURE() << "declined at " << r.t << " " << r.df;
            continue;
        }
        const double e = relative_error(*beyond, r.beyond);
        worst = std::max(worst, e);
        ++checked;
        EXPECT_LE(e, kTolerance) << r.t << " " << r.df << ": " << *beyond << " vs " << r.beyond;
    }
    EXPECT_GT(checked, 200);
    std::printf("[accuracy] P(|T| >= |t|), df 1e3 .. 2e6: %d cases, worst %.3g\n", checked, worst);
}

}  // namespace
