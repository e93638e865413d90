// Shapiro-Wilk normality test: the record-filling export with its two computing paths
// (the library's own AS R94, or the back end's g01ddc limited to 2000 points), and the
// bare AS R94 and single-precision AS 181 entry points (kernels in
// platform/nag/shapiro_wilk.hpp).
#include <algorithm>
#include <climits>
#include <cmath>
#include <vector>

#include "core/guard.hpp"
#include "core/missing.hpp"
#include "platform/nag/g01_summary.hpp"
#include "platform/nag/shapiro_wilk.hpp"
#include "zemath/statistics.h"
#include "zemath/status.h"

namespace {

constexpr unsigned int kMaxPoints = 5000;
constexpr unsigned int kMaxBackEndPoints = 2000;  // kept deliberately: hosts rely on the limit

int shapiro_wilk(const double* data, unsigned int n, ShapiroWilkResults& res, int method) {
    std::vector<double> sorted;
    sorted.reserve(n);
    for (unsigned int i = 0; i < n; ++i) {
        if (zemath::is_missing(data[i])) continue;
        if (!std::isfinite(data[i])) return ZEMATH_ERR_STATS_INPUT;
        sorted.push_back(data[i]);
    }
    if (sorted.size() < 3) return ZEMATH_ERR_TOO_FEW_DATA;
    const auto [low, high] = std::minmax_element(sorted.begin(), sorted.end());
    if (*high - *low == 0.0) return ZEMATH_ERR_CONSTANT_DATA;
    // W and its p-value do not change when the sample is scaled. Sums of squares of values
    // beyond 2^500 can overflow (W came out NaN with status 0), so such a sample is first
    // brought to magnitudes near 1 by a power of two, which is exact.
    const double largest = std::max(std::fabs(*low), std::fabs(*high));
    if (largest > 0x1p500) {
        const int exponent = std::ilogb(largest);
        for (double& v : sorted) v = std::ldexp(v, -exponent);
    }
    std::sort(sorted.begin(), sorted.end());
    const std::size_t m = sorted.size();
    // Kept deliberately: an unknown method computes nothing and reports W = P = 0 with
    // success (the fields are written from zero-initialised working values).
    double w = 0.0, p = 0.0;
    if (method == 0) {
        std::vector<double> coefficients(m / 2);
        const int indicator = zemath::numeric::as_r94(sorted.data(), m, coefficients.data(),
                                                      coefficients.size(), &w, &p);
        if (indicator != 0) return indicator;
    } else if (method == 1) {
        std::vector<double> coefficients(m);
        zemath::nag::NagError fail;
        zemath::nag::g01ddc(static_cast<int>(m), sorted.data(), true, coefficients.data(), &w, &p,
                            &fail);
        if (fail.failed()) return fail.code;
    }
    res.W = w;
    res.P = p;
    return ZEMATH_OK;
}

}  // namespace

ZEMATH_API int zemath_shapiro_wilk_test(unsigned int n, const double* data, ShapiroWilkResults* res,
                                        int method) noexcept {
    if (data == nullptr || res == nullptr) return ZEMATH_ERR_NULL_STATS;
    res->N = n > static_cast<unsigned int>(INT_MAX) ? INT_MAX : static_cast<int>(n);
    res->W = res->P = NANUM;
    if (n < 3) return ZEMATH_ERR_TOO_FEW_DATA;
    if (n > kMaxPoints || (method == 1 && n > kMaxBackEndPoints)) return ZEMATH_ERR_TOO_MANY_DATA;
    return zemath::guard_status([&]() -> int {
        ShapiroWilkResults r = *res;
        const int status = shapiro_wilk(data, n, r, method);
        if (status == ZEMATH_OK) *res = r;
        return status;
    });
}

ZEMATH_API int zemath_shapiro_wilk_test_R94(const double* x, int n, double* a, int na, double* w,
                                            double* pw, int* ifault) noexcept {
    if (x == nullptr || a == nullptr || w == nullptr || pw == nullptr || ifault == nullptr)
        return ZEMATH_ERR_NULL_STATS;
    const int indicator =
        n < 3 ? 1
              : zemath::numeric::as_r94(x, static_cast<std::size_t>(n), a,
                                        na < 0 ? 0 : static_cast<std::size_t>(na), w, pw);
    if (n < 3) *pw = 1.0;
    *ifault = indicator;
    return indicator;
}

ZEMATH_API int zemath_shapiro_wilk_test_AS181(const float* data, unsigned int n, float* W,
                                              float* pw, int* ifault) noexcept {
    if (data == nullptr || W == nullptr || pw == nullptr || ifault == nullptr)
        return ZEMATH_ERR_NULL_STATS;
    *W = *pw = 1.0f;
    // The published range checks, before any storage is taken.
    const int early = n <= 2 ? 1 : n > 2000 ? 2 : 0;
    if (early != 0) {
        *ifault = early;
        return early;
    }
    return zemath::guard_status([&]() -> int {
        const int count = static_cast<int>(n);
        std::vector<float> x(data, data + n);
        std::sort(x.begin(), x.end());
        const int half = count / 2;
        std::vector<float> a(static_cast<std::size_t>(half));
        float eps = 0.0f;
        int fault = zemath::numeric::as181_coefficients(a.data(), count, half, &eps);
        if (fault == 0) {
            float mean = 0.0f;
            for (float v : x) mean += v;
            mean /= static_cast<float>(count);
            float ssq = 0.0f;
            for (float v : x) ssq += (v - mean) * (v - mean);
            fault = zemath::numeric::as181_w(x.data(), count, ssq, a.data(), half, eps, W, pw);
        }
        *ifault = fault;
        return fault;
    });
}
