// Triangulation: triangle sets against scipy.spatial.Delaunay and linear values against
// LinearNDInterpolator (tests/reference/gen_gridding_delaunay.py), the record's
// invariants on random, gridded and degenerate inputs for both builds, the grid build,
// the boundary query, flattening, both evaluators with their documented weights, the
// missing-z rings, natural-neighbour interpolation, and the status codes; points in
// convex position against exactly checked triangles (tests/reference/
// gen_gridding_convex.py) and, with ties, against the record's invariants.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <limits>
#include <map>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "gridding/predicates.hpp"
#include "gridding/triangulation.hpp"
#include "zemath/status.h"
#include "zemath/triangulation.h"

namespace {

#include "reference/gridding_delaunay_ref.inc"

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr unsigned kEngine = ZEMATH_TRI_ENGINE;
using Vec = std::vector<double>;

struct Record {
    Triangulation t;
    Record() { zemath_triangulation_init(&t); }
    ~Record() { zemath_triangulation_free(&t); }
    Record(const Record&) = delete;
    Record& operator=(const Record&) = delete;
};

// Every invariant of a Delaunay record; delaunay false for the grid build.
void check_invariants(const Triangulation& t, bool delaunay = true) {
    ASSERT_EQ(t.valid, 1);
    std::vector<int> uses(static_cast<std::size_t>(t.edges), 0);
    for (int k = 0; k < t.triangles; ++k) {
        const int* v = t.tri + 6 * k;
        if (delaunay) {
            EXPECT_GT(
                zemath::orient2d(t.x[v[0]], t.y[v[0]], t.x[v[1]], t.y[v[1]], t.x[v[2]], t.y[v[2]]),
                0.0)
                << k;
        }
        for (int s = 0; s < 3; ++s) {
            const int a = v[s], b = v[(s + 1) % 3], e = v[3 + s];
            ASSERT_TRUE(e >= 0 && e < t.edges);
            EXPECT_EQ(std::min(a, b), std::min(t.edge[3 * e], t.edge[3 * e + 1]));
            EXPECT_EQ(std::max(a, b), std::max(t.edge[3 * e], t.edge[3 * e + 1]));
            ++uses[e];
            const int n = t.neighbor[3 * k + s];
            EXPECT_EQ(n < 0, t.edge[3 * e + 2] == 1);
            if (n < 0) continue;
            int back = 0;  // symmetric, and across the same edge
            while (back < 3 && t.neighbor[3 * n + back] != k) ++back;
            ASSERT_LT(back, 3);
            EXPECT_EQ(t.tri[6 * n + 3 + back], e);
            if (delaunay) {  // locally Delaunay everywhere = empty circumcircles
                const int d = t.tri[6 * n + (back + 2) % 3];
                EXPECT_LE(zemath::incircle(t.x[v[0]], t.y[v[0]], t.x[v[1]], t.y[v[1]], t.x[v[2]],
                                           t.y[v[2]], t.x[d], t.y[d]),
                          0.0);
            }
        }
    }
    for (int e = 0; e < t.edges && t.triangles > 0; ++e) {
        EXPECT_EQ(uses[e], t.edge[3 * e + 2] == 1 ? 1 : 2) << e;
    }
    if (delaunay) {  // listed node by node: edges from their lower node, triangles from their
                     // lowest
        for (int e = 0; e < t.edges; ++e) {
            EXPECT_LT(t.edge[3 * e], t.edge[3 * e + 1]);
            if (e > 0) {
                EXPECT_LE(t.edge[3 * e - 3], t.edge[3 * e]);
            }
        }
        for (int k = 0; k < t.triangles; ++k) {
            EXPECT_LT(t.tri[6 * k], std::min(t.tri[6 * k + 1], t.tri[6 * k + 2]));
            if (k > 0) {
                EXPECT_LE(t.tri[6 * k - 6], t.tri[6 * k]);
            }
        }
    }
    if (delaunay) {
        EXPECT_EQ(t.triangles, 2 * t.nodes - t.boundaryCount - 2);
        EXPECT_EQ(t.boundary[0], 0);
        for (int k = 0; k < t.boundaryCount; ++k) {  // hull turns counter-clockwise
            const int a = t.boundary[k], b = t.boundary[(k + 1) % t.boundaryCount],
                      c = t.boundary[(k + 2) % t.boundaryCount];
            EXPECT_GE(zemath::orient2d(t.x[a], t.y[a], t.x[b], t.y[b], t.x[c], t.y[c]), 0.0);
        }
    }
}

std::set<std::array<int, 3>> triangle_set(const Triangulation& t) {
    std::set<std::array<int, 3>> s;
    for (int k = 0; k < t.triangles; ++k) {
        std::array<int, 3> v{t.tri[6 * k], t.tri[6 * k + 1], t.tri[6 * k + 2]};
        std::sort(v.begin(), v.end());
        s.insert(v);
    }
    return s;
}

TEST(Triangulation, MatchesScipyDelaunay) {
    for (const auto& ref : kDelaunayReference) {
        const int n = static_cast<int>(ref.x.size());
        std::set<std::array<int, 3>> expected;
        for (std::size_t k = 0; k < ref.tri.size(); k += 3)
            expected.insert({ref.tri[k], ref.tri[k + 1], ref.tri[k + 2]});
        for (unsigned options : {0u, kEngine, unsigned(ZEMATH_TRI_ENGINE_SCALED)}) {
            SCOPED_TRACE(testing::Message() << n << " options " << options);
            Record r;
            ASSERT_EQ(
                zemath_triangulation(n, ref.x.data(), ref.y.data(), ref.z.data(), &r.t, options),
                0);
            ASSERT_EQ(r.t.nodes, n);
            for (int i = 0; i < n; ++i)
                ASSERT_NEAR(r.t.x[i], ref.x[i], 4e-16 * std::fabs(ref.x[i]));
            EXPECT_EQ(triangle_set(r.t), expected);
            check_invariants(r.t);
            // Walking evaluation equals LinearNDInterpolator.
            const int m = static_cast<int>(ref.tx.size());
            Vec walk(m), linear(m);
            ASSERT_EQ(
                zemath_tri_contour_interpolate(m, ref.tx.data(), ref.ty.data(), walk.data(), &r.t),
                0);
            ASSERT_EQ(zemath_tri_linear_interpolate(n, ref.x.data(), ref.y.data(), ref.z.data(), m,
                                                    ref.tx.data(), ref.ty.data(), linear.data(), 0),
                      0);
            for (int k = 0; k < m; ++k) {
                if (ref.tz[k] == 1e300) {
                    EXPECT_EQ(linear[k], NANUM);
                    continue;
                }
                EXPECT_NEAR(linear[k], ref.tz[k], 1e-12) << k;
                // The walk's edge tolerance is an absolute 1e-8 in squared coordinate units:
                // on the 1e-2 box it accepts neighbouring triangles, so compare unit boxes.
                if (ref.x.back() - ref.x.front() > 0.1) {
                    EXPECT_NEAR(walk[k], ref.tz[k], 1e-9) << k;
                }
            }
        }
    }
}

struct Cloud {
    const char* name;
    Vec x, y;
};

std::vector<Cloud> degenerate_clouds() {
    std::vector<Cloud> clouds;
    Cloud lattice{"lattice 12x9", {}, {}};  // four cocircular points in every cell
    for (int i = 0; i < 12; ++i)
        for (int j = 0; j < 9; ++j) lattice.x.push_back(0.1 * i), lattice.y.push_back(0.3 * j);
    clouds.push_back(lattice);
    Cloud circle{"on a circle", {}, {}};
    for (int k = 0; k < 64; ++k)
        circle.x.push_back(std::cos(k * 0.09817477042468103)),
            circle.y.push_back(std::sin(k * 0.09817477042468103));
    circle.x.push_back(0), circle.y.push_back(0);
    clouds.push_back(circle);
    Cloud run{"collinear run then one point", {}, {}};
    for (int k = 0; k < 20; ++k) run.x.push_back(k), run.y.push_back(2.0 * k);
    run.x.push_back(3), run.y.push_back(-1);
    clouds.push_back(run);
    Cloud nearly{"nearly collinear", {}, {}};
    for (int k = 0; k < 50; ++k)
        nearly.x.push_back(k * 0.1), nearly.y.push_back(k * 0.1 + (k % 3) * 1e-15);
    clouds.push_back(nearly);
    Cloud column{"vertical lines", {}, {}};  // equal x values, sorted by y within
    for (int k = 0; k < 30; ++k)
        column.x.push_back(k % 3), column.y.push_back(k / 3 + 0.5 * (k % 3));
    clouds.push_back(column);
    Cloud offset{"1e9 offset", {}, {}};
    std::mt19937_64 rng(11);
    std::uniform_real_distribution<double> u(0, 1);
    for (int k = 0; k < 500; ++k)
        offset.x.push_back(1e9 + u(rng)), offset.y.push_back(-1e9 + 1e-3 * u(rng));
    clouds.push_back(offset);
    Cloud huge{"coordinates near 1e300", {}, {}}, tiny{"coordinates near 1e-300", {}, {}};
    for (int k = 0; k < 100; ++k) {
        huge.x.push_back(1e300 * (1 + u(rng))), huge.y.push_back(-1e300 * u(rng));
        tiny.x.push_back(1e-300 * u(rng)), tiny.y.push_back(1e-300 * u(rng));
    }
    clouds.push_back(huge);
    clouds.push_back(tiny);
    Cloud perturbed{"perturbed grid", {}, {}};
    for (int i = 0; i < 40; ++i)
        for (int j = 0; j < 40; ++j)
            perturbed.x.push_back(i + 1e-12 * u(rng)), perturbed.y.push_back(j + 1e-12 * u(rng));
    clouds.push_back(perturbed);
    // Scattered points around a small empty square (four cocircular points) and an
    // interior collinear run: ties met inside otherwise general data.
    Cloud mixed{"scattered, a cocircular square, a collinear run", {}, {}};
    for (int k = 0; k < 3000; ++k) {
        const double px = u(rng), py = u(rng);
        if (std::hypot(px - 0.5, py - 0.5) < 0.05 || std::fabs(py - 0.25) < 0.01) continue;
        mixed.x.push_back(px), mixed.y.push_back(py);
    }
    for (double dx : {-0.01, 0.01})
        for (double dy : {-0.01, 0.01}) mixed.x.push_back(0.5 + dx), mixed.y.push_back(0.5 + dy);
    for (int k = 1; k < 40; ++k) mixed.x.push_back(0.025 * k), mixed.y.push_back(0.25);
    clouds.push_back(mixed);
    // Magnitudes from 1e-300 to near DBL_MAX at once: no power of 2 brings them all into
    // range, so the predicates must be exact on the given values.
    Cloud span{"span 1e-300 to 1e308", {}, {}};
    for (int k = 0; k < 200; ++k) {
        const double px = (u(rng) - 0.5) * 1.7e308, py = (u(rng) - 0.5) * 1e308;
        span.x.push_back(k % 3 == 0 ? px * 1e-300 : px);  // tiny x with large y,
        span.y.push_back(k % 3 == 1 ? py * 1e-300 : py);  // tiny y with large x
    }
    clouds.push_back(span);
    // Large coordinates with a few nonzero ones so small that the power of 2 bringing the
    // large ones near 1 takes them to 0: (1e-30, 5e299) lies strictly inside the hull, not on
    // its side x = 0, so the coordinates must stay as given.
    Cloud vanishing{"nonzero values lost to a common scaling", {}, {}};
    for (double px : {0.0, 1e300, 0.0, 2e300}) vanishing.x.push_back(px);
    for (double py : {0.0, 1e300, 1e300, 0.0}) vanishing.y.push_back(py);
    for (int k = 1; k < 8; ++k) vanishing.x.push_back(k * 1e-30), vanishing.y.push_back(k * 1e299);
    clouds.push_back(vanishing);
    return clouds;
}

TEST(Triangulation, InvariantsOnDegenerateInputs) {
    for (const Cloud& c : degenerate_clouds()) {
        const int n = static_cast<int>(c.x.size());
        const Vec z(c.x.size(), 1.0);
        for (unsigned options : {0u, unsigned(ZEMATH_TRI_NORMALISED), kEngine}) {
            SCOPED_TRACE(testing::Message() << c.name << " options " << options);
            Record r;
            ASSERT_EQ(zemath_triangulation(n, c.x.data(), c.y.data(), z.data(), &r.t, options), 0);
            EXPECT_EQ(r.t.nodes, n);
            if (options == ZEMATH_TRI_NORMALISED) continue;
            if (std::string(c.name).rfind("coordinates", 0) == 0) {  // checked exactly rescaled
                const double scale = std::ldexp(1.0, -std::ilogb(r.t.x[r.t.nodes - 1]));
                for (int i = 0; i < r.t.nodes; ++i) r.t.x[i] *= scale, r.t.y[i] *= scale;
            }
            check_invariants(r.t);
        }
    }
}

TEST(Triangulation, NodeFilteringAndCodes) {
    // NaN / infinite / NANUM coordinates are dropped; NANUM z dropped unless kept.
    const Vec x{0, 1, 0, 1, kNaN, kInf, NANUM, 0.5, 0.5 + 1e-10};
    const Vec y{0, 0, 1, 1, 0.5, 0.5, 0.5, 0.5, 0.5};
    const Vec z{1, 2, 3, 4, 5, 6, 7, NANUM, 9};
    struct Case {
        const char* name;
        int n;
        unsigned options;
        int status, nodes;
    };
    const Case cases[] = {
        {"missing z dropped, near duplicate merged", 9, 0, 0, 5},
        {"missing z kept", 9, ZEMATH_TRI_KEEP_MISSING_Z, 0, 5},
        {"two points", 2, 0, ZEMATH_ERR_TOO_FEW_CURVES, 0},
        {"n = 0", 0, 0, ZEMATH_ERR_TOO_FEW_CURVES, 0},
        {"n = INT_MIN", std::numeric_limits<int>::min(), 0, ZEMATH_ERR_TOO_FEW_CURVES, 0},
        {"engine, three usable", 3, kEngine, 0, 3},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        Record r;
        EXPECT_EQ(zemath_triangulation(c.n, x.data(), y.data(), z.data(), &r.t, c.options),
                  c.status);
        EXPECT_EQ(r.t.nodes, c.nodes);
        EXPECT_EQ(r.t.valid, c.status == 0 ? 1 : 0);
    }
    Record r;
    ASSERT_EQ(
        zemath_triangulation(9, x.data(), y.data(), z.data(), &r.t, ZEMATH_TRI_KEEP_MISSING_Z), 0);
    EXPECT_EQ(r.t.z[2], 9.0);  // (0.5, 0.5): mean of the non-missing z of the merged pair

    const Vec line_x{0, 1, 2, 3}, line_y{1, 3, 5, 7}, pair_x{0, 0, 0, 1}, pair_y{0, 0, 0, 0};
    EXPECT_EQ(zemath_triangulation(4, line_x.data(), line_y.data(), z.data(), &r.t, 0),
              ZEMATH_ERR_COLLINEAR);
    EXPECT_EQ(r.t.valid, 0);
    EXPECT_EQ(zemath_triangulation(4, line_x.data(), line_y.data(), z.data(), &r.t, kEngine),
              ZEMATH_ERR_COLLINEAR);
    EXPECT_EQ(zemath_triangulation(4, pair_x.data(), pair_y.data(), z.data(), &r.t, 0),
              ZEMATH_ERR_TOO_FEW_CURVES);
    const Vec all_missing(4, NANUM);
    EXPECT_EQ(zemath_triangulation(4, x.data(), y.data(), all_missing.data(), &r.t, 0),
              ZEMATH_ERR_TOO_FEW_CURVES);
    EXPECT_EQ(zemath_triangulation(4, x.data(), nullptr, z.data(), &r.t, 0), ZEMATH_ERR_GENERAL);
    EXPECT_EQ(zemath_triangulation(4, x.data(), y.data(), z.data(), nullptr, 0),
              ZEMATH_ERR_GENERAL);
}

TEST(Triangulation, GridBuild) {
    struct Case {
        int rows, cols, status, triangles, edges, boundary;
    };
    const Case cases[] = {{2, 2, 0, 2, 5, 4},
                          {3, 4, 0, 12, 23, 10},
                          {1, 5, 0, 0, 4, 5},
                          {1, 2, ZEMATH_ERR_TOO_FEW_CURVES, 0, 0, 0},
                          {0, 9, ZEMATH_ERR_TOO_FEW_CURVES, 0, 0, 0}};
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message() << c.rows << "x" << c.cols);
        const int n = std::max(c.rows * c.cols, 1);
        Vec x(n), y(n), z(n, 1.0);
        for (int k = 0; k < c.rows * c.cols; ++k) x[k] = k % c.cols, y[k] = k / c.cols;
        Record r;
        ASSERT_EQ(
            zemath_construct_triangulation(c.rows, c.cols, x.data(), y.data(), z.data(), &r.t, 0),
            c.status);
        if (c.status != 0) continue;
        EXPECT_EQ(r.t.triangles, c.triangles);
        EXPECT_EQ(r.t.edges, c.edges);
        EXPECT_EQ(r.t.edges, 3 * (c.rows - 1) * (c.cols - 1) + c.rows + c.cols - 2);
        EXPECT_EQ(r.t.boundaryCount, c.boundary);
        check_invariants(r.t, false);
    }
    // 2 x 2: the diagonal joins (1,0) and (0,1), i.e. nodes 2 and 1.
    const Vec x{0, 1, 0, 1}, y{0, 0, 1, 1}, z{0, 1, 2, 3};
    Record r;
    ASSERT_EQ(zemath_construct_triangulation(2, 2, x.data(), y.data(), z.data(), &r.t, 0), 0);
    EXPECT_EQ((std::vector<int>(r.t.edge, r.t.edge + 15)),
              (std::vector<int>{0, 1, 1, 0, 2, 1, 1, 2, 0, 1, 3, 1, 2, 3, 1}));
    EXPECT_EQ(zemath_construct_triangulation(2, 2, x.data(), nullptr, z.data(), &r.t, 0),
              ZEMATH_ERR_GENERAL);
}

