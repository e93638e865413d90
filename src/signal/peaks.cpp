// Peak finding on a curve (X, Y) and the peak-list filters.
//
// Method: the local-maximum and local-extreme detectors slide a window of 2h+1 points and
// report the centres that are the window's leftmost maximum (or minimum). The window
// extremes come from two monotonic deques (van Herk / Gil-Werman style running extremes,
// amortised O(1) per point), which give exactly the answers of the running tracker that
// rescans a window whose extreme has left it; only data holding NaN take the rescan
// itself. The search-window detector turns a width in X units into an odd number of
// points on evenly spaced (or made evenly spaced) data, scans every point with a window
// that shrinks at the ends and keeps candidates that stand high enough above both window
// ends. Results are mapped back to the caller's point indices.
// Failure codes: -11 null pointer, -18 sizes and windows, -25 more peaks kept than exist,
// -6 an index past the data, -19 allocation.
#include "signal/peaks.hpp"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <iterator>
#include <set>
#include <vector>

#include "core/guard.hpp"
#include "core/missing.hpp"
#include "frame/nrvec.hpp"
#include "frame/primitives.hpp"
#include "frame/search.hpp"
#include "frame/sort.hpp"
#include "gridding/interpolate.hpp"
#include "signal/integration.hpp"
#include "zemath/smoothing.h"
#include "zemath/peaks.h"
#include "zemath/status.h"

namespace zemath {

namespace {

bool has_nan(std::span<const double> y) {
    for (double v : y)
        if (std::isnan(v)) return true;
    return false;
}

// The running tracker itself: used only when NaN makes the comparisons non-transitive.
void rescan_extremes(std::span<const double> y, int half, std::span<int> max_index,
                     std::span<int> min_index) {
    const std::size_t width = 2 * static_cast<std::size_t>(half);
    const std::size_t n = y.size();
    std::size_t imax = 0, imin = 0;
    for (std::size_t j = 1; j <= width; ++j) {
        if (y[j] > y[imax]) imax = j;
        if (y[j] < y[imin]) imin = j;
    }
    max_index[0] = static_cast<int>(imax);
    min_index[0] = static_cast<int>(imin);
    for (std::size_t p = 1; p + width < n; ++p) {
        const std::size_t entering = p + width;
        if (y[entering] > y[imax]) imax = entering;
        if (y[entering] < y[imin]) imin = entering;
        if (imax == p - 1) {
            imax = p;
            for (std::size_t j = p + 1; j <= entering; ++j)
                if (y[j] > y[imax]) imax = j;
        }
        if (imin == p - 1) {
            imin = p;
            for (std::size_t j = p + 1; j <= entering; ++j)
                if (y[j] < y[imin]) imin = j;
        }
        max_index[p] = static_cast<int>(imax);
        min_index[p] = static_cast<int>(imin);
    }
}

// Leftmost extremes of windows [start, end] whose ends never move left. Values failing
// `usable` are never pushed. Each index is pushed and popped once. Either extreme may be
// left untracked (then its accessor must not be called).
class MonotoneWindow {
  public:
    MonotoneWindow(std::span<const double> y, bool track_max = true, bool track_min = true)
        : y_(y),
          track_max_(track_max),
          track_min_(track_min),
          max_queue_(track_max ? y.size() : 0),
          min_queue_(track_min ? y.size() : 0) {}

    void advance(std::size_t start, std::size_t end_inclusive, bool skip_nan) {
        for (; next_ <= end_inclusive; ++next_) {
            const double v = y_[next_];
            if (skip_nan && std::isnan(v)) continue;
            const auto index = static_cast<int>(next_);
            // Strict comparisons keep the earlier of equal values in front: leftmost wins.
            if (track_max_) {
                while (max_tail_ > max_head_ && y_[idx(max_queue_[max_tail_ - 1])] < v) --max_tail_;
                max_queue_[max_tail_++] = index;
            }
            if (track_min_) {
                while (min_tail_ > min_head_ && y_[idx(min_queue_[min_tail_ - 1])] > v) --min_tail_;
                min_queue_[min_tail_++] = index;
            }
        }
        if (track_max_)
            while (max_head_ < max_tail_ && idx(max_queue_[max_head_]) < start) ++max_head_;
        if (track_min_)
            while (min_head_ < min_tail_ && idx(min_queue_[min_head_]) < start) ++min_head_;
    }
    bool empty() const { return track_max_ ? max_head_ == max_tail_ : min_head_ == min_tail_; }
    std::size_t max_at() const { return idx(max_queue_[max_head_]); }
    std::size_t min_at() const { return idx(min_queue_[min_head_]); }

