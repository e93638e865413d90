// Empirical mode decomposition of a curve (X, Y) into intrinsic mode functions and a
// residue.
//
// Method: the local maxima and minima (three-point windows, the leftmost point of a flat
// top or bottom) are interpolated over every X, by the interpolation method the envelope
// mode names, into an upper and a lower envelope. Beyond the first and last extreme the
// nearest two extremes of each kind are mirrored about the curve's end abscissas (their Y
// kept), so that the envelopes are interpolated, never extrapolated, up to both ends.
// Sifting subtracts the envelope mean from the candidate until the stopping test passes
// (every |mean| below dThreshold2 times the average amplitude, extreme and zero-crossing
// counts within one, and at most a dTolerance share of points above dThreshold1 times the
// average amplitude), at most ten times; the decomposition removes each IMF from the
// remainder until the remainder has fewer than two maxima or two minima, vanishes, or the
// caller's rows are full. Each envelope costs O(n): the extremes come from a monotone
// window scan, the splines from one tridiagonal solve, and the evaluation from one sweep.
//
// Accuracy: the IMFs and the residue sum back to the signal up to the rounding of one
// subtraction per IMF (relative 1e-15 per IMF). How well the IMFs separate the components
// is a property of the method: tones whose frequencies differ by a factor of two or more
// come out as separate IMFs, with the end effects of the envelopes near both ends.
//
// Failure codes: -10, -11, -17, -18, -19, -105, -106, -109, -110 as documented in
// zemath/emd.h (-107 is reserved for a sifting limit that the ten-subtraction cap never
// reaches).
//
// References: N. E. Huang et al., The empirical mode decomposition and the Hilbert
// spectrum for nonlinear and non-stationary time series analysis, Proc. R. Soc. Lond. A
// 454 (1998) 903-995; G. Rilling, P. Flandrin, P. Goncalves, On empirical mode
// decomposition and its algorithms, IEEE-EURASIP Workshop on Nonlinear Signal and Image
// Processing (2003) (the two-threshold stopping test and mirrored end extremes).
#include "signal/emd.hpp"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>

#include "core/guard.hpp"
#include "core/missing.hpp"
#include "gridding/interpolate.hpp"
#include "signal/peaks.hpp"
#include "zemath/emd.h"
#include "zemath/status.h"

