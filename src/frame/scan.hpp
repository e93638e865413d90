// The shared scanning routines: one pass over data[begin..end) that finds the minimum
// and maximum with their first-occurrence indices, counts the usable and the missing
// points and, optionally, sums the usable points; and the deviation sums of the
// two-pass variance. The typed families and the library's own routines all use them.
//
// Rules every caller relies on:
// - a point equal to the marker is missing: skipped and counted (null marker: nothing
//   is skipped);
// - ties keep the first occurrence: min changes only for a strictly smaller point, max
//   only for a strictly greater one;
// - NaN is not missing: it enters the sum as it is and, comparing false, never replaces
//   a min or max already set (so a NaN met first stays both the min and the max).
//
// Method: after the first usable point the data is read in blocks of up to kBlockSize
// points (the last one a multiple of 16; the fewer than 16 points left are scanned one
// by one) through 16 lanes: GCC/Clang vector extensions, AVX-512 or AVX2 when the
// processor has it and the baseline SSE2 otherwise; plain loops for other compilers or when
// ZEMATH_SCAN_PORTABLE is defined. A block's min and max are compared with the running
// ones, and only a block that improves one of them is read again to locate the first
// index of its extreme, so the indices are exactly those of the plain left-to-right
// scan. Sums: lane j of a block adds its points j, j + 16, ...; the lanes are combined in
// lane order and the block sums added in block order. The result is the same on every
// processor and exact for integer data; floating-point sums round differently from a
// single running sum (16 accumulators per block: no less accurate). The deviation sums of
// the variance use 16 lanes over the whole array the same way. Large arrays stream at the
// speed of a plain read of the same memory (the benchmark table's "vs plain read" rows).
//
// Why an AVX2 form beside the SSE2 one: the exports built with and without it, timed
// alternately in one process on an AVX2 machine, 2 cores, no AVX-512: zemath_d_sum and
// zemath_d_minmax take 1.4 times as long in SSE2 on 1e3 doubles, 2 times on 1e5 (in the
// cache) and 1.0 to 1.2 times on 1e7 (memory-bound); zemath_d_mean_variance (the deviation
// sums) 1.16, 1.35 and 1.0 times. The AVX-512 form earned 1.2 to 1.9 times over AVX2 on
// arrays in the cache where it was measured; processors without AVX-512 (this project's
// build machines among them) run the AVX2 and SSE2 forms, which the tests cover.
#pragma once

#include <cstdint>
#include <limits>
#include <type_traits>

#include "core/missing.hpp"
#include "zemath/types.h"

#if defined(__GNUC__) && !defined(ZEMATH_SCAN_PORTABLE)
#define ZEMATH_SCAN_VECTORS 1
#if defined(__x86_64__) || defined(__i386__)
#define ZEMATH_SCAN_AVX2 1
#endif
#endif

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

// The accumulator a family sums an element type into: double for floating point data,
// 64-bit integers (exact) for integer data.
template <class T>
using SumOf =
    std::conditional_t<std::is_floating_point_v<T>, double,
                       std::conditional_t<std::is_signed_v<T>, std::int64_t, std::uint64_t>>;

