// XY data reduction (see xy_reduction.hpp) and its exports.
#include "stats/xy_reduction.hpp"

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstdint>
#include <limits>

#include "core/guard.hpp"
#include "core/missing.hpp"
#include "frame/primitives.hpp"
#include "frame/sampling_window.hpp"
#include "stats/moments.hpp"
#include "stats/percentiles.hpp"
#include "zemath/reduction.h"
#include "zemath/status.h"

namespace zemath {

// Median of the values not equal to NANUM by the percentile engine's pick (rule 0 at
// 50%) and its selection, in a scratch buffer reused from group to group. Callers reserve
// the scratch for their largest group before writing any output, so that an allocation
// failure leaves the outputs untouched.
double group_median(std::span<const double> y, std::vector<double>& scratch) {
    scratch.clear();
    for (const double v : y) {
        if (std::isnan(v)) return v;  // as the engine: a usable NaN makes the result NaN
        if (!is_missing(v)) scratch.push_back(v);
    }
    if (scratch.empty()) return kNanum;
    const OrderStatisticPick pick = percentile_pick(scratch.size(), 50.0, kEdfAverage);
    const std::size_t positions[2] = {pick.lower, pick.upper};
    select_order_statistics(
        scratch, std::span<const std::size_t>(positions, pick.upper > pick.lower ? 2 : 1));
    return pick_value(scratch, pick);
}

namespace {

// Minimum (Largest false) or maximum of a group whose first point is usable, in four
// vectors of lanes (2 doubles each on the baseline processor, 4 with AVX2) without a
// branch per point.
// Returns false, for the general scan to decide, when the group holds NANUM or the
// extreme found is a zero (the scan keeps the first of -0.0 and +0.0, which the lanes do
// not track). A NaN never replaces a value (the comparison is false), and a NaN first
// stays in every lane: the result of the left-to-right scan.
#if defined(__GNUC__)
typedef double Double2 __attribute__((vector_size(16)));
typedef long long Mask2 __attribute__((vector_size(16)));
typedef double Double4 __attribute__((vector_size(32)));
typedef long long Mask4 __attribute__((vector_size(32)));
#endif

template <bool Largest>
inline bool better(double candidate, double best) {
    return Largest ? candidate > best : candidate < best;
}

// The scan in lanes of V (Width doubles; four vectors per step), then the tail one by
// one. `v > lane ? v : lane` is one maximum instruction (it keeps the lane when v is
// NaN); the NANUM test is one comparison folded into the same pass.
template <bool Largest, class V, class M, int Width>
__attribute__((always_inline)) inline bool extreme_in_lanes(const double* p, std::size_t n,
                                                            double& extreme) {
    double best = p[0];
    bool missing = false;
    std::size_t i = 0;
#if defined(__GNUC__)
    constexpr std::size_t kVectors = 4, kStep = kVectors * Width;
    if (n >= kStep) {
        V lane[kVectors];
        for (V& l : lane)
            for (int j = 0; j < Width; ++j) l[j] = best;
        V marker;
        for (int j = 0; j < Width; ++j) marker[j] = kNanum;
        M seen{};
        for (; i + kStep <= n; i += kStep)
            for (std::size_t k = 0; k < kVectors; ++k) {
                V v;
                __builtin_memcpy(&v, p + i + Width * k, sizeof v);
                seen |= v == marker;
                lane[k] = (Largest ? v > lane[k] : v < lane[k]) ? v : lane[k];
            }
        for (int j = 0; j < Width; ++j) missing = missing || seen[j] != 0;
        for (const V& l : lane)
            for (int j = 0; j < Width; ++j)
                if (better<Largest>(l[j], best)) best = l[j];
    }
#endif
    for (; i < n; ++i) {
        missing = missing || is_missing(p[i]);
        if (better<Largest>(p[i], best)) best = p[i];
    }
    if (missing || best == 0.0) return false;
    extreme = best;
    return true;
}

#if defined(__GNUC__) && (defined(__x86_64__) || defined(__i386__))
#define ZEMATH_EXTREME_AVX2 1
template <bool Largest>
__attribute__((target("avx2"))) bool extreme_in_lanes_avx2(const double* p, std::size_t n,
                                                           double& extreme) {
    return extreme_in_lanes<Largest, Double4, Mask4, 4>(p, n, extreme);
}

bool processor_has_avx2() {
    __builtin_cpu_init();
    return __builtin_cpu_supports("avx2");
}
#endif

template <bool Largest>
bool group_extreme_without_missing(std::span<const double> y, double& extreme) {
#if ZEMATH_EXTREME_AVX2
    // The wider lanes for groups that fill them several times over: on short groups the
    // processor test costs more than it saves.
    if (y.size() >= 64 && processor_has_avx2())
        return extreme_in_lanes_avx2<Largest>(y.data(), y.size(), extreme);
#endif
#if defined(__GNUC__)
    return extreme_in_lanes<Largest, Double2, Mask2, 2>(y.data(), y.size(), extreme);
#else
    return extreme_in_lanes<Largest, double, bool, 1>(y.data(), y.size(), extreme);
#endif
}

}  // namespace

double reduce_group(std::span<const double> y, int method, double x_start, double x_end,
                    std::vector<double>& scratch) {
    const std::size_t n = y.size();
    const double marker = kNanum;
    auto sum_and_count = [&](bool squares) {
        double sum = 0.0;
        std::size_t count = 0;
        for (const double v : y) {
            if (is_missing(v)) continue;
            sum += squares ? v * v : v;
            ++count;
        }
        return std::pair{sum, count};
    };
    switch (method) {
        case 12:
            return x_start;
        case 13:
            return (x_start + x_end) * 0.5;
        case 14:
            return x_end;
        default:
            break;
    }
    if (n == 0) return kNanum;
    // Long groups that fit an int go through the frame's block scan (16-lane sums, first
    // occurrence on ties, NaN not missing); short groups, where its set-up costs more
    // than it saves (measured), and huge ones through the plain loops below.
    constexpr std::size_t kScanFrom = 64;
    const bool scannable = n >= kScanFrom && n <= static_cast<std::size_t>(INT_MAX);
    switch (method) {
        case 0:
        case 8: {
            const double sum = scannable
                                   ? scan_sum<double>(y.data(), 0, static_cast<int>(n), &marker).sum
                                   : sum_and_count(false).first;
            return method == 0 ? sum / static_cast<double>(n) : sum;
        }
        case 1:
        case 2: {
            // The common case, no NANUM in the group: one branch-free pass.
            if (!is_missing(y[0])) {
                double extreme = 0.0;
                if (method == 1 ? group_extreme_without_missing<false>(y, extreme)
                                : group_extreme_without_missing<true>(y, extreme))
                    return extreme;
            }
            if (scannable) {
                const auto r =
                    scan_min_max<double, double, false>(y.data(), 0, static_cast<int>(n), &marker);
                if (r.count == 0) return kNanum;
                return method == 1 ? r.min : r.max;
            }
            double best = kNanum;
            bool any = false;
            for (const double v : y) {
                if (is_missing(v)) continue;
                if (!any || (method == 1 ? v < best : v > best)) best = v;
                any = true;
            }
            return best;
        }
        case 3:
            return group_median(y, scratch);
        case 4:
            return y[0];
        case 5:
            return y[n / 2];
        case 6: {
            if (kReducerFraction < 0.0) return kNanum;
            const auto at = static_cast<std::size_t>(std::trunc((n - 1) * kReducerFraction));
            return y[std::min(at, n - 1)];
        }
        case 7:
            return y[n - 1];
        case 9:
        case 10: {
            // The descriptive-statistics moment engine (corrected two-pass, unit weights).
            MomentSummary summary;
            if (moment_engine(y, {}, 0, summary) != ZEMATH_OK || summary.usable == 0) return kNanum;
            const double sd = summary.usable == 1 ? 0.0 : summary.sd;  // one value: no spread
            return method == 9 ? sd : sd / std::sqrt(static_cast<double>(summary.usable));
        }
        case 11: {
            const auto [squares, count] = sum_and_count(true);
            return count ? std::sqrt(squares / static_cast<double>(count)) : kNanum;
        }
        default:
            return kNanum;
    }
}

int group_by_x(std::span<const double> x, std::span<const double> upper_edges,
               std::span<int> last_index) {
    const std::size_t bins = upper_edges.size();
    std::size_t bin = 0;
    int last = -1;
    for (std::size_t i = 0; i < x.size(); ++i) {
        const double v = x[i];
        if (!is_missing(v)) {
            while (bin + 1 < bins && v >= upper_edges[bin]) last_index[bin++] = last;
        }
        last = static_cast<int>(i);
    }
    for (; bin < bins; ++bin) last_index[bin] = last;  // the last point's bin and empty ones
    return static_cast<int>(bins);
}

namespace {

// Smallest and largest x not equal to NANUM (NaN never wins a comparison). False when
// no such point exists.
bool x_range(std::span<const double> x, double& low, double& high) {
    bool any = false;
    for (const double v : x) {
        if (is_missing(v) || std::isnan(v)) continue;
        if (!any) low = high = v;
        low = std::min(low, v);
        high = std::max(high, v);
        any = true;
    }
    return any;
}

// Range of the x-grouped reductions: the x start and x end arguments, ordered, for
// methods 12-14; the data's own range otherwise.
bool grouping_range(std::span<const double> x, int method, double x_start, double x_end,
                    double& low, double& high) {
    if (method >= 12 && method <= 14) {
        low = std::min(x_start, x_end);
        high = std::max(x_start, x_end);
        return !std::isnan(low) && !std::isnan(high);
    }
    return x_range(x, low, high);
}

// Groups x against the edges and reduces each group; group k has x start
// x_start + k width (counting from the x start argument, not from the low end of the
// range: kept deliberately, hosts rely on those bin positions).
int reduce_binned(std::span<const double> x, const double* y, const std::vector<double>& edges,
                  int method, double x_start, double width, double* out) {
    std::vector<int> last(edges.size());
    std::vector<double> scratch;
    const int groups = group_by_x(x, edges, last);
    if (method == 3) {
        int largest = 0;
        for (int k = 0, from = 0; k < groups; from = last[static_cast<std::size_t>(k)] + 1, ++k)
            largest = std::max(largest, last[static_cast<std::size_t>(k)] + 1 - from);
        scratch.reserve(static_cast<std::size_t>(largest));
    }
    int first = 0;
    for (int k = 0; k < groups; ++k) {
        const int end = last[static_cast<std::size_t>(k)] + 1;
        const double start = x_start + k * width;
        out[k] =
            reduce_group(std::span<const double>(y + first, static_cast<std::size_t>(end - first)),
                         method, start, start + width, scratch);
        first = end;
    }
    return groups;
}

constexpr double kMaxBins = 1e8;  // beyond this an increment is taken as a caller error

}  // namespace
}  // namespace zemath

