// Quantile summary, ranges, medians, frequency lists, bin widths and grouped
// percentiles: thin layers over the percentile engine (percentiles.hpp) and the
// five-number summary of the back end (g01alc).
#include <algorithm>
#include <cfloat>
#include <climits>
#include <cmath>
#include <cstring>
#include <numeric>
#include <span>
#include <vector>

#include "core/guard.hpp"
#include "core/missing.hpp"
#include "platform/nag/g01_summary.hpp"
#include "platform/util/approx.hpp"
#include "platform/util/messages.hpp"
#include "signal/integration.hpp"
#include "stats/moments.hpp"
#include "stats/percentiles.hpp"
#include "zemath/statistics.h"
#include "zemath/status.h"

namespace {

using zemath::is_missing;
using zemath::kNanum;

template <class T>
void put(T* target, T value) {
    if (target != nullptr) *target = value;
}

void reset(QuantileResults& r) {
    r.Min = r.Q1 = r.Median = r.Q3 = r.Max = r.IQR = r.Range = kNanum;
    r.iMin = r.iMax = -1;
}

bool usable(const double* data, const double* weights, std::size_t i) {
    return !is_missing(data[i]) && (weights == nullptr || !is_missing(weights[i]));
}

// Sorted usable, non-NaN values.
std::vector<double> sorted_usable(const double* data, std::size_t n, const double* weights) {
    std::vector<double> v;
    v.reserve(n);
    for (std::size_t i = 0; i < n; ++i)
        if (usable(data, weights, i) && !std::isnan(data[i])) v.push_back(data[i]);
    std::sort(v.begin(), v.end());
    return v;
}

// Five-number summary answer for a percent (0, 25, 50, 75, 100), else NANUM.
double from_summary(const double* five, double percent) {
    for (int k = 0; k < 5; ++k)
        if (percent == 25.0 * k) return five[k];
    return kNanum;
}

bool unit_or_no_weights(const double* weights, std::size_t n) {
    if (weights == nullptr) return true;
    for (std::size_t i = 0; i < n; ++i)
        if (!is_missing(weights[i]) && weights[i] != 1.0) return false;
    return true;
}

int quantiles(const double* data, std::size_t n, const QuantileOptions& opt, QuantileResults& res,
              const double* percents, int nPercents, double* results, const double* weights) {
    // Minimum and maximum of the usable points, first occurrence on ties; NaN takes no part.
    double min = kNanum, max = kNanum;
    int imin = -1, imax = -1;
    for (std::size_t i = 0; i < n; ++i) {
        if (!usable(data, weights, i) || std::isnan(data[i])) continue;
        if (imin < 0 || data[i] < min) min = data[i], imin = static_cast<int>(i);
        if (imax < 0 || data[i] > max) max = data[i], imax = static_cast<int>(i);
    }
    if (imin < 0) return ZEMATH_ERR_NO_USABLE_VALUE;
    const int rule = opt.nInterpolate;
    const std::span<const double> all(data, n);
    double quartiles[3] = {kNanum, kNanum, kNanum};
    const bool five_number = rule == zemath::kNoInterpolation && unit_or_no_weights(weights, n);
    double five[5];
    if (five_number) {
        const std::vector<double> sorted = sorted_usable(data, n, weights);
        if (sorted.size() >= 5) {
            zemath::nag::NagError fail;
            zemath::nag::g01alc(static_cast<int>(sorted.size()), sorted.data(), five, &fail);
        } else if (!sorted.empty()) {
            zemath::nag::five_number_summary(sorted.data(), sorted.size(), five);
        } else {
            std::fill(five, five + 5, kNanum);
        }
        std::copy(five + 1, five + 4, quartiles);
    } else {
        const double quartile_percents[3] = {25.0, 50.0, 75.0};
        const int status = zemath::percentiles(all, quartile_percents, quartiles, rule, weights);
        if (status != ZEMATH_OK) return status;
    }
    if (opt.bMin) res.Min = min;
    if (opt.biMin) res.iMin = imin;
    if (opt.bMax) res.Max = max;
    if (opt.biMax) res.iMax = imax;
    if (opt.bQ1) res.Q1 = quartiles[0];
    if (opt.bMedian) res.Median = quartiles[1];
    if (opt.bQ3) res.Q3 = quartiles[2];
    if (opt.bIQR && !is_missing(quartiles[0]) && !is_missing(quartiles[2]))
        res.IQR = quartiles[2] - quartiles[0];
    if (opt.bRange) res.Range = max - min;

    if (percents != nullptr && results != nullptr && nPercents > 0) {
        const std::span<const double> p(percents, static_cast<std::size_t>(nPercents));
        if (five_number) {
            for (std::size_t k = 0; k < p.size(); ++k) results[k] = from_summary(five, p[k]);
        } else {
            return zemath::percentiles(all, p, std::span<double>(results, p.size()), rule, weights);
        }
    }
    return ZEMATH_OK;
}

}  // namespace

