// Back-end summary routines: g01aac's own moment definitions on the routine's published
// example, g01alc's hinges, g01ddc on either sort order, g07cac's two tests and interval.
#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "platform/nag/g01_summary.hpp"
#include "platform/nag/g07.hpp"

namespace {

using namespace zemath::nag;

TEST(G01aac, PublishedExampleAndItsOwnDivisor) {
    const std::vector<double> x = {193, 216, 112, 161, 92,  140, 38,  33, 279, 249, 473, 339,
                                   60,  130, 20,  50,  257, 284, 447, 52, 67,  61,  150, 2200};
    int nvalid = 0;
    double mean, sd, skew, kurt, lo, hi, wsum;
    NagError fail;
    g01aac(24, x.data(), nullptr, &nvalid, &mean, &sd, &skew, &kurt, &lo, &hi, &wsum, &fail);
    ASSERT_EQ(fail.code, 0);
    EXPECT_EQ(nvalid, 24);
    EXPECT_NEAR(mean, 254.29166666667, 1e-10);
    EXPECT_NEAR(sd, 433.53175292832, 1e-9);
    EXPECT_NEAR(skew, 3.8950865899, 1e-9);  // divisor n - 1, not the adjusted formula
    EXPECT_NEAR(kurt, 14.665280815, 1e-8);
    EXPECT_EQ(lo, 20.0);
    EXPECT_EQ(hi, 2200.0);
    EXPECT_EQ(wsum, 24.0);
    // Zero weights drop points from min and max; a negative weight fails.
    const double w[] = {0, 1, 1, 1};
    const double y[] = {-100, 1, 2, 3};
    g01aac(4, y, w, &nvalid, &mean, &sd, &skew, &kurt, &lo, &hi, &wsum, &fail);
    EXPECT_EQ(nvalid, 3);
    EXPECT_EQ(lo, 1.0);
    EXPECT_EQ(mean, 2.0);
    const double negative[] = {1, -1, 1, 1};
    g01aac(4, y, negative, &nvalid, &mean, &sd, &skew, &kurt, &lo, &hi, &wsum, &fail);
    EXPECT_EQ(fail.code, NE_REAL_ARG_LT);
    g01aac(0, y, nullptr, &nvalid, &mean, &sd, &skew, &kurt, &lo, &hi, &wsum, &fail);
    EXPECT_EQ(fail.code, NE_INT_ARG_LT);
}

TEST(G01alc, TukeyHinges) {
    const struct {
        std::vector<double> x;
        double five[5];
    } rows[] = {
        {{1, 2, 3, 4, 5, 6, 7, 8, 9, 10}, {1, 3, 5.5, 8, 10}},
        {{7, 6, 5, 4, 3, 2, 1}, {1, 2.5, 4, 5.5, 7}},
        {{3, 1, 4, 1, 5, 9, 2, 6, 5, 3, 5}, {1, 2.5, 4, 5, 9}},
    };
    for (const auto& row : rows) {
        double res[5];
        NagError fail;
        g01alc(static_cast<int>(row.x.size()), row.x.data(), res, &fail);
        ASSERT_EQ(fail.code, 0);
        for (int k = 0; k < 5; ++k) EXPECT_EQ(res[k], row.five[k]);
    }
    double res[5] = {};
    NagError fail;
    g01alc(4, rows[0].x.data(), res, &fail);
    EXPECT_EQ(fail.code, NE_INT_ARG_LT);
}

TEST(G01ddc, EitherOrderAndFailures) {
    const std::vector<double> up = {148, 154, 158, 160, 161, 162, 166, 170, 182, 195, 236};
    const std::vector<double> down(up.rbegin(), up.rend());
    double a[11], w1, p1, w2, p2;
    NagError fail;
    g01ddc(11, up.data(), true, a, &w1, &p1, &fail);
    ASSERT_EQ(fail.code, 0);
    g01ddc(11, down.data(), true, a, &w2, &p2, &fail);
    ASSERT_EQ(fail.code, 0);
    EXPECT_EQ(w1, w2);
    EXPECT_EQ(p1, p2);
    EXPECT_NEAR(w1, 0.78881, 5e-6);
    EXPECT_EQ(a[0], -a[10]);  // antisymmetric coefficients
    EXPECT_EQ(a[5], 0.0);
    const double flat[] = {1, 1, 1, 1};
    g01ddc(4, flat, true, a, &w1, &p1, &fail);
    EXPECT_EQ(fail.code, NE_REAL);
    const double unsorted[] = {1, 3, 2, 4};
    g01ddc(4, unsorted, true, a, &w1, &p1, &fail);
    EXPECT_EQ(fail.code, NE_NOT_SORTED);
    g01ddc(2, unsorted, true, a, &w1, &p1, &fail);
    EXPECT_EQ(fail.code, NE_INT_ARG_LT);
    g01ddc(5001, unsorted, true, a, &w1, &p1, &fail);
    EXPECT_EQ(fail.code, NE_INT_ARG_GT);
}

TEST(G07cac, PooledAndSatterthwaite) {
    // Equal sizes and SDs: both forms give t = (5 - 4) / sqrt(2 / 10) and the pooled
    // degrees of freedom 18; the interval is centred on the difference.
    double t, df, p, lo, hi;
    NagError fail;
    g07cac(Nag_TailProbability::Nag_TwoTail, Nag_TestVariances::Nag_EqualVar, 10, 10, 5, 4, 1, 1,
           0.95, &t, &df, &p, &lo, &hi, &fail);
    ASSERT_EQ(fail.code, 0);
    EXPECT_NEAR(t, 1.0 / std::sqrt(0.2), 1e-15);
    EXPECT_EQ(df, 18.0);
    EXPECT_NEAR((lo + hi) / 2, 1.0, 1e-15);
    double t2, df2, p2;
    g07cac(Nag_TailProbability::Nag_TwoTail, Nag_TestVariances::Nag_UnequalVar, 10, 10, 5, 4, 1, 1,
           0.95, &t2, &df2, &p2, &lo, &hi, &fail);
    EXPECT_NEAR(df2, 18.0, 1e-13);
    EXPECT_NEAR(p2, p, 1e-13);
    double up, down;
    g07cac(Nag_TailProbability::Nag_UpperTail, Nag_TestVariances::Nag_EqualVar, 10, 10, 5, 4, 1, 1,
           0.95, &t, &df, &up, &lo, &hi, &fail);
    g07cac(Nag_TailProbability::Nag_LowerTail, Nag_TestVariances::Nag_EqualVar, 10, 10, 5, 4, 1, 1,
           0.95, &t, &df, &down, &lo, &hi, &fail);
    EXPECT_NEAR(up + down, 1.0, 1e-15);
    EXPECT_NEAR(2 * up, p, 1e-15);
    const struct {
        Nag_TailProbability tail;
        int nx;
        double sd;
        double level;
        int code;
    } bad[] = {
        {Nag_TailProbability::Nag_TwoTailSignif, 10, 1, 0.95, NE_BAD_PARAM},
        {Nag_TailProbability::Nag_TwoTail, 1, 1, 0.95, NE_INT_ARG_LT},
        {Nag_TailProbability::Nag_TwoTail, 10, 0, 0.95, NE_REAL_ARG_LE},
        {Nag_TailProbability::Nag_TwoTail, 10, 1, 1.0, NE_REAL},
    };
    for (const auto& row : bad) {
        g07cac(row.tail, Nag_TestVariances::Nag_EqualVar, row.nx, 10, 5, 4, row.sd, 1, row.level,
               &t, &df, &p, &lo, &hi, &fail);
        EXPECT_EQ(fail.code, row.code);
    }
}

}  // namespace
