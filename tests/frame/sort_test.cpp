// Sorting: the comparator table, the sorter class (documented edge cases, companion
// handling, keys_fixed, sharing copies), both record-sort entry points against
// std::stable_sort, the typed fast paths against the generic path on the same data
// (ties, -0.0, NaN), quicksort inputs that defeat naive pivots (including McIlroy's
// adversary), and the vector container's index sort.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <bit>
#include <climits>
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
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

CompareFn fn(void* p) {
    return reinterpret_cast<CompareFn>(p);
}
void* ptr(CompareFn f) {
    return reinterpret_cast<void*>(f);
}

void* ascend(int code) {
    return GetAppropriateCompareAscend(code);
}
void* descend(int code) {
    return GetAppropriateCompareDescend(code);
}

// --- Comparator table ---------------------------------------------------------------

template <class T>
void expect_pair_orders(int code, T low, T high) {
    const CompareFn up = fn(ascend(code)), down = fn(descend(code));
    ASSERT_NE(up, nullptr) << code;
    ASSERT_NE(down, nullptr) << code;
    EXPECT_EQ(up(&low, &high), -1) << code;
    EXPECT_EQ(up(&high, &low), 1) << code;
    EXPECT_EQ(up(&low, &low), 0) << code;
    EXPECT_EQ(down(&low, &high), 1) << code;
    EXPECT_EQ(down(&high, &low), -1) << code;
    EXPECT_EQ(down(&high, &high), 0) << code;
}

TEST(Comparators, TypeCodeTable) {
    // Values chosen so that a comparison of the wrong signedness or width fails.
    expect_pair_orders<signed char>(2, -128, 127);
    expect_pair_orders<signed char>(3, -1, 1);
    expect_pair_orders<unsigned char>(4, 100, 200);
    expect_pair_orders<short>(5, -30000, 30000);
    expect_pair_orders<unsigned short>(6, 100, 60000);
    expect_pair_orders<int>(8, INT_MIN, INT_MAX);
    expect_pair_orders<unsigned int>(9, 1u, 4000000000u);
    expect_pair_orders<float>(10, -1.5f, 1e30f);
    expect_pair_orders<double>(11, NANUM, 0.0);  // NANUM sorts just below 0
    expect_pair_orders<double>(13, -1e300, 1e-300);

    const struct {
        int code;
        CompareFn up, down;
    } names[] = {
        {2, Compare_char_Ascend, Compare_char_Descend},
        {3, Compare_char_Ascend, Compare_char_Descend},
        {4, Compare_BYTE_Ascend, Compare_BYTE_Descend},
        {5, Compare_short_Ascend, Compare_short_Descend},
        {6, Compare_WORD_Ascend, Compare_WORD_Descend},
        {8, Compare_int_Ascend, Compare_int_Descend},
        {9, Compare_UINT_Ascend, Compare_UINT_Descend},
        {10, Compare_float_Ascend, Compare_float_Descend},
        {11, Compare_double_Ascend, Compare_double_Descend},
        {13, Compare_double_Ascend, Compare_double_Descend},
    };
    for (const auto& n : names) {
        EXPECT_EQ(fn(ascend(n.code)), n.up) << n.code;
        EXPECT_EQ(fn(descend(n.code)), n.down) << n.code;
    }
    for (int code : {-1, 0, 1, 7, 12, 14, 100}) {
        EXPECT_EQ(ascend(code), nullptr) << code;
        EXPECT_EQ(descend(code), nullptr) << code;
    }
}

TEST(Comparators, NaNEqualsEverythingAndSignedZerosTie) {
    const double values[] = {kNaN, 1.0, -1.0, 0.0, NANUM, HUGE_VAL};
    for (double v : values) {
        EXPECT_EQ(Compare_double_Ascend(&v, &kNaN), 0);
        EXPECT_EQ(Compare_double_Descend(&kNaN, &v), 0);
    }
    const double zero = 0.0, negative_zero = -0.0;
    EXPECT_EQ(Compare_double_Ascend(&zero, &negative_zero), 0);
    EXPECT_EQ(Compare_double_Descend(&negative_zero, &zero), 0);
    const float fnan = std::numeric_limits<float>::quiet_NaN(), one = 1.0f;
    EXPECT_EQ(Compare_float_Ascend(&fnan, &one), 0);
    // Unaligned records: keys read from any address.
    unsigned char packed[20] = {};
    const double a = 2.0, b = 1.0;
    std::memcpy(packed + 1, &a, 8);
    std::memcpy(packed + 11, &b, 8);
    EXPECT_EQ(Compare_double_Ascend(packed + 1, packed + 11), 1);
}

