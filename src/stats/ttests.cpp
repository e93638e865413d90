// Parametric tests and confidence intervals: t tests from summaries and from raw data,
// the z, F and chi-square (variance) tests, confidence intervals for means and
// variances, and the power and sample size of t tests.
//
// Method: raw data are reduced to N, mean and SD (flag 0) by the moment engine, NANUM
// skipped. One-sample and paired P values come from the regularised incomplete beta
// I_{df/(df+t^2)}(df/2, 1/2); the two-sample test from the back end's g07cac (pooled or
// Satterthwaite degrees of freedom); quantiles from tinv, chi2inv and finv. Power uses the
// non-central t distribution (nctcdf): the probability that |T'| (or T' in the tested
// direction) passes the central critical value, both rejection regions counted for the
// two-tailed test. Accuracy: that of the distribution functions (1e-13 relative) plus
// a few roundings in the statistics.
#include <algorithm>
#include <climits>
#include <cmath>
#include <span>
#include <vector>

#include "core/guard.hpp"
#include "core/missing.hpp"
#include "platform/nag/g07.hpp"
#include "platform/util/probability.hpp"
#include "stats/moments.hpp"
#include "stats/parameter_fits.hpp"
#include "zemath/distributions.h"
#include "zemath/statistics.h"
#include "zemath/status.h"

namespace {

using zemath::is_missing;
using zemath::kNanum;

bool known(double v) {
    return !is_missing(v) && !std::isnan(v);
}

template <class T>
void put(T* target, T value) {
    if (target != nullptr) *target = value;
}

bool tail_ok(int tail) {
    return tail >= 0 && tail <= 2;
}

// P for the tail from the two-tailed value and the sign of the statistic.
double tail_probability(double two_tailed, double statistic, int tail) {
    if (tail == 1) return statistic > 0.0 ? two_tailed / 2.0 : 1.0 - two_tailed / 2.0;
    if (tail == 2) return statistic > 0.0 ? 1.0 - two_tailed / 2.0 : two_tailed / 2.0;
    return two_tailed;
}

// Two-tailed Student's t probability by the incomplete beta; NANUM when it cannot be formed.
double two_tailed_t(double t, double dof) {
    if (!(dof >= 1.0) || std::isnan(t)) return kNanum;
    const double x = dof / (dof + t * t);
    const double p = zemath::util::incbeta(x, dof / 2.0, 0.5);
    return known(p) ? p : kNanum;
}

struct Sample {
    int n = 0;
    double mean = kNanum, sd = kNanum, se = kNanum;
};

Sample summarize(const double* data, std::size_t n) {
    zemath::MomentSummary s;
    Sample r;
    zemath::moment_engine(std::span<const double>(data, n), {}, 0, s);
    r.n = s.usable;
    r.mean = s.mean;
    r.sd = s.sd;
    if (known(s.sd) && s.usable > 0) r.se = s.sd / std::sqrt(static_cast<double>(s.usable));
    return r;
}

int one_sample(const TTestSummary& summary, const TTestHypothesis& hyp,
               OneSampleTTestResults& res) {
    res.N = summary.N;
    res.Mean = summary.Mean;
    res.SD = summary.SD;
    res.SE = kNanum;
    res.t = res.P = kNanum;
    res.DOF = summary.N - 1;
    const double n = summary.N;
    const double t = std::sqrt(n) * (summary.Mean - hyp.Value) / summary.SD;
    if (is_missing(summary.Mean) || is_missing(summary.SD) || is_missing(t))
        return ZEMATH_ERR_PARAM_RANGE;
    res.t = t;
    const double dof = res.DOF;
    if (!(dof >= 1.0)) return ZEMATH_OK;  // one point: no spread, no P
    const double x = dof / (dof + t * t);
    if (is_missing(x)) return ZEMATH_ERR_PARAM_RANGE;
    const double two = two_tailed_t(t, dof);
    if (known(two)) res.P = tail_probability(two, t, hyp.TailType);
    return ZEMATH_OK;
}

void reset(TwoSampleTTestResults& r) {
    r.N1 = r.N2 = 0;
    r.Mean1 = r.SD1 = r.SE1 = r.Mean2 = r.SD2 = r.SE2 = kNanum;
    r.MeanDiff = r.SEDiff = r.DOF = r.t = r.P = kNanum;
}

void paired(const TTestSummary& diff, const TTestHypothesis& hyp, TwoSampleTTestResults& res) {
    reset(res);
    res.N1 = res.N2 = diff.N;
    res.Mean1 = res.Mean2 = res.MeanDiff = diff.Mean;
    res.SD1 = res.SD2 = diff.SD;
    if (diff.N == 1) {
        res.DOF = 0.0;
        return;
    }
    res.DOF = diff.N - 1.0;
    if (diff.SD != 0.0 && known(diff.SD) && known(diff.Mean)) {
        const double t =
            (diff.Mean - hyp.Value) / (diff.SD / std::sqrt(static_cast<double>(diff.N)));
        res.t = t;
        const double two = two_tailed_t(t, res.DOF);
        if (known(two)) res.P = tail_probability(two, t, hyp.TailType);
    }
}

zemath::nag::Nag_TailProbability g07_tail(int tail) {
    using zemath::nag::Nag_TailProbability;
    return tail == 1   ? Nag_TailProbability::Nag_UpperTail
           : tail == 2 ? Nag_TailProbability::Nag_LowerTail
                       : Nag_TailProbability::Nag_TwoTail;
}

void two_sample(const TTestSummary& s1, const TTestSummary& s2, const TTestHypothesis& hyp,
                TwoSampleTTestResults& res, double* unequal) {
    reset(res);
    res.N1 = s1.N;
    res.Mean1 = s1.Mean;
    res.SD1 = s1.SD;
    res.N2 = s2.N;
    res.Mean2 = s2.Mean;
    res.SD2 = s2.SD;
    if (known(s1.Mean) && known(s2.Mean)) res.MeanDiff = s1.Mean - s2.Mean;
    res.DOF = static_cast<double>(s1.N) + s2.N - 2.0;
    using zemath::nag::Nag_TestVariances;
    double t, dof, p, dl, du;
    zemath::nag::NagError fail;
    // The hypothesised difference is added to the second mean; 0.05 is the level of an
    // interval the test does not use.
    zemath::nag::g07cac(g07_tail(hyp.TailType), Nag_TestVariances::Nag_EqualVar, s1.N, s2.N,
                        s1.Mean, s2.Mean + hyp.Value, s1.SD, s2.SD, 0.05, &t, &dof, &p, &dl, &du,
                        &fail);
    if (!fail.failed()) {
        res.t = t;
        res.P = p;
    }
    if (unequal != nullptr) {
        unequal[0] = unequal[1] = unequal[2] = kNanum;
        zemath::nag::g07cac(g07_tail(hyp.TailType), Nag_TestVariances::Nag_UnequalVar, s1.N, s2.N,
                            s1.Mean, s2.Mean + hyp.Value, s1.SD, s2.SD, 0.05, &t, &dof, &p, &dl,
                            &du, &fail);
        if (!fail.failed()) {
            unequal[0] = t;
            unequal[1] = dof;
            unequal[2] = p;
        }
    }
}

// p from a confidence level: two-sided 1 - (1 - c) / 2, one-sided c.
double level_probability(double c, int one_sided) {
    return one_sided ? c : 1.0 - (1.0 - c) / 2.0;
}

bool level_ok(double c) {
    return c > 0.0 && c < 1.0;
}

// Tail probability of a statistic with a continuous law given its lower and upper tails.
double tail_from_both(double lower, double upper, int tail) {
    if (!known(lower) || !known(upper)) return kNanum;
    if (tail == 1) return upper;
    if (tail == 2) return lower;
    return std::min(1.0, 2.0 * std::min(lower, upper));
}

}  // namespace

