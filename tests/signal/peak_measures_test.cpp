// Point look-ups for peak analysis: level crossings and Y at X against NumPy references,
// the no-interpolation rule of X from Y, and the status codes.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "zemath/peak_measures.h"
#include "zemath/status.h"
#include "zemath/types.h"

namespace {

struct MeasureReference {
    std::vector<double> x, y;
    double level;
    std::vector<double> crossings, query, at_query;
};

#include "reference/peak_measures_ref.inc"

constexpr double kTolerance = 1e-13;

TEST(PeakMeasures, LevelCrossingsMatchReference) {
    for (const auto& ref : kMeasureReference) {
        const int n = static_cast<int>(ref.x.size());
        std::vector<double> out(ref.x.size(), -7.0);
        int count = -1;
        ASSERT_EQ(
            zemath_get_level_crossing(n, ref.x.data(), ref.y.data(), ref.level, &count, out.data()),
            0);
        ASSERT_EQ(count, static_cast<int>(ref.crossings.size()));
        for (int k = 0; k < count; ++k)
            EXPECT_NEAR(out[k], ref.crossings[k], kTolerance * (1.0 + std::fabs(ref.crossings[k])));
    }
    // A level equal to a data value reports that point once, the last point included.
    const double x[] = {0, 1, 2, 3}, y[] = {0, 2, 1, 2};
    double out[4];
    int count = 0;
    ASSERT_EQ(zemath_get_level_crossing(4, x, y, 2.0, &count, out), 0);
    EXPECT_EQ(count, 2);
    EXPECT_EQ(out[0], 1.0);
    EXPECT_EQ(out[1], 3.0);
}

TEST(PeakMeasures, YAtXMatchesReferenceSortedOrNot) {
    for (const auto& ref : kMeasureReference) {
        const int n = static_cast<int>(ref.x.size());
        // The same points reversed: the unsorted path sorts them first.
        std::vector<double> rx(ref.x.rbegin(), ref.x.rend()), ry(ref.y.rbegin(), ref.y.rend());
        for (std::size_t k = 0; k < ref.query.size(); ++k) {
            double sorted = -7.0, unsorted = -7.0;
            ASSERT_EQ(
                zemath_y_form_x(n, ref.x.data(), ref.y.data(), ref.query[k], &sorted, true, false),
                0);
            ASSERT_EQ(
                zemath_y_form_x(n, rx.data(), ry.data(), ref.query[k], &unsorted, false, false), 0);
            const double tol = 1e-12 * (1.0 + std::fabs(ref.at_query[k]));
            EXPECT_NEAR(sorted, ref.at_query[k], tol);
            EXPECT_NEAR(unsorted, ref.at_query[k], tol);
        }
    }
    // Even spacing by index; beyond the last point the last interval is extended.
    const double x[] = {0, 1, 2, 3}, y[] = {0, 2, 1, 4};
    const struct {
        double at, expected;
    } cases[] = {{0.5, 1.0}, {2.25, 1.75}, {5.0, 10.0}, {-1.0, -2.0}, {3.0, 4.0}};
    for (const auto& c : cases) {
        double even = 0.0, bisect = 0.0;
        ASSERT_EQ(zemath_y_form_x(4, x, y, c.at, &even, true, true), 0);
        ASSERT_EQ(zemath_y_form_x(4, x, y, c.at, &bisect, true, false), 0);
        EXPECT_DOUBLE_EQ(even, c.expected) << c.at;
        EXPECT_DOUBLE_EQ(bisect, c.expected) << c.at;
    }
}

TEST(PeakMeasures, XFromYTakesTheNearerDataPoint) {
    const double x[] = {10, 20, 30, 40}, y[] = {4, 1, 3, 2};
    const struct {
        double y, expected_x;
    } cases[] = {
        {2.9, 30},  // between 2 and 3, nearer 3: no interpolation
        {2.5, 30},  // tie: the upper point
        {1.2, 20}, {3.0, 30}, {9.0, 10}, {-5.0, 20},
    };
    for (const auto& c : cases) {
        double out = -7.0;
        ASSERT_EQ(zemath_x_from_y(4, x, y, c.y, &out), 0);
        EXPECT_EQ(out, c.expected_x) << c.y;
    }
}

TEST(PeakMeasures, RefusalsWriteNothing) {
    const double x[] = {0, 1, 2}, y[] = {1, 0, 1}, zigzag[] = {0, 2, 1};
    double out[3] = {-7, -7, -7};
    int count = -7;
    EXPECT_EQ(zemath_get_level_crossing(3, nullptr, y, 0.5, &count, out), ZEMATH_ERR_NULL_POINTER);
    EXPECT_EQ(zemath_get_level_crossing(3, x, y, 0.5, nullptr, out), ZEMATH_ERR_NULL_POINTER);
    EXPECT_EQ(zemath_get_level_crossing(0, x, y, 0.5, &count, out), ZEMATH_ERR_TOO_FEW_POINTS);
    EXPECT_EQ(zemath_get_level_crossing(3, zigzag, y, 0.5, &count, out), ZEMATH_ERR_TOO_FEW_POINTS);
    EXPECT_EQ(zemath_x_from_y(3, x, nullptr, 0.5, out), ZEMATH_ERR_NULL_POINTER);
    EXPECT_EQ(zemath_x_from_y(1, x, y, 0.5, out), ZEMATH_ERR_TOO_FEW_POINTS);
    EXPECT_EQ(zemath_y_form_x(3, x, y, 0.5, nullptr, false, false), ZEMATH_ERR_NULL_POINTER);
    EXPECT_EQ(zemath_y_form_x(1, x, y, 0.5, out, false, false), ZEMATH_ERR_TOO_FEW_POINTS);
    EXPECT_EQ(zemath_y_form_x(-4, x, y, 0.5, out, true, true), ZEMATH_ERR_TOO_FEW_POINTS);
    EXPECT_EQ(count, -7);
    EXPECT_EQ(out[0], -7.0);
    // NaN query on the even path stays inside the arrays.
    double v = 0.0;
    EXPECT_EQ(zemath_y_form_x(3, x, y, std::nan(""), &v, true, true), 0);
    EXPECT_TRUE(std::isnan(v));
}

TEST(PeakMeasures, GeneratedPeaksHaveTheirParameters) {
    // Fine grid over +-40 widths: the half-height crossings give the FWHM, the trapezoid
    // area and moments the closed forms (Gaussian: area h w sqrt(pi / (4 ln 2)), variance
    // (w / (2 sqrt(2 ln 2)))^2, skewness 0, kurtosis 3; Lorentzian over [c-L, c+L]:
    // 2 h g atan(L / g) with g = w / 2).
    const double centre = 3.25, height = 7.5, fwhm = 1.7, offset = 0.4;
    const int n = 16001;
    std::vector<double> x(n), y(n), base(n, offset);
    const double half_range = 40.0 * fwhm;
    for (int i = 0; i < n; ++i) x[i] = centre - half_range + 2.0 * half_range * i / (n - 1);
    for (int shape : {ZEMATH_PEAK_GAUSSIAN, ZEMATH_PEAK_LORENTZIAN}) {
        ASSERT_EQ(
            zemath_generate_peak_data(n, x.data(), y.data(), shape, centre, height, fwhm, offset),
            0);
        std::vector<double> crossings(n);
        int count = 0;
        ASSERT_EQ(zemath_get_level_crossing(n, x.data(), y.data(), offset + 0.5 * height, &count,
                                            crossings.data()),
                  0);
        ASSERT_EQ(count, 2);
        EXPECT_NEAR(crossings[1] - crossings[0], fwhm, 1e-4);
        double m[5];
        ASSERT_EQ(zemath_calc_peak_moments(n, x.data(), y.data(), base.data(), 0, n - 1, m), 0);
        EXPECT_NEAR(m[1], centre, 1e-9);
        if (shape == ZEMATH_PEAK_GAUSSIAN) {
            const double sd = fwhm / (2.0 * std::sqrt(2.0 * std::log(2.0)));
            EXPECT_NEAR(m[0], height * fwhm * std::sqrt(M_PI / (4.0 * std::log(2.0))), 1e-9);
            EXPECT_NEAR(m[2], sd * sd, 1e-6);
            EXPECT_NEAR(m[3], 0.0, 1e-9);
            EXPECT_NEAR(m[4], 3.0, 1e-5);
        } else {
            const double g = 0.5 * fwhm;
            EXPECT_NEAR(m[0], 2.0 * height * g * std::atan(half_range / g), 1e-5);
        }
    }
    double out[3] = {-7, -7, -7};
    const double xs[] = {0, 1, 2};
    EXPECT_EQ(zemath_generate_peak_data(3, xs, out, 2, 0, 1, 1, 0), ZEMATH_ERR_BAD_OPTION);
    EXPECT_EQ(zemath_generate_peak_data(3, xs, out, 0, 0, 1, 0.0, 0), ZEMATH_ERR_PARAM_RANGE);
    EXPECT_EQ(zemath_generate_peak_data(3, xs, out, 0, 0, 1, std::nan(""), 0),
              ZEMATH_ERR_PARAM_RANGE);
    EXPECT_EQ(zemath_generate_peak_data(0, xs, out, 0, 0, 1, 1, 0), ZEMATH_ERR_TOO_FEW_POINTS);
    EXPECT_EQ(zemath_generate_peak_data(3, nullptr, out, 0, 0, 1, 1, 0), ZEMATH_ERR_NULL_POINTER);
    EXPECT_EQ(out[0], -7.0);
    double m[5] = {-7, -7, -7, -7, -7};
    const double flat[] = {1, 1, 1};
    EXPECT_EQ(zemath_calc_peak_moments(3, xs, flat, nullptr, 1, 1, m), ZEMATH_ERR_TOO_FEW_POINTS);
    EXPECT_EQ(zemath_calc_peak_moments(3, xs, flat, nullptr, 0, 3, m), ZEMATH_ERR_TOO_FEW_POINTS);
    EXPECT_EQ(zemath_calc_peak_moments(3, xs, nullptr, nullptr, 0, 2, m), ZEMATH_ERR_NULL_POINTER);
    EXPECT_EQ(m[0], -7.0);
    // Zero area above the base: the moments are NANUM.
    ASSERT_EQ(zemath_calc_peak_moments(3, xs, flat, flat, 0, 2, m), 0);
    EXPECT_EQ(m[0], 0.0);
    EXPECT_EQ(m[1], NANUM);
}

}  // namespace
