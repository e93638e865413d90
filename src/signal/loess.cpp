// Local regression (loess / lowess) smoothing.
//
// Method: at each point, a weighted least-squares polynomial of degree 1 or 2 over the q
// nearest points (q from the span), tricube weights (1 - d^3)^3 in the distance scaled by
// the farthest of the q points; the fitted value at the point is the result. The q-point
// neighbourhood of sorted abscissae is a window that only slides forward. Robust variants
// repeat the fits with bisquare weights (1 - u^2)^2, u = residual / (6 * median absolute
// residual), three times. Each local fit solves its normal equations in abscissae centred
// on the point and scaled by the neighbourhood's radius; a singular local system falls
// back to the weighted mean. Cost O(n q) per iteration.
// Reference: W. S. Cleveland, "Robust locally weighted regression and smoothing
// scatterplots", J. Amer. Statist. Assoc. 74 (1979) 829-836.
#include <Eigen/Dense>
#include <algorithm>
#include <cmath>
#include <numeric>
#include <vector>

#include "core/guard.hpp"
#include "core/missing.hpp"
#include "platform/util/progress.hpp"
#include "signal/smoothing.hpp"
#include "zemath/smoothing.h"

namespace zemath {
namespace {

constexpr int kRobustIterations = 3;
// Relative size of a determinant below which a local system counts as singular.
constexpr double kSingular = 1e-12;

double tricube(double d) {
    if (d >= 1.0) return 0.0;
    const double c = 1.0 - d * d * d;
    return c * c * c;
}

// Weighted local polynomial at x[i] over the window [lo, lo + q).
double local_fit(const std::vector<double>& x, const std::vector<double>& y,
                 const std::vector<double>& robust, std::size_t i, std::size_t lo, std::size_t q,
                 int degree) {
    const double xi = x[i];
    const double h = std::max(xi - x[lo], x[lo + q - 1] - xi);
    double s[5] = {0, 0, 0, 0, 0}, t[3] = {0, 0, 0};
    for (std::size_t j = lo; j < lo + q; ++j) {
        const double u = h > 0.0 ? (x[j] - xi) / h : 0.0;
        const double w = (h > 0.0 ? tricube(std::fabs(u)) : 1.0) * robust[j];
        if (w == 0.0) continue;
        double p = w;
        for (int k = 0; k <= 2 * degree; ++k, p *= u) {
            s[k] += p;
            if (k <= degree) t[k] += p * y[j];
        }
    }
    if (!(s[0] > 0.0)) return y[i];  // every neighbour weighted out: keep the point
    if (degree == 1) {
        const double det = s[0] * s[2] - s[1] * s[1];
        if (!(det > kSingular * s[0] * s[2])) return t[0] / s[0];
        return (s[2] * t[0] - s[1] * t[1]) / det;
    }
    Eigen::Matrix3d a;
    a << s[0], s[1], s[2], s[1], s[2], s[3], s[2], s[3], s[4];
    const Eigen::Vector3d b(t[0], t[1], t[2]);
    const double det = a.determinant();
    if (!(std::fabs(det) > kSingular * s[0] * s[2] * s[4])) {
        // Fewer than three distinct abscissae carry weight: the line instead.
        const double det1 = s[0] * s[2] - s[1] * s[1];
        if (!(det1 > kSingular * s[0] * s[2])) return t[0] / s[0];
        return (s[2] * t[0] - s[1] * t[1]) / det1;
    }
    return a.partialPivLu().solve(b)(0);
}

}  // namespace

int loess_smooth(std::span<const double> xin, std::span<const double> yin, double* out,
                 double& span, int method, int degree_flag, bool show_progress) {
    const std::size_t n = yin.size();
    const int degree = degree_flag != 0 && method != 2 ? 2 : 1;
    std::vector<std::size_t> order;
    order.reserve(n);
    for (std::size_t i = 0; i < n; ++i) {
        if (!is_missing(xin[i]) && !is_missing(yin[i])) order.push_back(i);
    }
    const std::size_t m = order.size();
    if (m < static_cast<std::size_t>(degree) + 1) return ZEMATH_ERR_TOO_FEW_POINTS;
    std::stable_sort(order.begin(), order.end(),
                     [&](std::size_t a, std::size_t b) { return xin[a] < xin[b]; });
    std::vector<double> x(m), y(m), fit(m), robust(m, 1.0), residual(m);
    for (std::size_t k = 0; k < m; ++k) {
        x[k] = xin[order[k]];
        y[k] = yin[order[k]];
    }
    const auto wanted = static_cast<std::size_t>(std::ceil(span * static_cast<double>(m)));
    const std::size_t q = std::clamp<std::size_t>(wanted, static_cast<std::size_t>(degree) + 1, m);
    const int iterations = method == 0 ? 0 : kRobustIterations;
    util::ProgressReport progress("Smoothing...", "Smooth", m * (iterations + 1u),
                                  std::max<std::size_t>(n / 100, 1), show_progress && n >= 10000);
    for (int it = 0; it <= iterations; ++it) {
        std::size_t lo = 0;
        for (std::size_t i = 0; i < m; ++i) {
            while (lo + q < m && x[i] - x[lo] > x[lo + q] - x[i]) ++lo;
            fit[i] = local_fit(x, y, robust, i, lo, q, degree);
            progress.advance(it * m + i + 1);
        }
        if (it == iterations) break;
        for (std::size_t i = 0; i < m; ++i) residual[i] = std::fabs(y[i] - fit[i]);
        std::vector<double> sorted = residual;
        auto mid = sorted.begin() + static_cast<std::ptrdiff_t>(m / 2);
        std::nth_element(sorted.begin(), mid, sorted.end());
        double median = *mid;
        if (m % 2 == 0) median = 0.5 * (median + *std::max_element(sorted.begin(), mid));
        if (!(median > 0.0)) break;  // an exact fit: nothing to downweight
        for (std::size_t i = 0; i < m; ++i) {
            const double u = residual[i] / (6.0 * median);
            robust[i] = u < 1.0 ? (1.0 - u * u) * (1.0 - u * u) : 0.0;
        }
    }
    for (std::size_t i = 0; i < n; ++i) out[i] = kNanum;
    for (std::size_t k = 0; k < m; ++k) out[order[k]] = fit[k];
    span = static_cast<double>(q) / static_cast<double>(m);
    return ZEMATH_OK;
}

}  // namespace zemath

