// Kriging: estimates and variances against a direct NumPy solve of the same system
// (tests/reference/gen_gridding_kriging.py), exact reproduction of data and of constant
// fields on multi-bucket data, the parameter clamps, the grid form, and the status codes.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <vector>

#include "zemath/kriging.h"
#include "zemath/status.h"

namespace {

#include "reference/gridding_kriging_ref.inc"

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
using Vec = std::vector<double>;

TEST(Kriging, MatchesDirectSolveOnOneNeighbourhood) {
    for (const KrigingCase& c : kKrigCases) {
        SCOPED_TRACE(c.exponent);
        Vec z(kKrigM), var(kKrigM);
        ASSERT_EQ(
            zemath_2d_kriging_scat_ex(kKrigN, kKrigX, kKrigY, kKrigZ, 3, kKrigSmooth, c.exponent,
                                      kKrigM, kKrigTx, kKrigTy, z.data(), var.data(), 0),
            0);
        for (int k = 0; k < kKrigM; ++k) {
            EXPECT_NEAR(z[k], c.z[k], 1e-9 * (1 + std::fabs(c.z[k]))) << k;
            EXPECT_NEAR(var[k], c.variance[k], 1e-9) << k;
        }
        EXPECT_NEAR(var[kKrigM - 1], 0.0, 1e-9);  // the last target is data point 3
    }
}

struct Field {
    Vec x, y, z;
};

Field scattered(int n, unsigned seed, bool constant) {
    std::mt19937_64 rng(seed);
    std::uniform_real_distribution<double> u(0, 1);
    Field f;
    for (int i = 0; i < n; ++i) {
        f.x.push_back(100 * u(rng)), f.y.push_back(-5 + 10 * u(rng));
        f.z.push_back(constant ? 7.25 : std::sin(f.x.back() / 10) * f.y.back());
    }
    return f;
}

TEST(Kriging, CoordinatesNearTheOverflowLimit) {
    // Positions are measured in bucket units, so scaling every coordinate leaves the
    // estimates unchanged; for data spanning most of the double range the plain span
    // overflows, which would give NaN positions and an undefined conversion to a bucket
    // number.
    const Field f = scattered(300, 19, false);
    const double m = std::numeric_limits<double>::max();
    const Vec tx{0, 20, 50, 99, 30}, ty{0, 1, -2, 4.5, 3};
    const struct {
        double a, b, big;  // x -> (a x + b) big, y -> 4 a y big
    } cases[] = {{1, -32, std::ldexp(1.0, 1016)}, {1, -50, 1.7e306}, {0.02, -1, 0.9 * m}};
    for (const auto [a, b, big] : cases) {  // the last spans more than DBL_MAX in x
        Vec x = f.x, y = f.y, sx = tx, sy = ty;
        for (double& v : x) v = (a * v + b) * big;
        for (double& v : y) v *= 4 * a * big;
        for (double& v : sx) v = (a * v + b) * big;
        for (double& v : sy) v *= 4 * a * big;
        Vec plain(5), huge(5), plain_var(5), huge_var(5);
        Vec ux = f.x, uy = f.y, utx = tx, uty = ty;
        for (double& v : uy) v *= 4;
        for (double& v : uty) v *= 4;
        ASSERT_EQ(
            zemath_2d_kriging_scat_ex(300, ux.data(), uy.data(), f.z.data(), 4, 1.0, 1.5, 5,
                                      utx.data(), uty.data(), plain.data(), plain_var.data(), 0),
            0);
        ASSERT_EQ(zemath_2d_kriging_scat_ex(300, x.data(), y.data(), f.z.data(), 4, 1.0, 1.5, 5,
                                            sx.data(), sy.data(), huge.data(), huge_var.data(), 0),
                  0)
            << big;
        for (int k = 0; k < 5; ++k) {
            EXPECT_NEAR(huge[k], plain[k], 1e-9) << big << " target " << k;
            EXPECT_NEAR(huge_var[k], plain_var[k], 1e-9) << big << " target " << k;
        }
    }
    // Infinite targets, and a target whose covariances overflow, get NANUM in both
    // outputs; a target far outside the data but within range still gets numbers.
    const double inf = std::numeric_limits<double>::infinity();
    const Vec fx{inf, 10, 1e300, 1e4}, fy{0, -inf, 10, 10};
    Vec est(4), var(4);
    ASSERT_EQ(zemath_2d_kriging_scat_ex(300, f.x.data(), f.y.data(), f.z.data(), 4, 1.0, 1.5, 4,
                                        fx.data(), fy.data(), est.data(), var.data(), 0),
              0);
    for (int k = 0; k < 3; ++k) {
        EXPECT_EQ(est[k], NANUM) << k;
        EXPECT_EQ(var[k], NANUM) << k;
    }
    EXPECT_TRUE(std::isfinite(est[3]) && est[3] != NANUM);
    EXPECT_GT(var[3], 0.0);
}

TEST(Kriging, ReproducesDataAndConstants) {
    struct Case {
        int n;
        double smooth, exponent;
        int n_point, max_neighbours;
    };
    const Case cases[] = {{1200, 1.0, 1.5, 4, 0},
                          {1200, 2.9, 1.0, 2, 40},
                          {500, 0.4, 0.7, 8, 0},
                          {1, 1.0, 1.0, 1, 0}};
    for (const Case& c : cases) {
        SCOPED_TRACE(c.n);
        const Field f = scattered(c.n, 17, false);
        Vec at(c.n), var(c.n);
        ASSERT_EQ(zemath_2d_kriging_scat_ex(c.n, f.x.data(), f.y.data(), f.z.data(), c.n_point,
                                            c.smooth, c.exponent, c.n, f.x.data(), f.y.data(),
                                            at.data(), var.data(), c.max_neighbours),
                  0);
        for (int i = 0; i < c.n; ++i) {
            EXPECT_NEAR(at[i], f.z[i], 1e-9 * (1 + std::fabs(f.z[i])));
            EXPECT_NEAR(var[i], 0.0, 1e-8);
        }
        const Field k = scattered(c.n, 18, true);
        Vec tx{-1000, 50, 1e6, 33.3}, ty{0, 0, -1e6, 4.9}, tz(4);
        ASSERT_EQ(zemath_2d_kriging_scat(c.n, k.x.data(), k.y.data(), k.z.data(), c.n_point,
                                         c.smooth, c.exponent, 4, tx.data(), ty.data(), tz.data(),
                                         c.max_neighbours),
                  0);
        for (double v : tz) EXPECT_NEAR(v, 7.25, 1e-9);  // also far outside the data box
    }
}

TEST(Kriging, ClampsGridFormAndCodes) {
    const Field f = scattered(800, 3, false);
    const Vec gx{1, 20, 55.5}, gy{-4, 0, 4.5};
    Vec grid(9), tx, ty, scat(9), clamped(9);
    for (double yv : gy)
        for (double xv : gx) tx.push_back(xv), ty.push_back(yv);
    ASSERT_EQ(zemath_2d_kriging_grid(800, f.x.data(), f.y.data(), f.z.data(), 3, 1.2, 1.2, 3,
                                     gx.data(), 3, gy.data(), grid.data(), 0),
              0);
    ASSERT_EQ(zemath_2d_kriging_scat(800, f.x.data(), f.y.data(), f.z.data(), 3, 1.2, 1.2, 9,
                                     tx.data(), ty.data(), scat.data(), 0),
              0);
    EXPECT_EQ(grid, scat);
    // dExponent above 2 counts as 2 (the degenerate limit: solvable on 3 points only, a
    // singular system on more); dSmooth above 3 counts as 3.
    ASSERT_EQ(zemath_2d_kriging_scat(3, f.x.data(), f.y.data(), f.z.data(), 3, 1.2, 2.0, 9,
                                     tx.data(), ty.data(), scat.data(), 0),
              0);
    ASSERT_EQ(zemath_2d_kriging_scat(3, f.x.data(), f.y.data(), f.z.data(), 3, 1.2, 2.5, 9,
                                     tx.data(), ty.data(), clamped.data(), 0),
              0);
    EXPECT_EQ(clamped, scat);
    EXPECT_EQ(zemath_2d_kriging_scat(800, f.x.data(), f.y.data(), f.z.data(), 3, 1.2, 2.5, 9,
                                     tx.data(), ty.data(), clamped.data(), 0),
              ZEMATH_ERR_KRIGING_SOLVE);
    Vec s3(9), s9(9);
    ASSERT_EQ(zemath_2d_kriging_scat(800, f.x.data(), f.y.data(), f.z.data(), 3, 3.0, 1.0, 9,
                                     tx.data(), ty.data(), s3.data(), 0),
              0);
    ASSERT_EQ(zemath_2d_kriging_scat(800, f.x.data(), f.y.data(), f.z.data(), 3, 9.0, 1.0, 9,
                                     tx.data(), ty.data(), s9.data(), 0),
              0);
    EXPECT_EQ(s3, s9);

    // Refusals leave the output untouched.
    const double one[] = {1.0}, same_x[] = {2, 2, 2}, same_y[] = {5, 5, 5}, zs[] = {1, 2, 3};
    const double nan_t[] = {kNaN}, missing_z[] = {NANUM, NANUM, NANUM};
    double out[3] = {-7, -7, -7};
    struct Case {
        const char* name;
        int got, expected;
    };
    const Case cases[] = {
        {"smooth 0 before nulls",
         zemath_2d_kriging_scat(3, nullptr, same_y, zs, 1, 0.0, 1, 1, one, one, out, 0), -37},
        {"smooth NaN",
         zemath_2d_kriging_scat(3, same_x, same_y, zs, 1, kNaN, 1, 1, one, one, out, 0), -37},
        {"exponent < 0",
         zemath_2d_kriging_scat(3, same_x, same_y, zs, 1, 1, -0.1, 1, one, one, out, 0), -37},
        {"null target",
         zemath_2d_kriging_scat(3, same_x, same_y, zs, 1, 1, 1, 1, one, nullptr, out, 0), -11},
        {"null grid",
         zemath_2d_kriging_grid(3, same_x, same_y, zs, 1, 1, 1, 1, one, 1, nullptr, out, 0), -11},
        {"no data", zemath_2d_kriging_scat(0, same_x, same_y, zs, 1, 1, 1, 1, one, one, out, 0),
         -8},
        {"all z missing",
         zemath_2d_kriging_scat(3, same_x, same_y, missing_z, 1, 1, 1, 1, one, one, out, 0), -8},
        {"coincident points",
         zemath_2d_kriging_scat(3, same_x, same_y, zs, 1, 1, 1, 1, one, one, out, 0), -38},
    };
    for (const Case& c : cases) EXPECT_EQ(c.got, c.expected) << c.name;
    EXPECT_EQ((Vec{out[0], out[1], out[2]}), (Vec{-7, -7, -7}));
    // One data point: its value everywhere; a NaN target: NANUM.
    ASSERT_EQ(zemath_2d_kriging_scat(1, same_x, same_y, zs, 1, 1, 1, 1, one, one, out, 0), 0);
    EXPECT_DOUBLE_EQ(out[0], 1.0);
    ASSERT_EQ(zemath_2d_kriging_scat(1, same_x, same_y, zs, 1, 1, 1, 1, nan_t, one, out, 0), 0);
    EXPECT_EQ(out[0], NANUM);
}

}  // namespace
