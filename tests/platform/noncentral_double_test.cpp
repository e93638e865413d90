// The non-central t, beta and F lower tails around the switch points of their double
// evaluations (|delta| and lambda near their limits, shapes near the double incomplete
// beta's limit, both signs of t and delta, both tails), against 50-digit mpmath series
// (reference/gen_noncentral_double.py): through the routines, whichever path answers, and
// the double kernels themselves on the rows inside their ranges, where they must answer (a
// decline would hand the case to the slower evaluations unnoticed).
#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <functional>

#include "platform/nag/g01.hpp"
#include "platform/numeric/double_double.hpp"
#include "platform/numeric/noncentral_beta.hpp"
#include "platform/numeric/noncentral_t.hpp"
#include "reference/noncentral_double_ref.inc"

namespace {

using zemath::nag::NagError;
using zemath::numeric::TwoPart;

constexpr double kRoutineBound = 5e-14;
constexpr double kKernelBound = 3e-14;

double relative_error(double got, double want) {
    return std::fabs(got - want) / want;
}

// The F law's x and 1 - x in two parts, as the routine forms them.
double ncf_kernel(const NoncentralDoubleRow& r) {
    using namespace zemath::numeric;
    const TwoPart product = two_product(r.p1, r.x);
    const TwoPart total = add(product, TwoPart{r.p2, 0.0});
    return noncentral_beta_lower_double(0.5 * r.p1, 0.5 * r.p2, r.p3, divide(product, total),
                                        divide(TwoPart{r.p2, 0.0}, total));
}

struct Law {
    const char* name;
    const NoncentralDoubleRow* rows;
    size_t count;
    std::function<double(const NoncentralDoubleRow&, NagError*)> routine;
    std::function<double(const NoncentralDoubleRow&)> kernel;
};

const Law kLaws[] = {
    {"t", kNoncentralTDouble, std::size(kNoncentralTDouble),
     [](const NoncentralDoubleRow& r, NagError* f) {
         return zemath::nag::g01gbc(r.x, r.p1, r.p2, 0.0, 100, f);
     },
     [](const NoncentralDoubleRow& r) {
         return zemath::numeric::noncentral_t_lower_double(r.x, r.p1, r.p2);
     }},
    {"beta", kNoncentralBetaDouble, std::size(kNoncentralBetaDouble),
     [](const NoncentralDoubleRow& r, NagError* f) {
         return zemath::nag::g01gec(r.x, r.p1, r.p2, r.p3, 0.0, 100, f);
     },
     [](const NoncentralDoubleRow& r) {
         return zemath::numeric::noncentral_beta_lower_double(r.p1, r.p2, r.p3, {r.x, 0.0},
                                                              zemath::numeric::two_sum(1.0, -r.x));
     }},
    {"F", kNoncentralFDouble, std::size(kNoncentralFDouble),
     [](const NoncentralDoubleRow& r, NagError* f) {
         return zemath::nag::g01gdc(r.x, r.p1, r.p2, r.p3, 0.0, 100, f);
     },
     ncf_kernel},
};

TEST(NoncentralDouble, RoutinesAgainstReference) {
    for (const Law& law : kLaws) {
        double worst = 0.0;
        for (size_t i = 0; i < law.count; ++i) {
            const NoncentralDoubleRow& r = law.rows[i];
            SCOPED_TRACE(testing::Message() << law.name << " (" << r.x << ", " << r.p1 << ", "
                                            << r.p2 << ", " << r.p3 << ")");
            NagError fail;
            const double p = law.routine(r, &fail);
            EXPECT_EQ(fail.code, 0);
            const double e = relative_error(p, r.p);
            EXPECT_LE(e, kRoutineBound);
            worst = std::fmax(worst, e);
        }
        std::printf("[accuracy] non-central %-5s %4zu rows, worst relative error %.2e\n", law.name,
                    law.count, worst);
    }
}

TEST(NoncentralDouble, KernelsAnswerInTheirRange) {
    for (const Law& law : kLaws) {
        int body = 0;
        for (size_t i = 0; i < law.count; ++i) {
            const NoncentralDoubleRow& r = law.rows[i];
            SCOPED_TRACE(testing::Message() << law.name << " (" << r.x << ", " << r.p1 << ", "
                                            << r.p2 << ", " << r.p3 << ")");
            const double p = law.kernel(r);
            if (r.body) {
                ++body;
                ASSERT_FALSE(std::isnan(p));
            }
            // Outside its range a kernel may decline, but an answer must be right.
            if (!std::isnan(p)) {
                EXPECT_LE(relative_error(p, r.p), kKernelBound);
            }
        }
        EXPECT_GT(body, 40) << law.name;
    }
}

TEST(NoncentralDouble, KernelsDeclineOutsideTheirRange) {
    using zemath::numeric::noncentral_beta_lower_double;
    using zemath::numeric::noncentral_t_lower_double;
    struct TCase {
        double t, df, delta;
    };
    // |delta| past 40, df past 2000, t^2 overflowing or below the normal range, a series
    // whose start passes the shape limit, a t < 0 < delta series that cancels.
    const TCase t_declined[] = {{1, 5, 40.5},     {1, 2001, 2},  {1e200, 5, 1},
                                {1e-200, 5, 1},   {50, 1, 39.9}, {-3, 10, 2.5},
                                {INFINITY, 5, 1}, {1, NAN, 1},   {1, 0.5, 1}};
    for (const TCase& c : t_declined) {
        EXPECT_TRUE(std::isnan(noncentral_t_lower_double(c.t, c.df, c.delta)))
            << c.t << ", " << c.df << ", " << c.delta;
    }
    struct BetaCase {
        double x, a, b, lambda;
    };
    const BetaCase beta_declined[] = {
        {0.5, 2, 3, 1601},     {0.5, 2, 1.5e9, 10}, {0.5, 1e9 - 5, 3, 30},
        {0.5, 2e5, 2e5, 1601}, {0.5, 2, 3, -1},     {1e-310, 2, 3, 10},
        {0.5, 0, 3, 1},        {0.5, 2, NAN, 1},    {1e-300, 50, 3, 10}};
    for (const BetaCase& c : beta_declined) {
        EXPECT_TRUE(std::isnan(noncentral_beta_lower_double(c.a, c.b, c.lambda, {c.x, 0.0},
                                                            zemath::numeric::two_sum(1.0, -c.x))))
            << c.x << ", " << c.a << ", " << c.b << ", " << c.lambda;
    }
}

}  // namespace

namespace {

// Where the t < 0 < delta series declines for its cancellation, the bound it hands back
// must lie above the true probability (the routine sends cases below its floor straight to
// the quadrature on the strength of it), and not be so loose that it never serves.
TEST(NoncentralDouble, CancelledSeriesBoundsTheTail) {
    int bounded = 0, tight = 0;
    for (const NoncentralDoubleRow& r : kNoncentralTDouble) {
        if (!(r.x < 0.0 && r.p2 > 0.0)) continue;
        double bound = -1.0;
        const double v = zemath::numeric::noncentral_t_lower_double(r.x, r.p1, r.p2, &bound);
        if (!std::isnan(v)) {
            EXPECT_EQ(bound, -1.0) << "left alone where the series answers, at " << r.x;
            continue;
        }
        if (bound == -1.0) continue;  // declined for another reason
        ++bounded;
        EXPECT_GE(bound, r.p) << r.x << ", " << r.p1 << ", " << r.p2;
        if (bound <= 2.0 * r.p + 1e-10) ++tight;
    }
    EXPECT_GT(bounded, 0);
    EXPECT_EQ(tight, bounded);
}

}  // namespace
