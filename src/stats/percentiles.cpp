// The percentile engine (see percentiles.hpp for the rules) and zemath_percentiles.
#include "stats/percentiles.hpp"

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>
#include <utility>
#include <vector>

#include "core/guard.hpp"
#include "core/missing.hpp"
#include "platform/util/messages.hpp"
#include "zemath/statistics.h"
#include "zemath/status.h"

namespace zemath {

namespace {

// Selection costs about log2(k) partitioning passes for k order statistics, a sort about
// log2(m): order statistics are selected while k is small against m, else one sort.
constexpr std::size_t kSelectionsPerSort = 64;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

OrderStatisticPick single(std::size_t index) noexcept {
    return {index, index, 0.0, true};
}

// Finds the order statistics at positions[first..last) within values[lo, hi): the middle
// requested position by partition, then each half on its own side of it.
void select_range(std::span<double> values, std::size_t lo, std::size_t hi,
                  std::span<const std::size_t> positions) {
    // Depth is log2(positions.size()) <= 5: positions halve at every level.
    while (!positions.empty()) {
        const std::size_t middle = positions.size() / 2;
        const std::size_t target = positions[middle];
        auto base = values.begin();
        if (target == lo) {
            std::iter_swap(base + lo, std::min_element(base + lo, base + hi));
        } else if (target + 1 == hi) {
            std::iter_swap(base + target, std::max_element(base + lo, base + hi));
        } else {
            std::nth_element(base + lo, base + target, base + hi);
        }
        select_range(values, lo, target, positions.first(middle));
        lo = target + 1;
        positions = positions.subspan(middle + 1);
    }
}

}  // namespace

OrderStatisticPick percentile_pick(std::size_t m, double percent, int rule) noexcept {
    const OrderStatisticPick undefined{0, 0, 0.0, false};
    if (m == 0 || !(percent >= 0.0 && percent <= 100.0) || rule < 0 || rule > 5) return undefined;
    const double count = static_cast<double>(rule == kWeightedAverageRight ? m + 1 : m);
    const double np = percent * count / 100.0;
    const double whole = std::floor(np);
    const double g = np - whole;
    const auto j = static_cast<std::size_t>(whole);  // 1-based rank of x_j
    if (j == 0) return single(0);
    if (j >= m) return single(m - 1);
    // 0-based: x_j is index j - 1, x_j+1 is index j.
    switch (rule) {
        case kEdfAverage:
            return g == 0.0 ? OrderStatisticPick{j - 1, j, 0.5, true} : single(j);
        case kNearestNeighbor:
            if (g < 0.5) return single(j - 1);
            if (g > 0.5) return single(j);
            return (j % 2 == 1) ? single(j) : single(j - 1);  // the even rank of j, j + 1
        case kEdf:
            return g == 0.0 ? single(j - 1) : single(j);
        case kWeightedAverageRight:
        case kWeightedAverageLeft:
            return g == 0.0 ? single(j - 1) : OrderStatisticPick{j - 1, j, g, true};
        default:
            return undefined;  // rule 5 away from the ends
    }
}

double pick_value(std::span<const double> sorted, const OrderStatisticPick& pick) noexcept {
    if (!pick.defined || pick.upper >= sorted.size()) return kNanum;
    const double low = sorted[pick.lower];
    if (pick.upper_weight == 0.0) return low;
    const double high = sorted[pick.upper];
    if (pick.upper_weight == 0.5) return low + (high - low) * 0.5;
    return (1.0 - pick.upper_weight) * low + pick.upper_weight * high;
}

double percentile_of_sorted(std::span<const double> sorted, double percent, int rule) noexcept {
    return pick_value(sorted, percentile_pick(sorted.size(), percent, rule));
}

void select_order_statistics(std::span<double> values, std::span<const std::size_t> positions) {
    select_range(values, 0, values.size(), positions);
}

namespace {

// A usable NaN has no place in the order: NaN for every valid percent.
void fill_nan(std::span<const double> percents, std::span<double> results) {
    for (std::size_t k = 0; k < percents.size(); ++k)
        results[k] = (percents[k] >= 0.0 && percents[k] <= 100.0) ? kNaN : kNanum;
}

void weighted_percentiles(std::span<const double> data, const double* weights,
                          std::span<const double> percents, std::span<double> results) {
    std::vector<std::pair<double, double>> pairs;
    pairs.reserve(data.size());
    for (std::size_t i = 0; i < data.size(); ++i) {
        if (is_missing(data[i]) || is_missing(weights[i])) continue;
        pairs.emplace_back(data[i], weights[i]);
    }
    if (pairs.empty()) {
        std::fill(results.begin(), results.end(), kNanum);
        return;
    }
    std::sort(pairs.begin(), pairs.end(),
              [](const auto& a, const auto& b) { return a.first < b.first; });
    std::vector<double> cumulative(pairs.size());
    double running = 0.0;
    for (std::size_t k = 0; k < pairs.size(); ++k) cumulative[k] = running += pairs[k].second;
    const double total = cumulative.back();
    const std::size_t m = pairs.size();
    for (std::size_t i = 0; i < percents.size(); ++i) {
        const double p = percents[i];
        if (!(p >= 0.0 && p <= 100.0)) {
            results[i] = kNanum;
            continue;
        }
        const double target = total * p / 100.0;
        const auto at = std::lower_bound(cumulative.begin(), cumulative.end(), target);
        const auto k = static_cast<std::size_t>(at - cumulative.begin());
        if (k >= m) {
            results[i] = pairs[m - 1].first;
        } else if (cumulative[k] == target) {
            results[i] = k + 1 < m ? (pairs[k].first + pairs[k + 1].first) / 2.0 : pairs[k].first;
        } else {
            results[i] = pairs[k].first;
        }
    }
}

void unweighted_percentiles(std::span<const double> data, std::span<const double> percents,
                            std::span<double> results, int rule) {
    // Branch-free compaction into uninitialised storage: one pass, NaN noted on the way.
    const auto buffer =
        std::make_unique_for_overwrite<double[]>(std::max<std::size_t>(data.size(), 1));
    std::size_t m = 0;
    bool nan_seen = false;
    for (double x : data) {
        buffer[m] = x;
        nan_seen |= std::isnan(x);
        m += is_missing(x) ? 0 : 1;
    }
    if (nan_seen) {
        fill_nan(percents, results);
        return;
    }
    const std::span<double> values(buffer.get(), m);
    std::vector<OrderStatisticPick> picks(percents.size());
    std::vector<std::size_t> positions;
    positions.reserve(2 * percents.size());
    for (std::size_t i = 0; i < percents.size(); ++i) {
        picks[i] = percentile_pick(m, percents[i], rule);
        if (!picks[i].defined) continue;
        positions.push_back(picks[i].lower);
        if (picks[i].upper_weight != 0.0) positions.push_back(picks[i].upper);
    }
    std::sort(positions.begin(), positions.end());
    positions.erase(std::unique(positions.begin(), positions.end()), positions.end());
    if (positions.size() * kSelectionsPerSort > m) {
        std::sort(values.begin(), values.end());
    } else {
        select_order_statistics(values, positions);
    }
    for (std::size_t i = 0; i < percents.size(); ++i) results[i] = pick_value(values, picks[i]);
}

}  // namespace

int percentiles(std::span<const double> data, std::span<const double> percents,
                std::span<double> results, int rule, const double* weights) {
    if (rule < 0 || rule > 5) return ZEMATH_ERR_PARAM_RANGE;
    bool weighted = false;
    if (weights != nullptr) {
        bool negative = false;
        double first_weight = kNanum;
        for (std::size_t i = 0; i < data.size(); ++i) {
            const double w = weights[i];
            if (is_missing(w)) continue;
            if (w < 0.0) negative = true;
            if (is_missing(first_weight)) first_weight = w;
            if (!(w == first_weight)) weighted = true;  // a NaN weight counts as unequal
        }
        if (negative) util::post_message("_ZEMS_CW_3");
        util::post_message("_ZEMS_CW_5");
        if (negative) return ZEMATH_ERR_NEGATIVE_WEIGHT;
    }
    // A usable NaN (value or weight) has no place in the order: every result is NaN. The
    // unweighted path notes NaN values while it copies.
    if (weights != nullptr) {
        for (std::size_t i = 0; i < data.size(); ++i) {
            const bool usable = !is_missing(data[i]) && !is_missing(weights[i]);
            if (usable && (std::isnan(data[i]) || std::isnan(weights[i]))) {
                fill_nan(percents, results);
                return ZEMATH_OK;
            }
        }
    }
    if (weighted) {
        weighted_percentiles(data, weights, percents, results);
    } else if (weights != nullptr) {
        // Equal weights: the unweighted rule over the points whose weight is usable.
        std::vector<double> kept;
        kept.reserve(data.size());
        for (std::size_t i = 0; i < data.size(); ++i)
            if (!is_missing(weights[i])) kept.push_back(data[i]);
        unweighted_percentiles(kept, percents, results, rule);
    } else {
        unweighted_percentiles(data, percents, results, rule);
    }
    return ZEMATH_OK;
}

}  // namespace zemath

ZEMATH_API int zemath_percentiles(const double* data, int n, const double* percents, int nPercents,
                                  double* results, int nInterpolate,
                                  const double* weights) noexcept {
    if (data == nullptr || percents == nullptr || results == nullptr) return ZEMATH_ERR_NULL_STATS;
    if (n <= 0 || nPercents <= 0) return ZEMATH_ERR_SIZES_DIFFER;
    if (nInterpolate < 0 || nInterpolate > 5) return ZEMATH_ERR_PARAM_RANGE;
    return zemath::guard_status([&] {
        return zemath::percentiles(
            std::span<const double>(data, static_cast<std::size_t>(n)),
            std::span<const double>(percents, static_cast<std::size_t>(nPercents)),
            std::span<double>(results, static_cast<std::size_t>(nPercents)), nInterpolate, weights);
    });
}
