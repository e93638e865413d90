// The percentile engine: every rule against NumPy's matching method on samples with
// ties (tests/reference/gen_percentiles.py), weighted percentiles against the repeated
// sample, the rule picks behind the median filter, selection against a full sort, and
// the refusals and warning codes of zemath_percentiles.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "stats/percentiles.hpp"
#include "zemath/statistics.h"
#include "zemath/status.h"

namespace {

struct RuleCase {
    int rule;
    std::vector<double> data, percents, expected;
};
struct WeightedCase {
    std::vector<double> data, weights, percents, expected;
};

const std::vector<RuleCase> kRuleCases = {
#define PCT_RULE_CASES
#include "reference/percentiles_ref.inc"
#undef PCT_RULE_CASES
};
const std::vector<WeightedCase> kWeightedCases = {
#define PCT_WEIGHTED_CASES
#include "reference/percentiles_ref.inc"
#undef PCT_WEIGHTED_CASES
};

std::vector<double> run(const std::vector<double>& data, const std::vector<double>& percents,
                        int rule, const double* weights, int* status) {
    std::vector<double> out(percents.size(), -7.0);
    *status = zemath_percentiles(data.data(), static_cast<int>(data.size()), percents.data(),
                                 static_cast<int>(percents.size()), out.data(), rule, weights);
    return out;
}

TEST(Percentiles, EveryRuleMatchesTheReferenceOnSamplesWithTies) {
    ASSERT_GT(kRuleCases.size(), 50u);
    for (const auto& c : kRuleCases) {
        ASSERT_EQ(c.percents.size(), c.expected.size());
        int status = 1;
        // Shuffled order and a missing value in front must not matter.
        std::vector<double> data = c.data;
        data.insert(data.begin(), NANUM);
        const auto got = run(data, c.percents, c.rule, nullptr, &status);
        ASSERT_EQ(status, 0);
        for (std::size_t k = 0; k < c.percents.size(); ++k)
            EXPECT_NEAR(got[k], c.expected[k], 1e-12 * (1.0 + std::fabs(c.expected[k])))
                << "rule " << c.rule << " n " << c.data.size() << " p " << c.percents[k];
    }
}

TEST(Percentiles, WeightedMatchesTheRepeatedSample) {
    ASSERT_FALSE(kWeightedCases.empty());
    for (const auto& c : kWeightedCases) {
        for (int rule = 0; rule <= 5; ++rule) {  // unequal weights: the rule does not matter
            int status = 1;
            const auto got = run(c.data, c.percents, rule, c.weights.data(), &status);
            ASSERT_EQ(status, 0);
            for (std::size_t k = 0; k < c.percents.size(); ++k)
                EXPECT_DOUBLE_EQ(got[k], c.expected[k])
                    << "n " << c.data.size() << " p " << c.percents[k];
        }
    }
}

TEST(Percentiles, WorkedValuesOfOneToTen) {
    const std::vector<double> data = {10, 9, 8, 7, 6, 5, 4, 3, 2, 1};
    const struct {
        int rule;
        double p25;
    } rows[] = {{0, 3}, {1, 2}, {2, 3}, {3, 2.75}, {4, 2.5}};
    for (const auto& row : rows) {
        int status = 1;
        EXPECT_EQ(run(data, {25}, row.rule, nullptr, &status)[0], row.p25) << row.rule;
    }
    // Rule 5 answers only the ends; every other percent is missing.
    int status = 1;
    const auto five = run(data, {0, 25, 50, 100}, 5, nullptr, &status);
    EXPECT_EQ(five, (std::vector<double>{1, NANUM, NANUM, 10}));
    // Equal weights follow the rule.
    const std::vector<double> equal(10, 2.5);
    EXPECT_EQ(run(data, {25}, 3, equal.data(), &status)[0], 2.75);
}

TEST(Percentiles, PickHasTheFormTheMedianFilterUses) {
    // Picks over a sorted window give exactly the engine's answers.
    std::mt19937 gen(7);
    std::uniform_int_distribution<int> value(0, 9);
    for (std::size_t m = 1; m <= 40; ++m) {
        std::vector<double> v(m);
        for (auto& x : v) x = value(gen);
        std::vector<double> sorted = v;
        std::sort(sorted.begin(), sorted.end());
        for (int rule = 0; rule <= 4; ++rule) {
            for (double p : {0.0, 3.0, 25.0, 50.0, 62.5, 75.0, 100.0}) {
                const auto pick = zemath::percentile_pick(m, p, rule);
                ASSERT_TRUE(pick.defined);
                ASSERT_LT(pick.upper, m);
                ASSERT_LE(pick.lower, pick.upper);
                int status = 1;
                EXPECT_EQ(zemath::pick_value(sorted, pick), run(v, {p}, rule, nullptr, &status)[0]);
            }
        }
    }
    EXPECT_FALSE(zemath::percentile_pick(10, 50, 5).defined);
    EXPECT_FALSE(zemath::percentile_pick(10, 100.5, 0).defined);
    EXPECT_FALSE(zemath::percentile_pick(0, 50, 0).defined);
}

TEST(Percentiles, SelectionAgreesWithSortForFewAndManyPercents) {
    std::mt19937 gen(11);
    std::normal_distribution<double> normal;
    std::vector<double> data(5000);
    for (auto& x : data) x = std::round(normal(gen) * 50) / 10;  // many ties
    std::vector<double> sorted = data;
    std::sort(sorted.begin(), sorted.end());
    std::vector<double> few = {0.1, 50, 99.9}, many;
    for (int k = 0; k <= 200; ++k) many.push_back(k * 0.5);
    for (int rule = 0; rule <= 4; ++rule) {
        for (const auto* list : {&few, &many}) {
            int status = 1;
            const auto got = run(data, *list, rule, nullptr, &status);
            for (std::size_t k = 0; k < list->size(); ++k)
                EXPECT_EQ(got[k], zemath::percentile_of_sorted(sorted, (*list)[k], rule));
        }
    }
}

// Large samples take the sampled selection (brackets from a random sample, selection
// among the values inside them). Every kind of sample, every rule and the extreme
// percents must give exactly the order statistics of a full sort, whether the brackets
// hold the ranks or the call falls back to plain selection.
TEST(Percentiles, SampledSelectionGivesTheOrderStatisticsOfAFullSort) {
    constexpr double kInf = std::numeric_limits<double>::infinity();
    const std::size_t n = 50000;
    std::mt19937_64 gen(2026);
    std::normal_distribution<double> normal(3.0, 2.0);
    std::uniform_real_distribution<double> unit;
    auto make = [&](int kind) {
        std::vector<double> v(n);
        for (std::size_t i = 0; i < n; ++i) {
            const double z = normal(gen);
            switch (kind) {
                case 0:
                    v[i] = z;
                    break;  // continuous
                case 1:
                    v[i] = std::round(z * 4) / 4;
                    break;  // heavy ties
                case 2:
                    v[i] = 1.5;
                    break;  // all equal
                case 3:
                    v[i] = i % 3 == 0 ? -1.0 : 2.0;
                    break;  // two values
                case 4:
                    v[i] = static_cast<double>(i);
                    break;  // ascending
                case 5:
                    v[i] = -static_cast<double>(i);
                    break;  // descending
                case 6:
                    v[i] = unit(gen) < 0.1 ? NANUM : z;
                    break;  // some missing
                case 7:
                    v[i] = unit(gen) < 0.9 ? NANUM : z;
                    break;  // mostly missing
                case 8:
                    v[i] = unit(gen) < 0.05 ? (z < 3 ? -kInf : kInf) : z * 1e-300;
                    break;
                default:
                    v[i] = (i % 2 == 0) ? NANUM : (z < 3 ? -0.0 : 0.0);
                    break;
            }
        }
        return v;
    };
    const std::vector<double> percents = {0, 1e-4, 25, 50, 62.5, 75, 99.9999, 100};
    int sampled_hits = 0, sampled_misses = 0;
    for (int kind = 0; kind <= 9; ++kind) {
        const std::vector<double> data = make(kind);
        std::vector<double> sorted;
        for (double x : data)
            if (x != NANUM) sorted.push_back(x);
        std::sort(sorted.begin(), sorted.end());
        for (int rule = 0; rule <= 5; ++rule) {
            std::vector<double> expected(percents.size());
            for (std::size_t k = 0; k < percents.size(); ++k)
                expected[k] = zemath::percentile_of_sorted(sorted, percents[k], rule);
            int status = 1;
            EXPECT_EQ(run(data, percents, rule, nullptr, &status), expected)
                << "kind " << kind << " rule " << rule;
            EXPECT_EQ(status, 0);
            // The sampled path alone, with normal and with zero-width brackets (which
            // miss often): when it answers, the answer is exact.
            for (double spread : {zemath::kBracketSpread, 0.0}) {
                std::vector<double> buffer(n), got(percents.size(), -7.0);
                if (zemath::sampled_percentiles(data, percents, got, rule, buffer.data(), spread)) {
                    EXPECT_EQ(got, expected) << "kind " << kind << " rule " << rule;
                    ++sampled_hits;
                } else {
                    EXPECT_EQ(got, std::vector<double>(percents.size(), -7.0));
                    // Normal-width brackets hold the ranks (a miss is a 1e-4 event, and
                    // the sample is fixed) unless the sample is mostly missing values.
                    EXPECT_TRUE(spread == 0.0 || kind == 7 || kind == 9)
                        << "kind " << kind << " rule " << rule;
                    ++sampled_misses;
                }
            }
        }
    }
    // Both outcomes occurred: the brackets held the ranks, and some missed or refused.
    EXPECT_GT(sampled_hits, 50);
    EXPECT_GT(sampled_misses, 5);
    // A NaN anywhere spoils the order on this path too.
    std::vector<double> with_nan = make(0);
    with_nan[n / 3] = std::numeric_limits<double>::quiet_NaN();
    int status = 1;
    for (double r : run(with_nan, {10, 50}, 4, nullptr, &status)) EXPECT_TRUE(std::isnan(r));
}

std::vector<std::string> g_messages;
void record(const char* code, void*) {
    g_messages.emplace_back(code);
}

TEST(Percentiles, RefusalsAndSpecialValues) {
    const double data[] = {3, 1, 2};
    const double pct[] = {50};
    double out[2] = {-7, -7};
    const double negative[] = {1, -1, 1};
    const struct {
        const double* d;
        int n;
        const double* p;
        int np;
        double* r;
        int rule;
        const double* w;
        int status;
    } rows[] = {
        {nullptr, 3, pct, 1, out, 0, nullptr, ZEMATH_ERR_NULL_STATS},
        {data, 3, nullptr, 1, out, 0, nullptr, ZEMATH_ERR_NULL_STATS},
        {data, 3, pct, 1, nullptr, 0, nullptr, ZEMATH_ERR_NULL_STATS},
        {data, -1, pct, 1, out, 0, nullptr, ZEMATH_ERR_SIZES_DIFFER},
        {data, 0, pct, 1, out, 0, nullptr, ZEMATH_ERR_SIZES_DIFFER},
        {data, 3, pct, -3, out, 0, nullptr, ZEMATH_ERR_SIZES_DIFFER},
        {data, 3, pct, 1, out, 11, nullptr, ZEMATH_ERR_PARAM_RANGE},
        {data, 3, pct, 1, out, -1, nullptr, ZEMATH_ERR_PARAM_RANGE},
        {data, 3, pct, 1, out, 0, negative, ZEMATH_ERR_NEGATIVE_WEIGHT},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(zemath_percentiles(row.d, row.n, row.p, row.np, row.r, row.rule, row.w),
                  row.status);
        EXPECT_EQ(out[0], -7.0);
    }
    // The negative weight posts its warning code, then the check's closing code.
    g_messages.clear();
    zemath_set_message_sink(record, nullptr);
    zemath_percentiles(data, 3, pct, 1, out, 0, negative);
    const double ones[] = {1, 1, 1};
    zemath_percentiles(data, 3, pct, 1, out, 0, ones);
    zemath_set_message_sink(nullptr, nullptr);
    zemath_percentiles(data, 3, pct, 1, out, 0, negative);
    EXPECT_EQ(g_messages, (std::vector<std::string>{"_ZEMS_CW_3", "_ZEMS_CW_5", "_ZEMS_CW_5"}));

    constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
    const double odd_percents[] = {-1, 100.5, kNaN, 50};
    double res[4];
    // Percents outside [0, 100] are missing; all-missing data gives missing everywhere.
    ASSERT_EQ(zemath_percentiles(data, 3, odd_percents, 4, res, 2, nullptr), 0);
    EXPECT_EQ(std::vector<double>(res, res + 4), (std::vector<double>{NANUM, NANUM, NANUM, 2}));
    const double missing[] = {NANUM, NANUM};
    ASSERT_EQ(zemath_percentiles(missing, 2, odd_percents, 4, res, 2, nullptr), 0);
    EXPECT_EQ(res[3], NANUM);
    // A usable NaN spoils the order: NaN results. A NANUM weight drops its point.
    const double with_nan[] = {1, kNaN, 3};
    ASSERT_EQ(zemath_percentiles(with_nan, 3, odd_percents, 4, res, 2, nullptr), 0);
    EXPECT_TRUE(std::isnan(res[3]));
    EXPECT_EQ(res[0], NANUM);
    const double drop_weights[] = {1, NANUM, 1};
    const double big_middle[] = {1, 100, 3};
    ASSERT_EQ(zemath_percentiles(big_middle, 3, pct, 1, res, 3, drop_weights), 0);
    EXPECT_EQ(res[0], 2.0);
    // Infinities are ordinary values; results may overwrite the data.
    double inplace[] = {std::numeric_limits<double>::infinity(),
                        -std::numeric_limits<double>::infinity(), 0, 5};
    ASSERT_EQ(zemath_percentiles(inplace, 4, odd_percents + 3, 1, inplace, 2, nullptr), 0);
    EXPECT_EQ(inplace[0], 0.0);
}

}  // namespace
