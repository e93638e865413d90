// XYZ examination and conversion between scattered XYZ data and matrices.
//
// Examination: usable points (x and y neither NANUM nor NaN) are copied, duplicates
// merged when asked, the distinct x and y values fitted by a step finder on each axis,
// and the data classified as a full grid (0), a grid with missing nodes (1) or random
// scattered data (2). Conversion places points by truncated rounding onto the nodes of
// a given grid. O(n log n) for the examination, O(n) for the conversions.
// Failure codes: -1 (examination), -5, -11, -18 (conversions).
#include <algorithm>
#include <cmath>
#include <cstddef>
#include <vector>

#include "core/guard.hpp"
#include "core/missing.hpp"
#include "gridding/duplicates.hpp"
#include "gridding/xyz_step.hpp"
#include "zemath/status.h"
#include "zemath/xyz.h"

namespace zemath {
namespace {

// The documented default tolerance (zemath/xyz.h).
constexpr double kDefaultTol = 1e-8;
// A grid with more nodes than this many per data point is not a grid of the data.
constexpr double kMaxNodesPerPoint = 1e6;

struct AxisStep {
    bool found = false;
    double step = 0.0;
    double misfit = 0.0;
};

using StepFinder = AxisStep (*)(std::span<const double> distinct, double tol, double fit_tol);

AxisStep block_finder(std::span<const double> distinct, double tol, double fit_tol) {
    const StepResult r = find_step(distinct, tol, fit_tol);
    return {r.status == 0, r.step, r.misfit};
}

// Mode finder with the whole-multiple check, the gcd finder where it fails.
AxisStep mode_then_gcd_finder(std::span<const double> distinct, double tol, double fit_tol) {
    AxisStep out;
    const std::vector<double> d = nonzero_differences(distinct, tol);
    if (d.empty()) return out;
    const auto groups = difference_groups(d);
    DifferenceGroup best;
    for (const auto& g : groups)
        if (g.count > best.count) best = g;
    // Never tighter than the 1e-6 the difference groups are formed with (zemath/xyz.h).
    const double check = std::max(std::fabs(fit_tol), 1e-6);
    bool fits = best.mean > 0.0;
    for (double v : d) {
        if (!fits) break;
        const double r = std::fmod(v, best.mean) / best.mean;
        out.misfit = std::max(out.misfit, std::min(r, 1.0 - r));
        if (v < best.mean * (1.0 - check) || (r > check && r < 1.0 - check)) fits = false;
    }
    if (fits) return {true, best.mean, out.misfit};
    const double g = approximate_gcd(d, tol);
    if (!(g > 0.0)) return {};
    return {true, g, 0.0};
}

int examine(int n, const double* x, const double* y, const double* z, zemath_xyz_exam& rec,
            StepFinder finder) {
    std::vector<double> xs, ys, zs;
    xs.reserve(static_cast<std::size_t>(n));
    ys.reserve(static_cast<std::size_t>(n));
    zs.reserve(static_cast<std::size_t>(n));
    for (int i = 0; i < n; ++i) {
        if (is_missing(x[i]) || is_missing(y[i]) || std::isnan(x[i]) || std::isnan(y[i])) continue;
        xs.push_back(x[i]);
        ys.push_back(y[i]);
        zs.push_back(z[i]);
    }
    int count = static_cast<int>(xs.size());
    if (count == 0) return -1;
    const DupMethod method = dup_method_from_code(rec.nMethod);
    if (method != DupMethod::keep_all) {
        double* const values[] = {zs.data()};
        count = merge_duplicates(count, xs.data(), ys.data(), values, method,
                                 {rec.dXTol, rec.dYTol, true, true});
        if (count == 0) return -1;
        xs.resize(static_cast<std::size_t>(count));
        ys.resize(static_cast<std::size_t>(count));
    }
    rec.nVar = count;
    const auto [xlo, xhi] = std::minmax_element(xs.begin(), xs.end());
    const auto [ylo, yhi] = std::minmax_element(ys.begin(), ys.end());
    rec.dXmin = *xlo;
    rec.dXmax = *xhi;
    rec.dYmin = *ylo;
    rec.dYmax = *yhi;
    const double xrange = rec.dXmax - rec.dXmin, yrange = rec.dYmax - rec.dYmin;
    if (count < 3) {
        rec.dXStep = xrange;
        rec.dYStep = yrange;
        return 0;
    }
    const int kx = unique_sorted(xs.data(), count, rec.dXTol);
    const int ky = unique_sorted(ys.data(), count, rec.dYTol);
    if (kx < 1 || ky < 1) return -1;
    const double xfit = rec.dXIrregular > 0.0 ? rec.dXIrregular : rec.dXTol;
    const double yfit = rec.dYIrregular > 0.0 ? rec.dYIrregular : rec.dYTol;
    const AxisStep sx = finder({xs.data(), static_cast<std::size_t>(kx)}, rec.dXTol, xfit);
    const AxisStep sy = finder({ys.data(), static_cast<std::size_t>(ky)}, rec.dYTol, yfit);
    rec.dXStep = sx.step;
    rec.dYStep = sy.step;

    if (sx.found && sy.found) {
        if (sx.misfit < 0.5 && sy.misfit < 0.5) {
            const double nx = rec.dXStep > 0.0 ? std::trunc(xrange / rec.dXStep + 0.5) + 1.0 : 1.0;
            const double ny = rec.dYStep > 0.0 ? std::trunc(yrange / rec.dYStep + 0.5) + 1.0 : 1.0;
            if (nx * ny > static_cast<double>(count) * kMaxNodesPerPoint) return 2;
            rec.dXIrregular = sx.misfit;
            rec.dYIrregular = sy.misfit;
            return static_cast<double>(count) < nx * ny ? 1 : 0;
        }
        return 2;
    }
    // A failed axis: its step estimated from the number of distinct values of the other.
    auto estimate = [&](double range, int k_other) {
        int k = k_other;
        const int root = static_cast<int>(std::floor(std::sqrt(static_cast<double>(count))));
        if (count >= 4 && static_cast<double>(k) * k > count) k = std::min(k, root);
        return k > 1 ? range / (k - 1) : range;
    };
    if (!sx.found && !sy.found) {
        rec.dXStep = 0.0;
        rec.dYStep = 0.0;
    } else if (!sx.found) {
        rec.dXStep = estimate(xrange, ky);
    } else {
        rec.dYStep = estimate(yrange, kx);
    }
    return 2;
}

int examine_export(int n, const double* x, const double* y, const double* z,
                   zemath_xyz_exam* record, StepFinder finder) {
    if (record != nullptr) record->nType = -1;
    if (x == nullptr || y == nullptr || z == nullptr || n < 1) return -1;
    zemath_xyz_exam rec{kDefaultTol, kDefaultTol, 5, kDefaultTol, kDefaultTol, 0, 0,
                        0,           0,           0, 0,           0,           -1};
    if (record != nullptr) rec = *record;
    const int category = guard_status([&] { return examine(n, x, y, z, rec, finder); });
    if (category < 0) return category == ZEMATH_ERR_ALLOC ? category : -1;
    rec.nType = category;
    if (record != nullptr) *record = rec;
    return category;
}

int examine_separate(int n, const double* x, const double* y, const double* z, double dXTol,
                     double dYTol, int* nVar, double* dXmin, double* dXStep, double* dXmax,
                     double* dYmin, double* dYStep, double* dYmax, bool bRemoveDuplicates,
                     int nMethod, StepFinder finder) {
    zemath_xyz_exam rec{
        dXTol, dYTol, bRemoveDuplicates ? nMethod : 5, dXTol, dYTol, 0, 0, 0, 0, 0, 0, 0, -1};
    if (bRemoveDuplicates && dup_method_from_code(nMethod) == DupMethod::keep_all) rec.nMethod = 5;
    const int category = examine_export(n, x, y, z, &rec, finder);
    if (category < 0) return category;
    if (nVar) *nVar = rec.nVar;
    if (dXmin) *dXmin = rec.dXmin;
    if (dXStep) *dXStep = rec.dXStep;
    if (dXmax) *dXmax = rec.dXmax;
    if (dYmin) *dYmin = rec.dYmin;
    if (dYStep) *dYStep = rec.dYStep;
    if (dYmax) *dYmax = rec.dYmax;
    return category;
}

// Node index of a coordinate: trunc rounds toward zero, so values up to 1.5 steps below
// the first node give index 0 (kept deliberately: hosts rely on it). -1 when off the grid.
long long node_index(double value, double origin, double step, int count) {
    if (step == 0.0) return 0;
    const double u = (value - origin) / step + 0.5;
    if (!(u > -1.0 && u < static_cast<double>(count))) return -1;  // NaN lands here too
    return static_cast<long long>(std::trunc(u));
}

int check_grid(double xstep, int nx, double ystep, int ny) {
    if (nx < 1 || ny < 1) return ZEMATH_ERR_TOO_FEW_POINTS;
    if ((xstep == 0.0 && nx > 1) || (ystep == 0.0 && ny > 1)) return ZEMATH_ERR_TOO_FEW_POINTS;
    if (std::isnan(xstep) || std::isnan(ystep)) return ZEMATH_ERR_TOO_FEW_POINTS;
    return ZEMATH_OK;
}

}  // namespace
}  // namespace zemath