// ---- Tests from summaries -----------------------------------------------------------------

ZEMATH_API int zemath_one_sample_t_test_with_summarized_data(const TTestSummary* summary,
                                                             const TTestHypothesis* hyp,
                                                             OneSampleTTestResults* res) noexcept {
    if (summary == nullptr || hyp == nullptr || res == nullptr) return ZEMATH_ERR_PARAM_RANGE;
    if (!tail_ok(hyp->TailType)) return ZEMATH_ERR_PARAM_RANGE;
    if (summary->N < 1) return ZEMATH_ERR_SIZES_DIFFER;
    return one_sample(*summary, *hyp, *res);
}

ZEMATH_API int zemath_two_sample_t_test_pair_with_summarized_data(
    const TTestSummary* diff, const TTestHypothesis* hyp, TwoSampleTTestResults* res) noexcept {
    if (diff == nullptr || hyp == nullptr || res == nullptr) return ZEMATH_ERR_PARAM_RANGE;
    if (!tail_ok(hyp->TailType)) return ZEMATH_ERR_PARAM_RANGE;
    if (diff->N < 1) return ZEMATH_ERR_TOO_FEW_DATA;
    paired(*diff, *hyp, *res);
    return ZEMATH_OK;
}

ZEMATH_API int zemath_two_sample_t_test_with_summarized_data(const TTestSummary* s1,
                                                             const TTestSummary* s2,
                                                             const TTestHypothesis* hyp,
                                                             TwoSampleTTestResults* res,
                                                             double* unequal) noexcept {
    if (s1 == nullptr || s2 == nullptr || hyp == nullptr || res == nullptr)
        return ZEMATH_ERR_PARAM_RANGE;
    if (!tail_ok(hyp->TailType)) return ZEMATH_ERR_PARAM_RANGE;
    two_sample(*s1, *s2, *hyp, *res, unequal);
    return ZEMATH_OK;
}