// --- The sorter class ---------------------------------------------------------------

TEST(Sorter, DocumentedEdgeCases) {
    for (int method : {0, 1}) {
        SCOPED_TRACE(method);
        double keys[10] = {9, 3, 7, 1, 8, 0, 2, 6, 4, 5};
        const std::vector<double> before(keys, keys + 10);
        CZSorter sorter(method, keys, 10, 8, nullptr, 0, 0);
        EXPECT_EQ(sorter.Sort(5, 2, ascend(11), false), 0);
        EXPECT_EQ(sorter.Sort(3, 3, ascend(11), false), 1);
        EXPECT_EQ(sorter.Sort(10, 12, ascend(11), false), 0);  // first >= count
        EXPECT_EQ(sorter.Sort(-5, -1, ascend(11), false), 0);  // last < 0
        EXPECT_EQ(sorter.Sort(0, 9, nullptr, false), 0);       // no comparison function
        EXPECT_EQ(std::vector<double>(keys, keys + 10), before);
        EXPECT_EQ(sorter.Sort(-4, 100, ascend(11), false), 1);  // clamped to 0..9
        for (int i = 0; i < 10; ++i) EXPECT_EQ(keys[i], i);

        double small[3] = {3, 1, 2};
        int companion[3] = {0, 1, 2};
        CZSorter with_index(method, small, 3, 8, companion, 4, 3);
        ASSERT_EQ(with_index.Sort(0, 2, ascend(11), false), 1);
        EXPECT_EQ(std::vector<double>(small, small + 3), (std::vector<double>{1, 2, 3}));
        EXPECT_EQ(std::vector<int>(companion, companion + 3), (std::vector<int>{1, 2, 0}));

        double fixed[3] = {3, 1, 2};
        int order[3] = {0, 1, 2};
        CZSorter keys_fixed(method, fixed, 3, 8, order, 4, 3);
        ASSERT_EQ(keys_fixed.Sort(0, 2, ascend(11), true), 1);
        EXPECT_EQ(std::vector<double>(fixed, fixed + 3), (std::vector<double>{3, 1, 2}));
        EXPECT_EQ(std::vector<int>(order, order + 3), (std::vector<int>{1, 2, 0}));

        // A null keys pointer fails every sort; so do unusable widths.
        CZSorter no_keys(method, nullptr, 3, 8, order, 4, 3);
        EXPECT_EQ(no_keys.Sort(0, 2, ascend(11), false), 0);
        CZSorter zero_width(method, fixed, 3, 0, nullptr, 0, 0);
        EXPECT_EQ(zero_width.Sort(0, 2, ascend(11), false), 0);
        CZSorter negative_width(method, fixed, 3, 8, order, -4, 3);
        EXPECT_EQ(negative_width.Sort(0, 2, ascend(11), false), 0);
        EXPECT_EQ(std::vector<int>(order, order + 3), (std::vector<int>{1, 2, 0}));
    }
}

TEST(Sorter, ShortCompanionIsNeitherReadNorWrittenPastItsCount) {
    for (int method : {0, 1}) {
        double keys[3] = {3, 1, 2};
        // Exactly two elements on the heap: the address sanitizer flags any access to a
        // third one.
        std::unique_ptr<int[]> companion(new int[2]{10, 11});
        CZSorter sorter(method, keys, 3, 8, companion.get(), 4, 2);
        ASSERT_EQ(sorter.Sort(0, 2, ascend(11), false), 1);
        EXPECT_EQ(std::vector<double>(keys, keys + 3), (std::vector<double>{1, 2, 3}));
        EXPECT_EQ(companion[0], 11);  // key 1 came from position 1
    }
}

TEST(Sorter, PartialRangeLeavesTheRestAlone) {
    for (int method : {0, 1}) {
        double keys[8] = {8, 7, 6, 5, 4, 3, 2, 1};
        int companion[8] = {0, 1, 2, 3, 4, 5, 6, 7};
        CZSorter sorter(method, keys, 8, 8, companion, 4, 8);
        ASSERT_EQ(sorter.Sort(2, 5, ascend(11), false), 1);
        EXPECT_EQ(std::vector<double>(keys, keys + 8),
                  (std::vector<double>{8, 7, 3, 4, 5, 6, 2, 1}));
        EXPECT_EQ(std::vector<int>(companion, companion + 8),
                  (std::vector<int>{0, 1, 5, 4, 3, 2, 6, 7}));
    }
}