ZEMATH_API int zemath_xyz_examine_data_pro(int n, const double* x, const double* y, const double* z,
                                           zemath_xyz_exam* rec) noexcept {
    return zemath::examine_export(n, x, y, z, rec, zemath::block_finder);
}

ZEMATH_API int zemath_xyz_examine_data(int n, const double* x, const double* y, const double* z,
                                       double dXTol, double dYTol, int* nVar, double* dXmin,
                                       double* dXStep, double* dXmax, double* dYmin, double* dYStep,
                                       double* dYmax, bool bRemoveDuplicates,
                                       int nMethod) noexcept {
    return zemath::examine_separate(n, x, y, z, dXTol, dYTol, nVar, dXmin, dXStep, dXmax, dYmin,
                                    dYStep, dYmax, bRemoveDuplicates, nMethod,
                                    zemath::block_finder);
}

ZEMATH_API int zemath_xyz_examine_data_ex(int n, const double* x, const double* y, const double* z,
                                          double dXTol, double dYTol, int* nVar, double* dXmin,
                                          double* dXStep, double* dXmax, double* dYmin,
                                          double* dYStep, double* dYmax, bool bRemoveDuplicates,
                                          int nMethod) noexcept {
    return zemath::examine_separate(n, x, y, z, dXTol, dYTol, nVar, dXmin, dXStep, dXmax, dYmin,
                                    dYStep, dYmax, bRemoveDuplicates, nMethod,
                                    zemath::mode_then_gcd_finder);
}