// ---- Tests from raw data -------------------------------------------------------------------

ZEMATH_API int zemath_one_sample_t_test(const double* data, unsigned int n,
                                        const TTestHypothesis* hyp,
                                        OneSampleTTestResults* res) noexcept {
    if (data == nullptr || hyp == nullptr || res == nullptr) return ZEMATH_ERR_NULL_STATS;
    if (!tail_ok(hyp->TailType)) return ZEMATH_ERR_PARAM_RANGE;
    if (n > static_cast<unsigned int>(INT_MAX)) return ZEMATH_ERR_SIZES_DIFFER;
    const Sample s = summarize(data, n);
    if (s.n < 2) return ZEMATH_ERR_TOO_FEW_DATA;
    OneSampleTTestResults r;
    const int status = one_sample(TTestSummary{s.n, s.mean, s.sd}, *hyp, r);
    r.SE = s.se;
    *res = r;
    return status;
}

ZEMATH_API int zemath_t_test_one_sample(const double* data, unsigned int n, double mean, int tail,
                                        double* t, double* P, int* DOF) noexcept {
    TTestHypothesis hyp{0, mean, tail};
    OneSampleTTestResults r;
    const int status = zemath_one_sample_t_test(data, n, &hyp, &r);
    if (status != ZEMATH_OK) return status;
    put(t, r.t);
    put(P, r.P);
    put(DOF, r.DOF);
    return ZEMATH_OK;
}

ZEMATH_API int zemath_two_sample_t_test(const double* x, unsigned int nx, const double* y,
                                        unsigned int ny, const TTestHypothesis* hyp,
                                        TwoSampleTTestResults* res, double* unequal) noexcept {
    if (x == nullptr || y == nullptr || hyp == nullptr || res == nullptr)
        return ZEMATH_ERR_NULL_STATS;
    if (!tail_ok(hyp->TailType)) return ZEMATH_ERR_PARAM_RANGE;
    if (nx > static_cast<unsigned int>(INT_MAX) || ny > static_cast<unsigned int>(INT_MAX))
        return ZEMATH_ERR_SIZES_DIFFER;
    const Sample a = summarize(x, nx), b = summarize(y, ny);
    if (a.n < 2 || b.n < 2) return ZEMATH_ERR_TOO_FEW_DATA;
    TwoSampleTTestResults r;
    two_sample(TTestSummary{a.n, a.mean, a.sd}, TTestSummary{b.n, b.mean, b.sd}, *hyp, r, unequal);
    r.SE1 = a.se;
    r.SE2 = b.se;
    const double pooled =
        ((a.n - 1.0) * a.sd * a.sd + (b.n - 1.0) * b.sd * b.sd) / (a.n + b.n - 2.0);
    r.SEDiff = std::sqrt(pooled * (1.0 / a.n + 1.0 / b.n));
    *res = r;
    return ZEMATH_OK;
}

ZEMATH_API int zemath_two_sample_t_test_pair(const double* x, const double* y, unsigned int n,
                                             const TTestHypothesis* hyp,
                                             TwoSampleTTestResults* res) noexcept {
    if (x == nullptr || y == nullptr || hyp == nullptr || res == nullptr)
        return ZEMATH_ERR_NULL_STATS;
    if (!tail_ok(hyp->TailType)) return ZEMATH_ERR_PARAM_RANGE;
    if (n > static_cast<unsigned int>(INT_MAX)) return ZEMATH_ERR_SIZES_DIFFER;
    return zemath::guard_status([&]() -> int {
        // Pairs with a missing member are dropped.
        std::vector<double> diff;
        diff.reserve(n);
        for (unsigned int i = 0; i < n; ++i)
            if (!is_missing(x[i]) && !is_missing(y[i])) diff.push_back(x[i] - y[i]);
        const Sample d = summarize(diff.data(), diff.size());
        if (d.n < 2) return ZEMATH_ERR_TOO_FEW_DATA;
        TwoSampleTTestResults r;
        paired(TTestSummary{d.n, d.mean, d.sd}, *hyp, r);
        r.SE1 = r.SE2 = r.SEDiff = d.se;
        *res = r;
        return ZEMATH_OK;
    });
}