TEST(Sorter, WithoutCompanionSortsWiderRecordsInPlace) {
    struct Row {
        double key;
        int id;
        int pad;
    };
    static_assert(sizeof(Row) == 16);
    std::vector<Row> rows;
    for (int i = 0; i < 40; ++i) rows.push_back({static_cast<double>((i * 7) % 5), i, -i});
    std::vector<Row> expected = rows;
    std::stable_sort(expected.begin(), expected.end(),
                     [](const Row& a, const Row& b) { return a.key < b.key; });
    CZSorter sorter(1, rows.data(), 40, 8, nullptr, 8, 0);
    ASSERT_EQ(sorter.Sort(0, 39, ascend(11), true), 1);  // keys_fixed has no effect here
    for (int i = 0; i < 40; ++i) {
        EXPECT_EQ(rows[i].key, expected[i].key);
        EXPECT_EQ(rows[i].id, expected[i].id);
        EXPECT_EQ(rows[i].pad, expected[i].pad);
    }
}

TEST(Sorter, CopiesShareOneAlgorithmObject) {
    double a[3] = {3, 1, 2};
    double b[3] = {9, 8, 7};
    CZSorter first(1, a, 3, 8, nullptr, 0, 0);
    {
        CZSorter second(0, b, 3, 8, nullptr, 0, 0);
        second = first;  // now sorts a; the object for b is released here
        ASSERT_EQ(second.Sort(0, 2, ascend(11), false), 1);
        EXPECT_EQ(std::vector<double>(a, a + 3), (std::vector<double>{1, 2, 3}));
        EXPECT_EQ(std::vector<double>(b, b + 3), (std::vector<double>{9, 8, 7}));
        second = second;
        CZSorter third(second);
        third = first;
    }  // second and third gone: first keeps the shared object
    ASSERT_EQ(first.Sort(0, 2, descend(11), false), 1);
    EXPECT_EQ(std::vector<double>(a, a + 3), (std::vector<double>{3, 2, 1}));
    CZSorter fourth(0, b, 3, 8, nullptr, 0, 0);
    first = fourth;
    ASSERT_EQ(first.Sort(0, 2, ascend(11), false), 1);
    EXPECT_EQ(std::vector<double>(b, b + 3), (std::vector<double>{7, 8, 9}));
}

// --- Both methods against std::stable_sort, every comparator type -------------------

template <class T>
std::vector<T> tied_keys(int n, unsigned seed) {
    std::mt19937 rng(seed);
    // Few distinct values, so that ties are everywhere; negative values for signed types.
    std::uniform_int_distribution<int> pick(std::is_signed_v<T> ? -40 : 0, 40);
    std::vector<T> keys(n);
    for (T& k : keys)
        k = static_cast<T>(pick(rng)) * static_cast<T>(std::is_floating_point_v<T> ? 0.5 : 1);
    return keys;
}

template <class T>
void check_against_oracle(int code, int n) {
    for (int method : {0, 1})
        for (bool up : {true, false}) {
            SCOPED_TRACE(::testing::Message() << "code " << code << " n " << n << " method "
                                              << method << " ascending " << up);
            std::vector<T> keys = tied_keys<T>(n, 7u * n + code);
            const std::vector<T> original = keys;
            std::vector<int> index(n);
            for (int i = 0; i < n; ++i) index[i] = i;
            std::vector<int> oracle = index;
            std::stable_sort(oracle.begin(), oracle.end(), [&](int x, int y) {
                return up ? original[x] < original[y] : original[y] < original[x];
            });
            CZSorter sorter(method, keys.data(), n, sizeof(T), index.data(), 4, n);
            ASSERT_EQ(sorter.Sort(0, n - 1, up ? ascend(code) : descend(code), false), 1);
            for (int i = 0; i < n; ++i) ASSERT_EQ(keys[i], original[oracle[i]]) << i;
            if (method != 0) {
                EXPECT_EQ(index, oracle);  // the merge sort is stable
            } else {
                std::vector<int> seen(n, 0);
                for (int i = 0; i < n; ++i) {
                    ASSERT_GE(index[i], 0);
                    ASSERT_LT(index[i], n);
                    ASSERT_EQ(seen[index[i]]++, 0);
                    ASSERT_EQ(original[index[i]], keys[i]);
                }
            }
        }
}

