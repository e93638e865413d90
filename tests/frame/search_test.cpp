// Search family: searches in ascending arrays, nearest points and bound indices against
// NumPy's searchsorted/argmin (tests/reference/gen_search.py), the batch search against
// the single one, order tests, level crossings, range rounding, and one table of refused
// calls that must leave every output untouched.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <iterator>
#include <limits>
#include <vector>

#include "zemath/search.h"

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

TEST(Search, MatchesSearchsortedAndArgmin) {
    for (const SearchReference& c : kSearchReference) {
        const int n = static_cast<int>(c.x.size()), m = static_cast<int>(c.targets.size());
        const double *x = c.x.data(), *t = c.targets.data();
        SCOPED_TRACE(n);
        std::vector<int> batch(m), nearest(m);
        std::vector<double> value(m);
        ASSERT_EQ(zemath_array_find_indices(x, n, t, m, batch.data()), 0);
        EXPECT_EQ(batch, c.position);
        ASSERT_EQ(zemath_find_nearest_values(x, n, t, m, nearest.data(), value.data()), 0);
        EXPECT_EQ(nearest, c.nearest);
        for (int k = 0; k < m; ++k) {
            EXPECT_EQ(value[k], c.x[c.nearest[k]]);
            int single = kUntouched, any_order = kUntouched;
            ASSERT_EQ(zemath_binary_search(x, n, t[k], &single), 0);
            EXPECT_EQ(single, c.position[k]) << t[k];
            ASSERT_EQ(zemath_find_nearest_index(x, n, t[k], &any_order), 0);
            EXPECT_EQ(any_order, c.nearest[k]) << t[k];
        }
    }
}

TEST(Search, BoundsIndex) {
    std::vector<BoundsReference> cases(std::begin(kBoundsReference), std::end(kBoundsReference));
    // Descending data (only the ends decide the direction), equal values, infinite bounds.
    const std::vector<double> down{9, 7, 7, 5, 3, 1};
    cases.insert(cases.end(), {{down, 4, 8, 0, 3, 1}, {down, 7, 7, 0, 2, 1}});
    cases.insert(cases.end(), {{down, -kInf, kInf, 0, 5, 0}, {down, 5.5, 6.5, -64, 0, 0}});
    for (const BoundsReference& c : cases) {
        int lo = kUntouched, hi = kUntouched;
        const int n = static_cast<int>(c.x.size());
        EXPECT_EQ(zemath_get_lower_upper_bounds_index(c.x.data(), n, c.lower, c.upper, &lo, &hi),
                  c.status)
            << c.lower << " " << c.upper;
        EXPECT_EQ(lo, c.status == 0 ? c.lower_index : kUntouched);
        EXPECT_EQ(hi, c.status == 0 ? c.upper_index : kUntouched);
    }
}

TEST(Search, DocumentedPositions) {
    // A NaN target ends at n - 2 (every x[mid] > NaN is false); sizes 1 and 2 never bisect;
    // equal ends pass the order check, and NANUM is an ordinary value.
    const struct {
        std::vector<double> x;
        double target;
        int index;
    } cases[] = {{{1, 2, 3, 4}, 2.5, 1}, {{1, 2, 3, 4}, 0, -1},
                 {{1, 2, 3, 4}, 4, 3},   {{1, 2, 3, 4}, kNaN, 2},
                 {{1, 3}, 2, 0},         {{1}, 5, 0},
                 {{1}, 0.5, -1},         {{NANUM, NANUM, NANUM}, 0, 2}};
    for (const auto& c : cases) {
        int index = kUntouched;
        ASSERT_EQ(zemath_binary_search(c.x.data(), static_cast<int>(c.x.size()), c.target, &index),
                  0);
        EXPECT_EQ(index, c.index) << c.target;
    }
}

TEST(Search, BatchAgreesWithSingleOnLargeArrays) {
    // From 1024 targets on a sorted NaN-free array the batch runs a sweep; with a NaN in
    // the array it bisects. Every answer must be the single search's.
    std::vector<double> sorted(3001);
    for (int i = 0; i < 3001; ++i) sorted[i] = std::floor((i - 1500) / 7.0) * 0.5;
    for (int i = 1400; i < 1600; i += 2) sorted[i] = sorted[i] == 0.0 ? -0.0 : sorted[i];
    std::vector<double> with_nan = sorted;
    with_nan[1000] = kNaN;
    for (const auto& x : {sorted, with_nan}) {
        const int n = static_cast<int>(x.size()), m = 5000;
        std::vector<double> targets{kNaN, kInf, -kInf, -0.0, NANUM};
        for (int k = 5; k < m; ++k) targets.push_back(std::cos(k * 1.3) * (k % 3 ? 0.8 : 800));
        for (int k = 5; k < m; k += 50) targets[k] = x[(k * 7) % n];  // exact hits
        std::vector<int> batch(m);
        ASSERT_EQ(zemath_array_find_indices(x.data(), n, targets.data(), m, batch.data()), 0);
        for (int k = 0; k < m; ++k) {
            int single = kUntouched;
            zemath_binary_search(x.data(), n, targets[k], &single);
            ASSERT_EQ(batch[k], single) << k;
        }
    }
}

