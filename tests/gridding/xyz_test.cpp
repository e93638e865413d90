// XYZ family: duplicate merging against NumPy group statistics
// (tests/reference/gen_gridding_xyz.py), examination categories and steps, the step
// finders, the matrix conversions with their truncation quirk, and refused calls.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>
#include <random>
#include <vector>

#include "zemath/status.h"
#include "zemath/xyz.h"

namespace {

#include "reference/gridding_xyz_ref.inc"

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
using Vec = std::vector<double>;

TEST(XyzDuplicates, MatchesNumpyGroupStatistics) {
    for (int method = 0; method <= 4; ++method) {
        SCOPED_TRACE(method);
        Vec x(kDupX, kDupX + kDupN), y(kDupY, kDupY + kDupN), z(kDupZ, kDupZ + kDupN);
        ASSERT_EQ(zemath_xyz_remove_duplicates(kDupN, x.data(), y.data(), z.data(), method, 1e-8,
                                               1e-8, 1),
                  kDupGroups);
        for (int g = 0; g < kDupGroups; ++g) {
            EXPECT_EQ(x[g], kDupUx[g]);
            EXPECT_EQ(y[g], kDupUy[g]);
            EXPECT_NEAR(z[g], kDupMerged[method][g],
                        1e-12 * (1 + std::fabs(kDupMerged[method][g])));
        }
    }
}

// Past the size where the merging sorts by radix: the three forms against NumPy group
// statistics, the survivors in (x, y) order. The formulas are the generator's.
TEST(XyzDuplicates, LargeSetAllFormsMatchNumpy) {
    Vec x0(kBigN), y0(kBigN), z0(kBigN), v0(kBigN);
    for (long long i = 0; i < kBigN; ++i) {
        x0[i] = static_cast<double>((i * 7919) % 23) * 0.5 - 3.0;
        y0[i] = static_cast<double>((i * 104729 + i / 7) % 11) * 0.25;
        z0[i] = static_cast<double>((i * 37) % 1009) / 16.0 - 20.0;
        v0[i] = 2.0 * z0[i] + 1.0;
    }
    auto near = [](double got, double want) {
        return std::fabs(got - want) <= 1e-12 * (1 + std::fabs(want));
    };
    for (int method = 0; method <= 4; ++method) {
        SCOPED_TRACE(method);
        Vec x = x0, y = y0, z = z0, v = v0;
        ASSERT_EQ(zemath_xyzv_remove_duplicates(kBigN, x.data(), y.data(), z.data(), v.data(),
                                                method, 1e-8, 1e-8, 1),
                  kBigGroups);
        Vec xz = x0, yz = y0, zz = z0;
        ASSERT_EQ(zemath_xyz_remove_duplicates(kBigN, xz.data(), yz.data(), zz.data(), method, 1e-8,
                                               1e-8, 1),
                  kBigGroups);
        int bad = 0;
        for (int g = 0; g < kBigGroups; ++g) {
            bad +=
                x[g] != kBigUx[g] || y[g] != kBigUy[g] || xz[g] != kBigUx[g] || yz[g] != kBigUy[g];
            bad += !near(z[g], kBigMergedZ[method][g]) || !near(v[g], kBigMergedV[method][g]) ||
                   !near(zz[g], kBigMergedZ[method][g]);
        }
        EXPECT_EQ(bad, 0);
        Vec px = x0, py = y0;
        ASSERT_EQ(zemath_xy_remove_duplicates(kBigN, px.data(), py.data(), method, 1e-8),
                  kBigXGroups);
        for (int g = 0; g < kBigXGroups; ++g) {
            EXPECT_EQ(px[g], kBigXu[g]);
            EXPECT_TRUE(near(py[g], kBigMergedXyY[method][g])) << g;
        }
    }
}

// Points given row by row (each x-cluster already in (y, x) order, the merging's shortcut)
// and the same points shuffled (sorted by the merging) give the same survivors; small
// integer values, so that the order in which a group combines them cannot matter. Rows
// with pairs, with a triple of equal points, and with -0.0 beside 0.0; past the size where
// the x order comes from the (stable) radix sort, so that the rows stay in order.
TEST(XyzDuplicates, OrderedRowsMergeLikeShuffled) {
    struct Case {
        const char* what;
        int copies;        // equal points per lattice point
        bool signed_zero;  // the first copy of y = 0 given as -0.0
    };
    const Case cases[] = {{"pairs", 2, false}, {"triples", 3, false}, {"signed zero", 2, true}};
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        Vec x0, y0, z0;
        for (int i = 0; i < 1200; ++i)
            for (int k = 0; k < c.copies; ++k) {
                x0.push_back(i % 6);
                const double yv = i / 6;
                y0.push_back(c.signed_zero && yv == 0.0 && k == 0 ? -0.0 : yv);
                z0.push_back(static_cast<double>((7 * i + 3 * k) % 17));
            }
        const int n = static_cast<int>(x0.size());
        std::vector<int> perm(static_cast<std::size_t>(n));
        std::iota(perm.begin(), perm.end(), 0);
        std::shuffle(perm.begin(), perm.end(), std::mt19937(5));
        for (int method = 0; method <= 4; ++method) {
            SCOPED_TRACE(method);
            Vec x = x0, y = y0, z = z0, sx(n), sy(n), sz(n);
            for (int i = 0; i < n; ++i)
                sx[i] = x0[perm[i]], sy[i] = y0[perm[i]], sz[i] = z0[perm[i]];
            const int m = zemath_xyz_remove_duplicates(n, x.data(), y.data(), z.data(), method,
                                                       1e-8, 1e-8, 1);
            ASSERT_EQ(m, 1200);
            ASSERT_EQ(zemath_xyz_remove_duplicates(n, sx.data(), sy.data(), sz.data(), method, 1e-8,
                                                   1e-8, 1),
                      m);
            for (int g = 0; g < m; ++g) {
                EXPECT_EQ(x[g], sx[g]);
                EXPECT_EQ(y[g], sy[g]);
                EXPECT_EQ(z[g], sz[g]);
            }
        }
    }
}

