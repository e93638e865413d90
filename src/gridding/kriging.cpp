// Ordinary kriging with a power-law generalised covariance on bucket neighbourhoods (see
// zemath/kriging.h for the model and the search).
//
// Method: data and targets are mapped to bucket units and counting-sorted into a k by k
// bucket grid. For each bucket holding targets, the neighbourhood of its first target is
// collected ring by ring; the (s+1) by (s+1) system [C 50; 50 0] is factorised once by LU
// with partial pivoting (Eigen). Because the matrix is symmetric, the estimate
// z' A^-1 [c; 50] equals beta' [c; 50] with A beta = [z; 0]: one extra solve per bucket,
// then O(s) per target (the same estimate as solving for the weights per target, up to
// rounding). The variance needs the weights themselves: one solve per target.
// Accuracy: that of the LU solve (condition of the kriging matrix); exact reproduction
// of the data at data points and of constant fields up to rounding.
// Failure codes: -37, -11, -8, -38 (see the header).
// Reference: G. Matheron, "The intrinsic random functions and their applications"
// (1973) for the generalised covariance h^e, 0 < e < 2.
#include <Eigen/Dense>
#include <algorithm>
#include <cmath>
#include <vector>

#include "core/guard.hpp"
#include "core/missing.hpp"
#include "zemath/kriging.h"
#include "zemath/status.h"

namespace zemath {
namespace {

constexpr double kSill = 50.0;           // C(0), and the Lagrange row's entries
constexpr double kCoincident = 1e-15;    // distances below this are coincident points
constexpr double kBoxMargin = 1.01;      // the data span k / 1.01 buckets
constexpr double kPivotRatio = 1e-13;    // smallest |pivot| / largest accepted
constexpr int kMinRings = 2;             // the target's bucket and its first ring
constexpr int kMaxSizeIterations = 100;  // the bucket-size rule settles in a few steps

struct Params {
    int buckets = 1;     // k per side
    double range = 1.0;  // r, bucket units
    double exponent = 1.0;
};

Params bucket_params(int n, double smooth, double exponent) {
    Params p;
    const int t =
        static_cast<int>(std::min(std::trunc(16.0 * smooth * smooth), static_cast<double>(n)));
    int per_bucket = t < 50 ? 50 : (t > 100 ? 16 : t);
    int k = 1;
    for (int it = 0; it < kMaxSizeIterations; ++it) {
        k = std::max(
            1, static_cast<int>(std::trunc(std::sqrt(static_cast<double>(n) / per_bucket) + 0.5)));
        const int next = static_cast<int>(std::trunc(static_cast<double>(n) / k / k + 0.5));
        if (next == per_bucket) break;
        per_bucket = std::max(next, 1);
    }
    p.buckets = k;
    p.range = 2.0 * smooth / std::sqrt(static_cast<double>(std::max(per_bucket, 1)));
    p.exponent = exponent;
    return p;
}

struct Mapped {
    std::vector<double> u, v, z;
};

// Position on the bucket grid, (v - lo) k / (hi - lo) / margin for data spanning [lo, hi]
// (0 when hi = lo). Near DBL_MAX the difference, the span or the product can overflow
// (the position came out NaN); the halved coordinates, an exact scaling, give it then.
double grid_position(double v, double lo, double hi, double k) {
    const double span = hi - lo;
    if (!(span > 0.0)) return 0.0;
    if (std::isfinite(span)) {
        const double u = (v - lo) * k / span / kBoxMargin;
        if (std::isfinite(u) || !std::isfinite(v)) return u;
    }
    return (0.5 * v - 0.5 * lo) / (0.5 * hi - 0.5 * lo) * k / kBoxMargin;
}

class Kriging {
  public:
    Kriging(const Params& p, Mapped data, double xmin, double xmax, double ymin, double ymax)
        : p_(p), d_(std::move(data)), xmin_(xmin), xmax_(xmax), ymin_(ymin), ymax_(ymax) {
        const int k = p_.buckets;
        start_.assign(static_cast<std::size_t>(k) * k + 1, 0);
        std::vector<int> bucket(d_.u.size());
        for (std::size_t i = 0; i < d_.u.size(); ++i) {
            bucket[i] = bucket_of(d_.u[i], d_.v[i]);
            ++start_[bucket[i] + 1];
        }
        for (std::size_t b = 1; b < start_.size(); ++b) start_[b] += start_[b - 1];
        order_.resize(d_.u.size());
        std::vector<int> fill(start_.begin(), start_.end() - 1);
        for (std::size_t i = 0; i < d_.u.size(); ++i)
            order_[fill[bucket[i]]++] = static_cast<int>(i);
        inv_r2_ = 1.0 / (p_.range * p_.range);
    }

