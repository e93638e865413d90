// Duplicate merging of scattered XYZ data (see duplicates.hpp for the method).
#include "gridding/duplicates.hpp"

#include <algorithm>
#include <cmath>

#include "core/missing.hpp"
#include "frame/nrvec.hpp"
#include "frame/sort.hpp"

namespace zemath {

DupMethod dup_method_from_code(int code) {
    if (code >= 0 && code <= 5) return static_cast<DupMethod>(code);
    return DupMethod::mean;
}

double combine_values(std::span<double> group, DupMethod method) {
    std::size_t usable = 0;
    bool has_nan = false;
    for (double v : group) {
        if (is_missing(v)) continue;
        group[usable++] = v;  // compact the usable values to the front
        has_nan = has_nan || std::isnan(v);
    }
    if (usable == 0) return kNanum;
    auto values = group.first(usable);
    if (has_nan) return std::nan("");
    switch (method) {
        case DupMethod::median: {
            const std::size_t mid = usable / 2;
            std::nth_element(values.begin(), values.begin() + mid, values.end());
            const double upper = values[mid];
            if (usable % 2 == 1) return upper;
            const double lower = *std::max_element(values.begin(), values.begin() + mid);
            return 0.5 * (lower + upper);
        }
        case DupMethod::minimum:
            return *std::min_element(values.begin(), values.end());
        case DupMethod::maximum:
            return *std::max_element(values.begin(), values.end());
        case DupMethod::sum: {
            double s = 0.0;
            for (double v : values) s += v;
            return s;
        }
        default: {
            double s = 0.0;
            for (double v : values) s += v;
            return s / static_cast<double>(usable);
        }
    }
}

namespace {

bool coordinate_usable(double v) {
    return !is_missing(v) && !std::isnan(v);
}

// Sorted neighbours a <= b belong to one chain. Equal values always do: the difference of
// two equal infinities is NaN, which compares false with any tolerance.
bool chained(double a, double b, double tol) {
    return b == a || b - a <= tol;
}

}  // namespace

int merge_duplicates(int n, double* x, double* y, std::span<double* const> values, DupMethod method,
                     const DupOptions& options) {
    if (n < 1) return 0;
    const double xtol = std::isnan(options.xtol) ? 0.0 : std::fabs(options.xtol);
    const double ytol = std::isnan(options.ytol) ? 0.0 : std::fabs(options.ytol);

    // Usable points, then one index sort by x through the library's sorter.
    std::vector<int> kept;
    kept.reserve(static_cast<std::size_t>(n));
    for (int i = 0; i < n; ++i) {
        if (!coordinate_usable(x[i])) continue;
        if (options.use_y && !coordinate_usable(y[i])) continue;
        if (!options.keep_missing_z && !values.empty() && is_missing(values[0][i])) continue;
        kept.push_back(i);
    }
    const int m = static_cast<int>(kept.size());
    if (m == 0) return 0;
    NRVec<double> keys(m);
    for (int k = 0; k < m; ++k) keys[k] = x[kept[static_cast<std::size_t>(k)]];
    NRVec<int> order(m);
    sort_with_index(keys, order, true, 0);
    std::vector<int> idx(static_cast<std::size_t>(m));
    for (int k = 0; k < m; ++k)
        idx[static_cast<std::size_t>(k)] = kept[static_cast<std::size_t>(order[k])];

    std::vector<double> out_x, out_y;
    std::vector<std::vector<double>> out_v(values.size());
    out_x.reserve(static_cast<std::size_t>(m));
    out_y.reserve(static_cast<std::size_t>(m));
    std::vector<double> group;

    auto emit = [&](std::size_t first, std::size_t last) {  // idx[first..last)
        const int lead = idx[first];
        out_x.push_back(x[lead]);
        out_y.push_back(y[lead]);
        for (std::size_t k = 0; k < values.size(); ++k) {
            if (last - first == 1) {
                out_v[k].push_back(values[k][lead]);
                continue;
            }
            group.clear();
            for (std::size_t j = first; j < last; ++j) group.push_back(values[k][idx[j]]);
            out_v[k].push_back(combine_values(group, method));
        }
    };

    std::size_t start = 0;
    const std::size_t total = idx.size();
    while (start < total) {
        std::size_t end = start + 1;  // x-cluster: gaps within xtol, chained
        while (end < total && chained(x[idx[end - 1]], x[idx[end]], xtol)) ++end;
        if (!options.use_y) {
            emit(start, end);
        } else {
            if (end - start > 1)
                std::sort(idx.begin() + static_cast<std::ptrdiff_t>(start),
                          idx.begin() + static_cast<std::ptrdiff_t>(end), [&](int a, int b) {
                              return y[a] < y[b] || (y[a] == y[b] && x[a] < x[b]);
                          });
            std::size_t g = start;
            while (g < end) {
                std::size_t h = g + 1;
                while (h < end && chained(y[idx[h - 1]], y[idx[h]], ytol)) ++h;
                emit(g, h);
                g = h;
            }
        }
        start = end;
    }
    const std::size_t count = out_x.size();
    std::copy(out_x.begin(), out_x.end(), x);
    if (options.use_y) std::copy(out_y.begin(), out_y.end(), y);
    for (std::size_t k = 0; k < values.size(); ++k)
        std::copy(out_v[k].begin(), out_v[k].end(), values[k]);
    return static_cast<int>(count);
}

int unique_sorted(double* x, int n, double tol) {
    int m = 0;
    for (int i = 0; i < n; ++i)
        if (coordinate_usable(x[i])) x[m++] = x[i];
    std::sort(x, x + m);
    if (m == 0) return 0;
    const double t = std::isnan(tol) ? 0.0 : std::fabs(tol);
    int kept = 1;
    double previous = x[0];
    for (int i = 1; i < m; ++i) {
        if (x[i] - previous > t) x[kept++] = x[i];
        previous = x[i];
    }
    return kept;
}

}  // namespace zemath

