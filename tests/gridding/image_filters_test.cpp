// Image rank filters against SciPy ndimage (interior) and the clipped-window rule
// (border), from tests/reference/gen_image_filters.py; the sampling windows; and one
// table of refused calls that must leave the image untouched.
#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <limits>
#include <random>
#include <vector>

#include "gridding/image_filters.hpp"
#include "zemath/image.h"
#include "zemath/reduction.h"

namespace {

using zemath::FilterKind;
using zemath::FilterRegion;
using zemath::RankPath;
using zemath::run_image_filter;

struct ImageFilterCase {
    const char* what;
    int rows, cols, kind;
    double percent;
    int width, height, shape;
    double threshold;
    int row_from, col_from, row_to, col_to;
    std::vector<unsigned short> input, expected;
};
#include "reference/image_filters_ref.inc"

int run(const ImageFilterCase& c, std::vector<unsigned short>& image) {
    if (c.kind == 0)
        return zemath_us_percentile_filter(image.data(), c.rows, c.cols, c.percent, c.width,
                                           c.height, c.shape, c.threshold, c.row_from, c.col_from,
                                           c.row_to, c.col_to);
    return zemath_us_conserve_filter(image.data(), c.rows, c.cols, c.width, c.height, c.shape,
                                     c.threshold, c.row_from, c.col_from, c.row_to, c.col_to);
}

TEST(ImageFilters, MatchScipyInsideAndClippedRuleAtBorders) {
    for (const ImageFilterCase& c : kImageFilterCases) {
        std::vector<unsigned short> image = c.input;
        ASSERT_EQ(run(c, image), 0) << c.what;
        EXPECT_EQ(image, c.expected) << c.what;
    }
}

// A window of 65536 cells or more (wider counters): pixels equal to their column index,
// a 256 x 256 window at 100% gives the largest column in the clipped window.
TEST(ImageFilters, WindowOfAtLeast65536Cells) {
    const int rows = 256, cols = 260;
    std::vector<unsigned short> image(rows * cols);
    for (int k = 0; k < rows * cols; ++k) image[k] = static_cast<unsigned short>(k % cols);
    ASSERT_EQ(zemath_us_percentile_filter(image.data(), rows, cols, 100.0, 256, 256, 0, 0.0, 0, 0,
                                          -1, -1),
              0);
    for (int r = 0; r < rows; r += 51)
        for (int c = 0; c < cols; ++c)
            ASSERT_EQ(image[r * cols + c], std::min(c + 127, cols - 1)) << r << "," << c;
}

// The row and column histogram and network paths of the rectangle percentile filter against the
// operator path (per-window selection) on the same random input: every pixel equal, for
// windows from 1 x 1 to larger than the image, one-row and one-column images, regions,
// thresholds, percents giving the minimum, inner ranks, 100% and the maximum, value
// ranges from constant to full 16 bits, and images wide enough for several strips.
TEST(ImageFilters, HistogramPathsMatchTheOperator) {
    struct PathCase {
        int rows, cols, width, height;
        unsigned span;  // pixels drawn from low .. low + span
        FilterRegion region;
        double percent, threshold;
    };
    const PathCase cases[] = {
        {17, 23, 5, 5, 65535, {0, 0, 16, 22}, 50.0, 0.0},
        {17, 23, 1, 1, 65535, {0, 0, 16, 22}, 50.0, 0.0},
        {17, 23, 23, 17, 65535, {0, 0, 16, 22}, 50.0, 0.0},  // the whole image
        {17, 23, 40, 30, 65535, {0, 0, 16, 22}, 37.0, 0.0},  // larger than the image
        {17, 23, 4, 6, 65535, {3, 5, 11, 19}, 50.0, 0.0},    // even sides, a region
        {17, 23, 9, 7, 300, {0, 0, 16, 22}, 75.0, 0.0},      // narrow range: 3 levels
        {17, 23, 9, 7, 7, {0, 0, 16, 22}, 50.0, 0.0},        // 3 bits: 1 level
        {17, 23, 9, 7, 0, {0, 0, 16, 22}, 50.0, 0.0},        // constant image
        {17, 23, 6, 6, 65535, {0, 0, 16, 22}, 0.0, 0.0},     // minimum
        {17, 23, 6, 6, 65535, {0, 0, 16, 22}, 100.0, 0.0},   // largest rank
        {17, 23, 6, 6, 65535, {0, 0, 16, 22}, 250.0, 0.0},   // maximum
        {17, 23, 5, 9, 65535, {0, 0, 16, 22}, 3.0, 0.0},     // k = 1
        {17, 23, 7, 7, 4000, {0, 0, 16, 22}, 50.0, 10.0},    // moves of at least T
        {17, 23, 7, 7, 4000, {2, 2, 14, 20}, 90.0, -10.0},   // moves of at most T
        {1, 61, 7, 1, 65535, {0, 0, 0, 60}, 50.0, 0.0},      // one row
        {1, 61, 61, 1, 65535, {0, 10, 0, 50}, 50.0, 0.0},
        {61, 1, 1, 9, 65535, {0, 0, 60, 0}, 50.0, 0.0},  // one column
        {61, 1, 1, 61, 65535, {5, 0, 55, 0}, 80.0, 0.0},
        {1, 1, 3, 3, 65535, {0, 0, 0, 0}, 50.0, 0.0},
        {9, 400, 45, 9, 65535, {0, 0, 8, 399}, 50.0, 0.0},     // several strips
        {9, 400, 45, 9, 65535, {2, 37, 6, 351}, 30.0, 0.0},    // several strips, a region
        {300, 12, 5, 270, 65535, {0, 0, 299, 11}, 50.0, 0.0},  // 16-bit column counters
        // Interiors wider than the network's lanes: full windows there, clipped bands
        // around them, blocks ending short of a lane multiple.
        {20, 77, 3, 3, 65535, {0, 0, 19, 76}, 50.0, 0.0},
        {20, 77, 3, 3, 65535, {0, 0, 19, 76}, 0.0, 0.0},    // minimum
        {20, 77, 3, 3, 65535, {0, 0, 19, 76}, 100.0, 0.0},  // largest rank
        {20, 77, 4, 2, 65535, {0, 0, 19, 76}, 50.0, 0.0},   // even sides
        {20, 77, 7, 7, 65535, {0, 0, 19, 76}, 30.0, 0.0},
        {20, 77, 5, 3, 65535, {0, 0, 19, 76}, 50.0, 0.0},
        {23, 90, 11, 11, 65535, {0, 0, 22, 89}, 50.0, 0.0},  // the largest network window
        {23, 90, 12, 11, 65535, {0, 0, 22, 89}, 50.0, 0.0},  // above it: the row path
        {20, 77, 5, 5, 2, {0, 0, 19, 76}, 50.0, 0.0},        // many ties
        {20, 77, 5, 5, 4000, {3, 1, 17, 70}, 50.0, 10.0},    // region, moves of at least T
        {20, 77, 5, 5, 4000, {0, 4, 19, 76}, 80.0, -10.0},   // moves of at most T
        {20, 77, 3, 3, 65535, {5, 2, 5, 40}, 50.0, 0.0},     // a one-row region
        {20, 77, 3, 3, 65535, {5, 2, 9, 33}, 50.0, 0.0},     // exactly one block of lanes
        // Coarse-to-fine path: more than one strip of output columns, value ranges of 9
        // bits (lower levels with few values), and windows tall enough for the narrowest
        // band of buckets.
        {6, 1100, 15, 5, 65535, {0, 0, 5, 1099}, 50.0, 0.0},
        {6, 1100, 9, 3, 65535, {1, 3, 4, 1090}, 20.0, 0.0},
        {40, 60, 13, 13, 511, {0, 0, 39, 59}, 50.0, 0.0},
        {40, 60, 13, 13, 256, {0, 0, 39, 59}, 60.0, 0.0},
        {140, 30, 9, 131, 65535, {0, 0, 139, 29}, 50.0, 0.0},
        {140, 30, 9, 131, 65535, {3, 4, 120, 26}, 99.0, 5.0},
    };
    std::mt19937 gen(7);
    for (const PathCase& c : cases) {
        const auto low = static_cast<unsigned>(gen() % (65536 - c.span));
        std::vector<std::uint16_t> original(static_cast<std::size_t>(c.rows) * c.cols);
        for (auto& v : original) v = static_cast<std::uint16_t>(low + gen() % (c.span + 1));
        std::vector<std::uint16_t> expected = original;
        ASSERT_EQ(
            run_image_filter(expected.data(), c.rows, c.cols, FilterKind::percentile, c.percent,
                             c.width, c.height, 0, c.threshold, c.region, RankPath::generic),
            0);
        for (const RankPath path :
             {RankPath::row_histogram, RankPath::column_histogram, RankPath::selection_network,
              RankPath::coarse_fine, RankPath::automatic}) {
            std::vector<std::uint16_t> image = original;
            ASSERT_EQ(
                run_image_filter(image.data(), c.rows, c.cols, FilterKind::percentile, c.percent,
                                 c.width, c.height, 0, c.threshold, c.region, path),
                0);
            EXPECT_EQ(image, expected) << c.rows << "x" << c.cols << " image, " << c.width << "x"
                                       << c.height << " window, span " << c.span << ", "
                                       << c.percent << "%, path " << static_cast<int>(path);
        }
    }
    // The histogram paths take only the percentile filter on the rectangle.
    std::vector<std::uint16_t> image(25, 1);
    const FilterRegion all{0, 0, 4, 4};
    EXPECT_EQ(run_image_filter(image.data(), 5, 5, FilterKind::percentile, 50.0, 3, 3, 1, 0.0, all,
                               RankPath::column_histogram),
              -1);
    EXPECT_EQ(run_image_filter(image.data(), 5, 5, FilterKind::conserve, 0.0, 3, 3, 0, 0.0, all,
                               RankPath::row_histogram),
              -1);
    EXPECT_EQ(run_image_filter(image.data(), 5, 5, FilterKind::percentile, 50.0, 3, 3, 2, 0.0, all,
                               RankPath::selection_network),
              -1);
    EXPECT_EQ(run_image_filter(image.data(), 5, 5, FilterKind::conserve, 0.0, 3, 3, 0, 0.0, all,
                               RankPath::coarse_fine),
              -1);
}

// The coarse-to-fine path against the operator for ranks across the whole window, on
// value distributions that move its band of buckets in different ways: uniform over 16
// bits, most values in one bucket with a few far away, two clusters far apart (the rank
// jumping between them), a smooth ramp with noise, and values only in the lowest and
// highest buckets (the band against either end of the range). Columns taller than 64
// rows of crowded values bring more band values per 64 rows than are taken at once.
void expect_coarse_fine_gives_every_rank() {
    struct Setting {
        int width, height, kind, rows;
    };
    const Setting settings[] = {{7, 7, 0, 48},   {16, 16, 0, 48},  {5, 40, 0, 48},
                                {40, 5, 0, 48},  {15, 15, 1, 48},  {15, 15, 2, 48},
                                {11, 21, 3, 48}, {3, 131, 1, 136}, {3, 100, 4, 104},
                                {8, 70, 4, 76},  {1, 90, 1, 96},   {4, 75, 0, 85}};
    const int cols = 70;
    std::mt19937 gen(23);
    for (const Setting& s : settings) {
        const int rows = s.rows;
        std::vector<std::uint16_t> original(static_cast<std::size_t>(rows) * cols);
        for (std::size_t k = 0; k < original.size(); ++k) {
            const unsigned u = gen();
            switch (s.kind) {
                case 0:
                    original[k] = static_cast<std::uint16_t>(u);
                    break;
                case 1:  // one bucket of 256 values, one value in 50 anywhere
                    original[k] =
                        static_cast<std::uint16_t>(u % 50 == 0 ? u >> 8 : 30000 + u % 200);
                    break;
                case 2:  // two clusters
                    original[k] =
                        static_cast<std::uint16_t>((u & 1 ? 60000 : 100) + (u >> 1) % 300);
                    break;
                case 3:  // ramp along the row
                    original[k] = static_cast<std::uint16_t>(k % cols * 900 + u % 2000);
                    break;
                default:  // the two end buckets
                    original[k] = static_cast<std::uint16_t>(u & 1 ? u % 256 : 65535 - u % 256);
            }
        }
        const FilterRegion all{0, 0, rows - 1, cols - 1};
        const int m = s.width * s.height;
        for (int rank = 0; rank < m; rank += std::max(1, m / 9)) {
            const double percent = 100.0 * (rank + 1.5) / m;
            std::vector<std::uint16_t> expected = original, image = original;
            ASSERT_EQ(run_image_filter(expected.data(), rows, cols, FilterKind::percentile, percent,
                                       s.width, s.height, 0, 0.0, all, RankPath::generic),
                      0);
            ASSERT_EQ(run_image_filter(image.data(), rows, cols, FilterKind::percentile, percent,
                                       s.width, s.height, 0, 0.0, all, RankPath::coarse_fine),
                      0);
            ASSERT_EQ(image, expected)
                << s.width << "x" << s.height << " window, data " << s.kind << ", rank " << rank;
        }
    }
}

// The coarse-to-fine path carries each column's band values from one output row to the
// next: against the operator on images whose rank moves between rows in different ways
// (crowded values over many more rows than the window, whose lists fill and are moved
// back; a ramp down the image, the band moving row after row; stripes of alternating
// levels, the band changing between neighbouring rows; noise on a step), with regions
// and thresholds.
TEST(ImageFilters, CoarseFineCarriesBandValuesDownTheImage) {
    struct Carried {
        int rows, cols, width, height, kind;
        FilterRegion region;
        double percent, threshold;
    };
    const Carried cases[] = {
        {110, 40, 9, 21, 0, {0, 0, 109, 39}, 50.0, 0.0},
        {110, 40, 3, 31, 0, {5, 2, 104, 37}, 20.0, 0.0},
        {90, 60, 15, 15, 1, {0, 0, 89, 59}, 50.0, 0.0},
        {90, 60, 15, 15, 1, {0, 0, 89, 59}, 85.0, 8.0},
        {60, 60, 7, 13, 2, {0, 0, 59, 59}, 50.0, 0.0},
        {60, 60, 7, 13, 2, {3, 5, 50, 58}, 35.0, -6.0},
        {80, 50, 11, 17, 3, {0, 0, 79, 49}, 50.0, 0.0},
    };
    std::mt19937 gen(31);
    for (const Carried& c : cases) {
        std::vector<std::uint16_t> original(static_cast<std::size_t>(c.rows) * c.cols);
        for (int r = 0; r < c.rows; ++r)
            for (int k = 0; k < c.cols; ++k) {
                const unsigned u = gen();
                unsigned v = 0;
                switch (c.kind) {
                    case 0:  // one bucket of 256 values, one value in 97 anywhere
                        v = u % 97 == 0 ? u >> 16 : 41000 + u % 256;
                        break;
                    case 1:  // ramp down the rows
                        v = static_cast<unsigned>(r) * 700 + u % 3000;
                        break;
                    case 2:  // stripes of three rows, levels far apart
                        v = (r / 3 % 2 ? 52000 : 9000) + u % 4000;
                        break;
                    default:  // a step across the middle row, wide noise
                        v = (r < c.rows / 2 ? 15000 : 45000) + u % 12000;
                }
                original[static_cast<std::size_t>(r) * c.cols + k] = static_cast<std::uint16_t>(v);
            }
        std::vector<std::uint16_t> expected = original, image = original;
        ASSERT_EQ(
            run_image_filter(expected.data(), c.rows, c.cols, FilterKind::percentile, c.percent,
                             c.width, c.height, 0, c.threshold, c.region, RankPath::generic),
            0);
        for (const RankPath path : {RankPath::coarse_fine, RankPath::automatic}) {
            image = original;
            ASSERT_EQ(
                run_image_filter(image.data(), c.rows, c.cols, FilterKind::percentile, c.percent,
                                 c.width, c.height, 0, c.threshold, c.region, path),
                0);
            EXPECT_EQ(image, expected) << c.rows << "x" << c.cols << " image, " << c.width << "x"
                                       << c.height << " window, data " << c.kind << ", "
                                       << c.percent << "%, path " << static_cast<int>(path);
        }
    }
}

// The selection network is pruned to the one output position wanted: every rank of each
// window shape it takes (thin windows too), with ties and both threshold signs, against
// the operator on an image whose interior spans several blocks of lanes.
void expect_network_gives_every_rank() {
    struct Shape {
        int width, height;
        unsigned span;
        double threshold;
    };
    const Shape shapes[] = {{3, 3, 65535, 0.0},  {5, 5, 65535, 0.0},  {2, 3, 65535, 0.0},
                            {3, 3, 3, 0.0},      {4, 4, 40000, 12.0}, {4, 4, 40000, -12.0},
                            {11, 1, 65535, 0.0}, {1, 11, 65535, 0.0}, {121, 1, 65535, 0.0},
                            {1, 121, 65535, 0.0}};
    const int rows = 16;
    std::mt19937 gen(11);
    for (const Shape& shape : shapes) {
        const int cols = shape.width + 70;
        const int n_rows = std::max(rows, shape.height + 2);
        std::vector<std::uint16_t> original(static_cast<std::size_t>(n_rows) * cols);
        for (auto& v : original) v = static_cast<std::uint16_t>(gen() % (shape.span + 1));
        const FilterRegion all{0, 0, n_rows - 1, cols - 1};
        const int m = shape.width * shape.height;
        // Percents giving each rank 0 .. m - 1 of a full window (k = rank + 1), then 100%.
        const int step = m > 30 ? m / 15 : 1;
        for (int rank = 0; rank <= m;
             rank += rank + step > m - 1 && rank < m - 1 ? m - 1 - rank : step) {
            const double percent = rank == m ? 100.0 : 100.0 * (rank + 1.5) / m;
            std::vector<std::uint16_t> expected = original, image = original;
            ASSERT_EQ(run_image_filter(expected.data(), n_rows, cols, FilterKind::percentile,
                                       percent, shape.width, shape.height, 0, shape.threshold, all,
                                       RankPath::generic),
                      0);
            ASSERT_EQ(run_image_filter(image.data(), n_rows, cols, FilterKind::percentile, percent,
                                       shape.width, shape.height, 0, shape.threshold, all,
                                       RankPath::selection_network),
                      0);
            ASSERT_EQ(image, expected) << shape.width << "x" << shape.height << " window, "
                                       << percent << "%, threshold " << shape.threshold;
        }
    }
}

TEST(ImageFilters, CoarseFineGivesEveryRankOfTheOperator) {
    expect_coarse_fine_gives_every_rank();
}

TEST(ImageFilters, NetworkGivesEveryRankOfTheOperator) {
    expect_network_gives_every_rank();
}

// The same with the 256-bit lanes turned off: the code a processor without AVX2 runs.
TEST(ImageFilters, PlainLanesGiveEveryRankOfTheOperator) {
    struct LanesOff {
        LanesOff() { zemath::allow_vector_lanes(false); }
        ~LanesOff() { zemath::allow_vector_lanes(true); }
    } lanes_off;
    expect_coarse_fine_gives_every_rank();
    expect_network_gives_every_rank();
}

TEST(ImageFilters, RefusalsLeaveTheImageUntouched) {
    const int rows = 4, cols = 5;
    const std::vector<unsigned short> original = {9, 1, 8, 2, 7, 3, 6, 4, 5, 0,
                                                  1, 2, 3, 4, 5, 6, 7, 8, 9, 10};
    struct Refusal {
        const char* what;
        unsigned short* image;
        int rows, cols, width, height, shape;
        double percent;
        int row_from, col_from, row_to, col_to, status;
    };
    std::vector<unsigned short> image = original;
    unsigned short* p = image.data();
    const Refusal refusals[] = {
        {"null image", nullptr, rows, cols, 3, 3, 0, 50, 0, 0, -1, -1, -11},
        {"no rows", p, 0, cols, 1, 1, 0, 50, 0, 0, -1, -1, -5},
        {"negative columns", p, rows, INT_MIN, 1, 1, 0, 50, 0, 0, -1, -1, -5},
        {"window nCols + 1 wide", p, rows, cols, cols + 1, 1, 0, 50, 0, 0, -1, -1, -4},
        {"window too tall", p, rows, cols, 1, rows + 1, 0, 50, 0, 0, -1, -1, -4},
        {"window of no cells", p, rows, cols, 0, 3, 0, 50, 0, 0, -1, -1, -4},
        {"negative height", p, rows, cols, 3, -3, 0, 50, 0, 0, -1, -1, -4},
        {"inverted rows", p, rows, cols, 3, 3, 0, 50, 3, 0, 1, -1, -5},
        {"inverted columns", p, rows, cols, 3, 3, 0, 50, 0, 4, -1, 2, -5},
        {"negative start", p, rows, cols, 3, 3, 0, 50, -1, 0, -1, -1, -5},
        {"end outside", p, rows, cols, 3, 3, 0, 50, 0, 0, rows, -1, -5},
        {"end -2", p, rows, cols, 3, 3, 0, 50, 0, 0, -1, -2, -5},
        {"region entirely outside", p, rows, cols, 3, 3, 0, 50, 10, 10, 12, 12, -5},
        {"unknown shape", p, rows, cols, 3, 3, 9, 50, 0, 0, -1, -1, -1},
        {"negative shape", p, rows, cols, 3, 3, -1, 50, 0, 0, -1, -1, -1},
        {"NaN percent", p, rows, cols, 3, 3, 0, std::nan(""), 0, 0, -1, -1, -1},
    };
    for (const Refusal& r : refusals) {
        EXPECT_EQ(
            zemath_us_percentile_filter(r.image, r.rows, r.cols, r.percent, r.width, r.height,
                                        r.shape, 0.0, r.row_from, r.col_from, r.row_to, r.col_to),
            r.status)
            << r.what;
        EXPECT_EQ(image, original) << r.what;
        if (std::isnan(r.percent)) continue;  // the conservative filter takes no percent
        EXPECT_EQ(zemath_us_conserve_filter(r.image, r.rows, r.cols, r.width, r.height, r.shape,
                                            0.0, r.row_from, r.col_from, r.row_to, r.col_to),
                  r.status)
            << r.what;
        EXPECT_EQ(image, original) << r.what;
    }
}

TEST(ImageFilters, ThresholdExtremesAndHugePercent) {
    const std::vector<unsigned short> original = {0, 100, 0, 100, 0, 100, 0, 100, 0};
    // A saturated positive threshold changes nothing; an infinite negative one lets every
    // change through; a NaN threshold means none.
    for (const auto& [threshold, same] : {std::pair{1e300, true},
                                          {std::numeric_limits<double>::infinity(), true},
                                          {-std::numeric_limits<double>::infinity(), false},
                                          {std::nan(""), false}}) {
        std::vector<unsigned short> image = original;
        ASSERT_EQ(zemath_us_percentile_filter(image.data(), 3, 3, 100.0, 3, 3, 0, threshold, 0, 0,
                                              -1, -1),
                  0);
        EXPECT_EQ(image == original, same) << threshold;
    }
    std::vector<unsigned short> image = original;
    ASSERT_EQ(zemath_us_percentile_filter(image.data(), 3, 3, 1e300, 3, 3, 0, 0.0, 0, 0, -1, -1),
              0);
    EXPECT_EQ(image, std::vector<unsigned short>(9, 100));  // maximum filter
}

TEST(SamplingWindow, CellsOfEachShape) {
    int rows[64], cols[64], linear[64];
    // 3 x 3 rectangle, row-major, linear offsets for an image 10 wide.
    ASSERT_EQ(get_sampling_window_offset(10, 3, 3, 0, rows, cols, linear, 64), 9);
    EXPECT_EQ(rows[0], -1);
    EXPECT_EQ(cols[0], -1);
    EXPECT_EQ(linear[0], -11);
    EXPECT_EQ(linear[8], 11);
    // Even sides put the extra cell before the centre: 4 wide spans -2..1.
    ASSERT_EQ(get_sampling_window_offset(10, 4, 1, 0, nullptr, cols, nullptr, 64), 4);
    EXPECT_EQ(cols[0], -2);
    EXPECT_EQ(cols[3], 1);
    struct Count {
        int width, height, shape, count;
    } counts[] = {{5, 5, 1, 21}, {7, 7, 1, 37}, {1, 1, 1, 1}, {5, 3, 2, 7},
                  {5, 5, 3, 9},  {3, 7, 3, 5},  {4, 4, 2, 7}};
    for (const Count& c : counts)
        EXPECT_EQ(get_sampling_window_offset(10, c.width, c.height, c.shape, nullptr, nullptr,
                                             nullptr, 0),
                  c.count)
            << c.width << "x" << c.height << " shape " << c.shape;
    EXPECT_EQ(get_sampling_window_offset(10, 3, 3, 4, rows, cols, linear, 64), -10);
    EXPECT_EQ(get_sampling_window_offset(0, 3, 3, 0, rows, cols, linear, 64), -18);
    EXPECT_EQ(get_sampling_window_offset(10, 0, 3, 0, rows, cols, linear, 64), -18);
    EXPECT_EQ(get_sampling_window_offset(10, 3, 3, 0, rows, cols, linear, 8), -18);
    EXPECT_EQ(get_sampling_window_offset(INT_MAX, 1, 3, 0, nullptr, nullptr, linear, 64), -18);
}

// The count alone (no output array) must equal the number of cells listed, for every
// shape and both parities of each side.
TEST(SamplingWindow, CountMatchesTheCellsListed) {
    std::vector<int> rows(32 * 32);
    for (int shape = 0; shape <= 3; ++shape)
        for (int width = 1; width <= 32; ++width)
            for (int height = 1; height <= 32; ++height)
                ASSERT_EQ(get_sampling_window_offset(50, width, height, shape, nullptr, nullptr,
                                                     nullptr, 0),
                          get_sampling_window_offset(50, width, height, shape, rows.data(), nullptr,
                                                     nullptr, 32 * 32))
                    << width << "x" << height << " shape " << shape;
}

// Huge windows are counted, not listed: the count, a count beyond an int and a capacity
// refusal come back at once (listing them first exhausted memory).
TEST(SamplingWindow, HugeWindowsAreCountedWithoutListingTheirCells) {
    int rows[64];
    for (int shape = 0; shape <= 2; ++shape)
        EXPECT_EQ(
            get_sampling_window_offset(10, INT_MAX, INT_MAX, shape, nullptr, nullptr, nullptr, 0),
            -18)
            << shape;
    // Diagonal cross: 1 + 4 (INT_MAX - 1) / 2 cells, beyond an int.
    EXPECT_EQ(get_sampling_window_offset(10, INT_MAX, INT_MAX, 3, nullptr, nullptr, nullptr, 0),
              -18);
    // One row INT_MAX wide: every cell, whatever the shape.
    for (int shape = 0; shape <= 3; ++shape)
        EXPECT_EQ(get_sampling_window_offset(10, INT_MAX, 1, shape, nullptr, nullptr, nullptr, 0),
                  shape == 3 ? 1 : INT_MAX)
            << shape;
    EXPECT_EQ(get_sampling_window_offset(10, 1, INT_MAX, 1, nullptr, nullptr, nullptr, 0), INT_MAX);
    // About 0.785 * 40000^2 cells, within an int but far beyond the capacity given.
    EXPECT_EQ(get_sampling_window_offset(10, 40000, 40000, 1, rows, nullptr, nullptr, 64), -18);
    EXPECT_EQ(get_sampling_window_offset(10, 40000, 40000, 0, rows, nullptr, nullptr, 64), -18);
    // A diagonal cross 3 rows high and INT_MAX wide has 5 cells; they are listed without
    // walking the INT_MAX columns (or, tall and narrow, the INT_MAX rows).
    int cols[8];
    ASSERT_EQ(get_sampling_window_offset(10, INT_MAX, 3, 3, rows, cols, nullptr, 8), 5);
    EXPECT_EQ(rows[0], -1);
    EXPECT_EQ(cols[0], -1);
    EXPECT_EQ(cols[1], 1);
    EXPECT_EQ(rows[4], 1);
    ASSERT_EQ(get_sampling_window_offset(10, 3, INT_MAX, 3, rows, cols, nullptr, 8), 5);
    EXPECT_EQ(rows[0], -1);
    EXPECT_EQ(rows[4], 1);
}

}  // namespace