ZEMATH_API int zemath_row_ttest2(int rows, const double* m1, int columns1, const double* m2,
                                 int columns2, int tail, double* t, double* P,
                                 double* DOF) noexcept {
    if (m1 == nullptr || m2 == nullptr) return ZEMATH_ERR_NULL_STATS;
    if (rows < 1 || columns1 < 1 || columns2 < 1) return ZEMATH_ERR_SIZES_DIFFER;
    if (!tail_ok(tail)) return ZEMATH_ERR_PARAM_RANGE;
    int first_failure = ZEMATH_OK;
    const TTestHypothesis hyp{0, 0.0, tail};
    for (int r = 0; r < rows; ++r) {
        TwoSampleTTestResults res;
        const int status = zemath_two_sample_t_test(
            m1 + static_cast<std::size_t>(r) * columns1, static_cast<unsigned>(columns1),
            m2 + static_cast<std::size_t>(r) * columns2, static_cast<unsigned>(columns2), &hyp,
            &res, nullptr);
        if (status != ZEMATH_OK) {
            reset(res);
            if (first_failure == ZEMATH_OK) first_failure = status;
        }
        put(t ? t + r : nullptr, res.t);
        put(P ? P + r : nullptr, res.P);
        put(DOF ? DOF + r : nullptr, res.DOF);
    }
    return first_failure;
}

ZEMATH_API int zemath_one_sample_z_test(const double* data, unsigned int n, double mean,
                                        double sigma, int tail, double* z, double* P) noexcept {
    if (data == nullptr) return ZEMATH_ERR_NULL_STATS;
    if (!tail_ok(tail) || !(sigma > 0.0) || !std::isfinite(sigma) || !std::isfinite(mean))
        return ZEMATH_ERR_PARAM_RANGE;
    if (n > static_cast<unsigned int>(INT_MAX)) return ZEMATH_ERR_SIZES_DIFFER;
    const Sample s = summarize(data, n);
    if (s.n < 1) return ZEMATH_ERR_TOO_FEW_DATA;
    const double statistic = (s.mean - mean) / (sigma / std::sqrt(static_cast<double>(s.n)));
    put(z, statistic);
    put(P, tail_from_both(zemath::util::prob(statistic), zemath::util::prob(-statistic), tail));
    return ZEMATH_OK;
}

ZEMATH_API int zemath_f_test(const double* x, unsigned int nx, const double* y, unsigned int ny,
                             int tail, double* F, double* P, double* df1, double* df2) noexcept {
    if (x == nullptr || y == nullptr) return ZEMATH_ERR_NULL_STATS;
    if (!tail_ok(tail)) return ZEMATH_ERR_PARAM_RANGE;
    if (nx > static_cast<unsigned int>(INT_MAX) || ny > static_cast<unsigned int>(INT_MAX))
        return ZEMATH_ERR_SIZES_DIFFER;
    const Sample a = summarize(x, nx), b = summarize(y, ny);
    if (a.n < 2 || b.n < 2) return ZEMATH_ERR_TOO_FEW_DATA;
    const double ratio = (a.sd * a.sd) / (b.sd * b.sd);
    const double d1 = a.n - 1.0, d2 = b.n - 1.0;
    double p = kNanum;
    if (known(ratio) && std::isfinite(ratio))
        p = tail_from_both(fcdf(ratio, d1, d2, 2, nullptr), fcdf(ratio, d1, d2, 1, nullptr), tail);
    put(F, std::isfinite(ratio) ? ratio : kNanum);
    put(P, p);
    put(df1, d1);
    put(df2, d2);
    return ZEMATH_OK;
}

ZEMATH_API int zemath_chi_square_test(const double* data, unsigned int n, double variance, int tail,
                                      double* chi2, double* P, double* DOF) noexcept {
    if (data == nullptr) return ZEMATH_ERR_NULL_STATS;
    if (!tail_ok(tail) || !(variance > 0.0) || !std::isfinite(variance))
        return ZEMATH_ERR_PARAM_RANGE;
    if (n > static_cast<unsigned int>(INT_MAX)) return ZEMATH_ERR_SIZES_DIFFER;
    const Sample s = summarize(data, n);
    if (s.n < 2) return ZEMATH_ERR_TOO_FEW_DATA;
    const double dof = s.n - 1.0;
    const double statistic = dof * s.sd * s.sd / variance;
    put(chi2, statistic);
    put(P, tail_from_both(chi2cdf(statistic, dof, 2, nullptr), chi2cdf(statistic, dof, 1, nullptr),
                          tail));
    put(DOF, dof);
    return ZEMATH_OK;
}

