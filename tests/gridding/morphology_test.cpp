// Structuring elements, dilation/erosion, profiles and natural axes against NumPy/SciPy
// (tests/reference/gen_morphology.py), and the documented refusals.
#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "zemath/image.h"

namespace {

struct StrelCase {
    int kind, rows, cols;
    double param;
    std::vector<unsigned char> mask;
};
struct MorphologyCase {
    int kind, s_rows, s_cols;
    double param;
    int rows, cols;
    std::vector<double> image, dilated, eroded;
};
struct ProfileCase {
    std::vector<double> vx, vy;
    int points;
    std::vector<double> distance, values;
};
struct AxesCase {
    int rows, cols;
    unsigned short threshold;
    std::vector<unsigned short> image;
    double cx, cy, angle, major, minor;
};
#include "reference/morphology_ref.inc"

TEST(Morphology, ElementsMatchTheShapeRules) {
    for (const StrelCase& c : kStrelCases) {
        std::vector<unsigned char> mask(c.mask.size(), 9);
        int expected_set = 0;
        for (unsigned char v : c.mask) expected_set += v;
        EXPECT_EQ(zemath_make_strel(c.kind, &c.param, 1, mask.data(), c.rows, c.cols), expected_set)
            << c.kind;
        EXPECT_EQ(mask, c.mask) << "kind " << c.kind << " " << c.rows << "x" << c.cols;
    }
}

TEST(Morphology, DilateAndErodeMatchScipy) {
    for (const MorphologyCase& c : kMorphologyCases) {
        std::vector<unsigned char> strel(static_cast<size_t>(c.s_rows * c.s_cols));
        ASSERT_GT(zemath_make_strel(c.kind, &c.param, 1, strel.data(), c.s_rows, c.s_cols), 0);
        std::vector<double> out(c.image.size());
        ASSERT_EQ(zemath_dilate_matrix_with_strel(c.image.data(), c.rows, c.cols, strel.data(),
                                                  c.s_rows, c.s_cols, out.data()),
                  0);
        EXPECT_EQ(out, c.dilated) << c.kind;
        // In place.
        out = c.image;
        ASSERT_EQ(zemath_erode_matrix_with_strel(out.data(), c.rows, c.cols, strel.data(), c.s_rows,
                                                 c.s_cols, out.data()),
                  0);
        EXPECT_EQ(out, c.eroded) << c.kind;
    }
    // Missing values are skipped; a window of missing values only gives NANUM.
    const double m[4] = {NANUM, 3.0, NANUM, NANUM};
    const unsigned char dot[1] = {1}, pair[2] = {1, 1};
    double out[4];
    ASSERT_EQ(zemath_dilate_matrix_with_strel(m, 1, 4, pair, 1, 2, out), 0);
    // The element covers column offsets -1 and 0.
    const double expected[4] = {NANUM, 3.0, 3.0, NANUM};
    for (int k = 0; k < 4; ++k) EXPECT_EQ(out[k], expected[k]) << k;
    ASSERT_EQ(zemath_erode_matrix_with_strel(m, 1, 4, dot, 1, 1, out), 0);
    EXPECT_EQ(out[1], 3.0);
}

TEST(Morphology, ProfilesMatchScipyBilinear) {
    for (const ProfileCase& c : kProfileCases) {
        std::vector<double> distance(c.points), values(c.points);
        ASSERT_EQ(zemath_image_lines_profile(kProfileImage, 9, 12, c.vx.data(), c.vy.data(),
                                             static_cast<int>(c.vx.size()), c.points,
                                             distance.data(), values.data()),
                  c.points);
        for (int i = 0; i < c.points; ++i) {
            EXPECT_NEAR(distance[i], c.distance[i], 1e-13 * (1 + c.distance[i]));
            EXPECT_NEAR(values[i], c.values[i], 1e-12) << i;
        }
    }
    const double vx[2] = {-1.0, 2.0}, vy[2] = {0.0, 0.0};
    double values[4];
    ASSERT_EQ(zemath_image_lines_profile(kProfileImage, 9, 12, vx, vy, 2, 4, nullptr, values), 4);
    EXPECT_EQ(values[0], NANUM);  // outside the image
    EXPECT_EQ(values[1], kProfileImage[0]);
}

// A path whose length is finite but near the double range: the sample distances are
// k / (nPoints - 1) of it (total * k overflowed to inf before the division).
TEST(Morphology, ProfileDistancesOfAVeryLongPath) {
    const double vx[2] = {0.0, 1e308}, vy[2] = {0.0, 0.0};
    double distance[4], values[4];
    ASSERT_EQ(zemath_image_lines_profile(kProfileImage, 9, 12, vx, vy, 2, 4, distance, values), 4);
    for (int k = 0; k < 4; ++k) EXPECT_NEAR(distance[k], 1e308 / 3.0 * k, 1e293) << k;
    EXPECT_EQ(values[0], kProfileImage[0]);
    EXPECT_EQ(values[2], NANUM);  // far outside the image
}

TEST(Morphology, XyzProfileSkipsMissing) {
    const double image[6] = {1, NANUM, 3, 4, 5, NANUM};
    double x[6], y[6], z[6];
    ASSERT_EQ(zemath_image_xyz_profile(image, 2, 3, 10.0, 0.5, -1.0, 2.0, x, y, z), 4);
    EXPECT_EQ(x[1], 11.0);
    EXPECT_EQ(y[2], 1.0);
    EXPECT_EQ(z[3], 5.0);
}

TEST(Morphology, NaturalAxesMatchNumpyMoments) {
    for (const AxesCase& c : kAxesCases) {
        double cx, cy, angle, major, minor;
        ASSERT_EQ(zemath_us_find_natural_axes(c.image.data(), c.rows, c.cols, c.threshold, &cx, &cy,
                                              &angle, &major, &minor),
                  0);
        EXPECT_NEAR(cx, c.cx, 1e-12 * c.cols);
        EXPECT_NEAR(cy, c.cy, 1e-12 * c.rows);
        EXPECT_NEAR(angle, c.angle, 1e-9);
        EXPECT_NEAR(major, c.major, 1e-12 * c.major);
        EXPECT_NEAR(minor, c.minor, 1e-12 * c.major);
    }
    // A uniform w x h rectangle: variances (w^2 - 1) / 12 and (h^2 - 1) / 12, angle 0.
    std::vector<unsigned short> block(5 * 9, 7);
    double cx, cy, angle, major, minor;
    ASSERT_EQ(zemath_us_find_natural_axes(block.data(), 5, 9, 0, &cx, &cy, &angle, &major, &minor),
              0);
    EXPECT_NEAR(cx, 4.0, 1e-14);
    EXPECT_NEAR(cy, 2.0, 1e-14);
    EXPECT_NEAR(angle, 0.0, 1e-12);
    EXPECT_NEAR(major * major, (81.0 - 1) / 12, 1e-13);
    EXPECT_NEAR(minor * minor, (25.0 - 1) / 12, 1e-13);
    // Taller than wide, covariance exactly 0 (it rounds to a tiny negative value: the angle
    // once came out as -90, outside (-90, 90]). By hand: weights 12, centre (1/4, 1/3),
    // variances 3/16 across and 7/18 down.
    const unsigned short tall[6] = {7, 2, 1, 1, 1, 0};
    ASSERT_EQ(zemath_us_find_natural_axes(tall, 3, 2, 0, &cx, &cy, &angle, &major, &minor), 0);
    EXPECT_NEAR(angle, 90.0, 1e-9);
    EXPECT_NEAR(major * major, 7.0 / 18, 1e-14);
    EXPECT_NEAR(minor * minor, 3.0 / 16, 1e-14);
}

TEST(Morphology, Refusals) {
    unsigned char strel[9];
    const double p = 45.0;
    const double image[9] = {1, 2, 3, 4, 5, 6, 7, 8, 9};
    double out[9] = {-7, -7, -7, -7, -7, -7, -7, -7, -7};
    const unsigned char none[9] = {};
    const unsigned char big[16] = {1};
    unsigned short us[4] = {0, 0, 0, 0};
    double a, b, c, d, e;
    struct Refusal {
        const char* what;
        int got, status;
    } refusals[] = {
        {"strel null target", zemath_make_strel(0, nullptr, 0, nullptr, 3, 3), -52},
        {"strel empty target", zemath_make_strel(0, nullptr, 0, strel, 0, 3), -52},
        {"strel kind 8", zemath_make_strel(8, nullptr, 0, strel, 3, 3), -10},
        {"strel kind -1", zemath_make_strel(-1, nullptr, 0, strel, 3, 3), -10},
        {"strel angle missing", zemath_make_strel(6, nullptr, 0, strel, 3, 3), -18},
        {"strel octagon no count", zemath_make_strel(7, &p, 0, strel, 3, 3), -18},
        {"dilate null", zemath_dilate_matrix_with_strel(nullptr, 3, 3, none, 3, 3, out), -11},
        {"dilate zero rows", zemath_dilate_matrix_with_strel(image, 0, 3, none, 3, 3, out), -15},
        {"dilate null strel", zemath_dilate_matrix_with_strel(image, 3, 3, nullptr, 3, 3, out),
         -52},
        {"dilate empty strel", zemath_dilate_matrix_with_strel(image, 3, 3, none, 3, 3, out), -52},
        {"erode too small", zemath_erode_matrix_with_strel(image, 3, 3, big, 4, 4, out), -54},
        {"profile null", zemath_image_lines_profile(image, 3, 3, nullptr, image, 2, 2, out, out),
         -11},
        {"profile one vertex",
         zemath_image_lines_profile(image, 3, 3, image, image, 1, 2, out, out), -18},
        {"profile one point", zemath_image_lines_profile(image, 3, 3, image, image, 2, 1, out, out),
         -18},
        {"xyz null", zemath_image_xyz_profile(image, 3, 3, 0, 1, 0, 1, out, nullptr, out), -11},
        {"xyz no cols", zemath_image_xyz_profile(image, 3, 0, 0, 1, 0, 1, out, out, out), -15},
        {"axes null", zemath_us_find_natural_axes(nullptr, 2, 2, 0, &a, &b, &c, &d, &e), -11},
        {"axes no rows", zemath_us_find_natural_axes(us, 0, 2, 0, &a, &b, &c, &d, &e), -15},
        {"axes all dark", zemath_us_find_natural_axes(us, 2, 2, 0, &a, &b, &c, &d, &e), -18},
    };
    for (const Refusal& r : refusals) EXPECT_EQ(r.got, r.status) << r.what;
    for (const double v : out) EXPECT_EQ(v, -7.0);
}

}  // namespace