using namespace zemath;

namespace {
int loess_checked(int nSize, int nMethod, int nDegreeFlag, double* pSpan, const double* pX,
                  const double* pY, double* pOut, bool bShowProgress) {
    if (pSpan == nullptr || pY == nullptr || pOut == nullptr) return ZEMATH_ERR_NULL_POINTER;
    if (nSize < 1) return ZEMATH_ERR_TOO_FEW_POINTS;
    if (nMethod < 0 || nMethod > 2) return ZEMATH_ERR_BAD_OPTION;
    if (!(*pSpan > 0.0 && *pSpan <= 1.0)) return ZEMATH_ERR_PARAM_RANGE;
    return guard_status([&]() -> int {
        const auto n = static_cast<std::size_t>(nSize);
        std::vector<double> index;
        if (pX == nullptr) {
            index.resize(n);
            std::iota(index.begin(), index.end(), 0.0);
            pX = index.data();
        }
        std::vector<double> result(n);
        double span = *pSpan;
        const int status = loess_smooth({pX, n}, {pY, n}, result.data(), span, nMethod, nDegreeFlag,
                                        bShowProgress);
        if (status != ZEMATH_OK) return status;
        std::copy(result.begin(), result.end(), pOut);
        *pSpan = span;
        return ZEMATH_OK;
    });
}
}  // namespace

ZEMATH_API int zemath_loess_xUnevenly(int nSize, int nMethod, int nDegreeFlag, double* pSpan,
                                      const double* pX, const double* pY, double* pOut,
                                      bool bShowProgress) noexcept {
    if (pX == nullptr) return ZEMATH_ERR_NULL_POINTER;
    return loess_checked(nSize, nMethod, nDegreeFlag, pSpan, pX, pY, pOut, bShowProgress);
}

ZEMATH_API int zemath_loess_xEvenly(int nSize, int nMethod, int nDegreeFlag, double* pSpan,
                                    const double* pY, double* pOut, bool bShowProgress) noexcept {
    return loess_checked(nSize, nMethod, nDegreeFlag, pSpan, nullptr, pY, pOut, bShowProgress);
}
