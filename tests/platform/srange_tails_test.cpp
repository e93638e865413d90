// The studentized range in both far tails, against the mpmath integrals of
// reference/gen_srange_tails.py (the range's law integrated first, the scale's incomplete gamma
// function outside, so that 1 - P is an integral of its own): 1 - P from 1e-3 down to 1e-27
// for 2 to 2^31 - 1 groups and v from 3 to 1e15 and infinity, where 1 - P taken from P kept
// only an absolute DBL_EPSILON (srangeinv(1 - 6.7e-16, 1.08e15, 4) gave 11.82 for 11.727);
// the lower tail for many groups at few degrees of freedom, where the range law's step lies in
// the scale's tail; and deviates whose upper tail is 1 - p exactly.
#include <gtest/gtest.h>

#include <cfloat>
#include <cmath>
#include <initializer_list>
#include <limits>

#include "platform/nag/g01.hpp"
#include "reference/srange_tails_ref.inc"

namespace {

using zemath::nag::g01emc;
using zemath::nag::g01emc_upper;
using zemath::nag::g01fmc;
using zemath::nag::NagError;

// Worst seen 4.2e-14 (1 - P = 0.034 at 2^31 - 1 groups, v = 1e6; 2.8e-14 at 1 - P = 8e-11,
// 1000 groups); the references agree with themselves at two resolutions
// to 5e-13 at worst (1e-13 at 2^31 - 1 groups, the lower-tail rows of few degrees of freedom
// to 2e-17).
constexpr double kTolerance = 5e-13;

TEST(G01SrangeTails, MatchTheReferenceIntegrals) {
    int upper = 0, lower = 0;
    for (const auto& row : ref_srange_tails::kRows) {
        NagError fail;
        const double value = row.upper ? g01emc_upper(row.q, row.v, row.r, &fail)
                                       : g01emc(row.q, row.v, row.r, &fail);
        EXPECT_EQ(fail.code, 0);
        EXPECT_NEAR(value / row.value, 1.0, kTolerance)
            << (row.upper ? "1 - P" : "P") << " at q = " << row.q << ", v = " << row.v
            << ", r = " << row.r << ": " << value << " for " << row.value;
        ++(row.upper ? upper : lower);
    }
    EXPECT_GT(upper, 12);
    EXPECT_GT(lower, 0);
}

// The deviate near p = 1 is the q of the upper tail 1 - p, not only one whose P rounds to p.
TEST(G01SrangeTails, DeviateNearOneIsTheUpperTailsQ) {
    int checked = 0;
    for (const auto& row : ref_srange_tails::kDeviates) {
        NagError fail;
        const double q = g01fmc(row.p, row.v, row.r, &fail);
        EXPECT_EQ(fail.code, 0);
        EXPECT_NEAR(q / row.q, 1.0, 1e-13) << row.p << " " << row.v << " " << row.r;
        ++checked;
    }
    EXPECT_GT(checked, 0);
}

// Over the grid, p from 1 - 1e-3 to 1 - 2^-52: the deviate's upper tail is 1 - p to 1e-12
// relative, and the deviate rises with p (it came back 11.82 at every v above 1e10 for four
// groups and 1 - p = 6.7e-16, up to 4e-308 at v = 1, r = 2 for a subnormal p).
TEST(G01SrangeTails, UpperTailRoundTrip) {
    for (int r : {2, 4, 100, 10000, 2147483647}) {
        for (double v : {1.0, 5.0, 1e3, 1e10, std::numeric_limits<double>::infinity()}) {
            double previous = 0.0;
            for (double tail : {1e-4, 1e-9, 1e-13, 0x1p-52}) {
                const double p = 1.0 - tail;
                NagError fail;
                const double q = g01fmc(p, v, r, &fail);
                ASSERT_EQ(fail.code, 0) << p << " " << v << " " << r;
                const double back = g01emc_upper(q, v, r, &fail);
                EXPECT_NEAR(back / (1.0 - p), 1.0, 1e-12) << p << " " << v << " " << r;
                EXPECT_GT(q, previous) << p << " " << v << " " << r;
                previous = q;
            }
        }
    }
}

// The upper tail and the lower one add up to 1 where both are far from 0, and 1 - P falls
// with q to below the smallest P - 1 a double holds.
TEST(G01SrangeTails, UpperTailComplementsTheLowerOne) {
    for (int r : {3, 50, 5000, 2147483647}) {
        for (double v : {2.0, 30.0, 1e6}) {
            double previous = 1.0;
            for (double q = 1.0; q <= 40.0; q *= 1.25) {
                NagError fail;
                const double upper = g01emc_upper(q, v, r, &fail);
                const double lower = g01emc(q, v, r, &fail);
                ASSERT_EQ(fail.code, 0);
                EXPECT_LE(upper, previous * (1.0 + 1e-13)) << q << " " << v << " " << r;
                if (upper > 1e-3 && lower > 1e-3) {
                    EXPECT_NEAR(upper + lower, 1.0, 1e-14) << q << " " << v << " " << r;
                }
                previous = upper;
            }
        }
    }
}

// A subnormal p: the deviate's probability is p within the subnormal spacing (4e-308 came
// back at v = 1, two groups, for 5e-324, and 1.2e-161 for three groups at v = 147.5).
TEST(G01SrangeTails, SubnormalProbabilities) {
    constexpr double kSpacing = std::numeric_limits<double>::denorm_min();
    for (double p : {kSpacing, 3 * kSpacing, 1e-320, 1e-310, 2e-308}) {
        for (auto [v, r] : {std::pair{147.5, 3}, std::pair{1.0, 2}, std::pair{3.67, 19},
                            std::pair{5.0, 10}, std::pair{1e30, 4}}) {
            NagError fail;
            const double q = g01fmc(p, v, r, &fail);
            ASSERT_EQ(fail.code, 0) << p << " " << v << " " << r;
            const double back = g01emc(q, v, r, &fail);
            EXPECT_NEAR(back, p, std::max(2.0 * kSpacing, 1e-14 * p)) << p << " " << v << " " << r;
        }
    }
}

// Huge q: 1 - P <= P(S < 40/q) + P(range of r normals > 40), the first at most
// (40/q)^v v^(v/2) / (2^(v/2 - 1) Gamma(v/2) v) (the scale's density is below its power law
// at 0), the second below r e^-400: both far below DBL_EPSILON from q = 1e20 for v >= 1 and
// r < 2^31, so P is 1 to rounding and the upper tail to a tiny non-negative number. Where q s
// overflowed the mode search took the flat range law for the steepest one:
// srangecdf(1e308, 1.39, 1474) came out infinite and srangecdf(6.6e306, 2.1e5, 376929128) 0.
TEST(G01SrangeTails, HugeRangesAreCertain) {
    for (double q : {1e20, 1e100, 6.610457524093015e306, 1e308, DBL_MAX}) {
        for (auto [v, r] : {std::pair{1.390625, 1474}, std::pair{214879.9232722612, 376929128},
                            std::pair{1.0, 2}, std::pair{1.0, 2147483647}, std::pair{1e6, 3}}) {
            NagError fail;
            const double lower = g01emc(q, v, r, &fail);  // 1 within the documented accuracy
            EXPECT_TRUE(lower <= 1.0 && lower >= 1.0 - 4 * DBL_EPSILON)
                << q << " " << v << " " << r;
            EXPECT_EQ(fail.code, 0);
            const double upper = g01emc_upper(q, v, r, &fail);
            EXPECT_TRUE(upper >= 0.0 && upper < 1e-15) << q << " " << v << " " << r << " " << upper;
        }
    }
}

}  // namespace
