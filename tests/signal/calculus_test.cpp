// Derivative and integrals of sampled curves against NumPy/SciPy
// (tests/reference/gen_calculus.py), the derivative's modes and guards, the integration
// record on a known peak, function integrals of closed-form integrands, and refusals that
// leave the outputs untouched.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

#include "signal/integration.hpp"
#include "zemath/calculus.h"

namespace {

struct GradientReference {
    std::vector<double> x, y, gradient;
};
struct AreaReference {
    std::vector<double> x, y;
    double trapezoid, simpson;
    std::vector<double> cumulative;
    double from, to, between;
};
struct CwtReference {
    int wavelet;
    double w0;
    std::vector<double> scales, x, re, im;
};
#include "reference/calculus_ref.inc"

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kTol = 1e-12;

void expect_close(double got, double want, double tol = kTol) {
    EXPECT_NEAR(got, want, tol * std::max(1.0, std::fabs(want)));
}

TEST(Derivative, MatchesNumpyGradientOnEvenX) {
    for (const auto& c : kGradientReference) {
        std::vector<double> y = c.y;
        ASSERT_EQ(zemath_derivative(c.x.data(), y.data(), static_cast<int>(y.size()), 0), 0);
        for (std::size_t i = 0; i < y.size(); ++i) expect_close(y[i], c.gradient[i]);
    }
}

TEST(Derivative, ModesMissingPointsAndGuards) {
    const std::vector<double> x{0, 1, 2, 3, 4};
    struct Case {
        std::vector<double> y;
        int mode;
        std::vector<double> want;
    } cases[] = {
        {{0, 1, 3, 2, 2}, 0, {1, 1.5, 0.5, -0.5, 0}},
        {{0, 1, 3, 2, 2}, 2, {1, 2, -1, 0, 0}},                 // forward slopes inside
        {{0, 1, 3, 2, 2}, 4, {1, 1, 2, -1, 0}},                 // backward slopes inside
        {{0, 1, 3, 2, 2}, 1, {1, 1.5, 0, -0.5, 0}},             // strict maximum at 2 snaps to 0
        {{0, 1, 3, 2, 2}, 9, {1, 1.5, 0, 0, 0}},                // bit 8: a flat side snaps too
        {{NANUM, 1, NANUM, 5, 9}, 0, {NANUM, 2, NANUM, 3, 4}},  // skipped points
    };
    for (const Case& c : cases) {
        std::vector<double> y = c.y;
        ASSERT_EQ(zemath_derivative(x.data(), y.data(), 5, c.mode), 0);
        for (std::size_t i = 0; i < y.size(); ++i) EXPECT_EQ(y[i], c.want[i]) << c.mode << " " << i;
    }
    // Two points: the same slope at both.
    std::vector<double> y2{1.0, 4.0};
    ASSERT_EQ(zemath_derivative(x.data(), y2.data(), 2, 0), 0);
    EXPECT_EQ(y2[0], 3.0);
    EXPECT_EQ(y2[1], 3.0);
    // Below a unit step the rise may not exceed |dx| * 1.7e308: NANUM instead.
    EXPECT_EQ(zemath::guarded_slope(1e-300, 1e9), NANUM);
    EXPECT_DOUBLE_EQ(zemath::guarded_slope(1e-300, 1.0), 1e300);
    EXPECT_EQ(zemath::guarded_slope(2.0, 1e308), 5e307);
    EXPECT_EQ(zemath::guarded_slope(0.0, 1.0), NANUM);
    EXPECT_EQ(zemath::guarded_slope(1e-300, 1e-300), 1.0);
    const double tx[] = {0.0, 1e-300};
    double ty[] = {0.0, 1e9};
    ASSERT_EQ(zemath_derivative(tx, ty, 2, 0), 0);
    EXPECT_EQ(ty[0], NANUM);
}

TEST(Derivative, Refusals) {
    const double x[] = {0, 1, 2};
    double y[] = {NANUM, 5, NANUM};
    EXPECT_EQ(zemath_derivative(x, y, 1, 0), -7);
    EXPECT_EQ(zemath_derivative(x, y, -5, 0), -7);
    EXPECT_EQ(zemath_derivative(nullptr, y, 3, 0), -11);
    EXPECT_EQ(zemath_derivative(x, y, 3, 0), -8);  // one usable point
    EXPECT_EQ(y[1], 5.0);
}

TEST(Integration, AreasMatchScipy) {
    for (const auto& c : kAreaReference) {
        const int n = static_cast<int>(c.x.size());
        zemath_IntegrationResult r{};
        ASSERT_EQ(zemath_integrate(c.x.data(), c.y.data(), 0, n - 1, &r, 0, 0, nullptr), 0);
        expect_close(r.area, c.trapezoid);
        ASSERT_EQ(zemath_integrate(c.x.data(), c.y.data(), n - 1, 0, &r, 0, 0, nullptr), 0);
        expect_close(r.area, -c.trapezoid);  // reversed range negates
        if (n % 2 == 1) {
            ASSERT_EQ(zemath_integrate(c.x.data(), c.y.data(), 0, n - 1, &r, 1, 0, nullptr), 0);
            expect_close(r.area, c.simpson);
        }
        std::vector<double> cum(c.x.size());
        ASSERT_EQ(zemath_numeric_integral(c.x.data(), c.y.data(), n, cum.data()), 0);
        for (int i = 0; i < n; ++i) expect_close(cum[i], c.cumulative[i]);
        double area = 0;
        ASSERT_EQ(zemath_integrate_with_bounds(c.x.data(), c.y.data(), n, c.from, c.to, &area), 0);
        expect_close(area, c.between);
    }
}

TEST(Integration, QuadraticRuleExactOnUnevenSpacing) {
    for (int n : {3, 4, 6, 11}) {  // odd and even interval counts
        std::vector<double> x(n), y(n);
        for (int i = 0; i < n; ++i) {
            x[i] = i + 0.3 * std::sin(i * 1.7);
            y[i] = 2.0 - x[i] + 0.75 * x[i] * x[i];
        }
        const double a = x[0], b = x[n - 1];
        auto primitive = [](double t) { return 2.0 * t - t * t / 2 + 0.25 * t * t * t; };
        zemath_IntegrationResult r{};
        ASSERT_EQ(zemath_integrate(x.data(), y.data(), 0, n - 1, &r, 1, 0, nullptr), 0);
        expect_close(r.area, primitive(b) - primitive(a));
    }
}

TEST(Integration, RecordOfATrianglePeakAboveABaseline) {
    // Triangle of height 2 from x = 0 to 4 on a baseline of 1, given in shuffled order.
    const double x[] = {3, 0, 2, 4, 1};
    const double y[] = {2, 1, 3, 1, 2};
    const double base[] = {1, 1, 1, 1, 1};
    zemath_IntegrationResult r{};
    ASSERT_EQ(zemath_integrate(x, y, 0, 4, &r, 0, 1, base), 0);
    EXPECT_DOUBLE_EQ(r.area, 4.0);
    EXPECT_DOUBLE_EQ(r.abs_area, 4.0);
    EXPECT_DOUBLE_EQ(r.x_half_area, 2.0);
    EXPECT_DOUBLE_EQ(r.x_centroid, 2.0);
    EXPECT_EQ(r.x_peak, 2.0);
    EXPECT_EQ(r.y_peak, 2.0);
    EXPECT_EQ(r.peak_index, 2);
    EXPECT_DOUBLE_EQ(r.x_left_half, 1.0);
    EXPECT_DOUBLE_EQ(r.x_right_half, 3.0);
    EXPECT_DOUBLE_EQ(r.fwhm, 2.0);
    EXPECT_EQ(r.points, 5);
}

TEST(Integration, RefusalsLeaveTheRecord) {
    const double x[] = {0, 1, 2}, y[] = {1, NANUM, 1};
    zemath_IntegrationResult r{};
    r.area = 777.0;
    EXPECT_EQ(zemath_integrate(nullptr, y, 0, 2, &r, 0, 0, nullptr), -37);
    EXPECT_EQ(zemath_integrate(x, y, -1, 2, &r, 0, 0, nullptr), -37);
    EXPECT_EQ(zemath_integrate(x, y, 1, 1, &r, 0, 0, nullptr), -7);
    EXPECT_EQ(zemath_integrate(x, y, 0, 2, &r, 2, 0, nullptr), -10);
    EXPECT_EQ(zemath_integrate(x, y, 0, 1, &r, 0, 0, nullptr), -1);  // one usable point
    EXPECT_EQ(r.area, 777.0);
    double area = 777.0;
    const double xd[] = {0, 2, 1};
    EXPECT_EQ(zemath_integrate_with_bounds(xd, x, 3, 0, 1, &area), -17);
    EXPECT_EQ(zemath_integrate_with_bounds(x, x, 3, kNaN, 1, &area), -37);
    EXPECT_EQ(zemath_integrate_with_bounds(x, x, 1, 0, 1, &area), -7);
    EXPECT_EQ(area, 777.0);
}

double gaussian(double t, void*) {
    return std::exp(-t * t);
}
double sharp(double t, void* context) {
    return 1.0 / (*static_cast<double*>(context) + t * t);
}
double nan_at_half(double t, void*) {
    return t == 0.5 ? kNaN : t;
}

TEST(FunctionIntegral, ClosedForms) {
    double result = 0, error = 0, eps = 1e-4;
    ASSERT_EQ(zemath_function_integral(gaussian, nullptr, -6, 6, 1e-13, &result, &error), 0);
    expect_close(result, std::sqrt(M_PI), 1e-12);
    ASSERT_EQ(zemath_function_integral(sharp, &eps, -1, 1, 1e-12, &result, &error), 0);
    expect_close(result, 2.0 / std::sqrt(eps) * std::atan(1.0 / std::sqrt(eps)), 1e-11);
    ASSERT_EQ(zemath_function_integral_on_new_romberg(gaussian, nullptr, 1, 0, 1e-14, 20, &result,
                                                      &error),
              0);
    expect_close(result, -0.5 * std::sqrt(M_PI) * std::erf(1.0), 1e-13);
    EXPECT_EQ(zemath_function_integral(nan_at_half, nullptr, 0, 1, 1e-10, &result, nullptr), -1);
    result = 777.0;
    EXPECT_EQ(zemath_function_integral(nullptr, nullptr, 0, 1, 1e-10, &result, nullptr), -11);
    EXPECT_EQ(zemath_function_integral(gaussian, nullptr, 0, INFINITY, 1e-10, &result, nullptr),
              -37);
    EXPECT_EQ(zemath_function_integral(gaussian, nullptr, NANUM, 1, 1e-10, &result, nullptr), -37);
    EXPECT_EQ(
        zemath_function_integral_on_new_romberg(gaussian, nullptr, 0, 1, 0.0, 9, &result, nullptr),
        -151);
    EXPECT_EQ(result, 777.0);
}

TEST(Cwt, MatchesScipyWavelets) {
    for (const auto& c : kCwtReference) {
        const int n = static_cast<int>(c.x.size()), m = static_cast<int>(c.scales.size());
        std::vector<double> re(n * m), im(n * m, 777.0);
        ASSERT_EQ(
            zemath_cwt(c.x.data(), n, c.scales.data(), m, c.wavelet, c.w0, re.data(), im.data()),
            0);
        double scale = 1.0;
        for (double v : c.re) scale = std::max(scale, std::fabs(v));
        for (int k = 0; k < n * m; ++k) {
            EXPECT_NEAR(re[k], c.re[k], 1e-13 * scale) << k;
            EXPECT_NEAR(im[k], c.im[k], 1e-13 * scale) << k;
        }
    }
    const double x[] = {1, 2, 3}, scales[] = {1.0, -1.0};
    double re[6] = {777, 777, 777, 777, 777, 777};
    EXPECT_EQ(zemath_cwt(nullptr, 3, scales, 1, 0, 0, re, nullptr), -11);
    EXPECT_EQ(zemath_cwt(x, 3, scales, 1, 1, 5.0, re, nullptr), -11);  // Morlet needs im
    EXPECT_EQ(zemath_cwt(x, 0, scales, 1, 0, 0, re, nullptr), -7);
    EXPECT_EQ(zemath_cwt(x, 3, scales, 1, 2, 0, re, nullptr), -10);
    EXPECT_EQ(zemath_cwt(x, 3, scales, 2, 0, 0, re, nullptr), -151);
    EXPECT_EQ(zemath_cwt(x, 3, scales, 1, 1, 0.0, re, re), -151);
    for (double v : re) EXPECT_EQ(v, 777.0);
    EXPECT_EQ(zemath_cwt(x, 3, scales, 1, 0, 0, re, nullptr), 0);
}

}  // namespace
