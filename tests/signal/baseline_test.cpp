// Baselines: the end-to-end line, baseline points of a smooth synthetic curve, base
// markers, and the noise level against white noise of known standard deviation.
#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <random>
#include <vector>

#include "zemath/baseline.h"
#include "zemath/status.h"
#include "zemath/types.h"

namespace {

TEST(Baseline, ConnectEnds) {
    const double x[] = {1, 2, 4, 5}, y[] = {3, 9, -2, 5};
    double bx[5] = {}, by[5] = {};
    ASSERT_EQ(zemath_init_baseline_by_connect_ends(4, x, y, 5, bx, by), 0);
    for (int i = 0; i < 5; ++i) {
        EXPECT_DOUBLE_EQ(bx[i], 1.0 + i);
        EXPECT_DOUBLE_EQ(by[i], 3.0 + 0.5 * i);
    }
    // nBase 2: the two end points exactly.
    ASSERT_EQ(zemath_init_baseline_by_connect_ends(4, x, y, 2, bx, by), 0);
    EXPECT_EQ(bx[0], 1.0);
    EXPECT_EQ(bx[1], 5.0);
    EXPECT_EQ(by[0], 3.0);
    EXPECT_EQ(by[1], 5.0);
    // One-point curve: a constant baseline at its Y.
    ASSERT_EQ(zemath_init_baseline_by_connect_ends(1, x, y, 3, bx, by), 0);
    EXPECT_EQ(by[0], 3.0);
    EXPECT_EQ(by[2], 3.0);
    double untouched[2] = {-7, -7};
    EXPECT_EQ(zemath_init_baseline_by_connect_ends(0, x, y, 2, untouched, by),
              ZEMATH_ERR_TOO_FEW_POINTS);
    EXPECT_EQ(zemath_init_baseline_by_connect_ends(4, x, y, 0, untouched, by),
              ZEMATH_ERR_TOO_FEW_POINTS);
    EXPECT_EQ(zemath_init_baseline_by_connect_ends(4, x, nullptr, 2, untouched, by),
              ZEMATH_ERR_NULL_POINTER);
    EXPECT_EQ(untouched[0], -7.0);
}

TEST(Baseline, SmoothCurveBaselinePointsAreLowAndFlat) {
    // A Gaussian of height 10 and sd 1 at x = 0 on [-10, 10]: the baseline points are
    // those with |y| < 0.5 and |y'| below 5% of the slope range (|y'| max = 10 e^-1/2).
    const int n = 401;
    std::vector<double> x(n), y(n);
    for (int i = 0; i < n; ++i) {
        x[i] = -10.0 + 0.05 * i;
        y[i] = 10.0 * std::exp(-0.5 * x[i] * x[i]);
    }
    std::vector<int> idx(n, -1);
    const int count = zemath_find_baseline_part_in_smooth_curve(n, x.data(), y.data(), idx.data());
    ASSERT_GT(count, 0);
    // The analytic condition y < 0.5 and |y'| = |x| y < 0.05 * 2 * 10 e^-1/2, with a 3%
    // slack for the finite-difference slope: clearly-inside points are listed, listed
    // points are at most just outside.
    const double slope_limit = 0.05 * 2.0 * 10.0 * std::exp(-0.5);
    const auto margin = [&](int i, double slack) {
        const double s = std::fabs(x[i]) * y[i];
        return y[i] < 0.5 * slack && s < slope_limit * slack;
    };
    std::vector<bool> listed(n, false);
    for (int k = 0; k < count; ++k) {
        listed[idx[k]] = true;
        EXPECT_TRUE(margin(idx[k], 1.03)) << x[idx[k]];
    }
    for (int i = 0; i < n; ++i)
        if (margin(i, 0.97)) {
            EXPECT_TRUE(listed[i]) << x[i];
        }
    EXPECT_EQ(zemath_find_baseline_part_in_smooth_curve(1, x.data(), y.data(), idx.data()),
              ZEMATH_ERR_TOO_FEW_DERIV);
    EXPECT_EQ(zemath_find_baseline_part_in_smooth_curve(n, x.data(), nullptr, idx.data()),
              ZEMATH_ERR_NULL_POINTER);
}

TEST(Baseline, BaseMarkers) {
    const double x[] = {0, 1, 2, 3, 4, 5, 6, 7, 8};
    const double y[] = {0, 0, 1, 4, 8, 4, 1, 0, 0};
    const double base[9] = {};
    // T = 0.5 * mean |dy| = 0.5 * 16 / 8 = 1: the walk stops at the first |y| <= 1.
    const int peaks[] = {4, 0};
    const int option = 0;
    int markers[4] = {-7, -7, -7, -7};
    double mx[4], my[4];
    ASSERT_EQ(zemath_make_base_markers(markers, mx, my, 4, peaks, 2, x, y, &option, base, 9), 0);
    EXPECT_EQ(markers[0], 2);
    EXPECT_EQ(markers[1], 6);
    EXPECT_EQ(mx[1], 6.0);
    EXPECT_EQ(my[0], 1.0);
    // A peak already on the baseline: L = R = p.
    EXPECT_EQ(markers[2], 0);
    EXPECT_EQ(markers[3], 0);
    int untouched[2] = {-7, -7};
    const int bad_peak[] = {9};
    EXPECT_EQ(zemath_make_base_markers(untouched, mx, my, 3, peaks, 2, x, y, &option, base, 9),
              ZEMATH_ERR_SIZE_MISMATCH);
    EXPECT_EQ(zemath_make_base_markers(untouched, mx, my, 2, peaks, 1, x, y, nullptr, base, 9),
              ZEMATH_ERR_NULL_POINTER);
    EXPECT_EQ(zemath_make_base_markers(untouched, mx, my, 2, bad_peak, 1, x, y, &option, base, 9),
              ZEMATH_ERR_EMPTY_RANGE);
    EXPECT_EQ(zemath_make_base_markers(untouched, mx, my, 2, peaks, 1, x, y, &option, base, 0),
              ZEMATH_ERR_TOO_FEW_POINTS);
    EXPECT_EQ(untouched[0], -7);
}

TEST(Baseline, NoiseLevelEstimatesTheNoiseSd) {
    // White noise of known sd on a slow ramp with one tall peak: the estimate stays within
    // a few per cent of the generating sd.
    for (double sd : {0.01, 0.3, 2.0}) {
        std::mt19937_64 gen(20261123);
        std::normal_distribution<double> noise(0.0, sd);
        std::vector<double> y(20000);
        for (std::size_t i = 0; i < y.size(); ++i) {
            const double t = static_cast<double>(i) - 10000.0;
            y[i] = 1e-4 * static_cast<double>(i) * sd + 50.0 * sd * std::exp(-t * t / 800.0) +
                   noise(gen);
        }
        y[100] = NANUM;
        const double level = zemath_get_noise_level(static_cast<int>(y.size()), y.data());
        EXPECT_NEAR(level, sd, 0.04 * sd) << sd;
    }
    const double two[] = {1.0, 3.0}, missing[] = {NANUM, 1.0, NANUM};
    EXPECT_NEAR(zemath_get_noise_level(2, two), 2.0 / (0.6744897501960817 * std::sqrt(2.0)), 1e-15);
    EXPECT_EQ(zemath_get_noise_level(3, missing), NANUM);
    EXPECT_EQ(zemath_get_noise_level(1, two), NANUM);
    EXPECT_EQ(zemath_get_noise_level(INT_MIN, two), NANUM);
    EXPECT_EQ(zemath_get_noise_level(2, nullptr), NANUM);
}

TEST(Baseline, LinearRunsAndBaseRegions) {
    // A straight line with noise well inside the tolerance: one region over all of it.
    const int n = 60;
    std::vector<double> x(n), y(n);
    std::mt19937_64 gen(5);
    std::uniform_real_distribution<double> jitter(-0.01, 0.01);
    for (int i = 0; i < n; ++i) {
        x[i] = 0.5 * i;
        y[i] = 2.0 - 0.3 * x[i] + jitter(gen);
    }
    int start[4] = {-7, -7, -7, -7}, end[4] = {-7, -7, -7, -7};
    for (int option : {0, 1}) {
        EXPECT_EQ(zemath_check_linear(n, x.data(), y.data(), 0, 0.05, 0.0, option), n - 1);
        ASSERT_EQ(
            zemath_find_base_regions(n, x.data(), y.data(), 10, 4, start, end, 0.0, 0.05, option),
            1);
        EXPECT_EQ(start[0], 0);
        EXPECT_EQ(end[0], n - 1);
    }
    // Flat, then a peak, then flat: the run from 0 ends just before the peak, and the two
    // flat stretches become regions; a capacity of one gives -56.
    std::vector<double> bumpy(n, 1.0);
    for (int i = 25; i < 35; ++i) bumpy[i] = 1.0 + 5.0 * std::sin((i - 24) * M_PI / 11.0);
    EXPECT_EQ(zemath_check_linear(n, x.data(), bumpy.data(), 0, 0.1, 0.0, 0), 24);
    ASSERT_EQ(zemath_find_base_regions(n, x.data(), bumpy.data(), 10, 4, start, end, 0.0, 0.1, 0),
              2);
    EXPECT_EQ(start[0], 0);
    EXPECT_EQ(end[0], 24);
    EXPECT_EQ(end[1], n - 1);
    EXPECT_GE(start[1], 35);
    EXPECT_EQ(zemath_find_base_regions(n, x.data(), bumpy.data(), 10, 1, start, end, 0.0, 0.1, 0),
              ZEMATH_ERR_TOO_MANY_REGIONS);
    // The relative tolerance (dTolerance1) scales with the Y range: 1.2 times it lets all pass.
    EXPECT_EQ(zemath_find_base_regions(n, x.data(), bumpy.data(), 10, 4, start, end, 1.2, 0.0, 0),
              1);
    EXPECT_EQ(zemath_check_linear(n, x.data(), y.data(), n, 0.1, 0.0, 0),
              ZEMATH_ERR_TOO_FEW_POINTS);
    EXPECT_EQ(zemath_check_linear(n, x.data(), y.data(), 0, 0.1, 0.0, 2), ZEMATH_ERR_BAD_OPTION);
    EXPECT_EQ(zemath_find_base_regions(n, x.data(), y.data(), 10, 4, start, end, 0.0, 0.1, 7),
              ZEMATH_ERR_BAD_OPTION);
    EXPECT_EQ(zemath_find_base_regions(n, x.data(), nullptr, 10, 4, start, end, 0.0, 0.1, 0),
              ZEMATH_ERR_NULL_POINTER);
}

}  // namespace
