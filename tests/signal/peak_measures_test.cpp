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

}  // namespace
