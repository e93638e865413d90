// XY reduction against NumPy (tests/reference/gen_reduction.py) for every method code,
// the grouping, mean increment and sampling check, the sampling-window reductions, and
// one table of refused calls that must leave the outputs untouched.
#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <cstring>
#include <limits>
#include <vector>

#include "zemath/reduction.h"

namespace {

struct PointGroupCase {
    unsigned n, size;
    int method;
    std::vector<double> y, expected;
};
struct BinCase {
    int kind;  // 0 fixed increment, 1 fixed number of groups
    double param, x_start, x_end;
    int method;
    std::vector<double> x, y, expected;
};
#include "reference/reduction_ref.inc"

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kUntouched = 777.0;

void expect_close(const std::vector<double>& got, const std::vector<double>& expected,
                  const std::string& what) {
    ASSERT_EQ(got.size(), expected.size()) << what;
    for (size_t k = 0; k < got.size(); ++k) {
        if (expected[k] == NANUM) {
            EXPECT_EQ(got[k], NANUM) << what << " group " << k;
        } else {
            // Sums in a different order: a few ulps of the magnitudes summed.
            EXPECT_NEAR(got[k], expected[k], 1e-13 * (1.0 + std::fabs(expected[k])))
                << what << " group " << k;
        }
    }
}

TEST(XYReduction, GroupsOfPointsMatchNumpy) {
    for (const PointGroupCase& c : kPointGroupCases) {
        std::vector<double> out(c.expected.size() + 1, kUntouched);
        ASSERT_EQ(zemath_reducexy_n_points(c.y.data(), out.data(), c.n, c.size, c.method),
                  static_cast<int>(c.expected.size()));
        EXPECT_EQ(out.back(), kUntouched);  // nothing written past the groups
        out.pop_back();
        expect_close(out, c.expected,
                     "n " + std::to_string(c.n) + " method " + std::to_string(c.method));
    }
}

// Minimum and maximum of groups bit for bit as the left-to-right scan defines them (NANUM
// skipped, NaN never replacing a value, a NaN first kept, the first of -0.0 and +0.0
// kept), for group sizes around the vector widths, with each awkward value placed first,
// inside the vector part and in the tail.
TEST(XYReduction, GroupMinimumAndMaximumMatchTheScan) {
    auto scan = [](const double* y, unsigned n, bool largest) {
        double best = NANUM;
        bool any = false;
        for (unsigned i = 0; i < n; ++i) {
            if (y[i] == NANUM) continue;
            if (!any || (largest ? y[i] > best : y[i] < best)) best = y[i];
            any = true;
        }
        return best;
    };
    const double inf = std::numeric_limits<double>::infinity();
    const double specials[] = {NANUM, kNaN, -0.0, 0.0, inf, -inf, 1e308, -4.9e-324};
    for (const unsigned n : {1u, 7u, 8u, 9u, 63u, 64u, 65u, 79u, 80u, 81u, 1000u}) {
        for (const double special : specials) {
            for (const unsigned at : {0u, n / 2, n - 1}) {
                std::vector<double> y(n);
                for (unsigned i = 0; i < n; ++i)
                    y[i] = special == 0.0 ? -1.0 - i % 5 : std::sin(1.0 + i);  // zeros can win
                y[at] = special;
                if (special == 0.0 && n > 2) y[(at + n / 3) % n] = -0.0;  // both zeros present
                for (const int method : {1, 2}) {
                    double got = kUntouched;
                    ASSERT_EQ(zemath_reducexy_n_points(y.data(), &got, n, n, method), 1);
                    const double want = scan(y.data(), n, method == 2);
                    EXPECT_TRUE(std::memcmp(&got, &want, sizeof got) == 0 ||
                                (std::isnan(got) && std::isnan(want)))
                        << "n " << n << " special " << special << " at " << at << " method "
                        << method << ": " << got << " vs " << want;
                }
            }
        }
    }
}

TEST(XYReduction, XBinsMatchNumpy) {
    for (const BinCase& c : kBinCases) {
        const int n = static_cast<int>(c.x.size());
        std::vector<double> out(c.expected.size() + 1, kUntouched);
        const int groups =
            c.kind == 0 ? zemath_reducexy_fixing_increbin(c.x.data(), c.y.data(), n, c.x_start,
                                                          c.x_end, c.method, out.data(), c.param)
                        : zemath_reducexy_n_groups(c.x.data(), c.y.data(), n, c.x_start, c.x_end,
                                                   c.method, out.data(), static_cast<int>(c.param));
        ASSERT_EQ(groups, static_cast<int>(c.expected.size())) << c.kind << " " << c.method;
        EXPECT_EQ(out.back(), kUntouched);
        out.pop_back();
        expect_close(out, c.expected,
                     "bins " + std::to_string(c.kind) + " method " + std::to_string(c.method));
    }
}

TEST(XYReduction, DocumentedExamples) {
    const double y[10] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10};
    double out[4];
    ASSERT_EQ(zemath_reducexy_n_points(y, out, 10, 3, 8), 4);
    EXPECT_EQ(out[0], 6.0);
    EXPECT_EQ(out[3], 10.0);  // the last group holds one point
    const double with_missing[3] = {2, NANUM, 4};
    ASSERT_EQ(zemath_reducexy_n_points(with_missing, out, 3, 3, 0), 1);
    EXPECT_EQ(out[0], 2.0);                       // full count: 6 / 3
    const double with_nan[3] = {1.0, kNaN, 3.0};  // NaN is not missing: it propagates
    for (const int method : {0, 3, 8, 9, 11}) {
        ASSERT_EQ(zemath_reducexy_n_points(with_nan, out, 3, 3, method), 1);
        EXPECT_TRUE(std::isnan(out[0])) << method;
    }
    // Method 13 of bin k reports x_start + (k + 0.5) increment, from the x start argument.
    const double x[4] = {0.0, 1.0, 2.0, 3.0}, v[4] = {5, 6, 7, 8};
    double centre[6];
    ASSERT_EQ(zemath_reducexy_fixing_increbin(x, v, 4, 10.0, 0.0, 13, centre, 2.0), 6);
    for (int k = 0; k < 6; ++k) EXPECT_EQ(centre[k], 10.0 + (k + 0.5) * 2.0);
    double step = 0.0;
    const double regular[4] = {0, 1, 2, 3}, irregular[3] = {0, 1, 2.5};
    EXPECT_EQ(zemath_sampling_resolution(4, regular, &step, 0.01), 0);
    EXPECT_EQ(step, 1.0);
    EXPECT_EQ(zemath_sampling_resolution(3, irregular, &step, 0.01), -32);
    const double descending[3] = {4, 2, 0}, flat[3] = {1, 1, 1}, gap[3] = {0, kNaN, 2};
    EXPECT_EQ(zemath_sampling_resolution(3, descending, &step, 0.01), 0);
    EXPECT_EQ(step, -2.0);
    EXPECT_EQ(zemath_sampling_resolution(3, flat, &step, 0.01), -50);
    EXPECT_EQ(zemath_sampling_resolution(3, gap, &step, 0.01), -32);
    const double missing_x[3] = {NANUM, NANUM, 1.0};
    EXPECT_EQ(zemath_mean_increment(missing_x, 3, &step), -13);
}

