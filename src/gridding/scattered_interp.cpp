// Interpolation of scattered data through its Delaunay triangulation: linear
// (barycentric in the triangle holding the target) and natural-neighbour (Sibson).
//
// Natural neighbours: the triangles whose circumcircle holds the target form a cavity
// (found by a search across neighbours from the triangle holding the target, with the
// exact in-circle sign); the target's Voronoi cell, had it been inserted, takes from each
// cavity vertex v the polygon bounded by the circumcentres of the new triangles
// (target, u, v), (target, v, w) and of the cavity triangles around v. Sibson's weight of
// v is that polygon's area over the cell's area. Exact at the data points (the target
// coincides with a node), C1 away from them, linear on the hull edges.
// Reference: R. Sibson, "A brief description of natural neighbour interpolation" (1981);
// the cavity construction is that of Bowyer and Watson (1981).
// Failure codes: those of the triangulation build; -15 no target.
#include <algorithm>
#include <cmath>
#include <vector>

#include "core/guard.hpp"
#include "core/missing.hpp"
#include "gridding/predicates.hpp"
#include "gridding/triangulation.hpp"
#include "zemath/status.h"
#include "zemath/triangulation.h"

namespace zemath {
namespace {

inline int nxt(int k) {
    return k == 2 ? 0 : k + 1;
}

struct Point {
    double x, y;
};

Point circumcentre(Point a, Point b, Point c) {
    const double bx = b.x - a.x, by = b.y - a.y, cx = c.x - a.x, cy = c.y - a.y;
    const double d = 2.0 * (bx * cy - by * cx);
    const double b2 = bx * bx + by * by, c2 = cx * cx + cy * cy;
    return {a.x + (cy * b2 - by * c2) / d, a.y + (bx * c2 - cx * b2) / d};
}

double polygon_area(const std::vector<Point>& p) {
    double twice = 0.0;
    for (std::size_t i = 0; i < p.size(); ++i) {
        const Point& a = p[i];
        const Point& b = p[(i + 1) % p.size()];
        twice += a.x * b.y - a.y * b.x;
    }
    return 0.5 * twice;
}

// Barycentric value in triangle t, NANUM when a vertex z is missing.
double linear_value(const Mesh& m, const Nodes& nodes, int t, double px, double py) {
    const int a = m.v[3 * t], b = m.v[3 * t + 1], c = m.v[3 * t + 2];
    const double za = nodes.z[a], zb = nodes.z[b], zc = nodes.z[c];
    if (is_missing(za) || is_missing(zb) || is_missing(zc)) return kNanum;
    const double xa = nodes.x[a], ya = nodes.y[a], xb = nodes.x[b], yb = nodes.y[b];
    const double xc = nodes.x[c], yc = nodes.y[c];
    const double d = (yb - yc) * (xa - xc) + (xc - xb) * (ya - yc);
    const double wa = ((yb - yc) * (px - xc) + (xc - xb) * (py - yc)) / d;
    const double wb = ((yc - ya) * (px - xc) + (xa - xc) * (py - yc)) / d;
    return wa * za + wb * zb + (1.0 - wa - wb) * zc;
}

class NaturalNeighbours {
  public:
    NaturalNeighbours(const Mesh& m, const Nodes& nodes)
        : m_(m), nodes_(nodes), mark_(m.v.size() / 3, 0) {}

    double value(int t0, double px, double py) {
        const Point q{px, py};
        // The target on a node: that node's value.
        for (int s = 0; s < 3; ++s) {
            const int v = m_.v[3 * t0 + s];
            if (nodes_.x[v] == px && nodes_.y[v] == py) return nodes_.z[v];
        }
        cavity_.clear();
        stack_.assign(1, t0);
        mark_[t0] = 1;
        cavity_.push_back(t0);
        bool on_hull = false;
        while (!stack_.empty()) {
            const int t = stack_.back();
            stack_.pop_back();
            for (int s = 0; s < 3; ++s) {
                const int n = m_.nb[3 * t + s];
                if (n < 0) {
                    on_hull = true;
                    continue;
                }
                if (mark_[n]) continue;
                const int a = m_.v[3 * n], b = m_.v[3 * n + 1], c = m_.v[3 * n + 2];
                if (incircle(nodes_.x[a], nodes_.y[a], nodes_.x[b], nodes_.y[b], nodes_.x[c],
                             nodes_.y[c], px, py) > 0.0) {
                    mark_[n] = 1;
                    cavity_.push_back(n);
                    stack_.push_back(n);
                }
            }
        }
        double result = kNanum;
        // A cavity open to the outside has an unbounded cell: use the linear value there
        // (Sibson's weights reduce to linear ones on the hull edges).
        if (!on_hull) result = sibson(q);
        if (on_hull || std::isnan(result)) result = linear_value(m_, nodes_, t0, px, py);
        for (int t : cavity_) mark_[t] = 0;
        return result;
    }