namespace scan_detail {

inline constexpr int kLanes = 16;       // accumulators per block; fixes the sums' rounding
inline constexpr int kBlockSize = 512;  // an improving block is reread: at most this many points

// Identities of min, max and sum: a skipped point is replaced by them in its lane.
template <class T>
constexpr T top() {
    if constexpr (std::numeric_limits<T>::has_infinity)
        return std::numeric_limits<T>::infinity();
    else
        return std::numeric_limits<T>::max();
}
template <class T>
constexpr T bottom() {
    if constexpr (std::numeric_limits<T>::has_infinity)
        return -std::numeric_limits<T>::infinity();
    else
        return std::numeric_limits<T>::lowest();
}
// -0.0 leaves every sum unchanged, -0.0 itself included (0.0 would turn -0.0 into +0.0).
template <class T>
constexpr T sum_identity() {
    if constexpr (std::is_floating_point_v<T>)
        return T(-0.0);
    else
        return T(0);
}

template <class T, class Sum>
struct BlockSummary {
    T min;
    T max;
    Sum sum;
    int missing;
};

// Reference form of one block: the same lanes as the vector form, written as plain loops.
// A block is p[0..length), length a multiple of kLanes, at most kBlockSize.
template <class T, class Sum, bool WithMinMax, bool WithSum, bool WithMarker>
BlockSummary<T, Sum> summarise_block_plain(const T* p, int length, T marker) {
    T mn[kLanes], mx[kLanes];
    Sum s[kLanes];
    for (int j = 0; j < kLanes; ++j)
        mn[j] = top<T>(), mx[j] = bottom<T>(), s[j] = sum_identity<Sum>();
    int missing = 0;
    for (int b = 0; b < length; b += kLanes)
        for (int j = 0; j < kLanes; ++j) {
            const T v = p[b + j];
            if (WithMarker && v == marker) {
                ++missing;
                continue;
            }
            if constexpr (WithMinMax) {
                if (v < mn[j]) mn[j] = v;
                if (v > mx[j]) mx[j] = v;
            }
            if constexpr (WithSum) s[j] += static_cast<Sum>(v);
        }
    BlockSummary<T, Sum> r{mn[0], mx[0], s[0], missing};
    for (int j = 1; j < kLanes; ++j) {
        if (mn[j] < r.min) r.min = mn[j];
        if (mx[j] > r.max) r.max = mx[j];
        r.sum += s[j];
    }
    return r;
}

#if ZEMATH_SCAN_VECTORS
template <class T, int Bytes>
struct VectorOf {
    typedef T type __attribute__((vector_size(Bytes)));
};

// Vector form of one block for a register width of Bytes. Lane l of vector k is lane
// k * width + l of the plain form, so both give identical results.
template <int Bytes, class T, class Sum, bool WithMinMax, bool WithSum, bool WithMarker>
[[gnu::always_inline]] inline BlockSummary<T, Sum> summarise_block_vector(const T* p, int length,
                                                                          T marker) {
    constexpr int width =
        Bytes / static_cast<int>(sizeof(T)) < kLanes ? Bytes / static_cast<int>(sizeof(T)) : kLanes;
    constexpr int vectors = kLanes / width;
    using V = typename VectorOf<T, width * sizeof(T)>::type;
    using Mask = decltype(V{} < V{});
    using SumV = typename VectorOf<Sum, width * sizeof(Sum)>::type;
    const V highest = V{} + top<T>(), lowest = V{} + bottom<T>(), nothing = V{} + sum_identity<T>();
    const V marker_v = V{} + marker;
    V mn[vectors], mx[vectors];
    SumV s[vectors];
    Mask skipped[vectors];  // -1 per skipped point: at most kBlockSize / kLanes per lane
    for (int k = 0; k < vectors; ++k)
        mn[k] = highest, mx[k] = lowest, s[k] = SumV{} + sum_identity<Sum>(), skipped[k] = Mask{};
    for (int b = 0; b < length; b += kLanes)
        for (int k = 0; k < vectors; ++k) {
            V v;
            __builtin_memcpy(&v, p + b + k * width, sizeof v);
            V for_min = v, for_max = v, for_sum = v;
            if constexpr (WithMarker) {
                const Mask miss = v == marker_v;
                skipped[k] += miss;
                for_min = miss ? highest : v;
                for_max = miss ? lowest : v;
                for_sum = miss ? nothing : v;
            }
            if constexpr (WithMinMax) {
                mn[k] = for_min < mn[k] ? for_min : mn[k];
                mx[k] = for_max > mx[k] ? for_max : mx[k];
            }
            if constexpr (WithSum) {
                if constexpr (std::is_same_v<T, Sum>)
                    s[k] += for_sum;
                else
                    s[k] += __builtin_convertvector(for_sum, SumV);
            }
        }
    BlockSummary<T, Sum> r{mn[0][0], mx[0][0], s[0][0], 0};
    for (int lane = 0; lane < kLanes; ++lane) {
        const int k = lane / width, l = lane % width;
        if (mn[k][l] < r.min) r.min = mn[k][l];
        if (mx[k][l] > r.max) r.max = mx[k][l];
        if (lane) r.sum += s[k][l];
        r.missing -= static_cast<int>(skipped[k][l]);
    }
    return r;
}
#endif

// Running state of a scan, kept in scalars so that it crosses the processor dispatch.
template <class T, class Sum>
struct Running {
    T min, max;
    int index_of_min, index_of_max;
    int count, missing;
    Sum sum;
};

// First index in p[0..length) of a point equal to value, which was read from this block
// as a usable point's value; a point equal to it is therefore usable too.
template <class T>
int locate_plain(const T* p, int length, T value) {
    for (int k = 0; k < length; ++k)
        if (p[k] == value) return k;
    return 0;  // unreachable
}

#if ZEMATH_SCAN_VECTORS
// The same, testing 16 points at a time before looking at single points.
template <int Bytes, class T>
[[gnu::always_inline]] inline int locate_vector(const T* p, int length, T value) {
    constexpr int width =
        Bytes / static_cast<int>(sizeof(T)) < kLanes ? Bytes / static_cast<int>(sizeof(T)) : kLanes;
    using V = typename VectorOf<T, width * sizeof(T)>::type;
    using Mask = decltype(V{} < V{});
    const V value_v = V{} + value;
    for (int g = 0; g < length; g += kLanes) {
        Mask hit{};
        for (int k = 0; k < kLanes / width; ++k) {
            V v;
            __builtin_memcpy(&v, p + g + k * width, sizeof v);
            hit |= v == value_v;
        }
        std::uint64_t words[sizeof(Mask) / 8], any = 0;
        __builtin_memcpy(words, &hit, sizeof hit);
        for (std::uint64_t w : words) any |= w;
        if (any)
            for (int k = g; k < g + kLanes; ++k)
                if (p[k] == value) return k;
    }
    return 0;  // unreachable
}
#endif

template <int Bytes, class T>
[[gnu::always_inline]] inline int locate(const T* p, int length, T value) {
#if ZEMATH_SCAN_VECTORS
    if constexpr (Bytes > 0) return locate_vector<Bytes>(p, length, value);
#endif
    return locate_plain(p, length, value);
}

// Blocks of data[i..end): whole ones, then one of the remaining multiple of kLanes;
// advances i past them (fewer than kLanes points remain). Bytes = 0: the plain form.
template <int Bytes, class T, class Sum, bool WithMinMax, bool WithSum, bool WithMarker>
[[gnu::always_inline]] inline void scan_blocks(const T* data, int& i, int end, T marker,
                                               Running<T, Sum>& r) {
    while (end - i >= kLanes) {
        const int length = end - i >= kBlockSize ? kBlockSize : (end - i) / kLanes * kLanes;
        const T* p = data + i;
        BlockSummary<T, Sum> b;
#if ZEMATH_SCAN_VECTORS
        if constexpr (Bytes > 0)
            b = summarise_block_vector<Bytes, T, Sum, WithMinMax, WithSum, WithMarker>(p, length,
                                                                                       marker);
        else
#endif
            b = summarise_block_plain<T, Sum, WithMinMax, WithSum, WithMarker>(p, length, marker);
        r.missing += b.missing;
        r.count += length - b.missing;
        if constexpr (WithSum) r.sum += b.sum;
        if constexpr (WithMinMax) {
            // At most 32-byte registers: 64-byte comparison masks are slow to test.
            constexpr int locate_bytes = Bytes > 32 ? 32 : Bytes;
            if (b.min < r.min) {
                r.index_of_min = i + locate<locate_bytes>(p, length, b.min);
                r.min = data[r.index_of_min];
            }
            if (b.max > r.max) {
                r.index_of_max = i + locate<locate_bytes>(p, length, b.max);
                r.max = data[r.index_of_max];
            }
        }
        i += length;
    }
}

#if ZEMATH_SCAN_AVX2
template <class T, class Sum, bool WithMinMax, bool WithSum, bool WithMarker>
__attribute__((target("avx2"))) void scan_blocks_avx2(const T* data, int& i, int end, T marker,
                                                      Running<T, Sum>& r) {
    scan_blocks<32, T, Sum, WithMinMax, WithSum, WithMarker>(data, i, end, marker, r);
}

inline bool processor_has_avx2() {
    __builtin_cpu_init();  // idempotent; safe before constructors have run
    return __builtin_cpu_supports("avx2");
}

// AVX-512 (with its mask registers) for the scan only: it has no multiplications, so
// the fused multiply-add that AVX-512 brings cannot change a result.
template <class T, class Sum, bool WithMinMax, bool WithSum, bool WithMarker>
__attribute__((target("avx512f,avx512bw,avx512vl,avx512dq"))) void scan_blocks_avx512(
    const T* data, int& i, int end, T marker, Running<T, Sum>& r) {
    scan_blocks<64, T, Sum, WithMinMax, WithSum, WithMarker>(data, i, end, marker, r);
}

inline bool processor_has_avx512() {
    __builtin_cpu_init();
    return __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512bw") &&
           __builtin_cpu_supports("avx512vl") && __builtin_cpu_supports("avx512dq");
}
#endif

// Selects the widest form the processor runs.
template <class T, class Sum, bool WithMinMax, bool WithSum, bool WithMarker>
void scan_blocks_dispatch(const T* data, int& i, int end, T marker, Running<T, Sum>& r) {
    if (end - i < kLanes) return;
#if ZEMATH_SCAN_AVX2
    if (processor_has_avx512())
        return scan_blocks_avx512<T, Sum, WithMinMax, WithSum, WithMarker>(data, i, end, marker, r);
    if (processor_has_avx2())
        return scan_blocks_avx2<T, Sum, WithMinMax, WithSum, WithMarker>(data, i, end, marker, r);
#endif
#if ZEMATH_SCAN_VECTORS
    scan_blocks<16, T, Sum, WithMinMax, WithSum, WithMarker>(data, i, end, marker, r);
#else
    scan_blocks<0, T, Sum, WithMinMax, WithSum, WithMarker>(data, i, end, marker, r);
#endif
}

// The plain left-to-right scan of data[i..end) (the remainder after the blocks). The
// state is copied to locals: stores through r could alias the data.
template <class T, class Sum, bool WithMinMax, bool WithSum, bool WithMarker>
void scan_tail(const T* data, int i, int end, T marker, Running<T, Sum>& r) {
    T mn = r.min, mx = r.max;
    int imn = r.index_of_min, imx = r.index_of_max, count = r.count, missing = r.missing;
    Sum sum = r.sum;
    for (; i < end; ++i) {
        const T v = data[i];
        if (WithMarker && v == marker) {
            ++missing;
            continue;
        }
        if constexpr (WithMinMax) {
            if (v < mn) mn = v, imn = i;
            if (v > mx) mx = v, imx = i;
        }
        if constexpr (WithSum) sum += static_cast<Sum>(v);
        ++count;
    }
    r = Running<T, Sum>{mn, mx, imn, imx, count, missing, sum};
}

template <class T, class Sum, bool WithMinMax, bool WithSum, bool WithMarker>
void scan_rest(const T* data, int i, int end, T marker, Running<T, Sum>& r) {
    scan_blocks_dispatch<T, Sum, WithMinMax, WithSum, WithMarker>(data, i, end, marker, r);
    scan_tail<T, Sum, WithMinMax, WithSum, WithMarker>(data, i, end, marker, r);
}

template <class T, class Sum, bool WithMinMax, bool WithSum>
ScanResult<T, Sum> scan(const T* data, int begin, int end, const T* marker) {
    ScanResult<T, Sum> out;
    if (begin >= end) return out;
    // The first usable point sets min, max and both indices.
    int i = begin;
    const T m = marker ? *marker : T{};
    if (marker)
        while (i < end && data[i] == m) ++i, ++out.missing;
    if (i == end) return out;
    Running<T, Sum> r{data[i], data[i], i, i, 1, out.missing, static_cast<Sum>(data[i])};
    if constexpr (!WithSum) r.sum = Sum{};
    ++i;
    bool with_min_max = WithMinMax;
    if constexpr (std::is_floating_point_v<T>)
        if (r.min != r.min) with_min_max = false;  // a NaN first: nothing will replace it
    if (with_min_max) {
        if (marker)
            scan_rest<T, Sum, WithMinMax, WithSum, true>(data, i, end, m, r);
        else
            scan_rest<T, Sum, WithMinMax, WithSum, false>(data, i, end, m, r);
    } else {
        if (marker)
            scan_rest<T, Sum, false, WithSum, true>(data, i, end, m, r);
        else
            scan_rest<T, Sum, false, WithSum, false>(data, i, end, m, r);
    }
    out.min = r.min;
    out.max = r.max;
    out.index_of_min = r.index_of_min;
    out.index_of_max = r.index_of_max;
    out.count = r.count;
    out.missing = r.missing;
    out.sum = r.sum;
    return out;
}

}  // namespace scan_detail