TEST(XYReduction, GroupingByEdges) {
    struct Case {
        std::vector<double> x, edges;
        std::vector<int> last;
    } cases[] = {
        {{0.5, 1.0, 1.5, 3.2}, {1.0, 2.0, 3.0, 4.0}, {0, 2, 2, 3}},   // empty third bin
        {{5.0, 6.0}, {1.0, 2.0}, {-1, 1}},                            // beyond the last edge
        {{0.1, NANUM, kNaN, 0.05, 2.5}, {1.0, 2.0, 3.0}, {3, 3, 4}},  // missing, NaN, out of order
    };
    for (const Case& c : cases) {
        std::vector<int> last(c.edges.size(), -99);
        ASSERT_EQ(zemath_group_xy_by_x_new(c.x.data(), static_cast<int>(c.x.size()), c.edges.data(),
                                           static_cast<int>(c.edges.size()), last.data()),
                  static_cast<int>(c.edges.size()));
        EXPECT_EQ(last, c.last);
    }
}

TEST(XYReduction, SamplingWindowReductions) {
    // 5 x 5 matrix of k, reduced by 2 x 2 blocks with the mean: 3 x 3 blocks, cut edges.
    std::vector<double> z(25);
    for (int k = 0; k < 25; ++k) z[k] = k;
    std::vector<double> out(9, kUntouched);
    int rows = 0, cols = 0;
    ASSERT_EQ(zemath_reduce_2D_data(z.data(), 5, 5, 2, 2, 0, 0, out.data(), &rows, &cols), 0);
    EXPECT_EQ(rows, 3);
    EXPECT_EQ(cols, 3);
    EXPECT_EQ(out[0], (0 + 1 + 5 + 6) / 4.0);
    EXPECT_EQ(out[2], (4 + 9) / 2.0);  // last column block is one column wide
    EXPECT_EQ(out[8], 24.0);
    // 3 x 3 blocks with the cross shape take the centre row and column only: max of block
    // (0, 0) over cells 1, 5, 6, 7, 11 is 11.
    ASSERT_EQ(zemath_reduce_2D_data(z.data(), 5, 5, 3, 3, 2, 2, out.data(), nullptr, nullptr), 0);
    EXPECT_EQ(out[0], 11.0);

    double x[7] = {0, 1, 2, 3, 4, 5, 6}, y[7] = {1, 5, 2, 8, 3, 9, 4};
    double xo[3], yo[3];
    ASSERT_EQ(reduce_xy_get_sampling_data(x, y, 7, 3, 2, xo, yo), 3);
    EXPECT_EQ(xo[0], 1.0);
    EXPECT_EQ(yo[0], 5.0);
    EXPECT_EQ(xo[2], 6.0);
    EXPECT_EQ(yo[2], 4.0);
    // In place: x_out = x.
    ASSERT_EQ(zemath_skip_points_in_every_sampling_size(x, y, 7, 3, x, y), 3);
    EXPECT_EQ(x[1], 3.0);
    EXPECT_EQ(y[2], 4.0);
}