  private:
    static std::size_t idx(int i) { return static_cast<std::size_t>(i); }
    std::span<const double> y_;
    bool track_max_, track_min_;
    std::vector<int> max_queue_, min_queue_;
    std::size_t max_head_ = 0, max_tail_ = 0, min_head_ = 0, min_tail_ = 0, next_ = 0;
};

}  // namespace

void sliding_window_extremes(std::span<const double> y, int half, std::span<int> max_index,
                             std::span<int> min_index) {
    half = std::max(half, 1);
    const std::size_t width = 2 * static_cast<std::size_t>(half);
    if (y.size() <= width) return;
    if (has_nan(y)) {
        rescan_extremes(y, half, max_index, min_index);
        return;
    }
    MonotoneWindow window(y);
    for (std::size_t p = 0; p + width < y.size(); ++p) {
        window.advance(p, p + width, false);
        max_index[p] = static_cast<int>(window.max_at());
        min_index[p] = static_cast<int>(window.min_at());
    }
}

std::vector<int> local_extreme_centres(std::span<const double> y, int half, int flags,
                                       bool sign_rule) {
    half = std::max(half, 1);
    std::vector<int> centres;
    const std::size_t width = 2 * static_cast<std::size_t>(half);
    if (y.size() <= width + 1) return centres;
    const std::size_t windows = y.size() - width;
    const auto report = [&](std::size_t p, std::size_t max_at, std::size_t min_at) {
        const std::size_t c = p + static_cast<std::size_t>(half);
        const double v = y[c];
        if ((flags & kPeakPositive) && max_at == c && (!sign_rule || v > 0.0))
            centres.push_back(static_cast<int>(c));
        else if ((flags & kPeakNegative) && min_at == c && (!sign_rule || v < 0.0))
            centres.push_back(static_cast<int>(c));
    };
    if (has_nan(y)) {
        std::vector<int> max_index(windows), min_index(windows);
        rescan_extremes(y, half, max_index, min_index);
        for (std::size_t p = 0; p < windows; ++p)
            report(p, static_cast<std::size_t>(max_index[p]),
                   static_cast<std::size_t>(min_index[p]));
        return centres;
    }
    // Only the extremes the flags ask for are tracked.
    const bool want_max = flags & kPeakPositive, want_min = flags & kPeakNegative;
    if (!want_max && !want_min) return centres;
    MonotoneWindow window(y, want_max, want_min);
    const std::size_t none = y.size();
    for (std::size_t p = 0; p < windows; ++p) {
        window.advance(p, p + width, false);
        report(p, want_max ? window.max_at() : none, want_min ? window.min_at() : none);
    }
    return centres;
}

std::vector<int> search_window_peaks(std::span<const double> y, int half, int flags,
                                     double min_height) {
    std::vector<int> peaks;
    const std::size_t n = y.size();
    const bool sign_rule = !(flags & kPeakIgnoreSign);
    const std::size_t h = static_cast<std::size_t>(std::max(half, 0));
    MonotoneWindow window(y);
    for (std::size_t i = 0; i < n; ++i) {
        const std::size_t hw = std::min({i, h, n - 1 - i});
        window.advance(i - hw, i + hw, true);
        if (window.empty()) continue;
        const double v = y[i];
        const bool candidate =
            ((flags & kPeakPositive) && window.max_at() == i && (!sign_rule || v > 0.0)) ||
            ((flags & kPeakNegative) && window.min_at() == i && (!sign_rule || v < 0.0));
        if (!candidate) continue;
        if (std::fabs(v - y[i + hw]) >= min_height && std::fabs(v - y[i - hw]) >= min_height)
            peaks.push_back(static_cast<int>(i));
    }
    return peaks;
}

double kth_order_statistic(std::span<const double> values, std::size_t k, bool ascending) {
    std::vector<double> copy(values.begin(), values.end());
    const auto numbers_end =
        std::stable_partition(copy.begin(), copy.end(), [](double v) { return !std::isnan(v); });
    const std::size_t numbers = static_cast<std::size_t>(numbers_end - copy.begin());
    if (k >= numbers) return copy[k];  // a NaN: NaN orders after every number
    const auto target = copy.begin() + static_cast<std::ptrdiff_t>(k);
    if (ascending)
        std::nth_element(copy.begin(), target, numbers_end);
    else
        std::nth_element(copy.begin(), target, numbers_end, std::greater<double>());
    return *target;
}

namespace {

// The curve in increasing X order: the caller's arrays when already so, else a copy sorted
// by X (stable, Y carried along) with the permutation kept.
struct PreparedCurve {
    std::span<const double> x, y;
    NRVec<double> sorted_x, sorted_y;
    NRVec<int> order;  // order[k]: caller's index of sorted point k
    bool sorted = false;
};

void sort_by_x(PreparedCurve& curve, const double* x, const double* y, int n) {
    curve.sorted_x = NRVec<double>(n);
    curve.sorted_y = NRVec<double>(n);
    std::copy(x, x + n, curve.sorted_x.data());
    sort_with_index(curve.sorted_x, curve.order, true, 1);
    for (int k = 0; k < n; ++k) curve.sorted_y[k] = y[curve.order[k]];
    curve.x = {curve.sorted_x.data(), static_cast<std::size_t>(n)};
    curve.y = {curve.sorted_y.data(), static_cast<std::size_t>(n)};
    curve.sorted = true;
}

void prepare_increasing(PreparedCurve& curve, const double* x, const double* y, int n) {
    bool increasing = true;
    for (int i = 0; i + 1 < n && increasing; ++i) increasing = x[i + 1] >= x[i];
    if (increasing) {
        curve.x = {x, static_cast<std::size_t>(n)};
        curve.y = {y, static_cast<std::size_t>(n)};
        return;
    }
    sort_by_x(curve, x, y, n);
}

int caller_index(const PreparedCurve& curve, int k) {
    return curve.sorted ? curve.order[k] : k;
}

// Writes the peaks at the given points of the prepared curve to the caller's lists (indices
// in the caller's order) and their count to *pnSize.
int write_peaks(const PreparedCurve& curve, std::span<const int> peaks, double* pPeakX,
                double* pPeakY, int* pIndices, int* pnSize) {
    for (std::size_t k = 0; k < peaks.size(); ++k) {
        const auto i = static_cast<std::size_t>(peaks[k]);
        pPeakX[k] = curve.x[i];
        pPeakY[k] = curve.y[i];
        if (pIndices != nullptr) pIndices[k] = caller_index(curve, peaks[k]);
    }
    *pnSize = static_cast<int>(peaks.size());
    return ZEMATH_OK;
}

// Peak points in increasing order, each once.
void sort_unique(std::vector<int>& peaks) {
    std::sort(peaks.begin(), peaks.end());
    peaks.erase(std::unique(peaks.begin(), peaks.end()), peaks.end());
}

int local_detector(int* pnSize, const double* pX, const double* pY, double* pPeakX, double* pPeakY,
                   int* pIndices, int nFlags, int nHalf, bool extremes) {
    if (pnSize == nullptr || pX == nullptr || pY == nullptr || pPeakX == nullptr ||
        pPeakY == nullptr)
        return ZEMATH_ERR_NULL_POINTER;
    const int n = *pnSize;
    if (n <= 0 || nHalf < 0 || static_cast<std::int64_t>(n) <= 2 * std::int64_t{nHalf} + 1)
        return ZEMATH_ERR_TOO_FEW_POINTS;
    return guard_status([&] {
        PreparedCurve curve;
        prepare_increasing(curve, pX, pY, n);
        // Kept deliberately: the extremes detector tracks the caller's Y in the given order
        // and takes only the outputs from the sorted copy; callers rely on that.
        const std::span<const double> tracked =
            extremes ? std::span<const double>(pY, static_cast<std::size_t>(n)) : curve.y;
        const bool sign_rule = !extremes && !(nFlags & kPeakIgnoreSign);
        const std::vector<int> centres = local_extreme_centres(tracked, nHalf, nFlags, sign_rule);
        return write_peaks(curve, centres, pPeakX, pPeakY, pIndices, pnSize);
    });
}

// The caller's point standing for a peak found on the even grid: of the two caller points
// nearest in X (first index on equal distances), the higher one for a peak with Y > 0, the
// lower one otherwise (the nearer on equal Y). Caller X is strictly monotonic here.
int nearest_caller_point(const double* x, const double* y, int n, double peak_x, double peak_y) {
    const bool ascending = x[n - 1] > x[0];
    int lo = 0, hi = n;  // first position not before peak_x in the direction of x
    while (lo < hi) {
        const int mid = lo + (hi - lo) / 2;
        if (ascending ? x[mid] < peak_x : x[mid] > peak_x)
            lo = mid + 1;
        else
            hi = mid;
    }
    int best = -1, second = -1;
    double best_d = 0.0, second_d = 0.0;
    for (int i = std::max(lo - 2, 0); i <= std::min(lo + 1, n - 1); ++i) {
        const double d = std::fabs(x[i] - peak_x);
        if (best < 0 || d < best_d) {
            second = best;
            second_d = best_d;
            best = i;
            best_d = d;
        } else if (second < 0 || d < second_d) {
            second = i;
            second_d = d;
        }
    }
    if (second < 0) return best;
    if (peak_y > 0.0) return y[second] > y[best] ? second : best;
    return y[second] < y[best] ? second : best;
}

}  // namespace

}  // namespace zemath

