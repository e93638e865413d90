// Typed array primitives: the exported members. Each export is a one-line forwarder,
// stamped from the member lists of frame/primitives.hpp, to an adapter template below
// that checks the arguments in the documented order (a refused call writes nothing),
// calls the operation template and writes the optional outputs.
#include "zemath/primitives.h"
#include "zemath/frame.h"

#include "core/guard.hpp"
#include "frame/primitives.hpp"

namespace zemath {
namespace {

template <class T>
int copy_export(const T* source, T* destination, int n) {
    if (!source || !destination || n < 0) return ZEMATH_ERR_GENERAL;
    copy_elements(view(source, n), destination);
    return ZEMATH_OK;
}

template <class T>
int minmax_export(const T* data, int first, int last, const T* marker, int* index_of_min,
                  int* index_of_max) {
    // last = INT_MAX is refused: its exclusive end would not be an int.
    if (!data || first < 0 || last == INT_MAX) return ZEMATH_ERR_GENERAL;
    ScanResult<T, double> r;
    if (first <= last) r = min_max(data, first, last + 1, marker);
    if (index_of_min) *index_of_min = r.index_of_min;
    if (index_of_max) *index_of_max = r.index_of_max;
    return r.missing;
}

template <class T>
int minmax_in_range_export(const T* data, int n, T low, T high, const T* marker, int* index_of_min,
                           int* index_of_max) {
    if (!data) return ZEMATH_ERR_GENERAL;
    const RangeExtremes r = min_max_in_range(view(data, n), low, high, marker);
    if (index_of_min) *index_of_min = r.index_of_min;
    if (index_of_max) *index_of_max = r.index_of_max;
    return r.missing;
}

// As zemath_d_sum: NULL data or n <= 0 give the empty result (min = max = 0, indices -1,
// count 0, sum 0).
template <class T>
double sum_export(const T* data, int n, const T* marker, T* min, T* max, int* index_of_min,
                  int* index_of_max, int* count) {
    ScanResult<T, SumOf<T>> r;
    if (data && n > 0) r = sum_scan(view(data, n), marker);
    if (r.count == 0) r.min = r.max = T{};
    if (min) *min = r.min;
    if (max) *max = r.max;
    if (index_of_min) *index_of_min = r.index_of_min;
    if (index_of_max) *index_of_max = r.index_of_max;
    if (count) *count = r.count;
    return r.count ? static_cast<double>(r.sum) : 0.0;
}

template <class T>
double mean_variance_export(const T* data, int n, const T* marker, double* variance, int* count) {
    if (!data) return kNanum;
    const MeanVariance r = mean_variance(view(data, n), marker);
    if (variance) *variance = r.variance;
    if (count) *count = r.count;
    return r.mean;
}

template <class T>
int cumulative_sum_export(const T* data, unsigned int first, unsigned int end, T* out,
                          const T* marker) {
    if (!data || !out || first > end) return ZEMATH_ERR_GENERAL;
    return cumulative_sum(std::span<const T>(data + first, end - first), out, marker);
}

template <class T>
int frequency_count_export(const T* data, int n, unsigned int* counts, int bins, T start, T width) {
    if (!data || !counts || n < 0 || bins < 1) return ZEMATH_ERR_GENERAL;
    return frequency_count(view(data, n),
                           std::span<unsigned int>(counts, static_cast<std::size_t>(bins)),
                           static_cast<double>(start), static_cast<double>(width));
}

template <class T>
double find_most_export(const T* data, int n, unsigned int bins, double* fraction) {
    if (!data || n < 1) return kNanum;
    return guard_value([&] {
        const MostPopulated r = find_most(view(data, n), bins);
        if (r.found && fraction) *fraction = r.fraction;
        return r.lower_edge;
    });
}

template <class T>
int stretch_export(T* data, int n, T low, T high, T new_low, T new_high) {
    if (!data || n < 0) return ZEMATH_ERR_GENERAL;
    return stretch(std::span<T>(data, static_cast<std::size_t>(n)), static_cast<double>(low),
                   static_cast<double>(high), static_cast<double>(new_low),
                   static_cast<double>(new_high));
}

template <class T>
int get_vector_inc_export(int n, const T* data, double tolerance, double* first, double* last,
                          double* increment) {
    if (!data) return 0;
    const Spacing s = get_vector_inc(view(data, n), tolerance);
    if (s.result == 1 || s.result == -1) {
        if (first) *first = s.first;
        if (last) *last = s.last;
        if (increment) *increment = s.increment;
    }
    return s.result;
}

}  // namespace
}  // namespace zemath

using namespace zemath;

// The stamps only forward; every computation lives in the templates above.
#define ZEMATH_STAMP_COPY(L, T)                                                         \
    ZEMATH_API int zemath_##L##_copy(const T* source, T* destination, int n) noexcept { \
        return copy_export(source, destination, n);                                     \
    }
#define ZEMATH_STAMP_MINMAX(L, T)                                                           \
    ZEMATH_API int zemath_##L##_minmax(const T* data, int first, int last, const T* marker, \
                                       int* index_of_min, int* index_of_max) noexcept {     \
        return minmax_export(data, first, last, marker, index_of_min, index_of_max);        \
    }