TEST(Triangulation, BoundaryQueryAndArrays) {
    const Vec x{0, 2, 2, 0, 1}, y{0, 0, 2, 2, 1}, z{1, 2, 3, 4, 5};
    Record r;
    ASSERT_EQ(zemath_triangulation(5, x.data(), y.data(), z.data(), &r.t, 0), 0);
    double bx[4], by[4], bz[4];
    int count = -1;
    EXPECT_EQ(zemath_triangulation_boundary(&r.t, nullptr, bx, by, bz, 0), 4);  // size query
    EXPECT_EQ(zemath_triangulation_boundary(&r.t, &count, bx, by, bz, ZEMATH_TRI_BOUNDARY_FORWARD),
              0);
    EXPECT_EQ(count, 4);
    // Nodes sorted by x then y: (0,0) (0,2) (1,1) (2,0) (2,2); forward = counter-clockwise.
    EXPECT_EQ((Vec{bx[0], by[0], bx[1], by[1], bx[2], by[2], bx[3], by[3]}),
              (Vec{0, 0, 2, 0, 2, 2, 0, 2}));
    EXPECT_EQ(zemath_triangulation_boundary(&r.t, &count, bx, by, bz, 0), 0);
    EXPECT_EQ((Vec{bx[0], by[0], bx[1], by[1]}), (Vec{0, 2, 2, 2}));  // reversed walk
    Triangulation empty;
    zemath_triangulation_init(&empty);
    EXPECT_EQ(zemath_triangulation_boundary(&empty, &count, bx, by, bz, 0), -1);
    EXPECT_EQ(zemath_triangulation_boundary(nullptr, &count, bx, by, bz, 0), -1);

    // Flatten and rebuild; the rebuilt record evaluates like the original.
    Vec xyz(3 * r.t.nodes);
    std::vector<int> tri(6 * r.t.triangles), edge(3 * r.t.edges), boundary(r.t.boundaryCount);
    ASSERT_TRUE(
        zemath_triangulation_to_array(&r.t, xyz.data(), tri.data(), edge.data(), boundary.data()));
    EXPECT_FALSE(
        zemath_triangulation_to_array(&r.t, xyz.data(), nullptr, edge.data(), boundary.data()));
    EXPECT_FALSE(zemath_triangulation_to_array(&empty, xyz.data(), tri.data(), edge.data(),
                                               boundary.data()));
    Record copy;
    ASSERT_TRUE(zemath_array_to_triangulation(r.t.nodes, xyz.data(), r.t.triangles, tri.data(),
                                              r.t.edges, edge.data(), r.t.boundaryCount,
                                              boundary.data(), &copy.t));
    EXPECT_EQ(copy.t.neighbor, nullptr);
    double a = 0, b = 0;
    ASSERT_TRUE(zemath_Triangulation_value(&r.t, 0.5, 0.25, &a));
    ASSERT_TRUE(zemath_Triangulation_value(&copy.t, 0.5, 0.25, &b));
    EXPECT_EQ(a, b);
    tri[0] = 99;  // out of range: refused, record left empty
    EXPECT_FALSE(zemath_array_to_triangulation(r.t.nodes, xyz.data(), r.t.triangles, tri.data(),
                                               r.t.edges, edge.data(), r.t.boundaryCount,
                                               boundary.data(), &copy.t));
    EXPECT_EQ(copy.t.valid, 0);
    double zq = 0;
    EXPECT_EQ(zemath_tri_contour_interpolate(1, &a, &b, &zq, &copy.t), ZEMATH_ERR_BAD_INTERVAL);
}

