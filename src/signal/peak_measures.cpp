// Point look-ups on a curve for peak analysis: linear level crossings, the X of the point
// whose Y is nearest a value (bisection over the points sorted by Y, no interpolation),
// and the linear Y at an X (bisection or the even-grid index). Exact arithmetic apart
// from the one linear root or interpolation per result. Failure codes: -11 null pointer,
// -18 too few points or X not monotonic, -19 allocation.
#include <algorithm>
#include <cmath>
#include <span>
#include <vector>

#include "core/guard.hpp"
#include "frame/nrvec.hpp"
#include "frame/search.hpp"
#include "frame/sort.hpp"
#include "core/missing.hpp"
#include "gridding/interpolate.hpp"
#include "signal/integration.hpp"
#include "signal/peaks.hpp"
#include "zemath/peak_measures.h"
#include "zemath/status.h"

namespace zemath {
namespace {

// Copy of (keys, companion) sorted by keys, stable.
void sorted_pairs(const double* keys, const double* companion, int n, NRVec<double>& sorted_keys,
                  NRVec<double>& sorted_companion) {
    sorted_keys = NRVec<double>(n);
    sorted_companion = NRVec<double>(n);
    std::copy(keys, keys + n, sorted_keys.data());
    NRVec<int> order(n);
    sort_with_index(sorted_keys, order, true, 1);
    for (int k = 0; k < n; ++k) sorted_companion[k] = companion[order[k]];
}

}  // namespace
}  // namespace zemath

using namespace zemath;

ZEMATH_API int zemath_get_level_crossing(int nSize, const double* pX, const double* pY,
                                         double dLevel, int* pnCross, double* pXCross) noexcept {
    if (pX == nullptr || pY == nullptr || pnCross == nullptr || pXCross == nullptr)
        return ZEMATH_ERR_NULL_POINTER;
    if (nSize < 1) return ZEMATH_ERR_TOO_FEW_POINTS;
    if (monotonic_direction({pX, static_cast<std::size_t>(nSize)}, false) == 0)
        return ZEMATH_ERR_TOO_FEW_POINTS;
    int count = 0;
    for (int i = 0; i < nSize; ++i) {
        if (pY[i] == dLevel) {
            pXCross[count++] = pX[i];
            continue;
        }
        if (i + 1 < nSize && (pY[i] - dLevel) * (pY[i + 1] - dLevel) < 0.0) {
            const double t = (pY[i + 1] - dLevel) / (pY[i + 1] - pY[i]);
            pXCross[count++] = (1.0 - t) * pX[i + 1] + t * pX[i];
        }
    }
    *pnCross = count;
    return ZEMATH_OK;
}

ZEMATH_API int zemath_x_from_y(int nSize, const double* pX, const double* pY, double dY,
                               double* pXOut) noexcept {
    if (pX == nullptr || pY == nullptr || pXOut == nullptr) return ZEMATH_ERR_NULL_POINTER;
    if (nSize < 2) return ZEMATH_ERR_TOO_FEW_POINTS;
    return guard_status([&] {
        NRVec<double> ys, xs;
        sorted_pairs(pY, pX, nSize, ys, xs);
        int lo = 0, hi = nSize - 1;
        while (hi - lo > 1) {
            const int mid = (lo + hi) / 2;
            if (ys[mid] == dY) {
                *pXOut = xs[mid];
                return ZEMATH_OK;
            }
            if (ys[mid] < dY)
                lo = mid;
            else
                hi = mid;
        }
        // Kept deliberately: no interpolation, the nearer data point's X (upper on a tie).
        *pXOut = std::fabs(ys[lo] - dY) < std::fabs(ys[hi] - dY) ? xs[lo] : xs[hi];
        return ZEMATH_OK;
    });
}