TEST(Sorter, EveryTypeBothMethodsMatchStableSort) {
    // 3000 and 50000 pass the radix threshold of the typed fast path; 2 and 100 do not.
    for (int n : {2, 100, 3000, 50000}) {
        check_against_oracle<signed char>(2, n);
        check_against_oracle<unsigned char>(4, n);
        check_against_oracle<short>(5, n);
        check_against_oracle<unsigned short>(6, n);
        check_against_oracle<int>(8, n);
        check_against_oracle<unsigned int>(9, n);
        check_against_oracle<float>(10, n);
        check_against_oracle<double>(11, n);
    }
}

// --- Typed fast path against the generic path -----------------------------------------

// Same results as the library's comparators, different addresses: these take the
// generic path.
template <class T>
int plain_ascend(const void* a, const void* b) {
    T x, y;
    std::memcpy(&x, a, sizeof x);
    std::memcpy(&y, b, sizeof y);
    return x < y ? -1 : (y < x ? 1 : 0);
}
template <class T>
int plain_descend(const void* a, const void* b) {
    return plain_ascend<T>(b, a);
}

template <class T>
std::vector<unsigned char> make_records(int n, int width, bool with_nan, unsigned seed) {
    std::mt19937 rng(seed);
    std::uniform_int_distribution<int> pick(-30, 30);
    std::vector<unsigned char> records(static_cast<size_t>(n) * width);
    for (int i = 0; i < n; ++i) {
        T key = static_cast<T>(pick(rng));
        if constexpr (std::is_floating_point_v<T>) {
            if (key == T(0) && (i & 1)) key = -T(0);  // -0.0 and 0.0 interleaved
            if (with_nan && i % 97 == 5) key = std::numeric_limits<T>::quiet_NaN();
            if (i % 89 == 3) key = static_cast<T>(NANUM);
        }
        unsigned char* r = records.data() + static_cast<size_t>(i) * width;
        std::memcpy(r, &key, sizeof key);
        for (size_t b = sizeof key; b < static_cast<size_t>(width); ++b)
            r[b] = static_cast<unsigned char>((i >> (8 * ((b - sizeof key) % 4))) & 0xff);
    }
    return records;
}

template <class T>
void check_fast_path(int code) {
    constexpr int key = sizeof(T);
    for (int width : {key, key + 4, key + 8})
        for (bool with_nan : {false, true}) {
            if (with_nan && !std::is_floating_point_v<T>) continue;
            for (int n : {500, 5000}) {
                SCOPED_TRACE(::testing::Message() << "code " << code << " width " << width
                                                  << " nan " << with_nan << " n " << n);
                for (bool up : {true, false}) {
                    const auto input = make_records<T>(n, width, with_nan, 11u * width + n);
                    void* library = up ? ascend(code) : descend(code);
                    void* plain = ptr(up ? plain_ascend<T> : plain_descend<T>);
                    // Stable: byte-identical records, whichever kernel ran.
                    auto fast = input, generic = input;
                    ASSERT_EQ(theMergeSort(fast.data(), 0, n - 1, width, library), 1);
                    ASSERT_EQ(theMergeSort(generic.data(), 0, n - 1, width, plain), 1);
                    EXPECT_EQ(fast, generic);
                    // Quicksort: with NaN both run the same introsort; without, only the
                    // keys are determined.
                    fast = input;
                    generic = input;
                    ASSERT_EQ(theQuickSort(fast.data(), 0, n - 1, width, library), 1);
                    ASSERT_EQ(theQuickSort(generic.data(), 0, n - 1, width, plain), 1);
                    if (with_nan) {
                        EXPECT_EQ(fast, generic);
                    } else {
                        for (int i = 0; i < n; ++i) {
                            T a, b;
                            std::memcpy(&a, fast.data() + static_cast<size_t>(i) * width, key);
                            std::memcpy(&b, generic.data() + static_cast<size_t>(i) * width, key);
                            ASSERT_EQ(a, b) << i;  // equal as values: -0.0 == 0.0
                        }
                    }
                }
            }
        }
}