TEST(Triangulation, EvaluatorWeights) {
    // One triangle P0 (0,0), P1 (1,0), P2 (0,1) with z 10, 20, 30.
    const double xyz[] = {0, 0, 10, 1, 0, 20, 0, 1, 30};
    const int tri[] = {0, 1, 2, 0, 1, 2};
    const int edge[] = {0, 1, 1, 1, 2, 1, 0, 2, 1};
    const int boundary[] = {0, 1, 2};
    Record r;
    ASSERT_TRUE(zemath_array_to_triangulation(3, xyz, 1, tri, 3, edge, 3, boundary, &r.t));
    struct Case {
        double x, y;
        bool found;
        double rotated;
    };
    // Rotated weights: the value at P0 is z1, at P1 z2, at P2 z0 (kept deliberately).
    const Case cases[] = {{0, 0, true, 20},
                          {1, 0, true, 30},
                          {0, 1, true, 10},
                          {0.5, 0, true, 25},
                          {1.0 / 3, 1.0 / 3, true, 20},
                          {0.7, 0.7, false, 0},
                          {-0.1, 0.5, false, 0}};
    for (const Case& c : cases) {
        double z = -1;
        EXPECT_EQ(zemath_Triangulation_value(&r.t, c.x, c.y, &z), c.found) << c.x << "," << c.y;
        if (c.found) {
            EXPECT_NEAR(z, c.rotated, 1e-12) << c.x << "," << c.y;
        }
    }
    // A zero-area triangle: the undivided weighted sum.
    const double flat[] = {0, 0, 1, 1, 0, 1, 2, 0, 1};
    Record f;
    ASSERT_TRUE(zemath_array_to_triangulation(3, flat, 1, tri, 3, edge, 3, boundary, &f.t));
    double z = 0;
    ASSERT_TRUE(zemath_Triangulation_value(&f.t, 0.5, 0, &z));
    EXPECT_EQ(z, 0.0);  // every cross product vanishes on the line
    EXPECT_FALSE(zemath_Triangulation_value(nullptr, 0, 0, &z));

    // The walking evaluator has true barycentric weights: the same triangle's values.
    const Vec x{0, 1, 0}, y{0, 0, 1}, zz{10, 20, 30};
    Record w;
    ASSERT_EQ(zemath_triangulation(3, x.data(), y.data(), zz.data(), &w.t, 0), 0);
    const Vec qx{0, 1, 0.25, 5, kNaN}, qy{0, 0, 0.25, 5, 0};
    Vec qz(5);
    ASSERT_EQ(zemath_tri_contour_interpolate(5, qx.data(), qy.data(), qz.data(), &w.t), 0);
    EXPECT_NEAR(qz[0], 10, 1e-12);
    EXPECT_NEAR(qz[1], 20, 1e-12);
    EXPECT_NEAR(qz[2], 17.5, 1e-12);
    EXPECT_EQ(qz[3], NANUM);
    EXPECT_EQ(qz[4], NANUM);
    EXPECT_EQ(zemath_tri_contour_interpolate(0, qx.data(), qy.data(), qz.data(), &w.t),
              ZEMATH_ERR_SIZE_BELOW_ONE);
    EXPECT_EQ(zemath_tri_contour_interpolate(1, qx.data(), nullptr, qz.data(), &w.t),
              ZEMATH_ERR_NULL_POINTER);
}