ZEMATH_API int zemath_y_form_x(int nSize, const double* pX, const double* pY, double dX,
                               double* pYOut, bool bSorted, bool bEvenlySpaced) noexcept {
    if (pX == nullptr || pY == nullptr || pYOut == nullptr) return ZEMATH_ERR_NULL_POINTER;
    if (nSize < 2) return ZEMATH_ERR_TOO_FEW_POINTS;
    return guard_status([&] {
        NRVec<double> sorted_x, sorted_y;
        const double* x = pX;
        const double* y = pY;
        if (!bSorted) {
            sorted_pairs(pX, pY, nSize, sorted_x, sorted_y);
            x = sorted_x.data();
            y = sorted_y.data();
        }
        int i = 0;
        if (bEvenlySpaced) {
            const double position = std::trunc((dX - x[0]) / (x[1] - x[0]));
            // NaN and negative positions take the first interval.
            i = position > 0.0 ? static_cast<int>(std::min(position, double(nSize - 2))) : 0;
        } else {
            int lo = 0, hi = nSize - 1;
            while (hi - lo > 1) {
                const int mid = (lo + hi) / 2;
                if (x[mid] == dX) {
                    *pYOut = y[mid];
                    return ZEMATH_OK;
                }
                if (x[mid] < dX)
                    lo = mid;
                else
                    hi = mid;
            }
            i = lo;
        }
        *pYOut = y[i] + (y[i + 1] - y[i]) * (dX - x[i]) / (x[i + 1] - x[i]);
        return ZEMATH_OK;
    });
}

ZEMATH_API int zemath_generate_peak_data(int nSize, const double* pX, double* pY, int nShape,
                                         double dCentre, double dHeight, double dFWHM,
                                         double dOffset) noexcept {
    if (pX == nullptr || pY == nullptr) return ZEMATH_ERR_NULL_POINTER;
    if (nSize < 1) return ZEMATH_ERR_TOO_FEW_POINTS;
    if (nShape != ZEMATH_PEAK_GAUSSIAN && nShape != ZEMATH_PEAK_LORENTZIAN)
        return ZEMATH_ERR_BAD_OPTION;
    if (!(dFWHM > 0.0) || !std::isfinite(dFWHM)) return ZEMATH_ERR_PARAM_RANGE;
    const double half = 0.5 * dFWHM;
    // exp(-4 ln2 d^2 / w^2) is 1/2 at d = w/2.
    const double gauss = 4.0 * std::log(2.0) / (dFWHM * dFWHM);
    for (int i = 0; i < nSize; ++i) {
        const double x = pX[i];
        if (is_missing(x)) {
            pY[i] = kNanum;
            continue;
        }
        const double d = x - dCentre;
        pY[i] = dOffset + (nShape == ZEMATH_PEAK_GAUSSIAN
                               ? dHeight * std::exp(-gauss * d * d)
                               : dHeight * half * half / (d * d + half * half));
    }
    return ZEMATH_OK;
}

namespace zemath {
namespace {

bool usable(double v) {
    return !is_missing(v) && !std::isnan(v);
}

// Area, centroid, variance, skewness and kurtosis of h over x (method 0 trapezoid, 1
// piecewise quadratics), into out[0..4]; NANUM where undefined.
void peak_moments(const std::vector<double>& x, const std::vector<double>& h, int method,
                  double* out) {
    std::vector<double> weighted(x.size());
    const auto moment = [&](double centre, int power) {
        for (std::size_t k = 0; k < x.size(); ++k)
            weighted[k] = std::pow(x[k] - centre, power) * h[k];
        return area_under_curve(x, weighted, method);
    };
    const double area = area_under_curve(x, h, method);
    out[0] = area;
    out[1] = out[2] = out[3] = out[4] = kNanum;
    if (area != 0.0) {
        const double centroid = moment(0.0, 1) / area;
        const double variance = moment(centroid, 2) / area;
        out[1] = centroid;
        out[2] = variance;
        if (variance != 0.0) {
            out[3] = moment(centroid, 3) / area / std::pow(variance, 1.5);
            out[4] = moment(centroid, 4) / area / (variance * variance);
        }
    }
}

// The usable points of [first, last] as (x, y - base).
void peak_above_base(const double* x, const double* y, const double* base, int first, int last,
                     std::vector<double>& px, std::vector<double>& h) {
    for (int i = first; i <= last; ++i) {
        const double b = base != nullptr ? base[i] : 0.0;
        if (is_missing(x[i]) || is_missing(y[i]) || is_missing(b)) continue;
        px.push_back(x[i]);
        h.push_back(y[i] - b);
    }
}

}  // namespace
}  // namespace zemath