// ---- exports -------------------------------------------------------------------------

#include "core/guard.hpp"
#include "zemath/status.h"
#include "zemath/xyz.h"

ZEMATH_API int zemath_xyz_remove_duplicates(int n, double* x, double* y, double* z, int nMethod,
                                            double dXTol, double dYTol,
                                            int bKeepMissingZ) noexcept {
    if (x == nullptr || y == nullptr || z == nullptr) return ZEMATH_ERR_NULL_POINTER;
    if (n < 1) return ZEMATH_ERR_TOO_FEW_POINTS;
    const zemath::DupMethod method = zemath::dup_method_from_code(nMethod);
    if (method == zemath::DupMethod::keep_all) return n;
    return zemath::guard_status([&] {
        double* const values[] = {z};
        return zemath::merge_duplicates(n, x, y, values, method,
                                        {dXTol, dYTol, true, bKeepMissingZ != 0});
    });
}

ZEMATH_API int zemath_xyzv_remove_duplicates(int n, double* x, double* y, double* z, double* v,
                                             int nMethod, double dXTol, double dYTol,
                                             int bKeepMissingZ) noexcept {
    if (x == nullptr || y == nullptr || z == nullptr || v == nullptr)
        return ZEMATH_ERR_NULL_POINTER;
    if (n < 1) return ZEMATH_ERR_TOO_FEW_POINTS;
    const zemath::DupMethod method = zemath::dup_method_from_code(nMethod);
    if (method == zemath::DupMethod::keep_all) return n;
    return zemath::guard_status([&] {
        double* const values[] = {z, v};
        return zemath::merge_duplicates(n, x, y, values, method,
                                        {dXTol, dYTol, true, bKeepMissingZ != 0});
    });
}

ZEMATH_API int zemath_xy_remove_duplicates(int n, double* x, double* y, int nMethod,
                                           double dTol) noexcept {
    if (x == nullptr || y == nullptr) return ZEMATH_ERR_NULL_POINTER;
    if (n < 1) return ZEMATH_ERR_TOO_FEW_POINTS;
    const zemath::DupMethod method = zemath::dup_method_from_code(nMethod);
    if (method == zemath::DupMethod::keep_all) return n;
    return zemath::guard_status([&] {
        double* const values[] = {y};
        // One key: the y slot of the merger is only a placeholder (x is passed twice).
        return zemath::merge_duplicates(n, x, x, values, method, {dTol, 0.0, false, true});
    });
}

ZEMATH_API int zemath_array_remove_duplicates(double* x, int n, double tol) noexcept {
    if (x == nullptr) return ZEMATH_ERR_NULL_POINTER;
    if (n < 1) return ZEMATH_ERR_TOO_FEW_POINTS;
    return zemath::unique_sorted(x, n, tol);
}
