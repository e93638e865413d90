// Random-sample exports: every generator passes a goodness-of-fit test against Boost.Math's
// law (an independent implementation): Kolmogorov-Smirnov for continuous laws, Pearson
// chi-square for discrete ones. A test fails only at p < 1e-6, so the suite (some thirty
// such tests) fails spuriously less than once in 10^4 runs, while a parameter read the
// textbook way (sd for variance, rate for mean, ...) gives p far below 1e-100 at 1e5
// samples. Also: two calls never repeat, the parameter limits, and refusals that write
// nothing, each documented status code at least once.
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <unistd.h>

#include <boost/math/distributions.hpp>

#include <algorithm>
#include <cfloat>
#include <limits>
#include <climits>
#include <cmath>
#include <fstream>
#include <functional>
#include <map>
#include <numeric>
#include <thread>
#include <tuple>
#include <vector>

#include "zemath/random.h"
#include "zemath/status.h"

namespace bm = boost::math;

namespace {

constexpr int kSamples = 100000;
constexpr double kLevel = 1e-6;
constexpr double kSentinel = -7777.25;
constexpr int kParam = ZEMATH_ERR_PARAM_RANGE;

// Kolmogorov-Smirnov p-value against a continuous cdf: asymptotic Kolmogorov law with
// Stephens' small-sample correction.
double ks_p_value(std::vector<double> x, const std::function<double(double)>& cdf) {
    if (std::any_of(x.begin(), x.end(), [](double v) { return std::isnan(v); })) return 0.0;
    std::sort(x.begin(), x.end());
    const double n = static_cast<double>(x.size());
    double d = 0.0;
    for (std::size_t i = 0; i < x.size(); ++i) {
        const double f = cdf(x[i]);
        d = std::max({d, f - i / n, (i + 1) / n - f});
    }
    const double lambda = (std::sqrt(n) + 0.12 + 0.11 / std::sqrt(n)) * d;
    if (lambda < 0.2) return 1.0;  // the alternating series is useless there; D is tiny
    double p = 0.0;
    for (int k = 1; k <= 100; ++k) p += (k % 2 ? 2 : -2) * std::exp(-2.0 * k * k * lambda * lambda);
    return std::clamp(p, 0.0, 1.0);
}

// Pearson chi-square p-value against a pmf on lo, lo+1, ...: consecutive values are pooled
// until a bin expects at least 5; the last bin takes the whole remaining tail. Values
// below lo or of probability 0 (before the tail) fail outright.
double chi2_p_value(const std::vector<int>& x, const std::function<double(long)>& pmf, long lo) {
    std::map<long, double> counts;
    for (int v : x) counts[v] += 1.0;
    if (counts.begin()->first < lo) return 0.0;
    const double n = static_cast<double>(x.size());
    double chi2 = 0.0, cumulative = 0.0, expected = 0.0, observed = 0.0;
    int bins = 0;
    for (long k = lo;; ++k) {
        cumulative += pmf(k);
        expected += n * pmf(k);
        observed += counts[k];
        if (pmf(k) == 0.0 && counts[k] > 0.0) return 0.0;  // an impossible value occurred
        const bool last = n * (1.0 - cumulative) < 5.0;
        if (!last && expected < 5.0) continue;
        if (last) {
            expected += n * std::max(0.0, 1.0 - cumulative);
            for (auto it = counts.upper_bound(k); it != counts.end(); ++it) observed += it->second;
        }
        chi2 += (observed - expected) * (observed - expected) / expected;
        ++bins;
        expected = observed = 0.0;
        if (last) break;
    }
    return bins < 2 ? 1.0 : bm::cdf(bm::complement(bm::chi_squared(bins - 1), chi2));
}

template <class Law>
std::function<double(double)> cdf_of(Law law) {
    return [law](double x) { return bm::cdf(law, x); };
}

template <class Law>
std::function<double(long)> pmf_of(Law law, long hi = LONG_MAX) {
    return [law, hi](long k) { return k > hi ? 0.0 : bm::pdf(law, static_cast<double>(k)); };
}

// A table row's name and call: the call's text, and the call writing to o[0..n-1].
#define DRAW(call) #call, [&]([[maybe_unused]] auto* o, [[maybe_unused]] int n) { return call; }

// Table rows: (name, draw, what the check needs).
template <class T, class... Check>
using Rows = std::vector<std::tuple<const char*, std::function<int(T*, int)>, Check...>>;

// Draws the full sample for the fit, then a short second sample that must not repeat it.
template <class T>
std::vector<T> draw_twice(const char* name, const std::function<int(T*, int)>& draw) {
    std::vector<T> x(kSamples), again(200);
    EXPECT_EQ(draw(x.data(), kSamples), 0) << name;
    EXPECT_EQ(draw(again.data(), 200), 0) << name;
    EXPECT_FALSE(std::equal(again.begin(), again.end(), x.begin())) << name;
    return x;
}

}  // namespace