using namespace zemath;

ZEMATH_API int zemath_find_peaks_by_local_maximum(int* pnSize, const double* pX, const double* pY,
                                                  double* pPeakX, double* pPeakY, int* pIndices,
                                                  int nFlags, int nHalf) noexcept {
    return local_detector(pnSize, pX, pY, pPeakX, pPeakY, pIndices, nFlags, nHalf, false);
}

ZEMATH_API int zemath_find_local_extremes(int* pnSize, const double* pX, const double* pY,
                                          double* pPeakX, double* pPeakY, int* pIndices, int nFlags,
                                          int nHalf) noexcept {
    return local_detector(pnSize, pX, pY, pPeakX, pPeakY, pIndices, nFlags, nHalf, true);
}

ZEMATH_API int zemath_find_peaks_by_search_window(int* pnSize, const double* pX, const double* pY,
                                                  double* pPeakX, double* pPeakY, int* pIndices,
                                                  int nFlags, double dWindowWidth,
                                                  double dMinHeight) noexcept {
    if (pnSize == nullptr || pX == nullptr || pY == nullptr || pPeakX == nullptr ||
        pPeakY == nullptr)
        return ZEMATH_ERR_NULL_POINTER;
    const int n = *pnSize;
    if (n < 3) return ZEMATH_ERR_TOO_FEW_POINTS;
    return guard_status([&]() -> int {
        const std::size_t count = static_cast<std::size_t>(n);
        const std::span<const double> caller_x(pX, count);
        PreparedCurve curve;
        std::vector<double> grid_x, grid_y;
        bool interpolated = false;
        double step = 0.0;
        // Evenly spaced within the relative 1e-8 that zemath/peaks.h documents.
        const Spacing spacing = get_vector_inc(caller_x, 1e-8);
        if (spacing.result == 1 || spacing.result == -1) {
            curve.x = caller_x;
            curve.y = {pY, count};
            step = spacing.increment;
        } else if (spacing.result == 2 || spacing.result == -2) {
            step = (pX[n - 1] - pX[0]) / static_cast<double>(n - 1);
            grid_x.resize(count);
            grid_y.resize(count);
            for (int i = 0; i < n; ++i) grid_x[static_cast<std::size_t>(i)] = pX[0] + i * step;
            grid_x[count - 1] = pX[n - 1];
            std::vector<double> ascending_x(pX, pX + n), ascending_y(pY, pY + n);
            if (spacing.result < 0) {
                std::reverse(ascending_x.begin(), ascending_x.end());
                std::reverse(ascending_y.begin(), ascending_y.end());
            }
            const int status = interpolate(ascending_x, ascending_y, grid_x, grid_y,
                                           InterpMethod::linear, InterpOutside::hold);
            if (status != ZEMATH_OK) return status;
            curve.x = grid_x;
            curve.y = grid_y;
            interpolated = true;
        } else {
            sort_by_x(curve, pX, pY, n);
            step = (curve.x[count - 1] - curve.x[0]) / static_cast<double>(n - 1);
        }
        // Window in points: rounded to nearest, made odd.
        const double points = std::round(dWindowWidth / std::fabs(step));
        if (!(points >= 0.0) || points > static_cast<double>(n)) return ZEMATH_ERR_TOO_FEW_POINTS;
        int window = static_cast<int>(points);
        if (window % 2 == 0) ++window;
        if (window > n) return ZEMATH_ERR_TOO_FEW_POINTS;
        const std::vector<int> peaks = search_window_peaks(curve.y, window / 2, nFlags, dMinHeight);
        for (std::size_t k = 0; k < peaks.size(); ++k) {
            const int i = peaks[k];
            double peak_y = curve.y[static_cast<std::size_t>(i)];
            int index = caller_index(curve, i);
            if (interpolated) {
                index =
                    nearest_caller_point(pX, pY, n, curve.x[static_cast<std::size_t>(i)], peak_y);
                peak_y = pY[index];
            }
            pPeakX[k] = curve.x[static_cast<std::size_t>(i)];
            pPeakY[k] = peak_y;
            if (pIndices != nullptr) pIndices[k] = index;
        }
        *pnSize = static_cast<int>(peaks.size());
        return ZEMATH_OK;
    });
}

namespace {

// Reorders the peak list by |Y|, largest first (stable: equal magnitudes keep their
// order). Entries flagged in `marked` first become NANUM with index 0. Storage is taken
// before the first write, so an allocation failure leaves the list as it was.
void order_by_magnitude(int n, double* x, double* y, int* indices,
                        const std::vector<char>* marked) {
    std::vector<double> old_x(x, x + n), old_y(y, y + n);
    std::vector<int> old_index(indices, indices + n);
    NRVec<double> keys(n);
    NRVec<int> order(n);
    for (int k = 0; k < n; ++k) {
        const auto at = static_cast<std::size_t>(k);
        if (marked != nullptr && (*marked)[at]) {
            old_x[at] = kNanum;
            old_y[at] = kNanum;
            old_index[at] = 0;
        }
        keys[k] = std::fabs(old_y[at]);
    }
    sort_with_index(keys, order, false, 1);
    for (int k = 0; k < n; ++k) {
        const auto from = static_cast<std::size_t>(order[k]);
        x[k] = old_x[from];
        y[k] = old_y[from];
        indices[k] = old_index[from];
    }
}

}  // namespace