TEST(Search, OrderTests) {
    // A pair holding NaN breaks no order; NANUM is an ordinary tiny negative value here.
    const struct {
        std::vector<double> x;
        int not_strict, strict;
    } monotonic[] = {{{1, 1, 2}, 2, 0},    {{3, 2, 1}, 1, 1},       {{5}, 2, 2},
                     {{1, kNaN, 0}, 2, 2}, {{1, kNaN, 2, 1}, 1, 1}, {{NANUM, 0, 1}, 2, 2},
                     {{1, 3, 2}, 0, 0}};
    for (const auto& c : monotonic) {
        const auto n = static_cast<unsigned>(c.x.size());
        EXPECT_EQ(zemath_is_monotonic(c.x.data(), n, false), c.not_strict) << c.x[0];
        EXPECT_EQ(zemath_is_monotonic(c.x.data(), n, true), c.strict) << c.x[0];
    }
    // The tolerant test: with both orders allowed the one with fewer breaks wins,
    // increasing on a tie; unusable points are skipped (pairs (3, 2), (2, 5) below).
    const struct {
        std::vector<double> x;
        double fraction;
        int order;
    } tolerant[] = {{{1, 2, 1, 4, 5}, 0.0, 0},  {{1, 2, 1, 4, 5}, 0.25, 2},
                    {{1, 2, 1, 4, 5}, 0.24, 0}, {{5, 4, 6, 2, 1}, 0.25, 1},
                    {{1, 1, 1}, 0.0, 2},        {{1, 3, 2, 4}, 1.0, 2},
                    {{4, 2, 3, 1}, 1.0, 1},     {{1, 2, 2, 1}, 1.0, 2},
                    {{3, NANUM, 2, 5}, 0.5, 2}, {{NANUM, kNaN}, 0.0, 2}};
    for (const auto& c : tolerant) {
        int order = kUntouched, int_order = kUntouched;
        const int n = static_cast<int>(c.x.size());
        ASSERT_EQ(zemath_check_order(c.x.data(), n, c.fraction, &order), 0);
        EXPECT_EQ(order, c.order) << c.x[0] << " " << c.fraction;
        if (c.x[1] == NANUM || std::isnan(c.x[1])) continue;
        const std::vector<int> ix(c.x.begin(), c.x.end());  // the int version agrees
        ASSERT_EQ(zemath_i_check_order(ix.data(), n, c.fraction, &int_order), 0);
        EXPECT_EQ(int_order, c.order) << c.x[0] << " " << c.fraction;
    }
}

TEST(Search, IsInsideRange) {
    const struct {
        double value, a, b;
        bool ends, inside;
    } cases[] = {{2, 2, 5, false, false},     {2, 5, 2, true, true},
                 {3, 5, 2, false, true},      {6, 2, 5, true, false},
                 {2, 2, 2, true, true},       {kNaN, 0, 1, true, false},
                 {0.5, kNaN, 1, true, false}, {1e300, 0, kInf, false, true}};
    for (const auto& c : cases)
        EXPECT_EQ(zemath_is_inside_range(c.value, c.a, c.b, c.ends), c.inside) << c.value;
}

TEST(Search, NearestPoints) {
    // Any order: first occurrence on ties (4: 3 or 5), NANUM at index 1 skipped (0).
    const double x[] = {5, NANUM, 1, kNaN, 3, 1, -2};
    const double targets[] = {2, 2.1, 4, 100, kInf, -kInf, 0};
    const int want[] = {2, 4, 0, 0, 0, 6, 2};
    for (int k = 0; k < 7; ++k) {
        int index = kUntouched;
        ASSERT_EQ(zemath_find_nearest_index(x, 7, targets[k], &index), 0);
        EXPECT_EQ(index, want[k]) << targets[k];
    }
    // Ascending data: the lower value on a tie; NaN and NANUM targets get -1 and NANUM.
    const double up[] = {1, 2, 2, 4}, t[] = {3, kNaN, NANUM, -kInf, kInf};
    int index[5];
    double value[5];
    ASSERT_EQ(zemath_find_nearest_values(up, 4, t, 5, index, value), 0);
    EXPECT_EQ(std::vector<int>(index, index + 5), (std::vector<int>{1, -1, -1, 0, 3}));
    EXPECT_EQ(std::vector<double>(value, value + 5), (std::vector<double>{2, NANUM, NANUM, 1, 4}));
    double only = kUntouchedValue;  // one output alone is fine
    ASSERT_EQ(zemath_find_nearest_values(up, 4, t, 1, nullptr, &only), 0);
    EXPECT_EQ(only, 2.0);
}

