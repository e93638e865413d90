// The percentile engine (see percentiles.hpp for the rules) and zemath_percentiles.
#include "stats/percentiles.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <memory>
#include <utility>
#include <vector>

#include "core/guard.hpp"
#include "core/missing.hpp"
#include "platform/util/messages.hpp"
#include "platform/util/sort_kernels.hpp"
#include "zemath/statistics.h"
#include "zemath/status.h"

namespace zemath {

namespace {

// Selection costs about log2(k) partitioning passes for k order statistics, a sort about
// log2(m): order statistics are selected while k is small against m, else one sort.
constexpr std::size_t kSelectionsPerSort = 64;
// More order statistics than this, from kRadixMinimum to kRadixMaximum values: one radix
// sort (a fixed number of passes) beats selection's log2(count) partitioning passes.
// Beyond kRadixMaximum the sort's scatter passes leave the last-level cache (values and
// scratch over 32 MB) and selection is as fast again (measured at 3e6 and 1e7 points).
constexpr std::size_t kMaxSelections = 16;
constexpr std::size_t kRadixMinimum = 2048;
constexpr std::size_t kRadixMaximum = std::size_t{1} << 21;

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

// Ascending sort of values without NaN: the radix sort (with scratch space), std::sort
// when the scratch cannot be had.
void sort_values(std::span<double> values) {
    const auto scratch = std::make_unique_for_overwrite<double[]>(values.size());
    util::radix_sort<double, sizeof(double), false>(
        reinterpret_cast<unsigned char*>(values.data()), values.size(),
        reinterpret_cast<unsigned char*>(scratch.get()));
}

// Copies the usable values of data to buffer (branch-free: every value is written, the
// count advances past usable ones) and reports their number and whether one is NaN.
std::size_t compact_usable(std::span<const double> data, double* buffer, bool& nan_seen) {
    std::size_t m = 0;
    bool nan = false;
    for (double x : data) {
        buffer[m] = x;
        nan |= std::isnan(x);
        m += is_missing(x) ? 0 : 1;
    }
    nan_seen = nan;
    return m;
}

// ---- Sampled selection ---------------------------------------------------------------
//
// For a few percents of a large sample: a random sample of the usable values, sorted,
// brackets each wanted rank by two sample values lo <= hi about kBracketSpread standard
// deviations of the sample quantile either side of it. One pass over the data counts
// the usable values below every bracket and gathers those inside one (overlapping
// brackets are merged first, so a value lands in one bracket at most). When every wanted
// rank falls inside a bracket, the gathered values (a few percent of the data) hold the
// order statistics and selection runs on them alone; when one misses (about once in
// 10^4 calls with normal data) the caller falls back to selection on the full copy.
// Either way the results are the same order statistics.

constexpr std::size_t kSampledMinimum = std::size_t{1} << 15;  // fewer points: plain selection
constexpr std::size_t kMaxBrackets = 8;  // more percents: plain selection or one sort

// SplitMix64: a local generator; the sample steers only the speed, never the result.
struct SplitMix {
    std::uint64_t state;
    std::uint64_t next() noexcept {
        std::uint64_t z = (state += 0x9e3779b97f4a7c15ULL);
        z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9ULL;
        z = (z ^ (z >> 27)) * 0x94d049bb133111ebULL;
        return z ^ (z >> 31);
    }
};

struct Bracket {
    double lo, hi;
};

struct Gathered {
    std::size_t usable = 0, count = 0;
    bool nan_seen = false;
    std::array<std::size_t, kMaxBrackets> below{};  // usable values under each bracket
};

// One pass: gathers the usable values inside any of the B disjoint brackets into
// buffer (capacity data.size()) and counts the usable values below each bracket. Blocks
// of the data are classified first (compares only, two lanes at a time with GCC/Clang
// vector extensions), then the block's marked values are copied out. Counts include
// NANUM where it lies below a bracket; it is a single value, so that is taken out once
// at the end.
template <std::size_t B>
Gathered gather(std::span<const double> data, const double* lo, const double* hi, double* buffer) {
    constexpr std::size_t kBlock = 512;
    std::array<double, B> low, high;
    std::copy(lo, lo + B, low.begin());
    std::copy(hi, hi + B, high.begin());
    std::array<std::uint64_t, B> below{};
    std::uint64_t missing = 0, nan = 0;
    std::size_t count = 0;
    // mark[i]: all ones when value i of the block is gathered, else 0.
    alignas(32) std::array<std::uint64_t, kBlock> mark;
    auto classify_one = [&](double x, std::uint64_t& flag) {
        const std::uint64_t is_nanum = x == kNanum;
        missing += is_nanum;
        nan += x != x;
        std::uint64_t inside = 0;
        for (std::size_t b = 0; b < B; ++b) {
            below[b] += x < low[b];
            inside |= static_cast<std::uint64_t>(x >= low[b]) & (x <= high[b]);
        }
        flag = 0 - (inside & (is_nanum ^ 1));
    };
    for (std::size_t start = 0; start < data.size(); start += kBlock) {
        const double* p = data.data() + start;
        const std::size_t length = std::min(kBlock, data.size() - start);
        std::size_t i = 0;
#if defined(__GNUC__)
        typedef double V __attribute__((vector_size(16)));
        typedef std::int64_t M __attribute__((vector_size(16)));
        M v_below[B] = {}, v_missing = {}, v_nan = {};
        for (; i + 2 <= length; i += 2) {
            V x;
            std::memcpy(&x, p + i, sizeof x);
            const M is_nanum = x == kNanum;
            v_missing -= is_nanum;
            v_nan -= x != x;
            M inside = {};
            for (std::size_t b = 0; b < B; ++b) {
                v_below[b] -= x < low[b];
                inside |= (x >= low[b]) & (x <= high[b]);
            }
            const M flag = inside & ~is_nanum;
            std::memcpy(mark.data() + i, &flag, sizeof flag);
        }
        for (int lane = 0; lane < 2; ++lane) {
            missing += static_cast<std::uint64_t>(v_missing[lane]);
            nan += static_cast<std::uint64_t>(v_nan[lane]);
            for (std::size_t b = 0; b < B; ++b)
                below[b] += static_cast<std::uint64_t>(v_below[b][lane]);
        }
#endif
        for (; i < length; ++i) classify_one(p[i], mark[i]);
        for (i = 0; i < length; ++i) {
            buffer[count] = p[i];  // count never passes the values read so far
            count += mark[i] & 1;
        }
    }
    Gathered g;
    g.usable = data.size() - missing;
    g.count = count;
    g.nan_seen = nan != 0;
    for (std::size_t b = 0; b < B; ++b) g.below[b] = below[b] - (kNanum < low[b] ? missing : 0);
    return g;
}

Gathered gather_any(std::span<const double> data, std::span<const Bracket> brackets,
                    double* buffer) {
    std::array<double, kMaxBrackets> lo{}, hi{};
    for (std::size_t b = 0; b < brackets.size(); ++b) {
        lo[b] = brackets[b].lo;
        hi[b] = brackets[b].hi;
    }
    switch (brackets.size()) {
        case 1:
            return gather<1>(data, lo.data(), hi.data(), buffer);
        case 2:
            return gather<2>(data, lo.data(), hi.data(), buffer);
        case 3:
            return gather<3>(data, lo.data(), hi.data(), buffer);
        case 4:
            return gather<4>(data, lo.data(), hi.data(), buffer);
        case 5:
            return gather<5>(data, lo.data(), hi.data(), buffer);
        case 6:
            return gather<6>(data, lo.data(), hi.data(), buffer);
        case 7:
            return gather<7>(data, lo.data(), hi.data(), buffer);
        default:
            return gather<8>(data, lo.data(), hi.data(), buffer);
    }
}

std::size_t sample_size(std::size_t n) {
    const auto s = static_cast<std::size_t>(std::pow(static_cast<double>(n), 0.6));
    return std::clamp<std::size_t>(s, 1024, 32768);
}

}  // namespace

bool sampled_percentiles(std::span<const double> data, std::span<const double> percents,
                         std::span<double> results, int rule, double* buffer, double spread) {
    const std::size_t n = data.size();
    if (n == 0 || percents.empty()) return false;
    // The sample: random positions; missing values are skipped, NaN leaves it to the caller.
    const std::size_t draws = std::min(sample_size(n), n);
    std::vector<double> sample;
    sample.reserve(draws);
    SplitMix random{0x5eed5eed2026ULL ^ n};
    for (std::size_t k = 0; k < draws; ++k) {
        const double x = data[static_cast<std::size_t>(random.next() % n)];
        if (std::isnan(x)) return false;
        if (!is_missing(x)) sample.push_back(x);
    }
    if (sample.size() < draws / 2) return false;  // mostly missing: not worth it
    std::sort(sample.begin(), sample.end());
    const double s = static_cast<double>(sample.size());
    constexpr double kInf = std::numeric_limits<double>::infinity();

    std::array<Bracket, kMaxBrackets> found{};
    std::size_t count = 0;
    for (double p : percents) {
        if (!(p >= 0.0 && p <= 100.0)) continue;  // answered NANUM, no order statistic
        if (count == kMaxBrackets) return false;
        const double q = p / 100.0;
        const double centre = q * s;
        const double half = spread * std::sqrt(s * q * (1.0 - q)) + 2.0;
        const double first = std::floor(centre - half), last = std::ceil(centre + half);
        found[count++] = {first < 0.0 ? -kInf : sample[static_cast<std::size_t>(first)],
                          last >= s ? kInf : sample[static_cast<std::size_t>(last)]};
    }
    if (count == 0) return false;
    for (std::size_t k = 1; k < count; ++k)  // insertion sort by low end: at most 8
        for (std::size_t j = k; j > 0 && found[j].lo < found[j - 1].lo; --j)
            std::swap(found[j], found[j - 1]);
    std::size_t merged = 0;
    for (std::size_t k = 1; k < count; ++k) {
        if (found[k].lo <= found[merged].hi) {
            found[merged].hi = std::max(found[merged].hi, found[k].hi);
        } else {
            found[++merged] = found[k];
        }
    }
    const std::span<const Bracket> brackets(found.data(), merged + 1);

    const Gathered g = gather_any(data, brackets, buffer);
    if (g.nan_seen) {
        fill_nan(percents, results);
        return true;
    }
    const std::size_t m = g.usable;
    // Start of each bracket among the gathered values once sorted: brackets are disjoint
    // and ascending, so bracket b follows the gathered values below its low end.
    std::array<std::size_t, kMaxBrackets> start{};
    for (std::size_t i = 0; i < g.count; ++i)
        for (std::size_t b = 0; b < brackets.size(); ++b) start[b] += buffer[i] < brackets[b].lo;
    // Rank r of the whole usable sample as a rank among the gathered values, if held.
    auto local = [&](std::size_t r, std::size_t& at) {
        for (std::size_t b = 0; b < brackets.size(); ++b) {
            const std::size_t size = (b + 1 < brackets.size() ? start[b + 1] : g.count) - start[b];
            if (r >= g.below[b] && r - g.below[b] < size) {
                at = start[b] + (r - g.below[b]);
                return true;
            }
        }
        return false;
    };
    std::array<OrderStatisticPick, kMaxBrackets> picks{};
    std::array<std::size_t, 2 * kMaxBrackets> positions{};
    std::size_t wanted = 0;
    for (std::size_t i = 0, k = 0; i < percents.size(); ++i) {
        OrderStatisticPick pick = percentile_pick(m, percents[i], rule);
        if (pick.defined) {
            if (!local(pick.lower, pick.lower) || !local(pick.upper, pick.upper)) return false;
            positions[wanted++] = pick.lower;
            if (pick.upper_weight != 0.0) positions[wanted++] = pick.upper;
        }
        if (percents[i] >= 0.0 && percents[i] <= 100.0) picks[k++] = pick;
    }
    std::sort(positions.begin(), positions.begin() + wanted);
    wanted = static_cast<std::size_t>(std::unique(positions.begin(), positions.begin() + wanted) -
                                      positions.begin());
    const std::span<double> values(buffer, g.count);
    select_order_statistics(values, std::span<const std::size_t>(positions.data(), wanted));
    for (std::size_t i = 0, k = 0; i < percents.size(); ++i)
        results[i] =
            (percents[i] >= 0.0 && percents[i] <= 100.0) ? pick_value(values, picks[k++]) : kNanum;
    return true;
}

namespace {

void unweighted_percentiles(std::span<const double> data, std::span<const double> percents,
                            std::span<double> results, int rule) {
    const auto buffer =
        std::make_unique_for_overwrite<double[]>(std::max<std::size_t>(data.size(), 1));
    if (data.size() >= kSampledMinimum && percents.size() <= kMaxBrackets &&
        sampled_percentiles(data, percents, results, rule, buffer.get(), kBracketSpread))
        return;
    bool nan_seen = false;
    const std::size_t m = compact_usable(data, buffer.get(), nan_seen);
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
    if (positions.size() > kMaxSelections && m >= kRadixMinimum && m <= kRadixMaximum) {
        sort_values(values);
    } else if (positions.size() * kSelectionsPerSort > m) {
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
