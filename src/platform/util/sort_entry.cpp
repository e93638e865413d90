// The utility library's record-sort entry points over a caller's comparison function.
#include "platform/util/sort_entry.hpp"

#include <cstdint>
#include <memory>
#include <new>

#include "core/allocate.hpp"
#include "platform/util/sort_kernels.hpp"

namespace zemath::util {

namespace {

template <class Rec>
struct RecordLess {
    RecordCompare compare;
    bool operator()(const Rec& a, const Rec& b) const { return compare(&a, &b) < 0; }
};

// Index records compare through the records they name.
struct IndexLess {
    const unsigned char* base;
    std::size_t width;
    RecordCompare compare;
    bool operator()(std::uint32_t a, std::uint32_t b) const {
        return compare(base + a * width, base + b * width) < 0;
    }
};

template <std::size_t W, bool Stable>
bool sort_fixed(unsigned char* base, std::size_t n, RecordCompare compare) {
    using Rec = Record<W>;
    Rec* records = reinterpret_cast<Rec*>(base);
    RecordLess<Rec> less{compare};
    if constexpr (Stable) {
        auto scratch = try_allocate<Rec>(n);
        if (!scratch) return false;
        merge_sort(records, n, scratch.get(), less);
    } else {
        intro_sort(records, n, less);
    }
    return true;
}

// Any other width: sort record numbers, then move each record once along the cycles of
// the permutation (one record of temporary space).
template <bool Stable>
bool sort_by_index(unsigned char* base, std::size_t n, std::size_t width, RecordCompare compare) {
    auto order = try_allocate<std::uint32_t>(n);
    auto held = try_allocate<unsigned char>(width);
    if (!order || !held) return false;
    for (std::size_t i = 0; i < n; ++i) order[i] = static_cast<std::uint32_t>(i);
    IndexLess less{base, width, compare};
    if constexpr (Stable) {
        auto scratch = try_allocate<std::uint32_t>(n);
        if (!scratch) return false;
        merge_sort(order.get(), n, scratch.get(), less);
    } else {
        intro_sort(order.get(), n, less);
    }
    // order[k] is the record that belongs at position k; a settled position gets
    // order[k] = k.
    for (std::size_t start = 0; start < n; ++start) {
        if (order[start] == start) continue;
        std::memcpy(held.get(), base + start * width, width);
        std::size_t k = start;
        while (order[k] != start) {
            const std::size_t from = order[k];
            std::memcpy(base + k * width, base + from * width, width);
            order[k] = static_cast<std::uint32_t>(k);
            k = from;
        }
        std::memcpy(base + k * width, held.get(), width);
        order[k] = static_cast<std::uint32_t>(k);
    }
    return true;
}

template <bool Stable>
bool sort_records(void* base, int first, int last, int width, RecordCompare compare) {
    if (!base || !compare || width < 1 || first < 0 || last < first) return false;
    const std::size_t n = static_cast<std::size_t>(last) - static_cast<std::size_t>(first) + 1;
    if (n < 2) return true;
    unsigned char* records =
        static_cast<unsigned char*>(base) + static_cast<std::size_t>(first) * width;
    switch (width) {
        case 1:
            return sort_fixed<1, Stable>(records, n, compare);
        case 2:
            return sort_fixed<2, Stable>(records, n, compare);
        case 4:
            return sort_fixed<4, Stable>(records, n, compare);
        case 8:
            return sort_fixed<8, Stable>(records, n, compare);
        case 12:
            return sort_fixed<12, Stable>(records, n, compare);
        case 16:
            return sort_fixed<16, Stable>(records, n, compare);
        case 24:
            return sort_fixed<24, Stable>(records, n, compare);
        default:
            return sort_by_index<Stable>(records, n, static_cast<std::size_t>(width), compare);
    }
}

}  // namespace

bool merge_sort_records(void* base, int first, int last, int width, RecordCompare compare) {
    return sort_records<true>(base, first, last, width, compare);
}

bool quick_sort_records(void* base, int first, int last, int width, RecordCompare compare) {
    return sort_records<false>(base, first, last, width, compare);
}

}  // namespace zemath::util