// A block larger than the matrix is cut at the matrix edge: one block, the rectangle
// taking every cell and the cross (centre row and column far outside) none. Listing the
// window cell by cell before the cut would take INT_MAX x INT_MAX steps.
TEST(XYReduction, BlocksFarLargerThanTheMatrix) {
    std::vector<double> z(12);
    for (int k = 0; k < 12; ++k) z[k] = k;
    double out = kUntouched;
    int rows = 0, cols = 0;
    ASSERT_EQ(zemath_reduce_2D_data(z.data(), 3, 4, INT_MAX, INT_MAX, 0, 8, &out, &rows, &cols), 0);
    EXPECT_EQ(rows, 1);
    EXPECT_EQ(cols, 1);
    EXPECT_EQ(out, 66.0);  // 0 + 1 + ... + 11
    ASSERT_EQ(zemath_reduce_2D_data(z.data(), 3, 4, INT_MAX, INT_MAX, 2, 8, &out, &rows, &cols), 0);
    EXPECT_EQ(out, NANUM);
    // Tall blocks 7 rows high on 3 rows: the block's rows 0..2 of its rectangle, columns
    // in pairs; maxima 9 and 11.
    double two[2] = {kUntouched, kUntouched};
    ASSERT_EQ(zemath_reduce_2D_data(z.data(), 3, 4, 2, 7, 0, 2, two, &rows, &cols), 0);
    EXPECT_EQ(rows, 1);
    EXPECT_EQ(cols, 2);
    EXPECT_EQ(two[0], 9.0);
    EXPECT_EQ(two[1], 11.0);
}