TEST(SortEntry, TypedFastPathGivesTheGenericResult) {
    check_fast_path<double>(11);
    check_fast_path<float>(10);
    check_fast_path<int>(8);
    check_fast_path<unsigned int>(9);
}

TEST(SortEntry, SignedZerosKeepInputOrderUnderTheStableSort) {
    const int n = 4096;  // radix path
    std::vector<double> keys(n);
    std::vector<int> index(n);
    for (int i = 0; i < n; ++i) {
        keys[i] = (i % 3 == 0) ? ((i & 1) ? -0.0 : 0.0) : (i % 7) - 3.0;
        index[i] = i;
    }
    const std::vector<double> original = keys;
    for (bool up : {true, false}) {
        std::vector<double> k = original;
        std::vector<int> idx = index;
        CZSorter sorter(1, k.data(), n, 8, idx.data(), 4, n);
        ASSERT_EQ(sorter.Sort(0, n - 1, up ? ascend(11) : descend(11), false), 1);
        for (int i = 0; i < n; ++i) {
            // Each key kept its own bits (sign of zero included) ...
            ASSERT_EQ(std::bit_cast<std::uint64_t>(k[i]),
                      std::bit_cast<std::uint64_t>(original[idx[i]]));
            // ... and equal keys (all zeros alike) stayed in input order.
            if (i > 0 && k[i] == k[i - 1]) {
                ASSERT_LT(idx[i - 1], idx[i]) << i;
            }
        }
    }
}

TEST(SortEntry, NanumAndNaNKeys) {
    for (int method : {0, 1}) {
        double keys[] = {1, NANUM, -1, 0};
        CZSorter sorter(method, keys, 4, 8, nullptr, 0, 0);
        ASSERT_EQ(sorter.Sort(0, 3, ascend(11), false), 1);
        EXPECT_EQ(std::vector<double>(keys, keys + 4), (std::vector<double>{-1, NANUM, 0, 1}));
    }
    // With NaN the order is whatever the comparisons give, but every sort finishes and
    // keeps the keys and the index pairing.
    for (int method : {0, 1})
        for (int n : {50, 5000}) {
            std::vector<double> keys(n);
            std::vector<int> index(n);
            for (int i = 0; i < n; ++i) {
                keys[i] = (i % 5 == 0) ? kNaN : std::sin(i);
                index[i] = i;
            }
            const std::vector<double> original = keys;
            CZSorter sorter(method, keys.data(), n, 8, index.data(), 4, n);
            ASSERT_EQ(sorter.Sort(0, n - 1, descend(11), false), 1);
            std::vector<int> seen(n, 0);
            for (int i = 0; i < n; ++i) {
                ASSERT_EQ(seen[index[i]]++, 0);
                const double o = original[index[i]];
                ASSERT_TRUE(o == keys[i] || (std::isnan(o) && std::isnan(keys[i])));
            }
        }
}

// --- Record widths of the generic path ------------------------------------------------

template <std::size_t W>
void check_generic_width() {
    using Rec = std::array<unsigned char, W>;
    const int n = 777;
    std::mt19937 rng(W);
    std::vector<Rec> input(n);
    for (int i = 0; i < n; ++i) {
        input[i].fill(static_cast<unsigned char>(i & 0xff));
        input[i][0] = static_cast<unsigned char>(rng() % 23);  // the key: first byte
    }
    auto by_first_byte = [](const void* a, const void* b) {
        const int x = *static_cast<const unsigned char*>(a),
                  y = *static_cast<const unsigned char*>(b);
        return (x > y) - (x < y);
    };
    CompareFn compare = by_first_byte;
    std::vector<Rec> expected = input;
    std::stable_sort(expected.begin(), expected.end(),
                     [](const Rec& a, const Rec& b) { return a[0] < b[0]; });
    std::vector<Rec> merged = input;
    ASSERT_EQ(theMergeSort(merged.data(), 0, n - 1, W, ptr(compare)), 1);
    EXPECT_EQ(merged, expected) << W;
    std::vector<Rec> quick = input;
    ASSERT_EQ(theQuickSort(quick.data(), 0, n - 1, W, ptr(compare)), 1);
    std::vector<Rec> sorted_quick = quick, sorted_input = input;
    std::sort(sorted_quick.begin(), sorted_quick.end());
    std::sort(sorted_input.begin(), sorted_input.end());
    EXPECT_EQ(sorted_quick, sorted_input) << W;  // the same records ...
    for (int i = 1; i < n; ++i) ASSERT_LE(quick[i - 1][0], quick[i][0]) << W;  // ... in key order
}