TEST(XyzDuplicates, MissingValuesAndMethodFive) {
    // Two groups: (0,0) with z {1, NANUM, 3}, (1,0) with only NANUM.
    const Vec x0{0, 1, 0, 0}, y0{0, 0, 0, 0}, z0{1, NANUM, NANUM, 3};
    struct Case {
        int keep_missing, method, count;
        double z_first, z_second;
    };
    const Case cases[] = {{1, 0, 2, 2.0, NANUM},
                          {1, 4, 2, 4.0, NANUM},
                          {1, 1, 2, 2.0, NANUM},
                          {0, 0, 1, 2.0, 0.0},
                          {1, 99, 2, 2.0, NANUM}};
    for (const Case& c : cases) {
        Vec x = x0, y = y0, z = z0;
        ASSERT_EQ(zemath_xyz_remove_duplicates(4, x.data(), y.data(), z.data(), c.method, 1e-8,
                                               1e-8, c.keep_missing),
                  c.count);
        EXPECT_EQ(z[0], c.z_first);
        if (c.count == 2) {
            EXPECT_EQ(z[1], c.z_second);
        }
    }
    Vec x = x0, y = y0, z = z0;
    EXPECT_EQ(zemath_xyz_remove_duplicates(4, x.data(), y.data(), z.data(), 5, 1e-8, 1e-8, 0), 4);
    EXPECT_EQ(z, z0);  // method 5 changes nothing
    // Tolerance chains: 0, 0.6e-8, 1.2e-8 are one group at tolerance 1e-8.
    Vec cx{1.2e-8, 0, 0.6e-8}, cy{0, 0, 0}, cz{3, 1, 2};
    EXPECT_EQ(zemath_xyz_remove_duplicates(3, cx.data(), cy.data(), cz.data(), 3, 1e-8, 1e-8, 1),
              1);
    EXPECT_EQ(cx[0], 0.0);
    EXPECT_EQ(cz[0], 3.0);
    // The merged point is the group's point of smallest y, not of smallest x.
    Vec rx{0, 0.5e-8}, ry{0.5e-8, 0}, rz{1, 2};
    EXPECT_EQ(zemath_xyz_remove_duplicates(2, rx.data(), ry.data(), rz.data(), 0, 1e-8, 1e-8, 1),
              1);
    EXPECT_EQ((Vec{rx[0], ry[0], rz[0]}), (Vec{0.5e-8, 0, 1.5}));
    // The xyzv, xy and array forms.
    Vec vx{2, 1, 2}, vy{5, 5, 5}, vz{1, 2, 3}, vv{10, 20, 30};
    EXPECT_EQ(
        zemath_xyzv_remove_duplicates(3, vx.data(), vy.data(), vz.data(), vv.data(), 2, 0, 0, 1),
        2);
    EXPECT_EQ((Vec{vz[0], vz[1], vv[0], vv[1]}), (Vec{2, 1, 20, 10}));
    Vec ax{3, 1, 2, 1, NANUM, kNaN, 3.0000000001};
    EXPECT_EQ(zemath_array_remove_duplicates(ax.data(), 7, 1e-6), 3);
    EXPECT_EQ((Vec{ax[0], ax[1], ax[2]}), (Vec{1, 2, 3}));
    Vec px{1, 0, 1}, py{4, 7, 8};
    EXPECT_EQ(zemath_xy_remove_duplicates(3, px.data(), py.data(), 3, 0.0), 2);
    EXPECT_EQ((Vec{px[0], py[0], px[1], py[1]}), (Vec{0, 7, 1, 8}));
}