ZEMATH_API int zemath_calc_peak_moments(int nSize, const double* pX, const double* pY,
                                        const double* pBase, int nFirst, int nLast,
                                        double* pMoments) noexcept {
    if (pX == nullptr || pY == nullptr || pMoments == nullptr) return ZEMATH_ERR_NULL_POINTER;
    if (nFirst < 0 || nLast >= nSize || static_cast<long long>(nLast) - nFirst < 1)
        return ZEMATH_ERR_TOO_FEW_POINTS;
    return guard_status([&] {
        std::vector<double> x, h;
        peak_above_base(pX, pY, pBase, nFirst, nLast, x, h);
        if (x.size() < 2) return ZEMATH_ERR_TOO_FEW_POINTS;
        double out[5];
        peak_moments(x, h, 0, out);
        std::copy(out, out + 5, pMoments);
        return ZEMATH_OK;
    });
}

namespace zemath {
namespace {

// Whether a height marker found the level: it stopped away from the peak at a point that
// is no longer beyond the level.
bool marker_reached(const double* y, int peak, double fraction, const Marker& m) {
    if (m.index == peak) return false;
    const double level = fraction * y[peak], v = y[m.index];
    return y[peak] > 0.0 ? !(v > level) : !(v < level);
}

// Outward from the peak (step -1 or +1) over the usable entries of c (sign-adjusted
// curvature s*Y''), the first change from <= 0 to > 0, as the linear root in x. False when
// none exists.
bool curvature_sign_change(std::span<const double> x, std::span<const double> c, std::size_t peak,
                           int step, double& root) {
    const std::size_t n = x.size();
    std::size_t inner = peak;
    for (std::size_t i = peak; step < 0 ? i > 0 : i + 1 < n;) {
        i = step < 0 ? i - 1 : i + 1;
        if (!usable(c[i]) || !usable(x[i])) continue;
        if (c[inner] <= 0.0 && c[i] > 0.0) {
            const double t = c[inner] / (c[inner] - c[i]);  // in [0, 1)
            root = x[inner] + t * (x[i] - x[inner]);
            return true;
        }
        inner = i;
    }
    return false;
}

int peak_sign_checks(int nSize, const double* pX, const double* pY, int nPeak) {
    if (nSize < 3) return ZEMATH_ERR_TOO_FEW_POINTS;
    if (nPeak < 0 || nPeak >= nSize) return ZEMATH_ERR_EMPTY_RANGE;
    if (!usable(pX[nPeak]) || !usable(pY[nPeak]) || pY[nPeak] == 0.0)
        return ZEMATH_ERR_BOUND_NOT_FOUND;
    return ZEMATH_OK;
}

}  // namespace
}  // namespace zemath

ZEMATH_API int zemath_find_xs(int nSize, const double* pX, const double* pY, int nPeak,
                              double dFraction, double* pXLeft, double* pXRight) noexcept {
    if (pX == nullptr || pY == nullptr || pXLeft == nullptr || pXRight == nullptr)
        return ZEMATH_ERR_NULL_POINTER;
    if (nSize < 1) return ZEMATH_ERR_TOO_FEW_POINTS;
    if (nPeak < 0 || nPeak >= nSize) return ZEMATH_ERR_EMPTY_RANGE;
    if (!(dFraction >= 0.0 && dFraction < 1.0)) return ZEMATH_ERR_PARAM_RANGE;
    const Marker left = height_marker(pX, pY, nSize, nPeak, dFraction, -1);
    const Marker right = height_marker(pX, pY, nSize, nPeak, dFraction, 1);
    if (!marker_reached(pY, nPeak, dFraction, left) || !marker_reached(pY, nPeak, dFraction, right))
        return ZEMATH_ERR_BOUND_NOT_FOUND;
    *pXLeft = left.x;
    *pXRight = right.x;
    return ZEMATH_OK;
}

