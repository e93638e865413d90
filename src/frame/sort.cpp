// Sorting: the typed comparison functions and their lookup by type code, the two
// exported record-sort entry points, the sorter class, and the vector container's index
// sort.
//
// Method. The entry points serve any comparison function through the utility library's
// kernels (platform/util/sort_entry: a stable merge sort and an introsort that is
// O(n log n) on every input). When the comparison function is one of this library's own
// (recognised by address) and the record width is the key width plus 0, 4 or 8 bytes,
// they run the same kernels on a typed record with the comparison inlined, and for
// 2048 records or more a stable LSD radix sort on the order-preserving bit code of the
// key. The radix sort runs only on keys without NaN; there the comparators are a strict
// weak order (with -0.0 tied to 0.0, which the radix code reproduces) and the stable
// order it gives is the one the merge sort gives; with a NaN present the typed merge
// sort or introsort runs, the same algorithm as the generic path, so the result is the
// same record order either way. The fast path changes speed only.
//
// Failure: the entry points and Sort return 0 and leave the data untouched when
// arguments are unusable or storage cannot be had; they never throw.
#include "frame/sort.hpp"

#include <climits>
#include <cstdint>
#include <cstring>
#include <memory>
#include <new>

#include "core/allocate.hpp"
#include "platform/util/sort_entry.hpp"
#include "platform/util/sort_kernels.hpp"
#include "zemath/sort.hpp"

using zemath::util::RecordCompare;

namespace {

// --- Comparison functions ---------------------------------------------------------------

// Keys are read with memcpy: records (key + companion) are packed without alignment.
// A null record orders as the smallest (two nulls tie), so a comparison handed a null
// pointer answers instead of crashing.
template <class T>
int compare_ascend(const void* a, const void* b) {
    if (!a || !b) return (a != nullptr) - (b != nullptr);
    T x, y;
    std::memcpy(&x, a, sizeof x);
    std::memcpy(&y, b, sizeof y);
    return x < y ? -1 : (y < x ? 1 : 0);
}

template <class T>
int compare_descend(const void* a, const void* b) {
    if (!a || !b) return (b != nullptr) - (a != nullptr);
    T x, y;
    std::memcpy(&x, a, sizeof x);
    std::memcpy(&y, b, sizeof y);
    return x < y ? 1 : (y < x ? -1 : 0);
}

}  // namespace

// The one list of (name, element type) pairs behind the exported comparison functions.
#define ZEMATH_COMPARE_TYPES(X) \
    X(char, signed char)        \
    X(BYTE, unsigned char)      \
    X(short, short)             \
    X(WORD, unsigned short)     \
    X(int, int)                 \
    X(UINT, unsigned int)       \
    X(float, float)             \
    X(double, double)

#define ZEMATH_DEFINE_COMPARE(name, type)                                            \
    ZEMATH_API int Compare_##name##_Ascend(const void* a, const void* b) noexcept {  \
        return compare_ascend<type>(a, b);                                           \
    }                                                                                \
    ZEMATH_API int Compare_##name##_Descend(const void* a, const void* b) noexcept { \
        return compare_descend<type>(a, b);                                          \
    }

extern "C" {
ZEMATH_COMPARE_TYPES(ZEMATH_DEFINE_COMPARE)
}

#undef ZEMATH_DEFINE_COMPARE

