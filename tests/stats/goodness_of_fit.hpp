// Goodness-of-fit statistics for the generator tests. The reference laws come from
// Boost.Math, an implementation independent of the generators under test.
//
// Significance: a test fails only when its p-value is below kGofLevel = 1e-6, so the
// suite (a few dozen such tests per run) fails spuriously less than once in 10^4 runs,
// while a wrong parameter convention (variance for sd, mean for rate, ...) gives p-values
// far below 1e-100 at 1e5 samples.
#pragma once

#include <boost/math/distributions/chi_squared.hpp>

#include <algorithm>
#include <cmath>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace gof {

inline constexpr double kGofLevel = 1e-6;

struct Result {
    double statistic;
    double p_value;
    std::string detail;
};

// Kolmogorov-Smirnov test of a sample against a continuous cdf; asymptotic p-value of
// the Kolmogorov distribution with Stephens' small-sample correction.
inline Result kolmogorov_smirnov(std::vector<double> sample,
                                 const std::function<double(double)>& cdf) {
    std::sort(sample.begin(), sample.end());
    const double n = static_cast<double>(sample.size());
    double d = 0.0;
    for (std::size_t i = 0; i < sample.size(); ++i) {
        const double f = cdf(sample[i]);
        d = std::max({d, f - i / n, (i + 1) / n - f});
    }
    const double lambda = (std::sqrt(n) + 0.12 + 0.11 / std::sqrt(n)) * d;
    double p = 0.0;
    for (int k = 1; k <= 100; ++k) {
        p += (k % 2 ? 2.0 : -2.0) * std::exp(-2.0 * k * k * lambda * lambda);
    }
    p = std::clamp(p, 0.0, 1.0);
    if (lambda < 0.2) p = 1.0;  // the alternating series is useless there; D is tiny
    return {d, p, "KS D = " + std::to_string(d)};
}

// Pearson chi-square test of integer samples against a pmf on [lo, inf): bins are
// consecutive values merged until each expects at least 5 counts; the last bin takes
// the whole remaining upper tail. Samples below lo fail the test outright.
inline Result chi_square(const std::vector<int>& sample, const std::function<double(long)>& pmf,
                         long lo) {
    std::map<long, double> counts;
    for (int v : sample) counts[v] += 1.0;
    const double n = static_cast<double>(sample.size());
    if (!counts.empty() && counts.begin()->first < lo) {
        return {INFINITY, 0.0, "value " + std::to_string(counts.begin()->first) + " below support"};
    }
    double statistic = 0.0, cumulative = 0.0, bin_p = 0.0, bin_obs = 0.0;
    int bins = 0;
    for (long k = lo;; ++k) {
        const double pk = pmf(k);
        bin_p += pk;
        cumulative += pk;
        const auto it = counts.find(k);
        if (it != counts.end()) bin_obs += it->second;
        const double remaining = std::max(0.0, 1.0 - cumulative);
        if (n * remaining < 5.0) {
            // Last bin: everything above k as well.
            double above = 0.0;
            for (auto jt = counts.upper_bound(k); jt != counts.end(); ++jt) above += jt->second;
            bin_p += remaining;
            bin_obs += above;
            statistic += (bin_obs - n * bin_p) * (bin_obs - n * bin_p) / (n * bin_p);
            ++bins;
            break;
        }
        if (n * bin_p >= 5.0) {
            statistic += (bin_obs - n * bin_p) * (bin_obs - n * bin_p) / (n * bin_p);
            ++bins;
            bin_p = bin_obs = 0.0;
        }
    }
    if (bins < 2) return {statistic, 1.0, "one bin"};
    const boost::math::chi_squared law(bins - 1);
    const double p = boost::math::cdf(boost::math::complement(law, statistic));
    return {statistic, p,
            "chi2 = " + std::to_string(statistic) + " on " + std::to_string(bins - 1) + " df"};
}

}  // namespace gof
