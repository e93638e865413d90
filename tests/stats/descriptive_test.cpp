// Descriptive statistics: the NIST StRD NumAcc sets, moments under every denominator
// flag against SciPy/mpmath (tests/reference/gen_descriptive.py), the two computing
// paths of the summary, confidence limits, the five-number summary against R's
// fivenum(), the record's special cases and every status code of the family.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <map>
#include <string>
#include <vector>

#include "stats/moments.hpp"
#include "zemath/statistics.h"
#include "zemath/status.h"

namespace {

constexpr double kNA = NANUM;
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

struct NistCase {
    const char* name;
    std::vector<double> data;
    double mean, sd, certified_mean, certified_sd;
};
struct MomentCase {
    int flag;
    std::vector<double> data, weights;
    double mean, sd, skewness, kurtosis, mad, geo_mean, uncor, cor;
};
struct LimitCase {
    double level;
    std::vector<double> data;
    double lcl, ucl, sem, geo_sd;
};
struct FiveCase {
    std::vector<double> data, five;
};

const std::vector<NistCase> kNist = {
#define NIST_CASES
#include "reference/descriptive_ref.inc"
#undef NIST_CASES
};
const std::vector<MomentCase> kMoments = {
#define MOMENT_CASES
#include "reference/descriptive_ref.inc"
#undef MOMENT_CASES
};
const std::vector<LimitCase> kLimits = {
#define LIMIT_CASES
#include "reference/descriptive_ref.inc"
#undef LIMIT_CASES
};
const std::vector<FiveCase> kFive = {
#define FIVENUM_CASES
#include "reference/descriptive_ref.inc"
#undef FIVENUM_CASES
};

// Relative agreement, with NANUM matching only NANUM.
void expect_close(double got, double want, double tolerance, const std::string& what) {
    if (want == kNA) {
        EXPECT_EQ(got, kNA) << what;
        return;
    }
    EXPECT_NEAR(got, want, tolerance * std::max(1.0, std::fabs(want))) << what;
}

DescStatResults describe(const std::vector<double>& data, const double* weights = nullptr,
                         int flag = 0, double level = 0.95, int* status = nullptr) {
    DescStatResults r{};
    const int s = zemath_desc_stats(data.data(), static_cast<unsigned>(data.size()), &r, weights,
                                    level, flag);
    if (status != nullptr) *status = s;
    return r;
}

TEST(Descriptive, NistSetsToThirteenDigits) {
    ASSERT_EQ(kNist.size(), 9u);  // NumAcc1-4, then the real sets
    for (const auto& c : kNist) {
        const DescStatResults r = describe(c.data);
        EXPECT_EQ(r.N, static_cast<int>(c.data.size()));
        EXPECT_NEAR(r.Mean, c.mean, 1e-13 * std::fabs(c.mean)) << c.name;
        EXPECT_NEAR(r.SD, c.sd, 1e-13 * c.sd) << c.name;
        // Against the decimal certified values the input's own rounding limits the digits
        // of NumAcc2-4 (10000000.1 is not a double): still 8 or more. The real sets' data
        // round by far less than their spread, so they meet 13 digits there too.
        const bool numacc = std::string(c.name).rfind("NumAcc", 0) == 0;
        const double certified_tolerance = numacc ? 1e-8 : 1e-13;
        EXPECT_NEAR(r.Mean, c.certified_mean, 1e-13 * std::fabs(c.certified_mean)) << c.name;
        EXPECT_NEAR(r.SD, c.certified_sd, certified_tolerance * c.certified_sd) << c.name;
        // The engine alone agrees as closely.
        zemath::MomentSummary own;
        ASSERT_EQ(zemath::basic_summary(c.data, {}, 0, own, false), 0);
        EXPECT_NEAR(own.mean, c.mean, 1e-13 * std::fabs(c.mean)) << c.name;
        EXPECT_NEAR(own.sd, c.sd, 1e-13 * c.sd) << c.name;
    }
}

TEST(Descriptive, MomentsUnderEveryFlagMatchTheReference) {
    ASSERT_GT(kMoments.size(), 20u);
    for (const auto& c : kMoments) {
        const double* w = c.weights.empty() ? nullptr : c.weights.data();
        int N = -1, missing = -1;
        double mean, sd, se, var, sum, skew, kurt, uncor, cor, cov, mad, wsum, geo;
        ASSERT_EQ(zemath_basic_summary_stats(static_cast<int>(c.data.size()), c.data.data(), &N,
                                             &mean, &sd, &se, &var, &sum, &skew, &kurt, &uncor,
                                             &cor, &cov, &mad, &missing, &wsum, &geo, c.flag, w),
                  0);
        const std::string what =
            "flag " + std::to_string(c.flag) + " n " + std::to_string(c.data.size());
        EXPECT_EQ(N, static_cast<int>(c.data.size()));
        EXPECT_EQ(missing, 0);
        expect_close(mean, c.mean, 1e-13, what + " mean");
        expect_close(sd, c.sd, 1e-12, what + " sd");
        expect_close(var, c.sd * c.sd, 1e-12, what + " variance");
        expect_close(skew, c.skewness, 1e-10, what + " skewness");
        expect_close(kurt, c.kurtosis, 1e-10, what + " kurtosis");
        expect_close(mad, c.mad, 1e-12, what + " mad");
        expect_close(geo, c.geo_mean, 1e-12, what + " geomean");
        expect_close(uncor, c.uncor, 1e-12, what + " uncor");
        expect_close(cor, c.cor, 1e-11, what + " cor");
        expect_close(sum, c.mean * wsum, 1e-12, what + " sum");
        expect_close(cov, c.sd / c.mean, 1e-12, what + " cov");
    }
}

// Data near the ends of the double range: their squares and fourth powers leave it, yet
// every statistic exists. Multiplying the reference data by 2^600 or 2^-600 must scale
// the mean, SD and MAD by the same power and leave the shape statistics unchanged (unscaled
// sums would make them NaN with status 0), through the engine and through the back-end path.
TEST(Descriptive, ScaledByHugeAndTinyPowersOfTwo) {
    for (const auto& c : kMoments) {
        for (int power : {600, -600}) {
            const double factor = std::ldexp(1.0, power);
            std::vector<double> scaled = c.data;
            for (double& v : scaled) v *= factor;
            for (bool back_end : {false, true}) {
                zemath::MomentSummary plain, big;
                ASSERT_EQ(zemath::basic_summary(c.data, c.weights, c.flag, plain, back_end), 0);
                ASSERT_EQ(zemath::basic_summary(scaled, c.weights, c.flag, big, back_end), 0);
                const std::string what = "flag " + std::to_string(c.flag) + " power " +
                                         std::to_string(power) + (back_end ? " back end" : "");
                const auto expect_close = [](double got, double want, double tolerance,
                                             const std::string& label) {
                    EXPECT_NEAR(got, want, tolerance * std::fabs(want)) << label;
                };
                expect_close(big.mean, plain.mean * factor, 1e-15, what + " mean");
                expect_close(big.sd, plain.sd * factor, 1e-15, what + " sd");
                expect_close(big.mad, plain.mad * factor, 1e-15, what + " mad");
                // Shape statistics are differences of order 1 (the back end yields to the
                // engine for the scaled data: their own rounding, a few 1e-15 apart).
                if (plain.skewness != kNA) {
                    EXPECT_NEAR(big.skewness, plain.skewness, 1e-13) << what << " skewness";
                }
                if (plain.kurtosis != kNA) {
                    EXPECT_NEAR(big.kurtosis, plain.kurtosis, 1e-13) << what << " kurtosis";
                }
            }
        }
    }
}

TEST(Descriptive, BackEndPathAndOwnEngineFillTheSameRecord) {
    for (const auto& c : kMoments) {
        if (!c.weights.empty()) continue;
        for (int flag : {0, 4}) {
            zemath::MomentSummary via_back_end, own;
            ASSERT_EQ(zemath::basic_summary(c.data, {}, flag, via_back_end, true), 0);
            ASSERT_EQ(zemath::basic_summary(c.data, {}, flag, own, false), 0);
            const std::string what =
                "flag " + std::to_string(flag) + " n " + std::to_string(c.data.size());
            expect_close(via_back_end.mean, own.mean, 1e-14, what);
            expect_close(via_back_end.sd, own.sd, 1e-13, what);
            expect_close(via_back_end.skewness, own.skewness, 1e-12, what);
            expect_close(via_back_end.kurtosis, own.kurtosis, 1e-12, what);
        }
    }
    // Unit weights take the same route as no weights.
    const std::vector<double> ten = {3, 1, 4, 1, 5, 9, 2, 6, 5, 3};
    const std::vector<double> ones(10, 1.0);
    const DescStatResults a = describe(ten), b = describe(ten, ones.data());
    EXPECT_EQ(a.Mean, b.Mean);
    EXPECT_EQ(a.Skewness, b.Skewness);
    EXPECT_EQ(a.LCL, b.LCL);
}

TEST(Descriptive, ConfidenceLimitsAndGeometricSd) {
    for (const auto& c : kLimits) {
        const DescStatResults r = describe(c.data, nullptr, 0, c.level);
        expect_close(r.LCL, c.lcl, 1e-12, "lcl");
        expect_close(r.UCL, c.ucl, 1e-12, "ucl");
        expect_close(r.SEM, c.sem, 1e-12, "sem");
        expect_close(r.GeoSD, c.geo_sd, 1e-12, "geosd");
        EXPECT_EQ(r.SDx2, 2 * r.SD);
        EXPECT_EQ(r.SDx3, 3 * r.SD);
    }
}

TEST(Descriptive, SpecialCasesOfTheRecord) {
    const std::vector<double> ten = {2, 4, 4, 5, 7, 9, 10, 12, 15, 20};
    // Flags 2 and 3 define no shape statistics; 1 and 3 have no confidence limits.
    for (int flag : {2, 3}) {
        const DescStatResults r = describe(ten, nullptr, flag);
        EXPECT_EQ(r.Skewness, kNA);
        EXPECT_EQ(r.Kurtosis, kNA);
        EXPECT_EQ(r.LCL, kNA);
        EXPECT_EQ(r.SEM, kNA);
    }
    // Two points: no shape; three: skewness but no kurtosis.
    EXPECT_EQ(describe({1, 2}).Skewness, kNA);
    const DescStatResults three = describe({1, 2, 4});
    EXPECT_NE(three.Skewness, kNA);
    EXPECT_EQ(three.Kurtosis, kNA);
    // One usable point: spread 0 with flags 1 and 3, missing with 0, 2, 4.
    const std::vector<double> one = {kNA, 5, kNA};
    const struct {
        int flag;
        double sd, sdx2;
    } singles[] = {{0, kNA, kNA}, {1, 0.0, 0.0}, {2, kNA, kNA}, {3, 0.0, 0.0}, {4, kNA, kNA}};
    for (const auto& row : singles) {
        const DescStatResults r = describe(one, nullptr, row.flag);
        EXPECT_EQ(r.N, 1);
        EXPECT_EQ(r.Missing, 2);
        EXPECT_EQ(r.Mean, 5.0);
        EXPECT_EQ(r.SD, row.sd) << row.flag;
        EXPECT_EQ(r.SDx2, row.sdx2) << row.flag;
        EXPECT_EQ(r.MAD, kNA);
        EXPECT_EQ(r.GeoMean, 5.0);
        EXPECT_EQ(r.UncorSumSq, 25.0);
    }
    // Geometric mean: a zero, one negative, two negatives.
    EXPECT_EQ(describe({0, 2, 8}).GeoMean, 0.0);
    EXPECT_EQ(describe({-1, 2, 8}).GeoMean, kNA);
    EXPECT_NEAR(describe({-1, -2, 4}).GeoMean, 2.0, 1e-15);
    EXPECT_EQ(describe({-1, -2, 4}).GeoSD, kNA);
    // Mode: none when all distinct; the smallest of several, with the flag set.
    EXPECT_EQ(describe({1, 2, 3}).Mode, kNA);
    double mode = 0;
    bool several = false;
    const double modal[] = {3, 2, 1, 3, 2};
    ASSERT_EQ(zemath_opt_summary_stats(5, modal, 0.95, &mode, &several, nullptr, nullptr, nullptr,
                                       nullptr, nullptr, 0, nullptr),
              0);
    EXPECT_EQ(mode, 2.0);
    EXPECT_TRUE(several);
    const double single_mode[] = {1, 2, 2, 3};
    zemath_opt_summary_stats(4, single_mode, 0.95, &mode, &several, nullptr, nullptr, nullptr,
                             nullptr, nullptr, 0, nullptr);
    EXPECT_EQ(mode, 2.0);
    EXPECT_FALSE(several);
    // A constant sample: zero spread, no shape; a NaN makes the moments NaN.
    const DescStatResults constant = describe(std::vector<double>(1000, 7.25));
    EXPECT_EQ(constant.SD, 0.0);
    EXPECT_EQ(constant.Skewness, kNA);
    EXPECT_EQ(constant.Mode, 7.25);
    EXPECT_TRUE(std::isnan(describe({1, kNaN, 3}).Mean));
    // Weights: a NANUM weight makes its point missing; unit weights keep the mean.
    const std::vector<double> w = {1, kNA, 1, 1};
    const DescStatResults weighted = describe({1, 100, 2, 3}, w.data());
    EXPECT_EQ(weighted.Missing, 1);
    EXPECT_EQ(weighted.Mean, 2.0);
}

TEST(Descriptive, ModeOfALargeSampleWithSignedZeros) {
    // Large enough for the radix path of the sort: negative values, both zeros (equal as
    // doubles, so one value), denormals and infinities; the mode counted independently.
    std::vector<double> data;
    for (int i = 0; i < 30000; ++i)
        data.push_back(std::round(std::sin(i * 0.731) * 40.0) / 8.0 - 2.0);
    for (int i = 0; i < 900; ++i) data.push_back(i % 2 ? 0.0 : -0.0);
    data.push_back(4.9e-324);
    data.push_back(-std::numeric_limits<double>::infinity());
    std::map<double, int> counts;
    for (double x : data) ++counts[x];
    double best = 0;
    int best_count = 0;
    for (const auto& [value, count] : counts)
        if (count > best_count) best = value, best_count = count;
    ASSERT_GT(counts[0.0], 900);
    EXPECT_EQ(describe(data).Mode, best);
}

TEST(Descriptive, ModeOfLargeSamplesAgainstACountedMap) {
    // Samples large enough for many hash buckets: integral values (long runs of zero
    // bits), ties for the largest count, all distinct, NaN and missing values skipped,
    // a point with a NANUM weight dropped. Counted independently with a std::map.
    const std::size_t n = 200000;
    const struct {
        const char* name;
        double (*value)(std::size_t);
    } kinds[] = {
        {"integers", [](std::size_t i) { return static_cast<double>((i * 7919) % 1013); }},
        {"tied pair", [](std::size_t i) { return i < 20 ? (i % 2 ? 5e300 : -3.5) : i * 0.25; }},
        {"distinct", [](std::size_t i) { return std::sqrt(static_cast<double>(i) + 0.5); }},
        {"with missing",
         [](std::size_t i) { return i % 5 == 0   ? NANUM
                                    : i % 7 == 0 ? kNaN
                                                 : (i % 311) * 1e-3; }},
    };
    for (const auto& kind : kinds) {
        std::vector<double> data(n), weights(n, 1.0);
        for (std::size_t i = 0; i < n; ++i) data[i] = kind.value(i);
        weights[3] = NANUM;  // drops data[3] from the count
        std::map<double, int> counts;
        for (std::size_t i = 0; i < n; ++i)
            if (data[i] != NANUM && !std::isnan(data[i]) && i != 3) ++counts[data[i]];
        int best_count = 1, ties = 0;
        double best = NANUM;
        for (const auto& [value, count] : counts) {
            if (count > best_count) {
                best = value, best_count = count, ties = 1;
            } else if (count == best_count && count >= 2) {
                ++ties;
            }
        }
        double mode = 0;
        bool several = false;
        ASSERT_EQ(zemath_opt_summary_stats(static_cast<unsigned>(n), data.data(), 0.95, &mode,
                                           &several, nullptr, nullptr, nullptr, nullptr, nullptr, 1,
                                           weights.data()),
                  0)
            << kind.name;
        EXPECT_EQ(mode, best) << kind.name;
        EXPECT_EQ(several, ties > 1) << kind.name;
    }
}

TEST(Descriptive, ExtendedAndRowForms) {
    const std::vector<double> data = {1, 2, 3, 4, 10, 20, 30, 40};
    const double bounds[] = {0, 3, 4, 7};
    DescStatOptions opt{};
    opt.Mean = opt.N = true;
    DescStatResults out[2];
    ASSERT_EQ(zemath_desc_stats_ex(data.data(), 8, bounds, 2, &opt, out, nullptr, 0.95, 0), 0);
    EXPECT_EQ(out[0].Mean, 2.5);
    EXPECT_EQ(out[1].Mean, 25.0);
    EXPECT_EQ(out[1].N, 4);
    EXPECT_EQ(out[1].Missing, -1);  // not selected
    EXPECT_EQ(out[1].SD, kNA);
    const double bad_bounds[] = {0, 8};
    EXPECT_EQ(zemath_desc_stats_ex(data.data(), 8, bad_bounds, 1, &opt, out, nullptr, 0.95, 0),
              ZEMATH_ERR_PARAM_RANGE);

    DescStatResults rows[2];
    ASSERT_EQ(zemath_row_desc_stats(2, 4, data.data(), rows, nullptr, 0.95, 1), 0);
    EXPECT_EQ(rows[1].Mean, 25.0);
    EXPECT_EQ(rows[0].Variance, 1.25);
    ASSERT_EQ(zemath_row_desc_stats_ex(2, 4, data.data(), &opt, rows, nullptr, 0.95), 0);
    EXPECT_EQ(rows[0].Variance, kNA);
    EXPECT_EQ(rows[0].Mean, 2.5);
}

TEST(Descriptive, RawSums) {
    const double d[] = {1, -2, 2};
    EXPECT_DOUBLE_EQ(zemath_root_mean_square(d, 3), std::sqrt(3.0));
    EXPECT_DOUBLE_EQ(zemath_absolute_arithmetic_average(d, 3), 5.0 / 3.0);
    EXPECT_DOUBLE_EQ(zemath_skewness(d, 3, 2.0), (1.0 - 8.0 + 8.0) / (3 * 8.0));
    EXPECT_DOUBLE_EQ(zemath_kurtosis(d, 3, -1.0), (1.0 + 16.0 + 16.0) / (3 * 9.0));
    const struct {
        double value, expected;
    } rows[] = {{zemath_root_mean_square(d, 0), 0.0},
                {zemath_skewness(d, 0, 1.0), 0.0},
                {zemath_kurtosis(d, -4, 1.0), 0.0},
                {zemath_root_mean_square(nullptr, 3), kNA},
                {zemath_absolute_arithmetic_average(nullptr, 1), kNA},
                {zemath_skewness(nullptr, 3, 1.0), kNA},
                {zemath_kurtosis(nullptr, 3, 1.0), kNA},
                {zemath_absolute_arithmetic_average(d, 0), 0.0}};
    for (const auto& row : rows) EXPECT_EQ(row.value, row.expected);
}

TEST(Descriptive, StatusCodes) {
    const double d[] = {1, 2, 3};
    DescStatResults r{};
    r.N = 99;
    const struct {
        const double* data;
        DescStatResults* res;
        double level;
        int flag;
        int status;
    } rows[] = {
        {nullptr, &r, 0.95, 0, ZEMATH_ERR_NULL_STATS},
        {d, nullptr, 0.95, 0, ZEMATH_ERR_NULL_STATS},
        {d, &r, 1.2, 0, ZEMATH_ERR_CONFIDENCE_LEVEL},
        {d, &r, 1.0, 0, ZEMATH_ERR_CONFIDENCE_LEVEL},
        {d, &r, 0.0, 0, ZEMATH_ERR_CONFIDENCE_LEVEL},
        {d, &r, -0.2, 0, ZEMATH_ERR_CONFIDENCE_LEVEL},
        {d, &r, kNaN, 0, ZEMATH_ERR_CONFIDENCE_LEVEL},
        {d, &r, 0.95, 5, ZEMATH_ERR_PARAM_RANGE},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(zemath_desc_stats(row.data, 3, row.res, nullptr, row.level, row.flag),
                  row.status);
        EXPECT_EQ(r.N, 99);  // refused before any write
    }
    EXPECT_EQ(zemath_desc_stats(d, 0x80000000u, &r, nullptr, 0.9, 0), ZEMATH_ERR_SIZES_DIFFER);
    EXPECT_EQ(zemath_desc_stats(d, 3, &r, nullptr, 0.9, 0), 0);
    // No usable point: -151 with the record reset.
    const double missing[] = {kNA, kNA};
    EXPECT_EQ(zemath_desc_stats(missing, 2, &r, nullptr, 0.9, 0), ZEMATH_ERR_PARAM_RANGE);
    EXPECT_EQ(r.N, 0);
    EXPECT_EQ(r.Missing, 2);
    EXPECT_EQ(r.Mean, kNA);
    EXPECT_EQ(zemath_desc_stats(d, 0, &r, nullptr, 0.9, 0), ZEMATH_ERR_PARAM_RANGE);

    double mean = 1;
    EXPECT_EQ(zemath_basic_summary_stats(-1, d, nullptr, &mean, nullptr, nullptr, nullptr, nullptr,
                                         nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                                         nullptr, nullptr, nullptr, 0, nullptr),
              ZEMATH_ERR_SIZES_DIFFER);
    EXPECT_EQ(zemath_basic_summary_stats(3, nullptr, nullptr, &mean, nullptr, nullptr, nullptr,
                                         nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                                         nullptr, nullptr, nullptr, nullptr, 0, nullptr),
              ZEMATH_ERR_NULL_STATS);
    EXPECT_EQ(mean, 1.0);
    EXPECT_EQ(zemath_opt_summary_stats(3, d, 1.5, nullptr, nullptr, nullptr, nullptr, nullptr,
                                       nullptr, nullptr, 0, nullptr),
              ZEMATH_ERR_CONFIDENCE_LEVEL);
    EXPECT_EQ(zemath_row_desc_stats(0, 3, d, &r, nullptr, 0.9, 0), ZEMATH_ERR_SIZES_DIFFER);
    EXPECT_EQ(zemath_row_desc_stats(1, 3, nullptr, &r, nullptr, 0.9, 0), ZEMATH_ERR_NULL_STATS);
}

TEST(Quantiles, FiveNumberSummaryMatchesR) {
    ASSERT_FALSE(kFive.empty());
    QuantileOptions opt{};
    opt.nInterpolate = 5;
    opt.bMin = opt.bMax = opt.bQ1 = opt.bMedian = opt.bQ3 = opt.bIQR = opt.bRange = true;
    for (const auto& c : kFive) {
        const auto n = static_cast<unsigned>(c.data.size());
        QuantileResults r;
        const double percents[] = {0, 25, 50, 75, 100, 10};
        double answers[6];
        ASSERT_EQ(zemath_quantiles(c.data.data(), n, &opt, &r, percents, 6, answers, nullptr), 0);
        const double got[5] = {r.Min, r.Q1, r.Median, r.Q3, r.Max};
        for (int k = 0; k < 5; ++k) {
            EXPECT_EQ(got[k], c.five[k]) << "n " << n << " k " << k;
            EXPECT_EQ(answers[k], c.five[k]);
        }
        EXPECT_EQ(answers[5], kNA);
        EXPECT_EQ(r.IQR, c.five[3] - c.five[1]);
        double five[5];
        ASSERT_EQ(zemath_one_row_quantiles(c.data.data(), n, &five[0], &five[4], &five[1], &five[2],
                                           &five[3], 5),
                  0);
        for (int k = 0; k < 5; ++k) EXPECT_EQ(five[k], c.five[k]) << "row n " << n;
    }
}

TEST(Quantiles, SummaryFieldsAndRowForms) {
    const std::vector<double> data = {7, kNA, 1, 10, 4, 1, 10};
    QuantileOptions opt{};
    opt.nInterpolate = 2;
    opt.bMin = opt.biMin = opt.bMax = opt.biMax = opt.bMedian = true;
    QuantileResults r;
    ASSERT_EQ(zemath_quantiles(data.data(), 7, &opt, &r, nullptr, 0, nullptr, nullptr), 0);
    EXPECT_EQ(r.Min, 1.0);
    EXPECT_EQ(r.iMin, 2);  // first occurrence
    EXPECT_EQ(r.iMax, 3);
    EXPECT_EQ(r.Median, 4.0);
    EXPECT_EQ(r.Q1, kNA);  // not selected
    EXPECT_EQ(r.IQR, kNA);
    // n = 0: everything reset, percent answers missing.
    double answer = 5;
    const double p50 = 50;
    ASSERT_EQ(zemath_quantiles(nullptr, 0, &opt, &r, &p50, 1, &answer, nullptr), 0);
    EXPECT_EQ(r.Min, kNA);
    EXPECT_EQ(r.iMin, -1);
    EXPECT_EQ(answer, kNA);

    const double matrix[] = {1, 2, 3, 4, 5, 6, 9, 8, 7, 6, 5, 4};  // 2 rows of 6
    double mins[2], maxs[2], med[2], iqr[2], range[2];
    ASSERT_EQ(
        zemath_row_quantiles_ex(2, 6, matrix, mins, maxs, nullptr, med, nullptr, iqr, range, 0), 0);
    EXPECT_EQ(mins[1], 4.0);
    EXPECT_EQ(med[0], 3.5);
    EXPECT_EQ(iqr[0], 3.0);  // hinges 2 and 5
    EXPECT_EQ(range[1], 5.0);
    ASSERT_EQ(zemath_row_quantiles(2, 6, matrix, nullptr, maxs, nullptr, nullptr, nullptr, 0), 0);
    EXPECT_EQ(maxs[1], 9.0);
}

TEST(Quantiles, RangeMedianFrequenciesAndBinWidth) {
    const double data[] = {3, kNA, 1, 3, kNaN, 2, 3, 1};
    RangeResults rr;
    ASSERT_EQ(zemath_range(data, 8, &rr), 0);
    EXPECT_EQ(rr.Min, 1.0);
    EXPECT_EQ(rr.iMin, 2);
    EXPECT_EQ(rr.Range, 2.0);
    double median = 0;
    const double even[] = {4, 1, kNA, 3, 2};
    ASSERT_EQ(zemath_get_median_in_vector(5, even, &median), 0);
    EXPECT_EQ(median, 2.5);
    double values[8], counts[8];
    int distinct = 0;
    ASSERT_EQ(zemath_discrete_frequencies(data, 8, values, counts, &distinct), 0);
    ASSERT_EQ(distinct, 3);
    EXPECT_EQ(std::vector<double>(values, values + 3), (std::vector<double>{1, 2, 3}));
    EXPECT_EQ(std::vector<double>(counts, counts + 3), (std::vector<double>{2, 1, 3}));
    int count = 0;
    EXPECT_EQ(zemath_censored_value_list(data, 8, values, 2, &count), ZEMATH_ERR_STATS_INPUT);
    ASSERT_EQ(zemath_censored_value_list(data, 8, values, 3, &count), 0);
    EXPECT_EQ(count, 3);
    const int ints[] = {-1, 0, 2, 2, 7, 3};
    int icounts[4];
    ASSERT_EQ(zemath_frequency_count_i(ints, 6, 0, 3, icounts), 0);
    EXPECT_EQ(std::vector<int>(icounts, icounts + 4), (std::vector<int>{1, 0, 2, 1}));
    // Real bins of 0.1 from 0 to 0.3: 0.3 - 0.1 (just below the edge 0.2) lands in the upper bin.
    const double reals[] = {0.0, 0.1, 0.3 - 0.1, 0.25, 0.35, kNA};
    double bins[3];
    int nbins = 0;
    ASSERT_EQ(zemath_frequency_count(reals, 6, 0.0, 0.3, 0.1, bins, 3, &nbins), 0);
    EXPECT_EQ(nbins, 3);
    EXPECT_EQ(std::vector<double>(bins, bins + 3), (std::vector<double>{1, 1, 2}));
    double thresholds[4];
    ASSERT_EQ(zemath_threshold_list(data, 8, thresholds, 4, &count), 0);
    EXPECT_EQ(std::vector<double>(thresholds, thresholds + 4), (std::vector<double>{1, 2, 3, 6}));
    // Nothing lies above +infinity: the list ends there; a cut above DBL_MAX overflows to it.
    const double with_inf[] = {1, INFINITY, 1}, with_max[] = {DBL_MAX, -1};
    ASSERT_EQ(zemath_threshold_list(with_inf, 3, thresholds, 2, &count), 0);
    EXPECT_EQ(count, 2);
    EXPECT_EQ(std::vector<double>(thresholds, thresholds + 2), (std::vector<double>{1, INFINITY}));
    ASSERT_EQ(zemath_threshold_list(with_max, 2, thresholds, 3, &count), 0);
    EXPECT_EQ(count, 3);
    EXPECT_EQ(thresholds[2], INFINITY);
    // Above -infinity alone the cut is the least finite double (not -inf + inf = NaN).
    const double only_minus_inf[] = {-INFINITY, kNA, -INFINITY};
    ASSERT_EQ(zemath_threshold_list(only_minus_inf, 3, thresholds, 2, &count), 0);
    EXPECT_EQ(count, 2);
    EXPECT_EQ(std::vector<double>(thresholds, thresholds + 2),
              (std::vector<double>{-INFINITY, -DBL_MAX}));
    const int groups[] = {0, 0, 1, 1, 1, 0, 1, 0};
    const double p50 = 50;
    double by_group[2];
    ASSERT_EQ(zemath_get_percentiles_data(data, 8, groups, 2, &p50, 1, by_group, 2, nullptr), 0);
    EXPECT_EQ(by_group[0], 2.0);           // {3, 2, 1}
    EXPECT_TRUE(std::isnan(by_group[1]));  // {1, NaN, 3, 3}: a NaN member spoils the order
    // Bin widths: 1..8, rule 4 quartiles 2 and 6.
    const double eight[] = {1, 2, 3, 4, 5, 6, 7, 8};
    EXPECT_DOUBLE_EQ(zemath_bin_width(eight, 8, 0, 4), 2.0 * 4.0 / 2.0);
    EXPECT_DOUBLE_EQ(zemath_bin_width(eight, 8, 2, 0), 7.0 / 4.0);
    EXPECT_NEAR(zemath_bin_width(eight, 8, 1, 0), 3.49 * std::sqrt(6.0) / 2.0, 1e-14);
    EXPECT_EQ(zemath_bin_width(eight, 0, 0, 0), kNA);
    EXPECT_EQ(zemath_bin_width(eight, 8, 3, 0), kNA);
}

TEST(Quantiles, PercentilesOfADistributionCurve) {
    // Density y = x on [0, 2]: the trapezoid areas are exact (x^2 / 2, total 2), and
    // between samples the abscissa is interpolated linearly in the cumulative area.
    const double x[] = {0, 0.5, 1, 1.5, 2};
    const double y[] = {0, 0.5, 1, 1.5, 2};
    const double q[] = {0, 0.0625, 0.125, 0.5, 1, 1.5, -0.1};
    double p[7];
    int index[7];
    ASSERT_EQ(zemath_percentiles_distribution(5, x, y, q, 7, p, index), 0);
    const double want[] = {0,   0.5, 0.5 + 0.5 * (0.25 - 0.125) / 0.375, 1 + 0.5 * 0.5 / 0.625, 2,
                           kNA, kNA};
    const int want_index[] = {0, 1, 1, 2, 4, 0, 0};
    for (int k = 0; k < 7; ++k) {
        EXPECT_NEAR(p[k], want[k], 1e-15) << k;
        EXPECT_EQ(index[k], want_index[k]) << k;
    }
    const double descending[] = {2, 1, 0};
    EXPECT_EQ(zemath_percentiles_distribution(3, descending, y, q, 1, p, nullptr),
              ZEMATH_ERR_BAD_ABSCISSA);
    const double with_missing[] = {0, kNA, 1};
    EXPECT_EQ(zemath_percentiles_distribution(3, with_missing, y, q, 1, p, nullptr),
              ZEMATH_ERR_BAD_ABSCISSA);
    EXPECT_EQ(zemath_percentiles_distribution(2, x, y, q, 1, p, nullptr), ZEMATH_ERR_STATS_INPUT);
    EXPECT_EQ(zemath_percentiles_distribution(5, x, nullptr, q, 1, p, nullptr),
              ZEMATH_ERR_NULL_STATS);
}

TEST(Quantiles, StatusCodes) {
    const double d[] = {1, 2, 3};
    QuantileOptions opt{};
    QuantileResults r;
    const double negative[] = {1, -1, 1};
    const double missing[] = {kNA, kNA, kNA};
    EXPECT_EQ(zemath_quantiles(nullptr, 3, &opt, &r, nullptr, 0, nullptr, nullptr),
              ZEMATH_ERR_NULL_STATS);
    EXPECT_EQ(zemath_quantiles(d, 3, nullptr, &r, nullptr, 0, nullptr, nullptr),
              ZEMATH_ERR_NULL_STATS);
    EXPECT_EQ(zemath_quantiles(d, 3, &opt, nullptr, nullptr, 0, nullptr, nullptr),
              ZEMATH_ERR_NULL_STATS);
    EXPECT_EQ(zemath_quantiles(d, 3, &opt, &r, nullptr, 0, nullptr, negative),
              ZEMATH_ERR_NEGATIVE_WEIGHT);
    EXPECT_EQ(zemath_quantiles(missing, 3, &opt, &r, nullptr, 0, nullptr, nullptr),
              ZEMATH_ERR_NO_USABLE_VALUE);
    opt.nInterpolate = 6;
    EXPECT_EQ(zemath_quantiles(d, 3, &opt, &r, nullptr, 0, nullptr, nullptr),
              ZEMATH_ERR_PARAM_RANGE);
    double x = 0;
    EXPECT_EQ(zemath_one_row_quantiles(d, 0, &x, &x, &x, &x, &x, 0), ZEMATH_ERR_NULL_ROWSTAT);
    EXPECT_EQ(zemath_one_row_quantiles(nullptr, 3, &x, &x, &x, &x, &x, 0), ZEMATH_ERR_NULL_POINTER);
    EXPECT_EQ(zemath_row_quantiles(0, 3, d, nullptr, nullptr, nullptr, nullptr, nullptr, 0),
              ZEMATH_ERR_NULL_ROWSTAT);
    EXPECT_EQ(zemath_row_quantiles(1, 3, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, 0),
              ZEMATH_ERR_NULL_POINTER);
    RangeResults rr;
    EXPECT_EQ(zemath_range(missing, 3, &rr), ZEMATH_ERR_NO_USABLE_VALUE);
    EXPECT_EQ(rr.iMin, -1);
    EXPECT_EQ(zemath_range(nullptr, 3, &rr), ZEMATH_ERR_NULL_STATS);
    EXPECT_EQ(zemath_get_median_in_vector(0, d, &x), ZEMATH_ERR_TOO_FEW_POINTS);
    EXPECT_EQ(zemath_get_median_in_vector(3, d, nullptr), ZEMATH_ERR_TOO_FEW_POINTS);
    EXPECT_EQ(zemath_get_median_in_vector(3, missing, &x), ZEMATH_ERR_MEDIAN);
    double v[3], c[3];
    int k;
    EXPECT_EQ(zemath_discrete_frequencies(d, 0, v, c, &k), ZEMATH_ERR_TOO_FEW_DATA);
    EXPECT_EQ(zemath_discrete_frequencies(d, 3, nullptr, c, &k), ZEMATH_ERR_NULL_STATS);
    EXPECT_EQ(zemath_censored_value_list(nullptr, 3, v, 3, &k), ZEMATH_ERR_STATS_INPUT);
    int counts[2];
    const int ints[] = {1};
    EXPECT_EQ(zemath_frequency_count_i(ints, 1, 3, 2, counts), ZEMATH_ERR_PARAM_RANGE);
    EXPECT_EQ(zemath_frequency_count_i(nullptr, 1, 0, 1, counts), ZEMATH_ERR_PARAM_RANGE);
    EXPECT_EQ(zemath_frequency_count(d, 3, 0, 1, 0, v, 3, &k), ZEMATH_ERR_PARAM_RANGE);
    EXPECT_EQ(zemath_frequency_count(d, 3, 0, 1, 0.1, v, 3, &k), ZEMATH_ERR_SIZES_DIFFER);
    EXPECT_EQ(zemath_threshold_list(d, 3, v, 3, &k), ZEMATH_ERR_SIZES_DIFFER);
    const int groups[] = {0, 0, 0};
    EXPECT_EQ(zemath_get_percentiles_data(d, 3, groups, 1, d, 1, v, 9, nullptr),
              ZEMATH_ERR_PARAM_RANGE);
    EXPECT_EQ(zemath_get_percentiles_data(d, 3, groups, 0, d, 1, v, 0, nullptr),
              ZEMATH_ERR_SIZES_DIFFER);
}

}  // namespace