TEST(Triangulation, MissingZRings) {
    Vec x, y, z;
    for (int i = 0; i < 5; ++i)
        for (int j = 0; j < 5; ++j)
            x.push_back(i + 0.01 * j * j), y.push_back(j + 0.013 * i * i), z.push_back(1);
    z[12] = NANUM;  // the centre node
    Record r;
    ASSERT_EQ(zemath_triangulation(25, x.data(), y.data(), z.data(), &r.t,
                                   ZEMATH_TRI_KEEP_MISSING_Z | ZEMATH_TRI_MISSING_Z_PASS),
              0);
    check_invariants(r.t);
    int centre = -1;
    for (int i = 0; i < r.t.nodes; ++i)
        if (r.t.z[i] == NANUM) centre = i;
    ASSERT_GE(centre, 0);
    // Rings: the hull and the link of the centre node; each entry's triangle
    // holds the edge from this ring node to the next and has no missing vertex.
    std::vector<std::vector<int>> rings(1);
    for (int k = 0; k < r.t.holeCount; ++k) {
        if (r.t.holeIndex[k] < 0) {
            EXPECT_EQ(r.t.holeValue[k], NANUM);
            rings.emplace_back();
            continue;
        }
        rings.back().push_back(k);
    }
    rings.pop_back();
    ASSERT_EQ(rings.size(), 2u);
    std::vector<std::size_t> sizes{rings[0].size(), rings[1].size()};
    std::sort(sizes.begin(), sizes.end());
    EXPECT_EQ(sizes[1], static_cast<std::size_t>(r.t.boundaryCount));
    for (const auto& ring : rings)
        for (std::size_t m = 0; m < ring.size(); ++m) {
            const int from = r.t.holeIndex[ring[m]],
                      to = r.t.holeIndex[ring[(m + 1) % ring.size()]];
            const int tri = static_cast<int>(r.t.holeValue[ring[m]]);
            bool holds = false;
            for (int s = 0; s < 3; ++s) {
                EXPECT_NE(r.t.tri[6 * tri + s], centre);
                holds =
                    holds || (r.t.tri[6 * tri + s] == from && r.t.tri[6 * tri + (s + 1) % 3] == to);
            }
            EXPECT_TRUE(holds);
        }
    Record plain;
    ASSERT_EQ(
        zemath_triangulation(25, x.data(), y.data(), z.data(), &plain.t, ZEMATH_TRI_MISSING_Z_PASS),
        0);
    EXPECT_EQ(plain.t.holeCount, 0);  // no missing z kept: nothing to ring
}

TEST(Triangulation, NaturalNeighbourReproducesLinearFields) {
    std::mt19937_64 rng(5);
    std::uniform_real_distribution<double> u(0, 1);
    Vec x, y, z, lin;
    for (int k = 0; k < 400; ++k) {
        x.push_back(u(rng)), y.push_back(u(rng));
        z.push_back(2 * x.back() - 3 * y.back() + 1);
        lin.push_back(std::sin(5 * x.back()) * y.back());
    }
    Vec tx, ty;
    for (int k = 0; k < 300; ++k)
        tx.push_back(1.2 * u(rng) - 0.1), ty.push_back(1.2 * u(rng) - 0.1);
    tx.push_back(x[7]), ty.push_back(y[7]);  // on a data point
    const int m = static_cast<int>(tx.size());
    Vec nn(m), linear(m), curved(m);
    ASSERT_EQ(zemath_tri_natural_neighbor_interpolate(400, x.data(), y.data(), z.data(), m,
                                                      tx.data(), ty.data(), nn.data(), 0),
              0);
    ASSERT_EQ(zemath_tri_linear_interpolate(400, x.data(), y.data(), z.data(), m, tx.data(),
                                            ty.data(), linear.data(), 0),
              0);
    for (int k = 0; k < m; ++k) {
        EXPECT_EQ(nn[k] == NANUM, linear[k] == NANUM) << k;
        if (nn[k] != NANUM) {
            EXPECT_NEAR(nn[k], 2 * tx[k] - 3 * ty[k] + 1, 1e-10) << k;
        }
    }
    ASSERT_EQ(zemath_tri_natural_neighbor_interpolate(400, x.data(), y.data(), lin.data(), m,
                                                      tx.data(), ty.data(), curved.data(), 0),
              0);
    EXPECT_EQ(curved[m - 1], lin[7]);  // exact at the data
    EXPECT_EQ(zemath_tri_natural_neighbor_interpolate(400, x.data(), y.data(), z.data(), 0,
                                                      tx.data(), ty.data(), nn.data(), 0),
              ZEMATH_ERR_SIZE_BELOW_ONE);
    EXPECT_EQ(zemath_tri_linear_interpolate(400, x.data(), nullptr, z.data(), m, tx.data(),
                                            ty.data(), nn.data(), 0),
              ZEMATH_ERR_GENERAL);
}

TEST(Triangulation, Reduce) {
    std::mt19937_64 rng(9);
    std::uniform_real_distribution<double> u(0, 1);
    Vec x, y, bump, plane;
    for (int k = 0; k < 3000; ++k) {
        x.push_back(u(rng)), y.push_back(u(rng));
        bump.push_back(std::exp(
            -20 * ((x.back() - 0.5) * (x.back() - 0.5) + (y.back() - 0.3) * (y.back() - 0.3))));
        plane.push_back(2 * x.back() - 3 * y.back());
    }
    // Worst vertical error of the reduced surface over all data points.
    auto worst = [&](const Triangulation& t) {
        double e = 0;
        Vec z(3000);
        EXPECT_EQ(zemath_tri_contour_interpolate(3000, x.data(), y.data(), z.data(), &t), 0);
        for (int k = 0; k < 3000; ++k)
            e = std::max(e, z[k] == NANUM ? 1e300 : std::fabs(z[k] - bump[k]));
        return e;
    };
    double previous = 1e300;
    for (int target : {30, 120, 480}) {
        Record r;
        ASSERT_EQ(zemath_triangulation_reduce(3000, x.data(), y.data(), bump.data(), &r.t, target),
                  0);
        EXPECT_EQ(r.t.nodes, target);
        check_invariants(r.t);
        const double e = worst(r.t);
        EXPECT_LT(e, previous);  // more nodes, a closer surface; every data point covered
        previous = e;
    }
    EXPECT_LT(previous, 0.1);  // a 480-node surface of the unit bump
    Record flat;  // a plane is reproduced by its hull corners: far fewer nodes than asked
    ASSERT_EQ(zemath_triangulation_reduce(3000, x.data(), y.data(), plane.data(), &flat.t, 500), 0);
    EXPECT_LT(flat.t.nodes, 40);
    const Vec line_x{0, 1, 2, 3}, line_y{0, 1, 2, 3};
    struct Case {
        int n;
        const double* px;
        int option;
    };
    const Case refused[] = {
        {3000, x.data(), 2}, {2, x.data(), 10}, {3000, nullptr, 10}, {4, line_x.data(), 10}};
    for (const Case& c : refused) {
        Record r;
        EXPECT_EQ(zemath_triangulation_reduce(c.n, c.px, c.n == 4 ? line_y.data() : y.data(),
                                              plane.data(), &r.t, c.option),
                  -1);
        EXPECT_EQ(r.t.valid, 0);
    }
}

}  // namespace