ZEMATH_API int zemath_quantiles(const double* data, unsigned int n, const QuantileOptions* opt,
                                QuantileResults* res, const double* percents,
                                unsigned int nPercents, double* results,
                                const double* weights) noexcept {
    if (res != nullptr) reset(*res);
    if (n == 0) {
        if (results != nullptr && percents != nullptr)
            for (unsigned int k = 0; k < nPercents && k < static_cast<unsigned int>(INT_MAX); ++k)
                results[k] = kNanum;
        return ZEMATH_OK;
    }
    if (data == nullptr || opt == nullptr || res == nullptr) return ZEMATH_ERR_NULL_STATS;
    if (n > static_cast<unsigned int>(INT_MAX) || nPercents > static_cast<unsigned int>(INT_MAX))
        return ZEMATH_ERR_SIZES_DIFFER;
    if (opt->nInterpolate < 0 || opt->nInterpolate > 5) return ZEMATH_ERR_PARAM_RANGE;
    if (weights != nullptr) {
        bool negative = false;
        for (unsigned int i = 0; i < n; ++i)
            if (!is_missing(weights[i]) && weights[i] < 0.0) negative = true;
        if (negative) zemath::util::post_message("_ZEMS_CW_3");
        zemath::util::post_message("_ZEMS_CW_5");
        if (negative) return ZEMATH_ERR_NEGATIVE_WEIGHT;
    }
    return zemath::guard_status([&]() -> int {
        QuantileResults r;
        reset(r);
        const int status =
            quantiles(data, n, *opt, r, percents, static_cast<int>(nPercents), results, weights);
        *res = r;
        return status;
    });
}

namespace {

int one_row(const double* data, std::size_t n, double* Min, double* Max, double* Q1, double* Median,
            double* Q3, int rule) {
    double five[5];
    if (n >= 5) {
        // Kept deliberately: five or more values always take the five-number summary,
        // whatever the rule, over the raw values (hosts rely on it for box charts).
        zemath::nag::NagError fail;
        zemath::nag::g01alc(static_cast<int>(n), data, five, &fail);
    } else {
        QuantileOptions opt{};
        opt.nInterpolate = rule;
        opt.bMin = opt.bMax = opt.bQ1 = opt.bMedian = opt.bQ3 = true;
        QuantileResults r;
        reset(r);
        if (rule < 0 || rule > 5) return ZEMATH_ERR_PARAM_RANGE;
        const int status = quantiles(data, n, opt, r, nullptr, 0, nullptr, nullptr);
        if (status != ZEMATH_OK) return status;
        five[0] = r.Min, five[1] = r.Q1, five[2] = r.Median, five[3] = r.Q3, five[4] = r.Max;
    }
    put(Min, five[0]);
    put(Q1, five[1]);
    put(Median, five[2]);
    put(Q3, five[3]);
    put(Max, five[4]);
    return ZEMATH_OK;
}

}  // namespace