#define ZEMATH_STAMP_MINMAX_IN_RANGE(L, T)                                                     \
    ZEMATH_API int zemath_##L##_minmax_in_range(const T* data, int n, T low, T high,           \
                                                const T* marker, int* index_of_min,            \
                                                int* index_of_max) noexcept {                  \
        return minmax_in_range_export(data, n, low, high, marker, index_of_min, index_of_max); \
    }
#define ZEMATH_STAMP_SUM(L, T)                                                                \
    ZEMATH_API double zemath_##L##_sum(const T* data, int n, const T* marker, T* min, T* max, \
                                       int* index_of_min, int* index_of_max,                  \
                                       int* count) noexcept {                                 \
        return sum_export(data, n, marker, min, max, index_of_min, index_of_max, count);      \
    }
#define ZEMATH_STAMP_MEAN_VARIANCE(L, T)                                                  \
    ZEMATH_API double zemath_##L##_mean_variance(const T* data, int n, const T* marker,   \
                                                 double* variance, int* count) noexcept { \
        return mean_variance_export(data, n, marker, variance, count);                    \
    }
#define ZEMATH_STAMP_CUMULATIVE_SUM(L, T)                                                        \
    ZEMATH_API int zemath_##L##_cumulative_sum(                                                  \
        const T* data, unsigned int first, unsigned int end, T* out, const T* marker) noexcept { \
        return cumulative_sum_export(data, first, end, out, marker);                             \
    }
#define ZEMATH_STAMP_FREQUENCY_COUNT(L, T)                                                  \
    ZEMATH_API int zemath_##L##_frequency_count(const T* data, int n, unsigned int* counts, \
                                                int bins, T start, T width) noexcept {      \
        return frequency_count_export(data, n, counts, bins, start, width);                 \
    }
#define ZEMATH_STAMP_FIND_MOST(L, T)                                                  \
    ZEMATH_API double zemath_##L##_find_most(const T* data, int n, unsigned int bins, \
                                             double* fraction) noexcept {             \
        return find_most_export(data, n, bins, fraction);                             \
    }
#define ZEMATH_STAMP_STRETCH(L, T)                                                \
    ZEMATH_API int zemath_##L##_stretch(T* data, int n, T low, T high, T new_low, \
                                        T new_high) noexcept {                    \
        return stretch_export(data, n, low, high, new_low, new_high);             \
    }
#define ZEMATH_STAMP_GET_VECTOR_INC(L, T)                                              \
    ZEMATH_API int zemath_##L##_get_vector_inc(int n, const T* data, double tolerance, \
                                               double* first, double* last,            \
                                               double* increment) noexcept {           \
        return get_vector_inc_export(n, data, tolerance, first, last, increment);      \
    }

extern "C" {

ZEMATH_COPY_MEMBERS(ZEMATH_STAMP_COPY)
ZEMATH_MINMAX_MEMBERS(ZEMATH_STAMP_MINMAX)
ZEMATH_MINMAX_IN_RANGE_MEMBERS(ZEMATH_STAMP_MINMAX_IN_RANGE)
ZEMATH_SUM_MEMBERS(ZEMATH_STAMP_SUM)
ZEMATH_MEAN_VARIANCE_MEMBERS(ZEMATH_STAMP_MEAN_VARIANCE)
ZEMATH_CUMULATIVE_SUM_MEMBERS(ZEMATH_STAMP_CUMULATIVE_SUM)
ZEMATH_FREQUENCY_COUNT_MEMBERS(ZEMATH_STAMP_FREQUENCY_COUNT)
ZEMATH_FIND_MOST_MEMBERS(ZEMATH_STAMP_FIND_MOST)
ZEMATH_STRETCH_MEMBERS(ZEMATH_STAMP_STRETCH)
ZEMATH_GET_VECTOR_INC_MEMBERS(ZEMATH_STAMP_GET_VECTOR_INC)

// The float sum skips nothing and reports no count.
ZEMATH_API double zemath_f_sum(const float* data, int n, float* min, float* max, int* index_of_min,
                               int* index_of_max) noexcept {
    return sum_export<float>(data, n, nullptr, min, max, index_of_min, index_of_max, nullptr);
}

// The double sum and minmax exports (declared in frame.h) always skip NANUM.
ZEMATH_API double zemath_d_sum(const double* data, int n, double* min, double* max,
                               int* index_of_min, int* index_of_max, int* count) noexcept {
    const double marker = kNanum;
    return sum_export(data, n, &marker, min, max, index_of_min, index_of_max, count);
}

ZEMATH_API int zemath_d_minmax(const double* data, int first, int last, int* index_of_min,
                               int* index_of_max) noexcept {
    const double marker = kNanum;
    return minmax_export(data, first, last, &marker, index_of_min, index_of_max);
}

// The double mean and variance always skip NANUM.
ZEMATH_API double zemath_d_mean_variance(const double* data, int n, double* variance,
                                         int* count) noexcept {
    const double marker = kNanum;
    return mean_variance_export(data, n, &marker, variance, count);
}

}  // extern "C"