// The rows marked "trap" would fail outright with the textbook reading of the parameter.
TEST(RandomGoodnessOfFit, EveryGenerator) {
    const Rows<double, std::function<double(double)>> continuous = {
        {DRAW(normrnd(o, n, 1.5, 4.0)), cdf_of(bm::normal(1.5, 2.0))},  // trap: variance
        {DRAW(unifrnd(o, n, -2.0, 5.0)), cdf_of(bm::uniform_distribution<>(-2.0, 5.0))},
        {DRAW(exprnd(o, n, 2.5)), cdf_of(bm::exponential(0.4))},  // trap: the mean, not the rate
        {DRAW(betarnd(o, n, 2.5, 3.5)), cdf_of(bm::beta_distribution<>(2.5, 3.5))},
        {DRAW(betarnd(o, n, 0.2, 0.3)), cdf_of(bm::beta_distribution<>(0.2, 0.3))},  // in logs
        {DRAW(gamrnd(o, n, 2.5, 2.0)), cdf_of(bm::gamma_distribution<>(2.5, 2.0))},  // scale
        {DRAW(gamrnd(o, n, 0.3, 1.5)), cdf_of(bm::gamma_distribution<>(0.3, 1.5))},
        {DRAW(chi2rnd(o, n, 7)), cdf_of(bm::chi_squared(7))},
        {DRAW(trnd(o, n, 5)), cdf_of(bm::students_t(5))},
        {DRAW(frnd(o, n, 3, 8)), cdf_of(bm::fisher_f(3, 8))},
        {DRAW(caurnd(o, n, 1.0, 2.0)), cdf_of(bm::cauchy(1.0, 2.0))},
        {DRAW(lognrnd(o, n, 0.5, 0.64)), cdf_of(bm::lognormal(0.5, 0.8))},  // trap: var of ln X
        {DRAW(lgsrnd(o, n, 1.0, 0.5)), cdf_of(bm::logistic(1.0, 0.5))},
        {DRAW(wblrnd(o, n, 2.0, 9.0)), cdf_of(bm::weibull(2.0, 3.0))},  // trap: b = lambda^a
        {DRAW(trirnd(o, n, -1.0, 0.5, 3.0)), cdf_of(bm::triangular(-1.0, 0.5, 3.0))},
        {DRAW(trirnd(o, n, 0.0, 0.0, 1.0)), cdf_of(bm::triangular(0.0, 0.0, 1.0))},
    };
    for (const auto& [name, draw, cdf] : continuous)
        EXPECT_GE(ks_p_value(draw_twice(name, draw), cdf), kLevel) << name;

    // Several rows per generator where the method changes with the parameters.
    static const double pdf[] = {0.1, 0.0, 0.25, 0.4, 0.25}, cdf[] = {0.05, 0.3, 0.3, 0.9, 1.0};
    const Rows<int, std::function<double(long)>, long> discrete = {
        {DRAW(binornd(o, n, 20, 0.3)), pmf_of(bm::binomial(20, 0.3), 20), 0},        // inversion
        {DRAW(binornd(o, n, 1000, 0.7)), pmf_of(bm::binomial(1000, 0.7), 1000), 0},  // BTRD
        {DRAW(poissrnd(o, n, 3.5)), pmf_of(bm::poisson(3.5)), 0},                    // inversion
        {DRAW(poissrnd(o, n, 42.0)), pmf_of(bm::poisson(42.0)), 0},                  // PTRS
        {DRAW(geornd(o, n, 0.2)), pmf_of(bm::geometric(0.2)), 0},  // trap: counts failures
        {DRAW(nbinrnd(o, n, 3, 0.2)), pmf_of(bm::negative_binomial(3, 0.2)), 0},
        // Boost's hypergeometric(r, n, N): r successes, sample n, population N.
        {DRAW(hygernd(o, n, 100, 10, 30)), pmf_of(bm::hypergeometric(30, 10, 100), 10), 0},
        {DRAW(hygernd(o, n, 1000, 700, 600)), pmf_of(bm::hypergeometric(600, 700, 1000), 600), 300},
        {DRAW(unidrnd(o, n, -3, 7)), [](long k) { return k <= 7 ? 1.0 / 11.0 : 0.0; }, -3},
        {DRAW(disrnd(o, n, pdf, 5, 10, 0)), [](long k) { return k <= 14 ? pdf[k - 10] : 0.0; }, 10},
        {DRAW(disrnd(o, n, cdf, 5, -2, 1)),
         [](long k) { return k > 2 ? 0.0 : cdf[k + 2] - (k == -2 ? 0.0 : cdf[k + 1]); }, -2},
    };
    for (const auto& [name, draw, pmf, lo] : discrete)
        EXPECT_GE(chi2_p_value(draw_twice(name, draw), pmf, lo), kLevel) << name;
}

