// Random-sample exports: refusals leave outputs untouched, every generator passes a
// goodness-of-fit test of 1e5 samples against Boost.Math's law (KS for continuous laws,
// Pearson chi-square for discrete ones, fail only at p < 1e-6; see goodness_of_fit.hpp),
// the parameter conventions that differ from the textbook hold, and calls never repeat.
#include <gtest/gtest.h>

#include <boost/math/distributions/beta.hpp>
#include <boost/math/distributions/binomial.hpp>
#include <boost/math/distributions/cauchy.hpp>
#include <boost/math/distributions/chi_squared.hpp>
#include <boost/math/distributions/exponential.hpp>
#include <boost/math/distributions/fisher_f.hpp>
#include <boost/math/distributions/gamma.hpp>
#include <boost/math/distributions/geometric.hpp>
#include <boost/math/distributions/hypergeometric.hpp>
#include <boost/math/distributions/logistic.hpp>
#include <boost/math/distributions/lognormal.hpp>
#include <boost/math/distributions/negative_binomial.hpp>
#include <boost/math/distributions/normal.hpp>
#include <boost/math/distributions/poisson.hpp>
#include <boost/math/distributions/students_t.hpp>
#include <boost/math/distributions/triangular.hpp>
#include <boost/math/distributions/uniform.hpp>
#include <boost/math/distributions/weibull.hpp>

#include <algorithm>
#include <cfloat>
#include <climits>
#include <cmath>
#include <cstdio>
#include <functional>
#include <limits>
#include <numeric>
#include <thread>
#include <vector>

#include "stats/goodness_of_fit.hpp"
#include "zemath/random.h"
#include "zemath/status.h"

namespace bm = boost::math;