  private:
    double sibson(Point q) {
        // Boundary edges of the cavity (counter-clockwise): edges whose neighbour is outside.
        struct BEdge {
            int u, w, t;
        };
        boundary_.clear();
        for (int t : cavity_)
            for (int s = 0; s < 3; ++s) {
                const int n = m_.nb[3 * t + s];
                if (n >= 0 && mark_[n]) continue;
                boundary_.push_back({m_.v[3 * t + s], m_.v[3 * t + nxt(s)], t});
            }
        double total_area = 0.0, weighted = 0.0;
        std::vector<Point> polygon;
        for (const auto& in : boundary_) {
            const int v = in.w;  // the edge (u, v) enters v; find the edge (v, w) leaving it
            const auto out = std::find_if(boundary_.begin(), boundary_.end(),
                                          [&](const auto& e) { return e.u == v; });
            if (out == boundary_.end()) return std::nan("");
            const Point pu{nodes_.x[in.u], nodes_.y[in.u]}, pv{nodes_.x[v], nodes_.y[v]};
            const Point pw{nodes_.x[out->w], nodes_.y[out->w]};
            polygon.clear();
            polygon.push_back(circumcentre(q, pu, pv));
            // Cavity triangles around v, clockwise from the one holding (u, v) to the one
            // holding (v, w).
            int t = in.t;
            for (std::size_t guard = 0; guard <= cavity_.size(); ++guard) {
                const int a = m_.v[3 * t], b = m_.v[3 * t + 1], c = m_.v[3 * t + 2];
                polygon.push_back(circumcentre({nodes_.x[a], nodes_.y[a]},
                                               {nodes_.x[b], nodes_.y[b]},
                                               {nodes_.x[c], nodes_.y[c]}));
                if (t == out->t) break;
                int r = 0;
                while (m_.v[3 * t + r] != v) ++r;
                t = m_.nb[3 * t + r];  // across (v, next): clockwise around v
                if (t < 0 || !mark_[t]) return std::nan("");
            }
            polygon.push_back(circumcentre(q, pv, pw));
            const double area = std::fabs(polygon_area(polygon));
            const double zv = nodes_.z[v];
            if (is_missing(zv)) return kNanum;
            total_area += area;
            weighted += area * zv;
        }
        if (!(total_area > 0.0)) return std::nan("");
        return weighted / total_area;
    }

    const Mesh& m_;
    const Nodes& nodes_;
    std::vector<char> mark_;
    std::vector<int> cavity_, stack_;
    struct BoundaryEdge {
        int u, w, t;
    };
    std::vector<BoundaryEdge> boundary_;
};

enum class Scheme { linear, natural };

int interpolate(int nd, const double* xd, const double* yd, const double* zd, int nt,
                const double* xt, const double* yt, double* zt, unsigned options, Scheme scheme) {
    if (xd == nullptr || yd == nullptr || zd == nullptr || xt == nullptr || yt == nullptr ||
        zt == nullptr)
        return ZEMATH_ERR_GENERAL;
    if (nt < 1) return ZEMATH_ERR_SIZE_BELOW_ONE;
    if (nd < 3) return ZEMATH_ERR_TOO_FEW_CURVES;
    return guard_status([&] {
        Nodes nodes;
        const unsigned build = options & ~0x40000u;  // interpolation works in caller units
        if (const int s = prepare_nodes(nd, xd, yd, zd, build, nodes); s != 0) return s;
        Mesh mesh;
        if (const int s = triangulate_nodes(nodes, build, mesh); s != 0) return s;
        NaturalNeighbours natural(mesh, nodes);
        std::vector<double> out(static_cast<std::size_t>(nt));
        int start = 0;
        for (int k = 0; k < nt; ++k) {
            out[k] = kNanum;
            if (!std::isfinite(xt[k]) || !std::isfinite(yt[k]) || is_missing(xt[k]) ||
                is_missing(yt[k]))
                continue;
            const int t = locate(mesh, nodes.x, nodes.y, xt[k], yt[k], start);
            if (t < 0) continue;
            out[k] = scheme == Scheme::linear ? linear_value(mesh, nodes, t, xt[k], yt[k])
                                              : natural.value(t, xt[k], yt[k]);
        }
        std::copy(out.begin(), out.end(), zt);
        return 0;
    });
}

}  // namespace
}  // namespace zemath

ZEMATH_API int zemath_tri_linear_interpolate(int nd, const double* xd, const double* yd,
                                             const double* zd, int nt, const double* xt,
                                             const double* yt, double* zt,
                                             unsigned int options) noexcept {
    return zemath::interpolate(nd, xd, yd, zd, nt, xt, yt, zt, options, zemath::Scheme::linear);
}

ZEMATH_API int zemath_tri_natural_neighbor_interpolate(int nd, const double* xd, const double* yd,
                                                       const double* zd, int nt, const double* xt,
                                                       const double* yt, double* zt,
                                                       unsigned int options) noexcept {
    return zemath::interpolate(nd, xd, yd, zd, nt, xt, yt, zt, options, zemath::Scheme::natural);
}