using namespace zemath;

extern "C" {

ZEMATH_API int zemath_reducexy_n_points(const double* y, double* out, unsigned int n,
                                        unsigned int points_per_group, int method) noexcept {
    if (!y || !out) return ZEMATH_ERR_NULL_POINTER;
    if (n == 0 || points_per_group == 0) return ZEMATH_ERR_TOO_FEW_POINTS;
    return guard_status([&] {
        const unsigned groups = n / points_per_group + (n % points_per_group != 0);
        std::vector<double> scratch;
        if (method == 3) scratch.reserve(std::min(n, points_per_group));
        for (unsigned k = 0; k < groups; ++k) {
            const std::size_t first = static_cast<std::size_t>(k) * points_per_group;
            const std::size_t count = k + 1 < groups ? points_per_group : n - first;
            out[k] =
                reduce_group(std::span<const double>(y + first, count), method, 0.0, 0.0, scratch);
        }
        return static_cast<int>(groups);
    });
}

ZEMATH_API int zemath_reducexy_fixing_increbin(const double* x, const double* y, unsigned int n,
                                               double x_start, double x_end, int method,
                                               double* out, double x_increment) noexcept {
    if (!x || !y || !out || n == 0 || n > static_cast<unsigned>(INT_MAX)) return ZEMATH_ERR_GENERAL;
    return guard_status([&] {
        const std::span<const double> xs(x, n);
        double low = 0.0, high = 0.0;
        if (!grouping_range(xs, method, x_start, x_end, low, high))
            return static_cast<int>(ZEMATH_ERR_GENERAL);
        const double span = high - low;
        if (!(x_increment > 0.0) || x_increment > span || !std::isfinite(span))
            return static_cast<int>(ZEMATH_ERR_GENERAL);
        const double bins = std::trunc(span / x_increment) + 1.0;
        if (bins > kMaxBins) return static_cast<int>(ZEMATH_ERR_GENERAL);
        std::vector<double> edges(static_cast<std::size_t>(bins));
        for (std::size_t k = 0; k < edges.size(); ++k)
            edges[k] = static_cast<double>(k + 1) * x_increment + low;
        return reduce_binned(xs, y, edges, method, x_start, x_increment, out);
    });
}

ZEMATH_API int zemath_reducexy_n_groups(const double* x, const double* y, int n, double x_start,
                                        double x_end, int method, double* out,
                                        int number_of_groups) noexcept {
    if (!x || !y || !out || n < 1 || number_of_groups < 1 || number_of_groups > kMaxBins)
        return ZEMATH_ERR_GENERAL;
    return guard_status([&] {
        const std::span<const double> xs(x, static_cast<std::size_t>(n));
        double low = 0.0, high = 0.0;
        if (!grouping_range(xs, method, x_start, x_end, low, high))
            return static_cast<int>(ZEMATH_ERR_GENERAL);
        const double width = (high - low) / number_of_groups;
        if (!std::isfinite(width)) return static_cast<int>(ZEMATH_ERR_GENERAL);
        std::vector<double> edges(static_cast<std::size_t>(number_of_groups));
        for (std::size_t k = 0; k < edges.size(); ++k)
            edges[k] = static_cast<double>(k + 1) * width + low;
        return reduce_binned(xs, y, edges, method, x_start, width, out);
    });
}

ZEMATH_API int zemath_group_xy_by_x_new(const double* x, int n, const double* upper_edges,
                                        int n_edges, int* last_index) noexcept {
    if (!x || !upper_edges || !last_index) return ZEMATH_ERR_NULL_POINTER;
    if (n < 1 || n_edges < 1) return ZEMATH_ERR_TOO_FEW_POINTS;
    return group_by_x(std::span<const double>(x, static_cast<std::size_t>(n)),
                      std::span<const double>(upper_edges, static_cast<std::size_t>(n_edges)),
                      std::span<int>(last_index, static_cast<std::size_t>(n_edges)));
}

ZEMATH_API int zemath_mean_increment(const double* x, int n, double* increment) noexcept {
    if (!x || !increment) return ZEMATH_ERR_NULL_POINTER;
    if (n < 2) return ZEMATH_ERR_TOO_FEW_SAMPLING;
    int first = -1, last = -1;
    for (int i = 0; i < n; ++i) {
        if (is_missing(x[i]) || std::isnan(x[i])) continue;
        if (first < 0) first = i;
        last = i;
    }
    if (first < 0 || first == last) return ZEMATH_ERR_TOO_FEW_SAMPLING;
    // The mean of the consecutive differences telescopes to the end-to-end difference.
    *increment = (x[last] - x[first]) / (last - first);
    return ZEMATH_OK;
}

ZEMATH_API int zemath_sampling_resolution(int n, const double* x, double* step,
                                          double tolerance) noexcept {
    if (!x || !step) return ZEMATH_ERR_NULL_POINTER;
    if (n < 2) return ZEMATH_ERR_TOO_FEW_SAMPLING;
    double mean = 0.0;
    const int status = zemath_mean_increment(x, n, &mean);
    if (status != ZEMATH_OK) return status;
    *step = mean;
    constexpr double kZeroStep = 1e-20;  // a step below this cannot carry a sampling rate
    if (std::fabs(mean) < kZeroStep) return ZEMATH_ERR_ZERO_STEP;
    double lower = mean * (1.0 - tolerance), upper = mean * (1.0 + tolerance);
    if (lower > upper) std::swap(lower, upper);
    for (int i = 1; i < n; ++i) {
        const double d = x[i] - x[i - 1];
        if (!(d >= lower && d <= upper)) return ZEMATH_ERR_NO_STEP;
    }
    return ZEMATH_OK;
}

ZEMATH_API int zemath_reduce_2D_data(const double* z, int nRows, int nCols, int nWidth, int nHeight,
                                     int nShape, int method, double* out, int* out_rows,
                                     int* out_cols) noexcept {
    if (!z || !out) return ZEMATH_ERR_NULL_POINTER;
    if (nRows < 1 || nCols < 1) return ZEMATH_ERR_TOO_FEW_MATRIX;
    if (nWidth < 1 || nHeight < 1) return ZEMATH_ERR_TOO_FEW_POINTS;
    return guard_status([&] {
        // Window cells that can land inside the matrix only: a block larger than the
        // matrix is cut at its edge, so the offsets past nRows - 1 - nHeight / 2 (and
        // likewise for the columns) never reach a cell.
        WindowClip clip;
        clip.row_high = nRows - 1 - nHeight / 2;
        clip.col_high = nCols - 1 - nWidth / 2;
        std::vector<WindowCell> cells;
        const int count = sampling_window_cells(nCols, nWidth, nHeight, nShape, cells, clip);
        if (count < 0) return count;
        const int block_rows = nRows / nHeight + (nRows % nHeight != 0);
        const int block_cols = nCols / nWidth + (nCols % nWidth != 0);
        std::vector<double> values(cells.size()), scratch;
        if (method == 3) scratch.reserve(values.size());
        for (int bi = 0; bi < block_rows; ++bi) {
            for (int bj = 0; bj < block_cols; ++bj) {
                // The window centred so that its cells cover exactly this block.
                const long long r = static_cast<long long>(bi) * nHeight + nHeight / 2;
                const long long c = static_cast<long long>(bj) * nWidth + nWidth / 2;
                std::size_t used = 0;
                for (const WindowCell& cell : cells) {
                    const long long rr = r + cell.row, cc = c + cell.col;
                    if (rr < 0 || rr >= nRows || cc < 0 || cc >= nCols) continue;
                    values[used++] = z[static_cast<std::ptrdiff_t>(rr) * nCols + cc];
                }
                const double col_first = bj * static_cast<double>(nWidth);
                const double col_last = std::min<double>(col_first + nWidth - 1, nCols - 1);
                out[static_cast<std::ptrdiff_t>(bi) * block_cols + bj] =
                    reduce_group(std::span<const double>(values.data(), used), method, col_first,
                                 col_last, scratch);
            }
        }
        if (out_rows) *out_rows = block_rows;
        if (out_cols) *out_cols = block_cols;
        return static_cast<int>(ZEMATH_OK);
    });
}

ZEMATH_API int reduce_xy_get_sampling_data(const double* x, const double* y, int n,
                                           int sampling_size, int method, double* x_out,
                                           double* y_out) noexcept {
    if (!x || !y || !x_out || !y_out) return ZEMATH_ERR_NULL_POINTER;
    if (n < 1 || sampling_size < 1) return ZEMATH_ERR_TOO_FEW_POINTS;
    return guard_status([&] {
        const int groups = n / sampling_size + (n % sampling_size != 0);
        std::vector<double> scratch;
        if (method == 3) scratch.reserve(static_cast<std::size_t>(std::min(n, sampling_size)));
        for (int k = 0; k < groups; ++k) {
            const int first = k * sampling_size;
            const int count = std::min(sampling_size, n - first);
            const double x_first = x[first], x_last = x[first + count - 1];
            // y first: y_out may be y itself, and group k is written after it is read.
            const double value =
                reduce_group(std::span<const double>(y + first, static_cast<std::size_t>(count)),
                             method, x_first, x_last, scratch);
            x_out[k] = (x_first + x_last) * 0.5;
            y_out[k] = value;
        }
        return groups;
    });
}

ZEMATH_API int zemath_skip_points_in_every_sampling_size(const double* x, const double* y, int n,
                                                         int sampling_size, double* x_out,
                                                         double* y_out) noexcept {
    if (!x || !y || !x_out || !y_out) return ZEMATH_ERR_NULL_POINTER;
    if (n < 1 || sampling_size < 1) return ZEMATH_ERR_TOO_FEW_POINTS;
    int kept = 0;
    for (long long i = 0; i < n; i += sampling_size, ++kept) {
        x_out[kept] = x[i];
        y_out[kept] = y[i];
    }
    return kept;
}

}  // extern "C"