namespace {

constexpr int kSamples = 100000;
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr double kSentinel = -7777.25;
constexpr int kIntSentinel = -7777;

template <class Law>
std::function<double(double)> cdf_of(Law law) {
    return [law](double x) { return bm::cdf(law, x); };
}

template <class Law>
std::function<double(long)> pmf_of(Law law, long hi = LONG_MAX) {
    return [law, hi](long k) { return k > hi ? 0.0 : bm::pdf(law, static_cast<double>(k)); };
}

struct ContinuousCase {
    const char* name;
    std::function<int(double*, int)> draw;
    std::function<double(double)> cdf;
};

struct DiscreteCase {
    const char* name;
    std::function<int(int*, int)> draw;
    std::function<double(long)> pmf;
    long lo;
};

std::vector<double> draw_doubles(const std::function<int(double*, int)>& draw, int n) {
    std::vector<double> v(n, kSentinel);
    EXPECT_EQ(draw(v.data(), n), 0);
    return v;
}

std::vector<int> draw_ints(const std::function<int(int*, int)>& draw, int n) {
    std::vector<int> v(n, kIntSentinel);
    EXPECT_EQ(draw(v.data(), n), 0);
    return v;
}

// The convention traps are named in the case list: each would fail its test outright
// if the parameter were read the textbook way.
const std::vector<ContinuousCase>& continuous_cases() {
    static const std::vector<ContinuousCase> cases = {
        {"normal: second parameter is the variance (4 -> sd 2)",
         [](double* o, int n) { return normrnd(o, n, 1.5, 4.0); }, cdf_of(bm::normal(1.5, 2.0))},
        {"normal small variance", [](double* o, int n) { return normrnd(o, n, -3.0, 0.25); },
         cdf_of(bm::normal(-3.0, 0.5))},
        {"uniform", [](double* o, int n) { return unifrnd(o, n, -2.0, 5.0); },
         cdf_of(bm::uniform_distribution<>(-2.0, 5.0))},
        {"exponential: parameter is the mean (2.5 -> rate 0.4)",
         [](double* o, int n) { return exprnd(o, n, 2.5); }, cdf_of(bm::exponential(0.4))},
        {"beta(0.5, 2)", [](double* o, int n) { return betarnd(o, n, 0.5, 2.0); },
         cdf_of(bm::beta_distribution<>(0.5, 2.0))},
        {"beta(2.5, 3.5)", [](double* o, int n) { return betarnd(o, n, 2.5, 3.5); },
         cdf_of(bm::beta_distribution<>(2.5, 3.5))},
        {"beta(0.2, 0.3)", [](double* o, int n) { return betarnd(o, n, 0.2, 0.3); },
         cdf_of(bm::beta_distribution<>(0.2, 0.3))},
        {"gamma: shape 2.5, scale 2", [](double* o, int n) { return gamrnd(o, n, 2.5, 2.0); },
         cdf_of(bm::gamma_distribution<>(2.5, 2.0))},
        {"gamma shape below 1", [](double* o, int n) { return gamrnd(o, n, 0.3, 1.5); },
         cdf_of(bm::gamma_distribution<>(0.3, 1.5))},
        {"gamma shape 1", [](double* o, int n) { return gamrnd(o, n, 1.0, 0.5); },
         cdf_of(bm::gamma_distribution<>(1.0, 0.5))},
        {"gamma large shape", [](double* o, int n) { return gamrnd(o, n, 400.0, 0.01); },
         cdf_of(bm::gamma_distribution<>(400.0, 0.01))},
        {"chi-square 1", [](double* o, int n) { return chi2rnd(o, n, 1); },
         cdf_of(bm::chi_squared(1))},
        {"chi-square 7", [](double* o, int n) { return chi2rnd(o, n, 7); },
         cdf_of(bm::chi_squared(7))},
        {"t 1", [](double* o, int n) { return trnd(o, n, 1); }, cdf_of(bm::students_t(1))},
        {"t 5", [](double* o, int n) { return trnd(o, n, 5); }, cdf_of(bm::students_t(5))},
        {"F(3, 8)", [](double* o, int n) { return frnd(o, n, 3, 8); }, cdf_of(bm::fisher_f(3, 8))},
        {"Cauchy: semi-interquartile range is the scale",
         [](double* o, int n) { return caurnd(o, n, 1.0, 2.0); }, cdf_of(bm::cauchy(1.0, 2.0))},
        {"log-normal: second parameter is the variance of ln X (0.64 -> sd 0.8)",
         [](double* o, int n) { return lognrnd(o, n, 0.5, 0.64); },
         cdf_of(bm::lognormal(0.5, 0.8))},
        {"logistic", [](double* o, int n) { return lgsrnd(o, n, 1.0, 0.5); },
         cdf_of(bm::logistic(1.0, 0.5))},
        {"Weibull: b = lambda^a (a 2, b 9 -> scale 3)",
         [](double* o, int n) { return wblrnd(o, n, 2.0, 9.0); }, cdf_of(bm::weibull(2.0, 3.0))},
        {"Weibull shape below 1", [](double* o, int n) { return wblrnd(o, n, 0.5, 2.0); },
         cdf_of(bm::weibull(0.5, 4.0))},
        {"triangular", [](double* o, int n) { return trirnd(o, n, -1.0, 0.5, 3.0); },
         cdf_of(bm::triangular(-1.0, 0.5, 3.0))},
        {"triangular, mode at the minimum",
         [](double* o, int n) { return trirnd(o, n, 0.0, 0.0, 1.0); },
         cdf_of(bm::triangular(0.0, 0.0, 1.0))},
    };
    return cases;
}

const std::vector<DiscreteCase>& discrete_cases() {
    static const double pdf_table[] = {0.1, 0.0, 0.25, 0.4, 0.25};
    static const double cdf_table[] = {0.05, 0.3, 0.3, 0.9, 1.0};
    static const std::vector<DiscreteCase> cases = {
        {"binomial by inversion", [](int* o, int n) { return binornd(o, n, 20, 0.3); },
         pmf_of(bm::binomial(20, 0.3), 20), 0},
        {"binomial by BTRD", [](int* o, int n) { return binornd(o, n, 1000, 0.3); },
         pmf_of(bm::binomial(1000, 0.3), 1000), 0},
        {"binomial by BTRD near its threshold",
         [](int* o, int n) { return binornd(o, n, 100, 0.11); },
         pmf_of(bm::binomial(100, 0.11), 100), 0},
        {"binomial with p > 1/2", [](int* o, int n) { return binornd(o, n, 60, 0.85); },
         pmf_of(bm::binomial(60, 0.85), 60), 0},
        {"Poisson by inversion", [](int* o, int n) { return poissrnd(o, n, 3.5); },
         pmf_of(bm::poisson(3.5)), 0},
        {"Poisson by PTRS", [](int* o, int n) { return poissrnd(o, n, 42.0); },
         pmf_of(bm::poisson(42.0)), 0},
        {"Poisson large mean", [](int* o, int n) { return poissrnd(o, n, 5000.0); },
         pmf_of(bm::poisson(5000.0)), 0},
        {"geometric counts failures (P(0) = p)", [](int* o, int n) { return geornd(o, n, 0.2); },
         pmf_of(bm::geometric(0.2)), 0},
        {"negative binomial counts failures", [](int* o, int n) { return nbinrnd(o, n, 3, 0.2); },
         pmf_of(bm::negative_binomial(3, 0.2)), 0},
        {"negative binomial large m", [](int* o, int n) { return nbinrnd(o, n, 40, 0.7); },
         pmf_of(bm::negative_binomial(40, 0.7)), 0},
        // Boost's hypergeometric(r, n, N): r successes, sample n, population N.
        {"hypergeometric by inversion", [](int* o, int n) { return hygernd(o, n, 100, 10, 30); },
         pmf_of(bm::hypergeometric(30, 10, 100), 10), 0},
        {"hypergeometric by ratio of uniforms",
         [](int* o, int n) { return hygernd(o, n, 1000, 100, 300); },
         pmf_of(bm::hypergeometric(300, 100, 1000), 100), 0},
        {"hypergeometric with sample and successes above half",
         [](int* o, int n) { return hygernd(o, n, 1000, 700, 600); },
         pmf_of(bm::hypergeometric(600, 700, 1000), 600), 300},
        {"uniform integers", [](int* o, int n) { return unidrnd(o, n, -3, 7); },
         [](long k) { return k <= 7 ? 1.0 / 11.0 : 0.0; }, -3},
        {"table of probabilities", [](int* o, int n) { return disrnd(o, n, pdf_table, 5, 10, 0); },
         [](long k) { return k <= 14 ? pdf_table[k - 10] : 0.0; }, 10},
        {"cumulative table", [](int* o, int n) { return disrnd(o, n, cdf_table, 5, -2, 1); },
         [](long k) { return k > 2 ? 0.0 : cdf_table[k + 2] - (k == -2 ? 0.0 : cdf_table[k + 1]); },
         -2},
    };
    return cases;
}

}  // namespace

