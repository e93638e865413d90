// Step detection for grid coordinates (see xyz_step.hpp).
#include "gridding/xyz_step.hpp"

#include <algorithm>
#include <cmath>

#include "core/missing.hpp"

namespace zemath {

namespace {

// Differences grouped by the mode finder agree within this relative amount: coordinates
// written with 6 or 7 significant digits still fall into one group.
constexpr double kGroupRelTol = 1e-6;
// Euclid's loop on differences is bounded: each pass at least halves the pair.
constexpr int kMaxEuclidSteps = 200;

std::vector<double> usable_sorted(std::span<const double> values) {
    std::vector<double> v;
    v.reserve(values.size());
    for (double a : values)
        if (!is_missing(a) && !std::isnan(a) && std::isfinite(a)) v.push_back(a);
    std::sort(v.begin(), v.end());
    return v;
}

void append_differences(std::span<const double> sorted, double tol, std::vector<double>& out) {
    for (std::size_t i = 1; i < sorted.size(); ++i) {
        const double a = sorted[i - 1], b = sorted[i];
        const double d = std::fabs(b - a);
        if (d > tol * (std::fabs(a) + std::fabs(b))) out.push_back(d);
    }
}

}  // namespace

StepFit fit_step(std::span<const double> d, double fit_tol) {
    StepFit fit;
    if (d.empty()) return fit;
    if (d.size() == 1) {
        fit.ok = true;
        fit.step = d[0];
        return fit;
    }
    const double smallest = *std::min_element(d.begin(), d.end());
    if (!(smallest > 0.0)) return fit;
    double total = 0.0;
    for (double v : d) total += v / std::trunc(v / smallest + 0.5);
    fit.step = total / static_cast<double>(d.size());
    fit.ok = true;
    for (double v : d) {
        const double r = std::fmod(v, fit.step) / fit.step;
        fit.misfit = std::max(fit.misfit, std::min(r, 1.0 - r));
        if (r > fit_tol && r < 1.0 - fit_tol) fit.ok = false;
    }
    return fit;
}

std::vector<double> nonzero_differences(std::span<const double> values, double tol) {
    const std::vector<double> v = usable_sorted(values);
    std::vector<double> d;
    append_differences(v, tol, d);
    return d;
}

StepResult find_step(std::span<const double> values, double tol, double fit_tol) {
    StepResult result;
    const std::vector<double> v = usable_sorted(values);
    const int n = static_cast<int>(v.size());
    if (n < 2) {
        result.status = -18;
        return result;
    }
    if (fit_tol < 0.0) fit_tol = tol;
    const int root = static_cast<int>(std::floor(std::sqrt(static_cast<double>(n))));
    const int block = std::max(n / root, 20);
    const int blocks = n / block + (n % block != 0 ? 1 : 0);
    std::vector<double> block_steps, diffs;
    for (int b = 0; b < blocks; ++b) {
        const int first = b * block;
        const int last = std::min(first + block, n - 1);  // B + 1 values, one shared
        if (last <= first) break;
        diffs.clear();
        append_differences(
            std::span<const double>(v).subspan(static_cast<std::size_t>(first),
                                               static_cast<std::size_t>(last - first + 1)),
            tol, diffs);
        const StepFit fit = fit_step(diffs, fit_tol);
        result.misfit = std::max(result.misfit, fit.misfit);
        if (!fit.ok) {
            if (result.misfit >= 0.5) {
                result.status = -32;
                result.step = 0.0;
                return result;
            }
            continue;
        }
        block_steps.push_back(fit.step);
    }
    const StepFit all = fit_step(block_steps, fit_tol);
    result.misfit = std::max(result.misfit, all.misfit);
    if (!all.ok) {
        result.status = -32;
        result.step = 0.0;
        return result;
    }
    result.step = all.step;
    return result;
}

std::vector<DifferenceGroup> difference_groups(std::vector<double> d) {
    // A NaN difference (from infinite neighbours) belongs to no group; each group takes at
    // least its first difference, so the loop always moves on.
    std::erase_if(d, [](double v) { return std::isnan(v); });
    std::sort(d.begin(), d.end());
    std::vector<DifferenceGroup> groups;
    std::size_t i = 0;
    while (i < d.size()) {
        std::size_t j = i + 1;
        double total = d[i];
        while (j < d.size() && d[j] - d[i] <= kGroupRelTol * d[i]) total += d[j++];
        groups.push_back({total / static_cast<double>(j - i), static_cast<int>(j - i)});
        i = j;
    }
    return groups;
}

double approximate_gcd(std::span<const double> d, double tol) {
    if (d.empty()) return 0.0;
    const double largest = *std::max_element(d.begin(), d.end());
    // At least 1e-15 of the largest difference (a few ulps): smaller remainders are rounding.
    const double threshold = std::max(std::fabs(tol), 1e-15) * largest;
    double g = d[0];
    for (double value : d) {
        double a = std::max(g, value), b = std::min(g, value);
        for (int it = 0; it < kMaxEuclidSteps && b > threshold; ++it) {
            double r = std::fmod(a, b);
            if (b - r <= threshold) r = 0.0;  // a near-whole multiple of b
            a = b;
            b = r;
        }
        g = a;
    }
    return g;
}

}  // namespace zemath