namespace {

struct ComparePair {
    RecordCompare ascend;
    RecordCompare descend;
};

// The type-code table: 2, 3 char; 4 BYTE; 5 short; 6 WORD; 8 int; 9 UINT; 10 float;
// 11, 13 double; every other code has none.
ComparePair compare_pair(int type_code) {
    switch (type_code) {
        case 2:
        case 3:
            return {Compare_char_Ascend, Compare_char_Descend};
        case 4:
            return {Compare_BYTE_Ascend, Compare_BYTE_Descend};
        case 5:
            return {Compare_short_Ascend, Compare_short_Descend};
        case 6:
            return {Compare_WORD_Ascend, Compare_WORD_Descend};
        case 8:
            return {Compare_int_Ascend, Compare_int_Descend};
        case 9:
            return {Compare_UINT_Ascend, Compare_UINT_Descend};
        case 10:
            return {Compare_float_Ascend, Compare_float_Descend};
        case 11:
        case 13:
            return {Compare_double_Ascend, Compare_double_Descend};
        default:
            return {nullptr, nullptr};
    }
}

void* as_pointer(RecordCompare f) {
    return reinterpret_cast<void*>(f);
}

// --- Typed fast path ----------------------------------------------------------------

// Below this many records the comparison kernels beat the radix sort's fixed cost
// (histograms of 2048 buckets per digit).
constexpr std::size_t kRadixMinimum = 2048;

// Sorts n records of W bytes led by a Key, with the comparison of Compare_<Key>_Ascend
// (Descending false) or _Descend inlined. Returns 1, or 0 when the stable sort cannot
// get its scratch space.
template <class Key, bool Descending, std::size_t W>
int typed_sort_fixed(unsigned char* base, std::size_t n, bool stable) {
    using Rec = zemath::util::Record<W>;
    Rec* records = reinterpret_cast<Rec*>(base);
    // Exactly "compare(a, b) < 0" of the library's comparison function.
    auto less = [](const Rec& a, const Rec& b) {
        Key x, y;
        std::memcpy(&x, a.bytes, sizeof x);
        std::memcpy(&y, b.bytes, sizeof y);
        return Descending ? y < x : x < y;
    };
    std::unique_ptr<Rec[]> scratch;
    if (stable || n >= kRadixMinimum) scratch = zemath::try_allocate<Rec>(n);
    if (scratch && n >= kRadixMinimum &&
        zemath::util::radix_sort<Key, W, Descending>(
            base, n, reinterpret_cast<unsigned char*>(scratch.get())))
        return 1;
    if (stable) {
        if (!scratch) return 0;
        zemath::util::merge_sort(records, n, scratch.get(), less);
    } else {
        zemath::util::intro_sort(records, n, less);  // in place: no scratch needed
    }
    return 1;
}

// -1 when the width is not one the fast path serves.
template <class Key, bool Descending>
int typed_sort(unsigned char* base, std::size_t n, int width, bool stable) {
    constexpr int key = static_cast<int>(sizeof(Key));
    switch (width - key) {
        case 0:
            return typed_sort_fixed<Key, Descending, sizeof(Key)>(base, n, stable);
        case 4:
            return typed_sort_fixed<Key, Descending, sizeof(Key) + 4>(base, n, stable);
        case 8:
            return typed_sort_fixed<Key, Descending, sizeof(Key) + 8>(base, n, stable);
        default:
            return -1;
    }
}

struct TypedSorter {
    RecordCompare compare;
    int (*sort)(unsigned char*, std::size_t, int, bool);
};

// Key types with a fast path: the ones the library sorts in bulk (double and float
// values, int and unsigned indices and counts). The others take the generic path.
const TypedSorter kTypedSorters[] = {
    {Compare_double_Ascend, typed_sort<double, false>},
    {Compare_double_Descend, typed_sort<double, true>},
    {Compare_int_Ascend, typed_sort<int, false>},
    {Compare_int_Descend, typed_sort<int, true>},
    {Compare_float_Ascend, typed_sort<float, false>},
    {Compare_float_Descend, typed_sort<float, true>},
    {Compare_UINT_Ascend, typed_sort<unsigned int, false>},
    {Compare_UINT_Descend, typed_sort<unsigned int, true>},
};

int sort_entry(void* base, int first, int last, int width, void* compare, bool stable) {
    if (!base || !compare || width < 1 || first < 0 || last < first) return 0;
    const std::size_t n = static_cast<std::size_t>(last) - static_cast<std::size_t>(first) + 1;
    if (n < 2) return 1;
    const auto function = reinterpret_cast<RecordCompare>(compare);
    for (const TypedSorter& typed : kTypedSorters) {
        if (typed.compare != function) continue;
        unsigned char* records =
            static_cast<unsigned char*>(base) + static_cast<std::size_t>(first) * width;
        const int done = typed.sort(records, n, width, stable);
        if (done >= 0) return done;
        break;
    }
    const bool done = stable ? zemath::util::merge_sort_records(base, first, last, width, function)
                             : zemath::util::quick_sort_records(base, first, last, width, function);
    return done ? 1 : 0;
}

// --- Record packing for the sorter ------------------------------------------------------

// Copies keys (and companion elements below the companion count) of positions
// first..last into records of KW + CW bytes, and back. KW = CW = 0 selects the
// run-time widths; the fixed instantiations let the compiler inline the copies.
template <std::size_t KW, std::size_t CW>
struct Packer {
    std::size_t key_width, companion_width;
    std::size_t kw() const { return KW ? KW : key_width; }
    std::size_t cw() const { return KW ? CW : companion_width; }

