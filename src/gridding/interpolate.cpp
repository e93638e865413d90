// 1-D interpolation: values of a curve at new abscissas by linear, cubic-spline (natural
// or not-a-knot), Akima, monotone cubic Hermite (PCHIP) or nearest-point interpolation.
//
// Method: every cubic method is a piecewise cubic Hermite curve fixed by the values and
// first derivatives (slopes) at the nodes, evaluated by Horner's rule in x - x[j]. The
// spline slopes solve the tridiagonal system of C2 continuity with the end conditions
// (zero second derivative, or a continuous third derivative at the second and the
// second-last node) by elimination without pivoting, O(n): the interior rows are
// diagonally dominant and the not-a-knot rows stay so after the first elimination step.
// Akima slopes weight the neighbouring secants by the differences of the secants beyond
// them (two secants extrapolated linearly at each end; where both weights vanish, to
// within 1e-9 of the largest weight sum, the mean of the outer secants). PCHIP slopes are
// weighted harmonic means of the neighbouring secants, 0 where the data turn, with
// three-point end slopes limited to keep the shape. Sorted new abscissas are located in
// one forward sweep that gallops over runs of nodes; unsorted ones by bisection.
//
// Accuracy: a few units in the last place of the values for well-conditioned data; the
// spline solve is backward stable for strictly ascending abscissas.
//
// Failure codes: -10, -11, -17, -18, -19 as documented in zemath/interpolation.h.
//
// References: C. de Boor, A Practical Guide to Splines (1978), ch. IV (cubic spline
// interpolation, not-a-knot condition); H. Akima, J. ACM 17 (1970) 589-602;
// F. N. Fritsch and R. E. Carlson, SIAM J. Numer. Anal. 17 (1980) 238-246, with the
// weighted harmonic mean of F. N. Fritsch and J. Butland, SIAM J. Sci. Stat. Comput. 5
// (1984) 300-304.
#include "gridding/interpolate.hpp"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <vector>

#include "core/guard.hpp"
#include "core/missing.hpp"
#include "zemath/interpolation.h"
#include "zemath/status.h"

