// 1-D interpolation against SciPy's interpolators and numpy.interp (tests/reference/
// gen_interpolation.py) for every method and outside policy, the located-by-sweep and
// located-by-bisection paths against each other, missing values, and one table of
// refused calls that must leave the output untouched.
#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cstdio>
#include <cmath>
#include <limits>
#include <numeric>
#include <random>
#include <vector>

#include "gridding/interpolate.hpp"
#include "zemath/interpolation.h"

namespace {

struct InterpReference {
    std::vector<double> x, y, targets;
    std::vector<double> extrapolated[6];
    std::vector<double> held;
};
#include "reference/interpolation_ref.inc"

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kTolerance = 1e-12;  // relative, or absolute below 1

std::vector<double> run(const std::vector<double>& x, const std::vector<double>& y,
                        const std::vector<double>& t, int method, int outside) {
    std::vector<double> out(t.size(), 777.0);
    EXPECT_EQ(zemath_interpolate(x.data(), y.data(), static_cast<int>(x.size()), t.data(),
                                 static_cast<int>(t.size()), out.data(), method, outside),
              0);
    return out;
}

TEST(Interpolation, MatchesScipy) {
    double worst[6] = {0, 0, 0, 0, 0, 0};
    for (const InterpReference& r : kInterpReference) {
        SCOPED_TRACE(r.x.size());
        const double lo = r.x.front(), hi = r.x.back();
        for (int method = 0; method < 6; ++method) {
            const std::vector<double> ext = run(r.x, r.y, r.targets, method, 1);
            const std::vector<double> missing = run(r.x, r.y, r.targets, method, 0);
            const std::vector<double> held = run(r.x, r.y, r.targets, method, 2);
            for (std::size_t k = 0; k < r.targets.size(); ++k) {
                const double t = r.targets[k], want = r.extrapolated[method][k];
                const double error = std::fabs(ext[k] - want) / std::max(1.0, std::fabs(want));
                worst[method] = std::max(worst[method], error);
                EXPECT_LE(error, kTolerance) << "method " << method << " at " << t;
                const bool inside = t >= lo && t <= hi;
                EXPECT_EQ(missing[k], inside ? ext[k] : NANUM);
                EXPECT_EQ(held[k], inside ? ext[k] : (t < lo ? r.y.front() : r.y.back()));
                if (method == 0) {  // ends held: numpy.interp
                    EXPECT_NEAR(held[k], r.held[k],
                                kTolerance * std::max(1.0, std::fabs(r.held[k])));
                }
            }
        }
    }
    for (int method = 0; method < 6; ++method)
        std::printf("  worst relative error, method %d: %.2e\n", method, worst[method]);
}

TEST(Interpolation, SweepAndBisectionAgree) {
    // Sorted targets take the galloping sweep, shuffled ones the bisection: same answers.
    std::mt19937_64 gen(7);
    std::uniform_real_distribution<double> step(0.01, 1.0), value(-5, 5);
    std::vector<double> x(2000), y(2000), t(20000);
    double acc = 0;
    for (std::size_t i = 0; i < x.size(); ++i) x[i] = acc += step(gen), y[i] = value(gen);
    std::uniform_real_distribution<double> where(x.front() - 5, x.back() + 5);
    for (double& v : t) v = where(gen);
    std::vector<double> sparse(t.begin(), t.begin() + 40);  // gallops over many nodes
    for (auto* targets : {&t, &sparse}) {
        std::vector<double> sorted = *targets;
        std::sort(sorted.begin(), sorted.end());
        for (int method = 0; method < 6; ++method) {
            const std::vector<double> a = run(x, y, sorted, method, 1);
            const std::vector<double> b = run(x, y, *targets, method, 1);
            for (std::size_t k = 0; k < targets->size(); ++k) {
                const auto at = std::lower_bound(sorted.begin(), sorted.end(), (*targets)[k]);
                EXPECT_EQ(b[k], a[at - sorted.begin()]) << method;
            }
        }
    }
}

TEST(Interpolation, NotAKnotReproducesCubics) {
    // A cubic polynomial is its own not-a-knot spline (and its own extrapolation).
    const auto cubic = [](double v) { return 2 - v + 0.5 * v * v - 0.25 * v * v * v; };
    const std::vector<double> x{-2, -1.5, 0, 0.3, 1.7, 2.2, 4};
    std::vector<double> y(x.size()), t{-3, -1.9, 0.1, 1, 2, 3.9, 5};
    std::transform(x.begin(), x.end(), y.begin(), cubic);
    const std::vector<double> out = run(x, y, t, ZEMATH_INTERP_SPLINE_NOT_A_KNOT, 1);
    for (std::size_t k = 0; k < t.size(); ++k) EXPECT_NEAR(out[k], cubic(t[k]), 1e-12 * 50);
}

TEST(Interpolation, MissingValuesAndAliasing) {
    const std::vector<double> x{0, 1, NANUM, 3, 4}, y{0, 2, 9, NANUM, 4};
    const std::vector<double> xs{0, 1, 4}, ys{0, 2, 4};
    const std::vector<double> t{0.5, NANUM, kNaN, 2.5, 3.5};
    for (int method = 0; method < 6; ++method) {
        const std::vector<double> with_missing = run(x, y, t, method, 0);
        const std::vector<double> clean = run(xs, ys, t, method, 0);
        EXPECT_EQ(with_missing, clean);  // points with a NANUM coordinate are skipped
        EXPECT_EQ(clean[1], NANUM);
        EXPECT_EQ(clean[2], NANUM);
        std::vector<double> in_place = t;  // ynew may be xnew
        ASSERT_EQ(zemath_interpolate(xs.data(), ys.data(), 3, in_place.data(), 5, in_place.data(),
                                     method, 0),
                  0);
        EXPECT_EQ(in_place, clean);
    }
    // A NaN value is not missing: linear keeps it to its own intervals.
    const std::vector<double> yn{0, kNaN, 2, 3, 4}, xn{0, 1, 2, 3, 4};
    const std::vector<double> lin = run(xn, yn, {0.5, 2.5}, 0, 0);
    EXPECT_TRUE(std::isnan(lin[0]));
    EXPECT_EQ(lin[1], 2.5);
}

TEST(Interpolation, RefusedCallsWriteNothing) {
    const double x[] = {0, 1, 2, 3}, y[] = {1, 2, 0, 1}, t[] = {0.5, 1.5};
    const double dup[] = {0, 1, 1, 3}, down[] = {3, 2, 1, 0}, nanx[] = {0, kNaN, 2, 3};
    const double all_missing[] = {NANUM, NANUM, 5, NANUM};
    const struct {
        const double *x, *y, *t;
        int n, nnew, method, outside, status;
        bool null_out;
    } cases[] = {
        {nullptr, y, t, 4, 2, 0, 0, -11, false},     {x, nullptr, t, 4, 2, 0, 0, -11, false},
        {x, y, nullptr, 4, 2, 0, 0, -11, false},     {x, y, t, 4, 2, 0, 0, -11, true},
        {x, y, t, 1, 2, 0, 0, -18, false},           {x, y, t, INT_MIN, 2, 0, 0, -18, false},
        {x, y, t, 4, -1, 0, 0, -18, false},          {x, y, t, 4, 2, 6, 0, -10, false},
        {x, y, t, 4, 2, -1, 0, -10, false},          {x, y, t, 4, 2, 0, 3, -10, false},
        {x, all_missing, t, 4, 2, 1, 0, -18, false}, {dup, y, t, 4, 2, 1, 0, -17, false},
        {down, y, t, 4, 2, 0, 0, -17, false},        {nanx, y, t, 4, 2, 4, 1, -17, false},
    };
    for (const auto& c : cases) {
        double out[2] = {777, 777};
        EXPECT_EQ(zemath_interpolate(c.x, c.y, c.n, c.t, c.nnew, c.null_out ? nullptr : out,
                                     c.method, c.outside),
                  c.status);
        EXPECT_EQ(out[0], 777);
        EXPECT_EQ(out[1], 777);
    }
    double out = 777;
    EXPECT_EQ(zemath_interpolate(x, y, 4, t, 0, &out, 2, 0), 0);  // nothing to do
    EXPECT_EQ(out, 777);
}

}  // namespace