// ---- exports -------------------------------------------------------------------------

#include "core/guard.hpp"
#include "zemath/xyz.h"

namespace {

using zemath::DifferenceGroup;

std::span<const double> as_span(const double* x, long long n) {
    return {x, static_cast<std::size_t>(n)};
}

// The most frequent group; the smaller step on ties (groups are ascending).
DifferenceGroup mode_group(const std::vector<DifferenceGroup>& groups) {
    DifferenceGroup best;
    for (const auto& g : groups)
        if (g.count > best.count) best = g;
    return best;
}

}  // namespace

ZEMATH_API int zemath_find_array_step(const double* x, int n, double* step, double tol) noexcept {
    if (x == nullptr || step == nullptr) return ZEMATH_ERR_NULL_POINTER;
    if (n < 2) {
        *step = 0.0;
        return ZEMATH_ERR_TOO_FEW_POINTS;
    }
    return zemath::guard_status([&] {
        const zemath::StepResult r = zemath::find_step(as_span(x, n), tol, tol);
        *step = r.step;
        return r.status;
    });
}

namespace {

int stat_finder(const double* x, unsigned int n, double* step, double tol, int* count,
                bool check_fit, double probability) {
    if (x == nullptr || step == nullptr || (count == nullptr && probability < 0.0))
        return ZEMATH_ERR_NULL_POINTER;
    if (n < 2) return ZEMATH_ERR_TOO_FEW_POINTS;
    return zemath::guard_status([&] {
        const std::vector<double> d = zemath::nonzero_differences(as_span(x, n), tol);
        const auto groups = zemath::difference_groups(d);
        if (groups.empty()) return static_cast<int>(ZEMATH_ERR_NO_STEP);
        const DifferenceGroup best = mode_group(groups);
        *step = best.mean;
        if (count != nullptr) *count = best.count;
        if (probability >= 0.0 &&
            static_cast<double>(best.count) < probability * static_cast<double>(d.size()))
            return static_cast<int>(ZEMATH_ERR_NO_STEP);
        if (check_fit) {
            // Never tighter than the 1e-6 the difference groups are formed with (zemath/xyz.h).
            const double fit_tol = std::max(std::fabs(tol), 1e-6);
            for (double v : d) {
                const double r = std::fmod(v, best.mean) / best.mean;
                if (v < best.mean * (1.0 - fit_tol) || (r > fit_tol && r < 1.0 - fit_tol))
                    return static_cast<int>(ZEMATH_ERR_NO_STEP);
            }
        }
        return static_cast<int>(ZEMATH_OK);
    });
}

}  // namespace

