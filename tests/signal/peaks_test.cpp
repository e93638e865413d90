// Peak detectors and peak-list filters: reference curves (synthetic peak sums, SciPy's
// relative extrema), the window tracker against a brute-force leftmost scan, the
// documented quirks and every status code.
#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <random>
#include <vector>

#include "signal/peaks.hpp"
#include "zemath/peak_measures.h"
#include "zemath/peaks.h"
#include "zemath/status.h"
#include "zemath/types.h"

namespace {

struct PeakCurveReference {
    std::vector<double> x, y, centres, heights, fwhm;
    std::vector<int> shape;
    double noise;
    int half;
    std::vector<int> relmax, relmin, findpeaks, relmax1, relmin1;
};

#include "reference/peaks_ref.inc"

struct PeakList {
    int count = 0;
    std::vector<double> x, y;
    std::vector<int> index;
    int status = 0;
};

PeakList local_maximum(const std::vector<double>& x, const std::vector<double>& y, int flags,
                       int half, bool extremes = false) {
    PeakList out;
    out.count = static_cast<int>(x.size());
    out.x.assign(x.size(), -7.0);
    out.y.assign(x.size(), -7.0);
    out.index.assign(x.size(), -7);
    auto fn = extremes ? zemath_find_local_extremes : zemath_find_peaks_by_local_maximum;
    out.status = fn(&out.count, x.data(), y.data(), out.x.data(), out.y.data(), out.index.data(),
                    flags, half);
    out.index.resize(static_cast<std::size_t>(out.status == 0 ? out.count : 0));
    return out;
}

PeakList search_window(const std::vector<double>& x, const std::vector<double>& y, int flags,
                       double width, double min_height) {
    PeakList out;
    out.count = static_cast<int>(x.size());
    out.x.assign(x.size(), -7.0);
    out.y.assign(x.size(), -7.0);
    out.index.assign(x.size(), -7);
    out.status = zemath_find_peaks_by_search_window(&out.count, x.data(), y.data(), out.x.data(),
                                                    out.y.data(), out.index.data(), flags, width,
                                                    min_height);
    out.index.resize(static_cast<std::size_t>(out.status == 0 ? out.count : 0));
    return out;
}

std::vector<int> inside(const std::vector<int>& indices, int half, int n) {
    std::vector<int> kept;
    for (int i : indices)
        if (i >= half && i <= n - half - 1) kept.push_back(i);
    return kept;
}

// Brute-force leftmost extreme of [first, last].
int leftmost(const std::vector<double>& y, int first, int last, bool maximum) {
    int best = first;
    for (int j = first + 1; j <= last; ++j)
        if (maximum ? y[j] > y[best] : y[j] < y[best]) best = j;
    return best;
}

TEST(PeakDetectors, LocalMaximumMatchesRelativeExtremaOnNoiseFreeAndNoisyCurves) {
    for (const auto& ref : kPeakCurves) {
        const int n = static_cast<int>(ref.x.size());
        PeakList maxima = local_maximum(ref.x, ref.y, 1, ref.half);
        ASSERT_EQ(maxima.status, 0);
        EXPECT_EQ(maxima.index, inside(ref.relmax, ref.half, n));
        // Minima of a positive curve need bit 4 (sign ignored).
        PeakList minima = local_maximum(ref.x, ref.y, 2 | 4, ref.half);
        ASSERT_EQ(minima.status, 0);
        EXPECT_EQ(minima.index, inside(ref.relmin, ref.half, n));
        for (std::size_t k = 0; k < maxima.index.size(); ++k) {
            EXPECT_EQ(maxima.x[k], ref.x[static_cast<std::size_t>(maxima.index[k])]);
            EXPECT_EQ(maxima.y[k], ref.y[static_cast<std::size_t>(maxima.index[k])]);
        }
    }
}

TEST(PeakDetectors, SearchWindowFindsTheTrueCentres) {
    for (const auto& ref : kPeakCurves) {
        const double narrowest = *std::min_element(ref.fwhm.begin(), ref.fwhm.end());
        const double lowest = *std::min_element(ref.heights.begin(), ref.heights.end());
        // Window of about 4 widths; a peak must stand a third of the lowest height clear.
        PeakList peaks = search_window(ref.x, ref.y, 1, 4.0 * narrowest, lowest / 3.0);
        ASSERT_EQ(peaks.status, 0);
        ASSERT_EQ(peaks.index.size(), ref.centres.size());
        const double spacing = 100.0 / static_cast<double>(ref.x.size() - 1);
        // Noise-free: within one point (the grid); noisy: a few points.
        const double tolerance = (ref.noise > 0.0 ? 4.0 : 1.0) * spacing;
        for (std::size_t k = 0; k < ref.centres.size(); ++k) {
            EXPECT_NEAR(peaks.x[k], ref.centres[k], tolerance + 0.1) << "peak " << k;
            // The generating model at the true centre (all peaks and the offset).
            double height = 0.05;
            for (std::size_t j = 0; j < ref.centres.size(); ++j) {
                const double d = ref.centres[k] - ref.centres[j], w = ref.fwhm[j];
                height += ref.shape[j] == 0
                              ? ref.heights[j] * std::exp(-4.0 * std::log(2.0) * d * d / (w * w))
                              : ref.heights[j] * (w * w / 4.0) / (d * d + w * w / 4.0);
            }
            EXPECT_NEAR(peaks.y[k], height, 0.1 * height + 4.0 * ref.noise) << "peak " << k;
            // Reported Y is the caller's Y at the reported index.
            EXPECT_EQ(peaks.y[k], ref.y[static_cast<std::size_t>(peaks.index[k])]);
        }
    }
}

TEST(PeakDetectors, SearchWindowAgreesWithFindPeaksOnEvenNoiseFreeData) {
    // Noise-free curves with separated peaks: every maximum of the curve is a true peak,
    // so find_peaks(distance) and the window scan (height 0) must list the same points.
    for (const auto& ref : kPeakCurves) {
        const double d1 = ref.x[1] - ref.x[0], d2 = ref.x[2] - ref.x[1];
        if (ref.noise > 0.0 || std::fabs(d1 - d2) > 1e-9 * d1) continue;
        const double step = ref.x[1] - ref.x[0];
        PeakList peaks = search_window(ref.x, ref.y, 1, 2.0 * ref.half * step, 1e-12);
        ASSERT_EQ(peaks.status, 0);
        EXPECT_EQ(peaks.index, ref.findpeaks);
    }
}

TEST(PeakDetectors, TrackerGivesLeftmostExtremesOnTiedData) {
    std::mt19937 gen(7);
    std::uniform_int_distribution<int> level(0, 3);  // heavy ties
    for (int half : {0, 1, 2, 5, 17}) {
        std::vector<double> y(300);
        for (double& v : y) v = level(gen);
        const int h = std::max(half, 1);
        const std::size_t windows = y.size() - 2 * static_cast<std::size_t>(h);
        std::vector<int> maxi(windows), mini(windows);
        zemath::sliding_window_extremes(y, half, maxi, mini);
        for (std::size_t p = 0; p < windows; ++p) {
            const int first = static_cast<int>(p), last = first + 2 * h;
            ASSERT_EQ(maxi[p], leftmost(y, first, last, true)) << half << " " << p;
            ASSERT_EQ(mini[p], leftmost(y, first, last, false)) << half << " " << p;
        }
        // The detectors' centres: window maxima for bit 1, else minima for bit 2.
        for (int flags : {1, 2, 3}) {
            std::vector<int> expected;
            for (std::size_t p = 0; p < windows; ++p) {
                const int first = static_cast<int>(p), c = first + h, last = first + 2 * h;
                if (((flags & 1) && leftmost(y, first, last, true) == c) ||
                    ((flags & 2) && leftmost(y, first, last, false) == c))
                    expected.push_back(c);
            }
            EXPECT_EQ(zemath::local_extreme_centres(y, half, flags, false), expected) << flags;
        }
    }
}

TEST(PeakDetectors, TrackerWithNaNFollowsTheRescan) {
    // A NaN that opens a rescanned window holds the maximum until it leaves; a NaN inside
    // a window never takes it.
    const double nan = std::nan("");
    const std::vector<double> y = {5, nan, 1, 2, 3, 0, 0};
    std::vector<int> maxi(5), mini(5);
    zemath::sliding_window_extremes(y, 1, maxi, mini);
    // Windows [0,2]: 0 (5); [1,3]: rescan from the NaN at 1 holds it; [2,4]: rescan -> 4;
    // [3,5]: 4; [4,6]: 4.
    EXPECT_EQ(maxi, (std::vector<int>{0, 1, 4, 4, 4}));
}

TEST(PeakDetectors, DocumentedQuirks) {
    std::vector<double> x(9);
    for (int i = 0; i < 9; ++i) x[i] = i;
    // nHalf 2: indices 0, 1, n-2, n-1 are never reported even when they are maxima.
    {
        const std::vector<double> y = {9, 8, 1, 2, 5, 2, 1, 8, 9};
        EXPECT_EQ(local_maximum(x, y, 1, 2).index, (std::vector<int>{4}));
    }
    // A flat top of two equal maxima: the left point only, and only when it is a centre.
    {
        const std::vector<double> y = {1, 2, 3, 7, 7, 3, 2, 1, 0.5};
        EXPECT_EQ(local_maximum(x, y, 1, 2).index, (std::vector<int>{3}));
        const std::vector<double> edge = {1, 7, 7, 3, 2, 1, 0.5, 0.2, 0.1};
        EXPECT_EQ(local_maximum(x, edge, 1, 2).index, (std::vector<int>{}));
    }
    // Sign rule: a maximum with Y <= 0 is not a positive peak unless bit 4.
    {
        const std::vector<double> y = {-5, -4, -3, -1, -3, -4, 0, -4, -5};
        EXPECT_EQ(local_maximum(x, y, 1, 1).index, (std::vector<int>{}));
        EXPECT_EQ(local_maximum(x, y, 1 | 4, 1).index, (std::vector<int>{3, 6}));
        EXPECT_EQ(local_maximum(x, y, 1, 1, true).index, (std::vector<int>{3, 6}));
    }
    // nHalf 0 is raised to 1.
    {
        const std::vector<double> y = {0, 3, 1, 4, 1, 5, 1, 2, 0};
        EXPECT_EQ(local_maximum(x, y, 1, 0).index, local_maximum(x, y, 1, 1).index);
    }
}

TEST(PeakDetectors, UnsortedXIsMappedBack) {
    // Points given in shuffled order: peaks reported at the caller's indices.
    const std::vector<double> xs = {0, 1, 2, 3, 4, 5, 6, 7, 8};
    const std::vector<double> ys = {0, 1, 5, 1, 0, 2, 6, 2, 0};
    const std::vector<int> perm = {4, 7, 0, 2, 8, 1, 6, 3, 5};
    std::vector<double> x(9), y(9);
    for (int k = 0; k < 9; ++k) {
        x[perm[k]] = xs[k];
        y[perm[k]] = ys[k];
    }
    PeakList peaks = local_maximum(x, y, 1, 1);
    ASSERT_EQ(peaks.index, (std::vector<int>{perm[2], perm[6]}));
    EXPECT_EQ(peaks.x[0], 2.0);
    EXPECT_EQ(peaks.y[1], 6.0);
    PeakList window = search_window(x, y, 1, 2.0, 0.5);
    EXPECT_EQ(window.index, (std::vector<int>{perm[2], perm[6]}));
    // The extremes detector tracks the caller's order and reads outputs from the sorted
    // copy (kept deliberately): caller-order Y is {5,2,1,2,0,0,6,1,0}, whose window
    // maxima sit at 3 and 6; the outputs are sorted point 3 and 6 with their caller index.
    PeakList extremes = local_maximum(x, y, 1, 1, true);
    ASSERT_EQ(extremes.status, 0);
    EXPECT_EQ(extremes.index, (std::vector<int>{perm[3], perm[6]}));
    EXPECT_EQ(extremes.x[0], 3.0);
    EXPECT_EQ(extremes.x[1], 6.0);
}

TEST(PeakDetectors, SearchWindowWidthAndResampling) {
    std::vector<double> x(11), y(11, 0.0);
    for (int i = 0; i < 11; ++i) x[i] = 0.5 * i;
    y[3] = 2.0;
    y[6] = 1.0;
    y[7] = 3.0;
    // Width of two steps: three points (half-width 1): 6 loses to its neighbour 7.
    EXPECT_EQ(search_window(x, y, 1, 1.0, 0.5).index, (std::vector<int>{3, 7}));
    // Decreasing evenly spaced X is used as given.
    std::vector<double> xr(x.rbegin(), x.rend());
    EXPECT_EQ(search_window(xr, y, 1, 1.0, 0.5).index, (std::vector<int>{3, 7}));
    // End points are kept only with a minimum height <= 0.
    std::vector<double> ramp = {5, 1, 0, 1, 4};
    std::vector<double> xs = {0, 1, 2, 3, 4};
    EXPECT_EQ(search_window(xs, ramp, 1, 2.0, 0.0).index, (std::vector<int>{0, 4}));
    EXPECT_EQ(search_window(xs, ramp, 1, 2.0, 0.1).index, (std::vector<int>{}));
    // Uneven X: resampled, and the peak mapped to the higher of the two nearest points.
    const std::vector<double> xu = {0, 1, 2, 2.5, 3.5, 4, 5, 6, 7};
    const std::vector<double> yu = {0, 0, 1, 4, 3, 1, 0, 0, 0};
    PeakList uneven = search_window(xu, yu, 1, 2.0, 0.5);
    ASSERT_EQ(uneven.status, 0);
    ASSERT_EQ(uneven.count, 1);
    EXPECT_EQ(uneven.index[0], 3);
    EXPECT_EQ(uneven.y[0], 4.0);
    EXPECT_NEAR(uneven.x[0], 7.0 * 3.0 / 8.0, 1e-15);  // the grid abscissa stays
}

TEST(PeakDetectors, RefusalsWriteNothing) {
    const std::vector<double> x = {0, 1, 2, 3, 4}, y = {0, 1, 0, 1, 0};
    double px[5] = {-7, -7, -7, -7, -7}, py[5] = {-7, -7, -7, -7, -7};
    int idx[5] = {-7, -7, -7, -7, -7};
    struct Case {
        int n, half;
        bool null_x, null_out, null_count;
        int expected;
    };
    const Case cases[] = {
        {5, 1, true, false, false, ZEMATH_ERR_NULL_POINTER},
        {5, 1, false, true, false, ZEMATH_ERR_NULL_POINTER},
        {5, 1, false, false, true, ZEMATH_ERR_NULL_POINTER},
        {0, 1, false, false, false, ZEMATH_ERR_TOO_FEW_POINTS},
        {-3, 1, false, false, false, ZEMATH_ERR_TOO_FEW_POINTS},
        {INT_MIN, 1, false, false, false, ZEMATH_ERR_TOO_FEW_POINTS},
        {5, -1, false, false, false, ZEMATH_ERR_TOO_FEW_POINTS},
        {5, 2, false, false, false, ZEMATH_ERR_TOO_FEW_POINTS},  // 5 <= 2*2+1
        {5, INT_MAX, false, false, false, ZEMATH_ERR_TOO_FEW_POINTS},
        {1, 0, false, false, false, ZEMATH_ERR_TOO_FEW_POINTS},
    };
    for (bool extremes : {false, true}) {
        auto fn = extremes ? zemath_find_local_extremes : zemath_find_peaks_by_local_maximum;
        for (const Case& c : cases) {
            int n = c.n;
            EXPECT_EQ(fn(c.null_count ? nullptr : &n, c.null_x ? nullptr : x.data(), y.data(),
                         c.null_out ? nullptr : px, py, idx, 1, c.half),
                      c.expected);
            EXPECT_EQ(n, c.n);
        }
    }
    int n = 2;
    EXPECT_EQ(zemath_find_peaks_by_search_window(&n, x.data(), y.data(), px, py, idx, 1, 1.0, 0.0),
              ZEMATH_ERR_TOO_FEW_POINTS);
    const double bad_widths[] = {6.0, -1.0, std::nan(""), INFINITY, 1e300};
    for (double width : bad_widths) {
        n = 5;
        EXPECT_EQ(
            zemath_find_peaks_by_search_window(&n, x.data(), y.data(), px, py, idx, 1, width, 0.0),
            ZEMATH_ERR_TOO_FEW_POINTS)
            << width;
    }
    // Three points: a width of exactly two steps becomes three points and fits; a width
    // rounding to 4 becomes 5 points and does not.
    const double widths3[] = {2.0, 3.4, 3.6};
    const int status3[] = {0, 0, ZEMATH_ERR_TOO_FEW_POINTS};
    for (int k = 0; k < 3; ++k) {
        n = 3;
        double qx[3], qy[3];
        int qi[3];
        EXPECT_EQ(zemath_find_peaks_by_search_window(&n, x.data(), y.data(), qx, qy, qi, 1,
                                                     widths3[k], 0.0),
                  status3[k])
            << widths3[k];
    }
    n = 5;
    EXPECT_EQ(zemath_find_peaks_by_search_window(&n, x.data(), nullptr, px, py, idx, 1, 1.0, 0.0),
              ZEMATH_ERR_NULL_POINTER);
    // Uneven X with every Y missing: nothing to resample.
    const std::vector<double> uneven_x = {0, 1, 3, 4, 7}, missing_y(5, NANUM);
    EXPECT_EQ(zemath_find_peaks_by_search_window(&n, uneven_x.data(), missing_y.data(), px, py, idx,
                                                 1, 1.0, 0.0),
              ZEMATH_ERR_TOO_FEW_POINTS);
    // All X equal: no step, refused.
    const std::vector<double> flat_x(5, 1.0);
    EXPECT_EQ(
        zemath_find_peaks_by_search_window(&n, flat_x.data(), y.data(), px, py, idx, 1, 1.0, 0.0),
        ZEMATH_ERR_TOO_FEW_POINTS);
    for (int k = 0; k < 5; ++k) {
        EXPECT_EQ(px[k], -7.0);
        EXPECT_EQ(py[k], -7.0);
        EXPECT_EQ(idx[k], -7);
    }
}

TEST(PeakDetectors, BadDataGivesEmptyOrSaneLists) {
    const double nan = std::nan("");
    std::vector<double> x(20);
    for (int i = 0; i < 20; ++i) x[i] = i;
    const std::vector<std::vector<double>> curves = {
        std::vector<double>(20, 1.0),    // flat
        std::vector<double>(20, NANUM),  // all missing
        std::vector<double>(20, nan),    // all NaN
    };
    for (const auto& y : curves) {
        EXPECT_LE(local_maximum(x, y, 3, 2).index.size(), 1u);
        PeakList w = search_window(x, y, 3, 5.0, 0.1);
        EXPECT_EQ(w.status, 0);
        EXPECT_TRUE(w.index.empty());
    }
    std::vector<double> ramp(20);
    for (int i = 0; i < 20; ++i) ramp[i] = i + 1.0;
    EXPECT_TRUE(local_maximum(x, ramp, 1, 3).index.empty());
    // NaN run inside a curve: the search window ignores it; the peak beside it stays.
    std::vector<double> y(20, 0.5);
    y[5] = y[6] = y[7] = nan;
    y[12] = 4.0;
    EXPECT_EQ(search_window(x, y, 1, 5.0, 1.0).index, (std::vector<int>{12}));
}

PeakList first_derivative(const std::vector<double>& x, const std::vector<double>& y, int flags,
                          bool smooth, int points, int order) {
    PeakList out;
    out.count = static_cast<int>(x.size());
    out.x.assign(x.size(), -7.0);
    out.y.assign(x.size(), -7.0);
    out.index.assign(x.size(), -7);
    out.status =
        zemath_find_peaks_1st_derivative(&out.count, x.data(), y.data(), out.x.data(), out.y.data(),
                                         out.index.data(), flags, smooth, points, order);
    out.index.resize(static_cast<std::size_t>(out.status == 0 ? out.count : 0));
    return out;
}

TEST(PeakDetectors, FirstDerivativeSignChanges) {
    for (const auto& ref : kPeakCurves) {
        // Unsmoothed: every strict neighbour maximum and minimum (SciPy, order 1).
        std::vector<int> both = ref.relmax1;
        both.insert(both.end(), ref.relmin1.begin(), ref.relmin1.end());
        std::sort(both.begin(), both.end());
        EXPECT_EQ(first_derivative(ref.x, ref.y, 1 | 2 | 4, false, 0, 0).index, both);
        EXPECT_EQ(first_derivative(ref.x, ref.y, 1, false, 0, 0).index, ref.relmax1);
        // Smoothed: the tall detections sit on the true centres.
        const double lowest = *std::min_element(ref.heights.begin(), ref.heights.end());
        PeakList smooth = first_derivative(ref.x, ref.y, 1, true, 21, 2);
        ASSERT_EQ(smooth.status, 0);
        std::vector<double> tall;
        for (std::size_t k = 0; k < smooth.index.size(); ++k)
            if (smooth.y[k] > 0.5 * lowest) tall.push_back(smooth.x[k]);
        ASSERT_EQ(tall.size(), ref.centres.size());
        const double spacing = 100.0 / static_cast<double>(ref.x.size() - 1);
        for (std::size_t k = 0; k < tall.size(); ++k)
            EXPECT_NEAR(tall[k], ref.centres[k], 3.0 * spacing + 0.05) << k;
    }
    // Flat top at its left point; the sign rule; end points never.
    const std::vector<double> x = {0, 1, 2, 3, 4, 5}, y = {9, 1, 3, 3, 1, 9};
    EXPECT_EQ(first_derivative(x, y, 1, false, 0, 0).index, (std::vector<int>{2}));
    const std::vector<double> negative = {-9, -1, -3, -3, -1, -9};
    EXPECT_EQ(first_derivative(x, negative, 1, false, 0, 0).index, (std::vector<int>{}));
    EXPECT_EQ(first_derivative(x, negative, 1 | 4, false, 0, 0).index, (std::vector<int>{1, 4}));
    EXPECT_EQ(first_derivative(x, negative, 2, false, 0, 0).index, (std::vector<int>{2}));
}

TEST(PeakDetectors, FirstDerivativeCodes) {
    const std::vector<double> x = {0, 1, 2, 3, 4}, y = {0, 1, 0, 1, 0};
    const struct {
        int n;
        bool smooth;
        int points, order, expected;
    } cases[] = {
        {0, false, 0, 0, ZEMATH_ERR_TOO_FEW_POINTS},
        {-1, true, 5, 2, ZEMATH_ERR_TOO_FEW_POINTS},
        {5, true, 3, 1, ZEMATH_ERR_NEGATIVE_SMOOTHING},
        {5, true, 5, 0, ZEMATH_ERR_NEGATIVE_SMOOTHING},
        {5, true, 5, 5, ZEMATH_ERR_NEGATIVE_SMOOTHING},
        {5, true, 21, 2, ZEMATH_ERR_PEAK_PREPARE},  // window wider than the data
        {1, false, 0, 0, ZEMATH_ERR_PEAK_PREPARE},  // no slope from one point
        {5, false, 3, 9, 0},                        // settings unused without smoothing
    };
    for (const auto& c : cases) {
        int n = c.n;
        double px[5] = {-7, -7, -7, -7, -7}, py[5] = {-7, -7, -7, -7, -7};
        EXPECT_EQ(zemath_find_peaks_1st_derivative(&n, x.data(), y.data(), px, py, nullptr, 1,
                                                   c.smooth, c.points, c.order),
                  c.expected)
            << c.n << " " << c.points << " " << c.order;
        if (c.expected != 0) {
            EXPECT_EQ(n, c.n);
            EXPECT_EQ(px[0], -7.0);
        }
    }
    int n = 5;
    double px[5], py[5];
    EXPECT_EQ(zemath_find_peaks_1st_derivative(&n, x.data(), y.data(), nullptr, py, nullptr, 1,
                                               false, 0, 0),
              ZEMATH_ERR_NULL_POINTER);
    EXPECT_EQ(zemath_find_peaks_1st_derivative(nullptr, x.data(), y.data(), px, py, nullptr, 1,
                                               false, 0, 0),
              ZEMATH_ERR_NULL_POINTER);
}

TEST(PeakDetectors, SecondDerivativeFindsCentresAndShoulders) {
    for (const auto& ref : kPeakCurves) {
        // Noise-free, evenly spaced curves (on irregular X the difference Y'' is rough).
        const double d1 = ref.x[1] - ref.x[0], d2 = ref.x[2] - ref.x[1];
        if (ref.noise > 0.0 || std::fabs(d1 - d2) > 1e-9 * d1) continue;
        const double lowest = *std::min_element(ref.heights.begin(), ref.heights.end());
        const double spacing = 100.0 / static_cast<double>(ref.x.size() - 1);
        for (bool smooth : {false, true}) {
            std::vector<double> px(ref.x.size()), py(ref.x.size());
            int n = static_cast<int>(ref.x.size());
            const int status =
                smooth ? zemsp_find_peaks_2nd_derivative(&n, ref.x.data(), ref.y.data(), px.data(),
                                                         py.data(), nullptr, 1, 3, 7, 2)
                       : zemath_find_peaks_2nd_derivative(&n, ref.x.data(), ref.y.data(), px.data(),
                                                          py.data(), nullptr, 1, 3);
            ASSERT_EQ(status, 0);
            std::vector<double> tall;
            for (int k = 0; k < n; ++k)
                if (py[k] > 0.5 * lowest) tall.push_back(px[k]);
            ASSERT_EQ(tall.size(), ref.centres.size()) << smooth;
            for (std::size_t k = 0; k < tall.size(); ++k)
                EXPECT_NEAR(tall[k], ref.centres[k], 2.0 * spacing + 0.05) << k;
        }
    }
    // A shoulder: two Gaussians 2 sd apart (heights 5, 3) give one maximum but two Y'' minima.
    std::vector<double> x(401), y(401);
    for (int i = 0; i < 401; ++i) {
        x[i] = -10.0 + 0.05 * i;
        y[i] = 5.0 * std::exp(-0.5 * (x[i] + 1.0) * (x[i] + 1.0)) +
               3.0 * std::exp(-0.5 * (x[i] - 1.0) * (x[i] - 1.0));
    }
    EXPECT_EQ(first_derivative(x, y, 1, false, 0, 0).index.size(), 1u);
    int n = 401;
    std::vector<double> px(401), py(401);
    ASSERT_EQ(zemath_find_peaks_2nd_derivative(&n, x.data(), y.data(), px.data(), py.data(),
                                               nullptr, 1, 5),
              0);
    EXPECT_EQ(n, 2);
    // Codes.
    n = 5;
    EXPECT_EQ(zemath_find_peaks_2nd_derivative(&n, x.data(), y.data(), px.data(), py.data(),
                                               nullptr, 1, 2),
              ZEMATH_ERR_TOO_FEW_POINTS);
    n = 401;
    EXPECT_EQ(zemath_find_peaks_2nd_derivative(&n, nullptr, y.data(), px.data(), py.data(), nullptr,
                                               1, 2),
              ZEMATH_ERR_NULL_POINTER);
    EXPECT_EQ(zemsp_find_peaks_2nd_derivative(&n, x.data(), y.data(), px.data(), py.data(), nullptr,
                                              1, 2, 5, 1),
              ZEMATH_ERR_TOO_FEW_POINTS);
    EXPECT_EQ(zemsp_find_peaks_2nd_derivative(&n, x.data(), y.data(), px.data(), py.data(), nullptr,
                                              1, 2, 0, 2),
              ZEMATH_ERR_TOO_FEW_POINTS);
    EXPECT_EQ(n, 401);
}

TEST(PeakDetectors, HalfHeightMarkersGiveTheWidth) {
    // Generated Gaussian (centre 4, height 6, FWHM 2.5) and Lorentzian (centre 16, height
    // 3, FWHM 1.5) on a 0.01 grid: markers at half height are FWHM apart.
    const int n = 2001;
    std::vector<double> x(n), g(n), l(n), y(n);
    for (int i = 0; i < n; ++i) x[i] = 0.01 * i;
    ASSERT_EQ(zemath_generate_peak_data(n, x.data(), g.data(), 0, 4.0, 6.0, 2.5, 0.0), 0);
    ASSERT_EQ(zemath_generate_peak_data(n, x.data(), l.data(), 1, 16.0, 3.0, 1.5, 0.0), 0);
    for (int i = 0; i < n; ++i) y[i] = g[i] + l[i];
    const int peaks[] = {400, 1600, 0};
    int markers[6];
    double mx[6], my[6];
    // Each shape alone: the markers at half height are FWHM apart.
    ASSERT_EQ(zemath_find_markers_of_peaks_by_height_and_width(n, x.data(), g.data(), 1, peaks, 0.5,
                                                               markers, mx, my),
              0);
    EXPECT_NEAR(mx[1] - mx[0], 2.5, 1e-4);
    EXPECT_NEAR(my[0], 3.0, 1e-12);
    ASSERT_EQ(zemath_find_markers_of_peaks_by_height_and_width(n, x.data(), l.data(), 1, peaks + 1,
                                                               0.5, markers, mx, my),
              0);
    EXPECT_NEAR(mx[1] - mx[0], 1.5, 1e-4);
    // Both together, with a peak at the first point.
    ASSERT_EQ(zemath_find_markers_of_peaks_by_height_and_width(n, x.data(), y.data(), 3, peaks, 0.5,
                                                               markers, mx, my),
              0);
    EXPECT_NEAR(mx[3] - mx[2], 1.5, 1e-2);
    // A peak at the first point: its left marker is the point itself.
    EXPECT_EQ(markers[4], 0);
    const int outside[] = {n};
    EXPECT_EQ(zemath_find_markers_of_peaks_by_height_and_width(n, x.data(), y.data(), 1, outside,
                                                               0.5, markers, mx, my),
              ZEMATH_ERR_EMPTY_RANGE);
    EXPECT_EQ(zemath_find_markers_of_peaks_by_height_and_width(n, x.data(), y.data(), 1, peaks, 1.0,
                                                               markers, mx, my),
              ZEMATH_ERR_PARAM_RANGE);
    EXPECT_EQ(zemath_find_markers_of_peaks_by_height_and_width(0, x.data(), y.data(), 1, peaks, 0.5,
                                                               markers, mx, my),
              ZEMATH_ERR_TOO_FEW_POINTS);
    EXPECT_EQ(zemath_find_markers_of_peaks_by_height_and_width(n, x.data(), nullptr, 1, peaks, 0.5,
                                                               markers, mx, my),
              ZEMATH_ERR_NULL_POINTER);
}

TEST(PeakListFilters, ByHeightAndNumber) {
    // By height: marked peaks go to the end; the count is the position of the first index 0.
    {
        double px[] = {1, 2, 3, 4, 5}, py[] = {0.5, -6, 2, 0.1, 3};
        int idx[] = {10, 20, 30, 40, 50};
        int n = 5;
        ASSERT_EQ(zemath_test_peaks_by_height(&n, px, py, idx, 1.0), 0);
        EXPECT_EQ(n, 3);
        EXPECT_EQ((std::vector<double>(py, py + 3)), (std::vector<double>{-6, 3, 2}));
        EXPECT_EQ((std::vector<int>(idx, idx + 5)), (std::vector<int>{20, 50, 30, 0, 0}));
        EXPECT_EQ(px[3], NANUM);
        EXPECT_EQ(py[4], NANUM);
    }
    {
        // No peak marked: the count stays; a kept peak at the caller's point 0 ends it.
        double px[] = {1, 2}, py[] = {2, 5};
        int idx[] = {7, 0};
        int n = 2;
        ASSERT_EQ(zemath_test_peaks_by_height(&n, px, py, idx, 1.0), 0);
        EXPECT_EQ(n, 0);
        int idx2[] = {7, 8};
        n = 2;
        ASSERT_EQ(zemath_test_peaks_by_height(&n, px, py, idx2, 1.0), 0);
        EXPECT_EQ(n, 2);
    }
    // By number: nKeep == nPeaks only reorders; otherwise the tail is cleared.
    {
        double px[] = {1, 2, 3}, py[] = {1, -3, 2};
        int idx[] = {4, 5, 6};
        ASSERT_EQ(zemath_test_peaks_by_number(3, px, py, idx, 3), 0);
        EXPECT_EQ((std::vector<double>(px, px + 3)), (std::vector<double>{2, 3, 1}));
        EXPECT_EQ((std::vector<int>(idx, idx + 3)), (std::vector<int>{5, 6, 4}));
        ASSERT_EQ(zemath_test_peaks_by_number(3, px, py, idx, 1), 0);
        EXPECT_EQ(py[0], -3.0);
        EXPECT_EQ(px[1], NANUM);
        EXPECT_EQ(py[2], NANUM);
        EXPECT_EQ(idx[1], -1);
    }
    double px[] = {1, 2}, py[] = {1, 2};
    int idx[] = {3, 4};
    int n = 0;
    EXPECT_EQ(zemath_test_peaks_by_height(&n, px, py, idx, 1.0), ZEMATH_ERR_TOO_FEW_POINTS);
    EXPECT_EQ(zemath_test_peaks_by_height(nullptr, px, py, idx, 1.0), ZEMATH_ERR_NULL_POINTER);
    EXPECT_EQ(zemath_test_peaks_by_number(2, px, nullptr, idx, 1), ZEMATH_ERR_NULL_POINTER);
    EXPECT_EQ(zemath_test_peaks_by_number(0, px, py, idx, 1), ZEMATH_ERR_TOO_FEW_POINTS);
    EXPECT_EQ(zemath_test_peaks_by_number(2, px, py, idx, 0), ZEMATH_ERR_TOO_FEW_POINTS);
    EXPECT_EQ(zemath_test_peaks_by_number(2, px, py, idx, 3), ZEMATH_ERR_TOO_MANY_REQUESTED);
    EXPECT_EQ(px[0], 1.0);
    EXPECT_EQ(idx[1], 4);
}

TEST(PeakListFilters, MatchCentresAndOrderStatistic) {
    const double x[] = {10, 11, 12, 13}, y[] = {5, 6, 7, 8};
    const int good[] = {2, 0}, bad[] = {1, 4, 0};
    double px[3] = {-7, -7, -7}, py[3] = {-7, -7, -7};
    EXPECT_EQ(zemath_match_peaks_centers_by_index(x, y, 4, good, px, py, 2), 0);
    EXPECT_EQ(px[0], 12.0);
    EXPECT_EQ(py[1], 5.0);
    EXPECT_EQ(zemath_match_peaks_centers_by_index(x, y, 4, bad, px, py, 3), ZEMATH_ERR_EMPTY_RANGE);
    EXPECT_EQ(px[0], 11.0);  // copied before the bad index
    EXPECT_EQ(px[2], -7.0);
    EXPECT_EQ(zemath_match_peaks_centers_by_index(x, y, 4, bad, px, py, 0), 0);
    EXPECT_EQ(zemath_match_peaks_centers_by_index(x, nullptr, 4, bad, px, py, 1),
              ZEMATH_ERR_NULL_POINTER);

    std::mt19937 gen(11);
    std::uniform_real_distribution<double> u(-5, 5);
    std::vector<double> data(101);
    for (double& v : data) v = std::round(u(gen));  // ties included
    std::vector<double> sorted = data;
    std::sort(sorted.begin(), sorted.end());
    for (int k : {0, 1, 50, 99, 100}) {
        EXPECT_EQ(zemath_find_k_min_max(data.data(), 101, k, 0), sorted[k]);
        EXPECT_EQ(zemath_find_k_min_max(data.data(), 101, k, 1), sorted[100 - k]);
    }
    EXPECT_EQ(zemath_find_k_min_max(data.data(), 101, 101, 0), NANUM);
    EXPECT_EQ(zemath_find_k_min_max(data.data(), 101, -1, 0), NANUM);
    EXPECT_EQ(zemath_find_k_min_max(nullptr, 101, 1, 0), NANUM);
    const double with_nan[] = {3, std::nan(""), 1};
    EXPECT_EQ(zemath_find_k_min_max(with_nan, 3, 1, 0), 3.0);
    EXPECT_EQ(zemath_find_k_min_max(with_nan, 3, 1, 1), 1.0);
    EXPECT_TRUE(std::isnan(zemath_find_k_min_max(with_nan, 3, 2, 0)));
}

}  // namespace