namespace zemath {

namespace {

// Solves the tridiagonal system in place (sub[0] and sup[n-1] unused); the solution
// replaces rhs. No pivoting: the spline systems are safe without it (see above).
void solve_tridiagonal(std::vector<double>& sub, std::vector<double>& diag,
                       std::vector<double>& sup, std::span<double> rhs) {
    const std::size_t n = rhs.size();
    for (std::size_t i = 1; i < n; ++i) {
        const double w = sub[i] / diag[i - 1];
        diag[i] -= w * sup[i - 1];
        rhs[i] -= w * rhs[i - 1];
    }
    rhs[n - 1] /= diag[n - 1];
    for (std::size_t i = n - 1; i-- > 0;) rhs[i] = (rhs[i] - sup[i] * rhs[i + 1]) / diag[i];
}

void spline_slopes(bool natural, std::span<const double> x, std::span<const double> y,
                   std::span<double> s) {
    const std::size_t n = x.size();
    const auto dx = [&](std::size_t i) { return x[i + 1] - x[i]; };
    const auto m = [&](std::size_t i) { return (y[i + 1] - y[i]) / dx(i); };
    if (n == 2) {
        s[0] = s[1] = m(0);
        return;
    }
    if (!natural && n == 3) {
        // Not-a-knot on three points: the parabola through them.
        const double m0 = m(0), curvature = (m(1) - m0) / (x[2] - x[0]);
        s[0] = m0 - curvature * dx(0);
        s[1] = m0 + curvature * dx(0);
        s[2] = m0 + curvature * (dx(0) + 2 * dx(1));
        return;
    }
    std::vector<double> sub(n), diag(n), sup(n);
    for (std::size_t i = 1; i + 1 < n; ++i) {
        sub[i] = dx(i);
        diag[i] = 2 * (dx(i - 1) + dx(i));
        sup[i] = dx(i - 1);
        s[i] = 3 * (dx(i) * m(i - 1) + dx(i - 1) * m(i));
    }
    if (natural) {  // 2 s0 + s1 = 3 m0 and its mirror: zero second derivative at the ends
        diag[0] = 2;
        sup[0] = 1;
        s[0] = 3 * m(0);
        sub[n - 1] = 1;
        diag[n - 1] = 2;
        s[n - 1] = 3 * m(n - 2);
    } else {  // one cubic over the first two and over the last two intervals
        const double d0 = x[2] - x[0], d1 = x[n - 1] - x[n - 3];
        diag[0] = dx(1);
        sup[0] = d0;
        s[0] = ((dx(0) + 2 * d0) * dx(1) * m(0) + dx(0) * dx(0) * m(1)) / d0;
        sub[n - 1] = d1;
        diag[n - 1] = dx(n - 3);
        s[n - 1] =
            (dx(n - 2) * dx(n - 2) * m(n - 3) + (2 * d1 + dx(n - 2)) * dx(n - 3) * m(n - 2)) / d1;
    }
    solve_tridiagonal(sub, diag, sup, s);
}

void akima_slopes(std::span<const double> x, std::span<const double> y, std::span<double> s) {
    const std::size_t n = x.size();
    // Secants with two extrapolated on each side: secant i of the data is e[i + 2].
    std::vector<double> e(n + 3);
    for (std::size_t i = 0; i + 1 < n; ++i) e[i + 2] = (y[i + 1] - y[i]) / (x[i + 1] - x[i]);
    e[1] = 2 * e[2] - e[3];
    e[0] = 2 * e[1] - e[2];
    e[n + 1] = 2 * e[n] - e[n - 1];
    e[n + 2] = 2 * e[n + 1] - e[n];
    double largest = 0;
    for (std::size_t i = 0; i < n; ++i)
        largest = std::max(largest, std::fabs(e[i + 3] - e[i + 2]) + std::fabs(e[i + 1] - e[i]));
    // Below this the weights count as zero: the slope is not defined by them.
    const double threshold = 1e-9 * largest;
    for (std::size_t i = 0; i < n; ++i) {
        const double w1 = std::fabs(e[i + 3] - e[i + 2]), w2 = std::fabs(e[i + 1] - e[i]);
        const double sum = w1 + w2;
        s[i] = sum > threshold ? (w1 * e[i + 1] + w2 * e[i + 2]) / sum : 0.5 * (e[i + 3] + e[i]);
    }
}

double sign(double v) {
    return v > 0 ? 1.0 : (v < 0 ? -1.0 : 0.0);
}

// Three-point end slope, limited to keep the shape of the data.
double pchip_end_slope(double h0, double h1, double m0, double m1) {
    const double d = ((2 * h0 + h1) * m0 - h0 * m1) / (h0 + h1);
    if (sign(d) != sign(m0)) return 0.0;
    if (sign(m0) != sign(m1) && std::fabs(d) > 3 * std::fabs(m0)) return 3 * m0;
    return d;
}

void pchip_slopes(std::span<const double> x, std::span<const double> y, std::span<double> s) {
    const std::size_t n = x.size();
    const auto h = [&](std::size_t i) { return x[i + 1] - x[i]; };
    const auto m = [&](std::size_t i) { return (y[i + 1] - y[i]) / h(i); };
    if (n == 2) {
        s[0] = s[1] = m(0);
        return;
    }
    for (std::size_t k = 1; k + 1 < n; ++k) {
        const double ml = m(k - 1), mr = m(k);
        if (sign(ml) != sign(mr) || ml == 0 || mr == 0) {
            s[k] = 0;  // a local extreme or a flat piece: keep the data's shape
            continue;
        }
        const double w1 = 2 * h(k) + h(k - 1), w2 = h(k) + 2 * h(k - 1);
        s[k] = (w1 + w2) / (w1 / ml + w2 / mr);
    }
    s[0] = pchip_end_slope(h(0), h(1), m(0), m(1));
    s[n - 1] = pchip_end_slope(h(n - 2), h(n - 3), m(n - 2), m(n - 3));
}

bool is_target_usable(double t) {
    return !is_nan(t) && !is_missing(t);
}

// Last index j in [j, last] with x[j] <= t, from a j that already satisfies it (or 0):
// gallops forward, then bisects the last step.
std::size_t advance(const double* x, std::size_t last, std::size_t j, double t) {
    if (j >= last || !(x[j + 1] <= t)) return j;
    std::size_t low = j + 1, step = 1;
    while (low + step <= last && x[low + step] <= t) {
        low += step;
        step *= 2;
    }
    std::size_t high = std::min(low + step, last + 1);
    while (high - low > 1) {
        const std::size_t mid = low + (high - low) / 2;
        if (x[mid] <= t)
            low = mid;
        else
            high = mid;
    }
    return low;
}

// Interval j in [0, n-2] holding t (x[j] <= t < x[j+1]; the ends extend to infinity).
std::size_t locate(std::span<const double> x, double t) {
    const auto first = x.begin() + 1, last = x.end() - 1;
    return static_cast<std::size_t>(std::upper_bound(first, last, t) - first);
}

enum class PieceKind { linear, nearest, cubic };

// The interpolant: the data, and for the cubic methods the slopes and the power-form
// coefficients of each piece about its left node.
struct Pieces {
    std::span<const double> x, y;
    const double *slope, *c2, *c3;
    InterpOutside outside;
};

template <PieceKind Kind>
double piece_value(const Pieces& p, std::size_t j, double t) {
    const std::span<const double> x = p.x, y = p.y;
    if constexpr (Kind == PieceKind::linear) {
        const double slope_j = (y[j + 1] - y[j]) / (x[j + 1] - x[j]);
        return slope_j * (t - x[j]) + y[j];
    } else if constexpr (Kind == PieceKind::nearest) {
        const double mid = 0.5 * x[j] + 0.5 * x[j + 1];
        return t > mid ? y[j + 1] : y[j];  // exactly halfway goes to the lower point
    } else {
        const double u = t - x[j];
        return y[j] + u * (p.slope[j] + u * (p.c2[j] + u * p.c3[j]));
    }
}

template <PieceKind Kind>
double value_at(const Pieces& p, std::size_t j, double t) {
    const std::size_t n = p.x.size();
    if (t < p.x[0] || t > p.x[n - 1]) {
        if (p.outside == InterpOutside::missing) return kNanum;
        if (p.outside == InterpOutside::hold || Kind == PieceKind::nearest)
            return t < p.x[0] ? p.y[0] : p.y[n - 1];
    }
    return piece_value<Kind>(p, j, t);
}

template <PieceKind Kind>
void evaluate_targets(const Pieces& p, std::span<const double> xnew, std::span<double> ynew) {
    // Targets in ascending order (unusable ones aside) are located in one sweep.
    bool sorted = true;
    double previous = -std::numeric_limits<double>::infinity();
    for (double t : xnew) {
        if (!is_target_usable(t)) continue;
        if (t < previous) {
            sorted = false;
            break;
        }
        previous = t;
    }
    const std::size_t m = xnew.size(), last = p.x.size() - 2;
    if (sorted) {
        std::size_t j = 0;
        for (std::size_t k = 0; k < m; ++k) {
            const double t = xnew[k];
            if (!is_target_usable(t)) {
                ynew[k] = kNanum;
                continue;
            }
            j = advance(p.x.data(), last, j, t);
            ynew[k] = value_at<Kind>(p, j, t);
        }
    } else {
        for (std::size_t k = 0; k < m; ++k) {
            const double t = xnew[k];
            ynew[k] = is_target_usable(t) ? value_at<Kind>(p, locate(p.x, t), t) : kNanum;
        }
    }
}

}  // namespace

void cubic_node_slopes(InterpMethod method, std::span<const double> x, std::span<const double> y,
                       std::span<double> slope) {
    switch (method) {
        case InterpMethod::natural_spline:
            spline_slopes(true, x, y, slope);
            break;
        case InterpMethod::not_a_knot_spline:
            spline_slopes(false, x, y, slope);
            break;
        case InterpMethod::akima:
            if (x.size() == 2) {
                spline_slopes(true, x, y, slope);  // two points: the straight line
            } else {
                akima_slopes(x, y, slope);
            }
            break;
        case InterpMethod::pchip:
            pchip_slopes(x, y, slope);
            break;
        default:
            break;
    }
}

void interpolate_clean(std::span<const double> x, std::span<const double> y,
                       std::span<const double> xnew, std::span<double> ynew, InterpMethod method,
                       InterpOutside outside) {
    const std::size_t n = x.size();
    const bool cubic = method != InterpMethod::linear && method != InterpMethod::nearest;
    // Cubic pieces in power form about x[j]: y + u (s + u (c2 + u c3)), u = t - x[j].
    std::vector<double> slope, c2, c3;
    if (cubic) {
        slope.resize(n);
        c2.resize(n - 1);
        c3.resize(n - 1);
        cubic_node_slopes(method, x, y, slope);
        for (std::size_t j = 0; j + 1 < n; ++j) {
            // One division per piece: the reciprocal costs at most an ulp or two here.
            const double h = x[j + 1] - x[j], secant = (y[j + 1] - y[j]) / h, inv_h = 1 / h;
            const double t = (slope[j] + slope[j + 1] - 2 * secant) * inv_h;
            c3[j] = t * inv_h;
            c2[j] = (secant - slope[j]) * inv_h - t;
        }
    }
    const Pieces pieces{x, y, slope.data(), c2.data(), c3.data(), outside};
    switch (method) {
        case InterpMethod::linear:
            evaluate_targets<PieceKind::linear>(pieces, xnew, ynew);
            break;
        case InterpMethod::nearest:
            evaluate_targets<PieceKind::nearest>(pieces, xnew, ynew);
            break;
        default:
            evaluate_targets<PieceKind::cubic>(pieces, xnew, ynew);
            break;
    }
}

int interpolate(std::span<const double> x, std::span<const double> y, std::span<const double> xnew,
                std::span<double> ynew, InterpMethod method, InterpOutside outside) {
    const std::size_t n = x.size();
    std::size_t usable = 0;
    for (std::size_t i = 0; i < n; ++i) usable += !is_missing(x[i]) && !is_missing(y[i]);
    std::vector<double> kept_x, kept_y;
    if (usable != n) {  // compact the usable points into working copies
        kept_x.reserve(usable);
        kept_y.reserve(usable);
        for (std::size_t i = 0; i < n; ++i)
            if (!is_missing(x[i]) && !is_missing(y[i])) {
                kept_x.push_back(x[i]);
                kept_y.push_back(y[i]);
            }
        x = kept_x;
        y = kept_y;
    }
    if (usable < 2) return ZEMATH_ERR_TOO_FEW_POINTS;
    for (std::size_t i = 0; i + 1 < usable; ++i)
        if (!(x[i] < x[i + 1])) return ZEMATH_ERR_NOT_MONOTONIC;  // NaN fails here too
    if (xnew.empty()) return 0;
    interpolate_clean(x, y, xnew, ynew, method, outside);
    return 0;
}

}  // namespace zemath

ZEMATH_API int zemath_interpolate(const double* x, const double* y, int n, const double* xnew,
                                  int nnew, double* ynew, int method, int outside) noexcept {
    if (x == nullptr || y == nullptr || xnew == nullptr || ynew == nullptr)
        return ZEMATH_ERR_NULL_POINTER;
    if (n < 2 || nnew < 0) return ZEMATH_ERR_TOO_FEW_POINTS;
    if (method < 0 || method > 5 || outside < 0 || outside > 2) return ZEMATH_ERR_BAD_OPTION;
    return zemath::guard_status([&] {
        return zemath::interpolate(std::span<const double>(x, static_cast<std::size_t>(n)),
                                   std::span<const double>(y, static_cast<std::size_t>(n)),
                                   std::span<const double>(xnew, static_cast<std::size_t>(nnew)),
                                   std::span<double>(ynew, static_cast<std::size_t>(nnew)),
                                   static_cast<zemath::InterpMethod>(method),
                                   static_cast<zemath::InterpOutside>(outside));
    });
}
