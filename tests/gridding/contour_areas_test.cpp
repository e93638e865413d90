// Supplementary areas: open level lines closed along the triangulation's boundary into
// rings around the area above the level. Fields that are linear on each triangle of a
// grid mesh, so the areas above a level are rectangles known in closed form; refused
// calls leave the output record as it was.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

#include "zemath/status.h"
#include "zemath/triangulation.h"

namespace {

using Vec = std::vector<double>;

// Grid mesh over xs by ys (node (i, j) at (xs[j], ys[i])) with z = f(x, y).
template <class F>
void grid_mesh(const Vec& xs, const Vec& ys, F f, Triangulation& t) {
    Vec x, y, z;
    for (double yv : ys)
        for (double xv : xs) x.push_back(xv), y.push_back(yv), z.push_back(f(xv, yv));
    zemath_triangulation_init(&t);
    ASSERT_EQ(
        zemath_construct_triangulation(static_cast<int>(ys.size()), static_cast<int>(xs.size()),
                                       x.data(), y.data(), z.data(), &t, 0),
        0);
}

Vec steps(double from, double to, int n) {
    Vec v;
    for (int k = 0; k < n; ++k) v.push_back(from + (to - from) * k / (n - 1));
    return v;
}

double shoelace(const TriContourLine& line) {
    double s = 0.0;
    for (int k = 0; k < line.count; ++k) {
        const int l = (k + 1) % line.count;
        s += line.x[k] * line.y[l] - line.x[l] * line.y[k];
    }
    return 0.5 * s;
}

// Caller-owned contour input: one level of polylines.
struct Input {
    std::vector<Vec> xs, ys;
    std::vector<TriContourLine> lines;
    TriContourLevel level{};
    TriContour contour{};
    Input(double value, std::vector<std::pair<Vec, Vec>> polylines, int closed = 0) {
        for (auto& p : polylines) xs.push_back(p.first), ys.push_back(p.second);
        for (std::size_t k = 0; k < xs.size(); ++k)
            lines.push_back({static_cast<int>(xs[k].size()), closed, xs[k].data(), ys[k].data()});
        level = {value, static_cast<int>(lines.size()), lines.data()};
        contour = {1, &level};
    }
};

struct Output {
    TriContour c;
    Output() { zemath_tri_contour_init(&c); }
    ~Output() { zemath_tri_contour_free(&c); }
};

constexpr unsigned kAbove = ZEMATH_TRI_AREA_ABOVE;

TEST(SupplementaryArea, PlanarFieldGivesTheRectangleAboveTheLevel) {
    struct Case {
        int side;
        double level;
        bool reversed_line, reversed_boundary;
    };
    const Case cases[] = {{2, 0.5, false, false}, {2, 0.5, true, false}, {5, 0.25, false, false},
                          {5, 0.8, true, false},  {5, 0.6, false, true}, {9, 0.1, true, true}};
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message() << c.side << " " << c.level);
        Triangulation t;
        grid_mesh(
            steps(0, 1, c.side), steps(0, 1, c.side), [](double x, double) { return x; }, t);
        if (c.reversed_boundary) {  // a record whose boundary runs clockwise
            for (int i = 0, j = t.boundaryCount - 1; i < j; ++i, --j)
                std::swap(t.boundary[i], t.boundary[j]);
        }
        Vec lx{c.level, c.level, c.level}, ly{0.0, 0.5, 1.0};
        if (c.reversed_line) std::swap(ly[0], ly[2]);
        Input in(c.level, {{lx, ly}});
        Output out;
        ASSERT_EQ(zemath_triangulation_supplementary_area(&t, &in.contour, &out.c, kAbove), 0);
        ASSERT_EQ(out.c.levelCount, 1);
        EXPECT_EQ(out.c.levels[0].level, c.level);
        ASSERT_EQ(out.c.levels[0].lineCount, 1);
        const TriContourLine& ring = out.c.levels[0].line[0];
        EXPECT_EQ(ring.closed, 1);
        EXPECT_NEAR(shoelace(ring), 1.0 - c.level, 1e-14);  // counter-clockwise, x >= level
        for (int k = 0; k < ring.count; ++k) EXPECT_GE(ring.x[k], c.level);
        zemath_triangulation_free(&t);
    }
}

TEST(SupplementaryArea, TwoBumpsGiveTwoRings) {
    // z = 1 - |x - 1| on [0, 2], 1 - |x - 3| on [2, 4]: above level L are the strips
    // L < x < 2 - L and 2 + L < x < 4 - L, each of area 2 - 2L over 0 <= y <= 1.
    auto bumps = [](double x, double) {
        return x <= 2 ? 1 - std::fabs(x - 1) : 1 - std::fabs(x - 3);
    };
    for (double level : {0.25, 0.5, 0.75}) {
        SCOPED_TRACE(level);
        Triangulation t;
        grid_mesh(steps(0, 4, 9), steps(0, 1, 3), bumps, t);
        const Vec up{0, 1}, down{1, 0};
        auto at = [](double x) { return Vec{x, x}; };
        Input in(
            level,
            {{at(level), up}, {at(4 - level), up}, {at(2 - level), down}, {at(2 + level), up}});
        Output out;
        ASSERT_EQ(zemath_triangulation_supplementary_area(&t, &in.contour, &out.c, kAbove), 0);
        ASSERT_EQ(out.c.levels[0].lineCount, 2);
        double centres[2];
        for (int r = 0; r < 2; ++r) {
            const TriContourLine& ring = out.c.levels[0].line[r];
            EXPECT_NEAR(shoelace(ring), 2 - 2 * level, 1e-14);
            double sum = 0;
            for (int k = 0; k < ring.count; ++k) sum += ring.x[k];
            centres[r] = sum / ring.count;
        }
        // One ring around each bump.
        EXPECT_NEAR(std::fmin(centres[0], centres[1]), 1.0, 0.5);
        EXPECT_NEAR(std::fmax(centres[0], centres[1]), 3.0, 0.5);
        zemath_triangulation_free(&t);
    }
}