ZEMATH_API int zemath_test_peaks_by_height(int* pnPeaks, double* pPeakX, double* pPeakY,
                                           int* pIndices, double dMinHeight) noexcept {
    if (pnPeaks == nullptr || pPeakX == nullptr || pPeakY == nullptr || pIndices == nullptr)
        return ZEMATH_ERR_NULL_POINTER;
    const int n = *pnPeaks;
    if (n < 1) return ZEMATH_ERR_TOO_FEW_POINTS;
    return guard_status([&] {
        std::vector<char> marked(static_cast<std::size_t>(n));
        for (int k = 0; k < n; ++k)
            marked[static_cast<std::size_t>(k)] = std::fabs(pPeakY[k]) < dMinHeight;
        order_by_magnitude(n, pPeakX, pPeakY, pIndices, &marked);
        // Kept deliberately: the count is the position of the first index 0, so a kept
        // peak at the caller's point 0 also ends the list; callers rely on this.
        for (int k = 0; k < n; ++k) {
            if (pIndices[k] == 0) {
                *pnPeaks = k;
                break;
            }
        }
        return ZEMATH_OK;
    });
}

ZEMATH_API int zemath_test_peaks_by_number(int nPeaks, double* pPeakX, double* pPeakY,
                                           int* pIndices, int nKeep) noexcept {
    if (pPeakX == nullptr || pPeakY == nullptr || pIndices == nullptr)
        return ZEMATH_ERR_NULL_POINTER;
    if (nPeaks < 1 || nKeep < 1) return ZEMATH_ERR_TOO_FEW_POINTS;
    if (nKeep > nPeaks) return ZEMATH_ERR_TOO_MANY_REQUESTED;
    return guard_status([&] {
        order_by_magnitude(nPeaks, pPeakX, pPeakY, pIndices, nullptr);
        for (int k = nKeep; k < nPeaks; ++k) {
            pPeakX[k] = kNanum;
            pPeakY[k] = kNanum;
            pIndices[k] = -1;
        }
        return ZEMATH_OK;
    });
}

ZEMATH_API int zemath_match_peaks_centers_by_index(const double* pX, const double* pY, int nSize,
                                                   const int* pIndices, double* pPeakX,
                                                   double* pPeakY, int nPeaks) noexcept {
    if (pX == nullptr || pY == nullptr || pIndices == nullptr || pPeakX == nullptr ||
        pPeakY == nullptr)
        return ZEMATH_ERR_NULL_POINTER;
    for (int j = 0; j < nPeaks; ++j) {
        const int i = pIndices[j];
        if (i < 0 || i >= nSize) return ZEMATH_ERR_EMPTY_RANGE;
        pPeakX[j] = pX[i];
        pPeakY[j] = pY[i];
    }
    return ZEMATH_OK;
}

ZEMATH_API double zemath_find_k_min_max(const double* pData, int nSize, int k,
                                        int nDirection) noexcept {
    if (pData == nullptr || k < 0 || k >= nSize) return kNanum;
    return guard_value([&] {
        return kth_order_statistic({pData, static_cast<std::size_t>(nSize)},
                                   static_cast<std::size_t>(k), nDirection == 0);
    });
}

ZEMATH_API int zemath_find_peaks_1st_derivative(int* pnSize, const double* pX, const double* pY,
                                                double* pPeakX, double* pPeakY, int* pIndices,
                                                int nFlags, bool bSmoothDerivative, int nSGPoints,
                                                int nSGOrder) noexcept {
    if (pnSize == nullptr || pX == nullptr || pY == nullptr || pPeakX == nullptr ||
        pPeakY == nullptr)
        return ZEMATH_ERR_NULL_POINTER;
    const int n = *pnSize;
    if (n <= 0) return ZEMATH_ERR_TOO_FEW_POINTS;
    if (bSmoothDerivative && (nSGPoints <= 3 || nSGOrder <= 0 || nSGOrder >= nSGPoints))
        return ZEMATH_ERR_NEGATIVE_SMOOTHING;
    return guard_status([&]() -> int {
        const std::size_t count = static_cast<std::size_t>(n);
        PreparedCurve curve;
        prepare_increasing(curve, pX, pY, n);
        const bool sign_rule = !(nFlags & kPeakIgnoreSign);
        const auto sign_ok = [&](double v, bool maximum) {
            return !sign_rule || (maximum ? v > 0.0 : v < 0.0);
        };
        std::vector<int> peaks;
        if (bSmoothDerivative) {
            const int half = (nSGPoints - 1) / 2;
            std::vector<double> slope(count);
            const int formed = zemath_savitsky_golay_derivative(
                curve.x.data(), curve.y.data(), slope.data(), n, half, half, nSGOrder, 1, true);
            if (formed == ZEMATH_ERR_ALLOC) return formed;  // storage, not the data
            if (formed != ZEMATH_OK) return ZEMATH_ERR_PEAK_PREPARE;
            // A sign change of the smoothed slope between i and i+1: the peak is the more
            // extreme of the two points (the left one on equal Y).
            for (std::size_t pass = 0; pass < 2; ++pass) {
                const bool maximum = pass == 0;
                if (!(nFlags & (maximum ? kPeakPositive : kPeakNegative))) continue;
                for (std::size_t i = 0; i + 1 < count; ++i) {
                    const double a = slope[i], b = slope[i + 1];
                    if (is_missing(a) || is_missing(b)) continue;
                    if (maximum ? !(a > 0.0 && b <= 0.0) : !(a < 0.0 && b >= 0.0)) continue;
                    const double ya = curve.y[i], yb = curve.y[i + 1];
                    const std::size_t at = (maximum ? yb > ya : yb < ya) ? i + 1 : i;
                    if (sign_ok(curve.y[at], maximum)) peaks.push_back(static_cast<int>(at));
                }
            }
        } else {
            std::vector<double> forward(curve.y.begin(), curve.y.end()), backward = forward;
            if (derivative_in_place(curve.x, forward, 2) != ZEMATH_OK ||
                derivative_in_place(curve.x, backward, 4) != ZEMATH_OK)
                return ZEMATH_ERR_PEAK_PREPARE;
            // Rising into the point and not rising out of it: a maximum (a flat top at its
            // left point); the mirror for a minimum.
            for (std::size_t pass = 0; pass < 2; ++pass) {
                const bool maximum = pass == 0;
                if (!(nFlags & (maximum ? kPeakPositive : kPeakNegative))) continue;
                for (std::size_t i = 1; i + 1 < count; ++i) {
                    const double in = backward[i], out = forward[i];
                    if (is_missing(in) || is_missing(out)) continue;
                    if (maximum ? (in > 0.0 && out <= 0.0) : (in < 0.0 && out >= 0.0))
                        if (sign_ok(curve.y[i], maximum)) peaks.push_back(static_cast<int>(i));
                }
            }
        }
        sort_unique(peaks);
        return write_peaks(curve, peaks, pPeakX, pPeakY, pIndices, pnSize);
    });
}