namespace zemath::emd {

void CleanCurve::scatter(std::span<const double> values, double* out) const {
    if (positions.empty()) {
        std::copy(values.begin(), values.end(), out);
        return;
    }
    std::fill(out, out + caller_size, kNanum);
    for (std::size_t k = 0; k < positions.size(); ++k) out[positions[k]] = values[k];
}

int prepare_curve(const double* x, const double* y, std::size_t n, bool require_ascending,
                  CleanCurve& curve) {
    curve.caller_size = n;
    bool any_missing = false;
    for (std::size_t i = 0; i < n && !any_missing; ++i)
        any_missing = is_missing(x[i]) || is_missing(y[i]);
    if (!any_missing) {
        curve.x = {x, n};
        curve.y = {y, n};
    } else {
        for (std::size_t i = 0; i < n; ++i) {
            if (is_missing(x[i]) || is_missing(y[i])) continue;
            curve.x_store.push_back(x[i]);
            curve.y_store.push_back(y[i]);
            curve.positions.push_back(i);
        }
        curve.x = curve.x_store;
        curve.y = curve.y_store;
    }
    if (require_ascending) {
        for (std::size_t i = 0; i < curve.x.size(); ++i) {
            if (!std::isfinite(curve.x[i])) return ZEMATH_ERR_NOT_MONOTONIC;
            if (i > 0 && !(curve.x[i] > curve.x[i - 1])) return ZEMATH_ERR_NOT_MONOTONIC;
        }
    }
    return ZEMATH_OK;
}

namespace {

// Nodes of one envelope: the extremes at `index` with the nearest ones mirrored about
// both end abscissas. A mirrored node that is not finite (X near the double range) or
// would not keep the nodes strictly ascending is left out. Returns the node count.
std::size_t envelope_nodes(std::span<const double> x, std::span<const double> y,
                           std::span<const int> index, EnvelopeWork& work) {
    work.node_x.clear();
    work.node_y.clear();
    const std::size_t count = index.size();
    const std::size_t mirrored = std::min<std::size_t>(count, kMirroredExtremes);
    const double first = x.front(), last = x.back();
    // Left end: the mirror images come in reverse order, the farthest first.
    double left_x[kMirroredExtremes], left_y[kMirroredExtremes];
    std::size_t left = 0;
    double bound = x[static_cast<std::size_t>(index[0])];
    for (std::size_t j = 0; j < mirrored; ++j) {
        const auto at = static_cast<std::size_t>(index[j]);
        const double image = first - (x[at] - first);
        if (!std::isfinite(image) || !(image < bound)) break;
        left_x[left] = image;
        left_y[left] = y[at];
        bound = image;
        ++left;
    }
    for (std::size_t j = left; j-- > 0;) {
        work.node_x.push_back(left_x[j]);
        work.node_y.push_back(left_y[j]);
    }
    for (int at : index) {
        work.node_x.push_back(x[static_cast<std::size_t>(at)]);
        work.node_y.push_back(y[static_cast<std::size_t>(at)]);
    }
    bound = x[static_cast<std::size_t>(index[count - 1])];
    for (std::size_t j = 0; j < mirrored; ++j) {
        const auto at = static_cast<std::size_t>(index[count - 1 - j]);
        const double image = last + (last - x[at]);
        if (!std::isfinite(image) || !(image > bound)) break;
        work.node_x.push_back(image);
        work.node_y.push_back(y[at]);
        bound = image;
    }
    return work.node_x.size();
}

int one_envelope(std::span<const double> x, std::span<const double> y, std::span<const int> index,
                 int mode, std::span<double> out, EnvelopeWork& work) {
    const std::size_t nodes = envelope_nodes(x, y, index, work);
    if (nodes < 2) return ZEMATH_ERR_TOO_FEW_POINTS;
    const auto method = static_cast<InterpMethod>(mode);
    if (method == InterpMethod::nearest) {
        // Beyond dropped mirror images the end value is held rather than extrapolated.
        interpolate_clean(work.node_x, work.node_y, x, out, method, InterpOutside::hold);
        return ZEMATH_OK;
    }
    // The pieces of interpolate_clean (the same node slopes and power-form coefficients,
    // so the same values), evaluated by one merge of the ascending targets with the nodes:
    // the targets are the curve's own X, so no search is needed.
    const double* nx = work.node_x.data();
    const double* ny = work.node_y.data();
    const bool cubic = method != InterpMethod::linear;
    if (cubic) {
        work.slope.resize(nodes);
        work.c2.resize(nodes - 1);
        work.c3.resize(nodes - 1);
        cubic_node_slopes(method, work.node_x, work.node_y, work.slope);
        for (std::size_t j = 0; j + 1 < nodes; ++j) {
            const double h = nx[j + 1] - nx[j], secant = (ny[j + 1] - ny[j]) / h, inv_h = 1 / h;
            const double t = (work.slope[j] + work.slope[j + 1] - 2 * secant) * inv_h;
            work.c3[j] = t * inv_h;
            work.c2[j] = (secant - work.slope[j]) * inv_h - t;
        }
    }
    const double* slope = work.slope.data();
    const double* c2 = work.c2.data();
    const double* c3 = work.c3.data();
    const std::size_t last = nodes - 2;
    std::size_t j = 0;
    for (std::size_t i = 0; i < x.size(); ++i) {
        const double t = x[i];
        if (t < nx[0] || t > nx[nodes - 1]) {  // beyond dropped images: the end value held
            out[i] = t < nx[0] ? ny[0] : ny[nodes - 1];
            continue;
        }
        while (j < last && nx[j + 1] <= t) ++j;
        const double u = t - nx[j];
        if (cubic)
            out[i] = ny[j] + u * (slope[j] + u * (c2[j] + u * c3[j]));
        else
            out[i] = (ny[j + 1] - ny[j]) / (nx[j + 1] - nx[j]) * u + ny[j];
    }
    return ZEMATH_OK;
}

// The extremes of zemath_find_local_extremes over three-point windows (flags 1 and 2
// apart, no sign rule): the centre is the window's leftmost maximum exactly when it is
// above its left neighbour and not below its right one (the mirror for a minimum). One
// pass for both kinds on data without NaN; with NaN the window tracker's own rule.
void three_point_extremes(std::span<const double> y, std::vector<int>& maxima,
                          std::vector<int>& minima) {
    maxima.clear();
    minima.clear();
    const std::size_t n = y.size();
    bool has_nan = false;
    for (std::size_t c = 1; c + 1 < n; ++c) {
        const double left = y[c - 1], mid = y[c], right = y[c + 1];
        if (mid > left && mid >= right)
            maxima.push_back(static_cast<int>(c));
        else if (mid < left && mid <= right)
            minima.push_back(static_cast<int>(c));
        has_nan = has_nan || std::isnan(mid);
    }
    if (n > 0) has_nan = has_nan || std::isnan(y[0]) || std::isnan(y[n - 1]);
    if (has_nan) {
        maxima = local_extreme_centres(y, 1, kPeakPositive, false);
        minima = local_extreme_centres(y, 1, kPeakNegative, false);
    }
}

int sign_of(double v) {
    return (v > 0.0) - (v < 0.0);
}

}  // namespace

int envelopes(std::span<const double> x, std::span<const double> y, int mode,
              std::span<double> upper, std::span<double> lower, int& n_max, int& n_min,
              EnvelopeWork& work) {
    // Extremes over three-point windows without the sign rule: a flat top counts once,
    // at its left point; the end points are never extremes.
    three_point_extremes(y, work.maxima, work.minima);
    if (work.maxima.empty() || work.minima.empty()) return ZEMATH_ERR_TOO_FEW_POINTS;
    // Lower first into its own buffer: upper may not be written before both succeed.
    int status = one_envelope(x, y, work.minima, mode, lower, work);
    if (status == ZEMATH_OK) status = one_envelope(x, y, work.maxima, mode, upper, work);
    if (status != ZEMATH_OK) return status;
    n_max = static_cast<int>(work.maxima.size());
    n_min = static_cast<int>(work.minima.size());
    return ZEMATH_OK;
}

void mean_and_amplitude(std::span<double> upper_to_mean, std::span<double> lower_to_amp) {
    for (std::size_t i = 0; i < upper_to_mean.size(); ++i) {
        const double u = upper_to_mean[i], l = lower_to_amp[i];
        // Halves first: u + l cannot overflow for envelopes near the double range.
        upper_to_mean[i] = 0.5 * u + 0.5 * l;
        lower_to_amp[i] = 0.5 * u - 0.5 * l;
    }
}

int zero_crossings(std::span<const double> x, std::span<const double> y, double* cross_x,
                   int* direction) {
    const std::size_t n = y.size();
    int count = 0;
    const auto record = [&](double at, int dir) {
        if (cross_x != nullptr) cross_x[count] = at;
        if (direction != nullptr) direction[count] = dir;
        ++count;
    };
    for (std::size_t i = 0; i < n; ++i) {
        const double y0 = y[i];
        // The utility library's tolerant comparison is purely relative, so a value equals
        // 0 under it only when it is exactly +-0.
        if (y0 == 0.0) {
            const int previous = i > 0 ? sign_of(y[i - 1]) : 0;
            const int next = i + 1 < n ? sign_of(y[i + 1]) : 0;
            record(x[i], (next > previous) - (next < previous));
            continue;
        }
        if (i + 1 == n) break;
        const double y1 = y[i + 1];
        // Opposite signs tested directly: the product y0*y1 underflows to -0 for tiny
        // values and would lose the crossing. NaN has no sign and crosses nothing.
        if (!((y0 < 0.0 && y1 > 0.0) || (y0 > 0.0 && y1 < 0.0))) continue;
        // The linear root x0 + (0 - y0)/(y1 - y0)(x1 - x0) with t = 1/(1 - y1/y0): no
        // cancellation (y1/y0 < 0) and no overflow of y1 - y0.
        const double t = 1.0 / (1.0 - y1 / y0);
        const double x0 = x[i], x1 = x[i + 1], dx = x1 - x0;
        const double root = std::isfinite(dx) ? x0 + t * dx : (1.0 - t) * x0 + t * x1;
        record(root, y1 > y0 ? 1 : -1);
    }
    return count;
}

bool sifting_done(std::span<const double> mean, std::span<const double> amp, int n_max, int n_min,
                  int n_zero, const Thresholds& thresholds, std::size_t share_denominator) {
    double sum = 0.0;
    std::size_t used = 0;
    for (double a : amp) {
        if (is_missing(a)) continue;
        sum += std::fabs(a);
        ++used;
    }
    // Kept deliberately: every point is measured against the average amplitude, not its
    // own; callers' thresholds are tuned to it.
    const double average = sum / static_cast<double>(used);
    std::size_t above = 0;
    for (double m : mean) {
        if (is_missing(m)) continue;
        const double sigma = std::fabs(m) / average;
        if (sigma > thresholds.hard_level) return false;
        if (sigma > thresholds.share_level) ++above;
    }
    if (std::llabs(static_cast<long long>(n_max) + n_min - n_zero) >= 2) return false;
    // Kept deliberately: the share is taken over all of the caller's points, missing
    // ones included.
    const double share = static_cast<double>(above) / static_cast<double>(share_denominator);
    return share <= thresholds.tolerance;
}

bool enough_extremes(std::span<const double> y) {
    std::vector<int> maxima, minima;
    three_point_extremes(y, maxima, minima);
    return maxima.size() >= 2 && minima.size() >= 2;
}

int sift(std::span<const double> x, std::span<const double> y, const Thresholds& thresholds,
         int mode, std::size_t share_denominator, std::span<double> imf,
         std::span<double> remainder, std::span<double> mean, std::span<double> amp) {
    EnvelopeWork work;
    std::copy(y.begin(), y.end(), imf.begin());
    const auto measure = [&](bool& done) -> int {
        int n_max = 0, n_min = 0;
        if (envelopes(x, imf, mode, mean, amp, n_max, n_min, work) != ZEMATH_OK)
            return ZEMATH_ERR_SIFT_ENVELOPE;
        mean_and_amplitude(mean, amp);
        const int n_zero = zero_crossings(x, imf, nullptr, nullptr);
        done = sifting_done(mean, amp, n_max, n_min, n_zero, thresholds, share_denominator);
        return static_cast<int>(ZEMATH_OK);
    };
    bool done = false;
    int status = measure(done);
    // Kept deliberately: after kMaxSubtractions the candidate is accepted even when the
    // test still fails, and the call succeeds; callers rely on sifting always ending.
    for (int subtraction = 0; status == ZEMATH_OK && !done && subtraction < kMaxSubtractions;
         ++subtraction) {
        for (std::size_t i = 0; i < imf.size(); ++i) imf[i] -= mean[i];
        status = measure(done);
    }
    for (std::size_t i = 0; i < y.size(); ++i) remainder[i] = y[i] - imf[i];
    return status;
}

namespace {

bool vanished(std::span<const double> values) {
    double largest = 0.0;
    for (double v : values) largest = std::max(largest, std::fabs(v));  // NaN is passed over
    return largest < kVanishingLevel;
}

}  // namespace

int decompose(std::span<const double> x, std::span<const double> y, const Thresholds& thresholds,
              int mode, int max_imf, std::size_t share_denominator,
              const std::function<void(int, std::span<const double>)>& store,
              std::vector<double>& residue, int& n_imf) {
    if (!enough_extremes(y)) return ZEMATH_ERR_TOO_FEW_EXTREMES;
    const std::size_t n = y.size();
    residue.assign(y.begin(), y.end());
    std::vector<double> imf(n), next(n), mean(n), amp(n);
    int k = 0;
    for (;;) {
        // The vanishing test comes before the extreme test, so a remainder that is exactly
        // 0 after an IMF ends with -106 and the count reached.
        if (vanished(residue)) {
            n_imf = k;
            return ZEMATH_ERR_REMAINDER_VANISHED;
        }
        // The IMF store is bounded by the caller's rows.
        if (k == max_imf) break;
        if (k > 0 && !enough_extremes(residue)) break;
        const int status =
            sift(x, residue, thresholds, mode, share_denominator, imf, next, mean, amp);
        if (status != ZEMATH_OK) {
            n_imf = k;
            return status;
        }
        store(k, imf);
        residue.swap(next);
        ++k;
    }
    n_imf = k;
    return ZEMATH_OK;
}

}  // namespace zemath::emd