    double map_x(double x) const { return grid_position(x, xmin_, xmax_, p_.buckets); }
    double map_y(double y) const { return grid_position(y, ymin_, ymax_, p_.buckets); }

    int bucket_of(double u, double v) const {
        const int k = p_.buckets;
        const int bx =
            std::clamp(static_cast<int>(std::clamp(u, -1.0, static_cast<double>(k))), 0, k - 1);
        const int by =
            std::clamp(static_cast<int>(std::clamp(v, -1.0, static_cast<double>(k))), 0, k - 1);
        return by * k + bx;
    }

    // C from a squared distance: 50 - (h / r)^e.
    double covariance(double h2) const {
        if (h2 < kCoincident * kCoincident) return kSill;
        const double q = h2 * inv_r2_;
        if (p_.exponent == 1.0) return kSill - std::sqrt(q);
        if (p_.exponent == 2.0) return kSill - q;
        if (p_.exponent == 0.0) return kSill - 1.0;
        return kSill - std::pow(q, 0.5 * p_.exponent);
    }

    void neighbours(double tu, double tv, int n_point, int max_neighbours,
                    std::vector<int>& out) const {
        const int k = p_.buckets;
        const int b = bucket_of(tu, tv);
        const int bx = b % k, by = b / k;
        out.clear();
        int quadrant[4] = {0, 0, 0, 0};
        for (int ring = 0;; ++ring) {
            for (int j = by - ring; j <= by + ring; ++j) {
                if (j < 0 || j >= k) continue;
                const bool edge_row = j == by - ring || j == by + ring;
                for (int i = bx - ring; i <= bx + ring;
                     i += (edge_row || ring == 0) ? 1 : 2 * ring) {
                    if (i < 0 || i >= k) continue;
                    for (int q = start_[j * k + i]; q < start_[j * k + i + 1]; ++q) {
                        const int point = order_[q];
                        out.push_back(point);
                        const bool right = d_.u[point] > tu, up = d_.v[point] > tv;
                        ++quadrant[(right ? 0 : 2) + (up ? 0 : 1)];
                    }
                }
            }
            const bool whole =
                bx - ring <= 0 && by - ring <= 0 && bx + ring >= k - 1 && by + ring >= k - 1;
            if (whole) break;
            if (ring + 1 < kMinRings || out.empty()) continue;
            const bool right_edge = bx + ring >= k - 1, left_edge = bx - ring <= 0;
            const bool top_edge = by + ring >= k - 1, bottom_edge = by - ring <= 0;
            const bool satisfied = (quadrant[0] >= n_point || right_edge || top_edge) &&
                                   (quadrant[1] >= n_point || right_edge || bottom_edge) &&
                                   (quadrant[2] >= n_point || left_edge || top_edge) &&
                                   (quadrant[3] >= n_point || left_edge || bottom_edge);
            if (satisfied) break;
        }
        if (max_neighbours > 0 && static_cast<int>(out.size()) > max_neighbours)
            out.resize(static_cast<std::size_t>(max_neighbours));
    }

