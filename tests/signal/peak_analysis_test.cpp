// Peak picking, peak extents, derivative-centred peaks, markers by width and by centre,
// trimming by curvature, and the masked, end-weighted and small-curvature baselines:
// SciPy's find_peaks and prominences, numpy.polyfit, analytic peak shapes, hand-worked
// extents, and every status code with outputs left untouched on refusal.
#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <functional>
#include <limits>
#include <random>
#include <vector>

#include "signal/peaks.hpp"
#include "zemath/baseline.h"
#include "zemath/peak_measures.h"
#include "zemath/peaks.h"
#include "zemath/status.h"
#include "zemath/types.h"

namespace {

struct PickCurve {
    std::vector<double> x, y;
};
struct PickReference {
    int curve, flags;
    double height, prominence;
    int distance;
    std::vector<int> expected;
};
struct ProminenceReference {
    int curve;
    std::vector<int> peaks;
    std::vector<double> prominence;
};
struct EndLineReference {
    std::vector<double> x, y;
    int end_points;
    std::vector<double> line;
};
struct FlatNoiseReference {
    std::vector<double> y;
    int segment;
    double level, sd;
};

struct MomentReference {
    std::vector<double> x, y, base;
    int method;
    double area, centroid, variance, skewness, kurtosis;
};

#include "reference/peak_analysis_ref.inc"

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

struct Picked {
    int status = 0;
    std::vector<double> x, y;
    std::vector<int> index;
};

Picked pick(const std::vector<double>& x, const std::vector<double>& y, int flags, double height,
            double prominence, int distance) {
    Picked out;
    int n = static_cast<int>(x.size());
    out.x.assign(x.size(), -7.0);
    out.y.assign(x.size(), -7.0);
    out.index.assign(x.size(), -7);
    out.status = zemath_pick_peaks(&n, x.data(), y.data(), out.x.data(), out.y.data(),
                                   out.index.data(), flags, height, prominence, distance);
    const auto count = static_cast<std::size_t>(out.status == 0 ? n : 0);
    out.x.resize(count);
    out.y.resize(count);
    out.index.resize(count);
    return out;
}

std::vector<double> iota(int n, double step = 1.0, double start = 0.0) {
    std::vector<double> v(static_cast<std::size_t>(n));
    for (int i = 0; i < n; ++i) v[static_cast<std::size_t>(i)] = start + step * i;
    return v;
}

double gaussian(double x, double centre, double height, double fwhm) {
    return height * std::exp(-4.0 * std::log(2.0) * (x - centre) * (x - centre) / (fwhm * fwhm));
}

TEST(PickPeaks, MatchesScipyFindPeaks) {
    for (const PickReference& ref : kPickCases) {
        const PickCurve& curve = kPickCurves[ref.curve];
        const Picked got =
            pick(curve.x, curve.y, ref.flags, ref.height, ref.prominence, ref.distance);
        ASSERT_EQ(got.status, 0);
        EXPECT_EQ(got.index, ref.expected)
            << "curve " << ref.curve << " flags " << ref.flags << " h " << ref.height << " p "
            << ref.prominence << " d " << ref.distance;
        for (std::size_t k = 0; k < got.index.size(); ++k)
            EXPECT_EQ(got.y[k], curve.y[static_cast<std::size_t>(got.index[k])]);
    }
}

TEST(PickPeaks, ProminencesMatchScipy) {
    for (const ProminenceReference& ref : kProminenceCases) {
        const std::vector<double>& y = kPickCurves[ref.curve].y;
        const std::vector<double> got = zemath::prominences(y, ref.peaks);
        ASSERT_EQ(got.size(), ref.prominence.size());
        for (std::size_t k = 0; k < got.size(); ++k)
            EXPECT_EQ(got[k], ref.prominence[k]) << k;  // differences of data values: exact
    }
}

TEST(PickPeaks, ConventionsAndEdges) {
    const double m = NANUM;
    struct Case {
        const char* what;
        std::vector<double> y;
        int flags;
        double height, prominence;
        int distance;
        std::vector<int> expected;
    };
    const Case cases[] = {
        {"plateau at its left point", {0, 1, 3, 3, 3, 1, 0}, 1, 0, 0, 1, {2}},
        {"a step up is no peak", {0, 1, 3, 3, 4, 1, 0}, 1, 0, 0, 1, {4}},
        {"end points never", {5, 1, 2, 1, 5}, 1, 0, 0, 1, {2}},
        {"sign rule drops Y <= 0", {-3, -1, -2, 0, -2, 1, 0}, 1, 0, 0, 1, {5}},
        {"bit 4 keeps them", {-3, -1, -2, 0, -2, 1, 0}, 5, 0, 0, 1, {1, 3, 5}},
        {"minima need Y < 0", {1, -1, 2, 0.5, 2}, 2, 0, 0, 1, {1}},
        {"both kinds in index order", {-1, 2, -3, 4, -5, 1}, 3, 0, 0, 1, {1, 2, 3, 4}},
        {"height on |Y|", {0, 2, 0, 5, 0, -6, 0}, 7, 3, 0, 1, {3, 5}},
        {"missing and NaN never peaks, passed over",
         {0, 1, m, 0.5, 4, kNan, 3, 0},
         1,
         0,
         0,
         1,
         {1, 4}},
        {"distance keeps the taller", {0, 3, 0, 5, 0, 4, 0, 1, 0}, 1, 0, 0, 3, {3, 7}},
        {"prominence against the higher base", {0, 5, 1, 2, 0, 9, 0}, 1, 0, 1.5, 1, {1, 5}},
        {"no direction bits", {0, 1, 0}, 4, 0, 0, 1, {}},
        {"two points", {0, 1}, 1, 0, 0, 1, {}},
    };
    for (const Case& c : cases) {
        const int n = static_cast<int>(c.y.size());
        const Picked got = pick(iota(n), c.y, c.flags, c.height, c.prominence, c.distance);
        ASSERT_EQ(got.status, 0) << c.what;
        EXPECT_EQ(got.index, c.expected) << c.what;
    }
    // X in decreasing order: picked on the sorted copy, indices mapped back.
    const std::vector<double> x = {6, 5, 4, 3, 2, 1, 0}, y = {0, 1, 0, 2, 0, 3, 0};
    const Picked got = pick(x, y, 1, 0, 0, 1);
    ASSERT_EQ(got.status, 0);
    EXPECT_EQ(got.index, (std::vector<int>{5, 3, 1}));
    EXPECT_EQ(got.x, (std::vector<double>{1, 3, 5}));
}

TEST(PeakPartition, WalksToTheValleys) {
    const std::vector<double> y = {0, 1, 3, 5, 9, 4, 2, 2.5, 1, 0.5, 3, 0};
    const std::vector<double> x = iota(12);
    struct Case {
        double peak_x;
        int flags, threshold, left, right;
    };
    const Case cases[] = {
        {4.0, 1, 0, 0, 6},   // stops at the first valley, 2 < 2.5
        {4.0, 1, 1, 0, 11},  // steps over one point that fails, then to the end
        {4.5, 1, 0, 0, 6},   // equal distances: the first point (4)
        {6.2, 2, 0, 4, 7},   // a minimum: walks up on both sides
        {4.0, 1 | 4, 2, 0, 11},
    };
    for (const Case& c : cases) {
        int left = -7, right = -7;
        ASSERT_EQ(zemath_find_peaks_partition(12, x.data(), y.data(), c.peak_x, c.flags,
                                              c.threshold, &left, &right),
                  0);
        EXPECT_EQ(left, c.left) << c.peak_x << " " << c.threshold;
        EXPECT_EQ(right, c.right) << c.peak_x << " " << c.threshold;
    }
    // Missing values are passed over, not counted.
    const std::vector<double> holes = {0, NANUM, 1, 5, 2, NANUM, 1, 3};
    int left = -7, right = -7;
    ASSERT_EQ(
        zemath_find_peaks_partition(8, iota(8).data(), holes.data(), 3.0, 1, 0, &left, &right), 0);
    EXPECT_EQ(left, 0);
    EXPECT_EQ(right, 6);
}

TEST(CentralizedPeaks, ExactOnParabolasAndCloseOnGaussians) {
    const std::vector<double> x = iota(7, 0.5);
    std::vector<double> y(7), dy(7);
    for (double sign : {1.0, -1.0}) {
        for (std::size_t i = 0; i < 7; ++i) {
            y[i] = sign * (4.0 - (x[i] - 1.3) * (x[i] - 1.3));
            dy[i] = sign * -2.0 * (x[i] - 1.3);
        }
        int n = 7;
        double px[7], py[7];
        int idx[7];
        ASSERT_EQ(zemath_find_peak_by_derivative_centralized(&n, x.data(), y.data(), dy.data(), px,
                                                             py, idx, sign > 0 ? 1 : 2),
                  0);
        ASSERT_EQ(n, 1);
        EXPECT_NEAR(px[0], 1.3, 4e-16);
        EXPECT_NEAR(py[0], sign * 4.0, 4e-15);
        EXPECT_EQ(idx[0], 3);  // 1.3 is nearer 1.5 than 1.0
    }
    // The sign rule applies to the estimated Y.
    for (std::size_t i = 0; i < 7; ++i) {
        y[i] = -1.0 - (x[i] - 1.3) * (x[i] - 1.3);
        dy[i] = -2.0 * (x[i] - 1.3);
    }
    double px[7], py[7];
    int idx[7];
    int n = 7;
    ASSERT_EQ(zemath_find_peak_by_derivative_centralized(&n, x.data(), y.data(), dy.data(), px, py,
                                                         idx, 1),
              0);
    EXPECT_EQ(n, 0);
    n = 7;
    ASSERT_EQ(zemath_find_peak_by_derivative_centralized(&n, x.data(), y.data(), dy.data(), px, py,
                                                         idx, 5),
              0);
    EXPECT_EQ(n, 1);
    // Two Gaussians sampled coarsely with their exact derivative: centres to O(step^2).
    const std::vector<double> gx = iota(201, 0.25);
    std::vector<double> gy(201), gd(201);
    for (std::size_t i = 0; i < 201; ++i) {
        const double a = gx[i] - 17.1, b = gx[i] - 33.37, sa = 2.0, sb = 3.0;
        gy[i] = 6 * std::exp(-a * a / (2 * sa * sa)) + 4 * std::exp(-b * b / (2 * sb * sb));
        gd[i] = -6 * a / (sa * sa) * std::exp(-a * a / (2 * sa * sa)) -
                4 * b / (sb * sb) * std::exp(-b * b / (2 * sb * sb));
    }
    std::vector<double> gpx(201), gpy(201);
    std::vector<int> gidx(201);
    n = 201;
    ASSERT_EQ(zemath_find_peak_by_derivative_centralized(&n, gx.data(), gy.data(), gd.data(),
                                                         gpx.data(), gpy.data(), gidx.data(), 3),
              0);
    ASSERT_EQ(n, 2);  // two maxima; the valley between them is positive: no minimum
    EXPECT_NEAR(gpx[0], 17.1, 2e-3);
    EXPECT_NEAR(gpy[0], 6.0 + 4 * std::exp(-(17.1 - 33.37) * (17.1 - 33.37) / 18), 2e-3);
    EXPECT_NEAR(gpx[1], 33.37, 2e-3);
}

TEST(Markers, FullWidthAndCentres) {
    // Gaussian peaks of known FWHM: the half-height markers are the FWHM apart.
    const std::vector<double> x = iota(2001, 0.05);
    std::vector<double> y(x.size());
    for (std::size_t i = 0; i < x.size(); ++i)
        y[i] = gaussian(x[i], 20.0, 5.0, 2.0) + gaussian(x[i], 60.0, 1.0, 6.0) +
               gaussian(x[i], 80.0, 8.0, 0.8);
    std::vector<int> peaks = {400, 1200, 1600};
    int count = 3;
    int markers[6] = {-7, -7, -7, -7, -7, -7};
    double mx[6], my[6];
    // Keep peaks at least 2 high and 1.5 wide at half height: only the first.
    ASSERT_EQ(zemath_find_markers_of_peaks_by_height_and_full_width(
                  2001, x.data(), y.data(), &count, peaks.data(), 0.5, 2.0, 1.5, markers, mx, my),
              0);
    ASSERT_EQ(count, 1);
    EXPECT_EQ(peaks[0], 400);
    EXPECT_NEAR(mx[1] - mx[0], 2.0, 1e-3);
    EXPECT_NEAR(my[0], 2.5, 1e-12);
    EXPECT_EQ(markers[2], -7);  // past the kept ones: untouched
    // No criteria: all three, with their FWHM.
    peaks = {400, 1200, 1600};
    count = 3;
    ASSERT_EQ(zemath_find_markers_of_peaks_by_height_and_full_width(
                  2001, x.data(), y.data(), &count, peaks.data(), 0.5, 0.0, 0.0, markers, mx, my),
              0);
    ASSERT_EQ(count, 3);
    const double widths[] = {2.0, 6.0, 0.8};
    for (int k = 0; k < 3; ++k) EXPECT_NEAR(mx[2 * k + 1] - mx[2 * k], widths[k], 2e-3) << k;
    // Centres off the grid: the window finds the top; its markers bracket it.
    const double centres[] = {20.013, 59.7, 80.2};
    int found[3] = {-7, -7, -7};
    ASSERT_EQ(zemath_find_markers_of_peak_centers_by_height_and_width(
                  2001, x.data(), y.data(), 3, centres, 0.5, 1.0, markers, mx, my, found),
              0);
    EXPECT_EQ(found[0], 400);
    EXPECT_EQ(found[1], 1200);
    EXPECT_EQ(found[2], 1600);
    for (int k = 0; k < 3; ++k) EXPECT_NEAR(mx[2 * k + 1] - mx[2 * k], widths[k], 2e-3) << k;
    // A window of 0: the point nearest the centre is taken as it is.
    ASSERT_EQ(zemath_find_markers_of_peak_centers_by_height_and_width(
                  2001, x.data(), y.data(), 1, centres + 1, 0.5, 0.0, markers, mx, my, found),
              0);
    EXPECT_EQ(found[0], 1194);
}

TEST(TrimByCurvature, KeepsTheCoreAndTheRisingTail) {
    // Gaussian of sd 1: Y'' has its tail maxima at +-sqrt(3).
    std::vector<double> x = iota(321, 0.05, -8.0), y(x.size());
    for (std::size_t i = 0; i < x.size(); ++i) y[i] = 3.0 * std::exp(-0.5 * x[i] * x[i]) + 0.0;
    const std::vector<double> x0 = x;
    ASSERT_EQ(zemath_trim_peak_part_by_2nd_derivative(321, x.data(), y.data()), 0);
    for (std::size_t i = 0; i < x.size(); ++i) {
        const bool kept = x[i] != NANUM;
        EXPECT_EQ(kept, y[i] != NANUM);
        if (std::fabs(x0[i]) < std::sqrt(3.0) - 0.08) {
            EXPECT_TRUE(kept) << x0[i];
        }
        if (std::fabs(x0[i]) > std::sqrt(3.0) + 0.08) {
            EXPECT_FALSE(kept) << x0[i];
        }
    }
    // A negative peak is trimmed the same way; a flat curve and short input are left alone.
    for (std::size_t i = 0; i < x.size(); ++i) {
        x[i] = x0[i];
        y[i] = -3.0 * std::exp(-0.5 * x[i] * x[i]);
    }
    ASSERT_EQ(zemath_trim_peak_part_by_2nd_derivative(321, x.data(), y.data()), 0);
    EXPECT_EQ(x[0], NANUM);
    EXPECT_EQ(x[160], 0.0);
    std::vector<double> flat(5, 0.0), fx = iota(5);
    ASSERT_EQ(zemath_trim_peak_part_by_2nd_derivative(5, fx.data(), flat.data()), 0);
    EXPECT_EQ(fx, iota(5));
}

TEST(Baselines, MaskingPeaksRecoversTheLine) {
    const std::vector<double> x = iota(1001, 0.1);
    std::vector<double> y(x.size()), truth(x.size());
    std::mt19937 gen(5);
    std::normal_distribution<double> noise(0.0, 0.02);
    for (std::size_t i = 0; i < x.size(); ++i) {
        truth[i] = 1.0 + 0.02 * x[i];
        y[i] =
            truth[i] + gaussian(x[i], 30.0, 5.0, 3.0) + gaussian(x[i], 65.0, 8.0, 5.0) + noise(gen);
    }
    std::vector<double> bx(x.size(), -7.0), by(x.size(), -7.0);
    ASSERT_EQ(zemath_create_baseline_by_masking_peaks(1001, x.data(), y.data(), 1001, bx.data(),
                                                      by.data(), 1),
              0);
    EXPECT_EQ(bx, x);
    double worst = 0.0;
    for (std::size_t i = 0; i < x.size(); ++i) worst = std::max(worst, std::fabs(by[i] - truth[i]));
    // Within the noise (5 sd) and 1% of the smaller peak's height.
    EXPECT_LT(worst, 5 * 0.02 + 0.05);
    // No peak direction asked: the baseline is the data; pBaseX may be pX.
    std::vector<double> same_x = x;
    ASSERT_EQ(zemath_create_baseline_by_masking_peaks(1001, same_x.data(), y.data(), 1001,
                                                      same_x.data(), by.data(), 0),
              0);
    EXPECT_EQ(by, y);
    EXPECT_EQ(same_x, x);
    // Missing points are masked and bridged.
    std::vector<double> line = {1, 2, NANUM, 4, 5};
    ASSERT_EQ(zemath_create_baseline_by_masking_peaks(5, iota(5).data(), line.data(), 5, bx.data(),
                                                      by.data(), 1),
              0);
    EXPECT_EQ(by[2], 3.0);
}

TEST(Baselines, EndWeightedLineMatchesPolyfit) {
    for (const EndLineReference& ref : kEndLineCases) {
        const int n = static_cast<int>(ref.x.size());
        std::vector<double> base(ref.x.size(), -7.0);
        ASSERT_EQ(zemath_create_baseline_end_weighted_linear(n, ref.x.data(), ref.y.data(),
                                                             ref.end_points, base.data()),
                  0);
        for (std::size_t i = 0; i < base.size(); ++i)
            EXPECT_NEAR(base[i], ref.line[i], 1e-12 * (1.0 + std::fabs(ref.line[i])))
                << n << " " << i;
    }
}

TEST(Baselines, SmallCurvaturePartsLieOffThePeak) {
    const std::vector<double> x = iota(801, 0.125);
    std::vector<double> y(x.size()), noisy(x.size());
    std::mt19937 gen(9);
    std::normal_distribution<double> noise(0.0, 0.005);
    for (std::size_t i = 0; i < x.size(); ++i) {
        y[i] = 0.5 + 0.1 * x[i] + gaussian(x[i], 50.0, 10.0, 6.0);
        noisy[i] = y[i] + noise(gen);
    }
    std::vector<int> idx(x.size(), -7);
    const auto check = [&](int count) {
        ASSERT_GT(count, 0);
        std::vector<char> chosen(x.size(), 0);
        for (int k = 0; k < count; ++k) chosen[static_cast<std::size_t>(idx[k])] = 1;
        for (std::size_t i = 0; i < x.size(); ++i) {
            const double d = std::fabs(x[i] - 50.0);
            if (d > 15.0 && i > 20 && i + 20 < x.size()) {
                EXPECT_TRUE(chosen[i]) << x[i];
            }
            if (d < 1.5) {  // the core (the inflection points at +-2.55 have Y'' = 0)
                EXPECT_FALSE(chosen[i]) << x[i];
            }
        }
    };
    check(zemath_find_baseline_part_by_small_curvature(801, x.data(), y.data(), 0.02, idx.data()));
    check(zemath_find_baseline_part_by_small_curvature2(801, x.data(), noisy.data(), 0.05, 41, 4,
                                                        idx.data()));
}

TEST(Baselines, NoiseOfTheFlattestPart) {
    for (const FlatNoiseReference& ref : kFlatNoiseCases) {
        const int n = static_cast<int>(ref.y.size());
        const double level = zemath_get_noise_level_of_flat_part(n, ref.y.data(), ref.segment);
        EXPECT_NEAR(level, ref.level, 1e-14 * ref.level) << n;
        // The estimate itself, when a segment free of the peak exists.
        if (n / ref.segment >= 4) {
            EXPECT_NEAR(level, ref.sd, 0.25 * ref.sd) << n;
        }
    }
}

TEST(PeakAnalysis, RefusalsWriteNothing) {
    const std::vector<double> x = iota(6), y = {0, 1, 3, 1, 0, 0}, dy = {1, 1, 0, -1, -1, 0};
    const std::vector<double> down = {5, 4, 3, 2, 1, 0};
    const std::vector<double> same = {0, 1, 1, 2, 3, 4};
    double ox[12], oy[12];
    int oi[12], count = 6, left = -7, right = -7;
    int peaks[2] = {2, 9}, good_peaks[1] = {2}, npk = 1;
    const double centres[1] = {2.0}, bad_centre[1] = {9.0}, nan_centre[1] = {kNan};
    const auto reset = [&] {
        std::fill(ox, ox + 12, -7.0);
        std::fill(oy, oy + 12, -7.0);
        std::fill(oi, oi + 12, -7);
        count = 6;
        npk = 1;
        left = right = -7;
    };
    struct Case {
        const char* what;
        std::function<int()> call;
        int expected;
    };
    const double* X = x.data();
    const double* Y = y.data();
    const Case cases[] = {
        {"partition null",
         [&] { return zemath_find_peaks_partition(6, X, nullptr, 2, 1, 0, &left, &right); },
         ZEMATH_ERR_NULL_POINTER},
        {"partition n",
         [&] { return zemath_find_peaks_partition(0, X, Y, 2, 1, 0, &left, &right); },
         ZEMATH_ERR_TOO_FEW_POINTS},
        {"partition flags none",
         [&] { return zemath_find_peaks_partition(6, X, Y, 2, 4, 0, &left, &right); },
         ZEMATH_ERR_BAD_OPTION},
        {"partition flags both",
         [&] { return zemath_find_peaks_partition(6, X, Y, 2, 3, 0, &left, &right); },
         ZEMATH_ERR_BAD_OPTION},
        {"partition threshold",
         [&] { return zemath_find_peaks_partition(6, X, Y, 2, 1, -1, &left, &right); },
         ZEMATH_ERR_NEGATIVE_PARAM},
        {"partition outside",
         [&] { return zemath_find_peaks_partition(6, X, Y, 5.5, 1, 0, &left, &right); },
         ZEMATH_ERR_EMPTY_RANGE},
        {"partition NaN",
         [&] { return zemath_find_peaks_partition(6, X, Y, kNan, 1, 0, &left, &right); },
         ZEMATH_ERR_EMPTY_RANGE},
        {"centralized null index",
         [&] {
             return zemath_find_peak_by_derivative_centralized(&count, X, Y, dy.data(), ox, oy,
                                                               nullptr, 1);
         },
         ZEMATH_ERR_NULL_POINTER},
        {"centralized n",
         [&] {
             count = 1;
             return zemath_find_peak_by_derivative_centralized(&count, X, Y, dy.data(), ox, oy, oi,
                                                               1);
         },
         ZEMATH_ERR_TOO_FEW_POINTS},
        {"centralized X",
         [&] {
             return zemath_find_peak_by_derivative_centralized(&count, same.data(), Y, dy.data(),
                                                               ox, oy, oi, 1);
         },
         ZEMATH_ERR_NOT_MONOTONIC},
        {"pick null", [&] { return zemath_pick_peaks(nullptr, X, Y, ox, oy, oi, 1, 0, 0, 1); },
         ZEMATH_ERR_NULL_POINTER},
        {"pick n",
         [&] {
             count = INT_MIN;
             return zemath_pick_peaks(&count, X, Y, ox, oy, oi, 1, 0, 0, 1);
         },
         ZEMATH_ERR_TOO_FEW_POINTS},
        {"pick distance", [&] { return zemath_pick_peaks(&count, X, Y, ox, oy, oi, 1, 0, 0, 0); },
         ZEMATH_ERR_PARAM_RANGE},
        {"pick NaN height",
         [&] { return zemath_pick_peaks(&count, X, Y, ox, oy, oi, 1, kNan, 0, 1); },
         ZEMATH_ERR_PARAM_RANGE},
        {"full width null",
         [&] {
             return zemath_find_markers_of_peaks_by_height_and_full_width(
                 6, X, Y, nullptr, good_peaks, 0.5, 0, 0, oi, ox, oy);
         },
         ZEMATH_ERR_NULL_POINTER},
        {"full width n",
         [&] {
             return zemath_find_markers_of_peaks_by_height_and_full_width(0, X, Y, &npk, good_peaks,
                                                                          0.5, 0, 0, oi, ox, oy);
         },
         ZEMATH_ERR_TOO_FEW_POINTS},
        {"full width index",
         [&] {
             npk = 2;
             return zemath_find_markers_of_peaks_by_height_and_full_width(6, X, Y, &npk, peaks, 0.5,
                                                                          0, 0, oi, ox, oy);
         },
         ZEMATH_ERR_EMPTY_RANGE},
        {"full width fraction",
         [&] {
             return zemath_find_markers_of_peaks_by_height_and_full_width(6, X, Y, &npk, good_peaks,
                                                                          1.0, 0, 0, oi, ox, oy);
         },
         ZEMATH_ERR_PARAM_RANGE},
        {"full width NaN width",
         [&] {
             return zemath_find_markers_of_peaks_by_height_and_full_width(6, X, Y, &npk, good_peaks,
                                                                          0.5, 0, kNan, oi, ox, oy);
         },
         ZEMATH_ERR_PARAM_RANGE},
        {"centres null",
         [&] {
             return zemath_find_markers_of_peak_centers_by_height_and_width(
                 6, X, Y, 1, nullptr, 0.5, 1, oi, ox, oy, nullptr);
         },
         ZEMATH_ERR_NULL_POINTER},
        {"centres n",
         [&] {
             return zemath_find_markers_of_peak_centers_by_height_and_width(
                 6, X, Y, -1, centres, 0.5, 1, oi, ox, oy, nullptr);
         },
         ZEMATH_ERR_TOO_FEW_POINTS},
        {"centres width",
         [&] {
             return zemath_find_markers_of_peak_centers_by_height_and_width(
                 6, X, Y, 1, centres, 0.5, -1, oi, ox, oy, nullptr);
         },
         ZEMATH_ERR_PARAM_RANGE},
        {"centres X",
         [&] {
             return zemath_find_markers_of_peak_centers_by_height_and_width(
                 6, down.data(), Y, 1, centres, 0.5, 1, oi, ox, oy, nullptr);
         },
         ZEMATH_ERR_NOT_MONOTONIC},
        {"centres outside",
         [&] {
             return zemath_find_markers_of_peak_centers_by_height_and_width(
                 6, X, Y, 1, bad_centre, 0.5, 1, oi, ox, oy, nullptr);
         },
         ZEMATH_ERR_EMPTY_RANGE},
        {"centres NaN",
         [&] {
             return zemath_find_markers_of_peak_centers_by_height_and_width(
                 6, X, Y, 1, nan_centre, 0.5, 1, oi, ox, oy, nullptr);
         },
         ZEMATH_ERR_EMPTY_RANGE},
        {"trim null", [&] { return zemath_trim_peak_part_by_2nd_derivative(6, ox, nullptr); },
         ZEMATH_ERR_NULL_POINTER},
        {"mask null",
         [&] { return zemath_create_baseline_by_masking_peaks(6, X, Y, 6, ox, nullptr, 1); },
         ZEMATH_ERR_NULL_POINTER},
        {"mask n", [&] { return zemath_create_baseline_by_masking_peaks(0, X, Y, 0, ox, oy, 1); },
         ZEMATH_ERR_TOO_FEW_POINTS},
        {"mask out size",
         [&] { return zemath_create_baseline_by_masking_peaks(6, X, Y, 5, ox, oy, 1); },
         ZEMATH_ERR_TOO_FEW_POINTS},
        {"mask X",
         [&] { return zemath_create_baseline_by_masking_peaks(6, same.data(), Y, 6, ox, oy, 1); },
         ZEMATH_ERR_NOT_MONOTONIC},
        {"end line null",
         [&] { return zemath_create_baseline_end_weighted_linear(6, X, Y, 2, nullptr); },
         ZEMATH_ERR_NULL_POINTER},
        {"end line ends",
         [&] { return zemath_create_baseline_end_weighted_linear(6, X, Y, 4, ox); },
         ZEMATH_ERR_TOO_FEW_POINTS},
        {"end line n", [&] { return zemath_create_baseline_end_weighted_linear(1, X, Y, 1, ox); },
         ZEMATH_ERR_TOO_FEW_POINTS},
        {"curvature null",
         [&] { return zemath_find_baseline_part_by_small_curvature(6, X, Y, 0.1, nullptr); },
         ZEMATH_ERR_NULL_POINTER},
        {"curvature n",
         [&] { return zemath_find_baseline_part_by_small_curvature(2, X, Y, 0.1, oi); },
         ZEMATH_ERR_TOO_FEW_DERIV},
        {"curvature fraction",
         [&] { return zemath_find_baseline_part_by_small_curvature(6, X, Y, kNan, oi); },
         ZEMATH_ERR_PARAM_RANGE},
        {"curvature2 smoothing",
         [&] { return zemath_find_baseline_part_by_small_curvature2(6, X, Y, 0.1, 5, 1, oi); },
         ZEMATH_ERR_NEGATIVE_SMOOTHING},
        {"curvature2 window",
         [&] { return zemath_find_baseline_part_by_small_curvature2(6, X, Y, 0.1, 9, 2, oi); },
         ZEMATH_ERR_TOO_FEW_POINTS},
    };
    for (const Case& c : cases) {
        reset();
        EXPECT_EQ(c.call(), c.expected) << c.what;
        for (int k = 0; k < 12; ++k) {
            EXPECT_EQ(ox[k], -7.0) << c.what;
            EXPECT_EQ(oy[k], -7.0) << c.what;
            EXPECT_EQ(oi[k], -7) << c.what;
        }
        EXPECT_EQ(left, -7) << c.what;
    }
    // All-missing curves: no usable point.
    const std::vector<double> missing(6, NANUM);
    reset();
    EXPECT_EQ(zemath_find_peaks_partition(6, X, missing.data(), 2, 1, 0, &left, &right),
              ZEMATH_ERR_EMPTY_RANGE);
    EXPECT_EQ(zemath_create_baseline_by_masking_peaks(6, X, missing.data(), 6, ox, oy, 1),
              ZEMATH_ERR_PEAK_PREPARE);  // the peak search has no derivative to work on
    EXPECT_EQ(zemath_create_baseline_by_masking_peaks(6, X, missing.data(), 6, ox, oy, 0),
              ZEMATH_ERR_NO_USABLE_VALUE);
    EXPECT_EQ(zemath_create_baseline_end_weighted_linear(6, X, missing.data(), 2, ox),
              ZEMATH_ERR_NO_USABLE_VALUE);
    EXPECT_EQ(zemath_find_baseline_part_by_small_curvature(6, X, missing.data(), 0.1, oi),
              ZEMATH_ERR_NULL_CURVE);  // -8: fewer than two usable points
    EXPECT_EQ(ox[0], -7.0);
    EXPECT_EQ(oi[0], -7);
    // Noise of the flat part: NANUM for every refusal.
    EXPECT_EQ(zemath_get_noise_level_of_flat_part(6, nullptr, 3), NANUM);
    EXPECT_EQ(zemath_get_noise_level_of_flat_part(6, Y, 2), NANUM);
    EXPECT_EQ(zemath_get_noise_level_of_flat_part(6, Y, 7), NANUM);
    EXPECT_EQ(zemath_get_noise_level_of_flat_part(6, missing.data(), 3), NANUM);
}

TEST(PeakMeasures, MomentsMatchTrapzAndSimpson) {
    for (const MomentReference& ref : kMomentCases) {
        const int n = static_cast<int>(ref.x.size());
        double m[8];
        ASSERT_EQ(zemath_calc_peak_moments_ex(n, ref.x.data(), ref.y.data(), ref.base.data(), 0,
                                              n - 1, ref.method, m),
                  0);
        const double expected[5] = {ref.area, ref.centroid, ref.variance, ref.skewness,
                                    ref.kurtosis};
        for (int k = 0; k < 5; ++k)
            EXPECT_NEAR(m[k], expected[k], 1e-12 * std::fabs(expected[k])) << n << " " << k;
        // The top is a data point; the half-height width brackets it.
        std::size_t top = 0;
        for (std::size_t i = 0; i < ref.x.size(); ++i)
            if (ref.y[i] - ref.base[i] > ref.y[top] - ref.base[top]) top = i;
        EXPECT_EQ(m[5], ref.y[top] - ref.base[top]);
        EXPECT_EQ(m[6], ref.x[top]);
        EXPECT_GT(m[7], 0.0);
    }
}

TEST(PeakMeasures, GaussianMomentsWidthsAndInflections) {
    // A Gaussian of height 4, centre 10.3, sd 0.8 on a step of sd/4.
    const double centre = 10.3, sd = 0.8, height = 4.0;
    const std::vector<double> x = iota(161, 0.2);
    std::vector<double> y(x.size());
    for (std::size_t i = 0; i < x.size(); ++i)
        y[i] = height * std::exp(-0.5 * (x[i] - centre) * (x[i] - centre) / (sd * sd));
    double m[8];
    ASSERT_EQ(zemath_calc_peak_moments_ex(161, x.data(), y.data(), nullptr, 0, 160, 1, m), 0);
    EXPECT_NEAR(m[0], height * sd * std::sqrt(2 * M_PI), 1e-9);
    EXPECT_NEAR(m[1], centre, 1e-9);
    EXPECT_NEAR(m[2], sd * sd, 1e-8);
    EXPECT_NEAR(m[3], 0.0, 1e-8);
    EXPECT_NEAR(m[4], 3.0, 1e-7);
    const double fwhm = 2 * std::sqrt(2 * std::log(2.0)) * sd;
    EXPECT_NEAR(m[7], fwhm, 0.01 * fwhm);  // linear crossings on a step of sd/4
    const int top = 52;                    // x = 10.4, the sample nearest the centre
    double left = 0, right = 0;
    ASSERT_EQ(zemath_find_xs(161, x.data(), y.data(), top, 0.5, &left, &right), 0);
    EXPECT_NEAR(right - left, fwhm, 0.01 * fwhm);
    EXPECT_NEAR(0.5 * (left + right), centre, 2e-3);
    // Inflection points at centre -+ sd: finite differences to O(step^2), the spline far closer.
    double fd_left = 0, fd_right = 0, sp_left = 0, sp_right = 0;
    ASSERT_EQ(zemath_find_inflection_point(161, x.data(), y.data(), top, &fd_left, &fd_right), 0);
    ASSERT_EQ(
        zemath_iterate_for_finding_inflection(161, x.data(), y.data(), top, &sp_left, &sp_right),
        0);
    EXPECT_NEAR(fd_left, centre - sd, 0.03 * sd);
    EXPECT_NEAR(fd_right, centre + sd, 0.03 * sd);
    EXPECT_NEAR(sp_left, centre - sd, 4e-3 * sd);
    EXPECT_NEAR(sp_right, centre + sd, 4e-3 * sd);
    EXPECT_LT(std::fabs(sp_left - (centre - sd)), std::fabs(fd_left - (centre - sd)));
    // A negative peak mirrors everything.
    for (double& v : y) v = -v;
    double nl = 0, nr = 0;
    ASSERT_EQ(zemath_iterate_for_finding_inflection(161, x.data(), y.data(), top, &nl, &nr), 0);
    EXPECT_EQ(nl, sp_left);
    EXPECT_EQ(nr, sp_right);
    ASSERT_EQ(zemath_find_xs(161, x.data(), y.data(), top, 0.5, &nl, &nr), 0);
    EXPECT_EQ(nl, left);
    EXPECT_EQ(nr, right);
}

TEST(PeakMeasures, GeneratedPeaksAndSegments) {
    double px[7];
    ASSERT_EQ(zemath_generate_peak_x_array(7, 3.0, 0.2, 2.5, px), 0);
    EXPECT_EQ(px[0], 2.5);
    EXPECT_EQ(px[3], 3.0);
    EXPECT_EQ(px[6], 3.5);
    for (int i = 0; i < 3; ++i) EXPECT_EQ(px[i] - 3.0, 3.0 - px[6 - i]);
    ASSERT_EQ(zemath_generate_peak_x_array(1, 3.0, 0.2, 2.5, px), 0);
    EXPECT_EQ(px[0], 3.0);
    // Generated Lorentzian on generated X: its half-height positions are centre -+ w/2.
    std::vector<double> gx(201), gy(201);
    ASSERT_EQ(zemath_generate_peak_x_array(201, 5.0, 2.0, 5.0, gx.data()), 0);
    ASSERT_EQ(zemath_generate_peak_data(201, gx.data(), gy.data(), ZEMATH_PEAK_LORENTZIAN, 5.0, 3.0,
                                        2.0, 0.0),
              0);
    double left = 0, right = 0;
    ASSERT_EQ(zemath_find_xs(201, gx.data(), gy.data(), 100, 0.5, &left, &right), 0);
    EXPECT_DOUBLE_EQ(left, 4.0);  // the half level falls on a sample exactly
    EXPECT_DOUBLE_EQ(right, 6.0);

    const double m = NANUM;
    struct Case {
        std::vector<double> y;
        double height;
        std::vector<int> start, end;
    };
    const Case cases[] = {
        {{0, 2, 3, 0, 5, 5, 1}, 1.0, {1, 4}, {2, 5}},
        {{2, 2, 0, 2}, 1.0, {0, 3}, {1, 3}},  // runs at both ends
        {{2, m, 2, kNan, 2}, 1.0, {0, 2, 4}, {0, 2, 4}},
        {{1, 1, 1}, 1.0, {}, {}},  // strictly above
        {{-3, -1, -3}, -2.0, {1}, {1}},
    };
    for (const Case& c : cases) {
        int start[8], end[8];
        const int count = zemath_cut_to_segments_by_height(static_cast<int>(c.y.size()), c.y.data(),
                                                           c.height, 8, start, end);
        ASSERT_EQ(count, static_cast<int>(c.start.size()));
        EXPECT_EQ(std::vector<int>(start, start + count), c.start);
        EXPECT_EQ(std::vector<int>(end, end + count), c.end);
    }

    const std::vector<double> y = {1, 3, m, 0.5, 2}, base = {2, 1, 1, m, 1};
    struct Adjust {
        int option;
        std::vector<double> expected;
    };
    const Adjust adjust[] = {{0, {-1, 2, m, m, 1}}, {1, {0, 2, m, m, 1}}, {2, {-1, 0, m, m, 0}}};
    for (const Adjust& a : adjust) {
        std::vector<double> out(5, -7.0);
        ASSERT_EQ(zemath_adjust_data_of_peaks(5, y.data(), base.data(), out.data(), a.option), 0);
        EXPECT_EQ(out, a.expected) << a.option;
    }
    std::vector<double> in_place = y;
    ASSERT_EQ(zemath_adjust_data_of_peaks(5, in_place.data(), base.data(), in_place.data(), 0), 0);
    EXPECT_EQ(in_place, adjust[0].expected);
}

TEST(PeakMeasures, RefusalsWriteNothing) {
    const std::vector<double> x = iota(6), y = {0, 1, 3, 1, 0, 0}, flat(6, 0.0),
                              same = {0, 1, 1, 2, 3, 4};
    const std::vector<double> up = {0, 1, 2, 3, 4, 5};
    double a = -7, b = -7, out[8];
    int start[1] = {-7}, end[1] = {-7};
    const double* X = x.data();
    const double* Y = y.data();
    struct Case {
        const char* what;
        std::function<int()> call;
        int expected;
    };
    const Case cases[] = {
        {"moments null",
         [&] { return zemath_calc_peak_moments_ex(6, X, Y, nullptr, 0, 5, 0, nullptr); },
         ZEMATH_ERR_NULL_POINTER},
        {"moments range",
         [&] { return zemath_calc_peak_moments_ex(6, X, Y, nullptr, 3, 3, 0, out); },
         ZEMATH_ERR_TOO_FEW_POINTS},
        {"moments last",
         [&] { return zemath_calc_peak_moments_ex(6, X, Y, nullptr, 0, 6, 0, out); },
         ZEMATH_ERR_TOO_FEW_POINTS},
        {"moments method",
         [&] { return zemath_calc_peak_moments_ex(6, X, Y, nullptr, 0, 5, 2, out); },
         ZEMATH_ERR_BAD_OPTION},
        {"adjust null", [&] { return zemath_adjust_data_of_peaks(6, Y, nullptr, out, 0); },
         ZEMATH_ERR_NULL_POINTER},
        {"adjust n", [&] { return zemath_adjust_data_of_peaks(0, Y, Y, out, 0); },
         ZEMATH_ERR_TOO_FEW_POINTS},
        {"adjust option", [&] { return zemath_adjust_data_of_peaks(6, Y, Y, out, 3); },
         ZEMATH_ERR_BAD_OPTION},
        {"x array null", [&] { return zemath_generate_peak_x_array(3, 0, 1, 1, nullptr); },
         ZEMATH_ERR_NULL_POINTER},
        {"x array n", [&] { return zemath_generate_peak_x_array(0, 0, 1, 1, out); },
         ZEMATH_ERR_TOO_FEW_POINTS},
        {"x array width", [&] { return zemath_generate_peak_x_array(3, 0, 0, 1, out); },
         ZEMATH_ERR_PARAM_RANGE},
        {"x array span", [&] { return zemath_generate_peak_x_array(3, 0, 1, kNan, out); },
         ZEMATH_ERR_PARAM_RANGE},
        {"x array overflow", [&] { return zemath_generate_peak_x_array(3, 0, 1e300, 1e300, out); },
         ZEMATH_ERR_PARAM_RANGE},
        {"x array centre", [&] { return zemath_generate_peak_x_array(3, INFINITY, 1, 1, out); },
         ZEMATH_ERR_PARAM_RANGE},
        {"xs null", [&] { return zemath_find_xs(6, X, Y, 2, 0.5, nullptr, &b); },
         ZEMATH_ERR_NULL_POINTER},
        {"xs n", [&] { return zemath_find_xs(0, X, Y, 0, 0.5, &a, &b); },
         ZEMATH_ERR_TOO_FEW_POINTS},
        {"xs peak", [&] { return zemath_find_xs(6, X, Y, 6, 0.5, &a, &b); },
         ZEMATH_ERR_EMPTY_RANGE},
        {"xs fraction", [&] { return zemath_find_xs(6, X, Y, 2, -0.1, &a, &b); },
         ZEMATH_ERR_PARAM_RANGE},
        {"xs never reached", [&] { return zemath_find_xs(6, X, up.data(), 5, 0.5, &a, &b); },
         ZEMATH_ERR_BOUND_NOT_FOUND},
        {"xs flat", [&] { return zemath_find_xs(6, X, flat.data(), 2, 0.5, &a, &b); },
         ZEMATH_ERR_BOUND_NOT_FOUND},
        {"inflection null", [&] { return zemath_find_inflection_point(6, nullptr, Y, 2, &a, &b); },
         ZEMATH_ERR_NULL_POINTER},
        {"inflection n", [&] { return zemath_find_inflection_point(2, X, Y, 0, &a, &b); },
         ZEMATH_ERR_TOO_FEW_POINTS},
        {"inflection peak", [&] { return zemath_find_inflection_point(6, X, Y, -1, &a, &b); },
         ZEMATH_ERR_EMPTY_RANGE},
        {"inflection zero",
         [&] { return zemath_find_inflection_point(6, X, flat.data(), 2, &a, &b); },
         ZEMATH_ERR_BOUND_NOT_FOUND},
        {"inflection none",
         [&] { return zemath_find_inflection_point(6, X, up.data(), 5, &a, &b); },
         ZEMATH_ERR_BOUND_NOT_FOUND},
        {"spline null",
         [&] { return zemath_iterate_for_finding_inflection(6, X, Y, 2, &a, nullptr); },
         ZEMATH_ERR_NULL_POINTER},
        {"spline X",
         [&] { return zemath_iterate_for_finding_inflection(6, same.data(), Y, 2, &a, &b); },
         ZEMATH_ERR_NOT_MONOTONIC},
        {"spline none",
         [&] { return zemath_iterate_for_finding_inflection(6, X, up.data(), 5, &a, &b); },
         ZEMATH_ERR_BOUND_NOT_FOUND},
        {"segments null",
         [&] { return zemath_cut_to_segments_by_height(6, Y, 0.5, 1, nullptr, end); },
         ZEMATH_ERR_NULL_POINTER},
        {"segments n", [&] { return zemath_cut_to_segments_by_height(0, Y, 0.5, 1, start, end); },
         ZEMATH_ERR_TOO_FEW_POINTS},
        {"segments NaN",
         [&] { return zemath_cut_to_segments_by_height(6, Y, kNan, 1, start, end); },
         ZEMATH_ERR_PARAM_RANGE},
        {"segments too many",
         [&] { return zemath_cut_to_segments_by_height(6, same.data(), -0.5, 0, start, end); },
         ZEMATH_ERR_TOO_MANY_REGIONS},
    };
    for (const Case& c : cases) {
        std::fill(out, out + 8, -7.0);
        EXPECT_EQ(c.call(), c.expected) << c.what;
        EXPECT_EQ(a, -7.0) << c.what;
        EXPECT_EQ(b, -7.0) << c.what;
        for (double v : out) EXPECT_EQ(v, -7.0) << c.what;
        EXPECT_EQ(start[0], -7) << c.what;
        EXPECT_EQ(end[0], -7) << c.what;
    }
}

TEST(PeakMeasures, AsymptotePoints) {
    // A Lorentzian (centre 5, FWHM 2, height 3) over the level 0.4: its tails come within
    // a fraction f of the height at 5 -+ sqrt(1/f - 1).
    const std::vector<double> x = iota(4001, 0.01, -15.0);
    std::vector<double> y(x.size());
    for (std::size_t i = 0; i < x.size(); ++i)
        y[i] = 0.4 + 3.0 / ((x[i] - 5.0) * (x[i] - 5.0) + 1.0);
    double level = 0;
    ASSERT_EQ(zemath_yatasymt(4001, y.data(), 0, 50, &level), 0);
    EXPECT_NEAR(level, 0.4, 0.01);  // 20 widths out the tail is still 3/401 above
    for (double f : {0.5, 0.1, 0.02}) {
        double left = 0, right = 0;
        ASSERT_EQ(zemath_xatasymt(4001, x.data(), y.data(), 2000, 0.4, f, &left, &right), 0);
        const double half = std::sqrt(1.0 / f - 1.0);
        EXPECT_NEAR(left, 5.0 - half, 1e-4) << f;  // linear crossing on a step of 0.01
        EXPECT_NEAR(right, 5.0 + half, 1e-4) << f;
    }
    // The median of each end, missing values skipped.
    const double m = NANUM;
    const std::vector<double> ends = {1, 9, 2, m, 3, 7, 8, 6, kNan, 5};
    struct Case {
        int side, points;
        double expected;
    };
    for (const Case& c :
         {Case{0, 3, 2.0}, Case{0, 4, 2.0}, Case{0, 5, 2.5}, Case{1, 4, 6.0}, Case{1, 10, 5.5}}) {
        double got = 0;
        ASSERT_EQ(zemath_yatasymt(10, ends.data(), c.side, c.points, &got), 0);
        EXPECT_EQ(got, c.expected) << c.side << " " << c.points;
    }
    // Refusals write nothing.
    double a = -7, b = -7;
    const std::vector<double> up = iota(6), missing(6, m);
    EXPECT_EQ(zemath_yatasymt(6, nullptr, 0, 2, &a), ZEMATH_ERR_NULL_POINTER);
    EXPECT_EQ(zemath_yatasymt(6, up.data(), 0, 7, &a), ZEMATH_ERR_TOO_FEW_POINTS);
    EXPECT_EQ(zemath_yatasymt(6, up.data(), 2, 2, &a), ZEMATH_ERR_BAD_OPTION);
    EXPECT_EQ(zemath_yatasymt(6, missing.data(), 1, 2, &a), ZEMATH_ERR_NO_USABLE_VALUE);
    EXPECT_EQ(zemath_xatasymt(6, up.data(), up.data(), 2, 0.0, 0.5, nullptr, &b),
              ZEMATH_ERR_NULL_POINTER);
    EXPECT_EQ(zemath_xatasymt(0, up.data(), up.data(), 0, 0.0, 0.5, &a, &b),
              ZEMATH_ERR_TOO_FEW_POINTS);
    EXPECT_EQ(zemath_xatasymt(6, up.data(), up.data(), 6, 0.0, 0.5, &a, &b),
              ZEMATH_ERR_EMPTY_RANGE);
    EXPECT_EQ(zemath_xatasymt(6, up.data(), up.data(), 2, INFINITY, 0.5, &a, &b),
              ZEMATH_ERR_PARAM_RANGE);
    EXPECT_EQ(zemath_xatasymt(6, up.data(), up.data(), 2, 0.0, 1.0, &a, &b),
              ZEMATH_ERR_PARAM_RANGE);
    EXPECT_EQ(zemath_xatasymt(6, up.data(), up.data(), 5, 0.0, 0.5, &a, &b),
              ZEMATH_ERR_BOUND_NOT_FOUND);  // a rising curve: the right side never falls
    EXPECT_EQ(zemath_xatasymt(6, up.data(), up.data(), 2, 2.0, 0.5, &a, &b),
              ZEMATH_ERR_BOUND_NOT_FOUND);  // the peak at the asymptote
    EXPECT_EQ(a, -7.0);
    EXPECT_EQ(b, -7.0);
}

}  // namespace