namespace {

// The documented listing order rebuilt from the triangle set alone: node by node, around
// each node counter-clockwise from its hull edge (on the hull) or from its neighbour of
// smallest index; edges (i, j > i) and triangles whose lowest vertex is i, met in that
// order (the triangles rotated to start at i). Compares it with the record's lists.
void check_listing_order(const Triangulation& t) {
    std::map<std::pair<int, int>, int> third;  // directed edge (a, b) -> c of triangle (a, b, c)
    std::vector<std::vector<int>> out_of(static_cast<std::size_t>(t.nodes));
    for (int k = 0; k < t.triangles; ++k)
        for (int s = 0; s < 3; ++s) {
            const int a = t.tri[6 * k + s], b = t.tri[6 * k + (s + 1) % 3];
            third[{a, b}] = t.tri[6 * k + (s + 2) % 3];
            out_of[a].push_back(b);
        }
    std::vector<std::array<int, 3>> edges, triangles;
    for (int i = 0; i < t.nodes; ++i) {
        if (out_of[i].empty()) continue;
        int start = -1;  // hull edge (i, b): no triangle on its other side
        for (int b : out_of[i])
            if (!third.count({b, i})) start = b;
        const bool hull = start >= 0;
        if (!hull) start = *std::min_element(out_of[i].begin(), out_of[i].end());
        int b = start;
        for (std::size_t step = 0; step < out_of[i].size(); ++step) {
            const int c = third.at({i, b});
            if (b > i) edges.push_back({i, b, hull && b == start ? 1 : 0});
            if (i < b && i < c) triangles.push_back({i, b, c});
            b = c;  // next counter-clockwise: the triangle across (i, c)
        }
        if (hull && b > i) edges.push_back({i, b, 1});  // the closing hull edge
    }
    ASSERT_EQ(static_cast<int>(edges.size()), t.edges);
    ASSERT_EQ(static_cast<int>(triangles.size()), t.triangles);
    for (int e = 0; e < t.edges; ++e)
        ASSERT_EQ((std::array<int, 3>{t.edge[3 * e], t.edge[3 * e + 1], t.edge[3 * e + 2]}),
                  edges[e])
            << "edge " << e;
    for (int k = 0; k < t.triangles; ++k)
        ASSERT_EQ((std::array<int, 3>{t.tri[6 * k], t.tri[6 * k + 1], t.tri[6 * k + 2]}),
                  triangles[k])
            << "triangle " << k;
}

}  // namespace

TEST(Triangulation, ListingOrder) {
    std::mt19937_64 rng(5);
    std::uniform_real_distribution<double> u(0, 1);
    std::vector<Cloud> clouds = degenerate_clouds();
    Cloud uniform{"uniform 5000", {}, {}};
    for (int k = 0; k < 5000; ++k) uniform.x.push_back(u(rng)), uniform.y.push_back(u(rng));
    clouds.push_back(uniform);
    for (const Cloud& c : clouds) {
        const int n = static_cast<int>(c.x.size());
        const Vec z(c.x.size(), 1.0);
        for (unsigned options : {0u, kEngine}) {
            SCOPED_TRACE(testing::Message() << c.name << " options " << options);
            Record r;
            ASSERT_EQ(zemath_triangulation(n, c.x.data(), c.y.data(), z.data(), &r.t, options), 0);
            check_listing_order(r.t);
        }
    }
}

TEST(Triangulation, NodesInToleranceClusters) {
    // Runs of x values closer than the duplicate tolerance (1e-8 of the range), so that
    // nodes are grouped along x before y decides; with y far apart nothing merges and the
    // nodes must come out in exact (x, y) order. Adding an exact copy of some nodes (same
    // z) goes through the merge and must give the very same record.
    std::mt19937_64 rng(21);
    std::uniform_real_distribution<double> u(0, 1);
    Vec x, y, z;
    for (int k = 0; k < 3000; ++k) {
        const double base = std::floor(u(rng) * 400) / 400;
        x.push_back(base + (k % 4) * 3e-9), y.push_back(u(rng));  // runs chained by 3e-9
        z.push_back(std::sin(5 * x.back()) + y.back());
    }
    x.push_back(-0.0), y.push_back(0.5), z.push_back(2.0);  // -0 beside the 0 run
    Vec x2 = x, y2 = y, z2 = z;
    for (int k = 0; k < 3000; k += 97) x2.push_back(x[k]), y2.push_back(y[k]), z2.push_back(z[k]);
    Record plain, merged;
    ASSERT_EQ(
        zemath_triangulation(static_cast<int>(x.size()), x.data(), y.data(), z.data(), &plain.t, 0),
        0);
    ASSERT_EQ(zemath_triangulation(static_cast<int>(x2.size()), x2.data(), y2.data(), z2.data(),
                                   &merged.t, 0),
              0);
    const Triangulation &a = plain.t, &b = merged.t;
    ASSERT_EQ(a.nodes, static_cast<int>(x.size()));
    for (int i = 1; i < a.nodes; ++i)
        ASSERT_TRUE(a.x[i - 1] < a.x[i] || (a.x[i - 1] == a.x[i] && a.y[i - 1] < a.y[i])) << i;
    check_invariants(a);
    ASSERT_EQ(b.nodes, a.nodes);
    ASSERT_EQ(b.triangles, a.triangles);
    ASSERT_EQ(b.edges, a.edges);
    EXPECT_TRUE(std::equal(a.x, a.x + a.nodes, b.x));
    EXPECT_TRUE(std::equal(a.y, a.y + a.nodes, b.y));
    EXPECT_TRUE(std::equal(a.z, a.z + a.nodes, b.z));
    EXPECT_TRUE(std::equal(a.tri, a.tri + 6 * a.triangles, b.tri));
    EXPECT_TRUE(std::equal(a.edge, a.edge + 3 * a.edges, b.edge));
    EXPECT_TRUE(std::equal(a.neighbor, a.neighbor + 3 * a.triangles, b.neighbor));
}

TEST(Triangulation, EngineNeverPrints) {
    // Inputs the engine refuses or finds degenerate (it reports them on its streams): the
    // builds fall back or fail with their codes, and nothing reaches the process's streams.
    std::vector<Cloud> clouds = degenerate_clouds();
    Cloud flat{"collinear", {}, {}}, same{"one point repeated", {}, {}};
    for (int k = 0; k < 10; ++k) flat.x.push_back(k), flat.y.push_back(2 * k + 1);
    for (int k = 0; k < 10; ++k) same.x.push_back(1), same.y.push_back(1);
    clouds.push_back(flat);
    clouds.push_back(same);
    for (const Cloud& c : clouds) {
        SCOPED_TRACE(c.name);
        const Vec z(c.x.size(), 1.0);
        for (unsigned options : {kEngine, unsigned(ZEMATH_TRI_ENGINE_SCALED)}) {
            Record r;
            testing::internal::CaptureStdout();
            testing::internal::CaptureStderr();
            const int status = zemath_triangulation(static_cast<int>(c.x.size()), c.x.data(),
                                                    c.y.data(), z.data(), &r.t, options);
            const std::string out = testing::internal::GetCapturedStdout();
            const std::string err = testing::internal::GetCapturedStderr();
            EXPECT_EQ(out, "");
            EXPECT_EQ(err, "");
            const int expected = c.x == flat.x   ? ZEMATH_ERR_COLLINEAR
                                 : c.x == same.x ? ZEMATH_ERR_TOO_FEW_CURVES
                                                 : 0;
            EXPECT_EQ(status, expected);
        }
    }
}

