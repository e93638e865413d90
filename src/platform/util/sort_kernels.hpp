// Sort kernels behind the utility library's two record-sort entry points.
//
// Three algorithms over arrays of fixed-width records, each written once as a template
// over the record type and a "less" predicate, so that the generic entry (records of any
// width, a caller's comparison function) and the typed fast paths of the frame (the
// library's own comparators recognised by address) run exactly the same sequence of
// comparisons and so give identical results, including on data holding NaN, which the
// comparators treat as equal to everything:
//   - merge_sort: stable. Insertion-sorted runs of kMergeRun records, then bottom-up
//     merges ping-ponging between the array and a scratch buffer; a merge whose halves
//     are already in order is a plain copy, so sorted input costs O(n log n) copies only.
//   - intro_sort: not stable. Quicksort with a median-of-three (ninther above
//     kNintherSize) pivot and a Hoare partition that stops on equal keys (all-equal input
//     splits evenly), insertion sort below kSmallSort, and a heapsort fallback once the
//     depth passes 2 log2 n: O(n log n) on every input, sorted, reversed, organ-pipe or
//     crafted. Every scan is bounded by the array ends, so a comparison function that
//     is not a strict weak order (NaN, a caller's inconsistent function) may leave the
//     records in some order but never reads or writes outside them.
//   - radix_sort: stable LSD radix sort (10- or 11-bit digits; a digit every key shares
//     is skipped) of records whose leading key is an integer or
//     IEEE float, on the order-preserving bit transform of the key (sign bit flipped for
//     non-negative values, all bits flipped for negative ones; complemented for
//     descending order). -0.0 is mapped to the code of +0.0 so that the two stay tied in
//     input order, as the comparators have them equal. It refuses (returns false before
//     touching anything) keys holding NaN, for which no total order reproduces the
//     comparators. Where it runs, its result is the unique stable order, the one the
//     merge sort gives.
// Records are moved as trivially copyable byte blocks; keys are read with memcpy, so
// records need no alignment (12-byte double+int records are the common case).
#pragma once

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>
#include <utility>