TEST(XyzDuplicates, EqualInfiniteCoordinatesAreDuplicates) {
    // Infinite coordinates are kept; two points at the same infinite x or y are one point
    // (their difference is NaN, which compared with any tolerance would keep them apart).
    const double inf = std::numeric_limits<double>::infinity();
    for (double tol : {0.0, 1e-8}) {
        Vec x{0, 1, -0.0, inf, inf}, y{inf, 2, inf, -1, -1}, z{1, 5, 3, 4, 8};
        ASSERT_EQ(zemath_xyz_remove_duplicates(5, x.data(), y.data(), z.data(), 0, tol, tol, 0), 3)
            << tol;
        EXPECT_EQ((Vec{y[0], z[0], x[1], z[1], x[2], y[2], z[2]}), (Vec{inf, 2, 1, 5, inf, -1, 6}));
        Vec px{inf, 0, inf}, py{1, 2, 5};
        ASSERT_EQ(zemath_xy_remove_duplicates(3, px.data(), py.data(), 4, tol), 2);
        EXPECT_EQ((Vec{px[1], py[1]}), (Vec{inf, 6}));
    }
}

struct Grid {
    Vec x, y, z;
};

Grid lattice(int nx, int ny, double x0, double dx, double y0, double dy) {
    Grid g;
    for (int j = 0; j < ny; ++j)
        for (int i = 0; i < nx; ++i) {
            g.x.push_back(x0 + i * dx);
            g.y.push_back(y0 + j * dy);
            g.z.push_back(i - j);
        }
    return g;
}