    void pack(unsigned char* records, const unsigned char* keys, const unsigned char* companion,
              int first, int last, int companion_count) const {
        const std::size_t k = kw(), c = cw(), r = k + c;
        for (int i = first; i <= last; ++i) {
            unsigned char* record = records + static_cast<std::size_t>(i - first) * r;
            std::memcpy(record, keys + static_cast<std::size_t>(i) * k, k);
            if (i < companion_count)
                std::memcpy(record + k, companion + static_cast<std::size_t>(i) * c, c);
            else
                std::memset(record + k, 0, c);  // never read back; zeroed for determinism
        }
    }

    void unpack(const unsigned char* records, unsigned char* keys, unsigned char* companion,
                int first, int last, int companion_count, bool keys_fixed) const {
        const std::size_t k = kw(), c = cw(), r = k + c;
        for (int i = first; i <= last; ++i) {
            const unsigned char* record = records + static_cast<std::size_t>(i - first) * r;
            if (!keys_fixed) std::memcpy(keys + static_cast<std::size_t>(i) * k, record, k);
            if (i < companion_count)
                std::memcpy(companion + static_cast<std::size_t>(i) * c, record + k, c);
        }
    }
};

template <class Body>
void with_packer(int key_width, int companion_width, Body&& body) {
    const auto k = static_cast<std::size_t>(key_width),
               c = static_cast<std::size_t>(companion_width);
    if (k == 8 && c == 4) return body(Packer<8, 4>{k, c});
    if (k == 4 && c == 4) return body(Packer<4, 4>{k, c});
    if (k == 8 && c == 8) return body(Packer<8, 8>{k, c});
    if (k == 4 && c == 8) return body(Packer<4, 8>{k, c});
    body(Packer<0, 0>{k, c});
}

}  // namespace

extern "C" {

ZEMATH_API void* GetAppropriateCompareAscend(int type_code) noexcept {
    return as_pointer(compare_pair(type_code).ascend);
}

ZEMATH_API void* GetAppropriateCompareDescend(int type_code) noexcept {
    return as_pointer(compare_pair(type_code).descend);
}

ZEMATH_API int theMergeSort(void* base, int first, int last, int width, void* compare) noexcept {
    return sort_entry(base, first, last, width, compare, true);
}

ZEMATH_API int theQuickSort(void* base, int first, int last, int width, void* compare) noexcept {
    return sort_entry(base, first, last, width, compare, false);
}

}  // extern "C"

// --- The sorter class -------------------------------------------------------------------

CZSortBase::CZSortBase(void* keys, int count, int key_width, void* companion, int companion_width,
                       int companion_count)
    : buffer_owned_(false),
      failed_(false),
      count_(0),
      companion_count_(0),
      companion_width_(0),
      record_width_(0),
      key_width_(0),
      keys_(nullptr),
      companion_(nullptr),
      work_(nullptr) {
    key_width_ = key_width;
    count_ = count;
    companion_count_ = companion_count;
    companion_ = companion;
    // Widths that do not add up to a usable int leave record width 0: Sort refuses then.
    const long long record_width = static_cast<long long>(key_width) + companion_width;
    record_width_ =
        record_width <= INT_MAX && record_width >= INT_MIN ? static_cast<int>(record_width) : 0;
    keys_ = keys;
    companion_width_ = companion_width;
    if (!keys) failed_ = true;
}

CZSortBase::~CZSortBase() = default;

int CZSortBase::Sort(int first, int last, void* compare, bool keys_fixed) {
    if (failed_) return 0;
    if (first >= count_ || last < 0) return 0;
    if (first < 0) first = 0;
    if (last > count_ - 1) last = count_ - 1;
    if (first == last) return 1;
    if (first > last) return 0;
    // Guards beyond the record layout: without them a null function or a negative width
    // would be dereferenced or turned into a huge copy.
    if (!compare || key_width_ < 1 || companion_width_ < 0 || record_width_ < 1) return 0;

    const int top = last - first;
    unsigned char* keys = static_cast<unsigned char*>(keys_);
    if (!companion_) {
        // In place: records of record width starting at key position first.
        work_ = keys + static_cast<std::size_t>(first) * static_cast<std::size_t>(key_width_);
        const int done = SortRecords(work_, 0, top, record_width_, compare);
        work_ = nullptr;
        return done ? 1 : 0;
    }

    const std::size_t n = static_cast<std::size_t>(top) + 1;
    const auto width = static_cast<std::size_t>(record_width_);
    unsigned char* buffer =
        n <= SIZE_MAX / width ? new (std::nothrow) unsigned char[n * width] : nullptr;
    if (!buffer) {
        failed_ = true;
        return 0;
    }
    buffer_owned_ = true;
    work_ = buffer;
    unsigned char* companion = static_cast<unsigned char*>(companion_);
    int done = 0;
    with_packer(key_width_, companion_width_, [&](const auto& packer) {
        packer.pack(buffer, keys, companion, first, last, companion_count_);
        done = SortRecords(work_, 0, top, record_width_, compare);
        // A sort that could not run leaves the records as packed: nothing is written.
        if (done) packer.unpack(buffer, keys, companion, first, last, companion_count_, keys_fixed);
    });
    delete[] buffer;
    buffer_owned_ = false;
    work_ = nullptr;
    return done ? 1 : 0;
}