TEST(RandomGoodnessOfFit, ContinuousLawsPassKolmogorovSmirnov) {
    for (const auto& c : continuous_cases()) {
        const auto sample = draw_doubles(c.draw, kSamples);
        const auto result = gof::kolmogorov_smirnov(sample, c.cdf);
        std::printf("[gof] %-70s %s p = %.3g\n", c.name, result.detail.c_str(), result.p_value);
        EXPECT_GE(result.p_value, gof::kGofLevel) << c.name << ": " << result.detail;
    }
}

TEST(RandomGoodnessOfFit, DiscreteLawsPassChiSquare) {
    for (const auto& c : discrete_cases()) {
        const auto sample = draw_ints(c.draw, kSamples);
        const auto result = gof::chi_square(sample, c.pmf, c.lo);
        std::printf("[gof] %-70s %s p = %.3g\n", c.name, result.detail.c_str(), result.p_value);
        EXPECT_GE(result.p_value, gof::kGofLevel) << c.name << ": " << result.detail;
    }
}

// Plain moment checks of the conventions, readable on their own: the textbook reading
// of each parameter would be tens of standard errors away.
TEST(RandomConventions, ParametersMeanWhatTheGeneratorsMean) {
    std::vector<double> x(kSamples);
    auto mean = [&] { return std::accumulate(x.begin(), x.end(), 0.0) / kSamples; };
    auto variance = [&] {
        const double m = mean();
        double s = 0;
        for (double v : x) s += (v - m) * (v - m);
        return s / (kSamples - 1);
    };
    ASSERT_EQ(normrnd(x.data(), kSamples, 0.0, 4.0), 0);
    EXPECT_NEAR(variance(), 4.0, 0.15);  // a standard deviation of 4 would give 16
    ASSERT_EQ(exprnd(x.data(), kSamples, 5.0), 0);
    EXPECT_NEAR(mean(), 5.0, 0.1);  // a rate of 5 would give 0.2
    ASSERT_EQ(lognrnd(x.data(), kSamples, 0.0, 0.25), 0);
    for (double& v : x) v = std::log(v);
    EXPECT_NEAR(variance(), 0.25, 0.01);  // read as sd it would be 0.0625
    ASSERT_EQ(wblrnd(x.data(), kSamples, 2.0, 16.0), 0);
    std::nth_element(x.begin(), x.begin() + kSamples / 2, x.end());
    // Median (b ln 2)^(1/a) = 4 sqrt(ln 2) = 3.33; with b the scale it would be 13.3.
    EXPECT_NEAR(x[kSamples / 2], 4.0 * std::sqrt(std::log(2.0)), 0.05);

    std::vector<int> k(kSamples);
    ASSERT_EQ(geornd(k.data(), kSamples, 0.25), 0);
    const double zeros = static_cast<double>(std::count(k.begin(), k.end(), 0)) / kSamples;
    EXPECT_NEAR(zeros, 0.25, 0.01);  // counting trials would never give 0
}

TEST(RandomMultivariateNormal, SingularCovarianceFollowsItsLaw) {
    // c = A A^T with A 3 x 2: rank 2, positive semi-definite; (1, -1, 1) spans its null
    // space since the rows of A satisfy a1 - a2 + a3 = 0.
    const double a[3][2] = {{1.0, 0.5}, {2.0, -1.0}, {1.0, -1.5}};
    double c[9];
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 3; ++j) c[3 * i + j] = a[i][0] * a[j][0] + a[i][1] * a[j][1];
    const double mu[3] = {1.0, -2.0, 0.5};
    std::vector<double> x(3 * kSamples, kSentinel);
    ASSERT_EQ(mvnrnd(x.data(), kSamples, 3, mu, c), 0);

    const double projections[][3] = {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}, {0.3, 0.7, -0.2}};
    for (const auto& w : projections) {
        std::vector<double> y(kSamples);
        double m = 0.0, v = 0.0;
        for (int i = 0; i < 3; ++i) {
            m += w[i] * mu[i];
            for (int j = 0; j < 3; ++j) v += w[i] * c[3 * i + j] * w[j];
        }
        for (int s = 0; s < kSamples; ++s) {
            y[s] = w[0] * x[3 * s] + w[1] * x[3 * s + 1] + w[2] * x[3 * s + 2];
        }
        const auto result = gof::kolmogorov_smirnov(y, cdf_of(bm::normal(m, std::sqrt(v))));
        EXPECT_GE(result.p_value, gof::kGofLevel) << w[0] << w[1] << w[2] << result.detail;
    }
    double worst = 0.0;  // the samples stay in the plane mu + range(c)
    for (int s = 0; s < kSamples; ++s) {
        worst = std::max(
            worst, std::abs((x[3 * s] - mu[0]) - (x[3 * s + 1] - mu[1]) + (x[3 * s + 2] - mu[2])));
    }
    EXPECT_LT(worst, 1e-12);
}

