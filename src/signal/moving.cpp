// Moving statistics: trailing exponential, modified, triangular and weighted averages,
// moving root mean square and least-squares slope, and a circular running average.
//
// Method: every statistic keeps running state as the window slides (the recursion of the
// exponential forms, compensated running sums and counts, the missing-value count of the
// weighted window), so no window is rescanned except for the weighted sum itself. The
// slope keeps the window's sums of y and of (position in window) * y, shifted exactly as
// the window moves, and integer sums of positions, which stay exact.
// Failure codes: see zemath/moving.h.
#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

#include "core/guard.hpp"
#include "core/missing.hpp"
#include "signal/smoothing.hpp"
#include "zemath/moving.h"

namespace zemath {
namespace {

// Sum with Neumaier compensation: values enter and leave without drift.
struct CompensatedSum {
    double sum = 0.0, carry = 0.0;
    void add(double v) {
        const double t = sum + v;
        carry += std::fabs(sum) >= std::fabs(v) ? (sum - t) + v : (v - t) + sum;
        sum = t;
    }
    double value() const { return sum + carry; }
};

std::vector<double> zero_missing(const double* in, std::size_t n) {
    std::vector<double> copy(in, in + n);
    for (double& v : copy) {
        if (is_missing(v)) v = 0.0;
    }
    return copy;
}

}  // namespace

void exponential_average(std::span<const double> in, double* out, std::size_t period,
                         bool seed_with_first) {
    const std::size_t n = in.size();
    const double alpha = 2.0 / (static_cast<double>(period) + 1.0);
    std::vector<double> result(n, kNanum);
    std::size_t start;
    if (seed_with_first) {
        result[0] = in[0];
        start = 1;
    } else {
        const double last = in[period - 1];
        if (!is_missing(last)) {
            CompensatedSum s;
            std::size_t count = 0;
            for (std::size_t i = 0; i < period; ++i) {
                if (!is_missing(in[i])) {
                    s.add(in[i]);
                    ++count;
                }
            }
            const double mean = s.value() / static_cast<double>(count);
            // The last value of the first period enters its own mean once more: kept
            // deliberately, callers rely on these values.
            result[period - 1] = mean + alpha * (last - mean);
        }
        start = period;
    }
    for (std::size_t i = start; i < n; ++i) {
        const double prev = result[i - 1];
        result[i] = is_missing(prev) || is_missing(in[i]) ? kNanum : prev + alpha * (in[i] - prev);
    }
    std::copy(result.begin(), result.end(), out);
}

void modified_average(std::span<const double> in, double* out, std::size_t period) {
    const std::size_t n = in.size();
    std::vector<double> result(n, kNanum);
    CompensatedSum s;
    std::size_t count = 0;
    for (std::size_t i = 0; i < period; ++i) {
        if (!is_missing(in[i])) {
            s.add(in[i]);
            ++count;
        }
    }
    if (count > 0) result[period - 1] = s.value() / static_cast<double>(count);
    const double p = static_cast<double>(period);
    for (std::size_t i = period; i < n; ++i) {
        const double prev = result[i - 1];
        result[i] = is_missing(prev) || is_missing(in[i]) ? kNanum : prev + (in[i] - prev) / p;
    }
    std::copy(result.begin(), result.end(), out);
}

void triangular_average(std::span<const double> in, double* out, std::size_t period) {
    const std::size_t n = in.size(), h = period / 2;
    // Both passes average h + 1 points, so an even period acts as the next odd one:
    // kept deliberately, callers rely on it.
    std::vector<double> work(n), result(n);
    cut_window_average(in, work.data(), h, 0);
    std::fill(work.begin(), work.begin() + static_cast<std::ptrdiff_t>(std::min(h, n)), kNanum);
    cut_window_average(work, result.data(), h, 0);
    std::fill(result.begin(), result.begin() + static_cast<std::ptrdiff_t>(std::min(2 * h, n)),
              kNanum);
    std::copy(result.begin(), result.end(), out);
}

void weighted_average(std::span<const double> in, double* out, std::span<const double> w,
                      double total) {
    const std::size_t n = in.size(), p = w.size();
    std::vector<double> result(n, kNanum);
    std::size_t missing = 0;
    for (std::size_t i = 0; i + 1 < p; ++i) missing += is_missing(in[i]) ? 1 : 0;
    for (std::size_t i = p - 1; i < n; ++i) {
        missing += is_missing(in[i]) ? 1 : 0;
        if (missing == 0) {
            const double* window = in.data() + (i + 1 - p);
            double s = 0.0;
            for (std::size_t j = 0; j < p; ++j) s += w[j] * window[j];
            result[i] = s / total;
        }
        missing -= is_missing(in[i + 1 - p]) ? 1 : 0;
    }
    std::copy(result.begin(), result.end(), out);
}

void moving_rms(std::span<const double> in, double* out, std::size_t period) {
    const std::size_t n = in.size();
    std::vector<double> result(n, kNanum);
    CompensatedSum s;
    NonFinite odd;  // squares that are not finite stay out of the sum
    std::size_t count = 0;
    for (std::size_t i = 0; i < n; ++i) {
        if (!is_missing(in[i])) {
            const double square = in[i] * in[i];
            if (!odd.count(square, 1)) s.add(square);
            ++count;
        }
        if (i >= period) {
            const double old = in[i - period];
            if (!is_missing(old)) {
                const double square = old * old;
                if (!odd.count(square, -1)) s.add(-square);
                --count;
            }
        }
        if (i + 1 >= period && count > 0) {
            result[i] = odd.any()
                            ? std::sqrt(odd.mean())
                            : std::sqrt(std::max(s.value(), 0.0) / static_cast<double>(count));
        }
        if (count == 0) s = CompensatedSum{};  // an empty window restarts the sum exactly
    }
    std::copy(result.begin(), result.end(), out);
}

void moving_slope(std::span<const double> in, double* out, std::size_t period) {
    const std::size_t n = in.size();
    std::vector<double> result(n, kNanum);
    // Over the usable values of the window, positions j = 0..period-1 from its oldest
    // point: count c, sum_j, sum_j2 (integers, exact), sum_y and sum_jy (compensated).
    double c = 0.0, sum_j = 0.0, sum_j2 = 0.0;
    CompensatedSum sum_y, sum_jy;
    NonFinite odd;  // counted in c and the positions, kept out of sum_y and sum_jy
    const double last = static_cast<double>(period) - 1.0;
    for (std::size_t i = 0; i < n; ++i) {
        if (i >= period) {
            // The oldest point (j = 0) leaves; every other position drops by one.
            const double old = in[i - period];
            if (!is_missing(old)) {
                c -= 1.0;
                if (!odd.count(old, -1)) sum_y.add(-old);
            }
            sum_jy.add(-sum_y.value());
            sum_j2 += c - 2.0 * sum_j;
            sum_j -= c;
        }
        const double j = i >= period ? last : static_cast<double>(i);
        const double v = in[i];
        if (!is_missing(v)) {
            c += 1.0;
            sum_j += j;
            sum_j2 += j * j;
            if (!odd.count(v, 1)) {
                sum_y.add(v);
                sum_jy.add(j * v);
            }
        }
        if (i + 1 >= period && c >= 2.0) {
            const double denominator = c * sum_j2 - sum_j * sum_j;
            if (odd.any()) {
                result[i] = std::numeric_limits<double>::quiet_NaN();  // no slope through it
            } else if (denominator > 0.0) {
                result[i] = (c * sum_jy.value() - sum_j * sum_y.value()) / denominator;
            }
        }
    }
    std::copy(result.begin(), result.end(), out);
}

void circular_average(std::span<const double> in, double* out, std::size_t period) {
    const std::size_t n = in.size();
    std::vector<double> result(n);
    // Window of point i: period points from i - period/2, wrapping around the ends.
    auto at = [&](std::size_t k) { return in[k % n]; };
    const std::size_t back = period / 2;
    CompensatedSum s;
    NonFinite odd;  // kept out of the sum
    std::size_t count = 0;
    for (std::size_t k = 0; k < period; ++k) {  // window of point 0: from n - back
        const double v = at(n - back + k);
        if (!is_missing(v)) {
            if (!odd.count(v, 1)) s.add(v);
            ++count;
        }
    }
    for (std::size_t i = 0; i < n; ++i) {
        if (i > 0) {
            const double leaving = at(n + i - 1 - back), entering = at(n + i - back + period - 1);
            if (!is_missing(leaving)) {
                if (!odd.count(leaving, -1)) s.add(-leaving);
                --count;
            }
            if (!is_missing(entering)) {
                if (!odd.count(entering, 1)) s.add(entering);
                ++count;
            }
        }
        if (count == 0) s = CompensatedSum{};
        result[i] = count == 0  ? kNanum
                    : odd.any() ? odd.mean()
                                : s.value() / static_cast<double>(count);
    }
    std::copy(result.begin(), result.end(), out);
}

}  // namespace zemath