ZEMATH_API int zemath_one_row_quantiles(const double* data, unsigned int n, double* Min,
                                        double* Max, double* Q1, double* Median, double* Q3,
                                        int nInterpolate) noexcept {
    if (n == 0) return ZEMATH_ERR_NULL_ROWSTAT;
    if (data == nullptr) return ZEMATH_ERR_NULL_POINTER;
    if (n > static_cast<unsigned int>(INT_MAX)) return ZEMATH_ERR_SIZES_DIFFER;
    return zemath::guard_status(
        [&]() -> int { return one_row(data, n, Min, Max, Q1, Median, Q3, nInterpolate); });
}

namespace {

int row_quantiles(int rows, int columns, const double* matrix, double* Min, double* Max, double* Q1,
                  double* Median, double* Q3, double* IQR, double* Range, int rule) {
    if (rows <= 0 || columns <= 0) return ZEMATH_ERR_NULL_ROWSTAT;
    if (matrix == nullptr) return ZEMATH_ERR_NULL_POINTER;
    return zemath::guard_status([&]() -> int {
        const auto width = static_cast<std::size_t>(columns);
        int first_failure = ZEMATH_OK;
        for (int r = 0; r < rows; ++r) {
            double v[5] = {kNanum, kNanum, kNanum, kNanum, kNanum};
            const int status = one_row(matrix + static_cast<std::size_t>(r) * width, width, &v[0],
                                       &v[4], &v[1], &v[2], &v[3], rule);
            if (first_failure == ZEMATH_OK) first_failure = status;
            put(Min ? Min + r : nullptr, v[0]);
            put(Q1 ? Q1 + r : nullptr, v[1]);
            put(Median ? Median + r : nullptr, v[2]);
            put(Q3 ? Q3 + r : nullptr, v[3]);
            put(Max ? Max + r : nullptr, v[4]);
            const bool quartiles_known = !is_missing(v[1]) && !is_missing(v[3]);
            const bool ends_known = !is_missing(v[0]) && !is_missing(v[4]);
            put(IQR ? IQR + r : nullptr, quartiles_known ? v[3] - v[1] : kNanum);
            put(Range ? Range + r : nullptr, ends_known ? v[4] - v[0] : kNanum);
        }
        return first_failure;
    });
}

}  // namespace

ZEMATH_API int zemath_row_quantiles(int rows, int columns, const double* matrix, double* Min,
                                    double* Max, double* Q1, double* Median, double* Q3,
                                    int nInterpolate) noexcept {
    return row_quantiles(rows, columns, matrix, Min, Max, Q1, Median, Q3, nullptr, nullptr,
                         nInterpolate);
}

ZEMATH_API int zemath_row_quantiles_ex(int rows, int columns, const double* matrix, double* Min,
                                       double* Max, double* Q1, double* Median, double* Q3,
                                       double* IQR, double* Range, int nInterpolate) noexcept {
    return row_quantiles(rows, columns, matrix, Min, Max, Q1, Median, Q3, IQR, Range, nInterpolate);
}

ZEMATH_API int zemath_range(const double* data, unsigned int n, RangeResults* res) noexcept {
    if (data == nullptr || res == nullptr) return ZEMATH_ERR_NULL_STATS;
    RangeResults r{kNanum, kNanum, -1, -1, kNanum};
    for (unsigned int i = 0; i < n; ++i) {
        const double x = data[i];
        if (is_missing(x) || std::isnan(x)) continue;
        if (r.iMin < 0 || x < r.Min) r.Min = x, r.iMin = static_cast<int>(i);
        if (r.iMax < 0 || x > r.Max) r.Max = x, r.iMax = static_cast<int>(i);
    }
    if (r.iMin < 0) {
        *res = r;
        return ZEMATH_ERR_NO_USABLE_VALUE;
    }
    r.Range = r.Max - r.Min;
    *res = r;
    return ZEMATH_OK;
}