TEST(Search, FindIndexByTarget) {
    // Forwards from 0: 2 lies between y[1] and y[2]; 1 is hit exactly; 4 is never reached
    // (3 -> NANUM -> 5: a missing point is no crossing), 5 is hit past the gap. Backwards
    // from 7: 0.75 lies between y[7] and y[6]; 2.5 between y[2] and y[1], past the gaps.
    // From 2 the first 2 is the exact one at 6. Missing points are never reached, even by
    // a NANUM target.
    //                  0  1  2    3  4       5  6  7
    const double y[] = {0, 1, 3, NANUM, 5, kNaN, 2, 0.5};
    const struct {
        double target;
        int start, direction, index;
    } cases[] = {{2, 0, 1, 1},     {1, 0, 1, 1}, {4, 0, 1, -1},   {5, 0, 1, 4},
                 {0.75, 7, -1, 7}, {2, 2, 1, 6}, {2.5, 7, -1, 2}, {NANUM, 0, 1, -1}};
    for (const auto& c : cases) {
        int index = kUntouched;
        ASSERT_EQ(zemath_find_index_by_target(y, 8, c.target, c.start, c.direction, &index), 0);
        EXPECT_EQ(index, c.index) << c.target << " from " << c.start;
    }
}

TEST(Search, RoundRange) {
    // On multiples: kept (the decimal doubles); zero width on a multiple: widened; no
    // -0.0 bound; the increment output is optional.
    // Columns: lower, upper, divisions, rounded lower, rounded upper, step.
    // clang-format off
    const double cases[][6] = {
        {0.13, 0.97, 5, 0.0, 1.0, 0.2},       {-3.7, 12.2, 4, -5.0, 15.0, 5.0},
        {0.3, 0.7, 4, 0.3, 0.7, 0.1},         {5, 5, 5, 4.0, 6.0, 1.0},
        {0, 0, 1, -1.0, 1.0, 1.0},            {1234, 5678, 10, 1000.0, 6000.0, 500.0},
        {-0.0072, -0.0011, 4, -0.008, 0.0, 0.002}};
    // clang-format on
    for (const auto& c : cases) {
        double lower = c[0], upper = c[1], step = kUntouchedValue;
        ASSERT_EQ(zemath_round_range(&lower, &upper, static_cast<int>(c[2]), &step), 0) << c[0];
        EXPECT_EQ(lower, c[3]) << c[0] << " " << c[1];
        EXPECT_EQ(upper, c[4]) << c[0] << " " << c[1];
        EXPECT_FALSE(std::signbit(upper) && upper == 0.0);
        EXPECT_DOUBLE_EQ(step, c[5]);
    }
    double lower = 1, upper = 2;
    EXPECT_EQ(zemath_round_range(&lower, &upper, 3, nullptr), 0);
    // Ranges a few doubles wide: the rounded range still holds the input, with a step no
    // finer than the spacing of doubles there.
    const double narrow[][2] = {{0.9999999999999999, 1.0000000000000002},
                                {1e300, std::nextafter(1e300, kInf)},
                                {-5e-324, 5e-324}};
    for (const auto& r : narrow) {
        double lo = r[0], hi = r[1], step = 0.0;
        ASSERT_EQ(zemath_round_range(&lo, &hi, 3, &step), 0) << r[0];
        EXPECT_LE(lo, r[0]) << r[0];
        EXPECT_GE(hi, r[1]) << r[1];
        EXPECT_GE(step, std::nextafter(std::fabs(r[1]), kInf) - std::fabs(r[1])) << r[0];
    }
}

TEST(Search, RoundWithTolerance) {
    const double x[] = {0.1 + 0.2, 1.2499, NANUM, kInf, -0.7000000001, kNaN};
    double out[6];
    ASSERT_EQ(zemath_round_with_tolerance(x, 6, 0.1, 1e-9, out), 2);
    EXPECT_EQ(std::vector<double>(out, out + 5),
              (std::vector<double>{0.3, 1.2499, NANUM, kInf, -0.7}));
    EXPECT_TRUE(std::isnan(out[5]));
    ASSERT_EQ(zemath_round_with_tolerance(x, 2, 0.25, 0.01, out), 1);
    EXPECT_EQ(out[0], x[0]);  // 0.05 from 0.25: outside the tolerance
    EXPECT_EQ(out[1], 1.25);
    // In place, with an increment that is no decimal fraction.
    double y[] = {3.14159, 6.2832, 1.0};
    ASSERT_EQ(zemath_round_with_tolerance(y, 3, M_PI, 1e-4, y), 2);
    EXPECT_EQ(std::vector<double>(y, y + 3), (std::vector<double>{M_PI, 2 * M_PI, 1.0}));
}

