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
#include <cstdarg>
#include <cstdint>
#include <vector>

#include "core/guard.hpp"
#include "core/missing.hpp"
#include "gridding/interpolate.hpp"
#include "signal/integration.hpp"
#include "signal/peaks.hpp"
#include "zemath/peaks.h"
#include "zemath/smoothing.h"
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
            // The documented rule (zemath/baseline.h): within 5% of the ranges of y and y'.
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

namespace zemath {
namespace {

bool usable_value(double v) {
    return !is_missing(v) && !std::isnan(v);
}

// Indices of the points whose |Y''| is within fraction of the range of Y'' (usable points
// only) into indices; returns the count.
int small_curvature_points(std::span<const double> y, std::span<const double> curvature,
                           double fraction, int* indices) {
    double lo = 0.0, hi = 0.0;
    bool any = false;
    for (std::size_t i = 0; i < curvature.size(); ++i) {
        const double c = curvature[i];
        if (!usable_value(c) || !usable_value(y[i])) continue;
        lo = any ? std::min(lo, c) : c;
        hi = any ? std::max(hi, c) : c;
        any = true;
    }
    const double limit = fraction * (hi - lo);
    int count = 0;
    for (std::size_t i = 0; i < curvature.size(); ++i)
        if (usable_value(curvature[i]) && usable_value(y[i]) && std::fabs(curvature[i]) <= limit)
            indices[count++] = static_cast<int>(i);
    return count;
}

// The baseline by masking peaks, once its variable argument list has been read.
int masking_peaks_baseline(int nSize, const double* pX, const double* pY, int nOutSize,
                           double* pBaseX, double* pBaseY, int nFlags) noexcept {
    if (pX == nullptr || pY == nullptr || pBaseX == nullptr || pBaseY == nullptr)
        return ZEMATH_ERR_NULL_POINTER;
    if (nSize < 1 || nOutSize != nSize) return ZEMATH_ERR_TOO_FEW_POINTS;
    for (int i = 0; i + 1 < nSize; ++i)
        if (!(pX[i + 1] > pX[i])) return ZEMATH_ERR_NOT_MONOTONIC;
    return guard_status([&]() -> int {
        const auto n = static_cast<std::size_t>(nSize);
        const std::span<const double> y(pY, n);
        double lo = 0.0, hi = 0.0;
        bool any = false;
        for (double v : y) {
            if (!usable_value(v)) continue;
            lo = any ? std::min(lo, v) : v;
            hi = any ? std::max(hi, v) : v;
            any = true;
        }
        double range = std::fabs(hi - lo);
        if (range == 0.0 || !std::isfinite(range)) range = 1.0;
        double noise = noise_level(y);
        if (is_missing(noise) || !std::isfinite(noise)) noise = 0.0;
        // Kept deliberately: the partition's patience is the integer part of
        // noise / (0.005 * range) * 25 (25 points at a noise of 0.5% of the range).
        const double patience = std::trunc(noise / (0.005 * range) * 25.0);
        const int threshold =
            patience < static_cast<double>(nSize) ? static_cast<int>(patience) : nSize;
        std::vector<char> masked(n, 0);
        for (std::size_t i = 0; i < n; ++i) masked[i] = !usable_value(pY[i]);
        std::vector<double> peak_x(n), peak_y(n);
        std::vector<int> peak_index(n);
        for (int pass = 0; pass < 2; ++pass) {
            const int direction = pass == 0 ? kPeakPositive : kPeakNegative;
            if (!(nFlags & direction) || nSize < 3) continue;  // no peak fits in 2 points
            // One search per direction so that each peak's kind is known; the
            // unsmoothed derivative (the smoothing settings 11 and 2 are not used).
            int count = nSize;
            const int status = zemath_find_peaks_1st_derivative(
                &count, pX, pY, peak_x.data(), peak_y.data(), peak_index.data(),
                (nFlags & ~(kPeakPositive | kPeakNegative)) | direction, false, 11, 2);
            if (status != ZEMATH_OK) return status;
            for (int k = 0; k < count; ++k) {
                std::size_t left = 0, right = 0;
                if (!peak_partition(y, static_cast<std::size_t>(peak_index[k]),
                                    direction == kPeakPositive, threshold, left, right))
                    continue;  // a peak whose partition fails is skipped
                // The extent widened by half its width on each side.
                const auto l = static_cast<std::int64_t>(left),
                           r = static_cast<std::int64_t>(right);
                const std::int64_t m = (l + r) / 2;
                const std::int64_t from = std::max<std::int64_t>(2 * l - m, 0);
                const std::int64_t to = std::min<std::int64_t>(2 * r - m, nSize - 1);
                for (std::int64_t i = from + 1; i < to; ++i)
                    masked[static_cast<std::size_t>(i)] = 1;
            }
        }
        std::vector<double> kept_x, kept_y;
        for (std::size_t i = 0; i < n; ++i) {
            if (masked[i]) continue;
            kept_x.push_back(pX[i]);
            kept_y.push_back(pY[i]);
        }
        if (kept_x.empty()) return ZEMATH_ERR_NO_USABLE_VALUE;
        std::vector<double> base(n, kept_y[0]);
        if (kept_x.size() >= 2)
            interpolate_clean(kept_x, kept_y, {pX, n}, base, InterpMethod::linear,
                              InterpOutside::hold);
        std::copy(pX, pX + n, pBaseX);  // pBaseX may be pX
        std::copy(base.begin(), base.end(), pBaseY);
        return ZEMATH_OK;
    });
}

}  // namespace
}  // namespace zemath

