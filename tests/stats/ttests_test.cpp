// Parametric tests against SciPy (tests/reference/gen_ttests.py): t tests from raw data
// and from summaries under every tail, the z, F and variance tests, the intervals, power
// and sample size; the summarized tests' special cases and status codes.
#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "zemath/statistics.h"
#include "zemath/status.h"

namespace {

constexpr double kNA = NANUM;

struct TCase {
    int kind, tail;
    double value;
    std::vector<double> x, y;
    double t, p, dof, t_unequal, dof_unequal, p_unequal;
};
struct VarianceCase {
    int tail;
    std::vector<double> x, y;
    double z, pz, F, pF, chi2, pchi2, bartlett, pbartlett;
};
struct IntervalCase {
    double level;
    int one_sided;
    double sd, dof, var_lower, var_upper, sd2;
    int n1, n2;
    double ratio_lower, ratio_upper, mean;
    int n;
    double mean_lower, mean_upper;
};
struct PowerCase {
    int design;
    double alpha, difference, sd;
    int tail, n;
    double power, target;
    int size;
};

struct FitCase {
    double level;
    std::vector<double> data;
    double mu, mu_lower, mu_upper, sigma, sigma_lower, sigma_upper, exp_lower, exp_upper;
};
const std::vector<FitCase> kFits = {
#define FIT_CASES
#include "reference/ttests_ref.inc"
#undef FIT_CASES
};

const std::vector<TCase> kT = {
#define T_CASES
#include "reference/ttests_ref.inc"
#undef T_CASES
};
const std::vector<VarianceCase> kVariance = {
#define VARIANCE_TEST_CASES
#include "reference/ttests_ref.inc"
#undef VARIANCE_TEST_CASES
};
const std::vector<IntervalCase> kIntervals = {
#define INTERVAL_CASES
#include "reference/ttests_ref.inc"
#undef INTERVAL_CASES
};
const std::vector<PowerCase> kPower = {
#define POWER_CASES
#include "reference/ttests_ref.inc"
#undef POWER_CASES
};

// Values that go through Student's t deviate (mean intervals, power): a deviate accurate
// to a few ulps moves an interval end or a power by a few more.
constexpr double kTDeviate = 1e-13;

void near(double got, double want, double tol, const std::string& what) {
    EXPECT_NEAR(got, want, tol * std::max(1e-300, std::fabs(want))) << what;
}

double mean_of(const std::vector<double>& v) {
    double s = 0;
    for (double x : v) s += x;
    return s / v.size();
}
double sd_of(const std::vector<double>& v) {
    const double m = mean_of(v);
    double s = 0;
    for (double x : v) s += (x - m) * (x - m);
    return std::sqrt(s / (v.size() - 1));
}

TEST(TTests, RawDataAndSummariesMatchTheReference) {
    ASSERT_EQ(kT.size(), 27u);
    for (const auto& c : kT) {
        const std::string what = "kind " + std::to_string(c.kind) + " tail " +
                                 std::to_string(c.tail) + " n " + std::to_string(c.x.size());
        const TTestHypothesis hyp{0, c.value, c.tail};
        const auto nx = static_cast<unsigned>(c.x.size()), ny = static_cast<unsigned>(c.y.size());
        if (c.kind == 1) {
            OneSampleTTestResults r;
            ASSERT_EQ(zemath_one_sample_t_test(c.x.data(), nx, &hyp, &r), 0);
            near(r.t, c.t, 1e-12, what);
            near(r.P, c.p, 1e-10, what);
            EXPECT_EQ(r.DOF, c.dof);
            const TTestSummary s{static_cast<int>(nx), mean_of(c.x), sd_of(c.x)};
            OneSampleTTestResults from_summary;
            ASSERT_EQ(zemath_one_sample_t_test_with_summarized_data(&s, &hyp, &from_summary), 0);
            near(from_summary.P, c.p, 1e-10, what);
            EXPECT_EQ(from_summary.SE, kNA);
        } else if (c.kind == 2) {
            TwoSampleTTestResults r;
            double unequal[3];
            ASSERT_EQ(zemath_two_sample_t_test(c.x.data(), nx, c.y.data(), ny, &hyp, &r, unequal),
                      0);
            near(r.t, c.t, 1e-12, what);
            near(r.P, c.p, 1e-10, what);
            EXPECT_EQ(r.DOF, c.dof);
            near(unequal[0], c.t_unequal, 1e-12, what);
            near(unequal[1], c.dof_unequal, 1e-12, what);
            near(unequal[2], c.p_unequal, 1e-10, what);
            near(r.t, r.MeanDiff / r.SEDiff, 1e-13, what);
        } else {
            TwoSampleTTestResults r;
            ASSERT_EQ(zemath_two_sample_t_test_pair(c.x.data(), c.y.data(), nx, &hyp, &r), 0);
            near(r.t, c.t, 1e-12, what);
            near(r.P, c.p, 1e-10, what);
            EXPECT_EQ(r.DOF, c.dof);
        }
    }
}

TEST(TTests, VarianceZAndBartlettTests) {
    for (const auto& c : kVariance) {
        const auto nx = static_cast<unsigned>(c.x.size()), ny = static_cast<unsigned>(c.y.size());
        double z, p, F, d1, d2, chi2, dof;
        ASSERT_EQ(zemath_one_sample_z_test(c.x.data(), nx, 10.0, 2.0, c.tail, &z, &p), 0);
        near(z, c.z, 1e-12, "z");
        near(p, c.pz, 1e-12, "Pz");
        ASSERT_EQ(zemath_f_test(c.x.data(), nx, c.y.data(), ny, c.tail, &F, &p, &d1, &d2), 0);
        near(F, c.F, 1e-12, "F");
        near(p, c.pF, 1e-11, "PF");
        EXPECT_EQ(d1, nx - 1.0);
        ASSERT_EQ(zemath_chi_square_test(c.x.data(), nx, 4.0, c.tail, &chi2, &p, &dof), 0);
        near(chi2, c.chi2, 1e-12, "chi2");
        near(p, c.pchi2, 1e-11, "Pchi2");
        ASSERT_EQ(zemath_two_sample_chi_square_test(c.x.data(), nx, c.y.data(), ny, &chi2, &p), 0);
        near(chi2, c.bartlett, 1e-11, "bartlett");
        near(p, c.pbartlett, 1e-10, "Pbartlett");
    }
}

TEST(TTests, ConfidenceIntervals) {
    for (const auto& c : kIntervals) {
        double lo, hi;
        ASSERT_EQ(
            zemath_confidence_levels_for_variance(1, &c.level, c.sd, c.dof, &lo, &hi, c.one_sided),
            0);
        near(lo, c.var_lower, 1e-12, "variance lower");
        near(hi, c.var_upper, 1e-12, "variance upper");
        const double sds[] = {c.sd, c.sd2};
        const int sizes[] = {c.n1, c.n2};
        ASSERT_EQ(zemath_two_sample_confidence_levels_for_variance(1, &c.level, sds, sizes, &lo,
                                                                   &hi, c.one_sided),
                  0);
        near(lo, c.ratio_lower, 1e-12, "ratio lower");
        near(hi, c.ratio_upper, 1e-12, "ratio upper");
        ASSERT_EQ(zemath_confidence_levels_for_mean(1, &c.level, c.mean, c.sd, c.n, &lo, &hi,
                                                    c.one_sided),
                  0);
        near(lo, c.mean_lower, kTDeviate, "mean lower");
        near(hi, c.mean_upper, kTDeviate, "mean upper");
    }
    // A bad level stops the walk: earlier entries filled, that and later ones NANUM.
    const double levels[] = {0.9, 1.0, 0.95};
    double lo[3] = {1, 1, 1}, hi[3] = {1, 1, 1};
    EXPECT_EQ(zemath_confidence_levels_for_variance(3, levels, 1.0, 5.0, lo, hi, 0),
              ZEMATH_ERR_PARAM_RANGE);
    EXPECT_NE(lo[0], kNA);
    EXPECT_EQ(lo[1], kNA);
    EXPECT_EQ(hi[2], kNA);
    EXPECT_EQ(zemath_confidence_levels_for_variance(1, levels, 1.0, 0.0, lo, hi, 0), 0);
    EXPECT_EQ(lo[0], kNA);
    EXPECT_EQ(zemath_confidence_levels_for_variance(0, levels, 1.0, 5.0, lo, hi, 0),
              ZEMATH_ERR_PARAM_RANGE);
    // Two samples of one point each: NANUM bounds, success.
    const double sds[] = {1, 2};
    const int ones[] = {1, 1};
    EXPECT_EQ(zemath_two_sample_confidence_levels_for_variance(1, levels, sds, ones, lo, hi, 0), 0);
    EXPECT_EQ(lo[0], kNA);
    EXPECT_EQ(zemath_two_sample_confidence_levels_for_variance(0, levels, sds, ones, lo, hi, 0),
              ZEMATH_ERR_PARAM_RANGE);
    // Difference of means: equal variances reduce to the pooled interval.
    const TTestSummary a{10, 5.0, 1.0}, b{10, 4.0, 1.0};
    ASSERT_EQ(zemath_two_sample_confidence_levels_for_mean(1, levels, &a, &b, 1, lo, hi, 0), 0);
    EXPECT_NEAR((lo[0] + hi[0]) / 2, 1.0, 1e-14);
    // Pooled sd 1 with 18 degrees of freedom: half-width t(0.95, 18) sqrt(1/10 + 1/10), which
    // is the one-sample half-width for sd sqrt(0.2 * 19) and 19 points.
    double lo2, hi2;
    ASSERT_EQ(
        zemath_confidence_levels_for_mean(1, levels, 1.0, std::sqrt(0.2 * 19.0), 19, &lo2, &hi2, 0),
        0);
    EXPECT_NEAR(hi[0] - lo[0], hi2 - lo2, 1e-13);
}

TEST(TTests, PowerAndSampleSize) {
    for (const auto& c : kPower) {
        double power;
        int size;
        const std::string what = "design " + std::to_string(c.design) + " n " + std::to_string(c.n);
        if (c.design == 1) {
            ASSERT_EQ(zemath_tTest_powers1(c.alpha, c.difference, c.sd, c.tail, c.n, &power), 0);
            ASSERT_EQ(
                zemath_tTest_samplesize(c.alpha, c.difference, c.sd, c.tail, 1, &c.target, &size),
                0);
        } else if (c.design == 2) {
            ASSERT_EQ(zemath_two_sample_tTest_powers(c.alpha, c.difference, c.sd, c.tail, 1, &c.n,
                                                     &power),
                      0);
            ASSERT_EQ(zemath_two_sample_tTest_samplesize(c.alpha, c.difference, c.sd, c.tail, 1,
                                                         &c.target, &size),
                      0);
        } else {
            ASSERT_EQ(zemath_two_sample_tTest_powers_pair1(c.alpha, c.difference, c.sd, c.tail, c.n,
                                                           &power),
                      0);
            ASSERT_EQ(zemath_two_sample_tTest_samplesize_pair(c.alpha, c.difference, c.sd, c.tail,
                                                              1, &c.target, &size),
                      0);
        }
        near(power, c.power, kTDeviate, what);
        EXPECT_EQ(size, c.size) << what;
    }
    double p[2];
    const int sizes[] = {1, 5};
    ASSERT_EQ(zemath_tTest_powers(0.05, 1, 1, 0, 2, sizes, p), 0);
    EXPECT_EQ(p[0], kNA);
    EXPECT_EQ(zemath_tTest_powers(0.05, 1, 0, 0, 2, sizes, p), ZEMATH_ERR_PARAM_RANGE);
    EXPECT_EQ(zemath_tTest_powers(1.0, 1, 1, 0, 2, sizes, p), ZEMATH_ERR_PARAM_RANGE);
    EXPECT_EQ(zemath_two_sample_tTest_powers1(0.05, 1, 1, 3, 5, p), ZEMATH_ERR_PARAM_RANGE);
    EXPECT_EQ(zemath_tTest_powers(0.05, 1, 1, 0, 2, nullptr, p), ZEMATH_ERR_NULL_STATS);
    int n = 0;
    const double unreachable = 1.0;
    ASSERT_EQ(zemath_two_sample_tTest_samplesize(0.05, 1, 1, 0, 1, &unreachable, &n), 0);
    EXPECT_EQ(n, -1);
    EXPECT_EQ(zemath_two_sample_tTest_powers_pair(0.05, 1, 1, 0, 2, sizes, nullptr),
              ZEMATH_ERR_NULL_STATS);
}

TEST(TTests, ConfidenceLimitsOfFittedParameters) {
    ASSERT_EQ(kFits.size(), 2u);
    for (const auto& c : kFits) {
        const auto n = static_cast<unsigned>(c.data.size());
        double mu, ml, mu_hi, sigma, sl, su, mean, el, eu;
        ASSERT_EQ(zemath_confidence_limit_Norm(c.data.data(), n, c.level, &mu, &ml, &mu_hi, &sigma,
                                               &sl, &su),
                  0);
        near(mu, c.mu, 1e-14, "mu");
        near(ml, c.mu_lower, kTDeviate, "mu lower");
        near(mu_hi, c.mu_upper, kTDeviate, "mu upper");
        near(sigma, c.sigma, 1e-14, "sigma");
        near(sl, c.sigma_lower, 1e-12, "sigma lower");
        near(su, c.sigma_upper, 1e-12, "sigma upper");
        ASSERT_EQ(zemath_confidence_limit_Exp(c.data.data(), n, c.level, &mean, &el, &eu), 0);
        near(mean, c.mu, 1e-14, "exp mean");
        near(el, c.exp_lower, 1e-12, "exp lower");
        near(eu, c.exp_upper, 1e-12, "exp upper");
    }
    const double negative[] = {1, -2, 3};
    double m;
    EXPECT_EQ(zemath_confidence_limit_Exp(negative, 3, 0.95, &m, nullptr, nullptr),
              ZEMATH_ERR_PARAM_RANGE);
    EXPECT_EQ(zemath_confidence_limit_Exp(negative, 3, 1.0, &m, nullptr, nullptr),
              ZEMATH_ERR_CONFIDENCE_LEVEL);
    EXPECT_EQ(zemath_confidence_limit_Norm(negative, 1, 0.95, &m, nullptr, nullptr, nullptr,
                                           nullptr, nullptr),
              ZEMATH_ERR_TOO_FEW_DATA);
    EXPECT_EQ(zemath_confidence_limit_Norm(nullptr, 3, 0.95, &m, nullptr, nullptr, nullptr, nullptr,
                                           nullptr),
              ZEMATH_ERR_NULL_STATS);
}

TEST(TTests, SummarizedSpecialCasesAndCodes) {
    const TTestSummary s{10, 5.0, 2.0};
    OneSampleTTestResults r;
    // t = 0: two-tailed P 1, each one-tailed P 1/2.
    for (int tail : {0, 1, 2}) {
        const TTestHypothesis hyp{0, 5.0, tail};
        ASSERT_EQ(zemath_one_sample_t_test_with_summarized_data(&s, &hyp, &r), 0);
        EXPECT_EQ(r.t, 0.0);
        EXPECT_DOUBLE_EQ(r.P, tail == 0 ? 1.0 : 0.5);
    }
    const TTestHypothesis bad_tail{0, 5.0, 3};
    EXPECT_EQ(zemath_one_sample_t_test_with_summarized_data(&s, &bad_tail, &r),
              ZEMATH_ERR_PARAM_RANGE);
    const TTestSummary empty{0, 5.0, 2.0};
    const TTestHypothesis hyp{0, 4.0, 0};
    EXPECT_EQ(zemath_one_sample_t_test_with_summarized_data(&empty, &hyp, &r),
              ZEMATH_ERR_SIZES_DIFFER);
    EXPECT_EQ(zemath_one_sample_t_test_with_summarized_data(nullptr, &hyp, &r),
              ZEMATH_ERR_PARAM_RANGE);
    const TTestSummary missing_mean{10, NANUM, 2.0};
    EXPECT_EQ(zemath_one_sample_t_test_with_summarized_data(&missing_mean, &hyp, &r),
              ZEMATH_ERR_PARAM_RANGE);

    TwoSampleTTestResults two;
    const TTestSummary one_point{1, 3.0, 0.0};
    ASSERT_EQ(zemath_two_sample_t_test_pair_with_summarized_data(&one_point, &hyp, &two), 0);
    EXPECT_EQ(two.DOF, 0.0);
    EXPECT_EQ(two.t, kNA);
    EXPECT_EQ(two.Mean1, 3.0);
    EXPECT_EQ(zemath_two_sample_t_test_pair_with_summarized_data(&empty, &hyp, &two),
              ZEMATH_ERR_TOO_FEW_DATA);
    EXPECT_EQ(zemath_two_sample_t_test_pair_with_summarized_data(&s, nullptr, &two),
              ZEMATH_ERR_PARAM_RANGE);
    // The hypothesised difference shifts the second mean.
    const TTestSummary s2{12, 3.0, 2.5};
    const TTestHypothesis diff2{0, 2.0, 0};
    double unequal[3];
    ASSERT_EQ(zemath_two_sample_t_test_with_summarized_data(&s, &s2, &diff2, &two, unequal), 0);
    EXPECT_NEAR(two.t, 0.0, 1e-15);
    EXPECT_EQ(two.DOF, 20.0);
    EXPECT_EQ(zemath_two_sample_t_test_with_summarized_data(&s, &s2, &bad_tail, &two, nullptr),
              ZEMATH_ERR_PARAM_RANGE);
    // A one-point sample gives NANUM statistics, not a failure.
    ASSERT_EQ(zemath_two_sample_t_test_with_summarized_data(&s, &one_point, &hyp, &two, unequal),
              0);
    EXPECT_EQ(two.t, kNA);
    EXPECT_EQ(unequal[2], kNA);

    const double d[] = {1, NANUM, 2};
    OneSampleTTestResults raw;
    EXPECT_EQ(zemath_one_sample_t_test(d, 2, &hyp, &raw), ZEMATH_ERR_TOO_FEW_DATA);
    EXPECT_EQ(zemath_one_sample_t_test(nullptr, 2, &hyp, &raw), ZEMATH_ERR_NULL_STATS);
    double t = 0, P = 0;
    int dof = 0;
    ASSERT_EQ(zemath_t_test_one_sample(d, 3, 1.5, 0, &t, &P, &dof), 0);
    EXPECT_EQ(t, 0.0);
    EXPECT_EQ(dof, 1);
    const double m1[] = {1, 2, 3, 4, 5, 6}, m2[] = {2, 3, 4, 9, 9, 9};
    double rt[2], rp[2], rd[2];
    ASSERT_EQ(zemath_row_ttest2(2, m1, 3, m2, 3, 0, rt, rp, rd), 0);
    EXPECT_NEAR(rt[0], -1.0 / std::sqrt(2.0 / 3.0), 1e-14);  // pooled sd 1, n 3 and 3
    EXPECT_EQ(rd[1], 4.0);
    EXPECT_EQ(zemath_row_ttest2(0, m1, 3, m2, 3, 0, rt, rp, rd), ZEMATH_ERR_SIZES_DIFFER);
    EXPECT_EQ(zemath_one_sample_z_test(d, 3, 0.0, 0.0, 0, &t, &P), ZEMATH_ERR_PARAM_RANGE);
    EXPECT_EQ(zemath_f_test(d, 3, m1, 1, 0, &t, &P, nullptr, nullptr), ZEMATH_ERR_TOO_FEW_DATA);
    EXPECT_EQ(zemath_chi_square_test(d, 3, -1.0, 0, &t, &P, nullptr), ZEMATH_ERR_PARAM_RANGE);
}

}  // namespace
