// Baselines under peaks: the straight line through the ends, the low-and-flat points of a
// smooth curve, base markers where the curve meets a baseline, and a robust noise level.
// Method of the noise level: the median absolute successive difference, scaled so that it
// estimates the standard deviation of white Gaussian noise (for iid N(0, s^2) noise the
// differences are N(0, 2 s^2), whose median absolute value is 0.6745 * sqrt(2) * s).
// Failure codes: -11 null pointer, -5 marker count, -6 peak index, -7/-8 derivative,
// -18 sizes, -19 allocation.
#include "signal/baseline.hpp"

#include <algorithm>
#include <cmath>
#include <vector>

#include "core/guard.hpp"
#include "core/missing.hpp"
#include "signal/integration.hpp"
#include "zemath/baseline.h"
#include "zemath/status.h"

namespace zemath {

double noise_level(std::span<const double> y) {
    std::vector<double> steps;
    steps.reserve(y.size());
    double previous = 0.0;
    bool have_previous = false;
    for (double v : y) {
        if (is_missing(v) || std::isnan(v)) continue;
        if (have_previous) steps.push_back(std::fabs(v - previous));
        previous = v;
        have_previous = true;
    }
    if (steps.empty()) return kNanum;
    const std::size_t m = steps.size();
    const auto middle = steps.begin() + static_cast<std::ptrdiff_t>(m / 2);
    std::nth_element(steps.begin(), middle, steps.end());
    double median = *middle;
    if (m % 2 == 0) median = 0.5 * (median + *std::max_element(steps.begin(), middle));
    // 0.6745 = the standard normal's upper quartile: median |N(0,1)|.
    return median / (0.6744897501960817 * std::sqrt(2.0));
}

}  // namespace zemath

using namespace zemath;

ZEMATH_API int zemath_init_baseline_by_connect_ends(int nSize, const double* pX, const double* pY,
                                                    int nBase, double* pBaseX,
                                                    double* pBaseY) noexcept {
    if (pX == nullptr || pY == nullptr || pBaseX == nullptr || pBaseY == nullptr)
        return ZEMATH_ERR_NULL_POINTER;
    if (nSize < 1 || nBase < 1) return ZEMATH_ERR_TOO_FEW_POINTS;
    const double x0 = pX[0], x1 = pX[nSize - 1], y0 = pY[0], y1 = pY[nSize - 1];
    const double step = nBase > 1 ? (x1 - x0) / (nBase - 1) : 0.0;
    for (int i = 0; i < nBase; ++i) {
        const double x = (i == nBase - 1 && nBase > 1) ? x1 : x0 + i * step;
        pBaseX[i] = x;
        pBaseY[i] = x1 == x0 ? y0 : (x - x0) * (y1 - y0) / (x1 - x0) + y0;
    }
    return ZEMATH_OK;
}

ZEMATH_API int zemath_find_baseline_part_in_smooth_curve(int nSize, const double* pX,
                                                         const double* pY, int* pIndices) noexcept {
    if (pX == nullptr || pY == nullptr || pIndices == nullptr) return ZEMATH_ERR_NULL_POINTER;
    if (nSize < 2) return ZEMATH_ERR_TOO_FEW_DERIV;
    return guard_status([&] {
        const std::size_t n = static_cast<std::size_t>(nSize);
        std::vector<double> slope(pY, pY + n);
        const int status = derivative_in_place({pX, n}, slope, 0);
        if (status != ZEMATH_OK) return status;
        const auto range = [](std::span<const double> v) {
            double lo = 0.0, hi = 0.0;
            bool any = false;
            for (double a : v) {
                if (is_missing(a)) continue;
                if (!any || a < lo) lo = a;
                if (!any || a > hi) hi = a;
                any = true;
            }
            return hi - lo;
        };
        const double y_range = range({pY, n}), slope_range = range(slope);
        int count = 0;
        for (std::size_t i = 0; i < n; ++i) {
            if (is_missing(pY[i]) || is_missing(slope[i])) continue;
            if (std::fabs(pY[i]) < 0.05 * y_range && std::fabs(slope[i]) < 0.05 * slope_range)
                pIndices[count++] = static_cast<int>(i);
        }
        return count;
    });
}