// ---- Exports ---------------------------------------------------------------------------

namespace {

using namespace zemath;
using namespace zemath::emd;

std::size_t as_size(int n) {
    return static_cast<std::size_t>(n);
}

}  // namespace

ZEMATH_API int zemath_emd_get_upper_lower_envelope(int nSize, const double* pX, const double* pY,
                                                   double* pUpper, double* pLower, int* pnMax,
                                                   int* pnMin, int nEnvelopeMode) noexcept {
    if (pX == nullptr || pY == nullptr || pUpper == nullptr || pLower == nullptr ||
        pnMax == nullptr || pnMin == nullptr)
        return ZEMATH_ERR_NULL_POINTER;
    if (nSize < 1 || nEnvelopeMode < 0) return ZEMATH_ERR_TOO_FEW_POINTS;
    if (nEnvelopeMode > kLastEnvelopeMode) return ZEMATH_ERR_BAD_OPTION;
    return guard_status([&]() -> int {
        CleanCurve curve;
        int status = prepare_curve(pX, pY, as_size(nSize), true, curve);
        if (status != ZEMATH_OK) return status;
        const std::size_t m = curve.x.size();
        std::vector<double> upper(m), lower(m);
        EnvelopeWork work;
        int n_max = 0, n_min = 0;
        status = envelopes(curve.x, curve.y, nEnvelopeMode, upper, lower, n_max, n_min, work);
        if (status != ZEMATH_OK) return status;
        curve.scatter(upper, pUpper);
        curve.scatter(lower, pLower);
        *pnMax = n_max;
        *pnMin = n_min;
        return static_cast<int>(ZEMATH_OK);
    });
}