ZEMATH_API int zemath_two_sample_chi_square_test(const double* x, unsigned int nx, const double* y,
                                                 unsigned int ny, double* chi2,
                                                 double* P) noexcept {
    if (x == nullptr || y == nullptr) return ZEMATH_ERR_NULL_STATS;
    if (nx > static_cast<unsigned int>(INT_MAX) || ny > static_cast<unsigned int>(INT_MAX))
        return ZEMATH_ERR_SIZES_DIFFER;
    const Sample a = summarize(x, nx), b = summarize(y, ny);
    if (a.n < 2 || b.n < 2) return ZEMATH_ERR_TOO_FEW_DATA;
    // Bartlett's statistic for two samples, chi-square with 1 degree of freedom.
    const double f1 = a.n - 1.0, f2 = b.n - 1.0, f = f1 + f2;
    const double v1 = a.sd * a.sd, v2 = b.sd * b.sd;
    const double pooled = (f1 * v1 + f2 * v2) / f;
    const double correction = 1.0 + (1.0 / f1 + 1.0 / f2 - 1.0 / f) / 3.0;
    const double statistic =
        (f * std::log(pooled) - f1 * std::log(v1) - f2 * std::log(v2)) / correction;
    const bool ok = v1 > 0.0 && v2 > 0.0 && std::isfinite(statistic);
    put(chi2, ok ? statistic : kNanum);
    put(P, ok ? chi2cdf(std::max(0.0, statistic), 1.0, 1, nullptr) : kNanum);
    return ZEMATH_OK;
}

// ---- Confidence intervals -----------------------------------------------------------------

ZEMATH_API int zemath_confidence_levels_for_variance(unsigned int count, const double* levels,
                                                     double SD, double DOF, double* lower,
                                                     double* upper, int one_sided) noexcept {
    if (count == 0 || levels == nullptr || lower == nullptr || upper == nullptr)
        return ZEMATH_ERR_PARAM_RANGE;
    std::fill(lower, lower + count, kNanum);
    std::fill(upper, upper + count, kNanum);
    const double sum_sq = SD * SD * DOF;
    for (unsigned int k = 0; k < count; ++k) {
        if (!level_ok(levels[k])) return ZEMATH_ERR_PARAM_RANGE;
        if (DOF == 0.0 || DOF == -1.0) continue;
        const double p = level_probability(levels[k], one_sided);
        const double hi = chi2inv(p, DOF, nullptr), lo = chi2inv(1.0 - p, DOF, nullptr);
        if (known(hi)) lower[k] = sum_sq / hi;
        if (known(lo)) upper[k] = sum_sq / lo;
    }
    return ZEMATH_OK;
}

ZEMATH_API int zemath_two_sample_confidence_levels_for_variance(unsigned int count,
                                                                const double* levels,
                                                                const double* SDs, const int* sizes,
                                                                double* lower, double* upper,
                                                                int one_sided) noexcept {
    if (count == 0 || levels == nullptr || SDs == nullptr || sizes == nullptr || lower == nullptr ||
        upper == nullptr)
        return ZEMATH_ERR_PARAM_RANGE;
    std::fill(lower, lower + count, kNanum);
    std::fill(upper, upper + count, kNanum);
    if (static_cast<long long>(sizes[0]) + sizes[1] < 3) return ZEMATH_OK;
    const double ratio = SDs[0] * SDs[0] / (SDs[1] * SDs[1]);
    const double d1 = sizes[0] - 1.0, d2 = sizes[1] - 1.0;
    for (unsigned int k = 0; k < count; ++k) {
        // Levels are not range-checked here: an unusable level leaves NANUM.
        const double p = level_probability(levels[k], one_sided);
        const double hi = finv(p, d1, d2, nullptr), lo = finv(1.0 - p, d1, d2, nullptr);
        if (known(hi) && hi != 0.0) lower[k] = ratio / hi;
        if (known(lo) && lo != 0.0) upper[k] = ratio / lo;
    }
    return ZEMATH_OK;
}

namespace {

// mean -+ t_p(dof) se for each level; all NANUM first, -151 at the first bad level.
int mean_limits(unsigned int count, const double* levels, double centre, double se, double dof,
                double* lower, double* upper, int one_sided) {
    if (count == 0 || levels == nullptr || lower == nullptr || upper == nullptr)
        return ZEMATH_ERR_PARAM_RANGE;
    std::fill(lower, lower + count, kNanum);
    std::fill(upper, upper + count, kNanum);
    for (unsigned int k = 0; k < count; ++k) {
        if (!level_ok(levels[k])) return ZEMATH_ERR_PARAM_RANGE;
        if (!known(centre) || !known(se) || !(dof >= 1.0)) continue;
        const double t = tinv(level_probability(levels[k], one_sided), dof, 2, nullptr);
        if (!known(t)) continue;
        lower[k] = centre - t * se;
        upper[k] = centre + t * se;
    }
    return ZEMATH_OK;
}

}  // namespace