using namespace zemath;

ZEMATH_API int zemath_emovavg(double* pOut, const double* pIn, int nSize, int nPeriod,
                              int bSeedWithFirst, int nMissingAsZero) noexcept {
    if (pOut == nullptr || pIn == nullptr || nPeriod < 1) return ZEMATH_ERR_GENERAL;
    if (nSize < 2) return ZEMATH_OK;
    if (nPeriod > nSize) return ZEMATH_ERR_GENERAL;
    return guard_status([&]() -> int {
        if (nMissingAsZero == 1) {
            const std::vector<double> copy = zero_missing(pIn, static_cast<std::size_t>(nSize));
            return zemath_emovavg(pOut, copy.data(), nSize, nPeriod, bSeedWithFirst, 0);
        }
        exponential_average(span_of(pIn, nSize), pOut, static_cast<std::size_t>(nPeriod),
                            bSeedWithFirst != 0);
        return ZEMATH_OK;
    });
}

ZEMATH_API int zemath_mmovavg(double* pOut, const double* pIn, int nSize, int nPeriod,
                              int nMissingAsZero) noexcept {
    if (pOut == nullptr || pIn == nullptr || nPeriod < 1) return ZEMATH_ERR_GENERAL;
    if (nSize < 1) return ZEMATH_OK;
    return guard_status([&]() -> int {
        if (nMissingAsZero == 1) {
            const std::vector<double> copy = zero_missing(pIn, static_cast<std::size_t>(nSize));
            return zemath_mmovavg(pOut, copy.data(), nSize, nPeriod, 0);
        }
        modified_average(span_of(pIn, nSize), pOut,
                         static_cast<std::size_t>(std::min(nPeriod, nSize)));
        return ZEMATH_OK;
    });
}