// Kept deliberately a variable argument list after nSize: hosts call it that way. Exactly
// the six arguments documented in the header are read.
ZEMATH_API int zemath_create_baseline_by_masking_peaks(int nSize, ...) noexcept {
    std::va_list args;
    va_start(args, nSize);
    const auto* const pX = va_arg(args, const double*);
    const auto* const pY = va_arg(args, const double*);
    const int nOutSize = va_arg(args, int);
    auto* const pBaseX = va_arg(args, double*);
    auto* const pBaseY = va_arg(args, double*);
    const int nFlags = va_arg(args, int);
    va_end(args);
    return zemath::masking_peaks_baseline(nSize, pX, pY, nOutSize, pBaseX, pBaseY, nFlags);
}

ZEMATH_API int zemath_create_baseline_end_weighted_linear(int nSize, const double* pX,
                                                          const double* pY, int nEndPoints,
                                                          double* pBase) noexcept {
    if (pX == nullptr || pY == nullptr || pBase == nullptr) return ZEMATH_ERR_NULL_POINTER;
    if (nSize < 2 || nEndPoints < 1 || nEndPoints > nSize / 2) return ZEMATH_ERR_TOO_FEW_POINTS;
    // Each end carries half the total weight however many of its points are usable.
    double end_weight[2] = {0.0, 0.0};
    for (int side = 0; side < 2; ++side) {
        int usable = 0;
        for (int k = 0; k < nEndPoints; ++k) {
            const int i = side == 0 ? k : nSize - 1 - k;
            if (usable_value(pX[i]) && usable_value(pY[i])) ++usable;
        }
        end_weight[side] = usable > 0 ? 1.0 / usable : 0.0;
    }
    if (end_weight[0] == 0.0 && end_weight[1] == 0.0) return ZEMATH_ERR_NO_USABLE_VALUE;
    const auto each_point = [&](auto&& visit) {
        for (int side = 0; side < 2; ++side)
            for (int k = 0; k < nEndPoints; ++k) {
                const int i = side == 0 ? k : nSize - 1 - k;
                if (usable_value(pX[i]) && usable_value(pY[i]))
                    visit(end_weight[side], pX[i], pY[i]);
            }
    };
    // Weighted least squares about the weighted means (two passes for accuracy).
    double total = 0.0, mean_x = 0.0, mean_y = 0.0;
    each_point([&](double w, double x, double y) {
        total += w;
        mean_x += w * x;
        mean_y += w * y;
    });
    mean_x /= total;
    mean_y /= total;
    double sxx = 0.0, sxy = 0.0;
    each_point([&](double w, double x, double y) {
        sxx += w * (x - mean_x) * (x - mean_x);
        sxy += w * (x - mean_x) * (y - mean_y);
    });
    const double slope = sxx > 0.0 ? sxy / sxx : 0.0;
    for (int i = 0; i < nSize; ++i)
        pBase[i] = is_missing(pX[i]) ? kNanum : mean_y + slope * (pX[i] - mean_x);
    return ZEMATH_OK;
}