ZEMATH_API int zemath_find_array_step_stat(const double* x, unsigned int n, double* step,
                                           double tol, int* count) noexcept {
    return stat_finder(x, n, step, tol, count, false, -1.0);
}

ZEMATH_API int zemath_find_array_step_stat_ex(const double* x, unsigned int n, double* step,
                                              double tol, int* count) noexcept {
    return stat_finder(x, n, step, tol, count, true, -1.0);
}

ZEMATH_API int zemath_find_array_step_by_probability(const double* x, unsigned int n, double* step,
                                                     double tol, double dProbability) noexcept {
    const double p = std::isnan(dProbability) ? 0.0 : std::clamp(dProbability, 0.0, 1.0);
    return stat_finder(x, n, step, tol, nullptr, false, p);
}

ZEMATH_API int zemath_find_array_step_by_gcd(const double* x, unsigned int n, double* step,
                                             double tol, double dMinStep) noexcept {
    if (x == nullptr || step == nullptr) return ZEMATH_ERR_NULL_POINTER;
    if (n < 2) return ZEMATH_ERR_TOO_FEW_POINTS;
    return zemath::guard_status([&] {
        const std::vector<double> d = zemath::nonzero_differences(as_span(x, n), tol);
        if (d.empty()) return static_cast<int>(ZEMATH_ERR_NO_STEP);
        const double g = zemath::approximate_gcd(d, tol);
        if (!(g > 0.0) || g < dMinStep) return static_cast<int>(ZEMATH_ERR_NO_STEP);
        *step = g;
        return static_cast<int>(ZEMATH_OK);
    });
}

ZEMATH_API int zemath_array_step_histogram(const double* x, int n, double tol, double* steps,
                                           int* counts, int nMax) noexcept {
    if (x == nullptr || steps == nullptr || counts == nullptr) return ZEMATH_ERR_NULL_POINTER;
    if (n < 2) return ZEMATH_ERR_TOO_FEW_POINTS;
    return zemath::guard_status([&] {
        const auto groups =
            zemath::difference_groups(zemath::nonzero_differences(as_span(x, n), tol));
        const int total = static_cast<int>(groups.size());
        for (int k = 0; k < std::min(total, nMax); ++k) {
            steps[k] = groups[static_cast<std::size_t>(k)].mean;
            counts[k] = groups[static_cast<std::size_t>(k)].count;
        }
        return total;
    });
}

ZEMATH_API int zemath_get_intervals(const double* x, int n, double tol, double* intervals,
                                    int nMax) noexcept {
    if (x == nullptr || intervals == nullptr) return ZEMATH_ERR_NULL_POINTER;
    if (n < 2) return ZEMATH_ERR_TOO_FEW_POINTS;
    return zemath::guard_status([&] {
        const std::vector<double> d = zemath::nonzero_differences(as_span(x, n), tol);
        const int total = static_cast<int>(d.size());
        for (int k = 0; k < std::min(total, nMax); ++k)
            intervals[k] = d[static_cast<std::size_t>(k)];
        return total;
    });
}

ZEMATH_API int zemath_array_anchor(const double* x, int n, double step, double* anchor) noexcept {
    if (x == nullptr || anchor == nullptr) return ZEMATH_ERR_NULL_POINTER;
    double smallest = 0.0;
    int usable = 0;
    for (int i = 0; i < n; ++i) {
        if (zemath::is_missing(x[i]) || std::isnan(x[i])) continue;
        if (usable++ == 0 || x[i] < smallest) smallest = x[i];
    }
    if (usable == 0) return ZEMATH_ERR_TOO_FEW_POINTS;
    if (!(step > 0.0) || !std::isfinite(step)) {
        *anchor = smallest;
        return ZEMATH_OK;
    }
    double offset = 0.0;
    for (int i = 0; i < n; ++i) {
        if (zemath::is_missing(x[i]) || std::isnan(x[i])) continue;
        const double u = (x[i] - smallest) / step;
        offset += (u - std::round(u)) * step;
    }
    *anchor = smallest + offset / usable;
    return ZEMATH_OK;
}
