// Typed array primitives: the operations behind the per-element-type exports (copy,
// minimum and maximum, the same within a value range, sum, mean and variance,
// cumulative sum, frequency count, most populated bin, linear stretch, even-spacing
// test). One template per operation; the library's own routines call them directly.
//
// Method: one pass (two for the variance) over the caller's array. Min, max and sums
// go through the shared scan (frame/scan.hpp): first occurrence wins ties, values equal
// to the marker are skipped, NaN is not missing. Integer data is summed exactly in 64
// bits; float data in double. Frequency counts use the utility bin index
// (platform/util/bins.hpp), which puts a value on an inner bin edge in the upper bin.
//
// The exported members are stamped in primitives.cpp from the (letter, element type)
// lists below; the tests walk the same lists, so the lists, the exports and the public
// declarations cannot drift apart (a declaration that disagrees with its stamped
// definition does not compile).
#pragma once

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <span>
#include <type_traits>

#include "core/missing.hpp"
#include "frame/nrvec.hpp"
#include "frame/scan.hpp"
#include "platform/util/bins.hpp"
#include "zemath/status.h"
#include "zemath/types.h"

// The members of each operation: X(letter, element type). The `d` members of minmax and
// sum (always skipping NANUM) are frame functions; the `d` member of mean_variance and
// the `f` member of sum have their own argument lists and are written out in
// primitives.cpp on the same templates.
#define ZEMATH_COPY_MEMBERS(X) \
    X(b, unsigned char) X(us, unsigned short) X(ui, unsigned int) X(f, float) X(d, double)
#define ZEMATH_MINMAX_MEMBERS(X) \
    X(b, unsigned char)          \
    X(c, signed char)            \
    X(s, short) X(us, unsigned short) X(i, int) X(ui, unsigned int) X(f, float) X(z, d_complex)
#define ZEMATH_MINMAX_IN_RANGE_MEMBERS(X) \
    X(b, unsigned char) X(us, unsigned short) X(i, int) X(f, float) X(d, double)
#define ZEMATH_SUM_MEMBERS(X) X(b, unsigned char) X(us, unsigned short) X(ui, unsigned int)
#define ZEMATH_MEAN_VARIANCE_MEMBERS(X) X(b, unsigned char) X(us, unsigned short) X(f, float)
#define ZEMATH_CUMULATIVE_SUM_MEMBERS(X) \
    X(b, unsigned char) X(us, unsigned short) X(i, int) X(f, float) X(d, double)
#define ZEMATH_FREQUENCY_COUNT_MEMBERS(X) \
    X(b, unsigned char) X(us, unsigned short) X(f, float) X(d, double)
#define ZEMATH_FIND_MOST_MEMBERS(X) X(us, unsigned short) X(d, double)
#define ZEMATH_STRETCH_MEMBERS(X) X(us, unsigned short) X(f, float) X(d, double)
#define ZEMATH_GET_VECTOR_INC_MEMBERS(X) X(i, int) X(d, double)