ZEMATH_API int zemath_confidence_levels_for_mean(unsigned int count, const double* levels,
                                                 double mean, double SD, int N, double* lower,
                                                 double* upper, int one_sided) noexcept {
    const double se = N >= 1 ? SD / std::sqrt(static_cast<double>(N)) : kNanum;
    return mean_limits(count, levels, mean, se, N - 1.0, lower, upper, one_sided);
}

ZEMATH_API int zemath_two_sample_confidence_levels_for_mean(
    unsigned int count, const double* levels, const TTestSummary* s1, const TTestSummary* s2,
    int equal_variances, double* lower, double* upper, int one_sided) noexcept {
    if (s1 == nullptr || s2 == nullptr) return ZEMATH_ERR_PARAM_RANGE;
    const double n1 = s1->N, n2 = s2->N;
    const double v1 = s1->SD * s1->SD / n1, v2 = s2->SD * s2->SD / n2;
    double se = kNanum, dof = 0.0;
    if (s1->N >= 2 && s2->N >= 2) {
        if (equal_variances) {
            dof = n1 + n2 - 2.0;
            const double pooled =
                ((n1 - 1.0) * s1->SD * s1->SD + (n2 - 1.0) * s2->SD * s2->SD) / dof;
            se = std::sqrt(pooled * (1.0 / n1 + 1.0 / n2));
        } else {
            se = std::sqrt(v1 + v2);
            dof = (v1 + v2) * (v1 + v2) / (v1 * v1 / (n1 - 1.0) + v2 * v2 / (n2 - 1.0));
        }
    }
    const double centre = known(s1->Mean) && known(s2->Mean) ? s1->Mean - s2->Mean : kNanum;
    return mean_limits(count, levels, centre, known(se) ? se : kNanum, dof, lower, upper,
                       one_sided);
}

// ---- Power and sample size ------------------------------------------------------------------

namespace {

enum class Design { kOneSample, kTwoSample, kPaired };

// Power of the t test with n points (per group for two samples).
double power_of(Design design, double alpha, double difference, double sd, int tail, double n) {
    double dof, delta;
    if (design == Design::kTwoSample) {
        if (n < 2.0) return kNanum;
        dof = 2.0 * n - 2.0;
        delta = difference / (sd * std::sqrt(2.0 / n));
    } else {
        if (n < 2.0) return kNanum;
        dof = n - 1.0;
        delta = std::sqrt(n) * difference / sd;
    }
    constexpr int kMaxIter = 1000;
    bool ok = true;
    auto lower_nct = [&](double t) {
        const double p = known(t) ? nctcdf(t, dof, delta, kMaxIter, nullptr) : kNanum;
        if (!known(p)) ok = false;
        return p;
    };
    double power;
    if (tail == 0) {
        const double critical = tinv(1.0 - alpha / 2.0, dof, 2, nullptr);
        power = (1.0 - lower_nct(critical)) + lower_nct(-critical);
    } else if (tail == 1) {
        power = 1.0 - lower_nct(tinv(1.0 - alpha, dof, 2, nullptr));
    } else {
        power = lower_nct(tinv(alpha, dof, 2, nullptr));
    }
    if (!ok) return kNanum;
    return std::isfinite(power) ? std::clamp(power, 0.0, 1.0) : kNanum;
}

bool power_args_ok(double alpha, double sd, int tail) {
    return alpha > 0.0 && alpha < 1.0 && sd > 0.0 && std::isfinite(sd) && tail_ok(tail);
}

int powers(Design design, double alpha, double difference, double sd, int tail, unsigned int count,
           const int* sizes, double* out) {
    if (sizes == nullptr || out == nullptr) return ZEMATH_ERR_NULL_STATS;
    if (!power_args_ok(alpha, sd, tail) || !std::isfinite(difference))
        return ZEMATH_ERR_PARAM_RANGE;
    for (unsigned int k = 0; k < count; ++k)
        out[k] = power_of(design, alpha, difference, sd, tail, sizes[k]);
    return ZEMATH_OK;
}

// Smallest n >= 2 whose power reaches the target: doubling, then bisection (power
// grows with n). -1 when the target is outside (0, 1) or not reached by 2^30 points.
int size_for(Design design, double alpha, double difference, double sd, int tail, double target) {
    if (!(target > 0.0 && target < 1.0)) return -1;
    auto reaches = [&](double n) {
        const double p = power_of(design, alpha, difference, sd, tail, n);
        return known(p) && p >= target;
    };
    double hi = 2.0;
    while (!reaches(hi)) {
        hi *= 2.0;
        if (hi > 1073741824.0) return -1;
    }
    double lo = hi / 2.0;
    if (hi == 2.0) return 2;
    while (hi - lo > 1.0) {  // power(lo) < target <= power(hi)
        const double mid = std::floor((lo + hi) / 2.0);
        if (reaches(mid))
            hi = mid;
        else
            lo = mid;
    }
    return static_cast<int>(hi);
}

int sample_sizes(Design design, double alpha, double difference, double sd, int tail,
                 unsigned int count, const double* targets, int* sizes) {
    if (targets == nullptr || sizes == nullptr) return ZEMATH_ERR_NULL_STATS;
    if (!power_args_ok(alpha, sd, tail) || !std::isfinite(difference))
        return ZEMATH_ERR_PARAM_RANGE;
    for (unsigned int k = 0; k < count; ++k)
        sizes[k] = size_for(design, alpha, difference, sd, tail, targets[k]);
    return ZEMATH_OK;
}

}  // namespace