namespace {

bool same_bits(const double* a, const double* b, int n) {
    return n == 0 || std::memcmp(a, b, sizeof(double) * static_cast<std::size_t>(n)) == 0;
}

bool same_ints(const int* a, const int* b, std::size_t n) {
    return n == 0 || std::memcmp(a, b, sizeof(int) * n) == 0;
}

}  // namespace

TEST(Triangulation, UnusableEntriesAndSignedZeros) {
    // Entries dropped as unusable (NaN, infinite or NANUM coordinates, NANUM z) must not
    // change the record of the rest: an all-usable input is sorted straight from the
    // caller's arrays, one with dropped entries from a filtered copy, and both must give
    // the same record. The nodes keep the caller's exact values, the sign of a zero
    // coordinate included (x = -0.0 and 0.0 compare equal while sorting).
    std::mt19937_64 rng(23);
    std::uniform_real_distribution<double> u(-1, 1);
    std::vector<Cloud> clouds;
    Cloud zeros{"signed zeros on both axes", {}, {}};
    for (int k = 0; k < 40; ++k) {
        const double s = (k % 2 == 0) ? -0.0 : 0.0;
        zeros.x.push_back(k % 4 < 2 ? s : u(rng)), zeros.y.push_back(k % 4 >= 2 ? s : u(rng));
        zeros.x.push_back(u(rng)), zeros.y.push_back(u(rng));
    }
    clouds.push_back(zeros);
    Cloud column{"a column at x = -0.0 beside one at 0.0", {}, {}};
    for (int k = 0; k < 30; ++k)
        column.x.push_back(k % 2 ? 0.0 : -0.0), column.y.push_back(k + 0.25 * (k % 2)),
            column.x.push_back(1.0 + 1e-3 * u(rng)), column.y.push_back(k + 0.5);
    clouds.push_back(column);
    Cloud scattered{"uniform 3000", {}, {}};
    for (int k = 0; k < 3000; ++k) scattered.x.push_back(u(rng)), scattered.y.push_back(u(rng));
    clouds.push_back(scattered);
    for (const Cloud& c : clouds) {
        SCOPED_TRACE(c.name);
        const int n = static_cast<int>(c.x.size());
        Vec z;
        for (int k = 0; k < n; ++k) z.push_back(k);
        // The same points with an unusable entry after every fifth.
        Vec dx, dy, dz;
        const double bad[][3] = {{kNaN, 0, 1}, {0, kInf, 1}, {NANUM, 0, 1}, {0.5, 0.5, NANUM}};
        for (int k = 0; k < n; ++k) {
            dx.push_back(c.x[k]), dy.push_back(c.y[k]), dz.push_back(z[k]);
            if (k % 5 == 4) {
                const double* b = bad[(k / 5) % 4];
                dx.push_back(b[0]), dy.push_back(b[1]), dz.push_back(b[2]);
            }
        }
        for (unsigned options : {0u, kEngine}) {
            SCOPED_TRACE(testing::Message() << "options " << options);
            Record clean, dirty;
            ASSERT_EQ(zemath_triangulation(n, c.x.data(), c.y.data(), z.data(), &clean.t, options),
                      0);
            ASSERT_EQ(zemath_triangulation(static_cast<int>(dx.size()), dx.data(), dy.data(),
                                           dz.data(), &dirty.t, options),
                      0);
            const Triangulation &a = clean.t, &b = dirty.t;
            ASSERT_EQ(a.nodes, n);
            ASSERT_EQ(b.nodes, a.nodes);
            ASSERT_EQ(b.triangles, a.triangles);
            ASSERT_EQ(b.edges, a.edges);
            ASSERT_EQ(b.boundaryCount, a.boundaryCount);
            EXPECT_TRUE(same_bits(a.x, b.x, a.nodes));
            EXPECT_TRUE(same_bits(a.y, b.y, a.nodes));
            EXPECT_TRUE(same_bits(a.z, b.z, a.nodes));
            EXPECT_TRUE(same_ints(a.tri, b.tri, 6 * static_cast<std::size_t>(a.triangles)));
            EXPECT_TRUE(same_ints(a.edge, b.edge, 3 * static_cast<std::size_t>(a.edges)));
            EXPECT_TRUE(
                same_ints(a.neighbor, b.neighbor, 3 * static_cast<std::size_t>(a.triangles)));
            EXPECT_TRUE(
                same_ints(a.boundary, b.boundary, static_cast<std::size_t>(a.boundaryCount)));
            // Each node is the caller's point of its z (the z values are the indices), bit
            // for bit.
            for (int i = 0; i < a.nodes; ++i) {
                const int k = static_cast<int>(a.z[i]);
                ASSERT_TRUE(k >= 0 && k < n);
                EXPECT_TRUE(same_bits(&a.x[i], &c.x[k], 1) && same_bits(&a.y[i], &c.y[k], 1))
                    << "node " << i << " (point " << k << ")";
            }
            check_invariants(a);
        }
    }
}

// The node array a record takes over: growth keeps the values, a copy is independent of
// its source, release hands over storage holding the values and leaves the array empty
// and reusable.
TEST(Triangulation, NodeArrayKeepsValuesThroughGrowthCopiesAndRelease) {
    for (std::size_t count : {std::size_t{1}, std::size_t{7}, std::size_t{9}, std::size_t{1000}}) {
        zemath::NodeArray a;
        for (std::size_t i = 0; i < count; ++i) a.push_back(0.5 * static_cast<double>(i) - 3.0);
        zemath::NodeArray b = a;
        b[0] = 99.0;
        a.resize(count + 5);  // grows with zeros after the values
        ASSERT_EQ(a.size(), count + 5);
        for (std::size_t i = 0; i < count; ++i) EXPECT_EQ(a[i], 0.5 * static_cast<double>(i) - 3.0);
        for (std::size_t i = count; i < count + 5; ++i) EXPECT_EQ(a[i], 0.0);
        EXPECT_EQ(b.size(), count);
        EXPECT_EQ(b[0], 99.0);
        double* const block = a.release();
        ASSERT_NE(block, nullptr);
        EXPECT_EQ(block[count - 1], 0.5 * static_cast<double>(count - 1) - 3.0);
        zemath::raw_free(block);
        EXPECT_TRUE(a.empty());
        a.assign(b.begin(), b.end());
        EXPECT_TRUE(std::equal(a.begin(), a.end(), b.begin(), b.end()));
    }
}