ZEMATH_API int zemath_emd_envelope_mean_amp(int nSize, const double* pX, const double* pY,
                                            double* pMean, double* pAmp, int* pnMax, int* pnMin,
                                            int nEnvelopeMode) noexcept {
    if (pX == nullptr || pY == nullptr || pMean == nullptr || pAmp == nullptr || pnMax == nullptr ||
        pnMin == nullptr)
        return ZEMATH_ERR_NULL_POINTER;
    if (nSize < 1) return ZEMATH_ERR_TOO_FEW_POINTS;
    return guard_status([&]() -> int {
        if (nEnvelopeMode < 0 || nEnvelopeMode > kLastEnvelopeMode) return ZEMATH_ERR_ENVELOPE;
        CleanCurve curve;
        if (prepare_curve(pX, pY, as_size(nSize), true, curve) != ZEMATH_OK)
            return ZEMATH_ERR_ENVELOPE;
        const std::size_t m = curve.x.size();
        std::vector<double> mean(m), amp(m);
        EnvelopeWork work;
        int n_max = 0, n_min = 0;
        if (envelopes(curve.x, curve.y, nEnvelopeMode, mean, amp, n_max, n_min, work) != ZEMATH_OK)
            return ZEMATH_ERR_ENVELOPE;
        mean_and_amplitude(mean, amp);
        curve.scatter(mean, pMean);
        curve.scatter(amp, pAmp);
        *pnMax = n_max;
        *pnMin = n_min;
        return ZEMATH_OK;
    });
}