TEST(RandomMultivariateNormal, SingularCovarianceFollowsItsLaw) {
    // c = A A^T with A 3 x 2 has rank 2; the rows of A satisfy a1 - a2 + a3 = 0, so every
    // sample lies in the plane (x - mu) . (1, -1, 1) = 0.
    const double a[3][2] = {{1.0, 0.5}, {2.0, -1.0}, {1.0, -1.5}}, mu[3] = {1.0, -2.0, 0.5};
    double c[9];
    for (int i = 0; i < 9; ++i) c[i] = a[i / 3][0] * a[i % 3][0] + a[i / 3][1] * a[i % 3][1];
    std::vector<double> x(3 * kSamples), again(6);
    ASSERT_EQ(mvnrnd(x.data(), kSamples, 3, mu, c), 0);
    ASSERT_EQ(mvnrnd(again.data(), 2, 3, mu, c), 0);
    EXPECT_FALSE(std::equal(again.begin(), again.end(), x.begin()));
    const double projections[][3] = {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}, {0.3, 0.7, -0.2}};
    for (const auto& w : projections) {
        double m = 0.0, v = 0.0;
        for (int i = 0; i < 9; ++i) v += w[i / 3] * c[i] * w[i % 3];
        for (int i = 0; i < 3; ++i) m += w[i] * mu[i];
        std::vector<double> y(kSamples);
        for (int s = 0; s < kSamples; ++s)
            y[s] = w[0] * x[3 * s] + w[1] * x[3 * s + 1] + w[2] * x[3 * s + 2];
        EXPECT_GE(ks_p_value(y, cdf_of(bm::normal(m, std::sqrt(v)))), kLevel)
            << w[0] << w[1] << w[2];
    }
    double worst = 0.0;
    for (int s = 0; s < kSamples; ++s)
        worst = std::max(worst, std::abs(x[3 * s] - x[3 * s + 1] + x[3 * s + 2] - 3.5));
    EXPECT_LT(worst, 1e-12);  // mu1 - mu2 + mu3 = 3.5
}