    int run(const std::vector<double>& tu, const std::vector<double>& tv, int n_point,
            int max_neighbours, double* z_out, double* var_out) const {
        const int k = p_.buckets;
        const int m = static_cast<int>(tu.size());
        // Targets counting-sorted by bucket, caller order kept inside a bucket.
        std::vector<int> tstart(static_cast<std::size_t>(k) * k + 1, 0),
            tbucket(static_cast<std::size_t>(m), -1);
        for (int i = 0; i < m; ++i) {
            if (std::isnan(tu[i]) || std::isnan(tv[i])) continue;
            tbucket[i] = bucket_of(tu[i], tv[i]);
            ++tstart[tbucket[i] + 1];
        }
        for (std::size_t b = 1; b < tstart.size(); ++b) tstart[b] += tstart[b - 1];
        std::vector<int> torder(static_cast<std::size_t>(tstart.back()));
        {
            std::vector<int> fill(tstart.begin(), tstart.end() - 1);
            for (int i = 0; i < m; ++i)
                if (tbucket[i] >= 0) torder[fill[tbucket[i]]++] = i;
        }
        for (int i = 0; i < m; ++i) {
            if (tbucket[i] < 0) {
                z_out[i] = kNanum;
                if (var_out) var_out[i] = kNanum;
            }
        }
        std::vector<int> nb;
        Eigen::MatrixXd a;
        Eigen::VectorXd rhs, beta, weights;
        for (int b = 0; b < k * k; ++b) {
            if (tstart[b] == tstart[b + 1]) continue;
            const int first = torder[tstart[b]];
            neighbours(tu[first], tv[first], n_point, max_neighbours, nb);
            const int s = static_cast<int>(nb.size());
            a.resize(s + 1, s + 1);
            for (int i = 0; i < s; ++i) {
                a(i, i) = kSill;
                for (int j = i + 1; j < s; ++j) {
                    const double du = d_.u[nb[i]] - d_.u[nb[j]], dv = d_.v[nb[i]] - d_.v[nb[j]];
                    a(i, j) = a(j, i) = covariance(du * du + dv * dv);
                }
                a(i, s) = a(s, i) = kSill;
            }
            a(s, s) = 0.0;
            const Eigen::PartialPivLU<Eigen::MatrixXd> lu(a);
            const auto diag = lu.matrixLU().diagonal().cwiseAbs();
            if (!diag.allFinite() || !(diag.minCoeff() > kPivotRatio * diag.maxCoeff()))
                return ZEMATH_ERR_KRIGING_SOLVE;
            rhs.resize(s + 1);
            for (int i = 0; i < s; ++i) rhs(i) = d_.z[nb[i]];
            rhs(s) = 0.0;
            beta = lu.solve(rhs);
            // One step of iterative refinement: kriging matrices of power-law covariances
            // are poorly conditioned, and beta multiplies covariances of size 50.
            beta += lu.solve(rhs - a * beta);
            if (!beta.allFinite()) return ZEMATH_ERR_KRIGING_SOLVE;
            for (int q = tstart[b]; q < tstart[b + 1]; ++q) {
                const int t = torder[q];
                double estimate = kSill * beta(s);
                for (int i = 0; i < s; ++i) {
                    const double du = d_.u[nb[i]] - tu[t], dv = d_.v[nb[i]] - tv[t];
                    const double c = covariance(du * du + dv * dv);
                    rhs(i) = c;
                    estimate += beta(i) * c;
                }
                double variance = 0.0;
                if (var_out) {
                    rhs(s) = kSill;
                    weights = lu.solve(rhs);
                    weights += lu.solve(rhs - a * weights);
                    variance = kSill - rhs.dot(weights);
                }
                // A target so far from the data that its covariances overflow the system's
                // arithmetic has no estimate.
                const bool finite = std::isfinite(estimate) && std::isfinite(variance);
                z_out[t] = finite ? estimate : kNanum;
                if (var_out) var_out[t] = finite ? variance : kNanum;
            }
        }
        return 0;
    }