ZEMATH_API int zemath_find_inflection_point(int nSize, const double* pX, const double* pY,
                                            int nPeak, double* pXLeft, double* pXRight) noexcept {
    if (pX == nullptr || pY == nullptr || pXLeft == nullptr || pXRight == nullptr)
        return ZEMATH_ERR_NULL_POINTER;
    if (const int status = peak_sign_checks(nSize, pX, pY, nPeak); status != ZEMATH_OK)
        return status;
    return guard_status([&] {
        const auto n = static_cast<std::size_t>(nSize);
        const std::span<const double> x(pX, n);
        std::vector<double> c(pY, pY + n);
        if (derivative_in_place(x, c, 0) != ZEMATH_OK || derivative_in_place(x, c, 0) != ZEMATH_OK)
            return ZEMATH_ERR_BOUND_NOT_FOUND;
        const double sign = pY[nPeak] > 0.0 ? 1.0 : -1.0;
        for (double& v : c)
            if (usable(v)) v *= sign;
        const auto peak = static_cast<std::size_t>(nPeak);
        if (!usable(c[peak])) return ZEMATH_ERR_BOUND_NOT_FOUND;
        double left = 0.0, right = 0.0;
        if (!curvature_sign_change(x, c, peak, -1, left) ||
            !curvature_sign_change(x, c, peak, 1, right))
            return ZEMATH_ERR_BOUND_NOT_FOUND;
        *pXLeft = left;
        *pXRight = right;
        return ZEMATH_OK;
    });
}

ZEMATH_API int zemath_iterate_for_finding_inflection(int nSize, const double* pX, const double* pY,
                                                     int nPeak, double* pXLeft,
                                                     double* pXRight) noexcept {
    if (pX == nullptr || pY == nullptr || pXLeft == nullptr || pXRight == nullptr)
        return ZEMATH_ERR_NULL_POINTER;
    if (const int status = peak_sign_checks(nSize, pX, pY, nPeak); status != ZEMATH_OK)
        return status;
    return guard_status([&] {
        // The usable points, the peak among them.
        std::vector<double> x, y;
        std::size_t peak = 0;
        for (int i = 0; i < nSize; ++i) {
            if (!usable(pX[i]) || !usable(pY[i])) continue;
            if (i == nPeak) peak = x.size();
            x.push_back(pX[i]);
            y.push_back(pY[i]);
        }
        const std::size_t n = x.size();
        if (n < 4) return ZEMATH_ERR_TOO_FEW_POINTS;
        for (std::size_t i = 0; i + 1 < n; ++i)
            if (!(x[i + 1] > x[i])) return ZEMATH_ERR_NOT_MONOTONIC;
        // Second derivatives of the not-a-knot cubic spline at the nodes (continuous, so
        // the right-hand piece's value serves every node but the last).
        std::vector<double> slope(n), c(n);
        cubic_node_slopes(InterpMethod::not_a_knot_spline, x, y, slope);
        for (std::size_t k = 0; k + 1 < n; ++k) {
            const double h = x[k + 1] - x[k];
            c[k] = (6.0 * (y[k + 1] - y[k]) - h * (4.0 * slope[k] + 2.0 * slope[k + 1])) / (h * h);
        }
        const double h = x[n - 1] - x[n - 2];
        c[n - 1] =
            (6.0 * (y[n - 2] - y[n - 1]) + h * (2.0 * slope[n - 2] + 4.0 * slope[n - 1])) / (h * h);
        const double sign = pY[nPeak] > 0.0 ? 1.0 : -1.0;
        for (double& v : c) v *= sign;
        double left = 0.0, right = 0.0;
        if (!curvature_sign_change(x, c, peak, -1, left) ||
            !curvature_sign_change(x, c, peak, 1, right))
            return ZEMATH_ERR_BOUND_NOT_FOUND;
        *pXLeft = left;
        *pXRight = right;
        return ZEMATH_OK;
    });
}