TEST(RandomPermutation, OnlyTheEndsMatter) {
    // Interior values are ignored, even NaN; ends at +-DBL_MAX must not overflow the step;
    // n = 1 leaves x alone.
    const std::vector<std::pair<std::vector<double>, std::vector<double>>> cases = {
        {{1.0, 0.0, 0.0, 4.0}, {1.0, 2.0, 3.0, 4.0}},
        {{5.0, NAN, -INFINITY, NANUM, -1.0}, {-1.0, 0.5, 2.0, 3.5, 5.0}},
        {{-DBL_MAX, 7.0, DBL_MAX}, {-DBL_MAX, 0.0, DBL_MAX}},
        {{kSentinel}, {kSentinel}},
    };
    for (auto [x, sorted] : cases) {
        ASSERT_EQ(permrnd(x.data(), static_cast<int>(x.size())), 0);
        std::sort(x.begin(), x.end());
        EXPECT_EQ(x, sorted);
    }
}

// Ends a few denormals apart: the step rounds to a whole number of units, up as often as
// down, and a step rounded up carried the last values past x[n-1] (0 to 234 units over 62
// intervals stepped by 4, up to 244 units).
TEST(RandomPermutation, DenormalSpansStayBetweenTheEnds) {
    const double unit = std::numeric_limits<double>::denorm_min();
    const double ends[][2] = {{0.0, 234 * unit},
                              {234 * unit, 0.0},
                              {-5 * unit, 7 * unit},
                              {-DBL_MIN, -DBL_MIN + 50 * unit}};
    for (const auto& ab : ends) {
        for (int n : {3, 10, 63, 64}) {
            std::vector<double> x(n, 0.0);
            x.front() = ab[0];
            x.back() = ab[1];
            ASSERT_EQ(permrnd(x.data(), n), 0);
            const double lo = std::min(ab[0], ab[1]), hi = std::max(ab[0], ab[1]);
            for (double v : x) EXPECT_TRUE(v >= lo && v <= hi) << v / unit << " n " << n;
            EXPECT_GE(std::count(x.begin(), x.end(), ab[1]), 1) << n;
        }
    }
}

// Ends anywhere in the double range: the evenly spaced values lie between the ends (none
// overflowed to infinity or NaN when the span exceeded DBL_MAX, e.g. n = 2 from DBL_MAX
// to -DBL_MAX gave NaN, n = 5 from -DBL_MAX gave infinity), the ends themselves are kept, and each
// value appears once.
TEST(RandomPermutation, ExtremeEndsStayBetweenThem) {
    const double ends[][2] = {{-DBL_MAX, DBL_MAX}, {DBL_MAX, -DBL_MAX}, {-DBL_MAX, -DBL_MAX},
                              {1e-300, -1e-300},   {-1e308, 1.7e308},   {0.0, DBL_MAX}};
    for (const auto& ab : ends) {
        for (int n : {2, 3, 5, 64}) {
            std::vector<double> x(n, 0.0);
            x.front() = ab[0];
            x.back() = ab[1];
            ASSERT_EQ(permrnd(x.data(), n), 0) << ab[0] << " " << ab[1] << " n " << n;
            const double lo = std::min(ab[0], ab[1]), hi = std::max(ab[0], ab[1]);
            for (double v : x) EXPECT_TRUE(v >= lo && v <= hi) << v << " n " << n;
            EXPECT_EQ(std::count(x.begin(), x.end(), ab[0]), ab[0] == ab[1] ? n : 1);
            std::sort(x.begin(), x.end());
            if (lo < hi) {
                EXPECT_TRUE(std::adjacent_find(x.begin(), x.end()) == x.end()) << n;
            }
        }
    }
}

TEST(RandomPermutation, EveryOrderEquallyLikely) {
    // 24000 calls of 4 values, each order coded in base 4: the 24 orders expect 1000 each,
    // codes with a repeated digit none.
    std::vector<int> order(24000);
    for (int& code : order) {
        double x[] = {0.0, 1.0, 2.0, 3.0};
        ASSERT_EQ(permrnd(x, 4), 0);
        code = 0;
        for (double v : x) code = code * 4 + static_cast<int>(v);
    }
    const auto pmf = [](long code) {
        int seen = 0;
        for (int i = 0; i < 4; ++i, code /= 4) seen |= 1 << (code % 4);
        return code == 0 && seen == 15 ? 1.0 / 24 : 0.0;
    };
    EXPECT_GE(chi2_p_value(order, pmf, 0), kLevel);
}

