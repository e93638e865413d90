// Typed array primitives: every member on the same reference data (walking the member
// lists the exports are stamped from), the deliberate quirks, the shared scan against a
// plain left-to-right scan, and the refusals.
// Reference values: tests/reference/gen_primitives.py (NumPy, fractions).
#include <gtest/gtest.h>

#include <array>
#include <random>
#include <tuple>
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
    int low, high, range_min, range_max, start, width, bins;
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

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();
const double kNanumMarker = NANUM;

// A value in element type T; complex values lie on the real axis, where the modulus order
// is the real one.
template <class T>
T to(int x) {
    if constexpr (std::is_same_v<T, d_complex>)
        return {double(x), 0.0};
    else
        return T(x);
}
template <class T>
std::vector<T> as(const IntegerSet& s) {
    std::vector<T> v;
    for (int x : s.values) v.push_back(to<T>(x));
    return v;
}

// Each check gets a member, the set in its element type T and the marker 125 in T. The long
// set crosses the scan's 512-value blocks.
TEST(PrimitivesTypes, EveryMemberAgreesWithTheReference) {
    for (const IntegerSet* set : {&kShortSet, &kLongSet}) {
        const IntegerSet& s = *set;
        const int n = int(s.values.size());
        const std::array extremes{s.index_of_min, s.index_of_max};
        SCOPED_TRACE(n);
        const auto copy = [&](auto fn, auto source, auto) {
            decltype(source) target(n);
            EXPECT_EQ(fn(source.data(), target.data(), n), 0);
            EXPECT_EQ(target, source);
        };
        const auto minmax = [&](auto fn, auto d, auto m) {
            int a = -7, b = -7;
            EXPECT_EQ(fn(d.data(), 0, n - 1, &m, &a, &b), s.missing);
            EXPECT_EQ((std::array{a, b}), extremes);
        };
        const auto in_range = [&](auto fn, auto d, auto m) {
            int a = -7, b = -7;
            EXPECT_EQ(fn(d.data(), n, decltype(m)(s.low), decltype(m)(s.high), &m, &a, &b),
                      s.missing);
            EXPECT_EQ((std::array{a, b}), (std::array{s.range_min, s.range_max}));
        };
        const auto sum = [&](auto fn, auto d, auto m) {
            auto lo = m, hi = m;
            int a = -7, b = -7, c = -7;
            EXPECT_EQ(fn(d.data(), n, &m, &lo, &hi, &a, &b, &c), double(s.sum));
            EXPECT_EQ((std::array{lo, hi}), (std::array{d[extremes[0]], d[extremes[1]]}));
            EXPECT_EQ((std::array{a, b, c}), (std::array{extremes[0], extremes[1], s.count}));
        };
        const auto mean_variance = [&](auto fn, auto d, auto m) {
            double variance = -7;
            int count = -7;
            EXPECT_NEAR(fn(d.data(), n, &m, &variance, &count), s.mean, 1e-14 * s.mean);
            EXPECT_NEAR(variance, s.variance, 1e-14 * s.variance);
            EXPECT_EQ(count, s.count);
        };
        // From first = 2: the output is indexed from 0 and the sums restart there; integer
        // members wrap modulo 2^bits.
        const auto cumulative = [&](auto fn, auto d, auto m) {
            decltype(d) out(n - 2, m), want;
            for (int k = 2; k < n; ++k)
                want.push_back(decltype(m)(s.cumulative[k] - s.cumulative[1]));
            const int missing = s.missing - int(std::count(d.begin(), d.begin() + 2, m));
            EXPECT_EQ(fn(d.data(), 2u, unsigned(n), out.data(), &m), missing);
            EXPECT_EQ(out, want);
        };
        const auto frequency = [&](auto fn, auto d, auto m) {
            using T = decltype(m);
            std::vector<unsigned> counts(s.bins, 77u);
            EXPECT_EQ(fn(d.data(), n, counts.data(), s.bins, T(s.start), T(s.width)), 0);
            EXPECT_EQ(counts, s.counts);
        };
#define WALK(check, member, L, T)                                   \
    {                                                               \
        SCOPED_TRACE(#L);                                           \
        check(&zemath_##L##_##member, as<T>(s), to<T>(kRefMarker)); \
    }
#define WALK_COPY(L, T) WALK(copy, copy, L, T)
#define WALK_MINMAX(L, T) WALK(minmax, minmax, L, T)
#define WALK_IN_RANGE(L, T) WALK(in_range, minmax_in_range, L, T)
#define WALK_SUM(L, T) WALK(sum, sum, L, T)
#define WALK_MEAN_VARIANCE(L, T) WALK(mean_variance, mean_variance, L, T)
#define WALK_CUMULATIVE(L, T) WALK(cumulative, cumulative_sum, L, T)
#define WALK_FREQUENCY(L, T) WALK(frequency, frequency_count, L, T)
        ZEMATH_COPY_MEMBERS(WALK_COPY)
        ZEMATH_MINMAX_MEMBERS(WALK_MINMAX)
        ZEMATH_MINMAX_IN_RANGE_MEMBERS(WALK_IN_RANGE)
        ZEMATH_SUM_MEMBERS(WALK_SUM)
        ZEMATH_MEAN_VARIANCE_MEMBERS(WALK_MEAN_VARIANCE)
        ZEMATH_CUMULATIVE_SUM_MEMBERS(WALK_CUMULATIVE)
        ZEMATH_FREQUENCY_COUNT_MEMBERS(WALK_FREQUENCY)
        // The float sum skips nothing: the markers count as data.
        const std::vector<float> f = as<float>(s);
        EXPECT_EQ(zemath_f_sum(f.data(), n, nullptr, nullptr, nullptr, nullptr),
                  double(s.sum + kRefMarker * s.missing));
    }
}

TEST(PrimitivesReference, MeanVarianceHistogramAndFullestBin) {
    // The offset set loses every digit to a one-pass formula: two passes, S2 - S1^2/N.
    for (const DoubleMoments& c : kDoubleMoments) {
        std::vector<double> data = c.values;
        for (int i : c.missing) data[i] = NANUM;
        double variance = -7;
        EXPECT_NEAR(zemath_d_mean_variance(data.data(), int(data.size()), &variance, nullptr),
                    c.mean, 4 * std::numeric_limits<double>::epsilon() * std::fabs(c.mean))
            << c.name;
        EXPECT_NEAR(variance, c.variance, 1e-12 * c.variance) << c.name;
    }
    std::vector<unsigned> counts(kLatticeCounts.size());
    EXPECT_EQ(zemath_d_frequency_count(kLatticeValues.data(), int(kLatticeValues.size()),
                                       counts.data(), int(counts.size()), -2.0, 0.25),
              0);
    EXPECT_EQ(counts, kLatticeCounts);
    for (const MostPopulatedCase* c : {&kMostShort, &kMostTies, &kMostLong}) {
        double fraction = -1;
        const int n = int(c->values.size());
        EXPECT_EQ(zemath_d_find_most(c->values.data(), n, c->bins, &fraction), c->lower_edge);
        EXPECT_DOUBLE_EQ(fraction, c->fraction);
        const std::vector<unsigned short> us(c->values.begin(), c->values.end());
        EXPECT_EQ(zemath_us_find_most(us.data(), n, c->bins, nullptr), c->lower_edge);
    }
    // More bins than values: counted through sorted bin indices, never an array of counts.
    const double v[] = {0, 1, 7.25, 7.5, 7.5, 9, 16, 12};
    double fraction = -1;
    EXPECT_EQ(zemath_d_find_most(v, 8, 1u << 30, &fraction), 7.5);  // 16 is not counted
    EXPECT_DOUBLE_EQ(fraction, 2.0 / 7.0);
}

TEST(PrimitivesRules, KeptQuirks) {
    // Hosts rely on the stretch adding 0.5 for every member (clamped values excepted); on
    // integers the truncation that follows rounds.
    double s[] = {0, 5, 10, 11, -1, kInf};
    EXPECT_EQ(zemath_d_stretch(s, 6, 0, 10, 0, 100), 0);
    EXPECT_EQ(std::vector<double>(s, s + 6), (std::vector<double>{0.5, 50.5, 100.5, 100, 0, 100}));
    unsigned short us[] = {1, 2, 3};
    EXPECT_EQ(zemath_us_stretch(us, 3, 0, 3, 0, 10), 0);  // 3.33 + 0.5, 6.67 + 0.5, 10.5
    EXPECT_EQ((std::array{us[0], us[1], us[2]}), (std::array<unsigned short, 3>{3, 7, 10}));
    // A missing first value starts the cumulative sum at 0 (here in place).
    double in_place[] = {NANUM, 1, 2, NANUM, 4};
    EXPECT_EQ(zemath_d_cumulative_sum(in_place, 0, 5, in_place, &kNanumMarker), 2);
    EXPECT_EQ(std::vector<double>(in_place, in_place + 5), (std::vector<double>{0, 1, 3, 3, 7}));
}

TEST(PrimitivesRules, EvenSpacing) {
    // {data, tolerance, result}; 1 and -1 report, kept, the first difference (1 in the first
    // case, not the mean difference 1.0166...).
    const std::tuple<std::vector<double>, double, int> cases[] = {
        {{0, 1, 2, 3.05}, 0.1, 1}, {{0, 1, 2, 3.05}, 0.01, 2}, {{10, 8, 6, 4}, 1e-8, -1},
        {{10, 8, 6, 3}, 0.1, -2},  {{1, 2, 2, 3}, 0.5, 0},     {{1, kNan, 3}, 0.5, 0},
        {{0, 1, kInf}, 0.5, 2},    {{0, 1, 2}, kNan, 2},       {{0, 1, 2}, 0, 1}};
    for (const auto& [x, tolerance, result] : cases) {
        double increment = -7;
        EXPECT_EQ(zemath_d_get_vector_inc(int(x.size()), x.data(), tolerance, nullptr, nullptr,
                                          &increment),
                  result);
        EXPECT_EQ(increment, result == 1 || result == -1 ? x[1] - x[0] : -7)
            << x[2] << " " << tolerance;
    }
    const int extremes[] = {INT_MIN, 0, INT_MAX};  // differences beyond int: formed in double
    double increment = -7;
    EXPECT_EQ(zemath_i_get_vector_inc(3, extremes, 1e-9, nullptr, nullptr, &increment), 1);
    EXPECT_EQ(increment, -double(INT_MIN));
}

TEST(PrimitivesRules, Conventions) {
    // |-5| = |3+4i| (the first wins); a modulus formed as sqrt(re^2 + im^2) would overflow
    // to a tie at infinity.
    const d_complex z[] = {{-5, 0}, {3, 4}, {1e300, 1e300}, {2e300, 0}};
    int a = -9, b = -9;
    EXPECT_EQ(zemath_z_minmax(z, 0, 3, nullptr, &a, &b), 0);
    EXPECT_EQ((std::array{a, b}), (std::array{0, 3}));
    // Copies may overlap (moved as through a temporary).
    double c[] = {1, 2, 3, 4};
    EXPECT_EQ(zemath_d_copy(c, c + 1, 3), 0);
    EXPECT_EQ(std::vector<double>(c, c + 4), (std::vector<double>{1, 1, 2, 3}));
    // A NaN width is accepted (only exactly 0 is refused) and drops every value.
    const double v[] = {0.3, 0.5};
    unsigned counts[2] = {5, 5};
    EXPECT_EQ(zemath_d_frequency_count(v, 2, counts, 2, 0.0, kNan), 0);
    EXPECT_EQ(counts[0] + counts[1], 0u);
    // No usable value: NANUM mean and variance; one value: variance 0.
    const unsigned short us[] = {5, 5}, five = 5;
    double variance = -7;
    EXPECT_EQ(zemath_us_mean_variance(us, 2, &five, &variance, &a), NANUM);
    EXPECT_EQ((std::array{variance, double(a)}), (std::array{NANUM, 0.0}));
    EXPECT_EQ(zemath_us_mean_variance(us, 1, nullptr, &variance, &a), 5.0);
    EXPECT_EQ((std::array{variance, double(a)}), (std::array{0.0, 1.0}));
}

// The plain left-to-right scan every form must reproduce.
template <class T>
zemath::ScanResult<T, double> plain_scan(const std::vector<T>& v, const T* marker) {
    zemath::ScanResult<T, double> r;
    for (int i = 0; i < int(v.size()); ++i) {
        if (marker && v[i] == *marker) {
            ++r.missing;
            continue;
        }
        if (r.count++ == 0) r.index_of_min = r.index_of_max = i;
        if (v[i] < v[r.index_of_min]) r.index_of_min = i;
        if (v[i] > v[r.index_of_max]) r.index_of_max = i;
        r.sum += double(v[i]);
    }
    return r;
}

TEST(PrimitivesScan, BlocksGiveThePlainScanAcrossSizesAndSpecialValues) {
    // What two scans must share: the indices, the counts and the sum (NaN as a flag).
    const auto key = [](const auto& r) {
        const double sum = double(r.sum);
        return std::tuple(r.index_of_min, r.index_of_max, r.count, r.missing, sum == sum,
                          sum == sum ? sum : 0.0);
    };
    std::mt19937 gen(7);
    const signed char char_marker = -117;
    for (int n : {0, 1, 2, 15, 16, 17, 33, 511, 512, 513, 529, 1025, 1600, 5000}) {
        for (int variant = 0; variant < 6; ++variant) {
            // Integers (exact sums) with ties and NANUM; then NaN first, NaN inside,
            // infinities, signed zeros only, or all missing.
            std::vector<double> v(n);
            for (double& x : v) x = gen() % 9 == 0 ? NANUM : double(int(gen() % 81) - 40);
            if (n > 0 && variant == 1) v[0] = kNan;
            if (n > 3 && variant == 2) v[n / 2] = kNan;
            if (n > 3 && variant == 3) v[n - 2] = kInf, v[n / 3] = -kInf;
            if (variant == 4)
                for (double& x : v) x = gen() % 2 ? 0.0 : -0.0;
            if (variant == 5) std::fill(v.begin(), v.end(), NANUM);
            // Narrow signed data, all negative (wrong lane identities would show), with and
            // without a marker.
            std::vector<signed char> c(n);
            for (auto& x : c) x = static_cast<signed char>(int(gen() % 7) - 120);
            SCOPED_TRACE(::testing::Message() << "n=" << n << " variant=" << variant);
            EXPECT_EQ(key(zemath::scan_min_max<double>(v.data(), 0, n, &kNanumMarker)),
                      key(plain_scan(v, &kNanumMarker)));
            EXPECT_EQ(key(zemath::scan_min_max<signed char>(c.data(), 0, n, &char_marker)),
                      key(plain_scan(c, &char_marker)));
            EXPECT_EQ(key(zemath::scan_min_max<signed char>(c.data(), 0, n, nullptr)),
                      key(plain_scan<signed char>(c, nullptr)));
        }
    }
}

// Never a crash; a refused call writes nothing (nor do the accepted empty calls). All the
// calls run, then the outputs are checked.
TEST(PrimitivesBadInput, RefusalsLeaveOutputsUntouched) {
    const double d[] = {1, 2, 3}, inf_data[] = {1, kInf}, nan_data[] = {kNan, kNan};
    const double tiny_range[] = {0, 4.9e-324};  // the bin width underflows to 0
    double out[3] = {-7, -7, -7}, s[] = {1, 2}, fraction = -7, variance = -7;
    int a = -7, b = -7;
    unsigned counts[2] = {9, 9};
    // Refused with -1, NANUM, or accepted with 0 (nothing to do, or not evenly spaced).
    const int refused[] = {zemath_d_copy(nullptr, out, 3),
                           zemath_d_copy(d, out, -1),
                           zemath_d_minmax(d, 0, INT_MAX, &a, &b),
                           zemath_d_minmax_in_range(nullptr, 3, 0, 1, nullptr, &a, &b),
                           zemath_d_cumulative_sum(d, 0, 3, nullptr, nullptr),
                           zemath_d_cumulative_sum(d, 2, 1, out, nullptr),
                           zemath_d_frequency_count(nullptr, 3, counts, 2, 0, 1),
                           zemath_d_frequency_count(d, -1, counts, 2, 0, 1),
                           zemath_d_frequency_count(d, 3, counts, 0, 0, 1),
                           zemath_d_frequency_count(d, 3, counts, 2, 0, 0),
                           zemath_d_stretch(nullptr, 2, 0, 1, 0, 1),
                           zemath_d_stretch(s, -1, 0, 1, 0, 1)};
    const double no_value[] = {zemath_d_mean_variance(nullptr, 3, &variance, &a),
                               zemath_d_find_most(nullptr, 3, 2, &fraction),
                               zemath_d_find_most(d, 0, 2, &fraction),
                               zemath_d_find_most(d, 3, 0x80000000u, &fraction),
                               zemath_d_find_most(inf_data, 2, 2, &fraction),
                               zemath_d_find_most(nan_data, 2, 2, &fraction),
                               zemath_d_find_most(tiny_range, 2, 3, &fraction)};
    const int nothing[] = {zemath_d_copy(d, out, 0), zemath_d_cumulative_sum(d, 2, 2, out, nullptr),
                           zemath_d_get_vector_inc(3, nullptr, 0.1, out, out, out),
                           zemath_d_get_vector_inc(1, d, 0.1, out, out, out)};
    for (std::size_t k = 0; k < std::size(refused); ++k) EXPECT_EQ(refused[k], -1) << k;
    for (std::size_t k = 0; k < std::size(no_value); ++k) EXPECT_EQ(no_value[k], NANUM) << k;
    for (std::size_t k = 0; k < std::size(nothing); ++k) EXPECT_EQ(nothing[k], 0) << k;
    EXPECT_EQ(zemath_d_stretch(s, 2, 3, 3, 0, 1), -3);  // high - low = 0
    EXPECT_EQ((std::array{out[0], out[1], out[2], s[0], s[1], fraction, variance, double(a),
                          double(b), double(counts[0]), double(counts[1])}),
              (std::array<double, 11>{-7, -7, -7, 1, 2, -7, -7, -7, -7, 9, 9}));
}

}  // namespace

#if ZEMATH_SCAN_AVX2
// Every processor form of the block scan gives the same sum and indices bit for bit: the
// lanes, not the instruction set, fix the rounding. The machine picks one form at run
// time, so the others are run here directly.
TEST(PrimitivesScan, ProcessorFormsAgreeBitForBit) {
    using namespace zemath::scan_detail;
    std::mt19937 gen(11);
    std::normal_distribution<double> normal(0.0, 1e3);
    std::vector<double> v(512 * 3 + 40);
    for (double& x : v) x = normal(gen);
    v[100] = NANUM;
    const double nanum = NANUM;
    const Running<double, double> start{v[0], v[0], 0, 0, 1, 0, v[0]};
    Running<double, double> base = start;
    int i_base = 1;
    scan_blocks<16, double, double, true, true, true>(v.data(), i_base, int(v.size()), nanum, base);
    const auto same_as_base = [&](auto form) {
        Running<double, double> wide = start;
        int i_wide = 1;
        form(wide, i_wide);
        EXPECT_EQ(std::tie(wide.sum, wide.index_of_min, wide.index_of_max, wide.missing, i_wide),
                  std::tie(base.sum, base.index_of_min, base.index_of_max, base.missing, i_base));
    };
    if (processor_has_avx2())
        same_as_base([&](auto& r, int& i) {
            scan_blocks_avx2<double, double, true, true, true>(v.data(), i, int(v.size()), nanum,
                                                               r);
        });
    if (processor_has_avx512())
        same_as_base([&](auto& r, int& i) {
            scan_blocks_avx512<double, double, true, true, true>(v.data(), i, int(v.size()), nanum,
                                                                 r);
        });
}
#endif