ZEMATH_API int zemath_get_median_in_vector(int n, const double* data, double* median) noexcept {
    if (n < 1 || data == nullptr || median == nullptr) return ZEMATH_ERR_TOO_FEW_POINTS;
    return zemath::guard_status([&]() -> int {
        const double half[1] = {50.0};
        double value = kNanum;
        zemath::percentiles(std::span<const double>(data, static_cast<std::size_t>(n)), half,
                            std::span<double>(&value, 1), zemath::kEdfAverage, nullptr);
        if (is_missing(value)) return ZEMATH_ERR_MEDIAN;
        *median = value;
        return ZEMATH_OK;
    });
}

// ---- Frequencies ------------------------------------------------------------------------

namespace {

// Distinct usable non-NaN values ascending and their counts.
void distinct_values(const double* data, std::size_t n, std::vector<double>& values,
                     std::vector<double>& counts) {
    const std::vector<double> sorted = sorted_usable(data, n, nullptr);
    for (std::size_t i = 0; i < sorted.size();) {
        std::size_t j = i + 1;
        while (j < sorted.size() && sorted[j] == sorted[i]) ++j;
        values.push_back(sorted[i]);
        counts.push_back(static_cast<double>(j - i));
        i = j;
    }
}

}  // namespace

ZEMATH_API int zemath_discrete_frequencies(const double* data, unsigned int n, double* values,
                                           double* counts, int* nDistinct) noexcept {
    if (n == 0) return ZEMATH_ERR_TOO_FEW_DATA;
    if (data == nullptr || values == nullptr || counts == nullptr || nDistinct == nullptr)
        return ZEMATH_ERR_NULL_STATS;
    if (n > static_cast<unsigned int>(INT_MAX)) return ZEMATH_ERR_SIZES_DIFFER;
    return zemath::guard_status([&]() -> int {
        std::vector<double> v, c;
        distinct_values(data, n, v, c);
        std::copy(v.begin(), v.end(), values);
        std::copy(c.begin(), c.end(), counts);
        *nDistinct = static_cast<int>(v.size());
        return ZEMATH_OK;
    });
}

ZEMATH_API int zemath_censored_value_list(const double* data, unsigned int n, double* values,
                                          int capacity, int* count) noexcept {
    if (data == nullptr || values == nullptr) return ZEMATH_ERR_STATS_INPUT;
    if (n > static_cast<unsigned int>(INT_MAX)) return ZEMATH_ERR_SIZES_DIFFER;
    return zemath::guard_status([&]() -> int {
        std::vector<double> v, c;
        distinct_values(data, n, v, c);
        if (v.size() > static_cast<std::size_t>(std::max(capacity, 0)))
            return ZEMATH_ERR_STATS_INPUT;
        std::copy(v.begin(), v.end(), values);
        put(count, static_cast<int>(v.size()));
        return ZEMATH_OK;
    });
}

ZEMATH_API int zemath_frequency_count_i(const int* data, unsigned int n, int lowest, int highest,
                                        int* counts) noexcept {
    if (data == nullptr || counts == nullptr || lowest > highest) return ZEMATH_ERR_PARAM_RANGE;
    const long long bins = static_cast<long long>(highest) - lowest + 1;
    std::fill(counts, counts + bins, 0);
    for (unsigned int i = 0; i < n; ++i)
        if (data[i] >= lowest && data[i] <= highest)
            ++counts[static_cast<long long>(data[i]) - lowest];
    return ZEMATH_OK;
}

