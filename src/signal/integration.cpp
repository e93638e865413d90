// Derivative and integration of sampled curves.
//
// Derivative: first differences between consecutive usable points (forward at the first,
// backward at the last, the mean of both in the interior unless a one-sided mode is
// chosen), with an overflow guard on tiny steps. Integration: the trapezoid rule, and for
// the higher-order method the composite quadratic (Simpson) rule for uneven spacing,
// exact for quadratics; the last interval of an odd count integrates the quadratic through
// the last three points over that interval only. Function integrals: adaptive Simpson with
// Richardson correction, and Romberg extrapolation of the trapezoid rule.
// Accuracy: the rules are exact for the stated polynomial degrees; rounding is that of
// one pass of summation. Failure codes are those of the exports in zemath/calculus.h.
#include "signal/integration.hpp"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <vector>

#include "core/guard.hpp"
#include "core/missing.hpp"
#include "zemath/calculus.h"

namespace zemath {
namespace {

// The guard constant of the slope: the largest |dy| / |dx| accepted for |dx| < 1.
constexpr double kSlopeLimit = 1.7e308;

bool usable(double v) noexcept {
    return !is_missing(v) && !std::isnan(v);
}

}  // namespace

double guarded_slope(double dx, double dy) noexcept {
    if (dx == 0.0 || is_missing(dx)) return kNanum;
    if (std::fabs(dx) >= 1.0) return dy / dx;
    if (std::fabs(dx) * kSlopeLimit > std::fabs(dy)) return dy / dx;
    return kNanum;
}

int derivative_in_place(std::span<const double> x, std::span<double> y, int mode) noexcept {
    const std::size_t n = std::min(x.size(), y.size());
    auto valid = [&](std::size_t i) { return !is_missing(x[i]) && !is_missing(y[i]); };
    std::size_t count = 0;
    for (std::size_t i = 0; i < n && count < 2; ++i) count += valid(i) ? 1 : 0;
    if (count < 2) return ZEMATH_ERR_NULL_CURVE;

    // One forward walk; the original y of the previous usable point is kept aside because
    // its slot has already been overwritten.
    bool have_prev = false;
    double prev_x = 0.0, prev_y = 0.0, left_slope = kNanum;
    std::size_t i = 0;
    while (i < n && !valid(i)) y[i++] = kNanum;
    for (; i < n; ++i) {
        if (!valid(i)) {
            y[i] = kNanum;
            continue;
        }
        std::size_t next = i + 1;
        while (next < n && !valid(next)) ++next;
        const double xi = x[i], yi = y[i];
        const double right_slope = next < n ? guarded_slope(x[next] - xi, y[next] - yi) : kNanum;
        if (have_prev) left_slope = guarded_slope(xi - prev_x, yi - prev_y);
        double d;
        if (!have_prev) {
            d = right_slope;  // forward difference at the first usable point
        } else if (next >= n) {
            d = left_slope;  // backward difference at the last
        } else if (mode == 2) {
            d = right_slope;
        } else if (mode == 4) {
            d = left_slope;
        } else if (is_missing(left_slope) || is_missing(right_slope)) {
            d = kNanum;
        } else {
            d = (left_slope + right_slope) * 0.5;
            const double product = left_slope * right_slope;
            // A local extreme gets a derivative of exactly 0; with bit 8 also a flat side.
            if ((mode & 1) && (product < 0.0 || ((mode & 8) && product <= 0.0))) d = 0.0;
        }
        y[i] = d;
        prev_x = xi;
        prev_y = yi;
        have_prev = true;
    }
    return ZEMATH_OK;
}

std::size_t cumulative_trapezoid(std::span<const double> x, std::span<const double> y,
                                 std::span<double> cumulative) noexcept {
    const std::size_t n = std::min({x.size(), y.size(), cumulative.size()});
    double total = 0.0, prev_x = 0.0, prev_y = 0.0;
    std::size_t used = 0;
    for (std::size_t i = 0; i < n; ++i) {
        if (usable(x[i]) && usable(y[i])) {
            if (used > 0) total += 0.5 * (x[i] - prev_x) * (y[i] + prev_y);
            prev_x = x[i];
            prev_y = y[i];
            ++used;
        }
        cumulative[i] = total;
    }
    return used;
}

namespace {

// Integral of the quadratic through (x0,y0), (x1,y1), (x2,y2) over [x0, x2].
double quadratic_pair(double h0, double h1, double y0, double y1, double y2) noexcept {
    const double h = h0 + h1;
    return h / 6.0 * ((2.0 - h1 / h0) * y0 + h * h / (h0 * h1) * y1 + (2.0 - h0 / h1) * y2);
}

// Integral of the same quadratic over [x1, x2] only.
double quadratic_last(double h0, double h1, double y0, double y1, double y2) noexcept {
    const double h = h0 + h1;
    const double alpha = (2.0 * h1 * h1 + 3.0 * h0 * h1) / (6.0 * h);
    const double beta = (h1 * h1 + 3.0 * h0 * h1) / (6.0 * h0);
    const double eta = h1 * h1 * h1 / (6.0 * h0 * h);
    return alpha * y2 + beta * y1 - eta * y0;
}

}  // namespace

double area_under_curve(std::span<const double> x, std::span<const double> y, int method) {
    const std::size_t n = std::min(x.size(), y.size());
    std::vector<double> px, py;
    px.reserve(n);
    py.reserve(n);
    for (std::size_t i = 0; i < n; ++i) {
        if (usable(x[i]) && usable(y[i])) {
            px.push_back(x[i]);
            py.push_back(y[i]);
        }
    }
    const std::size_t m = px.size();
    if (m < 2) return kNanum;
    double area = 0.0;
    if (method == 0 || m == 2) {
        for (std::size_t i = 1; i < m; ++i) area += 0.5 * (px[i] - px[i - 1]) * (py[i] + py[i - 1]);
        return area;
    }
    std::size_t i = 0;
    for (; i + 2 < m; i += 2) {
        const double h0 = px[i + 1] - px[i], h1 = px[i + 2] - px[i + 1];
        // A repeated abscissa makes the quadratic undefined; that pair is a trapezoid.
        if (h0 == 0.0 || h1 == 0.0) {
            area += 0.5 * h0 * (py[i] + py[i + 1]) + 0.5 * h1 * (py[i + 1] + py[i + 2]);
        } else {
            area += quadratic_pair(h0, h1, py[i], py[i + 1], py[i + 2]);
        }
    }
    if (i + 1 < m) {  // one interval left
        const double h0 = px[i] - px[i - 1], h1 = px[i + 1] - px[i];
        if (h0 == 0.0 || h1 == 0.0) {
            area += 0.5 * h1 * (py[i] + py[i + 1]);
        } else {
            area += quadratic_last(h0, h1, py[i - 1], py[i], py[i + 1]);
        }
    }
    return area;
}

}  // namespace zemath

