// Sorting: the comparator table, the sorter class (documented edge cases, companion
// handling, keys_fixed, sharing copies), both methods against std::stable_sort for every
// key type, the typed fast paths against the generic path on the same data (ties, -0.0,
// NaN, NANUM), McIlroy's quicksort adversary, and the vector container's index sort.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <random>
#include <vector>

#include "frame/nrvec.hpp"
#include "frame/sort.hpp"
#include "zemath/sort.hpp"

namespace {

using CompareFn = int (*)(const void*, const void*);
using Doubles = std::vector<double>;
using Ints = std::vector<int>;
constexpr auto ascend = &GetAppropriateCompareAscend;
constexpr auto descend = &GetAppropriateCompareDescend;

const auto ptr = [](CompareFn f) { return reinterpret_cast<void*>(f); };

// The lookup gives the named functions, and low < high under them; values chosen so that
// a comparison of the wrong signedness or width fails.
template <class T>
void expect_comparators(int code, CompareFn up, CompareFn down, T low, T high) {
    SCOPED_TRACE(code);
    ASSERT_EQ(ascend(code), ptr(up));
    ASSERT_EQ(descend(code), ptr(down));
    EXPECT_EQ(up(&low, &high), -1);
    EXPECT_EQ(up(&high, &low), 1);
    EXPECT_EQ(up(&low, &low), 0);
    EXPECT_EQ(down(&low, &high), 1);
    EXPECT_EQ(down(&high, &low), -1);
    // A null record is the smallest and is never read.
    EXPECT_EQ(up(nullptr, &low), -1);
    EXPECT_EQ(up(&low, nullptr), 1);
    EXPECT_EQ(up(nullptr, nullptr), 0);
    EXPECT_EQ(down(nullptr, &low), 1);
    EXPECT_EQ(down(&low, nullptr), -1);
    EXPECT_EQ(down(nullptr, nullptr), 0);
}

TEST(Comparators, TypeCodeTable) {
    expect_comparators<signed char>(2, Compare_char_Ascend, Compare_char_Descend, -128, 127);
    expect_comparators<signed char>(3, Compare_char_Ascend, Compare_char_Descend, -1, 1);
    expect_comparators<unsigned char>(4, Compare_BYTE_Ascend, Compare_BYTE_Descend, 100, 200);
    expect_comparators<short>(5, Compare_short_Ascend, Compare_short_Descend, -30000, 30000);
    expect_comparators<unsigned short>(6, Compare_WORD_Ascend, Compare_WORD_Descend, 100, 60000);
    expect_comparators<int>(8, Compare_int_Ascend, Compare_int_Descend,
                            std::numeric_limits<int>::min(), std::numeric_limits<int>::max());
    expect_comparators<unsigned>(9, Compare_UINT_Ascend, Compare_UINT_Descend, 1u, 4000000000u);
    expect_comparators<float>(10, Compare_float_Ascend, Compare_float_Descend, -1.5f, 1e30f);
    // NANUM sorts just below 0.
    expect_comparators<double>(11, Compare_double_Ascend, Compare_double_Descend, NANUM, 0.0);
    expect_comparators<double>(13, Compare_double_Ascend, Compare_double_Descend, -1e300, 1e-300);
    for (int code : {-1, 0, 1, 7, 12, 14, 100}) EXPECT_TRUE(!ascend(code) && !descend(code));
    // NaN equals everything; signed zeros tie.
    const double nan = std::numeric_limits<double>::quiet_NaN(), zero = 0.0, negative_zero = -0.0;
    for (double v : {nan, -1.0, NANUM, HUGE_VAL}) EXPECT_EQ(Compare_double_Descend(&v, &nan), 0);
    EXPECT_EQ(Compare_double_Ascend(&zero, &negative_zero), 0);
}

// A direct call with a NULL record never faults: NULL is the smallest record.
TEST(Comparators, NullRecordIsTheSmallest) {
    using Compare = int (*)(const void*, const void*);
    const double key = -1e300;  // any record: NULL orders below it whatever its bytes
    for (int code : {2, 4, 5, 6, 8, 9, 10, 11}) {
        const auto up = reinterpret_cast<Compare>(GetAppropriateCompareAscend(code));
        const auto down = reinterpret_cast<Compare>(GetAppropriateCompareDescend(code));
        EXPECT_EQ(up(nullptr, &key), -1) << code;
        EXPECT_EQ(up(&key, nullptr), 1) << code;
        EXPECT_EQ(up(nullptr, nullptr), 0) << code;
        EXPECT_EQ(down(nullptr, &key), 1) << code;
        EXPECT_EQ(down(&key, nullptr), -1) << code;
        EXPECT_EQ(down(nullptr, nullptr), 0) << code;
    }
}

TEST(Sorter, DocumentedEdgeCases) {
    for (int method : {0, 1}) {
        SCOPED_TRACE(method);
        Doubles keys{9, 3, 7, 1, 8, 0, 2, 6, 4, 5};
        const Doubles before = keys;
        CZSorter sorter(method, keys.data(), 10, 8, nullptr, 0, 0);
        EXPECT_EQ(sorter.Sort(5, 2, ascend(11), false), 0);
        EXPECT_EQ(sorter.Sort(3, 3, ascend(11), false), 1);
        EXPECT_EQ(sorter.Sort(10, 12, ascend(11), false), 0);  // first >= count
        EXPECT_EQ(sorter.Sort(-5, -1, ascend(11), false), 0);  // last < 0
        EXPECT_EQ(sorter.Sort(0, 9, nullptr, false), 0);
        EXPECT_EQ(keys, before);
        EXPECT_EQ(sorter.Sort(-4, 100, ascend(11), false), 1);  // clamped to 0..9
        EXPECT_EQ(keys, (Doubles{0, 1, 2, 3, 4, 5, 6, 7, 8, 9}));

        // A partial range moves keys and companion together and nothing outside it.
        Doubles part{8, 7, 6, 5, 4, 3, 2, 1};
        Ints companion{0, 1, 2, 3, 4, 5, 6, 7};
        CZSorter partial(method, part.data(), 8, 8, companion.data(), 4, 8);
        ASSERT_EQ(partial.Sort(2, 5, ascend(11), false), 1);
        EXPECT_EQ(part, (Doubles{8, 7, 3, 4, 5, 6, 2, 1}));
        EXPECT_EQ(companion, (Ints{0, 1, 5, 4, 3, 2, 6, 7}));

        // keys_fixed rearranges only the companion (2-byte keys: the run-time packing).
        std::vector<short> fixed{3, 1, 2};
        Ints order{0, 1, 2};
        CZSorter keys_fixed(method, fixed.data(), 3, 2, order.data(), 4, 3);
        ASSERT_EQ(keys_fixed.Sort(0, 2, ascend(5), true), 1);
        EXPECT_EQ(fixed, (std::vector<short>{3, 1, 2}));
        EXPECT_EQ(order, (Ints{1, 2, 0}));

        // A companion shorter than the keys: exactly two elements on the heap, so the
        // address sanitizer flags any access to a third.
        Doubles three{3, 1, 2};
        Ints short_companion{10, 11};
        CZSorter short_sorter(method, three.data(), 3, 8, short_companion.data(), 4, 2);
        ASSERT_EQ(short_sorter.Sort(0, 2, ascend(11), false), 1);
        EXPECT_EQ(three, (Doubles{1, 2, 3}));
        EXPECT_EQ(short_companion[0], 11);  // key 1 came from position 1

        // Null keys and unusable widths fail every sort, touching nothing.
        CZSorter no_keys(method, nullptr, 3, 8, order.data(), 4, 3);
        CZSorter no_key_width(method, three.data(), 3, 0, nullptr, 0, 0);
        CZSorter bad_companion(method, three.data(), 3, 8, order.data(), -4, 3);
        for (CZSorter* failing : {&no_keys, &no_key_width, &bad_companion})
            EXPECT_EQ(failing->Sort(0, 2, descend(11), false), 0);
        EXPECT_EQ(three, (Doubles{1, 2, 3}));
        EXPECT_EQ(order, (Ints{1, 2, 0}));
    }
}

TEST(Sorter, WithoutCompanionSortsWiderRecordsInPlace) {
    struct Row {
        double key;
        int id, copy;
    } rows[40];
    for (int i = 0; i < 40; ++i) rows[i] = {static_cast<double>((i * 7) % 5), i, i};
    ASSERT_EQ(CZSorter(1, rows, 40, 8, nullptr, 8, 0).Sort(0, 39, ascend(11), true), 1);
    for (int i = 1; i < 40; ++i) {  // whole records moved, stable on equal keys
        EXPECT_EQ(rows[i].copy, rows[i].id);
        EXPECT_LT(std::pair(rows[i - 1].key, rows[i - 1].id), std::pair(rows[i].key, rows[i].id));
    }
}

TEST(Sorter, CopiesShareOneAlgorithmObject) {
    Doubles a{3, 1, 2}, b{9, 8, 7};
    CZSorter first(1, a.data(), 3, 8, nullptr, 0, 0);
    {
        CZSorter second(0, b.data(), 3, 8, nullptr, 0, 0);
        second = first;  // now sorts a; the object for b is released here
        ASSERT_EQ(second.Sort(0, 2, ascend(11), false), 1);
        EXPECT_EQ(a, (Doubles{1, 2, 3}));
        EXPECT_EQ(b, (Doubles{9, 8, 7}));
        CZSorter& same = second;
        second = same;  // self-assignment keeps the shared object (through a reference: Clang
                        // rejects a literal self-assignment under -Werror)
        CZSorter third(second);
    }  // second and third gone: first keeps the shared object
    ASSERT_EQ(first.Sort(0, 2, descend(11), false), 1);
    EXPECT_EQ(a, (Doubles{3, 2, 1}));
}

// The library's comparator behind another address: the entry points take the generic path.
CompareFn library_compare = nullptr;
const CompareFn wrapped_compare = [](const void* a, const void* b) {
    return library_compare(a, b);
};

// n records of width bytes: a key (ties everywhere, interleaved -0.0 and 0.0, NANUM and
// optionally NaN for floating types), then the record number. Without NaN the stable sort
// must give std::stable_sort's order, and the quicksort the same keys with every record
// intact; with NaN both must give byte for byte what the generic path gives.
template <class T>
void check_paths(int code, int extra, int n, bool up, bool with_nan) {
    const int key = sizeof(T), width = key + extra;
    SCOPED_TRACE(testing::Message() << code << " width " << width << " n " << n << " up " << up
                                    << " nan " << with_nan);
    std::mt19937 rng(11u * width + n);
    std::vector<unsigned char> input(static_cast<size_t>(n) * width);
    auto at = [&](auto& v, int i) { return v.data() + static_cast<size_t>(i) * width; };
    for (int i = 0; i < n; ++i) {
        T k = static_cast<T>(static_cast<int>(rng() % 61) - 30);
        if (k == T(0) && (i & 1)) k = -k;
        if (std::is_floating_point_v<T> && i % 89 == 3) k = static_cast<T>(NANUM);
        if (with_nan && i % 97 == 5) k = std::numeric_limits<T>::quiet_NaN();
        std::memcpy(at(input, i), &k, key);
        for (int b = key; b < width; ++b)
            at(input, i)[b] = static_cast<unsigned char>(i >> (8 * ((b - key) & 1)));
    }
    void* library = up ? ascend(code) : descend(code);
    library_compare = reinterpret_cast<CompareFn>(library);
    Ints order(n);
    for (int i = 0; i < n; ++i) order[i] = i;
    std::stable_sort(order.begin(), order.end(),
                     [&](int a, int b) { return library_compare(at(input, a), at(input, b)) < 0; });
    for (auto* sort : {theMergeSort, theQuickSort}) {
        auto fast = input, generic = input;
        ASSERT_EQ(sort(fast.data(), 0, n - 1, width, library), 1);
        ASSERT_EQ(sort(generic.data(), 0, n - 1, width, ptr(wrapped_compare)), 1);
        if (with_nan) {
            EXPECT_EQ(fast, generic);
            continue;
        }
        for (const auto& out : {fast, generic}) {
            std::vector<int> seen(n, 0);
            for (int i = 0; i < n; ++i) {
                const unsigned char* r = at(out, i);
                // The merge sort: the very record std::stable_sort put here.
                const bool stable = sort == theMergeSort;
                ASSERT_TRUE(!stable || std::memcmp(r, at(input, order[i]), width) == 0) << i;
                ASSERT_EQ(library_compare(r, at(input, order[i])), 0) << i;
                if (extra < 2) continue;
                const int id = r[key] | r[key + 1] << 8;
                ASSERT_EQ(std::memcmp(r, at(input, id), width), 0) << i;
                ASSERT_EQ(seen[id]++, 0) << i;
            }
        }
    }
}

// Widths key + 0, 4, 8 take the typed fast path for double, float, int and unsigned keys
// (from 2048 records a radix sort); key + 3 and the other key types take the generic one
// (key + 3: index sort and cycle permutation).
TEST(SortEntry, FastAndGenericPathsMatchStableSort) {
    for (int extra : {0, 3, 4, 8})
        for (int n : {500, 5000})
            for (bool up : {true, false}) {
                for (bool with_nan : {false, true}) {
                    check_paths<double>(11, extra, n, up, with_nan);
                    check_paths<float>(10, extra, n, up, with_nan);
                }
                check_paths<signed char>(2, extra, n, up, false);
                check_paths<unsigned char>(4, extra, n, up, false);
                check_paths<short>(5, extra, n, up, false);
                check_paths<unsigned short>(6, extra, n, up, false);
                check_paths<int>(8, extra, n, up, false);
                check_paths<unsigned>(9, extra, n, up, false);
            }
}

TEST(SortEntry, SubRangeAndRefusals) {
    for (auto* sort : {theMergeSort, theQuickSort}) {
        Ints data{9, 8, 7, 6, 5, 4, 3};
        ASSERT_EQ(sort(data.data(), 2, 5, 4, ascend(8)), 1);
        const Ints sorted{9, 8, 4, 5, 6, 7, 3};
        EXPECT_EQ(data, sorted);
        EXPECT_EQ(sort(nullptr, 0, 2, 4, ascend(8)), 0);
        EXPECT_EQ(sort(data.data(), 0, 2, 4, nullptr), 0);
        const int bad[][3] = {{0, 2, 0}, {0, 2, -4}, {-1, 2, 4}, {2, 1, 4}};  // first, last, width
        for (const auto& b : bad) EXPECT_EQ(sort(data.data(), b[0], b[1], b[2], ascend(8)), 0);
        EXPECT_EQ(sort(data.data(), 1, 1, 4, ascend(8)), 1);
        EXPECT_EQ(data, sorted);
    }
}

// McIlroy's adversary ("A killer adversary for quicksort", 1999): values are fixed lazily
// so that every pivot turns out as bad as possible. Record i holds i; val[i] is its value.
struct Adversary {
    std::vector<int> val;
    int gas = 0, solid = 0, candidate = 0;
    long long comparisons = 0;
} adversary;

int adversary_compare(const void* a, const void* b) {
    Adversary& s = adversary;
    ++s.comparisons;
    const int x = *static_cast<const int*>(a), y = *static_cast<const int*>(b);
    if (s.val[x] == s.gas && s.val[y] == s.gas) s.val[x == s.candidate ? x : y] = s.solid++;
    if (s.val[x] == s.gas || s.val[y] == s.gas) s.candidate = s.val[x] == s.gas ? x : y;
    return (s.val[x] > s.val[y]) - (s.val[x] < s.val[y]);
}

TEST(QuickSort, AdversaryStaysNLogN) {
    const int n = 20000;
    adversary.val.assign(n, n - 1);
    adversary.gas = n - 1;
    Ints records(n);
    for (int i = 0; i < n; ++i) records[i] = i;
    ASSERT_EQ(theQuickSort(records.data(), 0, n - 1, 4, ptr(adversary_compare)), 1);
    EXPECT_LT(adversary.comparisons, 6.0 * n * std::log2(n));  // quadratic: ~n^2 / 2 = 2e8
    for (int i = 1; i < n; ++i) ASSERT_LE(adversary.val[records[i - 1]], adversary.val[records[i]]);
}

TEST(IndexSort, VectorSortsThroughTheSorter) {
    Doubles data{5, 3, 9, 1, 7, 2};
    zemath::NRVec<double> keys(data.data(), 6);
    zemath::NRVec<int> index;  // grown and filled by the sort
    ASSERT_TRUE(zemath::sort_with_index(keys, index, true, 0, 1, 4));
    EXPECT_EQ(data, (Doubles{5, 1, 3, 7, 9, 2}));
    EXPECT_EQ(Ints(index.begin(), index.end()), (Ints{0, 3, 1, 4, 2, 5}));
    Ints ints{4, 1, 4, 3};
    zemath::NRVec<int> int_keys(ints.data(), 4), int_index(4, -1);
    ASSERT_TRUE(zemath::sort_with_index(int_keys, int_index, false, 1));
    EXPECT_EQ(ints, (Ints{4, 4, 3, 1}));
    EXPECT_EQ(Ints(int_index.begin(), int_index.end()), (Ints{0, 2, 3, 1}));  // stable
    Doubles plain{2, NANUM, -1};
    zemath::NRVec<double> plain_keys(plain.data(), 3);
    ASSERT_TRUE(zemath::sort_vector(plain_keys, true, 0));
    EXPECT_EQ(plain, (Doubles{-1, NANUM, 2}));

    // Refused ranges and an empty vector leave keys and index alone.
    zemath::NRVec<double> empty;
    EXPECT_FALSE(zemath::sort_with_index(plain_keys, int_index, true, 1, 2, 1));
    EXPECT_FALSE(zemath::sort_with_index(plain_keys, int_index, true, 1, -1, 2));
    EXPECT_FALSE(zemath::sort_with_index(plain_keys, int_index, true, 1, 0, 3));
    EXPECT_FALSE(zemath::sort_with_index(empty, int_index, true, 1));
    EXPECT_FALSE(zemath::sort_vector(empty, true, 0));
    EXPECT_EQ(plain, (Doubles{-1, NANUM, 2}));
    EXPECT_EQ(Ints(int_index.begin(), int_index.end()), (Ints{0, 2, 3, 1}));
}

}  // namespace