CQSort::CQSort(void* keys, int count, int key_width, void* companion, int companion_width,
               int companion_count)
    : CZSortBase(keys, count, key_width, companion, companion_width, companion_count) {}

CQSort::~CQSort() = default;

int CQSort::SortRecords(void* records, int first, int last, int width, void* compare) {
    return theQuickSort(records, first, last, width, compare);
}

CMergeSort::CMergeSort(void* keys, int count, int key_width, void* companion, int companion_width,
                       int companion_count)
    : CZSortBase(keys, count, key_width, companion, companion_width, companion_count) {}

CMergeSort::~CMergeSort() = default;

int CMergeSort::SortRecords(void* records, int first, int last, int width, void* compare) {
    return theMergeSort(records, first, last, width, compare);
}

CZSorter::CZSorter(int method, void* keys, int count, int key_width, void* companion,
                   int companion_width, int companion_count)
    : algorithm_(method == 0
                     ? static_cast<CZSortBase*>(new (std::nothrow) CQSort(
                           keys, count, key_width, companion, companion_width, companion_count))
                     : static_cast<CZSortBase*>(new (std::nothrow) CMergeSort(
                           keys, count, key_width, companion, companion_width, companion_count))) {}

CZSorter::~CZSorter() {
    release();
}

CZSorter::CZSorter(const CZSorter& other) : algorithm_(other.algorithm_) {
    if (algorithm_) ++algorithm_->sharers_;
}

CZSorter& CZSorter::operator=(const CZSorter& other) {
    if (algorithm_ != other.algorithm_) {
        if (other.algorithm_) ++other.algorithm_->sharers_;
        release();
        algorithm_ = other.algorithm_;
    }
    return *this;
}

void CZSorter::release() {
    if (algorithm_ && --algorithm_->sharers_ == 0) delete algorithm_;
    algorithm_ = nullptr;
}

int CZSorter::Sort(int first, int last, void* compare, bool keys_fixed) {
    return algorithm_ ? algorithm_->Sort(first, last, compare, keys_fixed) : 0;
}

// --- The vector container's index sort ------------------------------------------------

namespace zemath {

namespace {

template <class T>
bool index_sort(NRVec<T>& keys, NRVec<int>* index, bool ascending, int method, int first, int last,
                int type_code) {
    if (last == -1) last = keys.size() - 1;
    if (!keys.is_valid() || first < 0 || first > last || last >= keys.size()) return false;
    const ComparePair pair = compare_pair(type_code);
    void* compare = as_pointer(ascending ? pair.ascend : pair.descend);
    // With the range valid, the sorter fails only for want of memory: thrown like the
    // containers' own failure, so that no caller goes on with unsorted keys.
    if (!index) {
        CZSorter sorter(method, keys.data(), last + 1, sizeof(T), nullptr, 0, 0);
        if (sorter.Sort(first, last, compare, false) != 1) throw kAllocFailure;
        return true;
    }
    if (index->size() < keys.size()) index->set_size(keys.size(), true);
    for (int i = 0; i < index->size(); ++i) (*index)[i] = i;
    CZSorter sorter(method, keys.data(), last + 1, sizeof(T), index->data(), sizeof(int), last + 1);
    if (sorter.Sort(first, last, compare, false) != 1) throw kAllocFailure;
    return true;
}

constexpr int kTypeInt = 8;
constexpr int kTypeDouble = 11;

}  // namespace

bool sort_with_index(NRVec<double>& keys, NRVec<int>& index, bool ascending, int method, int first,
                     int last) {
    return index_sort(keys, &index, ascending, method, first, last, kTypeDouble);
}

bool sort_with_index(NRVec<int>& keys, NRVec<int>& index, bool ascending, int method, int first,
                     int last) {
    return index_sort(keys, &index, ascending, method, first, last, kTypeInt);
}

bool sort_vector(NRVec<double>& keys, bool ascending, int method, int first, int last) {
    return index_sort(keys, nullptr, ascending, method, first, last, kTypeDouble);
}

bool sort_vector(NRVec<int>& keys, bool ascending, int method, int first, int last) {
    return index_sort(keys, nullptr, ascending, method, first, last, kTypeInt);
}

}  // namespace zemath