ZEMATH_API int zemath_frequency_count(const double* data, unsigned int n, double start, double end,
                                      double increment, double* counts, int capacity,
                                      int* nBins) noexcept {
    if (data == nullptr || counts == nullptr || nBins == nullptr) return ZEMATH_ERR_NULL_STATS;
    if (!(increment > 0.0) || !(end > start) || !std::isfinite(start) || !std::isfinite(end))
        return ZEMATH_ERR_PARAM_RANGE;
    // Bins: a span that is a whole number of increments (to the approximate-equality
    // tolerance) gets exactly that many bins; otherwise the last bin is partial.
    const double spans = (end - start) / increment;
    const double whole = std::round(spans);
    const double bins = zemath::util::approx_equal(spans, whole) ? whole : std::ceil(spans);
    if (!(bins >= 1.0) || bins > static_cast<double>(capacity)) return ZEMATH_ERR_SIZES_DIFFER;
    const auto count = static_cast<int>(bins);
    std::fill(counts, counts + count, 0.0);
    for (unsigned int i = 0; i < n; ++i) {
        const double x = data[i];
        if (is_missing(x) || !(x >= start && x <= end)) continue;
        const double position = (x - start) / increment;
        const double nearest = std::round(position);
        // A value on an inner edge (to the tolerance) belongs to the upper bin.
        double index =
            zemath::util::approx_equal(position, nearest) ? nearest : std::floor(position);
        if (index >= bins) index = bins - 1.0;  // the end value closes the last bin
        if (index < 0.0) index = 0.0;
        counts[static_cast<int>(index)] += 1.0;
    }
    *nBins = count;
    return ZEMATH_OK;
}

ZEMATH_API int zemath_threshold_list(const double* data, unsigned int n, double* thresholds,
                                     int capacity, int* count) noexcept {
    if (data == nullptr || thresholds == nullptr || count == nullptr) return ZEMATH_ERR_NULL_STATS;
    if (n > static_cast<unsigned int>(INT_MAX)) return ZEMATH_ERR_SIZES_DIFFER;
    return zemath::guard_status([&]() -> int {
        std::vector<double> v, c;
        distinct_values(data, n, v, c);
        if (v.empty()) return ZEMATH_ERR_NO_USABLE_VALUE;
        // One threshold above every value: the cut that classifies nothing as positive.
        // Nothing lies above +infinity: a list ending there has no such cut.
        const double top = v.back();
        const std::size_t distinct = v.size();
        const bool cut_above = top != INFINITY;
        if (distinct + (cut_above ? 1 : 0) > static_cast<std::size_t>(std::max(capacity, 0)))
            return ZEMATH_ERR_SIZES_DIFFER;
        for (std::size_t i = 0; i < distinct; ++i) thresholds[i] = v[i];
        // Above -infinity alone the sum below is -inf + inf: the least finite double is
        // the cut there.
        if (cut_above)
            thresholds[distinct] =
                top == -INFINITY ? -DBL_MAX : top + std::max(1.0, std::fabs(top));
        *count = static_cast<int>(distinct) + (cut_above ? 1 : 0);
        return ZEMATH_OK;
    });
}

ZEMATH_API int zemath_get_percentiles_data(const double* data, unsigned int n, const int* groups,
                                           int nGroups, const double* percents, int nPercents,
                                           double* results, int nInterpolate,
                                           const double* weights) noexcept {
    if (data == nullptr || groups == nullptr || percents == nullptr || results == nullptr)
        return ZEMATH_ERR_NULL_STATS;
    if (n == 0 || n > static_cast<unsigned int>(INT_MAX) || nGroups < 1 || nPercents < 1)
        return ZEMATH_ERR_SIZES_DIFFER;
    if (nInterpolate < 0 || nInterpolate > 5) return ZEMATH_ERR_PARAM_RANGE;
    if (weights != nullptr)
        for (unsigned int i = 0; i < n; ++i)
            if (!is_missing(weights[i]) && weights[i] < 0.0) return ZEMATH_ERR_NEGATIVE_WEIGHT;
    return zemath::guard_status([&]() -> int {
        const auto np = static_cast<std::size_t>(nPercents);
        std::vector<double> members, member_weights;
        // Every group is formed before results is written: a group whose storage cannot
        // be had leaves the earlier groups' results unwritten too.
        std::vector<double> formed(static_cast<std::size_t>(nGroups) * np);
        for (int g = 0; g < nGroups; ++g) {
            members.clear();
            member_weights.clear();
            for (unsigned int i = 0; i < n; ++i) {
                if (groups[i] != g) continue;
                members.push_back(data[i]);
                if (weights != nullptr) member_weights.push_back(weights[i]);
            }
            double* out = formed.data() + static_cast<std::size_t>(g) * np;
            if (members.empty()) {
                std::fill(out, out + np, kNanum);
                continue;
            }
            const int status = zemath::percentiles(
                members, std::span<const double>(percents, np), std::span<double>(out, np),
                nInterpolate, weights != nullptr ? member_weights.data() : nullptr);
            if (status != ZEMATH_OK) return status;
        }
        std::copy(formed.begin(), formed.end(), results);
        return ZEMATH_OK;
    });
}