ZEMATH_API int zemath_tmovavg(double* pOut, const double* pIn, int nSize, int nPeriod,
                              int nMissingAsZero) noexcept {
    if (pOut == nullptr || pIn == nullptr || nPeriod < 1 || nPeriod > nSize)
        return ZEMATH_ERR_GENERAL;
    const int status = guard_status([&]() -> int {
        if (nMissingAsZero == 1) {
            const std::vector<double> copy = zero_missing(pIn, static_cast<std::size_t>(nSize));
            return zemath_tmovavg(pOut, copy.data(), nSize, nPeriod, 0);
        }
        triangular_average(span_of(pIn, nSize), pOut, static_cast<std::size_t>(nPeriod));
        return ZEMATH_OK;
    });
    return status == ZEMATH_OK ? ZEMATH_OK : ZEMATH_ERR_GENERAL;  // a failed pass
}

ZEMATH_API int zemath_wmovavg(double* pOut, const double* pIn, int nSize, const double* pWeights,
                              int nPeriod, int nMissingAsZero) noexcept {
    if (pOut == nullptr || pIn == nullptr || pWeights == nullptr || nPeriod < 1 || nPeriod > nSize)
        return ZEMATH_ERR_GENERAL;
    const auto p = static_cast<std::size_t>(nPeriod);
    double total = 0.0;
    for (std::size_t j = 0; j < p; ++j) {
        if (is_missing(pWeights[j])) return ZEMATH_ERR_GENERAL;
        total += pWeights[j];
    }
    if (total == 0.0) return ZEMATH_ERR_GENERAL;
    return guard_status([&]() -> int {
        if (nMissingAsZero == 1) {
            const std::vector<double> copy = zero_missing(pIn, static_cast<std::size_t>(nSize));
            return zemath_wmovavg(pOut, copy.data(), nSize, pWeights, nPeriod, 0);
        }
        weighted_average(span_of(pIn, nSize), pOut, {pWeights, p}, total);
        return ZEMATH_OK;
    });
}

namespace {
template <class Statistic>
int trailing(double* pOut, const double* pIn, int nSize, int nPeriod, int nMissingAsZero,
             int min_period, Statistic statistic) {
    if (pOut == nullptr || pIn == nullptr || nPeriod < min_period || nPeriod > nSize)
        return ZEMATH_ERR_GENERAL;
    return guard_status([&]() -> int {
        const auto n = static_cast<std::size_t>(nSize);
        std::vector<double> copy;
        std::span<const double> data{pIn, n};
        if (nMissingAsZero == 1) {
            copy = zero_missing(pIn, n);
            data = copy;
        }
        statistic(data, pOut, static_cast<std::size_t>(nPeriod));
        return ZEMATH_OK;
    });
}
}  // namespace

ZEMATH_API int zemath_movrms(double* pOut, const double* pIn, int nSize, int nPeriod,
                             int nMissingAsZero) noexcept {
    return trailing(pOut, pIn, nSize, nPeriod, nMissingAsZero, 1, moving_rms);
}

ZEMATH_API int zemath_movslope(double* pOut, const double* pIn, int nSize, int nPeriod,
                               int nMissingAsZero) noexcept {
    return trailing(pOut, pIn, nSize, nPeriod, nMissingAsZero, 2, moving_slope);
}

ZEMATH_API int zemath_d_running_ave_circular(double* pOut, const double* pIn, int nSize,
                                             int nPeriod, int nMissingAsZero) noexcept {
    return trailing(pOut, pIn, nSize, nPeriod, nMissingAsZero, 1, circular_average);
}