using namespace zemath;

ZEMATH_API int zemath_derivative(const double* pX, double* pY, int nSize, int nMode) noexcept {
    if (nSize < 2) return ZEMATH_ERR_TOO_FEW_DERIV;
    if (pX == nullptr || pY == nullptr) return ZEMATH_ERR_NULL_POINTER;
    const auto n = static_cast<std::size_t>(nSize);
    return derivative_in_place({pX, n}, {pY, n}, nMode);
}

namespace zemath {
namespace {

struct UsableCurve {
    std::vector<double> x, h;
    std::vector<int> index;
};

// Half-area abscissa: the first crossing of half the total by the running area.
double half_area_x(const std::vector<double>& x, const std::vector<double>& cumulative) {
    const double target = cumulative.back() * 0.5;
    for (std::size_t i = 1; i < x.size(); ++i) {
        const double a = cumulative[i - 1] - target, b = cumulative[i] - target;
        if (a == 0.0) return x[i - 1];
        if (a * b < 0.0 || b == 0.0) return x[i - 1] + (x[i] - x[i - 1]) * (a / (a - b));
    }
    return x.back();
}

// Crossing of half the peak height walking outwards from the peak; NANUM when the curve
// never falls to half on that side.
double half_height_x(const UsableCurve& c, std::size_t peak, int step) {
    const double half = c.h[peak] * 0.5;
    const bool positive = c.h[peak] > 0.0;
    std::size_t i = peak;
    for (;;) {
        if ((step < 0 && i == 0) || (step > 0 && i + 1 >= c.x.size())) return kNanum;
        const std::size_t j = step < 0 ? i - 1 : i + 1;
        const bool below = positive ? c.h[j] <= half : c.h[j] >= half;
        if (below) {
            const double t = (half - c.h[i]) / (c.h[j] - c.h[i]);
            return c.x[i] + t * (c.x[j] - c.x[i]);
        }
        i = j;
    }
}

}  // namespace

int integrate_range(const double* x, const double* y, int first, int last,
                    zemath_IntegrationResult& result, int method, bool sort,
                    const double* baseline) {
    const int lo = std::min(first, last), hi = std::max(first, last);
    const auto count = static_cast<std::size_t>(hi - lo) + 1;
    std::vector<std::size_t> order(count);
    std::iota(order.begin(), order.end(), static_cast<std::size_t>(lo));
    if (sort) {
        std::stable_sort(order.begin(), order.end(),
                         [&](std::size_t a, std::size_t b) { return x[a] < x[b]; });
    }
    UsableCurve c;
    c.x.reserve(count);
    c.h.reserve(count);
    c.index.reserve(count);
    for (std::size_t k : order) {
        const double b = baseline != nullptr ? baseline[k] : 0.0;
        if (!usable(x[k]) || !usable(y[k]) || !usable(b)) continue;
        c.x.push_back(x[k]);
        c.h.push_back(y[k] - b);
        c.index.push_back(static_cast<int>(k));
    }
    const std::size_t m = c.x.size();
    if (m < 2) return ZEMATH_ERR_GENERAL;

    std::vector<double> cumulative(m), absolute(m), moment(m);
    std::vector<double> abs_h(m), xh(m);
    for (std::size_t i = 0; i < m; ++i) {
        abs_h[i] = std::fabs(c.h[i]);
        xh[i] = c.x[i] * c.h[i];
    }
    cumulative_trapezoid(c.x, c.h, cumulative);
    cumulative_trapezoid(c.x, abs_h, absolute);
    cumulative_trapezoid(c.x, xh, moment);

    std::size_t peak = 0;
    for (std::size_t i = 1; i < m; ++i) {
        if (abs_h[i] > abs_h[peak]) peak = i;
    }
    const double area = method == 0 ? cumulative.back() : area_under_curve(c.x, c.h, method);
    const double sign = first > last ? -1.0 : 1.0;  // a reversed range negates the area
    result.area = sign * area;
    result.abs_area = sign * absolute.back();
    result.x_half_area = half_area_x(c.x, cumulative);
    result.x_centroid = cumulative.back() != 0.0 ? moment.back() / cumulative.back() : kNanum;
    result.x_peak = c.x[peak];
    result.y_peak = c.h[peak];
    result.peak_index = c.index[peak];
    result.points = static_cast<int>(m);
    const double left = c.h[peak] != 0.0 ? half_height_x(c, peak, -1) : kNanum;
    const double right = c.h[peak] != 0.0 ? half_height_x(c, peak, +1) : kNanum;
    result.x_left_half = left;
    result.x_right_half = right;
    result.fwhm = is_missing(left) || is_missing(right) ? kNanum : std::fabs(right - left);
    return ZEMATH_OK;
}

namespace {

// Area from xs[0] to t of the piecewise-linear curve (xs ascending, t inside the span).
double area_to(const std::vector<double>& xs, const std::vector<double>& ys,
               const std::vector<double>& cumulative, double t) {
    auto it = std::upper_bound(xs.begin(), xs.end(), t);
    std::size_t k = it == xs.begin() ? 0 : static_cast<std::size_t>(it - xs.begin()) - 1;
    if (k + 1 >= xs.size()) return cumulative.back();
    const double dx = xs[k + 1] - xs[k];
    const double yt = dx != 0.0 ? ys[k] + (ys[k + 1] - ys[k]) * ((t - xs[k]) / dx) : ys[k];
    return cumulative[k] + 0.5 * (t - xs[k]) * (ys[k] + yt);
}

}  // namespace

int integrate_between(std::span<const double> x, std::span<const double> y, double from, double to,
                      double& area) {
    std::vector<double> xs, ys;
    for (std::size_t i = 0; i < x.size(); ++i) {
        if (usable(x[i]) && usable(y[i])) {
            xs.push_back(x[i]);
            ys.push_back(y[i]);
        }
    }
    if (xs.size() < 2) return ZEMATH_ERR_GENERAL;
    if (xs.front() > xs.back()) {
        std::reverse(xs.begin(), xs.end());
        std::reverse(ys.begin(), ys.end());
    }
    for (std::size_t i = 1; i < xs.size(); ++i) {
        if (!(xs[i] > xs[i - 1])) return ZEMATH_ERR_NOT_MONOTONIC;
    }
    std::vector<double> cumulative(xs.size());
    cumulative_trapezoid(xs, ys, cumulative);
    const double lo = std::clamp(std::min(from, to), xs.front(), xs.back());
    const double hi = std::clamp(std::max(from, to), xs.front(), xs.back());
    const double a = area_to(xs, ys, cumulative, hi) - area_to(xs, ys, cumulative, lo);
    area = from <= to ? a : -a;
    return ZEMATH_OK;
}

namespace {

// Adaptive Simpson with Richardson correction; evaluation budget bounds the work.
struct AdaptiveSimpson {
    zemath_integrand f;
    void* context;
    long budget;
    bool exhausted = false;
    double error = 0.0;