namespace {

// Peaks at window extremes of the second derivative: a negative minimum of Y'' marks a
// maximum of Y (bit 1), a positive maximum of Y'' a minimum of Y (bit 2).
int second_derivative_detector(int* pnSize, const double* pX, const double* pY, double* pPeakX,
                               double* pPeakY, int* pIndices, int nFlags, int nHalf,
                               int smoothing_points, int smoothing_order) {
    if (pnSize == nullptr || pX == nullptr || pY == nullptr || pPeakX == nullptr ||
        pPeakY == nullptr)
        return ZEMATH_ERR_NULL_POINTER;
    const int n = *pnSize;
    const int half = std::max(nHalf, 1);
    if (n < 3 || nHalf < 0 || static_cast<std::int64_t>(n) <= 2 * std::int64_t{half} + 1)
        return ZEMATH_ERR_TOO_FEW_POINTS;
    if (smoothing_points != 0 &&
        (smoothing_points <= 3 || smoothing_order < 2 || smoothing_order >= smoothing_points))
        return ZEMATH_ERR_TOO_FEW_POINTS;
    return guard_status([&]() -> int {
        const std::size_t count = static_cast<std::size_t>(n);
        PreparedCurve curve;
        prepare_increasing(curve, pX, pY, n);
        std::vector<double> second(count);
        if (smoothing_points == 0) {
            std::copy(curve.y.begin(), curve.y.end(), second.begin());
            if (derivative_in_place(curve.x, second, 0) != ZEMATH_OK ||
                derivative_in_place(curve.x, second, 0) != ZEMATH_OK)
                return ZEMATH_ERR_TOO_FEW_POINTS;
        } else {
            const int side = (smoothing_points - 1) / 2;
            const int formed =
                zemath_savitsky_golay_derivative(curve.x.data(), curve.y.data(), second.data(), n,
                                                 side, side, smoothing_order, 2, false);
            if (formed == ZEMATH_ERR_ALLOC) return formed;  // storage, not the data
            if (formed != ZEMATH_OK) return ZEMATH_ERR_TOO_FEW_POINTS;
        }
        const bool sign_rule = !(nFlags & kPeakIgnoreSign);
        std::vector<int> peaks;
        const auto collect = [&](int flag, bool maximum) {
            if (!(nFlags & flag)) return;
            // Window minimum of Y'' below 0 for a maximum, window maximum above 0 otherwise.
            for (int c : local_extreme_centres(second, half,
                                               maximum ? kPeakNegative : kPeakPositive, true)) {
                const auto i = static_cast<std::size_t>(c);
                if (is_missing(second[i]) || is_missing(curve.y[i])) continue;
                if (!sign_rule || (maximum ? curve.y[i] > 0.0 : curve.y[i] < 0.0))
                    peaks.push_back(c);
            }
        };
        collect(kPeakPositive, true);
        collect(kPeakNegative, false);
        sort_unique(peaks);
        return write_peaks(curve, peaks, pPeakX, pPeakY, pIndices, pnSize);
    });
}

}  // namespace

ZEMATH_API int zemath_find_peaks_2nd_derivative(int* pnSize, const double* pX, const double* pY,
                                                double* pPeakX, double* pPeakY, int* pIndices,
                                                int nFlags, int nHalf) noexcept {
    return second_derivative_detector(pnSize, pX, pY, pPeakX, pPeakY, pIndices, nFlags, nHalf, 0,
                                      0);
}

ZEMATH_API int zemsp_find_peaks_2nd_derivative(int* pnSize, const double* pX, const double* pY,
                                               double* pPeakX, double* pPeakY, int* pIndices,
                                               int nFlags, int nHalf, int nSGPoints,
                                               int nSGOrder) noexcept {
    if (nSGPoints == 0) nSGPoints = -1;  // 0 would select the unsmoothed path
    return second_derivative_detector(pnSize, pX, pY, pPeakX, pPeakY, pIndices, nFlags, nHalf,
                                      nSGPoints, nSGOrder);
}

namespace zemath {

// One side of a peak's height bracket: from the peak index p walk by step (-1 or +1) while
// the point stays beyond the level fraction * Y[p], stopping at the first point at or past
// it or at the end of the data. X is the linear crossing of the level between that point
// and its inner neighbour (the point's own X and Y when the level is never reached).
Marker height_marker(const double* x, const double* y, int n, int p, double fraction, int step) {
    const double level = fraction * y[p];
    const bool positive = y[p] > 0.0;
    const auto beyond = [&](int i) { return positive ? y[i] > level : y[i] < level; };
    const int last = step < 0 ? 0 : n - 1;
    int i = p;
    while (i != last && beyond(i)) i += step;
    if (beyond(i) || i == p) return {i, x[i], y[i]};  // never reached (or the peak is at it)
    const int inner = i - step;
    const double t = (level - y[inner]) / (y[i] - y[inner]);
    return {i, x[inner] + t * (x[i] - x[inner]), level};
}

namespace {

void store_markers(const Marker& left, const Marker& right, int slot, int* markers,
                   double* marker_x, double* marker_y) {
    markers[slot] = left.index;
    markers[slot + 1] = right.index;
    marker_x[slot] = left.x;
    marker_x[slot + 1] = right.x;
    marker_y[slot] = left.y;
    marker_y[slot + 1] = right.y;
}

}  // namespace
}  // namespace zemath

