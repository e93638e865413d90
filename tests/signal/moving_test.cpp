// Moving statistics against NumPy/SciPy (tests/reference/gen_moving.py), the deliberate
// seed of the exponential average, missing-value propagation, the period rules of each
// function, and refusals that write nothing.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

#include "zemath/moving.h"

namespace {

constexpr double kNone = NANUM;
struct MovingReference {
    int period;
    std::vector<double> x, weights, ema, ema_first, mma, tma, wma, rms, slope, circular;
};
#include "reference/moving_ref.inc"

void expect_series(const std::vector<double>& got, const std::vector<double>& want,
                   const char* what, double tol = 1e-12) {
    ASSERT_EQ(got.size(), want.size());
    for (std::size_t i = 0; i < got.size(); ++i) {
        if (want[i] == kNone) {
            EXPECT_EQ(got[i], kNone) << what << " at " << i;
        } else {
            EXPECT_NEAR(got[i], want[i], tol * std::max(1.0, std::fabs(want[i])))
                << what << " at " << i;
        }
    }
}

TEST(Moving, MatchesNumpyAndScipy) {
    for (const auto& c : kMovingReference) {
        const int n = static_cast<int>(c.x.size()), p = c.period;
        SCOPED_TRACE(testing::Message() << "n " << n << " period " << p);
        std::vector<double> out(n);
        ASSERT_EQ(zemath_emovavg(out.data(), c.x.data(), n, p, 0, 0), 0);
        expect_series(out, c.ema, "ema");
        ASSERT_EQ(zemath_emovavg(out.data(), c.x.data(), n, p, 1, 0), 0);
        expect_series(out, c.ema_first, "ema seeded with first");
        ASSERT_EQ(zemath_mmovavg(out.data(), c.x.data(), n, p, 0), 0);
        expect_series(out, c.mma, "mma");
        ASSERT_EQ(zemath_tmovavg(out.data(), c.x.data(), n, p, 0), 0);
        expect_series(out, c.tma, "tma");
        ASSERT_EQ(zemath_wmovavg(out.data(), c.x.data(), n, c.weights.data(), p, 0), 0);
        expect_series(out, c.wma, "wma");
        ASSERT_EQ(zemath_movrms(out.data(), c.x.data(), n, p, 0), 0);
        expect_series(out, c.rms, "rms");
        if (p >= 2) {
            ASSERT_EQ(zemath_movslope(out.data(), c.x.data(), n, p, 0), 0);
            expect_series(out, c.slope, "slope", 1e-11);
        }
        std::vector<double> in_place = c.x;  // the output may be the input
        ASSERT_EQ(zemath_d_running_ave_circular(in_place.data(), in_place.data(), n, p, 0), 0);
        expect_series(in_place, c.circular, "circular");
    }
}

TEST(Moving, ExponentialSeedAndMissingValues) {
    const std::vector<double> x{1, 2, 6, 4, NANUM, 5};
    std::vector<double> out(6);
    ASSERT_EQ(zemath_emovavg(out.data(), x.data(), 6, 3, 0, 0), 0);
    // Mean 3 of the first period, then 6 blended in once more: 3 + 0.5 (6 - 3).
    EXPECT_EQ(out[0], NANUM);
    EXPECT_EQ(out[1], NANUM);
    EXPECT_EQ(out[2], 4.5);
    EXPECT_EQ(out[3], 4.25);
    EXPECT_EQ(out[4], NANUM);  // a missing value ends the series
    EXPECT_EQ(out[5], NANUM);
    ASSERT_EQ(zemath_emovavg(out.data(), x.data(), 6, 3, 0, 1), 0);
    EXPECT_EQ(out[4], 2.125);  // NANUM taken as 0
    EXPECT_EQ(out[5], 3.5625);
    // Period equal to the size: NANUM everywhere but the last point.
    ASSERT_EQ(zemath_emovavg(out.data(), x.data(), 4, 4, 0, 0), 0);
    EXPECT_EQ(out[2], NANUM);
    EXPECT_EQ(out[3], 3.25 + 0.4 * (4 - 3.25));
    // A period beyond the size: the modified average cuts it, the others refuse.
    std::vector<double> cut(4), full(4, 777.0);
    ASSERT_EQ(zemath_mmovavg(cut.data(), x.data(), 4, 9, 0), 0);
    ASSERT_EQ(zemath_mmovavg(full.data(), x.data(), 4, 4, 0), 0);
    EXPECT_EQ(cut, full);
    const double w[9] = {1, 1, 1, 1, 1, 1, 1, 1, 1};
    EXPECT_EQ(zemath_emovavg(out.data(), x.data(), 4, 9, 0, 0), -1);
    EXPECT_EQ(zemath_tmovavg(out.data(), x.data(), 4, 9, 0), -1);
    EXPECT_EQ(zemath_wmovavg(out.data(), x.data(), 4, w, 9, 0), -1);
}

TEST(Moving, TriangularEvenPeriodActsAsNextOdd) {
    std::vector<double> x(25), four(25), five(25);
    for (int i = 0; i < 25; ++i) x[i] = std::sin(i * 0.7) * 10 + i;
    x[11] = NANUM;  // skipped by both passes
    ASSERT_EQ(zemath_tmovavg(four.data(), x.data(), 25, 4, 0), 0);
    ASSERT_EQ(zemath_tmovavg(five.data(), x.data(), 25, 5, 0), 0);
    EXPECT_EQ(four, five);
    EXPECT_EQ(four[3], NANUM);
    EXPECT_NE(four[4], NANUM);
}

TEST(Moving, MissingWindowsAndRefusals) {
    const std::vector<double> x{1, NANUM, 3, NANUM, NANUM, NANUM, 7};
    std::vector<double> out(7);
    const double w[] = {1, 2};
    ASSERT_EQ(zemath_wmovavg(out.data(), x.data(), 7, w, 2, 0), 0);
    EXPECT_EQ(out, std::vector<double>(7, NANUM));  // every window holds a missing value
    ASSERT_EQ(zemath_movrms(out.data(), x.data(), 7, 2, 0), 0);
    EXPECT_EQ(out[2], 3.0);
    EXPECT_EQ(out[4], NANUM);
    ASSERT_EQ(zemath_movslope(out.data(), x.data(), 7, 3, 0), 0);
    EXPECT_EQ(out[2], 1.0);  // (1 at 0, 3 at 2)
    EXPECT_EQ(out[3], NANUM);
    ASSERT_EQ(zemath_d_running_ave_circular(out.data(), x.data(), 7, 3, 0), 0);
    EXPECT_EQ(out[0], 4.0);  // 7 and 1 around the end
    EXPECT_EQ(out[4], NANUM);

    std::vector<double> kept(7, 777.0);
    double* o = kept.data();
    const double* in = x.data();
    const double zero_sum[] = {1, -1}, missing_weight[] = {1, NANUM};
    const int codes[] = {
        zemath_emovavg(o, nullptr, 7, 2, 0, 0),
        zemath_emovavg(o, in, 7, 0, 0, 0),
        zemath_emovavg(o, in, 1, 1, 0, 0),  // 0, nothing written
        zemath_mmovavg(nullptr, in, 7, 2, 0),
        zemath_mmovavg(o, in, 7, 0, 0),
        zemath_tmovavg(o, in, 7, 0, 0),
        zemath_wmovavg(o, in, 7, zero_sum, 2, 0),
        zemath_wmovavg(o, in, 7, missing_weight, 2, 0),
        zemath_wmovavg(o, in, 7, nullptr, 2, 0),
        zemath_movrms(o, in, 7, 8, 0),
        zemath_movslope(o, in, 7, 1, 0),
        zemath_d_running_ave_circular(o, in, 7, 0, 0),
        zemath_d_running_ave_circular(o, in, -3, 1, 0),
    };
    const int want[] = {-1, -1, 0, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1};
    for (std::size_t k = 0; k < std::size(codes); ++k) EXPECT_EQ(codes[k], want[k]) << k;
    EXPECT_EQ(kept, std::vector<double>(7, 777.0));
}

TEST(Moving, NonFiniteValuesReachOnlyTheirWindows) {
    // A NaN or an infinity spoils the windows that hold it, as a direct evaluation would,
    // and no other: the running sums used to keep it for the rest of the series.
    const int n = 3000, period = 21;
    std::vector<double> x(n);
    for (int i = 0; i < n; ++i) x[i] = std::sin(0.1 * i) + 2.0;
    const double inf = std::numeric_limits<double>::infinity();
    x[500] = std::numeric_limits<double>::quiet_NaN();
    x[1500] = inf;
    x[1510] = -inf;
    std::vector<double> out(n);
    // Trailing windows [i - period + 1, i]; the circular one is [i - period/2, ...].
    auto holds = [&](int i, int k, bool centred) {
        const int lo = centred ? i - period / 2 : i - period + 1;
        return k >= lo && k < lo + period;
    };
    ASSERT_EQ(zemath_movrms(out.data(), x.data(), n, period, 0), 0);
    for (int i = period - 1; i < n; ++i) {
        if (holds(i, 500, false)) {
            EXPECT_TRUE(std::isnan(out[i])) << i;
        } else if (holds(i, 1500, false) || holds(i, 1510, false)) {
            EXPECT_EQ(out[i], inf) << i;  // squares of both infinities
        } else {
            EXPECT_TRUE(std::isfinite(out[i])) << i;
        }
    }
    ASSERT_EQ(zemath_movslope(out.data(), x.data(), n, period, 0), 0);
    for (int i = period - 1; i < n; ++i) {
        const bool spoilt = holds(i, 500, false) || holds(i, 1500, false) || holds(i, 1510, false);
        EXPECT_EQ(std::isnan(out[i]), spoilt) << i;
    }
    ASSERT_EQ(zemath_d_running_ave_circular(out.data(), x.data(), n, period, 0), 0);
    for (int i = 0; i < n; ++i) {
        const bool nan = holds(i, 500, true) || (holds(i, 1500, true) && holds(i, 1510, true));
        if (nan) {
            EXPECT_TRUE(std::isnan(out[i])) << i;
        } else if (holds(i, 1500, true)) {
            EXPECT_EQ(out[i], inf) << i;
        } else if (holds(i, 1510, true)) {
            EXPECT_EQ(out[i], -inf) << i;
        } else {
            EXPECT_TRUE(std::isfinite(out[i])) << i;
        }
    }
}

}  // namespace
