// Search family: order tests, searches in ascending arrays (against NumPy's
// searchsorted/argmin, tests/reference/gen_search.py), nearest points, level crossings,
// bound indices, tolerant order checks and range rounding, with every refusal shown to
// leave the outputs untouched.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

#include "frame/nrvec.hpp"
#include "zemath/search.h"
#include "zemath/status.h"

namespace {

struct SearchReference {
    std::vector<double> x, targets;
    std::vector<int> position, nearest;
};
struct BoundsReference {
    std::vector<double> x;
    double lower, upper;
    int status, lower_index, upper_index;
};
#include "reference/search_ref.inc"

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr int kUntouched = -12345;
constexpr double kUntouchedValue = 777.0;

TEST(Search, FindIndicesMatchesSearchsorted) {
    for (const SearchReference& c : kSearchReference) {
        const int n = static_cast<int>(c.x.size()), m = static_cast<int>(c.targets.size());
        std::vector<int> batch(m, kUntouched);
        ASSERT_EQ(zemath_array_find_indices(c.x.data(), n, c.targets.data(), m, batch.data()), 0);
        EXPECT_EQ(batch, c.position) << "n = " << n;
        for (int k = 0; k < m; ++k) {
            int single = kUntouched;
            ASSERT_EQ(zemath_binary_search(c.x.data(), n, c.targets[k], &single), 0);
            EXPECT_EQ(single, c.position[k]) << "n = " << n << " target " << c.targets[k];
        }
    }
}

TEST(Search, NearestValuesMatchArgmin) {
    for (const SearchReference& c : kSearchReference) {
        const int n = static_cast<int>(c.x.size()), m = static_cast<int>(c.targets.size());
        std::vector<int> index(m, kUntouched);
        std::vector<double> value(m, kUntouchedValue);
        ASSERT_EQ(zemath_find_nearest_values(c.x.data(), n, c.targets.data(), m, index.data(),
                                             value.data()),
                  0);
        EXPECT_EQ(index, c.nearest) << "n = " << n;
        for (int k = 0; k < m; ++k) EXPECT_EQ(value[k], c.x[c.nearest[k]]);
        // Any order: the linear search agrees on sorted data.
        for (int k = 0; k < m; ++k) {
            int single = kUntouched;
            ASSERT_EQ(zemath_find_nearest_index(c.x.data(), n, c.targets[k], &single), 0);
            EXPECT_EQ(single, c.nearest[k]);
        }
    }
}

TEST(Search, BoundsIndexMatchesSearchsorted) {
    for (const BoundsReference& c : kBoundsReference) {
        int lo = kUntouched, hi = kUntouched;
        const int n = static_cast<int>(c.x.size());
        EXPECT_EQ(zemath_get_lower_upper_bounds_index(c.x.data(), n, c.lower, c.upper, &lo, &hi),
                  c.status)
            << c.lower << " " << c.upper;
        if (c.status == 0) {
            EXPECT_EQ(lo, c.lower_index);
            EXPECT_EQ(hi, c.upper_index);
        } else {
            EXPECT_EQ(lo, kUntouched);
            EXPECT_EQ(hi, kUntouched);
        }
    }
}

TEST(Search, DocumentedPositions) {
    const double x[] = {1, 2, 3, 4};
    const struct {
        double target;
        int index;
    } cases[] = {{2.5, 1},   {0, -1},     {4, 3},    {9, 3},   {1, 0},
                 {3.999, 2}, {-kInf, -1}, {kInf, 3}, {kNaN, 2}};  // NaN: every x[mid] > NaN is
                                                                  // false, so low climbs to n - 2
    for (const auto& c : cases) {
        int index = kUntouched;
        ASSERT_EQ(zemath_binary_search(x, 4, c.target, &index), 0);
        EXPECT_EQ(index, c.index) << c.target;
    }
    // Sizes 1 and 2 never bisect.
    const double two[] = {1, 3};
    int index = kUntouched;
    EXPECT_EQ(zemath_binary_search(two, 2, 2.0, &index), 0);
    EXPECT_EQ(index, 0);
    EXPECT_EQ(zemath_binary_search(two, 1, 5.0, &index), 0);
    EXPECT_EQ(index, 0);
    EXPECT_EQ(zemath_binary_search(two, 1, 0.5, &index), 0);
    EXPECT_EQ(index, -1);
    // Equal ends pass the order check; NANUM is an ordinary value.
    const double flat[] = {NANUM, NANUM, NANUM};
    EXPECT_EQ(zemath_binary_search(flat, 3, 0.0, &index), 0);
    EXPECT_EQ(index, 2);
}

TEST(Search, BatchAgreesWithSingleOnLargeArrays) {
    // Batches below and above the sweep's threshold, on sorted arrays with repeats and
    // signed zeros (sweep) and on unsorted arrays that pass the ends check or hold a NaN
    // (interleaved bisection): every answer must be the single search's.
    std::vector<std::vector<double>> arrays;
    std::vector<double> sorted(3001);
    for (int i = 0; i < 3001; ++i) sorted[i] = std::floor((i - 1500) / 7.0) * 0.5;
    for (int i = 1400; i < 1600; ++i)
        if (sorted[i] == 0.0) sorted[i] = (i & 1) ? -0.0 : 0.0;
    arrays.push_back(sorted);
    std::vector<double> unsorted(1001);
    for (int i = 0; i < 1001; ++i) unsorted[i] = std::sin(i * 0.37) + i * 1e-3;
    unsorted.back() = 5.0;
    arrays.push_back(unsorted);
    std::vector<double> with_nan = sorted;
    with_nan[1000] = kNaN;
    arrays.push_back(with_nan);
    for (const auto& x : arrays)
        for (int m : {1003, 5000}) {
            std::vector<double> targets(m);
            for (int k = 0; k < m; ++k)
                targets[k] = std::cos(k * 1.3) * 800 * (k % 3 == 0 ? 1 : 0.001);
            for (int k = 0; k < m; k += 50) targets[k] = x[(k * 7) % x.size()];  // exact hits
            targets[1] = kNaN;
            targets[2] = kInf;
            targets[3] = -kInf;
            targets[4] = -0.0;
            targets[5] = NANUM;
            const int n = static_cast<int>(x.size());
            std::vector<int> batch(m, kUntouched);
            ASSERT_EQ(zemath_array_find_indices(x.data(), n, targets.data(), m, batch.data()), 0);
            for (int k = 0; k < m; ++k) {
                int single = kUntouched;
                zemath_binary_search(x.data(), n, targets[k], &single);
                ASSERT_EQ(batch[k], single) << "n " << n << " m " << m << " k " << k;
            }
        }
}

TEST(Search, SearchRefusalsWriteNothing) {
    const double x[] = {1, 2, 3};
    const double down[] = {3, 2, 1};
    const double t[] = {1.5, 2.5};
    int index = kUntouched;
    int out[2] = {kUntouched, kUntouched};
    EXPECT_EQ(zemath_binary_search(nullptr, 3, 1.0, &index), -18);
    EXPECT_EQ(zemath_binary_search(x, 3, 1.0, nullptr), -18);
    EXPECT_EQ(zemath_binary_search(x, 0, 1.0, &index), -18);
    EXPECT_EQ(zemath_binary_search(x, -1, 1.0, &index), -18);
    EXPECT_EQ(zemath_binary_search(down, 3, 1.0, &index), -18);
    EXPECT_EQ(index, kUntouched);
    EXPECT_EQ(zemath_array_find_indices(nullptr, 3, t, 2, out), -18);
    EXPECT_EQ(zemath_array_find_indices(x, 3, nullptr, 2, out), -18);
    EXPECT_EQ(zemath_array_find_indices(x, 3, t, 2, nullptr), -18);
    EXPECT_EQ(zemath_array_find_indices(x, 0, t, 2, out), -18);
    EXPECT_EQ(zemath_array_find_indices(down, 3, t, 2, out), -18);
    EXPECT_EQ(zemath_array_find_indices(x, 3, t, 0, out), 0);
    EXPECT_EQ(zemath_array_find_indices(x, 3, t, -4, out), 0);
    EXPECT_EQ(out[0], kUntouched);
    EXPECT_EQ(out[1], kUntouched);
}

TEST(Search, IsMonotonic) {
    const struct {
        std::vector<double> x;
        int not_strict, strict;
    } cases[] = {
        {{1, 1, 2}, 2, 0},        {{3, 2, 1}, 1, 1},    {{5}, 2, 2},          {{2, 2, 2}, 2, 0},
        {{3, 3, 1}, 1, 0},        {{1, 3, 2}, 0, 0},    {{1, kNaN, 0}, 2, 2},  // both pairs hold
                                                                               // NaN: neither
                                                                               // breaks any order
        {{1, kNaN, 2, 1}, 1, 1},  // only (2, 1) counts: decreasing
        {{NANUM, 0, 1}, 2, 2},    // NANUM is an ordinary tiny negative value here
        {{-kInf, 0, kInf}, 2, 2}, {{kInf, kInf}, 2, 0},
    };
    for (const auto& c : cases) {
        const auto n = static_cast<unsigned>(c.x.size());
        EXPECT_EQ(zemath_is_monotonic(c.x.data(), n, false), c.not_strict) << c.x[0];
        EXPECT_EQ(zemath_is_monotonic(c.x.data(), n, true), c.strict) << c.x[0];
    }
    const double x[] = {1, 2};
    EXPECT_EQ(zemath_is_monotonic(nullptr, 2, false), -11);
    EXPECT_EQ(zemath_is_monotonic(x, 0, true), -5);
}

TEST(Search, ContainerOrderTestRanges) {
    double data[] = {5, 1, 2, 2, 3, 0};
    const zemath::NRVec<double> v(data, 6);
    EXPECT_TRUE(v.is_ordered(true, true, 1, 4));
    EXPECT_FALSE(v.is_ordered(true, false, 1, 4));
    EXPECT_TRUE(v.is_ordered(true, false, 3, 4));
    EXPECT_TRUE(v.is_ordered(false, false, 4, -1));
    EXPECT_TRUE(v.is_ordered(true, false, 2, 2));  // one element
    EXPECT_FALSE(v.is_ordered(true, true, 3, 2));  // first > last
    EXPECT_FALSE(v.is_ordered(true, true, -1, 2));
    EXPECT_FALSE(v.is_ordered(true, true, 0, 6));
    EXPECT_FALSE(zemath::NRVec<double>().is_ordered(true, true));
}

TEST(Search, IsInsideRange) {
    const struct {
        double value, a, b;
        bool ends, inside;
    } cases[] = {
        {2, 2, 5, false, false},       {2, 5, 2, true, true},     {3, 5, 2, false, true},
        {5, 2, 5, true, true},         {6, 2, 5, true, false},    {2, 2, 2, false, false},
        {2, 2, 2, true, true},         {kNaN, 0, 1, true, false}, {0.5, kNaN, 1, true, false},
        {1e300, 0, kInf, false, true},
    };
    for (const auto& c : cases)
        EXPECT_EQ(zemath_is_inside_range(c.value, c.a, c.b, c.ends), c.inside)
            << c.value << " in " << c.a << ", " << c.b;
}

TEST(Search, NearestIndexAnyOrder) {
    const double x[] = {5, NANUM, 1, kNaN, 3, 1, -2};
    const struct {
        double target;
        int index;
    } cases[] = {{0.9, 2},
                 {2, 2},
                 {2.1, 4},
                 {3.9, 4},
                 {4, 0} /* tie 3 | 5: first */,
                 {100, 0},
                 {-100, 6},
                 {kInf, 0},
                 {-kInf, 6},
                 {0, 2}};  // NANUM (at index 1) is skipped, not the nearest to 0
    for (const auto& c : cases) {
        int index = kUntouched;
        ASSERT_EQ(zemath_find_nearest_index(x, 7, c.target, &index), 0);
        EXPECT_EQ(index, c.index) << c.target;
    }
    const double unusable[] = {NANUM, kNaN};
    int index = kUntouched;
    EXPECT_EQ(zemath_find_nearest_index(unusable, 2, 0.0, &index), -64);
    EXPECT_EQ(zemath_find_nearest_index(x, 7, kNaN, &index), -64);
    EXPECT_EQ(zemath_find_nearest_index(x, 7, NANUM, &index), -64);
    EXPECT_EQ(zemath_find_nearest_index(nullptr, 7, 0.0, &index), -11);
    EXPECT_EQ(zemath_find_nearest_index(x, 7, 0.0, nullptr), -11);
    EXPECT_EQ(zemath_find_nearest_index(x, 0, 0.0, &index), -18);
    EXPECT_EQ(zemath_find_nearest_index(x, -3, 0.0, &index), -18);
    EXPECT_EQ(index, kUntouched);
}

TEST(Search, NearestValuesSpecialTargetsAndRefusals) {
    const double x[] = {1, 2, 2, 4};
    const double t[] = {3, kNaN, NANUM, 2.2, -kInf, kInf};
    int index[6];
    double value[6];
    ASSERT_EQ(zemath_find_nearest_values(x, 4, t, 6, index, value), 0);
    const int want[] = {1, -1, -1, 1, 0, 3};  // 3 is midway between 2 and 4: the lower
    for (int k = 0; k < 6; ++k) EXPECT_EQ(index[k], want[k]) << k;
    EXPECT_EQ(value[1], NANUM);
    EXPECT_EQ(value[2], NANUM);
    EXPECT_EQ(value[0], 2.0);
    // One output alone is fine.
    double only[1] = {kUntouchedValue};
    ASSERT_EQ(zemath_find_nearest_values(x, 4, t, 1, nullptr, only), 0);
    EXPECT_EQ(only[0], 2.0);

    int out[2] = {kUntouched, kUntouched};
    double vals[2] = {kUntouchedValue, kUntouchedValue};
    const double down[] = {4, 1};
    EXPECT_EQ(zemath_find_nearest_values(nullptr, 4, t, 2, out, vals), -11);
    EXPECT_EQ(zemath_find_nearest_values(x, 4, nullptr, 2, out, vals), -11);
    EXPECT_EQ(zemath_find_nearest_values(x, 4, t, 2, nullptr, nullptr), -11);
    EXPECT_EQ(zemath_find_nearest_values(x, 0, t, 2, out, vals), -18);
    EXPECT_EQ(zemath_find_nearest_values(down, 2, t, 2, out, vals), -18);
    EXPECT_EQ(zemath_find_nearest_values(x, 4, t, 0, out, vals), 0);
    EXPECT_EQ(out[0], kUntouched);
    EXPECT_EQ(out[1], kUntouched);
    EXPECT_EQ(vals[0], kUntouchedValue);
}

TEST(Search, FindIndexByTarget) {
    //                  0  1  2    3  4       5  6  7
    const double y[] = {0, 1, 3, NANUM, 5, kNaN, 2, 0.5};
    const struct {
        double target;
        int start, direction, index;
    } cases[] = {
        {2, 0, 1, 1},      // between y[1] = 1 and y[2] = 3
        {1, 0, 1, 1},      // exact hit
        {4, 0, 1, -1},     // 3 -> NANUM -> 5: a missing point is no crossing
        {5, 0, 1, 4},      // exact hit past the gap
        {1, 7, -1, 7},     // backwards: between y[7] = 0.5 and y[6] = 2: the point before
        {0.75, 7, -1, 7},  // backwards from the last point
        {2, 2, 1, 6},      // from index 2: first the exact 2 at index 6
        {2.5, 7, -1, 2},   // backwards past the NaN and the NANUM gaps: between 3 and 1
        {10, 0, 1, -1},    {kNaN, 0, 1, -1},
        {NANUM, 0, 1, -1},  // missing points are never reached, even by a NANUM target
    };
    for (const auto& c : cases) {
        int index = kUntouched;
        ASSERT_EQ(zemath_find_index_by_target(y, 8, c.target, c.start, c.direction, &index), 0);
        EXPECT_EQ(index, c.index) << c.target << " from " << c.start;
    }
    int index = kUntouched;
    EXPECT_EQ(zemath_find_index_by_target(nullptr, 8, 1, 0, 1, &index), -11);
    EXPECT_EQ(zemath_find_index_by_target(y, 8, 1, 0, 1, nullptr), -11);
    EXPECT_EQ(zemath_find_index_by_target(y, 0, 1, 0, 1, &index), -18);
    EXPECT_EQ(zemath_find_index_by_target(y, 8, 1, 8, 1, &index), -18);
    EXPECT_EQ(zemath_find_index_by_target(y, 8, 1, -1, 1, &index), -18);
    EXPECT_EQ(index, kUntouched);
}

TEST(Search, BoundsIndexDescendingAndRefusals) {
    const double down[] = {9, 7, 7, 5, 3, 1};
    const struct {
        double lower, upper;
        int status, lo, hi;
    } cases[] = {
        {4, 8, 0, 3, 1},     {7, 7, 0, 2, 1},    {0, 100, 0, 5, 0},     {1, 1, 0, 5, 5},
        {10, 12, -64, 0, 0}, {-3, 0, -64, 0, 0}, {5.5, 6.5, -64, 0, 0},
    };
    for (const auto& c : cases) {
        int lo = kUntouched, hi = kUntouched;
        EXPECT_EQ(zemath_get_lower_upper_bounds_index(down, 6, c.lower, c.upper, &lo, &hi),
                  c.status)
            << c.lower << " " << c.upper;
        if (c.status == 0) {
            EXPECT_EQ(lo, c.lo);
            EXPECT_EQ(hi, c.hi);
        } else {
            EXPECT_EQ(lo, kUntouched);
        }
    }
    int lo = kUntouched, hi = kUntouched;
    EXPECT_EQ(zemath_get_lower_upper_bounds_index(nullptr, 6, 1, 2, &lo, &hi), -11);
    EXPECT_EQ(zemath_get_lower_upper_bounds_index(down, 6, 1, 2, nullptr, &hi), -11);
    EXPECT_EQ(zemath_get_lower_upper_bounds_index(down, 6, 1, 2, &lo, nullptr), -11);
    EXPECT_EQ(zemath_get_lower_upper_bounds_index(down, 0, 1, 2, &lo, &hi), -18);
    EXPECT_EQ(zemath_get_lower_upper_bounds_index(down, 6, 3, 2, &lo, &hi), -6);
    EXPECT_EQ(zemath_get_lower_upper_bounds_index(down, 6, kNaN, 2, &lo, &hi), -6);
    EXPECT_EQ(zemath_get_lower_upper_bounds_index(down, 6, 1, kNaN, &lo, &hi), -6);
    EXPECT_EQ(lo, kUntouched);
    EXPECT_EQ(hi, kUntouched);
    // Infinite bounds take in everything.
    EXPECT_EQ(zemath_get_lower_upper_bounds_index(down, 6, -kInf, kInf, &lo, &hi), 0);
    EXPECT_EQ(lo, 5);
    EXPECT_EQ(hi, 0);
}

TEST(Search, CheckOrder) {
    const struct {
        std::vector<double> x;
        double fraction;
        int order;
    } cases[] = {
        {{1, 2, 3, 4, 5}, 0.0, 2},
        {{5, 4, 3, 2, 1}, 0.0, 1},
        {{1, 2, 1, 4, 5}, 0.0, 0},
        {{1, 2, 1, 4, 5}, 0.25, 2},  // 1 break in 4 pairs
        {{1, 2, 1, 4, 5}, 0.24, 0},
        {{5, 4, 6, 2, 1}, 0.25, 1},
        {{1, 1, 1}, 0.0, 2},     // no pair breaks either: increasing
        {{1, 3, 2, 4}, 1.0, 2},  // both allowed: fewer breaks wins (1 down, 2 up)
        {{4, 2, 3, 1}, 1.0, 1},
        {{1, 2, 2, 1}, 1.0, 2},            // tie: increasing
        {{1, NANUM, 2, kNaN, 3}, 0.0, 2},  // unusable points skipped
        {{3, NANUM, 2, 5}, 0.5, 2},        // pairs (3, 2), (2, 5)
        {{NANUM, kNaN}, 0.0, 2},           // no usable pair
    };
    for (const auto& c : cases) {
        int order = kUntouched;
        ASSERT_EQ(zemath_check_order(c.x.data(), static_cast<int>(c.x.size()), c.fraction, &order),
                  0);
        EXPECT_EQ(order, c.order) << c.x[0] << " " << c.fraction;
    }
    const int ix[] = {1, 2, 1, 4, 5};
    int order = kUntouched;
    ASSERT_EQ(zemath_i_check_order(ix, 5, 0.25, &order), 0);
    EXPECT_EQ(order, 2);
    ASSERT_EQ(zemath_i_check_order(ix, 5, 0.0, &order), 0);
    EXPECT_EQ(order, 0);

    order = kUntouched;
    const double x[] = {1, 2};
    EXPECT_EQ(zemath_check_order(nullptr, 2, 0.0, &order), -11);
    EXPECT_EQ(zemath_check_order(x, 2, 0.0, nullptr), -11);
    EXPECT_EQ(zemath_check_order(x, 1, 0.0, &order), -15);
    EXPECT_EQ(zemath_check_order(x, 0, 0.0, &order), -15);
    EXPECT_EQ(zemath_check_order(x, -2, 0.0, &order), -15);
    EXPECT_EQ(zemath_check_order(x, 2, -0.01, &order), -15);
    EXPECT_EQ(zemath_check_order(x, 2, 1.01, &order), -15);
    EXPECT_EQ(zemath_check_order(x, 2, kNaN, &order), -15);
    EXPECT_EQ(zemath_i_check_order(nullptr, 2, 0.0, &order), -11);
    EXPECT_EQ(zemath_i_check_order(ix, 1, 0.0, &order), -15);
    EXPECT_EQ(order, kUntouched);
}

TEST(Search, RoundRange) {
    const struct {
        double lower, upper;
        int divisions;
        double want_lower, want_upper, step;
    } cases[] = {
        {0.13, 0.97, 5, 0.0, 1.0, 0.2},
        {-3.7, 12.2, 4, -5.0, 15.0, 5.0},
        {0.3, 0.7, 4, 0.3, 0.7, 0.1},  // on multiples: kept (decimal doubles)
        {0.1, 0.3, 2, 0.1, 0.3, 0.1},
        {5, 5, 5, 4.0, 6.0, 1.0},  // zero width on a multiple: widened
        {0, 0, 1, -1.0, 1.0, 1.0},
        {1234, 5678, 10, 1000.0, 6000.0, 500.0},
        {-0.0072, -0.0011, 4, -0.008, 0.0, 0.002},
        {1, 100, 1, 0.0, 100.0, 100.0},
    };
    for (const auto& c : cases) {
        double lower = c.lower, upper = c.upper, step = kUntouchedValue;
        ASSERT_EQ(zemath_round_range(&lower, &upper, c.divisions, &step), 0) << c.lower;
        EXPECT_EQ(lower, c.want_lower) << c.lower << " " << c.upper;
        EXPECT_EQ(upper, c.want_upper) << c.lower << " " << c.upper;
        EXPECT_FALSE(std::signbit(upper) && upper == 0.0);  // no -0.0 bound
        EXPECT_DOUBLE_EQ(step, c.step);
    }
    double lower = 1, upper = 2;
    EXPECT_EQ(zemath_round_range(&lower, &upper, 3, nullptr), 0);  // increment optional
    lower = 3;
    upper = 2;
    EXPECT_EQ(zemath_round_range(nullptr, &upper, 3, nullptr), -11);
    EXPECT_EQ(zemath_round_range(&lower, nullptr, 3, nullptr), -11);
    EXPECT_EQ(zemath_round_range(&lower, &upper, 0, nullptr), -15);
    EXPECT_EQ(zemath_round_range(&lower, &upper, 3, nullptr), -6);
    for (double bad : {kNaN, kInf, -kInf, NANUM}) {
        double a = bad, b = 1;
        EXPECT_EQ(zemath_round_range(&a, &b, 3, nullptr), -6) << bad;
        EXPECT_EQ(b, 1.0);
    }
    double a = -1.7e308, b = 1.7e308;
    EXPECT_EQ(zemath_round_range(&a, &b, 1, nullptr), -6);  // the width overflows
    EXPECT_EQ(a, -1.7e308);
    EXPECT_EQ(lower, 3.0);
    EXPECT_EQ(upper, 2.0);
}

TEST(Search, RoundWithTolerance) {
    const double x[] = {0.1 + 0.2, 1.2499, 2.71, NANUM, kNaN, kInf, -0.7000000001};
    double out[7];
    ASSERT_EQ(zemath_round_with_tolerance(x, 7, 0.1, 1e-9, out), 2);
    EXPECT_EQ(out[0], 0.3);
    EXPECT_EQ(out[1], 1.2499);
    EXPECT_EQ(out[2], 2.71);
    EXPECT_EQ(out[3], NANUM);
    EXPECT_TRUE(std::isnan(out[4]));
    EXPECT_EQ(out[5], kInf);
    EXPECT_EQ(out[6], -0.7);
    ASSERT_EQ(zemath_round_with_tolerance(x, 3, 0.25, 0.01, out), 1);
    EXPECT_EQ(out[0], x[0]);  // 0.05 from 0.25: outside the tolerance
    EXPECT_EQ(out[1], 1.25);
    EXPECT_EQ(out[2], 2.71);
    // In place, with an increment that is no decimal fraction.
    double y[] = {3.14159, 6.2832, 1.0};
    ASSERT_EQ(zemath_round_with_tolerance(y, 3, M_PI, 1e-4, y), 2);
    EXPECT_EQ(y[0], M_PI);
    EXPECT_EQ(y[1], 2 * M_PI);
    EXPECT_EQ(y[2], 1.0);

    double untouched[2] = {kUntouchedValue, kUntouchedValue};
    EXPECT_EQ(zemath_round_with_tolerance(nullptr, 2, 0.1, 0.0, untouched), -11);
    EXPECT_EQ(zemath_round_with_tolerance(x, 2, 0.1, 0.0, nullptr), -11);
    EXPECT_EQ(zemath_round_with_tolerance(x, 0, 0.1, 0.0, untouched), -15);
    EXPECT_EQ(zemath_round_with_tolerance(x, -1, 0.1, 0.0, untouched), -15);
    for (double inc : {0.0, -0.1, kNaN, kInf})
        EXPECT_EQ(zemath_round_with_tolerance(x, 2, inc, 0.0, untouched), -14) << inc;
    EXPECT_EQ(zemath_round_with_tolerance(x, 2, 0.1, -1e-9, untouched), -14);
    EXPECT_EQ(zemath_round_with_tolerance(x, 2, 0.1, kNaN, untouched), -14);
    EXPECT_EQ(untouched[0], kUntouchedValue);
    EXPECT_EQ(untouched[1], kUntouchedValue);
}

}  // namespace
