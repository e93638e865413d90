// The shared scanning routine: one pass over data[begin..end) that finds the minimum
// and maximum with their first-occurrence indices, counts the usable points and,
// optionally, sums them, skipping points equal to the missing marker (null marker:
// nothing is skipped). The typed families and the library's own routines all use it.
#pragma once

#include "frame/missing.hpp"

namespace zemath {

template <class T, class Sum = double>
struct ScanResult {
    T min{};
    T max{};
    int index_of_min = -1;
    int index_of_max = -1;
    int count = 0;    // usable (non-missing) points
    int missing = 0;  // points equal to the marker
    Sum sum{};
};

// Ties keep the first occurrence: min changes only for a strictly smaller point, max
// only for a strictly greater one. NaN is not missing: it enters the sum as it is and,
// comparing false, never replaces a min or max already set.
template <class T, class Sum = double, bool WithSum = true>
ScanResult<T, Sum> scan_min_max(const T* data, int begin, int end, const T* marker) {
    ScanResult<T, Sum> r;
    int i = begin;
    // Find the first usable point.
    for (; i < end; ++i) {
        if (marker && data[i] == *marker) {
            ++r.missing;
            continue;
        }
        r.min = r.max = data[i];
        r.index_of_min = r.index_of_max = i;
        r.count = 1;
        if constexpr (WithSum) r.sum = static_cast<Sum>(data[i]);
        ++i;
        break;
    }
    T mn = r.min, mx = r.max;
    int imn = r.index_of_min, imx = r.index_of_max, count = r.count, missing = 0;
    Sum sum = r.sum;
    if (marker) {
        const T m = *marker;
        for (; i < end; ++i) {
            const T v = data[i];
            if (v == m) {
                ++missing;
                continue;
            }
            if (v < mn) mn = v, imn = i;
            if (v > mx) mx = v, imx = i;
            if constexpr (WithSum) sum += static_cast<Sum>(v);
            ++count;
        }
    } else {
        for (; i < end; ++i) {
            const T v = data[i];
            if (v < mn) mn = v, imn = i;
            if (v > mx) mx = v, imx = i;
            if constexpr (WithSum) sum += static_cast<Sum>(v);
            ++count;
        }
    }
    r.min = mn;
    r.max = mx;
    r.index_of_min = imn;
    r.index_of_max = imx;
    r.count = count;
    r.missing += missing;
    r.sum = sum;
    return r;
}

}  // namespace zemath