ZEMATH_API int zemath_find_markers_of_peaks_by_height_and_width(
    int nSize, const double* pX, const double* pY, int nPeaks, const int* pPeakIndices,
    double dHeightFraction, int* pMarkers, double* pMarkerX, double* pMarkerY) noexcept {
    if (pX == nullptr || pY == nullptr || pPeakIndices == nullptr || pMarkers == nullptr ||
        pMarkerX == nullptr || pMarkerY == nullptr)
        return ZEMATH_ERR_NULL_POINTER;
    if (nSize < 1 || nPeaks < 0) return ZEMATH_ERR_TOO_FEW_POINTS;
    for (int k = 0; k < nPeaks; ++k)
        if (pPeakIndices[k] < 0 || pPeakIndices[k] >= nSize) return ZEMATH_ERR_EMPTY_RANGE;
    if (!(dHeightFraction >= 0.0 && dHeightFraction < 1.0)) return ZEMATH_ERR_PARAM_RANGE;
    for (int k = 0; k < nPeaks; ++k) {
        const Marker left = height_marker(pX, pY, nSize, pPeakIndices[k], dHeightFraction, -1);
        const Marker right = height_marker(pX, pY, nSize, pPeakIndices[k], dHeightFraction, 1);
        store_markers(left, right, 2 * k, pMarkers, pMarkerX, pMarkerY);
    }
    return ZEMATH_OK;
}

namespace zemath {

namespace {

bool usable(double v) {
    return !is_missing(v) && !std::isnan(v);
}

// For every usable point i: the lowest value over (g, i], g the nearest usable point
// before i (in the direction of travel) with a strictly higher value (the whole stretch
// from the data's start when none). One monotonic stack; each point pushed and popped once.
void lowest_since_higher(std::span<const double> y, bool forward, std::vector<double>& lowest) {
    struct Entry {
        double value, segment_low;  // segment_low: lowest value since the entry below
    };
    std::vector<Entry> stack;
    stack.reserve(64);
    const std::size_t n = y.size();
    for (std::size_t step = 0; step < n; ++step) {
        const std::size_t i = forward ? step : n - 1 - step;
        const double v = y[i];
        if (!usable(v)) continue;
        double low = v;
        while (!stack.empty() && stack.back().value <= v) {
            low = std::min(low, stack.back().segment_low);
            stack.pop_back();
        }
        lowest[i] = low;
        stack.push_back({v, low});
    }
}

}  // namespace

std::vector<double> prominences(std::span<const double> y, std::span<const int> peaks) {
    std::vector<double> left(y.size()), right(y.size()), out;
    lowest_since_higher(y, true, left);
    lowest_since_higher(y, false, right);
    out.reserve(peaks.size());
    for (int p : peaks) {
        const auto i = static_cast<std::size_t>(p);
        out.push_back(y[i] - std::max(left[i], right[i]));
    }
    return out;
}

bool peak_partition(std::span<const double> y, std::size_t peak, bool maximum, int patience,
                    std::size_t& left, std::size_t& right) {
    if (peak >= y.size() || !usable(y[peak])) return false;
    const auto walk = [&](int step) {
        std::size_t best = peak;
        long long misses = 0;
        const std::size_t n = y.size();
        for (std::size_t i = peak; step < 0 ? i > 0 : i + 1 < n;) {
            i = step < 0 ? i - 1 : i + 1;
            const double v = y[i];
            if (!usable(v)) continue;
            if (maximum ? v < y[best] : v > y[best]) {
                best = i;
                misses = 0;
            } else if (++misses > patience) {
                break;
            }
        }
        return best;
    };
    left = walk(-1);
    right = walk(1);
    return true;
}

std::vector<int> pick_peaks(std::span<const double> y, int flags, double min_height,
                            double min_prominence, int min_distance) {
    const std::size_t n = y.size();
    const bool sign_rule = !(flags & kPeakIgnoreSign);
    std::vector<int> all;
    std::vector<double> flipped;
    for (int pass = 0; pass < 2; ++pass) {
        const bool maximum = pass == 0;
        if (!(flags & (maximum ? kPeakPositive : kPeakNegative))) continue;
        // Minima are the maxima of -y.
        std::span<const double> v = y;
        if (!maximum) {
            flipped.resize(n);
            for (std::size_t i = 0; i < n; ++i) flipped[i] = usable(y[i]) ? -y[i] : y[i];
            v = flipped;
        }
        // Strict local maxima over usable points; a plateau at its left point.
        std::vector<int> found;
        std::size_t previous = n;  // last usable point before i
        for (std::size_t i = 0; i < n; ++i) {
            if (!usable(v[i])) continue;
            const bool rising = previous < n && v[previous] < v[i];
            previous = i;
            if (!rising) continue;
            std::size_t ahead = i + 1;
            while (ahead < n && (!usable(v[ahead]) || v[ahead] == v[i])) ++ahead;
            if (ahead < n && v[ahead] < v[i]) {
                const double original = y[i];
                if ((!sign_rule || (maximum ? original > 0.0 : original < 0.0)) &&
                    std::fabs(original) >= min_height)
                    found.push_back(static_cast<int>(i));
            }
        }
        // Distance: taller peaks first (stable on equal heights); a peak closer than
        // min_distance points to one already kept is dropped.
        if (min_distance > 1 && found.size() > 1) {
            std::vector<std::size_t> order(found.size());
            for (std::size_t k = 0; k < order.size(); ++k) order[k] = k;
            std::stable_sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) {
                return v[static_cast<std::size_t>(found[a])] >
                       v[static_cast<std::size_t>(found[b])];
            });
            std::vector<char> keep(found.size(), 0);
            std::set<int> kept_positions;
            for (std::size_t k : order) {
                const int at = found[k];
                const auto next = kept_positions.lower_bound(at);
                const bool near_next = next != kept_positions.end() &&
                                       static_cast<long long>(*next) - at < min_distance;
                const bool near_prev = next != kept_positions.begin() &&
                                       static_cast<long long>(at) - *std::prev(next) < min_distance;
                if (near_next || near_prev) continue;
                keep[k] = 1;
                kept_positions.insert(next, at);
            }
            std::vector<int> filtered;
            for (std::size_t k = 0; k < found.size(); ++k)
                if (keep[k]) filtered.push_back(found[k]);
            found.swap(filtered);
        }
        if (min_prominence > 0.0 && !found.empty()) {
            const std::vector<double> prominence = prominences(v, found);
            std::vector<int> filtered;
            for (std::size_t k = 0; k < found.size(); ++k)
                if (prominence[k] >= min_prominence) filtered.push_back(found[k]);
            found.swap(filtered);
        }
        all.insert(all.end(), found.begin(), found.end());
    }
    std::sort(all.begin(), all.end());
    return all;
}

}  // namespace zemath