namespace zemath {

template <class T>
std::span<const T> view(const T* data, int n) {
    return {data, static_cast<std::size_t>(n > 0 ? n : 0)};
}

// ---- copy -------------------------------------------------------------------------

// Overlapping regions are allowed (moved as if through a temporary).
template <class T>
void copy_elements(std::span<const T> source, T* destination) {
    if (!source.empty()) std::memmove(destination, source.data(), source.size_bytes());
}

// ---- minmax -----------------------------------------------------------------------

// Min and max of data[begin..end) with their first-occurrence indices and the missing
// count; complex data compares by modulus.
template <class T>
ScanResult<T, double> min_max(const T* data, int begin, int end, const T* marker) {
    if constexpr (std::is_same_v<T, d_complex>)
        return scan_min_max_by_modulus(data, begin, end, marker);
    else
        return scan_min_max<T, double, false>(data, begin, end, marker);
}

struct RangeExtremes {
    int index_of_min = -1;
    int index_of_max = -1;
    int missing = 0;
};

// Indices of the min and max among the values v with low <= v <= high, skipping (and
// counting) values equal to the marker; first occurrence on ties, -1 with no candidate.
template <class T>
RangeExtremes min_max_in_range(std::span<const T> data, T low, T high, const T* marker) {
    RangeExtremes r;
    T min{}, max{};
    for (std::size_t k = 0; k < data.size(); ++k) {
        const T v = data[k];
        if (is_missing(v, marker)) {
            ++r.missing;
            continue;
        }
        if (!(low <= v && v <= high)) continue;
        const int i = static_cast<int>(k);
        if (r.index_of_min < 0) {
            min = max = v;
            r.index_of_min = r.index_of_max = i;
            continue;
        }
        if (v < min) min = v, r.index_of_min = i;
        if (v > max) max = v, r.index_of_max = i;
    }
    return r;
}

// ---- sum ----------------------------------------------------------------------------

template <class T>
ScanResult<T, SumOf<T>> sum_scan(std::span<const T> data, const T* marker) {
    return scan_min_max<T, SumOf<T>, true>(data.data(), 0, static_cast<int>(data.size()), marker);
}

// ---- mean and variance ----------------------------------------------------------------

struct MeanVariance {
    double mean = kNanum;
    double variance = kNanum;
    int count = 0;
};

// Mean of the usable values, and their variance with the N - 1 denominator from a
// second pass over the deviations. No usable value: NANUM for both; one: variance 0.
template <class T>
MeanVariance mean_variance(std::span<const T> data, const T* marker) {
    MeanVariance r;
    const int n = static_cast<int>(data.size());
    const auto first_pass = scan_sum<T>(data.data(), 0, n, marker);
    r.count = first_pass.count;
    if (r.count == 0) return r;
    const double count = r.count;
    r.mean = static_cast<double>(first_pass.sum) / count;
    if (r.count == 1) {
        r.variance = 0.0;
        return r;
    }
    const DeviationSums d = deviation_sums(data.data(), n, marker, r.mean);
    // Kept deliberately, callers rely on it: the S1^2 / N term (it removes the first-order
    // error of the rounded mean).
    r.variance = (d.second - d.first * d.first / count) / (count - 1.0);
    return r;
}

// ---- cumulative sum ---------------------------------------------------------------------

// Addition in the element type's own arithmetic: integers wrap around modulo 2^bits, as
// the caller's own integer sums would (without the undefined signed overflow).
template <class T>
T wrapping_add(T a, T b) {
    if constexpr (std::is_integral_v<T>) {
        using U = std::make_unsigned_t<T>;
        return static_cast<T>(static_cast<U>(static_cast<U>(a) + static_cast<U>(b)));
    } else {
        return a + b;
    }
}

// out[k] = running sum of range[0..k], a missing value adding nothing (a missing first
// value starts the sum at 0). Kept deliberately, callers rely on it: out is indexed from
// 0, not from the range's first index. out may be the range itself. Returns the number
// of missing values met.
template <class T>
int cumulative_sum(std::span<const T> range, T* out, const T* marker) {
    int missing = 0;
    T running{};
    for (std::size_t k = 0; k < range.size(); ++k) {
        const T v = range[k];
        if (is_missing(v, marker))
            ++missing;
        else
            running = k == 0 ? v : wrapping_add(running, v);
        out[k] = running;
    }
    return missing;
}

// ---- frequency count ------------------------------------------------------------------

// counts[k] = number of values in bin k of the grid start + k * width (the utility bin
// index: an inner edge belongs to the bin above). Values outside the bins, NaN and
// infinities are dropped. Returns -1 for a width of exactly 0 (counts untouched; a NaN
// width is not refused and drops every value), else 0.
template <class T>
int frequency_count(std::span<const T> data, std::span<unsigned int> counts, double start,
                    double width) {
    if (width == 0.0) return ZEMATH_ERR_GENERAL;
    std::fill(counts.begin(), counts.end(), 0u);
    const long long bins = static_cast<long long>(counts.size());
    for (const T v : data) {
        const int bin = util::nice_bin_index(static_cast<double>(v), start, width);
        if (bin >= 0 && bin < bins) ++counts[static_cast<std::size_t>(bin)];
    }
    return ZEMATH_OK;
}

// ---- most populated bin --------------------------------------------------------------

struct MostPopulated {
    bool found = false;
    double lower_edge = kNanum;
    double fraction = 0.0;  // largest count / total count
};

// Splits [min, max] of the values into `bins` bins of width (max - min) / bins, counts
// the values with frequency_count's rule and returns the lower edge of the fullest bin
// (the first on ties). Values equal to the max lie on the upper edge of the last bin and
// so are not counted, as in frequency_count. NaN takes no part; an infinite value, or a
// range that cannot be split (its width overflows or underflows to 0), finds nothing.
// Constant data: every value is in the first bin (fraction 1). May allocate.
template <class T>
MostPopulated find_most(std::span<const T> data, unsigned int bins) {
    MostPopulated r;
    if (data.empty() || bins == 0 || bins > static_cast<unsigned int>(INT_MAX)) return r;
    bool any = false;
    double min = 0.0, max = 0.0;
    for (const T v : data) {
        const double x = static_cast<double>(v);
        if (std::isnan(x)) continue;
        if (!any) min = max = x, any = true;
        if (x < min) min = x;
        if (x > max) max = x;
    }
    if (!any || !std::isfinite(min) || !std::isfinite(max)) return r;
    if (min == max) return {true, min, 1.0};
    const double width = (max - min) / static_cast<double>(bins);
    if (!(width > 0.0) || !std::isfinite(width)) return r;

    std::uint64_t largest = 0, total = 0;
    long long fullest = 0;
    if (bins <= data.size()) {
        NRVec<unsigned int> counts(static_cast<int>(bins));
        frequency_count(data, counts.span(), min, width);
        for (int k = 0; k < counts.size(); ++k) {
            total += counts[k];
            if (counts[k] > largest) largest = counts[k], fullest = k;
        }
    } else {
        // More bins than values: sort the occupied bin indices instead of counting into
        // an array of mostly empty bins (bins may be up to INT_MAX).
        NRVec<int> occupied(static_cast<int>(data.size()));
        int kept = 0;
        for (const T v : data) {
            const int bin = util::nice_bin_index(static_cast<double>(v), min, width);
            if (bin >= 0 && static_cast<unsigned int>(bin) < bins) occupied[kept++] = bin;
        }
        std::sort(occupied.begin(), occupied.begin() + kept);
        total = static_cast<std::uint64_t>(kept);
        for (int k = 0; k < kept;) {
            int run_end = k;
            while (run_end < kept && occupied[run_end] == occupied[k]) ++run_end;
            if (static_cast<std::uint64_t>(run_end - k) > largest)
                largest = static_cast<std::uint64_t>(run_end - k), fullest = occupied[k];
            k = run_end;
        }
    }
    if (total == 0) return r;  // unreachable: the min always lies in bin 0
    return {true, min + static_cast<double>(fullest) * width,
            static_cast<double>(largest) / static_cast<double>(total)};
}

// ---- stretch ------------------------------------------------------------------------

// A double result stored in the element type: integers truncate toward zero within the
// type's range (with the 0.5 offset this rounds), floats round to nearest and overflow to
// infinity.
template <class T>
T store_as(double y) {
    if constexpr (std::is_integral_v<T>) {
        constexpr double lowest = static_cast<double>(std::numeric_limits<T>::lowest());
        constexpr double highest = static_cast<double>(std::numeric_limits<T>::max());
        if (!(y > lowest)) return std::numeric_limits<T>::lowest();  // NaN included
        if (y >= highest) return std::numeric_limits<T>::max();
        return static_cast<T>(y);
    } else if constexpr (std::is_same_v<T, float>) {
        constexpr double largest = std::numeric_limits<float>::max();
        if (y > largest) return std::numeric_limits<float>::infinity();
        if (y < -largest) return -std::numeric_limits<float>::infinity();
        return static_cast<float>(y);
    } else {
        return y;
    }
}

// In place: v < low -> new_low; v > high -> new_high; otherwise
// (v - low) * (new_high - new_low) / (high - low) + (0.5 + new_low), in double.
// Returns -3 when high - low is exactly 0 (data untouched), else 0.
template <class T>
int stretch(std::span<T> data, double low, double high, double new_low, double new_high) {
    const double range = high - low;
    if (range == 0.0) return ZEMATH_ERR_ZERO_INPUT_RANGE;
    const double new_range = new_high - new_low;
    // Kept deliberately, callers rely on it: every member passes the rounding flag, so
    // 0.5 is added for floating-point data too (only clamped values carry no offset).
    const double offset = 0.5 + new_low;
    for (T& v : data) {
        const double x = static_cast<double>(v);
        double y;
        if (x < low)
            y = new_low;
        else if (x > high)
            y = new_high;
        else
            y = (x - low) * new_range / range + offset;
        v = store_as<T>(y);
    }
    return ZEMATH_OK;
}

// ---- even spacing ----------------------------------------------------------------------

struct Spacing {
    int result = 0;  // 1 / -1 evenly spaced increasing / decreasing, 2 / -2 not evenly, 0
    double first = 0.0, last = 0.0, increment = 0.0;  // set when result is 1 or -1
};

// 0 for fewer than 2 points or data not strictly monotonic (NaN breaks monotonicity).
// Otherwise the differences d[i] = data[i + 1] - data[i] and their mean m are formed; the
// spacing is even when every |d[i] - m| <= |m * tolerance| (a NaN tolerance, or an
// infinite mean, makes it uneven). Kept deliberately, callers rely on it: the increment
// reported is d[0], not m.
template <class T>
Spacing get_vector_inc(std::span<const T> data, double tolerance) {
    Spacing s;
    const std::size_t n = data.size();
    if (n < 2) return s;
    const int direction = data[1] > data[0] ? 1 : (data[1] < data[0] ? -1 : 0);
    if (direction == 0) return s;
    for (std::size_t i = 1; i + 1 < n; ++i)
        if (direction > 0 ? !(data[i + 1] > data[i]) : !(data[i + 1] < data[i])) return s;
    const auto difference = [&](std::size_t i) {
        return static_cast<double>(data[i + 1]) - static_cast<double>(data[i]);
    };
    double total = 0.0;
    for (std::size_t i = 0; i + 1 < n; ++i) total += difference(i);
    const double mean = total / static_cast<double>(n - 1);
    const double allowed = std::fabs(mean * tolerance);
    bool even = std::isfinite(mean);
    for (std::size_t i = 0; even && i + 1 < n; ++i)
        even = std::fabs(difference(i) - mean) <= allowed;
    if (!even) {
        s.result = 2 * direction;
        return s;
    }
    s.result = direction;
    s.first = static_cast<double>(data[0]);
    s.last = static_cast<double>(data[n - 1]);
    s.increment = difference(0);
    return s;
}

}  // namespace zemath
