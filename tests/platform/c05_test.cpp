// The real Lambert W function: w e^w = x holds to a few ulps at every double of dense
// sweeps over both branches and both argument forms, near the branch point, near 0 and
// across the band where the root finder's last steps work at the rounding level.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>

#include "platform/nag/c05.hpp"
#include "reference/lambert_pieces_ref.inc"

namespace {

using zemath::nag::c05bac;
using zemath::nag::NagError;

constexpr long double kE = 2.718281828459045235360287471352662498L;
constexpr double kUlpsAllowed = 4.0;

double ulp(double v) {
    const double a = std::fabs(v);
    return std::nextafter(a, std::numeric_limits<double>::infinity()) - a;
}

// g(u) = (u - 1) e^u + 1 in extended precision, accurate also near u = 0.
long double g_offset(long double u) {
    if (std::fabs(u) < 0.5L) {
        long double term = u, sum = 0.0L;
        for (int n = 2; n < 60; ++n) {
            term *= u / n;
            sum += (n - 1) * term;
        }
        return sum;
    }
    return (u - 1.0L) * std::exp(u) + 1.0L;
}

// How far W misses its equation, in units of what one rounding of x (or dx) and one
// ulp of W can explain (to second order, for W = -1 + tiny, where one ulp of W is
// already a large change of x). The offset form is checked as g(W + 1) = e dx, where the
// distance from the branch point keeps its own relative accuracy.
double residual_in_ulps(double x, int branch, bool offset) {
    NagError fail;
    const double w = c05bac(x, branch, offset, &fail);
    if (fail.failed()) return std::numeric_limits<double>::infinity();
    const long double lw = w;
    const long double slope = std::fabs((1.0L + lw) * std::exp(lw));  // d(w e^w)/dw
    if (offset) {
        const long double u = lw + 1.0L;
        const long double r = g_offset(u) - kE * x;
        const long double scale =
            kE * ulp(x) + kE * (slope * ulp(w) + static_cast<long double>(ulp(w)) * ulp(w));
        return static_cast<double>(std::fabs(r) / scale);
    }
    const long double r = lw * std::exp(lw) - x;
    const long double scale = ulp(x) + slope * ulp(w) + static_cast<long double>(ulp(w)) * ulp(w);
    return static_cast<double>(std::fabs(r) / scale);
}

struct Sweep {
    const char* what;
    double start;  // first argument
    double end;    // last argument (inclusive when reached)
    long count;    // evenly spaced points; 0 means every double from start on, `end` of them
};

void check_sweep(const Sweep& s, int branch, bool offset) {
    double worst = 0.0, worst_x = s.start;
    long failures = 0;
    auto visit = [&](double x) {
        const double r = residual_in_ulps(x, branch, offset);
        if (!(r <= kUlpsAllowed)) ++failures;
        if (!(r <= worst)) worst = r, worst_x = x;
    };
    if (s.count == 0) {
        double x = s.start;
        for (long i = 0; i < static_cast<long>(s.end); ++i, x = std::nextafter(x, 1e300)) visit(x);
    } else {
        // Geometric spacing over ranges of many decades, even spacing otherwise.
        const bool geometric = s.start > 0.0 && s.end / s.start > 1e3;
        for (long i = 0; i < s.count; ++i) {
            const double f = static_cast<double>(i) / static_cast<double>(s.count - 1);
            visit(i == s.count - 1 ? s.end
                  : geometric      ? s.start * std::pow(s.end / s.start, f)
                                   : s.start + (s.end - s.start) * f);
        }
    }
    EXPECT_EQ(failures, 0) << s.what << " branch " << branch << (offset ? " offset" : "")
                           << ": worst " << worst << " ulps at " << worst_x;
}

constexpr double kBranchPoint = -0.36787944117144233;  // the double nearest -1/e

TEST(LambertW, BothBranchesMeetTheirEquationOverDenseSweeps) {
    // {what, start, end, count}: offset forms take dx, direct forms x.
    const Sweep offset_sweeps[] = {
        {"band of dx", 0.002, 0.19, 400000},
        {"doubles from 0.12887284", 0.12887284, 200000, 0},
        {"doubles from 0.093", 0.093, 100000, 0},
        {"doubles from 0.006", 0.006, 100000, 0},
        {"tiny dx", 1e-300, 1e-290, 20000},
        {"doubles from 1e-12", 1e-12, 50000, 0},
        {"around the series limit", 1.7e-9, 2.0e-9, 50000},
        {"around the switch of g's two forms", 4.4e-4, 4.8e-4, 100000},
        {"moderate dx", 0.19, 0.3678, 100000},
    };
    for (int branch : {0, -1})
        for (const Sweep& s : offset_sweeps) check_sweep(s, branch, true);
    const Sweep principal_offset_far[] = {{"large dx", 0.37, 1e6, 100000},
                                          {"huge dx", 1e6, 1e300, 10000}};
    for (const Sweep& s : principal_offset_far) check_sweep(s, 0, true);

    const Sweep direct_sweeps[] = {
        {"doubles from the branch point", kBranchPoint, 200000, 0},
        {"band of x", kBranchPoint + 0.002, kBranchPoint + 0.19, 400000},
        {"doubles from -0.2389", -0.2389, 100000, 0},
        {"doubles from -0.2 (the zone's edge)", -0.2, 50000, 0},
        {"doubles from -0.1 and -0.08 (where polishing ends)", -0.1, 50000, 0},
        {"doubles from -0.08", -0.08, 50000, 0},
        {"up to 0", -0.18, -1e-300, 200000},
        {"doubles just below 0", -1e-300, 20000, 0},
        {"largest subnormals", -2.2250738585072014e-308, 20000, 0},
        {"smallest subnormals", -19999 * 4.9406564584124654e-324, 19999, 0},
    };
    for (int branch : {0, -1})
        for (const Sweep& s : direct_sweeps) check_sweep(s, branch, false);
    const Sweep principal_direct[] = {{"doubles from 0", 0.0, 20000, 0},
                                      {"around 0", -1e-3, 1e-3, 100000},
                                      {"positive", 1e-3, 1e3, 100000},
                                      {"large", 1e3, 1.7e308, 20000}};
    for (const Sweep& s : principal_direct) check_sweep(s, 0, false);
}

// Every double within 3000 of each edge where the evaluation changes piece: the binade edges
// 2^k of x and their middles, the edges of the pieces in ln|x| (x = e^(2^k), -e^(-2^k)), and the
// switch to the branch-point method (x = -1/4, offset 0.118).
TEST(LambertW, EveryDoubleAroundThePieceEdges) {
    constexpr long kEach = 3000;
    auto sweep_around = [&](double edge, int branch, bool offset) {
        double start = edge;
        for (long i = 0; i < kEach; ++i) start = std::nextafter(start, -1e300);
        check_sweep({"around a piece edge", start, 2.0 * kEach, 0}, branch, offset);
    };
    for (int k = -4; k <= 20; ++k) sweep_around(std::ldexp(1.0, k), 0, false);
    for (int k = -4; k <= 19; ++k) sweep_around(std::ldexp(1.5, k), 0, false);  // the halves
    for (int k = 3; k <= 9; ++k) sweep_around(std::exp(std::ldexp(1.0, k)), 0, false);
    for (int k = -4; k <= -2; ++k) sweep_around(-std::ldexp(1.0, k), 0, false);
    for (int k = -2; k >= -30; --k) sweep_around(-std::ldexp(1.0, k), -1, false);
    sweep_around(-0.1875, -1, false);  // the halves of [-1/4, -1/8]
    for (int k = 4; k <= 9; ++k) sweep_around(-std::exp(-std::ldexp(1.0, k)), -1, false);
    for (int branch : {0, -1}) sweep_around(0.118, branch, true);
}

// Against mpmath at 50 digits on both sides of the same edges, at the middle of pieces and at
// the extremes (tests/reference/gen_lambert_pieces.py).
TEST(LambertW, PieceEdgesAgainstReference) {
    for (const auto& r : ref_lambert::kPieceEdges) {
        NagError fail;
        const double w = c05bac(r.x, r.branch, r.offset != 0, &fail);
        ASSERT_FALSE(fail.failed()) << r.x << " " << r.branch << " " << r.offset;
        EXPECT_NEAR(w, r.w, 4 * std::numeric_limits<double>::epsilon() * std::fabs(r.w))
            << r.x << " branch " << r.branch << (r.offset ? " offset" : "");
    }
}

TEST(LambertW, ArgumentsOutsideTheBranchFail) {
    const struct {
        double x;
        int branch;
        bool offset;
    } cases[] = {{-0.37, 0, false},  {-0.37, -1, false}, {0.0, -1, false}, {1.0, -1, false},
                 {-1e-300, 0, true}, {0.3679, -1, true}, {NAN, 0, false},  {INFINITY, 0, true},
                 {0.5, 1, false},    {0.5, -2, true}};
    for (const auto& c : cases) {
        NagError fail;
        c05bac(c.x, c.branch, c.offset, &fail);
        EXPECT_TRUE(fail.failed()) << c.x << " " << c.branch << " " << c.offset;
    }
}

}  // namespace