TEST(SortEntry, AnyRecordWidth) {
    check_generic_width<1>();
    check_generic_width<3>();  // index sort + cycle permutation
    check_generic_width<12>();
    check_generic_width<20>();  // index sort + cycle permutation
    check_generic_width<24>();
    check_generic_width<40>();
}

TEST(SortEntry, SubRangeOfRecords) {
    for (auto* sort : {theMergeSort, theQuickSort}) {
        int data[] = {9, 8, 7, 6, 5, 4, 3};
        ASSERT_EQ(sort(data, 2, 5, 4, ascend(8)), 1);
        EXPECT_EQ(std::vector<int>(data, data + 7), (std::vector<int>{9, 8, 4, 5, 6, 7, 3}));
    }
}

TEST(SortEntry, RefusalsLeaveRecordsUntouched) {
    for (auto* sort : {theMergeSort, theQuickSort}) {
        int data[] = {3, 2, 1};
        EXPECT_EQ(sort(nullptr, 0, 2, 4, ascend(8)), 0);
        EXPECT_EQ(sort(data, 0, 2, 4, nullptr), 0);
        EXPECT_EQ(sort(data, 0, 2, 0, ascend(8)), 0);
        EXPECT_EQ(sort(data, 0, 2, -4, ascend(8)), 0);
        EXPECT_EQ(sort(data, -1, 2, 4, ascend(8)), 0);
        EXPECT_EQ(sort(data, 2, 1, 4, ascend(8)), 0);
        EXPECT_EQ(sort(data, 1, 1, 4, ascend(8)), 1);
        EXPECT_EQ(std::vector<int>(data, data + 3), (std::vector<int>{3, 2, 1}));
    }
}

// --- Quicksort inputs that defeat naive pivots ----------------------------------------

long long comparisons = 0;

int counting_int_ascend(const void* a, const void* b) {
    ++comparisons;
    return Compare_int_Ascend(a, b);
}

// McIlroy's adversary ("A killer adversary for quicksort", 1999): values are fixed lazily
// so that every pivot turns out as bad as possible. Record i holds i; val[i] is its value.
struct Adversary {
    std::vector<int> val;
    int gas = 0, solid = 0, candidate = 0;
} adversary;

int adversary_compare(const void* a, const void* b) {
    ++comparisons;
    int x, y;
    std::memcpy(&x, a, 4);
    std::memcpy(&y, b, 4);
    Adversary& s = adversary;
    if (s.val[x] == s.gas && s.val[y] == s.gas) s.val[x == s.candidate ? x : y] = s.solid++;
    if (s.val[x] == s.gas)
        s.candidate = x;
    else if (s.val[y] == s.gas)
        s.candidate = y;
    return (s.val[x] > s.val[y]) - (s.val[x] < s.val[y]);
}

TEST(QuickSort, AdversarialInputsStayNLogN) {
    const int n = 100000;
    const double bound = 6.0 * n * std::log2(n);  // quadratic would be ~n^2 / 2 = 5e9
    std::vector<std::vector<int>> inputs;
    std::vector<int> v(n);
    for (int i = 0; i < n; ++i) v[i] = i;
    inputs.push_back(v);  // sorted
    std::reverse(v.begin(), v.end());
    inputs.push_back(v);                        // reversed
    inputs.push_back(std::vector<int>(n, 42));  // all equal
    for (int i = 0; i < n; ++i) v[i] = i < n / 2 ? i : n - i;
    inputs.push_back(v);  // organ pipe
    for (int i = 0; i < n; ++i) v[i] = i % 1000;
    inputs.push_back(v);  // sawtooth
    for (int i = 0; i < n; ++i) v[i] = (i % 2) ? n / 2 + i / 2 : i / 2;
    inputs.push_back(v);  // interleaved halves
    for (const auto& input : inputs) {
        std::vector<int> data = input;
        comparisons = 0;
        ASSERT_EQ(theQuickSort(data.data(), 0, n - 1, 4, ptr(counting_int_ascend)), 1);
        EXPECT_LT(comparisons, bound);
        std::vector<int> expected = input;
        std::sort(expected.begin(), expected.end());
        EXPECT_EQ(data, expected);
        // The typed path (radix above its threshold) sorts the same input too.
        data = input;
        ASSERT_EQ(theQuickSort(data.data(), 0, n - 1, 4, ascend(8)), 1);
        EXPECT_EQ(data, expected);
    }

    adversary.val.assign(n, n - 1);
    adversary.gas = n - 1;
    adversary.solid = 0;
    adversary.candidate = 0;
    std::vector<int> records(n);
    for (int i = 0; i < n; ++i) records[i] = i;
    comparisons = 0;
    ASSERT_EQ(theQuickSort(records.data(), 0, n - 1, 4, ptr(adversary_compare)), 1);
    EXPECT_LT(comparisons, bound);
    for (int i = 1; i < n; ++i) ASSERT_LE(adversary.val[records[i - 1]], adversary.val[records[i]]);
}

