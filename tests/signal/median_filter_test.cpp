// Moving percentile filter: SciPy's median_filter for the padded end modes, and the
// percentile engine's whole-array form on every explicitly built window (shrinking ends,
// line extrapolation, missing values, NaN, both rules, small and large windows, so both
// sliding structures); the deliberate -155 of an all-missing run; refusals.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <vector>

#include "signal/smoothing.hpp"
#include "signal/smoothing_reference.hpp"
#include "zemath/smoothing.h"
#include "zemath/statistics.h"

namespace {

using namespace smoothing_reference;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

bool same(double a, double b) {
    return a == b || (std::isnan(a) && std::isnan(b));
}

TEST(MedianFilter, MatchesScipyMedianFilter) {
    for (const auto& c : kMedian) {
        const int n = static_cast<int>(c.x.size());
        std::vector<double> out(n);
        for (bool rule0 : {false, true}) {  // odd full windows: both rules give the middle
            ASSERT_EQ(zemath_median_filter(n, c.x.data(), out.data(), c.half, 50.0, c.mode, rule0),
                      0);
            EXPECT_EQ(out, c.y) << "half " << c.half << " mode " << c.mode;
            if (c.mode == 1) {  // the interior does not depend on the end mode
                std::vector<double> shrinking(n);
                ASSERT_EQ(
                    zemath_median_filter(n, c.x.data(), shrinking.data(), c.half, 50.0, 0, rule0),
                    0);
                for (int i = c.half; i < n - c.half; ++i) EXPECT_EQ(shrinking[i], c.y[i]);
            }
        }
    }
}

// The window of point i as the filter defines it, built directly.
std::vector<double> window_of(const std::vector<double>& x, int i, int h, int mode) {
    const int n = static_cast<int>(x.size());
    std::vector<double> w;
    if (mode == 0) {
        const int r = std::min({i, n - 1 - i, h});
        return {x.begin() + (i - r), x.begin() + (i + r + 1)};
    }
    std::vector<double> left(h), right(h);
    zemath::pad_ends(x, mode, h, h, left, right);
    for (int p = i - h; p <= i + h; ++p)
        w.push_back(p < 0 ? left[-1 - p] : p >= n ? right[p - n] : x[p]);
    return w;
}

TEST(MedianFilter, EveryWindowAsTheEngineGivesIt) {
    std::mt19937 gen(99);
    std::uniform_real_distribution<double> u(-5, 5);
    for (int h : {0, 1, 2, 7, 60}) {
        const int n = 2 * h + 1 + 40;
        std::vector<double> x(n);
        for (double& v : x) v = std::round(u(gen) * 4) / 4;  // ties
        for (int k = 3; k < n; k += 7) x[k] = NANUM;
        for (int k = 4; k < 10 && k < n; ++k) x[k] = NANUM;  // a missing run
        if (h == 2) x[n / 2] = kNaN;
        for (int mode = 0; mode <= 5; ++mode) {
            for (double percent : {0.0, 10.0, 50.0, 62.5, 100.0}) {
                for (bool rule0 : {false, true}) {
                    std::vector<double> out(n);
                    ASSERT_EQ(
                        zemath_median_filter(n, x.data(), out.data(), h, percent, mode, rule0), 0);
                    for (int i = 0; i < n; ++i) {
                        const std::vector<double> w = window_of(x, i, h, mode);
                        double want = NANUM;
                        bool any = false;
                        for (double v : w) any = any || v != NANUM;
                        if (mode == 0 || any) {
                            ASSERT_EQ(
                                zemath_percentiles(w.data(), static_cast<int>(w.size()), &percent,
                                                   1, &want, rule0 ? 0 : 2, nullptr),
                                0);
                        }
                        EXPECT_TRUE(same(out[i], want))
                            << "h " << h << " mode " << mode << " p " << percent << " i " << i
                            << ": " << out[i] << " vs " << want;
                    }
                }
            }
        }
    }
}

TEST(MedianFilter, AllMissingRunsAndRefusals) {
    const std::vector<double> missing(7, NANUM);
    std::vector<double> out(7, 777.0);
    // Every window missing: -155 in the padded modes (kept deliberately), NANUM written.
    EXPECT_EQ(zemath_median_filter(7, missing.data(), out.data(), 2, 50.0, 1, false), -155);
    EXPECT_EQ(out, missing);
    // Mode 0 leaves such windows to the engine: NANUM, success.
    std::fill(out.begin(), out.end(), 777.0);
    EXPECT_EQ(zemath_median_filter(7, missing.data(), out.data(), 2, 50.0, 0, false), 0);
    EXPECT_EQ(out, missing);
    // Mode 4 with nHalf 1: a one-point run extrapolates to the end value itself.
    const std::vector<double> x{1, 10, 20, 30, 4};
    ASSERT_EQ(zemath_median_filter(5, x.data(), out.data(), 1, 0.0, 4, false), 0);
    EXPECT_EQ(out[0], 1.0);
    EXPECT_EQ(out[4], 4.0);
    std::fill(out.begin(), out.end(), 777.0);
    const double* in = x.data();
    double* o = out.data();
    struct Case {
        int got, want;
    } cases[] = {
        {zemath_median_filter(5, in, o, 1, -0.5, 0, false), -151},
        {zemath_median_filter(5, in, o, 1, 100.000001, 0, false), -151},
        {zemath_median_filter(5, in, o, 1, kNaN, 0, false), -151},
        {zemath_median_filter(5, in, o, -1, 50.0, 0, false), -151},
        {zemath_median_filter(5, in, o, 3, 50.0, 0, false), -151},
        {zemath_median_filter(5, in, o, 1, 50.0, 6, false), -151},
        {zemath_median_filter(5, in, o, 1, 50.0, -1, false), -151},
        {zemath_median_filter(0, in, o, 0, 50.0, 0, false), -151},
        {zemath_median_filter(5, nullptr, o, 1, 50.0, 0, false), -11},
    };
    for (const Case& c : cases) EXPECT_EQ(c.got, c.want);
    EXPECT_EQ(out, std::vector<double>(7, 777.0));
    EXPECT_EQ(zemath_median_filter(5, in, o, 2, 100.0, 0, false), 0);
    EXPECT_EQ(zemath_smooth(5, in, o, 1, 2, 1, 0, 0, 0, 50.0, 0, 0, 1), 0);  // via the dispatcher
}

}  // namespace