    double eval(double t) {
        --budget;
        return f(t, context);
    }
    double step(double a, double b, double fa, double fm, double fb, double whole, double tolerance,
                int depth) {
        const double m = 0.5 * (a + b), lm = 0.5 * (a + m), rm = 0.5 * (m + b);
        const double flm = eval(lm), frm = eval(rm);
        const double left = (m - a) / 6.0 * (fa + 4.0 * flm + fm);
        const double right = (b - m) / 6.0 * (fm + 4.0 * frm + fb);
        const double delta = left + right - whole;
        if (std::isnan(delta)) {
            exhausted = true;
            return left + right;
        }
        if (depth <= 0 || budget <= 0 || std::fabs(delta) <= 15.0 * tolerance ||
            !(m > a && b > m)) {
            if (!(std::fabs(delta) <= 15.0 * tolerance)) exhausted = true;
            error += std::fabs(delta) / 15.0;
            return left + right + delta / 15.0;
        }
        return step(a, m, fa, flm, fm, left, 0.5 * tolerance, depth - 1) +
               step(m, b, fm, frm, fb, right, 0.5 * tolerance, depth - 1);
    }
};

constexpr int kSimpsonDepth = 48;         // intervals down to 2^-48 of the range
constexpr long kSimpsonBudget = 2000000;  // integrand evaluations
constexpr int kRombergLevels = 25;        // 2^24 + 1 evaluations at most

}  // namespace

int adaptive_integral(zemath_integrand f, void* context, double a, double b, double tolerance,
                      double& result, double& error) {
    AdaptiveSimpson s{f, context, kSimpsonBudget};
    const double fa = s.eval(a), fb = s.eval(b), fm = s.eval(0.5 * (a + b));
    const double whole = (b - a) / 6.0 * (fa + 4.0 * fm + fb);
    result = s.step(a, b, fa, fm, fb, whole, tolerance, kSimpsonDepth);
    error = s.error;
    return s.exhausted || !std::isfinite(result) ? ZEMATH_ERR_GENERAL : ZEMATH_OK;
}

int romberg_integral(zemath_integrand f, void* context, double a, double b, double tolerance,
                     int max_levels, double& result, double& error) {
    const int levels = std::clamp(max_levels, 2, kRombergLevels);
    std::vector<double> previous(static_cast<std::size_t>(levels)),
        current(static_cast<std::size_t>(levels));
    const double h0 = b - a;
    previous[0] = 0.5 * h0 * (f(a, context) + f(b, context));
    double h = h0;
    for (int level = 1; level < levels; ++level) {
        h *= 0.5;
        const long points = 1L << (level - 1);
        double sum = 0.0;
        for (long k = 0; k < points; ++k) sum += f(a + static_cast<double>(2 * k + 1) * h, context);
        current[0] = 0.5 * previous[0] + h * sum;
        double factor = 1.0;
        for (int j = 1; j <= level; ++j) {
            factor *= 4.0;
            current[j] = current[j - 1] + (current[j - 1] - previous[j - 1]) / (factor - 1.0);
        }
        error = std::fabs(current[level] - previous[level - 1]);
        result = current[level];
        if (!std::isfinite(result)) return ZEMATH_ERR_GENERAL;
        if (level >= 4 && error <= tolerance) return ZEMATH_OK;
        std::swap(previous, current);
    }
    return ZEMATH_ERR_GENERAL;
}

}  // namespace zemath