ZEMATH_API int zemath_emd_get_zero_crossing(int nSize, const double* pX, const double* pY,
                                            int* pnCrossings, double* pCrossX,
                                            int* pDirection) noexcept {
    if (pX == nullptr || pY == nullptr || pnCrossings == nullptr) return ZEMATH_ERR_NULL_POINTER;
    if (nSize < 2) return ZEMATH_ERR_TOO_FEW_POINTS;
    return guard_status([&]() -> int {
        CleanCurve curve;
        prepare_curve(pX, pY, as_size(nSize), false, curve);
        *pnCrossings = zero_crossings(curve.x, curve.y, pCrossX, pDirection);
        return static_cast<int>(ZEMATH_OK);
    });
}

ZEMATH_API int zemath_emd_stop_sifting(int nSize, const double* pX, const double* pY,
                                       double dThreshold1, double dThreshold2, double dTolerance,
                                       double* pIMF, double* pRemainder, double* pMean,
                                       double* pAmp, int nEnvelopeMode) noexcept {
    if (pX == nullptr || pY == nullptr || pIMF == nullptr || pRemainder == nullptr ||
        pMean == nullptr || pAmp == nullptr)
        return ZEMATH_ERR_NULL_POINTER;
    if (nSize < 1) return ZEMATH_ERR_TOO_FEW_POINTS;
    return guard_status([&]() -> int {
        if (nEnvelopeMode < 0 || nEnvelopeMode > kLastEnvelopeMode) return ZEMATH_ERR_SIFT_ENVELOPE;
        CleanCurve curve;
        if (prepare_curve(pX, pY, as_size(nSize), true, curve) != ZEMATH_OK)
            return ZEMATH_ERR_SIFT_ENVELOPE;
        const std::size_t m = curve.x.size();
        std::vector<double> imf(m), remainder(m), mean(m), amp(m);
        const Thresholds thresholds{dThreshold1, dThreshold2, dTolerance};
        const int status = sift(curve.x, curve.y, thresholds, nEnvelopeMode, as_size(nSize), imf,
                                remainder, mean, amp);
        if (status != ZEMATH_OK) return status;
        curve.scatter(imf, pIMF);
        curve.scatter(remainder, pRemainder);
        curve.scatter(mean, pMean);
        curve.scatter(amp, pAmp);
        return ZEMATH_OK;
    });
}

