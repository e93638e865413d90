// Fuzz target: descriptive statistics, percentiles, frequencies, the parametric tests,
// confidence limits, power and sample size, and the normality tests on arrays exactly as
// long as the counts passed. Checked on each call: refused calls leave their outputs
// untouched (where the header says so), counts never pass the capacity given, indices
// lie inside the array, probabilities lie in [0, 1].
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "fuzz_input.hpp"
#include "zemath.h"

using zemath_fuzz::data_or_null;
using zemath_fuzz::Input;

// Aborts on a broken property, naming its line, so that the fuzzer keeps the input.
#define require(ok) zemath_fuzz::require_at((ok), __LINE__)

namespace {

constexpr double kMark = -7.25e77;  // sentinel of untouched output slots

// A p-value or power: NANUM, a value in [0, 1], or NaN when an input was not finite (NaN
// propagates through this family).
bool probability(double p, bool finite_inputs = true) {
    return p == NANUM || (p >= 0.0 && p <= 1.0) || (!finite_inputs && std::isnan(p));
}
bool finite(const std::vector<double>& v) {
    return std::all_of(v.begin(), v.end(), [](double e) { return std::isfinite(e); });
}
bool untouched(const std::vector<double>& v) {
    return std::all_of(v.begin(), v.end(), [](double x) { return x == kMark; });
}

// Weights: none, ordinary positive ones, or fuzzed ones (negative, NANUM, NaN).
std::vector<double> weights_for(Input& in, int n, bool& have) {
    have = false;
    switch (in.pick(3)) {
        case 0:
            return {};
        case 1: {
            std::vector<double> w(static_cast<size_t>(std::max(n, 0)));
            for (double& v : w) v = 1 + in.byte() % 4;
            have = true;
            return w;
        }
        default:
            have = true;
            return in.reals(n);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size) {
    Input in(bytes, size);
    const int which = in.pick(24);
    const int n = in.count(300);
    const int len = n > 0 ? n : 0;
    std::vector<double> x = in.reals(n);
    if (in.byte() % 4 == 0) std::sort(x.begin(), x.end());
    const double* px = in.byte() % 16 ? data_or_null(x) : nullptr;
    const unsigned un = static_cast<unsigned>(in.byte() % 16 ? len : n);
    const int flag = in.byte() % 8 ? in.pick(5) : in.integer();
    const int rule = in.byte() % 8 ? in.pick(6) : in.integer();
    const int tail = in.byte() % 8 ? in.pick(3) : in.integer();
    const double level = in.byte() % 4 ? 0.95 : in.real();
    bool have_w = false;
    std::vector<double> w = weights_for(in, n, have_w);
    const double* pw = have_w ? data_or_null(w) : nullptr;
    switch (which) {
        case 0: {
            DescStatResults res;
            std::memset(&res, 0x5a, sizeof res);
            DescStatResults before = res;
            const int rc =
                zemath_desc_stats(px, un, in.byte() % 16 ? &res : nullptr, pw, level, flag);
            if (rc == -156 || rc == -196 || rc == -155 ||
                (rc == -151 && flag != 0 && (flag < 0 || flag > 4)))
                require(std::memcmp(&res, &before, sizeof res) == 0);
            if (rc == 0) require(res.N >= 1 && res.N + res.Missing == len);
            break;
        }
        case 1: {
            int N = -9, Missing = -9;
            double m = kMark, sd = kMark, se = kMark, var = kMark, sum = kMark, sk = kMark,
                   ku = kMark, uss = kMark, css = kMark, cov = kMark, mad = kMark, ws = kMark,
                   gm = kMark;
            const int rc = zemath_basic_summary_stats(in.byte() % 16 ? len : n, px, &N, &m, &sd,
                                                      &se, &var, &sum, &sk, &ku, &uss, &css, &cov,
                                                      &mad, &Missing, &ws, &gm, flag, pw);
            if (rc == -156 || rc == -155) require(N == -9 && m == kMark && gm == kMark);
            if (rc == 0) require(N >= 1 && N + Missing == len);
            break;
        }
        case 2: {
            double mode = kMark, gsd = kMark, lcl = kMark, ucl = kMark, s2 = kMark, s3 = kMark;
            bool several = false;
            const int rc = zemath_opt_summary_stats(un, px, level, &mode, &several, &gsd, &lcl,
                                                    &ucl, &s2, &s3, flag, pw);
            if (rc == -156 || rc == -196 || rc == -155) require(mode == kMark && lcl == kMark);
            break;
        }
        case 3: {
            const int ranges = in.count(8);
            std::vector<double> bounds(static_cast<size_t>(2 * std::max(ranges, 0)));
            for (double& b : bounds) b = in.byte() % 8 ? in.count(len) : in.real();
            DescStatOptions opt;
            std::memset(&opt, 1, sizeof opt);
            opt.nMomentDenFlag = flag;
            std::vector<DescStatResults> out(static_cast<size_t>(std::max(ranges, 0)));
            if (!out.empty()) std::memset(out.data(), 0x5a, out.size() * sizeof(DescStatResults));
            const std::vector<DescStatResults> before = out;
            const int rc = zemath_desc_stats_ex(px, un, data_or_null(bounds),
                                                static_cast<unsigned>(std::max(ranges, 0)), &opt,
                                                data_or_null(out), pw, level, 0);
            if ((rc == -156 || rc == -196 || rc == -155) && !out.empty())
                require(std::memcmp(out.data(), before.data(),
                                    out.size() * sizeof(DescStatResults)) == 0);
            break;
        }
        case 4: {
            const int columns = 1 + in.pick(16), rows = len / columns;
            std::vector<DescStatResults> out(static_cast<size_t>(rows));
            std::vector<double> rw;
            if (in.byte() & 1) rw = in.reals(columns);
            if (in.byte() & 1) {
                zemath_row_desc_stats(rows, columns, data_or_null(x), data_or_null(out),
                                      data_or_null(rw), level, flag);
            } else {
                DescStatOptions opt;
                std::memset(&opt, 0, sizeof opt);
                opt.nMomentDenFlag = flag;
                opt.Mean = opt.Kurtosis = opt.Mode = opt.GeoSD = in.byte() & 1;
                opt.N = opt.LCL = true;
                zemath_row_desc_stats_ex(rows, columns, data_or_null(x), &opt, data_or_null(out),
                                         data_or_null(rw), level);
            }
            break;
        }
        case 5: {
            const double scale = in.real();
            require(px != nullptr || zemath_skewness(px, n, scale) == NANUM);
            zemath_kurtosis(px, n, scale);
            const double rms = zemath_root_mean_square(px, n);
            const double aad = zemath_absolute_arithmetic_average(px, n);
            if (px && n <= 0) require(rms == 0.0 && aad == 0.0);
            break;
        }
        case 6: {
            const int np = in.count(12);
            std::vector<double> percents = in.reals(np);
            for (double& p : percents)
                if (in.byte() & 1) p = in.byte() % 101;
            std::vector<double> results(percents.size(), kMark);
            const int rc = zemath_percentiles(px, n, data_or_null(percents), np,
                                              data_or_null(results), rule, pw);
            if (rc != 0) require(untouched(results));
            break;
        }
        case 7: {
            QuantileOptions opt;
            std::memset(&opt, 1, sizeof opt);
            opt.nInterpolate = rule;
            QuantileResults res;
            const int np = in.count(6);
            std::vector<double> percents = in.reals(np), results(percents.size(), kMark);
            const int rc =
                zemath_quantiles(px, un, &opt, &res, data_or_null(percents),
                                 static_cast<unsigned>(std::max(np, 0)), data_or_null(results), pw);
            if (rc == 0) {
                require(res.iMin == -1 || (res.iMin >= 0 && res.iMin < len));
                require(res.iMax == -1 || (res.iMax >= 0 && res.iMax < len));
            }
            break;
        }
        case 8: {
            double mn = kMark, mx = kMark, q1 = kMark, med = kMark, q3 = kMark;
            const int rc = zemath_one_row_quantiles(px, un, &mn, &mx, &q1, &med, &q3, rule);
            if (rc == -3 || rc == -11) require(mn == kMark && med == kMark);
            const int columns = 1 + in.pick(12), rows = len / columns;
            std::vector<double> out(static_cast<size_t>(7 * rows), kMark);
            double* o = out.data();
            zemath_row_quantiles_ex(rows, columns, data_or_null(x), o, o + rows, o + 2 * rows,
                                    o + 3 * rows, o + 4 * rows, o + 5 * rows, o + 6 * rows, rule);
            break;
        }
        case 9: {
            RangeResults res;
            res.iMin = res.iMax = -9;
            const int rc = zemath_range(px, un, &res);
            if (rc == 0) {
                require(res.iMin >= 0 && res.iMin < len && res.iMax >= 0 && res.iMax < len);
                require(res.Min <= res.Max);
            }
            double median = kMark;
            if (zemath_get_median_in_vector(n, px, &median) != 0) require(median == kMark);
            break;
        }
        case 10: {
            std::vector<double> values(static_cast<size_t>(len), kMark), counts(values.size());
            int distinct = -9;
            const int rc = zemath_discrete_frequencies(px, un, data_or_null(values),
                                                       data_or_null(counts), &distinct);
            if (rc == 0) {
                require(distinct >= 0 && distinct <= len);
                for (int k = 1; k < distinct; ++k) require(values[k - 1] < values[k]);
            }
            const int capacity = in.count(len);
            std::vector<double> list(static_cast<size_t>(std::max(capacity, 0)), kMark);
            int count = -9;
            const int rc2 =
                zemath_censored_value_list(px, un, data_or_null(list), capacity, &count);
            if (rc2 == 0) require(count >= 0 && count <= capacity);
            if (rc2 != 0) require(untouched(list));
            break;
        }
        case 11: {
            std::vector<int> data = in.values<int>(n);
            for (int& v : data)
                if (in.byte() & 1) v %= 50;
            const int lowest = in.byte() % 4 ? -in.pick(20) : in.integer();
            const int highest =
                in.byte() % 4
                    ? static_cast<int>(std::min<long long>(INT32_MAX, 1LL * lowest + in.pick(60)))
                    : in.integer();
            const long long span = static_cast<long long>(highest) - lowest + 1;
            if (span >= 1 && span <= 100) {
                std::vector<int> counts(static_cast<size_t>(span), -3);
                if (zemath_frequency_count_i(data_or_null(data), un, lowest, highest,
                                             counts.data()) == 0) {
                    long long total = 0;
                    for (int c : counts) total += c;
                    require(total >= 0 && total <= len);
                }
            } else if (span < 1) {
                int dummy = -3;
                require(zemath_frequency_count_i(data_or_null(data), un, lowest, highest, &dummy) !=
                            0 &&
                        dummy == -3);
            }
            break;
        }
        case 12: {
            const double start = in.real(), end = in.byte() & 1 ? start + in.pick(50) : in.real();
            const double inc = in.byte() & 1 ? 0.5 * (1 + in.pick(8)) : in.real();
            const int capacity = in.count(200);
            std::vector<double> counts(static_cast<size_t>(std::max(capacity, 0)), kMark);
            int bins = -9;
            const int rc = zemath_frequency_count(px, un, start, end, inc, data_or_null(counts),
                                                  capacity, &bins);
            if (rc == 0) {
                require(bins >= 0 && bins <= capacity);
                double total = 0;
                for (int k = 0; k < bins; ++k) total += counts[k];
                require(total <= len);
            } else {
                require(untouched(counts));
            }
            break;
        }
        case 13: {
            const int capacity = in.count(len + 2);
            std::vector<double> t(static_cast<size_t>(std::max(capacity, 0)), kMark);
            int count = -9;
            const int rc = zemath_threshold_list(px, un, data_or_null(t), capacity, &count);
            if (rc == 0) {
                require(count >= 1 && count <= capacity && count <= len + 1);
                if (std::getenv("ZEMATH_FUZZ_TRACE"))
                    for (int k = 0; k < count; ++k) std::fprintf(stderr, "%d: %.17g\n", k, t[k]);
                // Strictly ascending, the top cut included.
                for (int k = 1; k < count; ++k) require(t[k - 1] < t[k]);
            } else {
                require(untouched(t));
            }
            break;
        }
        case 14: {
            const int groups_n = in.count(5), np = in.count(5);
            std::vector<int> groups(static_cast<size_t>(len));
            for (int& g : groups) g = in.byte() % 8 ? in.pick(6) - 1 : in.integer();
            std::vector<double> percents = in.reals(np);
            for (double& p : percents)
                if (in.byte() & 1) p = in.byte() % 101;
            const long long slots = static_cast<long long>(std::max(groups_n, 0)) * std::max(np, 0);
            std::vector<double> results(static_cast<size_t>(slots), kMark);
            const int rc = zemath_get_percentiles_data(px, un, data_or_null(groups), groups_n,
                                                       data_or_null(percents), np,
                                                       data_or_null(results), rule, pw);
            if (rc != 0) require(untouched(results));
            break;
        }
        case 15: {
            const int method = in.byte() % 8 ? in.pick(3) : in.integer();
            const double v = zemath_bin_width(px, n, method, rule);
            if (std::getenv("ZEMATH_FUZZ_TRACE")) {
                std::fprintf(stderr, "method %d rule %d n %d -> %.17g\n", method, rule, n, v);
                for (double e : x) std::fprintf(stderr, " %.17g", e);
            }
            // Finite data give a number, magnitudes near the ends of the range included.
            if (finite(x)) require(!std::isnan(v));
            break;
        }
        case 16: {
            std::vector<double> y = in.reals(n);
            const int np = in.count(8);
            std::vector<double> probs = in.reals(np), pct(probs.size(), kMark);
            std::vector<int> idx(probs.size(), -9);
            const int rc = zemath_percentiles_distribution(
                n, px, data_or_null(y), data_or_null(probs), np, data_or_null(pct),
                in.byte() & 1 ? data_or_null(idx) : nullptr);
            if (rc == 0) {
                for (int k : idx) require(k == -9 || (k >= 0 && k < len));
            } else {
                require(untouched(pct));
            }
            break;
        }
        case 17: {  // summarized tests
            TTestSummary s1{in.byte() % 4 ? in.pick(40) : in.integer(), in.real(), in.real()};
            TTestSummary s2{in.byte() % 4 ? in.pick(40) : in.integer(), in.real(), in.real()};
            TTestHypothesis hyp{0, in.real(), tail};
            const bool fin = finite({s1.Mean, s1.SD, s2.Mean, s2.SD, hyp.Value});
            OneSampleTTestResults r1{};
            if (zemath_one_sample_t_test_with_summarized_data(&s1, &hyp, &r1) == 0)
                require(probability(r1.P, fin));
            TwoSampleTTestResults r2{};
            if (zemath_two_sample_t_test_pair_with_summarized_data(&s1, &hyp, &r2) == 0)
                require(probability(r2.P, fin));
            double unequal[3] = {kMark, kMark, kMark};
            if (zemath_two_sample_t_test_with_summarized_data(&s1, &s2, &hyp, &r2, unequal) == 0)
                require(probability(r2.P, fin) && probability(unequal[2], fin));
            break;
        }
        case 18: {  // raw-data tests
            const int ny = in.count(200);
            std::vector<double> y = in.reals(ny);
            const unsigned uny = static_cast<unsigned>(std::max(ny, 0));
            TTestHypothesis hyp{0, in.real(), tail};
            const bool fin = finite(x) && finite(y) && std::isfinite(hyp.Value);
            OneSampleTTestResults r1{};
            if (zemath_one_sample_t_test(px, un, &hyp, &r1) == 0) require(probability(r1.P, fin));
            double t = kMark, P = kMark, F = kMark, d1 = kMark, d2 = kMark;
            int dof = -9;
            if (zemath_t_test_one_sample(px, un, hyp.Value, tail, &t, &P, &dof) == 0)
                require(probability(P, fin));
            TwoSampleTTestResults r2{};
            double unequal[3];
            if (zemath_two_sample_t_test(px, un, data_or_null(y), uny, &hyp, &r2, unequal) == 0)
                require(probability(r2.P, fin));
            const unsigned paired = static_cast<unsigned>(std::min(len, std::max(ny, 0)));
            if (zemath_two_sample_t_test_pair(px, data_or_null(y), paired, &hyp, &r2) == 0)
                require(probability(r2.P, fin));
            if (zemath_f_test(px, un, data_or_null(y), uny, tail, &F, &P, &d1, &d2) == 0)
                require(probability(P, fin));
            P = kMark;
            const double variance = in.real();
            if (zemath_chi_square_test(px, un, variance, tail, &t, &P, &d1) == 0)
                require(probability(P, fin && std::isfinite(variance)));
            P = kMark;
            if (zemath_two_sample_chi_square_test(px, un, data_or_null(y), uny, &t, &P) == 0)
                require(probability(P, fin));
            P = kMark;
            const double mean = in.real(), sigma = in.real();
            if (zemath_one_sample_z_test(px, un, mean, sigma, tail, &t, &P) == 0)
                require(probability(P, fin && std::isfinite(mean) && std::isfinite(sigma)));
            break;
        }
        case 19: {  // row-wise two-sample tests
            const int rows = 1 + in.pick(8), c1 = len / rows;
            const int c2 = 1 + in.pick(10);
            std::vector<double> m2 = in.reals(rows * c2);
            std::vector<double> t(static_cast<size_t>(rows), kMark), P(t), dof(t);
            if (zemath_row_ttest2(rows, data_or_null(x), c1, data_or_null(m2), c2, tail, t.data(),
                                  P.data(), dof.data()) == 0)
                for (double p : P) require(probability(p, finite(x) && finite(m2)));
            break;
        }
        case 20: {  // confidence intervals
            const int count = in.count(6);
            std::vector<double> levels = in.reals(count);
            for (double& l : levels)
                if (in.byte() & 1) l = 0.5 + in.byte() / 600.0;
            const unsigned uc = static_cast<unsigned>(std::max(count, 0));
            std::vector<double> lo(levels.size(), kMark), hi(levels.size(), kMark);
            double* pl = data_or_null(levels);
            const int one_sided = in.pick(2);
            zemath_confidence_levels_for_variance(uc, pl, in.real(), in.real(), data_or_null(lo),
                                                  data_or_null(hi), one_sided);
            const double sds[2] = {in.real(), in.real()};
            const int sizes[2] = {in.integer() % 100, in.integer() % 100};
            zemath_two_sample_confidence_levels_for_variance(uc, pl, sds, sizes, data_or_null(lo),
                                                             data_or_null(hi), one_sided);
            zemath_confidence_levels_for_mean(uc, pl, in.real(), in.real(), in.integer(),
                                              data_or_null(lo), data_or_null(hi), one_sided);
            TTestSummary s1{in.integer() % 50, in.real(), in.real()};
            TTestSummary s2{in.integer() % 50, in.real(), in.real()};
            zemath_two_sample_confidence_levels_for_mean(
                uc, pl, &s1, &s2, in.pick(2), data_or_null(lo), data_or_null(hi), one_sided);
            break;
        }
        case 21: {  // limits of fitted laws
            double mu = kMark, ml = kMark, mu_hi = kMark, s = kMark, sl = kMark, sh = kMark;
            const int rc =
                zemath_confidence_limit_Norm(px, un, level, &mu, &ml, &mu_hi, &s, &sl, &sh);
            if (rc == 0 && ml != NANUM && mu_hi != NANUM && !std::isnan(mu)) require(ml <= mu_hi);
            if (rc != 0) require(mu == kMark && sh == kMark);
            double mean = kMark, lo = kMark, hi = kMark;
            if (zemath_confidence_limit_Exp(px, un, level, &mean, &lo, &hi) != 0)
                require(mean == kMark && lo == kMark && hi == kMark);
            break;
        }
        case 22: {  // power and sample size
            const double alpha = in.byte() & 1 ? 0.05 : in.real();
            const double diff = in.real(), sd = in.byte() & 1 ? 1.0 : in.real();
            const int count = in.count(4);
            const unsigned uc = static_cast<unsigned>(std::max(count, 0));
            std::vector<int> sizes(uc);
            for (int& s : sizes) s = in.byte() % 4 ? in.pick(200) : in.integer();
            std::vector<double> powers(uc, kMark), targets = in.reals(count);
            for (double& t : targets)
                if (in.byte() & 1) t = in.byte() / 256.0;
            std::vector<int> found(uc, -9);
            const int kind = in.pick(3);
            int rc = 0;
            double one = kMark;
            if (kind == 0) {
                rc = zemath_tTest_powers(alpha, diff, sd, tail, uc, data_or_null(sizes),
                                         data_or_null(powers));
                zemath_tTest_powers1(alpha, diff, sd, tail, in.integer(), &one);
                zemath_tTest_samplesize(alpha, diff, sd, tail, uc, data_or_null(targets),
                                        data_or_null(found));
            } else if (kind == 1) {
                rc = zemath_two_sample_tTest_powers(alpha, diff, sd, tail, uc, data_or_null(sizes),
                                                    data_or_null(powers));
                zemath_two_sample_tTest_powers1(alpha, diff, sd, tail, in.integer(), &one);
                zemath_two_sample_tTest_samplesize(alpha, diff, sd, tail, uc, data_or_null(targets),
                                                   data_or_null(found));
            } else {
                rc = zemath_two_sample_tTest_powers_pair(alpha, diff, sd, tail, uc,
                                                         data_or_null(sizes), data_or_null(powers));
                zemath_two_sample_tTest_powers_pair1(alpha, diff, sd, tail, in.integer(), &one);
                zemath_two_sample_tTest_samplesize_pair(alpha, diff, sd, tail, uc,
                                                        data_or_null(targets), data_or_null(found));
            }
            if (rc == 0)
                for (double p : powers) require(probability(p));
            require(one == kMark || probability(one));
            for (int f : found) require(f == -9 || f == -1 || (f >= 2 && f <= (1 << 30)));
            break;
        }
        default: {  // normality tests
            ShapiroWilkResults res{-9, kMark, kMark};
            const int method = in.byte() % 8 ? in.pick(2) : in.integer();
            const int rc = zemath_shapiro_wilk_test(un, px, &res, method);
            if (std::getenv("ZEMATH_FUZZ_TRACE")) {
                std::fprintf(stderr, "method %d n %d rc %d W %.17g P %.17g\n", method, n, rc, res.W,
                             res.P);
                for (double e : x) std::fprintf(stderr, " %.17g", e);
            }
            if (rc == 0 && (method == 0 || method == 1)) {
                require(res.W >= 0 && res.W <= 1 + 1e-12 && probability(res.P));
            }
            std::vector<double> sorted = x;
            std::sort(sorted.begin(), sorted.end());
            const int na = in.byte() & 1 ? len / 2 : in.count(len);
            std::vector<double> a(static_cast<size_t>(std::max(na, 0)), kMark);
            double W = kMark, p_value = kMark;
            int fault = -9;
            zemath_shapiro_wilk_test_R94(data_or_null(sorted), n, data_or_null(a), na, &W, &p_value,
                                         &fault);
            std::vector<float> f(sorted.size());
            for (size_t k = 0; k < f.size(); ++k)  // kept inside float's range
                f[k] = static_cast<float>(
                    std::isfinite(sorted[k]) ? std::clamp(sorted[k], -1e30, 1e30) : sorted[k]);
            float fw = 0, fp = 0;
            zemath_shapiro_wilk_test_AS181(data_or_null(f), un, &fw, &fp, &fault);
            break;
        }
    }
    return 0;
}