TEST(RandomExtremes, ParametersAtTheLimitsStayInRange) {
    const double half = INT_MAX / 2.0, spread = 10 * std::sqrt(INT_MAX / 4.0);
    // Zero-probability ends never occur; a sum off by rounding (within 1e-6) is accepted.
    const double zero_ends[] = {0.0, 1.0, 0.0}, rounded[] = {0.3333333, 0.3333333, 0.3333333};
    const Rows<double, double, double> reals = {
        {DRAW(unifrnd(o, n, -DBL_MAX, DBL_MAX)), -DBL_MAX, DBL_MAX},
        {DRAW(trirnd(o, n, -DBL_MAX, 0.0, DBL_MAX)), -DBL_MAX, DBL_MAX},
        {DRAW(unifrnd(o, n, 2.5, 2.5)), 2.5, 2.5},
        {DRAW(normrnd(o, n, 3.0, 0.0)), 3.0, 3.0},
        {DRAW(caurnd(o, n, -1.0, 0.0)), -1.0, -1.0},
        {DRAW(betarnd(o, n, 1e-3, 1e-3)), 0.0, 1.0},
        {DRAW(betarnd(o, n, 1e-310, 1e-310)), 0.0, 1.0},  // both gammas underflow: no 0/0
    };
    const Rows<int, double, double> ints = {
        {DRAW(unidrnd(o, n, INT_MIN, INT_MAX)), INT_MIN, INT_MAX},
        {DRAW(binornd(o, n, INT_MAX, 0.5)), half - spread, half + spread},
        {DRAW(binornd(o, n, 7, 1.0)), 7, 7},
        {DRAW(poissrnd(o, n, 1073741823.0)), 1073000000, INT_MAX},
        {DRAW(poissrnd(o, n, 0.0)), 0, 0},
        {DRAW(hygernd(o, n, INT_MAX, INT_MAX / 2, INT_MAX / 3)), 0, INT_MAX / 3},
        {DRAW(geornd(o, n, 2e-8)), 0, INT_MAX},
        {DRAW(nbinrnd(o, n, INT_MAX, 0.9)), 0, INT_MAX},
        {DRAW(disrnd(o, n, zero_ends, 3, 4, 0)), 5, 5},
        {DRAW(disrnd(o, n, rounded, 3, 0, 0)), 0, 2},
    };
    auto check = [](const auto& rows, auto sample) {
        for (const auto& [name, draw, lo, hi] : rows) {
            ASSERT_EQ(draw(sample.data(), 1000), 0) << name;
            for (auto v : sample) ASSERT_TRUE(v >= lo && v <= hi) << name << ": " << v;
        }
    };
    check(reals, std::vector<double>(1000));
    check(ints, std::vector<int>(1000));
}

// Laws reaching past the double range: the samples out there are +-infinity of the sign the
// law gives them, the others finite; none is NaN (a scale times an infinite variate, or
// infinity minus infinity, would be).
TEST(RandomExtremes, SamplesBeyondTheDoubleRangeAreInfiniteNeverNaN) {
    const Rows<double, double, double> rows = {
        {DRAW(lognrnd(o, n, 1000.0, 0.0)), 0.0, INFINITY},  // every sample e^1000
        {DRAW(lognrnd(o, n, 700.0, 100.0)), 0.0, INFINITY},
        {DRAW(exprnd(o, n, DBL_MAX)), 0.0, INFINITY},
        {DRAW(caurnd(o, n, 0.0, DBL_MAX)), -INFINITY, INFINITY},
        {DRAW(caurnd(o, n, DBL_MAX, 1e300)), -INFINITY, INFINITY},
        {DRAW(lgsrnd(o, n, -DBL_MAX, 1e300)), -INFINITY, INFINITY},
        {DRAW(wblrnd(o, n, 1e-3, 1.0)), 0.0, INFINITY},
        {DRAW(gamrnd(o, n, DBL_MAX, 2.0)), 0.0, INFINITY},
        {DRAW(normrnd(o, n, DBL_MAX, DBL_MAX)), -INFINITY, INFINITY},
    };
    std::vector<double> sample(1000);
    for (const auto& [name, draw, lo, hi] : rows) {
        ASSERT_EQ(draw(sample.data(), 1000), 0) << name;
        for (double v : sample) ASSERT_TRUE(v >= lo && v <= hi) << name << ": " << v;
    }
    ASSERT_EQ(lognrnd(sample.data(), 1000, 1000.0, 0.0), 0);
    for (double v : sample) EXPECT_EQ(v, INFINITY);
}

