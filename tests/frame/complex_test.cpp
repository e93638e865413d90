// Complex functions against mpmath's principal values (tests/reference/gen_complex.py),
// the closed-form inverse tangents at their documented points, the missing-value guard
// on every argument, the tan/tanh guards, and poles, cuts, NaN and infinities.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <limits>
#include <string>

#include "zemath/complex.h"
#include "zemath/geometry.h"

namespace {

constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kEps = std::numeric_limits<double>::epsilon();

struct ComplexReference {
    const char* name;
    double re, im, expected_re, expected_im;
};
struct IntPowerReference {
    double re, im;
    int n;
    double expected_re, expected_im;
};
struct PowerReference {
    double re, im, w_re, w_im, expected_re, expected_im;
};
#include "reference/complex_ref.inc"

using Unary = d_complex (*)(d_complex);
struct Named {
    const char* name;
    Unary fn;
};
constexpr Named kUnary[] = {{"sqrt", sqrtz}, {"log", logz},   {"exp", expz},
                            {"sin", sinz},   {"cos", cosz},   {"tan", tanz},
                            {"tanh", tanhz}, {"atan", atanz}, {"atanh", atanhz}};

Unary find(const char* name) {
    for (const Named& f : kUnary)
        if (std::strcmp(f.name, name) == 0) return f.fn;
    return nullptr;
}

// Relative error of the complex result against the modulus of the expected value.
double relative_error(d_complex got, double re, double im) {
    const double scale = std::hypot(re, im);
    return std::hypot(got.re - re, got.im - im) / (scale > 0 ? scale : 1.0);
}

bool is_missing_pair(d_complex z) {
    return z.re == NANUM && z.im == NANUM;
}

TEST(Complex, MatchesMpmathPrincipalValues) {
    double worst[std::size(kUnary)] = {};
    for (const ComplexReference& c : kComplexReference) {
        const Unary fn = find(c.name);
        ASSERT_NE(fn, nullptr) << c.name;
        const d_complex got = fn({c.re, c.im});
        const double err = relative_error(got, c.expected_re, c.expected_im);
        // The closed forms subtract two logarithms of nearly equal moduli near the origin
        // (atanh: near the imaginary axis; atan: near the real axis); the part they give
        // has an absolute error of a few ulps there, so it is judged against 1.
        const bool closed = std::strcmp(c.name, "atan") == 0 || std::strcmp(c.name, "atanh") == 0;
        const double err_abs =
            closed ? std::hypot(got.re - c.expected_re, got.im - c.expected_im) : err;
        EXPECT_LT(std::min(err, err_abs), 1e-14)
            << c.name << "(" << c.re << ", " << c.im << ") = " << got.re << ", " << got.im;
        const size_t k =
            static_cast<size_t>(std::find_if(std::begin(kUnary), std::end(kUnary),
                                             [&](const Named& f) { return f.fn == fn; }) -
                                std::begin(kUnary));
        worst[k] = std::max(worst[k], std::min(err, err_abs));
    }
    for (size_t k = 0; k < std::size(kUnary); ++k) {
        char text[32];
        std::snprintf(text, sizeof text, "%.3g", worst[k]);
        RecordProperty(std::string("worst_") + kUnary[k].name, text);
    }
}

TEST(Complex, PowersMatchMpmath) {
    for (const IntPowerReference& c : kIntPowerReference) {
        // Binary powering: a few ulps per squaring.
        EXPECT_LT(relative_error(ipow({c.re, c.im}, c.n), c.expected_re, c.expected_im), 1e-14)
            << c.re << " " << c.im << " ^ " << c.n;
    }
    for (const PowerReference& c : kPowerReference) {
        const d_complex got =
            c.w_im == 0.0 ? rpow({c.re, c.im}, c.w_re) : cpowz({c.re, c.im}, {c.w_re, c.w_im});
        // The angle w arg z carries |w arg z| ulps of absolute error.
        EXPECT_LT(relative_error(got, c.expected_re, c.expected_im), 1e-14 * 16)
            << c.re << " " << c.im << " ^ " << c.w_re << " " << c.w_im;
    }
}

TEST(Complex, DocumentedValuesAndPoles) {
    struct Case {
        const char* what;
        d_complex got;
        double re, im;  // NANUM pair for a pole
    } cases[] = {
        {"atanh(1)", atanhz({1.0, 0.0}), NANUM, NANUM},
        {"atanh(-1)", atanhz({-1.0, 0.0}), NANUM, NANUM},
        {"atan(i)", atanz({0.0, 1.0}), NANUM, NANUM},
        {"atan(-i)", atanz({0.0, -1.0}), NANUM, NANUM},
        {"atanh(0)", atanhz({0.0, 0.0}), 0.0, 0.0},
        {"atan(1)", atanz({1.0, 0.0}), 0.7853981633974483, 0.0},
        {"atan(0)", atanz({0.0, 0.0}), 0.0, 0.0},
        {"ipow(z, 0)", ipow({3.0, -4.0}, 0), 1.0, 0.0},
        {"ipow(i, INT_MIN)", ipow({0.0, 1.0}, std::numeric_limits<int>::min()), 1.0, 0.0},
        {"rpow(0, 2)", rpow({0.0, 0.0}, 2.0), 0.0, 0.0},
        {"rpow(0, 0)", rpow({0.0, 0.0}, 0.0), 1.0, 0.0},
        {"rpow(0, -1)", rpow({0.0, 0.0}, -1.0), kInf, 0.0},
        {"cpow(0, 1+i)", cpowz({0.0, 0.0}, {1.0, 1.0}), 0.0, 0.0},
        {"cpow(0, 0)", cpowz({0.0, 0.0}, {0.0, 0.0}), 1.0, 0.0},
        {"cpow(i, i)", cpowz({0.0, 1.0}, {0.0, 1.0}), std::exp(-M_PI / 2), 0.0},
        {"log(0)", logz({0.0, 0.0}), -kInf, 0.0},
        {"tanh(inf)", tanhz({kInf, 0.0}), 1.0, 0.0},  // finite result passes the guard
        {"tanh(NaN)", tanhz({kNaN, 0.0}), NANUM, NANUM},
        {"tanh(0 + NaN i)", tanhz({0.0, kNaN}), NANUM, NANUM},
        {"tan(0)", tanz({0.0, 0.0}), 0.0, 0.0},
        // On the cuts the closed forms give one side whatever the sign of the zero.
        {"atan(-0 + 2i)", atanz({-0.0, 2.0}), -M_PI / 2, 0.5493061443340549},
        {"atan(+0 + 2i)", atanz({0.0, 2.0}), -M_PI / 2, 0.5493061443340549},
        {"atanh(2 - 0i)", atanhz({2.0, -0.0}), 0.5493061443340549, M_PI / 2},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(c.got.re, c.re) << c.what;
        EXPECT_EQ(c.got.im, c.im) << c.what;
    }
    EXPECT_EQ(cabsz({3.0, -4.0}), 5.0);
    EXPECT_EQ(cabsz({1e308, 1e308}), std::hypot(1e308, 1e308));  // no overflow
}

TEST(Complex, BranchCutsFollowTheSignOfZero) {
    // Just above and just below each cut the principal values differ; on the cut itself
    // the sign of the zero imaginary part selects the side, as the limits from each side.
    const d_complex above = sqrtz({-4.0, 0.0}), below = sqrtz({-4.0, -0.0});
    EXPECT_EQ(above.im, 2.0);
    EXPECT_EQ(below.im, -2.0);
    EXPECT_NEAR(logz({-1.0, 0.0}).im, M_PI, 4 * kEps);
    EXPECT_NEAR(logz({-1.0, -0.0}).im, -M_PI, 4 * kEps);
    // The closed forms stay finite on the cuts and land on one side's limit.
    for (const double side : {1e-300, -1e-300}) {
        const d_complex near_cut = atanhz({2.0, side});
        EXPECT_NEAR(near_cut.re, 0.5493061443340549, 1e-15);  // atanh(2) real part
        EXPECT_NEAR(std::abs(near_cut.im), M_PI / 2, 1e-15);
        const d_complex atan_cut = atanz({side, 2.0});
        EXPECT_NEAR(std::abs(atan_cut.re), M_PI / 2, 1e-15);
        EXPECT_NEAR(atan_cut.im, 0.5493061443340549, 1e-15);  // atan(2i) imaginary part
    }
}

TEST(Complex, MissingValueInAnyPartGivesMissing) {
    for (const d_complex z :
         {d_complex{NANUM, 1.0}, d_complex{1.0, NANUM}, d_complex{NANUM, NANUM}}) {
        for (const Named& f : kUnary) EXPECT_TRUE(is_missing_pair(f.fn(z))) << f.name;
        EXPECT_EQ(cabsz(z), NANUM);
        EXPECT_TRUE(is_missing_pair(ipow(z, 2)));
        EXPECT_TRUE(is_missing_pair(rpow(z, 2.0)));
        EXPECT_TRUE(is_missing_pair(cpowz(z, {1.0, 0.0})));
        EXPECT_TRUE(is_missing_pair(cpowz({1.0, 0.0}, z)));  // the exponent is guarded too
    }
    EXPECT_TRUE(is_missing_pair(rpow({2.0, 0.0}, NANUM)));
}

TEST(Complex, NaNIsNotMissingAndPropagates) {
    EXPECT_TRUE(std::isnan(sqrtz({kNaN, 0.0}).re));
    EXPECT_TRUE(std::isnan(atanhz({kNaN, 0.0}).re));
    EXPECT_TRUE(std::isnan(atanz({kInf, 0.0}).im));  // inf - inf in the closed form
    EXPECT_EQ(cabsz({-kInf, kNaN}), kInf);
}

// Polygons: shapes whose answers are known in closed form.
TEST(Polygon, LocationAreaAndReorder) {
    // Square (0,0)-(2,2) and an L shape (concave), counterclockwise.
    const double sx[] = {0, 2, 2, 0}, sy[] = {0, 0, 2, 2};
    const double lx[] = {0, 3, 3, 1, 1, 0}, ly[] = {0, 0, 1, 1, 3, 3};
    struct Case {
        const double *x, *y;
        int n;
        double px, py;
        int expected;
    } cases[] = {
        {sx, sy, 4, 1, 1, 1},
        {sx, sy, 4, 3, 1, 0},
        {sx, sy, 4, 2, 1, 2},
        {sx, sy, 4, 0, 0, 2},
        {sx, sy, 4, 1, 2, 2},
        {sx, sy, 4, -1e-300, 1, 0},
        {sx, sy, 4, 1, 2.0000000000000004, 0},
        {lx, ly, 6, 2, 2, 0},
        {lx, ly, 6, 0.5, 2.5, 1},
        {lx, ly, 6, 2.5, 0.5, 1},
        {lx, ly, 6, 1, 2, 2},
        {lx, ly, 6, 3, 2, 0},
        {lx, ly, 6, kNaN, 1, 0},
    };
    for (const Case& c : cases)
        EXPECT_EQ(zemath_d_point_in_polygon(c.x, c.y, c.n, c.px, c.py), c.expected)
            << c.px << "," << c.py;
    const float fx[] = {0, 2, 2, 0}, fy[] = {0, 0, 2, 2};
    EXPECT_EQ(zemath_f_point_in_polygon(fx, fy, 4, 1.f, 1.f), 1);
    EXPECT_EQ(zemath_f_point_in_polygon(fx, fy, 4, 2.5f, 1.f), 0);

    EXPECT_EQ(zemath_d_polygon_area(sx, sy, 4), 4.0);
    EXPECT_EQ(zemath_d_polygon_area(lx, ly, 6), 5.0);
    EXPECT_EQ(zemath_f_polygon_area(fx, fy, 4), 4.0);
    const long ix[] = {0, 0, 3}, iy[] = {0, 4, 0};  // clockwise right triangle
    EXPECT_EQ(zemath_l_polygon_area(ix, iy, 3), -6.0);
    // Far from the origin the shifted shoelace keeps the unit square exact.
    const double bx[] = {1e9, 1e9 + 1, 1e9 + 1, 1e9}, by[] = {1e9, 1e9, 1e9 + 1, 1e9 + 1};
    EXPECT_EQ(zemath_d_polygon_area(bx, by, 4), 1.0);
    // Regular 12-gon of circumradius 1: area 3.
    double gx[12], gy[12];
    for (int k = 0; k < 12; ++k) {
        gx[k] = std::cos(k * M_PI / 6);
        gy[k] = std::sin(k * M_PI / 6);
    }
    EXPECT_NEAR(zemath_d_polygon_area(gx, gy, 12), 3.0, 8 * kEps);

    // Square corners given crosswise become a counterclockwise square.
    double rx[] = {2, 0, 0, 2}, ry[] = {2, 0, 2, 0};
    EXPECT_EQ(zemath_d_polygon_area(rx, ry, 4), 0.0);  // bow tie: the two halves cancel
    ASSERT_EQ(zemath_d_polygon_reorder(rx, ry, 4), 0);
    EXPECT_EQ(zemath_d_polygon_area(rx, ry, 4), 4.0);
    EXPECT_EQ(rx[0], 0.0);  // angle -3pi/4 first
    EXPECT_EQ(ry[0], 0.0);
    double nx[] = {kNaN, 1, 0, 1}, ny[] = {0, 1, 0, 0};
    ASSERT_EQ(zemath_d_polygon_reorder(nx, ny, 4), 0);
    EXPECT_TRUE(std::isnan(nx[3]));
}

TEST(Polygon, Refusals) {
    const double x[] = {0, 1, 0}, y[] = {0, 0, 1};
    EXPECT_EQ(zemath_d_point_in_polygon(nullptr, y, 3, 0, 0), -11);
    EXPECT_EQ(zemath_d_point_in_polygon(x, nullptr, 3, 0, 0), -11);
    EXPECT_EQ(zemath_d_point_in_polygon(x, y, 2, 0, 0), -18);
    EXPECT_EQ(zemath_d_point_in_polygon(x, y, std::numeric_limits<int>::min(), 0, 0), -18);
    EXPECT_EQ(zemath_d_polygon_area(nullptr, y, 3), NANUM);
    EXPECT_EQ(zemath_d_polygon_area(x, y, -1), NANUM);
    EXPECT_EQ(zemath_d_polygon_area(x, y, 2), 0.0);
    double rx[] = {5.0}, ry[] = {6.0};
    EXPECT_EQ(zemath_d_polygon_reorder(nullptr, ry, 1), -11);
    EXPECT_EQ(zemath_d_polygon_reorder(rx, ry, 0), -18);
    EXPECT_EQ(rx[0], 5.0);
    EXPECT_EQ(zemath_d_polygon_reorder(rx, ry, 1), 0);
    EXPECT_EQ(rx[0], 5.0);
}

}  // namespace