TEST(XyzExamine, Categories) {
    Grid full = lattice(3, 3, 0, 1, 0, 1);
    Grid holed = full;
    holed.x.erase(holed.x.begin() + 4), holed.y.erase(holed.y.begin() + 4),
        holed.z.erase(holed.z.begin() + 4);
    Grid sparse_axis;  // x in {0, 1, 2, 4}: step 1, node 3 missing
    for (double yv : {0.0, 1.0})
        for (double xv : {0.0, 1.0, 2.0, 4.0})
            sparse_axis.x.push_back(xv), sparse_axis.y.push_back(yv), sparse_axis.z.push_back(1);
    Grid twice = full;
    twice.x.insert(twice.x.end(), full.x.begin(), full.x.end());
    twice.y.insert(twice.y.end(), full.y.begin(), full.y.end());
    twice.z.insert(twice.z.end(), full.z.begin(), full.z.end());
    Grid big = lattice(40, 25, 1e9, 0.25, -3, 0.2);  // a huge offset
    Grid random;
    std::mt19937_64 rng(7);
    std::uniform_real_distribution<double> u(0, 1);
    for (int i = 0; i < 300; ++i)
        random.x.push_back(u(rng)), random.y.push_back(u(rng)), random.z.push_back(0);
    const Grid two{{1, 4}, {2, 7}, {0, 0}};

    struct Case {
        const char* name;
        const Grid* g;
        bool remove;
        int category, nvar;
        double xstep, ystep, tol = 1e-8;
    };
    const Case cases[] = {
        {"two points", &two, false, 0, 2, 3, 5},
        {"full 3x3", &full, false, 0, 9, 1, 1},
        {"3x3 less one", &holed, false, 1, 8, 1, 1},
        {"x 0 1 2 4", &sparse_axis, false, 1, 8, 1, 1},
        {"each twice, kept", &twice, false, 0, 18, 1, 1},
        {"each twice, merged", &twice, true, 0, 9, 1, 1},
        // The zero-difference test is relative to |x|: far from 0 the tolerance must shrink.
        {"offset 1e9", &big, false, 0, 1000, 0.25, 0.2, 1e-12},
        {"offset 1e9, tolerance too wide", &big, false, 2, 1000, -1, -1, 1e-8},
        {"random", &random, false, 2, 300, -1, -1},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        const int n = static_cast<int>(c.g->x.size());
        int nvar = -1;
        double xmin, xstep, xmax, ymin, ystep, ymax;
        EXPECT_EQ(
            zemath_xyz_examine_data(n, c.g->x.data(), c.g->y.data(), c.g->z.data(), c.tol, c.tol,
                                    &nvar, &xmin, &xstep, &xmax, &ymin, &ystep, &ymax, c.remove, 0),
            c.category);
        EXPECT_EQ(nvar, c.nvar);
        EXPECT_EQ(xmin, *std::min_element(c.g->x.begin(), c.g->x.end()));
        EXPECT_EQ(ymax, *std::max_element(c.g->y.begin(), c.g->y.end()));
        if (c.xstep >= 0) {
            EXPECT_NEAR(xstep, c.xstep, 1e-9 * c.xstep);
            EXPECT_NEAR(ystep, c.ystep, 1e-9 * c.ystep);
        }
        zemath_xyz_exam rec{c.tol, c.tol, 5, 0, 0, 0, 0, 0, 0, 0, 0, 0, 99};
        EXPECT_EQ(zemath_xyz_examine_data_pro(n, c.g->x.data(), c.g->y.data(), c.g->z.data(), &rec),
                  c.remove ? c.category : c.category);
        EXPECT_EQ(rec.nType, c.category);
        // The mode/gcd variant agrees on these sets.
        if (c.category == 2) continue;  // the gcd fallback may find a fine grid there
        EXPECT_EQ(zemath_xyz_examine_data_ex(n, c.g->x.data(), c.g->y.data(), c.g->z.data(), c.tol,
                                             c.tol, nullptr, nullptr, nullptr, nullptr, nullptr,
                                             nullptr, nullptr, c.remove, 0),
                  c.category);
    }
    // Coordinates 1e9 + 0.01 i are rounded to the ulp of 1e9 (1.2e-7): the reported misfit
    // is about 1e-5 of the step; blocks that do not fit are skipped, the grid is found.
    const Grid fine = lattice(30, 4, 1e9, 0.01, 0, 1);
    zemath_xyz_exam fr{1e-13, 1e-13, 5, 1e-4, 1e-4, 0, 0, 0, 0, 0, 0, 0, -1};
    EXPECT_EQ(zemath_xyz_examine_data_pro(120, fine.x.data(), fine.y.data(), fine.z.data(), &fr),
              0);
    EXPECT_NEAR(fr.dXStep, 0.01, 1e-7);
    EXPECT_GT(fr.dXIrregular, 1e-6);
    EXPECT_LT(fr.dXIrregular, 2e-5);
    zemath_xyz_exam rec{};
    rec.nType = 5;
    EXPECT_EQ(zemath_xyz_examine_data_pro(0, full.x.data(), full.y.data(), full.z.data(), &rec),
              -1);
    EXPECT_EQ(rec.nType, -1);
    EXPECT_EQ(zemath_xyz_examine_data_pro(9, nullptr, full.y.data(), full.z.data(), nullptr), -1);
    const Vec nan_xy{NANUM, kNaN};
    EXPECT_EQ(zemath_xyz_examine_data_pro(2, nan_xy.data(), nan_xy.data(), nan_xy.data(), nullptr),
              -1);
    // One axis regular, the other random: the random axis' step is estimated, category 2.
    Grid half;
    for (int i = 0; i < 100; ++i)
        half.x.push_back(i % 10), half.y.push_back(u(rng)), half.z.push_back(0);
    double xs = 0, ys = 0;
    EXPECT_EQ(
        zemath_xyz_examine_data(100, half.x.data(), half.y.data(), half.z.data(), 1e-8, 1e-8,
                                nullptr, nullptr, &xs, nullptr, nullptr, &ys, nullptr, false, 0),
        2);
    EXPECT_DOUBLE_EQ(xs, 1.0);
    const double yr = *std::max_element(half.y.begin(), half.y.end()) -
                      *std::min_element(half.y.begin(), half.y.end());
    EXPECT_DOUBLE_EQ(ys, yr / 9);  // 10 distinct x values
}

