// Utility substitutes: the bin index on a regular grid and the tolerant comparison.
#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <limits>

#include "platform/util/approx.hpp"
#include "platform/util/bins.hpp"

namespace {

using zemath::util::approx_compare;
using zemath::util::approx_equal;
using zemath::util::kNoBin;
using zemath::util::nice_bin_index;

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();

TEST(NiceBinIndex, FloorWithEdgesInTheUpperBin) {
    struct Case {
        double value, start, width;
        int bin;
    };
    const Case cases[] = {
        {0.3, 0.0, 0.1, 3},         // quotient 2.9999999999999996: an edge
        {0.7, 0.0, 0.1, 7},         // 6.999999999999999
        {1000.3, 1000.0, 0.1, 3},   // 2.999999999999545: the subtraction's rounding
        {0.29999999, 0.0, 0.1, 2},  // truly below the edge
        {0.3000000000000001, 0.0, 0.1, 3},
        {0.0, 0.0, 0.1, 0},
        {-0.0, 0.0, 0.1, 0},
        {-1e-20, 0.0, 1.0, -1},  // tiny negative values are not snapped up
        {-0.5, 0.0, 0.25, -2},
        {-0.3, 0.0, 0.1, -3},           // negative edges belong to the upper bin as well
        {5.0, 10.0, -2.5, 2},           // a negative width counts downward
        {1e300, 0.0, 1e-300, INT_MAX},  // clamped: outside any bin count
        {-1e300, 0.0, 1.0, INT_MIN + 1},
        {kInf, 0.0, 1.0, INT_MAX},
        {3.0, 0.0, kInf, 0},
        {kNan, 0.0, 1.0, kNoBin},
        {1.0, kNan, 1.0, kNoBin},
        {1.0, 0.0, kNan, kNoBin},
        {1.0, 1.0, 0.0, kNoBin},  // 0 / 0
        {kInf, kInf, 1.0, kNoBin},
    };
    for (const Case& c : cases)
        EXPECT_EQ(nice_bin_index(c.value, c.start, c.width), c.bin)
            << c.value << " " << c.start << " " << c.width;
}

TEST(NiceBinIndex, EveryDecimalEdgeOfAGridIsItsOwnBin) {
    // The edges start + k * width written as decimals, as a host passes them.
    for (int k = 0; k < 1000; ++k) {
        const double width = 0.01, start = -3.7;
        const double edge = std::stod(std::to_string(-370 + k) + "e-2");
        ASSERT_EQ(nice_bin_index(edge, start, width), k) << edge;
        ASSERT_EQ(nice_bin_index(edge - 1e-9, start, width), k - 1) << edge;
    }
}

TEST(ApproxEqual, RelativeToleranceRules) {
    struct Case {
        double a, b, tolerance, floor;
        bool equal;
    };
    const Case cases[] = {
        {1.0, 1.0 + 1e-12, 1e-11, 0, true},
        {1.0, 1.0 + 2e-11, 1e-11, 0, false},
        {-1e20, -1e20 * (1 + 5e-12), 1e-11, 0, true},  // relative at any scale
        {1e-300, 1.0000000000001e-300, 1e-11, 0, true},
        {0.0, 1e-300, 1e-11, 0, false},      // zero equals only zero
        {0.0, 1e-300, 1e-11, 1e-200, true},  // unless a floor is given
        {0.0, -0.0, 1e-11, 0, true},
        {kInf, kInf, 1e-11, 0, true},
        {kInf, -kInf, 1e-11, 0, false},
        {kInf, 1e308, 0.5, 0, false},
        {1e308, -1e308, 3.0, 0, false},  // the difference overflows
        {kNan, kNan, 1e-11, 0, false},
        {kNan, 1.0, 1.0, 1.0, false},
        {1.0, 1.5, -1.0, 0, false},  // negative tolerance: exact only
        {1.0, 1.0, kNan, 0, true},
        {1.0, 1.0 + 1e-15, kNan, 0, false},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(approx_equal(c.a, c.b, c.tolerance, c.floor), c.equal) << c.a << " " << c.b;
        EXPECT_EQ(approx_equal(c.b, c.a, c.tolerance, c.floor), c.equal) << "symmetric";
    }
    EXPECT_TRUE(approx_equal(3.0, 3.0 * (1 + 0.9e-11)));  // default tolerance 1e-11
    EXPECT_FALSE(approx_equal(3.0, 3.0 * (1 + 1.1e-11)));
}

TEST(ApproxCompare, ConsistentOrderWithNaNLast) {
    EXPECT_EQ(approx_compare(1.0, 1.0 + 1e-13), 0);
    EXPECT_EQ(approx_compare(1.0, 2.0), -1);
    EXPECT_EQ(approx_compare(2.0, 1.0), 1);
    EXPECT_EQ(approx_compare(-kInf, kInf), -1);
    EXPECT_EQ(approx_compare(kNan, kInf), 1);
    EXPECT_EQ(approx_compare(kInf, kNan), -1);
    EXPECT_EQ(approx_compare(kNan, kNan), 0);
}

}  // namespace