ZEMATH_API int zemath_calc_peak_moments_ex(int nSize, const double* pX, const double* pY,
                                           const double* pBase, int nFirst, int nLast, int nMethod,
                                           double* pMoments) noexcept {
    if (pX == nullptr || pY == nullptr || pMoments == nullptr) return ZEMATH_ERR_NULL_POINTER;
    if (nFirst < 0 || nLast >= nSize || static_cast<long long>(nLast) - nFirst < 1)
        return ZEMATH_ERR_TOO_FEW_POINTS;
    if (nMethod != 0 && nMethod != 1) return ZEMATH_ERR_BAD_OPTION;
    return guard_status([&] {
        std::vector<double> x, h;
        peak_above_base(pX, pY, pBase, nFirst, nLast, x, h);
        if (x.size() < 2) return ZEMATH_ERR_TOO_FEW_POINTS;
        double out[8];
        peak_moments(x, h, nMethod, out);
        // The top: the largest |h| (first among equals), and the full width at half of it.
        std::size_t top = 0;
        for (std::size_t k = 1; k < h.size(); ++k)
            if (std::fabs(h[k]) > std::fabs(h[top])) top = k;
        out[5] = h[top];
        out[6] = x[top];
        out[7] = kNanum;
        const int m = static_cast<int>(x.size()), p = static_cast<int>(top);
        const Marker left = height_marker(x.data(), h.data(), m, p, 0.5, -1);
        const Marker right = height_marker(x.data(), h.data(), m, p, 0.5, 1);
        if (marker_reached(h.data(), p, 0.5, left) && marker_reached(h.data(), p, 0.5, right))
            out[7] = right.x - left.x;
        std::copy(out, out + 8, pMoments);
        return ZEMATH_OK;
    });
}

ZEMATH_API int zemath_adjust_data_of_peaks(int nSize, const double* pY, const double* pBase,
                                           double* pOut, int nOption) noexcept {
    if (pY == nullptr || pBase == nullptr || pOut == nullptr) return ZEMATH_ERR_NULL_POINTER;
    if (nSize < 1) return ZEMATH_ERR_TOO_FEW_POINTS;
    if (nOption < 0 || nOption > 2) return ZEMATH_ERR_BAD_OPTION;
    for (int i = 0; i < nSize; ++i) {
        const double y = pY[i], b = pBase[i];
        if (is_missing(y) || is_missing(b)) {
            pOut[i] = kNanum;
            continue;
        }
        double h = y - b;
        if (nOption == 1 && h < 0.0) h = 0.0;  // positive peaks: dips below the base are 0
        if (nOption == 2 && h > 0.0) h = 0.0;  // negative peaks: bumps above the base are 0
        pOut[i] = h;
    }
    return ZEMATH_OK;
}

ZEMATH_API int zemath_generate_peak_x_array(int nSize, double dCentre, double dFWHM,
                                            double dHalfSpan, double* pX) noexcept {
    if (pX == nullptr) return ZEMATH_ERR_NULL_POINTER;
    if (nSize < 1) return ZEMATH_ERR_TOO_FEW_POINTS;
    if (!std::isfinite(dCentre) || !(dFWHM > 0.0) || !std::isfinite(dFWHM) || !(dHalfSpan > 0.0) ||
        !std::isfinite(dHalfSpan) || !std::isfinite(dFWHM * dHalfSpan))
        return ZEMATH_ERR_PARAM_RANGE;
    if (nSize == 1) {
        pX[0] = dCentre;
        return ZEMATH_OK;
    }
    // Symmetric about the centre: the offsets of i and n-1-i are exact negatives, an odd
    // count puts a point exactly on the centre, and the ends are exactly c -+ span.
    const double span = dHalfSpan * dFWHM;
    const double middle = 0.5 * (nSize - 1);
    for (int i = 0; i < nSize; ++i) {
        const double offset = (i - middle) / middle;  // in [-1, 1]
        pX[i] = dCentre + offset * span;
    }
    return ZEMATH_OK;
}