TEST(RandomPermutation, OnlyTheEndsMatter) {
    double x[] = {1.0, 0.0, 0.0, 4.0};
    ASSERT_EQ(permrnd(x, 4), 0);
    std::sort(x, x + 4);
    EXPECT_EQ(std::vector<double>(x, x + 4), (std::vector<double>{1.0, 2.0, 3.0, 4.0}));

    double descending[] = {5.0, kNaN, -kInf, NANUM, -1.0};  // interior ignored, even NaN
    ASSERT_EQ(permrnd(descending, 5), 0);
    std::sort(descending, descending + 5);
    EXPECT_EQ(std::vector<double>(descending, descending + 5),
              (std::vector<double>{-1.0, 0.5, 2.0, 3.5, 5.0}));

    double one[] = {kSentinel};
    EXPECT_EQ(permrnd(one, 1), 0);
    EXPECT_EQ(one[0], kSentinel);

    double wide[] = {-DBL_MAX, 0.0, DBL_MAX};
    ASSERT_EQ(permrnd(wide, 3), 0);
    std::sort(wide, wide + 3);
    EXPECT_EQ(wide[0], -DBL_MAX);
    EXPECT_EQ(wide[1], 0.0);
    EXPECT_EQ(wide[2], DBL_MAX);
}

TEST(RandomPermutation, EveryOrderEquallyLikely) {
    // 24 orders of 4 values, 24000 calls: each order expects 1000. Also shows that each
    // call starts a fresh stream.
    constexpr int calls = 24000;
    std::vector<int> order_index(calls);
    for (int c = 0; c < calls; ++c) {
        double x[] = {0.0, 1.0, 2.0, 3.0};
        ASSERT_EQ(permrnd(x, 4), 0);
        int code = 0;
        for (double v : x) code = code * 4 + static_cast<int>(v);
        order_index[c] = code;
    }
    // Rank the 24 codes 0..23 and test against the uniform law.
    std::vector<int> codes(order_index);
    std::sort(codes.begin(), codes.end());
    codes.erase(std::unique(codes.begin(), codes.end()), codes.end());
    ASSERT_EQ(codes.size(), 24u);
    for (int& v : order_index)
        v = static_cast<int>(std::lower_bound(codes.begin(), codes.end(), v) - codes.begin());
    const auto result = gof::chi_square(
        order_index, [](long k) { return k < 24 ? 1.0 / 24 : 0.0; }, 0);
    EXPECT_GE(result.p_value, gof::kGofLevel) << result.detail;
}

TEST(RandomTables, ZeroProbabilityValuesNeverOccur) {
    const double pdf[] = {0.0, 0.5, 0.0, 0.5, 0.0};
    std::vector<int> k(kSamples);
    ASSERT_EQ(disrnd(k.data(), kSamples, pdf, 5, 0, 0), 0);
    for (int v : k) ASSERT_TRUE(v == 1 || v == 3) << v;
    // A table whose sum is off by rounding (within 1e-6) is accepted and normalised.
    const double rounded[] = {0.3333333, 0.3333333, 0.3333333};
    EXPECT_EQ(disrnd(k.data(), 10, rounded, 3, 0, 0), 0);
}

