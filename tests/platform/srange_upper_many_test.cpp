// The studentized range's upper tail for many groups at few degrees of freedom, against the
// range-first mpmath integrals of reference/gen_srange_upper_many.py: there 1 - P is mostly the
// scale's own lower tail P(S < s), the range law's step lying far below q s, and the library
// takes that part in closed form below the step and integrates only above it.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "platform/nag/g01.hpp"
#include "reference/srange_upper_many_ref.inc"

namespace {

using zemath::nag::g01emc_upper;
using zemath::nag::g01fmc;
using zemath::nag::NagError;

// As for the other upper-tail references; a row whose two mpmath resolutions differ by more
// is held to that difference instead.
constexpr double kTolerance = 5e-13;

TEST(G01SrangeUpperMany, MatchTheReferenceIntegrals) {
    int checked = 0;
    for (const auto& row : ref_srange_upper_many::kRows) {
        NagError fail;
        const double upper = g01emc_upper(row.q, row.v, row.r, &fail);
        EXPECT_EQ(fail.code, 0);
        EXPECT_NEAR(upper / row.upper, 1.0, std::max(kTolerance, row.convergence))
            << "q = " << row.q << ", v = " << row.v << ", r = " << row.r << ": " << upper << " for "
            << row.upper;
        ++checked;
    }
    EXPECT_GE(checked, 4);
}

// The deviate of p = 1 - (the reference tail, rounded): its direct upper tail is 1 - p, and it
// lies on the side of the reference q that the rounding of the tail sends it to, within what
// the tail's slope allows: ln(1 - P) falls like -v ln q from the scale's lower tail (a little
// less where s is not yet small, more where the range adds to it), so by at least half that.
// The cheap first steps on 1 - P from P once took a bracket from P's rounding where P was
// 1.4e-12 off (v = 2, 20000 groups) and returned a q whose tail was 2e-9 off (1.2e-10 off at
// v = 1, 5000 groups: the tail 1.9e-6 off).
TEST(G01SrangeUpperMany, DeviatesOfTheReferenceTails) {
    for (const auto& row : ref_srange_upper_many::kRows) {
        const double p = 1.0 - row.upper;
        const double tail = 1.0 - p;  // exact
        NagError fail;
        const double q = g01fmc(p, row.v, row.r, &fail);
        ASSERT_EQ(fail.code, 0) << p << " " << row.v << " " << row.r;
        const double back = g01emc_upper(q, row.v, row.r, &fail);
        EXPECT_NEAR(back / tail, 1.0, 1e-12) << p << " " << row.v << " " << row.r;
        const double moved = std::log(q / row.q), rounded = std::log(tail / row.upper);
        const double slack = std::max(kTolerance, row.convergence) + 1e-13;
        EXPECT_LE(std::fabs(moved), (std::fabs(rounded) + slack) / (0.5 * row.v))
            << "q = " << q << " for " << row.q << " at v = " << row.v << ", r = " << row.r;
        if (std::fabs(rounded) > slack) {
            EXPECT_LT(moved * rounded, 0.0) << q << " " << row.q;
        }
    }
}

// Deviates near p = 1 at many groups along each way the iteration can take: the direct tail
// from the start (v up to 4), one cheap step first (the panels from the cut below the range
// law's step at v up to some 60, the checked rule above), a cheap residual within P's
// rounding (1 - p near 1e-14), direct steps within the memo's reach and beyond. Each row's q
// must hold its upper tail to 1e-12: the v = 86749, 912 groups row came back 2.4e-12 off
// (its last direct evaluation, on nodes anchored 0.05 widths away, differed from a fresh
// one by as much).
TEST(G01SrangeUpperMany, DeviatesNearOneHoldTheirTail) {
    struct Row {
        double tail, v;
        int r;
    };
    const Row rows[] = {
        {4.2521541843142928e-14, 86749.08479322873, 912},
        {2.2e-14, 24.0, 2938933},
        {6e-4, 53.0, 160000000},
        {1.29e-9, 1.174, 1337620706},
        {1.2e-12, 1.0, 5000},
        {2.66e-14, 4.198, 564270},
        {1.52e-14, 3.158, 79936162},
        {5.34e-13, 55.97, 251250592},
        {7.04e-8, 56.19, 12768002},
        {1e-10, 3.0, 100000},
        {1e-12, 1000.0, 10000000},
        {7.3e-5, 564880.0, 137358507},
        {2e-15, 10.0, 1000000},
        {3e-6, 2.5, 2147483647},
    };
    for (const Row& row : rows) {
        const double p = 1.0 - row.tail;
        const double tail = 1.0 - p;  // exact
        NagError fail;
        const double q = g01fmc(p, row.v, row.r, &fail);
        ASSERT_EQ(fail.code, 0) << row.tail << " " << row.v << " " << row.r;
        const double back = g01emc_upper(q, row.v, row.r, &fail);
        EXPECT_NEAR(back / tail, 1.0, 1e-12) << row.tail << " " << row.v << " " << row.r;
    }
}

}  // namespace