// Min, max, first-occurrence indices, usable and missing counts and (WithSum) the sum
// of data[begin..end). With no usable point: min = max = T{}, indices -1, count 0,
// sum 0.
template <class T, class Sum = double, bool WithSum = true>
ScanResult<T, Sum> scan_min_max(const T* data, int begin, int end, const T* marker) {
    return scan_detail::scan<T, Sum, true, WithSum>(data, begin, end, marker);
}

// Usable and missing counts and the sum of data[begin..end), without min and max
// (min, max and the indices of the result are left as for an empty scan). The sum is
// the same as scan_min_max's.
template <class T, class Sum = SumOf<T>>
ScanResult<T, Sum> scan_sum(const T* data, int begin, int end, const T* marker) {
    ScanResult<T, Sum> r = scan_detail::scan<T, Sum, false, true>(data, begin, end, marker);
    r.min = r.max = T{};
    r.index_of_min = r.index_of_max = -1;
    return r;
}

// The complex form of the scan: min and max by modulus (the caller's choice for d_complex
// data), a point missing when both parts equal the marker's. Same tie and NaN rules; no
// sum.
inline ScanResult<d_complex, double> scan_min_max_by_modulus(const d_complex* data, int begin,
                                                             int end, const d_complex* marker) {
    ScanResult<d_complex, double> r;
    double min_modulus = 0.0, max_modulus = 0.0;
    for (int i = begin; i < end; ++i) {
        const d_complex v = data[i];
        if (marker && v.re == marker->re && v.im == marker->im) {
            ++r.missing;
            continue;
        }
        const double modulus = std::hypot(v.re, v.im);  // no overflow for large parts
        if (r.count++ == 0) {
            r.min = r.max = v;
            r.index_of_min = r.index_of_max = i;
            min_modulus = max_modulus = modulus;
            continue;
        }
        if (modulus < min_modulus) r.min = v, r.index_of_min = i, min_modulus = modulus;
        if (modulus > max_modulus) r.max = v, r.index_of_max = i, max_modulus = modulus;
    }
    return r;
}