TEST(RandomRefusals, BadArgumentsGiveTheirStatusAndWriteNothing) {
    const double table[] = {0.5, 0.5}, mu[] = {0.0, 0.0}, identity[] = {1.0, 0.0, 0.0, 1.0};
    const double nanum_mu[] = {0.0, NANUM}, inf_cov[] = {1.0, 0.0, 0.0, INFINITY};
    const double skew[] = {1.0, 0.5, 0.2, 1.0}, indefinite[] = {1.0, 2.0, 2.0, 1.0};
    const double nan_entry[] = {0.5, NAN, 0.5}, negative[] = {0.6, -0.1, 0.5};
    const double short_sum[] = {0.5, 0.4}, decreasing[] = {0.5, 0.4, 1.0};
    // Each row is called with o holding n = 8 sentinels.
    const Rows<double, int> reals = {
        {DRAW(normrnd(nullptr, n, 0, 1)), kParam},
        {DRAW(normrnd(o, 0, 0, 1)), kParam},
        {DRAW(normrnd(o, n, NAN, 1)), kParam},
        {DRAW(normrnd(o, n, NANUM, 1)), kParam},
        {DRAW(normrnd(o, n, 0, -1)), ZEMATH_NAG_REAL_ARG_LT},
        {DRAW(unifrnd(o, n, -INFINITY, 1)), kParam},
        {DRAW(unifrnd(o, n, 2, 1)), ZEMATH_NAG_REAL},
        {DRAW(exprnd(o, n, NANUM)), kParam},
        {DRAW(exprnd(o, n, 0)), ZEMATH_NAG_REAL_ARG_LE},
        {DRAW(betarnd(o, n, NAN, 1)), kParam},
        {DRAW(betarnd(o, n, 1, 0)), ZEMATH_NAG_REAL_ARG_LE},
        {DRAW(gamrnd(o, n, 1, NANUM)), kParam},
        {DRAW(gamrnd(o, n, -1, 1)), ZEMATH_NAG_REAL_ARG_LE},
        {DRAW(chi2rnd(o, -5, 3)), kParam},
        {DRAW(chi2rnd(o, n, 0)), ZEMATH_NAG_INT_ARG_LT},
        {DRAW(trnd(nullptr, n, 3)), kParam},
        {DRAW(trnd(o, n, -1)), ZEMATH_NAG_INT_ARG_LT},
        {DRAW(frnd(o, 0, 3, 3)), kParam},
        {DRAW(frnd(o, n, 3, 0)), ZEMATH_NAG_INT_ARG_LT},
        {DRAW(caurnd(o, n, INFINITY, 1)), kParam},
        {DRAW(caurnd(o, n, 0, -1)), ZEMATH_NAG_REAL_ARG_LT},
        {DRAW(lognrnd(o, n, 0, NAN)), kParam},
        {DRAW(lognrnd(o, n, 0, -0.5)), ZEMATH_NAG_REAL_ARG_LT},
        {DRAW(lgsrnd(o, n, NANUM, 1)), kParam},
        {DRAW(lgsrnd(o, n, 0, 0)), ZEMATH_NAG_REAL_ARG_LE},
        {DRAW(wblrnd(nullptr, n, 1, 1)), kParam},
        {DRAW(wblrnd(o, n, 0, 1)), ZEMATH_NAG_REAL_ARG_LE},
        {DRAW(trirnd(o, n, 0, NAN, 1)), kParam},
        {DRAW(trirnd(o, n, 0, 2, 1)), ZEMATH_NAG_REAL},
        {DRAW(trirnd(o, n, 1, 1, 1)), ZEMATH_NAG_REAL},
        {DRAW(mvnrnd(nullptr, 4, 2, mu, identity)), kParam},
        {DRAW(mvnrnd(o, 0, 2, mu, identity)), kParam},
        {DRAW(mvnrnd(o, 4, 2, nullptr, identity)), kParam},
        {DRAW(mvnrnd(o, 4, 2, mu, nullptr)), kParam},
        {DRAW(mvnrnd(o, 4, 2, nanum_mu, identity)), kParam},
        {DRAW(mvnrnd(o, 4, 2, mu, inf_cov)), kParam},
        {DRAW(mvnrnd(o, 4, 0, mu, identity)), ZEMATH_NAG_INT_ARG_LT},
        {DRAW(mvnrnd(o, 4, 46341, mu, identity)), ZEMATH_NAG_INT_ARG_GT},
        {DRAW(mvnrnd(o, 4, 2, mu, skew)), ZEMATH_NAG_REAL},
        {DRAW(mvnrnd(o, 4, 2, mu, indefinite)), ZEMATH_NAG_REAL},
        {DRAW(permrnd(nullptr, 4)), kParam},
        {DRAW(permrnd(o, 0)), kParam},
    };
    const Rows<int, int> ints = {
        {DRAW(binornd(o, 0, 5, 0.5)), kParam},
        {DRAW(binornd(o, n, 5, NAN)), kParam},
        {DRAW(binornd(o, n, 5, 1.5)), ZEMATH_NAG_REAL_ARG_GT},
        {DRAW(binornd(o, n, 5, -0.1)), ZEMATH_NAG_REAL_ARG_LT},
        {DRAW(binornd(o, n, -1, 0.5)), ZEMATH_NAG_INT_ARG_LT},
        {DRAW(geornd(o, n, NANUM)), kParam},
        {DRAW(geornd(o, n, 0.0)), ZEMATH_NAG_REAL_ARG_LE},
        {DRAW(geornd(o, n, 1.01)), ZEMATH_NAG_REAL_ARG_GT},
        {DRAW(geornd(o, n, 1e-9)), ZEMATH_NAG_REAL_ARG_TOO_SMALL},
        {DRAW(nbinrnd(o, n, 2, INFINITY)), kParam},
        {DRAW(nbinrnd(o, n, 0, 0.5)), ZEMATH_NAG_INT_ARG_LT},
        {DRAW(nbinrnd(o, n, 2, 0.0)), ZEMATH_NAG_REAL_ARG_LE},
        {DRAW(nbinrnd(o, n, 1000, 1e-7)), ZEMATH_NAG_REAL_ARG_TOO_SMALL},
        {DRAW(poissrnd(o, n, NAN)), kParam},
        {DRAW(poissrnd(o, n, -1.0)), ZEMATH_NAG_REAL_ARG_LT},
        {DRAW(poissrnd(o, n, 2e9)), ZEMATH_NAG_REAL_ARG_GT},
        {DRAW(hygernd(nullptr, n, 10, 5, 5)), kParam},
        {DRAW(hygernd(o, n, 10, -1, 5)), ZEMATH_NAG_INT_ARG_LT},
        {DRAW(hygernd(o, n, 10, 11, 5)), ZEMATH_NAG_INT},
        {DRAW(hygernd(o, n, 10, 5, 11)), ZEMATH_NAG_INT},
        {DRAW(unidrnd(o, 0, 1, 6)), kParam},
        {DRAW(unidrnd(o, n, 6, 1)), ZEMATH_NAG_INT},
        {DRAW(disrnd(nullptr, n, table, 2, 0, 0)), kParam},
        {DRAW(disrnd(o, n, nullptr, 2, 0, 0)), kParam},
        {DRAW(disrnd(o, n, table, 2, 0, 2)), kParam},
        {DRAW(disrnd(o, n, nan_entry, 3, 0, 0)), kParam},
        {DRAW(disrnd(o, n, table, 0, 0, 0)), ZEMATH_NAG_INT_ARG_LT},
        {DRAW(disrnd(o, n, table, 1533916886, 0, 0)), ZEMATH_NAG_INT_ARG_GT},
        {DRAW(disrnd(o, n, negative, 3, 0, 0)), ZEMATH_NAG_REAL_ARG_LT},
        {DRAW(disrnd(o, n, short_sum, 2, 0, 0)), ZEMATH_NAG_REAL},
        {DRAW(disrnd(o, n, decreasing, 3, 0, 1)), ZEMATH_NAG_REAL},
        {DRAW(disrnd(o, n, table, 2, INT_MAX, 0)), ZEMATH_NAG_INT},
    };
    auto check = [](const auto& rows, auto sentinel) {
        for (const auto& [name, draw, code] : rows) {
            decltype(sentinel) buffer[8];
            std::fill(buffer, buffer + 8, sentinel);
            EXPECT_EQ(draw(buffer, 8), code) << name;
            EXPECT_EQ(std::count(buffer, buffer + 8, sentinel), 8) << name;
        }
    };
    check(reals, kSentinel);
    check(ints, -7777);
    // permrnd overwrites in place: bad end values must leave every element alone.
    for (double bad : std::initializer_list<double>{NAN, INFINITY, -INFINITY, NANUM}) {
        double first_bad[] = {bad, 1.0, 2.0}, last_bad[] = {0.0, 1.0, bad};
        EXPECT_EQ(permrnd(first_bad, 3), kParam);
        EXPECT_EQ(permrnd(last_bad, 3), kParam);
        EXPECT_EQ(first_bad[1] + first_bad[2] + last_bad[1], 4.0);
    }
}