TEST(RandomExtremes, ParametersAtTheLimitsStayInRange) {
    std::vector<double> x(1000);
    ASSERT_EQ(unifrnd(x.data(), 1000, -DBL_MAX, DBL_MAX), 0);
    for (double v : x) ASSERT_TRUE(std::isfinite(v));
    ASSERT_EQ(trirnd(x.data(), 1000, -DBL_MAX, 0.0, DBL_MAX), 0);
    for (double v : x) ASSERT_TRUE(std::isfinite(v));
    ASSERT_EQ(unifrnd(x.data(), 1000, 2.5, 2.5), 0);
    for (double v : x) ASSERT_EQ(v, 2.5);
    for (double shape : {1e-3, 1e-310}) {  // both gammas underflow: no 0/0
        ASSERT_EQ(betarnd(x.data(), 1000, shape, shape), 0);
        for (double v : x) ASSERT_TRUE(v >= 0.0 && v <= 1.0) << v;
    }
    ASSERT_EQ(normrnd(x.data(), 1000, 3.0, 0.0), 0);
    for (double v : x) ASSERT_EQ(v, 3.0);

    std::vector<int> k(1000);
    ASSERT_EQ(unidrnd(k.data(), 1000, INT_MIN, INT_MAX), 0);
    ASSERT_EQ(binornd(k.data(), 1000, INT_MAX, 0.5), 0);
    for (int v : k) ASSERT_LT(std::abs(v - INT_MAX / 2.0), 10 * std::sqrt(INT_MAX / 4.0));
    ASSERT_EQ(binornd(k.data(), 1000, 7, 1.0), 0);
    for (int v : k) ASSERT_EQ(v, 7);
    ASSERT_EQ(poissrnd(k.data(), 1000, 1073741823.0), 0);
    for (int v : k) ASSERT_GT(v, 1073000000);
    ASSERT_EQ(poissrnd(k.data(), 1000, 0.0), 0);
    for (int v : k) ASSERT_EQ(v, 0);
    ASSERT_EQ(hygernd(k.data(), 1000, INT_MAX, INT_MAX / 2, INT_MAX / 3), 0);
    for (int v : k) ASSERT_TRUE(v >= 0 && v <= INT_MAX / 3);
    ASSERT_EQ(geornd(k.data(), 1000, 2e-8), 0);
    for (int v : k) ASSERT_GE(v, 0);
    ASSERT_EQ(nbinrnd(k.data(), 1000, INT_MAX, 0.9), 0);
    for (int v : k) ASSERT_GE(v, 0);
}

namespace {

struct Refusal {
    const char* name;
    std::function<int(double*, int*)> call;  // both buffers hold 8 sentinels
    int expected;
};

}  // namespace