ZEMATH_API int zemath_tTest_powers(double alpha, double difference, double SD, int tail,
                                   unsigned int count, const int* sizes,
                                   double* powers_out) noexcept {
    return powers(Design::kOneSample, alpha, difference, SD, tail, count, sizes, powers_out);
}
ZEMATH_API int zemath_tTest_powers1(double alpha, double difference, double SD, int tail, int size,
                                    double* power) noexcept {
    return powers(Design::kOneSample, alpha, difference, SD, tail, 1, &size, power);
}
ZEMATH_API int zemath_tTest_samplesize(double alpha, double difference, double SD, int tail,
                                       unsigned int count, const double* targets,
                                       int* sizes) noexcept {
    return sample_sizes(Design::kOneSample, alpha, difference, SD, tail, count, targets, sizes);
}
ZEMATH_API int zemath_two_sample_tTest_powers(double alpha, double difference, double SD, int tail,
                                              unsigned int count, const int* sizes,
                                              double* powers_out) noexcept {
    return powers(Design::kTwoSample, alpha, difference, SD, tail, count, sizes, powers_out);
}
ZEMATH_API int zemath_two_sample_tTest_powers1(double alpha, double difference, double SD, int tail,
                                               int size, double* power) noexcept {
    return powers(Design::kTwoSample, alpha, difference, SD, tail, 1, &size, power);
}
ZEMATH_API int zemath_two_sample_tTest_samplesize(double alpha, double difference, double SD,
                                                  int tail, unsigned int count,
                                                  const double* targets, int* sizes) noexcept {
    return sample_sizes(Design::kTwoSample, alpha, difference, SD, tail, count, targets, sizes);
}
ZEMATH_API int zemath_two_sample_tTest_powers_pair(double alpha, double difference, double SD,
                                                   int tail, unsigned int count, const int* sizes,
                                                   double* powers_out) noexcept {
    return powers(Design::kPaired, alpha, difference, SD, tail, count, sizes, powers_out);
}
ZEMATH_API int zemath_two_sample_tTest_powers_pair1(double alpha, double difference, double SD,
                                                    int tail, int size, double* power) noexcept {
    return powers(Design::kPaired, alpha, difference, SD, tail, 1, &size, power);
}
ZEMATH_API int zemath_two_sample_tTest_samplesize_pair(double alpha, double difference, double SD,
                                                       int tail, unsigned int count,
                                                       const double* targets, int* sizes) noexcept {
    return sample_sizes(Design::kPaired, alpha, difference, SD, tail, count, targets, sizes);
}

// ---- Confidence limits of fitted distribution parameters -----------------------------------

ZEMATH_API int zemath_confidence_limit_Norm(const double* data, unsigned int n, double level,
                                            double* mu, double* mu_lower, double* mu_upper,
                                            double* sigma, double* sigma_lower,
                                            double* sigma_upper) noexcept {
    if (data == nullptr) return ZEMATH_ERR_NULL_STATS;
    if (!level_ok(level)) return ZEMATH_ERR_CONFIDENCE_LEVEL;
    if (n > static_cast<unsigned int>(INT_MAX)) return ZEMATH_ERR_SIZES_DIFFER;
    const Sample s = summarize(data, n);
    if (s.n < 2) return ZEMATH_ERR_TOO_FEW_DATA;
    const double dof = s.n - 1.0;
    const double p = level_probability(level, 0);
    const double t = tinv(p, dof, 2, nullptr);
    const double upper_chi = chi2inv(p, dof, nullptr), lower_chi = chi2inv(1.0 - p, dof, nullptr);
    put(mu, s.mean);
    put(sigma, s.sd);
    put(mu_lower, known(t) ? s.mean - t * s.se : kNanum);
    put(mu_upper, known(t) ? s.mean + t * s.se : kNanum);
    put(sigma_lower, known(upper_chi) ? s.sd * std::sqrt(dof / upper_chi) : kNanum);
    put(sigma_upper,
        known(lower_chi) && lower_chi > 0.0 ? s.sd * std::sqrt(dof / lower_chi) : kNanum);
    return ZEMATH_OK;
}