TEST(Search, RefusalsWriteNothing) {
    const double x[] = {1, 2, 3}, down[] = {3, 2, 1}, t[] = {1.5, 2.5}, unusable[] = {NANUM, kNaN};
    const int ix[] = {1, 2};
    int index = kUntouched, lo = kUntouched, hi = kUntouched, out[2] = {kUntouched, kUntouched};
    double values[2] = {kUntouchedValue, kUntouchedValue};
    // Range bounds for zemath_round_range, checked bit for bit afterwards.
    double r[] = {1, 2, kNaN, 1, NANUM, 1, -1.7e308, 1.7e308};
    double r_before[std::size(r)];
    std::memcpy(r_before, r, sizeof r);
    const struct {
        int got, want;
    } cases[] = {{zemath_is_monotonic(nullptr, 2, false), -11},
                 {zemath_is_monotonic(x, 0, true), -5},
                 {zemath_binary_search(nullptr, 3, 1.0, &index), -18},
                 {zemath_binary_search(down, 3, 1.0, &index), -18},  // not ascending
                 {zemath_array_find_indices(x, 3, t, 2, nullptr), -18},
                 {zemath_array_find_indices(x, 3, t, 0, out), 0},
                 {zemath_find_nearest_index(nullptr, 3, 0.0, &index), -11},
                 {zemath_find_nearest_index(x, 0, 0.0, &index), -18},
                 {zemath_find_nearest_index(unusable, 2, 0.0, &index), -64},
                 {zemath_find_nearest_index(x, 3, NANUM, &index), -64},
                 {zemath_find_nearest_values(x, 3, t, 2, nullptr, nullptr), -11},
                 {zemath_find_nearest_values(down, 3, t, 2, out, values), -18},
                 {zemath_find_index_by_target(x, 3, 1, 0, 1, nullptr), -11},
                 {zemath_find_index_by_target(x, 3, 1, 3, 1, &index), -18},  // start outside
                 {zemath_get_lower_upper_bounds_index(x, 3, 1, 2, &lo, nullptr), -11},
                 {zemath_get_lower_upper_bounds_index(x, 0, 1, 2, &lo, &hi), -18},
                 {zemath_get_lower_upper_bounds_index(x, 3, 2, 1, &lo, &hi), -6},
                 {zemath_get_lower_upper_bounds_index(x, 3, 1, kNaN, &lo, &hi), -6},
                 {zemath_check_order(nullptr, 2, 0.0, &index), -11},
                 {zemath_check_order(x, 1, 0.0, &index), -15},
                 {zemath_check_order(x, 2, kNaN, &index), -15},
                 {zemath_i_check_order(nullptr, 2, 0.0, &index), -11},
                 {zemath_i_check_order(ix, 2, 1.01, &index), -15},
                 {zemath_round_range(&r[0], nullptr, 3, values), -11},
                 {zemath_round_range(&r[0], &r[1], 0, values), -15},
                 {zemath_round_range(&r[1], &r[0], 3, values), -6},  // lower > upper
                 {zemath_round_range(&r[2], &r[3], 3, values), -6},
                 {zemath_round_range(&r[4], &r[5], 3, values), -6},
                 {zemath_round_range(&r[6], &r[7], 1, values), -6},  // the width overflows
                 {zemath_round_with_tolerance(nullptr, 2, 0.1, 0.0, values), -11},
                 {zemath_round_with_tolerance(x, 0, 0.1, 0.0, values), -15},
                 {zemath_round_with_tolerance(x, 2, 0.0, 0.0, values), -14},
                 {zemath_round_with_tolerance(x, 2, 0.1, kNaN, values), -14}};
    for (std::size_t k = 0; k < std::size(cases); ++k)
        EXPECT_EQ(cases[k].got, cases[k].want) << "case " << k;
    EXPECT_EQ((std::vector<int>{index, lo, hi, out[0], out[1]}), std::vector<int>(5, kUntouched));
    EXPECT_EQ((std::vector<double>{values[0], values[1]}), std::vector<double>(2, kUntouchedValue));
    EXPECT_EQ(std::memcmp(r, r_before, sizeof r), 0);
}

}  // namespace