TEST(SupplementaryArea, LevelsWithoutOpenLines) {
    Triangulation t;
    grid_mesh(
        steps(0, 2, 3), steps(0, 1, 3), [](double x, double y) { return 10 + x + y; }, t);
    // A closed line is copied; the boundary, wholly above 5, becomes a ring of area 2;
    // at 20 nothing is above.
    Input closed(5.0, {{Vec{0.5, 1.0, 0.5}, Vec{0.2, 0.2, 0.6}}}, 1);
    Input none(20.0, {});
    Output out;
    ASSERT_EQ(zemath_triangulation_supplementary_area(&t, &closed.contour, &out.c, kAbove), 0);
    ASSERT_EQ(out.c.levels[0].lineCount, 2);
    EXPECT_EQ(Vec(out.c.levels[0].line[0].x, out.c.levels[0].line[0].x + 3), closed.xs[0]);
    EXPECT_NEAR(shoelace(out.c.levels[0].line[1]), 2.0, 1e-15);
    ASSERT_EQ(zemath_triangulation_supplementary_area(&t, &none.contour, &out.c, kAbove), 0);
    EXPECT_EQ(out.c.levelCount, 1);
    EXPECT_EQ(out.c.levels[0].lineCount, 0);
    // The output may be passed back as the input: its closed lines are copied, and the
    // boundary, still above, is added once more.
    ASSERT_EQ(zemath_triangulation_supplementary_area(&t, &closed.contour, &out.c, kAbove), 0);
    ASSERT_EQ(zemath_triangulation_supplementary_area(&t, &out.c, &out.c, kAbove), 0);
    ASSERT_EQ(out.c.levels[0].lineCount, 3);
    EXPECT_EQ(Vec(out.c.levels[0].line[0].y, out.c.levels[0].line[0].y + 3), closed.ys[0]);
    EXPECT_NEAR(shoelace(out.c.levels[0].line[1]), 2.0, 1e-15);
    EXPECT_NEAR(shoelace(out.c.levels[0].line[2]), 2.0, 1e-15);
    zemath_triangulation_free(&t);
}

TEST(SupplementaryArea, RefusalsLeaveTheOutputAsItWas) {
    Triangulation t, empty;
    grid_mesh(
        steps(0, 1, 5), steps(0, 1, 5), [](double x, double) { return x; }, t);
    zemath_triangulation_init(&empty);
    const double nan = std::numeric_limits<double>::quiet_NaN();
    Input good(0.5, {{Vec{0.5, 0.5}, Vec{0, 1}}});
    Input off(0.5, {{Vec{0.5, 0.5}, Vec{0.2, 1}}});  // an end inside the mesh
    Input crossing(0.5, {{Vec{0.5, 0.5}, Vec{0, 1}}, {Vec{0.75, 0.75}, Vec{0, 1}}});
    Input single(0.5, {{Vec{0.5}, Vec{0}}});
    Input nan_point(0.5, {{Vec{0.5, nan}, Vec{0, 1}}});
    Input nan_level(nan, {{Vec{0.5, 0.5}, Vec{0, 1}}});
    Input negative = good, null_levels = good;
    negative.contour = {-1, &negative.level};
    null_levels.contour = {1, nullptr};
    Output out;
    ASSERT_EQ(zemath_triangulation_supplementary_area(&t, &good.contour, &out.c, kAbove), 0);
    const TriContour before = out.c;
    const double area = shoelace(out.c.levels[0].line[0]);
    const struct {
        const char* what;
        int status;
    } rows[] = {
        {"null record",
         zemath_triangulation_supplementary_area(nullptr, &good.contour, &out.c, kAbove)},
        {"null contour", zemath_triangulation_supplementary_area(&t, nullptr, &out.c, kAbove)},
        {"null output",
         zemath_triangulation_supplementary_area(&t, &good.contour, nullptr, kAbove)},
        {"record not valid",
         zemath_triangulation_supplementary_area(&empty, &good.contour, &out.c, kAbove)},
        {"option missing",
         zemath_triangulation_supplementary_area(&t, &good.contour, &out.c, 0x80000)},
        {"end off the boundary",
         zemath_triangulation_supplementary_area(&t, &off.contour, &out.c, kAbove)},
        {"arcs not alternating",
         zemath_triangulation_supplementary_area(&t, &crossing.contour, &out.c, kAbove)},
        {"one-point line",
         zemath_triangulation_supplementary_area(&t, &single.contour, &out.c, kAbove)},
        {"NaN point",
         zemath_triangulation_supplementary_area(&t, &nan_point.contour, &out.c, kAbove)},
        {"NaN level",
         zemath_triangulation_supplementary_area(&t, &nan_level.contour, &out.c, kAbove)},
        {"negative count",
         zemath_triangulation_supplementary_area(&t, &negative.contour, &out.c, kAbove)},
        {"null levels",
         zemath_triangulation_supplementary_area(&t, &null_levels.contour, &out.c, kAbove)},
    };
    const int expected[] = {-1, -1, -1, -1, -2, -1, -1, -1, -1, -1, -1, -1};
    for (std::size_t k = 0; k < std::size(rows); ++k) {
        EXPECT_EQ(rows[k].status, expected[k]) << rows[k].what;
    }
    EXPECT_EQ(out.c.levels, before.levels);
    EXPECT_EQ(out.c.levelCount, 1);
    EXPECT_EQ(shoelace(out.c.levels[0].line[0]), area);
    zemath_triangulation_free(&t);
}

}  // namespace