ZEMATH_API int zemath_make_base_markers(int* pMarkers, double* pMarkerX, double* pMarkerY,
                                        int nMarkers, const int* pPeakIndices, int nPeaks,
                                        const double* pX, const double* pY, const int* pOption,
                                        const double* pBase, int nSize) noexcept {
    if (pMarkers == nullptr || pMarkerX == nullptr || pMarkerY == nullptr ||
        pPeakIndices == nullptr || pX == nullptr || pY == nullptr || pOption == nullptr ||
        pBase == nullptr)
        return ZEMATH_ERR_NULL_POINTER;
    if (static_cast<long long>(nMarkers) != 2LL * nPeaks) return ZEMATH_ERR_SIZE_MISMATCH;
    if (nSize < 1 || nPeaks < 0) return ZEMATH_ERR_TOO_FEW_POINTS;
    for (int k = 0; k < nPeaks; ++k)
        if (pPeakIndices[k] < 0 || pPeakIndices[k] >= nSize) return ZEMATH_ERR_EMPTY_RANGE;
    double total = 0.0;
    for (int i = 0; i + 1 < nSize; ++i) total += std::fabs(pY[i + 1] - pY[i]);
    const double tolerance = nSize > 1 ? 0.5 * total / (nSize - 1) : 0.0;
    const auto off_base = [&](int i) { return std::fabs(pY[i] - pBase[i]) > tolerance; };
    for (int k = 0; k < nPeaks; ++k) {
        const int p = pPeakIndices[k];
        int left = p, right = p;
        if (off_base(p)) {
            while (left >= 1) {
                --left;
                if (!off_base(left)) break;
            }
            while (right < nSize - 1) {
                ++right;
                if (!off_base(right)) break;
            }
        }
        pMarkers[2 * k] = left;
        pMarkers[2 * k + 1] = right;
        pMarkerX[2 * k] = pX[left];
        pMarkerX[2 * k + 1] = pX[right];
        pMarkerY[2 * k] = pY[left];
        pMarkerY[2 * k + 1] = pY[right];
    }
    return ZEMATH_OK;
}

ZEMATH_API double zemath_get_noise_level(int nSize, const double* pY) noexcept {
    if (pY == nullptr || nSize < 2) return kNanum;
    return guard_value([&] { return noise_level({pY, static_cast<std::size_t>(nSize)}); });
}

ZEMATH_API int zemath_check_linear(int nSize, const double* pX, const double* pY, int nStart,
                                   double dAbsTolerance, double dRelTolerance,
                                   int nOption) noexcept {
    if (pX == nullptr || pY == nullptr) return ZEMATH_ERR_NULL_POINTER;
    if (nStart < 0 || nStart >= nSize) return ZEMATH_ERR_TOO_FEW_POINTS;
    if (nOption != 0 && nOption != 1) return ZEMATH_ERR_BAD_OPTION;
    double lo = pY[0], hi = pY[0];
    for (int i = 1; i < nSize; ++i) {
        lo = std::min(lo, pY[i]);
        hi = std::max(hi, pY[i]);
    }
    const double tolerance = dAbsTolerance + dRelTolerance * (hi - lo);
    // Running sums of the run, centred on its first point for accuracy.
    const double x0 = pX[nStart], y0 = pY[nStart];
    double sx = 0.0, sy = 0.0, sxx = 0.0, sxy = 0.0;
    int count = 1, end = nStart;
    for (int i = nStart + 1; i < nSize; ++i) {
        const double dx = pX[i] - x0, dy = pY[i] - y0;
        if (count >= 2) {
            double predicted;
            if (nOption == 0) {
                const double m = count;
                const double denominator = m * sxx - sx * sx;
                const double slope = denominator != 0.0 ? (m * sxy - sx * sy) / denominator : 0.0;
                predicted = (sy - slope * sx) / m + slope * dx;
            } else {
                const double ex = pX[end] - x0, ey = pY[end] - y0;
                predicted = ex != 0.0 ? ey * dx / ex : ey;
            }
            if (!(std::fabs(dy - predicted) <= tolerance)) break;
        }
        sx += dx;
        sy += dy;
        sxx += dx * dx;
        sxy += dx * dy;
        ++count;
        end = i;
    }
    return end;
}

ZEMATH_API int zemath_find_base_regions(int nSize, const double* pX, const double* pY,
                                        int nMinPoints, int nMaxRegions, int* pStart, int* pEnd,
                                        double dTolerance1, double dTolerance2,
                                        int nOption) noexcept {
    if (pX == nullptr || pY == nullptr || pStart == nullptr || pEnd == nullptr)
        return ZEMATH_ERR_NULL_POINTER;
    const int step = std::max(static_cast<int>(std::lround(nMinPoints / 3.0)), 1);
    int regions = 0;
    for (int s = 0; static_cast<long long>(s) < static_cast<long long>(nSize) - step;) {
        const int e = zemath_check_linear(nSize, pX, pY, s, dTolerance2, dTolerance1, nOption);
        if (e < 0) return e;
        if (e - s > nMinPoints) {
            if (regions >= nMaxRegions) return ZEMATH_ERR_TOO_MANY_REGIONS;
            pStart[regions] = s;
            pEnd[regions] = e;
            ++regions;
            s = e + 1;
        } else {
            s += step;
        }
    }
    return regions;
}
