// Utility substitutes: the bin index on a regular grid and the tolerant comparison.
#include <gtest/gtest.h>

#include <array>
#include <climits>
#include <limits>
#include <string>
#include <tuple>

#include "platform/util/approx.hpp"
#include "platform/util/bins.hpp"

namespace {

using namespace zemath::util;

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();

TEST(NiceBinIndex, FloorWithEdgesInTheUpperBin) {
    const std::tuple<double, double, double, int> cases[] = {
        {0.3, 0.0, 0.1, 3},             // quotient 2.9999999999999996: an edge
        {1000.3, 1000.0, 0.1, 3},       // 2.999999999999545: the subtraction's rounding
        {0.29999999, 0.0, 0.1, 2},      // truly below the edge
        {-0.3, 0.0, 0.1, -3},           // negative edges belong to the upper bin as well
        {-1e-20, 0.0, 1.0, -1},         // tiny negative values are not snapped up
        {5.0, 10.0, -2.5, 2},           // a negative width counts downward
        {1e300, 0.0, 1e-300, INT_MAX},  // beyond int: clamped, outside any bin count
        {kNan, 0.0, 1.0, kNoBin},
        {1.0, 1.0, 0.0, kNoBin}};  // 0 / 0
    for (const auto& [value, start, width, bin] : cases)
        EXPECT_EQ(nice_bin_index(value, start, width), bin)
            << value << " " << start << " " << width;
}

TEST(NiceBinIndex, EveryDecimalEdgeOfAGridIsItsOwnBin) {
    // The edges start + k * width written as decimals, as a host passes them.
    for (int k = 0; k < 1000; ++k) {
        const double edge = std::stod(std::to_string(-370 + k) + "e-2");
        ASSERT_EQ(nice_bin_index(edge, -3.7, 0.01), k) << edge;
        ASSERT_EQ(nice_bin_index(edge - 1e-9, -3.7, 0.01), k - 1) << edge;
    }
}

TEST(Approx, RelativeToleranceRulesAndNanLastOrder) {
    // Zero equals only zero unless a floor is given; NaN, an overflowing difference and a
    // negative or NaN tolerance (exact equality only) give false.
    const std::tuple<double, double, double, double, bool> cases[] = {
        {1.0, 1.0 + 1e-12, 1e-11, 0, true}, {1.0, 1.0 + 2e-11, 1e-11, 0, false},
        {0.0, 1e-300, 1e-11, 0, false},     {0.0, 1e-300, 1e-11, 1e-200, true},
        {kInf, kInf, 1e-11, 0, true},       {kInf, 1e308, 0.5, 0, false},
        {1e308, -1e308, 3.0, 0, false},     {kNan, kNan, 1e-11, 0, false},
        {1.0, 1.5, -1.0, 0, false},         {1.0, 1.0 + 1e-15, kNan, 0, false}};
    for (const auto& [a, b, tolerance, floor, equal] : cases) {
        EXPECT_EQ(approx_equal(a, b, tolerance, floor), equal) << a << " " << b;
        EXPECT_EQ(approx_equal(b, a, tolerance, floor), equal) << b << " " << a;
    }
    EXPECT_EQ((std::array{approx_compare(1.0, 1.0 + 1e-13), approx_compare(1.0, 2.0),
                          approx_compare(kNan, kInf), approx_compare(kNan, kNan)}),
              (std::array{0, -1, 1, 0}));
}

}  // namespace