ZEMATH_API int zemath_cut_to_segments_by_height(int nSize, const double* pY, double dHeight,
                                                int nMaxSegments, int* pStart, int* pEnd) noexcept {
    if (pY == nullptr || pStart == nullptr || pEnd == nullptr) return ZEMATH_ERR_NULL_POINTER;
    if (nSize < 1) return ZEMATH_ERR_TOO_FEW_POINTS;
    if (std::isnan(dHeight)) return ZEMATH_ERR_PARAM_RANGE;
    // Counted first, so that a list too long for the output leaves it untouched.
    const auto above = [&](int i) { return usable(pY[i]) && pY[i] > dHeight; };
    int segments = 0;
    for (int i = 0; i < nSize; ++i)
        if (above(i) && (i == 0 || !above(i - 1))) ++segments;
    if (segments > nMaxSegments) return ZEMATH_ERR_TOO_MANY_REGIONS;
    int k = 0;
    for (int i = 0; i < nSize; ++i) {
        if (!above(i)) continue;
        if (i == 0 || !above(i - 1)) pStart[k] = i;
        if (i == nSize - 1 || !above(i + 1)) pEnd[k++] = i;
    }
    return segments;
}

ZEMATH_API int zemath_yatasymt(int nSize, const double* pY, int nSide, int nPoints,
                               double* pYAsym) noexcept {
    if (pY == nullptr || pYAsym == nullptr) return ZEMATH_ERR_NULL_POINTER;
    if (nSize < 1 || nPoints < 1 || nPoints > nSize) return ZEMATH_ERR_TOO_FEW_POINTS;
    if (nSide != 0 && nSide != 1) return ZEMATH_ERR_BAD_OPTION;
    return guard_status([&] {
        std::vector<double> tail;
        tail.reserve(static_cast<std::size_t>(nPoints));
        for (int k = 0; k < nPoints; ++k) {
            const double v = pY[nSide == 0 ? k : nSize - 1 - k];
            if (usable(v)) tail.push_back(v);
        }
        if (tail.empty()) return ZEMATH_ERR_NO_USABLE_VALUE;
        // The median: robust to the noise and to a tail that has not quite settled.
        const std::size_t m = tail.size();
        const auto middle = tail.begin() + static_cast<std::ptrdiff_t>(m / 2);
        std::nth_element(tail.begin(), middle, tail.end());
        double median = *middle;
        if (m % 2 == 0) median = 0.5 * (median + *std::max_element(tail.begin(), middle));
        *pYAsym = median;
        return ZEMATH_OK;
    });
}

ZEMATH_API int zemath_xatasymt(int nSize, const double* pX, const double* pY, int nPeak,
                               double dAsymptote, double dFraction, double* pXLeft,
                               double* pXRight) noexcept {
    if (pX == nullptr || pY == nullptr || pXLeft == nullptr || pXRight == nullptr)
        return ZEMATH_ERR_NULL_POINTER;
    if (nSize < 1) return ZEMATH_ERR_TOO_FEW_POINTS;
    if (nPeak < 0 || nPeak >= nSize) return ZEMATH_ERR_EMPTY_RANGE;
    if (!(dFraction >= 0.0 && dFraction < 1.0) || !std::isfinite(dAsymptote))
        return ZEMATH_ERR_PARAM_RANGE;
    const double top = pY[nPeak] - dAsymptote;
    if (!usable(pY[nPeak]) || !(top != 0.0)) return ZEMATH_ERR_BOUND_NOT_FOUND;
    // The level dFraction of the way from the asymptote to the top; NANUM and NaN points
    // are passed over.
    const double level = dAsymptote + dFraction * top;
    const auto beyond = [&](double v) { return top > 0.0 ? v > level : v < level; };
    double found[2];
    for (int side = 0; side < 2; ++side) {
        const int step = side == 0 ? -1 : 1;
        int inner = nPeak;
        bool reached = false;
        for (int i = nPeak + step; i >= 0 && i < nSize; i += step) {
            if (!usable(pY[i]) || !usable(pX[i])) continue;
            if (!beyond(pY[i])) {
                const double t = (level - pY[inner]) / (pY[i] - pY[inner]);
                found[side] = pX[inner] + t * (pX[i] - pX[inner]);
                reached = true;
                break;
            }
            inner = i;
        }
        if (!reached) return ZEMATH_ERR_BOUND_NOT_FOUND;
    }
    *pXLeft = found[0];
    *pXRight = found[1];
    return ZEMATH_OK;
}