TEST(RandomRefusals, BadArgumentsGiveTheirStatusAndWriteNothing) {
    constexpr int kParam = ZEMATH_ERR_PARAM_RANGE;
    const double table[] = {0.5, 0.5};
    const double mu2[] = {0.0, 0.0};
    const double identity2[] = {1.0, 0.0, 0.0, 1.0};
    const std::vector<Refusal> refusals = {
        // Output, count and missing parameters, for every export.
        {"normrnd null", [](double*, int*) { return normrnd(nullptr, 8, 0, 1); }, kParam},
        {"normrnd n 0", [](double* d, int*) { return normrnd(d, 0, 0, 1); }, kParam},
        {"normrnd n -1", [](double* d, int*) { return normrnd(d, -1, 0, 1); }, kParam},
        {"normrnd NaN mean", [](double* d, int*) { return normrnd(d, 8, kNaN, 1); }, kParam},
        {"normrnd inf var", [](double* d, int*) { return normrnd(d, 8, 0, kInf); }, kParam},
        {"normrnd NANUM mean", [](double* d, int*) { return normrnd(d, 8, NANUM, 1); }, kParam},
        {"normrnd var < 0", [](double* d, int*) { return normrnd(d, 8, 0, -1); },
         ZEMATH_NAG_REAL_ARG_LT},
        {"unifrnd null", [](double*, int*) { return unifrnd(nullptr, 8, 0, 1); }, kParam},
        {"unifrnd -inf", [](double* d, int*) { return unifrnd(d, 8, -kInf, 1); }, kParam},
        {"unifrnd a > b", [](double* d, int*) { return unifrnd(d, 8, 2, 1); }, ZEMATH_NAG_REAL},
        {"exprnd n 0", [](double* d, int*) { return exprnd(d, 0, 1); }, kParam},
        {"exprnd NANUM", [](double* d, int*) { return exprnd(d, 8, NANUM); }, kParam},
        {"exprnd mean 0", [](double* d, int*) { return exprnd(d, 8, 0); }, ZEMATH_NAG_REAL_ARG_LE},
        {"betarnd NaN", [](double* d, int*) { return betarnd(d, 8, kNaN, 1); }, kParam},
        {"betarnd b 0", [](double* d, int*) { return betarnd(d, 8, 1, 0); },
         ZEMATH_NAG_REAL_ARG_LE},
        {"gamrnd null", [](double*, int*) { return gamrnd(nullptr, 8, 1, 1); }, kParam},
        {"gamrnd shape < 0", [](double* d, int*) { return gamrnd(d, 8, -1, 1); },
         ZEMATH_NAG_REAL_ARG_LE},
        {"gamrnd NANUM scale", [](double* d, int*) { return gamrnd(d, 8, 1, NANUM); }, kParam},
        {"chi2rnd n -5", [](double* d, int*) { return chi2rnd(d, -5, 3); }, kParam},
        {"chi2rnd df 0", [](double* d, int*) { return chi2rnd(d, 8, 0); }, ZEMATH_NAG_INT_ARG_LT},
        {"trnd null", [](double*, int*) { return trnd(nullptr, 8, 3); }, kParam},
        {"trnd df -1", [](double* d, int*) { return trnd(d, 8, -1); }, ZEMATH_NAG_INT_ARG_LT},
        {"frnd n 0", [](double* d, int*) { return frnd(d, 0, 3, 3); }, kParam},
        {"frnd df2 0", [](double* d, int*) { return frnd(d, 8, 3, 0); }, ZEMATH_NAG_INT_ARG_LT},
        {"caurnd inf", [](double* d, int*) { return caurnd(d, 8, kInf, 1); }, kParam},
        {"caurnd scale < 0", [](double* d, int*) { return caurnd(d, 8, 0, -1); },
         ZEMATH_NAG_REAL_ARG_LT},
        {"lognrnd NaN", [](double* d, int*) { return lognrnd(d, 8, 0, kNaN); }, kParam},
        {"lognrnd var < 0", [](double* d, int*) { return lognrnd(d, 8, 0, -0.5); },
         ZEMATH_NAG_REAL_ARG_LT},
        {"lgsrnd NANUM", [](double* d, int*) { return lgsrnd(d, 8, NANUM, 1); }, kParam},
        {"lgsrnd b 0", [](double* d, int*) { return lgsrnd(d, 8, 0, 0); }, ZEMATH_NAG_REAL_ARG_LE},
        {"wblrnd null", [](double*, int*) { return wblrnd(nullptr, 8, 1, 1); }, kParam},
        {"wblrnd a 0", [](double* d, int*) { return wblrnd(d, 8, 0, 1); }, ZEMATH_NAG_REAL_ARG_LE},
        {"trirnd NaN mode", [](double* d, int*) { return trirnd(d, 8, 0, kNaN, 1); }, kParam},
        {"trirnd mode outside", [](double* d, int*) { return trirnd(d, 8, 0, 2, 1); },
         ZEMATH_NAG_REAL},
        {"trirnd empty", [](double* d, int*) { return trirnd(d, 8, 1, 1, 1); }, ZEMATH_NAG_REAL},
        {"binornd null", [](double*, int*) { return binornd(nullptr, 8, 5, 0.5); }, kParam},
        {"binornd n 0", [](double*, int* k) { return binornd(k, 0, 5, 0.5); }, kParam},
        {"binornd NaN p", [](double*, int* k) { return binornd(k, 8, 5, kNaN); }, kParam},
        {"binornd p > 1", [](double*, int* k) { return binornd(k, 8, 5, 1.5); },
         ZEMATH_NAG_REAL_ARG_GT},
        {"binornd p < 0", [](double*, int* k) { return binornd(k, 8, 5, -0.1); },
         ZEMATH_NAG_REAL_ARG_LT},
        {"binornd trials < 0", [](double*, int* k) { return binornd(k, 8, -1, 0.5); },
         ZEMATH_NAG_INT_ARG_LT},
        {"geornd n -1", [](double*, int* k) { return geornd(k, -1, 0.5); }, kParam},
        {"geornd NANUM", [](double*, int* k) { return geornd(k, 8, NANUM); }, kParam},
        {"geornd p 0", [](double*, int* k) { return geornd(k, 8, 0.0); }, ZEMATH_NAG_REAL_ARG_LE},
        {"geornd p > 1", [](double*, int* k) { return geornd(k, 8, 1.01); },
         ZEMATH_NAG_REAL_ARG_GT},
        {"geornd p tiny", [](double*, int* k) { return geornd(k, 8, 1e-9); },
         ZEMATH_NAG_REAL_ARG_TOO_SMALL},
        {"nbinrnd null", [](double*, int*) { return nbinrnd(nullptr, 8, 2, 0.5); }, kParam},
        {"nbinrnd m 0", [](double*, int* k) { return nbinrnd(k, 8, 0, 0.5); },
         ZEMATH_NAG_INT_ARG_LT},
        {"nbinrnd p inf", [](double*, int* k) { return nbinrnd(k, 8, 2, kInf); }, kParam},
        {"nbinrnd p 0", [](double*, int* k) { return nbinrnd(k, 8, 2, 0.0); },
         ZEMATH_NAG_REAL_ARG_LE},
        {"nbinrnd mean too large", [](double*, int* k) { return nbinrnd(k, 8, 1000, 1e-7); },
         ZEMATH_NAG_REAL_ARG_TOO_SMALL},
        {"poissrnd n 0", [](double*, int* k) { return poissrnd(k, 0, 1.0); }, kParam},
        {"poissrnd NaN", [](double*, int* k) { return poissrnd(k, 8, kNaN); }, kParam},
        {"poissrnd lambda < 0", [](double*, int* k) { return poissrnd(k, 8, -1.0); },
         ZEMATH_NAG_REAL_ARG_LT},
        {"poissrnd lambda too large", [](double*, int* k) { return poissrnd(k, 8, 2e9); },
         ZEMATH_NAG_REAL_ARG_GT},
        {"hygernd null", [](double*, int*) { return hygernd(nullptr, 8, 10, 5, 5); }, kParam},
        {"hygernd negative", [](double*, int* k) { return hygernd(k, 8, 10, -1, 5); },
         ZEMATH_NAG_INT_ARG_LT},
        {"hygernd sample > population", [](double*, int* k) { return hygernd(k, 8, 10, 11, 5); },
         ZEMATH_NAG_INT},
        {"hygernd successes > population", [](double*, int* k) { return hygernd(k, 8, 10, 5, 11); },
         ZEMATH_NAG_INT},
        {"unidrnd n 0", [](double*, int* k) { return unidrnd(k, 0, 1, 6); }, kParam},
        {"unidrnd lowest > highest", [](double*, int* k) { return unidrnd(k, 8, 6, 1); },
         ZEMATH_NAG_INT},
        {"disrnd null out", [&](double*, int*) { return disrnd(nullptr, 8, table, 2, 0, 0); },
         kParam},
        {"disrnd null table", [](double*, int* k) { return disrnd(k, 8, nullptr, 2, 0, 0); },
         kParam},
        {"disrnd flag 2", [&](double*, int* k) { return disrnd(k, 8, table, 2, 0, 2); }, kParam},
        {"disrnd size 0", [&](double*, int* k) { return disrnd(k, 8, table, 0, 0, 0); },
         ZEMATH_NAG_INT_ARG_LT},
        {"disrnd NaN entry",
         [](double*, int* k) {
             const double t[] = {0.5, kNaN, 0.5};
             return disrnd(k, 8, t, 3, 0, 0);
         },
         kParam},
        {"disrnd negative entry",
         [](double*, int* k) {
             const double t[] = {0.6, -0.1, 0.5};
             return disrnd(k, 8, t, 3, 0, 0);
         },
         ZEMATH_NAG_REAL_ARG_LT},
        {"disrnd sum 0.9",
         [](double*, int* k) {
             const double t[] = {0.5, 0.4};
             return disrnd(k, 8, t, 2, 0, 0);
         },
         ZEMATH_NAG_REAL},
        {"disrnd decreasing cdf",
         [](double*, int* k) {
             const double t[] = {0.5, 0.4, 1.0};
             return disrnd(k, 8, t, 3, 0, 1);
         },
         ZEMATH_NAG_REAL},
        {"disrnd last value overflows",
         [&](double*, int* k) { return disrnd(k, 8, table, 2, INT_MAX, 0); }, ZEMATH_NAG_INT},
        {"mvnrnd null out", [&](double*, int*) { return mvnrnd(nullptr, 4, 2, mu2, identity2); },
         kParam},
        {"mvnrnd samples 0", [&](double* d, int*) { return mvnrnd(d, 0, 2, mu2, identity2); },
         kParam},
        {"mvnrnd samples -1", [&](double* d, int*) { return mvnrnd(d, -1, 2, mu2, identity2); },
         kParam},
        {"mvnrnd null mean", [&](double* d, int*) { return mvnrnd(d, 4, 2, nullptr, identity2); },
         kParam},
        {"mvnrnd null covariance", [&](double* d, int*) { return mvnrnd(d, 4, 2, mu2, nullptr); },
         kParam},
        {"mvnrnd dimension 0", [&](double* d, int*) { return mvnrnd(d, 4, 0, mu2, identity2); },
         ZEMATH_NAG_INT_ARG_LT},
        {"mvnrnd NANUM mean",
         [&](double* d, int*) {
             const double m[] = {0.0, NANUM};
             return mvnrnd(d, 4, 2, m, identity2);
         },
         kParam},
        {"mvnrnd inf covariance",
         [&](double* d, int*) {
             const double c[] = {1.0, 0.0, 0.0, kInf};
             return mvnrnd(d, 4, 2, mu2, c);
         },
         kParam},
        {"mvnrnd not symmetric",
         [&](double* d, int*) {
             const double c[] = {1.0, 0.5, 0.2, 1.0};
             return mvnrnd(d, 4, 2, mu2, c);
         },
         ZEMATH_NAG_REAL},
        {"mvnrnd indefinite",
         [&](double* d, int*) {
             const double c[] = {1.0, 2.0, 2.0, 1.0};
             return mvnrnd(d, 4, 2, mu2, c);
         },
         ZEMATH_NAG_REAL},
        {"permrnd null", [](double*, int*) { return permrnd(nullptr, 4); }, kParam},
        {"permrnd n 0", [](double* d, int*) { return permrnd(d, 0); }, kParam},
        {"permrnd n -3", [](double* d, int*) { return permrnd(d, -3); }, kParam},
    };
    for (const auto& r : refusals) {
        double d[8];
        int k[8];
        std::fill(d, d + 8, kSentinel);
        std::fill(k, k + 8, kIntSentinel);
        EXPECT_EQ(r.call(d, k), r.expected) << r.name;
        for (int i = 0; i < 8; ++i) {
            ASSERT_EQ(d[i], kSentinel) << r.name;
            ASSERT_EQ(k[i], kIntSentinel) << r.name;
        }
    }
    // permrnd with bad end values must leave every element alone (it overwrites in place).
    for (double bad : {kNaN, kInf, -kInf, NANUM}) {
        double first_bad[] = {bad, 1.0, 2.0}, last_bad[] = {0.0, 1.0, bad};
        EXPECT_EQ(permrnd(first_bad, 3), kParam);
        EXPECT_EQ(permrnd(last_bad, 3), kParam);
        EXPECT_EQ(first_bad[1], 1.0);
        EXPECT_EQ(last_bad[1], 1.0);
    }
}

