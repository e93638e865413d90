// Local regression (loess / lowess) smoothing.
//
// Method: at each point, a weighted least-squares polynomial of degree 1 or 2 over the q
// nearest points (q from the span), tricube weights (1 - d^3)^3 in the distance scaled by
// the farthest of the q points; the fitted value at the point is the result. The q-point
// neighbourhood of sorted abscissae is a window that only slides forward. Robust variants
// repeat the fits with bisquare weights (1 - u^2)^2, u = residual / (6 * median absolute
// residual), three times. Each local fit solves its normal equations in abscissae centred
// on the point and scaled by the neighbourhood's radius; a singular local system falls
// back to the weighted mean. Cost O(n q) per iteration: over finite data the weighted sums
// of a neighbourhood run in four interleaved lanes (one vector operation per four
// neighbours), which changes them only by the rounding of the reordered additions.
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

// The fit at the point from the weighted sums s[k] = sum w u^k (k <= 2 degree) and
// t[k] = sum w u^k y; a singular system falls back to the line, then to the mean.
double solve_local(const double s[5], const double t[3], double at_point, int degree) {
    if (!(s[0] > 0.0)) return at_point;  // every neighbour weighted out: keep the point
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

// Every neighbour at the point's own abscissa: the robustly weighted mean.
double local_fit_all_at(const double* y, const double* robust, std::size_t i, std::size_t lo,
                        std::size_t q) {
    double s[5] = {0, 0, 0, 0, 0}, t[3] = {0, 0, 0};
    for (std::size_t j = lo; j < lo + q; ++j) {
        const double w = robust[j];
        if (w == 0.0) continue;
        s[0] += w;
        t[0] += w * y[j];
    }
    return solve_local(s, t, y[i], 1);
}

// Weighted local polynomial at x[i] over the window [lo, lo + q); any data.
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
    return solve_local(s, t, y[i], degree);
}

// The sums of local_fit over finite data, in four interleaved sets of accumulators so that
// the additions of neighbouring points do not wait on each other; a point at the radius
// or beyond has tricube weight 0 and adds nothing. Returns the same fit as local_fit, to
// the rounding of the reordered sums.
template <int Degree>
double local_fit_finite(const double* x, const double* y, const double* robust, std::size_t i,
                        std::size_t lo, std::size_t q) {
    const double xi = x[i];
    const double h = std::max(xi - x[lo], x[lo + q - 1] - xi);
    if (!(h > 0.0)) return local_fit_all_at(y, robust, i, lo, q);
    const double inv_h = 1.0 / h;
    constexpr int kSums = 2 * Degree + 1, kRhs = Degree + 1, kLanes = 4;
    // Lane-major sums, so that the four lanes' updates form one vector operation.
    double s[kSums][kLanes] = {}, t[kRhs][kLanes] = {};
    const std::size_t end = lo + q;
    auto add = [&](int lane, std::size_t k) {
        const double u = (x[k] - xi) * inv_h;
        const double a = std::min(std::fabs(u), 1.0);
        const double c = 1.0 - a * a * a;
        const double w = c * c * c * robust[k];
        const double wy = w * y[k];
        const double wu = w * u;
        s[0][lane] += w;
        s[1][lane] += wu;
        s[2][lane] += wu * u;
        t[0][lane] += wy;
        t[1][lane] += wy * u;
        if constexpr (Degree == 2) {
            s[3][lane] += wu * u * u;
            s[4][lane] += wu * u * u * u;
            t[2][lane] += wy * u * u;
        }
    };
    std::size_t j = lo;
    for (; j + kLanes <= end; j += kLanes) {
        for (int lane = 0; lane < kLanes; ++lane) add(lane, j + static_cast<std::size_t>(lane));
    }
    for (int lane = 0; j < end; ++j, ++lane) add(lane, j);
    double sum[5] = {0, 0, 0, 0, 0}, rhs[3] = {0, 0, 0};
    for (int k = 0; k < kSums; ++k) sum[k] = (s[k][0] + s[k][1]) + (s[k][2] + s[k][3]);
    for (int k = 0; k < kRhs; ++k) rhs[k] = (t[k][0] + t[k][1]) + (t[k][2] + t[k][3]);
    return solve_local(sum, rhs, y[i], Degree);
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
    // Finite data take the unrolled sums; an infinity or NaN the general loop, whose
    // skipping of zero weights keeps what such a value does to its neighbours' fits.
    bool finite = true;
    for (std::size_t k = 0; k < m; ++k)
        finite = finite && std::isfinite(x[k]) && std::isfinite(y[k]);
    util::ProgressReport progress("Smoothing...", "Smooth", m * (iterations + 1u),
                                  std::max<std::size_t>(n / 100, 1), show_progress && n >= 10000);
    for (int it = 0; it <= iterations; ++it) {
        std::size_t lo = 0;
        for (std::size_t i = 0; i < m; ++i) {
            while (lo + q < m && x[i] - x[lo] > x[lo + q] - x[i]) ++lo;
            fit[i] = !finite ? local_fit(x, y, robust, i, lo, q, degree)
                     : degree == 1
                         ? local_fit_finite<1>(x.data(), y.data(), robust.data(), i, lo, q)
                         : local_fit_finite<2>(x.data(), y.data(), robust.data(), i, lo, q);
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