TEST(XyzStep, Finders) {
    struct Case {
        Vec x;
        int status;
        double step;
    };
    Vec tenths;
    for (int i = 0; i <= 50; ++i) tenths.push_back(i * 0.1);
    std::mt19937_64 rng(3);
    std::uniform_real_distribution<double> u(0, 1);
    Vec noise(200);
    for (double& v : noise) v = u(rng);
    Vec gappy;  // a 0.25 grid with every third node missing, shuffled
    for (int i = 0; i < 300; ++i)
        if (i % 3 != 1) gappy.push_back(-7 + 0.25 * i);
    std::shuffle(gappy.begin(), gappy.end(), rng);
    const Case cases[] = {
        {{0, 1, 2, 4}, 0, 1}, {{5}, -18, 0},       {tenths, 0, 0.1},           {noise, -32, 0},
        {gappy, 0, 0.25},     {{3, 3, 3}, -32, 0}, {{2, NANUM, 0, kNaN}, 0, 2}};
    for (const Case& c : cases) {
        double step = 99;
        EXPECT_EQ(zemath_find_array_step(c.x.data(), static_cast<int>(c.x.size()), &step, 1e-8),
                  c.status);
        EXPECT_NEAR(step, c.step, 1e-12);
    }
    double step = 99;
    EXPECT_EQ(zemath_find_array_step(nullptr, 3, &step, 1e-8), ZEMATH_ERR_NULL_POINTER);
    EXPECT_EQ(step, 99);

    const Vec v{0, 0.3, 0.6, 1.5};  // differences 0.3, 0.3, 0.9
    int count = 0;
    EXPECT_EQ(zemath_find_array_step_stat(v.data(), 4, &step, 1e-8, &count), 0);
    EXPECT_NEAR(step, 0.3, 1e-12);
    EXPECT_EQ(count, 2);
    EXPECT_EQ(zemath_find_array_step_stat_ex(v.data(), 4, &step, 1e-8, &count), 0);
    const Vec off{0, 0.3, 0.6, 1.0};
    EXPECT_EQ(zemath_find_array_step_stat_ex(off.data(), 4, &step, 1e-8, &count),
              ZEMATH_ERR_NO_STEP);
    EXPECT_EQ(zemath_find_array_step_by_probability(v.data(), 4, &step, 1e-8, 0.6), 0);
    EXPECT_EQ(zemath_find_array_step_by_probability(v.data(), 4, &step, 1e-8, 0.7),
              ZEMATH_ERR_NO_STEP);
    const Vec g{0, 0.6, 1.5, 2.4};  // gcd of 0.6, 0.9, 0.9 is 0.3
    EXPECT_EQ(zemath_find_array_step_by_gcd(g.data(), 4, &step, 1e-8, 0.0), 0);
    EXPECT_NEAR(step, 0.3, 1e-12);
    EXPECT_EQ(zemath_find_array_step_by_gcd(g.data(), 4, &step, 1e-8, 0.5), ZEMATH_ERR_NO_STEP);
    EXPECT_EQ(zemath_find_array_step_by_gcd(g.data(), 1, &step, 1e-8, 0.0),
              ZEMATH_ERR_TOO_FEW_POINTS);

    double steps[4];
    int counts[4];
    EXPECT_EQ(zemath_array_step_histogram(v.data(), 4, 1e-8, steps, counts, 4), 2);
    EXPECT_EQ(counts[0], 2);
    EXPECT_EQ(counts[1], 1);
    EXPECT_NEAR(steps[1], 0.9, 1e-12);
    // A difference that overflows to infinity (kept by a negative tolerance) is a group of
    // its own (comparing it with itself gave NaN, and the grouping loop never ended).
    const std::vector<double> ends{DBL_MAX, -DBL_MAX, DBL_MAX};
    EXPECT_EQ(zemath_array_step_histogram(ends.data(), 3, -1.0, steps, counts, 4), 2);
    EXPECT_EQ(steps[1], INFINITY);
    EXPECT_EQ(counts[1], 1);
    double intervals[1] = {-1};
    EXPECT_EQ(zemath_get_intervals(v.data(), 4, 1e-8, intervals, 1), 3);
    EXPECT_NEAR(intervals[0], 0.3, 1e-15);
    const Vec shifted{0.1 + 1e-9, 0.6 - 1e-9, 1.1, 2.1};
    double anchor = 0;
    EXPECT_EQ(zemath_array_anchor(shifted.data(), 4, 0.5, &anchor), 0);
    EXPECT_NEAR(anchor, 0.1, 1e-12);
}

