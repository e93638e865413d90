// Moving percentile (median) filter.
//
// Method: one sliding order-statistic structure follows the window along the data
// (values entering are inserted, values leaving removed; NANUM is never stored), and the
// percentile of each window is read from its order statistics with the pick of the
// statistics family's percentile engine, so each window gives exactly the value the
// engine gives for that window. No window is sorted from scratch: O(log w) per point for
// large windows (treap), a sorted array for small ones.
// Failure codes: see zemath/smoothing.h.
#include <cmath>
#include <limits>
#include <vector>

#include "core/guard.hpp"
#include "core/missing.hpp"
#include "signal/order_statistic.hpp"
#include "signal/smoothing.hpp"
#include "zemath/smoothing.h"

#include "stats/percentiles.hpp"

namespace zemath {
namespace {

// Windows up to this length use the sorted array.
constexpr std::size_t kSortedWindowLimit = 96;

// The engine's value for the window: its pick of order statistics, combined by its own
// arithmetic (pick_value over the two statistics picked).
template <class Window>
double window_percentile(const Window& window, double percent, int rule) {
    const OrderStatisticPick pick = percentile_pick(window.size(), percent, rule);
    if (!pick.defined) return kNanum;
    const double picked[2] = {window.kth(pick.lower), window.kth(pick.upper)};
    const OrderStatisticPick local{0, pick.upper == pick.lower ? 0u : 1u, pick.upper_weight, true};
    return pick_value(picked, local);
}

template <class Window>
int run_filter(std::span<const double> x, double* out, std::size_t h, double percent, int end_mode,
               int rule) {
    const std::size_t n = x.size();
    Window window(2 * h + 1);
    std::vector<double> result(n);
    // NaN has no place in the order: the engine answers NaN for a window holding one, so
    // NaNs are only counted.
    std::size_t nans = 0;
    auto enter = [&](double v) {
        if (std::isnan(v)) {
            ++nans;
        } else if (!is_missing(v)) {
            window.insert(v);
        }
    };
    auto leave = [&](double v) {
        if (std::isnan(v)) {
            --nans;
        } else if (!is_missing(v)) {
            window.erase(v);
        }
    };
    auto value = [&] {
        return nans > 0 ? std::numeric_limits<double>::quiet_NaN()
                        : window_percentile(window, percent, rule);
    };
    if (end_mode == 0) {
        // Symmetric windows shrinking at the ends: [i - r, i + r], r = min(i, n-1-i, h).
        std::size_t lo = 0, hi = 0;  // current window [lo, hi)
        for (std::size_t i = 0; i < n; ++i) {
            const std::size_t r = std::min({i, n - 1 - i, h});
            while (lo < i - r) leave(x[lo++]);  // leave first: the pool holds one window
            while (hi <= i + r) enter(x[hi++]);
            if (window.size() == 0 && nans == 0) {
                // Every value missing: left to the engine (its whole-array form).
                const int status = percentiles(x.subspan(i - r, 2 * r + 1), {&percent, 1},
                                               {&result[i], 1}, rule, nullptr);
                if (status != ZEMATH_OK) {
                    std::copy(result.begin(), result.begin() + static_cast<std::ptrdiff_t>(i), out);
                    return status;
                }
                continue;
            }
            result[i] = value();
        }
        std::copy(result.begin(), result.end(), out);
        return ZEMATH_OK;
    }
    // Modes 1..5: h virtual values per side from runs of h end points.
    std::vector<double> padded(n + 2 * h), lpad(h), rpad(h);
    pad_ends(x, end_mode, h, h, lpad, rpad);
    for (std::size_t k = 0; k < h; ++k) {
        padded[h - 1 - k] = lpad[k];
        padded[h + n + k] = rpad[k];
    }
    std::copy(x.begin(), x.end(), padded.begin() + static_cast<std::ptrdiff_t>(h));
    std::size_t empty_windows = 0;
    for (std::size_t k = 0; k < 2 * h; ++k) enter(padded[k]);
    for (std::size_t i = 0; i < n; ++i) {
        enter(padded[i + 2 * h]);
        if (window.size() == 0 && nans == 0) {
            result[i] = kNanum;
            ++empty_windows;
        } else {
            result[i] = value();
        }
        leave(padded[i]);
    }
    std::copy(result.begin(), result.end(), out);
    // Every window missing: -155, kept as callers expect.
    return empty_windows == n ? ZEMATH_ERR_SIZES_DIFFER : ZEMATH_OK;
}

}  // namespace

int median_filter(std::span<const double> x, double* out, int half, double percent, int end_mode,
                  int rule) {
    const auto h = static_cast<std::size_t>(half);
    if (2 * h + 1 <= kSortedWindowLimit)
        return run_filter<SortedWindow>(x, out, h, percent, end_mode, rule);
    return run_filter<TreapWindow>(x, out, h, percent, end_mode, rule);
}

}  // namespace zemath

ZEMATH_API int zemath_median_filter(int nSize, const double* pIn, double* pOut, int nHalf,
                                    double dPercent, int nEndMode,
                                    bool bPercentileMethod) noexcept {
    if (!(dPercent >= 0.0 && dPercent <= 100.0) || nHalf < 0 ||
        2 * static_cast<std::int64_t>(nHalf) + 1 > nSize || static_cast<unsigned>(nEndMode) > 5)
        return ZEMATH_ERR_PARAM_RANGE;
    if (pIn == nullptr || pOut == nullptr) return ZEMATH_ERR_NULL_POINTER;
    return zemath::guard_status([&]() -> int {
        return zemath::median_filter({pIn, static_cast<std::size_t>(nSize)}, pOut, nHalf, dPercent,
                                     nEndMode, bPercentileMethod ? 0 : 2);
    });
}