namespace {
bool bad_bound(double v) {
    return !std::isfinite(v) || is_missing(v);
}
}  // namespace

ZEMATH_API int zemath_integrate(const double* pX, const double* pY, int nFirst, int nLast,
                                zemath_IntegrationResult* pResult, int nMethod, int bSort,
                                const double* pBaseline) noexcept {
    if (pX == nullptr || pY == nullptr || pResult == nullptr || nFirst < 0 || nLast < 0)
        return ZEMATH_ERR_BAD_INTERVAL;
    if (nFirst == nLast) return ZEMATH_ERR_TOO_FEW_DERIV;
    if (nMethod < 0 || nMethod > 1) return ZEMATH_ERR_BAD_OPTION;
    return guard_status([&]() -> int {
        zemath_IntegrationResult r{};
        const int status =
            integrate_range(pX, pY, nFirst, nLast, r, nMethod, bSort != 0, pBaseline);
        if (status == ZEMATH_OK) *pResult = r;
        return status;
    });
}

ZEMATH_API int zemath_integrate_with_bounds(const double* pX, const double* pY, int nSize,
                                            double dFrom, double dTo, double* pArea) noexcept {
    if (pX == nullptr || pY == nullptr || pArea == nullptr) return ZEMATH_ERR_NULL_POINTER;
    if (nSize < 2) return ZEMATH_ERR_TOO_FEW_DERIV;
    if (std::isnan(dFrom) || std::isnan(dTo) || is_missing(dFrom) || is_missing(dTo))
        return ZEMATH_ERR_BAD_INTERVAL;
    return guard_status([&]() -> int {
        const auto n = static_cast<std::size_t>(nSize);
        double area = 0.0;
        const int status = integrate_between({pX, n}, {pY, n}, dFrom, dTo, area);
        if (status == ZEMATH_OK) *pArea = area;
        return status;
    });
}