ZEMATH_API double zemath_bin_width(const double* data, int n, int method,
                                   int nInterpolate) noexcept {
    if (data == nullptr || n <= 0) return kNanum;
    return zemath::guard_value([&]() -> double {
        const std::span<const double> all(data, static_cast<std::size_t>(n));
        const double cube_root = std::cbrt(static_cast<double>(n));
        switch (method) {
            case 0: {
                const double quartile_percents[2] = {25.0, 75.0};
                double q[2];
                if (zemath::percentiles(all, quartile_percents, q, nInterpolate, nullptr) !=
                        ZEMATH_OK ||
                    is_missing(q[0]) || is_missing(q[1]))
                    return kNanum;
                return 2.0 * (q[1] - q[0]) / cube_root;
            }
            case 1: {
                zemath::MomentSummary s;
                if (zemath::moment_engine(all, {}, 0, s) != ZEMATH_OK || is_missing(s.sd))
                    return kNanum;
                return 3.49 * s.sd / cube_root;
            }
            case 2: {
                RangeResults r;
                if (zemath_range(data, static_cast<unsigned int>(n), &r) != ZEMATH_OK)
                    return kNanum;
                return r.Range / (std::log2(static_cast<double>(n)) + 1.0);
            }
            default:
                return kNanum;
        }
    });
}

// ---- Percentiles of a distribution curve ------------------------------------------------

ZEMATH_API int zemath_percentiles_distribution(int n, const double* x, const double* y,
                                               const double* probabilities, int nProb,
                                               double* percentiles, int* indices) noexcept {
    if (x == nullptr || y == nullptr || probabilities == nullptr || percentiles == nullptr)
        return ZEMATH_ERR_NULL_STATS;
    if (n < 3) return ZEMATH_ERR_STATS_INPUT;
    for (int i = 0; i < n; ++i)
        if (!std::isfinite(x[i]) || is_missing(x[i]) || (i > 0 && x[i] < x[i - 1]))
            return ZEMATH_ERR_BAD_ABSCISSA;
    if (!(x[n - 1] > x[0])) return ZEMATH_ERR_BAD_ABSCISSA;
    // Working storage failing is reported as -166 by this function.
    return zemath::guarded<int>(ZEMATH_ERR_TOO_MANY_DATA, [&]() -> int {
        const auto count = static_cast<std::size_t>(n);
        std::vector<double> cumulative(count);
        zemath::cumulative_trapezoid(std::span<const double>(x, count),
                                     std::span<const double>(y, count), cumulative);
        const double total = cumulative.back();
        for (int k = 0; k < nProb; ++k) {
            const double q = probabilities[k];
            double value = kNanum;
            int lo = 0;
            if (q == 0.0) {
                value = x[0];
            } else if (q == 1.0) {
                value = x[n - 1];
                lo = n - 1;
            } else if (q > 0.0 && q < 1.0) {
                const double target = q * total;
                int hi = n - 1;
                while (hi - lo > 1) {  // cumulative(lo) <= target < cumulative(hi)
                    const int mid = lo + (hi - lo) / 2;
                    if (cumulative[mid] <= target)
                        lo = mid;
                    else
                        hi = mid;
                }
                const double below = cumulative[lo], above = cumulative[hi];
                if (zemath::util::approx_equal(target, below) || !(above > below))
                    value = x[lo];
                else
                    value = x[lo] + (target - below) / (above - below) * (x[hi] - x[lo]);
            }
            percentiles[k] = value;
            if (indices != nullptr) indices[k] = lo;
        }
        return ZEMATH_OK;
    });
}