TEST(XyzMatrix, ConversionsAndTruncationQuirk) {
    // Regular: points below the first node by up to 1.5 steps land in column 0.
    struct Case {
        double x;
        int status;
    };
    const Case regular[] = {{-0.9, 0}, {-1.4, 0}, {-1.6, -18}, {2.4, 0}, {2.6, -18}, {kNaN, -18}};
    for (const Case& c : regular) {
        Vec mat(6, 7.0);
        const double x[] = {c.x}, y[] = {1.0}, z[] = {5.0};
        EXPECT_EQ(zemath_convert_regular_xyz_to_matrix(1, x, y, z, mat.data(), 0, 1, 3, 0, 1, 2),
                  c.status)
            << c.x;
        const int col = c.x < 0 ? 0 : 2;
        if (c.status == 0) {
            EXPECT_EQ(mat[3 + col], 5.0);
        } else {
            EXPECT_EQ(mat, Vec(6, 7.0));  // refused: nothing written
        }
    }
    // Sparse: placed only within the tolerance fraction of the node.
    struct SparseCase {
        double off, frac;
        int not_placed;
    };
    const SparseCase sparse[] = {
        {0.4, 0.4, 0}, {0.4, 0.39, 1}, {0.0, 0.0, 0}, {-0.9, 1.0, 0}, {7.0, 1.0, 1}};
    for (const SparseCase& c : sparse) {
        Vec mat(4, 7.0);
        const double x[] = {1.0 + 2.0 * c.off}, y[] = {0.0}, z[] = {5.0};
        EXPECT_EQ(zemath_convert_sparse_xyz_to_matrix(1, x, y, z, mat.data(), 1, 2, 2, 0, 1, 2,
                                                      c.frac, 0.1),
                  c.not_placed);
        EXPECT_EQ(std::count(mat.begin(), mat.end(), NANUM), 4 - (1 - c.not_placed));
    }
    // Round trip through the unrolled form.
    Vec m{1, 2, 3, 4, NANUM, 6};
    Vec x(6), y(6), z(6), back(6, 0.0);
    EXPECT_EQ(zemath_mat_to_regular_xyz(m.data(), 3, 2, 10, 0.5, -1, 2, x.data(), y.data(),
                                        z.data(), true),
              5);
    EXPECT_EQ((Vec{x[3], y[3]}), (Vec{10, 1}));
    EXPECT_EQ(zemath_convert_regular_xyz_to_matrix(5, x.data(), y.data(), z.data(), back.data(), 10,
                                                   0.5, 3, -1, 2, 2),
              0);
    EXPECT_EQ(back, (Vec{1, 2, 3, 4, 0, 6}));
    EXPECT_EQ(zemath_mat_replace_blanks(m.data(), 6, -5), 1);
    EXPECT_EQ(m[4], -5);
    Vec rx{1, NANUM, 3}, ry{1, 2, 3}, rz{1, 2, NANUM};
    EXPECT_EQ(zemath_xyz_remove_missingvalue(3, rx.data(), ry.data(), rz.data()), 1);
    // Grid checks.
    const double one[] = {0.0};
    double cell[4];
    EXPECT_EQ(zemath_convert_regular_xyz_to_matrix(1, one, one, one, cell, 0, 0, 2, 0, 1, 2),
              ZEMATH_ERR_TOO_FEW_POINTS);
    EXPECT_EQ(zemath_convert_regular_xyz_to_matrix(1, one, one, one, cell, 0, 0, 1, 0, 0, 1),
              0);  // 1 x 1 grid
}