namespace {
#include "reference/gridding_predicates_ref.inc"

int sign_of(double v) {
    return (v > 0.0) - (v < 0.0);
}

// The predicates' signs are exact: the floating-point filter decides only where its bound
// holds, the adaptive stages behind it only within theirs (underflowed or overflowed
// products, permanents near the filters' cut-offs, coordinates on both sides of the
// ranges the double stages accept, dense curves, grids, ties and one-ulp perturbations).
// Each row is also checked with its points permuted and with x and y swapped, which
// changes the order of the differences and the stage arithmetic but only the sign by the
// permutation's parity (a reflection reverses orientation).
TEST(Predicates, ExactSignsNearTheFilterLimits) {
    for (const auto& r : kPredicateReference) {
        SCOPED_TRACE(testing::Message() << r.ax << " " << r.ay << " " << r.bx << " " << r.by << " "
                                        << r.cx << " " << r.cy << " " << r.dx << " " << r.dy);
        EXPECT_EQ(sign_of(zemath::orient2d(r.ax, r.ay, r.bx, r.by, r.cx, r.cy)), r.orient);
        EXPECT_EQ(sign_of(zemath::orient2d(r.bx, r.by, r.cx, r.cy, r.ax, r.ay)), r.orient);
        EXPECT_EQ(sign_of(zemath::orient2d(r.ay, r.ax, r.by, r.bx, r.cy, r.cx)), -r.orient);
        EXPECT_EQ(sign_of(zemath::incircle(r.ax, r.ay, r.bx, r.by, r.cx, r.cy, r.dx, r.dy)),
                  r.incircle);
        EXPECT_EQ(sign_of(zemath::incircle(r.cx, r.cy, r.ax, r.ay, r.bx, r.by, r.dx, r.dy)),
                  r.incircle);
        EXPECT_EQ(sign_of(zemath::incircle(r.bx, r.by, r.ax, r.ay, r.cx, r.cy, r.dx, r.dy)),
                  -r.incircle);
        EXPECT_EQ(sign_of(zemath::incircle(r.ay, r.ax, r.by, r.bx, r.cy, r.cx, r.dy, r.dx)),
                  -r.incircle);
    }
}

}  // namespace

extern "C" int zemath_qhull_delaunay(int n, double* points, int extra_setting, int* tri,
                                     int capacity, int* count);

namespace {

// Inputs on which the engine's rounded arithmetic is not decisive: ties everywhere
// (cocircular nodes, grids), hulls made of long collinear runs, nodes within rounding of
// a line or on a flat convex curve; and one in general position, where the engine's
// triangles are taken.
std::vector<Cloud> engine_clouds() {
    std::vector<Cloud> clouds = degenerate_clouds();
    std::mt19937_64 rng(31);
    std::uniform_real_distribution<double> u(0, 1);
    std::normal_distribution<double> g(0, 1);
    const double step = 6.283185307179586 / 2500;
    Cloud circle{"2500 on a circle", {}, {}}, centred{"2499 on a circle and its centre", {}, {}};
    for (int k = 0; k < 2500; ++k)
        circle.x.push_back(std::cos(k * step)), circle.y.push_back(std::sin(k * step));
    for (int k = 0; k < 2499; ++k)
        centred.x.push_back(3 + 2 * std::cos(k * step)),
            centred.y.push_back(2 * std::sin(k * step));
    centred.x.push_back(3), centred.y.push_back(0);
    Cloud grid{"grid 50 x 40", {}, {}}, rows{"two rows of 1000, evenly spaced", {}, {}};
    for (int i = 0; i < 50; ++i)
        for (int j = 0; j < 40; ++j) grid.x.push_back(0.5 * i), grid.y.push_back(j);
    for (int k = 0; k < 2000; ++k) rows.x.push_back(k / 2), rows.y.push_back(k % 2);
    Cloud line{"within 1e-14 of a line", {}, {}}, far{"within 1e-8 of a line at 1e9", {}, {}};
    for (int k = 0; k < 3000; ++k) {
        const double t = u(rng);
        line.x.push_back(t), line.y.push_back(0.5 * t + 1e-14 * g(rng));
        far.x.push_back(1e9 + t), far.y.push_back(1e9 + 0.5 * t + 1e-8 * g(rng));
    }
    Cloud flat{"3000 on y = 1e-6 x^2", {}, {}};  // convex, within 1e-6 of a line
    for (int k = 0; k < 3000; ++k) {
        const double t = 2 * u(rng) - 1;
        flat.x.push_back(t), flat.y.push_back(1e-6 * t * t);
    }
    Cloud uniform{"uniform 3000", {}, {}};
    for (int k = 0; k < 3000; ++k) uniform.x.push_back(u(rng)), uniform.y.push_back(u(rng));
    for (Cloud* c : {&circle, &centred, &grid, &rows, &line, &far, &flat, &uniform})
        clouds.push_back(*c);
    return clouds;
}

}  // namespace

TEST(Triangulation, NormalisedNodesThatMeetOnAnAxis) {
    // Divided by the x range (about 425), x = 5e-324 rounds to 0: the node joins the x = 0
    // run below its y neighbour, which the build must order again rather than fail; the
    // engine option gives the same record.
    const Vec x{4.9406564584124654e-324, -424.796875, 0, 0}, y{0.596, -97.96875, 0, 2};
    const Vec z{1, 2, 3, 4};
    Record plain, engine;
    ASSERT_EQ(
        zemath_triangulation(4, x.data(), y.data(), z.data(), &plain.t, ZEMATH_TRI_NORMALISED), 0);
    const Triangulation& a = plain.t;
    ASSERT_EQ(a.nodes, 4);
    EXPECT_EQ(a.triangles, 2);  // one node on a hull side
    check_invariants(a);
    for (int i = 1; i < a.nodes; ++i)
        EXPECT_TRUE(a.x[i - 1] < a.x[i] || (a.x[i - 1] == a.x[i] && a.y[i - 1] < a.y[i])) << i;
    ASSERT_EQ(zemath_triangulation(4, x.data(), y.data(), z.data(), &engine.t,
                                   ZEMATH_TRI_NORMALISED | kEngine),
              0);
    ASSERT_EQ(engine.t.triangles, a.triangles);
    EXPECT_TRUE(same_ints(a.tri, engine.t.tri, 6 * static_cast<std::size_t>(a.triangles)));
}

TEST(Triangulation, EngineBuildGivesTheBuiltInRecord) {
    // The engine's triangles are taken only where they are the unique Delaunay
    // triangulation; on ties and on input the engine cannot decide the built-in method
    // runs. Either way the record is the built-in build's, bit for bit, and valid.
    for (const Cloud& c : engine_clouds()) {
        const int n = static_cast<int>(c.x.size());
        Vec z;
        for (int k = 0; k < n; ++k) z.push_back(std::cos(0.1 * k));
        Record plain;
        ASSERT_EQ(zemath_triangulation(n, c.x.data(), c.y.data(), z.data(), &plain.t, 0), 0)
            << c.name;
        const Triangulation& a = plain.t;
        for (unsigned options : {kEngine, unsigned(ZEMATH_TRI_ENGINE_SCALED)}) {
            SCOPED_TRACE(testing::Message() << c.name << " options " << options);
            Record engine;
            ASSERT_EQ(zemath_triangulation(n, c.x.data(), c.y.data(), z.data(), &engine.t, options),
                      0);
            const Triangulation& b = engine.t;
            ASSERT_EQ(b.nodes, a.nodes);
            ASSERT_EQ(b.triangles, a.triangles);
            ASSERT_EQ(b.edges, a.edges);
            ASSERT_EQ(b.boundaryCount, a.boundaryCount);
            EXPECT_TRUE(same_bits(a.x, b.x, a.nodes) && same_bits(a.y, b.y, a.nodes) &&
                        same_bits(a.z, b.z, a.nodes));
            EXPECT_TRUE(same_ints(a.tri, b.tri, 6 * static_cast<std::size_t>(a.triangles)));
            EXPECT_TRUE(same_ints(a.edge, b.edge, 3 * static_cast<std::size_t>(a.edges)));
            EXPECT_TRUE(
                same_ints(a.neighbor, b.neighbor, 3 * static_cast<std::size_t>(a.triangles)));
            EXPECT_TRUE(
                same_ints(a.boundary, b.boundary, static_cast<std::size_t>(a.boundaryCount)));
            if (std::string(c.name).rfind("coordinates", 0) != 0 &&
                std::string(c.name).rfind("span", 0) != 0) {  // those checked where built
                check_invariants(b);
            }
        }
    }
}

