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
#include "signal/integration.hpp"
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

ZEMATH_API int zemath_calc_peak_moments(int nSize, const double* pX, const double* pY,
                                        const double* pBase, int nFirst, int nLast,
                                        double* pMoments) noexcept {
    if (pX == nullptr || pY == nullptr || pMoments == nullptr) return ZEMATH_ERR_NULL_POINTER;
    if (nFirst < 0 || nLast >= nSize || static_cast<long long>(nLast) - nFirst < 1)
        return ZEMATH_ERR_TOO_FEW_POINTS;
    return guard_status([&] {
        std::vector<double> x, h;
        for (int i = nFirst; i <= nLast; ++i) {
            const double base = pBase != nullptr ? pBase[i] : 0.0;
            if (is_missing(pX[i]) || is_missing(pY[i]) || is_missing(base)) continue;
            x.push_back(pX[i]);
            h.push_back(pY[i] - base);
        }
        if (x.size() < 2) return ZEMATH_ERR_TOO_FEW_POINTS;
        std::vector<double> weighted(x.size());
        const auto moment = [&](double centre, int power) {
            for (std::size_t k = 0; k < x.size(); ++k)
                weighted[k] = std::pow(x[k] - centre, power) * h[k];
            return area_under_curve(x, weighted, 0);
        };
        const double area = area_under_curve(x, h, 0);
        double out[5] = {area, kNanum, kNanum, kNanum, kNanum};
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
        std::copy(out, out + 5, pMoments);
        return ZEMATH_OK;
    });
}