namespace zemath {
namespace {

bool strictly_increasing(const double* x, int n) {
    for (int i = 0; i + 1 < n; ++i)
        if (!(x[i + 1] > x[i])) return false;
    return true;
}

bool non_decreasing(const double* x, int n) {
    for (int i = 0; i + 1 < n; ++i)
        if (x[i + 1] < x[i]) return false;
    return true;
}

}  // namespace
}  // namespace zemath

ZEMATH_API int zemath_find_peaks_partition(int nSize, const double* pX, const double* pY,
                                           double dPeakX, int nFlags, int nThreshold, int* pLeft,
                                           int* pRight) noexcept {
    if (pX == nullptr || pY == nullptr || pLeft == nullptr || pRight == nullptr)
        return ZEMATH_ERR_NULL_POINTER;
    if (nSize < 1) return ZEMATH_ERR_TOO_FEW_POINTS;
    const int direction = nFlags & (kPeakPositive | kPeakNegative);
    if (direction != kPeakPositive && direction != kPeakNegative) return ZEMATH_ERR_BAD_OPTION;
    if (nThreshold < 0) return ZEMATH_ERR_NEGATIVE_PARAM;
    // The peak is the usable point nearest dPeakX (first on equal distances); dPeakX must
    // lie within the usable X range.
    int peak = -1;
    double lo = 0.0, hi = 0.0, best = 0.0;
    for (int i = 0; i < nSize; ++i) {
        if (!usable(pX[i]) || !usable(pY[i])) continue;
        const double d = std::fabs(pX[i] - dPeakX);
        if (peak < 0) {
            lo = hi = pX[i];
        } else {
            lo = std::min(lo, pX[i]);
            hi = std::max(hi, pX[i]);
        }
        if (peak < 0 || d < best) {
            peak = i;
            best = d;
        }
    }
    if (peak < 0) return ZEMATH_ERR_EMPTY_RANGE;
    if (!(dPeakX >= lo && dPeakX <= hi)) return ZEMATH_ERR_EMPTY_RANGE;
    std::size_t left = 0, right = 0;
    peak_partition({pY, static_cast<std::size_t>(nSize)}, static_cast<std::size_t>(peak),
                   direction == kPeakPositive, nThreshold, left, right);
    *pLeft = static_cast<int>(left);
    *pRight = static_cast<int>(right);
    return ZEMATH_OK;
}

ZEMATH_API int zemath_find_peak_by_derivative_centralized(int* pnSize, const double* pX,
                                                          const double* pY, const double* pDY,
                                                          double* pPeakX, double* pPeakY,
                                                          int* pIndices, int nFlags) noexcept {
    if (pnSize == nullptr || pX == nullptr || pY == nullptr || pDY == nullptr ||
        pPeakX == nullptr || pPeakY == nullptr || pIndices == nullptr)
        return ZEMATH_ERR_NULL_POINTER;
    const int n = *pnSize;
    if (n < 2) return ZEMATH_ERR_TOO_FEW_POINTS;
    if (!strictly_increasing(pX, n)) return ZEMATH_ERR_NOT_MONOTONIC;
    const bool sign_rule = !(nFlags & kPeakIgnoreSign);
    int count = 0;
    for (int i = 0; i + 1 < n; ++i) {
        const double d0 = pDY[i], d1 = pDY[i + 1];
        if (!usable(d0) || !usable(d1) || !usable(pY[i]) || !usable(pX[i]) || !usable(pX[i + 1]))
            continue;
        const bool maximum = d0 > 0.0 && d1 <= 0.0, minimum = d0 < 0.0 && d1 >= 0.0;
        if (!((maximum && (nFlags & kPeakPositive)) || (minimum && (nFlags & kPeakNegative))))
            continue;
        // The root of the linearly interpolated derivative, and the curve's value there by
        // integrating that derivative from X[i]: both exact for a parabolic top.
        const double t = d0 / (d0 - d1);  // in (0, 1]
        const double x = t < 1.0 ? pX[i] + t * (pX[i + 1] - pX[i]) : pX[i + 1];
        const double y = pY[i] + 0.5 * d0 * (x - pX[i]);
        if (sign_rule && !(maximum ? y > 0.0 : y < 0.0)) continue;
        pPeakX[count] = x;
        pPeakY[count] = y;
        pIndices[count] = x - pX[i] <= pX[i + 1] - x ? i : i + 1;
        ++count;
    }
    *pnSize = count;
    return ZEMATH_OK;
}

ZEMATH_API int zemath_pick_peaks(int* pnSize, const double* pX, const double* pY, double* pPeakX,
                                 double* pPeakY, int* pIndices, int nFlags, double dMinHeight,
                                 double dMinProminence, int nMinDistance) noexcept {
    if (pnSize == nullptr || pX == nullptr || pY == nullptr || pPeakX == nullptr ||
        pPeakY == nullptr)
        return ZEMATH_ERR_NULL_POINTER;
    const int n = *pnSize;
    if (n < 1) return ZEMATH_ERR_TOO_FEW_POINTS;
    if (std::isnan(dMinHeight) || std::isnan(dMinProminence) || nMinDistance < 1)
        return ZEMATH_ERR_PARAM_RANGE;
    return guard_status([&] {
        PreparedCurve curve;
        prepare_increasing(curve, pX, pY, n);
        const std::vector<int> peaks =
            pick_peaks(curve.y, nFlags, dMinHeight, dMinProminence, nMinDistance);
        return write_peaks(curve, peaks, pPeakX, pPeakY, pIndices, pnSize);
    });
}