ZEMATH_API int zemath_confidence_limit_Exp(const double* data, unsigned int n, double level,
                                           double* mean, double* lower, double* upper) noexcept {
    if (data == nullptr) return ZEMATH_ERR_NULL_STATS;
    if (!level_ok(level)) return ZEMATH_ERR_CONFIDENCE_LEVEL;
    if (n > static_cast<unsigned int>(INT_MAX)) return ZEMATH_ERR_SIZES_DIFFER;
    const Sample s = summarize(data, n);
    if (s.n < 1) return ZEMATH_ERR_TOO_FEW_DATA;
    for (unsigned int i = 0; i < n; ++i)
        if (!is_missing(data[i]) && data[i] < 0.0) return ZEMATH_ERR_PARAM_RANGE;
    // 2 n mean / mu is chi-square with 2n degrees of freedom: the exact interval.
    const double dof = 2.0 * s.n;
    const double p = level_probability(level, 0);
    const double upper_chi = chi2inv(p, dof, nullptr), lower_chi = chi2inv(1.0 - p, dof, nullptr);
    const double total = dof * s.mean;
    put(mean, s.mean);
    put(lower, known(upper_chi) ? total / upper_chi : kNanum);
    put(upper, known(lower_chi) && lower_chi > 0.0 ? total / lower_chi : kNanum);
    return ZEMATH_OK;
}

namespace {

// Gamma and Weibull limits: the data's usable values (NANUM skipped) must be positive and
// finite; the limits come from the normal law of the log of each estimate (so they stay
// positive): estimate exp(-+z se / estimate).
template <class Fit>
int fitted_limits(const double* data, unsigned int n, double level, Fit fit, double* first,
                  double* first_lower, double* first_upper, double* second, double* second_lower,
                  double* second_upper) {
    if (data == nullptr) return ZEMATH_ERR_NULL_STATS;
    if (!level_ok(level)) return ZEMATH_ERR_CONFIDENCE_LEVEL;
    if (n > static_cast<unsigned int>(INT_MAX)) return ZEMATH_ERR_SIZES_DIFFER;
    for (unsigned int i = 0; i < n; ++i)
        if (!is_missing(data[i]) && !(data[i] > 0.0 && std::isfinite(data[i])))
            return ZEMATH_ERR_PARAM_RANGE;
    return zemath::guard_status([&]() -> int {
        std::vector<double> usable;
        usable.reserve(n);
        for (unsigned int i = 0; i < n; ++i)
            if (!is_missing(data[i])) usable.push_back(data[i]);
        const zemath::stats::ParameterFit f = fit(std::span<const double>(usable));
        if (!f.ok) return ZEMATH_ERR_TOO_FEW_DATA;
        const double z = norminv(level_probability(level, 0), nullptr);
        const auto limit = [&](double estimate, double variance, double sign) {
            return estimate * std::exp(sign * z * std::sqrt(variance) / estimate);
        };
        put(first, f.first);
        put(first_lower, limit(f.first, f.var_first, -1.0));
        put(first_upper, limit(f.first, f.var_first, 1.0));
        put(second, f.second);
        put(second_lower, limit(f.second, f.var_second, -1.0));
        put(second_upper, limit(f.second, f.var_second, 1.0));
        return ZEMATH_OK;
    });
}

}  // namespace

ZEMATH_API int zemath_confidence_limit_Gamma(const double* data, unsigned int n, double level,
                                             double* shape, double* shape_lower,
                                             double* shape_upper, double* scale,
                                             double* scale_lower, double* scale_upper) noexcept {
    return fitted_limits(data, n, level, zemath::stats::fit_gamma, shape, shape_lower, shape_upper,
                         scale, scale_lower, scale_upper);
}

ZEMATH_API int zemath_confidence_limit_Wbl(const double* data, unsigned int n, double level,
                                           double* scale, double* scale_lower, double* scale_upper,
                                           double* shape, double* shape_lower,
                                           double* shape_upper) noexcept {
    return fitted_limits(data, n, level, zemath::stats::fit_weibull, scale, scale_lower,
                         scale_upper, shape, shape_lower, shape_upper);
}
