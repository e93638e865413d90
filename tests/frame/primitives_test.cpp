// Typed array primitives: every member on the same data (the element types must agree,
// walking the member lists the exports are stamped from), the documented examples, the
// shared scan against a plain left-to-right scan, and the bad-input cases.
// Reference values: tests/reference/gen_primitives.py (NumPy, fractions).
#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "frame/primitives.hpp"
#include "zemath.h"

namespace {

struct IntegerSet {
    std::vector<int> values;
    long long sum;
    int count, index_of_min, index_of_max, missing;
    double mean, variance;
    std::vector<long long> cumulative;
    int low, high, range_min, range_max;
    int start, width, bins;
    std::vector<unsigned> counts;
};
struct DoubleMoments {
    const char* name;
    std::vector<double> values;
    std::vector<int> missing;
    double mean, variance;
};
struct MostPopulatedCase {
    std::vector<double> values;
    unsigned bins;
    double lower_edge, fraction;
};
#include "reference/primitives_ref.inc"

const std::vector<const IntegerSet*> kSets = {&kShortSet, &kLongSet};
constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr double kMomentTolerance = 64 * std::numeric_limits<double>::epsilon();

// The set in element type T; missing values carry the reference marker, or `missing`.
template <class T>
std::vector<T> as(const IntegerSet& set, T missing = T(kRefMarker)) {
    std::vector<T> v;
    for (int x : set.values) v.push_back(x == kRefMarker ? missing : T(x));
    return v;
}

// ---- every member agrees on the same data ------------------------------------------

template <class T, class Fn>
void check_minmax(const char* letter, Fn fn, const IntegerSet& set) {
    if constexpr (!std::is_same_v<T, d_complex>) {
        SCOPED_TRACE(letter);
        const std::vector<T> data = as<T>(set);
        const T marker = T(kRefMarker);
        int imin = -7, imax = -7;
        EXPECT_EQ(fn(data.data(), 0, int(data.size()) - 1, &marker, &imin, &imax), set.missing);
        EXPECT_EQ(imin, set.index_of_min);
        EXPECT_EQ(imax, set.index_of_max);
    }
}

template <class T, class Fn>
void check_sum(const char* letter, Fn fn, const IntegerSet& set) {
    SCOPED_TRACE(letter);
    const std::vector<T> data = as<T>(set);
    const T marker = T(kRefMarker);
    T mn = 1, mx = 1;
    int imin = -7, imax = -7, count = -7;
    EXPECT_EQ(fn(data.data(), int(data.size()), &marker, &mn, &mx, &imin, &imax, &count),
              double(set.sum));
    EXPECT_EQ(mn, data[set.index_of_min]);
    EXPECT_EQ(mx, data[set.index_of_max]);
    EXPECT_EQ(imin, set.index_of_min);
    EXPECT_EQ(imax, set.index_of_max);
    EXPECT_EQ(count, set.count);
}

template <class T, class Fn>
void check_mean_variance(const char* letter, Fn fn, const IntegerSet& set) {
    SCOPED_TRACE(letter);
    const std::vector<T> data = as<T>(set);
    const T marker = T(kRefMarker);
    double variance = -7;
    int count = -7;
    EXPECT_NEAR(fn(data.data(), int(data.size()), &marker, &variance, &count), set.mean,
                kMomentTolerance * set.mean);
    EXPECT_NEAR(variance, set.variance, kMomentTolerance * set.variance);
    EXPECT_EQ(count, set.count);
}

template <class T, class Fn>
void check_cumulative_sum(const char* letter, Fn fn, const IntegerSet& set) {
    SCOPED_TRACE(letter);
    const std::vector<T> data = as<T>(set);
    const T marker = T(kRefMarker);
    const unsigned first = 2, end = unsigned(data.size());
    std::vector<T> out(end - first, T(99));
    const int missing_before = int(std::count(data.begin(), data.begin() + first, marker));
    EXPECT_EQ(fn(data.data(), first, end, out.data(), &marker), set.missing - missing_before);
    // Reference sums restart at `first`; integer members wrap modulo 2^bits.
    for (unsigned k = 0; k < out.size(); ++k) {
        const long long expected = set.cumulative[first + k] - set.cumulative[first - 1];
        if constexpr (std::is_integral_v<T>) {
            ASSERT_EQ(out[k], static_cast<T>(expected)) << k;
        } else {
            ASSERT_EQ(out[k], T(expected)) << k;
        }
    }
}

template <class T, class Fn>
void check_frequency_count(const char* letter, Fn fn, const IntegerSet& set) {
    SCOPED_TRACE(letter);
    const std::vector<T> data = as<T>(set);
    std::vector<unsigned> counts(set.bins, 77u);
    EXPECT_EQ(
        fn(data.data(), int(data.size()), counts.data(), set.bins, T(set.start), T(set.width)), 0);
    EXPECT_EQ(counts, set.counts);
}

template <class T, class Fn>
void check_minmax_in_range(const char* letter, Fn fn, const IntegerSet& set) {
    SCOPED_TRACE(letter);
    const std::vector<T> data = as<T>(set);
    const T marker = T(kRefMarker);
    int imin = -7, imax = -7;
    EXPECT_EQ(fn(data.data(), int(data.size()), T(set.low), T(set.high), &marker, &imin, &imax),
              set.missing);
    EXPECT_EQ(imin, set.range_min);
    EXPECT_EQ(imax, set.range_max);
}

TEST(PrimitivesTypes, EveryMemberAgreesWithTheReference) {
    for (const IntegerSet* set : kSets) {
        SCOPED_TRACE(set->values.size());
#define MINMAX(L, T) check_minmax<T>(#L, &zemath_##L##_minmax, *set);
#define SUM(L, T) check_sum<T>(#L, &zemath_##L##_sum, *set);
#define MEAN_VARIANCE(L, T) check_mean_variance<T>(#L, &zemath_##L##_mean_variance, *set);
#define CUMULATIVE(L, T) check_cumulative_sum<T>(#L, &zemath_##L##_cumulative_sum, *set);
#define FREQUENCY(L, T) check_frequency_count<T>(#L, &zemath_##L##_frequency_count, *set);
#define IN_RANGE(L, T) check_minmax_in_range<T>(#L, &zemath_##L##_minmax_in_range, *set);
        ZEMATH_MINMAX_MEMBERS(MINMAX)
        ZEMATH_SUM_MEMBERS(SUM)
        ZEMATH_MEAN_VARIANCE_MEMBERS(MEAN_VARIANCE)
        ZEMATH_CUMULATIVE_SUM_MEMBERS(CUMULATIVE)
        ZEMATH_FREQUENCY_COUNT_MEMBERS(FREQUENCY)
        ZEMATH_MINMAX_IN_RANGE_MEMBERS(IN_RANGE)
#undef MINMAX
#undef SUM
#undef MEAN_VARIANCE
#undef CUMULATIVE
#undef FREQUENCY
#undef IN_RANGE

        // The d members that always skip NANUM, on the same data with NANUM as the marker.
        const std::vector<double> d = as<double>(*set, NANUM);
        const int n = int(d.size());
        int imin = -7, imax = -7, count = -7;
        EXPECT_EQ(zemath_d_minmax(d.data(), 0, n - 1, &imin, &imax), set->missing);
        EXPECT_EQ(imin, set->index_of_min);
        EXPECT_EQ(imax, set->index_of_max);
        EXPECT_EQ(zemath_d_sum(d.data(), n, nullptr, nullptr, nullptr, nullptr, &count),
                  double(set->sum));
        double variance = -7;
        EXPECT_NEAR(zemath_d_mean_variance(d.data(), n, &variance, &count), set->mean,
                    kMomentTolerance * set->mean);
        EXPECT_NEAR(variance, set->variance, kMomentTolerance * set->variance);
        EXPECT_EQ(count, set->count);

        // The float sum skips nothing: the same values without the missing ones.
        std::vector<float> kept;
        for (int x : set->values)
            if (x != kRefMarker) kept.push_back(float(x));
        float fmin = -1, fmax = -1;
        EXPECT_EQ(zemath_f_sum(kept.data(), int(kept.size()), &fmin, &fmax, &imin, &imax),
                  double(set->sum));
        EXPECT_EQ(fmin, float(set->values[set->index_of_min]));
        EXPECT_EQ(fmax, float(set->values[set->index_of_max]));
    }
}

TEST(PrimitivesTypes, CopyMovesEveryElementAndAllowsOverlap) {
    const IntegerSet& set = kShortSet;
#define COPY(L, T)                                                                         \
    {                                                                                      \
        std::vector<T> source = as<T>(set), target(source.size());                         \
        EXPECT_EQ(zemath_##L##_copy(source.data(), target.data(), int(source.size())), 0); \
        EXPECT_EQ(target, source) << #L;                                                   \
        EXPECT_EQ(zemath_##L##_copy(source.data(), source.data() + 1, 5), 0);              \
        EXPECT_EQ(source[5], as<T>(set)[4]) << #L;                                         \
    }
    ZEMATH_COPY_MEMBERS(COPY)
#undef COPY
}

TEST(PrimitivesTypes, MeanVarianceOfDoubleDataSets) {
    for (const DoubleMoments& c : kDoubleMoments) {
        SCOPED_TRACE(c.name);
        std::vector<double> data = c.values;
        for (int i : c.missing) data[i] = NANUM;
        double variance = -7;
        int count = -7;
        const double mean =
            zemath_d_mean_variance(data.data(), int(data.size()), &variance, &count);
        EXPECT_NEAR(mean, c.mean, 4 * std::numeric_limits<double>::epsilon() * std::fabs(c.mean));
        EXPECT_NEAR(variance, c.variance, 1e-12 * c.variance);
        EXPECT_EQ(count, int(c.values.size() - c.missing.size()));
    }
}

TEST(PrimitivesTypes, FrequencyCountOnDyadicLattice) {
    std::vector<unsigned> counts(kLatticeCounts.size());
    EXPECT_EQ(zemath_d_frequency_count(kLatticeValues.data(), int(kLatticeValues.size()),
                                       counts.data(), int(counts.size()), -2.0, 0.25),
              0);
    EXPECT_EQ(counts, kLatticeCounts);
}

TEST(PrimitivesTypes, FindMostReferenceCasesAndBothCountingPaths) {
    for (const MostPopulatedCase* c : {&kMostShort, &kMostTies, &kMostLong}) {
        SCOPED_TRACE(c->values.size());
        double fraction = -1;
        EXPECT_EQ(zemath_d_find_most(c->values.data(), int(c->values.size()), c->bins, &fraction),
                  c->lower_edge);
        EXPECT_DOUBLE_EQ(fraction, c->fraction);
        std::vector<unsigned short> us(c->values.begin(), c->values.end());
        EXPECT_EQ(zemath_us_find_most(us.data(), int(us.size()), c->bins, &fraction),
                  c->lower_edge);
    }
    // More bins than values (sorted bin indices) against fewer (an array of counts): the
    // same data split finer must give the edge of the same fullest fine bin.
    const std::vector<double> v = {0, 1, 7.25, 7.5, 7.5, 9, 16, 12};
    double dense_fraction = -1, sparse_fraction = -1;
    EXPECT_EQ(zemath_d_find_most(v.data(), 8, 8, &dense_fraction), 6.0);    // width 2
    EXPECT_EQ(zemath_d_find_most(v.data(), 8, 64, &sparse_fraction), 7.5);  // width 0.25
    EXPECT_DOUBLE_EQ(dense_fraction, 3.0 / 7.0);
    EXPECT_DOUBLE_EQ(sparse_fraction, 2.0 / 7.0);
    EXPECT_EQ(zemath_d_find_most(v.data(), 8, 1u << 30, &sparse_fraction), 7.5);  // no giant array
    const double constant[] = {4, 4, 4};
    EXPECT_EQ(zemath_d_find_most(constant, 3, 10, &sparse_fraction), 4.0);
    EXPECT_EQ(sparse_fraction, 1.0);
}

// ---- documented examples and rules ---------------------------------------------------

TEST(PrimitivesRules, DocumentedExamples) {
    double s[] = {0, 5, 10, 11, -1};
    EXPECT_EQ(zemath_d_stretch(s, 5, 0, 10, 0, 100), 0);
    EXPECT_EQ(std::vector<double>(s, s + 5), (std::vector<double>{0.5, 50.5, 100.5, 100, 0}));

    const double x[] = {0, 1, 2, 3.05};
    double first = -7, last = -7, increment = -7;
    EXPECT_EQ(zemath_d_get_vector_inc(4, x, 0.1, &first, &last, &increment), 1);
    EXPECT_EQ(first, 0);
    EXPECT_EQ(last, 3.05);
    EXPECT_EQ(increment, 1);  // the first difference, not the mean 1.01666...
    increment = -7;
    EXPECT_EQ(zemath_d_get_vector_inc(4, x, 0.01, &first, &last, &increment), 2);
    EXPECT_EQ(increment, -7);

    const double mv[] = {1, NANUM, 3};
    double variance = -7;
    int count = -7;
    EXPECT_EQ(zemath_d_mean_variance(mv, 3, &variance, &count), 2);
    EXPECT_EQ(variance, 2);
    EXPECT_EQ(count, 2);

    const double cs[] = {1, NANUM, 2};
    double out[3] = {-7, -7, -7};
    const double nanum = NANUM;
    EXPECT_EQ(zemath_d_cumulative_sum(cs, 0, 3, out, &nanum), 1);
    EXPECT_EQ(std::vector<double>(out, out + 3), (std::vector<double>{1, 1, 3}));

    const double r[] = {5, -1, 3, 9};
    int imin = -7, imax = -7;
    EXPECT_EQ(zemath_d_minmax_in_range(r, 4, 0, 6, nullptr, &imin, &imax), 0);
    EXPECT_EQ(imin, 2);
    EXPECT_EQ(imax, 0);
}

TEST(PrimitivesRules, StretchOffsetAndTypedStorage) {
    float f[] = {0, 5, 10, 11};
    EXPECT_EQ(zemath_f_stretch(f, 4, 0, 10, 0, 100), 0);
    EXPECT_EQ(std::vector<float>(f, f + 4), (std::vector<float>{0.5f, 50.5f, 100.5f, 100}));
    // us: the 0.5 offset then truncation rounds to nearest.
    unsigned short us[] = {0, 3, 7, 9, 2};
    EXPECT_EQ(zemath_us_stretch(us, 5, 1, 7, 0, 65535), 0);
    EXPECT_EQ(us[0], 0);      // below low: new low, no offset
    EXPECT_EQ(us[1], 21845);  // 2 * 65535 / 6 + 0.5 = 21845.5
    EXPECT_EQ(us[2], 65535);  // 65535.5 truncated, stays in range
    EXPECT_EQ(us[3], 65535);  // above high: new high
    unsigned short inverted[] = {0, 5, 10};
    EXPECT_EQ(zemath_us_stretch(inverted, 3, 0, 10, 100, 0), 0);  // inverted target range
    EXPECT_EQ(inverted[1], 50);                                   // 5 * -100 / 10 + 100.5 = 50.5
    double nan_data[] = {kNan, kInf, -kInf};
    EXPECT_EQ(zemath_d_stretch(nan_data, 3, 0, 1, 0, 10), 0);
    EXPECT_TRUE(std::isnan(nan_data[0]));
    EXPECT_EQ(nan_data[1], 10);
    EXPECT_EQ(nan_data[2], 0);
}

TEST(PrimitivesRules, EvenSpacingCases) {
    struct Case {
        std::vector<double> x;
        double tolerance;
        int result;
        double increment;
    };
    const Case cases[] = {
        {{10, 8, 6, 4}, 1e-8, -1, -2},
        {{10, 8, 6, 3}, 0.1, -2, 0},
        {{1, 2, 2, 3}, 0.5, 0, 0},  // not strictly monotonic
        {{1, kNan, 3}, 0.5, 0, 0},  // NaN breaks monotonicity
        {{0, 1, kInf}, 0.5, 2, 0},  // infinite mean: not evenly spaced
        {{0, 1, 2}, kNan, 2, 0},    // NaN tolerance: not evenly spaced
        {{0, 1, 2}, 0, 1, 1},       // exact spacing passes a zero tolerance
        {{0, 0.1, 0.2, 0.30000000000000004}, 1e-8, 1, 0.1},
        {{5}, 0.1, 0, 0},
    };
    for (const Case& c : cases) {
        double increment = -7;
        EXPECT_EQ(zemath_d_get_vector_inc(int(c.x.size()), c.x.data(), c.tolerance, nullptr,
                                          nullptr, &increment),
                  c.result)
            << c.x[0] << " " << c.tolerance;
        if (c.result == 1 || c.result == -1)
            EXPECT_EQ(increment, c.increment);
        else
            EXPECT_EQ(increment, -7);
    }
    const int ints[] = {-4, 0, 4, 8};
    double first = -7, last = -7, increment = -7;
    EXPECT_EQ(zemath_i_get_vector_inc(4, ints, 0, &first, &last, &increment), 1);
    EXPECT_EQ(first, -4);
    EXPECT_EQ(last, 8);
    EXPECT_EQ(increment, 4);
    const int extremes[] = {INT_MIN, 0, INT_MAX};  // differences exceed int: formed in double
    EXPECT_EQ(zemath_i_get_vector_inc(3, extremes, 1e-9, nullptr, nullptr, &increment), 1);
    EXPECT_EQ(increment, -double(INT_MIN));
}

TEST(PrimitivesRules, SignedAndComplexMinmax) {
    const std::vector<int> v = {3, -7, 12, -7, 12, 0};
#define SIGNED(L, T)                                                                       \
    {                                                                                      \
        std::vector<T> data(v.begin(), v.end());                                           \
        int imin = -9, imax = -9;                                                          \
        EXPECT_EQ(zemath_##L##_minmax(data.data(), 0, 5, nullptr, &imin, &imax), 0) << #L; \
        EXPECT_EQ(imin, 1) << #L;                                                          \
        EXPECT_EQ(imax, 2) << #L;                                                          \
    }
    SIGNED(c, signed char)
    SIGNED(s, short) SIGNED(i, int) SIGNED(f, float)
#undef SIGNED
        // Modulus order: |3+4i| = 5 ties |-5| (first wins), |0| smallest, |6i| largest.
        const d_complex z[] = {{3, 4}, {-5, 0}, {0, 0}, {0, 6}, {1e300, 1e300}, {0, 6}};
    const d_complex marker = {1e300, 1e300};
    int imin = -9, imax = -9;
    EXPECT_EQ(zemath_z_minmax(z, 0, 5, &marker, &imin, &imax), 1);
    EXPECT_EQ(imin, 2);
    EXPECT_EQ(imax, 3);
    EXPECT_EQ(zemath_z_minmax(z, 0, 5, nullptr, &imin, &imax), 0);
    EXPECT_EQ(imax, 4);  // hypot: no overflow for parts near 1e300
    EXPECT_EQ(zemath_z_minmax(z, 0, 1, nullptr, &imin, &imax), 0);
    EXPECT_EQ(imin, 0);  // equal moduli: the first
    EXPECT_EQ(imax, 0);
}

TEST(PrimitivesRules, CumulativeSumWrapsInTheElementType) {
    const int big[] = {INT_MAX, 1, 1};
    int out[3];
    EXPECT_EQ(zemath_i_cumulative_sum(big, 0, 3, out, nullptr), 0);
    EXPECT_EQ(out[1], INT_MIN);
    EXPECT_EQ(out[2], INT_MIN + 1);
    double in_place[] = {NANUM, 1, 2, NANUM, 4};
    const double nanum = NANUM;
    EXPECT_EQ(zemath_d_cumulative_sum(in_place, 0, 5, in_place, &nanum), 2);
    EXPECT_EQ(std::vector<double>(in_place, in_place + 5), (std::vector<double>{0, 1, 3, 3, 7}));
}

TEST(PrimitivesRules, FrequencyCountEdgesAndDroppedValues) {
    // 0.3 / 0.1 rounds to 2.9999999999999996 but is an edge: bin 3 (0.7 likewise bin 7).
    // Values at the top edge, below start (NANUM is a tiny negative value), NaN and
    // infinities are dropped.
    const double v[] = {0.3, 0.0, 0.1, 0.2, 0.7, 1.0, -0.01, kNan, kInf, -kInf, NANUM, 0.99};
    std::vector<unsigned> counts(10, 5u);
    EXPECT_EQ(zemath_d_frequency_count(v, 12, counts.data(), 10, 0.0, 0.1), 0);
    EXPECT_EQ(counts, (std::vector<unsigned>{1, 1, 1, 1, 0, 0, 0, 1, 0, 1}));
    // A negative width counts downward from start: bin k = floor((v - start) / width).
    std::vector<unsigned> two(2, 5u);
    EXPECT_EQ(zemath_d_frequency_count(v, 12, two.data(), 2, 1.0, -0.5), 0);
    EXPECT_EQ(two[0], 3u);  // 1.0, 0.99, 0.7
    EXPECT_EQ(two[1], 3u);  // 0.3, 0.2, 0.1 (0.0 is the edge of bin 2)
    EXPECT_EQ(zemath_d_frequency_count(v, 12, two.data(), 2, 0.0, kNan), 0);  // accepted
    EXPECT_EQ(two, (std::vector<unsigned>{0, 0}));
}

// ---- the shared scan -----------------------------------------------------------------

// The plain left-to-right scan every form must reproduce.
template <class T>
zemath::ScanResult<T, double> plain_scan(const std::vector<T>& v, const T* marker) {
    zemath::ScanResult<T, double> r;
    for (int i = 0; i < int(v.size()); ++i) {
        if (marker && v[i] == *marker) {
            ++r.missing;
            continue;
        }
        if (r.count++ == 0) {
            r.min = r.max = v[i];
            r.index_of_min = r.index_of_max = i;
        } else {
            if (v[i] < r.min) r.min = v[i], r.index_of_min = i;
            if (v[i] > r.max) r.max = v[i], r.index_of_max = i;
        }
        r.sum += double(v[i]);
    }
    return r;
}

TEST(PrimitivesScan, BlocksGiveThePlainScanIndicesAcrossSizesAndSpecialValues) {
    std::mt19937 gen(7);
    const double nanum = NANUM;
    for (int n : {0, 1, 2, 15, 16, 17, 33, 511, 512, 513, 529, 1025, 1600, 5000}) {
        for (int variant = 0; variant < 6; ++variant) {
            // Integer-valued data (so sums are exact) with ties, NANUM, and per variant
            // NaN first, NaN inside, infinities, signed zeros or all missing.
            std::vector<double> v(n);
            for (double& x : v) x = double(std::uniform_int_distribution<int>(-40, 40)(gen));
            for (double& x : v)
                if (gen() % 9 == 0) x = NANUM;
            if (n > 0 && variant == 1) v[0] = kNan;
            if (n > 3 && variant == 2) v[n / 2] = kNan;
            if (n > 3 && variant == 3) v[n - 2] = kInf, v[n / 3] = -kInf;
            if (variant == 4)
                for (double& x : v) x = (gen() % 2) ? 0.0 : -0.0;
            if (variant == 5)
                for (double& x : v) x = NANUM;
            SCOPED_TRACE(::testing::Message() << "n=" << n << " variant=" << variant);
            const auto expected = plain_scan(v, &nanum);
            const auto got = zemath::scan_min_max<double>(v.data(), 0, n, &nanum);
            EXPECT_EQ(got.index_of_min, expected.index_of_min);
            EXPECT_EQ(got.index_of_max, expected.index_of_max);
            EXPECT_EQ(got.count, expected.count);
            EXPECT_EQ(got.missing, expected.missing);
            if (std::isnan(expected.sum))
                EXPECT_TRUE(std::isnan(got.sum));
            else
                EXPECT_EQ(got.sum, expected.sum);
            const auto no_marker = zemath::scan_min_max<double>(v.data(), 0, n, nullptr);
            const auto expected_no_marker = plain_scan<double>(v, nullptr);
            EXPECT_EQ(no_marker.index_of_min, expected_no_marker.index_of_min);
            EXPECT_EQ(no_marker.index_of_max, expected_no_marker.index_of_max);
            // Narrow types through the same blocks.
            std::vector<unsigned char> bytes(n);
            for (int i = 0; i < n; ++i) bytes[i] = static_cast<unsigned char>(gen() % 7);
            const unsigned char byte_marker = 3;
            const auto got_bytes = zemath::scan_min_max<unsigned char, std::uint64_t>(
                bytes.data(), 0, n, &byte_marker);
            const auto want_bytes = plain_scan(bytes, &byte_marker);
            EXPECT_EQ(got_bytes.index_of_min, want_bytes.index_of_min);
            EXPECT_EQ(got_bytes.index_of_max, want_bytes.index_of_max);
            EXPECT_EQ(double(got_bytes.sum), want_bytes.sum);
        }
    }
}

TEST(PrimitivesScan, SumsAreTheSameInEveryProcessorForm) {
    // Random non-integer data: the lanes fix the rounding, so the plain, baseline-vector
    // and AVX2 forms must agree bit for bit, and stay within a few ulps of a long double sum.
    std::mt19937 gen(11);
    std::normal_distribution<double> normal(0.0, 1e3);
    std::vector<double> v(512 * 3 + 40);
    for (double& x : v) x = normal(gen);
    v[100] = NANUM;
    using namespace zemath::scan_detail;
    const double nanum = NANUM;
    const auto plain =
        summarise_block_plain<double, double, true, true, true>(v.data(), 512, nanum);
    EXPECT_EQ(plain.missing, 1);
#if ZEMATH_SCAN_VECTORS
    const auto vec =
        summarise_block_vector<16, double, double, true, true, true>(v.data(), 512, nanum);
    EXPECT_EQ(vec.sum, plain.sum);
    EXPECT_EQ(vec.min, plain.min);
    EXPECT_EQ(vec.missing, plain.missing);
    const Running<double, double> start{v[0], v[0], 0, 0, 1, 0, v[0]};
    Running<double, double> base = start;
    int i_base = 1;
    scan_blocks<16, double, double, true, true, true>(v.data(), i_base, int(v.size()), nanum, base);
#if ZEMATH_SCAN_AVX2
    const auto same_as_base = [&](const Running<double, double>& wide, int i_wide) {
        EXPECT_EQ(wide.sum, base.sum);
        EXPECT_EQ(wide.index_of_min, base.index_of_min);
        EXPECT_EQ(wide.index_of_max, base.index_of_max);
        EXPECT_EQ(wide.missing, base.missing);
        EXPECT_EQ(i_wide, i_base);
    };
    if (processor_has_avx2()) {
        Running<double, double> wide = start;
        int i_wide = 1;
        scan_blocks_avx2<double, double, true, true, true>(v.data(), i_wide, int(v.size()), nanum,
                                                           wide);
        same_as_base(wide, i_wide);
    }
    if (processor_has_avx512()) {
        Running<double, double> wide = start;
        int i_wide = 1;
        scan_blocks_avx512<double, double, true, true, true>(v.data(), i_wide, int(v.size()), nanum,
                                                             wide);
        same_as_base(wide, i_wide);
    }
#endif
#endif
    long double exact = 0;
    for (double x : v)
        if (x != nanum) exact += x;
    const double mv_sum =
        zemath_d_sum(v.data(), int(v.size()), nullptr, nullptr, nullptr, nullptr, nullptr);
    EXPECT_NEAR(mv_sum, double(exact), 1e-12 * 1e3 * std::sqrt(double(v.size())));
}

// ---- bad input: never a crash, refused calls write nothing ------------------------------

TEST(PrimitivesBadInput, RefusalsLeaveOutputsUntouched) {
    const double d[] = {1, 2, 3};
    double out[3] = {-7, -7, -7};
    int a = -7, b = -7, c = -7;
    double fraction = -7, variance = -7;
    unsigned counts[2] = {9, 9};

    EXPECT_EQ(zemath_d_copy(nullptr, out, 3), -1);
    EXPECT_EQ(zemath_d_copy(d, nullptr, 3), -1);
    EXPECT_EQ(zemath_d_copy(d, out, -1), -1);
    EXPECT_EQ(zemath_d_copy(d, out, 0), 0);

    EXPECT_EQ(zemath_i_minmax(nullptr, 0, 2, nullptr, &a, &b), -1);
    const int ints[] = {4, 5, 6};
    EXPECT_EQ(zemath_i_minmax(ints, -1, 2, nullptr, &a, &b), -1);
    EXPECT_EQ(zemath_i_minmax(ints, 0, INT_MAX, nullptr, &a, &b), -1);
    EXPECT_EQ(zemath_d_minmax_in_range(nullptr, 3, 0, 1, nullptr, &a, &b), -1);
    EXPECT_EQ(zemath_d_mean_variance(nullptr, 3, &variance, &a), NANUM);
    EXPECT_EQ(zemath_d_cumulative_sum(nullptr, 0, 3, out, nullptr), -1);
    EXPECT_EQ(zemath_d_cumulative_sum(d, 0, 3, nullptr, nullptr), -1);
    EXPECT_EQ(zemath_d_cumulative_sum(d, 2, 1, out, nullptr), -1);
    EXPECT_EQ(zemath_d_cumulative_sum(d, 2, 2, out, nullptr), 0);  // empty: nothing written
    EXPECT_EQ(zemath_d_frequency_count(nullptr, 3, counts, 2, 0, 1), -1);
    EXPECT_EQ(zemath_d_frequency_count(d, 3, nullptr, 2, 0, 1), -1);
    EXPECT_EQ(zemath_d_frequency_count(d, -1, counts, 2, 0, 1), -1);
    EXPECT_EQ(zemath_d_frequency_count(d, 3, counts, 0, 0, 1), -1);
    EXPECT_EQ(zemath_d_frequency_count(d, 3, counts, 2, 0, 0), -1);
    const unsigned char bytes[] = {1, 2};
    EXPECT_EQ(zemath_b_frequency_count(bytes, 2, counts, 2, 0, 0), -1);  // zero width byte
    const double inf_data[] = {1, kInf};
    const double nan_data[] = {kNan, kNan};
    EXPECT_EQ(zemath_d_find_most(nullptr, 3, 2, &fraction), NANUM);
    EXPECT_EQ(zemath_d_find_most(d, 0, 2, &fraction), NANUM);
    EXPECT_EQ(zemath_d_find_most(d, 3, 0, &fraction), NANUM);
    EXPECT_EQ(zemath_d_find_most(d, 3, 0x80000000u, &fraction), NANUM);
    EXPECT_EQ(zemath_d_find_most(inf_data, 2, 2, &fraction), NANUM);
    EXPECT_EQ(zemath_d_find_most(nan_data, 2, 2, &fraction), NANUM);
    const double tiny_range[] = {0, 4.9e-324};  // width underflows to 0
    EXPECT_EQ(zemath_d_find_most(tiny_range, 2, 3, &fraction), NANUM);
    double s[] = {1, 2};
    EXPECT_EQ(zemath_d_stretch(nullptr, 2, 0, 1, 0, 1), -1);
    EXPECT_EQ(zemath_d_stretch(s, -1, 0, 1, 0, 1), -1);
    EXPECT_EQ(zemath_d_stretch(s, 2, 3, 3, 0, 1), -3);
    EXPECT_EQ(zemath_d_get_vector_inc(3, nullptr, 0.1, out, out, out), 0);
    EXPECT_EQ(zemath_d_get_vector_inc(-1, d, 0.1, out, out, out), 0);
    EXPECT_EQ(zemath_d_get_vector_inc(1, d, 0.1, out, out, out), 0);

    EXPECT_EQ(std::vector<double>(out, out + 3), (std::vector<double>{-7, -7, -7}));
    EXPECT_EQ(a, -7);
    EXPECT_EQ(b, -7);
    EXPECT_EQ(c, -7);
    EXPECT_EQ(fraction, -7);
    EXPECT_EQ(variance, -7);
    EXPECT_EQ(counts[0], 9u);
    EXPECT_EQ(counts[1], 9u);
    EXPECT_EQ(s[0], 1);
    EXPECT_EQ(s[1], 2);
}

TEST(PrimitivesBadInput, EmptyAndDegenerateResults) {
    int imin = -7, imax = -7, count = -7;
    unsigned short mn = 9, mx = 9;
    const unsigned short us[] = {5, 5};
    // Sums follow zemath_d_sum: NULL data or n <= 0 give the empty result.
    for (int n : {0, -3}) {
        EXPECT_EQ(zemath_us_sum(us, n, nullptr, &mn, &mx, &imin, &imax, &count), 0.0);
        EXPECT_EQ(mn, 0);
        EXPECT_EQ(imin, -1);
        EXPECT_EQ(count, 0);
    }
    EXPECT_EQ(zemath_us_sum(nullptr, 2, nullptr, &mn, &mx, &imin, &imax, &count), 0.0);
    const unsigned short all_missing = 5;
    EXPECT_EQ(zemath_us_sum(us, 2, &all_missing, &mn, &mx, &imin, &imax, &count), 0.0);
    EXPECT_EQ(count, 0);
    // Mean and variance: N = 0 and N = 1.
    double variance = -7;
    EXPECT_EQ(zemath_us_mean_variance(us, 2, &all_missing, &variance, &count), NANUM);
    EXPECT_EQ(variance, NANUM);
    EXPECT_EQ(count, 0);
    EXPECT_EQ(zemath_d_mean_variance(nullptr, 0, &variance, &count), NANUM);
    const double one[] = {kInf};
    EXPECT_EQ(zemath_d_mean_variance(one, 1, &variance, &count), kInf);
    EXPECT_EQ(variance, 0);
    const double with_nan[] = {1, kNan, 3};
    EXPECT_TRUE(std::isnan(zemath_d_mean_variance(with_nan, 3, &variance, &count)));
    EXPECT_TRUE(std::isnan(variance));
    EXPECT_EQ(count, 3);  // NaN is not missing
    // Ranges: first > last and an empty value range give -1 indices; n <= 0 as well.
    const float f[] = {1, 2, 3};
    EXPECT_EQ(zemath_f_minmax(f, 2, 1, nullptr, &imin, &imax), 0);
    EXPECT_EQ(imin, -1);
    EXPECT_EQ(zemath_f_minmax_in_range(f, 3, 5, 4, nullptr, &imin, &imax), 0);
    EXPECT_EQ(imax, -1);
    EXPECT_EQ(zemath_f_minmax_in_range(f, 3, kNan, 4, nullptr, &imin, &imax), 0);
    EXPECT_EQ(imin, -1);
    imin = imax = -7;
    EXPECT_EQ(zemath_f_minmax_in_range(f, -2, 0, 4, nullptr, &imin, &imax), 0);
    EXPECT_EQ(imin, -1);
    // n = 0 frequency count zeroes the counts; a one-element scan is its own min and max.
    unsigned counts[3] = {4, 4, 4};
    EXPECT_EQ(zemath_f_frequency_count(f, 0, counts, 3, 0, 1), 0);
    EXPECT_EQ(counts[2], 0u);
    EXPECT_EQ(zemath_f_sum(f + 1, 1, nullptr, nullptr, &imin, &imax), 2.0);
    EXPECT_EQ(imin, 0);
    EXPECT_EQ(imax, 0);
}

}  // namespace
