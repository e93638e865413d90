// Duplicate merging of scattered XYZ data (see duplicates.hpp for the method).
#include "gridding/duplicates.hpp"

#include <algorithm>
#include <cmath>
#include <memory>

#include "core/missing.hpp"

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

void sort_by_key(std::vector<KeyedPosition>& records) {
    const std::size_t n = records.size();
    if (n < 2) return;
    auto less = [](const KeyedPosition& a, const KeyedPosition& b) {
        return key_of(a) < key_of(b);
    };
    if (n >= 2048) {
        // Not zero-filled: the sort writes it before reading it.
        const std::unique_ptr<KeyedPosition[]> scratch(new KeyedPosition[n]);
        if (util::radix_sort<double, sizeof(KeyedPosition), false>(
                reinterpret_cast<unsigned char*>(records.data()), n,
                reinterpret_cast<unsigned char*>(scratch.get())))
            return;
    }
    util::intro_sort(records.data(), n, less);
}

int merge_duplicates(int n, double* x, double* y, std::span<double* const> values, DupMethod method,
                     const DupOptions& options) {
    if (n < 1) return 0;
    const double xtol = std::isnan(options.xtol) ? 0.0 : std::fabs(options.xtol);
    const double ytol = std::isnan(options.ytol) ? 0.0 : std::fabs(options.ytol);
    const bool use_y = options.use_y;
    const std::size_t arrays = values.size();

    // Usable points, sorted by x.
    std::vector<KeyedPosition> order;
    order.reserve(static_cast<std::size_t>(n));
    for (int i = 0; i < n; ++i) {
        if (!coordinate_usable(x[i])) continue;
        if (use_y && !coordinate_usable(y[i])) continue;
        if (!options.keep_missing_z && arrays > 0 && is_missing(values[0][i])) continue;
        order.push_back(keyed(x[i], i));
    }
    const std::size_t m = order.size();
    if (m == 0) return 0;
    sort_by_key(order);
    // y and the values gathered in that order: every read is done before the caller's
    // arrays receive the survivors (some of them may alias: the one-key form passes x as y).
    std::vector<double> ys(use_y ? m : 0), vs(arrays * m);
    for (std::size_t k = 0; k < m; ++k) {
        const int i = position_of(order[k]);
        if (use_y) ys[k] = y[i];
        for (std::size_t a = 0; a < arrays; ++a) vs[a * m + k] = values[a][i];
    }

    std::size_t out = 0;
    std::vector<double> group;
    // One survivor: coordinates (gx, gy), values combined over the sorted positions
    // first..last of the list (in list order).
    auto emit = [&](double gx, double gy, const auto& position, std::size_t first,
                    std::size_t last) {
        x[out] = gx;
        if (use_y) y[out] = gy;
        for (std::size_t a = 0; a < arrays; ++a) {
            const double* const column = vs.data() + a * m;
            if (last - first == 1) {
                values[a][out] = column[position(first)];
                continue;
            }
            group.clear();
            for (std::size_t j = first; j < last; ++j) group.push_back(column[position(j)]);
            values[a][out] = combine_values(group, method);
        }
        ++out;
    };
    auto sorted_position = [](std::size_t k) { return k; };

    struct Member {
        double y, x;
        std::size_t k;  // position in x order
    };
    std::vector<Member> cluster;
    auto already_ordered = [&](const std::vector<Member>& c, const auto& before) {
        if (!std::is_sorted(c.begin(), c.end(), before)) return false;
        for (std::size_t g = 0; g < c.size();) {
            std::size_t h = g + 1;
            while (h < c.size() && chained(c[h - 1].y, c[h].y, ytol)) ++h;
            for (std::size_t j = g + 1; j < h; ++j)
                if (c[j].y == c[j - 1].y && c[j].x == c[j - 1].x &&
                    (h - g >= 3 || std::signbit(c[j].y) != std::signbit(c[j - 1].y) ||
                     std::signbit(c[j].x) != std::signbit(c[j - 1].x)))
                    return false;
            g = h;
        }
        return true;
    };
    auto member_position = [&](std::size_t j) { return cluster[j].k; };
    auto cluster_end = [&](std::size_t start) {  // x-cluster: gaps within xtol, chained
        std::size_t end = start + 1;
        while (end < m && chained(key_of(order[end - 1]), key_of(order[end]), xtol)) ++end;
        return end;
    };
    // Every allocation before the first write: a refused call (-19) leaves the arrays
    // as they were.
    std::size_t widest = 1;
    for (std::size_t start = 0; start < m;) {
        const std::size_t end = cluster_end(start);
        widest = std::max(widest, end - start);
        start = end;
    }
    group.reserve(widest);
    cluster.reserve(widest);
    std::size_t start = 0;
    while (start < m) {
        const std::size_t end = cluster_end(start);
        if (!use_y) {
            emit(key_of(order[start]), 0.0, sorted_position, start, end);
        } else if (end - start == 1) {
            emit(key_of(order[start]), ys[start], sorted_position, start, end);
        } else {
            cluster.clear();
            for (std::size_t k = start; k < end; ++k)
                cluster.push_back({ys[k], key_of(order[k]), k});
            // Ties (equal y and x) are left in the order this sort gives them.
            auto before = [](const Member& a, const Member& b) {
                return a.y < b.y || (a.y == b.y && a.x < b.x);
            };
            // A cluster already in order, as rows of gridded data give, is not sorted
            // again, unless a group of three or more holds ties (or a pair of ties differs
            // in the sign of a zero): the sort would give that order or the same
            // survivors (a group of two combines the same either way).
            if (!already_ordered(cluster, before))
                std::sort(cluster.begin(), cluster.end(), before);
            std::size_t g = 0;
            while (g < cluster.size()) {
                std::size_t h = g + 1;
                while (h < cluster.size() && chained(cluster[h - 1].y, cluster[h].y, ytol)) ++h;
                emit(cluster[g].x, cluster[g].y, member_position, g, h);
                g = h;
            }
        }
        start = end;
    }
    return static_cast<int>(out);
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