ZEMATH_API int zemath_find_baseline_part_by_small_curvature(int nSize, const double* pX,
                                                            const double* pY, double dFraction,
                                                            int* pIndices) noexcept {
    if (pX == nullptr || pY == nullptr || pIndices == nullptr) return ZEMATH_ERR_NULL_POINTER;
    if (nSize < 3) return ZEMATH_ERR_TOO_FEW_DERIV;
    if (!(dFraction >= 0.0)) return ZEMATH_ERR_PARAM_RANGE;
    return guard_status([&] {
        const auto n = static_cast<std::size_t>(nSize);
        std::vector<double> curvature(pY, pY + n);
        int status = derivative_in_place({pX, n}, curvature, 0);
        if (status == ZEMATH_OK) status = derivative_in_place({pX, n}, curvature, 0);
        if (status != ZEMATH_OK) return status;
        return small_curvature_points({pY, n}, curvature, dFraction, pIndices);
    });
}

ZEMATH_API int zemath_find_baseline_part_by_small_curvature2(int nSize, const double* pX,
                                                             const double* pY, double dFraction,
                                                             int nSGPoints, int nSGOrder,
                                                             int* pIndices) noexcept {
    if (pX == nullptr || pY == nullptr || pIndices == nullptr) return ZEMATH_ERR_NULL_POINTER;
    if (nSize < 3) return ZEMATH_ERR_TOO_FEW_DERIV;
    if (!(dFraction >= 0.0)) return ZEMATH_ERR_PARAM_RANGE;
    if (nSGPoints <= 3 || nSGOrder < 2 || nSGOrder >= nSGPoints)
        return ZEMATH_ERR_NEGATIVE_SMOOTHING;
    return guard_status([&] {
        const auto n = static_cast<std::size_t>(nSize);
        std::vector<double> curvature(n);
        const int side = (nSGPoints - 1) / 2;
        const int status = zemath_savitsky_golay_derivative(pX, pY, curvature.data(), nSize, side,
                                                            side, nSGOrder, 2, false);
        if (status != ZEMATH_OK) return status;
        return small_curvature_points({pY, n}, curvature, dFraction, pIndices);
    });
}

ZEMATH_API double zemath_get_noise_level_of_flat_part(int nSize, const double* pY,
                                                      int nSegment) noexcept {
    if (pY == nullptr || nSegment < 3 || nSegment > nSize) return kNanum;
    return guard_value([&] {
        // Consecutive segments of nSegment points (a shorter remainder joins the last one);
        // the flattest is the one of smallest usable range (first among equals) holding at
        // least two usable values.
        const int segments = nSize / nSegment;
        int best_start = -1, best_end = -1;
        double best_range = 0.0;
        for (int s = 0; s < segments; ++s) {
            const int start = s * nSegment;
            const int end = s + 1 == segments ? nSize : start + nSegment;
            double lo = 0.0, hi = 0.0;
            int usable = 0;
            for (int i = start; i < end; ++i) {
                const double v = pY[i];
                if (!usable_value(v)) continue;
                lo = usable ? std::min(lo, v) : v;
                hi = usable ? std::max(hi, v) : v;
                ++usable;
            }
            if (usable < 2) continue;
            const double range = hi - lo;
            if (best_start < 0 || range < best_range) {
                best_start = start;
                best_end = end;
                best_range = range;
            }
        }
        if (best_start < 0) return kNanum;
        return noise_level({pY + best_start, static_cast<std::size_t>(best_end - best_start)});
    });
}