namespace zemath::util {

// A record of W bytes, copied as one block.
template <std::size_t W>
struct Record {
    unsigned char bytes[W];
};

inline constexpr std::size_t kMergeRun = 24;      // insertion-sorted run length
inline constexpr std::size_t kSmallSort = 16;     // quicksort partitions below this size
inline constexpr std::size_t kNintherSize = 128;  // Tukey's ninther pivot above this size

// Stable insertion sort of a[0..n).
template <class T, class Less>
void insertion_sort(T* a, std::size_t n, Less& less) {
    for (std::size_t i = 1; i < n; ++i) {
        if (!less(a[i], a[i - 1])) continue;
        T value = a[i];
        std::size_t j = i;
        do {
            a[j] = a[j - 1];
            --j;
        } while (j > 0 && less(value, a[j - 1]));
        a[j] = value;
    }
}

// Stable merge of src[lo..mid) and src[mid..hi) into dst[lo..hi): on equal records the
// left one goes first.
template <class T, class Less>
void merge_runs(const T* src, T* dst, std::size_t lo, std::size_t mid, std::size_t hi, Less& less) {
    std::size_t i = lo, j = mid, k = lo;
    while (i < mid && j < hi) dst[k++] = less(src[j], src[i]) ? src[j++] : src[i++];
    while (i < mid) dst[k++] = src[i++];
    while (j < hi) dst[k++] = src[j++];
}

// Stable merge sort of a[0..n) with scratch space for n records.
template <class T, class Less>
void merge_sort(T* a, std::size_t n, T* scratch, Less& less) {
    for (std::size_t lo = 0; lo < n; lo += kMergeRun)
        insertion_sort(a + lo, std::min(kMergeRun, n - lo), less);
    T* src = a;
    T* dst = scratch;
    for (std::size_t width = kMergeRun; width < n; width *= 2) {
        for (std::size_t lo = 0; lo < n; lo += 2 * width) {
            const std::size_t mid = std::min(lo + width, n);
            const std::size_t hi = std::min(lo + 2 * width, n);
            if (mid >= hi || !less(src[mid], src[mid - 1])) {
                std::memcpy(static_cast<void*>(dst + lo), src + lo, (hi - lo) * sizeof(T));
                continue;
            }
            merge_runs(src, dst, lo, mid, hi, less);
        }
        std::swap(src, dst);
    }
    if (src != a) std::memcpy(static_cast<void*>(a), src, n * sizeof(T));
}

template <class T, class Less>
void sift_down(T* a, std::size_t root, std::size_t n, Less& less) {
    T value = a[root];
    for (;;) {
        std::size_t child = 2 * root + 1;
        if (child >= n) break;
        if (child + 1 < n && less(a[child], a[child + 1])) ++child;
        if (!less(value, a[child])) break;
        a[root] = a[child];
        root = child;
    }
    a[root] = value;
}

template <class T, class Less>
void heap_sort(T* a, std::size_t n, Less& less) {
    if (n < 2) return;
    for (std::size_t i = n / 2; i-- > 0;) sift_down(a, i, n, less);
    for (std::size_t end = n - 1; end > 0; --end) {
        std::swap(a[0], a[end]);
        sift_down(a, 0, end, less);
    }
}

// Index of the median of a[i], a[j], a[k].
template <class T, class Less>
std::size_t median_of_three(const T* a, std::size_t i, std::size_t j, std::size_t k, Less& less) {
    if (less(a[j], a[i])) std::swap(i, j);
    if (less(a[k], a[j])) {
        j = k;
        if (less(a[j], a[i])) j = i;
    }
    return j;
}

template <class T, class Less>
void intro_sort_loop(T* a, std::size_t n, int depth, Less& less) {
    while (n > kSmallSort) {
        if (depth-- == 0) {
            heap_sort(a, n, less);
            return;
        }
        std::size_t pivot_index;
        if (n > kNintherSize) {
            const std::size_t s = n / 8;
            const std::size_t m = n / 2;
            pivot_index = median_of_three(
                a, median_of_three(a, 0, s, 2 * s, less), median_of_three(a, m - s, m, m + s, less),
                median_of_three(a, n - 1 - 2 * s, n - 1 - s, n - 1, less), less);
        } else {
            pivot_index = median_of_three(a, 0, n / 2, n - 1, less);
        }
        std::swap(a[0], a[pivot_index]);
        const T pivot = a[0];
        // Hoare partition; both scans stop on records equal to the pivot and are bounded
        // by the array ends, whatever the comparison function does.
        std::size_t i = 0, j = n;
        for (;;) {
            do ++i;
            while (i < n && less(a[i], pivot));
            do --j;
            while (j > 0 && less(pivot, a[j]));
            if (i >= j) break;
            std::swap(a[i], a[j]);
        }
        std::swap(a[0], a[j]);  // the pivot lands at j; both sides exclude it
        const std::size_t left = j, right = n - j - 1;
        if (left < right) {
            intro_sort_loop(a, left, depth, less);
            a += j + 1;
            n = right;
        } else {
            intro_sort_loop(a + j + 1, right, depth, less);
            n = left;
        }
    }
    insertion_sort(a, n, less);
}

// Introsort of a[0..n): quicksort bounded by a heapsort fallback at depth 2 log2 n.
template <class T, class Less>
void intro_sort(T* a, std::size_t n, Less& less) {
    if (n < 2) return;
    intro_sort_loop(a, n, 2 * static_cast<int>(std::bit_width(n)), less);
}

// --- Radix sort ---------------------------------------------------------------------

// Order-preserving unsigned codes of the key types the radix sort handles.
template <class Key>
struct RadixKey {
    static_assert(std::is_integral_v<Key>);
    using Code = std::make_unsigned_t<Key>;
    static bool is_nan(Key) { return false; }
    static Code code(Key k) {
        Code c = static_cast<Code>(k);
        if constexpr (std::is_signed_v<Key>) c ^= Code(Code(1) << (8 * sizeof(Key) - 1));
        return c;
    }
};

template <class F, class U>
struct FloatRadixKey {
    using Code = U;
    static bool is_nan(F k) { return k != k; }
    static Code code(F k) {
        if (k == F(0)) k = F(0);  // -0.0 ties with +0.0, as in the comparators
        const U bits = std::bit_cast<U>(k);
        const U sign = U(1) << (8 * sizeof(U) - 1);
        return (bits & sign) ? U(~bits) : U(bits | sign);
    }
};
template <>
struct RadixKey<double> : FloatRadixKey<double, std::uint64_t> {};
template <>
struct RadixKey<float> : FloatRadixKey<float, std::uint32_t> {};

// Digit width by key width. Fewer buckets scatter faster (their write streams stay in
// L1) but need more passes; measured on 1e7 12-byte records, 10-bit digits beat 8, 9, 11,
// 12 and 16 for 64-bit keys, and 11 bits (3 passes) suit 32-bit keys.
template <class Code>
constexpr int radix_bits() {
    return sizeof(Code) == 8 ? 10 : sizeof(Code) == 4 ? 11 : 8;
}

// Stable LSD radix sort of n records of W bytes whose first sizeof(Key) bytes hold the
// key. scratch holds n records. Returns false, with nothing changed, when a key is NaN.
// n must stay below 2^32.
template <class Key, std::size_t W, bool Descending>
bool radix_sort(unsigned char* base, std::size_t n, unsigned char* scratch) {
    static_assert(W >= sizeof(Key));
    using Traits = RadixKey<Key>;
    using Code = typename Traits::Code;
    constexpr int kRadixBits = radix_bits<Code>();
    constexpr std::size_t kRadixBuckets = std::size_t(1) << kRadixBits;
    constexpr int kCodeBits = 8 * sizeof(Code);
    constexpr int kPasses = (kCodeBits + kRadixBits - 1) / kRadixBits;
    using Rec = Record<W>;

    auto code_of = [](const unsigned char* record) {
        Key k;
        std::memcpy(&k, record, sizeof k);
        const Code c = Traits::code(k);
        return Descending ? Code(~c) : c;
    };

    // One read-only pass: NaN check and the histograms of every digit (on the stack:
    // 28 KB for 64-bit keys).
    std::uint32_t counts[kPasses][kRadixBuckets] = {};
    bool has_nan = false;
    for (std::size_t i = 0; i < n; ++i) {
        Key k;
        std::memcpy(&k, base + i * W, sizeof k);
        has_nan |= Traits::is_nan(k);
        Code c = Traits::code(k);
        if constexpr (Descending) c = Code(~c);
        for (int p = 0; p < kPasses; ++p)
            ++counts[p][(c >> (p * kRadixBits)) & (kRadixBuckets - 1)];
    }
    if (has_nan) return false;

    Rec* src = reinterpret_cast<Rec*>(base);
    Rec* dst = reinterpret_cast<Rec*>(scratch);
    const Code first_code = code_of(base);
    for (int p = 0; p < kPasses; ++p) {
        const int shift = p * kRadixBits;
        std::uint32_t* count = counts[p];
        // A digit that every key shares leaves the order as it is.
        if (count[(first_code >> shift) & (kRadixBuckets - 1)] == n) continue;
        std::uint32_t offset = 0;
        for (std::size_t d = 0; d < kRadixBuckets; ++d) {
            const std::uint32_t c = count[d];
            count[d] = offset;
            offset += c;
        }
        for (std::size_t i = 0; i < n; ++i) {
            const std::size_t d = (code_of(src[i].bytes) >> shift) & (kRadixBuckets - 1);
            dst[count[d]++] = src[i];
        }
        std::swap(src, dst);
    }
    if (src != reinterpret_cast<Rec*>(base)) std::memcpy(base, src, n * W);
    return true;
}

}  // namespace zemath::util