TEST(XyzRefusals, CodesAndUntouchedOutputs) {
    double a[3] = {1, 2, 3}, b[3] = {1, 2, 3}, c[3] = {1, 2, 3}, mat[4] = {9, 9, 9, 9};
    int count = 0;
    double step = 0;
    struct Case {
        const char* name;
        int got, expected;
    };
    const Case cases[] = {
        {"dup null", zemath_xyz_remove_duplicates(3, a, nullptr, c, 0, 0, 0, 1), -11},
        {"dup n=0", zemath_xyz_remove_duplicates(0, a, b, c, 0, 0, 0, 1), -18},
        {"dup n<0", zemath_xyz_remove_duplicates(-5, a, b, c, 0, 0, 0, 1), -18},
        {"xyzv null", zemath_xyzv_remove_duplicates(3, a, b, c, nullptr, 0, 0, 0, 1), -11},
        {"xy null", zemath_xy_remove_duplicates(3, nullptr, b, 0, 0), -11},
        {"array n=0", zemath_array_remove_duplicates(a, 0, 0), -18},
        {"regular null",
         zemath_convert_regular_xyz_to_matrix(3, a, b, c, nullptr, 0, 1, 2, 0, 1, 2), -11},
        {"regular n=0", zemath_convert_regular_xyz_to_matrix(0, a, b, c, mat, 0, 1, 2, 0, 1, 2),
         -5},
        {"sparse n=0", zemath_convert_sparse_xyz_to_matrix(0, a, b, c, mat, 0, 1, 2, 0, 1, 2, 1, 1),
         -5},
        {"sparse ny=0",
         zemath_convert_sparse_xyz_to_matrix(3, a, b, c, mat, 0, 1, 2, 0, 1, 0, 1, 1), -18},
        {"stat null count", zemath_find_array_step_stat(a, 3, &step, 0, nullptr), -11},
        {"stat n=1", zemath_find_array_step_stat(a, 1, &step, 0, &count), -18},
        {"histogram null", zemath_array_step_histogram(a, 3, 0, nullptr, &count, 1), -11},
        {"anchor null", zemath_array_anchor(nullptr, 3, 1, &step), -11},
        {"mat_to_xyz nx=0", zemath_mat_to_regular_xyz(mat, 0, 2, 0, 1, 0, 1, a, b, c, false), -18},
        {"blanks null", zemath_mat_replace_blanks(nullptr, 3, 0), -11},
        {"missing n=0", zemath_xyz_remove_missingvalue(0, a, b, c), -18},
    };
    for (const Case& k : cases) EXPECT_EQ(k.got, k.expected) << k.name;
    EXPECT_EQ((Vec{a[0], a[1], a[2], b[0], c[2], mat[0], step}), (Vec{1, 2, 3, 1, 3, 9, 0}));
}

}  // namespace