// Sums of (v - mean) and (v - mean)^2 over the usable points of data[0..n), in 16 lanes
// like the scan's sums (lane j: points j, j + 16, ...; lanes combined in order, then the
// remainder added in order).
struct DeviationSums {
    double first = 0.0;   // sum of (v - mean)
    double second = 0.0;  // sum of (v - mean)^2
};

namespace scan_detail {

template <class T, bool WithMarker>
void deviation_lanes_plain(const T* data, int n_whole, T marker, double mean, double* s1,
                           double* s2) {
    for (int b = 0; b < n_whole; b += kLanes)
        for (int j = 0; j < kLanes; ++j) {
            const T v = data[b + j];
            if (WithMarker && v == marker) continue;
            const double d = static_cast<double>(v) - mean;
            s1[j] += d;
            s2[j] += d * d;
        }
}

#if ZEMATH_SCAN_VECTORS
template <int Bytes, class T, bool WithMarker>
[[gnu::always_inline]] inline void deviation_lanes_vector(const T* data, int n_whole, T marker,
                                                          double mean, double* s1, double* s2) {
    constexpr int width = Bytes / 8;  // doubles per register
    constexpr int vectors = kLanes / width;
    using D = typename VectorOf<double, Bytes>::type;
    using V = typename VectorOf<T, width * sizeof(T)>::type;
    using DMask = decltype(D{} < D{});
    const D mean_v = D{} + mean, nothing = D{} + -0.0;
    const V marker_v = V{} + marker;
    D a1[vectors], a2[vectors];
    for (int k = 0; k < vectors; ++k)
        __builtin_memcpy(&a1[k], s1 + k * width, sizeof(D)),
            __builtin_memcpy(&a2[k], s2 + k * width, sizeof(D));
    for (int b = 0; b < n_whole; b += kLanes)
        for (int k = 0; k < vectors; ++k) {
            V v;
            __builtin_memcpy(&v, data + b + k * width, sizeof v);
            D d = __builtin_convertvector(v, D) - mean_v;
            if constexpr (WithMarker)
                d = __builtin_convertvector(v == marker_v, DMask) ? nothing : d;
            a1[k] += d;
            a2[k] += d * d;  // a skipped point adds (-0)^2 = +0 to a lane that is >= +0
        }
    for (int k = 0; k < vectors; ++k)
        __builtin_memcpy(s1 + k * width, &a1[k], sizeof(D)),
            __builtin_memcpy(s2 + k * width, &a2[k], sizeof(D));
}
#endif

#if ZEMATH_SCAN_AVX2
// AVX2 at most: it carries no fused multiply-add, so no form can contract the squares
// and sums differently from another.
template <class T, bool WithMarker>
__attribute__((target("avx2"))) void deviation_lanes_avx2(const T* data, int n_whole, T marker,
                                                          double mean, double* s1, double* s2) {
    deviation_lanes_vector<32, T, WithMarker>(data, n_whole, marker, mean, s1, s2);
}
#endif

template <class T, bool WithMarker>
DeviationSums deviation_sums(const T* data, int n, T marker, double mean) {
    double s1[kLanes], s2[kLanes];
    for (int j = 0; j < kLanes; ++j) s1[j] = -0.0, s2[j] = 0.0;
    const int n_whole = n / kLanes * kLanes;
#if ZEMATH_SCAN_AVX2
    if (processor_has_avx2())
        deviation_lanes_avx2<T, WithMarker>(data, n_whole, marker, mean, s1, s2);
    else
#endif
#if ZEMATH_SCAN_VECTORS
        deviation_lanes_vector<16, T, WithMarker>(data, n_whole, marker, mean, s1, s2);
#else
    deviation_lanes_plain<T, WithMarker>(data, n_whole, marker, mean, s1, s2);
#endif
    DeviationSums r{s1[0], s2[0]};
    for (int j = 1; j < kLanes; ++j) r.first += s1[j], r.second += s2[j];
    for (int i = n_whole; i < n; ++i) {
        if (WithMarker && data[i] == marker) continue;
        const double d = static_cast<double>(data[i]) - mean;
        r.first += d;
        r.second += d * d;
    }
    return r;
}

}  // namespace scan_detail

template <class T>
DeviationSums deviation_sums(const T* data, int n, const T* marker, double mean) {
    if (marker) return scan_detail::deviation_sums<T, true>(data, n, *marker, mean);
    return scan_detail::deviation_sums<T, false>(data, n, T{}, mean);
}

}  // namespace zemath