ZEMATH_API int zemath_find_markers_of_peaks_by_height_and_full_width(
    int nSize, const double* pX, const double* pY, int* pnPeaks, int* pPeakIndices,
    double dHeightFraction, double dMinHeight, double dMinFullWidth, int* pMarkers,
    double* pMarkerX, double* pMarkerY) noexcept {
    if (pX == nullptr || pY == nullptr || pnPeaks == nullptr || pPeakIndices == nullptr ||
        pMarkers == nullptr || pMarkerX == nullptr || pMarkerY == nullptr)
        return ZEMATH_ERR_NULL_POINTER;
    const int peaks = *pnPeaks;
    if (nSize < 1 || peaks < 0) return ZEMATH_ERR_TOO_FEW_POINTS;
    for (int k = 0; k < peaks; ++k)
        if (pPeakIndices[k] < 0 || pPeakIndices[k] >= nSize) return ZEMATH_ERR_EMPTY_RANGE;
    if (!(dHeightFraction >= 0.0 && dHeightFraction < 1.0) || std::isnan(dMinHeight) ||
        std::isnan(dMinFullWidth))
        return ZEMATH_ERR_PARAM_RANGE;
    int kept = 0;
    for (int k = 0; k < peaks; ++k) {
        const int p = pPeakIndices[k];
        const Marker left = height_marker(pX, pY, nSize, p, dHeightFraction, -1);
        const Marker right = height_marker(pX, pY, nSize, p, dHeightFraction, 1);
        // A NaN height or width fails its test.
        if (!(std::fabs(pY[p]) >= dMinHeight) || !(std::fabs(right.x - left.x) >= dMinFullWidth))
            continue;
        store_markers(left, right, 2 * kept, pMarkers, pMarkerX, pMarkerY);
        pPeakIndices[kept++] = p;  // kept <= k: an entry not yet read is never overwritten
    }
    *pnPeaks = kept;
    return ZEMATH_OK;
}

ZEMATH_API int zemath_find_markers_of_peak_centers_by_height_and_width(
    int nSize, const double* pX, const double* pY, int nPeaks, const double* pCenterX,
    double dHeightFraction, double dHalfWidth, int* pMarkers, double* pMarkerX, double* pMarkerY,
    int* pPeakIndices) noexcept {
    if (pX == nullptr || pY == nullptr || pCenterX == nullptr || pMarkers == nullptr ||
        pMarkerX == nullptr || pMarkerY == nullptr)
        return ZEMATH_ERR_NULL_POINTER;
    if (nSize < 1 || nPeaks < 0) return ZEMATH_ERR_TOO_FEW_POINTS;
    if (!(dHeightFraction >= 0.0 && dHeightFraction < 1.0) || !(dHalfWidth >= 0.0))
        return ZEMATH_ERR_PARAM_RANGE;
    if (!non_decreasing(pX, nSize)) return ZEMATH_ERR_NOT_MONOTONIC;
    for (int k = 0; k < nPeaks; ++k)
        if (!(pCenterX[k] >= pX[0] && pCenterX[k] <= pX[nSize - 1])) return ZEMATH_ERR_EMPTY_RANGE;
    const double* end = pX + nSize;
    for (int k = 0; k < nPeaks; ++k) {
        const double c = pCenterX[k];
        // Nearest point to the centre (the left one on equal distances).
        int p = static_cast<int>(std::lower_bound(pX, end, c) - pX);
        if (p == nSize || (p > 0 && c - pX[p - 1] <= pX[p] - c)) --p;
        // The most extreme point within dHalfWidth of the centre, of the sign of Y[p]
        // (leftmost among equals); p itself when the window holds no other point.
        const bool positive = pY[p] > 0.0;
        const int first = static_cast<int>(std::lower_bound(pX, end, c - dHalfWidth) - pX);
        const int last = static_cast<int>(std::upper_bound(pX, end, c + dHalfWidth) - pX) - 1;
        for (int i = first; i <= last; ++i)
            if (positive ? pY[i] > pY[p] : pY[i] < pY[p]) p = i;
        store_markers(height_marker(pX, pY, nSize, p, dHeightFraction, -1),
                      height_marker(pX, pY, nSize, p, dHeightFraction, 1), 2 * k, pMarkers,
                      pMarkerX, pMarkerY);
        if (pPeakIndices != nullptr) pPeakIndices[k] = p;
    }
    return ZEMATH_OK;
}

ZEMATH_API int zemath_trim_peak_part_by_2nd_derivative(int nSize, double* pX, double* pY) noexcept {
    if (pX == nullptr || pY == nullptr) return ZEMATH_ERR_NULL_POINTER;
    if (nSize < 3) return ZEMATH_OK;
    return guard_status([&] {
        const auto n = static_cast<std::size_t>(nSize);
        std::vector<double> curvature(pY, pY + n);
        const std::span<const double> x(pX, n);
        if (derivative_in_place(x, curvature, 0) != ZEMATH_OK ||
            derivative_in_place(x, curvature, 0) != ZEMATH_OK)
            return ZEMATH_OK;  // fewer than two usable points: nothing to trim
        // The peak: the usable point of largest |Y| (first among equals).
        std::size_t peak = n;
        for (std::size_t i = 0; i < n; ++i)
            if (usable(pY[i]) && usable(curvature[i]) &&
                (peak == n || std::fabs(pY[i]) > std::fabs(pY[peak])))
                peak = i;
        if (peak == n || pY[peak] == 0.0) return ZEMATH_OK;
        const double sign = pY[peak] > 0.0 ? 1.0 : -1.0;
        // From the peak outward: through the core (curvature of the peak's sign, s*Y'' <= 0),
        // then up the tail's curvature to its first local maximum; the part ends there.
        const auto bound = [&](int step) {
            std::size_t at = peak;
            bool in_tail = false;
            for (std::size_t i = peak; step < 0 ? i > 0 : i + 1 < n;) {
                i = step < 0 ? i - 1 : i + 1;
                if (!usable(pY[i]) || !usable(curvature[i])) continue;
                const double c = sign * curvature[i];
                if (!in_tail) {
                    at = i;
                    in_tail = c > 0.0;
                    continue;
                }
                if (c < sign * curvature[at]) break;
                at = i;
            }
            return at;
        };
        const std::size_t left = bound(-1), right = bound(1);
        for (std::size_t i = 0; i < n; ++i) {
            if (i >= left && i <= right) continue;
            pX[i] = kNanum;
            pY[i] = kNanum;
        }
        return ZEMATH_OK;
    });
}