TEST(MergeSort, PresortedInputCostsLinearComparisons) {
    const int n = 100000;
    std::vector<int> data(n);
    for (int i = 0; i < n; ++i) data[i] = i;
    comparisons = 0;
    ASSERT_EQ(theMergeSort(data.data(), 0, n - 1, 4, ptr(counting_int_ascend)), 1);
    EXPECT_LT(comparisons, 2LL * n);
}

// --- The vector container's index sort ------------------------------------------------

TEST(IndexSort, VectorSortsThroughTheSorter) {
    for (int method : {0, 1})
        for (bool up : {true, false}) {
            double data[] = {5, 3, 9, 1, 7, 2};
            zemath::NRVec<double> keys(data, 6);
            zemath::NRVec<int> index;  // grown and filled by the sort
            ASSERT_TRUE(zemath::sort_with_index(keys, index, up, method, 1, 4));
            ASSERT_EQ(index.size(), 6);
            const std::vector<double> want_keys =
                up ? std::vector<double>{5, 1, 3, 7, 9, 2} : std::vector<double>{5, 9, 7, 3, 1, 2};
            const std::vector<int> want_index =
                up ? std::vector<int>{0, 3, 1, 4, 2, 5} : std::vector<int>{0, 2, 4, 1, 3, 5};
            EXPECT_EQ(std::vector<double>(data, data + 6), want_keys);
            EXPECT_EQ(std::vector<int>(index.begin(), index.end()), want_index);

            int ints[] = {4, 4, 1, 3};
            zemath::NRVec<int> int_keys(ints, 4);
            zemath::NRVec<int> int_index(4, -1);
            ASSERT_TRUE(zemath::sort_with_index(int_keys, int_index, up, method));
            EXPECT_EQ(std::vector<int>(ints, ints + 4),
                      up ? (std::vector<int>{1, 3, 4, 4}) : (std::vector<int>{4, 4, 3, 1}));
            if (method != 0) {
                EXPECT_EQ(std::vector<int>(int_index.begin(), int_index.end()),
                          up ? (std::vector<int>{2, 3, 0, 1}) : (std::vector<int>{0, 1, 3, 2}));
            }

            double plain[] = {2, NANUM, -1};
            zemath::NRVec<double> plain_keys(plain, 3);
            ASSERT_TRUE(zemath::sort_vector(plain_keys, up, method));
            EXPECT_EQ(
                std::vector<double>(plain, plain + 3),
                up ? (std::vector<double>{-1, NANUM, 2}) : (std::vector<double>{2, NANUM, -1}));
        }
}

TEST(IndexSort, BadRangesAreRefused) {
    double data[] = {3, 1, 2};
    zemath::NRVec<double> keys(data, 3);
    zemath::NRVec<int> index(3, -7);
    EXPECT_FALSE(zemath::sort_with_index(keys, index, true, 1, 2, 1));
    EXPECT_FALSE(zemath::sort_with_index(keys, index, true, 1, -1, 2));
    EXPECT_FALSE(zemath::sort_with_index(keys, index, true, 1, 0, 3));
    zemath::NRVec<double> empty;
    EXPECT_FALSE(zemath::sort_with_index(empty, index, true, 1));
    EXPECT_FALSE(zemath::sort_vector(empty, true, 0));
    EXPECT_EQ(std::vector<double>(data, data + 3), (std::vector<double>{3, 1, 2}));
    EXPECT_EQ(std::vector<int>(index.begin(), index.end()), (std::vector<int>{-7, -7, -7}));
}

}  // namespace