TEST(XYReduction, RefusalsWriteNothing) {
    const double x[3] = {0, 1, 2}, y[3] = {1, 2, 3};
    double out[8] = {kUntouched, kUntouched, kUntouched, kUntouched,
                     kUntouched, kUntouched, kUntouched, kUntouched};
    int idx[3] = {-5, -5, -5};
    struct Refusal {
        const char* what;
        int got, status;
    } refusals[] = {
        {"n_points null y", zemath_reducexy_n_points(nullptr, out, 3, 1, 0), -11},
        {"n_points null out", zemath_reducexy_n_points(y, nullptr, 3, 1, 0), -11},
        {"n_points n 0", zemath_reducexy_n_points(y, out, 0, 1, 0), -18},
        {"n_points size 0", zemath_reducexy_n_points(y, out, 3, 0, 0), -18},
        {"increbin null", zemath_reducexy_fixing_increbin(nullptr, y, 3, 0, 2, 0, out, 1), -1},
        {"increbin n 0", zemath_reducexy_fixing_increbin(x, y, 0, 0, 2, 0, out, 1), -1},
        {"increbin above span", zemath_reducexy_fixing_increbin(x, y, 3, 0, 2, 0, out, 2.5), -1},
        {"increbin zero", zemath_reducexy_fixing_increbin(x, y, 3, 0, 2, 0, out, 0.0), -1},
        {"increbin negative", zemath_reducexy_fixing_increbin(x, y, 3, 0, 2, 0, out, -1.0), -1},
        {"increbin NaN", zemath_reducexy_fixing_increbin(x, y, 3, 0, 2, 0, out, kNaN), -1},
        {"increbin tiny", zemath_reducexy_fixing_increbin(x, y, 3, 0, 2, 0, out, 1e-300), -1},
        {"n_groups null", zemath_reducexy_n_groups(x, y, 3, 0, 2, 0, nullptr, 2), -1},
        {"n_groups n 0", zemath_reducexy_n_groups(x, y, 0, 0, 2, 0, out, 2), -1},
        {"n_groups 0 groups", zemath_reducexy_n_groups(x, y, 3, 0, 2, 0, out, 0), -1},
        {"n_groups INT_MIN", zemath_reducexy_n_groups(x, y, 3, 0, 2, 0, out, INT_MIN), -1},
        {"n_groups NaN range", zemath_reducexy_n_groups(x, y, 3, kNaN, 2, 13, out, 2), -1},
        {"group null", zemath_group_xy_by_x_new(x, 3, nullptr, 3, idx), -11},
        {"group no edges", zemath_group_xy_by_x_new(x, 3, x, 0, idx), -18},
        {"mean inc null", zemath_mean_increment(nullptr, 3, out), -11},
        {"mean inc n 1", zemath_mean_increment(x, 1, out), -13},
        {"resolution null", zemath_sampling_resolution(3, x, nullptr, 0.1), -11},
        {"resolution n 1", zemath_sampling_resolution(1, x, out, 0.1), -13},
        {"2D null", zemath_reduce_2D_data(nullptr, 1, 3, 1, 1, 0, 0, out, nullptr, nullptr), -11},
        {"2D no rows", zemath_reduce_2D_data(x, 0, 3, 1, 1, 0, 0, out, nullptr, nullptr), -12},
        {"2D width 0", zemath_reduce_2D_data(x, 1, 3, 0, 1, 0, 0, out, nullptr, nullptr), -18},
        {"2D shape", zemath_reduce_2D_data(x, 1, 3, 1, 1, 7, 0, out, nullptr, nullptr), -10},
        {"sampling null", reduce_xy_get_sampling_data(x, y, 3, 1, 0, nullptr, out), -11},
        {"sampling size 0", reduce_xy_get_sampling_data(x, y, 3, 0, 0, out, out), -18},
        {"skip n INT_MIN", zemath_skip_points_in_every_sampling_size(x, y, INT_MIN, 1, out, out),
         -18},
        {"skip null", zemath_skip_points_in_every_sampling_size(x, nullptr, 3, 1, out, out), -11},
    };
    for (const Refusal& r : refusals) EXPECT_EQ(r.got, r.status) << r.what;
    for (const double v : out) EXPECT_EQ(v, kUntouched);
    for (const int v : idx) EXPECT_EQ(v, -5);
}

}  // namespace