ZEMATH_API int zemath_empirical_mode_decomposition(int nSize, const double* pX, const double* pY,
                                                   double dThreshold1, double dThreshold2,
                                                   double dTolerance, double* pIMF, int nMaxIMF,
                                                   int* pnIMF, double* pResidue,
                                                   int nEnvelopeMode) noexcept {
    if (pX == nullptr || pY == nullptr || pIMF == nullptr || pnIMF == nullptr ||
        pResidue == nullptr)
        return ZEMATH_ERR_NULL_POINTER;
    if (nSize < 1 || nMaxIMF < 0 || nEnvelopeMode < 0) return ZEMATH_ERR_TOO_FEW_POINTS;
    if (nEnvelopeMode > kLastEnvelopeMode) return ZEMATH_ERR_BAD_OPTION;
    return guard_status([&]() -> int {
        CleanCurve curve;
        const std::size_t n = as_size(nSize);
        int status = prepare_curve(pX, pY, n, true, curve);
        if (status != ZEMATH_OK) return status;
        // The signal is copied first, so the outputs may share storage with the inputs.
        std::vector<double> x(curve.x.begin(), curve.x.end()), y(curve.y.begin(), curve.y.end());
        curve.x = x;
        curve.y = y;
        std::vector<double> residue;
        int n_imf = 0;
        const Thresholds thresholds{dThreshold1, dThreshold2, dTolerance};
        status = decompose(
            x, y, thresholds, nEnvelopeMode, nMaxIMF, n,
            [&](int k, std::span<const double> imf) { curve.scatter(imf, pIMF + as_size(k) * n); },
            residue, n_imf);
        if (status == ZEMATH_ERR_TOO_FEW_EXTREMES) return status;
        curve.scatter(residue, pResidue);
        *pnIMF = n_imf;
        return status;
    });
}