TEST(Triangulation, EngineTrianglesInGeneralPosition) {
    // The engine itself (not the fallback) gives the Delaunay triangles of points in
    // general position, with and without its last-coordinate scaling; a table too small
    // for them is refused.
    std::mt19937_64 rng(37);
    std::uniform_real_distribution<double> u(-1, 1);
    Vec x, y;
    for (int k = 0; k < 2000; ++k) x.push_back(u(rng)), y.push_back(u(rng) * 1e-3 + 5);
    const int n = static_cast<int>(x.size());
    const Vec z(x.size(), 0.0);
    Record r;
    ASSERT_EQ(zemath_triangulation(n, x.data(), y.data(), z.data(), &r.t, 0), 0);
    ASSERT_EQ(r.t.nodes, n);
    const auto expected = triangle_set(r.t);
    for (int scaled : {0, 1}) {
        SCOPED_TRACE(testing::Message() << "scaled " << scaled);
        Vec points;  // the sorted nodes, relative to the first
        for (int i = 0; i < n; ++i)
            points.push_back(r.t.x[i] - r.t.x[0]), points.push_back(r.t.y[i] - r.t.y[0]);
        std::vector<int> tri(3 * (2 * x.size() + 8), -1);
        int count = -1;
        ASSERT_EQ(zemath_qhull_delaunay(n, points.data(), scaled, tri.data(),
                                        static_cast<int>(tri.size() / 3), &count),
                  0);
        ASSERT_EQ(count, r.t.triangles);
        std::set<std::array<int, 3>> got;
        for (int t = 0; t < count; ++t) {
            std::array<int, 3> v{tri[3 * t], tri[3 * t + 1], tri[3 * t + 2]};
            std::sort(v.begin(), v.end());
            got.insert(v);
        }
        EXPECT_EQ(got, expected);
        const int small = r.t.triangles - 1;  // one short: refused, nothing past the table
        std::vector<int> short_tri(3 * static_cast<std::size_t>(small) + 3, -7);
        for (int i = 0; i < n; ++i)
            points[2 * i] = r.t.x[i] - r.t.x[0], points[2 * i + 1] = r.t.y[i] - r.t.y[0];
        EXPECT_EQ(zemath_qhull_delaunay(n, points.data(), scaled, short_tri.data(), small, &count),
                  -1);
        EXPECT_LE(count, small);
        EXPECT_EQ(short_tri[3 * static_cast<std::size_t>(small)], -7);
    }
}

namespace {

#include "reference/gridding_convex_ref.inc"

// Points in convex position and along convex curves, which the x-order sweep met with
// O(n^2) flips: circles (every point cocircular up to rounding, exact ties among
// mirrored points), and a grid whose columns are tall enough for the sweep to give way
// to the randomised build, so its ties are decided there.
std::vector<Cloud> convex_tie_clouds() {
    std::vector<Cloud> clouds;
    const double step = 6.283185307179586 / 2000;
    Cloud circle{"2000 on a circle", {}, {}}, half{"2000 on a half circle", {}, {}};
    for (int k = 0; k < 2000; ++k) {
        circle.x.push_back(std::cos(k * step)), circle.y.push_back(std::sin(k * step));
        half.x.push_back(std::cos(k * step / 2)), half.y.push_back(std::sin(k * step / 2));
    }
    // Mirror images of one quadrant: the four images of a point are exactly cocircular.
    Cloud mirrored{"1600 mirrored on a circle", {}, {}};
    for (int k = 1; k <= 400; ++k) {
        const double a = std::cos(k * step * 0.9), b = std::sin(k * step * 0.9);
        for (double sx : {-1.0, 1.0})
            for (double sy : {-1.0, 1.0})
                mirrored.x.push_back(sx * a), mirrored.y.push_back(sy * b);
    }
    Cloud tall{"grid of 3 columns of 4000", {}, {}};
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 4000; ++j) tall.x.push_back(i), tall.y.push_back(j);
    for (Cloud* c : {&circle, &half, &mirrored, &tall}) clouds.push_back(*c);
    return clouds;
}

bool same_record(const Triangulation& a, const Triangulation& b) {
    return a.nodes == b.nodes && a.triangles == b.triangles && a.edges == b.edges &&
           a.boundaryCount == b.boundaryCount &&
           same_ints(a.tri, b.tri, 6 * static_cast<std::size_t>(a.triangles)) &&
           same_ints(a.edge, b.edge, 3 * static_cast<std::size_t>(a.edges)) &&
           same_ints(a.neighbor, b.neighbor, 3 * static_cast<std::size_t>(a.triangles)) &&
           same_ints(a.boundary, b.boundary, static_cast<std::size_t>(a.boundaryCount));
}

}  // namespace

TEST(Triangulation, ConvexPositionMatchesReference) {
    // Every node a hull vertex (or on a collinear hull run): the Delaunay triangles of the
    // reference, with exact duplicates of every seventh node merged first.
    for (const auto& ref : kConvexReference) {
        const int n = static_cast<int>(ref.x.size());
        std::set<std::array<int, 3>> expected;
        for (std::size_t k = 0; k < ref.tri.size(); k += 3)
            expected.insert({ref.tri[k], ref.tri[k + 1], ref.tri[k + 2]});
        Vec x(ref.x.rbegin(), ref.x.rend()), y(ref.y.rbegin(), ref.y.rend());
        for (int i = 0; i < n; i += 7) x.push_back(ref.x[i]), y.push_back(ref.y[i]);
        const Vec z(x.size(), 1.0);
        for (unsigned options : {0u, kEngine}) {
            SCOPED_TRACE(testing::Message() << ref.name << " options " << options);
            Record r;
            ASSERT_EQ(zemath_triangulation(static_cast<int>(x.size()), x.data(), y.data(), z.data(),
                                           &r.t, options),
                      0);
            ASSERT_EQ(r.t.nodes, n);
            ASSERT_TRUE(same_bits(r.t.x, ref.x.data(), n) && same_bits(r.t.y, ref.y.data(), n));
            EXPECT_EQ(triangle_set(r.t), expected);
            check_invariants(r.t);
            check_listing_order(r.t);
        }
    }
}

TEST(Triangulation, ConvexPositionWithTies) {
    // Ties make the Delaunay triangulation ambiguous, so no reference set: a valid
    // record (empty circles in exact arithmetic, Euler's count from the hull), the
    // documented listing order, the same record again and through the engine option.
    for (const Cloud& c : convex_tie_clouds()) {
        SCOPED_TRACE(c.name);
        const int n = static_cast<int>(c.x.size());
        const Vec z(c.x.size(), 0.5);
        Record first, again, engine;
        ASSERT_EQ(zemath_triangulation(n, c.x.data(), c.y.data(), z.data(), &first.t, 0), 0);
        ASSERT_EQ(first.t.nodes, n);
        check_invariants(first.t);
        check_listing_order(first.t);
        ASSERT_EQ(zemath_triangulation(n, c.x.data(), c.y.data(), z.data(), &again.t, 0), 0);
        EXPECT_TRUE(same_record(first.t, again.t));
        ASSERT_EQ(zemath_triangulation(n, c.x.data(), c.y.data(), z.data(), &engine.t, kEngine), 0);
        EXPECT_TRUE(same_record(first.t, engine.t));
    }
    // The tall grid: every cell split into two triangles of area 1/2.
    const Cloud tall = convex_tie_clouds().back();
    const Vec z(tall.x.size(), 0.0);
    Record r;
    ASSERT_EQ(zemath_triangulation(static_cast<int>(tall.x.size()), tall.x.data(), tall.y.data(),
                                   z.data(), &r.t, 0),
              0);
    EXPECT_EQ(r.t.triangles, 2 * 2 * 3999);
    EXPECT_EQ(r.t.boundaryCount, 2 * 3 + 2 * 3998);
    for (int k = 0; k < r.t.triangles; ++k) {
        const int* v = r.t.tri + 6 * k;
        EXPECT_EQ((r.t.x[v[1]] - r.t.x[v[0]]) * (r.t.y[v[2]] - r.t.y[v[0]]) -
                      (r.t.y[v[1]] - r.t.y[v[0]]) * (r.t.x[v[2]] - r.t.x[v[0]]),
                  1.0)
            << k;
    }
}