#if !defined(__SANITIZE_ADDRESS__)  // its allocator cannot run under an address-space limit
// In a child process: an address-space limit 64 MB above the current size leaves no room
// for permrnd's 512 MB index. x is a read-only mapping of zero pages: nothing is touched.
[[noreturn]] static void permrnd_short_of_memory() {
    constexpr int n = 1 << 27;
    void* x = mmap(nullptr, sizeof(double) * n, PROT_READ,
                   MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    long pages = 0;
    std::ifstream("/proc/self/statm") >> pages;
    const rlim_t limit = static_cast<rlim_t>(pages * sysconf(_SC_PAGESIZE)) + (64 << 20);
    const rlimit space = {limit, limit};
    setrlimit(RLIMIT_AS, &space);
    std::_Exit(x != MAP_FAILED && permrnd(static_cast<double*>(x), n) == ZEMATH_ERR_ALLOC ? 0 : 1);
}

TEST(RandomRefusals, AllocationFailureIsReported) {
    EXPECT_EXIT(permrnd_short_of_memory(), testing::ExitedWithCode(0), "");
}
#endif

TEST(RandomStreams, ConcurrentCallsAreIndependent) {
    // Four threads at once, each with its own state, sharing only the read-only tables.
    std::vector<std::vector<double>> results(4, std::vector<double>(2000));
    {
        std::vector<std::jthread> pool;
        for (auto& r : results)
            pool.emplace_back([&r] { EXPECT_EQ(gamrnd(r.data(), 2000, 3, 1), 0); });
    }
    for (std::size_t t = 0; t < results.size(); ++t) {
        EXPECT_NEAR(std::accumulate(results[t].begin(), results[t].end(), 0.0) / 2000, 3.0, 0.25);
        for (std::size_t u = 0; u < t; ++u) EXPECT_NE(results[t], results[u]);
    }
}
