// g01aac (weighted summary statistics), g01alc (five-number summary) and g01ddc
// (Shapiro-Wilk W test).
//
// g01aac: two passes. The mean of the first pass is refined in the second by the mean
// of the deviations (the corrected two-pass algorithm), so the mean and the central sums
// keep full precision for data with a large common offset (the NIST StRD NumAcc sets:
// 13 or more significant digits). Its skewness and kurtosis use the routine's own
// divisor d = W - sum w^2 / W, not the bias-adjusted formulas of the descriptive family.
// g01alc: one sort of a copy, Tukey's hinges. g01ddc: AS R94 (platform/numeric) with
// its coefficients recomputed on request, over data in either order.
#include "platform/nag/g01_summary.hpp"

#include <algorithm>
#include <cmath>
#include <vector>

#include "platform/nag/shapiro_wilk.hpp"

namespace zemath::nag {

void g01aac(int n, const double* x, const double* wt, int* nvalid, double* xmean, double* xsd,
            double* xskew, double* xkurt, double* xmin, double* xmax, double* wsum,
            NagError* fail) {
    fail->code = NE_NOERROR;
    if (n < 1) {
        fail->set(NE_INT_ARG_LT);
        return;
    }
    auto weight = [&](int i) { return wt != nullptr ? wt[i] : 1.0; };
    if (wt != nullptr)
        for (int i = 0; i < n; ++i)
            if (wt[i] < 0.0) {
                fail->set(NE_REAL_ARG_LT);
                return;
            }
    int valid = 0;
    double w_sum = 0.0, w2_sum = 0.0, wx_sum = 0.0;
    double lowest = 0.0, highest = 0.0;
    for (int i = 0; i < n; ++i) {
        const double w = weight(i);
        if (!(w > 0.0)) continue;
        if (valid == 0 || x[i] < lowest) lowest = x[i];
        if (valid == 0 || x[i] > highest) highest = x[i];
        ++valid;
        w_sum += w;
        w2_sum += w * w;
        wx_sum += w * x[i];
    }
    *nvalid = valid;
    *wsum = w_sum;
    if (valid == 0) {
        fail->set(NE_INT);
        return;
    }
    double mean = wx_sum / w_sum;
    double s1 = 0.0, s2 = 0.0, s3 = 0.0, s4 = 0.0;
    for (int i = 0; i < n; ++i) {
        const double w = weight(i);
        if (!(w > 0.0)) continue;
        const double e = x[i] - mean;
        const double e2 = e * e;
        s1 += w * e;
        s2 += w * e2;
        s3 += w * e2 * e;
        s4 += w * e2 * e2;
    }
    const double shift = s1 / w_sum;
    mean += shift;
    // Central sums about the refined mean (binomial shift of the raw ones).
    s4 = s4 - 4.0 * shift * s3 + 6.0 * shift * shift * s2 - 3.0 * w_sum * std::pow(shift, 4);
    s3 = s3 - 3.0 * shift * s2 + 2.0 * w_sum * shift * shift * shift;
    s2 = s2 - shift * s1;
    *xmean = mean;
    *xmin = lowest;
    *xmax = highest;
    *xsd = *xskew = *xkurt = 0.0;
    const double d = w_sum - w2_sum / w_sum;
    if (valid < 2 || !(d > 0.0) || !(s2 > 0.0)) {
        fail->set(NE_INT);  // warning: the higher moments are not defined
        return;
    }
    const double variance = s2 / d;
    const double sd = std::sqrt(variance);
    *xsd = sd;
    *xskew = s3 / (d * variance * sd);
    *xkurt = s4 / (d * variance * variance) - 3.0;
}

void five_number_summary(const double* z, std::size_t n, double* res) {
    // 1-based ranks: m = ceil(n / 2), k = ceil(m / 2).
    const std::size_t m = (n + 1) / 2;
    const std::size_t k = (m + 1) / 2;
    auto at = [&](std::size_t rank) { return z[rank - 1]; };
    res[0] = at(1);
    res[4] = at(n);
    res[2] = (n % 2 == 1) ? at(m) : (at(m) + at(m + 1)) / 2.0;
    if (m % 2 == 1) {
        res[1] = at(k);
        res[3] = at(n - k + 1);
    } else {
        res[1] = (at(k) + at(k + 1)) / 2.0;
        res[3] = (at(n - k) + at(n - k + 1)) / 2.0;
    }
}

void g01alc(int n, const double* x, double* res, NagError* fail) {
    fail->code = NE_NOERROR;
    if (n < 5) {
        fail->set(NE_INT_ARG_LT);
        return;
    }
    std::vector<double> z(x, x + n);
    std::sort(z.begin(), z.end());
    five_number_summary(z.data(), z.size(), res);
}

void g01ddc(int n, const double* x, bool calc_wts, double* a, double* w, double* pw,
            NagError* fail) {
    fail->code = NE_NOERROR;
    if (n < 3) {
        fail->set(NE_INT_ARG_LT);
        return;
    }
    if (n > 5000) {
        fail->set(NE_INT_ARG_GT);
        return;
    }
    (void)calc_wts;  // the coefficients are always recomputed: they cost one pass
    // Descending data: W and its p-value are those of the reversed sample.
    std::vector<double> ascending;
    const double* data = x;
    if (x[n - 1] < x[0]) {
        ascending.assign(x, x + n);
        std::reverse(ascending.begin(), ascending.end());
        data = ascending.data();
    }
    const auto half = static_cast<std::size_t>(n / 2);
    std::vector<double> coefficients(std::max<std::size_t>(half, 1));
    double statistic = 0.0, p_value = 1.0;
    const int indicator = numeric::as_r94(data, static_cast<std::size_t>(n), coefficients.data(),
                                          coefficients.size(), &statistic, &p_value);
    if (indicator == 6) {
        fail->set(NE_REAL);
        return;
    }
    if (indicator == 7) {
        fail->set(NE_NOT_SORTED);
        return;
    }
    // The full antisymmetric coefficient vector, lowest point first.
    for (int i = 0; i < n; ++i) a[i] = 0.0;
    for (std::size_t i = 0; i < half; ++i) {
        a[i] = -coefficients[i];
        a[static_cast<std::size_t>(n) - 1 - i] = coefficients[i];
    }
    *w = statistic;
    *pw = p_value;
}

}  // namespace zemath::nag
