// The double incomplete beta kernel on its large-shape paths, called directly: both sides and
// the front against the 60-digit mpmath values of tests/reference/gen_incomplete_beta_large.py
// (Temme's expansion, the fraction beside a smaller shape, the expansion beside a shape 1/2,
// the far tails decided by the bound, and the switch points between them), Student's
// P(|T| >= |t|) from t at large df, and the logarithmic form of the lower side far below the
// double range and at second shapes down to the smallest subnormal
// (tests/reference/gen_incomplete_beta_log.py). Both builds of the kernel (the fused
// multiply-add one the processor picks, and the one for any processor) on the classical paths
// of the beta and Student's t rows of the distribution tables.
#include <gtest/gtest.h>

#include <cfloat>
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <iterator>
#include <limits>
#include <optional>
#include <string_view>

#include "platform/numeric/incomplete_beta.hpp"

namespace {

using zemath::numeric::incomplete_beta_double;
using zemath::numeric::incomplete_beta_log_lower;
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

struct LogRow {
    double a, b, x, log_hi, log_lo;
};
const LogRow kLogRows[] = {
#include "reference/incomplete_beta_log_ref.inc"
};

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

// ln I_x(a, b) in two parts: an absolute error e there is a relative error e of I, so the
// kernel's relative bound holds as an absolute one on the logarithm, whatever its size (the
// rows reach ln I = -2e5) and for second shapes from 1e-15 down to the smallest subnormal
// (the small-shape limit below 1e-20). Where the side is within the normal range, its
// exponential agrees with incomplete_beta_double's lower side.
TEST(IncompleteBetaLog, LowerSideAgainstReference) {
    // The kernel's own bound (a few units of 1e-15 with a shape below 16), with a margin.
    constexpr double kLogTolerance = 1e-14;
    double worst = 0.0;
    for (const LogRow& r : kLogRows) {
        const TwoPart y = two_sum(1.0, -r.x);
        const auto log_lower = incomplete_beta_log_lower(r.a, r.b, TwoPart{r.x, 0.0}, y);
        if (!log_lower) {
            ADD_FAILURE() << "declined at " << r.a << " " << r.b << " " << r.x;
            continue;
        }
        const double error = std::fabs((log_lower->hi - r.log_hi) + (log_lower->lo - r.log_lo));
        worst = std::max(worst, error);
        EXPECT_LE(error, kLogTolerance)
            << r.a << " " << r.b << " " << r.x << ": " << log_lower->hi << " vs " << r.log_hi;
        const auto tails = incomplete_beta_double(r.a, r.b, TwoPart{r.x, 0.0}, y);
        if (tails && tails->lower >= DBL_MIN && tails->lower < 1.0) {
            const double lower = std::exp(log_lower->hi) * (1.0 + log_lower->lo);
            EXPECT_LE(relative_error(lower, tails->lower), kTolerance)
                << r.a << " " << r.b << " " << r.x;
        }
    }
    std::printf("[accuracy] ln I_x(a, b): %zu rows, worst absolute error %.3g\n",
                std::size(kLogRows), worst);
}

// Past the switch point (a + 1)/(a + b + 2) the lower side is not the fraction's: declined, as
// are shapes out of range.
TEST(IncompleteBetaLog, DeclinesPastTheSwitchPoint) {
    const auto at = [](double a, double b, double x) {
        return incomplete_beta_log_lower(a, b, TwoPart{x, 0.0}, two_sum(1.0, -x));
    };
    EXPECT_FALSE(at(2.0, 3.0, 0.5));  // switch point 3/7
    EXPECT_TRUE(at(2.0, 3.0, 0.42));
    EXPECT_FALSE(at(1e6, 1e-300, 1.0 - 1e-7));  // s y below 1: the other side's region
    EXPECT_FALSE(at(0.0, 3.0, 0.1));
    EXPECT_FALSE(at(2.0, 6e9, 1e-12));  // beyond the kernel's shapes
}

// The beta and Student's t rows of the distribution tables (mpmath), read through the kernel
// as the beta and t routines call it: the side a row asks for, where the kernel gives it, is
// within the tolerance in either build, and the two builds agree to the last bit (every
// product's rounding error is exact in both, and neither contracts a product and a sum).
struct DistributionRow {
    std::string_view fn;
    double a0, a1, a2;
    int tail;
    double expected;
};
#define REF(fn, a0, a1, a2, tail, expected) {#fn, a0, a1, a2, tail, expected},
const DistributionRow kDistributionRows[] = {
#include "reference/distributions_beta_sides_ref.inc"
#include "reference/distributions_tbeta_paths_ref.inc"
#include "reference/distributions_t_large_df_ref.inc"
};
#undef REF

using zemath::numeric::BetaTailsDouble;

// The side the row asks for from a kernel's tails (NaN where it does not give it): betacdf's
// tail 2 lower, 1 upper; tcdf's two-sided tails 3 (beyond |t|) and 4 (within).
double asked_side(const DistributionRow& r, const BetaTailsDouble& tails) {
    if (r.fn == "betacdf") return r.tail == 2 ? tails.lower : tails.upper;
    return r.tail == 3 ? tails.upper : tails.lower;
}

TEST(IncompleteBetaBuilds, BothBuildsAgreeAndMatchReference) {
    using Tails = std::optional<BetaTailsDouble>;
    constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
    constexpr BetaTailsDouble kNone{kNaN, kNaN, kNaN};
    struct Build {
        const char* name;
        Tails (*beta)(double, double, TwoPart, TwoPart, bool);
        BetaTailsDouble (*t)(double, double);
    };
    const Build builds[] = {{"dispatched", zemath::numeric::incomplete_beta_double,
                             zemath::numeric::student_t_two_sided_double},
                            {"portable", zemath::numeric::incomplete_beta_double_portable,
                             zemath::numeric::student_t_two_sided_double_portable}};
    double worst = 0.0;
    int checked = 0;
    for (const DistributionRow& r : kDistributionRows) {
        const bool beta = r.fn == "betacdf", t = r.fn == "tcdf" && (r.tail == 3 || r.tail == 4);
        if (!(beta && r.a0 > 0.0 && r.a0 < 1.0) && !t) continue;
        double side[2] = {kNaN, kNaN};
        for (int k = 0; k < 2; ++k) {
            BetaTailsDouble tails = kNone;
            if (beta) {
                const Tails got =
                    builds[k].beta(r.a1, r.a2, TwoPart{r.a0, 0.0}, two_sum(1.0, -r.a0), true);
                if (got) tails = *got;
            } else {
                tails = builds[k].t(r.a0, r.a1);
            }
            side[k] = asked_side(r, tails);
            if (std::isnan(side[k]) || !(r.expected >= DBL_MIN)) continue;
            const double e = relative_error(side[k], r.expected);
            worst = std::max(worst, e);
            ++checked;
            EXPECT_LE(e, kTolerance) << builds[k].name << " " << r.fn << "(" << r.a0 << ", " << r.a1
                                     << ", " << r.a2 << ") tail " << r.tail;
        }
        // Bitwise agreement (NaN in both where the path declines).
        EXPECT_TRUE(side[0] == side[1] || (std::isnan(side[0]) && std::isnan(side[1])))
            << r.fn << "(" << r.a0 << ", " << r.a1 << ", " << r.a2 << ") tail " << r.tail << ": "
            << side[0] << " vs " << side[1];
    }
    EXPECT_GT(checked, 3000);  // both builds over most rows: the paths answer there
    std::printf(
        "[accuracy] incomplete beta, both builds on the beta and t rows: %d sides, "
        "worst %.3g\n",
        checked, worst);
}

}  // namespace