ZEMATH_API int zemath_convert_regular_xyz_to_matrix(int n, const double* x, const double* y,
                                                    const double* z, double* mat, double xmin,
                                                    double xstep, int nx, double ymin, double ystep,
                                                    int ny) noexcept {
    if (x == nullptr || y == nullptr || z == nullptr || mat == nullptr)
        return ZEMATH_ERR_NULL_POINTER;
    if (n < 1) return ZEMATH_ERR_SIZE_MISMATCH;
    if (const int s = zemath::check_grid(xstep, nx, ystep, ny); s != 0) return s;
    for (int i = 0; i < n; ++i)
        if (zemath::node_index(x[i], xmin, xstep, nx) < 0 ||
            zemath::node_index(y[i], ymin, ystep, ny) < 0)
            return ZEMATH_ERR_TOO_FEW_POINTS;
    for (int i = 0; i < n; ++i) {
        const long long ix = zemath::node_index(x[i], xmin, xstep, nx);
        const long long iy = zemath::node_index(y[i], ymin, ystep, ny);
        mat[iy * nx + ix] = z[i];
    }
    return ZEMATH_OK;
}

ZEMATH_API int zemath_convert_sparse_xyz_to_matrix(int n, const double* x, const double* y,
                                                   const double* z, double* mat, double xmin,
                                                   double xstep, int nx, double ymin, double ystep,
                                                   int ny, double xTolFrac,
                                                   double yTolFrac) noexcept {
    if (x == nullptr || y == nullptr || z == nullptr || mat == nullptr)
        return ZEMATH_ERR_NULL_POINTER;
    if (n < 1) return ZEMATH_ERR_SIZE_MISMATCH;
    if (const int s = zemath::check_grid(xstep, nx, ystep, ny); s != 0) return s;
    const long long cells = static_cast<long long>(nx) * ny;
    for (long long c = 0; c < cells; ++c) mat[c] = NANUM;
    int placed = 0;
    for (int i = 0; i < n; ++i) {
        const long long ix = zemath::node_index(x[i], xmin, xstep, nx);
        const long long iy = zemath::node_index(y[i], ymin, ystep, ny);
        if (ix < 0 || iy < 0) continue;
        if (!(std::fabs(x[i] - (xmin + static_cast<double>(ix) * xstep)) <=
              std::fabs(xstep) * xTolFrac))
            continue;
        if (!(std::fabs(y[i] - (ymin + static_cast<double>(iy) * ystep)) <=
              std::fabs(ystep) * yTolFrac))
            continue;
        mat[iy * nx + ix] = z[i];
        ++placed;
    }
    return n - placed;
}