TEST(RandomStreams, TwoCallsWithEqualArgumentsDiffer) {
    const double table[] = {0.2, 0.2, 0.2, 0.2, 0.2};
    const double mu[] = {0.0, 1.0};
    const double cov[] = {1.0, 0.3, 0.3, 2.0};
    const std::vector<std::pair<const char*, std::function<int(double*, int)>>> real = {
        {"normrnd", [](double* o, int n) { return normrnd(o, n, 0, 1); }},
        {"unifrnd", [](double* o, int n) { return unifrnd(o, n, 0, 1); }},
        {"exprnd", [](double* o, int n) { return exprnd(o, n, 1); }},
        {"betarnd", [](double* o, int n) { return betarnd(o, n, 2, 3); }},
        {"gamrnd", [](double* o, int n) { return gamrnd(o, n, 2, 1); }},
        {"chi2rnd", [](double* o, int n) { return chi2rnd(o, n, 3); }},
        {"trnd", [](double* o, int n) { return trnd(o, n, 3); }},
        {"frnd", [](double* o, int n) { return frnd(o, n, 3, 4); }},
        {"caurnd", [](double* o, int n) { return caurnd(o, n, 0, 1); }},
        {"lognrnd", [](double* o, int n) { return lognrnd(o, n, 0, 1); }},
        {"lgsrnd", [](double* o, int n) { return lgsrnd(o, n, 0, 1); }},
        {"wblrnd", [](double* o, int n) { return wblrnd(o, n, 2, 1); }},
        {"trirnd", [](double* o, int n) { return trirnd(o, n, 0, 1, 2); }},
        {"mvnrnd", [&](double* o, int n) { return mvnrnd(o, n / 2, 2, mu, cov); }},
        {"permrnd",
         [](double* o, int n) {
             o[0] = 0.0;
             o[n - 1] = n - 1.0;
             return permrnd(o, n);
         }},
    };
    const std::vector<std::pair<const char*, std::function<int(int*, int)>>> integer = {
        {"binornd", [](int* o, int n) { return binornd(o, n, 100, 0.5); }},
        {"geornd", [](int* o, int n) { return geornd(o, n, 0.1); }},
        {"nbinrnd", [](int* o, int n) { return nbinrnd(o, n, 5, 0.3); }},
        {"poissrnd", [](int* o, int n) { return poissrnd(o, n, 20); }},
        {"hygernd", [](int* o, int n) { return hygernd(o, n, 200, 100, 100); }},
        {"unidrnd", [](int* o, int n) { return unidrnd(o, n, 0, 1000); }},
        {"disrnd", [&](int* o, int n) { return disrnd(o, n, table, 5, 0, 0); }},
    };
    // 200 draws: two calls agreeing everywhere by chance is below 5^-200 for all of these.
    constexpr int n = 200;
    for (const auto& [name, draw] : real) {
        std::vector<double> a(n), b(n);
        ASSERT_EQ(draw(a.data(), n), 0) << name;
        ASSERT_EQ(draw(b.data(), n), 0) << name;
        EXPECT_NE(a, b) << name;
    }
    for (const auto& [name, draw] : integer) {
        std::vector<int> a(n), b(n);
        ASSERT_EQ(draw(a.data(), n), 0) << name;
        ASSERT_EQ(draw(b.data(), n), 0) << name;
        EXPECT_NE(a, b) << name;
    }
}

TEST(RandomStreams, ConcurrentCallsAreIndependent) {
    // Four threads at once, each with its own state, sharing only the read-only tables.
    constexpr int threads = 4, n = 2000;
    std::vector<std::vector<double>> results(threads, std::vector<double>(n));
    std::vector<int> status(threads, -1);
    std::vector<std::thread> pool;
    for (int t = 0; t < threads; ++t) {
        pool.emplace_back([&, t] { status[t] = gamrnd(results[t].data(), n, 3.0, 1.0); });
    }
    for (auto& thread : pool) thread.join();
    for (int t = 0; t < threads; ++t) {
        EXPECT_EQ(status[t], 0);
        const double mean = std::accumulate(results[t].begin(), results[t].end(), 0.0) / n;
        EXPECT_NEAR(mean, 3.0, 0.25);  // standard error 0.039
        for (int u = 0; u < t; ++u) EXPECT_NE(results[t], results[u]);
    }
}