  private:
    Params p_;
    Mapped d_;
    double xmin_, xmax_, ymin_, ymax_;
    double inv_r2_ = 1.0;
    std::vector<int> start_, order_;
};

bool usable(double v) {
    return std::isfinite(v) && !is_missing(v);
}

int krige(int n, const double* x, const double* y, const double* z, int n_point, double smooth,
          double exponent, int m, const double* xt, const double* yt, double* zt, double* var,
          int max_neighbours) {
    if (!(smooth > 0.0) || !(exponent >= 0.0)) return ZEMATH_ERR_BAD_INTERVAL;
    if (x == nullptr || y == nullptr || z == nullptr || xt == nullptr || yt == nullptr ||
        zt == nullptr)
        return ZEMATH_ERR_NULL_POINTER;
    smooth = std::min(smooth, 3.0);
    exponent = std::min(exponent, 2.0);
    return guard_status([&] {
        Mapped data;
        for (int i = 0; i < n; ++i) {
            if (!usable(x[i]) || !usable(y[i]) || is_missing(z[i])) continue;
            data.u.push_back(x[i]), data.v.push_back(y[i]), data.z.push_back(z[i]);
        }
        const int count = static_cast<int>(data.u.size());
        if (count < 1) return static_cast<int>(ZEMATH_ERR_NULL_CURVE);
        if (m < 1) return 0;
        const auto [xlo, xhi] = std::minmax_element(data.u.begin(), data.u.end());
        const auto [ylo, yhi] = std::minmax_element(data.v.begin(), data.v.end());
        const double xmin = *xlo, xmax = *xhi, ymin = *ylo, ymax = *yhi;
        const Params p = bucket_params(count, smooth, exponent);
        const double k = p.buckets;
        for (int i = 0; i < count; ++i) {
            data.u[i] = grid_position(data.u[i], xmin, xmax, k);
            data.v[i] = grid_position(data.v[i], ymin, ymax, k);
        }
        const Kriging engine(p, std::move(data), xmin, xmax, ymin, ymax);
        std::vector<double> tu(static_cast<std::size_t>(m)), tv(static_cast<std::size_t>(m));
        for (int i = 0; i < m; ++i) {
            const bool ok = usable(xt[i]) && usable(yt[i]);
            tu[i] = ok ? engine.map_x(xt[i]) : std::nan("");
            tv[i] = ok ? engine.map_y(yt[i]) : std::nan("");
        }
        std::vector<double> zbuf(static_cast<std::size_t>(m)),
            vbuf(var ? static_cast<std::size_t>(m) : 0);
        const int status =
            engine.run(tu, tv, n_point, max_neighbours, zbuf.data(), var ? vbuf.data() : nullptr);
        if (status != 0) return status;
        std::copy(zbuf.begin(), zbuf.end(), zt);
        if (var) std::copy(vbuf.begin(), vbuf.end(), var);
        return 0;
    });
}

}  // namespace
}  // namespace zemath

ZEMATH_API int zemath_2d_kriging_scat(int n, const double* x, const double* y, const double* z,
                                      int nPoint, double dSmooth, double dExponent, int m,
                                      const double* xTarget, const double* yTarget, double* zTarget,
                                      int nMaxNeighbors) noexcept {
    return zemath::krige(n, x, y, z, nPoint, dSmooth, dExponent, m, xTarget, yTarget, zTarget,
                         nullptr, nMaxNeighbors);
}

ZEMATH_API int zemath_2d_kriging_scat_ex(int n, const double* x, const double* y, const double* z,
                                         int nPoint, double dSmooth, double dExponent, int m,
                                         const double* xTarget, const double* yTarget,
                                         double* zTarget, double* variance,
                                         int nMaxNeighbors) noexcept {
    return zemath::krige(n, x, y, z, nPoint, dSmooth, dExponent, m, xTarget, yTarget, zTarget,
                         variance, nMaxNeighbors);
}

ZEMATH_API int zemath_2d_kriging_grid(int n, const double* x, const double* y, const double* z,
                                      int nPoint, double dSmooth, double dExponent, int nx,
                                      const double* xGrid, int ny, const double* yGrid,
                                      double* zGrid, int nMaxNeighbors) noexcept {
    if (!(dSmooth > 0.0) || !(dExponent >= 0.0)) return ZEMATH_ERR_BAD_INTERVAL;
    if (x == nullptr || y == nullptr || z == nullptr || xGrid == nullptr || yGrid == nullptr ||
        zGrid == nullptr)
        return ZEMATH_ERR_NULL_POINTER;
    if (nx < 1 || ny < 1) return 0;
    if (static_cast<long long>(nx) * ny > 0x7fffffffLL) return ZEMATH_ERR_NULL_CURVE;
    return zemath::guard_status([&] {
        const int m = nx * ny;
        std::vector<double> tx(static_cast<std::size_t>(m)), ty(static_cast<std::size_t>(m));
        for (int j = 0; j < ny; ++j)
            for (int i = 0; i < nx; ++i) tx[j * nx + i] = xGrid[i], ty[j * nx + i] = yGrid[j];
        return zemath_2d_kriging_scat(n, x, y, z, nPoint, dSmooth, dExponent, m, tx.data(),
                                      ty.data(), zGrid, nMaxNeighbors);
    });
}