ZEMATH_API int zemath_mat_to_regular_xyz(const double* mat, int nx, int ny, double xmin,
                                         double xstep, double ymin, double ystep, double* x,
                                         double* y, double* z, bool bSkipMissing) noexcept {
    if (mat == nullptr || x == nullptr || y == nullptr || z == nullptr)
        return ZEMATH_ERR_NULL_POINTER;
    if (nx < 1 || ny < 1) return ZEMATH_ERR_TOO_FEW_POINTS;
    if (static_cast<long long>(nx) * ny > 0x7fffffffLL) return ZEMATH_ERR_TOO_FEW_POINTS;
    int k = 0;
    for (int i = 0; i < ny; ++i)
        for (int j = 0; j < nx; ++j) {
            const double v = mat[static_cast<long long>(i) * nx + j];
            if (bSkipMissing && zemath::is_missing(v)) continue;
            x[k] = xmin + j * xstep;
            y[k] = ymin + i * ystep;
            z[k] = v;
            ++k;
        }
    return k;
}

ZEMATH_API int zemath_mat_replace_blanks(double* mat, int n, double value) noexcept {
    if (mat == nullptr) return ZEMATH_ERR_NULL_POINTER;
    if (n < 1) return ZEMATH_ERR_TOO_FEW_POINTS;
    int replaced = 0;
    for (int i = 0; i < n; ++i)
        if (zemath::is_missing(mat[i]) || std::isnan(mat[i])) {
            mat[i] = value;
            ++replaced;
        }
    return replaced;
}

ZEMATH_API int zemath_xyz_remove_missingvalue(int n, double* x, double* y, double* z) noexcept {
    if (x == nullptr || y == nullptr || z == nullptr) return ZEMATH_ERR_NULL_POINTER;
    if (n < 1) return ZEMATH_ERR_TOO_FEW_POINTS;
    int k = 0;
    for (int i = 0; i < n; ++i) {
        if (zemath::is_missing(x[i]) || zemath::is_missing(y[i]) || zemath::is_missing(z[i]))
            continue;
        x[k] = x[i];
        y[k] = y[i];
        z[k] = z[i];
        ++k;
    }
    return k;
}