ZEMATH_API int zemath_numeric_integral(const double* pX, const double* pY, int nSize,
                                       double* pOut) noexcept {
    if (pX == nullptr || pY == nullptr || pOut == nullptr) return ZEMATH_ERR_NULL_POINTER;
    if (nSize < 2) return ZEMATH_ERR_TOO_FEW_DERIV;
    const auto n = static_cast<std::size_t>(nSize);
    cumulative_trapezoid({pX, n}, {pY, n}, {pOut, n});
    return ZEMATH_OK;
}

ZEMATH_API int zemath_function_integral(zemath_integrand f, void* pContext, double dFrom,
                                        double dTo, double dTolerance, double* pResult,
                                        double* pError) noexcept {
    if (f == nullptr || pResult == nullptr) return ZEMATH_ERR_NULL_POINTER;
    if (bad_bound(dFrom) || bad_bound(dTo)) return ZEMATH_ERR_BAD_INTERVAL;
    if (!(dTolerance > 0.0)) return ZEMATH_ERR_PARAM_RANGE;
    double result = 0.0, error = 0.0;
    const int status = dFrom == dTo
                           ? ZEMATH_OK
                           : adaptive_integral(f, pContext, dFrom, dTo, dTolerance, result, error);
    *pResult = result;
    if (pError != nullptr) *pError = error;
    return status;
}

ZEMATH_API int zemath_function_integral_on_new_romberg(zemath_integrand f, void* pContext,
                                                       double dFrom, double dTo, double dTolerance,
                                                       int nMaxLevels, double* pResult,
                                                       double* pError) noexcept {
    if (f == nullptr || pResult == nullptr) return ZEMATH_ERR_NULL_POINTER;
    if (bad_bound(dFrom) || bad_bound(dTo)) return ZEMATH_ERR_BAD_INTERVAL;
    if (!(dTolerance > 0.0)) return ZEMATH_ERR_PARAM_RANGE;
    return guard_status([&]() -> int {
        double result = 0.0, error = 0.0;
        const int status = dFrom == dTo ? ZEMATH_OK
                                        : romberg_integral(f, pContext, dFrom, dTo, dTolerance,
                                                           nMaxLevels, result, error);
        *pResult = result;
        if (pError != nullptr) *pError = error;
        return status;
    });
}
